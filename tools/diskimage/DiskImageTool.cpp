#include "DiskImageTool.h"

#include "MountTable.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace diskimage {

namespace {

using filemanager::MountEntry;

constexpr char kFuseType[] = "fuse.koru";
constexpr char kContentHint[] = "squashfs";

std::string ErrorText(int error)
{
    return std::strerror(error);
}

std::string FirstLine(const std::string &text)
{
    std::string::size_type start = text.find_first_not_of(" \t\n");
    if (start == std::string::npos)
        return "";
    std::string::size_type end = text.find('\n', start);
    return text.substr(start, end == std::string::npos ? std::string::npos : end - start);
}

// Runs a program found on PATH with stdin and stdout on /dev/null and its
// standard error kept for the failure reason.  Its error output goes to a
// memory file, not a pipe: squashfuse leaves a daemon behind, and a daemon
// holding a pipe open would keep this tool waiting.
bool RunProgram(const std::vector<std::string> &arguments, Failure &failure)
{
    std::vector<char *> argv;
    for (const std::string &argument : arguments)
        argv.push_back(const_cast<char *>(argument.c_str()));
    argv.push_back(nullptr);

    int errorFile = memfd_create("koru-diskimage-stderr", MFD_CLOEXEC);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    if (errorFile >= 0)
        posix_spawn_file_actions_adddup2(&actions, errorFile, 2);
    pid_t pid = -1;
    const int spawned = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        if (errorFile >= 0)
            close(errorFile);
        failure.reason = "cannot run " + arguments[0] + ": " + ErrorText(spawned);
        return false;
    }
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR)
        ;
    std::string errorText;
    if (errorFile >= 0) {
        char buffer[4096];
        ssize_t length = pread(errorFile, buffer, sizeof buffer, 0);
        if (length > 0)
            errorText.assign(buffer, static_cast<size_t>(length));
        close(errorFile);
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0)
        return true;
    std::string line = FirstLine(errorText);
    if (line.empty())
        line = WIFEXITED(status) ? "exited with status " + std::to_string(WEXITSTATUS(status))
                                 : "ended by signal " + std::to_string(WTERMSIG(status));
    failure.reason = arguments[0] + ": " + line;
    return false;
}

bool IsDirectory(const std::string &path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool IsEmptyDirectory(const std::string &path)
{
    DIR *dir = opendir(path.c_str());
    if (dir == nullptr)
        return false;
    bool empty = true;
    while (struct dirent *entry = readdir(dir)) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
            empty = false;
            break;
        }
    }
    closedir(dir);
    return empty;
}

std::string RealPath(const std::string &path)
{
    char resolved[PATH_MAX];
    return realpath(path.c_str(), resolved) != nullptr ? std::string(resolved) : std::string();
}

std::string ParentFolder(const std::string &path)
{
    std::string::size_type slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string LastComponent(const std::string &path)
{
    std::string::size_type slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// The Folder Manager's private 'temp' folder, ${TMPDIR:-/tmp}/koru-<uid>:
// made with mode 0700 when missing, refused unless it is a real folder of
// this user with exactly that mode.  Found here rather than through
// FSFindFolderGetPath, which would load Foundation into every start of a
// tool at a tenth of a second each; the tools' test checks that both agree.
std::string TemporaryFolder()
{
    const char *variable = std::getenv("TMPDIR");
    std::string base = variable != nullptr ? variable : "";
    while (base.size() > 1 && base.back() == '/')
        base.pop_back();
    if (base.empty() || base[0] != '/')
        base = "/tmp";
    const std::string path = (base == "/" ? "" : base) + "/koru-" + std::to_string(geteuid());
    struct stat info;
    if (lstat(path.c_str(), &info) != 0) {
        if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST)
            return "";
        chmod(path.c_str(), 0700); // the umask may have taken bits away
        if (lstat(path.c_str(), &info) != 0)
            return "";
    }
    if (!S_ISDIR(info.st_mode) || info.st_uid != geteuid() || (info.st_mode & 07777) != 0700)
        return "";
    return RealPath(path);
}

// squashfuse splits its -o list at commas; libfuse takes "\," and "\\" as
// the characters themselves.
std::string EscapeMountOption(const std::string &value)
{
    std::string out;
    for (char c : value) {
        if (c == ',' || c == '\\')
            out += '\\';
        out += c;
    }
    return out;
}

// The compression named in a squashfs superblock, or "" when the file is not
// a squashfs image.
std::string SquashfsCompression(const std::string &path, int &error)
{
    error = 0;
    int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        error = errno;
        return "";
    }
    unsigned char superblock[96];
    ssize_t length = pread(fd, superblock, sizeof superblock, 0);
    close(fd);
    if (length < static_cast<ssize_t>(sizeof superblock) || std::memcmp(superblock, "hsqs", 4) != 0)
        return "";
    static const char *const names[] = {"unknown", "gzip", "lzma", "lzo", "xz", "lz4", "zstd"};
    const unsigned compression = superblock[20] | (superblock[21] << 8);
    return names[compression < sizeof names / sizeof names[0] ? compression : 0];
}

std::string ImageType(const std::string &path)
{
    int error;
    const std::string compression = SquashfsCompression(path, error);
    return compression.empty() ? "squashfs" : "squashfs read-only compressed (" + compression + ")";
}

// The file behind a loop device, from sysfs; "" when it has none.
std::string LoopBackingFile(const std::string &device)
{
    std::ifstream file("/sys/block/" + LastComponent(device) + "/loop/backing_file");
    std::string path;
    std::getline(file, path);
    return path;
}

bool EntryOfImage(const MountEntry &entry, std::string &imagePath, std::string &devEntry)
{
    if (entry.fsType == kFuseType) {
        imagePath = entry.source;
        devEntry = "fuse:" + std::to_string(entry.major) + ":" + std::to_string(entry.minor);
        return !imagePath.empty();
    }
    if (entry.fsType == "squashfs" && entry.source.compare(0, 9, "/dev/loop") == 0) {
        imagePath = LoopBackingFile(entry.source);
        devEntry = entry.source;
        return !imagePath.empty();
    }
    return false;
}

const AttachedImage *FindImage(const std::vector<AttachedImage> &images, const std::string &imagePath)
{
    for (const AttachedImage &image : images) {
        if (image.imagePath == imagePath)
            return &image;
    }
    return nullptr;
}

// A folder for a new mount in the private temporary folder, named after the
// image.
std::string MakeMountFolder(const std::string &imagePath, Failure &failure)
{
    const std::string temporary = TemporaryFolder();
    if (temporary.empty()) {
        failure.reason = "no private temporary folder";
        return "";
    }
    std::string name = LastComponent(imagePath);
    std::string::size_type dot = name.rfind('.');
    if (dot != std::string::npos && dot > 0)
        name.erase(dot);
    if (name.size() > 100)
        name.erase(100);
    if (name.empty())
        name = "image";
    std::string pattern = temporary + "/" + name + "-XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (mkdtemp(buffer.data()) == nullptr) {
        failure.reason = "cannot make a mount point: " + ErrorText(errno);
        return "";
    }
    return buffer.data();
}

// The folder to mount on: made when missing (created says so), else it must
// be an empty folder.
std::string PrepareMountPoint(const std::string &requested, bool &created, Failure &failure)
{
    const std::string path = AbsolutePath(requested);
    struct stat info;
    if (lstat(path.c_str(), &info) != 0) {
        if (mkdir(path.c_str(), 0755) != 0) {
            failure.reason = "cannot make mount point " + path + ": " + ErrorText(errno);
            return "";
        }
        created = true;
        return path;
    }
    if (!IsDirectory(path) || !IsEmptyDirectory(path)) {
        failure.reason = "mount point " + path + " is not an empty folder";
        return "";
    }
    return path;
}

bool Unmount(const SystemEntity &entity, bool force, Failure &failure)
{
    const bool fuse = entity.devEntry.compare(0, 5, "fuse:") == 0;
    if (fuse && RunProgram(force ? std::vector<std::string>{"fusermount3", "-u", "-z", entity.mountPoint}
                                 : std::vector<std::string>{"fusermount3", "-u", entity.mountPoint},
                           failure))
        return true;
    if (fuse && geteuid() != 0)
        return false;
    return RunProgram(force ? std::vector<std::string>{"umount", "-l", entity.mountPoint}
                            : std::vector<std::string>{"umount", entity.mountPoint},
                      failure);
}

// The length of the UTF-8 sequence at text[i], or 0 when it is malformed.
size_t UTF8SequenceLength(const std::string &text, size_t i)
{
    const unsigned char c = static_cast<unsigned char>(text[i]);
    size_t length = c < 0x80 ? 1 : (c >> 5) == 0x6 ? 2 : (c >> 4) == 0xE ? 3 : (c >> 3) == 0x1E ? 4 : 0;
    if (length == 0 || i + length > text.size() || c == 0xC0 || c == 0xC1 || c > 0xF4)
        return 0;
    for (size_t k = 1; k < length; ++k) {
        if ((static_cast<unsigned char>(text[i + k]) & 0xC0) != 0x80)
            return 0;
    }
    return length;
}

// Property-list text: markup characters escaped, and what XML cannot carry
// (bytes that are not UTF-8, control characters) shown as U+FFFD.
std::string XMLText(const std::string &text)
{
    std::string out;
    for (size_t i = 0; i < text.size();) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        const size_t length = UTF8SequenceLength(text, i);
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (length == 0 || (c < 0x20 && c != '\t' && c != '\n' && c != '\r'))
            out += "\xEF\xBF\xBD";
        else
            out.append(text, i, length);
        i += length == 0 ? 1 : length;
    }
    return out;
}

void PrintKeyString(std::ostream &out, const std::string &indent, const char *key, const std::string &value)
{
    out << indent << "<key>" << key << "</key>\n" << indent << "<string>" << XMLText(value) << "</string>\n";
}

void PrintEntities(std::ostream &out, const std::string &indent, const AttachedImage &image)
{
    out << indent << "<key>system-entities</key>\n" << indent << "<array>\n";
    for (const SystemEntity &entity : image.systemEntities) {
        out << indent << "\t<dict>\n";
        PrintKeyString(out, indent + "\t\t", "content-hint", entity.contentHint);
        PrintKeyString(out, indent + "\t\t", "dev-entry", entity.devEntry);
        PrintKeyString(out, indent + "\t\t", "mount-point", entity.mountPoint);
        out << indent << "\t</dict>\n";
    }
    out << indent << "</array>\n";
}

void PrintPropertyListHead(std::ostream &out)
{
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
        << "<plist version=\"1.0\">\n<dict>\n";
}

} // namespace

std::string AbsolutePath(const std::string &path)
{
    if (path.empty())
        return "";
    std::string full = path;
    if (path[0] != '/') {
        char cwd[PATH_MAX];
        if (getcwd(cwd, sizeof cwd) == nullptr)
            return "";
        full = std::string(cwd) + "/" + path;
    }
    std::vector<std::string> parts;
    std::string::size_type start = 0;
    while (start <= full.size()) {
        std::string::size_type slash = full.find('/', start);
        if (slash == std::string::npos)
            slash = full.size();
        const std::string part = full.substr(start, slash - start);
        if (part == "..") {
            if (!parts.empty())
                parts.pop_back();
        } else if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
        start = slash + 1;
    }
    std::string out;
    for (const std::string &part : parts)
        out += "/" + part;
    return out.empty() ? "/" : out;
}

std::vector<AttachedImage> ListAttachedImages()
{
    std::vector<AttachedImage> images;
    std::vector<MountEntry> table;
    filemanager::ReadMountTable(table);
    for (const MountEntry &entry : table) {
        std::string imagePath, devEntry;
        if (!EntryOfImage(entry, imagePath, devEntry))
            continue;
        AttachedImage *image = const_cast<AttachedImage *>(FindImage(images, imagePath));
        if (image == nullptr) {
            images.push_back({imagePath, ImageType(imagePath), {}});
            image = &images.back();
        }
        image->systemEntities.push_back({devEntry, kContentHint, entry.mountPoint});
    }
    return images;
}

bool CreateImage(const std::string &folder, const std::string &image, bool overwrite, Failure &failure)
{
    const std::string source = AbsolutePath(folder);
    const std::string target = AbsolutePath(image);
    if (source.empty() || target.empty()) {
        failure.reason = "no source folder or image given";
        return false;
    }
    if (!IsDirectory(source)) {
        failure.reason = source + ": no such folder";
        return false;
    }
    struct stat info;
    if (lstat(target.c_str(), &info) == 0) {
        if (S_ISDIR(info.st_mode)) {
            failure.reason = target + ": is a folder";
            return false;
        }
        if (!overwrite) {
            failure.reason = target + ": file exists (-ov replaces it)";
            return false;
        }
    }
    // The new image is written beside the old one and renamed over it.
    std::string pattern = target + ".koru-XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    int fd = mkstemp(buffer.data());
    if (fd < 0) {
        failure.reason = target + ": " + ErrorText(errno);
        return false;
    }
    close(fd);
    const std::string temporary = buffer.data();
    if (!RunProgram({"mksquashfs", source, temporary, "-comp", "zstd", "-noappend"}, failure)) {
        unlink(temporary.c_str());
        return false;
    }
    const mode_t mask = umask(0);
    umask(mask);
    chmod(temporary.c_str(), 0666 & ~mask);
    int renamed = overwrite ? rename(temporary.c_str(), target.c_str())
                            : renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE);
    if (renamed != 0) {
        failure.reason = target + ": " + ErrorText(errno);
        unlink(temporary.c_str());
        return false;
    }
    return true;
}

bool AttachImage(const std::string &image, const AttachOptions &options, AttachedImage &attached, Failure &failure)
{
    const std::string path = AbsolutePath(image);
    struct stat info;
    if (path.empty() || stat(path.c_str(), &info) != 0) {
        failure.reason = (path.empty() ? std::string("no image given") : path + ": " + ErrorText(errno));
        return false;
    }
    int error = 0;
    if (!S_ISREG(info.st_mode) || SquashfsCompression(path, error).empty()) {
        failure.reason = path + ": " + (error != 0 ? ErrorText(error) : std::string("image not recognized"));
        return false;
    }
    const std::vector<AttachedImage> before = ListAttachedImages();
    if (const AttachedImage *known = FindImage(before, path)) {
        attached = *known;
        return true;
    }

    bool created = options.mountPoint.empty(); // a folder of our own is always new
    std::string folder = options.mountPoint.empty() ? MakeMountFolder(path, failure)
                                                    : PrepareMountPoint(options.mountPoint, created, failure);
    if (folder.empty())
        return false;
    // The kernel lists mount points with links resolved.
    const std::string mountPoint = RealPath(folder);
    bool mounted = !mountPoint.empty() &&
                   RunProgram({"squashfuse", "-o", "fsname=" + EscapeMountOption(path) + ",subtype=koru", path,
                               mountPoint},
                              failure);
    if (mounted) {
        const std::vector<AttachedImage> after = ListAttachedImages();
        const AttachedImage *found = FindImage(after, path);
        mounted = false;
        for (size_t i = 0; found != nullptr && i < found->systemEntities.size(); ++i)
            mounted = mounted || found->systemEntities[i].mountPoint == mountPoint;
        if (mounted)
            attached = *found;
        else
            failure.reason = path + ": the image did not show up in the mount table";
    }
    if (!mounted && created)
        rmdir(folder.c_str());
    return mounted;
}

bool DetachImage(const std::string &target, bool force, std::string &detached, Failure &failure)
{
    const std::string path = AbsolutePath(target);
    const std::string resolved = RealPath(path);
    const std::vector<AttachedImage> images = ListAttachedImages();
    const AttachedImage *match = nullptr;
    for (const AttachedImage &image : images) {
        for (const SystemEntity &entity : image.systemEntities) {
            if (entity.devEntry == target || entity.mountPoint == path ||
                (!resolved.empty() && entity.mountPoint == resolved)) {
                match = &image;
                detached = entity.devEntry;
            }
        }
    }
    if (match == nullptr || target.empty()) {
        failure.reason = target + ": not an attached image";
        return false;
    }
    const std::string temporary = TemporaryFolder();
    bool done = true;
    for (const SystemEntity &entity : match->systemEntities) {
        if (!Unmount(entity, force, failure)) {
            done = false;
            continue;
        }
        if (!temporary.empty() && ParentFolder(entity.mountPoint) == temporary)
            rmdir(entity.mountPoint.c_str());
    }
    return done;
}

void PrintEntityLines(std::ostream &out, const AttachedImage &image)
{
    for (const SystemEntity &entity : image.systemEntities)
        out << entity.devEntry << '\t' << entity.contentHint << '\t' << entity.mountPoint << '\n';
}

void PrintImagesPropertyList(std::ostream &out, const std::vector<AttachedImage> &images)
{
    PrintPropertyListHead(out);
    out << "\t<key>framework</key>\n\t<string>koru</string>\n";
    out << "\t<key>images</key>\n\t<array>\n";
    for (const AttachedImage &image : images) {
        out << "\t\t<dict>\n";
        PrintKeyString(out, "\t\t\t", "image-path", image.imagePath);
        PrintKeyString(out, "\t\t\t", "image-type", image.imageType);
        PrintEntities(out, "\t\t\t", image);
        out << "\t\t</dict>\n";
    }
    out << "\t</array>\n</dict>\n</plist>\n";
}

void PrintEntitiesPropertyList(std::ostream &out, const AttachedImage &image)
{
    PrintPropertyListHead(out);
    PrintEntities(out, "\t", image);
    out << "</dict>\n</plist>\n";
}

void PrintImagesText(std::ostream &out, const std::vector<AttachedImage> &images)
{
    out << "framework       : koru\n";
    out << "driver          : squashfuse\n";
    for (const AttachedImage &image : images) {
        out << "================================================\n";
        out << "image-path      : " << image.imagePath << '\n';
        out << "image-type      : " << image.imageType << '\n';
        PrintEntityLines(out, image);
    }
}

} // namespace diskimage
