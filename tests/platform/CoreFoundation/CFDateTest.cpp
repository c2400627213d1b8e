// Dates, time zones and Gregorian conversions.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <cmath>
#include <ctime>

namespace {

TEST(CFDate, AbsoluteTimesCountFrom2001)
{
    CFAbsoluteTime now = CFAbsoluteTimeGetCurrent();
    EXPECT_LT(std::fabs(now + kCFAbsoluteTimeIntervalSince1970 - static_cast<double>(time(nullptr))), 5.0);
    CFDateRef a = CFDateCreate(nullptr, 1000.5);
    CFDateRef b = CFDateCreate(nullptr, 2000.0);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(CFDateGetTimeIntervalSinceDate(b, a), 999.5);
    EXPECT_EQ(CFDateCompare(a, b, nullptr), kCFCompareLessThan);
    EXPECT_EQ(CFDateCompare(b, a, nullptr), kCFCompareGreaterThan);
    EXPECT_EQ(CFDateCompare(nullptr, a, nullptr), kCFCompareLessThan);
    EXPECT_EQ(CFDateGetAbsoluteTime(nullptr), 0.0);
    EXPECT_EQ(CFDateGetTimeIntervalSinceDate(a, nullptr), 0.0);
    CFRelease(a);
    CFRelease(b);
}

TEST(CFDate, GregorianDatesConvertBothWays)
{
    CFGregorianDate reference = CFAbsoluteTimeGetGregorianDate(0, nullptr);
    EXPECT_TRUE(reference.year == 2001 && reference.month == 1 && reference.day == 1 && reference.hour == 0);

    // 29 February 2024 13:45:30.25 GMT, a Thursday.
    CFGregorianDate leap = {2024, 2, 29, 13, 45, 30.25};
    EXPECT_TRUE(CFGregorianDateIsValid(leap, kCFGregorianAllUnits));
    CFAbsoluteTime at = CFGregorianDateGetAbsoluteTime(leap, nullptr);
    EXPECT_EQ(at + kCFAbsoluteTimeIntervalSince1970, 1709214330.25);
    CFGregorianDate back = CFAbsoluteTimeGetGregorianDate(at, nullptr);
    EXPECT_TRUE(back.year == 2024 && back.month == 2 && back.day == 29 && back.hour == 13 && back.minute == 45);
    EXPECT_DOUBLE_EQ(back.second, 30.25);
    EXPECT_EQ(CFAbsoluteTimeGetDayOfWeek(at, nullptr), 4);
    EXPECT_EQ(CFAbsoluteTimeGetDayOfYear(at, nullptr), 60);

    // Before the reference date too.
    CFGregorianDate old = CFAbsoluteTimeGetGregorianDate(-kCFAbsoluteTimeIntervalSince1970, nullptr);
    EXPECT_TRUE(old.year == 1970 && old.month == 1 && old.day == 1);

    CFGregorianDate bad = {2023, 2, 29, 0, 0, 0};
    EXPECT_FALSE(CFGregorianDateIsValid(bad, kCFGregorianUnitsDays));
    EXPECT_TRUE(CFGregorianDateIsValid(bad, kCFGregorianUnitsMonths));
    bad.hour = 24;
    EXPECT_FALSE(CFGregorianDateIsValid(bad, kCFGregorianUnitsHours));

    // Adding a month to 31 January stops at the end of February.
    CFGregorianDate january = {2023, 1, 31, 12, 0, 0};
    CFGregorianUnits month = {0, 1, 0, 0, 0, 0};
    CFAbsoluteTime later = CFAbsoluteTimeAddGregorianUnits(CFGregorianDateGetAbsoluteTime(january, nullptr), nullptr, month);
    CFGregorianDate february = CFAbsoluteTimeGetGregorianDate(later, nullptr);
    EXPECT_TRUE(february.month == 2 && february.day == 28);
}

TEST(CFDate, TimeZonesShiftTheWallClock)
{
    CFTimeZoneRef plusTwo = CFTimeZoneCreateWithTimeIntervalFromGMT(nullptr, 7200);
    ASSERT_NE(plusTwo, nullptr);
    EXPECT_EQ(CFAbsoluteTimeGetGregorianDate(0, plusTwo).hour, 2);
    CFGregorianDate midnight = {2001, 1, 1, 0, 0, 0};
    EXPECT_EQ(CFGregorianDateGetAbsoluteTime(midnight, plusTwo), -7200.0);
    CFRelease(plusTwo);

    CFTimeZoneRef paris = CFTimeZoneCreateWithName(nullptr, CFSTR("Europe/Paris"), false);
    if (paris != nullptr) {  // needs the zone database
        EXPECT_EQ(CFStringCompare(CFTimeZoneGetName(paris), CFSTR("Europe/Paris"), 0), kCFCompareEqualTo);
        CFGregorianDate summer = {2024, 7, 1, 12, 0, 0};
        CFAbsoluteTime at = CFGregorianDateGetAbsoluteTime(summer, paris);
        EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(paris, at), 7200.0);
        EXPECT_TRUE(CFTimeZoneIsDaylightSavingTime(paris, at));
        CFRelease(paris);
    }
    for (CFTimeZoneRef zone : {CFTimeZoneCopySystem(), CFTimeZoneCopyDefault()}) {
        ASSERT_NE(zone, nullptr);
        EXPECT_NE(CFTimeZoneGetName(zone), nullptr);
        CFRelease(zone);
    }

    EXPECT_EQ(CFTimeZoneCreateWithName(nullptr, CFSTR("No/Such_Zone"), false), nullptr);
    EXPECT_EQ(CFTimeZoneCreateWithName(nullptr, nullptr, true), nullptr);
    EXPECT_EQ(CFTimeZoneCreateWithTimeIntervalFromGMT(nullptr, 20 * 3600.0), nullptr);
    EXPECT_EQ(CFTimeZoneGetName(nullptr), nullptr);
    EXPECT_EQ(CFTimeZoneGetSecondsFromGMT(nullptr, 0), 0.0);
}

}  // namespace
