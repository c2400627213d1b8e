/* Round trips to a second process: AESend with kAEWaitReply and a text
 * parameter, against a plain NSConnection proxy call with an NSString, which
 * is what a GNUstep developer would write by hand.  Both go over
 * NSMessagePort.  The program starts itself again as the second process
 * ("--serve"), which answers both ways; each side runs 10 000 round trips
 * (after 200 to warm up) and the ratio AESend / NSConnection is printed. */
#import <Foundation/Foundation.h>

#include <CoreServices/AppleEvents.h>
#include <CoreServices/MacErrors.h>
#include <ApplicationServices/Processes.h>

#include <signal.h>
#include <spawn.h>
#include <stdio.h>
#include <string.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

extern char **environ;

enum { kBenchClass = 0x4B4F5255, kBenchEcho = 0x6563686F, kRoundTrips = 10000, kWarmUp = 200 };

@protocol BenchEcho
- (bycopy NSString *)echo:(bycopy NSString *)text;
@end

@interface BenchEcho : NSObject <BenchEcho>
@end

@implementation BenchEcho
- (bycopy NSString *)echo:(bycopy NSString *)text
{
    return text;
}
@end

static NSString *PlainName(pid_t pid)
{
    return [NSString stringWithFormat:@"KORU-bench-%ld", (long)pid];
}

static OSErr Echo(const AppleEvent *event, AppleEvent *reply, SRefCon refcon)
{
    (void)refcon;
    AEDesc text;
    OSErr err = AEGetParamDesc(event, keyDirectObject, typeUTF8Text, &text);
    if (err == noErr)
        err = AEPutParamDesc(reply, keyDirectObject, &text);
    AEDisposeDesc(&text);
    return err;
}

static int Serve(void)
{
    AEInstallEventHandler(kBenchClass, kBenchEcho, NewAEEventHandlerUPP(Echo), NULL, false);
    NSPort *port = [NSMessagePort port];
    [[NSMessagePortNameServer sharedInstance] registerPort:port forName:PlainName(getpid())];
    NSConnection *plain = [[NSConnection alloc] initWithReceivePort:port sendPort:nil];
    BenchEcho *echo = [[BenchEcho new] autorelease];
    [plain setRootObject:echo];
    [plain addRunLoop:[NSRunLoop mainRunLoop]];
    for (;;) {
        NSAutoreleasePool *pool = [NSAutoreleasePool new];
        [[NSRunLoop mainRunLoop] runMode:NSDefaultRunLoopMode beforeDate:[NSDate distantFuture]];
        [pool drain];
    }
    return 0;
}

static double Now(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec + now.tv_nsec / 1e9;
}

static BOOL AppleEventRoundTrips(pid_t server, int count)
{
    ProcessSerialNumber psn = {0, (UInt32)server};
    AEAddressDesc target;
    AECreateDesc(typeProcessSerialNumber, &psn, sizeof psn, &target);
    BOOL ok = YES;
    for (int i = 0; i < count && ok; ++i) {
        AppleEvent event, reply;
        AECreateAppleEvent(kBenchClass, kBenchEcho, &target, kAutoGenerateReturnID, kAnyTransactionID, &event);
        AEPutParamPtr(&event, keyDirectObject, typeUTF8Text, "hello, second process", 21);
        ok = AESend(&event, &reply, kAEWaitReply, kAENormalPriority, 60 * 60, NULL, NULL) == noErr &&
             AESizeOfParam(&reply, keyDirectObject, NULL, NULL) == noErr;
        AEDisposeDesc(&reply);
        AEDisposeDesc(&event);
    }
    AEDisposeDesc(&target);
    return ok;
}

static BOOL PlainRoundTrips(id proxy, int count)
{
    BOOL ok = YES;
    for (int i = 0; i < count && ok; ++i) {
        NSAutoreleasePool *pool = [NSAutoreleasePool new];
        ok = [[proxy echo:@"hello, second process"] length] == 21;
        [pool drain];
    }
    return ok;
}

int main(int argc, char **argv)
{
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    if (argc > 1 && strcmp(argv[1], "--serve") == 0)
        return Serve();

    char *serveArgs[] = {argv[0], "--serve", NULL};
    pid_t server = 0;
    if (posix_spawn(&server, "/proc/self/exe", NULL, NULL, serveArgs, environ) != 0) {
        fprintf(stderr, "cannot start the second process\n");
        return 1;
    }
    id proxy = nil;
    for (int tries = 0; proxy == nil && tries < 200; ++tries) {
        usleep(50000);
        NSPort *port = [[NSMessagePortNameServer sharedInstance] portForName:PlainName(server)];
        if (port != nil) {
            NSConnection *connection = [NSConnection connectionWithReceivePort:[NSMessagePort port] sendPort:port];
            proxy = [connection rootProxy];
            [proxy setProtocolForProxy:@protocol(BenchEcho)];
        }
    }
    int status = 1;
    if (proxy != nil && AppleEventRoundTrips(server, kWarmUp) && PlainRoundTrips(proxy, kWarmUp)) {
        double start = Now();
        BOOL eventsOk = AppleEventRoundTrips(server, kRoundTrips);
        double events = Now() - start;
        start = Now();
        BOOL plainOk = PlainRoundTrips(proxy, kRoundTrips);
        double plain = Now() - start;
        if (eventsOk && plainOk) {
            printf("%d round trips with a text parameter to a second process\n", kRoundTrips);
            printf("  AESend (kAEWaitReply):   %8.3f s  (%6.1f us per trip)\n", events, events * 1e6 / kRoundTrips);
            printf("  NSConnection proxy call: %8.3f s  (%6.1f us per trip)\n", plain, plain * 1e6 / kRoundTrips);
            printf("  ratio AESend / NSConnection: %.2fx (goal <= 1.5x)\n", events / plain);
            status = 0;
        }
    }
    if (status != 0)
        fprintf(stderr, "the round trips failed\n");
    [[proxy connectionForProxy] invalidate];
    kill(server, SIGTERM);
    waitpid(server, NULL, 0);
    [pool drain];
    return status;
}
