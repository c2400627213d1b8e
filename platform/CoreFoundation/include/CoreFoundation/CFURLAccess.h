/* URL resource access: reading and writing the data and properties of the
 * object a file URL names.
 *
 * Only file URLs are served (other schemes answer kCFURLUnknownSchemeError).
 * Data is written through a temporary file in the same folder that then
 * replaces the target, so a failed write never leaves a truncated file; an
 * existing file keeps its permissions.  A directory URL (ending in "/") given
 * data creates the folder.  The properties are the file's POSIX mode
 * (kCFURLFilePOSIXMode, a CFNumber), owner (kCFURLFileOwnerID, a CFNumber),
 * existence, length, modification date and, for folders, the contents.
 * Every returned object belongs to the caller (CFRelease); the error code out
 * argument receives 0 on success.  The functions may run on any thread. */
#ifndef COREFOUNDATION_CFURLACCESS_H
#define COREFOUNDATION_CFURLACCESS_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

CF_EXTERN_C_BEGIN

typedef CFIndex CFURLError;
enum {
    kCFURLUnknownError = -10,
    kCFURLUnknownSchemeError = -11,
    kCFURLResourceNotFoundError = -12,
    kCFURLResourceAccessViolationError = -13,
    kCFURLRemoteHostUnavailableError = -14,
    kCFURLImproperArgumentsError = -15,
    kCFURLUnknownPropertyKeyError = -16,
    kCFURLPropertyKeyUnavailableError = -17,
    kCFURLTimeoutError = -18
};

/* Property keys. */
CF_EXPORT const CFStringRef kCFURLFileExists;              /* CFBoolean */
CF_EXPORT const CFStringRef kCFURLFileDirectoryContents;   /* CFArray of CFURLs (folders only) */
CF_EXPORT const CFStringRef kCFURLFileLength;              /* CFNumber (64-bit) */
CF_EXPORT const CFStringRef kCFURLFileLastModificationTime; /* CFDate */
CF_EXPORT const CFStringRef kCFURLFilePOSIXMode;           /* CFNumber (permission bits) */
CF_EXPORT const CFStringRef kCFURLFileOwnerID;             /* CFNumber (user id) */
CF_EXPORT const CFStringRef kCFURLHTTPStatusCode;
CF_EXPORT const CFStringRef kCFURLHTTPStatusLine;

/* Reads the whole file into *resourceData (when non-NULL) and the desired
 * properties (all of them when desiredProperties is NULL) into *properties
 * (when non-NULL).  false with kCFURLResourceNotFoundError for a missing
 * object, kCFURLImproperArgumentsError for a NULL URL; when only properties
 * are asked for, a missing object still gives kCFURLFileExists = false. */
CF_EXPORT Boolean CFURLCreateDataAndPropertiesFromResource(CFAllocatorRef alloc, CFURLRef url,
                                                          CFDataRef *resourceData, CFDictionaryRef *properties,
                                                          CFArrayRef desiredProperties, SInt32 *errorCode);

/* Writes the data (when non-NULL), then each property: kCFURLFilePOSIXMode
 * changes the permissions, kCFURLFileOwnerID the owner.  false with an error
 * code at the first failure (kCFURLUnknownPropertyKeyError for any other
 * key, kCFURLResourceAccessViolationError when the system refuses). */
CF_EXPORT Boolean CFURLWriteDataAndPropertiesToResource(CFURLRef url, CFDataRef dataToWrite,
                                                        CFDictionaryRef propertiesToWrite, SInt32 *errorCode);

/* Deletes the file or the empty folder. */
CF_EXPORT Boolean CFURLDestroyResource(CFURLRef url, SInt32 *errorCode);

/* One property, or NULL (with the error code) when it cannot be had. */
CF_EXPORT CFTypeRef CFURLCreatePropertyFromResource(CFAllocatorRef alloc, CFURLRef url, CFStringRef property,
                                                    SInt32 *errorCode);

CF_EXTERN_C_END

#endif
