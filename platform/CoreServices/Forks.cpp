/* Opening, reading and writing the two forks of a file.  The data fork is a
 * file descriptor on the file; the resource fork lives in memory while it is
 * open and goes back to the AppleDouble companion when flushed or closed. */
#include "AppleDouble.h"
#include "FileRef.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <memory>
#include <mutex>
#include <unistd.h>

using namespace filemanager;

namespace {

enum class ForkKind { Data, Resource };

struct OpenFork {
    ForkKind kind = ForkKind::Data;
    std::string path;
    dev_t device = 0;
    ino_t inode = 0;
    bool writable = false;
    bool shared = false;
    int fd = -1;               // the data fork
    std::string bytes;         // the resource fork
    bool dirty = false;
    SInt64 mark = 0;
    std::mutex lock;           // one call at a time on this fork
};

// Fork numbers are handed out from 1 upwards, skipping numbers in use, so a
// number stays unique while its fork is open.
class ForkTable {
public:
    SInt16 Add(const std::shared_ptr<OpenFork> &fork)
    {
        std::lock_guard<std::mutex> guard(lock_);
        for (int tries = 0; tries < 32767; ++tries) {
            next_ = next_ >= 32767 ? 1 : next_ + 1;
            if (!forks_.count(next_)) {
                forks_[next_] = fork;
                return next_;
            }
        }
        return 0;
    }

    std::shared_ptr<OpenFork> Find(SInt16 refNum)
    {
        std::lock_guard<std::mutex> guard(lock_);
        const auto found = forks_.find(refNum);
        return found == forks_.end() ? nullptr : found->second;
    }

    std::shared_ptr<OpenFork> Remove(SInt16 refNum)
    {
        std::lock_guard<std::mutex> guard(lock_);
        const auto found = forks_.find(refNum);
        if (found == forks_.end())
            return nullptr;
        auto fork = found->second;
        forks_.erase(found);
        return fork;
    }

    // True when another number has this fork open for writing, unshared.
    bool OpenForWriting(ForkKind kind, dev_t device, ino_t inode)
    {
        std::lock_guard<std::mutex> guard(lock_);
        for (const auto &entry : forks_) {
            const OpenFork &fork = *entry.second;
            if (fork.kind == kind && fork.device == device && fork.inode == inode && fork.writable &&
                !fork.shared)
                return true;
        }
        return false;
    }

private:
    std::mutex lock_;
    std::map<SInt16, std::shared_ptr<OpenFork>> forks_;
    SInt16 next_ = 0;
};

ForkTable &Forks()
{
    static ForkTable *table = new ForkTable; // outlives every static destructor
    return *table;
}

// Which fork a name means; errFSForkNotFound for a fork files do not have.
OSErr KindOfFork(UniCharCount length, const UniChar *name, ForkKind &kind)
{
    if (length == 0) {
        kind = ForkKind::Data;
        return noErr;
    }
    if (!name)
        return paramErr;
    HFSUniStr255 resource;
    FSGetResourceForkName(&resource);
    if (length == resource.length &&
        std::memcmp(name, resource.unicode, length * sizeof(UniChar)) == 0) {
        kind = ForkKind::Resource;
        return noErr;
    }
    return errFSForkNotFound;
}

// Resolves the ref to a file and picks the fork.
OSErr FileAndFork(const FSRef *ref, UniCharCount length, const UniChar *name, Node &node,
                  ForkKind &kind)
{
    if (!ref)
        return paramErr;
    OSErr status = ResolveRef(ref, node);
    if (status != noErr)
        return status;
    if (S_ISDIR(node.st.st_mode))
        return notAFileErr;
    return KindOfFork(length, name, kind);
}

OSErr StoreResourceFork(const std::string &path, const std::string &bytes)
{
    AppleDoubleData stored = AppleDoubleFile::Read(path);
    stored.resourceFork = bytes;
    stored.hasResourceFork = !bytes.empty();
    const int error = AppleDoubleFile::Write(path, stored);
    return error == 0 ? OSErr(noErr) : StatusFromErrno(error);
}

// The absolute position a mode and offset name; posErr before the start.
OSErr Position(OpenFork &fork, UInt16 mode, SInt64 offset, SInt64 size, SInt64 &position)
{
    switch (mode & 0x3) {
    case fsAtMark: position = fork.mark; break;
    case fsFromStart: position = offset; break;
    case fsFromLEOF: position = size + offset; break;
    default: position = fork.mark + offset; break;
    }
    return position < 0 ? OSErr(posErr) : OSErr(noErr);
}

SInt64 SizeOf(OpenFork &fork)
{
    if (fork.kind == ForkKind::Resource)
        return static_cast<SInt64>(fork.bytes.size());
    struct stat st;
    return fstat(fork.fd, &st) == 0 ? st.st_size : 0;
}

OSErr Flush(OpenFork &fork)
{
    if (fork.kind == ForkKind::Data)
        return noErr; // the kernel has every byte already; no fsync on each flush
    if (!fork.dirty)
        return noErr;
    const OSErr status = StoreResourceFork(fork.path, fork.bytes);
    if (status == noErr)
        fork.dirty = false;
    return status;
}

OSErr SetSize(OpenFork &fork, SInt64 size)
{
    if (!fork.writable)
        return wrPermErr;
    if (fork.kind == ForkKind::Data)
        return ftruncate(fork.fd, size) == 0 ? OSErr(noErr) : StatusFromErrno(errno);
    if (static_cast<UInt64>(size) > fork.bytes.max_size() || size > 0x7FFFFFFF)
        return dskFulErr; // a resource fork is addressed with 32 bits
    fork.bytes.resize(static_cast<size_t>(size));
    fork.dirty = true;
    return noErr;
}

OSErr ReadData(OpenFork &fork, SInt64 position, ByteCount request, char *buffer, ByteCount &done)
{
    while (done < request) {
        const ssize_t count = pread(fork.fd, buffer + done, request - done, position + SInt64(done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return StatusFromErrno(errno);
        if (count == 0)
            return eofErr;
        done += static_cast<ByteCount>(count);
    }
    return noErr;
}

OSErr WriteData(OpenFork &fork, SInt64 position, ByteCount request, const char *buffer, ByteCount &done)
{
    while (done < request) {
        const ssize_t count = pwrite(fork.fd, buffer + done, request - done, position + SInt64(done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return count == 0 ? OSErr(ioErr) : StatusFromErrno(errno);
        done += static_cast<ByteCount>(count);
    }
    return noErr;
}

OSErr OpenData(const Node &node, bool writable, OpenFork &fork)
{
    fork.fd = open(node.path.c_str(), (writable ? O_RDWR : O_RDONLY) | O_CLOEXEC);
    if (fork.fd < 0)
        return errno == EACCES ? OSErr(permErr) : StatusFromErrno(errno);
    struct stat st;
    if (fstat(fork.fd, &st) != 0 || st.st_dev != node.st.st_dev || st.st_ino != node.st.st_ino) {
        close(fork.fd); // replaced between the look-up and the open
        fork.fd = -1;
        return fnfErr;
    }
    return noErr;
}

OSErr OpenResource(const Node &node, bool writable, OpenFork &fork)
{
    if (writable && access(node.path.c_str(), W_OK) != 0)
        return permErr;
    fork.bytes = AppleDoubleFile::Read(node.path).resourceFork;
    return noErr;
}

OSErr Open(const Node &node, ForkKind kind, SInt8 permissions, SInt16 &refNum)
{
    auto fork = std::make_shared<OpenFork>();
    fork->kind = kind;
    fork->path = node.path;
    fork->device = node.st.st_dev;
    fork->inode = node.st.st_ino;
    fork->shared = (permissions & 0x7) == fsRdWrShPerm;
    switch (permissions & 0x7) {
    case fsCurPerm: fork->writable = access(node.path.c_str(), W_OK) == 0; break;
    case fsRdPerm: fork->writable = false; break;
    default: fork->writable = true; break;
    }
    if (fork->writable && !fork->shared && Forks().OpenForWriting(kind, node.st.st_dev, node.st.st_ino)) {
        if ((permissions & 0x7) != fsCurPerm)
            return opWrErr;
        fork->writable = false; // fsCurPerm settles for reading
    }
    const OSErr status = kind == ForkKind::Data ? OpenData(node, fork->writable, *fork)
                                                : OpenResource(node, fork->writable, *fork);
    if (status != noErr)
        return status;
    refNum = Forks().Add(fork);
    if (refNum == 0) {
        if (fork->fd >= 0)
            close(fork->fd);
        return tmfoErr;
    }
    return noErr;
}

} // namespace

extern "C" OSErr FSCreateFork(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName)
{
    try {
        Node node;
        ForkKind kind;
        const OSErr status = FileAndFork(ref, forkNameLength, forkName, node, kind);
        if (status != noErr)
            return status;
        const UInt64 size = kind == ForkKind::Data ? static_cast<UInt64>(node.st.st_size)
                                                   : AppleDoubleFile::ResourceForkLength(node.path);
        return size == 0 ? OSErr(noErr) : OSErr(errFSForkExists);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSDeleteFork(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName)
{
    try {
        Node node;
        ForkKind kind;
        const OSErr status = FileAndFork(ref, forkNameLength, forkName, node, kind);
        if (status != noErr)
            return status;
        if (Forks().OpenForWriting(kind, node.st.st_dev, node.st.st_ino))
            return fBsyErr;
        if (kind == ForkKind::Data) {
            // An empty file is left alone: ext4 writes a truncated file back
            // to disk when it is next closed.
            if (node.st.st_size == 0)
                return noErr;
            // Truncate the item itself: never what a symbolic link leads to,
            // nor a file put in its place since the look-up.
            const int fd = open(node.path.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW);
            if (fd < 0)
                return StatusFromErrno(errno);
            struct stat st;
            OSErr result = noErr;
            if (fstat(fd, &st) != 0 || st.st_dev != node.st.st_dev || st.st_ino != node.st.st_ino)
                result = fnfErr;
            else if (ftruncate(fd, 0) != 0)
                result = StatusFromErrno(errno);
            close(fd);
            return result;
        }
        if (AppleDoubleFile::ResourceForkLength(node.path) == 0)
            return noErr; // nothing to delete, and no companion to rewrite
        return StoreResourceFork(node.path, std::string());
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSOpenFork(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName,
                            SInt8 permissions, FSIORefNum *forkRefNum)
{
    if (forkRefNum)
        *forkRefNum = 0;
    if (!forkRefNum)
        return paramErr;
    try {
        Node node;
        ForkKind kind;
        const OSErr status = FileAndFork(ref, forkNameLength, forkName, node, kind);
        if (status != noErr)
            return status;
        return Open(node, kind, permissions, *forkRefNum);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSReadFork(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset,
                            ByteCount requestCount, void *buffer, ByteCount *actualCount)
{
    if (actualCount)
        *actualCount = 0;
    const auto fork = Forks().Find(forkRefNum);
    if (!fork)
        return rfNumErr;
    if (!buffer && requestCount > 0)
        return paramErr;
    std::lock_guard<std::mutex> guard(fork->lock);
    SInt64 position;
    const SInt64 size = SizeOf(*fork);
    OSErr status = Position(*fork, positionMode, positionOffset, size, position);
    if (status != noErr)
        return status;
    ByteCount done = 0;
    if (fork->kind == ForkKind::Data) {
        status = ReadData(*fork, position, requestCount, static_cast<char *>(buffer), done);
    } else {
        const SInt64 available = position < size ? size - position : 0;
        done = static_cast<ByteCount>(std::min<SInt64>(available, static_cast<SInt64>(requestCount)));
        if (done > 0)
            std::memcpy(buffer, fork->bytes.data() + position, done);
        status = done < requestCount ? OSErr(eofErr) : OSErr(noErr);
    }
    fork->mark = position + static_cast<SInt64>(done);
    if (actualCount)
        *actualCount = done;
    return status;
}

extern "C" OSErr FSWriteFork(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset,
                             ByteCount requestCount, const void *buffer, ByteCount *actualCount)
{
    if (actualCount)
        *actualCount = 0;
    const auto fork = Forks().Find(forkRefNum);
    if (!fork)
        return rfNumErr;
    if (!buffer && requestCount > 0)
        return paramErr;
    std::lock_guard<std::mutex> guard(fork->lock);
    if (!fork->writable)
        return wrPermErr;
    SInt64 position;
    OSErr status = Position(*fork, positionMode, positionOffset, SizeOf(*fork), position);
    if (status != noErr)
        return status;
    ByteCount done = 0;
    try {
        if (fork->kind == ForkKind::Data) {
            status = WriteData(*fork, position, requestCount, static_cast<const char *>(buffer), done);
        } else if (requestCount > 0) {
            const UInt64 end = static_cast<UInt64>(position) + requestCount;
            if (end > 0x7FFFFFFF)
                return dskFulErr;
            if (end > fork->bytes.size())
                fork->bytes.resize(static_cast<size_t>(end));
            std::memcpy(&fork->bytes[static_cast<size_t>(position)], buffer, requestCount);
            fork->dirty = true;
            done = requestCount;
        }
    } catch (...) {
        return memFullErr;
    }
    fork->mark = position + static_cast<SInt64>(done);
    if (actualCount)
        *actualCount = done;
    return status;
}

extern "C" OSErr FSGetForkPosition(FSIORefNum forkRefNum, SInt64 *position)
{
    const auto fork = Forks().Find(forkRefNum);
    if (!fork)
        return rfNumErr;
    if (!position)
        return paramErr;
    std::lock_guard<std::mutex> guard(fork->lock);
    *position = fork->mark;
    return noErr;
}

extern "C" OSErr FSSetForkPosition(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset)
{
    const auto fork = Forks().Find(forkRefNum);
    if (!fork)
        return rfNumErr;
    std::lock_guard<std::mutex> guard(fork->lock);
    SInt64 position;
    const SInt64 size = SizeOf(*fork);
    const OSErr status = Position(*fork, positionMode, positionOffset, size, position);
    if (status != noErr)
        return status;
    if (position > size)
        return eofErr;
    fork->mark = position;
    return noErr;
}

extern "C" OSErr FSGetForkSize(FSIORefNum forkRefNum, SInt64 *forkSize)
{
    if (forkSize)
        *forkSize = 0;
    const auto fork = Forks().Find(forkRefNum);
    if (!fork)
        return rfNumErr;
    if (!forkSize)
        return paramErr;
    std::lock_guard<std::mutex> guard(fork->lock);
    *forkSize = SizeOf(*fork);
    return noErr;
}

extern "C" OSErr FSSetForkSize(FSIORefNum forkRefNum, UInt16 positionMode, SInt64 positionOffset)
{
    const auto fork = Forks().Find(forkRefNum);
    if (!fork)
        return rfNumErr;
    std::lock_guard<std::mutex> guard(fork->lock);
    SInt64 size;
    OSErr status = Position(*fork, positionMode, positionOffset, SizeOf(*fork), size);
    if (status != noErr)
        return status;
    try {
        status = SetSize(*fork, size);
    } catch (...) {
        return memFullErr;
    }
    if (status == noErr && fork->mark > size)
        fork->mark = size;
    return status;
}

extern "C" OSErr FSFlushFork(FSIORefNum forkRefNum)
{
    const auto fork = Forks().Find(forkRefNum);
    if (!fork)
        return rfNumErr;
    std::lock_guard<std::mutex> guard(fork->lock);
    try {
        return Flush(*fork);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSCloseFork(FSIORefNum forkRefNum)
{
    const auto fork = Forks().Remove(forkRefNum);
    if (!fork)
        return rfNumErr;
    std::lock_guard<std::mutex> guard(fork->lock);
    OSErr status;
    try {
        status = Flush(*fork);
    } catch (...) {
        status = memFullErr;
    }
    if (fork->fd >= 0 && close(fork->fd) != 0 && status == noErr)
        status = ioErr;
    fork->fd = -1;
    return status;
}
