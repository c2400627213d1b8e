// Launch Services over xdg-open and direct, shell-free process starts.
#include <CoreServices/LaunchServices.h>
#include <CoreServices/MacErrors.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using Arguments = std::vector<std::string>;

// How long a launch waits for xdg-open's verdict.  xdg-open on a desktop
// without its own opener runs the application in the foreground; one still
// running after this long has clearly started.
constexpr long kVerdictWaitMilliseconds = 3000;
constexpr long kPollMilliseconds = 10;

// xdg-open's documented exit codes.
OSStatus StatusOfOpenerExit(int code)
{
    switch (code) {
    case 0: return noErr;
    case 1: return paramErr;
    case 2: return fnfErr;
    case 3: return kLSApplicationNotFoundErr;
    default: return kLSUnknownErr;
    }
}

class CFOwner {
public:
    explicit CFOwner(CFTypeRef object) : object_(object) {}
    ~CFOwner()
    {
        if (object_ != nullptr)
            CFRelease(object_);
    }
    CFOwner(const CFOwner &) = delete;
    CFOwner &operator=(const CFOwner &) = delete;
    CFTypeRef get() const { return object_; }

private:
    CFTypeRef object_;
};

bool StringFromCF(CFStringRef string, std::string *out)
{
    if (string == nullptr)
        return false;
    const CFIndex size =
        CFStringGetMaximumSizeForEncoding(CFStringGetLength(string), kCFStringEncodingUTF8) + 1;
    std::vector<char> buffer(static_cast<size_t>(size));
    if (!CFStringGetCString(string, buffer.data(), size, kCFStringEncodingUTF8))
        return false;
    out->assign(buffer.data());
    return true;
}

bool IsFileURL(CFURLRef url)
{
    CFOwner scheme(CFURLCopyScheme(url));
    return scheme.get() != nullptr &&
           CFStringCompare(static_cast<CFStringRef>(scheme.get()), CFSTR("file"),
                           kCFCompareCaseInsensitive) == kCFCompareEqualTo;
}

bool PathOfFileURL(CFURLRef url, std::string *out)
{
    char path[PATH_MAX];
    if (!CFURLGetFileSystemRepresentation(url, true, reinterpret_cast<UInt8 *>(path), sizeof path))
        return false;
    out->assign(path);
    return true;
}

// A file URL becomes its path, any other URL its text.
OSStatus ArgumentOfURL(CFTypeRef item, std::string *out)
{
    if (item == nullptr || CFGetTypeID(item) != CFURLGetTypeID())
        return paramErr;
    CFURLRef url = static_cast<CFURLRef>(item);
    CFOwner absolute(CFURLCopyAbsoluteURL(url));
    if (absolute.get() != nullptr)
        url = static_cast<CFURLRef>(absolute.get());
    if (IsFileURL(url))
        return PathOfFileURL(url, out) ? OSStatus(noErr) : OSStatus(paramErr);
    return StringFromCF(CFURLGetString(url), out) ? OSStatus(noErr) : OSStatus(paramErr);
}

OSStatus ArgumentsOfItems(CFArrayRef items, Arguments *out)
{
    if (items == nullptr)
        return noErr;
    if (CFGetTypeID(items) != CFArrayGetTypeID())
        return paramErr;
    for (CFIndex i = 0, count = CFArrayGetCount(items); i < count; ++i) {
        std::string argument;
        OSStatus status = ArgumentOfURL(CFArrayGetValueAtIndex(items, i), &argument);
        if (status != noErr)
            return status;
        out->push_back(argument);
    }
    return noErr;
}

std::string FindProgram(const std::string &name)
{
    if (name.find('/') != std::string::npos)
        return access(name.c_str(), X_OK) == 0 ? name : std::string();
    const char *path = getenv("PATH");
    std::string folders = path != nullptr ? path : "/usr/local/bin:/usr/bin:/bin";
    size_t start = 0;
    while (start <= folders.size()) {
        size_t end = folders.find(':', start);
        if (end == std::string::npos)
            end = folders.size();
        std::string folder = folders.substr(start, end - start);
        std::string candidate = (folder.empty() ? std::string(".") : folder) + "/" + name;
        struct stat info;
        if (stat(candidate.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
            access(candidate.c_str(), X_OK) == 0)
            return candidate;
        start = end + 1;
    }
    return std::string();
}

// Splits an Exec value into words: blanks separate them, double quotes group
// them, and a backslash inside quotes escapes the next character.
Arguments SplitExecLine(const std::string &line)
{
    Arguments words;
    std::string word;
    bool inWord = false, quoted = false;
    for (size_t i = 0; i < line.size(); ++i) {
        char c = line[i];
        if (quoted) {
            if (c == '\\' && i + 1 < line.size())
                word += line[++i];
            else if (c == '"')
                quoted = false;
            else
                word += c;
        } else if (c == '"') {
            quoted = inWord = true;
        } else if (c == ' ' || c == '\t') {
            if (inWord)
                words.push_back(word);
            word.clear();
            inWord = false;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (inWord)
        words.push_back(word);
    return words;
}

struct DesktopEntry {
    std::string type;
    std::string exec;
};

bool ReadDesktopEntry(const std::string &path, DesktopEntry *entry)
{
    std::ifstream file(path);
    if (!file)
        return false;
    std::string line;
    bool inMainGroup = false;
    while (std::getline(file, line)) {
        if (!line.empty() && line[0] == '[') {
            inMainGroup = line.rfind("[Desktop Entry]", 0) == 0;
            continue;
        }
        if (!inMainGroup)
            continue;
        if (line.rfind("Type=", 0) == 0)
            entry->type = line.substr(5);
        else if (line.rfind("Exec=", 0) == 0)
            entry->exec = line.substr(5);
    }
    return true;
}

// The commands a .desktop entry runs for the items: one command when it takes
// a list (%F, %U) or nothing, one per item when it takes a single one (%f, %u).
OSStatus DesktopEntryCommands(const std::string &path, const Arguments &items,
                              std::vector<Arguments> *commands)
{
    DesktopEntry entry;
    if (!ReadDesktopEntry(path, &entry) || entry.type != "Application")
        return kLSNotAnApplicationErr;
    Arguments words = SplitExecLine(entry.exec);
    if (words.empty())
        return kLSNoExecutableErr;

    bool single = false;
    for (const std::string &word : words)
        if (word == "%f" || word == "%u")
            single = true;
    const size_t runs = single && items.size() > 1 ? items.size() : 1;
    for (size_t run = 0; run < runs; ++run) {
        Arguments command;
        for (const std::string &word : words) {
            if (word == "%F" || word == "%U") {
                command.insert(command.end(), items.begin(), items.end());
            } else if (word == "%f" || word == "%u") {
                if (run < items.size())
                    command.push_back(items[run]);
            } else if (word.size() == 2 && word[0] == '%' && word[1] != '%') {
                // %i, %c, %k and the deprecated codes carry nothing here.
            } else {
                std::string expanded;
                for (size_t i = 0; i < word.size(); ++i) {
                    if (word[i] == '%' && i + 1 < word.size() && word[i + 1] == '%')
                        ++i;
                    expanded += word[i];
                }
                command.push_back(expanded);
            }
        }
        command[0] = FindProgram(command[0]);
        if (command[0].empty())
            return kLSNoExecutableErr;
        commands->push_back(command);
    }
    return noErr;
}

OSStatus BundleExecutable(CFURLRef appURL, std::string *out)
{
    CFBundleRef bundle = CFBundleCreate(kCFAllocatorDefault, appURL);
    if (bundle == nullptr)
        return kLSNotAnApplicationErr;
    CFOwner bundleOwner(bundle);
    CFOwner executable(CFBundleCopyExecutableURL(bundle));
    if (executable.get() == nullptr ||
        !PathOfFileURL(static_cast<CFURLRef>(executable.get()), out) || access(out->c_str(), X_OK) != 0)
        return kLSNoExecutableErr;
    return noErr;
}

OSStatus ApplicationCommands(CFURLRef appURL, const Arguments &items, std::vector<Arguments> *commands)
{
    if (CFGetTypeID(appURL) != CFURLGetTypeID())
        return paramErr;
    std::string path;
    if (!IsFileURL(appURL) || !PathOfFileURL(appURL, &path))
        return kLSNotAnApplicationErr;
    struct stat info;
    if (stat(path.c_str(), &info) != 0)
        return kLSApplicationNotFoundErr;

    const std::string suffix = ".desktop";
    if (S_ISREG(info.st_mode) && path.size() > suffix.size() &&
        path.compare(path.size() - suffix.size(), suffix.size(), suffix) == 0)
        return DesktopEntryCommands(path, items, commands);

    std::string executable;
    if (S_ISDIR(info.st_mode)) {
        OSStatus status = BundleExecutable(appURL, &executable);
        if (status != noErr)
            return status;
    } else if (S_ISREG(info.st_mode) && access(path.c_str(), X_OK) == 0) {
        executable = path;
    } else {
        return kLSNotAnApplicationErr;
    }
    Arguments command{executable};
    command.insert(command.end(), items.begin(), items.end());
    commands->push_back(command);
    return noErr;
}

void SleepMilliseconds(long milliseconds)
{
    struct timespec pause = {milliseconds / 1000, (milliseconds % 1000) * 1000000L};
    while (nanosleep(&pause, &pause) != 0 && errno == EINTR) {
    }
}

// Runs in the intermediate child: only async-signal-safe calls from here on.
[[noreturn]] void RunIntermediate(const char *program, char *const argv[], int reportFd, bool waitForExit)
{
    pid_t child = fork();
    if (child < 0)
        _exit(126);
    if (child == 0) {
        setsid();
        int devNull = open("/dev/null", O_RDONLY);
        if (devNull >= 0) {
            dup2(devNull, STDIN_FILENO);
            close(devNull);
        }
        execv(program, argv);
        int error = errno;
        ssize_t written = write(reportFd, &error, sizeof error);
        (void)written;
        _exit(127);
    }
    close(reportFd);
    if (!waitForExit)
        _exit(0);
    for (long waited = 0; waited < kVerdictWaitMilliseconds; waited += kPollMilliseconds) {
        int status = 0;
        pid_t done = waitpid(child, &status, WNOHANG);
        if (done == child)
            _exit(WIFEXITED(status) ? WEXITSTATUS(status) : 4);
        if (done < 0)
            _exit(4);
        SleepMilliseconds(kPollMilliseconds);
    }
    // Still running: it started.  Leaving now hands it to init, which reaps it.
    _exit(0);
}

// Starts the command detached from the caller (a grandchild process, so no
// zombie is left behind).  Answers the exit code of the command when asked to
// wait for it (0 when it is still running after the wait), 0 otherwise, or -1
// when it could not be started.
int RunDetached(const Arguments &command, bool waitForExit)
{
    std::vector<char *> argv;
    for (const std::string &word : command)
        argv.push_back(const_cast<char *>(word.c_str()));
    argv.push_back(nullptr);

    int report[2];
    if (pipe2(report, O_CLOEXEC) != 0)
        return -1;
    pid_t intermediate = fork();
    if (intermediate < 0) {
        close(report[0]);
        close(report[1]);
        return -1;
    }
    if (intermediate == 0) {
        close(report[0]);
        RunIntermediate(argv[0], argv.data(), report[1], waitForExit);
    }
    close(report[1]);
    int execError = 0;
    ssize_t got;
    do {
        got = read(report[0], &execError, sizeof execError);
    } while (got < 0 && errno == EINTR);
    close(report[0]);

    int status = 0;
    while (waitpid(intermediate, &status, 0) < 0 && errno == EINTR) {
    }
    if (got > 0 || !WIFEXITED(status) || WEXITSTATUS(status) == 126)
        return -1;
    return WEXITSTATUS(status);
}

OSStatus OpenWithDefaultApplications(const Arguments &items, bool waitForVerdict)
{
    const std::string opener = FindProgram("xdg-open");
    if (opener.empty())
        return kLSServerCommunicationErr;
    for (const std::string &item : items) {
        int code = RunDetached({opener, item}, waitForVerdict);
        if (code < 0)
            return kLSServerCommunicationErr;
        OSStatus status = StatusOfOpenerExit(code);
        if (status != noErr)
            return status;
    }
    return noErr;
}

OSStatus Launch(const LSLaunchURLSpec *launchSpec, CFURLRef *outLaunchedURL)
{
    if (launchSpec->appURL == nullptr && launchSpec->itemURLs == nullptr)
        return paramErr;
    Arguments items;
    OSStatus status = ArgumentsOfItems(launchSpec->itemURLs, &items);
    if (status != noErr)
        return status;
    const bool waitForVerdict = (launchSpec->launchFlags & kLSLaunchAsync) == 0;

    if (launchSpec->appURL == nullptr)
        return items.empty() ? paramErr : OpenWithDefaultApplications(items, waitForVerdict);

    std::vector<Arguments> commands;
    status = ApplicationCommands(launchSpec->appURL, items, &commands);
    if (status != noErr)
        return status;
    for (const Arguments &command : commands)
        if (RunDetached(command, false) < 0)
            return kLSNoExecutableErr;
    if (outLaunchedURL != nullptr)
        *outLaunchedURL = static_cast<CFURLRef>(CFRetain(launchSpec->appURL));
    return noErr;
}

} // namespace

extern "C" OSStatus LSOpenFromURLSpec(const LSLaunchURLSpec *inLaunchSpec, CFURLRef *outLaunchedURL)
{
    if (outLaunchedURL != nullptr)
        *outLaunchedURL = nullptr;
    if (inLaunchSpec == nullptr)
        return paramErr;
    try {
        return Launch(inLaunchSpec, outLaunchedURL);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSStatus LSOpenCFURLRef(CFURLRef inURL, CFURLRef *outLaunchedURL)
{
    if (outLaunchedURL != nullptr)
        *outLaunchedURL = nullptr;
    if (inURL == nullptr)
        return paramErr;
    CFArrayRef items = CFArrayCreate(kCFAllocatorDefault, reinterpret_cast<const void **>(&inURL), 1,
                                     &kCFTypeArrayCallBacks);
    if (items == nullptr)
        return memFullErr;
    LSLaunchURLSpec launchSpec = {nullptr, items, nullptr, kLSLaunchDefaults, nullptr};
    OSStatus status = LSOpenFromURLSpec(&launchSpec, outLaunchedURL);
    CFRelease(items);
    return status;
}

namespace {

CFURLRef CreateURLOfRef(const FSRef *ref)
{
    return ref ? CFURLCreateFromFSRef(kCFAllocatorDefault, ref) : nullptr;
}

} // namespace

extern "C" OSStatus LSOpenFromRefSpec(const LSLaunchFSRefSpec *inLaunchSpec, FSRef *outLaunchedRef)
{
    if (outLaunchedRef != nullptr)
        std::memset(outLaunchedRef, 0, sizeof *outLaunchedRef);
    if (inLaunchSpec == nullptr || (inLaunchSpec->numDocs > 0 && inLaunchSpec->itemRefs == nullptr))
        return paramErr;
    try {
        CFOwner app(inLaunchSpec->appRef ? CreateURLOfRef(inLaunchSpec->appRef) : nullptr);
        if (inLaunchSpec->appRef != nullptr && app.get() == nullptr)
            return fnfErr;
        CFOwner items(inLaunchSpec->numDocs > 0
                          ? CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks)
                          : nullptr);
        for (ItemCount k = 0; k < inLaunchSpec->numDocs; ++k) {
            CFOwner url(CreateURLOfRef(&inLaunchSpec->itemRefs[k]));
            if (url.get() == nullptr)
                return fnfErr;
            CFArrayAppendValue(static_cast<CFMutableArrayRef>(const_cast<void *>(items.get())), url.get());
        }
        LSLaunchURLSpec urlSpec = {static_cast<CFURLRef>(app.get()), static_cast<CFArrayRef>(items.get()),
                                   inLaunchSpec->passThruParams, inLaunchSpec->launchFlags,
                                   inLaunchSpec->asyncRefCon};
        const OSStatus status = LSOpenFromURLSpec(&urlSpec, nullptr);
        if (status == noErr && outLaunchedRef != nullptr && inLaunchSpec->appRef != nullptr)
            *outLaunchedRef = *inLaunchSpec->appRef;
        return status;
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSStatus LSOpenFSRef(const FSRef *inRef, FSRef *outLaunchedRef)
{
    if (outLaunchedRef != nullptr)
        std::memset(outLaunchedRef, 0, sizeof *outLaunchedRef);
    if (inRef == nullptr)
        return paramErr;
    LSLaunchFSRefSpec launchSpec = {nullptr, 1, inRef, nullptr, kLSLaunchDefaults, nullptr};
    return LSOpenFromRefSpec(&launchSpec, outLaunchedRef);
}
