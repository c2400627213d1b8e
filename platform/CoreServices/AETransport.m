/* Apple events between processes over GNUstep Distributed Objects.
 *
 * Each process that receives events vends one object on an NSMessagePort
 * registered as "KORU-AE-<pid>" with the message port name server; senders
 * look the name up and talk to the object through a proxy.  The flattened
 * event travels as NSData; a synchronous call carries the reply back, a
 * one-way call is used when the sender does not wait.  Connections to other
 * processes are kept per pid and dropped when they fail. */
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
- (oneway void)postEvent:(bycopy NSData *)event mode:(int)mode;
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

- (oneway void)postEvent:(bycopy NSData *)event mode:(int)mode
{
    KORUAEReceiveFlattened([event bytes], [event length], mode, NULL, NULL);
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
static NSMutableDictionary *gConnections = nil;

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
            KORUAEReceiver *receiver = [KORUAEReceiver new];
            [server setRootObject:receiver];
            [receiver release];
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

static NSConnection *ConnectionTo(pid_t pid, OSErr *err)
{
    NSNumber *key = [NSNumber numberWithInt:pid];
    NSConnection *connection = [gConnections objectForKey:key];
    if (connection != nil && [connection isValid])
        return connection;
    if (connection != nil)
        [gConnections removeObjectForKey:key];
    NSPort *sendPort = [[NSMessagePortNameServer sharedInstance] portForName:PortName(pid)];
    if (sendPort == nil) {
        *err = connectionInvalid;
        return nil;
    }
    connection = [NSConnection connectionWithReceivePort:[NSMessagePort port] sendPort:sendPort];
    if (connection == nil) {
        *err = connectionInvalid;
        return nil;
    }
    if (gConnections == nil)
        gConnections = [NSMutableDictionary new];
    [gConnections setObject:connection forKey:key];
    return connection;
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
    NSConnection *connection = nil;
    @try {
        connection = ConnectionTo(pid, &err);
        if (connection != nil) {
            [connection setRequestTimeout:timeoutSeconds];
            [connection setReplyTimeout:timeoutSeconds];
            id proxy = [connection rootProxy];
            [proxy setProtocolForProxy:@protocol(KORUAEReceiving)];
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
                [proxy postEvent:data mode:(int)replyMode];
            }
        }
    } @catch (NSException *exception) {
        NSString *name = [exception name];
        err = [name isEqualToString:NSPortTimeoutException] ? errAETimeout : connectionInvalid;
        if (kill(pid, 0) != 0 && errno == ESRCH)
            err = procNotFound;
        [gConnections removeObjectForKey:[NSNumber numberWithInt:pid]];
    }
    [pool drain];
    return err;
}
