// A C++ host has no autorelease pool.  The CF entry points drain their own,
// so calling them in a loop leaves nothing behind: memory stays flat and
// Foundation never warns of an object autoreleased without a pool.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
// AddressSanitizer keeps freed memory in quarantine, which would read as
// growth; without it, resident memory again follows what is really held.
extern "C" __attribute__((visibility("default"), used)) const char *__asan_default_options()
{
    return "quarantine_size_mb=0:thread_local_quarantine_size_kb=0";
}
#endif

namespace {

long ResidentKilobytes()
{
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmRSS:", 0) == 0)
            return std::stol(line.substr(6));
    }
    return -1;
}

// One round of calls that each make autoreleased objects inside.
void UseCF()
{
    CFURLRef base = CFURLCreateWithString(nullptr, CFSTR("http://host/a/b/c?q=1"), nullptr);
    CFURLRef relative = CFURLCreateWithString(nullptr, CFSTR("../d/e.txt#top"), base);
    CFURLRef absolute = CFURLCopyAbsoluteURL(relative);
    CFStringRef path = CFURLCopyFileSystemPath(absolute, kCFURLPOSIXPathStyle);
    CFStringRef specifier = CFURLCopyResourceSpecifier(absolute);
    (void)CFURLCanBeDecomposed(relative);
    CFURLRef file = CFURLCreateWithFileSystemPath(nullptr, CFSTR("/tmp/x y/z"), kCFURLPOSIXPathStyle, false);
    UInt8 buffer[256];
    (void)CFURLGetFileSystemRepresentation(file, true, buffer, sizeof buffer);
    CFStringRef formatted = CFStringCreateWithFormat(nullptr, nullptr, CFSTR("%@ %d %s"), path, 42, "text");
    CFStringRef description = CFCopyDescription(absolute);
    CFMutableStringRef folded = CFStringCreateMutableCopy(nullptr, 0, CFSTR("\u00c9t\u00e9"));
    CFStringFold(folded, kCFCompareCaseInsensitive | kCFCompareDiacriticInsensitive, nullptr);
    CFTimeZoneRef zone = CFTimeZoneCreateWithTimeIntervalFromGMT(nullptr, 3600);
    (void)CFAbsoluteTimeGetGregorianDate(CFAbsoluteTimeGetCurrent(), zone);
    const void *values[] = {CFSTR("a"), CFSTR("b")};
    CFSetRef set = CFSetCreate(nullptr, values, 2, &kCFTypeSetCallBacks);
    CFRange found;
    (void)CFStringFindCharacterFromSet(formatted, CFCharacterSetGetPredefined(kCFCharacterSetDecimalDigit),
                                       CFRangeMake(0, CFStringGetLength(formatted)), 0, &found);
    for (CFTypeRef object : {(CFTypeRef)base, (CFTypeRef)relative, (CFTypeRef)absolute, (CFTypeRef)path,
                             (CFTypeRef)specifier, (CFTypeRef)file, (CFTypeRef)formatted, (CFTypeRef)description,
                             (CFTypeRef)folded, (CFTypeRef)zone, (CFTypeRef)set})
        if (object != nullptr)
            CFRelease(object);
}

TEST(CFAutoreleasePool, AHostLoopKeepsMemoryFlat)
{
    // Foundation's warnings go to standard error: catch them in a file.
    char logPath[] = "/tmp/koru-pool-XXXXXX";
    int log = mkstemp(logPath);
    ASSERT_GE(log, 0);
    fflush(stderr);
    int savedError = dup(STDERR_FILENO);
    dup2(log, STDERR_FILENO);

    for (int i = 0; i < 2000; i++)
        UseCF();
    long before = ResidentKilobytes();
    for (int i = 0; i < 100000; i++)
        UseCF();
    long after = ResidentKilobytes();

    fflush(stderr);
    dup2(savedError, STDERR_FILENO);
    close(savedError);
    std::ifstream logFile(logPath);
    std::string warnings((std::istreambuf_iterator<char>(logFile)), std::istreambuf_iterator<char>());
    close(log);
    unlink(logPath);

    std::printf("resident memory over 100000 rounds: %ld kB -> %ld kB\n", before, after);
    ASSERT_GT(before, 0);
    // Objects left in a pool that never drains cost far more than this over
    // 100 000 rounds (each round autoreleases dozens of objects).
    EXPECT_LT(after - before, 16 * 1024) << "grew from " << before << " kB to " << after << " kB";
    EXPECT_EQ(warnings.find("autorelease"), std::string::npos) << warnings.substr(0, 500);
}

}  // namespace
