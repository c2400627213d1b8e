/* Tour section: CommandTool running programs synchronously and on a worker
 * thread, and DiskImage making an image from a folder, attaching it, listing
 * it, reading through it and ejecting it.  The classes and the exported
 * constants are found in the loaded bundle by name. */
#import <Foundation/Foundation.h>
#import <KORU/CommandTool.h>
#import <KORU/DiskImage.h>
#include <CoreServices/CoreServices.h>

#include "Tour.h"

#include <stdio.h>
#include <unistd.h>

@interface TourRunWatcher : NSObject {
@public
    BOOL done;
}
@end

@implementation TourRunWatcher
- (void)toolDidRun:(NSNotification *)notification
{
    (void)notification;
    done = YES;
}
@end

static NSString *Text(NSData *data)
{
    NSString *text = [[[NSString alloc] initWithData:data encoding:NSUTF8StringEncoding] autorelease];
    return [text stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]];
}

static NSString *BundleString(CFBundleRef bundle, const char *name)
{
    NSString *symbol = [NSString stringWithUTF8String:name];
    NSString *const *address = CFBundleGetDataPointerForName(bundle, (CFStringRef)symbol);
    if (address == NULL)
        fprintf(stderr, "koru: the bundle exports no %s\n", name);
    return address != NULL ? *address : nil;
}

static BOOL TourCommandTool(Class toolClass, NSString *notificationName)
{
    CommandTool *uname = [toolClass commandToolWithPath:@"/bin/uname"];
    [uname setArguments:[NSArray arrayWithObjects:@"-s", @"-r", nil]];
    [uname setReadStandardOutput:YES];
    BOOL ran = [uname run:NO];
    printf("  /bin/uname -s -r, run on this thread: %s\n", ran ? [Text([uname standardOutputData]) UTF8String] : "failed");

    /* Input fed and output read on a worker; the end is noticed on this run loop. */
    NSMutableString *input = [NSMutableString string];
    for (int line = 0; line < 5000; line++)
        [input appendFormat:@"line %d of a text larger than a pipe holds\n", line];
    CommandTool *filter = [toolClass commandToolWithPath:@"/bin/sh"];
    [filter setArguments:[NSArray arrayWithObjects:@"-c", @"tr a-z A-Z | tail -n 1", nil]];
    [filter setInputData:[input dataUsingEncoding:NSUTF8StringEncoding]];
    [filter setReadStandardOutput:YES];
    TourRunWatcher *watcher = [[[TourRunWatcher alloc] init] autorelease];
    [[NSNotificationCenter defaultCenter] addObserver:watcher
                                             selector:@selector(toolDidRun:)
                                                 name:notificationName
                                               object:filter];
    BOOL started = [filter run:YES];
    NSDate *limit = [NSDate dateWithTimeIntervalSinceNow:60];
    while (started && !watcher->done && [limit timeIntervalSinceNow] > 0)
        [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.1]];
    [[NSNotificationCenter defaultCenter] removeObserver:watcher];
    printf("  %lu bytes through `tr a-z A-Z | tail -n 1` on a worker thread, then %s: \"%s\"\n",
           (unsigned long)[input length], [notificationName UTF8String], [Text([filter standardOutputData]) UTF8String]);
    return ran && watcher->done && [filter succeeded];
}

static BOOL TourDiskImage(Class imageClass, NSString *editorPath)
{
    if (![[NSFileManager defaultManager] isExecutableFileAtPath:editorPath]) {
        printf("  the disk-image tools are not installed at %s (cmake --install puts them there)\n",
               [editorPath UTF8String]);
        return YES;
    }
    char temporary[1024];
    if (FSFindFolderGetPath(kUserDomain, kTemporaryFolderType, kCreateFolder, temporary, sizeof temporary) != noErr)
        return NO;
    NSString *pattern = [[NSString stringWithUTF8String:temporary] stringByAppendingPathComponent:@"tour-XXXXXX"];
    char folderPath[1100];
    snprintf(folderPath, sizeof folderPath, "%s", [pattern fileSystemRepresentation]);
    if (mkdtemp(folderPath) == NULL)
        return NO;
    NSString *folder = [NSString stringWithUTF8String:folderPath];
    NSString *source = [folder stringByAppendingPathComponent:@"Tour Folder"];
    [[NSFileManager defaultManager] createDirectoryAtPath:source withIntermediateDirectories:NO attributes:nil error:NULL];
    [@"Hello from inside a disk image.\n" writeToFile:[source stringByAppendingPathComponent:@"Hello.txt"]
                                           atomically:NO
                                             encoding:NSUTF8StringEncoding
                                                error:NULL];

    DiskImage *image = [imageClass diskImageWithFilepath:[folder stringByAppendingPathComponent:@"Tour.img"]];
    BOOL created = [image createFromDirectory:source];
    printf("  created %s from \"Tour Folder\": %s\n", [[image filepath] UTF8String], created ? "yes" : "no");
    NSString *mountPoint = [image mount];
    printf("  attached at %s\n", mountPoint != nil ? [mountPoint UTF8String] : "(nowhere)");
    NSDictionary *volumes = [imageClass mountingVolumes];
    printf("  attached images known to the system: %lu; this one: %s\n", (unsigned long)[volumes count],
           [volumes objectForKey:mountPoint] != nil ? "listed" : "missing");
    NSString *hello = [NSString stringWithContentsOfFile:[mountPoint stringByAppendingPathComponent:@"Hello.txt"]
                                                encoding:NSUTF8StringEncoding
                                                   error:NULL];
    printf("  Hello.txt read through the mount point: %s\n", hello != nil ? [Text([hello dataUsingEncoding:NSUTF8StringEncoding]) UTF8String] : "(unreadable)");
    printf("  %s\n", [[image description] UTF8String]);
    BOOL ejected = [image unmount];
    printf("  ejected: %s; mount point now %s\n", ejected ? "yes" : "no",
           [image mountPoint] == nil ? "none" : [[image mountPoint] UTF8String]);
    [[NSFileManager defaultManager] removeItemAtPath:folder error:NULL];
    return created && mountPoint != nil && hello != nil && ejected;
}

static bool TourCocoaTools(CFBundleRef bundle)
{
    Class toolClass = NSClassFromString(@"CommandTool");
    Class imageClass = NSClassFromString(@"DiskImage");
    NSString *notificationName = BundleString(bundle, "CommandToolDidRunNotification");
    NSString *editorPath = BundleString(bundle, "kDiskImageEditorPath");
    NSString *mounterPath = BundleString(bundle, "kDiskImageMounterPath");
    if (toolClass == Nil || imageClass == Nil || notificationName == nil || editorPath == nil || mounterPath == nil)
        return false;
    printf("  disk-image editor: %s\n  disk-image mounter: %s\n", [editorPath UTF8String], [mounterPath UTF8String]);
    BOOL tools = TourCommandTool(toolClass, notificationName);
    BOOL images = TourDiskImage(imageClass, editorPath);
    return tools && images;
}

KORU_TOUR_SECTION(60, "Cocoa classes: CommandTool runs programs, DiskImage makes and attaches images", TourCocoaTools)
