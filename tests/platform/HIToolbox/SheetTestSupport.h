/* Answers the sheet a window will have by clicking one of its buttons with
 * mouse events sent through the application, as a person would.  GNUstep
 * runs a sheet in a modal session of its own, and an end sent from a timer
 * between its events can be lost; a click is handled inside the session.
 * Include after KGUI.h. */
#ifndef KORU_TESTS_SHEETTESTSUPPORT_H
#define KORU_TESTS_SHEETTESTSUPPORT_H

#import "KGUI.h"

static NSButton *SheetButton(NSView *view, NSString *title)
{
    if ([view isKindOfClass:[NSButton class]] && [[(NSButton *)view title] isEqualToString:title])
        return (NSButton *)view;
    for (NSView *subview in [view subviews]) {
        NSButton *found = SheetButton(subview, title);
        if (found != nil)
            return found;
    }
    return nil;
}

static void PostMouse(NSEventType type, NSWindow *window, NSPoint where)
{
    [NSApp postEvent:[NSEvent mouseEventWithType:type location:where modifierFlags:0 timestamp:0
                                    windowNumber:[window windowNumber] context:nil eventNumber:0
                                      clickCount:1 pressure:1]
             atStart:NO];
}

@interface SheetClicker : NSObject {
@public
    NSWindow *mParent;
    NSString *mTitle;
    int mTicks;
}
@end

@implementation SheetClicker
- (void)tick:(NSTimer *)timer
{
    NSWindow *sheet = [mParent attachedSheet];
    if (sheet == nil) {
        if (mTicks > 0)
            [timer invalidate];
        return;
    }
    /* Clicked at the second tick the sheet is up (once its session runs),
     * and again now and then until it is gone. */
    if (mTicks++ % 10 != 1)
        return;
    NSView *root = [[sheet contentView] superview] != nil ? [[sheet contentView] superview] : [sheet contentView];
    NSButton *button = SheetButton(root, mTitle);
    if (button == nil)
        return;
    NSRect frame = [button bounds];
    NSPoint center = [button convertPoint:NSMakePoint(NSMidX(frame), NSMidY(frame)) toView:nil];
    PostMouse(NSLeftMouseDown, sheet, center);
    PostMouse(NSLeftMouseUp, sheet, center);
}
@end

/* Clicks the button with the title in parent's next sheet; parent must
 * outlive the sheet. */
static inline void ClickInSheetWhenUp(NSWindow *parent, NSString *title)
{
    SheetClicker *clicker = [[[SheetClicker alloc] init] autorelease];
    clicker->mParent = parent;
    clicker->mTitle = title;
    NSTimer *timer = [NSTimer timerWithTimeInterval:0.1 target:clicker selector:@selector(tick:) userInfo:nil
                                            repeats:YES];
    NSRunLoop *loop = [NSRunLoop currentRunLoop];
    [loop addTimer:timer forMode:NSDefaultRunLoopMode];
    [loop addTimer:timer forMode:NSModalPanelRunLoopMode];
}

#endif
