/* Bit flags: one byte per bit, least significant bit first. */
#include <KORU/BitFlags.h>

namespace {

constexpr int kBitsPerByte = 8;

} // namespace

extern "C" Boolean CharGetBitFlagAtIndex(UInt8 c, UInt8 index)
{
    if (index >= kBitsPerByte)
        return false;
    return (c >> index) & 1;
}

extern "C" void CharSetBitFlagAtIndex(UInt8 *c, UInt8 index)
{
    if (c != nullptr && index < kBitsPerByte)
        *c = static_cast<UInt8>(*c | (1u << index));
}

extern "C" void CharUnsetBitFlagAtIndex(UInt8 *c, UInt8 index)
{
    if (c != nullptr && index < kBitsPerByte)
        *c = static_cast<UInt8>(*c & ~(1u << index));
}

extern "C" int CharCopyBitFlags(UInt8 c, char *flags)
{
    if (flags == nullptr)
        return 0;
    for (int i = 0; i < kBitsPerByte; ++i)
        flags[i] = static_cast<char>((c >> i) & 1);
    return kBitsPerByte;
}

extern "C" UInt8 CharFromBitFlags(const char *flags)
{
    if (flags == nullptr)
        return 0;
    unsigned byte = 0;
    for (int i = 0; i < kBitsPerByte; ++i) {
        if (flags[i] != 0)
            byte |= 1u << i;
    }
    return static_cast<UInt8>(byte);
}

extern "C" void MemCopyBitFlags(const void *bytes, size_t count, char *flags)
{
    if (bytes == nullptr || count == 0 || flags == nullptr)
        return;
    const UInt8 *byte = static_cast<const UInt8 *>(bytes);
    for (size_t i = 0; i < count; ++i)
        CharCopyBitFlags(byte[i], flags + i * kBitsPerByte);
}

extern "C" void MemSetBitFlags(void *bytes, size_t count, const char *flags)
{
    if (bytes == nullptr || count == 0 || flags == nullptr)
        return;
    UInt8 *byte = static_cast<UInt8 *>(bytes);
    for (size_t i = 0; i < count; ++i)
        byte[i] = CharFromBitFlags(flags + i * kBitsPerByte);
}
