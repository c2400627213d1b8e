#include "NodeTable.h"

#include "MountTable.h"
#include "PathTable.h"

#include <map>
#include <mutex>
#include <sys/sysmacros.h>
#include <utility>
#include <vector>

namespace filemanager {

namespace {

constexpr UInt32 kFirstNodeID = 16;
constexpr FSVolumeRefNum kFirstVolume = -100;

struct NodeEntry {
    dev_t device;
    ino_t inode;
    uint32_t pathIndex;
};

struct Tables {
    std::mutex lock;
    std::vector<Volume> volumes;
    std::map<std::pair<dev_t, ino_t>, UInt32> ids;
    std::vector<NodeEntry> nodes; // nodes[id - kFirstNodeID]
};

Tables &SharedTables()
{
    static Tables *tables = new Tables; // never destroyed, like the path table
    return *tables;
}

bool PathIsInside(const std::string &path, const std::string &folder)
{
    if (folder == "/")
        return true;
    return path.compare(0, folder.size(), folder) == 0 &&
           (path.size() == folder.size() || path[folder.size()] == '/');
}

// The mount point of the device that holds path: the longest mount point of
// that device that contains the path (bind mounts list one device twice).
bool MountPointFromMountInfo(dev_t device, const std::string &path, std::string &mountPoint)
{
    std::vector<MountEntry> table;
    if (!ReadMountTable(table))
        return false;
    bool found = false;
    for (const MountEntry &entry : table) {
        if (makedev(entry.major, entry.minor) != device)
            continue;
        if (PathIsInside(path, entry.mountPoint) && (!found || entry.mountPoint.size() > mountPoint.size())) {
            mountPoint = entry.mountPoint;
            found = true;
        }
    }
    return found;
}

// Without a usable mountinfo: the topmost folder above path on the same device.
std::string MountPointByWalkingUp(dev_t device, std::string path)
{
    while (path != "/") {
        const std::string parent = ParentPath(path);
        struct stat st;
        if (lstat(parent.c_str(), &st) != 0 || st.st_dev != device)
            break;
        path = parent;
    }
    return path;
}

bool FindVolumeLocked(Tables &tables, dev_t device, Volume &volume)
{
    for (const Volume &known : tables.volumes) {
        if (known.device == device) {
            volume = known;
            return true;
        }
    }
    return false;
}

UInt32 NodeIDLocked(Tables &tables, const Node &node)
{
    const auto key = std::make_pair(node.st.st_dev, node.st.st_ino);
    const uint32_t pathIndex = PathTable::Intern(node.path);
    auto found = tables.ids.find(key);
    if (found != tables.ids.end()) {
        // Follow the object when it shows up somewhere else.
        tables.nodes[found->second - kFirstNodeID].pathIndex = pathIndex;
        return found->second;
    }
    const auto id = static_cast<UInt32>(kFirstNodeID + tables.nodes.size());
    tables.nodes.push_back({node.st.st_dev, node.st.st_ino, pathIndex});
    tables.ids.emplace(key, id);
    return id;
}

bool SameObject(const Node &node, dev_t device, ino_t inode)
{
    return node.st.st_dev == device && node.st.st_ino == inode;
}

} // namespace

bool VolumeOfNode(const Node &node, Volume &volume)
{
    Tables &tables = SharedTables();
    std::lock_guard<std::mutex> guard(tables.lock);
    if (FindVolumeLocked(tables, node.st.st_dev, volume))
        return true;
    std::string mountPoint;
    if (!MountPointFromMountInfo(node.st.st_dev, node.path, mountPoint))
        mountPoint = MountPointByWalkingUp(node.st.st_dev, node.path);
    struct stat rootStat;
    if (stat(mountPoint.c_str(), &rootStat) != 0 || rootStat.st_dev != node.st.st_dev)
        mountPoint = MountPointByWalkingUp(node.st.st_dev, node.path);
    if (stat(mountPoint.c_str(), &rootStat) != 0)
        return false;
    volume.refNum = static_cast<FSVolumeRefNum>(kFirstVolume - static_cast<int>(tables.volumes.size()));
    volume.device = node.st.st_dev;
    volume.rootInode = rootStat.st_ino;
    volume.mountPoint = mountPoint;
    tables.volumes.push_back(volume);
    return true;
}

bool VolumeForRefNum(FSVolumeRefNum refNum, Volume &volume)
{
    if (refNum == 0) {
        // The default volume: the one holding the root folder.
        Node root;
        return LookUpNode("/", root) == noErr && VolumeOfNode(root, volume);
    }
    Tables &tables = SharedTables();
    std::lock_guard<std::mutex> guard(tables.lock);
    const int index = kFirstVolume - refNum;
    if (index < 0 || index >= static_cast<int>(tables.volumes.size()))
        return false;
    volume = tables.volumes[static_cast<size_t>(index)];
    return true;
}

UInt32 NodeIDOf(const Node &node)
{
    Volume volume;
    if (VolumeOfNode(node, volume) && node.st.st_ino == volume.rootInode)
        return fsRtDirID;
    Tables &tables = SharedTables();
    std::lock_guard<std::mutex> guard(tables.lock);
    return NodeIDLocked(tables, node);
}

UInt32 ParentIDOf(const Node &node)
{
    Volume volume;
    if (VolumeOfNode(node, volume) && node.st.st_ino == volume.rootInode)
        return fsRtParID;
    Node parent;
    if (LookUpNode(ParentPath(node.path), parent) != noErr)
        return 0;
    return NodeIDOf(parent);
}

OSErr FolderForID(FSVolumeRefNum refNum, UInt32 dirID, Node &folder)
{
    Volume volume;
    if (!VolumeForRefNum(refNum, volume))
        return nsvErr;
    if (dirID == fsRtDirID) {
        if (LookUpNode(volume.mountPoint, folder) != noErr ||
            !SameObject(folder, volume.device, volume.rootInode))
            return dirNFErr;
        return noErr;
    }
    if (NodeForID(dirID, folder) != noErr || folder.st.st_dev != volume.device ||
        !S_ISDIR(folder.st.st_mode))
        return dirNFErr;
    return noErr;
}

OSErr NodeForID(UInt32 nodeID, Node &node)
{
    NodeEntry entry;
    {
        Tables &tables = SharedTables();
        std::lock_guard<std::mutex> guard(tables.lock);
        if (nodeID < kFirstNodeID || nodeID - kFirstNodeID >= tables.nodes.size())
            return fnfErr;
        entry = tables.nodes[nodeID - kFirstNodeID];
    }
    if (!PathTable::Lookup(entry.pathIndex, node.path) || LookUpNode(node.path, node) != noErr ||
        !SameObject(node, entry.device, entry.inode))
        return fnfErr;
    return noErr;
}

} // namespace filemanager
