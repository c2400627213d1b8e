/* MenuButton: a pull-down menu under a button. */
#import <KORU/MenuButton.h>
#import <KORU/AppKitX.h>

#import "FoundationXSupport.h"

/* GNUstep opens a contextual menu around the pointer, wherever the event
 * says the click was.  The menu is put where the event says, top-left corner
 * there, as soon as its tracking starts: by a timer of the tracking run-loop
 * mode, which runs only inside the menu's loop. */
@interface MenuButton (Placement)
- (void)koruPlacePulldownMenu:(NSTimer *)timer;
@end

@implementation MenuButton (Placement)

- (void)koruPlacePulldownMenu:(NSTimer *)timer
{
    @try {
        NSArray *info = [timer userInfo];
        NSMenu *menu = [info objectAtIndex:0];
        NSPoint topLeft = [[info objectAtIndex:1] pointValue];
        NSWindow *menuWindow = [[menu menuRepresentation] window];
        if (menuWindow != nil)
            [menu nestedSetFrameOrigin:NSMakePoint(topLeft.x, topLeft.y - NSHeight([menuWindow frame]))];
    } @catch (NSException *exception) {
        KORULogException("-[MenuButton pulldownMenuCore:]", __LINE__, exception);
    }
}

@end

@implementation MenuButton

- (void)awakeFromNib
{
    if ([NSButton instancesRespondToSelector:@selector(awakeFromNib)])
        [super awakeFromNib];
    [self setTarget:self];
    [self setAction:@selector(popPulldownMenu:)];
}

- (void)mouseDown:(NSEvent *)event
{
    [self performClick:event];
}

- (void)setPulldownMenu:(NSMenu *)menu
{
    vPulldownMenu = menu;
}

- (IBAction)popPulldownMenu:(id)sender
{
    (void)sender;
    [self pulldownMenuCore:YES];
}

- (NSMenu *)pulldownMenuCore:(BOOL)show
{
    NSMenu *menu = nil;
    @try {
        /* A contextual click (Control held) at the button's bottom-left
         * corner, in the coordinates of its window. */
        NSWindow *window = [self window];
        NSPoint corner = [self leftBottom];
        NSView *superview = [self superview];
        if (superview != nil)
            corner = [superview convertPoint:corner toView:nil];
        NSEvent *event = [NSEvent mouseEventWithType:NSLeftMouseUp
                                            location:corner
                                       modifierFlags:NSControlKeyMask
                                           timestamp:0
                                        windowNumber:[window windowNumber]
                                             context:[window graphicsContext]
                                         eventNumber:0
                                          clickCount:0
                                            pressure:0];
        menu = vPulldownMenu != nil ? vPulldownMenu : [self menuForEvent:event];
        if (show && menu != nil) {
            NSTimer *placement = nil;
            if (window != nil) {
                NSPoint topLeft = [window convertBaseToScreen:corner];
                placement = [NSTimer timerWithTimeInterval:0
                                                    target:self
                                                  selector:@selector(koruPlacePulldownMenu:)
                                                  userInfo:[NSArray arrayWithObjects:menu,
                                                                    [NSValue valueWithPoint:topLeft], nil]
                                                   repeats:NO];
                [[NSRunLoop currentRunLoop] addTimer:placement forMode:NSEventTrackingRunLoopMode];
            }
            @try {
                [NSMenu popUpContextMenu:menu withEvent:event forView:self];
            } @finally {
                [placement invalidate];
            }
        }
    } @catch (NSException *exception) {
        KORULogException("-[MenuButton pulldownMenuCore:]", __LINE__, exception);
    }
    return menu;
}

@end
