// File-system helpers: names, paths, kind tests, files and whole forks.
#include <KORU/FSUtilities.h>

#include <KORU/CFStringUtilities.h>

#include "CFReference.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using koru::CFReference;

namespace {

constexpr UInt32 kPathBufferSize = 1025; // 1024 bytes of path and its NUL
constexpr UInt64 kRefusedForkSize = 0x100000000ull; // forks of 4 GB (this size) or more are refused

// The one-entry item-information cache of the kind tests: the address of the
// last ref asked about, and its flags.  Keyed by address on purpose.
const FSRef *gCachedRef = nullptr;
LSItemInfoRecord gCachedInfo;

// Closes a fork on every path out of a function.
class ForkOwner {
public:
    ForkOwner() = default;
    ~ForkOwner()
    {
        if (refNum_ != 0)
            FSCloseFork(refNum_);
    }
    ForkOwner(const ForkOwner &) = delete;
    ForkOwner &operator=(const ForkOwner &) = delete;
    FSIORefNum *out() { return &refNum_; }
    FSIORefNum get() const { return refNum_; }
    // Closes now and tells whether the close succeeded.
    bool Close()
    {
        const OSErr status = FSCloseFork(refNum_);
        refNum_ = 0;
        return status == noErr;
    }

private:
    FSIORefNum refNum_ = 0;
};

CFURLRef CreateURL(const FSRef *ref)
{
    return ref ? CFURLCreateFromFSRef(kCFAllocatorDefault, ref) : nullptr;
}

// A string's UTF-8 bytes, NUL-terminated; empty on failure.
std::vector<char> UTF8Of(CFStringRef string)
{
    if (!string || CFGetTypeID(string) != CFStringGetTypeID())
        return {};
    const CFIndex size = CFStringGetMaximumSizeForEncoding(CFStringGetLength(string), kCFStringEncodingUTF8) + 1;
    std::vector<char> buffer(static_cast<size_t>(size));
    if (!CFStringGetCString(string, buffer.data(), size, kCFStringEncodingUTF8))
        return {};
    return buffer;
}

char *AllocCStringTaking(CFStringRef string, CFStringEncoding encoding)
{
    CFReference<CFStringRef> owner(string);
    return owner ? CFStringAllocCString(string, encoding) : nullptr;
}

bool Lookup(const FSRef *ref, LSItemInfoRecord &info)
{
    if (ref != gCachedRef) {
        gCachedRef = nullptr;
        if (LSCopyItemInfoForRef(ref, kLSRequestAllFlags, &gCachedInfo) != noErr)
            return false;
        gCachedRef = ref;
    }
    info = gCachedInfo;
    return true;
}

bool NameOf(CFStringRef name, HFSUniStr255 &unicode)
{
    return name && CFGetTypeID(name) == CFStringGetTypeID() && CFStringGetHFSUniStr255(name, &unicode) &&
           unicode.length > 0;
}

enum class KernelCopy { Done, Failed, Unavailable };

// Copies a data fork inside the kernel (copy_file_range), as cp does.  The
// destination ends with exactly the bytes the read-whole, write-whole copy
// gives it, without the bytes passing through this process: a large fork
// would otherwise be read into fresh memory and written out again.
// Unavailable when the kernel cannot copy between these files (the caller
// then copies through memory), or when source and destination are one file.
KernelCopy CopyDataForkInKernel(const FSRef *source, const FSRef *destination)
{
    if (FSCompareFSRefs(source, destination) != errFSRefsDifferent &&
        FSCompareFSRefs(source, destination) != diffVolErr)
        return KernelCopy::Unavailable;
    UInt8 sourcePath[PATH_MAX], destinationPath[PATH_MAX];
    if (FSRefMakePath(source, sourcePath, sizeof sourcePath) != noErr ||
        FSRefMakePath(destination, destinationPath, sizeof destinationPath) != noErr)
        return KernelCopy::Unavailable;
    const int in = open(reinterpret_cast<char *>(sourcePath), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (in < 0)
        return KernelCopy::Unavailable;
    struct stat st;
    if (fstat(in, &st) != 0 || !S_ISREG(st.st_mode)) {
        close(in);
        return KernelCopy::Unavailable;
    }
    if (static_cast<UInt64>(st.st_size) >= kRefusedForkSize) { // too large to read whole
        close(in);
        return KernelCopy::Failed;
    }
    // Truncate only a destination that holds bytes: ext4 writes a file back
    // on close once it was truncated, which would make every copy into a new
    // (empty) file wait for the disk.
    const int out = open(reinterpret_cast<char *>(destinationPath), O_WRONLY | O_CLOEXEC);
    struct stat existing;
    if (out < 0 || fstat(out, &existing) != 0) {
        if (out >= 0)
            close(out);
        close(in);
        return KernelCopy::Failed;
    }
    // A destination that leads to the source's own bytes (a symbolic link
    // to it) is copied through memory, which reads before it writes.
    if (existing.st_dev == st.st_dev && existing.st_ino == st.st_ino) {
        close(out);
        close(in);
        return KernelCopy::Unavailable;
    }
    if (existing.st_size > 0 && ftruncate(out, 0) != 0) {
        close(out);
        close(in);
        return KernelCopy::Failed;
    }
    KernelCopy result = KernelCopy::Done;
    off_t copied = 0;
    while (copied < st.st_size) {
        const ssize_t count = copy_file_range(in, nullptr, out, nullptr, static_cast<size_t>(st.st_size - copied), 0);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && copied == 0 && (errno == EXDEV || errno == ENOSYS || errno == EINVAL || errno == EOPNOTSUPP)) {
            result = KernelCopy::Unavailable;
            break;
        }
        if (count <= 0) {
            result = KernelCopy::Failed;
            break;
        }
        copied += count;
    }
    if (close(out) != 0 && result == KernelCopy::Done)
        result = KernelCopy::Failed;
    close(in);
    return result;
}

// "._name" beside an item called name holds that item's resource fork and
// Finder information: a file of that name would overwrite them.
bool IsCompanionInFolder(const FSRef *folder, CFStringRef name)
{
    if (CFGetTypeID(name) != CFStringGetTypeID() || !CFStringHasPrefix(name, CFSTR("._")))
        return false;
    const CFIndex length = CFStringGetLength(name);
    CFReference<CFStringRef> item(CFStringCreateWithSubstring(kCFAllocatorDefault, name, CFRangeMake(2, length - 2)));
    FSRef ref;
    return item && FSGetChild(folder, &ref, item.get());
}

} // namespace

// --- Names and paths -------------------------------------------------------

extern "C" CFStringRef FSCopyNameString(const FSRef *ref)
{
    HFSUniStr255 name;
    if (!ref || FSGetCatalogInfo(ref, kFSCatInfoNone, nullptr, &name, nullptr, nullptr) != noErr)
        return nullptr;
    return CFStringCreateWithCharacters(kCFAllocatorDefault, name.unicode, name.length);
}

extern "C" char *FSAllocNameCString(const FSRef *ref, CFStringEncoding encoding)
{
    return AllocCStringTaking(FSCopyNameString(ref), encoding);
}

extern "C" CFStringRef FSCopyPathStringOfStyle(const FSRef *ref, CFURLPathStyle pathStyle)
{
    CFReference<CFURLRef> url(CreateURL(ref));
    return url ? CFURLCopyFileSystemPath(url.get(), pathStyle) : nullptr;
}

extern "C" char *FSAllocPathCStringOfStyle(const FSRef *ref, CFURLPathStyle pathStyle, CFStringEncoding encoding)
{
    return AllocCStringTaking(FSCopyPathStringOfStyle(ref, pathStyle), encoding);
}

extern "C" char *FSAllocPathUTF8String(const FSRef *ref)
{
    if (!ref)
        return nullptr;
    auto *path = static_cast<char *>(std::calloc(1, kPathBufferSize));
    if (path && FSRefMakePath(ref, reinterpret_cast<UInt8 *>(path), kPathBufferSize) != noErr) {
        std::free(path);
        path = nullptr;
    }
    return path;
}

extern "C" CFStringRef FSCopyPathString(const FSRef *ref)
{
    char *path = FSAllocPathUTF8String(ref);
    if (!path)
        return nullptr;
    CFStringRef string = CFStringCreateWithCString(kCFAllocatorDefault, path, kCFStringEncodingUTF8);
    std::free(path);
    return string;
}

extern "C" char *FSAllocPathCString(const FSRef *ref, CFStringEncoding encoding)
{
    return AllocCStringTaking(FSCopyPathString(ref), encoding);
}

extern "C" Boolean FSMakeFromPosixPath(CFStringRef path, FSRef *ref)
{
    if (!ref)
        return false;
    try {
        const std::vector<char> utf8 = UTF8Of(path);
        return !utf8.empty() && FSPathMakeRef(reinterpret_cast<const UInt8 *>(utf8.data()), ref, nullptr) == noErr;
    } catch (...) {
        return false;
    }
}

extern "C" Boolean FSMakeFromPathString(CFStringRef path, CFURLPathStyle pathStyle, Boolean isDirectory, FSRef *ref)
{
    if (!path || !ref || CFGetTypeID(path) != CFStringGetTypeID())
        return false;
    CFReference<CFURLRef> url(CFURLCreateWithFileSystemPath(kCFAllocatorDefault, path, pathStyle, isDirectory));
    return url && CFURLGetFSRef(url.get(), ref);
}

extern "C" Boolean FSGetChild(const FSRef *parent, FSRef *child, CFStringRef name)
{
    HFSUniStr255 unicode;
    if (!parent || !child || !NameOf(name, unicode))
        return false;
    return FSMakeFSRefUnicode(parent, unicode.length, unicode.unicode, kTextEncodingUnknown, child) == noErr;
}

extern "C" Boolean FSBundleGetExecutableFSRef(const FSRef *bundleRef, FSRef *executableRef)
{
    if (!bundleRef || !executableRef)
        return false;
    CFReference<CFURLRef> url(CreateURL(bundleRef));
    if (!url)
        return false;
    CFReference<CFBundleRef> bundle(CFBundleCreate(kCFAllocatorDefault, url.get()));
    if (!bundle)
        return false;
    CFReference<CFURLRef> executable(CFBundleCopyExecutableURL(bundle.get()));
    return executable && CFURLGetFSRef(executable.get(), executableRef);
}

// --- Kind tests ------------------------------------------------------------

extern "C" Boolean FSIsLSItemInfoRecordFlagOn(const FSRef *ref, LSItemInfoFlags mask, Boolean defaultValue)
{
    LSItemInfoRecord info;
    if (!ref || !Lookup(ref, info))
        return defaultValue;
    return (info.flags & mask) == mask;
}

extern "C" Boolean FSIsContainer(const FSRef *ref)
{
    return FSIsLSItemInfoRecordFlagOn(ref, kLSItemInfoIsContainer, false);
}

extern "C" Boolean FSIsPackage(const FSRef *ref)
{
    return FSIsLSItemInfoRecordFlagOn(ref, kLSItemInfoIsPackage, false);
}

extern "C" Boolean FSIsVolume(const FSRef *ref)
{
    return FSIsLSItemInfoRecordFlagOn(ref, kLSItemInfoIsVolume, false);
}

extern "C" Boolean FSIsInvisible(const FSRef *ref)
{
    return FSIsLSItemInfoRecordFlagOn(ref, kLSItemInfoIsInvisible, false);
}

extern "C" Boolean FSIsDirectory(const FSRef *ref)
{
    return FSIsContainer(ref) && !FSIsVolume(ref);
}

extern "C" Boolean FSIsFolder(const FSRef *ref)
{
    return FSIsContainer(ref) && !FSIsPackage(ref) && !FSIsVolume(ref);
}

extern "C" Boolean FSIsMachOBinary(const FSRef *ref)
{
    // The universal header, then 32-bit and 64-bit Mach-O, each as the bytes
    // lie in the file in both byte orders; the table ends with a zero word.
    static const UInt8 kMagics[][4] = {
        {0xBE, 0xBA, 0xFE, 0xCA}, {0xCA, 0xFE, 0xBA, 0xBE}, {0xCE, 0xFA, 0xED, 0xFE},
        {0xFE, 0xED, 0xFA, 0xCE}, {0xCF, 0xFA, 0xED, 0xFE}, {0xFE, 0xED, 0xFA, 0xCF},
        {0x00, 0x00, 0x00, 0x00}};
    if (!ref)
        return false;
    HFSUniStr255 dataFork;
    FSGetDataForkName(&dataFork);
    ForkOwner fork;
    if (FSOpenFork(ref, dataFork.length, dataFork.unicode, fsRdPerm, fork.out()) != noErr)
        return false;
    UInt8 bytes[4];
    ByteCount read = 0;
    if (FSReadFork(fork.get(), fsFromStart, 0, sizeof bytes, bytes, &read) != noErr || read != sizeof bytes)
        return false;
    for (size_t k = 0; std::memcmp(kMagics[k], "\0\0\0\0", 4) != 0; ++k)
        if (std::memcmp(bytes, kMagics[k], 4) == 0)
            return true;
    return false;
}

// --- Files and forks -------------------------------------------------------

extern "C" Boolean FSCreateFile(const FSRef *parent, CFStringRef name, const FSRef *templateRef, FSRef *newRef)
{
    HFSUniStr255 unicode;
    if (!parent || !NameOf(name, unicode))
        return false;
    FSCatalogInfo info;
    FSCatalogInfoBitmap whichInfo = kFSCatInfoNone;
    if (templateRef &&
        FSGetCatalogInfo(templateRef, kFSCatInfoGettableInfo, &info, nullptr, nullptr, nullptr) == noErr)
        whichInfo = kFSCatInfoSettableInfo;
    return FSCreateFileUnicode(parent, unicode.length, unicode.unicode, whichInfo,
                               whichInfo ? &info : nullptr, newRef, nullptr) == noErr;
}

extern "C" CFDataRef FSReadFileFork(const FSRef *ref, const HFSUniStr255 *forkName)
{
    if (!ref || !forkName)
        return nullptr;
    ForkOwner fork;
    SInt64 size = 0;
    if (FSOpenFork(ref, forkName->length, forkName->unicode, fsRdPerm, fork.out()) != noErr ||
        FSGetForkSize(fork.get(), &size) != noErr || size < 0 || static_cast<UInt64>(size) >= kRefusedForkSize)
        return nullptr;
    if (size == 0)
        return CFDataCreate(kCFAllocatorDefault, nullptr, 0);
    // Read straight into the block the data will own, so a large fork is in
    // memory once.
    auto *bytes = static_cast<UInt8 *>(std::malloc(static_cast<size_t>(size)));
    if (!bytes)
        return nullptr;
    ByteCount read = 0;
    if (FSReadFork(fork.get(), fsFromStart | noCacheMask, 0, static_cast<ByteCount>(size), bytes, &read) != noErr ||
        read != static_cast<ByteCount>(size)) {
        std::free(bytes);
        return nullptr;
    }
    CFDataRef data = CFDataCreateWithBytesNoCopy(kCFAllocatorDefault, bytes, static_cast<CFIndex>(size), kCFAllocatorMalloc);
    if (!data)
        std::free(bytes);
    return data;
}

extern "C" Boolean FSWriteFileFork(const FSRef *ref, const HFSUniStr255 *forkName, CFDataRef data)
{
    if (!ref || !forkName || !data || CFGetTypeID(data) != CFDataGetTypeID())
        return false;
    (void)FSDeleteFork(ref, forkName->length, forkName->unicode);
    const OSErr created = FSCreateFork(ref, forkName->length, forkName->unicode);
    if (created != noErr && created != errFSForkExists)
        return false;
    ForkOwner fork;
    if (FSOpenFork(ref, forkName->length, forkName->unicode, fsWrPerm, fork.out()) != noErr)
        return false;
    const CFIndex length = CFDataGetLength(data);
    ByteCount written = 0;
    if (length > 0 && (FSWriteFork(fork.get(), fsFromStart | noCacheMask, 0, static_cast<ByteCount>(length),
                                   CFDataGetBytePtr(data), &written) != noErr ||
                       written != static_cast<ByteCount>(length)))
        return false;
    if (FSSetForkSize(fork.get(), fsFromStart, length) != noErr)
        return false;
    return fork.Close();
}

extern "C" Boolean FSCopyFileFork(const FSRef *source, const FSRef *destination, const HFSUniStr255 *forkName)
{
    if (!source || !destination || !forkName)
        return false;
    if (forkName->length == 0) {
        const KernelCopy copied = CopyDataForkInKernel(source, destination);
        if (copied != KernelCopy::Unavailable)
            return copied == KernelCopy::Done;
    }
    CFReference<CFDataRef> data(FSReadFileFork(source, forkName));
    return data && FSWriteFileFork(destination, forkName, data.get());
}

extern "C" Boolean FSCopyFile(const FSRef *source, const FSRef *destinationFolder, CFStringRef name, FSRef *newRef)
{
    if (!source || !destinationFolder || !name)
        return false;
    HFSUniStr255 dataFork, resourceFork;
    if (FSGetDataForkName(&dataFork) != noErr || FSGetResourceForkName(&resourceFork) != noErr)
        return false;
    // A source that is gone or a folder cannot be copied; a destination that
    // is the source itself must not be deleted to make room for it.
    FSCatalogInfo info;
    if (FSGetCatalogInfo(source, kFSCatInfoNodeFlags, &info, nullptr, nullptr, nullptr) != noErr ||
        (info.nodeFlags & kFSNodeIsDirectoryMask))
        return false;
    FSRef existing;
    if (IsCompanionInFolder(destinationFolder, name))
        return false;
    if (FSGetChild(destinationFolder, &existing, name)) {
        if (FSCompareFSRefs(&existing, source) == noErr)
            return false;
        FSDeleteObject(&existing);
    }
    FSRef created;
    if (!FSCreateFile(destinationFolder, name, source, &created))
        return false;
    // The copy takes the source's mode at creation; a read-only one would
    // keep its own forks from being written, so the owner may write them
    // until both are copied.
    FSCatalogInfo access;
    FSPermissionInfo permissions;
    bool readOnly = false;
    if (FSGetCatalogInfo(&created, kFSCatInfoPermissions, &access, nullptr, nullptr, nullptr) == noErr) {
        std::memcpy(&permissions, access.permissions, sizeof permissions);
        readOnly = (permissions.mode & S_IWUSR) == 0;
    }
    if (readOnly) {
        FSCatalogInfo writable = access;
        permissions.mode |= S_IWUSR;
        std::memcpy(writable.permissions, &permissions, sizeof permissions);
        FSSetCatalogInfo(&created, kFSCatInfoPermissions, &writable);
    }
    const bool dataCopied = FSCopyFileFork(source, &created, &dataFork);
    const bool resourceCopied = FSCopyFileFork(source, &created, &resourceFork);
    if (readOnly)
        FSSetCatalogInfo(&created, kFSCatInfoPermissions, &access);
    if (newRef)
        *newRef = created;
    return dataCopied && resourceCopied;
}
