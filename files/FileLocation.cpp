#include <KORU/FileLocation.h>
#include <KORU/FileUtils.h>

#include "LocationSupport.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

const wchar_t kDelimiter = L'/';

// The path's characters narrowed one by one to UTF-16 units, as the File
// Manager's Unicode calls take them (no surrogate pairs are formed).
std::vector<UniChar> NarrowedUnits(const CStr<wchar_t> &text)
{
    std::vector<UniChar> units(static_cast<size_t>(text.GetLength()));
    for (int k = 0; k < text.GetLength(); ++k)
        units[static_cast<size_t>(k)] = static_cast<UniChar>(text[k]);
    return units;
}

// c2pstrcpy into a Str63 (at most 63 bytes are taken).  The unused tail is
// cleared so that equal FSSpecs compare equal byte for byte.
void CopyCToPascal63(const char *text, unsigned char *pascal)
{
    std::memset(pascal, 0, 64);
    const size_t length = std::min<size_t>(std::strlen(text), 63);
    pascal[0] = static_cast<unsigned char>(length);
    std::memcpy(pascal + 1, text, length);
}

} // namespace

namespace location_support {

std::vector<char> SystemEncodedText(const CStr<wchar_t> &text)
{
    std::vector<char> bytes(1, 0);
    CFStringRef string = text.CreateCFString();
    if (!string)
        return bytes;
    const CFStringEncoding encoding = CFStringGetSystemEncoding();
    bytes.resize(static_cast<size_t>(CFStringGetMaximumSizeForEncoding(CFStringGetLength(string), encoding)) + 1);
    if (!CFStringGetCString(string, bytes.data(), static_cast<CFIndex>(bytes.size()), encoding))
        bytes.assign(1, 0);
    CFRelease(string);
    return bytes;
}

OSErr CreateFolderIn(CFURLRef parentURL, const CStr<wchar_t> &name)
{
    FSRef parent, created;
    CFURLGetFSRef(parentURL, &parent); // a missing parent shows as the creation failing
    const std::vector<UniChar> units = NarrowedUnits(name);
    return FSCreateDirectoryUnicode(&parent, units.size(), units.data(), kFSCatInfoNone, nullptr,
                                    &created, nullptr, nullptr);
}

CFURLRef SplitAtLastSlash(const CStr<wchar_t> &text, CStr<wchar_t> &name)
{
    const int slash = text.ReverseFind(kDelimiter);
    if (slash < 0)
        return nullptr;
    name = text.Mid(slash + 1);
    // The parent of "/name" is the root; an empty path would name the
    // current folder instead.
    const CStr<wchar_t> parent = slash == 0 ? CStr<wchar_t>(L"/") : text.Left(slash);
    CFStringRef parentText = parent.CreateCFString();
    if (!parentText)
        return nullptr;
    CFURLRef url = CFURLCreateWithFileSystemPath(kCFAllocatorDefault, parentText, kCFURLPOSIXPathStyle, false);
    CFRelease(parentText);
    return url;
}

} // namespace location_support

using namespace location_support;

CFURLRef GetParentFolderURL(const CStr<wchar_t> &path, CStr<wchar_t> &name)
{
    CStr<wchar_t> text = path;
    const wchar_t last = text.IsEmpty() ? 0 : text[text.GetLength() - 1];
    if (last == L'\\' || last == L'/' || last == L':')
        text = text.Left(text.GetLength() - 1);
    return SplitAtLastSlash(text, name);
}

TFileLocationInfo::TFileLocationInfo() : kind(kLocationNone)
{
    std::memset(&storage, 0, sizeof storage);
}

TFileLocationInfo::TFileLocationInfo(const TFileLocationInfo &other) : kind(other.kind), path(other.path)
{
    // Bitwise, URL included and not retained: see the header.
    std::memcpy(&storage, &other.storage, sizeof storage);
}

TFileLocationInfo &TFileLocationInfo::operator=(const TFileLocationInfo &other)
{
    if (this == &other)
        return *this;
    const LocationKind previous = kind;
    path = other.path;
    kind = other.kind;
    // Keyed on the kind just copied in, not on the one held before.  When
    // the storage held an FSSpec, FSRef or alias its first word is not an
    // object, and releasing it could only crash; such a word is left alone.
    if (kind == kLocationCFURL && storage.url && previous != kLocationFSSpec &&
        previous != kLocationFSRef && previous != kLocationAlias) {
        CFRelease(storage.url);
        storage.url = nullptr;
    }
    switch (other.kind) {
    case kLocationFSSpec:
        std::memcpy(&storage.fsSpec, &other.storage.fsSpec, sizeof storage.fsSpec);
        break;
    case kLocationFSRef:
        std::memcpy(&storage.ref, &other.storage.ref, sizeof storage.ref);
        break;
    case kLocationAlias:
        storage.alias = other.storage.alias;
        break;
    case kLocationCFURL:
        storage.url = other.storage.url;
        if (storage.url)
            CFRetain(storage.url);
        break;
    default:
        break;
    }
    return *this;
}

TFileLocationInfo::~TFileLocationInfo()
{
    if (kind == kLocationCFURL && storage.url)
        CFRelease(storage.url);
}

void TFileLocationInfo::SetCFURL(CFURLRef url)
{
    if (!url)
        return;
    // Retained before the old one is released: setting the URL already held
    // must not free it on the way.
    CFRetain(url);
    if (kind == kLocationCFURL && storage.url)
        CFRelease(storage.url);
    kind = kLocationCFURL;
    storage.url = url;
}

void TFileLocationInfo::SetFSRef(const FSRef &ref)
{
    kind = kLocationFSRef;
    std::memcpy(&storage.ref, &ref, sizeof storage.ref);
}

bool TFileLocationInfo::SetAliasHandle(AliasHandle alias)
{
    kind = kLocationAlias;
    storage.alias = alias;
    return true;
}

bool TFileLocationInfo::GetFSRef(FSRef &ref) const
{
    switch (kind) {
    case kLocationPath: {
        CFURLRef url = CreateCFURL();
        if (!url)
            return false;
        const bool made = CFURLGetFSRef(url, &ref);
        CFRelease(url);
        return made;
    }
    case kLocationFSSpec:
        return FSpMakeFSRef(&storage.fsSpec, &ref) == noErr;
    case kLocationFSRef:
        std::memcpy(&ref, &storage.ref, sizeof ref);
        return true;
    case kLocationCFURL:
        return storage.url && CFURLGetFSRef(storage.url, &ref);
    default:
        return false;
    }
}

bool TFileLocationInfo::GetFSSpec(FSSpec &fsSpec) const
{
    FSRef ref;
    switch (kind) {
    case kLocationFSSpec:
        std::memcpy(&fsSpec, &storage.fsSpec, sizeof fsSpec);
        return true;
    case kLocationFSRef:
        return FSGetCatalogInfo(&storage.ref, kFSCatInfoNone, nullptr, nullptr, &fsSpec, nullptr) == noErr;
    case kLocationCFURL:
        return storage.url && CFURLGetFSRef(storage.url, &ref) &&
               FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, &fsSpec, nullptr) == noErr;
    case kLocationPath: {
        // The item inside its parent folder, whether or not it exists.
        CStr<wchar_t> name;
        CFURLRef parentURL = GetParentFolderURL(path, name);
        if (!parentURL)
            return false;
        const bool parentFound = CFURLGetFSRef(parentURL, &ref);
        CFRelease(parentURL);
        FSCatalogInfo info;
        if (!parentFound || FSGetCatalogInfo(&ref, kFSCatInfoNodeID, &info, nullptr, &fsSpec, nullptr) != noErr)
            return false;
        const std::vector<char> bytes = SystemEncodedText(name);
        const size_t length = std::strlen(bytes.data());
        // An empty name would make the FSSpec name the parent folder itself,
        // and a name cut to 63 bytes could be another item's: Delete would
        // then remove the wrong object.  A long name takes the File
        // Manager's own short form instead, which exists for existing items
        // only and is the form the other kinds give.
        if (length == 0 && !name.IsEmpty()) {
            std::memset(&fsSpec, 0, sizeof fsSpec);
            return false;
        }
        if (length > 63) {
            if (GetFSRef(ref) && FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, &fsSpec, nullptr) == noErr)
                return true;
            std::memset(&fsSpec, 0, sizeof fsSpec);
            return false;
        }
        fsSpec.parID = static_cast<SInt32>(info.nodeID);
        CopyCToPascal63(bytes.data(), fsSpec.name);
        return true;
    }
    default:
        return false;
    }
}

bool TFileLocationInfo::GetAliasHandle(AliasHandle &alias) const
{
    FSRef ref;
    switch (kind) {
    case kLocationFSSpec:
        return NewAlias(nullptr, &storage.fsSpec, &alias) == noErr;
    case kLocationFSRef:
        return FSNewAlias(nullptr, &storage.ref, &alias) == noErr;
    case kLocationPath:
        return GetFSRef(ref) && FSNewAlias(nullptr, &ref, &alias) == noErr;
    case kLocationCFURL:
        return storage.url && CFURLGetFSRef(storage.url, &ref) && FSNewAlias(nullptr, &ref, &alias) == noErr;
    case kLocationAlias:
        alias = storage.alias;
        return false; // deliberately: see the header
    default:
        return false;
    }
}

CFURLRef TFileLocationInfo::CreateCFURL() const
{
    switch (kind) {
    case kLocationPath: {
        // The path is copied whole, whatever its length.
        CStr<wchar_t> text = path;
        const bool isDirectory = !text.IsEmpty() && text[text.GetLength() - 1] == kDelimiter;
        if (isDirectory && text.GetLength() > 1)
            text = text.Left(text.GetLength() - 1);
        CFStringRef string = text.CreateCFString();
        if (!string)
            return nullptr;
        CFURLRef url = CFURLCreateWithFileSystemPath(kCFAllocatorDefault, string, kCFURLPOSIXPathStyle, isDirectory);
        CFRelease(string);
        return url;
    }
    case kLocationFSSpec: {
        FSRef ref;
        if (FSpMakeFSRef(&storage.fsSpec, &ref) != noErr)
            return nullptr;
        return CFURLCreateFromFSRef(nullptr, &ref);
    }
    case kLocationFSRef:
        return CFURLCreateFromFSRef(nullptr, &storage.ref);
    case kLocationCFURL:
        if (storage.url)
            CFRetain(storage.url);
        return storage.url;
    default:
        return nullptr;
    }
}

CStr<wchar_t> TFileLocationInfo::GetFullPath() const
{
    if (kind == kLocationNone)
        return CStr<wchar_t>();
    if (kind == kLocationPath)
        return path;
    CStr<wchar_t> fullPath;
    CFURLRef url = CreateCFURL();
    if (url) {
        GetPathFromCFURLRef(url, fullPath);
        CFRelease(url);
    }
    return fullPath;
}

bool TFileLocationInfo::GetPathFromCFURLRef(CFURLRef url, CStr<wchar_t> &path)
{
    if (!url)
        return false;
    CFStringRef text = CFURLCopyFileSystemPath(url, kCFURLPOSIXPathStyle);
    if (!text)
        return false;
    const bool done = path.InitWithCFString(text);
    CFRelease(text);
    return done;
}

CStr<wchar_t> TFileLocationInfo::GetFileExtension(const wchar_t *name)
{
    const CStr<wchar_t> text(name);
    const int dot = text.ReverseFind(L'.');
    return dot < 0 ? CStr<wchar_t>() : text.Mid(dot + 1);
}

bool TFileLocationInfo::GetFileName(CStr<wchar_t> &name) const
{
    FSSpec fsSpec;
    if (!GetFSSpec(fsSpec))
        return false;
    char text[64];
    std::memcpy(text, fsSpec.name + 1, fsSpec.name[0]);
    text[fsSpec.name[0]] = 0;
    name = text; // widened from the system encoding
    return true;
}

bool TFileLocationInfo::IsFile() const
{
    FILE *file = file_utils::fopen(*this, "rb");
    if (!file)
        return false;
    std::fclose(file);
    return true;
}

bool TFileLocationInfo::IsFolder() const
{
    CFURLRef url = CreateCFURL();
    if (!url)
        return false;
    const bool folder = CFURLHasDirectoryPath(url);
    CFRelease(url);
    return folder;
}

bool TFileLocationInfo::CreateFile() const
{
    FILE *file = file_utils::fopen(*this, "wb");
    if (!file)
        return false;
    std::fclose(file);
    return true;
}

bool TFileLocationInfo::CreateFolder() const
{
    CStr<wchar_t> name;
    CFURLRef parentURL = GetParentFolderURL(GetFullPath(), name);
    if (!parentURL)
        return false;
    const OSErr status = CreateFolderIn(parentURL, name);
    CFRelease(parentURL);
    return status == noErr; // an existing folder fails here
}

bool TFileLocationInfo::Delete() const
{
    if (IsFolder())
        return file_utils::DeleteDir(*this, true);
    FSSpec fsSpec;
    switch (kind) {
    case kLocationFSSpec:
        return FSpDelete(&storage.fsSpec) == noErr;
    case kLocationFSRef:
        return FSDeleteObject(&storage.ref) == noErr;
    default:
        return GetFSSpec(fsSpec) && FSpDelete(&fsSpec) == noErr;
    }
}
