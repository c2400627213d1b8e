/* The CoreFoundation runtime: base types, ownership and identity.
 *
 * Every CF object is a GNUstep Foundation object, so a CFStringRef and an
 * NSString * are the same pointer and cast freely both ways.  Create and Copy
 * functions hand the caller a reference it releases with CFRelease; Get
 * functions lend one.  Every function accepts NULL where an object is
 * expected and answers its neutral result (NULL, false, 0, kCFNotFound)
 * instead of crashing.  Reference counting is thread-safe; mutable objects
 * are not. */
#ifndef COREFOUNDATION_CFBASE_H
#define COREFOUNDATION_CFBASE_H

#include <MacTypes.h>
#include <stdarg.h>
#include <limits.h>

#ifdef __cplusplus
#define CF_EXTERN_C_BEGIN extern "C" {
#define CF_EXTERN_C_END }
#else
#define CF_EXTERN_C_BEGIN
#define CF_EXTERN_C_END
#endif

#define CF_EXPORT extern __attribute__((visibility("default")))
#define CF_INLINE static __inline__ __attribute__((always_inline))
#define CF_RETURNS_RETAINED
#define CF_RETURNS_NOT_RETAINED
#define CF_FORMAT_FUNCTION(F, A)

CF_EXTERN_C_BEGIN

typedef unsigned long CFTypeID;
typedef unsigned long CFOptionFlags;
typedef unsigned long CFHashCode;
typedef signed long CFIndex;

typedef const void *CFTypeRef;
typedef const struct __CFString *CFStringRef;
typedef struct __CFString *CFMutableStringRef;
typedef CFTypeRef CFPropertyListRef;
typedef const struct __CFAllocator *CFAllocatorRef;
typedef const struct __CFNull *CFNullRef;

typedef enum {
    kCFCompareLessThan = -1L,
    kCFCompareEqualTo = 0,
    kCFCompareGreaterThan = 1
} CFComparisonResult;

typedef CFComparisonResult (*CFComparatorFunction)(const void *val1, const void *val2, void *context);

enum { kCFNotFound = -1 };

typedef struct {
    CFIndex location;
    CFIndex length;
} CFRange;

CF_INLINE CFRange CFRangeMake(CFIndex location, CFIndex length)
{
    CFRange range;
    range.location = location;
    range.length = length;
    return range;
}
CF_EXPORT CFRange __CFRangeMake(CFIndex location, CFIndex length);

/* Allocators: the default, system and malloc allocators all allocate with
 * malloc; kCFAllocatorNull never frees (for the NoCopy creators). */
CF_EXPORT const CFAllocatorRef kCFAllocatorDefault;
CF_EXPORT const CFAllocatorRef kCFAllocatorSystemDefault;
CF_EXPORT const CFAllocatorRef kCFAllocatorMalloc;
CF_EXPORT const CFAllocatorRef kCFAllocatorMallocZone;
CF_EXPORT const CFAllocatorRef kCFAllocatorNull;
CF_EXPORT const CFAllocatorRef kCFAllocatorUseContext;
CF_EXPORT CFAllocatorRef CFAllocatorGetDefault(void);
CF_EXPORT void *CFAllocatorAllocate(CFAllocatorRef allocator, CFIndex size, CFOptionFlags hint);
CF_EXPORT void CFAllocatorDeallocate(CFAllocatorRef allocator, void *ptr);

/* The one null object (NSNull). */
CF_EXPORT const CFNullRef kCFNull;
CF_EXPORT CFTypeID CFNullGetTypeID(void);

/* Retains cf and returns it; NULL gives NULL. */
CF_EXPORT CFTypeRef CFRetain(CFTypeRef cf);
/* Releases cf.  NULL is a caller error: reported on standard error in debug
 * builds, ignored otherwise. */
CF_EXPORT void CFRelease(CFTypeRef cf);
/* Hands cf to the current autorelease pool; NULL gives NULL. */
CF_EXPORT CFTypeRef CFAutorelease(CFTypeRef cf);
/* The retain count, or 0 for NULL. */
CF_EXPORT CFIndex CFGetRetainCount(CFTypeRef cf);
/* The type ID answered from the object's class; 0 (no type) for NULL. */
CF_EXPORT CFTypeID CFGetTypeID(CFTypeRef cf);
/* The type's name ("CFString", ...), or NULL for an unknown ID.  Released by the caller. */
CF_EXPORT CFStringRef CFCopyTypeIDDescription(CFTypeID type_id);
/* false when either side is NULL. */
CF_EXPORT Boolean CFEqual(CFTypeRef cf1, CFTypeRef cf2);
/* 0 for NULL. */
CF_EXPORT CFHashCode CFHash(CFTypeRef cf);
/* A description the caller releases; NULL for NULL. */
CF_EXPORT CFStringRef CFCopyDescription(CFTypeRef cf);
/* The allocator an object was made with: always the default here. */
CF_EXPORT CFAllocatorRef CFGetAllocator(CFTypeRef cf);
/* Garbage collection does not exist here: answers cf. */
CF_EXPORT CFTypeRef CFMakeCollectable(CFTypeRef cf);

CF_EXTERN_C_END

#endif
