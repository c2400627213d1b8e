#include <KORU/BitFlags.h>
#include <KORU/MemoryCipher.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <random>
#include <string>
#include <vector>

namespace {

using Block = std::vector<char>;

/* The C library's own setkey/encrypt, still present in libcrypt.so.1 under
 * their old version, as the reference the cipher must agree with bit for bit. */
class LibraryDES {
public:
    LibraryDES()
    {
        handle_ = dlopen("libcrypt.so.1", RTLD_NOW | RTLD_LOCAL);
        if (handle_ != nullptr) {
            setkey_ = reinterpret_cast<SetKey>(dlvsym(handle_, "setkey", "GLIBC_2.2.5"));
            encrypt_ = reinterpret_cast<Encrypt>(dlvsym(handle_, "encrypt", "GLIBC_2.2.5"));
        }
    }
    ~LibraryDES()
    {
        if (handle_ != nullptr)
            dlclose(handle_);
    }
    bool Available() const { return setkey_ != nullptr && encrypt_ != nullptr; }

    Block Run(const Block &key, const Block &block, int direction)
    {
        char keyFlags[64], blockFlags[64];
        MemCopyBitFlags(key.data(), 8, keyFlags);
        MemCopyBitFlags(block.data(), 8, blockFlags);
        setkey_(keyFlags);
        encrypt_(blockFlags, direction);
        Block result(8);
        MemSetBitFlags(result.data(), 8, blockFlags);
        return result;
    }

private:
    using SetKey = void (*)(const char *);
    using Encrypt = void (*)(char *, int);
    void *handle_ = nullptr;
    SetKey setkey_ = nullptr;
    Encrypt encrypt_ = nullptr;
};

Block RandomBytes(std::mt19937 &random, size_t n)
{
    Block bytes(n);
    for (char &byte : bytes)
        byte = static_cast<char>(random() & 0xFF);
    return bytes;
}

TEST(MemoryCipher, BlocksEqualTheCLibraryForManyKeys)
{
    LibraryDES library;
    ASSERT_TRUE(library.Available()) << "libcrypt.so.1 lacks setkey/encrypt@GLIBC_2.2.5";
    std::mt19937 random(20060331);
    for (int round = 0; round < 400; ++round) {
        Block key = RandomBytes(random, 8);
        Block plain = RandomBytes(random, 8);
        Block expected = library.Run(key, plain, 0);

        ASSERT_EQ(EncryptionSetKey(key.data()), 0);
        Block block = plain;
        ASSERT_EQ(EncryptionEncrypt(block.data()), 0);
        ASSERT_EQ(block, expected) << "round " << round;
        ASSERT_EQ(EncryptionDecrypt(block.data()), 0);
        ASSERT_EQ(block, plain) << "round " << round;
        // Any nonzero direction deciphers, as encrypt's flag does.
        block = expected;
        ASSERT_EQ(EncryptionEncryptCore(block.data(), 7), 0);
        ASSERT_EQ(block, plain);
    }
}

TEST(MemoryCipher, TheHighBitOfEachKeyByteIsParity)
{
    auto encipher = [](const char *key) {
        Block block = {'K', 'O', 'R', 'U', ' ', 'D', 'E', 'S'};
        EncryptionSetKey(key);
        EncryptionEncrypt(block.data());
        return block;
    };
    EXPECT_EQ(encipher("secret42"), encipher("\xF3\xE5\xE3\xF2\xE5\xF4\xB4\xB2"));
}

TEST(MemoryCipher, BuffersArePaddedToWholeBlocksAndDecipherInPlace)
{
    LibraryDES library;
    ASSERT_TRUE(library.Available());
    const char key[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    const Block keyBlock(key, key + 8);
    std::mt19937 random(7);
    for (size_t length : {1u, 7u, 8u, 9u, 16u, 1000u, 4099u}) {
        Block source = RandomBytes(random, length);
        void *copy = nullptr;
        size_t copyLength = 0;
        ASSERT_EQ(MemAllocateEncryptedCopy(source.data(), length, &copy, &copyLength, key), 0);
        ASSERT_NE(copy, nullptr);
        ASSERT_EQ(copyLength, (length + 7) / 8 * 8) << length;

        // Every block agrees with the C library, the padding enciphered as zeros.
        Block padded = source;
        padded.resize(copyLength, 0);
        const char *enciphered = static_cast<const char *>(copy);
        for (size_t offset = 0; offset < copyLength; offset += 8) {
            Block expected = library.Run(keyBlock, Block(padded.begin() + offset, padded.begin() + offset + 8), 0);
            ASSERT_EQ(Block(enciphered + offset, enciphered + offset + 8), expected) << length << "@" << offset;
        }

        ASSERT_EQ(MemDecrypt(copy, copyLength, key), 0);
        EXPECT_EQ(Block(enciphered, enciphered + copyLength), padded);
        free(copy);
    }
}

TEST(MemoryCipher, TheKeyStaysInstalledAfterABufferCall)
{
    char source[8] = {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'};
    void *copy = nullptr;
    size_t length = 0;
    ASSERT_EQ(MemAllocateEncryptedCopy(source, 8, &copy, &length, "install!"), 0);
    // The block functions go on with the key the buffer function installed.
    ASSERT_EQ(EncryptionDecrypt(static_cast<char *>(copy)), 0);
    EXPECT_EQ(memcmp(copy, source, 8), 0);
    free(copy);
}

TEST(MemoryCipher, MissingArgumentsFailWithOne)
{
    char block[8] = {};
    const char key[8] = {};
    EXPECT_TRUE(EncryptionSetKey(nullptr) == 1 && EncryptionEncrypt(nullptr) == 1 && EncryptionDecrypt(nullptr) == 1 &&
                EncryptionEncryptCore(nullptr, 0) == 1);

    void *out = reinterpret_cast<void *>(0x1);
    size_t outLength = 99;
    EXPECT_EQ(MemAllocateEncryptedCopy(nullptr, 8, &out, &outLength, key), 1);
    EXPECT_EQ(MemAllocateEncryptedCopy(block, 0, &out, &outLength, key), 1);
    EXPECT_EQ(MemAllocateEncryptedCopy(block, 8, nullptr, &outLength, key), 1);
    EXPECT_EQ(MemAllocateEncryptedCopy(block, 8, &out, nullptr, key), 1);
    EXPECT_TRUE(out == reinterpret_cast<void *>(0x1) && outLength == 99u); // left alone
    EXPECT_EQ(MemAllocateEncryptedCopy(block, 8, &out, &outLength, nullptr), 1);
    EXPECT_TRUE(out == nullptr && outLength == 0u); // reset before the key failed

    EXPECT_TRUE(MemDecrypt(nullptr, 8, key) == 1 && MemDecrypt(block, 0, key) == 1 && MemDecrypt(block, 8, nullptr) == 1);
    EXPECT_EQ(std::string(block, 8), std::string(8, '\0'));
}

} // namespace
