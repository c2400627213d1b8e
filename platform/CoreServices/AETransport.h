/* Carrying flattened Apple events between processes over GNUstep
 * Distributed Objects (AETransport.m), and the way back into the dispatcher
 * (AppleEvents.cpp).  Plain C, so that the C++ side never sees Foundation. */
#ifndef KORU_PLATFORM_AETRANSPORT_H
#define KORU_PLATFORM_AETRANSPORT_H

#include <MacTypes.h>

#include <stddef.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Publishes this process's event port on the main run loop, once; noErr when
 * it is (or already was) published. */
OSErr KORUAEPublishPort(void);

/* Sends a flattened event to the process.  With kAEWaitReply the call waits
 * up to timeoutSeconds and hands back the flattened reply in *reply (malloc'd,
 * the caller frees) and the handler's status as the result; with the other
 * modes the event is posted and noErr answers at once, and with kAEQueueReply
 * the answer comes back later as an event on the run loop of the sending
 * thread (while that thread lives).  procNotFound, connectionInvalid or
 * errAETimeout when the transport fails. */
OSErr KORUAESendFlattened(pid_t pid, const void *event, size_t size, SInt32 replyMode,
                          double timeoutSeconds, void **reply, size_t *replySize);

/* Hands a flattened event to this process's own main run loop, which
 * dispatches it (without a reply) the next time it runs.  The data is copied. */
OSErr KORUAEPostToSelf(const void *event, size_t size);

/* Implemented by the dispatcher: handles a flattened event that arrived in
 * the given reply mode.  For kAEWaitReply *reply receives the flattened reply
 * (malloc'd); for kAEQueueReply the flattened 'aevt'/'ansr' event addressed to
 * the sender, which the transport sends back.  The result is the handler's
 * status. */
OSErr KORUAEReceiveFlattened(const void *event, size_t size, SInt32 replyMode, void **reply,
                             size_t *replySize);

#ifdef __cplusplus
}
#endif

#endif
