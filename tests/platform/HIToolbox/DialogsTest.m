/* Standard alerts run modally (ended through their filters) and as sheets
 * (ended from timers). */
#import "KTest.h"
#import "KGUI.h"
#import "SheetTestSupport.h"

#include <HIToolbox/Dialogs.h>
#include <HIToolbox/MacWindowsExtras.h>

static OSStatus RecordCommand(EventHandlerCallRef call, EventRef event, void *userData)
{
    (void)call;
    HICommand command;
    if (GetEventParameter(event, kEventParamDirectObject, typeHICommand, NULL, sizeof command, NULL, &command) == 0)
        *(UInt32 *)userData = command.commandID;
    return noErr;
}

/* The shown button of the dialog's window with the title. */
static NSButton *FindButton(DialogRef dialog, NSString *title)
{
    NSWindow *window = (NSWindow *)GetDialogWindow(dialog);
    NSButton *button = SheetButton([[window contentView] superview] ?: [window contentView], title);
    return [button isHidden] ? nil : button;
}

static DialogItemIndex gItemToPress;
static int gNullEvents;

/* Presses the button of gItemToPress at the first null event. */
static Boolean PressItem(DialogRef dialog, EventRecord *event, DialogItemIndex *itemHit)
{
    (void)dialog;
    if (event->what != nullEvent)
        return false;
    ++gNullEvents;
    *itemHit = gItemToPress;
    return true;
}

static DialogItemIndex RunPressing(const AlertStdCFStringAlertParamRec *param, DialogItemIndex item)
{
    DialogRef alert = NULL;
    if (CreateStandardAlert(kAlertCautionAlert, CFSTR("Something failed"), CFSTR("Because."), param, &alert) != noErr)
        return -1;
    gItemToPress = item;
    DialogItemIndex itemHit = -1;
    return RunStandardAlert(alert, PressItem, &itemHit) == noErr ? itemHit : -1;
}

KT_CASE(FilterEndsTheModalAlertWithItsItem)
{
    KGUISharedApplication();
    AlertStdCFStringAlertParamRec param;
    KT_ASSERT(GetStandardAlertDefaultParams(&param, kStdCFStringAlertVersionOne) == noErr);
    KT_EXPECT((intptr_t)param.defaultText == kAlertDefaultOKText && param.cancelText == NULL);
    KT_EXPECT(param.defaultButton == kAlertStdAlertOKButton && param.cancelButton == 0);
    gNullEvents = 0;
    KT_EXPECT(RunPressing(&param, kAlertStdAlertOKButton) == kAlertStdAlertOKButton && gNullEvents == 1);
    param.cancelText = (CFStringRef)(intptr_t)kAlertDefaultCancelText;
    param.otherText = CFSTR("Discard");
    KT_EXPECT(RunPressing(&param, kAlertStdAlertOtherButton) == kAlertStdAlertOtherButton);
    KT_EXPECT(RunPressing(NULL, kAlertStdAlertCancelButton) == kAlertStdAlertCancelButton);
}

KT_CASE(DefaultAndCancelButtonsTakeReturnAndEscape)
{
    KGUISharedApplication();
    AlertStdCFStringAlertParamRec param;
    GetStandardAlertDefaultParams(&param, kStdCFStringAlertVersionOne);
    param.cancelText = CFSTR("Stop");
    param.defaultButton = kAlertStdAlertCancelButton;
    param.cancelButton = kAlertStdAlertOKButton;
    DialogRef alert = NULL;
    KT_ASSERT(CreateStandardAlert(kAlertStopAlert, CFSTR("Stop?"), NULL, &param, &alert) == noErr);
    KT_ASSERT(GetDialogWindow(alert) != NULL && GetDialogFromWindow(GetDialogWindow(alert)) == alert);
    KT_EXPECT_EQUAL_OBJECTS([FindButton(alert, @"Stop") keyEquivalent], @"\r");
    KT_EXPECT_EQUAL_OBJECTS([FindButton(alert, @"OK") keyEquivalent], @"\033");
    DisposeDialog(alert);

    /* The special texts and a given one, right to left. */
    param.cancelText = (CFStringRef)(intptr_t)kAlertDefaultCancelText;
    param.otherText = (CFStringRef)(intptr_t)kAlertDefaultOtherText;
    KT_ASSERT(CreateStandardAlert(kAlertNoteAlert, CFSTR("Save?"), NULL, &param, &alert) == noErr);
    KT_EXPECT(FindButton(alert, @"OK") && FindButton(alert, @"Cancel") && FindButton(alert, @"Don't Save"));
    DisposeDialog(alert);
}

KT_CASE(SheetSendsTheButtonsCommand)
{
    NSWindow *parent = KGUIMakeWindow(NSMakeRect(100, 100, 400, 300), @"Parent");
    UInt32 command = 0;
    EventTypeSpec eventType = {kEventClassCommand, kEventCommandProcess};
    EventHandlerRef handler = NULL;
    KT_ASSERT(InstallEventHandler(GetWindowEventTarget((WindowRef)parent), RecordCommand, 1, &eventType, &command,
                                  &handler) == noErr);
    AlertStdCFStringAlertParamRec param;
    GetStandardAlertDefaultParams(&param, kStdCFStringAlertVersionOne);
    param.cancelText = (CFStringRef)(intptr_t)kAlertDefaultCancelText;
    DialogRef sheet = NULL;
    KT_ASSERT(CreateStandardSheet(kAlertNoteAlert, CFSTR("Save?"), NULL, &param, NULL, &sheet) == noErr);
    ClickInSheetWhenUp(parent, @"Cancel");
    KT_EXPECT(ShowSheetWindow(GetDialogWindow(sheet), (WindowRef)parent) == noErr);
    KGUISpin(0.2);
    KT_EXPECT_MSG(command == kHICommandCancel, @"%08x", (unsigned)command);

    /* With a target of its own, the answer goes there. */
    UInt32 ownCommand = 0;
    EventTargetRef target = GetApplicationEventTarget();
    EventHandlerRef ownHandler = NULL;
    InstallEventHandler(target, RecordCommand, 1, &eventType, &ownCommand, &ownHandler);
    command = 0;
    KT_ASSERT(CreateStandardSheet(kAlertNoteAlert, CFSTR("Save?"), NULL, &param, target, &sheet) == noErr);
    ClickInSheetWhenUp(parent, @"OK");
    KT_EXPECT(ShowSheetWindow(GetDialogWindow(sheet), (WindowRef)parent) == noErr);
    KGUISpin(0.2);
    KT_EXPECT(ownCommand == kHICommandOK && command == 0);
    RemoveEventHandler(ownHandler);
    RemoveEventHandler(handler);
    KGUICloseWindow(parent);
}

KT_CASE(BadInputIsRefused)
{
    KGUISharedApplication();
    AlertStdCFStringAlertParamRec param;
    KT_EXPECT(GetStandardAlertDefaultParams(NULL, kStdCFStringAlertVersionOne) == paramErr &&
              GetStandardAlertDefaultParams(&param, 2) == paramErr);
    DialogRef alert = (DialogRef)1;
    KT_EXPECT(CreateStandardAlert(kAlertNoteAlert, NULL, NULL, NULL, &alert) == paramErr && alert == NULL);
    KT_EXPECT(CreateStandardAlert(7, CFSTR("x"), NULL, NULL, &alert) == paramErr);
    GetStandardAlertDefaultParams(&param, kStdCFStringAlertVersionOne);
    param.version = 0;
    KT_EXPECT(CreateStandardSheet(kAlertNoteAlert, CFSTR("x"), NULL, &param, NULL, &alert) == paramErr);
    KT_EXPECT(RunStandardAlert(NULL, NULL, NULL) == paramErr && ShowSheetWindow(NULL, NULL) == paramErr);
    KT_EXPECT(GetDialogWindow(NULL) == NULL && GetDialogFromWindow(NULL) == NULL);
    DisposeDialog(NULL);
}

static NSWindow *NewWindow(void)
{
    return [[NSWindow alloc] initWithContentRect:NSMakeRect(100, 100, 100, 100) styleMask:NSTitledWindowMask
                                         backing:NSBackingStoreBuffered defer:YES];
}

KT_CASE(ReferenceConstantsStayWithTheirWindow)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(100, 100, 100, 100), nil);
    KT_EXPECT(GetWRefCon((WindowRef)window) == NULL);
    SetWRefCon((WindowRef)window, (SRefCon)0x1234);
    KT_EXPECT(GetWRefCon((WindowRef)window) == (SRefCon)0x1234);
    [window close];
    KT_EXPECT(GetWRefCon((WindowRef)window) == NULL && GetWRefCon(NULL) == NULL);
    SetWRefCon(NULL, (SRefCon)1);
    [window release];

    /* A window freed without being closed: a new window at its address
     * starts with no reference constant and no handlers. */
    window = NewWindow();
    void *address = window;
    SetWRefCon((WindowRef)window, (SRefCon)0x1234);
    EventTypeSpec eventType = {kEventClassCommand, kEventCommandProcess};
    UInt32 command = 0;
    InstallEventHandler(GetWindowEventTarget((WindowRef)window), RecordCommand, 1, &eventType, &command, NULL);
    [window release];
    NSMutableArray *held = [NSMutableArray array];
    NSWindow *reused = nil;
    for (int i = 0; i < 64 && reused == nil; ++i) {
        NSWindow *candidate = [NewWindow() autorelease];
        [held addObject:candidate];
        if ((void *)candidate == address)
            reused = candidate;
    }
    if (reused != nil) {
        KT_EXPECT(GetWRefCon((WindowRef)reused) == NULL);
        EventRef event = NULL;
        HICommand ok = {0, kHICommandOK, {NULL, 0}};
        CreateEvent(NULL, kEventClassCommand, kEventCommandProcess, 0, 0, &event);
        SetEventParameter(event, kEventParamDirectObject, typeHICommand, sizeof ok, &ok);
        SendEventToEventTarget(event, GetWindowEventTarget((WindowRef)reused));
        ReleaseEvent(event);
        KT_EXPECT(command == 0);
    }
}

KT_MAIN()
