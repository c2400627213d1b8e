/* dladdr */
#define _GNU_SOURCE 1

#import <KORU/DiskImage.h>

#import <KORU/CommandTool.h>

#import "CaughtException.h"

#include <dlfcn.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

/* The tools lie at a fixed place relative to this library: installed, the
 * library is in <prefix>/lib and the tools in <prefix>/bin, and the build
 * folder has the same layout.  So the paths are found from where the library
 * was loaded, and a prefix moved elsewhere keeps working.
 *
 * Hosts see the exported names as constants, and read them only after the
 * library has been loaded, by which time +load below has given them their
 * values.  The library writes them through these names, bound to the same
 * symbols; a host's copy of them (a copy relocation) is written alike. */
NSString *DiskImageEditorPathValue __asm__("kDiskImageEditorPath") = nil;
NSString *DiskImageMounterPathValue __asm__("kDiskImageMounterPath") = nil;

/* folder (a real path: no links, no "." or "..") joined with relative
 * (made of names, "." and ".."): a new C string, or NULL. */
static char *JoinPath(const char *folder, const char *relative)
{
    size_t size = strlen(folder) + strlen(relative) + 2;
    char *path = malloc(size);
    if (path == NULL)
        return NULL;
    strcpy(path, folder);
    size_t length = strlen(path);
    while (*relative != '\0') {
        size_t part = strcspn(relative, "/");
        if (part == 2 && strncmp(relative, "..", 2) == 0) {
            while (length > 0 && path[length - 1] != '/')
                length--;
            if (length > 1)
                length--; /* the slash, unless it is the root */
        } else if (part > 0 && !(part == 1 && relative[0] == '.')) {
            if (length == 0 || path[length - 1] != '/')
                path[length++] = '/';
            memcpy(path + length, relative, part);
            length += part;
        }
        path[length] = '\0';
        relative += part;
        while (*relative == '/')
            relative++;
    }
    return path;
}

/* The tool's path beside this library, or the installed one when the library
 * cannot tell where it is.  Links are resolved: loaded as the bundle, the
 * library is KORU.bundle/KORU, a link to <prefix>/lib/libKORU.so.N. */
static NSString *ToolPath(const char *name, NSString *fallback)
{
    Dl_info info;
    if (dladdr((void *)&ToolPath, &info) == 0 || info.dli_fname == NULL)
        return fallback;
    char *library = realpath(info.dli_fname, NULL);
    char *slash = library != NULL ? strrchr(library, '/') : NULL;
    if (slash == NULL) {
        free(library);
        return fallback;
    }
    *slash = '\0';
    char *folder = JoinPath(*library != '\0' ? library : "/", KORU_DISK_IMAGE_TOOLS_FROM_LIBRARY);
    char *path = folder != NULL ? JoinPath(folder, name) : NULL;
    NSString *result = path != NULL ? [[NSFileManager defaultManager] stringWithFileSystemRepresentation:path
                                                                                               length:strlen(path)]
                                    : nil;
    free(path);
    free(folder);
    free(library);
    return result != nil ? result : fallback;
}

/* Sets the tool paths while the library is being loaded: the runtime calls
 * +load before the loading returns to the host, and, unlike a plain
 * constructor, only once it has registered this library's selectors. */
@interface DiskImageToolPaths : NSObject
@end

@implementation DiskImageToolPaths
+ (void)load
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    /* Kept for the life of the process. */
    DiskImageEditorPathValue = [ToolPath("hdiutil-koru", @KORU_DISK_IMAGE_EDITOR_PATH) retain];
    DiskImageMounterPathValue = [ToolPath("hdid-koru", @KORU_DISK_IMAGE_MOUNTER_PATH) retain];
    [pool release];
}
@end

/* Runs a tool synchronously with its standard output captured; nil when it
 * could not run to its end. */
static CommandTool *RunTool(NSString *path, NSArray *arguments)
{
    CommandTool *tool = [CommandTool commandToolWithPath:path];
    [tool setArguments:arguments];
    [tool setReadStandardOutput:YES];
    return [tool run:NO] ? tool : nil;
}

static void LogToolOutput(const char *method, CommandTool *tool)
{
    NSString *output = [[NSString alloc] initWithData:[tool standardOutputData] encoding:NSUTF8StringEncoding];
    NSLog(@"%s\n%@\n", method, output);
    [output release];
}

@implementation DiskImage

+ (NSDictionary *)frameworkInfomation
{
    @try {
        CommandTool *tool = RunTool(kDiskImageEditorPath, [NSArray arrayWithObjects:@"info", @"-plist", nil]);
        NSData *output = [tool standardOutputData];
        if ([output length] == 0)
            return nil;
        id report = [NSPropertyListSerialization propertyListFromData:output
                                                     mutabilityOption:NSPropertyListImmutable
                                                               format:NULL
                                                     errorDescription:NULL];
        return [report isKindOfClass:[NSDictionary class]] ? report : nil;
    } @catch (NSException *exception) {
        return nil;
    }
}

+ (NSMutableDictionary *)mountingVolumes
{
    NSMutableDictionary *table = [NSMutableDictionary dictionary];
    id images = [[self frameworkInfomation] objectForKey:@"images"];
    if (![images isKindOfClass:[NSArray class]])
        return table;
    for (id image in images) {
        if (![image isKindOfClass:[NSDictionary class]])
            continue;
        id imagePath = [image objectForKey:@"image-path"];
        id entities = [image objectForKey:@"system-entities"];
        if (imagePath == nil || ![entities isKindOfClass:[NSArray class]])
            continue;
        /* An image is known by its first mounted entity only. */
        for (id entity in entities) {
            id mountPoint = [entity isKindOfClass:[NSDictionary class]] ? [entity objectForKey:@"mount-point"] : nil;
            if (mountPoint != nil) {
                [table setObject:imagePath forKey:mountPoint];
                break;
            }
        }
    }
    return table;
}

+ (NSString *)filepathOfMountingVolume:(NSString *)mountPoint
{
    if (mountPoint == nil)
        return nil;
    return [[self mountingVolumes] objectForKey:mountPoint];
}

+ (NSString *)mountingVolumeOfFilepath:(NSString *)filepath
{
    if (filepath == nil)
        return nil;
    NSArray *mountPoints = [[self mountingVolumes] allKeysForObject:filepath];
    return [mountPoints count] > 0 ? [mountPoints objectAtIndex:0] : nil;
}

+ (id)diskImageWithFilepath:(NSString *)filepath
{
    return [[[self alloc] initWithFilepath:filepath] autorelease];
}

+ (id)diskImageWithMountingVolume:(NSString *)mountPoint
{
    return [[[self alloc] initWithMountingVolume:mountPoint] autorelease];
}

- (id)initWithFilepath:(NSString *)filepath
{
    self = [super init];
    if (self == nil)
        return nil;
    if (filepath == nil) {
        [self release];
        return nil;
    }
    mFilePath = [[NSString alloc] initWithString:filepath];
    return self;
}

- (id)initWithMountingVolume:(NSString *)mountPoint
{
    return [self initWithFilepath:[[self class] filepathOfMountingVolume:mountPoint]];
}

- (id)init
{
    NSLog(@"%s You can't use this message.", "-[DiskImage init]");
    [self release];
    return nil;
}

- (void)dealloc
{
    [mFilePath release];
    [super dealloc];
}

- (NSString *)filepath
{
    return mFilePath;
}

- (void)setFilepath:(NSString *)filepath
{
    if (filepath == nil)
        return;
    NSString *copy = [[NSString alloc] initWithString:filepath];
    [mFilePath release];
    mFilePath = copy;
}

- (BOOL)logToConsole
{
    return mLogToConsole;
}

- (void)setLogToConsole:(BOOL)flag
{
    mLogToConsole = flag;
}

- (NSString *)mountPoint
{
    return [[self class] mountingVolumeOfFilepath:mFilePath];
}

- (BOOL)createFromDirectory:(NSString *)directory
{
    @try {
        CommandTool *tool =
            RunTool(kDiskImageEditorPath,
                    [NSArray arrayWithObjects:@"create", @"-srcfolder", directory, mFilePath, nil]);
        if (tool != nil && mLogToConsole)
            LogToolOutput("-[DiskImage createFromDirectory:]", tool);
        return tool != nil;
    } @catch (NSException *exception) {
        KORULogCaughtException("-[DiskImage createFromDirectory:]", __LINE__, exception);
        return NO;
    }
}

- (NSString *)mount
{
    NSString *mountPoint = [self mountPoint];
    if (mountPoint != nil)
        return mountPoint;
    @try {
        CommandTool *tool = RunTool(kDiskImageMounterPath, [NSArray arrayWithObject:mFilePath]);
        if (tool != nil && mLogToConsole)
            LogToolOutput("-[DiskImage mount]", tool);
    } @catch (NSException *exception) {
        KORULogCaughtException("-[DiskImage mount]", __LINE__, exception);
    }
    return [self mountPoint];
}

/* FUSE mounts are undone by fusermount3 (the workspace's eject runs a
 * program Linux does not have): the editor's detach does it. */
- (BOOL)unmount
{
    @try {
        NSString *mountPoint = [self mountPoint];
        if (mountPoint != nil)
            RunTool(kDiskImageEditorPath, [NSArray arrayWithObjects:@"detach", mountPoint, nil]);
    } @catch (NSException *exception) {
        KORULogCaughtException("-[DiskImage unmount]", __LINE__, exception);
    }
    return [self mountPoint] == nil;
}

- (NSString *)description
{
    return [NSString stringWithFormat:@"DiskImage 0x%08lX {filepath=%@, mountPoint=%@}",
                                      (unsigned long)(uintptr_t)self, mFilePath, [self mountPoint]];
}

@end
