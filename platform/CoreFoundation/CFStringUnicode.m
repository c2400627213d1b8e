/* The Unicode side of CFString: searching for characters of a set, line
 * and paragraph bounds, normalization and folding. */
#include "CFInternal.h"

static BOOL __CFRangeInString(CFStringRef string, CFRange range)
{
    CFIndex length = CFStringGetLength(string);
    return range.location >= 0 && range.length >= 0 && range.location <= length &&
           range.length <= length - range.location;
}

static BOOL __CFIsMutable(CFMutableStringRef string)
{
    return string != NULL && [(id)string isKindOfClass:[NSMutableString class]];
}

/* The character (a whole surrogate pair when there is one) at index, and its width. */
static UTF32Char __CFLongCharacterAt(CFStringRef string, CFIndex index, CFIndex length, CFIndex *width)
{
    UniChar unit = CFStringGetCharacterAtIndex(string, index);
    *width = 1;
    if (CFStringIsSurrogateHighCharacter(unit) && index + 1 < length) {
        UniChar low = CFStringGetCharacterAtIndex(string, index + 1);
        if (CFStringIsSurrogateLowCharacter(low)) {
            *width = 2;
            return CFStringGetLongCharacterForSurrogatePair(unit, low);
        }
    }
    return unit;
}

/* Walked here rather than by Foundation, which ignores the anchored option
 * for character sets. */
Boolean CFStringFindCharacterFromSet(CFStringRef theString, CFCharacterSetRef theSet, CFRange rangeToSearch,
                                     CFStringCompareFlags searchOptions, CFRange *result)
{
    if (theString == NULL || theSet == NULL || !__CFRangeInString(theString, rangeToSearch) ||
        ![(id)theSet isKindOfClass:[NSCharacterSet class]])
        return false;
    BOOL backwards = (searchOptions & kCFCompareBackwards) != 0;
    BOOL anchored = (searchOptions & kCFCompareAnchored) != 0;
    CFIndex start = rangeToSearch.location, end = rangeToSearch.location + rangeToSearch.length;
    CFIndex length = CFStringGetLength(theString);
    CFIndex i = backwards ? end - 1 : start;
    while (i >= start && i < end) {
        CFIndex at = i, width;
        /* Going backwards, a low surrogate belongs to the pair before it. */
        if (backwards && i > start && CFStringIsSurrogateLowCharacter(CFStringGetCharacterAtIndex(theString, i)) &&
            CFStringIsSurrogateHighCharacter(CFStringGetCharacterAtIndex(theString, i - 1)))
            at = i - 1;
        UTF32Char character = __CFLongCharacterAt(theString, at, at + 2 <= end ? length : end, &width);
        if (CFCharacterSetIsLongCharacterMember(theSet, character)) {
            if (result != NULL)
                *result = CFRangeMake(at, width);
            return true;
        }
        if (anchored)
            break;
        i = backwards ? at - 1 : at + width;
    }
    return false;
}

/* The bounds of the lines or paragraphs that range touches. */
static void __CFStringGetBounds(CFStringRef string, CFRange range, BOOL paragraphs, CFIndex *begin, CFIndex *end,
                                CFIndex *contentsEnd)
{
    if (string == NULL || !__CFRangeInString(string, range))
        return;
    NSUInteger start = 0, stop = 0, contents = 0;
    NSRange nsRange = NSMakeRange((NSUInteger)range.location, (NSUInteger)range.length);
    __CF_POOL_BEGIN
    if (paragraphs)
        [(NSString *)string getParagraphStart:&start end:&stop contentsEnd:&contents forRange:nsRange];
    else
        [(NSString *)string getLineStart:&start end:&stop contentsEnd:&contents forRange:nsRange];
    __CF_POOL_END
    if (begin != NULL)
        *begin = (CFIndex)start;
    if (end != NULL)
        *end = (CFIndex)stop;
    if (contentsEnd != NULL)
        *contentsEnd = (CFIndex)contents;
}

void CFStringGetLineBounds(CFStringRef theString, CFRange range, CFIndex *lineBeginIndex, CFIndex *lineEndIndex,
                           CFIndex *contentsEndIndex)
{
    __CFStringGetBounds(theString, range, NO, lineBeginIndex, lineEndIndex, contentsEndIndex);
}

void CFStringGetParagraphBounds(CFStringRef string, CFRange range, CFIndex *parBeginIndex, CFIndex *parEndIndex,
                                CFIndex *contentsEndIndex)
{
    __CFStringGetBounds(string, range, YES, parBeginIndex, parEndIndex, contentsEndIndex);
}

void CFStringNormalize(CFMutableStringRef theString, CFStringNormalizationForm theForm)
{
    if (!__CFIsMutable(theString))
        return;
    __CF_POOL_BEGIN
    NSString *string = (NSString *)theString;
    NSString *normal = nil;
    switch (theForm) {
    case kCFStringNormalizationFormD:
        normal = [string decomposedStringWithCanonicalMapping];
        break;
    case kCFStringNormalizationFormKD:
        normal = [string decomposedStringWithCompatibilityMapping];
        break;
    case kCFStringNormalizationFormC:
        normal = [string precomposedStringWithCanonicalMapping];
        break;
    case kCFStringNormalizationFormKC:
        normal = [string precomposedStringWithCompatibilityMapping];
        break;
    default:
        break;
    }
    /* Foundation calls canonically equivalent strings equal: always replace. */
    if (normal != nil)
        [(NSMutableString *)theString setString:normal];
    __CF_POOL_END
}

/* Full-width ASCII forms (U+FF01-U+FF5E) and the ideographic space. */
static unichar __CFNarrow(unichar c)
{
    if (c >= 0xFF01 && c <= 0xFF5E)
        return (unichar)(c - 0xFF01 + 0x21);
    if (c == 0x3000)
        return ' ';
    return c;
}

void CFStringFold(CFMutableStringRef theString, CFStringCompareFlags theFlags, CFLocaleRef theLocale)
{
    (void)theLocale;
    if (!__CFIsMutable(theString))
        return;
    __CF_POOL_BEGIN
    NSString *text = [[(NSString *)theString copy] autorelease];
    if (theFlags & kCFCompareCaseInsensitive)
        text = [text lowercaseString];
    if (theFlags & kCFCompareDiacriticInsensitive) {
        /* Decompose, drop the combining marks, compose what is left. */
        NSString *decomposed = [text decomposedStringWithCanonicalMapping];
        NSCharacterSet *marks = [NSCharacterSet nonBaseCharacterSet];
        NSMutableString *plain = [NSMutableString stringWithCapacity:[decomposed length]];
        NSUInteger length = [decomposed length];
        for (NSUInteger i = 0; i < length; i++) {
            unichar c = [decomposed characterAtIndex:i];
            if (![marks characterIsMember:c])
                [plain appendFormat:@"%C", c];
        }
        text = [plain precomposedStringWithCanonicalMapping];
    }
    if (theFlags & kCFCompareWidthInsensitive) {
        NSUInteger length = [text length];
        unichar *units = malloc((length ? length : 1) * sizeof(unichar));
        if (units != NULL) {
            [text getCharacters:units range:NSMakeRange(0, length)];
            for (NSUInteger i = 0; i < length; i++)
                units[i] = __CFNarrow(units[i]);
            text = [NSString stringWithCharacters:units length:length];
            free(units);
        }
    }
    [(NSMutableString *)theString setString:text];
    __CF_POOL_END
}
