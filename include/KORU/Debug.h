/* The debug switch, the failure report and the CF log.
 *
 * Debug output is on when a file ".debug" exists in the home folder ($HOME)
 * when KORUDebug() is first asked; the answer is kept for the life of the
 * process, so creating or deleting the marker later changes nothing.  A host
 * may force debug output on by setting gKORUDebug to a nonzero value before
 * the first call.  While it is on, toolkit functions given arguments they
 * cannot use print "<function> (<line>) Sorry, I caught GOTO error." on the
 * standard error stream.
 *
 * The CF log writes one line "<process>[<file> Line:<line>] <message>" to the
 * standard error stream.  On a system older than 10.0 it appends to the file
 * "CFLog.txt" on the desktop instead, rewriting the whole file with every line
 * logged since the process started.
 *
 * Nothing here is guarded by a lock: the one-time marker check and the CF log
 * text expect one thread at a time. */
#ifndef KORU_DEBUG_H
#define KORU_DEBUG_H

#include <CoreFoundation/CoreFoundation.h>

#include <stdarg.h>
#include <stdbool.h>

CF_EXTERN_C_BEGIN

/* The cached debug state (only its value's being nonzero counts). */
extern Boolean gKORUDebug;

/* True while debug output is on; looks for the marker at the first call only. */
bool KORUDebug(void);

/* Prints "<function> (<line>) Sorry, I caught GOTO error.\n" on standard
 * error when KORUDebug() is true; does nothing otherwise or for a NULL
 * function name. */
void KORUReportFailure(const char *function, int line);

/* The failure report for the calling function at the current source line. */
#define KORU_REPORT_FAILURE() KORUReportFailure(__func__, __LINE__)

/* Logs format and its arguments as CFStringCreateWithFormat would build them;
 * a NULL format logs "<NULL>".  A NULL file is shown as "<NULL>". */
void CFLogCore(const char *file, unsigned long line, CFStringRef format, ...);
void CFLogvCore(const char *file, unsigned long line, CFStringRef format, va_list args);
/* Logs one message; a NULL message is shown as "<NULL>". */
void CFLogStringCore(const char *file, unsigned long line, CFStringRef message);

/* The CF log with the caller's source file and line. */
#define KORU_CFLOG(...) CFLogCore(__FILE__, __LINE__, __VA_ARGS__)

/* Prints "\nargc=NN\n", one "argv[NN]=<text>\n" per argument and a final
 * newline on standard error.  A NULL argv prints the count only. */
void PrintMainArguments(int argc, char **argv);

/* True when s ends with suffix (an empty suffix ends every string); false
 * with the failure report when either is NULL. */
bool StringIsEndWith(const char *s, const char *suffix, bool ignoreCase);

/* A pointer into s at the last (possibly overlapping) occurrence of needle,
 * or NULL when there is none; NULL with the failure report when either
 * argument is NULL. */
char *StringGetLastSubstring(const char *s, const char *needle, bool ignoreCase);

CF_EXTERN_C_END

#endif
