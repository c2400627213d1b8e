/* Tour section: the file-system and process helpers.  A resource fork is
 * written and read back with its 'vers' resource, the running processes are
 * listed by bundle location, and the kind tests look at real items. */
#include "Tour.h"

#include <CoreServices/CoreServices.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

enum { kVersType = 0x76657273, kStringType = 0x53545220 }; /* 'vers', 'STR ' */

typedef SInt16 (*RFOpenFunction)(const FSRef *, Boolean);
typedef void (*RFCloseFunction)(SInt16 *);
typedef Boolean (*RFGetVersionFunction)(SInt16, VersRec *);
typedef CFMutableDataRef (*AllProcessFunction)(void);
typedef Boolean (*CurrentProcessFunction)(FSRef *);
typedef Boolean (*KindFunction)(const FSRef *);
typedef char *(*PathFunction)(const FSRef *);
typedef Boolean (*CopyFileFunction)(const FSRef *, const FSRef *, CFStringRef, FSRef *);

static struct {
    RFOpenFunction open;
    RFCloseFunction close;
    RFGetVersionFunction version;
    AllProcessFunction allProcesses;
    CurrentProcessFunction currentProcess;
    KindFunction isFolder, isPackage, isVolume, isInvisible, isMachO;
    PathFunction path;
    CopyFileFunction copyFile;
} F;

static bool LookUpAll(CFBundleRef bundle)
{
    const struct {
        void **slot;
        const char *name;
    } table[] = {
        {(void **)&F.open, "RFOpen"},
        {(void **)&F.close, "RFClose"},
        {(void **)&F.version, "RFGetVersion"},
        {(void **)&F.allProcesses, "FSCopyAllProcess"},
        {(void **)&F.currentProcess, "FSGetCurrentProcess"},
        {(void **)&F.isFolder, "FSIsFolder"},
        {(void **)&F.isPackage, "FSIsPackage"},
        {(void **)&F.isVolume, "FSIsVolume"},
        {(void **)&F.isInvisible, "FSIsInvisible"},
        {(void **)&F.isMachO, "FSIsMachOBinary"},
        {(void **)&F.path, "FSAllocPathUTF8String"},
        {(void **)&F.copyFile, "FSCopyFile"},
    };
    bool found = true;
    for (size_t k = 0; k < sizeof table / sizeof table[0]; ++k)
        found = (*table[k].slot = KORUTourLookup(bundle, table[k].name)) != NULL && found;
    return found;
}

static bool RefAt(const char *path, FSRef *ref)
{
    return FSPathMakeRef((const UInt8 *)path, ref, NULL) == noErr;
}

static bool WriteAndReadVersion(const char *folder)
{
    char path[1100];
    snprintf(path, sizeof path, "%s/Tour Tool", folder);
    FILE *file = fopen(path, "w");
    if (file == NULL)
        return false;
    fputs("tool\n", file);
    fclose(file);
    FSRef tool, folderRef, copy;
    if (!RefAt(path, &tool) || !RefAt(folder, &folderRef))
        return false;

    SInt16 refNum = F.open(&tool, true);
    if (refNum == -1)
        return false;
    static const char vers[] = "\x02\x10\x80\x00\x00\x00\x04" "2.1f\x0E" "2.1, the tour";
    Handle resource = NULL;
    PtrToHand(vers, &resource, sizeof vers - 1);
    AddResource(resource, kVersType, 1, NULL);
    Handle note = NULL;
    PtrToHand("\x05hello", &note, 6);
    AddResource(note, kStringType, 128, (ConstStr255Param) "\x04note");
    F.close(&refNum);

    // The copy carries the resource fork along with the data.
    if (!F.copyFile(&tool, &folderRef, CFSTR("Tour Copy"), &copy))
        return false;
    refNum = F.open(&copy, false);
    VersRec record;
    const bool read = refNum != -1 && F.version(1, &record);
    const ResourceCount strings = Count1Resources(kStringType);
    F.close(&refNum);
    if (!read)
        return false;
    printf("  resource fork written and copied: 'vers' 1 says \"%.*s\" (short) and \"%.*s\" (long); %d 'STR '\n",
           record.shortVersion[0], (const char *)record.shortVersion + 1, record.reserved[0],
           (const char *)record.reserved + 1, (int)strings);
    return true;
}

static bool ListProcesses(void)
{
    CFMutableDataRef all = F.allProcesses();
    FSRef self;
    if (all == NULL || !F.currentProcess(&self)) {
        if (all != NULL)
            CFRelease(all);
        return false;
    }
    const CFIndex count = CFDataGetLength(all) / (CFIndex)sizeof(FSRef);
    char *selfPath = F.path(&self);
    printf("  %ld running processes of this user; this one is %s\n", (long)count, selfPath ? selfPath : "?");
    const FSRef *refs = (const FSRef *)CFDataGetBytePtr(all);
    for (CFIndex k = 0; k < count && k < 3; ++k) {
        char *path = F.path(&refs[k]);
        printf("    %s\n", path ? path : "?");
        free(path);
    }
    free(selfPath);
    CFRelease(all);
    return count > 0;
}

static void ShowKinds(const char *label, const char *path)
{
    // The kind tests remember the last ref by its address, so every item
    // gets a buffer of its own.
    static FSRef refs[8];
    static size_t used;
    FSRef *ref = &refs[used++ % 8];
    if (!RefAt(path, ref)) {
        printf("  %-22s (missing)\n", label);
        return;
    }
    printf("  %-22s folder %d  package %d  volume %d  invisible %d  Mach-O %d\n", label, F.isFolder(ref),
           F.isPackage(ref), F.isVolume(ref), F.isInvisible(ref), F.isMachO(ref));
}

static bool TourFileSystem(CFBundleRef bundle)
{
    if (!LookUpAll(bundle))
        return false;
    const char *temporary = getenv("TMPDIR");
    char folder[1024];
    snprintf(folder, sizeof folder, "%s/koru-tour-XXXXXX", temporary && *temporary ? temporary : "/tmp");
    if (mkdtemp(folder) == NULL)
        return false;
    char path[1100];
    bool ok = WriteAndReadVersion(folder) && ListProcesses();

    snprintf(path, sizeof path, "%s/Sample.app", folder);
    mkdir(path, 0755);
    snprintf(path, sizeof path, "%s/.hidden-notes", folder);
    FILE *hidden = fopen(path, "w");
    if (hidden != NULL)
        fclose(hidden);
    snprintf(path, sizeof path, "%s/universal", folder);
    FILE *universal = fopen(path, "wb");
    if (universal != NULL) {
        fwrite("\xCA\xFE\xBA\xBE\x00\x00\x00\x02", 1, 8, universal);
        fclose(universal);
    }
    ShowKinds("temporary folder", folder);
    snprintf(path, sizeof path, "%s/Sample.app", folder);
    ShowKinds("Sample.app", path);
    snprintf(path, sizeof path, "%s/.hidden-notes", folder);
    ShowKinds(".hidden-notes", path);
    snprintf(path, sizeof path, "%s/universal", folder);
    ShowKinds("universal (CA FE BA BE)", path);
    ShowKinds("/", "/");
    ShowKinds("/bin/sh (ELF)", "/bin/sh");

    char command[1200];
    snprintf(command, sizeof command, "rm -rf '%s'", folder);
    if (system(command) != 0)
        ok = false;
    return ok;
}

KORU_TOUR_SECTION(60, "File system and processes: resource forks, running processes, kind tests", TourFileSystem)
