/* Launch Services' view of items: their kind flags, type and creator, the
 * application that opens them, and applications found by identity. */
#include <CoreServices/LaunchServices.h>

#include "AppleDouble.h"
#include "FileRef.h"
#include "MountTable.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char **environ;

using namespace filemanager;

namespace {

constexpr OSType kFolderType = 0x666F6C64; // 'fold'
constexpr OSType kVolumeType = 0x6469736B; // 'disk'
constexpr UInt16 kFinderInvisible = 0x4000, kFinderAlias = 0x8000;

bool HasSuffix(const std::string &text, const std::string &suffix)
{
    return text.size() > suffix.size() && text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

std::string ExtensionOf(const std::string &name)
{
    const size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 || dot + 1 == name.size() ? std::string() : name.substr(dot + 1);
}

bool IsFile(const std::string &path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

// Mount points as the kernel's mount table lists them.
bool IsListedMountPoint(const std::string &path)
{
    std::vector<MountEntry> table;
    if (!ReadMountTable(table))
        return false;
    return std::any_of(table.begin(), table.end(), [&](const MountEntry &entry) { return entry.mountPoint == path; });
}

bool IsVolume(const Node &node)
{
    if (node.path == "/")
        return true;
    if (!S_ISDIR(node.st.st_mode))
        return false;
    struct stat parent;
    if (stat(ParentPath(node.path).c_str(), &parent) == 0 && parent.st_dev != node.st.st_dev)
        return true;
    return IsListedMountPoint(node.path); // a bind mount keeps its device
}

bool IsPackage(const Node &node)
{
    if (!S_ISDIR(node.st.st_mode))
        return false;
    const std::string extension = ExtensionOf(LastComponent(node.path));
    for (const char *bundle : {"app", "bundle", "framework", "plugin"})
        if (strcasecmp(extension.c_str(), bundle) == 0)
            return true;
    return IsFile(node.path + "/Contents/Info.plist");
}

bool IsDesktopApplication(const std::string &path)
{
    std::ifstream file(path);
    std::string line;
    bool inMainGroup = false;
    while (std::getline(file, line)) {
        if (!line.empty() && line[0] == '[')
            inMainGroup = line.rfind("[Desktop Entry]", 0) == 0;
        else if (inMainGroup && line.rfind("Type=", 0) == 0)
            return line.substr(5) == "Application";
    }
    return false;
}

bool IsApplication(const Node &node)
{
    const std::string name = LastComponent(node.path);
    if (S_ISDIR(node.st.st_mode))
        return strcasecmp(ExtensionOf(name).c_str(), "app") == 0;
    if (!S_ISREG(node.st.st_mode))
        return false;
    if (HasSuffix(name, ".desktop"))
        return IsDesktopApplication(node.path);
    return (node.st.st_mode & 0111) != 0;
}

// The folder's .hidden file lists one name per line.
bool IsListedHidden(const std::string &path)
{
    std::ifstream hidden(JoinPath(ParentPath(path), ".hidden"));
    const std::string name = LastComponent(path);
    std::string line;
    while (std::getline(hidden, line))
        if (line == name)
            return true;
    return false;
}

UInt32 Big32(const UInt8 *bytes)
{
    return (UInt32(bytes[0]) << 24) | (UInt32(bytes[1]) << 16) | (UInt32(bytes[2]) << 8) | bytes[3];
}

CFStringRef CreateString(const std::string &text)
{
    return CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8 *>(text.data()),
                                   static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false);
}

void FillInfo(const Node &node, LSRequestedInfo which, LSItemInfoRecord &info)
{
    const AppleDoubleData stored = AppleDoubleFile::Read(node.path);
    const UInt16 finderFlags = static_cast<UInt16>((stored.finderInfo[8] << 8) | stored.finderInfo[9]);
    const bool folder = S_ISDIR(node.st.st_mode), link = S_ISLNK(node.st.st_mode);
    const std::string name = LastComponent(node.path);
    const bool volume = IsVolume(node);
    if (which & (kLSRequestBasicFlagsOnly | kLSRequestAppTypeFlags | kLSRequestAllFlags)) {
        LSItemInfoFlags flags = 0;
        if (S_ISREG(node.st.st_mode))
            flags |= kLSItemInfoIsPlainFile;
        if (folder)
            flags |= kLSItemInfoIsContainer;
        if (IsPackage(node))
            flags |= kLSItemInfoIsPackage;
        if (IsApplication(node))
            flags |= kLSItemInfoIsApplication;
        if (link)
            flags |= kLSItemInfoIsSymlink | kLSItemInfoIsAliasFile;
        if (!folder && (finderFlags & kFinderAlias))
            flags |= kLSItemInfoIsAliasFile;
        if ((name.size() > 1 && name[0] == '.') || (finderFlags & kFinderInvisible) ||
            (node.path != "/" && IsListedHidden(node.path)))
            flags |= kLSItemInfoIsInvisible;
        if (volume)
            flags |= kLSItemInfoIsVolume;
        info.flags = flags;
    }
    if (which & kLSRequestTypeCreator) {
        info.filetype = Big32(stored.finderInfo);
        info.creator = Big32(stored.finderInfo + 4);
        if (folder) { // a folder's Finder information holds no type and creator
            info.filetype = volume ? kVolumeType : kFolderType;
            info.creator = 0x4D414353; // 'MACS'
        }
    }
    if (which & kLSRequestExtension) {
        const std::string extension = ExtensionOf(name);
        info.extension = extension.empty() ? nullptr : CreateString(extension);
    }
}

// Runs a program and answers the first line it prints; empty when it fails.
std::string FirstLineOf(const std::vector<std::string> &command)
{
    int output[2];
    if (pipe2(output, O_CLOEXEC) != 0)
        return std::string();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::vector<char *> argv;
    for (const std::string &word : command)
        argv.push_back(const_cast<char *>(word.c_str()));
    argv.push_back(nullptr);
    pid_t child = 0;
    const int error = posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(output[1]);
    std::string text;
    if (error == 0) {
        char block[4096];
        ssize_t count;
        while ((count = read(output[0], block, sizeof block)) > 0 || (count < 0 && errno == EINTR))
            if (count > 0)
                text.append(block, static_cast<size_t>(count));
        int status = 0;
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
            text.clear();
    }
    close(output[0]);
    return text.substr(0, text.find('\n'));
}

std::vector<std::string> SplitColons(const char *list, const char *fallback)
{
    const std::string text = list && *list ? list : fallback;
    std::vector<std::string> parts;
    size_t start = 0;
    while (start <= text.size()) {
        const size_t end = std::min(text.find(':', start), text.size());
        if (end > start)
            parts.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

std::string Home()
{
    const char *home = getenv("HOME");
    return home ? home : "";
}

std::vector<std::string> DesktopFolders()
{
    std::vector<std::string> folders;
    const char *dataHome = getenv("XDG_DATA_HOME");
    folders.push_back((dataHome && *dataHome ? std::string(dataHome) : Home() + "/.local/share") + "/applications");
    for (const std::string &folder : SplitColons(getenv("XDG_DATA_DIRS"), "/usr/local/share:/usr/share"))
        folders.push_back(folder + "/applications");
    return folders;
}

std::vector<std::string> BundleFolders()
{
    const char *userRoot = getenv("GNUSTEP_USER_ROOT");
    return {(userRoot && *userRoot ? std::string(userRoot) : Home() + "/GNUstep") + "/Applications",
            "/usr/local/lib/GNUstep/Applications", "/usr/lib/GNUstep/Applications"};
}

OSStatus Answer(const std::string &path, FSRef *outRef, CFURLRef *outURL)
{
    if (outRef && FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), outRef, nullptr) != noErr)
        return kLSApplicationNotFoundErr;
    if (outURL) {
        struct stat st;
        const bool folder = stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
        *outURL = CFURLCreateFromFileSystemRepresentation(kCFAllocatorDefault,
                                                          reinterpret_cast<const UInt8 *>(path.c_str()),
                                                          static_cast<CFIndex>(path.size()), folder);
        if (!*outURL)
            return memFullErr;
    }
    return noErr;
}

std::string TextOf(CFStringRef string)
{
    if (!string || CFGetTypeID(string) != CFStringGetTypeID())
        return std::string();
    const CFIndex size = CFStringGetMaximumSizeForEncoding(CFStringGetLength(string), kCFStringEncodingUTF8) + 1;
    std::vector<char> buffer(static_cast<size_t>(size));
    return CFStringGetCString(string, buffer.data(), size, kCFStringEncodingUTF8) ? buffer.data() : "";
}

struct Wanted {
    OSType creator;
    std::string bundleID;
    std::string name;
};

std::string InfoValue(CFBundleRef bundle, CFStringRef key)
{
    return TextOf(static_cast<CFStringRef>(CFBundleGetValueForInfoDictionaryKey(bundle, key)));
}

bool BundleMatches(const std::string &path, const std::string &folderName, const Wanted &wanted)
{
    CFURLRef url = CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const UInt8 *>(path.c_str()), static_cast<CFIndex>(path.size()), true);
    if (!url)
        return false;
    CFBundleRef bundle = CFBundleCreate(kCFAllocatorDefault, url);
    CFRelease(url);
    if (!bundle)
        return false;
    bool match = true;
    if (wanted.creator != kLSUnknownCreator) {
        const std::string signature = InfoValue(bundle, CFSTR("CFBundleSignature"));
        match = signature.size() == 4 && Big32(reinterpret_cast<const UInt8 *>(signature.data())) == wanted.creator;
    }
    if (match && !wanted.bundleID.empty())
        match = strcasecmp(InfoValue(bundle, CFSTR("CFBundleIdentifier")).c_str(), wanted.bundleID.c_str()) == 0;
    if (match && !wanted.name.empty()) {
        const std::string stem = folderName.substr(0, folderName.size() - 4);
        match = wanted.name == folderName || wanted.name == stem ||
                wanted.name == InfoValue(bundle, CFSTR("CFBundleName"));
    }
    CFRelease(bundle);
    return match;
}

bool DesktopMatches(const std::string &path, const std::string &fileName, const Wanted &wanted)
{
    if (wanted.creator != kLSUnknownCreator || !IsDesktopApplication(path))
        return false;
    const std::string id = fileName.substr(0, fileName.size() - 8);
    if (!wanted.bundleID.empty() && strcasecmp(id.c_str(), wanted.bundleID.c_str()) != 0)
        return false;
    if (wanted.name.empty())
        return true;
    if (wanted.name == id || wanted.name == fileName)
        return true;
    std::ifstream file(path);
    std::string line;
    bool inMainGroup = false;
    while (std::getline(file, line)) {
        if (!line.empty() && line[0] == '[')
            inMainGroup = line.rfind("[Desktop Entry]", 0) == 0;
        else if (inMainGroup && line.rfind("Name=", 0) == 0)
            return line.substr(5) == wanted.name;
    }
    return false;
}

std::vector<std::string> Entries(const std::string &folder)
{
    std::vector<std::string> names;
    if (DIR *dir = opendir(folder.c_str())) {
        while (const struct dirent *entry = readdir(dir))
            if (entry->d_name[0] != '.')
                names.push_back(entry->d_name);
        closedir(dir);
    }
    std::sort(names.begin(), names.end()); // the same answer on every run
    return names;
}

std::string FindApplication(const Wanted &wanted)
{
    for (const std::string &folder : BundleFolders())
        for (const std::string &name : Entries(folder))
            if (HasSuffix(name, ".app") && BundleMatches(JoinPath(folder, name), name, wanted))
                return JoinPath(folder, name);
    for (const std::string &folder : DesktopFolders())
        for (const std::string &name : Entries(folder))
            if (HasSuffix(name, ".desktop") && DesktopMatches(JoinPath(folder, name), name, wanted))
                return JoinPath(folder, name);
    return std::string();
}

std::string FindDesktopFile(const std::string &id)
{
    if (id.empty() || id.find('/') != std::string::npos)
        return std::string();
    for (const std::string &folder : DesktopFolders())
        if (IsFile(JoinPath(folder, id)))
            return JoinPath(folder, id);
    return std::string();
}

} // namespace

extern "C" OSStatus LSCopyItemInfoForRef(const FSRef *inItemRef, LSRequestedInfo inWhichInfo,
                                         LSItemInfoRecord *outItemInfo)
{
    if (outItemInfo)
        std::memset(outItemInfo, 0, sizeof *outItemInfo);
    if (!inItemRef || !outItemInfo)
        return paramErr;
    try {
        Node node;
        const OSErr status = ResolveRef(inItemRef, node);
        if (status != noErr)
            return status;
        FillInfo(node, inWhichInfo, *outItemInfo);
        return noErr;
    } catch (...) {
        if (outItemInfo->extension)
            CFRelease(outItemInfo->extension);
        std::memset(outItemInfo, 0, sizeof *outItemInfo);
        return memFullErr;
    }
}

extern "C" OSStatus LSCopyItemInfoForURL(CFURLRef inURL, LSRequestedInfo inWhichInfo, LSItemInfoRecord *outItemInfo)
{
    if (outItemInfo)
        std::memset(outItemInfo, 0, sizeof *outItemInfo);
    if (!inURL || !outItemInfo || CFGetTypeID(inURL) != CFURLGetTypeID())
        return paramErr;
    FSRef ref;
    if (!CFURLGetFSRef(inURL, &ref))
        return fnfErr;
    return LSCopyItemInfoForRef(&ref, inWhichInfo, outItemInfo);
}

extern "C" OSStatus LSGetApplicationForItem(const FSRef *inItemRef, LSRolesMask, FSRef *outAppRef,
                                            CFURLRef *outAppURL)
{
    if (outAppURL)
        *outAppURL = nullptr;
    if (outAppRef)
        std::memset(outAppRef, 0, sizeof *outAppRef);
    if (!inItemRef || (!outAppRef && !outAppURL))
        return paramErr;
    try {
        Node node;
        const OSErr status = ResolveRef(inItemRef, node);
        if (status != noErr)
            return status;
        const std::string type = FirstLineOf({"xdg-mime", "query", "filetype", node.path});
        if (type.empty())
            return kLSApplicationNotFoundErr;
        const std::string desktop = FindDesktopFile(FirstLineOf({"xdg-mime", "query", "default", type}));
        if (desktop.empty())
            return kLSApplicationNotFoundErr;
        return Answer(desktop, outAppRef, outAppURL);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSStatus LSFindApplicationForInfo(OSType inCreator, CFStringRef inBundleID, CFStringRef inName,
                                             FSRef *outAppRef, CFURLRef *outAppURL)
{
    if (outAppURL)
        *outAppURL = nullptr;
    if (outAppRef)
        std::memset(outAppRef, 0, sizeof *outAppRef);
    try {
        const Wanted wanted{inCreator, TextOf(inBundleID), TextOf(inName)};
        if (wanted.creator == kLSUnknownCreator && wanted.bundleID.empty() && wanted.name.empty())
            return paramErr;
        const std::string path = FindApplication(wanted);
        return path.empty() ? OSStatus(kLSApplicationNotFoundErr) : Answer(path, outAppRef, outAppURL);
    } catch (...) {
        return memFullErr;
    }
}
