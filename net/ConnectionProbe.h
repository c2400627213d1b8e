// The web site whose reachability IsConnectionUp reports, set when the
// toolkit is built (KORU_CONNECTION_PROBE_URL).  Kept in a unit of its own so
// that a test program can supply a loopback probe in its place.
#ifndef KORU_NET_CONNECTIONPROBE_H
#define KORU_NET_CONNECTIONPROBE_H

namespace koru {

const wchar_t *ConnectionProbeURL();

} // namespace koru

#endif
