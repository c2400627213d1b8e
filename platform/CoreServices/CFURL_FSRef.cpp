/* The bridge between file URLs and FSRefs.  A URL names what its path names:
 * a symbolic link at the end of the path is the link itself, so a ref made
 * from a URL and the URL made from that ref agree. */
#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/Files.h>

#include "FileRef.h"

#include <climits>
#include <cstring>
#include <vector>

using namespace filemanager;

extern "C" Boolean CFURLGetFSRef(CFURLRef url, struct FSRef *fsRef)
{
    if (fsRef)
        std::memset(fsRef, 0, sizeof *fsRef);
    if (!url || !fsRef)
        return false;
    try {
        std::vector<UInt8> path(2 * PATH_MAX + 1);
        if (!CFURLGetFileSystemRepresentation(url, true, path.data(), static_cast<CFIndex>(path.size())))
            return false;
        return FSPathMakeRefWithOptions(path.data(), kFSPathMakeRefDoNotFollowLeafSymlink, fsRef,
                                        nullptr) == noErr;
    } catch (...) {
        return false;
    }
}

extern "C" CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const struct FSRef *fsRef)
{
    if (!fsRef)
        return nullptr;
    try {
        Node node;
        if (ResolveRef(fsRef, node) != noErr)
            return nullptr;
        return CFURLCreateFromFileSystemRepresentation(allocator,
                                                       reinterpret_cast<const UInt8 *>(node.path.data()),
                                                       static_cast<CFIndex>(node.path.size()),
                                                       S_ISDIR(node.st.st_mode));
    } catch (...) {
        return nullptr;
    }
}
