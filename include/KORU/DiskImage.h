/* DiskImage: one disk-image file, which it can build from a folder, attach,
 * find where it is attached, and eject.
 *
 * Disk images are squashfs images, attached read-only through FUSE without
 * root.  The work is done by the toolkit's two command-line tools, run
 * through CommandTool: kDiskImageEditorPath (hdiutil-compatible: create,
 * attach, detach, info -plist) and kDiskImageMounterPath (hdid-compatible:
 * attaches the image it is given).  The system is the only record of what is
 * attached: every answer about mount points asks the editor afresh.
 *
 * The image path is an owned copy.  All calls run the tools synchronously on
 * the calling thread.  A tool that runs to its end counts as a success
 * whatever its exit status; whether an image is attached is judged by the
 * mount table alone. */
#ifndef KORU_DISKIMAGE_H
#define KORU_DISKIMAGE_H

#import <Foundation/Foundation.h>

/* The installed paths of the editor and the mounter tools. */
extern NSString *const kDiskImageEditorPath;
extern NSString *const kDiskImageMounterPath;

@interface DiskImage : NSObject
{
    NSString *mFilePath;
    BOOL mLogToConsole;
}

/* The editor's "info -plist" report parsed (autoreleased, immutable): under
 * "images" one dictionary per attached image with "image-path" and
 * "system-entities" (dictionaries with "mount-point" for mounted volumes).
 * nil when the tool could not run, wrote nothing or wrote no property list. */
+ (NSDictionary *)frameworkInfomation;

/* Mount point -> image path for every attached image (each image by its
 * first mounted entity); empty when nothing is attached or the report is
 * unusable.  A new autoreleased dictionary. */
+ (NSMutableDictionary *)mountingVolumes;

/* The image attached at mountPoint; nil when none is, or for nil. */
+ (NSString *)filepathOfMountingVolume:(NSString *)mountPoint;

/* The mount point of the image at filepath; nil when it is not attached, or
 * for nil. */
+ (NSString *)mountingVolumeOfFilepath:(NSString *)filepath;

/* Autoreleased instances made with the initialisers below; nil when those
 * give none. */
+ (id)diskImageWithFilepath:(NSString *)filepath;
+ (id)diskImageWithMountingVolume:(NSString *)mountPoint;

/* An image at filepath (an owned copy); nil for nil. */
- (id)initWithFilepath:(NSString *)filepath;

/* The image attached at mountPoint; nil when no known image is. */
- (id)initWithMountingVolume:(NSString *)mountPoint;

/* Not to be used: logs "-[DiskImage init] You can't use this message." and
 * answers nil. */
- (id)init;

- (NSString *)filepath;
/* Stores a copy; nil is ignored. */
- (void)setFilepath:(NSString *)filepath;

/* When YES, the tools' standard output is logged after creating and mounting. */
- (BOOL)logToConsole;
- (void)setLogToConsole:(BOOL)flag;

/* Where the image is attached now, or nil. */
- (NSString *)mountPoint;

/* Builds the image at filepath from the folder's contents with the editor
 * ("create -srcfolder <folder> <image>").  YES when the editor ran to its
 * end; whether it made an image is its own affair (it makes none from a
 * missing folder, and replaces no existing image). */
- (BOOL)createFromDirectory:(NSString *)directory;

/* Attaches the image with the mounter unless it is attached already, and
 * answers its mount point; nil when it did not get attached. */
- (NSString *)mount;

/* Detaches the image if it is attached; YES when it is not attached
 * afterwards (so also when it was not attached at all). */
- (BOOL)unmount;

/* "DiskImage 0x<address> {filepath=<path>, mountPoint=<mount point>}". */
- (NSString *)description;

@end

#endif
