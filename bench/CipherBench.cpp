/* The buffer cipher on 256 MiB: MemAllocateEncryptedCopy against
 * `openssl enc -des-ecb` (with its legacy provider, where OpenSSL 3 keeps
 * DES) on the same data, and against the bit-by-bit setkey/encrypt loop the
 * cipher used to be (the C library's own, still in libcrypt.so.1).
 *
 * openssl reads the data from a file in the page cache (warmed by a first
 * run) and writes to /dev/null; the toolkit enciphers the same bytes from
 * memory into a fresh copy.  The setkey/encrypt loop is timed on 4 MiB and
 * scaled, as it is far too slow for the whole.  Prints throughputs and the
 * ratios toolkit / other (above 1 means the toolkit is faster). */
#include <KORU/BitFlags.h>
#include <KORU/MemoryCipher.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <unistd.h>

namespace {

constexpr size_t kDataSize = size_t(256) << 20;
constexpr size_t kLoopSize = size_t(4) << 20;
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

template <typename Work> double Seconds(Work work)
{
    auto start = std::chrono::steady_clock::now();
    work();
    std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    return elapsed.count();
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

    std::string command = "openssl enc -des-ecb -provider legacy -provider default -nopad -K " + OpensslKey() +
                          " -in " + path + " -out /dev/null";
    int status = std::system(command.c_str()); // warms the page cache
    double opensslSeconds = Seconds([&] { status |= std::system(command.c_str()); });
    if (status != 0) {
        std::fprintf(stderr, "openssl enc -des-ecb failed (is the legacy provider installed?)\n");
        unlink(path);
        return 1;
    }

    void *enciphered = nullptr;
    size_t length = 0;
    double toolkitSeconds = Seconds([&] {
        if (MemAllocateEncryptedCopy(data.data(), data.size(), &enciphered, &length, kKey) != 0)
            std::fprintf(stderr, "MemAllocateEncryptedCopy failed\n");
    });
    free(enciphered);

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
            for (size_t offset = 0; offset < sample.size(); offset += 8) {
                MemCopyBitFlags(sample.data() + offset, 8, flags);
                encryptFunction(flags, 0);
                MemSetBitFlags(sample.data() + offset, 8, flags);
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
