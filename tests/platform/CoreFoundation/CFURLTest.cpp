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

// The text of a URL; UrlText also releases the URL.
std::string String(CFURLRef url)
{
    return url ? Text(static_cast<CFStringRef>(CFRetain(CFURLGetString(url)))) : "<null>";
}

std::string UrlText(CFURLRef url)
{
    std::string text = String(url);
    if (url)
        CFRelease(url);
    return text;
}

std::string Path(CFURLRef url, CFURLPathStyle style = kCFURLPOSIXPathStyle)
{
    return Text(CFURLCopyFileSystemPath(url, style));
}

TEST(CFURL, FilePathsRoundTrip)
{
    CFURLRef file = CFURLCreateWithFileSystemPath(nullptr, CFSTR("/tmp/a b/caf\u00e9.txt"), kCFURLPOSIXPathStyle, false);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(String(file), "file:///tmp/a%20b/caf%C3%A9.txt");
    EXPECT_EQ(Path(file), "/tmp/a b/caf\u00e9.txt");
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
    EXPECT_EQ(Path(parent), "/tmp/a b");
    CFURLRef child = CFURLCreateCopyAppendingPathComponent(nullptr, parent, CFSTR("sub"), true);
    EXPECT_EQ(UrlText(child), "file:///tmp/a%20b/sub/");
    EXPECT_EQ(UrlText(CFURLCreateCopyDeletingPathExtension(nullptr, file)), "file:///tmp/a%20b/caf%C3%A9");
    CFRelease(parent);
    CFRelease(file);

    // A directory URL keeps its slash in the text but not in the path.
    CFURLRef folder = CFURLCreateWithFileSystemPath(nullptr, CFSTR("/usr/"), kCFURLPOSIXPathStyle, true);
    EXPECT_TRUE(CFURLHasDirectoryPath(folder));
    EXPECT_EQ(Path(folder), "/usr");
    CFRelease(folder);
    CFURLRef root = CFURLCreateWithFileSystemPath(nullptr, CFSTR("/"), kCFURLPOSIXPathStyle, true);
    EXPECT_EQ(Path(root), "/");
    CFRelease(root);
}

TEST(CFURL, RelativePathsStayRelativeToTheirBase)
{
    CFURLRef usr = CFURLCreateWithFileSystemPath(nullptr, CFSTR("/usr/"), kCFURLPOSIXPathStyle, true);
    CFURLRef share =
        CFURLCreateWithFileSystemPathRelativeToBase(nullptr, CFSTR("local/share"), kCFURLPOSIXPathStyle, true, usr);
    ASSERT_NE(share, nullptr);
    EXPECT_EQ(String(share), "local/share/");
    EXPECT_EQ(CFURLGetBaseURL(share), usr);
    EXPECT_EQ(Path(share), "local/share");
    EXPECT_EQ(UrlText(CFURLCopyAbsoluteURL(share)), "file:///usr/local/share/");
    UInt8 resolved[64];
    ASSERT_TRUE(CFURLGetFileSystemRepresentation(share, true, resolved, sizeof resolved));
    EXPECT_STREQ(reinterpret_cast<char *>(resolved), "/usr/local/share");
    CFRelease(share);
    CFRelease(usr);

    // Without a base the current folder becomes the base; the path stays as given.
    char cwd[1024];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    CFURLRef url = CFURLCreateWithFileSystemPath(nullptr, CFSTR("some/file"), kCFURLPOSIXPathStyle, false);
    EXPECT_EQ(String(url), "some/file");
    ASSERT_NE(CFURLGetBaseURL(url), nullptr);
    EXPECT_EQ(Path(CFURLGetBaseURL(url)), cwd);
    CFURLRef absolute = CFURLCopyAbsoluteURL(url);
    EXPECT_EQ(Path(absolute), std::string(cwd) + "/some/file");
    CFRelease(absolute);
    CFRelease(url);
    const UInt8 bytes[] = "/x/y";
    CFURLRef fromBytes = CFURLCreateFromFileSystemRepresentation(nullptr, bytes, 4, false);
    EXPECT_EQ(UrlText(fromBytes), "file:///x/y");
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
    CFURLRef base = CFURLCreateWithString(nullptr, CFSTR("http://a/b/c/d;p?q"), nullptr);
    ASSERT_NE(base, nullptr);
    for (const auto &example : examples) {
        CFStringRef reference = CFStringCreateWithCString(nullptr, example[0], kCFStringEncodingUTF8);
        CFURLRef relative = CFURLCreateWithString(nullptr, reference, base);
        CFRelease(reference);
        ASSERT_NE(relative, nullptr) << example[0];
        EXPECT_EQ(UrlText(CFURLCopyAbsoluteURL(relative)), example[1]) << example[0];
        CFRelease(relative);
    }
    CFRelease(base);

    // A relative file URL's path is worked out against its base.
    CFURLRef documents = CFURLCreateWithString(nullptr, CFSTR("file:///Users/me/Documents/"), nullptr);
    CFURLRef picture = CFURLCreateWithString(nullptr, CFSTR("../Pictures/a.png"), documents);
    CFURLRef absolute = CFURLCopyAbsoluteURL(picture);
    EXPECT_EQ(Path(absolute), "/Users/me/Pictures/a.png");
    for (CFURLRef url : {documents, picture, absolute})
        CFRelease(url);
}

TEST(CFURL, ResourceSpecifierIsWhatFollowsThePath)
{
    const char *const cases[][2] = {
        {"http://host/path?query#fragment", "?query#fragment"},
        {"http://host/path;params?q", ";params?q"},
        {"http://host/path", "<null>"},
        {"http://host", "<null>"},
        {"mailto:someone@example.org", "someone@example.org"},
    };
    for (const auto &c : cases) {
        CFStringRef text = CFStringCreateWithCString(nullptr, c[0], kCFStringEncodingUTF8);
        CFURLRef url = CFURLCreateWithString(nullptr, text, nullptr);
        CFRelease(text);
        ASSERT_NE(url, nullptr) << c[0];
        EXPECT_EQ(Text(CFURLCopyResourceSpecifier(url)), c[1]) << c[0];
        CFRelease(url);
    }
    EXPECT_EQ(CFURLCopyResourceSpecifier(nullptr), nullptr);
}

TEST(CFURL, WindowsAndHFSPathStyles)
{
    CFURLRef windows = CFURLCreateWithFileSystemPath(nullptr, CFSTR("C:\\WINDOWS"), kCFURLWindowsPathStyle, true);
    EXPECT_EQ(String(windows), "file:///C:/WINDOWS/");
    EXPECT_EQ(CFURLGetBaseURL(windows), nullptr);
    EXPECT_EQ(Path(windows, kCFURLWindowsPathStyle), "C:\\WINDOWS");
    CFRelease(windows);
    CFURLRef relative = CFURLCreateWithFileSystemPath(nullptr, CFSTR("dir\\file.txt"), kCFURLWindowsPathStyle, false);
    EXPECT_EQ(String(relative), "dir/file.txt");
    CFRelease(relative);

    // A relative HFS path makes a relative URL.
    CFURLRef foo = CFURLCreateWithFileSystemPath(nullptr, CFSTR("foo"), kCFURLHFSPathStyle, false);
    ASSERT_NE(foo, nullptr);
    EXPECT_EQ(String(foo), "foo");
    EXPECT_EQ(Path(foo, kCFURLHFSPathStyle), "foo");
    CFRelease(foo);

    // An absolute one starts with the name of the volume holding it (the
    // machine's name for a root volume without a label), and reads back.
    CFURLRef tmp = CFURLCreateWithFileSystemPath(nullptr, CFSTR("/usr/bin/env"), kCFURLPOSIXPathStyle, false);
    std::string hfs = Path(tmp, kCFURLHFSPathStyle);
    CFRelease(tmp);
    ASSERT_NE(hfs.find(':'), std::string::npos);
    EXPECT_NE(hfs.front(), ':');
    EXPECT_NE(hfs.find(":bin:env"), std::string::npos) << hfs;
    CFStringRef hfsText = CFStringCreateWithCString(nullptr, hfs.c_str(), kCFStringEncodingUTF8);
    CFURLRef back = CFURLCreateWithFileSystemPath(nullptr, hfsText, kCFURLHFSPathStyle, false);
    CFRelease(hfsText);
    EXPECT_EQ(UrlText(back), "file:///usr/bin/env");
    EXPECT_EQ(CFURLCreateWithFileSystemPath(nullptr, CFSTR("NoSuchVolume-koru:x"), kCFURLHFSPathStyle, false), nullptr);
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
    // NULL leaves every escape; the empty string replaces them all.
    EXPECT_EQ(Text(CFURLCreateStringByReplacingPercentEscapes(nullptr, CFSTR("a%20b%2Fc"), nullptr)), "a%20b%2Fc");
    EXPECT_EQ(Text(CFURLCreateStringByReplacingPercentEscapes(nullptr, CFSTR("a%20b%2Fc"), CFSTR(""))), "a b/c");
}

}  // namespace
