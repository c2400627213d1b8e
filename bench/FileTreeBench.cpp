/* Listing and deleting 100 000 files: file_utils::EnumFilesInFolder against
 * find, and recursive file_utils::DeleteDir against rm -r.
 *
 * Listing: one folder of 100 000 files, half of them ".txt"; the toolkit
 * collects the names ending in ".txt" (ignoring case), find prints them
 * (-maxdepth 1 -iname '*.txt') into a pipe that is counted.  Deleting: a tree
 * of 100 folders of 1 000 files each, made afresh for every run.  Each side
 * runs three times and its best run counts; the ratio is toolkit / tool
 * (below 1 means the toolkit is faster).  The trees live in $TMPDIR (or
 * /tmp) and are removed afterwards. */
#include <KORU/FileUtils.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kFolders = 100;
constexpr int kFilesPerFolder = 1000;
constexpr int kFiles = kFolders * kFilesPerFolder;
constexpr int kRuns = 3;

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

bool MakeFile(const std::string &path)
{
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0)
        return false;
    close(fd);
    return true;
}

// One folder of kFiles files, every other one ".txt".
bool MakeFlatFolder(const std::string &root)
{
    if (mkdir(root.c_str(), 0755) != 0)
        return false;
    for (int k = 0; k < kFiles; ++k)
        if (!MakeFile(root + "/file" + std::to_string(k) + (k % 2 ? ".TXT" : ".dat")))
            return false;
    return true;
}

bool MakeTree(const std::string &root)
{
    if (mkdir(root.c_str(), 0755) != 0)
        return false;
    for (int folder = 0; folder < kFolders; ++folder) {
        const std::string path = root + "/folder" + std::to_string(folder);
        if (mkdir(path.c_str(), 0755) != 0)
            return false;
        for (int k = 0; k < kFilesPerFolder; ++k)
            if (!MakeFile(path + "/file" + std::to_string(k)))
                return false;
    }
    return true;
}

TFileLocationInfo FolderLocation(const std::string &path)
{
    TFileLocationInfo location;
    location.kind = TFileLocationInfo::kLocationPath;
    location.path = path.c_str();
    location.path += L'/';
    return location;
}

long CountLines(const std::string &command)
{
    FILE *pipe = popen(command.c_str(), "r");
    if (!pipe)
        return -1;
    long lines = 0;
    char buffer[65536];
    size_t count;
    while ((count = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
        for (size_t k = 0; k < count; ++k)
            lines += buffer[k] == '\n';
    return pclose(pipe) == 0 ? lines : -1;
}

void Report(const char *what, double toolkit, const char *tool, double other)
{
    std::printf("%-34s toolkit %8.3f s   %-6s %8.3f s   ratio %.2f\n", what, toolkit, tool, other,
                toolkit / other);
}

} // namespace

int main()
{
    const char *base = std::getenv("TMPDIR");
    std::string scratch = std::string(base && *base ? base : "/tmp") + "/koru-filetree-XXXXXX";
    if (!mkdtemp(scratch.data())) {
        std::perror("mkdtemp");
        return 1;
    }
    std::printf("Trees of %d files in %s\n", kFiles, scratch.c_str());
    bool ok = true;

    // Listing.
    const std::string flat = scratch + "/flat";
    if (!MakeFlatFolder(flat)) {
        std::fprintf(stderr, "could not make %s\n", flat.c_str());
        return 1;
    }
    const std::string findCommand = "find '" + flat + "' -maxdepth 1 -iname '*.txt'";
    double bestEnum = 1e9, bestFind = 1e9;
    for (int run = 0; run < kRuns; ++run) {
        std::vector<CStr<wchar_t>> names;
        auto start = Clock::now();
        ok = file_utils::EnumFilesInFolder(L"txt", FolderLocation(flat), names) && ok;
        bestEnum = std::min(bestEnum, SecondsSince(start));
        ok = names.size() == kFiles / 2 && ok;

        start = Clock::now();
        const long found = CountLines(findCommand);
        bestFind = std::min(bestFind, SecondsSince(start));
        ok = found == kFiles / 2 && ok;
    }
    Report("EnumFilesInFolder (100 000 files)", bestEnum, "find", bestFind);
    std::system(("rm -rf '" + flat + "'").c_str());

    // Deleting.
    double bestDelete = 1e9, bestRm = 1e9;
    for (int run = 0; run < kRuns && ok; ++run) {
        const std::string mine = scratch + "/tree" + std::to_string(run);
        const std::string theirs = scratch + "/rm" + std::to_string(run);
        if (!MakeTree(mine) || !MakeTree(theirs)) {
            std::fprintf(stderr, "could not make the trees\n");
            ok = false;
            break;
        }
        sync();
        auto start = Clock::now();
        ok = file_utils::DeleteDir(FolderLocation(mine), true) && ok;
        bestDelete = std::min(bestDelete, SecondsSince(start));

        start = Clock::now();
        ok = std::system(("rm -r '" + theirs + "'").c_str()) == 0 && ok;
        bestRm = std::min(bestRm, SecondsSince(start));
        struct stat st;
        ok = lstat(mine.c_str(), &st) != 0 && lstat(theirs.c_str(), &st) != 0 && ok;
    }
    if (ok)
        Report("DeleteDir recursive (100 000 files)", bestDelete, "rm -r", bestRm);

    std::system(("rm -rf '" + scratch + "'").c_str());
    if (!ok)
        std::fprintf(stderr, "a run failed\n");
    return ok ? 0 : 1;
}
