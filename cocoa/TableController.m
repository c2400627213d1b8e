/* TableController. */
#import <KORU/TableController.h>

#import <KORU/AppKitX.h>
#import <KORU/NSArray+FoundationX.h>
#import <KORU/NSUserDefaults+FoundationX.h>
#include <KORU/SystemInfo.h>

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#import "FoundationXSupport.h"

/* The first system whose tables drag rows by index set. */
enum { kSystemWithRowIndexDrags = 0x1040 };

static NSString *const kDefaultColumnKey = @"<default>";

/* Where a cell's value is kept: the column identifier, or "<default>". */
static id KeyOfIdentifier(id identifier)
{
    return identifier != nil ? identifier : kDefaultColumnKey;
}

static id KeyOfColumn(NSTableColumn *column)
{
    return KeyOfIdentifier([column identifier]);
}

/* A key the user defaults can hold rows under. */
static BOOL IsDefaultsKey(NSString *key)
{
    return [key isKindOfClass:[NSString class]] && [key length] > 0;
}

/* The value of row under key; nil for a row that is no dictionary (rows read
 * from the user defaults are whatever was stored there). */
static id ValueOfRow(id row, id key)
{
    return [row isKindOfClass:[NSDictionary class]] ? [row objectForKey:key] : nil;
}

/* What the sorts hand sortUsingFunction:context:: the answer
 * DatasourceRowCompare gives, with the delegate's method looked up once per
 * sort instead of once per comparison (a sort of 100 000 rows compares about
 * 1.7 million times). */
typedef NSComparisonResult (*CompareRowsIMP)(id, SEL, TableController *, id, id);

typedef struct {
    TableController *controller;
    id delegate;
    SEL selector;
    CompareRowsIMP compare;
} RowOrder;

static RowOrder RowOrderOf(TableController *controller)
{
    RowOrder order = {controller, [controller delegate], @selector(tableController:compareRows:with:), NULL};
    order.compare = (CompareRowsIMP)(void (*)(void))[order.delegate methodForSelector:order.selector];
    return order;
}

static NSInteger SortRows(id row1, id row2, void *context)
{
    RowOrder *order = context;
    return order->compare(order->delegate, order->selector, order->controller, row1, row2);
}

NSComparisonResult DatasourceRowCompare(id row1, id row2, void *context)
{
    TableController *controller = (TableController *)context;
    if (controller == nil)
        return NSOrderedSame;
    id delegate = [controller delegate];
    if (![delegate respondsToSelector:@selector(tableController:compareRows:with:)])
        return NSOrderedSame;
    return [delegate tableController:controller compareRows:row1 with:row2];
}

@implementation TableController

/* ---- The table's own calls ---- */

/* The table is told of changes made to the rows; what it raises (a table
 * without columns raises as it lays itself out again) is caught here, so
 * that a change already made to the rows is never left half reported. */
- (void)noteRowsChanged
{
    @try {
        [vTableView noteNumberOfRowsChanged];
    } @catch (NSException *exception) {
        KORULogException("-[TableController noteRowsChanged]", __LINE__, exception);
    }
}

- (void)deselectAllRows
{
    @try {
        [vTableView deselectAll:self];
    } @catch (NSException *exception) {
        KORULogException("-[TableController deselectAllRows]", __LINE__, exception);
    }
}

- (void)deselectRow:(NSUInteger)row
{
    @try {
        [vTableView deselectRow:(NSInteger)row];
    } @catch (NSException *exception) {
        KORULogException("-[TableController deselectRow:]", __LINE__, exception);
    }
}

/* ---- Creation and wiring ---- */

- (id)init
{
    self = [super init];
    if (self == nil)
        return nil;
    [self loadDatasourceIfNeed];
    return self;
}

- (id)initWithTableView:(NSTableView *)tableView
{
    return [self initWithTableView:tableView userDefaultKey:nil];
}

- (id)initWithTableView:(NSTableView *)tableView userDefaultKey:(NSString *)key
{
    self = [super init];
    if (self == nil)
        return nil;
    [self setTableView:tableView];
    [self setUserDefaultKey:key andLoad:YES];
    return self;
}

- (void)awakeFromNib
{
    [vTableView retain];
    [self loadDatasourceIfNeed];
    [self connectViewToModel];
}

- (void)dealloc
{
    [self releaseTableView];
    [self releaseDatasource];
    [super dealloc];
}

- (NSTableView *)tableView
{
    return vTableView;
}

- (void)setTableView:(NSTableView *)tableView
{
    [tableView retain];
    [self releaseTableView];
    vTableView = tableView;
    [self loadDatasourceIfNeed];
    [self connectViewToModel];
}

- (void)connectViewToModel
{
    if (vTableView == nil)
        return;
    @try {
        [vTableView setDelegate:mDelegate];
        [vTableView setDataSource:self];
        [(vPreviousResponder != nil ? vPreviousResponder : (NSResponder *)vTableView) insertNextResponder:self];
    } @catch (NSException *exception) {
        KORULogException("-[TableController connectViewToModel]", __LINE__, exception);
    }
}

/* The controller leaves the chain it joined, so that the responder before it
 * never points at a controller that is gone.  The walk is bounded: a chain
 * made into a loop elsewhere must not hang this. */
- (void)leaveResponderChain
{
    NSResponder *responder = vPreviousResponder != nil ? vPreviousResponder : (NSResponder *)vTableView;
    for (int step = 0; responder != nil && step < 256; step++) {
        NSResponder *next = [responder nextResponder];
        if (next == self) {
            [responder setNextResponder:[self nextResponder]];
            return;
        }
        responder = next;
    }
}

- (void)releaseTableView
{
    if (vTableView == nil)
        return;
    @try {
        [vTableView setDelegate:nil];
        [vTableView setDataSource:nil];
        [self leaveResponderChain];
    } @catch (NSException *exception) {
        KORULogException("-[TableController releaseTableView]", __LINE__, exception);
    }
    [vTableView release];
    vTableView = nil;
}

- (id)delegate
{
    return mDelegate;
}

- (void)setDelegate:(id)delegate
{
    mDelegate = delegate;
    @try {
        [vTableView setDelegate:delegate];
    } @catch (NSException *exception) {
        KORULogException("-[TableController setDelegate:]", __LINE__, exception);
    }
}

- (BOOL)autosetWindowEdited
{
    return mAutosetWindowEdited;
}

- (void)setAutosetWindowEdited:(BOOL)flag
{
    mAutosetWindowEdited = flag;
}

- (NSMutableArray *)datasourceArray
{
    return mDatasourceArray;
}

- (NSString *)userDefaultKey
{
    return mDatasourceUDKey;
}

- (void)setUserDefaultKey:(NSString *)key andLoad:(BOOL)load
{
    [key retain];
    [mDatasourceUDKey release];
    mDatasourceUDKey = key;
    if (load)
        [self loadDatasource];
}

- (void)setDropTargetForTypes:(NSArray *)types
{
    if (types == nil)
        return;
    @try {
        [vTableView registerForDraggedTypes:types];
    } @catch (NSException *exception) {
        KORULogException("-[TableController setDropTargetForTypes:]", __LINE__, exception);
    }
}

/* ---- Persistence ---- */

- (void)loadDatasourceIfNeed
{
    if (mDatasourceArray == nil)
        [self loadDatasource];
}

- (void)loadDatasource
{
    [mDatasourceArray release];
    mDatasourceArray = nil;
    if (!IsDefaultsKey(mDatasourceUDKey))
        mDatasourceArray = [[NSMutableArray alloc] initWithCapacity:0];
    else
        mDatasourceArray = [[[NSUserDefaults standardUserDefaults] mutableArrayForKey:mDatasourceUDKey] retain];
    if (mDatasourceArray != nil) {
        // Loading marks the window as edited: kept as hosts know it.
        [self setWindowEditedIfNeed:YES];
        [self noteRowsChanged];
    } else {
        KORULogFailure("-[TableController loadDatasource]", __LINE__);
    }
}

- (void)storeDatasource:(id)sender
{
    (void)sender;
    if (mDatasourceArray == nil || !IsDefaultsKey(mDatasourceUDKey))
        return;
    // The rows as they are now, not the live array: changes made after this
    // are not written by someone else's synchronize.  Rows holding values
    // that are no property list cannot be copied, and nothing is written.
    CFPropertyListRef rows = CFPropertyListCreateDeepCopy(kCFAllocatorDefault, (CFPropertyListRef)mDatasourceArray,
                                                          kCFPropertyListImmutable);
    if (rows == NULL) {
        KORULogFailure("-[TableController storeDatasource:]", __LINE__);
        return;
    }
    @try {
        [[NSUserDefaults standardUserDefaults] setObject:(id)rows forKey:mDatasourceUDKey];
    } @catch (NSException *exception) {
        KORULogException("-[TableController storeDatasource:]", __LINE__, exception);
    }
    CFRelease(rows);
}

- (void)releaseDatasource
{
    [self storeDatasource:nil];
    [mDatasourceArray release];
    mDatasourceArray = nil;
    [mDatasourceUDKey release];
    mDatasourceUDKey = nil;
}

/* ---- NSTableView data source ---- */

- (NSInteger)numberOfRowsInTableView:(NSTableView *)tableView
{
    if (tableView == nil || tableView != vTableView || mDatasourceArray == nil)
        return 0;
    return (NSInteger)[mDatasourceArray count];
}

- (id)tableView:(NSTableView *)tableView objectValueForTableColumn:(NSTableColumn *)column row:(NSInteger)row
{
    if (tableView == nil || tableView != vTableView || mDatasourceArray == nil || row < 0 ||
        (NSUInteger)row >= [mDatasourceArray count])
        return @"";
    id key = KeyOfColumn(column);
    id value = ValueOfRow([mDatasourceArray objectAtIndex:row], key);
    if ([mDelegate respondsToSelector:@selector(tableController:convertVisibleValue:forColumnIdentifier:row:)])
        value = [mDelegate tableController:self convertVisibleValue:value forColumnIdentifier:key row:(int)row];
    return value != nil ? value : @"";
}

- (void)tableView:(NSTableView *)tableView setObjectValue:(id)value forTableColumn:(NSTableColumn *)column
              row:(NSInteger)row
{
    if (tableView == nil || tableView != vTableView || value == nil || ![column isEditable] ||
        mDatasourceArray == nil || row < 0 || (NSUInteger)row >= [mDatasourceArray count])
        return;
    id key = KeyOfColumn(column);
    if ([mDelegate respondsToSelector:@selector(tableController:convertSetEditedValue:forColumnIdentifier:row:)]) {
        value = [mDelegate tableController:self convertSetEditedValue:value forColumnIdentifier:key row:(int)row];
        if (value == nil) {
            // A rejected edit removes the row, by design.
            if ((NSUInteger)row < [mDatasourceArray count])
                [mDatasourceArray removeObjectAtIndex:row];
            [self noteRowsChanged];
            return;
        }
    }
    NSMutableDictionary *stored = [mDatasourceArray objectAtIndex:row];
    if (![stored isKindOfClass:[NSMutableDictionary class]] || NSIsEqual(value, [stored objectForKey:key]))
        return;
    [stored setObject:value forKey:key];
    [self setWindowEditedIfNeed:YES];
}

- (NSDragOperation)tableView:(NSTableView *)tableView validateDrop:(id<NSDraggingInfo>)info
                 proposedRow:(NSInteger)row proposedDropOperation:(NSTableViewDropOperation)operation
{
    if (![mDelegate respondsToSelector:_cmd])
        return NSDragOperationNone;
    return [mDelegate tableView:tableView validateDrop:info proposedRow:row proposedDropOperation:operation];
}

- (BOOL)tableView:(NSTableView *)tableView acceptDrop:(id<NSDraggingInfo>)info row:(NSInteger)row
    dropOperation:(NSTableViewDropOperation)operation
{
    if (![mDelegate respondsToSelector:_cmd])
        return NO;
    return [mDelegate tableView:tableView acceptDrop:info row:row dropOperation:operation];
}

- (BOOL)tableView:(NSTableView *)tableView writeRows:(NSArray *)rows toPasteboard:(NSPasteboard *)pasteboard
{
    if (![mDelegate respondsToSelector:_cmd])
        return NO;
    return [mDelegate tableView:tableView writeRows:rows toPasteboard:pasteboard];
}

- (BOOL)tableView:(NSTableView *)tableView writeRowsWithIndexes:(NSIndexSet *)rows
     toPasteboard:(NSPasteboard *)pasteboard
{
    if (![mDelegate respondsToSelector:_cmd])
        return NO;
    return [mDelegate tableView:tableView writeRowsWithIndexes:rows toPasteboard:pasteboard];
}

/* ---- Menu validation ---- */

- (BOOL)hasSelection
{
    return [vTableView numberOfSelectedRows] >= 1;
}

- (BOOL)delegateAnswers:(SEL)selector
{
    return mDelegate != nil && [mDelegate respondsToSelector:selector];
}

/* Menus ask the responder chain who takes a command: the controller takes
 * the editing commands only while they can do something.  Names are
 * compared whole, as the runtime knows them. */
- (BOOL)respondsToSelector:(SEL)selector
{
    if (selector == NULL)
        return NO;
    const char *name = sel_getName(selector);
    if (name == NULL)
        return [super respondsToSelector:selector];
    if (strcmp(name, "delete:") == 0)
        return [self delegateAnswers:@selector(tableController:delete:)] && [self hasSelection];
    if (strcmp(name, "cut:") == 0 || strcmp(name, "copy:") == 0)
        return [self hasSelection] && [self delegateAnswers:@selector(tableController:copy:)];
    if (strcmp(name, "paste:") == 0)
        return [self delegateAnswers:@selector(tableController:paste:)];
    if (strcmp(name, "sortSelection:") == 0)
        return vTableView != nil && [vTableView selectedRow] >= 0;
    if (mDelegate == nil)
        return [super respondsToSelector:selector];
    if (strcmp(name, "tableView:writeRows:toPasteboard:") == 0)
        return GestaltSystemVersion() >= kSystemWithRowIndexDrags ? NO : [mDelegate respondsToSelector:selector];
    if (strcmp(name, "tableView:writeRowsWithIndexes:toPasteboard:") == 0)
        return GestaltSystemVersion() < kSystemWithRowIndexDrags ? NO : [mDelegate respondsToSelector:selector];
    if (strcmp(name, "tableView:validateDrop:proposedRow:proposedDropOperation:") == 0 ||
        strcmp(name, "tableView:acceptDrop:row:dropOperation:") == 0)
        return [mDelegate respondsToSelector:selector];
    return [super respondsToSelector:selector];
}

/* ---- Row access ---- */

/* The selected rows that exist in the array, ascending. */
- (NSIndexSet *)selectedRows
{
    NSUInteger count = [mDatasourceArray count];
    if (vTableView == nil || count == 0)
        return [NSIndexSet indexSet];
    NSMutableIndexSet *rows = [[[vTableView selectedRowIndexes] mutableCopy] autorelease];
    NSUInteger last = [rows lastIndex];
    if (last != NSNotFound && last >= count)
        [rows removeIndexesInRange:NSMakeRange(count, last - count + 1)];
    return rows;
}

- (NSMutableArray *)selectedDatasourceArray
{
    NSIndexSet *rows = [self selectedRows];
    NSMutableArray *result = [NSMutableArray arrayWithCapacity:[rows count]];
    if ([rows count] > 0)
        [result addObjectsFromArray:[mDatasourceArray objectsAtIndexes:rows]];
    return result;
}

- (NSMutableData *)selectedRowArray
{
    NSIndexSet *rows = [self selectedRows];
    NSMutableData *result = [NSMutableData dataWithLength:[rows count] * sizeof(uint32_t)];
    uint32_t *entry = [result mutableBytes];
    for (NSUInteger row = [rows firstIndex]; row != NSNotFound; row = [rows indexGreaterThanIndex:row])
        *entry++ = (uint32_t)row;
    return result;
}

- (NSMutableArray *)datasourceOfColumn:(id)column visibleValue:(BOOL)visible
{
    return [self datasourceOfColumn:column visibleValue:visible onlySelected:NO];
}

- (NSMutableArray *)selectedDatasourceOfColumn:(id)column visibleValue:(BOOL)visible
{
    return [self datasourceOfColumn:column visibleValue:visible onlySelected:YES];
}

- (NSMutableArray *)datasourceOfColumn:(id)column visibleValue:(BOOL)visible onlySelected:(BOOL)selected
{
    NSMutableArray *values = [NSMutableArray array];
    id key = KeyOfIdentifier(column);
    BOOL convert = visible &&
        [mDelegate respondsToSelector:@selector(tableController:convertVisibleValue:forColumnIdentifier:row:)];
    NSIndexSet *rows = selected ? [self selectedRows]
                                : [NSIndexSet indexSetWithIndexesInRange:NSMakeRange(0, [mDatasourceArray count])];
    for (NSUInteger row = [rows firstIndex]; row != NSNotFound; row = [rows indexGreaterThanIndex:row]) {
        if (row >= [mDatasourceArray count])
            return nil; // rows taken away by the delegate meanwhile
        id value = ValueOfRow([mDatasourceArray objectAtIndex:row], key);
        if (convert)
            value = [mDelegate tableController:self convertVisibleValue:value forColumnIdentifier:key row:(int)row];
        // One row without the value fails the whole column, deliberately.
        if (value == nil)
            return nil;
        [values addObject:value];
    }
    return values;
}

- (int)insertIndexToAdd
{
    if (vTableView == nil)
        return 0;
    NSInteger row = [vTableView selectedRow];
    if (row < 0 || (NSUInteger)row >= [mDatasourceArray count])
        return 0;
    return (int)row + 1;
}

- (int)insertIndexToReplace
{
    if (vTableView == nil)
        return 0;
    int row = [vTableView topSelectedRow];
    return row >= 0 ? row : 0;
}

- (NSMutableDictionary *)initialRowDatasourceForIndex:(int)index
{
    if ([mDelegate respondsToSelector:@selector(tableController:makeInitialRowForIndex:)]) {
        NSMutableDictionary *row = [mDelegate tableController:self makeInitialRowForIndex:index];
        if (row != nil)
            return row;
    }
    return [NSMutableDictionary dictionary];
}

/* ---- Changing the rows ---- */

/* index brought within 0 ... count. */
- (NSUInteger)clampedIndex:(int)index
{
    if (index < 0)
        return 0;
    return MIN((NSUInteger)index, [mDatasourceArray count]);
}

/* Selects the rows as selectRow:asExtending:andEdit: would one after the
 * other (extending on a multiple-selection table, each row clamped to the
 * table), ending with the same selection and the last row scrolled into
 * view, but with one change of selection for the block instead of one per
 * row: moves and insertions of thousands of rows stay quick.  With stop,
 * rows at or past the table's end are left out instead of clamped. */
- (void)selectRows:(NSRange)rows stoppingAtEnd:(BOOL)stop
{
    NSInteger count = [vTableView numberOfRows];
    if (rows.length == 0 || count <= 0)
        return;
    if (stop && rows.location >= (NSUInteger)count)
        return;
    NSUInteger end = MIN(NSMaxRange(rows), (NSUInteger)count);
    BOOL extend = [vTableView allowsMultipleSelection];
    NSUInteger first = MIN(rows.location, (NSUInteger)count - 1);
    NSUInteger last = stop ? end - 1 : MIN(NSMaxRange(rows) - 1, (NSUInteger)count - 1);
    [vTableView selectRow:(int)first asExtending:extend andEdit:NO];
    if (last == first)
        return;
    if (!extend) {
        [vTableView selectRow:(int)last asExtending:NO andEdit:NO];
        return;
    }
    @try {
        [vTableView selectRowIndexes:[NSIndexSet indexSetWithIndexesInRange:NSMakeRange(first, last - first + 1)]
                byExtendingSelection:YES];
        [vTableView scrollRowToVisible:last];
    } @catch (NSException *exception) {
        KORULogException("-[TableController selectRows:stoppingAtEnd:]", __LINE__, exception);
    }
}

- (void)emptyDatasourceArray
{
    if ([mDatasourceArray count] == 0)
        return;
    [self deselectAllRows];
    [mDatasourceArray removeAllObjects];
    [self noteRowsChanged];
    [self setWindowEditedIfNeed:YES];
}

- (void)setDatasourceArray:(NSArray *)rows
{
    [self emptyDatasourceArray];
    [self insertDatasourceArray:rows atIndex:0];
}

- (void)addDatasourceArray:(NSArray *)rows
{
    [self insertDatasourceArray:rows atIndex:[self insertIndexToAdd]];
}

- (void)insertDatasourceArray:(NSArray *)rows atIndex:(int)index
{
    if (![rows isKindOfClass:[NSArray class]])
        return;
    if (rows == mDatasourceArray)
        rows = [[rows copy] autorelease]; // the rows again, not an array growing as it is read
    NSUInteger at = [self clampedIndex:index];
    NSUInteger inserted = [rows count];
    [mDatasourceArray insertObjectsFromArray:rows atIndex:at];
    if (!mDontDeselectTemporary)
        [self deselectAllRows];
    [self noteRowsChanged];
    [self selectRows:NSMakeRange(at, inserted) stoppingAtEnd:YES];
    [self noteRowsChanged];
    [self setWindowEditedIfNeed:YES];
}

- (BOOL)setDatasourceArray:(NSArray *)values ofColumn:(id)column visibleValue:(BOOL)visible
{
    [self emptyDatasourceArray];
    return [self insertDatasourceArray:values ofColumn:column visibleValue:visible atIndex:0];
}

- (BOOL)addDatasourceArray:(NSArray *)values ofColumn:(id)column visibleValue:(BOOL)visible
{
    return [self insertDatasourceArray:values ofColumn:column visibleValue:visible atIndex:[self insertIndexToAdd]];
}

- (BOOL)insertDatasourceArray:(NSArray *)values ofColumn:(id)column visibleValue:(BOOL)visible
                      atIndex:(int)index
{
    if (![values isKindOfClass:[NSArray class]])
        return NO;
    @try {
        id key = KeyOfIdentifier(column);
        int at = (int)[self clampedIndex:index];
        BOOL convert = visible &&
            [mDelegate respondsToSelector:@selector(tableController:convertSetEditedValue:forColumnIdentifier:row:)];
        NSUInteger count = [values count];
        NSMutableArray *rows = [NSMutableArray arrayWithCapacity:count];
        for (NSUInteger i = 0; i < count; i++) {
            id value = [values objectAtIndex:i];
            if (convert)
                value = [mDelegate tableController:self convertSetEditedValue:value forColumnIdentifier:key row:(int)i];
            if (value == nil)
                continue;
            NSMutableDictionary *row = [self initialRowDatasourceForIndex:at];
            if (![row isKindOfClass:[NSMutableDictionary class]])
                continue;
            [row setObject:value forKey:key];
            [rows addObject:row];
        }
        [self insertDatasourceArray:rows atIndex:at];
        return YES;
    } @catch (NSException *exception) {
        KORULogException("-[TableController insertDatasourceArray:ofColumn:visibleValue:atIndex:]", __LINE__,
                         exception);
        return NO;
    }
}

- (BOOL)replaceValue:(id)value ofRow:(int)row ofColumn:(id)column visibleValue:(BOOL)visible
{
    if (value == nil || row < 0 || (NSUInteger)row >= [mDatasourceArray count])
        return NO;
    NSMutableDictionary *stored = [mDatasourceArray objectAtIndex:row];
    if (![stored isKindOfClass:[NSMutableDictionary class]])
        return NO;
    id key = KeyOfIdentifier(column);
    if (visible &&
        [mDelegate respondsToSelector:@selector(tableController:convertSetEditedValue:forColumnIdentifier:row:)]) {
        value = [mDelegate tableController:self convertSetEditedValue:value forColumnIdentifier:key row:row];
        if (value == nil)
            return NO;
    }
    [stored setObject:value forKey:key];
    return YES;
}

/* The replacements walk the selected rows upward: the rows are read once
 * into a list (and again after rows were added, which selects them) and a
 * cursor follows the walk, instead of a look-up in the table per row. */
typedef struct {
    NSUInteger *rows;
    NSUInteger count;
    NSUInteger next;
} SelectionWalk;

static void ReadSelection(SelectionWalk *walk, NSIndexSet *selection)
{
    free(walk->rows);
    walk->count = [selection count];
    walk->next = 0;
    walk->rows = malloc((walk->count > 0 ? walk->count : 1) * sizeof(NSUInteger));
    if (walk->rows == NULL)
        walk->count = 0;
    else
        walk->count = [selection getIndexes:walk->rows maxCount:walk->count inIndexRange:NULL];
}

/* The first selected row at or after row, or rowCount when none is. */
static NSUInteger NextSelectedRow(SelectionWalk *walk, NSUInteger row, NSUInteger rowCount)
{
    while (walk->next < walk->count && walk->rows[walk->next] < row)
        walk->next++;
    if (walk->next < walk->count && walk->rows[walk->next] < rowCount)
        return walk->rows[walk->next];
    return rowCount;
}

- (void)replaceSelectionWithDatasourceArray:(NSArray *)rows
{
    SelectionWalk walk = {NULL, 0, 0};
    @try {
        if ([rows isKindOfClass:[NSArray class]]) {
            ReadSelection(&walk, [self selectedRows]);
            NSUInteger r = 0;
            NSUInteger total = [rows count];
            for (NSUInteger i = 0; i < total; i++) {
                r = NextSelectedRow(&walk, r, [mDatasourceArray count]);
                if (r >= [mDatasourceArray count]) {
                    // The surplus goes below the selected row, and the walk
                    // goes on over what it finds after r; kept as hosts know it.
                    mDontDeselectTemporary = YES;
                    [self addDatasourceArray:[rows subarrayWithRange:NSMakeRange(i, total - i)]];
                    ReadSelection(&walk, [self selectedRows]);
                    continue;
                }
                [mDatasourceArray replaceObjectAtIndex:r withObject:[rows objectAtIndex:i]];
                r++;
            }
            if (r < [mDatasourceArray count])
                [self deleteSelectedRowAfter:(int)r];
        }
    } @catch (NSException *exception) {
        KORULogException("-[TableController replaceSelectionWithDatasourceArray:]", __LINE__, exception);
    }
    free(walk.rows);
    [self noteRowsChanged];
    [self setWindowEditedIfNeed:YES];
    mDontDeselectTemporary = NO;
}

- (BOOL)replaceSelectionWithDatasourceArray:(NSArray *)values ofColumn:(id)column visibleValue:(BOOL)visible
{
    BOOL done = NO;
    SelectionWalk walk = {NULL, 0, 0};
    @try {
        if ([values isKindOfClass:[NSArray class]]) {
            ReadSelection(&walk, [self selectedRows]);
            NSUInteger r = 0;
            NSUInteger total = [values count];
            BOOL failed = NO, appended = NO;
            for (NSUInteger i = 0; i < total && !failed && !appended; i++) {
                r = NextSelectedRow(&walk, r, [mDatasourceArray count]);
                if (r >= [mDatasourceArray count]) {
                    mDontDeselectTemporary = YES;
                    failed = ![self addDatasourceArray:[values subarrayWithRange:NSMakeRange(i, total - i)]
                                              ofColumn:column
                                          visibleValue:visible];
                    appended = YES;
                } else {
                    failed = ![self replaceValue:[values objectAtIndex:i] ofRow:(int)r ofColumn:column
                                    visibleValue:visible];
                    r++;
                }
            }
            // Rows left over are deleted only after a walk that replaced
            // every value: appended rows are never taken away again.
            if (!failed && !appended && r < [mDatasourceArray count])
                [self deleteSelectedRowAfter:(int)r];
            done = !failed;
        }
    } @catch (NSException *exception) {
        KORULogException("-[TableController replaceSelectionWithDatasourceArray:ofColumn:visibleValue:]", __LINE__,
                         exception);
        done = NO;
    }
    free(walk.rows);
    [self noteRowsChanged];
    [self setWindowEditedIfNeed:YES];
    mDontDeselectTemporary = NO;
    return done;
}

- (void)deleteSelectedRowAfter:(int)start
{
    if (start < 0 || (NSUInteger)start >= [mDatasourceArray count])
        return;
    NSMutableIndexSet *doomed = [NSMutableIndexSet indexSet];
    NSIndexSet *selection = [self selectedRows]; // only rows within the array
    NSUInteger first = (NSUInteger)start;
    // From the last selected row down: the index set's look-ups below an
    // index past its end are not to be trusted here.
    for (NSUInteger row = [selection lastIndex]; row != NSNotFound && row >= first;
         row = [selection indexLessThanIndex:row]) {
        [self deselectRow:row];
        [doomed addIndex:row];
    }
    // One pass over the array instead of one shift per removed row (and
    // none when nothing is removed: the pass costs as much).
    if ([doomed count] > 0)
        [mDatasourceArray removeObjectsAtIndexes:doomed];
}

/* Where moveObjects:toIndex: puts a block of count rows listed in indexes
 * (ascending, checked by the move itself): the target lowered by one for
 * each listed row before it. */
static NSUInteger LoweredTarget(const uint32_t *indexes, NSUInteger count, NSUInteger target)
{
    NSUInteger lowered = target;
    for (NSUInteger i = 0; i < count; i++)
        if (indexes[i] < target)
            lowered--;
    return lowered;
}

- (void)moveRows:(NSData *)rows to:(int)index
{
    NSMutableData *indexes = nil;
    @try {
        if ([rows isKindOfClass:[NSData class]]) {
            NSUInteger count = [rows length] / sizeof(uint32_t);
            indexes = [[NSMutableData alloc] initWithBytes:[rows bytes] length:count * sizeof(uint32_t)];
            NSUInteger lowered = NSNotFound;
            if (count > 0 && index >= 0 && mDatasourceArray != nil &&
                [mDatasourceArray moveObjects:indexes toIndex:(NSUInteger)index])
                lowered = LoweredTarget([indexes bytes], count, (NSUInteger)index);
            [self deselectAllRows];
            if (lowered != NSNotFound)
                [self selectRows:NSMakeRange(lowered, count) stoppingAtEnd:NO];
        }
    } @catch (NSException *exception) {
        KORULogException("-[TableController moveRows:to:]", __LINE__, exception);
    }
    [indexes release];
    [self noteRowsChanged];
    [self setWindowEditedIfNeed:YES];
}

- (void)enumerateRows
{
    if (![mDelegate respondsToSelector:@selector(tableController:enumerateRows:)])
        return;
    for (NSUInteger row = 0; row < [mDatasourceArray count]; row++)
        if (![mDelegate tableController:self enumerateRows:[mDatasourceArray objectAtIndex:row]])
            break;
}

- (void)enumerateSelectedRows
{
    if (![mDelegate respondsToSelector:@selector(tableController:enumerateSelectedRows:)])
        return;
    // Every row, selected or not: the delegate tests the selection itself.
    for (NSUInteger row = 0; row < [mDatasourceArray count]; row++)
        if (![mDelegate tableController:self enumerateSelectedRows:[mDatasourceArray objectAtIndex:row]])
            break;
}

- (void)setWindowEditedIfNeed:(BOOL)flag
{
    if (mAutosetWindowEdited)
        [[vTableView window] setDocumentEdited:flag];
}

/* ---- Commands ---- */

- (IBAction)addNewRow:(id)sender
{
    (void)sender;
    int index = [self insertIndexToAdd];
    NSMutableDictionary *row = [self initialRowDatasourceForIndex:index];
    if (row != nil && mDatasourceArray != nil) {
        [mDatasourceArray insertObject:row atIndex:[self clampedIndex:index]];
        [self noteRowsChanged];
        [vTableView selectRow:index asExtending:NO andEdit:YES];
    }
    [self noteRowsChanged];
}

- (IBAction)delete:(id)sender
{
    if (![mDelegate respondsToSelector:@selector(tableController:delete:)])
        return;
    [mDelegate tableController:self delete:sender];
    [self deleteSelectedRowAfter:0];
    [self noteRowsChanged];
    [self setWindowEditedIfNeed:YES];
}

- (IBAction)deleteForward:(id)sender
{
    [self delete:sender];
}

- (IBAction)deleteBackward:(id)sender
{
    [self delete:sender];
}

- (IBAction)cut:(id)sender
{
    [self copy:sender];
    [self delete:sender];
}

- (IBAction)copy:(id)sender
{
    if ([mDelegate respondsToSelector:@selector(tableController:copy:)])
        [mDelegate tableController:self copy:sender];
}

- (IBAction)paste:(id)sender
{
    if ([mDelegate respondsToSelector:@selector(tableController:paste:)])
        [self addDatasourceArray:[mDelegate tableController:self paste:sender]];
}

- (IBAction)sortAll:(id)sender
{
    (void)sender;
    if (![mDelegate respondsToSelector:@selector(tableController:compareRows:with:)] || mDatasourceArray == nil)
        return;
    // Sorted aside and put back whole: a comparison that raises part way
    // must not leave the rows half merged.
    NSMutableArray *sorted = [mDatasourceArray mutableCopy];
    RowOrder order = RowOrderOf(self);
    @try {
        [sorted sortUsingFunction:SortRows context:&order];
        [mDatasourceArray setArray:sorted];
    } @catch (NSException *exception) {
        KORULogException("-[TableController sortAll:]", __LINE__, exception);
    }
    [sorted release];
    [self noteRowsChanged];
    [self setWindowEditedIfNeed:YES];
}

- (IBAction)sortSelection:(id)sender
{
    (void)sender;
    if (![mDelegate respondsToSelector:@selector(tableController:compareRows:with:)])
        return;
    NSMutableArray *rows = [self selectedDatasourceArray];
    RowOrder order = RowOrderOf(self);
    @try {
        [rows sortUsingFunction:SortRows context:&order];
    } @catch (NSException *exception) {
        KORULogException("-[TableController sortSelection:]", __LINE__, exception);
        return;
    }
    [self replaceSelectionWithDatasourceArray:rows];
}

@end
