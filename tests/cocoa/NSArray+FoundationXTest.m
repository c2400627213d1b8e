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

KT_CASE(MovesAgreeWithTheOneByOneSequenceEverywhere)
{
    const uint32_t oneAndThree[] = {1, 3};
    BOOL answer = NO;
    KT_EXPECT_EQUAL_OBJECTS(Moved(Letters(), IndexList(oneAndThree, 2), 4, &answer),
                            ([NSArray arrayWithObjects:@"A", @"C", @"B", @"D", @"E", nil]));
    // Past the end the block lands reversed: kept as hosts have always had it.
    KT_EXPECT_EQUAL_OBJECTS(Moved(Letters(), IndexList(oneAndThree, 2), 9, &answer),
                            ([NSArray arrayWithObjects:@"A", @"C", @"E", @"D", @"B", nil]));
    // Every index list of a 7-element array to every target up to past the end.
    NSMutableArray *array = [NSMutableArray array];
    for (int i = 0; i < 7; i++)
        [array addObject:[NSNumber numberWithInt:i]];
    for (unsigned mask = 1; mask < (1u << 7); mask++) {
        uint32_t indexes[7];
        size_t count = 0;
        for (uint32_t i = 0; i < 7; i++)
            if (mask & (1u << i))
                indexes[count++] = i;
        for (NSUInteger target = 0; target <= 10; target++) {
            NSArray *moved = Moved(array, IndexList(indexes, count), target, &answer);
            NSArray *expected = MovedOneByOne(array, indexes, count, target);
            KT_EXPECT_MSG([moved isEqual:expected] && answer, @"mask %u target %lu: %@ != %@", mask,
                          (unsigned long)target, moved, expected);
        }
    }
}

KT_CASE(BadIndexListsLeaveTheArrayAlone)
{
    // Outside, descending or repeated indexes fail; no list, or one too
    // short for an index, moves nothing and is no failure.
    const uint32_t bad[][2] = {{1, 5}, {3, 1}, {2, 2}};
    NSData *lists[] = {IndexList(bad[0], 2), IndexList(bad[1], 2), IndexList(bad[2], 2), nil,
                       [NSData dataWithBytes:"\1\0\0" length:3], (NSData *)@"not data"};
    for (int i = 0; i < 6; i++) {
        BOOL answer = i < 3;
        KT_EXPECT_EQUAL_OBJECTS(Moved(Letters(), lists[i], 0, &answer), Letters());
        KT_EXPECT_MSG(answer == (i >= 3), @"list %d", i);
    }
    const uint32_t one[] = {0};
    BOOL answer = YES;
    KT_EXPECT_EQUAL_OBJECTS(Moved([NSMutableArray array], IndexList(one, 1), 0, &answer), [NSArray array]);
    KT_EXPECT(!answer);
}

KT_CASE(SortedInsertionGoesBeforeEqualElements)
{
    NSMutableArray *numbers = [NSMutableArray arrayWithObjects:[NSNumber numberWithInt:1], [NSNumber numberWithInt:2],
                                                               [NSNumber numberWithInt:3], nil];
    NSNumber *two = [NSNumber numberWithInt:2];
    KT_EXPECT([numbers insertObject:two atIndexUsingSelector:@selector(compare:)] == 1 && [numbers objectAtIndex:1] == two);
    KT_EXPECT([numbers insertObject:[NSNumber numberWithInt:9] atIndexUsingSelector:NULL] == 4);
    KT_EXPECT([numbers insertObject:[NSNumber numberWithInt:0] atIndexUsingSelector:NULL] == 0);
    NSMutableArray *empty = [NSMutableArray array];
    KT_EXPECT([empty insertObject:@"x" atIndexUsingSelector:@selector(compare:)] == 0 && [empty count] == 1);
    // Nothing is inserted for nil, for an object without the selector, or
    // when the comparison itself raises.
    KT_EXPECT([numbers insertObject:nil atIndexUsingSelector:NULL] == 0);
    KT_EXPECT([numbers insertObject:[NSNumber numberWithInt:5] atIndexUsingSelector:@selector(koruNoSuchOrder:)] == 0);
    KT_EXPECT([numbers insertObject:@"text" atIndexUsingSelector:@selector(compare:)] == 0 && [numbers count] == 6);
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
    KT_EXPECT([array insertOrAddObject:@"in" atIndex:4] && ![array insertOrAddObject:@"end" atIndex:6]);
    KT_EXPECT(![array insertOrAddObject:nil atIndex:0]);
    KT_EXPECT_EQUAL_OBJECTS(array, ([NSArray arrayWithObjects:@"A", @"B", @"C", @"D", @"in", @"E", @"end", nil]));
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
    KT_EXPECT(removed == unique && [array count] == 5);
    KT_EXPECT([removed isEqualToString:@"unique 42"]); // still alive: the caller owns it
    [removed release];
    KT_EXPECT([array copyRemoveObjectAtIndex:5] == nil && [array count] == 5);
}

KT_CASE(MembershipUsesTheSelectorAsAnEqualityTest)
{
    NSArray *array = [NSArray arrayWithObjects:@"one", [NSNumber numberWithInt:2], @"three", nil];
    KT_EXPECT([array containsObject:@"ONE" usingSelector:@selector(caseInsensitiveCompare:)]);
    KT_EXPECT(![array containsObject:@"four" usingSelector:@selector(caseInsensitiveCompare:)]);
    KT_EXPECT(![array containsObject:nil usingSelector:@selector(compare:)] &&
              ![array containsObject:@"one" usingSelector:NULL]);
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
    NSArray *loaded = [NSMutableArray arrayWithResource:@"Rows.plist" ofBundle:bundle];
    KT_EXPECT([loaded isEqual:rows] && [loaded isKindOfClass:[NSMutableArray class]]);
    KT_EXPECT([NSArray arrayWithResource:@"Rows" ofBundle:bundle] == nil &&
              [NSArray arrayWithResource:@"Map.plist" ofBundle:bundle] == nil);
    KT_EXPECT([NSArray arrayWithResource:nil ofBundle:bundle] == nil &&
              [NSArray arrayWithResource:@"Rows.plist" ofBundle:nil] == nil);
    NSData *xml = (NSData *)CFPropertyListCreateXMLData(NULL, (CFPropertyListRef)rows);
    loaded = [NSMutableArray arrayWithXMLData:xml];
    KT_EXPECT([loaded isEqual:rows] && [loaded isKindOfClass:[NSMutableArray class]]);
    [xml release];
    NSData *map = [NSData dataWithPropertyList:[NSDictionary dictionaryWithObject:@"v" forKey:@"k"]];
    KT_EXPECT([NSArray arrayWithXMLData:map] == nil && [NSArray arrayWithXMLData:nil] == nil);
    KT_EXPECT([NSArray arrayWithXMLData:[@"<plist><array><string>x" dataUsingEncoding:NSUTF8StringEncoding]] == nil);
    KT_EXPECT([NSArray arrayWithXMLData:(NSData *)@"a string"] == nil);
    system([[NSString stringWithFormat:@"rm -rf '%@'", folder] UTF8String]);
}

KT_MAIN()
