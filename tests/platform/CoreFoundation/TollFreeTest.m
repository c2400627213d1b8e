/* Toll-free bridging: a Foundation object is its own CF reference, both ways. */
#import "KTest.h"
#include <CoreFoundation/CoreFoundation.h>

KT_CASE(StringsCastBothWays)
{
    NSString *ns = [NSString stringWithFormat:@"bridged %d", 1];
    CFStringRef cf = (CFStringRef)ns;
    KT_EXPECT(CFGetTypeID(cf) == CFStringGetTypeID());
    KT_EXPECT(CFStringGetLength(cf) == 9);
    char buffer[32];
    KT_EXPECT(CFStringGetCString(cf, buffer, sizeof buffer, kCFStringEncodingUTF8));
    KT_EXPECT(strcmp(buffer, "bridged 1") == 0);

    CFStringRef created = CFStringCreateWithCString(NULL, "from CF", kCFStringEncodingUTF8);
    NSString *back = (NSString *)created;
    KT_EXPECT([back isEqualToString:@"from CF"]);
    KT_EXPECT([back hasPrefix:@"from"]);
    CFRelease(created);

    /* A constant string answers Foundation's messages like any other. */
    KT_EXPECT([(NSString *)CFSTR("constant") isEqualToString:@"constant"]);
    KT_EXPECT([@"constant" isEqual:(NSString *)CFSTR("constant")]);
    KT_EXPECT(CFGetTypeID((CFStringRef) @"literal") == CFStringGetTypeID());
}

KT_CASE(EveryBridgedFoundationObjectAnswersItsTypeID)
{
    KT_EXPECT(CFGetTypeID((CFTypeRef)[NSMutableString string]) == CFStringGetTypeID());
    KT_EXPECT(CFGetTypeID((CFTypeRef)[NSData data]) == CFDataGetTypeID());
    KT_EXPECT(CFGetTypeID((CFTypeRef)[NSMutableData data]) == CFDataGetTypeID());
    KT_EXPECT(CFGetTypeID((CFTypeRef)[NSNumber numberWithInt:1]) == CFNumberGetTypeID());
    KT_EXPECT(CFGetTypeID((CFTypeRef)[NSNumber numberWithDouble:1.5]) == CFNumberGetTypeID());
    KT_EXPECT(CFGetTypeID((CFTypeRef)[NSNumber numberWithBool:YES]) == CFBooleanGetTypeID());
    KT_EXPECT(CFGetTypeID((CFTypeRef)[NSArray array]) == CFArrayGetTypeID());
    KT_EXPECT(CFGetTypeID((CFTypeRef)[NSMutableArray array]) == CFArrayGetTypeID());
    KT_EXPECT(CFGetTypeID((CFTypeRef)[NSDictionary dictionary]) == CFDictionaryGetTypeID());
    KT_EXPECT(CFGetTypeID((CFTypeRef)[NSMutableDictionary dictionary]) == CFDictionaryGetTypeID());
    KT_EXPECT(CFGetTypeID((CFTypeRef)[NSURL URLWithString:@"http://a/"]) == CFURLGetTypeID());
    KT_EXPECT(CFGetTypeID((CFTypeRef)[NSUUID UUID]) == CFUUIDGetTypeID());
    KT_EXPECT(CFGetTypeID((CFTypeRef)[NSNull null]) == CFNullGetTypeID());
    KT_EXPECT(CFGetTypeID((CFTypeRef)[NSBundle mainBundle]) == CFBundleGetTypeID());
    KT_EXPECT((id)kCFBooleanTrue == [NSNumber numberWithBool:YES]);
    KT_EXPECT((id)kCFNull == [NSNull null]);
}

KT_CASE(CollectionsMadeByCFAreFoundationCollections)
{
    CFMutableArrayRef array = CFArrayCreateMutable(NULL, 0, &kCFTypeArrayCallBacks);
    CFArrayAppendValue(array, CFSTR("one"));
    [(NSMutableArray *)array addObject:@"two"];
    KT_EXPECT(CFArrayGetCount(array) == 2);
    KT_EXPECT_EQUAL_OBJECTS([(NSArray *)array objectAtIndex:0], @"one");

    CFMutableDictionaryRef dict =
        CFDictionaryCreateMutable(NULL, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    CFDictionarySetValue(dict, CFSTR("k"), array);
    KT_EXPECT([(NSDictionary *)dict objectForKey:@"k"] == (id)array);
    NSString *description = [(NSDictionary *)dict description];
    KT_EXPECT([description rangeOfString:@"two"].location != NSNotFound);
    CFRelease(dict);
    CFRelease(array);

    /* A callback array of objects still answers Foundation's messages. */
    CFMutableArrayRef plain = CFArrayCreateMutable(NULL, 0, NULL);
    CFArrayAppendValue(plain, @"kept");
    KT_EXPECT([(NSArray *)plain count] == 1);
    KT_EXPECT_EQUAL_OBJECTS([(NSArray *)plain lastObject], @"kept");
    CFRelease(plain);
}

KT_CASE(NewTypesAreTheirFoundationClasses)
{
    /* Dates and time zones. */
    CFDateRef date = CFDateCreate(NULL, 86400);
    KT_EXPECT([(id)date isKindOfClass:[NSDate class]]);
    KT_EXPECT([(NSDate *)date timeIntervalSinceReferenceDate] == 86400);
    KT_EXPECT(CFDateGetAbsoluteTime((CFDateRef)[NSDate dateWithTimeIntervalSinceReferenceDate:5]) == 5);
    KT_EXPECT(CFGetTypeID((CFTypeRef)[NSDate date]) == CFDateGetTypeID());
    CFRelease(date);
    KT_EXPECT(CFGetTypeID((CFTypeRef)[NSTimeZone timeZoneForSecondsFromGMT:0]) == CFTimeZoneGetTypeID());
    KT_EXPECT(CFTimeZoneGetSecondsFromGMT((CFTimeZoneRef)[NSTimeZone timeZoneForSecondsFromGMT:3600], 0) == 3600);

    /* Sets, both ways. */
    NSSet *set = [NSSet setWithObjects:@"a", @"b", nil];
    KT_EXPECT(CFGetTypeID((CFTypeRef)set) == CFSetGetTypeID());
    KT_EXPECT(CFSetContainsValue((CFSetRef)set, CFSTR("a")));
    CFMutableSetRef made = CFSetCreateMutable(NULL, 0, &kCFTypeSetCallBacks);
    [(NSMutableSet *)made addObject:@"x"];
    KT_EXPECT(CFSetGetCount(made) == 1);
    KT_EXPECT([(NSSet *)made containsObject:@"x"]);
    CFRelease(made);
    CFMutableSetRef pointers = CFSetCreateMutable(NULL, 0, NULL);
    CFSetAddValue(pointers, @"kept");
    KT_EXPECT([(NSSet *)pointers count] == 1);
    KT_EXPECT_EQUAL_OBJECTS([[(NSSet *)pointers objectEnumerator] nextObject], @"kept");
    CFRelease(pointers);

    /* Errors: the domains are Foundation's. */
    KT_EXPECT([(NSString *)kCFErrorDomainPOSIX isEqualToString:NSPOSIXErrorDomain]);
    KT_EXPECT([(NSString *)kCFErrorLocalizedDescriptionKey isEqualToString:NSLocalizedDescriptionKey]);
    NSError *nsError = [NSError errorWithDomain:NSCocoaErrorDomain code:4 userInfo:nil];
    KT_EXPECT(CFGetTypeID((CFTypeRef)nsError) == CFErrorGetTypeID());
    KT_EXPECT(CFErrorGetCode((CFErrorRef)nsError) == 4);
    CFErrorRef cfError = CFErrorCreate(NULL, kCFErrorDomainPOSIX, 2, NULL);
    KT_EXPECT([(NSError *)cfError code] == 2);
    KT_EXPECT_EQUAL_OBJECTS([(NSError *)cfError domain], NSPOSIXErrorDomain);
    CFRelease(cfError);

    /* Run loops, timers, character sets, locales. */
    KT_EXPECT((id)CFRunLoopGetCurrent() == [NSRunLoop currentRunLoop]);
    KT_EXPECT([(NSString *)kCFRunLoopDefaultMode isEqualToString:NSDefaultRunLoopMode]);
    KT_EXPECT(CFGetTypeID((CFTypeRef)[NSCharacterSet letterCharacterSet]) == CFCharacterSetGetTypeID());
    KT_EXPECT(CFCharacterSetIsCharacterMember((CFCharacterSetRef)[NSCharacterSet decimalDigitCharacterSet], '5'));
    KT_EXPECT([(NSCharacterSet *)CFCharacterSetGetPredefined(kCFCharacterSetWhitespace) characterIsMember:' ']);
    CFLocaleRef locale = CFLocaleCreate(NULL, CFSTR("de_DE"));
    KT_EXPECT_EQUAL_OBJECTS([(NSLocale *)locale localeIdentifier], @"de_DE");
    CFRelease(locale);
}

KT_CASE(BooleansAndNumbersStayApartInFoundation)
{
    NSNumber *one = [NSNumber numberWithInt:1];
    KT_EXPECT(![one isEqual:(id)kCFBooleanTrue]);
    KT_EXPECT(![(id)kCFBooleanTrue isEqual:one]);
    KT_EXPECT([(id)kCFBooleanTrue isEqual:[NSNumber numberWithBool:YES]]);
    NSMutableDictionary *dict = [NSMutableDictionary dictionary];
    [dict setObject:@"number" forKey:one];
    [dict setObject:@"boolean" forKey:(id)kCFBooleanTrue];
    KT_EXPECT([dict count] == 2);
    /* A number made by CF keeps its width for Foundation too. */
    SInt16 value = 300;
    CFNumberRef number = CFNumberCreate(NULL, kCFNumberSInt16Type, &value);
    KT_EXPECT(strcmp([(NSNumber *)number objCType], @encode(short)) == 0);
    KT_EXPECT([(NSNumber *)number intValue] == 300);
    KT_EXPECT([(NSNumber *)number isEqual:[NSNumber numberWithInt:300]]);
    KT_EXPECT([[NSNumber numberWithInt:300] isEqual:(NSNumber *)number]);
    KT_EXPECT_EQUAL_OBJECTS([(NSNumber *)number description], @"300");
    CFRelease(number);
    /* The C string of a Foundation literal is handed out as it is stored. */
    KT_EXPECT(CFStringGetCStringPtr((CFStringRef) @"literal", kCFStringEncodingUTF8) != NULL);
}

KT_MAIN()
