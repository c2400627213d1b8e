/* mremap */
#define _GNU_SOURCE 1

#import "CaptureBuffer.h"

#include <errno.h>
#include <stdint.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

enum {
    kMinimumCapacity = 64 * 1024,
    kHugePageSize = 2 * 1024 * 1024
};

@implementation CaptureBuffer

/* Maps or remaps the storage to hold at least capacity bytes; NO (storage
 * unchanged) when the system has no memory for it. */
- (BOOL)growTo:(NSUInteger)capacity
{
    NSUInteger size = mCapacity < kMinimumCapacity ? kMinimumCapacity : mCapacity;
    while (size < capacity) {
        if (size > NSUIntegerMax / 2)
            return NO;
        size *= 2;
    }
    if (size <= mCapacity)
        return YES;
    void *bytes = mBytes == NULL ? mmap(NULL, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)
                                 : mremap(mBytes, mCapacity, size, MREMAP_MAYMOVE);
    if (bytes == MAP_FAILED)
        return NO;
    /* A huge page is filled with one fault instead of 512. */
    if (size >= 2 * kHugePageSize) {
        uintptr_t start = ((uintptr_t)bytes + kHugePageSize - 1) & ~(uintptr_t)(kHugePageSize - 1);
        uintptr_t end = ((uintptr_t)bytes + size) & ~(uintptr_t)(kHugePageSize - 1);
        if (end > start)
            madvise((void *)start, end - start, MADV_HUGEPAGE);
    }
    mBytes = bytes;
    mCapacity = size;
    return YES;
}

- (id)initWithCapacity:(NSUInteger)capacity
{
    self = [self initWithBytesNoCopy:NULL length:0 freeWhenDone:NO];
    if (self != nil && capacity > 0 && ![self growTo:capacity]) {
        [self release];
        return nil;
    }
    return self;
}

- (id)initWithBytesNoCopy:(void *)bytes length:(NSUInteger)length freeWhenDone:(BOOL)shouldFree
{
    /* The only initialiser GNUstep's data classes lead to: the bytes are
     * copied into the buffer's own storage. */
    if (length > 0 && (bytes == NULL || ![self growTo:length])) {
        if (bytes != NULL && shouldFree)
            free(bytes);
        [self release];
        return nil;
    }
    if (length > 0)
        memcpy(mBytes, bytes, length);
    mLength = length;
    if (bytes != NULL && shouldFree)
        free(bytes);
    return self;
}

- (void)dealloc
{
    if (mBytes != NULL)
        munmap(mBytes, mCapacity);
    [super dealloc];
}

- (const void *)bytes
{
    return mBytes;
}

- (void *)mutableBytes
{
    return mBytes;
}

- (NSUInteger)length
{
    return mLength;
}

- (NSUInteger)capacity
{
    return mCapacity;
}

- (id)setCapacity:(NSUInteger)capacity
{
    if (capacity > mCapacity && ![self growTo:capacity])
        [NSException raise:NSMallocException format:@"CaptureBuffer: no memory for %lu bytes", (unsigned long)capacity];
    return self;
}

- (void)setLength:(NSUInteger)length
{
    if (length > mCapacity && ![self growTo:length])
        [NSException raise:NSMallocException format:@"CaptureBuffer: no memory for %lu bytes", (unsigned long)length];
    if (length > mLength)
        memset(mBytes + mLength, 0, length - mLength);
    mLength = length;
}

- (void)appendBytes:(const void *)bytes length:(NSUInteger)length
{
    if (length == 0)
        return;
    /* Bytes of this buffer's own (appending the data to itself) move with
     * the storage when it grows. */
    uintptr_t address = (uintptr_t)bytes, start = (uintptr_t)mBytes;
    BOOL own = mBytes != NULL && address >= start && address < start + mCapacity;
    NSUInteger offset = own ? (NSUInteger)(address - start) : 0;
    if (length > NSUIntegerMax - mLength ||
        (mLength + length > mCapacity && ![self growTo:mLength + length]))
        [NSException raise:NSMallocException format:@"CaptureBuffer: no memory for %lu more bytes", (unsigned long)length];
    if (own)
        bytes = mBytes + offset;
    memmove(mBytes + mLength, bytes, length);
    mLength += length;
}

- (ssize_t)appendFromDescriptor:(int)fd maximum:(NSUInteger)maximum
{
    if (maximum > NSUIntegerMax - mLength || (mLength + maximum > mCapacity && ![self growTo:mLength + maximum])) {
        errno = ENOMEM;
        return -1;
    }
    ssize_t n = read(fd, mBytes + mLength, maximum);
    if (n > 0)
        mLength += (NSUInteger)n;
    return n;
}

- (void)appendData:(NSData *)data
{
    [self appendBytes:[data bytes] length:[data length]];
}

@end
