/* CFDictionary over NSDictionary.  With the standard callbacks a dictionary
 * is Foundation's own.  Other callbacks (NULL included, for pointer or
 * integer keys) get __KCFCallbackDictionary: an open-addressing table that
 * hashes and compares with the callbacks given, and still answers to
 * NSDictionary messages when its keys and values are objects. */
#include "CFInternal.h"
#include <stdlib.h>
#include <string.h>

static const void *__CFStringCopy(CFAllocatorRef allocator, const void *value)
{
    return CFStringCreateCopy(allocator, (CFStringRef)value);
}

const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks = {0, __CFTypeRetain, __CFTypeRelease, CFCopyDescription,
                                                                CFEqual, CFHash};
const CFDictionaryKeyCallBacks kCFCopyStringDictionaryKeyCallBacks = {0, __CFStringCopy, __CFTypeRelease,
                                                                      CFCopyDescription, CFEqual, CFHash};
const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks = {0, __CFTypeRetain, __CFTypeRelease,
                                                                    CFCopyDescription, CFEqual};

static BOOL __CFKeyCallBacksAreStandard(const CFDictionaryKeyCallBacks *callBacks)
{
    return callBacks != NULL && callBacks->equal == CFEqual && callBacks->hash == CFHash &&
           (callBacks->retain == __CFTypeRetain || callBacks->retain == __CFStringCopy) &&
           callBacks->release == __CFTypeRelease;
}

static BOOL __CFValueCallBacksAreStandard(const CFDictionaryValueCallBacks *callBacks)
{
    return callBacks != NULL && callBacks->retain == __CFTypeRetain && callBacks->release == __CFTypeRelease;
}

typedef struct {
    const void *key;
    const void *value;
    BOOL used;
} __CFBucket;

@interface __KCFCallbackDictionary : NSMutableDictionary {
@public
    __CFBucket *_buckets;
    NSUInteger _capacity;
    NSUInteger _count;
    CFDictionaryKeyCallBacks _keyCallBacks;
    CFDictionaryValueCallBacks _valueCallBacks;
    BOOL _mutable;
}
- (id)initWithKeyCallBacks:(const CFDictionaryKeyCallBacks *)keyCallBacks
            valueCallBacks:(const CFDictionaryValueCallBacks *)valueCallBacks
                  capacity:(NSUInteger)capacity
                   mutable:(BOOL)isMutable;
- (__CFBucket *)bucketForKey:(const void *)key;
- (void)setValue:(const void *)value forRawKey:(const void *)key;
- (void)removeRawKey:(const void *)key;
@end

@implementation __KCFCallbackDictionary
- (id)initWithKeyCallBacks:(const CFDictionaryKeyCallBacks *)keyCallBacks
            valueCallBacks:(const CFDictionaryValueCallBacks *)valueCallBacks
                  capacity:(NSUInteger)capacity
                   mutable:(BOOL)isMutable
{
    if ((self = [super init]) != nil) {
        if (keyCallBacks != NULL)
            _keyCallBacks = *keyCallBacks;
        else
            memset(&_keyCallBacks, 0, sizeof(_keyCallBacks));
        if (valueCallBacks != NULL)
            _valueCallBacks = *valueCallBacks;
        else
            memset(&_valueCallBacks, 0, sizeof(_valueCallBacks));
        _capacity = 8;
        while (_capacity < capacity * 2)
            _capacity *= 2;
        _buckets = calloc(_capacity, sizeof(__CFBucket));
        _mutable = isMutable;
        if (_buckets == NULL) {
            [self release];
            return nil;
        }
    }
    return self;
}
- (void)dealloc
{
    for (NSUInteger i = 0; i < _capacity; i++) {
        if (!_buckets[i].used)
            continue;
        if (_keyCallBacks.release != NULL)
            _keyCallBacks.release(NULL, _buckets[i].key);
        if (_valueCallBacks.release != NULL)
            _valueCallBacks.release(NULL, _buckets[i].value);
    }
    free(_buckets);
    [super dealloc];
}
- (NSUInteger)slotForKey:(const void *)key
{
    CFHashCode hash = _keyCallBacks.hash != NULL ? _keyCallBacks.hash(key) : (CFHashCode)key >> 3;
    return (NSUInteger)(hash * 2654435761UL) & (_capacity - 1);
}
- (BOOL)key:(const void *)a equals:(const void *)b
{
    return a == b || (_keyCallBacks.equal != NULL && _keyCallBacks.equal(a, b));
}
- (__CFBucket *)bucketForKey:(const void *)key
{
    NSUInteger slot = [self slotForKey:key];
    while (_buckets[slot].used) {
        if ([self key:_buckets[slot].key equals:key])
            return &_buckets[slot];
        slot = (slot + 1) & (_capacity - 1);
    }
    return NULL;
}
- (void)grow
{
    __CFBucket *old = _buckets;
    NSUInteger oldCapacity = _capacity;
    __CFBucket *buckets = calloc(oldCapacity * 2, sizeof(__CFBucket));
    if (buckets == NULL)
        [NSException raise:NSMallocException format:@"out of memory"];
    _buckets = buckets;
    _capacity = oldCapacity * 2;
    for (NSUInteger i = 0; i < oldCapacity; i++) {
        if (!old[i].used)
            continue;
        NSUInteger slot = [self slotForKey:old[i].key];
        while (_buckets[slot].used)
            slot = (slot + 1) & (_capacity - 1);
        _buckets[slot] = old[i];
    }
    free(old);
}
- (void)setValue:(const void *)value forRawKey:(const void *)key
{
    const void *newValue = _valueCallBacks.retain != NULL ? _valueCallBacks.retain(NULL, value) : value;
    __CFBucket *bucket = [self bucketForKey:key];
    if (bucket != NULL) {
        const void *oldValue = bucket->value;
        bucket->value = newValue;
        if (_valueCallBacks.release != NULL)
            _valueCallBacks.release(NULL, oldValue);
        return;
    }
    if ((_count + 1) * 2 > _capacity)
        [self grow];
    NSUInteger slot = [self slotForKey:key];
    while (_buckets[slot].used)
        slot = (slot + 1) & (_capacity - 1);
    _buckets[slot].key = _keyCallBacks.retain != NULL ? _keyCallBacks.retain(NULL, key) : key;
    _buckets[slot].value = newValue;
    _buckets[slot].used = YES;
    _count++;
}
- (void)removeRawKey:(const void *)key
{
    __CFBucket *bucket = [self bucketForKey:key];
    if (bucket == NULL)
        return;
    const void *oldKey = bucket->key, *oldValue = bucket->value;
    /* Re-seat the run after the hole so that probing still finds every key. */
    NSUInteger slot = (NSUInteger)(bucket - _buckets);
    _buckets[slot].used = NO;
    _count--;
    for (NSUInteger next = (slot + 1) & (_capacity - 1); _buckets[next].used; next = (next + 1) & (_capacity - 1)) {
        __CFBucket moved = _buckets[next];
        _buckets[next].used = NO;
        NSUInteger target = [self slotForKey:moved.key];
        while (_buckets[target].used)
            target = (target + 1) & (_capacity - 1);
        _buckets[target] = moved;
    }
    if (_keyCallBacks.release != NULL)
        _keyCallBacks.release(NULL, oldKey);
    if (_valueCallBacks.release != NULL)
        _valueCallBacks.release(NULL, oldValue);
}
- (NSUInteger)count
{
    return _count;
}
- (id)objectForKey:(id)key
{
    __CFBucket *bucket = [self bucketForKey:key];
    return bucket != NULL ? (id)bucket->value : nil;
}
- (NSEnumerator *)keyEnumerator
{
    NSMutableArray *keys = [NSMutableArray arrayWithCapacity:_count];
    for (NSUInteger i = 0; i < _capacity; i++) {
        if (_buckets[i].used)
            [keys addObject:(id)_buckets[i].key];
    }
    return [keys objectEnumerator];
}
- (void)setObject:(id)object forKey:(id)key
{
    [self setValue:object forRawKey:key];
}
- (void)removeObjectForKey:(id)key
{
    [self removeRawKey:key];
}
- (id)copyWithZone:(NSZone *)zone
{
    (void)zone;
    __KCFCallbackDictionary *copy = [[__KCFCallbackDictionary alloc] initWithKeyCallBacks:&_keyCallBacks
                                                                           valueCallBacks:&_valueCallBacks
                                                                                 capacity:_count
                                                                                  mutable:NO];
    for (NSUInteger i = 0; i < _capacity; i++) {
        if (_buckets[i].used)
            [copy setValue:_buckets[i].value forRawKey:_buckets[i].key];
    }
    return copy;
}
- (id)mutableCopyWithZone:(NSZone *)zone
{
    __KCFCallbackDictionary *copy = [self copyWithZone:zone];
    copy->_mutable = YES;
    return copy;
}
@end

CFTypeID CFDictionaryGetTypeID(void)
{
    return __kCFDictionaryTypeID;
}

static __KCFCallbackDictionary *__CFCallbackDictionary(CFDictionaryRef dict)
{
    return [(id)dict isKindOfClass:[__KCFCallbackDictionary class]] ? (__KCFCallbackDictionary *)dict : nil;
}

static BOOL __CFIsMutableDictionary(CFMutableDictionaryRef dict)
{
    if (dict == NULL)
        return NO;
    __KCFCallbackDictionary *callbackDict = __CFCallbackDictionary(dict);
    if (callbackDict != nil)
        return callbackDict->_mutable;
    return [(id)dict isKindOfClass:[NSMutableDictionary class]];
}

CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                 const CFDictionaryKeyCallBacks *keyCallBacks,
                                                 const CFDictionaryValueCallBacks *valueCallBacks)
{
    (void)allocator;
    if (capacity < 0)
        return NULL;
    if (__CFKeyCallBacksAreStandard(keyCallBacks) && __CFValueCallBacksAreStandard(valueCallBacks))
        return (CFMutableDictionaryRef)[[NSMutableDictionary alloc] initWithCapacity:(NSUInteger)capacity];
    return (CFMutableDictionaryRef)[[__KCFCallbackDictionary alloc] initWithKeyCallBacks:keyCallBacks
                                                                          valueCallBacks:valueCallBacks
                                                                                capacity:(NSUInteger)capacity
                                                                                 mutable:YES];
}

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void **keys, const void **values,
                                   CFIndex numValues, const CFDictionaryKeyCallBacks *keyCallBacks,
                                   const CFDictionaryValueCallBacks *valueCallBacks)
{
    (void)allocator;
    if (numValues < 0 || (numValues > 0 && (keys == NULL || values == NULL)))
        return NULL;
    if (__CFKeyCallBacksAreStandard(keyCallBacks) && __CFValueCallBacksAreStandard(valueCallBacks)) {
        for (CFIndex i = 0; i < numValues; i++) {
            if (keys[i] == NULL || values[i] == NULL)
                return NULL;
        }
        return (CFDictionaryRef)[[NSDictionary alloc] initWithObjects:(id *)values forKeys:(id *)keys
                                                                count:(NSUInteger)numValues];
    }
    __KCFCallbackDictionary *dict = [[__KCFCallbackDictionary alloc] initWithKeyCallBacks:keyCallBacks
                                                                           valueCallBacks:valueCallBacks
                                                                                 capacity:(NSUInteger)numValues
                                                                                  mutable:NO];
    for (CFIndex i = 0; i < numValues; i++)
        [dict setValue:values[i] forRawKey:keys[i]];
    return (CFDictionaryRef)dict;
}

CFDictionaryRef CFDictionaryCreateCopy(CFAllocatorRef allocator, CFDictionaryRef theDict)
{
    (void)allocator;
    if (theDict == NULL)
        return NULL;
    return (CFDictionaryRef)[(NSDictionary *)theDict copy];
}

CFMutableDictionaryRef CFDictionaryCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity,
                                                     CFDictionaryRef theDict)
{
    if (capacity < 0)
        return NULL;
    if (theDict == NULL)
        return CFDictionaryCreateMutable(allocator, capacity, &kCFTypeDictionaryKeyCallBacks,
                                         &kCFTypeDictionaryValueCallBacks);
    return (CFMutableDictionaryRef)[(NSDictionary *)theDict mutableCopy];
}

CFIndex CFDictionaryGetCount(CFDictionaryRef theDict)
{
    if (theDict == NULL)
        return 0;
    return (CFIndex)[(NSDictionary *)theDict count];
}

Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef theDict, const void *key, const void **value)
{
    if (theDict == NULL)
        return false;
    __KCFCallbackDictionary *callbackDict = __CFCallbackDictionary(theDict);
    if (callbackDict != nil) {
        __CFBucket *bucket = [callbackDict bucketForKey:key];
        if (bucket == NULL)
            return false;
        if (value != NULL)
            *value = bucket->value;
        return true;
    }
    if (key == NULL)
        return false;
    id found = [(NSDictionary *)theDict objectForKey:(id)key];
    if (found == nil)
        return false;
    if (value != NULL)
        *value = found;
    return true;
}

const void *CFDictionaryGetValue(CFDictionaryRef theDict, const void *key)
{
    const void *value = NULL;
    return CFDictionaryGetValueIfPresent(theDict, key, &value) ? value : NULL;
}

Boolean CFDictionaryContainsKey(CFDictionaryRef theDict, const void *key)
{
    return CFDictionaryGetValueIfPresent(theDict, key, NULL);
}

CFIndex CFDictionaryGetCountOfKey(CFDictionaryRef theDict, const void *key)
{
    return CFDictionaryContainsKey(theDict, key) ? 1 : 0;
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef theDict, const void **keys, const void **values)
{
    __CF_SCOPED_POOL
    if (theDict == NULL)
        return;
    __KCFCallbackDictionary *callbackDict = __CFCallbackDictionary(theDict);
    CFIndex n = 0;
    if (callbackDict != nil) {
        for (NSUInteger i = 0; i < callbackDict->_capacity; i++) {
            if (!callbackDict->_buckets[i].used)
                continue;
            if (keys != NULL)
                keys[n] = callbackDict->_buckets[i].key;
            if (values != NULL)
                values[n] = callbackDict->_buckets[i].value;
            n++;
        }
        return;
    }
    NSDictionary *dict = (NSDictionary *)theDict;
    NSEnumerator *enumerator = [dict keyEnumerator];
    id key;
    while ((key = [enumerator nextObject]) != nil) {
        if (keys != NULL)
            keys[n] = key;
        if (values != NULL)
            values[n] = [dict objectForKey:key];
        n++;
    }
}

/* Walks a snapshot of the pairs, so the applier may read the dictionary. */
void CFDictionaryApplyFunction(CFDictionaryRef theDict, CFDictionaryApplierFunction applier, void *context)
{
    CFIndex count = CFDictionaryGetCount(theDict);
    if (applier == NULL || count == 0)
        return;
    const void **pairs = malloc((size_t)count * 2 * sizeof(const void *));
    if (pairs == NULL)
        return;
    __CF_POOL_BEGIN
    CFDictionaryGetKeysAndValues(theDict, pairs, pairs + count);
    __CF_POOL_END
    for (CFIndex i = 0; i < count; i++)
        applier(pairs[i], pairs[count + i], context);
    free(pairs);
}

CFIndex CFDictionaryGetCountOfValue(CFDictionaryRef theDict, const void *value)
{
    CFIndex count = CFDictionaryGetCount(theDict), matches = 0;
    if (count == 0)
        return 0;
    const void **values = malloc((size_t)count * sizeof(const void *));
    if (values == NULL)
        return 0;
    __CF_POOL_BEGIN
    CFDictionaryGetKeysAndValues(theDict, NULL, values);
    __CF_POOL_END
    __KCFCallbackDictionary *callbackDict = __CFCallbackDictionary(theDict);
    for (CFIndex i = 0; i < count; i++) {
        BOOL equal;
        if (callbackDict != nil)
            equal = values[i] == value ||
                    (callbackDict->_valueCallBacks.equal != NULL && callbackDict->_valueCallBacks.equal(values[i], value));
        else
            equal = value != NULL && [(id)values[i] isEqual:(id)value];
        if (equal)
            matches++;
    }
    free(values);
    return matches;
}

Boolean CFDictionaryContainsValue(CFDictionaryRef theDict, const void *value)
{
    return CFDictionaryGetCountOfValue(theDict, value) > 0;
}

static void __CFDictionarySetValueBody(CFMutableDictionaryRef theDict, const void *key, const void *value)
{
    if (!__CFIsMutableDictionary(theDict))
        return;
    __KCFCallbackDictionary *callbackDict = __CFCallbackDictionary(theDict);
    if (callbackDict != nil) {
        [callbackDict setValue:value forRawKey:key];
        return;
    }
    if (key == NULL || value == NULL)
        return;
    [(NSMutableDictionary *)theDict setObject:(id)value forKey:(id)key];
}

void CFDictionarySetValue(CFMutableDictionaryRef theDict, const void *key, const void *value)
{
    __CF_POOL_BEGIN
    __CFDictionarySetValueBody(theDict, key, value);
    __CF_POOL_END
}

void CFDictionaryAddValue(CFMutableDictionaryRef theDict, const void *key, const void *value)
{
    if (!CFDictionaryContainsKey(theDict, key))
        CFDictionarySetValue(theDict, key, value);
}

void CFDictionaryReplaceValue(CFMutableDictionaryRef theDict, const void *key, const void *value)
{
    if (CFDictionaryContainsKey(theDict, key))
        CFDictionarySetValue(theDict, key, value);
}

static void __CFDictionaryRemoveValueBody(CFMutableDictionaryRef theDict, const void *key)
{
    if (!__CFIsMutableDictionary(theDict))
        return;
    __KCFCallbackDictionary *callbackDict = __CFCallbackDictionary(theDict);
    if (callbackDict != nil) {
        [callbackDict removeRawKey:key];
        return;
    }
    if (key != NULL)
        [(NSMutableDictionary *)theDict removeObjectForKey:(id)key];
}

void CFDictionaryRemoveValue(CFMutableDictionaryRef theDict, const void *key)
{
    __CF_POOL_BEGIN
    __CFDictionaryRemoveValueBody(theDict, key);
    __CF_POOL_END
}

void CFDictionaryRemoveAllValues(CFMutableDictionaryRef theDict)
{
    CFIndex count = CFDictionaryGetCount(theDict);
    if (!__CFIsMutableDictionary(theDict) || count == 0)
        return;
    const void **keys = malloc((size_t)count * sizeof(const void *));
    if (keys == NULL)
        return;
    __CF_POOL_BEGIN
    CFDictionaryGetKeysAndValues(theDict, keys, NULL);
    __CF_POOL_END
    for (CFIndex i = 0; i < count; i++)
        CFDictionaryRemoveValue(theDict, keys[i]);
    free(keys);
}
