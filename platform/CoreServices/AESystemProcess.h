// Events for the system process, passed to the login manager.
#ifndef KORU_PLATFORM_AESYSTEMPROCESS_H
#define KORU_PLATFORM_AESYSTEMPROCESS_H

#include <CoreServices/AEDataModel.h>

namespace koru::ae {

// Restart, shut down, sleep and log out ('aevt' 'rest', 'shut', 'slep',
// 'logo', 'rlgo', and the dialog forms 'rrst', 'rsdn') become calls on
// systemd-logind over the system D-Bus.  errAEEventNotHandled for other
// events, connectionInvalid when the bus cannot be reached, errAEEventFailed
// when waiting and the login manager refuses.
OSErr SendToLoginManager(AEEventClass eventClass, AEEventID eventID, bool waitReply);

} // namespace koru::ae

#endif
