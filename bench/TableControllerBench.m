/* TableController on 100 000 rows: sortAll:, moveRows:to: of a block of
 * selected rows, and replaceSelectionWithDatasourceArray:, against the same
 * changes written directly on an NSMutableArray.  Prints both times, the
 * ratio controller / plain, and the controller's time per 10 000 rows.
 *
 * The controller serves a real NSTableView (not in a window): selection,
 * row-count updates and the edited-mark check are part of what is timed, as
 * they are of every change in a program.  The plain side keeps no table.
 * AppKit needs a display for its table: run it under one, for example
 * tests/support/run-with-display build/bench/TableControllerBench.
 * Each operation is timed several times from the same starting rows; the
 * best run counts. */
#import <AppKit/AppKit.h>

#include <KORU/KORU.h>

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

enum { kCount = 100000, kRuns = 7 };

static NSString *const kName = @"name";
static NSString *const kSize = @"size";

static double Now(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec + now.tv_nsec / 1e9;
}

/* Rows are ordered by the value under the key the context names. */
static NSInteger CompareRows(id row1, id row2, void *context)
{
    NSString *key = context;
    return [[row1 objectForKey:key] compare:[row2 objectForKey:key]];
}

/* The delegate compares the way the plain sort does. */
@interface Rows : NSObject
{
@public
    NSString *key;
}
@end

@implementation Rows
- (NSComparisonResult)tableController:(TableController *)controller compareRows:(id)row1 with:(id)row2
{
    (void)controller;
    return [[row1 objectForKey:key] compare:[row2 objectForKey:key]];
}
@end

/* 100 000 rows named in a shuffled order. */
static NSArray *MakeRows(NSString *prefix)
{
    NSMutableArray *rows = [NSMutableArray arrayWithCapacity:kCount];
    srandom(16);
    for (int i = 0; i < kCount; i++) {
        NSString *name = [NSString stringWithFormat:@"%@%08ld", prefix, random() % 100000000];
        [rows addObject:[NSMutableDictionary dictionaryWithObjectsAndKeys:name, kName,
                                                                          [NSNumber numberWithLong:random() % 1000000], kSize, nil]];
    }
    return rows;
}

typedef struct {
    double controller, plain;
} Times;

static void Report(const char *what, Times best, int rows)
{
    printf("%-44s controller %8.2f ms  plain %8.2f ms  ratio %5.2fx  %6.2f ms per 10 000 rows\n", what,
           best.controller * 1e3, best.plain * 1e3, best.controller / best.plain,
           best.controller * 1e3 * 10000.0 / rows);
}

static void Keep(Times *best, double controller, double plain)
{
    if (best->controller == 0 || controller < best->controller)
        best->controller = controller;
    if (best->plain == 0 || plain < best->plain)
        best->plain = plain;
}

static BOOL Same(TableController *controller, NSArray *plain, const char *what)
{
    if ([[controller datasourceArray] isEqualToArray:plain])
        return YES;
    fprintf(stderr, "%s: the controller and the plain array disagree\n", what);
    return NO;
}

int main(void)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    [NSApplication sharedApplication];
    NSTableView *table = [[[NSTableView alloc] initWithFrame:NSMakeRect(0, 0, 300, 200)] autorelease];
    [table addTableColumn:[[[NSTableColumn alloc] initWithIdentifier:kName] autorelease]];
    [table setAllowsMultipleSelection:YES];
    Rows *delegate = [[[Rows alloc] init] autorelease];
    TableController *controller = [[[TableController alloc] initWithTableView:table] autorelease];
    [controller setDelegate:delegate];
    NSArray *rows = MakeRows(@"row");
    BOOL agreed = YES;

    Times sort[2] = {{0, 0}, {0, 0}};
    NSString *keys[2] = {kName, kSize};
    for (int k = 0; k < 2; k++) {
        delegate->key = keys[k];
        for (int run = 0; run < kRuns; run++) {
            NSAutoreleasePool *inner = [[NSAutoreleasePool alloc] init];
            [[controller datasourceArray] setArray:rows];
            [table noteNumberOfRowsChanged];
            NSMutableArray *plain = [[rows mutableCopy] autorelease];
            double start = Now();
            [controller sortAll:nil];
            double middle = Now();
            [plain sortUsingFunction:CompareRows context:keys[k]];
            Keep(&sort[k], middle - start, Now() - middle);
            agreed &= Same(controller, plain, "sort");
            [inner release];
        }
    }
    Report("sortAll: 100 000 rows by name (strings)", sort[0], kCount);
    Report("sortAll: 100 000 rows by size (numbers)", sort[1], kCount);

    // A table of 10 000 rows sorted whole, for the time per 10 000 rows of
    // a sort that does not grow with n log n.
    NSArray *fewer = [rows subarrayWithRange:NSMakeRange(0, 10000)];
    Times small = {0, 0};
    delegate->key = kName;
    for (int run = 0; run < kRuns; run++) {
        NSAutoreleasePool *inner = [[NSAutoreleasePool alloc] init];
        [[controller datasourceArray] setArray:fewer];
        [table noteNumberOfRowsChanged];
        NSMutableArray *plain = [[fewer mutableCopy] autorelease];
        double start = Now();
        [controller sortAll:nil];
        double middle = Now();
        [plain sortUsingFunction:CompareRows context:kName];
        Keep(&small, middle - start, Now() - middle);
        agreed &= Same(controller, plain, "sort");
        [inner release];
    }
    Report("sortAll: 10 000 rows by name (strings)", small, 10000);

    // 10 000 adjacent selected rows from the middle to near the top.
    NSRange block = NSMakeRange(60000, 10000);
    NSUInteger target = 5000;
    NSIndexSet *blockRows = [NSIndexSet indexSetWithIndexesInRange:block];
    Times move = {0, 0};
    for (int run = 0; run < kRuns; run++) {
        NSAutoreleasePool *inner = [[NSAutoreleasePool alloc] init];
        [[controller datasourceArray] setArray:rows];
        [table noteNumberOfRowsChanged];
        [table selectRowIndexes:blockRows byExtendingSelection:NO];
        NSData *indexes = [controller selectedRowArray];
        NSMutableArray *plain = [[rows mutableCopy] autorelease];
        double start = Now();
        [controller moveRows:indexes to:(int)target];
        double middle = Now();
        NSArray *moved = [plain objectsAtIndexes:blockRows];
        [plain removeObjectsAtIndexes:blockRows];
        [plain insertObjects:moved atIndexes:[NSIndexSet indexSetWithIndexesInRange:NSMakeRange(target, block.length)]];
        Keep(&move, middle - start, Now() - middle);
        agreed &= Same(controller, plain, "move");
        [inner release];
    }
    Report("moveRows:to: 10 000 of 100 000 rows", move, kCount);

    // Every tenth row selected and replaced by a new row.
    NSMutableIndexSet *everyTenth = [NSMutableIndexSet indexSet];
    for (NSUInteger row = 5; row < kCount; row += 10)
        [everyTenth addIndex:row];
    NSArray *replacements = [MakeRows(@"new") subarrayWithRange:NSMakeRange(0, [everyTenth count])];
    Times replace = {0, 0};
    for (int run = 0; run < kRuns; run++) {
        NSAutoreleasePool *inner = [[NSAutoreleasePool alloc] init];
        [[controller datasourceArray] setArray:rows];
        [table noteNumberOfRowsChanged];
        [table selectRowIndexes:everyTenth byExtendingSelection:NO];
        NSMutableArray *plain = [[rows mutableCopy] autorelease];
        double start = Now();
        [controller replaceSelectionWithDatasourceArray:replacements];
        double middle = Now();
        [plain replaceObjectsAtIndexes:everyTenth withObjects:replacements];
        Keep(&replace, middle - start, Now() - middle);
        agreed &= Same(controller, plain, "replace");
        [inner release];
    }
    Report("replaceSelection: 10 000 of 100 000 rows", replace, kCount);

    double total = sort[0].controller + sort[1].controller + move.controller + replace.controller;
    double totalPlain = sort[0].plain + sort[1].plain + move.plain + replace.plain;
    printf("all together: ratio %.2fx (goal at most 1.2x)\n", total / totalPlain);
    [controller setTableView:nil];
    [pool release];
    return agreed ? 0 : 1;
}
