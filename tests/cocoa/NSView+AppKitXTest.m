/* NSView(AppKitX) on real views in a window on the test display: geometry
 * through the frame, parking a view, focus and the mouse position. */
#import "KTest.h"
#import "KGUI.h"

#include <KORU/KORU.h>

KT_CASE(GeometryWorksOnTheFrame)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(100, 100, 300, 200), @"Geometry");
    NSView *view = [[[NSView alloc] initWithFrame:NSMakeRect(10, 20, 30, 40)] autorelease];
    [[window contentView] addSubview:view];
    KT_EXPECT([view right] == 40 && [view top] == 60 && [view width] == 30);
    KT_EXPECT(NSEqualPoints([view leftTop], NSMakePoint(10, 60)));
    KT_EXPECT([view horizontalCenter] == 25 && [view verticalCenter] == 40);
    [view rightResize:-50];
    KT_EXPECT(NSEqualRects([view frame], NSMakeRect(10, 20, 0, 40)));
    [view setWidthResizingLeft:20];
    KT_EXPECT(NSEqualRects([view frame], NSMakeRect(-10, 20, 20, 40)));
    [view horizontalCenterMoveTo:100];
    [view verticalCenterMoveTo:50];
    KT_EXPECT(NSEqualRects([view frame], NSMakeRect(90, 30, 20, 40)));
    [view topMoveTo:200];
    [view leftResize:5];
    KT_EXPECT(NSEqualRects([view frame], NSMakeRect(85, 160, 25, 40)));
    [view setHeightResizingBottom:10];
    [view bottomResizeTo:100];
    KT_EXPECT(NSEqualRects([view frame], NSMakeRect(85, 100, 25, 100)));
    KGUICloseWindow(window);
}

KT_CASE(ParkedViewSurvivesAndComesBack)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(100, 100, 300, 200), @"Park");
    NSView *content = [window contentView];
    NSView *box = [[NSView alloc] initWithFrame:NSMakeRect(0, 0, 100, 100)];
    NSView *view = [[NSView alloc] initWithFrame:NSMakeRect(5, 5, 10, 10)];
    [content addSubview:box];
    [box release];
    [box addSubview:view];
    [view release]; /* the box holds the only reference now */
    NSUInteger held = [view retainCount];
    KT_EXPECT([view unuseFromSuperview] && ![view unuseFromSuperview]);
    KT_EXPECT([view superview] == nil && [view retainCount] == held);
    KT_EXPECT(![view useInView:nil] && [view useInView:content]);
    KT_EXPECT([view superview] == content && [view retainCount] == held);
    KT_EXPECT(![view useInView:content]);  /* already in it */
    KT_EXPECT(![box useInView:box]);       /* a view is its own descendant */
    /* Moving a placed view does not release it. */
    KT_EXPECT([view useInView:box] && [view superview] == box && [view retainCount] == held);
    KGUICloseWindow(window);
}

KT_CASE(TabFocusAndMouseLocation)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(100, 100, 300, 200), @"Focus");
    NSTextField *field = [[[NSTextField alloc] initWithFrame:NSMakeRect(10, 10, 100, 24)] autorelease];
    NSView *loose = [[[NSView alloc] initWithFrame:NSMakeRect(0, 0, 10, 10)] autorelease];
    [[window contentView] addSubview:field];
    [window makeKeyWindow];
    [field getTabFocus];
    /* A text field hands its first-responder role on to the field editor. */
    KT_EXPECT([window firstResponder] == field || [(id)[window firstResponder] delegate] == field);
    [loose getTabFocus];
    NSPoint none = [loose mouseLocation];
    KT_EXPECT(none.x == 2147483648.0 && none.y == 2147483648.0);
    NSPoint inWindow = [window mouseLocation];
    NSPoint inField = [field mouseLocation];
    /* The window's point is taken as one in the content view. */
    NSPoint inContent = [[window contentView] mouseLocation];
    KT_EXPECT(NSEqualPoints(inContent, inWindow) && inField.x == inContent.x - 10);
    KT_EXPECT(NSEqualPoints(inField, [field convertPoint:inContent fromView:[window contentView]]));
    NSPoint screen = [NSEvent mouseLocation];
    KT_EXPECT(inWindow.x == screen.x - NSMinX([window frame]) && (KGUIScreenshot(window, @"AppKitXViews.png") != nil));
    KGUICloseWindow(window);
}

KT_MAIN()
