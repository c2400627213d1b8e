/* TableController: the model and data source of one NSTableView whose rows
 * are editable records, and TableView, the table view subclass it comes with.
 *
 * The controller owns its rows, a mutable array of mutable dictionaries in
 * display order; a cell's value is kept under its column's identifier, or
 * under "<default>" for a column without one.  With a user-defaults key the
 * rows are read from the standard user defaults when the key is set and
 * written back under it by storeDatasource:, which dealloc calls; nothing is
 * written on each change.  The controller keeps the table, the window's
 * edited mark (when autosetWindowEdited is on) and the responder chain in
 * step: it sits directly after the table (or after vPreviousResponder) in the
 * chain, so that the editing commands of the menus reach it, and answers
 * respondsToSelector: for them by what can be done at the moment.
 *
 * What the rows mean is the delegate's business: making a new row, turning
 * values into what is shown and back, the clipboard, the sort order, drag and
 * drop.  Every delegate method is optional and looked up before each use; a
 * feature the delegate does not offer is off.  The controller retains its
 * table, rows and key, never its delegate.
 *
 * Main thread only, like the table it serves.  No method raises: rows out of
 * range, absent arguments and rows that are not dictionaries give the neutral
 * answer ("" shown, 0, NO, nil) and change nothing. */
#ifndef KORU_TABLECONTROLLER_H
#define KORU_TABLECONTROLLER_H

#import <AppKit/AppKit.h>

/* Orders two rows for sortAll: and sortSelection:, the context being the
 * controller: the answer of the controller's delegate to
 * tableController:compareRows:with:, with no tie-break of its own.
 * NSOrderedSame when the context is NULL or the delegate does not compare. */
NSComparisonResult DatasourceRowCompare(id row1, id row2, void *context);

@interface TableController : NSResponder
{
    IBOutlet NSTableView *vTableView;
    IBOutlet NSResponder *vPreviousResponder;
    NSMutableArray *mDatasourceArray;
    NSString *mDatasourceUDKey;
    id mDelegate;
    BOOL mAutosetWindowEdited;
    BOOL mDontDeselectTemporary;
}

/* ---- Creation and wiring ---- */

/* No table; the rows are an empty array held in memory only. */
- (id)init;
- (id)initWithTableView:(NSTableView *)tableView;
/* Serves tableView and loads the rows stored under key (none: empty rows). */
- (id)initWithTableView:(NSTableView *)tableView userDefaultKey:(NSString *)key;
- (void)awakeFromNib;

- (NSTableView *)tableView;
/* Leaves the old table (delegate and data source cleared, the controller
 * taken out of its responder chain), retains the new one and wires it:
 * data source the controller, delegate the controller's delegate, the
 * controller inserted after vPreviousResponder or the table.  nil only
 * leaves the old table.  A table should be wired once it is in its scroll
 * view, since joining a superview resets a view's next responder. */
- (void)setTableView:(NSTableView *)tableView;
- (void)connectViewToModel;
- (void)releaseTableView;

- (id)delegate;
/* Not retained; also made the table's delegate. */
- (void)setDelegate:(id)delegate;
- (BOOL)autosetWindowEdited;
- (void)setAutosetWindowEdited:(BOOL)flag;

/* The live row array itself, not a copy; nil when loading failed. */
- (NSMutableArray *)datasourceArray;

- (NSString *)userDefaultKey;
/* Retains key; with load YES reloads the rows from it at once, dropping the
 * rows held so far without storing them under the old key. */
- (void)setUserDefaultKey:(NSString *)key andLoad:(BOOL)load;

/* Registers types for drops on the table; nothing for nil. */
- (void)setDropTargetForTypes:(NSArray *)types;

/* ---- Persistence ---- */

- (void)loadDatasourceIfNeed;
/* Drops the rows held (unstored) and reads the array under the key, a deep
 * mutable copy; an empty array without a key or a stored array.  Marks the
 * window as edited, by design. */
- (void)loadDatasource;
/* Writes the rows into the standard user defaults under the key (sender is
 * ignored); nothing without rows or key.  The caller synchronizes. */
- (void)storeDatasource:(id)sender;
- (void)releaseDatasource;

/* ---- NSTableView data source ---- */

- (NSInteger)numberOfRowsInTableView:(NSTableView *)tableView;
- (id)tableView:(NSTableView *)tableView objectValueForTableColumn:(NSTableColumn *)column row:(NSInteger)row;
- (void)tableView:(NSTableView *)tableView setObjectValue:(id)value forTableColumn:(NSTableColumn *)column
              row:(NSInteger)row;
/* Passed to the delegate when it implements them; otherwise 0 or NO. */
- (NSDragOperation)tableView:(NSTableView *)tableView validateDrop:(id<NSDraggingInfo>)info
                 proposedRow:(NSInteger)row proposedDropOperation:(NSTableViewDropOperation)operation;
- (BOOL)tableView:(NSTableView *)tableView acceptDrop:(id<NSDraggingInfo>)info row:(NSInteger)row
    dropOperation:(NSTableViewDropOperation)operation;
- (BOOL)tableView:(NSTableView *)tableView writeRows:(NSArray *)rows toPasteboard:(NSPasteboard *)pasteboard;
- (BOOL)tableView:(NSTableView *)tableView writeRowsWithIndexes:(NSIndexSet *)rows
     toPasteboard:(NSPasteboard *)pasteboard;

/* ---- Row access ---- */

/* The selected row objects themselves, in ascending row order (autoreleased). */
- (NSMutableArray *)selectedDatasourceArray;
/* The selected row indexes, ascending, as 4-byte unsigned integers in host
 * byte order: the form moveRows:to: takes (autoreleased). */
- (NSMutableData *)selectedRowArray;

/* One column's values (the identifier given, nil meaning "<default>"), in
 * row order, converted for display by the delegate when visible is YES.
 * nil when any row lacks the value, deliberately. */
- (NSMutableArray *)datasourceOfColumn:(id)column visibleValue:(BOOL)visible;
- (NSMutableArray *)selectedDatasourceOfColumn:(id)column visibleValue:(BOOL)visible;
- (NSMutableArray *)datasourceOfColumn:(id)column visibleValue:(BOOL)visible onlySelected:(BOOL)selected;

/* Below the selected row, or 0 when no row is selected. */
- (int)insertIndexToAdd;
/* The topmost selected row, or 0 when no row is selected. */
- (int)insertIndexToReplace;
/* The delegate's new row for index, or a new empty mutable dictionary. */
- (NSMutableDictionary *)initialRowDatasourceForIndex:(int)index;

/* ---- Changing the rows ---- */

- (void)emptyDatasourceArray;
- (void)setDatasourceArray:(NSArray *)rows;
- (void)addDatasourceArray:(NSArray *)rows;
/* Inserts rows at index (clamped to the array), refreshes the table and
 * selects the inserted rows (the last one on a single-selection table). */
- (void)insertDatasourceArray:(NSArray *)rows atIndex:(int)index;

/* As above with one new row per value, the value under column. */
- (BOOL)setDatasourceArray:(NSArray *)values ofColumn:(id)column visibleValue:(BOOL)visible;
- (BOOL)addDatasourceArray:(NSArray *)values ofColumn:(id)column visibleValue:(BOOL)visible;
- (BOOL)insertDatasourceArray:(NSArray *)values ofColumn:(id)column visibleValue:(BOOL)visible
                      atIndex:(int)index;

/* Sets one value; the table is not told.  NO for a nil value, a row out of
 * range or a value the delegate's conversion rejects. */
- (BOOL)replaceValue:(id)value ofRow:(int)row ofColumn:(id)column visibleValue:(BOOL)visible;

/* Puts the rows (or values) into the selected rows in order, appending a
 * surplus below the selected row and deleting selected rows left over. */
- (void)replaceSelectionWithDatasourceArray:(NSArray *)rows;
- (BOOL)replaceSelectionWithDatasourceArray:(NSArray *)values ofColumn:(id)column visibleValue:(BOOL)visible;

/* Deselects and removes the selected rows from start on; the table is not told. */
- (void)deleteSelectedRowAfter:(int)start;
/* Moves the rows listed in rows (as selectedRowArray makes them) as a block
 * to index, and selects them there. */
- (void)moveRows:(NSData *)rows to:(int)index;

/* Hand every row, selected or not, to the delegate until it answers NO. */
- (void)enumerateRows;
- (void)enumerateSelectedRows;

/* With autosetWindowEdited on, sets the table window's edited mark. */
- (void)setWindowEditedIfNeed:(BOOL)flag;

/* ---- Commands ---- */

- (IBAction)addNewRow:(id)sender;
- (IBAction)delete:(id)sender;
- (IBAction)deleteForward:(id)sender;
- (IBAction)deleteBackward:(id)sender;
- (IBAction)cut:(id)sender;
- (IBAction)copy:(id)sender;
- (IBAction)paste:(id)sender;
- (IBAction)sortAll:(id)sender;
- (IBAction)sortSelection:(id)sender;

@end

/* What a TableController asks its delegate; every method is optional.  A row
 * argument is a table row, except for the values of the column insertion
 * methods, which are converted with their position among the values. */
@interface NSObject (TableControllerDelegate)
/* A new mutable row to insert at index, or nil for an empty one. */
- (NSMutableDictionary *)tableController:(TableController *)controller makeInitialRowForIndex:(int)index;
/* The value shown for a stored value. */
- (id)tableController:(TableController *)controller convertVisibleValue:(id)value
    forColumnIdentifier:(id)identifier row:(int)row;
/* The value stored for an edited one; nil rejects it (an edited cell's row
 * is then removed). */
- (id)tableController:(TableController *)controller convertSetEditedValue:(id)value
    forColumnIdentifier:(id)identifier row:(int)row;
- (void)tableController:(TableController *)controller delete:(id)sender;
- (void)tableController:(TableController *)controller copy:(id)sender;
/* The rows to add. */
- (NSArray *)tableController:(TableController *)controller paste:(id)sender;
- (NSComparisonResult)tableController:(TableController *)controller compareRows:(id)row1 with:(id)row2;
/* YES to go on. */
- (BOOL)tableController:(TableController *)controller enumerateRows:(id)row;
- (BOOL)tableController:(TableController *)controller enumerateSelectedRows:(id)row;
@end

/* A table view whose drag source answers every operation on systems before
 * 10.4, and otherwise what NSTableView answers. */
@interface TableView : NSTableView
@end

#endif
