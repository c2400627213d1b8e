/* Utils: the toolkit's static helpers.
 *
 * Text and number conversions, version comparison, hexadecimal and GUID text
 * and trimming; the message log; path-string file operations and MD5
 * checksums; facts about the system and the user's language and country.
 * Narrow text is std::string (paths in UTF-8), wide text is WString.
 * Results are values the caller owns, except where a comment names an array
 * the caller frees with delete[].  The conversions keep no state and may run
 * on any thread; the file operations that test folders change the process's
 * current directory (see DirExists); the system version and name are cached
 * without a lock, so their first calls belong to one thread. */
#ifndef KORU_UTILS_H
#define KORU_UTILS_H

#include <KORU/WString.h>

#include <cstdint>
#include <list>
#include <string>
#include <vector>

#ifdef __OBJC__
@class NSString;
#else
class NSString; /* a CFStringRef under its Cocoa name: C++ only passes it on */
#endif

class Utils {
public:
    /* ---- Numbers and text ---- */

    /* Decimal text of v ("%ld", "%d"). */
    static std::string long2string(long v);
    static std::string int2string(int v);
    /* atol / atoi of s: leading blanks skipped, no digits gives 0. */
    static long string2long(const std::string &s);
    static int string2int(const std::string &s);
    /* The decimal text of v, widened by string2wstring. */
    static WString long2wstring(long v);
    static WString int2wstring(int v);
    /* wstring2string of s, then atol / atoi. */
    static long wstring2long(const WString &s);
    static int wstring2int(const WString &s);

    /* One element per byte, each byte widened as a signed char (no decoding). */
    static WString string2wstring(const std::string &s);
    /* One byte per element, each code point cut to its low 8 bits (no encoding). */
    static std::string wstring2string(const WString &s);
    /* UTF-8 of s in one to three bytes per code point; code points above
     * U+FFFF are dropped, negative ones are kept as their low 7 bits. */
    static std::string wstring2utf8(const WString &s);
    /* A new, terminated wchar_t array with one element per UTF-16 unit of s
     * (zero-extended, surrogates not combined); the caller frees it with
     * delete[].  NULL for a null s. */
    static wchar_t *wshort2wchar(unsigned short *s);
    /* The same as a WString; empty for a null s. */
    static WString wshort2wstring(unsigned short *s);

    /* n as "<n> Bytes" up to 1024, "<n/1024> KB" up to 1024 KB, else
     * "<n/1048576> MB"; truncated, never rounded. */
    static std::string bytesize2string(unsigned long n);
    /* Two lowercase hexadecimal digits per byte; empty for no or null bytes. */
    static std::string toHexString(unsigned char *bytes, unsigned long n);
    /* A new UUID in its 36-character uppercase form, without braces; empty
     * when no UUID could be made. */
    static std::string generateGUID();

    /* s without its leading / trailing / both runs of characters from chars. */
    static std::string trim_left(const std::string &s, const std::string &chars);
    static std::string trim_right(const std::string &s, const std::string &chars);
    static std::string trim(const std::string &s, const std::string &chars);

    /* -1, 0 or 1 ordering dotted versions component by component; when all
     * shared components are equal the one with more components is greater,
     * so 1.2 < 1.2.0. */
    static int compare_version(const WString &a, const WString &b);

    /* ---- The message log ---- */

    /* The log file: the temporary folder, then "/tarnix-logs/log.txt". */
    static std::string GetLogFilename();
    /* True when the log file's folder exists. */
    static bool IsLoggingOn();
    /* Appends one time-stamped line; does nothing when the file cannot be opened. */
    static void LogMessage(const std::string &msg);
    static void LogMessage(const std::string &msg, long code);
    static void LogMessage(const WString &msg);
    static void LogMessage(const WString &msg, long code);

    /* ---- Path-string file operations and checksums ---- */

    /* The text before the last "/" (empty without one) / after it (the whole
     * path without one, empty when the path ends in "/"). */
    static std::string GetDirFromPath(const std::string &path);
    static std::string GetFilenameFromPath(const std::string &path);
    /* The user's temporary / documents folder without a trailing "/",
     * created when missing; empty when it cannot be had. */
    static std::string GetTempDirName();
    static std::string GetUserDocumentsDirName();
    /* Always empty: kept for hosts that still call it. */
    static std::string GetHomeDirName();
    /* True when the file opens for reading (an unreadable file counts as missing). */
    static bool FileExists(const std::string &path);
    /* True when the process can change into the folder; it then stays there. */
    static bool DirExists(const std::string &path);
    /* mkdir with mode 0755; without force an existing folder counts as made. */
    static bool CreateDir(const std::string &path, bool force);
    /* Makes the folder and its missing parents from the top down; an existing
     * folder gives !failIfExists. */
    static bool CreateDirPath(const std::string &path, bool failIfExists);
    /* Removes an empty folder only, recursive or not (the listing is empty). */
    static bool DeleteDir(const std::string &path, bool recursive);
    /* Always an empty list: the folder is not read. */
    static std::list<std::string> ListDirectory(const std::string &path);
    /* unlink: true on success. */
    static bool DoDeleteFile(const std::string &path);
    /* Copies nothing and answers false. */
    static bool CopyFile(const std::string &from, const std::string &to, bool overwrite);
    /* The low 32 bits of the size / the status-change time in seconds; 0 when
     * the file cannot be examined. */
    static uint32_t GetFileLength(const std::string &path);
    static uint32_t GetFileCreationDate(const std::string &path);
    /* The raw 16-byte MD5 digest of the file / of the first 12 bytes of text. */
    static bool GetFileMD5Checksum(const std::string &path, char *digest);
    static bool getMD5Digest(const std::string &text, char *digest);
    /* One element per UTF-16 unit of s, zero-extended; empty for nil. */
    static WString nsstring2wstring(NSString *s);

    /* ---- System information ---- */

    /* Gestalt's 'sysv' answer, asked afresh every time (0 when it fails). */
    static long getOsBuildNumber();
    /* The product version of the system ("VERSION_ID" of os-release, e.g.
     * 12) / its name ("NAME", a space and the version, e.g. Debian GNU/Linux
     * 12).  Empty while the record or the entry is missing; the first answer
     * that is not empty is kept for the life of the process. */
    static WString getOsVersion();
    static WString getOsName();
    /* "68k" or "PowerPC" for those Gestalt 'sysa' answers, else "Intel". */
    static WString getProcessorType();
    /* The first element of the user default "AppleLanguages" as stored (en,
     * ja, ...); empty when there is none or it is not a list of strings. */
    static WString getLanguage();
    /* The country part of the user default "AppleLocale": what follows the
     * first "_" (de_DE gives DE, zh_Hans_CN gives Hans_CN); the whole value
     * without a "_" (fr gives fr); the part before a final "_" (en_ gives en).
     * Empty when there is no such default. */
    static WString getCountry();
};

/* The numeric components of a dotted version; empty pieces are skipped and
 * a piece that is not a number converts as atol does. */
std::vector<long> split_version(const WString &v);

/* getcwd into a private buffer: true on success; the argument is left as it was. */
bool GetCurrentDir(std::string &dir);
/* chdir: true on success. */
bool SetCurrentDir(const std::string &dir);

#endif
