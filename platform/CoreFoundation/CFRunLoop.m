/* CFRunLoop over NSRunLoop and CFRunLoopTimer over NSTimer.  Foundation has
 * no stop or wake-up for a run loop, so each loop seen here gets a small
 * record: its thread (to wake it by performing a no-op there) and a stop
 * request that the run functions check each time Foundation returns. */
#include "CFInternal.h"

const CFStringRef kCFRunLoopDefaultMode = (CFStringRef) @"NSDefaultRunLoopMode";
const CFStringRef kCFRunLoopCommonModes = (CFStringRef) @"kCFRunLoopCommonModes";

@interface __KCFRunLoopState : NSObject {
@public
    NSThread *_thread;
    volatile BOOL _stopRequested;
    unsigned long _timerCallouts;
}
- (void)wake;
@end

@implementation __KCFRunLoopState
- (void)wake
{
    /* Performed on the loop's thread only to make Foundation return. */
}
- (void)dealloc
{
    [_thread release];
    [super dealloc];
}
@end

static NSLock *__CFRunLoopStatesLock;
static NSMutableDictionary *__CFRunLoopStates;

@interface __KCFRunLoopRegistry : NSObject
@end

@implementation __KCFRunLoopRegistry
+ (void)load
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    __CFRunLoopStatesLock = [[NSLock alloc] init];
    __CFRunLoopStates = [[NSMutableDictionary alloc] init];
    [pool drain];
}
@end

/* The record of a run loop; thread is recorded when the caller runs on the loop's thread. */
static __KCFRunLoopState *__CFRunLoopState(NSRunLoop *loop, NSThread *thread)
{
    NSValue *key = [NSValue valueWithPointer:loop];
    [__CFRunLoopStatesLock lock];
    __KCFRunLoopState *state = [__CFRunLoopStates objectForKey:key];
    if (state == nil) {
        state = [[__KCFRunLoopState alloc] init];
        [__CFRunLoopStates setObject:state forKey:key];
        [state release];
    }
    if (thread != nil && state->_thread != thread) {
        [state->_thread release];
        state->_thread = [thread retain];
    }
    [[state retain] autorelease];
    [__CFRunLoopStatesLock unlock];
    return state;
}

static NSString *__CFRunLoopMode(CFStringRef mode)
{
    if (mode == NULL || CFEqual(mode, kCFRunLoopCommonModes))
        return NSDefaultRunLoopMode;
    return (NSString *)mode;
}

CFTypeID CFRunLoopGetTypeID(void)
{
    return __kCFRunLoopTypeID;
}

CFRunLoopRef CFRunLoopGetCurrent(void)
{
    NSRunLoop *loop;
    __CF_POOL_BEGIN
    loop = [NSRunLoop currentRunLoop];
    __CFRunLoopState(loop, [NSThread currentThread]);
    __CF_POOL_END
    return (CFRunLoopRef)loop;
}

CFRunLoopRef CFRunLoopGetMain(void)
{
    NSRunLoop *loop;
    __CF_POOL_BEGIN
    loop = [NSRunLoop mainRunLoop];
    __CFRunLoopState(loop, [NSThread mainThread]);
    __CF_POOL_END
    return (CFRunLoopRef)loop;
}

SInt32 CFRunLoopRunInMode(CFStringRef mode, CFTimeInterval seconds, Boolean returnAfterSourceHandled)
{
    if (mode == NULL)
        return kCFRunLoopRunFinished;
    SInt32 result = kCFRunLoopRunTimedOut;
    __CF_POOL_BEGIN
    NSRunLoop *loop = [NSRunLoop currentRunLoop];
    __KCFRunLoopState *state = __CFRunLoopState(loop, [NSThread currentThread]);
    NSString *runMode = __CFRunLoopMode(mode);
    NSDate *deadline = [[NSDate alloc] initWithTimeIntervalSinceNow:seconds > 0 ? seconds : 0];
    for (;;) {
        if (state->_stopRequested) {
            state->_stopRequested = NO;
            result = kCFRunLoopRunStopped;
            break;
        }
        NSAutoreleasePool *turn = [[NSAutoreleasePool alloc] init];
        unsigned long calloutsBefore = state->_timerCallouts;
        BOOL ran = NO;
        @try {
            ran = [loop runMode:runMode beforeDate:deadline];
        } @catch (NSException *exception) {
            ran = YES;
        }
        [turn drain];
        if (state->_stopRequested) {
            state->_stopRequested = NO;
            result = kCFRunLoopRunStopped;
            break;
        }
        if (!ran) {
            result = kCFRunLoopRunFinished;
            break;
        }
        if ([deadline timeIntervalSinceNow] <= 0) {
            result = kCFRunLoopRunTimedOut;
            break;
        }
        /* A timer is not a source: a turn that only fired CF timers goes on. */
        if (returnAfterSourceHandled && state->_timerCallouts == calloutsBefore) {
            result = kCFRunLoopRunHandledSource;
            break;
        }
    }
    [deadline release];
    __CF_POOL_END
    return result;
}

void CFRunLoopRun(void)
{
    SInt32 result;
    do {
        result = CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1.0e10, false);
    } while (result != kCFRunLoopRunStopped && result != kCFRunLoopRunFinished);
}

void CFRunLoopWakeUp(CFRunLoopRef rl)
{
    if (rl == NULL)
        return;
    __CF_POOL_BEGIN
    __KCFRunLoopState *state = __CFRunLoopState((NSRunLoop *)rl, nil);
    NSThread *thread = state->_thread;
    if (thread != nil && ![thread isFinished]) {
        NSString *current = [(NSRunLoop *)rl currentMode];
        NSArray *modes = current != nil && ![current isEqualToString:NSDefaultRunLoopMode]
                             ? [NSArray arrayWithObjects:NSDefaultRunLoopMode, current, nil]
                             : [NSArray arrayWithObject:NSDefaultRunLoopMode];
        [state performSelector:@selector(wake) onThread:thread withObject:nil waitUntilDone:NO modes:modes];
    }
    __CF_POOL_END
}

void CFRunLoopStop(CFRunLoopRef rl)
{
    if (rl == NULL)
        return;
    __CF_POOL_BEGIN
    __CFRunLoopState((NSRunLoop *)rl, nil)->_stopRequested = YES;
    __CF_POOL_END
    CFRunLoopWakeUp(rl);
}

CFStringRef CFRunLoopCopyCurrentMode(CFRunLoopRef rl)
{
    __CF_SCOPED_POOL
    if (rl == NULL)
        return NULL;
    return (CFStringRef)[[(NSRunLoop *)rl currentMode] copy];
}

/* ---- Timers ------------------------------------------------------------ */

/* The target of a CF timer: calls the callout with the context's info, and
 * gives the info back to the context's release when the timer goes. */
@interface __KCFTimerTarget : NSObject {
@public
    CFRunLoopTimerCallBack _callout;
    CFRunLoopTimerContext _context;
    BOOL _repeats;
}
- (void)fire:(NSTimer *)timer;
@end

@implementation __KCFTimerTarget
- (void)fire:(NSTimer *)timer
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    /* Foundation may fire a due timer again before it returns to the loop
     * that was stopped; a stopped loop runs no more callouts. */
    __KCFRunLoopState *state = __CFRunLoopState([NSRunLoop currentRunLoop], nil);
    if (!state->_stopRequested) {
        state->_timerCallouts++;
        _callout((CFRunLoopTimerRef)timer, _context.info);
    }
    [pool drain];
}
- (void)dealloc
{
    if (_context.release != NULL && _context.info != NULL)
        _context.release(_context.info);
    [super dealloc];
}
@end

static NSTimer *__CFTimer(CFRunLoopTimerRef timer)
{
    id object = (id)timer;
    return [object isKindOfClass:[NSTimer class]] ? (NSTimer *)object : nil;
}

static __KCFTimerTarget *__CFTimerTarget(NSTimer *timer)
{
    id info = [timer isValid] ? [timer userInfo] : nil;
    return [info isKindOfClass:[__KCFTimerTarget class]] ? (__KCFTimerTarget *)info : nil;
}

CFTypeID CFRunLoopTimerGetTypeID(void)
{
    return __kCFRunLoopTimerTypeID;
}

CFRunLoopTimerRef CFRunLoopTimerCreate(CFAllocatorRef allocator, CFAbsoluteTime fireDate, CFTimeInterval interval,
                                       CFOptionFlags flags, CFIndex order, CFRunLoopTimerCallBack callout,
                                       CFRunLoopTimerContext *context)
{
    (void)allocator;
    (void)flags;
    (void)order;
    if (callout == NULL)
        return NULL;
    NSTimer *timer;
    __CF_POOL_BEGIN
    __KCFTimerTarget *target = [[__KCFTimerTarget alloc] init];
    target->_callout = callout;
    target->_repeats = interval > 0;
    if (context != NULL) {
        target->_context = *context;
        if (context->retain != NULL && context->info != NULL)
            target->_context.info = (void *)context->retain(context->info);
    }
    NSDate *date = [NSDate dateWithTimeIntervalSinceReferenceDate:fireDate];
    timer = [[NSTimer alloc] initWithFireDate:date
                                     interval:interval > 0 ? interval : 0
                                       target:target
                                     selector:@selector(fire:)
                                     userInfo:target
                                      repeats:interval > 0];
    [target release];
    __CF_POOL_END
    return (CFRunLoopTimerRef)timer;
}

void CFRunLoopAddTimer(CFRunLoopRef rl, CFRunLoopTimerRef timer, CFStringRef mode)
{
    NSTimer *nsTimer = __CFTimer(timer);
    if (rl == NULL || nsTimer == nil || mode == NULL || ![nsTimer isValid])
        return;
    __CF_POOL_BEGIN
    [(NSRunLoop *)rl addTimer:nsTimer forMode:__CFRunLoopMode(mode)];
    __CF_POOL_END
}

void CFRunLoopRemoveTimer(CFRunLoopRef rl, CFRunLoopTimerRef timer, CFStringRef mode)
{
    if (rl == NULL || mode == NULL)
        return;
    CFRunLoopTimerInvalidate(timer);
}

void CFRunLoopTimerInvalidate(CFRunLoopTimerRef timer)
{
    NSTimer *nsTimer = __CFTimer(timer);
    if (nsTimer == nil)
        return;
    __CF_POOL_BEGIN
    [nsTimer invalidate];
    __CF_POOL_END
}

Boolean CFRunLoopTimerIsValid(CFRunLoopTimerRef timer)
{
    NSTimer *nsTimer = __CFTimer(timer);
    return nsTimer != nil && [nsTimer isValid];
}

Boolean CFRunLoopTimerDoesRepeat(CFRunLoopTimerRef timer)
{
    NSTimer *nsTimer = __CFTimer(timer);
    __KCFTimerTarget *target = __CFTimerTarget(nsTimer);
    if (target != nil)
        return target->_repeats;
    return nsTimer != nil && [nsTimer timeInterval] > 0;
}

CFTimeInterval CFRunLoopTimerGetInterval(CFRunLoopTimerRef timer)
{
    NSTimer *nsTimer = __CFTimer(timer);
    if (nsTimer == nil || !CFRunLoopTimerDoesRepeat(timer))
        return 0;
    return [nsTimer timeInterval];
}

CFAbsoluteTime CFRunLoopTimerGetNextFireDate(CFRunLoopTimerRef timer)
{
    NSTimer *nsTimer = __CFTimer(timer);
    if (nsTimer == nil)
        return 0;
    return [[nsTimer fireDate] timeIntervalSinceReferenceDate];
}

void CFRunLoopTimerSetNextFireDate(CFRunLoopTimerRef timer, CFAbsoluteTime fireDate)
{
    NSTimer *nsTimer = __CFTimer(timer);
    if (nsTimer == nil)
        return;
    __CF_POOL_BEGIN
    [nsTimer setFireDate:[NSDate dateWithTimeIntervalSinceReferenceDate:fireDate]];
    __CF_POOL_END
}

void CFRunLoopTimerGetContext(CFRunLoopTimerRef timer, CFRunLoopTimerContext *context)
{
    if (context == NULL)
        return;
    __KCFTimerTarget *target = __CFTimerTarget(__CFTimer(timer));
    if (target != nil) {
        *context = target->_context;
        context->version = 0;
    } else {
        memset(context, 0, sizeof(*context));
    }
}
