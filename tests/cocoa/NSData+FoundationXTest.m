/* NSData(FoundationX) and NSMutableData(FoundationX): property-list data,
 * zero-terminated copies, enciphering and dropping a prefix. */
#import "KTest.h"

#include <KORU/KORU.h>

#include <stdlib.h>
#include <string.h>

static const char kKey[8] = {'k', 'o', 'r', 'u', '-', 'k', 'e', 'y'};

KT_CASE(PropertyListsBecomeXMLData)
{
    NSDictionary *list = [NSDictionary dictionaryWithObjectsAndKeys:[NSArray arrayWithObject:@"x"], @"rows", nil];
    NSData *data = [NSData dataWithPropertyList:list];
    KT_ASSERT(data != nil);
    KT_EXPECT(memcmp([data bytes], "<?xml", 5) == 0);
    KT_EXPECT_EQUAL_OBJECTS([NSDictionary dictionaryWithXMLData:data], list);
    KT_EXPECT([[NSMutableData dataWithPropertyList:list] isKindOfClass:[NSMutableData class]]);
    KT_EXPECT([NSData dataWithPropertyList:nil] == nil && [NSData dataWithPropertyList:[[NSObject new] autorelease]] == nil);
    KT_EXPECT([NSData dataWithPropertyList:[NSArray arrayWithObject:[NSNull null]]] == nil);
}

KT_CASE(CallocCopiesAreTerminatedAndWholeBlocks)
{
    for (NSUInteger length = 1; length <= 17; length++) {
        NSMutableData *data = [NSMutableData dataWithLength:length];
        memset([data mutableBytes], 'x', length);
        unsigned char *copy = [data callocCopy];
        KT_ASSERT(copy != NULL);
        size_t size = (length + 1 + 7) / 8 * 8; // what the cipher may touch
        KT_EXPECT(memcmp(copy, [data bytes], length) == 0);
        for (size_t i = length; i < size; i++)
            KT_EXPECT_MSG(copy[i] == 0, @"length %lu byte %zu", (unsigned long)length, i);
        KT_EXPECT(strlen((char *)copy) == length);
        free(copy);
    }
    KT_EXPECT([[NSData data] callocCopy] == NULL);
}

KT_CASE(DataEnciphersAndDeciphersThroughTheBufferCipher)
{
    NSData *source = [@"Nine bytes of text, then some more" dataUsingEncoding:NSUTF8StringEncoding];
    NSData *enciphered = [source encryptedData:kKey];
    KT_ASSERT(enciphered != nil);
    KT_EXPECT([enciphered length] == ([source length] + 7) / 8 * 8);
    KT_EXPECT(memcmp([enciphered bytes], [source bytes], 8) != 0);
    // The same bytes as the C function gives.
    void *buffer = NULL;
    size_t length = 0;
    KT_ASSERT(MemAllocateEncryptedCopy([source bytes], [source length], &buffer, &length, kKey) == 0);
    KT_EXPECT_EQUAL_OBJECTS(enciphered, [NSData dataWithBytesNoCopy:buffer length:length freeWhenDone:YES]);
    NSData *deciphered = [enciphered decryptedData:kKey];
    KT_ASSERT([deciphered length] == [enciphered length]);
    KT_EXPECT(memcmp([deciphered bytes], [source bytes], [source length]) == 0);
    for (NSUInteger i = [source length]; i < [deciphered length]; i++)
        KT_EXPECT(((const unsigned char *)[deciphered bytes])[i] == 0); // the padding stays
    KT_EXPECT(![[enciphered decryptedData:"other-ky"] isEqual:deciphered]);
    KT_EXPECT([[NSData data] encryptedData:kKey] == nil && [[NSData data] decryptedData:kKey] == nil);
    KT_EXPECT([source encryptedData:NULL] == nil && [source decryptedData:NULL] == nil);
}

KT_CASE(DecipheringATruncatedBufferStaysInsideItsCopy)
{
    // 13 bytes: the last block is deciphered whole, with the copy's zeros.
    NSData *odd = [NSData dataWithBytes:"thirteen byte" length:13];
    NSData *deciphered = [odd decryptedData:kKey];
    KT_ASSERT(deciphered != nil);
    KT_EXPECT([deciphered length] == 13);
    char block[8];
    memcpy(block, [odd bytes], 8);
    EncryptionSetKey(kKey);
    EncryptionDecrypt(block);
    KT_EXPECT(memcmp([deciphered bytes], block, 8) == 0);
}

KT_CASE(DeleteHeadDropsAPrefix)
{
    NSMutableData *data = [NSMutableData dataWithBytes:"abcdef" length:6];
    [data deleteHead:2];
    KT_EXPECT_EQUAL_OBJECTS(data, [NSData dataWithBytes:"cdef" length:4]);
    [data deleteHead:0];
    KT_EXPECT([data length] == 4);
    [data deleteHead:10];
    [data deleteHead:1];
    KT_EXPECT([data length] == 0);
}

KT_MAIN()
