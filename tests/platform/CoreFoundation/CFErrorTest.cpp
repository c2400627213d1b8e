// Errors: creation, reading back and descriptions.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>

namespace {

// The text of a string the caller owns, released here.
std::string Text(CFStringRef s)
{
    char buffer[512];
    bool ok = s != nullptr && CFStringGetCString(s, buffer, sizeof buffer, kCFStringEncodingUTF8);
    if (s != nullptr)
        CFRelease(s);
    return ok ? buffer : "<null>";
}

TEST(CFError, CarriesDomainCodeAndDetails)
{
    const void *keys[] = {kCFErrorLocalizedFailureReasonKey, CFSTR("Extra")};
    const void *values[] = {CFSTR("The disk is full."), CFSTR("42")};
    CFErrorRef error = CFErrorCreateWithUserInfoKeysAndValues(nullptr, kCFErrorDomainOSStatus, -34, keys, values, 2);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(CFErrorGetCode(error), -34);
    EXPECT_TRUE(CFEqual(CFErrorGetDomain(error), kCFErrorDomainOSStatus));
    EXPECT_EQ(Text(CFErrorCopyFailureReason(error)), "The disk is full.");
    EXPECT_EQ(Text(CFErrorCopyDescription(error)), "The operation couldn\u2019t be completed. The disk is full.");
    EXPECT_EQ(CFErrorCopyRecoverySuggestion(error), nullptr);
    CFDictionaryRef info = CFErrorCopyUserInfo(error);
    EXPECT_EQ(CFDictionaryGetCount(info), 2);
    CFRelease(info);
    CFRelease(error);

    // The details dictionary is copied at creation.
    CFMutableDictionaryRef details =
        CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    CFDictionarySetValue(details, kCFErrorLocalizedDescriptionKey, CFSTR("Custom text"));
    CFErrorRef described = CFErrorCreate(nullptr, CFSTR("org.koru.test"), 7, details);
    CFDictionaryRemoveAllValues(details);
    EXPECT_EQ(Text(CFErrorCopyDescription(described)), "Custom text");
    CFRelease(described);
    CFRelease(details);

    CFErrorRef plain = CFErrorCreate(nullptr, CFSTR("org.koru.test"), 7, nullptr);
    EXPECT_EQ(Text(CFErrorCopyDescription(plain)), "The operation couldn\u2019t be completed. (org.koru.test error 7.)");
    CFDictionaryRef empty = CFErrorCopyUserInfo(plain);
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(CFDictionaryGetCount(empty), 0);
    CFRelease(empty);
    CFRelease(plain);

    CFErrorRef posix = CFErrorCreate(nullptr, kCFErrorDomainPOSIX, ENOENT, nullptr);
    EXPECT_EQ(Text(CFErrorCopyDescription(posix)),
              std::string("The operation couldn\u2019t be completed. ") + strerror(ENOENT));
    CFRelease(posix);
}

TEST(CFError, NullArgumentsGiveNeutralResults)
{
    EXPECT_EQ(CFErrorCreate(nullptr, nullptr, 1, nullptr), nullptr);
    const void *keys[] = {nullptr};
    const void *values[] = {CFSTR("v")};
    EXPECT_EQ(CFErrorCreateWithUserInfoKeysAndValues(nullptr, kCFErrorDomainPOSIX, 1, keys, values, 1), nullptr);
    EXPECT_EQ(CFErrorGetDomain(nullptr), nullptr);
    EXPECT_EQ(CFErrorGetCode(nullptr), 0);
    EXPECT_EQ(CFErrorCopyUserInfo(nullptr), nullptr);
    EXPECT_EQ(CFErrorCopyDescription(nullptr), nullptr);
    EXPECT_EQ(CFErrorCopyFailureReason(nullptr), nullptr);
}

}  // namespace
