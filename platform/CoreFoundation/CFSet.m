/* CFSet over NSSet.  With the standard callbacks a set is Foundation's own.
 * Other callbacks get __KCFCallbackSet, which keeps its members as the keys
 * of a callback dictionary (whose key callbacks have the same shape as a
 * set's), so hashing and comparing with the caller's functions lives in
 * one place. */
#include "CFInternal.h"
#include <stdlib.h>

static const void *__CFSetStringCopy(CFAllocatorRef allocator, const void *value)
{
    return CFStringCreateCopy(allocator, (CFStringRef)value);
}

const CFSetCallBacks kCFTypeSetCallBacks = {0, __CFTypeRetain, __CFTypeRelease, CFCopyDescription, CFEqual, CFHash};
const CFSetCallBacks kCFCopyStringSetCallBacks = {0, __CFSetStringCopy, __CFTypeRelease, CFCopyDescription, CFEqual,
                                                  CFHash};

static BOOL __CFSetCallBacksAreStandard(const CFSetCallBacks *callBacks)
{
    /* Copying strings needs the callbacks at every add: those sets keep them. */
    return callBacks != NULL && callBacks->equal == CFEqual && callBacks->hash == CFHash &&
           callBacks->retain == __CFTypeRetain && callBacks->release == __CFTypeRelease;
}

/* A set with callbacks of the caller's: members are the keys of _table. */
@interface __KCFCallbackSet : NSMutableSet {
@public
    CFMutableDictionaryRef _table;
    BOOL _mutable;
}
- (id)initWithCallBacks:(const CFSetCallBacks *)callBacks mutable:(BOOL)isMutable;
@end

@implementation __KCFCallbackSet
- (id)initWithCallBacks:(const CFSetCallBacks *)callBacks mutable:(BOOL)isMutable
{
    if ((self = [super init]) != nil) {
        CFDictionaryKeyCallBacks keys = {0, NULL, NULL, NULL, NULL, NULL};
        if (callBacks != NULL) {
            keys.retain = callBacks->retain;
            keys.release = callBacks->release;
            keys.copyDescription = callBacks->copyDescription;
            keys.equal = callBacks->equal;
            keys.hash = callBacks->hash;
        }
        _table = CFDictionaryCreateMutable(NULL, 0, &keys, NULL);
        _mutable = isMutable;
        if (_table == NULL) {
            [self release];
            return nil;
        }
    }
    return self;
}
- (void)dealloc
{
    if (_table != NULL)
        CFRelease(_table);
    [super dealloc];
}
- (NSUInteger)count
{
    return (NSUInteger)CFDictionaryGetCount(_table);
}
- (id)member:(id)object
{
    return (id)CFDictionaryGetValue(_table, object);
}
- (NSEnumerator *)objectEnumerator
{
    CFIndex count = CFDictionaryGetCount(_table);
    const void **keys = malloc((count ? (size_t)count : 1) * sizeof(void *));
    if (keys == NULL)
        return [[NSArray array] objectEnumerator];
    CFDictionaryGetKeysAndValues(_table, keys, NULL);
    NSArray *members = [NSArray arrayWithObjects:(id *)keys count:(NSUInteger)count];
    free(keys);
    return [members objectEnumerator];
}
- (void)addObject:(id)object
{
    if (!CFDictionaryContainsKey(_table, object))
        CFDictionarySetValue(_table, object, object);
}
- (void)removeObject:(id)object
{
    CFDictionaryRemoveValue(_table, object);
}
- (void)removeAllObjects
{
    CFDictionaryRemoveAllValues(_table);
}
- (id)copyWithZone:(NSZone *)zone
{
    (void)zone;
    return [self retain];
}
@end

static __KCFCallbackSet *__CFCallbackSet(CFSetRef set)
{
    id object = (id)set;
    return [object isKindOfClass:[__KCFCallbackSet class]] ? (__KCFCallbackSet *)object : nil;
}

static BOOL __CFIsMutableSet(CFMutableSetRef set)
{
    if (set == NULL)
        return NO;
    __KCFCallbackSet *callbackSet = __CFCallbackSet(set);
    if (callbackSet != nil)
        return callbackSet->_mutable;
    return [(id)set isKindOfClass:[NSMutableSet class]];
}

CFTypeID CFSetGetTypeID(void)
{
    return __kCFSetTypeID;
}

CFMutableSetRef CFSetCreateMutable(CFAllocatorRef allocator, CFIndex capacity, const CFSetCallBacks *callBacks)
{
    __CF_SCOPED_POOL
    (void)allocator;
    if (capacity < 0)
        return NULL;
    if (__CFSetCallBacksAreStandard(callBacks))
        return (CFMutableSetRef)[[NSMutableSet alloc] initWithCapacity:(NSUInteger)capacity];
    return (CFMutableSetRef)[[__KCFCallbackSet alloc] initWithCallBacks:callBacks mutable:YES];
}

CFSetRef CFSetCreate(CFAllocatorRef allocator, const void **values, CFIndex numValues, const CFSetCallBacks *callBacks)
{
    __CF_SCOPED_POOL
    (void)allocator;
    if (numValues < 0 || (values == NULL && numValues > 0))
        return NULL;
    if (__CFSetCallBacksAreStandard(callBacks)) {
        for (CFIndex i = 0; i < numValues; i++) {
            if (values[i] == NULL)
                return NULL;
        }
        return (CFSetRef)[[NSSet alloc] initWithObjects:(id *)values count:(NSUInteger)numValues];
    }
    __KCFCallbackSet *set = [[__KCFCallbackSet alloc] initWithCallBacks:callBacks mutable:YES];
    for (CFIndex i = 0; set != nil && i < numValues; i++)
        CFSetAddValue((CFMutableSetRef)set, values[i]);
    if (set != nil)
        set->_mutable = NO;
    return (CFSetRef)set;
}

CFSetRef CFSetCreateCopy(CFAllocatorRef allocator, CFSetRef theSet)
{
    __CF_SCOPED_POOL
    (void)allocator;
    if (theSet == NULL)
        return NULL;
    __KCFCallbackSet *source = __CFCallbackSet(theSet);
    if (source == nil)
        return (CFSetRef)[[NSSet alloc] initWithSet:(NSSet *)theSet];
    CFMutableSetRef copy = CFSetCreateMutableCopy(allocator, 0, theSet);
    if (copy != NULL)
        ((__KCFCallbackSet *)copy)->_mutable = NO;
    return copy;
}

CFMutableSetRef CFSetCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity, CFSetRef theSet)
{
    __CF_SCOPED_POOL
    (void)allocator;
    if (theSet == NULL || capacity < 0)
        return NULL;
    __KCFCallbackSet *source = __CFCallbackSet(theSet);
    if (source == nil)
        return (CFMutableSetRef)[[NSMutableSet alloc] initWithSet:(NSSet *)theSet];
    __KCFCallbackSet *copy = [[__KCFCallbackSet alloc] initWithCallBacks:NULL mutable:YES];
    if (copy == nil)
        return NULL;
    CFRelease(copy->_table);
    copy->_table = CFDictionaryCreateMutableCopy(NULL, 0, source->_table);
    if (copy->_table == NULL) {
        [copy release];
        return NULL;
    }
    return (CFMutableSetRef)copy;
}

CFIndex CFSetGetCount(CFSetRef theSet)
{
    if (theSet == NULL)
        return 0;
    return (CFIndex)[(NSSet *)theSet count];
}

const void *CFSetGetValue(CFSetRef theSet, const void *candidate)
{
    __CF_SCOPED_POOL
    if (theSet == NULL)
        return NULL;
    __KCFCallbackSet *set = __CFCallbackSet(theSet);
    if (set != nil)
        return CFDictionaryGetValue(set->_table, candidate);
    if (candidate == NULL)
        return NULL;
    return [(NSSet *)theSet member:(id)candidate];
}

Boolean CFSetGetValueIfPresent(CFSetRef theSet, const void *candidate, const void **value)
{
    __CF_SCOPED_POOL
    if (theSet == NULL)
        return false;
    __KCFCallbackSet *set = __CFCallbackSet(theSet);
    const void *found = NULL;
    Boolean present;
    if (set != nil) {
        present = CFDictionaryGetValueIfPresent(set->_table, candidate, &found);
    } else {
        found = candidate != NULL ? [(NSSet *)theSet member:(id)candidate] : NULL;
        present = found != NULL;
    }
    if (present && value != NULL)
        *value = found;
    return present;
}

Boolean CFSetContainsValue(CFSetRef theSet, const void *value)
{
    return CFSetGetValueIfPresent(theSet, value, NULL);
}

CFIndex CFSetGetCountOfValue(CFSetRef theSet, const void *value)
{
    return CFSetContainsValue(theSet, value) ? 1 : 0;
}

void CFSetGetValues(CFSetRef theSet, const void **values)
{
    __CF_SCOPED_POOL
    if (theSet == NULL || values == NULL)
        return;
    __KCFCallbackSet *set = __CFCallbackSet(theSet);
    if (set != nil) {
        CFDictionaryGetKeysAndValues(set->_table, values, NULL);
        return;
    }
    CFIndex i = 0;
    for (id member in (NSSet *)theSet)
        values[i++] = member;
}

void CFSetApplyFunction(CFSetRef theSet, CFSetApplierFunction applier, void *context)
{
    if (theSet == NULL || applier == NULL)
        return;
    CFIndex count = CFSetGetCount(theSet);
    /* A snapshot: the applier may not change the set, but must not see it move. */
    const void **values = malloc((count ? (size_t)count : 1) * sizeof(void *));
    if (values == NULL)
        return;
    CFSetGetValues(theSet, values);
    for (CFIndex i = 0; i < count; i++)
        applier(values[i], context);
    free(values);
}

void CFSetAddValue(CFMutableSetRef theSet, const void *value)
{
    __CF_SCOPED_POOL
    if (!__CFIsMutableSet(theSet))
        return;
    __KCFCallbackSet *set = __CFCallbackSet(theSet);
    if (set != nil) {
        if (!CFDictionaryContainsKey(set->_table, value))
            CFDictionarySetValue(set->_table, value, value);
        return;
    }
    if (value != NULL && [(NSSet *)theSet member:(id)value] == nil)
        [(NSMutableSet *)theSet addObject:(id)value];
}

void CFSetReplaceValue(CFMutableSetRef theSet, const void *value)
{
    if (!__CFIsMutableSet(theSet) || !CFSetContainsValue(theSet, value))
        return;
    CFSetSetValue(theSet, value);
}

void CFSetSetValue(CFMutableSetRef theSet, const void *value)
{
    __CF_SCOPED_POOL
    if (!__CFIsMutableSet(theSet))
        return;
    __KCFCallbackSet *set = __CFCallbackSet(theSet);
    if (set != nil) {
        CFDictionaryRemoveValue(set->_table, value);
        CFDictionarySetValue(set->_table, value, value);
        return;
    }
    if (value == NULL)
        return;
    [(id)value retain];
    [(NSMutableSet *)theSet removeObject:(id)value];
    [(NSMutableSet *)theSet addObject:(id)value];
    [(id)value release];
}

void CFSetRemoveValue(CFMutableSetRef theSet, const void *value)
{
    __CF_SCOPED_POOL
    if (!__CFIsMutableSet(theSet))
        return;
    __KCFCallbackSet *set = __CFCallbackSet(theSet);
    if (set != nil)
        CFDictionaryRemoveValue(set->_table, value);
    else if (value != NULL)
        [(NSMutableSet *)theSet removeObject:(id)value];
}

void CFSetRemoveAllValues(CFMutableSetRef theSet)
{
    __CF_SCOPED_POOL
    if (!__CFIsMutableSet(theSet))
        return;
    [(NSMutableSet *)theSet removeAllObjects];
}
