/* The -dealloc wrappers behind KORUForgetOnDealloc. */
#import "ObjectLifetimes.h"

#include <objc/runtime.h>

/* The toolbox watches two classes (NSView and NSWindow); a wrapper is a
 * plain function, so each watched class has one of its own. */
enum { kWatchedClasses = 2, kForgetFunctions = 4 };

typedef struct {
    Class watchedClass;
    IMP inheritedDealloc;
    KORUForgetFunction forget[kForgetFunctions];
    int forgetCount;
} Watch;

static Watch gWatches[kWatchedClasses];

static void DeallocForgetting(Watch *watch, id self, SEL _cmd)
{
    for (int i = 0; i < watch->forgetCount; i++)
        watch->forget[i](self);
    ((void (*)(id, SEL))(void (*)(void))watch->inheritedDealloc)(self, _cmd);
}

static void DeallocForgetting0(id self, SEL _cmd)
{
    DeallocForgetting(&gWatches[0], self, _cmd);
}

static void DeallocForgetting1(id self, SEL _cmd)
{
    DeallocForgetting(&gWatches[1], self, _cmd);
}

static void (*const gWrappers[kWatchedClasses])(id, SEL) = {DeallocForgetting0, DeallocForgetting1};

void KORUForgetOnDealloc(Class cls, KORUForgetFunction forget)
{
    if (cls == Nil || forget == NULL)
        return;
    int slot = 0;
    while (slot < kWatchedClasses && gWatches[slot].watchedClass != Nil
           && gWatches[slot].watchedClass != cls)
        slot++;
    if (slot == kWatchedClasses)
        return;
    Watch *watch = &gWatches[slot];
    for (int i = 0; i < watch->forgetCount; i++) {
        if (watch->forget[i] == forget)
            return;
    }
    if (watch->forgetCount == kForgetFunctions)
        return;
    watch->forget[watch->forgetCount++] = forget;
    if (watch->watchedClass != Nil)
        return;
    watch->watchedClass = cls;
    SEL dealloc = @selector(dealloc);
    Method inherited = class_getInstanceMethod(cls, dealloc);
    watch->inheritedDealloc = method_getImplementation(inherited);
    IMP wrapper = (IMP)(void (*)(void))gWrappers[slot];
    if (!class_addMethod(cls, dealloc, wrapper, method_getTypeEncoding(inherited)))
        method_setImplementation(inherited, wrapper);
}
