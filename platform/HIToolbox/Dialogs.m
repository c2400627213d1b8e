/* Standard alerts as NSAlerts, run modally or shown as sheets, with the
 * Carbon button items and the sheet's answer sent as a command event. */
#import <AppKit/AppKit.h>

#include <HIToolbox/Dialogs.h>
#include <HIToolbox/MacWindowsExtras.h>
#import "ObjectLifetimes.h"
#include <CoreServices/MacErrors.h>

#include <stdint.h>

enum { kMaximumButtons = 4 };

/* Windows of standard alerts, to find the alert from the window that
 * ShowSheetWindow is given. */
static NSMapTable *gAlertsByWindow;

@interface KORUStandardAlert : NSObject {
@public
    NSAlert *mAlert;
    DialogItemIndex mItems[kMaximumButtons];
    NSUInteger mButtonCount;
    EventTargetRef mNotifyTarget;
    OptionBits mFlags;
    NSWindow *mWindow;
}
@end

static NSString *ButtonTitle(CFStringRef text, NSString *standardTitle)
{
    if ((intptr_t)text == kAlertDefaultOKText)
        return standardTitle;
    return (NSString *)text;
}

static NSAlertStyle StyleOf(AlertType alertType)
{
    switch (alertType) {
    case kAlertStopAlert: return NSCriticalAlertStyle;
    case kAlertCautionAlert: return NSWarningAlertStyle;
    default: return NSInformationalAlertStyle;
    }
}

/* The command a sheet's button sends. */
static UInt32 CommandOfItem(DialogItemIndex item)
{
    switch (item) {
    case kAlertStdAlertOKButton: return kHICommandOK;
    case kAlertStdAlertCancelButton: return kHICommandCancel;
    case kAlertStdAlertOtherButton: return kHICommandOther;
    case kAlertStdAlertHelpButton: return kHICommandAppHelp;
    default: return 0;
    }
}

@implementation KORUStandardAlert

- (void)addButton:(NSString *)title item:(DialogItemIndex)item
{
    if (title == nil || mButtonCount == kMaximumButtons)
        return;
    [mAlert addButtonWithTitle:title];
    mItems[mButtonCount++] = item;
}

- (id)initWithType:(AlertType)alertType
             error:(CFStringRef)error
       explanation:(CFStringRef)explanation
        parameters:(const AlertStdCFStringAlertParamRec *)param
{
    if ((self = [super init]) == nil)
        return nil;
    mAlert = [[NSAlert alloc] init];
    [mAlert setAlertStyle:StyleOf(alertType)];
    [mAlert setMessageText:(NSString *)error];
    [mAlert setInformativeText:explanation != NULL ? (NSString *)explanation : @""];
    /* Right to left: OK, Cancel, the other button, help. */
    [self addButton:ButtonTitle(param->defaultText, @"OK") item:kAlertStdAlertOKButton];
    [self addButton:ButtonTitle(param->cancelText, @"Cancel") item:kAlertStdAlertCancelButton];
    [self addButton:ButtonTitle(param->otherText, @"Don't Save") item:kAlertStdAlertOtherButton];
    if (param->helpButton)
        [self addButton:@"Help" item:kAlertStdAlertHelpButton];
    if (mButtonCount == 0)
        [self addButton:@"OK" item:kAlertStdAlertOKButton];
    NSArray *buttons = [mAlert buttons];
    for (NSUInteger i = 0; i < mButtonCount; ++i) {
        NSString *key = @"";
        if (mItems[i] == param->defaultButton)
            key = @"\r";
        else if (mItems[i] == param->cancelButton)
            key = @"\033";
        [[buttons objectAtIndex:i] setKeyEquivalent:key];
        [[buttons objectAtIndex:i] setKeyEquivalentModifierMask:0];
    }
    mFlags = param->flags;
    return self;
}

- (void)dealloc
{
    if (mWindow != nil && gAlertsByWindow != nil)
        NSMapRemove(gAlertsByWindow, mWindow);
    [mWindow release];
    [mAlert release];
    [super dealloc];
}

- (DialogItemIndex)itemOfReturnCode:(NSInteger)code
{
    NSInteger index = code - NSAlertFirstButtonReturn;
    return index >= 0 && (NSUInteger)index < mButtonCount ? mItems[index] : 0;
}

/* The alert's panel is made when it is first shown; a sheet's window is
 * wanted before that. */
- (NSWindow *)window
{
    if (mWindow == nil) {
        if ([mAlert window] == nil && [mAlert respondsToSelector:@selector(_setupPanel)])
            [mAlert performSelector:@selector(_setupPanel)];
        mWindow = [[mAlert window] retain];
        if (mWindow != nil) {
            if (gAlertsByWindow == nil)
                gAlertsByWindow =
                    NSCreateMapTable(NSNonOwnedPointerMapKeyCallBacks, NSNonOwnedPointerMapValueCallBacks, 0);
            NSMapInsert(gAlertsByWindow, mWindow, self);
        }
    }
    return mWindow;
}

/* The alert's own modal session, so that a filter can be called between
 * events as the toolbox's modal dialog loop calls it: with null events while
 * nothing happens (every 50 ms), ending the alert with the item it answers.
 * A button pressed ends the session; the panel keeps the button's code. */
- (DialogItemIndex)runModalWithFilter:(ModalFilterUPP)filter
{
    NSWindow *panel = [self window];
    if (panel == nil)
        return 0;
    NSModalSession session = [NSApp beginModalSessionForWindow:panel];
    DialogItemIndex item = 0;
    while ([NSApp runModalSession:session] == NSRunContinuesResponse) {
        if (filter != NULL) {
            EventRecord event = {nullEvent, 0, 0, {0, 0}, 0};
            DialogItemIndex hit = 0;
            if (filter((DialogRef)self, &event, &hit)) {
                item = hit;
                break;
            }
        }
        NSDate *limit = filter != NULL ? [NSDate dateWithTimeIntervalSinceNow:0.05] : [NSDate distantFuture];
        [NSApp nextEventMatchingMask:NSAnyEventMask untilDate:limit inMode:NSModalPanelRunLoopMode dequeue:NO];
    }
    [NSApp endModalSession:session];
    [panel orderOut:nil];
    if (item == 0 && [panel respondsToSelector:@selector(result)])
        item = [self itemOfReturnCode:(NSInteger)[panel performSelector:@selector(result)]];
    return item;
}

- (void)beginSheetOn:(NSWindow *)parent
{
    [self retain]; /* until the sheet ends */
    [self window];
    [mAlert beginSheetModalForWindow:parent
                       modalDelegate:self
                      didEndSelector:@selector(sheetDidEnd:returnCode:contextInfo:)
                         contextInfo:parent];
}

- (void)sheetDidEnd:(NSAlert *)alert returnCode:(NSInteger)code contextInfo:(void *)parent
{
    (void)alert;
    [[mAlert window] orderOut:nil];
    HICommand command = {kHICommandFromWindow, CommandOfItem([self itemOfReturnCode:code]), {NULL, 0}};
    EventTargetRef target = mNotifyTarget != NULL ? mNotifyTarget : GetWindowEventTarget((WindowRef)parent);
    EventRef event = NULL;
    if (CreateEvent(NULL, kEventClassCommand, kEventCommandProcess, 0, kEventAttributeNone, &event) == noErr) {
        SetEventParameter(event, kEventParamDirectObject, typeHICommand, sizeof command, &command);
        SendEventToEventTarget(event, target);
        ReleaseEvent(event);
    }
    if (!(mFlags & kStdAlertDoNotDisposeSheet))
        [self release];
    [self release]; /* the sheet's own hold */
}
@end

static KORUStandardAlert *AlertOf(DialogRef dialog)
{
    return (KORUStandardAlert *)dialog;
}

OSStatus GetStandardAlertDefaultParams(AlertStdCFStringAlertParamPtr param, UInt32 version)
{
    if (param == NULL || version != kStdCFStringAlertVersionOne)
        return paramErr;
    param->version = kStdCFStringAlertVersionOne;
    param->movable = false;
    param->helpButton = false;
    param->defaultText = (CFStringRef)(intptr_t)kAlertDefaultOKText;
    param->cancelText = NULL;
    param->otherText = NULL;
    param->defaultButton = kAlertStdAlertOKButton;
    param->cancelButton = 0;
    param->position = kWindowDefaultPosition;
    param->flags = 0;
    return noErr;
}

static OSStatus CreateAlert(AlertType alertType, CFStringRef error, CFStringRef explanation,
                            const AlertStdCFStringAlertParamRec *param, DialogRef *outAlert)
{
    if (outAlert == NULL)
        return paramErr;
    *outAlert = NULL;
    AlertStdCFStringAlertParamRec defaults;
    if (param == NULL) {
        GetStandardAlertDefaultParams(&defaults, kStdCFStringAlertVersionOne);
        param = &defaults;
    }
    if (error == NULL || alertType < kAlertStopAlert || alertType > kAlertPlainAlert ||
        param->version != kStdCFStringAlertVersionOne)
        return paramErr;
    KORUStandardAlert *alert = nil;
    @try {
        alert = [[KORUStandardAlert alloc] initWithType:alertType error:error explanation:explanation parameters:param];
    } @catch (NSException *exception) {
        alert = nil;
    }
    *outAlert = (DialogRef)alert;
    return alert != nil ? noErr : paramErr;
}

OSStatus CreateStandardAlert(AlertType alertType, CFStringRef error, CFStringRef explanation,
                             const AlertStdCFStringAlertParamRec *param, DialogRef *outAlert)
{
    return CreateAlert(alertType, error, explanation, param, outAlert);
}

OSStatus CreateStandardSheet(AlertType alertType, CFStringRef error, CFStringRef explanation,
                             const AlertStdCFStringAlertParamRec *param, EventTargetRef notifyTarget,
                             DialogRef *outSheet)
{
    OSStatus status = CreateAlert(alertType, error, explanation, param, outSheet);
    if (status == noErr)
        AlertOf(*outSheet)->mNotifyTarget = notifyTarget;
    return status;
}

OSStatus RunStandardAlert(DialogRef inAlert, ModalFilterUPP filterProc, DialogItemIndex *outItemHit)
{
    if (inAlert == NULL)
        return paramErr;
    if (NSApp == nil) {
        DisposeDialog(inAlert);
        return paramErr;
    }
    DialogItemIndex item = 0;
    OSStatus status = noErr;
    @try {
        item = [AlertOf(inAlert) runModalWithFilter:filterProc];
    } @catch (NSException *exception) {
        status = paramErr;
    }
    DisposeDialog(inAlert);
    if (outItemHit != NULL)
        *outItemHit = item;
    return status;
}

WindowRef GetDialogWindow(DialogRef dialog)
{
    return dialog != NULL ? (WindowRef)[AlertOf(dialog) window] : NULL;
}

DialogRef GetDialogFromWindow(WindowRef window)
{
    if (window == NULL || gAlertsByWindow == nil)
        return NULL;
    return (DialogRef)NSMapGet(gAlertsByWindow, window);
}

void DisposeDialog(DialogRef dialog)
{
    [AlertOf(dialog) release];
}

/* --- Sheets and reference constants ------------------------------------------ */

OSStatus ShowSheetWindow(WindowRef inSheet, WindowRef inParentWindow)
{
    if (inSheet == NULL || inParentWindow == NULL || NSApp == nil)
        return paramErr;
    NSWindow *sheet = (NSWindow *)inSheet, *parent = (NSWindow *)inParentWindow;
    OSStatus status = noErr;
    @try {
        KORUStandardAlert *alert = (KORUStandardAlert *)GetDialogFromWindow(inSheet);
        /* AppKit may still use the alert when the sheet has ended (and the
         * alert may have been disposed of): hold it until the call returns. */
        if (alert != nil) {
            [alert retain];
            [alert beginSheetOn:parent];
            [alert release];
        } else
            [NSApp beginSheet:sheet modalForWindow:parent modalDelegate:nil didEndSelector:NULL contextInfo:NULL];
    } @catch (NSException *exception) {
        status = paramErr;
    }
    return status;
}

OSStatus HideSheetWindow(WindowRef inSheet)
{
    if (inSheet == NULL || NSApp == nil)
        return paramErr;
    [NSApp endSheet:(NSWindow *)inSheet];
    [(NSWindow *)inSheet orderOut:nil];
    return noErr;
}

static NSMapTable *gRefCons;

@interface KORURefConJanitor : NSObject
@end

@implementation KORURefConJanitor
+ (void)windowWillClose:(NSNotification *)notification
{
    NSWindow *window = [notification object];
    [[NSNotificationCenter defaultCenter] removeObserver:self name:NSWindowWillCloseNotification object:window];
    NSMapRemove(gRefCons, window);
}
@end

/* A window freed without being closed lets its entry go too, so that a
 * later window at the same address starts without a reference constant. */
static void ForgetRefCon(id window)
{
    if (gRefCons != nil && NSMapGet(gRefCons, window) != NULL) {
        [[NSNotificationCenter defaultCenter] removeObserver:[KORURefConJanitor class]
                                                        name:NSWindowWillCloseNotification
                                                      object:window];
        NSMapRemove(gRefCons, window);
    }
}

SRefCon GetWRefCon(WindowRef window)
{
    if (window == NULL || gRefCons == nil)
        return NULL;
    return NSMapGet(gRefCons, window);
}

void SetWRefCon(WindowRef window, SRefCon data)
{
    if (window == NULL)
        return;
    KORUForgetOnDealloc([NSWindow class], ForgetRefCon);
    if (gRefCons == nil)
        gRefCons = NSCreateMapTable(NSNonOwnedPointerMapKeyCallBacks, NSNonOwnedPointerMapValueCallBacks, 0);
    if (NSMapGet(gRefCons, window) == NULL)
        [[NSNotificationCenter defaultCenter] addObserver:[KORURefConJanitor class]
                                                 selector:@selector(windowWillClose:)
                                                     name:NSWindowWillCloseNotification
                                                   object:(NSWindow *)window];
    if (data == NULL) {
        [[NSNotificationCenter defaultCenter] removeObserver:[KORURefConJanitor class]
                                                        name:NSWindowWillCloseNotification
                                                      object:(NSWindow *)window];
        NSMapRemove(gRefCons, window);
    } else
        NSMapInsert(gRefCons, window, data);
}
