/* System information for C callers: the system's numeric version and who the
 * user is.  The class layer's textual queries (system name and version,
 * processor, language, country) are members of Utils (Utils.h).
 *
 * GestaltSystemVersion keeps its answer for the life of the process; the
 * cache is not locked, so the first call belongs to one thread. */
#ifndef KORU_SYSTEMINFO_H
#define KORU_SYSTEMINFO_H

#include <MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The system version as Gestalt's 'sysv' gives it, binary-coded decimal
 * (0x1049 for 10.4.9); asked once and kept.  0 while Gestalt fails, and then
 * the next call asks again. */
long GestaltSystemVersion(void);

/* True when the effective user is the superuser. */
Boolean UserIsRoot(void);

/* True when the login name (getlogin) is listed among the members of the
 * named group.  A user whose primary group it is but who is not listed does
 * not count.  False for a NULL name, an unknown group, or when the process
 * has no login name (as in many containers and batch jobs). */
Boolean UserIsBelongToGroup(const char *groupName);

#ifdef __cplusplus
}
#endif

#endif
