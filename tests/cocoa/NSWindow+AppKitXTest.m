/* NSWindow(AppKitX) on real windows: the mouse in base coordinates, sheets
 * closed from a timer while they run, and placement against a parent window. */
#import "KTest.h"
#import "KGUI.h"

#include <KORU/KORU.h>
#include <math.h>

@interface SheetDelegate : NSObject {
@public
    int calls, code;
    void *context;
    NSWindow *sheet;
}
@end

@implementation SheetDelegate
- (void)sheetDidEnd:(NSWindow *)ended returnCode:(int)returnCode contextInfo:(void *)contextInfo
{
    calls++;
    code = returnCode;
    context = contextInfo;
    sheet = ended;
}
@end

/* Closes the sheet through the category, with the code when one is given. */
@implementation KGUITimerTarget (WindowTest)
- (void)closeSheetOf:(NSTimer *)timer
{
    NSArray *info = [timer userInfo];
    NSWindow *sheet = [info objectAtIndex:0];
    if ([info count] > 1)
        [sheet closeSheetWithReturnCode:[[info objectAtIndex:1] intValue]];
    else
        [sheet closeSheet];
    [self wake];
}
@end

KT_CASE(MouseLocationIsInBaseCoordinates)
{
    NSWindow *near = KGUIMakeWindow(NSMakeRect(40, 60, 200, 100), @"Near");
    NSWindow *far = KGUIMakeWindow(NSMakeRect(340, 260, 200, 100), @"Far");
    NSPoint screen = [NSEvent mouseLocation];
    NSPoint inNear = [near mouseLocation], inFar = [far mouseLocation];
    NSPoint expected = [near convertScreenToBase:screen];
    KT_EXPECT(inNear.x == expected.x && inNear.y == expected.y);
    /* Windows 300 apart see the same mouse 300 apart. */
    KT_EXPECT_MSG(fabs((inNear.x - inFar.x) - 300) < 0.5 && fabs((inNear.y - inFar.y) - 200) < 0.5,
                  @"%@ %@", NSStringFromPoint(inNear), NSStringFromPoint(inFar));
    KGUICloseWindow(far);
    KGUICloseWindow(near);
}

KT_CASE(SheetsBegunAndClosed)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(100, 100, 320, 200), @"Document");
    SheetDelegate *delegate = [[[SheetDelegate alloc] init] autorelease];
    NSPanel *sheet = [[[NSPanel alloc] initWithContentRect:NSMakeRect(0, 0, 160, 60) styleMask:NSTitledWindowMask
                                                   backing:NSBackingStoreBuffered defer:NO] autorelease];
    [sheet setReleasedWhenClosed:NO];
    int context = 0;
    KGUIScheduleTimer(0.3, @selector(closeSheetOf:), [NSArray arrayWithObjects:sheet, [NSNumber numberWithInt:5], nil]);
    [sheet beginSheetForWindow:window modalDelegate:delegate
                didEndSelector:@selector(sheetDidEnd:returnCode:contextInfo:) contextInfo:&context];
    KGUISpin(0.2);
    KT_EXPECT(delegate->calls == 1 && delegate->code == 5 && delegate->context == &context);
    KT_EXPECT(delegate->sheet == sheet && ![sheet isVisible] && [window attachedSheet] == nil);
    /* closeSheet ends the sheet with the stopped answer. */
    KGUIScheduleTimer(0.3, @selector(closeSheetOf:), [NSArray arrayWithObject:sheet]);
    [sheet beginSheetForWindow:window modalDelegate:delegate
                didEndSelector:@selector(sheetDidEnd:returnCode:contextInfo:) contextInfo:NULL];
    KGUISpin(0.2);
    KT_EXPECT_MSG(delegate->calls == 2 && delegate->code == NSRunStoppedResponse && ![sheet isVisible], @"%d %d",
                  delegate->calls, delegate->code);
    /* A delegate without the selector is not called; nothing raises. */
    KGUIScheduleTimer(0.3, @selector(closeSheetOf:), [NSArray arrayWithObjects:sheet, [NSNumber numberWithInt:1], nil]);
    [sheet beginSheetForWindow:window modalDelegate:nil didEndSelector:NULL contextInfo:NULL];
    KT_EXPECT(![sheet isVisible] && delegate->calls == 2);
    [sheet closeSheet]; /* no sheet running */
    [sheet closeSheetWithReturnCode:3];
    KGUICloseWindow(window);
}

KT_CASE(RepositionAgainstAParentWindow)
{
    NSWindow *parent = KGUIMakeWindow(NSMakeRect(200, 150, 500, 400), @"Parent");
    NSWindow *window = KGUIMakeWindow(NSMakeRect(10, 10, 200, 120), @"Placed");
    NSRect before = [window frame];
    NSRect parentFrame = [parent frame];
    KT_ASSERT([window reposition:kWindowCenterOnParentWindow parentWindow:parent]);
    NSRect frame = [window frame];
    KT_EXPECT_MSG(fabs(NSMidX(frame) - NSMidX(parentFrame)) <= 1.0, @"%@ on %@",
                  NSStringFromRect(frame), NSStringFromRect(parentFrame));
    KT_EXPECT(NSMinY(frame) > NSMinY(parentFrame) && NSMaxY(frame) < NSMaxY(parentFrame));
    KT_ASSERT([window reposition:kWindowCascadeOnParentWindow parentWindow:parent]);
    frame = [window frame];
    KT_EXPECT_MSG(NSMinX(frame) > NSMinX(parentFrame) && NSMinX(frame) < NSMinX(parentFrame) + 60
                  && NSMaxY(frame) < NSMaxY(parentFrame) && NSMaxY(frame) > NSMaxY(parentFrame) - 60,
                  @"%@ on %@", NSStringFromRect(frame), NSStringFromRect(parentFrame));
    KT_EXPECT(NSEqualSizes(frame.size, before.size));
    /* A method that needs a parent without one, or an unknown method: NO, the window stays. */
    NSRect placed = [window frame];
    KT_EXPECT(![window reposition:kWindowCenterOnParentWindow parentWindow:NULL]);
    KT_EXPECT(![window reposition:99 parentWindow:parent] && (NSEqualRects([window frame], placed)));
    NSUInteger windows = [[NSApp windows] count];
    KT_EXPECT([window reposition:kWindowCenterOnMainScreen parentWindow:NULL]);
    KGUISpin(0.1);
    KT_EXPECT_MSG([[NSApp windows] count] <= windows, @"stand-in windows left: %lu -> %lu",
                  (unsigned long)windows, (unsigned long)[[NSApp windows] count]);
    KGUICloseWindow(window);
    KGUICloseWindow(parent);
}

KT_MAIN()
