/* The buffer cipher: DES in electronic-codebook mode over 8-byte blocks.
 *
 * Keys and blocks are 8 bytes whose bits DES sees in the flag order of
 * BitFlags.h, least significant bit of each byte first.  That order is kept
 * on purpose: it is the order in which these functions have always fed the C
 * library's setkey/encrypt, so data enciphered by older hosts still
 * deciphers, although the ciphertext differs from textbook DES of the same
 * bytes.  DES ignores one bit in eight of the key; in this order it is the
 * high bit (0x80) of each key byte, so keys that differ only there encipher
 * alike.
 *
 * Status: 0 is success, 1 failure (a missing argument or no memory).
 *
 * The installed key is process-wide and stays installed after a call, as
 * setkey's does: each buffer function installs its own key before its first
 * block, but two threads that encipher at the same time with different keys
 * spoil each other's results.  Callers serialise all use of the cipher. */
#ifndef KORU_MEMORYCIPHER_H
#define KORU_MEMORYCIPHER_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Installs the 8-byte key for the block functions; 1 for a NULL key.  Until
 * a key is installed the cipher uses the all-zero key. */
int EncryptionSetKey(const char *key);

/* Enciphers (direction 0) or deciphers (any other direction) the 8-byte
 * block in place with the installed key; 1 for a NULL block, which is left
 * as it was. */
int EncryptionEncryptCore(char *block, int direction);
int EncryptionEncrypt(char *block);
int EncryptionDecrypt(char *block);

/* Enciphers a copy of length bytes of source under the 8-byte key.  The copy
 * is padded with zero bytes to the next multiple of 8; on success *outBuffer
 * receives it (the caller frees it with free), *outLength its padded length,
 * and the result is 0.  The unpadded length is not kept: deciphered data
 * ends in the padding.  1 when source or an out pointer is NULL or length is
 * 0 (the outs are then left alone), or for a NULL key or when memory runs out
 * (the outs are then NULL and 0). */
int MemAllocateEncryptedCopy(const void *source, size_t length, void **outBuffer, size_t *outLength,
                             const char *key);

/* Deciphers length bytes of buffer in place under the 8-byte key, block by
 * block from the start; 1 for a NULL buffer or key or a zero length.  The
 * length must be a multiple of 8: the last block is always deciphered whole,
 * so a shorter tail makes the cipher read and write up to 7 bytes past it. */
int MemDecrypt(void *buffer, size_t length, const char *key);

#ifdef __cplusplus
}
#endif

#endif
