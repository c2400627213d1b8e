/* Method: a stored target and selector.  This header comes first, before
 * anything brings in the Objective-C runtime header, so that the class can
 * be named Method here (see the header). */
#import <KORU/Method.h>

#import "FoundationXSupport.h"

@implementation Method

+ (id)methodWithTarget:(id)target selector:(SEL)selector
{
    return [[[self alloc] initWithTarget:target selector:selector] autorelease];
}

- (id)initWithTarget:(id)target selector:(SEL)selector
{
    if (target == nil || selector == NULL || (self = [super init]) == nil) {
        KORULogFailure("-[Method initWithTarget:selector:]", __LINE__);
        [self release];
        return nil;
    }
    mTerget = target;
    mSelector = selector;
    return self;
}

- (BOOL)responds
{
    return mTerget != nil && mSelector != NULL && [mTerget respondsToSelector:mSelector];
}

- (id)perform
{
    return [mTerget performSelector:mSelector];
}

- (id)performWithObject:(id)object
{
    return [mTerget performSelector:mSelector withObject:object];
}

- (id)performWithObject:(id)object1 withObject:(id)object2
{
    return [mTerget performSelector:mSelector withObject:object1 withObject:object2];
}

@end
