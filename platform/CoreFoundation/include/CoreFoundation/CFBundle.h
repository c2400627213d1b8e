/* Bundles.  A CFBundleRef is an NSBundle *; both the GNUstep layout
 * (Resources/Info-gnustep.plist, Resources/, the executable at the top) and
 * the Mac layout (Contents/Info.plist, Contents/Resources/,
 * Contents/MacOS/) are read.  Bundles are uniqued by path and live as long
 * as the process: Get functions lend them, Create hands out a reference the
 * caller releases.
 *
 * Resources are looked for among the non-localised resources first, then in
 * the .lproj folders of the localisations that apply: the user's preferred
 * languages (the AppleLanguages default, else the POSIX locale), then the
 * bundle's development region.  A localisation matches its folder under the
 * code or the old English name ("fr" or "French"); a regional name ("fr_CA")
 * also matches its language.  All functions may run on any thread. */
#ifndef COREFOUNDATION_CFBUNDLE_H
#define COREFOUNDATION_CFBUNDLE_H

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

CF_EXTERN_C_BEGIN

typedef struct __CFBundle *CFBundleRef;

CF_EXPORT const CFStringRef kCFBundleInfoDictionaryVersionKey;
CF_EXPORT const CFStringRef kCFBundleExecutableKey;
CF_EXPORT const CFStringRef kCFBundleIdentifierKey;
CF_EXPORT const CFStringRef kCFBundleVersionKey;
CF_EXPORT const CFStringRef kCFBundleDevelopmentRegionKey;
CF_EXPORT const CFStringRef kCFBundleNameKey;
CF_EXPORT const CFStringRef kCFBundleLocalizationsKey;

CF_EXPORT CFTypeID CFBundleGetTypeID(void);
/* The bundle of the running program (for a plain executable, its folder,
 * whose executable is then that program). */
CF_EXPORT CFBundleRef CFBundleGetMainBundle(void);
/* NULL when no loaded or already created bundle has the identifier. */
CF_EXPORT CFBundleRef CFBundleGetBundleWithIdentifier(CFStringRef bundleID);
/* NULL when the URL is not a file URL naming an existing folder. */
CF_EXPORT CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef bundleURL);
CF_EXPORT CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle);
/* NULL when the bundle has no executable. */
CF_EXPORT CFURLRef CFBundleCopyExecutableURL(CFBundleRef bundle);
CF_EXPORT CFStringRef CFBundleGetIdentifier(CFBundleRef bundle);
CF_EXPORT CFDictionaryRef CFBundleGetInfoDictionary(CFBundleRef bundle);
CF_EXPORT CFTypeRef CFBundleGetValueForInfoDictionaryKey(CFBundleRef bundle, CFStringRef key);
/* Loads the executable into the process (once); false when it cannot be loaded. */
CF_EXPORT Boolean CFBundleLoadExecutable(CFBundleRef bundle);
CF_EXPORT Boolean CFBundleIsExecutableLoaded(CFBundleRef bundle);
/* Code is never unloaded here (Objective-C classes cannot be); this only forgets the load. */
CF_EXPORT void CFBundleUnloadExecutable(CFBundleRef bundle);
/* The address of an exported symbol, loading the executable first; NULL when
 * absent.  A variable of a library that the program also links is the copy
 * the program holds, the one both use. */
CF_EXPORT void *CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef functionName);
CF_EXPORT void *CFBundleGetDataPointerForName(CFBundleRef bundle, CFStringRef symbolName);

/* The CFBundleDevelopmentRegion of the Info dictionary, or NULL. */
CF_EXPORT CFStringRef CFBundleGetDevelopmentRegion(CFBundleRef bundle);

/* The absolute URL of the resources folder (which may not exist). */
CF_EXPORT CFURLRef CFBundleCopyResourcesDirectoryURL(CFBundleRef bundle);

/* The URL of resourceName.resourceType (just resourceName when the type is
 * NULL or empty) in the subfolder of the resources, non-localised first,
 * then in the localisations that apply.  A NULL name finds the first
 * resource of the type, except for "strings", where it means the default
 * table "Localizable".  NULL when nothing is found. */
CF_EXPORT CFURLRef CFBundleCopyResourceURL(CFBundleRef bundle, CFStringRef resourceName, CFStringRef resourceType,
                                           CFStringRef subDirName);

/* The same, trying only the named localisation after the non-localised resources. */
CF_EXPORT CFURLRef CFBundleCopyResourceURLForLocalization(CFBundleRef bundle, CFStringRef resourceName,
                                                          CFStringRef resourceType, CFStringRef subDirName,
                                                          CFStringRef localizationName);

/* Every resource of the type (all for NULL), non-localised and in the first
 * localisation that applies, sorted by name; an empty array when none. */
CF_EXPORT CFArrayRef CFBundleCopyResourceURLsOfType(CFBundleRef bundle, CFStringRef resourceType,
                                                    CFStringRef subDirName);

/* The names of the bundle's .lproj folders, sorted. */
CF_EXPORT CFArrayRef CFBundleCopyBundleLocalizations(CFBundleRef bundle);

/* Those names of locArray that the user's languages pick, best first; the
 * first name when none is picked.  NULL for NULL. */
CF_EXPORT CFArrayRef CFBundleCopyPreferredLocalizationsFromArray(CFArrayRef locArray);

/* The string for key in tableName.strings (NULL: "Localizable") of the
 * localisation that applies; when the key is missing, value, or the key
 * itself when value is NULL or empty.  A NULL key answers value (or "").
 * Retained for the caller. */
CF_EXPORT CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key, CFStringRef value,
                                                  CFStringRef tableName);

#define CFCopyLocalizedString(key, comment) \
    CFBundleCopyLocalizedString(CFBundleGetMainBundle(), (key), (key), NULL)
#define CFCopyLocalizedStringFromTable(key, tbl, comment) \
    CFBundleCopyLocalizedString(CFBundleGetMainBundle(), (key), (key), (tbl))
#define CFCopyLocalizedStringFromTableInBundle(key, tbl, bundle, comment) \
    CFBundleCopyLocalizedString((bundle), (key), (key), (tbl))

/* The bundles in the folder whose extension is bundleType (every folder for
 * NULL), sorted by name; an empty array when there are none. */
CF_EXPORT CFArrayRef CFBundleCreateBundlesFromDirectory(CFAllocatorRef allocator, CFURLRef directoryURL,
                                                        CFStringRef bundleType);

CF_EXTERN_C_END

#endif
