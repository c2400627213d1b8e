/* Reachability of a host by name.
 *
 * On Linux a host is reachable when its name resolves and a UDP socket can
 * be connected to one of its addresses, which sends nothing but needs a
 * route.  Safe on any thread. */
#ifndef SYSTEMCONFIGURATION_SCNETWORK_H
#define SYSTEMCONFIGURATION_SCNETWORK_H

#include <CoreFoundation/CoreFoundation.h>

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef uint32_t SCNetworkConnectionFlags;

enum {
    kSCNetworkFlagsTransientConnection = 1u << 0,
    kSCNetworkFlagsReachable = 1u << 1,
    kSCNetworkFlagsConnectionRequired = 1u << 2,
    kSCNetworkFlagsConnectionAutomatic = 1u << 3,
    kSCNetworkFlagsInterventionRequired = 1u << 4,
    kSCNetworkFlagsIsLocalAddress = 1u << 16,
    kSCNetworkFlagsIsDirect = 1u << 17
};

/* Fills *flags and answers true: kSCNetworkFlagsReachable (with
 * kSCNetworkFlagsIsLocalAddress for an address of this machine) when the
 * host can be reached, kSCNetworkFlagsConnectionRequired when its name does
 * not resolve or no route leads to it.  False, with *flags 0 when flags is
 * not NULL, for a NULL or empty name. */
Boolean SCNetworkCheckReachabilityByName(const char *nodename, SCNetworkConnectionFlags *flags);

#ifdef __cplusplus
}
#endif

#endif
