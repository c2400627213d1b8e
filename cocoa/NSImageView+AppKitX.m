/* NSImageView(AppKitX): the workspace's icons of files and file types. */
#import <KORU/AppKitX.h>

#import "FoundationXSupport.h"

@implementation NSImageView (AppKitX)

- (void)setIconImageForFile:(NSString *)path
{
    if (![path isKindOfClass:[NSString class]] || [path length] == 0)
        return;
    @try {
        [self setImage:[[NSWorkspace sharedWorkspace] iconForFile:[path stringByExpandingTildeInPath]]];
    } @catch (NSException *exception) {
        KORULogException("-[NSImageView(AppKitX) setIconImageForFile:]", __LINE__, exception);
    }
}

- (void)setIconImageForFiles:(NSArray *)paths
{
    if (![paths isKindOfClass:[NSArray class]] || [paths count] == 0)
        return;
    @try {
        [self setImage:[[NSWorkspace sharedWorkspace] iconForFiles:paths]];
    } @catch (NSException *exception) {
        KORULogException("-[NSImageView(AppKitX) setIconImageForFiles:]", __LINE__, exception);
    }
}

- (void)setIconImageForFileType:(NSString *)fileType
{
    if (![fileType isKindOfClass:[NSString class]] || [fileType length] == 0)
        return;
    @try {
        [self setImage:[[NSWorkspace sharedWorkspace] iconForFileType:fileType]];
    } @catch (NSException *exception) {
        KORULogException("-[NSImageView(AppKitX) setIconImageForFileType:]", __LINE__, exception);
    }
}

@end
