/* The constant objects that only exist once Foundation runs: kCFNull and the
 * two booleans are Foundation's own shared instances, so a property list
 * read by Foundation and one built with CF hold the same objects.  They are
 * filled in when the library loads; this file does not see the const
 * declarations of the public headers, so the storage stays writable.
 *
 * The booleans are made immortal and kept apart from numbers here: a
 * boolean equals only itself, never a number holding 0 or 1, in CFEqual and
 * in every Foundation collection (which compare with isEqual:). */
#import <Foundation/NSAutoreleasePool.h>
#import <Foundation/NSNull.h>
#import <Foundation/NSValue.h>
#include <limits.h>
#include <objc/runtime.h>
#include <stdlib.h>

const void *kCFNull;
const void *kCFBooleanTrue;
const void *kCFBooleanFalse;
const void *kCFNumberPositiveInfinity;
const void *kCFNumberNegativeInfinity;
const void *kCFNumberNaN;

/* Foundation's class of booleans, and the immortal subclass its two shared
 * instances are moved into. */
static Class __CFFoundationBooleanClass;
static Class __CFBooleanClass;

/* Method implementations have their own signatures; the runtime stores
 * them all as IMP.  Casting through a plain function pointer says so. */
typedef void (*__CFAnyFunction)(void);
#define __CF_IMP(function) ((IMP)(__CFAnyFunction)(function))

static BOOL __CFIsBooleanObject(id object)
{
    if (object == nil)
        return NO;
    if (object == (id)kCFBooleanTrue || object == (id)kCFBooleanFalse)
        return YES;
    Class cls = object_getClass(object);
    return cls != Nil && (cls == __CFBooleanClass || cls == __CFFoundationBooleanClass);
}

/* ---- The two immortal booleans ---------------------------------------- */

static id __CFBooleanRetain(id self, SEL _cmd)
{
    (void)_cmd;
    return self;
}

static void __CFBooleanRelease(id self, SEL _cmd)
{
    (void)self;
    (void)_cmd;
}

static NSUInteger __CFBooleanRetainCount(id self, SEL _cmd)
{
    (void)self;
    (void)_cmd;
    return UINT_MAX;
}

static BOOL __CFBooleanIsEqual(id self, SEL _cmd, id other)
{
    (void)_cmd;
    return self == other || (__CFIsBooleanObject(other) && [self boolValue] == [other boolValue]);
}

/* Apart from every small integer's hash, so booleans and numbers rarely share a bucket. */
static NSUInteger __CFBooleanHash(id self, SEL _cmd)
{
    (void)_cmd;
    return [self boolValue] ? 0xB001E1u : 0xB001E0u;
}

/* Foundation's writers recognise a boolean by its class: keep answering Foundation's. */
static Class __CFBooleanFoundationClass(id self, SEL _cmd)
{
    (void)self;
    (void)_cmd;
    return __CFFoundationBooleanClass;
}

/* Moves Foundation's two shared booleans into a subclass whose instances no
 * release frees.  They stay the objects Foundation hands out, so property
 * lists read by Foundation hold kCFBooleanTrue and kCFBooleanFalse. */
static void __CFMakeBooleansImmortal(void)
{
    __CFFoundationBooleanClass = object_getClass((id)kCFBooleanTrue);
    if (__CFFoundationBooleanClass != object_getClass((id)kCFBooleanFalse) ||
        __CFFoundationBooleanClass == object_getClass([NSNumber numberWithInt:1])) {
        __CFFoundationBooleanClass = Nil;
        return;
    }
    Class immortal = objc_allocateClassPair(__CFFoundationBooleanClass, "__KCFBoolean", 0);
    if (immortal == Nil)
        return;
    class_addMethod(immortal, @selector(retain), __CF_IMP(__CFBooleanRetain), "@@:");
    class_addMethod(immortal, @selector(release), __CF_IMP(__CFBooleanRelease), "v@:");
    class_addMethod(immortal, @selector(autorelease), __CF_IMP(__CFBooleanRetain), "@@:");
    class_addMethod(immortal, @selector(retainCount), __CF_IMP(__CFBooleanRetainCount), "Q@:");
    class_addMethod(immortal, @selector(isEqual:), __CF_IMP(__CFBooleanIsEqual), "C@:@");
    class_addMethod(immortal, @selector(isEqualToNumber:), __CF_IMP(__CFBooleanIsEqual), "C@:@");
    class_addMethod(immortal, @selector(hash), __CF_IMP(__CFBooleanHash), "Q@:");
    class_addMethod(immortal, @selector(class), __CF_IMP(__CFBooleanFoundationClass), "#@:");
    objc_registerClassPair(immortal);
    object_setClass((id)kCFBooleanTrue, immortal);
    object_setClass((id)kCFBooleanFalse, immortal);
    __CFBooleanClass = immortal;
}

/* ---- Numbers never equal booleans ------------------------------------- */

typedef BOOL (*__CFEqualIMP)(id, SEL, id);
static __CFEqualIMP __CFNumberIsEqual;
static __CFEqualIMP __CFNumberIsEqualToNumber;
static __CFEqualIMP __CFFloatingIsEqualToNumber;

static BOOL __CFNumberIsEqualNotBoolean(id self, SEL _cmd, id other)
{
    if (__CFIsBooleanObject(other) != __CFIsBooleanObject(self))
        return NO;
    return __CFNumberIsEqual(self, _cmd, other);
}

static BOOL __CFNumberIsEqualToNumberNotBoolean(id self, SEL _cmd, id other)
{
    if (__CFIsBooleanObject(other) != __CFIsBooleanObject(self))
        return NO;
    return __CFNumberIsEqualToNumber(self, _cmd, other);
}

static BOOL __CFFloatingIsEqualToNumberNotBoolean(id self, SEL _cmd, id other)
{
    if (__CFIsBooleanObject(other) != __CFIsBooleanObject(self))
        return NO;
    return __CFFloatingIsEqualToNumber(self, _cmd, other);
}

/* Replaces an equality method defined by cls itself, keeping the old one to call. */
static void __CFWrapEquality(Class cls, SEL selector, IMP replacement, __CFEqualIMP *original)
{
    if (cls == Nil)
        return;
    unsigned count = 0;
    Method *methods = class_copyMethodList(cls, &count);
    for (unsigned i = 0; i < count; i++) {
        if (sel_isEqual(method_getName(methods[i]), selector)) {
            *original = (__CFEqualIMP)(__CFAnyFunction)method_setImplementation(methods[i], replacement);
            break;
        }
    }
    free(methods);
}

static void __CFSeparateBooleans(void)
{
    __CFMakeBooleansImmortal();
    __CFWrapEquality([NSNumber class], @selector(isEqual:), __CF_IMP(__CFNumberIsEqualNotBoolean), &__CFNumberIsEqual);
    __CFWrapEquality([NSNumber class], @selector(isEqualToNumber:), __CF_IMP(__CFNumberIsEqualToNumberNotBoolean),
                     &__CFNumberIsEqualToNumber);
    __CFWrapEquality(objc_lookUpClass("NSFloatingPointNumber"), @selector(isEqualToNumber:),
                     __CF_IMP(__CFFloatingIsEqualToNumberNotBoolean), &__CFFloatingIsEqualToNumber);
}

BOOL __CFObjectIsBoolean(id object)
{
    return __CFIsBooleanObject(object);
}

/* Filled in from +load: by then the runtime has registered this library's
 * selectors, which a plain constructor cannot count on. */
@interface __KCFConstants : NSObject
@end

@implementation __KCFConstants
+ (void)load
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    kCFNull = [NSNull null];
    kCFBooleanTrue = [NSNumber numberWithBool:YES];
    kCFBooleanFalse = [NSNumber numberWithBool:NO];
    __CFSeparateBooleans();
    /* Shared numbers: retained once here and never released. */
    kCFNumberPositiveInfinity = [[NSNumber alloc] initWithDouble:__builtin_inf()];
    kCFNumberNegativeInfinity = [[NSNumber alloc] initWithDouble:-__builtin_inf()];
    kCFNumberNaN = [[NSNumber alloc] initWithDouble:__builtin_nan("")];
    [pool drain];
}
@end
