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

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

constexpr size_t kBlockSize = 8;

constexpr std::array<uint8_t, 256> MakeBitReversal()
{
    std::array<uint8_t, 256> table{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        unsigned reversed = 0;
        for (unsigned bit = 0; bit < 8; ++bit) {
            if (byte & (1u << bit))
                reversed |= 0x80u >> bit;
        }
        table[byte] = static_cast<uint8_t>(reversed);
    }
    return table;
}

constexpr std::array<uint8_t, 256> kBitReversal = MakeBitReversal();

void ReverseBits(const void *from, DES_cblock &to)
{
    const uint8_t *bytes = static_cast<const uint8_t *>(from);
    for (size_t i = 0; i < kBlockSize; ++i)
        to[i] = kBitReversal[bytes[i]];
}

void ReverseBits(const DES_cblock &from, void *to)
{
    uint8_t *bytes = static_cast<uint8_t *>(to);
    for (size_t i = 0; i < kBlockSize; ++i)
        bytes[i] = kBitReversal[from[i]];
}

/* The installed key, process-wide like setkey's; the C library starts with
 * the all-zero key, and so does this schedule the first time it is used. */
struct InstalledKey {
    DES_key_schedule schedule;
    bool ready = false;

    void Install(const char *key)
    {
        DES_cblock desKey;
        ReverseBits(key, desKey);
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

void CipherBlock(char *block, int direction)
{
    DES_cblock in, out;
    ReverseBits(block, in);
    DES_ecb_encrypt(&in, &out, &gKey.Schedule(), direction == 0 ? DES_ENCRYPT : DES_DECRYPT);
    ReverseBits(out, block);
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
    CipherBlock(block, direction);
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
    char *copy = static_cast<char *>(calloc(padded, 1));
    if (copy == nullptr)
        return 1;
    memcpy(copy, source, length);
    if (EncryptionSetKey(key) != 0) {
        free(copy);
        return 1;
    }
    for (size_t offset = 0; offset < padded; offset += kBlockSize)
        CipherBlock(copy + offset, 0);
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
    for (size_t offset = 0; offset < length; offset += kBlockSize)
        CipherBlock(bytes + offset, 1);
    return 0;
}
