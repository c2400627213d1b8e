/* Menus: a MenuRef is an NSMenu, the root menu is the application's main
 * menu (the menu bar).
 *
 * Retained results (Acquire...) are released with ReleaseMenu.  Use from the
 * main thread only, as AppKit requires. */
#ifndef HITOOLBOX_MENUS_H
#define HITOOLBOX_MENUS_H

#include <CoreServices/MacErrors.h>
#include <MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct OpaqueMenuRef *MenuRef;
typedef MenuRef MenuHandle;
typedef UInt16 MenuItemIndex;
typedef UInt32 MenuCommand;

/* The menu bar with one more reference for the caller; NULL when the
 * application has none. */
MenuRef AcquireRootMenu(void);
/* Makes the menu the menu bar; paramErr for NULL. */
OSStatus SetRootMenu(MenuRef menu);
OSStatus RetainMenu(MenuRef menu);
OSStatus ReleaseMenu(MenuRef menu);
/* The number of items of the menu; 0 for NULL. */
UInt16 CountMenuItems(MenuRef menu);

#ifdef __cplusplus
}
#endif

#endif
