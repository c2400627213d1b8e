// Data providers: bytes in memory, from a file, a CFData or the caller.
#include "CGInternal.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace {

void FreeBytes(void *, const void *data, size_t)
{
    std::free(const_cast<void *>(data));
}

void ReleaseCFData(void *info, const void *, size_t)
{
    CFRelease(static_cast<CFDataRef>(info));
}

CGDataProviderRef NewProvider(void *info, const void *data, size_t size,
                              CGDataProviderReleaseDataCallback releaseData)
{
    CGDataProvider *provider = new (std::nothrow) CGDataProvider;
    if (provider == nullptr)
        return nullptr;
    provider->references = 1;
    provider->bytes = static_cast<const unsigned char *>(data);
    provider->length = size;
    provider->info = info;
    provider->releaseData = releaseData;
    return provider;
}

// The whole of a regular file, in a block of malloc'd memory.
CGDataProviderRef ReadFile(const char *path)
{
    int fd;
    do {
        // Not blocking: opening a FIFO would wait for a writer.
        fd = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0)
        return nullptr;
    struct stat info;
    unsigned char *buffer = nullptr;
    size_t length = 0;
    bool ok = fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
    if (ok) {
        length = static_cast<size_t>(info.st_size);
        buffer = static_cast<unsigned char *>(std::malloc(length > 0 ? length : 1));
        ok = buffer != nullptr;
    }
    size_t done = 0;
    while (ok && done < length) {
        ssize_t got = read(fd, buffer + done, length - done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0) {
            ok = got == 0 && done > 0; // the file shrank: keep what is there
            length = done;
            break;
        }
        done += static_cast<size_t>(got);
    }
    close(fd);
    CGDataProviderRef provider = ok ? NewProvider(nullptr, buffer, length, FreeBytes) : nullptr;
    if (provider == nullptr)
        std::free(buffer);
    return provider;
}

} // namespace

extern "C" CGDataProviderRef CGDataProviderCreateWithFilename(const char *filename)
{
    return filename != nullptr && *filename != '\0' ? ReadFile(filename) : nullptr;
}

extern "C" CGDataProviderRef CGDataProviderCreateWithURL(CFURLRef url)
{
    if (url == nullptr || CFGetTypeID(url) != CFURLGetTypeID())
        return nullptr;
    CFURLRef absolute = CFURLCopyAbsoluteURL(url);
    if (absolute == nullptr)
        return nullptr;
    CFStringRef scheme = CFURLCopyScheme(absolute);
    const bool isFile = scheme != nullptr && CFStringCompare(scheme, CFSTR("file"), kCFCompareCaseInsensitive) ==
                                                 kCFCompareEqualTo;
    if (scheme != nullptr)
        CFRelease(scheme);
    char path[PATH_MAX];
    const bool havePath =
        isFile && CFURLGetFileSystemRepresentation(absolute, true, reinterpret_cast<UInt8 *>(path), sizeof path);
    CFRelease(absolute);
    return havePath ? ReadFile(path) : nullptr;
}

extern "C" CGDataProviderRef CGDataProviderCreateWithData(void *info, const void *data, size_t size,
                                                          CGDataProviderReleaseDataCallback releaseData)
{
    if (data == nullptr && size > 0)
        return nullptr;
    return NewProvider(info, data, size, releaseData);
}

extern "C" CGDataProviderRef CGDataProviderCreateWithCFData(CFDataRef data)
{
    if (data == nullptr || CFGetTypeID(data) != CFDataGetTypeID())
        return nullptr;
    // A copy: the bytes of a mutable data move when it changes.  An
    // immutable data copies as itself.
    CFDataRef bytes = CFDataCreateCopy(kCFAllocatorDefault, data);
    if (bytes == nullptr)
        return nullptr;
    CGDataProviderRef provider = NewProvider(const_cast<void *>(static_cast<const void *>(bytes)),
                                             CFDataGetBytePtr(bytes),
                                             static_cast<size_t>(CFDataGetLength(bytes)), ReleaseCFData);
    if (provider == nullptr)
        CFRelease(bytes);
    return provider;
}

extern "C" CGDataProviderRef CGDataProviderRetain(CGDataProviderRef provider)
{
    if (provider != nullptr)
        __atomic_add_fetch(&provider->references, 1, __ATOMIC_RELAXED);
    return provider;
}

extern "C" void CGDataProviderRelease(CGDataProviderRef provider)
{
    if (provider == nullptr || __atomic_sub_fetch(&provider->references, 1, __ATOMIC_ACQ_REL) != 0)
        return;
    if (provider->releaseData != nullptr)
        provider->releaseData(provider->info, provider->bytes, provider->length);
    delete provider;
}
