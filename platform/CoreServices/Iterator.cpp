/* Flat folder iteration.  Entries come in the order the folder lists them;
 * "." and ".." never appear, nor does an AppleDouble companion "._name" whose
 * item "name" exists (it belongs to that item).  A companion without its item
 * is listed like any file, so that emptying a folder can remove it. */
#include "Catalog.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <new>

struct OpaqueFSIterator {
    DIR *folder;
    std::string path;
};

using namespace filemanager;

namespace {

bool IsHiddenEntry(DIR *folder, const char *name)
{
    if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)))
        return true;
    struct stat st;
    return name[0] == '.' && name[1] == '_' && name[2] != 0 &&
           fstatat(dirfd(folder), name + 2, &st, AT_SYMLINK_NOFOLLOW) == 0;
}

} // namespace

extern "C" OSErr FSOpenIterator(const FSRef *container, FSIteratorFlags iteratorFlags,
                                FSIterator *iterator)
{
    if (iterator)
        *iterator = nullptr;
    if (!container || !iterator)
        return paramErr;
    if (iteratorFlags & ~static_cast<FSIteratorFlags>(kFSIterateDelete))
        return errFSBadIteratorFlags;
    try {
        Node node;
        const OSErr status = ResolveRef(container, node);
        if (status != noErr)
            return status;
        if (!S_ISDIR(node.st.st_mode))
            return errFSNotAFolder;
        DIR *folder = opendir(node.path.c_str());
        if (!folder)
            return StatusFromErrno(errno);
        *iterator = new OpaqueFSIterator{folder, node.path};
        return noErr;
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSCloseIterator(FSIterator iterator)
{
    if (!iterator)
        return paramErr;
    closedir(iterator->folder);
    delete iterator;
    return noErr;
}

extern "C" OSErr FSGetCatalogInfoBulk(FSIterator iterator, ItemCount maximumObjects,
                                      ItemCount *actualObjects, Boolean *containerChanged,
                                      FSCatalogInfoBitmap whichInfo, FSCatalogInfo *catalogInfos,
                                      FSRef *refs, FSSpecPtr fsSpecs, HFSUniStr255 *names)
{
    if (actualObjects)
        *actualObjects = 0;
    if (containerChanged)
        *containerChanged = false;
    if (!iterator || !actualObjects)
        return paramErr;
    if (maximumObjects == 0)
        return errFSBadItemCount;
    // Names alone come straight from the folder; anything else needs the
    // item's own record.
    const bool needNode = refs || fsSpecs || (catalogInfos && whichInfo != kFSCatInfoNone);
    try {
        ItemCount count = 0;
        while (count < maximumObjects) {
            errno = 0;
            const struct dirent *entry = readdir(iterator->folder);
            if (!entry) {
                if (errno != 0 && count == 0)
                    return StatusFromErrno(errno);
                break;
            }
            if (IsHiddenEntry(iterator->folder, entry->d_name))
                continue;
            Node node;
            if (needNode) {
                if (fstatat(dirfd(iterator->folder), entry->d_name, &node.st, AT_SYMLINK_NOFOLLOW) != 0)
                    continue; // removed since the folder listed it
                node.path = JoinPath(iterator->path, entry->d_name);
                const OSErr status = FillCatalogInfo(node, whichInfo, catalogInfos ? &catalogInfos[count] : nullptr,
                                                     nullptr, fsSpecs ? &fsSpecs[count] : nullptr, nullptr);
                if (status != noErr)
                    continue;
                MakeRef(refs ? &refs[count] : nullptr, node);
            }
            if (names)
                UnicodeFromName(entry->d_name, names[count]);
            ++count;
        }
        *actualObjects = count;
        return count == 0 ? OSErr(errFSNoMoreItems) : OSErr(noErr);
    } catch (...) {
        return memFullErr;
    }
}
