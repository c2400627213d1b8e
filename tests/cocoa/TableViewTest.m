/* TableView: on this system (10.4 and later, as Gestalt reports it) its
 * drag source answers what NSTableView answers, local and remote. */
#import "KTest.h"
#import "KGUI.h"

#include <KORU/KORU.h>

KT_CASE(DragOperationsAreTheTablesOwnFromTenFourOn)
{
    KGUISharedApplication();
    KT_ASSERT(GestaltSystemVersion() >= 0x1040);
    NSTableView *plain = [[[NSTableView alloc] initWithFrame:NSMakeRect(0, 0, 100, 100)] autorelease];
    TableView *table = [[[TableView alloc] initWithFrame:NSMakeRect(0, 0, 100, 100)] autorelease];
    [plain setDraggingSourceOperationMask:NSDragOperationCopy forLocal:NO];
    [table setDraggingSourceOperationMask:NSDragOperationCopy forLocal:NO];
    for (int local = 0; local < 2; local++)
        KT_EXPECT([table draggingSourceOperationMaskForLocal:local] == [plain draggingSourceOperationMaskForLocal:local]);
    KT_EXPECT([table draggingSourceOperationMaskForLocal:NO] == NSDragOperationCopy);
    KT_EXPECT([table isKindOfClass:[NSTableView class]]);
}

KT_MAIN()
