/* NSView(AppKitX): the rectangle functions on the view's frame, parking a
 * view outside its window, and the mouse in view coordinates. */
#import <KORU/AppKitX.h>

#define FRAME_READER(type, method, function) \
    - (type)method                           \
    {                                        \
        NSRect frame = [self frame];         \
        return function(&frame);             \
    }

/* A changed frame is set without asking for display. */
#define FRAME_CHANGER(method, function, type) \
    - (void)method:(type)value                \
    {                                         \
        NSRect frame = [self frame];          \
        function(&frame, value);              \
        [self setFrame:frame];                \
    }

@implementation NSView (AppKitX)

FRAME_READER(CGFloat, left, NSRectLeft)
FRAME_READER(CGFloat, right, NSRectRight)
FRAME_READER(CGFloat, top, NSRectTop)
FRAME_READER(CGFloat, bottom, NSRectBottom)
FRAME_READER(CGFloat, width, NSRectWidth)
FRAME_READER(CGFloat, height, NSRectHeight)
FRAME_READER(NSPoint, leftBottom, NSRectLeftBottom)
FRAME_READER(NSPoint, leftTop, NSRectLeftTop)
FRAME_READER(NSPoint, rightBottom, NSRectRightBottom)
FRAME_READER(NSPoint, rightTop, NSRectRightTop)
FRAME_READER(NSPoint, center, NSRectCenter)

- (CGFloat)horizontalCenter
{
    return [self center].x;
}

- (CGFloat)verticalCenter
{
    return [self center].y;
}

FRAME_CHANGER(horizontalMove, NSRectHorizontalMove, CGFloat)
FRAME_CHANGER(verticalMove, NSRectVerticalMove, CGFloat)
FRAME_CHANGER(leftMoveTo, NSRectLeftMoveTo, CGFloat)
FRAME_CHANGER(rightMoveTo, NSRectRightMoveTo, CGFloat)
FRAME_CHANGER(topMoveTo, NSRectTopMoveTo, CGFloat)
FRAME_CHANGER(bottomMoveTo, NSRectBottomMoveTo, CGFloat)
FRAME_CHANGER(leftResize, NSRectLeftResize, CGFloat)
FRAME_CHANGER(rightResize, NSRectRightResize, CGFloat)
FRAME_CHANGER(topResize, NSRectTopResize, CGFloat)
FRAME_CHANGER(bottomResize, NSRectBottomResize, CGFloat)
FRAME_CHANGER(leftResizeTo, NSRectLeftResizeTo, CGFloat)
FRAME_CHANGER(rightResizeTo, NSRectRightResizeTo, CGFloat)
FRAME_CHANGER(topResizeTo, NSRectTopResizeTo, CGFloat)
FRAME_CHANGER(bottomResizeTo, NSRectBottomResizeTo, CGFloat)
FRAME_CHANGER(setWidthResizingLeft, NSRectSetWidthResizingLeft, CGFloat)
FRAME_CHANGER(setWidthResizingRight, NSRectSetWidthResizingRight, CGFloat)
FRAME_CHANGER(setHeightResizingTop, NSRectSetHeightResizingTop, CGFloat)
FRAME_CHANGER(setHeightResizingBottom, NSRectSetHeightResizingBottom, CGFloat)

- (void)centerMoveTo:(NSPoint)point
{
    NSRect frame = [self frame];
    NSRectCenterMoveTo(&frame, &point);
    [self setFrame:frame];
}

- (void)horizontalCenterMoveTo:(CGFloat)value
{
    [self centerMoveTo:NSMakePoint(value, [self verticalCenter])];
}

- (void)verticalCenterMoveTo:(CGFloat)value
{
    [self centerMoveTo:NSMakePoint([self horizontalCenter], value)];
}

- (void)getTabFocus
{
    [[self window] makeFirstResponder:self];
}

/* The retain taken here keeps the parked view alive; useInView: gives it
 * back. */
- (BOOL)unuseFromSuperview
{
    if ([self superview] == nil)
        return NO;
    [self retain];
    [self removeFromSuperview];
    return YES;
}

- (BOOL)useInView:(NSView *)view
{
    if (view == nil || [self isDescendantOf:view])
        return NO;
    BOOL parked = [self superview] == nil;
    [view addSubview:self];
    if (parked)
        [self release];
    return YES;
}

- (NSPoint)mouseLocation
{
    NSWindow *window = [self window];
    NSView *content = [window contentView];
    if (window == nil || content == nil)
        return NSMakePoint(2147483648.0, 2147483648.0);
    return [self convertPoint:[window mouseLocation] fromView:content];
}

@end
