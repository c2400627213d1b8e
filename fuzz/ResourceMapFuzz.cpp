// Resource forks from outside data: a map that parses must build again into
// a fork that parses to the same resources.
#include "../platform/CoreServices/ResourceMap.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

bool SameResources(const resources::ResourceForkImage &a, const resources::ResourceForkImage &b)
{
    if (a.types.size() != b.types.size())
        return false;
    for (size_t t = 0; t < a.types.size(); ++t) {
        const auto &x = a.types[t], &y = b.types[t];
        if (x.type != y.type || x.resources.size() != y.resources.size())
            return false;
        for (size_t r = 0; r < x.resources.size(); ++r) {
            const auto &p = x.resources[r], &q = y.resources[r];
            if (p.id != q.id || p.hasName != q.hasName || p.name != q.name || p.attributes != q.attributes ||
                p.data != q.data)
                return false;
        }
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using resources::ResourceForkImage;
    using resources::ResourceMap;
    const std::string fork(reinterpret_cast<const char *>(data), size);
    ResourceForkImage image;
    if (!ResourceMap::Parse(fork, image))
        return 0;
    std::string built;
    if (!ResourceMap::Build(image, built))
        return 0;
    ResourceForkImage again;
    if (!ResourceMap::Parse(built, again) || !SameResources(image, again))
        std::abort();
    return 0;
}
