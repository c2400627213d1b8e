/* Tour section: the small Cocoa classes and functions that need no display.
 * Method performs a stored selector, TreeRound walks a small folder tree
 * level by level, an image is decoded from a bundle's resources, and a URL
 * launches a program.  The classes are found by name; here Foundation comes
 * first, so Method is the runtime's type and the class is used through its
 * protocol (see KORU/Method.h). */
#import <Foundation/Foundation.h>
#import <KORU/Method.h>
#import <KORU/TreeRound.h>
#include <KORU/BundleImages.h>
#include <KORU/URLLaunching.h>

#include "Tour.h"

#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

typedef CGImageRef (*BundleImageFunction)(CFStringRef, CFStringRef, CFBundleRef);
typedef Boolean (*LaunchFunction)(CFURLRef, LSLaunchFlags);

/* A 4 x 3 PNG of one blue, with a palette. */
static const unsigned char kTinyPNG[] =
    "\x89PNG\r\n\x1a\n\x00\x00\x00\x0dIHDR\x00\x00\x00\x04\x00\x00\x00\x03\x01\x03\x00\x00\x00\x8e\x3a\x3c\x85"
    "\x00\x00\x00\x03PLTE\x20\x80\xc0\x3f\xd0\x21\xc1\x00\x00\x00\x0bIDAT\x08\xd7\x63\x60\x00\x01\x00\x00\x06"
    "\x00\x01\x66\xf4\xc9\x6c\x00\x00\x00\x00IEND\xae\x42\x60\x82";

@interface TourLevels : NSObject {
@public
    NSString *mRoot;
    int mShown;
}
@end

@implementation TourLevels
- (int)treeRoundEvaluatePath:(NSString *)path
{
    NSString *relative = [path substringFromIndex:[mRoot length] + 1];
    printf("    %d: %s\n", (int)[[relative pathComponents] count], [relative UTF8String]);
    mShown++;
    /* Everything but the folder named "skip" is descended into. */
    return [[path lastPathComponent] isEqual:@"skip"] ? 1 : 0;
}
@end

static NSString *MakeFolder(void)
{
    char pattern[] = "/tmp/koru-tour-XXXXXX";
    return mkdtemp(pattern) != NULL ? [NSString stringWithUTF8String:pattern] : nil;
}

static void Touch(NSString *root, NSString *relative, NSData *contents)
{
    NSString *path = [root stringByAppendingPathComponent:relative];
    [[NSFileManager defaultManager] createDirectoryAtPath:[path stringByDeletingLastPathComponent]
                              withIntermediateDirectories:YES attributes:nil error:NULL];
    [[NSFileManager defaultManager] createFileAtPath:path contents:contents attributes:nil];
}

static BOOL TourMethod(void)
{
    Class methodClass = KORUMethodClass();
    id<KORUMethod> method = [methodClass methodWithTarget:@"KORU toolkit" selector:@selector(uppercaseString)];
    id<KORUMethod> none = [methodClass methodWithTarget:nil selector:@selector(uppercaseString)];
    printf("  Method: responds %s, performs \"%s\"; without a target: %s\n", [method responds] ? "YES" : "NO",
           [[method perform] UTF8String], none == nil ? "no object" : "an object");
    return [method responds] && none == nil;
}

static BOOL TourTreeRound(NSString *root)
{
    NSData *empty = [NSData data];
    Touch(root, @"tree/docs/letter.txt", empty);
    Touch(root, @"tree/docs/drafts/draft.txt", empty);
    Touch(root, @"tree/skip/hidden.txt", empty);
    Touch(root, @"tree/top.txt", empty);
    TourLevels *levels = [[[TourLevels alloc] init] autorelease];
    levels->mRoot = [root stringByAppendingPathComponent:@"tree"];
    printf("  TreeRound, level by level (\"skip\" is not descended into):\n");
    Class roundClass = NSClassFromString(@"TreeRound");
    BOOL walked = [[[[roundClass alloc] init] autorelease] start:[NSArray arrayWithObject:levels->mRoot]
                                                    withDelegate:levels];
    printf("  walked: %s, %d paths shown\n", walked ? "YES" : "NO", levels->mShown);
    return walked && levels->mShown == 6;
}

static BOOL TourImages(CFBundleRef toolkit, NSString *root)
{
    BundleImageFunction load = (BundleImageFunction)KORUTourLookup(toolkit, "CGImageCreateWithBundleResource");
    if (load == NULL)
        return NO;
    NSString *bundlePath = [root stringByAppendingPathComponent:@"Pictures.bundle"];
    Touch(bundlePath, @"Resources/Info-gnustep.plist",
          [@"{ CFBundleIdentifier = org.koru.tour.pictures; }" dataUsingEncoding:NSUTF8StringEncoding]);
    Touch(bundlePath, @"Resources/blue.png", [NSData dataWithBytes:kTinyPNG length:sizeof kTinyPNG - 1]);
    Touch(bundlePath, @"Resources/blue.jpg", [NSData dataWithBytes:kTinyPNG length:sizeof kTinyPNG - 1]);
    CFBundleRef pictures = (CFBundleRef)[NSBundle bundleWithPath:bundlePath];
    CGImageRef png = load(CFSTR("blue"), CFSTR("png"), pictures);
    CGImageRef jpeg = load(CFSTR("blue"), CFSTR("jpg"), pictures);
    printf("  blue.png from a bundle: %zu x %zu, %zu bits per component, %zu bytes per row\n",
           CGImageGetWidth(png), CGImageGetHeight(png), CGImageGetBitsPerComponent(png), CGImageGetBytesPerRow(png));
    printf("  the same bytes as blue.jpg, read as JPEG: %s\n", jpeg == NULL ? "no image" : "an image");
    BOOL ok = png != NULL && jpeg == NULL && CGImageGetWidth(png) == 4;
    CGImageRelease(png);
    CGImageRelease(jpeg);
    return ok;
}

static BOOL TourLaunch(CFBundleRef toolkit, NSString *root)
{
    LaunchFunction launch = (LaunchFunction)KORUTourLookup(toolkit, "LSLaunchURLWithLaunchFlags");
    if (launch == NULL)
        return NO;
    NSString *mark = [root stringByAppendingPathComponent:@"launched"];
    NSString *program = [root stringByAppendingPathComponent:@"hello.sh"];
    Touch(root, @"hello.sh", [[NSString stringWithFormat:@"#!/bin/sh\necho hello > '%@'\n", mark]
                                 dataUsingEncoding:NSUTF8StringEncoding]);
    chmod([program fileSystemRepresentation], 0755);
    BOOL started = launch((CFURLRef)[NSURL fileURLWithPath:program], kLSLaunchDefaults);
    for (int wait = 0; started && wait < 100 && access([mark fileSystemRepresentation], F_OK) != 0; wait++)
        usleep(50000);
    BOOL ran = access([mark fileSystemRepresentation], F_OK) == 0;
    BOOL missing = launch((CFURLRef)[NSURL fileURLWithPath:[root stringByAppendingPathComponent:@"none.app"]],
                          kLSLaunchDefaults);
    printf("  LSLaunchURLWithLaunchFlags: a script launched %s and ran %s; a missing application: %s\n",
           started ? "YES" : "NO", ran ? "YES" : "NO", missing ? "YES" : "NO");
    return started && ran && !missing;
}

static bool TourSmallClasses(CFBundleRef bundle)
{
    NSString *root = MakeFolder();
    if (root == nil)
        return false;
    BOOL ok = TourMethod();
    ok = TourTreeRound(root) && ok;
    ok = TourImages(bundle, root) && ok;
    ok = TourLaunch(bundle, root) && ok;
    [[NSFileManager defaultManager] removeFileAtPath:root handler:nil];
    return ok;
}

KORU_TOUR_SECTION(90, "Small classes: Method, TreeRound, bundle images, URL launching", TourSmallClasses)
