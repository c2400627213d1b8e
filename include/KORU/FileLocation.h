/* TFileLocationInfo: a place in the file system, held in exactly one of the
 * five forms the file interfaces use (a POSIX path, an FSSpec, an FSRef, an
 * alias handle or a CFURL), with the other forms computed from it on demand.
 *
 * kind names the form that is valid; nothing else is cached, so every
 * conversion starts again from that form.  To hold a path, callers set kind
 * to kLocationPath and assign path directly; paths always use "/" and a path
 * ending in "/" names a folder.  A held CFURL is owned (retained by SetCFURL
 * and by assignment, released by the destructor); an alias handle is not
 * owned and is never disposed; path, FSSpec and FSRef are values.  The
 * storage starts zeroed.
 *
 * Kept on purpose, so that code written against this type behaves the same:
 * the copy constructor copies a held URL WITHOUT retaining it (both copies
 * release it: keep an extra retain when copying URL locations); assignment
 * decides about releasing the old URL by the kind it copies in, so assign URL
 * locations only over empty, path or URL locations; SetFSRef does not release
 * a URL held before; GetAliasHandle answers false for an alias location even
 * though it hands out the stored handle; IsFile tests whether the location
 * opens for reading, not whether it is a file; CreateFolder fails on an
 * existing folder.
 *
 * No operation throws of its own; failures answer false, NULL or an empty
 * string.  A location is not thread-safe; distinct locations are. */
#ifndef KORU_FILELOCATION_H
#define KORU_FILELOCATION_H

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/Aliases.h>
#include <CoreServices/Files.h>
#include <KORU/CStr.h>

#include <cstdint>

class TFileLocationInfo {
public:
    typedef int32_t LocationKind;
    static constexpr LocationKind kLocationNone = -1;
    static constexpr LocationKind kLocationPath = 0;
    static constexpr LocationKind kLocationFSSpec = 1;
    static constexpr LocationKind kLocationFSRef = 2;
    static constexpr LocationKind kLocationAlias = 3;
    static constexpr LocationKind kLocationCFURL = 4;

    /* Empty path, kind -1, zeroed storage. */
    TFileLocationInfo();
    /* Copies kind, path and all 80 bytes of storage; a held URL is shared
     * without a retain. */
    TFileLocationInfo(const TFileLocationInfo &other);
    TFileLocationInfo &operator=(const TFileLocationInfo &other);
    /* Releases a held URL. */
    ~TFileLocationInfo();

    /* Holds url (retained); a NULL url changes nothing.  A URL held before is
     * released. */
    void SetCFURL(CFURLRef url);
    /* Holds a copy of ref. */
    void SetFSRef(const FSRef &ref);
    /* Holds the handle as given (not owned); returns true. */
    bool SetAliasHandle(AliasHandle alias);

    /* The location as an FSRef; false for an alias or empty location, or
     * when the object does not exist. */
    bool GetFSRef(FSRef &ref) const;
    /* The location as an FSSpec.  For a path the FSSpec names the item inside
     * its parent folder whether or not the item exists (the parent must);
     * a name longer than 63 bytes, which an FSSpec holds only in the File
     * Manager's short form, only when the item exists. */
    bool GetFSSpec(FSSpec &fsSpec) const;
    /* A new alias handle (the caller disposes it) made from the location;
     * for an alias location the held handle is written and the result is
     * false. */
    bool GetAliasHandle(AliasHandle &alias) const;
    /* A new URL the caller releases, or NULL (also for an alias location). */
    CFURLRef CreateCFURL() const;
    /* The POSIX path: a path location's text as stored, else the path of
     * CreateCFURL (no trailing "/"); empty when there is none. */
    CStr<wchar_t> GetFullPath() const;

    /* The POSIX path of url into path; false (path unchanged) for NULL or
     * an empty path. */
    static bool GetPathFromCFURLRef(CFURLRef url, CStr<wchar_t> &path);
    /* The text after the last "." of name (not required to follow the last
     * "/"); empty without a "." or for NULL. */
    static CStr<wchar_t> GetFileExtension(const wchar_t *name);

    /* The name from the location's FSSpec, so at most 63 bytes. */
    bool GetFileName(CStr<wchar_t> &name) const;
    /* Whether the location opens for reading (folders do too). */
    bool IsFile() const;
    /* Whether the location's URL is a directory URL. */
    bool IsFolder() const;
    /* Creates the file or truncates it to zero length. */
    bool CreateFile() const;
    /* Creates the folder inside its existing parent; false if it exists. */
    bool CreateFolder() const;
    /* Deletes a file, or a folder with all its content. */
    bool Delete() const;

    LocationKind kind;
    CStr<wchar_t> path;
    union Storage {
        FSSpec fsSpec;
        FSRef ref;
        AliasHandle alias;
        CFURLRef url;
    } storage;
};

/* Splits path at its last "/" after dropping one trailing "\\", "/" or ":":
 * name receives the part after it, and the result is a new URL (the caller
 * releases it) for the part before it ("/" when that part is empty).  NULL
 * when the path holds no "/". */
CFURLRef GetParentFolderURL(const CStr<wchar_t> &path, CStr<wchar_t> &name);

#endif
