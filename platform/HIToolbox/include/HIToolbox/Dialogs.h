/* Standard alerts: an NSAlert run as a modal panel or shown as a sheet.
 *
 * Buttons are items: 1 the default button (OK), 2 cancel, 3 other, 4 help;
 * they stand from right to left in that order.  The button named by
 * defaultButton answers Return, the one named by cancelButton Escape.  The
 * special texts kAlertDefaultOKText, kAlertDefaultCancelText and
 * kAlertDefaultOtherText stand for "OK", "Cancel" and "Don't Save"; a NULL
 * text leaves the button out.  The position and movable fields are accepted
 * and left to the window system.
 *
 * RunStandardAlert disposes of the alert when it is dismissed.  A sheet sends
 * kEventClassCommand / kEventCommandProcess with the HICommand of the button
 * (kHICommandOK, kHICommandCancel, kHICommandOther, kHICommandAppHelp) to its
 * notification target (or, without one, to the parent window's target) and
 * is then disposed of, unless kStdAlertDoNotDisposeSheet was given.  Use
 * from the main thread. */
#ifndef HITOOLBOX_DIALOGS_H
#define HITOOLBOX_DIALOGS_H

#include <CoreFoundation/CoreFoundation.h>
#include <HIToolbox/CarbonEvents.h>
#include <HIToolbox/Events.h>
#include <HIToolbox/MacWindows.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct OpaqueDialogPtr *DialogRef;
typedef DialogRef DialogPtr;
typedef SInt16 DialogItemIndex;
typedef SInt16 AlertType;

typedef Boolean (*ModalFilterProcPtr)(DialogRef theDialog, EventRecord *theEvent,
                                      DialogItemIndex *itemHit);
typedef ModalFilterProcPtr ModalFilterUPP;

enum { kAlertStopAlert = 0, kAlertNoteAlert = 1, kAlertCautionAlert = 2, kAlertPlainAlert = 3 };

enum {
    kAlertStdAlertOKButton = 1,
    kAlertStdAlertCancelButton = 2,
    kAlertStdAlertOtherButton = 3,
    kAlertStdAlertHelpButton = 4
};

enum { kAlertDefaultOKText = -1, kAlertDefaultCancelText = -1, kAlertDefaultOtherText = -1 };

enum { kStdCFStringAlertVersionOne = 1 };

enum {
    kStdAlertDoNotDisposeSheet = 1 << 0,
    kStdAlertDoNotAnimateOnDefault = 1 << 1,
    kStdAlertDoNotAnimateOnCancel = 1 << 2,
    kStdAlertDoNotAnimateOnOther = 1 << 3,
    kStdAlertDoNotCloseOnHelp = 1 << 4
};

/* Alert positions. */
enum {
    kWindowDefaultPosition = 0,
    kWindowCenterMainScreen = 1,
    kWindowAlertPositionMainScreen = 2,
    kWindowStaggerMainScreen = 3,
    kWindowCenterParentWindow = 4,
    kWindowAlertPositionParentWindow = 5,
    kWindowStaggerParentWindow = 6,
    kWindowCenterParentWindowScreen = 7,
    kWindowAlertPositionParentWindowScreen = 8,
    kWindowStaggerParentWindowScreen = 9
};

typedef struct AlertStdCFStringAlertParamRec {
    UInt32 version;
    Boolean movable;
    Boolean helpButton;
    CFStringRef defaultText;
    CFStringRef cancelText;
    CFStringRef otherText;
    SInt16 defaultButton;
    SInt16 cancelButton;
    UInt16 position;
    OptionBits flags;
} AlertStdCFStringAlertParamRec;
typedef AlertStdCFStringAlertParamRec *AlertStdCFStringAlertParamPtr;

/* Fills the record with the defaults: not movable, no help button, an "OK"
 * default button and no others, default button 1, no cancel button, default
 * position, no flags.  paramErr for NULL or a version other than 1. */
OSStatus GetStandardAlertDefaultParams(AlertStdCFStringAlertParamPtr param, UInt32 version);
/* A new alert; param NULL takes the defaults.  paramErr for a NULL error
 * text or out pointer, an unknown alert type, or a record of another
 * version. */
OSStatus CreateStandardAlert(AlertType alertType, CFStringRef error, CFStringRef explanation,
                             const AlertStdCFStringAlertParamRec *param, DialogRef *outAlert);
/* Runs the alert modally and disposes of it; outItemHit receives the item of
 * the button pressed.  A filter is called with null events while the alert
 * is up; when it answers true, the button of the item it sets is pressed. */
OSStatus RunStandardAlert(DialogRef inAlert, ModalFilterUPP filterProc, DialogItemIndex *outItemHit);
/* A new alert to be shown as a sheet with ShowSheetWindow. */
OSStatus CreateStandardSheet(AlertType alertType, CFStringRef error, CFStringRef explanation,
                             const AlertStdCFStringAlertParamRec *param, EventTargetRef notifyTarget,
                             DialogRef *outSheet);
/* The alert's window; NULL for NULL. */
WindowRef GetDialogWindow(DialogRef dialog);
/* The dialog whose window this is; NULL when it is none. */
DialogRef GetDialogFromWindow(WindowRef window);
void DisposeDialog(DialogRef dialog);

#ifdef __cplusplus
}
#endif

#endif
