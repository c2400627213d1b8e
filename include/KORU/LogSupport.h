/* The three helpers the CF log needs: bytes of a string in whatever encoding
 * can hold it, the URL of a standard folder, and the name of a process.
 *
 * Every Create/Copy result belongs to the caller, who releases it with
 * CFRelease.  The functions keep no state and may run on any thread. */
#ifndef KORU_LOGSUPPORT_H
#define KORU_LOGSUPPORT_H

#include <CoreFoundation/CoreFoundation.h>
#include <MacTypes.h>

CF_EXTERN_C_BEGIN

/* The string's external representation in the first encoding that takes it:
 * the system encoding, then each available encoding, all without loss; then
 * the same again with the loss byte 0xFF, continuing the list where the first
 * pass stopped (after a first pass that failed everywhere only the system
 * encoding is tried).  NULL for a NULL string, a missing encoding list or
 * when nothing converts. */
CFDataRef CFStringCreateConvertableExternalRepresentation(CFStringRef string);

/* The URL of the standard folder (FSFindFolder with domain, type and create
 * flag), with component appended when it is not NULL (as a folder when
 * isDirectory is true).  NULL when the folder is not found or no URL can be
 * made. */
CFURLRef CFURLCreateWithFindFolder(SInt16 domain, OSType folderType, Boolean createFolder,
                                   CFStringRef component, Boolean isDirectory);

/* The name of the current / the front process; NULL on any failure. */
CFStringRef CFStringCopyCurrentProcessName(void);
CFStringRef CFStringCopyFrontProcessName(void);

CF_EXTERN_C_END

#endif
