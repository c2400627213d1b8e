/* Active-window queries over a dlopen'ed Xlib.
 *
 * Xlib's ABI has been fixed for decades, so the few types used here are
 * declared locally instead of requiring the X development headers. */
#include "ActiveWindow.h"

#include <dlfcn.h>
#include <memory>
#include <mutex>

namespace koru {
namespace {

typedef struct XDisplay Display;
typedef unsigned long XWindow;
typedef unsigned long XAtom;

struct XClientMessage {
    int type;
    unsigned long serial;
    int sendEvent;
    Display *display;
    XWindow window;
    XAtom messageType;
    int format;
    union {
        char b[20];
        short s[10];
        long l[5];
    } data;
};

union XEventRecord {
    int type;
    XClientMessage client;
    long pad[24];
};

constexpr XAtom kAnyPropertyType = 0;
constexpr int kClientMessage = 33;
constexpr long kSubstructureNotifyMask = 1L << 19;
constexpr long kSubstructureRedirectMask = 1L << 20;
constexpr int kSuccess = 0;
constexpr long kSourceIndicationApplication = 1;

typedef int (*XErrorHandler)(Display *, void *);

struct Xlib {
    bool loaded = false;
    Display *(*openDisplay)(const char *) = nullptr;
    int (*closeDisplay)(Display *) = nullptr;
    XAtom (*internAtom)(Display *, const char *, int) = nullptr;
    XWindow (*defaultRootWindow)(Display *) = nullptr;
    int (*getWindowProperty)(Display *, XWindow, XAtom, long, long, int, XAtom, XAtom *, int *,
                             unsigned long *, unsigned long *, unsigned char **) = nullptr;
    int (*free)(void *) = nullptr;
    int (*sendEvent)(Display *, XWindow, int, long, XEventRecord *) = nullptr;
    int (*flush)(Display *) = nullptr;
    int (*sync)(Display *, int) = nullptr;
    XErrorHandler (*setErrorHandler)(XErrorHandler) = nullptr;
};

template <typename Function> bool Bind(void *library, const char *name, Function &slot)
{
    slot = reinterpret_cast<Function>(dlsym(library, name));
    return slot != nullptr;
}

const Xlib &LoadXlib()
{
    static Xlib xlib;
    static std::once_flag once;
    std::call_once(once, [] {
        // The library stays loaded for the life of the process.
        void *library = dlopen("libX11.so.6", RTLD_LAZY | RTLD_LOCAL);
        if (library == nullptr)
            return;
        xlib.loaded = Bind(library, "XOpenDisplay", xlib.openDisplay) &&
                      Bind(library, "XCloseDisplay", xlib.closeDisplay) &&
                      Bind(library, "XInternAtom", xlib.internAtom) &&
                      Bind(library, "XDefaultRootWindow", xlib.defaultRootWindow) &&
                      Bind(library, "XGetWindowProperty", xlib.getWindowProperty) &&
                      Bind(library, "XFree", xlib.free) &&
                      Bind(library, "XSendEvent", xlib.sendEvent) &&
                      Bind(library, "XFlush", xlib.flush) &&
                      Bind(library, "XSync", xlib.sync) &&
                      Bind(library, "XSetErrorHandler", xlib.setErrorHandler);
    });
    return xlib;
}

int IgnoreXError(Display *, void *)
{
    return 0;
}

/* One display connection; X errors (a window that vanished meanwhile) are
 * ignored while it is open instead of ending the process, as Xlib's default
 * handler would. */
class DisplayConnection {
public:
    DisplayConnection() : mXlib(LoadXlib())
    {
        if (!mXlib.loaded)
            return;
        mDisplay = mXlib.openDisplay(nullptr);
        if (mDisplay != nullptr)
            mPreviousHandler = mXlib.setErrorHandler(IgnoreXError);
    }
    ~DisplayConnection()
    {
        if (mDisplay == nullptr)
            return;
        mXlib.sync(mDisplay, 0);
        mXlib.setErrorHandler(mPreviousHandler);
        mXlib.closeDisplay(mDisplay);
    }
    DisplayConnection(const DisplayConnection &) = delete;
    DisplayConnection &operator=(const DisplayConnection &) = delete;

    bool isOpen() const { return mDisplay != nullptr; }
    XWindow root() const { return mXlib.defaultRootWindow(mDisplay); }
    XAtom atom(const char *name) const { return mXlib.internAtom(mDisplay, name, 0); }

    /* The 32-bit items of a window property (longs in Xlib's client form). */
    bool readLongs(XWindow window, const char *property, unsigned long *values,
                   unsigned long capacity, unsigned long *count) const
    {
        XAtom actualType = 0;
        int actualFormat = 0;
        unsigned long items = 0, remaining = 0;
        unsigned char *data = nullptr;
        if (mXlib.getWindowProperty(mDisplay, window, atom(property), 0, static_cast<long>(capacity),
                                    0, kAnyPropertyType, &actualType, &actualFormat, &items,
                                    &remaining, &data) != kSuccess)
            return false;
        bool usable = data != nullptr && actualFormat == 32 && items > 0;
        if (usable) {
            const long *longs = reinterpret_cast<const long *>(data);
            for (unsigned long i = 0; i < items && i < capacity; ++i)
                values[i] = static_cast<unsigned long>(longs[i]);
            *count = items < capacity ? items : capacity;
        }
        if (data != nullptr)
            mXlib.free(data);
        return usable;
    }

    bool windowOwner(XWindow window, pid_t *owner) const
    {
        unsigned long pid = 0, count = 0;
        if (window == 0 || !readLongs(window, "_NET_WM_PID", &pid, 1, &count) || pid == 0)
            return false;
        *owner = static_cast<pid_t>(pid);
        return true;
    }

    void requestActivation(XWindow window) const
    {
        XEventRecord event{};
        event.client.type = kClientMessage;
        event.client.sendEvent = 1;
        event.client.display = mDisplay;
        event.client.window = window;
        event.client.messageType = atom("_NET_ACTIVE_WINDOW");
        event.client.format = 32;
        event.client.data.l[0] = kSourceIndicationApplication;
        mXlib.sendEvent(mDisplay, root(), 0, kSubstructureRedirectMask | kSubstructureNotifyMask,
                        &event);
        mXlib.flush(mDisplay);
    }

private:
    const Xlib &mXlib;
    Display *mDisplay = nullptr;
    XErrorHandler mPreviousHandler = nullptr;
};

} // namespace

WindowAnswer ActiveWindowOwner(pid_t *owner)
{
    DisplayConnection display;
    if (!display.isOpen())
        return WindowAnswer::NoDisplay;
    unsigned long window = 0, count = 0;
    if (!display.readLongs(display.root(), "_NET_ACTIVE_WINDOW", &window, 1, &count))
        return WindowAnswer::NotFound;
    return display.windowOwner(window, owner) ? WindowAnswer::Found : WindowAnswer::NotFound;
}

WindowAnswer ActivateWindowOf(pid_t pid)
{
    DisplayConnection display;
    if (!display.isOpen())
        return WindowAnswer::NoDisplay;
    constexpr unsigned long kMaxClients = 4096;
    std::unique_ptr<unsigned long[]> clients(new unsigned long[kMaxClients]);
    unsigned long count = 0;
    if (!display.readLongs(display.root(), "_NET_CLIENT_LIST", clients.get(), kMaxClients, &count))
        return WindowAnswer::NotFound;
    for (unsigned long i = 0; i < count; ++i) {
        pid_t owner = 0;
        if (display.windowOwner(clients[i], &owner) && owner == pid) {
            display.requestActivation(clients[i]);
            return WindowAnswer::Found;
        }
    }
    return WindowAnswer::NotFound;
}

} // namespace koru
