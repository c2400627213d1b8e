/* Text encodings: the table of Mac encoding numbers with their iconv, IANA
 * and Windows names, and the two conversion directions.  Unicode forms,
 * ASCII and Latin 1 are converted by hand (they are most of the traffic and
 * must treat surrogates as CF does); everything else goes through iconv with
 * strict error reporting, never transliteration. */
#include "CFStringEncodingTable.h"

#include <errno.h>
#include <iconv.h>
#include <pthread.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

#define HOST_UTF16 "UTF-16LE"

static const __CFEncodingInfo __CFEncodings[] = {
    {kCFStringEncodingMacRoman, "MACINTOSH", "macintosh", "Western (Mac OS Roman)", 10000, 1},
    {kCFStringEncodingWindowsLatin1, "CP1252", "windows-1252", "Western (Windows Latin 1)", 1252, 1},
    {kCFStringEncodingISOLatin1, NULL, "iso-8859-1", "Western (ISO Latin 1)", 28591, 1},
    {kCFStringEncodingASCII, NULL, "us-ascii", "Western (ASCII)", 20127, 1},
    {kCFStringEncodingUnicode, NULL, "utf-16", "Unicode (UTF-16)", 1200, 2},
    {kCFStringEncodingUTF8, NULL, "utf-8", "Unicode (UTF-8)", 65001, 3},
    {kCFStringEncodingUTF16BE, NULL, "utf-16be", "Unicode (UTF-16BE)", 1201, 2},
    {kCFStringEncodingUTF16LE, NULL, "utf-16le", "Unicode (UTF-16LE)", 1200, 2},
    {kCFStringEncodingUTF32, NULL, "utf-32", "Unicode (UTF-32)", 12000, 4},
    {kCFStringEncodingUTF32BE, NULL, "utf-32be", "Unicode (UTF-32BE)", 12001, 4},
    {kCFStringEncodingUTF32LE, NULL, "utf-32le", "Unicode (UTF-32LE)", 12000, 4},
    {kCFStringEncodingISOLatin2, "ISO-8859-2", "iso-8859-2", "Central European (ISO Latin 2)", 28592, 1},
    {kCFStringEncodingISOLatin3, "ISO-8859-3", "iso-8859-3", "Western (ISO Latin 3)", 28593, 1},
    {kCFStringEncodingISOLatin4, "ISO-8859-4", "iso-8859-4", "Central European (ISO Latin 4)", 28594, 1},
    {kCFStringEncodingISOLatinCyrillic, "ISO-8859-5", "iso-8859-5", "Cyrillic (ISO 8859-5)", 28595, 1},
    {kCFStringEncodingISOLatinArabic, "ISO-8859-6", "iso-8859-6", "Arabic (ISO 8859-6)", 28596, 1},
    {kCFStringEncodingISOLatinGreek, "ISO-8859-7", "iso-8859-7", "Greek (ISO 8859-7)", 28597, 1},
    {kCFStringEncodingISOLatinHebrew, "ISO-8859-8", "iso-8859-8", "Hebrew (ISO 8859-8)", 28598, 1},
    {kCFStringEncodingISOLatin5, "ISO-8859-9", "iso-8859-9", "Turkish (ISO Latin 5)", 28599, 1},
    {kCFStringEncodingISOLatin6, "ISO-8859-10", "iso-8859-10", "Nordic (ISO Latin 6)", 0, 1},
    {kCFStringEncodingISOLatinThai, "ISO-8859-11", "iso-8859-11", "Thai (ISO 8859-11)", 0, 1},
    {kCFStringEncodingISOLatin7, "ISO-8859-13", "iso-8859-13", "Baltic (ISO Latin 7)", 28603, 1},
    {kCFStringEncodingISOLatin8, "ISO-8859-14", "iso-8859-14", "Celtic (ISO Latin 8)", 0, 1},
    {kCFStringEncodingISOLatin9, "ISO-8859-15", "iso-8859-15", "Western (ISO Latin 9)", 28605, 1},
    {kCFStringEncodingISOLatin10, "ISO-8859-16", "iso-8859-16", "Romanian (ISO Latin 10)", 0, 1},
    {kCFStringEncodingWindowsLatin2, "CP1250", "windows-1250", "Central European (Windows Latin 2)", 1250, 1},
    {kCFStringEncodingWindowsCyrillic, "CP1251", "windows-1251", "Cyrillic (Windows)", 1251, 1},
    {kCFStringEncodingWindowsGreek, "CP1253", "windows-1253", "Greek (Windows)", 1253, 1},
    {kCFStringEncodingWindowsLatin5, "CP1254", "windows-1254", "Turkish (Windows Latin 5)", 1254, 1},
    {kCFStringEncodingWindowsHebrew, "CP1255", "windows-1255", "Hebrew (Windows)", 1255, 1},
    {kCFStringEncodingWindowsArabic, "CP1256", "windows-1256", "Arabic (Windows)", 1256, 1},
    {kCFStringEncodingWindowsBalticRim, "CP1257", "windows-1257", "Baltic (Windows)", 1257, 1},
    {kCFStringEncodingWindowsVietnamese, "CP1258", "windows-1258", "Vietnamese (Windows)", 1258, 2},
    {kCFStringEncodingMacCentralEurRoman, "MAC-CENTRALEUROPE", "x-mac-ce", "Central European (Mac OS)", 10029, 1},
    {kCFStringEncodingMacCyrillic, "MACCYRILLIC", "x-mac-cyrillic", "Cyrillic (Mac OS)", 10007, 1},
    {kCFStringEncodingMacUkrainian, "MAC-UK", "x-mac-ukrainian", "Ukrainian (Mac OS)", 10017, 1},
    {kCFStringEncodingMacIcelandic, "MAC-IS", "x-mac-icelandic", "Icelandic (Mac OS)", 10079, 1},
    {kCFStringEncodingDOSLatinUS, "CP437", "cp437", "Latin-US (DOS)", 437, 1},
    {kCFStringEncodingDOSGreek, "CP737", "cp737", "Greek (DOS)", 737, 1},
    {kCFStringEncodingDOSBalticRim, "CP775", "cp775", "Baltic (DOS)", 775, 1},
    {kCFStringEncodingDOSLatin1, "CP850", "cp850", "Western (DOS Latin 1)", 850, 1},
    {kCFStringEncodingDOSLatin2, "CP852", "cp852", "Central European (DOS Latin 2)", 852, 1},
    {kCFStringEncodingDOSCyrillic, "CP855", "cp855", "Cyrillic (DOS)", 855, 1},
    {kCFStringEncodingDOSTurkish, "CP857", "cp857", "Turkish (DOS)", 857, 1},
    {kCFStringEncodingDOSRussian, "CP866", "cp866", "Russian (DOS)", 866, 1},
    {kCFStringEncodingDOSThai, "CP874", "cp874", "Thai (Windows, DOS)", 874, 1},
    {kCFStringEncodingKOI8_R, "KOI8-R", "koi8-r", "Cyrillic (KOI8-R)", 20866, 1},
    {kCFStringEncodingKOI8_U, "KOI8-U", "koi8-u", "Ukrainian (KOI8-U)", 21866, 1},
    {kCFStringEncodingShiftJIS, "SHIFT_JIS", "shift_jis", "Japanese (Shift JIS)", 0, 2},
    {kCFStringEncodingDOSJapanese, "CP932", "cp932", "Japanese (Windows, DOS)", 932, 2},
    {kCFStringEncodingEUC_JP, "EUC-JP", "euc-jp", "Japanese (EUC)", 51932, 3},
    {kCFStringEncodingISO_2022_JP, "ISO-2022-JP", "iso-2022-jp", "Japanese (ISO 2022-JP)", 50220, 8},
    {kCFStringEncodingEUC_KR, "EUC-KR", "euc-kr", "Korean (EUC)", 51949, 2},
    {kCFStringEncodingDOSKorean, "CP949", "ks_c_5601-1987", "Korean (Windows, DOS)", 949, 2},
    {kCFStringEncodingISO_2022_KR, "ISO-2022-KR", "iso-2022-kr", "Korean (ISO 2022-KR)", 50225, 8},
    {kCFStringEncodingWindowsKoreanJohab, "JOHAB", "johab", "Korean (Windows Johab)", 1361, 2},
    {kCFStringEncodingEUC_CN, "EUC-CN", "gb2312", "Simplified Chinese (GB 2312)", 0, 2},
    {kCFStringEncodingDOSChineseSimplif, "CP936", "gbk", "Simplified Chinese (Windows, DOS)", 936, 2},
    {kCFStringEncodingGB_18030_2000, "GB18030", "gb18030", "Simplified Chinese (GB 18030)", 54936, 4},
    {kCFStringEncodingEUC_TW, "EUC-TW", "euc-tw", "Traditional Chinese (EUC)", 0, 4},
    {kCFStringEncodingBig5, "BIG5", "big5", "Traditional Chinese (Big 5)", 0, 2},
    {kCFStringEncodingDOSChineseTrad, "CP950", "cp950", "Traditional Chinese (Windows, DOS)", 950, 2},
    {kCFStringEncodingBig5_HKSCS_1999, "BIG5-HKSCS", "big5-hkscs", "Traditional Chinese (Big 5 HKSCS)", 0, 2},
};
enum { __CFEncodingCount = sizeof(__CFEncodings) / sizeof(__CFEncodings[0]) };

const __CFEncodingInfo *__CFEncodingTable(CFIndex *count)
{
    *count = __CFEncodingCount;
    return __CFEncodings;
}

const __CFEncodingInfo *__CFEncodingInfoFor(CFStringEncoding encoding)
{
    for (int i = 0; i < __CFEncodingCount; i++) {
        if (__CFEncodings[i].encoding == encoding)
            return &__CFEncodings[i];
    }
    return NULL;
}

Boolean __CFEncodingIsAvailable(CFStringEncoding encoding)
{
    const __CFEncodingInfo *info = __CFEncodingInfoFor(encoding);
    if (info == NULL)
        return false;
    if (info->iconvName == NULL)
        return true;
    iconv_t cd = iconv_open(info->iconvName, HOST_UTF16);
    if (cd == (iconv_t)-1)
        return false;
    iconv_close(cd);
    return true;
}

/* Names compare without case and without the punctuation that varies
 * between spellings ("UTF-8", "utf8", "ISO_8859-1"). */
static Boolean __CFNamesMatch(const char *a, const char *b)
{
    for (;;) {
        while (*a == '-' || *a == '_')
            a++;
        while (*b == '-' || *b == '_')
            b++;
        if (*a == '\0' || *b == '\0')
            return *a == *b;
        char ca = *a >= 'A' && *a <= 'Z' ? (char)(*a + 32) : *a;
        char cb = *b >= 'A' && *b <= 'Z' ? (char)(*b + 32) : *b;
        if (ca != cb)
            return false;
        a++;
        b++;
    }
}

CFStringEncoding __CFEncodingForName(const char *name)
{
    if (name == NULL)
        return kCFStringEncodingInvalidId;
    static const struct {
        const char *name;
        CFStringEncoding encoding;
    } aliases[] = {
        {"ISO-8859-1", kCFStringEncodingISOLatin1}, {"latin1", kCFStringEncodingISOLatin1},
        {"ANSI_X3.4-1968", kCFStringEncodingASCII}, {"ascii", kCFStringEncodingASCII},
        {"utf-8", kCFStringEncodingUTF8}, {"mac", kCFStringEncodingMacRoman},
        {"x-mac-roman", kCFStringEncodingMacRoman}, {"sjis", kCFStringEncodingShiftJIS},
        {"eucJP", kCFStringEncodingEUC_JP}, {"eucKR", kCFStringEncodingEUC_KR},
        {"GBK", kCFStringEncodingDOSChineseSimplif}, {"ucs-2", kCFStringEncodingUnicode},
    };
    for (size_t i = 0; i < sizeof(aliases) / sizeof(aliases[0]); i++) {
        if (__CFNamesMatch(name, aliases[i].name))
            return aliases[i].encoding;
    }
    for (int i = 0; i < __CFEncodingCount; i++) {
        if (__CFNamesMatch(name, __CFEncodings[i].ianaName) ||
            (__CFEncodings[i].iconvName != NULL && __CFNamesMatch(name, __CFEncodings[i].iconvName)))
            return __CFEncodings[i].encoding;
    }
    return kCFStringEncodingInvalidId;
}

/* ---- Encoding: UTF-16 units to bytes ---------------------------------- */

static Boolean __CFIsHighSurrogate(UniChar u) { return u >= 0xD800 && u <= 0xDBFF; }
static Boolean __CFIsLowSurrogate(UniChar u) { return u >= 0xDC00 && u <= 0xDFFF; }

/* Collects output bytes, measuring only when there is no buffer. */
typedef struct {
    UInt8 *buffer;
    CFIndex capacity;
    CFIndex used;
} __CFByteSink;

static Boolean __CFSinkFits(const __CFByteSink *sink, CFIndex length)
{
    return sink->buffer == NULL || sink->used + length <= sink->capacity;
}

static void __CFSinkPut(__CFByteSink *sink, const UInt8 *bytes, CFIndex length)
{
    if (sink->buffer != NULL)
        memcpy(sink->buffer + sink->used, bytes, (size_t)length);
    sink->used += length;
}

static void __CFPutUnit16(UInt8 *out, UInt32 value, Boolean bigEndian)
{
    out[bigEndian ? 0 : 1] = (UInt8)(value >> 8);
    out[bigEndian ? 1 : 0] = (UInt8)value;
}

static void __CFPutUnit32(UInt8 *out, UInt32 value, Boolean bigEndian)
{
    for (int i = 0; i < 4; i++)
        out[bigEndian ? i : 3 - i] = (UInt8)(value >> (24 - 8 * i));
}

/* One character in one of the hand-converted encodings.  Answers the bytes
 * in out (at most 4), or 0 when the encoding lacks the character. */
static int __CFEncodeCharacterByHand(CFStringEncoding encoding, UInt32 scalar, Boolean isPair,
                                     Boolean isLoneSurrogate, UInt8 out[4])
{
    switch (encoding) {
    case kCFStringEncodingASCII:
        if (scalar >= 0x80)
            return 0;
        out[0] = (UInt8)scalar;
        return 1;
    case kCFStringEncodingISOLatin1:
        if (scalar >= 0x100)
            return 0;
        out[0] = (UInt8)scalar;
        return 1;
    case kCFStringEncodingUTF8:
        if (isLoneSurrogate)
            return 0;
        if (scalar < 0x80) {
            out[0] = (UInt8)scalar;
            return 1;
        }
        if (scalar < 0x800) {
            out[0] = (UInt8)(0xC0 | (scalar >> 6));
            out[1] = (UInt8)(0x80 | (scalar & 0x3F));
            return 2;
        }
        if (scalar < 0x10000) {
            out[0] = (UInt8)(0xE0 | (scalar >> 12));
            out[1] = (UInt8)(0x80 | ((scalar >> 6) & 0x3F));
            out[2] = (UInt8)(0x80 | (scalar & 0x3F));
            return 3;
        }
        out[0] = (UInt8)(0xF0 | (scalar >> 18));
        out[1] = (UInt8)(0x80 | ((scalar >> 12) & 0x3F));
        out[2] = (UInt8)(0x80 | ((scalar >> 6) & 0x3F));
        out[3] = (UInt8)(0x80 | (scalar & 0x3F));
        return 4;
    case kCFStringEncodingUnicode:
    case kCFStringEncodingUTF16BE:
    case kCFStringEncodingUTF16LE: {
        Boolean bigEndian = encoding == kCFStringEncodingUTF16BE;
        if (isPair) {
            UInt32 v = scalar - 0x10000;
            __CFPutUnit16(out, 0xD800 | (v >> 10), bigEndian);
            __CFPutUnit16(out + 2, 0xDC00 | (v & 0x3FF), bigEndian);
            return 4;
        }
        __CFPutUnit16(out, scalar, bigEndian);
        return 2;
    }
    case kCFStringEncodingUTF32:
    case kCFStringEncodingUTF32BE:
    case kCFStringEncodingUTF32LE:
        if (isLoneSurrogate)
            return 0;
        __CFPutUnit32(out, scalar, encoding == kCFStringEncodingUTF32BE);
        return 4;
    default:
        return 0;
    }
}

static CFIndex __CFEncodeByHand(const UniChar *units, CFIndex count, CFStringEncoding encoding,
                                UInt8 lossByte, __CFByteSink *sink)
{
    CFIndex i = 0;
    while (i < count) {
        UInt32 scalar = units[i];
        CFIndex width = 1;
        Boolean lone = false;
        if (__CFIsHighSurrogate(units[i]) && i + 1 < count && __CFIsLowSurrogate(units[i + 1])) {
            scalar = 0x10000 + (((UInt32)units[i] - 0xD800) << 10) + ((UInt32)units[i + 1] - 0xDC00);
            width = 2;
        } else if (__CFIsHighSurrogate(units[i]) || __CFIsLowSurrogate(units[i])) {
            lone = true;
        }
        UInt8 bytes[4];
        int length = __CFEncodeCharacterByHand(encoding, scalar, width == 2, lone, bytes);
        if (length == 0) {
            if (lossByte == 0)
                break;
            bytes[0] = lossByte;
            length = 1;
        }
        if (!__CFSinkFits(sink, length))
            break;
        __CFSinkPut(sink, bytes, length);
        i += width;
    }
    return i;
}

/* iconv keeps no partial characters: it stops before an input character it
 * cannot convert (EILSEQ) or whose output would not fit (E2BIG), so the
 * units consumed are exactly the characters converted. */
static CFIndex __CFEncodeWithIconv(const UniChar *units, CFIndex count, const char *iconvName,
                                   UInt8 lossByte, __CFByteSink *sink)
{
    iconv_t cd = iconv_open(iconvName, HOST_UTF16);
    if (cd == (iconv_t)-1)
        return 0;
    char *in = (char *)units;
    size_t inLeft = (size_t)count * sizeof(UniChar);
    UInt8 scratch[256];
    for (;;) {
        UInt8 *target = sink->buffer ? sink->buffer + sink->used : scratch;
        size_t room = sink->buffer ? (size_t)(sink->capacity - sink->used) : sizeof(scratch);
        char *out = (char *)target;
        size_t outLeft = room;
        size_t result = inLeft ? iconv(cd, &in, &inLeft, &out, &outLeft) : 0;
        int error = errno;
        sink->used += (CFIndex)(room - outLeft);
        if (result != (size_t)-1) {
            /* Input done: close a stateful encoding's shift sequence if it fits. */
            UInt8 *tail = sink->buffer ? sink->buffer + sink->used : scratch;
            size_t tailRoom = sink->buffer ? (size_t)(sink->capacity - sink->used) : sizeof(scratch);
            char *tailOut = (char *)tail;
            size_t tailLeft = tailRoom;
            if (iconv(cd, NULL, NULL, &tailOut, &tailLeft) != (size_t)-1)
                sink->used += (CFIndex)(tailRoom - tailLeft);
            break;
        }
        if (error == E2BIG && sink->buffer == NULL)
            continue;
        if (error == EILSEQ && lossByte != 0 && __CFSinkFits(sink, 1)) {
            const UniChar *bad = (const UniChar *)in;
            size_t skip = sizeof(UniChar);
            if (__CFIsHighSurrogate(bad[0]) && inLeft >= 2 * sizeof(UniChar) && __CFIsLowSurrogate(bad[1]))
                skip = 2 * sizeof(UniChar);
            __CFSinkPut(sink, &lossByte, 1);
            in += skip;
            inLeft -= skip;
            continue;
        }
        break;
    }
    iconv_close(cd);
    return count - (CFIndex)(inLeft / sizeof(UniChar));
}

CFIndex __CFEncodeUnits(const UniChar *units, CFIndex count, CFStringEncoding encoding,
                        UInt8 lossByte, Boolean isExternalRepresentation,
                        UInt8 *buffer, CFIndex maxBufLen, CFIndex *usedBytes)
{
    __CFByteSink sink = {buffer, maxBufLen < 0 ? 0 : maxBufLen, 0};
    CFIndex converted = 0;
    const __CFEncodingInfo *info = __CFEncodingInfoFor(encoding);
    if (info != NULL && units != NULL && count >= 0) {
        Boolean wantsMark = isExternalRepresentation &&
                            (encoding == kCFStringEncodingUnicode || encoding == kCFStringEncodingUTF32);
        UInt8 mark[4];
        int markLength = wantsMark ? __CFEncodeCharacterByHand(encoding, 0xFEFF, false, false, mark) : 0;
        if (markLength == 0 || __CFSinkFits(&sink, markLength)) {
            __CFSinkPut(&sink, mark, markLength);
            converted = info->iconvName ? __CFEncodeWithIconv(units, count, info->iconvName, lossByte, &sink)
                                        : __CFEncodeByHand(units, count, encoding, lossByte, &sink);
        }
    }
    if (usedBytes != NULL)
        *usedBytes = sink.used;
    return converted;
}

/* ---- Decoding: bytes to UTF-16 units ---------------------------------- */

typedef struct {
    UniChar *units;
    CFIndex count;
    CFIndex capacity;
} __CFUnitSink;

static Boolean __CFUnitSinkReserve(__CFUnitSink *sink, CFIndex more)
{
    if (sink->count + more <= sink->capacity)
        return true;
    CFIndex capacity = (sink->capacity + more) * 2 + 16;
    UniChar *units = realloc(sink->units, (size_t)capacity * sizeof(UniChar));
    if (units == NULL)
        return false;
    sink->units = units;
    sink->capacity = capacity;
    return true;
}

static Boolean __CFUnitSinkPutScalar(__CFUnitSink *sink, UInt32 scalar)
{
    if (!__CFUnitSinkReserve(sink, 2))
        return false;
    if (scalar >= 0x10000) {
        scalar -= 0x10000;
        sink->units[sink->count++] = (UniChar)(0xD800 | (scalar >> 10));
        sink->units[sink->count++] = (UniChar)(0xDC00 | (scalar & 0x3FF));
    } else {
        sink->units[sink->count++] = (UniChar)scalar;
    }
    return true;
}

static Boolean __CFDecodeUTF8(const UInt8 *bytes, CFIndex length, __CFUnitSink *sink)
{
    CFIndex i = 0;
    while (i < length) {
        UInt8 lead = bytes[i];
        UInt32 scalar;
        int extra;
        UInt32 minimum;
        if (lead < 0x80) {
            scalar = lead;
            extra = 0;
            minimum = 0;
        } else if ((lead & 0xE0) == 0xC0) {
            scalar = lead & 0x1F;
            extra = 1;
            minimum = 0x80;
        } else if ((lead & 0xF0) == 0xE0) {
            scalar = lead & 0x0F;
            extra = 2;
            minimum = 0x800;
        } else if ((lead & 0xF8) == 0xF0) {
            scalar = lead & 0x07;
            extra = 3;
            minimum = 0x10000;
        } else {
            return false;
        }
        if (i + extra >= length)
            return false;
        for (int k = 1; k <= extra; k++) {
            UInt8 next = bytes[i + k];
            if ((next & 0xC0) != 0x80)
                return false;
            scalar = (scalar << 6) | (next & 0x3F);
        }
        if (scalar < minimum || scalar > 0x10FFFF || (scalar >= 0xD800 && scalar <= 0xDFFF))
            return false;
        if (!__CFUnitSinkPutScalar(sink, scalar))
            return false;
        i += extra + 1;
    }
    return true;
}

static UInt32 __CFReadUnit(const UInt8 *p, int width, Boolean bigEndian)
{
    UInt32 value = 0;
    for (int k = 0; k < width; k++)
        value |= (UInt32)p[bigEndian ? k : width - 1 - k] << (8 * (width - 1 - k));
    return value;
}

/* UTF-16 and UTF-32: the unmarked forms honour a byte-order mark and
 * otherwise read big-endian for external representations, host order
 * for in-memory bytes; the marked forms take their order as given. */
static Boolean __CFDecodeUnicodeForm(const UInt8 *bytes, CFIndex length, CFStringEncoding encoding,
                                     Boolean isExternalRepresentation, __CFUnitSink *sink)
{
    int width = (encoding == kCFStringEncodingUTF32 || encoding == kCFStringEncodingUTF32BE ||
                 encoding == kCFStringEncodingUTF32LE) ? 4 : 2;
    if (length % width != 0)
        return false;
    Boolean bigEndian;
    if (encoding == kCFStringEncodingUTF16BE || encoding == kCFStringEncodingUTF32BE) {
        bigEndian = true;
    } else if (encoding == kCFStringEncodingUTF16LE || encoding == kCFStringEncodingUTF32LE) {
        bigEndian = false;
    } else {
        bigEndian = isExternalRepresentation;
        if (length >= width) {
            if (__CFReadUnit(bytes, width, true) == 0xFEFF) {
                bigEndian = true;
                bytes += width;
                length -= width;
            } else if (__CFReadUnit(bytes, width, false) == 0xFEFF) {
                bigEndian = false;
                bytes += width;
                length -= width;
            }
        }
    }
    if (!__CFUnitSinkReserve(sink, length / width * (width == 4 ? 2 : 1)))
        return false;
    for (CFIndex i = 0; i < length; i += width) {
        UInt32 value = __CFReadUnit(bytes + i, width, bigEndian);
        if (width == 2) {
            sink->units[sink->count++] = (UniChar)value;
        } else {
            if (value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
                return false;
            __CFUnitSinkPutScalar(sink, value);
        }
    }
    return true;
}

static Boolean __CFDecodeWithIconv(const UInt8 *bytes, CFIndex length, const char *iconvName,
                                   __CFUnitSink *sink)
{
    iconv_t cd = iconv_open(HOST_UTF16, iconvName);
    if (cd == (iconv_t)-1)
        return false;
    char *in = (char *)bytes;
    size_t inLeft = (size_t)length;
    Boolean ok = true;
    while (ok) {
        if (!__CFUnitSinkReserve(sink, (CFIndex)inLeft + 8)) {
            ok = false;
            break;
        }
        char *out = (char *)(sink->units + sink->count);
        size_t room = (size_t)(sink->capacity - sink->count) * sizeof(UniChar);
        size_t outLeft = room;
        size_t result = iconv(cd, &in, &inLeft, &out, &outLeft);
        sink->count += (CFIndex)((room - outLeft) / sizeof(UniChar));
        if (result != (size_t)-1)
            break;
        if (errno != E2BIG)
            ok = false;
    }
    iconv_close(cd);
    return ok;
}

Boolean __CFDecodeBytes(const UInt8 *bytes, CFIndex length, CFStringEncoding encoding,
                        Boolean isExternalRepresentation, UniChar **units, CFIndex *count)
{
    *units = NULL;
    *count = 0;
    const __CFEncodingInfo *info = __CFEncodingInfoFor(encoding);
    if (info == NULL || length < 0 || (bytes == NULL && length > 0))
        return false;
    __CFUnitSink sink = {NULL, 0, 0};
    Boolean ok = __CFUnitSinkReserve(&sink, length + 1);
    if (ok) {
        switch (encoding) {
        case kCFStringEncodingASCII:
            for (CFIndex i = 0; i < length && ok; i++) {
                ok = bytes[i] < 0x80;
                sink.units[sink.count++] = bytes[i];
            }
            break;
        case kCFStringEncodingISOLatin1:
            for (CFIndex i = 0; i < length; i++)
                sink.units[sink.count++] = bytes[i];
            break;
        case kCFStringEncodingUTF8:
            if (isExternalRepresentation && length >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF) {
                bytes += 3;
                length -= 3;
            }
            ok = __CFDecodeUTF8(bytes, length, &sink);
            break;
        default:
            ok = info->iconvName ? __CFDecodeWithIconv(bytes, length, info->iconvName, &sink)
                                 : __CFDecodeUnicodeForm(bytes, length, encoding, isExternalRepresentation, &sink);
            break;
        }
    }
    if (!ok) {
        free(sink.units);
        return false;
    }
    *units = sink.units;
    *count = sink.count;
    return true;
}
