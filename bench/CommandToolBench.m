/* 1 GiB through cat: CommandTool feeding a file's bytes to /bin/cat and
 * collecting its output, against the shell pipeline `cat < file > out`.
 *
 * The input file is made once and read from the page cache by all (the
 * toolkit maps it as its input data; the shell's cat reads it).  The shell's
 * cat, given two files, copies inside the kernel (copy_file_range) once; fed
 * and drained through pipes, cat reads and writes every byte, and its output
 * is copied once more into memory.  So a third line shows the same pipes
 * without the toolkit (a thread lending the input pages to the pipe, the
 * output read into a fresh buffer): the least any pipe-fed run can take.
 * The three run in turn, kRuns times, and each one's best run counts.
 * Prints the times and the ratios toolkit / shell (the goal is at most 1.2)
 * and toolkit / bare pipes.  Usage: CommandToolBench [MiB]. */
#define _GNU_SOURCE 1

#import <Foundation/Foundation.h>
#import <KORU/KORU.h>

#include <fcntl.h>
#include <pthread.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

extern char **environ;

enum { kRuns = 5, kPipeSize = 1 << 20 };

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

typedef struct {
    int fd;
    const unsigned char *bytes;
    size_t length;
} Feed;

static void *FeedMain(void *argument)
{
    Feed *feed = argument;
    for (size_t done = 0; done < feed->length;) {
        struct iovec part = {(void *)(feed->bytes + done), feed->length - done};
        if (part.iov_len > kPipeSize)
            part.iov_len = kPipeSize;
        ssize_t n = vmsplice(feed->fd, &part, 1, 0);
        if (n <= 0)
            break;
        done += (size_t)n;
    }
    close(feed->fd);
    return NULL;
}

/* /bin/cat between two pipes with nothing around them; the seconds taken, or
 * -1 when the output differs. */
static double BarePipes(const char *path, size_t size)
{
    int file = open(path, O_RDONLY | O_CLOEXEC);
    const unsigned char *input = file >= 0 ? mmap(NULL, size, PROT_READ, MAP_SHARED, file, 0) : MAP_FAILED;
    if (file >= 0)
        close(file);
    if (input == MAP_FAILED)
        return -1;
    double start = Now();
    size_t capacity = size + kPipeSize;
    unsigned char *output = mmap(NULL, capacity, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    int in[2], out[2];
    if (output == MAP_FAILED || pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0)
        return -1;
    madvise(output, capacity, MADV_HUGEPAGE);
    fcntl(in[0], F_SETPIPE_SZ, kPipeSize);
    fcntl(out[0], F_SETPIPE_SZ, kPipeSize);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], 0);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    char *argv[] = {"/bin/cat", NULL};
    pid_t pid;
    int spawned = posix_spawn(&pid, argv[0], &actions, NULL, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(in[0]);
    close(out[1]);
    Feed feed = {in[1], input, size};
    pthread_t feeder;
    if (spawned != 0 || pthread_create(&feeder, NULL, FeedMain, &feed) != 0)
        return -1;
    size_t got = 0;
    for (ssize_t n; got < capacity && (n = read(out[0], output + got, capacity - got)) > 0;)
        got += (size_t)n;
    pthread_join(feeder, NULL);
    close(out[0]);
    int status;
    waitpid(pid, &status, 0);
    double elapsed = Now() - start;
    BOOL same = got == size && memcmp(output, input, size) == 0;
    munmap(output, capacity);
    munmap((void *)input, size);
    return same ? elapsed : -1;
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

    double shellBest = 1e9, toolBest = 1e9, pipesBest = 1e9;
    BOOL same = YES;
    for (int run = 0; run < kRuns; run++) {
        double pipes = BarePipes(input, size);
        same = same && pipes > 0;
        if (pipes > 0 && pipes < pipesBest)
            pipesBest = pipes;

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
    printf("  bare pipes through cat:   %.3f s (%.0f MiB/s)\n", pipesBest, mebibytes / pipesBest);
    printf("  CommandTool:              %.3f s (%.0f MiB/s)%s\n", toolBest, mebibytes / toolBest,
           same ? "" : "  OUTPUT DIFFERS");
    printf("  ratio toolkit / shell: %.2f (goal <= 1.20)\n", toolBest / shellBest);
    printf("  ratio toolkit / bare pipes: %.2f\n", toolBest / pipesBest);
    [pool release];
    return same ? 0 : 1;
}
