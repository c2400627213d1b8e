/* The Carbon user interface (HIToolbox) provided for Linux over GNUstep
 * AppKit: windows, controls, menus, nib files, the scrap, Carbon events and
 * alerts.  One header per Mac header; the Objective-C types behind the Carbon
 * references (WindowRef is an NSWindow *) show only to Objective-C code. */
#ifndef HITOOLBOX_HITOOLBOX_H
#define HITOOLBOX_HITOOLBOX_H

#include <HIToolbox/MacWindows.h>

#endif
