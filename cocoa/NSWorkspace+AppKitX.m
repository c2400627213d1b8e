/* NSWorkspace(AppKitX): applications found by creator, identifier and
 * name, the front process, and launching by name. */
#import <KORU/AppKitX.h>
#import <KORU/NSString+FoundationX.h>

#include <KORU/FSUtilities.h>

#import "FoundationXSupport.h"

@implementation NSWorkspace (AppKitX)

- (NSString *)applicationForName:(NSString *)name creator:(NSString *)creator
                      identifier:(NSString *)identifier
{
    @try {
        OSType code = [creator isKindOfClass:[NSString class]] ? [creator OSType] : kLSUnknownCreator;
        CFStringRef bundleID = [identifier isKindOfClass:[NSString class]] ? (CFStringRef)identifier : NULL;
        CFStringRef appName = [name isKindOfClass:[NSString class]] ? (CFStringRef)name : NULL;
        FSRef ref;
        if (LSFindApplicationForInfo(code, bundleID, appName, &ref, NULL) == noErr)
            return [NSString stringWithFSRef:&ref];
    } @catch (NSException *exception) {
        KORULogException("-[NSWorkspace(AppKitX) applicationForName:creator:identifier:]", __LINE__, exception);
    }
    return nil;
}

- (NSString *)frontProcessPath
{
    @try {
        FSRef ref;
        if (FSGetFrontProcess(&ref))
            return [NSString stringWithFSRef:&ref];
    } @catch (NSException *exception) {
        KORULogException("-[NSWorkspace(AppKitX) frontProcessPath]", __LINE__, exception);
    }
    return nil;
}

- (NSString *)frontProcessIdentifier
{
    NSString *path = [self frontProcessPath];
    return path == nil ? nil : [path bundleIdentifier];
}

- (BOOL)launchApplication:(NSString *)name withLaunchFlags:(LSLaunchFlags)flags
{
    if (![name isKindOfClass:[NSString class]] || [name length] == 0)
        return NO;
    @try {
        NSString *path = [self fullPathForApplication:name];
        if (path != nil)
            return [path launchWithLaunchFlags:flags];
    } @catch (NSException *exception) {
        KORULogException("-[NSWorkspace(AppKitX) launchApplication:withLaunchFlags:]", __LINE__, exception);
    }
    return NO;
}

@end
