/* The buffer cipher and the bit flags on arbitrary input: the first 8 bytes
 * are the key, the rest the data.  Enciphering then deciphering must give the
 * data back followed by zero padding, and bytes must survive a trip through
 * flags. */
#include <KORU/BitFlags.h>
#include <KORU/MemoryCipher.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 8)
        return 0;
    const char *key = reinterpret_cast<const char *>(data);
    const uint8_t *source = data + 8;
    size_t length = size - 8;

    std::vector<char> flags(length * 8 + 1);
    std::vector<uint8_t> packed(length + 1);
    MemCopyBitFlags(source, length, flags.data());
    MemSetBitFlags(packed.data(), length, flags.data());
    if (length > 0 && memcmp(packed.data(), source, length) != 0)
        abort();

    void *copy = nullptr;
    size_t copyLength = 0;
    int status = MemAllocateEncryptedCopy(source, length, &copy, &copyLength, key);
    if (length == 0) {
        if (status != 1)
            abort();
        return 0;
    }
    if (status != 0 || copyLength % 8 != 0 || copyLength < length || copyLength >= length + 8)
        abort();
    if (MemDecrypt(copy, copyLength, key) != 0 || memcmp(copy, source, length) != 0)
        abort();
    for (size_t i = length; i < copyLength; ++i) {
        if (static_cast<char *>(copy)[i] != 0)
            abort();
    }
    free(copy);
    return 0;
}
