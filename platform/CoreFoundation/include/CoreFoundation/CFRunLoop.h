/* Run loops and timers over Foundation's.  A CFRunLoopRef is the thread's
 * NSRunLoop *, a CFRunLoopTimerRef an NSTimer *, so a timer added with CF
 * fires in a loop run by Foundation and the reverse.  Get results are lent;
 * a timer from CFRunLoopTimerCreate is released with CFRelease (the run
 * loop holds its own reference while the timer is scheduled).  A run loop
 * is run only by its own thread; CFRunLoopStop and CFRunLoopWakeUp may be
 * called from any thread. */
#ifndef COREFOUNDATION_CFRUNLOOP_H
#define COREFOUNDATION_CFRUNLOOP_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFDate.h>

CF_EXTERN_C_BEGIN

typedef struct __CFRunLoop *CFRunLoopRef;
typedef struct __CFRunLoopTimer *CFRunLoopTimerRef;

/* The default mode is Foundation's NSDefaultRunLoopMode. */
CF_EXPORT const CFStringRef kCFRunLoopDefaultMode;
CF_EXPORT const CFStringRef kCFRunLoopCommonModes;

enum {
    kCFRunLoopRunFinished = 1,
    kCFRunLoopRunStopped = 2,
    kCFRunLoopRunTimedOut = 3,
    kCFRunLoopRunHandledSource = 4
};

CF_EXPORT CFTypeID CFRunLoopGetTypeID(void);
CF_EXPORT CFRunLoopRef CFRunLoopGetCurrent(void);
CF_EXPORT CFRunLoopRef CFRunLoopGetMain(void);
/* Runs the current thread's loop in the default mode until it is stopped
 * or has no timers or sources left. */
CF_EXPORT void CFRunLoopRun(void);
/* Runs the current thread's loop in mode for at most seconds; answers one
 * of the kCFRunLoopRun results.  With returnAfterSourceHandled it returns
 * after the first event other than a CF timer.  kCFRunLoopRunFinished for a
 * NULL mode. */
CF_EXPORT SInt32 CFRunLoopRunInMode(CFStringRef mode, CFTimeInterval seconds, Boolean returnAfterSourceHandled);
/* Makes the innermost CFRunLoopRun or CFRunLoopRunInMode of rl return. */
CF_EXPORT void CFRunLoopStop(CFRunLoopRef rl);
/* Makes a waiting rl look at its timers and sources again. */
CF_EXPORT void CFRunLoopWakeUp(CFRunLoopRef rl);
/* The mode rl is running in; NULL when it is not running. */
CF_EXPORT CFStringRef CFRunLoopCopyCurrentMode(CFRunLoopRef rl);

typedef struct {
    CFIndex version;
    void *info;
    const void *(*retain)(const void *info);
    void (*release)(const void *info);
    CFStringRef (*copyDescription)(const void *info);
} CFRunLoopTimerContext;

typedef void (*CFRunLoopTimerCallBack)(CFRunLoopTimerRef timer, void *info);

CF_EXPORT CFTypeID CFRunLoopTimerGetTypeID(void);
/* A timer that calls callout at fireDate, then every interval seconds when
 * interval > 0 (once when 0).  flags and order are ignored.  context is
 * copied; its retain is called on info.  NULL for a NULL callout. */
CF_EXPORT CFRunLoopTimerRef CFRunLoopTimerCreate(CFAllocatorRef allocator, CFAbsoluteTime fireDate, CFTimeInterval interval, CFOptionFlags flags, CFIndex order, CFRunLoopTimerCallBack callout, CFRunLoopTimerContext *context);
CF_EXPORT void CFRunLoopAddTimer(CFRunLoopRef rl, CFRunLoopTimerRef timer, CFStringRef mode);
/* Foundation cannot take a timer out of one mode and keep it: removing a
 * timer invalidates it, as CFRunLoopTimerInvalidate does. */
CF_EXPORT void CFRunLoopRemoveTimer(CFRunLoopRef rl, CFRunLoopTimerRef timer, CFStringRef mode);
/* Stops the timer for good and removes it from every run loop. */
CF_EXPORT void CFRunLoopTimerInvalidate(CFRunLoopTimerRef timer);
CF_EXPORT Boolean CFRunLoopTimerIsValid(CFRunLoopTimerRef timer);
CF_EXPORT Boolean CFRunLoopTimerDoesRepeat(CFRunLoopTimerRef timer);
CF_EXPORT CFTimeInterval CFRunLoopTimerGetInterval(CFRunLoopTimerRef timer);
CF_EXPORT CFAbsoluteTime CFRunLoopTimerGetNextFireDate(CFRunLoopTimerRef timer);
CF_EXPORT void CFRunLoopTimerSetNextFireDate(CFRunLoopTimerRef timer, CFAbsoluteTime fireDate);
/* Fills context (version 0) with the one the timer was made with. */
CF_EXPORT void CFRunLoopTimerGetContext(CFRunLoopTimerRef timer, CFRunLoopTimerContext *context);

CF_EXTERN_C_END

#endif
