/* FSGetCatalogInfo and FSSetCatalogInfo over stat and the AppleDouble
 * companion. */
#include "Catalog.h"

#include "AppleDouble.h"
#include "NodeTable.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace filemanager {

namespace {

// Seconds from 1 January 1904 to 1 January 1970.
constexpr SInt64 kMacEpochOffset = 2082844800;

UTCDateTime DateFromTimespec(const struct timespec &time)
{
    const SInt64 seconds = time.tv_sec + kMacEpochOffset;
    UTCDateTime date;
    if (seconds < 0) {
        date.highSeconds = 0, date.lowSeconds = 0, date.fraction = 0;
        return date;
    }
    date.highSeconds = static_cast<UInt16>(seconds >> 32);
    date.lowSeconds = static_cast<UInt32>(seconds);
    date.fraction = static_cast<UInt16>((static_cast<UInt64>(time.tv_nsec) << 16) / 1000000000u);
    return date;
}

struct timespec TimespecFromDate(const UTCDateTime &date)
{
    const SInt64 seconds = (static_cast<SInt64>(date.highSeconds) << 32) | date.lowSeconds;
    struct timespec time;
    time.tv_sec = static_cast<time_t>(seconds - kMacEpochOffset);
    time.tv_nsec = static_cast<long>((static_cast<UInt64>(date.fraction) * 1000000000u) >> 16);
    return time;
}

// The birth time where the file system keeps one, else the change time.
UTCDateTime CreationDate(const Node &node)
{
    struct statx extended;
    if (statx(AT_FDCWD, node.path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BTIME, &extended) == 0 &&
        (extended.stx_mask & STATX_BTIME)) {
        struct timespec birth;
        birth.tv_sec = extended.stx_btime.tv_sec;
        birth.tv_nsec = extended.stx_btime.tv_nsec;
        return DateFromTimespec(birth);
    }
    return DateFromTimespec(node.st.st_ctim);
}

UInt32 CountFolderItems(const std::string &path)
{
    DIR *folder = opendir(path.c_str());
    if (!folder)
        return 0;
    UInt32 count = 0;
    while (const struct dirent *entry = readdir(folder)) {
        const char *name = entry->d_name;
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0)
            continue;
        struct stat st;
        if (std::strncmp(name, "._", 2) == 0 && fstatat(dirfd(folder), name + 2, &st, AT_SYMLINK_NOFOLLOW) == 0)
            continue; // a companion is part of its item
        ++count;
    }
    closedir(folder);
    return count;
}

// What the calling user may do with the object, from its mode bits.
UInt8 UserAccess(const struct stat &st)
{
    enum { kSearch = 0x01, kRead = 0x02, kWrite = 0x04, kOwner = 0x80 };
    const uid_t user = geteuid();
    if (user == 0)
        return kOwner | kRead | kWrite | kSearch;
    unsigned bits = st.st_mode & 07;
    if (st.st_uid == user)
        bits = (st.st_mode >> 6) & 07;
    else if (st.st_gid == getegid())
        bits = (st.st_mode >> 3) & 07;
    UInt8 access = st.st_uid == user ? kOwner : 0;
    if (bits & 04)
        access |= kRead;
    if (bits & 02)
        access |= kWrite;
    if (bits & 01)
        access |= kSearch;
    return access;
}

UInt8 UserPrivileges(const struct stat &st)
{
    const UInt8 access = UserAccess(st);
    UInt8 privileges = 0;
    if (!(access & 0x80))
        privileges |= kioACUserNotOwnerMask;
    if (!(access & 0x04))
        privileges |= kioACUserNoMakeChangesMask;
    if (S_ISDIR(st.st_mode) && !(access & 0x02))
        privileges |= kioACUserNoSeeFolderMask | kioACUserNoSeeFilesMask;
    return privileges;
}

void Swap16At(UInt8 *bytes, size_t at)
{
    UInt16 value;
    std::memcpy(&value, bytes + at, 2);
    value = static_cast<UInt16>((value >> 8) | (value << 8));
    std::memcpy(bytes + at, &value, 2);
}

void Swap32At(UInt8 *bytes, size_t at)
{
    UInt32 value;
    std::memcpy(&value, bytes + at, 4);
    value = __builtin_bswap32(value);
    std::memcpy(bytes + at, &value, 4);
}

// Finder information is big-endian on disk and host order in FSCatalogInfo;
// the fields differ for files and folders.  Swapping is its own inverse.
void SwapFinderInfo(UInt8 *info, UInt8 *extended, bool folder)
{
    if (__BYTE_ORDER__ == __ORDER_BIG_ENDIAN__)
        return;
    if (folder) {
        for (size_t at = 0; at < 16; at += 2)
            Swap16At(info, at); // Rect, flags, Point, reserved
        Swap16At(extended, 0), Swap16At(extended, 2), Swap32At(extended, 4);
        Swap16At(extended, 8), Swap16At(extended, 10), Swap32At(extended, 12);
    } else {
        Swap32At(info, 0), Swap32At(info, 4); // type, creator
        for (size_t at = 8; at < 16; at += 2)
            Swap16At(info, at);
        for (size_t at = 0; at < 12; at += 2)
            Swap16At(extended, at);
        Swap32At(extended, 12);
    }
}

void FillFinderInfo(const Node &node, FSCatalogInfoBitmap whichInfo, FSCatalogInfo &info)
{
    const AppleDoubleData stored = AppleDoubleFile::Read(node.path);
    UInt8 finder[16], extended[16];
    std::memcpy(finder, stored.finderInfo, 16);
    std::memcpy(extended, stored.finderInfo + 16, 16);
    SwapFinderInfo(finder, extended, S_ISDIR(node.st.st_mode));
    if (S_ISLNK(node.st.st_mode) && !stored.hasFinderInfo) {
        // What a Mac reports for a symbolic link: type 'slnk', creator 'rhap'.
        const OSType type = 0x736C6E6B, creator = 0x72686170;
        std::memcpy(finder, &type, 4);
        std::memcpy(finder + 4, &creator, 4);
    }
    if (whichInfo & kFSCatInfoFinderInfo)
        std::memcpy(info.finderInfo, finder, 16);
    if (whichInfo & kFSCatInfoFinderXInfo)
        std::memcpy(info.extFinderInfo, extended, 16);
}

UInt64 RoundUp(UInt64 length, UInt64 block)
{
    return (length + block - 1) / block * block;
}

} // namespace

OSErr FillCatalogInfo(const Node &node, FSCatalogInfoBitmap whichInfo, FSCatalogInfo *info,
                      HFSUniStr255 *name, FSSpec *fsSpec, FSRef *parentRef)
{
    const struct stat &st = node.st;
    const bool folder = S_ISDIR(st.st_mode);
    if (info) {
        if (whichInfo & kFSCatInfoTextEncoding)
            info->textEncodingHint = 0;
        if (whichInfo & kFSCatInfoNodeFlags)
            info->nodeFlags = static_cast<UInt16>((folder ? kFSNodeIsDirectoryMask : 0) |
                                                  (!folder && st.st_nlink > 1 ? kFSNodeHardLinkMask : 0));
        if (whichInfo & kFSCatInfoVolume) {
            Volume volume;
            info->volume = VolumeOfNode(node, volume) ? volume.refNum : 0;
        }
        if (whichInfo & kFSCatInfoParentDirID)
            info->parentDirID = ParentIDOf(node);
        if (whichInfo & kFSCatInfoNodeID)
            info->nodeID = NodeIDOf(node);
        if (whichInfo & kFSCatInfoSharingFlags)
            info->sharingFlags = 0;
        if (whichInfo & kFSCatInfoUserPrivs)
            info->userPrivileges = UserPrivileges(st);
        if (whichInfo & kFSCatInfoCreateDate)
            info->createDate = CreationDate(node);
        if (whichInfo & kFSCatInfoContentMod)
            info->contentModDate = DateFromTimespec(st.st_mtim);
        if (whichInfo & kFSCatInfoAttrMod)
            info->attributeModDate = DateFromTimespec(st.st_ctim);
        if (whichInfo & kFSCatInfoAccessDate)
            info->accessDate = DateFromTimespec(st.st_atim);
        if (whichInfo & kFSCatInfoBackupDate)
            std::memset(&info->backupDate, 0, sizeof info->backupDate);
        if (whichInfo & (kFSCatInfoPermissions | kFSCatInfoUserAccess)) {
            FSPermissionInfo permissions{};
            permissions.userID = st.st_uid;
            permissions.groupID = st.st_gid;
            permissions.userAccess = UserAccess(st);
            permissions.mode = static_cast<UInt16>(st.st_mode);
            std::memcpy(info->permissions, &permissions, sizeof permissions);
        }
        if (whichInfo & (kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo))
            FillFinderInfo(node, whichInfo, *info);
        if (whichInfo & kFSCatInfoValence)
            info->valence = folder ? CountFolderItems(node.path) : 0;
        if (whichInfo & kFSCatInfoDataSizes) {
            info->dataLogicalSize = folder ? 0 : static_cast<UInt64>(st.st_size);
            info->dataPhysicalSize = folder ? 0 : static_cast<UInt64>(st.st_blocks) * 512;
        }
        if (whichInfo & kFSCatInfoRsrcSizes) {
            info->rsrcLogicalSize = AppleDoubleFile::ResourceForkLength(node.path);
            info->rsrcPhysicalSize = RoundUp(info->rsrcLogicalSize, 4096);
        }
    }
    if (name)
        UnicodeFromName(LastComponent(node.path), *name);
    if (fsSpec) {
        const OSErr status = MakeSpec(node, *fsSpec);
        if (status != noErr)
            return status;
    }
    if (parentRef) {
        std::memset(parentRef, 0, sizeof *parentRef);
        Node parent;
        if (node.path != "/" && LookUpNode(ParentPath(node.path), parent) == noErr)
            MakeRef(parentRef, parent);
    }
    return noErr;
}

OSErr ApplyCatalogInfo(const Node &node, FSCatalogInfoBitmap whichInfo, const FSCatalogInfo &info)
{
    const bool link = S_ISLNK(node.st.st_mode);
    if (whichInfo & (kFSCatInfoContentMod | kFSCatInfoAccessDate)) {
        struct timespec times[2];
        times[0].tv_nsec = times[1].tv_nsec = UTIME_OMIT;
        if (whichInfo & kFSCatInfoAccessDate)
            times[0] = TimespecFromDate(info.accessDate);
        if (whichInfo & kFSCatInfoContentMod)
            times[1] = TimespecFromDate(info.contentModDate);
        if (utimensat(AT_FDCWD, node.path.c_str(), times, AT_SYMLINK_NOFOLLOW) != 0)
            return StatusFromErrno(errno);
    }
    if (whichInfo & kFSCatInfoPermissions) {
        FSPermissionInfo permissions;
        std::memcpy(&permissions, info.permissions, sizeof permissions);
        // Handing an object to another owner is for the super-user only; a
        // refusal there does not keep the mode from being set.
        if ((permissions.userID != node.st.st_uid || permissions.groupID != node.st.st_gid))
            (void)!lchown(node.path.c_str(), permissions.userID, permissions.groupID);
        if (!link && chmod(node.path.c_str(), permissions.mode & 07777) != 0)
            return StatusFromErrno(errno);
    }
    if (whichInfo & (kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo)) {
        AppleDoubleData stored = AppleDoubleFile::Read(node.path);
        UInt8 finder[16], extended[16];
        std::memcpy(finder, info.finderInfo, 16);
        std::memcpy(extended, info.extFinderInfo, 16);
        SwapFinderInfo(finder, extended, S_ISDIR(node.st.st_mode));
        if (whichInfo & kFSCatInfoFinderInfo)
            std::memcpy(stored.finderInfo, finder, 16);
        if (whichInfo & kFSCatInfoFinderXInfo)
            std::memcpy(stored.finderInfo + 16, extended, 16);
        stored.hasFinderInfo = true;
        const int error = AppleDoubleFile::Write(node.path, stored);
        if (error != 0)
            return StatusFromErrno(error);
    }
    return noErr;
}

} // namespace filemanager

using namespace filemanager;

extern "C" OSErr FSGetCatalogInfo(const FSRef *ref, FSCatalogInfoBitmap whichInfo,
                                  FSCatalogInfo *catalogInfo, HFSUniStr255 *outName,
                                  FSSpecPtr fsSpec, FSRef *parentRef)
{
    if (!ref)
        return paramErr;
    try {
        Node node;
        const OSErr status = ResolveRef(ref, node);
        if (status != noErr) {
            if (fsSpec)
                std::memset(fsSpec, 0, sizeof *fsSpec);
            if (parentRef)
                std::memset(parentRef, 0, sizeof *parentRef);
            if (outName)
                outName->length = 0;
            return status;
        }
        return FillCatalogInfo(node, whichInfo, catalogInfo, outName, fsSpec, parentRef);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSSetCatalogInfo(const FSRef *ref, FSCatalogInfoBitmap whichInfo,
                                  const FSCatalogInfo *catalogInfo)
{
    if (!ref || (!catalogInfo && (whichInfo & kFSCatInfoSettableInfo)))
        return paramErr;
    try {
        Node node;
        const OSErr status = ResolveRef(ref, node);
        if (status != noErr || !catalogInfo)
            return status;
        return ApplyCatalogInfo(node, whichInfo, *catalogInfo);
    } catch (...) {
        return memFullErr;
    }
}
