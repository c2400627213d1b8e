/* Creating, renaming, moving and deleting objects.  An item's AppleDouble
 * companion goes wherever the item goes and disappears with it. */
#include "Catalog.h"
#include "NodeTable.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

using namespace filemanager;

namespace {

void ClearOut(FSRef *ref, FSSpec *fsSpec)
{
    if (ref)
        std::memset(ref, 0, sizeof *ref);
    if (fsSpec)
        std::memset(fsSpec, 0, sizeof *fsSpec);
}

// The path a new child of parentRef would have.
OSErr ChildPath(const FSRef *parentRef, UniCharCount nameLength, const UniChar *name, std::string &path)
{
    Node parent;
    OSErr status = ResolveRef(parentRef, parent);
    if (status != noErr)
        return status;
    if (!S_ISDIR(parent.st.st_mode))
        return dirNFErr;
    std::string leaf;
    status = NameFromUnicode(name, nameLength, leaf);
    if (status == noErr)
        path = JoinPath(parent.path, leaf);
    return status;
}

// Looks up what was just made, applies the catalog information and fills the
// caller's out arguments.
OSErr FinishCreation(const std::string &path, FSCatalogInfoBitmap whichInfo,
                     const FSCatalogInfo *catalogInfo, FSRef *newRef, FSSpec *newSpec, UInt32 *newDirID)
{
    Node node;
    OSErr status = LookUpNode(path, node);
    if (status == noErr && catalogInfo && (whichInfo & kFSCatInfoSettableInfo)) {
        status = ApplyCatalogInfo(node, whichInfo & kFSCatInfoSettableInfo, *catalogInfo);
        if (status == noErr)
            status = LookUpNode(path, node);
    }
    if (status != noErr)
        return status;
    MakeRef(newRef, node);
    if (newSpec && (status = MakeSpec(node, *newSpec)) != noErr)
        return status;
    if (newDirID)
        *newDirID = NodeIDOf(node);
    return noErr;
}

// rename() that refuses to replace an existing object, as the Mac does.
int RenameNoReplace(const std::string &from, const std::string &to)
{
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // A file system without RENAME_NOREPLACE: check, then rename.
    struct stat st;
    if (lstat(to.c_str(), &st) == 0)
        return EEXIST;
    return rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

// Moves the object at from to to, its companion with it.
OSErr MoveNode(const Node &node, const std::string &to, FSRef *newRef)
{
    if (node.path == to) {
        MakeRef(newRef, node);
        return noErr;
    }
    const int error = RenameNoReplace(node.path, to);
    if (error == EINVAL)
        return badMovErr; // a folder into itself
    if (error != 0)
        return StatusFromErrno(error);
    const std::string companion = CompanionPath(node.path);
    struct stat st;
    if (lstat(companion.c_str(), &st) == 0)
        (void)RenameNoReplace(companion, CompanionPath(to));
    Node moved;
    const OSErr status = LookUpNode(to, moved);
    if (status == noErr)
        MakeRef(newRef, moved);
    return status;
}

} // namespace

extern "C" OSErr FSCreateDirectoryUnicode(const FSRef *parentRef, UniCharCount nameLength,
                                          const UniChar *name, FSCatalogInfoBitmap whichInfo,
                                          const FSCatalogInfo *catalogInfo, FSRef *newRef,
                                          FSSpecPtr newSpec, UInt32 *newDirID)
{
    // newRef may be the parent's own buffer: keep the parent before clearing.
    FSRef parent;
    if (parentRef)
        parent = *parentRef;
    ClearOut(newRef, newSpec);
    if (newDirID)
        *newDirID = 0;
    if (!parentRef)
        return paramErr;
    parentRef = &parent;
    try {
        std::string path;
        const OSErr status = ChildPath(parentRef, nameLength, name, path);
        if (status != noErr)
            return status;
        if (mkdir(path.c_str(), 0777) != 0)
            return StatusFromErrno(errno);
        return FinishCreation(path, whichInfo, catalogInfo, newRef, newSpec, newDirID);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSCreateFileUnicode(const FSRef *parentRef, UniCharCount nameLength,
                                     const UniChar *name, FSCatalogInfoBitmap whichInfo,
                                     const FSCatalogInfo *catalogInfo, FSRef *newRef,
                                     FSSpecPtr newSpec)
{
    FSRef parent;
    if (parentRef)
        parent = *parentRef; // newRef may be the same buffer
    ClearOut(newRef, newSpec);
    if (!parentRef)
        return paramErr;
    parentRef = &parent;
    try {
        std::string path;
        const OSErr status = ChildPath(parentRef, nameLength, name, path);
        if (status != noErr)
            return status;
        const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd < 0)
            return StatusFromErrno(errno);
        close(fd);
        return FinishCreation(path, whichInfo, catalogInfo, newRef, newSpec, nullptr);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSDeleteObject(const FSRef *ref)
{
    if (!ref)
        return paramErr;
    try {
        Node node;
        const OSErr status = ResolveRef(ref, node);
        if (status != noErr)
            return status;
        if (node.path == "/")
            return fBsyErr;
        const int result = S_ISDIR(node.st.st_mode) ? rmdir(node.path.c_str()) : unlink(node.path.c_str());
        if (result != 0)
            return errno == EEXIST ? OSErr(fBsyErr) : StatusFromErrno(errno);
        unlink(CompanionPath(node.path).c_str()); // usually there is none
        return noErr;
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSpDelete(const FSSpec *fsSpec)
{
    if (!fsSpec)
        return paramErr;
    FSRef ref;
    const OSErr status = FSpMakeFSRef(fsSpec, &ref);
    return status != noErr ? status : FSDeleteObject(&ref);
}

extern "C" OSErr FSRenameUnicode(const FSRef *ref, UniCharCount nameLength, const UniChar *name,
                                 TextEncoding, FSRef *newRef)
{
    if (!ref)
        return paramErr;
    const FSRef refCopy = *ref; // newRef may be the same buffer
    ref = &refCopy;
    ClearOut(newRef, nullptr);
    try {
        Node node;
        std::string leaf;
        OSErr status = ResolveRef(ref, node);
        if (status == noErr && node.path == "/")
            status = paramErr;
        if (status == noErr)
            status = NameFromUnicode(name, nameLength, leaf);
        if (status != noErr)
            return status;
        return MoveNode(node, JoinPath(ParentPath(node.path), leaf), newRef);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSMoveObject(const FSRef *ref, const FSRef *destDirectory, FSRef *newRef)
{
    if (!ref || !destDirectory)
        return paramErr;
    const FSRef refCopy = *ref, folderCopy = *destDirectory; // newRef may be either buffer
    ref = &refCopy;
    destDirectory = &folderCopy;
    ClearOut(newRef, nullptr);
    try {
        Node node, folder;
        OSErr status = ResolveRef(ref, node);
        if (status == noErr)
            status = ResolveRef(destDirectory, folder);
        if (status != noErr)
            return status;
        if (!S_ISDIR(folder.st.st_mode))
            return dirNFErr;
        if (node.path == "/")
            return badMovErr;
        if (node.st.st_dev != folder.st.st_dev)
            return diffVolErr;
        return MoveNode(node, JoinPath(folder.path, LastComponent(node.path)), newRef);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSGetDataForkName(HFSUniStr255 *dataForkName)
{
    if (!dataForkName)
        return paramErr;
    dataForkName->length = 0;
    return noErr;
}

extern "C" OSErr FSGetResourceForkName(HFSUniStr255 *resourceForkName)
{
    if (!resourceForkName)
        return paramErr;
    static const char kName[] = "RESOURCE_FORK";
    resourceForkName->length = sizeof kName - 1;
    for (size_t k = 0; k < sizeof kName - 1; ++k)
        resourceForkName->unicode[k] = static_cast<UniChar>(kName[k]);
    return noErr;
}
