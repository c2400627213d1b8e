#include <KORU/LogSupport.h>

#include <CoreServices/CoreServices.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace fs = std::filesystem;

namespace {

std::string Text(CFStringRef string)
{
    char buffer[2048] = "<null>";
    if (string != nullptr)
        CFStringGetCString(string, buffer, sizeof buffer, kCFStringEncodingUTF8);
    return buffer;
}

std::string PathOf(CFURLRef url)
{
    if (url == nullptr)
        return "<null>";
    CFStringRef path = CFURLCopyFileSystemPath(url, kCFURLPOSIXPathStyle);
    std::string result = Text(path);
    if (path != nullptr)
        CFRelease(path);
    return result;
}

std::string Bytes(CFDataRef data)
{
    if (data == nullptr)
        return "<null>";
    return std::string(reinterpret_cast<const char *>(CFDataGetBytePtr(data)),
                       static_cast<size_t>(CFDataGetLength(data)));
}

} // namespace

TEST(ConvertableRepresentation, SystemEncodingFirst)
{
    ASSERT_EQ(kCFStringEncodingUTF8, CFStringGetSystemEncoding());
    CFDataRef data = CFStringCreateConvertableExternalRepresentation(CFSTR("caf\u00e9"));
    EXPECT_EQ("caf\xc3\xa9", Bytes(data));
    if (data != nullptr)
        CFRelease(data);
    EXPECT_EQ(nullptr, CFStringCreateConvertableExternalRepresentation(nullptr));
}

TEST(FindFolderURL, FolderWithOrWithoutAComponent)
{
    char pattern[] = "/tmp/LogSupportTest.XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(pattern));
    std::string home = fs::canonical(pattern).string();
    setenv("HOME", home.c_str(), 1);
    unsetenv("XDG_CONFIG_HOME");

    EXPECT_EQ(nullptr, CFURLCreateWithFindFolder(kUserDomain, kDesktopFolderType, false, nullptr, false));
    EXPECT_EQ(nullptr, CFURLCreateWithFindFolder(kUserDomain, 0x7A7A7A7A, false, CFSTR("x"), false));

    CFURLRef folder = CFURLCreateWithFindFolder(kUserDomain, kDesktopFolderType, true, nullptr, false);
    EXPECT_EQ(home + "/Desktop", PathOf(folder));
    CFURLRef file = CFURLCreateWithFindFolder(kUserDomain, kDesktopFolderType, false, CFSTR("CFLog.txt"), false);
    EXPECT_EQ(home + "/Desktop/CFLog.txt", PathOf(file));
    CFURLRef sub = CFURLCreateWithFindFolder(kUserDomain, kDesktopFolderType, false, CFSTR("Logs"), true);
    EXPECT_EQ("file://" + home + "/Desktop/Logs/", Text(sub != nullptr ? CFURLGetString(sub) : nullptr));
    for (CFURLRef url : {folder, file, sub}) {
        if (url != nullptr)
            CFRelease(url);
    }
    fs::remove_all(home);
}

TEST(ProcessNames, CurrentAndFrontProcess)
{
    unsetenv("DISPLAY"); // without a display the front process is this one
    CFStringRef current = CFStringCopyCurrentProcessName();
    CFStringRef front = CFStringCopyFrontProcessName();
    EXPECT_EQ("LogSupportTest", Text(current));
    EXPECT_EQ("LogSupportTest", Text(front));
    for (CFStringRef name : {current, front}) {
        if (name != nullptr)
            CFRelease(name);
    }
}
