/* An Objective-C program outside the tree that uses the toolkit only
 * through its Foundation categories: it calls no C function of the
 * toolkit, so nothing but the package's link flags keeps libKORU on its
 * list of needed libraries, and without it the methods are missing. */
#import <Foundation/Foundation.h>
#import <KORU/NSArray+FoundationX.h>

int main(void)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    BOOL ok = NO;
    if (![NSMutableArray instancesRespondToSelector:@selector(insertObject:atIndexUsingSelector:)]) {
        printf("category host: the toolkit's categories are not loaded\n");
    } else {
        NSMutableArray *array = [NSMutableArray arrayWithObjects:@"a", @"c", nil];
        NSUInteger at = [array insertObject:@"b" atIndexUsingSelector:@selector(compare:)];
        ok = at == 1 && [[array objectAtIndex:1] isEqualToString:@"b"] &&
             [array containsObject:@"c" usingSelector:@selector(compare:)] &&
             ![array containsObject:@"d" usingSelector:@selector(compare:)];
        printf("%s\n", ok ? "category host: ok" : "category host: FAILED");
    }
    [pool drain];
    return ok ? 0 : 1;
}
