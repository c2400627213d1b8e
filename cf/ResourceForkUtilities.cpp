// A file's resource fork as the current resource file, and its 'vers' resource.
#include <KORU/FSUtilities.h>

#include <algorithm>
#include <cstring>

extern "C" {

SInt16 gAppResRef = -1;

SInt16 RFOpen(const FSRef *ref, Boolean forWriting)
{
    if (!ref)
        return -1;
    // Only a host that set gAppResRef gets the current file saved here.
    if (gAppResRef != -1)
        gAppResRef = CurResFile();
    HFSUniStr255 resourceFork;
    FSGetResourceForkName(&resourceFork);
    if (forWriting)
        (void)FSCreateResourceFork(ref, resourceFork.length, resourceFork.unicode, 0);
    const SInt16 refNum = FSOpenResFile(ref, forWriting ? fsRdWrPerm : fsRdPerm);
    if (refNum == -1 || ResError() != noErr)
        return -1;
    UseResFile(refNum);
    return refNum;
}

void RFClose(SInt16 *refNum)
{
    if (!refNum || *refNum == -1)
        return;
    if (gAppResRef != -1)
        UseResFile(gAppResRef);
    CloseResFile(*refNum);
    *refNum = -1;
}

Boolean RFGetVersion(SInt16 resID, VersRec *version)
{
    if (!version)
        return false;
    std::memset(version, 0, sizeof *version);
    Handle resource = Get1Resource(0x76657273, resID); // 'vers'
    if (!resource || !*resource)
        return false;
    const Size size = GetHandleSize(resource);
    if (size < 8)
        return false;
    const auto *bytes = reinterpret_cast<const UInt8 *>(*resource);
    auto *record = reinterpret_cast<UInt8 *>(version);
    std::memcpy(record, bytes, 6); // numeric version and region code
    // The short version's Pascal string, then the long one right after it;
    // each is cut where the resource ends.
    Size at = 6;
    for (size_t field = 0; field < 2 && at < size; ++field) {
        const Size length = std::min<Size>(1 + bytes[at], size - at);
        std::memcpy(record + 6 + field * 256, bytes + at, static_cast<size_t>(length));
        at += length;
    }
    return true;
}

} // extern "C"
