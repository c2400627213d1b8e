// The application's dispatch table and AESend: events for this process are
// dispatched here, events for others travel flattened (AETransport.m), events
// for the system process go to the login manager (AESystemProcess.cpp).
#include <CoreServices/AppleEvents.h>
#include <CoreServices/MacErrors.h>
#include <ApplicationServices/Processes.h>

#include "AEStorage.h"
#include "AESystemProcess.h"
#include "AETransport.h"

#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

struct Handler {
    AEEventHandlerUPP function;
    SRefCon refcon;
};

using HandlerKey = std::pair<AEEventClass, AEEventID>;
using HandlerTable = std::map<HandlerKey, Handler>;

std::mutex gTableLock;

HandlerTable &Table(Boolean isSysHandler)
{
    static HandlerTable application;
    static HandlerTable system;
    return isSysHandler ? system : application;
}

// The handler for the event: an exact match first, then the wildcards.
bool FindHandler(AEEventClass eventClass, AEEventID eventID, Handler *handler)
{
    std::lock_guard<std::mutex> hold(gTableLock);
    const HandlerTable &table = Table(false);
    for (const HandlerKey &key : {HandlerKey{eventClass, eventID}, HandlerKey{eventClass, typeWildCard},
                                  HandlerKey{typeWildCard, eventID}, HandlerKey{typeWildCard, typeWildCard}}) {
        auto found = table.find(key);
        if (found != table.end()) {
            *handler = found->second;
            return true;
        }
    }
    return false;
}

OSType AttributeCode(const AppleEvent *event, AEKeyword key)
{
    OSType code = 0;
    if (AEGetAttributePtr(event, key, typeType, nullptr, &code, sizeof code, nullptr) != noErr)
        return 0;
    return code;
}

// The reply an event gets: an 'aevt'/'ansr' event with the same return id.
OSErr MakeReply(const AppleEvent *event, AppleEvent *reply)
{
    AEReturnID returnID = 0;
    AEGetAttributePtr(event, keyReturnIDAttr, typeSInt16, nullptr, &returnID, sizeof returnID, nullptr);
    AETransactionID transactionID = 0;
    AEGetAttributePtr(event, keyTransactionIDAttr, typeSInt32, nullptr, &transactionID, sizeof transactionID,
                      nullptr);
    return AECreateAppleEvent(kCoreEventClass, kAEAnswer, nullptr, returnID, transactionID, reply);
}

OSErr Dispatch(const AppleEvent *event, AppleEvent *reply)
{
    Handler handler{};
    if (!FindHandler(AttributeCode(event, keyEventClassAttr), AttributeCode(event, keyEventIDAttr), &handler))
        return errAEEventNotHandled;
    return handler.function(event, reply, handler.refcon);
}

// Dispatches an event with a fresh reply event; a failure the handler did not
// describe itself is recorded as the reply's 'errn'.
OSErr DispatchWithReply(const AppleEvent *event, AppleEvent *reply)
{
    OSErr err = MakeReply(event, reply);
    if (err != noErr)
        return err;
    err = Dispatch(event, reply);
    if (err != noErr) {
        Size size = 0;
        if (AESizeOfParam(reply, keyErrorNumber, nullptr, &size) != noErr) {
            SInt32 number = err;
            AEPutParamPtr(reply, keyErrorNumber, typeSInt32, &number, sizeof number);
        }
    }
    return err;
}

enum class Destination { current, other, system, unknown };

Destination Target(const AppleEvent *event, pid_t *pid)
{
    AEDesc address;
    if (AEGetAttributeDesc(event, keyAddressAttr, typeWildCard, &address) != noErr)
        return Destination::unknown;
    Destination destination = Destination::unknown;
    if (address.descriptorType == typeProcessSerialNumber) {
        ProcessSerialNumber psn{};
        if (AEGetDescDataSize(&address) == sizeof psn) {
            AEGetDescData(&address, &psn, sizeof psn);
            if (psn.highLongOfPSN == 0 && psn.lowLongOfPSN == kSystemProcess)
                destination = Destination::system;
            else if (psn.highLongOfPSN == 0 && psn.lowLongOfPSN == kCurrentProcess)
                destination = Destination::current;
            else if (psn.highLongOfPSN == 0 && psn.lowLongOfPSN > kCurrentProcess)
                destination = Destination::other, *pid = static_cast<pid_t>(psn.lowLongOfPSN);
        }
    } else if (address.descriptorType == typeKernelProcessID && AEGetDescDataSize(&address) == sizeof(pid_t)) {
        AEGetDescData(&address, pid, sizeof *pid);
        destination = *pid > 0 ? Destination::other : Destination::unknown;
    }
    AEDisposeDesc(&address);
    if (destination == Destination::other && *pid == getpid())
        destination = Destination::current;
    return destination;
}

double TimeoutSeconds(SInt32 ticks)
{
    if (ticks == kNoTimeOut)
        return 1.0e7;
    if (ticks <= 0)
        return 60.0; // the default: about a minute, as on the Mac
    return ticks / 60.0;
}

OSErr SendToOther(pid_t pid, const AppleEvent *event, AppleEvent *reply, SInt32 mode, SInt32 timeout)
{
    AppleEvent stamped;
    OSErr err = AEDuplicateDesc(event, &stamped);
    if (err != noErr)
        return err;
    const pid_t self = getpid();
    AEPutAttributePtr(&stamped, keySenderPIDAttr, typeKernelProcessID, &self, sizeof self);
    std::vector<unsigned char> flat;
    try {
        flat = koru::ae::Flatten(stamped);
    } catch (...) {
        err = memFullErr;
    }
    AEDisposeDesc(&stamped);
    if (err != noErr)
        return err;
    void *answer = nullptr;
    size_t answerSize = 0;
    err = KORUAESendFlattened(pid, flat.data(), flat.size(), mode, TimeoutSeconds(timeout), &answer, &answerSize);
    if (answer != nullptr) {
        if (reply != nullptr && mode == kAEWaitReply)
            koru::ae::Unflatten(answer, answerSize, reply);
        std::free(answer);
    }
    return err;
}

// Queues an event for this process's run loop, as a queued reply is.
void PostToSelf(const AppleEvent &event)
{
    try {
        const std::vector<unsigned char> flat = koru::ae::Flatten(event);
        KORUAEPostToSelf(flat.data(), flat.size());
    } catch (...) {
        // Without memory the reply is lost, as a reply to a process that quit is.
    }
}

} // namespace

extern "C" AEEventHandlerUPP NewAEEventHandlerUPP(AEEventHandlerProcPtr userRoutine)
{
    return userRoutine;
}

extern "C" void DisposeAEEventHandlerUPP(AEEventHandlerUPP) {}

extern "C" OSErr InvokeAEEventHandlerUPP(const AppleEvent *theAppleEvent, AppleEvent *reply,
                                         SRefCon handlerRefcon, AEEventHandlerUPP userUPP)
{
    if (userUPP == nullptr)
        return paramErr;
    return userUPP(theAppleEvent, reply, handlerRefcon);
}

extern "C" OSErr AEInstallEventHandler(AEEventClass theAEEventClass, AEEventID theAEEventID,
                                       AEEventHandlerUPP handler, SRefCon handlerRefcon, Boolean isSysHandler)
{
    if (handler == nullptr)
        return paramErr;
    try {
        std::lock_guard<std::mutex> hold(gTableLock);
        Table(isSysHandler)[{theAEEventClass, theAEEventID}] = Handler{handler, handlerRefcon};
    } catch (...) {
        return memFullErr;
    }
    // Other processes can reach the handler once the port is published; a
    // process that cannot publish still dispatches its own events.
    if (!isSysHandler)
        KORUAEPublishPort();
    return noErr;
}

extern "C" OSErr AERemoveEventHandler(AEEventClass theAEEventClass, AEEventID theAEEventID,
                                      AEEventHandlerUPP handler, Boolean isSysHandler)
{
    std::lock_guard<std::mutex> hold(gTableLock);
    HandlerTable &table = Table(isSysHandler);
    auto found = table.find({theAEEventClass, theAEEventID});
    if (found == table.end() || (handler != nullptr && found->second.function != handler))
        return errAEHandlerNotFound;
    table.erase(found);
    return noErr;
}

extern "C" OSErr AEGetEventHandler(AEEventClass theAEEventClass, AEEventID theAEEventID,
                                   AEEventHandlerUPP *handler, SRefCon *handlerRefcon, Boolean isSysHandler)
{
    if (handler != nullptr)
        *handler = nullptr;
    if (handlerRefcon != nullptr)
        *handlerRefcon = nullptr;
    std::lock_guard<std::mutex> hold(gTableLock);
    const HandlerTable &table = Table(isSysHandler);
    auto found = table.find({theAEEventClass, theAEEventID});
    if (found == table.end())
        return errAEHandlerNotFound;
    if (handler != nullptr)
        *handler = found->second.function;
    if (handlerRefcon != nullptr)
        *handlerRefcon = found->second.refcon;
    return noErr;
}

extern "C" OSErr AESend(const AppleEvent *theAppleEvent, AppleEvent *reply, AESendMode sendMode,
                        AESendPriority, SInt32 timeOutInTicks, AEIdleUPP, AEFilterUPP)
{
    if (reply != nullptr)
        AEInitializeDesc(reply);
    if (theAppleEvent == nullptr)
        return paramErr;
    if (theAppleEvent->descriptorType != typeAppleEvent || theAppleEvent->dataHandle == nullptr ||
        theAppleEvent->dataHandle->kind != koru::ae::Kind::event)
        return errAENotAppleEvent;
    const SInt32 mode = sendMode & kAEWaitReply;
    if (mode == 0)
        return errAEUnknownSendMode;
    pid_t pid = 0;
    switch (Target(theAppleEvent, &pid)) {
    case Destination::current: {
        AppleEvent answer;
        OSErr err = DispatchWithReply(theAppleEvent, &answer);
        if (reply != nullptr && mode == kAEWaitReply) {
            *reply = answer;
            return err;
        }
        if (mode == kAEQueueReply)
            PostToSelf(answer); // the reply comes later, as an event of its own
        AEDisposeDesc(&answer);
        return err;
    }
    case Destination::other:
        return SendToOther(pid, theAppleEvent, mode == kAENoReply ? nullptr : reply, mode, timeOutInTicks);
    case Destination::system:
        return koru::ae::SendToLoginManager(AttributeCode(theAppleEvent, keyEventClassAttr),
                                            AttributeCode(theAppleEvent, keyEventIDAttr), mode == kAEWaitReply);
    case Destination::unknown:
        break;
    }
    return procNotFound;
}

extern "C" OSErr KORUAEReceiveFlattened(const void *event, size_t size, SInt32 replyMode, void **reply,
                                        size_t *replySize)
{
    if (reply != nullptr)
        *reply = nullptr;
    if (replySize != nullptr)
        *replySize = 0;
    AppleEvent received;
    OSErr err = koru::ae::Unflatten(event, size, &received);
    if (err != noErr)
        return err;
    if (received.descriptorType != typeAppleEvent || received.dataHandle->kind != koru::ae::Kind::event) {
        AEDisposeDesc(&received);
        return errAENotAppleEvent;
    }
    AppleEvent answer;
    err = DispatchWithReply(&received, &answer);
    try {
        if (replyMode != kAENoReply && reply != nullptr && replySize != nullptr) {
            // A queued reply is an event of its own, addressed to the sender;
            // the transport carries it back.
            pid_t sender = 0;
            if (replyMode == kAEQueueReply &&
                AEGetAttributePtr(&received, keySenderPIDAttr, typeKernelProcessID, nullptr, &sender, sizeof sender,
                                  nullptr) == noErr)
                AEPutAttributePtr(&answer, keyAddressAttr, typeKernelProcessID, &sender, sizeof sender);
            std::vector<unsigned char> flat = koru::ae::Flatten(answer);
            *reply = std::malloc(flat.size());
            if (*reply != nullptr) {
                std::memcpy(*reply, flat.data(), flat.size());
                *replySize = flat.size();
            }
        }
    } catch (...) {
        err = memFullErr;
    }
    AEDisposeDesc(&answer);
    AEDisposeDesc(&received);
    return err;
}
