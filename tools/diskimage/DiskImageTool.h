/* The work behind hdiutil-koru and hdid-koru, the toolkit's hdiutil- and
 * hdid-compatible disk-image tools for Linux.
 *
 * A disk image is a squashfs image.  It is made with mksquashfs, attached
 * read-only through FUSE with squashfuse (no root needed), and detached with
 * fusermount3 (or umount as root).  The kernel's mount table is the only
 * record of what is attached: a squashfuse mount of subtype "koru" carries
 * its image's absolute path as its file-system name, and a squashfs image
 * loop-mounted by other means is found through its loop device's backing
 * file.  Programs are started from argument vectors, never through a shell,
 * and are given absolute paths, so no path can become an option or a command.
 *
 * Every command answers 0 on success and 1 on failure, after one line
 * "<tool>: <command> failed - <reason>" on standard error; a failed command
 * leaves no mount, no mount-point folder and no image behind. */
#ifndef KORU_TOOLS_DISKIMAGETOOL_H
#define KORU_TOOLS_DISKIMAGETOOL_H

#include <ostream>
#include <string>
#include <vector>

namespace diskimage {

/* One mounted volume of an attached image. */
struct SystemEntity {
    std::string devEntry;    /* "/dev/loop0", or "fuse:<major>:<minor>" for a FUSE mount */
    std::string contentHint; /* "squashfs" */
    std::string mountPoint;
};

struct AttachedImage {
    std::string imagePath;
    std::string imageType; /* e.g. "squashfs read-only compressed (zstd)" */
    std::vector<SystemEntity> systemEntities;
};

/* Every attached image, in mount-table order; one entry per image path. */
std::vector<AttachedImage> ListAttachedImages();

/* path made absolute against the current folder, with ".", ".." and repeated
 * slashes resolved by name (symbolic links are kept as written); "" for "". */
std::string AbsolutePath(const std::string &path);

struct Failure {
    std::string reason;
};

/* Builds image from the folder's contents.  Refuses an existing image unless
 * overwrite; writes a temporary file beside it and renames it into place, so
 * an existing image is only ever replaced by a complete one. */
bool CreateImage(const std::string &folder, const std::string &image, bool overwrite, Failure &failure);

struct AttachOptions {
    std::string mountPoint; /* empty: a new folder in the private temporary folder */
};

/* Attaches image (or finds it attached already) and describes it.  A given
 * mount point must be missing (it is made, and removed again on failure) or
 * an empty folder. */
bool AttachImage(const std::string &image, const AttachOptions &options, AttachedImage &attached,
                 Failure &failure);

/* Detaches the image mounted at target (a mount point or a dev-entry), with
 * all its mounts; force detaches lazily even when files are busy.  Mount-point
 * folders that attaching made in the private temporary folder are removed.
 * Answers the image's dev-entry in detached. */
bool DetachImage(const std::string &target, bool force, std::string &detached, Failure &failure);

/* The entity lines "dev-entry<TAB>content-hint<TAB>mount-point" of hdid and
 * hdiutil attach. */
void PrintEntityLines(std::ostream &out, const AttachedImage &image);

/* "info -plist": {"images" = ({"image-path", "image-type", "system-entities" =
 * ({"dev-entry", "content-hint", "mount-point"})})} as an XML property list. */
void PrintImagesPropertyList(std::ostream &out, const std::vector<AttachedImage> &images);

/* "attach -plist": {"system-entities" = (...)} for one image. */
void PrintEntitiesPropertyList(std::ostream &out, const AttachedImage &image);

/* "info": the images in readable form. */
void PrintImagesText(std::ostream &out, const std::vector<AttachedImage> &images);

} // namespace diskimage

#endif
