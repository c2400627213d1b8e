/* CFBundle over NSBundle: identity, Info dictionary, and code loading, for
 * the GNUstep and the Mac bundle layouts.  Loading goes through NSBundle (so
 * Objective-C classes of the bundle are registered with Foundation) and
 * symbols are found with dlsym on the same loaded image; a Mac-layout
 * executable, which NSBundle cannot find, is opened directly. */
#define _GNU_SOURCE 1 /* dladdr1, dlinfo */
#include "CFBundlePrivate.h"
#include <dlfcn.h>
#include <link.h>
#include <limits.h>
#include <pthread.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

const CFStringRef kCFBundleInfoDictionaryVersionKey = (CFStringRef) @"CFBundleInfoDictionaryVersion";
const CFStringRef kCFBundleExecutableKey = (CFStringRef) @"CFBundleExecutable";
const CFStringRef kCFBundleIdentifierKey = (CFStringRef) @"CFBundleIdentifier";
const CFStringRef kCFBundleVersionKey = (CFStringRef) @"CFBundleVersion";
const CFStringRef kCFBundleDevelopmentRegionKey = (CFStringRef) @"CFBundleDevelopmentRegion";
const CFStringRef kCFBundleNameKey = (CFStringRef) @"CFBundleName";
const CFStringRef kCFBundleLocalizationsKey = (CFStringRef) @"CFBundleLocalizations";

CFTypeID CFBundleGetTypeID(void)
{
    return __kCFBundleTypeID;
}

static NSBundle *__CFBundle(CFBundleRef bundle)
{
    return (NSBundle *)bundle;
}

static BOOL __CFIsDirectory(NSString *path)
{
    struct stat info;
    return path != nil && stat([path fileSystemRepresentation], &info) == 0 && S_ISDIR(info.st_mode);
}

static BOOL __CFIsSameFile(NSString *one, NSString *other)
{
    struct stat a, b;
    return stat([one fileSystemRepresentation], &a) == 0 && stat([other fileSystemRepresentation], &b) == 0 &&
           a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

static BOOL __CFIsRegularFile(NSString *path)
{
    struct stat info;
    return path != nil && stat([path fileSystemRepresentation], &info) == 0 && S_ISREG(info.st_mode);
}

BOOL __CFBundleIsMacLayout(NSString *bundlePath)
{
    return __CFIsDirectory([bundlePath stringByAppendingPathComponent:@"Contents"]);
}

NSString *__CFBundleResourcesPath(NSBundle *bundle)
{
    NSString *path = [bundle bundlePath];
    return [path stringByAppendingPathComponent:__CFBundleIsMacLayout(path) ? @"Contents/Resources" : @"Resources"];
}

/* Info dictionaries and created bundles are kept for the process's life,
 * like the bundles themselves; one lock guards both tables. */
static pthread_mutex_t __CFBundleTablesLock = PTHREAD_MUTEX_INITIALIZER;
static NSMutableDictionary *__CFBundleInfoByPath;
static NSMutableArray *__CFBundlesCreated;

static NSDictionary *__CFBundleReadInfo(NSBundle *bundle)
{
    NSString *path = [bundle bundlePath];
    if (!__CFBundleIsMacLayout(path)) {
        NSDictionary *info = [bundle infoDictionary];
        return info != nil ? info : [NSDictionary dictionary];
    }
    NSString *file = [path stringByAppendingPathComponent:@"Contents/Info.plist"];
    CFURLRef url = CFURLCreateWithFileSystemPath(NULL, (CFStringRef)file, kCFURLPOSIXPathStyle, false);
    CFDataRef data = NULL;
    if (url != NULL) {
        CFURLCreateDataAndPropertiesFromResource(NULL, url, &data, NULL, NULL, NULL);
        CFRelease(url);
    }
    id info = nil;
    if (data != NULL) {
        info = [(id)CFPropertyListCreateFromXMLData(NULL, data, kCFPropertyListImmutable, NULL) autorelease];
        CFRelease(data);
    }
    return [info isKindOfClass:[NSDictionary class]] ? info : [NSDictionary dictionary];
}

NSDictionary *__CFBundleInfo(NSBundle *bundle)
{
    NSString *key = [bundle bundlePath];
    if (key == nil)
        return [NSDictionary dictionary];
    pthread_mutex_lock(&__CFBundleTablesLock);
    NSDictionary *info = [__CFBundleInfoByPath objectForKey:key];
    pthread_mutex_unlock(&__CFBundleTablesLock);
    if (info != nil)
        return info;

    /* Callers of the C interface may have no autorelease pool of their own. */
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSDictionary *read = [__CFBundleReadInfo(bundle) retain];
    [pool drain];
    pthread_mutex_lock(&__CFBundleTablesLock);
    if (__CFBundleInfoByPath == nil)
        __CFBundleInfoByPath = [[NSMutableDictionary alloc] init];
    info = [__CFBundleInfoByPath objectForKey:key];
    if (info == nil) {
        [__CFBundleInfoByPath setObject:read forKey:key];
        info = read;
    }
    pthread_mutex_unlock(&__CFBundleTablesLock);
    [read release];
    return info;
}

/* The running program when the main bundle is the folder around a plain
 * executable: that folder names no executable of its own. */
static NSString *__CFMainExecutablePath;

NSString *__CFBundleExecutablePath(NSBundle *bundle)
{
    NSString *bundlePath = [bundle bundlePath];
    NSString *path = nil;
    if (__CFBundleIsMacLayout(bundlePath)) {
        id name = [__CFBundleInfo(bundle) objectForKey:@"CFBundleExecutable"];
        if (![name isKindOfClass:[NSString class]])
            name = [[bundlePath lastPathComponent] stringByDeletingPathExtension];
        path = [[bundlePath stringByAppendingPathComponent:@"Contents/MacOS"] stringByAppendingPathComponent:name];
    } else {
        path = [bundle executablePath];
    }
    if (path == nil && bundle == (NSBundle *)CFBundleGetMainBundle())
        path = __CFMainExecutablePath;
    return __CFIsRegularFile(path) ? path : nil;
}

void __CFBundleRemember(NSBundle *bundle)
{
    pthread_mutex_lock(&__CFBundleTablesLock);
    if (__CFBundlesCreated == nil)
        __CFBundlesCreated = [[NSMutableArray alloc] init];
    if ([__CFBundlesCreated indexOfObjectIdenticalTo:bundle] == NSNotFound)
        [__CFBundlesCreated addObject:bundle];
    pthread_mutex_unlock(&__CFBundleTablesLock);
}

NSBundle *__CFBundleRememberedWithIdentifier(NSString *identifier)
{
    pthread_mutex_lock(&__CFBundleTablesLock);
    NSArray *bundles = [[__CFBundlesCreated copy] autorelease];
    pthread_mutex_unlock(&__CFBundleTablesLock);
    for (NSBundle *bundle in bundles)
        if ([[__CFBundleInfo(bundle) objectForKey:@"CFBundleIdentifier"] isEqual:identifier])
            return bundle;
    return nil;
}

/* Foundation gives a plain executable a bundle path that does not exist;
 * its bundle is the folder that holds it. */
CFBundleRef CFBundleGetMainBundle(void)
{
    static NSBundle *main;
    if (main != nil)
        return (CFBundleRef)main;
    __CF_POOL_BEGIN
    NSBundle *bundle = [NSBundle mainBundle];
    if (!__CFIsDirectory([bundle bundlePath])) {
        char executable[PATH_MAX];
        ssize_t length = readlink("/proc/self/exe", executable, sizeof(executable) - 1);
        if (length > 0) {
            executable[length] = '\0';
            NSString *folder = [[NSString stringWithUTF8String:executable] stringByDeletingLastPathComponent];
            NSBundle *folderBundle = [NSBundle bundleWithPath:folder];
            if (folderBundle != nil) {
                bundle = folderBundle;
                __CFMainExecutablePath = [[NSString alloc] initWithUTF8String:executable];
            }
        }
    }
    main = [bundle retain];
    __CF_POOL_END
    return (CFBundleRef)main;
}

CFBundleRef CFBundleGetBundleWithIdentifier(CFStringRef bundleID)
{
    if (bundleID == NULL)
        return NULL;
    CFBundleRef result;
    __CF_POOL_BEGIN
    result = (CFBundleRef)[NSBundle bundleWithIdentifier:(NSString *)bundleID];
    if (result == NULL)
        result = (CFBundleRef)__CFBundleRememberedWithIdentifier((NSString *)bundleID);
    __CF_POOL_END
    return result;
}

CFBundleRef CFBundleCreate(CFAllocatorRef allocator, CFURLRef bundleURL)
{
    (void)allocator;
    if (bundleURL == NULL)
        return NULL;
    CFStringRef path = CFURLCopyFileSystemPath(bundleURL, kCFURLPOSIXPathStyle);
    if (path == NULL)
        return NULL;
    CFBundleRef result = NULL;
    __CF_POOL_BEGIN
    if (__CFIsDirectory((NSString *)path)) {
        NSBundle *bundle = [NSBundle bundleWithPath:(NSString *)path];
        /* Foundation answers a bundle it holds for another folder with the
         * same identifier, and forgets that identifier as it does; asked
         * again it makes the bundle of this folder.  Should it still answer
         * another folder, no bundle beats the wrong one. */
        if (bundle != nil && !__CFIsSameFile([bundle bundlePath], (NSString *)path))
            bundle = [NSBundle bundleWithPath:(NSString *)path];
        if (bundle != nil && !__CFIsSameFile([bundle bundlePath], (NSString *)path))
            bundle = nil;
        if (bundle != nil)
            __CFBundleRemember(bundle);
        result = (CFBundleRef)[bundle retain];
    }
    __CF_POOL_END
    CFRelease(path);
    return result;
}

CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle)
{
    if (bundle == NULL)
        return NULL;
    return CFURLCreateWithFileSystemPath(NULL, (CFStringRef)[__CFBundle(bundle) bundlePath], kCFURLPOSIXPathStyle,
                                         true);
}

CFURLRef CFBundleCopyExecutableURL(CFBundleRef bundle)
{
    if (bundle == NULL)
        return NULL;
    CFURLRef result = NULL;
    __CF_POOL_BEGIN
    NSString *path = __CFBundleExecutablePath(__CFBundle(bundle));
    if (path != nil)
        result = CFURLCreateWithFileSystemPath(NULL, (CFStringRef)path, kCFURLPOSIXPathStyle, false);
    __CF_POOL_END
    return result;
}

CFStringRef CFBundleGetIdentifier(CFBundleRef bundle)
{
    if (bundle == NULL)
        return NULL;
    id identifier = [__CFBundleInfo(__CFBundle(bundle)) objectForKey:@"CFBundleIdentifier"];
    return [identifier isKindOfClass:[NSString class]] ? (CFStringRef)identifier : NULL;
}

CFDictionaryRef CFBundleGetInfoDictionary(CFBundleRef bundle)
{
    if (bundle == NULL)
        return NULL;
    return (CFDictionaryRef)__CFBundleInfo(__CFBundle(bundle));
}

CFTypeRef CFBundleGetValueForInfoDictionaryKey(CFBundleRef bundle, CFStringRef key)
{
    if (bundle == NULL || key == NULL)
        return NULL;
    return (CFTypeRef)[__CFBundleInfo(__CFBundle(bundle)) objectForKey:(NSString *)key];
}

/* The dlopen handle of the bundle's loaded executable, or NULL. */
static void *__CFBundleHandle(CFBundleRef bundle, BOOL loadIfNeeded)
{
    if (bundle == CFBundleGetMainBundle())
        return dlopen(NULL, RTLD_LAZY);
    void *handle = NULL;
    __CF_POOL_BEGIN
    NSString *path = __CFBundleExecutablePath(__CFBundle(bundle));
    if (path != nil) {
        const char *file = [path fileSystemRepresentation];
        handle = dlopen(file, RTLD_LAZY | RTLD_NOLOAD);
        if (handle == NULL && loadIfNeeded) {
            @try {
                [__CFBundle(bundle) load];
            } @catch (NSException *exception) {
            }
            handle = dlopen(file, RTLD_LAZY | RTLD_NOLOAD);
            if (handle == NULL) {
                /* NSBundle could not load it (a Mac-layout executable): open it
                 * here, once for good and once for the caller to close. */
                if (dlopen(file, RTLD_NOW | RTLD_GLOBAL) != NULL)
                    handle = dlopen(file, RTLD_LAZY | RTLD_NOLOAD);
            }
        }
    }
    __CF_POOL_END
    return handle;
}

Boolean CFBundleLoadExecutable(CFBundleRef bundle)
{
    if (bundle == NULL)
        return false;
    void *handle = __CFBundleHandle(bundle, YES);
    if (handle == NULL)
        return false;
    /* The image stays loaded for the process's life; drop this extra reference. */
    dlclose(handle);
    return true;
}

Boolean CFBundleIsExecutableLoaded(CFBundleRef bundle)
{
    if (bundle == NULL)
        return false;
    void *handle = __CFBundleHandle(bundle, NO);
    if (handle == NULL)
        return false;
    dlclose(handle);
    return true;
}

void CFBundleUnloadExecutable(CFBundleRef bundle)
{
    (void)bundle;
}

static void *__CFBundleLookup(CFBundleRef bundle, CFStringRef name)
{
    if (bundle == NULL || name == NULL)
        return NULL;
    char symbol[1024];
    if (!CFStringGetCString(name, symbol, sizeof(symbol), kCFStringEncodingUTF8))
        return NULL;
    void *handle = __CFBundleHandle(bundle, YES);
    if (handle == NULL)
        return NULL;
    void *address = dlsym(handle, symbol);
    dlclose(handle);
    return address;
}

void *CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef functionName)
{
    return __CFBundleLookup(bundle, functionName);
}

/* A program that links the bundle's library and refers to one of its
 * variables holds the live copy of that variable (a copy relocation), and
 * the library's own code uses that copy too; the program's definition of
 * the name is the one in use. */
static void *__CFBundleVariableInUse(CFStringRef name, void *address)
{
    char symbol[1024];
    if (address == NULL || !CFStringGetCString(name, symbol, sizeof(symbol), kCFStringEncodingUTF8))
        return address;
    void *global = dlsym(RTLD_DEFAULT, symbol);
    if (global == NULL || global == address)
        return address;
    void *program = dlopen(NULL, RTLD_LAZY);
    struct link_map *programMap = NULL, *owner = NULL;
    Dl_info info;
    BOOL inProgram = program != NULL && dlinfo(program, RTLD_DI_LINKMAP, &programMap) == 0 &&
                     dladdr1(global, &info, (void **)&owner, RTLD_DL_LINKMAP) != 0 && owner == programMap;
    if (program != NULL)
        dlclose(program);
    return inProgram ? global : address;
}

void *CFBundleGetDataPointerForName(CFBundleRef bundle, CFStringRef symbolName)
{
    return __CFBundleVariableInUse(symbolName, __CFBundleLookup(bundle, symbolName));
}
