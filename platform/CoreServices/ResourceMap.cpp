#include "ResourceMap.h"

#include <algorithm>
#include <set>

namespace resources {

namespace {

constexpr size_t kHeaderLength = 16;
constexpr size_t kHeaderAreaLength = 256; // header and the reserved bytes
constexpr size_t kMapHeaderLength = 28;   // header copy, 6 private bytes, attributes, two offsets
constexpr size_t kTypeEntryLength = 8;
constexpr size_t kReferenceLength = 12;
constexpr UInt16 kNoName = 0xFFFF;
constexpr UInt32 kLargestDataOffset = 0xFFFFFF;

UInt32 Get32(const std::string &bytes, size_t at)
{
    const auto *p = reinterpret_cast<const unsigned char *>(bytes.data() + at);
    return (UInt32(p[0]) << 24) | (UInt32(p[1]) << 16) | (UInt32(p[2]) << 8) | UInt32(p[3]);
}

UInt32 Get24(const std::string &bytes, size_t at)
{
    const auto *p = reinterpret_cast<const unsigned char *>(bytes.data() + at);
    return (UInt32(p[0]) << 16) | (UInt32(p[1]) << 8) | UInt32(p[2]);
}

UInt16 Get16(const std::string &bytes, size_t at)
{
    const auto *p = reinterpret_cast<const unsigned char *>(bytes.data() + at);
    return static_cast<UInt16>((p[0] << 8) | p[1]);
}

void Put32(std::string &bytes, UInt32 value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(value >> shift);
}

void Put24(std::string &bytes, UInt32 value)
{
    for (int shift = 16; shift >= 0; shift -= 8)
        bytes += static_cast<char>(value >> shift);
}

void Put16(std::string &bytes, UInt16 value)
{
    bytes += static_cast<char>(value >> 8);
    bytes += static_cast<char>(value);
}

// The region [offset, offset + length) lies inside [0, limit).
bool Inside(UInt64 offset, UInt64 length, UInt64 limit)
{
    return offset <= limit && length <= limit - offset;
}

// Reads the data entry of one reference; false when it lies outside the data
// area, starts where another entry already started, or when the entries read
// so far add up to more than the data area holds (entries that overlap would
// otherwise let a small fork claim gigabytes).
bool ReadData(const std::string &fork, UInt64 dataOffset, UInt64 dataLength, UInt32 entry,
              std::set<UInt32> &seen, UInt64 &claimed, std::string &data)
{
    if (!Inside(entry, 4, dataLength) || !seen.insert(entry).second)
        return false;
    const UInt32 length = Get32(fork, static_cast<size_t>(dataOffset + entry));
    if (!Inside(UInt64(entry) + 4, length, dataLength))
        return false;
    claimed += 4 + UInt64(length);
    if (claimed > dataLength)
        return false;
    data.assign(fork, static_cast<size_t>(dataOffset + entry + 4), length);
    return true;
}

} // namespace

std::string ResourceMap::EmptyFork()
{
    std::string fork;
    Build(ResourceForkImage(), fork);
    return fork;
}

bool ResourceMap::Parse(const std::string &fork, ResourceForkImage &image)
{
    image = ResourceForkImage();
    if (fork.size() < kHeaderLength)
        return false;
    const UInt64 size = fork.size();
    const UInt64 dataOffset = Get32(fork, 0), mapOffset = Get32(fork, 4);
    const UInt64 dataLength = Get32(fork, 8), mapLength = Get32(fork, 12);
    if (dataOffset < kHeaderLength || mapOffset < kHeaderLength || !Inside(dataOffset, dataLength, size) ||
        !Inside(mapOffset, mapLength, size) || mapLength < kMapHeaderLength + 2)
        return false;
    if (dataLength > 0 && dataOffset < mapOffset + mapLength && mapOffset < dataOffset + dataLength)
        return false; // the data and the map overlap

    const size_t map = static_cast<size_t>(mapOffset);
    const UInt64 typeList = Get16(fork, map + 24), nameList = Get16(fork, map + 26);
    if (!Inside(typeList, 2, mapLength) || nameList > mapLength)
        return false;
    const size_t typeCount = (Get16(fork, map + typeList) + 1u) & 0xFFFF;
    if (!Inside(typeList + 2, UInt64(typeCount) * kTypeEntryLength, mapLength))
        return false;

    image.mapAttributes = Get16(fork, map + 22);
    const size_t reservedEnd = static_cast<size_t>(std::min<UInt64>({dataOffset, mapOffset, kHeaderAreaLength}));
    image.reserved.assign(fork, kHeaderLength, reservedEnd - kHeaderLength);

    std::set<UInt32> seenData;
    UInt64 claimed = 0;
    std::set<UInt64> seenReferences;
    for (size_t t = 0; t < typeCount; ++t) {
        const size_t entry = static_cast<size_t>(mapOffset + typeList + 2 + t * kTypeEntryLength);
        ResourceTypeList list;
        list.type = Get32(fork, entry);
        const size_t count = Get16(fork, entry + 4) + 1u;
        const UInt64 references = typeList + Get16(fork, entry + 6);
        if (!Inside(references, UInt64(count) * kReferenceLength, mapLength))
            return false;
        for (size_t r = 0; r < count; ++r) {
            const UInt64 reference = references + r * kReferenceLength;
            if (!seenReferences.insert(reference).second)
                return false; // two types sharing one reference list
            const size_t at = static_cast<size_t>(mapOffset + reference);
            Resource resource;
            resource.id = static_cast<SInt16>(Get16(fork, at));
            const UInt16 nameOffset = Get16(fork, at + 2);
            resource.attributes = static_cast<UInt8>(fork[at + 4]);
            if (nameOffset != kNoName) {
                const UInt64 name = nameList + nameOffset;
                if (!Inside(name, 1, mapLength))
                    return false;
                const size_t length = static_cast<unsigned char>(fork[static_cast<size_t>(mapOffset + name)]);
                if (!Inside(name + 1, length, mapLength))
                    return false;
                resource.hasName = true;
                resource.name.assign(fork, static_cast<size_t>(mapOffset + name + 1), length);
            }
            if (!ReadData(fork, dataOffset, dataLength, Get24(fork, at + 5), seenData, claimed, resource.data))
                return false;
            list.resources.push_back(std::move(resource));
        }
        image.types.push_back(std::move(list));
    }
    return true;
}

bool ResourceMap::Build(const ResourceForkImage &image, std::string &fork)
{
    fork.clear();
    if (image.types.size() > 0x10000)
        return false;
    std::string data, references, names;
    std::string typeList;
    Put16(typeList, static_cast<UInt16>(image.types.size() - 1)); // an empty list counts 0xFFFF
    const size_t referencesStart = 2 + image.types.size() * kTypeEntryLength;
    for (const ResourceTypeList &list : image.types) {
        if (list.resources.empty() || list.resources.size() > 0x10000)
            return false;
        const size_t referenceOffset = referencesStart + references.size();
        if (referenceOffset > 0xFFFF)
            return false;
        Put32(typeList, list.type);
        Put16(typeList, static_cast<UInt16>(list.resources.size() - 1));
        Put16(typeList, static_cast<UInt16>(referenceOffset));
        for (const Resource &resource : list.resources) {
            if (data.size() > kLargestDataOffset || resource.data.size() > 0xFFFFFFFFu - 4)
                return false;
            Put16(references, static_cast<UInt16>(resource.id));
            if (resource.hasName) {
                if (names.size() > 0xFFFE || resource.name.size() > 255)
                    return false;
                Put16(references, static_cast<UInt16>(names.size()));
                names += static_cast<char>(resource.name.size());
                names += resource.name;
            } else {
                Put16(references, kNoName);
            }
            references += static_cast<char>(resource.attributes);
            Put24(references, static_cast<UInt32>(data.size()));
            Put32(references, 0); // the handle, only meaningful in memory
            Put32(data, static_cast<UInt32>(resource.data.size()));
            data += resource.data;
        }
    }
    const size_t nameListOffset = kMapHeaderLength + typeList.size() + references.size();
    const UInt64 mapLength = nameListOffset + names.size();
    const UInt64 dataLength = data.size();
    if (nameListOffset > 0xFFFF || kHeaderAreaLength + dataLength + mapLength > 0xFFFFFFFFu)
        return false;

    std::string header;
    Put32(header, static_cast<UInt32>(kHeaderAreaLength));
    Put32(header, static_cast<UInt32>(kHeaderAreaLength + dataLength));
    Put32(header, static_cast<UInt32>(dataLength));
    Put32(header, static_cast<UInt32>(mapLength));

    fork.reserve(static_cast<size_t>(kHeaderAreaLength + dataLength + mapLength));
    fork = header;
    fork += image.reserved.substr(0, kHeaderAreaLength - kHeaderLength);
    fork.resize(kHeaderAreaLength, '\0');
    fork += data;
    fork += header;
    Put32(fork, 0); // next map, in memory only
    Put16(fork, 0); // file reference number, in memory only
    // The changed bit describes an open map, never a stored one.
    Put16(fork, static_cast<UInt16>(image.mapAttributes & ~UInt16(0x20)));
    Put16(fork, static_cast<UInt16>(kMapHeaderLength));
    Put16(fork, static_cast<UInt16>(nameListOffset));
    fork += typeList;
    fork += references;
    fork += names;
    return true;
}

} // namespace resources
