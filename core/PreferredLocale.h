/* The user's language and locale as the user defaults hold them, for the
 * C++ queries of UtilsSystem.cpp, which cannot send Objective-C messages. */
#ifndef KORU_CORE_PREFERREDLOCALE_H
#define KORU_CORE_PREFERREDLOCALE_H

#include <CoreFoundation/CoreFoundation.h>

CF_EXTERN_C_BEGIN

/* The first element of the standard defaults' "AppleLanguages", when it is a
 * non-empty string; NULL otherwise.  The caller releases the result. */
CFStringRef KORUCopyPreferredLanguage(void);

/* The standard defaults' "AppleLocale", when it is a non-empty string; NULL
 * otherwise.  The caller releases the result. */
CFStringRef KORUCopyPreferredLocale(void);

CF_EXTERN_C_END

#endif
