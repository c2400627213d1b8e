/* CommandTool with real child processes: streams beyond a pipe's capacity,
 * synchronous and asynchronous runs, delegates, programs that cannot run. */
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

static NSData *UTF8(NSString *text)
{
    return [text dataUsingEncoding:NSUTF8StringEncoding];
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

/* Runs the current run loop until *flag is set, for at most a minute. */
static void RunLoopUntil(volatile BOOL *flag)
{
    NSDate *limit = [NSDate dateWithTimeIntervalSinceNow:60];
    while (!*flag && [limit timeIntervalSinceNow] > 0) {
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.05]];
        [pool release];
    }
}

/* Notes each run's notification; the tools in running are let go as their runs end. */
@interface RunObserver : NSObject {
@public
    BOOL notified, onMainThread;
    int count;
    id object;
    NSMutableArray *running;
}
@end

@implementation RunObserver
- (void)toolDidRun:(NSNotification *)notification
{
    notified = YES;
    count++;
    onMainThread = [NSThread isMainThread];
    object = [notification object];
    [running removeObjectIdenticalTo:object];
}
@end

@interface ChunkDelegate : NSObject {
@public
    NSMutableData *firstChunk;
    int outputCalls, errorCalls;
    BOOL calledOnMainThread, answer;
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

KT_CASE(SynchronousRunCapturesBothStreamsWhateverTheExitStatus)
{
    CommandTool *tool = ShellTool(@"printf 'to out'; printf 'to err' >&2; exit 3");
    [tool setReadStandardOutput:YES];
    [tool setReadStandardError:YES];
    KT_EXPECT([tool run:NO] && [tool succeeded]);
    KT_EXPECT_EQUAL_OBJECTS([tool standardOutputData], UTF8(@"to out"));
    KT_EXPECT_EQUAL_OBJECTS([tool standardErrorData], UTF8(@"to err"));
    /* The buffer is mutable data, and can be appended to itself while its storage grows and moves. */
    NSMutableData *output = (NSMutableData *)[tool standardOutputData];
    KT_ASSERT([output isKindOfClass:[NSMutableData class]]);
    [output setLength:2];
    for (int i = 0; i < 24; i++)
        [output appendData:output];
    KT_ASSERT([output length] == (2u << 24));
    KT_EXPECT(memcmp((const char *)[output bytes] + [output length] - 2, "to", 2) == 0);
    /* Each run starts with empty buffers; NO releases a buffer. */
    [tool setArguments:[NSArray arrayWithObjects:@"-c", @"printf again", nil]];
    [tool setReadStandardError:NO];
    KT_EXPECT([tool run:NO]);
    KT_EXPECT_EQUAL_OBJECTS([tool standardOutputData], UTF8(@"again"));
    KT_EXPECT([tool standardErrorData] == nil);
    /* Empty arguments and input keep the old ones. */
    CommandTool *cat = [CommandTool commandToolWithPath:@"/bin/cat"];
    [cat setArguments:[NSArray arrayWithObject:@"-"]];
    [cat setInputData:UTF8(@"kept")];
    [cat setArguments:nil];
    [cat setInputData:nil];
    [cat setReadStandardOutput:YES];
    KT_EXPECT([cat run:NO]);
    KT_EXPECT_EQUAL_OBJECTS([cat standardOutputData], UTF8(@"kept"));
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
    KT_EXPECT_EQUAL_OBJECTS([deaf standardOutputData], UTF8(@"done"));
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
    KT_EXPECT([CommandTool commandToolWithPath:nil] == nil && [[CommandTool alloc] initWithPath:nil] == nil);
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
    KT_EXPECT_EQUAL_OBJECTS([script standardOutputData], UTF8(@"ran\n"));
    [[NSFileManager defaultManager] removeItemAtPath:folder error:NULL];
    CommandTool *cleared = [CommandTool commandToolWithPath:@"/bin/true"];
    [cleared setExecutePath:nil];
    KT_EXPECT(![cleared run:NO]);
    /* Arguments the system cannot take fail the run, never cut short. */
    unichar withNUL[] = {'a', 0, 'b'};
    NSArray *oddArguments = [NSArray arrayWithObjects:[NSString stringWithCharacters:withNUL length:3],
                                                      [NSString stringWithFormat:@"a%Cb", (unichar)0xD800], nil];
    KT_ASSERT([oddArguments count] == 2);
    for (NSString *odd in oddArguments) {
        CommandTool *tool = [CommandTool commandToolWithPath:@"/bin/echo"];
        [tool setArguments:[NSArray arrayWithObjects:@"before", odd, @"after", nil]];
        [tool setReadStandardOutput:YES];
        KT_EXPECT(![tool run:NO] && [[tool standardOutputData] length] == 0);
    }
    /* A failed run does not spoil later launches, nor their arguments. */
    CommandTool *echo = [CommandTool commandToolWithPath:@"/bin/echo"];
    [echo setArguments:[NSArray arrayWithObjects:@"still", @"here", nil]];
    [echo setReadStandardOutput:YES];
    KT_EXPECT([echo run:NO]);
    KT_EXPECT_EQUAL_OBJECTS([echo standardOutputData], UTF8(@"still here\n"));
}

KT_CASE(DebugModeLogsTheCaughtLaunchFailure)
{
    Boolean saved = gKORUDebug;
    gKORUDebug = 1;
    KT_ASSERT(KORUDebug());
    char path[] = "/tmp/koru-commandtool-stderr-XXXXXX";
    int fd = mkstemp(path), standardError = dup(2);
    KT_ASSERT(fd >= 0);
    fflush(stderr);
    dup2(fd, 2);
    [[CommandTool commandToolWithPath:@"/nonexistent/tool"] run:NO];
    fflush(stderr);
    dup2(standardError, 2);
    close(standardError);
    close(fd);
    gKORUDebug = saved;
    NSString *log = [NSString stringWithContentsOfFile:[NSString stringWithUTF8String:path]
                                              encoding:NSUTF8StringEncoding error:NULL];
    unlink(path);
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
    [[NSNotificationCenter defaultCenter] addObserver:observer selector:@selector(toolDidRun:)
                                                 name:CommandToolDidRunNotification object:tool];
    KT_EXPECT([tool run:YES]);
    KT_EXPECT(![tool run:YES] && ![tool run:NO]); /* one child at a time */
    KT_EXPECT(!observer->notified);
    RunLoopUntil(&observer->notified);
    [[NSNotificationCenter defaultCenter] removeObserver:observer];
    KT_EXPECT(observer->notified && observer->onMainThread && observer->object == tool);
    KT_EXPECT([[NSFileManager defaultManager] fileExistsAtPath:marker]); /* after the child ended */
    KT_EXPECT([tool succeeded]);
    KT_EXPECT_EQUAL_OBJECTS([tool standardOutputData], UTF8(@"out"));
    KT_EXPECT_EQUAL_OBJECTS([tool standardErrorData], UTF8(@"err"));
    KT_EXPECT(delegate->outputCalls >= 1 && delegate->errorCalls >= 1);
    KT_EXPECT(!delegate->calledOnMainThread); /* the worker thread reads */
    [[NSFileManager defaultManager] removeItemAtPath:folder error:NULL];
    [delegate release];
    [observer release];
}

KT_CASE(AsynchronousFailureAndKillAreNotifiedToo)
{
    RunObserver *observer = [[RunObserver alloc] init];
    [[NSNotificationCenter defaultCenter] addObserver:observer selector:@selector(toolDidRun:)
                                                 name:CommandToolDidRunNotification object:nil];
    CommandTool *missing = [CommandTool commandToolWithPath:@"/nonexistent/tool"];
    KT_EXPECT([missing run:YES]);
    RunLoopUntil(&observer->notified);
    KT_EXPECT(observer->notified && observer->object == missing && ![missing succeeded]);
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

KT_CASE(KillAtAnyMomentOfARunIsHarmless)
{
    /* kill sent over and over through every moment of several concurrent
     * runs (half of them left alone): nothing raises, neither kill nor the
     * run loop, and every run is notified once. */
    enum { kRuns = 200, kAtOnce = 8 };
    RunObserver *observer = [[RunObserver alloc] init];
    observer->running = [[NSMutableArray alloc] init];
    [[NSNotificationCenter defaultCenter] addObserver:observer selector:@selector(toolDidRun:)
                                                 name:CommandToolDidRunNotification object:nil];
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
    KT_EXPECT_MSG(observer->count == kRuns, @"%d of %d runs notified", observer->count, (int)kRuns);
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
    /* No run loop runs here: only the tool itself can collect the child. */
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
    KT_EXPECT([tool run:NO] && [tool succeeded] && delegate->outputCalls == 1 && delegate->errorCalls == 0);
    KT_EXPECT_EQUAL_OBJECTS([tool standardOutputData], delegate->firstChunk);
    KT_EXPECT([[tool standardErrorData] length] == 0);
    [delegate release];
}

KT_MAIN()
