/* MD5 digests of a file and of a short text, through libcrypto's MD5. */
#include <KORU/Utils.h>

#include <openssl/evp.h>

#include <cerrno>
#include <memory>
#include <new>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr size_t kBlockSize = 256 * 1024;
constexpr size_t kDigestSize = 16;
/* The digest of a text covers exactly this many bytes of it, whatever its length. */
constexpr size_t kTextDigestLength = 12;

struct DigestContextFree {
    void operator()(EVP_MD_CTX *context) const { EVP_MD_CTX_free(context); }
};
using DigestContext = std::unique_ptr<EVP_MD_CTX, DigestContextFree>;

class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : mFd(fd) {}
    ~FileDescriptor()
    {
        if (mFd >= 0)
            close(mFd);
    }
    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;
    int get() const { return mFd; }

private:
    int mFd;
};

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
    FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.get() < 0)
        return false;
    DigestContext context = StartMD5();
    if (!context)
        return false;
    // Large reads straight into one buffer: no stdio copy, few system calls,
    // and the kernel told to read ahead.
    posix_fadvise(file.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
    std::unique_ptr<unsigned char[]> block(new (std::nothrow) unsigned char[kBlockSize]);
    if (!block)
        return false;
    for (;;) {
        const ssize_t got = read(file.get(), block.get(), kBlockSize);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break; // end of file, or a read error, which ends the digest the same way
        if (EVP_DigestUpdate(context.get(), block.get(), static_cast<size_t>(got)) != 1)
            return false;
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
