/* Apple events between processes over GNUstep Distributed Objects.
 *
 * Each process that receives events vends one object on an NSMessagePort
 * registered as "KORU-AE-<pid>" with the message port name server; senders
 * look the name up and talk to the object through a proxy.  The flattened
 * event travels as NSData; a synchronous call carries the reply back, a
 * one-way call is used when the sender does not wait.  Proxies of other
 * processes are kept per pid and dropped when their connection fails.
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
#include <signal.h>
#include <stdlib.h>
#include <string.h>
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
static NSMutableDictionary *gProxies = nil; /* pid -> root proxy of that process */
static KORUAEReceiver *gReceiver = nil;

/* This process's receiver: the root object of its published port, and what
 * its queued events name as the place for their answers. */
static KORUAEReceiver *Receiver(void)
{
    if (gReceiver == nil)
        gReceiver = [KORUAEReceiver new];
    return gReceiver;
}

OSErr KORUAEPublishPort(void)
{
    if (gServer != nil)
        return noErr;
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
    return err;
}

/* The root proxy of the process, fetched once per connection: every fetch
 * is a request the process must answer from its run loop, which a one-way
 * send should not have to wait for. */
static id ProxyOf(pid_t pid, double timeoutSeconds, OSErr *err)
{
    NSNumber *key = [NSNumber numberWithInt:pid];
    id proxy = [gProxies objectForKey:key];
    if (proxy != nil && [[proxy connectionForProxy] isValid])
        return proxy;
    if (proxy != nil)
        [gProxies removeObjectForKey:key];
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
    // Answers to queued events arrive on this connection, in the modes in
    // which the published port hears events.
    [connection addRequestMode:@"NSModalPanelRunLoopMode"];
    [connection setRequestTimeout:timeoutSeconds];
    [connection setReplyTimeout:timeoutSeconds];
    proxy = [connection rootProxy];
    if (proxy == nil) {
        *err = connectionInvalid;
        return nil;
    }
    [proxy setProtocolForProxy:@protocol(KORUAEReceiving)];
    if (gProxies == nil)
        gProxies = [NSMutableDictionary new];
    [gProxies setObject:proxy forKey:key];
    return proxy;
}

OSErr KORUAESendFlattened(pid_t pid, const void *event, size_t size, SInt32 replyMode,
                          double timeoutSeconds, void **reply, size_t *replySize)
{
    if (reply != NULL)
        *reply = NULL;
    if (replySize != NULL)
        *replySize = 0;
    if (pid <= 0 || (kill(pid, 0) != 0 && errno == ESRCH))
        return procNotFound;
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    OSErr err = noErr;
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
        if (kill(pid, 0) != 0 && errno == ESRCH)
            err = procNotFound;
        [gProxies removeObjectForKey:[NSNumber numberWithInt:pid]];
    }
    [pool drain];
    return err;
}
