/* Sets.  A CFSetRef is an NSSet *, a CFMutableSetRef an NSMutableSet *.
 * With kCFTypeSetCallBacks (or kCFCopyStringSetCallBacks) a set is
 * Foundation's own and holds CF objects, retained; other callbacks (NULL
 * included, for pointers or integers) make a set that hashes, compares and
 * retains with the callbacks given.  Create and Copy results are released
 * with CFRelease; values read with Get are lent.  Mutable sets are not
 * thread-safe. */
#ifndef COREFOUNDATION_CFSET_H
#define COREFOUNDATION_CFSET_H

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

typedef const void *(*CFSetRetainCallBack)(CFAllocatorRef allocator, const void *value);
typedef void (*CFSetReleaseCallBack)(CFAllocatorRef allocator, const void *value);
typedef CFStringRef (*CFSetCopyDescriptionCallBack)(const void *value);
typedef Boolean (*CFSetEqualCallBack)(const void *value1, const void *value2);
typedef CFHashCode (*CFSetHashCallBack)(const void *value);

typedef struct {
    CFIndex version;
    CFSetRetainCallBack retain;
    CFSetReleaseCallBack release;
    CFSetCopyDescriptionCallBack copyDescription;
    CFSetEqualCallBack equal;
    CFSetHashCallBack hash;
} CFSetCallBacks;

CF_EXPORT const CFSetCallBacks kCFTypeSetCallBacks;
CF_EXPORT const CFSetCallBacks kCFCopyStringSetCallBacks;

typedef void (*CFSetApplierFunction)(const void *value, void *context);

typedef const struct __CFSet *CFSetRef;
typedef struct __CFSet *CFMutableSetRef;

CF_EXPORT CFTypeID CFSetGetTypeID(void);
/* NULL when values is NULL while numValues > 0, or numValues < 0. */
CF_EXPORT CFSetRef CFSetCreate(CFAllocatorRef allocator, const void **values, CFIndex numValues, const CFSetCallBacks *callBacks);
CF_EXPORT CFSetRef CFSetCreateCopy(CFAllocatorRef allocator, CFSetRef theSet);
/* capacity is a hint (0: unlimited). */
CF_EXPORT CFMutableSetRef CFSetCreateMutable(CFAllocatorRef allocator, CFIndex capacity, const CFSetCallBacks *callBacks);
CF_EXPORT CFMutableSetRef CFSetCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity, CFSetRef theSet);
/* 0 for NULL. */
CF_EXPORT CFIndex CFSetGetCount(CFSetRef theSet);
/* 1 when the set holds value, else 0. */
CF_EXPORT CFIndex CFSetGetCountOfValue(CFSetRef theSet, const void *value);
CF_EXPORT Boolean CFSetContainsValue(CFSetRef theSet, const void *value);
/* The member equal to value, lent; NULL when there is none. */
CF_EXPORT const void *CFSetGetValue(CFSetRef theSet, const void *candidate);
CF_EXPORT Boolean CFSetGetValueIfPresent(CFSetRef theSet, const void *candidate, const void **value);
/* Fills values (room for CFSetGetCount entries) in no particular order. */
CF_EXPORT void CFSetGetValues(CFSetRef theSet, const void **values);
CF_EXPORT void CFSetApplyFunction(CFSetRef theSet, CFSetApplierFunction applier, void *context);
/* Adds value unless the set holds an equal one. */
CF_EXPORT void CFSetAddValue(CFMutableSetRef theSet, const void *value);
/* Replaces an equal member; does nothing when there is none. */
CF_EXPORT void CFSetReplaceValue(CFMutableSetRef theSet, const void *value);
/* Adds value, replacing an equal member. */
CF_EXPORT void CFSetSetValue(CFMutableSetRef theSet, const void *value);
CF_EXPORT void CFSetRemoveValue(CFMutableSetRef theSet, const void *value);
CF_EXPORT void CFSetRemoveAllValues(CFMutableSetRef theSet);

CF_EXTERN_C_END

#endif
