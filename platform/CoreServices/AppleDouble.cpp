#include "AppleDouble.h"

#include "FileRef.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace filemanager {

namespace {

constexpr UInt32 kMagic = 0x00051607;
constexpr UInt32 kVersion = 0x00020000;
constexpr UInt32 kResourceForkEntry = 2;
constexpr UInt32 kFinderInfoEntry = 9;
constexpr size_t kHeaderLength = 26; // magic, version, 16 filler bytes, entry count
constexpr size_t kEntryLength = 12;  // id, offset, length

UInt32 BigEndian32(const std::string &image, size_t at)
{
    const auto *p = reinterpret_cast<const unsigned char *>(image.data() + at);
    return (UInt32(p[0]) << 24) | (UInt32(p[1]) << 16) | (UInt32(p[2]) << 8) | UInt32(p[3]);
}

void AppendBigEndian32(std::string &image, UInt32 value)
{
    image += static_cast<char>(value >> 24);
    image += static_cast<char>(value >> 16);
    image += static_cast<char>(value >> 8);
    image += static_cast<char>(value);
}

bool ReadWholeFile(const std::string &path, std::string &contents)
{
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0)
        return false;
    contents.clear();
    char block[65536];
    ssize_t count;
    while ((count = read(fd, block, sizeof block)) > 0)
        contents.append(block, static_cast<size_t>(count));
    close(fd);
    return count == 0;
}

bool ReadAttribute(const std::string &path, const char *name, std::string &value)
{
    const ssize_t length = lgetxattr(path.c_str(), name, nullptr, 0);
    if (length < 0)
        return false;
    value.resize(static_cast<size_t>(length));
    const ssize_t read = lgetxattr(path.c_str(), name, value.data(), value.size());
    if (read < 0)
        return false;
    value.resize(static_cast<size_t>(read));
    return true;
}

// True when a Mac's attribute header in the tail lists at least one
// attribute ("ATTR", then the count 34 bytes further on).
bool TailHoldsAttributes(const std::string &tail)
{
    const size_t magic = tail.find("ATTR");
    if (magic == std::string::npos || magic > 4 || tail.size() < magic + 36)
        return false;
    return tail[magic + 34] != 0 || tail[magic + 35] != 0;
}

bool AllZero(const UInt8 *bytes, size_t count)
{
    for (size_t k = 0; k < count; ++k)
        if (bytes[k])
            return false;
    return true;
}

} // namespace

bool AppleDoubleFile::Parse(const std::string &image, AppleDoubleData &data)
{
    data = AppleDoubleData();
    if (image.size() < kHeaderLength || BigEndian32(image, 0) != kMagic ||
        BigEndian32(image, 4) != kVersion)
        return false;
    const auto *p = reinterpret_cast<const unsigned char *>(image.data());
    const size_t entries = (size_t(p[24]) << 8) | p[25];
    if (image.size() < kHeaderLength + entries * kEntryLength)
        return false;
    for (size_t k = 0; k < entries; ++k) {
        const size_t at = kHeaderLength + k * kEntryLength;
        const UInt32 id = BigEndian32(image, at);
        const size_t offset = BigEndian32(image, at + 4), length = BigEndian32(image, at + 8);
        if (offset > image.size() || length > image.size() - offset)
            continue; // a damaged entry is ignored, the rest still count
        if (id == kFinderInfoEntry) {
            // A Mac writes more than 32 bytes here (extended attributes follow).
            std::memcpy(data.finderInfo, image.data() + offset, std::min<size_t>(length, 32));
            if (length > 32)
                data.finderInfoTail.assign(image, offset + 32, length - 32);
            data.hasFinderInfo = true;
        } else if (id == kResourceForkEntry) {
            data.resourceFork.assign(image, offset, length);
            data.hasResourceFork = true;
        }
    }
    return true;
}

std::string AppleDoubleFile::Build(const AppleDoubleData &data)
{
    // A Mac's attributes in the tail count their offsets from the start of
    // the companion, so the tail keeps both entries (the resource fork's
    // possibly empty) and Finder information first, where a Mac puts them.
    const bool macLayout = data.hasFinderInfo && !data.finderInfoTail.empty();
    const bool resourceEntry = data.hasResourceFork || macLayout;
    const size_t entries = (data.hasFinderInfo ? 1 : 0) + (resourceEntry ? 1 : 0);
    std::string image;
    AppendBigEndian32(image, kMagic);
    AppendBigEndian32(image, kVersion);
    image.append("Mac OS X        ", 16);
    image += static_cast<char>(entries >> 8);
    image += static_cast<char>(entries);
    UInt32 offset = static_cast<UInt32>(kHeaderLength + entries * kEntryLength);
    if (data.hasFinderInfo) {
        const UInt32 length = static_cast<UInt32>(32 + data.finderInfoTail.size());
        AppendBigEndian32(image, kFinderInfoEntry);
        AppendBigEndian32(image, offset);
        AppendBigEndian32(image, length);
        offset += length;
    }
    if (resourceEntry) {
        AppendBigEndian32(image, kResourceForkEntry);
        AppendBigEndian32(image, offset);
        AppendBigEndian32(image, static_cast<UInt32>(data.resourceFork.size()));
    }
    if (data.hasFinderInfo) {
        image.append(reinterpret_cast<const char *>(data.finderInfo), 32);
        image += data.finderInfoTail;
    }
    if (data.hasResourceFork)
        image += data.resourceFork;
    return image;
}

AppleDoubleData AppleDoubleFile::Read(const std::string &itemPath)
{
    AppleDoubleData data;
    std::string image;
    if (ReadWholeFile(CompanionPath(itemPath), image)) {
        Parse(image, data);
        return data;
    }
    if (ReadAttribute(itemPath, "user.org.netatalk.Metadata", image))
        Parse(image, data);
    if (ReadAttribute(itemPath, "user.org.netatalk.ResourceFork", data.resourceFork))
        data.hasResourceFork = true;
    return data;
}

UInt64 AppleDoubleFile::ResourceForkLength(const std::string &itemPath)
{
    const std::string companion = CompanionPath(itemPath);
    const int fd = open(companion.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0) {
        if (errno != ENOENT)
            return 0;
        const ssize_t length = lgetxattr(itemPath.c_str(), "user.org.netatalk.ResourceFork", nullptr, 0);
        return length > 0 ? static_cast<UInt64>(length) : 0;
    }
    // Only the entry table is read: the fork itself may be large.  The entry
    // is checked against the companion's size as Parse checks it.
    std::string head(kHeaderLength + 16 * kEntryLength, '\0');
    const ssize_t got = pread(fd, &head[0], head.size(), 0);
    struct stat st;
    const bool sized = fstat(fd, &st) == 0;
    close(fd);
    if (got < static_cast<ssize_t>(kHeaderLength) || !sized)
        return 0;
    head.resize(static_cast<size_t>(got));
    if (BigEndian32(head, 0) != kMagic || BigEndian32(head, 4) != kVersion)
        return 0;
    const size_t entries = (size_t(static_cast<unsigned char>(head[24])) << 8) | static_cast<unsigned char>(head[25]);
    if (entries > 16)
        return Read(itemPath).resourceFork.size(); // an unusual companion: read it whole
    UInt64 length = 0;
    for (size_t k = 0; k < entries && kHeaderLength + (k + 1) * kEntryLength <= head.size(); ++k) {
        const size_t at = kHeaderLength + k * kEntryLength;
        const UInt64 offset = BigEndian32(head, at + 4), size = BigEndian32(head, at + 8);
        if (BigEndian32(head, at) == kResourceForkEntry && offset <= UInt64(st.st_size) &&
            size <= UInt64(st.st_size) - offset)
            length = size;
    }
    return length;
}

int AppleDoubleFile::Write(const std::string &itemPath, const AppleDoubleData &data)
{
    const std::string companion = CompanionPath(itemPath);
    if (companion.empty())
        return EINVAL;
    const bool keepFinderInfo =
        data.hasFinderInfo && (!AllZero(data.finderInfo, 32) || TailHoldsAttributes(data.finderInfoTail));
    const bool keepResourceFork = data.hasResourceFork && !data.resourceFork.empty();
    if (!keepFinderInfo && !keepResourceFork)
        return unlink(companion.c_str()) == 0 || errno == ENOENT ? 0 : errno;
    AppleDoubleData stored = data;
    stored.hasFinderInfo = keepFinderInfo;
    stored.hasResourceFork = keepResourceFork;
    const std::string image = Build(stored);
    // Write beside the companion and rename over it, so that a failed write
    // never leaves a half companion that loses the old one.
    const std::string temporary = companion + ".koru-" + std::to_string(getpid());
    const int fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0666);
    if (fd < 0)
        return errno;
    size_t written = 0;
    while (written < image.size()) {
        const ssize_t count = write(fd, image.data() + written, image.size() - written);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        written += static_cast<size_t>(count);
    }
    int error = written == image.size() ? 0 : (errno ? errno : EIO);
    if (close(fd) != 0 && error == 0)
        error = errno;
    if (error == 0 && rename(temporary.c_str(), companion.c_str()) != 0)
        error = errno;
    if (error != 0)
        unlink(temporary.c_str());
    return error;
}

} // namespace filemanager
