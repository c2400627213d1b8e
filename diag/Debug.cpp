/* The debug switch, the failure report, the argument dump and the suffix helpers. */
#include <KORU/Debug.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>

extern "C" {
Boolean gKORUDebug = 0;
}

namespace {

bool gMarkerChecked = false;

/* The line numbers these two report with are fixed: hosts match them in logs. */
constexpr int kStringGetLastSubstringLine = 310;
constexpr int kStringIsEndWithLine = 325;

/* The marker path is built in a fixed buffer as it always was; a HOME too
 * long for it counts as having no marker rather than overrunning it. */
constexpr size_t kMarkerPathSize = 1024;

bool MarkerExists(const char *home)
{
    const char *marker = ".debug";
    size_t length = std::strlen(home);
    bool needsSlash = !StringIsEndWith(home, "/", false);
    if (length + (needsSlash ? 1 : 0) + std::strlen(marker) + 1 > kMarkerPathSize)
        return false;
    char path[kMarkerPathSize];
    std::memcpy(path, home, length + 1);
    if (needsSlash)
        std::strcat(path, "/");
    std::strcat(path, marker);
    FILE *file = std::fopen(path, "r");
    if (file == nullptr)
        return false;
    std::fclose(file);
    return true;
}

} // namespace

extern "C" bool KORUDebug(void)
{
    if (gMarkerChecked || gKORUDebug != 0)
        return gKORUDebug != 0;
    gMarkerChecked = true;
    const char *home = std::getenv("HOME");
    if (home == nullptr)
        return gKORUDebug != 0;
    gKORUDebug = MarkerExists(home) ? 1 : 0;
    return gKORUDebug != 0;
}

extern "C" void KORUReportFailure(const char *function, int line)
{
    if (function == nullptr || !KORUDebug())
        return;
    std::fprintf(stderr, "%s (%i) Sorry, I caught GOTO error.\n", function, line);
}

extern "C" void PrintMainArguments(int argc, char **argv)
{
    std::fprintf(stderr, "\nargc=%02i\n", argc);
    for (int i = 0; argv != nullptr && i < argc; ++i)
        std::fprintf(stderr, "argv[%02i]=%s\n", i, argv[i] != nullptr ? argv[i] : "(null)");
    std::fputc('\n', stderr);
}

extern "C" char *StringGetLastSubstring(const char *s, const char *needle, bool ignoreCase)
{
    if (s == nullptr || needle == nullptr) {
        KORUReportFailure("StringGetLastSubstring", kStringGetLastSubstringLine);
        return nullptr;
    }
    // Restarting one character after each hit lets overlapping occurrences count.
    const char *latest = nullptr;
    const char *from = s;
    for (;;) {
        const char *hit = ignoreCase ? strcasestr(from, needle) : std::strstr(from, needle);
        if (hit == nullptr)
            break;
        latest = hit;
        if (*hit == '\0')
            break; // an empty needle matches at the terminator; nothing lies beyond it
        from = hit + 1;
    }
    return const_cast<char *>(latest);
}

extern "C" bool StringIsEndWith(const char *s, const char *suffix, bool ignoreCase)
{
    if (s == nullptr || suffix == nullptr) {
        KORUReportFailure("StringIsEndWith", kStringIsEndWithLine);
        return false;
    }
    const char *last = StringGetLastSubstring(s, suffix, ignoreCase);
    if (last == nullptr)
        return false;
    return (ignoreCase ? strcasecmp(last, suffix) : std::strcmp(last, suffix)) == 0;
}
