/* Tour section: the AppKit face's rectangle geometry and null-tolerant
 * equality.  Both are plain functions that need no window and no display;
 * the host looks them up in the bundle by name. */
#import <Foundation/Foundation.h>

#include "Tour.h"

#include <stdio.h>

typedef CGFloat (*RectReader)(const NSRect *);
typedef NSPoint (*RectPointReader)(const NSRect *);
typedef void (*RectChanger)(NSRect *, CGFloat);
typedef void (*RectPointChanger)(NSRect *, const NSPoint *);
typedef BOOL (*Equality)(id, id);
typedef BOOL (*Emptiness)(id);

static void PrintRect(const char *what, NSRect rect)
{
    printf("  %-44s (%g, %g, %g, %g)\n", what, (double)rect.origin.x, (double)rect.origin.y,
           (double)rect.size.width, (double)rect.size.height);
}

static bool TourAppKit(CFBundleRef bundle)
{
    RectReader top = (RectReader)KORUTourLookup(bundle, "NSRectTop");
    RectPointReader center = (RectPointReader)KORUTourLookup(bundle, "NSRectCenter");
    RectChanger rightResize = (RectChanger)KORUTourLookup(bundle, "NSRectRightResize");
    RectChanger leftResize = (RectChanger)KORUTourLookup(bundle, "NSRectLeftResize");
    RectChanger topResizeTo = (RectChanger)KORUTourLookup(bundle, "NSRectTopResizeTo");
    RectChanger heightResizingBottom = (RectChanger)KORUTourLookup(bundle, "NSRectSetHeightResizingBottom");
    RectPointChanger centerMoveTo = (RectPointChanger)KORUTourLookup(bundle, "NSRectCenterMoveTo");
    Equality isEqual = (Equality)KORUTourLookup(bundle, "NSIsEqual");
    Equality stringIsEqual = (Equality)KORUTourLookup(bundle, "NSStringIsEqual");
    Emptiness isNull = (Emptiness)KORUTourLookup(bundle, "NSIsNull");
    Emptiness stringIsVoid = (Emptiness)KORUTourLookup(bundle, "NSStringIsVoid");
    if (!top || !center || !rightResize || !leftResize || !topResizeTo || !heightResizingBottom ||
        !centerMoveTo || !isEqual || !stringIsEqual || !isNull || !stringIsVoid)
        return false;

    NSRect rect = NSMakeRect(10, 20, 30, 40);
    NSPoint middle = center(&rect);
    PrintRect("rectangle (bottom-up, not flipped)", rect);
    printf("  %-44s %g, centre (%g, %g)\n", "top", (double)top(&rect), (double)middle.x, (double)middle.y);
    rightResize(&rect, -50);
    PrintRect("right edge in by 50: width stops at 0", rect);
    rect = NSMakeRect(10, 20, 30, 40);
    leftResize(&rect, -50);
    PrintRect("left edge in by 50: no such stop", rect);
    rect = NSMakeRect(10, 20, 30, 40);
    topResizeTo(&rect, 5);
    PrintRect("top edge to 5, below the bottom", rect);
    rect = NSMakeRect(0, 0, 5, 30);
    heightResizingBottom(&rect, 10);
    PrintRect("(0, 0, 5, 30) 10 high, top edge kept", rect);
    NSPoint origin = NSMakePoint(0, 0);
    centerMoveTo(&rect, &origin);
    PrintRect("centred on (0, 0)", rect);
    printf("  %-44s %g\n", "top of no rectangle", (double)top(NULL));

    printf("  NSIsEqual(nil, nil) %s, NSIsEqual(@1, @1) %s, NSStringIsEqual(@\"a\", nil) %s\n",
           isEqual(nil, nil) ? "YES" : "NO",
           isEqual([NSNumber numberWithInt:1], [NSNumber numberWithInt:1]) ? "YES" : "NO",
           stringIsEqual(@"a", nil) ? "YES" : "NO");
    printf("  NSIsNull(nil) %s, NSIsNull(NSNull) %s, NSStringIsVoid(@\"\") %s\n",
           isNull(nil) ? "YES" : "NO", isNull([NSNull null]) ? "YES" : "NO", stringIsVoid(@"") ? "YES" : "NO");

    NSRect expected = NSMakeRect(-2.5, -5, 5, 10);
    return NSEqualRects(rect, expected) && !isEqual(nil, nil) && isNull([NSNull null]);
}

KORU_TOUR_SECTION(90, "AppKit geometry: edges, corners and resizing; null-tolerant equality", TourAppKit)
