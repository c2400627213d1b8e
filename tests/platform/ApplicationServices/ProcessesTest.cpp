#include <ApplicationServices/ApplicationServices.h>

#include "../CoreServices/FileTestSupport.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace fs = std::filesystem;

namespace {

std::string NameOf(const ProcessSerialNumber &psn)
{
    CFStringRef name = nullptr;
    if (CopyProcessName(&psn, &name) != noErr || name == nullptr)
        return "<none>";
    char text[256] = "";
    CFStringGetCString(name, text, sizeof text, kCFStringEncodingUTF8);
    CFRelease(name);
    return text;
}

std::string BundleOf(const ProcessSerialNumber &psn)
{
    FSRef ref;
    return GetProcessBundleLocation(&psn, &ref) == noErr ? PathOf(ref) : "<none>";
}

/* Runs a copy of sleep under another name, so the process has an executable
 * of its own to be found by. */
struct SleepingChild {
    explicit SleepingChild(const std::string &executable)
    {
        fs::create_directories(fs::path(executable).parent_path());
        fs::copy_file("/bin/sleep", executable);
        char *argv[] = {const_cast<char *>(executable.c_str()), const_cast<char *>("60"), nullptr};
        if (posix_spawn(&pid, executable.c_str(), nullptr, nullptr, argv, environ) != 0)
            pid = 0;
    }
    ~SleepingChild() { stop(); }
    void stop()
    {
        if (pid > 0 && kill(pid, SIGKILL) == 0)
            waitpid(pid, nullptr, 0);
        pid = 0;
    }
    ProcessSerialNumber number() const { return {0, static_cast<UInt32>(pid)}; }
    pid_t pid = 0;
};

class ProcessesTest : public ::testing::Test {
protected:

    // An application bundle whose Info.plist holds the keys given.
    std::string MakeApp(const std::string &name, const std::string &keys)
    {
        const std::string app = mRoot + "/" + name + ".app";
        fs::create_directories(app + "/Contents");
        std::ofstream(app + "/Contents/Info.plist")
            << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" << keys
            << "<key>CFBundleExecutable</key><string>" << name << "</string></dict></plist>\n";
        return app;
    }

    TemporaryFolder mFolder;
    const std::string mRoot = mFolder.Path();
};

} // namespace

TEST_F(ProcessesTest, CurrentProcessIsTheCallerUnderEitherNumberAndInFrontWithoutADisplay)
{
    ProcessSerialNumber current, reserved = {0, kCurrentProcess};
    ASSERT_EQ(noErr, GetCurrentProcess(&current));
    EXPECT_EQ(0u, current.highLongOfPSN);
    EXPECT_EQ(static_cast<UInt32>(getpid()), current.lowLongOfPSN);
    Boolean same = false;
    EXPECT_EQ(noErr, SameProcess(&current, &reserved, &same));
    EXPECT_TRUE(same);
    pid_t pid = 0;
    EXPECT_EQ(noErr, GetProcessPID(&reserved, &pid));
    EXPECT_EQ(getpid(), pid);
    EXPECT_EQ("ProcessesTest", NameOf(reserved));
    EXPECT_EQ(fs::canonical("/proc/self/exe").string(), BundleOf(current));

    // Without a display it is also the one in front.
    unsetenv("DISPLAY");
    ProcessSerialNumber front = {0, kNoProcess};
    ASSERT_EQ(noErr, GetFrontProcess(&front));
    EXPECT_EQ(static_cast<UInt32>(getpid()), front.lowLongOfPSN);
    EXPECT_EQ(noErr, SetFrontProcess(&reserved));
}

TEST_F(ProcessesTest, NamesAndLocationsComeFromTheBundleAroundTheExecutable)
{
    const std::string app = MakeApp("Sleeper", "<key>CFBundleName</key><string>Sleepy Helper</string>");
    SleepingChild bundled(app + "/Contents/MacOS/Sleeper");
    SleepingChild plain(mRoot + "/plain-sleeper");
    ASSERT_NE(0, bundled.pid);
    ASSERT_NE(0, plain.pid);

    EXPECT_EQ("Sleepy Helper", NameOf(bundled.number()));
    EXPECT_EQ(app, BundleOf(bundled.number()));
    EXPECT_EQ("plain-sleeper", NameOf(plain.number()));
    EXPECT_EQ(mRoot + "/plain-sleeper", BundleOf(plain.number()));

    // The enumeration is in pid order and sees both children and this process.
    std::vector<pid_t> seen;
    ProcessSerialNumber psn = {0, kNoProcess};
    while (GetNextProcess(&psn) == noErr)
        seen.push_back(static_cast<pid_t>(psn.lowLongOfPSN));
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
    for (pid_t pid : {getpid(), bundled.pid, plain.pid})
        EXPECT_NE(seen.end(), std::find(seen.begin(), seen.end(), pid)) << pid;

    ProcessSerialNumber gone = plain.number();
    plain.stop();
    CFStringRef name = CFSTR("stale");
    EXPECT_EQ(procNotFound, CopyProcessName(&gone, &name));
    EXPECT_EQ(nullptr, name);
    EXPECT_EQ(procNotFound, SetFrontProcess(&gone));
}

/* An X server of the test's own; the root window plays the application
 * window, with the properties a window manager and a client would set. */
TEST_F(ProcessesTest, FrontProcessOwnsTheActiveWindow)
{
    if (access("/usr/bin/Xvfb", X_OK) != 0 || access("/usr/bin/xprop", X_OK) != 0)
        GTEST_SKIP() << "needs Xvfb and xprop";
    int ready[2];
    ASSERT_EQ(0, pipe(ready));
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ready[1], 3);
    char *argv[] = {const_cast<char *>("Xvfb"), const_cast<char *>("-displayfd"), const_cast<char *>("3"),
                    const_cast<char *>("-nolisten"), const_cast<char *>("tcp"),
                    // without -noreset the server forgets the root's properties when xprop leaves
                    const_cast<char *>("-noreset"), nullptr};
    pid_t server = 0;
    ASSERT_EQ(0, posix_spawn(&server, "/usr/bin/Xvfb", &actions, nullptr, argv, environ));
    posix_spawn_file_actions_destroy(&actions);
    close(ready[1]);
    // Xvfb writes the number and the newline separately, and ends itself when
    // the newline cannot be written: read up to it before closing the pipe.
    char display[16] = ":";
    size_t used = 1;
    while (used < sizeof display - 1 && std::strchr(display, '\n') == nullptr) {
        ssize_t got = read(ready[0], display + used, sizeof display - 1 - used);
        if (got <= 0)
            break;
        used += static_cast<size_t>(got);
    }
    close(ready[0]);
    ASSERT_GT(used, 1u);
    display[std::strcspn(display, "\n")] = '\0';
    setenv("DISPLAY", display, 1);

    SleepingChild child(mRoot + "/windowed-sleeper");
    std::string set = "root=$(xwininfo -root | sed -n 's/.*Window id: \\(0x[0-9a-f]*\\).*/\\1/p') && "
                      "xprop -root -f _NET_WM_PID 32c -set _NET_WM_PID " + std::to_string(child.pid) +
                      " && xprop -root -f _NET_ACTIVE_WINDOW 32c -set _NET_ACTIVE_WINDOW $root"
                      " && xprop -root -f _NET_CLIENT_LIST 32c -set _NET_CLIENT_LIST $root";
    EXPECT_EQ(0, std::system(set.c_str())) << set;

    ProcessSerialNumber front = {0, kNoProcess}, current = {0, kCurrentProcess}, windowed = child.number();
    EXPECT_EQ(noErr, GetFrontProcess(&front));
    EXPECT_EQ(static_cast<UInt32>(child.pid), front.lowLongOfPSN);
    EXPECT_EQ("windowed-sleeper", NameOf(front));
    EXPECT_EQ(noErr, SetFrontProcess(&windowed));
    EXPECT_EQ(procNotFound, SetFrontProcess(&current)); // this process has no window

    unsetenv("DISPLAY");
    kill(server, SIGTERM);
    waitpid(server, nullptr, 0);
}

TEST_F(ProcessesTest, BadArgumentsAreRefused)
{
    ProcessSerialNumber none = {0, kNoProcess}, psn;
    CFStringRef name = nullptr;
    FSRef ref;
    Boolean same;
    pid_t pid;
    EXPECT_EQ(paramErr, GetCurrentProcess(nullptr));
    EXPECT_EQ(paramErr, GetFrontProcess(nullptr));
    EXPECT_EQ(paramErr, GetNextProcess(nullptr));
    EXPECT_EQ(paramErr, SetFrontProcess(nullptr));
    EXPECT_EQ(paramErr, SameProcess(&none, nullptr, &same));
    EXPECT_EQ(paramErr, CopyProcessName(&none, nullptr));
    EXPECT_EQ(paramErr, GetProcessBundleLocation(nullptr, &ref));
    EXPECT_EQ(procNotFound, CopyProcessName(&none, &name));
    EXPECT_EQ(procNotFound, GetProcessPID(&none, &pid));
    EXPECT_EQ(procNotFound, GetProcessForPID(-5, &psn));
}

TEST_F(ProcessesTest, InformationRecordAndDictionary)
{
    const std::string app = MakeApp("Info", "<key>CFBundleName</key><string>A rather long process name over 31</string>"
                                            "<key>CFBundleIdentifier</key><string>org.koru.info</string>"
                                            "<key>CFBundleSignature</key><string>INFO</string>");
    SleepingChild child(app + "/Contents/MacOS/Info");
    ASSERT_NE(0, child.pid);

    ProcessSerialNumber psn = child.number();
    ProcessInfoRec info{};
    Str31 name;
    FSRef location;
    info.processInfoLength = sizeof info;
    info.processName = name;
    info.processAppRef = &location;
    ASSERT_EQ(noErr, GetProcessInformation(&psn, &info));
    EXPECT_EQ("A rather long process name over", std::string(reinterpret_cast<char *>(name + 1), name[0]));
    EXPECT_EQ(0x4150504Cu, info.processType);      // 'APPL'
    EXPECT_EQ(0x494E464Fu, info.processSignature); // 'INFO'
    EXPECT_EQ(static_cast<UInt32>(getpid()), info.processLauncher.lowLongOfPSN);
    EXPECT_EQ(app, PathOf(location));

    CFDictionaryRef dictionary = ProcessInformationCopyDictionary(&psn, kProcessDictionaryIncludeAllInformationMask);
    ASSERT_NE(nullptr, dictionary);
    auto text = [&](CFStringRef key) {
        CFTypeRef value = CFDictionaryGetValue(dictionary, key);
        char buffer[1024] = "<none>";
        if (value != nullptr && CFGetTypeID(value) == CFStringGetTypeID())
            CFStringGetCString(static_cast<CFStringRef>(value), buffer, sizeof buffer, kCFStringEncodingUTF8);
        return std::string(buffer);
    };
    EXPECT_EQ("org.koru.info", text(CFSTR("CFBundleIdentifier")));
    EXPECT_EQ(app, text(CFSTR("BundlePath")));
    EXPECT_EQ(app + "/Contents/MacOS/Info", text(CFSTR("CFBundleExecutable")));
    EXPECT_EQ("INFO", text(CFSTR("FileCreator")));
    long long pid = 0;
    CFNumberGetValue(static_cast<CFNumberRef>(CFDictionaryGetValue(dictionary, CFSTR("pid"))),
                     kCFNumberLongLongType, &pid);
    EXPECT_EQ(child.pid, pid);
    EXPECT_EQ(kCFBooleanFalse, CFDictionaryGetValue(dictionary, CFSTR("LSBackgroundOnly")));
    CFRelease(dictionary);

    child.stop();
    EXPECT_EQ(procNotFound, GetProcessInformation(&psn, &info));
    EXPECT_EQ(nullptr, ProcessInformationCopyDictionary(&psn, 0));
    info.processInfoLength = 4;
    EXPECT_EQ(paramErr, GetProcessInformation(&psn, &info));
    EXPECT_EQ(nullptr, ProcessInformationCopyDictionary(nullptr, 0));
}
