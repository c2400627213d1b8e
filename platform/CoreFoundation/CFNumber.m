/* CFNumber and CFBoolean over NSNumber.  A number remembers the C type it
 * was made from (Foundation's objCType); conversions report loss as CF does. */
#include "CFInternal.h"
#include <math.h>
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

CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType theType, const void *valuePtr)
{
    (void)allocator;
    if (valuePtr == NULL)
        return NULL;
    switch (__CFCanonicalType(theType)) {
    case kCFNumberSInt8Type:
        return (CFNumberRef)[[NSNumber alloc] initWithChar:*(const SInt8 *)valuePtr];
    case kCFNumberSInt16Type:
        return (CFNumberRef)[[NSNumber alloc] initWithShort:*(const SInt16 *)valuePtr];
    case kCFNumberSInt32Type:
        return (CFNumberRef)[[NSNumber alloc] initWithInt:*(const SInt32 *)valuePtr];
    case kCFNumberSInt64Type:
        return (CFNumberRef)[[NSNumber alloc] initWithLongLong:*(const SInt64 *)valuePtr];
    case kCFNumberFloat32Type:
        return (CFNumberRef)[[NSNumber alloc] initWithFloat:*(const Float32 *)valuePtr];
    case kCFNumberFloat64Type:
        return (CFNumberRef)[[NSNumber alloc] initWithDouble:*(const Float64 *)valuePtr];
    default:
        return NULL;
    }
}

CFNumberType CFNumberGetType(CFNumberRef number)
{
    if (number == NULL)
        return 0;
    switch (*[(NSNumber *)number objCType]) {
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
