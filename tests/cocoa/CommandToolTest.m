/* CommandTool with real child processes: captured streams in both
 * directions beyond a pipe's capacity, synchronous and asynchronous runs,
 * delegates, and programs that cannot run. */
#import "KTest.h"
#import <KORU/KORU.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

static CommandTool *ShellTool(NSString *script)
{
    CommandTool *tool = [CommandTool commandToolWithPath:@"/bin/sh"];
    [tool setArguments:[NSArray arrayWithObjects:@"-c", script, nil]];
    return tool;
}

/* Deterministic bytes, so that any reordering or loss shows. */
static NSData *PatternData(NSUInteger length)
{
    NSMutableData *data = [NSMutableData dataWithLength:length];
    unsigned char *bytes = [data mutableBytes];
    uint32_t state = 12345;
    for (NSUInteger i = 0; i < length; i++) {
        state = state * 1103515245u + 12345u;
        bytes[i] = (unsigned char)(state >> 16);
    }
    return data;
}

/* Runs the current run loop until *flag is set; a generous bound keeps a
 * broken tool from hanging the suite. */
static void RunLoopUntil(volatile BOOL *flag)
{
    NSDate *limit = [NSDate dateWithTimeIntervalSinceNow:60];
    while (!*flag && [limit timeIntervalSinceNow] > 0) {
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode
                                 beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.05]];
        [pool release];
    }
}

/* Standard error goes to a file between the two calls. */
typedef struct {
    char path[64];
    int fd;
    int saved;
} StandardErrorCapture;

static BOOL BeginCapture(StandardErrorCapture *capture)
{
    strcpy(capture->path, "/tmp/koru-commandtool-stderr-XXXXXX");
    capture->fd = mkstemp(capture->path);
    if (capture->fd < 0)
        return NO;
    fflush(stderr);
    capture->saved = dup(2);
    dup2(capture->fd, 2);
    return YES;
}

static NSString *EndCapture(StandardErrorCapture *capture)
{
    fflush(stderr);
    dup2(capture->saved, 2);
    close(capture->saved);
    close(capture->fd);
    NSString *text = [NSString stringWithContentsOfFile:[NSString stringWithUTF8String:capture->path]
                                               encoding:NSUTF8StringEncoding
                                                  error:NULL];
    unlink(capture->path);
    return text;
}

@interface RunObserver : NSObject {
@public
    BOOL notified;
    BOOL onMainThread;
    BOOL runningWhenNotified;
    id object;
}
@end

@implementation RunObserver
- (void)toolDidRun:(NSNotification *)notification
{
    notified = YES;
    onMainThread = [NSThread isMainThread];
    object = [notification object];
}
@end

@interface ChunkDelegate : NSObject {
@public
    NSMutableData *firstChunk;
    int outputCalls;
    int errorCalls;
    BOOL calledOnMainThread;
    BOOL answer;
}
@end

@implementation ChunkDelegate
- (void)dealloc
{
    [firstChunk release];
    [super dealloc];
}
- (BOOL)commandTool:(CommandTool *)tool readStandardOutputData:(NSData *)data
{
    (void)tool;
    if (firstChunk == nil)
        firstChunk = [data mutableCopy];
    outputCalls++;
    calledOnMainThread = calledOnMainThread || [NSThread isMainThread];
    return answer;
}
- (BOOL)commandTool:(CommandTool *)tool readStandardErrorData:(NSData *)data
{
    (void)tool;
    (void)data;
    errorCalls++;
    calledOnMainThread = calledOnMainThread || [NSThread isMainThread];
    return answer;
}
@end

KT_CASE(MakingTools)
{
    KT_EXPECT([CommandTool commandToolWithPath:nil] == nil);
    KT_EXPECT([[CommandTool alloc] initWithPath:nil] == nil);
    CommandTool *tool = [[CommandTool alloc] init];
    KT_EXPECT_EQUAL_OBJECTS([tool executePath], @"");
    KT_EXPECT([tool standardOutputData] == nil && [tool standardErrorData] == nil);
    [tool setExecutePath:@"/bin/echo"];
    KT_EXPECT_EQUAL_OBJECTS([tool executePath], @"/bin/echo");
    [tool setExecutePath:nil];
    KT_EXPECT([tool executePath] == nil);
    [tool release];
}

KT_CASE(SynchronousRunCapturesBothStreamsWhateverTheExitStatus)
{
    CommandTool *tool = ShellTool(@"printf 'to out'; printf 'to err' >&2; exit 3");
    [tool setReadStandardOutput:YES];
    [tool setReadStandardError:YES];
    KT_EXPECT([tool run:NO]);
    KT_EXPECT([tool succeeded]);
    KT_EXPECT_EQUAL_OBJECTS([tool standardOutputData], [@"to out" dataUsingEncoding:NSUTF8StringEncoding]);
    KT_EXPECT_EQUAL_OBJECTS([tool standardErrorData], [@"to err" dataUsingEncoding:NSUTF8StringEncoding]);
    /* The buffers are mutable data like any other. */
    NSMutableData *output = (NSMutableData *)[tool standardOutputData];
    KT_ASSERT([output isKindOfClass:[NSMutableData class]]);
    [output appendBytes:"!" length:1];
    KT_EXPECT_EQUAL_OBJECTS([[output mutableCopy] autorelease], [@"to out!" dataUsingEncoding:NSUTF8StringEncoding]);
    [output setLength:2];
    KT_EXPECT_EQUAL_OBJECTS([[[NSString alloc] initWithData:output encoding:NSUTF8StringEncoding] autorelease], @"to");
    /* Appended to itself while its storage grows and moves. */
    for (int i = 0; i < 24; i++)
        [output appendData:output];
    KT_ASSERT([output length] == (2u << 24));
    KT_EXPECT(memcmp((const char *)[output bytes] + [output length] - 2, "to", 2) == 0);

    /* Each run starts with empty buffers; NO releases a buffer. */
    [tool setArguments:[NSArray arrayWithObjects:@"-c", @"printf again", nil]];
    [tool setReadStandardError:NO];
    KT_EXPECT([tool run:NO]);
    KT_EXPECT_EQUAL_OBJECTS([tool standardOutputData], [@"again" dataUsingEncoding:NSUTF8StringEncoding]);
    KT_EXPECT([tool standardErrorData] == nil);

    /* Neither capture nor input: the run launches and waits. */
    CommandTool *quiet = ShellTool(@"exit 0");
    KT_EXPECT([quiet run:NO]);
    KT_EXPECT([quiet standardOutputData] == nil);
}

KT_CASE(LargeInputAndOutputsFlowBothWaysAtOnce)
{
    /* Several pipe capacities in every direction: the child writes to both
     * streams before it reads any input, and echoes the input afterwards. */
    NSData *input = PatternData(3 * 1024 * 1024 + 17);
    CommandTool *tool = ShellTool(@"head -c 1000000 /dev/zero; head -c 700000 /dev/zero >&2; cat; "
                                  @"head -c 300000 /dev/zero >&2");
    [tool setInputData:input];
    [tool setReadStandardOutput:YES];
    [tool setReadStandardError:YES];
    KT_ASSERT([tool run:NO]);
    NSData *output = [tool standardOutputData];
    KT_ASSERT([output length] == 1000000 + [input length]);
    KT_EXPECT([[output subdataWithRange:NSMakeRange(1000000, [input length])] isEqual:input]);
    KT_EXPECT([[tool standardErrorData] length] == 1000000);

    /* A child that reads nothing of a large input still ends the run. */
    CommandTool *deaf = ShellTool(@"printf done");
    [deaf setInputData:input];
    [deaf setReadStandardOutput:YES];
    KT_EXPECT([deaf run:NO]);
    KT_EXPECT_EQUAL_OBJECTS([deaf standardOutputData], [@"done" dataUsingEncoding:NSUTF8StringEncoding]);
}

KT_CASE(EmptyArgumentsAndInputKeepTheOldOnes)
{
    CommandTool *tool = [CommandTool commandToolWithPath:@"/bin/cat"];
    [tool setArguments:[NSArray arrayWithObject:@"-"]];
    [tool setInputData:[@"kept" dataUsingEncoding:NSUTF8StringEncoding]];
    [tool setArguments:nil];
    [tool setInputData:nil];
    [tool setReadStandardOutput:YES];
    KT_EXPECT([tool run:NO]);
    KT_EXPECT_EQUAL_OBJECTS([tool standardOutputData], [@"kept" dataUsingEncoding:NSUTF8StringEncoding]);
}

static NSString *MakeFile(NSString *folder, NSString *name, NSString *text, int mode)
{
    NSString *path = [folder stringByAppendingPathComponent:name];
    [text writeToFile:path atomically:NO encoding:NSUTF8StringEncoding error:NULL];
    chmod([path fileSystemRepresentation], mode);
    return path;
}

KT_CASE(ProgramsThatCannotRunFailTheRun)
{
    char temporary[] = "/tmp/koru-commandtool-XXXXXX";
    KT_ASSERT(mkdtemp(temporary) != NULL);
    NSString *folder = [NSString stringWithUTF8String:temporary];
    unichar cutShort[] = {'/', 'b', 'i', 'n', '/', 't', 'r', 'u', 'e', 0, 'x'};
    NSArray *paths = [NSArray arrayWithObjects:@"/nonexistent/tool", folder, @"",
                                               [NSString stringWithCharacters:cutShort length:11],
                                               MakeFile(folder, @"plain", @"text", 0644),
                                               MakeFile(folder, @"not-a-program", @"text", 0755),
                                               MakeFile(folder, @"bad-script", @"#!/nonexistent/sh\n", 0755),
                                               nil];
    for (NSString *path in paths) {
        CommandTool *tool = [CommandTool commandToolWithPath:path];
        [tool setReadStandardOutput:YES];
        KT_EXPECT_MSG(![tool run:NO], @"%@", path);
        KT_EXPECT(![tool succeeded]);
    }
    /* A script with a working interpreter runs. */
    CommandTool *script = [CommandTool commandToolWithPath:MakeFile(folder, @"good-script", @"#! /bin/sh\necho ran\n", 0755)];
    [script setReadStandardOutput:YES];
    KT_EXPECT([script run:NO]);
    KT_EXPECT_EQUAL_OBJECTS([script standardOutputData], [@"ran\n" dataUsingEncoding:NSUTF8StringEncoding]);
    [[NSFileManager defaultManager] removeItemAtPath:folder error:NULL];

    CommandTool *cleared = [CommandTool commandToolWithPath:@"/bin/true"];
    [cleared setExecutePath:nil];
    KT_EXPECT(![cleared run:NO]);

    /* Arguments the system cannot take fail the run instead of being cut
     * short or ending the argument vector early. */
    unichar withNUL[] = {'a', 0, 'b'};
    NSArray *oddArguments = [NSArray arrayWithObjects:[NSString stringWithCharacters:withNUL length:3],
                                                      [NSString stringWithFormat:@"a%Cb", (unichar)0xD800], nil];
    KT_ASSERT([oddArguments count] == 2);
    for (NSString *odd in oddArguments) {
        CommandTool *tool = [CommandTool commandToolWithPath:@"/bin/echo"];
        [tool setArguments:[NSArray arrayWithObjects:@"before", odd, @"after", nil]];
        [tool setReadStandardOutput:YES];
        KT_EXPECT(![tool run:NO]);
        KT_EXPECT([[tool standardOutputData] length] == 0);
    }

    /* A failed run does not spoil later launches, nor their arguments. */
    CommandTool *echo = [CommandTool commandToolWithPath:@"/bin/echo"];
    [echo setArguments:[NSArray arrayWithObjects:@"still", @"here", nil]];
    [echo setReadStandardOutput:YES];
    KT_EXPECT([echo run:NO]);
    KT_EXPECT_EQUAL_OBJECTS([echo standardOutputData], [@"still here\n" dataUsingEncoding:NSUTF8StringEncoding]);
}

KT_CASE(DebugModeLogsTheCaughtLaunchFailure)
{
    Boolean saved = gKORUDebug;
    gKORUDebug = 1;
    KT_ASSERT(KORUDebug());
    StandardErrorCapture capture;
    KT_ASSERT(BeginCapture(&capture));
    [[CommandTool commandToolWithPath:@"/nonexistent/tool"] run:NO];
    NSString *log = EndCapture(&capture);
    gKORUDebug = saved;
    KT_EXPECT_MSG([log rangeOfString:@"-[CommandTool runCore:] (Line:"].location != NSNotFound, @"%@", log);
    KT_EXPECT_MSG([log rangeOfString:@"Sorry, I caught EXCEPTION error. (name:NSInvalidArgumentException reason:"]
                          .location != NSNotFound,
                  @"%@", log);
}

KT_CASE(AsynchronousRunNotifiesOnTheCallersRunLoop)
{
    char path[] = "/tmp/koru-commandtool-XXXXXX";
    KT_ASSERT(mkdtemp(path) != NULL);
    NSString *folder = [NSString stringWithUTF8String:path];
    NSString *marker = [folder stringByAppendingPathComponent:@"ended"];

    RunObserver *observer = [[RunObserver alloc] init];
    ChunkDelegate *delegate = [[ChunkDelegate alloc] init];
    delegate->answer = YES;
    CommandTool *tool = ShellTool([NSString stringWithFormat:@"printf out; printf err >&2; sleep 0.3; touch '%@'", marker]);
    [tool setReadStandardOutput:YES];
    [tool setReadStandardError:YES];
    [tool setDelegate:delegate];
    [[NSNotificationCenter defaultCenter] addObserver:observer
                                             selector:@selector(toolDidRun:)
                                                 name:CommandToolDidRunNotification
                                               object:tool];
    KT_EXPECT([tool run:YES]);
    KT_EXPECT(![tool run:YES]); /* one child at a time */
    KT_EXPECT(![tool run:NO]);
    KT_EXPECT(!observer->notified);
    RunLoopUntil(&observer->notified);
    [[NSNotificationCenter defaultCenter] removeObserver:observer];

    KT_EXPECT(observer->notified);
    KT_EXPECT(observer->onMainThread);
    KT_EXPECT(observer->object == tool);
    KT_EXPECT([[NSFileManager defaultManager] fileExistsAtPath:marker]); /* after the child ended */
    KT_EXPECT([tool succeeded]);
    KT_EXPECT_EQUAL_OBJECTS([tool standardOutputData], [@"out" dataUsingEncoding:NSUTF8StringEncoding]);
    KT_EXPECT_EQUAL_OBJECTS([tool standardErrorData], [@"err" dataUsingEncoding:NSUTF8StringEncoding]);
    KT_EXPECT(delegate->outputCalls >= 1 && delegate->errorCalls >= 1);
    KT_EXPECT(!delegate->calledOnMainThread); /* the worker thread reads */

    [[NSFileManager defaultManager] removeItemAtPath:folder error:NULL];
    [delegate release];
    [observer release];
}

KT_CASE(AsynchronousFailureAndKillAreNotifiedToo)
{
    RunObserver *observer = [[RunObserver alloc] init];
    [[NSNotificationCenter defaultCenter] addObserver:observer
                                             selector:@selector(toolDidRun:)
                                                 name:CommandToolDidRunNotification
                                               object:nil];
    CommandTool *missing = [CommandTool commandToolWithPath:@"/nonexistent/tool"];
    KT_EXPECT([missing run:YES]);
    RunLoopUntil(&observer->notified);
    KT_EXPECT(observer->notified && observer->object == missing);
    KT_EXPECT(![missing succeeded]);

    observer->notified = NO;
    CommandTool *sleeper = [CommandTool commandToolWithPath:@"/bin/sleep"];
    [sleeper setArguments:[NSArray arrayWithObject:@"600"]];
    /* A kill sent before the worker has made the task still ends the run:
     * the child is stopped at its launch. */
    KT_EXPECT([sleeper run:YES]);
    [sleeper kill];
    RunLoopUntil(&observer->notified);
    KT_EXPECT(observer->notified && observer->object == sleeper);
    if (!observer->notified) {
        [sleeper kill];
        RunLoopUntil(&observer->notified);
    }

    /* A kill between runs is not held against the next run. */
    observer->notified = NO;
    [sleeper kill];
    [sleeper setArguments:[NSArray arrayWithObject:@"0"]];
    KT_EXPECT([sleeper run:YES]);
    RunLoopUntil(&observer->notified);
    KT_EXPECT(observer->notified && [sleeper succeeded]);
    [[NSNotificationCenter defaultCenter] removeObserver:observer];
    [observer release];
}

/* Counts the notifications of a batch of runs and lets go of each tool. */
@interface BatchObserver : NSObject {
@public
    NSMutableArray *running;
    int notified;
}
@end

@implementation BatchObserver
- (void)toolDidRun:(NSNotification *)notification
{
    notified++;
    [running removeObjectIdenticalTo:[notification object]];
}
@end

KT_CASE(KillAtAnyMomentOfARunIsHarmless)
{
    /* kill sent over and over from the owning thread, through every moment
     * of the runs: before the task exists, between its making and its
     * launch, while it runs and while it is cleaned up.  Several runs go at
     * once, so that children end while other runs' workers are waiting or
     * finishing; half of them are left alone.  Nothing may raise, neither
     * kill nor the owner's run loop, and every run is notified once. */
    enum { kRuns = 200, kAtOnce = 8 };
    BatchObserver *observer = [[BatchObserver alloc] init];
    observer->running = [[NSMutableArray alloc] init];
    [[NSNotificationCenter defaultCenter] addObserver:observer
                                             selector:@selector(toolDidRun:)
                                                 name:CommandToolDidRunNotification
                                               object:nil];
    NSData *input = PatternData(100000);
    BOOL raised = NO;
    int started = 0;
    NSDate *limit = [NSDate dateWithTimeIntervalSinceNow:300];
    while ((started < kRuns || [observer->running count] > 0) && !raised && [limit timeIntervalSinceNow] > 0) {
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        while (started < kRuns && [observer->running count] < kAtOnce) {
            CommandTool *tool = [CommandTool commandToolWithPath:@"/bin/cat"];
            [tool setInputData:input];
            [tool setReadStandardOutput:YES];
            [tool setReadStandardError:YES];
            KT_EXPECT([tool run:YES]);
            [observer->running addObject:tool];
            started++;
        }
        @try {
            for (NSUInteger i = 0; i < [observer->running count]; i += 2)
                [[observer->running objectAtIndex:i] kill];
        } @catch (NSException *exception) {
            fprintf(stderr, "kill: %s\n", [[exception reason] UTF8String]);
            raised = YES;
        }
        @try {
            [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode beforeDate:[NSDate distantPast]];
        } @catch (NSException *exception) {
            fprintf(stderr, "run loop: %s\n", [[exception reason] UTF8String]);
            raised = YES;
        }
        [pool release];
    }
    KT_EXPECT(!raised);
    KT_EXPECT_MSG(observer->notified == kRuns, @"%d of %d runs notified", observer->notified, (int)kRuns);
    [[NSNotificationCenter defaultCenter] removeObserver:observer];
    [observer->running release];
    [observer release];
}

/* Raises at the first chunk, which is the child's process number. */
@interface RaisingDelegate : NSObject {
@public
    int pid;
}
@end

@implementation RaisingDelegate
- (BOOL)commandTool:(CommandTool *)tool readStandardOutputData:(NSData *)data
{
    (void)tool;
    pid = [[[[NSString alloc] initWithData:data encoding:NSUTF8StringEncoding] autorelease] intValue];
    [NSException raise:@"DelegateException" format:@"raised by the delegate"];
    return YES;
}
@end

/* The state letter of /proc/<pid>/stat, or 0 when there is no such process. */
static char ProcessState(int pid)
{
    char path[64], text[512];
    snprintf(path, sizeof path, "/proc/%d/stat", pid);
    FILE *file = fopen(path, "r");
    if (file == NULL)
        return 0;
    size_t length = fread(text, 1, sizeof text - 1, file);
    fclose(file);
    text[length] = '\0';
    const char *end = strrchr(text, ')');
    return end != NULL && end[1] == ' ' ? end[2] : '?';
}

KT_CASE(ChildLeftByARaisingDelegateIsCollectedWhenItEnds)
{
    /* The run ends at the exception while the child still runs; no run loop
     * runs here, so only the tool itself can collect the child. */
    RaisingDelegate *delegate = [[RaisingDelegate alloc] init];
    CommandTool *tool = ShellTool(@"echo $$; exec sleep 0.3");
    [tool setReadStandardOutput:YES];
    [tool setDelegate:delegate];
    KT_EXPECT(![tool run:NO]);
    KT_ASSERT(delegate->pid > 0);
    char state = ProcessState(delegate->pid);
    for (int i = 0; i < 1000 && state != 0; i++) {
        usleep(10000);
        state = ProcessState(delegate->pid);
    }
    KT_EXPECT_MSG(state == 0, @"child %d left in state %c", delegate->pid, state);
    [delegate release];
}

KT_CASE(DelegateSayingNoStopsTheReadingAtItsChunk)
{
    ChunkDelegate *delegate = [[ChunkDelegate alloc] init];
    delegate->answer = NO;
    CommandTool *tool = ShellTool(@"printf first; sleep 0.2; printf second; printf late >&2");
    [tool setReadStandardOutput:YES];
    [tool setReadStandardError:YES];
    [tool setDelegate:delegate];
    KT_EXPECT([tool run:NO]);
    KT_EXPECT([tool succeeded]);
    KT_EXPECT(delegate->outputCalls == 1);
    KT_EXPECT(delegate->errorCalls == 0);
    KT_EXPECT_EQUAL_OBJECTS([tool standardOutputData], delegate->firstChunk);
    KT_EXPECT([[tool standardErrorData] length] == 0);
    [delegate release];
}

KT_MAIN()
