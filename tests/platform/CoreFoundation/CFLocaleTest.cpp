// Locales: the current one, made ones and their parts.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <string>

namespace {

std::string Text(CFTypeRef s)
{
    char buffer[128];
    return s != nullptr && CFStringGetCString(static_cast<CFStringRef>(s), buffer, sizeof buffer, kCFStringEncodingUTF8)
               ? buffer
               : "<null>";
}

TEST(CFLocale, MadeLocalesAnswerTheirIdentifierAndParts)
{
    CFLocaleRef locale = CFLocaleCreate(nullptr, CFSTR("fr_FR"));
    ASSERT_NE(locale, nullptr);
    EXPECT_EQ(Text(CFLocaleGetIdentifier(locale)), "fr_FR");
    EXPECT_EQ(Text(CFLocaleGetValue(locale, kCFLocaleLanguageCode)), "fr");
    EXPECT_EQ(Text(CFLocaleGetValue(locale, kCFLocaleCountryCode)), "FR");
    EXPECT_EQ(CFLocaleGetValue(locale, CFSTR("unknown key")), nullptr);
    CFRelease(locale);

    CFLocaleRef current = CFLocaleCopyCurrent();
    ASSERT_NE(current, nullptr);
    EXPECT_NE(CFLocaleGetIdentifier(current), nullptr);
    CFRelease(current);
    EXPECT_NE(CFLocaleGetSystem(), nullptr);
    CFArrayRef languages = CFLocaleCopyPreferredLanguages();
    ASSERT_NE(languages, nullptr);
    CFRelease(languages);

    EXPECT_EQ(CFLocaleCreate(nullptr, nullptr), nullptr);
    EXPECT_EQ(CFLocaleGetIdentifier(nullptr), nullptr);
    EXPECT_EQ(CFLocaleGetValue(nullptr, kCFLocaleIdentifier), nullptr);
}

}  // namespace
