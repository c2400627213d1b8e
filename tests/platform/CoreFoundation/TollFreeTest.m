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

KT_MAIN()
