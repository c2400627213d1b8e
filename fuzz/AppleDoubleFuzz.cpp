// AppleDouble companions and Netatalk's metadata attribute from outside data:
// parsed, built again, and the rebuilt image must parse to the same entries.
#include "../platform/CoreServices/AppleDouble.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using filemanager::AppleDoubleData;
    using filemanager::AppleDoubleFile;
    const std::string image(reinterpret_cast<const char *>(data), size);
    AppleDoubleData parsed;
    if (!AppleDoubleFile::Parse(image, parsed))
        return 0;
    // Finder information with a Mac's attribute tail is always written with a
    // resource-fork entry beside it, empty when there was none.
    const bool resourceEntry = parsed.hasResourceFork || (parsed.hasFinderInfo && !parsed.finderInfoTail.empty());
    AppleDoubleData again;
    if (!AppleDoubleFile::Parse(AppleDoubleFile::Build(parsed), again) ||
        again.hasFinderInfo != parsed.hasFinderInfo || again.hasResourceFork != resourceEntry ||
        again.resourceFork != parsed.resourceFork || again.finderInfoTail != parsed.finderInfoTail ||
        std::memcmp(again.finderInfo, parsed.finderInfo, sizeof parsed.finderInfo) != 0)
        std::abort();
    return 0;
}
