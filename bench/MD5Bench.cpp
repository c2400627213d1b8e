/* MD5 of a 1 GiB file: Utils::GetFileMD5Checksum against md5sum.
 *
 * Both read the same file from the page cache (a first md5sum run warms it),
 * each is timed three times and the best run counts.  Prints both
 * throughputs and the ratio toolkit / md5sum (above 1 means the toolkit is
 * faster). */
#include <KORU/Utils.h>

#include <chrono>
#include <cstdio>
#include <cstdint>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

constexpr size_t kFileSize = size_t(1) << 30;
constexpr int kRuns = 3;

bool WriteTestFile(const std::string &path)
{
    FILE *file = std::fopen(path.c_str(), "wb");
    if (file == nullptr)
        return false;
    std::vector<uint64_t> block((size_t(1) << 20) / sizeof(uint64_t));
    uint64_t state = 0x9E3779B97F4A7C15ull;
    bool ok = true;
    for (size_t written = 0; ok && written < kFileSize; written += block.size() * sizeof(uint64_t)) {
        for (uint64_t &word : block) {
            state ^= state << 13;
            state ^= state >> 7;
            state ^= state << 17;
            word = state;
        }
        ok = std::fwrite(block.data(), sizeof(uint64_t), block.size(), file) == block.size();
    }
    return std::fclose(file) == 0 && ok;
}

std::string Hex(const char *digest)
{
    std::string hex;
    char pair[3];
    for (int i = 0; i < 16; ++i) {
        std::snprintf(pair, sizeof pair, "%02x", static_cast<unsigned char>(digest[i]));
        hex += pair;
    }
    return hex;
}

std::string Md5sum(const std::string &path)
{
    FILE *pipe = popen(("md5sum '" + path + "'").c_str(), "r");
    char hex[33] = "";
    if (pipe == nullptr)
        return hex;
    if (std::fscanf(pipe, "%32s", hex) != 1)
        hex[0] = '\0';
    pclose(pipe);
    return hex;
}

template <typename Work> double BestSeconds(Work work)
{
    double best = 1e30;
    for (int run = 0; run < kRuns; ++run) {
        auto start = std::chrono::steady_clock::now();
        work();
        std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        if (elapsed.count() < best)
            best = elapsed.count();
    }
    return best;
}

} // namespace

int main()
{
    std::string folder = Utils::GetTempDirName();
    if (folder.empty()) {
        std::fprintf(stderr, "MD5Bench: no temporary folder\n");
        return 1;
    }
    std::string path = folder + "/MD5Bench-" + std::to_string(getpid()) + ".data";
    if (!WriteTestFile(path)) {
        std::fprintf(stderr, "MD5Bench: cannot write %s\n", path.c_str());
        unlink(path.c_str());
        return 1;
    }

    std::string reference = Md5sum(path); // also brings the file into the page cache
    char digest[16] = {};
    bool ok = Utils::GetFileMD5Checksum(path, digest) && Hex(digest) == reference;
    double toolkit = BestSeconds([&] { Utils::GetFileMD5Checksum(path, digest); });
    double md5sum = BestSeconds([&] { Md5sum(path); });
    unlink(path.c_str());

    if (!ok) {
        std::fprintf(stderr, "MD5Bench: digests differ (%s vs md5sum %s)\n", Hex(digest).c_str(),
                     reference.c_str());
        return 1;
    }
    double mib = static_cast<double>(kFileSize) / (1 << 20);
    std::printf("MD5 of 1 GiB: Utils::GetFileMD5Checksum %.0f MiB/s, md5sum %.0f MiB/s\n",
                mib / toolkit, mib / md5sum);
    std::printf("throughput ratio (toolkit / md5sum): %.2f\n", md5sum / toolkit);
    return 0;
}
