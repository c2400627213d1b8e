/* NSUserDefaults(FoundationX) on registered values; the case that stores and
 * clears values runs only with the private defaults database of the test run. */
#import "KTest.h"

#include <KORU/KORU.h>

#include <stdlib.h>

static NSUserDefaults *RegisteredDefaults(void)
{
    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    NSDictionary *rows = [NSDictionary dictionaryWithObject:[NSArray arrayWithObject:@"cell"] forKey:@"cells"];
    [defaults registerDefaults:[NSDictionary dictionaryWithObjectsAndKeys:
        @"YES", @"KORUTestOn", [NSNumber numberWithBool:NO], @"KORUTestOff", @"text", @"KORUTestText",
        [NSArray arrayWithObjects:@"a", rows, nil], @"KORUTestArray", rows, @"KORUTestDictionary", nil]];
    return defaults;
}

KT_CASE(CellStatesFollowBooleanDefaults)
{
    NSUserDefaults *defaults = RegisteredDefaults();
    KT_EXPECT([defaults cellStateForBoolKey:@"KORUTestOn"] == 1 && [defaults cellStateForBoolKey:@"KORUTestOff"] == 0);
    KT_EXPECT([defaults cellStateForBoolKey:@"KORUTestArray"] == 0);
    KT_EXPECT([defaults cellStateForBoolKey:@"KORUTestMissing"] == 0 && [defaults cellStateForBoolKey:nil] == 0);
}

KT_CASE(MutableCopiesOfStoredCollections)
{
    NSUserDefaults *defaults = RegisteredDefaults();
    NSMutableArray *array = [defaults mutableArrayForKey:@"KORUTestArray"];
    KT_EXPECT([array count] == 2);
    [array addObject:@"added"];
    [[[array objectAtIndex:1] objectForKey:@"cells"] addObject:@"deep"];
    [[array objectAtIndex:0] appendString:@"!"];
    KT_EXPECT_EQUAL_OBJECTS([array objectAtIndex:0], @"a!");
    KT_EXPECT([[defaults objectForKey:@"KORUTestArray"] count] == 2); // the stored value is untouched
    NSMutableDictionary *dictionary = [defaults mutableDictionaryForKey:@"KORUTestDictionary"];
    [[dictionary objectForKey:@"cells"] addObject:@"more"];
    KT_EXPECT([[dictionary objectForKey:@"cells"] count] == 2);
    // Missing keys and values of another kind give new empty collections.
    for (NSString *key in [NSArray arrayWithObjects:@"KORUTestMissing", @"KORUTestText", @"KORUTestDictionary", nil]) {
        NSMutableArray *empty = [defaults mutableArrayForKey:key];
        KT_EXPECT([empty isKindOfClass:[NSMutableArray class]] && [empty count] == 0);
        [empty addObject:@"ok"];
    }
    KT_EXPECT([[defaults mutableArrayForKey:nil] count] == 0);
    NSMutableDictionary *none = [defaults mutableDictionaryForKey:@"KORUTestArray"];
    KT_EXPECT([none isKindOfClass:[NSMutableDictionary class]] && [none count] == 0);
    [none setObject:@"ok" forKey:@"k"];
    KT_EXPECT([[defaults mutableDictionaryForKey:nil] count] == 0);
}

KT_CASE(RemoveAllObjectClearsWhatTheApplicationStored)
{
    if (getenv("GNUSTEP_CONFIG_FILE") == NULL) {
        printf("  (skipped: no private defaults database in this environment)\n");
        return;
    }
    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    [defaults registerDefaults:[NSDictionary dictionaryWithObject:@"registered" forKey:@"KORUTestShadowed"]];
    [defaults setObject:@"stored" forKey:@"KORUTestStored"];
    [defaults setObject:[NSArray arrayWithObject:@"x"] forKey:@"KORUTestShadowed"];
    KT_ASSERT([defaults synchronize]);
    KT_EXPECT_EQUAL_OBJECTS([defaults objectForKey:@"KORUTestStored"], @"stored");
    [defaults removeAllObject];
    KT_EXPECT([defaults objectForKey:@"KORUTestStored"] == nil);
    // The registered value shows again once the stored one is gone.
    KT_EXPECT_EQUAL_OBJECTS([defaults objectForKey:@"KORUTestShadowed"], @"registered");
    NSString *domain = [[NSProcessInfo processInfo] processName];
    KT_EXPECT([[defaults persistentDomainForName:domain] objectForKey:@"KORUTestStored"] == nil);
}

KT_MAIN()
