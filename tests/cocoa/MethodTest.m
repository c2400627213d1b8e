/* Method, with the umbrella header first: the class is declared by its name,
 * and the runtime's method type is KORURuntimeMethod. */
#import <KORU/KORU.h>
#import "KTest.h"

#include <objc/runtime.h>

@interface Target : NSObject {
@public
    int mCalls;
}
@end

@implementation Target
- (id)answer
{
    mCalls++;
    return @"none";
}

- (id)echo:(id)object
{
    mCalls++;
    return object;
}

- (id)join:(id)first with:(id)second
{
    mCalls++;
    return [NSString stringWithFormat:@"%@+%@", first, second];
}
@end

KT_CASE(StoredTargetAndSelectorArePerformed)
{
#ifndef KORU_METHOD_CLASS_DECLARED
    KT_EXPECT_MSG(NO, @"Method.h imported first should declare the class Method");
#endif
    Target *target = [[[Target alloc] init] autorelease];
    Method *method = [Method methodWithTarget:target selector:@selector(answer)];
    KT_ASSERT(method != nil);
    KT_EXPECT([method responds]);
    KT_EXPECT_EQUAL_OBJECTS([method perform], @"none");
    KT_EXPECT_EQUAL_OBJECTS([[Method methodWithTarget:target selector:@selector(echo:)] performWithObject:@"x"], @"x");
    Method *join = [[Method alloc] initWithTarget:target selector:@selector(join:with:)];
    KT_EXPECT_EQUAL_OBJECTS([join performWithObject:@"a" withObject:@"b"], @"a+b");
    [join release];
    KT_EXPECT(target->mCalls == 3);
    Method *unknown = [Method methodWithTarget:target selector:@selector(notImplementedAnywhere)];
    KT_EXPECT(unknown != nil && ![unknown responds]);
}

KT_CASE(TargetAndSelectorAreBothRequired)
{
    KT_EXPECT([Method methodWithTarget:nil selector:@selector(description)] == nil);
    KT_EXPECT([Method methodWithTarget:@"target" selector:NULL] == nil);
    KT_EXPECT([[Method alloc] initWithTarget:nil selector:NULL] == nil);
}

KT_CASE(TheClassIsFoundByNameBesideTheRuntimesType)
{
    KT_EXPECT(NSClassFromString(@"Method") == [Method class] && KORUMethodClass() == [Method class]);
    KT_EXPECT([[Method class] conformsToProtocol:@protocol(KORUMethod)]);
    KT_EXPECT(class_getInstanceVariable([Method class], "mTerget") != NULL);
    KT_EXPECT(class_getInstanceVariable([Method class], "mSelector") != NULL);
    KORURuntimeMethod perform = class_getInstanceMethod([Method class], @selector(perform));
    KT_EXPECT(perform != NULL);
}

KT_MAIN()
