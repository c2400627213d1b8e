#include <KORU/FileLocation.h>

#include "../platform/CoreServices/FileTestSupport.h"

#include <cstring>

namespace {

CStr<wchar_t> Wide(const std::string &text)
{
    return CStr<wchar_t>(text.c_str()); // through the system encoding
}

std::string Narrow(const CStr<wchar_t> &text)
{
    std::string out;
    for (int k = 0; k < text.GetLength(); ++k)
        out += static_cast<char>(text[k]); // ASCII paths only
    return out;
}

TFileLocationInfo PathLocation(const std::string &path)
{
    TFileLocationInfo location;
    location.kind = TFileLocationInfo::kLocationPath;
    location.path = Wide(path);
    return location;
}

std::string URLPath(CFURLRef url)
{
    CStr<wchar_t> path;
    TFileLocationInfo::GetPathFromCFURLRef(url, path);
    return Narrow(path);
}

TEST(FileLocation, AllFiveFormsConvertIntoEachOther)
{
    TemporaryFolder folder;
    WriteFile(folder / "item.txt", "x");
    const std::string itemPath = folder / "item.txt";
    const TFileLocationInfo byPath = PathLocation(itemPath);

    FSRef ref;
    FSSpec fsSpec;
    ASSERT_TRUE(byPath.GetFSRef(ref));
    ASSERT_TRUE(byPath.GetFSSpec(fsSpec));
    CFURLRef url = byPath.CreateCFURL();
    ASSERT_NE(nullptr, url);
    AliasHandle alias = nullptr;
    ASSERT_TRUE(byPath.GetAliasHandle(alias));

    TFileLocationInfo byRef, byFSSpec, byURL, byAlias;
    byRef.SetFSRef(ref);
    byFSSpec.kind = TFileLocationInfo::kLocationFSSpec;
    byFSSpec.storage.fsSpec = fsSpec;
    byURL.SetCFURL(url);
    CFRelease(url);
    EXPECT_TRUE(byAlias.SetAliasHandle(alias));

    const FSRef expected = RefAt(itemPath);
    for (const TFileLocationInfo *location : std::initializer_list<const TFileLocationInfo *>{&byPath, &byRef, &byFSSpec, &byURL}) {
        EXPECT_EQ(itemPath, Narrow(location->GetFullPath()));
        FSRef again;
        ASSERT_TRUE(location->GetFSRef(again));
        EXPECT_EQ(noErr, FSCompareFSRefs(&expected, &again));
        FSSpec specAgain;
        ASSERT_TRUE(location->GetFSSpec(specAgain));
        EXPECT_EQ(0, std::memcmp(&fsSpec, &specAgain, sizeof fsSpec));
        AliasHandle made = nullptr;
        ASSERT_TRUE(location->GetAliasHandle(made));
        FSRef resolved;
        ASSERT_EQ(noErr, FSResolveAlias(nullptr, made, &resolved, nullptr));
        EXPECT_EQ(noErr, FSCompareFSRefs(&expected, &resolved));
        DisposeHandle(reinterpret_cast<Handle>(made));
        CStr<wchar_t> name;
        ASSERT_TRUE(location->GetFileName(name));
        EXPECT_EQ("item.txt", Narrow(name));
        EXPECT_TRUE(location->IsFile() && !location->IsFolder());
    }

    // An alias location hands out its handle but answers false: it is resolved elsewhere.
    AliasHandle held = nullptr;
    EXPECT_FALSE(byAlias.GetAliasHandle(held));
    EXPECT_EQ(alias, held);
    EXPECT_FALSE(byAlias.GetFSRef(ref));
    EXPECT_EQ(nullptr, byAlias.CreateCFURL());
    EXPECT_TRUE(byAlias.GetFullPath().IsEmpty());
    DisposeHandle(reinterpret_cast<Handle>(alias));
}

TEST(FileLocation, EmptyAndDirectoryPathLocations)
{
    const TFileLocationInfo empty;
    FSRef ref;
    EXPECT_TRUE(empty.GetFullPath().IsEmpty() && empty.CreateCFURL() == nullptr);
    EXPECT_FALSE(empty.GetFSRef(ref) || empty.IsFolder() || empty.IsFile());

    CFURLRef folderURL = PathLocation("/a/b/").CreateCFURL(), fileURL = PathLocation("/a/b").CreateCFURL();
    ASSERT_TRUE(folderURL != nullptr && fileURL != nullptr);
    EXPECT_TRUE(CFURLHasDirectoryPath(folderURL) && !CFURLHasDirectoryPath(fileURL));
    EXPECT_EQ("/a/b", URLPath(folderURL));
    CFRelease(folderURL);
    CFRelease(fileURL);
    EXPECT_TRUE(PathLocation("/a/b/").IsFolder());

    // Paths past the old 256-character buffer are taken whole.
    const std::string longPath = "/" + std::string(300, 'p') + "/" + std::string(200, 'q');
    CFURLRef longURL = PathLocation(longPath).CreateCFURL();
    ASSERT_NE(nullptr, longURL);
    EXPECT_EQ(longPath, URLPath(longURL));
    CFRelease(longURL);
}

TEST(FileLocation, URLOwnershipKeepsItsQuirks)
{
    CFURLRef url = PathLocation("/tmp/x").CreateCFURL();
    ASSERT_NE(nullptr, url);
    const CFIndex base = CFGetRetainCount(url);
    {
        TFileLocationInfo held;
        held.SetCFURL(url);
        EXPECT_EQ(base + 1, CFGetRetainCount(url));
        CFRelease(held.CreateCFURL());

        // The copy constructor shares without retaining: its destructor's release is paid for here.
        CFRetain(url);
        {
            TFileLocationInfo copy(held);
            EXPECT_EQ(base + 2, CFGetRetainCount(url));
        }
        EXPECT_EQ(base + 1, CFGetRetainCount(url));

        // Assignment retains.
        {
            TFileLocationInfo assigned;
            assigned = held;
            EXPECT_EQ(base + 2, CFGetRetainCount(url));
            assigned = held; // over a URL location: the old one is released first
            EXPECT_EQ(base + 2, CFGetRetainCount(url));
        }
        EXPECT_EQ(base + 1, CFGetRetainCount(url));

        // SetFSRef leaves the URL it replaces unreleased.
        TFileLocationInfo replaced;
        replaced.SetCFURL(url);
        FSRef root = RefAt("/");
        replaced.SetFSRef(root);
        EXPECT_EQ(base + 2, CFGetRetainCount(url));
        CFRelease(url);

        held.SetCFURL(nullptr); // ignored
        EXPECT_EQ(TFileLocationInfo::kLocationCFURL, held.kind);
    }
    EXPECT_EQ(base, CFGetRetainCount(url));
    CFRelease(url);

    // Setting the URL a location alone owns keeps it alive.
    TFileLocationInfo sole;
    CFURLRef owned = PathLocation("/tmp/y").CreateCFURL();
    sole.SetCFURL(owned);
    CFRelease(owned);
    sole.SetCFURL(sole.storage.url);
    EXPECT_EQ(1, CFGetRetainCount(sole.storage.url));
    EXPECT_EQ("/tmp/y", Narrow(sole.GetFullPath()));
}

TEST(FileLocation, FileExtensions)
{
    EXPECT_EQ("x/file", Narrow(TFileLocationInfo::GetFileExtension(L"dir.x/file")));
    for (const wchar_t *none : {L"README", L"ends.", static_cast<const wchar_t *>(nullptr)})
        EXPECT_TRUE(TFileLocationInfo::GetFileExtension(none).IsEmpty());
}

TEST(FileLocation, CreatesAndDeletesOnDisk)
{
    TemporaryFolder folder;
    const TFileLocationInfo created = PathLocation(folder / "made");
    EXPECT_TRUE(created.CreateFolder());
    EXPECT_FALSE(created.CreateFolder() || PathLocation(folder / "missing/made").CreateFolder());
    EXPECT_TRUE(PathLocation(folder / "made").IsFile()); // a folder opens for reading too

    // CreateFile empties an existing file.
    WriteFile(folder / "made/file", "content");
    EXPECT_TRUE(PathLocation(folder / "made/file").CreateFile());
    EXPECT_EQ("", ReadFile(folder / "made/file"));
    EXPECT_FALSE(PathLocation(folder / "missing/file").CreateFile() || PathLocation(folder / "missing/file").IsFile());

    // An FSSpec names an item that does not exist yet.
    FSSpec fsSpec;
    ASSERT_TRUE(PathLocation(folder / "made/later").GetFSSpec(fsSpec));
    FSRef ref;
    EXPECT_EQ(fnfErr, FSpMakeFSRef(&fsSpec, &ref));
    WriteFile(folder / "made/later", "");
    EXPECT_EQ(noErr, FSpMakeFSRef(&fsSpec, &ref));

    // Deleting a file by path; a folder with everything in it.
    EXPECT_TRUE(PathLocation(folder / "made/later").Delete());
    mkdir((folder / "made/sub").c_str(), 0755);
    WriteFile(folder / "made/sub/deep", "");
    WriteFile(folder / "made/._file", "companion");
    TFileLocationInfo byRef;
    byRef.SetFSRef(RefAt(folder / "made"));
    EXPECT_TRUE(byRef.Delete());
    EXPECT_FALSE(Exists(folder / "made"));
    EXPECT_FALSE(PathLocation(folder / "made").Delete());
}

TEST(FileLocation, NamesComeFromTheFSSpec)
{
    TemporaryFolder folder;
    const std::string longName = std::string(70, 'L') + ".txt";
    const std::string cutName(63, 'L'); // the long name cut to the FSSpec's 63 bytes
    WriteFile(folder / longName, "");
    WriteFile(folder / cutName, "keep");
    CStr<wchar_t> name, nameByRef;
    ASSERT_TRUE(PathLocation(folder / longName).GetFileName(name));
    EXPECT_EQ(63, name.GetLength()); // the FSSpec's name field holds 63 bytes
    TFileLocationInfo byRef;
    byRef.SetFSRef(RefAt(folder / longName));
    ASSERT_TRUE(byRef.GetFileName(nameByRef));
    EXPECT_EQ(Narrow(nameByRef), Narrow(name));

    // The FSSpec of a long name names that item, never the one its first 63 bytes would name.
    EXPECT_TRUE(PathLocation(folder / longName).Delete());
    EXPECT_FALSE(Exists(folder / longName));
    EXPECT_EQ("keep", ReadFile(folder / cutName));
    FSSpec fsSpec;
    EXPECT_FALSE(PathLocation(folder / longName).GetFSSpec(fsSpec));
    EXPECT_FALSE(PathLocation("no-folder-here").GetFileName(name));

    // A name with no form in the system encoding names nothing, not its folder.
    mkdir((folder / "empty").c_str(), 0755);
    TFileLocationInfo unnamed = PathLocation(folder / "empty/");
    unnamed.path += static_cast<wchar_t>(0xD800);
    EXPECT_FALSE(unnamed.GetFSSpec(fsSpec));
    EXPECT_FALSE(unnamed.Delete());
    EXPECT_TRUE(Exists(folder / "empty"));
}

} // namespace
