#include <KORU/FSUtilities.h>

#include "../platform/CoreServices/FileTestSupport.h"

#include <cstring>
#include <map>
#include <sys/wait.h>

namespace {

CFStringRef String(const std::string &text)
{
    return CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingUTF8);
}

std::string Text(CFStringRef string)
{
    if (!string)
        return "<null>";
    char buffer[4096];
    CFStringGetCString(string, buffer, sizeof buffer, kCFStringEncodingUTF8);
    CFRelease(string);
    return buffer;
}

std::string Taken(char *text)
{
    const std::string copy = text ? text : "<null>";
    std::free(text);
    return copy;
}

UInt32 Be32(const std::string &b, size_t at)
{
    return (UInt32(UInt8(b[at])) << 24) | (UInt32(UInt8(b[at + 1])) << 16) | (UInt32(UInt8(b[at + 2])) << 8) |
           UInt32(UInt8(b[at + 3]));
}

// Entry id -> bytes of an AppleDouble companion, read independently.
std::map<UInt32, std::string> Entries(const std::string &image)
{
    std::map<UInt32, std::string> entries;
    if (image.size() < 26 || Be32(image, 0) != 0x00051607)
        return entries;
    const size_t count = (size_t(UInt8(image[24])) << 8) | UInt8(image[25]);
    for (size_t k = 0; k < count; ++k)
        entries[Be32(image, 26 + k * 12)] = image.substr(Be32(image, 30 + k * 12), Be32(image, 34 + k * 12));
    return entries;
}

HFSUniStr255 ResourceFork()
{
    HFSUniStr255 name;
    FSGetResourceForkName(&name);
    return name;
}

// Makes the folders of path, then a file there with the contents.
void MakeFile(const std::string &path, const std::string &contents)
{
    for (size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1))
        mkdir(path.substr(0, slash).c_str(), 0755);
    WriteFile(path, contents);
}

void SetFinderInfo(const FSRef &ref, OSType type, OSType creator, UInt16 flags)
{
    FSCatalogInfo info{};
    FileInfo finder{};
    finder.fileType = type;
    finder.fileCreator = creator;
    finder.finderFlags = flags;
    std::memcpy(info.finderInfo, &finder, sizeof finder);
    FSSetCatalogInfo(&ref, kFSCatInfoFinderInfo, &info);
}

TEST(FSUtilities, NamesAndPathsInEveryForm)
{
    TemporaryFolder folder;
    const std::string name = "Quote\" and space\nné";
    WriteFile(folder / name, "x");
    const FSRef ref = RefAt(folder / name);
    EXPECT_EQ(name, Text(FSCopyNameString(&ref)));
    EXPECT_EQ(name, Taken(FSAllocNameCString(&ref, kCFStringEncodingUTF8)));
    for (const std::string &path : {Taken(FSAllocPathUTF8String(&ref)), Text(FSCopyPathString(&ref)),
                                    Taken(FSAllocPathCString(&ref, kCFStringEncodingUTF8)),
                                    Text(FSCopyPathStringOfStyle(&ref, kCFURLPOSIXPathStyle)),
                                    Taken(FSAllocPathCStringOfStyle(&ref, kCFURLPOSIXPathStyle, kCFStringEncodingUTF8))})
        EXPECT_EQ(folder / name, path);

    FSRef made, child;
    CFStringRef path = String(folder / name);
    EXPECT_TRUE(FSMakeFromPosixPath(path, &made));
    EXPECT_EQ(noErr, FSCompareFSRefs(&made, &ref));
    EXPECT_TRUE(FSMakeFromPathString(path, kCFURLPOSIXPathStyle, false, &made));
    CFRelease(path);
    const FSRef parent = RefAt(folder.Path());
    CFStringRef leaf = String(name);
    EXPECT_TRUE(FSGetChild(&parent, &child, leaf));
    EXPECT_EQ(noErr, FSCompareFSRefs(&child, &ref));
    CFRelease(leaf);
    CFStringRef missing = String("missing"), tooLong = String(std::string(256, 'a'));
    EXPECT_FALSE(FSGetChild(&parent, &child, missing) || FSMakeFromPosixPath(missing, &made) ||
                 FSGetChild(&parent, &child, tooLong));
    CFRelease(missing);
    CFRelease(tooLong);

    // The executable inside a bundle.
    MakeFile(folder / "Tool.app/Contents/Info.plist",
             "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
             "<key>CFBundleExecutable</key><string>Tool Exec</string></dict></plist>\n");
    MakeFile(folder / "Tool.app/Contents/MacOS/Tool Exec", "#!/bin/sh\n");
    chmod((folder / "Tool.app/Contents/MacOS/Tool Exec").c_str(), 0755);
    const FSRef bundle = RefAt(folder / "Tool.app");
    FSRef executable;
    ASSERT_TRUE(FSBundleGetExecutableFSRef(&bundle, &executable));
    EXPECT_EQ(folder / "Tool.app/Contents/MacOS/Tool Exec", PathOf(executable));
    EXPECT_FALSE(FSBundleGetExecutableFSRef(&parent, nullptr));

    // A path of more than 1024 bytes does not fit the buffer.
    std::string deep = folder.Path();
    while (deep.size() <= 1024) {
        deep += "/" + std::string(100, 'd');
        mkdir(deep.c_str(), 0755);
    }
    const FSRef deepRef = RefAt(deep);
    EXPECT_TRUE(FSAllocPathUTF8String(&deepRef) == nullptr && FSCopyPathString(&deepRef) == nullptr);

    // NULL and stale refs.
    EXPECT_TRUE(FSCopyNameString(nullptr) == nullptr && FSAllocPathUTF8String(nullptr) == nullptr);
    EXPECT_FALSE(FSMakeFromPosixPath(nullptr, &made));
    unlink((folder / name).c_str());
    EXPECT_TRUE(FSCopyNameString(&ref) == nullptr && FSCopyPathString(&ref) == nullptr);
}

TEST(FSUtilities, KindTestsOnRealItems)
{
    TemporaryFolder folder;
    for (const char *name : {"Plain", "Tool.app", ".secret"})
        mkdir((folder / name).c_str(), 0755);
    MakeFile(folder / "Thing/Contents/Info.plist", "<plist/>");
    WriteFile(folder / "flagged", "x");
    WriteFile(folder / "listed", "x");
    WriteFile(folder / ".hidden", "listed\n");
    SetFinderInfo(RefAt(folder / "flagged"), 0, 0, kIsInvisible);

    // Each ref in its own buffer: the cache is keyed by address.
    const FSRef plain = RefAt(folder / "Plain"), app = RefAt(folder / "Tool.app"), thing = RefAt(folder / "Thing");
    const FSRef secret = RefAt(folder / ".secret"), flagged = RefAt(folder / "flagged");
    const FSRef listed = RefAt(folder / "listed"), root = RefAt("/"), proc = RefAt("/proc");
    EXPECT_TRUE(FSIsContainer(&plain) && FSIsFolder(&plain) && FSIsDirectory(&plain));
    EXPECT_FALSE(FSIsPackage(&plain) || FSIsInvisible(&plain) || FSIsVolume(&plain));
    EXPECT_TRUE(FSIsPackage(&app) && !FSIsFolder(&app) && FSIsDirectory(&app));
    EXPECT_TRUE(FSIsPackage(&thing));
    EXPECT_TRUE(FSIsInvisible(&secret) && FSIsInvisible(&flagged) && FSIsInvisible(&listed));
    EXPECT_FALSE(FSIsContainer(&flagged));
    EXPECT_TRUE(FSIsVolume(&root) && FSIsVolume(&proc));
    EXPECT_FALSE(FSIsDirectory(&proc) || FSIsFolder(&proc));
    EXPECT_TRUE(FSIsLSItemInfoRecordFlagOn(&flagged, kLSItemInfoIsPlainFile | kLSItemInfoIsInvisible, false));
    EXPECT_FALSE(FSIsContainer(nullptr));
    EXPECT_TRUE(FSIsLSItemInfoRecordFlagOn(nullptr, kLSItemInfoIsContainer, true));

    // The cache answers by address: a reused buffer keeps the earlier answer.
    FSRef reused = RefAt(folder / "Plain");
    EXPECT_TRUE(FSIsContainer(&reused));
    reused = RefAt(folder / "flagged");
    EXPECT_TRUE(FSIsContainer(&reused));
    FSRef other = reused;
    EXPECT_FALSE(FSIsContainer(&other));
    // A stale ref in a new buffer gives false, or the caller's default.
    unlink((folder / "listed").c_str());
    FSRef stale = listed;
    EXPECT_FALSE(FSIsInvisible(&stale));
    FSRef stale2 = listed;
    EXPECT_TRUE(FSIsLSItemInfoRecordFlagOn(&stale2, kLSItemInfoIsInvisible, true));
}

TEST(FSUtilities, MachOMagicInBothByteOrders)
{
    TemporaryFolder folder;
    const std::vector<std::string> machO = {"\xCA\xFE\xBA\xBE", "\xBE\xBA\xFE\xCA", "\xCE\xFA\xED\xFE",
                                            "\xFE\xED\xFA\xCE", "\xCF\xFA\xED\xFE", "\xFE\xED\xFA\xCF"};
    for (size_t k = 0; k < machO.size(); ++k) {
        const std::string path = folder / ("m" + std::to_string(k));
        WriteFile(path, machO[k] + std::string("rest of the binary"));
        const FSRef ref = RefAt(path);
        EXPECT_TRUE(FSIsMachOBinary(&ref)) << k;
    }
    WriteFile(folder / "short", "\xCA\xFE\xBA");
    WriteFile(folder / "zero", std::string(8, '\0'));
    for (const std::string &path : {folder / "short", folder / "zero", std::string("/bin/sh"), folder.Path()}) {
        const FSRef ref = RefAt(path);
        EXPECT_FALSE(FSIsMachOBinary(&ref)) << path; // ELF is no Mach-O
    }
    EXPECT_FALSE(FSIsMachOBinary(nullptr));
}

TEST(FSUtilities, WholeForksAndCopiesWithBothForks)
{
    TemporaryFolder folder;
    mkdir((folder / "dest").c_str(), 0755);
    WriteFile(folder / "src", "the data fork");
    const FSRef src = RefAt(folder / "src"), dest = RefAt(folder / "dest");
    const HFSUniStr255 resource = ResourceFork();
    HFSUniStr255 data;
    FSGetDataForkName(&data);

    CFDataRef empty = FSReadFileFork(&src, &resource);
    ASSERT_NE(nullptr, empty);
    EXPECT_EQ(0, CFDataGetLength(empty));
    CFDataRef rsrc = CFDataCreate(nullptr, reinterpret_cast<const UInt8 *>("RSRC\0bytes"), 10);
    ASSERT_TRUE(FSWriteFileFork(&src, &resource, rsrc));
    SetFinderInfo(src, 0x54455854, 0x4B4F5255, 0);
    EXPECT_EQ(std::string("RSRC\0bytes", 10), Entries(ReadFile(folder / "._src"))[2]);

    // An ordinary file (no companion) copies too.
    WriteFile(folder / "ordinary", "o");
    const FSRef ordinary = RefAt(folder / "ordinary");
    FSRef copied;
    CFStringRef ordinaryName = String("ordinary");
    EXPECT_TRUE(FSCopyFile(&ordinary, &dest, ordinaryName, &copied));
    EXPECT_EQ("o", ReadFile(folder / "dest/ordinary"));
    EXPECT_FALSE(Exists(folder / "dest/._ordinary"));
    CFRelease(ordinaryName);

    // Both forks and the Finder information travel; an existing file is replaced.
    WriteFile(folder / "dest/copy é", "old contents that are longer");
    CFStringRef copyName = String("copy é");
    ASSERT_TRUE(FSCopyFile(&src, &dest, copyName, &copied));
    CFRelease(copyName);
    EXPECT_EQ("the data fork", ReadFile(folder / "dest/copy é"));
    auto entries = Entries(ReadFile(folder / "dest/._copy é"));
    EXPECT_EQ(std::string("RSRC\0bytes", 10), entries[2]);
    EXPECT_EQ("TEXTKORU", entries[9].substr(0, 8));

    // Writing empty data leaves an empty fork and no companion entry.
    CFDataRef nothing = CFDataCreate(nullptr, nullptr, 0);
    EXPECT_TRUE(FSWriteFileFork(&copied, &data, nothing));
    EXPECT_EQ("", ReadFile(folder / "dest/copy é"));
    EXPECT_TRUE(FSWriteFileFork(&copied, &resource, nothing));
    entries = Entries(ReadFile(folder / "dest/._copy é"));
    EXPECT_TRUE(entries.count(2) == 0 && entries.count(9) == 1);

    CFDataRef back = FSReadFileFork(&src, &data);
    ASSERT_NE(nullptr, back);
    EXPECT_EQ("the data fork", std::string(reinterpret_cast<const char *>(CFDataGetBytePtr(back)),
                                           static_cast<size_t>(CFDataGetLength(back))));

    // A fork copied onto itself keeps its bytes.
    EXPECT_TRUE(FSCopyFileFork(&src, &src, &data));
    EXPECT_EQ("the data fork", ReadFile(folder / "src"));
    EXPECT_TRUE(FSCopyFileFork(&src, &src, &resource));
    EXPECT_EQ(std::string("RSRC\0bytes", 10), Entries(ReadFile(folder / "._src"))[2]);

    // A destination that is a link to the source is the source too: its bytes stay.
    ASSERT_EQ(0, symlink((folder / "src").c_str(), (folder / "link").c_str()));
    FSRef link;
    ASSERT_EQ(noErr, FSPathMakeRefWithOptions(reinterpret_cast<const UInt8 *>((folder / "link").c_str()),
                                              kFSPathMakeRefDoNotFollowLeafSymlink, &link, nullptr));
    FSCopyFileFork(&src, &link, &data);
    EXPECT_EQ("the data fork", ReadFile(folder / "src"));

    // A copy onto the source itself fails and keeps the source.
    CFStringRef srcName = String("src");
    const FSRef top = RefAt(folder.Path());
    EXPECT_FALSE(FSCopyFile(&src, &top, srcName, nullptr));
    EXPECT_EQ("the data fork", ReadFile(folder / "src"));
    CFRelease(srcName);

    // The name of the source's own companion is no place for a copy.
    CFStringRef companionName = String("._src");
    EXPECT_FALSE(FSCopyFile(&src, &top, companionName, nullptr));
    CFRelease(companionName);
    EXPECT_EQ("the data fork", ReadFile(folder / "src"));
    EXPECT_EQ(std::string("RSRC\0bytes", 10), Entries(ReadFile(folder / "._src"))[2]);

    // Failures: a stale source leaves nothing behind to lose, NULLs give false.
    CFStringRef fileName = String("file");
    EXPECT_FALSE(FSCopyFileFork(nullptr, &copied, &data) || FSWriteFileFork(&copied, &data, nullptr) ||
                 FSCreateFile(nullptr, fileName, nullptr, nullptr));
    EXPECT_EQ(nullptr, FSReadFileFork(&src, nullptr));
    FSRef plainNew;
    EXPECT_TRUE(FSCreateFile(&dest, fileName, nullptr, &plainNew));
    EXPECT_FALSE(FSCreateFile(&dest, fileName, nullptr, nullptr)); // exists
    for (CFTypeRef object : {CFTypeRef(fileName), CFTypeRef(empty), CFTypeRef(rsrc), CFTypeRef(nothing), CFTypeRef(back)})
        CFRelease(object);
}

// Copies a read-only file with both forks as an ordinary user would (root
// writes any file, so a child drops to "nobody" first); the exit status tells
// whether FSCopyFile answered true.
int CopyReadOnlyFileAsUser(const TemporaryFolder &folder)
{
    const pid_t child = fork();
    if (child == 0) {
        if (getuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0))
            _exit(2);
        WriteFile(folder / "ro", "read-only data");
        const FSRef ro = RefAt(folder / "ro"), top = RefAt(folder.Path());
        CFDataRef rsrc = CFDataCreate(nullptr, reinterpret_cast<const UInt8 *>("rsrc"), 4);
        const HFSUniStr255 resource = ResourceFork();
        if (!FSWriteFileFork(&ro, &resource, rsrc) || chmod((folder / "ro").c_str(), 0444) != 0)
            _exit(3);
        CFStringRef name = CFStringCreateWithCString(nullptr, "ro copy", kCFStringEncodingUTF8);
        _exit(FSCopyFile(&ro, &top, name, nullptr) ? 0 : 1);
    }
    int status = -1;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}

TEST(FSUtilities, ReadOnlyFileCopiesWithBothForksAndItsMode)
{
    TemporaryFolder folder;
    if (getuid() == 0) {
        ASSERT_EQ(0, chown(folder.Path().c_str(), 65534, 65534));
    }
    ASSERT_EQ(0, CopyReadOnlyFileAsUser(folder));
    EXPECT_EQ("read-only data", ReadFile(folder / "ro copy"));
    EXPECT_EQ("rsrc", Entries(ReadFile(folder / "._ro copy"))[2]);
    struct stat st;
    ASSERT_EQ(0, stat((folder / "ro copy").c_str(), &st));
    EXPECT_EQ(0444u, st.st_mode & 07777);
}

TEST(FSUtilities, ResourceForkOpenedForItsVersion)
{
    TemporaryFolder folder;
    WriteFile(folder / "Tool", "");
    const FSRef tool = RefAt(folder / "Tool");
    SInt16 refNum = RFOpen(&tool, true);
    ASSERT_NE(-1, refNum);
    EXPECT_EQ(refNum, CurResFile());
    // 1.2.3 final, region 0, "1.2.3", "1.2.3, KORU"
    const std::string vers("\x01\x23\x80\x00\x00\x00\x05" "1.2.3\x0B" "1.2.3, KORU", 24);
    Handle h = nullptr;
    PtrToHand(vers.data(), &h, static_cast<long>(vers.size()));
    AddResource(h, 0x76657273, 1, nullptr);
    Handle seven = nullptr;
    PtrToHand(vers.data(), &seven, 7);
    AddResource(seven, 0x76657273, 2, nullptr);
    VersRec record;
    ASSERT_TRUE(RFGetVersion(1, &record));
    // The first six bytes are copied as they lie in the resource.
    EXPECT_EQ(0, std::memcmp(&record, vers.data(), 6));
    EXPECT_EQ("1.2.3", std::string(reinterpret_cast<char *>(record.shortVersion + 1), record.shortVersion[0]));
    EXPECT_EQ("1.2.3, KORU", std::string(reinterpret_cast<char *>(record.reserved + 1), record.reserved[0]));
    EXPECT_FALSE(RFGetVersion(2, &record)); // 7 bytes
    const VersRec zeroed{};
    EXPECT_EQ(0, std::memcmp(&zeroed, &record, sizeof record));
    EXPECT_FALSE(RFGetVersion(3, &record) || RFGetVersion(1, nullptr));
    RFClose(&refNum);
    EXPECT_EQ(-1, refNum);
    RFClose(&refNum); // nothing to close
    RFClose(nullptr);

    // Written to the companion; read back for reading only.
    refNum = RFOpen(&tool, false);
    ASSERT_NE(-1, refNum);
    EXPECT_TRUE(RFGetVersion(1, &record));
    RFClose(&refNum);
    EXPECT_EQ(-1, RFOpen(nullptr, false));
    EXPECT_EQ(-1, gAppResRef);
}

} // namespace
