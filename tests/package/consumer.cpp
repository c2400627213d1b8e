// A C++ program outside the tree, built against the installed package.
#include <KORU/KORU.h>

#include <cstdio>
#include <cstring>

int main()
{
    CFStringRef s = CFStringCreateWithCString(nullptr, "d\xC3\xA9j\xC3\xA0", kCFStringEncodingUTF8);
    char latin1[8];
    char ascii[8];
    bool ok = s != nullptr && CFStringGetLength(s) == 4 &&
              CFStringGetCString(s, latin1, sizeof latin1, kCFStringEncodingISOLatin1) &&
              std::strcmp(latin1, "d\xE9j\xE0") == 0 &&
              !CFStringGetCString(s, ascii, sizeof ascii, kCFStringEncodingASCII) && ascii[0] == '\0';
    if (s != nullptr)
        CFRelease(s);
    std::puts(ok ? "consumer: ok" : "consumer: FAILED");
    return ok ? 0 : 1;
}
