/* Launch Services: opening documents and URLs with applications.
 *
 * Items open with their default application through xdg-open, which finds it
 * with the shared MIME database, mimeapps.list and the .desktop files of the
 * XDG data folders.  An explicit application may be a .desktop file, an
 * application bundle or an executable file; it is started with the items as
 * its arguments (file URLs become paths, other URLs stay URLs).  Nothing goes
 * through a shell, so no item can inject a command.  Applications started
 * here are detached: they outlive the caller and are never waited for.  The
 * functions are safe to call from any thread. */
#ifndef CORESERVICES_LAUNCHSERVICES_H
#define CORESERVICES_LAUNCHSERVICES_H

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/AEDataModel.h>
#include <CoreServices/MacErrors.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef OptionBits LSLaunchFlags;
enum {
    kLSLaunchDefaults = 0x00000001,
    kLSLaunchAndPrint = 0x00000002,
    kLSLaunchAndDisplayErrors = 0x00000040,
    kLSLaunchInhibitBGOnly = 0x00000080,
    kLSLaunchDontAddToRecents = 0x00000100,
    kLSLaunchDontSwitch = 0x00000200,
    kLSLaunchNoParams = 0x00000800,
    kLSLaunchAsync = 0x00010000,
    kLSLaunchStartClassic = 0x00020000,
    kLSLaunchInClassic = 0x00040000,
    kLSLaunchNewInstance = 0x00080000,
    kLSLaunchAndHide = 0x00100000,
    kLSLaunchAndHideOthers = 0x00200000,
    kLSLaunchHasUntrustedContents = 0x00400000
};

typedef struct LSLaunchURLSpec {
    CFURLRef appURL;            /* NULL: each item's default application */
    CFArrayRef itemURLs;        /* CFURLs to open; NULL to start the application alone */
    const AEDesc *passThruParams; /* not carried to Linux applications */
    LSLaunchFlags launchFlags;
    void *asyncRefCon;
} LSLaunchURLSpec;

/* Opens the items, or starts the application.  Answers 0 on success;
 * paramErr for a NULL launch record, a launch record with neither application nor items, or an
 * item that is not a CFURL; fnfErr for a missing file;
 * kLSApplicationNotFoundErr when no application handles an item;
 * kLSNoExecutableErr when the given application cannot be started.  Unless
 * kLSLaunchAsync is set, waits for xdg-open to report the outcome (a
 * default application that keeps running counts as started).  When
 * outLaunchedURL is non-NULL it receives the given application's URL
 * (retained, caller releases) or NULL when the default application was used. */
OSStatus LSOpenFromURLSpec(const LSLaunchURLSpec *inLaunchSpec, CFURLRef *outLaunchedURL);

/* Opens one URL with its default application. */
OSStatus LSOpenCFURLRef(CFURLRef inURL, CFURLRef *outLaunchedURL);

#ifdef __cplusplus
}
#endif

#endif
