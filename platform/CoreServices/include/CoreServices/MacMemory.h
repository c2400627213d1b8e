/* Memory Manager: relocatable blocks (handles) and non-relocatable blocks
 * (pointers).
 *
 * A Handle points at a master pointer that points at the block; the block may
 * move when its size changes, the master pointer stays.  Whoever creates a
 * handle or pointer frees it (DisposeHandle, DisposePtr); NULL is accepted
 * everywhere and does nothing.  MemError answers the result of the calling
 * thread's last Memory Manager call.  Blocks are never purged, and locking
 * only records the state, since blocks never move on their own here. */
#ifndef CORESERVICES_MACMEMORY_H
#define CORESERVICES_MACMEMORY_H

#include <MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A new handle of byteCount bytes (NewHandleClear: zeroed); NULL with
 * MemError memFullErr when memory is short or byteCount is negative. */
Handle NewHandle(Size byteCount);
Handle NewHandleClear(Size byteCount);
void DisposeHandle(Handle h);
/* 0 for NULL (MemError nilHandleErr). */
Size GetHandleSize(Handle h);
/* Keeps the leading bytes; new bytes are zero.  MemError tells the outcome. */
void SetHandleSize(Handle h, Size newSize);
/* A copy of a pointer's bytes in a new handle at *h; memFullErr or paramErr. */
OSErr PtrToHand(const void *srcPtr, Handle *dstHndl, long size);
/* A new handle with the same bytes; paramErr for NULL. */
OSErr HandToHand(Handle *theHndl);
void HLock(Handle h);
void HUnlock(Handle h);
SInt8 HGetState(Handle h);
void HSetState(Handle h, SInt8 flags);

Ptr NewPtr(Size byteCount);
Ptr NewPtrClear(Size byteCount);
void DisposePtr(Ptr p);
Size GetPtrSize(Ptr p);

/* memmove */
void BlockMoveData(const void *srcPtr, void *destPtr, Size byteCount);

OSErr MemError(void);

#ifdef __cplusplus
}
#endif

#endif
