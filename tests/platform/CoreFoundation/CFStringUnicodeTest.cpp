// Character sets, line bounds, normalization, folding and surrogates.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

std::string Utf8(CFStringRef s)
{
    char buffer[256];
    return CFStringGetCString(s, buffer, sizeof buffer, kCFStringEncodingUTF8) ? buffer : "<failed>";
}

TEST(CFStringUnicode, FindsCharactersFromASet)
{
    CFStringRef text = CFSTR("name = value42");
    CFRange found;
    CFCharacterSetRef digits = CFCharacterSetGetPredefined(kCFCharacterSetDecimalDigit);
    ASSERT_TRUE(CFStringFindCharacterFromSet(text, digits, CFRangeMake(0, 14), 0, &found));
    EXPECT_TRUE(found.location == 12 && found.length == 1);
    ASSERT_TRUE(CFStringFindCharacterFromSet(text, digits, CFRangeMake(0, 14), kCFCompareBackwards, &found));
    EXPECT_EQ(found.location, 13);
    CFCharacterSetRef space = CFCharacterSetGetPredefined(kCFCharacterSetWhitespace);
    // Outside the range, not at an anchored start, past the end, or without string or set: not found.
    EXPECT_FALSE(CFStringFindCharacterFromSet(text, space, CFRangeMake(0, 4), 0, &found) ||
                 CFStringFindCharacterFromSet(text, space, CFRangeMake(0, 14), kCFCompareAnchored, &found) ||
                 CFStringFindCharacterFromSet(text, space, CFRangeMake(10, 10), 0, &found) ||
                 CFStringFindCharacterFromSet(nullptr, space, CFRangeMake(0, 0), 0, &found) ||
                 CFStringFindCharacterFromSet(text, nullptr, CFRangeMake(0, 1), 0, &found));
    CFStringFold(nullptr, kCFCompareCaseInsensitive, nullptr);
    CFStringNormalize(nullptr, kCFStringNormalizationFormC);
}

TEST(CFStringUnicode, CharacterSetsAreMadeAndEdited)
{
    CFCharacterSetRef vowels = CFCharacterSetCreateWithCharactersInString(nullptr, CFSTR("aeiou"));
    EXPECT_FALSE(CFCharacterSetIsCharacterMember(vowels, 'x'));
    CFMutableCharacterSetRef set = CFCharacterSetCreateMutableCopy(nullptr, vowels);
    CFCharacterSetAddCharactersInRange(set, CFRangeMake('0', 10));
    CFCharacterSetRemoveCharactersInString(set, CFSTR("a"));
    EXPECT_TRUE(CFCharacterSetIsCharacterMember(set, '7') && CFCharacterSetIsLongCharacterMember(set, 'u'));
    EXPECT_FALSE(CFCharacterSetIsCharacterMember(set, 'a'));
    CFCharacterSetInvert(set);
    EXPECT_TRUE(CFCharacterSetIsCharacterMember(set, 'a') && !CFCharacterSetIsCharacterMember(set, 'e'));
    CFCharacterSetRef inverted = CFCharacterSetCreateInvertedSet(nullptr, vowels);
    EXPECT_TRUE(CFCharacterSetIsCharacterMember(inverted, 'x'));
    CFRelease(inverted);
    CFRelease(set);
    CFRelease(vowels);
    EXPECT_EQ(CFCharacterSetGetPredefined(static_cast<CFCharacterSetPredefinedSet>(99)), nullptr);
    EXPECT_EQ(CFCharacterSetCreateWithCharactersInString(nullptr, nullptr), nullptr);
    EXPECT_EQ(CFCharacterSetCreateWithCharactersInRange(nullptr, CFRangeMake(0x10FFFF, 5)), nullptr);
    EXPECT_FALSE(CFCharacterSetIsCharacterMember(nullptr, 'a'));
}

TEST(CFStringUnicode, LineBoundsCoverEveryLineEnding)
{
    CFStringRef text = CFSTR("one\r\ntwo\nthree");
    CFIndex begin = -1, end = -1, contents = -1;
    CFStringGetLineBounds(text, CFRangeMake(6, 0), &begin, &end, &contents);
    EXPECT_TRUE(begin == 5 && end == 9 && contents == 8);
    CFStringGetLineBounds(text, CFRangeMake(1, 0), &begin, &end, &contents);
    EXPECT_TRUE(begin == 0 && end == 5 && contents == 3);
    CFStringGetLineBounds(text, CFRangeMake(10, 0), &begin, nullptr, &contents);
    EXPECT_TRUE(begin == 9 && contents == 14);
    begin = -1;
    CFStringGetLineBounds(text, CFRangeMake(20, 1), &begin, &end, &contents);
    EXPECT_EQ(begin, -1);
}

TEST(CFStringUnicode, NormalizesAndFolds)
{
    CFMutableStringRef s = CFStringCreateMutableCopy(nullptr, 0, CFSTR("caf\u00e9"));
    CFStringNormalize(s, kCFStringNormalizationFormD);
    EXPECT_EQ(CFStringGetLength(s), 5);
    CFStringNormalize(s, kCFStringNormalizationFormC);
    EXPECT_EQ(Utf8(s), "caf\u00e9");
    CFRelease(s);

    CFMutableStringRef folded = CFStringCreateMutableCopy(nullptr, 0, CFSTR("\u00c9t\u00e9 \uff21\uff22"));
    CFStringFold(folded, kCFCompareCaseInsensitive | kCFCompareDiacriticInsensitive | kCFCompareWidthInsensitive,
                 nullptr);
    EXPECT_EQ(Utf8(folded), "ete ab");
    CFRelease(folded);
}

TEST(CFStringUnicode, SurrogatePairsConvert)
{
    UniChar pair[2];
    ASSERT_TRUE(CFStringGetSurrogatePairForLongCharacter(0x1F600, pair));
    EXPECT_TRUE(pair[0] == 0xD83D && pair[1] == 0xDE00);
    EXPECT_TRUE(CFStringIsSurrogateHighCharacter(pair[0]) && CFStringIsSurrogateLowCharacter(pair[1]));
    EXPECT_EQ(CFStringGetLongCharacterForSurrogatePair(pair[0], pair[1]), 0x1F600u);
    EXPECT_FALSE(CFStringGetSurrogatePairForLongCharacter('A', pair));
    EXPECT_FALSE(CFStringIsSurrogateHighCharacter('A'));
}

TEST(CFStringUnicode, CStringPtrIsTheStoredASCIIText)
{
    CFStringRef made = CFStringCreateWithCString(nullptr, "plain text", kCFStringEncodingUTF8);
    const char *ptr = CFStringGetCStringPtr(made, kCFStringEncodingMacRoman);
    ASSERT_NE(ptr, nullptr);
    EXPECT_STREQ(ptr, "plain text");
    EXPECT_EQ(CFStringGetCStringPtr(made, kCFStringEncodingUTF8), ptr);
    EXPECT_EQ(CFStringGetCStringPtr(made, kCFStringEncodingUTF16), nullptr);
    CFRelease(made);
    EXPECT_STREQ(CFStringGetCStringPtr(CFSTR("constant"), kCFStringEncodingASCII), "constant");
    CFStringRef accented = CFStringCreateWithCString(nullptr, "caf\xc3\xa9", kCFStringEncodingUTF8);
    EXPECT_EQ(CFStringGetCStringPtr(accented, kCFStringEncodingUTF8), nullptr);
    CFRelease(accented);
    EXPECT_EQ(CFStringGetCStringPtr(nullptr, kCFStringEncodingUTF8), nullptr);
    const UniChar *units = CFStringGetCharactersPtr(CFSTR("ab"));
    ASSERT_NE(units, nullptr);
    EXPECT_TRUE(units[0] == 'a' && units[1] == 'b');
    EXPECT_EQ(CFStringGetCharactersPtr(nullptr), nullptr);
}

}  // namespace
