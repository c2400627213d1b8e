/* CFBundle over NSBundle: identity, Info dictionary, and code loading.
 * Loading goes through NSBundle (so Objective-C classes of the bundle are
 * registered with Foundation) and symbols are found with dlsym on the same
 * loaded image. */
#include "CFInternal.h"
#include <dlfcn.h>
#include <limits.h>
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
            if (folderBundle != nil)
                bundle = folderBundle;
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
    if (__CFIsDirectory((NSString *)path))
        result = (CFBundleRef)[[NSBundle bundleWithPath:(NSString *)path] retain];
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

static NSString *__CFBundleExecutablePath(CFBundleRef bundle)
{
    NSString *path = [__CFBundle(bundle) executablePath];
    if (path == nil)
        return nil;
    struct stat info;
    if (stat([path fileSystemRepresentation], &info) != 0 || !S_ISREG(info.st_mode))
        return nil;
    return path;
}

CFURLRef CFBundleCopyExecutableURL(CFBundleRef bundle)
{
    if (bundle == NULL)
        return NULL;
    CFURLRef result = NULL;
    __CF_POOL_BEGIN
    NSString *path = __CFBundleExecutablePath(bundle);
    if (path != nil)
        result = CFURLCreateWithFileSystemPath(NULL, (CFStringRef)path, kCFURLPOSIXPathStyle, false);
    __CF_POOL_END
    return result;
}

CFStringRef CFBundleGetIdentifier(CFBundleRef bundle)
{
    if (bundle == NULL)
        return NULL;
    return (CFStringRef)[__CFBundle(bundle) bundleIdentifier];
}

CFDictionaryRef CFBundleGetInfoDictionary(CFBundleRef bundle)
{
    if (bundle == NULL)
        return NULL;
    return (CFDictionaryRef)[__CFBundle(bundle) infoDictionary];
}

CFTypeRef CFBundleGetValueForInfoDictionaryKey(CFBundleRef bundle, CFStringRef key)
{
    if (bundle == NULL || key == NULL)
        return NULL;
    return (CFTypeRef)[[__CFBundle(bundle) infoDictionary] objectForKey:(NSString *)key];
}

/* The dlopen handle of the bundle's loaded executable, or NULL. */
static void *__CFBundleHandle(CFBundleRef bundle, BOOL loadIfNeeded)
{
    if (bundle == CFBundleGetMainBundle())
        return dlopen(NULL, RTLD_LAZY);
    void *handle = NULL;
    __CF_POOL_BEGIN
    NSString *path = __CFBundleExecutablePath(bundle);
    if (path != nil) {
        const char *file = [path fileSystemRepresentation];
        handle = dlopen(file, RTLD_LAZY | RTLD_NOLOAD);
        if (handle == NULL && loadIfNeeded) {
            @try {
                [__CFBundle(bundle) load];
            } @catch (NSException *exception) {
            }
            handle = dlopen(file, RTLD_LAZY | RTLD_NOLOAD);
            if (handle == NULL)
                handle = dlopen(file, RTLD_NOW | RTLD_GLOBAL);
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

void *CFBundleGetDataPointerForName(CFBundleRef bundle, CFStringRef symbolName)
{
    return __CFBundleLookup(bundle, symbolName);
}
