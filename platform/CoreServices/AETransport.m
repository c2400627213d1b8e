/* Apple events between processes over GNUstep Distributed Objects.
 *
 * Each process that receives events vends one object on an NSMessagePort
 * registered as "KORU-AE-<pid>" with the message port name server; senders
 * look the name up and talk to the object through a proxy.  The flattened
 * event travels as NSData; a synchronous call carries the reply back, a
 * one-way call is used when the sender does not wait.  Each thread keeps its
 * own link to each process it sends to (the connection it opened and the
 * root proxy fetched over it), in its thread dictionary: a connection
 * belongs to the run loop of the thread that made it.  A link is dropped,
 * and its connection invalidated, when a send over it fails, when its
 * process has ended (even when the pid belongs to another by now), and when
 * the thread ends.
 *
 * A queued event carries a proxy of the sender's own receiver, and its answer
 * goes back through that proxy as a one-way call over the connection the
 * sender opened.  The target never looks the sender up: fetching a root
 * proxy is a request that only the other side's run loop can answer, and a
 * sender need not run its loop until it wants its answers, so the target
 * would sit in the request, deaf to every other event, until it timed out. */
#import <Foundation/Foundation.h>

#include <CoreServices/AppleEvents.h>
#include <CoreServices/MacErrors.h>

#include "AETransport.h"

#include <errno.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/pidfd.h>
#include <unistd.h>

@protocol KORUAEReceiving
- (bycopy NSData *)handleEvent:(bycopy NSData *)event;
/* sender: where the answer to a queued event goes; nil for the other modes. */
- (oneway void)postEvent:(bycopy NSData *)event mode:(int)mode replyTo:(id<KORUAEReceiving>)sender;
@end

@interface KORUAEReceiver : NSObject <KORUAEReceiving>
@end

@implementation KORUAEReceiver

/* The answer is the handler's status (four bytes, big-endian) followed by
 * the flattened reply. */
- (bycopy NSData *)handleEvent:(bycopy NSData *)event
{
    void *flat = NULL;
    size_t size = 0;
    OSErr err = KORUAEReceiveFlattened([event bytes], [event length], kAEWaitReply, &flat, &size);
    NSMutableData *answer = [NSMutableData dataWithCapacity:4 + size];
    UInt32 status = NSSwapHostIntToBig((UInt32)(SInt32)err);
    [answer appendBytes:&status length:4];
    if (flat != NULL)
        [answer appendBytes:flat length:size];
    free(flat);
    return answer;
}

- (oneway void)postEvent:(bycopy NSData *)event mode:(int)mode replyTo:(id<KORUAEReceiving>)sender
{
    void *answer = NULL;
    size_t size = 0;
    KORUAEReceiveFlattened([event bytes], [event length], mode, mode == kAEQueueReply ? &answer : NULL, &size);
    if (answer != NULL && sender != nil) {
        @try {
            if ([(id)sender isProxy])
                [(NSDistantObject *)sender setProtocolForProxy:@protocol(KORUAEReceiving)];
            [sender postEvent:[NSData dataWithBytes:answer length:size] mode:kAENoReply replyTo:nil];
        } @catch (NSException *exception) {
            // The sender has gone: its answer is lost, as on the Mac.
        }
    }
    free(answer);
}

/* An event this process sent itself, delivered from the main run loop. */
+ (void)deliverEvent:(NSData *)event
{
    KORUAEReceiveFlattened([event bytes], [event length], kAENoReply, NULL, NULL);
}

@end

OSErr KORUAEPostToSelf(const void *event, size_t size)
{
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    OSErr err = noErr;
    @try {
        NSData *data = [NSData dataWithBytes:event length:size];
        NSArray *modes = [NSArray arrayWithObjects:NSDefaultRunLoopMode, @"NSModalPanelRunLoopMode", nil];
        [KORUAEReceiver performSelectorOnMainThread:@selector(deliverEvent:) withObject:data waitUntilDone:NO
                                              modes:modes];
    } @catch (NSException *exception) {
        err = memFullErr;
    }
    [pool drain];
    return err;
}

static NSString *PortName(pid_t pid)
{
    return [NSString stringWithFormat:@"KORU-AE-%ld", (long)pid];
}

static NSConnection *gServer = nil;
static pthread_mutex_t gServerLock = PTHREAD_MUTEX_INITIALIZER;
static KORUAEReceiver *gReceiver = nil;
static pthread_once_t gReceiverOnce = PTHREAD_ONCE_INIT;

static void MakeReceiver(void)
{
    gReceiver = [KORUAEReceiver new];
}

/* This process's receiver: the root object of its published port, and what
 * its queued events name as the place for their answers. */
static KORUAEReceiver *Receiver(void)
{
    pthread_once(&gReceiverOnce, MakeReceiver);
    return gReceiver;
}

OSErr KORUAEPublishPort(void)
{
    pthread_mutex_lock(&gServerLock);
    if (gServer != nil) {
        pthread_mutex_unlock(&gServerLock);
        return noErr;
    }
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    OSErr err = noErr;
    @try {
        NSMessagePort *port = (NSMessagePort *)[NSMessagePort port];
        NSString *name = PortName(getpid());
        NSMessagePortNameServer *names = [NSMessagePortNameServer sharedInstance];
        // A name left by an earlier process with our pid is stale.
        [names removePortForName:name];
        if (![names registerPort:port forName:name]) {
            err = connectionInvalid;
        } else {
            NSConnection *server = [[NSConnection alloc] initWithReceivePort:port sendPort:nil];
            [server setRootObject:Receiver()];
            NSRunLoop *loop = [NSRunLoop mainRunLoop];
            [server addRunLoop:loop];
            [server addRequestMode:@"NSModalPanelRunLoopMode"]; /* AppKit's modal mode */
            gServer = server;
        }
    } @catch (NSException *exception) {
        err = connectionInvalid;
    }
    [pool drain];
    pthread_mutex_unlock(&gServerLock);
    return err;
}

/* A descriptor of the process with this pid now, -1 when the system gives
 * none; it stays bound to that process when the pid is used again. */
static int OpenProcess(pid_t pid)
{
    return pidfd_open(pid, 0);
}

/* Whether the process of the descriptor has ended (reaped or not, which
 * kill(pid, 0) does not tell); NO when there is no descriptor. */
static BOOL HasEnded(int process)
{
    struct pollfd ended = {process, POLLIN, 0};
    return process >= 0 && poll(&ended, 1, 0) == 1;
}

/* Whether the pid belongs to no process, or to one that has ended. */
static BOOL IsGone(pid_t pid)
{
    if (kill(pid, 0) != 0 && errno == ESRCH)
        return YES;
    int process = OpenProcess(pid);
    BOOL gone = HasEnded(process);
    if (process >= 0)
        close(process);
    return gone;
}

/* One thread's link to another process. */
@interface KORUAELink : NSObject {
@public
    NSConnection *mConnection;
    id mProxy;
    int mProcess; /* OpenProcess of the pid when linked */
}
@end

@implementation KORUAELink

- (id)init
{
    self = [super init];
    if (self != nil)
        mProcess = -1;
    return self;
}

- (void)dealloc
{
    // Invalidating takes the connection's port out of the run loop and the
    // connection out of GNUstep's table, which otherwise keep both for good.
    // A pool of its own: an ending thread drops its links after its last.
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    [mConnection invalidate];
    [mConnection release];
    [mProxy release];
    [pool drain];
    if (mProcess >= 0)
        close(mProcess);
    [super dealloc];
}

@end

/* The calling thread's links, pid -> KORUAELink; released with the thread. */
static NSMutableDictionary *Links(void)
{
    NSMutableDictionary *thread = [[NSThread currentThread] threadDictionary];
    NSMutableDictionary *links = [thread objectForKey:@"KORUAELinks"];
    if (links == nil) {
        links = [NSMutableDictionary dictionary];
        [thread setObject:links forKey:@"KORUAELinks"];
    }
    return links;
}

/* The root proxy of the process, fetched once per connection: every fetch
 * is a request the process must answer from its run loop, which a one-way
 * send should not have to wait for. */
static id ProxyOf(pid_t pid, double timeoutSeconds, OSErr *err)
{
    NSMutableDictionary *links = Links();
    NSNumber *key = [NSNumber numberWithInt:pid];
    KORUAELink *link = [links objectForKey:key];
    // Not the link of a process that has ended, perhaps with its pid given to
    // another since.
    if (link != nil && !HasEnded(link->mProcess) && [link->mConnection isValid])
        return link->mProxy;
    if (link != nil)
        [links removeObjectForKey:key];
    if (IsGone(pid)) {
        *err = procNotFound;
        return nil;
    }
    NSPort *sendPort = [[NSMessagePortNameServer sharedInstance] portForName:PortName(pid)];
    if (sendPort == nil) {
        *err = connectionInvalid;
        return nil;
    }
    NSConnection *connection = [NSConnection connectionWithReceivePort:[NSMessagePort port] sendPort:sendPort];
    if (connection == nil) {
        *err = connectionInvalid;
        return nil;
    }
    // From here on the link invalidates the connection when it goes, also
    // when fetching the proxy raises.
    link = [[KORUAELink new] autorelease];
    link->mConnection = [connection retain];
    link->mProcess = OpenProcess(pid);
    // Answers to queued events arrive on this connection, in the modes in
    // which the published port hears events.
    [connection addRequestMode:@"NSModalPanelRunLoopMode"];
    [connection setRequestTimeout:timeoutSeconds];
    [connection setReplyTimeout:timeoutSeconds];
    id proxy = [connection rootProxy];
    if (proxy == nil) {
        *err = connectionInvalid;
        return nil;
    }
    [proxy setProtocolForProxy:@protocol(KORUAEReceiving)];
    link->mProxy = [proxy retain];
    [links setObject:link forKey:key];
    return proxy;
}

OSErr KORUAESendFlattened(pid_t pid, const void *event, size_t size, SInt32 replyMode,
                          double timeoutSeconds, void **reply, size_t *replySize)
{
    if (reply != NULL)
        *reply = NULL;
    if (replySize != NULL)
        *replySize = 0;
    if (pid <= 0)
        return procNotFound;
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    NSNumber *key = [NSNumber numberWithInt:pid];
    OSErr err = noErr;
    if (kill(pid, 0) != 0 && errno == ESRCH) {
        [Links() removeObjectForKey:key];
        [pool drain];
        return procNotFound;
    }
    @try {
        id proxy = ProxyOf(pid, timeoutSeconds, &err);
        if (proxy != nil) {
            NSConnection *connection = [proxy connectionForProxy];
            [connection setRequestTimeout:timeoutSeconds];
            [connection setReplyTimeout:timeoutSeconds];
            NSData *data = [NSData dataWithBytes:event length:size];
            if (replyMode == kAEWaitReply) {
                NSData *answer = [proxy handleEvent:data];
                UInt32 status = 0;
                if (answer == nil || [answer length] < 4) {
                    err = connectionInvalid;
                } else {
                    memcpy(&status, [answer bytes], 4);
                    err = (OSErr)(SInt32)NSSwapBigIntToHost(status);
                    const size_t length = [answer length] - 4;
                    if (length > 0 && reply != NULL && replySize != NULL) {
                        *reply = malloc(length);
                        if (*reply == NULL) {
                            err = memFullErr;
                        } else {
                            memcpy(*reply, (const char *)[answer bytes] + 4, length);
                            *replySize = length;
                        }
                    }
                }
            } else {
                [proxy postEvent:data mode:(int)replyMode replyTo:replyMode == kAEQueueReply ? Receiver() : nil];
            }
        }
    } @catch (NSException *exception) {
        NSString *name = [exception name];
        err = [name isEqualToString:NSPortTimeoutException] ? errAETimeout : connectionInvalid;
        if (IsGone(pid))
            err = procNotFound;
        [Links() removeObjectForKey:key];
    }
    [pool drain];
    return err;
}
