#include <CoreServices/TextEncodingConverter.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// A converter that disposes of itself.
struct Converter {
    TECObjectRef ref = nullptr;
    OSStatus created;
    Converter(TextEncoding from, TextEncoding to) : created(TECCreateConverter(&ref, from, to)) {}
    ~Converter() { TECDisposeConverter(ref); }
};

const TextEncoding kUTF8 = CreateTextEncoding(kTextEncodingUnicodeDefault, kTextEncodingDefaultVariant,
                                              kUnicodeUTF8Format);

std::vector<UInt16> UTF16(const char16_t *text)
{
    std::vector<UInt16> units;
    for (; *text != 0; ++text)
        units.push_back(static_cast<UInt16>(*text));
    return units;
}

std::string Bytes(const UInt8 *bytes, ByteCount count)
{
    return std::string(reinterpret_cast<const char *>(bytes), count);
}

} // namespace

TEST(TextEncodingConverterTest, EncodingNumbersMatchTheCFOnes)
{
    EXPECT_EQ(0x08000100u, kUTF8);
    EXPECT_EQ(static_cast<TextEncodingBase>(kTextEncodingUnicodeDefault), GetTextEncodingBase(kUTF8));
    EXPECT_EQ(static_cast<TextEncodingFormat>(kUnicodeUTF8Format), GetTextEncodingFormat(kUTF8));
    EXPECT_EQ(3u, GetTextEncodingVariant(CreateTextEncoding(kTextEncodingMacRoman, 3, 0)));
}

TEST(TextEncodingConverterTest, ConvertsUnicodeToMacAndWesternEncodings)
{
    std::vector<UInt16> cafe = UTF16(u"café");
    const ByteCount inputLength = cafe.size() * 2;
    struct Case {
        TextEncoding to;
        std::string expected;
    } cases[] = {
        {kTextEncodingMacRoman, "caf\x8E"},
        {kTextEncodingISOLatin1, "caf\xE9"},
        {kTextEncodingWindowsLatin1, "caf\xE9"},
        {kUTF8, "caf\xC3\xA9"},
        {CreateTextEncoding(kTextEncodingUnicodeDefault, 0, kUnicodeUTF16BEFormat),
         std::string("\0c\0a\0f\0\xE9", 8)},
    };
    for (const Case &c : cases) {
        Converter tec(kTextEncodingUnicodeDefault, c.to);
        ASSERT_EQ(noErr, tec.created);
        UInt8 output[32] = {0};
        ByteCount consumed = 0, produced = 0;
        EXPECT_EQ(noErr, TECConvertText(tec.ref, reinterpret_cast<ConstTextPtr>(cafe.data()), inputLength,
                                        &consumed, output, sizeof output, &produced));
        EXPECT_EQ(inputLength, consumed);
        EXPECT_EQ(c.expected, Bytes(output, produced)) << std::hex << c.to;
    }
}

TEST(TextEncodingConverterTest, StopsAtUnmappableAndMalformedInput)
{
    // U+6F22 has no MacRoman form: what came before it is converted.
    std::vector<UInt16> text = UTF16(u"ab\u6F22c");
    Converter toRoman(kTextEncodingUnicodeDefault, kTextEncodingMacRoman);
    UInt8 output[16] = {0};
    ByteCount consumed = 0, produced = 0;
    EXPECT_EQ(kTECUnmappableElementErr,
              TECConvertText(toRoman.ref, reinterpret_cast<ConstTextPtr>(text.data()), text.size() * 2,
                             &consumed, output, sizeof output, &produced));
    EXPECT_EQ(4u, consumed);
    EXPECT_EQ("ab", Bytes(output, produced));

    const UInt8 broken[] = {'o', 'k', 0xFF, 'x'};
    Converter fromUTF8(kUTF8, kTextEncodingISOLatin1);
    EXPECT_EQ(kTextMalformedInputErr,
              TECConvertText(fromUTF8.ref, broken, sizeof broken, &consumed, output, sizeof output, &produced));
    EXPECT_EQ(2u, consumed);
    EXPECT_EQ("ok", Bytes(output, produced));
}

TEST(TextEncodingConverterTest, FullOutputBufferResumesWhereItStopped)
{
    const std::string text = "hello, world";
    Converter tec(kUTF8, kTextEncodingMacRoman);
    UInt8 output[5];
    std::string result;
    ByteCount offset = 0;
    OSStatus status;
    do {
        ByteCount consumed = 0, produced = 0;
        status = TECConvertText(tec.ref, reinterpret_cast<ConstTextPtr>(text.data()) + offset,
                                text.size() - offset, &consumed, output, sizeof output, &produced);
        ASSERT_TRUE(status == noErr || status == kTECOutputBufferFullStatus);
        ASSERT_LE(produced, sizeof output);
        offset += consumed;
        result += Bytes(output, produced);
    } while (status == kTECOutputBufferFullStatus);
    EXPECT_EQ(text, result);
}

TEST(TextEncodingConverterTest, CharacterSplitAcrossCallsIsKept)
{
    const UInt8 eAcute[] = {0xC3, 0xA9};
    Converter tec(kUTF8, kTextEncodingISOLatin1);
    UInt8 output[8] = {0};
    ByteCount consumed = 0, produced = 0;
    EXPECT_EQ(noErr, TECConvertText(tec.ref, eAcute, 1, &consumed, output, sizeof output, &produced));
    EXPECT_EQ(1u, consumed);
    EXPECT_EQ(0u, produced);
    EXPECT_EQ(noErr, TECConvertText(tec.ref, eAcute + 1, 1, &consumed, output, sizeof output, &produced));
    EXPECT_EQ(1u, consumed);
    EXPECT_EQ("\xE9", Bytes(output, produced));

    // A half character still pending at the end is reported by the flush.
    EXPECT_EQ(noErr, TECConvertText(tec.ref, eAcute, 1, &consumed, output, sizeof output, &produced));
    EXPECT_EQ(kTECPartialCharErr, TECFlushText(tec.ref, output, sizeof output, &produced));
    EXPECT_EQ(noErr, TECFlushText(tec.ref, output, sizeof output, &produced));
}

TEST(TextEncodingConverterTest, FlushClosesStatefulEncodings)
{
    std::vector<UInt16> text = UTF16(u"\u65E5");
    Converter tec(kTextEncodingUnicodeDefault, kTextEncodingISO_2022_JP);
    UInt8 output[32] = {0};
    ByteCount consumed = 0, produced = 0, flushed = 0;
    ASSERT_EQ(noErr, TECConvertText(tec.ref, reinterpret_cast<ConstTextPtr>(text.data()), 2, &consumed,
                                    output, sizeof output, &produced));
    ASSERT_EQ(noErr, TECFlushText(tec.ref, output + produced, sizeof output - produced, &flushed));
    EXPECT_EQ("\x1B$BF|\x1B(B", Bytes(output, produced + flushed));
}

TEST(TextEncodingConverterTest, BadArgumentsGiveErrorsNotCrashes)
{
    TECObjectRef tec = reinterpret_cast<TECObjectRef>(1);
    EXPECT_EQ(kTECNoConversionPathErr, TECCreateConverter(&tec, 0x7777, kTextEncodingMacRoman));
    EXPECT_EQ(nullptr, tec);
    EXPECT_EQ(paramErr, TECCreateConverter(nullptr, kTextEncodingMacRoman, kUTF8));

    ByteCount consumed = 9, produced = 9;
    UInt8 output[4];
    EXPECT_EQ(paramErr, TECConvertText(nullptr, output, 1, &consumed, output, sizeof output, &produced));
    EXPECT_EQ(0u, consumed);
    EXPECT_EQ(0u, produced);
    Converter valid(kUTF8, kTextEncodingMacRoman);
    EXPECT_EQ(paramErr, TECConvertText(valid.ref, nullptr, 3, &consumed, output, sizeof output, &produced));
    EXPECT_EQ(paramErr, TECFlushText(nullptr, output, sizeof output, &produced));
    EXPECT_EQ(paramErr, TECDisposeConverter(nullptr));
}
