// File URLs made from paths and back, path-component edits, and escapes.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

#include <unistd.h>

namespace {

struct Releaser {
    void operator()(const void *object) const { CFRelease(object); }
};
// A CF reference released at the end of its scope.
template <typename T> using Owned = std::unique_ptr<std::remove_pointer_t<T>, Releaser>;

// The text of a string the caller owns, released here.
std::string Text(CFStringRef s)
{
    char buffer[1024];
    bool ok = s != nullptr && CFStringGetCString(s, buffer, sizeof buffer, kCFStringEncodingUTF8);
    if (s != nullptr)
        CFRelease(s);
    return ok ? buffer : "<null>";
}

std::string String(CFURLRef url)
{
    return url ? Text(static_cast<CFStringRef>(CFRetain(CFURLGetString(url)))) : "<null>";
}

// The text of a URL the caller owns, released here.
std::string UrlText(CFURLRef url)
{
    return String(Owned<CFURLRef>(url).get());
}

std::string Path(CFURLRef url, CFURLPathStyle style = kCFURLPOSIXPathStyle)
{
    return Text(CFURLCopyFileSystemPath(url, style));
}

Owned<CFURLRef> MakeURL(const char *text, CFURLRef base = nullptr)
{
    Owned<CFStringRef> string(CFStringCreateWithCString(nullptr, text, kCFStringEncodingUTF8));
    return Owned<CFURLRef>(CFURLCreateWithString(nullptr, string.get(), base));
}

Owned<CFURLRef> FileURL(CFStringRef path, CFURLPathStyle style, bool isDirectory)
{
    return Owned<CFURLRef>(CFURLCreateWithFileSystemPath(nullptr, path, style, isDirectory));
}

TEST(CFURL, FilePathsRoundTrip)
{
    auto file = FileURL(CFSTR("/tmp/a b/caf\u00e9.txt"), kCFURLPOSIXPathStyle, false);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(String(file.get()), "file:///tmp/a%20b/caf%C3%A9.txt");
    EXPECT_EQ(Path(file.get()), "/tmp/a b/caf\u00e9.txt");
    EXPECT_FALSE(CFURLHasDirectoryPath(file.get()));
    EXPECT_EQ(Text(CFURLCopyLastPathComponent(file.get())), "caf\u00e9.txt");
    EXPECT_EQ(Text(CFURLCopyPathExtension(file.get())), "txt");

    UInt8 path[64];
    ASSERT_TRUE(CFURLGetFileSystemRepresentation(file.get(), true, path, sizeof path));
    EXPECT_STREQ(reinterpret_cast<char *>(path), "/tmp/a b/caf\u00e9.txt");
    UInt8 tiny[5] = {'x', 'x', 'x', 'x', 'x'};
    EXPECT_FALSE(CFURLGetFileSystemRepresentation(file.get(), true, tiny, sizeof tiny));
    EXPECT_EQ(tiny[0], 0);

    Owned<CFURLRef> parent(CFURLCreateCopyDeletingLastPathComponent(nullptr, file.get()));
    EXPECT_TRUE(CFURLHasDirectoryPath(parent.get()));
    EXPECT_EQ(Path(parent.get()), "/tmp/a b");
    EXPECT_EQ(UrlText(CFURLCreateCopyAppendingPathComponent(nullptr, parent.get(), CFSTR("sub"), true)),
              "file:///tmp/a%20b/sub/");
    EXPECT_EQ(UrlText(CFURLCreateCopyDeletingPathExtension(nullptr, file.get())), "file:///tmp/a%20b/caf%C3%A9");

    // A directory URL keeps its slash in the text but not in the path.
    auto folder = FileURL(CFSTR("/usr/"), kCFURLPOSIXPathStyle, true);
    EXPECT_TRUE(CFURLHasDirectoryPath(folder.get()));
    EXPECT_EQ(Path(folder.get()), "/usr");
    EXPECT_EQ(Path(FileURL(CFSTR("/"), kCFURLPOSIXPathStyle, true).get()), "/");
}

TEST(CFURL, RelativePathsStayRelativeToTheirBase)
{
    auto usr = FileURL(CFSTR("/usr/"), kCFURLPOSIXPathStyle, true);
    Owned<CFURLRef> share(
        CFURLCreateWithFileSystemPathRelativeToBase(nullptr, CFSTR("local/share"), kCFURLPOSIXPathStyle, true, usr.get()));
    ASSERT_NE(share, nullptr);
    EXPECT_EQ(String(share.get()), "local/share/");
    EXPECT_EQ(CFURLGetBaseURL(share.get()), usr.get());
    EXPECT_EQ(Path(share.get()), "local/share");
    EXPECT_EQ(UrlText(CFURLCopyAbsoluteURL(share.get())), "file:///usr/local/share/");
    UInt8 resolved[64];
    ASSERT_TRUE(CFURLGetFileSystemRepresentation(share.get(), true, resolved, sizeof resolved));
    EXPECT_STREQ(reinterpret_cast<char *>(resolved), "/usr/local/share");
    ASSERT_TRUE(CFURLGetFileSystemRepresentation(share.get(), false, resolved, sizeof resolved));
    EXPECT_STREQ(reinterpret_cast<char *>(resolved), "local/share");

    // Without a base the current folder becomes the base; the path stays as given.
    char cwd[1024];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    auto url = FileURL(CFSTR("some/file"), kCFURLPOSIXPathStyle, false);
    EXPECT_EQ(String(url.get()), "some/file");
    ASSERT_NE(CFURLGetBaseURL(url.get()), nullptr);
    EXPECT_EQ(Path(CFURLGetBaseURL(url.get())), cwd);
    EXPECT_EQ(Path(Owned<CFURLRef>(CFURLCopyAbsoluteURL(url.get())).get()), std::string(cwd) + "/some/file");
    const UInt8 bytes[] = "/x/y";
    EXPECT_EQ(UrlText(CFURLCreateFromFileSystemRepresentation(nullptr, bytes, 4, false)), "file:///x/y");
}

// The reference resolution examples of RFC 3986, section 5.4.
TEST(CFURL, ReferencesResolveByTheRFCAlgorithm)
{
    const char *const examples[][2] = {
        {"g:h", "g:h"}, {"g", "http://a/b/c/g"}, {"./g", "http://a/b/c/g"}, {"g/", "http://a/b/c/g/"},
        {"/g", "http://a/g"}, {"//g", "http://g"}, {"?y", "http://a/b/c/d;p?y"}, {"g?y", "http://a/b/c/g?y"},
        {"#s", "http://a/b/c/d;p?q#s"}, {"g#s", "http://a/b/c/g#s"}, {"g?y#s", "http://a/b/c/g?y#s"},
        {";x", "http://a/b/c/;x"}, {"g;x", "http://a/b/c/g;x"}, {"g;x?y#s", "http://a/b/c/g;x?y#s"},
        {"", "http://a/b/c/d;p?q"}, {".", "http://a/b/c/"}, {"./", "http://a/b/c/"}, {"..", "http://a/b/"},
        {"../", "http://a/b/"}, {"../g", "http://a/b/g"}, {"../..", "http://a/"}, {"../../", "http://a/"},
        {"../../g", "http://a/g"},
        // Abnormal examples.
        {"../../../g", "http://a/g"}, {"../../../../g", "http://a/g"}, {"/./g", "http://a/g"},
        {"/../g", "http://a/g"}, {"g.", "http://a/b/c/g."}, {".g", "http://a/b/c/.g"}, {"g..", "http://a/b/c/g.."},
        {"..g", "http://a/b/c/..g"}, {"./../g", "http://a/b/g"}, {"./g/.", "http://a/b/c/g/"},
        {"g/./h", "http://a/b/c/g/h"}, {"g/../h", "http://a/b/c/h"}, {"g;x=1/./y", "http://a/b/c/g;x=1/y"},
        {"g;x=1/../y", "http://a/b/c/y"}, {"g?y/./x", "http://a/b/c/g?y/./x"}, {"g?y/../x", "http://a/b/c/g?y/../x"},
        {"g#s/./x", "http://a/b/c/g#s/./x"}, {"g#s/../x", "http://a/b/c/g#s/../x"}, {"http:g", "http:g"},
    };
    auto base = MakeURL("http://a/b/c/d;p?q");
    ASSERT_NE(base, nullptr);
    for (const auto &example : examples) {
        auto relative = MakeURL(example[0], base.get());
        ASSERT_NE(relative, nullptr) << example[0];
        EXPECT_EQ(UrlText(CFURLCopyAbsoluteURL(relative.get())), example[1]) << example[0];
    }

    // A relative file URL's path is worked out against its base.
    auto documents = MakeURL("file:///Users/me/Documents/");
    auto picture = MakeURL("../Pictures/a.png", documents.get());
    EXPECT_EQ(Path(Owned<CFURLRef>(CFURLCopyAbsoluteURL(picture.get())).get()), "/Users/me/Pictures/a.png");
}

TEST(CFURL, ResourceSpecifierIsWhatFollowsThePath)
{
    const char *const cases[][2] = {
        {"http://host/path?query#fragment", "?query#fragment"}, {"http://host/path;params?q", ";params?q"},
        {"http://host/path", "<null>"}, {"http://host", "<null>"},
        {"mailto:someone@example.org", "someone@example.org"},
    };
    for (const auto &c : cases) {
        auto url = MakeURL(c[0]);
        ASSERT_NE(url, nullptr) << c[0];
        EXPECT_EQ(Text(CFURLCopyResourceSpecifier(url.get())), c[1]) << c[0];
    }
    EXPECT_EQ(CFURLCopyResourceSpecifier(nullptr), nullptr);
}

TEST(CFURL, WindowsAndHFSPathStyles)
{
    auto windows = FileURL(CFSTR("C:\\WINDOWS"), kCFURLWindowsPathStyle, true);
    EXPECT_EQ(String(windows.get()), "file:///C:/WINDOWS/");
    EXPECT_EQ(CFURLGetBaseURL(windows.get()), nullptr);
    EXPECT_EQ(Path(windows.get(), kCFURLWindowsPathStyle), "C:\\WINDOWS");
    EXPECT_EQ(String(FileURL(CFSTR("dir\\file.txt"), kCFURLWindowsPathStyle, false).get()), "dir/file.txt");

    // A relative HFS path makes a relative URL.
    auto foo = FileURL(CFSTR("foo"), kCFURLHFSPathStyle, false);
    ASSERT_NE(foo, nullptr);
    EXPECT_EQ(String(foo.get()), "foo");
    EXPECT_EQ(Path(foo.get(), kCFURLHFSPathStyle), "foo");

    // An absolute one starts with the name of the volume holding it (the
    // machine's name for a root volume without a label), and reads back.
    std::string hfs = Path(FileURL(CFSTR("/usr/bin/env"), kCFURLPOSIXPathStyle, false).get(), kCFURLHFSPathStyle);
    ASSERT_NE(hfs.find(':'), std::string::npos);
    EXPECT_NE(hfs.front(), ':');
    EXPECT_NE(hfs.find(":bin:env"), std::string::npos) << hfs;
    Owned<CFStringRef> hfsText(CFStringCreateWithCString(nullptr, hfs.c_str(), kCFStringEncodingUTF8));
    EXPECT_EQ(String(FileURL(hfsText.get(), kCFURLHFSPathStyle, false).get()), "file:///usr/bin/env");
    EXPECT_EQ(CFURLCreateWithFileSystemPath(nullptr, CFSTR("NoSuchVolume-koru:x"), kCFURLHFSPathStyle, false), nullptr);
}

TEST(CFURL, NetworkURLsDecompose)
{
    auto url = MakeURL("https://user@example.org:8443/a/b.html?q=1#top");
    ASSERT_NE(url, nullptr);
    EXPECT_EQ(Text(CFURLCopyScheme(url.get())), "https");
    EXPECT_EQ(Text(CFURLCopyHostName(url.get())), "example.org");
    EXPECT_EQ(CFURLGetPortNumber(url.get()), 8443);
    EXPECT_EQ(Text(CFURLCopyPath(url.get())), "/a/b.html");
    EXPECT_EQ(Text(CFURLCopyQueryString(url.get(), nullptr)), "q=1");
    EXPECT_EQ(Text(CFURLCopyFragment(url.get(), nullptr)), "top");

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
    // NULL leaves every escape.
    EXPECT_EQ(Text(CFURLCreateStringByReplacingPercentEscapes(nullptr, CFSTR("a%20b%2Fc"), nullptr)), "a%20b%2Fc");
}

}  // namespace
