/* DemoController. */
#import "DemoController.h"

#import <KORU/AppKitX.h>
#import <KORU/TableController.h>

#import "DemoExtras.h"

NSString *const DemoRowsKey = @"KORUDemoRows";
NSString *const DemoWindowTitle = @"KORU Demo";

/* Rows on the clipboard: the property list of the rows themselves for this
 * program, and a line of text per row for every other. */
static NSString *const DemoRowsPboardType = @"KORUDemoRowsPboardType";

static NSString *const kItem = @"item";
static NSString *const kQuantity = @"quantity";

enum { kMargin = 10, kGap = 6, kStripHeight = 44 };

static NSMutableDictionary *MakeRow(NSString *item, int quantity)
{
    return [NSMutableDictionary dictionaryWithObjectsAndKeys:item, kItem, [NSNumber numberWithInt:quantity],
                                                             kQuantity, nil];
}

@interface DemoController (Private)
- (void)updateStatus;
@end

@implementation DemoController

- (void)dealloc
{
    [mSaveTimer invalidate];
    [mSaveTimer release];
    [mRows release];
    [mTable release];
    [mStatus release];
    [mWindow release];
    [super dealloc];
}

/* ---- Building the menu and the window ---- */

static NSMenuItem *AddItem(NSMenu *menu, NSString *title, SEL action, NSString *key)
{
    return [menu addItemWithTitle:title action:action keyEquivalent:key];
}

static NSMenu *AddSubmenu(NSMenu *menu, NSString *title)
{
    NSMenuItem *item = AddItem(menu, title, NULL, @"");
    NSMenu *submenu = [[[NSMenu alloc] initWithTitle:title] autorelease];
    [menu setSubmenu:submenu forItem:item];
    return submenu;
}

/* Every command goes to the first responder: the table, then the
 * TableController behind it, which offers the editing commands only while
 * they can be done, then this delegate for the moves. */
- (void)buildMenu
{
    NSMenu *menu = [[[NSMenu alloc] initWithTitle:@"KORU Demo"] autorelease];
    NSMenu *edit = AddSubmenu(menu, @"Edit");
    AddItem(edit, @"Cut", @selector(cut:), @"x");
    AddItem(edit, @"Copy", @selector(copy:), @"c");
    AddItem(edit, @"Paste", @selector(paste:), @"v");
    AddItem(edit, @"Delete", @selector(delete:), @"");
    AddItem(edit, @"Select All", @selector(selectAll:), @"a");
    NSMenu *rows = AddSubmenu(menu, @"Rows");
    AddItem(rows, @"Add Row", @selector(addNewRow:), @"n");
    AddItem(rows, @"Sort All", @selector(sortAll:), @"");
    AddItem(rows, @"Sort Selection", @selector(sortSelection:), @"");
    AddItem(rows, @"Move Up", @selector(moveSelectionUp:), @"");
    AddItem(rows, @"Move Down", @selector(moveSelectionDown:), @"");
    AddItem(menu, @"Hide", @selector(hide:), @"h");
    AddItem(menu, @"Quit", @selector(terminate:), @"q");
    [NSApp setMainMenu:menu];
}

- (NSButton *)addButton:(NSString *)title action:(SEL)action target:(id)target after:(NSButton *)previous
{
    NSView *content = [mWindow contentView];
    NSButton *button = [[[NSButton alloc] initWithFrame:NSMakeRect(0, 0, 60, 24)] autorelease];
    [button setTitle:title];
    [button setBezelStyle:NSRoundedBezelStyle];
    [button sizeToFit];
    // The table keeps the focus, and with it the Edit menu's commands.
    [button setRefusesFirstResponder:YES];
    [button setTarget:target];
    [button setAction:action];
    [button setAutoresizingMask:NSViewMinYMargin];
    [button leftMoveTo:previous != nil ? [previous right] + kGap : kMargin];
    [button topMoveTo:[content height] - kMargin];
    [content addSubview:button];
    return button;
}

- (void)buildTable:(NSScrollView *)scroll
{
    mTable = [[TableView alloc] initWithFrame:[[scroll contentView] bounds]];
    NSTableColumn *item = [[[NSTableColumn alloc] initWithIdentifier:kItem] autorelease];
    [[item headerCell] setStringValue:@"Item"];
    [item setWidth:[scroll width] - 120];
    [item setEditable:YES];
    [mTable addTableColumn:item];
    NSTableColumn *quantity = [[[NSTableColumn alloc] initWithIdentifier:kQuantity] autorelease];
    [[quantity headerCell] setStringValue:@"Quantity"];
    [quantity setWidth:80];
    [quantity setEditable:YES];
    [mTable addTableColumn:quantity];
    [mTable setAllowsMultipleSelection:YES];
    [scroll setDocumentView:mTable];
}

/* The layout, in the toolkit's edge geometry: a row of buttons along the
 * top, the strip along the bottom, the table filling what is between. */
- (void)buildWindow
{
    mWindow = [[NSWindow alloc] initWithContentRect:NSMakeRect(120, 120, 640, 420)
                                          styleMask:NSTitledWindowMask | NSClosableWindowMask |
                                                    NSMiniaturizableWindowMask | NSResizableWindowMask
                                            backing:NSBackingStoreBuffered
                                              defer:NO];
    [mWindow setTitle:DemoWindowTitle];
    [mWindow setReleasedWhenClosed:NO];
    NSView *content = [mWindow contentView];

    NSButton *add = [self addButton:@"Add" action:@selector(addNewRow:) target:nil after:nil];
    NSButton *delete = [self addButton:@"Delete" action:@selector(delete:) target:nil after:add];
    NSButton *cut = [self addButton:@"Cut" action:@selector(cut:) target:nil after:delete];
    NSButton *copy = [self addButton:@"Copy" action:@selector(copy:) target:nil after:cut];
    NSButton *paste = [self addButton:@"Paste" action:@selector(paste:) target:nil after:copy];
    NSButton *sort = [self addButton:@"Sort" action:@selector(sortAll:) target:nil after:paste];
    NSButton *up = [self addButton:@"Up" action:@selector(moveSelectionUp:) target:self after:sort];
    [self addButton:@"Down" action:@selector(moveSelectionDown:) target:self after:up];

    NSView *strip = [[[NSView alloc] initWithFrame:[content bounds]] autorelease];
    [strip setHeightResizingTop:kStripHeight];
    [strip setAutoresizingMask:NSViewWidthSizable | NSViewMaxYMargin];
    [content addSubview:strip];

    NSScrollView *scroll = [[[NSScrollView alloc] initWithFrame:[content bounds]] autorelease];
    [scroll topResizeTo:[add bottom] - kMargin];
    [scroll bottomResizeTo:[strip top]];
    [scroll leftResize:-kMargin];
    [scroll rightResize:-kMargin];
    [scroll setHasVerticalScroller:YES];
    [scroll setBorderType:NSBezelBorder];
    [scroll setAutoresizingMask:NSViewWidthSizable | NSViewHeightSizable];
    [content addSubview:scroll];
    [self buildTable:scroll];

    mStatus = [[NSTextField alloc] initWithFrame:NSMakeRect(0, 0, 130, 20)];
    [mStatus setEditable:NO];
    [mStatus setBordered:NO];
    [mStatus setBezeled:NO];
    [mStatus setDrawsBackground:NO];
    [mStatus setAlignment:NSRightTextAlignment];
    [mStatus rightMoveTo:[content width] - kMargin];
    [mStatus verticalCenterMoveTo:[add verticalCenter]];
    [mStatus setAutoresizingMask:NSViewMinXMargin | NSViewMinYMargin];
    [content addSubview:mStatus];

    if (KORUDemoAddExtras != NULL)
        KORUDemoAddExtras(strip);
}

/* The controller is wired once the table sits in its scroll view: joining a
 * superview resets a view's next responder. */
- (void)connectRows
{
    BOOL firstRun = [[NSUserDefaults standardUserDefaults] objectForKey:DemoRowsKey] == nil;
    mRows = [[TableController alloc] initWithTableView:mTable userDefaultKey:DemoRowsKey];
    [mRows setDelegate:self];
    if (firstRun) {
        [mRows setDatasourceArray:[NSArray arrayWithObjects:MakeRow(@"Apples", 6), MakeRow(@"Bread", 1),
                                                            MakeRow(@"Coffee", 2), MakeRow(@"Milk", 3), nil]];
        [mRows storeDatasource:nil];
        [[NSUserDefaults standardUserDefaults] synchronize];
    }
    [mRows setAutosetWindowEdited:YES];
    [mTable deselectAll:nil];
    // The buttons speak to the controller itself, so that they work whether
    // or not the window holds the keyboard focus; the controller still
    // refuses what cannot be done (nothing to cut without a selection).
    for (NSView *view in [[mWindow contentView] subviews])
        if ([view isKindOfClass:[NSButton class]] && [(NSButton *)view target] == nil)
            [(NSButton *)view setTarget:mRows];
    [mWindow setDocumentEdited:NO];
}

- (void)applicationDidFinishLaunching:(NSNotification *)notification
{
    (void)notification;
    [self buildMenu];
    [self buildWindow];
    [self connectRows];
    [self updateStatus];
    [mWindow makeKeyAndOrderFront:nil];
    [mWindow makeFirstResponder:mTable];
    mSaveTimer = [[NSTimer scheduledTimerWithTimeInterval:1.0 target:self selector:@selector(saveIfEdited:)
                                                 userInfo:nil repeats:YES] retain];
    printf("koru-demo: window \"%s\" is up\n", [DemoWindowTitle UTF8String]);
    fflush(stdout);
}

- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication *)application
{
    (void)application;
    return YES;
}

- (void)applicationWillTerminate:(NSNotification *)notification
{
    (void)notification;
    [mRows storeDatasource:nil];
    [[NSUserDefaults standardUserDefaults] synchronize];
}

/* ---- Saving and the status line ---- */

/* The edited mark the controller sets on each change tells when to save. */
- (void)saveIfEdited:(NSTimer *)timer
{
    (void)timer;
    [self updateStatus];
    if (![mWindow isDocumentEdited])
        return;
    [mRows storeDatasource:nil];
    [[NSUserDefaults standardUserDefaults] synchronize];
    [mWindow setDocumentEdited:NO];
}

- (void)updateStatus
{
    [mStatus setStringValue:[NSString stringWithFormat:@"%lu rows, %ld selected",
                                                       (unsigned long)[[mRows datasourceArray] count],
                                                       (long)[mTable numberOfSelectedRows]]];
}

- (void)tableViewSelectionDidChange:(NSNotification *)notification
{
    (void)notification;
    [self updateStatus];
}

/* ---- Moving the selection ---- */

- (IBAction)moveSelectionUp:(id)sender
{
    (void)sender;
    int top = [mTable topSelectedRow];
    if (top > 0)
        [mRows moveRows:[mRows selectedRowArray] to:top - 1];
}

- (IBAction)moveSelectionDown:(id)sender
{
    (void)sender;
    NSInteger last = (NSInteger)[[mTable selectedRowIndexes] lastIndex];
    if (last != (NSInteger)NSNotFound && last + 1 < [mTable numberOfRows])
        [mRows moveRows:[mRows selectedRowArray] to:(int)last + 2];
}

/* ---- What the TableController asks ---- */

- (NSMutableDictionary *)tableController:(TableController *)controller makeInitialRowForIndex:(int)index
{
    (void)controller;
    return MakeRow([NSString stringWithFormat:@"New item %d", index + 1], 1);
}

/* Quantities are whole numbers; an item cleared of its name leaves the list. */
- (id)tableController:(TableController *)controller convertSetEditedValue:(id)value
    forColumnIdentifier:(id)identifier row:(int)row
{
    (void)controller;
    (void)row;
    NSString *text = [[value description] stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceCharacterSet]];
    if ([identifier isEqual:kQuantity])
        return [NSNumber numberWithInt:MAX([text intValue], 0)];
    return [text length] > 0 ? text : nil;
}

- (void)tableController:(TableController *)controller delete:(id)sender
{
    // Deleted rows are simply gone; nothing else to tidy.
    (void)controller;
    (void)sender;
}

- (void)tableController:(TableController *)controller copy:(id)sender
{
    (void)sender;
    NSArray *rows = [controller selectedDatasourceArray];
    NSMutableString *text = [NSMutableString string];
    for (NSDictionary *row in rows)
        [text appendFormat:@"%@\t%@\n", [row objectForKey:kItem], [row objectForKey:kQuantity]];
    NSPasteboard *pasteboard = [NSPasteboard generalPasteboard];
    [pasteboard declareTypes:[NSArray arrayWithObjects:DemoRowsPboardType, NSStringPboardType, nil] owner:nil];
    [pasteboard setPropertyList:rows forType:DemoRowsPboardType];
    [pasteboard setString:text forType:NSStringPboardType];
}

/* This program's rows as they were; from other programs, a row per line of
 * text, "item<TAB>quantity" or just the item. */
- (NSArray *)tableController:(TableController *)controller paste:(id)sender
{
    (void)controller;
    (void)sender;
    NSPasteboard *pasteboard = [NSPasteboard generalPasteboard];
    NSMutableArray *rows = [NSMutableArray array];
    NSString *type = [pasteboard availableTypeFromArray:[NSArray arrayWithObjects:DemoRowsPboardType,
                                                                                  NSStringPboardType, nil]];
    if ([type isEqualToString:DemoRowsPboardType]) {
        for (id row in [pasteboard propertyListForType:type])
            if ([row isKindOfClass:[NSDictionary class]])
                [rows addObject:[[row mutableCopy] autorelease]];
    } else if (type != nil) {
        for (NSString *line in [[pasteboard stringForType:type] componentsSeparatedByString:@"\n"]) {
            NSArray *fields = [line componentsSeparatedByString:@"\t"];
            if ([[fields objectAtIndex:0] length] > 0)
                [rows addObject:MakeRow([fields objectAtIndex:0],
                                        [fields count] > 1 ? [[fields objectAtIndex:1] intValue] : 1)];
        }
    }
    return rows;
}

- (NSComparisonResult)tableController:(TableController *)controller compareRows:(id)row1 with:(id)row2
{
    (void)controller;
    return [[row1 objectForKey:kItem] caseInsensitiveCompare:[row2 objectForKey:kItem]];
}

@end
