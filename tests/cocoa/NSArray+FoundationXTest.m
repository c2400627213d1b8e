/* NSArray(FoundationX) and NSMutableArray(FoundationX) on real arrays,
 * resource files and property-list data. */
#import "KTest.h"

#include <KORU/KORU.h>

#include <stdint.h>
#include <stdlib.h>
#include <unistd.h>

static NSMutableArray *Letters(void)
{
    return [NSMutableArray arrayWithObjects:@"A", @"B", @"C", @"D", @"E", nil];
}

static NSData *IndexList(const uint32_t *indexes, size_t count)
{
    return [NSData dataWithBytes:indexes length:count * sizeof(uint32_t)];
}

static NSArray *Moved(NSArray *array, NSData *indexes, NSUInteger target, BOOL *answer)
{
    NSMutableArray *copy = [[array mutableCopy] autorelease];
    *answer = [copy moveObjects:indexes toIndex:target];
    return copy;
}

/* The move as the remove-then-insert sequence, one element at a time. */
static NSArray *MovedOneByOne(NSArray *array, const uint32_t *indexes, size_t count, NSUInteger target)
{
    NSMutableArray *copy = [[array mutableCopy] autorelease];
    NSMutableArray *block = [NSMutableArray array];
    for (size_t i = 0; i < count; i++)
        [block addObject:[copy objectAtIndex:indexes[i]]];
    for (size_t i = count; i-- > 0;) {
        [copy removeObjectAtIndex:indexes[i]];
        if (indexes[i] < target)
            target--;
    }
    for (size_t i = count; i-- > 0;) {
        if (target < [copy count])
            [copy insertObject:[block objectAtIndex:i] atIndex:target];
        else
            [copy addObject:[block objectAtIndex:i]];
    }
    return copy;
}

KT_CASE(MovingABlockKeepsItsOrderWithinTheArray)
{
    const uint32_t oneAndThree[] = {1, 3};
    BOOL answer = NO;
    NSArray *expected = [NSArray arrayWithObjects:@"A", @"C", @"B", @"D", @"E", nil];
    KT_EXPECT_EQUAL_OBJECTS(Moved(Letters(), IndexList(oneAndThree, 2), 4, &answer), expected);
    KT_EXPECT(answer);
    expected = [NSArray arrayWithObjects:@"B", @"D", @"A", @"C", @"E", nil];
    KT_EXPECT_EQUAL_OBJECTS(Moved(Letters(), IndexList(oneAndThree, 2), 0, &answer), expected);
    expected = [NSArray arrayWithObjects:@"A", @"C", @"E", @"B", @"D", nil];
    KT_EXPECT_EQUAL_OBJECTS(Moved(Letters(), IndexList(oneAndThree, 2), 5, &answer), expected);
    // Past the end the block lands reversed: kept as hosts have always had it.
    expected = [NSArray arrayWithObjects:@"A", @"C", @"E", @"D", @"B", nil];
    KT_EXPECT_EQUAL_OBJECTS(Moved(Letters(), IndexList(oneAndThree, 2), 9, &answer), expected);
    KT_EXPECT(answer);
}

KT_CASE(MovesAgreeWithTheOneByOneSequenceEverywhere)
{
    // Every index list of a 7-element array to every target up to past the end.
    NSMutableArray *array = [NSMutableArray array];
    for (int i = 0; i < 7; i++)
        [array addObject:[NSNumber numberWithInt:i]];
    for (unsigned mask = 1; mask < (1u << 7); mask++) {
        uint32_t indexes[7];
        size_t count = 0;
        for (uint32_t i = 0; i < 7; i++) {
            if (mask & (1u << i))
                indexes[count++] = i;
        }
        for (NSUInteger target = 0; target <= 10; target++) {
            BOOL answer = NO;
            NSArray *moved = Moved(array, IndexList(indexes, count), target, &answer);
            NSArray *expected = MovedOneByOne(array, indexes, count, target);
            KT_EXPECT_MSG([moved isEqual:expected] && answer, @"mask %u target %lu: %@ != %@", mask,
                          (unsigned long)target, moved, expected);
        }
    }
}

KT_CASE(BadIndexListsLeaveTheArrayAlone)
{
    BOOL answer = NO;
    const uint32_t outside[] = {1, 5};
    const uint32_t descending[] = {3, 1};
    const uint32_t twice[] = {2, 2};
    KT_EXPECT_EQUAL_OBJECTS(Moved(Letters(), IndexList(outside, 2), 0, &answer), Letters());
    KT_EXPECT(!answer);
    KT_EXPECT_EQUAL_OBJECTS(Moved(Letters(), IndexList(descending, 2), 0, &answer), Letters());
    KT_EXPECT(!answer);
    KT_EXPECT_EQUAL_OBJECTS(Moved(Letters(), IndexList(twice, 2), 0, &answer), Letters());
    KT_EXPECT(!answer);
    // No list, or one shorter than an index, moves nothing and is no failure.
    KT_EXPECT_EQUAL_OBJECTS(Moved(Letters(), nil, 0, &answer), Letters());
    KT_EXPECT(answer);
    KT_EXPECT_EQUAL_OBJECTS(Moved(Letters(), [NSData dataWithBytes:"\1\0\0" length:3], 0, &answer), Letters());
    KT_EXPECT(answer);
    KT_EXPECT_EQUAL_OBJECTS(Moved(Letters(), (NSData *)@"not data", 0, &answer), Letters());
    KT_EXPECT(answer);
    const uint32_t one[] = {0};
    KT_EXPECT_EQUAL_OBJECTS(Moved([NSMutableArray array], IndexList(one, 1), 0, &answer), [NSArray array]);
    KT_EXPECT(!answer);
}

KT_CASE(SortedInsertionGoesBeforeEqualElements)
{
    NSMutableArray *numbers = [NSMutableArray arrayWithObjects:[NSNumber numberWithInt:1], [NSNumber numberWithInt:2],
                                                               [NSNumber numberWithInt:3], nil];
    NSNumber *two = [NSNumber numberWithInt:2];
    KT_EXPECT([numbers insertObject:two atIndexUsingSelector:@selector(compare:)] == 1);
    KT_EXPECT([numbers objectAtIndex:1] == two);
    KT_EXPECT([numbers insertObject:[NSNumber numberWithInt:9] atIndexUsingSelector:NULL] == 4);
    KT_EXPECT([numbers insertObject:[NSNumber numberWithInt:0] atIndexUsingSelector:NULL] == 0);
    KT_EXPECT([numbers count] == 6);
    NSMutableArray *empty = [NSMutableArray array];
    KT_EXPECT([empty insertObject:@"x" atIndexUsingSelector:@selector(compare:)] == 0);
    KT_EXPECT_EQUAL_OBJECTS(empty, [NSArray arrayWithObject:@"x"]);

    // Nothing is inserted for nil, for an object without the selector, or
    // when the comparison itself raises.
    KT_EXPECT([numbers insertObject:nil atIndexUsingSelector:NULL] == 0);
    KT_EXPECT([numbers insertObject:[NSNumber numberWithInt:5] atIndexUsingSelector:@selector(koruNoSuchOrder:)] == 0);
    KT_EXPECT([numbers insertObject:@"text" atIndexUsingSelector:@selector(compare:)] == 0);
    KT_EXPECT([numbers count] == 6);
}

KT_CASE(InsertingAndReplacingAddWhenPastTheEnd)
{
    NSMutableArray *array = Letters();
    [array insertObjectsFromArray:[NSArray arrayWithObjects:@"x", @"y", nil] atIndex:1];
    KT_EXPECT_EQUAL_OBJECTS(array, ([NSArray arrayWithObjects:@"A", @"x", @"y", @"B", @"C", @"D", @"E", nil]));
    [array insertObjectsFromArray:[NSArray arrayWithObject:@"z"] atIndex:99];
    KT_EXPECT_EQUAL_OBJECTS([array lastObject], @"z");
    [array insertObjectsFromArray:[NSArray array] atIndex:0];
    [array insertObjectsFromArray:nil atIndex:0];
    KT_EXPECT([array count] == 8);

    array = Letters();
    KT_EXPECT([array insertOrAddObject:@"in" atIndex:4]);
    KT_EXPECT_EQUAL_OBJECTS([array objectAtIndex:4], @"in");
    KT_EXPECT(![array insertOrAddObject:@"end" atIndex:6]);
    KT_EXPECT_EQUAL_OBJECTS([array lastObject], @"end");
    KT_EXPECT(![array insertOrAddObject:nil atIndex:0]);
    KT_EXPECT([array count] == 7);

    array = Letters();
    KT_EXPECT([array replaceOrAddObjectAtIndex:0 withObject:@"a"]);
    KT_EXPECT(![array replaceOrAddObjectAtIndex:5 withObject:@"f"]);
    KT_EXPECT(![array replaceOrAddObjectAtIndex:0 withObject:nil]);
    KT_EXPECT_EQUAL_OBJECTS(array, ([NSArray arrayWithObjects:@"a", @"B", @"C", @"D", @"E", @"f", nil]));
}

KT_CASE(CopyRemoveHandsTheElementToTheCaller)
{
    NSMutableArray *array = Letters();
    NSString *unique = [[NSString alloc] initWithFormat:@"unique %d", 42];
    [array addObject:unique];
    [unique release];
    id removed = [array copyRemoveObjectAtIndex:5];
    KT_EXPECT(removed == unique);
    KT_EXPECT([array count] == 5);
    KT_EXPECT([removed isEqualToString:@"unique 42"]); // still alive: the caller owns it
    [removed release];
    KT_EXPECT([array copyRemoveObjectAtIndex:5] == nil);
    KT_EXPECT([array count] == 5);
}

KT_CASE(MembershipUsesTheSelectorAsAnEqualityTest)
{
    NSArray *array = [NSArray arrayWithObjects:@"one", [NSNumber numberWithInt:2], @"three", nil];
    KT_EXPECT([array containsObject:@"ONE" usingSelector:@selector(caseInsensitiveCompare:)]);
    KT_EXPECT(![array containsObject:@"four" usingSelector:@selector(caseInsensitiveCompare:)]);
    KT_EXPECT([array containsObject:[NSNumber numberWithInt:2] usingSelector:@selector(compare:)]);
    KT_EXPECT(![array containsObject:nil usingSelector:@selector(compare:)]);
    KT_EXPECT(![array containsObject:@"one" usingSelector:NULL]);
    // Elements that cannot answer, or raise while comparing, are no match.
    KT_EXPECT(![array containsObject:@"one" usingSelector:@selector(koruNoSuchOrder:)]);
    KT_EXPECT(![array containsObject:[NSNumber numberWithInt:3] usingSelector:@selector(compare:)]);
}

static NSString *MakeFolder(void)
{
    char pattern[] = "/tmp/koru-arrays-XXXXXX";
    return mkdtemp(pattern) != NULL ? [NSString stringWithUTF8String:pattern] : nil;
}

KT_CASE(ArraysLoadFromResourcesAndPropertyListData)
{
    NSString *folder = MakeFolder();
    KT_ASSERT(folder != nil);
    NSString *resources = [folder stringByAppendingPathComponent:@"Test.bundle/Resources"];
    [[NSFileManager defaultManager] createDirectoryAtPath:resources withIntermediateDirectories:YES
                                               attributes:nil error:NULL];
    NSArray *rows = [NSArray arrayWithObjects:@"row", [NSNumber numberWithInt:3], nil];
    [rows writeToFile:[resources stringByAppendingPathComponent:@"Rows.plist"] atomically:YES];
    [[NSDictionary dictionaryWithObject:@"v" forKey:@"k"]
        writeToFile:[resources stringByAppendingPathComponent:@"Map.plist"] atomically:YES];
    NSBundle *bundle = [NSBundle bundleWithPath:[folder stringByAppendingPathComponent:@"Test.bundle"]];

    KT_EXPECT_EQUAL_OBJECTS([NSArray arrayWithResource:@"Rows.plist" ofBundle:bundle], rows);
    KT_EXPECT([[NSMutableArray arrayWithResource:@"Rows.plist" ofBundle:bundle] isKindOfClass:[NSMutableArray class]]);
    KT_EXPECT([NSArray arrayWithResource:@"Rows" ofBundle:bundle] == nil);
    KT_EXPECT([NSArray arrayWithResource:@"Map.plist" ofBundle:bundle] == nil);
    KT_EXPECT([NSArray arrayWithResource:nil ofBundle:bundle] == nil);
    KT_EXPECT([NSArray arrayWithResource:@"Rows.plist" ofBundle:nil] == nil);

    NSData *xml = (NSData *)CFPropertyListCreateXMLData(NULL, (CFPropertyListRef)rows);
    KT_EXPECT_EQUAL_OBJECTS([NSArray arrayWithXMLData:xml], rows);
    NSMutableArray *mutable = [NSMutableArray arrayWithXMLData:xml];
    [mutable addObject:@"more"];
    KT_EXPECT([mutable count] == 3);
    [xml release];
    NSData *map = [NSData dataWithPropertyList:[NSDictionary dictionaryWithObject:@"v" forKey:@"k"]];
    KT_EXPECT([NSArray arrayWithXMLData:map] == nil);
    KT_EXPECT([NSArray arrayWithXMLData:[@"<plist><array><string>x" dataUsingEncoding:NSUTF8StringEncoding]] == nil);
    KT_EXPECT([NSArray arrayWithXMLData:nil] == nil);
    KT_EXPECT([NSArray arrayWithXMLData:(NSData *)@"a string"] == nil);

    system([[NSString stringWithFormat:@"rm -rf '%@'", folder] UTF8String]);
}

KT_MAIN()
