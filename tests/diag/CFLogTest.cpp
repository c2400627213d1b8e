#include <KORU/Debug.h>

#include <CoreServices/CoreServices.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace fs = std::filesystem;

namespace {

std::string ReadFile(const std::string &path)
{
    std::ifstream file(path);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

void LogWithFormat(const char *file, unsigned long line, CFStringRef format, ...)
{
    va_list args;
    va_start(args, format);
    CFLogvCore(file, line, format, args);
    va_end(args);
}

} // namespace

TEST(CFLog, LinesGoToStandardErrorWithProcessFileAndLine)
{
    testing::internal::CaptureStderr();
    CFLogStringCore(nullptr, 12, nullptr);
    CFLogCore("Widget.c", 7, CFSTR("value %d of %@"), 42, CFSTR("forty-two"));
    CFLogCore("Widget.c", 8, nullptr);
    LogWithFormat("Gadget.m", 4000000000UL, CFSTR("%s"), "through a va_list");
    EXPECT_EQ("CFLogTest[<NULL> Line:12] <NULL>\n"
              "CFLogTest[Widget.c Line:7] value 42 of forty-two\n"
              "CFLogTest[Widget.c Line:8] <NULL>\n"
              "CFLogTest[Gadget.m Line:4000000000] through a va_list\n",
              testing::internal::GetCapturedStderr());
}

/* Before 10.0 there was no console: every line rewrites CFLog.txt on the
 * desktop with the whole log so far, and failures are told through DebugStr. */
TEST(CFLog, OlderSystemsKeepTheWholeLogInADesktopFile)
{
    char pattern[] = "/tmp/CFLogTest.XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(pattern));
    std::string home = pattern, desktop = home + "/Desktop", file = desktop + "/CFLog.txt";
    setenv("HOME", home.c_str(), 1);
    unsetenv("XDG_CONFIG_HOME");
    ASSERT_EQ(noErr, SetGestaltValue(gestaltSystemVersion, 0x0922));

    testing::internal::CaptureStderr();
    CFLogStringCore("a.c", 1, CFSTR("first"));
    CFLogCore("b.c", 2, CFSTR("second %d"), 2);
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_EQ("CFLogTest[a.c Line:1] first\nCFLogTest[b.c Line:2] second 2\n", ReadFile(file));

    fs::remove(file);
    fs::create_directory(file); // the write cannot replace a folder
    testing::internal::CaptureStderr();
    CFLogStringCore("c.c", 3, CFSTR("unwritable"));
    EXPECT_EQ("3 CFLogString: Sorry, I couldn't write to file.\n", testing::internal::GetCapturedStderr());

    fs::remove_all(desktop);
    std::ofstream(desktop) << "a file where the desktop folder should be";
    testing::internal::CaptureStderr();
    CFLogStringCore("d.c", 4, CFSTR("nowhere"));
    EXPECT_EQ("1 CFLogString: Sorry, I couldn't write to file.\n", testing::internal::GetCapturedStderr());

    // A failed Gestalt counts as an old system too; the lines logged during
    // the failures are still part of the log.
    fs::remove(desktop);
    ASSERT_EQ(noErr, DeleteGestaltValue(gestaltSystemVersion));
    CFLogStringCore("e.c", 5, CFSTR("last"));
    EXPECT_EQ("CFLogTest[a.c Line:1] first\nCFLogTest[b.c Line:2] second 2\n"
              "CFLogTest[c.c Line:3] unwritable\nCFLogTest[d.c Line:4] nowhere\n"
              "CFLogTest[e.c Line:5] last\n",
              ReadFile(file));

    ReplaceGestaltValue(gestaltSystemVersion, 0x1049);
    fs::remove_all(home);
}
