/* What the File Manager's units share: the layout of an FSRef, resolving a
 * ref back to its object, the mapping of errno values to Mac result codes,
 * path splitting and the conversions of names between the file system's
 * UTF-8 bytes, HFSUniStr255 and the 63-byte FSSpec name. */
#ifndef KORU_PLATFORM_FILEREF_H
#define KORU_PLATFORM_FILEREF_H

#include <CoreServices/Files.h>

#include <string>
#include <sys/stat.h>

namespace filemanager {

/* FSRefMakePath's answer for a buffer too small for the path. */
constexpr OSErr kPathTooLongErr = -2110;

/* An object as a ref names it: its absolute path and its lstat record. */
struct Node {
    std::string path;
    struct stat st;
};

/* The Mac result code for an errno value (fnfErr for ENOENT, ...). */
OSErr StatusFromErrno(int error);

/* Resolves a ref and re-checks that its path still names the same device and
 * inode.  paramErr for NULL, errFSBadFSRef for a ref this process never made,
 * fnfErr when the object has gone. */
OSErr ResolveRef(const FSRef *ref, Node &node);

/* Fills ref (if not NULL) for an object already looked up. */
void MakeRef(FSRef *ref, const Node &node);

/* The absolute path of path (relative paths count from the current folder)
 * with every symbolic link resolved; with followLeaf false a link at the end
 * stays itself. */
OSErr RealPath(const std::string &path, bool followLeaf, std::string &out);

/* Looks up an absolute path without following a final symbolic link. */
OSErr LookUpNode(const std::string &path, Node &node);

std::string JoinPath(const std::string &folder, const std::string &name);
/* "/" for "/" and for "/name". */
std::string ParentPath(const std::string &path);
/* The text after the last "/"; "/" for the root. */
std::string LastComponent(const std::string &path);
/* The AppleDouble companion "._name" beside path. */
std::string CompanionPath(const std::string &path);

/* A UTF-16 name as the file system's UTF-8 bytes.  errFSMissingName for an
 * empty name, bdNamErr for ".", "..", or a name holding "/" or NUL,
 * errFSNameTooLong past 255 bytes. */
OSErr NameFromUnicode(const UniChar *name, UniCharCount length, std::string &out);

/* A file-system name as UTF-16; bytes that are not UTF-8 pass as Latin-1. */
void UnicodeFromName(const std::string &name, HFSUniStr255 &out);

/* The FSSpec of an object (its volume, parent ID and shortened name). */
OSErr MakeSpec(const Node &node, FSSpec &fsSpec);

/* The item called name (a Pascal string, possibly shortened with "#ID") in
 * the folder at folderPath; fnfErr when there is none. */
OSErr FindSpecName(const std::string &folderPath, const unsigned char *pascalName, Node &node);

/* The Str63 form of a name: itself when it fits in 63 bytes, else cut and
 * marked with "#" and the node ID in hexadecimal before the extension. */
void ShortenedName(const std::string &name, UInt32 nodeID, unsigned char *pascalName);

} // namespace filemanager

#endif
