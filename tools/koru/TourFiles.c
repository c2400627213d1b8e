/* Tour section: file locations and file utilities, reached by their C++
 * symbol names from plain C.
 *
 * A TFileLocationInfo is laid out as its header declares it: a 32-bit kind,
 * the path (a CStr<wchar_t>, one pointer to its wide text) and 80 bytes of
 * storage, so C keeps one in a struct of that shape and runs its constructor
 * and destructor.  Results returned by value come back through a pointer to
 * the result, as the C++ ABI passes them.  The std::vector that
 * EnumFilesInFolder fills is three pointers; C destroys its strings and hands
 * the storage back to operator delete. */
#include "Tour.h"

#include <CoreServices/CoreServices.h>

#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <wchar.h>

typedef struct {
    wchar_t *text;
} WideCStr;

typedef struct {
    int32_t kind;
    WideCStr path;
    union {
        unsigned char bytes[80];
        void *aligned;
    } storage;
} Location;

typedef struct {
    WideCStr *begin;
    WideCStr *end;
    WideCStr *capacity;
} NameVector;

typedef void (*WideFromTextFunction)(WideCStr *self, const wchar_t *text);
typedef WideCStr *(*WideAssignFunction)(WideCStr *self, const wchar_t *text);
typedef void (*WideDestroyFunction)(WideCStr *self);
typedef void (*AbsFileNameFunction)(WideCStr *result, const WideCStr *rel, const WideCStr *base);
typedef void (*EncodedTextFunction)(WideCStr *result, const wchar_t *text);
typedef void (*LocationFunction)(Location *self);
typedef bool (*LocationTestFunction)(const Location *self);
typedef bool (*TempFileFunction)(const WideCStr *name, const WideCStr *ext, Location *out);
typedef bool (*WriteTextFunction)(const Location *location, const char *text);
typedef bool (*ReadTextFunction)(const Location *location, char **buffer);
typedef bool (*GetRefFunction)(const Location *self, FSRef *ref);
typedef CFURLRef (*CreateURLFunction)(const Location *self);
typedef bool (*EnumFunction)(const wchar_t *ext, const Location *folder, NameVector *out);
typedef bool (*DeleteDirFunction)(const Location *folder, bool recursive);
typedef void (*DeleteFunction)(void *memory);

static struct {
    WideFromTextFunction wideFromText;
    WideAssignFunction wideAssign;
    WideDestroyFunction wideDestroy;
    AbsFileNameFunction absFileName;
    EncodedTextFunction encodedText;
    LocationFunction construct, destroy;
    LocationTestFunction createFolder, createFile, isFolder, deleteLocation;
    TempFileFunction tempFile;
    WriteTextFunction writeText;
    ReadTextFunction readText;
    GetRefFunction getRef;
    CreateURLFunction createURL;
    EnumFunction enumFiles;
    DeleteDirFunction deleteDir;
    DeleteFunction deleteArray, deleteObject;
} F;

static bool LookUpAll(CFBundleRef bundle)
{
    const struct {
        void **slot;
        const char *name;
    } table[] = {
        {(void **)&F.wideFromText, "_ZN4CStrIwEC1EPKw"},
        {(void **)&F.wideAssign, "_ZN4CStrIwEaSEPKw"},
        {(void **)&F.wideDestroy, "_ZN4CStrIwED1Ev"},
        {(void **)&F.absFileName, "_ZN10file_utils14GetAbsFileNameERK4CStrIwES3_"},
        {(void **)&F.encodedText, "_ZN10file_utils14GetEncodedTextEPKw"},
        {(void **)&F.construct, "_ZN17TFileLocationInfoC1Ev"},
        {(void **)&F.destroy, "_ZN17TFileLocationInfoD1Ev"},
        {(void **)&F.createFolder, "_ZNK17TFileLocationInfo12CreateFolderEv"},
        {(void **)&F.createFile, "_ZNK17TFileLocationInfo10CreateFileEv"},
        {(void **)&F.isFolder, "_ZNK17TFileLocationInfo8IsFolderEv"},
        {(void **)&F.deleteLocation, "_ZNK17TFileLocationInfo6DeleteEv"},
        {(void **)&F.tempFile, "_ZN10file_utils19GetTempFileLocationERK4CStrIwES3_R17TFileLocationInfo"},
        {(void **)&F.writeText, "_ZN10file_utils26WriteASCIITextBufferToFileERK17TFileLocationInfoPKc"},
        {(void **)&F.readText, "_ZN10file_utils25ReadASCIITextFileToBufferERK17TFileLocationInfoRPc"},
        {(void **)&F.getRef, "_ZNK17TFileLocationInfo8GetFSRefER5FSRef"},
        {(void **)&F.createURL, "_ZNK17TFileLocationInfo11CreateCFURLEv"},
        {(void **)&F.enumFiles,
         "_ZN10file_utils17EnumFilesInFolderEPKwRK17TFileLocationInfoRSt6vectorI4CStrIwESaIS7_EE"},
        {(void **)&F.deleteDir, "_ZN10file_utils9DeleteDirERK17TFileLocationInfob"},
        {(void **)&F.deleteArray, "_ZdaPv"},
        {(void **)&F.deleteObject, "_ZdlPv"},
    };
    bool found = true;
    for (size_t k = 0; k < sizeof table / sizeof table[0]; ++k) {
        *table[k].slot = KORUTourLookup(bundle, table[k].name);
        found = found && *table[k].slot != NULL;
    }
    return found;
}

/* A path location in C: kind 0 and the path text. */
static void SetPath(Location *location, const wchar_t *path)
{
    location->kind = 0;
    F.wideAssign(&location->path, path);
}

static bool ShowPathText(void)
{
    WideCStr rel, base, absolute, encoded;
    F.wideFromText(&rel, L"../../x.txt");
    F.wideFromText(&base, L"/a/b/c/");
    F.absFileName(&absolute, &rel, &base);
    F.encodedText(&encoded, L"a<b & \"c\"");
    printf("  GetAbsFileName(\"../../x.txt\", \"/a/b/c/\") = \"%ls\"\n", absolute.text);
    printf("  GetEncodedText(\"a<b & \\\"c\\\"\") = \"%ls\"\n", encoded.text);
    const bool ok = wcscmp(absolute.text, L"/a/x.txt") == 0;
    F.wideDestroy(&encoded);
    F.wideDestroy(&absolute);
    F.wideDestroy(&base);
    F.wideDestroy(&rel);
    return ok;
}

/* A temporary file written and read back, and its other forms. */
static bool ShowTemporaryFile(void)
{
    WideCStr name, ext;
    Location file;
    F.wideFromText(&name, L"tour");
    F.wideFromText(&ext, L"txt");
    F.construct(&file);
    bool ok = F.tempFile(&name, &ext, &file);
    if (ok) {
        printf("  a fresh temporary name: %ls\n", file.path.text);
        char *read = NULL;
        ok = F.writeText(&file, "Kia ora from KORU\n") && F.readText(&file, &read);
        if (ok)
            printf("  written and read back: %s", read);
        if (read != NULL)
            F.deleteArray(read);

        FSRef ref;
        UInt8 path[1024];
        if (ok && F.getRef(&file, &ref) && FSRefMakePath(&ref, path, sizeof path) == noErr)
            printf("  as an FSRef, its real path: %s\n", (const char *)path);
        CFURLRef url = F.createURL(&file);
        char text[1100] = "";
        if (url != NULL && CFStringGetCString(CFURLGetString(url), text, sizeof text, kCFStringEncodingUTF8))
            printf("  as a URL: %s\n", text);
        if (url != NULL)
            CFRelease(url);
        ok = F.deleteLocation(&file) && ok;
    }
    F.destroy(&file);
    F.wideDestroy(&ext);
    F.wideDestroy(&name);
    return ok;
}

/* A small folder listed by extension, then deleted with its content. */
static bool ShowFolder(void)
{
    WideCStr name, ext;
    Location spot, folder, item;
    F.wideFromText(&name, L"tour-folder");
    F.wideFromText(&ext, L"d");
    F.construct(&spot);
    F.construct(&folder);
    F.construct(&item);
    bool ok = F.tempFile(&name, &ext, &spot);
    if (ok) {
        wchar_t path[1024];
        swprintf(path, 1024, L"%ls/", spot.path.text);
        SetPath(&folder, path);
        ok = F.createFolder(&folder);
        const wchar_t *names[] = {L"notes.txt", L"README", L"LOG.TXT", L"sub/", L"sub/deep.txt"};
        for (size_t k = 0; ok && k < sizeof names / sizeof names[0]; ++k) {
            swprintf(path, 1024, L"%ls/%ls", spot.path.text, names[k]);
            SetPath(&item, path);
            ok = F.isFolder(&item) ? F.createFolder(&item) : F.createFile(&item);
        }
    }
    NameVector found = {NULL, NULL, NULL};
    if (ok && F.enumFiles(L"txt", &folder, &found)) {
        printf("  names ending in .txt (any case) in %ls:", folder.path.text);
        for (WideCStr *entry = found.begin; entry != found.end; ++entry)
            printf(" %ls", entry->text);
        printf("\n");
        ok = found.end - found.begin == 2;
    }
    for (WideCStr *entry = found.begin; entry != found.end; ++entry)
        F.wideDestroy(entry);
    if (found.begin != NULL)
        F.deleteObject(found.begin);
    if (ok) {
        ok = F.deleteDir(&folder, true);
        struct stat st;
        char narrow[1024];
        snprintf(narrow, sizeof narrow, "%ls", spot.path.text);
        printf("  DeleteDir(recursive) removed the folder and its sub-folder: %s\n",
               ok && stat(narrow, &st) != 0 ? "yes" : "no");
    }
    F.destroy(&item);
    F.destroy(&folder);
    F.destroy(&spot);
    F.wideDestroy(&ext);
    F.wideDestroy(&name);
    return ok;
}

static bool TourFiles(CFBundleRef bundle)
{
    if (!LookUpAll(bundle))
        return false;
    bool ok = ShowPathText();
    ok = ShowTemporaryFile() && ok;
    ok = ShowFolder() && ok;
    return ok;
}

KORU_TOUR_SECTION(30, "Files: locations in five forms, temporary names, whole files, folders", TourFiles)
