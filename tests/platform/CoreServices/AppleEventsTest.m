/* Apple events between real processes, and to the system process through a
 * stand-in login manager on a private bus. */
#import "KTest.h"

#include <ApplicationServices/Processes.h>
#include <CoreServices/AppleEvents.h>
#include <CoreServices/MacErrors.h>

#include <pthread.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

enum { kTestClass = 0x4B4F5255, kEcho = 0x6563686F, kStop = 0x73746F70, kNone = 0x6E6F6E65, kHang = 0x68616E67 };

static NSString *MakeFolder(void)
{
    char pattern[] = "/tmp/koru-ae-XXXXXX";
    return [NSString stringWithUTF8String:mkdtemp(pattern)];
}

static void RemoveItem(NSString *path)
{
    [[NSFileManager defaultManager] removeItemAtPath:path error:NULL];
}

static pid_t Spawn(const char *path, char *const argv[])
{
    pid_t pid = 0;
    return posix_spawn(&pid, path, NULL, NULL, argv, environ) == 0 ? pid : 0;
}

static void Stop(pid_t pid)
{
    if (pid > 0) {
        kill(pid, SIGTERM);
        waitpid(pid, NULL, 0);
    }
}

static NSString *Contents(NSString *path)
{
    NSString *text = [NSString stringWithContentsOfFile:path encoding:NSUTF8StringEncoding error:NULL];
    return text != nil ? text : @"";
}

/* Runs the main run loop until the record holds the line (at most 30 s, so
 * that a broken peer fails the test instead of hanging it). */
static BOOL WaitForLine(NSString *record, NSString *line)
{
    NSDate *limit = [NSDate dateWithTimeIntervalSinceNow:30];
    while ([limit timeIntervalSinceNow] > 0) {
        if ([[Contents(record) componentsSeparatedByString:@"\n"] containsObject:line])
            return YES;
        [[NSRunLoop mainRunLoop] runMode:NSDefaultRunLoopMode
                              beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.05]];
    }
    return NO;
}

/* Starts the peer afresh with the record and waits for its "ready". */
static pid_t StartPeer(NSString *record)
{
    RemoveItem(record);
    char *args[] = {(char *)KORU_AE_PEER, (char *)[record fileSystemRepresentation], NULL};
    pid_t peer = Spawn(KORU_AE_PEER, args);
    return peer > 0 && WaitForLine(record, @"ready") ? peer : 0;
}

static OSErr MakeEvent(pid_t pid, AEEventID eventID, const char *text, AppleEvent *event)
{
    ProcessSerialNumber psn = {0, (UInt32)pid};
    AEAddressDesc target;
    AECreateDesc(typeProcessSerialNumber, &psn, sizeof psn, &target);
    OSErr err = AECreateAppleEvent(kTestClass, eventID, &target, kAutoGenerateReturnID, kAnyTransactionID, event);
    AEDisposeDesc(&target);
    if (err == noErr && text != NULL)
        err = AEPutParamPtr(event, keyDirectObject, typeChar, text, (Size)strlen(text));
    return err;
}

static NSString *DirectText(const AppleEvent *event)
{
    char text[256] = {0};
    if (AEGetParamPtr(event, keyDirectObject, typeUTF8Text, NULL, text, sizeof text - 1, NULL) != noErr)
        return nil;
    return [NSString stringWithUTF8String:text];
}

static AEReturnID ReturnIDOf(const AppleEvent *event)
{
    AEReturnID returnID = 0;
    AEGetAttributePtr(event, keyReturnIDAttr, typeSInt16, NULL, &returnID, sizeof returnID, NULL);
    return returnID;
}

static int gAnswers;
static AEReturnID gAnswerReturnID;
static NSString *gAnswerText;

static OSErr Answer(const AppleEvent *event, AppleEvent *reply, SRefCon refcon)
{
    (void)reply, (void)refcon;
    ++gAnswers;
    gAnswerReturnID = ReturnIDOf(event);
    [gAnswerText release];
    gAnswerText = [DirectText(event) retain];
    return noErr;
}

/* Runs the main run loop until an 'aevt'/'ansr' has come (at most 30 s):
 * whether it was the only one and answers the event and text given. */
static BOOL AnsweredOnce(AEReturnID returnID, NSString *text)
{
    NSDate *limit = [NSDate dateWithTimeIntervalSinceNow:30];
    while (gAnswers == 0 && [limit timeIntervalSinceNow] > 0)
        [[NSRunLoop mainRunLoop] runMode:NSDefaultRunLoopMode beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.05]];
    return gAnswers == 1 && gAnswerReturnID == returnID && [gAnswerText isEqual:text];
}

/* Sends an event of the test class to pid, text as its direct object when
 * given; the reply, when asked for, is the caller's to dispose of. */
static OSErr Send(pid_t pid, AEEventID eventID, const char *text, AESendMode mode, long timeout, AppleEvent *reply,
                  AEReturnID *returnID)
{
    AppleEvent event;
    OSErr err = MakeEvent(pid, eventID, text, &event);
    if (returnID != NULL)
        *returnID = ReturnIDOf(&event);
    if (err == noErr)
        err = AESend(&event, reply, mode, kAENormalPriority, timeout, NULL, NULL);
    AEDisposeDesc(&event);
    return err;
}

static OSErr SendEcho(pid_t pid, const char *text, AESendMode mode, NSString **answer)
{
    AppleEvent reply = {typeNull, NULL};
    OSErr err = Send(pid, kEcho, text, mode, 30 * 60, &reply, NULL);
    if (answer != NULL)
        *answer = err == noErr ? DirectText(&reply) : nil;
    AEDisposeDesc(&reply);
    return err;
}

KT_CASE(EventsReachASecondProcessInEveryReplyMode)
{
    NSString *folder = MakeFolder(), *record = [folder stringByAppendingPathComponent:@"record"];
    pid_t peer = StartPeer(record);
    KT_ASSERT(peer > 0);

    /* Waiting: the handler's effect and its reply (queued: the next case). */
    NSString *answer = nil;
    OSErr err = SendEcho(peer, "hello", kAEWaitReply, &answer);
    KT_EXPECT_MSG(err == noErr, @"%d", err);
    KT_EXPECT_EQUAL_OBJECTS(answer, @"HELLO");
    KT_EXPECT([Contents(record) rangeOfString:@"echo hello\n"].location != NSNotFound);

    /* No reply: the send returns a null reply and the handler still runs. */
    AppleEvent reply;
    KT_EXPECT(Send(peer, kEcho, "quiet", kAENoReply, kAEDefaultTimeout, &reply, NULL) == noErr);
    KT_EXPECT(reply.descriptorType == typeNull);
    KT_EXPECT(WaitForLine(record, @"echo quiet"));

    /* An event the peer has no handler for. */
    KT_EXPECT(Send(peer, kNone, NULL, kAEWaitReply, 30 * 60, &reply, NULL) == errAEEventNotHandled);
    SInt32 number = 0;
    KT_EXPECT(AEGetParamPtr(&reply, keyErrorNumber, typeSInt32, NULL, &number, sizeof number, NULL) == noErr);
    KT_EXPECT(number == errAEEventNotHandled);
    AEDisposeDesc(&reply);

    /* Once the peer has ended, it is not found. */
    KT_EXPECT(Send(peer, kStop, NULL, kAENoReply, kAEDefaultTimeout, NULL, NULL) == noErr);
    int status = 0;
    KT_EXPECT(waitpid(peer, &status, 0) == peer && WIFEXITED(status) && WEXITSTATUS(status) == 0);
    KT_EXPECT(Send(peer, kStop, NULL, kAEWaitReply, 60, &reply, NULL) == procNotFound);

    /* A handler that never answers: the wait ends with the time-out. */
    peer = StartPeer(record);
    KT_EXPECT(Send(peer, kHang, NULL, kAEWaitReply, 30, &reply, NULL) == errAETimeout);
    KT_EXPECT(reply.descriptorType == typeNull);
    Stop(peer);

    /* A live process that publishes no port. */
    char *sleepArgs[] = {"sleep", "60", NULL};
    pid_t sleeper = Spawn("/bin/sleep", sleepArgs);
    KT_EXPECT(Send(sleeper, kEcho, "anyone?", kAEWaitReply, 60, &reply, NULL) == connectionInvalid);
    Stop(sleeper);

    RemoveItem(folder);
}

/* A queued event's answer travels back without the target waiting for the
 * sender: the sender runs no run loop until the target is free again, and
 * the answer is there for it afterwards. */
KT_CASE(AQueuedReplyDoesNotWaitForTheSendersRunLoop)
{
    NSString *folder = MakeFolder(), *record = [folder stringByAppendingPathComponent:@"record"];
    pid_t peer = StartPeer(record);
    KT_ASSERT(peer > 0);
    gAnswers = 0;
    KT_EXPECT(AEInstallEventHandler(kCoreEventClass, kAEAnswer, NewAEEventHandlerUPP(Answer), NULL, false) == noErr);

    AppleEvent reply;
    AEReturnID returnID = 0;
    KT_EXPECT(Send(peer, kEcho, "unattended", kAEQueueReply, kAEDefaultTimeout, &reply, &returnID) == noErr);
    /* Polled without a run loop, for at most 30 s. */
    BOOL peerFree = NO;
    for (int i = 0; i < 600 && !peerFree; i++) {
        peerFree = [[Contents(record) componentsSeparatedByString:@"\n"] containsObject:@"done unattended"];
        if (!peerFree)
            usleep(50000);
    }
    KT_EXPECT_MSG(peerFree, @"%@", Contents(record));
    KT_EXPECT(gAnswers == 0);

    KT_EXPECT_MSG(AnsweredOnce(returnID, @"UNATTENDED"), @"%d answers, last %@", gAnswers, gAnswerText);
    AERemoveEventHandler(kCoreEventClass, kAEAnswer, Answer, false);
    Stop(peer);
    RemoveItem(folder);
}

static int gEchoes;

/* Answers the direct parameter upper-cased. */
static OSErr Echo(const AppleEvent *event, AppleEvent *reply, SRefCon refcon)
{
    (void)refcon;
    ++gEchoes;
    const char *text = [[DirectText(event) uppercaseString] UTF8String];
    return AEPutParamPtr(reply, keyDirectObject, typeUTF8Text, text, (Size)strlen(text));
}

KT_CASE(EventsToTheCurrentProcessKeepTheReplyModes)
{
    gEchoes = 0;
    gAnswers = 0;
    KT_EXPECT(AEInstallEventHandler(kTestClass, kEcho, NewAEEventHandlerUPP(Echo), NULL, false) == noErr);
    KT_EXPECT(AEInstallEventHandler(kCoreEventClass, kAEAnswer, NewAEEventHandlerUPP(Answer), NULL, false) == noErr);

    /* Waiting: handled inside the send, the reply filled in. */
    NSString *answer = nil;
    KT_EXPECT(SendEcho(getpid(), "now", kAEWaitReply, &answer) == noErr);
    KT_EXPECT(gEchoes == 1);
    KT_EXPECT_EQUAL_OBJECTS(answer, @"NOW");

    /* Queued: handled inside the send, a null reply at once, the answer
     * later as an 'aevt'/'ansr' event on the run loop. */
    AppleEvent reply;
    AEReturnID returnID = 0;
    KT_EXPECT(Send(getpid(), kEcho, "later", kAEQueueReply, kAEDefaultTimeout, &reply, &returnID) == noErr);
    KT_EXPECT(gEchoes == 2);
    KT_EXPECT(reply.descriptorType == typeNull && reply.dataHandle == NULL);
    KT_EXPECT(gAnswers == 0);
    KT_EXPECT_MSG(AnsweredOnce(returnID, @"LATER"), @"%d answers, last %@", gAnswers, gAnswerText);

    /* No reply: handled, nothing comes back. */
    KT_EXPECT(Send(getpid(), kEcho, "never", kAENoReply, kAEDefaultTimeout, &reply, NULL) == noErr);
    KT_EXPECT(gEchoes == 3);
    KT_EXPECT(reply.descriptorType == typeNull);
    [[NSRunLoop mainRunLoop] runMode:NSDefaultRunLoopMode beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.2]];
    KT_EXPECT(gAnswers == 1);

    AERemoveEventHandler(kCoreEventClass, kAEAnswer, Answer, false);
    AERemoveEventHandler(kTestClass, kEcho, Echo, false);
}

KT_CASE(SystemProcessEventsGoToTheLoginManager)
{
    NSString *folder = MakeFolder(), *record = [folder stringByAppendingPathComponent:@"record"];

    /* A private bus of our own; its address is the first line it prints. */
    NSTask *daemon = [[NSTask new] autorelease];
    NSPipe *pipe = [NSPipe pipe];
    [daemon setLaunchPath:@"/usr/bin/dbus-daemon"];
    [daemon setArguments:[NSArray arrayWithObjects:@"--session", @"--nofork", @"--print-address", nil]];
    [daemon setStandardOutput:pipe];
    [daemon launch];
    pid_t daemonPid = [daemon processIdentifier];
    NSMutableData *printed = [NSMutableData data];
    while ([printed length] == 0 || ((const char *)[printed bytes])[[printed length] - 1] != '\n') {
        NSData *more = [[pipe fileHandleForReading] availableData];
        if ([more length] == 0)
            break;
        [printed appendData:more];
    }
    NSString *address = [[[[NSString alloc] initWithData:printed encoding:NSUTF8StringEncoding] autorelease]
        stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]];
    KT_EXPECT([address length] > 0);

    char *standInArgs[] = {(char *)KORU_LOGIN_STAND_IN, (char *)[address UTF8String],
                           (char *)[record fileSystemRepresentation], NULL};
    pid_t standIn = Spawn(KORU_LOGIN_STAND_IN, standInArgs);
    KT_EXPECT(standIn > 0 && WaitForLine(record, @"ready"));
    setenv("DBUS_SYSTEM_BUS_ADDRESS", [address UTF8String], 1);

    ProcessSerialNumber system = {0, kSystemProcess};
    AEAddressDesc target;
    AECreateDesc(typeProcessSerialNumber, &system, sizeof system, &target);
    struct { AEEventID eventID; AESendMode mode; NSString *line; } cases[] = {
        {kAERestart, kAENoReply, @"Reboot false"},
        {kAEShutDown, kAENoReply, @"PowerOff false"},
        {kAESleep, kAENoReply, @"Suspend false"},
        {kAEReallyLogOut, kAENoReply, @"TerminateSession <own session>"},
        {kAEShowRestartDialog, kAEWaitReply, @"Reboot true"},
    };
    for (size_t i = 0; i < sizeof cases / sizeof cases[0]; ++i) {
        AppleEvent event, reply;
        AECreateAppleEvent(kCoreEventClass, cases[i].eventID, &target, kAutoGenerateReturnID, kAnyTransactionID,
                           &event);
        KT_EXPECT(AESend(&event, &reply, cases[i].mode, kAENormalPriority, 30 * 60, NULL, NULL) == noErr);
        KT_EXPECT_MSG(WaitForLine(record, cases[i].line), @"%@", cases[i].line);
        AEDisposeDesc(&event);
    }
    /* Events the login manager has no call for are not handled. */
    AppleEvent event;
    AECreateAppleEvent(kCoreEventClass, kAEOpenApplication, &target, kAutoGenerateReturnID, kAnyTransactionID,
                       &event);
    KT_EXPECT(AESend(&event, NULL, kAENoReply, kAENormalPriority, 60, NULL, NULL) == errAEEventNotHandled);
    AEDisposeDesc(&event);
    AEDisposeDesc(&target);
    unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
    Stop(standIn);
    kill(daemonPid, SIGTERM);
    [daemon waitUntilExit];
    KT_EXPECT([[Contents(record) componentsSeparatedByString:@"\n"] count] == 7); /* ready, five calls, end */
    RemoveItem(folder);
}

static int OpenDescriptors(void)
{
    return (int)[[[NSFileManager defaultManager] contentsOfDirectoryAtPath:@"/proc/self/fd" error:NULL] count];
}

struct ThreadEcho {
    pid_t peer;
    OSErr err;
};

static void *EchoFromThread(void *argument)
{
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    struct ThreadEcho *echo = argument;
    NSString *answer = nil;
    echo->err = SendEcho(echo->peer, "thread", kAEWaitReply, &answer);
    if (echo->err == noErr && ![answer isEqual:@"THREAD"])
        echo->err = -1;
    [pool drain];
    return NULL;
}

/* Every thread reaches a process it shares with another, each ended process
 * leaves nothing open behind, and a process that has ended but is not yet
 * reaped is gone, whatever was sent to it before. */
KT_CASE(LinksToOtherProcessesServeEveryThreadAndEndWithTheProcess)
{
    NSString *folder = MakeFolder(), *record = [folder stringByAppendingPathComponent:@"record"];
    int opened = 0;
    for (int round = 0; round < 4; round++) {
        pid_t peer = StartPeer(record);
        KT_ASSERT(peer > 0);
        KT_EXPECT(SendEcho(peer, "main", kAEWaitReply, NULL) == noErr);
        struct ThreadEcho fromThread = {peer, 1};
        pthread_t thread;
        if (pthread_create(&thread, NULL, EchoFromThread, &fromThread) == 0)
            pthread_join(thread, NULL);
        KT_EXPECT_MSG(fromThread.err == noErr, @"%d", fromThread.err);
        KT_EXPECT(SendEcho(peer, "main again", kAEWaitReply, NULL) == noErr);
        Stop(peer);
        KT_EXPECT(SendEcho(peer, "gone", kAEWaitReply, NULL) == procNotFound);
        if (round == 0)
            opened = OpenDescriptors();
    }
    KT_EXPECT_MSG(OpenDescriptors() <= opened, @"%d open, %d after the first round", OpenDescriptors(), opened);

    /* The peer as the child of a process that never reaps it, so that once
     * killed it stays a zombie, which kill(pid, 0) still finds. */
    RemoveItem(record);
    NSString *pidFile = [folder stringByAppendingPathComponent:@"pid"];
    char *holderArgs[] = {"/bin/sh", "-c", "\"$0\" \"$1\" & echo $! > \"$2\"; exec sleep 60", (char *)KORU_AE_PEER,
                          (char *)[record fileSystemRepresentation], (char *)[pidFile fileSystemRepresentation], NULL};
    pid_t holder = Spawn("/bin/sh", holderArgs);
    KT_ASSERT(holder > 0);
    KT_EXPECT(WaitForLine(record, @"ready"));
    pid_t peer = (pid_t)[Contents(pidFile) intValue];
    KT_EXPECT(peer > 0 && SendEcho(peer, "before", kAEWaitReply, NULL) == noErr);
    if (peer > 0)
        kill(peer, SIGKILL);
    NSString *stat = [NSString stringWithFormat:@"/proc/%d/stat", peer];
    for (int i = 0; i < 600 && [Contents(stat) rangeOfString:@") Z "].location == NSNotFound; i++)
        usleep(50000);
    AESendMode modes[] = {kAENoReply, kAEQueueReply, kAEWaitReply};
    for (size_t i = 0; i < sizeof modes / sizeof modes[0]; i++) {
        OSErr err = SendEcho(peer, "late", modes[i], NULL);
        KT_EXPECT_MSG(err == procNotFound, @"mode %d: %d", (int)modes[i], err);
    }
    Stop(holder);
    RemoveItem(folder);
}

KT_MAIN()
