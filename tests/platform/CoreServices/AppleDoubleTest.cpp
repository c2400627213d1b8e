#include <CoreServices/Files.h>

#include "FileTestSupport.h"

#include <cstring>
#include <sys/xattr.h>

namespace {

// A companion as a Mac writes it: Finder information padded to 3810 bytes
// with an attribute block ("ATTR"), then the resource fork.
std::string MacCompanion(const std::string &finderInfo, const std::string &fork)
{
    std::string padded = finderInfo + std::string(3810 - finderInfo.size(), '\0');
    padded.replace(32, 4, "ATTR");
    return AppleDoubleImage("Mac OS X", {{9, padded}, {2, fork}});
}

FileInfo FinderInfoOf(const FSRef &ref, FSCatalogInfo &info)
{
    FSGetCatalogInfo(&ref, kFSCatInfoFinderInfo | kFSCatInfoRsrcSizes, &info, nullptr, nullptr, nullptr);
    FileInfo finder;
    std::memcpy(&finder, info.finderInfo, sizeof finder);
    return finder;
}

TEST(AppleDouble, ReadsCompanionsWrittenByAMac)
{
    TemporaryFolder folder;
    WriteFile(folder / "Report", "data");
    std::string finder("APPLMSWD\x01\x00", 10);
    finder.resize(32, '\0');
    WriteFile(folder / "._Report", MacCompanion(finder, std::string(300, 'r')));

    FSCatalogInfo info;
    const FSRef report = RefAt(folder / "Report");
    FileInfo read = FinderInfoOf(report, info);
    EXPECT_EQ(0x4150504Cu, read.fileType);    // 'APPL'
    EXPECT_EQ(0x4D535744u, read.fileCreator); // 'MSWD'
    EXPECT_EQ(0x0100, read.finderFlags);
    EXPECT_EQ(300u, info.rsrcLogicalSize);

    // Changing the Finder information keeps the resource fork, and the Mac's
    // attribute block stays where it was.
    read.fileType = 0x54455854; // 'TEXT'
    std::memcpy(info.finderInfo, &read, sizeof read);
    ASSERT_EQ(noErr, FSSetCatalogInfo(&report, kFSCatInfoFinderInfo, &info));
    EXPECT_EQ(0x54455854u, FinderInfoOf(report, info).fileType);
    EXPECT_EQ(300u, info.rsrcLogicalSize);
    const std::string rewritten = ReadFile(folder / "._Report");
    EXPECT_NE(std::string::npos, rewritten.find(std::string(300, 'r')));
    ASSERT_GT(rewritten.size(), 86u);
    EXPECT_EQ("ATTR", rewritten.substr(50 + 32, 4));
    EXPECT_EQ("TEXT", rewritten.substr(50, 4));

    // A damaged companion reads as no information at all.
    WriteFile(folder / "._Report", "not an AppleDouble file");
    EXPECT_EQ(0u, FinderInfoOf(report, info).fileType);
}

TEST(AppleDouble, FallsBackToNetatalkAttributes)
{
    TemporaryFolder folder;
    WriteFile(folder / "shared", "x");
    std::string finder("TEXTR*ch", 8);
    finder.resize(32, '\0');
    const std::string metadata = AppleDoubleImage("Netatalk", {{9, finder}});
    if (setxattr((folder / "shared").c_str(), "user.org.netatalk.Metadata", metadata.data(), metadata.size(), 0) != 0 ||
        setxattr((folder / "shared").c_str(), "user.org.netatalk.ResourceFork", "fork", 4, 0) != 0)
        GTEST_SKIP() << "this file system keeps no user attributes";
    FSCatalogInfo info;
    EXPECT_EQ(0x522A6368u, FinderInfoOf(RefAt(folder / "shared"), info).fileCreator);
    EXPECT_EQ(4u, info.rsrcLogicalSize);
}

TEST(AppleDouble, CompanionsTravelWithTheirItem)
{
    TemporaryFolder folder;
    mkdir((folder / "dest").c_str(), 0755);
    WriteFile(folder / "item", "x");
    WriteFile(folder / "._item", MacCompanion(std::string(32, 'f'), "fork"));

    FSRef item = RefAt(folder / "item"), renamed, moved;
    const auto newName = Units(u"renamed");
    ASSERT_EQ(noErr, FSRenameUnicode(&item, newName.size(), newName.data(), 0, &renamed));
    EXPECT_FALSE(Exists(folder / "._item"));
    EXPECT_TRUE(Exists(folder / "._renamed"));

    const FSRef dest = RefAt(folder / "dest");
    ASSERT_EQ(noErr, FSMoveObject(&renamed, &dest, &moved));
    EXPECT_FALSE(Exists(folder / "._renamed"));
    EXPECT_TRUE(Exists(folder / "dest/._renamed"));
    EXPECT_EQ(folder / "dest/renamed", PathOf(moved));

    ASSERT_EQ(noErr, FSDeleteObject(&moved));
    EXPECT_FALSE(Exists(folder / "dest/renamed"));
    EXPECT_FALSE(Exists(folder / "dest/._renamed"));
    EXPECT_EQ(noErr, FSDeleteObject(&dest)); // empty now, companion and all
}

TEST(AppleDouble, MacAttributesKeepACompanionAlive)
{
    TemporaryFolder folder;
    WriteFile(folder / "tagged", "x");
    // Zero Finder information, an attribute header that lists one attribute.
    std::string companion = MacCompanion(std::string(32, '\0'), "fork");
    companion[50 + 32 + 34] = 0;
    companion[50 + 32 + 35] = 1;
    WriteFile(folder / "._tagged", companion);
    const FSRef ref = RefAt(folder / "tagged");
    HFSUniStr255 resource;
    FSGetResourceForkName(&resource);
    ASSERT_EQ(noErr, FSDeleteFork(&ref, resource.length, resource.unicode));
    ASSERT_TRUE(Exists(folder / "._tagged"));
    const std::string kept = ReadFile(folder / "._tagged");
    EXPECT_EQ(companion.substr(0, 50 + 3810), kept.substr(0, 50 + 3810).replace(0, 50, companion.substr(0, 50)));
    EXPECT_EQ(std::string::npos, kept.find("fork"));

    // Without attributes, zero Finder information keeps nothing.
    companion[50 + 32 + 35] = 0;
    WriteFile(folder / "._tagged", companion);
    ASSERT_EQ(noErr, FSDeleteFork(&ref, resource.length, resource.unicode));
    EXPECT_FALSE(Exists(folder / "._tagged"));
}

} // namespace
