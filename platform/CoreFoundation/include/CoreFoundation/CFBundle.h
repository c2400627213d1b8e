/* Bundles.  A CFBundleRef is an NSBundle *, so both the GNUstep layout
 * (Resources/Info-gnustep.plist, Resources/) and the Mac layout
 * (Contents/Info.plist, Contents/Resources/, Contents/MacOS/) are read.
 * Bundles are uniqued by path and live as long as the process: Get
 * functions lend them, Create hands out a reference the caller releases. */
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
/* The bundle of the running program (for a plain executable, its folder). */
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
/* The address of an exported symbol, loading the executable first; NULL when absent. */
CF_EXPORT void *CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef functionName);
CF_EXPORT void *CFBundleGetDataPointerForName(CFBundleRef bundle, CFStringRef symbolName);

CF_EXTERN_C_END

#endif
