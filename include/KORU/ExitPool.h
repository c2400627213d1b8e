/* The exit pool: a process-wide keeper for objects that must live until the
 * process ends, such as constants made on first use.  Each object added is
 * retained by the pool and released when the process exits normally (the
 * pool registers its release with atexit when it is first made).
 *
 * C and C++ hosts pass any CF or Foundation object as a CFTypeRef;
 * Objective-C callers pass an id.  There is no lock: the pool belongs to the
 * main thread. */
#ifndef KORU_EXITPOOL_H
#define KORU_EXITPOOL_H

#include <CoreFoundation/CoreFoundation.h>

CF_EXTERN_C_BEGIN

/* Retains object until exit; nothing for NULL or nil.  When the pool cannot
 * be set up the object is not kept and "Sorry, ReleaseExitPool() wasn't
 * registered." or "Sorry, ExitPool wasn't allocated." is logged. */
#ifdef __OBJC__
void AddToExitPool(id object);
#else
void AddToExitPool(CFTypeRef object);
#endif

/* Releases the pool and every object in it now; a later AddToExitPool makes a
 * new pool.  Nothing happens when there is no pool. */
void ReleaseExitPool(void);

CF_EXTERN_C_END

#endif
