/* NSString(FoundationXText) and NSMutableString(FoundationXText). */
#import <KORU/NSString+FoundationXText.h>
#import <KORU/NSString+FoundationX.h>
#import <KORU/NSData+FoundationX.h>

#import "FoundationXSupport.h"

#include <KORU/MemoryCipher.h>

#include <ctype.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

NSString *const NO_SUCH_STRING_OF_KEY = @"-N-O- -S-U-C-H- -S-T-R-I-N-G- -O-F- -K-E-Y-!-";

/* The UTF-8 form, or NULL when the text has none: GNUstep raises for a lone
 * surrogate where Cocoa answers NULL. */
static const char *UTF8Form(NSString *text)
{
    @try {
        return [text UTF8String];
    } @catch (NSException *exception) {
        return NULL;
    }
}

/* rangeOfString:options:range: with an empty string never found, as Cocoa
 * answers.  GNUstep finds "" at the start of the range (at its end when
 * searching backwards), which would make every text contain it and
 * find:andReplaceAll: insert the replacement forever. */
static NSRange FindString(NSString *text, NSString *string, NSStringCompareOptions options, NSRange range)
{
    if ([string length] == 0)
        return NSMakeRange(NSNotFound, 0);
    return [text rangeOfString:string options:options range:range];
}

/* A mutable copy that keeps every UTF-16 unit.  GNUstep's mutableCopy and
 * stringWithString: answer an empty string for text holding half of a
 * surrogate pair, which any cut inside a pair leaves behind; appending
 * copies the units as they are. */
static NSMutableString *MutableCopy(NSString *text)
{
    NSMutableString *copy = [NSMutableString stringWithCapacity:[text length]];
    [copy appendString:text];
    return copy;
}

/* Whether the path holds a NUL character, where the file system would cut
 * it short and so take it for another item. */
static BOOL HoldsNul(NSString *path)
{
    return [path rangeOfCharacterFromSet:[NSCharacterSet characterSetWithRange:NSMakeRange(0, 1)]].location !=
           NSNotFound;
}

static NSRange WholeRange(NSString *text)
{
    return NSMakeRange(0, [text length]);
}

/* The first table, then, when further is given, each table from it up to a
 * nil entry: the first lookup that finds the key. */
static NSString *LocalizeThroughTables(NSString *key, NSBundle *bundle, NSString *value, NSString *table,
                                       va_list *further)
{
    for (;;) {
        NSString *found = [key localize:bundle table:table value:NO_SUCH_STRING_OF_KEY];
        if (found != nil && ![found isEqualToString:NO_SUCH_STRING_OF_KEY])
            return found;
        if (further == NULL || (table = va_arg(*further, NSString *)) == nil)
            break;
    }
    return value != nil ? value : @"";
}

static int HexDigitValue(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    return (digit | 0x20) - 'a' + 10; /* the caller has checked it is a digit */
}

static BOOL IsDecimalDigit(unichar character)
{
    return character >= '0' && character <= '9';
}

@implementation NSString (FoundationXText)

- (id)initWithTextFile:(NSString *)path encoding:(NSStringEncoding)encoding
{
    static const char method[] = "-[NSString(FoundationX) initWithTextFile:encoding:]";
    if (![path isKindOfClass:[NSString class]] || ![path exists]) {
        KORULogFailure(method, 31);
        [self release];
        return nil;
    }
    // Read as given, like every NSData path: a tilde only counts for the
    // existence test above.
    NSData *data = [[NSData alloc] initWithContentsOfFile:path];
    if (data == nil) {
        KORULogFailure(method, 32);
        [self release];
        return nil;
    }
    id result = [self initWithData:data encoding:encoding];
    [data release];
    if (result == nil)
        KORULogFailure(method, 33);
    return result;
}

+ (id)stringWithTextFile:(NSString *)path encoding:(NSStringEncoding)encoding
{
    return [[[self alloc] initWithTextFile:path encoding:encoding] autorelease];
}

- (BOOL)writeAsTextFile:(NSString *)path
               encoding:(NSStringEncoding)encoding
   allowLossyConversion:(BOOL)lossy
             atomically:(BOOL)atomically
{
    if (![path isKindOfClass:[NSString class]] || HoldsNul(path))
        return NO;
    NSData *data = [self dataUsingEncoding:encoding allowLossyConversion:lossy];
    if (data == nil)
        return NO;
    return [data writeToFile:path atomically:atomically];
}

- (NSData *)encryptedData:(const char *)key
{
    if ([self length] == 0)
        return [NSData data];
    const char *text = UTF8Form(self);
    void *enciphered = NULL;
    size_t length = 0;
    NSData *result = nil;
    if (text != NULL && MemAllocateEncryptedCopy(text, strlen(text), &enciphered, &length, key) == 0 &&
        enciphered != NULL && length != 0)
        result = [NSData dataWithBytes:enciphered length:length];
    else
        KORULogFailure("-[NSString(FoundationX) encryptedData:]", 71);
    free(enciphered);
    return result;
}

- (id)initWithEncryptedData:(NSData *)data decryptKey:(const char *)key
{
    static const char method[] = "-[NSString(FoundationX) initWithEncryptedData:decryptKey:]";
    BOOL isData = [data isKindOfClass:[NSData class]];
    NSUInteger length = isData ? [data length] : 0;
    char *copy = isData ? [data callocCopy] : NULL; // zero-terminated past the data
    id result;
    if (copy != NULL && length != 0) {
        if (MemDecrypt(copy, length, key) != 0) {
            KORULogFailure(method, 94);
            [self release];
            result = nil;
        } else {
            // The text ends at the first zero: the padding, when it was made
            // by encryptedData:.
            result = [self initWithUTF8String:copy];
            if (result == nil)
                KORULogFailure(method, 95);
        }
    } else {
        result = [self init];
        if (result == nil)
            KORULogFailure(method, 90);
    }
    free(copy);
    return result;
}

+ (id)stringWithEncryptedData:(NSData *)data decryptKey:(const char *)key
{
    return [[[self alloc] initWithEncryptedData:data decryptKey:key] autorelease];
}

- (NSString *)localize
{
    return [[NSBundle mainBundle] localizedStringForKey:self value:self table:nil];
}

- (NSString *)localize:(NSBundle *)bundle table:(NSString *)table value:(NSString *)value
{
    if (bundle == nil)
        bundle = [NSBundle mainBundle];
    return [bundle localizedStringForKey:self value:value table:table];
}

- (NSString *)localize:(NSBundle *)bundle value:(NSString *)value tables:(NSString *)firstTable, ...
{
    // A nil first table is also the end of the list: nothing follows it
    // that could be read.
    if (firstTable == nil)
        return LocalizeThroughTables(self, bundle, value, nil, NULL);
    va_list tables;
    va_start(tables, firstTable);
    NSString *result = [self localize:bundle value:value table:firstTable tablesv:tables];
    va_end(tables);
    return result;
}

- (NSString *)localize:(NSBundle *)bundle value:(NSString *)value table:(NSString *)firstTable tablesv:(va_list)tables
{
    va_list further;
    va_copy(further, tables);
    NSString *result = LocalizeThroughTables(self, bundle, value, firstTable, &further);
    va_end(further);
    return result;
}

- (NSMutableArray *)lines
{
    @try {
        NSMutableString *text = MutableCopy(self);
        [text replaceOccurrencesOfString:@"\r\n" withString:@"\n" options:0 range:WholeRange(text)];
        [text replaceOccurrencesOfString:@"\r" withString:@"\n" options:0 range:WholeRange(text)];
        return [NSMutableArray arrayWithArray:[text componentsSeparatedByString:@"\n"]];
    } @catch (NSException *exception) {
        KORULogException("-[NSString(FoundationX) lines]", 197, exception);
    }
    return nil;
}

- (NSMutableData *)dataFromHexadecimalString
{
    if (![self allChracterIs:isxdigit])
        return nil;
    const char *digits = UTF8Form(self);
    size_t length = strlen(digits);
    NSMutableData *data = [NSMutableData dataWithLength:length / 2];
    unsigned char *bytes = [data mutableBytes];
    for (size_t i = 1; i < length; i += 2)
        bytes[i / 2] = (unsigned char)(HexDigitValue(digits[i - 1]) << 4 | HexDigitValue(digits[i]));
    return data;
}

- (char *)allocUTF8String
{
    const char *text = UTF8Form(self);
    if (text == NULL)
        return NULL;
    size_t size = strlen(text) + 1;
    char *copy = calloc(size, 1);
    if (copy != NULL)
        memcpy(copy, text, size);
    return copy;
}

- (BOOL)getUTF8String:(char *)buffer maxLength:(NSUInteger)size
{
    if (buffer == NULL || size == 0)
        return NO;
    const char *text = UTF8Form(self);
    if (text == NULL)
        return NO;
    size_t length = strlen(text);
    if (size >= length + 1) {
        memcpy(buffer, text, length + 1);
        return YES;
    }
    memcpy(buffer, text, size);
    buffer[size - 1] = '\0';
    return NO;
}

- (BOOL)memmoveUTF8String:(void *)buffer maxLength:(NSUInteger)size
{
    if (buffer == NULL || size == 0)
        return NO;
    const char *text = UTF8Form(self);
    if (text == NULL)
        return NO;
    size_t length = strlen(text);
    if (size >= length) {
        memmove(buffer, text, length);
        return YES;
    }
    memmove(buffer, text, size);
    return NO;
}

- (NSUInteger)size
{
    const char *text = UTF8Form(self);
    return text != NULL ? strlen(text) : 0;
}

- (BOOL)allChracterIs:(int (*)(int))test
{
    if (test == NULL)
        return NO;
    const char *text = UTF8Form(self);
    if (text == NULL)
        return NO;
    for (; *text != '\0'; text++) {
        if (test((signed char)*text) == 0)
            return NO;
    }
    return YES;
}

- (NSMutableString *)chractersFilteredString:(int (*)(int))test
{
    NSMutableString *copy = MutableCopy(self);
    [copy filterChracters:test];
    return copy;
}

- (NSMutableString *)stringBySetLength:(NSUInteger)length withFillString:(NSString *)fill
{
    NSMutableString *copy = MutableCopy(self);
    [copy setLength:length withFillString:fill];
    return copy;
}

- (BOOL)contains:(NSString *)string
{
    return [self contains:string options:0];
}

- (BOOL)contains:(NSString *)string options:(NSStringCompareOptions)options
{
    if (string == nil)
        return NO;
    @try {
        return FindString(self, string, options, WholeRange(self)).location != NSNotFound;
    } @catch (NSException *exception) {
        KORULogException("-[NSString(FoundationX) contains:options:]", 118, exception);
    }
    return NO;
}

- (NSUInteger)offsetAfterString:(NSString *)string
{
    return [self offsetAfterString:string options:0];
}

- (NSUInteger)offsetAfterString:(NSString *)string options:(NSStringCompareOptions)options
{
    if (string == nil)
        return NSNotFound;
    @try {
        NSRange found = FindString(self, string, options, WholeRange(self));
        if (found.location != NSNotFound)
            return NSMaxRange(found);
    } @catch (NSException *exception) {
        KORULogException("-[NSString(FoundationX) offsetAfterString:options:]", 137, exception);
    }
    return NSNotFound;
}

- (NSString *)substringAfterString:(NSString *)string options:(NSStringCompareOptions)options
{
    if (string == nil)
        return nil;
    @try {
        NSRange found = FindString(self, string, options, WholeRange(self));
        if (found.location != NSNotFound)
            return [self substringFromIndex:NSMaxRange(found)];
    } @catch (NSException *exception) {
        KORULogException("-[NSString(FoundationX) substringAfterString:options:]", 153, exception);
    }
    return nil;
}

- (NSMutableString *)find:(NSString *)target andReplaceAllString:(NSString *)replacement
{
    NSMutableString *copy = MutableCopy(self);
    [copy find:target andReplaceAll:replacement];
    return copy;
}

- (void)devideAtIndex:(NSUInteger)index front:(NSMutableString **)front back:(NSMutableString **)back
{
    if (front == NULL || back == NULL)
        return;
    @try {
        if (index > [self length])
            return;
        NSMutableString *head = MutableCopy([self substringToIndex:index]);
        NSMutableString *tail = MutableCopy([self substringFromIndex:index]);
        *front = head;
        *back = tail;
    } @catch (NSException *exception) {
        KORULogException("-[NSString(FoundationX) devideAtIndex:front:back:]", 172, exception);
    }
}

- (NSNumber *)intNumber
{
    int value = 0;
    @try {
        NSUInteger length = [self length];
        NSUInteger i = 0;
        while (i < length && !IsDecimalDigit([self characterAtIndex:i]))
            i++;
        // A run of digits is what intValue reads; like Cocoa's, its answer
        // stops at INT_MAX rather than wrapping round.
        for (; i < length && IsDecimalDigit([self characterAtIndex:i]); i++) {
            int digit = [self characterAtIndex:i] - '0';
            value = value > (INT_MAX - digit) / 10 ? INT_MAX : value * 10 + digit;
        }
    } @catch (NSException *exception) {
        KORULogException("-[NSString(FoundationX) intNumber]", 213, exception);
        value = 0;
    }
    return [NSNumber numberWithInt:value];
}

+ (NSMutableArray *)availableStringEncodingLocalizedNames
{
    NSMutableArray *names = [NSMutableArray array];
    const NSStringEncoding *encoding = [self availableStringEncodings];
    for (; encoding != NULL && *encoding != 0; encoding++) {
        NSString *name = [self localizedNameOfStringEncoding:*encoding];
        if (name != nil)
            [names addObject:name];
    }
    return names;
}

+ (NSStringEncoding)stringEncodingForLocalizedName:(NSString *)name
{
    if (name == nil)
        return 0;
    const NSStringEncoding *encoding = [self availableStringEncodings];
    for (; encoding != NULL && *encoding != 0; encoding++) {
        if ([[self localizedNameOfStringEncoding:*encoding] isEqual:name])
            return *encoding;
    }
    return 0;
}

- (int)system
{
    const char *command = UTF8Form(self);
    return command != NULL ? system(command) : -1;
}

- (int)setenv:(const char *)value overwrite:(int)overwrite
{
    const char *name = UTF8Form(self);
    if (value == NULL || name == NULL)
        return -1;
    return setenv(name, value, overwrite);
}

- (int)sscanf:(const char *)format, ...
{
    va_list arguments;
    va_start(arguments, format);
    int result = [self vsscanf:format arguments:arguments];
    va_end(arguments);
    return result;
}

- (int)vsscanf:(const char *)format arguments:(va_list)arguments
{
#if defined(__x86_64__) || defined(__i386__)
    // Here a va_list parameter is a pointer that a caller can leave NULL.
    if (arguments == NULL)
        return -1;
#endif
    const char *text = UTF8Form(self);
    if (format == NULL || text == NULL)
        return -1;
    return vsscanf(text, format, arguments);
}

@end

@implementation NSMutableString (FoundationXText)

- (void)empty
{
    [self setString:@""];
}

- (void)setUTF8String:(const char *)string
{
    if (string == NULL)
        return;
    NSString *text = [NSString stringWithUTF8String:string];
    if (text != nil)
        [self setString:text];
}

- (void)setLength:(NSUInteger)length withFillString:(NSString *)fill
{
    if ([fill length] == 0)
        fill = @" ";
    // Whole fills first, then the cut: the last repetition may overshoot.
    while (length > [self length])
        [self appendString:fill];
    if ([self length] > length)
        [self deleteCharactersInRange:NSMakeRange(length, [self length] - length)];
}

- (BOOL)deleteIfEndWith:(NSString *)suffix
{
    if (suffix == nil || ![self hasSuffix:suffix])
        return NO;
    NSUInteger length = [suffix length];
    [self deleteCharactersInRange:NSMakeRange([self length] - length, length)];
    return YES;
}

- (BOOL)deleteIfStartWith:(NSString *)prefix
{
    if (prefix == nil || ![self hasPrefix:prefix])
        return NO;
    [self deleteCharactersInRange:NSMakeRange(0, [prefix length])];
    return YES;
}

- (BOOL)filterChracters:(int (*)(int))test
{
    if (test == NULL)
        return NO;
    NSData *utf8 = [self dataUsingEncoding:NSUTF8StringEncoding];
    if (utf8 == nil)
        return NO;
    // The bytes are taken once, before the first deletion; walking down from
    // the end leaves the indexes still to be visited where they were.  UTF-8
    // has at least one byte per UTF-16 unit, so the bound only guards.
    const char *bytes = [utf8 bytes];
    NSUInteger count = MIN([self length], [utf8 length]);
    BOOL removed = NO;
    for (NSUInteger i = count; i-- > 0;) {
        if (test((signed char)bytes[i]) == 0) {
            [self deleteCharactersInRange:NSMakeRange(i, 1)];
            removed = YES;
        }
    }
    return removed;
}

- (NSString *)deleteToSubstring:(NSString *)string
{
    if (string == nil)
        return nil;
    @try {
        NSRange found = FindString(self, string, 0, WholeRange(self));
        if (found.location == NSNotFound)
            return nil;
        NSString *before = [self substringToIndex:found.location];
        [self deleteCharactersInRange:NSMakeRange(0, NSMaxRange(found))];
        return before;
    } @catch (NSException *exception) {
        KORULogException("-[NSMutableString(FoundationX) deleteToSubstring:]", 571, exception);
    }
    return nil;
}

- (NSUInteger)find:(NSString *)target andReplaceAll:(NSString *)replacement
{
    if (target == nil || replacement == nil)
        return 0;
    NSUInteger count = 0;
    @try {
        NSRange found = FindString(self, target, NSBackwardsSearch, WholeRange(self));
        while (found.location != NSNotFound) {
            [self replaceCharactersInRange:found withString:replacement];
            count++;
            // Only what lies before this match: the replacement is never
            // searched again.
            found = FindString(self, target, NSBackwardsSearch, NSMakeRange(0, found.location));
        }
    } @catch (NSException *exception) {
        KORULogException("-[NSMutableString(FoundationX) find:andReplaceAll:]", 598, exception);
        return 0;
    }
    return count;
}

@end
