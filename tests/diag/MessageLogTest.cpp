#include <KORU/Utils.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include <unistd.h>

namespace fs = std::filesystem;

TEST(MessageLog, WritesStampedLinesOnlyWhileItsFolderExists)
{
    char pattern[] = "/tmp/MessageLogTest.XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(pattern));
    std::string root = pattern;
    setenv("TMPDIR", root.c_str(), 1);
    std::string folder = root + "/koru-" + std::to_string(geteuid()) + "/tarnix-logs";
    std::string logFile = folder + "/log.txt";
    EXPECT_EQ(logFile, Utils::GetLogFilename());

    EXPECT_FALSE(Utils::IsLoggingOn());
    Utils::LogMessage(std::string("dropped"));
    EXPECT_FALSE(fs::exists(folder)); // the log never makes its own folder

    fs::create_directory(folder);
    EXPECT_TRUE(Utils::IsLoggingOn());
    Utils::LogMessage(std::string("plain"));
    Utils::LogMessage(std::string("failed"), 7);
    Utils::LogMessage(WString(L"wide"));
    Utils::LogMessage(WString(L"wide failure"), -3);

    std::ifstream file(logFile);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    const char *messages[] = {"Message: plain", "Message: failed ErrorCode: 7", "Message: wide",
                              "Message: wide failure ErrorCode: -3"};
    ASSERT_EQ(4u, lines.size());
    // asctime's form in UTC, its newline turned into a blank, then one more blank.
    std::regex stamp("[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9][0-9] [0-9]{2}:[0-9]{2}:[0-9]{2} [0-9]{4}  (.*)");
    for (size_t i = 0; i < lines.size(); ++i) {
        std::smatch match;
        ASSERT_TRUE(std::regex_match(lines[i], match, stamp)) << lines[i];
        EXPECT_EQ(messages[i], match[1].str());
    }

    fs::remove_all(folder);
    EXPECT_FALSE(Utils::IsLoggingOn());
    fs::remove_all(root);
}
