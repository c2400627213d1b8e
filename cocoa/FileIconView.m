/* FileIconView: the icon of files, dragged out as a file-name list. */
#import <KORU/FileIconView.h>

#import "FoundationXSupport.h"

/* The workspace's icon for the files; GNUstep may have no picture for
 * several files, and then the first file's icon stands for them. */
static NSImage *IconForFiles(NSArray *files)
{
    NSWorkspace *workspace = [NSWorkspace sharedWorkspace];
    NSImage *icon = [files count] > 0 ? [workspace iconForFiles:files] : nil;
    if (icon == nil && [files count] > 0)
        icon = [workspace iconForFile:[files objectAtIndex:0]];
    return icon;
}

@implementation FileIconView

- (id)init
{
    if ((self = [super init]) == nil || ![self makeMembers]) {
        KORULogFailure("-[FileIconView init]", __LINE__);
        [self release];
        return nil;
    }
    [self registerForDraggedTypes:[NSArray arrayWithObject:NSFilenamesPboardType]];
    return self;
}

- (void)awakeFromNib
{
    if ([NSImageView instancesRespondToSelector:@selector(awakeFromNib)])
        [super awakeFromNib];
    [self makeMembers];
}

- (BOOL)makeMembers
{
    if (mFiles == nil)
        mFiles = [[NSMutableArray alloc] init];
    if (mFiles == nil) {
        KORULogFailure("-[FileIconView makeMembers]", __LINE__);
        return NO;
    }
    return YES;
}

- (void)dealloc
{
    [mFiles release];
    [super dealloc];
}

- (void)setFile:(NSString *)path
{
    if (![path isKindOfClass:[NSString class]] || ![self makeMembers])
        return;
    @try {
        [mFiles setArray:[NSArray arrayWithObject:path]];
        [self setImage:[[NSWorkspace sharedWorkspace] iconForFile:path]];
    } @catch (NSException *exception) {
        KORULogException("-[FileIconView setFile:]", __LINE__, exception);
    }
}

- (void)setFiles:(NSArray *)paths
{
    if (![paths isKindOfClass:[NSArray class]] || ![self makeMembers])
        return;
    @try {
        [mFiles setArray:paths];
        [self setImage:IconForFiles(paths)];
    } @catch (NSException *exception) {
        KORULogException("-[FileIconView setFiles:]", __LINE__, exception);
    }
}

- (void)mouseDown:(NSEvent *)event
{
    if (event == nil)
        return;
    @try {
        NSPasteboard *pasteboard = [NSPasteboard pasteboardWithName:NSDragPboard];
        if (pasteboard == nil) {
            KORULogFailure("-[FileIconView mouseDown:]", __LINE__);
            return;
        }
        NSArray *files = mFiles != nil ? mFiles : [NSArray array];
        [pasteboard declareTypes:[NSArray arrayWithObject:NSFilenamesPboardType] owner:nil];
        [pasteboard setPropertyList:files forType:NSFilenamesPboardType];
        NSPoint point = [self convertPoint:[event locationInWindow] fromView:nil];
        NSImage *icon = IconForFiles(files);
        /* A 32-point icon centred under the pointer. */
        [self dragImage:icon
                     at:NSMakePoint(point.x - 16.0, point.y - 16.0)
                 offset:NSZeroSize
                  event:event
             pasteboard:pasteboard
                 source:self
              slideBack:YES];
    } @catch (NSException *exception) {
        KORULogException("-[FileIconView mouseDown:]", __LINE__, exception);
    }
}

@end
