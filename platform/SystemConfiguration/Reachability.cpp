/* Reachability by name: resolution, then a UDP connect() per address.  A UDP
 * connect sends no packet; it only asks the kernel for a route, which is the
 * question the Mac's reachability answers without touching the network. */
#include <SystemConfiguration/SCNetwork.h>

#include <cstring>

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

/* The port only matters to the routing decision in odd firewall set-ups;
 * the HTTP port is what the callers go on to use. */
constexpr in_port_t kProbePort = 80;

void SetPort(sockaddr_storage &address, in_port_t port)
{
    if (address.ss_family == AF_INET)
        reinterpret_cast<sockaddr_in &>(address).sin_port = htons(port);
    else if (address.ss_family == AF_INET6)
        reinterpret_cast<sockaddr_in6 &>(address).sin6_port = htons(port);
}

/* The local end the kernel picked equals the destination: the address is one
 * of this machine's own. */
bool IsOwnAddress(int socket, const sockaddr_storage &destination)
{
    sockaddr_storage local;
    socklen_t length = sizeof local;
    if (getsockname(socket, reinterpret_cast<sockaddr *>(&local), &length) != 0 ||
        local.ss_family != destination.ss_family)
        return false;
    if (local.ss_family == AF_INET)
        return reinterpret_cast<sockaddr_in &>(local).sin_addr.s_addr ==
               reinterpret_cast<const sockaddr_in &>(destination).sin_addr.s_addr;
    return std::memcmp(&reinterpret_cast<sockaddr_in6 &>(local).sin6_addr,
                       &reinterpret_cast<const sockaddr_in6 &>(destination).sin6_addr,
                       sizeof(in6_addr)) == 0;
}

/* Reachable, possibly local, flags of the first address with a route; 0 when none has one. */
SCNetworkConnectionFlags ProbeAddresses(const addrinfo *list)
{
    for (const addrinfo *entry = list; entry != nullptr; entry = entry->ai_next) {
        if (entry->ai_addrlen > sizeof(sockaddr_storage))
            continue;
        sockaddr_storage address{};
        std::memcpy(&address, entry->ai_addr, entry->ai_addrlen);
        SetPort(address, kProbePort);
        int probe = socket(entry->ai_family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        if (probe < 0)
            continue;
        SCNetworkConnectionFlags flags = 0;
        if (connect(probe, reinterpret_cast<sockaddr *>(&address), entry->ai_addrlen) == 0) {
            flags = kSCNetworkFlagsReachable;
            if (IsOwnAddress(probe, address))
                flags |= kSCNetworkFlagsIsLocalAddress;
        }
        close(probe);
        if (flags != 0)
            return flags;
    }
    return 0;
}

} // namespace

Boolean SCNetworkCheckReachabilityByName(const char *nodename, SCNetworkConnectionFlags *flags)
{
    if (flags != nullptr)
        *flags = 0;
    if (nodename == nullptr || nodename[0] == '\0' || flags == nullptr)
        return false;

    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo *list = nullptr;
    if (getaddrinfo(nodename, nullptr, &hints, &list) != 0) {
        *flags = kSCNetworkFlagsConnectionRequired;
        return true;
    }
    SCNetworkConnectionFlags found = ProbeAddresses(list);
    freeaddrinfo(list);
    *flags = found != 0 ? found : SCNetworkConnectionFlags{kSCNetworkFlagsConnectionRequired};
    return true;
}
