// File URLs made from paths and back, path-component edits, and escapes.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <string>

#include <unistd.h>

namespace {

std::string Text(CFStringRef s)
{
    char buffer[1024];
    bool ok = s != nullptr && CFStringGetCString(s, buffer, sizeof buffer, kCFStringEncodingUTF8);
    if (s != nullptr)
        CFRelease(s);
    return ok ? buffer : "<null>";
}

std::string UrlText(CFURLRef url)
{
    std::string text = url ? Text(static_cast<CFStringRef>(CFRetain(CFURLGetString(url)))) : "<null>";
    if (url)
        CFRelease(url);
    return text;
}

TEST(CFURL, FilePathsRoundTrip)
{
    CFURLRef file = CFURLCreateWithFileSystemPath(nullptr, CFSTR("/tmp/a b/caf\u00e9.txt"), kCFURLPOSIXPathStyle, false);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(Text(static_cast<CFStringRef>(CFRetain(CFURLGetString(file)))), "file:///tmp/a%20b/caf%C3%A9.txt");
    EXPECT_EQ(Text(CFURLCopyFileSystemPath(file, kCFURLPOSIXPathStyle)), "/tmp/a b/caf\u00e9.txt");
    EXPECT_FALSE(CFURLHasDirectoryPath(file));
    EXPECT_EQ(Text(CFURLCopyLastPathComponent(file)), "caf\u00e9.txt");
    EXPECT_EQ(Text(CFURLCopyPathExtension(file)), "txt");

    UInt8 path[64];
    ASSERT_TRUE(CFURLGetFileSystemRepresentation(file, true, path, sizeof path));
    EXPECT_STREQ(reinterpret_cast<char *>(path), "/tmp/a b/caf\u00e9.txt");
    UInt8 tiny[5] = {'x', 'x', 'x', 'x', 'x'};
    EXPECT_FALSE(CFURLGetFileSystemRepresentation(file, true, tiny, sizeof tiny));
    EXPECT_EQ(tiny[0], 0);

    CFURLRef parent = CFURLCreateCopyDeletingLastPathComponent(nullptr, file);
    EXPECT_TRUE(CFURLHasDirectoryPath(parent));
    EXPECT_EQ(Text(CFURLCopyFileSystemPath(parent, kCFURLPOSIXPathStyle)), "/tmp/a b");
    CFURLRef child = CFURLCreateCopyAppendingPathComponent(nullptr, parent, CFSTR("sub"), true);
    EXPECT_EQ(UrlText(child), "file:///tmp/a%20b/sub/");
    CFURLRef plain = CFURLCreateCopyDeletingPathExtension(nullptr, file);
    EXPECT_EQ(Text(CFURLCopyFileSystemPath(plain, kCFURLPOSIXPathStyle)), "/tmp/a b/caf\u00e9");
    CFRelease(plain);
    CFRelease(parent);
    CFRelease(file);

    // A directory URL keeps its slash in the text but not in the path.
    CFURLRef folder = CFURLCreateWithFileSystemPath(nullptr, CFSTR("/usr/"), kCFURLPOSIXPathStyle, true);
    EXPECT_TRUE(CFURLHasDirectoryPath(folder));
    EXPECT_EQ(Text(CFURLCopyFileSystemPath(folder, kCFURLPOSIXPathStyle)), "/usr");
    CFRelease(folder);
    CFURLRef root = CFURLCreateWithFileSystemPath(nullptr, CFSTR("/"), kCFURLPOSIXPathStyle, true);
    EXPECT_EQ(Text(CFURLCopyFileSystemPath(root, kCFURLPOSIXPathStyle)), "/");
    CFRelease(root);
}

TEST(CFURL, RelativePathsAreTakenAgainstTheCurrentFolder)
{
    char cwd[1024];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    CFURLRef url = CFURLCreateWithFileSystemPath(nullptr, CFSTR("some/file"), kCFURLPOSIXPathStyle, false);
    EXPECT_EQ(Text(CFURLCopyFileSystemPath(url, kCFURLPOSIXPathStyle)), std::string(cwd) + "/some/file");
    CFRelease(url);
    const UInt8 bytes[] = "/x/y";
    CFURLRef fromBytes = CFURLCreateFromFileSystemRepresentation(nullptr, bytes, 4, false);
    EXPECT_EQ(UrlText(fromBytes), "file:///x/y");
}

TEST(CFURL, NetworkURLsDecompose)
{
    CFURLRef url = CFURLCreateWithString(nullptr, CFSTR("https://user@example.org:8443/a/b.html?q=1#top"), nullptr);
    ASSERT_NE(url, nullptr);
    EXPECT_EQ(Text(CFURLCopyScheme(url)), "https");
    EXPECT_EQ(Text(CFURLCopyHostName(url)), "example.org");
    EXPECT_EQ(CFURLGetPortNumber(url), 8443);
    EXPECT_EQ(Text(CFURLCopyPath(url)), "/a/b.html");
    EXPECT_EQ(Text(CFURLCopyQueryString(url, nullptr)), "q=1");
    EXPECT_EQ(Text(CFURLCopyFragment(url, nullptr)), "top");
    CFURLRef sibling = CFURLCreateCopyAppendingPathComponent(
        nullptr, CFURLCreateCopyDeletingLastPathComponent(nullptr, url), CFSTR("c.html"), false);
    EXPECT_EQ(Text(CFURLCopyPath(sibling)), "/a/c.html");
    CFRelease(sibling);
    CFRelease(url);

    EXPECT_EQ(CFURLCreateWithString(nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(CFURLCopyFileSystemPath(nullptr, kCFURLPOSIXPathStyle), nullptr);
    EXPECT_FALSE(CFURLHasDirectoryPath(nullptr));
}

TEST(CFURL, PercentEscapesRoundTrip)
{
    CFStringRef escaped = CFURLCreateStringByAddingPercentEscapes(nullptr, CFSTR("a b/\u00e9?&"), nullptr,
                                                                  CFSTR("?&"), kCFStringEncodingUTF8);
    EXPECT_EQ(Text(static_cast<CFStringRef>(CFRetain(escaped))), "a%20b/%C3%A9%3F%26");
    EXPECT_EQ(Text(CFURLCreateStringByReplacingPercentEscapes(nullptr, escaped, CFSTR(""))), "a b/\u00e9?&");
    EXPECT_EQ(Text(CFURLCreateStringByReplacingPercentEscapes(nullptr, escaped, CFSTR("&"))), "a b/\u00e9?%26");
    CFRelease(escaped);
    EXPECT_EQ(CFURLCreateStringByReplacingPercentEscapes(nullptr, CFSTR("bad%2"), CFSTR("")), nullptr);
}

}  // namespace
