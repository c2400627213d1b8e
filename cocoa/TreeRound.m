/* TreeRound: breadth-first walks over folder trees. */
#import <KORU/TreeRound.h>

#import "FoundationXSupport.h"

@implementation TreeRound

- (BOOL)start:(NSArray *)folders withDelegate:(id)delegate
{
    if (![folders isKindOfClass:[NSArray class]] || [folders count] == 0 || delegate == nil ||
        ![delegate respondsToSelector:@selector(treeRoundEvaluatePath:)])
        return NO;
    NSFileManager *manager = [NSFileManager defaultManager];
    NSMutableArray *level = nil, *next = nil;
    BOOL ended = NO;
    @try {
        level = [folders mutableCopy];
        while (!ended && [level count] > 0) {
            next = [[NSMutableArray alloc] init];
            for (NSString *folder in level) {
                /* Not drained when an exception leaves: the enclosing pool
                 * then frees it, after the exception has been reported. */
                NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
                for (NSString *entry in [manager directoryContentsAtPath:folder]) {
                    NSString *path = [folder stringByAppendingPathComponent:entry];
                    int verdict = [delegate treeRoundEvaluatePath:path];
                    if (verdict == TreeRoundDescend) {
                        [next addObject:path];
                    } else if ((verdict & TreeRoundStop) != 0) {
                        ended = YES;
                        break;
                    } else if ((verdict & TreeRoundSkipFolder) != 0) {
                        break;
                    }
                }
                [pool drain];
                if (ended)
                    break;
            }
            [level release];
            level = next;
            next = nil;
        }
    } @catch (NSException *exception) {
        KORULogException("-[TreeRound start:withDelegate:]", __LINE__, exception);
        [level release];
        [next release];
        return NO;
    }
    [level release];
    return YES;
}

@end
