/* The buffer cipher over libcrypto's single-block DES.
 *
 * The flag order of BitFlags.h puts a byte's least significant bit first,
 * while DES numbers the bits of a byte from the most significant one.  So
 * flag k·8+i, which is bit i of byte k here, is DES bit k·8+(7-i): each byte
 * of key, block and result is bit-reversed on its way to and from DES.  That
 * gives exactly the results of the C library's setkey/encrypt fed with the
 * flags of the same bytes, without building the 64-flag arrays. */
#include <KORU/MemoryCipher.h>

// libcrypto's single-block DES is deprecated in OpenSSL 3 in favour of EVP,
// whose DES lives in the legacy provider: loading that provider is a
// process-wide decision that belongs to the host, not to a library.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/des.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr size_t kBlockSize = 8;

/* The eight bytes of a word each with its bits in reverse order. */
constexpr uint64_t ReverseBitsInBytes(uint64_t word)
{
    word = ((word >> 1) & 0x5555555555555555ull) | ((word & 0x5555555555555555ull) << 1);
    word = ((word >> 2) & 0x3333333333333333ull) | ((word & 0x3333333333333333ull) << 2);
    return ((word >> 4) & 0x0F0F0F0F0F0F0F0Full) | ((word & 0x0F0F0F0F0F0F0F0Full) << 4);
}

/* A block as the two words DES_encrypt1 works on (DES_ecb_encrypt loads
 * each half little-endian), every byte bit-reversed on the way. */
inline void LoadBlock(const void *block, DES_LONG words[2])
{
    const uint8_t *bytes = static_cast<const uint8_t *>(block);
    uint64_t word = 0;
    for (int i = 0; i < 8; ++i)
        word |= static_cast<uint64_t>(bytes[i]) << (8 * i);
    word = ReverseBitsInBytes(word);
    words[0] = static_cast<DES_LONG>(word & 0xFFFFFFFFu);
    words[1] = static_cast<DES_LONG>(word >> 32);
}

inline void StoreBlock(const DES_LONG words[2], void *block)
{
    uint64_t word = ReverseBitsInBytes(static_cast<uint64_t>(words[0] & 0xFFFFFFFFu) |
                                       static_cast<uint64_t>(words[1] & 0xFFFFFFFFu) << 32);
    uint8_t *bytes = static_cast<uint8_t *>(block);
    for (int i = 0; i < 8; ++i)
        bytes[i] = static_cast<uint8_t>(word >> (8 * i));
}

/* Asks for the big copy to be backed by huge pages: the cipher writes every
 * byte of a fresh allocation once, and faulting it in 4 KiB at a time costs
 * about a fifth of the DES work itself.  Only advice: refusal changes nothing. */
void AdviseHugePages(void *buffer, size_t length)
{
    constexpr size_t kWorthIt = size_t(4) << 20;
    const uintptr_t page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    if (length < kWorthIt || page == 0)
        return;
    uintptr_t start = (reinterpret_cast<uintptr_t>(buffer) + page - 1) / page * page;
    uintptr_t end = (reinterpret_cast<uintptr_t>(buffer) + length) / page * page;
    if (start < end)
        madvise(reinterpret_cast<void *>(start), end - start, MADV_HUGEPAGE);
}

/* The installed key, process-wide like setkey's; the C library starts with
 * the all-zero key, and so does this schedule the first time it is used. */
struct InstalledKey {
    DES_key_schedule schedule;
    bool ready = false;

    void Install(const char *key)
    {
        const uint8_t *bytes = reinterpret_cast<const uint8_t *>(key);
        DES_cblock desKey;
        for (size_t i = 0; i < kBlockSize; ++i)
            desKey[i] = static_cast<uint8_t>(ReverseBitsInBytes(bytes[i]));
        // Unchecked: parity bits are ignored and weak keys are DES keys too.
        DES_set_key_unchecked(&desKey, &schedule);
        ready = true;
    }

    DES_key_schedule &Schedule()
    {
        if (!ready) {
            const char zero[kBlockSize] = {};
            Install(zero);
        }
        return schedule;
    }
};

InstalledKey gKey;

/* Enciphers (direction 0) or deciphers the block at from into to, which may
 * be the same place. */
void CipherBlock(const void *from, void *to, int direction, DES_key_schedule &schedule)
{
    DES_LONG words[2];
    LoadBlock(from, words);
    DES_encrypt1(words, &schedule, direction == 0 ? DES_ENCRYPT : DES_DECRYPT);
    StoreBlock(words, to);
}

} // namespace

extern "C" int EncryptionSetKey(const char *key)
{
    if (key == nullptr)
        return 1;
    gKey.Install(key);
    return 0;
}

extern "C" int EncryptionEncryptCore(char *block, int direction)
{
    if (block == nullptr)
        return 1;
    CipherBlock(block, block, direction, gKey.Schedule());
    return 0;
}

extern "C" int EncryptionEncrypt(char *block)
{
    return EncryptionEncryptCore(block, 0);
}

extern "C" int EncryptionDecrypt(char *block)
{
    return EncryptionEncryptCore(block, 1);
}

extern "C" int MemAllocateEncryptedCopy(const void *source, size_t length, void **outBuffer,
                                        size_t *outLength, const char *key)
{
    if (source == nullptr || length == 0 || outBuffer == nullptr || outLength == nullptr)
        return 1;
    *outBuffer = nullptr;
    *outLength = 0;
    if (length > SIZE_MAX - (kBlockSize - 1))
        return 1;
    size_t padded = (length + kBlockSize - 1) / kBlockSize * kBlockSize;
    char *copy = static_cast<char *>(malloc(padded));
    if (copy == nullptr)
        return 1;
    AdviseHugePages(copy, padded);
    if (EncryptionSetKey(key) != 0) {
        free(copy);
        return 1;
    }
    // Whole blocks go straight from the source into the copy; only the last
    // one is first completed with zero bytes.
    DES_key_schedule &schedule = gKey.Schedule();
    const char *from = static_cast<const char *>(source);
    size_t whole = length / kBlockSize * kBlockSize;
    for (size_t offset = 0; offset < whole; offset += kBlockSize)
        CipherBlock(from + offset, copy + offset, 0, schedule);
    if (whole < padded) {
        memset(copy + whole, 0, kBlockSize);
        memcpy(copy + whole, from + whole, length - whole);
        CipherBlock(copy + whole, copy + whole, 0, schedule);
    }
    *outBuffer = copy;
    *outLength = padded;
    return 0;
}

extern "C" int MemDecrypt(void *buffer, size_t length, const char *key)
{
    if (buffer == nullptr || length == 0)
        return 1;
    if (EncryptionSetKey(key) != 0)
        return 1;
    char *bytes = static_cast<char *>(buffer);
    DES_key_schedule &schedule = gKey.Schedule();
    for (size_t offset = 0; offset < length; offset += kBlockSize)
        CipherBlock(bytes + offset, bytes + offset, 1, schedule);
    return 0;
}
