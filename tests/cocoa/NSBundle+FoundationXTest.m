/* NSBundle(FoundationX) on bundles made in a private folder. */
#import "KTest.h"

#include <KORU/KORU.h>

#include <stdlib.h>

static NSString *MakeFolder(void)
{
    char pattern[] = "/tmp/koru-bundles-XXXXXX";
    return mkdtemp(pattern) != NULL ? [NSString stringWithUTF8String:pattern] : nil;
}

static void WriteInfo(NSString *bundle, NSDictionary *info)
{
    NSString *resources = [bundle stringByAppendingPathComponent:@"Resources"];
    [[NSFileManager defaultManager] createDirectoryAtPath:resources withIntermediateDirectories:YES
                                               attributes:nil error:NULL];
    [info writeToFile:[resources stringByAppendingPathComponent:@"Info-gnustep.plist"] atomically:YES];
}

KT_CASE(PathsBesideTheBundleItsExecutableAndName)
{
    NSString *folder = MakeFolder();
    KT_ASSERT(folder != nil);
    NSString *path = [folder stringByAppendingPathComponent:@"Tool.bundle"];
    WriteInfo(path, [NSDictionary dictionaryWithObjectsAndKeys:@"org.koru.test.tool", @"CFBundleIdentifier",
                                                               @"Tool", @"NSExecutable", nil]);
    [@"#!/bin/sh\n" writeToFile:[path stringByAppendingPathComponent:@"Tool"] atomically:YES
                       encoding:NSUTF8StringEncoding error:NULL];
    NSBundle *bundle = [NSBundle bundleWithPath:path];
    KT_ASSERT(bundle != nil);
    KT_EXPECT_EQUAL_OBJECTS([bundle directoryPath], folder);
    KT_EXPECT_EQUAL_OBJECTS([bundle neighborPath:@"beside.txt"], [folder stringByAppendingPathComponent:@"beside.txt"]);
    KT_EXPECT_EQUAL_OBJECTS([bundle identifiedName], @"org.koru.test.tool");
    NSString *executableFolder = [[bundle executablePath] stringByDeletingLastPathComponent];
    KT_EXPECT_EQUAL_OBJECTS([bundle executablePath:@"helper"], [executableFolder stringByAppendingPathComponent:@"helper"]);
    KT_EXPECT([bundle executablePath:nil] == nil && [bundle neighborPath:nil] == nil);
    // Without an identifier a bundle is named after its folder; without an executable, no helper path.
    NSString *plain = [folder stringByAppendingPathComponent:@"Plain Name.plugin"];
    WriteInfo(plain, [NSDictionary dictionaryWithObject:@"x" forKey:@"Unrelated"]);
    bundle = [NSBundle bundleWithPath:plain];
    KT_EXPECT([[bundle identifiedName] isEqual:@"Plain Name"] && [bundle executablePath:@"helper"] == nil);
    system([[NSString stringWithFormat:@"rm -rf '%@'", folder] UTF8String]);
}

KT_MAIN()
