// user-dirs.dirs from outside data: the file is written into a private
// configuration folder and the Desktop and Documents folders are looked up
// (never created, whatever path the file names).
#include <CoreServices/CoreServices.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

// A private HOME and XDG_CONFIG_HOME, made once per process.
const std::string &ConfigFile()
{
    static const std::string file = [] {
        char pattern[] = "/tmp/UserDirsFuzz.XXXXXX";
        std::string root = mkdtemp(pattern) ? pattern : "/tmp";
        setenv("HOME", root.c_str(), 1);
        setenv("XDG_CONFIG_HOME", root.c_str(), 1);
        return root + "/user-dirs.dirs";
    }();
    return file;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FILE *file = std::fopen(ConfigFile().c_str(), "wb");
    if (file == nullptr)
        return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);
    char path[1024];
    for (OSType type : {OSType(kDesktopFolderType), OSType(kDocumentsFolderType)}) {
        (void)FSFindFolderGetPath(kUserDomain, type, kDontCreateFolder, path, sizeof path);
        (void)FSFindFolderGetPath(kUserDomain, type, kDontCreateFolder, path, 8); // too small
    }
    return 0;
}
