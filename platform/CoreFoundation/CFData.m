/* CFData over NSData and NSMutableData. */
#include "CFInternal.h"
#include <stdlib.h>
#include <string.h>

CFTypeID CFDataGetTypeID(void)
{
    return __kCFDataTypeID;
}

static BOOL __CFIsMutableData(CFMutableDataRef data)
{
    return data != NULL && [(id)data isKindOfClass:[NSMutableData class]];
}

static BOOL __CFDataRangeIsValid(CFRange range, CFIndex length)
{
    return range.location >= 0 && range.length >= 0 && range.location <= length &&
           range.length <= length - range.location;
}

CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8 *bytes, CFIndex length)
{
    (void)allocator;
    if (length < 0 || (bytes == NULL && length > 0))
        return NULL;
    return (CFDataRef)[[NSData alloc] initWithBytes:bytes length:(NSUInteger)length];
}

CFDataRef CFDataCreateWithBytesNoCopy(CFAllocatorRef allocator, const UInt8 *bytes, CFIndex length,
                                      CFAllocatorRef bytesDeallocator)
{
    (void)allocator;
    if (length < 0 || (bytes == NULL && length > 0))
        return NULL;
    return (CFDataRef)[[NSData alloc] initWithBytesNoCopy:(void *)bytes length:(NSUInteger)length
                                             freeWhenDone:__CFAllocatorFreesWithFree(bytesDeallocator)];
}

CFDataRef CFDataCreateCopy(CFAllocatorRef allocator, CFDataRef theData)
{
    (void)allocator;
    if (theData == NULL)
        return NULL;
    return (CFDataRef)[(NSData *)theData copy];
}

CFMutableDataRef CFDataCreateMutable(CFAllocatorRef allocator, CFIndex capacity)
{
    (void)allocator;
    if (capacity < 0)
        return NULL;
    return (CFMutableDataRef)[[NSMutableData alloc] initWithCapacity:(NSUInteger)capacity];
}

CFMutableDataRef CFDataCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity, CFDataRef theData)
{
    (void)allocator;
    if (capacity < 0)
        return NULL;
    if (theData == NULL)
        return CFDataCreateMutable(allocator, capacity);
    return (CFMutableDataRef)[(NSData *)theData mutableCopy];
}

CFIndex CFDataGetLength(CFDataRef theData)
{
    if (theData == NULL)
        return 0;
    return (CFIndex)[(NSData *)theData length];
}

const UInt8 *CFDataGetBytePtr(CFDataRef theData)
{
    if (theData == NULL || CFDataGetLength(theData) == 0)
        return NULL;
    return (const UInt8 *)[(NSData *)theData bytes];
}

UInt8 *CFDataGetMutableBytePtr(CFMutableDataRef theData)
{
    if (!__CFIsMutableData(theData) || CFDataGetLength(theData) == 0)
        return NULL;
    return (UInt8 *)[(NSMutableData *)theData mutableBytes];
}

void CFDataGetBytes(CFDataRef theData, CFRange range, UInt8 *buffer)
{
    if (theData == NULL || buffer == NULL || !__CFDataRangeIsValid(range, CFDataGetLength(theData)))
        return;
    [(NSData *)theData getBytes:buffer range:NSMakeRange((NSUInteger)range.location, (NSUInteger)range.length)];
}

void CFDataSetLength(CFMutableDataRef theData, CFIndex length)
{
    if (!__CFIsMutableData(theData) || length < 0)
        return;
    [(NSMutableData *)theData setLength:(NSUInteger)length];
}

void CFDataIncreaseLength(CFMutableDataRef theData, CFIndex extraLength)
{
    if (!__CFIsMutableData(theData) || extraLength < 0)
        return;
    [(NSMutableData *)theData increaseLengthBy:(NSUInteger)extraLength];
}

void CFDataAppendBytes(CFMutableDataRef theData, const UInt8 *bytes, CFIndex length)
{
    if (!__CFIsMutableData(theData) || length <= 0 || bytes == NULL)
        return;
    [(NSMutableData *)theData appendBytes:bytes length:(NSUInteger)length];
}

void CFDataReplaceBytes(CFMutableDataRef theData, CFRange range, const UInt8 *newBytes, CFIndex newLength)
{
    if (!__CFIsMutableData(theData) || newLength < 0 || (newBytes == NULL && newLength > 0) ||
        !__CFDataRangeIsValid(range, CFDataGetLength(theData)))
        return;
    [(NSMutableData *)theData replaceBytesInRange:NSMakeRange((NSUInteger)range.location, (NSUInteger)range.length)
                                        withBytes:newBytes
                                           length:(NSUInteger)newLength];
}

void CFDataDeleteBytes(CFMutableDataRef theData, CFRange range)
{
    CFDataReplaceBytes(theData, range, NULL, 0);
}
