#include <CoreFoundation/CoreFoundation.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class URLAccessTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/koru-urlaccess-XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(pattern));
        folder_ = pattern;
    }
    void TearDown() override { std::system(("rm -rf '" + folder_ + "'").c_str()); }

    std::string Path(const std::string &name) const { return folder_ + "/" + name; }

    // A CF object released when the test ends.
    template <typename T> T Own(T object)
    {
        owned_.push_back(object);
        return object;
    }
    CFURLRef URL(const std::string &name, bool isDirectory = false)
    {
        const std::string path = Path(name);
        return Own(CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8 *>(path.c_str()),
                                                          static_cast<CFIndex>(path.size()), isDirectory));
    }
    ~URLAccessTest() override
    {
        for (CFTypeRef object : owned_)
            if (object != nullptr)
                CFRelease(object);
    }

    static std::string Read(const std::string &path)
    {
        std::ifstream file(path, std::ios::binary);
        std::stringstream content;
        content << file.rdbuf();
        return content.str();
    }
    static void Write(const std::string &path, const std::string &content)
    {
        std::ofstream(path, std::ios::binary) << content;
    }
    static mode_t ModeOf(const std::string &path)
    {
        struct stat info;
        return stat(path.c_str(), &info) == 0 ? (info.st_mode & 07777) : 0;
    }
    static long NumberValue(CFTypeRef number)
    {
        long value = -1;
        CFNumberGetValue(static_cast<CFNumberRef>(number), kCFNumberLongType, &value);
        return value;
    }
    CFDataRef Data(const std::string &bytes)
    {
        return Own(CFDataCreate(nullptr, reinterpret_cast<const UInt8 *>(bytes.data()), (CFIndex)bytes.size()));
    }
    CFDictionaryRef OneProperty(CFStringRef key, long value)
    {
        CFNumberRef number = Own(CFNumberCreate(nullptr, kCFNumberLongType, &value));
        const void *keys[] = {key};
        const void *values[] = {number};
        return Own(CFDictionaryCreate(nullptr, keys, values, 1, &kCFTypeDictionaryKeyCallBacks,
                                      &kCFTypeDictionaryValueCallBacks));
    }
    // Writes properties (and no data) to the named file.
    bool WriteProperty(const std::string &name, CFStringRef key, long value, SInt32 *error)
    {
        return CFURLWriteDataAndPropertiesToResource(URL(name), nullptr, OneProperty(key, value), error);
    }

    std::string folder_;
    std::vector<CFTypeRef> owned_;
};

} // namespace

TEST_F(URLAccessTest, ReadsDataAndPropertiesOfAFile)
{
    Write(Path("notes.txt"), std::string("line\0two", 8));
    chmod(Path("notes.txt").c_str(), 0640);

    CFDataRef data = nullptr;
    CFDictionaryRef properties = nullptr;
    SInt32 error = 99;
    ASSERT_TRUE(CFURLCreateDataAndPropertiesFromResource(nullptr, URL("notes.txt"), &data, &properties, nullptr, &error));
    EXPECT_EQ(0, error);
    Own(data);
    Own(properties);
    ASSERT_TRUE(data != nullptr && properties != nullptr);
    EXPECT_TRUE(CFDataGetLength(data) == 8 && memcmp("line\0two", CFDataGetBytePtr(data), 8) == 0);
    EXPECT_EQ(kCFBooleanTrue, CFDictionaryGetValue(properties, kCFURLFileExists));
    EXPECT_EQ(8, NumberValue(CFDictionaryGetValue(properties, kCFURLFileLength)));
    EXPECT_EQ(0640, NumberValue(CFDictionaryGetValue(properties, kCFURLFilePOSIXMode)));
    EXPECT_EQ(static_cast<long>(geteuid()), NumberValue(CFDictionaryGetValue(properties, kCFURLFileOwnerID)));
    EXPECT_NE(nullptr, CFDictionaryGetValue(properties, kCFURLFileLastModificationTime));
    EXPECT_EQ(nullptr, CFDictionaryGetValue(properties, kCFURLFileDirectoryContents));

    // Only the properties asked for.
    const void *wanted[] = {kCFURLFilePOSIXMode};
    CFArrayRef desired = Own(CFArrayCreate(nullptr, wanted, 1, &kCFTypeArrayCallBacks));
    ASSERT_TRUE(CFURLCreateDataAndPropertiesFromResource(nullptr, URL("notes.txt"), nullptr, &properties, desired, &error));
    EXPECT_EQ(1, CFDictionaryGetCount(Own(properties)));
}

TEST_F(URLAccessTest, FolderContentsAndMissingObjects)
{
    mkdir(Path("dir").c_str(), 0755);
    mkdir(Path("dir/sub").c_str(), 0755);
    Write(Path("dir/b.txt"), "b");
    Write(Path("dir/a.txt"), "a");

    // Sorted by name; a folder's URL is a directory URL.
    auto contents = static_cast<CFArrayRef>(
        Own(CFURLCreatePropertyFromResource(nullptr, URL("dir", true), kCFURLFileDirectoryContents, nullptr)));
    ASSERT_EQ(3, CFArrayGetCount(contents));
    CFStringRef firstName = Own(CFURLCopyLastPathComponent(static_cast<CFURLRef>(CFArrayGetValueAtIndex(contents, 0))));
    EXPECT_EQ(kCFCompareEqualTo, CFStringCompare(firstName, CFSTR("a.txt"), 0));
    EXPECT_TRUE(CFURLHasDirectoryPath(static_cast<CFURLRef>(CFArrayGetValueAtIndex(contents, 2))));

    CFDataRef data = reinterpret_cast<CFDataRef>(1);
    CFDictionaryRef properties = nullptr;
    SInt32 error = 0;
    EXPECT_FALSE(CFURLCreateDataAndPropertiesFromResource(nullptr, URL("missing"), &data, &properties, nullptr, &error));
    EXPECT_EQ(kCFURLResourceNotFoundError, error);
    EXPECT_EQ(nullptr, data);
    ASSERT_NE(nullptr, Own(properties));
    EXPECT_EQ(kCFBooleanFalse, CFDictionaryGetValue(properties, kCFURLFileExists));

    // Reading a folder's data is refused.
    EXPECT_FALSE(CFURLCreateDataAndPropertiesFromResource(nullptr, URL("dir", true), &data, nullptr, nullptr, &error));
    EXPECT_NE(0, error);
}

TEST_F(URLAccessTest, WritingReplacesTheFileAndKeepsItsPermissions)
{
    CFDataRef first = Data("first version");
    SInt32 error = 99;
    ASSERT_TRUE(CFURLWriteDataAndPropertiesToResource(URL("doc.txt"), first, nullptr, &error));
    EXPECT_TRUE(error == 0 && Read(Path("doc.txt")) == "first version");

    chmod(Path("doc.txt").c_str(), 0604);
    CFDataRef second = Data("second");
    ASSERT_TRUE(CFURLWriteDataAndPropertiesToResource(URL("doc.txt"), second, nullptr, &error));
    EXPECT_TRUE(Read(Path("doc.txt")) == "second" && ModeOf(Path("doc.txt")) == 0604u);

    // Through a symbolic link the file it points to is written; the link stays.
    ASSERT_EQ(0, symlink(Path("doc.txt").c_str(), Path("link").c_str()));
    ASSERT_TRUE(CFURLWriteDataAndPropertiesToResource(URL("link"), first, nullptr, &error));
    struct stat info;
    EXPECT_TRUE(lstat(Path("link").c_str(), &info) == 0 && S_ISLNK(info.st_mode));
    EXPECT_EQ("first version", Read(Path("doc.txt")));

    // The longest name a folder takes is written too (its temporary name is shorter).
    const std::string longName(255, 'n');
    ASSERT_TRUE(CFURLWriteDataAndPropertiesToResource(URL(longName), second, nullptr, &error));
    EXPECT_EQ("second", Read(Path(longName)));
    unlink(Path(longName).c_str());

    // A directory URL given data makes the folder.
    ASSERT_TRUE(CFURLWriteDataAndPropertiesToResource(URL("made", true), first, nullptr, &error));
    EXPECT_TRUE(stat(Path("made").c_str(), &info) == 0 && S_ISDIR(info.st_mode));

    // A write that cannot happen leaves nothing behind.
    EXPECT_FALSE(CFURLWriteDataAndPropertiesToResource(URL("no/such/file"), first, nullptr, &error));
    EXPECT_EQ(kCFURLResourceNotFoundError, error);

    CFTypeRef contents = Own(CFURLCreatePropertyFromResource(nullptr, URL("", true), kCFURLFileDirectoryContents, nullptr));
    EXPECT_EQ(3, CFArrayGetCount(static_cast<CFArrayRef>(contents))); // doc.txt, link, made: no temporary files
}

TEST_F(URLAccessTest, WritesModeAndOwnerProperties)
{
    Write(Path("file"), "content");
    SInt32 error = 99;
    EXPECT_TRUE(WriteProperty("file", kCFURLFilePOSIXMode, 0751, &error) && error == 0);
    EXPECT_TRUE(ModeOf(Path("file")) == 0751u && Read(Path("file")) == "content");
    EXPECT_TRUE(WriteProperty("file", kCFURLFileOwnerID, static_cast<long>(geteuid()), &error));

    // Giving a file away needs privileges.
    const bool changed = WriteProperty("file", kCFURLFileOwnerID, 4242, &error);
    struct stat info;
    stat(Path("file").c_str(), &info);
    if (geteuid() == 0)
        EXPECT_TRUE(changed && info.st_uid == 4242u);
    else
        EXPECT_TRUE(!changed && error == kCFURLResourceAccessViolationError && info.st_uid == geteuid());
    EXPECT_FALSE(WriteProperty("file", CFSTR("kCFURLFileLength"), 3, &error));
    EXPECT_EQ(kCFURLUnknownPropertyKeyError, error);
    EXPECT_FALSE(WriteProperty("missing", kCFURLFilePOSIXMode, 0600, &error));
    EXPECT_EQ(kCFURLResourceNotFoundError, error);
}

TEST_F(URLAccessTest, BadArgumentsAndOtherSchemes)
{
    SInt32 error = 0;
    CFDataRef data = nullptr;
    EXPECT_FALSE(CFURLCreateDataAndPropertiesFromResource(nullptr, nullptr, &data, nullptr, nullptr, &error));
    EXPECT_EQ(kCFURLImproperArgumentsError, error);
    EXPECT_FALSE(CFURLWriteDataAndPropertiesToResource(nullptr, nullptr, nullptr, &error));

    CFURLRef web = Own(CFURLCreateWithString(nullptr, CFSTR("http://127.0.0.1/x"), nullptr));
    EXPECT_FALSE(CFURLCreateDataAndPropertiesFromResource(nullptr, web, &data, nullptr, nullptr, &error));
    EXPECT_EQ(kCFURLUnknownSchemeError, error);

    Write(Path("gone"), "x");
    EXPECT_TRUE(CFURLDestroyResource(URL("gone"), &error) && access(Path("gone").c_str(), F_OK) != 0);
    EXPECT_FALSE(CFURLDestroyResource(URL("gone"), &error));
    EXPECT_EQ(kCFURLResourceNotFoundError, error);
}
