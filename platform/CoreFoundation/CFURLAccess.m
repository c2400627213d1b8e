/* URL resource access for file URLs, over POSIX calls. */
#define _GNU_SOURCE 1 /* mkostemp */
#include "CFInternal.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

const CFStringRef kCFURLFileExists = (CFStringRef)@"kCFURLFileExists";
const CFStringRef kCFURLFileDirectoryContents = (CFStringRef)@"kCFURLFileDirectoryContents";
const CFStringRef kCFURLFileLength = (CFStringRef)@"kCFURLFileLength";
const CFStringRef kCFURLFileLastModificationTime = (CFStringRef)@"kCFURLFileLastModificationTime";
const CFStringRef kCFURLFilePOSIXMode = (CFStringRef)@"kCFURLFilePOSIXMode";
const CFStringRef kCFURLFileOwnerID = (CFStringRef)@"kCFURLFileOwnerID";
const CFStringRef kCFURLHTTPStatusCode = (CFStringRef)@"kCFURLHTTPStatusCode";
const CFStringRef kCFURLHTTPStatusLine = (CFStringRef)@"kCFURLHTTPStatusLine";

static void __CFURLSetError(SInt32 *errorCode, SInt32 value)
{
    if (errorCode != NULL)
        *errorCode = value;
}

static SInt32 __CFURLErrorOfErrno(int error)
{
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return kCFURLResourceNotFoundError;
    case EACCES:
    case EPERM:
    case EROFS:
        return kCFURLResourceAccessViolationError;
    default:
        return kCFURLUnknownError;
    }
}

/* The file-system path of a file URL; 0 or the error code of the URL. */
static SInt32 __CFURLGetPath(CFURLRef url, char *path, size_t size)
{
    if (url == NULL || !__CFIsKindOf(url, CFURLGetTypeID()))
        return kCFURLImproperArgumentsError;
    CFURLRef absolute = CFURLCopyAbsoluteURL(url);
    if (absolute == NULL)
        return kCFURLImproperArgumentsError;
    CFStringRef scheme = CFURLCopyScheme(absolute);
    BOOL isFile = scheme != NULL && CFStringCompare(scheme, CFSTR("file"), kCFCompareCaseInsensitive) == kCFCompareEqualTo;
    Boolean gotPath = isFile && CFURLGetFileSystemRepresentation(absolute, true, (UInt8 *)path, (CFIndex)size);
    if (scheme != NULL)
        CFRelease(scheme);
    CFRelease(absolute);
    if (!isFile)
        return kCFURLUnknownSchemeError;
    return gotPath ? 0 : kCFURLImproperArgumentsError;
}

/* The whole content of a regular file, read to its end (sizes of special
 * files may lie); nil with errno set on failure. */
static NSData *__CFURLReadFile(const char *path)
{
    int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return nil;
    struct stat info;
    if (fstat(fd, &info) != 0 || S_ISDIR(info.st_mode)) {
        int error = S_ISDIR(info.st_mode) ? EISDIR : errno;
        close(fd);
        errno = error;
        return nil;
    }
    NSMutableData *data = [NSMutableData dataWithCapacity:info.st_size > 0 ? (NSUInteger)info.st_size : 4096];
    char block[65536];
    for (;;) {
        ssize_t got = read(fd, block, sizeof block);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            int error = errno;
            close(fd);
            errno = error;
            return nil;
        }
        if (got == 0)
            break;
        [data appendBytes:block length:(NSUInteger)got];
    }
    close(fd);
    return data;
}

static NSArray *__CFURLDirectoryContents(const char *path)
{
    DIR *dir = opendir(path);
    if (dir == NULL)
        return nil;
    NSMutableArray *names = [NSMutableArray array];
    struct dirent *entry;
    while ((entry = readdir(dir)) != NULL) {
        if (strcmp(entry->d_name, ".") != 0 && strcmp(entry->d_name, "..") != 0)
            [names addObject:[NSString stringWithUTF8String:entry->d_name]];
    }
    closedir(dir);
    [names sortUsingSelector:@selector(compare:)];

    NSString *folder = [NSString stringWithUTF8String:path];
    NSMutableArray *urls = [NSMutableArray arrayWithCapacity:[names count]];
    for (NSString *name in names) {
        NSString *child = [folder stringByAppendingPathComponent:name];
        struct stat info;
        BOOL isDirectory = stat([child fileSystemRepresentation], &info) == 0 && S_ISDIR(info.st_mode);
        const char *childPath = [child fileSystemRepresentation];
        CFURLRef url = CFURLCreateFromFileSystemRepresentation(NULL, (const UInt8 *)childPath,
                                                               (CFIndex)strlen(childPath), isDirectory);
        if (url != NULL) {
            [urls addObject:(id)url];
            CFRelease(url);
        }
    }
    return urls;
}

static BOOL __CFURLWants(NSArray *desired, CFStringRef key)
{
    return desired == nil || [desired containsObject:(id)key];
}

/* The properties of the object at path; nil for a missing object except for
 * the existence answer, which is always given when asked for. */
static NSDictionary *__CFURLProperties(const char *path, NSArray *desired, BOOL *exists)
{
    NSMutableDictionary *properties = [NSMutableDictionary dictionary];
    struct stat info;
    *exists = stat(path, &info) == 0;
    if (__CFURLWants(desired, kCFURLFileExists))
        [properties setObject:(id)(*exists ? kCFBooleanTrue : kCFBooleanFalse) forKey:(id)kCFURLFileExists];
    if (!*exists)
        return properties;
    if (__CFURLWants(desired, kCFURLFileLength))
        [properties setObject:[NSNumber numberWithLongLong:(long long)info.st_size] forKey:(id)kCFURLFileLength];
    if (__CFURLWants(desired, kCFURLFileLastModificationTime)) {
        NSTimeInterval seconds = (NSTimeInterval)info.st_mtim.tv_sec + info.st_mtim.tv_nsec / 1e9;
        [properties setObject:[NSDate dateWithTimeIntervalSince1970:seconds] forKey:(id)kCFURLFileLastModificationTime];
    }
    if (__CFURLWants(desired, kCFURLFilePOSIXMode))
        [properties setObject:[NSNumber numberWithLong:(long)(info.st_mode & 07777)] forKey:(id)kCFURLFilePOSIXMode];
    if (__CFURLWants(desired, kCFURLFileOwnerID))
        [properties setObject:[NSNumber numberWithLong:(long)info.st_uid] forKey:(id)kCFURLFileOwnerID];
    if (S_ISDIR(info.st_mode) && __CFURLWants(desired, kCFURLFileDirectoryContents)) {
        NSArray *contents = __CFURLDirectoryContents(path);
        if (contents != nil)
            [properties setObject:contents forKey:(id)kCFURLFileDirectoryContents];
    }
    return properties;
}

Boolean CFURLCreateDataAndPropertiesFromResource(CFAllocatorRef alloc, CFURLRef url, CFDataRef *resourceData,
                                                 CFDictionaryRef *properties, CFArrayRef desiredProperties,
                                                 SInt32 *errorCode)
{
    (void)alloc;
    if (resourceData != NULL)
        *resourceData = NULL;
    if (properties != NULL)
        *properties = NULL;
    char path[PATH_MAX];
    SInt32 error = __CFURLGetPath(url, path, sizeof path);
    if (error != 0) {
        __CFURLSetError(errorCode, error);
        return false;
    }

    Boolean ok = true;
    __CF_POOL_BEGIN
    @try {
        if (resourceData != NULL) {
            NSData *data = __CFURLReadFile(path);
            if (data == nil) {
                error = errno == EISDIR ? kCFURLUnknownError : __CFURLErrorOfErrno(errno);
                ok = false;
            } else {
                *resourceData = (CFDataRef)[data copy];
            }
        }
        if (properties != NULL) {
            BOOL exists = NO;
            NSArray *desired = (NSArray *)desiredProperties;
            *properties = (CFDictionaryRef)[__CFURLProperties(path, desired, &exists) copy];
            if (!exists && ok) {
                error = kCFURLResourceNotFoundError;
                ok = false;
            }
        }
    } @catch (NSException *exception) {
        error = kCFURLUnknownError;
        ok = false;
    }
    __CF_POOL_END
    __CFURLSetError(errorCode, ok ? 0 : error);
    return ok;
}

/* The process's file-creation mask, read without changing it (umask() can
 * only be read by setting it, which would race with other threads). */
static mode_t __CFURLCurrentUmask(void)
{
    FILE *status = fopen("/proc/self/status", "re");
    mode_t mask = 022;
    if (status == NULL)
        return mask;
    char line[256];
    while (fgets(line, sizeof line, status) != NULL) {
        unsigned int value;
        if (sscanf(line, "Umask: %o", &value) == 1) {
            mask = (mode_t)value;
            break;
        }
    }
    fclose(status);
    return mask;
}

static BOOL __CFURLWriteAll(int fd, const UInt8 *bytes, size_t length)
{
    while (length > 0) {
        ssize_t written = write(fd, bytes, length);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return NO;
        bytes += written;
        length -= (size_t)written;
    }
    return YES;
}

/* Writes in place; only used where no temporary file can be made beside the
 * target (a writable file in a read-only folder). */
static int __CFURLWriteInPlace(const char *path, const UInt8 *bytes, size_t length)
{
    int fd = open(path, O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (fd < 0)
        return errno;
    int error = __CFURLWriteAll(fd, bytes, length) ? 0 : errno;
    if (close(fd) != 0 && error == 0)
        error = errno;
    return error;
}

/* Writes the bytes to a temporary file beside the target, gives it the
 * target's permissions (or the default ones for a new file) and renames it
 * over the target.  Answers 0 or an errno value. */
static int __CFURLWriteFile(const char *requestedPath, const UInt8 *bytes, size_t length)
{
    /* Writing through a symbolic link replaces the file it points to. */
    char resolved[PATH_MAX];
    const char *path = realpath(requestedPath, resolved) != NULL ? resolved : requestedPath;

    struct stat existing;
    BOOL exists = stat(path, &existing) == 0;
    if (exists && S_ISDIR(existing.st_mode))
        return EISDIR;

    const char *slash = strrchr(path, '/');
    size_t folderLength = slash != NULL ? (size_t)(slash - path) : 0;
    char temporary[PATH_MAX];
    /* The name is shortened so that a long one still leaves room for the suffix. */
    int written = snprintf(temporary, sizeof temporary, "%.*s/.%.64s.XXXXXX", (int)folderLength, path,
                           slash != NULL ? slash + 1 : path);
    if (written < 0 || (size_t)written >= sizeof temporary)
        return ENAMETOOLONG;
    int fd = mkostemp(temporary, O_CLOEXEC);
    if (fd < 0) {
        int error = errno;
        if (exists && (error == EACCES || error == EROFS || error == EPERM))
            return __CFURLWriteInPlace(path, bytes, length);
        return error;
    }

    int error = 0;
    if (exists) {
        if (fchmod(fd, existing.st_mode & 07777) != 0)
            error = errno;
        /* Keeping the owner needs privileges; without them the writer owns the new file. */
        if (fchown(fd, existing.st_uid, existing.st_gid) != 0) {
        }
    } else if (fchmod(fd, 0666 & ~__CFURLCurrentUmask()) != 0) {
        error = errno;
    }
    if (error == 0 && !__CFURLWriteAll(fd, bytes, length))
        error = errno;
    if (close(fd) != 0 && error == 0)
        error = errno;
    if (error == 0 && rename(temporary, path) != 0)
        error = errno;
    if (error != 0)
        unlink(temporary);
    return error;
}

static SInt32 __CFURLWriteProperty(const char *path, id key, id value)
{
    if (![key isKindOfClass:[NSString class]])
        return kCFURLUnknownPropertyKeyError;
    BOOL isMode = [key isEqual:(id)kCFURLFilePOSIXMode];
    BOOL isOwner = [key isEqual:(id)kCFURLFileOwnerID];
    if (!isMode && !isOwner)
        return kCFURLUnknownPropertyKeyError;
    if (![value isKindOfClass:[NSNumber class]])
        return kCFURLImproperArgumentsError;
    int result = isMode ? chmod(path, (mode_t)([value longLongValue] & 07777))
                        : chown(path, (uid_t)[value unsignedLongLongValue], (gid_t)-1);
    return result == 0 ? 0 : __CFURLErrorOfErrno(errno);
}

Boolean CFURLWriteDataAndPropertiesToResource(CFURLRef url, CFDataRef dataToWrite, CFDictionaryRef propertiesToWrite,
                                              SInt32 *errorCode)
{
    char path[PATH_MAX];
    SInt32 error = __CFURLGetPath(url, path, sizeof path);
    if (error == 0 && dataToWrite != NULL && !__CFIsKindOf(dataToWrite, CFDataGetTypeID()))
        error = kCFURLImproperArgumentsError;
    if (error == 0 && propertiesToWrite != NULL && !__CFIsKindOf(propertiesToWrite, CFDictionaryGetTypeID()))
        error = kCFURLImproperArgumentsError;
    if (error != 0) {
        __CFURLSetError(errorCode, error);
        return false;
    }

    __CF_POOL_BEGIN
    @try {
        if (dataToWrite != NULL) {
            int systemError;
            if (CFURLHasDirectoryPath(url))
                systemError = mkdir(path, 0777) == 0 || errno == EEXIST ? 0 : errno;
            else
                systemError = __CFURLWriteFile(path, CFDataGetBytePtr(dataToWrite), (size_t)CFDataGetLength(dataToWrite));
            if (systemError != 0)
                error = __CFURLErrorOfErrno(systemError);
        }
        if (error == 0 && propertiesToWrite != NULL) {
            NSDictionary *properties = (NSDictionary *)propertiesToWrite;
            for (id key in properties) {
                error = __CFURLWriteProperty(path, key, [properties objectForKey:key]);
                if (error != 0)
                    break;
            }
        }
    } @catch (NSException *exception) {
        error = kCFURLUnknownError;
    }
    __CF_POOL_END
    __CFURLSetError(errorCode, error);
    return error == 0;
}

Boolean CFURLDestroyResource(CFURLRef url, SInt32 *errorCode)
{
    char path[PATH_MAX];
    SInt32 error = __CFURLGetPath(url, path, sizeof path);
    if (error == 0) {
        struct stat info;
        int result = lstat(path, &info) != 0 ? -1 : (S_ISDIR(info.st_mode) ? rmdir(path) : unlink(path));
        if (result != 0)
            error = __CFURLErrorOfErrno(errno);
    }
    __CFURLSetError(errorCode, error);
    return error == 0;
}

CFTypeRef CFURLCreatePropertyFromResource(CFAllocatorRef alloc, CFURLRef url, CFStringRef property, SInt32 *errorCode)
{
    if (property == NULL) {
        __CFURLSetError(errorCode, kCFURLImproperArgumentsError);
        return NULL;
    }
    CFArrayRef desired = CFArrayCreate(alloc, (const void **)&property, 1, &kCFTypeArrayCallBacks);
    CFDictionaryRef properties = NULL;
    SInt32 error = 0;
    CFURLCreateDataAndPropertiesFromResource(alloc, url, NULL, &properties, desired, &error);
    CFTypeRef value = properties != NULL ? CFDictionaryGetValue(properties, property) : NULL;
    if (value != NULL)
        CFRetain(value);
    else if (error == 0)
        error = kCFURLPropertyKeyUnavailableError;
    if (properties != NULL)
        CFRelease(properties);
    if (desired != NULL)
        CFRelease(desired);
    __CFURLSetError(errorCode, value != NULL ? 0 : error);
    return value;
}
