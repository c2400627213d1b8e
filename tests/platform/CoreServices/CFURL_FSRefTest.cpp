#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/Files.h>

#include "FileTestSupport.h"

namespace {

CFURLRef FileURL(const std::string &path, bool isDirectory)
{
    return CFURLCreateFromFileSystemRepresentation(kCFAllocatorDefault, reinterpret_cast<const UInt8 *>(path.data()),
                                                   static_cast<CFIndex>(path.size()), isDirectory);
}

std::string URLPath(CFURLRef url)
{
    UInt8 path[PATH_MAX];
    return CFURLGetFileSystemRepresentation(url, true, path, sizeof path) ? reinterpret_cast<char *>(path) : "";
}

TEST(CFURL_FSRef, URLsAndRefsAgreeAndFailuresAreNeutral)
{
    TemporaryFolder folder;
    mkdir((folder / "dir").c_str(), 0755);
    WriteFile(folder / "dir/file", "");
    symlink("dir", (folder / "link").c_str());

    const FSRef dir = RefAt(folder / "dir"), file = RefAt(folder / "dir/file");
    CFURLRef dirURL = CFURLCreateFromFSRef(kCFAllocatorDefault, &dir);
    CFURLRef fileURL = CFURLCreateFromFSRef(kCFAllocatorDefault, &file);
    ASSERT_NE(nullptr, dirURL);
    ASSERT_NE(nullptr, fileURL);
    EXPECT_TRUE(CFURLHasDirectoryPath(dirURL));
    EXPECT_FALSE(CFURLHasDirectoryPath(fileURL));
    EXPECT_EQ(folder / "dir/file", URLPath(fileURL));

    FSRef back;
    ASSERT_TRUE(CFURLGetFSRef(dirURL, &back));
    EXPECT_EQ(noErr, FSCompareFSRefs(&dir, &back));
    CFRelease(dirURL);
    CFRelease(fileURL);

    // A URL of a link names the link: the ref and the URL made from it agree.
    CFURLRef linkURL = FileURL(folder / "link", false);
    ASSERT_TRUE(CFURLGetFSRef(linkURL, &back));
    EXPECT_EQ(folder / "link", PathOf(back));
    CFURLRef again = CFURLCreateFromFSRef(kCFAllocatorDefault, &back);
    EXPECT_FALSE(CFURLHasDirectoryPath(again));
    EXPECT_EQ(folder / "link", URLPath(again));
    CFRelease(again);
    CFRelease(linkURL);

    // Failures are neutral.
    FSRef ref;
    CFURLRef missing = FileURL(folder / "missing", false);
    EXPECT_FALSE(CFURLGetFSRef(missing, &ref));
    CFRelease(missing);
    CFURLRef web = CFURLCreateWithString(kCFAllocatorDefault, CFSTR("http://example.org/x"), nullptr);
    ASSERT_NE(nullptr, web);
    EXPECT_FALSE(CFURLGetFSRef(web, &ref));
    CFRelease(web);
    EXPECT_FALSE(CFURLGetFSRef(nullptr, &ref));
    EXPECT_EQ(nullptr, CFURLCreateFromFSRef(kCFAllocatorDefault, nullptr));

    WriteFile(folder / "gone", "");
    const FSRef gone = RefAt(folder / "gone");
    unlink((folder / "gone").c_str());
    EXPECT_EQ(nullptr, CFURLCreateFromFSRef(kCFAllocatorDefault, &gone));
}

} // namespace
