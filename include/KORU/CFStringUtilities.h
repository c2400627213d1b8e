/* CF string and range helpers: the bottom layer of the exported C functions.
 *
 * Conversions of CFStrings into C buffers of several kinds, tests on CF
 * objects, shell commands given as CFStrings, in-place editing of CFRange
 * values and three small byte-string helpers.  Buffers returned by the
 * ...Alloc... functions come from calloc (so they are zero-filled) and are
 * freed by the caller with free; ...Create... results are released with
 * CFRelease.  "Convertable" conversions try the system encoding first, then
 * each encoding of CFStringGetListOfAvailableEncodings in its order, never
 * allowing a lossy conversion.  Every function checks its pointer arguments
 * and answers NULL, false, 0 or -1 instead of failing.  Nothing here keeps
 * state; all functions are reentrant.
 *
 * The suffix helpers StringIsEndWith and StringGetLastSubstring come with
 * <KORU/Debug.h>, CFStringCreateConvertableExternalRepresentation with
 * <KORU/LogSupport.h>; both are included here. */
#ifndef KORU_CFSTRINGUTILITIES_H
#define KORU_CFSTRINGUTILITIES_H

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/AEDataModel.h>
#include <CoreServices/Files.h>
#include <CoreServices/TextEncodingConverter.h>
#include <KORU/Debug.h>
#include <KORU/LogSupport.h>

#include <stddef.h>

CF_EXTERN_C_BEGIN

/* --- Conversions ------------------------------------------------------- */

/* A new buffer of length*2+1 bytes holding the string in the encoding, or
 * NULL when the string is NULL or does not convert.  Caller frees. */
char *CFStringAllocCString(CFStringRef string, CFStringEncoding encoding);

/* The same in the first encoding, in "convertable" order, that holds the
 * string; NULL when none does.  Caller frees. */
char *CFStringAllocConvertableCString(CFStringRef string);

/* Fills the caller's buffer as a C string in "convertable" order; false for a
 * NULL string or buffer, a size below 1, or when no encoding holds the text. */
Boolean CFStringGetConvertableCString(CFStringRef string, char *buffer, CFIndex bufferSize);

/* The same as a Pascal string. */
Boolean CFStringGetConvertablePascalString(CFStringRef string, StringPtr buffer, CFIndex bufferSize);

/* Zero-fills the buffer and copies the characters below 128, dropping the
 * others, up to bufferSize-1 of them (one when bufferSize is 1, leaving no
 * terminator).  Answers the count written; 0 for NULL or a size below 1. */
CFIndex CFStringGetASCIICString(CFStringRef string, char *buffer, CFIndex bufferSize);

/* A new buffer of length*2+1 bytes filled by CFStringGetASCIICString.  Caller frees. */
char *CFStringAllocASCIICString(CFStringRef string);

/* A new buffer of length+1 UTF-16 units: the characters and a 0 unit.  Caller frees. */
UniChar *CFStringAllocUnicodeCharacters(CFStringRef string);

/* Converts the string from Unicode to destinationEncoding with one
 * TECConvertText call into a new zeroed buffer of
 * (bytesPerCharacter, or 4 when 0) * length + 1 bytes, all of which the
 * converter may fill (so the text ends in a zero only while it keeps within
 * bytesPerCharacter per character).  The consumed input
 * bytes, produced output bytes and the converter's status (0 when no
 * conversion was attempted) go through the out pointers that are non-NULL.
 * The buffer is returned whenever it was allocated, even when the conversion
 * failed; the caller frees it.  NULL for a NULL string. */
char *CFStringAllocTECConvertedText(CFStringRef string, TextEncoding destinationEncoding,
                                    ByteCount bytesPerCharacter, ByteCount *consumedInputLength,
                                    ByteCount *outputLength, OSStatus *status);

/* Zero-fills all 512 bytes of the record, then stores a string of 1 to 255
 * UTF-16 units; false (record left zeroed) for NULL, "" or a longer string. */
Boolean CFStringGetHFSUniStr255(CFStringRef string, HFSUniStr255 *name);

/* A new string from a 'TEXT' descriptor's bytes, read as a C string in the
 * encoding; NULL for any other type or a failed read.  Caller releases. */
CFStringRef CFStringCreateWithAEDesc(const AEDesc *desc, CFStringEncoding encoding);

/* --- Tests and CF object helpers --------------------------------------- */

/* True for NULL, for an object that is not a CFString, and for "". */
Boolean CFStringIsVoid(CFStringRef string);

/* True when the POSIX path names an existing object; false for NULL. */
Boolean CFStringIsExist(CFStringRef path);

/* Retains the object and returns it; NULL gives NULL. */
CFTypeRef CFTypeRetain(CFTypeRef object);

/* CFEqual, but false when either side is NULL. */
Boolean CFTypeIsEqualTo(CFTypeRef a, CFTypeRef b);

/* --- Shell commands ---------------------------------------------------- */

/* Runs the command through the C library's system (so through /bin/sh) and
 * answers its result; -1 for NULL or a command that does not convert. */
int CFString_system(CFStringRef command);

/* Runs "prefix argument suffix" (each part only when non-NULL, joined by one
 * space) with CFString_system.  Nothing is quoted or escaped.  -1 for a NULL
 * argument, or for a prefix or suffix that is not a string. */
int CFStringApplySystemCommand(CFStringRef argument, CFStringRef prefix, CFStringRef suffix);

/* --- Range editing (nothing happens for a NULL range) ------------------- */

/* location += delta, clamped at 0. */
void CFRangeMove(CFRange *range, CFIndex delta);
/* location = newLocation; a negative value is ignored. */
void CFRangeMoveLeftTo(CFRange *range, CFIndex newLocation);
/* location = newEnd - length, clamped at 0. */
void CFRangeMoveRightTo(CFRange *range, CFIndex newEnd);
/* Moves the left edge by -delta, keeping the right edge; neither location nor
 * length goes below 0. */
void CFRangeResizeLeft(CFRange *range, CFIndex delta);
/* Moves the left edge to newLocation (clamped to 0 ... end), keeping the end. */
void CFRangeResizeLeftTo(CFRange *range, CFIndex newLocation);
/* length += delta (not below 0); then, when limit >= 0, the end is cut back
 * to limit.  A negative limit means none. */
void CFRangeResizeRight(CFRange *range, CFIndex delta, CFIndex limit);
/* length = newEnd - location, or 0 when newEnd is before the location. */
void CFRangeResizeRightTo(CFRange *range, CFIndex newEnd);

/* --- Byte strings ------------------------------------------------------ */

/* Copies the length byte and that many bytes (the areas may overlap); false
 * when either pointer is NULL. */
Boolean PascalStringCopy(ConstStr255Param source, StringPtr destination);

/* Bytes before the terminating 0 (not characters); 0 for NULL. */
size_t UTF8StringGetLength(const char *text);

CF_EXTERN_C_END

#endif
