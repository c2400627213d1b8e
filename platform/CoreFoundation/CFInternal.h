/* Private to the CoreFoundation equivalent: the bridge between CF references
 * and the Foundation objects they are, and the shared argument checks. */
#ifndef COREFOUNDATION_CFINTERNAL_H
#define COREFOUNDATION_CFINTERNAL_H

#import <Foundation/Foundation.h>
#include <CoreFoundation/CoreFoundation.h>

/* Fixed type IDs, one per bridged class family. */
enum {
    __kCFNotATypeID = 0,
    __kCFTypeTypeID = 1,
    __kCFAllocatorTypeID = 2,
    __kCFStringTypeID = 7,
    __kCFNullTypeID = 16,
    __kCFSetTypeID = 17,
    __kCFDictionaryTypeID = 18,
    __kCFArrayTypeID = 19,
    __kCFDataTypeID = 20,
    __kCFBooleanTypeID = 21,
    __kCFNumberTypeID = 22,
    __kCFURLTypeID = 29,
    __kCFBundleTypeID = 31,
    __kCFUUIDTypeID = 34,
    __kCFDateTypeID = 42,
    __kCFTimeZoneTypeID = 43,
    __kCFErrorTypeID = 44,
    __kCFRunLoopTypeID = 45,
    __kCFRunLoopTimerTypeID = 46,
    __kCFCharacterSetTypeID = 47,
    __kCFLocaleTypeID = 48
};

/* An object is its own CF reference; these casts only change the static type. */
#define __CFObj(cf) ((id)(cf))

/* Runs a block of Foundation calls inside a pool, since hosts calling the C
 * interface from plain C or C++ have none of their own. */
#define __CF_POOL_BEGIN NSAutoreleasePool *__cfPool = [[NSAutoreleasePool alloc] init];
#define __CF_POOL_END [__cfPool drain];

/* A pool that drains when the enclosing block is left, early returns
 * included.  Only for functions whose result is not autoreleased. */
static inline void __CFDrainScopedPool(NSAutoreleasePool **pool)
{
    [*pool drain];
}
#define __CF_SCOPED_POOL                                                                                               \
    NSAutoreleasePool *__cfScopedPool __attribute__((cleanup(__CFDrainScopedPool), unused)) =                         \
        [[NSAutoreleasePool alloc] init];

/* Whether an object is one of the two booleans. */
BOOL __CFObjectIsBoolean(id object);

/* Whether an object belongs to a type, answered from its class. */
BOOL __CFIsKindOf(CFTypeRef cf, CFTypeID typeID);

/* Reports a caller error (a NULL where an object is required) in debug builds. */
void __CFReportCallerError(const char *function, const char *problem);

/* The retain and release callbacks of the CF-type collections. */
__attribute__((visibility("hidden"))) const void *__CFTypeRetain(CFAllocatorRef allocator, const void *value);
__attribute__((visibility("hidden"))) void __CFTypeRelease(CFAllocatorRef allocator, const void *value);

/* Whether the allocator asks for the bytes handed over to be freed with free(). */
BOOL __CFAllocatorFreesWithFree(CFAllocatorRef allocator);

#endif
