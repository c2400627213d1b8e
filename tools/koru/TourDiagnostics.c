/* Tour section: the debug switch, the suffix helpers, the process name and
 * the CF log, with the platform's system version and temporary folder. */
#include "Tour.h"

#include <CoreServices/CoreServices.h>

#include <stdio.h>
#include <stdlib.h>

typedef bool (*DebugFunction)(void);
typedef bool (*SuffixFunction)(const char *, const char *, bool);
typedef char *(*LastSubstringFunction)(const char *, const char *, bool);
typedef CFStringRef (*ProcessNameFunction)(void);
typedef void (*LogStringFunction)(const char *, unsigned long, CFStringRef);

static bool TourDiagnostics(CFBundleRef bundle)
{
    DebugFunction debug = (DebugFunction)KORUTourLookup(bundle, "KORUDebug");
    SuffixFunction isEndWith = (SuffixFunction)KORUTourLookup(bundle, "StringIsEndWith");
    LastSubstringFunction lastSubstring =
        (LastSubstringFunction)KORUTourLookup(bundle, "StringGetLastSubstring");
    ProcessNameFunction processName =
        (ProcessNameFunction)KORUTourLookup(bundle, "CFStringCopyCurrentProcessName");
    LogStringFunction logString = (LogStringFunction)KORUTourLookup(bundle, "CFLogStringCore");
    if (debug == NULL || isEndWith == NULL || lastSubstring == NULL || processName == NULL ||
        logString == NULL)
        return false;

    const char *home = getenv("HOME");
    printf("  debug output: %s (marker %s/.debug, looked for once per process)\n",
           debug() ? "on" : "off", home != NULL ? home : "<no HOME>");

    const char *name = "report.final.TXT";
    bool ignoringCase = isEndWith(name, ".txt", true);
    bool matchingCase = isEndWith(name, ".txt", false);
    const char *last = lastSubstring(name, ".", false);
    printf("  \"%s\" ends with \".txt\": %s ignoring case, %s matching it; last \".\" at %ld\n",
           name, ignoringCase ? "yes" : "no", matchingCase ? "yes" : "no",
           last != NULL ? (long)(last - name) : -1L);

    char process[256] = "";
    CFStringRef processText = processName();
    if (processText == NULL || !CFStringGetCString(processText, process, sizeof process, kCFStringEncodingUTF8)) {
        if (processText != NULL)
            CFRelease(processText);
        return false;
    }
    CFRelease(processText);
    printf("  current process: %s\n", process);

    SInt32 version = 0;
    char temporary[1024] = "";
    if (Gestalt(gestaltSystemVersion, &version) == noErr)
        printf("  system version for version tests: 0x%04X\n", (unsigned)version);
    if (FSFindFolderGetPath(kUserDomain, kTemporaryFolderType, kCreateFolder, temporary, sizeof temporary) == noErr)
        printf("  private temporary folder: %s\n", temporary);

    printf("  a CF log line on standard error:\n");
    fflush(stdout);
    logString("TourDiagnostics.c", __LINE__, CFSTR("Hello from the CF log"));
    return ignoringCase && !matchingCase && last == name + 12;
}

KORU_TOUR_SECTION(20, "Diagnostics: debug switch, suffixes, process name, CF log", TourDiagnostics)
