/* The Resource Manager over open forks: each resource file keeps its parsed
 * map in memory and its fork open, and is written back whole on update. */
#include <CoreServices/Resources.h>

#include "ResourceMap.h"

#include <cstring>
#include <list>
#include <memory>
#include <mutex>
#include <vector>

using resources::Resource;
using resources::ResourceForkImage;
using resources::ResourceMap;

namespace {

struct LoadedResource {
    Resource resource;
    Handle handle = nullptr; // while loaded: owned here unless detached
};

struct TypeList {
    ResType type;
    std::list<LoadedResource> resources; // newest first, as AddResource puts them
};

struct ResourceFile {
    ResFileRefNum refNum = 0;
    FSIORefNum fork = 0;
    FSVolumeRefNum volume = 0;
    UInt32 nodeID = 0;
    bool writable = false;
    bool changed = false;
    std::string reserved;
    UInt16 mapAttributes = 0;
    std::list<TypeList> types;
};

struct Found {
    ResourceFile *file = nullptr;
    TypeList *list = nullptr;
    std::list<LoadedResource>::iterator entry;
};

std::mutex gLock;
std::vector<std::unique_ptr<ResourceFile>> gFiles; // in the order they were opened
ResFileRefNum gCurrent = 0;
OSErr gError = noErr;

ResourceFile *FileOf(ResFileRefNum refNum)
{
    for (auto &file : gFiles)
        if (file->refNum == refNum)
            return file.get();
    return nullptr;
}

// The current file, then those opened before it; only the current one for
// the Get1... calls.
std::vector<ResourceFile *> SearchOrder(bool onlyCurrent)
{
    std::vector<ResourceFile *> order;
    for (size_t k = gFiles.size(); k-- > 0;) {
        if (order.empty() && gFiles[k]->refNum != gCurrent)
            continue;
        order.push_back(gFiles[k].get());
        if (onlyCurrent)
            break;
    }
    return order;
}

TypeList *ListOf(ResourceFile &file, ResType type)
{
    for (TypeList &list : file.types)
        if (list.type == type)
            return &list;
    return nullptr;
}

bool FindHandle(Handle handle, Found &found)
{
    if (!handle)
        return false;
    for (auto &file : gFiles)
        for (TypeList &list : file->types)
            for (auto entry = list.resources.begin(); entry != list.resources.end(); ++entry)
                if (entry->handle == handle) {
                    found.file = file.get();
                    found.list = &list;
                    found.entry = entry;
                    return true;
                }
    return false;
}

std::string PascalText(ConstStr255Param name)
{
    return name ? std::string(reinterpret_cast<const char *>(name + 1), name[0]) : std::string();
}

// The resource's handle, made from its bytes on first use.
Handle Load(LoadedResource &entry)
{
    if (!entry.handle) {
        Handle handle = nullptr;
        if (PtrToHand(entry.resource.data.data(), &handle, static_cast<long>(entry.resource.data.size())) != noErr)
            return nullptr;
        entry.handle = handle;
    }
    return entry.handle;
}

Handle GetFrom(const std::vector<ResourceFile *> &files, ResType type, const ResID *id, ConstStr255Param name)
{
    const std::string wanted = PascalText(name);
    for (ResourceFile *file : files) {
        TypeList *list = ListOf(*file, type);
        if (!list)
            continue;
        for (LoadedResource &entry : list->resources) {
            const bool match = id ? entry.resource.id == *id
                                  : entry.resource.hasName && entry.resource.name == wanted;
            if (!match)
                continue;
            Handle handle = Load(entry);
            gError = handle ? OSErr(noErr) : OSErr(memFullErr);
            return handle;
        }
    }
    gError = resNotFound;
    return nullptr;
}

// Copies the changed handles' bytes into the map and writes the whole fork.
OSErr Update(ResourceFile &file)
{
    if (!file.changed)
        return noErr;
    if (!file.writable)
        return wrPermErr;
    ResourceForkImage image;
    image.reserved = file.reserved;
    image.mapAttributes = file.mapAttributes;
    for (TypeList &list : file.types) {
        if (list.resources.empty())
            continue;
        resources::ResourceTypeList stored;
        stored.type = list.type;
        for (LoadedResource &entry : list.resources) {
            if ((entry.resource.attributes & resChanged) && entry.handle) {
                entry.resource.data.assign(*entry.handle, static_cast<size_t>(GetHandleSize(entry.handle)));
            }
            Resource resource = entry.resource;
            resource.attributes &= static_cast<UInt8>(~resChanged);
            stored.resources.push_back(std::move(resource));
        }
        image.types.push_back(std::move(stored));
    }
    std::string fork;
    if (!ResourceMap::Build(image, fork))
        return memFullErr;
    ByteCount written = 0;
    OSErr status = FSWriteFork(file.fork, fsFromStart, 0, fork.size(), fork.data(), &written);
    if (status == noErr)
        status = FSSetForkSize(file.fork, fsFromStart, static_cast<SInt64>(fork.size()));
    if (status == noErr)
        status = FSFlushFork(file.fork);
    if (status != noErr)
        return status;
    for (TypeList &list : file.types)
        for (LoadedResource &entry : list.resources)
            entry.resource.attributes &= static_cast<UInt8>(~resChanged);
    file.changed = false;
    return noErr;
}

OSErr ReadImage(FSIORefNum fork, ResourceForkImage &image)
{
    SInt64 size = 0;
    OSErr status = FSGetForkSize(fork, &size);
    if (status != noErr)
        return status;
    if (size == 0)
        return eofErr;
    if (size > 0x7FFFFFFF)
        return mapReadErr;
    std::string bytes(static_cast<size_t>(size), '\0');
    ByteCount read = 0;
    status = FSReadFork(fork, fsFromStart, 0, bytes.size(), &bytes[0], &read);
    if (status != noErr)
        return status;
    return ResourceMap::Parse(bytes, image) ? OSErr(noErr) : OSErr(mapReadErr);
}

OSErr Open(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName, SInt8 permissions,
           ResFileRefNum &refNum)
{
    FSCatalogInfo info;
    OSErr status = FSGetCatalogInfo(ref, kFSCatInfoNodeID | kFSCatInfoVolume, &info, nullptr, nullptr, nullptr);
    if (status != noErr)
        return status;
    for (auto &file : gFiles)
        if (file->volume == info.volume && file->nodeID == info.nodeID) {
            refNum = file->refNum; // a file open already answers its number again
            gCurrent = refNum;
            return noErr;
        }
    FSIORefNum fork = 0;
    const SInt8 access = (permissions & 0x7) == fsCurPerm ? SInt8(fsRdWrPerm) : permissions;
    status = FSOpenFork(ref, forkNameLength, forkName, access, &fork);
    if ((status == permErr || status == afpAccessDenied || status == opWrErr) && (permissions & 0x7) == fsCurPerm)
        status = FSOpenFork(ref, forkNameLength, forkName, fsRdPerm, &fork);
    if (status != noErr)
        return status;
    ResourceForkImage image;
    status = ReadImage(fork, image);
    if (status != noErr) {
        FSCloseFork(fork);
        return status;
    }
    auto file = std::make_unique<ResourceFile>();
    file->refNum = fork;
    file->fork = fork;
    file->volume = info.volume;
    file->nodeID = info.nodeID;
    SInt64 probe = 0;
    file->writable = FSWriteFork(fork, fsFromStart, 0, 0, &probe, nullptr) == noErr;
    file->reserved = image.reserved;
    file->mapAttributes = image.mapAttributes;
    for (auto &stored : image.types) {
        TypeList list{stored.type, {}};
        for (auto &resource : stored.resources)
            list.resources.push_back(LoadedResource{std::move(resource), nullptr});
        file->types.push_back(std::move(list));
    }
    refNum = file->refNum;
    gFiles.push_back(std::move(file));
    gCurrent = refNum;
    return noErr;
}

void DisposeHandles(ResourceFile &file)
{
    for (TypeList &list : file.types)
        for (LoadedResource &entry : list.resources)
            if (entry.handle)
                DisposeHandle(entry.handle);
}

// Runs body under the lock; an exception becomes memFullErr.
template <typename Body> void Locked(Body body)
{
    std::lock_guard<std::mutex> guard(gLock);
    try {
        body();
    } catch (...) {
        gError = memFullErr;
    }
}

} // namespace

extern "C" {

OSErr ResError(void)
{
    std::lock_guard<std::mutex> guard(gLock);
    return gError;
}

ResFileRefNum CurResFile(void)
{
    std::lock_guard<std::mutex> guard(gLock);
    gError = noErr;
    return gCurrent;
}

void UseResFile(ResFileRefNum refNum)
{
    Locked([&] {
        if (refNum != 0 && !FileOf(refNum)) {
            gError = resFNotFound;
            return;
        }
        gCurrent = refNum;
        gError = noErr;
    });
}

void UpdateResFile(ResFileRefNum refNum)
{
    Locked([&] {
        ResourceFile *file = FileOf(refNum);
        gError = file ? Update(*file) : OSErr(resFNotFound);
    });
}

void CloseResFile(ResFileRefNum refNum)
{
    Locked([&] {
        for (size_t k = 0; k < gFiles.size(); ++k) {
            if (gFiles[k]->refNum != refNum)
                continue;
            ResourceFile &file = *gFiles[k];
            gError = Update(file);
            DisposeHandles(file);
            FSCloseFork(file.fork);
            if (gCurrent == refNum)
                gCurrent = k > 0 ? gFiles[k - 1]->refNum : 0;
            gFiles.erase(gFiles.begin() + static_cast<long>(k));
            return;
        }
        gError = resFNotFound;
    });
}

OSErr FSOpenResourceFile(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName,
                         SInt8 permissions, ResFileRefNum *refNum)
{
    if (refNum)
        *refNum = -1;
    OSErr result = paramErr;
    Locked([&] {
        gError = paramErr;
        if (ref && refNum)
            gError = Open(ref, forkNameLength, forkName, permissions, *refNum);
        result = gError;
    });
    return result;
}

ResFileRefNum FSOpenResFile(const FSRef *ref, SInt8 permission)
{
    HFSUniStr255 name;
    FSGetResourceForkName(&name);
    ResFileRefNum refNum = -1;
    FSOpenResourceFile(ref, name.length, name.unicode, permission, &refNum);
    return refNum;
}

OSErr FSCreateResourceFork(const FSRef *ref, UniCharCount forkNameLength, const UniChar *forkName, UInt32)
{
    OSErr status = FSCreateFork(ref, forkNameLength, forkName);
    if (status != noErr)
        return status;
    FSIORefNum fork = 0;
    status = FSOpenFork(ref, forkNameLength, forkName, fsRdWrPerm, &fork);
    if (status != noErr)
        return status;
    try {
        const std::string empty = ResourceMap::EmptyFork();
        status = FSWriteFork(fork, fsFromStart, 0, empty.size(), empty.data(), nullptr);
    } catch (...) {
        status = memFullErr;
    }
    const OSErr closed = FSCloseFork(fork);
    return status != noErr ? status : closed;
}

OSErr FSCreateResourceFile(const FSRef *parentRef, UniCharCount nameLength, const UniChar *name,
                           FSCatalogInfoBitmap whichInfo, const FSCatalogInfo *catalogInfo,
                           UniCharCount forkNameLength, const UniChar *forkName, FSRef *newRef,
                           FSSpecPtr newSpec)
{
    FSRef created;
    OSErr status = FSCreateFileUnicode(parentRef, nameLength, name, whichInfo, catalogInfo, &created, newSpec);
    if (status == noErr)
        status = FSCreateResourceFork(&created, forkNameLength, forkName, 0);
    if (newRef) {
        if (status == noErr)
            *newRef = created;
        else
            std::memset(newRef, 0, sizeof *newRef);
    }
    return status;
}

void FSCreateResFile(const FSRef *parentRef, UniCharCount nameLength, const UniChar *name,
                     FSCatalogInfoBitmap whichInfo, const FSCatalogInfo *catalogInfo, FSRef *newRef,
                     FSSpecPtr newSpec)
{
    HFSUniStr255 fork;
    FSGetResourceForkName(&fork);
    const OSErr status = FSCreateResourceFile(parentRef, nameLength, name, whichInfo, catalogInfo, fork.length,
                                              fork.unicode, newRef, newSpec);
    std::lock_guard<std::mutex> guard(gLock);
    gError = status;
}

Handle Get1Resource(ResType theType, ResID theID)
{
    Handle handle = nullptr;
    Locked([&] { handle = GetFrom(SearchOrder(true), theType, &theID, nullptr); });
    return handle;
}

Handle GetResource(ResType theType, ResID theID)
{
    Handle handle = nullptr;
    Locked([&] { handle = GetFrom(SearchOrder(false), theType, &theID, nullptr); });
    return handle;
}

Handle Get1NamedResource(ResType theType, ConstStr255Param name)
{
    Handle handle = nullptr;
    Locked([&] {
        gError = resNotFound;
        if (name)
            handle = GetFrom(SearchOrder(true), theType, nullptr, name);
    });
    return handle;
}

Handle GetNamedResource(ResType theType, ConstStr255Param name)
{
    Handle handle = nullptr;
    Locked([&] {
        gError = resNotFound;
        if (name)
            handle = GetFrom(SearchOrder(false), theType, nullptr, name);
    });
    return handle;
}

ResourceCount Count1Resources(ResType theType)
{
    ResourceCount count = 0;
    Locked([&] {
        gError = noErr;
        for (ResourceFile *file : SearchOrder(true))
            if (TypeList *list = ListOf(*file, theType))
                count = static_cast<ResourceCount>(list->resources.size());
    });
    return count;
}

Handle Get1IndResource(ResType theType, ResourceIndex index)
{
    Handle handle = nullptr;
    Locked([&] {
        gError = resNotFound;
        for (ResourceFile *file : SearchOrder(true)) {
            TypeList *list = ListOf(*file, theType);
            if (!list || index < 1 || static_cast<size_t>(index) > list->resources.size())
                return;
            auto entry = list->resources.begin();
            std::advance(entry, index - 1);
            handle = Load(*entry);
            gError = handle ? OSErr(noErr) : OSErr(memFullErr);
        }
    });
    return handle;
}

ResourceCount Count1Types(void)
{
    ResourceCount count = 0;
    Locked([&] {
        gError = noErr;
        for (ResourceFile *file : SearchOrder(true))
            for (const TypeList &list : file->types)
                if (!list.resources.empty())
                    ++count;
    });
    return count;
}

void Get1IndType(ResType *theType, ResourceIndex index)
{
    if (!theType)
        return;
    *theType = 0;
    Locked([&] {
        gError = resNotFound;
        for (ResourceFile *file : SearchOrder(true)) {
            ResourceIndex k = 0;
            for (const TypeList &list : file->types)
                if (!list.resources.empty() && ++k == index) {
                    *theType = list.type;
                    gError = noErr;
                    return;
                }
        }
    });
}

void AddResource(Handle theData, ResType theType, ResID theID, ConstStr255Param name)
{
    Locked([&] {
        Found found;
        ResourceFile *file = FileOf(gCurrent);
        if (!theData || FindHandle(theData, found) || !file || !file->writable) {
            gError = addResFailed;
            return;
        }
        TypeList *list = ListOf(*file, theType);
        if (!list) {
            file->types.push_back(TypeList{theType, {}});
            list = &file->types.back();
        }
        LoadedResource entry;
        entry.resource.id = theID;
        entry.resource.hasName = name != nullptr && name[0] > 0;
        entry.resource.name = PascalText(name);
        entry.resource.attributes = resChanged;
        entry.handle = theData;
        list->resources.push_front(std::move(entry));
        file->changed = true;
        gError = noErr;
    });
}

void ChangedResource(Handle theResource)
{
    Locked([&] {
        Found found;
        if (!FindHandle(theResource, found)) {
            gError = resNotFound;
            return;
        }
        if (found.entry->resource.attributes & resProtected) {
            gError = resAttrErr;
            return;
        }
        found.entry->resource.attributes |= resChanged;
        found.file->changed = true;
        gError = noErr;
    });
}

void WriteResource(Handle theResource)
{
    Locked([&] {
        Found found;
        if (!FindHandle(theResource, found)) {
            gError = resNotFound;
            return;
        }
        gError = (found.entry->resource.attributes & resChanged) ? Update(*found.file) : OSErr(noErr);
    });
}

void RemoveResource(Handle theResource)
{
    Locked([&] {
        Found found;
        if (!FindHandle(theResource, found)) {
            gError = resNotFound;
            return;
        }
        if ((found.entry->resource.attributes & resProtected) || !found.file->writable) {
            gError = rmvResFailed;
            return;
        }
        found.list->resources.erase(found.entry);
        found.file->changed = true;
        gError = noErr;
    });
}

void ReleaseResource(Handle theResource)
{
    Locked([&] {
        Found found;
        if (!FindHandle(theResource, found)) {
            gError = resNotFound;
            return;
        }
        if (found.entry->resource.attributes & resChanged) {
            gError = resAttrErr;
            return;
        }
        DisposeHandle(found.entry->handle);
        found.entry->handle = nullptr;
        gError = noErr;
    });
}

void DetachResource(Handle theResource)
{
    Locked([&] {
        Found found;
        if (!FindHandle(theResource, found)) {
            gError = resNotFound;
            return;
        }
        if (found.entry->resource.attributes & resChanged) {
            gError = resAttrErr;
            return;
        }
        found.entry->handle = nullptr;
        gError = noErr;
    });
}

void GetResInfo(Handle theResource, ResID *theID, ResType *theType, Str255 name)
{
    Locked([&] {
        Found found;
        if (!FindHandle(theResource, found)) {
            gError = resNotFound;
            return;
        }
        const Resource &resource = found.entry->resource;
        if (theID)
            *theID = resource.id;
        if (theType)
            *theType = found.list->type;
        if (name) {
            name[0] = static_cast<unsigned char>(resource.name.size());
            std::memcpy(name + 1, resource.name.data(), resource.name.size());
        }
        gError = noErr;
    });
}

void SetResInfo(Handle theResource, ResID theID, ConstStr255Param name)
{
    Locked([&] {
        Found found;
        if (!FindHandle(theResource, found)) {
            gError = resNotFound;
            return;
        }
        Resource &resource = found.entry->resource;
        if (resource.attributes & resProtected) {
            gError = resAttrErr;
            return;
        }
        resource.id = theID;
        if (name) {
            resource.hasName = name[0] > 0;
            resource.name = PascalText(name);
        }
        found.file->changed = true;
        gError = noErr;
    });
}

ResAttributes GetResAttrs(Handle theResource)
{
    ResAttributes attributes = 0;
    Locked([&] {
        Found found;
        gError = FindHandle(theResource, found) ? OSErr(noErr) : OSErr(resNotFound);
        if (gError == noErr)
            attributes = found.entry->resource.attributes;
    });
    return attributes;
}

void SetResAttrs(Handle theResource, ResAttributes attrs)
{
    Locked([&] {
        Found found;
        gError = FindHandle(theResource, found) ? OSErr(noErr) : OSErr(resNotFound);
        if (gError == noErr) {
            found.entry->resource.attributes = static_cast<UInt8>(attrs);
            found.file->changed = true;
        }
    });
}

ResFileRefNum HomeResFile(Handle theResource)
{
    ResFileRefNum refNum = -1;
    Locked([&] {
        Found found;
        gError = FindHandle(theResource, found) ? OSErr(noErr) : OSErr(resNotFound);
        if (gError == noErr)
            refNum = found.file->refNum;
    });
    return refNum;
}

ResID Unique1ID(ResType theType)
{
    ResID id = 128;
    Locked([&] {
        gError = noErr;
        std::vector<ResourceFile *> files = SearchOrder(true);
        TypeList *list = files.empty() ? nullptr : ListOf(*files[0], theType);
        for (bool taken = true; taken && list; ++id) {
            taken = false;
            for (const LoadedResource &entry : list->resources)
                taken = taken || entry.resource.id == id;
            if (!taken)
                return;
        }
    });
    return id;
}

} // extern "C"
