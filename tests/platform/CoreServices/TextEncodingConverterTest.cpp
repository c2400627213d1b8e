#include <CoreServices/TextEncodingConverter.h>

#include <gtest/gtest.h>

#include <string>

namespace {

// A converter that disposes of itself.
struct Converter {
    TECObjectRef ref = nullptr;
    OSStatus created;
    Converter(TextEncoding from, TextEncoding to) : created(TECCreateConverter(&ref, from, to)) {}
    ~Converter() { TECDisposeConverter(ref); }

    // Converts the bytes into a buffer of the given size: the status, what
    // was consumed and what came out.
    OSStatus Convert(const std::string &input, ByteCount &consumed, std::string &output, size_t room = 32)
    {
        UInt8 buffer[64] = {0};
        ByteCount produced = 0;
        const OSStatus status = TECConvertText(ref, reinterpret_cast<ConstTextPtr>(input.data()), input.size(),
                                               &consumed, buffer, room, &produced);
        output.assign(reinterpret_cast<const char *>(buffer), produced);
        return status;
    }
};

const TextEncoding kUTF8 = CreateTextEncoding(kTextEncodingUnicodeDefault, kTextEncodingDefaultVariant,
                                              kUnicodeUTF8Format);

std::string UTF16(const std::u16string &text)
{
    return std::string(reinterpret_cast<const char *>(text.data()), text.size() * 2);
}

} // namespace

TEST(TextEncodingConverterTest, ConvertsUnicodeToMacAndWesternEncodings)
{
    EXPECT_EQ(0x08000100u, kUTF8); // the number CFString uses
    const std::pair<TextEncoding, std::string> cases[] = {
        {kTextEncodingMacRoman, "caf\x8E"},
        {kTextEncodingISOLatin1, "caf\xE9"},
        {kTextEncodingWindowsLatin1, "caf\xE9"},
        {kUTF8, "caf\xC3\xA9"},
        {CreateTextEncoding(kTextEncodingUnicodeDefault, 0, kUnicodeUTF16BEFormat), std::string("\0c\0a\0f\0\xE9", 8)},
    };
    for (const auto &[to, expected] : cases) {
        Converter tec(kTextEncodingUnicodeDefault, to);
        ASSERT_EQ(noErr, tec.created);
        ByteCount consumed = 0;
        std::string output;
        EXPECT_EQ(noErr, tec.Convert(UTF16(u"café"), consumed, output));
        EXPECT_EQ(8u, consumed);
        EXPECT_EQ(expected, output) << std::hex << to;
    }
}

TEST(TextEncodingConverterTest, StopsAtUnmappableAndMalformedInput)
{
    // U+6F22 has no MacRoman form: what came before it is converted.
    ByteCount consumed = 0;
    std::string output;
    Converter toRoman(kTextEncodingUnicodeDefault, kTextEncodingMacRoman);
    EXPECT_EQ(kTECUnmappableElementErr, toRoman.Convert(UTF16(u"ab\u6F22c"), consumed, output));
    EXPECT_EQ(4u, consumed);
    EXPECT_EQ("ab", output);

    Converter fromUTF8(kUTF8, kTextEncodingISOLatin1);
    EXPECT_EQ(kTextMalformedInputErr, fromUTF8.Convert("ok\xFFx", consumed, output));
    EXPECT_EQ(2u, consumed);
    EXPECT_EQ("ok", output);
}

TEST(TextEncodingConverterTest, ConversionContinuesAcrossCalls)
{
    // A full output buffer resumes where it stopped.
    const std::string text = "hello, world";
    Converter tec(kUTF8, kTextEncodingMacRoman);
    std::string result, output;
    OSStatus status;
    for (ByteCount offset = 0, consumed = 0;; offset += consumed) {
        status = tec.Convert(text.substr(offset), consumed, output, 5);
        ASSERT_TRUE(status == noErr || status == kTECOutputBufferFullStatus);
        ASSERT_LE(output.size(), 5u);
        result += output;
        if (status == noErr)
            break;
    }
    EXPECT_EQ(text, result);

    // A character split across calls is kept; one still pending at the end
    // is reported by the flush.
    Converter latin(kUTF8, kTextEncodingISOLatin1);
    ByteCount consumed = 0;
    EXPECT_EQ(noErr, latin.Convert("\xC3", consumed, output));
    EXPECT_EQ(1u, consumed);
    EXPECT_EQ("", output);
    EXPECT_EQ(noErr, latin.Convert("\xA9", consumed, output));
    EXPECT_EQ("\xE9", output);
    EXPECT_EQ(noErr, latin.Convert("\xC3", consumed, output));
    UInt8 buffer[32];
    ByteCount produced = 0;
    EXPECT_EQ(kTECPartialCharErr, TECFlushText(latin.ref, buffer, sizeof buffer, &produced));
    EXPECT_EQ(noErr, TECFlushText(latin.ref, buffer, sizeof buffer, &produced));

    // The flush closes a stateful encoding.
    Converter jis(kTextEncodingUnicodeDefault, kTextEncodingISO_2022_JP);
    ASSERT_EQ(noErr, jis.Convert(UTF16(u"\u65E5"), consumed, output));
    ASSERT_EQ(noErr, TECFlushText(jis.ref, buffer, sizeof buffer, &produced));
    EXPECT_EQ("\x1B$BF|\x1B(B", output + std::string(reinterpret_cast<char *>(buffer), produced));
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
