#include <KORU/Utils.h>

#include <gtest/gtest.h>

#include <clocale>
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

// A host that never calls setlocale runs in the "C" locale, where "é" has no
// byte: the wide message keeps the text before it, and a long message is cut
// to the 1024-byte buffer.
TEST(MessageLog, WideTextKeepsWhatConvertsInTheCLocale)
{
    ASSERT_NE(nullptr, std::setlocale(LC_ALL, "C"));
    char pattern[] = "/tmp/MessageLogTest.XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(pattern));
    std::string root = pattern;
    setenv("TMPDIR", root.c_str(), 1);
    std::string folder = root + "/koru-" + std::to_string(geteuid()) + "/tarnix-logs";
    ASSERT_EQ(folder + "/log.txt", Utils::GetLogFilename()); // makes the private temporary folder
    fs::create_directory(folder);

    Utils::LogMessage(WString(L"caf\u00e9 au lait"));
    Utils::LogMessage(WString(L"\u00e9t\u00e9"), 5);
    Utils::LogMessage(WString(2000, L'w'));

    std::ifstream file(folder + "/log.txt");
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line.size() > 26 ? line.substr(26) : line); // past the time stamp
    EXPECT_EQ(lines, (std::vector<std::string>{"Message: caf", "Message:  ErrorCode: 5",
                                               "Message: " + std::string(1024, 'w')}));
    fs::remove_all(root);
}
