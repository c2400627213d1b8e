/* Alias records and alias files.
 *
 * The record (host byte order, our own layout after the Mac's public
 * userType and aliasSize):
 *   0  OSType userType       4  UInt16 aliasSize     6  UInt16 version (1)
 *   8  UInt32 'KAls'        12  SInt16 vRefNum      14  UInt16 component count
 *   16 then per path component below "/": UInt64 device, UInt64 inode,
 *      UInt16 name length, the name's bytes; the last component is the target.
 */
#include <CoreServices/Aliases.h>

#include "FileRef.h"
#include "NodeTable.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <deque>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using namespace filemanager;

namespace {

constexpr UInt16 kRecordVersion = 1;
constexpr UInt32 kRecordMagic = 0x4B416C73; // 'KAls'
constexpr int kMaxLinkChain = 32;
// Directory entries a search for a moved target looks at before it gives up.
constexpr size_t kMoveSearchBudget = 200000;

struct Component {
    UInt64 device;
    UInt64 inode;
    std::string name;
};

struct AliasTarget {
    FSVolumeRefNum volume = 0;
    std::vector<Component> components;

    std::string Path() const
    {
        std::string path;
        for (const Component &component : components)
            path += "/" + component.name;
        return path.empty() ? "/" : path;
    }
};

template <typename T> void Append(std::string &record, T value)
{
    record.append(reinterpret_cast<const char *>(&value), sizeof value);
}

/* Reads the fields of a record that came from outside: every read is checked
 * against the bytes really there, so no length or size the record declares
 * can lead past its end.  This is the one place where outside bytes are
 * measured. */
class RecordReader {
public:
    RecordReader(const char *bytes, size_t size) : mBegin(bytes), mCursor(bytes), mEnd(bytes + size) {}

    template <typename T> bool Take(T &value)
    {
        if (Left() < sizeof value)
            return false;
        std::memcpy(&value, mCursor, sizeof value);
        mCursor += sizeof value;
        return true;
    }

    bool TakeText(size_t length, std::string &text)
    {
        if (Left() < length)
            return false;
        text.assign(mCursor, length);
        mCursor += length;
        return true;
    }

    /* Ends the record after its first size bytes: false when that is past
     * the bytes there or before what was already read. */
    bool Limit(size_t size)
    {
        if (size > static_cast<size_t>(mEnd - mBegin) || size < static_cast<size_t>(mCursor - mBegin))
            return false;
        mEnd = mBegin + size;
        return true;
    }

private:
    size_t Left() const { return static_cast<size_t>(mEnd - mCursor); }

    const char *mBegin;
    const char *mCursor;
    const char *mEnd;
};

// The chain of folders from "/" down to the object, each with its identity.
OSErr DescribeTarget(const Node &node, AliasTarget &target)
{
    Volume volume;
    target.volume = VolumeOfNode(node, volume) ? volume.refNum : 0;
    target.components.clear();
    std::string walked;
    size_t start = 1;
    while (start <= node.path.size() && node.path != "/") {
        size_t slash = node.path.find('/', start);
        if (slash == std::string::npos)
            slash = node.path.size();
        const std::string name = node.path.substr(start, slash - start);
        walked += "/" + name;
        Node step;
        const OSErr status = LookUpNode(walked, step);
        if (status != noErr)
            return status;
        target.components.push_back({step.st.st_dev, step.st.st_ino, name});
        start = slash + 1;
    }
    return noErr;
}

OSErr EncodeRecord(const AliasTarget &target, std::string &record)
{
    record.clear();
    Append<OSType>(record, 0);
    Append<UInt16>(record, 0); // size, patched below
    Append<UInt16>(record, kRecordVersion);
    Append<UInt32>(record, kRecordMagic);
    Append<SInt16>(record, target.volume);
    Append<UInt16>(record, static_cast<UInt16>(target.components.size()));
    for (const Component &component : target.components) {
        Append<UInt64>(record, component.device);
        Append<UInt64>(record, component.inode);
        Append<UInt16>(record, static_cast<UInt16>(component.name.size()));
        record += component.name;
    }
    if (record.size() > USHRT_MAX)
        return memFullErr;
    const auto size = static_cast<UInt16>(record.size());
    std::memcpy(&record[4], &size, sizeof size);
    return noErr;
}

bool DecodeRecord(AliasHandle alias, AliasTarget &target)
{
    if (!alias || !*alias)
        return false;
    const Size handleSize = GetHandleSize(reinterpret_cast<Handle>(alias));
    if (handleSize <= 0)
        return false;
    RecordReader record(reinterpret_cast<const char *>(*alias), static_cast<size_t>(handleSize));
    OSType userType;
    UInt16 size, version, count;
    UInt32 magic;
    if (!record.Take(userType) || !record.Take(size) || !record.Take(version) || !record.Take(magic) ||
        !record.Take(target.volume) || !record.Take(count))
        return false;
    // The declared size covers at least the header, and at most the handle.
    if (version != kRecordVersion || magic != kRecordMagic || !record.Limit(size))
        return false;
    target.components.clear();
    for (UInt16 k = 0; k < count; ++k) {
        Component component;
        UInt16 length;
        if (!record.Take(component.device) || !record.Take(component.inode) || !record.Take(length) ||
            !record.TakeText(length, component.name))
            return false;
        if (component.name.empty() || component.name.find('/') != std::string::npos)
            return false;
        target.components.push_back(std::move(component));
    }
    return true;
}

OSErr StoreRecord(const AliasTarget &target, AliasHandle alias)
{
    std::string record;
    OSErr status = EncodeRecord(target, record);
    if (status != noErr)
        return status;
    auto handle = reinterpret_cast<Handle>(alias);
    SetHandleSize(handle, static_cast<Size>(record.size()));
    if ((status = MemError()) != noErr)
        return status;
    std::memcpy(*handle, record.data(), record.size());
    return noErr;
}

bool Matches(const Node &node, const Component &component)
{
    return node.st.st_dev == component.device && node.st.st_ino == component.inode;
}

// The child of folder with the component's identity, looked for by name
// first and then among all entries by inode.
bool FindComponent(const std::string &folder, const Component &component, Node &found)
{
    if (LookUpNode(JoinPath(folder, component.name), found) == noErr && Matches(found, component))
        return true;
    DIR *listing = opendir(folder.c_str());
    if (!listing)
        return false;
    bool located = false;
    while (const struct dirent *entry = readdir(listing)) {
        if (entry->d_ino != component.inode || !std::strcmp(entry->d_name, ".") ||
            !std::strcmp(entry->d_name, ".."))
            continue;
        if (LookUpNode(JoinPath(folder, entry->d_name), found) == noErr && Matches(found, component)) {
            located = true;
            break;
        }
    }
    closedir(listing);
    return located;
}

// Looks below top, breadth first and on the target's device only, for the
// target under its recorded name; the subtree skip was searched already.
// Every directory entry looked at costs one unit of budget.
bool SearchBelow(const std::string &top, const std::string &skip, const Component &target, size_t &budget,
                 Node &found)
{
    std::deque<std::string> folders{top};
    while (!folders.empty()) {
        const std::string folder = std::move(folders.front());
        folders.pop_front();
        DIR *listing = opendir(folder.c_str());
        if (!listing)
            continue;
        bool located = false;
        while (const struct dirent *entry = readdir(listing)) {
            if (budget == 0)
                break;
            --budget;
            if (!std::strcmp(entry->d_name, ".") || !std::strcmp(entry->d_name, ".."))
                continue;
            const std::string path = JoinPath(folder, entry->d_name);
            if (target.name == entry->d_name && LookUpNode(path, found) == noErr && Matches(found, target)) {
                located = true;
                break;
            }
            struct stat st;
            if (path != skip && (entry->d_type == DT_DIR || entry->d_type == DT_UNKNOWN) &&
                lstat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode) && st.st_dev == target.device)
                folders.push_back(path);
        }
        closedir(listing);
        if (located)
            return true;
        if (budget == 0)
            return false;
    }
    return false;
}

// The target moved into another folder of its volume, where a Mac finds it by
// its file ID.  Linux cannot open an inode by number, so the target is looked
// for by its inode and name (a moved item keeps its name) below the deepest
// folder of its recorded path that is still there, then below each folder
// above that up to its volume's root, nearest first, within a bounded number
// of entries so that an item gone for good costs a bounded search.
bool FindMoved(std::string deepest, const Component &target, Node &found)
{
    size_t budget = kMoveSearchBudget;
    std::string searched, top = std::move(deepest);
    for (;;) {
        if (SearchBelow(top, searched, target, budget, found))
            return true;
        if (budget == 0 || top == "/")
            return false;
        searched = top;
        top = ParentPath(top);
        struct stat st;
        if (lstat(top.c_str(), &st) != 0 || st.st_dev != target.device)
            return false;
    }
}

// Follows the recorded identities down from the root; where one is missing,
// looks for the target where it may have moved.
bool FindByIdentity(const AliasTarget &target, Node &node)
{
    if (LookUpNode("/", node) != noErr)
        return false;
    for (const Component &component : target.components) {
        Node next;
        if (!FindComponent(node.path, component, next))
            return FindMoved(node.path, target.components.back(), node);
        node = next;
    }
    return true;
}

bool FindByPath(const AliasTarget &target, Node &node)
{
    return LookUpNode(target.Path(), node) == noErr;
}

OSErr NewAliasForNode(const Node &node, AliasHandle *alias)
{
    AliasTarget target;
    std::string record;
    OSErr status = DescribeTarget(node, target);
    if (status == noErr)
        status = EncodeRecord(target, record);
    if (status != noErr)
        return status;
    Handle handle = nullptr;
    if ((status = PtrToHand(record.data(), &handle, static_cast<long>(record.size()))) != noErr)
        return status;
    *alias = reinterpret_cast<AliasHandle>(handle);
    return noErr;
}

// One step along a symbolic link: the object the link names, itself not
// followed when it is a link again.
OSErr FollowLink(const Node &link, Node &target)
{
    std::vector<char> buffer(static_cast<size_t>(link.st.st_size > 0 ? link.st.st_size : PATH_MAX) + 1);
    const ssize_t length = readlink(link.path.c_str(), buffer.data(), buffer.size() - 1);
    if (length < 0)
        return StatusFromErrno(errno);
    std::string text(buffer.data(), static_cast<size_t>(length));
    if (text.empty())
        return fnfErr;
    if (text[0] != '/')
        text = JoinPath(ParentPath(link.path), text);
    std::string real;
    const OSErr status = RealPath(text, false, real);
    return status != noErr ? status : LookUpNode(real, target);
}

} // namespace

extern "C" OSErr FSNewAlias(const FSRef *, const FSRef *target, AliasHandle *inAlias)
{
    if (inAlias)
        *inAlias = nullptr;
    if (!target || !inAlias)
        return paramErr;
    try {
        Node node;
        const OSErr status = ResolveRef(target, node);
        return status != noErr ? status : NewAliasForNode(node, inAlias);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSNewAliasMinimal(const FSRef *target, AliasHandle *inAlias)
{
    return FSNewAlias(nullptr, target, inAlias);
}

extern "C" OSErr NewAlias(const FSSpec *, const FSSpec *target, AliasHandle *alias)
{
    if (alias)
        *alias = nullptr;
    if (!target || !alias)
        return paramErr;
    FSRef ref;
    const OSErr status = FSpMakeFSRef(target, &ref);
    return status != noErr ? status : FSNewAlias(nullptr, &ref, alias);
}

extern "C" OSErr FSResolveAliasWithMountFlags(const FSRef *, AliasHandle inAlias, FSRef *target,
                                              Boolean *wasChanged, unsigned long mountFlags)
{
    if (wasChanged)
        *wasChanged = false;
    if (target)
        std::memset(target, 0, sizeof *target);
    if (!inAlias || !target)
        return paramErr;
    try {
        AliasTarget recorded;
        if (!DecodeRecord(inAlias, recorded))
            return paramErr;
        Node node;
        bool byIdentity = false;
        if (mountFlags & kARMTryFileIDFirst) {
            byIdentity = FindByIdentity(recorded, node);
            if (!byIdentity && !FindByPath(recorded, node))
                return fnfErr;
        } else if (!FindByPath(recorded, node)) {
            if (!FindByIdentity(recorded, node))
                return fnfErr;
            byIdentity = true;
        }
        if (byIdentity && node.path != recorded.Path()) {
            // The target moved: remember where it is now, as the Mac does.
            AliasTarget current;
            if (DescribeTarget(node, current) == noErr && StoreRecord(current, inAlias) == noErr &&
                wasChanged)
                *wasChanged = true;
        }
        MakeRef(target, node);
        return noErr;
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSResolveAlias(const FSRef *fromFile, AliasHandle alias, FSRef *target, Boolean *wasChanged)
{
    return FSResolveAliasWithMountFlags(fromFile, alias, target, wasChanged, 0);
}

extern "C" OSErr FSUpdateAlias(const FSRef *, const FSRef *target, AliasHandle alias, Boolean *wasChanged)
{
    if (wasChanged)
        *wasChanged = false;
    if (!target || !alias)
        return paramErr;
    try {
        Node node;
        AliasTarget current;
        std::string record;
        OSErr status = ResolveRef(target, node);
        if (status == noErr)
            status = DescribeTarget(node, current);
        if (status == noErr)
            status = EncodeRecord(current, record);
        if (status != noErr)
            return status;
        const auto handle = reinterpret_cast<Handle>(alias);
        if (*handle && GetHandleSize(handle) == static_cast<Size>(record.size()) &&
            std::memcmp(*handle, record.data(), record.size()) == 0)
            return noErr;
        status = StoreRecord(current, alias);
        if (status == noErr && wasChanged)
            *wasChanged = true;
        return status;
    } catch (...) {
        return memFullErr;
    }
}

extern "C" Size GetAliasSize(AliasHandle alias)
{
    AliasTarget target;
    if (!DecodeRecord(alias, target))
        return 0;
    return (*alias)->aliasSize;
}

extern "C" OSErr FSIsAliasFile(const FSRef *fileRef, Boolean *aliasFileFlag, Boolean *folderFlag)
{
    if (aliasFileFlag)
        *aliasFileFlag = false;
    if (folderFlag)
        *folderFlag = false;
    if (!fileRef || !aliasFileFlag || !folderFlag)
        return paramErr;
    try {
        Node node;
        const OSErr status = ResolveRef(fileRef, node);
        if (status != noErr)
            return status;
        *aliasFileFlag = S_ISLNK(node.st.st_mode);
        *folderFlag = S_ISDIR(node.st.st_mode);
        return noErr;
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSResolveAliasFileWithMountFlags(FSRef *theRef, Boolean resolveAliasChains,
                                                  Boolean *targetIsFolder, Boolean *wasAliased,
                                                  unsigned long)
{
    if (targetIsFolder)
        *targetIsFolder = false;
    if (wasAliased)
        *wasAliased = false;
    if (!theRef || !targetIsFolder || !wasAliased)
        return paramErr;
    try {
        Node node;
        OSErr status = ResolveRef(theRef, node);
        if (status != noErr)
            return status;
        const bool aliased = S_ISLNK(node.st.st_mode);
        for (int step = 0; S_ISLNK(node.st.st_mode); ++step) {
            if (step == kMaxLinkChain)
                return fnfErr; // a loop of links
            Node next;
            if ((status = FollowLink(node, next)) != noErr)
                return status;
            node = next;
            if (!resolveAliasChains)
                break;
        }
        MakeRef(theRef, node);
        *targetIsFolder = S_ISDIR(node.st.st_mode);
        *wasAliased = aliased;
        return noErr;
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSResolveAliasFile(FSRef *theRef, Boolean resolveAliasChains, Boolean *targetIsFolder,
                                    Boolean *wasAliased)
{
    return FSResolveAliasFileWithMountFlags(theRef, resolveAliasChains, targetIsFolder, wasAliased, 0);
}
