/* The debug report of an Objective-C exception caught at a method boundary,
 * shared by the toolkit's Cocoa classes: with debug output on, the method's
 * bracketed name, the source line of the report and "Sorry, I caught
 * EXCEPTION error. (name:<name> reason:<reason>)" go to the log. */
#ifndef KORU_COCOA_CAUGHTEXCEPTION_H
#define KORU_COCOA_CAUGHTEXCEPTION_H

#import <Foundation/Foundation.h>

#include <KORU/Debug.h>

static inline void KORULogCaughtException(const char *method, int line, NSException *exception)
{
    if (!KORUDebug())
        return;
    NSLog(@"%s (Line:%i)\n%@\n\t", method, line,
          [NSString stringWithFormat:@"Sorry, I caught EXCEPTION error. (name:%@ reason:%@)",
                                     [exception name], [exception reason]]);
}

#endif
