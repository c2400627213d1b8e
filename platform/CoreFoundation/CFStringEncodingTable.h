/* Private: the encodings known to the CoreFoundation equivalent and the
 * conversions between UTF-16 units and bytes that every CFString function
 * uses.  Plain C over iconv. */
#ifndef COREFOUNDATION_CFSTRINGENCODINGTABLE_H
#define COREFOUNDATION_CFSTRINGENCODINGTABLE_H

#include <CoreFoundation/CFString.h>

typedef struct {
    CFStringEncoding encoding;
    const char *iconvName;   /* NULL for the ones converted here by hand */
    const char *ianaName;
    const char *displayName;
    UInt32 windowsCodepage;  /* 0 when none */
    UInt8 maxBytesPerUnit;   /* bytes one UTF-16 unit can need at most */
} __CFEncodingInfo;

/* NULL for an encoding this system does not know. */
const __CFEncodingInfo *__CFEncodingInfoFor(CFStringEncoding encoding);
/* The table in its fixed order, and its length. */
const __CFEncodingInfo *__CFEncodingTable(CFIndex *count);
/* Whether the encoding really converts here (its iconv converter opens). */
Boolean __CFEncodingIsAvailable(CFStringEncoding encoding);
/* The encoding whose iconv, IANA or locale codeset name matches; InvalidId if none. */
CFStringEncoding __CFEncodingForName(const char *name);

/* Converts UTF-16 units into bytes.  A character the encoding lacks becomes
 * lossByte, or ends the conversion when lossByte is 0; the conversion also
 * ends before a character that would not fit in maxBufLen.  With buffer NULL
 * only measures.  With isExternalRepresentation, UTF-16 and UTF-32 get a
 * byte-order mark.  Answers the number of units converted; *usedBytes the
 * bytes written (or needed). */
CFIndex __CFEncodeUnits(const UniChar *units, CFIndex count, CFStringEncoding encoding,
                        UInt8 lossByte, Boolean isExternalRepresentation,
                        UInt8 *buffer, CFIndex maxBufLen, CFIndex *usedBytes);

/* Converts bytes into newly malloc'ed UTF-16 units (*units, to be freed with
 * free; never NULL on success).  false when the bytes are not valid in the
 * encoding or the encoding is unknown. */
Boolean __CFDecodeBytes(const UInt8 *bytes, CFIndex length, CFStringEncoding encoding,
                        Boolean isExternalRepresentation, UniChar **units, CFIndex *count);

#endif
