// Apple Event descriptors: a type code and a private copy of the data.
#include <CoreServices/AEDataModel.h>
#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

struct OpaqueAEDataStorageType {
    std::vector<unsigned char> bytes;
};

namespace {

OSErr MakeStorage(const void *dataPtr, Size dataSize, AEDataStorage *storage)
{
    *storage = nullptr;
    if (dataSize < 0 || (dataPtr == nullptr && dataSize > 0))
        return paramErr;
    try {
        AEDataStorage made = new OpaqueAEDataStorageType;
        const auto *first = static_cast<const unsigned char *>(dataPtr);
        if (dataSize > 0)
            made->bytes.assign(first, first + dataSize);
        *storage = made;
        return noErr;
    } catch (...) {
        return memFullErr;
    }
}

} // namespace

extern "C" void AEInitializeDesc(AEDesc *desc)
{
    if (desc == nullptr)
        return;
    desc->descriptorType = typeNull;
    desc->dataHandle = nullptr;
}

extern "C" OSErr AECreateDesc(DescType typeCode, const void *dataPtr, Size dataSize, AEDesc *result)
{
    if (result == nullptr)
        return paramErr;
    AEInitializeDesc(result);
    AEDataStorage storage = nullptr;
    OSErr err = MakeStorage(dataPtr, dataSize, &storage);
    if (err != noErr)
        return err;
    result->descriptorType = typeCode;
    result->dataHandle = storage;
    return noErr;
}

extern "C" OSErr AEGetDescData(const AEDesc *theAEDesc, void *dataPtr, Size maximumSize)
{
    if (theAEDesc == nullptr || dataPtr == nullptr || maximumSize < 0)
        return paramErr;
    if (theAEDesc->dataHandle == nullptr)
        return noErr;
    const std::vector<unsigned char> &bytes = theAEDesc->dataHandle->bytes;
    const size_t count = std::min(bytes.size(), static_cast<size_t>(maximumSize));
    if (count > 0)
        std::memcpy(dataPtr, bytes.data(), count);
    return noErr;
}

extern "C" Size AEGetDescDataSize(const AEDesc *theAEDesc)
{
    if (theAEDesc == nullptr || theAEDesc->dataHandle == nullptr)
        return 0;
    return static_cast<Size>(theAEDesc->dataHandle->bytes.size());
}

extern "C" OSErr AEReplaceDescData(DescType typeCode, const void *dataPtr, Size dataSize, AEDesc *theAEDesc)
{
    if (theAEDesc == nullptr)
        return paramErr;
    AEDataStorage storage = nullptr;
    OSErr err = MakeStorage(dataPtr, dataSize, &storage);
    if (err != noErr)
        return err;
    delete theAEDesc->dataHandle;
    theAEDesc->descriptorType = typeCode;
    theAEDesc->dataHandle = storage;
    return noErr;
}

extern "C" OSErr AEDuplicateDesc(const AEDesc *theAEDesc, AEDesc *result)
{
    if (theAEDesc == nullptr || result == nullptr)
        return paramErr;
    if (theAEDesc->dataHandle == nullptr) {
        AEInitializeDesc(result);
        result->descriptorType = theAEDesc->descriptorType;
        return noErr;
    }
    // Read the source before the result is set, in case both are the same record.
    const DescType type = theAEDesc->descriptorType;
    const std::vector<unsigned char> &bytes = theAEDesc->dataHandle->bytes;
    AEDataStorage storage = nullptr;
    OSErr err = MakeStorage(bytes.data(), static_cast<Size>(bytes.size()), &storage);
    if (err != noErr)
        return err;
    result->descriptorType = type;
    result->dataHandle = storage;
    return noErr;
}

extern "C" OSErr AEDisposeDesc(AEDesc *theAEDesc)
{
    if (theAEDesc == nullptr)
        return paramErr;
    delete theAEDesc->dataHandle;
    AEInitializeDesc(theAEDesc);
    return noErr;
}
