// Process helpers: enumeration, bundle locations and the front process.
#include <KORU/FSUtilities.h>

#include "CFReference.h"

#include <cstring>

using koru::CFReference;

namespace {

bool IsURL(CFTypeRef object)
{
    return object && CFGetTypeID(object) == CFURLGetTypeID();
}

// Stops at the first process whose bundle location is the target.
Boolean FindLocation(ProcessSerialNumber *psn, void *context)
{
    const FSRef *target = static_cast<const FSRef *>(context);
    FSRef location;
    return !(GetProcessBundleLocation(psn, &location) == noErr && FSCompareFSRefs(&location, target) == noErr);
}

} // namespace

extern "C" Boolean EnumerateAllProcess(ProcessEnumerationProcPtr callback, void *context)
{
    if (!callback)
        return false;
    ProcessSerialNumber psn = {0, kNoProcess};
    while (GetNextProcess(&psn) == noErr)
        if (!callback(&psn, context))
            return false;
    return true;
}

extern "C" Boolean ProcessActivate(void)
{
    const ProcessSerialNumber current = {0, kCurrentProcess};
    return SetFrontProcess(&current) == noErr;
}

extern "C" Boolean FSGetCurrentProcess(FSRef *ref)
{
    ProcessSerialNumber psn;
    return ref && GetCurrentProcess(&psn) == noErr && GetProcessBundleLocation(&psn, ref) == noErr;
}

extern "C" Boolean FSGetFrontProcess(FSRef *ref)
{
    ProcessSerialNumber psn;
    return ref && GetFrontProcess(&psn) == noErr && GetProcessBundleLocation(&psn, ref) == noErr;
}

extern "C" CFURLRef CFURLCopyCurrentProcess(void)
{
    FSRef ref;
    return FSGetCurrentProcess(&ref) ? CFURLCreateFromFSRef(kCFAllocatorDefault, &ref) : nullptr;
}

extern "C" Boolean FSCopyAllProcessEnumeration(ProcessSerialNumber *psn, void *data)
{
    FSRef location;
    if (psn && data && GetProcessBundleLocation(psn, &location) == noErr)
        CFDataAppendBytes(static_cast<CFMutableDataRef>(data), reinterpret_cast<const UInt8 *>(&location),
                          sizeof location);
    return true;
}

extern "C" CFMutableDataRef FSCopyAllProcess(void)
{
    CFReference<CFMutableDataRef> list(CFDataCreateMutable(kCFAllocatorDefault, 0));
    if (!list || !EnumerateAllProcess(FSCopyAllProcessEnumeration, list.get()))
        return nullptr;
    return list.release();
}

extern "C" Boolean FSIsRunningProcess(const FSRef *ref)
{
    // The enumeration stops (answers false) exactly when a process matched.
    return ref && !EnumerateAllProcess(FindLocation, const_cast<FSRef *>(ref));
}

extern "C" Boolean CFURLIsRunningProcess(CFURLRef url)
{
    FSRef ref;
    return IsURL(url) && CFURLGetFSRef(url, &ref) && FSIsRunningProcess(&ref);
}

extern "C" Boolean FSIsFrontProcess(const FSRef *ref)
{
    FSRef front;
    return ref && FSGetFrontProcess(&front) && FSCompareFSRefs(&front, ref) == noErr;
}

extern "C" Boolean FSGetProcessSerialNumberEnumeration(ProcessSerialNumber *psn, void *context)
{
    auto *search = static_cast<FSProcessSerialNumberSearch *>(context);
    if (!psn || !search || !search->target)
        return true;
    FSRef location;
    if (GetProcessBundleLocation(psn, &location) != noErr || FSCompareFSRefs(&location, search->target) != noErr)
        return true;
    if (search->psn)
        *search->psn = *psn;
    search->found = true;
    return false;
}

extern "C" Boolean FSGetProcessSerialNumber(const FSRef *ref, ProcessSerialNumber *psn)
{
    if (psn)
        *psn = ProcessSerialNumber{0, 0};
    if (!ref || !psn)
        return false;
    FSProcessSerialNumberSearch search = {ref, false, psn};
    EnumerateAllProcess(FSGetProcessSerialNumberEnumeration, &search);
    return search.found;
}

extern "C" Boolean CFURLGetProcessSerialNumber(CFURLRef url, ProcessSerialNumber *psn)
{
    if (psn)
        *psn = ProcessSerialNumber{0, 0};
    FSRef ref;
    return IsURL(url) && psn && CFURLGetFSRef(url, &ref) && FSGetProcessSerialNumber(&ref, psn);
}

extern "C" Boolean FSSetFrontProcess(const FSRef *ref)
{
    ProcessSerialNumber psn;
    return FSGetProcessSerialNumber(ref, &psn) && SetFrontProcess(&psn) == noErr;
}
