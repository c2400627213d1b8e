/* Launching what a URL names.
 *
 * The URL names the application: an application bundle (.app), a .desktop
 * file of Type=Application or an executable file, started on its own with
 * Launch Services.  A URL that names no application (a document, a web
 * address) is opened with its default application through xdg-open, as the
 * desktop's mimeapps.list and .desktop files say.  Unless the flags hold
 * kLSLaunchAsync, the call waits for the opener's verdict.  May run on any
 * thread. */
#ifndef KORU_URLLAUNCHING_H
#define KORU_URLLAUNCHING_H

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/LaunchServices.h>

CF_EXTERN_C_BEGIN

/* YES when Launch Services started the application or opened the item; NO
 * for NULL, a non-URL, or anything that could not be launched.  The result
 * is a BOOL for Objective-C and the same one-byte Boolean for C and C++. */
#ifdef __OBJC__
BOOL LSLaunchURLWithLaunchFlags(CFURLRef url, LSLaunchFlags flags);
#else
Boolean LSLaunchURLWithLaunchFlags(CFURLRef url, LSLaunchFlags flags);
#endif

CF_EXTERN_C_END

#endif
