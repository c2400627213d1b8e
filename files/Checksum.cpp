/* MD5 digests of a file and of a short text, through libcrypto's MD5. */
#include <KORU/Utils.h>

#include <openssl/evp.h>

#include <cstdio>
#include <memory>

namespace {

constexpr size_t kBlockSize = 4096;
constexpr size_t kDigestSize = 16;
/* The digest of a text covers exactly this many bytes of it, whatever its length. */
constexpr size_t kTextDigestLength = 12;

struct DigestContextFree {
    void operator()(EVP_MD_CTX *context) const { EVP_MD_CTX_free(context); }
};
using DigestContext = std::unique_ptr<EVP_MD_CTX, DigestContextFree>;

struct FileClose {
    void operator()(FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<FILE, FileClose>;

DigestContext StartMD5()
{
    DigestContext context(EVP_MD_CTX_new());
    if (context && EVP_DigestInit_ex(context.get(), EVP_md5(), nullptr) != 1)
        context.reset();
    return context;
}

bool FinishMD5(EVP_MD_CTX *context, char *digest)
{
    unsigned char bytes[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (EVP_DigestFinal_ex(context, bytes, &length) != 1 || length != kDigestSize)
        return false;
    for (size_t i = 0; i < kDigestSize; ++i)
        digest[i] = static_cast<char>(bytes[i]);
    return true;
}

} // namespace

bool Utils::GetFileMD5Checksum(const std::string &path, char *digest)
{
    if (digest == nullptr)
        return false;
    File file(std::fopen(path.c_str(), "rb"));
    if (!file)
        return false;
    DigestContext context = StartMD5();
    if (!context)
        return false;
    // A larger stdio buffer lets the 4096-byte reads come from fewer system calls.
    std::setvbuf(file.get(), nullptr, _IOFBF, 1 << 20);
    unsigned char block[kBlockSize];
    for (;;) {
        size_t got = std::fread(block, 1, sizeof block, file.get());
        if (got > 0 && EVP_DigestUpdate(context.get(), block, got) != 1)
            return false;
        if (got < sizeof block)
            break; // end of file, or a read error, which ends the digest the same way
    }
    return FinishMD5(context.get(), digest);
}

bool Utils::getMD5Digest(const std::string &text, char *digest)
{
    if (digest == nullptr)
        return false;
    DigestContext context = StartMD5();
    if (!context)
        return false;
    // Exactly 12 bytes; a shorter text contributes its terminator and then
    // zero bytes instead of reading past its end.
    unsigned char prefix[kTextDigestLength] = {};
    for (size_t i = 0; i < kTextDigestLength && i < text.size(); ++i)
        prefix[i] = static_cast<unsigned char>(text[i]);
    if (EVP_DigestUpdate(context.get(), prefix, sizeof prefix) != 1)
        return false;
    return FinishMD5(context.get(), digest);
}
