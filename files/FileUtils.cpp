#include <KORU/FileUtils.h>

#include "LocationSupport.h"

#include <ApplicationServices/ApplicationServices.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <memory>
#include <new>
#include <string>
#include <unordered_map>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace file_utils {

namespace {

const wchar_t kDelimiter = L'/';

const wchar_t *Text(const CStr<wchar_t> &s)
{
    return static_cast<const wchar_t *>(s);
}

bool EndsWithDelimiter(const CStr<wchar_t> &s)
{
    return !s.IsEmpty() && s[s.GetLength() - 1] == kDelimiter;
}

// Makes location a path location; a URL it held is released first, and the
// storage is cleared so that no stale FSRef bytes stay behind.
void SetPathLocation(TFileLocationInfo &location, const CStr<wchar_t> &path)
{
    if (location.kind == TFileLocationInfo::kLocationCFURL && location.storage.url)
        CFRelease(location.storage.url);
    std::memset(&location.storage, 0, sizeof location.storage);
    location.kind = TFileLocationInfo::kLocationPath;
    location.path = path;
}

// The size of an open regular file; -1 for anything else (a folder opens for
// reading too, but has no size to read).
long RegularFileSize(FILE *file)
{
    struct stat st;
    if (fstat(fileno(file), &st) != 0 || !S_ISREG(st.st_mode))
        return -1;
    if (std::fseek(file, 0, SEEK_END) != 0)
        return -1;
    const long size = std::ftell(file);
    if (std::fseek(file, 0, SEEK_SET) != 0)
        return -1;
    return size;
}

// The node's folder as an FSRef, through its URL.
bool FolderRef(const TFileLocationInfo &folder, FSRef &ref)
{
    CFURLRef url = folder.CreateCFURL();
    if (!url)
        return false;
    const bool made = CFURLGetFSRef(url, &ref);
    CFRelease(url);
    return made;
}

// Whether the text after the name's last "." equals ext, ignoring case the
// way CStr::CompareNoCase does.
bool HasExtension(const HFSUniStr255 &name, const CStr<wchar_t> &ext)
{
    int dot = name.length - 1;
    while (dot >= 0 && name.unicode[dot] != L'.')
        --dot;
    if (dot < 0 || name.length - dot - 1 != ext.GetLength())
        return false;
    for (int k = 0; k < ext.GetLength(); ++k)
        if (std::towlower(static_cast<wint_t>(name.unicode[dot + 1 + k])) !=
            std::towlower(static_cast<wint_t>(ext[k])))
            return false;
    return true;
}

CStr<wchar_t> NameFromUnits(const HFSUniStr255 &name)
{
    CStr<wchar_t> text;
    if (name.length == 0)
        return text;
    wchar_t *buffer = text.GetBufferSetLength(name.length);
    for (int k = 0; k < name.length; ++k)
        buffer[k] = name.unicode[k];
    return text;
}

/* The walk through refs and the folder iterator, which holds one folder open
 * at a time: for a tree deeper than the descriptors left to the process (the
 * walk below holds one per level). */
bool DeleteTreeByRefs(const FSRef &ref, bool recursive)
{
    FSIterator iterator;
    if (FSOpenIterator(&ref, kFSIterateFlat, &iterator) != noErr)
        return false;
    // Gather first, delete after: deleting while the folder is being read
    // could make the listing skip entries.  Whether a child is a folder comes
    // from the node flags the listing fetches anyway: they are what the
    // child's URL would report as its directory flag, so no URL is made per
    // child (that would cost more than deleting it).
    struct Child {
        FSRef ref;
        bool isFolder;
    };
    std::vector<Child> children;
    ItemCount count;
    FSRef childRef;
    FSCatalogInfo info;
    while (FSGetCatalogInfoBulk(iterator, 1, &count, nullptr, kFSCatInfoNodeFlags, &info, &childRef, nullptr,
                                nullptr) == noErr) {
        children.push_back({childRef, (info.nodeFlags & kFSNodeIsDirectoryMask) != 0});
    }
    FSCloseIterator(iterator);
    for (const Child &child : children) {
        if (!child.isFolder)
            FSDeleteObject(&child.ref); // what Delete() does for a file held by FSRef
        else if (recursive)
            DeleteTreeByRefs(child.ref, true);
    }
    // Failures above show here: a folder that is not empty stays.
    return FSDeleteObject(&ref) == noErr;
}

// Deleting a folder's tree.  The folder is listed once and each child is
// deleted relative to the open folder (fstatat, unlinkat), so that no path is
// resolved from the root per child; the folder is closed before the walk
// returns.  The listing hides a "._name" companion whose item exists, as
// folder iteration does, and so already says which items have one: the
// companion goes with its item, and items without one cost no unlink
// attempt.  As a ref is re-checked before use, a child is deleted only while
// it is still the object listed (same device and inode); symbolic links are
// removed, never followed.
struct ListedChild {
    std::string name;
    dev_t device;
    ino_t inode;
    bool isFolder;
    bool hasCompanion;
};

bool IsCompanionName(const std::string &name)
{
    return name.size() > 2 && name[0] == '.' && name[1] == '_';
}

std::vector<ListedChild> ListChildren(DIR *listing)
{
    std::vector<ListedChild> children;
    const int folderFd = dirfd(listing);
    while (const struct dirent *entry = readdir(listing)) {
        const char *name = entry->d_name;
        struct stat st;
        if ((name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0))) ||
            fstatat(folderFd, name, &st, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        children.push_back({name, st.st_dev, st.st_ino, S_ISDIR(st.st_mode), false});
    }
    std::unordered_map<std::string, size_t> byName;
    byName.reserve(children.size());
    for (size_t k = 0; k < children.size(); ++k)
        byName.emplace(children[k].name, k);
    std::vector<ListedChild> items;
    items.reserve(children.size());
    std::vector<bool> isCompanion(children.size(), false);
    for (size_t k = 0; k < children.size(); ++k) {
        if (!IsCompanionName(children[k].name))
            continue;
        const auto item = byName.find(children[k].name.substr(2));
        if (item != byName.end()) {
            children[item->second].hasCompanion = true;
            isCompanion[k] = true;
        }
    }
    for (size_t k = 0; k < children.size(); ++k)
        if (!isCompanion[k])
            items.push_back(std::move(children[k]));
    return items;
}

// The folder at path opened again, if it is still the folder seen before.
DIR *ReopenFolder(const std::string &path, const struct stat &seen)
{
    const int fd = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    struct stat st;
    if (fd < 0)
        return nullptr;
    DIR *listing = nullptr;
    if (fstat(fd, &st) == 0 && st.st_dev == seen.st_dev && st.st_ino == seen.st_ino)
        listing = fdopendir(fd);
    if (!listing)
        close(fd);
    return listing;
}

// Deletes what the open folder holds (sub-folders too when recursive), then
// closes it.
void DeleteChildrenAt(int folderFd, const std::string &path, bool recursive)
{
    DIR *listing = fdopendir(folderFd);
    struct stat self;
    if (!listing || fstat(folderFd, &self) != 0) {
        listing ? closedir(listing) : close(folderFd);
        return;
    }
    for (const ListedChild &child : ListChildren(listing)) {
        struct stat st;
        if (fstatat(folderFd, child.name.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0 || st.st_dev != child.device ||
            st.st_ino != child.inode || S_ISDIR(st.st_mode) != child.isFolder)
            continue; // gone or replaced since the listing
        if (child.isFolder) {
            if (!recursive)
                continue;
            const std::string childPath = path + "/" + child.name;
            const int childFd = openat(folderFd, child.name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            if (childFd < 0 && (errno == EMFILE || errno == ENFILE)) {
                // No descriptor left for another level (a very deep tree):
                // this folder lets go of its own while the sub-tree is
                // deleted through refs, one folder open at a time.
                closedir(listing);
                FSRef childRef;
                if (FSPathMakeRefWithOptions(reinterpret_cast<const UInt8 *>(childPath.c_str()),
                                             kFSPathMakeRefDoNotFollowLeafSymlink, &childRef, nullptr) == noErr)
                    DeleteTreeByRefs(childRef, true); // the folder and its companion go too
                if ((listing = ReopenFolder(path, self)) == nullptr)
                    return;
                folderFd = dirfd(listing);
                continue;
            }
            if (childFd >= 0)
                DeleteChildrenAt(childFd, childPath, true);
            if (unlinkat(folderFd, child.name.c_str(), AT_REMOVEDIR) != 0)
                continue;
        } else if (unlinkat(folderFd, child.name.c_str(), 0) != 0) {
            continue;
        }
        if (child.hasCompanion)
            unlinkat(folderFd, ("._" + child.name).c_str(), 0);
    }
    closedir(listing);
}

} // namespace

// ---- Path text ----

wchar_t GetPathDelimiter()
{
    return kDelimiter;
}

bool IsRelativePath(const CStr<wchar_t> &path)
{
    return !path.IsEmpty() && path[0] != kDelimiter;
}

CStr<wchar_t> GetFilePathFromFullPath(const CStr<wchar_t> &path)
{
    const int slash = path.ReverseFind(kDelimiter);
    return slash < 0 ? CStr<wchar_t>() : path.Left(slash + 1);
}

CStr<wchar_t> GetFileNameFromFullPath(const CStr<wchar_t> &path)
{
    const int slash = path.ReverseFind(kDelimiter);
    return slash < 0 ? path : path.Mid(slash + 1);
}

CStr<wchar_t> GetFileExt(const CStr<wchar_t> &path)
{
    const int dot = path.ReverseFind(L'.');
    return dot < 0 ? CStr<wchar_t>() : path.Mid(dot + 1);
}

CFURLRef GetParentFolderURL(const CStr<wchar_t> &path, CStr<wchar_t> &name)
{
    CStr<wchar_t> text = path;
    if (EndsWithDelimiter(text))
        text = text.Left(text.GetLength() - 1);
    return location_support::SplitAtLastSlash(text, name);
}

CStr<wchar_t> GetAbsFileName(const CStr<wchar_t> &rel, const CStr<wchar_t> &base)
{
    if (rel[0] != L'.')
        return base + rel;
    if (rel[1] != L'.')
        return base + rel.Mid(2);
    CStr<wchar_t> folder = base.Left(base.GetLength() - 1);
    CStr<wchar_t> rest = rel;
    while (rest[0] == L'.' && rest[1] == L'.') {
        const int slash = folder.ReverseFind(kDelimiter);
        if (slash < 0)
            return CStr<wchar_t>();
        folder = folder.Left(slash);
        rest = rest.Mid(3);
    }
    return folder + kDelimiter + rest;
}

CStr<wchar_t> GetEncodedText(const wchar_t *text)
{
    CStr<wchar_t> encoded(text);
    if (encoded.Find(L'&') >= 0)
        encoded.Replace(L"&", L"&amp;");
    if (encoded.Find(L'<') >= 0)
        encoded.Replace(L"<", L"&lt;");
    if (encoded.Find(L'>') >= 0)
        encoded.Replace(L">", L"&gt;");
    if (encoded.Find(L'"') >= 0)
        encoded.Replace(L"\"", L"&quot;");
    return encoded;
}

CStr<wchar_t> GetURLFromLocalFileName(const wchar_t *text)
{
    if (!text)
        return CStr<wchar_t>();
    const CStr<wchar_t> name(text);
    if (name.Find(L"://") >= 0)
        return name;
    return CStr<wchar_t>(L"file") + L":///" + name; // "/a/b" gives "file:////a/b", kept so
}

CStr<wchar_t> GetLocalFileName(const wchar_t *text)
{
    const CStr<wchar_t> url(text);
    if (url.IsEmpty())
        return url;
    const int separator = url.Find(L"://");
    if (separator >= 0 && url.Left(4).Compare(L"file") == 0)
        return url.Mid(separator + 3);
    return url;
}

bool CreatePathIfNotExistant(const CStr<wchar_t> &)
{
    return false;
}

// ---- Locations and folders ----

OSStatus GetParentFSRefAndName(CFURLRef url, FSRef *parent, CStr<wchar_t> &name)
{
    if (!url || !parent)
        return paramErr;
    CFURLRef parentURL = CFURLCreateCopyDeletingLastPathComponent(kCFAllocatorDefault, url);
    CFStringRef lastComponent = CFURLCopyLastPathComponent(url);
    OSStatus status = memFullErr;
    if (parentURL && lastComponent) {
        name.InitWithCFString(lastComponent);
        status = CFURLGetFSRef(parentURL, parent) ? OSStatus(noErr) : OSStatus(fnfErr);
    }
    if (parentURL)
        CFRelease(parentURL);
    if (lastComponent)
        CFRelease(lastComponent);
    return status;
}

bool GetSysTempFolder(TFileLocationInfo &folder)
{
    FSRef ref;
    if (FSFindFolder(kUserDomain, kChewableItemsFolderType, kCreateFolder, &ref) != noErr &&
        FSFindFolder(kUserDomain, kTemporaryFolderType, kCreateFolder, &ref) != noErr)
        return false;
    folder.SetFSRef(ref);
    return true;
}

bool GetAppTempFolder(TFileLocationInfo &folder)
{
    if (!GetSysTempFolder(folder))
        return false;
    CStr<wchar_t> path = folder.GetFullPath();
    if (EndsWithDelimiter(path))
        path = path.Left(path.GetLength() - 1);
    CStr<wchar_t> text;
    text.Format(L"%ls%c%ls%c", Text(path), kDelimiter, L"Orvan", kDelimiter);
    SetPathLocation(folder, text);
    CreateLocation(folder);
    const CStr<wchar_t> outer = text;
    text.Format(L"%ls%ls%c", Text(outer), L"Mirtel", kDelimiter);
    SetPathLocation(folder, text);
    CreateLocation(folder);
    return true;
}

bool GetModuleFolder(TFileLocationInfo &folder, CFBundleRef bundle, bool bundleFolder)
{
    CFURLRef url = nullptr;
    if (bundle) {
        url = bundleFolder ? CFBundleCopyBundleURL(bundle) : CFBundleCopyExecutableURL(bundle);
    } else {
        const ProcessSerialNumber current = {0, kCurrentProcess};
        FSRef location;
        if (GetProcessBundleLocation(&current, &location) != noErr)
            return false;
        CFURLRef locationURL = CFURLCreateFromFSRef(kCFAllocatorDefault, &location);
        if (!locationURL)
            return false;
        if (!CFURLHasDirectoryPath(locationURL)) {
            url = locationURL; // a plain executable is its own bundle location
        } else {
            CFBundleRef processBundle = CFBundleCreate(kCFAllocatorDefault, locationURL);
            CFRelease(locationURL);
            if (processBundle) {
                url = CFBundleCopyExecutableURL(processBundle);
                CFRelease(processBundle);
            }
        }
    }
    if (!url)
        return false;
    FSRef parent;
    CStr<wchar_t> name;
    const OSStatus status = GetParentFSRefAndName(url, &parent, name);
    CFRelease(url);
    if (status != noErr)
        return false;
    folder.SetFSRef(parent);
    CStr<wchar_t> path = folder.GetFullPath();
    path += kDelimiter;
    SetPathLocation(folder, path);
    return true;
}

bool CreateLocation(const TFileLocationInfo &location)
{
    const CStr<wchar_t> path = location.GetFullPath();
    if (path.IsEmpty())
        return false;
    CStr<wchar_t> name;
    CFURLRef parentURL = file_utils::GetParentFolderURL(path, name);
    if (!parentURL)
        return false;
    const OSErr status = location_support::CreateFolderIn(parentURL, name);
    CFRelease(parentURL);
    return status == noErr || status == dupFNErr; // an existing folder is fine
}

bool DeleteLocation(const TFileLocationInfo &location)
{
    return location.Delete();
}

bool DeleteDir(const TFileLocationInfo &folder, bool recursive)
{
    FSRef ref;
    if (!FolderRef(folder, ref))
        return false;
    std::vector<char> path(PATH_MAX);
    if (FSRefMakePath(&ref, reinterpret_cast<UInt8 *>(path.data()), static_cast<UInt32>(path.size())) != noErr)
        return DeleteTreeByRefs(ref, recursive);
    const int folderFd = open(path.data(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folderFd < 0)
        return (errno == EMFILE || errno == ENFILE) && DeleteTreeByRefs(ref, recursive);
    DeleteChildrenAt(folderFd, path.data(), recursive);
    // Failures above show here: a folder that is not empty stays.
    return FSDeleteObject(&ref) == noErr;
}

bool EnumFilesInFolder(const wchar_t *ext, const TFileLocationInfo &folder, std::vector<CStr<wchar_t>> &out)
{
    FSRef ref;
    FSIterator iterator;
    if (!ext || !FolderRef(folder, ref) || FSOpenIterator(&ref, kFSIterateFlat, &iterator) != noErr)
        return false;
    const CStr<wchar_t> wanted(ext);
    HFSUniStr255 name;
    ItemCount count;
    while (FSGetCatalogInfoBulk(iterator, 1, &count, nullptr, kFSCatInfoNone, nullptr, nullptr, nullptr,
                                &name) == noErr) {
        if (HasExtension(name, wanted))
            out.push_back(NameFromUnits(name));
    }
    FSCloseIterator(iterator);
    return true;
}

bool StartApplication(const TFileLocationInfo &, const wchar_t *, bool)
{
    return true;
}

bool GetExactTempFileLocation(const CStr<wchar_t> &name, TFileLocationInfo &location)
{
    if (!GetAppTempFolder(location))
        return false;
    CStr<wchar_t> path = location.GetFullPath();
    if (!EndsWithDelimiter(path))
        path += kDelimiter;
    const int room = 256 - path.GetLength();
    SetPathLocation(location, path + (name.GetLength() <= room ? name : name.Left(room)));
    return true;
}

bool GetTempFileLocation(const CStr<wchar_t> &name, const CStr<wchar_t> &ext, TFileLocationInfo &location)
{
    if (!GetAppTempFolder(location))
        return false;
    CStr<wchar_t> folder = location.GetFullPath();
    const int room = 255 - folder.GetLength() - ext.GetLength();
    CStr<wchar_t> stem = name.GetLength() > room ? name.Left(room) : name;
    SetPathLocation(location, folder + stem + L"." + ext);
    if (!location.IsFile())
        return true;

    if (EndsWithDelimiter(folder))
        folder = folder.Left(folder.GetLength() - 1);
    if (room - 5 < stem.GetLength())
        stem = stem.Left(room - 5); // room for "_" and three digits
    CStr<wchar_t> candidate;
    int number = 1;
    for (; number <= 1000; ++number) {
        candidate.Format(L"%ls%c%ls_%03d.%ls", Text(folder), kDelimiter, Text(stem), number, Text(ext));
        SetPathLocation(location, candidate);
        if (!location.IsFile())
            break;
    }
    if (number > 1000)
        return true; // every name is taken: the last candidate stays
    if (number == 1000) {
        // Kept as it always was: this name lacks the "/" after the folder.
        candidate.Format(L"%ls%ls_%03d.%ls", Text(folder), Text(stem), 0, Text(ext));
        SetPathLocation(location, candidate);
        location.Delete();
    }
    return true;
}

// ---- Whole-file input and output ----

FILE *fopen(const TFileLocationInfo &location, const char *mode)
{
    if (!mode)
        return nullptr;
    const std::vector<char> path = location_support::SystemEncodedText(location.GetFullPath());
    if (path[0] == 0)
        return nullptr;
    return ::fopen(path.data(), mode);
}

bool ReadBinFileToBuffer(const TFileLocationInfo &location, void *&buffer, long &size)
{
    buffer = nullptr;
    size = 0;
    FILE *file = fopen(location, "rb");
    if (!file)
        return false;
    const long length = RegularFileSize(file);
    if (length < 0) {
        std::fclose(file);
        return false;
    }
    // A file larger than memory answers false rather than throwing.
    char *bytes = new (std::nothrow) char[static_cast<size_t>(length)];
    if (!bytes) {
        std::fclose(file);
        return false;
    }
    const size_t read = std::fread(bytes, 1, static_cast<size_t>(length), file);
    std::fclose(file);
    if (read != static_cast<size_t>(length)) {
        delete[] bytes;
        return false;
    }
    buffer = bytes;
    size = length;
    return true;
}

bool WriteBinBufferToFile(const TFileLocationInfo &location, const void *buffer, long count)
{
    // Checked before opening, which would empty the file.
    if (count < 0 || (!buffer && count > 0))
        return false;
    FILE *file = fopen(location, "wb");
    if (!file)
        return false;
    const size_t written = count > 0 ? std::fwrite(buffer, 1, static_cast<size_t>(count), file) : 0;
    const bool closed = std::fclose(file) == 0;
    return closed && written == static_cast<size_t>(count);
}

bool ReadASCIITextFileToBuffer(const TFileLocationInfo &location, char *&buffer)
{
    buffer = nullptr;
    FILE *file = fopen(location, "rt");
    if (!file)
        return false;
    const long length = RegularFileSize(file);
    if (length < 0) {
        std::fclose(file);
        return false;
    }
    char *text = new (std::nothrow) char[static_cast<size_t>(length) + 1];
    if (!text) {
        std::fclose(file);
        return false;
    }
    const size_t read = std::fread(text, 1, static_cast<size_t>(length), file);
    std::fclose(file);
    text[read] = 0;
    if (read != static_cast<size_t>(length)) {
        delete[] text;
        return false;
    }
    buffer = text;
    return true;
}

bool WriteASCIITextBufferToFile(const TFileLocationInfo &location, const char *text)
{
    if (!text)
        return false;
    FILE *file = fopen(location, "wt");
    if (!file)
        return false;
    const size_t length = std::strlen(text);
    const size_t written = std::fwrite(text, 1, length, file);
    const bool closed = std::fclose(file) == 0;
    return closed && written == length;
}

bool ReadUnicodeTextFileToBuffer(const TFileLocationInfo &location, wchar_t *&buffer, bool)
{
    buffer = nullptr;
    FILE *file = fopen(location, "rb");
    if (!file)
        return false;
    const long length = RegularFileSize(file);
    const size_t even = length > 0 ? (static_cast<size_t>(length) + 1) & ~size_t(1) : 0;
    std::unique_ptr<unsigned char[]> bytes(new (std::nothrow) unsigned char[even + 2]());
    if (bytes && even > 0)
        (void)std::fread(bytes.get(), 1, even, file);
    std::fclose(file);
    if (!bytes)
        return false;

    size_t count = even / 2, first = 0;
    const auto unitAt = [&bytes](size_t k) {
        UInt16 unit;
        std::memcpy(&unit, &bytes[2 * k], 2); // machine byte order, never swapped
        return unit;
    };
    if (count > 0 && (unitAt(0) == 0xFFFE || unitAt(0) == 0xFEFF)) {
        first = 1;
        --count;
    }
    buffer = new (std::nothrow) wchar_t[count + 1];
    if (!buffer)
        return false;
    size_t k = 0;
    for (; k < count && unitAt(first + k) != 0; ++k)
        buffer[k] = unitAt(first + k);
    buffer[k] = 0;
    return true;
}

bool WriteUnicodeTextBufferToFile(const TFileLocationInfo &location, const wchar_t *text)
{
    if (!text)
        return false;
    FILE *file = fopen(location, "wb");
    if (!file)
        return false;
    static const unsigned char kMark[2] = {0xFE, 0xFF};
    std::fwrite(kMark, 1, sizeof kMark, file);
    std::fwrite(text, sizeof(wchar_t), std::wcslen(text), file);
    std::fclose(file);
    return true; // the write count is not looked at
}

} // namespace file_utils
