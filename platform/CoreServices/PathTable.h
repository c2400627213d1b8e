/* The process-wide, append-only table of absolute paths that FSRefs point
 * into.  An FSRef holds an index instead of its path so that it fits in 80
 * bytes whatever the path's length; an index, once handed out, names the same
 * text for the life of the process.  Equal paths share one index.  Safe to use
 * from any thread. */
#ifndef KORU_PLATFORM_PATHTABLE_H
#define KORU_PLATFORM_PATHTABLE_H

#include <cstdint>
#include <string>

namespace filemanager {

class PathTable {
public:
    /* The index of path, added on first sight.  Never 0, so that a zeroed
     * FSRef never names a path. */
    static uint32_t Intern(const std::string &path);

    /* The path of an index; false for an index never handed out. */
    static bool Lookup(uint32_t index, std::string &path);
};

} // namespace filemanager

#endif
