/* NSNumber(FoundationX): the shared boolean numbers. */
#import "KTest.h"

#include <KORU/KORU.h>

KT_CASE(TheSharedNumbersAreBooleansMadeOnce)
{
    NSNumber *yes = [NSNumber yesNumber];
    NSNumber *no = [NSNumber noNumber];
    KT_EXPECT([yes boolValue] && ![no boolValue] && yes == [NSNumber yesNumber] && no == [NSNumber noNumber]);
    KT_EXPECT(CFGetTypeID((CFTypeRef)yes) == CFBooleanGetTypeID());
    KT_EXPECT_EQUAL_OBJECTS(yes, [NSNumber numberWithBool:YES]);
    // Emptying the exit pool early leaves the shared numbers usable.
    ReleaseExitPool();
    KT_EXPECT([[NSNumber yesNumber] boolValue] && ![[NSNumber noNumber] boolValue]);
}

KT_MAIN()
