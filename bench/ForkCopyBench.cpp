/* Copying a file with both forks: FSCopyFile against cp --preserve=all of
 * the file and its AppleDouble companion.
 *
 * The source is a file of 1 GiB (or the size in MiB given as the first
 * argument) with a resource fork of 1 MiB and Finder information, in $TMPDIR
 * (or /tmp).  Each side copies it into a fresh folder three times, the sides
 * taking turns, and its best run counts; the source's pages are in the cache
 * for both.  The ratio is
 * toolkit / tool (below 1 means the toolkit is faster).  Everything is
 * removed afterwards. */
#include <KORU/FSUtilities.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kRuns = 3;

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

bool MakeSource(const std::string &path, long long bytes)
{
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0)
        return false;
    std::vector<char> block(1 << 20);
    for (size_t k = 0; k < block.size(); ++k)
        block[k] = static_cast<char>(k * 2654435761u >> 24);
    bool ok = true;
    for (long long written = 0; ok && written < bytes; written += static_cast<long long>(block.size()))
        ok = write(fd, block.data(), block.size()) == static_cast<ssize_t>(block.size());
    close(fd);
    if (!ok)
        return false;

    FSRef ref;
    if (FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), &ref, nullptr) != noErr)
        return false;
    HFSUniStr255 resource;
    FSGetResourceForkName(&resource);
    CFDataRef fork = CFDataCreate(nullptr, reinterpret_cast<const UInt8 *>(block.data()), static_cast<CFIndex>(block.size()));
    ok = FSWriteFileFork(&ref, &resource, fork);
    CFRelease(fork);
    FSCatalogInfo info{};
    FileInfo finder{};
    finder.fileType = 0x54455854;
    finder.fileCreator = 0x4B4F5255;
    std::memcpy(info.finderInfo, &finder, sizeof finder);
    return ok && FSSetCatalogInfo(&ref, kFSCatInfoFinderInfo, &info) == noErr;
}

int Run(const std::vector<std::string> &command)
{
    const pid_t child = fork();
    if (child == 0) {
        std::vector<char *> argv;
        for (const std::string &word : command)
            argv.push_back(const_cast<char *>(word.c_str()));
        argv.push_back(nullptr);
        execvp(argv[0], argv.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void RemoveTree(const std::string &path)
{
    Run({"rm", "-rf", path});
}

// One timed copy with FSCopyFile into a fresh folder.
double TimeToolkit(const std::string &root, const FSRef &source)
{
    double best = 1e9;
    {
        const std::string folder = root + "/toolkit";
        RemoveTree(folder);
        mkdir(folder.c_str(), 0755);
        sync();
        FSRef destination, copy;
        FSPathMakeRef(reinterpret_cast<const UInt8 *>(folder.c_str()), &destination, nullptr);
        const Clock::time_point start = Clock::now();
        if (!FSCopyFile(&source, &destination, CFSTR("copy"), &copy)) {
            std::fprintf(stderr, "FSCopyFile failed\n");
            return -1;
        }
        best = std::min(best, SecondsSince(start));
    }
    return best;
}

// One timed copy with cp of the file and its companion into a fresh folder.
double TimeTool(const std::string &root, const std::string &source)
{
    double best = 1e9;
    {
        const std::string folder = root + "/tool";
        RemoveTree(folder);
        mkdir(folder.c_str(), 0755);
        sync();
        const std::string companion = source.substr(0, source.rfind('/') + 1) + "._" +
                                      source.substr(source.rfind('/') + 1);
        const Clock::time_point start = Clock::now();
        if (Run({"cp", "--preserve=all", source, folder + "/copy"}) != 0 ||
            Run({"cp", "--preserve=all", companion, folder + "/._copy"}) != 0) {
            std::fprintf(stderr, "cp failed\n");
            return -1;
        }
        best = std::min(best, SecondsSince(start));
    }
    return best;
}

} // namespace

int main(int argc, char **argv)
{
    const long long mebibytes = argc > 1 ? std::atoll(argv[1]) : 1024;
    const char *temporary = getenv("TMPDIR");
    std::string root = std::string(temporary && *temporary ? temporary : "/tmp") + "/koru-forkcopy-XXXXXX";
    if (!mkdtemp(&root[0])) {
        std::perror("mkdtemp");
        return 1;
    }
    const std::string source = root + "/source";
    if (!MakeSource(source, mebibytes << 20)) {
        std::fprintf(stderr, "could not make the source\n");
        RemoveTree(root);
        return 1;
    }
    FSRef sourceRef;
    FSPathMakeRef(reinterpret_cast<const UInt8 *>(source.c_str()), &sourceRef, nullptr);

    // The runs alternate, so that a busy moment of the machine does not fall
    // on one side only; the best run of each side counts.
    double tool = 1e9, toolkit = 1e9;
    for (int run = 0; run < kRuns; ++run) {
        tool = std::min(tool, TimeTool(root, source));
        toolkit = std::min(toolkit, TimeToolkit(root, sourceRef));
    }
    RemoveTree(root);
    if (tool <= 0 || toolkit <= 0)
        return 1;
    std::printf("Copy of a %lld MiB file with both forks\n", mebibytes);
    std::printf("  FSCopyFile              %8.3f s\n", toolkit);
    std::printf("  cp --preserve=all (x2)  %8.3f s\n", tool);
    std::printf("  ratio                   %8.2f (goal <= 1.2)\n", toolkit / tool);
    return 0;
}
