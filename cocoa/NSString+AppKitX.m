/* NSString(AppKitX): a path or URL string opened or shown by the shared
 * workspace.  GNUstep's workspace hands what its own applications do not
 * take to xdg-open, so items reach the user's default applications. */
#import <KORU/AppKitX.h>

#import "FoundationXSupport.h"

@implementation NSString (AppKitX)

- (BOOL)open
{
    if ([self length] == 0)
        return NO;
    @try {
        return [[NSWorkspace sharedWorkspace] openFile:[self stringByExpandingTildeInPath]];
    } @catch (NSException *exception) {
        KORULogException("-[NSString(AppKitX) open]", __LINE__, exception);
    }
    return NO;
}

/* The file viewer is GNUstep's workspace application when one runs; without
 * it the folder holding the item is opened with the folder's default
 * application (the desktop's file viewer), which shows the item there. */
- (BOOL)show
{
    if ([self length] == 0)
        return NO;
    @try {
        NSString *path = [self stringByExpandingTildeInPath];
        NSWorkspace *workspace = [NSWorkspace sharedWorkspace];
        if ([workspace selectFile:path inFileViewerRootedAtPath:@""])
            return YES;
        if (![[NSFileManager defaultManager] fileExistsAtPath:path])
            return NO;
        NSString *folder = [path stringByDeletingLastPathComponent];
        return [folder length] > 0 && [workspace openFile:folder];
    } @catch (NSException *exception) {
        KORULogException("-[NSString(AppKitX) show]", __LINE__, exception);
    }
    return NO;
}

/* File URLs and URLs of a scheme a GNUstep application claims go to the
 * workspace; any other goes straight to xdg-open through Launch Services,
 * as GNUstep's workspace would only after asking for an "OpenURL" service
 * and, with none, stopping the application at a modal alert. */
- (BOOL)openAsURL
{
    @try {
        NSURL *url = [NSURL URLWithString:self];
        if (url == nil || [[url scheme] length] == 0)
            return NO;
        NSWorkspace *workspace = [NSWorkspace sharedWorkspace];
        if ([url isFileURL]
            || ([workspace respondsToSelector:@selector(getBestAppInRole:forScheme:)]
                && [workspace getBestAppInRole:nil forScheme:[url scheme]] != nil))
            return [workspace openURL:url];
        return LSOpenCFURLRef((CFURLRef)url, NULL) == noErr;
    } @catch (NSException *exception) {
        KORULogException("-[NSString(AppKitX) openAsURL]", __LINE__, exception);
    }
    return NO;
}

@end
