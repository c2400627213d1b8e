/* Memory of the FSRef path table over a long walk.
 *
 * A tree of 100 folders of 100 files is walked 100 times with the folder
 * iterator, one FSRef per item: 1 000 000 refs over 10 000 paths.  The
 * process's resident memory is printed after the first walk and after the
 * last; identical paths share one table entry, so it stays flat.  Then
 * 100 000 distinct paths (one file renamed again and again, a ref made after
 * each rename) show what each new path costs: the table keeps every distinct
 * path for the life of the process, since an FSRef is plain data that no
 * one releases. */
#include <CoreServices/CoreServices.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kFolders = 100;
constexpr int kFilesPerFolder = 100;
constexpr int kWalks = 100;
constexpr int kDistinctPaths = 100000;

long ResidentKiB()
{
    long pages = 0, resident = 0;
    FILE *statm = std::fopen("/proc/self/statm", "r");
    if (statm != nullptr) {
        if (std::fscanf(statm, "%ld %ld", &pages, &resident) != 2)
            resident = 0;
        std::fclose(statm);
    }
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

bool MakeTree(const std::string &root)
{
    for (int f = 0; f < kFolders; ++f) {
        const std::string folder = root + "/folder" + std::to_string(f);
        if (mkdir(folder.c_str(), 0755) != 0)
            return false;
        for (int k = 0; k < kFilesPerFolder; ++k) {
            FILE *file = std::fopen((folder + "/file" + std::to_string(k)).c_str(), "w");
            if (file == nullptr)
                return false;
            std::fclose(file);
        }
    }
    return true;
}

// Every item below the folder, one ref each; the count of refs made.
long Walk(const FSRef &folder)
{
    FSIterator iterator;
    if (FSOpenIterator(&folder, kFSIterateFlat, &iterator) != noErr)
        return 0;
    long refs = 0;
    ItemCount count;
    FSRef child;
    FSCatalogInfo info;
    while (FSGetCatalogInfoBulk(iterator, 1, &count, nullptr, kFSCatInfoNodeFlags, &info, &child, nullptr,
                                nullptr) == noErr) {
        ++refs;
        if (info.nodeFlags & kFSNodeIsDirectoryMask)
            refs += Walk(child);
    }
    FSCloseIterator(iterator);
    return refs;
}

} // namespace

int main()
{
    const char *base = std::getenv("TMPDIR");
    std::string root = std::string(base && *base ? base : "/tmp") + "/koru-pathtable-XXXXXX";
    if (!mkdtemp(root.data()) || !MakeTree(root)) {
        std::perror("making the tree");
        return 1;
    }
    FSRef top;
    if (FSPathMakeRef(reinterpret_cast<const UInt8 *>(root.c_str()), &top, nullptr) != noErr)
        return 1;

    const long before = ResidentKiB();
    long refs = Walk(top);
    const long afterFirst = ResidentKiB();
    for (int walk = 1; walk < kWalks; ++walk)
        refs += Walk(top);
    const long afterAll = ResidentKiB();
    std::printf("Walks of %d paths: %ld refs\n", kFolders * (kFilesPerFolder + 1), refs);
    std::printf("resident memory: before %ld KiB, after the first walk %ld KiB, after all %d walks %ld KiB\n",
                before, afterFirst, kWalks, afterAll);
    std::printf("growth over walks 2..%d: %ld KiB (identical paths share one entry)\n", kWalks,
                afterAll - afterFirst);

    const std::string a = root + "/renamed-a";
    std::fclose(std::fopen(a.c_str(), "w"));
    std::string current = a;
    const long beforeDistinct = ResidentKiB();
    for (int k = 0; k < kDistinctPaths; ++k) {
        const std::string next = root + "/distinct-name-" + std::to_string(k);
        FSRef ref;
        if (rename(current.c_str(), next.c_str()) != 0 ||
            FSPathMakeRef(reinterpret_cast<const UInt8 *>(next.c_str()), &ref, nullptr) != noErr)
            return 1;
        current = next;
    }
    const long afterDistinct = ResidentKiB();
    std::printf("%d distinct paths (%zu bytes each): %ld KiB, %.0f bytes per path\n", kDistinctPaths,
                current.size(), afterDistinct - beforeDistinct,
                (afterDistinct - beforeDistinct) * 1024.0 / kDistinctPaths);
    std::system(("rm -rf '" + root + "'").c_str());
    return 0;
}
