/* The keys of the proxy dictionary, under their Mac names and with the Mac's
 * texts.  Enable values are CFNumbers (0 or 1), ports CFNumbers, hosts
 * CFStrings, the exception list a CFArray of CFStrings. */
#ifndef SYSTEMCONFIGURATION_SCSCHEMADEFINITIONS_H
#define SYSTEMCONFIGURATION_SCSCHEMADEFINITIONS_H

#include <CoreFoundation/CoreFoundation.h>

#define kSCPropNetProxiesHTTPEnable CFSTR("HTTPEnable")
#define kSCPropNetProxiesHTTPProxy CFSTR("HTTPProxy")
#define kSCPropNetProxiesHTTPPort CFSTR("HTTPPort")
#define kSCPropNetProxiesHTTPSEnable CFSTR("HTTPSEnable")
#define kSCPropNetProxiesHTTPSProxy CFSTR("HTTPSProxy")
#define kSCPropNetProxiesHTTPSPort CFSTR("HTTPSPort")
#define kSCPropNetProxiesExceptionsList CFSTR("ExceptionsList")
#define kSCPropNetProxiesProxyAutoConfigEnable CFSTR("ProxyAutoConfigEnable")
#define kSCPropNetProxiesProxyAutoConfigURLString CFSTR("ProxyAutoConfigURLString")

#endif
