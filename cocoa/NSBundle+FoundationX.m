/* NSBundle(FoundationX). */
#import <KORU/NSBundle+FoundationX.h>

@implementation NSBundle (FoundationX)

- (NSString *)executablePath:(NSString *)name
{
    NSString *executable = [self executablePath];
    if (executable == nil || ![name isKindOfClass:[NSString class]])
        return nil;
    return [[executable stringByDeletingLastPathComponent] stringByAppendingPathComponent:name];
}

- (NSString *)directoryPath
{
    return [[self bundlePath] stringByDeletingLastPathComponent];
}

- (NSString *)neighborPath:(NSString *)name
{
    if (![name isKindOfClass:[NSString class]])
        return nil;
    return [[self directoryPath] stringByAppendingPathComponent:name];
}

- (NSString *)identifiedName
{
    NSString *identifier = [self bundleIdentifier];
    if ([identifier length] > 0)
        return identifier;
    return [[[self bundlePath] lastPathComponent] stringByDeletingPathExtension];
}

@end
