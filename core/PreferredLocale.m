/* Reads the language and locale defaults inside a pool of its own, so the
 * queries work on threads that have none, and behind an exception handler,
 * so a default of an unexpected shape never reaches the C++ caller. */
#import <Foundation/Foundation.h>

#include "PreferredLocale.h"

static NSString *NonEmptyString(id value)
{
    return [value isKindOfClass:[NSString class]] && [value length] > 0 ? value : nil;
}

CFStringRef KORUCopyPreferredLanguage(void)
{
    NSString *result = nil;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    @try {
        id languages = [[NSUserDefaults standardUserDefaults] objectForKey:@"AppleLanguages"];
        if ([languages isKindOfClass:[NSArray class]] && [languages count] > 0)
            result = [NonEmptyString([languages objectAtIndex:0]) copy];
    } @catch (NSException *exception) {
        result = nil;
    }
    [pool drain];
    return (CFStringRef)result;
}

CFStringRef KORUCopyPreferredLocale(void)
{
    NSString *result = nil;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    @try {
        result = [NonEmptyString([[NSUserDefaults standardUserDefaults] objectForKey:@"AppleLocale"]) copy];
    } @catch (NSException *exception) {
        result = nil;
    }
    [pool drain];
    return (CFStringRef)result;
}
