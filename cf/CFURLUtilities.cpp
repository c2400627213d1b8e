// CF URL, bundle, dictionary and localisation helpers.
#include <KORU/CFURLUtilities.h>

#include <KORU/Debug.h>

#include "CFReference.h"

#include <climits>

using koru::CFReference;

namespace {

bool IsBundle(CFTypeRef object)
{
    return object != nullptr && CFGetTypeID(object) == CFBundleGetTypeID();
}

// The bundle, the main bundle for NULL, or NULL for an object that is no bundle.
CFBundleRef BundleOrMain(CFBundleRef bundle)
{
    if (bundle == nullptr)
        return CFBundleGetMainBundle();
    return IsBundle(bundle) ? bundle : nullptr;
}

bool IsURL(CFTypeRef object)
{
    return object != nullptr && CFGetTypeID(object) == CFURLGetTypeID();
}

bool IsDictionary(CFTypeRef object)
{
    return object != nullptr && CFGetTypeID(object) == CFDictionaryGetTypeID();
}

// The folder URL with the component appended, or the folder itself (retained
// again) when there is no component.  Takes ownership of folder.
CFURLRef AppendingComponent(CFURLRef folder, CFStringRef component, Boolean isDirectory)
{
    CFReference<CFURLRef> owner(folder);
    if (!owner)
        return nullptr;
    if (component == nullptr)
        return owner.release();
    return CFURLCreateCopyAppendingPathComponent(kCFAllocatorDefault, folder, component, isDirectory);
}

CFURLRef CopyExecutableDirectoryURL(CFBundleRef bundle)
{
    CFReference<CFURLRef> executable(CFBundleCopyExecutableURL(BundleOrMain(bundle)));
    if (!executable)
        return nullptr;
    return CFURLCreateCopyDeletingLastPathComponent(kCFAllocatorDefault, executable.get());
}

// Makes a bundle from a URL and releases the URL.
CFBundleRef CreateBundleTakingURL(CFURLRef url)
{
    CFReference<CFURLRef> owner(url);
    return owner ? CFBundleCreate(kCFAllocatorDefault, url) : nullptr;
}

Boolean WriteProperty(CFURLRef url, CFStringRef key, CFNumberType type, const void *value)
{
    if (!IsURL(url))
        return false;
    CFReference<CFNumberRef> number(CFNumberCreate(kCFAllocatorDefault, type, value));
    if (!number)
        return false;
    const void *keys[] = {key};
    const void *values[] = {number.get()};
    CFReference<CFDictionaryRef> properties(CFDictionaryCreate(kCFAllocatorDefault, keys, values, 1,
                                                               &kCFTypeDictionaryKeyCallBacks,
                                                               &kCFTypeDictionaryValueCallBacks));
    if (!properties)
        return false;
    SInt32 error = 0;
    return CFURLWriteDataAndPropertiesToResource(url, nullptr, properties.get(), &error) && error == 0;
}

} // namespace

// --- Bundle locations -----------------------------------------------------

extern "C" CFURLRef CFBundleCopyDirectoryURL(CFBundleRef bundle)
{
    CFReference<CFURLRef> bundleURL(CFBundleCopyBundleURL(BundleOrMain(bundle)));
    if (!bundleURL)
        return nullptr;
    return CFURLCreateCopyDeletingLastPathComponent(kCFAllocatorDefault, bundleURL.get());
}

extern "C" CFURLRef CFBundleCopyDirectoryURLAppendingPathComponent(CFBundleRef bundle, CFStringRef component,
                                                                   Boolean isDirectory)
{
    return AppendingComponent(CFBundleCopyDirectoryURL(bundle), component, isDirectory);
}

extern "C" CFURLRef CFBundleCopyExecutableDirectoryURLAppendingPathComponent(CFBundleRef bundle,
                                                                             CFStringRef component,
                                                                             Boolean isDirectory)
{
    return AppendingComponent(CopyExecutableDirectoryURL(bundle), component, isDirectory);
}

extern "C" CFURLRef CFBundleCopyResourcesDirectoryURLAppendingPathComponent(CFBundleRef bundle,
                                                                            CFStringRef component,
                                                                            Boolean isDirectory)
{
    CFReference<CFURLRef> resources(CFBundleCopyResourcesDirectoryURL(BundleOrMain(bundle)));
    if (!resources)
        return nullptr;
    return AppendingComponent(CFURLCopyAbsoluteURL(resources.get()), component, isDirectory);
}

extern "C" Boolean CFBundleGetExecutableFSRef(CFBundleRef bundle, FSRef *ref)
{
    if (ref == nullptr)
        return false;
    CFReference<CFURLRef> executable(CFBundleCopyExecutableURL(BundleOrMain(bundle)));
    return executable && CFURLGetFSRef(executable.get(), ref);
}

extern "C" Boolean CFBundleGetResourceFSRef(CFBundleRef bundle, CFStringRef resourceName, CFStringRef resourceType,
                                            CFStringRef subDirName, FSRef *ref)
{
    if (!IsBundle(bundle) || ref == nullptr)
        return false;
    CFReference<CFURLRef> resource(CFBundleCopyResourceURL(bundle, resourceName, resourceType, subDirName));
    return resource && CFURLGetFSRef(resource.get(), ref);
}

// --- Bundle creation ------------------------------------------------------

extern "C" CFBundleRef CFBundleCreateFromFSRef(const FSRef *ref)
{
    if (ref == nullptr)
        return nullptr;
    return CreateBundleTakingURL(CFURLCreateFromFSRef(kCFAllocatorDefault, ref));
}

extern "C" CFBundleRef CFBundleCreateFromPOSIXPath(CFStringRef path)
{
    if (CFStringIsVoid(path))
        return nullptr;
    return CreateBundleTakingURL(
        CFURLCreateWithFileSystemPath(kCFAllocatorDefault, path, kCFURLPOSIXPathStyle, true));
}

extern "C" CFBundleRef CFBundleCreateWithFindFolder(SInt16 domain, OSType folderType, CFStringRef name)
{
    if (name == nullptr)
        return nullptr;
    return CreateBundleTakingURL(CFURLCreateWithFindFolder(domain, folderType, false, name, true));
}

extern "C" CFBundleRef CFBundleCreateFromBundleExecutableDirectory(CFBundleRef bundle, CFStringRef name)
{
    if (CFStringIsVoid(name))
        return nullptr;
    return CreateBundleTakingURL(CFBundleCopyExecutableDirectoryURLAppendingPathComponent(bundle, name, true));
}

// --- URLs -----------------------------------------------------------------

extern "C" Boolean CFURLIsExist(CFURLRef url)
{
    if (!IsURL(url))
        return false;
    FSRef ref;
    return CFURLGetFSRef(url, &ref);
}

extern "C" CFStringRef CFURLCopyPosixPath(CFURLRef url)
{
    if (!IsURL(url))
        return nullptr;
    FSRef ref;
    if (!CFURLGetFSRef(url, &ref))
        return nullptr;
    UInt8 path[PATH_MAX];
    if (FSRefMakePath(&ref, path, sizeof path) != noErr)
        return nullptr;
    return CFStringCreateWithFileSystemRepresentation(kCFAllocatorDefault, reinterpret_cast<const char *>(path));
}

extern "C" CFURLRef CFURLCreateFromFSSpec(const FSSpec *fsSpec)
{
    if (fsSpec == nullptr)
        return nullptr;
    FSRef ref;
    if (FSpMakeFSRef(fsSpec, &ref) != noErr)
        return nullptr;
    return CFURLCreateFromFSRef(kCFAllocatorDefault, &ref);
}

extern "C" Boolean CFURLGetFSSpec(CFURLRef url, FSSpec *fsSpec)
{
    if (!IsURL(url) || fsSpec == nullptr)
        return false;
    FSRef ref;
    return CFURLGetFSRef(url, &ref) &&
           FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, fsSpec, nullptr) == noErr;
}

extern "C" Boolean CFURLOpenWithLSLaunchFlags(CFURLRef url, LSLaunchFlags flags)
{
    if (!IsURL(url))
        return false;
    CFReference<CFArrayRef> items(
        CFArrayCreate(kCFAllocatorDefault, reinterpret_cast<const void **>(&url), 1, &kCFTypeArrayCallBacks));
    if (!items)
        return false;
    LSLaunchURLSpec fsSpec = {nullptr, items.get(), nullptr, flags, nullptr};
    return LSOpenFromURLSpec(&fsSpec, nullptr) == noErr;
}

extern "C" Boolean CFURLSetFilePOSIXMode(CFURLRef url, UInt16 mode)
{
    long value = mode;
    return WriteProperty(url, kCFURLFilePOSIXMode, kCFNumberLongType, &value);
}

extern "C" Boolean CFURLSetFileOwnerID(CFURLRef url, UInt32 userID)
{
    long long value = static_cast<long long>(userID);
    return WriteProperty(url, kCFURLFileOwnerID, kCFNumberLongLongType, &value);
}

// --- Dictionaries ---------------------------------------------------------

extern "C" const void *CFDictionaryGetValueForNumber(CFDictionaryRef dictionary, long number)
{
    if (!IsDictionary(dictionary))
        return nullptr;
    CFReference<CFStringRef> key(CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%ld"), number));
    return key ? CFDictionaryGetValue(dictionary, key.get()) : nullptr;
}

extern "C" Boolean CFDictionaryWriteToURL(CFDictionaryRef dictionary, CFURLRef url)
{
    if (!IsDictionary(dictionary) || !IsURL(url))
        return false;
    CFReference<CFDataRef> data(CFPropertyListCreateXMLData(kCFAllocatorDefault, dictionary));
    if (!data)
        return false;
    SInt32 error = 0;
    return CFURLWriteDataAndPropertiesToResource(url, data.get(), nullptr, &error) && error == 0;
}

extern "C" CFMutableDictionaryRef CFDictionaryCreateMutableWithContentsOfURL(CFURLRef url)
{
    if (!IsURL(url))
        return nullptr;
    CFDataRef rawData = nullptr;
    SInt32 error = 0;
    const Boolean read =
        CFURLCreateDataAndPropertiesFromResource(kCFAllocatorDefault, url, &rawData, nullptr, nullptr, &error);
    CFReference<CFDataRef> data(rawData);
    if (!read || error != 0 || !data)
        return nullptr;

    CFStringRef rawErrorString = nullptr;
    CFReference<CFPropertyListRef> list(CFPropertyListCreateFromXMLData(
        kCFAllocatorDefault, data.get(), kCFPropertyListMutableContainersAndLeaves, &rawErrorString));
    CFReference<CFStringRef> errorString(rawErrorString);
    if (errorString) {
        CFLogCore("CFDictionaryCreateMutableWithContentsOfURL", 442, CFSTR("CFPropertyListCreateFromXMLData:%@"),
                  errorString.get());
        return nullptr;
    }
    if (!list || CFGetTypeID(list.get()) != CFDictionaryGetTypeID())
        return nullptr;
    return static_cast<CFMutableDictionaryRef>(const_cast<void *>(list.release()));
}

extern "C" CFMutableDictionaryRef CFDictionaryCreateMutableWithResource(CFStringRef resourceName,
                                                                        CFStringRef resourceType,
                                                                        CFStringRef subDirName, CFBundleRef bundle)
{
    CFBundleRef source = BundleOrMain(bundle);
    if (source == nullptr)
        return nullptr;
    CFReference<CFURLRef> resource(CFBundleCopyResourceURL(source, resourceName, resourceType, subDirName));
    return resource ? CFDictionaryCreateMutableWithContentsOfURL(resource.get()) : nullptr;
}

// --- Localisation ---------------------------------------------------------

extern "C" CFDictionaryRef CFBundleCopyStringsDictionaryForLocalization(CFBundleRef bundle, CFStringRef tableName,
                                                                        CFStringRef localizationName)
{
    CFBundleRef source = BundleOrMain(bundle);
    if (source == nullptr)
        return nullptr;
    CFReference<CFURLRef> table(CFBundleCopyResourceURLForLocalization(source, tableName, CFSTR("strings"),
                                                                       nullptr, localizationName));
    if (!table)
        return nullptr;
    CFDataRef rawData = nullptr;
    CFURLCreateDataAndPropertiesFromResource(kCFAllocatorDefault, table.get(), &rawData, nullptr, nullptr, nullptr);
    CFReference<CFDataRef> data(rawData);
    if (!data)
        return nullptr;
    CFPropertyListRef list =
        CFPropertyListCreateFromXMLData(kCFAllocatorDefault, data.get(), kCFPropertyListImmutable, nullptr);
    if (list != nullptr && CFGetTypeID(list) != CFDictionaryGetTypeID()) {
        CFRelease(list);
        return nullptr;
    }
    return static_cast<CFDictionaryRef>(list);
}

extern "C" CFStringRef CFBundleCopyStringForLocalization(CFBundleRef bundle, CFStringRef key,
                                                         CFStringRef defaultValue, CFStringRef tableName,
                                                         CFStringRef localizationName)
{
    if (key == nullptr)
        return static_cast<CFStringRef>(CFTypeRetain(defaultValue));
    if (defaultValue == nullptr)
        defaultValue = CFSTR("");
    CFReference<CFDictionaryRef> table(
        CFBundleCopyStringsDictionaryForLocalization(bundle, tableName, localizationName));
    const void *value = table ? CFDictionaryGetValue(table.get(), key) : nullptr;
    return static_cast<CFStringRef>(CFRetain(value != nullptr ? value : defaultValue));
}
