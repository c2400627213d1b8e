/* NSNumber(FoundationX): the shared yes and no numbers. */
#import <KORU/NSNumber+FoundationX.h>

#include <KORU/ExitPool.h>

/* Made once; the exit pool releases them at exit.  The toolkit keeps a
 * reference of its own as well, so a host that empties the pool early with
 * ReleaseExitPool cannot leave these pointers dangling. */
static NSNumber *SharedBoolean(NSNumber **shared, BOOL value)
{
    if (*shared == nil) {
        *shared = [[NSNumber alloc] initWithBool:value];
        AddToExitPool(*shared);
    }
    return *shared;
}

@implementation NSNumber (FoundationX)

+ (NSNumber *)yesNumber
{
    static NSNumber *yes;
    return SharedBoolean(&yes, YES);
}

+ (NSNumber *)noNumber
{
    static NSNumber *no;
    return SharedBoolean(&no, NO);
}

@end
