#include <KORU/FSUtilities.h>

#include "../platform/CoreServices/FileTestSupport.h"

#include <filesystem>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace fs = std::filesystem;

namespace {

// A copy of sleep inside an application bundle of the test's own, stopped by
// pid when the test ends.
class BundledChild {
public:
    explicit BundledChild(const std::string &app)
    {
        fs::create_directories(app + "/Contents/MacOS");
        std::ofstream(app + "/Contents/Info.plist")
            << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
               "<key>CFBundleName</key><string>Napper</string>"
               "<key>CFBundleIdentifier</key><string>org.koru.napper</string>"
               "<key>CFBundleSignature</key><string>NAPR</string>"
               "<key>CFBundleExecutable</key><string>Napper</string></dict></plist>\n";
        const std::string executable = app + "/Contents/MacOS/Napper";
        fs::copy_file("/bin/sleep", executable);
        char *argv[] = {const_cast<char *>(executable.c_str()), const_cast<char *>("60"), nullptr};
        if (posix_spawn(&pid_, executable.c_str(), nullptr, nullptr, argv, environ) != 0)
            pid_ = 0;
    }
    ~BundledChild() { Stop(); }
    void Stop()
    {
        if (pid_ == 0)
            return;
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
        pid_ = 0;
    }
    pid_t Pid() const { return pid_; }

private:
    pid_t pid_ = 0;
};

class ProcessUtilitiesTest : public ::testing::Test {
protected:
    void SetUp() override { unsetenv("DISPLAY"); } // the front process is then this one
    TemporaryFolder folder_;
};

bool ListHolds(CFDataRef list, const FSRef &ref)
{
    const CFIndex count = CFDataGetLength(list) / static_cast<CFIndex>(sizeof(FSRef));
    const auto *refs = reinterpret_cast<const FSRef *>(CFDataGetBytePtr(list));
    for (CFIndex k = 0; k < count; ++k)
        if (FSCompareFSRefs(&refs[k], &ref) == noErr)
            return true;
    return false;
}

Boolean CountUpToThree(ProcessSerialNumber *, void *context)
{
    return ++*static_cast<int *>(context) < 3;
}

TEST_F(ProcessUtilitiesTest, ProcessesStartedHereAreFoundByTheirBundle)
{
    const std::string app = folder_ / "Napper ünï \"q\".app";
    BundledChild child(app);
    ASSERT_NE(0, child.Pid());
    const FSRef bundle = RefAt(app);

    ProcessSerialNumber psn = {1, 1};
    ASSERT_TRUE(FSGetProcessSerialNumber(&bundle, &psn));
    EXPECT_TRUE(psn.highLongOfPSN == 0 && psn.lowLongOfPSN == static_cast<UInt32>(child.Pid()));
    CFStringRef name = nullptr;
    ASSERT_EQ(noErr, CopyProcessName(&psn, &name));
    EXPECT_EQ(kCFCompareEqualTo, CFStringCompare(name, CFSTR("Napper"), 0));
    CFRelease(name);
    EXPECT_TRUE(FSIsRunningProcess(&bundle));
    CFURLRef url = CFURLCreateFromFSRef(nullptr, &bundle);
    EXPECT_TRUE(CFURLIsRunningProcess(url));
    ProcessSerialNumber byURL;
    EXPECT_TRUE(CFURLGetProcessSerialNumber(url, &byURL));
    EXPECT_EQ(psn.lowLongOfPSN, byURL.lowLongOfPSN);

    CFMutableDataRef all = FSCopyAllProcess();
    ASSERT_NE(nullptr, all);
    EXPECT_EQ(0, CFDataGetLength(all) % 80);
    EXPECT_TRUE(ListHolds(all, bundle));
    FSRef self;
    ASSERT_TRUE(FSGetCurrentProcess(&self));
    EXPECT_TRUE(ListHolds(all, self));
    CFRelease(all);

    // Without a display the front process is this one, and the child has no window to raise.
    EXPECT_FALSE(FSIsFrontProcess(&bundle) || FSSetFrontProcess(&bundle));
    EXPECT_TRUE(FSIsFrontProcess(&self) && FSSetFrontProcess(&self));
    EXPECT_TRUE(ProcessActivate());

    child.Stop();
    EXPECT_FALSE(FSIsRunningProcess(&bundle) || CFURLIsRunningProcess(url) || FSGetProcessSerialNumber(&bundle, &psn));
    EXPECT_EQ(0u, psn.lowLongOfPSN);
    CFRelease(url);
}

TEST_F(ProcessUtilitiesTest, CurrentProcessAndEnumeration)
{
    FSRef self, front;
    ASSERT_TRUE(FSGetCurrentProcess(&self));
    EXPECT_EQ(fs::canonical("/proc/self/exe").string(), PathOf(self));
    ASSERT_TRUE(FSGetFrontProcess(&front));
    EXPECT_EQ(noErr, FSCompareFSRefs(&self, &front));
    CFURLRef url = CFURLCopyCurrentProcess();
    ASSERT_NE(nullptr, url);
    CFRelease(url);

    int calls = 0;
    EXPECT_FALSE(EnumerateAllProcess(CountUpToThree, &calls)); // stopped by the callback
    EXPECT_EQ(3, calls);
    EXPECT_FALSE(EnumerateAllProcess(nullptr, nullptr));

    FSProcessSerialNumberSearch search = {&self, false, nullptr};
    ProcessSerialNumber current = {0, static_cast<UInt32>(getpid())};
    EXPECT_FALSE(FSGetProcessSerialNumberEnumeration(&current, &search));
    EXPECT_TRUE(search.found);

    ProcessSerialNumber psn = {7, 7};
    EXPECT_FALSE(FSGetProcessSerialNumber(nullptr, &psn));
    EXPECT_EQ(0u, psn.highLongOfPSN);
    EXPECT_FALSE(CFURLGetProcessSerialNumber(reinterpret_cast<CFURLRef>(CFSTR("not a URL")), &psn) ||
                 FSIsRunningProcess(nullptr) || FSGetCurrentProcess(nullptr) || FSSetFrontProcess(nullptr));
}

} // namespace
