/* Bit flags: bytes spread into arrays of one-byte flags and packed back.
 *
 * A flag array holds one byte per bit, 0 or 1.  Flag i of a byte is its bit i,
 * least significant bit first (flag 0 is 0x01, flag 7 is 0x80); a buffer of n
 * bytes becomes 8·n flags, byte by byte in buffer order.  This is the form in
 * which the buffer cipher (MemoryCipher.h) hands keys and blocks to DES.  The
 * functions keep no state and may run on any thread. */
#ifndef KORU_BITFLAGS_H
#define KORU_BITFLAGS_H

#include <MacTypes.h>

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* True when bit index of c is set; false for an index of 8 or more. */
Boolean CharGetBitFlagAtIndex(UInt8 c, UInt8 index);
/* Sets / clears bit index of *c; an index of 8 or more or a NULL c changes nothing. */
void CharSetBitFlagAtIndex(UInt8 *c, UInt8 index);
void CharUnsetBitFlagAtIndex(UInt8 *c, UInt8 index);

/* Writes the 8 flags of c into flags and returns 8; returns 0 and writes
 * nothing for a NULL flags. */
int CharCopyBitFlags(UInt8 c, char *flags);
/* The byte whose bit i is set where flags[i] is nonzero; 0 for a NULL flags. */
UInt8 CharFromBitFlags(const char *flags);

/* Expands count bytes into 8·count flags; does nothing when an argument is
 * NULL or count is 0. */
void MemCopyBitFlags(const void *bytes, size_t count, char *flags);
/* Packs 8·count flags into count bytes (a nonzero flag counts as set); does
 * nothing when an argument is NULL or count is 0. */
void MemSetBitFlags(void *bytes, size_t count, const char *flags);

#ifdef __cplusplus
}
#endif

#endif
