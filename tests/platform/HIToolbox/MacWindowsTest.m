/* Carbon windows over AppKit on the test display: creation, placement,
 * bounds in global coordinates, the Cocoa wrapper and disposal. */
#import "KTest.h"
#import "KGUI.h"

#include <Carbon/Carbon.h>

static CGFloat ScreenHeight(void)
{
    return NSHeight([[[NSScreen screens] objectAtIndex:0] frame]);
}

KT_CASE(CreateAndBoundsUseGlobalCoordinates)
{
    KGUISharedApplication();
    WindowRef window = NULL;
    Rect bounds = {100, 50, 300, 450}; /* top, left, bottom, right */
    KT_ASSERT(CreateNewWindow(kDocumentWindowClass, kWindowStandardDocumentAttributes, &bounds,
                              &window) == noErr);
    KT_ASSERT(window != NULL);
    KT_EXPECT([window styleMask] & NSResizableWindowMask);
    KT_EXPECT(![window isVisible]);
    NSRect content = [window contentRectForFrameRect:[window frame]];
    KT_EXPECT(NSEqualRects(content, NSMakeRect(50, ScreenHeight() - 300, 400, 200)));

    Rect read;
    KT_EXPECT(GetWindowBounds(window, kWindowContentRgn, &read) == noErr);
    KT_EXPECT(read.top == 100 && read.left == 50 && read.bottom == 300 && read.right == 450);
    KT_EXPECT(GetWindowBounds(window, kWindowStructureRgn, &read) == noErr);
    KT_EXPECT(read.top <= 100 && read.bottom >= 300);

    Rect moved = {110, 20, 210, 220}; /* clear of the top: AppKit keeps title bars on screen */
    KT_EXPECT(SetWindowBounds(window, kWindowContentRgn, &moved) == noErr);
    KT_EXPECT(GetWindowBounds(window, kWindowGlobalPortRgn, &read) == noErr);
    KT_EXPECT_MSG(read.top == 110 && read.left == 20 && read.bottom == 210 && read.right == 220,
                  @"%d %d %d %d", read.top, read.left, read.bottom, read.right);

    KT_EXPECT(GetWindowBounds(window, 99, &read) == paramErr);
    KT_EXPECT(GetWindowBounds(window, kWindowContentRgn, NULL) == paramErr);
    KT_EXPECT(GetWindowBounds(NULL, kWindowContentRgn, &read) == errInvalidWindowRef);
    KT_EXPECT(SetWindowBounds(NULL, kWindowContentRgn, &moved) == errInvalidWindowRef);
    Rect inverted = {10, 10, 5, 20};
    KT_EXPECT(SetWindowBounds(window, kWindowContentRgn, &inverted) == paramErr);
    DisposeWindow(window);
    DisposeWindow(NULL);

    WindowRef none = (WindowRef)1;
    KT_EXPECT(CreateNewWindow(kDocumentWindowClass, 0, NULL, &none) == paramErr && none == NULL);
    KT_EXPECT(CreateNewWindow(99, 0, &bounds, &none) == paramErr);
    KT_EXPECT(CreateNewWindow(kDocumentWindowClass, 0, &inverted, &none) == paramErr);
    KT_EXPECT(CreateNewWindow(kDocumentWindowClass, 0, &bounds, NULL) == paramErr);
    KT_EXPECT(CreateNewWindow(kPlainWindowClass, 0, &bounds, &none) == noErr);
    KT_EXPECT([none styleMask] == NSBorderlessWindowMask);
    DisposeWindow(none);
}

KT_CASE(RepositionPlacesOnScreenAndParent)
{
    KGUISharedApplication();
    NSRect visible = [[[NSScreen screens] objectAtIndex:0] visibleFrame];
    WindowRef window = NULL;
    Rect bounds = {0, 0, 100, 200};
    KT_ASSERT(CreateNewWindow(kDocumentWindowClass, kWindowStandardDocumentAttributes, &bounds,
                              &window) == noErr);
    NSSize size = [window frame].size;

    KT_EXPECT(RepositionWindow(window, NULL, kWindowCenterOnMainScreen) == noErr);
    NSRect frame = [window frame];
    KT_EXPECT(fabs(NSMidX(frame) - NSMidX(visible)) <= 1 && fabs(NSMidY(frame) - NSMidY(visible)) <= 1);
    KT_EXPECT(NSEqualSizes(frame.size, size));

    KT_EXPECT(RepositionWindow(window, NULL, kWindowAlertPositionOnMainScreen) == noErr);
    frame = [window frame];
    CGFloat above = NSMaxY(visible) - NSMaxY(frame), below = NSMinY(frame) - NSMinY(visible);
    KT_EXPECT(fabs(NSMidX(frame) - NSMidX(visible)) <= 1 && fabs(below - 2 * above) <= 3);

    NSWindow *parent = KGUIMakeWindow(NSMakeRect(300, 200, 400, 300), @"Parent");
    KT_EXPECT(RepositionWindow(window, parent, kWindowCenterOnParentWindow) == noErr);
    frame = [window frame];
    KT_EXPECT(fabs(NSMidX(frame) - NSMidX([parent frame])) <= 1
              && fabs(NSMidY(frame) - NSMidY([parent frame])) <= 1);
    KT_EXPECT(RepositionWindow(window, parent, kWindowCascadeOnParentWindow) == noErr);
    frame = [window frame];
    KT_EXPECT(NSMinX(frame) > NSMinX([parent frame]) && NSMaxY(frame) < NSMaxY([parent frame]));

    KT_EXPECT(RepositionWindow(window, NULL, kWindowCenterOnParentWindow) == paramErr);
    KT_EXPECT(RepositionWindow(window, parent, 0) == paramErr);
    KT_EXPECT(RepositionWindow(window, parent, 11) == paramErr);
    KT_EXPECT(RepositionWindow(NULL, parent, kWindowCenterOnMainScreen) == errInvalidWindowRef);

    DisposeWindow(window);
    KGUICloseWindow(parent);
}

KT_CASE(CocoaWrapperIsTheWindow)
{
    KGUISharedApplication();
    WindowRef window = NULL;
    Rect bounds = {0, 0, 50, 50};
    KT_ASSERT(CreateNewWindow(kDocumentWindowClass, 0, &bounds, &window) == noErr);
    NSUInteger before = [window retainCount];
    NSWindow *wrapper = [[NSWindow alloc] initWithWindowRef:window];
    KT_EXPECT(wrapper == window && [window retainCount] == before + 1);
    [wrapper release];
    KT_EXPECT([[NSWindow alloc] initWithWindowRef:NULL] == nil);
    KT_EXPECT([[NSWindow alloc] initWithWindowRef:@"not a window"] == nil);
    DisposeWindow(window);
}

KT_CASE(ScreenshotOfTheRootWindow)
{
    KGUISharedApplication();
    WindowRef window = NULL;
    Rect bounds = {100, 100, 300, 400};
    KT_ASSERT(CreateNewWindow(kDocumentWindowClass, kWindowStandardDocumentAttributes, &bounds,
                              &window) == noErr);
    [window orderFront:nil];
    KT_EXPECT(KGUIScreenshot(nil, @"MacWindowsScreen.png") != nil);
    DisposeWindow(window);
}

KT_MAIN()
