/* CFNumber and CFBoolean over NSNumber.  A number remembers the sized C
 * type it was made with; conversions report loss as CF does. */
#include "CFInternal.h"
#include <limits.h>
#include <math.h>
#include <stdint.h>
#include <string.h>

CFTypeID CFBooleanGetTypeID(void)
{
    return __kCFBooleanTypeID;
}

Boolean CFBooleanGetValue(CFBooleanRef boolean)
{
    if (boolean == NULL)
        return false;
    return [(NSNumber *)boolean boolValue] ? true : false;
}

CFTypeID CFNumberGetTypeID(void)
{
    return __kCFNumberTypeID;
}

/* The canonical sized type behind every CFNumberType. */
static CFNumberType __CFCanonicalType(CFNumberType type)
{
    switch (type) {
    case kCFNumberSInt8Type:
    case kCFNumberCharType:
        return kCFNumberSInt8Type;
    case kCFNumberSInt16Type:
    case kCFNumberShortType:
        return kCFNumberSInt16Type;
    case kCFNumberSInt32Type:
    case kCFNumberIntType:
        return kCFNumberSInt32Type;
    case kCFNumberSInt64Type:
    case kCFNumberLongType:
    case kCFNumberLongLongType:
    case kCFNumberCFIndexType:
    case kCFNumberNSIntegerType:
        return kCFNumberSInt64Type;
    case kCFNumberFloat32Type:
    case kCFNumberFloatType:
        return kCFNumberFloat32Type;
    case kCFNumberFloat64Type:
    case kCFNumberDoubleType:
    case kCFNumberCGFloatType:
        return kCFNumberFloat64Type;
    default:
        return 0;
    }
}

/* A number made by CFNumberCreate: it keeps the sized type it was made
 * with (Foundation would narrow every small integer to an int) and answers
 * Foundation's messages like any other NSNumber. */
@interface __KCFNumber : NSNumber {
@public
    CFNumberType _type;
    union {
        long long integer;
        double real;
    } _value;
}
@end

@implementation __KCFNumber
- (BOOL)__isReal
{
    return _type == kCFNumberFloat32Type || _type == kCFNumberFloat64Type;
}

- (const char *)objCType
{
    switch (_type) {
    case kCFNumberSInt8Type:
        return @encode(signed char);
    case kCFNumberSInt16Type:
        return @encode(short);
    case kCFNumberSInt32Type:
        return @encode(int);
    case kCFNumberFloat32Type:
        return @encode(float);
    case kCFNumberFloat64Type:
        return @encode(double);
    default:
        return @encode(long long);
    }
}

- (void)getValue:(void *)buffer
{
    if (buffer == NULL)
        return;
    switch (_type) {
    case kCFNumberSInt8Type:
        *(signed char *)buffer = (signed char)_value.integer;
        break;
    case kCFNumberSInt16Type:
        *(short *)buffer = (short)_value.integer;
        break;
    case kCFNumberSInt32Type:
        *(int *)buffer = (int)_value.integer;
        break;
    case kCFNumberFloat32Type:
        *(float *)buffer = (float)_value.real;
        break;
    case kCFNumberFloat64Type:
        *(double *)buffer = _value.real;
        break;
    default:
        *(long long *)buffer = _value.integer;
        break;
    }
}

- (long long)longLongValue
{
    if (![self __isReal])
        return _value.integer;
    double d = _value.real;
    return isfinite(d) && d < 9.2e18 && d > -9.2e18 ? (long long)d : 0;
}

- (double)doubleValue
{
    return [self __isReal] ? _value.real : (double)_value.integer;
}

- (BOOL)boolValue
{
    return [self __isReal] ? _value.real != 0 : _value.integer != 0;
}

- (char)charValue
{
    return (char)[self longLongValue];
}

- (unsigned char)unsignedCharValue
{
    return (unsigned char)[self longLongValue];
}

- (short)shortValue
{
    return (short)[self longLongValue];
}

- (unsigned short)unsignedShortValue
{
    return (unsigned short)[self longLongValue];
}

- (int)intValue
{
    return (int)[self longLongValue];
}

- (unsigned int)unsignedIntValue
{
    return (unsigned int)[self longLongValue];
}

- (long)longValue
{
    return (long)[self longLongValue];
}

- (unsigned long)unsignedLongValue
{
    return (unsigned long)[self longLongValue];
}

- (unsigned long long)unsignedLongLongValue
{
    return (unsigned long long)[self longLongValue];
}

- (NSInteger)integerValue
{
    return (NSInteger)[self longLongValue];
}

- (NSUInteger)unsignedIntegerValue
{
    return (NSUInteger)[self longLongValue];
}

- (float)floatValue
{
    return (float)[self doubleValue];
}

- (NSComparisonResult)compare:(NSNumber *)other
{
    if (other == nil)
        return NSOrderedDescending;
    const char *otherType = [other objCType];
    if ([self __isReal] || *otherType == 'f' || *otherType == 'd') {
        double a = [self doubleValue], b = [other doubleValue];
        return a < b ? NSOrderedAscending : (a > b ? NSOrderedDescending : NSOrderedSame);
    }
    if (*otherType == 'Q' && [other unsignedLongLongValue] > (unsigned long long)LLONG_MAX)
        return NSOrderedAscending;
    long long a = _value.integer, b = [other longLongValue];
    return a < b ? NSOrderedAscending : (a > b ? NSOrderedDescending : NSOrderedSame);
}

- (BOOL)isEqualToNumber:(NSNumber *)other
{
    if (other == (NSNumber *)self)
        return YES;
    if (other == nil || __CFObjectIsBoolean(other))
        return NO;
    return [self compare:other] == NSOrderedSame;
}

- (BOOL)isEqual:(id)other
{
    if (other == self)
        return YES;
    return [other isKindOfClass:[NSNumber class]] && [self isEqualToNumber:other];
}

/* The hash Foundation gives an equal number: the value's integer part cut
 * to 32 bits.  Worked out here, since asking Foundation makes an
 * autoreleased number. */
- (NSUInteger)hash
{
    return (NSUInteger)(uint32_t)[self longLongValue];
}

- (NSString *)stringValue
{
    return [self descriptionWithLocale:nil];
}

- (NSString *)description
{
    return [self descriptionWithLocale:nil];
}

- (NSString *)descriptionWithLocale:(id)locale
{
    (void)locale;
    if ([self __isReal])
        return [[NSNumber numberWithDouble:_value.real] descriptionWithLocale:nil];
    return [NSString stringWithFormat:@"%lld", _value.integer];
}

- (id)copyWithZone:(NSZone *)zone
{
    (void)zone;
    return [self retain];
}
@end

CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType theType, const void *valuePtr)
{
    (void)allocator;
    if (valuePtr == NULL)
        return NULL;
    CFNumberType type = __CFCanonicalType(theType);
    if (type == 0)
        return NULL;
    __KCFNumber *number = [__KCFNumber alloc];
    if (number == nil)
        return NULL;
    number->_type = type;
    switch (type) {
    case kCFNumberSInt8Type:
        number->_value.integer = *(const SInt8 *)valuePtr;
        break;
    case kCFNumberSInt16Type:
        number->_value.integer = *(const SInt16 *)valuePtr;
        break;
    case kCFNumberSInt32Type:
        number->_value.integer = *(const SInt32 *)valuePtr;
        break;
    case kCFNumberSInt64Type:
        number->_value.integer = *(const SInt64 *)valuePtr;
        break;
    case kCFNumberFloat32Type:
        number->_value.real = *(const Float32 *)valuePtr;
        break;
    default:
        number->_value.real = *(const Float64 *)valuePtr;
        break;
    }
    return (CFNumberRef)number;
}

/* Numbers made by Foundation answer from their objCType; Foundation keeps
 * small integers as ints, so those report 32 bits. */
CFNumberType CFNumberGetType(CFNumberRef number)
{
    if (number == NULL)
        return 0;
    id object = (id)number;
    if ([object isKindOfClass:[__KCFNumber class]])
        return ((__KCFNumber *)object)->_type;
    switch (*[(NSNumber *)object objCType]) {
    case 'c':
    case 'C':
    case 'B':
        return kCFNumberSInt8Type;
    case 's':
        return kCFNumberSInt16Type;
    case 'S':
    case 'i':
        return kCFNumberSInt32Type;
    case 'f':
        return kCFNumberFloat32Type;
    case 'd':
        return kCFNumberFloat64Type;
    default:
        return kCFNumberSInt64Type;
    }
}

CFIndex CFNumberGetByteSize(CFNumberRef number)
{
    switch (CFNumberGetType(number)) {
    case kCFNumberSInt8Type:
        return 1;
    case kCFNumberSInt16Type:
        return 2;
    case kCFNumberSInt32Type:
    case kCFNumberFloat32Type:
        return 4;
    case kCFNumberSInt64Type:
    case kCFNumberFloat64Type:
        return 8;
    default:
        return 0;
    }
}

Boolean CFNumberIsFloatType(CFNumberRef number)
{
    CFNumberType type = CFNumberGetType(number);
    return type == kCFNumberFloat32Type || type == kCFNumberFloat64Type;
}

/* Integers convert through long long, floats through double; a result
 * that does not convert back to the same value is a lossy one. */
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void *valuePtr)
{
    if (number == NULL || valuePtr == NULL)
        return false;
    NSNumber *n = (NSNumber *)number;
    Boolean isFloat = CFNumberIsFloatType(number);
    double d = [n doubleValue];
    long long ll = isFloat ? (isfinite(d) && d < 9.3e18 && d > -9.3e18 ? (long long)d : 0) : [n longLongValue];
    switch (__CFCanonicalType(theType)) {
    case kCFNumberSInt8Type:
        *(SInt8 *)valuePtr = (SInt8)ll;
        return !isFloat ? ll == (SInt8)ll : d == (double)(SInt8)ll;
    case kCFNumberSInt16Type:
        *(SInt16 *)valuePtr = (SInt16)ll;
        return !isFloat ? ll == (SInt16)ll : d == (double)(SInt16)ll;
    case kCFNumberSInt32Type:
        *(SInt32 *)valuePtr = (SInt32)ll;
        return !isFloat ? ll == (SInt32)ll : d == (double)(SInt32)ll;
    case kCFNumberSInt64Type:
        *(SInt64 *)valuePtr = (SInt64)ll;
        return !isFloat ? true : d == (double)ll;
    case kCFNumberFloat32Type: {
        Float32 f = isFloat ? (Float32)d : (Float32)ll;
        *(Float32 *)valuePtr = f;
        return isFloat ? ((double)f == d || isnan(d)) : (long long)f == ll;
    }
    case kCFNumberFloat64Type:
        *(Float64 *)valuePtr = isFloat ? d : (double)ll;
        return isFloat ? true : (long long)(double)ll == ll;
    default:
        return false;
    }
}

CFComparisonResult CFNumberCompare(CFNumberRef number, CFNumberRef otherNumber, void *context)
{
    (void)context;
    if (number == NULL || otherNumber == NULL) {
        if (number == otherNumber)
            return kCFCompareEqualTo;
        return number == NULL ? kCFCompareLessThan : kCFCompareGreaterThan;
    }
    return (CFComparisonResult)[(NSNumber *)number compare:(NSNumber *)otherNumber];
}
