// Strings: creation from every source, extraction into every form, the
// encoding guarantees (no silent loss, defined buffers on failure), and
// the mutable editing calls.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

// Owns one CF reference for the length of a test.
struct Ref {
    CFTypeRef object;
    explicit Ref(CFTypeRef o) : object(o) {}
    ~Ref() { if (object) CFRelease(object); }
    Ref(const Ref &) = delete;
    Ref &operator=(const Ref &) = delete;
    CFStringRef str() const { return static_cast<CFStringRef>(object); }
    CFMutableStringRef mstr() const { return (CFMutableStringRef)object; }
    CFDataRef data() const { return static_cast<CFDataRef>(object); }
};

std::string Utf8(CFStringRef s)
{
    char buffer[1024];
    return CFStringGetCString(s, buffer, sizeof buffer, kCFStringEncodingUTF8) ? buffer : "<failed>";
}

std::vector<UInt8> Bytes(CFDataRef d)
{
    const UInt8 *p = CFDataGetBytePtr(d);
    return std::vector<UInt8>(p, p + CFDataGetLength(d));
}

TEST(CFString, CreatesFromEachSourceAndReadsBack)
{
    Ref fromC(CFStringCreateWithCString(nullptr, "caf\xC3\xA9", kCFStringEncodingUTF8));
    ASSERT_NE(fromC.object, nullptr);
    EXPECT_EQ(CFStringGetLength(fromC.str()), 4);
    EXPECT_EQ(CFStringGetCharacterAtIndex(fromC.str(), 3), 0xE9);

    const UniChar units[] = {'c', 'a', 'f', 0xE9};
    const unsigned char pascal[] = {4, 'c', 'a', 'f', 0x8E};  // 0x8E is é in Mac Roman
    const UInt8 latin1[] = {'c', 'a', 'f', 0xE9};
    const Ref same[] = {Ref(CFStringCreateWithCharacters(nullptr, units, 4)),
                        Ref(CFStringCreateWithPascalString(nullptr, pascal, kCFStringEncodingMacRoman)),
                        Ref(CFStringCreateWithBytes(nullptr, latin1, 4, kCFStringEncodingISOLatin1, false))};
    for (const Ref &other : same)
        EXPECT_TRUE(other.object && CFEqual(fromC.object, other.object));

    Ref formatted(CFStringCreateWithFormat(nullptr, nullptr, CFSTR("%@-%d-%s"), fromC.object, 42, "x"));
    EXPECT_EQ(Utf8(formatted.str()), "caf\xC3\xA9-42-x");

    UniChar out[4] = {};
    CFStringGetCharacters(fromC.str(), CFRangeMake(1, 2), out);
    EXPECT_TRUE(out[0] == 'a' && out[1] == 'f' && out[2] == 0);
}

TEST(CFString, InvalidBytesGiveNull)
{
    // A cut-off sequence and an overlong one.
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, (const UInt8 *)"a\xC3", 2, kCFStringEncodingUTF8, false), nullptr);
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, (const UInt8 *)"\xC0\xAF", 2, kCFStringEncodingUTF8, false), nullptr);
    EXPECT_EQ(CFStringCreateWithCString(nullptr, "\x80", kCFStringEncodingASCII), nullptr);
    EXPECT_EQ(CFStringCreateWithCString(nullptr, nullptr, kCFStringEncodingUTF8), nullptr);
    EXPECT_EQ(CFStringCreateWithCString(nullptr, "x", 0x7777), nullptr);
    EXPECT_EQ(CFStringCreateWithCharacters(nullptr, nullptr, 3), nullptr);
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, (const UInt8 *)"\0a\0", 3, kCFStringEncodingUTF16BE, false), nullptr);
}

TEST(CFString, ExtractionFailsWithoutLossAndLeavesBufferEmpty)
{
    Ref s(CFStringCreateWithCString(nullptr, "x\xE2\x82\xAC", kCFStringEncodingUTF8));  // "x€"
    char buffer[16];
    std::memset(buffer, 'Z', sizeof buffer);
    EXPECT_FALSE(CFStringGetCString(s.str(), buffer, sizeof buffer, kCFStringEncodingISOLatin1));
    EXPECT_EQ(buffer[0], '\0');

    // The euro sign exists in Windows Latin 1 (0x80).
    ASSERT_TRUE(CFStringGetCString(s.str(), buffer, sizeof buffer, kCFStringEncodingWindowsLatin1));
    EXPECT_STREQ(buffer, "x\x80");

    // Too small a buffer fails the same way: nothing partial is left behind.
    char tiny[3] = {'Z', 'Z', 'Z'};
    EXPECT_FALSE(CFStringGetCString(s.str(), tiny, sizeof tiny, kCFStringEncodingUTF8));
    EXPECT_EQ(tiny[0], '\0');
    EXPECT_FALSE(CFStringGetCString(s.str(), nullptr, 10, kCFStringEncodingUTF8));

    // Pascal strings: bounded by the buffer and by 255 bytes, empty on failure.
    Str255 out;
    ASSERT_TRUE(CFStringGetPascalString(CFSTR("hello"), out, sizeof out, kCFStringEncodingMacRoman));
    EXPECT_TRUE(out[0] == 5 && std::memcmp(out + 1, "hello", 5) == 0);
    unsigned char small[4] = {9, 9, 9, 9};
    EXPECT_FALSE(CFStringGetPascalString(CFSTR("hello"), small, sizeof small, kCFStringEncodingMacRoman));
    EXPECT_EQ(small[0], 0);
    Ref tooLong(CFStringCreateWithCString(nullptr, std::string(300, 'x').c_str(), kCFStringEncodingASCII));
    EXPECT_FALSE(CFStringGetPascalString(tooLong.str(), out, sizeof out, kCFStringEncodingMacRoman));
    EXPECT_EQ(out[0], 0);
}

TEST(CFString, GetBytesCountsCharactersAndUsesTheLossByte)
{
    Ref s(CFStringCreateWithCString(nullptr, "a\xE2\x82\xAC" "b", kCFStringEncodingUTF8));  // "a€b"
    UInt8 out[8] = {};
    CFIndex used = -1;
    EXPECT_EQ(CFStringGetBytes(s.str(), CFRangeMake(0, 3), kCFStringEncodingASCII, 0, false, out, 8, &used), 1);
    EXPECT_EQ(used, 1);
    EXPECT_EQ(CFStringGetBytes(s.str(), CFRangeMake(0, 3), kCFStringEncodingASCII, '?', false, out, 8, &used), 3);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(out), used), "a?b");
    // Measuring only: no buffer.
    EXPECT_EQ(CFStringGetBytes(s.str(), CFRangeMake(0, 3), kCFStringEncodingUTF8, 0, false, nullptr, 0, &used), 3);
    EXPECT_EQ(used, 5);
    // A character that does not fit is not converted at all.
    EXPECT_EQ(CFStringGetBytes(s.str(), CFRangeMake(0, 3), kCFStringEncodingUTF8, 0, false, out, 3, &used), 1);
    EXPECT_EQ(used, 1);
    EXPECT_EQ(CFStringGetBytes(s.str(), CFRangeMake(2, 5), kCFStringEncodingUTF8, 0, false, out, 8, &used), 0);
}

TEST(CFString, SurrogatePairsConvertWholeAndLoneOnesFail)
{
    const UniChar clef[] = {0xD834, 0xDD1E};  // U+1D11E
    Ref pair(CFStringCreateWithCharacters(nullptr, clef, 2));
    char utf8[8];
    ASSERT_TRUE(CFStringGetCString(pair.str(), utf8, sizeof utf8, kCFStringEncodingUTF8));
    EXPECT_STREQ(utf8, "\xF0\x9D\x84\x9E");
    Ref back(CFStringCreateWithCString(nullptr, utf8, kCFStringEncodingUTF8));
    EXPECT_TRUE(CFEqual(pair.object, back.object));

    // A lone surrogate is a valid CF string; converting it needs a loss byte.
    const UniChar lone[] = {'a', 0xD834, 'b'};
    Ref broken(CFStringCreateWithCharacters(nullptr, lone, 3));
    ASSERT_NE(broken.object, nullptr);
    EXPECT_EQ(CFStringGetCharacterAtIndex(broken.str(), 1), 0xD834);
    EXPECT_FALSE(CFStringGetCString(broken.str(), utf8, sizeof utf8, kCFStringEncodingUTF8));
    Ref lossy(CFStringCreateExternalRepresentation(nullptr, broken.str(), kCFStringEncodingUTF8, 0xFF));
    EXPECT_EQ(Bytes(lossy.data()), (std::vector<UInt8>{'a', 0xFF, 'b'}));
    Ref copy(CFStringCreateMutableCopy(nullptr, 0, broken.str()));
    CFStringAppend(copy.mstr(), CFSTR("!"));
    EXPECT_EQ(CFStringGetLength(copy.str()), 4);
}

TEST(CFString, ExternalRepresentationCarriesAByteOrderMark)
{
    Ref s(CFStringCreateWithCString(nullptr, "Az", kCFStringEncodingASCII));
    Ref utf16(CFStringCreateExternalRepresentation(nullptr, s.str(), kCFStringEncodingUTF16, 0));
    EXPECT_EQ(Bytes(utf16.data()), (std::vector<UInt8>{0xFF, 0xFE, 'A', 0, 'z', 0}));
    Ref be(CFStringCreateExternalRepresentation(nullptr, s.str(), kCFStringEncodingUTF16BE, 0));
    EXPECT_EQ(Bytes(be.data()), (std::vector<UInt8>{0, 'A', 0, 'z'}));

    // Reading back honours the mark; unmarked UTF-16 is big-endian.
    Ref read(CFStringCreateFromExternalRepresentation(nullptr, utf16.data(), kCFStringEncodingUTF16));
    EXPECT_TRUE(CFEqual(read.object, s.object));
    const UInt8 unmarked[] = {0, 'A', 0, 'z'};
    Ref bigEndian(CFStringCreateWithBytes(nullptr, unmarked, 4, kCFStringEncodingUTF16, true));
    EXPECT_TRUE(CFEqual(bigEndian.object, s.object));

    Ref euro(CFStringCreateWithCString(nullptr, "\xE2\x82\xAC", kCFStringEncodingUTF8));
    EXPECT_EQ(CFStringCreateExternalRepresentation(nullptr, euro.str(), kCFStringEncodingISOLatin1, 0), nullptr);
}

TEST(CFString, ComparesAndSearches)
{
    EXPECT_EQ(CFStringCompare(CFSTR("ABC"), CFSTR("abc"), 0), kCFCompareLessThan);
    EXPECT_EQ(CFStringCompare(CFSTR("ABC"), CFSTR("abc"), kCFCompareCaseInsensitive), kCFCompareEqualTo);
    EXPECT_EQ(CFStringCompare(CFSTR("file9"), CFSTR("file10"), kCFCompareNumerically), kCFCompareLessThan);
    EXPECT_EQ(CFStringCompare(nullptr, CFSTR("a"), 0), kCFCompareLessThan);

    CFRange r = CFStringFind(CFSTR("one two two"), CFSTR("two"), 0);
    EXPECT_TRUE(r.location == 4 && r.length == 3);
    EXPECT_EQ(CFStringFind(CFSTR("one two two"), CFSTR("two"), kCFCompareBackwards).location, 8);
    EXPECT_EQ(CFStringFind(CFSTR("one"), CFSTR("zzz"), 0).length, 0);
    EXPECT_TRUE(CFStringHasPrefix(CFSTR("prefix"), CFSTR("pre")) && CFStringHasSuffix(CFSTR("prefix"), CFSTR("fix")));
    EXPECT_FALSE(CFStringHasPrefix(CFSTR("prefix"), CFSTR("")));

    Ref parts(CFStringCreateArrayBySeparatingStrings(nullptr, CFSTR("a,b,,c"), CFSTR(",")));
    ASSERT_EQ(CFArrayGetCount(static_cast<CFArrayRef>(parts.object)), 4);
    Ref joined(CFStringCreateByCombiningStrings(nullptr, static_cast<CFArrayRef>(parts.object), CFSTR("+")));
    EXPECT_EQ(Utf8(joined.str()), "a+b++c");
    EXPECT_EQ(CFStringGetIntValue(CFSTR("  -42abc")), -42);
    EXPECT_DOUBLE_EQ(CFStringGetDoubleValue(CFSTR("2.5")), 2.5);
}

TEST(CFString, MutableEditing)
{
    Ref m(CFStringCreateMutableCopy(nullptr, 0, CFSTR("hello")));
    CFStringAppend(m.mstr(), CFSTR(" world"));
    CFStringInsert(m.mstr(), 0, CFSTR(">> "));
    CFStringReplace(m.mstr(), CFRangeMake(3, 5), CFSTR("HELLO"));
    EXPECT_EQ(Utf8(m.str()), ">> HELLO world");
    CFStringDelete(m.mstr(), CFRangeMake(0, 3));
    CFStringAppendCString(m.mstr(), "!", kCFStringEncodingASCII);
    CFStringAppendFormat(m.mstr(), nullptr, CFSTR(" %d"), 7);
    EXPECT_EQ(CFStringFindAndReplace(m.mstr(), CFSTR("o"), CFSTR("0"), CFRangeMake(0, CFStringGetLength(m.str())), 0), 1);
    EXPECT_EQ(Utf8(m.str()), "HELLO w0rld! 7");

    // Out-of-range edits and NULL arguments change nothing.
    CFStringInsert(m.mstr(), 100, CFSTR("x"));
    CFStringDelete(m.mstr(), CFRangeMake(10, 100));
    CFStringReplace(m.mstr(), CFRangeMake(-1, 2), CFSTR("x"));
    CFStringAppend(m.mstr(), nullptr);
    EXPECT_EQ(Utf8(m.str()), "HELLO w0rld! 7");

    // An immutable string is never changed through the mutable calls.
    Ref fixed(CFStringCreateWithCString(nullptr, "fixed", kCFStringEncodingASCII));
    CFStringAppend((CFMutableStringRef)fixed.object, CFSTR("!"));
    EXPECT_EQ(Utf8(fixed.str()), "fixed");

    Ref padded(CFStringCreateMutableCopy(nullptr, 0, CFSTR("ab")));
    CFStringPad(padded.mstr(), CFSTR("xyz"), 6, 1);
    EXPECT_EQ(Utf8(padded.str()), "abyzxy");
    CFStringPad(padded.mstr(), nullptr, 3, 0);
    EXPECT_EQ(Utf8(padded.str()), "aby");
    Ref trimmed(CFStringCreateMutableCopy(nullptr, 0, CFSTR(" \t text \n")));
    CFStringTrimWhitespace(trimmed.mstr());
    CFStringUppercase(trimmed.mstr(), nullptr);
    EXPECT_EQ(Utf8(trimmed.str()), "TEXT");
}

TEST(CFString, ConstantStringsAreUniqueAndImmortal)
{
    CFStringRef a = CFSTR("constant text");
    EXPECT_EQ(a, CFSTR("constant text"));
    CFRelease(a);
    EXPECT_EQ(Utf8(a), "constant text");

    // A constant string works as a dictionary key with an equal ordinary string.
    Ref ordinary(CFStringCreateWithCString(nullptr, "constant text", kCFStringEncodingASCII));
    EXPECT_EQ(CFHash(a), CFHash(ordinary.object));
    Ref dict(CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    CFDictionarySetValue((CFMutableDictionaryRef)dict.object, a, kCFBooleanTrue);
    EXPECT_EQ(CFDictionaryGetValue(static_cast<CFDictionaryRef>(dict.object), ordinary.object), kCFBooleanTrue);
}

TEST(CFString, EncodingsList)
{
    const CFStringEncoding *list = CFStringGetListOfAvailableEncodings();
    ASSERT_NE(list, nullptr);
    std::vector<CFStringEncoding> encodings;
    for (; *list != kCFStringEncodingInvalidId; ++list)
        encodings.push_back(*list);
    ASSERT_GE(encodings.size(), 10u);

    // Every listed encoding really converts here, both ways.
    Ref sample(CFStringCreateWithCString(nullptr, "Abc 123", kCFStringEncodingASCII));
    for (CFStringEncoding encoding : encodings) {
        Ref bytes(CFStringCreateExternalRepresentation(nullptr, sample.str(), encoding, 0));
        ASSERT_NE(bytes.object, nullptr) << std::hex << encoding;
        Ref back(CFStringCreateFromExternalRepresentation(nullptr, bytes.data(), encoding));
        EXPECT_TRUE(back.object && CFEqual(back.object, sample.object)) << std::hex << encoding;
    }
    EXPECT_TRUE(CFStringIsEncodingAvailable(kCFStringEncodingWindowsLatin1) && !CFStringIsEncodingAvailable(0x7777));

    // The names and numbers other systems give the encodings.
    EXPECT_EQ(CFStringConvertEncodingToNSStringEncoding(kCFStringEncodingUTF8), 4u);
    EXPECT_EQ(CFStringConvertNSStringEncodingToEncoding(30), static_cast<CFStringEncoding>(kCFStringEncodingMacRoman));
    EXPECT_EQ(CFStringConvertIANACharSetNameToEncoding(CFSTR("UTF-8")), static_cast<CFStringEncoding>(kCFStringEncodingUTF8));
    EXPECT_EQ(Utf8(CFStringConvertEncodingToIANACharSetName(kCFStringEncodingISOLatin1)), "iso-8859-1");
    EXPECT_EQ(CFStringConvertEncodingToWindowsCodepage(kCFStringEncodingWindowsLatin1), 1252u);
}

// The system encoding is read from the environment's locale once per process,
// so each setting is checked in a child process.
TEST(CFString, SystemEncodingFollowsTheLocale)
{
    if (std::getenv("KORU_PRINT_SYSTEM_ENCODING") != nullptr) {
        std::printf("encoding=%u\n", static_cast<unsigned>(CFStringGetSystemEncoding()));
        std::exit(0);
    }
    auto run = [](const char *locale) {
        std::string command = std::string("LC_ALL=") + locale + " KORU_PRINT_SYSTEM_ENCODING=1 /proc/" +
                              std::to_string(getpid()) + "/exe --gtest_filter=CFString.SystemEncodingFollowsTheLocale";
        FILE *pipe = popen(command.c_str(), "r");
        unsigned value = 0;
        char line[256];
        while (pipe != nullptr && std::fgets(line, sizeof line, pipe) != nullptr)
            std::sscanf(line, "encoding=%u", &value);
        return pipe != nullptr && pclose(pipe) == 0 ? value : 0;
    };
    EXPECT_EQ(run("C"), static_cast<unsigned>(kCFStringEncodingUTF8));
    EXPECT_EQ(run("C.UTF-8"), static_cast<unsigned>(kCFStringEncodingUTF8));
}

}  // namespace
