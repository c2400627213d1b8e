/* What the FoundationX categories share, private to the toolkit: the debug
 * lines, printed with NSLog only while the debug switch is on as
 * "<method> (Line:<line>)\n<message>\n\t" with the failure or the exception
 * a method caught; and where a bundle resource named with its extension is. */
#ifndef KORU_COCOA_FOUNDATIONXSUPPORT_H
#define KORU_COCOA_FOUNDATIONXSUPPORT_H

#import <Foundation/Foundation.h>

#include <CoreFoundation/CoreFoundation.h>
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

/* What the collections' initWithXMLData: share: receiver initialised with
 * initialiser (initWithArray:, initWithDictionary:) from the property list
 * in data when that list is of class expected; nil otherwise, the receiver
 * then released as a failed init releases itself.  A list that cannot be
 * read is logged, and an exception is reported as method at line. */
static inline id KORUInitWithXMLData(id receiver, NSData *data, Class expected, SEL initialiser,
                                     const char *method, int line)
{
    id result = nil;
    CFPropertyListRef list = NULL;
    @try {
        CFStringRef error = NULL;
        list = CFPropertyListCreateFromXMLData(kCFAllocatorDefault, (CFDataRef)data, kCFPropertyListImmutable, &error);
        if (list == NULL)
            NSLog(@"%s error:%@", method, (NSString *)error);
        if (error != NULL)
            CFRelease(error);
        if ([(id)list isKindOfClass:expected]) {
            result = [receiver performSelector:initialiser withObject:(id)list];
            receiver = nil; // initialised: no longer ours to release
        }
    } @catch (NSException *exception) {
        KORULogException(method, line, exception);
        result = nil;
    }
    if (list != NULL)
        CFRelease(list);
    [receiver release];
    return result;
}

#endif
