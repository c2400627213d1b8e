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

} // namespace location_support

#endif
