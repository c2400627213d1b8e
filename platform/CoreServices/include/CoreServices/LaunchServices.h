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
#include <CoreServices/Files.h>
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

/* ---- Item information ----
 *
 * Flags: plain file = a regular file; package = a folder with a bundle
 * extension (app, bundle, framework, plugin) or a Contents/Info.plist;
 * application = an .app folder, a .desktop file of Type=Application or an
 * executable regular file; container = a folder; alias file and symbolic
 * link = a symbolic link (or Finder information marking an alias);
 * invisible = a name starting with ".", a name listed in the folder's
 * .hidden file, or the Finder-information invisible bit; volume = a mount
 * point.  Type and creator come from the Finder information ('fold' for a
 * folder, 'disk' for a volume when none is stored). */

typedef OptionBits LSRequestedInfo;
enum {
    kLSRequestExtension = 0x00000001,
    kLSRequestTypeCreator = 0x00000002,
    kLSRequestBasicFlagsOnly = 0x00000004,
    kLSRequestAppTypeFlags = 0x00000008,
    kLSRequestAllFlags = 0x00000010,
    kLSRequestIconAndKind = 0x00000020,
    kLSRequestExtensionFlagsOnly = 0x00000040,
    kLSRequestAllInfo = (int)0xFFFFFFFF
};

typedef OptionBits LSItemInfoFlags;
enum {
    kLSItemInfoIsPlainFile = 0x00000001,
    kLSItemInfoIsPackage = 0x00000002,
    kLSItemInfoIsApplication = 0x00000004,
    kLSItemInfoIsContainer = 0x00000008,
    kLSItemInfoIsAliasFile = 0x00000010,
    kLSItemInfoIsSymlink = 0x00000020,
    kLSItemInfoIsInvisible = 0x00000040,
    kLSItemInfoIsNativeApp = 0x00000080,
    kLSItemInfoIsClassicApp = 0x00000100,
    kLSItemInfoAppPrefersNative = 0x00000200,
    kLSItemInfoAppPrefersClassic = 0x00000400,
    kLSItemInfoAppIsScriptable = 0x00000800,
    kLSItemInfoIsVolume = 0x00001000,
    kLSItemInfoExtensionIsHidden = 0x00100000
};

typedef UInt32 LSKindID;

typedef struct LSItemInfoRecord {
    LSItemInfoFlags flags;
    OSType filetype;
    OSType creator;
    CFStringRef extension;    /* with kLSRequestExtension; the caller releases it; NULL without one */
    CFStringRef iconFileName; /* always NULL */
    LSKindID kindID;          /* always 0 */
} LSItemInfoRecord;

/* Fills the record (zeroed first) for the object; paramErr for NULL,
 * fnfErr for a stale ref or a URL to nothing. */
OSStatus LSCopyItemInfoForRef(const FSRef *inItemRef, LSRequestedInfo inWhichInfo,
                              LSItemInfoRecord *outItemInfo);
OSStatus LSCopyItemInfoForURL(CFURLRef inURL, LSRequestedInfo inWhichInfo,
                              LSItemInfoRecord *outItemInfo);

typedef OptionBits LSRolesMask;
enum {
    kLSRolesNone = 0x00000001,
    kLSRolesViewer = 0x00000002,
    kLSRolesEditor = 0x00000004,
    kLSRolesShell = 0x00000008,
    kLSRolesAll = (int)0xFFFFFFFF
};

enum { kLSUnknownCreator = 0 };

/* The application that opens the item by default: its MIME type from the
 * shared MIME database, then the default handler of mimeapps.list (a
 * .desktop file).  Either out argument may be NULL (not both); the URL is
 * the caller's.  kLSApplicationNotFoundErr when no handler is set. */
OSStatus LSGetApplicationForItem(const FSRef *inItemRef, LSRolesMask inRoleMask, FSRef *outAppRef,
                                 CFURLRef *outAppURL);

/* An application by creator code (CFBundleSignature), bundle identifier
 * (CFBundleIdentifier; a .desktop file's id is its file name without the
 * extension) and name (the bundle's folder name with or without ".app",
 * its CFBundleName, or a .desktop file's Name); every criterion given must
 * match.  Searched: the GNUstep application folders, then the applications
 * folders of XDG_DATA_HOME and XDG_DATA_DIRS.  paramErr when no criterion is
 * given, kLSApplicationNotFoundErr when nothing matches. */
OSStatus LSFindApplicationForInfo(OSType inCreator, CFStringRef inBundleID, CFStringRef inName,
                                  FSRef *outAppRef, CFURLRef *outAppURL);

typedef struct LSLaunchFSRefSpec {
    const FSRef *appRef;   /* NULL: each item's default application */
    ItemCount numDocs;
    const FSRef *itemRefs;
    const AEDesc *passThruParams;
    LSLaunchFlags launchFlags;
    void *asyncRefCon;
} LSLaunchFSRefSpec;

/* LSOpenFromURLSpec with the refs as file URLs; outLaunchedRef (may be NULL)
 * receives the given application. */
OSStatus LSOpenFromRefSpec(const LSLaunchFSRefSpec *inLaunchSpec, FSRef *outLaunchedRef);
OSStatus LSOpenFSRef(const FSRef *inRef, FSRef *outLaunchedRef);

#ifdef __cplusplus
}
#endif

#endif
