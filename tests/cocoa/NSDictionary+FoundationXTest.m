/* NSDictionary(FoundationX) and NSMutableDictionary(FoundationX). */
#import "KTest.h"

#include <KORU/KORU.h>

#include <stdlib.h>
#include <unistd.h>

static NSDictionary *Nested(void)
{
    NSDictionary *inner = [NSDictionary dictionaryWithObjectsAndKeys:@"deep", @"leaf", @"text", @"string", nil];
    return [NSDictionary dictionaryWithObjectsAndKeys:inner, @"inner", @"top", @"name", nil];
}

static id FollowKeys(NSDictionary *dictionary, id first, ...)
{
    va_list arguments;
    va_start(arguments, first);
    id result = [dictionary objectForKeys:first arguments:arguments];
    va_end(arguments);
    return result;
}

KT_CASE(KeyPathsFollowNestedDictionaries)
{
    NSDictionary *nested = Nested();
    KT_EXPECT_EQUAL_OBJECTS(([nested objectForKeys:@"inner", @"leaf", nil]), @"deep");
    KT_EXPECT(([nested objectForKeys:@"inner", @"missing", nil]) == nil);
    KT_EXPECT(([nested objectForKeys:@"inner", @"string", @"further", nil]) == nil); // a string has no keys
    KT_EXPECT([nested objectForKeys:nil] == nested);
    KT_EXPECT_EQUAL_OBJECTS((FollowKeys(nested, @"inner", @"leaf", nil)), @"deep");
    NSString *keys[] = {@"inner", @"leaf", nil};
    KT_EXPECT_EQUAL_OBJECTS([nested objectForKeyStrings:keys], @"deep");
    NSString *tooMany[] = {@"name", @"more", nil};
    KT_EXPECT([nested objectForKeyStrings:tooMany] == nil && [nested objectForKeyStrings:NULL] == nil);
}

KT_CASE(NumberKeysAreDecimalStrings)
{
    NSMutableDictionary *dictionary = [NSMutableDictionary dictionary];
    [dictionary setObject:@"minus five" forNumber:-5];
    [dictionary setObject:@"big" forNumber:4000000000L];
    [dictionary setObject:nil forNumber:7];
    KT_EXPECT_EQUAL_OBJECTS([dictionary objectForKey:@"-5"], @"minus five");
    KT_EXPECT_EQUAL_OBJECTS([dictionary objectForNumber:4000000000L], @"big");
    KT_EXPECT([dictionary objectForNumber:7] == nil && [dictionary count] == 2);
}

KT_CASE(ValuesMoveExchangeAndDefault)
{
    NSMutableDictionary *dictionary = [NSMutableDictionary dictionaryWithObjectsAndKeys:@"1", @"a", @"2", @"b", nil];
    // Never YES, moved or not; without replace an existing key stays.
    KT_EXPECT(![dictionary changeKey:@"a" toKey:@"b" replace:NO]);
    KT_EXPECT_EQUAL_OBJECTS(dictionary, ([NSDictionary dictionaryWithObjectsAndKeys:@"1", @"a", @"2", @"b", nil]));
    KT_EXPECT(![dictionary changeKey:@"a" toKey:@"b" replace:YES]);
    KT_EXPECT(![dictionary changeKey:@"b" toKey:@"c" replace:NO]);
    KT_EXPECT(![dictionary changeKey:@"c" toKey:@"c" replace:YES]);
    KT_EXPECT(![dictionary changeKey:@"missing" toKey:@"d" replace:YES] && ![dictionary changeKey:nil toKey:@"d" replace:YES]);
    KT_EXPECT_EQUAL_OBJECTS(dictionary, [NSDictionary dictionaryWithObject:@"1" forKey:@"c"]);
    KT_EXPECT_EQUAL_OBJECTS([dictionary exchangeObject:@"new" forKey:@"c"], @"1");
    KT_EXPECT_EQUAL_OBJECTS([dictionary exchangeObject:nil forKey:@"c"], @"new"); // nil changes nothing
    KT_EXPECT([dictionary exchangeObject:@"x" forKey:@"fresh"] == nil && [dictionary exchangeObject:@"x" forKey:nil] == nil);
    KT_EXPECT_EQUAL_OBJECTS([dictionary objectForKey:@"c" withSpare:@"spare"], @"new");
    KT_EXPECT_EQUAL_OBJECTS([dictionary objectForKey:@"d" withSpare:@"spare"], @"spare");
    KT_EXPECT_EQUAL_OBJECTS([dictionary objectForKey:@"d"], @"spare");
    KT_EXPECT([dictionary objectForKey:@"e" withSpare:nil] == nil && [dictionary objectForKey:nil withSpare:@"spare"] == nil);
    NSString *owned = [[NSString alloc] initWithFormat:@"owned %d", 1];
    [dictionary setObject:owned forKey:@"o"];
    [owned release];
    id removed = [dictionary copyRemoveObjectForKey:@"o"];
    KT_EXPECT(removed == owned && [dictionary objectForKey:@"o"] == nil);
    KT_EXPECT([removed isEqualToString:@"owned 1"]); // alive: the caller owns it
    [removed release];
    KT_EXPECT([dictionary copyRemoveObjectForKey:@"o"] == nil && [dictionary copyRemoveObjectForKey:nil] == nil);
}

KT_CASE(DictionariesLoadFromResourcesAndPropertyListData)
{
    char pattern[] = "/tmp/koru-dictionaries-XXXXXX";
    KT_ASSERT(mkdtemp(pattern) != NULL);
    NSString *folder = [NSString stringWithUTF8String:pattern];
    NSString *resources = [folder stringByAppendingPathComponent:@"Test.bundle/Resources"];
    [[NSFileManager defaultManager] createDirectoryAtPath:resources withIntermediateDirectories:YES
                                               attributes:nil error:NULL];
    [Nested() writeToFile:[resources stringByAppendingPathComponent:@"Nested.plist"] atomically:YES];
    [[NSArray arrayWithObject:@"x"] writeToFile:[resources stringByAppendingPathComponent:@"List.plist"] atomically:YES];
    NSBundle *bundle = [NSBundle bundleWithPath:[folder stringByAppendingPathComponent:@"Test.bundle"]];
    KT_EXPECT_EQUAL_OBJECTS([NSDictionary dictionaryWithResource:@"Nested.plist" ofBundle:bundle], Nested());
    KT_EXPECT([NSDictionary dictionaryWithResource:@"List.plist" ofBundle:bundle] == nil);
    KT_EXPECT([NSDictionary dictionaryWithResource:@"None.plist" ofBundle:bundle] == nil &&
              [NSDictionary dictionaryWithResource:nil ofBundle:nil] == nil);
    NSData *xml = [NSData dataWithPropertyList:Nested()];
    NSDictionary *loaded = [NSMutableDictionary dictionaryWithXMLData:xml];
    KT_EXPECT([loaded isEqual:Nested()] && [loaded isKindOfClass:[NSMutableDictionary class]]);
    KT_EXPECT([NSDictionary dictionaryWithXMLData:[NSData dataWithPropertyList:[NSArray array]]] == nil);
    KT_EXPECT([NSDictionary dictionaryWithXMLData:[NSData dataWithBytes:"<plist><dict><key>" length:18]] == nil &&
              [NSDictionary dictionaryWithXMLData:nil] == nil);
    system([[NSString stringWithFormat:@"rm -rf '%@'", folder] UTF8String]);
}

KT_MAIN()
