/* Tour section: the CStr string class and the Utils conversions, reached by
 * their C++ symbol names from plain C.
 *
 * A CStr<char> is one pointer to its text, with the header (reference count,
 * length, capacity) just in front of the text, so C can hold one in a
 * one-pointer struct and read the count directly.  A std::string result is
 * received in the C++ library's layout (text pointer first) and destroyed by
 * its own destructor. */
#include "Tour.h"

#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <wchar.h>

typedef struct {
    char *text;
} NarrowCStr;

/* A std::string as GCC's library lays it out; only the text pointer and the
 * length are read. */
typedef struct {
    char *text;
    size_t length;
    char storage[16];
} StdString;

typedef void (*CStrFromTextFunction)(NarrowCStr *self, const char *text);
typedef void (*CStrFromWideFunction)(NarrowCStr *self, const wchar_t *text);
typedef void (*CStrCopyFunction)(NarrowCStr *self, const NarrowCStr *other);
typedef void (*CStrDestroyFunction)(NarrowCStr *self);
typedef int (*CStrReplaceFunction)(NarrowCStr *self, const char *oldText, const char *newText);
typedef int (*CStrFindFunction)(const NarrowCStr *self, const char *text, int start);
typedef int (*CStrLengthFunction)(const NarrowCStr *self);
typedef wchar_t *(*LastCharFunction)(const wchar_t *s, int ch);
typedef StdString *(*SizeTextFunction)(StdString *result, unsigned long size);
typedef StdString *(*HexTextFunction)(StdString *result, unsigned char *bytes, unsigned long n);
typedef StdString *(*GuidFunction)(StdString *result);
typedef void (*StdStringDestroyFunction)(StdString *s);

static int32_t References(const NarrowCStr *s)
{
    /* The header's first field, three 32-bit fields before the text. */
    int32_t refs;
    memcpy(&refs, s->text - 3 * sizeof(int32_t), sizeof refs);
    return refs;
}

static bool TourStrings(CFBundleRef bundle)
{
    CStrFromTextFunction fromText = (CStrFromTextFunction)KORUTourLookup(bundle, "_ZN4CStrIcEC1EPKc");
    CStrFromWideFunction fromWide = (CStrFromWideFunction)KORUTourLookup(bundle, "_ZN4CStrIcEC1EPKw");
    CStrCopyFunction copy = (CStrCopyFunction)KORUTourLookup(bundle, "_ZN4CStrIcEC1ERKS0_");
    CStrDestroyFunction destroy = (CStrDestroyFunction)KORUTourLookup(bundle, "_ZN4CStrIcED1Ev");
    CStrReplaceFunction replace =
        (CStrReplaceFunction)KORUTourLookup(bundle, "_ZN4CStrIcE7ReplaceEPKcS2_");
    CStrFindFunction find = (CStrFindFunction)KORUTourLookup(bundle, "_ZNK4CStrIcE4FindEPKci");
    CStrLengthFunction length = (CStrLengthFunction)KORUTourLookup(bundle, "_ZNK4CStrIcE9GetLengthEv");
    LastCharFunction lastChar = (LastCharFunction)KORUTourLookup(bundle, "_wcschr");
    SizeTextFunction sizeText =
        (SizeTextFunction)KORUTourLookup(bundle, "_ZN5Utils15bytesize2stringB5cxx11Em");
    HexTextFunction hexText = (HexTextFunction)KORUTourLookup(bundle, "_ZN5Utils11toHexStringB5cxx11EPhm");
    GuidFunction guid = (GuidFunction)KORUTourLookup(bundle, "_ZN5Utils12generateGUIDB5cxx11Ev");
    StdStringDestroyFunction destroyString = (StdStringDestroyFunction)KORUTourLookup(
        bundle, "_ZNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEED1Ev");
    if (fromText == NULL || fromWide == NULL || copy == NULL || destroy == NULL || replace == NULL ||
        find == NULL || length == NULL || lastChar == NULL || sizeText == NULL || hexText == NULL ||
        guid == NULL || destroyString == NULL)
        return false;
    bool ok = true;

    NarrowCStr fruit, shared;
    fromText(&fruit, "banana");
    copy(&shared, &fruit);
    int32_t sharing = References(&fruit);
    printf("  CStr \"%s\" and its copy share one block: %d references\n", fruit.text, sharing);
    int replaced = replace(&shared, "a", "xyz");
    printf("  Replace(\"a\", \"xyz\") on the copy: %d replaced, \"%s\" (length %d); the original "
           "still reads \"%s\"\n",
           replaced, shared.text, length(&shared), fruit.text);
    int at = find(&fruit, "nan", 0);
    printf("  Find(\"nan\") in \"%s\": %d\n", fruit.text, at);
    ok = ok && sharing == 2 && replaced == 3 && strcmp(shared.text, "bxyznxyznxyz") == 0 &&
         strcmp(fruit.text, "banana") == 0 && References(&fruit) == 1 && at == 2;
    destroy(&shared);
    destroy(&fruit);

    NarrowCStr converted;
    fromWide(&converted, L"abc");
    printf("  CStr<char> made from the wide text L\"abc\" reads \"%s\" and reports length %d "
           "(twice the wide length, kept as it always was)\n",
           converted.text, length(&converted));
    ok = ok && strcmp(converted.text, "abc") == 0 && length(&converted) == 6;
    destroy(&converted);

    const wchar_t *word = L"abcb";
    wchar_t *last = lastChar(word, L'b');
    printf("  _wcschr(L\"abcb\", 'b') points at index %ld (the last match)\n",
           last != NULL ? (long)(last - word) : -1L);
    ok = ok && last == word + 3;

    StdString text;
    unsigned long sizes[] = {1024, 1025, 1049600};
    for (size_t i = 0; i < sizeof sizes / sizeof sizes[0]; ++i) {
        sizeText(&text, sizes[i]);
        printf("  Utils::bytesize2string(%lu) = \"%.*s\"\n", sizes[i], (int)text.length, text.text);
        ok = ok && text.length > 0;
        destroyString(&text);
    }
    unsigned char bytes[] = {0x0A, 0xFF, 0x42};
    hexText(&text, bytes, sizeof bytes);
    printf("  Utils::toHexString(0a ff 42) = \"%.*s\"\n", (int)text.length, text.text);
    ok = ok && text.length == 6 && memcmp(text.text, "0aff42", 6) == 0;
    destroyString(&text);
    guid(&text);
    printf("  Utils::generateGUID() = \"%.*s\"\n", (int)text.length, text.text);
    ok = ok && text.length == 36;
    destroyString(&text);
    return ok;
}

KORU_TOUR_SECTION(10, "Strings: CStr sharing, conversions and Utils text", TourStrings)
