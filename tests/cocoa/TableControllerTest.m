/* TableController serving a TableView in a real window: data source, commands
 * through the responder chain and pasteboard, the edited mark, rows in the defaults. */
#import "KTest.h"
#import "KGUI.h"

#include <KORU/KORU.h>

static NSString *const kName = @"name";
static NSString *const kRowsType = @"KORUTableTestRows";

/* A delegate that implements every optional method and records its calls. */
#pragma GCC diagnostic ignored "-Wunused-parameter"
@interface Recorder : NSObject {
@public
    NSMutableArray *calls;
}
@end

@implementation Recorder
- (void)dealloc
{
    [calls release];
    [super dealloc];
}

- (void)note:(NSString *)what, ...
{
    if (calls == nil)
        calls = [[NSMutableArray alloc] init];
    NSMutableArray *call = [NSMutableArray arrayWithObject:what];
    va_list list;
    va_start(list, what);
    for (id argument = va_arg(list, id); argument != nil; argument = va_arg(list, id))
        [call addObject:argument];
    va_end(list);
    [calls addObject:call];
}

- (NSMutableDictionary *)tableController:(TableController *)controller makeInitialRowForIndex:(int)index
{
    [self note:@"make", controller, [NSNumber numberWithInt:index], nil];
    return [NSMutableDictionary dictionaryWithObject:[NSString stringWithFormat:@"new%d", index] forKey:kName];
}

- (id)tableController:(TableController *)controller convertVisibleValue:(id)value
    forColumnIdentifier:(id)identifier row:(int)row
{
    [self note:@"show", controller, value ? value : @"nil", identifier, [NSNumber numberWithInt:row], nil];
    return [value isEqual:@"hidden"] ? nil : [NSString stringWithFormat:@"<%@>", value];
}

/* Cells hand back what was shown: "<x>" is x again. */
- (id)tableController:(TableController *)controller convertSetEditedValue:(id)value
    forColumnIdentifier:(id)identifier row:(int)row
{
    [self note:@"edit", controller, value, identifier, [NSNumber numberWithInt:row], nil];
    if ([value isEqual:@"reject"])
        return nil;
    if ([value hasPrefix:@"<"] && [value hasSuffix:@">"] && [value length] >= 2)
        return [value substringWithRange:NSMakeRange(1, [value length] - 2)];
    return value;
}

- (void)tableController:(TableController *)controller delete:(id)sender
{
    [self note:@"delete", controller, sender ? sender : @"nil", nil];
}

- (void)tableController:(TableController *)controller copy:(id)sender
{
    NSPasteboard *pasteboard = [NSPasteboard generalPasteboard];
    [pasteboard declareTypes:[NSArray arrayWithObject:kRowsType] owner:nil];
    [pasteboard setPropertyList:[controller selectedDatasourceArray] forType:kRowsType];
}

- (NSArray *)tableController:(TableController *)controller paste:(id)sender
{
    NSMutableArray *rows = [NSMutableArray array];
    for (NSDictionary *row in [[NSPasteboard generalPasteboard] propertyListForType:kRowsType])
        [rows addObject:[[row mutableCopy] autorelease]];
    return rows;
}

- (NSComparisonResult)tableController:(TableController *)controller compareRows:(id)row1 with:(id)row2
{
    return [[row1 objectForKey:kName] compare:[row2 objectForKey:kName]];
}

- (BOOL)tableController:(TableController *)controller enumerateRows:(id)row
{
    [self note:@"row", [row objectForKey:kName], nil];
    return ![[row objectForKey:kName] isEqual:@"stop"];
}

- (BOOL)tableController:(TableController *)controller enumerateSelectedRows:(id)row
{
    [self note:@"selected", [row objectForKey:kName], nil];
    return YES;
}

/* Each change of the table's selection, as the rows then selected: "1,2". */
- (void)tableViewSelectionDidChange:(NSNotification *)notification
{
    NSIndexSet *rows = [[notification object] selectedRowIndexes];
    NSMutableArray *list = [NSMutableArray array];
    for (NSUInteger row = [rows firstIndex]; row != NSNotFound; row = [rows indexGreaterThanIndex:row])
        [list addObject:[NSString stringWithFormat:@"%lu", (unsigned long)row]];
    [self note:@"selection", [list componentsJoinedByString:@","], nil];
}

- (NSDragOperation)tableView:(NSTableView *)tableView validateDrop:(id<NSDraggingInfo>)info
                 proposedRow:(NSInteger)row proposedDropOperation:(NSTableViewDropOperation)operation
{
    return NSDragOperationCopy;
}
- (BOOL)tableView:(NSTableView *)tableView writeRows:(NSArray *)rows toPasteboard:(NSPasteboard *)pasteboard
{
    return YES;
}
- (BOOL)tableView:(NSTableView *)tableView writeRowsWithIndexes:(NSIndexSet *)rows
     toPasteboard:(NSPasteboard *)pasteboard
{
    return YES;
}
@end

/* The last call of a kind: drawing asks for values at any time. */
static NSArray *Last(Recorder *recorder, NSString *kind)
{
    for (NSArray *call in [recorder->calls reverseObjectEnumerator])
        if ([[call objectAtIndex:0] isEqual:kind])
            return call;
    return nil;
}

/* The calls of the kinds listed, each as "kind=argument". */
static NSString *Seen(Recorder *recorder, NSArray *kinds)
{
    NSMutableArray *seen = [NSMutableArray array];
    for (NSArray *call in recorder->calls)
        if ([kinds containsObject:[call objectAtIndex:0]])
            [seen addObject:[call componentsJoinedByString:@"="]];
    return [seen componentsJoinedByString:@" "];
}

static NSWindow *gWindow;
static NSTableView *gTable;

/* A fresh window on screen, with a table of an editable "name"
 * column, a column without identifier and a read-only "size" column. */
static NSTableView *MakeTable(BOOL multiple)
{
    KGUISharedApplication();
    [gWindow close];
    [gWindow release];
    gWindow = [[NSWindow alloc] initWithContentRect:NSMakeRect(50, 50, 400, 300) styleMask:NSTitledWindowMask
                                            backing:NSBackingStoreBuffered defer:NO];
    [gWindow setReleasedWhenClosed:NO];
    NSScrollView *scroll = [[[NSScrollView alloc] initWithFrame:[[gWindow contentView] bounds]] autorelease];
    gTable = [[[TableView alloc] initWithFrame:[[scroll contentView] bounds]] autorelease];
    for (NSString *identifier in [NSArray arrayWithObjects:kName, @"x", @"size", nil]) {
        NSTableColumn *column = [[[NSTableColumn alloc] initWithIdentifier:identifier] autorelease];
        [column setEditable:![identifier isEqual:@"size"]];
        [gTable addTableColumn:column];
    }
    [[[gTable tableColumns] objectAtIndex:1] setIdentifier:nil];
    [gTable setAllowsMultipleSelection:multiple];
    [scroll setDocumentView:gTable];
    [[gWindow contentView] addSubview:scroll];
    [gWindow makeKeyAndOrderFront:nil];
    [gWindow makeFirstResponder:gTable];
    KGUISpin(0.05);
    return gTable;
}

static NSArray *Rows(NSString *names)
{
    NSMutableArray *rows = [NSMutableArray array];
    for (NSString *name in [names componentsSeparatedByString:@" "])
        [rows addObject:[NSMutableDictionary dictionaryWithObject:name forKey:kName]];
    return rows;
}

static NSString *Names(TableController *controller)
{
    NSArray *names = [controller datasourceOfColumn:kName visibleValue:NO];
    return names ? [names componentsJoinedByString:@" "] : @"(nil)";
}

static NSNumber *N(int value) { return [NSNumber numberWithInt:value]; }

static NSIndexSet *Set(NSUInteger first, NSUInteger length)
{
    return [NSIndexSet indexSetWithIndexesInRange:NSMakeRange(first, length)];
}

static void Select(NSTableView *table, NSIndexSet *rows) { [table selectRowIndexes:rows byExtendingSelection:NO]; }

static NSData *Indexes(uint32_t first, uint32_t second)
{
    uint32_t list[] = {first, second};
    return [NSData dataWithBytes:list length:sizeof list];
}

/* A controller over a fresh table holding the rows named, marking the
 * window; the window starts unmarked. */
static TableController *Serve(NSString *names, id delegate, BOOL multiple)
{
    TableController *controller = [[[TableController alloc] initWithTableView:MakeTable(multiple)] autorelease];
    [controller setDelegate:delegate];
    if (names != nil)
        [controller setDatasourceArray:Rows(names)];
    [controller setAutosetWindowEdited:YES];
    [gTable deselectAll:nil];
    [gWindow setDocumentEdited:NO];
    return controller;
}

KT_CASE(WiresItselfToTheTableAndLeavesCleanly)
{
    Recorder *recorder = [[[Recorder alloc] init] autorelease];
    NSTableView *table = MakeTable(YES);
    NSResponder *after = [table nextResponder];
    TableController *controller = [[TableController alloc] initWithTableView:table];
    [controller setDelegate:recorder];
    KT_EXPECT([table dataSource] == (id)controller && [table delegate] == (id)recorder);
    KT_EXPECT([table nextResponder] == controller && [controller nextResponder] == after);
    [controller setDropTargetForTypes:[NSArray arrayWithObject:kRowsType]];
    KT_EXPECT([[table registeredDraggedTypes] containsObject:kRowsType]);
    [controller setDatasourceArray:Rows(@"a b c")];
    KT_EXPECT([table numberOfRows] == 3 && [gTable selectedRow] == 2); // inserted rows end selected
    [controller release];
    KT_EXPECT([table dataSource] == nil && [table delegate] == nil && [table nextResponder] == after);
    KGUISpin(0.05);
}

KT_CASE(CellsShowAndStoreValuesOnlyWithinTheRows)
{
    TableController *controller = Serve(@"a hidden c", nil, YES);
    [[[controller datasourceArray] objectAtIndex:0] setObject:@"free" forKey:@"<default>"];
    NSTableColumn *name = [gTable tableColumnWithIdentifier:kName];
    NSTableColumn *anonymous = [[gTable tableColumns] objectAtIndex:1];
    NSTableColumn *size = [gTable tableColumnWithIdentifier:@"size"];
    NSTableView *other = [[[NSTableView alloc] init] autorelease];
    KT_EXPECT([controller numberOfRowsInTableView:gTable] == 3 && [controller numberOfRowsInTableView:other] == 0);
    KT_EXPECT_EQUAL_OBJECTS([controller tableView:gTable objectValueForTableColumn:name row:0], @"a");
    KT_EXPECT_EQUAL_OBJECTS([controller tableView:gTable objectValueForTableColumn:anonymous row:0], @"free");
    NSString *nothing = [NSString stringWithFormat:@"%@%@%@%@", [controller tableView:gTable objectValueForTableColumn:size row:0],
                            [controller tableView:gTable objectValueForTableColumn:name row:3],
                            [controller tableView:gTable objectValueForTableColumn:name row:-1],
                            [controller tableView:other objectValueForTableColumn:name row:0]];
    KT_EXPECT_EQUAL_OBJECTS(nothing, @"");
    Recorder *recorder = [[[Recorder alloc] init] autorelease];
    [controller setDelegate:recorder];
    KT_EXPECT_EQUAL_OBJECTS([controller tableView:gTable objectValueForTableColumn:name row:0], @"<a>");
    KT_EXPECT_EQUAL_OBJECTS(Last(recorder, @"show"), ([NSArray arrayWithObjects:@"show", controller, @"a", kName, N(0), nil]));
    KT_EXPECT_EQUAL_OBJECTS([controller tableView:gTable objectValueForTableColumn:name row:1], @"");
    [controller tableView:gTable setObjectValue:@"a" forTableColumn:name row:0];
    KT_EXPECT(![gWindow isDocumentEdited]); // the same value changes nothing
    KT_EXPECT_EQUAL_OBJECTS(Last(recorder, @"edit"), ([NSArray arrayWithObjects:@"edit", controller, @"a", kName, N(0), nil]));
    [controller tableView:gTable setObjectValue:@"new" forTableColumn:anonymous row:1];
    KT_EXPECT_EQUAL_OBJECTS([[[controller datasourceArray] objectAtIndex:1] objectForKey:@"<default>"], @"new");
    KT_EXPECT([gWindow isDocumentEdited]);
    [gWindow setDocumentEdited:NO];
    [controller tableView:gTable setObjectValue:@"x" forTableColumn:size row:0];
    [controller tableView:gTable setObjectValue:nil forTableColumn:name row:0];
    [controller tableView:gTable setObjectValue:@"x" forTableColumn:name row:3];
    [controller tableView:gTable setObjectValue:@"x" forTableColumn:name row:-1];
    KT_EXPECT_EQUAL_OBJECTS(Names(controller), @"a hidden c");
    [controller tableView:gTable setObjectValue:@"reject" forTableColumn:name row:1];
    KT_EXPECT_EQUAL_OBJECTS(Names(controller), @"a c");
    KT_EXPECT([gTable numberOfRows] == 2 && ![gWindow isDocumentEdited]);
}

KT_CASE(AddNewRowGoesBelowTheSelectionAndOpensIt)
{
    Recorder *recorder = [[[Recorder alloc] init] autorelease];
    TableController *controller = Serve(@"a b c d e", recorder, YES);
    Select(gTable, Set(3, 1));
    [controller addNewRow:nil];
    KT_EXPECT_EQUAL_OBJECTS(Names(controller), @"a b c d new4 e");
    KT_EXPECT_EQUAL_OBJECTS(Last(recorder, @"make"), ([NSArray arrayWithObjects:@"make", controller, N(4), nil]));
    KT_EXPECT_EQUAL_OBJECTS([gTable selectedRowIndexes], Set(4, 1));
    KT_EXPECT([gTable editedRow] == 4);
    [gTable abortEditing];
    [gTable deselectAll:nil];
    [controller addNewRow:nil];
    KT_EXPECT_EQUAL_OBJECTS(Names(controller), @"new0 a b c d new4 e");
    KT_EXPECT([gTable editedRow] == 0);
    [gTable abortEditing];
    KT_EXPECT(![gWindow isDocumentEdited]);
    TableController *plain = Serve(@"a", [[[NSObject alloc] init] autorelease], YES);
    [plain addNewRow:nil];
    [gTable abortEditing];
    KT_EXPECT([[plain datasourceArray] count] == 2);
    KT_EXPECT([[[plain datasourceArray] objectAtIndex:0] isKindOfClass:[NSMutableDictionary class]]);
}

KT_CASE(CommandsAreOfferedOnlyWhenTheyCanWork)
{
    Recorder *recorder = [[[Recorder alloc] init] autorelease];
    TableController *controller = Serve(@"a b c", nil, YES);
    SEL editing[] = {@selector(delete:), @selector(cut:), @selector(copy:), @selector(paste:)};
    Select(gTable, Set(0, 1));
    for (int i = 0; i < 4; i++)
        KT_EXPECT(![controller respondsToSelector:editing[i]]);
    KT_EXPECT([controller respondsToSelector:@selector(sortSelection:)] && ![controller respondsToSelector:NULL]);
    [controller setDelegate:[[[NSObject alloc] init] autorelease]];
    KT_EXPECT(![controller respondsToSelector:@selector(copy:)]);
    KT_EXPECT(![controller respondsToSelector:@selector(tableView:acceptDrop:row:dropOperation:)]);
    KT_EXPECT([controller tableView:gTable validateDrop:nil proposedRow:0 proposedDropOperation:0] == 0);
    [controller setDelegate:recorder];
    for (int i = 0; i < 4; i++)
        KT_EXPECT([controller respondsToSelector:editing[i]]);
    // From 10.4 on (as this system reports) rows are dragged by index set.
    KT_EXPECT(![controller respondsToSelector:@selector(tableView:writeRows:toPasteboard:)]);
    KT_EXPECT([controller respondsToSelector:@selector(tableView:writeRowsWithIndexes:toPasteboard:)]);
    KT_EXPECT([controller tableView:gTable validateDrop:nil proposedRow:0 proposedDropOperation:0] ==
              NSDragOperationCopy);
    // Without a selection only paste is offered, also along the table's responder chain.
    [gTable deselectAll:nil];
    KT_EXPECT(![controller respondsToSelector:@selector(delete:)] && ![controller respondsToSelector:@selector(cut:)]);
    KT_EXPECT([controller respondsToSelector:@selector(paste:)]);
    KT_EXPECT(![controller respondsToSelector:@selector(sortSelection:)]);
    KT_EXPECT(![gTable tryToPerform:@selector(copy:) with:nil]);
}

KT_CASE(CutCopyAndPasteGoThroughTheGeneralPasteboard)
{
    Recorder *recorder = [[[Recorder alloc] init] autorelease];
    TableController *controller = Serve(@"a b c d", recorder, YES);
    Select(gTable, Set(1, 2));
    KT_EXPECT([gTable tryToPerform:@selector(copy:) with:nil]);
    KT_EXPECT_EQUAL_OBJECTS([[NSPasteboard generalPasteboard] propertyListForType:kRowsType], Rows(@"b c"));
    KT_EXPECT([gTable tryToPerform:@selector(cut:) with:gTable]);
    KT_EXPECT_EQUAL_OBJECTS(Names(controller), @"a d");
    KT_EXPECT_EQUAL_OBJECTS(Last(recorder, @"delete"), ([NSArray arrayWithObjects:@"delete", controller, gTable, nil]));
    KT_EXPECT([gWindow isDocumentEdited]);
    Select(gTable, Set(0, 1));
    KT_EXPECT([gTable tryToPerform:@selector(paste:) with:nil]);
    KT_EXPECT_EQUAL_OBJECTS(Names(controller), @"a b c d");
    KT_EXPECT_EQUAL_OBJECTS([gTable selectedRowIndexes], Set(1, 2));
    [controller deleteBackward:nil];
    [controller deleteForward:nil]; // nothing is selected any more
    KT_EXPECT_EQUAL_OBJECTS(Names(controller), @"a d");
}

KT_CASE(SortingAndReplacingWorkOnTheSelectedPositions)
{
    Recorder *recorder = [[[Recorder alloc] init] autorelease];
    TableController *controller = Serve(@"e d c b a", recorder, YES);
    NSMutableIndexSet *selection = [NSMutableIndexSet indexSetWithIndex:1];
    [selection addIndexesInRange:NSMakeRange(3, 2)];
    Select(gTable, selection);
    [controller sortSelection:nil];
    KT_EXPECT_EQUAL_OBJECTS(Names(controller), @"e a c b d");
    KT_EXPECT([gWindow isDocumentEdited]);
    [controller sortAll:nil];
    KT_EXPECT_EQUAL_OBJECTS(Names(controller), @"a b c d e");
    KT_EXPECT(DatasourceRowCompare(nil, nil, NULL) == NSOrderedSame);
    // Replacing fills the selected positions, then appends or deletes what is left over.
    [gWindow setDocumentEdited:NO];
    Select(gTable, selection);
    [controller replaceSelectionWithDatasourceArray:Rows(@"X")];
    KT_EXPECT_EQUAL_OBJECTS(Names(controller), @"a X c");
    KT_EXPECT([gWindow isDocumentEdited]);
    Select(gTable, Set(1, 1));
    [controller replaceSelectionWithDatasourceArray:Rows(@"Y Z")];
    KT_EXPECT_EQUAL_OBJECTS(Names(controller), @"a Y Z c");
    KT_EXPECT_EQUAL_OBJECTS([gTable selectedRowIndexes], Set(1, 2));
    [[[controller datasourceArray] objectAtIndex:1] setObject:@"kept" forKey:@"size"];
    NSArray *values = [NSArray arrayWithObjects:@"P", @"Q", @"R", nil];
    KT_EXPECT([controller replaceSelectionWithDatasourceArray:values ofColumn:kName visibleValue:YES]);
    KT_EXPECT_EQUAL_OBJECTS(Names(controller), @"a P Q R c");
    KT_EXPECT_EQUAL_OBJECTS([[[controller datasourceArray] objectAtIndex:1] objectForKey:@"size"], @"kept");
    KT_EXPECT(![controller replaceSelectionWithDatasourceArray:[NSArray arrayWithObject:@"reject"]
                                                       ofColumn:kName visibleValue:YES]);
    KT_EXPECT(![controller replaceSelectionWithDatasourceArray:nil ofColumn:kName visibleValue:NO]);
    [controller replaceSelectionWithDatasourceArray:nil];
    KT_EXPECT_EQUAL_OBJECTS(Names(controller), @"a P Q R c");
    // Without a delegate that compares, nothing is sorted and the window stays unmarked.
    TableController *plain = Serve(@"b a", [[[NSObject alloc] init] autorelease], YES);
    [plain sortAll:nil];
    [plain sortSelection:nil];
    KT_EXPECT_EQUAL_OBJECTS(Names(plain), @"b a");
    KT_EXPECT(![gWindow isDocumentEdited]);
}

KT_CASE(MovingRowsSelectsThemAtTheirNewPlace)
{
    TableController *controller = Serve(@"A B C D E", nil, YES);
    Select(gTable, Set(1, 1));
    [gTable selectRowIndexes:Set(3, 1) byExtendingSelection:YES];
    KT_EXPECT_EQUAL_OBJECTS([controller selectedRowArray], Indexes(1, 3));
    [controller moveRows:[controller selectedRowArray] to:4];
    KT_EXPECT_EQUAL_OBJECTS(Names(controller), @"A C B D E");
    KT_EXPECT_EQUAL_OBJECTS([gTable selectedRowIndexes], Set(2, 2));
    KT_EXPECT([gWindow isDocumentEdited]);
    [gWindow setDocumentEdited:NO];
    [controller moveRows:nil to:0]; // moves nothing, still marks the window
    KT_EXPECT_EQUAL_OBJECTS([gTable selectedRowIndexes], Set(2, 2));
    KT_EXPECT([gWindow isDocumentEdited]);
    [controller moveRows:[NSData dataWithBytes:"\1\0" length:2] to:0];
    KT_EXPECT([gTable numberOfSelectedRows] == 0);
    [controller moveRows:Indexes(1, 7) to:0];
    [controller moveRows:Indexes(3, 1) to:0];
    [controller moveRows:Indexes(1, 3) to:-1];
    KT_EXPECT_EQUAL_OBJECTS(Names(controller), @"A C B D E");
}

/* The table's delegate sees inserted and moved rows selected one by one,
 * each row a change of selection of its own. */
KT_CASE(RowsAreSelectedOneByOne)
{
    Recorder *recorder = [[[Recorder alloc] init] autorelease];
    TableController *controller = Serve(@"a b c d e", recorder, YES);
    NSArray *kinds = [NSArray arrayWithObject:@"selection"];
    Select(gTable, Set(0, 1));
    [recorder->calls removeAllObjects];
    [controller insertDatasourceArray:Rows(@"x y z") atIndex:1];
    KT_EXPECT_EQUAL_OBJECTS(Seen(recorder, kinds), @"selection= selection=1 selection=1,2 selection=1,2,3");
    [recorder->calls removeAllObjects];
    [controller moveRows:[controller selectedRowArray] to:7];
    KT_EXPECT_EQUAL_OBJECTS(Names(controller), @"a b c d x y z e");
    KT_EXPECT_EQUAL_OBJECTS(Seen(recorder, kinds), @"selection= selection=4 selection=4,5 selection=4,5,6");
}

KT_CASE(ColumnsComeOutWholeAndRowsAreEnumerated)
{
    Recorder *recorder = [[[Recorder alloc] init] autorelease];
    TableController *controller = Serve(@"a b c", recorder, YES);
    Select(gTable, Set(1, 2));
    KT_EXPECT_EQUAL_OBJECTS([controller selectedDatasourceOfColumn:kName visibleValue:YES],
                            ([NSArray arrayWithObjects:@"<b>", @"<c>", nil]));
    KT_EXPECT_EQUAL_OBJECTS([controller selectedDatasourceArray], Rows(@"b c"));
    KT_EXPECT([controller datasourceOfColumn:@"size" visibleValue:NO] == nil);
    [recorder->calls removeAllObjects];
    NSArray *values = [NSArray arrayWithObjects:@"x", @"reject", @"y", nil];
    KT_EXPECT([controller insertDatasourceArray:values ofColumn:nil visibleValue:YES atIndex:99]);
    KT_EXPECT_EQUAL_OBJECTS([controller datasourceOfColumn:nil visibleValue:NO onlySelected:YES],
                            ([NSArray arrayWithObjects:@"x", @"y", nil]));
    // Values are converted with their position, rows made for the insertion index.
    KT_EXPECT_EQUAL_OBJECTS(Seen(recorder, [NSArray arrayWithObjects:@"edit", @"make", nil]),
                            ([NSString stringWithFormat:@"edit=%@=x=<default>=0 make=%@=3 edit=%@=reject=<default>=1 "
                                                        @"edit=%@=y=<default>=2 make=%@=3",
                                                        controller, controller, controller, controller, controller]));
    KT_EXPECT(![controller insertDatasourceArray:nil ofColumn:kName visibleValue:NO atIndex:0]);
    KT_EXPECT(![controller replaceValue:@"z" ofRow:5 ofColumn:kName visibleValue:NO]);
    KT_EXPECT([controller setDatasourceArray:values ofColumn:kName visibleValue:NO]);
    KT_EXPECT_EQUAL_OBJECTS(Names(controller), @"x reject y");
    // Enumeration hands over the rows until the delegate stops.
    [controller setDatasourceArray:Rows(@"a stop b")];
    Select(gTable, Set(0, 1));
    [controller enumerateRows];
    [controller enumerateSelectedRows];
    KT_EXPECT_EQUAL_OBJECTS(Seen(recorder, [NSArray arrayWithObjects:@"row", @"selected", nil]),
                            @"row=a row=stop selected=a selected=stop selected=b");
}

KT_CASE(NothingBreaksWithoutATableOrADelegate)
{
    TableController *controller = [[[TableController alloc] init] autorelease];
    KT_EXPECT([[controller datasourceArray] count] == 0);
    [controller setDatasourceArray:Rows(@"a b")];
    [controller addNewRow:nil];
    [controller delete:nil];
    [controller cut:nil];
    [controller paste:nil];
    [controller sortSelection:nil];
    [controller moveRows:Indexes(0, 1) to:2];
    [controller replaceSelectionWithDatasourceArray:Rows(@"z")];
    [controller deleteSelectedRowAfter:-1];
    [controller setDropTargetForTypes:nil];
    [controller setTableView:nil];
    // An empty new row, the block moved onto itself, "z" at the top.
    KT_EXPECT([[controller datasourceArray] count] == 4);
    KT_EXPECT_EQUAL_OBJECTS([[controller datasourceArray] objectAtIndex:0], [Rows(@"z") lastObject]);
    KT_EXPECT([[[controller datasourceArray] objectAtIndex:1] count] == 0);
    KT_EXPECT([controller insertIndexToAdd] == 0 && [controller insertIndexToReplace] == 0);
    KT_EXPECT([[controller selectedRowArray] length] == 0 && [controller numberOfRowsInTableView:nil] == 0);
    // A table without columns raises as it lays itself out: nothing escapes, no row is lost.
    KGUISharedApplication();
    NSTableView *bare = [[[NSTableView alloc] initWithFrame:NSMakeRect(0, 0, 50, 50)] autorelease];
    TableController *served = [[[TableController alloc] initWithTableView:bare] autorelease];
    [served setDatasourceArray:Rows(@"a b")];
    [served addNewRow:nil];
    [served moveRows:Indexes(0, 1) to:3];
    [served sortAll:nil];
    KT_EXPECT([[served datasourceArray] count] == 3);
    // TableView drags as NSTableView does on this system (10.4 and later).
    TableView *table = [[[TableView alloc] initWithFrame:NSMakeRect(0, 0, 50, 50)] autorelease];
    [table setDraggingSourceOperationMask:NSDragOperationCopy forLocal:NO];
    KT_EXPECT(GestaltSystemVersion() >= 0x1040 && [table draggingSourceOperationMaskForLocal:NO] == NSDragOperationCopy);
}

/* What the probe prints for mode, run without a display: a controller
 * without a table must not need one. */
static NSString *RunProbe(NSString *mode, NSString *key)
{
    NSTask *task = [[[NSTask alloc] init] autorelease];
    NSPipe *pipe = [NSPipe pipe];
    NSMutableDictionary *environment = [[[[NSProcessInfo processInfo] environment] mutableCopy] autorelease];
    [environment removeObjectForKey:@"DISPLAY"];
    [task setEnvironment:environment];
    [task setLaunchPath:@TABLE_CONTROLLER_PROBE];
    [task setArguments:[NSArray arrayWithObjects:mode, key, nil]];
    [task setStandardOutput:pipe];
    [task launch];
    NSData *output = [[pipe fileHandleForReading] readDataToEndOfFile];
    [task waitUntilExit];
    NSString *text = [[[NSString alloc] initWithData:output encoding:NSUTF8StringEncoding] autorelease];
    return [task terminationStatus] == 0 ? text : nil;
}

KT_CASE(RowsComeBackInANewProcess)
{
    KT_EXPECT_EQUAL_OBJECTS(RunProbe(@"write", @"KORUTableTestRows"), @"");
    KT_EXPECT_EQUAL_OBJECTS(RunProbe(@"read", @"KORUTableTestRows"), @"first second third\n");
    // Rows not stored before the key changes are gone.
    KT_EXPECT_EQUAL_OBJECTS(RunProbe(@"switch", @"KORUTableTestRows"), @"first second third\n");
}

KT_CASE(StoredValuesOfAnotherShapeAreNeitherShownNorLost)
{
    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    NSArray *strange = [NSArray arrayWithObjects:@"text", [NSNumber numberWithInt:7], nil];
    [defaults setObject:strange forKey:@"KORUTableTestStrange"];
    [defaults setObject:@"not rows" forKey:@"KORUTableTestText"];
    TableController *controller = Serve(nil, [[[Recorder alloc] init] autorelease], YES);
    [controller setUserDefaultKey:@"KORUTableTestText" andLoad:YES];
    KT_EXPECT([[controller datasourceArray] count] == 0);
    [controller setUserDefaultKey:@"KORUTableTestStrange" andLoad:YES];
    KT_EXPECT([gTable numberOfRows] == 2);
    NSTableColumn *name = [gTable tableColumnWithIdentifier:kName];
    KT_EXPECT_EQUAL_OBJECTS([controller tableView:gTable objectValueForTableColumn:name row:0], @"<(null)>");
    [controller tableView:gTable setObjectValue:@"x" forTableColumn:name row:0];
    KT_EXPECT(![controller replaceValue:@"x" ofRow:1 ofColumn:kName visibleValue:NO]);
    KT_EXPECT([controller datasourceOfColumn:kName visibleValue:NO] == nil);
    [controller sortAll:nil];
    [controller setTableView:nil];
    [controller storeDatasource:nil];
    KT_EXPECT_EQUAL_OBJECTS([defaults objectForKey:@"KORUTableTestStrange"], strange);
    [defaults removeObjectForKey:@"KORUTableTestStrange"];
    [defaults removeObjectForKey:@"KORUTableTestText"];
}

KT_MAIN()
