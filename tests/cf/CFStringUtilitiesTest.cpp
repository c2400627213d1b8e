#include <KORU/CFStringUtilities.h>

#include "../platform/CoreServices/FileTestSupport.h"

#include <cstring>
#include <sys/wait.h>
#include <utility>

namespace {

CFStringRef MakeString(const char *utf8)
{
    return CFStringCreateWithCString(nullptr, utf8, kCFStringEncodingUTF8);
}

CFStringRef MakeString(const std::u16string &units)
{
    return CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar *>(units.data()),
                                        static_cast<CFIndex>(units.size()));
}

// A string released at the end of the scope.
struct String {
    CFStringRef ref;
    explicit String(CFStringRef made) : ref(made) {}
    ~String()
    {
        if (ref != nullptr)
            CFRelease(ref);
    }
};

using Span = std::pair<CFIndex, CFIndex>;

// The range {location, length} after the operation.
template <typename Operation> Span After(CFIndex location, CFIndex length, Operation operation)
{
    CFRange range = CFRangeMake(location, length);
    operation(&range);
    return {range.location, range.length};
}

} // namespace

TEST(CFStringUtilitiesTest, AllocCStringConvertsOrGivesNull)
{
    String cafe(MakeString("caf\xC3\xA9"));
    char *utf8 = CFStringAllocCString(cafe.ref, kCFStringEncodingUTF8);
    ASSERT_NE(nullptr, utf8);
    EXPECT_STREQ("caf\xC3\xA9", utf8);
    free(utf8);

    EXPECT_EQ(nullptr, CFStringAllocCString(cafe.ref, kCFStringEncodingASCII));
    EXPECT_EQ(nullptr, CFStringAllocCString(nullptr, kCFStringEncodingUTF8));

    // The buffer holds two bytes per UTF-16 unit: three-byte UTF-8 characters do not fit.
    String japanese(MakeString(u"\u65E5\u672C\u8A9E"));
    EXPECT_EQ(nullptr, CFStringAllocCString(japanese.ref, kCFStringEncodingUTF8));

    // The convertable forms try the system encoding first; it holds any string (UTF-8 here).
    ASSERT_EQ(static_cast<CFStringEncoding>(kCFStringEncodingUTF8), CFStringGetSystemEncoding());
    char *text = CFStringAllocConvertableCString(cafe.ref);
    ASSERT_NE(nullptr, text);
    EXPECT_STREQ("caf\xC3\xA9", text);
    free(text);

    char buffer[16];
    EXPECT_TRUE(CFStringGetConvertableCString(cafe.ref, buffer, sizeof buffer));
    EXPECT_STREQ("caf\xC3\xA9", buffer);

    Str255 pascal;
    EXPECT_TRUE(CFStringGetConvertablePascalString(cafe.ref, pascal, sizeof pascal));
    EXPECT_EQ(0, std::memcmp(pascal, "\x05" "caf\xC3\xA9", 6));

    // Too small for every encoding, and bad arguments.
    EXPECT_FALSE(CFStringGetConvertableCString(cafe.ref, buffer, 3) ||
                 CFStringGetConvertableCString(cafe.ref, buffer, 0) ||
                 CFStringGetConvertableCString(cafe.ref, nullptr, 16) ||
                 CFStringGetConvertableCString(nullptr, buffer, sizeof buffer) ||
                 CFStringGetConvertablePascalString(cafe.ref, nullptr, 16));
    EXPECT_EQ(nullptr, CFStringAllocConvertableCString(nullptr));
}

TEST(CFStringUtilitiesTest, ASCIICopyDropsOtherCharactersAndKeepsTheTerminator)
{
    String mixed(MakeString("a\xC3\xA9 b\xE2\x82\xAC" "cd"));
    char buffer[8];
    EXPECT_EQ(5, CFStringGetASCIICString(mixed.ref, buffer, sizeof buffer));
    EXPECT_STREQ("a bcd", buffer);

    // A one-byte buffer still takes one character, leaving no terminator.
    std::memset(buffer, 'x', sizeof buffer);
    EXPECT_EQ(1, CFStringGetASCIICString(mixed.ref, buffer, 1));
    EXPECT_TRUE(buffer[0] == 'a' && buffer[1] == 'x');

    EXPECT_TRUE(CFStringGetASCIICString(mixed.ref, buffer, 0) == 0 && CFStringGetASCIICString(mixed.ref, nullptr, 8) == 0 &&
                CFStringGetASCIICString(nullptr, buffer, 8) == 0);

    char *allocated = CFStringAllocASCIICString(mixed.ref);
    ASSERT_NE(nullptr, allocated);
    EXPECT_STREQ("a bcd", allocated);
    free(allocated);
    EXPECT_EQ(nullptr, CFStringAllocASCIICString(nullptr));

    // UTF-16 units keep surrogate pairs as they are.
    String text(MakeString(u"a\U0001F600"));
    UniChar *units = CFStringAllocUnicodeCharacters(text.ref);
    ASSERT_NE(nullptr, units);
    EXPECT_TRUE(units[0] == u'a' && units[1] == 0xD83D && units[2] == 0xDE00 && units[3] == 0);
    free(units);
    EXPECT_EQ(nullptr, CFStringAllocUnicodeCharacters(nullptr));
}

TEST(CFStringUtilitiesTest, TECConversionReportsLengthsAndStatus)
{
    String cafe(MakeString("caf\xC3\xA9"));
    ByteCount consumed = 99, produced = 99;
    OSStatus status = 99;
    char *roman = CFStringAllocTECConvertedText(cafe.ref, kTextEncodingMacRoman, 1, &consumed, &produced, &status);
    ASSERT_NE(nullptr, roman);
    EXPECT_TRUE(status == noErr && consumed == 8u && produced == 4u);
    EXPECT_STREQ("caf\x8E", roman);
    free(roman);

    // The whole buffer takes output: one byte per character promised, two needed.
    String acute(MakeString("\xC3\xA9"));
    char *utf8 = CFStringAllocTECConvertedText(acute.ref, kCFStringEncodingUTF8, 1, &consumed, &produced, &status);
    ASSERT_NE(nullptr, utf8);
    EXPECT_TRUE(status == noErr && consumed == 2u && produced == 2u);
    EXPECT_EQ(0, std::memcmp("\xC3\xA9", utf8, 2));
    free(utf8);

    // A failed conversion still hands out the buffer, with what came before.
    String mixed(MakeString(u"ab\u6F22"));
    char *partial = CFStringAllocTECConvertedText(mixed.ref, kTextEncodingMacRoman, 0, &consumed, &produced, &status);
    ASSERT_NE(nullptr, partial);
    EXPECT_TRUE(status == kTECUnmappableElementErr && consumed == 4u);
    EXPECT_STREQ("ab", partial);
    free(partial);

    EXPECT_EQ(nullptr, CFStringAllocTECConvertedText(nullptr, kTextEncodingMacRoman, 1, &consumed, &produced, &status));
    EXPECT_TRUE(status == 0 && consumed == 0u);
}

TEST(CFStringUtilitiesTest, HFSUniStr255TakesOneTo255Units)
{
    HFSUniStr255 name;
    std::memset(&name, 0xAB, sizeof name);
    String empty(MakeString(""));
    EXPECT_FALSE(CFStringGetHFSUniStr255(empty.ref, &name));
    EXPECT_EQ(0, name.length);
    EXPECT_EQ(0, name.unicode[254]);

    String longest(MakeString(std::u16string(255, u'x')));
    EXPECT_TRUE(CFStringGetHFSUniStr255(longest.ref, &name));
    EXPECT_TRUE(name.length == 255 && name.unicode[254] == u'x');

    String tooLong(MakeString(std::u16string(256, u'x')));
    EXPECT_FALSE(CFStringGetHFSUniStr255(tooLong.ref, &name));
    EXPECT_TRUE(name.length == 0 && name.unicode[0] == 0);

    String resume(MakeString("r\xC3\xA9sum\xC3\xA9"));
    EXPECT_TRUE(CFStringGetHFSUniStr255(resume.ref, &name));
    EXPECT_TRUE(name.length == 6 && name.unicode[1] == 0xE9 && name.unicode[6] == 0);
    EXPECT_FALSE(CFStringGetHFSUniStr255(resume.ref, nullptr) || CFStringGetHFSUniStr255(nullptr, &name));
}

TEST(CFStringUtilitiesTest, StringFromTextDescriptorOnly)
{
    AEDesc text;
    ASSERT_EQ(noErr, AECreateDesc(typeText, "caf\x8E", 4, &text));
    String roman(CFStringCreateWithAEDesc(&text, kCFStringEncodingMacRoman));
    String expected(MakeString("caf\xC3\xA9"));
    ASSERT_NE(nullptr, roman.ref);
    EXPECT_TRUE(CFEqual(roman.ref, expected.ref));
    AEDisposeDesc(&text);

    AEDesc utf8;
    ASSERT_EQ(noErr, AECreateDesc(typeUTF8Text, "abc", 3, &utf8));
    EXPECT_EQ(nullptr, CFStringCreateWithAEDesc(&utf8, kCFStringEncodingUTF8));
    AEDisposeDesc(&utf8);
    EXPECT_EQ(nullptr, CFStringCreateWithAEDesc(nullptr, kCFStringEncodingUTF8));
}

TEST(CFStringUtilitiesTest, TestsOnCFObjects)
{
    String empty(MakeString(""));
    String word(MakeString("word"));
    int five = 5;
    CFNumberRef number = CFNumberCreate(nullptr, kCFNumberIntType, &five);
    EXPECT_TRUE(CFStringIsVoid(nullptr));
    EXPECT_TRUE(CFStringIsVoid(empty.ref));
    EXPECT_TRUE(CFStringIsVoid(reinterpret_cast<CFStringRef>(number)));
    EXPECT_FALSE(CFStringIsVoid(word.ref));
    EXPECT_EQ(nullptr, CFTypeRetain(nullptr));
    CFRelease(number);

    String sameWord(MakeString("word"));
    EXPECT_TRUE(CFTypeIsEqualTo(word.ref, sameWord.ref));
    EXPECT_FALSE(CFTypeIsEqualTo(word.ref, empty.ref) || CFTypeIsEqualTo(word.ref, nullptr) ||
                 CFTypeIsEqualTo(nullptr, nullptr));

    TemporaryFolder folder;
    WriteFile(folder / "present file", "x");
    String present(MakeString((folder / "present file").c_str())), missing(MakeString((folder / "missing").c_str()));
    EXPECT_TRUE(CFStringIsExist(present.ref));
    EXPECT_FALSE(CFStringIsExist(missing.ref) || CFStringIsExist(nullptr));
}

TEST(CFStringUtilitiesTest, ShellCommandsRunWithoutQuoting)
{
    TemporaryFolder folder;
    const std::string out = folder / "out.txt";

    String exit3(MakeString("exit 3"));
    int status = CFString_system(exit3.ref);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(3, WEXITSTATUS(status));

    // The parts are joined with single spaces and handed to the shell as they are.
    String argument(MakeString("one two"));
    String prefix(MakeString("printf '[%s]'"));
    String suffix(MakeString(("> '" + out + "'").c_str()));
    EXPECT_EQ(0, CFStringApplySystemCommand(argument.ref, prefix.ref, suffix.ref));
    EXPECT_EQ("[one][two]", ReadFile(out));

    String alone(MakeString(("echo caf\xC3\xA9 > '" + out + "'").c_str()));
    EXPECT_EQ(0, CFStringApplySystemCommand(alone.ref, nullptr, nullptr));
    EXPECT_EQ("caf\xC3\xA9\n", ReadFile(out));

    EXPECT_EQ(-1, CFString_system(nullptr));
    EXPECT_EQ(-1, CFStringApplySystemCommand(nullptr, prefix.ref, suffix.ref));

    // A part that is no string runs nothing, rather than the rest alone.
    const std::string marker = folder / "ran";
    String touch(MakeString(("touch '" + marker + "'").c_str()));
    int five = 5;
    CFNumberRef number = CFNumberCreate(nullptr, kCFNumberIntType, &five);
    EXPECT_EQ(-1, CFStringApplySystemCommand(touch.ref, reinterpret_cast<CFStringRef>(number), nullptr));
    EXPECT_EQ(-1, CFStringApplySystemCommand(touch.ref, nullptr, reinterpret_cast<CFStringRef>(number)));
    EXPECT_NE(0, access(marker.c_str(), F_OK));
    CFRelease(number);
}

TEST(CFStringUtilitiesTest, RangeMovesAndResizesClampTheMovingEdge)
{
    EXPECT_EQ(Span(3, 3), After(5, 3, [](CFRange *r) { CFRangeMove(r, -2); }));
    EXPECT_EQ(Span(0, 3), After(5, 3, [](CFRange *r) { CFRangeMove(r, -10); }));
    EXPECT_EQ(Span(7, 3), After(0, 3, [](CFRange *r) { CFRangeMoveLeftTo(r, 7); }));
    EXPECT_EQ(Span(7, 3), After(7, 3, [](CFRange *r) { CFRangeMoveLeftTo(r, -1); }));
    EXPECT_EQ(Span(7, 3), After(7, 3, [](CFRange *r) { CFRangeMoveRightTo(r, 10); }));
    EXPECT_EQ(Span(0, 3), After(7, 3, [](CFRange *r) { CFRangeMoveRightTo(r, 2); }));

    EXPECT_EQ(Span(0, 8), After(3, 5, [](CFRange *r) { CFRangeResizeLeft(r, 10); }));
    EXPECT_EQ(Span(8, 0), After(3, 5, [](CFRange *r) { CFRangeResizeLeft(r, -7); }));
    EXPECT_EQ(Span(0, 10), After(4, 6, [](CFRange *r) { CFRangeResizeLeftTo(r, -3); }));
    EXPECT_EQ(Span(10, 0), After(4, 6, [](CFRange *r) { CFRangeResizeLeftTo(r, 20); }));
    EXPECT_EQ(Span(7, 3), After(4, 6, [](CFRange *r) { CFRangeResizeLeftTo(r, 7); }));

    EXPECT_EQ(Span(2, 6), After(2, 5, [](CFRange *r) { CFRangeResizeRight(r, 10, 8); }));
    EXPECT_EQ(Span(2, 15), After(2, 5, [](CFRange *r) { CFRangeResizeRight(r, 10, -1); }));
    EXPECT_EQ(Span(2, 0), After(2, 15, [](CFRange *r) { CFRangeResizeRight(r, -100, -1); }));
    EXPECT_EQ(Span(9, 0), After(9, 1, [](CFRange *r) { CFRangeResizeRight(r, 0, 4); })); // a limit before the location
    EXPECT_EQ(Span(4, 5), After(4, 2, [](CFRange *r) { CFRangeResizeRightTo(r, 9); }));
    EXPECT_EQ(Span(4, 0), After(4, 5, [](CFRange *r) { CFRangeResizeRightTo(r, 1); }));

    CFRangeMove(nullptr, 1);
    CFRangeMoveLeftTo(nullptr, 1);
    CFRangeMoveRightTo(nullptr, 1);
    CFRangeResizeLeft(nullptr, 1);
    CFRangeResizeLeftTo(nullptr, 1);
    CFRangeResizeRight(nullptr, 1, 1);
    CFRangeResizeRightTo(nullptr, 1);
}

TEST(CFStringUtilitiesTest, ByteStrings)
{
    unsigned char buffer[16] = {5, 'h', 'e', 'l', 'l', 'o', 'X'};
    unsigned char copy[16] = {0};
    EXPECT_TRUE(PascalStringCopy(buffer, copy));
    EXPECT_EQ(0, std::memcmp(buffer, copy, 6));
    EXPECT_EQ(0, copy[6]);

    // Overlapping areas copy as a move.
    EXPECT_TRUE(PascalStringCopy(buffer, buffer + 2));
    EXPECT_EQ(0, std::memcmp(buffer + 2, "\x05hello", 6));
    EXPECT_FALSE(PascalStringCopy(nullptr, copy) || PascalStringCopy(copy, nullptr));
    EXPECT_EQ(2u, UTF8StringGetLength("\xC3\xA9"));
    EXPECT_EQ(0u, UTF8StringGetLength(nullptr));
}
