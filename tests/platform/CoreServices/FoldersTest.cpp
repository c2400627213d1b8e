#include <CoreServices/CoreServices.h>

#include "FileTestSupport.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

/* A private HOME and TMPDIR with the XDG variables cleared. */
class FoldersTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        fs::create_directories(mRoot + "/home");
        fs::create_directories(mRoot + "/tmp");
        setenv("HOME", (mRoot + "/home").c_str(), 1);
        setenv("TMPDIR", (mRoot + "/tmp/").c_str(), 1);
        for (const char *name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
            unsetenv(name);
    }

    std::string Path(SInt16 domain, OSType type, Boolean create, OSErr expected = noErr)
    {
        char path[1024] = "junk";
        EXPECT_EQ(expected, FSFindFolderGetPath(domain, type, create, path, sizeof path));
        return path;
    }

    std::string PrivateTemp() const { return mRoot + "/tmp/koru-" + std::to_string(geteuid()); }

    TemporaryFolder mFolder;
    const std::string mRoot = mFolder.Path();
};

mode_t ModeOf(const std::string &path)
{
    struct stat info;
    return lstat(path.c_str(), &info) == 0 ? (info.st_mode & 07777) : 0;
}

} // namespace

TEST_F(FoldersTest, TemporaryFolderIsPrivateToTheUser)
{
    EXPECT_EQ("", Path(kUserDomain, kTemporaryFolderType, kDontCreateFolder, fnfErr));
    umask(022);
    EXPECT_EQ(PrivateTemp(), Path(kUserDomain, kTemporaryFolderType, kCreateFolder));
    EXPECT_EQ(0700u, ModeOf(PrivateTemp()));
    EXPECT_EQ(PrivateTemp(), Path(kUserDomain, kTemporaryItemsInUserDomainFolderType, kDontCreateFolder));

    // A folder others may enter is refused, and so is a link to a private one.
    chmod(PrivateTemp().c_str(), 0755);
    Path(kUserDomain, kTemporaryFolderType, kCreateFolder, permErr);
    fs::remove(PrivateTemp());
    fs::create_directories(mRoot + "/elsewhere");
    chmod((mRoot + "/elsewhere").c_str(), 0700);
    fs::create_directory_symlink(mRoot + "/elsewhere", PrivateTemp());
    Path(kUserDomain, kTemporaryFolderType, kCreateFolder, permErr);
}

TEST_F(FoldersTest, ChewableFolderIsThePrivateTemporaryFolder)
{
    // Even a valid runtime folder is passed over: it is a small tmpfs.
    std::string runtime = mRoot + "/run";
    fs::create_directories(runtime);
    chmod(runtime.c_str(), 0700);
    setenv("XDG_RUNTIME_DIR", runtime.c_str(), 1);
    EXPECT_EQ("", Path(kUserDomain, kChewableItemsFolderType, kDontCreateFolder, fnfErr));
    EXPECT_EQ(PrivateTemp(), Path(kUserDomain, kChewableItemsFolderType, kCreateFolder));
}

TEST_F(FoldersTest, UserFoldersFollowTheXDGSettings)
{
    std::string home = mRoot + "/home";
    EXPECT_EQ("", Path(kUserDomain, kDesktopFolderType, kDontCreateFolder, fnfErr));
    EXPECT_EQ(home + "/Desktop", Path(kUserDomain, kDesktopFolderType, kCreateFolder));
    EXPECT_TRUE(fs::is_directory(home + "/Desktop"));
    EXPECT_EQ(home + "/.config", Path(kUserDomain, kPreferencesFolderType, kCreateFolder));
    EXPECT_EQ(home + "/.local/share", Path(kUserDomain, kApplicationSupportFolderType, kCreateFolder));
    EXPECT_EQ(home + "/.cache", Path(kOnSystemDisk, kCachedDataFolderType, kCreateFolder));
    EXPECT_EQ(home, Path(kUserDomain, kCurrentUserFolderType, kDontCreateFolder));

    std::string config = mRoot + "/config";
    setenv("XDG_CONFIG_HOME", (config + "/").c_str(), 1);
    fs::create_directories(config);
    std::ofstream(config + "/user-dirs.dirs") << "# written by xdg-user-dirs-update\n"
                                                 "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n"
                                                 "XDG_DOCUMENTS_DIR=\"" << mRoot << "/docs/\"\n";
    EXPECT_EQ(config, Path(kUserDomain, kPreferencesFolderType, kDontCreateFolder));
    EXPECT_EQ(home + "/Schreibtisch", Path(kUserDomain, kDesktopFolderType, kCreateFolder));
    EXPECT_EQ(mRoot + "/docs", Path(kUserDomain, kDocumentsFolderType, kCreateFolder));

    setenv("XDG_CACHE_HOME", "relative/cache", 1); // relative values are ignored
    EXPECT_EQ(home + "/.cache", Path(kUserDomain, kCachedDataFolderType, kDontCreateFolder));
}

TEST_F(FoldersTest, OtherDomainsTypesRefsAndBadArguments)
{
    EXPECT_EQ("/usr/share", Path(kSystemDomain, kApplicationSupportFolderType, kDontCreateFolder));
    Path(kSystemDomain, kDesktopFolderType, kDontCreateFolder, fnfErr);
    Path(kUserDomain, 0x7A7A7A7A, kCreateFolder, fnfErr);
    char tiny[4];
    EXPECT_EQ(paramErr, FSFindFolderGetPath(kUserDomain, kCurrentUserFolderType, false, tiny, sizeof tiny));
    EXPECT_EQ('\0', tiny[0]);
    EXPECT_EQ(paramErr, FSFindFolderGetPath(kUserDomain, kCurrentUserFolderType, false, nullptr, 10));
    EXPECT_EQ(paramErr, FSFindFolder(kUserDomain, kCurrentUserFolderType, false, nullptr));

    // As an FSRef.
    FSRef ref;
    ASSERT_EQ(noErr, FSFindFolder(kUserDomain, kDocumentsFolderType, kCreateFolder, &ref));
    UInt8 path[1024];
    ASSERT_EQ(noErr, FSRefMakePath(&ref, path, sizeof path));
    EXPECT_EQ(fs::canonical(mRoot + "/home/Documents").string(), reinterpret_cast<char *>(path));
    EXPECT_EQ(fnfErr, FSFindFolder(kUserDomain, 0x7A7A7A7A, kCreateFolder, &ref));
}
