#include <KORU/Utils.h>

#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

class PathOperationsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/PathOperationsTest.XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(pattern));
        mRoot = fs::canonical(pattern).string();
        mStart = fs::current_path();
    }
    void TearDown() override
    {
        fs::current_path(mStart);
        fs::remove_all(mRoot);
    }
    std::string mRoot;
    fs::path mStart;
};

} // namespace

TEST(PathStrings, FolderAndFileParts)
{
    EXPECT_EQ("/a/b", Utils::GetDirFromPath("/a/b/c"));
    EXPECT_EQ("", Utils::GetDirFromPath("/c"));
    EXPECT_EQ("", Utils::GetFilenameFromPath("/a/b/"));
    EXPECT_EQ("c", Utils::GetFilenameFromPath("c"));
    EXPECT_EQ("c.txt", Utils::GetFilenameFromPath("/a/b/c.txt"));
}

TEST_F(PathOperationsTest, CurrentFolderHelpersAndTheDirExistsSideEffect)
{
    std::string kept = "kept";
    EXPECT_TRUE(GetCurrentDir(kept));
    EXPECT_EQ("kept", kept); // never written
    EXPECT_EQ("", Utils::GetHomeDirName());
    EXPECT_FALSE(SetCurrentDir(mRoot + "/missing"));

    fs::create_directory(mRoot + "/inner");
    EXPECT_TRUE(Utils::DirExists(mRoot + "/inner"));
    EXPECT_EQ(fs::path(mRoot + "/inner"), fs::current_path()); // left in the tested folder
    std::ofstream(mRoot + "/file") << "x";
    EXPECT_FALSE(Utils::DirExists(mRoot + "/missing") || Utils::DirExists(mRoot + "/file"));
    EXPECT_TRUE(SetCurrentDir(mRoot));
    EXPECT_EQ(fs::path(mRoot), fs::current_path());
}

TEST_F(PathOperationsTest, CreatingFoldersAndPaths)
{
    std::string deep = mRoot + "/x/y/z/";
    EXPECT_TRUE(Utils::CreateDirPath(deep, true) && fs::is_directory(deep));
    EXPECT_FALSE(Utils::CreateDirPath(deep, true));
    EXPECT_TRUE(Utils::CreateDirPath(deep, false));
    EXPECT_FALSE(Utils::CreateDirPath("", false));

    EXPECT_TRUE(Utils::CreateDir(mRoot + "/x", false));  // exists: fine without force
    EXPECT_FALSE(Utils::CreateDir(mRoot + "/x", true));  // mkdir of an existing folder
    EXPECT_TRUE(Utils::CreateDir(mRoot + "/new", true));
    struct stat info;
    ASSERT_EQ(0, stat((mRoot + "/new").c_str(), &info));
    EXPECT_EQ(0755 & ~umask(022), info.st_mode & 0777);
}

TEST_F(PathOperationsTest, DeletingOnlyEverRemovesEmptyFolders)
{
    fs::create_directories(mRoot + "/full/sub");
    std::ofstream(mRoot + "/full/file") << "data";
    EXPECT_TRUE(Utils::ListDirectory(mRoot + "/full").empty());
    EXPECT_FALSE(Utils::DeleteDir(mRoot + "/full", true));
    EXPECT_TRUE(fs::exists(mRoot + "/full/file"));
    EXPECT_TRUE(Utils::DeleteDir(mRoot + "/full/sub", true));
    EXPECT_TRUE(Utils::DoDeleteFile(mRoot + "/full/file"));
    EXPECT_FALSE(Utils::DoDeleteFile(mRoot + "/full/file"));
    EXPECT_TRUE(Utils::DeleteDir(mRoot + "/full", false));
    EXPECT_FALSE(fs::exists(mRoot + "/full"));
}

TEST_F(PathOperationsTest, FileFacts)
{
    std::string file = mRoot + "/data";
    std::ofstream(file) << std::string(5000, 'k');
    EXPECT_TRUE(Utils::FileExists(file) && !Utils::FileExists(mRoot + "/missing"));
    EXPECT_EQ(5000u, Utils::GetFileLength(file));
    EXPECT_EQ(0u, Utils::GetFileLength(mRoot + "/missing"));
    struct stat info;
    ASSERT_EQ(0, stat(file.c_str(), &info));
    EXPECT_EQ(static_cast<uint32_t>(info.st_ctime), Utils::GetFileCreationDate(file));
    EXPECT_EQ(0u, Utils::GetFileCreationDate(mRoot + "/missing"));
    EXPECT_FALSE(Utils::CopyFile(file, mRoot + "/copy", true));
    EXPECT_FALSE(fs::exists(mRoot + "/copy"));
}

TEST_F(PathOperationsTest, TemporaryAndDocumentsFolders)
{
    setenv("TMPDIR", mRoot.c_str(), 1);
    setenv("HOME", mRoot.c_str(), 1);
    unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(mRoot + "/koru-" + std::to_string(geteuid()), Utils::GetTempDirName());
    EXPECT_EQ(mRoot + "/Documents", Utils::GetUserDocumentsDirName());
    std::ofstream(mRoot + "/Documents.tmp") << "x";
    fs::remove(mRoot + "/Documents");
    fs::rename(mRoot + "/Documents.tmp", mRoot + "/Documents"); // a file in the way
    EXPECT_EQ("", Utils::GetUserDocumentsDirName());
}

TEST(NSStringToWString, OneElementPerUTF16Unit)
{
    EXPECT_TRUE(Utils::nsstring2wstring(nullptr).empty());
    const UniChar units[] = {'A', 0x00E9, 0xD83D, 0xDE00};
    CFStringRef text = CFStringCreateWithCharacters(nullptr, units, 4);
    WString wide = Utils::nsstring2wstring((NSString *)text);
    CFRelease(text);
    EXPECT_EQ(WString({L'A', 0x00E9, 0xD83D, 0xDE00}), wide);
}
