/* The demo's bottom strip: the small Cocoa classes at work.  A file-icon
 * view shows the demo program's own icon and drags its path out, a
 * pull-down menu button offers a few actions, and a button shows an alert. */
#import "DemoExtras.h"

#import <KORU/FileIconView.h>
#import <KORU/MenuButton.h>

/* The target of the strip's actions, kept for as long as the program runs. */
@interface KORUDemoExtras : NSObject {
    NSString *mFile;
    NSMutableArray *mMenus; /* the pull-down menus, which their buttons do not retain */
}
- (id)initWithFile:(NSString *)file;
- (void)keepMenu:(NSMenu *)menu;
- (void)showAlert:(id)sender;
- (void)copyPath:(id)sender;
@end

@implementation KORUDemoExtras

- (id)initWithFile:(NSString *)file
{
    if ((self = [super init]) != nil) {
        mFile = [file copy];
        mMenus = [[NSMutableArray alloc] init];
    }
    return self;
}

- (void)dealloc
{
    [mFile release];
    [mMenus release];
    [super dealloc];
}

- (void)keepMenu:(NSMenu *)menu
{
    [mMenus addObject:menu];
}

- (void)showAlert:(id)sender
{
    (void)sender;
    NSAlert *alert = [[[NSAlert alloc] init] autorelease];
    [alert setMessageText:@"KORU"];
    [alert setInformativeText:[NSString stringWithFormat:@"The icon beside this button is %@: drag it "
                                                         @"into another application to hand over its path.",
                                                         [mFile lastPathComponent]]];
    [alert addButtonWithTitle:@"OK"];
    [alert runModal];
}

- (void)copyPath:(id)sender
{
    (void)sender;
    NSPasteboard *pasteboard = [NSPasteboard generalPasteboard];
    [pasteboard declareTypes:[NSArray arrayWithObject:NSStringPboardType] owner:nil];
    [pasteboard setString:mFile forType:NSStringPboardType];
}

@end

static NSButton *AddButton(NSView *strip, Class buttonClass, NSRect frame, NSString *title)
{
    NSButton *button = [[[buttonClass alloc] initWithFrame:frame] autorelease];
    [button setTitle:title];
    [button setBezelStyle:NSRoundedBezelStyle];
    [strip addSubview:button];
    return button;
}

void KORUDemoAddExtras(NSView *strip)
{
    if (strip == nil)
        return;
    NSString *file = [[NSBundle mainBundle] executablePath];
    if (file == nil)
        file = NSHomeDirectory();
    static KORUDemoExtras *extras;
    if (extras == nil)
        extras = [[KORUDemoExtras alloc] initWithFile:file];
    CGFloat middle = NSHeight([strip bounds]) / 2;

    FileIconView *icon = [[[FileIconView alloc] init] autorelease];
    [icon setFrame:NSMakeRect(8, middle - 20, 40, 40)];
    [icon setImageScaling:NSScaleProportionally];
    [icon setFile:file];
    [icon setToolTip:[NSString stringWithFormat:@"%@: drag it out", file]];
    [strip addSubview:icon];

    NSTextField *label = [[[NSTextField alloc] initWithFrame:NSMakeRect(54, middle - 9, 150, 18)] autorelease];
    [label setStringValue:@"Drag the icon out"];
    [label setEditable:NO];
    [label setSelectable:NO];
    [label setBordered:NO];
    [label setBezeled:NO];
    [label setDrawsBackground:NO];
    [strip addSubview:label];

    NSMenu *menu = [[[NSMenu alloc] initWithTitle:@"Actions"] autorelease];
    [extras keepMenu:menu];
    [[menu addItemWithTitle:@"Copy Path" action:@selector(copyPath:) keyEquivalent:@""] setTarget:extras];
    [[menu addItemWithTitle:@"Show Alert" action:@selector(showAlert:) keyEquivalent:@""] setTarget:extras];
    MenuButton *actions = (MenuButton *)AddButton(strip, [MenuButton class], NSMakeRect(210, middle - 12, 100, 24),
                                                  @"Actions");
    [actions awakeFromNib]; /* its own target, popPulldownMenu: its action */
    [actions setPulldownMenu:menu];

    NSButton *alert = AddButton(strip, [NSButton class], NSMakeRect(318, middle - 12, 90, 24), @"Alert...");
    [alert setTarget:extras];
    [alert setAction:@selector(showAlert:)];
}
