/* A plain C host of the installed toolkit, no Objective-C: it converts a
 * string, moves a range, finds its own process and checks that the toolkit
 * never loaded GNUstep's X back end, the part that opens a display.  It is
 * run with DISPLAY unset, where opening one would fail. */
#include <KORU/KORU.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int failures;

static void Check(int ok, const char *what)
{
    if (!ok) {
        fprintf(stderr, "nodisplay: %s failed\n", what);
        failures++;
    }
}

/* A library of the back end (libgnustep-back, libgnustep-xlib) in the
 * process's mappings. */
static int BackEndLoaded(void)
{
    FILE *maps = fopen("/proc/self/maps", "r");
    char line[4096];
    int found = 0;
    if (maps == NULL)
        return 1;
    while (fgets(line, sizeof line, maps) != NULL)
        if (strstr(line, "libgnustep-back") != NULL || strstr(line, "libgnustep-xlib") != NULL)
            found = 1;
    fclose(maps);
    return found;
}

int main(void)
{
    CFStringRef text = CFStringCreateWithCString(NULL, "caf\xC3\xA9", kCFStringEncodingUTF8);
    char *latin1 = CFStringAllocCString(text, kCFStringEncodingISOLatin1);
    Check(latin1 != NULL && strcmp(latin1, "caf\xE9") == 0, "CFStringAllocCString");
    free(latin1);
    Check(!CFStringIsVoid(text) && CFStringIsVoid(NULL), "CFStringIsVoid");
    CFRelease(text);

    CFRange range = CFRangeMake(2, 5);
    CFRangeMove(&range, 3);
    Check(range.location == 5 && range.length == 5, "CFRangeMove");

    FSRef self;
    char *path = FSGetCurrentProcess(&self) ? FSAllocPathUTF8String(&self) : NULL;
    Check(path != NULL && strstr(path, "nodisplay") != NULL, "FSGetCurrentProcess");
    free(path);

    Check(getenv("DISPLAY") == NULL, "running without DISPLAY");
    Check(!BackEndLoaded(), "no display back end loaded");
    if (failures == 0)
        printf("nodisplay: a C host used the toolkit without a display\n");
    return failures == 0 ? 0 : 1;
}
