/* Carbon windows over AppKit on the test display: creation, placement,
 * bounds in global coordinates, the Cocoa wrapper and disposal. */
#import "KTest.h"
#import "KGUI.h"

#include <Carbon/Carbon.h>

/* A new document window with the content bounds; NULL when refused. */
static WindowRef NewWindow(WindowAttributes attributes, short top, short left, short bottom, short right)
{
    KGUISharedApplication();
    Rect bounds = {top, left, bottom, right};
    WindowRef window = NULL;
    return CreateNewWindow(kDocumentWindowClass, attributes, &bounds, &window) == noErr ? window : NULL;
}

static BOOL Near(CGFloat a, CGFloat b)
{
    return fabs(a - b) <= 1;
}

KT_CASE(CreateAndBoundsUseGlobalCoordinates)
{
    WindowRef window = NewWindow(kWindowStandardDocumentAttributes, 100, 50, 300, 450);
    KT_ASSERT(window != NULL);
    KT_EXPECT(([window styleMask] & NSResizableWindowMask) && ![window isVisible]);
    CGFloat screenHeight = NSHeight([[[NSScreen screens] objectAtIndex:0] frame]);
    KT_EXPECT(NSEqualRects([window contentRectForFrameRect:[window frame]], NSMakeRect(50, screenHeight - 300, 400, 200)));

    Rect read;
    KT_EXPECT(GetWindowBounds(window, kWindowContentRgn, &read) == noErr);
    KT_EXPECT(read.top == 100 && read.left == 50 && read.bottom == 300 && read.right == 450);
    KT_EXPECT(GetWindowBounds(window, kWindowStructureRgn, &read) == noErr && read.top <= 100 && read.bottom >= 300);
    Rect moved = {110, 20, 210, 220}; /* clear of the top: AppKit keeps title bars on screen */
    KT_EXPECT(SetWindowBounds(window, kWindowContentRgn, &moved) == noErr);
    KT_EXPECT(GetWindowBounds(window, kWindowGlobalPortRgn, &read) == noErr);
    KT_EXPECT_MSG(read.top == 110 && read.left == 20 && read.bottom == 210 && read.right == 220,
                  @"%d %d %d %d", read.top, read.left, read.bottom, read.right);

    Rect inverted = {10, 10, 5, 20};
    KT_EXPECT(GetWindowBounds(window, 99, &read) == paramErr && GetWindowBounds(window, kWindowContentRgn, NULL) == paramErr);
    KT_EXPECT(GetWindowBounds(NULL, kWindowContentRgn, &read) == errInvalidWindowRef);
    KT_EXPECT(SetWindowBounds(NULL, kWindowContentRgn, &moved) == errInvalidWindowRef);
    KT_EXPECT(SetWindowBounds(window, kWindowContentRgn, &inverted) == paramErr);
    DisposeWindow(window);
    DisposeWindow(NULL);

    WindowRef none = (WindowRef)1;
    KT_EXPECT(CreateNewWindow(kDocumentWindowClass, 0, NULL, &none) == paramErr && none == NULL);
    KT_EXPECT(CreateNewWindow(99, 0, &moved, &none) == paramErr);
    KT_EXPECT(CreateNewWindow(kDocumentWindowClass, 0, &inverted, &none) == paramErr);
    KT_EXPECT(CreateNewWindow(kDocumentWindowClass, 0, &moved, NULL) == paramErr);
    KT_EXPECT(CreateNewWindow(kPlainWindowClass, 0, &moved, &none) == noErr && [none styleMask] == NSBorderlessWindowMask);
    DisposeWindow(none);
}

KT_CASE(RepositionPlacesOnScreenAndParent)
{
    NSRect visible = [[[NSScreen screens] objectAtIndex:0] visibleFrame];
    WindowRef window = NewWindow(kWindowStandardDocumentAttributes, 0, 0, 100, 200);
    KT_ASSERT(window != NULL);
    NSSize size = [window frame].size;
    KT_EXPECT(RepositionWindow(window, NULL, kWindowCenterOnMainScreen) == noErr);
    NSRect frame = [window frame];
    KT_EXPECT(Near(NSMidX(frame), NSMidX(visible)) && Near(NSMidY(frame), NSMidY(visible)));
    KT_EXPECT(NSEqualSizes(frame.size, size));
    /* An alert sits a third of the way down. */
    KT_EXPECT(RepositionWindow(window, NULL, kWindowAlertPositionOnMainScreen) == noErr);
    frame = [window frame];
    CGFloat above = NSMaxY(visible) - NSMaxY(frame), below = NSMinY(frame) - NSMinY(visible);
    KT_EXPECT(Near(NSMidX(frame), NSMidX(visible)) && fabs(below - 2 * above) <= 3);

    NSWindow *parent = KGUIMakeWindow(NSMakeRect(300, 200, 400, 300), @"Parent");
    KT_EXPECT(RepositionWindow(window, parent, kWindowCenterOnParentWindow) == noErr);
    frame = [window frame];
    KT_EXPECT(Near(NSMidX(frame), NSMidX([parent frame])) && Near(NSMidY(frame), NSMidY([parent frame])));
    KT_EXPECT(RepositionWindow(window, parent, kWindowCascadeOnParentWindow) == noErr);
    frame = [window frame];
    KT_EXPECT(NSMinX(frame) > NSMinX([parent frame]) && NSMaxY(frame) < NSMaxY([parent frame]));

    KT_EXPECT(RepositionWindow(window, NULL, kWindowCenterOnParentWindow) == paramErr);
    KT_EXPECT(RepositionWindow(window, parent, 0) == paramErr && RepositionWindow(window, parent, 11) == paramErr);
    KT_EXPECT(RepositionWindow(NULL, parent, kWindowCenterOnMainScreen) == errInvalidWindowRef);
    DisposeWindow(window);
    KGUICloseWindow(parent);
}

KT_CASE(CocoaWrapperIsTheWindow)
{
    WindowRef window = NewWindow(0, 0, 0, 50, 50);
    KT_ASSERT(window != NULL);
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
    WindowRef window = NewWindow(kWindowStandardDocumentAttributes, 100, 100, 300, 400);
    KT_ASSERT(window != NULL);
    [window orderFront:nil];
    KT_EXPECT(KGUIScreenshot(nil, @"MacWindowsScreen.png") != nil);
    DisposeWindow(window);
}

KT_MAIN()
