/* A process of its own for the rows kept in the user defaults: a controller
 * without any table (and without a display) writes or reads the rows under
 * the key given and prints the names it read, one line. */
#import <Foundation/Foundation.h>
#include <KORU/KORU.h>

#include <stdio.h>
#include <string.h>

static NSArray *Rows(NSString *names)
{
    NSMutableArray *rows = [NSMutableArray array];
    for (NSString *name in [names componentsSeparatedByString:@" "])
        [rows addObject:[NSMutableDictionary dictionaryWithObject:name forKey:@"name"]];
    return rows;
}

static void Print(TableController *controller)
{
    printf("%s\n", [[[controller datasourceOfColumn:@"name" visibleValue:NO] componentsJoinedByString:@" "] UTF8String]);
}

int main(int argc, char **argv)
{
    if (argc != 3)
        return 2;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSString *key = [NSString stringWithUTF8String:argv[2]];
    TableController *controller = [[TableController alloc] initWithTableView:nil userDefaultKey:key];
    if (strcmp(argv[1], "write") == 0) {
        [controller setDatasourceArray:Rows(@"first second third")];
    } else if (strcmp(argv[1], "read") == 0) {
        Print(controller);
    } else if (strcmp(argv[1], "switch") == 0) {
        [controller addDatasourceArray:Rows(@"unsaved")];
        [controller setUserDefaultKey:@"KORUTableTestOther" andLoad:YES];
        [controller setUserDefaultKey:key andLoad:YES];
        Print(controller);
    }
    [controller release]; // stores the rows under the key
    [[NSUserDefaults standardUserDefaults] synchronize];
    [pool release];
    return 0;
}
