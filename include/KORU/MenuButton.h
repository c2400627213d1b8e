/* MenuButton: a button that pops up a pull-down menu under itself.
 *
 * Pressing the button fires its action at once (the menu opens on mouse
 * down, not on release).  Made from a nib, the button is its own target with
 * the action popPulldownMenu:; made in code, set that target and action (or
 * send awakeFromNib).  The menu is the one given by setPulldownMenu: (or the
 * vPulldownMenu outlet; not retained), else the button's menuForEvent:.  It
 * opens as a contextual menu with its top-left corner at the button's
 * bottom-left corner. */
#ifndef KORU_MENUBUTTON_H
#define KORU_MENUBUTTON_H

#import <AppKit/AppKit.h>

@interface MenuButton : NSButton
{
    IBOutlet NSMenu *vPulldownMenu;
}

/* Makes the button its own target with the action popPulldownMenu:. */
- (void)awakeFromNib;
/* performClick: with the event: the action fires on mouse down. */
- (void)mouseDown:(NSEvent *)event;
- (void)setPulldownMenu:(NSMenu *)menu;
/* pulldownMenuCore: YES. */
- (IBAction)popPulldownMenu:(id)sender;
/* The menu for a synthetic contextual click (a left-mouse-up with the
 * Control key, at the button's bottom-left corner in window coordinates),
 * popped up there when show is YES; nil when there is none. */
- (NSMenu *)pulldownMenuCore:(BOOL)show;

@end

#endif
