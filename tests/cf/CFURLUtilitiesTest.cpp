#include <KORU/CFURLUtilities.h>

#include <CoreServices/Folders.h>

#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

// Copies of the bundle fixtures (a Mac and a GNUstep layout, each with an
// English and a French localisation) in a fresh folder, every CF object
// made by the test released at its end.
class CFURLUtilitiesTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/koru-cfurl-XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(pattern));
        char *real = realpath(pattern, nullptr);
        root_ = real;
        free(real);
        const std::string command = "cp -R '" KORU_TEST_SOURCE_DIR "/platform/CoreFoundation/CFBundleTestData/.' '" +
                                    root_ + "' && mkdir -p '" + root_ + "/Mac.bundle/Contents/MacOS' && cp /bin/true '" +
                                    root_ + "/Mac.bundle/Contents/MacOS/Plugin' && cp /bin/true '" + root_ +
                                    "/GNUstep.bundle/Plugin'";
        ASSERT_EQ(0, std::system(command.c_str()));
        mac_ = Own(CFBundleCreateFromPOSIXPath(String(root_ + "/Mac.bundle")));
        gnustep_ = Own(CFBundleCreateFromPOSIXPath(String(root_ + "/GNUstep.bundle")));
        ASSERT_NE(nullptr, mac_);
        ASSERT_NE(nullptr, gnustep_);
    }

    void TearDown() override
    {
        for (CFTypeRef object : owned_)
            if (object != nullptr)
                CFRelease(object);
        std::system(("rm -rf '" + root_ + "'").c_str());
    }

    template <typename Ref>
    Ref Own(Ref object)
    {
        owned_.push_back(object);
        return object;
    }

    CFStringRef String(const std::string &text)
    {
        return Own(CFStringCreateWithCString(nullptr, text.c_str(), kCFStringEncodingUTF8));
    }

    CFURLRef FileURL(const std::string &path, bool isDirectory = false)
    {
        return Own(CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8 *>(path.c_str()),
                                                           static_cast<CFIndex>(path.size()), isDirectory));
    }

    static std::string PathOf(CFURLRef url)
    {
        char path[PATH_MAX] = "";
        if (url == nullptr || !CFURLGetFileSystemRepresentation(url, true, reinterpret_cast<UInt8 *>(path), sizeof path))
            return "<none>";
        return path;
    }

    // The path of a URL the caller owns, released here.
    static std::string TakePath(CFURLRef url)
    {
        std::string path = PathOf(url);
        if (url != nullptr)
            CFRelease(url);
        return path;
    }

    static std::string Text(CFTypeRef string)
    {
        char text[512] = "";
        if (string == nullptr || CFGetTypeID(string) != CFStringGetTypeID() ||
            !CFStringGetCString(static_cast<CFStringRef>(string), text, sizeof text, kCFStringEncodingUTF8))
            return "<none>";
        return text;
    }

    // The text of a string the caller owns, released here.
    static std::string TakeText(CFStringRef string)
    {
        std::string text = Text(string);
        if (string != nullptr)
            CFRelease(string);
        return text;
    }

    static void Write(const std::string &path, const std::string &content) { std::ofstream(path) << content; }

    std::string root_;
    CFBundleRef mac_ = nullptr;
    CFBundleRef gnustep_ = nullptr;
    std::vector<CFTypeRef> owned_;
};

size_t CountOf(const std::string &text, const std::string &needle)
{
    size_t count = 0;
    for (size_t at = text.find(needle); at != std::string::npos; at = text.find(needle, at + 1))
        ++count;
    return count;
}

} // namespace

TEST_F(CFURLUtilitiesTest, BundleLocationsInBothLayouts)
{
    EXPECT_EQ(root_, TakePath(CFBundleCopyDirectoryURL(mac_)));
    EXPECT_EQ(root_ + "/notes.txt", TakePath(CFBundleCopyDirectoryURLAppendingPathComponent(mac_, CFSTR("notes.txt"), false)));

    EXPECT_EQ(root_ + "/Mac.bundle/Contents/MacOS",
              TakePath(CFBundleCopyExecutableDirectoryURLAppendingPathComponent(mac_, nullptr, true)));
    EXPECT_EQ(root_ + "/GNUstep.bundle/tool",
              TakePath(CFBundleCopyExecutableDirectoryURLAppendingPathComponent(gnustep_, CFSTR("tool"), false)));
    EXPECT_EQ(root_ + "/Mac.bundle/Contents/Resources/Sub",
              TakePath(CFBundleCopyResourcesDirectoryURLAppendingPathComponent(mac_, CFSTR("Sub"), true)));
    EXPECT_EQ(root_ + "/GNUstep.bundle/Resources",
              TakePath(CFBundleCopyResourcesDirectoryURLAppendingPathComponent(gnustep_, nullptr, true)));

    FSRef ref;
    UInt8 path[PATH_MAX];
    auto pathOf = [&](const FSRef &r) {
        return FSRefMakePath(&r, path, sizeof path) == noErr ? std::string(reinterpret_cast<char *>(path)) : "";
    };
    ASSERT_TRUE(CFBundleGetExecutableFSRef(mac_, &ref));
    EXPECT_EQ(root_ + "/Mac.bundle/Contents/MacOS/Plugin", pathOf(ref));
    EXPECT_FALSE(CFBundleGetExecutableFSRef(mac_, nullptr));

    ASSERT_TRUE(CFBundleGetResourceFSRef(gnustep_, CFSTR("deep"), CFSTR("txt"), CFSTR("Sub"), &ref));
    EXPECT_EQ(root_ + "/GNUstep.bundle/Resources/Sub/deep.txt", pathOf(ref));
    EXPECT_FALSE(CFBundleGetResourceFSRef(gnustep_, CFSTR("missing"), CFSTR("txt"), nullptr, &ref) ||
                 CFBundleGetResourceFSRef(nullptr, CFSTR("deep"), CFSTR("txt"), CFSTR("Sub"), &ref));

    // A NULL bundle means the main bundle: the folder around this test program,
    // whose executable is the program itself.
    CFURLRef mainURL = Own(CFBundleCopyBundleURL(CFBundleGetMainBundle()));
    CFURLRef mainFolder = Own(CFURLCreateCopyDeletingLastPathComponent(nullptr, mainURL));
    EXPECT_EQ(PathOf(mainFolder), TakePath(CFBundleCopyDirectoryURL(nullptr)));
    char program[PATH_MAX];
    ASSERT_NE(nullptr, realpath("/proc/self/exe", program));
    const std::string programPath = program;
    EXPECT_EQ(programPath.substr(0, programPath.rfind('/')),
              TakePath(CFBundleCopyExecutableDirectoryURLAppendingPathComponent(nullptr, nullptr, true)));
    ASSERT_TRUE(CFBundleGetExecutableFSRef(nullptr, &ref));
    EXPECT_EQ(programPath, pathOf(ref));

    // An object that is no bundle counts as a missing bundle.
    CFBundleRef notABundle = reinterpret_cast<CFBundleRef>(const_cast<void *>(static_cast<const void *>(CFSTR("x"))));
    EXPECT_TRUE(CFBundleCopyDirectoryURL(notABundle) == nullptr &&
                CFBundleCopyExecutableDirectoryURLAppendingPathComponent(notABundle, CFSTR("tool"), false) == nullptr &&
                CFBundleCopyResourcesDirectoryURLAppendingPathComponent(notABundle, nullptr, true) == nullptr &&
                CFBundleCreateFromBundleExecutableDirectory(notABundle, CFSTR("Helper.bundle")) == nullptr);
    EXPECT_FALSE(CFBundleGetExecutableFSRef(notABundle, &ref) ||
                 CFBundleGetResourceFSRef(notABundle, CFSTR("deep"), CFSTR("txt"), CFSTR("Sub"), &ref));
}

TEST_F(CFURLUtilitiesTest, BundlesCreatedFromPlaces)
{
    FSRef ref;
    ASSERT_EQ(noErr, FSPathMakeRef(reinterpret_cast<const UInt8 *>((root_ + "/Mac.bundle").c_str()), &ref, nullptr));
    CFBundleRef fromRef = Own(CFBundleCreateFromFSRef(&ref));
    EXPECT_EQ(mac_, fromRef);
    EXPECT_EQ("org.koru.test.mac", Text(CFBundleGetIdentifier(fromRef)));

    // A helper bundle beside the executable.
    const std::string helper = root_ + "/Mac.bundle/Contents/MacOS/Helper.bundle";
    ASSERT_EQ(0, std::system(("mkdir -p '" + helper + "/Resources'").c_str()));
    Write(helper + "/Resources/Info-gnustep.plist", "{ CFBundleIdentifier = org.koru.test.helper; }\n");
    CFBundleRef beside = Own(CFBundleCreateFromBundleExecutableDirectory(mac_, CFSTR("Helper.bundle")));
    ASSERT_NE(nullptr, beside);
    EXPECT_EQ("org.koru.test.helper", Text(CFBundleGetIdentifier(beside)));
    EXPECT_TRUE(CFBundleCreateFromBundleExecutableDirectory(mac_, CFSTR("")) == nullptr &&
                CFBundleCreateFromBundleExecutableDirectory(mac_, CFSTR("Absent.bundle")) == nullptr);

    // A bundle in the application-support folder ($XDG_DATA_HOME).
    const char *oldDataHome = getenv("XDG_DATA_HOME");
    const std::string savedDataHome = oldDataHome != nullptr ? oldDataHome : "";
    setenv("XDG_DATA_HOME", root_.c_str(), 1);
    CFBundleRef found = Own(CFBundleCreateWithFindFolder(kUserDomain, kApplicationSupportFolderType, CFSTR("GNUstep.bundle")));
    EXPECT_EQ(gnustep_, found);
    EXPECT_TRUE(CFBundleCreateWithFindFolder(kUserDomain, kApplicationSupportFolderType, nullptr) == nullptr &&
                CFBundleCreateWithFindFolder(kUserDomain, kApplicationSupportFolderType, CFSTR("None.bundle")) == nullptr);
    if (oldDataHome != nullptr)
        setenv("XDG_DATA_HOME", savedDataHome.c_str(), 1);
    else
        unsetenv("XDG_DATA_HOME");

    EXPECT_TRUE(CFBundleCreateFromPOSIXPath(String(root_ + "/missing.bundle")) == nullptr &&
                CFBundleCreateFromPOSIXPath(nullptr) == nullptr && CFBundleCreateFromFSRef(nullptr) == nullptr);
}

TEST_F(CFURLUtilitiesTest, URLsThroughTheFileSystem)
{
    const std::string file = root_ + "/Mac.bundle/Contents/Resources/icon.png";
    EXPECT_TRUE(CFURLIsExist(FileURL(file)));
    EXPECT_FALSE(CFURLIsExist(FileURL(root_ + "/missing")) || CFURLIsExist(nullptr));

    // A path through a symbolic link comes back as the file system has it.
    ASSERT_EQ(0, symlink((root_ + "/Mac.bundle/Contents").c_str(), (root_ + "/shortcut").c_str()));
    EXPECT_EQ(file, TakeText(CFURLCopyPosixPath(FileURL(root_ + "/shortcut/Resources/icon.png"))));
    EXPECT_TRUE(CFURLCopyPosixPath(FileURL(root_ + "/missing.txt")) == nullptr && CFURLCopyPosixPath(nullptr) == nullptr);

    FSSpec fsSpec;
    ASSERT_TRUE(CFURLGetFSSpec(FileURL(file), &fsSpec));
    EXPECT_EQ(file, TakePath(CFURLCreateFromFSSpec(&fsSpec)));
    EXPECT_FALSE(CFURLGetFSSpec(FileURL(root_ + "/missing"), &fsSpec) || CFURLGetFSSpec(FileURL(file), nullptr));
    EXPECT_EQ(nullptr, CFURLCreateFromFSSpec(nullptr));
}

TEST_F(CFURLUtilitiesTest, ModeAndOwnerOfAFile)
{
    const std::string file = root_ + "/permissions.txt";
    Write(file, "content");
    struct stat info;
    EXPECT_TRUE(CFURLSetFilePOSIXMode(FileURL(file), 0604));
    ASSERT_EQ(0, stat(file.c_str(), &info));
    EXPECT_EQ(0604u, info.st_mode & 07777);
    EXPECT_TRUE(CFURLSetFileOwnerID(FileURL(file), geteuid()));
    ASSERT_EQ(0, stat(file.c_str(), &info));
    EXPECT_EQ(geteuid(), info.st_uid);

    EXPECT_FALSE(CFURLSetFilePOSIXMode(FileURL(root_ + "/missing"), 0600) || CFURLSetFileOwnerID(nullptr, 0));
}

TEST_F(CFURLUtilitiesTest, OpensAURLWithItsDefaultApplication)
{
    // A private XDG world whose handler of x-koru-test: records its argument.
    const std::string record = root_ + "/ran.txt", recorder = root_ + "/record.sh";
    Write(recorder, "#!/bin/sh\nprintf '%s\\n' \"$1\" >> '" + record + "'\n");
    chmod(recorder.c_str(), 0755);
    ASSERT_EQ(0, std::system(("mkdir -p '" + root_ + "/xdg/applications' '" + root_ + "/config'").c_str()));
    Write(root_ + "/xdg/applications/koru-recorder.desktop",
          "[Desktop Entry]\nType=Application\nName=Recorder\nExec=" + recorder + " %u\n");
    Write(root_ + "/config/mimeapps.list", "[Default Applications]\nx-scheme-handler/x-koru-test=koru-recorder.desktop\n");
    const char *names[] = {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "DISPLAY", "BROWSER"};
    std::vector<std::pair<bool, std::string>> saved;
    for (const char *name : names)
        saved.emplace_back(getenv(name) != nullptr, getenv(name) != nullptr ? getenv(name) : "");
    setenv("XDG_DATA_HOME", (root_ + "/xdg").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (root_ + "/config").c_str(), 1);
    setenv("BROWSER", "/bin/false", 1);
    if (getenv("WAYLAND_DISPLAY") == nullptr && !saved[2].first)
        setenv("DISPLAY", ":koru-test", 1);

    CFURLRef url = Own(CFURLCreateWithString(nullptr, CFSTR("x-koru-test:opened"), nullptr));
    EXPECT_TRUE(CFURLOpenWithLSLaunchFlags(url, kLSLaunchDefaults));
    bool recorded = false;
    for (int attempt = 0; attempt < 600 && !recorded; ++attempt) {
        std::ifstream file(record);
        std::string line;
        recorded = std::getline(file, line) && line == "x-koru-test:opened";
        if (!recorded)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    EXPECT_TRUE(recorded);

    CFURLRef unhandled = Own(CFURLCreateWithString(nullptr, CFSTR("x-koru-unhandled:thing"), nullptr));
    EXPECT_FALSE(CFURLOpenWithLSLaunchFlags(unhandled, kLSLaunchDefaults) ||
                 CFURLOpenWithLSLaunchFlags(nullptr, kLSLaunchDefaults) ||
                 CFURLOpenWithLSLaunchFlags(reinterpret_cast<CFURLRef>(CFSTR("x-koru-test:text")), kLSLaunchDefaults));

    for (size_t i = 0; i < saved.size(); ++i) {
        if (saved[i].first)
            setenv(names[i], saved[i].second.c_str(), 1);
        else
            unsetenv(names[i]);
    }
}

TEST_F(CFURLUtilitiesTest, NumberKeyedLookUp)
{
    const void *keys[] = {CFSTR("-5"), CFSTR("42")};
    const void *values[] = {CFSTR("minus five"), CFSTR("forty-two")};
    CFDictionaryRef dictionary = Own(CFDictionaryCreate(nullptr, keys, values, 2, &kCFTypeDictionaryKeyCallBacks,
                                                        &kCFTypeDictionaryValueCallBacks));
    EXPECT_EQ("minus five", Text(CFDictionaryGetValueForNumber(dictionary, -5)));
    EXPECT_EQ("forty-two", Text(CFDictionaryGetValueForNumber(dictionary, 42)));
    EXPECT_TRUE(CFDictionaryGetValueForNumber(dictionary, 5) == nullptr &&
                CFDictionaryGetValueForNumber(nullptr, 42) == nullptr &&
                CFDictionaryGetValueForNumber(reinterpret_cast<CFDictionaryRef>(CFSTR("42")), 42) == nullptr);
}

TEST_F(CFURLUtilitiesTest, DictionaryFilesWrittenAndRead)
{
    const void *keys[] = {CFSTR("name"), CFSTR("7")};
    const void *values[] = {CFSTR("caf\u00e9"), CFSTR("seven")};
    CFDictionaryRef dictionary = Own(CFDictionaryCreate(nullptr, keys, values, 2, &kCFTypeDictionaryKeyCallBacks,
                                                        &kCFTypeDictionaryValueCallBacks));
    CFURLRef url = FileURL(root_ + "/saved.plist");
    ASSERT_TRUE(CFDictionaryWriteToURL(dictionary, url));
    std::ifstream written(root_ + "/saved.plist");
    std::string firstLine;
    std::getline(written, firstLine);
    EXPECT_EQ(0u, firstLine.find("<?xml"));

    CFMutableDictionaryRef read = Own(CFDictionaryCreateMutableWithContentsOfURL(url));
    ASSERT_NE(nullptr, read);
    EXPECT_TRUE(CFEqual(read, dictionary));
    CFDictionarySetValue(read, CFSTR("added"), CFSTR("yes")); // mutable as promised
    EXPECT_EQ("seven", Text(CFDictionaryGetValueForNumber(read, 7)));

    EXPECT_FALSE(CFDictionaryWriteToURL(dictionary, FileURL(root_ + "/no/such/folder.plist")) ||
                 CFDictionaryWriteToURL(nullptr, url) || CFDictionaryWriteToURL(dictionary, nullptr));
    // Only a dictionary is written: another property list leaves no file.
    CFArrayRef list = Own(CFArrayCreate(nullptr, values, 2, &kCFTypeArrayCallBacks));
    EXPECT_FALSE(CFDictionaryWriteToURL(reinterpret_cast<CFDictionaryRef>(list), FileURL(root_ + "/list.plist")));
    EXPECT_NE(0, access((root_ + "/list.plist").c_str(), F_OK));

    // From a bundle's resources: a dictionary, an array (refused), a missing one.
    CFMutableDictionaryRef settings = Own(CFDictionaryCreateMutableWithResource(CFSTR("Settings"), CFSTR("plist"), nullptr, mac_));
    ASSERT_NE(nullptr, settings);
    EXPECT_EQ("settings", Text(CFDictionaryGetValue(settings, CFSTR("Name"))));
    for (CFStringRef name : {CFSTR("List"), CFSTR("Absent")})
        EXPECT_EQ(nullptr, CFDictionaryCreateMutableWithResource(name, CFSTR("plist"), nullptr, gnustep_));
    EXPECT_EQ(nullptr, CFDictionaryCreateMutableWithResource(CFSTR("Settings"), CFSTR("plist"), nullptr, nullptr));
}

TEST_F(CFURLUtilitiesTest, MalformedDictionaryFileIsLoggedOnce)
{
    Write(root_ + "/broken.plist", "<?xml version=\"1.0\"?><plist><dict><key>a</key><string>b");
    Write(root_ + "/array.plist", "( one, two )");
    ::testing::internal::CaptureStderr();
    for (const char *name : {"/broken.plist", "/array.plist", "/missing.plist"})
        EXPECT_EQ(nullptr, CFDictionaryCreateMutableWithContentsOfURL(FileURL(root_ + name))) << name;
    EXPECT_EQ(nullptr, CFDictionaryCreateMutableWithContentsOfURL(nullptr));
    const std::string logged = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(1u, CountOf(logged, "CFPropertyListCreateFromXMLData:")) << logged;
    EXPECT_EQ(1u, CountOf(logged, "CFDictionaryCreateMutableWithContentsOfURL")) << logged;
    EXPECT_NE(std::string::npos, logged.find("442")) << logged;
}

TEST_F(CFURLUtilitiesTest, StringsTablesPerLocalisation)
{
    // French tables are binary property lists, English ones UTF-16 with a byte-order mark.
    CFDictionaryRef french = Own(CFBundleCopyStringsDictionaryForLocalization(mac_, nullptr, CFSTR("fr")));
    ASSERT_NE(nullptr, french);
    EXPECT_EQ("Bonjour", Text(CFDictionaryGetValue(french, CFSTR("hello"))));
    CFDictionaryRef english = Own(CFBundleCopyStringsDictionaryForLocalization(gnustep_, CFSTR("Localizable"), CFSTR("English")));
    ASSERT_NE(nullptr, english);
    EXPECT_EQ("Goodbye", Text(CFDictionaryGetValue(english, CFSTR("bye"))));
    EXPECT_EQ(nullptr, CFBundleCopyStringsDictionaryForLocalization(mac_, CFSTR("Errors"), CFSTR("fr")));

    EXPECT_EQ("Bonjour", TakeText(CFBundleCopyStringForLocalization(gnustep_, CFSTR("hello"), nullptr, nullptr, CFSTR("fr"))));
    EXPECT_EQ("Hello", TakeText(CFBundleCopyStringForLocalization(gnustep_, CFSTR("hello"), nullptr, nullptr, CFSTR("en"))));
    EXPECT_EQ("Something broke",
              TakeText(CFBundleCopyStringForLocalization(mac_, CFSTR("broken"), nullptr, CFSTR("Errors"), CFSTR("en"))));
    // No fall-back to another localisation or table.
    EXPECT_EQ("default", TakeText(CFBundleCopyStringForLocalization(mac_, CFSTR("only.en"), CFSTR("default"), nullptr,
                                                                    CFSTR("fr"))));
    EXPECT_EQ("", TakeText(CFBundleCopyStringForLocalization(mac_, CFSTR("broken"), nullptr, CFSTR("Errors"), CFSTR("fr"))));
    EXPECT_EQ("kept", TakeText(CFBundleCopyStringForLocalization(mac_, nullptr, CFSTR("kept"), nullptr, CFSTR("fr"))));
    EXPECT_EQ(nullptr, CFBundleCopyStringForLocalization(mac_, nullptr, nullptr, nullptr, CFSTR("fr")));
}
