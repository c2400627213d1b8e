#include <KORU/SystemInfo.h>
#include <KORU/Utils.h>

#include <CoreServices/CoreServices.h>

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <map>
#include <utility>
#include <string>
#include <vector>

#include <cstdio>
#include <grp.h>
#include <unistd.h>

extern char **environ;

namespace {

std::string Narrow(const WString &text)
{
    return Utils::wstring2utf8(text);
}

/* The value of KEY= in the os-release record, quotes removed. */
std::string OsReleaseValue(const std::string &key)
{
    std::ifstream file("/etc/os-release");
    if (!file)
        file.open("/usr/lib/os-release");
    std::string line;
    while (std::getline(file, line)) {
        if (line.compare(0, key.size() + 1, key + "=") != 0)
            continue;
        std::string value = line.substr(key.size() + 1);
        if (value.size() >= 2 && (value.front() == '"' || value.front() == '\''))
            value = value.substr(1, value.size() - 2);
        return value;
    }
    return std::string();
}

TEST(UtilsSystem, VersionAndNameComeFromTheOsReleaseRecord)
{
    std::string version = OsReleaseValue("VERSION_ID");
    std::string name = OsReleaseValue("NAME");
    ASSERT_FALSE(version.empty()) << "this system's os-release has no VERSION_ID";
    EXPECT_EQ(Narrow(Utils::getOsVersion()), version);
    EXPECT_EQ(Narrow(Utils::getOsName()), name + " " + version);
}

/* Puts Gestalt's built-in answers back whatever a test did to them. */
class GestaltRestorer {
public:
    ~GestaltRestorer()
    {
        ReplaceGestaltValue(gestaltSystemVersion, 0x1049);
        ReplaceGestaltValue(gestaltSysArchitecture, gestaltIntel);
    }
};

TEST(UtilsSystem, NumericVersionIsCachedOnlyByTheCFunction)
{
    GestaltRestorer restore;
    EXPECT_EQ(GestaltSystemVersion(), 0x1049);
    EXPECT_EQ(Utils::getOsBuildNumber(), 0x1049);

    ASSERT_EQ(ReplaceGestaltValue(gestaltSystemVersion, 0x1050), noErr);
    EXPECT_EQ(Utils::getOsBuildNumber(), 0x1050); // asked afresh
    EXPECT_EQ(GestaltSystemVersion(), 0x1049);    // kept from the first call
    ASSERT_EQ(DeleteGestaltValue(gestaltSystemVersion), noErr);
    EXPECT_EQ(Utils::getOsBuildNumber(), 0);
}

TEST(UtilsSystem, ProcessorFamilyFollowsGestalt)
{
    GestaltRestorer restore;
    const std::pair<SInt32, const char *> families[] = {
        {gestalt68k, "68k"}, {gestaltPowerPC, "PowerPC"}, {gestaltIntel, "Intel"}, {77, "Intel"}};
    for (const auto &[value, family] : families) {
        ReplaceGestaltValue(gestaltSysArchitecture, value);
        EXPECT_EQ(Narrow(Utils::getProcessorType()), family) << value;
    }
    DeleteGestaltValue(gestaltSysArchitecture);
    EXPECT_EQ(Narrow(Utils::getProcessorType()), "Intel");
}

TEST(UtilsSystem, UserAndGroupsComeFromTheUserDatabase)
{
    EXPECT_EQ(UserIsRoot() != 0, geteuid() == 0);
    EXPECT_FALSE(UserIsBelongToGroup(nullptr));
    EXPECT_FALSE(UserIsBelongToGroup("no-such-group-koru"));

    // Every group of the database answers whether the login name is listed;
    // without a login name (containers, CI) every answer is false.
    const char *login = getlogin();
    std::map<std::string, bool> expected;
    setgrent();
    while (const struct group *group = getgrent()) {
        bool listed = false;
        for (char **member = group->gr_mem; login != nullptr && *member != nullptr; ++member)
            listed = listed || strcmp(*member, login) == 0;
        expected[group->gr_name] = listed;
    }
    endgrent();
    ASSERT_FALSE(expected.empty());
    for (const auto &[name, listed] : expected)
        EXPECT_EQ(UserIsBelongToGroup(name.c_str()) != 0, listed) << name;
}

/* What the probe prints. */
std::string Answers(const std::string &language, const std::string &country)
{
    return "language=" + language + "\ncountry=" + country + "\n";
}

/* Runs the probe through env with the locale variables of this process
 * replaced by settings and with arguments (none holds a quote); answers its
 * output ("failed: ..." if it failed). */
std::string RunProbe(const std::vector<std::string> &settings, const std::vector<std::string> &arguments = {})
{
    std::string command = "/usr/bin/env";
    for (char **entry = environ; *entry != nullptr; ++entry) {
        const std::string name = std::string(*entry).substr(0, std::string(*entry).find('='));
        if (name.rfind("LANG", 0) == 0 || name.rfind("LC_", 0) == 0)
            command += " -u " + name;
    }
    for (const std::string &word : settings)
        command += " '" + word + "'";
    command += " '" UTILS_SYSTEM_PROBE "'";
    for (const std::string &word : arguments)
        command += " '" + word + "'";
    FILE *pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        return "failed: popen";
    std::string output;
    char buffer[512];
    for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        output.append(buffer, n);
    return pclose(pipe) == 0 ? output : "failed: " + output;
}

TEST(UtilsSystemLocale, LanguageAndCountryFollowTheLocaleOfTheEnvironment)
{
    EXPECT_EQ(RunProbe({"LANG=de_DE.UTF-8"}), Answers("de", "DE"));
    EXPECT_EQ(RunProbe({"LC_ALL=fr_FR.UTF-8@euro", "LANG=de_DE.UTF-8"}), Answers("fr", "FR"));
    EXPECT_EQ(RunProbe({"LANGUAGE=", "LC_ALL=", "LC_MESSAGES=pt_BR", "LANG=ja_JP.UTF-8"}), Answers("pt", "BR"));
    // LANGUAGE's list comes first; a language without a country stays whole.
    EXPECT_EQ(RunProbe({"LANGUAGE=ja:en", "LANG=de_DE.UTF-8"}), Answers("ja", "ja"));
    EXPECT_EQ(RunProbe({"LANGUAGE=sv_FI:sv", "LANG=C"}), Answers("sv", "FI"));
    // The C locale and no locale give nothing.
    for (const std::vector<std::string> &none :
         {std::vector<std::string>{}, {"LANG=C"}, {"LANG=POSIX"}, {"LC_ALL=C.UTF-8", "LANG=de_DE.UTF-8"}, {"LANG=../../etc"}})
        EXPECT_EQ(RunProbe(none), Answers("", ""));
}

TEST(UtilsSystemLocale, ValuesTheUserSetWin)
{
    // Command-line arguments are the user's own defaults domain.
    EXPECT_EQ(RunProbe({"LANG=de_DE.UTF-8"}, {"-AppleLanguages", "(it, en)", "-AppleLocale", "it_CH"}),
              Answers("it", "CH"));
    EXPECT_EQ(RunProbe({"LANG=C"}, {"-AppleLocale", "en_"}), Answers("", "en"));
    EXPECT_EQ(RunProbe({"LANG=C"}, {"-AppleLocale", "zh_Hans_CN"}), Answers("", "Hans_CN"));
    // Values of the wrong kind give nothing and never stop the host.
    EXPECT_EQ(RunProbe({"LANG=de_DE.UTF-8"}, {"-AppleLanguages", "fr", "-AppleLocale", "(a, b)"}), Answers("", ""));
    EXPECT_EQ(RunProbe({"LANG=de_DE.UTF-8"}, {"-AppleLanguages", "(\"\", fr)"}), Answers("", "DE"));
}

} // namespace
