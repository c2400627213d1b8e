/* The log core's helpers: encoding fallback, folder URLs, process names. */
#include <KORU/LogSupport.h>

#include <KORU/Debug.h>

#include <ApplicationServices/ApplicationServices.h>
#include <CoreServices/CoreServices.h>

namespace {

CFDataRef CreateRepresentation(CFStringRef string, CFStringEncoding encoding, UInt8 lossByte)
{
    return CFStringCreateExternalRepresentation(kCFAllocatorDefault, string, encoding, lossByte);
}

CFStringRef CopyNameOf(const ProcessSerialNumber &process)
{
    CFStringRef name = nullptr;
    if (CopyProcessName(&process, &name) != noErr)
        return nullptr;
    return name;
}

} // namespace

extern "C" CFDataRef CFStringCreateConvertableExternalRepresentation(CFStringRef string)
{
    if (string == nullptr) {
        KORU_REPORT_FAILURE();
        return nullptr;
    }
    const CFStringEncoding *position = CFStringGetListOfAvailableEncodings();
    if (position == nullptr)
        return nullptr;
    const UInt8 lossBytes[] = {0, 0xFF};
    for (UInt8 lossByte : lossBytes) {
        if (CFDataRef data = CreateRepresentation(string, CFStringGetSystemEncoding(), lossByte))
            return data;
        // The list position carries over into the lossy pass on purpose: after a
        // lossless pass that failed everywhere, only the system encoding is tried again.
        for (; *position != kCFStringEncodingInvalidId; ++position) {
            if (CFDataRef data = CreateRepresentation(string, *position, lossByte))
                return data;
        }
    }
    return nullptr;
}

extern "C" CFURLRef CFURLCreateWithFindFolder(SInt16 domain, OSType folderType,
                                             Boolean createFolder, CFStringRef component,
                                             Boolean isDirectory)
{
    FSRef folder;
    if (FSFindFolder(domain, folderType, createFolder, &folder) != noErr)
        return nullptr;
    CFURLRef folderURL = CFURLCreateFromFSRef(kCFAllocatorDefault, &folder);
    if (folderURL == nullptr || component == nullptr)
        return folderURL;
    CFURLRef url = CFURLCreateCopyAppendingPathComponent(kCFAllocatorDefault, folderURL, component,
                                                         isDirectory);
    CFRelease(folderURL);
    return url;
}

extern "C" CFStringRef CFStringCopyCurrentProcessName(void)
{
    ProcessSerialNumber process = {0, kNoProcess};
    if (GetCurrentProcess(&process) != noErr)
        return nullptr;
    return CopyNameOf(process);
}

extern "C" CFStringRef CFStringCopyFrontProcessName(void)
{
    ProcessSerialNumber process = {0, kNoProcess};
    if (GetFrontProcess(&process) != noErr)
        return nullptr;
    return CopyNameOf(process);
}
