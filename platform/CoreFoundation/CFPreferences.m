/* CFPreferences over NSUserDefaults.  Every entry point drains its own
 * pool: Foundation autoreleases freely while it reads and writes domains. */
#include "CFInternal.h"
#include <stdlib.h>

/* The names are CF's own texts; callers compare them by content. */
const CFStringRef kCFPreferencesAnyApplication = (CFStringRef) @"kCFPreferencesAnyApplication";
const CFStringRef kCFPreferencesCurrentApplication = (CFStringRef) @"kCFPreferencesCurrentApplication";
const CFStringRef kCFPreferencesAnyHost = (CFStringRef) @"kCFPreferencesAnyHost";
const CFStringRef kCFPreferencesCurrentHost = (CFStringRef) @"kCFPreferencesCurrentHost";
const CFStringRef kCFPreferencesAnyUser = (CFStringRef) @"kCFPreferencesAnyUser";
const CFStringRef kCFPreferencesCurrentUser = (CFStringRef) @"kCFPreferencesCurrentUser";

static BOOL __CFIsCurrentApplication(CFStringRef applicationID)
{
    if (CFEqual(applicationID, kCFPreferencesCurrentApplication))
        return YES;
    NSString *processName = [[NSProcessInfo processInfo] processName];
    return [(NSString *)applicationID isEqualToString:processName];
}

/* Whether the user and host name the store we keep: the current user's, any host. */
static BOOL __CFIsStoredScope(CFStringRef userName, CFStringRef hostName)
{
    return userName != NULL && hostName != NULL && CFEqual(userName, kCFPreferencesCurrentUser) &&
           CFEqual(hostName, kCFPreferencesAnyHost);
}

static id __CFCopyValue(CFStringRef key, CFStringRef applicationID)
{
    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    if (CFEqual(applicationID, kCFPreferencesAnyApplication))
        return [[[defaults persistentDomainForName:NSGlobalDomain] objectForKey:(NSString *)key] retain];
    if (__CFIsCurrentApplication(applicationID))
        return [[defaults objectForKey:(NSString *)key] retain];
    return [[[defaults persistentDomainForName:(NSString *)applicationID] objectForKey:(NSString *)key] retain];
}

static void __CFSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef applicationID)
{
    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    if (__CFIsCurrentApplication(applicationID)) {
        if (value != NULL)
            [defaults setObject:(id)value forKey:(NSString *)key];
        else
            [defaults removeObjectForKey:(NSString *)key];
        return;
    }
    NSString *domainName =
        CFEqual(applicationID, kCFPreferencesAnyApplication) ? NSGlobalDomain : (NSString *)applicationID;
    NSMutableDictionary *domain = [NSMutableDictionary dictionary];
    NSDictionary *stored = [defaults persistentDomainForName:domainName];
    if (stored != nil)
        [domain addEntriesFromDictionary:stored];
    if (value != NULL)
        [domain setObject:(id)value forKey:(NSString *)key];
    else
        [domain removeObjectForKey:(NSString *)key];
    [defaults setPersistentDomain:domain forName:domainName];
}

CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef applicationID)
{
    if (key == NULL || applicationID == NULL)
        return NULL;
    id value = nil;
    __CF_POOL_BEGIN
    @try {
        value = __CFCopyValue(key, applicationID);
    } @catch (NSException *exception) {
        value = nil;
    }
    __CF_POOL_END
    return (CFPropertyListRef)value;
}

void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef applicationID)
{
    if (key == NULL || applicationID == NULL)
        return;
    __CF_POOL_BEGIN
    @try {
        __CFSetValue(key, value, applicationID);
    } @catch (NSException *exception) {
        /* A value that is not a property list is not stored. */
    }
    __CF_POOL_END
}

Boolean CFPreferencesAppSynchronize(CFStringRef applicationID)
{
    if (applicationID == NULL)
        return false;
    Boolean ok = false;
    __CF_POOL_BEGIN
    @try {
        ok = [[NSUserDefaults standardUserDefaults] synchronize] ? true : false;
    } @catch (NSException *exception) {
        ok = false;
    }
    __CF_POOL_END
    return ok;
}

Boolean CFPreferencesGetAppBooleanValue(CFStringRef key, CFStringRef applicationID,
                                        Boolean *keyExistsAndHasValidFormat)
{
    Boolean valid = false, result = false;
    CFPropertyListRef value = CFPreferencesCopyAppValue(key, applicationID);
    if (value != NULL) {
        __CF_POOL_BEGIN
        id object = (id)value;
        if ([object isKindOfClass:[NSNumber class]]) {
            valid = true;
            result = [object boolValue] ? true : false;
        } else if ([object isKindOfClass:[NSString class]]) {
            NSString *text = (NSString *)object;
            if ([text caseInsensitiveCompare:@"YES"] == NSOrderedSame ||
                [text caseInsensitiveCompare:@"true"] == NSOrderedSame) {
                valid = true;
                result = true;
            } else if ([text caseInsensitiveCompare:@"NO"] == NSOrderedSame ||
                       [text caseInsensitiveCompare:@"false"] == NSOrderedSame) {
                valid = true;
            }
        }
        __CF_POOL_END
        CFRelease(value);
    }
    if (keyExistsAndHasValidFormat != NULL)
        *keyExistsAndHasValidFormat = valid;
    return result;
}

CFIndex CFPreferencesGetAppIntegerValue(CFStringRef key, CFStringRef applicationID,
                                        Boolean *keyExistsAndHasValidFormat)
{
    Boolean valid = false;
    CFIndex result = 0;
    CFPropertyListRef value = CFPreferencesCopyAppValue(key, applicationID);
    if (value != NULL) {
        id object = (id)value;
        if ([object isKindOfClass:[NSNumber class]]) {
            valid = true;
            result = (CFIndex)[object longValue];
        } else if ([object isKindOfClass:[NSString class]]) {
            char text[64];
            char *end = NULL;
            if (CFStringGetCString(value, text, sizeof(text), kCFStringEncodingUTF8)) {
                long parsed = strtol(text, &end, 10);
                if (end != text && *end == 0) {
                    valid = true;
                    result = parsed;
                }
            }
        }
        CFRelease(value);
    }
    if (keyExistsAndHasValidFormat != NULL)
        *keyExistsAndHasValidFormat = valid;
    return result;
}

CFPropertyListRef CFPreferencesCopyValue(CFStringRef key, CFStringRef applicationID, CFStringRef userName,
                                         CFStringRef hostName)
{
    if (!__CFIsStoredScope(userName, hostName))
        return NULL;
    return CFPreferencesCopyAppValue(key, applicationID);
}

void CFPreferencesSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef applicationID, CFStringRef userName,
                           CFStringRef hostName)
{
    if (__CFIsStoredScope(userName, hostName))
        CFPreferencesSetAppValue(key, value, applicationID);
}

Boolean CFPreferencesSynchronize(CFStringRef applicationID, CFStringRef userName, CFStringRef hostName)
{
    if (!__CFIsStoredScope(userName, hostName))
        return false;
    return CFPreferencesAppSynchronize(applicationID);
}

CFArrayRef CFPreferencesCopyKeyList(CFStringRef applicationID, CFStringRef userName, CFStringRef hostName)
{
    if (applicationID == NULL || !__CFIsStoredScope(userName, hostName))
        return NULL;
    CFArrayRef result = NULL;
    __CF_POOL_BEGIN
    @try {
        NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
        NSString *domainName;
        if (CFEqual(applicationID, kCFPreferencesAnyApplication))
            domainName = NSGlobalDomain;
        else if (__CFIsCurrentApplication(applicationID))
            domainName = [[NSProcessInfo processInfo] processName];
        else
            domainName = (NSString *)applicationID;
        NSArray *keys = [[defaults persistentDomainForName:domainName] allKeys];
        if ([keys count] > 0)
            result = (CFArrayRef)[keys copy];
    } @catch (NSException *exception) {
        result = NULL;
    }
    __CF_POOL_END
    return result;
}
