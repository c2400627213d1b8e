/* 1 GiB through cat: CommandTool feeding a file's bytes to /bin/cat and
 * collecting its output, against the shell pipeline `cat < file > out`.
 *
 * The input file is made once and read from the page cache by both (the
 * toolkit maps it as its input data; the shell's cat reads it).  Each side
 * runs twice and the better run counts.  Prints both times and the ratio
 * toolkit / shell (the goal is at most 1.2).  Usage: CommandToolBench [MiB]. */
#import <Foundation/Foundation.h>
#import <KORU/KORU.h>

#include <stdio.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

enum { kRuns = 2 };

static double Now(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec + now.tv_nsec / 1e9;
}

static BOOL WriteTestFile(const char *path, size_t size)
{
    FILE *file = fopen(path, "wb");
    if (file == NULL)
        return NO;
    size_t blockWords = (1u << 20) / sizeof(uint64_t);
    uint64_t *block = malloc(blockWords * sizeof(uint64_t));
    uint64_t state = 0x9E3779B97F4A7C15ull;
    BOOL ok = block != NULL;
    for (size_t written = 0; ok && written < size; written += blockWords * sizeof(uint64_t)) {
        for (size_t i = 0; i < blockWords; i++) {
            state ^= state << 13;
            state ^= state >> 7;
            state ^= state << 17;
            block[i] = state;
        }
        ok = fwrite(block, sizeof(uint64_t), blockWords, file) == blockWords;
    }
    free(block);
    return fclose(file) == 0 && ok;
}

int main(int argc, char **argv)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    size_t mebibytes = argc > 1 ? (size_t)strtoul(argv[1], NULL, 10) : 1024;
    size_t size = mebibytes << 20;
    char folder[1024];
    if (size == 0 ||
        FSFindFolderGetPath(kUserDomain, kTemporaryFolderType, kCreateFolder, folder, sizeof folder) != noErr)
        return 1;
    char input[1200], output[1200], command[2600];
    snprintf(input, sizeof input, "%s/CommandToolBench-%d.in", folder, (int)getpid());
    snprintf(output, sizeof output, "%s/CommandToolBench-%d.out", folder, (int)getpid());
    snprintf(command, sizeof command, "cat < '%s' > '%s'", input, output);
    if (!WriteTestFile(input, size)) {
        fprintf(stderr, "CommandToolBench: cannot write %s\n", input);
        return 1;
    }
    /* Warm the page cache. */
    if (system(command) != 0)
        return 1;

    double shellBest = 1e9, toolBest = 1e9;
    BOOL same = YES;
    for (int run = 0; run < kRuns; run++) {
        double start = Now();
        if (system(command) != 0)
            return 1;
        double shell = Now() - start;
        unlink(output);
        if (shell < shellBest)
            shellBest = shell;

        NSAutoreleasePool *runPool = [[NSAutoreleasePool alloc] init];
        start = Now();
        NSData *data = [NSData dataWithContentsOfMappedFile:[NSString stringWithUTF8String:input]];
        CommandTool *cat = [CommandTool commandToolWithPath:@"/bin/cat"];
        [cat setInputData:data];
        [cat setReadStandardOutput:YES];
        BOOL ran = [cat run:NO];
        double tool = Now() - start;
        if (tool < toolBest)
            toolBest = tool;
        same = same && ran && [[cat standardOutputData] length] == size &&
               memcmp([[cat standardOutputData] bytes], [data bytes], size) == 0;
        [runPool release];
    }
    unlink(input);
    printf("CommandTool: %zu MiB through /bin/cat, input fed and output collected\n", mebibytes);
    printf("  shell `cat < file > out`: %.3f s (%.0f MiB/s)\n", shellBest, mebibytes / shellBest);
    printf("  CommandTool:              %.3f s (%.0f MiB/s)%s\n", toolBest, mebibytes / toolBest,
           same ? "" : "  OUTPUT DIFFERS");
    printf("  ratio toolkit / shell: %.2f (goal <= 1.20)\n", toolBest / shellBest);
    [pool release];
    return same ? 0 : 1;
}
