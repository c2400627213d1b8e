/* Folder Manager: the standard folders of the user and of the system.
 *
 * Folders are POSIX paths without a trailing "/".  In the user domain:
 *   'temp', 'utmp'  ${TMPDIR:-/tmp}/koru-<uid>, private to the user (mode 0700);
 *                   a folder there that is not a real directory owned by the
 *                   user with exactly that mode is refused (permErr), so no
 *                   other user can plant files or links in it
 *   'flnt'          the 'temp' folder (never $XDG_RUNTIME_DIR, a small tmpfs
 *                   meant for sockets)
 *   'desk', 'docs'  XDG_DESKTOP_DIR / XDG_DOCUMENTS_DIR from
 *                   $XDG_CONFIG_HOME/user-dirs.dirs, else ~/Desktop, ~/Documents
 *   'pref'          $XDG_CONFIG_HOME (~/.config)
 *   'asup'          $XDG_DATA_HOME (~/.local/share)
 *   'cach'          $XDG_CACHE_HOME (~/.cache)
 *   'cusr'          $HOME
 * In the local and system domains only 'asup' has a meaning: /usr/local/share
 * and /usr/share.  kOnSystemDisk and kOnAppropriateDisk count as the user
 * domain.  Other types answer fnfErr.  The environment is read at every call;
 * the functions keep no state and may run on any thread. */
#ifndef CORESERVICES_FOLDERS_H
#define CORESERVICES_FOLDERS_H

#include <CoreServices/Files.h>
#include <MacTypes.h>

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Domains, given where a volume reference would go. */
enum {
    kOnSystemDisk = -32768,
    kOnAppropriateDisk = -32767,
    kSystemDomain = -32766,
    kLocalDomain = -32765,
    kNetworkDomain = -32764,
    kUserDomain = -32763,
    kClassicDomain = -32762
};

enum { kDontCreateFolder = 0, kCreateFolder = 1 };

enum {
    kTemporaryFolderType = 0x74656D70 /* 'temp' */,
    kTemporaryItemsInUserDomainFolderType = 0x75746D70 /* 'utmp' */,
    kChewableItemsFolderType = 0x666C6E74 /* 'flnt' */,
    kDesktopFolderType = 0x6465736B /* 'desk' */,
    kDocumentsFolderType = 0x646F6373 /* 'docs' */,
    kPreferencesFolderType = 0x70726566 /* 'pref' */,
    kApplicationSupportFolderType = 0x61737570 /* 'asup' */,
    kCachedDataFolderType = 0x63616368 /* 'cach' */,
    kCurrentUserFolderType = 0x63757372 /* 'cusr' */
};

/* The folder's FSRef.  When the folder is missing it is made (with its
 * missing parents) if createFolder is true, else the answer is fnfErr.
 * paramErr for a NULL foundRef; the ref is zeroed on failure. */
OSErr FSFindFolder(SInt16 vRefNum, OSType folderType, Boolean createFolder, FSRef *foundRef);

/* The same folder as a terminated POSIX path in the caller's buffer
 * (paramErr for a NULL or too small buffer, which is then left empty).
 * A Linux addition that FSFindFolder is built on. */
OSErr FSFindFolderGetPath(SInt16 vRefNum, OSType folderType, Boolean createFolder, char *path,
                          size_t maxPathSize);

#ifdef __cplusplus
}
#endif

#endif
