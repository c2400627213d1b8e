/* Alias Manager: records that find a file or folder again after it was
 * renamed, and alias files.
 *
 * An alias record holds the target's absolute path with the device and inode
 * of every folder on the way, and the target's own device, inode and volume.
 * Resolving tries the recorded path first and then follows the inodes down
 * from the deepest folder that is still in place, so an alias survives the
 * renaming of its target or of any folder above it.  A target moved into
 * another folder of its volume (with its name kept) is looked for by inode
 * and name below that deepest folder, then below each folder above it, within
 * a bounded number of directory entries: a target gone for good costs a
 * bounded search, and one moved far in a large tree may not be found.  With
 * kARMTryFileIDFirst (or kResolveAliasTryFileIDFirst) the inodes are followed
 * first.
 *
 * An AliasHandle is a Memory Manager handle the caller owns and frees with
 * DisposeHandle.  An alias file on this platform is a symbolic link;
 * resolving one follows the link (and the chain, when asked).  The calls may
 * be made from any thread, one handle from one thread at a time. */
#ifndef CORESERVICES_ALIASES_H
#define CORESERVICES_ALIASES_H

#include <CoreServices/Files.h>
#include <CoreServices/MacMemory.h>

#ifdef __cplusplus
extern "C" {
#endif

struct AliasRecord {
    OSType userType;
    unsigned short aliasSize;
};
typedef struct AliasRecord AliasRecord;
typedef AliasRecord *AliasPtr;
typedef AliasPtr *AliasHandle;

/* mountFlags of FSResolveAliasWithMountFlags */
enum {
    kARMMountVol = 0x00000001,
    kARMNoUI = 0x00000002,
    kARMMultVols = 0x00000008,
    kARMSearch = 0x00000100,
    kARMSearchMore = 0x00000200,
    kARMSearchRelFirst = 0x00000400,
    kARMTryFileIDFirst = 0x00000800
};

/* mountFlags of FSResolveAliasFileWithMountFlags */
enum {
    kResolveAliasFileNoUI = 0x00000001,
    kResolveAliasTryFileIDFirst = 0x00000002
};

/* A new record for an existing target (fromFile may be NULL and is not
 * recorded).  paramErr for NULL target or out argument, fnfErr when the
 * target does not exist; *alias is NULL on failure. */
OSErr NewAlias(const FSSpec *fromFile, const FSSpec *target, AliasHandle *alias);
OSErr FSNewAlias(const FSRef *fromFile, const FSRef *target, AliasHandle *inAlias);
OSErr FSNewAliasMinimal(const FSRef *target, AliasHandle *inAlias);

/* The target of a record.  wasChanged (may be NULL) is true when the target
 * had moved and the record was brought up to date.  paramErr for a NULL or
 * damaged record, fnfErr when the target cannot be found. */
OSErr FSResolveAlias(const FSRef *fromFile, AliasHandle alias, FSRef *target, Boolean *wasChanged);
OSErr FSResolveAliasWithMountFlags(const FSRef *fromFile, AliasHandle inAlias, FSRef *target,
                                   Boolean *wasChanged, unsigned long mountFlags);

/* Rewrites the record for target; wasChanged tells whether it differed. */
OSErr FSUpdateAlias(const FSRef *fromFile, const FSRef *target, AliasHandle alias,
                    Boolean *wasChanged);

/* The record's size in bytes; 0 for NULL. */
Size GetAliasSize(AliasHandle alias);

/* aliasFileFlag: the object is an alias file (a symbolic link); folderFlag:
 * the object itself is a folder. */
OSErr FSIsAliasFile(const FSRef *fileRef, Boolean *aliasFileFlag, Boolean *folderFlag);

/* Replaces theRef by the target of the alias file it names (one link, or the
 * whole chain with resolveAliasChains); a ref that is not an alias file stays
 * as it is.  fnfErr for a broken link (theRef is then left alone). */
OSErr FSResolveAliasFile(FSRef *theRef, Boolean resolveAliasChains, Boolean *targetIsFolder,
                         Boolean *wasAliased);
OSErr FSResolveAliasFileWithMountFlags(FSRef *theRef, Boolean resolveAliasChains,
                                       Boolean *targetIsFolder, Boolean *wasAliased,
                                       unsigned long mountFlags);

#ifdef __cplusplus
}
#endif

#endif
