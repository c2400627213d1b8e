/* CFArray over NSArray.  Arrays with the CF-type callbacks are Foundation's
 * own arrays.  Any other callbacks (NULL included, for arrays of plain
 * pointers) get __KCFCallbackArray, an NSMutableArray subclass that stores
 * raw values and calls the callbacks, so it still answers to NSArray
 * messages as long as its values are objects. */
#include "CFInternal.h"
#include <stdlib.h>
#include <string.h>

const CFArrayCallBacks kCFTypeArrayCallBacks = {0, __CFTypeRetain, __CFTypeRelease, CFCopyDescription, CFEqual};

static BOOL __CFArrayCallBacksAreStandard(const CFArrayCallBacks *callBacks)
{
    return callBacks != NULL && callBacks->retain == kCFTypeArrayCallBacks.retain &&
           callBacks->release == kCFTypeArrayCallBacks.release && callBacks->equal == kCFTypeArrayCallBacks.equal;
}

@interface __KCFCallbackArray : NSMutableArray {
@public
    const void **_values;
    NSUInteger _count;
    NSUInteger _capacity;
    CFArrayCallBacks _callBacks;
    BOOL _mutable;
}
- (id)initWithCallBacks:(const CFArrayCallBacks *)callBacks capacity:(NSUInteger)capacity mutable:(BOOL)isMutable;
- (void)insertValue:(const void *)value atIndex:(NSUInteger)index;
@end

@implementation __KCFCallbackArray
- (id)initWithCallBacks:(const CFArrayCallBacks *)callBacks capacity:(NSUInteger)capacity mutable:(BOOL)isMutable
{
    if ((self = [super init]) != nil) {
        if (callBacks != NULL)
            _callBacks = *callBacks;
        else
            memset(&_callBacks, 0, sizeof(_callBacks));
        _capacity = capacity ? capacity : 4;
        _values = malloc(_capacity * sizeof(const void *));
        _mutable = isMutable;
        if (_values == NULL) {
            [self release];
            return nil;
        }
    }
    return self;
}
- (void)dealloc
{
    for (NSUInteger i = 0; i < _count; i++) {
        if (_callBacks.release != NULL)
            _callBacks.release(NULL, _values[i]);
    }
    free(_values);
    [super dealloc];
}
- (NSUInteger)count
{
    return _count;
}
- (id)objectAtIndex:(NSUInteger)index
{
    if (index >= _count)
        [NSException raise:NSRangeException format:@"index %lu beyond count %lu", (unsigned long)index,
                     (unsigned long)_count];
    return (id)_values[index];
}
- (void)insertValue:(const void *)value atIndex:(NSUInteger)index
{
    if (_count == _capacity) {
        const void **grown = realloc(_values, _capacity * 2 * sizeof(const void *));
        if (grown == NULL)
            [NSException raise:NSMallocException format:@"out of memory"];
        _values = grown;
        _capacity *= 2;
    }
    memmove(_values + index + 1, _values + index, (_count - index) * sizeof(const void *));
    _values[index] = _callBacks.retain != NULL ? _callBacks.retain(NULL, value) : value;
    _count++;
}
- (void)insertObject:(id)object atIndex:(NSUInteger)index
{
    if (index > _count)
        [NSException raise:NSRangeException format:@"index beyond count"];
    [self insertValue:object atIndex:index];
}
- (void)addObject:(id)object
{
    [self insertValue:object atIndex:_count];
}
- (void)removeObjectAtIndex:(NSUInteger)index
{
    if (index >= _count)
        [NSException raise:NSRangeException format:@"index beyond count"];
    const void *old = _values[index];
    memmove(_values + index, _values + index + 1, (_count - index - 1) * sizeof(const void *));
    _count--;
    if (_callBacks.release != NULL)
        _callBacks.release(NULL, old);
}
- (void)removeLastObject
{
    if (_count > 0)
        [self removeObjectAtIndex:_count - 1];
}
- (void)replaceObjectAtIndex:(NSUInteger)index withObject:(id)object
{
    if (index >= _count)
        [NSException raise:NSRangeException format:@"index beyond count"];
    const void *old = _values[index];
    _values[index] = _callBacks.retain != NULL ? _callBacks.retain(NULL, object) : (const void *)object;
    if (_callBacks.release != NULL)
        _callBacks.release(NULL, old);
}
- (id)copyWithZone:(NSZone *)zone
{
    (void)zone;
    __KCFCallbackArray *copy = [[__KCFCallbackArray alloc] initWithCallBacks:&_callBacks capacity:_count mutable:NO];
    for (NSUInteger i = 0; i < _count; i++)
        [copy insertValue:_values[i] atIndex:i];
    return copy;
}
- (id)mutableCopyWithZone:(NSZone *)zone
{
    __KCFCallbackArray *copy = [self copyWithZone:zone];
    copy->_mutable = YES;
    return copy;
}
@end

CFTypeID CFArrayGetTypeID(void)
{
    return __kCFArrayTypeID;
}

static __KCFCallbackArray *__CFCallbackArray(CFArrayRef array)
{
    return [(id)array isKindOfClass:[__KCFCallbackArray class]] ? (__KCFCallbackArray *)array : nil;
}

static BOOL __CFIsMutableArray(CFMutableArrayRef array)
{
    if (array == NULL)
        return NO;
    __KCFCallbackArray *callbackArray = __CFCallbackArray(array);
    if (callbackArray != nil)
        return callbackArray->_mutable;
    return [(id)array isKindOfClass:[NSMutableArray class]];
}

static BOOL __CFArrayRangeIsValid(CFArrayRef array, CFRange range)
{
    CFIndex count = CFArrayGetCount(array);
    return range.location >= 0 && range.length >= 0 && range.location <= count && range.length <= count - range.location;
}

static BOOL __CFArrayValuesEqual(CFArrayRef array, const void *a, const void *b)
{
    __KCFCallbackArray *callbackArray = __CFCallbackArray(array);
    if (callbackArray != nil)
        return callbackArray->_callBacks.equal != NULL ? callbackArray->_callBacks.equal(a, b) : a == b;
    return a == b || (a != NULL && b != NULL && [(id)a isEqual:(id)b]);
}

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef allocator, CFIndex capacity, const CFArrayCallBacks *callBacks)
{
    (void)allocator;
    if (capacity < 0)
        return NULL;
    if (__CFArrayCallBacksAreStandard(callBacks))
        return (CFMutableArrayRef)[[NSMutableArray alloc] initWithCapacity:(NSUInteger)capacity];
    return (CFMutableArrayRef)[[__KCFCallbackArray alloc] initWithCallBacks:callBacks capacity:(NSUInteger)capacity
                                                                    mutable:YES];
}

CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void **values, CFIndex numValues,
                         const CFArrayCallBacks *callBacks)
{
    (void)allocator;
    if (numValues < 0 || (values == NULL && numValues > 0))
        return NULL;
    if (__CFArrayCallBacksAreStandard(callBacks)) {
        for (CFIndex i = 0; i < numValues; i++) {
            if (values[i] == NULL)
                return NULL;
        }
        return (CFArrayRef)[[NSArray alloc] initWithObjects:(id *)values count:(NSUInteger)numValues];
    }
    __KCFCallbackArray *array = [[__KCFCallbackArray alloc] initWithCallBacks:callBacks capacity:(NSUInteger)numValues
                                                                       mutable:NO];
    for (CFIndex i = 0; i < numValues; i++)
        [array insertValue:values[i] atIndex:(NSUInteger)i];
    return (CFArrayRef)array;
}

CFArrayRef CFArrayCreateCopy(CFAllocatorRef allocator, CFArrayRef theArray)
{
    (void)allocator;
    if (theArray == NULL)
        return NULL;
    return (CFArrayRef)[(NSArray *)theArray copy];
}

CFMutableArrayRef CFArrayCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity, CFArrayRef theArray)
{
    (void)allocator;
    if (capacity < 0)
        return NULL;
    if (theArray == NULL)
        return CFArrayCreateMutable(allocator, capacity, &kCFTypeArrayCallBacks);
    return (CFMutableArrayRef)[(NSArray *)theArray mutableCopy];
}

CFIndex CFArrayGetCount(CFArrayRef theArray)
{
    if (theArray == NULL)
        return 0;
    return (CFIndex)[(NSArray *)theArray count];
}

const void *CFArrayGetValueAtIndex(CFArrayRef theArray, CFIndex idx)
{
    if (theArray == NULL || idx < 0 || idx >= CFArrayGetCount(theArray))
        return NULL;
    __KCFCallbackArray *callbackArray = __CFCallbackArray(theArray);
    if (callbackArray != nil)
        return callbackArray->_values[idx];
    return [(NSArray *)theArray objectAtIndex:(NSUInteger)idx];
}

void CFArrayGetValues(CFArrayRef theArray, CFRange range, const void **values)
{
    if (theArray == NULL || values == NULL || !__CFArrayRangeIsValid(theArray, range))
        return;
    for (CFIndex i = 0; i < range.length; i++)
        values[i] = CFArrayGetValueAtIndex(theArray, range.location + i);
}

CFIndex CFArrayGetCountOfValue(CFArrayRef theArray, CFRange range, const void *value)
{
    if (theArray == NULL || !__CFArrayRangeIsValid(theArray, range))
        return 0;
    CFIndex count = 0;
    for (CFIndex i = range.location; i < range.location + range.length; i++) {
        if (__CFArrayValuesEqual(theArray, CFArrayGetValueAtIndex(theArray, i), value))
            count++;
    }
    return count;
}

CFIndex CFArrayBSearchValues(CFArrayRef theArray, CFRange range, const void *value, CFComparatorFunction comparator,
                             void *context)
{
    if (theArray == NULL || comparator == NULL || range.location < 0 || range.length < 0 ||
        range.location + range.length > CFArrayGetCount(theArray))
        return kCFNotFound;
    CFIndex low = range.location, high = range.location + range.length;
    while (low < high) {
        CFIndex middle = low + (high - low) / 2;
        CFComparisonResult order = comparator(CFArrayGetValueAtIndex(theArray, middle), value, context);
        if (order == kCFCompareLessThan)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

CFIndex CFArrayGetFirstIndexOfValue(CFArrayRef theArray, CFRange range, const void *value)
{
    if (theArray == NULL || !__CFArrayRangeIsValid(theArray, range))
        return kCFNotFound;
    for (CFIndex i = range.location; i < range.location + range.length; i++) {
        if (__CFArrayValuesEqual(theArray, CFArrayGetValueAtIndex(theArray, i), value))
            return i;
    }
    return kCFNotFound;
}

CFIndex CFArrayGetLastIndexOfValue(CFArrayRef theArray, CFRange range, const void *value)
{
    if (theArray == NULL || !__CFArrayRangeIsValid(theArray, range))
        return kCFNotFound;
    for (CFIndex i = range.location + range.length - 1; i >= range.location; i--) {
        if (__CFArrayValuesEqual(theArray, CFArrayGetValueAtIndex(theArray, i), value))
            return i;
    }
    return kCFNotFound;
}

Boolean CFArrayContainsValue(CFArrayRef theArray, CFRange range, const void *value)
{
    return CFArrayGetFirstIndexOfValue(theArray, range, value) != kCFNotFound;
}

void CFArrayApplyFunction(CFArrayRef theArray, CFRange range, CFArrayApplierFunction applier, void *context)
{
    if (theArray == NULL || applier == NULL || !__CFArrayRangeIsValid(theArray, range))
        return;
    for (CFIndex i = range.location; i < range.location + range.length; i++)
        applier(CFArrayGetValueAtIndex(theArray, i), context);
}

static void __CFArrayInsertValueAtIndexBody(CFMutableArrayRef theArray, CFIndex idx, const void *value)
{
    if (!__CFIsMutableArray(theArray) || idx < 0 || idx > CFArrayGetCount(theArray))
        return;
    __KCFCallbackArray *callbackArray = __CFCallbackArray(theArray);
    if (callbackArray != nil) {
        [callbackArray insertValue:value atIndex:(NSUInteger)idx];
        return;
    }
    if (value == NULL)
        return;
    [(NSMutableArray *)theArray insertObject:(id)value atIndex:(NSUInteger)idx];
}

void CFArrayInsertValueAtIndex(CFMutableArrayRef theArray, CFIndex idx, const void *value)
{
    __CF_POOL_BEGIN
    __CFArrayInsertValueAtIndexBody(theArray, idx, value);
    __CF_POOL_END
}

void CFArrayAppendValue(CFMutableArrayRef theArray, const void *value)
{
    CFArrayInsertValueAtIndex(theArray, CFArrayGetCount(theArray), value);
}

static void __CFArraySetValueAtIndexBody(CFMutableArrayRef theArray, CFIndex idx, const void *value)
{
    CFIndex count = CFArrayGetCount(theArray);
    if (!__CFIsMutableArray(theArray) || idx < 0 || idx > count)
        return;
    if (idx == count) {
        CFArrayAppendValue(theArray, value);
        return;
    }
    __KCFCallbackArray *callbackArray = __CFCallbackArray(theArray);
    if (callbackArray == nil && value == NULL)
        return;
    [(NSMutableArray *)theArray replaceObjectAtIndex:(NSUInteger)idx withObject:(id)value];
}

void CFArraySetValueAtIndex(CFMutableArrayRef theArray, CFIndex idx, const void *value)
{
    __CF_POOL_BEGIN
    __CFArraySetValueAtIndexBody(theArray, idx, value);
    __CF_POOL_END
}

static void __CFArrayRemoveValueAtIndexBody(CFMutableArrayRef theArray, CFIndex idx)
{
    if (!__CFIsMutableArray(theArray) || idx < 0 || idx >= CFArrayGetCount(theArray))
        return;
    [(NSMutableArray *)theArray removeObjectAtIndex:(NSUInteger)idx];
}

void CFArrayRemoveValueAtIndex(CFMutableArrayRef theArray, CFIndex idx)
{
    __CF_POOL_BEGIN
    __CFArrayRemoveValueAtIndexBody(theArray, idx);
    __CF_POOL_END
}

void CFArrayRemoveAllValues(CFMutableArrayRef theArray)
{
    if (!__CFIsMutableArray(theArray))
        return;
    while (CFArrayGetCount(theArray) > 0)
        CFArrayRemoveValueAtIndex(theArray, CFArrayGetCount(theArray) - 1);
}

void CFArrayReplaceValues(CFMutableArrayRef theArray, CFRange range, const void **newValues, CFIndex newCount)
{
    if (!__CFIsMutableArray(theArray) || !__CFArrayRangeIsValid(theArray, range) || newCount < 0 ||
        (newValues == NULL && newCount > 0))
        return;
    for (CFIndex i = 0; i < range.length; i++)
        CFArrayRemoveValueAtIndex(theArray, range.location);
    for (CFIndex i = 0; i < newCount; i++)
        CFArrayInsertValueAtIndex(theArray, range.location + i, newValues[i]);
}

void CFArrayExchangeValuesAtIndices(CFMutableArrayRef theArray, CFIndex idx1, CFIndex idx2)
{
    CFIndex count = CFArrayGetCount(theArray);
    if (!__CFIsMutableArray(theArray) || idx1 < 0 || idx2 < 0 || idx1 >= count || idx2 >= count)
        return;
    __KCFCallbackArray *callbackArray = __CFCallbackArray(theArray);
    if (callbackArray != nil) {
        const void *value = callbackArray->_values[idx1];
        callbackArray->_values[idx1] = callbackArray->_values[idx2];
        callbackArray->_values[idx2] = value;
        return;
    }
    [(NSMutableArray *)theArray exchangeObjectAtIndex:(NSUInteger)idx1 withObjectAtIndex:(NSUInteger)idx2];
}

/* A stable merge sort over the values, calling the comparator as CF does. */
static void __CFMergeSort(const void **values, const void **scratch, CFIndex count, CFComparatorFunction comparator,
                          void *context)
{
    if (count < 2)
        return;
    CFIndex half = count / 2;
    __CFMergeSort(values, scratch, half, comparator, context);
    __CFMergeSort(values + half, scratch, count - half, comparator, context);
    CFIndex i = 0, j = half, k = 0;
    while (i < half && j < count)
        scratch[k++] = comparator(values[j], values[i], context) == kCFCompareLessThan ? values[j++] : values[i++];
    while (i < half)
        scratch[k++] = values[i++];
    while (j < count)
        scratch[k++] = values[j++];
    memcpy(values, scratch, (size_t)count * sizeof(const void *));
}

static void __CFArraySortValuesBody(CFMutableArrayRef theArray, CFRange range, CFComparatorFunction comparator, void *context)
{
    if (!__CFIsMutableArray(theArray) || comparator == NULL || !__CFArrayRangeIsValid(theArray, range) ||
        range.length < 2)
        return;
    const void **values = malloc((size_t)range.length * 2 * sizeof(const void *));
    if (values == NULL)
        return;
    CFArrayGetValues(theArray, range, values);
    __CFMergeSort(values, values + range.length, range.length, comparator, context);
    __KCFCallbackArray *callbackArray = __CFCallbackArray(theArray);
    if (callbackArray != nil) {
        memcpy(callbackArray->_values + range.location, values, (size_t)range.length * sizeof(const void *));
    } else {
        NSArray *sorted = [[NSArray alloc] initWithObjects:(id *)values count:(NSUInteger)range.length];
        [(NSMutableArray *)theArray
            replaceObjectsInRange:NSMakeRange((NSUInteger)range.location, (NSUInteger)range.length)
             withObjectsFromArray:sorted];
        [sorted release];
    }
    free(values);
}

void CFArraySortValues(CFMutableArrayRef theArray, CFRange range, CFComparatorFunction comparator, void *context)
{
    __CF_POOL_BEGIN
    __CFArraySortValuesBody(theArray, range, comparator, context);
    __CF_POOL_END
}

void CFArrayAppendArray(CFMutableArrayRef theArray, CFArrayRef otherArray, CFRange otherRange)
{
    if (!__CFIsMutableArray(theArray) || otherArray == NULL || !__CFArrayRangeIsValid(otherArray, otherRange))
        return;
    for (CFIndex i = otherRange.location; i < otherRange.location + otherRange.length; i++)
        CFArrayAppendValue(theArray, CFArrayGetValueAtIndex(otherArray, i));
}
