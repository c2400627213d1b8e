/* Resource Manager: typed, numbered resources kept in a file's resource fork,
 * in the Mac's own format, so forks written here open on a Mac and forks
 * written on a Mac open here.
 *
 * Opening a resource file reads its whole map and makes it the current
 * resource file; files opened later search those opened earlier
 * (GetResource), the Get1... calls only the current one.  A resource read
 * becomes a handle owned by the Resource Manager: ReleaseResource gives it
 * back, DetachResource hands it to the caller, who then disposes it.  Changes
 * (AddResource, ChangedResource, RemoveResource) are written to the fork by
 * UpdateResFile or CloseResFile.  ResError answers the outcome of the last
 * call.  Reference number 0 stands for the system file, which holds nothing
 * here.  A malformed map is refused with mapReadErr.  The calls lock one
 * process-wide table, but like the Mac's they keep one current file for the
 * whole process: use them from one thread. */
#ifndef CORESERVICES_RESOURCES_H
#define CORESERVICES_RESOURCES_H

#include <CoreServices/Files.h>
#include <CoreServices/MacMemory.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef SInt16 ResFileRefNum;
typedef SInt16 ResID;
typedef SInt16 ResAttributes;
typedef SInt16 ResFileAttributes;
typedef SInt16 ResourceCount;
typedef SInt16 ResourceIndex;

/* The layout of a 'vers' resource: numeric version, region code, then the
 * short and the long version as Pascal strings (518 bytes in all). */
#ifndef KORU_HAVE_VERSREC
#define KORU_HAVE_VERSREC 1
typedef struct VersRec {
    NumVersion numericVersion;
    SInt16 countryCode;
    Str255 shortVersion;
    Str255 reserved;
} VersRec;
typedef VersRec *VersRecPtr;
typedef VersRecPtr *VersRecHndl;
#endif

/* Resource attributes. */
enum {
    resSysHeap = 64,
    resPurgeable = 32,
    resLocked = 16,
    resProtected = 8,
    resPreload = 4,
    resChanged = 2
};

/* Map attributes. */
enum {
    mapReadOnly = 128,
    mapCompact = 64,
    mapChanged = 32
};

OSErr ResError(void);
ResFileRefNum CurResFile(void);
/* Makes the file current; resFNotFound (and no change) when it is not open. */
void UseResFile(ResFileRefNum refNum);
/* Writes the file's changes, disposes its resources' handles and closes it;
 * the file opened before it becomes current when it was. */
void CloseResFile(ResFileRefNum refNum);
/* Writes the file's changes now (the whole fork is rewritten). */
void UpdateResFile(ResFileRefNum refNum);

/* Opens the fork (the data or the resource fork) as a resource file; eofErr
 * for an empty fork, mapReadErr for one that holds no valid map.  Opening a
 * file already open answers its number again. */
OSErr FSOpenResourceFile(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName,
                         SInt8 permissions, ResFileRefNum *refNum);
/* The resource fork as a resource file; -1 on failure (ResError tells why). */
ResFileRefNum FSOpenResFile(const FSRef *ref, SInt8 permission);

/* Writes an empty map into the (empty) fork; errFSForkExists when it holds
 * bytes already. */
OSErr FSCreateResourceFork(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName,
                           UInt32 flags);
/* Creates a file and an empty map in the named fork. */
OSErr FSCreateResourceFile(const FSRef *parentRef, UniCharCount nameLength, const UniChar *name,
                           FSCatalogInfoBitmap whichInfo, const FSCatalogInfo *catalogInfo,
                           UniCharCount forkNameLength, const UniChar *forkName, FSRef *newRef,
                           FSSpecPtr newSpec);
/* The same with the resource fork; ResError tells the outcome. */
void FSCreateResFile(const FSRef *parentRef, UniCharCount nameLength, const UniChar *name,
                     FSCatalogInfoBitmap whichInfo, const FSCatalogInfo *catalogInfo, FSRef *newRef,
                     FSSpecPtr newSpec);

/* The resource of that type and id: Get1... in the current file only, the
 * others down the chain of open files.  NULL with resNotFound when missing. */
Handle Get1Resource(ResType theType, ResID theID);
Handle GetResource(ResType theType, ResID theID);
Handle Get1NamedResource(ResType theType, ConstStr255Param name);
Handle GetNamedResource(ResType theType, ConstStr255Param name);
/* How many of the type the current file holds, and the index'th (from 1). */
ResourceCount Count1Resources(ResType theType);
Handle Get1IndResource(ResType theType, ResourceIndex index);
ResourceCount Count1Types(void);
void Get1IndType(ResType *theType, ResourceIndex index);

/* Makes theData a resource of the current file (written on update); the
 * Resource Manager owns the handle from then on.  addResFailed for NULL, for
 * a handle that already is a resource and for a read-only file. */
void AddResource(Handle theData, ResType theType, ResID theID, ConstStr255Param name);
/* Marks the resource's handle contents to be written on update; resAttrErr
 * for a protected resource. */
void ChangedResource(Handle theResource);
/* Writes the resource's handle contents to the fork now if it changed. */
void WriteResource(Handle theResource);
/* Removes the resource from its file; the handle becomes the caller's.
 * rmvResFailed for a protected resource or a read-only file. */
void RemoveResource(Handle theResource);
/* Disposes the resource's handle (the resource stays in the file); resAttrErr
 * while it has unwritten changes. */
void ReleaseResource(Handle theResource);
/* Hands the handle to the caller; the next Get reads the resource anew. */
void DetachResource(Handle theResource);

/* Any of the out arguments may be NULL; resNotFound for a handle that is
 * not a resource. */
void GetResInfo(Handle theResource, ResID *theID, ResType *theType, Str255 name);
void SetResInfo(Handle theResource, ResID theID, ConstStr255Param name);
ResAttributes GetResAttrs(Handle theResource);
void SetResAttrs(Handle theResource, ResAttributes attrs);
/* The file a resource belongs to; -1 with resNotFound. */
ResFileRefNum HomeResFile(Handle theResource);
/* An id no resource of the type in the current file has (128 or above). */
ResID Unique1ID(ResType theType);

#ifdef __cplusplus
}
#endif

#endif
