// Property lists from outside data through the CF layer: XML, binary and
// OpenStep text, parsed, and what parses written back out and read again.
#include <CoreFoundation/CoreFoundation.h>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    CFDataRef bytes = CFDataCreate(nullptr, data, static_cast<CFIndex>(size));
    if (bytes == nullptr)
        return 0;
    CFPropertyListFormat format = 0;
    CFErrorRef error = nullptr;
    CFPropertyListRef list =
        CFPropertyListCreateWithData(nullptr, bytes, kCFPropertyListImmutable, &format, &error);
    if (error != nullptr)
        CFRelease(error);
    if (list != nullptr) {
        CFDataRef xml = CFPropertyListCreateXMLData(nullptr, list);
        if (xml != nullptr) {
            CFPropertyListRef again =
                CFPropertyListCreateFromXMLData(nullptr, xml, kCFPropertyListMutableContainers, nullptr);
            if (again != nullptr)
                CFRelease(again);
            CFRelease(xml);
        }
        CFRelease(list);
    }
    CFRelease(bytes);
    return 0;
}
