/* file_utils: free functions over TFileLocationInfo and POSIX path strings.
 *
 * Path splitting and joining, URL and path text, whole-file reading and
 * writing, folder creation, listing and recursive deletion, the application's
 * temporary folder ("Orvan/Mirtel/" inside the user's temporary folder) and
 * unique temporary file names in it.  Paths use "/" as separator.  Results
 * are true on success unless a comment says otherwise; nothing throws of its
 * own.  Buffers handed out by the readers belong to the caller, who frees
 * them with delete[]; on failure they are NULL.
 *
 * The functions keep no state and may run on any thread, as long as two
 * threads do not share one location. */
#ifndef KORU_FILEUTILS_H
#define KORU_FILEUTILS_H

#include <KORU/FileLocation.h>

#include <cstdio>
#include <vector>

namespace file_utils {

/* ---- Path text ---- */

/* L'/' */
wchar_t GetPathDelimiter();
/* Non-empty and not starting with "/". */
bool IsRelativePath(const CStr<wchar_t> &path);
/* The text up to and including the last "/"; empty without one. */
CStr<wchar_t> GetFilePathFromFullPath(const CStr<wchar_t> &path);
/* The text after the last "/"; the whole text without one. */
CStr<wchar_t> GetFileNameFromFullPath(const CStr<wchar_t> &path);
/* The text after the last "." (anywhere in the path); empty without one. */
CStr<wchar_t> GetFileExt(const CStr<wchar_t> &path);
/* Drops one trailing "/", then splits at the last "/": name gets the part
 * after it and the result is a new URL for the part before it ("/" when that
 * part is empty), released by the caller; NULL without a "/". */
CFURLRef GetParentFolderURL(const CStr<wchar_t> &path, CStr<wchar_t> &name);
/* rel resolved against base (which ends in "/"): "x" and "./x" append,
 * each leading "../" climbs one folder; empty when it climbs past the top. */
CStr<wchar_t> GetAbsFileName(const CStr<wchar_t> &rel, const CStr<wchar_t> &base);
/* Markup escaping of &, <, > and the double quote (apostrophes stay);
 * escaped text is escaped again.  Empty for NULL. */
CStr<wchar_t> GetEncodedText(const wchar_t *text);
/* "file:///" + text unless text holds "://" (so /a/b gives file:////a/b);
 * empty for NULL. */
CStr<wchar_t> GetURLFromLocalFileName(const wchar_t *text);
/* The text after "://" when text starts with "file" and holds "://", else
 * the text; empty for NULL or empty text. */
CStr<wchar_t> GetLocalFileName(const wchar_t *text);
/* Does nothing; false. */
bool CreatePathIfNotExistant(const CStr<wchar_t> &path);

/* ---- Locations and folders ---- */

/* The folder holding url's item as an FSRef, and the item's name.  paramErr
 * for NULL url or parent, memFullErr when the URL cannot be split, fnfErr
 * when the folder does not exist; noErr otherwise. */
OSStatus GetParentFSRefAndName(CFURLRef url, FSRef *parent, CStr<wchar_t> &name);
/* The user's temporary folder (the chewable-items folder, else the
 * temporary-items folder) as an FSRef location. */
bool GetSysTempFolder(TFileLocationInfo &folder);
/* The application's temporary folder, created as needed: the user's
 * temporary folder + "Orvan/Mirtel/", as a path location ending in "/". */
bool GetAppTempFolder(TFileLocationInfo &folder);
/* The folder holding the executable of bundle (or, with bundleFolder, the
 * bundle itself) as a path location ending in "/".  Without a bundle: the
 * folder holding the current process's executable. */
bool GetModuleFolder(TFileLocationInfo &folder, CFBundleRef bundle, bool bundleFolder);
/* Creates the location's folder inside its existing parent; true also when
 * the folder exists already. */
bool CreateLocation(const TFileLocationInfo &location);
/* location.Delete() */
bool DeleteLocation(const TFileLocationInfo &location);
/* Deletes the folder's files and, when recursive, its folders with their
 * content, then the folder itself; true only when the folder is gone.
 * Without recursive, a folder holding folders stays (its files are gone). */
bool DeleteDir(const TFileLocationInfo &folder, bool recursive);
/* Appends to out the bare names in folder whose extension (without the
 * dot) equals ext ignoring case, in the folder's order; folders with such a
 * name too.  out is not cleared.  false when the folder cannot be listed. */
bool EnumFilesInFolder(const wchar_t *ext, const TFileLocationInfo &folder,
                       std::vector<CStr<wchar_t>> &out);
/* Does nothing; true. */
bool StartApplication(const TFileLocationInfo &location, const wchar_t *args, bool wait);

/* The application temporary folder + name (cut so that the path stays
 * within 256 characters), whether or not it exists. */
bool GetExactTempFileLocation(const CStr<wchar_t> &name, TFileLocationInfo &location);
/* A file name in the application temporary folder that is not taken:
 * name.ext, else name_001.ext, name_002.ext, ... (three digits at least). */
bool GetTempFileLocation(const CStr<wchar_t> &name, const CStr<wchar_t> &ext,
                         TFileLocationInfo &location);

/* ---- Whole-file input and output ---- */

/* The C library's fopen of the location's full path; NULL on failure. */
FILE *fopen(const TFileLocationInfo &location, const char *mode);
/* The whole file in a new byte array of exactly size bytes. */
bool ReadBinFileToBuffer(const TFileLocationInfo &location, void *&buffer, long &size);
/* Replaces the file's content with count bytes. */
bool WriteBinBufferToFile(const TFileLocationInfo &location, const void *buffer, long count);
/* The whole file, followed by a NUL, in a new char array. */
bool ReadASCIITextFileToBuffer(const TFileLocationInfo &location, char *&buffer);
/* Replaces the file's content with the text (no terminator). */
bool WriteASCIITextBufferToFile(const TFileLocationInfo &location, const char *text);
/* A UTF-16 file read unit by unit in machine byte order into a new,
 * terminated wchar_t array; a leading byte-order mark of either order is
 * dropped and never acted on, so a big-endian file comes out byte-swapped
 * (bigEndian changes nothing).  Stops at a zero unit. */
bool ReadUnicodeTextFileToBuffer(const TFileLocationInfo &location, wchar_t *&buffer,
                                 bool bigEndian);
/* Writes the bytes FE FF, then the text's 32-bit wchar_t units in machine
 * byte order, no terminator.  Not the reader's inverse.  True whenever the
 * file opened. */
bool WriteUnicodeTextBufferToFile(const TFileLocationInfo &location, const wchar_t *text);

} // namespace file_utils

#endif
