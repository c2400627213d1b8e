#import "KTest.h"

#include <CoreFoundation/CoreFoundation.h>

#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

static int BundleSerial;

/* Copies the fixture bundles into a fresh folder and puts the test
 * executable into both: Contents/MacOS/ of the Mac layout, beside
 * Resources/ in the GNUstep layout.  Each copy gets identifiers of its own
 * ("org.koru.test<serial>.mac"), since Foundation will not have two loaded
 * bundles share one.  With keepIdentifiers the fixture's stay. */
static NSString *MakeBundlesKeepingIdentifiers(BOOL keepIdentifiers)
{
    char pattern[] = "/tmp/koru-bundles-XXXXXX";
    if (mkdtemp(pattern) == NULL)
        return nil;
    NSString *folder = [NSString stringWithUTF8String:pattern];
    NSString *command = [NSString stringWithFormat:
        @"cp -R '%s/platform/CoreFoundation/CFBundleTestData/.' '%@' && mkdir -p '%@/Mac.bundle/Contents/MacOS' && "
        @"cp '%s' '%@/Mac.bundle/Contents/MacOS/Plugin' && cp '%s' '%@/GNUstep.bundle/Plugin'",
        KORU_TEST_SOURCE_DIR, folder, folder, KORU_TEST_PLUGIN, folder, KORU_TEST_PLUGIN, folder];
    if (!keepIdentifiers)
        command = [command stringByAppendingFormat:
            @" && sed -i 's/org\\.koru\\.test\\./org.koru.test%d./' '%@/Mac.bundle/Contents/Info.plist' "
            @"'%@/GNUstep.bundle/Resources/Info-gnustep.plist'", ++BundleSerial, folder, folder];
    return system([command UTF8String]) == 0 ? folder : nil;
}

#define MakeBundles() MakeBundlesKeepingIdentifiers(NO)

static void RemoveBundles(NSString *folder)
{
    if (folder != nil)
        system([[NSString stringWithFormat:@"rm -rf '%@'", folder] UTF8String]);
}

/* The bundle at folder/name, released with the case's pool. */
static CFBundleRef Bundle(NSString *folder, NSString *name)
{
    CFURLRef url = CFURLCreateWithFileSystemPath(NULL, (CFStringRef)[folder stringByAppendingPathComponent:name],
                                                 kCFURLPOSIXPathStyle, true);
    CFBundleRef bundle = CFBundleCreate(NULL, url);
    CFRelease(url);
    return (CFBundleRef)[(id)bundle autorelease];
}

/* The path of a URL the caller owns, released here. */
static NSString *PathOf(CFURLRef url)
{
    if (url == NULL)
        return nil;
    NSString *path = [(NSString *)CFURLCopyFileSystemPath(url, kCFURLPOSIXPathStyle) autorelease];
    CFRelease(url);
    return path;
}

static NSString *Localized(CFBundleRef bundle, NSString *key, NSString *value, NSString *table)
{
    return [(NSString *)CFBundleCopyLocalizedString(bundle, (CFStringRef)key, (CFStringRef)value,
                                                   (CFStringRef)table) autorelease];
}

static NSString *ForLocalization(CFBundleRef bundle, CFStringRef name, CFStringRef type, CFStringRef localization)
{
    return PathOf(CFBundleCopyResourceURLForLocalization(bundle, name, type, NULL, localization));
}

KT_CASE(BothLayoutsGiveInfoCodeAndResources)
{
    NSString *folder = MakeBundles();
    KT_ASSERT(folder != nil);
    NSString *const layouts[][4] = {
        {@"Mac.bundle", @"mac", @"Mac.bundle/Contents/MacOS/Plugin", @"Mac.bundle/Contents/Resources"},
        {@"GNUstep.bundle", @"gnustep", @"GNUstep.bundle/Plugin", @"GNUstep.bundle/Resources"},
    };
    for (int i = 0; i < 2; i++) {
        CFBundleRef bundle = Bundle(folder, layouts[i][0]);
        KT_ASSERT(bundle != NULL);
        NSString *identifier = [NSString stringWithFormat:@"org.koru.test%d.%@", BundleSerial, layouts[i][1]];
        KT_EXPECT_EQUAL_OBJECTS((NSString *)CFBundleGetIdentifier(bundle), identifier);
        KT_EXPECT(CFBundleGetBundleWithIdentifier((CFStringRef)identifier) == bundle);
        KT_EXPECT_EQUAL_OBJECTS((id)CFBundleGetValueForInfoDictionaryKey(bundle, CFSTR("CFBundleExecutable")), @"Plugin");
        KT_EXPECT_EQUAL_OBJECTS(PathOf(CFBundleCopyExecutableURL(bundle)), [folder stringByAppendingPathComponent:layouts[i][2]]);
        NSString *resources = [folder stringByAppendingPathComponent:layouts[i][3]];
        KT_EXPECT_EQUAL_OBJECTS(PathOf(CFBundleCopyResourcesDirectoryURL(bundle)), resources);
        int (*answer)(void) = (int (*)(void))CFBundleGetFunctionPointerForName(bundle, CFSTR("CFBundleTestPluginAnswer"));
        KT_EXPECT(answer != NULL && answer() == 42 && CFBundleIsExecutableLoaded(bundle));

        /* Resources are found non-localised first, by name, type or both, and in subfolders. */
        NSString *icon = [resources stringByAppendingPathComponent:@"icon.png"];
        KT_EXPECT_EQUAL_OBJECTS(PathOf(CFBundleCopyResourceURL(bundle, CFSTR("icon"), CFSTR("png"), NULL)), icon);
        KT_EXPECT_EQUAL_OBJECTS(PathOf(CFBundleCopyResourceURL(bundle, CFSTR("icon.png"), NULL, NULL)), icon);
        KT_EXPECT_EQUAL_OBJECTS(PathOf(CFBundleCopyResourceURL(bundle, NULL, CFSTR("png"), NULL)), icon);
        KT_EXPECT_EQUAL_OBJECTS(PathOf(CFBundleCopyResourceURL(bundle, CFSTR("deep"), CFSTR("txt"), CFSTR("Sub"))),
                                [resources stringByAppendingPathComponent:@"Sub/deep.txt"]);
        KT_EXPECT(CFBundleCopyResourceURL(bundle, CFSTR("missing"), CFSTR("png"), NULL) == NULL);

        /* Only.txt exists in fr.lproj alone: found for fr (either spelling), not for en. */
        NSString *only = [resources stringByAppendingPathComponent:@"fr.lproj/Only.txt"];
        KT_EXPECT_EQUAL_OBJECTS(ForLocalization(bundle, CFSTR("Only"), CFSTR("txt"), CFSTR("fr")), only);
        KT_EXPECT_EQUAL_OBJECTS(ForLocalization(bundle, CFSTR("Only"), CFSTR("txt"), CFSTR("French")), only);
        KT_EXPECT(ForLocalization(bundle, CFSTR("Only"), CFSTR("txt"), CFSTR("en")) == nil);
        /* A strings table asked for without a name is the default table. */
        NSString *english = ForLocalization(bundle, NULL, CFSTR("strings"), CFSTR("en"));
        KT_EXPECT_MSG([english hasSuffix:@".lproj/Localizable.strings"], @"%@", english);

        NSArray *localizations = [(NSArray *)CFBundleCopyBundleLocalizations(bundle) autorelease];
        KT_EXPECT_EQUAL_OBJECTS(localizations, ([NSArray arrayWithObjects:i == 0 ? @"en" : @"English", @"fr", nil]));
        NSArray *lists = [(NSArray *)CFBundleCopyResourceURLsOfType(bundle, CFSTR("plist"), NULL) autorelease];
        NSArray *listNames = [lists valueForKey:@"lastPathComponent"];
        KT_EXPECT([listNames containsObject:@"List.plist"] && [listNames containsObject:@"Settings.plist"]);
        KT_EXPECT(![listNames containsObject:@"Localizable.strings"]);
    }
    RemoveBundles(folder);
}

KT_CASE(LocalisedStringsFollowTheUserLanguages)
{
    /* LANGUAGE=fr:en, as the test's environment also sets it. */
    setenv("LANGUAGE", "fr:en", 1);
    NSString *folder = MakeBundles();
    KT_ASSERT(folder != nil);
    CFBundleRef bundles[] = {Bundle(folder, @"Mac.bundle"), Bundle(folder, @"GNUstep.bundle")};
    KT_ASSERT(bundles[0] != NULL && bundles[1] != NULL);
    for (int i = 0; i < 2; i++) {
        /* French is preferred and its table is a binary property list. */
        KT_EXPECT_EQUAL_OBJECTS(Localized(bundles[i], @"hello", nil, nil), @"Bonjour");
        /* A key the French table lacks is not looked for in English. */
        KT_EXPECT_EQUAL_OBJECTS(Localized(bundles[i], @"only.en", @"fallback", nil), @"fallback");
        KT_EXPECT_EQUAL_OBJECTS(Localized(bundles[i], @"only.en", nil, nil), @"only.en");
        /* Errors.strings exists in English only: the next preference. */
        KT_EXPECT_EQUAL_OBJECTS(Localized(bundles[i], @"broken", nil, @"Errors"), @"Something broke");
        KT_EXPECT_EQUAL_OBJECTS(Localized(bundles[i], nil, @"value", nil), @"value");
    }

    NSArray *picked = [(NSArray *)CFBundleCopyPreferredLocalizationsFromArray(
        (CFArrayRef)[NSArray arrayWithObjects:@"de", @"English", @"fr_FR", nil]) autorelease];
    KT_EXPECT_EQUAL_OBJECTS([picked objectAtIndex:0], @"English");
    RemoveBundles(folder);
}

KT_CASE(DevelopmentRegionWhenNoPreferenceMatches)
{
    setenv("LANGUAGE", "ja", 1);
    NSString *folder = MakeBundles();
    KT_ASSERT(folder != nil);
    CFBundleRef mac = Bundle(folder, @"Mac.bundle");
    KT_ASSERT(mac != NULL);
    KT_EXPECT_EQUAL_OBJECTS((NSString *)CFBundleGetDevelopmentRegion(mac), @"en");
    id userLanguages = [[NSUserDefaults standardUserDefaults] objectForKey:@"AppleLanguages"];
    if (userLanguages == nil)
        KT_EXPECT_EQUAL_OBJECTS(Localized(mac, @"hello", nil, nil), @"Hello");
    setenv("LANGUAGE", "fr:en", 1);
    RemoveBundles(folder);
}

KT_CASE(BundlesFromAFolder)
{
    NSString *folder = MakeBundles();
    KT_ASSERT(folder != nil);
    system([[NSString stringWithFormat:@"mkdir '%@/Extra.plugin' && touch '%@/file.bundle'", folder, folder] UTF8String]);
    CFURLRef url = CFURLCreateWithFileSystemPath(NULL, (CFStringRef)folder, kCFURLPOSIXPathStyle, true);
    NSArray *bundles = [(NSArray *)CFBundleCreateBundlesFromDirectory(NULL, url, CFSTR("bundle")) autorelease];
    NSArray *all = [(NSArray *)CFBundleCreateBundlesFromDirectory(NULL, url, NULL) autorelease];
    KT_EXPECT([bundles count] == 2 && [all count] == 3);
    CFRelease(url);
    RemoveBundles(folder);
}

KT_CASE(SameIdentifierInTwoFoldersGivesTwoBundles)
{
    NSString *first = MakeBundlesKeepingIdentifiers(YES);
    NSString *second = MakeBundlesKeepingIdentifiers(YES);
    KT_ASSERT(first != nil && second != nil);
    CFBundleRef loaded = Bundle(first, @"GNUstep.bundle");
    KT_ASSERT(loaded != NULL);
    KT_EXPECT(CFBundleLoadExecutable(loaded));
    /* Foundation would hand out the loaded bundle for the copy. */
    CFBundleRef copy = Bundle(second, @"GNUstep.bundle");
    KT_ASSERT(copy != NULL && copy != loaded);
    KT_EXPECT_EQUAL_OBJECTS(PathOf(CFBundleCopyBundleURL(copy)), [second stringByAppendingPathComponent:@"GNUstep.bundle"]);
    KT_EXPECT_EQUAL_OBJECTS(PathOf(CFBundleCopyBundleURL(loaded)), [first stringByAppendingPathComponent:@"GNUstep.bundle"]);
    RemoveBundles(first);
    RemoveBundles(second);
}

KT_CASE(MainBundleOfAPlainProgramIsItsFolder)
{
    char program[PATH_MAX];
    KT_ASSERT(realpath("/proc/self/exe", program) != NULL);
    NSString *programPath = [NSString stringWithUTF8String:program];
    CFBundleRef main = CFBundleGetMainBundle();
    KT_ASSERT(main != NULL);
    KT_EXPECT_EQUAL_OBJECTS(PathOf(CFBundleCopyBundleURL(main)), [programPath stringByDeletingLastPathComponent]);
    KT_EXPECT_EQUAL_OBJECTS(PathOf(CFBundleCopyExecutableURL(main)), programPath);
}

int *CFBundleTestLibraryAddress(void);
int CFBundleTestLibraryRead(void);

KT_CASE(VariableOfALinkedLibraryIsTheOneInUse)
{
    /* The bundle's executable is the library this program links. */
    NSString *folder = MakeBundles();
    KT_ASSERT(folder != nil);
    NSString *bundlePath = [folder stringByAppendingPathComponent:@"Linked.bundle"];
    NSString *command = [NSString stringWithFormat:
        @"mkdir -p '%@/Resources' && ln -s '%s' '%@/Linked' && "
        @"printf '{ CFBundleIdentifier = org.koru.test%d.linked; NSExecutable = Linked; }' > '%@/Resources/Info-gnustep.plist'",
        bundlePath, KORU_TEST_LIBRARY, bundlePath, ++BundleSerial, bundlePath];
    KT_ASSERT(system([command UTF8String]) == 0);
    CFBundleRef bundle = Bundle(folder, @"Linked.bundle");
    KT_ASSERT(bundle != NULL);
    int *value = (int *)CFBundleGetDataPointerForName(bundle, CFSTR("CFBundleTestLibraryValue"));
    KT_EXPECT(value == CFBundleTestLibraryAddress());
    if (value != NULL) {
        *value = 9;
        KT_EXPECT(CFBundleTestLibraryRead() == 9);
    }
    KT_EXPECT(CFBundleGetDataPointerForName(bundle, CFSTR("NoSuchVariable")) == NULL);
    RemoveBundles(folder);
}

KT_CASE(NullArgumentsGiveNull)
{
    KT_EXPECT(CFBundleCopyResourceURL(NULL, CFSTR("a"), CFSTR("b"), NULL) == NULL);
    KT_EXPECT(CFBundleCopyResourceURLForLocalization(NULL, CFSTR("a"), CFSTR("b"), NULL, CFSTR("fr")) == NULL);
    KT_EXPECT(CFBundleCopyResourcesDirectoryURL(NULL) == NULL);
    KT_EXPECT(CFBundleCopyBundleLocalizations(NULL) == NULL);
    KT_EXPECT(CFBundleCopyResourceURLsOfType(NULL, CFSTR("png"), NULL) == NULL);
    KT_EXPECT(CFBundleCopyPreferredLocalizationsFromArray(NULL) == NULL);
    KT_EXPECT(CFBundleCreateBundlesFromDirectory(NULL, NULL, NULL) == NULL);
    KT_EXPECT(CFBundleGetDevelopmentRegion(NULL) == NULL);
}

KT_MAIN()
