/* koru: a command-line host for the KORU toolkit.
 *
 * It does what a host application does: it links no part of the toolkit,
 * loads the KORU bundle at run time, finds exported C functions by name and
 * Objective-C classes by name, and uses them.  Usage: koru [bundle-path].
 * Without an argument the bundle is looked for in $KORU_BUNDLE_PATH, beside
 * the installed host (../lib/KORU.bundle) and in the build folder. */
#import <Foundation/Foundation.h>
#include <CoreFoundation/CoreFoundation.h>

#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Tour.h"

typedef struct {
    int order;
    const char *title;
    KORUTourFunction function;
} TourSection;

static TourSection sections[64];
static int sectionCount;

void KORUTourRegister(int order, const char *title, KORUTourFunction function)
{
    if (sectionCount < (int)(sizeof(sections) / sizeof(sections[0])))
        sections[sectionCount++] = (TourSection){order, title, function};
}

void *KORUTourLookup(CFBundleRef bundle, const char *name)
{
    CFStringRef symbol = CFStringCreateWithCString(NULL, name, kCFStringEncodingUTF8);
    void *address = CFBundleGetFunctionPointerForName(bundle, symbol);
    CFRelease(symbol);
    if (address == NULL)
        fprintf(stderr, "koru: the bundle exports no %s\n", name);
    return address;
}

static int compareSections(const void *a, const void *b)
{
    return ((const TourSection *)a)->order - ((const TourSection *)b)->order;
}

static BOOL isBundle(NSString *path)
{
    NSString *info = [path stringByAppendingPathComponent:@"Resources/Info-gnustep.plist"];
    return [[NSFileManager defaultManager] fileExistsAtPath:info];
}

static NSString *findBundle(int argc, char **argv)
{
    NSMutableArray *candidates = [NSMutableArray array];
    if (argc > 1)
        [candidates addObject:[NSString stringWithUTF8String:argv[1]]];
    const char *environment = getenv("KORU_BUNDLE_PATH");
    if (environment != NULL && *environment != '\0')
        [candidates addObject:[NSString stringWithUTF8String:environment]];
    char executable[PATH_MAX];
    ssize_t length = readlink("/proc/self/exe", executable, sizeof(executable) - 1);
    if (length > 0) {
        executable[length] = '\0';
        NSString *bin = [[NSString stringWithUTF8String:executable] stringByDeletingLastPathComponent];
        NSString *prefix = [bin stringByDeletingLastPathComponent];
        [candidates addObject:[[prefix stringByAppendingPathComponent:@KORU_INSTALL_LIBDIR]
                                  stringByAppendingPathComponent:@"KORU.bundle"]];
    }
    [candidates addObject:@KORU_BUILD_BUNDLE_PATH];
    for (NSString *candidate in candidates) {
        if (isBundle(candidate))
            return candidate;
    }
    return nil;
}

/* The bundle's own identity, read from its Info plist. */
static BOOL tourBundle(CFBundleRef bundle)
{
    CFStringRef banner = CFBundleGetValueForInfoDictionaryKey(bundle, CFSTR("CFBundleGetInfoString"));
    CFStringRef identifier = CFBundleGetIdentifier(bundle);
    char text[256], name[256];
    if (!CFStringGetCString(banner, text, sizeof(text), kCFStringEncodingUTF8) ||
        !CFStringGetCString(identifier, name, sizeof(name), kCFStringEncodingUTF8))
        return false;
    printf("  banner:      %s\n", text);
    printf("  identifier:  %s\n", name);
    CFURLRef executable = CFBundleCopyExecutableURL(bundle);
    CFStringRef path = CFURLCopyFileSystemPath(executable, kCFURLPOSIXPathStyle);
    if (CFStringGetCString(path, text, sizeof(text), kCFStringEncodingUTF8))
        printf("  executable:  %s\n", text);
    CFRelease(path);
    CFRelease(executable);
    return true;
}

/* The toolkit's Objective-C classes, found by name once the bundle is loaded. */
static void tourClasses(void)
{
    static const char *names[] = {"TableController", "TableView", "CommandTool", "DiskImage",
                                  "Method", "TreeRound", "FileIconView", "MenuButton"};
    int found = 0;
    for (size_t i = 0; i < sizeof(names) / sizeof(names[0]); i++) {
        Class class = NSClassFromString([NSString stringWithUTF8String:names[i]]);
        if (class != Nil) {
            printf("  class %-16s from the bundle\n", names[i]);
            found++;
        }
    }
    printf("  Objective-C classes found by name: %d of %d\n", found, (int)(sizeof(names) / sizeof(names[0])));
}

int main(int argc, char **argv)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSString *bundlePath = findBundle(argc, argv);
    if (bundlePath == nil) {
        fprintf(stderr, "koru: cannot find KORU.bundle (give its path as the argument)\n");
        [pool drain];
        return 1;
    }
    CFURLRef url = CFURLCreateWithFileSystemPath(NULL, (CFStringRef)bundlePath, kCFURLPOSIXPathStyle, true);
    CFBundleRef bundle = CFBundleCreate(NULL, url);
    CFRelease(url);
    if (bundle == NULL || !CFBundleLoadExecutable(bundle)) {
        fprintf(stderr, "koru: cannot load %s\n", [bundlePath UTF8String]);
        [pool drain];
        return 1;
    }
    printf("KORU toolkit, loaded at run time from %s\n\n", [bundlePath UTF8String]);
    printf("The bundle\n");
    int status = tourBundle(bundle) ? 0 : 1;
    tourClasses();

    qsort(sections, (size_t)sectionCount, sizeof(sections[0]), compareSections);
    for (int i = 0; i < sectionCount; i++) {
        printf("\n%s\n", sections[i].title);
        NSAutoreleasePool *sectionPool = [[NSAutoreleasePool alloc] init];
        if (!sections[i].function(bundle)) {
            fprintf(stderr, "koru: the tour of \"%s\" failed\n", sections[i].title);
            status = 1;
        }
        [sectionPool drain];
    }
    CFRelease(bundle);
    [pool drain];
    return status;
}
