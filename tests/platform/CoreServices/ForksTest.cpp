#include <CoreServices/Files.h>

#include "FileTestSupport.h"

#include <cstring>
#include <sys/xattr.h>

namespace {

using ForkName = std::vector<UniChar>;

const ForkName kDataFork;

ForkName ResourceFork()
{
    HFSUniStr255 name;
    FSGetResourceForkName(&name);
    return ForkName(name.unicode, name.unicode + name.length);
}

OSErr Open(const FSRef &ref, const ForkName &fork, SInt8 permission, FSIORefNum &refNum)
{
    return FSOpenFork(&ref, fork.size(), fork.data(), permission, &refNum);
}

std::string ReadAll(const FSRef &ref, const ForkName &fork)
{
    FSIORefNum refNum = 0;
    if (Open(ref, fork, fsRdPerm, refNum) != noErr)
        return "<unopened>";
    SInt64 size = -1;
    FSGetForkSize(refNum, &size);
    std::string bytes(static_cast<size_t>(size), '\0');
    ByteCount actual = 0;
    const OSErr status = FSReadFork(refNum, fsFromStart, 0, bytes.size(), &bytes[0], &actual);
    FSCloseFork(refNum);
    return status == noErr && actual == bytes.size() ? bytes : "<short>";
}

TEST(Forks, ResourceForkIsEntryTwoOfTheCompanionAndGoesWhenEmpty)
{
    TemporaryFolder folder;
    const std::string name = "quote \" space\nnewline é";
    WriteFile(folder / name, "d");
    const FSRef ref = RefAt(folder / name);
    const ForkName resource = ResourceFork();

    FSIORefNum refNum = 0;
    ASSERT_EQ(noErr, Open(ref, resource, fsRdWrPerm, refNum));
    ByteCount actual = 0;
    ASSERT_EQ(noErr, FSWriteFork(refNum, fsFromStart, 0, 6, "abcdef", &actual));
    ASSERT_EQ(noErr, FSWriteFork(refNum, fsAtMark, 0, 3, "ghi", &actual));
    ASSERT_EQ(noErr, FSWriteFork(refNum, fsFromStart, 10, 2, "XY", &actual)); // extends with zeros
    SInt64 size = 0;
    EXPECT_EQ(noErr, FSGetForkSize(refNum, &size));
    EXPECT_EQ(12, size);
    FSIORefNum second = 0;
    EXPECT_EQ(opWrErr, Open(ref, resource, fsWrPerm, second)); // one writer at a time
    ASSERT_EQ(noErr, FSCloseFork(refNum));
    EXPECT_EQ(rfNumErr, FSCloseFork(refNum));

    auto entries = CompanionEntries(ReadFile(folder / ("._" + name)));
    ASSERT_EQ(1u, entries.count(2));
    EXPECT_EQ(std::string("abcdefghi\0XY", 12), entries[2]);
    EXPECT_EQ(0u, entries.count(9)); // no Finder information was set
    EXPECT_EQ("d", ReadFile(folder / name));

    // Reading at the end answers eofErr with what there was.
    ASSERT_EQ(noErr, Open(ref, resource, fsRdPerm, refNum));
    char buffer[8];
    EXPECT_EQ(eofErr, FSReadFork(refNum, fsFromStart, 8, sizeof buffer, buffer, &actual));
    EXPECT_EQ(4u, actual);
    EXPECT_EQ(posErr, FSReadFork(refNum, fsFromStart, -1, 1, buffer, &actual));
    EXPECT_EQ(wrPermErr, FSWriteFork(refNum, fsFromStart, 0, 1, "z", &actual));
    FSCloseFork(refNum);

    // Truncating keeps the head; truncating to nothing removes the companion.
    ASSERT_EQ(noErr, Open(ref, resource, fsRdWrPerm, refNum));
    ASSERT_EQ(noErr, FSSetForkSize(refNum, fsFromStart, 3));
    ASSERT_EQ(noErr, FSCloseFork(refNum));
    EXPECT_EQ("abc", CompanionEntries(ReadFile(folder / ("._" + name)))[2]);
    ASSERT_EQ(noErr, Open(ref, resource, fsRdWrPerm, refNum));
    ASSERT_EQ(noErr, FSSetForkSize(refNum, fsFromStart, 0));
    ASSERT_EQ(noErr, FSCloseFork(refNum));
    EXPECT_FALSE(Exists(folder / ("._" + name)));
}

TEST(Forks, DeletingTheResourceForkKeepsFinderInformation)
{
    TemporaryFolder folder;
    WriteFile(folder / "doc", "");
    const FSRef ref = RefAt(folder / "doc");
    FSCatalogInfo info{};
    FileInfo finder{};
    finder.fileType = 0x54455854;    // 'TEXT'
    finder.fileCreator = 0x74747874; // 'ttxt'
    std::memcpy(info.finderInfo, &finder, sizeof finder);
    ASSERT_EQ(noErr, FSSetCatalogInfo(&ref, kFSCatInfoFinderInfo, &info));
    const ForkName resource = ResourceFork();
    FSIORefNum refNum = 0;
    ASSERT_EQ(noErr, Open(ref, resource, fsWrPerm, refNum));
    ASSERT_EQ(noErr, FSWriteFork(refNum, fsFromStart, 0, 4, "rsrc", nullptr));
    ASSERT_EQ(noErr, FSCloseFork(refNum));

    auto entries = CompanionEntries(ReadFile(folder / "._doc"));
    EXPECT_EQ("rsrc", entries[2]);
    ASSERT_EQ(32u, entries[9].size());
    EXPECT_EQ("TEXTttxt", entries[9].substr(0, 8)); // big-endian on disk

    ASSERT_EQ(noErr, FSDeleteFork(&ref, resource.size(), resource.data()));
    entries = CompanionEntries(ReadFile(folder / "._doc"));
    EXPECT_EQ(0u, entries.count(2));
    EXPECT_EQ("TEXTttxt", entries[9].substr(0, 8));

    // Clearing the Finder information as well leaves nothing to keep.
    std::memset(info.finderInfo, 0, sizeof info.finderInfo);
    ASSERT_EQ(noErr, FSSetCatalogInfo(&ref, kFSCatInfoFinderInfo, &info));
    EXPECT_FALSE(Exists(folder / "._doc"));
}

TEST(Forks, NetatalkResourceForkReadsWhenThereIsNoCompanion)
{
    TemporaryFolder folder;
    WriteFile(folder / "shared", "x");
    if (setxattr((folder / "shared").c_str(), "user.org.netatalk.ResourceFork", "from netatalk", 13, 0) != 0)
        GTEST_SKIP() << "this file system keeps no user attributes";
    const FSRef ref = RefAt(folder / "shared");
    EXPECT_EQ("from netatalk", ReadAll(ref, ResourceFork()));
    // Writing moves the fork into a companion, which then wins.
    FSIORefNum refNum = 0;
    ASSERT_EQ(noErr, Open(ref, ResourceFork(), fsRdWrPerm, refNum));
    ASSERT_EQ(noErr, FSWriteFork(refNum, fsFromLEOF, 0, 1, "!", nullptr));
    ASSERT_EQ(noErr, FSCloseFork(refNum));
    EXPECT_EQ("from netatalk!", CompanionEntries(ReadFile(folder / "._shared"))[2]);
    EXPECT_EQ("from netatalk!", ReadAll(ref, ResourceFork()));
}

TEST(Forks, DataForkIsTheFileAndEveryFileHasAnEmptyResourceFork)
{
    TemporaryFolder folder;
    WriteFile(folder / "data", "0123456789");
    const FSRef ref = RefAt(folder / "data");
    EXPECT_EQ("", ReadAll(ref, ResourceFork()));
    EXPECT_EQ("0123456789", ReadAll(ref, kDataFork));
    EXPECT_EQ(noErr, FSCreateFork(&ref, ResourceFork().size(), ResourceFork().data()));
    EXPECT_EQ(errFSForkExists, FSCreateFork(&ref, 0, nullptr));
    EXPECT_FALSE(Exists(folder / "._data")); // opening and reading made no companion

    FSIORefNum refNum = 0;
    ASSERT_EQ(noErr, Open(ref, kDataFork, fsRdWrPerm, refNum));
    ASSERT_EQ(noErr, FSWriteFork(refNum, fsFromLEOF, 0, 3, "abc", nullptr));
    SInt64 position = 0;
    EXPECT_EQ(noErr, FSGetForkPosition(refNum, &position));
    EXPECT_EQ(13, position);
    ASSERT_EQ(noErr, FSSetForkSize(refNum, fsFromStart, 5));
    EXPECT_EQ(noErr, FSGetForkPosition(refNum, &position));
    EXPECT_EQ(5, position);
    ASSERT_EQ(noErr, FSCloseFork(refNum));
    EXPECT_EQ("01234", ReadFile(folder / "data"));
    ASSERT_EQ(noErr, FSDeleteFork(&ref, 0, nullptr));
    EXPECT_EQ("", ReadFile(folder / "data"));
    EXPECT_FALSE(Exists(folder / "._data"));
}

TEST(Forks, BadArgumentsAndStaleRefs)
{
    TemporaryFolder folder;
    WriteFile(folder / "gone", "x");
    const FSRef gone = RefAt(folder / "gone");
    const FSRef dir = RefAt(folder.Path());
    unlink((folder / "gone").c_str());
    FSIORefNum refNum = 7;
    EXPECT_EQ(fnfErr, FSOpenFork(&gone, 0, nullptr, fsRdPerm, &refNum));
    EXPECT_EQ(0, refNum);
    EXPECT_EQ(paramErr, FSOpenFork(nullptr, 0, nullptr, fsRdPerm, &refNum));
    EXPECT_EQ(notAFileErr, FSOpenFork(&dir, 0, nullptr, fsRdPerm, &refNum));
    const UniChar other[] = {'x'};
    WriteFile(folder / "here", "x");
    const FSRef here = RefAt(folder / "here");
    EXPECT_EQ(errFSForkNotFound, FSOpenFork(&here, 1, other, fsRdPerm, &refNum));
    EXPECT_EQ(rfNumErr, FSReadFork(0, fsFromStart, 0, 0, nullptr, nullptr));
    EXPECT_EQ(rfNumErr, FSGetForkSize(12345, nullptr));
    EXPECT_EQ(rfNumErr, FSSetForkSize(12345, fsFromStart, 0));
}

} // namespace
