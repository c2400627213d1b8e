/* Property lists over NSPropertyListSerialization, with the decoding and the
 * strings-table form that a Mac reader accepts and GNUstep's does not. */
#include "CFInternal.h"

#include <string.h>

/* Deeper trees than this are taken for cycles. */
enum { __kCFPropertyListMaxDepth = 512 };

static BOOL __CFPLIsValidNode(id node, CFPropertyListFormat format, unsigned depth)
{
    if (node == nil || depth > __kCFPropertyListMaxDepth)
        return NO;
    if ([node isKindOfClass:[NSString class]] || [node isKindOfClass:[NSData class]])
        return YES;
    if ([node isKindOfClass:[NSNumber class]] || [node isKindOfClass:[NSDate class]])
        return format != kCFPropertyListOpenStepFormat;
    if ([node isKindOfClass:[NSArray class]]) {
        for (id item in node)
            if (!__CFPLIsValidNode(item, format, depth + 1))
                return NO;
        return YES;
    }
    if ([node isKindOfClass:[NSDictionary class]]) {
        for (id key in node)
            if (![key isKindOfClass:[NSString class]] ||
                !__CFPLIsValidNode([node objectForKey:key], format, depth + 1))
                return NO;
        return YES;
    }
    return NO;
}

static BOOL __CFPLIsKnownFormat(CFPropertyListFormat format)
{
    return format == kCFPropertyListOpenStepFormat || format == kCFPropertyListXMLFormat_v1_0 ||
           format == kCFPropertyListBinaryFormat_v1_0;
}

/* A retained copy of the tree with the requested mutability; nil when a node
 * is not a property-list object.  Dictionary keys stay immutable strings. */
static id __CFPLCopyNode(id node, CFOptionFlags mutability, unsigned depth)
{
    if (node == nil || depth > __kCFPropertyListMaxDepth)
        return nil;
    BOOL mutableLeaves = mutability == kCFPropertyListMutableContainersAndLeaves;
    BOOL mutableContainers = mutability != kCFPropertyListImmutable;
    if ([node isKindOfClass:[NSString class]] || [node isKindOfClass:[NSData class]])
        return mutableLeaves ? [node mutableCopy] : [node copy];
    if ([node isKindOfClass:[NSNumber class]] || [node isKindOfClass:[NSDate class]])
        return [node retain];
    if ([node isKindOfClass:[NSArray class]]) {
        NSMutableArray *items = [[NSMutableArray alloc] initWithCapacity:[node count]];
        for (id item in node) {
            id copy = __CFPLCopyNode(item, mutability, depth + 1);
            if (copy == nil) {
                [items release];
                return nil;
            }
            [items addObject:copy];
            [copy release];
        }
        if (mutableContainers)
            return items;
        NSArray *result = [[NSArray alloc] initWithArray:items];
        [items release];
        return result;
    }
    if ([node isKindOfClass:[NSDictionary class]]) {
        NSMutableDictionary *entries = [[NSMutableDictionary alloc] initWithCapacity:[node count]];
        for (id key in node) {
            id copy = [key isKindOfClass:[NSString class]] ? __CFPLCopyNode([node objectForKey:key], mutability, depth + 1) : nil;
            if (copy == nil) {
                [entries release];
                return nil;
            }
            NSString *keyCopy = [key copy];
            [entries setObject:copy forKey:keyCopy];
            [keyCopy release];
            [copy release];
        }
        if (mutableContainers)
            return entries;
        NSDictionary *result = [[NSDictionary alloc] initWithDictionary:entries];
        [entries release];
        return result;
    }
    return nil;
}

static BOOL __CFPLHasPrefix(NSData *data, const char *prefix)
{
    size_t length = strlen(prefix);
    return [data length] >= length && memcmp([data bytes], prefix, length) == 0;
}

/* The text of a non-binary property list.  A byte-order mark decides the
 * encoding (strings tables written on a Mac are UTF-16 with one); so does a
 * zero byte in the first character of unmarked UTF-16.  Otherwise UTF-8,
 * and MacRoman for bytes that are not UTF-8. */
static NSString *__CFPLDecodeText(NSData *data, BOOL *wasUTF8)
{
    const unsigned char *bytes = [data bytes];
    NSUInteger length = [data length];
    NSStringEncoding encoding = NSUTF8StringEncoding;
    NSUInteger skip = 0;
    if (length >= 2 && bytes[0] == 0xFF && bytes[1] == 0xFE) {
        encoding = NSUTF16LittleEndianStringEncoding;
        skip = 2;
    } else if (length >= 2 && bytes[0] == 0xFE && bytes[1] == 0xFF) {
        encoding = NSUTF16BigEndianStringEncoding;
        skip = 2;
    } else if (length >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF) {
        skip = 3;
    } else if (length >= 2 && length % 2 == 0 && bytes[0] == 0 && bytes[1] != 0) {
        encoding = NSUTF16BigEndianStringEncoding;
    } else if (length >= 2 && length % 2 == 0 && bytes[0] != 0 && bytes[1] == 0) {
        encoding = NSUTF16LittleEndianStringEncoding;
    }
    *wasUTF8 = encoding == NSUTF8StringEncoding && skip == 0;
    NSString *text = [[[NSString alloc] initWithBytes:bytes + skip length:length - skip encoding:encoding] autorelease];
    if (text == nil && encoding == NSUTF8StringEncoding) {
        *wasUTF8 = NO;
        text = [[[NSString alloc] initWithBytes:bytes length:length encoding:NSMacOSRomanStringEncoding] autorelease];
    }
    return text;
}

static BOOL __CFPLLooksLikeXML(NSString *text)
{
    NSString *start = [text stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]];
    return [start hasPrefix:@"<?xml"] || [start hasPrefix:@"<!DOCTYPE"] || [start hasPrefix:@"<plist"];
}

/* XML re-encoded as UTF-8 must not keep declaring its old encoding. */
static NSData *__CFPLXMLAsUTF8(NSString *text)
{
    NSRange declaration = [text rangeOfString:@"?>"];
    NSRange encoding = [text rangeOfString:@"encoding=\""];
    if (declaration.location != NSNotFound && encoding.location != NSNotFound &&
        encoding.location < declaration.location) {
        NSUInteger valueStart = NSMaxRange(encoding);
        NSRange close = [text rangeOfString:@"\"" options:0
                                      range:NSMakeRange(valueStart, declaration.location - valueStart)];
        if (close.location != NSNotFound)
            text = [text stringByReplacingCharactersInRange:NSMakeRange(valueStart, close.location - valueStart)
                                                 withString:@"UTF-8"];
    }
    return [text dataUsingEncoding:NSUTF8StringEncoding];
}

static id __CFPLDeserialize(NSData *data, NSPropertyListFormat *format, NSString **error)
{
    NSError *problem = nil;
    id result = [NSPropertyListSerialization propertyListWithData:data options:NSPropertyListImmutable
                                                            format:format error:&problem];
    if (result == nil)
        *error = problem != nil ? [problem localizedDescription] : @"Unreadable property list";
    return result;
}

/* The strings-table form: "key" = "value"; pairs and comments, no braces. */
static id __CFPLParseStringsTable(NSString *text)
{
    NSString *trimmed = [text stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]];
    if ([trimmed length] == 0)
        return nil;
    @try {
        id table = [text propertyListFromStringsFileFormat];
        return [table isKindOfClass:[NSDictionary class]] ? table : nil;
    } @catch (NSException *exception) {
        return nil;
    }
}

/* Parses any readable form; an autoreleased tree or nil with *error set. */
static id __CFPLParse(NSData *data, CFPropertyListFormat *format, NSString **error)
{
    if ([data length] == 0) {
        *error = @"Cannot parse a NULL or zero-length data";
        return nil;
    }
    NSPropertyListFormat found = 0;
    id result = nil;
    if (__CFPLHasPrefix(data, "bplist00")) {
        result = __CFPLDeserialize(data, &found, error);
        *format = kCFPropertyListBinaryFormat_v1_0;
        return result;
    }
    BOOL wasUTF8 = NO;
    NSString *text = __CFPLDecodeText(data, &wasUTF8);
    if (text == nil) {
        *error = @"Conversion of data failed: the text is in no known encoding";
        return nil;
    }
    if (__CFPLLooksLikeXML(text)) {
        *format = kCFPropertyListXMLFormat_v1_0;
        return __CFPLDeserialize(wasUTF8 ? data : __CFPLXMLAsUTF8(text), &found, error);
    }
    *format = kCFPropertyListOpenStepFormat;
    /* Foundation reads text that starts with byte 0 or 1 as its own archive
     * form, whose counts it trusts: such text is no property list here. */
    if ([text length] > 0 && [text characterAtIndex:0] <= 1) {
        *error = @"Unexpected character at line 1";
        return nil;
    }
    result = __CFPLDeserialize([text dataUsingEncoding:NSUTF8StringEncoding], &found, error);
    if (result == nil) {
        result = __CFPLParseStringsTable(text);
        if (result != nil)
            *error = nil;
    }
    return result;
}

/* Parses and copies with the mutability asked for; a retained tree or nil
 * with a retained error text. */
static id __CFPLCreate(CFDataRef data, CFOptionFlags mutability, CFPropertyListFormat *format, NSString **error)
{
    *error = nil;
    if (data == NULL || !__CFIsKindOf(data, CFDataGetTypeID())) {
        *error = [@"Cannot parse a NULL or zero-length data" retain];
        return nil;
    }
    id result = nil;
    __CF_POOL_BEGIN
    @try {
        NSString *problem = nil;
        id tree = __CFPLParse((NSData *)data, format, &problem);
        if (tree != nil)
            result = __CFPLCopyNode(tree, mutability, 0);
        else
            *error = [problem copy];
    } @catch (NSException *exception) {
        [result release];
        result = nil;
        *error = [[exception reason] copy];
    }
    __CF_POOL_END
    if (result == nil && *error == nil)
        *error = [@"The property list holds an object of an unknown type" retain];
    return result;
}

CFPropertyListRef CFPropertyListCreateFromXMLData(CFAllocatorRef allocator, CFDataRef xmlData,
                                                  CFOptionFlags mutabilityOption, CFStringRef *errorString)
{
    (void)allocator;
    CFPropertyListFormat format = 0;
    NSString *error = nil;
    id result = __CFPLCreate(xmlData, mutabilityOption, &format, &error);
    if (errorString != NULL)
        *errorString = (CFStringRef)error;
    else
        [error release];
    return result;
}

CFPropertyListRef CFPropertyListCreateWithData(CFAllocatorRef allocator, CFDataRef data, CFOptionFlags options,
                                               CFPropertyListFormat *format, CFErrorRef *error)
{
    (void)allocator;
    CFPropertyListFormat found = 0;
    NSString *problem = nil;
    id result = __CFPLCreate(data, options, &found, &problem);
    if (format != NULL)
        *format = result != nil ? found : 0;
    if (error != NULL) {
        *error = NULL;
        if (problem != nil) {
            NSDictionary *info = [[NSDictionary alloc] initWithObjectsAndKeys:problem, NSLocalizedDescriptionKey, nil];
            *error = (CFErrorRef)[[NSError alloc] initWithDomain:NSCocoaErrorDomain code:3840 userInfo:info];
            [info release];
        }
    }
    [problem release];
    return result;
}

/* The serialised tree, retained; nil for an invalid tree or a format that is not written. */
static NSData *__CFPLSerialize(CFPropertyListRef propertyList, CFPropertyListFormat format, NSString **problem)
{
    *problem = nil;
    if (format != kCFPropertyListXMLFormat_v1_0 && format != kCFPropertyListBinaryFormat_v1_0) {
        *problem = @"Property lists are written in the XML or the binary form only";
        return nil;
    }
    if (!CFPropertyListIsValid(propertyList, format)) {
        *problem = @"The tree is not a valid property list";
        return nil;
    }
    NSData *result = nil;
    __CF_POOL_BEGIN
    @try {
        NSError *error = nil;
        NSPropertyListFormat nsFormat = format == kCFPropertyListXMLFormat_v1_0 ? NSPropertyListXMLFormat_v1_0
                                                                                : NSPropertyListBinaryFormat_v1_0;
        NSData *data = [NSPropertyListSerialization dataWithPropertyList:(id)propertyList format:nsFormat
                                                                 options:0 error:&error];
        result = [data copy];
    } @catch (NSException *exception) {
        result = nil;
    }
    __CF_POOL_END
    if (result == nil)
        *problem = @"The property list could not be written";
    return result;
}

CFDataRef CFPropertyListCreateXMLData(CFAllocatorRef allocator, CFPropertyListRef propertyList)
{
    (void)allocator;
    NSString *problem = nil;
    return (CFDataRef)__CFPLSerialize(propertyList, kCFPropertyListXMLFormat_v1_0, &problem);
}

CFDataRef CFPropertyListCreateData(CFAllocatorRef allocator, CFPropertyListRef propertyList,
                                   CFPropertyListFormat format, CFOptionFlags options, CFErrorRef *error)
{
    (void)allocator;
    (void)options;
    NSString *problem = nil;
    NSData *result = __CFPLSerialize(propertyList, format, &problem);
    if (error != NULL) {
        *error = NULL;
        if (result == nil) {
            NSDictionary *info = [[NSDictionary alloc] initWithObjectsAndKeys:problem, NSLocalizedDescriptionKey, nil];
            *error = (CFErrorRef)[[NSError alloc] initWithDomain:NSCocoaErrorDomain code:3851 userInfo:info];
            [info release];
        }
    }
    return (CFDataRef)result;
}

CFPropertyListRef CFPropertyListCreateDeepCopy(CFAllocatorRef allocator, CFPropertyListRef propertyList,
                                               CFOptionFlags mutabilityOption)
{
    (void)allocator;
    if (propertyList == NULL)
        return NULL;
    id result = nil;
    __CF_POOL_BEGIN
    @try {
        result = __CFPLCopyNode((id)propertyList, mutabilityOption, 0);
    } @catch (NSException *exception) {
        result = nil;
    }
    __CF_POOL_END
    return result;
}

Boolean CFPropertyListIsValid(CFPropertyListRef plist, CFPropertyListFormat format)
{
    if (plist == NULL || !__CFPLIsKnownFormat(format))
        return false;
    BOOL valid = NO;
    __CF_POOL_BEGIN
    @try {
        valid = __CFPLIsValidNode((id)plist, format, 0);
    } @catch (NSException *exception) {
        valid = NO;
    }
    __CF_POOL_END
    return valid ? true : false;
}
