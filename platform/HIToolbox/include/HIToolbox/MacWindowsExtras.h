/* Window Manager calls beside MacWindows.h: sheets and the reference
 * constant a program keeps with each window.
 *
 * The reference constant is the toolbox's own record per window and goes
 * when the window closes.  Use from the main thread only. */
#ifndef HITOOLBOX_MACWINDOWSEXTRAS_H
#define HITOOLBOX_MACWINDOWSEXTRAS_H

#include <HIToolbox/MacWindows.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef void *SRefCon;

/* Shows the window as a sheet on the parent; a standard alert's window
 * (Dialogs.h) runs as that alert's sheet.  paramErr for NULL. */
OSStatus ShowSheetWindow(WindowRef inSheet, WindowRef inParentWindow);
/* Ends the sheet and hides it. */
OSStatus HideSheetWindow(WindowRef inSheet);

/* 0 for NULL or a window that has none. */
SRefCon GetWRefCon(WindowRef window);
void SetWRefCon(WindowRef window, SRefCon data);

#ifdef __cplusplus
}
#endif

#endif
