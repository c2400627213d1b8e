#import <KORU/DiskImage.h>

#import <KORU/CommandTool.h>

#import "CaughtException.h"

#include <stdint.h>

/* Where `cmake --install` puts the toolkit's disk-image tools. */
NSString *const kDiskImageEditorPath = @KORU_DISK_IMAGE_EDITOR_PATH;
NSString *const kDiskImageMounterPath = @KORU_DISK_IMAGE_MOUNTER_PATH;

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
