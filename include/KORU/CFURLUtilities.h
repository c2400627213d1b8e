/* CF URL, bundle, dictionary and localisation helpers.
 *
 * Files and folders located as CFURLs (inside a bundle, in the standard
 * folders, from FSRef or FSSpec), bundles created from such places, strings
 * tables read per localisation, dictionaries read from and written to
 * property-list files, a file's POSIX mode and owner, and opening a URL with
 * its default application.  A NULL bundle argument means the main bundle
 * (except in CFBundleGetResourceFSRef); an object that is not a bundle
 * counts as a missing one.  Every ...Create... and ...Copy...
 * result belongs to the caller (CFRelease).  Bad arguments, missing objects
 * and failed platform calls give NULL or false; the only thing logged is the
 * parse error of a dictionary file.  Nothing here keeps state; the functions
 * may run on any thread. */
#ifndef KORU_CFURLUTILITIES_H
#define KORU_CFURLUTILITIES_H

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/Files.h>
#include <CoreServices/LaunchServices.h>
#include <KORU/CFStringUtilities.h>
#include <KORU/LogSupport.h>

CF_EXTERN_C_BEGIN

/* --- Bundle locations -------------------------------------------------- */

/* The folder that contains the bundle. */
CFURLRef CFBundleCopyDirectoryURL(CFBundleRef bundle);

/* That folder with the component appended (the folder itself for a NULL component). */
CFURLRef CFBundleCopyDirectoryURLAppendingPathComponent(CFBundleRef bundle, CFStringRef component,
                                                        Boolean isDirectory);

/* The folder holding the bundle's executable, with the component appended
 * (the folder itself for a NULL component); NULL without an executable. */
CFURLRef CFBundleCopyExecutableDirectoryURLAppendingPathComponent(CFBundleRef bundle, CFStringRef component,
                                                                  Boolean isDirectory);

/* The bundle's resources folder, with the component appended (the folder
 * itself for a NULL component). */
CFURLRef CFBundleCopyResourcesDirectoryURLAppendingPathComponent(CFBundleRef bundle, CFStringRef component,
                                                                 Boolean isDirectory);

/* Fills ref with the bundle's executable; false for a NULL ref or no executable. */
Boolean CFBundleGetExecutableFSRef(CFBundleRef bundle, FSRef *ref);

/* Fills ref with the resource (CFBundleCopyResourceURL); false for a NULL
 * bundle (no main-bundle default here), a NULL ref or a missing resource. */
Boolean CFBundleGetResourceFSRef(CFBundleRef bundle, CFStringRef resourceName, CFStringRef resourceType,
                                 CFStringRef subDirName, FSRef *ref);

/* --- Bundle creation --------------------------------------------------- */

CFBundleRef CFBundleCreateFromFSRef(const FSRef *ref);
/* The folder at the POSIX path. */
CFBundleRef CFBundleCreateFromPOSIXPath(CFStringRef path);
/* The bundle called name in a standard folder (never created); NULL for a NULL name. */
CFBundleRef CFBundleCreateWithFindFolder(SInt16 domain, OSType folderType, CFStringRef name);
/* The bundle called name beside the given bundle's executable; NULL for a void name. */
CFBundleRef CFBundleCreateFromBundleExecutableDirectory(CFBundleRef bundle, CFStringRef name);

/* --- URLs -------------------------------------------------------------- */

/* True when the URL names an existing object. */
Boolean CFURLIsExist(CFURLRef url);

/* The object's path as the file system has it (through an FSRef); NULL when
 * it does not exist. */
CFStringRef CFURLCopyPosixPath(CFURLRef url);

/* The URL of the object an FSSpec names; NULL on any error. */
CFURLRef CFURLCreateFromFSSpec(const FSSpec *fsSpec);

/* Fills fsSpec for the existing object the URL names. */
Boolean CFURLGetFSSpec(CFURLRef url, FSSpec *fsSpec);

/* Opens the URL with its default application (LSOpenFromURLSpec with the
 * flags); true when that answers 0.  false for NULL or a non-URL. */
Boolean CFURLOpenWithLSLaunchFlags(CFURLRef url, LSLaunchFlags flags);

/* Sets the file's permission bits; true when the write succeeds with error 0. */
Boolean CFURLSetFilePOSIXMode(CFURLRef url, UInt16 mode);

/* Sets the file's owner; true when the write succeeds with error 0. */
Boolean CFURLSetFileOwnerID(CFURLRef url, UInt32 userID);

/* --- Dictionaries ------------------------------------------------------ */

/* The value under the key "%ld" of the number (borrowed); NULL when absent
 * or for a NULL (or non-dictionary) argument. */
const void *CFDictionaryGetValueForNumber(CFDictionaryRef dictionary, long number);

/* Writes the dictionary as an XML property list; true when the write
 * succeeds with error 0, false for anything but a dictionary. */
Boolean CFDictionaryWriteToURL(CFDictionaryRef dictionary, CFURLRef url);

/* A mutable dictionary (mutable containers and leaves) read from a property
 * list file; NULL when the file is missing, holds no dictionary, or does
 * not parse (the parse error is logged through CFLogCore). */
CFMutableDictionaryRef CFDictionaryCreateMutableWithContentsOfURL(CFURLRef url);

/* The same for a resource of the bundle (NULL = main bundle). */
CFMutableDictionaryRef CFDictionaryCreateMutableWithResource(CFStringRef resourceName, CFStringRef resourceType,
                                                             CFStringRef subDirName, CFBundleRef bundle);

/* --- Localisation ------------------------------------------------------ */

/* The immutable dictionary of table.strings in the named localisation (a
 * NULL table means "Localizable"); NULL when missing or unreadable. */
CFDictionaryRef CFBundleCopyStringsDictionaryForLocalization(CFBundleRef bundle, CFStringRef tableName,
                                                             CFStringRef localizationName);

/* The key's string in that table and localisation, else the default (""
 * for a NULL default); a NULL key answers the default as it is.  Never
 * falls back to another localisation or table.  Retained for the caller. */
CFStringRef CFBundleCopyStringForLocalization(CFBundleRef bundle, CFStringRef key, CFStringRef defaultValue,
                                              CFStringRef tableName, CFStringRef localizationName);

CF_EXTERN_C_END

#endif
