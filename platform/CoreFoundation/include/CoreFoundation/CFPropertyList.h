/* Property lists: reading and writing trees of strings, data, numbers,
 * booleans, dates, arrays and dictionaries.
 *
 * Readers take every form a Mac writes: XML, binary ("bplist00") and the old
 * OpenStep text form, including strings tables ("key" = "value"; without the
 * enclosing braces), in UTF-8 or in UTF-16 with a byte-order mark.  The
 * mutability option decides whether containers (and leaves: strings and
 * data) come back mutable.  Writers produce XML or binary.  Every result
 * belongs to the caller (CFRelease).  The functions keep no state and may
 * run on any thread; a tree is not to be changed while it is written. */
#ifndef COREFOUNDATION_CFPROPERTYLIST_H
#define COREFOUNDATION_CFPROPERTYLIST_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFError.h>

CF_EXTERN_C_BEGIN


typedef CFOptionFlags CFPropertyListMutabilityOptions;
enum {
    kCFPropertyListImmutable = 0,
    kCFPropertyListMutableContainers = 1,
    kCFPropertyListMutableContainersAndLeaves = 2
};

typedef CFIndex CFPropertyListFormat;
enum {
    kCFPropertyListOpenStepFormat = 1,
    kCFPropertyListXMLFormat_v1_0 = 100,
    kCFPropertyListBinaryFormat_v1_0 = 200
};

/* Parses data in any of the readable forms.  NULL when data is NULL, empty
 * or malformed; then, when errorString is non-NULL, it receives a description
 * of the problem (caller releases), and NULL on success. */
CF_EXPORT CFPropertyListRef CFPropertyListCreateFromXMLData(CFAllocatorRef allocator, CFDataRef xmlData,
                                                            CFOptionFlags mutabilityOption,
                                                            CFStringRef *errorString);

/* The tree as XML; NULL when it is not a valid property list. */
CF_EXPORT CFDataRef CFPropertyListCreateXMLData(CFAllocatorRef allocator, CFPropertyListRef propertyList);

/* Parses like CFPropertyListCreateFromXMLData; format (if non-NULL) receives
 * the form that was read, error (if non-NULL) a CFErrorRef on failure. */
CF_EXPORT CFPropertyListRef CFPropertyListCreateWithData(CFAllocatorRef allocator, CFDataRef data,
                                                         CFOptionFlags options, CFPropertyListFormat *format,
                                                         CFErrorRef *error);

/* The tree in the XML or binary form; NULL (and an error) for the OpenStep
 * form, an unknown form or an invalid tree.  options is unused. */
CF_EXPORT CFDataRef CFPropertyListCreateData(CFAllocatorRef allocator, CFPropertyListRef propertyList,
                                             CFPropertyListFormat format, CFOptionFlags options,
                                             CFErrorRef *error);

/* A copy of the whole tree with the given mutability; NULL when it is not a
 * valid property list. */
CF_EXPORT CFPropertyListRef CFPropertyListCreateDeepCopy(CFAllocatorRef allocator, CFPropertyListRef propertyList,
                                                         CFOptionFlags mutabilityOption);

/* Whether every node can be written in the form: strings, data, arrays and
 * dictionaries with string keys everywhere; numbers, booleans and dates
 * only in XML and binary.  false for NULL. */
CF_EXPORT Boolean CFPropertyListIsValid(CFPropertyListRef plist, CFPropertyListFormat format);

CF_EXTERN_C_END

#endif
