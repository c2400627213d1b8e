/* CFError over NSError. */
#include "CFInternal.h"
#include <errno.h>
#include <string.h>

/* The texts of Foundation's own names (GNUstep's, where they differ from
 * the Mac's), so that they compare equal to them. */
const CFStringRef kCFErrorDomainPOSIX = (CFStringRef) @"NSPOSIXErrorDomain";
const CFStringRef kCFErrorDomainOSStatus = (CFStringRef) @"NSOSStatusErrorDomain";
const CFStringRef kCFErrorDomainMach = (CFStringRef) @"NSMACHErrorDomain";
const CFStringRef kCFErrorDomainCocoa = (CFStringRef) @"NSCocoaErrorDomain";
const CFStringRef kCFErrorLocalizedDescriptionKey = (CFStringRef) @"NSLocalizedDescriptionKey";
const CFStringRef kCFErrorLocalizedFailureReasonKey = (CFStringRef) @"NSLocalizedFailureReasonErrorKey";
const CFStringRef kCFErrorLocalizedRecoverySuggestionKey = (CFStringRef) @"NSLocalizedRecoverySuggestionErrorKey";
const CFStringRef kCFErrorDescriptionKey = (CFStringRef) @"NSDescription";
const CFStringRef kCFErrorUnderlyingErrorKey = (CFStringRef) @"NSUnderlyingErrorKey";
const CFStringRef kCFErrorURLKey = (CFStringRef) @"NSURL";
const CFStringRef kCFErrorFilePathKey = (CFStringRef) @"NSFilePath";

CFTypeID CFErrorGetTypeID(void)
{
    return __kCFErrorTypeID;
}

static NSError *__CFError(CFErrorRef err)
{
    id object = (id)err;
    return [object isKindOfClass:[NSError class]] ? (NSError *)object : nil;
}

CFErrorRef CFErrorCreate(CFAllocatorRef allocator, CFErrorDomain domain, CFIndex code, CFDictionaryRef userInfo)
{
    __CF_SCOPED_POOL
    (void)allocator;
    if (domain == NULL)
        return NULL;
    NSDictionary *info = userInfo != NULL ? [[NSDictionary alloc] initWithDictionary:(NSDictionary *)userInfo] : nil;
    NSError *error = [[NSError alloc] initWithDomain:(NSString *)domain code:(NSInteger)code userInfo:info];
    [info release];
    return (CFErrorRef)error;
}

CFErrorRef CFErrorCreateWithUserInfoKeysAndValues(CFAllocatorRef allocator, CFStringRef domain,
                                                              CFIndex code, const void *const *userInfoKeys,
                                                              const void *const *userInfoValues,
                                                              CFIndex numUserInfoValues)
{
    __CF_SCOPED_POOL
    (void)allocator;
    if (domain == NULL || numUserInfoValues < 0 ||
        (numUserInfoValues > 0 && (userInfoKeys == NULL || userInfoValues == NULL)))
        return NULL;
    for (CFIndex i = 0; i < numUserInfoValues; i++) {
        if (userInfoKeys[i] == NULL || userInfoValues[i] == NULL)
            return NULL;
    }
    NSDictionary *info = [[NSDictionary alloc] initWithObjects:(id *)userInfoValues
                                                       forKeys:(id *)userInfoKeys
                                                         count:(NSUInteger)numUserInfoValues];
    NSError *error = [[NSError alloc] initWithDomain:(NSString *)domain code:(NSInteger)code userInfo:info];
    [info release];
    return (CFErrorRef)error;
}

CFStringRef CFErrorGetDomain(CFErrorRef err)
{
    return (CFStringRef)[__CFError(err) domain];
}

CFIndex CFErrorGetCode(CFErrorRef err)
{
    NSError *error = __CFError(err);
    return error != nil ? (CFIndex)[error code] : 0;
}

CFDictionaryRef CFErrorCopyUserInfo(CFErrorRef err)
{
    NSError *error = __CFError(err);
    if (error == nil)
        return NULL;
    NSDictionary *info = [error userInfo];
    return (CFDictionaryRef)(info != nil ? [info copy] : [[NSDictionary alloc] init]);
}

static NSString *__CFErrorString(NSError *error, NSString *key)
{
    id value = [[error userInfo] objectForKey:key];
    return [value isKindOfClass:[NSString class]] ? (NSString *)value : nil;
}

CFStringRef CFErrorCopyDescription(CFErrorRef err)
{
    NSError *error = __CFError(err);
    if (error == nil)
        return NULL;
    NSString *result;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSString *described = __CFErrorString(error, NSLocalizedDescriptionKey);
    if (described != nil) {
        result = [described copy];
    } else {
        NSString *reason = __CFErrorString(error, NSLocalizedFailureReasonErrorKey);
        if (reason == nil)
            reason = __CFErrorString(error, @"NSDescription");
        if (reason == nil && [[error domain] isEqualToString:NSPOSIXErrorDomain] && [error code] > 0 &&
            [error code] < 4096)
            reason = [NSString stringWithUTF8String:strerror((int)[error code])];
        if (reason == nil)
            reason = [NSString stringWithFormat:@"(%@ error %ld.)", [error domain], (long)[error code]];
        result = [[NSString alloc] initWithFormat:@"The operation couldn\u2019t be completed. %@", reason];
    }
    [pool drain];
    return (CFStringRef)result;
}

CFStringRef CFErrorCopyFailureReason(CFErrorRef err)
{
    NSError *error = __CFError(err);
    return (CFStringRef)[__CFErrorString(error, NSLocalizedFailureReasonErrorKey) copy];
}

CFStringRef CFErrorCopyRecoverySuggestion(CFErrorRef err)
{
    NSError *error = __CFError(err);
    return (CFStringRef)[__CFErrorString(error, NSLocalizedRecoverySuggestionErrorKey) copy];
}
