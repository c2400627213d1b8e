/* NSTableView(AppKitX): selection helpers. */
#import <KORU/AppKitX.h>

#import "FoundationXSupport.h"

@implementation NSTableView (AppKitX)

- (int)topSelectedRow
{
    int rows = (int)[self numberOfRows];
    for (int row = 0; row < rows; row++)
        if ([self isRowSelected:row])
            return row;
    return -1;
}

/* The scan stops above row 0, so a selection of row 0 alone answers -1;
 * the table controller relies on this. */
- (int)bottomSelectedRow
{
    for (int row = (int)[self numberOfRows] - 1; row > 0; row--)
        if ([self isRowSelected:row])
            return row;
    return -1;
}

- (int)mouseOverRow
{
    return (int)[self rowAtPoint:[self mouseLocation]];
}

- (void)selectRow:(int)row asExtending:(BOOL)extend andEdit:(BOOL)edit
{
    int rows = (int)[self numberOfRows];
    if (rows <= 0)
        return;
    if (row >= rows)
        row = rows - 1;
    if (row < 0)
        row = 0;
    @try {
        if ([self respondsToSelector:@selector(selectRowIndexes:byExtendingSelection:)])
            [self selectRowIndexes:[NSIndexSet indexSetWithIndex:row] byExtendingSelection:extend];
        else
            [self selectRow:row byExtendingSelection:extend];
        [self scrollRowToVisible:row];
        if (!edit)
            return;
        NSArray *columns = [self tableColumns];
        NSUInteger count = [columns count];
        for (NSUInteger column = 0; column < count; column++)
            if ([[columns objectAtIndex:column] isEditable])
                [self editColumn:column row:row withEvent:nil select:YES];
    } @catch (NSException *exception) {
        KORULogException("-[NSTableView(AppKitX) selectRow:asExtending:andEdit:]", __LINE__, exception);
    }
}

@end
