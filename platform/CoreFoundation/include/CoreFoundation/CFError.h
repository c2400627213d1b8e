/* Errors.  A CFErrorRef is an NSError *: a domain, a code and a dictionary
 * of details.  The domain and key constants are Foundation's own strings,
 * so kCFErrorDomainPOSIX is NSPOSIXErrorDomain.  Create and Copy results
 * are released with CFRelease; Get results are lent.  Errors are immutable
 * and thread-safe. */
#ifndef COREFOUNDATION_CFERROR_H
#define COREFOUNDATION_CFERROR_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDictionary.h>

CF_EXTERN_C_BEGIN

#ifndef COREFOUNDATION_CFERRORREF_DEFINED
#define COREFOUNDATION_CFERRORREF_DEFINED 1
typedef struct __CFError *CFErrorRef;
#endif

typedef CFStringRef CFErrorDomain;

CF_EXPORT const CFStringRef kCFErrorDomainPOSIX;
CF_EXPORT const CFStringRef kCFErrorDomainOSStatus;
CF_EXPORT const CFStringRef kCFErrorDomainMach;
CF_EXPORT const CFStringRef kCFErrorDomainCocoa;

CF_EXPORT const CFStringRef kCFErrorLocalizedDescriptionKey;
CF_EXPORT const CFStringRef kCFErrorLocalizedFailureReasonKey;
CF_EXPORT const CFStringRef kCFErrorLocalizedRecoverySuggestionKey;
CF_EXPORT const CFStringRef kCFErrorDescriptionKey;
CF_EXPORT const CFStringRef kCFErrorUnderlyingErrorKey;
CF_EXPORT const CFStringRef kCFErrorURLKey;
CF_EXPORT const CFStringRef kCFErrorFilePathKey;

CF_EXPORT CFTypeID CFErrorGetTypeID(void);
/* NULL when domain is NULL.  userInfo (may be NULL) is copied. */
CF_EXPORT CFErrorRef CFErrorCreate(CFAllocatorRef allocator, CFErrorDomain domain, CFIndex code, CFDictionaryRef userInfo);
CF_EXPORT CFErrorRef CFErrorCreateWithUserInfoKeysAndValues(CFAllocatorRef allocator, CFErrorDomain domain, CFIndex code, const void *const *userInfoKeys, const void *const *userInfoValues, CFIndex numUserInfoValues);
/* NULL for NULL. */
CF_EXPORT CFErrorDomain CFErrorGetDomain(CFErrorRef err);
/* 0 for NULL. */
CF_EXPORT CFIndex CFErrorGetCode(CFErrorRef err);
/* A copy of the details, empty when there are none; NULL for NULL. */
CF_EXPORT CFDictionaryRef CFErrorCopyUserInfo(CFErrorRef err);
/* The localized description when the error has one, else "The operation
 * couldn’t be completed." followed by the failure reason, the description
 * key's text, strerror for a POSIX code, or "(<domain> error <code>.)".
 * NULL for NULL. */
CF_EXPORT CFStringRef CFErrorCopyDescription(CFErrorRef err);
/* NULL when the error has none. */
CF_EXPORT CFStringRef CFErrorCopyFailureReason(CFErrorRef err);
CF_EXPORT CFStringRef CFErrorCopyRecoverySuggestion(CFErrorRef err);

CF_EXTERN_C_END

#endif
