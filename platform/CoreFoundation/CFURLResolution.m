/* Resolving a URL reference against its base, by RFC 3986's algorithm.
 * Foundation's resolver keeps the base's ";params" and "?query" on a new
 * path and leaves "." and ".." segments in place, so every CF call that
 * needs a URL's absolute form comes here instead. */
#include "CFURLInternal.h"

typedef struct {
    NSString *scheme;    /* nil when absent */
    NSString *authority; /* nil when absent, "" for "//" */
    NSString *path;      /* never nil, may be empty */
    NSString *query;     /* nil when absent */
    NSString *fragment;  /* nil when absent */
} __CFURLParts;

/* Splits a URL or reference into its five components. */
static __CFURLParts __CFURLSplit(NSString *text)
{
    __CFURLParts parts = {nil, nil, @"", nil, nil};
    NSUInteger length = [text length];
    NSRange hash = [text rangeOfString:@"#"];
    if (hash.location != NSNotFound) {
        parts.fragment = [text substringFromIndex:hash.location + 1];
        text = [text substringToIndex:hash.location];
        length = hash.location;
    }
    NSRange question = [text rangeOfString:@"?"];
    if (question.location != NSNotFound) {
        parts.query = [text substringFromIndex:question.location + 1];
        text = [text substringToIndex:question.location];
        length = question.location;
    }
    /* A scheme is letters, digits, "+", "-", "." before the first ":",
     * starting with a letter, and no "/" before it. */
    NSUInteger i = 0;
    while (i < length) {
        unichar c = [text characterAtIndex:i];
        BOOL letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (!(letter || (i > 0 && ((c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.'))))
            break;
        i++;
    }
    if (i > 0 && i < length && [text characterAtIndex:i] == ':') {
        parts.scheme = [text substringToIndex:i];
        text = [text substringFromIndex:i + 1];
    }
    if ([text hasPrefix:@"//"]) {
        NSRange slash = [text rangeOfString:@"/" options:0 range:NSMakeRange(2, [text length] - 2)];
        NSUInteger end = slash.location == NSNotFound ? [text length] : slash.location;
        parts.authority = [text substringWithRange:NSMakeRange(2, end - 2)];
        text = [text substringFromIndex:end];
    }
    parts.path = text;
    return parts;
}

NSString *__CFURLRemoveDotSegments(NSString *path)
{
    NSMutableString *input = [NSMutableString stringWithString:path];
    NSMutableString *output = [NSMutableString string];
    while ([input length] > 0) {
        if ([input hasPrefix:@"../"]) {
            [input deleteCharactersInRange:NSMakeRange(0, 3)];
        } else if ([input hasPrefix:@"./"]) {
            [input deleteCharactersInRange:NSMakeRange(0, 2)];
        } else if ([input hasPrefix:@"/./"]) {
            [input deleteCharactersInRange:NSMakeRange(0, 2)];
        } else if ([input isEqualToString:@"/."]) {
            [input setString:@"/"];
        } else if ([input hasPrefix:@"/../"] || [input isEqualToString:@"/.."]) {
            [input replaceCharactersInRange:NSMakeRange(0, [input length] == 3 ? 3 : 4) withString:@"/"];
            NSRange last = [output rangeOfString:@"/" options:NSBackwardsSearch];
            [output deleteCharactersInRange:NSMakeRange(last.location == NSNotFound ? 0 : last.location,
                                                        [output length] -
                                                            (last.location == NSNotFound ? 0 : last.location))];
        } else if ([input isEqualToString:@"."] || [input isEqualToString:@".."]) {
            [input setString:@""];
        } else {
            /* Move the first segment, with its leading "/", to the output. */
            NSUInteger start = [input hasPrefix:@"/"] ? 1 : 0;
            NSRange slash = [input rangeOfString:@"/" options:0 range:NSMakeRange(start, [input length] - start)];
            NSUInteger end = slash.location == NSNotFound ? [input length] : slash.location;
            [output appendString:[input substringToIndex:end]];
            [input deleteCharactersInRange:NSMakeRange(0, end)];
        }
    }
    return output;
}

static NSString *__CFURLMerge(const __CFURLParts *base, NSString *path)
{
    if (base->authority != nil && [base->path length] == 0)
        return [@"/" stringByAppendingString:path];
    NSRange slash = [base->path rangeOfString:@"/" options:NSBackwardsSearch];
    if (slash.location == NSNotFound)
        return path;
    return [[base->path substringToIndex:slash.location + 1] stringByAppendingString:path];
}

static NSString *__CFURLJoin(const __CFURLParts *parts)
{
    NSMutableString *text = [NSMutableString string];
    if (parts->scheme != nil)
        [text appendFormat:@"%@:", parts->scheme];
    if (parts->authority != nil)
        [text appendFormat:@"//%@", parts->authority];
    [text appendString:parts->path];
    if (parts->query != nil)
        [text appendFormat:@"?%@", parts->query];
    if (parts->fragment != nil)
        [text appendFormat:@"#%@", parts->fragment];
    return text;
}

NSString *__CFURLResolveReference(NSString *reference, NSString *baseText)
{
    __CFURLParts r = __CFURLSplit(reference);
    __CFURLParts base = __CFURLSplit(baseText);
    __CFURLParts t = {nil, nil, @"", nil, r.fragment};
    if (r.scheme != nil) {
        t.scheme = r.scheme;
        t.authority = r.authority;
        t.path = __CFURLRemoveDotSegments(r.path);
        t.query = r.query;
    } else {
        if (r.authority != nil) {
            t.authority = r.authority;
            t.path = __CFURLRemoveDotSegments(r.path);
            t.query = r.query;
        } else {
            if ([r.path length] == 0) {
                t.path = base.path;
                t.query = r.query != nil ? r.query : base.query;
            } else {
                if ([r.path hasPrefix:@"/"])
                    t.path = __CFURLRemoveDotSegments(r.path);
                else
                    t.path = __CFURLRemoveDotSegments(__CFURLMerge(&base, r.path));
                t.query = r.query;
            }
            t.authority = base.authority;
        }
        t.scheme = base.scheme;
    }
    return __CFURLJoin(&t);
}

NSString *__CFURLAbsoluteString(NSURL *url)
{
    NSString *relative = [url relativeString];
    NSURL *base = [url baseURL];
    if (base == nil || relative == nil)
        return relative;
    NSString *baseText = __CFURLAbsoluteString(base);
    return baseText != nil ? __CFURLResolveReference(relative, baseText) : relative;
}

NSURL *__CFURLAbsolute(NSURL *url)
{
    if ([url baseURL] == nil)
        return url;
    NSString *text = __CFURLAbsoluteString(url);
    NSURL *absolute = text != nil ? [NSURL URLWithString:text] : nil;
    return absolute != nil ? absolute : [url absoluteURL];
}

NSString *__CFURLRawPathOfText(NSString *text)
{
    if (text == nil)
        return nil;
    return __CFURLSplit(text).path;
}
