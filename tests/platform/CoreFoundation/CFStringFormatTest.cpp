// CFStringCreateWithFormat prints what CF prints, including the corners
// where the C library and Foundation differ.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

std::string Format(CFStringRef format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    CFStringRef s = CFStringCreateWithFormatAndArguments(nullptr, nullptr, format, arguments);
    va_end(arguments);
    if (s == nullptr)
        return "<null>";
    char buffer[1024];
    bool ok = CFStringGetCString(s, buffer, sizeof buffer, kCFStringEncodingUTF8);
    CFRelease(s);
    return ok ? buffer : "<failed>";
}

TEST(CFStringFormat, PrintsCConversionsAndObjects)
{
    EXPECT_EQ(Format(CFSTR("%d|%5d|%-5d|%05d|%+d"), 42, 42, 42, 42, 42), "42|   42|42   |00042|+42");
    EXPECT_EQ(Format(CFSTR("%ld %lld %u %x %X %o"), -7L, 1LL << 40, 3u, 255, 255, 8), "-7 1099511627776 3 ff FF 10");
    EXPECT_EQ(Format(CFSTR("%.2f %e %g"), 3.14159, 1500.0, 0.5), "3.14 1.500000e+03 0.5");
    EXPECT_EQ(Format(CFSTR("%s and %.3s"), "caf\xc3\xa9", "abcdef"), "caf\u00e9 and abc");
    EXPECT_EQ(Format(CFSTR("%@ / %@"), CFSTR("obj"), nullptr), "obj / (null)");
    EXPECT_EQ(Format(CFSTR("%c%C"), 'a', 0x00E9), "a\u00e9");
    EXPECT_EQ(Format(CFSTR("%2$@ %1$d"), 5, CFSTR("five")), "five 5");
    EXPECT_EQ(Format(CFSTR("%*d|%-*d|"), 4, 1, 3, 2), "   1|2  |");
    EXPECT_EQ(Format(CFSTR("100%%")), "100%");
    const UniChar units[] = {'u', 'n', 'i', 0};
    EXPECT_EQ(Format(CFSTR("%S"), units), "uni");
}

TEST(CFStringFormat, FollowsCFWhereTheCLibraryDiffers)
{
    EXPECT_EQ(Format(CFSTR("%p"), nullptr), "0x0");
    EXPECT_EQ(Format(CFSTR("[%10s]"), static_cast<const char *>(nullptr)), "[(null)]");
    EXPECT_EQ(Format(CFSTR("%f %f"), -NAN, NAN), "nan nan");
    int count = 12345;
    EXPECT_EQ(Format(CFSTR("ab%ncd"), &count), "abcd");
    EXPECT_EQ(count, 12345);
    EXPECT_EQ(Format(CFSTR("a%z")), "a");
    EXPECT_EQ(Format(CFSTR("%k%d"), 7), "7");
}

}  // namespace
