#include "MountTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <unistd.h>

using filemanager::DecodeMountField;
using filemanager::MountEntry;
using filemanager::ParseMountInfoLine;
using filemanager::ReadMountTable;

// Every field of an entry, joined with '|' (optional fields with ',').
static std::string Fields(const MountEntry &e)
{
    std::string optional;
    for (const std::string &field : e.optionalFields)
        optional += (optional.empty() ? "" : ",") + field;
    return std::to_string(e.mountID) + "|" + std::to_string(e.parentID) + "|" + std::to_string(e.major) + ":" +
           std::to_string(e.minor) + "|" + e.root + "|" + e.mountPoint + "|" + e.mountOptions + "|" + optional +
           "|" + e.fsType + "|" + e.source + "|" + e.superOptions;
}

TEST(MountTableTest, ParsesEveryFieldOfALine)
{
    MountEntry entry;
    ASSERT_TRUE(ParseMountInfoLine(
        "36 35 98:0 /mnt1 /mnt/parent rw,noatime master:1 shared:7 - ext3 /dev/root rw,errors=continue\n",
        entry));
    EXPECT_EQ("36|35|98:0|/mnt1|/mnt/parent|rw,noatime|master:1,shared:7|ext3|/dev/root|rw,errors=continue",
              Fields(entry));
    // No optional fields, no newline, and an empty mount source.
    ASSERT_TRUE(ParseMountInfoLine("1 0 0:52 / /tmp/a\\040b rw - fuse.koru  rw,user_id=0", entry));
    EXPECT_EQ("1|0|0:52|/|/tmp/a b|rw||fuse.koru||rw,user_id=0", Fields(entry));
}

TEST(MountTableTest, DecodesOctalEscapesOnly)
{
    EXPECT_EQ(DecodeMountField("a\\040b\\011c\\012d\\134e\\054"), "a b\tc\nd\\e,");
    // Not an escape of a byte: kept as written.
    EXPECT_EQ(DecodeMountField("\\400 \\08 \\9 \\12"), "\\400 \\08 \\9 \\12");
    EXPECT_EQ(DecodeMountField("end\\"), "end\\");
    EXPECT_EQ(DecodeMountField(""), "");
    EXPECT_EQ(DecodeMountField(std::string_view("\\000x", 5)), std::string("\0x", 2));
}

TEST(MountTableTest, RefusesMalformedLines)
{
    const char *bad[] = {
        "",
        "\n",
        "36 35 98:0 /mnt1 /mnt/parent rw master:1 ext3 /dev/root rw",  // no separator
        "36 35 98:0 /mnt1 /mnt/parent rw - ext3 /dev/root",             // a field short
        "36 35 98:0 /mnt1 /mnt/parent - ext3 /dev/root rw",             // options missing
        "x6 35 98:0 / / rw - ext3 /dev/root rw",
        "-1 35 98:0 / / rw - ext3 /dev/root rw",
        "36 35 98-0 / / rw - ext3 /dev/root rw",
        "36 35 98: / / rw - ext3 /dev/root rw",
        "36 35 4294967296:0 / / rw - ext3 /dev/root rw",
        "99999999999999999999999 35 98:0 / / rw - ext3 /dev/root rw",
    };
    for (const char *line : bad) {
        MountEntry entry;
        entry.mountPoint = "stale";
        EXPECT_FALSE(ParseMountInfoLine(line, entry)) << line;
        EXPECT_EQ(entry.mountPoint, "") << line;
    }
}

TEST(MountTableTest, ReadsAFileSkippingWhatDoesNotParse)
{
    char path[] = "/tmp/koru-mountinfo-XXXXXX";
    int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    close(fd);
    {
        std::ofstream file(path);
        file << "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
             << "garbage\n"
             << "21 20 0:40 / /mnt/" << std::string(5000, 'x') << " rw - fuse.koru /img rw";
    }
    std::vector<MountEntry> table;
    EXPECT_TRUE(ReadMountTable(table, path));
    ASSERT_EQ(table.size(), 2u);
    EXPECT_EQ(table[0].mountPoint, "/");
    EXPECT_EQ(table[1].mountPoint.size(), 5005u);
    EXPECT_EQ(table[1].source, "/img");
    unlink(path);

    EXPECT_FALSE(ReadMountTable(table, path));
    EXPECT_TRUE(table.empty());
    EXPECT_FALSE(ReadMountTable(table, nullptr));

    // This process's own table has its root.
    ASSERT_TRUE(ReadMountTable(table));
    EXPECT_TRUE(std::any_of(table.begin(), table.end(), [](const MountEntry &e) { return e.mountPoint == "/"; }));
}
