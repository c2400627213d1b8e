/* The Event Manager's keyboard vocabulary: modifier bits, the character
 * codes of the special keys, and the classic event record that modal
 * dialog filters receive.
 *
 * Modifier bits are the Carbon ones (cmdKey 0x100, shiftKey 0x200, ...), as
 * the keyboard events of CarbonEvents.h carry them in kEventParamKeyModifiers.
 * Plain C, safe from C, C++ and Objective-C. */
#ifndef HITOOLBOX_EVENTS_H
#define HITOOLBOX_EVENTS_H

#include <CoreServices/MacErrors.h>
#include <MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef UInt16 EventKind;
typedef UInt16 EventModifiers;

/* Classic event kinds. */
enum {
    nullEvent = 0,
    mouseDown = 1,
    mouseUp = 2,
    keyDown = 3,
    keyUp = 4,
    autoKey = 5,
    updateEvt = 6,
    activateEvt = 8,
    osEvt = 15
};

/* Modifier bits. */
enum {
    activeFlag = 0x0001,
    btnState = 0x0080,
    cmdKey = 0x0100,
    shiftKey = 0x0200,
    alphaLock = 0x0400,
    optionKey = 0x0800,
    controlKey = 0x1000,
    rightShiftKey = 0x2000,
    rightOptionKey = 0x4000,
    rightControlKey = 0x8000
};

/* Character codes of the special keys. */
enum {
    kNullCharCode = 0,
    kHomeCharCode = 1,
    kEnterCharCode = 3,
    kEndCharCode = 4,
    kHelpCharCode = 5,
    kBellCharCode = 7,
    kBackspaceCharCode = 8,
    kTabCharCode = 9,
    kLineFeedCharCode = 10,
    kPageUpCharCode = 11,
    kPageDownCharCode = 12,
    kReturnCharCode = 13,
    kFunctionKeyCharCode = 16,
    kEscapeCharCode = 27,
    kLeftArrowCharCode = 28,
    kRightArrowCharCode = 29,
    kUpArrowCharCode = 30,
    kDownArrowCharCode = 31,
    kSpaceCharCode = 32,
    kDeleteCharCode = 127
};

typedef struct EventRecord {
    EventKind what;
    UInt32 message;
    UInt32 when;
    Point where;
    EventModifiers modifiers;
} EventRecord;

#ifdef __cplusplus
}
#endif

#endif
