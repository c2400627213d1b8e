/* TableView. */
#import <KORU/TableController.h>

#include <KORU/SystemInfo.h>

/* Before 10.4 a table offered only the local drag operations its own
 * dragging source gave; rows could not be dragged to other programs. */
enum { kSystemWithTableDragOperations = 0x1040 };

@implementation TableView

- (NSDragOperation)draggingSourceOperationMaskForLocal:(BOOL)isLocal
{
    if (GestaltSystemVersion() < kSystemWithTableDragOperations)
        return NSDragOperationEvery;
    return [super draggingSourceOperationMaskForLocal:isLocal];
}

@end
