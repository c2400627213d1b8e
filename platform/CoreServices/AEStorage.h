// The inside of an Apple Event descriptor, shared by the data model, the
// coercions and the event dispatcher.
#ifndef KORU_PLATFORM_AESTORAGE_H
#define KORU_PLATFORM_AESTORAGE_H

#include <CoreServices/AEDataModel.h>

#include <cstddef>
#include <vector>

namespace koru::ae {

enum class Kind : unsigned char { plain = 0, list = 1, record = 2, event = 3 };

struct Child;

} // namespace koru::ae

// A plain descriptor uses only the bytes; a list or record keeps its items
// (keyword '****' in a list), an event its parameters as items and its
// attributes apart.
struct OpaqueAEDataStorageType {
    koru::ae::Kind kind = koru::ae::Kind::plain;
    std::vector<unsigned char> bytes;
    std::vector<koru::ae::Child> items;
    std::vector<koru::ae::Child> attributes;
};

namespace koru::ae {

struct Child {
    AEKeyword key = typeWildCard;
    DescType type = typeNull;
    OpaqueAEDataStorageType value;
};

// The descriptor as a self-delimiting byte stream (its first four bytes hold
// the stream's length) and back; Unflatten checks every length against size.
std::vector<unsigned char> Flatten(const AEDesc &desc);
OSErr Unflatten(const void *data, size_t size, AEDesc *result);

} // namespace koru::ae

#endif
