/* Toll-free bridging: a Foundation object is its own CF reference, both ways. */
#import "KTest.h"
#include <CoreFoundation/CoreFoundation.h>

KT_CASE(StringsCastBothWays)
{
    CFStringRef cf = (CFStringRef)[NSString stringWithFormat:@"bridged %d", 1];
    char buffer[32];
    KT_EXPECT(CFStringGetCString(cf, buffer, sizeof buffer, kCFStringEncodingUTF8) && strcmp(buffer, "bridged 1") == 0);
    CFStringRef created = CFStringCreateWithCString(NULL, "from CF", kCFStringEncodingUTF8);
    KT_EXPECT([(NSString *)created hasPrefix:@"from"]);
    CFRelease(created);
    /* A constant string answers Foundation's messages like any other. */
    KT_EXPECT([@"constant" isEqual:(NSString *)CFSTR("constant")]);
    KT_EXPECT(CFGetTypeID((CFStringRef) @"literal") == CFStringGetTypeID());
    /* The C string of a Foundation literal is handed out as it is stored. */
    KT_EXPECT(CFStringGetCStringPtr((CFStringRef) @"literal", kCFStringEncodingUTF8) != NULL);
}

KT_CASE(EveryBridgedFoundationObjectAnswersItsTypeID)
{
    struct {
        id object;
        CFTypeID type;
    } const objects[] = {
        {[NSMutableString string], CFStringGetTypeID()},
        {[NSData data], CFDataGetTypeID()},
        {[NSMutableData data], CFDataGetTypeID()},
        {[NSNumber numberWithInt:1], CFNumberGetTypeID()},
        {[NSNumber numberWithDouble:1.5], CFNumberGetTypeID()},
        {[NSNumber numberWithBool:YES], CFBooleanGetTypeID()},
        {[NSArray array], CFArrayGetTypeID()},
        {[NSMutableArray array], CFArrayGetTypeID()},
        {[NSDictionary dictionary], CFDictionaryGetTypeID()},
        {[NSMutableDictionary dictionary], CFDictionaryGetTypeID()},
        {[NSURL URLWithString:@"http://a/"], CFURLGetTypeID()},
        {[NSUUID UUID], CFUUIDGetTypeID()},
        {[NSNull null], CFNullGetTypeID()},
        {[NSBundle mainBundle], CFBundleGetTypeID()},
        {[NSDate date], CFDateGetTypeID()},
        {[NSTimeZone timeZoneForSecondsFromGMT:0], CFTimeZoneGetTypeID()},
        {[NSSet setWithObject:@"a"], CFSetGetTypeID()},
        {[NSError errorWithDomain:NSCocoaErrorDomain code:4 userInfo:nil], CFErrorGetTypeID()},
        {[NSCharacterSet letterCharacterSet], CFCharacterSetGetTypeID()},
        {[NSLocale currentLocale], CFLocaleGetTypeID()},
    };
    for (size_t i = 0; i < sizeof objects / sizeof objects[0]; i++)
        KT_EXPECT_MSG(CFGetTypeID((CFTypeRef)objects[i].object) == objects[i].type, @"%@", objects[i].object);
    KT_EXPECT((id)kCFBooleanTrue == [NSNumber numberWithBool:YES]);
    KT_EXPECT((id)kCFNull == [NSNull null]);
}

KT_CASE(CollectionsMadeByCFAreFoundationCollections)
{
    CFMutableArrayRef array = CFArrayCreateMutable(NULL, 0, &kCFTypeArrayCallBacks);
    CFArrayAppendValue(array, CFSTR("one"));
    [(NSMutableArray *)array addObject:@"two"];
    KT_EXPECT(CFArrayGetCount(array) == 2);
    CFMutableDictionaryRef dict =
        CFDictionaryCreateMutable(NULL, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    CFDictionarySetValue(dict, CFSTR("k"), array);
    KT_EXPECT([(NSDictionary *)dict objectForKey:@"k"] == (id)array);
    KT_EXPECT([[(NSDictionary *)dict description] rangeOfString:@"two"].location != NSNotFound);
    CFRelease(dict);
    CFRelease(array);

    /* Plain-pointer collections of objects still answer Foundation's messages. */
    CFMutableArrayRef plain = CFArrayCreateMutable(NULL, 0, NULL);
    CFArrayAppendValue(plain, @"kept");
    KT_EXPECT_EQUAL_OBJECTS([(NSArray *)plain lastObject], @"kept");
    CFRelease(plain);
    CFMutableSetRef pointers = CFSetCreateMutable(NULL, 0, NULL);
    CFSetAddValue(pointers, @"kept");
    KT_EXPECT_EQUAL_OBJECTS([[(NSSet *)pointers objectEnumerator] nextObject], @"kept");
    CFRelease(pointers);
    CFMutableSetRef made = CFSetCreateMutable(NULL, 0, &kCFTypeSetCallBacks);
    [(NSMutableSet *)made addObject:@"x"];
    KT_EXPECT(CFSetGetCount(made) == 1 && CFSetContainsValue((CFSetRef)[NSSet setWithObject:@"x"], CFSTR("x")));
    CFRelease(made);
}

KT_CASE(NewTypesAreTheirFoundationClasses)
{
    CFDateRef date = CFDateCreate(NULL, 86400);
    KT_EXPECT([(NSDate *)date timeIntervalSinceReferenceDate] == 86400);
    CFRelease(date);
    KT_EXPECT(CFTimeZoneGetSecondsFromGMT((CFTimeZoneRef)[NSTimeZone timeZoneForSecondsFromGMT:3600], 0) == 3600);

    /* Errors: the domains and keys are Foundation's. */
    KT_EXPECT([(NSString *)kCFErrorDomainPOSIX isEqualToString:NSPOSIXErrorDomain]);
    KT_EXPECT([(NSString *)kCFErrorLocalizedDescriptionKey isEqualToString:NSLocalizedDescriptionKey]);
    KT_EXPECT(CFErrorGetCode((CFErrorRef)[NSError errorWithDomain:NSCocoaErrorDomain code:4 userInfo:nil]) == 4);
    CFErrorRef cfError = CFErrorCreate(NULL, kCFErrorDomainPOSIX, 2, NULL);
    KT_EXPECT([(NSError *)cfError code] == 2 && [[(NSError *)cfError domain] isEqual:NSPOSIXErrorDomain]);
    CFRelease(cfError);

    /* Run loops, character sets, locales. */
    KT_EXPECT((id)CFRunLoopGetCurrent() == [NSRunLoop currentRunLoop]);
    KT_EXPECT([(NSString *)kCFRunLoopDefaultMode isEqualToString:NSDefaultRunLoopMode]);
    KT_EXPECT(CFCharacterSetIsCharacterMember((CFCharacterSetRef)[NSCharacterSet decimalDigitCharacterSet], '5'));
    KT_EXPECT([(NSCharacterSet *)CFCharacterSetGetPredefined(kCFCharacterSetWhitespace) characterIsMember:' ']);
    CFLocaleRef locale = CFLocaleCreate(NULL, CFSTR("de_DE"));
    KT_EXPECT_EQUAL_OBJECTS([(NSLocale *)locale localeIdentifier], @"de_DE");
    CFRelease(locale);
}

KT_CASE(BooleansAndNumbersStayApartInFoundation)
{
    NSNumber *one = [NSNumber numberWithInt:1];
    KT_EXPECT(![one isEqual:(id)kCFBooleanTrue] && ![(id)kCFBooleanTrue isEqual:one]);
    NSMutableDictionary *dict = [NSMutableDictionary dictionary];
    [dict setObject:@"number" forKey:one];
    [dict setObject:@"boolean" forKey:(id)kCFBooleanTrue];
    KT_EXPECT([dict count] == 2);
    /* A number made by CF keeps its width for Foundation too. */
    SInt16 value = 300;
    CFNumberRef number = CFNumberCreate(NULL, kCFNumberSInt16Type, &value);
    KT_EXPECT(strcmp([(NSNumber *)number objCType], @encode(short)) == 0);
    KT_EXPECT([(NSNumber *)number isEqual:[NSNumber numberWithInt:300]] &&
              [[NSNumber numberWithInt:300] isEqual:(NSNumber *)number]);
    KT_EXPECT_EQUAL_OBJECTS([(NSNumber *)number description], @"300");
    CFRelease(number);
}

KT_MAIN()
