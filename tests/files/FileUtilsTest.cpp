#include <KORU/FileUtils.h>

#include "../platform/CoreServices/FileTestSupport.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <sys/resource.h>

using namespace file_utils;

namespace {

CStr<wchar_t> Wide(const std::string &text)
{
    return CStr<wchar_t>(text.c_str());
}

std::string Narrow(const CStr<wchar_t> &text)
{
    std::string out;
    for (int k = 0; k < text.GetLength(); ++k)
        out += static_cast<char>(text[k]); // ASCII only
    return out;
}

TFileLocationInfo PathLocation(const std::string &path)
{
    TFileLocationInfo location;
    location.kind = TFileLocationInfo::kLocationPath;
    location.path = Wide(path);
    return location;
}

// Sets one environment variable and puts back what was there.
class Setting {
public:
    Setting(const char *name, const std::string &value) : mName(name), mHadOld(getenv(name) != nullptr)
    {
        mOld = mHadOld ? getenv(name) : "";
        setenv(name, value.c_str(), 1);
    }
    ~Setting() { mHadOld ? setenv(mName, mOld.c_str(), 1) : unsetenv(mName); }

private:
    const char *mName;
    bool mHadOld;
    std::string mOld;
};

// Points the user's temporary folder at a fresh private folder for one test,
// and sets a valid runtime folder: temporary files never land on that small tmpfs.
class PrivateTemporaryFolder {
public:
    PrivateTemporaryFolder() : mTmpDir("TMPDIR", mFolder.Path()), mRuntime("XDG_RUNTIME_DIR", mRuntimeFolder.Path())
    {
        chmod(mRuntimeFolder.Path().c_str(), 0700);
    }
    std::string AppFolder() const { return Path() + "/Orvan/Mirtel/"; }
    std::string Path() const { return mFolder.Path() + "/koru-" + std::to_string(geteuid()); }

private:
    TemporaryFolder mFolder, mRuntimeFolder;
    Setting mTmpDir, mRuntime;
};

#ifndef __SANITIZE_ADDRESS__
// Whether a whole-file reader hands out the location's content in a process
// that may take no more than 2 GB of memory.
bool AnyReaderTakesItWithin2GB(const TFileLocationInfo &location)
{
    const struct rlimit limit = {1UL << 31, 1UL << 31};
    setrlimit(RLIMIT_AS, &limit);
    void *bytes = nullptr;
    long size = 0;
    char *text = nullptr;
    wchar_t *wide = nullptr;
    const bool read = ReadBinFileToBuffer(location, bytes, size) || ReadASCIITextFileToBuffer(location, text) ||
                      ReadUnicodeTextFileToBuffer(location, wide, false);
    return read || bytes || text || wide;
}
#endif

TEST(FileUtils, PathText)
{
    EXPECT_EQ(L'/', GetPathDelimiter());
    EXPECT_TRUE(IsRelativePath(L"a/b"));
    EXPECT_FALSE(IsRelativePath(L"/a/b") || IsRelativePath(L""));
    EXPECT_EQ("/a/b/", Narrow(GetFilePathFromFullPath(L"/a/b/c.txt")));
    EXPECT_EQ("", Narrow(GetFilePathFromFullPath(L"c.txt")));
    EXPECT_EQ("c.txt", Narrow(GetFileNameFromFullPath(L"/a/b/c.txt")));
    EXPECT_EQ("gz", Narrow(GetFileExt(L"/a/archive.tar.gz")));
    EXPECT_EQ("x/file", Narrow(GetFileExt(L"/a/dir.x/file")));

    EXPECT_EQ("", Narrow(GetAbsFileName(L"../../x", L"/a/")));
    EXPECT_EQ("/a/x", Narrow(GetAbsFileName(L"./x", L"/a/")));
    EXPECT_EQ("/a/b/y/z", Narrow(GetAbsFileName(L"../y/z", L"/a/b/c/")));

    EXPECT_EQ("&amp;lt;&gt;&quot;'", Narrow(GetEncodedText(L"&lt;>\"'")));
    EXPECT_EQ("", Narrow(GetEncodedText(nullptr)));

    EXPECT_EQ("file:////a/b", Narrow(GetURLFromLocalFileName(L"/a/b")));
    EXPECT_EQ("http://host/x", Narrow(GetURLFromLocalFileName(L"http://host/x")));
    EXPECT_EQ("/tmp/x", Narrow(GetLocalFileName(L"file:///tmp/x")));
    EXPECT_EQ("FILE:///x", Narrow(GetLocalFileName(L"FILE:///x")));
    EXPECT_EQ("", Narrow(GetLocalFileName(nullptr)));

    CStr<wchar_t> name;
    CFURLRef parent = file_utils::GetParentFolderURL(L"/a/b/c/", name);
    ASSERT_NE(nullptr, parent);
    EXPECT_EQ("c", Narrow(name));
    CStr<wchar_t> parentPath;
    TFileLocationInfo::GetPathFromCFURLRef(parent, parentPath);
    EXPECT_EQ("/a/b", Narrow(parentPath));
    CFRelease(parent);
    EXPECT_EQ(nullptr, file_utils::GetParentFolderURL(L"plain", name));

    EXPECT_FALSE(CreatePathIfNotExistant(L"/anything"));
    EXPECT_TRUE(StartApplication(TFileLocationInfo(), L"", true));
}

TEST(FileUtils, ReadersAndWritersByteForByte)
{
    TemporaryFolder folder;
    const TFileLocationInfo bin = PathLocation(folder / "bin");
    std::string bytes;
    for (int k = 0; k < 512; ++k)
        bytes += static_cast<char>(k);
    ASSERT_TRUE(WriteBinBufferToFile(bin, bytes.data(), static_cast<long>(bytes.size())));
    EXPECT_EQ(bytes, ReadFile(folder / "bin"));
    void *buffer = nullptr;
    long size = 0;
    ASSERT_TRUE(ReadBinFileToBuffer(bin, buffer, size));
    EXPECT_EQ(bytes, std::string(static_cast<char *>(buffer), static_cast<size_t>(size)));
    delete[] static_cast<char *>(buffer);

    const TFileLocationInfo text = PathLocation(folder / "text");
    ASSERT_TRUE(WriteASCIITextBufferToFile(text, "line one\nline two\n"));
    EXPECT_EQ("line one\nline two\n", ReadFile(folder / "text"));
    char *read = nullptr;
    ASSERT_TRUE(ReadASCIITextFileToBuffer(text, read));
    EXPECT_STREQ("line one\nline two\n", read);
    delete[] read;

    // Bad input fails before the file is opened, so nothing is lost.
    EXPECT_FALSE(WriteASCIITextBufferToFile(text, nullptr) || WriteBinBufferToFile(text, nullptr, 4));
    EXPECT_EQ("line one\nline two\n", ReadFile(folder / "text"));

    const TFileLocationInfo missing = PathLocation(folder / "missing");
    buffer = reinterpret_cast<void *>(1);
    EXPECT_FALSE(ReadBinFileToBuffer(missing, buffer, size));
    EXPECT_EQ(nullptr, buffer);
    EXPECT_FALSE(ReadASCIITextFileToBuffer(missing, read));
    EXPECT_EQ(nullptr, read);
    EXPECT_FALSE(ReadBinFileToBuffer(PathLocation(folder.Path()), buffer, size)); // a folder has no bytes

#ifndef __SANITIZE_ADDRESS__ // its shadow memory needs more address space than the limit leaves
    // A file larger than the memory the process may take answers false.
    const std::string huge = folder / "huge";
    WriteFile(huge, "");
    ASSERT_EQ(0, truncate(huge.c_str(), 4L << 30));
    EXPECT_EXIT(std::exit(AnyReaderTakesItWithin2GB(PathLocation(huge)) ? 1 : 0), ::testing::ExitedWithCode(0), "");
#endif
}

TEST(FileUtils, UnicodeReaderAndWriterAreNotInverses)
{
    TemporaryFolder folder;
    const TFileLocationInfo written = PathLocation(folder / "written");
    ASSERT_TRUE(WriteUnicodeTextBufferToFile(written, L"A\u00E9"));
    std::string expected("\xFE\xFF", 2);
    for (wchar_t ch : std::wstring(L"A\u00E9"))
        expected.append(reinterpret_cast<const char *>(&ch), sizeof ch);
    EXPECT_EQ(expected, ReadFile(folder / "written"));

    // Little-endian with its mark: the text, without the mark.
    WriteFile(folder / "le", std::string("\xFF\xFE" "A\x00\xE9\x00\x00\x4E", 8));
    wchar_t *text = nullptr;
    ASSERT_TRUE(ReadUnicodeTextFileToBuffer(PathLocation(folder / "le"), text, false));
    EXPECT_EQ(std::wstring(L"A\u00E9\u4E00"), std::wstring(text));
    delete[] text;

    // Big-endian: the mark goes, the bytes are never swapped.
    WriteFile(folder / "be", std::string("\xFE\xFF\x00" "A\x00\xE9", 6));
    ASSERT_TRUE(ReadUnicodeTextFileToBuffer(PathLocation(folder / "be"), text, true));
    EXPECT_EQ(std::wstring(L"\u4100\uE900"), std::wstring(text));
    delete[] text;

    // An odd byte count is padded; a zero unit ends the text.
    WriteFile(folder / "odd", std::string("B\x00\x00\x00" "C\x00" "D", 7));
    ASSERT_TRUE(ReadUnicodeTextFileToBuffer(PathLocation(folder / "odd"), text, false));
    EXPECT_EQ(std::wstring(L"B"), std::wstring(text));
    delete[] text;

    EXPECT_FALSE(ReadUnicodeTextFileToBuffer(PathLocation(folder / "missing"), text, false));
    EXPECT_FALSE(WriteUnicodeTextBufferToFile(PathLocation(folder / "missing/x"), L"x"));
}

TEST(FileUtils, TemporaryFoldersAndNames)
{
    PrivateTemporaryFolder temporary;
    TFileLocationInfo location;
    ASSERT_TRUE(GetSysTempFolder(location));
    EXPECT_EQ(TFileLocationInfo::kLocationFSRef, location.kind);
    EXPECT_EQ(temporary.Path(), Narrow(location.GetFullPath()));

    ASSERT_TRUE(GetAppTempFolder(location));
    EXPECT_EQ(temporary.AppFolder(), Narrow(location.path));
    EXPECT_TRUE(Exists(temporary.AppFolder()));

    std::vector<std::string> seen;
    for (int k = 0; k < 3; ++k) {
        ASSERT_TRUE(GetTempFileLocation(L"report", L"txt", location));
        seen.push_back(Narrow(GetFileNameFromFullPath(location.path)));
        EXPECT_FALSE(Exists(Narrow(location.path))); // named, not made
        ASSERT_TRUE(location.CreateFile());
    }
    EXPECT_EQ((std::vector<std::string>{"report.txt", "report_001.txt", "report_002.txt"}), seen);
    EXPECT_EQ(temporary.AppFolder() + "report_002.txt", Narrow(location.path));
    ASSERT_TRUE(GetExactTempFileLocation(L"exact.name", location));
    EXPECT_EQ(temporary.AppFolder() + "exact.name", Narrow(location.path));

    ASSERT_TRUE(GetExactTempFileLocation(Wide(std::string(400, 'n') + ".ext"), location));
    EXPECT_EQ(256, location.path.GetLength()); // cut, the extension with it
    EXPECT_EQ('n', location.path[255]);
}

TEST(FileUtils, TemporaryNamesPastNineHundredNinetyNine)
{
    PrivateTemporaryFolder temporary;
    TFileLocationInfo location;
    ASSERT_TRUE(GetAppTempFolder(location));
    const std::string folder = temporary.AppFolder();
    WriteFile(folder + "n.x", "");
    for (int k = 1; k < 1000; ++k) {
        char name[32];
        std::snprintf(name, sizeof name, "n_%03d.x", k);
        WriteFile(folder + name, "");
    }
    // The thousandth name is free, and the old slip stays: the location ends
    // up as the folder's own path run into "n_000.x", which is deleted.
    const std::string slip = temporary.Path() + "/Orvan/Mirteln_000.x";
    WriteFile(slip, "removed by the slip");
    ASSERT_TRUE(GetTempFileLocation(L"n", L"x", location));
    EXPECT_EQ(slip, Narrow(location.path));
    EXPECT_FALSE(Exists(slip));

    // All taken: the last candidate comes back although it exists.
    WriteFile(folder + "n_1000.x", "");
    ASSERT_TRUE(GetTempFileLocation(L"n", L"x", location));
    EXPECT_EQ(folder + "n_1000.x", Narrow(location.path));
}

TEST(FileUtils, CreateLocationAcceptsAnExistingFolder)
{
    TemporaryFolder folder;
    EXPECT_TRUE(CreateLocation(PathLocation(folder / "new/")));
    EXPECT_TRUE(CreateLocation(PathLocation(folder / "new/")));
    EXPECT_FALSE(CreateLocation(PathLocation(folder / "a/b/c")) || CreateLocation(TFileLocationInfo()));
    WriteFile(folder / "new/file", "");
    EXPECT_TRUE(DeleteLocation(PathLocation(folder / "new/file")));
    EXPECT_FALSE(Exists(folder / "new/file"));
}

TEST(FileUtils, DeleteDirRemovesTheTreeButNothingOutsideIt)
{
    TemporaryFolder folder, outside;
    WriteFile(outside / "precious", "keep me");
    std::filesystem::create_directories(folder / "tree/sub/deeper");
    for (const char *name : {"tree/a", "tree/._a", "tree/sub/b", "tree/sub/deeper/c", "tree/._sub",
                             "tree/sub/._orphan", "tree/sub/._link"})
        WriteFile(folder / name, "x");
    symlink(outside.Path().c_str(), (folder / "tree/sub/link").c_str());
    symlink((outside / "precious").c_str(), (folder / "tree/sub/deeper/file-link").c_str());

    // Without recursion the files go, the folders stay, and so does the tree.
    EXPECT_FALSE(DeleteDir(PathLocation(folder / "tree/"), false));
    EXPECT_FALSE(Exists(folder / "tree/a") || Exists(folder / "tree/._a"));
    EXPECT_TRUE(Exists(folder / "tree/sub/b"));
    EXPECT_TRUE(Exists(folder / "tree/._sub")); // stays with its folder

    EXPECT_TRUE(DeleteDir(PathLocation(folder / "tree/"), true));
    EXPECT_FALSE(Exists(folder / "tree"));
    EXPECT_EQ("keep me", ReadFile(outside / "precious")); // links are removed, never followed
    EXPECT_TRUE(Exists(outside.Path()));
    EXPECT_FALSE(DeleteDir(PathLocation(folder / "tree/"), true) || DeleteDir(TFileLocationInfo(), true));
}

// The walk holds one descriptor per level; a tree deeper than the
// descriptors left is still deleted whole.
TEST(FileUtils, DeleteDirOfATreeDeeperThanTheDescriptorsLeft)
{
    TemporaryFolder folder;
    std::string path = folder / "deep";
    for (int level = 0; level < 40; ++level) {
        mkdir(path.c_str(), 0755);
        WriteFile(path + "/file", "");
        WriteFile(path + "/._file", "companion");
        path += "/d";
    }
    const auto open = std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                                    std::filesystem::directory_iterator());
    struct rlimit old;
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &old));
    struct rlimit tight = old;
    tight.rlim_cur = static_cast<rlim_t>(open + 8);
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &tight));
    const bool deleted = DeleteDir(PathLocation(folder / "deep/"), true);
    setrlimit(RLIMIT_NOFILE, &old);
    EXPECT_TRUE(deleted);
    EXPECT_FALSE(Exists(folder / "deep"));
}

TEST(FileUtils, EnumFilesInFolderMatchesExtensionsIgnoringCase)
{
    TemporaryFolder folder;
    for (const char *name : {"a.txt", "B.TXT", "c.Txt", "d.text", "txt", "archive.txt.gz", "._a.txt"})
        WriteFile(folder / name, "");
    mkdir((folder / "folder.txt").c_str(), 0755);
    WriteFile(folder / "folder.txt/inner.txt", "");

    std::vector<CStr<wchar_t>> found{CStr<wchar_t>(L"kept")};
    ASSERT_TRUE(EnumFilesInFolder(L"txt", PathLocation(folder / ""), found));
    std::vector<std::string> names;
    for (const CStr<wchar_t> &name : found)
        names.push_back(Narrow(name));
    ASSERT_FALSE(names.empty());
    EXPECT_EQ("kept", names.front()); // appended, not replaced
    std::sort(names.begin() + 1, names.end());
    EXPECT_EQ((std::vector<std::string>{"kept", "B.TXT", "a.txt", "c.Txt", "folder.txt"}), names);

    std::vector<CStr<wchar_t>> none;
    EXPECT_FALSE(EnumFilesInFolder(L"txt", PathLocation(folder / "missing/"), none));
    EXPECT_FALSE(EnumFilesInFolder(nullptr, PathLocation(folder / ""), none));
    EXPECT_TRUE(none.empty());
}

TEST(FileUtils, ModuleFolderAndParents)
{
    const std::string executable = std::filesystem::read_symlink("/proc/self/exe");
    TFileLocationInfo module;
    ASSERT_TRUE(GetModuleFolder(module, nullptr, false));
    EXPECT_EQ(executable.substr(0, executable.rfind('/') + 1), Narrow(module.path));

    // A bundle in the Mac layout: its folder, and the folder of its executable.
    TemporaryFolder folder;
    std::filesystem::create_directories(folder / "Tool.bundle/Contents/MacOS");
    WriteFile(folder / "Tool.bundle/Contents/Info.plist",
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
              "<key>CFBundleExecutable</key><string>Tool</string></dict></plist>\n");
    WriteFile(folder / "Tool.bundle/Contents/MacOS/Tool", "");
    chmod((folder / "Tool.bundle/Contents/MacOS/Tool").c_str(), 0755);
    CFURLRef bundleURL = PathLocation(folder / "Tool.bundle/").CreateCFURL();
    CFBundleRef bundle = CFBundleCreate(kCFAllocatorDefault, bundleURL);
    ASSERT_NE(nullptr, bundle);
    ASSERT_TRUE(GetModuleFolder(module, bundle, true));
    EXPECT_EQ(folder.Path() + "/", Narrow(module.path));
    ASSERT_TRUE(GetModuleFolder(module, bundle, false));
    EXPECT_EQ(folder / "Tool.bundle/Contents/MacOS/", Narrow(module.path));
    CFRelease(bundle);

    FSRef parent;
    CStr<wchar_t> name;
    EXPECT_EQ(noErr, GetParentFSRefAndName(bundleURL, &parent, name));
    EXPECT_EQ(folder.Path(), PathOf(parent));
    EXPECT_EQ("Tool.bundle", Narrow(name));
    CFRelease(bundleURL);
    CFURLRef lost = PathLocation(folder / "missing/file").CreateCFURL();
    EXPECT_EQ(fnfErr, GetParentFSRefAndName(lost, &parent, name));
    CFRelease(lost);
    EXPECT_EQ(paramErr, GetParentFSRefAndName(nullptr, &parent, name));
}

} // namespace
