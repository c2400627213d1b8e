/* Everything of SystemConfiguration that is provided for Linux: the proxy
 * dictionary of the dynamic store and reachability by name. */
#ifndef SYSTEMCONFIGURATION_SYSTEMCONFIGURATION_H
#define SYSTEMCONFIGURATION_SYSTEMCONFIGURATION_H

#include <SystemConfiguration/SCSchemaDefinitions.h>
#include <SystemConfiguration/SCDynamicStore.h>
#include <SystemConfiguration/SCNetwork.h>

#endif
