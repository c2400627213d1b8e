/* Interface files: windows and menus made from the files in a bundle's
 * resources.
 *
 * A nib name "main" is looked for as main.xib, main.gorm or main.nib (in that
 * order, localised folders first, as NSBundle looks for resources).  Objects
 * are named by the file's owner: an outlet of File's Owner called
 * "MainWindow" names its destination MainWindow.  Every Create... call makes
 * new objects; a window is handed out with one reference for the caller
 * (DisposeWindow), a menu likewise (ReleaseMenu).  Use from the main thread. */
#ifndef HITOOLBOX_IBCARBONRUNTIME_H
#define HITOOLBOX_IBCARBONRUNTIME_H

#include <CoreFoundation/CoreFoundation.h>
#include <HIToolbox/MacWindows.h>
#include <HIToolbox/Menus.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct OpaqueIBNibRef *IBNibRef;

enum {
    kIBCarbonRuntimeCantFindNibFile = -10960,
    kIBCarbonRuntimeObjectNotOfRequestedType = -10961,
    kIBCarbonRuntimeCantFindObject = -10962
};

/* The named interface file of the main bundle. */
OSStatus CreateNibReference(CFStringRef inNibName, IBNibRef *outNibRef);
/* The named interface file of the bundle; kIBCarbonRuntimeCantFindNibFile
 * when there is none or it cannot be read, paramErr for NULL. */
OSStatus CreateNibReferenceWithCFBundle(CFBundleRef inBundle, CFStringRef inNibName,
                                        IBNibRef *outNibRef);
void DisposeNibReference(IBNibRef inNibRef);
/* kIBCarbonRuntimeCantFindObject for an unknown name,
 * kIBCarbonRuntimeObjectNotOfRequestedType for a name of something else. */
OSStatus CreateWindowFromNib(IBNibRef inNibRef, CFStringRef inName, WindowRef *outWindow);
OSStatus CreateMenuFromNib(IBNibRef inNibRef, CFStringRef inName, MenuRef *outMenuRef);
/* Makes the named menu the application's menu bar. */
OSStatus SetMenuBarFromNib(IBNibRef inNibRef, CFStringRef inName);

#ifdef __cplusplus
}
#endif

#endif
