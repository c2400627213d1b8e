// LockableImpl over Foundation's NSRecursiveLock, reached through the small C
// interface of RecursiveLock.m (C++ code never sends messages itself).
#include <KORU/Lockable.h>

#include "RecursiveLock.h"

ILockable::~ILockable() = default;

LockableImpl::LockableImpl() : mLock(KORURecursiveLockCreate())
{
}

LockableImpl::~LockableImpl()
{
    KORURecursiveLockRelease(mLock);
}

void LockableImpl::Lock()
{
    KORURecursiveLockLock(mLock);
}

void LockableImpl::Unlock()
{
    KORURecursiveLockUnlock(mLock);
}
