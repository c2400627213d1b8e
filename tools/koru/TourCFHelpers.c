/* Tour section: the CF string, range, URL, bundle, dictionary and
 * localisation helpers at work on the loaded KORU bundle itself. */
#include "Tour.h"

#include <CoreServices/CoreServices.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

typedef char *(*AllocCStringFunction)(CFStringRef);
typedef CFIndex (*ASCIIFunction)(CFStringRef, char *, CFIndex);
typedef char *(*TECFunction)(CFStringRef, TextEncoding, ByteCount, ByteCount *, ByteCount *, OSStatus *);
typedef void (*RangeFunction)(CFRange *, CFIndex);
typedef int (*CommandFunction)(CFStringRef, CFStringRef, CFStringRef);
typedef CFURLRef (*BundleURLFunction)(CFBundleRef, CFStringRef, Boolean);
typedef CFStringRef (*PosixPathFunction)(CFURLRef);
typedef Boolean (*WriteDictionaryFunction)(CFDictionaryRef, CFURLRef);
typedef CFMutableDictionaryRef (*ReadDictionaryFunction)(CFURLRef);
typedef const void *(*NumberLookUpFunction)(CFDictionaryRef, long);
typedef CFStringRef (*LocalizedFunction)(CFBundleRef, CFStringRef, CFStringRef, CFStringRef, CFStringRef);

static void PrintString(const char *label, CFTypeRef string)
{
    char text[1024] = "<none>";
    if (string != NULL)
        CFStringGetCString((CFStringRef)string, text, sizeof text, kCFStringEncodingUTF8);
    printf("  %s%s\n", label, text);
}

static bool TourStringsAndRanges(CFBundleRef bundle)
{
    AllocCStringFunction convertable = (AllocCStringFunction)KORUTourLookup(bundle, "CFStringAllocConvertableCString");
    ASCIIFunction ascii = (ASCIIFunction)KORUTourLookup(bundle, "CFStringGetASCIICString");
    TECFunction tec = (TECFunction)KORUTourLookup(bundle, "CFStringAllocTECConvertedText");
    RangeFunction resizeLeft = (RangeFunction)KORUTourLookup(bundle, "CFRangeResizeLeft");
    CommandFunction command = (CommandFunction)KORUTourLookup(bundle, "CFStringApplySystemCommand");
    if (convertable == NULL || ascii == NULL || tec == NULL || resizeLeft == NULL || command == NULL)
        return false;

    CFStringRef dessert = CFStringCreateWithCString(NULL, "Cr\xC3\xA8me br\xC3\xBBl\xC3\xA9" "e", kCFStringEncodingUTF8);
    char *text = convertable(dessert);
    char plain[64];
    CFIndex kept = ascii(dessert, plain, sizeof plain);
    ByteCount consumed = 0, produced = 0;
    OSStatus status = -1;
    char *roman = tec(dessert, kTextEncodingMacRoman, 1, &consumed, &produced, &status);
    CFRelease(dessert);
    if (text == NULL || roman == NULL || status != noErr) {
        free(text);
        free(roman);
        return false;
    }
    printf("  convertable C string: %s; ASCII only: \"%s\" (%ld bytes)\n", text, plain, (long)kept);
    printf("  MacRoman through the converter (%lu bytes in, %lu out):", (unsigned long)consumed,
           (unsigned long)produced);
    for (ByteCount i = 0; i < produced; i++)
        printf(" %02X", (unsigned char)roman[i]);
    printf("\n");
    free(text);
    free(roman);

    CFRange range = CFRangeMake(3, 5);
    resizeLeft(&range, 10);
    printf("  range (3, 5) with its left edge moved 10 to the left: (%ld, %ld)\n", (long)range.location,
           (long)range.length);

    fflush(stdout);
    return command(CFSTR("'KORU'"), CFSTR("printf '  the shell says hello to %s\\n'"), NULL) == 0;
}

static bool TourURLsAndDictionaries(CFBundleRef bundle)
{
    BundleURLFunction folder = (BundleURLFunction)KORUTourLookup(bundle, "CFBundleCopyDirectoryURLAppendingPathComponent");
    PosixPathFunction posixPath = (PosixPathFunction)KORUTourLookup(bundle, "CFURLCopyPosixPath");
    WriteDictionaryFunction write = (WriteDictionaryFunction)KORUTourLookup(bundle, "CFDictionaryWriteToURL");
    ReadDictionaryFunction read = (ReadDictionaryFunction)KORUTourLookup(bundle, "CFDictionaryCreateMutableWithContentsOfURL");
    NumberLookUpFunction byNumber = (NumberLookUpFunction)KORUTourLookup(bundle, "CFDictionaryGetValueForNumber");
    LocalizedFunction localized = (LocalizedFunction)KORUTourLookup(bundle, "CFBundleCopyStringForLocalization");
    if (folder == NULL || posixPath == NULL || write == NULL || read == NULL || byNumber == NULL || localized == NULL)
        return false;

    CFURLRef bundleFolder = folder(bundle, NULL, true);
    CFStringRef where = bundleFolder != NULL ? posixPath(bundleFolder) : NULL;
    PrintString("the KORU bundle lies in: ", where);
    if (where != NULL)
        CFRelease(where);
    if (bundleFolder != NULL)
        CFRelease(bundleFolder);

    char path[1024];
    if (FSFindFolderGetPath(kUserDomain, kTemporaryFolderType, kCreateFolder, path, sizeof path) != noErr)
        return false;
    snprintf(path + strlen(path), sizeof path - strlen(path), "/koru-tour-%ld.plist", (long)getpid());
    CFURLRef file = CFURLCreateFromFileSystemRepresentation(NULL, (const UInt8 *)path, (CFIndex)strlen(path), false);
    const void *keys[] = {CFSTR("1"), CFSTR("2")};
    const void *values[] = {CFSTR("one"), CFSTR("two")};
    CFDictionaryRef numbers = CFDictionaryCreate(NULL, keys, values, 2, &kCFTypeDictionaryKeyCallBacks,
                                                 &kCFTypeDictionaryValueCallBacks);
    bool ok = file != NULL && write(numbers, file);
    CFMutableDictionaryRef back = ok ? read(file) : NULL;
    ok = back != NULL;
    if (ok) {
        printf("  wrote and read back %s\n", path);
        PrintString("value under the number 2: ", byNumber(back, 2));
        CFRelease(back);
    }
    unlink(path);
    CFRelease(numbers);
    if (file != NULL)
        CFRelease(file);

    CFStringRef greeting = localized(bundle, CFSTR("Greeting"), CFSTR("Hello (the bundle has no French table)"), NULL,
                                     CFSTR("fr"));
    PrintString("French \"Greeting\": ", greeting);
    if (greeting != NULL)
        CFRelease(greeting);
    return ok && greeting != NULL;
}

static bool TourCFHelpers(CFBundleRef bundle)
{
    return TourStringsAndRanges(bundle) && TourURLsAndDictionaries(bundle);
}

KORU_TOUR_SECTION(50, "CF helpers: strings, ranges, shell, bundle URLs, dictionaries, localisation", TourCFHelpers)
