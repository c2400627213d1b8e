/* Making, resolving and comparing FSRefs, and the FSSpec bridge. */
#include "FileRef.h"

#include "NodeTable.h"
#include "PathTable.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace filemanager {

namespace {

constexpr uint32_t kRefTag = 0x4B526566; // 'KRef'

struct RefData {
    uint32_t tag;
    uint32_t pathIndex;
    uint64_t device;
    uint64_t inode;
    uint8_t reserved[56];
};
static_assert(sizeof(RefData) == sizeof(FSRef), "an FSRef is 80 bytes");

void ClearRef(FSRef *ref)
{
    if (ref)
        std::memset(ref, 0, sizeof *ref);
}

// Decodes one UTF-8 sequence at text[i]; false for a malformed one.
bool DecodeUTF8(const std::string &text, size_t &i, uint32_t &codePoint)
{
    const auto byte = [&](size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char lead = byte(i);
    size_t extra;
    uint32_t value, minimum;
    if (lead < 0x80) {
        codePoint = lead;
        ++i;
        return true;
    } else if ((lead & 0xE0) == 0xC0) {
        extra = 1, value = lead & 0x1F, minimum = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        extra = 2, value = lead & 0x0F, minimum = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
        extra = 3, value = lead & 0x07, minimum = 0x10000;
    } else {
        return false;
    }
    if (i + extra >= text.size())
        return false;
    for (size_t k = 1; k <= extra; ++k) {
        if ((byte(i + k) & 0xC0) != 0x80)
            return false;
        value = (value << 6) | (byte(i + k) & 0x3F);
    }
    if (value < minimum || value > 0x10FFFF)
        return false;
    codePoint = value;
    i += extra + 1;
    return true;
}

void AppendUTF8(std::string &out, uint32_t codePoint)
{
    if (codePoint < 0x80) {
        out += static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        out += static_cast<char>(0xC0 | (codePoint >> 6));
        out += static_cast<char>(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        out += static_cast<char>(0xE0 | (codePoint >> 12));
        out += static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (codePoint & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (codePoint >> 18));
        out += static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (codePoint & 0x3F));
    }
}

// The node ID written after "#" in a shortened name, or 0.
UInt32 IDInShortenedName(const std::string &name)
{
    const size_t mark = name.rfind('#');
    if (mark == std::string::npos)
        return 0;
    UInt32 id = 0;
    size_t k = mark + 1;
    for (; k < name.size() && std::isxdigit(static_cast<unsigned char>(name[k])); ++k)
        id = id * 16 + static_cast<UInt32>(std::isdigit(static_cast<unsigned char>(name[k]))
                                               ? name[k] - '0'
                                               : (name[k] | 0x20) - 'a' + 10);
    if (k == mark + 1 || (k < name.size() && name[k] != '.'))
        return 0;
    return id;
}

} // namespace

OSErr StatusFromErrno(int error)
{
    switch (error) {
    case 0:
        return noErr;
    case ENOENT:
    case ELOOP:
        return fnfErr;
    case ENOTDIR:
        return dirNFErr;
    case EEXIST:
        return dupFNErr;
    case ENOTEMPTY:
    case EBUSY:
    case ETXTBSY:
        return fBsyErr;
    case EACCES:
    case EPERM:
        return afpAccessDenied;
    case EROFS:
        return wPrErr;
    case ENOSPC:
    case EDQUOT:
        return dskFulErr;
    case ENAMETOOLONG:
        return bdNamErr;
    case ENOMEM:
        return memFullErr;
    case EXDEV:
        return diffVolErr;
    case EISDIR:
        return notAFileErr;
    case EINVAL:
        return paramErr;
    case EMFILE:
    case ENFILE:
        return tmfoErr;
    default:
        return ioErr;
    }
}

OSErr RealPath(const std::string &path, bool followLeaf, std::string &out)
{
    std::string trimmed = path;
    while (trimmed.size() > 1 && trimmed.back() == '/')
        trimmed.pop_back();
    std::string folder = trimmed, leaf;
    if (!followLeaf) {
        const size_t slash = trimmed.rfind('/');
        leaf = slash == std::string::npos ? trimmed : trimmed.substr(slash + 1);
        if (leaf.empty() || leaf == "." || leaf == "..")
            leaf.clear();
        else
            folder = slash == std::string::npos ? "." : slash == 0 ? "/" : trimmed.substr(0, slash);
    }
    char *resolved = realpath(folder.c_str(), nullptr);
    if (!resolved)
        return StatusFromErrno(errno);
    out = leaf.empty() ? std::string(resolved) : JoinPath(resolved, leaf);
    std::free(resolved);
    return noErr;
}

OSErr ResolveRef(const FSRef *ref, Node &node)
{
    if (!ref)
        return paramErr;
    RefData data;
    std::memcpy(&data, ref, sizeof data);
    if (data.tag != kRefTag || !PathTable::Lookup(data.pathIndex, node.path))
        return errFSBadFSRef;
    if (lstat(node.path.c_str(), &node.st) != 0 || node.st.st_dev != data.device ||
        node.st.st_ino != data.inode)
        return fnfErr;
    return noErr;
}

void MakeRef(FSRef *ref, const Node &node)
{
    if (!ref)
        return;
    RefData data{};
    data.tag = kRefTag;
    data.pathIndex = PathTable::Intern(node.path);
    data.device = node.st.st_dev;
    data.inode = node.st.st_ino;
    std::memcpy(ref, &data, sizeof data);
}

OSErr LookUpNode(const std::string &path, Node &node)
{
    struct stat st;
    if (lstat(path.c_str(), &st) != 0)
        return StatusFromErrno(errno);
    node.path = path;
    node.st = st;
    return noErr;
}

std::string JoinPath(const std::string &folder, const std::string &name)
{
    if (!folder.empty() && folder.back() == '/')
        return folder + name;
    return folder + "/" + name;
}

std::string ParentPath(const std::string &path)
{
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos || slash == 0)
        return "/";
    return path.substr(0, slash);
}

std::string LastComponent(const std::string &path)
{
    if (path == "/")
        return path;
    return path.substr(path.rfind('/') + 1);
}

std::string CompanionPath(const std::string &path)
{
    if (path == "/" || path.empty())
        return std::string();
    return JoinPath(ParentPath(path), "._" + LastComponent(path));
}

OSErr NameFromUnicode(const UniChar *name, UniCharCount length, std::string &out)
{
    out.clear();
    if (length == 0)
        return errFSMissingName;
    if (!name)
        return paramErr;
    for (UniCharCount k = 0; k < length; ++k) {
        uint32_t unit = name[k];
        if (unit == 0 || unit == '/')
            return bdNamErr;
        if (unit >= 0xD800 && unit < 0xDC00 && k + 1 < length && name[k + 1] >= 0xDC00 &&
            name[k + 1] < 0xE000) {
            unit = 0x10000 + ((unit - 0xD800) << 10) + (name[k + 1] - 0xDC00u);
            ++k;
        }
        AppendUTF8(out, unit); // a lone surrogate is kept as its own three bytes
    }
    if (out == "." || out == "..")
        return bdNamErr;
    if (out.size() > 255)
        return errFSNameTooLong;
    return noErr;
}

void UnicodeFromName(const std::string &name, HFSUniStr255 &out)
{
    out.length = 0;
    size_t i = 0;
    while (i < name.size() && out.length < 255) {
        uint32_t codePoint;
        if (!DecodeUTF8(name, i, codePoint))
            codePoint = static_cast<unsigned char>(name[i++]);
        if (codePoint >= 0x10000) {
            if (out.length > 253)
                break;
            codePoint -= 0x10000;
            out.unicode[out.length++] = static_cast<UniChar>(0xD800 + (codePoint >> 10));
            out.unicode[out.length++] = static_cast<UniChar>(0xDC00 + (codePoint & 0x3FF));
        } else {
            out.unicode[out.length++] = static_cast<UniChar>(codePoint);
        }
    }
}

void ShortenedName(const std::string &name, UInt32 nodeID, unsigned char *pascalName)
{
    std::string shortName = name;
    if (name.size() > 63) {
        char id[16];
        std::snprintf(id, sizeof id, "#%X", static_cast<unsigned>(nodeID));
        const size_t dot = name.rfind('.');
        const std::string extension =
            dot != std::string::npos && dot > 0 && name.size() - dot <= 16 ? name.substr(dot) : "";
        size_t cut = 63 - std::strlen(id) - extension.size();
        while (cut > 0 && (static_cast<unsigned char>(name[cut]) & 0xC0) == 0x80)
            --cut; // never split a UTF-8 sequence
        shortName = name.substr(0, cut) + id + extension;
    }
    pascalName[0] = static_cast<unsigned char>(shortName.size());
    std::memcpy(pascalName + 1, shortName.data(), shortName.size());
}

OSErr MakeSpec(const Node &node, FSSpec &fsSpec)
{
    std::memset(&fsSpec, 0, sizeof fsSpec);
    Volume volume;
    if (!VolumeOfNode(node, volume))
        return nsvErr;
    fsSpec.vRefNum = volume.refNum;
    fsSpec.parID = static_cast<SInt32>(ParentIDOf(node));
    const std::string name = LastComponent(node.path);
    ShortenedName(name, name.size() > 63 ? NodeIDOf(node) : 0, fsSpec.name);
    return noErr;
}

OSErr FindSpecName(const std::string &folderPath, const unsigned char *pascalName, Node &node)
{
    const std::string name(reinterpret_cast<const char *>(pascalName + 1), pascalName[0]);
    if (name.find('/') != std::string::npos || name.find('\0') != std::string::npos ||
        name == "." || name == "..")
        return bdNamErr;
    OSErr status = LookUpNode(JoinPath(folderPath, name), node);
    if (status != fnfErr)
        return status;
    const UInt32 id = IDInShortenedName(name);
    Node candidate;
    if (id == 0 || NodeForID(id, candidate) != noErr || ParentPath(candidate.path) != folderPath)
        return fnfErr;
    unsigned char shortened[64];
    ShortenedName(LastComponent(candidate.path), id, shortened);
    if (std::memcmp(shortened, pascalName, static_cast<size_t>(pascalName[0]) + 1) != 0)
        return fnfErr;
    node = candidate;
    return noErr;
}

} // namespace filemanager

using namespace filemanager;

extern "C" OSStatus FSPathMakeRefWithOptions(const UInt8 *path, OptionBits options, FSRef *ref,
                                             Boolean *isDirectory)
{
    if (isDirectory)
        *isDirectory = false;
    ClearRef(ref);
    if (!path || !ref)
        return paramErr;
    const std::string text(reinterpret_cast<const char *>(path));
    if (text.empty())
        return fnfErr;
    try {
        std::string real;
        OSErr status = RealPath(text, (options & kFSPathMakeRefDoNotFollowLeafSymlink) == 0, real);
        Node node;
        if (status == noErr)
            status = LookUpNode(real, node);
        if (status != noErr)
            return status;
        MakeRef(ref, node);
        if (isDirectory)
            *isDirectory = S_ISDIR(node.st.st_mode);
        return noErr;
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSStatus FSPathMakeRef(const UInt8 *path, FSRef *ref, Boolean *isDirectory)
{
    return FSPathMakeRefWithOptions(path, kFSPathMakeRefDefaultOptions, ref, isDirectory);
}

extern "C" OSStatus FSRefMakePath(const FSRef *ref, UInt8 *path, UInt32 maxPathSize)
{
    if (!ref || !path || maxPathSize == 0)
        return paramErr;
    path[0] = 0;
    try {
        Node node;
        const OSErr status = ResolveRef(ref, node);
        if (status != noErr)
            return status;
        if (node.path.size() + 1 > maxPathSize)
            return kPathTooLongErr;
        std::memcpy(path, node.path.c_str(), node.path.size() + 1);
        return noErr;
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSCompareFSRefs(const FSRef *ref1, const FSRef *ref2)
{
    if (!ref1 || !ref2)
        return paramErr;
    try {
        Node first, second;
        OSErr status = ResolveRef(ref1, first);
        if (status == noErr)
            status = ResolveRef(ref2, second);
        if (status != noErr)
            return status;
        if (first.st.st_dev != second.st.st_dev)
            return diffVolErr;
        return first.st.st_ino == second.st.st_ino ? OSErr(noErr) : OSErr(errFSRefsDifferent);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSMakeFSRefUnicode(const FSRef *parentRef, UniCharCount nameLength,
                                    const UniChar *nameUnicode, TextEncoding, FSRef *newRef)
{
    if (!parentRef || !newRef)
        return paramErr;
    const FSRef parentCopy = *parentRef; // newRef may be the same buffer
    parentRef = &parentCopy;
    ClearRef(newRef);
    try {
        Node parent, node;
        std::string name;
        OSErr status = ResolveRef(parentRef, parent);
        if (status != noErr)
            return status;
        if (!S_ISDIR(parent.st.st_mode))
            return dirNFErr;
        status = NameFromUnicode(nameUnicode, nameLength, name);
        if (status == noErr)
            status = LookUpNode(JoinPath(parent.path, name), node);
        if (status != noErr)
            return status;
        MakeRef(newRef, node);
        return noErr;
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr FSpMakeFSRef(const FSSpec *source, FSRef *newRef)
{
    ClearRef(newRef);
    if (!source || !newRef)
        return paramErr;
    try {
        Node node;
        OSErr status;
        if (source->parID == fsRtParID) {
            Volume volume;
            if (!VolumeForRefNum(source->vRefNum, volume))
                return nsvErr;
            status = FolderForID(volume.refNum, fsRtDirID, node);
        } else {
            Node folder;
            status = FolderForID(source->vRefNum, static_cast<UInt32>(source->parID), folder);
            if (status == noErr && source->name[0] == 0)
                node = folder;
            else if (status == noErr)
                status = FindSpecName(folder.path, source->name, node);
        }
        if (status != noErr)
            return status;
        MakeRef(newRef, node);
        return noErr;
    } catch (...) {
        return memFullErr;
    }
}
