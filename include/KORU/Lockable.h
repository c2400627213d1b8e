/* ILockable and LockableImpl: the toolkit's mutual-exclusion primitive.
 *
 * LockableImpl holds a recursive lock: the thread that holds it may call
 * Lock() again, and each Lock() needs its own Unlock().  The lock is created
 * with the object and released with it; it must not be held then.  Lock()
 * and Unlock() may be called from any thread; the object itself is neither
 * copied nor assigned. */
#ifndef KORU_LOCKABLE_H
#define KORU_LOCKABLE_H

class ILockable {
public:
    virtual ~ILockable();
    /* Waits until the calling thread holds the lock. */
    virtual void Lock() = 0;
    /* Gives back one Lock() of the calling thread. */
    virtual void Unlock() = 0;
};

class LockableImpl : public ILockable {
public:
    LockableImpl();
    ~LockableImpl() override;
    void Lock() override;
    void Unlock() override;

    LockableImpl(const LockableImpl &) = delete;
    LockableImpl &operator=(const LockableImpl &) = delete;

private:
    void *mLock; /* the NSRecursiveLock, owned */
};

#endif
