/* Real folders for the file tests: a fresh temporary folder per test,
 * removed with everything in it afterwards, and small helpers to make and
 * inspect files there. */
#ifndef KORU_TESTS_FILETESTSUPPORT_H
#define KORU_TESTS_FILETESTSUPPORT_H

#include <CoreServices/Files.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <fstream>
#include <ftw.h>
#include <map>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

class TemporaryFolder {
public:
    explicit TemporaryFolder(const char *base = "/tmp")
    {
        std::string pattern = std::string(base) + "/koru-test-XXXXXX";
        std::vector<char> buffer(pattern.begin(), pattern.end());
        buffer.push_back(0);
        if (mkdtemp(buffer.data())) {
            char *real = realpath(buffer.data(), nullptr);
            mPath = real ? real : "";
            std::free(real);
        }
    }
    ~TemporaryFolder()
    {
        if (!mPath.empty())
            nftw(mPath.c_str(), RemoveEntry, 16, FTW_DEPTH | FTW_PHYS);
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    const std::string &Path() const { return mPath; }
    std::string operator/(const std::string &name) const { return mPath + "/" + name; }

private:
    static int RemoveEntry(const char *path, const struct stat *, int, struct FTW *)
    {
        ::remove(path);
        return 0;
    }
    std::string mPath;
};

inline void WriteFile(const std::string &path, const std::string &contents)
{
    std::ofstream(path, std::ios::binary) << contents;
}

inline std::string ReadFile(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream contents;
    contents << in.rdbuf();
    return contents.str();
}

inline bool Exists(const std::string &path)
{
    struct stat st;
    return lstat(path.c_str(), &st) == 0;
}

inline ino_t InodeOf(const std::string &path)
{
    struct stat st;
    return lstat(path.c_str(), &st) == 0 ? st.st_ino : 0;
}

/* The ref of path (following links as FSPathMakeRef does); zeroed when missing. */
inline FSRef RefAt(const std::string &path)
{
    FSRef ref;
    FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), &ref, nullptr);
    return ref;
}

/* The path of ref, or "" when it does not resolve. */
inline std::string PathOf(const FSRef &ref)
{
    UInt8 path[PATH_MAX];
    return FSRefMakePath(&ref, path, sizeof path) == noErr ? reinterpret_cast<char *>(path) : "";
}

/* The UTF-16 units of a u"" literal, as the ...Unicode calls take names. */
inline std::vector<UniChar> Units(const std::u16string &text)
{
    return std::vector<UniChar>(text.begin(), text.end());
}

/* The ref of the link itself when path is a symbolic link. */
inline FSRef LinkRefAt(const std::string &path)
{
    FSRef ref;
    FSPathMakeRefWithOptions(reinterpret_cast<const UInt8 *>(path.c_str()), kFSPathMakeRefDoNotFollowLeafSymlink,
                             &ref, nullptr);
    return ref;
}

/* Big-endian fields, as AppleDouble images and resource forks hold them. */
inline UInt32 ReadBE32(const std::string &b, size_t at)
{
    return (UInt32(UInt8(b[at])) << 24) | (UInt32(UInt8(b[at + 1])) << 16) | (UInt32(UInt8(b[at + 2])) << 8) |
           UInt32(UInt8(b[at + 3]));
}
inline UInt16 ReadBE16(const std::string &b, size_t at)
{
    return static_cast<UInt16>((UInt8(b[at]) << 8) | UInt8(b[at + 1]));
}
inline void AppendBE32(std::string &b, UInt32 v)
{
    for (int s = 24; s >= 0; s -= 8)
        b += static_cast<char>(v >> s);
}
inline void AppendBE16(std::string &b, UInt16 v)
{
    b += static_cast<char>(v >> 8);
    b += static_cast<char>(v);
}

/* An AppleDouble image: the 16-byte filler, then the entries in order. */
inline std::string AppleDoubleImage(const std::string &filler,
                                    const std::vector<std::pair<UInt32, std::string>> &entries)
{
    std::string image, body;
    AppendBE32(image, 0x00051607);
    AppendBE32(image, 0x00020000);
    image += (filler + std::string(16, ' ')).substr(0, 16);
    AppendBE16(image, static_cast<UInt16>(entries.size()));
    UInt32 offset = static_cast<UInt32>(26 + 12 * entries.size());
    for (const auto &[id, bytes] : entries) {
        AppendBE32(image, id);
        AppendBE32(image, offset);
        AppendBE32(image, static_cast<UInt32>(bytes.size()));
        offset += static_cast<UInt32>(bytes.size());
        body += bytes;
    }
    return image + body;
}

/* The entries of an AppleDouble image by id; empty when it is not one. */
inline std::map<UInt32, std::string> CompanionEntries(const std::string &image)
{
    std::map<UInt32, std::string> entries;
    if (image.size() < 26 || ReadBE32(image, 0) != 0x00051607 || ReadBE32(image, 4) != 0x00020000)
        return entries;
    for (size_t k = 0; k < ReadBE16(image, 24) && 26 + k * 12 + 12 <= image.size(); ++k) {
        const UInt32 offset = ReadBE32(image, 30 + k * 12), length = ReadBE32(image, 34 + k * 12);
        if (size_t(offset) + length <= image.size())
            entries[ReadBE32(image, 26 + k * 12)] = image.substr(offset, length);
    }
    return entries;
}

#endif
