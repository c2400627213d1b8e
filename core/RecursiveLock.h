/* A C face of Foundation's recursive lock, for the C++ LockableImpl.
 * Private to the library.  Every function accepts NULL and then does nothing
 * (Create answers NULL only when Foundation could not make the lock). */
#ifndef KORU_CORE_RECURSIVELOCK_H
#define KORU_CORE_RECURSIVELOCK_H

#ifdef __cplusplus
extern "C" {
#endif

#define KORU_PRIVATE __attribute__((visibility("hidden")))

/* A new NSRecursiveLock, owned by the caller. */
KORU_PRIVATE void *KORURecursiveLockCreate(void);
KORU_PRIVATE void KORURecursiveLockLock(void *lock);
KORU_PRIVATE void KORURecursiveLockUnlock(void *lock);
/* Releases a lock made by KORURecursiveLockCreate. */
KORU_PRIVATE void KORURecursiveLockRelease(void *lock);

#undef KORU_PRIVATE

#ifdef __cplusplus
}
#endif

#endif
