/* The NSRect... functions: edge-and-corner geometry on unflipped rectangles. */
#import <KORU/AppKitX.h>

CGFloat NSRectLeft(const NSRect *rect) { return rect ? rect->origin.x : 0; }
CGFloat NSRectRight(const NSRect *rect) { return rect ? rect->origin.x + rect->size.width : 0; }
CGFloat NSRectBottom(const NSRect *rect) { return rect ? rect->origin.y : 0; }
CGFloat NSRectTop(const NSRect *rect) { return rect ? rect->origin.y + rect->size.height : 0; }
CGFloat NSRectWidth(const NSRect *rect) { return rect ? rect->size.width : 0; }
CGFloat NSRectHeight(const NSRect *rect) { return rect ? rect->size.height : 0; }

NSPoint NSRectLeftBottom(const NSRect *rect)
{
    return NSMakePoint(NSRectLeft(rect), NSRectBottom(rect));
}

NSPoint NSRectLeftTop(const NSRect *rect)
{
    return NSMakePoint(NSRectLeft(rect), NSRectTop(rect));
}

NSPoint NSRectRightBottom(const NSRect *rect)
{
    return NSMakePoint(NSRectRight(rect), NSRectBottom(rect));
}

NSPoint NSRectRightTop(const NSRect *rect)
{
    return NSMakePoint(NSRectRight(rect), NSRectTop(rect));
}

NSPoint NSRectCenter(const NSRect *rect)
{
    if (rect == NULL)
        return NSMakePoint(0, 0);
    double x = (double)rect->origin.x + (double)rect->size.width * 0.5;
    double y = (double)rect->origin.y + (double)rect->size.height * 0.5;
    return NSMakePoint(x, y);
}

void NSRectHorizontalMove(NSRect *rect, CGFloat delta)
{
    if (rect)
        rect->origin.x += delta;
}

void NSRectVerticalMove(NSRect *rect, CGFloat delta)
{
    if (rect)
        rect->origin.y += delta;
}

void NSRectLeftMoveTo(NSRect *rect, CGFloat value)
{
    if (rect)
        rect->origin.x = value;
}

void NSRectBottomMoveTo(NSRect *rect, CGFloat value)
{
    if (rect)
        rect->origin.y = value;
}

void NSRectRightMoveTo(NSRect *rect, CGFloat value)
{
    if (rect)
        rect->origin.x += value - NSRectRight(rect);
}

void NSRectTopMoveTo(NSRect *rect, CGFloat value)
{
    if (rect)
        rect->origin.y += value - NSRectTop(rect);
}

void NSRectCenterMoveTo(NSRect *rect, const NSPoint *point)
{
    if (rect == NULL || point == NULL)
        return;
    NSPoint center = NSRectCenter(rect);
    rect->origin.x += point->x - center.x;
    rect->origin.y += point->y - center.y;
}

/* The left and bottom edges move freely, so the size may go negative; the
 * right and top edges stop at the opposite edge.  Callers depend on both. */
void NSRectLeftResize(NSRect *rect, CGFloat delta)
{
    if (rect == NULL)
        return;
    rect->size.width += delta;
    rect->origin.x -= delta;
}

void NSRectBottomResize(NSRect *rect, CGFloat delta)
{
    if (rect == NULL)
        return;
    rect->size.height += delta;
    rect->origin.y -= delta;
}

void NSRectRightResize(NSRect *rect, CGFloat delta)
{
    if (rect == NULL)
        return;
    if (delta < -rect->size.width)
        delta = -rect->size.width;
    rect->size.width += delta;
}

void NSRectTopResize(NSRect *rect, CGFloat delta)
{
    if (rect == NULL)
        return;
    if (delta < -rect->size.height)
        delta = -rect->size.height;
    rect->size.height += delta;
}

void NSRectLeftResizeTo(NSRect *rect, CGFloat value)
{
    if (rect == NULL)
        return;
    CGFloat right = NSRectRight(rect);
    CGFloat left = value < right ? value : right;
    rect->origin.x = left;
    rect->size.width = right - left;
}

void NSRectBottomResizeTo(NSRect *rect, CGFloat value)
{
    if (rect == NULL)
        return;
    CGFloat top = NSRectTop(rect);
    CGFloat bottom = value < top ? value : top;
    rect->origin.y = bottom;
    rect->size.height = top - bottom;
}

void NSRectRightResizeTo(NSRect *rect, CGFloat value)
{
    if (rect == NULL)
        return;
    CGFloat left = rect->origin.x;
    rect->size.width = (value > left ? value : left) - left;
}

void NSRectTopResizeTo(NSRect *rect, CGFloat value)
{
    if (rect == NULL)
        return;
    CGFloat bottom = rect->origin.y;
    rect->size.height = (value > bottom ? value : bottom) - bottom;
}

/* A negative size is refused; a NaN fails the test and is taken. */
void NSRectSetWidthResizingRight(NSRect *rect, CGFloat width)
{
    if (rect == NULL || width < 0)
        return;
    rect->size.width = width;
}

void NSRectSetWidthResizingLeft(NSRect *rect, CGFloat width)
{
    if (rect == NULL || width < 0)
        return;
    rect->origin.x -= width - rect->size.width;
    rect->size.width = width;
}

void NSRectSetHeightResizingTop(NSRect *rect, CGFloat height)
{
    if (rect == NULL || height < 0)
        return;
    rect->size.height = height;
}

void NSRectSetHeightResizingBottom(NSRect *rect, CGFloat height)
{
    if (rect == NULL || height < 0)
        return;
    rect->origin.y -= height - rect->size.height;
    rect->size.height = height;
}
