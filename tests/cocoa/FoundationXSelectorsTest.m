/* The FoundationX categories only add: no method of theirs takes the place
 * of one Foundation already has under the same selector, in the class itself,
 * above it or in one of its subclasses (where Foundation's would hide ours).
 * Methods are told apart by the library their code lives in. */
#define _GNU_SOURCE /* dladdr */
#import "KTest.h"

#include <KORU/KORU.h>

#include <dlfcn.h>
#include <objc/runtime.h>
#include <stdlib.h>

static void *ToolkitBase(void)
{
    Dl_info info;
    return dladdr((void *)AddToExitPool, &info) != 0 ? info.dli_fbase : NULL;
}

static BOOL IsToolkitMethod(Method method)
{
    Dl_info info;
    IMP code = method_getImplementation(method);
    return code != NULL && dladdr((void *)code, &info) != 0 && info.dli_fbase == ToolkitBase();
}

/* The toolkit's own classes (whose structures live in its library) may
 * override what they inherit; only categories on other classes are checked. */
static BOOL IsToolkitClass(Class class)
{
    Dl_info info;
    return dladdr((void *)class, &info) != 0 && info.dli_fbase == ToolkitBase();
}

/* The names of the toolkit's (or else Foundation's) methods in class's own list. */
static NSSet *Selectors(Class class, BOOL toolkit)
{
    NSMutableSet *names = [NSMutableSet set];
    unsigned int count = 0;
    Method *methods = class_copyMethodList(class, &count);
    for (unsigned int i = 0; i < count; i++)
        if (IsToolkitMethod(methods[i]) == toolkit)
            [names addObject:[NSString stringWithUTF8String:sel_getName(method_getName(methods[i]))]];
    free(methods);
    return names;
}

static void CheckHierarchy(BOOL meta, NSUInteger *toolkitMethods)
{
    int classCount = objc_getClassList(NULL, 0);
    Class *classes = malloc(sizeof(Class) * (size_t)classCount);
    classCount = objc_getClassList(classes, classCount);
    for (int i = 0; i < classCount; i++) {
        if (IsToolkitClass(classes[i]))
            continue;
        Class class = meta ? object_getClass((id)classes[i]) : classes[i];
        NSSet *ours = Selectors(class, YES);
        *toolkitMethods += [ours count];
        if ([ours count] == 0)
            continue;
        for (int j = 0; j < classCount; j++) {
            Class other = meta ? object_getClass((id)classes[j]) : classes[j];
            BOOL related = other == class;
            for (Class up = class_getSuperclass(other); up != Nil && !related; up = class_getSuperclass(up))
                related = up == class; /* other is a subclass */
            for (Class up = class_getSuperclass(class); up != Nil && !related; up = class_getSuperclass(up))
                related = up == other; /* other is an ancestor */
            if (!related)
                continue;
            NSMutableSet *clash = [[Selectors(other, NO) mutableCopy] autorelease];
            [clash intersectSet:ours];
            /* AppKit's pasteboard writers (NSPasteboardItem) answer
             * pasteboardPropertyListForType: for themselves; they are no
             * dragging-info objects, which the NSObject method serves. */
            if (class == [NSObject class] && other != class)
                [clash removeObject:@"pasteboardPropertyListForType:"];
            KT_EXPECT_MSG([clash count] == 0, @"%c[%s(FoundationX) %@] meets %s's own",
                          meta ? '+' : '-', class_getName(classes[i]),
                          [[clash allObjects] componentsJoinedByString:@", "], class_getName(other));
        }
    }
    free(classes);
}

KT_CASE(NoFoundationMethodIsReplacedOrHidesOne)
{
    KT_ASSERT(ToolkitBase() != NULL);
    NSUInteger toolkitMethods = 0;
    CheckHierarchy(NO, &toolkitMethods);
    CheckHierarchy(YES, &toolkitMethods);
    KT_EXPECT(toolkitMethods >= 40); /* the categories were looked at */
    /* +[NSThread sleepForTimeInterval:] stays Foundation's. */
    Method sleep = class_getClassMethod([NSThread class], @selector(sleepForTimeInterval:));
    KT_EXPECT(sleep != NULL && !IsToolkitMethod(sleep));
}

KT_MAIN()
