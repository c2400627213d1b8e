#include <KORU/Utils.h>

#include <gtest/gtest.h>

#include <cctype>
#include <climits>
#include <string>
#include <utility>
#include <vector>

namespace {

TEST(UtilsConversions, NumbersAndTextRoundTrip)
{
    EXPECT_EQ(Utils::long2string(LONG_MIN), std::to_string(LONG_MIN));
    EXPECT_EQ(Utils::int2string(-7), "-7");
    EXPECT_TRUE(Utils::string2long("  42abc") == 42 && Utils::string2int("abc") == 0);
    EXPECT_EQ(Utils::long2wstring(-12), WString(L"-12"));
    EXPECT_EQ(Utils::int2wstring(0), WString(L"0"));
    EXPECT_TRUE(Utils::wstring2long(L" -7x") == -7 && Utils::wstring2int(L"x7") == 0);
    // A code point whose low byte is a digit parses as that digit.
    EXPECT_EQ(Utils::wstring2int(WString(1, wchar_t(0x0135))), 5);
}

TEST(UtilsConversions, WideAndNarrowMapBytesWithoutAnEncoding)
{
    WString wide = Utils::string2wstring("a\xE9");
    EXPECT_EQ(wide, WString({L'a', static_cast<wchar_t>(-23)})); // a signed char, widened

    EXPECT_EQ(Utils::wstring2string(WString(1, wchar_t(0x0141))), "\x41");
    EXPECT_EQ(Utils::wstring2string(wide), "a\xE9");

    unsigned short units[] = {'h', 0xD83D, 0xDE00, 0};
    wchar_t *copy = Utils::wshort2wchar(units);
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(copy[1] == 0xD83D && copy[2] == 0xDE00 && copy[3] == 0); // surrogates are not combined
    delete[] copy;
    EXPECT_EQ(Utils::wshort2wstring(units).size(), 3u);
    EXPECT_TRUE(Utils::wshort2wchar(nullptr) == nullptr && Utils::wshort2wstring(nullptr).empty());
}

TEST(UtilsConversions, Utf8StopsAtThreeBytes)
{
    EXPECT_EQ(Utils::wstring2utf8(L"a\u00E9"), "a\xC3\xA9");
    EXPECT_EQ(Utils::wstring2utf8(L"\u07FF\u0800\uFFFF"), "\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF");
    EXPECT_EQ(Utils::wstring2utf8(WString(1, wchar_t(0x1F600))), "");
    EXPECT_EQ(Utils::wstring2utf8(WString(1, wchar_t(0xD83D))), "\xED\xA0\xBD");
    EXPECT_EQ(Utils::wstring2utf8(WString(1, wchar_t(-1))), "\x7F");
}

TEST(UtilsConversions, SizesAndHexadecimalText)
{
    const std::pair<unsigned long, const char *> sizes[] = {
        {1024, "1024 Bytes"}, {1025, "1 KB"}, {1048576, "1024 KB"}, {1049600, "1 MB"}, {5ul << 30, "5120 MB"}};
    for (const auto &[size, text] : sizes)
        EXPECT_EQ(Utils::bytesize2string(size), text);

    unsigned char bytes[] = {0x0A, 0xFF, 0x00};
    EXPECT_EQ(Utils::toHexString(bytes, 3), "0aff00");
    EXPECT_TRUE(Utils::toHexString(bytes, 0).empty() && Utils::toHexString(nullptr, 3).empty());
}

TEST(UtilsConversions, GuidsAreFreshAndInTheStandardForm)
{
    std::string first = Utils::generateGUID();
    std::string second = Utils::generateGUID();
    ASSERT_EQ(first.size(), 36u);
    EXPECT_NE(first, second);
    for (size_t i = 0; i < first.size(); ++i) {
        if (i == 8 || i == 13 || i == 18 || i == 23)
            EXPECT_EQ(first[i], '-');
        else
            EXPECT_TRUE(std::isxdigit(static_cast<unsigned char>(first[i])) &&
                        !std::islower(static_cast<unsigned char>(first[i])))
                << first;
    }
}

TEST(UtilsConversions, TrimsRemoveRunsOfTheGivenCharacters)
{
    EXPECT_EQ(Utils::trim("xxabxx", "x"), "ab");
    EXPECT_EQ(Utils::trim("xxx", "x"), "");
    EXPECT_EQ(Utils::trim_left(" \tab ", " \t"), "ab ");
    EXPECT_EQ(Utils::trim_right(" \tab \t", " \t"), " \tab");
    EXPECT_EQ(Utils::trim("axa", ""), "axa");
}

TEST(UtilsVersions, ComponentsCompareNumericallyAndLengthBreaksTies)
{
    EXPECT_EQ((std::vector<int>{Utils::compare_version(L"1.10", L"1.9"), Utils::compare_version(L"1.9", L"1.10"),
                                Utils::compare_version(L"2", L"2.0"), Utils::compare_version(L"1.2.0", L"1.2"),
                                Utils::compare_version(L"1..2", L"1.2"), Utils::compare_version(L"", L"0")}),
              (std::vector<int>{1, -1, -1, 1, 0, -1}));

    EXPECT_EQ(split_version(L".1..22."), (std::vector<long>{1, 22}));
    EXPECT_EQ(split_version(L"3.b.4c"), (std::vector<long>{3, 0, 4}));
    EXPECT_TRUE(split_version(L"").empty());
}

TEST(WStringTraits, OrderSignedAndCompareLengths)
{
    wchar_t negative[] = {static_cast<wchar_t>(-1), 0};
    EXPECT_EQ(lum::lum_wchar_traits::compare(negative, L"\x01", 1), -1);
    EXPECT_EQ(lum::lum_wchar_traits::compare(L"c", L"a", 1), 1);
    EXPECT_EQ(WString(L"abc").compare(L"ab"), 1);
    EXPECT_EQ(WString(L"a").compare(L"abc"), -2);
    EXPECT_EQ(WString(L"az").compare(L"b"), -1);
    EXPECT_EQ(WString(L"ab") + L"c" + WString(L"d"), WString(L"abcd"));
}

} // namespace
