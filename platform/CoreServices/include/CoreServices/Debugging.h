/* Debugging: messages meant for the developer at the console.
 *
 * There is no low-level debugger to break into, so DebugStr shows its message
 * on the standard error stream and lets the program go on.  Safe on any
 * thread: each message is written with one call. */
#ifndef CORESERVICES_DEBUGGING_H
#define CORESERVICES_DEBUGGING_H

#include <MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Writes the Pascal string (length byte, then text) and a newline to standard
 * error.  A NULL message writes nothing. */
void DebugStr(ConstStr255Param debuggerMsg);

#ifdef __cplusplus
}
#endif

#endif
