// Text Encoding Converter over iconv.
#include <CoreServices/TextEncodingConverter.h>
#include <CoreServices/MacErrors.h>

#include <cerrno>
#include <cstring>
#include <iconv.h>
#include <new>
#include <vector>

namespace {

struct EncodingName {
    TextEncodingBase base;
    const char *iconvName;
};

// Non-Unicode bases known to glibc's iconv; variants are not distinguished.
const EncodingName kEncodingNames[] = {
    {kTextEncodingMacRoman, "MACINTOSH"},
    {kTextEncodingMacJapanese, "SHIFT_JIS"},
    {kTextEncodingMacChineseTrad, "BIG5"},
    {kTextEncodingMacKorean, "EUC-KR"},
    {kTextEncodingMacCyrillic, "MAC-CYRILLIC"},
    {kTextEncodingMacChineseSimp, "EUC-CN"},
    {kTextEncodingMacCentralEurRoman, "MAC-CENTRALEUROPE"},
    {kTextEncodingMacIcelandic, "MAC-IS"},
    {kTextEncodingMacUkrainian, "MAC-UK"},
    {kTextEncodingISOLatin1, "ISO-8859-1"},
    {kTextEncodingISOLatin2, "ISO-8859-2"},
    {kTextEncodingISOLatin3, "ISO-8859-3"},
    {kTextEncodingISOLatin4, "ISO-8859-4"},
    {kTextEncodingISOLatinCyrillic, "ISO-8859-5"},
    {kTextEncodingISOLatinArabic, "ISO-8859-6"},
    {kTextEncodingISOLatinGreek, "ISO-8859-7"},
    {kTextEncodingISOLatinHebrew, "ISO-8859-8"},
    {kTextEncodingISOLatin5, "ISO-8859-9"},
    {kTextEncodingISOLatin6, "ISO-8859-10"},
    {kTextEncodingISOLatinThai, "ISO-8859-11"},
    {kTextEncodingISOLatin7, "ISO-8859-13"},
    {kTextEncodingISOLatin8, "ISO-8859-14"},
    {kTextEncodingISOLatin9, "ISO-8859-15"},
    {kTextEncodingISOLatin10, "ISO-8859-16"},
    {kTextEncodingDOSLatinUS, "CP437"},
    {kTextEncodingDOSGreek, "CP737"},
    {kTextEncodingDOSBalticRim, "CP775"},
    {kTextEncodingDOSLatin1, "CP850"},
    {kTextEncodingDOSGreek1, "CP851"},
    {kTextEncodingDOSLatin2, "CP852"},
    {kTextEncodingDOSCyrillic, "CP855"},
    {kTextEncodingDOSTurkish, "CP857"},
    {kTextEncodingDOSPortuguese, "CP860"},
    {kTextEncodingDOSIcelandic, "CP861"},
    {kTextEncodingDOSHebrew, "CP862"},
    {kTextEncodingDOSCanadianFrench, "CP863"},
    {kTextEncodingDOSArabic, "CP864"},
    {kTextEncodingDOSNordic, "CP865"},
    {kTextEncodingDOSRussian, "CP866"},
    {kTextEncodingDOSGreek2, "CP869"},
    {kTextEncodingDOSThai, "CP874"},
    {kTextEncodingDOSJapanese, "CP932"},
    {kTextEncodingDOSChineseSimplif, "CP936"},
    {kTextEncodingDOSKorean, "CP949"},
    {kTextEncodingDOSChineseTrad, "CP950"},
    {kTextEncodingWindowsLatin1, "CP1252"},
    {kTextEncodingWindowsLatin2, "CP1250"},
    {kTextEncodingWindowsCyrillic, "CP1251"},
    {kTextEncodingWindowsGreek, "CP1253"},
    {kTextEncodingWindowsLatin5, "CP1254"},
    {kTextEncodingWindowsHebrew, "CP1255"},
    {kTextEncodingWindowsArabic, "CP1256"},
    {kTextEncodingWindowsBalticRim, "CP1257"},
    {kTextEncodingWindowsVietnamese, "CP1258"},
    {kTextEncodingWindowsKoreanJohab, "JOHAB"},
    {kTextEncodingUS_ASCII, "ASCII"},
    {kTextEncodingGBK_95, "GBK"},
    {kTextEncodingGB_18030_2000, "GB18030"},
    {kTextEncodingISO_2022_JP, "ISO-2022-JP"},
    {kTextEncodingISO_2022_JP_2, "ISO-2022-JP-2"},
    {kTextEncodingISO_2022_CN, "ISO-2022-CN"},
    {kTextEncodingISO_2022_CN_EXT, "ISO-2022-CN-EXT"},
    {kTextEncodingISO_2022_KR, "ISO-2022-KR"},
    {kTextEncodingEUC_JP, "EUC-JP"},
    {kTextEncodingEUC_CN, "EUC-CN"},
    {kTextEncodingEUC_TW, "EUC-TW"},
    {kTextEncodingEUC_KR, "EUC-KR"},
    {kTextEncodingShiftJIS, "SHIFT_JIS"},
    {kTextEncodingKOI8_R, "KOI8-R"},
    {kTextEncodingBig5, "BIG5"},
    {kTextEncodingBig5_HKSCS_1999, "BIG5-HKSCS"},
    {kTextEncodingVISCII, "VISCII"},
    {kTextEncodingKOI8_U, "KOI8-U"},
    {kTextEncodingEBCDIC_US, "EBCDIC-US"},
    {kTextEncodingEBCDIC_CP037, "IBM037"},
};

bool IsUnicodeBase(TextEncodingBase base)
{
    return base >= kTextEncodingUnicodeDefault && base <= 0x01FF;
}

const char *UnicodeFormatName(TextEncodingFormat format)
{
    const bool little = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    switch (format) {
    case kUnicode16BitFormat: return little ? "UTF-16LE" : "UTF-16BE";
    case kUnicodeUTF7Format: return "UTF-7";
    case kUnicodeUTF8Format: return "UTF-8";
    case kUnicode32BitFormat: return little ? "UTF-32LE" : "UTF-32BE";
    case kUnicodeUTF16BEFormat: return "UTF-16BE";
    case kUnicodeUTF16LEFormat: return "UTF-16LE";
    case kUnicodeUTF32BEFormat: return "UTF-32BE";
    case kUnicodeUTF32LEFormat: return "UTF-32LE";
    case kUnicodeUTF16Format: return "UTF-16";
    case kUnicodeUTF32Format: return "UTF-32";
    default: return nullptr;
    }
}

const char *IconvNameOf(TextEncoding encoding)
{
    const TextEncodingBase base = GetTextEncodingBase(encoding);
    if (IsUnicodeBase(base))
        return UnicodeFormatName(GetTextEncodingFormat(encoding));
    for (const EncodingName &entry : kEncodingNames)
        if (entry.base == base)
            return entry.iconvName;
    return nullptr;
}

const iconv_t kNoConverter = reinterpret_cast<iconv_t>(-1);

} // namespace

struct OpaqueTECObjectRef {
    iconv_t converter = kNoConverter;
    // Decodes the input alone, to tell an unmappable character from a malformed one.
    iconv_t decoder = kNoConverter;
    std::vector<UInt8> pending;

    ~OpaqueTECObjectRef()
    {
        if (converter != kNoConverter)
            iconv_close(converter);
        if (decoder != kNoConverter)
            iconv_close(decoder);
    }
};

namespace {

// Whether the input at this point starts a well-formed character of the input
// encoding: iconv reports EILSEQ for both kinds of failure.
bool StartsWellFormedCharacter(TECObjectRef tec, const char *input, size_t length)
{
    if (tec->decoder == kNoConverter)
        return false;
    iconv(tec->decoder, nullptr, nullptr, nullptr, nullptr);
    char scratch[64];
    char *in = const_cast<char *>(input);
    char *out = scratch;
    size_t inLeft = length, outLeft = sizeof scratch;
    size_t result = iconv(tec->decoder, &in, &inLeft, &out, &outLeft);
    return result != static_cast<size_t>(-1) || errno != EILSEQ || in != input;
}

OSStatus ConvertBytes(TECObjectRef tec, const std::vector<UInt8> &input, size_t *consumed,
                      TextPtr output, ByteCount outputLength, ByteCount *produced)
{
    char *in = reinterpret_cast<char *>(const_cast<UInt8 *>(input.data()));
    char *out = reinterpret_cast<char *>(output);
    size_t inLeft = input.size(), outLeft = outputLength;
    OSStatus status = noErr;
    while (inLeft > 0) {
        if (iconv(tec->converter, &in, &inLeft, &out, &outLeft) != static_cast<size_t>(-1))
            break;
        if (errno == E2BIG) {
            status = kTECOutputBufferFullStatus;
        } else if (errno == EINVAL) {
            // The input ends inside a character: keep its bytes for the next call.
            tec->pending.assign(reinterpret_cast<UInt8 *>(in), reinterpret_cast<UInt8 *>(in) + inLeft);
            in += inLeft;
            inLeft = 0;
        } else if (errno == EILSEQ) {
            status = StartsWellFormedCharacter(tec, in, inLeft) ? kTECUnmappableElementErr
                                                                 : kTextMalformedInputErr;
        } else {
            status = kTECNoConversionPathErr;
        }
        break;
    }
    *consumed = input.size() - inLeft;
    *produced = outputLength - outLeft;
    return status;
}

} // namespace

extern "C" TextEncoding CreateTextEncoding(TextEncodingBase base, TextEncodingVariant variant,
                                           TextEncodingFormat format)
{
    return (base & 0xFFFFu) | ((variant & 0x3FFu) << 16) | ((format & 0x3Fu) << 26);
}

extern "C" TextEncodingBase GetTextEncodingBase(TextEncoding encoding)
{
    return encoding & 0xFFFFu;
}

extern "C" TextEncodingVariant GetTextEncodingVariant(TextEncoding encoding)
{
    return (encoding >> 16) & 0x3FFu;
}

extern "C" TextEncodingFormat GetTextEncodingFormat(TextEncoding encoding)
{
    return (encoding >> 26) & 0x3Fu;
}

extern "C" OSStatus TECCreateConverter(TECObjectRef *newEncodingConverter, TextEncoding inputEncoding,
                                       TextEncoding outputEncoding)
{
    if (newEncodingConverter == nullptr)
        return paramErr;
    *newEncodingConverter = nullptr;
    const char *from = IconvNameOf(inputEncoding);
    const char *to = IconvNameOf(outputEncoding);
    if (from == nullptr || to == nullptr)
        return kTECNoConversionPathErr;

    TECObjectRef tec = new (std::nothrow) OpaqueTECObjectRef;
    if (tec == nullptr)
        return memFullErr;
    tec->converter = iconv_open(to, from);
    if (tec->converter == kNoConverter) {
        delete tec;
        return kTECNoConversionPathErr;
    }
    tec->decoder = iconv_open("UTF-32LE", from);
    *newEncodingConverter = tec;
    return noErr;
}

extern "C" OSStatus TECConvertText(TECObjectRef encodingConverter, ConstTextPtr inputBuffer,
                                   ByteCount inputBufferLength, ByteCount *actualInputLength,
                                   TextPtr outputBuffer, ByteCount outputBufferLength,
                                   ByteCount *actualOutputLength)
{
    if (actualInputLength != nullptr)
        *actualInputLength = 0;
    if (actualOutputLength != nullptr)
        *actualOutputLength = 0;
    if (encodingConverter == nullptr || (inputBuffer == nullptr && inputBufferLength > 0) ||
        (outputBuffer == nullptr && outputBufferLength > 0))
        return paramErr;

    try {
        // A character left incomplete by the previous call continues here.
        std::vector<UInt8> input;
        input.swap(encodingConverter->pending);
        const size_t carried = input.size();
        if (inputBufferLength > 0)
            input.insert(input.end(), inputBuffer, inputBuffer + inputBufferLength);

        size_t consumed = 0;
        ByteCount produced = 0;
        OSStatus status = ConvertBytes(encodingConverter, input, &consumed, outputBuffer,
                                       outputBufferLength, &produced);
        if (consumed < carried) {
            // Not even the carried bytes went through; keep them for the next call.
            std::vector<UInt8> rest(input.begin() + consumed, input.begin() + carried);
            rest.insert(rest.end(), encodingConverter->pending.begin(), encodingConverter->pending.end());
            encodingConverter->pending.swap(rest);
            consumed = carried;
        }
        if (actualInputLength != nullptr)
            *actualInputLength = consumed - carried;
        if (actualOutputLength != nullptr)
            *actualOutputLength = produced;
        return status;
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSStatus TECFlushText(TECObjectRef encodingConverter, TextPtr outputBuffer,
                                 ByteCount outputBufferLength, ByteCount *actualOutputLength)
{
    if (actualOutputLength != nullptr)
        *actualOutputLength = 0;
    if (encodingConverter == nullptr || (outputBuffer == nullptr && outputBufferLength > 0))
        return paramErr;
    char *out = reinterpret_cast<char *>(outputBuffer);
    size_t outLeft = outputBufferLength;
    OSStatus status = noErr;
    if (iconv(encodingConverter->converter, nullptr, nullptr, &out, &outLeft) == static_cast<size_t>(-1))
        status = errno == E2BIG ? kTECOutputBufferFullStatus : kTECNoConversionPathErr;
    if (status == noErr && !encodingConverter->pending.empty())
        status = kTECPartialCharErr;
    encodingConverter->pending.clear();
    if (actualOutputLength != nullptr)
        *actualOutputLength = outputBufferLength - outLeft;
    return status;
}

extern "C" OSStatus TECDisposeConverter(TECObjectRef encodingConverter)
{
    if (encodingConverter == nullptr)
        return paramErr;
    delete encodingConverter;
    return noErr;
}
