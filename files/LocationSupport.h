/* What TFileLocationInfo and file_utils share inside the files unit. */
#ifndef KORU_FILES_LOCATIONSUPPORT_H
#define KORU_FILES_LOCATIONSUPPORT_H

#include <KORU/FileLocation.h>

#include <vector>

namespace location_support {

/* The text in the system encoding, NUL-terminated, however many bytes it
 * needs; just the NUL when it has no such form. */
std::vector<char> SystemEncodedText(const CStr<wchar_t> &text);

/* Creates the folder called name (each character narrowed to one UTF-16
 * unit) inside the folder of parentURL; the File Manager's result. */
OSErr CreateFolderIn(CFURLRef parentURL, const CStr<wchar_t> &name);

/* Splits an already trimmed path at its last "/": name receives what
 * follows, and the answer is a new URL for what precedes it ("/" when that
 * is empty).  NULL when the path has no "/". */
CFURLRef SplitAtLastSlash(const CStr<wchar_t> &text, CStr<wchar_t> &name);

} // namespace location_support

#endif
