#include <KORU/Utils.h>

#include <gtest/gtest.h>

#include <cctype>
#include <climits>
#include <string>
#include <vector>

namespace {

TEST(UtilsConversions, NumbersAndTextRoundTrip)
{
    EXPECT_EQ(Utils::long2string(LONG_MIN), std::to_string(LONG_MIN));
    EXPECT_EQ(Utils::int2string(-7), "-7");
    EXPECT_EQ(Utils::string2long("  42abc"), 42);
    EXPECT_EQ(Utils::string2int("abc"), 0);
    EXPECT_EQ(Utils::long2wstring(-12), WString(L"-12"));
    EXPECT_EQ(Utils::int2wstring(0), WString(L"0"));
    EXPECT_EQ(Utils::wstring2long(L" -7x"), -7);
    EXPECT_EQ(Utils::wstring2int(L"x7"), 0);
    // A code point whose low byte is a digit parses as that digit.
    EXPECT_EQ(Utils::wstring2int(WString(1, wchar_t(0x0135))), 5);
}

TEST(UtilsConversions, WideAndNarrowMapBytesWithoutAnEncoding)
{
    WString wide = Utils::string2wstring("a\xE9");
    ASSERT_EQ(wide.size(), 2u);
    EXPECT_EQ(wide[0], L'a');
    EXPECT_EQ(wide[1], static_cast<wchar_t>(-23)); // a signed char, widened

    EXPECT_EQ(Utils::wstring2string(WString(1, wchar_t(0x0141))), "\x41");
    EXPECT_EQ(Utils::wstring2string(wide), "a\xE9");

    unsigned short units[] = {'h', 0xD83D, 0xDE00, 0};
    wchar_t *copy = Utils::wshort2wchar(units);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy[1], 0xD83D); // surrogates are not combined
    EXPECT_EQ(copy[2], 0xDE00);
    EXPECT_EQ(copy[3], 0);
    delete[] copy;
    EXPECT_EQ(Utils::wshort2wstring(units).size(), 3u);
    EXPECT_EQ(Utils::wshort2wchar(nullptr), nullptr);
    EXPECT_TRUE(Utils::wshort2wstring(nullptr).empty());
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
    EXPECT_EQ(Utils::bytesize2string(0), "0 Bytes");
    EXPECT_EQ(Utils::bytesize2string(1024), "1024 Bytes");
    EXPECT_EQ(Utils::bytesize2string(1025), "1 KB");
    EXPECT_EQ(Utils::bytesize2string(1048576), "1024 KB");
    EXPECT_EQ(Utils::bytesize2string(1049600), "1 MB");
    EXPECT_EQ(Utils::bytesize2string(5ul << 30), "5120 MB");

    unsigned char bytes[] = {0x0A, 0xFF, 0x00};
    EXPECT_EQ(Utils::toHexString(bytes, 3), "0aff00");
    EXPECT_EQ(Utils::toHexString(bytes, 0), "");
    EXPECT_EQ(Utils::toHexString(nullptr, 3), "");
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
    EXPECT_EQ(Utils::compare_version(L"1.10", L"1.9"), 1);
    EXPECT_EQ(Utils::compare_version(L"1.9", L"1.10"), -1);
    EXPECT_EQ(Utils::compare_version(L"2", L"2.0"), -1);
    EXPECT_EQ(Utils::compare_version(L"1.2.0", L"1.2"), 1);
    EXPECT_EQ(Utils::compare_version(L"1..2", L"1.2"), 0);
    EXPECT_EQ(Utils::compare_version(L"10.4.8", L"10.4.8"), 0);
    EXPECT_EQ(Utils::compare_version(L"", L"0"), -1);

    EXPECT_EQ(split_version(L".1..22."), (std::vector<long>{1, 22}));
    EXPECT_EQ(split_version(L"3.b.4c"), (std::vector<long>{3, 0, 4}));
    EXPECT_TRUE(split_version(L"").empty());
}

TEST(WStringTraits, OrderSignedAndCompareLengths)
{
    wchar_t negative[] = {static_cast<wchar_t>(-1), 0};
    EXPECT_EQ(lum::lum_wchar_traits::compare(negative, L"\x01", 1), -1);
    EXPECT_EQ(lum::lum_wchar_traits::compare(L"c", L"a", 1), 1);
    EXPECT_EQ(lum::lum_wchar_traits::compare(L"ab", L"ab", 2), 0);
    EXPECT_EQ(WString(L"abc").compare(L"ab"), 1);
    EXPECT_EQ(WString(L"a").compare(L"abc"), -2);
    EXPECT_EQ(WString(L"az").compare(L"b"), -1);
    EXPECT_EQ(WString(L"ab") + L"c" + WString(L"d"), WString(L"abcd"));
}

} // namespace
