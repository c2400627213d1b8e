/* NSData(FoundationX) and NSMutableData(FoundationX): data from property
 * lists, a zero-terminated C copy, the buffer cipher of MemoryCipher.h over
 * whole data, and dropping bytes from the front.  No method raises. */
#import <Foundation/Foundation.h>

@interface NSData (FoundationX)

/* The XML property-list form of propertyList; nil (the receiver released)
 * for nil or for an object that is not a property list. */
- (id)initWithPropertyList:(id)propertyList;
+ (id)dataWithPropertyList:(id)propertyList;

/* A zero-filled heap copy of the bytes that the caller frees with free:
 * at least one byte longer than the data, so the copy is zero-terminated,
 * and rounded up to whole cipher blocks of 8 bytes, so the cipher may work
 * on it in place.  NULL for empty data or when memory runs out. */
- (void *)callocCopy;

/* The bytes enciphered under the 8-byte key, zero-padded to a multiple of 8
 * bytes (MemAllocateEncryptedCopy); nil for empty data, a NULL key or on
 * failure. */
- (NSData *)encryptedData:(const char *)key;

/* The bytes deciphered under the 8-byte key (MemDecrypt over a callocCopy),
 * as data of the same length: the zero padding of enciphering stays.  A
 * length that is not a multiple of 8 has its last block deciphered together
 * with the zero bytes that follow it in the copy.  nil for empty data, a
 * NULL key or on failure. */
- (NSData *)decryptedData:(const char *)key;

@end

@interface NSMutableData (FoundationX)

/* Drops count bytes from the front: the rest moves to the front; when count
 * is not below the length the data becomes empty. */
- (void)deleteHead:(NSUInteger)count;

@end
