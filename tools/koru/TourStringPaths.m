/* Tour section: strings as paths through the FoundationX category that the
 * loaded bundle adds to NSString: folders made, kinds told, a storable path
 * that finds its file after a move, type codes as text, the files of a
 * folder, and a line of script.  The host checks that NSString answers each
 * method before it sends it. */
#import <Foundation/Foundation.h>
#import <KORU/NSString+FoundationX.h>

#include "Tour.h"

#include <stdio.h>

static BOOL Answers(id receiver, SEL selector)
{
    if ([receiver respondsToSelector:selector])
        return YES;
    fprintf(stderr, "koru: the bundle adds no %s\n", sel_getName(selector));
    return NO;
}

static const char *YesNo(BOOL value)
{
    return value ? "yes" : "no";
}

static bool TourStringPaths(CFBundleRef bundle)
{
    (void)bundle;
    const SEL used[] = {@selector(createDirectories), @selector(createEmptyFile), @selector(isFolder),
                        @selector(isPackage), @selector(pathComponentsCount), @selector(HFSPath),
                        @selector(storeableDictionary), @selector(subfilepaths), @selector(executeAppleScript),
                        @selector(remove)};
    for (size_t i = 0; i < sizeof used / sizeof used[0]; i++) {
        if (!Answers(@"", used[i]))
            return false;
    }
    if (!Answers([NSString class], @selector(stringWithApplicationTemporary)) ||
        !Answers([NSString class], @selector(stringWithStoreableDictionary:resolveAliasFirst:)) ||
        !Answers([NSString class], @selector(stringWithOSType:)))
        return false;

    NSString *own = [NSString stringWithApplicationTemporary];
    if (own == nil)
        return false;
    NSString *folder = [own stringByAppendingPathComponent:
                                [NSString stringWithFormat:@"tour-paths-%d", [[NSProcessInfo processInfo] processIdentifier]]];
    NSString *letters = [folder stringByAppendingPathComponent:@"Letters"];
    NSString *letter = [letters stringByAppendingPathComponent:@"To Ada.txt"];
    NSString *app = [folder stringByAppendingPathComponent:@"Reader.app"];
    BOOL made = [letters createDirectories] && [letter createEmptyFile] && [app createDirectories];
    printf("  this program's temporary folder: %s\n", [own UTF8String]);
    printf("  made %s (%lu components), HFS style: %s\n", [letter UTF8String],
           (unsigned long)[letter pathComponentsCount], [[letter HFSPath] UTF8String]);
    printf("  Letters is a folder: %s; Reader.app is a package: %s, a folder: %s\n", YesNo([letters isFolder]),
           YesNo([app isPackage]), YesNo([app isFolder]));

    NSDictionary *stored = [letter storeableDictionary];
    NSString *moved = [letters stringByAppendingPathComponent:@"Sent to Ada.txt"];
    BOOL renamed = [[NSFileManager defaultManager] movePath:letter toPath:moved handler:nil];
    NSString *found = [NSString stringWithStoreableDictionary:stored resolveAliasFirst:YES];
    printf("  stored as \"Path\" and %lu bytes of \"Alias\"; renamed, it is found at %s\n",
           (unsigned long)[[stored objectForKey:@"Alias"] length], [found UTF8String]);

    printf("  'TEXT' as text: %s; \"APPL\" as a code: 0x%08lX\n", [[NSString stringWithOSType:0x54455854] UTF8String],
           (unsigned long)[@"APPL" OSType]);
    printf("  files and packages inside: %s\n", [[[folder subfilepaths] componentsJoinedByString:@", "] UTF8String]);
    NSString *answer = [@"return 6 * 7" executeAppleScript];
    printf("  \"return 6 * 7\" run as a script: %s\n", [answer UTF8String]);
    BOOL removed = [folder remove];
    printf("  removed again: %s\n", YesNo(removed));
    return made && renamed && [found isEqualToString:moved] && [answer isEqualToString:@"42"] && removed;
}

KORU_TOUR_SECTION(85, "NSString paths: kinds, a storable path that follows a renamed file, type codes, a script", TourStringPaths)
