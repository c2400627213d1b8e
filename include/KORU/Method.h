/* Method: a target and a selector, stored to be tested and performed later.
 *
 * The target is not retained.  Both a target and a selector are required;
 * without either, initWithTarget:selector: gives nil (and, with debug output
 * on, logs "-[Method initWithTarget:selector:]" with "Sorry, I caught GOTO
 * error.").  The perform methods send the selector whether or not the
 * target responds to it: test with responds first.
 *
 * The name.  The class is called Method, the name hosts find it by
 * (NSClassFromString(@"Method"), objc_getClass("Method")).  The Objective-C
 * runtime header of gcc, <objc/runtime.h>, which <Foundation/Foundation.h>
 * includes, declares a type of the same name (typedef struct objc_method
 * *Method), and a name cannot be both.  So:
 *
 *   - Imported before anything that brings in the runtime header (first in
 *     a source file, or through <KORU/KORU.h> imported first), this header
 *     imports Foundation itself with the runtime's type renamed
 *     KORURuntimeMethod and declares the class as Method: write
 *     [Method methodWithTarget:...] and Method *m; use KORURuntimeMethod
 *     where the runtime's type is meant (class_getInstanceMethod answers one).
 *     KORU_METHOD_CLASS_DECLARED is then defined.
 *
 *   - Imported after Foundation, Method stays the runtime's type and the
 *     class is not declared under its name.  Reach it with KORUMethodClass()
 *     and hold its objects as id<KORUMethod>, which declares every message.
 *
 * Either way the class is the same one and the protocol KORUMethod lists
 * its interface. */
#ifndef KORU_METHOD_H
#define KORU_METHOD_H

#ifdef __OBJC__

#if !defined(__objc_runtime_INCLUDE_GNU) && !defined(KORU_RUNTIME_METHOD_RENAMED)
#define Method KORURuntimeMethod
#import <objc/runtime.h>
#import <Foundation/Foundation.h>
#undef Method
#define KORU_RUNTIME_METHOD_RENAMED 1
#endif

#import <Foundation/Foundation.h>

@protocol KORUMethod <NSObject>
/* An autoreleased object made with initWithTarget:selector: by the receiving class. */
+ (id)methodWithTarget:(id)target selector:(SEL)selector;
- (id)initWithTarget:(id)target selector:(SEL)selector;
/* YES when both are set and the target responds to the selector. */
- (BOOL)responds;
/* The selector sent to the target with no, one or two object arguments;
 * the target's answer. */
- (id)perform;
- (id)performWithObject:(id)object;
- (id)performWithObject:(id)object1 withObject:(id)object2;
@end

#ifdef KORU_RUNTIME_METHOD_RENAMED
#define KORU_METHOD_CLASS_DECLARED 1

@interface Method : NSObject <KORUMethod>
{
    id mTerget; /* not retained */
    SEL mSelector;
}
@end
#endif

/* The class Method, by its name. */
static inline Class KORUMethodClass(void)
{
    return NSClassFromString(@"Method");
}

#endif /* __OBJC__ */

#endif
