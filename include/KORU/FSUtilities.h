/* File-system and process helpers over the File Manager's FSRef.
 *
 * Names and paths of an object in several forms, refs made from paths, kind
 * tests (folder, package, volume, invisible, Mach-O executable), files
 * created after a template, whole forks read, written and copied, files
 * copied with both forks; the running processes and their bundle locations;
 * and a file's resource fork opened as the current resource file with its
 * 'vers' resource read.
 *
 * Every function checks its pointer arguments and answers false, NULL or -1
 * instead of failing; none logs.  ...Alloc... results are freed with free,
 * ...Create... and ...Copy... results released with CFRelease.
 *
 * State: the kind tests share a one-entry cache keyed by the address of the
 * FSRef asked about (not its contents): asking again with the same buffer
 * answers from the cache even if the buffer now names another item.  Callers
 * that reuse a buffer for another item must expect the earlier answer.  The
 * cache and gAppResRef are process-wide and unguarded: use these functions
 * from one thread at a time. */
#ifndef KORU_FSUTILITIES_H
#define KORU_FSUTILITIES_H

#include <ApplicationServices/Processes.h>
#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/Files.h>
#include <CoreServices/LaunchServices.h>
#include <CoreServices/Resources.h>

CF_EXTERN_C_BEGIN

/* --- Names and paths ---------------------------------------------------- */

/* The object's name; NULL for a NULL or stale ref. */
CFStringRef FSCopyNameString(const FSRef *ref);
/* That name converted with CFStringAllocCString; NULL on failure. */
char *FSAllocNameCString(const FSRef *ref, CFStringEncoding encoding);
/* The path of the object's URL in the path style. */
CFStringRef FSCopyPathStringOfStyle(const FSRef *ref, CFURLPathStyle pathStyle);
char *FSAllocPathCStringOfStyle(const FSRef *ref, CFURLPathStyle pathStyle, CFStringEncoding encoding);
/* The POSIX path in a new zeroed buffer of 1025 bytes; NULL for a path
 * longer than 1024 bytes. */
char *FSAllocPathUTF8String(const FSRef *ref);
CFStringRef FSCopyPathString(const FSRef *ref);
char *FSAllocPathCString(const FSRef *ref, CFStringEncoding encoding);
/* The object at the POSIX path; true when it exists. */
Boolean FSMakeFromPosixPath(CFStringRef path, FSRef *ref);
/* The object at a path of the given style; true when it exists. */
Boolean FSMakeFromPathString(CFStringRef path, CFURLPathStyle pathStyle, Boolean isDirectory, FSRef *ref);
/* The child called name (1 to 255 UTF-16 units) of the folder; true when it exists. */
Boolean FSGetChild(const FSRef *parent, FSRef *child, CFStringRef name);
/* The executable of the bundle at bundleRef. */
Boolean FSBundleGetExecutableFSRef(const FSRef *bundleRef, FSRef *executableRef);

/* --- Kind tests (false for a NULL or stale ref) --------------------------- */

Boolean FSIsContainer(const FSRef *ref);
Boolean FSIsPackage(const FSRef *ref);
Boolean FSIsVolume(const FSRef *ref);
Boolean FSIsInvisible(const FSRef *ref);
/* A container that is no volume. */
Boolean FSIsDirectory(const FSRef *ref);
/* A container that is neither package nor volume. */
Boolean FSIsFolder(const FSRef *ref);
/* All bits of mask set in the item's Launch Services flags; defaultValue when
 * the information cannot be obtained. */
Boolean FSIsLSItemInfoRecordFlagOn(const FSRef *ref, LSItemInfoFlags mask, Boolean defaultValue);
/* The data fork starts with a Mach-O or universal-binary magic number, in
 * either byte order (an ELF executable is none). */
Boolean FSIsMachOBinary(const FSRef *ref);

/* --- Files and forks ------------------------------------------------------ */

/* Creates the file name in parent; with a template its settable catalog
 * information (dates, permissions, Finder information) is applied.  newRef
 * and templateRef may be NULL. */
Boolean FSCreateFile(const FSRef *parent, CFStringRef name, const FSRef *templateRef, FSRef *newRef);
/* The whole fork as new data (empty data for an empty fork); NULL on failure
 * and for forks of 4 GB or more. */
CFDataRef FSReadFileFork(const FSRef *ref, const HFSUniStr255 *forkName);
/* Replaces the fork's contents with data; empty data leaves an empty fork. */
Boolean FSWriteFileFork(const FSRef *ref, const HFSUniStr255 *forkName, CFDataRef data);
/* Reads the source's fork whole and writes it whole to the destination. */
Boolean FSCopyFileFork(const FSRef *source, const FSRef *destination, const HFSUniStr255 *forkName);
/* Copies the file with both forks into the folder under name, replacing an
 * object of that name; true only when both forks were copied.  newRef may be
 * NULL.  A source that is gone or a folder, a destination that is the
 * source itself, or a name "._x" beside an item x (the name of the file that
 * holds x's resource fork and Finder information) gives false and leaves
 * everything as it was. */
Boolean FSCopyFile(const FSRef *source, const FSRef *destinationFolder, CFStringRef name, FSRef *newRef);

/* --- Processes ------------------------------------------------------------ */

/* Called for each process; answer false to stop. */
typedef Boolean (*ProcessEnumerationProcPtr)(ProcessSerialNumber *psn, void *context);

/* Calls callback for every process in enumeration order; false when the
 * callback stopped it or for a NULL callback. */
Boolean EnumerateAllProcess(ProcessEnumerationProcPtr callback, void *context);
/* Brings the current process to the front. */
Boolean ProcessActivate(void);
Boolean FSGetCurrentProcess(FSRef *ref);
Boolean FSGetFrontProcess(FSRef *ref);
CFURLRef CFURLCopyCurrentProcess(void);
/* One 80-byte FSRef per process whose bundle location could be had, in
 * enumeration order; NULL when the enumeration was stopped. */
CFMutableDataRef FSCopyAllProcess(void);
/* FSCopyAllProcess's callback: appends the process's location to the
 * CFMutableData context; always continues. */
Boolean FSCopyAllProcessEnumeration(ProcessSerialNumber *psn, void *data);
Boolean FSIsRunningProcess(const FSRef *ref);
Boolean CFURLIsRunningProcess(CFURLRef url);
Boolean FSIsFrontProcess(const FSRef *ref);
/* The first process whose bundle location is ref; psn is {0, 0} when none. */
Boolean FSGetProcessSerialNumber(const FSRef *ref, ProcessSerialNumber *psn);
Boolean CFURLGetProcessSerialNumber(CFURLRef url, ProcessSerialNumber *psn);

/* The context of FSGetProcessSerialNumberEnumeration. */
typedef struct FSProcessSerialNumberSearch {
    const FSRef *target;
    Boolean found;
    ProcessSerialNumber *psn;
} FSProcessSerialNumberSearch;

/* Stops (answers false) at the process whose location is the target,
 * copying its number and setting found. */
Boolean FSGetProcessSerialNumberEnumeration(ProcessSerialNumber *psn, void *context);
/* Brings the process of that bundle to the front; false when none runs. */
Boolean FSSetFrontProcess(const FSRef *ref);

/* --- Resource forks ------------------------------------------------------- */

/* The resource file made current again when RFClose closes one; -1 (the
 * initial value) saves nothing, so a host sets it before relying on it. */
extern SInt16 gAppResRef;

/* Opens the resource fork (created first when forWriting) as the current
 * resource file; its reference number, or -1. */
SInt16 RFOpen(const FSRef *ref, Boolean forWriting);
/* Closes *refNum unless it is -1, makes gAppResRef current and sets *refNum to -1. */
void RFClose(SInt16 *refNum);
/* The 'vers' resource of that id in the current resource file; the record is
 * zeroed first and stays zeroed on failure (a resource under 8 bytes). */
Boolean RFGetVersion(SInt16 resID, VersRec *version);

CF_EXTERN_C_END

#endif
