/* The Process Manager over /proc: serial numbers are {0, pid}. */
#include <ApplicationServices/Processes.h>
#include <CoreServices/MacErrors.h>

#include "ActiveWindow.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

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
