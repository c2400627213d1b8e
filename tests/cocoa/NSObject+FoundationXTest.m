/* NSObject(FoundationX): hash numbers and deep property-list copies. */
#import "KTest.h"

#include <KORU/KORU.h>

KT_CASE(HashNumbersHoldTheHashCutTo32Bits)
{
    NSString *text = @"some text";
    NSNumber *hash = [text hashNumber];
    KT_EXPECT([hash unsignedIntValue] == (unsigned int)[text hash]);
    KT_EXPECT([hash unsignedLongLongValue] == (unsigned int)[text hash]); // never negative
}

KT_CASE(DeepCopiesAreMutableAllTheWayDown)
{
    NSDictionary *list = [NSDictionary dictionaryWithObjectsAndKeys:
        [NSArray arrayWithObject:@"leaf"], @"rows", @"text", @"name", nil];
    NSMutableDictionary *copy = [list propertyListMutableCopy];
    KT_ASSERT(copy != nil);
    KT_EXPECT_EQUAL_OBJECTS(copy, list);
    [copy setObject:@"changed" forKey:@"name"];
    [[copy objectForKey:@"rows"] addObject:@"second"];
    [[[copy objectForKey:@"rows"] objectAtIndex:0] appendString:@"!"];
    KT_EXPECT_EQUAL_OBJECTS([[copy objectForKey:@"rows"] objectAtIndex:0], @"leaf!");
    KT_EXPECT([[list objectForKey:@"rows"] count] == 1); // the original is untouched
    [copy release];
    NSArray *immutable = [list propertyListDeepCopy:kCFPropertyListImmutable];
    KT_EXPECT_EQUAL_OBJECTS(immutable, list);
    KT_EXPECT(immutable != (id)list);
    [immutable release];
    NSObject *plain = [[NSObject new] autorelease];
    KT_EXPECT([plain propertyListMutableCopy] == nil);
    KT_EXPECT([[NSArray arrayWithObject:plain] propertyListMutableCopy] == nil);
}

KT_MAIN()
