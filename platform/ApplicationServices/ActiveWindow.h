/* The X display's idea of the front window, for the Process Manager.
 *
 * The X library is opened with dlopen on first use, so nothing links it; every
 * call opens and closes its own display connection, which keeps the functions
 * safe on any thread at the price of a connection per question. */
#ifndef APPLICATIONSERVICES_ACTIVEWINDOW_H
#define APPLICATIONSERVICES_ACTIVEWINDOW_H

#include <sys/types.h>

namespace koru {

enum class WindowAnswer { NoDisplay, NotFound, Found };

/* The pid owning the active window; NoDisplay without a reachable display,
 * NotFound when no window is active or it names no owner. */
WindowAnswer ActiveWindowOwner(pid_t *owner);

/* Sends the activation request for a top-level window owned by pid. */
WindowAnswer ActivateWindowOf(pid_t pid);

} // namespace koru

#endif
