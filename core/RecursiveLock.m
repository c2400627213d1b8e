/* Foundation's recursive lock behind a C interface.  Exceptions raised by
 * Foundation (an unlock by a thread that does not hold the lock) are caught
 * here so that they never unwind into C++ frames. */
#import <Foundation/Foundation.h>

#include "RecursiveLock.h"

/* Callers from C and C++ have no autorelease pool; an exception Foundation
 * raises is autoreleased, so the calls that can raise run inside one. */
void *KORURecursiveLockCreate(void)
{
    NSRecursiveLock *lock = nil;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NS_DURING
        lock = [[NSRecursiveLock alloc] init];
    NS_HANDLER
        lock = nil;
    NS_ENDHANDLER
    [pool drain];
    return lock;
}

void KORURecursiveLockLock(void *lock)
{
    if (lock == NULL)
        return;
    NS_DURING
        [(NSRecursiveLock *)lock lock];
    NS_HANDLER
    NS_ENDHANDLER
}

void KORURecursiveLockUnlock(void *lock)
{
    if (lock == NULL)
        return;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NS_DURING
        [(NSRecursiveLock *)lock unlock];
    NS_HANDLER
    NS_ENDHANDLER
    [pool drain];
}

void KORURecursiveLockRelease(void *lock)
{
    if (lock == NULL)
        return;
    [(NSRecursiveLock *)lock release];
}
