/* TreeRound: a breadth-first walk over folder trees, steered by a delegate.
 *
 * start:withDelegate: lists the given folders, then the folders the delegate
 * chose from that level, and so on, level by level.  Every entry of a listed
 * folder is passed to the delegate's treeRoundEvaluatePath: as a full path,
 * in the order the folder lists them, and the verdict decides:
 *
 *   0                      descend: the path is listed on the next level
 *                          (a plain file is listed too, and yields nothing)
 *   non-zero, without the bits below
 *                          go on without descending into the path
 *   TreeRoundSkipFolder    (bit 0x2) skip the rest of the folder being listed
 *   TreeRoundStop          (bit 0x100, tested first) end the walk at once
 *
 * The walk runs on the calling thread and returns when it ends; it answers
 * YES when it ended (completed or stopped by the delegate) and NO for an
 * empty or nil folder list, a nil delegate, a delegate without
 * treeRoundEvaluatePath:, or an exception during the walk (logged as
 * "-[TreeRound start:withDelegate:]" with debug output on).  A folder that
 * cannot be read contributes no entries.  The delegate is not retained. */
#ifndef KORU_TREEROUND_H
#define KORU_TREEROUND_H

#import <Foundation/Foundation.h>

enum {
    TreeRoundDescend = 0,
    TreeRoundSkipFolder = 0x2,
    TreeRoundStop = 0x100
};

@interface TreeRound : NSObject
- (BOOL)start:(NSArray *)folders withDelegate:(id)delegate;
@end

/* What a TreeRound delegate implements. */
@interface NSObject (TreeRoundDelegate)
- (int)treeRoundEvaluatePath:(NSString *)path;
@end

#endif
