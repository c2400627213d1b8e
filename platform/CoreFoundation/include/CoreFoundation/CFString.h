/* Immutable and mutable strings of UTF-16 units, with conversions to and from
 * the Mac text encodings.
 *
 * A CFStringRef is an NSString * and a CFMutableStringRef an
 * NSMutableString *.  Encoding conversions never lose text silently: a
 * character the target encoding lacks makes the conversion fail unless the
 * caller supplies a loss byte.  Out-buffers are left defined on failure
 * (an empty C or Pascal string).  CFSTR("...") answers an immortal string,
 * one per distinct literal text. */
#ifndef COREFOUNDATION_CFSTRING_H
#define COREFOUNDATION_CFSTRING_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFCharacterSet.h>
#include <CoreFoundation/CFLocale.h>
#include <stdarg.h>

CF_EXTERN_C_BEGIN

typedef UInt32 CFStringEncoding;

/* The encodings every system has. */
typedef enum {
    kCFStringEncodingMacRoman = 0,
    kCFStringEncodingWindowsLatin1 = 0x0500,
    kCFStringEncodingISOLatin1 = 0x0201,
    kCFStringEncodingNextStepLatin = 0x0B01,
    kCFStringEncodingASCII = 0x0600,
    kCFStringEncodingUnicode = 0x0100,
    kCFStringEncodingUTF8 = 0x08000100,
    kCFStringEncodingNonLossyASCII = 0x0BFF,
    kCFStringEncodingUTF16 = 0x0100,
    kCFStringEncodingUTF16BE = 0x10000100,
    kCFStringEncodingUTF16LE = 0x14000100,
    kCFStringEncodingUTF32 = 0x0c000100,
    kCFStringEncodingUTF32BE = 0x18000100,
    kCFStringEncodingUTF32LE = 0x1c000100
} CFStringBuiltInEncodings;

/* Further encodings, with the Mac numbers; which of them convert here is
 * answered by CFStringIsEncodingAvailable. */
enum {
    kCFStringEncodingMacJapanese = 1, kCFStringEncodingMacChineseTrad = 2,
    kCFStringEncodingMacKorean = 3, kCFStringEncodingMacArabic = 4,
    kCFStringEncodingMacHebrew = 5, kCFStringEncodingMacGreek = 6,
    kCFStringEncodingMacCyrillic = 7, kCFStringEncodingMacThai = 21,
    kCFStringEncodingMacChineseSimp = 25, kCFStringEncodingMacCentralEurRoman = 29,
    kCFStringEncodingMacSymbol = 33, kCFStringEncodingMacDingbats = 34,
    kCFStringEncodingMacTurkish = 35, kCFStringEncodingMacCroatian = 36,
    kCFStringEncodingMacIcelandic = 37, kCFStringEncodingMacRomanian = 38,
    kCFStringEncodingMacUkrainian = 0x98,
    kCFStringEncodingISOLatin2 = 0x0202, kCFStringEncodingISOLatin3 = 0x0203,
    kCFStringEncodingISOLatin4 = 0x0204, kCFStringEncodingISOLatinCyrillic = 0x0205,
    kCFStringEncodingISOLatinArabic = 0x0206, kCFStringEncodingISOLatinGreek = 0x0207,
    kCFStringEncodingISOLatinHebrew = 0x0208, kCFStringEncodingISOLatin5 = 0x0209,
    kCFStringEncodingISOLatin6 = 0x020A, kCFStringEncodingISOLatinThai = 0x020B,
    kCFStringEncodingISOLatin7 = 0x020D, kCFStringEncodingISOLatin8 = 0x020E,
    kCFStringEncodingISOLatin9 = 0x020F, kCFStringEncodingISOLatin10 = 0x0210,
    kCFStringEncodingDOSLatinUS = 0x0400, kCFStringEncodingDOSGreek = 0x0405,
    kCFStringEncodingDOSBalticRim = 0x0406, kCFStringEncodingDOSLatin1 = 0x0410,
    kCFStringEncodingDOSGreek1 = 0x0411, kCFStringEncodingDOSLatin2 = 0x0412,
    kCFStringEncodingDOSCyrillic = 0x0413, kCFStringEncodingDOSTurkish = 0x0414,
    kCFStringEncodingDOSPortuguese = 0x0415, kCFStringEncodingDOSIcelandic = 0x0416,
    kCFStringEncodingDOSHebrew = 0x0417, kCFStringEncodingDOSCanadianFrench = 0x0418,
    kCFStringEncodingDOSArabic = 0x0419, kCFStringEncodingDOSNordic = 0x041A,
    kCFStringEncodingDOSRussian = 0x041B, kCFStringEncodingDOSGreek2 = 0x041C,
    kCFStringEncodingDOSThai = 0x041D, kCFStringEncodingDOSJapanese = 0x0420,
    kCFStringEncodingDOSChineseSimplif = 0x0421, kCFStringEncodingDOSKorean = 0x0422,
    kCFStringEncodingDOSChineseTrad = 0x0423,
    kCFStringEncodingWindowsLatin2 = 0x0501, kCFStringEncodingWindowsCyrillic = 0x0502,
    kCFStringEncodingWindowsGreek = 0x0503, kCFStringEncodingWindowsLatin5 = 0x0504,
    kCFStringEncodingWindowsHebrew = 0x0505, kCFStringEncodingWindowsArabic = 0x0506,
    kCFStringEncodingWindowsBalticRim = 0x0507, kCFStringEncodingWindowsVietnamese = 0x0508,
    kCFStringEncodingWindowsKoreanJohab = 0x0510,
    kCFStringEncodingGB_18030_2000 = 0x0632,
    kCFStringEncodingISO_2022_JP = 0x0820, kCFStringEncodingISO_2022_KR = 0x0840,
    kCFStringEncodingEUC_JP = 0x0920, kCFStringEncodingEUC_CN = 0x0930,
    kCFStringEncodingEUC_TW = 0x0931, kCFStringEncodingEUC_KR = 0x0940,
    kCFStringEncodingShiftJIS = 0x0A01, kCFStringEncodingKOI8_R = 0x0A02,
    kCFStringEncodingBig5 = 0x0A03, kCFStringEncodingHZ_GB_2312 = 0x0A05,
    kCFStringEncodingBig5_HKSCS_1999 = 0x0A06, kCFStringEncodingKOI8_U = 0x0A08
};

#define kCFStringEncodingInvalidId (0xffffffffU)

typedef CFOptionFlags CFStringCompareFlags;
enum {
    kCFCompareCaseInsensitive = 1,
    kCFCompareBackwards = 4,
    kCFCompareAnchored = 8,
    kCFCompareNonliteral = 16,
    kCFCompareLocalized = 32,
    kCFCompareNumerically = 64,
    kCFCompareDiacriticInsensitive = 128,
    kCFCompareWidthInsensitive = 256,
    kCFCompareForcedOrdering = 512
};

CF_EXPORT CFTypeID CFStringGetTypeID(void);

/* An immortal string for a literal, one object per distinct text. */
#define CFSTR(cStr) __CFStringMakeConstantString("" cStr "")
CF_EXPORT CFStringRef __CFStringMakeConstantString(const char *cStr);

/* Creation.  NULL text, or bytes that are not valid in the encoding, give NULL. */
CF_EXPORT CFStringRef CFStringCreateWithCString(CFAllocatorRef alloc, const char *cStr, CFStringEncoding encoding);
CF_EXPORT CFStringRef CFStringCreateWithCStringNoCopy(CFAllocatorRef alloc, const char *cStr, CFStringEncoding encoding, CFAllocatorRef contentsDeallocator);
CF_EXPORT CFStringRef CFStringCreateWithPascalString(CFAllocatorRef alloc, ConstStr255Param pStr, CFStringEncoding encoding);
CF_EXPORT CFStringRef CFStringCreateWithPascalStringNoCopy(CFAllocatorRef alloc, ConstStr255Param pStr, CFStringEncoding encoding, CFAllocatorRef contentsDeallocator);
/* chars may be NULL only when numChars is 0. */
CF_EXPORT CFStringRef CFStringCreateWithCharacters(CFAllocatorRef alloc, const UniChar *chars, CFIndex numChars);
CF_EXPORT CFStringRef CFStringCreateWithCharactersNoCopy(CFAllocatorRef alloc, const UniChar *chars, CFIndex numChars, CFAllocatorRef contentsDeallocator);
/* With isExternalRepresentation a byte-order mark is honoured (and UTF-16
 * without one is read big-endian). */
CF_EXPORT CFStringRef CFStringCreateWithBytes(CFAllocatorRef alloc, const UInt8 *bytes, CFIndex numBytes, CFStringEncoding encoding, Boolean isExternalRepresentation);
CF_EXPORT CFStringRef CFStringCreateWithBytesNoCopy(CFAllocatorRef alloc, const UInt8 *bytes, CFIndex numBytes, CFStringEncoding encoding, Boolean isExternalRepresentation, CFAllocatorRef contentsDeallocator);
/* printf formats plus %@ for any CF object (its description), positional
 * arguments ("%2$@") included; formatOptions is ignored.  As CF prints them:
 * a NULL %p is "0x0", a NULL %s or %@ is "(null)" (never padded for %s), a
 * NaN has no sign, %n stores nothing and unknown conversions are dropped. */
CF_EXPORT CFStringRef CFStringCreateWithFormat(CFAllocatorRef alloc, CFDictionaryRef formatOptions, CFStringRef format, ...);
CF_EXPORT CFStringRef CFStringCreateWithFormatAndArguments(CFAllocatorRef alloc, CFDictionaryRef formatOptions, CFStringRef format, va_list arguments);
CF_EXPORT CFStringRef CFStringCreateCopy(CFAllocatorRef alloc, CFStringRef theString);
CF_EXPORT CFStringRef CFStringCreateWithSubstring(CFAllocatorRef alloc, CFStringRef str, CFRange range);
/* maxLength is a capacity hint only; a negative one gives NULL. */
CF_EXPORT CFMutableStringRef CFStringCreateMutable(CFAllocatorRef alloc, CFIndex maxLength);
CF_EXPORT CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef alloc, CFIndex maxLength, CFStringRef theString);
/* Bytes of the string in the encoding, with a byte-order mark for UTF-16 and
 * UTF-32; characters the encoding lacks become lossByte, or the call answers
 * NULL when lossByte is 0. */
CF_EXPORT CFDataRef CFStringCreateExternalRepresentation(CFAllocatorRef alloc, CFStringRef theString, CFStringEncoding encoding, UInt8 lossByte);
CF_EXPORT CFStringRef CFStringCreateFromExternalRepresentation(CFAllocatorRef alloc, CFDataRef data, CFStringEncoding encoding);

/* Access.  NULL strings have length 0; out-of-range indexes answer 0. */
CF_EXPORT CFIndex CFStringGetLength(CFStringRef theString);
CF_EXPORT UniChar CFStringGetCharacterAtIndex(CFStringRef theString, CFIndex idx);
/* Copies the UTF-16 units of range; an out-of-range range copies nothing. */
CF_EXPORT void CFStringGetCharacters(CFStringRef theString, CFRange range, UniChar *buffer);
/* false when the encoding lacks a character or the buffer is too small;
 * the buffer then holds an empty string (when bufferSize > 0). */
CF_EXPORT Boolean CFStringGetCString(CFStringRef theString, char *buffer, CFIndex bufferSize, CFStringEncoding encoding);
CF_EXPORT Boolean CFStringGetPascalString(CFStringRef theString, StringPtr buffer, CFIndex bufferSize, CFStringEncoding encoding);
/* The string's own bytes when it is stored as ASCII text and the encoding
 * holds ASCII byte for byte (ASCII, MacRoman, UTF-8, Latin 1): strings made
 * by CF from ASCII text, CFSTR constants and Foundation literals.  NULL
 * otherwise, as CF allows; the pointer lives as long as the string. */
CF_EXPORT const char *CFStringGetCStringPtr(CFStringRef theString, CFStringEncoding encoding);
/* Always NULL here, as CF allows. */
CF_EXPORT ConstStringPtr CFStringGetPascalStringPtr(CFStringRef theString, CFStringEncoding encoding);
/* The string's own UTF-16 units when it keeps them in one buffer (strings
 * made by CF from units or ASCII text, CFSTR constants); NULL otherwise. */
CF_EXPORT const UniChar *CFStringGetCharactersPtr(CFStringRef theString);
/* Converts the range into buffer (or only measures when buffer is NULL).
 * Answers how many UTF-16 units were converted; usedBufLen receives the bytes. */
CF_EXPORT CFIndex CFStringGetBytes(CFStringRef theString, CFRange range, CFStringEncoding encoding, UInt8 lossByte, Boolean isExternalRepresentation, UInt8 *buffer, CFIndex maxBufLen, CFIndex *usedBufLen);
CF_EXPORT CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);
CF_EXPORT CFIndex CFStringGetMaximumSizeOfFileSystemRepresentation(CFStringRef string);
CF_EXPORT Boolean CFStringGetFileSystemRepresentation(CFStringRef string, char *buffer, CFIndex maxBufLen);
CF_EXPORT CFStringRef CFStringCreateWithFileSystemRepresentation(CFAllocatorRef alloc, const char *buffer);
CF_EXPORT SInt32 CFStringGetIntValue(CFStringRef str);
CF_EXPORT double CFStringGetDoubleValue(CFStringRef str);

/* Comparison and search.  NULL compares less than any string. */
CF_EXPORT CFComparisonResult CFStringCompare(CFStringRef theString1, CFStringRef theString2, CFStringCompareFlags compareOptions);
CF_EXPORT CFComparisonResult CFStringCompareWithOptions(CFStringRef theString1, CFStringRef theString2, CFRange rangeToCompare, CFStringCompareFlags compareOptions);
CF_EXPORT Boolean CFStringHasPrefix(CFStringRef theString, CFStringRef prefix);
CF_EXPORT Boolean CFStringHasSuffix(CFStringRef theString, CFStringRef suffix);
/* {kCFNotFound, 0} when absent. */
CF_EXPORT CFRange CFStringFind(CFStringRef theString, CFStringRef stringToFind, CFStringCompareFlags compareOptions);
CF_EXPORT Boolean CFStringFindWithOptions(CFStringRef theString, CFStringRef stringToFind, CFRange rangeToSearch, CFStringCompareFlags searchOptions, CFRange *result);
CF_EXPORT CFArrayRef CFStringCreateArrayBySeparatingStrings(CFAllocatorRef alloc, CFStringRef theString, CFStringRef separatorString);
CF_EXPORT CFStringRef CFStringCreateByCombiningStrings(CFAllocatorRef alloc, CFArrayRef theArray, CFStringRef separatorString);

/* Editing a mutable string.  NULL arguments and out-of-range indexes change nothing. */
CF_EXPORT void CFStringAppend(CFMutableStringRef theString, CFStringRef appendedString);
CF_EXPORT void CFStringAppendCharacters(CFMutableStringRef theString, const UniChar *chars, CFIndex numChars);
CF_EXPORT void CFStringAppendCString(CFMutableStringRef theString, const char *cStr, CFStringEncoding encoding);
CF_EXPORT void CFStringAppendPascalString(CFMutableStringRef theString, ConstStr255Param pStr, CFStringEncoding encoding);
CF_EXPORT void CFStringAppendFormat(CFMutableStringRef theString, CFDictionaryRef formatOptions, CFStringRef format, ...);
CF_EXPORT void CFStringAppendFormatAndArguments(CFMutableStringRef theString, CFDictionaryRef formatOptions, CFStringRef format, va_list arguments);
CF_EXPORT void CFStringInsert(CFMutableStringRef str, CFIndex idx, CFStringRef insertedStr);
CF_EXPORT void CFStringDelete(CFMutableStringRef theString, CFRange range);
CF_EXPORT void CFStringReplace(CFMutableStringRef theString, CFRange range, CFStringRef replacement);
CF_EXPORT void CFStringReplaceAll(CFMutableStringRef theString, CFStringRef replacement);
/* Answers the number of replacements. */
CF_EXPORT CFIndex CFStringFindAndReplace(CFMutableStringRef theString, CFStringRef stringToFind, CFStringRef replacementString, CFRange rangeToSearch, CFStringCompareFlags compareOptions);
CF_EXPORT void CFStringPad(CFMutableStringRef theString, CFStringRef padString, CFIndex length, CFIndex indexIntoPad);
CF_EXPORT void CFStringTrim(CFMutableStringRef theString, CFStringRef trimString);
CF_EXPORT void CFStringTrimWhitespace(CFMutableStringRef theString);
CF_EXPORT void CFStringLowercase(CFMutableStringRef theString, const void *localeTBD);
CF_EXPORT void CFStringUppercase(CFMutableStringRef theString, const void *localeTBD);
CF_EXPORT void CFStringCapitalize(CFMutableStringRef theString, const void *localeTBD);

/* Encodings. */
/* The encoding of the user's locale (its codeset); the C locale counts as UTF-8. */
CF_EXPORT CFStringEncoding CFStringGetSystemEncoding(void);
CF_EXPORT CFStringEncoding CFStringGetFastestEncoding(CFStringRef theString);
CF_EXPORT CFStringEncoding CFStringGetSmallestEncoding(CFStringRef theString);
/* The encodings that convert here, in a fixed order, ending with kCFStringEncodingInvalidId. */
CF_EXPORT const CFStringEncoding *CFStringGetListOfAvailableEncodings(void);
CF_EXPORT Boolean CFStringIsEncodingAvailable(CFStringEncoding encoding);
/* A name such as "Western (Mac OS Roman)", or NULL; not to be released. */
CF_EXPORT CFStringRef CFStringGetNameOfEncoding(CFStringEncoding encoding);
CF_EXPORT unsigned long CFStringConvertEncodingToNSStringEncoding(CFStringEncoding encoding);
CF_EXPORT CFStringEncoding CFStringConvertNSStringEncodingToEncoding(unsigned long encoding);
CF_EXPORT UInt32 CFStringConvertEncodingToWindowsCodepage(CFStringEncoding encoding);
CF_EXPORT CFStringEncoding CFStringConvertWindowsCodepageToEncoding(UInt32 codepage);
/* The IANA name ("utf-8", "macintosh", ...), or NULL; not to be released. */
CF_EXPORT CFStringRef CFStringConvertEncodingToIANACharSetName(CFStringEncoding encoding);
CF_EXPORT CFStringEncoding CFStringConvertIANACharSetNameToEncoding(CFStringRef theString);
CF_EXPORT CFStringEncoding CFStringGetMostCompatibleMacStringEncoding(CFStringEncoding encoding);

/* Writes the object's description to standard error, followed by a newline. */
CF_EXPORT void CFShow(CFTypeRef obj);
CF_EXPORT void CFShowStr(CFStringRef str);

/* ---- Unicode: character sets, lines, normalization, folding ----------- */

/* Finds the first (or, with kCFCompareBackwards, last) character of
 * rangeToSearch in theSet; result (may be NULL) gets its range.  With
 * kCFCompareAnchored only the first (last) character is looked at.  false
 * for NULL arguments or a range outside the string. */
CF_EXPORT Boolean CFStringFindCharacterFromSet(CFStringRef theString, CFCharacterSetRef theSet, CFRange rangeToSearch, CFStringCompareFlags searchOptions, CFRange *result);
/* The lines (ended by LF, CR, CR LF, U+2028, U+0085, U+2029) that range
 * touches: where the first begins, where the last ends after its end of
 * line, and where its contents end.  Each out-pointer may be NULL. */
CF_EXPORT void CFStringGetLineBounds(CFStringRef theString, CFRange range, CFIndex *lineBeginIndex, CFIndex *lineEndIndex, CFIndex *contentsEndIndex);
/* The same for paragraphs (ended by LF, CR, CR LF, U+2029 only). */
CF_EXPORT void CFStringGetParagraphBounds(CFStringRef string, CFRange range, CFIndex *parBeginIndex, CFIndex *parEndIndex, CFIndex *contentsEndIndex);

typedef enum {
    kCFStringNormalizationFormD = 0,
    kCFStringNormalizationFormKD = 1,
    kCFStringNormalizationFormC = 2,
    kCFStringNormalizationFormKC = 3
} CFStringNormalizationForm;

/* Rewrites theString in the Unicode normalization form. */
CF_EXPORT void CFStringNormalize(CFMutableStringRef theString, CFStringNormalizationForm theForm);
/* Folds theString for comparison: kCFCompareCaseInsensitive lowercases,
 * kCFCompareDiacriticInsensitive drops accents, kCFCompareWidthInsensitive
 * turns full-width forms into their ASCII ones.  theLocale may be NULL. */
CF_EXPORT void CFStringFold(CFMutableStringRef theString, CFStringCompareFlags theFlags, CFLocaleRef theLocale);

CF_INLINE Boolean CFStringIsSurrogateHighCharacter(UniChar character)
{
    return (character >= 0xD800UL && character <= 0xDBFFUL) ? true : false;
}

CF_INLINE Boolean CFStringIsSurrogateLowCharacter(UniChar character)
{
    return (character >= 0xDC00UL && character <= 0xDFFFUL) ? true : false;
}

CF_INLINE UTF32Char CFStringGetLongCharacterForSurrogatePair(UniChar surrogateHigh, UniChar surrogateLow)
{
    return (UTF32Char)(((surrogateHigh - 0xD800UL) << 10) + (surrogateLow - 0xDC00UL) + 0x0010000UL);
}

/* false (and nothing stored) for a character of the first plane. */
CF_INLINE Boolean CFStringGetSurrogatePairForLongCharacter(UTF32Char character, UniChar *surrogates)
{
    if (character > 0xFFFFUL && character < 0x110000UL) {
        character -= 0x10000;
        if (surrogates != NULL) {
            surrogates[0] = (UniChar)((character >> 10) + 0xD800UL);
            surrogates[1] = (UniChar)((character & 0x3FF) + 0xDC00UL);
        }
        return true;
    }
    if (surrogates != NULL)
        surrogates[0] = (UniChar)character;
    return false;
}

CF_EXTERN_C_END


#endif
