// Preferences over the user defaults of the test's environment.  Every key
// written here is removed again.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

namespace {

const CFStringRef kOtherApp = CFSTR("org.koru.tests.CFPreferencesTest");

TEST(CFPreferences, CurrentApplicationValuesRoundTrip)
{
    CFStringRef key = CFSTR("KORUTestCFPreferencesValue");
    CFPreferencesSetAppValue(key, CFSTR("stored"), kCFPreferencesCurrentApplication);
    EXPECT_TRUE(CFPreferencesAppSynchronize(kCFPreferencesCurrentApplication));
    CFPropertyListRef value = CFPreferencesCopyAppValue(key, kCFPreferencesCurrentApplication);
    ASSERT_NE(value, nullptr);
    EXPECT_TRUE(CFEqual(value, CFSTR("stored")));
    CFRelease(value);

    CFPreferencesSetAppValue(key, kCFBooleanTrue, kCFPreferencesCurrentApplication);
    Boolean valid = false;
    EXPECT_TRUE(CFPreferencesGetAppBooleanValue(key, kCFPreferencesCurrentApplication, &valid));
    EXPECT_TRUE(valid);
    int count = 12;
    CFNumberRef number = CFNumberCreate(nullptr, kCFNumberIntType, &count);
    CFPreferencesSetAppValue(key, number, kCFPreferencesCurrentApplication);
    CFRelease(number);
    EXPECT_EQ(CFPreferencesGetAppIntegerValue(key, kCFPreferencesCurrentApplication, &valid), 12);
    EXPECT_TRUE(valid);

    CFPreferencesSetAppValue(key, nullptr, kCFPreferencesCurrentApplication);
    EXPECT_EQ(CFPreferencesCopyAppValue(key, kCFPreferencesCurrentApplication), nullptr);
    EXPECT_FALSE(CFPreferencesGetAppBooleanValue(key, kCFPreferencesCurrentApplication, &valid));
    EXPECT_FALSE(valid);
}

TEST(CFPreferences, OtherApplicationsHaveTheirOwnDomain)
{
    CFStringRef key = CFSTR("Volume");
    CFPreferencesSetValue(key, CFSTR("11"), kOtherApp, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    EXPECT_TRUE(CFPreferencesSynchronize(kOtherApp, kCFPreferencesCurrentUser, kCFPreferencesAnyHost));
    Boolean valid = false;
    EXPECT_EQ(CFPreferencesGetAppIntegerValue(key, kOtherApp, &valid), 11);
    EXPECT_TRUE(valid);
    EXPECT_EQ(CFPreferencesCopyAppValue(key, kCFPreferencesCurrentApplication), nullptr);
    CFArrayRef keys = CFPreferencesCopyKeyList(kOtherApp, kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    ASSERT_NE(keys, nullptr);
    EXPECT_TRUE(CFArrayContainsValue(keys, CFRangeMake(0, CFArrayGetCount(keys)), key));
    CFRelease(keys);
    // Other users' and hosts' stores are not kept here.
    EXPECT_EQ(CFPreferencesCopyValue(key, kOtherApp, kCFPreferencesAnyUser, kCFPreferencesAnyHost), nullptr);

    CFPreferencesSetAppValue(key, nullptr, kOtherApp);
    EXPECT_TRUE(CFPreferencesAppSynchronize(kOtherApp));

    EXPECT_EQ(CFPreferencesCopyAppValue(nullptr, kOtherApp), nullptr);
    EXPECT_EQ(CFPreferencesCopyAppValue(key, nullptr), nullptr);
    CFPreferencesSetAppValue(nullptr, CFSTR("x"), kOtherApp);
    EXPECT_FALSE(CFPreferencesAppSynchronize(nullptr));
}

}  // namespace
