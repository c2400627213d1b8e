/* A C program written as Mac code is written: CoreFoundation only, no
 * Objective-C and no autorelease pool of its own.  It dates, collects,
 * fails, remembers a preference, waits on a run-loop timer and classifies
 * characters, and checks every answer itself.  Built outside the tree
 * against the installed package. */
#include <CoreFoundation/CoreFoundation.h>

#include <stdio.h>
#include <string.h>

static int failures;

static void Check(int ok, const char *what)
{
    if (!ok) {
        fprintf(stderr, "mac_style: %s failed\n", what);
        failures++;
    }
}

static void Dates(void)
{
    CFGregorianDate launch = {2007, 1, 9, 17, 41, 0};
    CFTimeZoneRef pacific = CFTimeZoneCreateWithTimeIntervalFromGMT(kCFAllocatorDefault, -8 * 3600);
    CFAbsoluteTime at = CFGregorianDateGetAbsoluteTime(launch, pacific);
    CFDateRef date = CFDateCreate(kCFAllocatorDefault, at);
    CFGregorianDate inGMT = CFAbsoluteTimeGetGregorianDate(CFDateGetAbsoluteTime(date), NULL);
    Check(inGMT.day == 10 && inGMT.hour == 1 && inGMT.minute == 41, "Gregorian dates across zones");
    Check(CFAbsoluteTimeGetDayOfWeek(at, pacific) == 2, "day of the week");
    CFDateRef now = CFDateCreate(kCFAllocatorDefault, CFAbsoluteTimeGetCurrent());
    Check(CFDateCompare(date, now, NULL) == kCFCompareLessThan, "date order");
    CFRelease(now);
    CFRelease(date);
    CFRelease(pacific);
}

static void Sets(void)
{
    const void *names[] = {CFSTR("Finder"), CFSTR("Dock"), CFSTR("Finder")};
    CFSetRef running = CFSetCreate(kCFAllocatorDefault, names, 3, &kCFTypeSetCallBacks);
    Check(CFSetGetCount(running) == 2 && CFSetContainsValue(running, CFSTR("Dock")), "a set of names");
    CFMutableSetRef more = CFSetCreateMutableCopy(kCFAllocatorDefault, 0, running);
    CFSetAddValue(more, CFSTR("Safari"));
    Check(CFSetGetCount(more) == 3 && CFGetTypeID(more) == CFSetGetTypeID(), "a mutable copy");
    CFRelease(more);
    CFRelease(running);
}

static void Errors(void)
{
    CFErrorRef error = CFErrorCreate(kCFAllocatorDefault, kCFErrorDomainPOSIX, 2, NULL);
    CFStringRef description = CFErrorCopyDescription(error);
    Check(CFErrorGetCode(error) == 2 && CFEqual(CFErrorGetDomain(error), kCFErrorDomainPOSIX), "an error");
    Check(description != NULL && CFStringGetLength(description) > 0, "its description");
    if (description != NULL)
        CFRelease(description);
    CFRelease(error);
}

static void Preferences(void)
{
    CFStringRef app = CFSTR("org.koru.tests.mac-style");
    CFStringRef key = CFSTR("LaunchCount");
    int count = 3;
    CFNumberRef value = CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &count);
    CFPreferencesSetAppValue(key, value, app);
    CFRelease(value);
    Check(CFPreferencesAppSynchronize(app), "synchronizing preferences");
    Boolean valid = false;
    Check(CFPreferencesGetAppIntegerValue(key, app, &valid) == 3 && valid, "reading a preference back");
    CFPreferencesSetAppValue(key, NULL, app);
    CFPreferencesAppSynchronize(app);
}

static void Tick(CFRunLoopTimerRef timer, void *info)
{
    (void)timer;
    if (++*(int *)info == 2)
        CFRunLoopStop(CFRunLoopGetCurrent());
}

static void Timer(void)
{
    int ticks = 0;
    CFRunLoopTimerContext context = {0, &ticks, NULL, NULL, NULL};
    CFRunLoopTimerRef timer =
        CFRunLoopTimerCreate(kCFAllocatorDefault, CFAbsoluteTimeGetCurrent() + 0.01, 0.01, 0, 0, Tick, &context);
    CFRunLoopAddTimer(CFRunLoopGetCurrent(), timer, kCFRunLoopCommonModes);
    CFRunLoopRun();
    CFRunLoopTimerInvalidate(timer);
    CFRelease(timer);
    Check(ticks >= 2, "a run-loop timer");
}

static void CharacterSets(void)
{
    CFStringRef line = CFSTR("Version 10.4.11 (8S165)");
    CFRange digit;
    Boolean found = CFStringFindCharacterFromSet(line, CFCharacterSetGetPredefined(kCFCharacterSetDecimalDigit),
                                                 CFRangeMake(0, CFStringGetLength(line)), 0, &digit);
    Check(found && digit.location == 8, "finding a digit");
    CFCharacterSetRef brackets = CFCharacterSetCreateWithCharactersInString(kCFAllocatorDefault, CFSTR("()"));
    Check(CFCharacterSetIsCharacterMember(brackets, '(') && !CFCharacterSetIsCharacterMember(brackets, '8'),
          "a set of characters");
    CFRelease(brackets);
    const char *direct = CFStringGetCStringPtr(line, kCFStringEncodingMacRoman);
    Check(direct == NULL || strcmp(direct, "Version 10.4.11 (8S165)") == 0, "the C string pointer");
}

int main(void)
{
    Dates();
    Sets();
    Errors();
    Preferences();
    Timer();
    CharacterSets();
    if (failures == 0)
        printf("mac_style: dates, sets, errors, preferences, a run-loop timer and character sets work\n");
    return failures == 0 ? 0 : 1;
}
