/* The NSRect... functions against rectangles worked out by hand, and the
 * null-tolerant equality functions. */
#import "KTest.h"

#include <KORU/KORU.h>

#include <math.h>

#define EXPECT_RECT(rect, x, y, w, h) \
    KT_EXPECT_MSG(NSEqualRects(rect, NSMakeRect(x, y, w, h)), @"%@", NSStringFromRect(rect))

KT_CASE(EdgesCornersAndCentre)
{
    NSRect rect = NSMakeRect(10, 20, 30, 41);
    KT_EXPECT(NSRectLeft(&rect) == 10 && NSRectRight(&rect) == 40 && NSRectBottom(&rect) == 20);
    KT_EXPECT(NSRectTop(&rect) == 61 && NSRectWidth(&rect) == 30 && NSRectHeight(&rect) == 41);
    KT_EXPECT(NSEqualPoints(NSRectLeftTop(&rect), NSMakePoint(10, 61)));
    KT_EXPECT(NSEqualPoints(NSRectRightBottom(&rect), NSMakePoint(40, 20)));
    KT_EXPECT(NSEqualPoints(NSRectCenter(&rect), NSMakePoint(25, 40.5)));
    KT_EXPECT(NSRectTop(NULL) == 0 && NSRectWidth(NULL) == 0);
    KT_EXPECT(NSEqualPoints(NSRectCenter(NULL), NSZeroPoint) && NSEqualPoints(NSRectRightTop(NULL), NSZeroPoint));
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
    NSRectCenterMoveTo(&rect, NULL);
    NSRectCenterMoveTo(NULL, &centre);
    NSRectHorizontalMove(NULL, 1);
    EXPECT_RECT(rect, -15, -20, 30, 40);
}

/* Resizing by a delta clamps only the right and top edges at zero size;
 * resizing to a coordinate stops at the opposite edge. */
KT_CASE(ResizesClampAsTheirEdgeAsks)
{
    static const struct {
        void (*resize)(NSRect *, CGFloat);
        CGFloat by, x, y, width, height;
    } cases[] = {
        {NSRectRightResize, -50, 10, 10, 0, 20},  {NSRectLeftResize, -50, 60, 10, -30, 20},
        {NSRectTopResize, -31, 10, 10, 20, 0},    {NSRectBottomResize, -40, 10, 50, 20, -20},
        {NSRectLeftResize, 5, 5, 10, 25, 20},     {NSRectTopResize, 5, 10, 10, 20, 25},
        {NSRectTopResizeTo, 0, 10, 10, 20, 0},    {NSRectLeftResizeTo, 50, 30, 10, 0, 20},
        {NSRectRightResizeTo, 5, 10, 10, 0, 20},  {NSRectBottomResizeTo, 0, 10, 0, 20, 30},
        {NSRectRightResizeTo, 50, 10, 10, 40, 20}, {NSRectBottomResizeTo, 35, 10, 30, 20, 0},
    };
    for (size_t i = 0; i < sizeof cases / sizeof cases[0]; i++) {
        NSRect rect = NSMakeRect(10, 10, 20, 20);
        cases[i].resize(&rect, cases[i].by);
        KT_EXPECT_MSG(NSEqualRects(rect, NSMakeRect(cases[i].x, cases[i].y, cases[i].width, cases[i].height)),
                      @"case %zu: %@", i, NSStringFromRect(rect));
    }
}

KT_CASE(SetSizeKeepsTheNamedEdgeAndRefusesNegatives)
{
    NSRect rect = NSMakeRect(0, 0, 5, 30);
    NSRectSetHeightResizingBottom(&rect, 10);
    EXPECT_RECT(rect, 0, 20, 5, 10);
    NSRectSetHeightResizingTop(&rect, 4);
    NSRectSetWidthResizingLeft(&rect, 15);
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
    KT_EXPECT(!NSIsEqual(nil, nil) && !NSIsEqual(@"a", nil) && !NSIsEqual(nil, @"a") && !NSIsEqual(@"a", @"b"));
    KT_EXPECT(NSIsEqual([NSNumber numberWithInt:3], [NSNumber numberWithDouble:3.0]));
    KT_EXPECT(NSIsNull(nil) && NSIsNull([NSNull null]) && !NSIsNull(@""));
    KT_EXPECT(NSStringIsVoid(nil) && NSStringIsVoid(@"") && !NSStringIsVoid(@" "));
    KT_EXPECT(!NSStringIsEqual(nil, nil) && !NSStringIsEqual(@"", nil) && !NSStringIsEqual(@"abc", @"ABC"));
    KT_EXPECT(NSStringIsEqual(@"abc", [NSMutableString stringWithString:@"abc"]));
}

KT_MAIN()
