/* Apple Event Manager: the dispatch table and sending events.
 *
 * Handlers are installed per event class and id (either may be '****' to
 * match any) in the application's table; the system table is kept apart and
 * is never consulted for dispatch.  The first handler installed in the
 * application table publishes the process's event port (a Distributed
 * Objects connection over an NSMessagePort named after the pid) on the main
 * run loop, so events from other processes reach the handlers while the host
 * runs that run loop.
 *
 * AESend looks at the event's address ('psn ' or 'kpid'):
 *   - the current process: the handler runs inside the send; the reply is
 *     filled in for kAEWaitReply, while kAEQueueReply returns a null reply and
 *     the reply comes later as an 'aevt'/'ansr' event on the main run loop;
 *   - another process: the flattened event travels over Distributed Objects;
 *     kAEWaitReply waits for the reply up to the time-out (errAETimeout),
 *     kAEQueueReply returns at once with a null reply and the reply comes later
 *     as an 'aevt'/'ansr' event dispatched on this process's main run loop,
 *     kAENoReply sends nothing back; procNotFound when the process is gone,
 *     connectionInvalid when it has published no port;
 *   - the system process {0, kSystemProcess}: restart, shut down, log out and
 *     sleep go to the login manager (systemd-logind) on the system D-Bus
 *     (DBUS_SYSTEM_BUS_ADDRESS names another bus); other events answer
 *     errAEEventNotHandled.
 * A handler's non-zero result comes back from AESend and as the reply's
 * 'errn' parameter.  Sending and installing are for one thread at a time. */
#ifndef CORESERVICES_APPLEEVENTS_H
#define CORESERVICES_APPLEEVENTS_H

#include <CoreServices/AEDataModel.h>
#include <MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef void *SRefCon;

typedef SInt32 AESendMode;
enum {
    kAENoReply = 0x00000001,
    kAEQueueReply = 0x00000002,
    kAEWaitReply = 0x00000003,
    kAEDontReconnect = 0x00000080,
    kAEWantReceipt = 0x00000200,
    kAENeverInteract = 0x00000010,
    kAECanInteract = 0x00000020,
    kAEAlwaysInteract = 0x00000030,
    kAECanSwitchLayer = 0x00000040,
    kAEDontRecord = 0x00001000,
    kAEDontExecute = 0x00002000,
    kAEProcessNonReplyEvents = 0x00008000
};

typedef SInt16 AESendPriority;
enum { kAENormalPriority = 0, kAEHighPriority = 1 };

/* Time-outs in ticks (1/60 s). */
enum { kAEDefaultTimeout = -1, kNoTimeOut = -2 };

/* Event classes and ids. */
enum {
    kCoreEventClass = 0x61657674,       /* 'aevt' */
    kAEOpenApplication = 0x6F617070,    /* 'oapp' */
    kAEReopenApplication = 0x72617070,  /* 'rapp' */
    kAEOpenDocuments = 0x6F646F63,      /* 'odoc' */
    kAEPrintDocuments = 0x70646F63,     /* 'pdoc' */
    kAEOpenContents = 0x6F636F6E,       /* 'ocon' */
    kAEQuitApplication = 0x71756974,    /* 'quit' */
    kAEAnswer = 0x616E7372,             /* 'ansr' */
    kAEApplicationDied = 0x6F626974,    /* 'obit' */
    kAERestart = 0x72657374,            /* 'rest' */
    kAEShutDown = 0x73687574,           /* 'shut' */
    kAESleep = 0x736C6570,              /* 'slep' */
    kAELogOut = 0x6C6F676F,             /* 'logo' */
    kAEReallyLogOut = 0x726C676F,       /* 'rlgo' */
    kAEShowRestartDialog = 0x72727374,  /* 'rrst' */
    kAEShowShutdownDialog = 0x7273646E  /* 'rsdn' */
};

typedef OSErr (*AEEventHandlerProcPtr)(const AppleEvent *theAppleEvent, AppleEvent *reply,
                                       SRefCon handlerRefcon);
typedef AEEventHandlerProcPtr AEEventHandlerUPP;

struct EventRecord;
struct OpaqueRgnHandle;
typedef Boolean (*AEIdleProcPtr)(struct EventRecord *theEvent, SInt32 *sleepTime,
                                 struct OpaqueRgnHandle **mouseRgn);
typedef AEIdleProcPtr AEIdleUPP;
typedef Boolean (*AEFilterProcPtr)(struct EventRecord *theEvent, SInt32 returnID,
                                   SInt32 transactionID, const AEAddressDesc *sender);
typedef AEFilterProcPtr AEFilterUPP;

/* A universal procedure pointer is the function itself here. */
AEEventHandlerUPP NewAEEventHandlerUPP(AEEventHandlerProcPtr userRoutine);
void DisposeAEEventHandlerUPP(AEEventHandlerUPP userUPP);
OSErr InvokeAEEventHandlerUPP(const AppleEvent *theAppleEvent, AppleEvent *reply,
                              SRefCon handlerRefcon, AEEventHandlerUPP userUPP);

/* Installs (replacing the handler of the same class and id) or removes a
 * handler.  paramErr for a NULL handler; errAEHandlerNotFound when removing or
 * getting a handler that is not installed (removing also needs the same
 * function). */
OSErr AEInstallEventHandler(AEEventClass theAEEventClass, AEEventID theAEEventID,
                            AEEventHandlerUPP handler, SRefCon handlerRefcon, Boolean isSysHandler);
OSErr AERemoveEventHandler(AEEventClass theAEEventClass, AEEventID theAEEventID,
                           AEEventHandlerUPP handler, Boolean isSysHandler);
OSErr AEGetEventHandler(AEEventClass theAEEventClass, AEEventID theAEEventID,
                        AEEventHandlerUPP *handler, SRefCon *handlerRefcon, Boolean isSysHandler);

/* Sends the event as described above.  The reply (may be NULL for
 * kAENoReply) is always set, to a null descriptor when there is none; the
 * caller disposes it.  The idle and filter functions are not called. */
OSErr AESend(const AppleEvent *theAppleEvent, AppleEvent *reply, AESendMode sendMode,
             AESendPriority sendPriority, SInt32 timeOutInTicks, AEIdleUPP idleProc,
             AEFilterUPP filterProc);

#ifdef __cplusplus
}
#endif

#endif
