// Mount-table lines of any shape: parsing answers true or false, never reads
// outside the line, and a parsed entry's fields decode within the line's size.
#include "platform/CoreServices/MountTable.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string_view line(reinterpret_cast<const char *>(data), size);
    filemanager::MountEntry entry;
    if (filemanager::ParseMountInfoLine(line, entry)) {
        const size_t decoded = entry.root.size() + entry.mountPoint.size() + entry.mountOptions.size() +
                               entry.fsType.size() + entry.source.size() + entry.superOptions.size();
        if (decoded > size)
            std::abort();
    }
    if (filemanager::DecodeMountField(line).size() > size)
        std::abort();
    return 0;
}
