/* CFLocale over NSLocale.  The current locale is named by the user's
 * "AppleLocale" default, so it agrees with what the rest of the toolkit
 * reads; the key constants are Foundation's own strings. */
#include "CFInternal.h"

const CFStringRef kCFLocaleIdentifier = (CFStringRef) @"locale:id";
const CFStringRef kCFLocaleLanguageCode = (CFStringRef) @"locale:language code";
const CFStringRef kCFLocaleCountryCode = (CFStringRef) @"locale:country code";

CFTypeID CFLocaleGetTypeID(void)
{
    return __kCFLocaleTypeID;
}

CFLocaleRef CFLocaleCopyCurrent(void)
{
    NSLocale *locale = nil;
    __CF_POOL_BEGIN
    @try {
        id identifier = [[NSUserDefaults standardUserDefaults] objectForKey:@"AppleLocale"];
        if ([identifier isKindOfClass:[NSString class]] && [identifier length] > 0)
            locale = [[NSLocale alloc] initWithLocaleIdentifier:identifier];
        if (locale == nil)
            locale = [[NSLocale currentLocale] retain];
    } @catch (NSException *exception) {
        locale = nil;
    }
    if (locale == nil)
        locale = [[NSLocale alloc] initWithLocaleIdentifier:@""];
    __CF_POOL_END
    return (CFLocaleRef)locale;
}

CFLocaleRef CFLocaleGetSystem(void)
{
    static NSLocale *system;
    if (system == nil) {
        __CF_POOL_BEGIN
        NSLocale *made = [[NSLocale alloc] initWithLocaleIdentifier:@""];
        if (!__sync_bool_compare_and_swap(&system, nil, made))
            [made release];
        __CF_POOL_END
    }
    return (CFLocaleRef)system;
}

CFLocaleRef CFLocaleCreate(CFAllocatorRef allocator, CFStringRef localeIdentifier)
{
    (void)allocator;
    if (localeIdentifier == NULL)
        return NULL;
    NSLocale *locale;
    __CF_POOL_BEGIN
    locale = [[NSLocale alloc] initWithLocaleIdentifier:(NSString *)localeIdentifier];
    __CF_POOL_END
    return (CFLocaleRef)locale;
}

CFStringRef CFLocaleGetIdentifier(CFLocaleRef locale)
{
    if (locale == NULL)
        return NULL;
    /* The locale keeps its identifier; it lives as long as the locale. */
    return (CFStringRef)[(NSLocale *)locale localeIdentifier];
}

CFTypeRef CFLocaleGetValue(CFLocaleRef locale, CFStringRef key)
{
    if (locale == NULL || key == NULL)
        return NULL;
    if (CFEqual(key, kCFLocaleIdentifier))
        return CFLocaleGetIdentifier(locale);
    if (!CFEqual(key, kCFLocaleLanguageCode) && !CFEqual(key, kCFLocaleCountryCode))
        return NULL;
    /* Parts of "ll_CC": the language before the first "_", the country after it. */
    CFStringRef part = NULL;
    __CF_POOL_BEGIN
    NSString *identifier = [(NSLocale *)locale localeIdentifier];
    NSArray *parts = [identifier componentsSeparatedByString:@"_"];
    NSString *text = nil;
    if (CFEqual(key, kCFLocaleLanguageCode))
        text = [parts count] > 0 && [[parts objectAtIndex:0] length] ? [parts objectAtIndex:0] : nil;
    else if ([parts count] > 1 && [[parts objectAtIndex:1] length] == 2)
        text = [parts objectAtIndex:1];
    /* Lent results must outlive this call: codes are kept once, like CFSTR constants. */
    if (text != nil)
        part = __CFStringMakeConstantString([text UTF8String]);
    __CF_POOL_END
    return (CFTypeRef)part;
}

CFArrayRef CFLocaleCopyPreferredLanguages(void)
{
    NSArray *languages = nil;
    __CF_POOL_BEGIN
    @try {
        id value = [[NSUserDefaults standardUserDefaults] objectForKey:@"AppleLanguages"];
        if ([value isKindOfClass:[NSArray class]])
            languages = [value copy];
    } @catch (NSException *exception) {
        languages = nil;
    }
    if (languages == nil)
        languages = [[NSArray alloc] init];
    __CF_POOL_END
    return (CFArrayRef)languages;
}
