/* File Manager: references to files and folders, their catalog information,
 * folder iteration, creation, renaming and deletion.
 *
 * An FSRef names an existing object by identity: it holds the object's device
 * and inode numbers and the index of its absolute path in a process-wide,
 * append-only path table.  Every call that uses a ref re-checks that the path
 * still names the same device and inode; a ref whose object was moved or
 * deleted answers fnfErr.  Refs are plain values (80 bytes), copied freely and
 * never released.
 *
 * An FSSpec names an object that need not exist: the volume (vRefNum, one per
 * mounted file system), the parent folder's directory ID and a name of at most
 * 63 bytes in the system encoding.  Longer names are shortened the way the Mac
 * does it, with "#" and the node ID in hexadecimal before the extension, and
 * such a shortened name still finds its object.  Directory and node IDs come
 * from a process-wide table: a volume's root folder is 2 and its parent 1; all
 * other IDs are handed out on first sight and stay valid for the process.
 *
 * Names in HFSUniStr255 and the ...Unicode calls are UTF-16 (the POSIX name
 * decoded from UTF-8).  Finder information and resource forks live beside the
 * item in an AppleDouble companion "._name" (or in Netatalk's extended
 * attributes); iteration hides companions whose main item exists, and
 * deleting, renaming or moving an item carries its companion along.
 *
 * All calls may be made from any thread; the process-wide tables are locked.
 * One iterator must not be used by two threads at once. */
#ifndef CORESERVICES_FILES_H
#define CORESERVICES_FILES_H

#include <MacTypes.h>
#include <CoreServices/MacErrors.h>

#ifdef __cplusplus
extern "C" {
#endif

#pragma pack(push, 2)

typedef SInt16 FSVolumeRefNum;

/* An opaque reference to an existing file or folder. */
struct FSRef {
    UInt8 hidden[80];
};
typedef struct FSRef FSRef;
typedef FSRef *FSRefPtr;

/* Volume, parent directory ID and name (70 bytes). */
struct FSSpec {
    FSVolumeRefNum vRefNum;
    SInt32 parID;
    Str63 name;
};
typedef struct FSSpec FSSpec;
typedef FSSpec *FSSpecPtr;
typedef FSSpecPtr FSSpecArrayPtr;

struct HFSUniStr255 {
    UInt16 length;
    UniChar unicode[255];
};
typedef struct HFSUniStr255 HFSUniStr255;
typedef const HFSUniStr255 *ConstHFSUniStr255Param;

/* Seconds since 1 January 1904 UTC (48 bits) and 1/65536 fractions. */
#ifndef KORU_HAVE_UTCDATETIME
#define KORU_HAVE_UTCDATETIME 1
struct UTCDateTime {
    UInt16 highSeconds;
    UInt32 lowSeconds;
    UInt16 fraction;
};
typedef struct UTCDateTime UTCDateTime;
typedef UTCDateTime *UTCDateTimePtr;
#endif

/* ---- Finder information (stored big-endian in the companion, handed out
 * in host order) ---- */

struct FileInfo {
    OSType fileType;
    OSType fileCreator;
    UInt16 finderFlags;
    Point location;
    UInt16 reservedField;
};
typedef struct FileInfo FileInfo;

struct FolderInfo {
    Rect windowBounds;
    UInt16 finderFlags;
    Point location;
    UInt16 reservedField;
};
typedef struct FolderInfo FolderInfo;

struct ExtendedFileInfo {
    SInt16 reserved1[4];
    UInt16 extendedFinderFlags;
    SInt16 reserved2;
    SInt32 putAwayFolderID;
};
typedef struct ExtendedFileInfo ExtendedFileInfo;

struct ExtendedFolderInfo {
    Point scrollPosition;
    SInt32 reserved1;
    UInt16 extendedFinderFlags;
    SInt16 reserved2;
    SInt32 putAwayFolderID;
};
typedef struct ExtendedFolderInfo ExtendedFolderInfo;

enum {
    kIsOnDesk = 0x0001,
    kColor = 0x000E,
    kIsShared = 0x0040,
    kHasNoINITs = 0x0080,
    kHasBeenInited = 0x0100,
    kHasCustomIcon = 0x0400,
    kIsStationery = 0x0800,
    kNameLocked = 0x1000,
    kHasBundle = 0x2000,
    kIsInvisible = 0x4000,
    kIsAlias = 0x8000
};

/* ---- Catalog information ---- */

typedef UInt32 FSCatalogInfoBitmap;
enum {
    kFSCatInfoNone = 0x00000000,
    kFSCatInfoTextEncoding = 0x00000001,
    kFSCatInfoNodeFlags = 0x00000002,
    kFSCatInfoVolume = 0x00000004,
    kFSCatInfoParentDirID = 0x00000008,
    kFSCatInfoNodeID = 0x00000010,
    kFSCatInfoCreateDate = 0x00000020,
    kFSCatInfoContentMod = 0x00000040,
    kFSCatInfoAttrMod = 0x00000080,
    kFSCatInfoAccessDate = 0x00000100,
    kFSCatInfoBackupDate = 0x00000200,
    kFSCatInfoPermissions = 0x00000400,
    kFSCatInfoFinderInfo = 0x00000800,
    kFSCatInfoFinderXInfo = 0x00001000,
    kFSCatInfoValence = 0x00002000,
    kFSCatInfoDataSizes = 0x00004000,
    kFSCatInfoRsrcSizes = 0x00008000,
    kFSCatInfoSharingFlags = 0x00010000,
    kFSCatInfoUserPrivs = 0x00020000,
    kFSCatInfoUserAccess = 0x00080000,
    kFSCatInfoAllDates = 0x000003E0,
    kFSCatInfoGettableInfo = 0x0003FFFF,
    kFSCatInfoSettableInfo = 0x00001FE3,
    kFSCatInfoReserved = (int)0xFFFC0000
};

/* nodeFlags */
enum {
    kFSNodeLockedBit = 0,
    kFSNodeLockedMask = 0x0001,
    kFSNodeResOpenBit = 2,
    kFSNodeResOpenMask = 0x0004,
    kFSNodeDataOpenBit = 3,
    kFSNodeDataOpenMask = 0x0008,
    kFSNodeIsDirectoryBit = 4,
    kFSNodeIsDirectoryMask = 0x0010,
    kFSNodeCopyProtectBit = 6,
    kFSNodeCopyProtectMask = 0x0040,
    kFSNodeForkOpenBit = 7,
    kFSNodeForkOpenMask = 0x0080,
    kFSNodeHardLinkBit = 8,
    kFSNodeHardLinkMask = 0x0100
};

/* userPrivileges: the calling user's rights on the object. */
enum {
    kioACUserNoSeeFolderMask = 0x01,
    kioACUserNoSeeFilesMask = 0x02,
    kioACUserNoMakeChangesMask = 0x04,
    kioACUserNotOwnerMask = 0x80
};

/* The permissions field of FSCatalogInfo, seen through its real layout. */
struct FSPermissionInfo {
    UInt32 userID;
    UInt32 groupID;
    UInt8 reserved1;
    UInt8 userAccess;
    UInt16 mode;
    UInt32 reserved2;
};
typedef struct FSPermissionInfo FSPermissionInfo;

struct FSCatalogInfo {
    UInt16 nodeFlags;
    FSVolumeRefNum volume;
    UInt32 parentDirID;
    UInt32 nodeID;
    UInt8 sharingFlags;
    UInt8 userPrivileges;
    UInt8 reserved1;
    UInt8 reserved2;
    UTCDateTime createDate;
    UTCDateTime contentModDate;
    UTCDateTime attributeModDate;
    UTCDateTime accessDate;
    UTCDateTime backupDate;
    UInt32 permissions[4];
    UInt8 finderInfo[16];
    UInt8 extFinderInfo[16];
    UInt64 dataLogicalSize;
    UInt64 dataPhysicalSize;
    UInt64 rsrcLogicalSize;
    UInt64 rsrcPhysicalSize;
    UInt32 valence;
    TextEncoding textEncodingHint;
};
typedef struct FSCatalogInfo FSCatalogInfo;
typedef FSCatalogInfo *FSCatalogInfoPtr;

#pragma pack(pop)

/* Directory IDs every volume shares. */
enum {
    fsRtParID = 1,
    fsRtDirID = 2
};

/* ---- Making and comparing references ---- */

enum {
    kFSPathMakeRefDefaultOptions = 0,
    kFSPathMakeRefDoNotFollowLeafSymlink = 0x01
};

/* The object at a POSIX path (UTF-8), following symbolic links, the last one
 * included, so that FSRefMakePath answers the object's real path.  A relative
 * path counts from the current folder.  isDirectory may be NULL.
 * paramErr for NULL arguments, fnfErr when nothing is there, dirNFErr when a
 * component of the path is not a folder. */
OSStatus FSPathMakeRef(const UInt8 *path, FSRef *ref, Boolean *isDirectory);

/* As FSPathMakeRef; with kFSPathMakeRefDoNotFollowLeafSymlink a symbolic link
 * at the end of the path is itself the object. */
OSStatus FSPathMakeRefWithOptions(const UInt8 *path, OptionBits options, FSRef *ref,
                                  Boolean *isDirectory);

/* The absolute POSIX path (UTF-8, NUL-terminated) of the object into a buffer
 * of maxPathSize bytes.  fnfErr for a stale ref, pathTooLongErr (-2110) when the
 * buffer is too small (the buffer then holds an empty string). */
OSStatus FSRefMakePath(const FSRef *ref, UInt8 *path, UInt32 maxPathSize);

/* noErr when both refs name the same object (same device and inode),
 * diffVolErr when they lie on different volumes, errFSRefsDifferent when they
 * differ on one volume; paramErr for NULL, fnfErr when either is stale. */
OSErr FSCompareFSRefs(const FSRef *ref1, const FSRef *ref2);

/* The object called name inside the folder parentRef; a symbolic link is the
 * link itself.  textEncodingHint is ignored.  errFSMissingName for an empty
 * name, bdNamErr for ".", ".." or a name holding "/" or NUL, fnfErr when it
 * does not exist. */
OSErr FSMakeFSRefUnicode(const FSRef *parentRef, UniCharCount nameLength,
                         const UniChar *nameUnicode, TextEncoding textEncodingHint,
                         FSRef *newRef);

/* The object an FSSpec names.  An empty name names the folder parID itself;
 * parID fsRtParID names the volume's root.  nsvErr for an unknown volume,
 * dirNFErr for an unknown parent folder, fnfErr when the item is missing. */
OSErr FSpMakeFSRef(const FSSpec *source, FSRef *newRef);

/* ---- Catalog information ---- */

/* Fills whatever of catalogInfo, outName, fsSpec and parentRef is not NULL;
 * whichInfo selects the catalogInfo fields (the others are left alone).
 * Dates: creation is the birth time where the file system keeps one, else the
 * change time; content modification the modification time; attribute
 * modification the change time; backup 0.  The root's parentRef is zeroed.
 * paramErr for a NULL ref, fnfErr for a stale one. */
OSErr FSGetCatalogInfo(const FSRef *ref, FSCatalogInfoBitmap whichInfo,
                       FSCatalogInfo *catalogInfo, HFSUniStr255 *outName, FSSpecPtr fsSpec,
                       FSRef *parentRef);

/* Sets the settable fields named in whichInfo: content modification and access
 * dates, permissions (mode always, owner and group where allowed), Finder and
 * extended Finder information (kept in the companion).  Creation and backup
 * dates, text encoding and node flags are accepted and not stored. */
OSErr FSSetCatalogInfo(const FSRef *ref, FSCatalogInfoBitmap whichInfo,
                       const FSCatalogInfo *catalogInfo);

/* ---- Iteration ---- */

typedef struct OpaqueFSIterator *FSIterator;
typedef OptionBits FSIteratorFlags;
enum {
    kFSIterateFlat = 0,
    kFSIterateSubtree = 1,
    kFSIterateDelete = 2,
    kFSIterateReserved = (int)0xFFFFFFFC
};

/* Opens a flat iterator over the folder container (kFSIterateSubtree is not
 * offered: errFSBadIteratorFlags).  The caller closes it with
 * FSCloseIterator.  errFSNotAFolder when container is a file. */
OSErr FSOpenIterator(const FSRef *container, FSIteratorFlags iteratorFlags,
                     FSIterator *iterator);

OSErr FSCloseIterator(FSIterator iterator);

/* Up to maximumObjects children, in the order the folder lists them, into the
 * arrays that are not NULL.  The call that returns the last items answers
 * noErr; the next one answers errFSNoMoreItems with *actualObjects 0.
 * containerChanged (may be NULL) is always false.  errFSBadItemCount for 0. */
OSErr FSGetCatalogInfoBulk(FSIterator iterator, ItemCount maximumObjects,
                           ItemCount *actualObjects, Boolean *containerChanged,
                           FSCatalogInfoBitmap whichInfo, FSCatalogInfo *catalogInfos,
                           FSRef *refs, FSSpecPtr fsSpecs, HFSUniStr255 *names);

/* ---- Creating, renaming, moving and deleting ---- */

/* Creates a folder (mode 0777 less the umask) and applies the settable fields
 * of catalogInfo named by whichInfo.  dupFNErr when the name is taken.
 * newRef, newSpec and newDirID may be NULL. */
OSErr FSCreateDirectoryUnicode(const FSRef *parentRef, UniCharCount nameLength,
                               const UniChar *name, FSCatalogInfoBitmap whichInfo,
                               const FSCatalogInfo *catalogInfo, FSRef *newRef,
                               FSSpecPtr newSpec, UInt32 *newDirID);

/* Creates an empty file (mode 0666 less the umask); as above. */
OSErr FSCreateFileUnicode(const FSRef *parentRef, UniCharCount nameLength,
                          const UniChar *name, FSCatalogInfoBitmap whichInfo,
                          const FSCatalogInfo *catalogInfo, FSRef *newRef, FSSpecPtr newSpec);

/* Deletes a file, a symbolic link or an empty folder, with its companion.
 * fBsyErr for a folder that is not empty. */
OSErr FSDeleteObject(const FSRef *ref);

/* FSpMakeFSRef, then FSDeleteObject. */
OSErr FSpDelete(const FSSpec *fsSpec);

/* Renames the object inside its folder, companion included; newRef (may be
 * NULL) receives the renamed object.  dupFNErr when the name is taken. */
OSErr FSRenameUnicode(const FSRef *ref, UniCharCount nameLength, const UniChar *name,
                      TextEncoding textEncodingHint, FSRef *newRef);

/* Moves the object into another folder of the same volume, companion
 * included.  diffVolErr across volumes, dupFNErr when the name is taken. */
OSErr FSMoveObject(const FSRef *ref, const FSRef *destDirectory, FSRef *newRef);

/* ---- Fork names ---- */

/* The names of the data fork (empty) and of the resource fork ("RESOURCE_FORK"). */
OSErr FSGetDataForkName(HFSUniStr255 *dataForkName);
OSErr FSGetResourceForkName(HFSUniStr255 *resourceForkName);

/* ---- Forks ----
 *
 * Every file has exactly two forks, as on a Mac: the data fork is the file
 * itself; the resource fork is entry 2 of the companion "._name" (read from
 * Netatalk's attribute when there is no companion), and it is empty when
 * neither holds one.  A resource fork open for writing is kept in memory and
 * stored when it is flushed or closed; a fork that becomes empty leaves no
 * companion behind unless Finder information still needs one.  Any other fork
 * name answers errFSForkNotFound, a folder notAFileErr.  Fork reference
 * numbers are process-wide and may be used from any thread, one thread per
 * fork at a time. */

typedef SInt16 FSIORefNum;

/* Open permissions. */
enum {
    fsCurPerm = 0x00,
    fsRdPerm = 0x01,
    fsWrPerm = 0x02,
    fsRdWrPerm = 0x03,
    fsRdWrShPerm = 0x04
};

/* Position modes; the cache hints above the low two bits are accepted and
 * ignored. */
enum {
    fsAtMark = 0,
    fsFromStart = 1,
    fsFromLEOF = 2,
    fsFromMark = 3,
    pleaseCacheMask = 0x0010,
    noCacheMask = 0x0020,
    rdVerifyMask = 0x0040
};

/* The fork already exists as every file's fork does: noErr when it is empty
 * (nothing to create), errFSForkExists when it holds bytes. */
OSErr FSCreateFork(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName);

/* Empties the fork; the resource fork's companion entry goes with it. */
OSErr FSDeleteFork(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName);

/* Opens the fork; *forkRefNum is 0 on failure.  fsCurPerm opens for reading
 * and writing when the file allows it, else for reading.  opWrErr when the
 * fork is already open for writing without fsRdWrShPerm, permErr / afpAccessDenied
 * when the file refuses the access. */
OSErr FSOpenFork(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName,
                 SInt8 permissions, FSIORefNum *forkRefNum);

/* Reads up to requestCount bytes at the position; eofErr when fewer were
 * there (*actualCount says how many came), posErr for a position before the
 * start.  actualCount may be NULL. */
OSErr FSReadFork(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset,
                 ByteCount requestCount, void *buffer, ByteCount *actualCount);

/* Writes the bytes at the position, extending the fork; wrPermErr when it is
 * open for reading only. */
OSErr FSWriteFork(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset,
                  ByteCount requestCount, const void *buffer, ByteCount *actualCount);

OSErr FSGetForkPosition(FSIORefNum forkRefNum, SInt64 *position);
OSErr FSSetForkPosition(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset);
OSErr FSGetForkSize(FSIORefNum forkRefNum, SInt64 *forkSize);
/* Truncates or extends (with zeros) the fork to the position. */
OSErr FSSetForkSize(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset);
/* Stores what was written (the resource fork's companion, the data fork's
 * pages). */
OSErr FSFlushFork(FSIORefNum forkRefNum);
/* Flushes and closes; rfNumErr for a number that is not open. */
OSErr FSCloseFork(FSIORefNum forkRefNum);

#ifdef __cplusplus
}
#endif

#endif
