/* Locales.  A CFLocaleRef is an NSLocale *.  The current locale follows the
 * user's "AppleLocale" default, which is taken from the POSIX locale the
 * environment names (LANGUAGE, LC_ALL, LC_MESSAGES, LANG) unless the user
 * set one.  Create and Copy results are released with CFRelease; Get
 * results are lent.  Locales are immutable and thread-safe. */
#ifndef COREFOUNDATION_CFLOCALE_H
#define COREFOUNDATION_CFLOCALE_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFArray.h>

CF_EXTERN_C_BEGIN

typedef const struct __CFLocale *CFLocaleRef;
typedef CFStringRef CFLocaleIdentifier;
typedef CFStringRef CFLocaleKey;

CF_EXPORT const CFLocaleKey kCFLocaleIdentifier;
CF_EXPORT const CFLocaleKey kCFLocaleLanguageCode;
CF_EXPORT const CFLocaleKey kCFLocaleCountryCode;

CF_EXPORT CFTypeID CFLocaleGetTypeID(void);
/* The user's locale ("fr_FR"); never NULL. */
CF_EXPORT CFLocaleRef CFLocaleCopyCurrent(void);
/* The root locale, identifier ""; lent. */
CF_EXPORT CFLocaleRef CFLocaleGetSystem(void);
/* NULL for a NULL identifier. */
CF_EXPORT CFLocaleRef CFLocaleCreate(CFAllocatorRef allocator, CFLocaleIdentifier localeIdentifier);
/* NULL for NULL. */
CF_EXPORT CFLocaleIdentifier CFLocaleGetIdentifier(CFLocaleRef locale);
/* The identifier, language or country of the locale; NULL for another key or NULL. */
CF_EXPORT CFTypeRef CFLocaleGetValue(CFLocaleRef locale, CFLocaleKey key);
/* The user's languages, most preferred first ("AppleLanguages"). */
CF_EXPORT CFArrayRef CFLocaleCopyPreferredLanguages(void);

CF_EXTERN_C_END

#endif
