/* Carbon events as objects of their own, made by hand or from NSEvents, and
 * the handler chains of event targets. */
#import <AppKit/AppKit.h>

#include <HIToolbox/CarbonEvents.h>
#import "ObjectLifetimes.h"

#include <string.h>
#include <time.h>

/* One typed parameter.  An event named by a typeEventRef parameter is kept
 * alive by it, as a text-input event keeps its raw key event. */
@interface KORUEventParameter : NSObject {
@public
    EventParamType mType;
    NSData *mBytes;
    id mHeldEvent;
}
@end

@implementation KORUEventParameter
- (void)dealloc
{
    [mBytes release];
    [mHeldEvent release];
    [super dealloc];
}
@end

@interface KORUCarbonEvent : NSObject {
@public
    UInt32 mClass;
    UInt32 mKind;
    EventTime mTime;
    EventAttributes mAttributes;
    NSMutableDictionary *mParameters;
}
@end

@implementation KORUCarbonEvent
- (void)dealloc
{
    [mParameters release];
    [super dealloc];
}
@end

@interface KORUEventHandler : NSObject {
@public
    id mTarget; /* not retained: the target owns its handlers */
    EventHandlerUPP mProc;
    NSData *mTypes;
    void *mUserData;
}
@end

@implementation KORUEventHandler
- (void)dealloc
{
    [mTypes release];
    [super dealloc];
}
- (BOOL)handlesClass:(UInt32)eventClass kind:(UInt32)kind
{
    const EventTypeSpec *types = (const EventTypeSpec *)[mTypes bytes];
    NSUInteger count = [mTypes length] / sizeof(EventTypeSpec);
    for (NSUInteger i = 0; i < count; ++i) {
        if (types[i].eventClass == eventClass && types[i].eventKind == kind)
            return YES;
    }
    return NO;
}
@end

/* Handlers newest first. */
@interface KORUEventTarget : NSObject {
@public
    NSMutableArray *mHandlers;
}
@end

@implementation KORUEventTarget
- (id)init
{
    if ((self = [super init]) == nil)
        return nil;
    mHandlers = [[NSMutableArray alloc] init];
    return self;
}
- (void)dealloc
{
    for (KORUEventHandler *handler in mHandlers)
        handler->mTarget = nil;
    [mHandlers release];
    [super dealloc];
}
@end

/* Where a dispatch stands, so that CallNextEventHandler can go on. */
typedef struct KORUHandlerCall {
    NSArray *handlers;
    NSUInteger next;
} KORUHandlerCall;

static KORUCarbonEvent *EventObject(EventRef event)
{
    return (KORUCarbonEvent *)event;
}

OSStatus CreateEvent(CFAllocatorRef inAllocator, UInt32 inClassID, UInt32 inKind, EventTime inWhen,
                     EventAttributes inAttributes, EventRef *outEvent)
{
    (void)inAllocator;
    if (outEvent == NULL)
        return paramErr;
    KORUCarbonEvent *event = [[KORUCarbonEvent alloc] init];
    event->mClass = inClassID;
    event->mKind = inKind;
    event->mTime = inWhen != 0 ? inWhen : GetCurrentEventTime();
    event->mAttributes = inAttributes;
    event->mParameters = [[NSMutableDictionary alloc] init];
    *outEvent = (EventRef)event;
    return noErr;
}

EventRef RetainEvent(EventRef inEvent)
{
    [EventObject(inEvent) retain];
    return inEvent;
}

void ReleaseEvent(EventRef inEvent)
{
    [EventObject(inEvent) release];
}

ItemCount GetEventRetainCount(EventRef inEvent)
{
    return inEvent != NULL ? [EventObject(inEvent) retainCount] : 0;
}

UInt32 GetEventClass(EventRef inEvent)
{
    return inEvent != NULL ? EventObject(inEvent)->mClass : 0;
}

UInt32 GetEventKind(EventRef inEvent)
{
    return inEvent != NULL ? EventObject(inEvent)->mKind : 0;
}

EventTime GetEventTime(EventRef inEvent)
{
    return inEvent != NULL ? EventObject(inEvent)->mTime : 0;
}

EventTime GetCurrentEventTime(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (EventTime)now.tv_sec + (EventTime)now.tv_nsec / 1e9;
}

OSStatus SetEventParameter(EventRef inEvent, EventParamName inName, EventParamType inType,
                           ByteCount inSize, const void *inDataPtr)
{
    if (inEvent == NULL || (inDataPtr == NULL && inSize != 0))
        return paramErr;
    KORUEventParameter *parameter = [[KORUEventParameter alloc] init];
    parameter->mType = inType;
    parameter->mBytes = [[NSData alloc] initWithBytes:inDataPtr length:inSize];
    if (inType == typeEventRef && inSize == sizeof(EventRef)) {
        EventRef held;
        memcpy(&held, inDataPtr, sizeof held);
        parameter->mHeldEvent = [EventObject(held) retain];
    }
    [EventObject(inEvent)->mParameters setObject:parameter forKey:[NSNumber numberWithUnsignedInt:inName]];
    [parameter release];
    return noErr;
}

OSStatus GetEventParameter(EventRef inEvent, EventParamName inName, EventParamType inDesiredType,
                           EventParamType *outActualType, ByteCount inBufferSize,
                           ByteCount *outActualSize, void *ioBuffer)
{
    if (inEvent == NULL)
        return paramErr;
    KORUEventParameter *parameter =
        [EventObject(inEvent)->mParameters objectForKey:[NSNumber numberWithUnsignedInt:inName]];
    if (parameter == nil)
        return eventParameterNotFoundErr;
    const void *bytes = [parameter->mBytes bytes];
    ByteCount size = [parameter->mBytes length];
    EventParamType type = parameter->mType;
    AEDesc coerced = {typeNull, NULL};
    if (inDesiredType != typeWildCard && inDesiredType != type) {
        OSErr status = AECoercePtr(type, bytes, (Size)size, inDesiredType, &coerced);
        if (status != noErr)
            return status;
        size = (ByteCount)AEGetDescDataSize(&coerced);
        type = inDesiredType;
    }
    if (ioBuffer != NULL) {
        ByteCount copied = size < inBufferSize ? size : inBufferSize;
        if (coerced.descriptorType != typeNull)
            AEGetDescData(&coerced, ioBuffer, (Size)copied);
        else
            memcpy(ioBuffer, bytes, copied);
    }
    AEDisposeDesc(&coerced);
    if (outActualType != NULL)
        *outActualType = type;
    if (outActualSize != NULL)
        *outActualSize = size;
    return noErr;
}

OSStatus RemoveEventParameter(EventRef inEvent, EventParamName inName)
{
    if (inEvent == NULL)
        return paramErr;
    NSNumber *key = [NSNumber numberWithUnsignedInt:inName];
    if ([EventObject(inEvent)->mParameters objectForKey:key] == nil)
        return eventParameterNotFoundErr;
    [EventObject(inEvent)->mParameters removeObjectForKey:key];
    return noErr;
}

/* --- From NSEvents ---------------------------------------------------------- */

UInt32 GetCarbonModifiersFromNSEventModifierFlags(unsigned long inFlags)
{
    UInt32 modifiers = 0;
    if (inFlags & NSAlphaShiftKeyMask)
        modifiers |= alphaLock;
    if (inFlags & NSShiftKeyMask)
        modifiers |= shiftKey;
    if (inFlags & NSControlKeyMask)
        modifiers |= controlKey;
    if (inFlags & NSAlternateKeyMask)
        modifiers |= optionKey;
    if (inFlags & NSCommandKeyMask)
        modifiers |= cmdKey;
    return modifiers;
}

/* AppKit reports the special keys as private-use characters (and the delete
 * key as DEL); Carbon gives them the old control-character codes. */
static unichar CarbonCharacterFor(unichar c)
{
    switch (c) {
    case NSLeftArrowFunctionKey: return kLeftArrowCharCode;
    case NSRightArrowFunctionKey: return kRightArrowCharCode;
    case NSUpArrowFunctionKey: return kUpArrowCharCode;
    case NSDownArrowFunctionKey: return kDownArrowCharCode;
    case NSDeleteCharacter: return kBackspaceCharCode;
    case NSDeleteFunctionKey: return kDeleteCharCode;
    case NSHomeFunctionKey: return kHomeCharCode;
    case NSEndFunctionKey: return kEndCharCode;
    case NSPageUpFunctionKey: return kPageUpCharCode;
    case NSPageDownFunctionKey: return kPageDownCharCode;
    case NSHelpFunctionKey: return kHelpCharCode;
    case NSEnterCharacter: return kEnterCharCode;
    default: break;
    }
    if (c >= NSF1FunctionKey && c <= NSF35FunctionKey)
        return kFunctionKeyCharCode;
    return c;
}

/* The event's characters with the special keys translated. */
static NSData *CarbonUnicodesOf(NSEvent *event)
{
    NSString *characters = [event characters];
    NSUInteger length = [characters length];
    NSMutableData *units = [NSMutableData dataWithLength:length * sizeof(unichar)];
    unichar *buffer = (unichar *)[units mutableBytes];
    [characters getCharacters:buffer range:NSMakeRange(0, length)];
    for (NSUInteger i = 0; i < length; ++i)
        buffer[i] = CarbonCharacterFor(buffer[i]);
    return units;
}

/* One byte in the system's old character set: ASCII as it is, anything else
 * as far as MacRoman can show it. */
static char CarbonMacCharacterOf(NSData *unicodes)
{
    if ([unicodes length] < sizeof(unichar))
        return 0;
    unichar first = *(const unichar *)[unicodes bytes];
    if (first < 0x80)
        return (char)first;
    NSString *text = [NSString stringWithCharacters:&first length:1];
    NSData *roman = [text dataUsingEncoding:NSMacOSRomanStringEncoding allowLossyConversion:YES];
    return [roman length] > 0 ? *(const char *)[roman bytes] : '?';
}

static OSStatus CreateKeyboardEvent(NSEvent *event, UInt32 kind, EventRef *outEvent)
{
    OSStatus status = CreateEvent(NULL, kEventClassKeyboard, kind, [event timestamp],
                                  kEventAttributeNone, outEvent);
    if (status != noErr)
        return status;
    UInt32 modifiers = GetCarbonModifiersFromNSEventModifierFlags([event modifierFlags]);
    SetEventParameter(*outEvent, kEventParamKeyModifiers, typeUInt32, sizeof modifiers, &modifiers);
    if (kind == kEventRawKeyModifiersChanged)
        return noErr;
    UInt32 keyCode = [event keyCode];
    NSData *unicodes = CarbonUnicodesOf(event);
    char macCharacter = CarbonMacCharacterOf(unicodes);
    SetEventParameter(*outEvent, kEventParamKeyCode, typeUInt32, sizeof keyCode, &keyCode);
    SetEventParameter(*outEvent, kEventParamKeyMacCharCodes, typeChar, 1, &macCharacter);
    SetEventParameter(*outEvent, kEventParamKeyUnicodes, typeUnicodeText, [unicodes length],
                      [unicodes bytes]);
    return noErr;
}

static OSStatus CreateMouseEvent(NSEvent *event, UInt32 kind, UInt16 button, EventRef *outEvent)
{
    OSStatus status = CreateEvent(NULL, kEventClassMouse, kind, [event timestamp],
                                  kEventAttributeNone, outEvent);
    if (status != noErr)
        return status;
    UInt32 modifiers = GetCarbonModifiersFromNSEventModifierFlags([event modifierFlags]);
    NSPoint where = [event locationInWindow];
    HIPoint location = {(float)where.x, (float)where.y};
    SetEventParameter(*outEvent, kEventParamKeyModifiers, typeUInt32, sizeof modifiers, &modifiers);
    SetEventParameter(*outEvent, kEventParamMouseLocation, typeHIPoint, sizeof location, &location);
    if (button != 0)
        SetEventParameter(*outEvent, kEventParamMouseButton, typeMouseButton, sizeof button, &button);
    if (kind == kEventMouseDown || kind == kEventMouseUp) {
        UInt32 clicks = (UInt32)[event clickCount];
        SetEventParameter(*outEvent, kEventParamClickCount, typeUInt32, sizeof clicks, &clicks);
    }
    return noErr;
}

OSStatus CreateEventWithNSEvent(const void *inNSEvent, EventRef *outEvent)
{
    if (inNSEvent == NULL || outEvent == NULL)
        return paramErr;
    NSEvent *event = (NSEvent *)inNSEvent;
    if (![event isKindOfClass:[NSEvent class]])
        return paramErr;
    switch ([event type]) {
    case NSKeyDown:
        return CreateKeyboardEvent(event, [event isARepeat] ? kEventRawKeyRepeat : kEventRawKeyDown,
                                   outEvent);
    case NSKeyUp:
        return CreateKeyboardEvent(event, kEventRawKeyUp, outEvent);
    case NSFlagsChanged:
        return CreateKeyboardEvent(event, kEventRawKeyModifiersChanged, outEvent);
    case NSLeftMouseDown: return CreateMouseEvent(event, kEventMouseDown, 1, outEvent);
    case NSRightMouseDown: return CreateMouseEvent(event, kEventMouseDown, 2, outEvent);
    case NSOtherMouseDown: return CreateMouseEvent(event, kEventMouseDown, 3, outEvent);
    case NSLeftMouseUp: return CreateMouseEvent(event, kEventMouseUp, 1, outEvent);
    case NSRightMouseUp: return CreateMouseEvent(event, kEventMouseUp, 2, outEvent);
    case NSOtherMouseUp: return CreateMouseEvent(event, kEventMouseUp, 3, outEvent);
    case NSMouseMoved: return CreateMouseEvent(event, kEventMouseMoved, 0, outEvent);
    case NSLeftMouseDragged: return CreateMouseEvent(event, kEventMouseDragged, 1, outEvent);
    case NSRightMouseDragged: return CreateMouseEvent(event, kEventMouseDragged, 2, outEvent);
    case NSOtherMouseDragged: return CreateMouseEvent(event, kEventMouseDragged, 3, outEvent);
    default:
        *outEvent = NULL;
        return eventClassInvalidErr;
    }
}

OSStatus CreateTextInputEventWithNSEvent(const void *inNSEvent, EventRef *outEvent)
{
    if (inNSEvent == NULL || outEvent == NULL)
        return paramErr;
    NSEvent *event = (NSEvent *)inNSEvent;
    if (![event isKindOfClass:[NSEvent class]])
        return paramErr;
    if ([event type] != NSKeyDown) {
        *outEvent = NULL;
        return eventClassInvalidErr;
    }
    EventRef keyEvent = NULL;
    OSStatus status = CreateEventWithNSEvent(inNSEvent, &keyEvent);
    if (status != noErr)
        return status;
    status = CreateEvent(NULL, kEventClassTextInput, kEventTextInputUnicodeForKeyEvent, [event timestamp],
                         kEventAttributeNone, outEvent);
    if (status == noErr) {
        NSData *text = CarbonUnicodesOf(event);
        SetEventParameter(*outEvent, kEventParamTextInputSendText, typeUnicodeText, [text length],
                          [text bytes]);
        SetEventParameter(*outEvent, kEventParamTextInputSendKeyboardEvent, typeEventRef,
                          sizeof keyEvent, &keyEvent);
    }
    ReleaseEvent(keyEvent);
    return status;
}

/* --- Targets ------------------------------------------------------------------ */

static KORUEventTarget *gApplicationTarget;
static NSMapTable *gWindowTargets;

EventTargetRef GetApplicationEventTarget(void)
{
    if (gApplicationTarget == nil)
        gApplicationTarget = [[KORUEventTarget alloc] init];
    return (EventTargetRef)gApplicationTarget;
}

/* A window's target goes when the window closes: a closed window may be
 * freed, and its address reused by a window that must not inherit the
 * handlers. */
@interface KORUWindowTargetJanitor : NSObject
@end

@implementation KORUWindowTargetJanitor
+ (void)windowWillClose:(NSNotification *)notification
{
    NSWindow *window = [notification object];
    [[NSNotificationCenter defaultCenter] removeObserver:self name:NSWindowWillCloseNotification object:window];
    NSMapRemove(gWindowTargets, window);
}
@end

/* And when the window is freed without being closed. */
static void ForgetWindowTarget(id window)
{
    if (gWindowTargets != nil && NSMapGet(gWindowTargets, window) != nil) {
        [[NSNotificationCenter defaultCenter] removeObserver:[KORUWindowTargetJanitor class]
                                                        name:NSWindowWillCloseNotification
                                                      object:window];
        NSMapRemove(gWindowTargets, window);
    }
}

EventTargetRef GetWindowEventTarget(WindowRef inWindow)
{
    if (inWindow == NULL)
        return NULL;
    KORUForgetOnDealloc([NSWindow class], ForgetWindowTarget);
    if (gWindowTargets == nil)
        gWindowTargets = NSCreateMapTable(NSNonOwnedPointerMapKeyCallBacks, NSObjectMapValueCallBacks, 0);
    NSWindow *window = (NSWindow *)inWindow;
    KORUEventTarget *target = NSMapGet(gWindowTargets, window);
    if (target == nil) {
        target = [[KORUEventTarget alloc] init];
        NSMapInsert(gWindowTargets, window, target);
        [target release];
        [[NSNotificationCenter defaultCenter] addObserver:[KORUWindowTargetJanitor class]
                                                 selector:@selector(windowWillClose:)
                                                     name:NSWindowWillCloseNotification
                                                   object:window];
    }
    return (EventTargetRef)target;
}

EventHandlerUPP NewEventHandlerUPP(EventHandlerProcPtr userRoutine)
{
    return userRoutine;
}

void DisposeEventHandlerUPP(EventHandlerUPP userUPP)
{
    (void)userUPP;
}

OSStatus InstallEventHandler(EventTargetRef inTarget, EventHandlerUPP inHandler, ItemCount inNumTypes,
                             const EventTypeSpec *inList, void *inUserData, EventHandlerRef *outRef)
{
    if (inTarget == NULL || inHandler == NULL || inNumTypes == 0 || inList == NULL)
        return paramErr;
    KORUEventTarget *target = (KORUEventTarget *)inTarget;
    KORUEventHandler *handler = [[KORUEventHandler alloc] init];
    handler->mTarget = target;
    handler->mProc = inHandler;
    handler->mTypes = [[NSData alloc] initWithBytes:inList length:inNumTypes * sizeof(EventTypeSpec)];
    handler->mUserData = inUserData;
    [target->mHandlers insertObject:handler atIndex:0];
    [handler release];
    if (outRef != NULL)
        *outRef = (EventHandlerRef)handler;
    return noErr;
}

OSStatus RemoveEventHandler(EventHandlerRef inHandlerRef)
{
    if (inHandlerRef == NULL)
        return paramErr;
    KORUEventHandler *handler = (KORUEventHandler *)inHandlerRef;
    KORUEventTarget *target = handler->mTarget;
    if (target == nil)
        return paramErr;
    handler->mTarget = nil;
    [target->mHandlers removeObjectIdenticalTo:handler];
    return noErr;
}

static OSStatus DispatchFrom(KORUHandlerCall *call, EventRef inEvent)
{
    UInt32 eventClass = GetEventClass(inEvent), kind = GetEventKind(inEvent);
    while (call->next < [call->handlers count]) {
        KORUEventHandler *handler = [call->handlers objectAtIndex:call->next++];
        if (handler->mTarget == nil || ![handler handlesClass:eventClass kind:kind])
            continue;
        OSStatus status = handler->mProc((EventHandlerCallRef)call, inEvent, handler->mUserData);
        if (status != eventNotHandledErr)
            return status;
    }
    return eventNotHandledErr;
}

OSStatus SendEventToEventTarget(EventRef inEvent, EventTargetRef inTarget)
{
    if (inEvent == NULL || inTarget == NULL)
        return paramErr;
    /* A handler may remove itself or others while the event travels: walk a
     * copy, and hold the target and the event for the duration. */
    KORUEventTarget *target = [(KORUEventTarget *)inTarget retain];
    RetainEvent(inEvent);
    KORUHandlerCall call = {[target->mHandlers copy], 0};
    OSStatus status = DispatchFrom(&call, inEvent);
    [call.handlers release];
    ReleaseEvent(inEvent);
    [target release];
    return status;
}

OSStatus CallNextEventHandler(EventHandlerCallRef inCallRef, EventRef inEvent)
{
    if (inCallRef == NULL || inEvent == NULL)
        return paramErr;
    return DispatchFrom((KORUHandlerCall *)inCallRef, inEvent);
}
