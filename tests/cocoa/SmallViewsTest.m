/* FileIconView, MenuButton, the bitmap bridge and the demo's strip in real
 * windows; timers of the tracking mode play the user inside drag and menu loops. */
#import "KTest.h"
#include "KGUI.h"

#include <KORU/KORU.h>
#import <KORU/FileIconView.h>
#import <KORU/MenuButton.h>
#import <KORU/NSBitmapImageRep+CGImage.h>
#import <GNUstepGUI/GSDisplayServer.h>

#include <objc/runtime.h>
#include <stdlib.h>

#import "DemoExtras.h"

static NSString *gFolder;

static NSString *MakeFolder(void)
{
    char pattern[] = "/tmp/koru-smallviews-XXXXXX";
    [gFolder release];
    gFolder = mkdtemp(pattern) != NULL ? [[NSString alloc] initWithUTF8String:pattern] : nil;
    return gFolder;
}

static void RemoveFolder(void)
{
    system([[NSString stringWithFormat:@"rm -rf '%@'", gFolder] UTF8String]);
}

static NSString *MakeFile(NSString *name, NSString *contents)
{
    NSString *path = [gFolder stringByAppendingPathComponent:name];
    [contents writeToFile:path atomically:NO encoding:NSUTF8StringEncoding error:NULL];
    return path;
}

static NSEvent *MouseEvent(NSEventType type, NSPoint location, NSWindow *window)
{
    return [NSEvent mouseEventWithType:type location:location modifierFlags:0 timestamp:0
                          windowNumber:[window windowNumber] context:nil eventNumber:0
                            clickCount:1 pressure:type == NSLeftMouseUp ? 0 : 1];
}

/* Plays the user's part inside the drag and menu loops. */
@interface Player : NSObject {
@public
    NSMenu *mMenu;
    NSInteger mItem;
    NSRect mMenuFrame;
    BOOL mMenuVisible;
    int mChosen;
    NSEvent *mCaptured;
    BOOL mAlertShown;
    int mTries;
}
@end

@implementation Player
- (void)dealloc
{
    [mCaptured release];
    [super dealloc];
}

- (void)after:(NSTimeInterval)delay perform:(SEL)selector with:(id)object
{
    [self performSelector:selector withObject:object afterDelay:delay
                  inModes:[NSArray arrayWithObjects:NSEventTrackingRunLoopMode, NSDefaultRunLoopMode,
                                                    NSModalPanelRunLoopMode, nil]];
}

- (void)releaseMouse:(NSWindow *)window
{
    [NSApp postEvent:MouseEvent(NSLeftMouseUp, NSMakePoint(1, 1), window) atStart:NO];
}

/* Points at the menu's item, then lets go of the mouse there. */
- (void)pointAtItem:(id)unused
{
    (void)unused;
    NSMenuView *view = [mMenu menuRepresentation];
    NSWindow *menuWindow = [view window];
    if (![menuWindow isVisible] && mTries++ < 50) { /* not open yet: a busy machine */
        [self after:0.2 perform:@selector(pointAtItem:) with:nil];
        return;
    }
    mMenuFrame = [menuWindow frame];
    mMenuVisible = [menuWindow isVisible];
    NSRect item = [view rectOfItemAtIndex:mItem];
    NSPoint inWindow = [view convertPoint:NSMakePoint(NSMidX(item), NSMidY(item)) toView:nil];
    [GSCurrentServer() setMouseLocation:[menuWindow convertBaseToScreen:inWindow] onScreen:0];
    mTries = 0;
    [self after:0.2 perform:@selector(releaseOverItem:) with:menuWindow];
}

/* Lets go once the menu has followed the pointer to the item. */
- (void)releaseOverItem:(NSWindow *)menuWindow
{
    if ([[mMenu menuRepresentation] highlightedItemIndex] != mItem && mTries++ < 50)
        [self after:0.2 perform:@selector(releaseOverItem:) with:menuWindow];
    else
        [self releaseMouse:menuWindow];
}

/* Answers the modal alert; an event, and a timer that wakes the run loop to
 * take it, let the modal loop notice. */
- (void)answerAlert:(id)unused
{
    (void)unused;
    NSWindow *panel = [NSApp modalWindow];
    if (panel == nil) { /* not running yet: the alert is still being made */
        [self after:0.2 perform:@selector(answerAlert:) with:nil];
        return;
    }
    mAlertShown = [panel isVisible];
    [NSApp stopModalWithCode:NSAlertFirstButtonReturn];
    [NSApp postEvent:[NSEvent otherEventWithType:NSApplicationDefined location:NSZeroPoint modifierFlags:0
                                       timestamp:0 windowNumber:[panel windowNumber] context:nil
                                         subtype:0 data1:0 data2:0]
             atStart:NO];
    [self after:0.1 perform:@selector(wake:) with:nil];
}

- (void)wake:(id)unused { (void)unused; }
- (void)chosen:(id)sender
{
    (void)sender;
    mChosen++;
}
@end

/* Answers its own menu for a contextual click, and keeps the click. */
@interface ContextButton : MenuButton {
@public
    Player *mPlayer;
}
@end

@implementation ContextButton
- (NSMenu *)menuForEvent:(NSEvent *)event
{
    [mPlayer->mCaptured release];
    mPlayer->mCaptured = [event retain];
    return mPlayer->mMenu;
}
@end

KT_CASE(FileIconViewShowsTheIconsAndDragsTheFilesOut)
{
    KT_ASSERT(MakeFolder() != nil);
    NSWindow *window = KGUIMakeWindow(NSMakeRect(100, 100, 320, 200), @"FileIconView");
    FileIconView *view = [[[FileIconView alloc] init] autorelease];
    KT_ASSERT(view != nil);
    [view setFrame:NSMakeRect(40, 40, 64, 64)];
    [[window contentView] addSubview:view];
    KT_EXPECT([[view registeredDraggedTypes] containsObject:NSFilenamesPboardType]);
    KT_EXPECT([[view valueForKey:@"mFiles"] count] == 0);
    NSString *letter = MakeFile(@"letter.txt", @"Dear reader");
    [view setFile:letter];
    KT_EXPECT([[view valueForKey:@"mFiles"] isEqual:[NSArray arrayWithObject:letter]] && [view image] != nil);
    NSArray *both = [NSArray arrayWithObjects:letter, gFolder, nil];
    [view setFiles:both];
    KT_EXPECT([[view valueForKey:@"mFiles"] isEqual:both] && [view image] != nil);
    KGUIScreenshot(window, @"file-icon-view.png");
    /* A press in the view drags the files; letting go ends the drag. */
    [[NSPasteboard pasteboardWithName:NSDragPboard] declareTypes:[NSArray arrayWithObject:NSStringPboardType]
                                                            owner:nil];
    Player *player = [[[Player alloc] init] autorelease];
    [player after:0.3 perform:@selector(releaseMouse:) with:window];
    [view mouseDown:MouseEvent(NSLeftMouseDown, NSMakePoint(72, 72), window)];
    NSPasteboard *drag = [NSPasteboard pasteboardWithName:NSDragPboard];
    KT_EXPECT([[drag types] count] == 1 && [[drag types] containsObject:NSFilenamesPboardType]);
    KT_EXPECT_EQUAL_OBJECTS([drag propertyListForType:NSFilenamesPboardType], both);
    /* Bad input changes nothing; no paths, no icon. */
    [view setFile:nil];
    [view setFiles:(NSArray *)@"/etc"];
    [view mouseDown:nil];
    KT_EXPECT_EQUAL_OBJECTS([view valueForKey:@"mFiles"], both);
    [view setFiles:[NSArray array]];
    KT_EXPECT([[view valueForKey:@"mFiles"] count] == 0 && [view image] == nil);
    /* Made from a nib (no init), the view makes its list when it wakes. */
    FileIconView *fromNib = [[[FileIconView alloc] initWithFrame:NSMakeRect(0, 0, 32, 32)] autorelease];
    [fromNib awakeFromNib];
    KT_EXPECT([fromNib valueForKey:@"mFiles"] != nil);
    KGUICloseWindow(window);
    RemoveFolder();
}

KT_CASE(MenuButtonPullsDownItsMenuUnderItself)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(150, 150, 320, 200), @"MenuButton");
    MenuButton *button = [[[MenuButton alloc] initWithFrame:NSMakeRect(60, 80, 120, 24)] autorelease];
    [button setTitle:@"Actions"];
    [[window contentView] addSubview:button];
    [button awakeFromNib];
    KT_EXPECT([button target] == button && sel_isEqual([button action], @selector(popPulldownMenu:)));
    Player *player = [[[Player alloc] init] autorelease];
    NSMenu *menu = [[[NSMenu alloc] initWithTitle:@"Actions"] autorelease];
    [[menu addItemWithTitle:@"First" action:@selector(chosen:) keyEquivalent:@""] setTarget:player];
    [[menu addItemWithTitle:@"Second" action:@selector(chosen:) keyEquivalent:@""] setTarget:player];
    [button setPulldownMenu:menu];
    KT_EXPECT([button pulldownMenuCore:NO] == menu);
    /* A press fires the action at once; the menu opens with its top-left at
     * the button's bottom-left, and the item under the pointer is chosen. */
    player->mMenu = menu;
    player->mItem = 1;
    [player after:0.5 perform:@selector(pointAtItem:) with:nil];
    [button mouseDown:MouseEvent(NSLeftMouseDown, NSMakePoint(70, 90), window)];
    KGUISpin(0.2);
    NSPoint corner = [window convertBaseToScreen:[[window contentView] convertPoint:NSMakePoint(60, 80) toView:nil]];
    KT_EXPECT(player->mMenuVisible);
    KT_EXPECT_MSG(NSMinX(player->mMenuFrame) == corner.x && NSMaxY(player->mMenuFrame) == corner.y,
                  @"menu at %@, button's corner at %@", NSStringFromRect(player->mMenuFrame),
                  NSStringFromPoint(corner));
    KT_EXPECT(player->mChosen == 1);
    KGUICloseWindow(window);
}

KT_CASE(MenuButtonAsksForAMenuWithAContextualClick)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(150, 150, 320, 200), @"MenuButton");
    NSView *box = [[[NSView alloc] initWithFrame:NSMakeRect(20, 30, 200, 100)] autorelease];
    [[window contentView] addSubview:box];
    ContextButton *button = [[[ContextButton alloc] initWithFrame:NSMakeRect(10, 20, 100, 24)] autorelease];
    [box addSubview:button];
    Player *player = [[[Player alloc] init] autorelease];
    button->mPlayer = player;
    player->mMenu = [[[NSMenu alloc] initWithTitle:@"Context"] autorelease];
    [player->mMenu addItemWithTitle:@"Only" action:@selector(chosen:) keyEquivalent:@""];
    KT_EXPECT([button pulldownMenuCore:NO] == player->mMenu);
    NSEvent *click = player->mCaptured;
    KT_ASSERT(click != nil);
    KT_EXPECT([click type] == NSLeftMouseUp && [click modifierFlags] == 0x40000 && [click clickCount] == 0);
    KT_EXPECT([click windowNumber] == [window windowNumber]);
    KT_EXPECT(NSEqualPoints([click locationInWindow], [box convertPoint:NSMakePoint(10, 20) toView:nil]));
    /* No menu at all: nothing opens, nothing is answered. */
    player->mMenu = nil;
    KT_EXPECT([button pulldownMenuCore:YES] == nil);
    [button popPulldownMenu:nil];
    KGUICloseWindow(window);
    /* A button in no window still answers its menu. */
    MenuButton *loose = [[[MenuButton alloc] initWithFrame:NSMakeRect(0, 0, 80, 24)] autorelease];
    NSMenu *menu = [[[NSMenu alloc] initWithTitle:@"Loose"] autorelease];
    [loose setPulldownMenu:menu];
    KT_EXPECT([loose pulldownMenuCore:NO] == menu);
}

KT_CASE(CoreGraphicsImagesBecomeBitmaps)
{
    KGUISharedApplication();
    KT_ASSERT(MakeFolder() != nil);
    NSString *png = [gFolder stringByAppendingPathComponent:@"half.png"];
    NSString *jpeg = [gFolder stringByAppendingPathComponent:@"gray.jpg"];
    KT_ASSERT(system([[NSString stringWithFormat:@"convert -size 20x10 xc:'rgba(255,0,0,0.4)' '%@' && "
                                                 @"convert -size 30x15 xc:'gray(50%%)' -colorspace Gray '%@'",
                                                 png, jpeg] UTF8String]) == 0);
    CGDataProviderRef provider = CGDataProviderCreateWithFilename([png fileSystemRepresentation]);
    CGImageRef image = CGImageCreateWithPNGDataProvider(provider, NULL, false, kCGRenderingIntentDefault);
    CGDataProviderRelease(provider);
    KT_ASSERT(image != NULL);
    NSBitmapImageRep *bitmap = [[[NSBitmapImageRep alloc] initWithCGImage:image] autorelease];
    KT_ASSERT(bitmap != nil);
    KT_EXPECT([bitmap pixelsWide] == 20 && [bitmap pixelsHigh] == 10 && [bitmap samplesPerPixel] == 4 && [bitmap hasAlpha]);
    KT_EXPECT(memcmp([bitmap bitmapData], "\xff\x00\x00\x66", 4) == 0);
    NSImage *picture = [[[NSImage alloc] initWithCGImage:image size:NSZeroSize] autorelease];
    KT_EXPECT(NSEqualSizes([picture size], NSMakeSize(20, 10)));
    CGImageRelease(image);
    provider = CGDataProviderCreateWithFilename([jpeg fileSystemRepresentation]);
    image = CGImageCreateWithJPEGDataProvider(provider, NULL, false, kCGRenderingIntentDefault);
    CGDataProviderRelease(provider);
    bitmap = [[[NSBitmapImageRep alloc] initWithCGImage:image] autorelease];
    KT_EXPECT([bitmap samplesPerPixel] == 1 && ![bitmap hasAlpha]);
    KT_EXPECT_EQUAL_OBJECTS([bitmap colorSpaceName], NSCalibratedWhiteColorSpace);
    picture = [[[NSImage alloc] initWithCGImage:image size:NSMakeSize(60, 30)] autorelease];
    KT_EXPECT(NSEqualSizes([picture size], NSMakeSize(60, 30)));
    CGImageRelease(image);
    KT_EXPECT([[NSBitmapImageRep alloc] initWithCGImage:NULL] == nil &&
              [[NSImage alloc] initWithCGImage:NULL size:NSZeroSize] == nil);
    RemoveFolder();
}

KT_CASE(TheDemoStripHasAnIconAMenuAndAnAlert)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(100, 100, 480, 120), @"KORU demo strip");
    NSView *strip = [[[NSView alloc] initWithFrame:NSMakeRect(0, 0, 480, 44)] autorelease];
    [[window contentView] addSubview:strip];
    KORUDemoAddExtras(strip);
    KORUDemoAddExtras(nil);
    FileIconView *icon = nil;
    MenuButton *actions = nil;
    NSButton *alert = nil;
    for (NSView *view in [strip subviews]) {
        if ([view isKindOfClass:[FileIconView class]])
            icon = (FileIconView *)view;
        else if ([view isKindOfClass:[MenuButton class]])
            actions = (MenuButton *)view;
        else if ([view isKindOfClass:[NSButton class]])
            alert = (NSButton *)view;
    }
    KT_ASSERT(icon != nil && actions != nil && alert != nil);
    KT_EXPECT([icon image] != nil &&
              [[icon valueForKey:@"mFiles"] isEqual:[NSArray arrayWithObject:[[NSBundle mainBundle] executablePath]]]);
    KGUIScreenshot(window, @"demo-strip.png");
    /* The menu's first item copies the icon's path. */
    Player *player = [[[Player alloc] init] autorelease];
    player->mMenu = [actions pulldownMenuCore:NO];
    KT_ASSERT(player->mMenu != nil);
    player->mItem = 0;
    [player after:0.5 perform:@selector(pointAtItem:) with:nil];
    [actions performClick:nil];
    KT_EXPECT(player->mMenuVisible);
    KT_EXPECT_EQUAL_OBJECTS([[NSPasteboard generalPasteboard] stringForType:NSStringPboardType],
                            [[NSBundle mainBundle] executablePath]);
    /* The alert runs modally until it is answered. */
    [player after:0.5 perform:@selector(answerAlert:) with:nil];
    [alert performClick:nil];
    KT_EXPECT(player->mAlertShown && [NSApp modalWindow] == nil);
    KGUICloseWindow(window);
}

KT_MAIN()
