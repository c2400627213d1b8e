// The system process's Apple events as systemd-logind calls.  The bus is the
// system bus that libdbus finds, so DBUS_SYSTEM_BUS_ADDRESS can point it at
// another (a private bus in tests).  A private connection is opened per event:
// these events are rare, and a shared one would tie us to the host's.
#include <CoreServices/AppleEvents.h>
#include <CoreServices/MacErrors.h>

#include "AESystemProcess.h"

#include <dbus/dbus.h>

#include <cstring>

namespace {

constexpr const char *kLogin = "org.freedesktop.login1";
constexpr const char *kManagerPath = "/org/freedesktop/login1";
constexpr const char *kManager = "org.freedesktop.login1.Manager";

struct Call {
    const char *method;
    bool interactive;
    bool session; // takes the caller's session instead of a flag
};

bool CallFor(AEEventID eventID, Call *call)
{
    switch (eventID) {
    case kAERestart: *call = {"Reboot", false, false}; return true;
    case kAEShowRestartDialog: *call = {"Reboot", true, false}; return true;
    case kAEShutDown: *call = {"PowerOff", false, false}; return true;
    case kAEShowShutdownDialog: *call = {"PowerOff", true, false}; return true;
    case kAESleep: *call = {"Suspend", false, false}; return true;
    case kAELogOut:
    case kAEReallyLogOut: *call = {"TerminateSession", false, true}; return true;
    default: return false;
    }
}

} // namespace

OSErr koru::ae::SendToLoginManager(AEEventClass eventClass, AEEventID eventID, bool waitReply)
{
    Call call{};
    if (eventClass != kCoreEventClass || !CallFor(eventID, &call))
        return errAEEventNotHandled;
    DBusError error;
    dbus_error_init(&error);
    DBusConnection *bus = dbus_bus_get_private(DBUS_BUS_SYSTEM, &error);
    if (bus == nullptr) {
        dbus_error_free(&error);
        return connectionInvalid;
    }
    dbus_connection_set_exit_on_disconnect(bus, false);
    OSErr err = noErr;
    DBusMessage *message = dbus_message_new_method_call(kLogin, kManagerPath, kManager, call.method);
    if (message == nullptr) {
        err = memFullErr;
    } else {
        // logind reads an empty session id as the caller's own session.
        const char *session = "";
        dbus_bool_t interactive = call.interactive;
        const bool added = call.session
                               ? dbus_message_append_args(message, DBUS_TYPE_STRING, &session, DBUS_TYPE_INVALID)
                               : dbus_message_append_args(message, DBUS_TYPE_BOOLEAN, &interactive,
                                                          DBUS_TYPE_INVALID);
        if (!added) {
            err = memFullErr;
        } else if (waitReply) {
            DBusMessage *answer = dbus_connection_send_with_reply_and_block(bus, message, 25000, &error);
            if (answer == nullptr)
                err = errAEEventFailed;
            else
                dbus_message_unref(answer);
        } else {
            dbus_message_set_no_reply(message, true);
            if (!dbus_connection_send(bus, message, nullptr))
                err = memFullErr;
            dbus_connection_flush(bus);
        }
        dbus_message_unref(message);
    }
    dbus_error_free(&error);
    dbus_connection_close(bus);
    dbus_connection_unref(bus);
    return err;
}
