/* CFString over NSString.  Conversions between UTF-16 and bytes go through
 * the encoding table (CFStringEncodingTable.c), so that the toolkit decides
 * what fails and what is lost, not Foundation's lenient converters. */
#include "CFInternal.h"
#include "CFStringEncodingTable.h"

#include <langinfo.h>
#include <objc/runtime.h>
#include <locale.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

CFTypeID CFStringGetTypeID(void)
{
    return __kCFStringTypeID;
}

static NSString *__CFStr(CFStringRef s)
{
    return (NSString *)s;
}

static BOOL __CFIsMutableString(CFMutableStringRef s)
{
    return s != NULL && [(id)s isKindOfClass:[NSMutableString class]];
}

/* The string's UTF-16 units in a malloc'ed buffer (never NULL), freed by the caller. */
static UniChar *__CFCopyUnits(NSString *string, NSRange range)
{
    UniChar *units = malloc((range.length ? range.length : 1) * sizeof(UniChar));
    if (units != NULL && range.length > 0)
        [string getCharacters:units range:range];
    return units;
}

static BOOL __CFRangeIsValid(CFRange range, CFIndex length)
{
    return range.location >= 0 && range.length >= 0 && range.location <= length &&
           range.length <= length - range.location;
}

/* ---- Constant strings ------------------------------------------------- */

/* A string over a buffer of UTF-16 units of its own.  Foundation refuses
 * unpaired surrogates, which CF strings may hold; such strings are made of
 * this class.  Strings of ASCII text are made of it too, and also keep
 * their text as a C string, which CFStringGetCStringPtr hands out.  The
 * buffers are freed with the string. */
@interface __KCFUnitString : NSString {
@public
    UniChar *_units;
    NSUInteger _length;
    char *_ascii;
}
- (id)initWithUnits:(UniChar *)units length:(NSUInteger)length;
@end

@implementation __KCFUnitString
- (id)initWithUnits:(UniChar *)units length:(NSUInteger)length
{
    if ((self = [super init]) != nil) {
        _units = units;
        _length = length;
        NSUInteger i = 0;
        while (i < length && units[i] != 0 && units[i] < 0x80)
            i++;
        if (i == length && (_ascii = malloc(length + 1)) != NULL) {
            for (i = 0; i < length; i++)
                _ascii[i] = (char)units[i];
            _ascii[length] = 0;
        }
    }
    return self;
}
- (void)dealloc
{
    free(_units);
    free(_ascii);
    [super dealloc];
}
- (NSUInteger)length
{
    return _length;
}
- (unichar)characterAtIndex:(NSUInteger)index
{
    if (index >= _length)
        [NSException raise:NSRangeException format:@"index %lu beyond length %lu",
                     (unsigned long)index, (unsigned long)_length];
    return _units[index];
}
- (void)getCharacters:(unichar *)buffer range:(NSRange)range
{
    if (range.location > _length || range.length > _length - range.location)
        [NSException raise:NSRangeException format:@"range beyond length"];
    memcpy(buffer, _units + range.location, range.length * sizeof(unichar));
}
- (id)copyWithZone:(NSZone *)zone
{
    (void)zone;
    return [self retain];
}
@end

/* CFSTR strings are never freed, whatever callers retain or release. */
@interface __KCFConstantString : __KCFUnitString
@end

@implementation __KCFConstantString
- (id)retain
{
    return self;
}
- (oneway void)release
{
}
- (id)autorelease
{
    return self;
}
- (NSUInteger)retainCount
{
    return UINT_MAX;
}
- (void)dealloc
{
    /* Never reached: constant strings live as long as the process. */
    if (0)
        [super dealloc];
}
@end

typedef struct {
    char *text;
    CFStringRef string;
} __CFConstantEntry;

static pthread_mutex_t __CFConstantLock = PTHREAD_MUTEX_INITIALIZER;
static __CFConstantEntry *__CFConstantTable;
static size_t __CFConstantCapacity;
static size_t __CFConstantCount;

static size_t __CFHashText(const char *text)
{
    size_t hash = 5381;
    for (; *text; text++)
        hash = hash * 33 + (unsigned char)*text;
    return hash;
}

static BOOL __CFConstantTableGrow(void)
{
    size_t capacity = __CFConstantCapacity ? __CFConstantCapacity * 2 : 256;
    __CFConstantEntry *table = calloc(capacity, sizeof(__CFConstantEntry));
    if (table == NULL)
        return NO;
    for (size_t i = 0; i < __CFConstantCapacity; i++) {
        if (__CFConstantTable[i].text == NULL)
            continue;
        size_t slot = __CFHashText(__CFConstantTable[i].text) & (capacity - 1);
        while (table[slot].text != NULL)
            slot = (slot + 1) & (capacity - 1);
        table[slot] = __CFConstantTable[i];
    }
    free(__CFConstantTable);
    __CFConstantTable = table;
    __CFConstantCapacity = capacity;
    return YES;
}

static CFStringRef __CFMakeConstant(const char *cStr)
{
    UniChar *units;
    CFIndex count;
    size_t length = strlen(cStr);
    if (!__CFDecodeBytes((const UInt8 *)cStr, (CFIndex)length, kCFStringEncodingUTF8, false, &units, &count) &&
        !__CFDecodeBytes((const UInt8 *)cStr, (CFIndex)length, kCFStringEncodingISOLatin1, false, &units, &count))
        return NULL;
    return (CFStringRef)[[__KCFConstantString alloc] initWithUnits:units length:(NSUInteger)count];
}

CFStringRef __CFStringMakeConstantString(const char *cStr)
{
    if (cStr == NULL)
        return NULL;
    CFStringRef result = NULL;
    pthread_mutex_lock(&__CFConstantLock);
    if (__CFConstantCount * 2 >= __CFConstantCapacity && !__CFConstantTableGrow()) {
        pthread_mutex_unlock(&__CFConstantLock);
        return NULL;
    }
    size_t slot = __CFHashText(cStr) & (__CFConstantCapacity - 1);
    while (__CFConstantTable[slot].text != NULL) {
        if (strcmp(__CFConstantTable[slot].text, cStr) == 0) {
            result = __CFConstantTable[slot].string;
            break;
        }
        slot = (slot + 1) & (__CFConstantCapacity - 1);
    }
    if (result == NULL) {
        result = __CFMakeConstant(cStr);
        char *text = strdup(cStr);
        if (result != NULL && text != NULL) {
            __CFConstantTable[slot].text = text;
            __CFConstantTable[slot].string = result;
            __CFConstantCount++;
        } else {
            free(text);
        }
    }
    pthread_mutex_unlock(&__CFConstantLock);
    return result;
}

/* ---- Creation --------------------------------------------------------- */

/* Whether every surrogate is part of a pair, as Foundation requires. */
static BOOL __CFUnitsArePaired(const UniChar *units, CFIndex count)
{
    for (CFIndex i = 0; i < count; i++) {
        if (units[i] >= 0xD800 && units[i] <= 0xDBFF && i + 1 < count && units[i + 1] >= 0xDC00 &&
            units[i + 1] <= 0xDFFF)
            i++;
        else if (units[i] >= 0xD800 && units[i] <= 0xDFFF)
            return NO;
    }
    return YES;
}

static BOOL __CFUnitsAreASCII(const UniChar *units, CFIndex count)
{
    for (CFIndex i = 0; i < count; i++) {
        if (units[i] == 0 || units[i] >= 0x80)
            return NO;
    }
    return YES;
}

/* Takes ownership of units (malloc'ed). */
static CFStringRef __CFStringFromUnits(UniChar *units, CFIndex count)
{
    if (!__CFUnitsArePaired(units, count) || __CFUnitsAreASCII(units, count))
        return (CFStringRef)[[__KCFUnitString alloc] initWithUnits:units length:(NSUInteger)count];
    return (CFStringRef)[[NSString alloc] initWithCharactersNoCopy:units length:(NSUInteger)count freeWhenDone:YES];
}

static CFStringRef __CFStringFromCopiedUnits(const UniChar *chars, CFIndex numChars)
{
    if (__CFUnitsArePaired(chars, numChars) && !__CFUnitsAreASCII(chars, numChars))
        return (CFStringRef)[[NSString alloc] initWithCharacters:chars length:(NSUInteger)numChars];
    UniChar *units = malloc((numChars ? (size_t)numChars : 1) * sizeof(UniChar));
    if (units == NULL)
        return NULL;
    if (numChars > 0)
        memcpy(units, chars, (size_t)numChars * sizeof(UniChar));
    return (CFStringRef)[[__KCFUnitString alloc] initWithUnits:units length:(NSUInteger)numChars];
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef alloc, const UInt8 *bytes, CFIndex numBytes,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation)
{
    (void)alloc;
    if ((bytes == NULL && numBytes != 0) || numBytes < 0)
        return NULL;
    UniChar *units;
    CFIndex count;
    if (!__CFDecodeBytes(bytes, numBytes, encoding, isExternalRepresentation, &units, &count))
        return NULL;
    return __CFStringFromUnits(units, count);
}

CFStringRef CFStringCreateWithBytesNoCopy(CFAllocatorRef alloc, const UInt8 *bytes, CFIndex numBytes,
                                          CFStringEncoding encoding, Boolean isExternalRepresentation,
                                          CFAllocatorRef contentsDeallocator)
{
    /* The bytes are always decoded into a buffer of the string's own, so
     * the caller's buffer can be given back at once. */
    CFStringRef result = CFStringCreateWithBytes(alloc, bytes, numBytes, encoding, isExternalRepresentation);
    if (result != NULL && __CFAllocatorFreesWithFree(contentsDeallocator))
        free((void *)bytes);
    return result;
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef alloc, const char *cStr, CFStringEncoding encoding)
{
    if (cStr == NULL)
        return NULL;
    return CFStringCreateWithBytes(alloc, (const UInt8 *)cStr, (CFIndex)strlen(cStr), encoding, false);
}

CFStringRef CFStringCreateWithCStringNoCopy(CFAllocatorRef alloc, const char *cStr, CFStringEncoding encoding,
                                            CFAllocatorRef contentsDeallocator)
{
    if (cStr == NULL)
        return NULL;
    return CFStringCreateWithBytesNoCopy(alloc, (const UInt8 *)cStr, (CFIndex)strlen(cStr), encoding, false,
                                         contentsDeallocator);
}

CFStringRef CFStringCreateWithPascalString(CFAllocatorRef alloc, ConstStr255Param pStr, CFStringEncoding encoding)
{
    if (pStr == NULL)
        return NULL;
    return CFStringCreateWithBytes(alloc, pStr + 1, pStr[0], encoding, false);
}

CFStringRef CFStringCreateWithPascalStringNoCopy(CFAllocatorRef alloc, ConstStr255Param pStr,
                                                 CFStringEncoding encoding, CFAllocatorRef contentsDeallocator)
{
    CFStringRef result = CFStringCreateWithPascalString(alloc, pStr, encoding);
    if (result != NULL && __CFAllocatorFreesWithFree(contentsDeallocator))
        free((void *)pStr);
    return result;
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef alloc, const UniChar *chars, CFIndex numChars)
{
    (void)alloc;
    if ((chars == NULL && numChars != 0) || numChars < 0)
        return NULL;
    return __CFStringFromCopiedUnits(chars, numChars);
}

CFStringRef CFStringCreateWithCharactersNoCopy(CFAllocatorRef alloc, const UniChar *chars, CFIndex numChars,
                                               CFAllocatorRef contentsDeallocator)
{
    (void)alloc;
    if ((chars == NULL && numChars != 0) || numChars < 0)
        return NULL;
    if (__CFAllocatorFreesWithFree(contentsDeallocator))
        return __CFStringFromUnits((UniChar *)chars, numChars);
    /* The caller keeps its buffer and may reuse it: keep a copy. */
    return __CFStringFromCopiedUnits(chars, numChars);
}

CFStringRef CFStringCreateCopy(CFAllocatorRef alloc, CFStringRef theString)
{
    (void)alloc;
    if (theString == NULL)
        return NULL;
    return (CFStringRef)[__CFStr(theString) copy];
}

CFStringRef CFStringCreateWithSubstring(CFAllocatorRef alloc, CFStringRef str, CFRange range)
{
    (void)alloc;
    if (str == NULL || !__CFRangeIsValid(range, CFStringGetLength(str)))
        return NULL;
    UniChar *units = __CFCopyUnits(__CFStr(str), NSMakeRange((NSUInteger)range.location, (NSUInteger)range.length));
    if (units == NULL)
        return NULL;
    return __CFStringFromUnits(units, range.length);
}

CFMutableStringRef CFStringCreateMutable(CFAllocatorRef alloc, CFIndex maxLength)
{
    (void)alloc;
    if (maxLength < 0)
        return NULL;
    return (CFMutableStringRef)[[NSMutableString alloc] initWithCapacity:(NSUInteger)maxLength];
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef alloc, CFIndex maxLength, CFStringRef theString)
{
    __CF_SCOPED_POOL
    (void)alloc;
    if (maxLength < 0)
        return NULL;
    if (theString == NULL)
        return CFStringCreateMutable(alloc, maxLength);
    /* Appending copies the units as they are, unpaired surrogates included. */
    NSMutableString *copy = [[NSMutableString alloc] initWithCapacity:[__CFStr(theString) length]];
    [copy appendString:__CFStr(theString)];
    return (CFMutableStringRef)copy;
}

CFDataRef CFStringCreateExternalRepresentation(CFAllocatorRef alloc, CFStringRef theString,
                                               CFStringEncoding encoding, UInt8 lossByte)
{
    (void)alloc;
    if (theString == NULL)
        return NULL;
    CFIndex length = CFStringGetLength(theString);
    CFIndex needed = 0;
    CFIndex converted = CFStringGetBytes(theString, CFRangeMake(0, length), encoding, lossByte, true, NULL, 0, &needed);
    if (converted != length)
        return NULL;
    UInt8 *bytes = malloc(needed ? (size_t)needed : 1);
    if (bytes == NULL)
        return NULL;
    CFStringGetBytes(theString, CFRangeMake(0, length), encoding, lossByte, true, bytes, needed, &needed);
    return (CFDataRef)[[NSData alloc] initWithBytesNoCopy:bytes length:(NSUInteger)needed freeWhenDone:YES];
}

CFStringRef CFStringCreateFromExternalRepresentation(CFAllocatorRef alloc, CFDataRef data, CFStringEncoding encoding)
{
    if (data == NULL)
        return NULL;
    return CFStringCreateWithBytes(alloc, CFDataGetBytePtr(data), CFDataGetLength(data), encoding, true);
}

CFStringRef CFStringCreateWithFileSystemRepresentation(CFAllocatorRef alloc, const char *buffer)
{
    return CFStringCreateWithCString(alloc, buffer, kCFStringEncodingUTF8);
}

/* ---- Access ----------------------------------------------------------- */

CFIndex CFStringGetLength(CFStringRef theString)
{
    if (theString == NULL)
        return 0;
    return (CFIndex)[__CFStr(theString) length];
}

UniChar CFStringGetCharacterAtIndex(CFStringRef theString, CFIndex idx)
{
    if (theString == NULL || idx < 0 || idx >= CFStringGetLength(theString))
        return 0;
    return [__CFStr(theString) characterAtIndex:(NSUInteger)idx];
}

void CFStringGetCharacters(CFStringRef theString, CFRange range, UniChar *buffer)
{
    if (theString == NULL || buffer == NULL || !__CFRangeIsValid(range, CFStringGetLength(theString)))
        return;
    [__CFStr(theString) getCharacters:buffer range:NSMakeRange((NSUInteger)range.location, (NSUInteger)range.length)];
}

CFIndex CFStringGetBytes(CFStringRef theString, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                         Boolean isExternalRepresentation, UInt8 *buffer, CFIndex maxBufLen, CFIndex *usedBufLen)
{
    if (usedBufLen != NULL)
        *usedBufLen = 0;
    if (theString == NULL || !__CFRangeIsValid(range, CFStringGetLength(theString)))
        return 0;
    UniChar *units = __CFCopyUnits(__CFStr(theString), NSMakeRange((NSUInteger)range.location, (NSUInteger)range.length));
    if (units == NULL)
        return 0;
    CFIndex converted = __CFEncodeUnits(units, range.length, encoding, lossByte, isExternalRepresentation, buffer,
                                        maxBufLen, usedBufLen);
    free(units);
    return converted;
}

Boolean CFStringGetCString(CFStringRef theString, char *buffer, CFIndex bufferSize, CFStringEncoding encoding)
{
    if (buffer == NULL || bufferSize <= 0)
        return false;
    buffer[0] = '\0';
    if (theString == NULL)
        return false;
    CFIndex length = CFStringGetLength(theString);
    CFIndex used = 0;
    CFIndex converted = CFStringGetBytes(theString, CFRangeMake(0, length), encoding, 0, false, (UInt8 *)buffer,
                                         bufferSize - 1, &used);
    if (converted != length) {
        buffer[0] = '\0';
        return false;
    }
    buffer[used] = '\0';
    return true;
}

Boolean CFStringGetPascalString(CFStringRef theString, StringPtr buffer, CFIndex bufferSize, CFStringEncoding encoding)
{
    if (buffer == NULL || bufferSize <= 0)
        return false;
    buffer[0] = 0;
    if (theString == NULL)
        return false;
    CFIndex length = CFStringGetLength(theString);
    CFIndex room = bufferSize - 1 < 255 ? bufferSize - 1 : 255;
    CFIndex used = 0;
    CFIndex converted = CFStringGetBytes(theString, CFRangeMake(0, length), encoding, 0, false, buffer + 1, room, &used);
    if (converted != length)
        return false;
    buffer[0] = (UInt8)used;
    return true;
}

/* Encodings in which ASCII text is stored byte for byte. */
static BOOL __CFEncodingExtendsASCII(CFStringEncoding encoding)
{
    switch (encoding) {
    case kCFStringEncodingASCII:
    case kCFStringEncodingMacRoman:
    case kCFStringEncodingUTF8:
    case kCFStringEncodingISOLatin1:
    case kCFStringEncodingWindowsLatin1:
    case kCFStringEncodingNonLossyASCII:
        return YES;
    default:
        return NO;
    }
}

/* A Foundation literal keeps the compiler's C string; it is the string's
 * storage when it is plain ASCII. */
static const char *__CFLiteralBytes(id string)
{
    static Class literalClass;
    static ptrdiff_t bytesOffset = -1;
    if (literalClass == Nil) {
        Class cls = objc_lookUpClass("NSConstantString");
        Ivar ivar = cls != Nil ? class_getInstanceVariable(cls, "nxcsptr") : NULL;
        if (ivar == NULL)
            return NULL;
        bytesOffset = ivar_getOffset(ivar);
        literalClass = cls;
    }
    if (object_getClass(string) != literalClass || bytesOffset < 0)
        return NULL;
    const char *bytes = *(const char **)((char *)string + bytesOffset);
    if (bytes == NULL)
        return NULL;
    NSUInteger length = [(NSString *)string length];
    for (NSUInteger i = 0; i < length; i++) {
        if (bytes[i] == 0 || (unsigned char)bytes[i] >= 0x80)
            return NULL;
    }
    return bytes[length] == 0 ? bytes : NULL;
}

const char *CFStringGetCStringPtr(CFStringRef theString, CFStringEncoding encoding)
{
    if (theString == NULL || !__CFEncodingExtendsASCII(encoding))
        return NULL;
    id string = (id)theString;
    if ([string isKindOfClass:[__KCFUnitString class]])
        return ((__KCFUnitString *)string)->_ascii;
    return __CFLiteralBytes(string);
}

ConstStringPtr CFStringGetPascalStringPtr(CFStringRef theString, CFStringEncoding encoding)
{
    (void)theString;
    (void)encoding;
    return NULL;
}

const UniChar *CFStringGetCharactersPtr(CFStringRef theString)
{
    if (theString == NULL || ![(id)theString isKindOfClass:[__KCFUnitString class]])
        return NULL;
    return ((__KCFUnitString *)theString)->_units;
}

CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding)
{
    const __CFEncodingInfo *info = __CFEncodingInfoFor(encoding);
    if (info == NULL || length < 0)
        return kCFNotFound;
    if (length > LONG_MAX / info->maxBytesPerUnit)
        return kCFNotFound;
    return length * info->maxBytesPerUnit;
}

CFIndex CFStringGetMaximumSizeOfFileSystemRepresentation(CFStringRef string)
{
    return CFStringGetMaximumSizeForEncoding(CFStringGetLength(string), kCFStringEncodingUTF8) + 1;
}

Boolean CFStringGetFileSystemRepresentation(CFStringRef string, char *buffer, CFIndex maxBufLen)
{
    return CFStringGetCString(string, buffer, maxBufLen, kCFStringEncodingUTF8);
}

SInt32 CFStringGetIntValue(CFStringRef str)
{
    __CF_SCOPED_POOL
    if (str == NULL)
        return 0;
    return (SInt32)[__CFStr(str) intValue];
}

double CFStringGetDoubleValue(CFStringRef str)
{
    __CF_SCOPED_POOL
    if (str == NULL)
        return 0.0;
    return [__CFStr(str) doubleValue];
}

/* ---- Comparison and search -------------------------------------------- */

static NSStringCompareOptions __CFCompareOptions(CFStringCompareFlags flags)
{
    NSStringCompareOptions options = 0;
    if (flags & kCFCompareCaseInsensitive)
        options |= NSCaseInsensitiveSearch;
    if (!(flags & kCFCompareNonliteral))
        options |= NSLiteralSearch;
    if (flags & kCFCompareBackwards)
        options |= NSBackwardsSearch;
    if (flags & kCFCompareAnchored)
        options |= NSAnchoredSearch;
    if (flags & kCFCompareNumerically)
        options |= NSNumericSearch;
    if (flags & kCFCompareDiacriticInsensitive)
        options |= NSDiacriticInsensitiveSearch;
    if (flags & kCFCompareWidthInsensitive)
        options |= NSWidthInsensitiveSearch;
    if (flags & kCFCompareForcedOrdering)
        options |= NSForcedOrderingSearch;
    return options;
}

/* Numeric comparison: runs of digits compare by their value, the rest unit
 * by unit (folded to lower case when asked). */
static CFComparisonResult __CFCompareNumerically(NSString *a, NSString *b, NSRange range, BOOL caseless)
{
    NSUInteger i = range.location, end = NSMaxRange(range), j = 0, bLength = [b length];
    while (i < end && j < bLength) {
        unichar ca = [a characterAtIndex:i], cb = [b characterAtIndex:j];
        if (ca >= '0' && ca <= '9' && cb >= '0' && cb <= '9') {
            NSUInteger si = i, sj = j;
            while (si < end && [a characterAtIndex:si] == '0')
                si++;
            while (sj < bLength && [b characterAtIndex:sj] == '0')
                sj++;
            NSUInteger ei = si, ej = sj;
            while (ei < end && [a characterAtIndex:ei] >= '0' && [a characterAtIndex:ei] <= '9')
                ei++;
            while (ej < bLength && [b characterAtIndex:ej] >= '0' && [b characterAtIndex:ej] <= '9')
                ej++;
            if (ei - si != ej - sj)
                return ei - si < ej - sj ? kCFCompareLessThan : kCFCompareGreaterThan;
            for (; si < ei; si++, sj++) {
                unichar da = [a characterAtIndex:si], db = [b characterAtIndex:sj];
                if (da != db)
                    return da < db ? kCFCompareLessThan : kCFCompareGreaterThan;
            }
            i = ei;
            j = ej;
            continue;
        }
        if (caseless) {
            ca = ca < 0x80 && ca >= 'A' && ca <= 'Z' ? (unichar)(ca + 32) : ca;
            cb = cb < 0x80 && cb >= 'A' && cb <= 'Z' ? (unichar)(cb + 32) : cb;
        }
        if (ca != cb)
            return ca < cb ? kCFCompareLessThan : kCFCompareGreaterThan;
        i++;
        j++;
    }
    if (i < end)
        return kCFCompareGreaterThan;
    return j < bLength ? kCFCompareLessThan : kCFCompareEqualTo;
}

CFComparisonResult CFStringCompareWithOptions(CFStringRef theString1, CFStringRef theString2,
                                              CFRange rangeToCompare, CFStringCompareFlags compareOptions)
{
    if (theString1 == NULL || theString2 == NULL) {
        if (theString1 == theString2)
            return kCFCompareEqualTo;
        return theString1 == NULL ? kCFCompareLessThan : kCFCompareGreaterThan;
    }
    if (!__CFRangeIsValid(rangeToCompare, CFStringGetLength(theString1)))
        return kCFCompareLessThan;
    NSComparisonResult result;
    __CF_POOL_BEGIN
    NSRange range = NSMakeRange((NSUInteger)rangeToCompare.location, (NSUInteger)rangeToCompare.length);
    if (compareOptions & kCFCompareNumerically)
        result = (NSComparisonResult)__CFCompareNumerically(__CFStr(theString1), __CFStr(theString2), range,
                                                            (compareOptions & kCFCompareCaseInsensitive) != 0);
    else if (compareOptions & kCFCompareLocalized)
        result = [__CFStr(theString1) compare:__CFStr(theString2) options:__CFCompareOptions(compareOptions)
                                        range:range locale:[NSLocale currentLocale]];
    else
        result = [__CFStr(theString1) compare:__CFStr(theString2) options:__CFCompareOptions(compareOptions)
                                        range:range];
    __CF_POOL_END
    return (CFComparisonResult)result;
}

CFComparisonResult CFStringCompare(CFStringRef theString1, CFStringRef theString2, CFStringCompareFlags compareOptions)
{
    return CFStringCompareWithOptions(theString1, theString2, CFRangeMake(0, CFStringGetLength(theString1)),
                                      compareOptions);
}

Boolean CFStringFindWithOptions(CFStringRef theString, CFStringRef stringToFind, CFRange rangeToSearch,
                                CFStringCompareFlags searchOptions, CFRange *result)
{
    __CF_SCOPED_POOL
    if (result != NULL)
        *result = CFRangeMake(kCFNotFound, 0);
    if (theString == NULL || stringToFind == NULL || CFStringGetLength(stringToFind) == 0 ||
        !__CFRangeIsValid(rangeToSearch, CFStringGetLength(theString)))
        return false;
    NSRange found = [__CFStr(theString) rangeOfString:__CFStr(stringToFind)
                                              options:__CFCompareOptions(searchOptions)
                                                range:NSMakeRange((NSUInteger)rangeToSearch.location,
                                                                  (NSUInteger)rangeToSearch.length)];
    if (found.location == NSNotFound)
        return false;
    if (result != NULL)
        *result = CFRangeMake((CFIndex)found.location, (CFIndex)found.length);
    return true;
}

CFRange CFStringFind(CFStringRef theString, CFStringRef stringToFind, CFStringCompareFlags compareOptions)
{
    CFRange result;
    CFStringFindWithOptions(theString, stringToFind, CFRangeMake(0, CFStringGetLength(theString)), compareOptions,
                            &result);
    return result;
}

Boolean CFStringHasPrefix(CFStringRef theString, CFStringRef prefix)
{
    __CF_SCOPED_POOL
    if (theString == NULL || prefix == NULL || CFStringGetLength(prefix) == 0)
        return false;
    return [__CFStr(theString) hasPrefix:__CFStr(prefix)] ? true : false;
}

Boolean CFStringHasSuffix(CFStringRef theString, CFStringRef suffix)
{
    __CF_SCOPED_POOL
    if (theString == NULL || suffix == NULL || CFStringGetLength(suffix) == 0)
        return false;
    return [__CFStr(theString) hasSuffix:__CFStr(suffix)] ? true : false;
}

CFArrayRef CFStringCreateArrayBySeparatingStrings(CFAllocatorRef alloc, CFStringRef theString,
                                                  CFStringRef separatorString)
{
    (void)alloc;
    if (theString == NULL || separatorString == NULL || CFStringGetLength(separatorString) == 0)
        return NULL;
    CFArrayRef result;
    __CF_POOL_BEGIN
    result = (CFArrayRef)[[__CFStr(theString) componentsSeparatedByString:__CFStr(separatorString)] copy];
    __CF_POOL_END
    return result;
}

CFStringRef CFStringCreateByCombiningStrings(CFAllocatorRef alloc, CFArrayRef theArray, CFStringRef separatorString)
{
    (void)alloc;
    if (theArray == NULL || separatorString == NULL)
        return NULL;
    CFStringRef result = NULL;
    __CF_POOL_BEGIN
    @try {
        result = (CFStringRef)[[(NSArray *)theArray componentsJoinedByString:__CFStr(separatorString)] copy];
    } @catch (NSException *exception) {
        result = NULL;
    }
    __CF_POOL_END
    return result;
}

/* ---- Editing ---------------------------------------------------------- */

static void __CFStringAppendBody(CFMutableStringRef theString, CFStringRef appendedString)
{
    if (!__CFIsMutableString(theString) || appendedString == NULL)
        return;
    [(NSMutableString *)theString appendString:__CFStr(appendedString)];
}

void CFStringAppend(CFMutableStringRef theString, CFStringRef appendedString)
{
    __CF_POOL_BEGIN
    __CFStringAppendBody(theString, appendedString);
    __CF_POOL_END
}

void CFStringAppendCharacters(CFMutableStringRef theString, const UniChar *chars, CFIndex numChars)
{
    CFStringRef appended = CFStringCreateWithCharacters(NULL, chars, numChars);
    if (appended == NULL)
        return;
    CFStringAppend(theString, appended);
    CFRelease(appended);
}

void CFStringAppendCString(CFMutableStringRef theString, const char *cStr, CFStringEncoding encoding)
{
    CFStringRef appended = CFStringCreateWithCString(NULL, cStr, encoding);
    if (appended == NULL)
        return;
    CFStringAppend(theString, appended);
    CFRelease(appended);
}

void CFStringAppendPascalString(CFMutableStringRef theString, ConstStr255Param pStr, CFStringEncoding encoding)
{
    CFStringRef appended = CFStringCreateWithPascalString(NULL, pStr, encoding);
    if (appended == NULL)
        return;
    CFStringAppend(theString, appended);
    CFRelease(appended);
}

void CFStringAppendFormatAndArguments(CFMutableStringRef theString, CFDictionaryRef formatOptions, CFStringRef format,
                                      va_list arguments)
{
    if (!__CFIsMutableString(theString))
        return;
    CFStringRef appended = CFStringCreateWithFormatAndArguments(NULL, formatOptions, format, arguments);
    if (appended == NULL)
        return;
    CFStringAppend(theString, appended);
    CFRelease(appended);
}

void CFStringAppendFormat(CFMutableStringRef theString, CFDictionaryRef formatOptions, CFStringRef format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    CFStringAppendFormatAndArguments(theString, formatOptions, format, arguments);
    va_end(arguments);
}

static void __CFStringInsertBody(CFMutableStringRef str, CFIndex idx, CFStringRef insertedStr)
{
    if (!__CFIsMutableString(str) || insertedStr == NULL || idx < 0 || idx > CFStringGetLength(str))
        return;
    [(NSMutableString *)str insertString:__CFStr(insertedStr) atIndex:(NSUInteger)idx];
}

void CFStringInsert(CFMutableStringRef str, CFIndex idx, CFStringRef insertedStr)
{
    __CF_POOL_BEGIN
    __CFStringInsertBody(str, idx, insertedStr);
    __CF_POOL_END
}

static void __CFStringDeleteBody(CFMutableStringRef theString, CFRange range)
{
    if (!__CFIsMutableString(theString) || !__CFRangeIsValid(range, CFStringGetLength(theString)))
        return;
    [(NSMutableString *)theString deleteCharactersInRange:NSMakeRange((NSUInteger)range.location,
                                                                      (NSUInteger)range.length)];
}

void CFStringDelete(CFMutableStringRef theString, CFRange range)
{
    __CF_POOL_BEGIN
    __CFStringDeleteBody(theString, range);
    __CF_POOL_END
}

static void __CFStringReplaceBody(CFMutableStringRef theString, CFRange range, CFStringRef replacement)
{
    if (!__CFIsMutableString(theString) || replacement == NULL ||
        !__CFRangeIsValid(range, CFStringGetLength(theString)))
        return;
    [(NSMutableString *)theString replaceCharactersInRange:NSMakeRange((NSUInteger)range.location,
                                                                       (NSUInteger)range.length)
                                                withString:__CFStr(replacement)];
}

void CFStringReplace(CFMutableStringRef theString, CFRange range, CFStringRef replacement)
{
    __CF_POOL_BEGIN
    __CFStringReplaceBody(theString, range, replacement);
    __CF_POOL_END
}

static void __CFStringReplaceAllBody(CFMutableStringRef theString, CFStringRef replacement)
{
    if (!__CFIsMutableString(theString) || replacement == NULL)
        return;
    [(NSMutableString *)theString setString:__CFStr(replacement)];
}

void CFStringReplaceAll(CFMutableStringRef theString, CFStringRef replacement)
{
    __CF_POOL_BEGIN
    __CFStringReplaceAllBody(theString, replacement);
    __CF_POOL_END
}

static CFIndex __CFStringFindAndReplaceBody(CFMutableStringRef theString, CFStringRef stringToFind, CFStringRef replacementString,
                               CFRange rangeToSearch, CFStringCompareFlags compareOptions)
{
    if (!__CFIsMutableString(theString) || stringToFind == NULL || replacementString == NULL ||
        CFStringGetLength(stringToFind) == 0 || !__CFRangeIsValid(rangeToSearch, CFStringGetLength(theString)))
        return 0;
    NSUInteger count =
        [(NSMutableString *)theString replaceOccurrencesOfString:__CFStr(stringToFind)
                                                      withString:__CFStr(replacementString)
                                                         options:__CFCompareOptions(compareOptions)
                                                           range:NSMakeRange((NSUInteger)rangeToSearch.location,
                                                                             (NSUInteger)rangeToSearch.length)];
    return (CFIndex)count;
}

CFIndex CFStringFindAndReplace(CFMutableStringRef theString, CFStringRef stringToFind, CFStringRef replacementString,
                               CFRange rangeToSearch, CFStringCompareFlags compareOptions)
{
    CFIndex result;
    __CF_POOL_BEGIN
    result = __CFStringFindAndReplaceBody(theString, stringToFind, replacementString, rangeToSearch, compareOptions);
    __CF_POOL_END
    return result;
}

void CFStringPad(CFMutableStringRef theString, CFStringRef padString, CFIndex length, CFIndex indexIntoPad)
{
    __CF_SCOPED_POOL
    if (!__CFIsMutableString(theString) || length < 0)
        return;
    NSMutableString *string = (NSMutableString *)theString;
    CFIndex current = (CFIndex)[string length];
    if (length <= current) {
        [string deleteCharactersInRange:NSMakeRange((NSUInteger)length, (NSUInteger)(current - length))];
        return;
    }
    CFIndex padLength = CFStringGetLength(padString);
    if (padLength == 0 || indexIntoPad < 0 || indexIntoPad >= padLength)
        return;
    CFIndex needed = length - current;
    UniChar *units = malloc((size_t)needed * sizeof(UniChar));
    if (units == NULL)
        return;
    for (CFIndex i = 0; i < needed; i++)
        units[i] = CFStringGetCharacterAtIndex(padString, (indexIntoPad + i) % padLength);
    CFStringAppendCharacters(theString, units, needed);
    free(units);
}

void CFStringTrim(CFMutableStringRef theString, CFStringRef trimString)
{
    __CF_SCOPED_POOL
    if (!__CFIsMutableString(theString) || trimString == NULL || CFStringGetLength(trimString) == 0)
        return;
    NSMutableString *string = (NSMutableString *)theString;
    NSString *trim = __CFStr(trimString);
    while ([string hasPrefix:trim])
        [string deleteCharactersInRange:NSMakeRange(0, [trim length])];
    while ([string length] > 0 && [string hasSuffix:trim])
        [string deleteCharactersInRange:NSMakeRange([string length] - [trim length], [trim length])];
}

void CFStringTrimWhitespace(CFMutableStringRef theString)
{
    if (!__CFIsMutableString(theString))
        return;
    __CF_POOL_BEGIN
    NSString *trimmed = [(NSString *)theString
        stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]];
    [(NSMutableString *)theString setString:trimmed];
    __CF_POOL_END
}

static void __CFStringChangeCase(CFMutableStringRef theString, int which)
{
    if (!__CFIsMutableString(theString))
        return;
    __CF_POOL_BEGIN
    NSString *string = (NSString *)theString;
    NSString *changed = which == 0 ? [string lowercaseString]
                      : which == 1 ? [string uppercaseString]
                                   : [string capitalizedString];
    [(NSMutableString *)theString setString:changed];
    __CF_POOL_END
}

void CFStringLowercase(CFMutableStringRef theString, const void *localeTBD)
{
    (void)localeTBD;
    __CFStringChangeCase(theString, 0);
}

void CFStringUppercase(CFMutableStringRef theString, const void *localeTBD)
{
    (void)localeTBD;
    __CFStringChangeCase(theString, 1);
}

void CFStringCapitalize(CFMutableStringRef theString, const void *localeTBD)
{
    (void)localeTBD;
    __CFStringChangeCase(theString, 2);
}

/* ---- Encodings -------------------------------------------------------- */

static CFStringEncoding __CFSystemEncoding = kCFStringEncodingInvalidId;
static pthread_once_t __CFSystemEncodingOnce = PTHREAD_ONCE_INIT;

/* The codeset of the user's locale as the environment sets it (LC_ALL,
 * LC_CTYPE, LANG), whether or not the host called setlocale.  The C locale
 * and anything unknown count as UTF-8. */
static void __CFSystemEncodingInitialize(void)
{
    CFStringEncoding encoding = kCFStringEncodingInvalidId;
    locale_t locale = newlocale(LC_CTYPE_MASK, "", (locale_t)0);
    if (locale != (locale_t)0) {
        const char *codeset = nl_langinfo_l(CODESET, locale);
        if (codeset != NULL && strcmp(codeset, "ANSI_X3.4-1968") != 0)
            encoding = __CFEncodingForName(codeset);
        freelocale(locale);
    }
    if (encoding == kCFStringEncodingInvalidId || !__CFEncodingIsAvailable(encoding))
        encoding = kCFStringEncodingUTF8;
    __CFSystemEncoding = encoding;
}

CFStringEncoding CFStringGetSystemEncoding(void)
{
    pthread_once(&__CFSystemEncodingOnce, __CFSystemEncodingInitialize);
    return __CFSystemEncoding;
}

static CFStringEncoding *__CFAvailableEncodings;
static pthread_once_t __CFAvailableEncodingsOnce = PTHREAD_ONCE_INIT;

static void __CFAvailableEncodingsInitialize(void)
{
    CFIndex count;
    const __CFEncodingInfo *table = __CFEncodingTable(&count);
    CFStringEncoding *list = malloc((size_t)(count + 1) * sizeof(CFStringEncoding));
    if (list == NULL)
        return;
    CFIndex used = 0;
    for (CFIndex i = 0; i < count; i++) {
        if (__CFEncodingIsAvailable(table[i].encoding))
            list[used++] = table[i].encoding;
    }
    list[used] = kCFStringEncodingInvalidId;
    __CFAvailableEncodings = list;
}

const CFStringEncoding *CFStringGetListOfAvailableEncodings(void)
{
    pthread_once(&__CFAvailableEncodingsOnce, __CFAvailableEncodingsInitialize);
    return __CFAvailableEncodings;
}

Boolean CFStringIsEncodingAvailable(CFStringEncoding encoding)
{
    const CFStringEncoding *list = CFStringGetListOfAvailableEncodings();
    for (; list != NULL && *list != kCFStringEncodingInvalidId; list++) {
        if (*list == encoding)
            return true;
    }
    return false;
}

static Boolean __CFStringFitsEncoding(CFStringRef theString, CFStringEncoding encoding)
{
    CFIndex length = CFStringGetLength(theString);
    return CFStringGetBytes(theString, CFRangeMake(0, length), encoding, 0, false, NULL, 0, NULL) == length;
}

CFStringEncoding CFStringGetFastestEncoding(CFStringRef theString)
{
    if (theString == NULL)
        return kCFStringEncodingInvalidId;
    return __CFStringFitsEncoding(theString, kCFStringEncodingASCII) ? kCFStringEncodingASCII
                                                                      : kCFStringEncodingUnicode;
}

CFStringEncoding CFStringGetSmallestEncoding(CFStringRef theString)
{
    if (theString == NULL)
        return kCFStringEncodingInvalidId;
    if (__CFStringFitsEncoding(theString, kCFStringEncodingASCII))
        return kCFStringEncodingASCII;
    CFStringEncoding system = CFStringGetSystemEncoding();
    if (system != kCFStringEncodingUTF8 && __CFStringFitsEncoding(theString, system))
        return system;
    CFIndex length = CFStringGetLength(theString), utf8 = 0;
    CFStringGetBytes(theString, CFRangeMake(0, length), kCFStringEncodingUTF8, 0, false, NULL, 0, &utf8);
    return utf8 <= length * 2 ? kCFStringEncodingUTF8 : kCFStringEncodingUnicode;
}

/* Names handed out by Get functions are immortal strings. */
static CFStringRef __CFConstantFor(const char *text)
{
    return text != NULL ? __CFStringMakeConstantString(text) : NULL;
}

CFStringRef CFStringGetNameOfEncoding(CFStringEncoding encoding)
{
    const __CFEncodingInfo *info = __CFEncodingInfoFor(encoding);
    return info != NULL ? __CFConstantFor(info->displayName) : NULL;
}

CFStringRef CFStringConvertEncodingToIANACharSetName(CFStringEncoding encoding)
{
    const __CFEncodingInfo *info = __CFEncodingInfoFor(encoding);
    return info != NULL ? __CFConstantFor(info->ianaName) : NULL;
}

CFStringEncoding CFStringConvertIANACharSetNameToEncoding(CFStringRef theString)
{
    char name[64];
    if (!CFStringGetCString(theString, name, sizeof(name), kCFStringEncodingASCII))
        return kCFStringEncodingInvalidId;
    return __CFEncodingForName(name);
}

/* Foundation's numbers for the encodings it names; the others are the CF
 * number with the top bit set, as on the Mac. */
static const struct {
    CFStringEncoding cf;
    unsigned long ns;
} __CFNSEncodings[] = {
    {kCFStringEncodingASCII, 1},          {kCFStringEncodingNextStepLatin, 2},
    {kCFStringEncodingEUC_JP, 3},         {kCFStringEncodingUTF8, 4},
    {kCFStringEncodingISOLatin1, 5},      {kCFStringEncodingMacSymbol, 6},
    {kCFStringEncodingNonLossyASCII, 7},  {kCFStringEncodingDOSJapanese, 8},
    {kCFStringEncodingISOLatin2, 9},      {kCFStringEncodingUnicode, 10},
    {kCFStringEncodingWindowsCyrillic, 11}, {kCFStringEncodingWindowsLatin1, 12},
    {kCFStringEncodingWindowsGreek, 13},  {kCFStringEncodingWindowsLatin5, 14},
    {kCFStringEncodingWindowsLatin2, 15}, {kCFStringEncodingISO_2022_JP, 21},
    {kCFStringEncodingMacRoman, 30},
};

unsigned long CFStringConvertEncodingToNSStringEncoding(CFStringEncoding encoding)
{
    for (size_t i = 0; i < sizeof(__CFNSEncodings) / sizeof(__CFNSEncodings[0]); i++) {
        if (__CFNSEncodings[i].cf == encoding)
            return __CFNSEncodings[i].ns;
    }
    if (encoding == kCFStringEncodingInvalidId)
        return 0;
    return 0x80000000UL | encoding;
}

CFStringEncoding CFStringConvertNSStringEncodingToEncoding(unsigned long encoding)
{
    for (size_t i = 0; i < sizeof(__CFNSEncodings) / sizeof(__CFNSEncodings[0]); i++) {
        if (__CFNSEncodings[i].ns == encoding)
            return __CFNSEncodings[i].cf;
    }
    if (encoding & 0x80000000UL)
        return (CFStringEncoding)(encoding & 0x7FFFFFFFUL);
    return kCFStringEncodingInvalidId;
}

UInt32 CFStringConvertEncodingToWindowsCodepage(CFStringEncoding encoding)
{
    const __CFEncodingInfo *info = __CFEncodingInfoFor(encoding);
    return info != NULL && info->windowsCodepage != 0 ? info->windowsCodepage : kCFStringEncodingInvalidId;
}

CFStringEncoding CFStringConvertWindowsCodepageToEncoding(UInt32 codepage)
{
    CFIndex count;
    const __CFEncodingInfo *table = __CFEncodingTable(&count);
    for (CFIndex i = 0; i < count; i++) {
        if (table[i].windowsCodepage == codepage && codepage != 0)
            return table[i].encoding;
    }
    return kCFStringEncodingInvalidId;
}

CFStringEncoding CFStringGetMostCompatibleMacStringEncoding(CFStringEncoding encoding)
{
    switch (encoding) {
    case kCFStringEncodingMacRoman:
    case kCFStringEncodingASCII:
    case kCFStringEncodingISOLatin1:
    case kCFStringEncodingWindowsLatin1:
    case kCFStringEncodingISOLatin9:
    case kCFStringEncodingDOSLatin1:
        return kCFStringEncodingMacRoman;
    case kCFStringEncodingShiftJIS:
    case kCFStringEncodingDOSJapanese:
    case kCFStringEncodingEUC_JP:
    case kCFStringEncodingISO_2022_JP:
        return kCFStringEncodingMacJapanese;
    case kCFStringEncodingISOLatinCyrillic:
    case kCFStringEncodingWindowsCyrillic:
    case kCFStringEncodingKOI8_R:
    case kCFStringEncodingDOSCyrillic:
    case kCFStringEncodingDOSRussian:
        return kCFStringEncodingMacCyrillic;
    case kCFStringEncodingISOLatin2:
    case kCFStringEncodingWindowsLatin2:
    case kCFStringEncodingDOSLatin2:
        return kCFStringEncodingMacCentralEurRoman;
    default:
        return __CFEncodingInfoFor(encoding) != NULL ? encoding : kCFStringEncodingInvalidId;
    }
}

/* ---- Showing ---------------------------------------------------------- */

static void __CFShowText(CFStringRef text)
{
    CFIndex length = CFStringGetLength(text);
    CFIndex size = CFStringGetMaximumSizeForEncoding(length, kCFStringEncodingUTF8) + 1;
    char *buffer = malloc((size_t)size);
    if (buffer == NULL)
        return;
    CFIndex used = 0;
    CFStringGetBytes(text, CFRangeMake(0, length), kCFStringEncodingUTF8, '?', false, (UInt8 *)buffer, size - 1, &used);
    buffer[used] = '\0';
    fprintf(stderr, "%s\n", buffer);
    free(buffer);
}

void CFShow(CFTypeRef obj)
{
    if (obj == NULL) {
        fprintf(stderr, "(null)\n");
        return;
    }
    if (CFGetTypeID(obj) == CFStringGetTypeID()) {
        __CFShowText((CFStringRef)obj);
        return;
    }
    CFStringRef description = CFCopyDescription(obj);
    __CFShowText(description);
    if (description != NULL)
        CFRelease(description);
}

void CFShowStr(CFStringRef str)
{
    if (str == NULL) {
        fprintf(stderr, "(null)\n");
        return;
    }
    fprintf(stderr, "Length %ld\n", (long)CFStringGetLength(str));
    __CFShowText(str);
}
