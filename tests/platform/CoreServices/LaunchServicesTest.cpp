#include <CoreServices/LaunchServices.h>

#include "FileTestSupport.h"
#include "../../support/XDGWorld.h"

#include <chrono>
#include <memory>
#include <thread>

namespace {

// A private XDG world whose test application appends its arguments to a
// record file.
class LaunchServicesTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        root_ = folder_.Path();
        record_ = root_ + "/ran.txt";
        recorder_ = root_ + "/record.sh";
        WriteFile(recorder_, "#!/bin/sh\nfor a in \"$@\"; do printf '%s\\n' \"$a\" >> '" + record_ + "'; done\n");
        chmod(recorder_.c_str(), 0755);
        world_ = std::make_unique<XDGWorld>(root_, recorder_);
        desktopFile_ = world_->DesktopFile();
    }

    void TearDown() override
    {
        for (CFTypeRef object : owned_)
            CFRelease(object);
        world_.reset();
    }

    // The record once it holds the line; the launched program runs on its own
    // and may finish after the call returned.
    bool RecordHasLine(const std::string &line)
    {
        for (int attempt = 0; attempt < 600; ++attempt) {
            if (("\n" + ReadFile(record_)).find("\n" + line + "\n") != std::string::npos)
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        return false;
    }

    template <typename T>
    T Owned(T object)
    {
        owned_.push_back(object);
        return object;
    }

    CFURLRef FileURL(const std::string &path, bool isDirectory = false)
    {
        return Owned(CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8 *>(path.c_str()),
                                                             static_cast<CFIndex>(path.size()), isDirectory));
    }

    CFURLRef TextURL(const char *text)
    {
        CFStringRef string = CFStringCreateWithCString(nullptr, text, kCFStringEncodingUTF8);
        CFURLRef url = CFURLCreateWithString(nullptr, string, nullptr);
        CFRelease(string);
        return Owned(url);
    }

    CFArrayRef Items(CFTypeRef item) { return Owned(CFArrayCreate(nullptr, &item, 1, &kCFTypeArrayCallBacks)); }

    OSStatus Open(CFURLRef app, CFArrayRef items, LSLaunchFlags flags, CFURLRef *launched = nullptr)
    {
        LSLaunchURLSpec launchSpec = {app, items, nullptr, flags, nullptr};
        return LSOpenFromURLSpec(&launchSpec, launched);
    }

    TemporaryFolder folder_;
    std::string root_, record_, recorder_, desktopFile_;
    std::unique_ptr<XDGWorld> world_;
    std::vector<CFTypeRef> owned_;
};

} // namespace

TEST_F(LaunchServicesTest, DefaultApplicationOpensURLsAndFilesAndReportsWhatNothingOpens)
{
    CFURLRef launched = reinterpret_cast<CFURLRef>(1);
    EXPECT_EQ(noErr, Open(nullptr, Items(TextURL("x-koru-test:hello")), kLSLaunchDefaults, &launched));
    EXPECT_EQ(nullptr, launched);
    EXPECT_TRUE(RecordHasLine("x-koru-test:hello")) << ReadFile(record_);

    const std::string document = root_ + "/a note.txt";
    WriteFile(document, "plain text\n");
    EXPECT_EQ(noErr, LSOpenCFURLRef(FileURL(document), nullptr));
    EXPECT_TRUE(RecordHasLine(document)) << ReadFile(record_);

    // Asynchronous: the call does not wait for xdg-open, the item still opens.
    EXPECT_EQ(noErr, Open(nullptr, Items(TextURL("x-koru-test:later")), kLSLaunchAsync));
    EXPECT_TRUE(RecordHasLine("x-koru-test:later")) << ReadFile(record_);

    EXPECT_EQ(kLSApplicationNotFoundErr, Open(nullptr, Items(TextURL("x-koru-nothing:at-all")), kLSLaunchDefaults));
    EXPECT_EQ(fnfErr, Open(nullptr, Items(FileURL(root_ + "/missing.txt")), kLSLaunchDefaults));
}

TEST_F(LaunchServicesTest, ExplicitApplicationsOfEveryKind)
{
    const std::string document = root_ + "/doc.txt";
    WriteFile(document, "x");

    // A .desktop file: its Exec line with the item for %u.
    CFURLRef launched = nullptr;
    EXPECT_EQ(noErr, Open(FileURL(desktopFile_), Items(FileURL(document)), kLSLaunchDefaults, &launched));
    ASSERT_NE(nullptr, launched);
    EXPECT_TRUE(CFEqual(Owned(launched), FileURL(desktopFile_)));
    EXPECT_TRUE(RecordHasLine(document)) << ReadFile(record_);

    // An executable file, given the items as its arguments, or started alone.
    EXPECT_EQ(noErr, Open(FileURL(recorder_), Items(TextURL("x-koru-test:direct")), kLSLaunchDefaults));
    EXPECT_TRUE(RecordHasLine("x-koru-test:direct")) << ReadFile(record_);
    EXPECT_EQ(noErr, Open(FileURL(recorder_), nullptr, kLSLaunchDefaults));

    // An application bundle: its executable.
    const std::string app = root_ + "/Recorder.app";
    mkdir(app.c_str(), 0755);
    mkdir((app + "/Resources").c_str(), 0755);
    WriteFile(app + "/Resources/Info-gnustep.plist", "{ NSExecutable = Recorder; CFBundleExecutable = Recorder; }\n");
    WriteFile(app + "/Recorder", ReadFile(recorder_));
    chmod((app + "/Recorder").c_str(), 0755);
    EXPECT_EQ(noErr, Open(FileURL(app, true), Items(TextURL("x-koru-test:bundle")), kLSLaunchDefaults));
    EXPECT_TRUE(RecordHasLine("x-koru-test:bundle")) << ReadFile(record_);
}

TEST_F(LaunchServicesTest, BadLaunchRequestsAreRefused)
{
    EXPECT_EQ(paramErr, LSOpenFromURLSpec(nullptr, nullptr));
    EXPECT_EQ(paramErr, Open(nullptr, nullptr, kLSLaunchDefaults));
    EXPECT_EQ(paramErr, Open(nullptr, Items(CFSTR("not a URL")), kLSLaunchDefaults));
    EXPECT_EQ(paramErr, LSOpenCFURLRef(nullptr, nullptr));

    const std::string text = root_ + "/plain.txt";
    WriteFile(text, "not an application");
    EXPECT_EQ(kLSNotAnApplicationErr, Open(FileURL(text), nullptr, kLSLaunchDefaults));
    EXPECT_EQ(kLSApplicationNotFoundErr, Open(FileURL(root_ + "/NoSuch.app", true), nullptr, kLSLaunchDefaults));
    EXPECT_EQ("", ReadFile(record_));
}

TEST_F(LaunchServicesTest, ApplicationsFoundForItemsAndByIdentity)
{
    const std::string document = root_ + "/note with space.txt";
    WriteFile(document, "plain words\n");
    const FSRef item = RefAt(document);
    FSRef app;
    CFURLRef appURL = nullptr;
    ASSERT_EQ(noErr, LSGetApplicationForItem(&item, kLSRolesAll, &app, &appURL));
    EXPECT_EQ(desktopFile_, PathOf(app));
    ASSERT_NE(nullptr, Owned(appURL));

    // A GNUstep application bundle with a signature and an identifier.
    world_->Set("GNUSTEP_USER_ROOT", root_ + "/gnustep");
    const std::string bundle = root_ + "/gnustep/Applications/Tool Box.app";
    for (const char *sub : {"/gnustep", "/gnustep/Applications", "/gnustep/Applications/Tool Box.app"})
        mkdir((root_ + sub).c_str(), 0755);
    mkdir((bundle + "/Resources").c_str(), 0755);
    WriteFile(bundle + "/Resources/Info-gnustep.plist",
              "{ CFBundleIdentifier = \"org.koru.toolbox\"; CFBundleSignature = \"TBOX\"; CFBundleName = \"Tool Box\"; "
              "CFBundleExecutable = \"Tool Box\"; }\n");
    struct {
        OSType creator;
        CFStringRef identifier, name;
        std::string found;
    } finds[] = {
        {0x54424F58, nullptr, nullptr, bundle}, // 'TBOX'
        {kLSUnknownCreator, CFSTR("org.koru.toolbox"), nullptr, bundle},
        {kLSUnknownCreator, nullptr, CFSTR("Tool Box"), bundle},
        {0x54424F58, CFSTR("org.koru.other"), nullptr, ""}, // all must match
        {kLSUnknownCreator, nullptr, CFSTR("KORU Recorder"), desktopFile_},
    };
    for (const auto &find : finds) {
        app = FSRef{};
        const OSStatus status = LSFindApplicationForInfo(find.creator, find.identifier, find.name, &app, nullptr);
        EXPECT_EQ(find.found.empty() ? OSStatus(kLSApplicationNotFoundErr) : OSStatus(noErr), status) << find.found;
        EXPECT_EQ(find.found, PathOf(app));
    }
    EXPECT_EQ(noErr, LSFindApplicationForInfo(kLSUnknownCreator, CFSTR("koru-recorder"), nullptr, nullptr, &appURL));
    Owned(appURL);
    EXPECT_EQ(paramErr, LSFindApplicationForInfo(kLSUnknownCreator, nullptr, nullptr, &app, nullptr));
    EXPECT_EQ(paramErr, LSGetApplicationForItem(nullptr, kLSRolesAll, &app, nullptr));

    // Opening through refs reaches the same application.
    const FSRef recorder = RefAt(desktopFile_);
    LSLaunchFSRefSpec launchSpec = {&recorder, 1, &item, nullptr, kLSLaunchDefaults, nullptr};
    FSRef launched;
    ASSERT_EQ(noErr, LSOpenFromRefSpec(&launchSpec, &launched));
    EXPECT_EQ(desktopFile_, PathOf(launched));
    EXPECT_TRUE(RecordHasLine(document));
    launchSpec.itemRefs = nullptr;
    EXPECT_EQ(paramErr, LSOpenFromRefSpec(&launchSpec, nullptr));
}

TEST_F(LaunchServicesTest, ItemInformationFlags)
{
    const std::string tool = root_ + "/tool";
    WriteFile(tool, "#!/bin/sh\n");
    chmod(tool.c_str(), 0755);
    symlink(tool.c_str(), (root_ + "/link").c_str());
    struct {
        FSRef ref;
        LSItemInfoFlags flags;
    } items[] = {
        {RefAt(tool), kLSItemInfoIsPlainFile | kLSItemInfoIsApplication},
        {LinkRefAt(root_ + "/link"), kLSItemInfoIsSymlink | kLSItemInfoIsAliasFile},
        {RefAt(root_), kLSItemInfoIsContainer},
    };
    LSItemInfoRecord info;
    for (const auto &item : items) {
        ASSERT_EQ(noErr, LSCopyItemInfoForRef(&item.ref, kLSRequestAllFlags | kLSRequestTypeCreator, &info));
        EXPECT_EQ(item.flags, info.flags) << PathOf(item.ref);
    }
    EXPECT_EQ(0x666F6C64u, info.filetype); // 'fold'

    ASSERT_EQ(noErr, LSCopyItemInfoForURL(FileURL(desktopFile_), kLSRequestAllFlags | kLSRequestExtension, &info));
    EXPECT_EQ(UInt32(kLSItemInfoIsPlainFile | kLSItemInfoIsApplication), info.flags);
    ASSERT_NE(nullptr, info.extension);
    EXPECT_EQ(kCFCompareEqualTo, CFStringCompare(info.extension, CFSTR("desktop"), 0));
    CFRelease(info.extension);
    EXPECT_EQ(fnfErr, LSCopyItemInfoForURL(FileURL(root_ + "/missing"), kLSRequestAllFlags, &info));
    EXPECT_EQ(paramErr, LSCopyItemInfoForRef(nullptr, kLSRequestAllFlags, &info));
}
