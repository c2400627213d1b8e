#include <CoreServices/Files.h>

#include "FileTestSupport.h"

#include <cstring>

namespace {

TEST(FileManager, CreatesFoldersAndFiles)
{
    TemporaryFolder folder;
    const FSRef parent = RefAt(folder.Path());
    const auto name = Units(u"New Folder"), file = Units(u"notes.txt");
    FSRef made;
    FSSpec fsSpec;
    UInt32 dirID = 0;
    ASSERT_EQ(noErr, FSCreateDirectoryUnicode(&parent, name.size(), name.data(), kFSCatInfoNone, nullptr, &made,
                                              &fsSpec, &dirID));
    EXPECT_EQ(folder / "New Folder", PathOf(made));
    FSCatalogInfo info;
    ASSERT_EQ(noErr, FSGetCatalogInfo(&made, kFSCatInfoNodeID, &info, nullptr, nullptr, nullptr));
    EXPECT_EQ(info.nodeID, dirID);
    FSRef fromFSSpec;
    ASSERT_EQ(noErr, FSpMakeFSRef(&fsSpec, &fromFSSpec));
    EXPECT_EQ(noErr, FSCompareFSRefs(&made, &fromFSSpec));
    EXPECT_EQ(dupFNErr, FSCreateDirectoryUnicode(&parent, name.size(), name.data(), kFSCatInfoNone, nullptr,
                                                 nullptr, nullptr, nullptr));

    // A file, created with catalog information applied.
    FSCatalogInfo settings{};
    FSPermissionInfo permissions{};
    permissions.userID = geteuid();
    permissions.groupID = getegid();
    permissions.mode = 0600;
    std::memcpy(settings.permissions, &permissions, sizeof permissions);
    ASSERT_EQ(noErr, FSCreateFileUnicode(&made, file.size(), file.data(), kFSCatInfoPermissions, &settings, &made,
                                         nullptr));
    struct stat st;
    ASSERT_EQ(0, stat((folder / "New Folder/notes.txt").c_str(), &st));
    EXPECT_TRUE(S_ISREG(st.st_mode));
    EXPECT_EQ(0600u, st.st_mode & 07777);
    EXPECT_EQ(0, st.st_size);
    EXPECT_EQ(dupFNErr, FSCreateFileUnicode(&parent, name.size(), name.data(), kFSCatInfoNone, nullptr, nullptr,
                                            nullptr));
    // Inside a file, or with no parent at all, nothing is made.
    EXPECT_EQ(dirNFErr, FSCreateFileUnicode(&made, file.size(), file.data(), kFSCatInfoNone, nullptr, nullptr,
                                            nullptr));
    EXPECT_EQ(paramErr, FSCreateDirectoryUnicode(nullptr, name.size(), name.data(), kFSCatInfoNone, nullptr,
                                                 nullptr, nullptr, nullptr));
}

TEST(FileManager, DeletesOnlyWhatIsEmpty)
{
    TemporaryFolder folder;
    mkdir((folder / "full").c_str(), 0755);
    WriteFile(folder / "full/inside", "x");
    WriteFile(folder / "file", "x");
    symlink("full", (folder / "link").c_str());

    const FSRef full = RefAt(folder / "full");
    EXPECT_EQ(fBsyErr, FSDeleteObject(&full));
    EXPECT_TRUE(Exists(folder / "full/inside"));

    // Deleting a link never touches what it points at.
    const FSRef link = LinkRefAt(folder / "link");
    EXPECT_EQ(noErr, FSDeleteObject(&link));
    EXPECT_FALSE(Exists(folder / "link"));
    EXPECT_TRUE(Exists(folder / "full/inside"));

    // By FSSpec.
    const FSRef file = RefAt(folder / "file");
    FSSpec fsSpec;
    ASSERT_EQ(noErr, FSGetCatalogInfo(&file, kFSCatInfoNone, nullptr, nullptr, &fsSpec, nullptr));
    EXPECT_EQ(noErr, FSpDelete(&fsSpec));
    EXPECT_FALSE(Exists(folder / "file"));
    EXPECT_EQ(fnfErr, FSpDelete(&fsSpec));
    EXPECT_EQ(paramErr, FSpDelete(nullptr));
    EXPECT_EQ(paramErr, FSDeleteObject(nullptr));
}

TEST(FileManager, RenamesAndMovesWithoutReplacing)
{
    TemporaryFolder folder;
    mkdir((folder / "box").c_str(), 0755);
    mkdir((folder / "box/inner").c_str(), 0755);
    WriteFile(folder / "a", "A");
    WriteFile(folder / "b", "B");
    WriteFile(folder / "box/a", "other A");

    FSRef a = RefAt(folder / "a"), renamed;
    const auto toB = Units(u"b"), toC = Units(u"c");
    EXPECT_EQ(dupFNErr, FSRenameUnicode(&a, toB.size(), toB.data(), 0, &renamed));
    EXPECT_EQ("B", ReadFile(folder / "b"));
    ASSERT_EQ(noErr, FSRenameUnicode(&a, toC.size(), toC.data(), 0, &renamed));
    EXPECT_EQ("A", ReadFile(folder / "c"));
    // The old ref followed nothing: the object moved away from its path.
    EXPECT_EQ("", PathOf(a));
    EXPECT_EQ(folder / "c", PathOf(renamed));

    const FSRef box = RefAt(folder / "box"), inner = RefAt(folder / "box/inner"), b = RefAt(folder / "b");
    FSRef moved;
    ASSERT_EQ(noErr, FSMoveObject(&renamed, &box, &moved));
    EXPECT_EQ(folder / "box/c", PathOf(moved));
    EXPECT_EQ(badMovErr, FSMoveObject(&box, &inner, &moved));
    EXPECT_EQ(dirNFErr, FSMoveObject(&box, &b, &moved));

    const FSRef boxA = RefAt(folder / "box/a");
    const FSRef top = RefAt(folder.Path());
    ASSERT_EQ(0, unlink((folder / "b").c_str()));
    WriteFile(folder / "a", "new A");
    EXPECT_EQ(dupFNErr, FSMoveObject(&boxA, &top, &moved));
    EXPECT_EQ("new A", ReadFile(folder / "a"));

    TemporaryFolder elsewhere("/dev/shm");
    struct stat here, there;
    if (!elsewhere.Path().empty() && stat(elsewhere.Path().c_str(), &there) == 0 &&
        stat(folder.Path().c_str(), &here) == 0 && here.st_dev != there.st_dev) {
        const FSRef other = RefAt(elsewhere.Path());
        EXPECT_EQ(diffVolErr, FSMoveObject(&boxA, &other, &moved));
    }
}

TEST(FileManager, ForkNames)
{
    HFSUniStr255 data, resource;
    ASSERT_EQ(noErr, FSGetDataForkName(&data));
    ASSERT_EQ(noErr, FSGetResourceForkName(&resource));
    EXPECT_EQ(0, data.length);
    EXPECT_EQ(Units(u"RESOURCE_FORK"), std::vector<UniChar>(resource.unicode, resource.unicode + resource.length));
    EXPECT_EQ(paramErr, FSGetDataForkName(nullptr));
}

} // namespace
