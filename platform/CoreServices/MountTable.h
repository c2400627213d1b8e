/* The kernel's mount table, as /proc/self/mountinfo gives it: one line per
 * mount of this process's namespace,
 *
 *   36 35 98:0 /mnt1 /mnt/parent rw,noatime master:1 - ext3 /dev/root rw,errors=continue
 *
 * (mount ID, parent ID, major:minor, root, mount point, mount options, zero or
 * more optional fields ended by "-", file-system type, mount source, super
 * options).  The kernel writes blanks, tabs, newlines and backslashes inside
 * a field as \ooo; the entries hold the decoded text.  This is the one reader
 * of that file: volumes of the File Manager and the disk-image tools both use
 * it.  The functions keep no state and may run on any thread. */
#ifndef KORU_PLATFORM_MOUNTTABLE_H
#define KORU_PLATFORM_MOUNTTABLE_H

#include <string>
#include <string_view>
#include <vector>

namespace filemanager {

struct MountEntry {
    unsigned long mountID = 0;
    unsigned long parentID = 0;
    unsigned int major = 0;
    unsigned int minor = 0;
    std::string root;                        /* the mounted folder inside its file system */
    std::string mountPoint;                  /* relative to the process's root */
    std::string mountOptions;                /* per-mount options, e.g. "rw,nosuid" */
    std::vector<std::string> optionalFields; /* "shared:1", "master:2", ... */
    std::string fsType;                      /* "ext4", "fuse.koru", "squashfs", ... */
    std::string source;                      /* "/dev/sda1", a FUSE fsname, "none", ... */
    std::string superOptions;                /* per-superblock options */
};

/* A field with its \ooo escapes decoded; a backslash that does not start
 * three octal digits of a byte value stands for itself. */
std::string DecodeMountField(std::string_view field);

/* Parses one line (with or without its newline).  False, with entry reset,
 * when the line lacks a field, a number is malformed or out of range, or the
 * "-" separator is missing. */
bool ParseMountInfoLine(std::string_view line, MountEntry &entry);

/* Every parseable line of a mountinfo file, in the file's order (lines that
 * do not parse are skipped).  False, with table empty, when the file cannot be
 * read. */
bool ReadMountTable(std::vector<MountEntry> &table, const char *path = "/proc/self/mountinfo");

} // namespace filemanager

#endif
