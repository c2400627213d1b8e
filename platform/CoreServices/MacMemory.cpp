/* Handles and pointers over malloc. */
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <cstdlib>
#include <cstring>

namespace {

// A handle is the address of 'master'; the size lives beside it.
struct MasterBlock {
    char *master;
    Size size;
    SInt8 state;
};

// A pointer block starts with its size, kept 16-byte aligned.
struct alignas(16) PointerHeader {
    Size size;
};

thread_local OSErr lastError = noErr;

MasterBlock *BlockOf(Handle h)
{
    return reinterpret_cast<MasterBlock *>(h);
}

PointerHeader *HeaderOf(Ptr p)
{
    return reinterpret_cast<PointerHeader *>(p) - 1;
}

Handle MakeHandle(Size byteCount, bool clear)
{
    if (byteCount < 0) {
        lastError = memFullErr;
        return nullptr;
    }
    auto *block = static_cast<MasterBlock *>(std::malloc(sizeof(MasterBlock)));
    // One byte at least, so that *h is never NULL for a live handle.
    char *data = static_cast<char *>(clear ? std::calloc(1, static_cast<size_t>(byteCount) + 1)
                                           : std::malloc(static_cast<size_t>(byteCount) + 1));
    if (!block || !data) {
        std::free(block);
        std::free(data);
        lastError = memFullErr;
        return nullptr;
    }
    block->master = data;
    block->size = byteCount;
    block->state = 0;
    lastError = noErr;
    return &block->master;
}

Ptr MakePointer(Size byteCount, bool clear)
{
    if (byteCount < 0) {
        lastError = memFullErr;
        return nullptr;
    }
    const size_t total = sizeof(PointerHeader) + static_cast<size_t>(byteCount);
    auto *header = static_cast<PointerHeader *>(clear ? std::calloc(1, total) : std::malloc(total));
    if (!header) {
        lastError = memFullErr;
        return nullptr;
    }
    header->size = byteCount;
    lastError = noErr;
    return reinterpret_cast<Ptr>(header + 1);
}

} // namespace

extern "C" {

Handle NewHandle(Size byteCount)
{
    return MakeHandle(byteCount, false);
}

Handle NewHandleClear(Size byteCount)
{
    return MakeHandle(byteCount, true);
}

void DisposeHandle(Handle h)
{
    if (!h) {
        lastError = nilHandleErr;
        return;
    }
    std::free(BlockOf(h)->master);
    std::free(BlockOf(h));
    lastError = noErr;
}

Size GetHandleSize(Handle h)
{
    if (!h) {
        lastError = nilHandleErr;
        return 0;
    }
    lastError = noErr;
    return BlockOf(h)->size;
}

void SetHandleSize(Handle h, Size newSize)
{
    if (!h) {
        lastError = nilHandleErr;
        return;
    }
    if (newSize < 0) {
        lastError = memFullErr;
        return;
    }
    MasterBlock *block = BlockOf(h);
    char *data = static_cast<char *>(std::realloc(block->master, static_cast<size_t>(newSize) + 1));
    if (!data) {
        lastError = memFullErr;
        return;
    }
    if (newSize > block->size)
        std::memset(data + block->size, 0, static_cast<size_t>(newSize - block->size));
    block->master = data;
    block->size = newSize;
    lastError = noErr;
}

OSErr PtrToHand(const void *srcPtr, Handle *dstHndl, long size)
{
    if (dstHndl)
        *dstHndl = nullptr;
    if (!dstHndl || size < 0 || (!srcPtr && size > 0))
        return lastError = paramErr;
    Handle h = NewHandle(size);
    if (!h)
        return memFullErr;
    if (size > 0)
        std::memcpy(*h, srcPtr, static_cast<size_t>(size));
    *dstHndl = h;
    return noErr;
}

OSErr HandToHand(Handle *theHndl)
{
    if (!theHndl || !*theHndl)
        return lastError = paramErr;
    Handle source = *theHndl;
    return PtrToHand(*source, theHndl, BlockOf(source)->size);
}

void HLock(Handle h)
{
    if (h)
        BlockOf(h)->state |= static_cast<SInt8>(0x80);
    lastError = h ? OSErr(noErr) : OSErr(nilHandleErr);
}

void HUnlock(Handle h)
{
    if (h)
        BlockOf(h)->state &= 0x7F;
    lastError = h ? OSErr(noErr) : OSErr(nilHandleErr);
}

SInt8 HGetState(Handle h)
{
    lastError = h ? OSErr(noErr) : OSErr(nilHandleErr);
    return h ? BlockOf(h)->state : 0;
}

void HSetState(Handle h, SInt8 flags)
{
    if (h)
        BlockOf(h)->state = flags;
    lastError = h ? OSErr(noErr) : OSErr(nilHandleErr);
}

Ptr NewPtr(Size byteCount)
{
    return MakePointer(byteCount, false);
}

Ptr NewPtrClear(Size byteCount)
{
    return MakePointer(byteCount, true);
}

void DisposePtr(Ptr p)
{
    if (p)
        std::free(HeaderOf(p));
    lastError = noErr;
}

Size GetPtrSize(Ptr p)
{
    lastError = p ? OSErr(noErr) : OSErr(paramErr);
    return p ? HeaderOf(p)->size : 0;
}

void BlockMoveData(const void *srcPtr, void *destPtr, Size byteCount)
{
    if (srcPtr && destPtr && byteCount > 0)
        std::memmove(destPtr, srcPtr, static_cast<size_t>(byteCount));
}

OSErr MemError(void)
{
    return lastError;
}

} // extern "C"
