/* A breadth-first listing of a 100 000-entry tree: TreeRound against find.
 *
 * The tree: 10 folders of 10 folders of 10 folders, each of those 1 000 with
 * 99 files (100 110 entries).  TreeRound's delegate descends into every
 * path (verdict 0) and writes each path it is shown, one a line, to
 * /dev/null.  find lists the same entries with -printf and a stable sort by
 * depth puts them in the same breadth-first order (sort -s -n -k1,1), also
 * into /dev/null.  Each side runs three times and its best run counts; the
 * ratio is toolkit / tool (below 1 means the toolkit is faster).  The tree
 * lives in $TMPDIR (or /tmp) and is removed afterwards. */
#import <Foundation/Foundation.h>
#import <KORU/TreeRound.h>

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

enum { kFanOut = 10, kDepth = 3, kFilesPerLeaf = 99, kRuns = 3 };

static double Now(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec + now.tv_nsec / 1e9;
}

static long MakeTree(const char *folder, int depth)
{
    char path[4096];
    long made = 0;
    if (depth == kDepth) {
        for (int k = 0; k < kFilesPerLeaf; k++) {
            snprintf(path, sizeof path, "%s/file%02d.dat", folder, k);
            int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC, 0644);
            if (fd < 0)
                return -1;
            close(fd);
            made++;
        }
        return made;
    }
    for (int k = 0; k < kFanOut; k++) {
        snprintf(path, sizeof path, "%s/folder%d", folder, k);
        if (mkdir(path, 0755) != 0)
            return -1;
        long below = MakeTree(path, depth + 1);
        if (below < 0)
            return -1;
        made += below + 1;
    }
    return made;
}

@interface BenchListing : NSObject {
@public
    FILE *mOut;
    long mCount;
}
@end

@implementation BenchListing
- (int)treeRoundEvaluatePath:(NSString *)path
{
    fputs([path fileSystemRepresentation], mOut);
    fputc('\n', mOut);
    mCount++;
    return 0;
}
@end

int main(void)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    const char *tmp = getenv("TMPDIR");
    char root[4096];
    snprintf(root, sizeof root, "%s/koru-treeround-XXXXXX", tmp != NULL && *tmp != '\0' ? tmp : "/tmp");
    if (mkdtemp(root) == NULL) {
        perror("mkdtemp");
        return 1;
    }
    long entries = MakeTree(root, 0);
    if (entries < 0) {
        perror("making the tree");
        return 1;
    }
    NSArray *folders = [NSArray arrayWithObject:[NSString stringWithUTF8String:root]];
    char command[8192];
    snprintf(command, sizeof command,
             "find '%s' -mindepth 1 -printf '%%d %%p\\n' | sort -s -n -k1,1 > /dev/null", root);

    double best[2] = {1e9, 1e9};
    long listed = 0;
    for (int run = 0; run < kRuns; run++) {
        NSAutoreleasePool *runPool = [[NSAutoreleasePool alloc] init];
        BenchListing *listing = [[[BenchListing alloc] init] autorelease];
        listing->mOut = fopen("/dev/null", "w");
        double start = Now();
        BOOL walked = [[[[TreeRound alloc] init] autorelease] start:folders withDelegate:listing];
        fclose(listing->mOut);
        double toolkit = Now() - start;
        listed = listing->mCount;
        start = Now();
        int status = system(command);
        double tool = Now() - start;
        if (!walked || status != 0) {
            fprintf(stderr, "a run failed\n");
            return 1;
        }
        best[0] = toolkit < best[0] ? toolkit : best[0];
        best[1] = tool < best[1] ? tool : best[1];
        [runPool drain];
    }
    snprintf(command, sizeof command, "rm -rf '%s'", root);
    system(command);
    printf("TreeRound breadth-first walk of %ld entries (%ld shown to the delegate)\n", entries, listed);
    printf("  TreeRound:                     %.3f s\n", best[0]);
    printf("  find -printf | sort by depth:  %.3f s\n", best[1]);
    printf("  ratio: %.2fx (goal <= 1.5x)\n", best[0] / best[1]);
    [pool drain];
    return 0;
}
