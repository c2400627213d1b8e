/* HFS paths for CFURL.  An HFS path starts with the name of its volume:
 * here a volume is a mounted file system (/proc/self/mountinfo), named by
 * its file system's label when it has one, else by the last component of
 * its mount point; the root volume without a label is named after the
 * machine (uname -n), as a Mac names its start-up disk. */
#include "CFURLInternal.h"
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/utsname.h>

/* Decodes mountinfo's octal escapes ("\040" for a space) in place. */
static void __CFDecodeOctal(char *text)
{
    char *out = text;
    for (char *from = text; *from; from++) {
        if (from[0] == '\\' && from[1] >= '0' && from[1] <= '3' && from[2] >= '0' && from[2] <= '7' && from[3] >= '0' &&
            from[3] <= '7') {
            *out++ = (char)((from[1] - '0') * 64 + (from[2] - '0') * 8 + (from[3] - '0'));
            from += 3;
        } else {
            *out++ = *from;
        }
    }
    *out = 0;
}

/* Decodes udev's "\x20" escapes in a by-label name. */
static NSString *__CFDecodeLabel(const char *name)
{
    char decoded[NAME_MAX + 1];
    size_t n = 0;
    for (const char *from = name; *from && n < NAME_MAX; from++) {
        unsigned value;
        if (from[0] == '\\' && from[1] == 'x' && sscanf(from + 2, "%2x", &value) == 1) {
            decoded[n++] = (char)value;
            from += 3;
        } else {
            decoded[n++] = *from;
        }
    }
    decoded[n] = 0;
    return [NSString stringWithUTF8String:decoded];
}

/* The label of the file system on a device, from udev's by-label links. */
static NSString *__CFLabelForDevice(const char *device)
{
    char resolvedDevice[PATH_MAX];
    if (device[0] != '/' || realpath(device, resolvedDevice) == NULL)
        return nil;
    NSString *folder = @"/dev/disk/by-label";
    NSArray *names = [[NSFileManager defaultManager] contentsOfDirectoryAtPath:folder error:NULL];
    for (NSString *name in names) {
        char target[PATH_MAX];
        NSString *link = [folder stringByAppendingPathComponent:name];
        if (realpath([link fileSystemRepresentation], target) != NULL && strcmp(target, resolvedDevice) == 0)
            return __CFDecodeLabel([name fileSystemRepresentation]);
    }
    return nil;
}

static NSString *__CFVolumeName(NSString *mountPoint, const char *device)
{
    NSString *label = __CFLabelForDevice(device);
    if ([label length] > 0)
        return label;
    if ([mountPoint isEqualToString:@"/"]) {
        struct utsname machine;
        if (uname(&machine) == 0 && machine.nodename[0] != 0)
            return [NSString stringWithUTF8String:machine.nodename];
        return @"/";
    }
    return [mountPoint lastPathComponent];
}

/* Every mounted volume: an array of {mount point, name} pairs, the root first. */
static NSArray *__CFMountedVolumes(void)
{
    NSMutableArray *volumes = [NSMutableArray array];
    FILE *table = fopen("/proc/self/mountinfo", "re");
    if (table != NULL) {
        char *line = NULL;
        size_t capacity = 0;
        while (getline(&line, &capacity, table) > 0) {
            char mountPoint[PATH_MAX], device[PATH_MAX];
            const char *separator = strstr(line, " - ");
            if (sscanf(line, "%*s %*s %*s %*s %4095s", mountPoint) != 1 || separator == NULL ||
                sscanf(separator + 3, "%*s %4095s", device) != 1)
                continue;
            __CFDecodeOctal(mountPoint);
            __CFDecodeOctal(device);
            NSString *point = [NSString stringWithUTF8String:mountPoint];
            if (point == nil)
                continue;
            NSArray *volume = [NSArray arrayWithObjects:point, __CFVolumeName(point, device), nil];
            if ([point isEqualToString:@"/"])
                [volumes insertObject:volume atIndex:0];
            else
                [volumes addObject:volume];
        }
        free(line);
        fclose(table);
    }
    if ([volumes count] == 0 || ![[[volumes objectAtIndex:0] objectAtIndex:0] isEqualToString:@"/"])
        [volumes insertObject:[NSArray arrayWithObjects:@"/", __CFVolumeName(@"/", ""), nil] atIndex:0];
    return volumes;
}

/* An HFS name holds "/" where the POSIX name holds ":", and the reverse. */
static NSString *__CFSwapSeparators(NSString *name, NSString *from, NSString *to)
{
    return [name stringByReplacingOccurrencesOfString:from withString:to];
}

NSString *__CFPOSIXPathFromHFSPath(NSString *hfs, BOOL *isAbsolute)
{
    NSArray *parts = [hfs componentsSeparatedByString:@":"];
    /* "name" and ":folder:name" are relative; "Volume:..." is absolute. */
    BOOL absolute = [parts count] > 1 && [[parts objectAtIndex:0] length] > 0;
    *isAbsolute = absolute;
    NSMutableArray *components = [NSMutableArray array];
    NSUInteger first = 1;
    if (!absolute)
        first = [parts count] > 1 ? 1 : 0;
    for (NSUInteger i = first; i < [parts count]; i++) {
        NSString *part = [parts objectAtIndex:i];
        /* An empty component between colons climbs one folder, as "::" does. */
        [components addObject:[part length] ? __CFSwapSeparators(part, @"/", @":") : @".."];
    }
    if ([components count] > 0 && [[components lastObject] isEqualToString:@".."] && [hfs hasSuffix:@":"])
        [components removeLastObject];
    NSString *tail = [components componentsJoinedByString:@"/"];
    if (!absolute)
        return tail;
    NSString *volumeName = [parts objectAtIndex:0];
    for (NSArray *volume in __CFMountedVolumes()) {
        if ([[volume objectAtIndex:1] isEqualToString:volumeName]) {
            NSString *mountPoint = [volume objectAtIndex:0];
            return [tail length] ? [mountPoint stringByAppendingPathComponent:tail] : mountPoint;
        }
    }
    return nil;
}

NSString *__CFHFSPathFromPOSIXPath(NSString *path)
{
    NSArray *best = nil;
    for (NSArray *volume in __CFMountedVolumes()) {
        NSString *mountPoint = [volume objectAtIndex:0];
        BOOL contains = [mountPoint isEqualToString:@"/"] || [path isEqualToString:mountPoint] ||
                        [path hasPrefix:[mountPoint stringByAppendingString:@"/"]];
        if (contains && (best == nil || [mountPoint length] >= [[best objectAtIndex:0] length]))
            best = volume;
    }
    NSString *mountPoint = [best objectAtIndex:0];
    NSString *rest = [mountPoint isEqualToString:@"/"] ? path : [path substringFromIndex:[mountPoint length]];
    NSMutableString *hfs = [NSMutableString stringWithString:[best objectAtIndex:1]];
    NSArray *components = [rest componentsSeparatedByString:@"/"];
    BOOL any = NO;
    for (NSString *part in components) {
        if ([part length] == 0)
            continue;
        [hfs appendString:@":"];
        [hfs appendString:__CFSwapSeparators(part, @":", @"/")];
        any = YES;
    }
    if (!any)
        [hfs appendString:@":"];
    return hfs;
}
