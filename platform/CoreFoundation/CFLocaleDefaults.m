/* The language and locale defaults that a Mac process finds in its user
 * defaults, "AppleLanguages" and "AppleLocale", supplied here from the POSIX
 * locale that the environment names.
 *
 * The first of LANGUAGE, LC_ALL, LC_MESSAGES and LANG that is set and not
 * empty is parsed (the locale need not be installed): fr_FR.UTF-8@euro gives
 * the locale fr_FR and the language fr; LANGUAGE's colon-separated list gives
 * the languages in its order and the locale of its first entry.  C, POSIX
 * and C.UTF-8 supply nothing.  The values go into the registration domain,
 * so anything the user set explicitly wins.
 *
 * Registration happens when a process first asks for its standard user
 * defaults (and again for a new instance after a reset): this library is
 * loaded before GNUstep can run any Objective-C code, so it cannot register
 * at load time, and GNUstep offers no hook of its own.  The class method is
 * therefore wrapped once at load, through the runtime's C interface only. */
#import <Foundation/Foundation.h>

#include <objc/runtime.h>
#include <pthread.h>
#include <stdlib.h>
#include <string.h>

/* A locale name split into its parts: language[_territory][.codeset][@modifier]. */
typedef struct {
    const char *language;
    size_t languageLength;
    const char *territory;
    size_t territoryLength;
} __CFLocaleName;

static BOOL __CFLocaleAllOf(const char *text, size_t length, BOOL digitsToo)
{
    if (length == 0 || length > 8)
        return NO;
    for (size_t i = 0; i < length; i++) {
        char c = text[i];
        BOOL letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (!letter && !(digitsToo && c >= '0' && c <= '9'))
            return NO;
    }
    return YES;
}

/* NO for the C and POSIX locales and for text that names no language. */
static BOOL __CFLocaleParse(const char *entry, size_t length, __CFLocaleName *name)
{
    size_t end = 0;
    while (end < length && entry[end] != '.' && entry[end] != '@')
        end++;
    size_t underscore = 0;
    while (underscore < end && entry[underscore] != '_')
        underscore++;
    name->language = entry;
    name->languageLength = underscore;
    name->territory = underscore < end ? entry + underscore + 1 : NULL;
    name->territoryLength = underscore < end ? end - underscore - 1 : 0;
    if ((underscore == 1 && entry[0] == 'C') || (underscore == 5 && strncmp(entry, "POSIX", 5) == 0))
        return NO;
    if (!__CFLocaleAllOf(name->language, name->languageLength, NO))
        return NO;
    return name->territory == NULL || __CFLocaleAllOf(name->territory, name->territoryLength, YES);
}

static NSString *__CFLocaleString(const char *text, size_t length)
{
    return [[[NSString alloc] initWithBytes:text length:length encoding:NSASCIIStringEncoding] autorelease];
}

/* The defaults the environment gives, autoreleased; empty when it names no
 * usable locale. */
static NSDictionary *__CFLocaleDefaultsFromEnvironment(void)
{
    static const char *const variables[] = {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"};
    const char *value = NULL;
    for (size_t i = 0; i < sizeof(variables) / sizeof(variables[0]) && value == NULL; i++) {
        const char *candidate = getenv(variables[i]);
        if (candidate != NULL && *candidate != '\0')
            value = candidate;
    }
    NSMutableDictionary *defaults = [NSMutableDictionary dictionary];
    if (value == NULL)
        return defaults;
    NSMutableArray *languages = [NSMutableArray array];
    NSString *locale = nil;
    for (const char *entry = value; *entry != '\0';) {
        const char *colon = strchr(entry, ':');
        size_t length = colon != NULL ? (size_t)(colon - entry) : strlen(entry);
        __CFLocaleName name;
        if (__CFLocaleParse(entry, length, &name)) {
            NSString *language = __CFLocaleString(name.language, name.languageLength);
            if (![languages containsObject:language])
                [languages addObject:language];
            if (locale == nil) {
                locale = name.territory == NULL
                             ? language
                             : [NSString stringWithFormat:@"%@_%@", language,
                                                          __CFLocaleString(name.territory, name.territoryLength)];
            }
        }
        entry += colon != NULL ? length + 1 : length;
    }
    if (locale != nil) {
        [defaults setObject:languages forKey:@"AppleLanguages"];
        [defaults setObject:locale forKey:@"AppleLocale"];
    }
    return defaults;
}

/* Adds what the environment gives without overriding what the process has
 * already registered itself. */
static void __CFLocaleRegisterDefaults(NSUserDefaults *defaults)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    @try {
        NSDictionary *registered = [defaults volatileDomainForName:NSRegistrationDomain];
        NSMutableDictionary *missing = [NSMutableDictionary dictionary];
        NSDictionary *supplied = __CFLocaleDefaultsFromEnvironment();
        for (NSString *key in supplied) {
            if ([registered objectForKey:key] == nil)
                [missing setObject:[supplied objectForKey:key] forKey:key];
        }
        if ([missing count] > 0)
            [defaults registerDefaults:missing];
    } @catch (NSException *exception) {
        // The process goes on without the locale defaults.
    }
    [pool drain];
}

static IMP __CFStandardUserDefaults;
/* The instance last registered with, and whether its registration is done.
 * The lock guards these two only: it is never held while the defaults run,
 * so it cannot take part in a deadlock with their own locks. */
static NSUserDefaults *__CFLocaleDefaultsTarget;
static BOOL __CFLocaleDefaultsReady;
static pthread_mutex_t __CFLocaleDefaultsLock = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t __CFLocaleDefaultsDone = PTHREAD_COND_INITIALIZER;
static __thread BOOL __CFLocaleRegistering;
static __thread unsigned __CFLocaleMaking; /* depth of calls into GNUstep's own method */

static id __CFStandardUserDefaultsWithLocale(id self, SEL _cmd)
{
    __CFLocaleMaking++;
    NSUserDefaults *defaults = ((id (*)(id, SEL))__CFStandardUserDefaults)(self, _cmd);
    __CFLocaleMaking--;
    // GNUstep asks for its defaults itself while it makes them, holding its
    // own locks: those inner calls neither register nor wait, or they could
    // wait for a thread that waits for their locks.
    if (defaults == nil || __CFLocaleRegistering || __CFLocaleMaking > 0)
        return defaults;
    pthread_mutex_lock(&__CFLocaleDefaultsLock);
    BOOL fresh = defaults != __CFLocaleDefaultsTarget;
    if (fresh) {
        __CFLocaleDefaultsTarget = defaults;
        __CFLocaleDefaultsReady = NO;
    } else {
        // Another thread is registering with this instance: hand it out only
        // once the locale is in it.  A reset that replaces the instance in
        // the meantime ends the wait as well.
        while (__CFLocaleDefaultsTarget == defaults && !__CFLocaleDefaultsReady)
            pthread_cond_wait(&__CFLocaleDefaultsDone, &__CFLocaleDefaultsLock);
    }
    pthread_mutex_unlock(&__CFLocaleDefaultsLock);
    if (fresh) {
        [defaults retain]; // a reset on another thread may drop it meanwhile
        __CFLocaleRegistering = YES;
        __CFLocaleRegisterDefaults(defaults);
        __CFLocaleRegistering = NO;
        [defaults release];
        pthread_mutex_lock(&__CFLocaleDefaultsLock);
        if (__CFLocaleDefaultsTarget == defaults)
            __CFLocaleDefaultsReady = YES;
        pthread_cond_broadcast(&__CFLocaleDefaultsDone);
        pthread_mutex_unlock(&__CFLocaleDefaultsLock);
    }
    return defaults;
}

static void __attribute__((constructor)) __CFLocaleDefaultsInstall(void)
{
    Class class = objc_getClass("NSUserDefaults");
    Method method = class != Nil ? class_getClassMethod(class, sel_registerName("standardUserDefaults")) : NULL;
    if (method != NULL)
        __CFStandardUserDefaults = method_setImplementation(method, (IMP)__CFStandardUserDefaultsWithLocale);
}
