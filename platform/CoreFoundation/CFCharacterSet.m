/* CFCharacterSet over NSCharacterSet. */
#include "CFInternal.h"

CFTypeID CFCharacterSetGetTypeID(void)
{
    return __kCFCharacterSetTypeID;
}

static NSCharacterSet *__CFSet(CFCharacterSetRef set)
{
    id object = (id)set;
    return [object isKindOfClass:[NSCharacterSet class]] ? (NSCharacterSet *)object : nil;
}

static NSMutableCharacterSet *__CFMutableSet(CFMutableCharacterSetRef set)
{
    id object = (id)set;
    return [object isKindOfClass:[NSMutableCharacterSet class]] ? (NSMutableCharacterSet *)object : nil;
}

/* Foundation's shared sets live as long as the process, so lending them is safe. */
CFCharacterSetRef CFCharacterSetGetPredefined(CFCharacterSetPredefinedSet theSetIdentifier)
{
    NSCharacterSet *set = nil;
    __CF_POOL_BEGIN
    switch (theSetIdentifier) {
    case kCFCharacterSetControl:
        set = [NSCharacterSet controlCharacterSet];
        break;
    case kCFCharacterSetWhitespace:
        set = [NSCharacterSet whitespaceCharacterSet];
        break;
    case kCFCharacterSetWhitespaceAndNewline:
        set = [NSCharacterSet whitespaceAndNewlineCharacterSet];
        break;
    case kCFCharacterSetDecimalDigit:
        set = [NSCharacterSet decimalDigitCharacterSet];
        break;
    case kCFCharacterSetLetter:
        set = [NSCharacterSet letterCharacterSet];
        break;
    case kCFCharacterSetLowercaseLetter:
        set = [NSCharacterSet lowercaseLetterCharacterSet];
        break;
    case kCFCharacterSetUppercaseLetter:
        set = [NSCharacterSet uppercaseLetterCharacterSet];
        break;
    case kCFCharacterSetNonBase:
        set = [NSCharacterSet nonBaseCharacterSet];
        break;
    case kCFCharacterSetDecomposable:
        set = [NSCharacterSet decomposableCharacterSet];
        break;
    case kCFCharacterSetAlphaNumeric:
        set = [NSCharacterSet alphanumericCharacterSet];
        break;
    case kCFCharacterSetPunctuation:
        set = [NSCharacterSet punctuationCharacterSet];
        break;
    case kCFCharacterSetIllegal:
        set = [NSCharacterSet illegalCharacterSet];
        break;
    case kCFCharacterSetCapitalizedLetter:
        set = [NSCharacterSet capitalizedLetterCharacterSet];
        break;
    case kCFCharacterSetSymbol:
        set = [NSCharacterSet symbolCharacterSet];
        break;
    case kCFCharacterSetNewline:
        set = [NSCharacterSet newlineCharacterSet];
        break;
    default:
        set = nil;
        break;
    }
    __CF_POOL_END
    return (CFCharacterSetRef)set;
}

static BOOL __CFRangeIsUnicode(CFRange range)
{
    return range.location >= 0 && range.length >= 0 && range.location <= 0x10FFFF &&
           range.length <= 0x110000 - range.location;
}

CFCharacterSetRef CFCharacterSetCreateWithCharactersInRange(CFAllocatorRef alloc, CFRange theRange)
{
    (void)alloc;
    if (!__CFRangeIsUnicode(theRange))
        return NULL;
    CFCharacterSetRef result;
    __CF_POOL_BEGIN
    NSRange range = NSMakeRange((NSUInteger)theRange.location, (NSUInteger)theRange.length);
    result = (CFCharacterSetRef)[[NSCharacterSet characterSetWithRange:range] copy];
    __CF_POOL_END
    return result;
}

CFCharacterSetRef CFCharacterSetCreateWithCharactersInString(CFAllocatorRef alloc, CFStringRef theString)
{
    (void)alloc;
    if (theString == NULL)
        return NULL;
    CFCharacterSetRef result;
    __CF_POOL_BEGIN
    result = (CFCharacterSetRef)[[NSCharacterSet characterSetWithCharactersInString:(NSString *)theString] copy];
    __CF_POOL_END
    return result;
}

CFCharacterSetRef CFCharacterSetCreateWithBitmapRepresentation(CFAllocatorRef alloc, CFDataRef theData)
{
    (void)alloc;
    CFCharacterSetRef result;
    __CF_POOL_BEGIN
    NSData *data = theData != NULL ? (NSData *)theData : [NSData data];
    result = (CFCharacterSetRef)[[NSCharacterSet characterSetWithBitmapRepresentation:data] copy];
    __CF_POOL_END
    return result;
}

CFCharacterSetRef CFCharacterSetCreateInvertedSet(CFAllocatorRef alloc, CFCharacterSetRef theSet)
{
    (void)alloc;
    NSCharacterSet *set = __CFSet(theSet);
    if (set == nil)
        return NULL;
    CFCharacterSetRef result;
    __CF_POOL_BEGIN
    result = (CFCharacterSetRef)[[set invertedSet] copy];
    __CF_POOL_END
    return result;
}

CFCharacterSetRef CFCharacterSetCreateCopy(CFAllocatorRef alloc, CFCharacterSetRef theSet)
{
    __CF_SCOPED_POOL
    (void)alloc;
    NSCharacterSet *set = __CFSet(theSet);
    return set != nil ? (CFCharacterSetRef)[set copy] : NULL;
}

CFMutableCharacterSetRef CFCharacterSetCreateMutable(CFAllocatorRef alloc)
{
    __CF_SCOPED_POOL
    (void)alloc;
    return (CFMutableCharacterSetRef)[[NSMutableCharacterSet alloc] init];
}

CFMutableCharacterSetRef CFCharacterSetCreateMutableCopy(CFAllocatorRef alloc, CFCharacterSetRef theSet)
{
    __CF_SCOPED_POOL
    (void)alloc;
    NSCharacterSet *set = __CFSet(theSet);
    return set != nil ? (CFMutableCharacterSetRef)[set mutableCopy] : NULL;
}

Boolean CFCharacterSetIsCharacterMember(CFCharacterSetRef theSet, UniChar theChar)
{
    NSCharacterSet *set = __CFSet(theSet);
    return set != nil && [set characterIsMember:theChar];
}

Boolean CFCharacterSetIsLongCharacterMember(CFCharacterSetRef theSet, UTF32Char theChar)
{
    NSCharacterSet *set = __CFSet(theSet);
    return set != nil && theChar <= 0x10FFFF && [set longCharacterIsMember:theChar];
}

Boolean CFCharacterSetIsSupersetOfSet(CFCharacterSetRef theSet, CFCharacterSetRef theOtherset)
{
    NSCharacterSet *set = __CFSet(theSet), *other = __CFSet(theOtherset);
    if (set == nil || other == nil)
        return false;
    Boolean result;
    __CF_POOL_BEGIN
    result = [set isSupersetOfSet:other] ? true : false;
    __CF_POOL_END
    return result;
}

void CFCharacterSetAddCharactersInRange(CFMutableCharacterSetRef theSet, CFRange theRange)
{
    NSMutableCharacterSet *set = __CFMutableSet(theSet);
    if (set == nil || !__CFRangeIsUnicode(theRange))
        return;
    __CF_POOL_BEGIN
    [set addCharactersInRange:NSMakeRange((NSUInteger)theRange.location, (NSUInteger)theRange.length)];
    __CF_POOL_END
}

void CFCharacterSetRemoveCharactersInRange(CFMutableCharacterSetRef theSet, CFRange theRange)
{
    NSMutableCharacterSet *set = __CFMutableSet(theSet);
    if (set == nil || !__CFRangeIsUnicode(theRange))
        return;
    __CF_POOL_BEGIN
    [set removeCharactersInRange:NSMakeRange((NSUInteger)theRange.location, (NSUInteger)theRange.length)];
    __CF_POOL_END
}

void CFCharacterSetAddCharactersInString(CFMutableCharacterSetRef theSet, CFStringRef theString)
{
    NSMutableCharacterSet *set = __CFMutableSet(theSet);
    if (set == nil || theString == NULL)
        return;
    __CF_POOL_BEGIN
    [set addCharactersInString:(NSString *)theString];
    __CF_POOL_END
}

void CFCharacterSetRemoveCharactersInString(CFMutableCharacterSetRef theSet, CFStringRef theString)
{
    NSMutableCharacterSet *set = __CFMutableSet(theSet);
    if (set == nil || theString == NULL)
        return;
    __CF_POOL_BEGIN
    [set removeCharactersInString:(NSString *)theString];
    __CF_POOL_END
}

void CFCharacterSetUnion(CFMutableCharacterSetRef theSet, CFCharacterSetRef theOtherSet)
{
    NSMutableCharacterSet *set = __CFMutableSet(theSet);
    NSCharacterSet *other = __CFSet(theOtherSet);
    if (set == nil || other == nil)
        return;
    __CF_POOL_BEGIN
    [set formUnionWithCharacterSet:other];
    __CF_POOL_END
}

void CFCharacterSetIntersect(CFMutableCharacterSetRef theSet, CFCharacterSetRef theOtherSet)
{
    NSMutableCharacterSet *set = __CFMutableSet(theSet);
    NSCharacterSet *other = __CFSet(theOtherSet);
    if (set == nil || other == nil)
        return;
    __CF_POOL_BEGIN
    [set formIntersectionWithCharacterSet:other];
    __CF_POOL_END
}

void CFCharacterSetInvert(CFMutableCharacterSetRef theSet)
{
    NSMutableCharacterSet *set = __CFMutableSet(theSet);
    if (set == nil)
        return;
    __CF_POOL_BEGIN
    [set invert];
    __CF_POOL_END
}
