/* Carbon user-interface helpers: QuickDraw rectangles, version numbers as
 * text, edit-text controls (text, selection, best size), views and windows
 * found by ID or made from interface files, the menu bar from an interface
 * file, the scrap, keyboard-event classification, and one alert runner that
 * shows a standard alert as a modal dialog or as a sheet.
 *
 * The functions keep no state.  Every one checks its arguments and answers
 * false, 0 or NULL instead of failing; only the alert runner reports its
 * failed steps (through CFLogCore, while the debug switch is on).
 * ...Copy... results are released with CFRelease, windows with
 * DisposeWindow.  Use from the main thread, as AppKit requires. */
#ifndef KORU_CARBONUIUTILITIES_H
#define KORU_CARBONUIUTILITIES_H

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/Resources.h>
#include <HIToolbox/CarbonEvents.h>
#include <HIToolbox/ControlDefinitions.h>
#include <HIToolbox/Controls.h>
#include <HIToolbox/Dialogs.h>
#include <HIToolbox/HIView.h>
#include <HIToolbox/MacWindows.h>
#include <HIToolbox/MacWindowsExtras.h>
#include <HIToolbox/Scrap.h>

CF_EXTERN_C_BEGIN

/* --- Rectangles (NULL rectangles are left alone or answer 0) ---------------- */

Rect RectMake(SInt16 top, SInt16 left, SInt16 bottom, SInt16 right);
Boolean RectIsEqualTo(Rect a, Rect b);
/* right - left, in 16 bits. */
SInt16 RectWidth(const Rect *rect);
SInt16 RectRight(const Rect *rect);
/* Moves left and right by delta. */
void RectHorizontalMove(Rect *rect, SInt16 delta);
/* Sets left to x; right stays, so the width changes. */
void RectLeftMoveTo(Rect *rect, SInt16 x);
void RectRightResize(Rect *rect, SInt16 delta);
/* Moves the whole rectangle so that its right edge is x. */
void RectRightMoveTo(Rect *rect, SInt16 x);

/* --- Version text (NULL for a NULL record) ---------------------------------- */

/* "%X.%i.%i" of the major revision, the minor revision (high nibble) and the
 * whole minor-and-bug-fix byte (so 1.2.3 shows as 1.2.35), then "d", "a" or
 * "b" for a development, alpha or beta stage, then ".<non-release revision>"
 * when withNonRelease is true. */
CFMutableStringRef NumVersionCopyString(const NumVersion *version, Boolean withNonRelease);
CFMutableStringRef VersRecCopyVersionString(const VersRec *record, Boolean withNonRelease);
/* The record's short version, or the long version that follows it, as a
 * string in the encoding. */
CFStringRef VersRecCopyShortString(const VersRec *record, CFStringEncoding encoding);
CFStringRef VersRecCopyLongString(const VersRec *record, CFStringEncoding encoding);

/* --- Controls, views, windows, menus ---------------------------------------- */

/* The data of the part and tag, only when exactly the reported size was
 * read; NULL otherwise. */
CFDataRef ControlCopyData(ControlRef control, ControlPartCode part, ResType tag);
/* Note the order: the data comes before the part. */
Boolean ControlSetData(ControlRef control, CFDataRef data, ControlPartCode part, ResType tag);
/* A mutable copy of the edit text; NULL when there is none. */
CFMutableStringRef ControlCopyString(ControlRef control);
Boolean ControlSetString(ControlRef control, CFStringRef string);
/* The edit text's length in UTF-16 units; 0 on failure. */
CFIndex ControlGetLength(ControlRef control);
/* The selection as location = start, length = end - start; (0, 0) on
 * failure. */
CFRange ControlGetSelectionRange(ControlRef control);
/* Selects from location to location + length, both cut to 16 bits. */
void ControlSetSelectionRange(ControlRef control, const CFRange *range);

/* May change best in place; answers false to leave the control's bounds
 * alone. */
typedef Boolean (*ControlSizeToFitProcPtr)(const Rect *bounds, Rect *best, void *reference);
/* Sets the control's bounds to its best rectangle, through adjust when given.
 * False when there is no best rectangle (or it is all zero); true otherwise,
 * also when adjust declined. */
Boolean ControlSizeToFit(ControlRef control, ControlSizeToFitProcPtr adjust, void *reference);
/* The reference constant of the control's window; 0 when there is none. */
SRefCon ControlGetWindowRefCon(ControlRef control);
/* NULL when the window has no such control. */
ControlRef ControlForControlID(WindowRef window, OSType signature, SInt32 id);
/* The address of the record's id field; NULL for NULL. */
SInt32 *ControlIDGetID(ControlID *controlID);
/* The view with the ID below view, or below the window's root view. */
HIViewRef HIViewFindFromView(HIViewRef view, OSType signature, SInt32 id);
HIViewRef HIViewFindFromWindow(WindowRef window, OSType signature, SInt32 id);

/* A new window made from the named interface file of the bundle (NULL: the
 * main bundle); NULL when the file or the window is missing. */
WindowRef WindowCreateFromNibNameInBundle(CFStringRef nibName, CFStringRef windowName, CFBundleRef bundle);
WindowRef WindowCreateFromNibName(CFStringRef nibName, CFStringRef windowName);
/* Sets the menu bar from the named interface file of the main bundle. */
Boolean MenuBarSetFromNibName(CFStringRef nibName, CFStringRef menuBarName);
/* Not provided: logs "Sorry, I failed." and answers false. */
Boolean WindowDumpControlHierarchy(void);

/* --- Scrap and events ------------------------------------------------------- */

/* NULL when there is no scrap. */
ScrapRef ScrapGetCurrentScrap(void);
/* NULL when the flavour is absent, empty or read short. */
CFDataRef ScrapCopyDataOfFlavor(ScrapRef scrap, ScrapFlavorType flavorType);
/* The 'TEXT' flavour in the system encoding; NULL when there is none. */
CFMutableStringRef ScrapCopyString(ScrapRef scrap);
/* The command ID of the control in the event's direct object; 0 if none. */
UInt32 EventGetControlCommandID(EventRef event);
EventTypeSpec EventTypeSpecMake(UInt32 eventClass, UInt32 eventKind);
/* True for a text-input event that types Command-V: the text sent is the one
 * unit 'v' and the keyboard event sent holds exactly cmdKey. */
Boolean EventIsPaste(EventRef event);

/* --- Key classification (key code unused) ----------------------------------- */

/* 28 to 31: left, right, up, down. */
Boolean KeyTypeIsArrow(UInt32 keyCode, UniChar charCode, UInt16 modifiers);
/* An arrow with shiftKey or rightShiftKey. */
Boolean KeyTypeIsArrowWithShift(UInt32 keyCode, UniChar charCode, UInt16 modifiers);
/* 127 or 8. */
Boolean KeyTypeIsDelete(UInt32 keyCode, UniChar charCode, UInt16 modifiers);
/* A decimal digit with no modifiers at all. */
Boolean KeyTypeIsNumber(UInt32 keyCode, UniChar charCode, UInt16 modifiers);
/* 'v' (lower case) with exactly cmdKey. */
Boolean KeyTypeIsPaste(UInt32 keyCode, UniChar charCode, UInt16 modifiers);
/* Any key with cmdKey. */
Boolean KeyTypeIsShortcut(UInt32 keyCode, UniChar charCode, UInt16 modifiers);
/* A control character that is not white space. */
Boolean KeyTypeIsControl(UInt32 keyCode, UniChar charCode, UInt16 modifiers);

/* --- Alert ------------------------------------------------------------------- */

/* Shows a standard alert: with a parent window as a sheet (answering 1 once
 * it is shown; the button's command goes to notifyTarget), without one
 * modally (answering the item hit).  The button texts, default and cancel
 * buttons, position and flags replace the defaults only when given (non-NULL,
 * nonzero).  0 on failure. */
DialogItemIndex DialogRunGenericAlert(AlertType alertType, WindowRef parent, Boolean movable,
                                      CFStringRef errorText, CFStringRef explanationText,
                                      Boolean helpButton, CFStringRef defaultText, CFStringRef cancelText,
                                      CFStringRef otherText, SInt16 defaultButton, SInt16 cancelButton,
                                      UInt16 position, OptionBits flags, ModalFilterUPP filter,
                                      EventTargetRef notifyTarget);

CF_EXTERN_C_END

#endif
