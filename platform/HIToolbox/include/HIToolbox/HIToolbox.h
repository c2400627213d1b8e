/* The Carbon user interface (HIToolbox) provided for Linux over GNUstep
 * AppKit: windows, controls, menus, nib files, the scrap, Carbon events and
 * alerts.  One header per Mac header; the Objective-C types behind the Carbon
 * references (WindowRef is an NSWindow *) show only to Objective-C code. */
#ifndef HITOOLBOX_HITOOLBOX_H
#define HITOOLBOX_HITOOLBOX_H

#include <HIToolbox/MacWindows.h>
#include <HIToolbox/MacWindowsExtras.h>
#include <HIToolbox/Events.h>
#include <HIToolbox/Menus.h>
#include <HIToolbox/Controls.h>
#include <HIToolbox/ControlDefinitions.h>
#include <HIToolbox/HIView.h>
#include <HIToolbox/CarbonEvents.h>
#include <HIToolbox/IBCarbonRuntime.h>
#include <HIToolbox/Scrap.h>
#include <HIToolbox/Dialogs.h>

#endif
