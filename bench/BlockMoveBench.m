/* Block moves in a 100 000-element array: -[NSMutableArray moveObjects:toIndex:]
 * against the remove-then-insert sequence a user would write with plain
 * NSMutableArray calls for the same move.  Several shapes of move are timed,
 * each repeated; prints both times and the ratio toolkit / plain (below 1
 * means the toolkit is faster). */
#import <Foundation/Foundation.h>

#include <KORU/KORU.h>

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

enum { kCount = 100000 };

static double Now(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec + now.tv_nsec / 1e9;
}

/* What a user writes: take the elements out from the last, lowering the
 * target for each one before it, then put them back at the target. */
static void PlainMove(NSMutableArray *array, const uint32_t *indexes, NSUInteger count, NSUInteger target)
{
    NSMutableArray *block = [NSMutableArray arrayWithCapacity:count];
    for (NSUInteger i = 0; i < count; i++)
        [block addObject:[array objectAtIndex:indexes[i]]];
    for (NSUInteger i = count; i-- > 0;) {
        [array removeObjectAtIndex:indexes[i]];
        if (indexes[i] < target)
            target--;
    }
    for (NSUInteger i = count; i-- > 0;) {
        if (target < [array count])
            [array insertObject:[block objectAtIndex:i] atIndex:target];
        else
            [array addObject:[block objectAtIndex:i]];
    }
}

int main(void)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSMutableArray *original = [NSMutableArray arrayWithCapacity:kCount];
    for (int i = 0; i < kCount; i++)
        [original addObject:[NSNumber numberWithInt:i]];

    struct {
        const char *name;
        NSUInteger moved, first, step, target;
        int repeats;
    } shapes[] = {
        {"2 rows near the end up to the top", 2, 90000, 1000, 0, 200},
        {"10 adjacent rows down by 5", 10, 50000, 1, 50015, 200},
        {"100 rows spread out, to the middle", 100, 10, 997, 50000, 20},
        {"1000 rows spread out, to the top", 1000, 5, 99, 0, 5},
        {"1000 rows spread out, past the end", 1000, 5, 99, kCount + 10, 5},
    };
    double totalToolkit = 0, totalPlain = 0;
    for (size_t s = 0; s < sizeof shapes / sizeof shapes[0]; s++) {
        uint32_t *indexes = malloc(shapes[s].moved * sizeof(uint32_t));
        for (NSUInteger i = 0; i < shapes[s].moved; i++)
            indexes[i] = (uint32_t)(shapes[s].first + i * shapes[s].step);
        NSData *list = [NSData dataWithBytes:indexes length:shapes[s].moved * sizeof(uint32_t)];
        NSMutableArray *toolkit = [[original mutableCopy] autorelease];
        NSMutableArray *plain = [[original mutableCopy] autorelease];

        double start = Now();
        for (int r = 0; r < shapes[s].repeats; r++)
            [toolkit moveObjects:list toIndex:shapes[s].target];
        double toolkitSeconds = Now() - start;
        start = Now();
        for (int r = 0; r < shapes[s].repeats; r++)
            PlainMove(plain, indexes, shapes[s].moved, shapes[s].target);
        double plainSeconds = Now() - start;
        if (![toolkit isEqualToArray:plain]) {
            fprintf(stderr, "the two moves disagree for \"%s\"\n", shapes[s].name);
            return 1;
        }
        printf("  %-38s toolkit %8.2f ms  plain %8.2f ms  ratio %.2fx\n", shapes[s].name,
               toolkitSeconds * 1000, plainSeconds * 1000, toolkitSeconds / plainSeconds);
        totalToolkit += toolkitSeconds;
        totalPlain += plainSeconds;
        free(indexes);
    }
    printf("block moves in %d elements: ratio toolkit / plain %.2fx overall (goal <= 1.0x)\n", kCount,
           totalToolkit / totalPlain);
    [pool drain];
    return 0;
}
