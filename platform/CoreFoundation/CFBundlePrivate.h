/* Private to CFBundle: the two bundle layouts.
 *
 * A folder with a Contents/ subfolder is a Mac bundle (Contents/Info.plist,
 * Contents/Resources/, Contents/MacOS/<executable>); any other folder is a
 * GNUstep bundle (Resources/Info-gnustep.plist or Resources/Info.plist,
 * Resources/, the executable beside Resources/).  NSBundle knows only the
 * second, so the Info dictionary, the executable and every resource are
 * found here for both. */
#ifndef COREFOUNDATION_CFBUNDLEPRIVATE_H
#define COREFOUNDATION_CFBUNDLEPRIVATE_H

#include "CFInternal.h"

/* Whether the bundle folder uses the Mac layout. */
BOOL __CFBundleIsMacLayout(NSString *bundlePath);

/* The folder of the bundle's resources (it may not exist). */
NSString *__CFBundleResourcesPath(NSBundle *bundle);

/* The Info dictionary, read once per bundle and kept for the process's life;
 * an empty dictionary when there is none.  Borrowed. */
NSDictionary *__CFBundleInfo(NSBundle *bundle);

/* The path of the bundle's executable when it is a regular file, else nil. */
NSString *__CFBundleExecutablePath(NSBundle *bundle);

/* The bundles made by CFBundleCreate so far, for the look-up by identifier. */
void __CFBundleRemember(NSBundle *bundle);
NSBundle *__CFBundleRememberedWithIdentifier(NSString *identifier);

#endif
