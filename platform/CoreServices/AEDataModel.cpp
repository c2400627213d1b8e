// Apple Event descriptors: a type code and a private copy of the data, with
// the items of lists, records and events held as descriptors of their own.
#include <CoreServices/AEDataModel.h>
#include <CoreServices/Aliases.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include "AEStorage.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>
#include <string>
#include <vector>

using koru::ae::Child;

namespace {

constexpr unsigned kMaxFlattenDepth = 64;

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

// Descriptors are moved in and out of the tree by value: a child owns a
// storage object, a descriptor points at one.
OSErr CopyOut(DescType type, const OpaqueAEDataStorageType &storage, AEDesc *result)
{
    try {
        result->dataHandle = new OpaqueAEDataStorageType(storage);
        result->descriptorType = type;
        return noErr;
    } catch (...) {
        AEInitializeDesc(result);
        return memFullErr;
    }
}

OSErr MakeChild(AEKeyword key, const AEDesc *desc, Child *child)
{
    try {
        child->key = key;
        child->type = desc->descriptorType;
        if (desc->dataHandle != nullptr)
            child->value = *desc->dataHandle;
        return noErr;
    } catch (...) {
        return memFullErr;
    }
}

bool IsList(const AEDesc *desc)
{
    return desc != nullptr && desc->dataHandle != nullptr && desc->dataHandle->kind != koru::ae::Kind::plain;
}

bool IsRecordLike(const AEDesc *desc)
{
    return IsList(desc) && desc->dataHandle->kind != koru::ae::Kind::list;
}

bool IsEvent(const AEDesc *desc)
{
    return IsList(desc) && desc->dataHandle->kind == koru::ae::Kind::event;
}

std::vector<Child>::iterator FindKey(std::vector<Child> &items, AEKeyword key)
{
    return std::find_if(items.begin(), items.end(), [key](const Child &c) { return c.key == key; });
}

std::vector<Child>::const_iterator FindKey(const std::vector<Child> &items, AEKeyword key)
{
    return std::find_if(items.begin(), items.end(), [key](const Child &c) { return c.key == key; });
}

// Copies a child out as a descriptor coerced to desiredType.
OSErr GetChild(const Child &child, DescType desiredType, AEDesc *result)
{
    AEInitializeDesc(result);
    if (desiredType == typeWildCard || desiredType == child.type)
        return CopyOut(child.type, child.value, result);
    AEDesc view;
    OSErr err = CopyOut(child.type, child.value, &view);
    if (err != noErr)
        return err;
    err = AECoerceDesc(&view, desiredType, result);
    AEDisposeDesc(&view);
    return err;
}

OSErr GetChildPtr(const Child &child, DescType desiredType, DescType *typeCode, void *dataPtr,
                  Size maximumSize, Size *actualSize)
{
    if (maximumSize < 0 || (dataPtr == nullptr && maximumSize > 0))
        return paramErr;
    AEDesc value;
    OSErr err = GetChild(child, desiredType, &value);
    if (err != noErr)
        return err;
    if (typeCode != nullptr)
        *typeCode = value.descriptorType;
    const Size size = AEGetDescDataSize(&value);
    if (actualSize != nullptr)
        *actualSize = size;
    if (dataPtr != nullptr)
        AEGetDescData(&value, dataPtr, std::min(size, maximumSize));
    AEDisposeDesc(&value);
    return noErr;
}

OSErr PutKeyed(std::vector<Child> &items, AEKeyword key, const AEDesc *desc)
{
    if (desc == nullptr)
        return paramErr;
    Child child;
    OSErr err = MakeChild(key, desc, &child);
    if (err != noErr)
        return err;
    try {
        auto found = FindKey(items, key);
        if (found != items.end())
            *found = std::move(child);
        else
            items.push_back(std::move(child));
        return noErr;
    } catch (...) {
        return memFullErr;
    }
}

OSErr PutKeyedPtr(std::vector<Child> &items, AEKeyword key, DescType typeCode, const void *dataPtr,
                  Size dataSize)
{
    AEDesc desc;
    OSErr err = AECreateDesc(typeCode, dataPtr, dataSize, &desc);
    if (err != noErr)
        return err;
    err = PutKeyed(items, key, &desc);
    AEDisposeDesc(&desc);
    return err;
}

OSErr GetKeyed(const std::vector<Child> &items, AEKeyword key, DescType desiredType, AEDesc *result)
{
    auto found = FindKey(items, key);
    if (found == items.end())
        return errAEDescNotFound;
    return GetChild(*found, desiredType, result);
}

OSErr GetKeyedPtr(const std::vector<Child> &items, AEKeyword key, DescType desiredType,
                  DescType *typeCode, void *dataPtr, Size maximumSize, Size *actualSize)
{
    auto found = FindKey(items, key);
    if (found == items.end())
        return errAEDescNotFound;
    return GetChildPtr(*found, desiredType, typeCode, dataPtr, maximumSize, actualSize);
}

OSErr DeleteKeyed(std::vector<Child> &items, AEKeyword key)
{
    auto found = FindKey(items, key);
    if (found == items.end())
        return errAEDescNotFound;
    items.erase(found);
    return noErr;
}

// --- Flattening: type, kind, data length and bytes, items, attributes; all
// numbers big-endian so the stream reads the same on any host.

void PutU32(std::vector<unsigned char> &out, UInt32 value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(static_cast<unsigned char>(value >> shift));
}

void FlattenNode(DescType type, const OpaqueAEDataStorageType *node, std::vector<unsigned char> &out)
{
    PutU32(out, type);
    if (node == nullptr) {
        out.push_back(0);
        PutU32(out, 0);
        return;
    }
    out.push_back(static_cast<unsigned char>(node->kind));
    PutU32(out, static_cast<UInt32>(node->bytes.size()));
    out.insert(out.end(), node->bytes.begin(), node->bytes.end());
    if (node->kind == koru::ae::Kind::plain)
        return;
    for (const std::vector<Child> *items : {&node->items, &node->attributes}) {
        PutU32(out, static_cast<UInt32>(items->size()));
        for (const Child &child : *items) {
            PutU32(out, child.key);
            FlattenNode(child.type, &child.value, out);
        }
    }
}

class Reader {
public:
    Reader(const unsigned char *data, size_t size) : data_(data), size_(size) {}
    bool U32(UInt32 *value)
    {
        if (size_ - pos_ < 4)
            return false;
        *value = (UInt32(data_[pos_]) << 24) | (UInt32(data_[pos_ + 1]) << 16) |
                 (UInt32(data_[pos_ + 2]) << 8) | UInt32(data_[pos_ + 3]);
        pos_ += 4;
        return true;
    }
    bool Byte(unsigned char *value)
    {
        if (pos_ >= size_)
            return false;
        *value = data_[pos_++];
        return true;
    }
    bool Bytes(size_t count, std::vector<unsigned char> *out)
    {
        if (size_ - pos_ < count)
            return false;
        out->assign(data_ + pos_, data_ + pos_ + count);
        pos_ += count;
        return true;
    }

private:
    const unsigned char *data_;
    size_t size_;
    size_t pos_ = 0;
};

bool ReadNode(Reader &in, unsigned depth, DescType *type, OpaqueAEDataStorageType *node)
{
    unsigned char kind = 0;
    UInt32 length = 0;
    if (depth > kMaxFlattenDepth || !in.U32(type) || !in.Byte(&kind) || kind > 3 || !in.U32(&length) ||
        !in.Bytes(length, &node->bytes))
        return false;
    node->kind = static_cast<koru::ae::Kind>(kind);
    if (node->kind == koru::ae::Kind::plain)
        return true;
    for (std::vector<Child> *items : {&node->items, &node->attributes}) {
        UInt32 count = 0;
        if (!in.U32(&count))
            return false;
        for (UInt32 i = 0; i < count; ++i) {
            Child child;
            if (!in.U32(&child.key) || !ReadNode(in, depth + 1, &child.type, &child.value))
                return false;
            items->push_back(std::move(child));
        }
    }
    return true;
}

std::atomic<int> gNextReturnID{1};

} // namespace

namespace koru::ae {

std::vector<unsigned char> Flatten(const AEDesc &desc)
{
    std::vector<unsigned char> out(4);
    FlattenNode(desc.descriptorType, desc.dataHandle, out);
    const auto total = static_cast<UInt32>(out.size());
    for (int i = 0; i < 4; ++i)
        out[i] = static_cast<unsigned char>(total >> (24 - 8 * i));
    return out;
}

OSErr Unflatten(const void *data, size_t size, AEDesc *result)
{
    AEInitializeDesc(result);
    if (data == nullptr)
        return paramErr;
    try {
        Reader header(static_cast<const unsigned char *>(data), size);
        UInt32 total = 0;
        if (!header.U32(&total) || total > size || total < 4)
            return errAECorruptData;
        Reader in(static_cast<const unsigned char *>(data) + 4, total - 4);
        DescType type = typeNull;
        auto *node = new OpaqueAEDataStorageType;
        if (!ReadNode(in, 0, &type, node)) {
            delete node;
            return errAECorruptData;
        }
        result->descriptorType = type;
        result->dataHandle = node;
        return noErr;
    } catch (...) {
        return memFullErr;
    }
}

} // namespace koru::ae

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
        const DescType type = theAEDesc->descriptorType;
        AEInitializeDesc(result);
        result->descriptorType = type;
        return noErr;
    }
    // Copy the source before the result is set, in case both are the same record.
    const DescType type = theAEDesc->descriptorType;
    const OpaqueAEDataStorageType *source = theAEDesc->dataHandle;
    AEDesc copy;
    OSErr err = CopyOut(type, *source, &copy);
    if (err != noErr)
        return err;
    *result = copy;
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

// --- Lists and records ---------------------------------------------------

extern "C" OSErr AECreateList(const void *, Size, Boolean isRecord, AEDescList *resultList)
{
    if (resultList == nullptr)
        return paramErr;
    AEInitializeDesc(resultList);
    try {
        resultList->dataHandle = new OpaqueAEDataStorageType;
    } catch (...) {
        return memFullErr;
    }
    resultList->dataHandle->kind = isRecord ? koru::ae::Kind::record : koru::ae::Kind::list;
    resultList->descriptorType = isRecord ? typeAERecord : typeAEList;
    return noErr;
}

extern "C" OSErr AECountItems(const AEDescList *theAEDescList, long *theCount)
{
    if (theAEDescList == nullptr || theCount == nullptr)
        return paramErr;
    *theCount = 0;
    if (!IsList(theAEDescList))
        return errAEWrongDataType;
    *theCount = static_cast<long>(theAEDescList->dataHandle->items.size());
    return noErr;
}

extern "C" OSErr AEPutDesc(AEDescList *theAEDescList, long index, const AEDesc *theAEDesc)
{
    if (theAEDescList == nullptr || theAEDesc == nullptr || index < 0)
        return paramErr;
    if (!IsList(theAEDescList))
        return errAEWrongDataType;
    std::vector<Child> &items = theAEDescList->dataHandle->items;
    const long count = static_cast<long>(items.size());
    if (index > count + 1)
        return errAEIllegalIndex;
    Child child;
    OSErr err = MakeChild(typeWildCard, theAEDesc, &child);
    if (err != noErr)
        return err;
    try {
        if (index == 0 || index == count + 1) {
            items.push_back(std::move(child));
        } else {
            child.key = items[index - 1].key;
            items[index - 1] = std::move(child);
        }
        return noErr;
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr AEPutPtr(AEDescList *theAEDescList, long index, DescType typeCode, const void *dataPtr,
                          Size dataSize)
{
    AEDesc desc;
    OSErr err = AECreateDesc(typeCode, dataPtr, dataSize, &desc);
    if (err != noErr)
        return err;
    err = AEPutDesc(theAEDescList, index, &desc);
    AEDisposeDesc(&desc);
    return err;
}

static const Child *NthChild(const AEDescList *list, long index, OSErr *err)
{
    if (list == nullptr) {
        *err = paramErr;
        return nullptr;
    }
    if (!IsList(list)) {
        *err = errAEWrongDataType;
        return nullptr;
    }
    const std::vector<Child> &items = list->dataHandle->items;
    if (index < 1 || index > static_cast<long>(items.size())) {
        *err = errAEIllegalIndex;
        return nullptr;
    }
    *err = noErr;
    return &items[index - 1];
}

extern "C" OSErr AEGetNthDesc(const AEDescList *theAEDescList, long index, DescType desiredType,
                              AEKeyword *theAEKeyword, AEDesc *result)
{
    if (result == nullptr)
        return paramErr;
    AEInitializeDesc(result);
    OSErr err = noErr;
    const Child *child = NthChild(theAEDescList, index, &err);
    if (child == nullptr)
        return err;
    if (theAEKeyword != nullptr)
        *theAEKeyword = child->key;
    return GetChild(*child, desiredType, result);
}

extern "C" OSErr AEGetNthPtr(const AEDescList *theAEDescList, long index, DescType desiredType,
                             AEKeyword *theAEKeyword, DescType *typeCode, void *dataPtr, Size maximumSize,
                             Size *actualSize)
{
    OSErr err = noErr;
    const Child *child = NthChild(theAEDescList, index, &err);
    if (child == nullptr)
        return err;
    if (theAEKeyword != nullptr)
        *theAEKeyword = child->key;
    return GetChildPtr(*child, desiredType, typeCode, dataPtr, maximumSize, actualSize);
}

extern "C" OSErr AESizeOfNthItem(const AEDescList *theAEDescList, long index, DescType *typeCode,
                                 Size *dataSize)
{
    OSErr err = noErr;
    const Child *child = NthChild(theAEDescList, index, &err);
    if (child == nullptr)
        return err;
    if (typeCode != nullptr)
        *typeCode = child->type;
    if (dataSize != nullptr)
        *dataSize = static_cast<Size>(child->value.bytes.size());
    return noErr;
}

extern "C" OSErr AEDeleteItem(AEDescList *theAEDescList, long index)
{
    OSErr err = noErr;
    if (NthChild(theAEDescList, index, &err) == nullptr)
        return err;
    std::vector<Child> &items = theAEDescList->dataHandle->items;
    items.erase(items.begin() + (index - 1));
    return noErr;
}

extern "C" Boolean AECheckIsRecord(const AEDesc *theDesc)
{
    return IsRecordLike(theDesc);
}

extern "C" OSErr AEPutKeyDesc(AERecord *theAERecord, AEKeyword theAEKeyword, const AEDesc *theAEDesc)
{
    if (theAERecord == nullptr)
        return paramErr;
    if (!IsRecordLike(theAERecord))
        return errAEWrongDataType;
    return PutKeyed(theAERecord->dataHandle->items, theAEKeyword, theAEDesc);
}

extern "C" OSErr AEPutKeyPtr(AERecord *theAERecord, AEKeyword theAEKeyword, DescType typeCode,
                             const void *dataPtr, Size dataSize)
{
    if (theAERecord == nullptr)
        return paramErr;
    if (!IsRecordLike(theAERecord))
        return errAEWrongDataType;
    return PutKeyedPtr(theAERecord->dataHandle->items, theAEKeyword, typeCode, dataPtr, dataSize);
}

extern "C" OSErr AEGetKeyDesc(const AERecord *theAERecord, AEKeyword theAEKeyword, DescType desiredType,
                              AEDesc *result)
{
    if (theAERecord == nullptr || result == nullptr)
        return paramErr;
    AEInitializeDesc(result);
    if (!IsRecordLike(theAERecord))
        return errAEWrongDataType;
    return GetKeyed(theAERecord->dataHandle->items, theAEKeyword, desiredType, result);
}

extern "C" OSErr AEGetKeyPtr(const AERecord *theAERecord, AEKeyword theAEKeyword, DescType desiredType,
                             DescType *typeCode, void *dataPtr, Size maximumSize, Size *actualSize)
{
    if (theAERecord == nullptr)
        return paramErr;
    if (!IsRecordLike(theAERecord))
        return errAEWrongDataType;
    return GetKeyedPtr(theAERecord->dataHandle->items, theAEKeyword, desiredType, typeCode, dataPtr,
                       maximumSize, actualSize);
}

extern "C" OSErr AESizeOfKeyDesc(const AERecord *theAERecord, AEKeyword theAEKeyword, DescType *typeCode,
                                 Size *dataSize)
{
    if (theAERecord == nullptr)
        return paramErr;
    if (!IsRecordLike(theAERecord))
        return errAEWrongDataType;
    const std::vector<Child> &items = theAERecord->dataHandle->items;
    auto found = FindKey(items, theAEKeyword);
    if (found == items.end())
        return errAEDescNotFound;
    if (typeCode != nullptr)
        *typeCode = found->type;
    if (dataSize != nullptr)
        *dataSize = static_cast<Size>(found->value.bytes.size());
    return noErr;
}

extern "C" OSErr AEDeleteKeyDesc(AERecord *theAERecord, AEKeyword theAEKeyword)
{
    if (theAERecord == nullptr)
        return paramErr;
    if (!IsRecordLike(theAERecord))
        return errAEWrongDataType;
    return DeleteKeyed(theAERecord->dataHandle->items, theAEKeyword);
}

// --- Apple events --------------------------------------------------------

extern "C" OSErr AECreateAppleEvent(AEEventClass theAEEventClass, AEEventID theAEEventID,
                                    const AEAddressDesc *target, AEReturnID returnID,
                                    AETransactionID transactionID, AppleEvent *result)
{
    if (result == nullptr)
        return paramErr;
    AEInitializeDesc(result);
    if (target != nullptr && IsList(target))
        return errAEWrongDataType;
    try {
        result->dataHandle = new OpaqueAEDataStorageType;
    } catch (...) {
        return memFullErr;
    }
    result->dataHandle->kind = koru::ae::Kind::event;
    result->descriptorType = typeAppleEvent;
    if (returnID == kAutoGenerateReturnID) {
        // Return ids are positive 16-bit numbers that wrap around.
        returnID = static_cast<AEReturnID>(gNextReturnID.fetch_add(1) % 32767 + 1);
    }
    std::vector<Child> &attributes = result->dataHandle->attributes;
    OSErr err = PutKeyedPtr(attributes, keyEventClassAttr, typeType, &theAEEventClass, sizeof theAEEventClass);
    if (err == noErr)
        err = PutKeyedPtr(attributes, keyEventIDAttr, typeType, &theAEEventID, sizeof theAEEventID);
    if (err == noErr)
        err = PutKeyedPtr(attributes, keyReturnIDAttr, typeSInt16, &returnID, sizeof returnID);
    if (err == noErr)
        err = PutKeyedPtr(attributes, keyTransactionIDAttr, typeSInt32, &transactionID, sizeof transactionID);
    if (err == noErr && target != nullptr)
        err = PutKeyed(attributes, keyAddressAttr, target);
    if (err != noErr)
        AEDisposeDesc(result);
    return err;
}

extern "C" OSErr AEPutParamDesc(AppleEvent *theAppleEvent, AEKeyword theAEKeyword, const AEDesc *theAEDesc)
{
    if (theAppleEvent == nullptr)
        return paramErr;
    if (!IsEvent(theAppleEvent))
        return errAENotAppleEvent;
    return PutKeyed(theAppleEvent->dataHandle->items, theAEKeyword, theAEDesc);
}

extern "C" OSErr AEPutParamPtr(AppleEvent *theAppleEvent, AEKeyword theAEKeyword, DescType typeCode,
                               const void *dataPtr, Size dataSize)
{
    if (theAppleEvent == nullptr)
        return paramErr;
    if (!IsEvent(theAppleEvent))
        return errAENotAppleEvent;
    return PutKeyedPtr(theAppleEvent->dataHandle->items, theAEKeyword, typeCode, dataPtr, dataSize);
}

extern "C" OSErr AEGetParamDesc(const AppleEvent *theAppleEvent, AEKeyword theAEKeyword,
                                DescType desiredType, AEDesc *result)
{
    if (theAppleEvent == nullptr || result == nullptr)
        return paramErr;
    AEInitializeDesc(result);
    if (!IsEvent(theAppleEvent))
        return errAENotAppleEvent;
    return GetKeyed(theAppleEvent->dataHandle->items, theAEKeyword, desiredType, result);
}

extern "C" OSErr AEGetParamPtr(const AppleEvent *theAppleEvent, AEKeyword theAEKeyword, DescType desiredType,
                               DescType *typeCode, void *dataPtr, Size maximumSize, Size *actualSize)
{
    if (theAppleEvent == nullptr)
        return paramErr;
    if (!IsEvent(theAppleEvent))
        return errAENotAppleEvent;
    return GetKeyedPtr(theAppleEvent->dataHandle->items, theAEKeyword, desiredType, typeCode, dataPtr,
                       maximumSize, actualSize);
}

extern "C" OSErr AESizeOfParam(const AppleEvent *theAppleEvent, AEKeyword theAEKeyword, DescType *typeCode,
                               Size *dataSize)
{
    if (theAppleEvent == nullptr)
        return paramErr;
    if (!IsEvent(theAppleEvent))
        return errAENotAppleEvent;
    return AESizeOfKeyDesc(theAppleEvent, theAEKeyword, typeCode, dataSize);
}

extern "C" OSErr AEDeleteParam(AppleEvent *theAppleEvent, AEKeyword theAEKeyword)
{
    if (theAppleEvent == nullptr)
        return paramErr;
    if (!IsEvent(theAppleEvent))
        return errAENotAppleEvent;
    return DeleteKeyed(theAppleEvent->dataHandle->items, theAEKeyword);
}

extern "C" OSErr AEPutAttributeDesc(AppleEvent *theAppleEvent, AEKeyword theAEKeyword,
                                    const AEDesc *theAEDesc)
{
    if (theAppleEvent == nullptr)
        return paramErr;
    if (!IsEvent(theAppleEvent))
        return errAENotAppleEvent;
    return PutKeyed(theAppleEvent->dataHandle->attributes, theAEKeyword, theAEDesc);
}

extern "C" OSErr AEPutAttributePtr(AppleEvent *theAppleEvent, AEKeyword theAEKeyword, DescType typeCode,
                                   const void *dataPtr, Size dataSize)
{
    if (theAppleEvent == nullptr)
        return paramErr;
    if (!IsEvent(theAppleEvent))
        return errAENotAppleEvent;
    return PutKeyedPtr(theAppleEvent->dataHandle->attributes, theAEKeyword, typeCode, dataPtr, dataSize);
}

extern "C" OSErr AEGetAttributeDesc(const AppleEvent *theAppleEvent, AEKeyword theAEKeyword,
                                    DescType desiredType, AEDesc *result)
{
    if (theAppleEvent == nullptr || result == nullptr)
        return paramErr;
    AEInitializeDesc(result);
    if (!IsEvent(theAppleEvent))
        return errAENotAppleEvent;
    return GetKeyed(theAppleEvent->dataHandle->attributes, theAEKeyword, desiredType, result);
}

extern "C" OSErr AEGetAttributePtr(const AppleEvent *theAppleEvent, AEKeyword theAEKeyword,
                                   DescType desiredType, DescType *typeCode, void *dataPtr, Size maximumSize,
                                   Size *actualSize)
{
    if (theAppleEvent == nullptr)
        return paramErr;
    if (!IsEvent(theAppleEvent))
        return errAENotAppleEvent;
    return GetKeyedPtr(theAppleEvent->dataHandle->attributes, theAEKeyword, desiredType, typeCode, dataPtr,
                       maximumSize, actualSize);
}

// --- Flattening ----------------------------------------------------------

extern "C" Size AESizeOfFlattenedDesc(const AEDesc *theAEDesc)
{
    if (theAEDesc == nullptr)
        return 0;
    try {
        return static_cast<Size>(koru::ae::Flatten(*theAEDesc).size());
    } catch (...) {
        return 0;
    }
}

extern "C" OSStatus AEFlattenDesc(const AEDesc *theAEDesc, Ptr buffer, Size bufferSize, Size *actualSize)
{
    if (actualSize != nullptr)
        *actualSize = 0;
    if (theAEDesc == nullptr || buffer == nullptr || bufferSize < 0)
        return paramErr;
    try {
        std::vector<unsigned char> flat = koru::ae::Flatten(*theAEDesc);
        if (static_cast<size_t>(bufferSize) < flat.size())
            return errAEBufferTooSmall;
        std::memcpy(buffer, flat.data(), flat.size());
        if (actualSize != nullptr)
            *actualSize = static_cast<Size>(flat.size());
        return noErr;
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSStatus AEUnflattenDesc(const void *buffer, AEDesc *result)
{
    if (buffer == nullptr || result == nullptr)
        return paramErr;
    // The stream starts with its own length, which the caller vouches for as
    // the Mac's call does; every inner length is checked against it.
    const auto *bytes = static_cast<const unsigned char *>(buffer);
    const size_t total = (size_t(bytes[0]) << 24) | (size_t(bytes[1]) << 16) | (size_t(bytes[2]) << 8) | bytes[3];
    return koru::ae::Unflatten(buffer, total, result);
}
