#include <CoreServices/LaunchServices.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

// A private XDG world: a test application whose command appends its
// arguments to a record file, registered as the default for text files and
// for the x-koru-test: scheme.  Browsers are replaced by a command that fails,
// so an item nothing handles fails the same way everywhere.
class LaunchServicesTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/koru-launch-XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(pattern));
        root_ = pattern;
        record_ = root_ + "/ran.txt";
        recorder_ = root_ + "/record.sh";
        Write(recorder_, "#!/bin/sh\nfor a in \"$@\"; do printf '%s\\n' \"$a\" >> '" + record_ + "'; done\n");
        chmod(recorder_.c_str(), 0755);

        mkdir((root_ + "/data").c_str(), 0755);
        mkdir((root_ + "/data/applications").c_str(), 0755);
        mkdir((root_ + "/config").c_str(), 0755);
        desktopFile_ = root_ + "/data/applications/koru-recorder.desktop";
        Write(desktopFile_, "[Desktop Entry]\nType=Application\nName=KORU Recorder\nExec=" + recorder_ +
                                " %u\nMimeType=text/plain;x-scheme-handler/x-koru-test;\n");
        Write(root_ + "/config/mimeapps.list", "[Default Applications]\ntext/plain=koru-recorder.desktop\n"
                                               "x-scheme-handler/x-koru-test=koru-recorder.desktop\n");

        SetEnvironment("XDG_DATA_HOME", root_ + "/data");
        SetEnvironment("XDG_CONFIG_HOME", root_ + "/config");
        SetEnvironment("XDG_DATA_DIRS", "/usr/share");
        SetEnvironment("XDG_CURRENT_DESKTOP", "");
        SetEnvironment("BROWSER", "/bin/false");
        // xdg-open consults desktop files only when it believes a display is there.
        if (getenv("DISPLAY") == nullptr && getenv("WAYLAND_DISPLAY") == nullptr)
            SetEnvironment("DISPLAY", ":koru-test");
    }

    void TearDown() override
    {
        for (const auto &saved : saved_) {
            if (saved.second.first)
                setenv(saved.first.c_str(), saved.second.second.c_str(), 1);
            else
                unsetenv(saved.first.c_str());
        }
        std::system(("rm -rf '" + root_ + "'").c_str());
        for (CFTypeRef object : owned_)
            CFRelease(object);
    }

    void SetEnvironment(const std::string &name, const std::string &value)
    {
        if (saved_.count(name) == 0) {
            const char *old = getenv(name.c_str());
            saved_[name] = {old != nullptr, old != nullptr ? old : ""};
        }
        setenv(name.c_str(), value.c_str(), 1);
    }

    static void Write(const std::string &path, const std::string &content) { std::ofstream(path) << content; }

    // The record once it holds the line; the launched program runs on its own
    // and may finish after the call returned.
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

    std::string RecordText()
    {
        std::ifstream file(record_);
        std::stringstream text;
        text << file.rdbuf();
        return text.str();
    }

    CFURLRef FileURL(const std::string &path, bool isDirectory = false)
    {
        CFURLRef url = CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8 *>(path.c_str()),
                                                               static_cast<CFIndex>(path.size()), isDirectory);
        owned_.push_back(url);
        return url;
    }

    CFURLRef TextURL(const char *text)
    {
        CFStringRef string = CFStringCreateWithCString(nullptr, text, kCFStringEncodingUTF8);
        CFURLRef url = CFURLCreateWithString(nullptr, string, nullptr);
        CFRelease(string);
        owned_.push_back(url);
        return url;
    }

    CFArrayRef Items(CFTypeRef item)
    {
        CFArrayRef items = CFArrayCreate(nullptr, &item, 1, &kCFTypeArrayCallBacks);
        owned_.push_back(items);
        return items;
    }

    OSStatus Open(CFURLRef app, CFArrayRef items, LSLaunchFlags flags, CFURLRef *launched = nullptr)
    {
        LSLaunchURLSpec launchSpec = {app, items, nullptr, flags, nullptr};
        return LSOpenFromURLSpec(&launchSpec, launched);
    }

    std::string root_, record_, recorder_, desktopFile_;
    std::map<std::string, std::pair<bool, std::string>> saved_;
    std::vector<CFTypeRef> owned_;
};

} // namespace

TEST_F(LaunchServicesTest, DefaultApplicationOpensURLsAndFiles)
{
    CFURLRef launched = reinterpret_cast<CFURLRef>(1);
    EXPECT_EQ(noErr, Open(nullptr, Items(TextURL("x-koru-test:hello")), kLSLaunchDefaults, &launched));
    EXPECT_EQ(nullptr, launched);
    EXPECT_TRUE(RecordHasLine("x-koru-test:hello")) << RecordText();

    const std::string document = root_ + "/a note.txt";
    Write(document, "plain text\n");
    EXPECT_EQ(noErr, LSOpenCFURLRef(FileURL(document), nullptr));
    EXPECT_TRUE(RecordHasLine(document)) << RecordText();

    // Asynchronous: the call does not wait for xdg-open, the item still opens.
    EXPECT_EQ(noErr, Open(nullptr, Items(TextURL("x-koru-test:later")), kLSLaunchAsync));
    EXPECT_TRUE(RecordHasLine("x-koru-test:later")) << RecordText();
}

TEST_F(LaunchServicesTest, ItemsNothingOpensAreReported)
{
    EXPECT_EQ(kLSApplicationNotFoundErr, Open(nullptr, Items(TextURL("x-koru-nothing:at-all")), kLSLaunchDefaults));
    EXPECT_EQ(fnfErr, Open(nullptr, Items(FileURL(root_ + "/missing.txt")), kLSLaunchDefaults));
}

TEST_F(LaunchServicesTest, ExplicitApplicationsOfEveryKind)
{
    const std::string document = root_ + "/doc.txt";
    Write(document, "x");

    // A .desktop file: its Exec line with the item for %u.
    CFURLRef launched = nullptr;
    EXPECT_EQ(noErr, Open(FileURL(desktopFile_), Items(FileURL(document)), kLSLaunchDefaults, &launched));
    ASSERT_NE(nullptr, launched);
    EXPECT_TRUE(CFEqual(launched, FileURL(desktopFile_)));
    CFRelease(launched);
    EXPECT_TRUE(RecordHasLine(document)) << RecordText();

    // An executable file, given the items as its arguments.
    EXPECT_EQ(noErr, Open(FileURL(recorder_), Items(TextURL("x-koru-test:direct")), kLSLaunchDefaults));
    EXPECT_TRUE(RecordHasLine("x-koru-test:direct")) << RecordText();

    // An application bundle: its executable.
    const std::string app = root_ + "/Recorder.app";
    mkdir(app.c_str(), 0755);
    mkdir((app + "/Resources").c_str(), 0755);
    Write(app + "/Resources/Info-gnustep.plist", "{ NSExecutable = Recorder; CFBundleExecutable = Recorder; }\n");
    std::system(("cp '" + recorder_ + "' '" + app + "/Recorder'").c_str());
    EXPECT_EQ(noErr, Open(FileURL(app, true), Items(TextURL("x-koru-test:bundle")), kLSLaunchDefaults));
    EXPECT_TRUE(RecordHasLine("x-koru-test:bundle")) << RecordText();

    // Started alone, without items.
    EXPECT_EQ(noErr, Open(FileURL(recorder_), nullptr, kLSLaunchDefaults));
}

TEST_F(LaunchServicesTest, BadSpecificationsAreRefused)
{
    EXPECT_EQ(paramErr, LSOpenFromURLSpec(nullptr, nullptr));
    EXPECT_EQ(paramErr, Open(nullptr, nullptr, kLSLaunchDefaults));
    EXPECT_EQ(paramErr, Open(nullptr, Items(CFSTR("not a URL")), kLSLaunchDefaults));
    EXPECT_EQ(paramErr, LSOpenCFURLRef(nullptr, nullptr));

    const std::string text = root_ + "/plain.txt";
    Write(text, "not an application");
    EXPECT_EQ(kLSNotAnApplicationErr, Open(FileURL(text), nullptr, kLSLaunchDefaults));
    EXPECT_EQ(kLSApplicationNotFoundErr, Open(FileURL(root_ + "/NoSuch.app", true), nullptr, kLSLaunchDefaults));
    EXPECT_EQ("", RecordText());
}

namespace {

FSRef RefOf(const std::string &path)
{
    FSRef ref{};
    FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), &ref, nullptr);
    return ref;
}

std::string PathOfRef(const FSRef &ref)
{
    UInt8 path[4096];
    return FSRefMakePath(&ref, path, sizeof path) == noErr ? reinterpret_cast<char *>(path) : "<none>";
}

} // namespace

TEST_F(LaunchServicesTest, ApplicationsFoundForItemsAndByIdentity)
{
    const std::string document = root_ + "/note with space.txt";
    Write(document, "plain words\n");
    const FSRef item = RefOf(document);
    FSRef app;
    CFURLRef appURL = nullptr;
    ASSERT_EQ(noErr, LSGetApplicationForItem(&item, kLSRolesAll, &app, &appURL));
    EXPECT_EQ(desktopFile_, PathOfRef(app));
    ASSERT_NE(nullptr, appURL);
    owned_.push_back(appURL);

    // A GNUstep application bundle with a signature and an identifier.
    SetEnvironment("GNUSTEP_USER_ROOT", root_ + "/gnustep");
    const std::string bundle = root_ + "/gnustep/Applications/Tool Box.app";
    std::system(("mkdir -p '" + bundle + "/Resources'").c_str());
    Write(bundle + "/Resources/Info-gnustep.plist",
          "{ CFBundleIdentifier = \"org.koru.toolbox\"; CFBundleSignature = \"TBOX\"; CFBundleName = \"Tool Box\"; "
          "CFBundleExecutable = \"Tool Box\"; }\n");
    EXPECT_EQ(noErr, LSFindApplicationForInfo(0x54424F58, nullptr, nullptr, &app, nullptr)); // 'TBOX'
    EXPECT_EQ(bundle, PathOfRef(app));
    EXPECT_EQ(noErr, LSFindApplicationForInfo(kLSUnknownCreator, CFSTR("org.koru.toolbox"), nullptr, &app, nullptr));
    EXPECT_EQ(bundle, PathOfRef(app));
    EXPECT_EQ(noErr, LSFindApplicationForInfo(kLSUnknownCreator, nullptr, CFSTR("Tool Box"), &app, nullptr));
    EXPECT_EQ(bundle, PathOfRef(app));
    EXPECT_EQ(kLSApplicationNotFoundErr,
              LSFindApplicationForInfo(0x54424F58, CFSTR("org.koru.other"), nullptr, &app, nullptr)); // all must match
    EXPECT_EQ(noErr, LSFindApplicationForInfo(kLSUnknownCreator, CFSTR("koru-recorder"), nullptr, nullptr, &appURL));
    owned_.push_back(appURL);
    EXPECT_EQ(noErr, LSFindApplicationForInfo(kLSUnknownCreator, nullptr, CFSTR("KORU Recorder"), &app, nullptr));
    EXPECT_EQ(desktopFile_, PathOfRef(app));
    EXPECT_EQ(paramErr, LSFindApplicationForInfo(kLSUnknownCreator, nullptr, nullptr, &app, nullptr));
    EXPECT_EQ(paramErr, LSGetApplicationForItem(nullptr, kLSRolesAll, &app, nullptr));

    // Opening through refs reaches the same application.
    const FSRef recorder = RefOf(desktopFile_);
    LSLaunchFSRefSpec launchSpec = {&recorder, 1, &item, nullptr, kLSLaunchDefaults, nullptr};
    FSRef launched;
    ASSERT_EQ(noErr, LSOpenFromRefSpec(&launchSpec, &launched));
    EXPECT_EQ(desktopFile_, PathOfRef(launched));
    EXPECT_TRUE(RecordHasLine(document));
    launchSpec.itemRefs = nullptr;
    EXPECT_EQ(paramErr, LSOpenFromRefSpec(&launchSpec, nullptr));
}

TEST_F(LaunchServicesTest, ItemInformationFlags)
{
    const std::string tool = root_ + "/tool", link = root_ + "/link";
    Write(tool, "#!/bin/sh\n");
    chmod(tool.c_str(), 0755);
    symlink(tool.c_str(), link.c_str());
    LSItemInfoRecord info;
    const FSRef toolRef = RefOf(tool);
    ASSERT_EQ(noErr, LSCopyItemInfoForRef(&toolRef, kLSRequestAllFlags, &info));
    EXPECT_EQ(UInt32(kLSItemInfoIsPlainFile | kLSItemInfoIsApplication), info.flags);

    FSRef folder = RefOf(root_), linkRef;
    const std::u16string name = u"link";
    ASSERT_EQ(noErr, FSMakeFSRefUnicode(&folder, name.size(), reinterpret_cast<const UniChar *>(name.data()), 0, &linkRef));
    ASSERT_EQ(noErr, LSCopyItemInfoForRef(&linkRef, kLSRequestAllFlags, &info));
    EXPECT_EQ(UInt32(kLSItemInfoIsSymlink | kLSItemInfoIsAliasFile), info.flags);
    ASSERT_EQ(noErr, LSCopyItemInfoForRef(&folder, kLSRequestAllFlags | kLSRequestTypeCreator, &info));
    EXPECT_EQ(UInt32(kLSItemInfoIsContainer), info.flags);
    EXPECT_EQ(0x666F6C64u, info.filetype); // 'fold'

    CFURLRef desktopURL = FileURL(desktopFile_);
    ASSERT_EQ(noErr, LSCopyItemInfoForURL(desktopURL, kLSRequestAllFlags | kLSRequestExtension, &info));
    EXPECT_EQ(UInt32(kLSItemInfoIsPlainFile | kLSItemInfoIsApplication), info.flags);
    ASSERT_NE(nullptr, info.extension);
    EXPECT_EQ(kCFCompareEqualTo, CFStringCompare(info.extension, CFSTR("desktop"), 0));
    CFRelease(info.extension);
    EXPECT_EQ(fnfErr, LSCopyItemInfoForURL(FileURL(root_ + "/missing"), kLSRequestAllFlags, &info));
    EXPECT_EQ(paramErr, LSCopyItemInfoForRef(nullptr, kLSRequestAllFlags, &info));
}
