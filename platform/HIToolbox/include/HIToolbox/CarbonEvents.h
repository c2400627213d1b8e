/* Carbon events: objects of their own with a class, a kind, a time and typed
 * parameters, made by hand (CreateEvent) or from the NSEvents the
 * application receives (CreateEventWithNSEvent,
 * CreateTextInputEventWithNSEvent); event targets with handler chains for
 * the application and for each window.
 *
 * An event is reference counted: Create... gives the caller a reference that
 * ReleaseEvent gives up.  A parameter of type typeEventRef keeps a reference
 * to the event it names.  GetEventParameter converts a parameter to another
 * type where the Apple Event Manager's coercions can (a 'shor' read as
 * 'magn', ...).  Use from the main thread only. */
#ifndef HITOOLBOX_CARBONEVENTS_H
#define HITOOLBOX_CARBONEVENTS_H

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/AEDataModel.h>
#include <CoreServices/MacErrors.h>
#include <HIToolbox/Controls.h>
#include <HIToolbox/Events.h>
#include <HIToolbox/MacWindows.h>
#include <HIToolbox/Menus.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct OpaqueEventRef *EventRef;
typedef struct OpaqueEventTargetRef *EventTargetRef;
typedef struct OpaqueEventHandlerRef *EventHandlerRef;
typedef struct OpaqueEventHandlerCallRef *EventHandlerCallRef;
typedef double EventTime;
typedef UInt32 EventAttributes;
typedef OSType EventParamName;
typedef OSType EventParamType;
typedef UInt32 EventClass;
typedef UInt32 EventKindCode;

typedef struct EventTypeSpec {
    UInt32 eventClass;
    UInt32 eventKind;
} EventTypeSpec;

typedef OSStatus (*EventHandlerProcPtr)(EventHandlerCallRef inHandlerCallRef, EventRef inEvent,
                                        void *inUserData);
typedef EventHandlerProcPtr EventHandlerUPP;

enum { kEventAttributeNone = 0, kEventAttributeUserEvent = 1 };

/* Event classes. */
enum {
    kEventClassMouse = 0x6D6F7573,     /* 'mous' */
    kEventClassKeyboard = 0x6B657962,  /* 'keyb' */
    kEventClassTextInput = 0x74657874, /* 'text' */
    kEventClassApplication = 0x6170706C, /* 'appl' */
    kEventClassWindow = 0x77696E64,    /* 'wind' */
    kEventClassControl = 0x636E746C,   /* 'cntl' */
    kEventClassCommand = 0x636D6473    /* 'cmds' */
};

/* Keyboard kinds. */
enum {
    kEventRawKeyDown = 1,
    kEventRawKeyRepeat = 2,
    kEventRawKeyUp = 3,
    kEventRawKeyModifiersChanged = 4
};

/* Mouse kinds. */
enum {
    kEventMouseDown = 1,
    kEventMouseUp = 2,
    kEventMouseMoved = 5,
    kEventMouseDragged = 6,
    kEventMouseWheelMoved = 10
};

/* Text-input kinds. */
enum { kEventTextInputUnicodeForKeyEvent = 2 };

/* Command kinds. */
enum { kEventCommandProcess = 1, kEventCommandUpdateStatus = 2 };

/* Control kinds. */
enum { kEventControlHit = 1, kEventControlClick = 13 };

/* Parameter names. */
enum {
    kEventParamDirectObject = 0x2D2D2D2D,             /* '----' */
    kEventParamKeyCode = 0x6B636F64,                  /* 'kcod' */
    kEventParamKeyMacCharCodes = 0x6B636872,          /* 'kchr' */
    kEventParamKeyModifiers = 0x6B6D6F64,             /* 'kmod' */
    kEventParamKeyUnicodes = 0x6B756E69,              /* 'kuni' */
    kEventParamKeyboardType = 0x6B626474,             /* 'kbdt' */
    kEventParamTextInputSendText = 0x74737478,        /* 'tstx' */
    kEventParamTextInputSendKeyboardEvent = 0x74736B65, /* 'tske' */
    kEventParamMouseLocation = 0x6D6C6F63,            /* 'mloc' */
    kEventParamMouseButton = 0x6D62746E,              /* 'mbtn' */
    kEventParamClickCount = 0x63636E74,               /* 'ccnt' */
    kEventParamWindowRef = 0x77696E64                 /* 'wind' */
};

/* Parameter types beyond the Apple Event Manager's. */
enum {
    typeEventRef = 0x65767266,       /* 'evrf' */
    typeControlRef = 0x6374726C,     /* 'ctrl' */
    typeWindowRef = 0x77696E64,      /* 'wind' */
    typeMenuRef = 0x6D656E75,        /* 'menu' */
    typeHICommand = 0x68636D64,      /* 'hcmd' */
    typeHIPoint = 0x68697074,        /* 'hipt' */
    typeMouseButton = 0x6D62746E,    /* 'mbtn' */
    typeEventTargetRef = 0x65747267  /* 'etrg' */
};

/* The command a control, a menu item or a standard alert's button sends. */
typedef struct HICommand {
    UInt32 attributes;
    UInt32 commandID;
    struct {
        MenuRef menuRef;
        MenuItemIndex menuItemIndex;
    } menu;
} HICommand;

enum { kHICommandFromMenu = 1, kHICommandFromControl = 2, kHICommandFromWindow = 4 };

enum {
    kHICommandOK = 0x6F6B2020,      /* 'ok  ' */
    kHICommandCancel = 0x6E6F7421,  /* 'not!' */
    kHICommandOther = 0x6F746872,   /* 'othr' */
    kHICommandAppHelp = 0x61686C70, /* 'ahlp' */
    kHICommandQuit = 0x71756974     /* 'quit' */
};

typedef struct HIPoint {
    float x;
    float y;
} HIPoint;

/* --- Events --------------------------------------------------------------- */

/* A new event without parameters; paramErr for a NULL out pointer.  A time
 * of 0 stands for now. */
OSStatus CreateEvent(CFAllocatorRef inAllocator, UInt32 inClassID, UInt32 inKind, EventTime inWhen,
                     EventAttributes inAttributes, EventRef *outEvent);
EventRef RetainEvent(EventRef inEvent);
/* Gives up one reference; nothing for NULL. */
void ReleaseEvent(EventRef inEvent);
/* The count of references; 0 for NULL. */
ItemCount GetEventRetainCount(EventRef inEvent);
/* 0 for NULL. */
UInt32 GetEventClass(EventRef inEvent);
UInt32 GetEventKind(EventRef inEvent);
EventTime GetEventTime(EventRef inEvent);
/* Seconds since the system started. */
EventTime GetCurrentEventTime(void);

/* Sets (replaces) a parameter with a copy of the bytes; paramErr for a NULL
 * event or NULL data with a nonzero size. */
OSStatus SetEventParameter(EventRef inEvent, EventParamName inName, EventParamType inType,
                           ByteCount inSize, const void *inDataPtr);
/* Copies at most inBufferSize bytes of the parameter, converted to
 * inDesiredType (typeWildCard: as stored), into ioBuffer (which may be NULL
 * to ask for the size only); outActualType and outActualSize (each may be
 * NULL) receive the type and the full size of the data.
 * eventParameterNotFoundErr when there is no such parameter,
 * errAECoercionFail when it cannot be converted. */
OSStatus GetEventParameter(EventRef inEvent, EventParamName inName, EventParamType inDesiredType,
                           EventParamType *outActualType, ByteCount inBufferSize,
                           ByteCount *outActualSize, void *ioBuffer);
OSStatus RemoveEventParameter(EventRef inEvent, EventParamName inName);

/* An event made from an NSEvent (passed as a pointer, so that C and C++
 * can hand one on): key down, repeat and up give kEventClassKeyboard with
 * kEventParamKeyCode (typeUInt32, the NSEvent's key code),
 * kEventParamKeyMacCharCodes (typeChar, one byte), kEventParamKeyUnicodes
 * (typeUnicodeText) and kEventParamKeyModifiers (typeUInt32, Carbon bits);
 * a modifier change gives kEventRawKeyModifiersChanged with the modifiers;
 * mouse buttons and moves give kEventClassMouse with the location, button
 * and modifiers.  The arrow, delete and navigation keys carry the Carbon
 * character codes (kLeftArrowCharCode ...).  eventClassInvalidErr for other
 * kinds of NSEvent, paramErr for NULL. */
OSStatus CreateEventWithNSEvent(const void *inNSEvent, EventRef *outEvent);
/* The text-input event the toolbox sends for a key press:
 * kEventTextInputUnicodeForKeyEvent with kEventParamTextInputSendText (the
 * typed text as typeUnicodeText) and kEventParamTextInputSendKeyboardEvent
 * (typeEventRef, the raw key event).  eventClassInvalidErr unless the
 * NSEvent is a key down. */
OSStatus CreateTextInputEventWithNSEvent(const void *inNSEvent, EventRef *outEvent);
/* The Carbon modifier bits of NSEvent modifier flags. */
UInt32 GetCarbonModifiersFromNSEventModifierFlags(unsigned long inFlags);

/* --- Targets and handlers ------------------------------------------------- */

EventTargetRef GetApplicationEventTarget(void);
/* The window's target, made at the first request and kept until the window
 * closes; NULL for NULL. */
EventTargetRef GetWindowEventTarget(WindowRef inWindow);

EventHandlerUPP NewEventHandlerUPP(EventHandlerProcPtr userRoutine);
void DisposeEventHandlerUPP(EventHandlerUPP userUPP);

/* Installs a handler for the listed event types; the newest handler of a
 * target is called first.  outRef may be NULL (the handler then lives as
 * long as the target).  paramErr for a NULL target or handler, or a list of
 * no types. */
OSStatus InstallEventHandler(EventTargetRef inTarget, EventHandlerUPP inHandler, ItemCount inNumTypes,
                             const EventTypeSpec *inList, void *inUserData, EventHandlerRef *outRef);
OSStatus RemoveEventHandler(EventHandlerRef inHandlerRef);
/* Passes the event to the target's handlers for its type until one answers
 * something other than eventNotHandledErr; that answer, or
 * eventNotHandledErr. */
OSStatus SendEventToEventTarget(EventRef inEvent, EventTargetRef inTarget);
/* From a handler: passes the event on to the older handlers of the target. */
OSStatus CallNextEventHandler(EventHandlerCallRef inCallRef, EventRef inEvent);

#ifdef __cplusplus
}
#endif

#endif
