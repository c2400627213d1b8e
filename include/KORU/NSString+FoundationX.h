/* NSString(FoundationX) and NSMutableString(FoundationX): a string as a
 * file-system path.
 *
 * Existence and kind tests, creating, copying and removing, sizes, FSRef,
 * FSSpec and alias conversions, type and creator codes, Launch Services
 * information, the application that opens an item, launching, processes,
 * the standard folders, an application temporary folder, a storable form of
 * a path that survives moves, and running scripts with the default scripting
 * component.  Each method turns the receiver into an FSRef or a file URL and
 * hands it to the matching File Manager, Launch Services, Process Manager or
 * FSUtilities / AppleEventUtilities function.
 *
 * exists, existsDirectory, the four file-manager tests, remove,
 * getLSItemInfoRecord:whichInfo: (and so every flag test), aliasHandle,
 * aliasData, storeableDictionary, openResourceFork: and bundleIdentifier
 * expand a leading tilde first; every other method takes the receiver as it
 * stands.  No method raises: bad input and missing items give NO, nil, 0 or
 * -1.  With the debug switch on (KORUDebug), failed checks and caught
 * exceptions are logged with NSLog.
 *
 * State: the flag tests share a one-entry cache keyed by the receiver
 * object (its address, not its text), which it keeps retained until another
 * receiver takes its place: asking a string again answers from the cache,
 * even when a mutable receiver has changed since.  Use the category from one
 * thread at a time. */
#import <Foundation/Foundation.h>

#include <Carbon/Carbon.h>

@interface NSString (FoundationX)

/* --- Existence, kind and attributes ------------------------------------- */

/* Something exists at the path (a symbolic link counts by its target). */
- (BOOL)exists;
/* It exists and is a directory. */
- (BOOL)existsDirectory;
/* NSFileManager's tests of the same names. */
- (BOOL)isReadableFile;
- (BOOL)isWritableFile;
- (BOOL)isExecutableFile;
- (BOOL)isDeletableFile;

/* All bits of mask set in the item's Launch Services flags (LSItemInfoFlags);
 * defaultResult when they cannot be had (no such item). */
- (BOOL)isLSItemInfoRecordFlagOn:(LSItemInfoFlags)mask defaultResult:(BOOL)defaultResult;
/* Flag tests; NO for a missing item. */
- (BOOL)isAlias;
- (BOOL)isApplication;
- (BOOL)isContainer;
- (BOOL)isInvisible;
- (BOOL)isPackage;
- (BOOL)isVolume;
/* A plain file; YES for a missing item. */
- (BOOL)isPlainFile;
/* A container that is no volume. */
- (BOOL)isDirectory;
/* A container that is neither package nor volume. */
- (BOOL)isFolder;
/* The data fork starts with a Mach-O or universal-binary magic number. */
- (BOOL)isMachOBinary;

/* Fills the record (zeroed first) with LSCopyItemInfoForURL; the caller
 * releases its extension when it asked for one.  NO for a NULL record or a
 * missing item, the record's strings then released and cleared. */
- (BOOL)getLSItemInfoRecord:(LSItemInfoRecord *)record whichInfo:(LSRequestedInfo)whichInfo;
/* The file type and creator codes from the Finder information ('fold' for a
 * folder without any); 0 when unavailable. */
- (OSType)HFSFileType;
- (OSType)HFSCreator;
/* The same as four-character strings; nil for the code 0. */
- (NSString *)HFSFileTypeString;
- (NSString *)HFSCreatorString;

/* FSGetCatalogInfo / FSSetCatalogInfo of the fields named by bitmap; NO for
 * a NULL record or a missing item. */
- (BOOL)getFSCatalogInfo:(FSCatalogInfo *)catalogInfo ofBitmap:(FSCatalogInfoBitmap)bitmap;
- (BOOL)setFSCatalogInfo:(const FSCatalogInfo *)catalogInfo ofBitmap:(FSCatalogInfoBitmap)bitmap;

/* Data plus resource fork bytes: of the item itself, or, for a container,
 * summed over everything inside it at any depth; 0 when unavailable. */
- (unsigned long long)logicalSize;
- (NSNumber *)logicalSizeNumber;

/* The name a person sees (NSFileManager's display name). */
- (NSString *)displayName;
/* The number of path components other than "/" (/usr/bin has 2). */
- (NSUInteger)pathComponentsCount;
/* The path in the HFS (colon-separated) style, starting with the volume's
 * name; nil for an empty receiver. */
- (NSString *)HFSPath;
/* The identifier of the bundle at the path; nil when it has none. */
- (NSString *)bundleIdentifier;
/* The data at the URL the receiver spells; nil when it cannot be read. */
- (NSData *)URLContents;

/* --- Creating, copying, removing ----------------------------------------- */

/* Creates the directory when nothing is at the path; YES when it was made or
 * a directory is already there. */
- (BOOL)createDirectory;
/* Creates every missing directory along the path; YES when all exist at the
 * end, and for an empty receiver. */
- (BOOL)createDirectories;
/* Copies the receiver's item to destination, making its parent folders and
 * replacing what is there (with its resource fork and Finder information).
 * NO at the first failing step; NO without touching anything for a missing
 * source, a destination that is the source, lies inside it or holds it. */
- (BOOL)createCopyOfPath:(NSString *)destination;
/* Writes an empty file at the path, emptying one that is there. */
- (BOOL)createEmptyFile;
/* Removes the item (a folder with everything in it) with its resource fork
 * and Finder information. */
- (BOOL)remove;
/* The files and packages inside the folder at any depth, as paths relative
 * to it, in the order of NSFileManager's subpathsAtPath:; invisible items,
 * folders, volumes and whatever lies inside a listed package are left out.
 * An empty array when the folder cannot be read. */
- (NSArray *)subfilepaths;
/* RFOpen of the item's resource fork (FSUtilities.h): the reference number
 * of the now current resource file, or -1. */
- (ResFileRefNum)openResourceFork:(BOOL)forWriting;
/* A new bundle of the folder at the path, owned by the caller; NULL when
 * there is none. */
- (CFBundleRef)createCFBundle CF_RETURNS_RETAINED;

/* --- References and aliases ---------------------------------------------- */

/* FSPathMakeRef of the path (UTF-8); NO for a NULL ref or a missing item. */
- (BOOL)getFSRef:(FSRef *)ref;
/* The POSIX path of the reference; nil for a NULL or stale ref. */
- (id)initWithFSRef:(const FSRef *)ref;
+ (id)stringWithFSRef:(const FSRef *)ref;
/* The same through an FSSpec. */
- (BOOL)getFSSpec:(FSSpec *)fsSpec;
- (id)initWithFSSpec:(const FSSpec *)fsSpec;
+ (id)stringWithFSSpec:(const FSSpec *)fsSpec;

/* A new alias record of the item, which the caller disposes with
 * DisposeHandle; NULL for a missing item. */
- (AliasHandle)aliasHandle;
/* The bytes of that record; nil for a missing item. */
- (NSData *)aliasData;
/* The current path of the item an alias record's bytes name; nil when it
 * cannot be found. */
- (id)initWithAliasData:(NSData *)data;
+ (id)stringWithAliasData:(NSData *)data;
/* For an alias file, the path of the item at the end of its chain; nil for
 * anything else and for a broken alias. */
- (NSString *)original;

/* The storable form of the path: "Path" (the home folder abbreviated to a
 * tilde) and "Alias" (aliasData); nil when no alias can be made. */
- (NSDictionary *)storeableDictionary;
/* The path a storable dictionary names.  With resolveAliasFirst: the alias's
 * item when it can be found, else the stored path when something is there;
 * without: the stored path when something is there, else the alias's item.
 * nil otherwise. */
- (id)initWithStoreableDictionary:(NSDictionary *)dictionary resolveAliasFirst:(BOOL)resolveAliasFirst;
+ (id)stringWithStoreableDictionary:(NSDictionary *)dictionary resolveAliasFirst:(BOOL)resolveAliasFirst;

/* --- Type codes ------------------------------------------------------------ */

/* The code a four-character receiver spells (its characters in Mac OS Roman);
 * 0 for any other length or characters outside Mac OS Roman. */
- (OSType)OSType;
- (NSNumber *)OSTypeNumber;
/* The four characters of a code; nil for 0. */
- (id)initWithOSType:(OSType)type;
+ (id)stringWithOSType:(OSType)type;
/* The receiver is the four-character string of the code. */
- (BOOL)isEqualToOSType:(OSType)type;

/* --- Launch Services, processes and folders -------------------------------- */

/* The path of the application that opens the item in one of the roles
 * (LSRolesMask); nil when there is none. */
- (NSString *)applicationOfRole:(LSRolesMask)roles;
/* Starts the application at the path without documents; YES on success. */
- (BOOL)launchWithLaunchFlags:(LSLaunchFlags)flags;
/* Brings the process of the application at the path to the front; NO when
 * none runs or it cannot be raised. */
- (BOOL)activateProcess;
/* A process of the application at the path runs / is the front process. */
- (BOOL)isRunningProcess;
- (BOOL)isFrontProcess;
/* The first such process; NO and {0, 0} when none runs or psn is NULL. */
- (BOOL)getProcessSerialNumber:(ProcessSerialNumber *)psn;

/* The path of a standard folder (FSFindFolder with the domain, type and
 * create flag); nil when there is none. */
- (id)initWithFindFolder:(SInt16)domain type:(OSType)folderType createFolder:(BOOL)createFolder;
+ (id)stringWithFindFolder:(SInt16)domain type:(OSType)folderType createFolder:(BOOL)createFolder;
/* This application's own folder in the user's temporary-items folder, named
 * after the main bundle's identifier or, without one, its executable, and
 * created when missing; nil when it cannot be had. */
+ (NSString *)stringWithApplicationTemporary;

/* --- Scripts ------------------------------------------------------------------ */

/* Loads the compiled script file at the path into the component; the script
 * id, which the caller disposes with OSADispose, or 0. */
- (OSAID)OSALoadFile:(ComponentInstance)component;
/* Compiles and runs the receiver as script source: the result shown as text,
 * the script error's message, or "Unknown error (<status>)"; nil when the
 * script gave no value or could not be attempted (empty source). */
- (NSString *)executeAppleScript;
/* Runs the compiled script file at the path, the handler for the event or,
 * when event is NULL, its run handler; the result text as above, nil when the
 * script gave none or did not load. */
- (NSString *)executeHandler:(const AppleEvent *)event;
- (NSString *)executeRun;

/* Orders two paths component by component (case-insensitively, numbers by
 * value), a path before the paths inside it; 2147483647 for a nil or
 * non-string argument. */
- (NSComparisonResult)compareAsPath:(NSString *)path;

@end

@interface NSMutableString (FoundationX)

/* Appends the component as a path component in place; nil or "" does
 * nothing. */
- (void)appendPathComponent:(NSString *)component;
/* As -[NSString initWithOSType:], mutable. */
- (id)initWithOSType:(OSType)type;

@end
