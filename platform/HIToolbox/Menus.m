/* Menus over NSMenu; the root menu is the application's main menu. */
#import <AppKit/AppKit.h>

#include <HIToolbox/Menus.h>
#include <CoreServices/MacErrors.h>

MenuRef AcquireRootMenu(void)
{
    return (MenuRef)[[NSApp mainMenu] retain];
}

OSStatus SetRootMenu(MenuRef menu)
{
    if (menu == NULL || NSApp == nil)
        return paramErr;
    [NSApp setMainMenu:(NSMenu *)menu];
    return noErr;
}

OSStatus RetainMenu(MenuRef menu)
{
    if (menu == NULL)
        return paramErr;
    [(NSMenu *)menu retain];
    return noErr;
}

OSStatus ReleaseMenu(MenuRef menu)
{
    if (menu == NULL)
        return paramErr;
    [(NSMenu *)menu release];
    return noErr;
}

UInt16 CountMenuItems(MenuRef menu)
{
    return menu != NULL ? (UInt16)[(NSMenu *)menu numberOfItems] : 0;
}
