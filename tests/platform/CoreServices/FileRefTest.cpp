#include <CoreServices/Files.h>

#include "FileTestSupport.h"

#include <cstring>

namespace {

OSStatus MakeRef(const std::string &path, FSRef &ref, Boolean *isDirectory = nullptr)
{
    return FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), &ref, isDirectory);
}

TEST(FileRef, PathMakeRefFollowsLinksToTheRealObject)
{
    TemporaryFolder folder;
    mkdir((folder / "real").c_str(), 0755);
    WriteFile(folder / "real/file", "x");
    symlink((folder / "real").c_str(), (folder / "link").c_str());
    symlink("real/file", (folder / "filelink").c_str());

    FSRef ref;
    Boolean isDirectory = true;
    ASSERT_EQ(noErr, MakeRef(folder / "link/../link/file", ref, &isDirectory));
    EXPECT_EQ(folder / "real/file", PathOf(ref));
    EXPECT_FALSE(isDirectory);

    ASSERT_EQ(noErr, MakeRef(folder / "filelink", ref, &isDirectory));
    EXPECT_EQ(folder / "real/file", PathOf(ref));
    ASSERT_EQ(noErr, MakeRef(folder / "link/", ref, &isDirectory));
    EXPECT_EQ(folder / "real", PathOf(ref));
    EXPECT_TRUE(isDirectory);

    // Asked not to, the final link is the object itself.
    ASSERT_EQ(noErr, FSPathMakeRefWithOptions(reinterpret_cast<const UInt8 *>((folder / "link").c_str()),
                                              kFSPathMakeRefDoNotFollowLeafSymlink, &ref, &isDirectory));
    EXPECT_EQ(folder / "link", PathOf(ref));
    EXPECT_FALSE(isDirectory);

    // A relative path counts from the current folder.
    char previous[PATH_MAX];
    ASSERT_TRUE(getcwd(previous, sizeof previous));
    ASSERT_EQ(0, chdir(folder.Path().c_str()));
    const OSStatus relative = MakeRef("real/file", ref);
    ASSERT_EQ(0, chdir(previous));
    ASSERT_EQ(noErr, relative);
    EXPECT_EQ(folder / "real/file", PathOf(ref));
}

TEST(FileRef, BadPathsAndArgumentsAnswerMacErrors)
{
    TemporaryFolder folder;
    WriteFile(folder / "file", "x");
    symlink("nowhere", (folder / "dangling").c_str());
    FSRef ref;
    std::memset(&ref, 0xAB, sizeof ref);
    EXPECT_EQ(fnfErr, MakeRef(folder / "missing", ref));
    // A failed call leaves no half-made ref behind.
    EXPECT_EQ(std::string(sizeof ref, '\0'), std::string(reinterpret_cast<char *>(&ref), sizeof ref));
    EXPECT_EQ(dirNFErr, MakeRef(folder / "file/below", ref));
    EXPECT_EQ(fnfErr, MakeRef(folder / "dangling", ref));
    EXPECT_EQ(fnfErr, MakeRef("", ref));
    EXPECT_EQ(paramErr, FSPathMakeRef(nullptr, &ref, nullptr));
    EXPECT_EQ(paramErr, FSPathMakeRef(reinterpret_cast<const UInt8 *>("/"), nullptr, nullptr));

    // A ref this process never made is refused, not followed.
    FSRef garbage;
    std::memset(&garbage, 0x5A, sizeof garbage);
    UInt8 path[PATH_MAX];
    EXPECT_EQ(errFSBadFSRef, FSRefMakePath(&garbage, path, sizeof path));
    EXPECT_EQ(paramErr, FSRefMakePath(nullptr, path, sizeof path));

    ASSERT_EQ(noErr, MakeRef(folder / "file", ref));
    UInt8 small[8] = "garbage";
    EXPECT_EQ(-2110, FSRefMakePath(&ref, small, sizeof small));
    EXPECT_EQ(0, small[0]);
}

TEST(FileRef, RefsAreRecheckedOnEveryUse)
{
    TemporaryFolder folder;
    WriteFile(folder / "file", "x");
    const FSRef ref = RefAt(folder / "file");

    // Moved away: the ref no longer answers, even when another file takes
    // the old name.
    ASSERT_EQ(0, rename((folder / "file").c_str(), (folder / "moved").c_str()));
    WriteFile(folder / "file", "other");
    UInt8 path[PATH_MAX];
    EXPECT_EQ(fnfErr, FSRefMakePath(&ref, path, sizeof path));
    FSCatalogInfo info;
    EXPECT_EQ(fnfErr, FSGetCatalogInfo(&ref, kFSCatInfoNodeFlags, &info, nullptr, nullptr, nullptr));
    EXPECT_EQ(fnfErr, FSDeleteObject(&ref));
    EXPECT_TRUE(Exists(folder / "file"));

    // Put back, the object is found again.
    ASSERT_EQ(0, rename((folder / "moved").c_str(), (folder / "file").c_str()));
    EXPECT_EQ(folder / "file", PathOf(ref));
}

TEST(FileRef, CompareByIdentity)
{
    TemporaryFolder folder;
    WriteFile(folder / "a", "1");
    WriteFile(folder / "b", "2");
    ASSERT_EQ(0, link((folder / "a").c_str(), (folder / "hard").c_str()));
    symlink("a", (folder / "soft").c_str());
    const FSRef a = RefAt(folder / "a"), b = RefAt(folder / "b");
    const FSRef hard = RefAt(folder / "hard"), soft = RefAt(folder / "soft");

    EXPECT_EQ(noErr, FSCompareFSRefs(&a, &hard));
    EXPECT_EQ(noErr, FSCompareFSRefs(&a, &soft));
    EXPECT_EQ(errFSRefsDifferent, FSCompareFSRefs(&a, &b));
    EXPECT_EQ(paramErr, FSCompareFSRefs(&a, nullptr));

    TemporaryFolder elsewhere("/dev/shm");
    struct stat here, there;
    if (!elsewhere.Path().empty() && stat(elsewhere.Path().c_str(), &there) == 0 &&
        stat(folder.Path().c_str(), &here) == 0 && here.st_dev != there.st_dev) {
        const FSRef other = RefAt(elsewhere.Path());
        EXPECT_EQ(diffVolErr, FSCompareFSRefs(&a, &other));
    }

    unlink((folder / "b").c_str());
    EXPECT_EQ(fnfErr, FSCompareFSRefs(&a, &b));
}

TEST(FileRef, UnicodeNamesFindChildren)
{
    TemporaryFolder folder;
    WriteFile(folder / "caf\xC3\xA9 \xF0\x9F\x98\x80.txt", "x"); // café 😀.txt
    symlink("target", (folder / "link").c_str());
    const FSRef parent = RefAt(folder.Path());
    const auto name = Units(u"caf\u00E9 \U0001F600.txt");
    FSRef child;
    ASSERT_EQ(noErr, FSMakeFSRefUnicode(&parent, name.size(), name.data(), 0, &child));
    EXPECT_EQ(folder / "caf\xC3\xA9 \xF0\x9F\x98\x80.txt", PathOf(child));

    HFSUniStr255 back;
    ASSERT_EQ(noErr, FSGetCatalogInfo(&child, kFSCatInfoNone, nullptr, &back, nullptr, nullptr));
    EXPECT_EQ(name, std::vector<UniChar>(back.unicode, back.unicode + back.length));

    // A link found by name is the link, even a dangling one.
    const auto linkName = Units(u"link");
    ASSERT_EQ(noErr, FSMakeFSRefUnicode(&parent, linkName.size(), linkName.data(), 0, &child));
    EXPECT_EQ(folder / "link", PathOf(child));

    const auto slash = Units(u"a/b"), dots = Units(u"..");
    EXPECT_EQ(bdNamErr, FSMakeFSRefUnicode(&parent, slash.size(), slash.data(), 0, &child));
    EXPECT_EQ(bdNamErr, FSMakeFSRefUnicode(&parent, dots.size(), dots.data(), 0, &child));
    EXPECT_EQ(errFSMissingName, FSMakeFSRefUnicode(&parent, 0, name.data(), 0, &child));
    const auto missing = Units(u"missing");
    EXPECT_EQ(fnfErr, FSMakeFSRefUnicode(&parent, missing.size(), missing.data(), 0, &child));
    const FSRef file = RefAt(folder / "caf\xC3\xA9 \xF0\x9F\x98\x80.txt");
    EXPECT_EQ(dirNFErr, FSMakeFSRefUnicode(&file, missing.size(), missing.data(), 0, &child));
}

TEST(FileRef, SpecsNameItemsByVolumeFolderIDAndName)
{
    TemporaryFolder folder;
    mkdir((folder / "sub").c_str(), 0755);
    WriteFile(folder / "sub/item", "x");
    const std::string longName = std::string(90, 'n') + ".document";
    WriteFile(folder / ("sub/" + longName), "x");

    const FSRef sub = RefAt(folder / "sub"), item = RefAt(folder / "sub/item");
    FSCatalogInfo subInfo;
    FSSpec fsSpec;
    ASSERT_EQ(noErr, FSGetCatalogInfo(&sub, kFSCatInfoNodeID | kFSCatInfoVolume, &subInfo, nullptr, nullptr, nullptr));
    ASSERT_EQ(noErr, FSGetCatalogInfo(&item, kFSCatInfoNone, nullptr, nullptr, &fsSpec, nullptr));
    EXPECT_EQ(static_cast<SInt32>(subInfo.nodeID), SInt32(fsSpec.parID));
    EXPECT_EQ(subInfo.volume, fsSpec.vRefNum);
    EXPECT_EQ(std::string("item"), std::string(reinterpret_cast<char *>(fsSpec.name + 1), fsSpec.name[0]));
    FSRef back;
    ASSERT_EQ(noErr, FSpMakeFSRef(&fsSpec, &back));
    EXPECT_EQ(noErr, FSCompareFSRefs(&item, &back));

    // A name too long for 63 bytes is shortened with its node ID and still
    // finds its item.
    const FSRef longItem = RefAt(folder / ("sub/" + longName));
    ASSERT_EQ(noErr, FSGetCatalogInfo(&longItem, kFSCatInfoNone, nullptr, nullptr, &fsSpec, nullptr));
    const std::string shortName(reinterpret_cast<char *>(fsSpec.name + 1), fsSpec.name[0]);
    EXPECT_LE(shortName.size(), 63u);
    EXPECT_NE(std::string::npos, shortName.find('#'));
    EXPECT_EQ(".document", shortName.substr(shortName.size() - 9));
    ASSERT_EQ(noErr, FSpMakeFSRef(&fsSpec, &back));
    EXPECT_EQ(noErr, FSCompareFSRefs(&longItem, &back));

    // An empty name names the folder itself; the root's parent is fsRtParID.
    fsSpec.name[0] = 0;
    ASSERT_EQ(noErr, FSpMakeFSRef(&fsSpec, &back));
    EXPECT_EQ(noErr, FSCompareFSRefs(&sub, &back));
    const FSRef root = RefAt("/");
    ASSERT_EQ(noErr, FSGetCatalogInfo(&root, kFSCatInfoNone, nullptr, nullptr, &fsSpec, nullptr));
    EXPECT_EQ(fsRtParID, SInt32(fsSpec.parID));
    ASSERT_EQ(noErr, FSpMakeFSRef(&fsSpec, &back));
    EXPECT_EQ("/", PathOf(back));

    // A missing item, an unknown folder ID and an unknown volume.
    ASSERT_EQ(noErr, FSGetCatalogInfo(&item, kFSCatInfoNone, nullptr, nullptr, &fsSpec, nullptr));
    std::memcpy(fsSpec.name, "\x07missing", 8);
    EXPECT_EQ(fnfErr, FSpMakeFSRef(&fsSpec, &back));
    fsSpec.parID = 0x7FFFFFF0;
    EXPECT_EQ(dirNFErr, FSpMakeFSRef(&fsSpec, &back));
    fsSpec.vRefNum = -30000;
    EXPECT_EQ(nsvErr, FSpMakeFSRef(&fsSpec, &back));
    EXPECT_EQ(paramErr, FSpMakeFSRef(nullptr, &back));
}

} // namespace
