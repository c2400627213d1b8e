/* CFDate over NSDate and CFTimeZone over NSTimeZone.  Gregorian dates are
 * worked out here with the proleptic Gregorian calendar's day arithmetic;
 * only a zone's offset from GMT comes from Foundation. */
#include "CFInternal.h"
#include <math.h>
#include <time.h>

const CFTimeInterval kCFAbsoluteTimeIntervalSince1970 = 978307200.0;
const CFTimeInterval kCFAbsoluteTimeIntervalSince1904 = 3061152000.0;

CFAbsoluteTime CFAbsoluteTimeGetCurrent(void)
{
    struct timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return (double)now.tv_sec - kCFAbsoluteTimeIntervalSince1970 + (double)now.tv_nsec / 1e9;
}

CFTypeID CFDateGetTypeID(void)
{
    return __kCFDateTypeID;
}

CFDateRef CFDateCreate(CFAllocatorRef allocator, CFAbsoluteTime at)
{
    (void)allocator;
    return (CFDateRef)[[NSDate alloc] initWithTimeIntervalSinceReferenceDate:at];
}

CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef theDate)
{
    if (theDate == NULL)
        return 0;
    return [(NSDate *)theDate timeIntervalSinceReferenceDate];
}

CFTimeInterval CFDateGetTimeIntervalSinceDate(CFDateRef theDate, CFDateRef otherDate)
{
    if (theDate == NULL || otherDate == NULL)
        return 0;
    return CFDateGetAbsoluteTime(theDate) - CFDateGetAbsoluteTime(otherDate);
}

CFComparisonResult CFDateCompare(CFDateRef theDate, CFDateRef otherDate, void *context)
{
    (void)context;
    if (theDate == NULL || otherDate == NULL)
        return theDate == otherDate ? kCFCompareEqualTo : (theDate == NULL ? kCFCompareLessThan : kCFCompareGreaterThan);
    CFAbsoluteTime a = CFDateGetAbsoluteTime(theDate), b = CFDateGetAbsoluteTime(otherDate);
    return a < b ? kCFCompareLessThan : (a > b ? kCFCompareGreaterThan : kCFCompareEqualTo);
}

/* ---- Time zones -------------------------------------------------------- */

CFTypeID CFTimeZoneGetTypeID(void)
{
    return __kCFTimeZoneTypeID;
}

CFTimeZoneRef CFTimeZoneCopySystem(void)
{
    CFTimeZoneRef result;
    __CF_POOL_BEGIN
    result = (CFTimeZoneRef)[[NSTimeZone systemTimeZone] retain];
    __CF_POOL_END
    return result;
}

CFTimeZoneRef CFTimeZoneCopyDefault(void)
{
    CFTimeZoneRef result;
    __CF_POOL_BEGIN
    result = (CFTimeZoneRef)[[NSTimeZone defaultTimeZone] retain];
    __CF_POOL_END
    return result;
}

void CFTimeZoneSetDefault(CFTimeZoneRef tz)
{
    if (tz == NULL)
        return;
    __CF_POOL_BEGIN
    [NSTimeZone setDefaultTimeZone:(NSTimeZone *)tz];
    __CF_POOL_END
}

void CFTimeZoneResetSystem(void)
{
    __CF_POOL_BEGIN
    [NSTimeZone resetSystemTimeZone];
    __CF_POOL_END
}

CFTimeZoneRef CFTimeZoneCreateWithName(CFAllocatorRef allocator, CFStringRef name, Boolean tryAbbrev)
{
    (void)allocator;
    if (name == NULL)
        return NULL;
    NSTimeZone *zone = nil;
    __CF_POOL_BEGIN
    @try {
        if (tryAbbrev)
            zone = [NSTimeZone timeZoneWithAbbreviation:(NSString *)name];
        if (zone == nil)
            zone = [NSTimeZone timeZoneWithName:(NSString *)name];
    } @catch (NSException *exception) {
        zone = nil;
    }
    [zone retain];
    __CF_POOL_END
    return (CFTimeZoneRef)zone;
}

CFTimeZoneRef CFTimeZoneCreateWithTimeIntervalFromGMT(CFAllocatorRef allocator, CFTimeInterval ti)
{
    (void)allocator;
    if (!(ti >= -18 * 3600.0 && ti <= 18 * 3600.0))
        return NULL;
    NSTimeZone *zone;
    __CF_POOL_BEGIN
    zone = [[NSTimeZone timeZoneForSecondsFromGMT:(NSInteger)ti] retain];
    __CF_POOL_END
    return (CFTimeZoneRef)zone;
}

CFStringRef CFTimeZoneGetName(CFTimeZoneRef tz)
{
    if (tz == NULL)
        return NULL;
    /* Foundation keeps the name as the zone's own; it lives with the zone. */
    return (CFStringRef)[(NSTimeZone *)tz name];
}

static NSDate *__CFDateAt(CFAbsoluteTime at)
{
    return [NSDate dateWithTimeIntervalSinceReferenceDate:at];
}

CFTimeInterval CFTimeZoneGetSecondsFromGMT(CFTimeZoneRef tz, CFAbsoluteTime at)
{
    if (tz == NULL)
        return 0;
    CFTimeInterval result;
    __CF_POOL_BEGIN
    result = (CFTimeInterval)[(NSTimeZone *)tz secondsFromGMTForDate:__CFDateAt(at)];
    __CF_POOL_END
    return result;
}

CFStringRef CFTimeZoneCopyAbbreviation(CFTimeZoneRef tz, CFAbsoluteTime at)
{
    if (tz == NULL)
        return NULL;
    CFStringRef result;
    __CF_POOL_BEGIN
    result = (CFStringRef)[[(NSTimeZone *)tz abbreviationForDate:__CFDateAt(at)] copy];
    __CF_POOL_END
    return result;
}

Boolean CFTimeZoneIsDaylightSavingTime(CFTimeZoneRef tz, CFAbsoluteTime at)
{
    if (tz == NULL)
        return false;
    Boolean result;
    __CF_POOL_BEGIN
    result = [(NSTimeZone *)tz isDaylightSavingTimeForDate:__CFDateAt(at)] ? true : false;
    __CF_POOL_END
    return result;
}

/* ---- Gregorian dates --------------------------------------------------- */

/* Days from 1 January 2001 to a civil date (any month, carried into years). */
static long long __CFDaysFromCivil(long long year, long long month, long long day)
{
    year += (month - 1) >= 0 ? (month - 1) / 12 : -((12 - month) / 12);
    month = ((month - 1) % 12 + 12) % 12 + 1;
    year -= month <= 2;
    long long era = (year >= 0 ? year : year - 399) / 400;
    long long yearOfEra = year - era * 400;
    long long dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    long long dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 730791; /* days from 0000-03-01 to 2001-01-01 */
}

static void __CFCivilFromDays(long long days, long long *year, int *month, int *day)
{
    days += 730791;
    long long era = (days >= 0 ? days : days - 146096) / 146097;
    long long dayOfEra = days - era * 146097;
    long long yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    long long dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    long long mp = (5 * dayOfYear + 2) / 153;
    *day = (int)(dayOfYear - (153 * mp + 2) / 5 + 1);
    *month = (int)(mp < 10 ? mp + 3 : mp - 9);
    *year = yearOfEra + era * 400 + (*month <= 2);
}

static BOOL __CFIsLeapYear(long long year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

static int __CFDaysInMonth(long long year, int month)
{
    static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && __CFIsLeapYear(year) ? 29 : days[month - 1];
}

Boolean CFGregorianDateIsValid(CFGregorianDate gdate, CFOptionFlags unitFlags)
{
    if ((unitFlags & kCFGregorianUnitsMonths) && (gdate.month < 1 || gdate.month > 12))
        return false;
    if ((unitFlags & kCFGregorianUnitsDays) &&
        (gdate.day < 1 || gdate.month < 1 || gdate.month > 12 || gdate.day > __CFDaysInMonth(gdate.year, gdate.month)))
        return false;
    if ((unitFlags & kCFGregorianUnitsHours) && (gdate.hour < 0 || gdate.hour > 23))
        return false;
    if ((unitFlags & kCFGregorianUnitsMinutes) && (gdate.minute < 0 || gdate.minute > 59))
        return false;
    if ((unitFlags & kCFGregorianUnitsSeconds) && !(gdate.second >= 0 && gdate.second < 60))
        return false;
    return true;
}

/* The wall-clock time as if the zone were GMT. */
static CFAbsoluteTime __CFWallClock(long long year, long long month, long long day, double hour, double minute,
                                    double second)
{
    return (double)__CFDaysFromCivil(year, month, day) * 86400.0 + hour * 3600.0 + minute * 60.0 + second;
}

/* The absolute time of a wall-clock time in a zone: the offset is taken at
 * the wall-clock time, then checked again at the result, so times near a
 * change of offset land on the right side. */
static CFAbsoluteTime __CFFromWallClock(CFAbsoluteTime wall, CFTimeZoneRef tz)
{
    if (tz == NULL)
        return wall;
    CFAbsoluteTime guess = wall - CFTimeZoneGetSecondsFromGMT(tz, wall);
    return wall - CFTimeZoneGetSecondsFromGMT(tz, guess);
}

CFAbsoluteTime CFGregorianDateGetAbsoluteTime(CFGregorianDate gdate, CFTimeZoneRef tz)
{
    CFAbsoluteTime wall = __CFWallClock(gdate.year, gdate.month, gdate.day, gdate.hour, gdate.minute, gdate.second);
    return __CFFromWallClock(wall, tz);
}

CFGregorianDate CFAbsoluteTimeGetGregorianDate(CFAbsoluteTime at, CFTimeZoneRef tz)
{
    CFGregorianDate result = {0, 0, 0, 0, 0, 0};
    if (!isfinite(at))
        return result;
    double wall = at + (tz != NULL ? CFTimeZoneGetSecondsFromGMT(tz, at) : 0);
    double days = floor(wall / 86400.0);
    double seconds = wall - days * 86400.0;
    long long year;
    int month, day;
    __CFCivilFromDays((long long)days, &year, &month, &day);
    result.year = (SInt32)year;
    result.month = (SInt8)month;
    result.day = (SInt8)day;
    result.hour = (SInt8)(int)(seconds / 3600.0);
    result.minute = (SInt8)(int)((seconds - result.hour * 3600.0) / 60.0);
    result.second = seconds - result.hour * 3600.0 - result.minute * 60.0;
    return result;
}

CFAbsoluteTime CFAbsoluteTimeAddGregorianUnits(CFAbsoluteTime at, CFTimeZoneRef tz, CFGregorianUnits units)
{
    CFGregorianDate date = CFAbsoluteTimeGetGregorianDate(at, tz);
    long long month = (long long)date.month + units.months + 12LL * units.years;
    long long year = date.year;
    year += (month - 1) >= 0 ? (month - 1) / 12 : -((12 - month) / 12);
    month = ((month - 1) % 12 + 12) % 12 + 1;
    /* A day past the end of the new month stops at its last day. */
    int day = date.day;
    if (day > __CFDaysInMonth(year, (int)month))
        day = __CFDaysInMonth(year, (int)month);
    CFAbsoluteTime wall = __CFWallClock(year, month, day, date.hour, date.minute, date.second);
    wall += (double)units.days * 86400.0;
    CFAbsoluteTime result = __CFFromWallClock(wall, tz);
    return result + units.hours * 3600.0 + units.minutes * 60.0 + units.seconds;
}

SInt32 CFAbsoluteTimeGetDayOfWeek(CFAbsoluteTime at, CFTimeZoneRef tz)
{
    double wall = at + (tz != NULL ? CFTimeZoneGetSecondsFromGMT(tz, at) : 0);
    long long days = (long long)floor(wall / 86400.0);
    /* 1 January 2001 was a Monday. */
    return (SInt32)(((days % 7) + 7) % 7 + 1);
}

SInt32 CFAbsoluteTimeGetDayOfYear(CFAbsoluteTime at, CFTimeZoneRef tz)
{
    CFGregorianDate date = CFAbsoluteTimeGetGregorianDate(at, tz);
    return (SInt32)(__CFDaysFromCivil(date.year, date.month, date.day) - __CFDaysFromCivil(date.year, 1, 1) + 1);
}
