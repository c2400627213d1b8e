// Launching the application, or opening the item, that a URL names.
#include <KORU/URLLaunching.h>

Boolean LSLaunchURLWithLaunchFlags(CFURLRef url, LSLaunchFlags flags)
{
    if (url == nullptr || CFGetTypeID(url) != CFURLGetTypeID())
        return false;
    LSLaunchURLSpec launchSpec = {url, nullptr, nullptr, flags, nullptr};
    OSStatus status = LSOpenFromURLSpec(&launchSpec, nullptr);
    if (status == kLSNotAnApplicationErr) {
        // Not an application: a document, a folder or a web address, which
        // its default application opens.
        CFArrayRef items = CFArrayCreate(kCFAllocatorDefault, reinterpret_cast<const void **>(&url), 1,
                                         &kCFTypeArrayCallBacks);
        if (items == nullptr)
            return false;
        launchSpec = {nullptr, items, nullptr, flags, nullptr};
        status = LSOpenFromURLSpec(&launchSpec, nullptr);
        CFRelease(items);
    }
    return status == noErr;
}
