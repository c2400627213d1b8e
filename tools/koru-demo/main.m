/* koru-demo: the Cocoa face of KORU in one window.  A shopping list served
 * by TableController: rows are added, deleted, cut, copied, pasted, sorted
 * and moved from the menus and the buttons, and they come back on the next
 * run from the user defaults.  The window is laid out with the toolkit's
 * view geometry. */
#import <AppKit/AppKit.h>

#import "DemoController.h"

int main(int argc, const char **argv)
{
    (void)argc;
    (void)argv;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    [NSApplication sharedApplication];
    DemoController *controller = [[DemoController alloc] init];
    [NSApp setDelegate:controller];
    [NSApp run];
    [NSApp setDelegate:nil];
    [controller release];
    [pool release];
    return 0;
}
