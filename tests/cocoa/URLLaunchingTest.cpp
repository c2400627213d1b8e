// LSLaunchURLWithLaunchFlags in a private XDG world: a test application whose
// command appends a line to a record file, as a .desktop file, an executable
// and an application bundle, and registered as the default for text files and
// the x-koru-test: scheme.
#include <KORU/URLLaunching.h>

#include <gtest/gtest.h>

#include "../support/XDGWorld.h"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

class URLLaunchingTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/koru-urllaunch-XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(pattern));
        root_ = pattern;
        record_ = root_ + "/ran.txt";
        const std::string recorder = root_ + "/record.sh";
        WriteExecutable(recorder, "#!/bin/sh\necho \"ran:$*\" >> '" + record_ + "'\n");
        WriteExecutable(root_ + "/tool.sh", "#!/bin/sh\nexec '" + recorder + "' tool \"$@\"\n");
        mkdir((root_ + "/Recorder.app").c_str(), 0755);
        mkdir((root_ + "/Recorder.app/Resources").c_str(), 0755);
        Write(root_ + "/Recorder.app/Resources/Info-gnustep.plist", "{ NSExecutable = Recorder; }\n");
        WriteExecutable(root_ + "/Recorder.app/Recorder", "#!/bin/sh\nexec '" + recorder + "' bundle \"$@\"\n");

        world_ = std::make_unique<XDGWorld>(root_, recorder + " desktop");
        desktopFile_ = world_->DesktopFile();
        Write(root_ + "/notes.txt", "a document\n");
    }

    void TearDown() override
    {
        for (CFTypeRef object : owned_)
            CFRelease(object);
        world_.reset();
        std::system(("rm -rf '" + root_ + "'").c_str());
    }

    static void Write(const std::string &path, const std::string &content) { std::ofstream(path) << content; }
    static void WriteExecutable(const std::string &path, const std::string &content)
    {
        Write(path, content);
        chmod(path.c_str(), 0755);
    }

    // Launched programs run on their own and may finish after the call.
    bool RecordHasLine(const std::string &line)
    {
        for (int attempt = 0; attempt < 600; ++attempt) {
            std::ifstream file(record_);
            std::string read;
            while (std::getline(file, read))
                if (read == line)
                    return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        return false;
    }

    CFURLRef FileURL(const std::string &path)
    {
        CFURLRef url = CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8 *>(path.c_str()),
                                                               static_cast<CFIndex>(path.size()), false);
        owned_.push_back(url);
        return url;
    }

    std::string root_, record_, desktopFile_;
    std::unique_ptr<XDGWorld> world_;
    std::vector<CFTypeRef> owned_;
};

TEST_F(URLLaunchingTest, TheApplicationAtTheURLIsStarted)
{
    EXPECT_TRUE(LSLaunchURLWithLaunchFlags(FileURL(desktopFile_), kLSLaunchDefaults));
    EXPECT_TRUE(RecordHasLine("ran:desktop"));
    EXPECT_TRUE(LSLaunchURLWithLaunchFlags(FileURL(root_ + "/tool.sh"), kLSLaunchDefaults));
    EXPECT_TRUE(RecordHasLine("ran:tool"));
    EXPECT_TRUE(LSLaunchURLWithLaunchFlags(FileURL(root_ + "/Recorder.app"), kLSLaunchDefaults | kLSLaunchAsync));
    EXPECT_TRUE(RecordHasLine("ran:bundle"));
}

TEST_F(URLLaunchingTest, OtherURLsOpenWithTheirDefaultApplication)
{
    CFURLRef scheme = CFURLCreateWithString(nullptr, CFSTR("x-koru-test:hello"), nullptr);
    owned_.push_back(scheme);
    EXPECT_TRUE(LSLaunchURLWithLaunchFlags(scheme, kLSLaunchDefaults));
    EXPECT_TRUE(RecordHasLine("ran:desktop x-koru-test:hello"));
    EXPECT_TRUE(LSLaunchURLWithLaunchFlags(FileURL(root_ + "/notes.txt"), kLSLaunchDefaults));
    EXPECT_TRUE(RecordHasLine("ran:desktop " + root_ + "/notes.txt"));
}

TEST_F(URLLaunchingTest, NothingLaunchesForMissingOrUnlaunchableURLs)
{
    EXPECT_FALSE(LSLaunchURLWithLaunchFlags(nullptr, kLSLaunchDefaults));
    EXPECT_FALSE(LSLaunchURLWithLaunchFlags(reinterpret_cast<CFURLRef>(CFSTR("file:///bin/true")), 0));
    EXPECT_FALSE(LSLaunchURLWithLaunchFlags(FileURL(root_ + "/missing.app"), kLSLaunchDefaults));
    CFURLRef unhandled = CFURLCreateWithString(nullptr, CFSTR("x-koru-nobody:hello"), nullptr);
    owned_.push_back(unhandled);
    EXPECT_FALSE(LSLaunchURLWithLaunchFlags(unhandled, kLSLaunchDefaults));
    mkdir((root_ + "/Empty.app").c_str(), 0755); // a bundle without an executable
    EXPECT_FALSE(LSLaunchURLWithLaunchFlags(FileURL(root_ + "/Empty.app"), kLSLaunchDefaults));
}

} // namespace
