/* The CF log: one line per message on standard error, or on systems older
 * than 10.0 the whole log so far rewritten into CFLog.txt on the desktop. */
#include <KORU/Debug.h>
#include <KORU/LogSupport.h>

#include <CoreServices/CoreServices.h>

namespace {

constexpr SInt32 kFirstSystemWithConsole = 0x1000;

/* Everything logged to the file since the process started; made at the first
 * file-bound line and kept (never freed) because every write replaces the
 * whole file with it. */
CFMutableStringRef gLogText = nullptr;

enum class FileLogStep : char { Accumulator = '0', FileURL = '1', Bytes = '2', Write = '3' };

void ReportFileLogFailure(FileLogStep step)
{
    unsigned char message[] = "\x2F"
                              "0 CFLogString: Sorry, I couldn't write to file.";
    message[1] = static_cast<unsigned char>(step);
    DebugStr(message);
}

bool ConsoleAvailable()
{
    SInt32 version = 0;
    return Gestalt(gestaltSystemVersion, &version) == noErr && version >= kFirstSystemWithConsole;
}

void AppendToDesktopLog(CFStringRef line)
{
    if (gLogText == nullptr)
        gLogText = CFStringCreateMutable(kCFAllocatorDefault, 0);
    if (gLogText == nullptr) {
        ReportFileLogFailure(FileLogStep::Accumulator);
        return;
    }
    CFStringAppend(gLogText, line);
    CFStringAppend(gLogText, CFSTR("\n"));

    CFURLRef file = CFURLCreateWithFindFolder(kUserDomain, kDesktopFolderType, kCreateFolder,
                                              CFSTR("CFLog.txt"), false);
    if (file == nullptr) {
        ReportFileLogFailure(FileLogStep::FileURL);
        return;
    }
    CFDataRef bytes = CFStringCreateConvertableExternalRepresentation(gLogText);
    if (bytes == nullptr) {
        ReportFileLogFailure(FileLogStep::Bytes);
        CFRelease(file);
        return;
    }
    SInt32 errorCode = 0;
    if (!CFURLWriteDataAndPropertiesToResource(file, bytes, nullptr, &errorCode) || errorCode != 0)
        ReportFileLogFailure(FileLogStep::Write);
    CFRelease(bytes);
    CFRelease(file);
}

} // namespace

extern "C" void CFLogStringCore(const char *file, unsigned long line, CFStringRef message)
{
    if (file == nullptr)
        file = "<NULL>";
    if (message == nullptr)
        message = CFSTR("<NULL>");
    CFStringRef process = CFStringCopyCurrentProcessName();
    CFStringRef text = CFStringCreateWithFormat(kCFAllocatorDefault, nullptr,
                                                CFSTR("%@[%s Line:%lu] %@"), process, file, line,
                                                message);
    if (process != nullptr)
        CFRelease(process);
    if (text == nullptr)
        return;
    if (ConsoleAvailable())
        CFShow(text);
    else
        AppendToDesktopLog(text);
    CFRelease(text);
}

extern "C" void CFLogvCore(const char *file, unsigned long line, CFStringRef format, va_list args)
{
    CFStringRef message = nullptr;
    if (format != nullptr)
        message = CFStringCreateWithFormatAndArguments(kCFAllocatorDefault, nullptr, format, args);
    CFLogStringCore(file, line, message);
    if (message != nullptr)
        CFRelease(message);
}

extern "C" void CFLogCore(const char *file, unsigned long line, CFStringRef format, ...)
{
    va_list args;
    va_start(args, format);
    CFLogvCore(file, line, format, args);
    va_end(args);
}
