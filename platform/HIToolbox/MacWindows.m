/* Window Manager over AppKit: a WindowRef is the NSWindow itself. */
#import <AppKit/AppKit.h>

#include <HIToolbox/MacWindows.h>

#include <math.h>

/* Carbon's global coordinates hang from the top-left corner of the main
 * screen (the first, which holds the menu bar); AppKit's rise from its
 * bottom-left corner. */
static CGFloat MainScreenHeight(void)
{
    NSArray *screens = [NSScreen screens];
    if ([screens count] == 0)
        return 0;
    return NSHeight([[screens objectAtIndex:0] frame]);
}

static NSRect AppKitRectFromGlobal(const Rect *bounds)
{
    return NSMakeRect(bounds->left, MainScreenHeight() - bounds->bottom,
                      bounds->right - bounds->left, bounds->bottom - bounds->top);
}

static short Coordinate(double value)
{
    value = floor(value + 0.5);
    if (value > SHRT_MAX)
        return SHRT_MAX;
    if (value < SHRT_MIN)
        return SHRT_MIN;
    return (short)value;
}

static void GlobalRectFromAppKit(NSRect frame, Rect *bounds)
{
    CGFloat height = MainScreenHeight();
    bounds->left = Coordinate(NSMinX(frame));
    bounds->right = Coordinate(NSMaxX(frame));
    bounds->top = Coordinate(height - NSMaxY(frame));
    bounds->bottom = Coordinate(height - NSMinY(frame));
}

static BOOL IsKnownWindowClass(WindowClass windowClass)
{
    switch (windowClass) {
    case kAlertWindowClass: case kMovableAlertWindowClass: case kModalWindowClass:
    case kMovableModalWindowClass: case kFloatingWindowClass: case kDocumentWindowClass:
    case kUtilityWindowClass: case kHelpWindowClass: case kSheetWindowClass:
    case kToolbarWindowClass: case kPlainWindowClass: case kOverlayWindowClass:
    case kSheetAlertWindowClass: case kAltPlainWindowClass: case kDrawerWindowClass:
        return YES;
    default:
        return NO;
    }
}

static NSUInteger StyleMask(WindowClass windowClass, WindowAttributes attributes)
{
    switch (windowClass) {
    case kPlainWindowClass: case kAltPlainWindowClass: case kOverlayWindowClass:
    case kHelpWindowClass: case kToolbarWindowClass: case kDrawerWindowClass:
        return NSBorderlessWindowMask;
    default:
        break;
    }
    NSUInteger mask = NSTitledWindowMask;
    if (attributes & kWindowCloseBoxAttribute)
        mask |= NSClosableWindowMask;
    if (attributes & kWindowCollapseBoxAttribute)
        mask |= NSMiniaturizableWindowMask;
    if (attributes & kWindowResizableAttribute)
        mask |= NSResizableWindowMask;
    return mask;
}

OSStatus CreateNewWindow(WindowClass windowClass, WindowAttributes attributes,
                         const Rect *contentBounds, WindowRef *outWindow)
{
    if (outWindow == NULL)
        return paramErr;
    *outWindow = NULL;
    if (contentBounds == NULL || !IsKnownWindowClass(windowClass)
        || contentBounds->right < contentBounds->left || contentBounds->bottom < contentBounds->top)
        return paramErr;
    if (NSApp == nil)
        return memFullErr;
    NSWindow *window = nil;
    @try {
        window = [[NSWindow alloc] initWithContentRect:AppKitRectFromGlobal(contentBounds)
                                             styleMask:StyleMask(windowClass, attributes)
                                               backing:NSBackingStoreBuffered
                                                 defer:YES];
        [window setReleasedWhenClosed:NO];
        if (windowClass == kFloatingWindowClass || windowClass == kUtilityWindowClass)
            [window setLevel:NSFloatingWindowLevel];
    } @catch (NSException *exception) {
        [window release];
        window = nil;
    }
    if (window == nil)
        return memFullErr;
    *outWindow = window;
    return noErr;
}

/* How far a cascaded window sits below and right of the one it follows: the
 * height of a title bar, as on the Mac. */
static const CGFloat kCascadeOffset = 22;

static NSScreen *ScreenOfWindow(NSWindow *window)
{
    NSScreen *screen = [window screen];
    if (screen == nil)
        screen = [[NSScreen screens] count] > 0 ? [[NSScreen screens] objectAtIndex:0] : nil;
    return screen;
}

OSStatus RepositionWindow(WindowRef window, WindowRef parentWindow, WindowPositionMethod method)
{
    if (window == NULL)
        return errInvalidWindowRef;
    NSRect area;
    BOOL overParent = NO;
    switch (method) {
    case kWindowCenterOnMainScreen: case kWindowCascadeOnMainScreen:
    case kWindowAlertPositionOnMainScreen:
        if ([[NSScreen screens] count] == 0)
            return paramErr;
        area = [[[NSScreen screens] objectAtIndex:0] visibleFrame];
        break;
    case kWindowCenterOnParentWindow: case kWindowCascadeOnParentWindow:
    case kWindowAlertPositionOnParentWindow:
        if (parentWindow == NULL)
            return paramErr;
        area = [parentWindow frame];
        overParent = YES;
        break;
    case kWindowCenterOnParentWindowScreen: case kWindowCascadeOnParentWindowScreen:
    case kWindowAlertPositionOnParentWindowScreen: case kWindowCascadeStartAtParentWindowScreen:
        if (parentWindow == NULL || ScreenOfWindow(parentWindow) == nil)
            return paramErr;
        area = [ScreenOfWindow(parentWindow) visibleFrame];
        break;
    default:
        return paramErr;
    }
    NSRect frame = [window frame];
    NSPoint origin;
    switch (method) {
    case kWindowCascadeOnMainScreen: case kWindowCascadeOnParentWindow:
    case kWindowCascadeOnParentWindowScreen: case kWindowCascadeStartAtParentWindowScreen:
        origin.x = NSMinX(area) + (overParent ? kCascadeOffset : 0);
        origin.y = NSMaxY(area) - NSHeight(frame) - (overParent ? kCascadeOffset : 0);
        if (!overParent && method != kWindowCascadeStartAtParentWindowScreen) {
            origin.x += kCascadeOffset;
            origin.y -= kCascadeOffset;
        }
        break;
    case kWindowAlertPositionOnMainScreen: case kWindowAlertPositionOnParentWindow:
    case kWindowAlertPositionOnParentWindowScreen:
        origin.x = NSMidX(area) - NSWidth(frame) / 2;
        origin.y = NSMaxY(area) - NSHeight(frame) - (NSHeight(area) - NSHeight(frame)) / 3;
        break;
    default:
        origin.x = NSMidX(area) - NSWidth(frame) / 2;
        origin.y = NSMidY(area) - NSHeight(frame) / 2;
        break;
    }
    origin.x = floor(origin.x);
    origin.y = floor(origin.y);
    @try {
        [window setFrameOrigin:origin];
    } @catch (NSException *exception) {
        return paramErr;
    }
    return noErr;
}

void DisposeWindow(WindowRef window)
{
    if (window == NULL)
        return;
    @try {
        [window orderOut:nil];
        [window close];
    } @catch (NSException *exception) {
    }
    [window release];
}

static BOOL RegionIsContent(WindowRegionCode regionCode, BOOL *known)
{
    *known = YES;
    switch (regionCode) {
    case kWindowContentRgn: case kWindowGlobalPortRgn:
        return YES;
    case kWindowStructureRgn: case kWindowTitleBarRgn:
        return NO;
    default:
        *known = NO;
        return NO;
    }
}

OSStatus GetWindowBounds(WindowRef window, WindowRegionCode regionCode, Rect *globalBounds)
{
    if (window == NULL)
        return errInvalidWindowRef;
    if (globalBounds == NULL)
        return paramErr;
    BOOL known;
    BOOL content = RegionIsContent(regionCode, &known);
    if (!known)
        return paramErr;
    NSRect frame = [window frame];
    if (content)
        frame = [window contentRectForFrameRect:frame];
    GlobalRectFromAppKit(frame, globalBounds);
    return noErr;
}

OSStatus SetWindowBounds(WindowRef window, WindowRegionCode regionCode, const Rect *globalBounds)
{
    if (window == NULL)
        return errInvalidWindowRef;
    if (globalBounds == NULL || globalBounds->right < globalBounds->left
        || globalBounds->bottom < globalBounds->top)
        return paramErr;
    BOOL known;
    BOOL content = RegionIsContent(regionCode, &known);
    if (!known)
        return paramErr;
    NSRect frame = AppKitRectFromGlobal(globalBounds);
    if (content)
        frame = [window frameRectForContentRect:frame];
    @try {
        [window setFrame:frame display:NO];
    } @catch (NSException *exception) {
        return paramErr;
    }
    return noErr;
}

@implementation NSWindow (HIToolbox)

/* A WindowRef already is a window: the wrapper is that window. */
- (id)initWithWindowRef:(void *)windowRef
{
    id window = (id)windowRef;
    [self release];
    if (window == nil || ![window isKindOfClass:[NSWindow class]])
        return nil;
    return [window retain];
}

@end
