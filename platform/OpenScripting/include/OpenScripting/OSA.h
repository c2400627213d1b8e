/* Open Scripting Architecture: compiling and running scripts through a
 * scripting component.
 *
 * The scripting component ('osa ' / 'ascr') runs Lua 5.4.  A compiled script
 * is a Lua chunk: OSACompile takes source text ('TEXT', 'utf8' or 'utxt'),
 * OSALoad takes a chunk as luac5.4 writes it or Lua source (in a 'scpt' or
 * text descriptor).  Every execution runs in a fresh Lua state with the
 * standard libraries: OSAExecute runs the chunk (its first returned value is
 * the result; when it returns nothing and defines a global function "run",
 * that function's result is); OSAExecuteEvent runs the chunk's top level and
 * then the global function named after the event: 'aevt' 'oapp' "run", 'odoc'
 * "open", 'pdoc' "print", 'quit' "quit", any other the eight characters of
 * its class and id (e.g. "KORUping").  The handler gets the event's direct
 * parameter as its argument (text as a string, numbers, booleans, lists as
 * tables, files as paths).
 *
 * A script error answers errOSAScriptError (-1753); OSAScriptError then gives
 * Lua's message ('errs') and the number ('errn').  Results are script values
 * with ids of their own; OSADisplay shows them: strings in double quotes,
 * numbers and booleans as text, lists as {a, b}.  Script and value ids belong
 * to the component instance and end with OSADispose or CloseComponent.  A
 * script that never ends is the host's affair. */
#ifndef OPENSCRIPTING_OSA_H
#define OPENSCRIPTING_OSA_H

#include <CoreServices/AEDataModel.h>
#include <CoreServices/Components.h>
#include <MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef UInt32 OSAID;
typedef ComponentResult OSAError;

enum { kOSANullScript = 0 };

enum {
    kOSAComponentType = 0x6F736120,   /* 'osa ' */
    kOSAGenericScriptingComponentSubtype = 0x73637074, /* 'scpt' */
    kOSAScriptFileType = 0x6F736173,  /* 'osas' */
    typeAppleScript = 0x61736370,     /* 'ascr' */
    kAppleScriptSubtype = 0x61736370, /* 'ascr' */
    typeOSAGenericStorage = 0x73637074 /* 'scpt' */
};

/* Mode flags. */
enum {
    kOSAModeNull = 0x00000000,
    kOSAModePreventGetSource = 0x00000001,
    kOSAModeNeverInteract = 0x00000010,
    kOSAModeCanInteract = 0x00000020,
    kOSAModeAlwaysInteract = 0x00000030,
    kOSAModeDontReconnect = 0x00000080,
    kOSAModeCantSwitchLayer = 0x00000040,
    kOSAModeDoRecord = 0x00001000,
    kOSAModeCompileIntoContext = 0x00000002,
    kOSAModeAugmentContext = 0x00000004,
    kOSAModeDisplayForHumans = 0x00000008,
    kOSAModeDontStoreParent = 0x00010000
};

/* Selectors of OSAScriptError. */
enum {
    kOSAErrorNumber = 0x6572726E,   /* 'errn' */
    kOSAErrorMessage = 0x65727273,  /* 'errs' */
    kOSAErrorBriefMessage = 0x65727262, /* 'errb' */
    kOSAErrorApp = 0x65726170,      /* 'erap' */
    kOSAErrorPartialResult = 0x70746c72, /* 'ptlr' */
    kOSAErrorOffendingObject = 0x65726f62, /* 'erob' */
    kOSAErrorExpectedType = 0x65727274, /* 'errt' */
    kOSAErrorRange = 0x65726e67     /* 'erng' */
};

/* Compiles source text into a script; *previousAndResultingScriptID gets its
 * id (a non-null id on entry is replaced).  errOSAScriptError for a syntax
 * error, errOSABadStorageType for a descriptor that is no text, paramErr or
 * badComponentInstance for bad arguments. */
OSAError OSACompile(ComponentInstance scriptingComponent, const AEDesc *sourceData, SInt32 modeFlags,
                    OSAID *previousAndResultingScriptID);

/* Loads a compiled script (or source) from a 'scpt' or text descriptor. */
OSAError OSALoad(ComponentInstance scriptingComponent, const AEDesc *scriptData, SInt32 modeFlags,
                 OSAID *resultingScriptID);

/* Runs a script; *resultingScriptValueID is kOSANullScript when it gives no
 * value. */
OSAError OSAExecute(ComponentInstance scriptingComponent, OSAID compiledScriptID, OSAID contextID,
                    SInt32 modeFlags, OSAID *resultingScriptValueID);

/* Runs the handler of the script contextID for the event;
 * errAEEventNotHandled when the script defines none. */
OSAError OSAExecuteEvent(ComponentInstance scriptingComponent, const AppleEvent *theAppleEvent,
                         OSAID contextID, SInt32 modeFlags, OSAID *resultingScriptValueID);

/* A value (or a script's source form) as text of the desired type. */
OSAError OSADisplay(ComponentInstance scriptingComponent, OSAID scriptValueID, DescType desiredType,
                    SInt32 modeFlags, AEDesc *resultingText);

/* The last script error of the instance: 'errs' as text, 'errn' as 'long'. */
OSAError OSAScriptError(ComponentInstance scriptingComponent, OSType selector, DescType desiredType,
                        AEDesc *resultingErrorDescription);

/* Ends a script or value id; errOSAInvalidID for one that is unknown. */
OSAError OSADispose(ComponentInstance scriptingComponent, OSAID scriptID);

/* The compiled form of a script, as OSALoad takes it back ('scpt'). */
OSAError OSAStore(ComponentInstance scriptingComponent, OSAID scriptID, DescType desiredType,
                  SInt32 modeFlags, AEDesc *resultingScriptData);

#ifdef __cplusplus
}
#endif

#endif
