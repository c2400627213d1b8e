/* The buffer cipher on 256 MiB: MemAllocateEncryptedCopy against
 * `openssl enc -des-ecb` (with its legacy provider, where OpenSSL 3 keeps
 * DES) on the same data, and against the bit-by-bit setkey/encrypt loop the
 * cipher used to be (the C library's own, still in libcrypt.so.1).
 *
 * openssl reads the data from a file in the page cache (warmed by a first
 * run) and writes the result to a file; the toolkit enciphers the same bytes
 * from memory into a fresh copy.  Each side's best of three runs counts.  The setkey/encrypt loop is timed on 4 MiB and
 * scaled, as it is far too slow for the whole.  Times are processor time
 * (openssl's as a waited-for child).  Prints throughputs and the ratios
 * toolkit / other (above 1 means the toolkit is faster). */
#include <KORU/BitFlags.h>
#include <KORU/MemoryCipher.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <algorithm>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr size_t kDataSize = size_t(256) << 20;
constexpr size_t kLoopSize = size_t(4) << 20;
constexpr int kRuns = 3;
const char kKey[8] = {0x13, 0x34, 0x57, 0x79, 0x1B, 0x3B, 0x57, 0x71};

void Fill(std::vector<char> &data)
{
    uint64_t state = 0x9E3779B97F4A7C15ull;
    for (size_t i = 0; i < data.size(); i += 8) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        memcpy(data.data() + i, &state, 8);
    }
}

/* Processor time, of this process and of the children it waited for: the
 * machine the benchmarks run on is shared, and wall-clock time there
 * measures the neighbours as much as the cipher. */
double ProcessorSeconds()
{
    struct rusage self, children;
    getrusage(RUSAGE_SELF, &self);
    getrusage(RUSAGE_CHILDREN, &children);
    auto seconds = [](const struct timeval &t) { return static_cast<double>(t.tv_sec) + t.tv_usec / 1e6; };
    return seconds(self.ru_utime) + seconds(self.ru_stime) + seconds(children.ru_utime) +
           seconds(children.ru_stime);
}

template <typename Work> double Seconds(Work work)
{
    double start = ProcessorSeconds();
    work();
    return ProcessorSeconds() - start;
}

double MiBPerSecond(size_t bytes, double seconds)
{
    return static_cast<double>(bytes) / (1 << 20) / seconds;
}

/* DES's key in openssl's hexadecimal: each byte bit-reversed, since the
 * toolkit feeds DES the least significant bit first. */
std::string OpensslKey()
{
    std::string hex;
    char pair[3];
    for (char byte : kKey) {
        unsigned value = static_cast<unsigned char>(byte), reversed = 0;
        for (int bit = 0; bit < 8; ++bit)
            reversed |= ((value >> bit) & 1u) << (7 - bit);
        std::snprintf(pair, sizeof pair, "%02x", reversed);
        hex += pair;
    }
    return hex;
}

} // namespace

int main()
{
    std::vector<char> data(kDataSize);
    Fill(data);
    char path[] = "/tmp/koru-cipher-bench-XXXXXX";
    int fd = mkstemp(path);
    if (fd < 0 || write(fd, data.data(), data.size()) != static_cast<ssize_t>(data.size())) {
        std::fprintf(stderr, "cannot write the data file\n");
        return 1;
    }
    close(fd);

    // As a user would run it: the enciphered data goes to a file beside the
    // source, as the toolkit's goes to a fresh buffer.
    std::string output = std::string(path) + ".enc";
    std::string command = "openssl enc -des-ecb -provider legacy -provider default -nopad -K " + OpensslKey() +
                          " -in " + path + " -out " + output;
    int status = std::system(command.c_str()); // warms the page cache
    // Best of three, the two taking turns, so both see the same neighbours.
    double opensslSeconds = 1e30, toolkitSeconds = 1e30;
    for (int run = 0; run < kRuns && status == 0; ++run) {
        opensslSeconds = std::min(opensslSeconds, Seconds([&] { status |= std::system(command.c_str()); }));
        unlink(output.c_str());
        void *enciphered = nullptr;
        size_t length = 0;
        toolkitSeconds = std::min(toolkitSeconds, Seconds([&] {
            if (MemAllocateEncryptedCopy(data.data(), data.size(), &enciphered, &length, kKey) != 0)
                std::fprintf(stderr, "MemAllocateEncryptedCopy failed\n");
        }));
        free(enciphered);
    }
    unlink(output.c_str());
    if (status != 0) {
        std::fprintf(stderr, "openssl enc -des-ecb failed (is the legacy provider installed?)\n");
        unlink(path);
        return 1;
    }

    double loopSeconds = 0;
    void *library = dlopen("libcrypt.so.1", RTLD_NOW);
    auto setkeyFunction = library ? reinterpret_cast<void (*)(const char *)>(dlvsym(library, "setkey", "GLIBC_2.2.5")) : nullptr;
    auto encryptFunction = library ? reinterpret_cast<void (*)(char *, int)>(dlvsym(library, "encrypt", "GLIBC_2.2.5")) : nullptr;
    if (setkeyFunction != nullptr && encryptFunction != nullptr) {
        std::vector<char> sample(data.begin(), data.begin() + kLoopSize);
        loopSeconds = Seconds([&] {
            char flags[64];
            MemCopyBitFlags(kKey, 8, flags);
            setkeyFunction(flags);
            // Per block as the cipher used to go: a fresh flag array, the
            // block spread into it, encrypt, the flags packed back.
            for (size_t offset = 0; offset < sample.size(); offset += 8) {
                char *blockFlags = static_cast<char *>(calloc(64, 1));
                MemCopyBitFlags(sample.data() + offset, 8, blockFlags);
                encryptFunction(blockFlags, 0);
                MemSetBitFlags(sample.data() + offset, 8, blockFlags);
                free(blockFlags);
            }
        }) * (static_cast<double>(kDataSize) / kLoopSize);
    }
    unlink(path);

    std::printf("buffer cipher, 256 MiB, DES-ECB\n");
    std::printf("  toolkit MemAllocateEncryptedCopy: %8.1f MiB/s\n", MiBPerSecond(kDataSize, toolkitSeconds));
    std::printf("  openssl enc -des-ecb (legacy):    %8.1f MiB/s\n", MiBPerSecond(kDataSize, opensslSeconds));
    std::printf("  ratio toolkit / openssl: %.2fx (goal >= 0.8x)\n", opensslSeconds / toolkitSeconds);
    if (loopSeconds > 0) {
        std::printf("  bit-by-bit setkey/encrypt loop:   %8.1f MiB/s (timed on 4 MiB)\n",
                    MiBPerSecond(kDataSize, loopSeconds));
        std::printf("  ratio toolkit / setkey-encrypt loop: %.1fx (goal >= 50x)\n", loopSeconds / toolkitSeconds);
    }
    return 0;
}
