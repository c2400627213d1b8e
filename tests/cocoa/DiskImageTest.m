/* DiskImage with real images and FUSE mounts, through the disk-image tools the
 * library finds beside itself (also in a moved prefix).  Every case, and the
 * program's exit, unmounts each image living in the case's private folder. */
/* dladdr */
#define _GNU_SOURCE 1

#import "KTest.h"
#import <KORU/KORU.h>

#include <dlfcn.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

static NSString *gFolder;

static NSString *TemporaryFolder(void)
{
    char path[1024];
    if (FSFindFolderGetPath(kUserDomain, kTemporaryFolderType, kCreateFolder, path, sizeof path) != noErr)
        return nil;
    return [NSString stringWithUTF8String:path];
}

/* Runs program with up to three arguments (NULL ends them); its wait status, or -1. */
static int RunProgram(const char *program, const char *argument1, const char *argument2, const char *argument3)
{
    pid_t pid = fork();
    if (pid == 0) {
        execlp(program, program, argument1, argument2, argument3, (char *)NULL);
        _exit(127);
    }
    int status = -1;
    if (pid > 0)
        waitpid(pid, &status, 0);
    return status;
}

/* The mount-table fields are written with \ooo escapes. */
static NSString *DecodedField(const char *field)
{
    NSMutableData *bytes = [NSMutableData data];
    for (const char *p = field; *p != '\0'; p++) {
        if (p[0] == '\\' && p[1] >= '0' && p[1] <= '3' && p[2] >= '0' && p[2] <= '7' && p[3] >= '0' && p[3] <= '7') {
            char c = (char)((p[1] - '0') * 64 + (p[2] - '0') * 8 + (p[3] - '0'));
            [bytes appendBytes:&c length:1];
            p += 3;
        } else {
            [bytes appendBytes:p length:1];
        }
    }
    return [[[NSString alloc] initWithData:bytes encoding:NSUTF8StringEncoding] autorelease];
}

/* Unmounts every image of ours that lives in the test folder. */
static void DetachTestImages(void)
{
    if (gFolder == nil)
        return;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    FILE *table = fopen("/proc/self/mountinfo", "r");
    char line[8192];
    NSMutableArray *mountPoints = [NSMutableArray array];
    while (table != NULL && fgets(line, sizeof line, table) != NULL) {
        char mountPoint[4096], type[256], source[4096];
        char *separator = strstr(line, " - ");
        if (separator == NULL || sscanf(line, "%*s %*s %*s %*s %4095s", mountPoint) != 1 ||
            sscanf(separator, " - %255s %4095s", type, source) != 2)
            continue;
        if (strcmp(type, "fuse.koru") == 0 && [DecodedField(source) hasPrefix:gFolder])
            [mountPoints addObject:DecodedField(mountPoint)];
    }
    if (table != NULL)
        fclose(table);
    for (NSString *mountPoint in mountPoints) {
        fprintf(stderr, "cleaning up the mount at %s\n", [mountPoint UTF8String]);
        RunProgram("fusermount3", "-u", [mountPoint fileSystemRepresentation], NULL);
    }
    [pool release];
}

static NSString *MakeTestFolder(void)
{
    DetachTestImages();
    NSString *pattern = [TemporaryFolder() stringByAppendingPathComponent:@"DiskImageTest-XXXXXX"];
    char *path = strdup([pattern fileSystemRepresentation]);
    NSString *folder = mkdtemp(path) != NULL ? [[NSString alloc] initWithUTF8String:path] : nil;
    free(path);
    [gFolder release];
    gFolder = folder;
    return gFolder;
}

static void RemoveTestFolder(void)
{
    DetachTestImages();
    if (gFolder != nil)
        [[NSFileManager defaultManager] removeItemAtPath:gFolder error:NULL];
    [gFolder release];
    gFolder = nil;
}

static NSString *MakeSourceFolder(NSString *folder)
{
    NSString *source = [folder stringByAppendingPathComponent:@"source folder"];
    NSString *documents = [source stringByAppendingPathComponent:@"Documents"];
    [[NSFileManager defaultManager] createDirectoryAtPath:documents withIntermediateDirectories:YES attributes:nil
                                                    error:NULL];
    [@"read me" writeToFile:[source stringByAppendingPathComponent:@"Read Me.txt"] atomically:NO
                   encoding:NSUTF8StringEncoding error:NULL];
    NSMutableData *large = [NSMutableData dataWithLength:300000];
    memset([large mutableBytes], 'k', [large length]);
    [large writeToFile:[documents stringByAppendingPathComponent:@"large.bin"] atomically:NO];
    return source;
}

/* A case whose body may return early (KT_ASSERT) and still has its
 * images detached and its folder removed. */
#define DISK_CASE(name)                 \
    static void name##Body(void);       \
    KT_CASE(name)                       \
    {                                   \
        name##Body();                   \
        RemoveTestFolder();             \
    }                                   \
    static void name##Body(void)

DISK_CASE(CreateMountReadAndEject)
{
    NSString *folder = MakeTestFolder();
    KT_ASSERT(folder != nil);
    NSString *source = MakeSourceFolder(folder);
    /* Blanks, quotes and a comma: argument vectors and the escaped file-system name carry them. */
    NSString *path = [folder stringByAppendingPathComponent:@"My Image, \"v1\" 'x'.img"];
    DiskImage *image = [DiskImage diskImageWithFilepath:path];
    KT_ASSERT(image != nil);
    KT_EXPECT([image mountPoint] == nil);
    KT_ASSERT([image createFromDirectory:source]);
    KT_ASSERT([[NSFileManager defaultManager] fileExistsAtPath:path]);
    NSString *mountPoint = [image mount];
    KT_ASSERT(mountPoint != nil);
    KT_EXPECT_EQUAL_OBJECTS([mountPoint stringByDeletingLastPathComponent], TemporaryFolder());
    KT_EXPECT_EQUAL_OBJECTS([image mountPoint], mountPoint);
    NSString *readMe = [NSString stringWithContentsOfFile:[mountPoint stringByAppendingPathComponent:@"Read Me.txt"]
                                                 encoding:NSUTF8StringEncoding error:NULL];
    KT_EXPECT_EQUAL_OBJECTS(readMe, @"read me");
    NSData *large = [NSData dataWithContentsOfFile:[mountPoint stringByAppendingPathComponent:@"Documents/large.bin"]];
    KT_EXPECT([large length] == 300000 && ((const char *)[large bytes])[299999] == 'k');
    /* Attached already: the same mount point, and still one mount. */
    KT_EXPECT_EQUAL_OBJECTS([image mount], mountPoint);
    NSDictionary *report = [DiskImage frameworkInfomation];
    NSDictionary *entry = nil;
    for (NSDictionary *candidate in [report objectForKey:@"images"])
        if ([[candidate objectForKey:@"image-path"] isEqual:path])
            entry = candidate;
    KT_ASSERT(entry != nil);
    KT_EXPECT([[entry objectForKey:@"image-type"] hasPrefix:@"squashfs"]);
    NSArray *entities = [entry objectForKey:@"system-entities"];
    KT_EXPECT([entities count] == 1 && [[[entities lastObject] objectForKey:@"dev-entry"] length] > 0);
    KT_EXPECT_EQUAL_OBJECTS([[entities lastObject] objectForKey:@"mount-point"], mountPoint);
    KT_EXPECT_EQUAL_OBJECTS([[entities lastObject] objectForKey:@"content-hint"], @"squashfs");
    KT_EXPECT_EQUAL_OBJECTS([[DiskImage mountingVolumes] objectForKey:mountPoint], path);
    KT_EXPECT_EQUAL_OBJECTS([DiskImage mountingVolumeOfFilepath:path], mountPoint);
    DiskImage *found = [DiskImage diskImageWithMountingVolume:mountPoint];
    KT_EXPECT_EQUAL_OBJECTS([found filepath], path);
    NSString *description = [image description];
    NSString *suffix = [NSString stringWithFormat:@" {filepath=%@, mountPoint=%@}", path, mountPoint];
    KT_EXPECT([description hasPrefix:@"DiskImage 0x"] && [description hasSuffix:suffix]);
    KT_EXPECT([image unmount] && [image mountPoint] == nil);
    KT_EXPECT(![[NSFileManager defaultManager] fileExistsAtPath:mountPoint]);
    KT_EXPECT([DiskImage filepathOfMountingVolume:mountPoint] == nil);
    KT_EXPECT([image unmount]); /* not attached: YES, nothing to eject */
    KT_EXPECT([[image description] hasSuffix:@"mountPoint=(null)}"]);
}

DISK_CASE(BadInputGivesNeutralAnswers)
{
    NSString *folder = MakeTestFolder();
    KT_ASSERT(folder != nil);
    NSFileManager *files = [NSFileManager defaultManager];
    KT_EXPECT([DiskImage diskImageWithFilepath:nil] == nil && [[DiskImage alloc] init] == nil);
    KT_EXPECT([DiskImage diskImageWithMountingVolume:folder] == nil && [DiskImage diskImageWithMountingVolume:nil] == nil);
    KT_EXPECT([DiskImage filepathOfMountingVolume:nil] == nil && [DiskImage mountingVolumeOfFilepath:nil] == nil);
    /* A missing folder: the tool runs (YES) but makes nothing. */
    NSString *path = [folder stringByAppendingPathComponent:@"made.img"];
    DiskImage *image = [DiskImage diskImageWithFilepath:path];
    [image setFilepath:nil];
    KT_EXPECT_EQUAL_OBJECTS([image filepath], path);
    KT_EXPECT([image createFromDirectory:[folder stringByAppendingPathComponent:@"missing"]]);
    KT_EXPECT(![files fileExistsAtPath:path]);
    /* An existing file is not overwritten, and is not an image to mount. */
    NSData *text = [@"not an image" dataUsingEncoding:NSUTF8StringEncoding];
    [text writeToFile:path atomically:NO];
    KT_EXPECT([image createFromDirectory:MakeSourceFolder(folder)]);
    KT_EXPECT_EQUAL_OBJECTS([NSData dataWithContentsOfFile:path], text);
    KT_EXPECT([image mount] == nil && [image mountPoint] == nil && [image unmount]);
}

DISK_CASE(ImageWithTwoMountsIsKnownByTheFirst)
{
    /* A second mount of the same volume needs a bind mount, which only root may make. */
    if (geteuid() != 0)
        return;
    NSString *folder = MakeTestFolder();
    KT_ASSERT(folder != nil);
    NSString *path = [folder stringByAppendingPathComponent:@"twice.img"];
    DiskImage *image = [DiskImage diskImageWithFilepath:path];
    KT_ASSERT([image createFromDirectory:MakeSourceFolder(folder)]);
    NSString *first = [image mount];
    KT_ASSERT(first != nil);
    NSString *second = [folder stringByAppendingPathComponent:@"second"];
    [[NSFileManager defaultManager] createDirectoryAtPath:second withIntermediateDirectories:NO attributes:nil error:NULL];
    KT_ASSERT(RunProgram("mount", "--bind", [first fileSystemRepresentation], [second fileSystemRepresentation]) == 0);
    NSMutableDictionary *table = [DiskImage mountingVolumes];
    KT_EXPECT([[table objectForKey:first] isEqual:path] && [table objectForKey:second] == nil);
    KT_EXPECT_EQUAL_OBJECTS([image mountPoint], first);
    KT_EXPECT([image unmount]); /* every mount of the image goes */
    KT_EXPECT([[DiskImage mountingVolumes] objectForKey:second] == nil);
}

/* Makes path a name of the file at original: a hard link, or a copy on
 * another file system. */
static BOOL PlaceFile(NSString *original, NSString *path)
{
    if (link([original fileSystemRepresentation], [path fileSystemRepresentation]) == 0)
        return YES;
    return [[NSFileManager defaultManager] copyItemAtPath:original toPath:path error:NULL];
}

/* This program run again as the probe case with its libKORU from
 * libraryFolder: the tool paths that library found, and whether that editor answers. */
static NSString *RunProbe(NSString *libraryFolder)
{
    char self[4096];
    ssize_t length = readlink("/proc/self/exe", self, sizeof self - 1);
    if (length <= 0)
        return nil;
    self[length] = '\0';
    CommandTool *probe = [CommandTool commandToolWithPath:@"/usr/bin/env"];
    [probe setArguments:[NSArray arrayWithObjects:[@"LD_LIBRARY_PATH=" stringByAppendingString:libraryFolder],
                                                  @"KORU_DISK_IMAGE_PATHS_PROBE=1", [NSString stringWithUTF8String:self],
                                                  @"MovedPrefixFindsItsTools", nil]];
    [probe setReadStandardOutput:YES];
    if (![probe run:NO])
        return nil;
    return [[[NSString alloc] initWithData:[probe standardOutputData] encoding:NSUTF8StringEncoding] autorelease];
}

static void MovedPrefixFindsItsTools(void)
{
    /* Installed as <prefix>/lib/libKORU.so.N and <prefix>/bin/<tools>, made
     * here from this build's files, then moved. */
    Dl_info info;
    KT_ASSERT(dladdr((void *)&kDiskImageEditorPath, &info) != 0 && info.dli_fname != NULL);
    char *library = realpath(info.dli_fname, NULL);
    KT_ASSERT(library != NULL);
    NSString *libraryFile = [NSString stringWithUTF8String:library];
    free(library);
    NSString *loadedName = [[NSString stringWithUTF8String:info.dli_fname] lastPathComponent];
    NSString *folder = MakeTestFolder();
    KT_ASSERT(folder != nil);
    NSFileManager *files = [NSFileManager defaultManager];
    NSString *first = [folder stringByAppendingPathComponent:@"first prefix"];
    NSString *lib = [first stringByAppendingPathComponent:@"lib"];
    NSString *bin = [first stringByAppendingPathComponent:@"bin"];
    NSString *elsewhere = [first stringByAppendingPathComponent:@"elsewhere"];
    for (NSString *made in [NSArray arrayWithObjects:lib, bin, elsewhere, nil])
        KT_ASSERT([files createDirectoryAtPath:made withIntermediateDirectories:YES attributes:nil error:NULL]);
    KT_ASSERT(PlaceFile(libraryFile, [lib stringByAppendingPathComponent:[libraryFile lastPathComponent]]));
    KT_ASSERT([files createSymbolicLinkAtPath:[lib stringByAppendingPathComponent:loadedName]
                                  pathContent:[libraryFile lastPathComponent]]);
    /* Loaded through a link elsewhere, as the bundle's executable is. */
    KT_ASSERT([files createSymbolicLinkAtPath:[elsewhere stringByAppendingPathComponent:loadedName]
                                  pathContent:[@"../lib" stringByAppendingPathComponent:[libraryFile lastPathComponent]]]);
    KT_ASSERT(PlaceFile(kDiskImageEditorPath, [bin stringByAppendingPathComponent:@"hdiutil-koru"]));
    KT_ASSERT(PlaceFile(kDiskImageMounterPath, [bin stringByAppendingPathComponent:@"hdid-koru"]));
    NSString *moved = [folder stringByAppendingPathComponent:@"moved prefix"];
    KT_ASSERT(rename([first fileSystemRepresentation], [moved fileSystemRepresentation]) == 0);
    char *real = realpath([moved fileSystemRepresentation], NULL);
    KT_ASSERT(real != NULL);
    NSString *prefix = [NSString stringWithUTF8String:real];
    free(real);
    NSString *expected = [NSString stringWithFormat:@"editor=%@/bin/hdiutil-koru\nmounter=%@/bin/hdid-koru\nlisted=yes\n",
                                                    prefix, prefix];
    for (NSString *loadFolder in [NSArray arrayWithObjects:@"lib", @"elsewhere", nil]) {
        NSString *output = RunProbe([moved stringByAppendingPathComponent:loadFolder]);
        KT_EXPECT_MSG(output != nil && [output hasPrefix:expected], @"loaded from %@: %@", loadFolder, output);
    }
}

KT_CASE(MovedPrefixFindsItsTools)
{
    if (getenv("KORU_DISK_IMAGE_PATHS_PROBE") != NULL) {
        printf("editor=%s\nmounter=%s\nlisted=%s\n", [kDiskImageEditorPath fileSystemRepresentation],
               [kDiskImageMounterPath fileSystemRepresentation], [DiskImage frameworkInfomation] != nil ? "yes" : "no");
        fflush(stdout);
        return;
    }
    MovedPrefixFindsItsTools();
    RemoveTestFolder();
}

static void __attribute__((constructor)) CleanUpAtExit(void)
{
    atexit(DetachTestImages);
}

KT_MAIN()
