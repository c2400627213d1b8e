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

#endif
