/* Window Manager: Carbon windows over GNUstep AppKit.
 *
 * A WindowRef is an NSWindow * (an opaque pointer to C and C++ code).
 * Bounds are QuickDraw rectangles in global coordinates: the origin is the
 * top-left corner of the main screen and v grows downward, whereas AppKit
 * counts y upward from the bottom of the main screen; the functions convert.
 * The calls drive AppKit objects and belong on the main thread, after the
 * host has made its NSApplication.  A window made here is not shown until
 * the host orders it front. */
#ifndef HITOOLBOX_MACWINDOWS_H
#define HITOOLBOX_MACWINDOWS_H

#include <CoreServices/MacErrors.h>
#include <MacTypes.h>

#ifdef __OBJC__
@class NSWindow;
typedef NSWindow *WindowRef;
#else
typedef struct OpaqueWindowPtr *WindowRef;
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef UInt32 WindowClass;
enum {
    kAlertWindowClass = 1,
    kMovableAlertWindowClass = 2,
    kModalWindowClass = 3,
    kMovableModalWindowClass = 4,
    kFloatingWindowClass = 5,
    kDocumentWindowClass = 6,
    kUtilityWindowClass = 8,
    kHelpWindowClass = 10,
    kSheetWindowClass = 11,
    kToolbarWindowClass = 12,
    kPlainWindowClass = 13,
    kOverlayWindowClass = 14,
    kSheetAlertWindowClass = 15,
    kAltPlainWindowClass = 16,
    kDrawerWindowClass = 20,
    kAllWindowClasses = 0xFFFFFFFFu
};

typedef OptionBits WindowAttributes;
enum {
    kWindowNoAttributes = 0,
    kWindowCloseBoxAttribute = 1u << 0,
    kWindowHorizontalZoomAttribute = 1u << 1,
    kWindowVerticalZoomAttribute = 1u << 2,
    kWindowFullZoomAttribute = kWindowVerticalZoomAttribute | kWindowHorizontalZoomAttribute,
    kWindowCollapseBoxAttribute = 1u << 3,
    kWindowResizableAttribute = 1u << 4,
    kWindowSideTitlebarAttribute = 1u << 5,
    kWindowNoUpdatesAttribute = 1u << 16,
    kWindowNoActivatesAttribute = 1u << 17,
    kWindowStandardDocumentAttributes = kWindowCloseBoxAttribute | kWindowFullZoomAttribute
                                        | kWindowCollapseBoxAttribute | kWindowResizableAttribute,
    kWindowStandardFloatingAttributes = kWindowCloseBoxAttribute | kWindowCollapseBoxAttribute
};

typedef UInt32 WindowPositionMethod;
enum {
    kWindowCenterOnMainScreen = 1,
    kWindowCenterOnParentWindow = 2,
    kWindowCenterOnParentWindowScreen = 3,
    kWindowCascadeOnMainScreen = 4,
    kWindowCascadeOnParentWindow = 5,
    kWindowCascadeOnParentWindowScreen = 6,
    kWindowAlertPositionOnMainScreen = 7,
    kWindowAlertPositionOnParentWindow = 8,
    kWindowAlertPositionOnParentWindowScreen = 9,
    kWindowCascadeStartAtParentWindowScreen = 10
};

typedef UInt16 WindowRegionCode;
enum {
    kWindowTitleBarRgn = 0,
    kWindowStructureRgn = 32,
    kWindowContentRgn = 33,
    kWindowGlobalPortRgn = 40
};

enum {
    errInvalidWindowRef = -5600,
    errUnsupportedWindowAttributesForClass = -5601,
    errWindowDoesNotHaveProxy = -5602,
    errInvalidWindowPtr = -5624
};

/* A new, hidden window of the class with the attributes, whose content has
 * the bounds.  The caller disposes of it with DisposeWindow.  paramErr for a
 * NULL rectangle or result, a rectangle of negative size or an unknown class;
 * memFullErr when AppKit makes no window (no application). */
OSStatus CreateNewWindow(WindowClass windowClass, WindowAttributes attributes,
                         const Rect *contentBounds, WindowRef *outWindow);

/* Places the window by the method: centred, cascaded (offset down and right
 * by the title-bar height from the parent's or the screen's top-left corner)
 * or at the alert position (centred across, a third of the free height above
 * and two thirds below) on the main screen, over the parent window or on the
 * parent's screen.  errInvalidWindowRef for a NULL window, paramErr for an
 * unknown method or a missing parent the method needs. */
OSStatus RepositionWindow(WindowRef window, WindowRef parentWindow, WindowPositionMethod method);

/* Closes and releases a window made by CreateNewWindow.  NULL is ignored. */
void DisposeWindow(WindowRef window);

/* The window's structure (frame) or content bounds in global coordinates
 * (kWindowGlobalPortRgn and kWindowContentRgn give the content, the
 * structure and title-bar codes the frame).  errInvalidWindowRef for a NULL
 * window, paramErr for a NULL rectangle or another region code. */
OSStatus GetWindowBounds(WindowRef window, WindowRegionCode regionCode, Rect *globalBounds);

/* Moves and sizes the window so that the region has the bounds.  Errors as
 * GetWindowBounds; a rectangle of negative size is a paramErr. */
OSStatus SetWindowBounds(WindowRef window, WindowRegionCode regionCode, const Rect *globalBounds);

#ifdef __cplusplus
}
#endif

#ifdef __OBJC__
#import <AppKit/NSWindow.h>

/* A Cocoa window for the Carbon window: the same NSWindow, retained.  The
 * receiver is released; releasing the answer balances the retain and leaves
 * the Carbon window to DisposeWindow.  Not a WindowRef: nil.  (AppKit
 * declares the method already; this gives it its Mac meaning.) */
@interface NSWindow (HIToolbox)
- (id)initWithWindowRef:(void *)windowRef;
@end
#endif

#endif
