/* FSFindFolder over the XDG base and user directories. */
#include <CoreServices/Folders.h>
#include <CoreServices/MacErrors.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/* A folder path, or the error that explains why there is none. */
struct FolderAnswer {
    OSErr error;
    std::string path;
};

FolderAnswer Found(std::string path)
{
    return {noErr, std::move(path)};
}

FolderAnswer Failed(OSErr error)
{
    return {error, std::string()};
}

std::string WithoutTrailingSlashes(std::string path)
{
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

std::string EnvironmentValue(const char *name)
{
    const char *value = std::getenv(name);
    return value != nullptr ? std::string(value) : std::string();
}

std::string HomeFolder()
{
    std::string home = EnvironmentValue("HOME");
    if (home.empty()) {
        struct passwd entry, *result = nullptr;
        char buffer[4096];
        if (getpwuid_r(geteuid(), &entry, buffer, sizeof buffer, &result) == 0 && result != nullptr &&
            result->pw_dir != nullptr)
            home = result->pw_dir;
    }
    return WithoutTrailingSlashes(home);
}

/* An XDG base directory: the variable when it holds an absolute path (the
 * XDG rules ignore relative ones), else the fallback below the home folder. */
std::string BaseDirectory(const char *variable, const char *belowHome)
{
    std::string value = EnvironmentValue(variable);
    if (!value.empty() && value[0] == '/')
        return WithoutTrailingSlashes(value);
    std::string home = HomeFolder();
    return home.empty() ? std::string() : home + "/" + belowHome;
}

/* A folder named in user-dirs.dirs (lines such as XDG_DESKTOP_DIR="$HOME/Desktop"),
 * else the fallback below the home folder. */
std::string UserDirectory(const char *key, const char *fallbackBelowHome)
{
    std::string home = HomeFolder();
    std::string configHome = BaseDirectory("XDG_CONFIG_HOME", ".config");
    std::ifstream file(configHome + "/user-dirs.dirs");
    std::string line, prefix = std::string(key) + "=";
    while (std::getline(file, line)) {
        if (line.compare(0, prefix.size(), prefix) != 0)
            continue;
        std::string value = line.substr(prefix.size());
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
            value = value.substr(1, value.size() - 2);
        if (value.compare(0, 5, "$HOME") == 0 && (value.size() == 5 || value[5] == '/'))
            value = home + value.substr(5);
        if (!value.empty() && value[0] == '/')
            return WithoutTrailingSlashes(value);
    }
    return home.empty() ? std::string() : home + "/" + fallbackBelowHome;
}

bool IsDirectory(const std::string &path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

/* A real directory (not a link to one) owned by this user, mode exactly 0700. */
bool IsPrivateDirectory(const std::string &path)
{
    struct stat info;
    return lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == geteuid() &&
           (info.st_mode & 07777) == 0700;
}

/* mkdir -p; an existing folder counts as made. */
bool MakeFolders(const std::string &path, mode_t mode)
{
    if (path.empty() || IsDirectory(path))
        return !path.empty();
    std::string::size_type slash = path.rfind('/');
    if (slash != std::string::npos && slash > 0 && !MakeFolders(path.substr(0, slash), mode))
        return false;
    return mkdir(path.c_str(), mode) == 0 || (errno == EEXIST && IsDirectory(path));
}

FolderAnswer ExistingFolder(const std::string &path, bool create, mode_t mode)
{
    if (path.empty())
        return Failed(fnfErr);
    if (IsDirectory(path))
        return Found(path);
    if (!create)
        return Failed(fnfErr);
    return MakeFolders(path, mode) ? Found(path) : Failed(dirNFErr);
}

FolderAnswer PrivateTemporaryFolder(bool create)
{
    std::string base = WithoutTrailingSlashes(EnvironmentValue("TMPDIR"));
    if (base.empty() || base[0] != '/')
        base = "/tmp";
    std::string path = (base == "/" ? "" : base) + "/koru-" + std::to_string(geteuid());
    struct stat info;
    if (lstat(path.c_str(), &info) != 0) {
        if (!create)
            return Failed(fnfErr);
        if (mkdir(path.c_str(), 0700) == 0)
            chmod(path.c_str(), 0700); // the umask may have taken bits away
        else if (errno != EEXIST)
            return Failed(dirNFErr);
    }
    return IsPrivateDirectory(path) ? Found(path) : Failed(permErr);
}

FolderAnswer UserFolder(OSType folderType, bool create)
{
    switch (folderType) {
    case kTemporaryFolderType:
    case kTemporaryItemsInUserDomainFolderType:
    /* Chewable items share the private temporary folder rather than
     * $XDG_RUNTIME_DIR: that is a small tmpfs meant for sockets, and
     * temporary files can be large. */
    case kChewableItemsFolderType:
        return PrivateTemporaryFolder(create);
    case kDesktopFolderType:
        return ExistingFolder(UserDirectory("XDG_DESKTOP_DIR", "Desktop"), create, 0755);
    case kDocumentsFolderType:
        return ExistingFolder(UserDirectory("XDG_DOCUMENTS_DIR", "Documents"), create, 0755);
    case kPreferencesFolderType:
        return ExistingFolder(BaseDirectory("XDG_CONFIG_HOME", ".config"), create, 0700);
    case kApplicationSupportFolderType:
        return ExistingFolder(BaseDirectory("XDG_DATA_HOME", ".local/share"), create, 0700);
    case kCachedDataFolderType:
        return ExistingFolder(BaseDirectory("XDG_CACHE_HOME", ".cache"), create, 0700);
    case kCurrentUserFolderType:
        return ExistingFolder(HomeFolder(), false, 0700);
    default:
        return Failed(fnfErr);
    }
}

FolderAnswer FindFolder(SInt16 vRefNum, OSType folderType, bool create)
{
    switch (vRefNum) {
    case kUserDomain:
    case kOnSystemDisk:
    case kOnAppropriateDisk:
        return UserFolder(folderType, create);
    case kLocalDomain:
        if (folderType == kApplicationSupportFolderType)
            return ExistingFolder("/usr/local/share", create, 0755);
        return Failed(fnfErr);
    case kSystemDomain:
        if (folderType == kApplicationSupportFolderType)
            return ExistingFolder("/usr/share", create, 0755);
        return Failed(fnfErr);
    default:
        return Failed(fnfErr);
    }
}

} // namespace

extern "C" OSErr FSFindFolderGetPath(SInt16 vRefNum, OSType folderType, Boolean createFolder,
                                     char *path, size_t maxPathSize)
{
    if (path == nullptr || maxPathSize == 0)
        return paramErr;
    path[0] = '\0';
    try {
        FolderAnswer answer = FindFolder(vRefNum, folderType, createFolder != 0);
        if (answer.error != noErr)
            return answer.error;
        if (answer.path.size() >= maxPathSize)
            return paramErr;
        std::memcpy(path, answer.path.c_str(), answer.path.size() + 1);
        return noErr;
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSFindFolder(SInt16 vRefNum, OSType folderType, Boolean createFolder,
                              FSRef *foundRef)
{
    if (foundRef == nullptr)
        return paramErr;
    std::memset(foundRef, 0, sizeof *foundRef);
    char path[PATH_MAX];
    OSErr error = FSFindFolderGetPath(vRefNum, folderType, createFolder, path, sizeof path);
    if (error != noErr)
        return error;
    OSStatus status = FSPathMakeRef(reinterpret_cast<const UInt8 *>(path), foundRef, nullptr);
    if (status != noErr)
        std::memset(foundRef, 0, sizeof *foundRef);
    return static_cast<OSErr>(status);
}
