/* CFStringCreateWithFormat's formatter.  Foundation's formatter differs from
 * CF's in the corners Mac code sees: a NULL %p reads "0x0", a NULL %s reads
 * "(null)" without padding, a NaN never carries a sign, %n stores nothing
 * and an unknown conversion is dropped.  So the format is walked here: a
 * first pass learns the type of every argument (positional "%2$@" ones
 * included), the arguments are fetched in order, then each conversion is
 * printed with the C library, %@ with the object's description. */
#include "CFInternal.h"
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

enum { __CFFormatMaxArguments = 64 };

typedef enum {
    __CFArgNone = 0,
    __CFArgInt,
    __CFArgLong,
    __CFArgLongLong,
    __CFArgDouble,
    __CFArgLongDouble,
    __CFArgPointer,
    __CFArgObject
} __CFArgKind;

typedef struct {
    __CFArgKind kind;
    union {
        int i;
        long l;
        long long ll;
        double d;
        long double ld;
        const void *p;
    } value;
} __CFArgument;

/* One conversion as parsed from the format. */
typedef struct {
    char flags[8];
    int width;           /* -1 when absent */
    int widthArgument;   /* argument index of a '*' width, or -1 */
    int precision;       /* -1 when absent */
    int precisionArgument;
    char length[3];      /* "", "h", "hh", "l", "ll", "L", "q", "z", "t", "j" */
    UniChar conversion;  /* 0 for an unknown one, which is dropped */
    int argument;        /* argument index of the value, or -1 */
} __CFConversion;

static BOOL __CFIsDigit(UniChar c)
{
    return c >= '0' && c <= '9';
}

/* Reads a decimal number at *i; -1 when there is none. */
static int __CFReadNumber(const UniChar *format, CFIndex length, CFIndex *i)
{
    if (*i >= length || !__CFIsDigit(format[*i]))
        return -1;
    int value = 0;
    while (*i < length && __CFIsDigit(format[*i])) {
        if (value < 100000)
            value = value * 10 + (format[*i] - '0');
        (*i)++;
    }
    return value;
}

/* "n$" after a number: an explicit argument position (1-based). */
static int __CFReadPosition(const UniChar *format, CFIndex length, CFIndex *i)
{
    CFIndex start = *i;
    int number = __CFReadNumber(format, length, i);
    if (number > 0 && *i < length && format[*i] == '$') {
        (*i)++;
        return number;
    }
    *i = start;
    return 0;
}

static __CFArgKind __CFKindFor(UniChar conversion, const char *length)
{
    switch (conversion) {
    case 'd':
    case 'i':
    case 'o':
    case 'u':
    case 'x':
    case 'X':
    case 'c':
    case 'C':
        if (strcmp(length, "ll") == 0 || strcmp(length, "q") == 0 || strcmp(length, "j") == 0)
            return __CFArgLongLong;
        if (strcmp(length, "l") == 0 || strcmp(length, "z") == 0 || strcmp(length, "t") == 0)
            return __CFArgLong;
        return __CFArgInt;
    case 'D':
    case 'O':
    case 'U':
        return __CFArgLong;
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
        return strcmp(length, "L") == 0 ? __CFArgLongDouble : __CFArgDouble;
    case 's':
    case 'S':
    case 'p':
    case 'n':
        return __CFArgPointer;
    case '@':
        return __CFArgObject;
    default:
        return __CFArgNone;
    }
}

static BOOL __CFClaimArgument(__CFArgument *arguments, int index, __CFArgKind kind, int *count)
{
    if (index < 0 || index >= __CFFormatMaxArguments)
        return NO;
    if (arguments[index].kind == __CFArgNone)
        arguments[index].kind = kind;
    if (index + 1 > *count)
        *count = index + 1;
    return YES;
}

/* Parses the conversion after a '%' at *i; NO when the format is unusable. */
static BOOL __CFParseConversion(const UniChar *format, CFIndex length, CFIndex *i, int *next,
                                __CFArgument *arguments, int *count, __CFConversion *out)
{
    memset(out, 0, sizeof(*out));
    out->width = out->precision = -1;
    out->widthArgument = out->precisionArgument = out->argument = -1;
    int position = __CFReadPosition(format, length, i);
    size_t flagCount = 0;
    while (*i < length && strchr("-+ #0'", (int)format[*i]) != NULL && format[*i] != 0) {
        if (flagCount + 1 < sizeof(out->flags) && format[*i] != '\'')
            out->flags[flagCount++] = (char)format[*i];
        (*i)++;
    }
    if (*i < length && format[*i] == '*') {
        (*i)++;
        int widthPosition = __CFReadPosition(format, length, i);
        out->widthArgument = widthPosition > 0 ? widthPosition - 1 : (*next)++;
        if (!__CFClaimArgument(arguments, out->widthArgument, __CFArgInt, count))
            return NO;
    } else {
        out->width = __CFReadNumber(format, length, i);
    }
    if (*i < length && format[*i] == '.') {
        (*i)++;
        if (*i < length && format[*i] == '*') {
            (*i)++;
            int precisionPosition = __CFReadPosition(format, length, i);
            out->precisionArgument = precisionPosition > 0 ? precisionPosition - 1 : (*next)++;
            if (!__CFClaimArgument(arguments, out->precisionArgument, __CFArgInt, count))
                return NO;
        } else {
            out->precision = __CFReadNumber(format, length, i);
            if (out->precision < 0)
                out->precision = 0;
        }
    }
    size_t lengthCount = 0;
    while (*i < length && strchr("hlLqztj", (int)format[*i]) != NULL && format[*i] != 0 && lengthCount < 2)
        out->length[lengthCount++] = (char)format[(*i)++];
    if (*i >= length)
        return YES; /* a lone '%' at the end prints nothing */
    UniChar conversion = format[(*i)++];
    if (conversion == '%') {
        out->conversion = '%';
        return YES;
    }
    __CFArgKind kind = __CFKindFor(conversion, out->length);
    if (kind == __CFArgNone)
        return YES; /* unknown conversions are dropped */
    out->conversion = conversion;
    out->argument = position > 0 ? position - 1 : (*next)++;
    return __CFClaimArgument(arguments, out->argument, kind, count);
}

static void __CFFetchArguments(__CFArgument *arguments, int count, va_list list)
{
    for (int k = 0; k < count; k++) {
        switch (arguments[k].kind) {
        case __CFArgLong:
            arguments[k].value.l = va_arg(list, long);
            break;
        case __CFArgLongLong:
            arguments[k].value.ll = va_arg(list, long long);
            break;
        case __CFArgDouble:
            arguments[k].value.d = va_arg(list, double);
            break;
        case __CFArgLongDouble:
            arguments[k].value.ld = va_arg(list, long double);
            break;
        case __CFArgPointer:
        case __CFArgObject:
            arguments[k].value.p = va_arg(list, const void *);
            break;
        default:
            /* A gap in the positions is read as an int, as the C library does. */
            arguments[k].value.i = va_arg(list, int);
            break;
        }
    }
}

/* Pads text to the conversion's width, on the left unless '-' was given. */
static void __CFAppendPadded(NSMutableString *output, NSString *text, const __CFConversion *c, int width)
{
    NSUInteger length = [text length];
    NSUInteger pad = width > 0 && (NSUInteger)width > length ? (NSUInteger)width - length : 0;
    BOOL left = strchr(c->flags, '-') != NULL;
    if (left)
        [output appendString:text];
    for (NSUInteger k = 0; k < pad; k++)
        [output appendString:@" "];
    if (!left)
        [output appendString:text];
}

static NSString *__CFStringFromCString(const char *text)
{
    NSString *string = [[[NSString alloc] initWithUTF8String:text] autorelease];
    if (string == nil)
        string = [[[NSString alloc] initWithCString:text encoding:NSISOLatin1StringEncoding] autorelease];
    return string != nil ? string : @"";
}

/* Prints one C conversion with snprintf into a string. */
static NSString *__CFPrintC(const __CFConversion *c, int width, int precision, const __CFArgument *argument)
{
    char directive[32];
    int n = snprintf(directive, sizeof(directive), "%%%s", c->flags);
    if (width >= 0)
        n += snprintf(directive + n, sizeof(directive) - (size_t)n, "%d", width);
    if (precision >= 0)
        n += snprintf(directive + n, sizeof(directive) - (size_t)n, ".%d", precision);
    UniChar conversion = c->conversion;
    const char *length = "";
    switch (argument->kind) {
    case __CFArgLong:
        length = "l";
        break;
    case __CFArgLongLong:
        length = "ll";
        break;
    case __CFArgLongDouble:
        length = "L";
        break;
    default:
        break;
    }
    if (conversion == 'D' || conversion == 'O' || conversion == 'U')
        conversion = conversion - 'A' + 'a';
    else if (argument->kind == __CFArgInt && c->length[0] == 'h')
        length = c->length; /* h and hh narrow the value as the C library does */
    snprintf(directive + n, sizeof(directive) - (size_t)n, "%s%c", length, (char)conversion);

    char stack[128];
    char *buffer = stack;
    int needed = 0;
    for (int pass = 0; pass < 2; pass++) {
        size_t size = buffer == stack ? sizeof(stack) : (size_t)needed + 1;
        switch (argument->kind) {
        case __CFArgLong:
            needed = snprintf(buffer, size, directive, argument->value.l);
            break;
        case __CFArgLongLong:
            needed = snprintf(buffer, size, directive, argument->value.ll);
            break;
        case __CFArgDouble:
            needed = snprintf(buffer, size, directive, argument->value.d);
            break;
        case __CFArgLongDouble:
            needed = snprintf(buffer, size, directive, argument->value.ld);
            break;
        case __CFArgPointer:
            needed = snprintf(buffer, size, directive, argument->value.p);
            break;
        default:
            needed = snprintf(buffer, size, directive, argument->value.i);
            break;
        }
        if (needed < 0)
            return @"";
        if ((size_t)needed < size || pass == 1)
            break;
        buffer = malloc((size_t)needed + 1);
        if (buffer == NULL)
            return @"";
    }
    NSString *result = __CFStringFromCString(buffer);
    if (buffer != stack)
        free(buffer);
    return result;
}

static NSString *__CFNaNText(UniChar conversion)
{
    return (conversion >= 'A' && conversion <= 'Z') ? @"NAN" : @"nan";
}

static NSString *__CFUniCharsText(const UniChar *chars, int precision)
{
    NSUInteger length = 0;
    while (chars[length] != 0 && (precision < 0 || length < (NSUInteger)precision))
        length++;
    return [NSString stringWithCharacters:chars length:length];
}

static void __CFAppendConversion(NSMutableString *output, const __CFConversion *c, const __CFArgument *arguments)
{
    int width = c->widthArgument >= 0 ? arguments[c->widthArgument].value.i : c->width;
    int precision = c->precisionArgument >= 0 ? arguments[c->precisionArgument].value.i : c->precision;
    __CFConversion adjusted = *c;
    if (width < 0 && c->widthArgument >= 0) {
        /* A negative '*' width means left adjustment. */
        size_t flags = strlen(adjusted.flags);
        if (flags + 1 < sizeof(adjusted.flags))
            adjusted.flags[flags] = '-';
        width = -width;
    }
    const __CFArgument *argument = &arguments[c->argument];
    switch (c->conversion) {
    case '%':
        [output appendString:@"%"];
        return;
    case 'n':
        return; /* never stores a count */
    case '@': {
        id object = (id)argument->value.p;
        NSString *text = object == nil ? @"(null)" : [object description];
        if (precision >= 0 && [text length] > (NSUInteger)precision)
            text = [text substringToIndex:(NSUInteger)precision];
        __CFAppendPadded(output, text != nil ? text : @"(null)", &adjusted, width);
        return;
    }
    case 's':
        if (argument->value.p == NULL) {
            [output appendString:@"(null)"];
            return;
        }
        if (strcmp(c->length, "l") == 0) {
            NSString *text = [[[NSString alloc] initWithBytes:argument->value.p
                                                       length:wcslen(argument->value.p) * sizeof(wchar_t)
                                                     encoding:NSUTF32LittleEndianStringEncoding] autorelease];
            __CFAppendPadded(output, text != nil ? text : @"", &adjusted, width);
            return;
        }
        [output appendString:__CFPrintC(&adjusted, width, precision, argument)];
        return;
    case 'S':
        if (argument->value.p == NULL) {
            [output appendString:@"(null)"];
            return;
        }
        __CFAppendPadded(output, __CFUniCharsText(argument->value.p, precision), &adjusted, width);
        return;
    case 'C': {
        UniChar unit = (UniChar)argument->value.i;
        __CFAppendPadded(output, [NSString stringWithCharacters:&unit length:1], &adjusted, width);
        return;
    }
    case 'c':
        if ((unsigned)argument->value.i >= 0x80) {
            unichar unit = (unsigned char)argument->value.i;
            __CFAppendPadded(output, [NSString stringWithCharacters:&unit length:1], &adjusted, width);
            return;
        }
        break;
    case 'p':
        if (argument->value.p == NULL) {
            __CFAppendPadded(output, @"0x0", &adjusted, width);
            return;
        }
        break;
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
    case 'a':
    case 'A': {
        BOOL isNaN = argument->kind == __CFArgLongDouble ? isnan(argument->value.ld) : isnan(argument->value.d);
        if (isNaN) {
            __CFAppendPadded(output, __CFNaNText(c->conversion), &adjusted, width);
            return;
        }
        break;
    }
    default:
        break;
    }
    [output appendString:__CFPrintC(&adjusted, width, precision, argument)];
}

/* The formatted text, autoreleased; nil when the format cannot be used. */
static NSString *__CFFormat(NSString *format, va_list list)
{
    CFIndex length = (CFIndex)[format length];
    UniChar *units = malloc(((size_t)length + 1) * sizeof(UniChar));
    if (units == NULL)
        return nil;
    [format getCharacters:units range:NSMakeRange(0, (NSUInteger)length)];

    /* First pass: the conversions and the type of every argument. */
    __CFArgument arguments[__CFFormatMaxArguments];
    memset(arguments, 0, sizeof(arguments));
    NSUInteger capacity = 8, conversionCount = 0;
    __CFConversion *conversions = malloc(capacity * sizeof(__CFConversion));
    CFIndex *starts = malloc(capacity * sizeof(CFIndex));
    CFIndex *ends = malloc(capacity * sizeof(CFIndex));
    int next = 0, count = 0;
    BOOL ok = conversions != NULL && starts != NULL && ends != NULL;
    for (CFIndex i = 0; ok && i < length; i++) {
        if (units[i] != '%')
            continue;
        if (conversionCount == capacity) {
            capacity *= 2;
            __CFConversion *moreConversions = realloc(conversions, capacity * sizeof(__CFConversion));
            if (moreConversions != NULL)
                conversions = moreConversions;
            CFIndex *moreStarts = realloc(starts, capacity * sizeof(CFIndex));
            if (moreStarts != NULL)
                starts = moreStarts;
            CFIndex *moreEnds = realloc(ends, capacity * sizeof(CFIndex));
            if (moreEnds != NULL)
                ends = moreEnds;
            ok = moreConversions != NULL && moreStarts != NULL && moreEnds != NULL;
            if (!ok)
                break;
        }
        starts[conversionCount] = i;
        CFIndex cursor = i + 1;
        ok = __CFParseConversion(units, length, &cursor, &next, arguments, &count, &conversions[conversionCount]);
        ends[conversionCount++] = cursor;
        i = cursor - 1;
    }

    NSMutableString *output = nil;
    if (ok) {
        va_list copy;
        va_copy(copy, list);
        __CFFetchArguments(arguments, count, copy);
        va_end(copy);
        output = [NSMutableString stringWithCapacity:(NSUInteger)length];
        CFIndex written = 0;
        for (NSUInteger k = 0; k < conversionCount; k++) {
            if (starts[k] > written)
                [output appendString:[NSString stringWithCharacters:units + written
                                                             length:(NSUInteger)(starts[k] - written)]];
            if (conversions[k].conversion != 0)
                __CFAppendConversion(output, &conversions[k], arguments);
            written = ends[k];
        }
        if (length > written)
            [output appendString:[NSString stringWithCharacters:units + written length:(NSUInteger)(length - written)]];
    }
    free(conversions);
    free(starts);
    free(ends);
    free(units);
    return output;
}

CFStringRef CFStringCreateWithFormatAndArguments(CFAllocatorRef alloc, CFDictionaryRef formatOptions,
                                                 CFStringRef format, va_list arguments)
{
    (void)alloc;
    (void)formatOptions;
    if (format == NULL)
        return NULL;
    CFStringRef result = NULL;
    __CF_POOL_BEGIN
    @try {
        NSString *text = __CFFormat((NSString *)format, arguments);
        result = text != nil ? (CFStringRef)[text copy] : NULL;
    } @catch (NSException *exception) {
        result = NULL;
    }
    __CF_POOL_END
    return result;
}

CFStringRef CFStringCreateWithFormat(CFAllocatorRef alloc, CFDictionaryRef formatOptions, CFStringRef format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    CFStringRef result = CFStringCreateWithFormatAndArguments(alloc, formatOptions, format, arguments);
    va_end(arguments);
    return result;
}
