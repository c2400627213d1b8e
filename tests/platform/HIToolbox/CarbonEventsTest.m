/* Carbon events: typed parameters, events made from NSEvents sent through
 * the application to a view, and handler chains of targets. */
#import "KTest.h"
#import "KGUI.h"

#include <HIToolbox/CarbonEvents.h>

/* Turns the key events it is sent into Carbon text-input events. */
@interface KeyCatcher : NSView {
@public
    EventRef mTextEvent;
}
@end

@implementation KeyCatcher
- (BOOL)acceptsFirstResponder { return YES; }
- (void)keyDown:(NSEvent *)event
{
    if (mTextEvent == NULL)
        CreateTextInputEventWithNSEvent(event, &mTextEvent);
}
@end

static NSEvent *KeyEvent(NSEventType type, NSWindow *window, NSString *characters, NSUInteger modifiers)
{
    return [NSEvent keyEventWithType:type location:NSZeroPoint modifierFlags:modifiers timestamp:0
                        windowNumber:[window windowNumber] context:nil characters:characters
         charactersIgnoringModifiers:characters isARepeat:NO keyCode:55];
}

static BOOL HasEvent(void *catcher)
{
    return ((KeyCatcher *)catcher)->mTextEvent != NULL;
}

KT_CASE(ParametersAreTypedAndConverted)
{
    EventRef event = NULL;
    KT_ASSERT(CreateEvent(NULL, kEventClassKeyboard, kEventRawKeyDown, 0, kEventAttributeNone, &event) == noErr);
    KT_EXPECT(GetEventTime(event) > 0);
    SInt16 small = 300;
    KT_EXPECT(SetEventParameter(event, kEventParamKeyModifiers, typeSInt16, sizeof small, &small) == noErr);
    UInt32 wide = 0;
    EventParamType actualType = 0;
    ByteCount actualSize = 0;
    KT_EXPECT(GetEventParameter(event, kEventParamKeyModifiers, typeUInt32, &actualType, sizeof wide, &actualSize,
                                &wide) == noErr);
    KT_EXPECT(wide == 300 && actualType == typeUInt32 && actualSize == 4);
    KT_EXPECT(GetEventParameter(event, kEventParamKeyModifiers, typeWildCard, &actualType, 0, &actualSize, NULL) ==
                  noErr && actualType == typeSInt16 && actualSize == 2);
    KT_EXPECT(GetEventParameter(event, kEventParamKeyCode, typeUInt32, NULL, 4, NULL, &wide) == eventParameterNotFoundErr);
    KT_EXPECT(GetEventParameter(event, kEventParamKeyModifiers, typeEventRef, NULL, 8, NULL, &wide) != noErr);

    /* An event held in a parameter stays alive with it. */
    EventRef held = NULL;
    CreateEvent(NULL, kEventClassMouse, kEventMouseDown, 0, 0, &held);
    SetEventParameter(event, kEventParamTextInputSendKeyboardEvent, typeEventRef, sizeof held, &held);
    KT_EXPECT(GetEventRetainCount(held) == 2);
    RemoveEventParameter(event, kEventParamTextInputSendKeyboardEvent);
    KT_EXPECT(GetEventRetainCount(held) == 1);
    ReleaseEvent(held);
    ReleaseEvent(event);

    KT_EXPECT(CreateEvent(NULL, 0, 0, 0, 0, NULL) == paramErr);
    KT_EXPECT(SetEventParameter(NULL, kEventParamKeyCode, typeUInt32, 4, &wide) == paramErr &&
              GetEventParameter(NULL, kEventParamKeyCode, typeUInt32, NULL, 4, NULL, &wide) == paramErr);
    KT_EXPECT(GetEventClass(NULL) == 0 && GetEventKind(NULL) == 0 && GetEventRetainCount(NULL) == 0);
    ReleaseEvent(NULL);
}

KT_CASE(KeyEventsSentThroughTheApplicationBecomeTextInput)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(100, 100, 200, 100), @"Keys");
    KeyCatcher *catcher = [[[KeyCatcher alloc] initWithFrame:NSMakeRect(0, 0, 200, 100)] autorelease];
    [[window contentView] addSubview:catcher];
    [window makeKeyWindow];
    [window makeFirstResponder:catcher];
    [NSApp postEvent:KeyEvent(NSKeyDown, window, @"v", NSCommandKeyMask) atStart:NO];
    KT_ASSERT(KGUISpinUntil(HasEvent, catcher, 10));
    EventRef text = catcher->mTextEvent;
    KT_EXPECT(GetEventClass(text) == kEventClassTextInput && GetEventKind(text) == kEventTextInputUnicodeForKeyEvent);
    UniChar typed = 0;
    KT_EXPECT(GetEventParameter(text, kEventParamTextInputSendText, typeUnicodeText, NULL, sizeof typed, NULL,
                                &typed) == noErr && typed == 'v');
    EventRef raw = NULL;
    KT_ASSERT(GetEventParameter(text, kEventParamTextInputSendKeyboardEvent, typeEventRef, NULL, sizeof raw, NULL,
                                &raw) == noErr);
    KT_EXPECT(GetEventClass(raw) == kEventClassKeyboard && GetEventKind(raw) == kEventRawKeyDown);
    UInt32 modifiers = 0, keyCode = 0;
    GetEventParameter(raw, kEventParamKeyModifiers, typeUInt32, NULL, sizeof modifiers, NULL, &modifiers);
    GetEventParameter(raw, kEventParamKeyCode, typeUInt32, NULL, sizeof keyCode, NULL, &keyCode);
    KT_EXPECT(modifiers == cmdKey && keyCode == 55);
    ReleaseEvent(text);

    /* The special keys carry the toolbox's character codes. */
    unichar left = NSLeftArrowFunctionKey;
    EventRef arrow = NULL;
    NSString *arrowKey = [NSString stringWithCharacters:&left length:1];
    KT_ASSERT(CreateEventWithNSEvent(KeyEvent(NSKeyUp, window, arrowKey, NSShiftKeyMask), &arrow) == noErr);
    char macCharacter = 0;
    GetEventParameter(arrow, kEventParamKeyMacCharCodes, typeChar, NULL, 1, NULL, &macCharacter);
    GetEventParameter(arrow, kEventParamKeyModifiers, typeUInt32, NULL, sizeof modifiers, NULL, &modifiers);
    KT_EXPECT(GetEventKind(arrow) == kEventRawKeyUp && macCharacter == kLeftArrowCharCode && modifiers == shiftKey);
    ReleaseEvent(arrow);

    /* Only key downs type text; other events are no keyboard events. */
    EventRef none = (EventRef)1;
    KT_EXPECT(CreateTextInputEventWithNSEvent(KeyEvent(NSKeyUp, window, @"v", 0), &none) == eventClassInvalidErr &&
              none == NULL);
    NSEvent *other = [NSEvent otherEventWithType:NSApplicationDefined location:NSZeroPoint modifierFlags:0
                                       timestamp:0 windowNumber:0 context:nil subtype:0 data1:0 data2:0];
    KT_EXPECT(CreateEventWithNSEvent(other, &none) == eventClassInvalidErr);
    KT_EXPECT(CreateEventWithNSEvent(NULL, &none) == paramErr && CreateEventWithNSEvent(@"not an event", &none) == paramErr);
    KGUICloseWindow(window);
}

static OSStatus Record(EventHandlerCallRef call, EventRef event, void *userData)
{
    (void)call;
    (void)event;
    [(NSMutableArray *)userData addObject:@"record"];
    return eventNotHandledErr;
}

static OSStatus PassOn(EventHandlerCallRef call, EventRef event, void *userData)
{
    [(NSMutableArray *)userData addObject:@"pass on"];
    OSStatus status = CallNextEventHandler(call, event);
    [(NSMutableArray *)userData addObject:@"passed"];
    return status == eventNotHandledErr ? noErr : status;
}

KT_CASE(HandlersRunNewestFirst)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(100, 100, 100, 100), @"Targets");
    EventTargetRef target = GetWindowEventTarget((WindowRef)window);
    KT_ASSERT(target != NULL && target == GetWindowEventTarget((WindowRef)window));
    NSMutableArray *calls = [NSMutableArray array];
    EventTypeSpec command = {kEventClassCommand, kEventCommandProcess};
    EventHandlerRef older = NULL, newer = NULL;
    InstallEventHandler(target, Record, 1, &command, calls, &older);
    InstallEventHandler(target, NewEventHandlerUPP(PassOn), 1, &command, calls, &newer);
    EventRef event = NULL;
    CreateEvent(NULL, kEventClassCommand, kEventCommandProcess, 0, 0, &event);
    KT_EXPECT(SendEventToEventTarget(event, target) == noErr);
    KT_EXPECT_EQUAL_OBJECTS(calls, ([NSArray arrayWithObjects:@"pass on", @"record", @"passed", nil]));
    RemoveEventHandler(newer);
    [calls removeAllObjects];
    KT_EXPECT(SendEventToEventTarget(event, target) == eventNotHandledErr);
    KT_EXPECT_EQUAL_OBJECTS(calls, [NSArray arrayWithObject:@"record"]);
    /* Events of other types pass by. */
    EventRef other = NULL;
    CreateEvent(NULL, kEventClassKeyboard, kEventRawKeyDown, 0, 0, &other);
    [calls removeAllObjects];
    KT_EXPECT(SendEventToEventTarget(other, target) == eventNotHandledErr && [calls count] == 0);
    ReleaseEvent(other);
    ReleaseEvent(event);
    KT_EXPECT(InstallEventHandler(target, Record, 0, &command, NULL, NULL) == paramErr &&
              InstallEventHandler(NULL, Record, 1, &command, NULL, NULL) == paramErr);
    KT_EXPECT(SendEventToEventTarget(NULL, target) == paramErr && RemoveEventHandler(NULL) == paramErr);
    KT_EXPECT(GetWindowEventTarget(NULL) == NULL);
    RemoveEventHandler(older);
    KGUICloseWindow(window);
}

KT_MAIN()
