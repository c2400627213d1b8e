#include <KORU/BitFlags.h>

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(BitFlags, SingleBytesLeastSignificantBitFirst)
{
    char flags[8];
    EXPECT_EQ(CharCopyBitFlags(0x01, flags), 8);
    EXPECT_EQ(std::vector<char>(flags, flags + 8), std::vector<char>({1, 0, 0, 0, 0, 0, 0, 0}));

    // Any nonzero flag counts as set.
    const char loose[8] = {0, 7, 0, 0, -1, 0, 0, 1};
    EXPECT_EQ(CharFromBitFlags(loose), 0x92);

    for (unsigned byte = 0; byte < 256; ++byte) {
        CharCopyBitFlags(static_cast<UInt8>(byte), flags);
        ASSERT_EQ(CharFromBitFlags(flags), byte);
        for (UInt8 i = 0; i < 8; ++i)
            ASSERT_EQ(CharGetBitFlagAtIndex(static_cast<UInt8>(byte), i), flags[i] != 0);
    }
}

TEST(BitFlags, IndexesOutsideTheByteChangeNothing)
{
    EXPECT_FALSE(CharGetBitFlagAtIndex(0xFF, 8) || CharGetBitFlagAtIndex(0xFF, 255));

    UInt8 c = 0;
    CharSetBitFlagAtIndex(&c, 3);
    CharSetBitFlagAtIndex(&c, 7);
    CharSetBitFlagAtIndex(&c, 8);
    EXPECT_EQ(c, 0x88);
    CharUnsetBitFlagAtIndex(&c, 3);
    CharUnsetBitFlagAtIndex(&c, 200);
    EXPECT_EQ(c, 0x80);

    CharSetBitFlagAtIndex(nullptr, 1);
    CharUnsetBitFlagAtIndex(nullptr, 1);
    EXPECT_TRUE(CharCopyBitFlags(0xFF, nullptr) == 0 && CharFromBitFlags(nullptr) == 0);
}

TEST(BitFlags, BuffersExpandByteByByteAndPackBack)
{
    const UInt8 bytes[3] = {0x01, 0xF0, 0x55};
    std::vector<char> flags(24, 9);
    MemCopyBitFlags(bytes, 3, flags.data());
    EXPECT_TRUE(flags[0] == 1 && flags[1] == 0 && flags[8 + 4] == 1 && flags[8 + 3] == 0 && flags[16] == 1);

    UInt8 packed[3] = {};
    MemSetBitFlags(packed, 3, flags.data());
    EXPECT_EQ(std::vector<UInt8>(packed, packed + 3), std::vector<UInt8>(bytes, bytes + 3));

    // Missing arguments or a zero count leave everything as it was.
    std::vector<char> untouched(8, 9);
    MemCopyBitFlags(bytes, 0, untouched.data());
    MemCopyBitFlags(nullptr, 1, untouched.data());
    EXPECT_EQ(untouched, std::vector<char>(8, 9));
    MemCopyBitFlags(bytes, 1, nullptr);
    UInt8 kept = 0x5A;
    MemSetBitFlags(&kept, 0, flags.data());
    MemSetBitFlags(&kept, 1, nullptr);
    MemSetBitFlags(nullptr, 1, flags.data());
    EXPECT_EQ(kept, 0x5A);
}

} // namespace
