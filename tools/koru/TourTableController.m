/* Tour section: TableController as the model of a list, without a table view
 * (and so without a display): rows set, sorted through the delegate, moved as
 * a block, a column inserted and read back for display.  No user-defaults key
 * is given, so nothing is stored.  The class and DatasourceRowCompare are
 * found in the loaded bundle by name. */
#import <Foundation/Foundation.h>
#import <KORU/TableController.h>

#include "Tour.h"

#include <stdint.h>
#include <stdio.h>

static NSString *const kItem = @"item";

@interface TourListDelegate : NSObject
@end

@implementation TourListDelegate
- (NSComparisonResult)tableController:(TableController *)controller compareRows:(id)row1 with:(id)row2
{
    (void)controller;
    return [[row1 objectForKey:kItem] caseInsensitiveCompare:[row2 objectForKey:kItem]];
}

- (id)tableController:(TableController *)controller convertVisibleValue:(id)value
    forColumnIdentifier:(id)identifier row:(int)row
{
    (void)controller;
    (void)identifier;
    return [NSString stringWithFormat:@"%d. %@", row + 1, value];
}
@end

static void PrintRows(const char *what, TableController *list)
{
    NSArray *items = [list datasourceOfColumn:kItem visibleValue:NO];
    printf("  %-42s %s\n", what, items != nil ? [[items componentsJoinedByString:@", "] UTF8String] : "(a row lacks an item)");
}

static bool TourTableController(CFBundleRef bundle)
{
    Class listClass = NSClassFromString(@"TableController");
    typedef NSComparisonResult (*CompareFunction)(id, id, void *);
    CompareFunction compare = (CompareFunction)KORUTourLookup(bundle, "DatasourceRowCompare");
    if (listClass == Nil || compare == NULL) {
        fprintf(stderr, "koru: the bundle has no TableController\n");
        return false;
    }
    TourListDelegate *delegate = [[[TourListDelegate alloc] init] autorelease];
    TableController *list = [[listClass alloc] init];
    [list setDelegate:delegate];
    NSMutableArray *rows = [NSMutableArray array];
    for (NSString *item in [NSArray arrayWithObjects:@"pears", @"Bread", @"milk", @"Apples", nil])
        [rows addObject:[NSMutableDictionary dictionaryWithObject:item forKey:kItem]];
    [list setDatasourceArray:rows];
    PrintRows("rows as given:", list);
    [list sortAll:nil];
    PrintRows("sortAll: through the delegate:", list);
    const uint32_t block[] = {0, 1};
    [list moveRows:[NSData dataWithBytes:block length:sizeof block] to:4];
    PrintRows("rows 0 and 1 moved as a block to 4:", list);
    [list insertDatasourceArray:[NSArray arrayWithObject:@"coffee"] ofColumn:kItem visibleValue:NO atIndex:1];
    PrintRows("\"coffee\" inserted at 1 as a column value:", list);
    NSArray *shown = [list datasourceOfColumn:kItem visibleValue:YES];
    printf("  %-42s %s\n", "as the delegate shows them:", [[shown componentsJoinedByString:@", "] UTF8String]);
    NSArray *now = [list datasourceArray];
    NSComparisonResult order = compare([now objectAtIndex:0], [now objectAtIndex:1], list);
    printf("  DatasourceRowCompare(row 0, row 1): %s\n",
           order == NSOrderedAscending ? "ascending" : order == NSOrderedSame ? "same" : "descending");
    bool ok = [now count] == 5 && [shown count] == 5;
    [list release];
    return ok;
}

KORU_TOUR_SECTION(85, "Table controller: a list model sorted, moved and shown, with no window", TourTableController)
