/* F_SETPIPE_SZ, vmsplice, posix_spawn_file_actions_addclosefrom_np */
#define _GNU_SOURCE 1

#import <KORU/CommandTool.h>

#import "CaptureBuffer.h"
#import "CaughtException.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <spawn.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <sys/eventfd.h>
#include <sys/pidfd.h>
#include <sys/uio.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

NSString *const CommandToolDidRunNotification = @"CommandToolDidRunNotification";

/* Guards every tool's mTask between the run, which sets and clears it, and
 * kill, which may come from another thread. */
static pthread_mutex_t gTaskLock = PTHREAD_MUTEX_INITIALIZER;

/* Tools killed while their run had no task yet, guarded by gTaskLock: the
 * worker terminates the task it makes for such a tool at once. */
static NSHashTable *gPendingKills;

static NSHashTable *PendingKills(void)
{
    if (gPendingKills == NULL)
        gPendingKills = NSCreateHashTable(NSNonOwnedPointerHashCallBacks, 4);
    return gPendingKills;
}

/* Bytes read from the child per read(2): enough to empty a full pipe at once. */
enum { kReadChunkSize = 1024 * 1024 };

/* The pipes' capacity asked for: fewer, larger transfers between the two
 * processes (the system may grant less). */
enum { kPipeSize = 1024 * 1024 };

/* The writer that feeds the child's standard input while the run's thread
 * reads its output: writing everything first would block for ever once the
 * child, unable to write its own full pipe, stops reading.  The writer owns
 * its descriptor and closes it when the input is written, the child has
 * closed its end, or the run cancels it.  It touches no Objective-C object,
 * so it can be a plain thread. */
typedef struct {
    pthread_t thread;
    int fd;       /* the pipe's writing end, non-blocking */
    int cancelFD; /* an eventfd: readable once the run gives up on the input */
    const unsigned char *bytes;
    size_t length;
} InputWriter;

static void WaitUntilWritable(InputWriter *writer, BOOL *cancelled)
{
    struct pollfd fds[2] = {{writer->fd, POLLOUT, 0}, {writer->cancelFD, POLLIN, 0}};
    while (poll(fds, 2, -1) < 0 && errno == EINTR)
        ;
    *cancelled = (fds[1].revents & POLLIN) != 0;
}

static void *InputWriterMain(void *argument)
{
    InputWriter *writer = argument;
    size_t written = 0;
    BOOL cancelled = NO;
    BOOL splicing = YES;
    while (written < writer->length && !cancelled) {
        /* vmsplice lends the pages to the pipe instead of copying them: the
         * run keeps the input data until the child, the pipe's only reader,
         * has exited. */
        struct iovec part = {(void *)(writer->bytes + written), writer->length - written};
        if (part.iov_len > kPipeSize)
            part.iov_len = kPipeSize;
        ssize_t n = splicing ? vmsplice(writer->fd, &part, 1, SPLICE_F_NONBLOCK)
                             : write(writer->fd, part.iov_base, part.iov_len);
        if (n < 0 && splicing && (errno == EINVAL || errno == ENOSYS)) {
            splicing = NO;
            continue;
        }
        if (n > 0) {
            written += (size_t)n;
        } else if (n < 0 && errno == EAGAIN) {
            WaitUntilWritable(writer, &cancelled);
        } else if (n < 0 && errno == EINTR) {
            continue;
        } else {
            if (n < 0 && errno == EPIPE) {
                /* The child closed its end; the SIGPIPE is blocked in this
                 * thread and is taken here so that it is never delivered. */
                sigset_t pipeSignal;
                sigemptyset(&pipeSignal);
                sigaddset(&pipeSignal, SIGPIPE);
                struct timespec now = {0, 0};
                sigtimedwait(&pipeSignal, NULL, &now);
            }
            break;
        }
    }
    close(writer->fd);
    writer->fd = -1;
    return NULL;
}

/* Starts the writer on a descriptor of its own; NO (and fd closed) when no
 * thread could be started. */
static BOOL InputWriterStart(InputWriter *writer, int fd, NSData *data)
{
    writer->fd = fd;
    writer->bytes = [data bytes];
    writer->length = [data length];
    writer->cancelFD = eventfd(0, EFD_CLOEXEC);
    if (writer->cancelFD < 0) {
        close(fd);
        return NO;
    }
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
    /* The thread starts with SIGPIPE blocked, so that a child that stops
     * reading makes write(2) fail with EPIPE instead of killing the host. */
    sigset_t pipeSignal, saved;
    sigemptyset(&pipeSignal);
    sigaddset(&pipeSignal, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipeSignal, &saved);
    int started = pthread_create(&writer->thread, NULL, InputWriterMain, writer);
    pthread_sigmask(SIG_SETMASK, &saved, NULL);
    if (started != 0) {
        close(fd);
        close(writer->cancelFD);
        return NO;
    }
    return YES;
}

/* Stops a writer that is still waiting for the child and waits for it to end. */
static void InputWriterFinish(InputWriter *writer)
{
    uint64_t one = 1;
    while (write(writer->cancelFD, &one, sizeof one) < 0 && errno == EINTR)
        ;
    pthread_join(writer->thread, NULL);
    close(writer->cancelFD);
}

/* A pipe's end as a descriptor of its own, close-on-exec, so that it outlives
 * the NSFileHandle around the original. */
static int DuplicateDescriptor(NSFileHandle *handle)
{
    return fcntl([handle fileDescriptor], F_DUPFD_CLOEXEC, 0);
}

/* True when execve(2) will start the file: an executable regular file that is
 * an ELF program, or a "#!" script whose interpreter is one in turn (the
 * kernel follows a few levels of those). */
static BOOL IsLaunchableFile(const char *path, int depth)
{
    struct stat info;
    if (depth > 4 || stat(path, &info) != 0 || !S_ISREG(info.st_mode) || (info.st_mode & 0111) == 0 ||
        access(path, X_OK) != 0)
        return NO;
    char head[256];
    int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return NO;
    ssize_t length = read(fd, head, sizeof head - 1);
    close(fd);
    if (length >= 4 && memcmp(head, "\177ELF", 4) == 0)
        return YES;
    if (length < 3 || head[0] != '#' || head[1] != '!')
        return NO;
    head[length] = '\0';
    char *interpreter = head + 2;
    while (*interpreter == ' ' || *interpreter == '\t')
        interpreter++;
    interpreter[strcspn(interpreter, " \t\n")] = '\0';
    return *interpreter != '\0' && IsLaunchableFile(interpreter, depth + 1);
}

/* Checked before anything is started, so that a path that names no program
 * fails the run the same way whatever the system's spawning reports. */
static BOOL IsExecutableFile(NSString *path)
{
    if (path == nil || [path length] == 0)
        return NO;
    /* The system would take the path cut short at a NUL character: another file. */
    if ([path rangeOfCharacterFromSet:[NSCharacterSet characterSetWithRange:NSMakeRange(0, 1)]].location != NSNotFound)
        return NO;
    return IsLaunchableFile([path fileSystemRepresentation], 0);
}

/* Both ends of a pipe close-on-exec: programs that the host starts by other
 * means while a run is in progress must not inherit them, or the run would
 * wait for those programs to close them.  The run's own child gets its ends
 * as its standard streams all the same.  A larger pipe means fewer, larger
 * transfers between the two processes (the system may grant less). */
static void PreparePipe(NSPipe *pipe)
{
    int reading = [[pipe fileHandleForReading] fileDescriptor];
    int writing = [[pipe fileHandleForWriting] fileDescriptor];
    fcntl(reading, F_SETFD, FD_CLOEXEC);
    fcntl(writing, F_SETFD, FD_CLOEXEC);
    fcntl(reading, F_SETPIPE_SZ, kPipeSize);
}

/* Collects a child that no task follows any more when it ends; the thread
 * owns the child's pidfd. */
static void *ReapLaterMain(void *argument)
{
    int pidFD = (int)(intptr_t)argument;
    siginfo_t info;
    /* Fails at once (ECHILD) when GNUstep's waiting for any child took it. */
    while (waitid(P_PIDFD, (id_t)pidFD, &info, WEXITED) < 0 && errno == EINTR)
        ;
    close(pidFD);
    return NULL;
}

/* Starts the thread that collects the child behind pidFD when it ends: YES
 * when the thread owns pidFD from now on.  Without a pidfd the child is left
 * to GNUstep's waiting for any child: waiting for its number could collect
 * another child of the host's that has taken the number meanwhile. */
static BOOL ReapLater(int pidFD)
{
    if (pidFD < 0)
        return NO;
    pthread_attr_t attributes;
    pthread_t thread;
    sigset_t all, saved;
    sigfillset(&all);
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_sigmask(SIG_BLOCK, &all, &saved); /* the host's signals are not for it */
    int started = pthread_create(&thread, &attributes, ReapLaterMain, (void *)(intptr_t)pidFD);
    pthread_sigmask(SIG_SETMASK, &saved, NULL);
    pthread_attr_destroy(&attributes);
    return started == 0;
}

/* The child process of a run: an NSTask that starts its program with
 * posix_spawn and reaps it itself.
 *
 * GNUstep's own task reaps its children from whichever run loop sees the
 * SIGCHLD first and then performs its termination notice on the thread that
 * launched it; when that thread (a run's worker) has ended in the meantime,
 * GNUstep raises NSInternalInconsistencyException from the run loop that did
 * the reaping, the host's.  This task is unknown to GNUstep: nothing is ever
 * performed on another thread, and the thread that waits for the child
 * collects it.  GNUstep may still reap the child first (it waits for any
 * child); the child's end is then seen through its pidfd, and its status is
 * unknown (-1).
 *
 * Like GNUstep's task, the child leads a session of its own with default
 * signal handling, and terminate signals its whole process group.  It
 * inherits no descriptor beyond its three standard streams.  Without an
 * environment set it gets the process's current one. */
@interface CommandToolTask : NSTask
{
    pthread_mutex_t mLock; /* orders terminate against reaping */
    int mPidFD;            /* -1 when there is none */
    BOOL mReaped;          /* collected here, or found collected elsewhere */
    BOOL mTerminateAtLaunch;
}
- (BOOL)reap;
- (void)signalGroup:(int)signalNumber;
- (void)sendSignal:(int)signalNumber;
@end

@implementation CommandToolTask

- (id)init
{
    self = [super init];
    if (self == nil)
        return nil;
    mPidFD = -1;
    pthread_mutex_init(&mLock, NULL); /* cannot fail without attributes */
    return self;
}

- (void)dealloc
{
    if (_hasLaunched && !mReaped && [self isRunning]) {
        /* A run that ended early (a delegate raised) lets go of a child that
         * is still running: it is collected when it ends, so that it does
         * not stay a zombie of the host. */
        if (ReapLater(mPidFD))
            mPidFD = -1;
    }
    if (mPidFD >= 0)
        close(mPidFD);
    pthread_mutex_destroy(&mLock);
    [super dealloc];
}

/* With mLock held: YES once the child has ended, collecting it when it can. */
- (BOOL)reap
{
    if (mReaped)
        return YES;
    siginfo_t info;
    memset(&info, 0, sizeof info);
    int result;
    do {
        result = mPidFD >= 0 ? waitid(P_PIDFD, (id_t)mPidFD, &info, WEXITED | WNOHANG)
                             : waitid(P_PID, (id_t)_taskId, &info, WEXITED | WNOHANG);
    } while (result < 0 && errno == EINTR);
    if (result == 0 && info.si_pid == 0)
        return NO;
    mReaped = YES;
    _hasCollected = YES;
    _hasTerminated = YES;
    if (result < 0) { /* collected by someone else */
        _terminationStatus = -1;
        _terminationReason = NSTaskTerminationReasonExit;
    } else if (info.si_code == CLD_EXITED) {
        _terminationStatus = info.si_status;
        _terminationReason = NSTaskTerminationReasonExit;
    } else {
        _terminationStatus = info.si_status;
        _terminationReason = NSTaskTerminationReasonUncaughtSignal;
    }
    return YES;
}

/* With mLock held: signals the child's process group unless the child has
 * been collected (its number may then belong to another process). */
- (void)signalGroup:(int)signalNumber
{
    if (mReaped)
        return;
    siginfo_t info;
    memset(&info, 0, sizeof info);
    int result = mPidFD >= 0 ? waitid(P_PIDFD, (id_t)mPidFD, &info, WEXITED | WNOHANG | WNOWAIT)
                             : waitid(P_PID, (id_t)_taskId, &info, WEXITED | WNOHANG | WNOWAIT);
    if (result == 0) /* running, or ended and not collected: the group is still its own */
        killpg(_taskId, signalNumber);
}

/* The argument vector, environment and file actions are built before the
 * spawn and freed after it; raises when the program cannot be started. */
- (void)launch
{
    pthread_mutex_lock(&mLock);
    BOOL launched = _hasLaunched;
    pthread_mutex_unlock(&mLock);
    if (launched)
        [NSException raise:NSInvalidArgumentException format:@"CommandToolTask: the task has already been launched"];
    NSString *launchPath = [self launchPath];
    if (launchPath == nil)
        [NSException raise:NSInvalidArgumentException format:@"CommandToolTask: no launch path set"];

    NSArray *arguments = [self arguments];
    NSUInteger count = [arguments count];
    NSMutableData *argumentVector = [NSMutableData dataWithLength:(count + 2) * sizeof(char *)];
    const char **argv = [argumentVector mutableBytes];
    argv[0] = [launchPath fileSystemRepresentation];
    for (NSUInteger i = 0; i < count; i++) {
        /* An argument holding a NUL character would reach the program cut
         * short there: the program is not started with other arguments
         * than it was given.  (Half of a surrogate pair raises here.) */
        NSString *argument = [[arguments objectAtIndex:i] description];
        argv[i + 1] = [argument UTF8String];
        if (argv[i + 1] == NULL || strlen(argv[i + 1]) != [argument lengthOfBytesUsingEncoding:NSUTF8StringEncoding])
            [NSException raise:NSInvalidArgumentException
                        format:@"CommandToolTask: argument %lu cannot be passed to a program", (unsigned long)(i + 1)];
    }

    char **envp = environ;
    if (_environment != nil) {
        NSArray *keys = [_environment allKeys];
        NSMutableData *environment = [NSMutableData dataWithLength:([keys count] + 1) * sizeof(char *)];
        envp = [environment mutableBytes];
        for (NSUInteger i = 0; i < [keys count]; i++) {
            id key = [keys objectAtIndex:i];
            envp[i] = (char *)[[NSString stringWithFormat:@"%@=%@", key, [_environment objectForKey:key]] UTF8String];
        }
    }

    /* Each stream is inherited, or given as a file handle or a pipe (whose
     * child end is closed here once the child has its copy). */
    id streams[3] = {_standardInput, _standardOutput, _standardError};
    int sources[3] = {-1, -1, -1};
    int setupFailure = 0;
    int temporary[3] = {-1, -1, -1};
    NSFileHandle *childEnds[3] = {nil, nil, nil};
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    for (int stream = 0; stream < 3; stream++) {
        id handle = streams[stream];
        if ([handle isKindOfClass:[NSPipe class]]) {
            handle = stream == 0 ? [handle fileHandleForReading] : [handle fileHandleForWriting];
            childEnds[stream] = handle;
        }
        if (handle == nil)
            continue;
        sources[stream] = [handle fileDescriptor];
        /* A source among 0 to 2 could be overwritten by an earlier stream's
         * dup2 in the child, or be the close-on-exec target itself: it is
         * given from a copy above them. */
        if (sources[stream] >= 0 && sources[stream] < 3) {
            sources[stream] = temporary[stream] = fcntl(sources[stream], F_DUPFD_CLOEXEC, 3);
            if (sources[stream] < 0)
                setupFailure = errno; /* the stream would silently be this process's own */
        }
        if (sources[stream] >= 0)
            posix_spawn_file_actions_adddup2(&actions, sources[stream], stream);
    }
    posix_spawn_file_actions_addclosefrom_np(&actions, 3);
    if (_currentDirectoryPath != nil)
        posix_spawn_file_actions_addchdir_np(&actions, [_currentDirectoryPath fileSystemRepresentation]);
    sigset_t all, none;
    sigfillset(&all);
    sigemptyset(&none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);

    pid_t pid = -1;
    int failure = setupFailure != 0 ? setupFailure
                                    : posix_spawn(&pid, argv[0], &actions, &attributes, (char *const *)argv, envp);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    for (int stream = 0; stream < 3; stream++) {
        if (temporary[stream] >= 0)
            close(temporary[stream]);
    }
    if (failure != 0)
        [NSException raise:NSInvalidArgumentException
                    format:@"CommandToolTask: cannot launch '%@': %s", launchPath, strerror(failure)];

    pthread_mutex_lock(&mLock);
    _taskId = pid;
    _hasLaunched = YES;
    /* Without a pidfd (an old kernel) the child is followed by its number. */
    mPidFD = pidfd_open(pid, 0);
    if (mPidFD < 0 && errno == ESRCH)
        mReaped = YES; /* ended and collected by GNUstep already */
    if (mTerminateAtLaunch)
        [self signalGroup:SIGTERM];
    pthread_mutex_unlock(&mLock);
    for (int stream = 0; stream < 3; stream++)
        [childEnds[stream] closeFile];
}

- (BOOL)isRunning
{
    pthread_mutex_lock(&mLock);
    BOOL running = _hasLaunched && ![self reap];
    pthread_mutex_unlock(&mLock);
    return running;
}

/* Blocks without running the run loop, and collects the child. */
- (void)waitUntilExit
{
    pthread_mutex_lock(&mLock);
    BOOL launched = _hasLaunched;
    pthread_mutex_unlock(&mLock);
    if (!launched)
        return;
    /* The wait leaves the child uncollected, so that terminate may still
     * signal its group; reap then collects it under the lock. */
    siginfo_t info;
    if (mPidFD >= 0) {
        struct pollfd ended = {mPidFD, POLLIN, 0};
        while (poll(&ended, 1, -1) < 0 && errno == EINTR)
            ;
    } else {
        while (waitid(P_PID, (id_t)_taskId, &info, WEXITED | WNOWAIT) < 0 && errno == EINTR)
            ;
    }
    pthread_mutex_lock(&mLock);
    while (![self reap]) { /* ended but not yet a zombie: moments */
        pthread_mutex_unlock(&mLock);
        usleep(1000);
        pthread_mutex_lock(&mLock);
    }
    pthread_mutex_unlock(&mLock);
}

/* Before the launch: the child is terminated as soon as it is launched. */
- (void)terminate
{
    [self sendSignal:SIGTERM];
}

- (void)interrupt
{
    [self sendSignal:SIGINT];
}

- (BOOL)suspend
{
    [self sendSignal:SIGSTOP];
    return YES;
}

- (BOOL)resume
{
    [self sendSignal:SIGCONT];
    return YES;
}

- (void)sendSignal:(int)signalNumber
{
    pthread_mutex_lock(&mLock);
    if (_hasLaunched)
        [self signalGroup:signalNumber];
    else if (signalNumber == SIGTERM)
        mTerminateAtLaunch = YES;
    pthread_mutex_unlock(&mLock);
}

- (int)terminationStatus
{
    if ([self isRunning] || !_hasLaunched)
        [NSException raise:NSInvalidArgumentException format:@"CommandToolTask: the task has not terminated"];
    return _terminationStatus;
}

- (NSTaskTerminationReason)terminationReason
{
    if ([self isRunning] || !_hasLaunched)
        [NSException raise:NSInvalidArgumentException format:@"CommandToolTask: the task has not terminated"];
    return _terminationReason;
}

@end

/* One captured stream of the child. */
typedef struct {
    int fd; /* -1 once the stream has ended or when it is not captured */
    NSMutableData *buffer;
    SEL callback;
} OutputStream;

@interface CommandTool (Running)
- (BOOL)launchWithInput:(NSPipe *)inPipe
                 output:(NSPipe *)outPipe
                  error:(NSPipe *)errPipe
                   data:(NSData *)input
                 writer:(InputWriter *)writer;
- (BOOL)readStream:(OutputStream *)stream;
- (void)readOutput:(OutputStream *)output error:(OutputStream *)error;
@end

@implementation CommandTool

+ (id)commandToolWithPath:(NSString *)path
{
    return [[[self alloc] initWithPath:path] autorelease];
}

- (id)initWithPath:(NSString *)path
{
    self = [super init];
    if (self == nil)
        return nil;
    if (path == nil) {
        [self release];
        return nil;
    }
    mToolPath = [path retain];
    return self;
}

- (id)init
{
    return [self initWithPath:@""];
}

- (void)dealloc
{
    [mTask terminate];
    [mRunCheckTimer invalidate];
    [mRunCheckTimer release];
    [mOutData release];
    [mErrData release];
    [mInData release];
    [mArgs release];
    [mToolPath release];
    [mTask release];
    [super dealloc];
}

- (NSString *)executePath
{
    return mToolPath;
}

- (void)setExecutePath:(NSString *)path
{
    [path retain];
    [mToolPath release];
    mToolPath = path;
}

- (void)setArguments:(NSArray *)arguments
{
    if (arguments == nil)
        return;
    [arguments retain];
    [mArgs release];
    mArgs = arguments;
}

- (void)setInputData:(NSData *)data
{
    if (data == nil)
        return;
    [data retain];
    [mInData release];
    mInData = data;
}

- (void)setReadStandardOutput:(BOOL)flag
{
    if (!flag) {
        [mOutData release];
        mOutData = nil;
    } else if (mOutData == nil) {
        mOutData = [[CaptureBuffer alloc] init];
        if (mOutData == nil)
            NSLog(@"CommandTool: Sorry, I coldn't make Data for StandardOutput.");
    }
}

- (void)setReadStandardError:(BOOL)flag
{
    if (!flag) {
        [mErrData release];
        mErrData = nil;
    } else if (mErrData == nil) {
        mErrData = [[CaptureBuffer alloc] init];
        if (mErrData == nil)
            NSLog(@"CommandTool: Sorry, I coldn't make Data for StandardError.");
    }
}

- (NSData *)standardOutputData
{
    return mOutData;
}

- (NSData *)standardErrorData
{
    return mErrData;
}

- (id)delegate
{
    return mDelegate;
}

- (void)setDelegate:(id)delegate
{
    mDelegate = delegate;
}

- (BOOL)succeeded
{
    return mSucceeded;
}

- (void)kill
{
    if (!__atomic_load_n(&mRunning, __ATOMIC_ACQUIRE))
        return;
    /* The task is held for the moment of the call: the run may be letting
     * it go meanwhile.  A task not yet launched ends at its launch. */
    pthread_mutex_lock(&gTaskLock);
    NSTask *task = [mTask retain];
    if (task == nil)
        NSHashInsertIfAbsent(PendingKills(), self);
    pthread_mutex_unlock(&gTaskLock);
    [task terminate];
    [task release];
}

- (BOOL)run:(BOOL)asynchronous
{
    if (__atomic_load_n(&mRunning, __ATOMIC_ACQUIRE))
        return NO;
    /* A run that ended before its timer noticed is reported now, so that
     * every asynchronous run is followed by exactly one notification. */
    if (mRunCheckTimer != nil)
        [self commandToolDidRunCheckTimer:mRunCheckTimer];
    /* A kill that came after the last run ended is not this run's. */
    pthread_mutex_lock(&gTaskLock);
    if (gPendingKills != NULL)
        NSHashRemove(gPendingKills, self);
    pthread_mutex_unlock(&gTaskLock);
    mRunning = YES;
    [mOutData setLength:0];
    [mErrData setLength:0];
    mSucceeded = NO;
    if (!asynchronous) {
        [self runCore:nil];
        return [self succeeded];
    }
    mRunCheckTimer = [[NSTimer scheduledTimerWithTimeInterval:0.2
                                                       target:self
                                                     selector:@selector(commandToolDidRunCheckTimer:)
                                                     userInfo:nil
                                                      repeats:YES] retain];
    [NSThread detachNewThreadSelector:@selector(runCore:) toTarget:self withObject:nil];
    return YES;
}

- (void)runCore:(id)ignored
{
    (void)ignored;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSPipe *inPipe = nil, *outPipe = nil, *errPipe = nil;
    NSData *input = [mInData retain];
    InputWriter writer;
    BOOL writing = NO;
    @try {
        /* Without the task or a pipe the run ends before launching, silently. */
        NSTask *made = [[CommandToolTask alloc] init];
        pthread_mutex_lock(&gTaskLock);
        mTask = made;
        BOOL killed = gPendingKills != NULL && NSHashGet(gPendingKills, self) != NULL;
        if (killed)
            NSHashRemove(gPendingKills, self);
        pthread_mutex_unlock(&gTaskLock);
        if (killed)
            [made terminate];
        BOOL ready = mTask != nil;
        if (ready && input != nil)
            ready = (inPipe = [[NSPipe alloc] init]) != nil;
        if (ready && mOutData != nil)
            ready = (outPipe = [[NSPipe alloc] init]) != nil;
        if (ready && mErrData != nil)
            ready = (errPipe = [[NSPipe alloc] init]) != nil;
        if (ready) {
            writing = [self launchWithInput:inPipe output:outPipe error:errPipe data:input writer:&writer];
            OutputStream output = {-1, mOutData, @selector(commandTool:readStandardOutputData:)};
            OutputStream error = {-1, mErrData, @selector(commandTool:readStandardErrorData:)};
            if (outPipe != nil)
                output.fd = [[outPipe fileHandleForReading] fileDescriptor];
            if (errPipe != nil)
                error.fd = [[errPipe fileHandleForReading] fileDescriptor];
            [self readOutput:&output error:&error];

            [mTask waitUntilExit];
            mSucceeded = YES;
        }
    } @catch (NSException *exception) {
        KORULogCaughtException("-[CommandTool runCore:]", __LINE__, exception);
    }
    /* The child has ended (or never started, or the run failed): input it
     * has not taken is of no use any more. */
    if (writing)
        InputWriterFinish(&writer);
    [input release];
    pthread_mutex_lock(&gTaskLock);
    NSTask *task = mTask;
    mTask = nil;
    if (gPendingKills != NULL)
        NSHashRemove(gPendingKills, self);
    pthread_mutex_unlock(&gTaskLock);
    [task release];
    [inPipe release];
    [outPipe release];
    [errPipe release];
    [pool release];
    __atomic_store_n(&mRunning, NO, __ATOMIC_RELEASE);
}

- (void)commandToolDidRunCheckTimer:(NSTimer *)timer
{
    (void)timer;
    if (__atomic_load_n(&mRunning, __ATOMIC_ACQUIRE))
        return;
    /* An observer may release the tool; it lives until this run loop pass ends. */
    [[self retain] autorelease];
    NSTimer *runCheckTimer = mRunCheckTimer;
    mRunCheckTimer = nil;
    [[NSNotificationCenter defaultCenter] postNotificationName:CommandToolDidRunNotification object:self];
    [runCheckTimer invalidate];
    [runCheckTimer release];
}

@end

@implementation CommandTool (Running)

/* Attaches the pipes, launches the program and starts feeding its input:
 * YES when a writer was started.  Raises when the program cannot run. */
- (BOOL)launchWithInput:(NSPipe *)inPipe
                 output:(NSPipe *)outPipe
                  error:(NSPipe *)errPipe
                   data:(NSData *)input
                 writer:(InputWriter *)writer
{
    if (inPipe != nil) {
        PreparePipe(inPipe);
        [mTask setStandardInput:inPipe];
    }
    if (outPipe != nil) {
        PreparePipe(outPipe);
        [mTask setStandardOutput:outPipe];
    }
    if (errPipe != nil) {
        PreparePipe(errPipe);
        [mTask setStandardError:errPipe];
    }
    /* Anything that is not a program fails here, as a launch does. */
    if (!IsExecutableFile(mToolPath))
        [NSException raise:NSInvalidArgumentException
                    format:@"launch path '%@' is not an executable file", mToolPath];
    [mTask setLaunchPath:mToolPath];
    if (mArgs != nil)
        [mTask setArguments:mArgs];
    [mTask launch];
    if (inPipe == nil)
        return NO;
    /* The writer gets a descriptor of its own; closing the handle leaves that
     * copy as the only writing end, so the child sees the end of its input
     * when the writer closes it. */
    int fd = DuplicateDescriptor([inPipe fileHandleForWriting]);
    [[inPipe fileHandleForWriting] closeFile];
    return fd >= 0 && InputWriterStart(writer, fd, input);
}

/* Reads what the stream holds: YES to go on reading, NO when the delegate
 * said to stop.  The end of the stream or a read error ends only this stream. */
- (BOOL)readStream:(OutputStream *)stream
{
    /* The buffers are always CaptureBuffers (setReadStandard...: makes them),
     * which take the bytes straight from the pipe. */
    CaptureBuffer *buffer = (CaptureBuffer *)stream->buffer;
    ssize_t n = [buffer appendFromDescriptor:stream->fd maximum:kReadChunkSize];
    if (n < 0 && (errno == EINTR || errno == EAGAIN))
        return YES;
    if (n <= 0) {
        stream->fd = -1;
        return YES;
    }
    if (mDelegate == nil || ![mDelegate respondsToSelector:stream->callback])
        return YES;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSData *data = [NSData dataWithBytes:(const unsigned char *)[buffer bytes] + [buffer length] - (NSUInteger)n
                                  length:(NSUInteger)n];
    BOOL goOn = stream->callback == @selector(commandTool:readStandardOutputData:)
                    ? [mDelegate commandTool:self readStandardOutputData:data]
                    : [mDelegate commandTool:self readStandardErrorData:data];
    [pool release];
    return goOn;
}

/* Reads both captured streams until each has ended, in rounds: every round
 * waits until either stream has something, then takes standard output
 * before standard error. */
- (void)readOutput:(OutputStream *)output error:(OutputStream *)error
{
    while (output->fd >= 0 || error->fd >= 0) {
        struct pollfd fds[2] = {{output->fd, POLLIN, 0}, {error->fd, POLLIN, 0}};
        if (poll(fds, 2, -1) < 0) {
            if (errno == EINTR)
                continue;
            break;
        }
        if (output->fd >= 0 && fds[0].revents != 0 && ![self readStream:output])
            break;
        if (error->fd >= 0 && fds[1].revents != 0 && ![self readStream:error])
            break;
    }
}

@end
