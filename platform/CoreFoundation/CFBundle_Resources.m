/* CFBundle resources and localisations, found in the bundle's own folders
 * for both layouts.
 *
 * A resource is looked for first among the non-localised resources, then in
 * the .lproj folders of the localisations that apply, in order.  The
 * localisations that apply are those the user prefers (the AppleLanguages
 * default, else the POSIX locale), then the bundle's development region;
 * a localisation name matches its folder under either spelling ("fr" and
 * "French"), and a regional name ("fr_CA") also matches its language. */
#include "CFBundlePrivate.h"

#include <stdlib.h>
#include <sys/stat.h>

/* The language names that older bundles use for their .lproj folders. */
static NSString *const __CFLanguageNames[][2] = {
    {@"en", @"English"}, {@"fr", @"French"},  {@"de", @"German"},     {@"it", @"Italian"},
    {@"es", @"Spanish"}, {@"nl", @"Dutch"},   {@"ja", @"Japanese"},   {@"sv", @"Swedish"},
    {@"da", @"Danish"},  {@"fi", @"Finnish"}, {@"pt", @"Portuguese"}, {@"nb", @"Norwegian"},
    {@"ko", @"Korean"},  {@"ru", @"Russian"}, {@"pl", @"Polish"},     {@"cs", @"Czech"},
};
enum { __CFLanguageNameCount = sizeof(__CFLanguageNames) / sizeof(__CFLanguageNames[0]) };

static NSString *__CFBundleOtherLanguageName(NSString *name)
{
    for (int i = 0; i < __CFLanguageNameCount; i++) {
        if ([name isEqualToString:__CFLanguageNames[i][0]])
            return __CFLanguageNames[i][1];
        if ([name isEqualToString:__CFLanguageNames[i][1]])
            return __CFLanguageNames[i][0];
    }
    return nil;
}

/* "fr_CA" and "fr-CA" give "fr"; a plain language gives nil. */
static NSString *__CFBundleLanguageOfRegion(NSString *name)
{
    NSRange separator = [name rangeOfCharacterFromSet:[NSCharacterSet characterSetWithCharactersInString:@"_-"]];
    return separator.location != NSNotFound && separator.location > 0 ? [name substringToIndex:separator.location] : nil;
}

/* The folder names (without ".lproj") that hold one localisation. */
static NSArray *__CFBundleFolderNamesOf(NSString *localization)
{
    NSMutableArray *names = [NSMutableArray arrayWithObject:localization];
    NSString *other = __CFBundleOtherLanguageName(localization);
    if (other != nil)
        [names addObject:other];
    if ([localization rangeOfString:@"_"].location != NSNotFound)
        [names addObject:[localization stringByReplacingOccurrencesOfString:@"_" withString:@"-"]];
    else if ([localization rangeOfString:@"-"].location != NSNotFound)
        [names addObject:[localization stringByReplacingOccurrencesOfString:@"-" withString:@"_"]];
    return names;
}

static BOOL __CFPathExists(NSString *path, BOOL *isDirectory)
{
    struct stat info;
    if (stat([path fileSystemRepresentation], &info) != 0)
        return NO;
    if (isDirectory != NULL)
        *isDirectory = S_ISDIR(info.st_mode);
    return YES;
}

static NSArray *__CFSortedFolderEntries(NSString *folder)
{
    NSArray *entries = [[NSFileManager defaultManager] contentsOfDirectoryAtPath:folder error:NULL];
    return entries != nil ? [entries sortedArrayUsingSelector:@selector(compare:)] : [NSArray array];
}

/* The languages the user prefers, most preferred first. */
static NSArray *__CFUserLanguages(void)
{
    id preferred = [[NSUserDefaults standardUserDefaults] objectForKey:@"AppleLanguages"];
    if ([preferred isKindOfClass:[NSArray class]] && [preferred count] > 0)
        return preferred;
    const char *variables[] = {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"};
    for (size_t i = 0; i < sizeof variables / sizeof variables[0]; i++) {
        const char *value = getenv(variables[i]);
        if (value == NULL || *value == '\0')
            continue;
        NSMutableArray *languages = [NSMutableArray array];
        for (NSString *entry in [[NSString stringWithUTF8String:value] componentsSeparatedByString:@":"]) {
            /* "fr_FR.UTF-8@euro" names the language fr_FR. */
            NSRange cut = [entry rangeOfCharacterFromSet:[NSCharacterSet characterSetWithCharactersInString:@".@"]];
            if (cut.location != NSNotFound)
                entry = [entry substringToIndex:cut.location];
            if ([entry length] > 0 && ![entry isEqualToString:@"C"] && ![entry isEqualToString:@"POSIX"])
                [languages addObject:entry];
        }
        /* LANGUAGE is only a preference list; an empty or C one defers to the next. */
        if ([languages count] > 0)
            return languages;
    }
    return [NSArray array];
}

/* The names from available that apply for the wanted languages, in order. */
static NSArray *__CFMatchLocalizations(NSArray *available, NSArray *wanted)
{
    NSMutableArray *result = [NSMutableArray array];
    for (NSString *language in wanted) {
        if (![language isKindOfClass:[NSString class]])
            continue;
        NSMutableArray *spellings = [NSMutableArray arrayWithArray:__CFBundleFolderNamesOf(language)];
        NSString *base = __CFBundleLanguageOfRegion(language);
        if (base != nil)
            [spellings addObjectsFromArray:__CFBundleFolderNamesOf(base)];
        for (NSString *spelling in spellings)
            if ([available containsObject:spelling] && ![result containsObject:spelling])
                [result addObject:spelling];
    }
    return result;
}

static NSArray *__CFBundleLocalizations(NSBundle *bundle)
{
    NSMutableArray *names = [NSMutableArray array];
    for (NSString *entry in __CFSortedFolderEntries(__CFBundleResourcesPath(bundle)))
        if ([[entry pathExtension] isEqualToString:@"lproj"])
            [names addObject:[entry stringByDeletingPathExtension]];
    return names;
}

/* The bundle's localisations in the order a look-up tries them. */
static NSArray *__CFBundleSearchLocalizations(NSBundle *bundle)
{
    NSArray *available = __CFBundleLocalizations(bundle);
    NSMutableArray *wanted = [NSMutableArray arrayWithArray:__CFUserLanguages()];
    id region = [__CFBundleInfo(bundle) objectForKey:@"CFBundleDevelopmentRegion"];
    if ([region isKindOfClass:[NSString class]])
        [wanted addObject:region];
    NSArray *result = __CFMatchLocalizations(available, wanted);
    if ([result count] == 0 && [available count] > 0)
        result = [NSArray arrayWithObject:[available objectAtIndex:0]];
    return result;
}

/* name.type in the folder; with no name, the first file of the type. */
static NSString *__CFFindInFolder(NSString *folder, NSString *name, NSString *type)
{
    if (name != nil) {
        NSString *file = [type length] > 0 ? [name stringByAppendingPathExtension:type] : name;
        NSString *path = [folder stringByAppendingPathComponent:file];
        return __CFPathExists(path, NULL) ? path : nil;
    }
    if ([type length] == 0)
        return nil;
    for (NSString *entry in __CFSortedFolderEntries(folder))
        if ([[entry pathExtension] isEqualToString:type])
            return [folder stringByAppendingPathComponent:entry];
    return nil;
}

static NSString *__CFInSubfolder(NSString *folder, NSString *subDir)
{
    return [subDir length] > 0 ? [folder stringByAppendingPathComponent:subDir] : folder;
}

static NSString *__CFBundleFindResource(NSBundle *bundle, NSString *name, NSString *type, NSString *subDir,
                                        NSArray *localizations)
{
    NSString *resources = __CFBundleResourcesPath(bundle);
    NSString *found = __CFFindInFolder(__CFInSubfolder(resources, subDir), name, type);
    for (NSUInteger i = 0; found == nil && i < [localizations count]; i++) {
        for (NSString *folderName in __CFBundleFolderNamesOf([localizations objectAtIndex:i])) {
            NSString *lproj = [resources stringByAppendingPathComponent:[folderName stringByAppendingPathExtension:@"lproj"]];
            found = __CFFindInFolder(__CFInSubfolder(lproj, subDir), name, type);
            if (found != nil)
                break;
        }
    }
    return found;
}

static CFURLRef __CFURLForPath(NSString *path)
{
    BOOL isDirectory = NO;
    if (path == nil || !__CFPathExists(path, &isDirectory))
        return NULL;
    return CFURLCreateWithFileSystemPath(NULL, (CFStringRef)path, kCFURLPOSIXPathStyle, isDirectory);
}

static BOOL __CFIsString(CFTypeRef object)
{
    return object != NULL && __CFIsKindOf(object, CFStringGetTypeID());
}

/* A strings table asked for without a name is the default one. */
static NSString *__CFResourceName(CFStringRef name, CFStringRef type)
{
    if (name == NULL && type != NULL && [(NSString *)type isEqualToString:@"strings"])
        return @"Localizable";
    return (NSString *)name;
}

CFURLRef CFBundleCopyResourcesDirectoryURL(CFBundleRef bundle)
{
    if (bundle == NULL)
        return NULL;
    CFURLRef result = NULL;
    __CF_POOL_BEGIN
    result = CFURLCreateWithFileSystemPath(NULL, (CFStringRef)__CFBundleResourcesPath((NSBundle *)bundle),
                                           kCFURLPOSIXPathStyle, true);
    __CF_POOL_END
    return result;
}

CFURLRef CFBundleCopyResourceURL(CFBundleRef bundle, CFStringRef resourceName, CFStringRef resourceType,
                                 CFStringRef subDirName)
{
    if (bundle == NULL || (resourceName != NULL && !__CFIsString(resourceName)))
        return NULL;
    CFURLRef result = NULL;
    __CF_POOL_BEGIN
    @try {
        NSBundle *nsBundle = (NSBundle *)bundle;
        NSString *path = __CFBundleFindResource(nsBundle, __CFResourceName(resourceName, resourceType),
                                                (NSString *)resourceType, (NSString *)subDirName,
                                                __CFBundleSearchLocalizations(nsBundle));
        result = __CFURLForPath(path);
    } @catch (NSException *exception) {
        result = NULL;
    }
    __CF_POOL_END
    return result;
}

CFURLRef CFBundleCopyResourceURLForLocalization(CFBundleRef bundle, CFStringRef resourceName,
                                                CFStringRef resourceType, CFStringRef subDirName,
                                                CFStringRef localizationName)
{
    if (bundle == NULL || (resourceName != NULL && !__CFIsString(resourceName)))
        return NULL;
    CFURLRef result = NULL;
    __CF_POOL_BEGIN
    @try {
        NSArray *localizations = __CFIsString(localizationName) ? [NSArray arrayWithObject:(NSString *)localizationName]
                                                                : [NSArray array];
        NSString *path = __CFBundleFindResource((NSBundle *)bundle, __CFResourceName(resourceName, resourceType),
                                                (NSString *)resourceType, (NSString *)subDirName, localizations);
        result = __CFURLForPath(path);
    } @catch (NSException *exception) {
        result = NULL;
    }
    __CF_POOL_END
    return result;
}

CFArrayRef CFBundleCopyResourceURLsOfType(CFBundleRef bundle, CFStringRef resourceType, CFStringRef subDirName)
{
    if (bundle == NULL)
        return NULL;
    NSMutableArray *urls = [[NSMutableArray alloc] init];
    __CF_POOL_BEGIN
    @try {
        NSBundle *nsBundle = (NSBundle *)bundle;
        NSString *type = (NSString *)resourceType;
        NSString *resources = __CFBundleResourcesPath(nsBundle);
        NSMutableArray *folders = [NSMutableArray arrayWithObject:__CFInSubfolder(resources, (NSString *)subDirName)];
        NSArray *localizations = __CFBundleSearchLocalizations(nsBundle);
        if ([localizations count] > 0) {
            NSString *lproj = [[localizations objectAtIndex:0] stringByAppendingPathExtension:@"lproj"];
            [folders addObject:__CFInSubfolder([resources stringByAppendingPathComponent:lproj], (NSString *)subDirName)];
        }
        NSMutableSet *names = [NSMutableSet set];
        for (NSString *folder in folders) {
            for (NSString *entry in __CFSortedFolderEntries(folder)) {
                if (([type length] > 0 && ![[entry pathExtension] isEqualToString:type]) || [names containsObject:entry])
                    continue;
                CFURLRef url = __CFURLForPath([folder stringByAppendingPathComponent:entry]);
                if (url != NULL) {
                    [names addObject:entry];
                    [urls addObject:(id)url];
                    CFRelease(url);
                }
            }
        }
    } @catch (NSException *exception) {
        [urls removeAllObjects];
    }
    __CF_POOL_END
    NSArray *result = [urls copy];
    [urls release];
    return (CFArrayRef)result;
}

CFArrayRef CFBundleCopyBundleLocalizations(CFBundleRef bundle)
{
    if (bundle == NULL)
        return NULL;
    NSArray *result = nil;
    __CF_POOL_BEGIN
    result = [__CFBundleLocalizations((NSBundle *)bundle) copy];
    __CF_POOL_END
    return (CFArrayRef)result;
}

CFArrayRef CFBundleCopyPreferredLocalizationsFromArray(CFArrayRef locArray)
{
    if (locArray == NULL || !__CFIsKindOf(locArray, CFArrayGetTypeID()))
        return NULL;
    NSArray *result = nil;
    __CF_POOL_BEGIN
    NSArray *available = (NSArray *)locArray;
    NSArray *matches = __CFMatchLocalizations(available, __CFUserLanguages());
    if ([matches count] == 0 && [available count] > 0)
        matches = [NSArray arrayWithObject:[available objectAtIndex:0]];
    result = [matches copy];
    __CF_POOL_END
    return (CFArrayRef)result;
}

CFStringRef CFBundleGetDevelopmentRegion(CFBundleRef bundle)
{
    if (bundle == NULL)
        return NULL;
    id region = [__CFBundleInfo((NSBundle *)bundle) objectForKey:@"CFBundleDevelopmentRegion"];
    return [region isKindOfClass:[NSString class]] ? (CFStringRef)region : NULL;
}

CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key, CFStringRef value, CFStringRef tableName)
{
    if (!__CFIsString(key))
        return (CFStringRef)CFRetain(value != NULL ? value : CFSTR(""));
    NSString *result = nil;
    __CF_POOL_BEGIN
    @try {
        CFURLRef table = bundle != NULL ? CFBundleCopyResourceURL(bundle, tableName != NULL ? tableName : CFSTR("Localizable"),
                                                                  CFSTR("strings"), NULL)
                                        : NULL;
        if (table != NULL) {
            CFDataRef data = NULL;
            CFURLCreateDataAndPropertiesFromResource(NULL, table, &data, NULL, NULL, NULL);
            CFRelease(table);
            if (data != NULL) {
                id strings = (id)CFPropertyListCreateFromXMLData(NULL, data, kCFPropertyListImmutable, NULL);
                CFRelease(data);
                if ([strings isKindOfClass:[NSDictionary class]])
                    result = [[strings objectForKey:(NSString *)key] retain];
                [strings release];
            }
        }
    } @catch (NSException *exception) {
    }
    __CF_POOL_END
    if (result == nil) {
        /* A missing key answers the value given, or the key itself without one. */
        result = value != NULL && CFStringGetLength(value) > 0 ? [(NSString *)value retain] : [(NSString *)key retain];
    }
    return (CFStringRef)result;
}

CFArrayRef CFBundleCreateBundlesFromDirectory(CFAllocatorRef allocator, CFURLRef directoryURL, CFStringRef bundleType)
{
    if (directoryURL == NULL)
        return NULL;
    CFStringRef folderPath = CFURLCopyFileSystemPath(directoryURL, kCFURLPOSIXPathStyle);
    if (folderPath == NULL)
        return NULL;
    NSMutableArray *bundles = [[NSMutableArray alloc] init];
    __CF_POOL_BEGIN
    NSString *folder = (NSString *)folderPath;
    for (NSString *entry in __CFSortedFolderEntries(folder)) {
        if (bundleType != NULL && ![[entry pathExtension] isEqualToString:(NSString *)bundleType])
            continue;
        NSString *path = [folder stringByAppendingPathComponent:entry];
        BOOL isDirectory = NO;
        if (!__CFPathExists(path, &isDirectory) || !isDirectory)
            continue;
        CFURLRef url = CFURLCreateWithFileSystemPath(allocator, (CFStringRef)path, kCFURLPOSIXPathStyle, true);
        CFBundleRef bundle = url != NULL ? CFBundleCreate(allocator, url) : NULL;
        if (bundle != NULL) {
            [bundles addObject:(id)bundle];
            CFRelease(bundle);
        }
        if (url != NULL)
            CFRelease(url);
    }
    __CF_POOL_END
    CFRelease(folderPath);
    NSArray *result = [bundles copy];
    [bundles release];
    return (CFArrayRef)result;
}
