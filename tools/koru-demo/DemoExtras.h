/* The strip at the bottom of the demo window belongs to the small Cocoa
 * classes: when the demo is linked with their part, KORUDemoAddExtras fills
 * the strip (a view as wide as the window, 44 points high, resizing with it);
 * otherwise the weak symbol is NULL and the strip stays empty. */
#ifndef KORU_DEMO_EXTRAS_H
#define KORU_DEMO_EXTRAS_H

#import <AppKit/AppKit.h>

void KORUDemoAddExtras(NSView *strip) __attribute__((weak));

#endif
