#include <KORU/Debug.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::string ReadFile(const std::string &path)
{
    std::ifstream file(path);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

struct ProbeResult {
    std::string out, err;
};

/* Runs the probe through env with HOME replaced (or removed when home is NULL). */
ProbeResult RunProbe(const char *scenario, const char *home, const std::string &scratch)
{
    const std::string out = scratch + "/probe.out", err = scratch + "/probe.err";
    std::string command = "/usr/bin/env -u HOME ";
    if (home != nullptr)
        command += "'HOME=" + std::string(home) + "' ";
    command += "'" KORU_DEBUG_PROBE "' " + std::string(scenario) + " >'" + out + "' 2>'" + err + "'";
    EXPECT_EQ(0, std::system(command.c_str())) << scenario;
    return {ReadFile(out), ReadFile(err)};
}

class DebugSwitchTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/DebugTest.XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(pattern));
        mRoot = pattern;
        mHome = mRoot + "/home";
        fs::create_directories(mHome);
    }
    void TearDown() override { fs::remove_all(mRoot); }
    void CreateMarker() { std::ofstream(mHome + "/.debug") << "content does not matter"; }
    std::string mRoot, mHome;
};

} // namespace

TEST_F(DebugSwitchTest, MarkerInTheHomeFolderTurnsDebugOutputOn)
{
    EXPECT_EQ("off\n", RunProbe("check", mHome.c_str(), mRoot).out);
    CreateMarker();
    EXPECT_EQ("on\n", RunProbe("check", mHome.c_str(), mRoot).out);
    EXPECT_EQ("on\n", RunProbe("check", (mHome + "/").c_str(), mRoot).out);
    EXPECT_EQ("off\n", RunProbe("check", nullptr, mRoot).out);
    // The marker path must fit 1024 bytes with its terminator; a slash is only
    // added when HOME lacks one, so the longest usable HOME depends on its end.
    auto padded = [&](size_t length, const char *end) {
        return mHome + std::string(length - mHome.size() - std::strlen(end), '/') + end;
    };
    EXPECT_EQ("on\n", RunProbe("check", padded(1017, "/").c_str(), mRoot).out);
    EXPECT_EQ("off\n", RunProbe("check", padded(1018, "/").c_str(), mRoot).out);
    EXPECT_EQ("on\n", RunProbe("check", padded(1016, "/.").c_str(), mRoot).out);
    EXPECT_EQ("off\n", RunProbe("check", padded(1017, "/.").c_str(), mRoot).out);
}

TEST_F(DebugSwitchTest, MarkerIsLookedForOnceAndTheFlagCanForceIt)
{
    EXPECT_EQ("off\n", RunProbe("recheck", mHome.c_str(), mRoot).out);
    EXPECT_TRUE(fs::exists(mHome + "/.debug"));
    fs::remove(mHome + "/.debug");
    EXPECT_EQ("on\n", RunProbe("force", nullptr, mRoot).out);
}

TEST_F(DebugSwitchTest, FailureReportsAppearOnlyInDebugMode)
{
    EXPECT_EQ("", RunProbe("report", mHome.c_str(), mRoot).err);
    CreateMarker();
    std::string err = RunProbe("report", mHome.c_str(), mRoot).err;
    EXPECT_NE(std::string::npos, err.find("StringIsEndWith (325) Sorry, I caught GOTO error.\n")) << err;
    EXPECT_NE(std::string::npos, err.find("StringGetLastSubstring (310) Sorry, I caught GOTO error.\n"));
    EXPECT_NE(std::string::npos, err.find("CFStringCreateConvertableExternalRepresentation ("));
}

TEST(StringSuffix, LastOccurrenceAndSuffixTest)
{
    const char *text = "aaaa.txt.txt";
    EXPECT_EQ(text + 2, StringGetLastSubstring(text, "aa", false)); // overlapping hits count
    EXPECT_EQ(text + 8, StringGetLastSubstring(text, ".TXT", true));
    EXPECT_EQ(nullptr, StringGetLastSubstring(text, ".TXT", false));
    EXPECT_EQ(text + std::strlen(text), StringGetLastSubstring(text, "", false));
    EXPECT_EQ(nullptr, StringGetLastSubstring(nullptr, "a", false));

    EXPECT_TRUE(StringIsEndWith("report.TXT", ".txt", true) && StringIsEndWith("report.txt", ".txt", false) &&
                StringIsEndWith("anything", "", false));
    EXPECT_FALSE(StringIsEndWith("report.TXT", ".txt", false) || StringIsEndWith("a.txt.bak", ".txt", false) ||
                 StringIsEndWith("txt", ".txt", false) || StringIsEndWith("x", nullptr, false));
}

TEST(MainArguments, PrintedOnStandardError)
{
    char a[] = "a", b[] = "b";
    char *argv[] = {a, b, nullptr};
    testing::internal::CaptureStderr();
    PrintMainArguments(2, argv);
    EXPECT_EQ("\nargc=02\nargv[00]=a\nargv[01]=b\n\n", testing::internal::GetCapturedStderr());
}
