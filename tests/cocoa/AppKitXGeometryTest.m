/* The NSRect... functions against rectangles worked out by hand, and the
 * null-tolerant equality functions. */
#import "KTest.h"

#include <KORU/KORU.h>

#include <math.h>

static BOOL SameRect(NSRect rect, CGFloat x, CGFloat y, CGFloat width, CGFloat height)
{
    return rect.origin.x == x && rect.origin.y == y && rect.size.width == width
           && rect.size.height == height;
}

#define EXPECT_RECT(rect, x, y, w, h) \
    KT_EXPECT_MSG(SameRect(rect, x, y, w, h), @"%@", NSStringFromRect(rect))

KT_CASE(EdgesCornersAndCentre)
{
    NSRect rect = NSMakeRect(10, 20, 30, 41);
    KT_EXPECT(NSRectLeft(&rect) == 10 && NSRectRight(&rect) == 40);
    KT_EXPECT(NSRectBottom(&rect) == 20 && NSRectTop(&rect) == 61);
    KT_EXPECT(NSRectWidth(&rect) == 30 && NSRectHeight(&rect) == 41);
    KT_EXPECT(NSEqualPoints(NSRectLeftBottom(&rect), NSMakePoint(10, 20)));
    KT_EXPECT(NSEqualPoints(NSRectLeftTop(&rect), NSMakePoint(10, 61)));
    KT_EXPECT(NSEqualPoints(NSRectRightBottom(&rect), NSMakePoint(40, 20)));
    KT_EXPECT(NSEqualPoints(NSRectRightTop(&rect), NSMakePoint(40, 61)));
    KT_EXPECT(NSEqualPoints(NSRectCenter(&rect), NSMakePoint(25, 40.5)));

    KT_EXPECT(NSRectTop(NULL) == 0 && NSRectWidth(NULL) == 0);
    KT_EXPECT(NSEqualPoints(NSRectCenter(NULL), NSZeroPoint));
    KT_EXPECT(NSEqualPoints(NSRectRightTop(NULL), NSZeroPoint));
}

KT_CASE(MovesKeepTheSize)
{
    NSRect rect = NSMakeRect(10, 20, 30, 40);
    NSRectHorizontalMove(&rect, -15);
    NSRectVerticalMove(&rect, 5);
    EXPECT_RECT(rect, -5, 25, 30, 40);
    NSRectRightMoveTo(&rect, 100);
    NSRectTopMoveTo(&rect, 100);
    EXPECT_RECT(rect, 70, 60, 30, 40);
    NSRectLeftMoveTo(&rect, 1);
    NSRectBottomMoveTo(&rect, 2);
    EXPECT_RECT(rect, 1, 2, 30, 40);
    NSPoint centre = NSMakePoint(0, 0);
    NSRectCenterMoveTo(&rect, &centre);
    EXPECT_RECT(rect, -15, -20, 30, 40);

    NSRectCenterMoveTo(&rect, NULL);
    NSRectCenterMoveTo(NULL, &centre);
    NSRectHorizontalMove(NULL, 1);
    EXPECT_RECT(rect, -15, -20, 30, 40);
}

KT_CASE(ResizesClampOnlyRightAndTop)
{
    NSRect rect = NSMakeRect(0, 0, 30, 30);
    NSRectRightResize(&rect, -50);
    EXPECT_RECT(rect, 0, 0, 0, 30);
    rect = NSMakeRect(0, 0, 30, 30);
    NSRectLeftResize(&rect, -50);
    EXPECT_RECT(rect, 50, 0, -20, 30);
    rect = NSMakeRect(0, 0, 30, 30);
    NSRectTopResize(&rect, -31);
    EXPECT_RECT(rect, 0, 0, 30, 0);
    rect = NSMakeRect(0, 0, 30, 30);
    NSRectBottomResize(&rect, -40);
    EXPECT_RECT(rect, 0, 40, 30, -10);
    rect = NSMakeRect(5, 5, 10, 10);
    NSRectLeftResize(&rect, 5);
    NSRectBottomResize(&rect, 5);
    NSRectRightResize(&rect, 5);
    NSRectTopResize(&rect, 5);
    EXPECT_RECT(rect, 0, 0, 20, 20);
}

KT_CASE(ResizeToStopsAtTheOppositeEdge)
{
    NSRect rect = NSMakeRect(10, 10, 20, 20);
    NSRectTopResizeTo(&rect, 0);
    EXPECT_RECT(rect, 10, 10, 20, 0);
    rect = NSMakeRect(10, 10, 20, 20);
    NSRectLeftResizeTo(&rect, 50);
    EXPECT_RECT(rect, 30, 10, 0, 20);
    rect = NSMakeRect(10, 10, 20, 20);
    NSRectBottomResizeTo(&rect, 0);
    NSRectRightResizeTo(&rect, 5);
    EXPECT_RECT(rect, 10, 0, 0, 30);
    rect = NSMakeRect(10, 10, 20, 20);
    NSRectLeftResizeTo(&rect, 0);
    NSRectRightResizeTo(&rect, 50);
    NSRectTopResizeTo(&rect, 35);
    EXPECT_RECT(rect, 0, 10, 50, 25);
}

KT_CASE(SetSizeKeepsTheNamedEdgeAndRefusesNegatives)
{
    NSRect rect = NSMakeRect(0, 0, 5, 30);
    NSRectSetHeightResizingBottom(&rect, 10);
    EXPECT_RECT(rect, 0, 20, 5, 10);
    NSRectSetHeightResizingTop(&rect, 4);
    EXPECT_RECT(rect, 0, 20, 5, 4);
    NSRectSetWidthResizingLeft(&rect, 15);
    EXPECT_RECT(rect, -10, 20, 15, 4);
    NSRectSetWidthResizingRight(&rect, 1);
    EXPECT_RECT(rect, -10, 20, 1, 4);
    NSRectSetWidthResizingLeft(&rect, -1);
    NSRectSetHeightResizingBottom(&rect, -1);
    NSRectSetWidthResizingRight(&rect, -1);
    NSRectSetHeightResizingTop(&rect, -1);
    EXPECT_RECT(rect, -10, 20, 1, 4);
    NSRectSetWidthResizingRight(&rect, NAN);
    KT_EXPECT(isnan(rect.size.width));
    NSRectSetHeightResizingTop(NULL, 3);
}

KT_CASE(EqualityToleratesEmptySides)
{
    KT_EXPECT(!NSIsEqual(nil, nil));
    KT_EXPECT(!NSIsEqual(@"a", nil) && !NSIsEqual(nil, @"a"));
    KT_EXPECT(NSIsEqual([NSNumber numberWithInt:3], [NSNumber numberWithDouble:3.0]));
    KT_EXPECT(!NSIsEqual(@"a", @"b"));
    KT_EXPECT(NSIsNull(nil) && NSIsNull([NSNull null]) && !NSIsNull(@""));
    KT_EXPECT(NSStringIsVoid(nil) && NSStringIsVoid(@"") && !NSStringIsVoid(@" "));
    KT_EXPECT(!NSStringIsEqual(nil, nil) && !NSStringIsEqual(@"", nil));
    KT_EXPECT(NSStringIsEqual(@"abc", [NSMutableString stringWithString:@"abc"]));
    KT_EXPECT(!NSStringIsEqual(@"abc", @"ABC"));
}

KT_MAIN()
