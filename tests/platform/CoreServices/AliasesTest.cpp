#include <CoreServices/Aliases.h>

#include "FileTestSupport.h"

#include <cstring>

namespace {

// An alias handle disposed when the test ends.
struct Alias {
    AliasHandle handle = nullptr;
    ~Alias() { DisposeHandle(reinterpret_cast<Handle>(handle)); }
};

TEST(Aliases, FindTheTargetAfterRenamesAlongItsPath)
{
    TemporaryFolder folder;
    mkdir((folder / "outer").c_str(), 0755);
    mkdir((folder / "outer/inner").c_str(), 0755);
    WriteFile(folder / "outer/inner/target", "content");
    const FSRef original = RefAt(folder / "outer/inner/target");
    Alias alias;
    ASSERT_EQ(noErr, FSNewAlias(nullptr, &original, &alias.handle));
    ASSERT_NE(nullptr, alias.handle);

    FSRef found;
    Boolean changed = true;
    ASSERT_EQ(noErr, FSResolveAlias(nullptr, alias.handle, &found, &changed));
    EXPECT_FALSE(changed);
    EXPECT_EQ(folder / "outer/inner/target", PathOf(found));

    // The parent path and the target are renamed; the inodes stay.
    ASSERT_EQ(0, rename((folder / "outer").c_str(), (folder / "moved outer").c_str()));
    ASSERT_EQ(0, rename((folder / "moved outer/inner").c_str(), (folder / "moved outer/renamed").c_str()));
    ASSERT_EQ(0, rename((folder / "moved outer/renamed/target").c_str(), (folder / "moved outer/renamed/t2").c_str()));
    ASSERT_EQ(noErr, FSResolveAlias(nullptr, alias.handle, &found, &changed));
    EXPECT_TRUE(changed);
    EXPECT_EQ(folder / "moved outer/renamed/t2", PathOf(found));
    EXPECT_EQ("content", ReadFile(PathOf(found)));

    // The record now holds the new place: found by path, unchanged.
    ASSERT_EQ(noErr, FSResolveAlias(nullptr, alias.handle, &found, &changed));
    EXPECT_FALSE(changed);

    // Gone for good: not found.
    ASSERT_EQ(0, unlink((folder / "moved outer/renamed/t2").c_str()));
    EXPECT_EQ(fnfErr, FSResolveAlias(nullptr, alias.handle, &found, &changed));
}

TEST(Aliases, FindTheTargetMovedIntoAnotherFolder)
{
    TemporaryFolder folder;
    mkdir((folder / "papers").c_str(), 0755);
    mkdir((folder / "papers/2026").c_str(), 0755);
    mkdir((folder / "archive").c_str(), 0755);
    WriteFile(folder / "papers/letter", "dear");
    const FSRef letter = RefAt(folder / "papers/letter");
    Alias alias;
    ASSERT_EQ(noErr, FSNewAlias(nullptr, &letter, &alias.handle));

    // Down into a folder beside it, across into another branch, then with
    // its folder into yet another: found each time, the record following.
    const char *const moves[][2] = {{"papers/letter", "papers/2026/letter"},
                                    {"papers/2026/letter", "archive/letter"},
                                    {"archive", "papers/2026/archive"}};
    for (const auto &move : moves) {
        ASSERT_EQ(0, rename((folder / move[0]).c_str(), (folder / move[1]).c_str()));
        FSRef found;
        Boolean changed = false;
        ASSERT_EQ(noErr, FSResolveAlias(nullptr, alias.handle, &found, &changed)) << move[1];
        EXPECT_TRUE(changed);
        EXPECT_EQ("dear", ReadFile(PathOf(found)));
    }
    FSRef found;
    ASSERT_EQ(noErr, FSResolveAlias(nullptr, alias.handle, &found, nullptr));
    EXPECT_EQ(folder / "papers/2026/archive/letter", PathOf(found));
}

TEST(Aliases, PathFirstUnlessTheFileIDComesFirst)
{
    TemporaryFolder folder;
    WriteFile(folder / "doc", "first");
    const FSRef doc = RefAt(folder / "doc");
    Alias alias;
    ASSERT_EQ(noErr, FSNewAlias(nullptr, &doc, &alias.handle));

    // A save by rename: the old file keeps its inode under another name and
    // a new file takes the name.
    ASSERT_EQ(0, rename((folder / "doc").c_str(), (folder / "doc~").c_str()));
    WriteFile(folder / "doc", "second");
    FSRef found;
    ASSERT_EQ(noErr, FSResolveAliasWithMountFlags(nullptr, alias.handle, &found, nullptr, 0));
    EXPECT_EQ(folder / "doc", PathOf(found));
    ASSERT_EQ(noErr, FSResolveAliasWithMountFlags(nullptr, alias.handle, &found, nullptr, kARMTryFileIDFirst));
    EXPECT_EQ(folder / "doc~", PathOf(found));
}

TEST(Aliases, MadeFromSpecsAndUpdated)
{
    TemporaryFolder folder;
    WriteFile(folder / "one", "1");
    WriteFile(folder / "two", "2");
    const FSRef one = RefAt(folder / "one"), two = RefAt(folder / "two");
    FSSpec fsSpec;
    ASSERT_EQ(noErr, FSGetCatalogInfo(&one, kFSCatInfoNone, nullptr, nullptr, &fsSpec, nullptr));
    Alias alias;
    ASSERT_EQ(noErr, NewAlias(nullptr, &fsSpec, &alias.handle));
    FSRef found;
    ASSERT_EQ(noErr, FSResolveAlias(nullptr, alias.handle, &found, nullptr));
    EXPECT_EQ(noErr, FSCompareFSRefs(&one, &found));

    Boolean changed = true;
    ASSERT_EQ(noErr, FSUpdateAlias(nullptr, &one, alias.handle, &changed));
    EXPECT_FALSE(changed);
    ASSERT_EQ(noErr, FSUpdateAlias(nullptr, &two, alias.handle, &changed));
    EXPECT_TRUE(changed);
    ASSERT_EQ(noErr, FSResolveAlias(nullptr, alias.handle, &found, nullptr));
    EXPECT_EQ(noErr, FSCompareFSRefs(&two, &found));

    std::memcpy(fsSpec.name, "\x07missing", 8);
    AliasHandle none = reinterpret_cast<AliasHandle>(1);
    EXPECT_EQ(fnfErr, NewAlias(nullptr, &fsSpec, &none));
    EXPECT_EQ(nullptr, none);
    EXPECT_EQ(paramErr, FSNewAlias(nullptr, nullptr, &none));
}

// The declared size of a record read from outside is checked against the
// handle and against the header already read: a size smaller than the header
// (0 included) or larger than the handle is refused, never read past.
TEST(Aliases, DeclaredSizesAreCheckedAgainstTheBytesThere)
{
    TemporaryFolder folder;
    mkdir((folder / "a").c_str(), 0755);
    WriteFile(folder / "a/x", "");
    const FSRef x = RefAt(folder / "a/x");
    Alias made;
    ASSERT_EQ(noErr, FSNewAlias(nullptr, &x, &made.handle));
    const Handle original = reinterpret_cast<Handle>(made.handle);
    const Size full = GetHandleSize(original);
    EXPECT_EQ(full, GetAliasSize(made.handle));

    // Each copy is a handle of exactly the bytes given, so that a read past
    // them is a read past the allocation.
    const auto copyOf = [&](Alias &alias, Size length) {
        Handle copy = nullptr;
        PtrToHand(*original, &copy, length);
        alias.handle = reinterpret_cast<AliasHandle>(copy);
        return copy;
    };
    for (UInt16 declared : {UInt16(0), UInt16(4), UInt16(15), UInt16(16), UInt16(17), UInt16(full - 1),
                            UInt16(full + 1), UInt16(0xFFFF)}) {
        Alias alias;
        std::memcpy(*copyOf(alias, full) + 4, &declared, sizeof declared);
        FSRef found;
        Boolean changed = true;
        EXPECT_EQ(paramErr, FSResolveAlias(nullptr, alias.handle, &found, &changed)) << declared;
        EXPECT_EQ(paramErr, FSResolveAliasWithMountFlags(nullptr, alias.handle, &found, &changed,
                                                         kARMTryFileIDFirst))
            << declared;
        EXPECT_FALSE(changed);
        EXPECT_EQ(0, GetAliasSize(alias.handle)) << declared;
    }
    // Handles shorter than a header, down to empty, and no handle at all.
    for (Size length : {Size(0), Size(1), Size(15)}) {
        Alias alias;
        copyOf(alias, length);
        FSRef found;
        EXPECT_EQ(paramErr, FSResolveAlias(nullptr, alias.handle, &found, nullptr)) << length;
        EXPECT_EQ(0, GetAliasSize(alias.handle));
    }
    FSRef found;
    EXPECT_EQ(paramErr, FSResolveAlias(nullptr, nullptr, &found, nullptr));
}

TEST(Aliases, AliasFilesAreSymbolicLinks)
{
    TemporaryFolder folder;
    mkdir((folder / "dir").c_str(), 0755);
    symlink("dir", (folder / "first").c_str());
    symlink((folder / "first").c_str(), (folder / "second").c_str());
    symlink("nowhere", (folder / "broken").c_str());
    symlink("loop", (folder / "loop").c_str());

    const auto linkRef = [&](const char *name) { return LinkRefAt(folder / name); };
    Boolean isAlias = false, isFolder = true;
    FSRef ref = linkRef("second");
    ASSERT_EQ(noErr, FSIsAliasFile(&ref, &isAlias, &isFolder));
    EXPECT_TRUE(isAlias);
    EXPECT_FALSE(isFolder);
    const FSRef dir = RefAt(folder / "dir");
    ASSERT_EQ(noErr, FSIsAliasFile(&dir, &isAlias, &isFolder));
    EXPECT_FALSE(isAlias);
    EXPECT_TRUE(isFolder);

    Boolean targetIsFolder = false, wasAliased = false;
    ASSERT_EQ(noErr, FSResolveAliasFile(&ref, false, &targetIsFolder, &wasAliased));
    EXPECT_EQ(folder / "first", PathOf(ref)); // one step only
    EXPECT_TRUE(wasAliased);
    ref = linkRef("second");
    ASSERT_EQ(noErr, FSResolveAliasFile(&ref, true, &targetIsFolder, &wasAliased));
    EXPECT_EQ(folder / "dir", PathOf(ref));
    EXPECT_TRUE(targetIsFolder);

    // Not an alias file: the ref stays.
    FSRef plain = dir;
    ASSERT_EQ(noErr, FSResolveAliasFile(&plain, true, &targetIsFolder, &wasAliased));
    EXPECT_FALSE(wasAliased);
    EXPECT_EQ(noErr, FSCompareFSRefs(&plain, &dir));

    FSRef broken = linkRef("broken"), loop = linkRef("loop");
    EXPECT_EQ(fnfErr, FSResolveAliasFile(&broken, true, &targetIsFolder, &wasAliased));
    EXPECT_EQ(folder / "broken", PathOf(broken));
    EXPECT_NE(noErr, FSResolveAliasFile(&loop, true, &targetIsFolder, &wasAliased));
    EXPECT_EQ(paramErr, FSResolveAliasFile(nullptr, true, &targetIsFolder, &wasAliased));
}

} // namespace
