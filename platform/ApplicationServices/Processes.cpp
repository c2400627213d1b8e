/* The Process Manager over /proc: serial numbers are {0, pid}. */
#include <ApplicationServices/Processes.h>
#include <CoreServices/MacErrors.h>

#include "ActiveWindow.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string ProcFolder(pid_t pid)
{
    return "/proc/" + std::to_string(pid);
}

bool ProcessExists(pid_t pid)
{
    struct stat info;
    return pid > 0 && stat(ProcFolder(pid).c_str(), &info) == 0;
}

/* The pid a number stands for, without checking that it runs. */
pid_t NumberedPID(const ProcessSerialNumber &psn)
{
    if (psn.highLongOfPSN != 0)
        return 0;
    if (psn.lowLongOfPSN == kCurrentProcess)
        return getpid();
    return static_cast<pid_t>(psn.lowLongOfPSN);
}

bool RunningPID(const ProcessSerialNumber *psn, pid_t *pid)
{
    *pid = NumberedPID(*psn);
    return ProcessExists(*pid);
}

ProcessSerialNumber NumberOf(pid_t pid)
{
    return ProcessSerialNumber{0, static_cast<UInt32>(pid)};
}

/* The executable's path; empty when it cannot be read (a kernel thread, or
 * another user's process). */
std::string ExecutablePath(pid_t pid)
{
    char buffer[PATH_MAX];
    ssize_t length = readlink((ProcFolder(pid) + "/exe").c_str(), buffer, sizeof buffer - 1);
    if (length <= 0)
        return std::string();
    std::string path(buffer, static_cast<size_t>(length));
    const std::string deleted = " (deleted)";
    if (path.size() > deleted.size() &&
        path.compare(path.size() - deleted.size(), deleted.size(), deleted) == 0)
        path.erase(path.size() - deleted.size());
    return path;
}

std::string LastComponent(const std::string &path)
{
    std::string::size_type slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool HasSuffix(const std::string &text, const std::string &suffix)
{
    return text.size() > suffix.size() &&
           text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

/* The innermost ".app" folder around the executable (Foo.app/Contents/MacOS/Foo
 * on the Mac layout, Foo.app/Foo on GNUstep's), else the executable itself. */
std::string BundleLocation(const std::string &executable)
{
    std::string folder = executable;
    for (;;) {
        std::string::size_type slash = folder.rfind('/');
        if (slash == std::string::npos || slash == 0)
            return executable;
        folder.erase(slash);
        if (HasSuffix(LastComponent(folder), ".app"))
            return folder;
    }
}

/* The name the kernel keeps (at most 15 characters): all there is to know
 * about a process whose executable cannot be read. */
std::string KernelName(pid_t pid)
{
    std::ifstream comm(ProcFolder(pid) + "/comm");
    std::string name;
    std::getline(comm, name);
    return name;
}

CFStringRef CreateString(const std::string &text)
{
    return CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8 *>(text.data()),
                                   static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false);
}

/* The bundle's CFBundleName, or NULL when it has none. */
CFStringRef CopyBundleName(const std::string &bundlePath)
{
    CFURLRef url = CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const UInt8 *>(bundlePath.c_str()),
        static_cast<CFIndex>(bundlePath.size()), true);
    if (url == nullptr)
        return nullptr;
    CFStringRef name = nullptr;
    if (CFBundleRef bundle = CFBundleCreate(kCFAllocatorDefault, url)) {
        CFTypeRef value = CFBundleGetValueForInfoDictionaryKey(bundle, CFSTR("CFBundleName"));
        if (value != nullptr && CFGetTypeID(value) == CFStringGetTypeID() &&
            CFStringGetLength(static_cast<CFStringRef>(value)) > 0)
            name = static_cast<CFStringRef>(CFRetain(value));
        CFRelease(bundle);
    }
    CFRelease(url);
    return name;
}

/* The current user's processes that have an executable, in pid order: the
 * next one after `after`, or 0. */
pid_t NextUserProcess(pid_t after)
{
    DIR *proc = opendir("/proc");
    if (proc == nullptr)
        return 0;
    pid_t next = 0;
    uid_t user = geteuid();
    while (struct dirent *entry = readdir(proc)) {
        char *end = nullptr;
        long value = std::strtol(entry->d_name, &end, 10);
        if (end == entry->d_name || *end != '\0' || value <= after)
            continue;
        pid_t pid = static_cast<pid_t>(value);
        if (next != 0 && pid >= next)
            continue;
        struct stat info;
        if (stat(ProcFolder(pid).c_str(), &info) != 0 || info.st_uid != user)
            continue;
        if (ExecutablePath(pid).empty())
            continue; // kernel threads have no executable and are no one's application
        next = pid;
    }
    closedir(proc);
    return next;
}

} // namespace

extern "C" OSErr GetCurrentProcess(ProcessSerialNumber *PSN)
{
    if (PSN == nullptr)
        return paramErr;
    *PSN = NumberOf(getpid());
    return noErr;
}

extern "C" OSErr GetFrontProcess(ProcessSerialNumber *PSN)
{
    if (PSN == nullptr)
        return paramErr;
    pid_t owner = 0;
    try {
        if (koru::ActiveWindowOwner(&owner) != koru::WindowAnswer::Found)
            owner = getpid();
    } catch (...) {
        owner = getpid();
    }
    *PSN = NumberOf(owner);
    return noErr;
}

extern "C" OSErr GetNextProcess(ProcessSerialNumber *PSN)
{
    if (PSN == nullptr)
        return paramErr;
    try {
        pid_t next = NextUserProcess(NumberedPID(*PSN));
        if (next == 0)
            return procNotFound;
        *PSN = NumberOf(next);
        return noErr;
    } catch (...) {
        return procNotFound;
    }
}

extern "C" OSErr SetFrontProcess(const ProcessSerialNumber *PSN)
{
    pid_t pid = 0;
    if (PSN == nullptr)
        return paramErr;
    if (!RunningPID(PSN, &pid))
        return procNotFound;
    try {
        switch (koru::ActivateWindowOf(pid)) {
        case koru::WindowAnswer::Found:
            return noErr;
        case koru::WindowAnswer::NoDisplay:
            return pid == getpid() ? OSErr(noErr) : OSErr(procNotFound);
        case koru::WindowAnswer::NotFound:
            break;
        }
    } catch (...) {
    }
    return procNotFound;
}

extern "C" OSErr SameProcess(const ProcessSerialNumber *PSN1, const ProcessSerialNumber *PSN2,
                             Boolean *result)
{
    if (PSN1 == nullptr || PSN2 == nullptr || result == nullptr)
        return paramErr;
    *result = NumberedPID(*PSN1) == NumberedPID(*PSN2) && NumberedPID(*PSN1) != 0;
    return noErr;
}

extern "C" OSStatus CopyProcessName(const ProcessSerialNumber *PSN, CFStringRef *name)
{
    if (name != nullptr)
        *name = nullptr;
    if (PSN == nullptr || name == nullptr)
        return paramErr;
    try {
        pid_t pid = 0;
        if (!RunningPID(PSN, &pid))
            return procNotFound;
        std::string executable = ExecutablePath(pid);
        if (executable.empty()) {
            std::string kernelName = KernelName(pid);
            *name = kernelName.empty() ? nullptr : CreateString(kernelName);
        } else {
            std::string bundle = BundleLocation(executable);
            if (bundle != executable)
                *name = CopyBundleName(bundle);
            if (*name == nullptr)
                *name = CreateString(LastComponent(executable));
        }
        return *name != nullptr ? OSStatus(noErr) : OSStatus(procNotFound);
    } catch (...) {
        if (*name != nullptr)
            CFRelease(*name);
        *name = nullptr;
        return procNotFound;
    }
}

extern "C" OSStatus GetProcessBundleLocation(const ProcessSerialNumber *psn, FSRef *location)
{
    if (psn == nullptr || location == nullptr)
        return paramErr;
    try {
        pid_t pid = 0;
        if (!RunningPID(psn, &pid))
            return procNotFound;
        std::string executable = ExecutablePath(pid);
        if (executable.empty())
            return procNotFound;
        std::string bundle = BundleLocation(executable);
        return FSPathMakeRef(reinterpret_cast<const UInt8 *>(bundle.c_str()), location, nullptr);
    } catch (...) {
        return procNotFound;
    }
}

extern "C" OSStatus GetProcessPID(const ProcessSerialNumber *psn, pid_t *pid)
{
    if (psn == nullptr || pid == nullptr)
        return paramErr;
    pid_t found = 0;
    if (!RunningPID(psn, &found))
        return procNotFound;
    *pid = found;
    return noErr;
}

extern "C" OSStatus GetProcessForPID(pid_t pid, ProcessSerialNumber *psn)
{
    if (psn == nullptr)
        return paramErr;
    if (!ProcessExists(pid))
        return procNotFound;
    *psn = NumberOf(pid);
    return noErr;
}

namespace {

constexpr OSType kApplicationType = 0x4150504C; // 'APPL'
constexpr OSType kUnknownSignature = 0x3F3F3F3F; // '????'

/* What /proc/<pid>/stat says: parent, CPU ticks, start ticks, resident pages. */
struct ProcessStat {
    pid_t parent = 0;
    unsigned long long cpuTicks = 0;
    unsigned long long startTicks = 0;
    long residentPages = 0;
};

bool ReadStat(pid_t pid, ProcessStat &stat)
{
    std::ifstream file(ProcFolder(pid) + "/stat");
    std::string line;
    if (!std::getline(file, line))
        return false;
    // The name in parentheses may hold spaces and parentheses: skip to the last ')'.
    const std::string::size_type close = line.rfind(')');
    if (close == std::string::npos)
        return false;
    std::vector<std::string> fields;
    std::string field;
    for (std::string::size_type k = close + 2; k <= line.size(); ++k) {
        if (k == line.size() || line[k] == ' ') {
            fields.push_back(field);
            field.clear();
        } else {
            field += line[k];
        }
    }
    // fields[0] is the state (field 3 of the record).
    if (fields.size() < 22)
        return false;
    stat.parent = static_cast<pid_t>(std::strtol(fields[1].c_str(), nullptr, 10));
    stat.cpuTicks = std::strtoull(fields[11].c_str(), nullptr, 10) + std::strtoull(fields[12].c_str(), nullptr, 10);
    stat.startTicks = std::strtoull(fields[19].c_str(), nullptr, 10);
    stat.residentPages = std::strtol(fields[21].c_str(), nullptr, 10);
    return true;
}

/* Kernel clock ticks as Mac ticks (1/60 s). */
UInt32 MacTicks(unsigned long long clockTicks)
{
    const long perSecond = sysconf(_SC_CLK_TCK) > 0 ? sysconf(_SC_CLK_TCK) : 100;
    return static_cast<UInt32>(clockTicks * 60 / static_cast<unsigned long long>(perSecond));
}

std::string TextOf(CFStringRef string)
{
    if (string == nullptr)
        return std::string();
    char buffer[1024];
    return CFStringGetCString(string, buffer, sizeof buffer, kCFStringEncodingUTF8) ? buffer : "";
}

/* What the bundle around an executable says about it. */
struct BundleFacts {
    std::string executable;
    std::string location;
    bool isBundle = false;
    std::string identifier;
    OSType signature = kUnknownSignature;
};

BundleFacts FactsOf(pid_t pid)
{
    BundleFacts facts;
    facts.executable = ExecutablePath(pid);
    if (facts.executable.empty())
        return facts;
    facts.location = BundleLocation(facts.executable);
    facts.isBundle = facts.location != facts.executable;
    if (!facts.isBundle)
        return facts;
    CFURLRef url = CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const UInt8 *>(facts.location.c_str()),
        static_cast<CFIndex>(facts.location.size()), true);
    if (url == nullptr)
        return facts;
    if (CFBundleRef bundle = CFBundleCreate(kCFAllocatorDefault, url)) {
        CFTypeRef identifier = CFBundleGetValueForInfoDictionaryKey(bundle, CFSTR("CFBundleIdentifier"));
        if (identifier != nullptr && CFGetTypeID(identifier) == CFStringGetTypeID())
            facts.identifier = TextOf(static_cast<CFStringRef>(identifier));
        CFTypeRef signature = CFBundleGetValueForInfoDictionaryKey(bundle, CFSTR("CFBundleSignature"));
        if (signature != nullptr && CFGetTypeID(signature) == CFStringGetTypeID()) {
            const std::string text = TextOf(static_cast<CFStringRef>(signature));
            if (text.size() == 4)
                facts.signature = (OSType(UInt8(text[0])) << 24) | (OSType(UInt8(text[1])) << 16) |
                                  (OSType(UInt8(text[2])) << 8) | OSType(UInt8(text[3]));
        }
        CFRelease(bundle);
    }
    CFRelease(url);
    return facts;
}

std::string CodeText(OSType code)
{
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8)
        text += static_cast<char>((code >> shift) & 0xFF);
    return text;
}

void SetString(CFMutableDictionaryRef dictionary, CFStringRef key, const std::string &value)
{
    CFStringRef string = CreateString(value);
    if (string != nullptr) {
        CFDictionarySetValue(dictionary, key, string);
        CFRelease(string);
    }
}

void SetNumber(CFMutableDictionaryRef dictionary, CFStringRef key, long long value)
{
    CFNumberRef number = CFNumberCreate(kCFAllocatorDefault, kCFNumberLongLongType, &value);
    if (number != nullptr) {
        CFDictionarySetValue(dictionary, key, number);
        CFRelease(number);
    }
}

} // namespace

extern "C" OSErr GetProcessInformation(const ProcessSerialNumber *PSN, ProcessInfoRec *info)
{
    if (PSN == nullptr || info == nullptr || info->processInfoLength < sizeof(ProcessInfoRec))
        return paramErr;
    try {
        pid_t pid = 0;
        ProcessStat stat;
        if (!RunningPID(PSN, &pid) || !ReadStat(pid, stat))
            return procNotFound;
        const BundleFacts facts = FactsOf(pid);
        if (info->processName != nullptr) {
            CFStringRef name = nullptr;
            std::string text;
            if (CopyProcessName(PSN, &name) == noErr) {
                text = TextOf(name);
                CFRelease(name);
            }
            if (text.size() > 31)
                text.resize(31);
            info->processName[0] = static_cast<unsigned char>(text.size());
            std::memcpy(info->processName + 1, text.data(), text.size());
        }
        info->processNumber = NumberOf(pid);
        info->processType = kApplicationType;
        info->processSignature = facts.signature;
        info->processMode = facts.isBundle ? UInt32(modeCanBackground) : UInt32(modeOnlyBackground);
        info->processLocation = nullptr;
        const long pageSize = sysconf(_SC_PAGESIZE);
        const unsigned long long resident = static_cast<unsigned long long>(stat.residentPages) *
                                            static_cast<unsigned long long>(pageSize > 0 ? pageSize : 4096);
        info->processSize = resident > 0xFFFFFFFFull ? 0xFFFFFFFFu : static_cast<UInt32>(resident);
        info->processFreeMem = 0;
        info->processLauncher = ProcessExists(stat.parent) ? NumberOf(stat.parent) : ProcessSerialNumber{0, 0};
        info->processLaunchDate = MacTicks(stat.startTicks);
        info->processActiveTime = MacTicks(stat.cpuTicks);
#if __LP64__
        if (info->processAppRef != nullptr &&
            FSPathMakeRef(reinterpret_cast<const UInt8 *>(facts.location.c_str()), info->processAppRef, nullptr) != noErr)
            std::memset(info->processAppRef, 0, sizeof *info->processAppRef);
#else
        if (info->processAppSpec != nullptr) {
            FSRef location;
            std::memset(info->processAppSpec, 0, sizeof *info->processAppSpec);
            if (FSPathMakeRef(reinterpret_cast<const UInt8 *>(facts.location.c_str()), &location, nullptr) == noErr)
                FSGetCatalogInfo(&location, kFSCatInfoNone, nullptr, nullptr, info->processAppSpec, nullptr);
        }
#endif
        return noErr;
    } catch (...) {
        return procNotFound;
    }
}

extern "C" CFDictionaryRef ProcessInformationCopyDictionary(const ProcessSerialNumber *PSN, UInt32)
{
    if (PSN == nullptr)
        return nullptr;
    CFMutableDictionaryRef dictionary = nullptr;
    try {
        pid_t pid = 0;
        ProcessStat stat;
        if (!RunningPID(PSN, &pid) || !ReadStat(pid, stat))
            return nullptr;
        const BundleFacts facts = FactsOf(pid);
        dictionary = CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                               &kCFTypeDictionaryValueCallBacks);
        if (dictionary == nullptr)
            return nullptr;
        SetNumber(dictionary, CFSTR("PSN"), static_cast<long long>(pid));
        SetNumber(dictionary, CFSTR("pid"), static_cast<long long>(pid));
        if (ProcessExists(stat.parent))
            SetNumber(dictionary, CFSTR("ParentPSN"), static_cast<long long>(stat.parent));
        CFStringRef name = nullptr;
        if (CopyProcessName(PSN, &name) == noErr) {
            CFDictionarySetValue(dictionary, CFSTR("CFBundleName"), name);
            CFRelease(name);
        }
        if (!facts.executable.empty()) {
            SetString(dictionary, CFSTR("CFBundleExecutable"), facts.executable);
            SetString(dictionary, CFSTR("BundlePath"), facts.location);
        }
        if (!facts.identifier.empty())
            SetString(dictionary, CFSTR("CFBundleIdentifier"), facts.identifier);
        SetString(dictionary, CFSTR("FileType"), CodeText(kApplicationType));
        SetString(dictionary, CFSTR("FileCreator"), CodeText(facts.signature));
        CFDictionarySetValue(dictionary, CFSTR("LSBackgroundOnly"), facts.isBundle ? kCFBooleanFalse : kCFBooleanTrue);
        CFDictionarySetValue(dictionary, CFSTR("IsHiddenAttr"), kCFBooleanFalse);
        return dictionary;
    } catch (...) {
        if (dictionary != nullptr)
            CFRelease(dictionary);
        return nullptr;
    }
}
