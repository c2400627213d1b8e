#include "../../../platform/CoreServices/PathTable.h"

#include <CoreServices/CoreServices.h>

#include "FileTestSupport.h"

using filemanager::PathTable;

// Refs made again and again to the same items reuse their table entries: a
// long walk over the same tree does not grow the table.
TEST(PathTable, IdenticalPathsShareOneEntry)
{
    const uint32_t first = PathTable::Intern("/koru/path-table/one");
    EXPECT_NE(0u, first);
    EXPECT_EQ(first, PathTable::Intern(std::string("/koru/path-table/") + "one"));
    const uint32_t other = PathTable::Intern("/koru/path-table/two");
    EXPECT_NE(first, other);
    std::string path;
    ASSERT_TRUE(PathTable::Lookup(first, path));
    EXPECT_EQ("/koru/path-table/one", path);
    EXPECT_FALSE(PathTable::Lookup(0, path));
    EXPECT_FALSE(PathTable::Lookup(UINT32_MAX, path));

    TemporaryFolder folder;
    WriteFile(folder / "item", "");
    const uint32_t before = PathTable::Intern(folder / "item");
    for (int k = 0; k < 1000; ++k) {
        FSRef ref;
        ASSERT_EQ(noErr, FSPathMakeRef(reinterpret_cast<const UInt8 *>((folder / "item").c_str()), &ref, nullptr));
    }
    // No entry was added by the thousand refs: the next new path comes next.
    EXPECT_EQ(before + 1, PathTable::Intern(folder / "item-after"));
}
