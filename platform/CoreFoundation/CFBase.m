/* The runtime of the CoreFoundation equivalent: retain counting, identity,
 * type IDs answered from classes, allocators and CFNull. */
#include "CFInternal.h"
#include <stdio.h>
#include <stdlib.h>

/* Allocators are markers, never dereferenced: every allocation is malloc. */
static const char __kCFAllocatorNullMarker = 0;
static const char __kCFAllocatorMallocMarker = 0;
static const char __kCFAllocatorUseContextMarker = 0;
const CFAllocatorRef kCFAllocatorDefault = NULL;
const CFAllocatorRef kCFAllocatorSystemDefault = (CFAllocatorRef)&__kCFAllocatorMallocMarker;
const CFAllocatorRef kCFAllocatorMalloc = (CFAllocatorRef)&__kCFAllocatorMallocMarker;
const CFAllocatorRef kCFAllocatorMallocZone = (CFAllocatorRef)&__kCFAllocatorMallocMarker;
const CFAllocatorRef kCFAllocatorNull = (CFAllocatorRef)&__kCFAllocatorNullMarker;
const CFAllocatorRef kCFAllocatorUseContext = (CFAllocatorRef)&__kCFAllocatorUseContextMarker;

CFRange __CFRangeMake(CFIndex location, CFIndex length)
{
    return CFRangeMake(location, length);
}

CFAllocatorRef CFAllocatorGetDefault(void)
{
    return kCFAllocatorDefault;
}

void *CFAllocatorAllocate(CFAllocatorRef allocator, CFIndex size, CFOptionFlags hint)
{
    (void)hint;
    if (allocator == kCFAllocatorNull || size <= 0)
        return NULL;
    return malloc((size_t)size);
}

void CFAllocatorDeallocate(CFAllocatorRef allocator, void *ptr)
{
    if (allocator != kCFAllocatorNull)
        free(ptr);
}

BOOL __CFAllocatorFreesWithFree(CFAllocatorRef allocator)
{
    return allocator != kCFAllocatorNull;
}

void __CFReportCallerError(const char *function, const char *problem)
{
#ifndef NDEBUG
    fprintf(stderr, "%s: %s\n", function, problem);
#else
    (void)function;
    (void)problem;
#endif
}

CFTypeID CFNullGetTypeID(void)
{
    return __kCFNullTypeID;
}

CFTypeRef CFRetain(CFTypeRef cf)
{
    if (cf == NULL) {
        __CFReportCallerError("CFRetain", "called with NULL");
        return NULL;
    }
    return [__CFObj(cf) retain];
}

void CFRelease(CFTypeRef cf)
{
    if (cf == NULL) {
        __CFReportCallerError("CFRelease", "called with NULL");
        return;
    }
    [__CFObj(cf) release];
}

const void *__CFTypeRetain(CFAllocatorRef allocator, const void *value)
{
    (void)allocator;
    return CFRetain(value);
}

void __CFTypeRelease(CFAllocatorRef allocator, const void *value)
{
    (void)allocator;
    CFRelease(value);
}

CFTypeRef CFAutorelease(CFTypeRef cf)
{
    if (cf == NULL)
        return NULL;
    return [__CFObj(cf) autorelease];
}

CFIndex CFGetRetainCount(CFTypeRef cf)
{
    if (cf == NULL)
        return 0;
    return (CFIndex)[__CFObj(cf) retainCount];
}

CFTypeRef CFMakeCollectable(CFTypeRef cf)
{
    return cf;
}

CFAllocatorRef CFGetAllocator(CFTypeRef cf)
{
    (void)cf;
    return kCFAllocatorSystemDefault;
}

/* The class of each type; more specific classes come first. */
typedef struct {
    CFTypeID typeID;
    const char *className;
    const char *typeName;
} __CFTypeEntry;

static const __CFTypeEntry __CFTypeTable[] = {
    {__kCFStringTypeID, "NSString", "CFString"},
    {__kCFBooleanTypeID, "NSBoolNumber", "CFBoolean"},
    {__kCFNumberTypeID, "NSNumber", "CFNumber"},
    {__kCFDataTypeID, "NSData", "CFData"},
    {__kCFArrayTypeID, "NSArray", "CFArray"},
    {__kCFDictionaryTypeID, "NSDictionary", "CFDictionary"},
    {__kCFURLTypeID, "NSURL", "CFURL"},
    {__kCFBundleTypeID, "NSBundle", "CFBundle"},
    {__kCFUUIDTypeID, "NSUUID", "CFUUID"},
    {__kCFNullTypeID, "NSNull", "CFNull"},
    {__kCFSetTypeID, "NSSet", "CFSet"},
    {__kCFDateTypeID, "NSDate", "CFDate"},
    {__kCFTimeZoneTypeID, "NSTimeZone", "CFTimeZone"},
    {__kCFErrorTypeID, "NSError", "CFError"},
    {__kCFRunLoopTypeID, "NSRunLoop", "CFRunLoop"},
    {__kCFRunLoopTimerTypeID, "NSTimer", "CFRunLoopTimer"},
    {__kCFCharacterSetTypeID, "NSCharacterSet", "CFCharacterSet"},
    {__kCFLocaleTypeID, "NSLocale", "CFLocale"},
};
enum { __CFTypeTableCount = sizeof(__CFTypeTable) / sizeof(__CFTypeTable[0]) };

static Class __CFTypeClasses[__CFTypeTableCount];

static void __attribute__((constructor)) __CFTypeTableInitialize(void)
{
    for (int i = 0; i < __CFTypeTableCount; i++)
        __CFTypeClasses[i] = objc_lookUpClass(__CFTypeTable[i].className);
}

CFTypeID CFGetTypeID(CFTypeRef cf)
{
    if (cf == NULL) {
        __CFReportCallerError("CFGetTypeID", "called with NULL");
        return __kCFNotATypeID;
    }
    id object = __CFObj(cf);
    if (__CFObjectIsBoolean(object))
        return __kCFBooleanTypeID;
    for (int i = 0; i < __CFTypeTableCount; i++) {
        if (__CFTypeClasses[i] != Nil && [object isKindOfClass:__CFTypeClasses[i]])
            return __CFTypeTable[i].typeID;
    }
    return __kCFTypeTypeID;
}

BOOL __CFIsKindOf(CFTypeRef cf, CFTypeID typeID)
{
    return cf != NULL && CFGetTypeID(cf) == typeID;
}

CFStringRef CFCopyTypeIDDescription(CFTypeID type_id)
{
    if (type_id == __kCFTypeTypeID)
        return CFStringCreateWithCString(NULL, "CFType", kCFStringEncodingASCII);
    if (type_id == __kCFAllocatorTypeID)
        return CFStringCreateWithCString(NULL, "CFAllocator", kCFStringEncodingASCII);
    for (int i = 0; i < __CFTypeTableCount; i++) {
        if (__CFTypeTable[i].typeID == type_id)
            return CFStringCreateWithCString(NULL, __CFTypeTable[i].typeName, kCFStringEncodingASCII);
    }
    return NULL;
}

Boolean CFEqual(CFTypeRef cf1, CFTypeRef cf2)
{
    if (cf1 == NULL || cf2 == NULL)
        return false;
    if (cf1 == cf2)
        return true;
    /* A boolean equals only a boolean, never a number holding 0 or 1. */
    if (__CFObjectIsBoolean(__CFObj(cf1)) != __CFObjectIsBoolean(__CFObj(cf2)))
        return false;
    return [__CFObj(cf1) isEqual:__CFObj(cf2)] ? true : false;
}

CFHashCode CFHash(CFTypeRef cf)
{
    if (cf == NULL)
        return 0;
    return (CFHashCode)[__CFObj(cf) hash];
}

CFStringRef CFCopyDescription(CFTypeRef cf)
{
    if (cf == NULL)
        return NULL;
    CFStringRef result;
    __CF_POOL_BEGIN
    result = (CFStringRef)[[__CFObj(cf) description] copy];
    __CF_POOL_END
    return result;
}
