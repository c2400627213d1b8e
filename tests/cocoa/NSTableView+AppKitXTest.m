/* NSTableView(AppKitX) on a real table with a data source, in a window on
 * the test display. */
#import "KTest.h"
#import "KGUI.h"

#include <KORU/KORU.h>

@interface Rows : NSObject {
@public
    int count;
}
@end

@implementation Rows
- (NSInteger)numberOfRowsInTableView:(NSTableView *)table
{
    (void)table;
    return count;
}

- (id)tableView:(NSTableView *)table objectValueForTableColumn:(NSTableColumn *)column
            row:(NSInteger)row
{
    (void)table;
    return [NSString stringWithFormat:@"%@ %ld", [column identifier], (long)row];
}

- (void)tableView:(NSTableView *)table setObjectValue:(id)value
   forTableColumn:(NSTableColumn *)column row:(NSInteger)row
{
    (void)table, (void)value, (void)column, (void)row;
}
@end

static NSTableView *MakeTable(NSWindow *window, Rows *rows, BOOL editable)
{
    NSTableView *table = [[[NSTableView alloc] initWithFrame:NSMakeRect(0, 0, 200, 150)] autorelease];
    for (int i = 0; i < 3; i++) {
        NSTableColumn *column = [[[NSTableColumn alloc]
            initWithIdentifier:[NSString stringWithFormat:@"c%d", i]] autorelease];
        [column setEditable:editable && i != 2];
        [table addTableColumn:column];
    }
    [table setAllowsMultipleSelection:YES];
    [table setDataSource:rows];
    [[window contentView] addSubview:table];
    [table reloadData];
    return table;
}

KT_CASE(TopAndBottomSelectedRows)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(50, 50, 220, 170), @"Rows");
    Rows *rows = [[[Rows alloc] init] autorelease];
    rows->count = 5;
    NSTableView *table = MakeTable(window, rows, NO);
    KT_EXPECT([table topSelectedRow] == -1 && [table bottomSelectedRow] == -1);
    [table selectRowIndexes:[NSIndexSet indexSetWithIndex:0] byExtendingSelection:NO];
    KT_EXPECT([table topSelectedRow] == 0 && [table bottomSelectedRow] == -1); /* row 0 is never examined */
    NSMutableIndexSet *some = [NSMutableIndexSet indexSetWithIndex:1];
    [some addIndex:3];
    [table selectRowIndexes:some byExtendingSelection:NO];
    KT_EXPECT([table topSelectedRow] == 1 && [table bottomSelectedRow] == 3);
    KGUICloseWindow(window);
}

KT_CASE(SelectRowClampsExtendsAndEdits)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(50, 50, 220, 170), @"Select");
    Rows *rows = [[[Rows alloc] init] autorelease];
    NSTableView *table = MakeTable(window, rows, YES);
    [table selectRow:2 asExtending:NO andEdit:NO]; /* no rows: nothing */
    KT_EXPECT([table numberOfSelectedRows] == 0);
    rows->count = 5;
    [table reloadData];
    [table selectRow:99 asExtending:NO andEdit:NO];
    KT_EXPECT([table selectedRow] == 4 && [table numberOfSelectedRows] == 1);
    [table selectRow:-3 asExtending:YES andEdit:NO];
    KT_EXPECT([table isRowSelected:0] && [table isRowSelected:4] && [table numberOfSelectedRows] == 2);
    KT_EXPECT([table editedRow] == -1);
    /* Columns 0 and 1 are editable: the last of them keeps the editor. */
    [table selectRow:3 asExtending:NO andEdit:YES];
    KT_EXPECT([table selectedRow] == 3);
    KT_EXPECT_MSG([table editedRow] == 3 && [table editedColumn] == 1, @"row %ld column %ld",
                  (long)[table editedRow], (long)[table editedColumn]);
    KT_EXPECT(KGUIScreenshot(window, @"AppKitXTable.png") != nil);
    KGUICloseWindow(window);
}

KT_CASE(MouseOverRow)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(50, 50, 220, 170), @"Mouse");
    Rows *rows = [[[Rows alloc] init] autorelease];
    rows->count = 3;
    NSTableView *table = MakeTable(window, rows, NO);
    KT_EXPECT([table mouseOverRow] == [table rowAtPoint:[table mouseLocation]]);
    NSTableView *loose = [[[NSTableView alloc] initWithFrame:NSMakeRect(0, 0, 10, 10)] autorelease];
    KT_EXPECT([loose mouseOverRow] == -1);
    KGUICloseWindow(window);
}

KT_MAIN()
