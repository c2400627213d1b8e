#include <KORU/Utils.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

namespace fs = std::filesystem;

namespace {

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

/* The digest md5sum finds for the file. */
std::string Md5sumOf(const std::string &path)
{
    std::string command = "md5sum '" + path + "'";
    FILE *pipe = popen(command.c_str(), "r");
    char hex[33] = "";
    if (pipe != nullptr) {
        if (std::fscanf(pipe, "%32s", hex) != 1)
            hex[0] = '\0';
        pclose(pipe);
    }
    return hex;
}

} // namespace

TEST(Checksum, FileDigestsAgreeWithMd5sumAroundTheBlockSize)
{
    char pattern[] = "/tmp/ChecksumTest.XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(pattern));
    std::string root = pattern;
    for (size_t size : {0, 1, 4095, 4096, 4097, 8192, 1000003}) {
        std::string path = root + "/" + std::to_string(size);
        std::string data(size, '\0');
        for (size_t i = 0; i < size; ++i)
            data[i] = static_cast<char>((i * 131) ^ (i >> 8));
        std::ofstream(path, std::ios::binary) << data;
        char digest[17] = {};
        digest[16] = 'Z'; // nothing is written past the 16 bytes
        ASSERT_TRUE(Utils::GetFileMD5Checksum(path, digest)) << size;
        EXPECT_EQ(Md5sumOf(path), Hex(digest)) << size;
        EXPECT_EQ('Z', digest[16]);
    }
    char digest[16];
    EXPECT_EQ("d41d8cd98f00b204e9800998ecf8427e", (Utils::GetFileMD5Checksum(root + "/0", digest), Hex(digest)));
    EXPECT_FALSE(Utils::GetFileMD5Checksum(root + "/missing", digest));
    EXPECT_FALSE(Utils::GetFileMD5Checksum(root + "/0", nullptr));
    fs::remove_all(root);
}

TEST(Checksum, TextDigestCoversExactlyTwelveBytes)
{
    char digest[16], other[16];
    ASSERT_TRUE(Utils::getMD5Digest("abcdefghijklmnop", digest));
    EXPECT_EQ("9fc9d606912030dca86582ed62595cf7", Hex(digest)); // MD5 of "abcdefghijkl"
    // A shorter text is padded with zero bytes to twelve.
    ASSERT_TRUE(Utils::getMD5Digest("abc", digest));
    EXPECT_EQ(Hex(digest), (Utils::getMD5Digest(std::string("abc\0\0\0\0\0\0\0\0\0", 12), other), Hex(other)));
    EXPECT_FALSE(Utils::getMD5Digest("abc", nullptr));
}
