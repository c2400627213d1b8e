/* CFURL over NSURL.  File URLs are made from paths in three styles; a
 * relative path makes a relative URL, kept with its base (the current
 * folder when none is given), as CF does.  A URL's absolute form is worked
 * out here (CFURLResolution.m), not by Foundation. */
#include "CFURLInternal.h"
#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

CFTypeID CFURLGetTypeID(void)
{
    return __kCFURLTypeID;
}

static NSURL *__CFURL(CFURLRef url)
{
    return (NSURL *)url;
}

/* Runs body inside a pool and turns a Foundation exception into NULL. */
#define __CF_URL_GUARD(result, body)                                                                                   \
    do {                                                                                                               \
        __CF_POOL_BEGIN @try {                                                                                         \
            body;                                                                                                      \
        } @catch (NSException * exception) {                                                                           \
            result = NULL;                                                                                             \
        }                                                                                                              \
        __CF_POOL_END                                                                                                  \
    } while (0)

CFURLRef CFURLCreateWithString(CFAllocatorRef allocator, CFStringRef URLString, CFURLRef baseURL)
{
    (void)allocator;
    if (URLString == NULL)
        return NULL;
    CFURLRef result = NULL;
    __CF_URL_GUARD(result, result = (CFURLRef)[[NSURL alloc] initWithString:(NSString *)URLString
                                                              relativeToURL:__CFURL(baseURL)]);
    return result;
}

CFURLRef CFURLCreateWithBytes(CFAllocatorRef allocator, const UInt8 *URLBytes, CFIndex length,
                              CFStringEncoding encoding, CFURLRef baseURL)
{
    CFStringRef string = CFStringCreateWithBytes(allocator, URLBytes, length, encoding, false);
    if (string == NULL)
        return NULL;
    CFURLRef result = CFURLCreateWithString(allocator, string, baseURL);
    CFRelease(string);
    return result;
}

CFURLRef CFURLCreateAbsoluteURLWithBytes(CFAllocatorRef alloc, const UInt8 *relativeURLBytes, CFIndex length,
                                         CFStringEncoding encoding, CFURLRef baseURL, Boolean useCompatibilityMode)
{
    (void)useCompatibilityMode;
    CFURLRef relative = CFURLCreateWithBytes(alloc, relativeURLBytes, length, encoding, baseURL);
    if (relative == NULL)
        return NULL;
    CFURLRef result = CFURLCopyAbsoluteURL(relative);
    CFRelease(relative);
    return result;
}

CFDataRef CFURLCreateData(CFAllocatorRef allocator, CFURLRef url, CFStringEncoding encoding, Boolean escapeWhitespace)
{
    (void)escapeWhitespace;
    CFStringRef string = CFURLGetString(url);
    if (string == NULL)
        return NULL;
    return CFStringCreateExternalRepresentation(allocator, string, encoding, 0);
}

/* The current folder as a directory URL: the base of relative paths made
 * without one. */
static NSURL *__CFCurrentFolderURL(void)
{
    char cwd[PATH_MAX];
    if (getcwd(cwd, sizeof(cwd)) == NULL)
        return nil;
    NSString *path = [NSString stringWithUTF8String:cwd];
    return path != nil ? [NSURL fileURLWithPath:path isDirectory:YES] : nil;
}

/* Percent-escapes a POSIX path for the URL's text, keeping "/". */
static NSString *__CFEscapedPath(NSString *path)
{
    static const char *keep = "-._~/!$&'()*+,;=:@";
    NSData *utf8 = [path dataUsingEncoding:NSUTF8StringEncoding];
    const unsigned char *bytes = [utf8 bytes];
    NSUInteger length = [utf8 length];
    NSMutableString *escaped = [NSMutableString stringWithCapacity:length];
    for (NSUInteger i = 0; i < length; i++) {
        unsigned char c = bytes[i];
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || (c != 0 && strchr(keep, c)))
            [escaped appendFormat:@"%c", c];
        else
            [escaped appendFormat:@"%%%02X", c];
    }
    return escaped;
}

static CFURLRef __CFURLCreateForPath(NSString *path, Boolean isDirectory, CFURLRef base)
{
    if (path == nil || [path length] == 0)
        return NULL;
    BOOL absolute = [path hasPrefix:@"/"];
    while ([path length] > 1 && [path hasSuffix:@"/"])
        path = [path substringToIndex:[path length] - 1];
    if (isDirectory && ![path hasSuffix:@"/"])
        path = [path stringByAppendingString:@"/"];
    if (absolute)
        return (CFURLRef)[[NSURL alloc] initWithString:[@"file://" stringByAppendingString:__CFEscapedPath(path)]];
    /* A relative path stays relative; a ":" in its first segment would read as a scheme. */
    NSString *text = __CFEscapedPath(path);
    NSRange colon = [text rangeOfString:@":"];
    NSRange slash = [text rangeOfString:@"/"];
    if (colon.location != NSNotFound && (slash.location == NSNotFound || colon.location < slash.location))
        text = [@"./" stringByAppendingString:text];
    NSURL *baseURL = base != NULL ? (NSURL *)base : __CFCurrentFolderURL();
    return (CFURLRef)[[NSURL alloc] initWithString:text relativeToURL:baseURL];
}

/* A Windows path in POSIX form: "C:\dir" becomes "/C:/dir", "dir\file" "dir/file". */
static NSString *__CFPOSIXPathFromWindows(NSString *path)
{
    NSString *slashed = [path stringByReplacingOccurrencesOfString:@"\\" withString:@"/"];
    if ([slashed length] >= 2 && [slashed characterAtIndex:1] == ':') {
        unichar drive = [slashed characterAtIndex:0];
        if ((drive >= 'A' && drive <= 'Z') || (drive >= 'a' && drive <= 'z'))
            return [@"/" stringByAppendingString:slashed];
    }
    return slashed;
}

CFURLRef CFURLCreateWithFileSystemPathRelativeToBase(CFAllocatorRef allocator, CFStringRef filePath,
                                                     CFURLPathStyle pathStyle, Boolean isDirectory, CFURLRef baseURL)
{
    (void)allocator;
    if (filePath == NULL)
        return NULL;
    CFURLRef result = NULL;
    __CF_URL_GUARD(result, {
        NSString *path = (NSString *)filePath;
        if (pathStyle == kCFURLHFSPathStyle) {
            BOOL absolute = NO;
            path = __CFPOSIXPathFromHFSPath(path, &absolute);
        } else if (pathStyle == kCFURLWindowsPathStyle) {
            path = __CFPOSIXPathFromWindows(path);
        }
        result = __CFURLCreateForPath(path, isDirectory, baseURL);
    });
    return result;
}

CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef filePath, CFURLPathStyle pathStyle,
                                       Boolean isDirectory)
{
    return CFURLCreateWithFileSystemPathRelativeToBase(allocator, filePath, pathStyle, isDirectory, NULL);
}

CFURLRef CFURLCreateFromFileSystemRepresentationRelativeToBase(CFAllocatorRef allocator, const UInt8 *buffer,
                                                               CFIndex bufLen, Boolean isDirectory, CFURLRef baseURL)
{
    if (buffer == NULL || bufLen <= 0)
        return NULL;
    CFIndex length = 0;
    while (length < bufLen && buffer[length] != 0)
        length++;
    CFStringRef path = CFStringCreateWithBytes(allocator, buffer, length, kCFStringEncodingUTF8, false);
    if (path == NULL)
        return NULL;
    CFURLRef result = CFURLCreateWithFileSystemPathRelativeToBase(allocator, path, kCFURLPOSIXPathStyle, isDirectory,
                                                                  baseURL);
    CFRelease(path);
    return result;
}

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator, const UInt8 *buffer, CFIndex bufLen,
                                                 Boolean isDirectory)
{
    return CFURLCreateFromFileSystemRepresentationRelativeToBase(allocator, buffer, bufLen, isDirectory, NULL);
}

static BOOL __CFURLIsFile(NSURL *url)
{
    NSString *scheme = [url scheme];
    return scheme != nil && [scheme caseInsensitiveCompare:@"file"] == NSOrderedSame;
}

/* The decoded path of the URL, or of its absolute form, without a trailing "/". */
static NSString *__CFURLPOSIXPath(NSURL *url, BOOL resolveAgainstBase)
{
    NSString *text = resolveAgainstBase ? __CFURLAbsoluteString(url) : [url relativeString];
    NSString *path = [__CFURLRawPathOfText(text) stringByReplacingPercentEscapesUsingEncoding:NSUTF8StringEncoding];
    if (path == nil)
        return nil;
    if ([path hasPrefix:@"./"])
        path = [path substringFromIndex:2];
    while ([path length] > 1 && [path hasSuffix:@"/"])
        path = [path substringToIndex:[path length] - 1];
    return path;
}

static NSString *__CFWindowsPathFromPOSIX(NSString *path)
{
    if ([path length] >= 3 && [path characterAtIndex:0] == '/' && [path characterAtIndex:2] == ':')
        path = [path substringFromIndex:1];
    return [path stringByReplacingOccurrencesOfString:@"/" withString:@"\\"];
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef anURL, CFURLPathStyle pathStyle)
{
    if (anURL == NULL)
        return NULL;
    CFStringRef result = NULL;
    __CF_URL_GUARD(result, {
        NSString *path = __CFURLPOSIXPath(__CFURL(anURL), NO);
        if (path != nil && pathStyle == kCFURLHFSPathStyle) {
            if ([path hasPrefix:@"/"]) {
                path = __CFHFSPathFromPOSIXPath(path);
            } else {
                NSMutableArray *parts = [NSMutableArray array];
                for (NSString *part in [path componentsSeparatedByString:@"/"])
                    [parts addObject:[part stringByReplacingOccurrencesOfString:@":" withString:@"/"]];
                path = [parts componentsJoinedByString:@":"];
            }
        } else if (path != nil && pathStyle == kCFURLWindowsPathStyle) {
            path = __CFWindowsPathFromPOSIX(path);
        }
        result = path != nil ? (CFStringRef)[path copy] : NULL;
    });
    return result;
}

Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolveAgainstBase, UInt8 *buffer, CFIndex maxBufLen)
{
    if (url == NULL || buffer == NULL || maxBufLen <= 0)
        return false;
    buffer[0] = 0;
    Boolean ok = false;
    __CF_POOL_BEGIN
    @try {
        NSString *path = nil;
        if (__CFURLIsFile(__CFURL(url)))
            path = __CFURLPOSIXPath(__CFURL(url), resolveAgainstBase);
        ok = path != nil && CFStringGetCString((CFStringRef)path, (char *)buffer, maxBufLen, kCFStringEncodingUTF8);
    } @catch (NSException *exception) {
        ok = false;
    }
    __CF_POOL_END
    return ok;
}

CFStringRef CFURLGetString(CFURLRef anURL)
{
    if (anURL == NULL)
        return NULL;
    return (CFStringRef)[__CFURL(anURL) relativeString];
}

CFURLRef CFURLGetBaseURL(CFURLRef anURL)
{
    if (anURL == NULL)
        return NULL;
    return (CFURLRef)[__CFURL(anURL) baseURL];
}

CFURLRef CFURLCopyAbsoluteURL(CFURLRef relativeURL)
{
    if (relativeURL == NULL)
        return NULL;
    CFURLRef result = NULL;
    __CF_URL_GUARD(result, result = (CFURLRef)[__CFURLAbsolute(__CFURL(relativeURL)) retain]);
    return result;
}

Boolean CFURLCanBeDecomposed(CFURLRef anURL)
{
    if (anURL == NULL)
        return false;
    Boolean result = false;
    __CF_POOL_BEGIN
    NSString *text = __CFURLAbsoluteString(__CFURL(anURL));
    NSRange colon = [text rangeOfString:@":"];
    result = text != nil && (colon.location == NSNotFound || [text length] == colon.location + 1 ||
                             [text characterAtIndex:colon.location + 1] == '/');
    __CF_POOL_END
    return result;
}

/* Copies one NSURL accessor's answer, or NULL. */
static CFStringRef __CFURLCopyPart(CFURLRef anURL, SEL part)
{
    if (anURL == NULL)
        return NULL;
    CFStringRef result = NULL;
    __CF_URL_GUARD(result, {
        NSString *value = [__CFURL(anURL) performSelector:part];
        result = value != nil ? (CFStringRef)[value copy] : NULL;
    });
    return result;
}

CFStringRef CFURLCopyScheme(CFURLRef anURL)
{
    return __CFURLCopyPart(anURL, @selector(scheme));
}

CFStringRef CFURLCopyHostName(CFURLRef anURL)
{
    return __CFURLCopyPart(anURL, @selector(host));
}

CFStringRef CFURLCopyUserName(CFURLRef anURL)
{
    return __CFURLCopyPart(anURL, @selector(user));
}

CFStringRef CFURLCopyPassword(CFURLRef anURL)
{
    return __CFURLCopyPart(anURL, @selector(password));
}

/* What follows the path: ";params", "?query", "#fragment", separators
 * included; for a URL that cannot be decomposed, all after the scheme. */
CFStringRef CFURLCopyResourceSpecifier(CFURLRef anURL)
{
    if (anURL == NULL)
        return NULL;
    CFStringRef result = NULL;
    Boolean decomposable = CFURLCanBeDecomposed(anURL);
    __CF_URL_GUARD(result, {
        NSString *text = [__CFURL(anURL) relativeString];
        NSString *rest = nil;
        NSRange colon = [text rangeOfString:@":"];
        NSRange first = [text rangeOfCharacterFromSet:[NSCharacterSet characterSetWithCharactersInString:@"/?#;"]];
        BOOL hasScheme = colon.location != NSNotFound && (first.location == NSNotFound || colon.location < first.location);
        if (!decomposable) {
            rest = hasScheme ? [text substringFromIndex:colon.location + 1] : text;
        } else {
            NSString *tail = hasScheme ? [text substringFromIndex:colon.location + 1] : text;
            NSUInteger start = 0;
            if ([tail hasPrefix:@"//"]) {
                NSRange end = [tail rangeOfCharacterFromSet:[NSCharacterSet characterSetWithCharactersInString:@"/?#"]
                                                    options:0
                                                      range:NSMakeRange(2, [tail length] - 2)];
                start = end.location == NSNotFound ? [tail length] : end.location;
            }
            NSRange cut = [tail rangeOfCharacterFromSet:[NSCharacterSet characterSetWithCharactersInString:@"?#;"]
                                                options:0
                                                  range:NSMakeRange(start, [tail length] - start)];
            if (cut.location != NSNotFound)
                rest = [tail substringFromIndex:cut.location];
        }
        result = [rest length] ? (CFStringRef)[rest copy] : NULL;
    });
    return result;
}

CFStringRef CFURLCopyNetLocation(CFURLRef anURL)
{
    CFStringRef host = CFURLCopyHostName(anURL);
    if (host == NULL)
        return NULL;
    SInt32 port = CFURLGetPortNumber(anURL);
    CFStringRef user = CFURLCopyUserName(anURL);
    CFStringRef result = CFStringCreateWithFormat(NULL, NULL, CFSTR("%@%s%@%s%.0d"), user ? user : CFSTR(""),
                                                  user ? "@" : "", host, port >= 0 ? ":" : "", port >= 0 ? port : 0);
    if (user != NULL)
        CFRelease(user);
    CFRelease(host);
    return result;
}

/* The path as written in the URL, percent escapes kept. */
static NSString *__CFURLRawPath(NSURL *url)
{
    NSString *specifier = __CFURLRawPathOfText([url relativeString]);
    if (specifier == nil)
        return nil;
    NSRange cut = [specifier rangeOfCharacterFromSet:[NSCharacterSet characterSetWithCharactersInString:@";"]];
    if (cut.location != NSNotFound)
        specifier = [specifier substringToIndex:cut.location];
    return specifier;
}

CFStringRef CFURLCopyPath(CFURLRef anURL)
{
    if (anURL == NULL)
        return NULL;
    CFStringRef result = NULL;
    __CF_URL_GUARD(result, {
        NSString *path = __CFURLRawPath(__CFURL(anURL));
        result = path != nil ? (CFStringRef)[path copy] : NULL;
    });
    return result;
}

CFStringRef CFURLCopyStrictPath(CFURLRef anURL, Boolean *isAbsolute)
{
    CFStringRef path = CFURLCopyPath(anURL);
    Boolean absolute = path != NULL && CFStringHasPrefix(path, CFSTR("/"));
    if (isAbsolute != NULL)
        *isAbsolute = absolute;
    if (!absolute)
        return path;
    CFStringRef strict = CFStringCreateWithSubstring(NULL, path, CFRangeMake(1, CFStringGetLength(path) - 1));
    CFRelease(path);
    return strict;
}

SInt32 CFURLGetPortNumber(CFURLRef anURL)
{
    __CF_SCOPED_POOL
    if (anURL == NULL)
        return -1;
    NSNumber *port = [__CFURL(anURL) port];
    return port != nil ? (SInt32)[port intValue] : -1;
}

CFStringRef CFURLCopyQueryString(CFURLRef anURL, CFStringRef charactersToLeaveEscaped)
{
    (void)charactersToLeaveEscaped;
    return __CFURLCopyPart(anURL, @selector(query));
}

CFStringRef CFURLCopyFragment(CFURLRef anURL, CFStringRef charactersToLeaveEscaped)
{
    (void)charactersToLeaveEscaped;
    return __CFURLCopyPart(anURL, @selector(fragment));
}

Boolean CFURLHasDirectoryPath(CFURLRef anURL)
{
    __CF_SCOPED_POOL
    if (anURL == NULL)
        return false;
    NSString *path = __CFURLRawPath(__CFURL(anURL));
    return path != nil && [path hasSuffix:@"/"];
}

CFStringRef CFURLCopyLastPathComponent(CFURLRef url)
{
    __CF_SCOPED_POOL
    CFStringRef path = CFURLCopyFileSystemPath(url, kCFURLPOSIXPathStyle);
    if (path == NULL)
        return NULL;
    CFStringRef result = (CFStringRef)[[(NSString *)path lastPathComponent] copy];
    CFRelease(path);
    return result;
}

CFStringRef CFURLCopyPathExtension(CFURLRef url)
{
    __CF_SCOPED_POOL
    CFStringRef last = CFURLCopyLastPathComponent(url);
    if (last == NULL)
        return NULL;
    NSString *extension = [(NSString *)last pathExtension];
    CFRelease(last);
    return [extension length] ? (CFStringRef)[extension copy] : NULL;
}

/* Rebuilds a file URL from a changed path; other URLs are changed in their text. */
static CFURLRef __CFURLWithPath(CFURLRef url, NSString *path, Boolean isDirectory)
{
    if (__CFURLIsFile(__CFURL(url)))
        return __CFURLCreateForPath(path, isDirectory, NULL);
    NSURL *absolute = __CFURLAbsolute(__CFURL(url));
    NSString *text = [absolute absoluteString];
    NSString *oldPath = __CFURLRawPath(absolute);
    NSRange at = oldPath != nil ? [text rangeOfString:oldPath] : NSMakeRange(NSNotFound, 0);
    if (at.location == NSNotFound)
        return NULL;
    NSString *newPath = __CFEscapedPath(isDirectory && ![path hasSuffix:@"/"] ? [path stringByAppendingString:@"/"] : path);
    return (CFURLRef)[[NSURL alloc] initWithString:[text stringByReplacingCharactersInRange:at withString:newPath]];
}

CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url, CFStringRef pathComponent,
                                               Boolean isDirectory)
{
    (void)allocator;
    if (url == NULL || pathComponent == NULL)
        return NULL;
    CFURLRef result = NULL;
    __CF_URL_GUARD(result, {
        NSString *path = [__CFURLAbsolute(__CFURL(url)) path];
        if (path == nil || [path length] == 0)
            path = @"/";
        result = __CFURLWithPath(url, [path stringByAppendingPathComponent:(NSString *)pathComponent], isDirectory);
    });
    return result;
}

CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef allocator, CFURLRef url)
{
    (void)allocator;
    if (url == NULL)
        return NULL;
    CFURLRef result = NULL;
    __CF_URL_GUARD(result, {
        NSString *path = [__CFURLAbsolute(__CFURL(url)) path];
        if (path != nil)
            result = __CFURLWithPath(url, [path stringByDeletingLastPathComponent], true);
    });
    return result;
}

CFURLRef CFURLCreateCopyAppendingPathExtension(CFAllocatorRef allocator, CFURLRef url, CFStringRef extension)
{
    (void)allocator;
    if (url == NULL || extension == NULL)
        return NULL;
    CFURLRef result = NULL;
    __CF_URL_GUARD(result, {
        NSString *path = [__CFURLAbsolute(__CFURL(url)) path];
        if (path != nil)
            result = __CFURLWithPath(url, [path stringByAppendingPathExtension:(NSString *)extension],
                                     CFURLHasDirectoryPath(url));
    });
    return result;
}

CFURLRef CFURLCreateCopyDeletingPathExtension(CFAllocatorRef allocator, CFURLRef url)
{
    (void)allocator;
    if (url == NULL)
        return NULL;
    CFURLRef result = NULL;
    __CF_URL_GUARD(result, {
        NSString *path = [__CFURLAbsolute(__CFURL(url)) path];
        if (path != nil)
            result = __CFURLWithPath(url, [path stringByDeletingPathExtension], CFURLHasDirectoryPath(url));
    });
    return result;
}

CFStringRef CFURLCreateStringByReplacingPercentEscapesUsingEncoding(CFAllocatorRef allocator, CFStringRef origString,
                                                                    CFStringRef charsToLeaveEscaped,
                                                                    CFStringEncoding encoding)
{
    __CF_SCOPED_POOL
    (void)allocator;
    if (origString == NULL)
        return NULL;
    /* NULL leaves every escape in place; the empty string replaces them all. */
    if (charsToLeaveEscaped == NULL)
        return CFStringCreateCopy(allocator, origString);
    CFIndex length = CFStringGetLength(origString);
    UInt8 *bytes = malloc((size_t)length + 1);
    NSMutableString *result = [[NSMutableString alloc] init];
    CFIndex i = 0;
    BOOL ok = bytes != NULL;
    while (ok && i < length) {
        UniChar c = CFStringGetCharacterAtIndex(origString, i);
        if (c != '%') {
            [result appendFormat:@"%C", c];
            i++;
            continue;
        }
        /* A run of escapes decodes together, so multi-byte characters survive. */
        CFIndex n = 0;
        while (i < length && CFStringGetCharacterAtIndex(origString, i) == '%') {
            if (i + 2 >= length) {
                ok = NO;
                break;
            }
            char hex[3] = {(char)CFStringGetCharacterAtIndex(origString, i + 1),
                           (char)CFStringGetCharacterAtIndex(origString, i + 2), 0};
            char *end;
            long value = strtol(hex, &end, 16);
            if (*end != '\0') {
                ok = NO;
                break;
            }
            bytes[n++] = (UInt8)value;
            i += 3;
        }
        if (!ok)
            break;
        CFStringRef decoded = CFStringCreateWithBytes(NULL, bytes, n, encoding, false);
        if (decoded == NULL) {
            ok = NO;
            break;
        }
        /* Characters the caller wants kept escaped are escaped again, one by one. */
        CFIndex decodedLength = CFStringGetLength(decoded);
        for (CFIndex k = 0; k < decodedLength; k++) {
            UniChar unit = CFStringGetCharacterAtIndex(decoded, k);
            CFStringRef one = CFStringCreateWithCharacters(NULL, &unit, 1);
            if (charsToLeaveEscaped != NULL && CFStringFind(charsToLeaveEscaped, one, 0).location != kCFNotFound) {
                UInt8 escape[8];
                CFIndex used = 0;
                CFStringGetBytes(one, CFRangeMake(0, 1), encoding, '?', false, escape, sizeof(escape), &used);
                for (CFIndex e = 0; e < used; e++)
                    [result appendFormat:@"%%%02X", escape[e]];
            } else {
                [result appendFormat:@"%C", unit];
            }
            CFRelease(one);
        }
        CFRelease(decoded);
    }
    free(bytes);
    if (!ok) {
        [result release];
        return NULL;
    }
    return (CFStringRef)result;
}

CFStringRef CFURLCreateStringByReplacingPercentEscapes(CFAllocatorRef allocator, CFStringRef originalString,
                                                       CFStringRef charactersToLeaveEscaped)
{
    return CFURLCreateStringByReplacingPercentEscapesUsingEncoding(allocator, originalString, charactersToLeaveEscaped,
                                                                   kCFStringEncodingUTF8);
}

CFStringRef CFURLCreateStringByAddingPercentEscapes(CFAllocatorRef allocator, CFStringRef originalString,
                                                    CFStringRef charactersToLeaveUnescaped,
                                                    CFStringRef legalURLCharactersToBeEscaped,
                                                    CFStringEncoding encoding)
{
    __CF_SCOPED_POOL
    (void)allocator;
    if (originalString == NULL)
        return NULL;
    /* Characters legal in a URL stay; the rest is escaped byte by byte. */
    static const char *legal = "-._~!$&'()*+,;=:@/?#[]";
    NSMutableString *result = [[NSMutableString alloc] init];
    CFIndex length = CFStringGetLength(originalString);
    for (CFIndex i = 0; i < length; i++) {
        UniChar pair[2] = {CFStringGetCharacterAtIndex(originalString, i), 0};
        UniChar c = pair[0];
        CFIndex width = 1;
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < length) {
            pair[1] = CFStringGetCharacterAtIndex(originalString, i + 1);
            width = 2;
            i++;
        }
        CFStringRef one = CFStringCreateWithCharacters(NULL, pair, width);
        BOOL keep = (c < 0x80 && ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                                  (c != 0 && strchr(legal, (int)c) != NULL)));
        if (keep && legalURLCharactersToBeEscaped != NULL &&
            CFStringFind(legalURLCharactersToBeEscaped, one, 0).location != kCFNotFound)
            keep = NO;
        if (!keep && c != '%' && charactersToLeaveUnescaped != NULL &&
            CFStringFind(charactersToLeaveUnescaped, one, 0).location != kCFNotFound)
            keep = YES;
        if (keep) {
            [result appendString:(NSString *)one];
        } else {
            UInt8 bytes[8];
            CFIndex used = 0;
            CFStringGetBytes(one, CFRangeMake(0, width), encoding, '?', false, bytes, sizeof(bytes), &used);
            for (CFIndex k = 0; k < used; k++)
                [result appendFormat:@"%%%02X", bytes[k]];
        }
        CFRelease(one);
    }
    return (CFStringRef)result;
}
