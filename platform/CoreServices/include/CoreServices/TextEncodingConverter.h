/* Text Encoding Converter: converts text between the Mac text-encoding numbers.
 *
 * A TextEncoding packs a base encoding (bits 0-15), a variant (bits 16-25) and,
 * for Unicode, a format (bits 26-31), so the CF encoding numbers are valid text
 * encodings too (UTF-8 is 0x08000100 in both).  Conversion runs through iconv.
 * A converter keeps the bytes of a character split across two TECConvertText
 * calls until the next call (or TECFlushText).  The caller owns a converter
 * made by TECCreateConverter and ends it with TECDisposeConverter.  A converter
 * is used by one thread at a time; distinct converters are independent. */
#ifndef CORESERVICES_TEC_H
#define CORESERVICES_TEC_H

#include <MacTypes.h>
#include <CoreServices/MacErrors.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef UInt32 TextEncodingBase;
typedef UInt32 TextEncodingVariant;
typedef UInt32 TextEncodingFormat;
typedef UInt8 *TextPtr;
typedef const UInt8 *ConstTextPtr;
typedef struct OpaqueTECObjectRef *TECObjectRef;

/* Base encodings. */
enum {
    kTextEncodingMacRoman = 0,
    kTextEncodingMacJapanese = 1,
    kTextEncodingMacChineseTrad = 2,
    kTextEncodingMacKorean = 3,
    kTextEncodingMacArabic = 4,
    kTextEncodingMacHebrew = 5,
    kTextEncodingMacGreek = 6,
    kTextEncodingMacCyrillic = 7,
    kTextEncodingMacThai = 21,
    kTextEncodingMacChineseSimp = 25,
    kTextEncodingMacCentralEurRoman = 29,
    kTextEncodingMacIcelandic = 37,
    kTextEncodingMacUkrainian = 0x98,

    kTextEncodingUnicodeDefault = 0x0100,
    kTextEncodingUnicodeV1_1 = 0x0101,
    kTextEncodingISO10646_1993 = 0x0101,
    kTextEncodingUnicodeV2_0 = 0x0103,
    kTextEncodingUnicodeV2_1 = 0x0103,
    kTextEncodingUnicodeV3_0 = 0x0104,
    kTextEncodingUnicodeV3_1 = 0x0105,
    kTextEncodingUnicodeV3_2 = 0x0106,
    kTextEncodingUnicodeV4_0 = 0x0108,

    kTextEncodingISOLatin1 = 0x0201,
    kTextEncodingISOLatin2 = 0x0202,
    kTextEncodingISOLatin3 = 0x0203,
    kTextEncodingISOLatin4 = 0x0204,
    kTextEncodingISOLatinCyrillic = 0x0205,
    kTextEncodingISOLatinArabic = 0x0206,
    kTextEncodingISOLatinGreek = 0x0207,
    kTextEncodingISOLatinHebrew = 0x0208,
    kTextEncodingISOLatin5 = 0x0209,
    kTextEncodingISOLatin6 = 0x020A,
    kTextEncodingISOLatinThai = 0x020B,
    kTextEncodingISOLatin7 = 0x020D,
    kTextEncodingISOLatin8 = 0x020E,
    kTextEncodingISOLatin9 = 0x020F,
    kTextEncodingISOLatin10 = 0x0210,

    kTextEncodingDOSLatinUS = 0x0400,
    kTextEncodingDOSGreek = 0x0405,
    kTextEncodingDOSBalticRim = 0x0406,
    kTextEncodingDOSLatin1 = 0x0410,
    kTextEncodingDOSGreek1 = 0x0411,
    kTextEncodingDOSLatin2 = 0x0412,
    kTextEncodingDOSCyrillic = 0x0413,
    kTextEncodingDOSTurkish = 0x0414,
    kTextEncodingDOSPortuguese = 0x0415,
    kTextEncodingDOSIcelandic = 0x0416,
    kTextEncodingDOSHebrew = 0x0417,
    kTextEncodingDOSCanadianFrench = 0x0418,
    kTextEncodingDOSArabic = 0x0419,
    kTextEncodingDOSNordic = 0x041A,
    kTextEncodingDOSRussian = 0x041B,
    kTextEncodingDOSGreek2 = 0x041C,
    kTextEncodingDOSThai = 0x041D,
    kTextEncodingDOSJapanese = 0x0420,
    kTextEncodingDOSChineseSimplif = 0x0421,
    kTextEncodingDOSKorean = 0x0422,
    kTextEncodingDOSChineseTrad = 0x0423,

    kTextEncodingWindowsLatin1 = 0x0500,
    kTextEncodingWindowsLatin2 = 0x0501,
    kTextEncodingWindowsCyrillic = 0x0502,
    kTextEncodingWindowsGreek = 0x0503,
    kTextEncodingWindowsLatin5 = 0x0504,
    kTextEncodingWindowsHebrew = 0x0505,
    kTextEncodingWindowsArabic = 0x0506,
    kTextEncodingWindowsBalticRim = 0x0507,
    kTextEncodingWindowsVietnamese = 0x0508,
    kTextEncodingWindowsKoreanJohab = 0x0510,

    kTextEncodingUS_ASCII = 0x0600,
    kTextEncodingGB_18030_2000 = 0x0632,
    kTextEncodingGBK_95 = 0x0631,

    kTextEncodingISO_2022_JP = 0x0820,
    kTextEncodingISO_2022_JP_2 = 0x0821,
    kTextEncodingISO_2022_CN = 0x0830,
    kTextEncodingISO_2022_CN_EXT = 0x0831,
    kTextEncodingISO_2022_KR = 0x0840,

    kTextEncodingEUC_JP = 0x0920,
    kTextEncodingEUC_CN = 0x0930,
    kTextEncodingEUC_TW = 0x0931,
    kTextEncodingEUC_KR = 0x0940,

    kTextEncodingShiftJIS = 0x0A01,
    kTextEncodingKOI8_R = 0x0A02,
    kTextEncodingBig5 = 0x0A03,
    kTextEncodingHZ_GB_2312 = 0x0A05,
    kTextEncodingBig5_HKSCS_1999 = 0x0A06,
    kTextEncodingVISCII = 0x0A07,
    kTextEncodingKOI8_U = 0x0A08,

    kTextEncodingEBCDIC_US = 0x0C01,
    kTextEncodingEBCDIC_CP037 = 0x0C02,

    kTextEncodingMultiRun = 0x0FFF,
    kTextEncodingUnknown = 0xFFFF
};

enum { kTextEncodingDefaultVariant = 0 };

/* Unicode formats (the top six bits of a Unicode text encoding). */
enum {
    kTextEncodingDefaultFormat = 0,
    kUnicode16BitFormat = 0,
    kUnicodeUTF7Format = 1,
    kUnicodeUTF8Format = 2,
    kUnicode32BitFormat = 3,
    kUnicodeUTF16BEFormat = 4,
    kUnicodeUTF16LEFormat = 5,
    kUnicodeUTF32BEFormat = 6,
    kUnicodeUTF32LEFormat = 7,
    kUnicodeUTF16Format = 8,
    kUnicodeUTF32Format = 9
};

TextEncoding CreateTextEncoding(TextEncodingBase base, TextEncodingVariant variant,
                                TextEncodingFormat format);
TextEncodingBase GetTextEncodingBase(TextEncoding encoding);
TextEncodingVariant GetTextEncodingVariant(TextEncoding encoding);
TextEncodingFormat GetTextEncodingFormat(TextEncoding encoding);

/* Makes a converter; kTECNoConversionPathErr when either encoding is unknown
 * here, paramErr for a NULL out pointer (which is then left alone). */
OSStatus TECCreateConverter(TECObjectRef *newEncodingConverter, TextEncoding inputEncoding,
                            TextEncoding outputEncoding);

/* Converts as much of the input as fits.  Answers noErr when all input was
 * consumed, kTECOutputBufferFullStatus when the output filled up first,
 * kTextMalformedInputErr or kTECUnmappableElementErr at the first element that
 * cannot be converted (the lengths then cover what came before it).  A
 * trailing incomplete character counts as consumed and is kept for the next
 * call.  The actual lengths are stored only through non-NULL pointers. */
OSStatus TECConvertText(TECObjectRef encodingConverter, ConstTextPtr inputBuffer,
                        ByteCount inputBufferLength, ByteCount *actualInputLength,
                        TextPtr outputBuffer, ByteCount outputBufferLength,
                        ByteCount *actualOutputLength);

/* Writes any closing shift sequence and forgets a kept partial character
 * (answering kTECPartialCharErr when there was one). */
OSStatus TECFlushText(TECObjectRef encodingConverter, TextPtr outputBuffer,
                      ByteCount outputBufferLength, ByteCount *actualOutputLength);

/* Releases the converter; paramErr for NULL. */
OSStatus TECDisposeConverter(TECObjectRef encodingConverter);

#ifdef __cplusplus
}
#endif

#endif
