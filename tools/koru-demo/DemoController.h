/* The demo's application delegate: builds the menu and the window, serves
 * the table through a TableController and answers what the controller asks
 * its delegate (new rows, edited values, the clipboard, the sort order). */
#ifndef KORU_DEMO_CONTROLLER_H
#define KORU_DEMO_CONTROLLER_H

#import <AppKit/AppKit.h>

@class TableController;

/* The user-defaults key of the rows and the window's title. */
extern NSString *const DemoRowsKey;
extern NSString *const DemoWindowTitle;

@interface DemoController : NSObject
{
    NSWindow *mWindow;
    NSTableView *mTable;
    TableController *mRows;
    NSTextField *mStatus;
    NSTimer *mSaveTimer;
}

- (IBAction)moveSelectionUp:(id)sender;
- (IBAction)moveSelectionDown:(id)sender;

@end

#endif
