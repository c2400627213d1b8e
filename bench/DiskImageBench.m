/* A 200 MB folder made into an image, attached and ejected: DiskImage
 * (createFromDirectory:, mount, unmount, through the installed tools)
 * against running mksquashfs, squashfuse and fusermount3 directly.
 *
 * The folder holds files of mixed content (half pseudo-random, half text),
 * read from the page cache by both.  The two run in turn, kRuns times (which
 * goes first alternates), and each one's best run counts; the creation and
 * the attach-and-eject are timed apart as well, the first being mksquashfs's
 * work and the second the toolkit's own tool runs (the mount table asked
 * before and after each step, as DiskImage does).  Prints the times and the
 * ratio toolkit / direct (the goal is at most 1.1).  Usage: DiskImageBench
 * [MB].  The tools are kDiskImageEditorPath and kDiskImageMounterPath, found
 * beside the library in the build folder or the installed prefix. */
#import <Foundation/Foundation.h>
#import <KORU/KORU.h>

#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

extern char **environ;

enum { kRuns = 3, kFileSize = 2 * 1000 * 1000 };

static double Now(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec + now.tv_nsec / 1e9;
}

/* Runs a program found on PATH with its standard output on /dev/null. */
static BOOL Run(const char *const *arguments)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    pid_t pid;
    int status = -1;
    if (posix_spawnp(&pid, arguments[0], &actions, NULL, (char *const *)arguments, environ) == 0)
        waitpid(pid, &status, 0);
    posix_spawn_file_actions_destroy(&actions);
    return status == 0;
}

static BOOL MakeFolder(NSString *folder, size_t megabytes)
{
    if (mkdir([folder fileSystemRepresentation], 0755) != 0)
        return NO;
    unsigned char *block = malloc(kFileSize);
    uint64_t state = 0x9E3779B97F4A7C15ull;
    BOOL ok = block != NULL;
    size_t count = megabytes * 1000 * 1000 / kFileSize;
    for (size_t file = 0; ok && file < count; file++) {
        for (size_t i = 0; i < kFileSize; i++) {
            if (file % 2 == 0) {
                state ^= state << 13;
                state ^= state >> 7;
                state ^= state << 17;
                block[i] = (unsigned char)state;
            } else {
                block[i] = "the quick brown fox jumps over the lazy dog\n"[i % 44];
            }
        }
        NSString *path = [folder stringByAppendingPathComponent:[NSString stringWithFormat:@"file-%03zu.bin", file]];
        ok = [[NSData dataWithBytesNoCopy:block length:kFileSize freeWhenDone:NO] writeToFile:path atomically:NO];
    }
    free(block);
    return ok;
}

/* The seconds of a whole run, and of its attach and eject alone, in times[];
 * NO when a step failed. */
static BOOL Direct(NSString *source, NSString *image, NSString *mountPoint, double times[2])
{
    const char *src = [source fileSystemRepresentation], *img = [image fileSystemRepresentation];
    const char *mnt = [mountPoint fileSystemRepresentation];
    NSString *options = [NSString stringWithFormat:@"fsname=%@,subtype=koru", image];
    double start = Now();
    const char *create[] = {"mksquashfs", src, img, "-comp", "zstd", "-noappend", NULL};
    const char *attach[] = {"squashfuse", "-o", [options UTF8String], img, mnt, NULL};
    const char *detach[] = {"fusermount3", "-u", mnt, NULL};
    BOOL ok = Run(create);
    double mounting = Now();
    ok = ok && mkdir(mnt, 0700) == 0 && Run(attach) && Run(detach) && rmdir(mnt) == 0;
    double end = Now();
    unlink(img);
    times[0] = end - start;
    times[1] = end - mounting;
    return ok;
}

static BOOL Toolkit(NSString *source, NSString *image, double times[2])
{
    double start = Now();
    DiskImage *diskImage = [DiskImage diskImageWithFilepath:image];
    BOOL ok = [diskImage createFromDirectory:source];
    double mounting = Now();
    ok = ok && [diskImage mount] != nil && [diskImage unmount];
    double end = Now();
    unlink([image fileSystemRepresentation]);
    times[0] = end - start;
    times[1] = end - mounting;
    return ok;
}

static void KeepBest(double best[2], const double times[2])
{
    for (int i = 0; i < 2; i++) {
        if (times[i] < best[i])
            best[i] = times[i];
    }
}

int main(int argc, char **argv)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    size_t megabytes = argc > 1 ? (size_t)strtoul(argv[1], NULL, 10) : 200;
    char temporary[1024];
    if (megabytes == 0 ||
        FSFindFolderGetPath(kUserDomain, kTemporaryFolderType, kCreateFolder, temporary, sizeof temporary) != noErr)
        return 1;
    if (![[NSFileManager defaultManager] isExecutableFileAtPath:kDiskImageEditorPath]) {
        fprintf(stderr, "DiskImageBench: %s is missing\n", [kDiskImageEditorPath UTF8String]);
        return 1;
    }
    NSString *base = [NSString stringWithFormat:@"%s/DiskImageBench-%d", temporary, (int)getpid()];
    NSString *source = [base stringByAppendingString:@"-folder"];
    NSString *image = [base stringByAppendingString:@".img"];
    NSString *mountPoint = [base stringByAppendingString:@"-mount"];
    if (!MakeFolder(source, megabytes)) {
        fprintf(stderr, "DiskImageBench: cannot make %s\n", [source UTF8String]);
        return 1;
    }
    double directBest[2] = {1e9, 1e9}, toolkitBest[2] = {1e9, 1e9};
    BOOL ok = YES;
    for (int run = 0; ok && run < kRuns; run++) {
        NSAutoreleasePool *runPool = [[NSAutoreleasePool alloc] init];
        double direct[2], toolkit[2];
        if (run % 2 == 0)
            ok = Direct(source, image, mountPoint, direct) && Toolkit(source, image, toolkit);
        else
            ok = Toolkit(source, image, toolkit) && Direct(source, image, mountPoint, direct);
        KeepBest(directBest, direct);
        KeepBest(toolkitBest, toolkit);
        [runPool release];
    }
    [[NSFileManager defaultManager] removeItemAtPath:source error:NULL];
    if (!ok) {
        fprintf(stderr, "DiskImageBench: a run failed\n");
        return 1;
    }
    printf("DiskImage: a %zu MB folder made into an image, attached and ejected\n", megabytes);
    printf("  mksquashfs + squashfuse + fusermount3: %.3f s (attach and eject %.3f s)\n", directBest[0],
           directBest[1]);
    printf("  DiskImage (hdiutil-koru, hdid-koru):   %.3f s (attach and eject %.3f s)\n", toolkitBest[0],
           toolkitBest[1]);
    printf("  ratio toolkit / direct: %.2f (goal <= 1.10)\n", toolkitBest[0] / directBest[0]);
    [pool release];
    return 0;
}
