/* The system's proxy settings as the Mac's dynamic store hands them out.
 *
 * On Linux the dictionary is read afresh on each call: from GNOME's
 * org.gnome.system.proxy settings (through the gsettings command) when
 * XDG_CURRENT_DESKTOP names GNOME, from KDE's kioslaverc (in
 * $XDG_CONFIG_HOME, else ~/.config) when it names KDE, else from the
 * environment: http_proxy, https_proxy or HTTPS_PROXY, all_proxy as the
 * fallback of both schemes, and the comma-separated entries of no_proxy as
 * the ExceptionsList.  A scheme whose proxy is not set has no keys at all.
 * Safe on any thread. */
#ifndef SYSTEMCONFIGURATION_SCDYNAMICSTORE_H
#define SYSTEMCONFIGURATION_SCDYNAMICSTORE_H

#include <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef const struct __SCDynamicStore *SCDynamicStoreRef;

/* The proxy dictionary (keys of SCSchemaDefinitions.h); the store argument
 * is ignored (NULL is the usual value).  The caller releases the result;
 * NULL only when no dictionary could be made. */
CFDictionaryRef SCDynamicStoreCopyProxies(SCDynamicStoreRef store);

#ifdef __cplusplus
}
#endif

#endif
