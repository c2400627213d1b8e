/* Finder information and resource forks kept beside an item, the way a Mac
 * keeps them on a volume without native forks: in an AppleDouble companion
 * "._name" (magic 0x00051607, version 0x00020000, big-endian entries; entry 9
 * holds the 32 bytes of Finder information, entry 2 the resource fork).  When
 * an item has no companion, Netatalk's extended attributes
 * user.org.netatalk.Metadata and user.org.netatalk.ResourceFork are read
 * instead.  Writes always go to the companion, replacing it atomically. */
#ifndef KORU_PLATFORM_APPLEDOUBLE_H
#define KORU_PLATFORM_APPLEDOUBLE_H

#include <MacTypes.h>

#include <string>

namespace filemanager {

struct AppleDoubleData {
    bool hasFinderInfo = false;
    UInt8 finderInfo[32] = {}; /* as stored: big-endian */
    /* What a Mac keeps after the 32 bytes of entry 9 (its extended
     * attributes, whose offsets count from the start of the companion):
     * kept byte for byte, with entry 9 left at the offset a Mac gives it. */
    std::string finderInfoTail;
    bool hasResourceFork = false;
    std::string resourceFork;
};

class AppleDoubleFile {
public:
    /* Parses an AppleDouble image; false when it is not one. */
    static bool Parse(const std::string &image, AppleDoubleData &data);

    /* The image of data: Finder information first, then the resource fork. */
    static std::string Build(const AppleDoubleData &data);

    /* What is stored for the item at itemPath (empty data when nothing is). */
    static AppleDoubleData Read(const std::string &itemPath);

    /* The resource fork's length without reading it; 0 when there is none. */
    static UInt64 ResourceForkLength(const std::string &itemPath);

    /* Stores data for the item, or removes the companion when data holds
     * neither Finder information (all zero counts as none) nor a resource
     * fork (an empty one counts as none).  Returns an errno value, 0 on success. */
    static int Write(const std::string &itemPath, const AppleDoubleData &data);
};

} // namespace filemanager

#endif
