/* What the FoundationX categories share, private to the toolkit: the debug
 * lines, printed with NSLog only while the debug switch is on as
 * "<method> (Line:<line>)\n<message>\n\t" with the failure or the exception
 * a method caught; and where a bundle resource named with its extension is. */
#ifndef KORU_COCOA_FOUNDATIONXSUPPORT_H
#define KORU_COCOA_FOUNDATIONXSUPPORT_H

#import <Foundation/Foundation.h>

#include <KORU/Debug.h>

static inline void KORULogDebugLine(const char *method, int line, NSString *message)
{
    if (KORUDebug())
        NSLog(@"%s (Line:%i)\n%@\n\t", method, line, message);
}

static inline void KORULogFailure(const char *method, int line)
{
    KORULogDebugLine(method, line, @"Sorry, I caught GOTO error.");
}

static inline void KORULogException(const char *method, int line, NSException *exception)
{
    if (KORUDebug())
        KORULogDebugLine(method, line,
                         [NSString stringWithFormat:@"Sorry, I caught EXCEPTION error. (name:%@ reason:%@)",
                                                    [exception name], [exception reason]]);
}

/* The path of the resource name (extension included) in bundle, the main
 * bundle when bundle is nil; nil for a name that is not a string. */
static inline NSString *KORUResourcePath(NSString *name, NSBundle *bundle)
{
    if (![name isKindOfClass:[NSString class]])
        return nil;
    if (bundle == nil)
        bundle = [NSBundle mainBundle];
    return [bundle pathForResource:name ofType:@""];
}

#endif
