// hdiutil-koru and hdid-koru used as a shell user would, on real images and
// real FUSE mounts.  The fixture unmounts every image of its folder when a
// test ends, whether or not the test passed.
#include "MountTable.h"

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/CoreServices.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace {

struct Result {
    int status = -1;
    std::string out;
    std::string err;
};

std::string ReadFile(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::string TemporaryFolder()
{
    char path[PATH_MAX];
    return FSFindFolderGetPath(kUserDomain, kTemporaryFolderType, kCreateFolder, path, sizeof path) == noErr
               ? std::string(path)
               : std::string();
}

// Runs a program in folder with its two streams collected.
Result RunProgram(const std::vector<std::string> &arguments, const std::string &folder)
{
    Result result;
    const std::string out = folder + "/.out", err = folder + "/.err";
    std::vector<char *> argv;
    for (const std::string &argument : arguments)
        argv.push_back(const_cast<char *>(argument.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    pid_t pid;
    if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0)
        waitpid(pid, &result.status, 0);
    posix_spawn_file_actions_destroy(&actions);
    result.status = WIFEXITED(result.status) ? WEXITSTATUS(result.status) : -1;
    result.out = ReadFile(out);
    result.err = ReadFile(err);
    unlink(out.c_str());
    unlink(err.c_str());
    return result;
}

// The tab-separated fields of the first line.
std::vector<std::string> Fields(const std::string &text)
{
    std::vector<std::string> fields;
    std::istringstream stream(text.substr(0, text.find('\n')));
    for (std::string field; std::getline(stream, field, '\t');)
        fields.push_back(field);
    return fields;
}

class DiskImageToolTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = TemporaryFolder() + "/DiskImageToolTest-XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        folder = pattern;
        source = folder + "/source";
        ASSERT_EQ(mkdir(source.c_str(), 0755), 0);
        std::ofstream(source + "/hello.txt") << "hello from the image\n";
        image = folder + "/test.img";
    }

    void TearDown() override
    {
        // Every mount of an image from this folder goes, by mount point.
        std::vector<filemanager::MountEntry> table;
        filemanager::ReadMountTable(table);
        for (const filemanager::MountEntry &entry : table) {
            if (entry.fsType == "fuse.koru" && entry.source.compare(0, folder.size(), folder) == 0) {
                ADD_FAILURE() << "left attached: " << entry.mountPoint;
                RunProgram({"/usr/bin/fusermount3", "-u", entry.mountPoint}, "/");
            } else if (entry.fsType == "squashfs" && entry.mountPoint.compare(0, folder.size(), folder) == 0) {
                ADD_FAILURE() << "left attached: " << entry.mountPoint;
                RunProgram({"/bin/umount", entry.mountPoint}, "/");
            }
        }
        RunProgram({"/bin/rm", "-rf", folder}, "/");
    }

    Result Hdiutil(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), KORU_HDIUTIL);
        return RunProgram(arguments, folder);
    }

    Result Create(const std::string &target)
    {
        return Hdiutil({"create", "-srcfolder", source, target});
    }

    // The one mount point that an attach printed, or "".
    static std::string MountPointOf(const Result &attach)
    {
        std::vector<std::string> fields = Fields(attach.out);
        return fields.size() == 3 ? fields[2] : std::string();
    }

    std::string folder, source, image;
};

TEST_F(DiskImageToolTest, CreateAttachReadListAndDetach)
{
    Result create = Create(image);
    ASSERT_EQ(create.status, 0) << create.err;
    EXPECT_EQ(create.out, "created: " + image + "\n");

    Result attach = RunProgram({KORU_HDID, image}, folder);
    ASSERT_EQ(attach.status, 0) << attach.err;
    const std::vector<std::string> fields = Fields(attach.out);
    ASSERT_EQ(fields.size(), 3u) << attach.out;
    EXPECT_TRUE(fields[0].compare(0, 5, "fuse:") == 0 && fields[1] == "squashfs");
    const std::string mountPoint = fields[2];
    // A new folder directly in the private temporary folder, named after the image.
    EXPECT_EQ(mountPoint.substr(0, mountPoint.rfind('/')), TemporaryFolder());
    EXPECT_EQ(mountPoint.compare(mountPoint.rfind('/'), 6, "/test-"), 0);
    EXPECT_EQ(ReadFile(mountPoint + "/hello.txt"), "hello from the image\n");

    // Attaching again finds the same mount.
    EXPECT_EQ(Hdiutil({"attach", image, "-nobrowse"}).out, attach.out);

    Result info = Hdiutil({"info", "-plist"});
    ASSERT_EQ(info.status, 0);
    CFDataRef data = CFDataCreate(nullptr, reinterpret_cast<const UInt8 *>(info.out.data()),
                                  static_cast<CFIndex>(info.out.size()));
    auto report = static_cast<CFDictionaryRef>(
        CFPropertyListCreateWithData(nullptr, data, kCFPropertyListImmutable, nullptr, nullptr));
    CFRelease(data);
    ASSERT_NE(report, nullptr) << info.out;
    auto images = static_cast<CFArrayRef>(CFDictionaryGetValue(report, CFSTR("images")));
    ASSERT_NE(images, nullptr);
    CFStringRef imagePath = CFStringCreateWithCString(nullptr, image.c_str(), kCFStringEncodingUTF8);
    CFStringRef mountPath = CFStringCreateWithCString(nullptr, mountPoint.c_str(), kCFStringEncodingUTF8);
    int matches = 0;
    for (CFIndex i = 0; i < CFArrayGetCount(images); ++i) {
        auto entry = static_cast<CFDictionaryRef>(CFArrayGetValueAtIndex(images, i));
        if (!CFEqual(CFDictionaryGetValue(entry, CFSTR("image-path")), imagePath))
            continue;
        ++matches;
        EXPECT_TRUE(CFEqual(CFDictionaryGetValue(entry, CFSTR("image-type")),
                            CFSTR("squashfs read-only compressed (zstd)")));
        auto entities = static_cast<CFArrayRef>(CFDictionaryGetValue(entry, CFSTR("system-entities")));
        ASSERT_EQ(CFArrayGetCount(entities), 1);
        auto entity = static_cast<CFDictionaryRef>(CFArrayGetValueAtIndex(entities, 0));
        EXPECT_TRUE(CFEqual(CFDictionaryGetValue(entity, CFSTR("mount-point")), mountPath));
        EXPECT_TRUE(CFEqual(CFDictionaryGetValue(entity, CFSTR("content-hint")), CFSTR("squashfs")));
    }
    EXPECT_EQ(matches, 1);
    CFRelease(imagePath);
    CFRelease(mountPath);
    CFRelease(report);

    Result detach = Hdiutil({"detach", mountPoint});
    EXPECT_EQ(detach.status, 0) << detach.err;
    EXPECT_EQ(detach.out, "\"" + fields[0] + "\" ejected.\n");
    EXPECT_NE(access(mountPoint.c_str(), F_OK), 0) << "the mount folder stays";
    Result twice = Hdiutil({"detach", mountPoint});
    EXPECT_TRUE(twice.status == 1 && twice.err.find("detach failed") != std::string::npos) << twice.err;
    EXPECT_EQ(Hdiutil({"info", "-plist"}).out.find(image), std::string::npos);
}

TEST_F(DiskImageToolTest, AwkwardNamesStayNames)
{
    // A leading dash, blanks, quotes, a comma and a backslash, relative to
    // the current folder: nothing reads them as options or shell text.
    const std::string name = "-o allow_other,x \"y\" 'z' \\w.img";
    Result create = Hdiutil({"create", "-srcfolder", "source", name});
    ASSERT_EQ(create.status, 0) << create.err;
    const std::string full = folder + "/" + name;
    ASSERT_EQ(access(full.c_str(), F_OK), 0);

    Result attach = Hdiutil({"attach", name});
    ASSERT_EQ(attach.status, 0) << attach.err;
    const std::string mountPoint = MountPointOf(attach);
    EXPECT_EQ(ReadFile(mountPoint + "/hello.txt"), "hello from the image\n");
    EXPECT_NE(Hdiutil({"info", "-plist"}).out.find("<string>" + full + "</string>"), std::string::npos);
    // The mount table gives back the exact name.
    std::vector<filemanager::MountEntry> table;
    ASSERT_TRUE(filemanager::ReadMountTable(table));
    bool listed = false;
    for (const filemanager::MountEntry &entry : table)
        listed = listed || (entry.mountPoint == mountPoint && entry.source == full);
    EXPECT_TRUE(listed);
    EXPECT_EQ(Hdiutil({"detach", mountPoint}).status, 0);
}

TEST_F(DiskImageToolTest, MountPointsMustBeNewOrEmpty)
{
    ASSERT_EQ(Create(image).status, 0);
    const std::string busy = folder + "/busy";
    ASSERT_EQ(mkdir(busy.c_str(), 0755), 0);
    std::ofstream(busy + "/keep") << "mine";
    Result refused = Hdiutil({"attach", image, "-mountpoint", busy});
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("not an empty folder"), std::string::npos) << refused.err;
    EXPECT_EQ(ReadFile(busy + "/keep"), "mine");

    const std::string fresh = folder + "/fresh mount";
    Result attach = Hdiutil({"attach", image, "-mountpoint", fresh, "-plist"});
    ASSERT_EQ(attach.status, 0) << attach.err;
    EXPECT_NE(attach.out.find("<string>" + fresh + "</string>"), std::string::npos) << attach.out;
    EXPECT_EQ(ReadFile(fresh + "/hello.txt"), "hello from the image\n");
    EXPECT_EQ(Hdiutil({"detach", fresh, "-force"}).status, 0);
    EXPECT_EQ(ReadFile(fresh + "/hello.txt"), "");
}

TEST_F(DiskImageToolTest, FailuresSayWhyAndLeaveNothingBehind)
{
    auto oneLine = [](const Result &result) {
        return result.status == 1 && !result.err.empty() && result.err.find('\n') == result.err.size() - 1;
    };
    // No folder: no image.
    Result missing = Hdiutil({"create", "-srcfolder", folder + "/missing", image});
    EXPECT_TRUE(oneLine(missing)) << missing.err;
    EXPECT_NE(access(image.c_str(), F_OK), 0);

    // An existing file is kept unless -ov is given, and then replaced whole.
    std::ofstream(image) << "precious";
    Result exists = Create(image);
    EXPECT_TRUE(oneLine(exists)) << exists.err;
    EXPECT_EQ(ReadFile(image), "precious");
    EXPECT_EQ(Hdiutil({"create", "-srcfolder", source, "-ov", image}).status, 0);
    EXPECT_EQ(ReadFile(image).compare(0, 4, "hsqs"), 0);

    // Not an image, not there, not attached, not understood.
    const std::string text = folder + "/text.img";
    std::ofstream(text) << "just text, long enough to hold a superblock's worth of bytes if it were one.....";
    for (const Result &result : std::vector<Result>{
             Hdiutil({"attach", text}), RunProgram({KORU_HDID, text}, folder), Hdiutil({"attach", folder + "/none.img"}),
          Hdiutil({"detach", folder}), Hdiutil({"detach", "fuse:0:0"}), Hdiutil({"create", image}),
          Hdiutil({"attach", image, "-bogus"}), Hdiutil({"frobnicate"})}) {
        EXPECT_EQ(result.status, 1) << result.err;
        EXPECT_FALSE(result.err.empty());
    }
    // No mount folder was left in the temporary folder for the failed attaches.
    Result list = RunProgram({"/bin/sh", "-c", "ls -d \"$0\"/text-* \"$0\"/none-* 2>/dev/null | wc -l", TemporaryFolder()},
                      folder);
    EXPECT_EQ(list.out, "0\n");
}

TEST_F(DiskImageToolTest, LoopMountedImagesAreListedAndDetached)
{
    // Only root may loop-mount.
    if (geteuid() != 0 || access("/dev/loop-control", F_OK) != 0)
        GTEST_SKIP() << "loop mounts need root";
    ASSERT_EQ(Create(image).status, 0);
    const std::string mountPoint = folder + "/loop mount";
    ASSERT_EQ(mkdir(mountPoint.c_str(), 0755), 0);
    Result mount = RunProgram({"/bin/mount", "-t", "squashfs", "-o", "loop,ro", image, mountPoint}, folder);
    if (mount.status != 0)
        GTEST_SKIP() << "no loop devices here: " << mount.err;
    Result info = Hdiutil({"info"});
    const std::string line = "\tsquashfs\t" + mountPoint + "\n";
    EXPECT_NE(info.out.find("image-path      : " + image + "\n"), std::string::npos) << info.out;
    const std::string::size_type found = info.out.find(line);
    ASSERT_NE(found, std::string::npos) << info.out;
    const std::string device = info.out.substr(info.out.rfind('\n', found) + 1, found - info.out.rfind('\n', found) - 1);
    EXPECT_EQ(device.compare(0, 9, "/dev/loop"), 0) << device;
    Result detach = Hdiutil({"detach", device});
    EXPECT_EQ(detach.status, 0) << detach.err;
    EXPECT_EQ(Hdiutil({"info"}).out.find(mountPoint), std::string::npos);
}

} // namespace
