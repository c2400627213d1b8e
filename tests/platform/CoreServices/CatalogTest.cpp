#include <CoreServices/Files.h>

#include "FileTestSupport.h"

#include <cstring>
#include <sys/xattr.h>

namespace {

// Seconds from 1904 (the Mac's epoch) to 1970.
constexpr SInt64 kMacEpochOffset = 2082844800;

SInt64 Seconds(const UTCDateTime &date)
{
    return (static_cast<SInt64>(date.highSeconds) << 32 | date.lowSeconds) - kMacEpochOffset;
}

UTCDateTime DateAt(SInt64 unixSeconds)
{
    const SInt64 mac = unixSeconds + kMacEpochOffset;
    UTCDateTime date;
    date.highSeconds = static_cast<UInt16>(mac >> 32);
    date.lowSeconds = static_cast<UInt32>(mac);
    date.fraction = 0x8000; // half a second
    return date;
}

TEST(Catalog, ReportsWhatStatKnows)
{
    TemporaryFolder folder;
    mkdir((folder / "sub").c_str(), 0750);
    WriteFile(folder / "sub/one", "12345");
    WriteFile(folder / "sub/two", "");
    WriteFile(folder / "sub/._two", ""); // the companion of two: not an item of its own
    ASSERT_EQ(0, link((folder / "sub/one").c_str(), (folder / "sub/hard").c_str()));

    const FSRef sub = RefAt(folder / "sub"), one = RefAt(folder / "sub/one");
    FSCatalogInfo info;
    std::memset(&info, 0, sizeof info);
    ASSERT_EQ(noErr, FSGetCatalogInfo(&sub, kFSCatInfoGettableInfo, &info, nullptr, nullptr, nullptr));
    EXPECT_TRUE(info.nodeFlags & kFSNodeIsDirectoryMask);
    EXPECT_EQ(3u, info.valence);
    FSPermissionInfo permissions;
    std::memcpy(&permissions, info.permissions, sizeof permissions);
    EXPECT_EQ(S_IFDIR | 0750, permissions.mode);
    EXPECT_EQ(geteuid(), permissions.userID);
    const UInt32 subID = info.nodeID;

    FSRef parent;
    HFSUniStr255 name;
    ASSERT_EQ(noErr, FSGetCatalogInfo(&one, kFSCatInfoGettableInfo, &info, &name, nullptr, &parent));
    EXPECT_FALSE(info.nodeFlags & kFSNodeIsDirectoryMask);
    EXPECT_TRUE(info.nodeFlags & kFSNodeHardLinkMask);
    EXPECT_EQ(5u, info.dataLogicalSize);
    EXPECT_EQ(0u, info.rsrcLogicalSize);
    EXPECT_EQ(subID, info.parentDirID);
    EXPECT_EQ(3, name.length);
    EXPECT_EQ(noErr, FSCompareFSRefs(&parent, &sub));
    struct stat st;
    ASSERT_EQ(0, stat((folder / "sub/one").c_str(), &st));
    EXPECT_EQ(st.st_mtime, Seconds(info.contentModDate));
    EXPECT_EQ(st.st_atime, Seconds(info.accessDate));
    EXPECT_LE(Seconds(info.createDate), st.st_mtime + 1);
    EXPECT_GT(Seconds(info.createDate), 0);

    // Only the fields asked for are written.
    std::memset(&info, 0xEE, sizeof info);
    ASSERT_EQ(noErr, FSGetCatalogInfo(&one, kFSCatInfoDataSizes, &info, nullptr, nullptr, nullptr));
    EXPECT_EQ(5u, info.dataLogicalSize);
    EXPECT_EQ(0xEEEEEEEEu, info.nodeID);

    // The root has no parent.
    const FSRef root = RefAt("/");
    ASSERT_EQ(noErr, FSGetCatalogInfo(&root, kFSCatInfoNodeID, &info, nullptr, nullptr, &parent));
    EXPECT_EQ(static_cast<UInt32>(fsRtDirID), info.nodeID);
    EXPECT_EQ("", PathOf(parent));
}

TEST(Catalog, SetsDatesPermissionsAndFinderInfo)
{
    TemporaryFolder folder;
    WriteFile(folder / "doc", "text");
    const FSRef doc = RefAt(folder / "doc");
    FSCatalogInfo info;
    std::memset(&info, 0, sizeof info);
    info.contentModDate = DateAt(1000000000);
    info.accessDate = DateAt(1100000000);
    FSPermissionInfo permissions{};
    permissions.userID = geteuid();
    permissions.groupID = getegid();
    permissions.mode = 0604;
    std::memcpy(info.permissions, &permissions, sizeof permissions);
    FileInfo finder{};
    finder.fileType = 0x54455854;    // 'TEXT'
    finder.fileCreator = 0x74747874; // 'ttxt'
    finder.finderFlags = kIsInvisible | kHasCustomIcon;
    finder.location.v = 12;
    finder.location.h = -3;
    std::memcpy(info.finderInfo, &finder, sizeof finder);
    ASSERT_EQ(noErr, FSSetCatalogInfo(&doc, kFSCatInfoContentMod | kFSCatInfoAccessDate | kFSCatInfoPermissions |
                                                kFSCatInfoFinderInfo,
                                      &info));

    struct stat st;
    ASSERT_EQ(0, stat((folder / "doc").c_str(), &st));
    EXPECT_EQ(1000000000, st.st_mtim.tv_sec);
    EXPECT_EQ(500000000, st.st_mtim.tv_nsec);
    EXPECT_EQ(1100000000, st.st_atim.tv_sec);
    EXPECT_EQ(0604u, st.st_mode & 07777);

    // The Finder information is in the companion, big-endian as a Mac writes it.
    const std::string companion = ReadFile(folder / "._doc");
    ASSERT_GE(companion.size(), 26u);
    EXPECT_EQ(std::string("\x00\x05\x16\x07\x00\x02\x00\x00", 8), companion.substr(0, 8));
    EXPECT_NE(std::string::npos, companion.find("TEXTttxt\x44\x00\x00\x0C\xFF\xFD"));

    FSCatalogInfo back;
    ASSERT_EQ(noErr, FSGetCatalogInfo(&doc, kFSCatInfoFinderInfo | kFSCatInfoContentMod, &back, nullptr, nullptr, nullptr));
    EXPECT_EQ(0, std::memcmp(&finder, back.finderInfo, sizeof finder));
    EXPECT_EQ(Seconds(info.contentModDate), Seconds(back.contentModDate));

    EXPECT_EQ(paramErr, FSSetCatalogInfo(&doc, kFSCatInfoFinderInfo, nullptr));
    EXPECT_EQ(paramErr, FSGetCatalogInfo(nullptr, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr));
}

TEST(Catalog, LinksLookLikeMacSymbolicLinks)
{
    TemporaryFolder folder;
    symlink("anywhere", (folder / "link").c_str());
    const FSRef link = LinkRefAt(folder / "link");
    FSCatalogInfo info;
    ASSERT_EQ(noErr, FSGetCatalogInfo(&link, kFSCatInfoFinderInfo | kFSCatInfoNodeFlags, &info, nullptr, nullptr, nullptr));
    FileInfo finder;
    std::memcpy(&finder, info.finderInfo, sizeof finder);
    EXPECT_EQ(0x736C6E6Bu, finder.fileType);    // 'slnk'
    EXPECT_EQ(0x72686170u, finder.fileCreator); // 'rhap'
    EXPECT_FALSE(info.nodeFlags & kFSNodeIsDirectoryMask);
}

} // namespace
