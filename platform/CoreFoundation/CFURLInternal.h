/* Private to CFURL: reference resolution and the file-system path styles. */
#ifndef COREFOUNDATION_CFURLINTERNAL_H
#define COREFOUNDATION_CFURLINTERNAL_H

#include "CFInternal.h"

/* A path with its "." and ".." segments worked out; autoreleased. */
NSString *__CFURLRemoveDotSegments(NSString *path);
/* The target of a reference against an absolute base URL's text; autoreleased. */
NSString *__CFURLResolveReference(NSString *reference, NSString *baseText);
/* The URL's absolute text: its own when it has no base; autoreleased. */
NSString *__CFURLAbsoluteString(NSURL *url);
/* The path component of a URL's text, escapes kept; autoreleased. */
NSString *__CFURLRawPathOfText(NSString *text);
/* The URL itself when it has no base, else its resolved form; autoreleased. */
NSURL *__CFURLAbsolute(NSURL *url);

/* The POSIX path of an HFS path ("Volume:folder:file" absolute, ":folder"
 * or "folder" relative); nil when it names no mounted volume.  *isAbsolute
 * tells which it was.  Autoreleased. */
NSString *__CFPOSIXPathFromHFSPath(NSString *hfs, BOOL *isAbsolute);
/* The HFS path of an absolute POSIX path, led by its volume's name; autoreleased. */
NSString *__CFHFSPathFromPOSIXPath(NSString *path);

#endif
