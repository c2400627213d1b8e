/* Tour section: what the toolkit tells about the system and the user, the
 * bit flags, and a buffer enciphered and deciphered with the DES cipher.
 *
 * The Utils queries return a WString, received here in the C++ library's
 * layout (text pointer, length, local storage) through the hidden result
 * pointer and destroyed by its own destructor. */
#include "Tour.h"

#include <MacTypes.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

/* A WString as GCC's library lays it out; only text and length are read. */
typedef struct {
    wchar_t *text;
    size_t length;
    wchar_t storage[4];
} WideString;

typedef WideString *(*WideQueryFunction)(WideString *result);
typedef void (*WideDestroyFunction)(WideString *s);
typedef long (*LongFunction)(void);
typedef Boolean (*BooleanFunction)(void);
typedef Boolean (*GroupFunction)(const char *);
typedef int (*CopyFlagsFunction)(UInt8, char *);
typedef int (*EncryptCopyFunction)(const void *, size_t, void **, size_t *, const char *);
typedef int (*DecryptFunction)(void *, size_t, const char *);

static WideDestroyFunction destroyWide;

static void PrintQuery(CFBundleRef bundle, const char *label, const char *symbol, bool *found)
{
    WideQueryFunction query = (WideQueryFunction)KORUTourLookup(bundle, symbol);
    if (query == NULL || destroyWide == NULL) {
        *found = false;
        return;
    }
    WideString result;
    query(&result);
    printf("  %-16s %ls\n", label, result.length > 0 ? result.text : L"<none>");
    destroyWide(&result);
}

static bool TourSystemFacts(CFBundleRef bundle)
{
    destroyWide = (WideDestroyFunction)KORUTourLookup(
        bundle, "_ZNSt7__cxx1112basic_stringIwN3lum16lum_wchar_traitsESaIwEED1Ev");
    LongFunction systemVersion = (LongFunction)KORUTourLookup(bundle, "GestaltSystemVersion");
    BooleanFunction isRoot = (BooleanFunction)KORUTourLookup(bundle, "UserIsRoot");
    GroupFunction inGroup = (GroupFunction)KORUTourLookup(bundle, "UserIsBelongToGroup");
    if (systemVersion == NULL || isRoot == NULL || inGroup == NULL)
        return false;
    bool found = true;
    PrintQuery(bundle, "system:", "_ZN5Utils9getOsNameB5cxx11Ev", &found);
    PrintQuery(bundle, "version:", "_ZN5Utils12getOsVersionB5cxx11Ev", &found);
    PrintQuery(bundle, "processor:", "_ZN5Utils16getProcessorTypeB5cxx11Ev", &found);
    PrintQuery(bundle, "language:", "_ZN5Utils11getLanguageB5cxx11Ev", &found);
    PrintQuery(bundle, "country:", "_ZN5Utils10getCountryB5cxx11Ev", &found);
    printf("  %-16s 0x%lX (the API level offered)\n", "Gestalt 'sysv':", systemVersion());
    printf("  %-16s %s; listed in group \"sudo\": %s\n", "superuser:", isRoot() ? "yes" : "no",
           inGroup("sudo") ? "yes" : "no (or no login name)");
    return found;
}

KORU_TOUR_SECTION(60, "System: name, version, processor, language, country, user", TourSystemFacts)

static bool TourCipher(CFBundleRef bundle)
{
    CopyFlagsFunction copyFlags = (CopyFlagsFunction)KORUTourLookup(bundle, "CharCopyBitFlags");
    EncryptCopyFunction encrypt = (EncryptCopyFunction)KORUTourLookup(bundle, "MemAllocateEncryptedCopy");
    DecryptFunction decrypt = (DecryptFunction)KORUTourLookup(bundle, "MemDecrypt");
    if (copyFlags == NULL || encrypt == NULL || decrypt == NULL)
        return false;

    char flags[8];
    copyFlags(0x2C, flags);
    printf("  0x2C as flags, least significant bit first: %d%d%d%d%d%d%d%d\n", flags[0], flags[1], flags[2],
           flags[3], flags[4], flags[5], flags[6], flags[7]);

    const char text[] = "Meet me at the old mill";
    const char key[8] = {'t', 'o', 'u', 'r', '-', 'k', 'e', 'y'};
    void *buffer = NULL;
    size_t length = 0;
    if (encrypt(text, strlen(text), &buffer, &length, key) != 0)
        return false;
    printf("  \"%s\" (%zu bytes) enciphered to %zu bytes:", text, strlen(text), length);
    for (size_t i = 0; i < length; i++)
        printf("%s%02X", i % 8 == 0 ? " " : "", ((unsigned char *)buffer)[i]);
    printf("\n");
    bool same = decrypt(buffer, length, key) == 0 && memcmp(buffer, text, strlen(text)) == 0;
    printf("  deciphered: \"%.*s\" followed by %zu zero bytes of padding\n", (int)strlen(text), (char *)buffer,
           length - strlen(text));
    free(buffer);
    return same;
}

KORU_TOUR_SECTION(70, "Bit flags and the buffer cipher", TourCipher)
