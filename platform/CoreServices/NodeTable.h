/* Volumes and node IDs.  A volume is a mounted file system, found in
 * /proc/self/mountinfo and numbered like the Mac's volume reference numbers
 * (-100, -101, ... in order of first sight).  Node IDs stand for (device,
 * inode) pairs: a volume's root folder is fsRtDirID (2) and its parent
 * fsRtParID (1); every other object gets the next free number (from 16 up) on
 * first sight and keeps it for the process.  An ID remembers the last path its
 * object was seen at, so a folder ID can be turned back into a folder as long
 * as the folder has not moved since.  Safe to use from any thread. */
#ifndef KORU_PLATFORM_NODETABLE_H
#define KORU_PLATFORM_NODETABLE_H

#include "FileRef.h"

namespace filemanager {

struct Volume {
    FSVolumeRefNum refNum;
    dev_t device;
    ino_t rootInode;
    std::string mountPoint;
};

/* The volume holding a looked-up object. */
bool VolumeOfNode(const Node &node, Volume &volume);

/* The volume with a reference number already handed out. */
bool VolumeForRefNum(FSVolumeRefNum refNum, Volume &volume);

/* The node ID of an object (fsRtDirID for a volume's root). */
UInt32 NodeIDOf(const Node &node);

/* The node ID of the folder holding an object (fsRtParID for a root). */
UInt32 ParentIDOf(const Node &node);

/* The folder with that directory ID on that volume, re-checked: dirNFErr when
 * the ID is unknown, names no folder, or its folder moved away. */
OSErr FolderForID(FSVolumeRefNum refNum, UInt32 dirID, Node &folder);

/* The object with that node ID, re-checked; fnfErr when unknown or moved. */
OSErr NodeForID(UInt32 nodeID, Node &node);

} // namespace filemanager

#endif
