// A C++ program outside the tree, built against the installed package.  It
// links the toolkit and also loads the installed bundle at run time: both
// must be the same image, sharing one copy of the toolkit's state.
#include <KORU/KORU.h>

#include <cstdio>
#include <cstring>

static bool ConvertsStrictly()
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
    return ok;
}

static bool BundleIsTheLinkedLibrary(const char *bundlePath)
{
    CFStringRef path = CFStringCreateWithCString(nullptr, bundlePath, kCFStringEncodingUTF8);
    CFURLRef url = CFURLCreateWithFileSystemPath(nullptr, path, kCFURLPOSIXPathStyle, true);
    CFBundleRef bundle = CFBundleCreate(nullptr, url);
    bool ok = bundle != nullptr && CFBundleLoadExecutable(bundle) &&
              CFBundleGetDataPointerForName(bundle, CFSTR("gKORUDebug")) == &gKORUDebug &&
              CFBundleGetFunctionPointerForName(bundle, CFSTR("KORUDebug")) == reinterpret_cast<void *>(&KORUDebug);
    if (bundle != nullptr)
        CFRelease(bundle);
    CFRelease(url);
    CFRelease(path);
    return ok;
}

int main(int argc, char **argv)
{
    bool ok = ConvertsStrictly() && (argc < 2 || BundleIsTheLinkedLibrary(argv[1]));
    std::puts(ok ? "consumer: ok" : "consumer: FAILED");
    return ok ? 0 : 1;
}
