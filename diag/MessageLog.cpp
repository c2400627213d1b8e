/* The Utils message log: time-stamped lines appended to
 * <temporary folder>/tarnix-logs/log.txt while that folder exists. */
#include <KORU/Utils.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <cwchar>
#include <string>

namespace {

/* The folder is never made here: creating it is how a user switches the log on. */
FILE *OpenLog()
{
    return std::fopen(Utils::GetLogFilename().c_str(), "at");
}

/* asctime's 24 characters with its newline turned into a blank, then "%s ":
 * the stamp is followed by two blanks. */
void WriteTimeStamp(FILE *log)
{
    std::time_t now = std::time(nullptr);
    struct tm utc;
    char stamp[32];
    if (gmtime_r(&now, &utc) == nullptr || asctime_r(&utc, stamp) == nullptr)
        stamp[0] = '\0';
    if (char *newline = std::strchr(stamp, '\n'))
        *newline = ' ';
    std::fprintf(log, "%s ", stamp);
}

/* wcstombs into a 1024-byte buffer; a longer message is cut to the buffer.
 * When a character cannot be converted in the current locale (a host that
 * never calls setlocale runs in "C"), the text before it is what wcstombs
 * leaves in the buffer, and that is kept: hence one character at a time. */
std::string NarrowMessage(const WString &msg)
{
    const size_t limit = 1024;
    std::string text;
    std::mbstate_t state{};
    char bytes[MB_LEN_MAX];
    for (size_t k = 0; k < msg.size() && msg[k] != L'\0'; ++k) {
        size_t length = std::wcrtomb(bytes, msg[k], &state);
        if (length == static_cast<size_t>(-1) || text.size() + length > limit)
            break;
        text.append(bytes, length);
    }
    return text;
}

} // namespace

std::string Utils::GetLogFilename()
{
    return GetTempDirName() + "/" + "tarnix-logs" + "/" + "log.txt";
}

bool Utils::IsLoggingOn()
{
    return DirExists(GetDirFromPath(GetLogFilename()));
}

void Utils::LogMessage(const std::string &msg)
{
    FILE *log = OpenLog();
    if (log == nullptr)
        return;
    WriteTimeStamp(log);
    std::fprintf(log, "Message: %s\n", msg.c_str());
    std::fclose(log);
}

void Utils::LogMessage(const std::string &msg, long code)
{
    FILE *log = OpenLog();
    if (log == nullptr)
        return;
    WriteTimeStamp(log);
    std::fprintf(log, "Message: %s ErrorCode: %d\n", msg.c_str(), static_cast<int>(code));
    std::fclose(log);
}

void Utils::LogMessage(const WString &msg)
{
    LogMessage(NarrowMessage(msg));
}

void Utils::LogMessage(const WString &msg, long code)
{
    LogMessage(NarrowMessage(msg), code);
}
