/* NSData(FoundationX) and NSMutableData(FoundationX). */
#import <KORU/NSData+FoundationX.h>

#include <KORU/MemoryCipher.h>

#include <CoreFoundation/CoreFoundation.h>

#include <stdlib.h>
#include <string.h>

enum { kCipherBlockSize = 8 };

@implementation NSData (FoundationX)

- (id)initWithPropertyList:(id)propertyList
{
    CFDataRef data = propertyList != nil ? CFPropertyListCreateXMLData(kCFAllocatorDefault, propertyList) : NULL;
    if (data == NULL) {
        [self release];
        return nil;
    }
    id result = [self initWithData:(NSData *)data];
    CFRelease(data);
    return result;
}

+ (id)dataWithPropertyList:(id)propertyList
{
    return [[[self alloc] initWithPropertyList:propertyList] autorelease];
}

- (void *)callocCopy
{
    NSUInteger length = [self length];
    if (length == 0 || length > NSUIntegerMax - 2 * kCipherBlockSize)
        return NULL;
    // One byte more for the terminator, then up to a whole block, so that
    // MemDecrypt, which works on whole blocks, never runs past the copy.
    NSUInteger size = (length + 1 + kCipherBlockSize - 1) / kCipherBlockSize * kCipherBlockSize;
    void *copy = calloc(size, 1);
    if (copy != NULL)
        memcpy(copy, [self bytes], length);
    return copy;
}

- (NSData *)encryptedData:(const char *)key
{
    NSUInteger length = [self length];
    if (length == 0 || key == NULL)
        return nil;
    void *enciphered = NULL;
    size_t encipheredLength = 0;
    if (MemAllocateEncryptedCopy([self bytes], length, &enciphered, &encipheredLength, key) != 0)
        return nil;
    return [NSData dataWithBytesNoCopy:enciphered length:encipheredLength freeWhenDone:YES];
}

- (NSData *)decryptedData:(const char *)key
{
    NSUInteger length = [self length];
    if (length == 0 || key == NULL)
        return nil;
    void *copy = [self callocCopy];
    if (copy == NULL)
        return nil;
    if (MemDecrypt(copy, length, key) != 0) {
        free(copy);
        return nil;
    }
    return [NSData dataWithBytesNoCopy:copy length:length freeWhenDone:YES];
}

@end

@implementation NSMutableData (FoundationX)

- (void)deleteHead:(NSUInteger)count
{
    NSUInteger length = [self length];
    if (count >= length) {
        [self setLength:0];
        return;
    }
    if (count == 0)
        return;
    [self replaceBytesInRange:NSMakeRange(0, count) withBytes:NULL length:0];
}

@end
