/* The resource-fork format as a Mac writes it, parsed into values and built
 * back from them.
 *
 * A fork begins with a 16-byte header (offset of the data, offset of the map,
 * length of the data, length of the map; all big-endian), followed by 240
 * bytes the system and the application may use.  The data area holds each
 * resource as a 4-byte length and its bytes.  The map repeats the header,
 * keeps 6 bytes for the Resource Manager's own use and the map attributes,
 * then the offsets of the type list and the name list; the type list names
 * each type with its count and the offset of its reference list, and each
 * reference holds the id, the offset of the name (-1 for none), the
 * attributes and the 24-bit offset of the data.
 *
 * Parse refuses anything a Mac would not write: offsets or lengths outside
 * the fork, data and map overlapping each other or the header, references or
 * names outside the map, data entries outside the data area or shared by two
 * references.  Pure functions of their arguments; safe on any thread. */
#ifndef KORU_PLATFORM_RESOURCEMAP_H
#define KORU_PLATFORM_RESOURCEMAP_H

#include <MacTypes.h>

#include <string>
#include <vector>

namespace resources {

struct Resource {
    SInt16 id = 0;
    bool hasName = false;
    std::string name; /* at most 255 bytes */
    UInt8 attributes = 0;
    std::string data;
};

struct ResourceTypeList {
    ResType type = 0;
    std::vector<Resource> resources;
};

struct ResourceForkImage {
    std::string reserved; /* the 240 bytes after the header */
    UInt16 mapAttributes = 0;
    std::vector<ResourceTypeList> types;
};

class ResourceMap {
public:
    /* The fork an empty map makes (286 bytes). */
    static std::string EmptyFork();

    /* false when fork is no well-formed resource fork. */
    static bool Parse(const std::string &fork, ResourceForkImage &image);

    /* The fork image; false when it does not fit the format's 16- and 24-bit
     * offsets (a map over 64 KB, data over 16 MB). */
    static bool Build(const ResourceForkImage &image, std::string &fork);
};

} // namespace resources

#endif
