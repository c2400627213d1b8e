/* The Carbon UI helpers over real windows, views, menus, the pasteboard,
 * alerts and sheets. */
#import "KTest.h"
#import "KGUI.h"
#import "../platform/HIToolbox/SheetTestSupport.h"

#include <KORU/KORU.h>

#include <string.h>
#include <stdlib.h>
#include <unistd.h>

static CFBundleRef TestBundle(void)
{
    NSString *path = [NSString stringWithFormat:@"%s/platform/HIToolbox/TestBundle", KORU_TEST_SOURCE_DIR];
    return (CFBundleRef)[NSBundle bundleWithPath:path];
}

static NSString *Take(CFStringRef string)
{
    return [(NSString *)string autorelease];
}

KT_CASE(RectanglesAndVersionText)
{
    Rect rect = RectMake(0, 10, 5, 30);
    KT_EXPECT(RectWidth(&rect) == 20 && RectRight(&rect) == 30);
    RectRightMoveTo(&rect, 50);
    KT_EXPECT(RectIsEqualTo(rect, RectMake(0, 30, 5, 50)));
    RectHorizontalMove(&rect, -5);
    RectLeftMoveTo(&rect, 0);
    RectRightResize(&rect, 3);
    KT_EXPECT(RectIsEqualTo(rect, RectMake(0, 0, 5, 48)) && !RectIsEqualTo(rect, RectMake(1, 0, 5, 48)));
    KT_EXPECT(RectWidth(NULL) == 0 && RectRight(NULL) == 0);
    RectHorizontalMove(NULL, 1);
    RectRightMoveTo(NULL, 1);

    NumVersion version = {3, 0x60, 0x25, 0x10};
    KT_EXPECT_EQUAL_OBJECTS(Take(NumVersionCopyString(&version, true)), @"10.2.37b.3");
    version.stage = 0x80;
    KT_EXPECT_EQUAL_OBJECTS(Take(NumVersionCopyString(&version, true)), @"10.2.37.3");
    version.stage = 0x20;
    KT_EXPECT_EQUAL_OBJECTS(Take(NumVersionCopyString(&version, false)), @"10.2.37d");
    KT_EXPECT(NumVersionCopyString(NULL, true) == NULL);

    /* A record laid out as a 'vers' resource: the long version follows the short one. */
    VersRec record;
    memset(&record, 0, sizeof record);
    record.numericVersion = version;
    memcpy(record.shortVersion, "\0041.0a", 5);
    memcpy(record.shortVersion + 5, "\012KORU 1.0 \xa9", 11);
    KT_EXPECT_EQUAL_OBJECTS(Take(VersRecCopyVersionString(&record, false)), @"10.2.37d");
    KT_EXPECT_EQUAL_OBJECTS(Take(VersRecCopyShortString(&record, kCFStringEncodingMacRoman)), @"1.0a");
    KT_EXPECT_EQUAL_OBJECTS(Take(VersRecCopyLongString(&record, kCFStringEncodingMacRoman)), @"KORU 1.0 \u00a9");
    KT_EXPECT(VersRecCopyShortString(NULL, 0) == NULL && VersRecCopyLongString(NULL, 0) == NULL &&
              VersRecCopyVersionString(NULL, true) == NULL);
}

static Boolean Decline(const Rect *bounds, Rect *best, void *reference)
{
    (void)bounds;
    (void)best;
    ++*(int *)reference;
    return false;
}

static Boolean Widen(const Rect *bounds, Rect *best, void *reference)
{
    (void)reference;
    best->right = (SInt16)(bounds->left + 150);
    return true;
}

KT_CASE(ControlsInAWindowFromTheInterfaceFile)
{
    KGUISharedApplication();
    WindowRef window = WindowCreateFromNibNameInBundle(CFSTR("main"), CFSTR("MainWindow"), TestBundle());
    KT_ASSERT(window != NULL);
    [(NSWindow *)window orderFront:nil];
    ControlRef field = ControlForControlID(window, 0x4B4F5255, 7);
    KT_ASSERT(field != NULL);
    KT_EXPECT(HIViewFindFromWindow(window, 0, 7) == field);
    KT_EXPECT(HIViewFindFromView(HIViewGetRoot(window), 0, 9) != NULL);
    KT_EXPECT(ControlForControlID(window, 0, 99) == NULL && HIViewFindFromWindow(window, 0, 99) == NULL);

    KT_EXPECT_EQUAL_OBJECTS(Take(ControlCopyString(field)), @"Hello");
    KT_EXPECT(ControlSetString(field, CFSTR("Hello, world")) && ControlGetLength(field) == 12);
    CFRange range = CFRangeMake(7, 5);
    ControlSetSelectionRange(field, &range);
    CFDataRef data = ControlCopyData(field, kControlEditTextPart, kControlEditTextSelectionTag);
    KT_ASSERT(data != NULL && CFDataGetLength(data) == 4);
    SInt16 ends[2];
    memcpy(ends, CFDataGetBytePtr(data), sizeof ends);
    KT_EXPECT(ends[0] == 7 && ends[1] == 12);
    const SInt16 start[2] = {0, 5};
    CFDataRef newEnds = CFDataCreate(NULL, (const UInt8 *)start, sizeof start);
    KT_EXPECT(ControlSetData(field, newEnds, kControlEditTextPart, kControlEditTextSelectionTag));
    KT_EXPECT(ControlGetSelectionRange(field).length == 5);
    CFRelease(newEnds);
    CFRelease(data);
    KT_EXPECT(!ControlSetData(field, NULL, kControlEditTextPart, kControlEditTextSelectionTag));
    KT_EXPECT(ControlCopyData(field, kControlEditTextPart, 0x77686174) == NULL);

    /* Sizing: a declining adjuster leaves the bounds, the best size is taken otherwise. */
    ControlRef button = HIViewFindFromWindow(window, 0, 9);
    Rect before, after;
    GetControlBounds(button, &before);
    int declined = 0;
    KT_EXPECT(ControlSizeToFit(button, Decline, &declined) && declined == 1);
    GetControlBounds(button, &after);
    KT_EXPECT(RectIsEqualTo(before, after));
    KT_EXPECT(ControlSizeToFit(button, Widen, NULL));
    GetControlBounds(button, &after);
    KT_EXPECT(RectWidth(&after) == 150 && after.left == before.left);
    KT_EXPECT(!ControlSizeToFit(HIViewGetRoot(window), NULL, NULL));

    KT_EXPECT(ControlGetWindowRefCon(field) == NULL);
    SetWRefCon(window, (SRefCon)42);
    KT_EXPECT(ControlGetWindowRefCon(field) == (SRefCon)42);

    /* Nothing for nothing. */
    KT_EXPECT(ControlCopyString(NULL) == NULL && !ControlSetString(NULL, CFSTR("x")) && !ControlSetString(field, NULL));
    KT_EXPECT(ControlGetLength(NULL) == 0 && ControlGetSelectionRange(NULL).length == 0);
    ControlSetSelectionRange(NULL, &range);
    ControlSetSelectionRange(field, NULL);
    KT_EXPECT(!ControlSizeToFit(NULL, NULL, NULL) && ControlGetWindowRefCon(NULL) == NULL);
    KT_EXPECT(ControlForControlID(NULL, 0, 7) == NULL && HIViewFindFromView(NULL, 0, 7) == NULL &&
              HIViewFindFromWindow(NULL, 0, 7) == NULL && ControlCopyString((ControlRef)HIViewGetRoot(window)) == NULL);
    ControlID controlID = {0, 5};
    KT_EXPECT(ControlIDGetID(&controlID) == &controlID.id && ControlIDGetID(NULL) == NULL);
    DisposeWindow(window);
}

KT_CASE(InterfaceFilesOfTheMainBundle)
{
    KGUISharedApplication();
    WindowRef window = WindowCreateFromNibName(CFSTR("main"), CFSTR("MainWindow"));
    KT_EXPECT(window != NULL);
    DisposeWindow(window);
    KT_EXPECT(MenuBarSetFromNibName(CFSTR("main"), CFSTR("MenuBar")));
    KT_EXPECT([[NSApp mainMenu] itemWithTitle:@"Edit"] != nil);
    KT_EXPECT(!MenuBarSetFromNibName(CFSTR("main"), CFSTR("MainWindow")) &&
              !MenuBarSetFromNibName(CFSTR("absent"), CFSTR("MenuBar")) && !MenuBarSetFromNibName(NULL, NULL));
    KT_EXPECT(WindowCreateFromNibName(CFSTR("absent"), CFSTR("MainWindow")) == NULL &&
              WindowCreateFromNibName(CFSTR("main"), CFSTR("Nothing")) == NULL &&
              WindowCreateFromNibName(NULL, CFSTR("MainWindow")) == NULL);
    KT_EXPECT(!WindowDumpControlHierarchy());
}

static NSEvent *KeyV(NSUInteger modifiers)
{
    return [NSEvent keyEventWithType:NSKeyDown location:NSZeroPoint modifierFlags:modifiers timestamp:0
                        windowNumber:0 context:nil characters:@"v" charactersIgnoringModifiers:@"v"
                           isARepeat:NO keyCode:55];
}

KT_CASE(ScrapAndEvents)
{
    KGUISharedApplication();
    ScrapRef scrap = ScrapGetCurrentScrap();
    KT_ASSERT(scrap != NULL);
    ClearCurrentScrap();
    KT_EXPECT(ScrapCopyString(scrap) == NULL && ScrapCopyDataOfFlavor(scrap, kScrapFlavorTypeText) == NULL);
    [[NSPasteboard generalPasteboard] declareTypes:[NSArray arrayWithObject:NSStringPboardType] owner:nil];
    [[NSPasteboard generalPasteboard] setString:@"pasted text" forType:NSStringPboardType];
    KT_EXPECT_EQUAL_OBJECTS(Take(ScrapCopyString(scrap)), @"pasted text");
    CFDataRef data = ScrapCopyDataOfFlavor(scrap, kScrapFlavorTypeUnicode);
    KT_EXPECT(data != NULL && CFDataGetLength(data) == 22);
    if (data != NULL)
        CFRelease(data);
    KT_EXPECT(ScrapCopyString(NULL) == NULL && ScrapCopyDataOfFlavor(NULL, kScrapFlavorTypeText) == NULL);

    /* Command-V typed, made from an NSEvent. */
    NSEvent *commandV = KeyV(NSCommandKeyMask), *shifted = KeyV(NSCommandKeyMask | NSShiftKeyMask);
    EventRef text = NULL;
    KT_ASSERT(CreateTextInputEventWithNSEvent(commandV, &text) == noErr);
    KT_EXPECT(EventIsPaste(text));
    ReleaseEvent(text);
    CreateTextInputEventWithNSEvent(shifted, &text);
    KT_EXPECT(!EventIsPaste(text));
    /* The raw key event itself is of another kind. */
    EventRef raw = NULL;
    CreateEventWithNSEvent(commandV, &raw);
    KT_EXPECT(!EventIsPaste(raw) && !EventIsPaste(NULL));
    ReleaseEvent(raw);
    ReleaseEvent(text);

    NSButton *button = [[[NSButton alloc] initWithFrame:NSMakeRect(0, 0, 10, 10)] autorelease];
    SetControlCommandID((ControlRef)button, 0x6F6B2020);
    EventRef hit = NULL;
    CreateEvent(NULL, kEventClassControl, kEventControlHit, 0, 0, &hit);
    KT_EXPECT(EventGetControlCommandID(hit) == 0);
    ControlRef control = (ControlRef)button;
    SetEventParameter(hit, kEventParamDirectObject, typeControlRef, sizeof control, &control);
    KT_EXPECT(EventGetControlCommandID(hit) == 0x6F6B2020 && EventGetControlCommandID(NULL) == 0);
    SetControlCommandID(control, 0);
    ReleaseEvent(hit);
}

KT_CASE(KeysAreClassified)
{
    KT_EXPECT(KeyTypeIsArrow(0, 28, 0) && KeyTypeIsArrow(0, 31, 0) && !KeyTypeIsArrow(0, 32, 0));
    KT_EXPECT(KeyTypeIsArrowWithShift(0, 30, shiftKey) && KeyTypeIsArrowWithShift(0, 30, rightShiftKey) &&
              !KeyTypeIsArrowWithShift(0, 30, cmdKey) && !KeyTypeIsArrowWithShift(0, 'a', shiftKey));
    KT_EXPECT(KeyTypeIsDelete(0, 127, 0) && KeyTypeIsDelete(0, 8, cmdKey) && !KeyTypeIsDelete(0, 9, 0));
    KT_EXPECT(KeyTypeIsNumber(0, '5', 0) && !KeyTypeIsNumber(0, '5', shiftKey) && !KeyTypeIsNumber(0, 0x661, 0));
    KT_EXPECT(KeyTypeIsPaste(0, 'v', cmdKey) && !KeyTypeIsPaste(0, 'V', cmdKey) &&
              !KeyTypeIsPaste(0, 'v', cmdKey | shiftKey));
    KT_EXPECT(KeyTypeIsShortcut(0, 0, cmdKey | optionKey) && !KeyTypeIsShortcut(0, 'q', controlKey));
    KT_EXPECT(KeyTypeIsControl(0, 1, 0) && !KeyTypeIsControl(0, 9, 0) && !KeyTypeIsControl(0, 'a', 0) &&
              KeyTypeIsControl(0, 127, 0) && !KeyTypeIsControl(0, 0x4E00, 0));
}

static OSStatus RecordCommand(EventHandlerCallRef call, EventRef event, void *userData)
{
    (void)call;
    HICommand command;
    if (GetEventParameter(event, kEventParamDirectObject, typeHICommand, NULL, sizeof command, NULL, &command) ==
        noErr)
        *(UInt32 *)userData = command.commandID;
    return noErr;
}

static DialogItemIndex gItemToPress;

static Boolean PressItem(DialogRef dialog, EventRecord *event, DialogItemIndex *itemHit)
{
    (void)dialog;
    (void)event;
    *itemHit = gItemToPress;
    return true;
}

KT_CASE(AlertsRunModallyOrAsSheets)
{
    KGUISharedApplication();
    gItemToPress = kAlertStdAlertCancelButton;
    KT_EXPECT(DialogRunGenericAlert(kAlertCautionAlert, NULL, false, CFSTR("Quit?"), CFSTR("Unsaved work."), false,
                                    NULL, CFSTR("Keep"), NULL, 0, 0, 0, 0, PressItem, NULL) ==
              kAlertStdAlertCancelButton);
    /* A text missing is a failure, reported only in debug mode. */
    KT_EXPECT(DialogRunGenericAlert(kAlertNoteAlert, NULL, false, NULL, NULL, false, NULL, NULL, NULL, 0, 0, 0, 0,
                                    PressItem, NULL) == 0);

    NSWindow *parent = KGUIMakeWindow(NSMakeRect(100, 100, 400, 300), @"Parent");
    UInt32 command = 0;
    EventTypeSpec eventType = EventTypeSpecMake(kEventClassCommand, kEventCommandProcess);
    EventHandlerRef handler = NULL;
    InstallEventHandler(GetApplicationEventTarget(), RecordCommand, 1, &eventType, &command, &handler);
    ClickInSheetWhenUp(parent, @"Discard");
    KT_EXPECT(DialogRunGenericAlert(kAlertNoteAlert, (WindowRef)parent, true, CFSTR("Save?"), NULL, false, NULL,
                                    (CFStringRef)(intptr_t)kAlertDefaultCancelText, CFSTR("Discard"), 0, 0, 0, 0,
                                    NULL, GetApplicationEventTarget()) == 1);
    KGUISpin(0.2);
    KT_EXPECT(command == kHICommandOther);
    KT_EXPECT(DialogRunGenericAlert(kAlertNoteAlert, (WindowRef)parent, true, NULL, NULL, false, NULL, NULL, NULL, 0,
                                    0, 0, 0, NULL, NULL) == 0);
    RemoveEventHandler(handler);
    KGUICloseWindow(parent);
}

/* What debug mode shows of failed alerts, and the dump that is not there. */
KT_CASE(FailuresAreReportedWithNameAndLine)
{
    KGUISharedApplication();
    NSWindow *parent = KGUIMakeWindow(NSMakeRect(100, 100, 200, 100), @"Parent");
    char path[] = "/tmp/koru-carbonui-log-XXXXXX";
    int fd = mkstemp(path), standardError = dup(2);
    KT_ASSERT(fd >= 0);
    Boolean saved = gKORUDebug;
    gKORUDebug = 1;
    fflush(stderr);
    dup2(fd, 2);
    DialogItemIndex modal = DialogRunGenericAlert(kAlertNoteAlert, NULL, false, NULL, NULL, false, NULL, NULL,
                                                  NULL, 0, 0, 0, 0, NULL, NULL);
    DialogItemIndex sheet = DialogRunGenericAlert(kAlertNoteAlert, (WindowRef)parent, false, NULL, NULL, false,
                                                  NULL, NULL, NULL, 0, 0, 0, 0, NULL, NULL);
    Boolean dumped = WindowDumpControlHierarchy();
    fflush(stderr);
    dup2(standardError, 2);
    gKORUDebug = saved;
    close(standardError);
    close(fd);
    KGUICloseWindow(parent);
    NSString *log = [NSString stringWithContentsOfFile:[NSString stringWithUTF8String:path]
                                              encoding:NSUTF8StringEncoding error:NULL];
    unlink(path);
    KT_EXPECT(modal == 0 && sheet == 0 && !dumped);
    NSArray *lines = [NSArray arrayWithObjects:@"[DialogRunGenericAlert Line:805] Sorry, I caught GOTO error.\n",
                                               @"[DialogRunGenericAlert Line:810] Sorry, I caught GOTO error.\n",
                                               @"[WindowDumpControlHierarchy Line:42] Sorry, I failed.\n", nil];
    for (NSString *line in lines)
        KT_EXPECT_MSG([log rangeOfString:line].location != NSNotFound, @"%@ missing from %@", line, log);
}

KT_MAIN()
