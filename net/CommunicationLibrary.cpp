/* CommunicationLibrary: the class, its constants, connectivity and the
 * system proxy rules. */
#include <KORU/CommunicationLibrary.h>
#include <KORU/Utils.h>

#include "../cf/CFReference.h"
#include "ConnectionProbe.h"

#include <SystemConfiguration/SystemConfiguration.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <arpa/inet.h>
#include <netdb.h>
#include <sys/socket.h>

using koru::CFReference;

const std::string ICommunicationLibrary::USER_AGENT = "Tarnix";

const int32_t CommunicationLibrary::MIN_FILENAME_LENGTH;
const int32_t CommunicationLibrary::MIN_URL_LENGTH;
const int32_t CommunicationLibrary::DEFAULT_TIMEOUT;
const int32_t CommunicationLibrary::PACKET_SIZE;

namespace {

/* The assertion message of the Mac's C library, then abort. */
[[noreturn]] void FailAssertion(unsigned line, const char *expression)
{
    std::fprintf(stderr, "%s:%u: failed assertion `%s'\n", "CommunicationLibraryImpl", line, expression);
    std::abort();
}

/* The line numbers the assertion messages name, one per check. */
enum AssertionLine : unsigned {
    kHTTPHostLine = 181,
    kHTTPPortLine = 182,
    kHTTPSHostLine = 233,
    kHTTPSPortLine = 234,
};

std::string StringFromCF(CFStringRef string)
{
    if (string == nullptr)
        return std::string();
    CFIndex length = CFStringGetLength(string);
    CFIndex capacity = CFStringGetMaximumSizeForEncoding(length, kCFStringEncodingUTF8) + 1;
    std::string buffer(static_cast<size_t>(capacity), '\0');
    if (!CFStringGetCString(string, &buffer[0], capacity, kCFStringEncodingUTF8))
        return std::string();
    buffer.resize(std::strlen(buffer.c_str()));
    return buffer;
}

CFURLRef CreateURL(const std::string &text)
{
    return CFURLCreateWithBytes(nullptr, reinterpret_cast<const UInt8 *>(text.data()),
                                static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, nullptr);
}

/* A CFNumber readable as a 32-bit integer that is not 0. */
bool IsEnabled(CFTypeRef value)
{
    int32_t enabled = 0;
    return value != nullptr && CFGetTypeID(value) == CFNumberGetTypeID() &&
           CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberIntType, &enabled) && enabled != 0;
}

bool GetProxySetting(CFStringRef enableKey, CFStringRef hostKey, CFStringRef portKey, char *host,
                     unsigned long hostSize, unsigned short *port)
{
    CFReference<CFDictionaryRef> proxies(SCDynamicStoreCopyProxies(nullptr));
    bool found = false;
    if (proxies && IsEnabled(CFDictionaryGetValue(proxies.get(), enableKey))) {
        CFTypeRef name = CFDictionaryGetValue(proxies.get(), hostKey);
        CFTypeRef number = CFDictionaryGetValue(proxies.get(), portKey);
        int32_t value = 0;
        found = name != nullptr && CFGetTypeID(name) == CFStringGetTypeID() &&
                CFStringGetCString(static_cast<CFStringRef>(name), host, static_cast<CFIndex>(hostSize),
                                   kCFStringEncodingASCII) &&
                number != nullptr && CFGetTypeID(number) == CFNumberGetTypeID() &&
                CFNumberGetValue(static_cast<CFNumberRef>(number), kCFNumberIntType, &value);
        if (found)
            *port = static_cast<unsigned short>(value & 0xFFFF);
    }
    if (!found) {
        if (hostSize > 0)
            host[0] = '\0';
        *port = 0;
    }
    return found;
}

/* What the proxy rules need of a host: one address and one name, as Cocoa's
 * host object gives them. */
struct HostIdentity {
    std::string address;
    std::string name;
};

std::string AddressText(const sockaddr *address)
{
    char text[INET6_ADDRSTRLEN] = "";
    if (address->sa_family == AF_INET)
        inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in *>(address)->sin_addr, text, sizeof text);
    else if (address->sa_family == AF_INET6)
        inet_ntop(AF_INET6, &reinterpret_cast<const sockaddr_in6 *>(address)->sin6_addr, text, sizeof text);
    return text;
}

/* The host as an address: the address itself, and the name it maps back
 * to (the address again when it has none). */
bool HostWithAddress(const std::string &text, HostIdentity &host)
{
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST;
    addrinfo *list = nullptr;
    if (text.empty() || getaddrinfo(text.c_str(), nullptr, &hints, &list) != 0)
        return false;
    host.address = AddressText(list->ai_addr);
    char name[NI_MAXHOST];
    if (getnameinfo(list->ai_addr, list->ai_addrlen, name, sizeof name, nullptr, 0, NI_NAMEREQD) == 0)
        host.name = name;
    else
        host.name = host.address;
    freeaddrinfo(list);
    return true;
}

/* The host as a name: its first address, IPv4 preferred as the exception
 * lists are mostly written in IPv4 prefixes, and the name as given. */
bool HostWithName(const std::string &text, HostIdentity &host)
{
    if (text.empty())
        return false;
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo *list = nullptr;
    hints.ai_family = AF_INET;
    if (getaddrinfo(text.c_str(), nullptr, &hints, &list) != 0) {
        hints.ai_family = AF_UNSPEC;
        if (getaddrinfo(text.c_str(), nullptr, &hints, &list) != 0)
            return false;
    }
    host.address = AddressText(list->ai_addr);
    host.name = text;
    freeaddrinfo(list);
    return true;
}

bool StartsWith(const std::string &text, const std::string &prefix)
{
    return text.compare(0, prefix.size(), prefix) == 0;
}

bool EndsWith(const std::string &text, const std::string &suffix)
{
    return text.size() >= suffix.size() && text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

std::vector<std::string> Entries(CFArrayRef list)
{
    std::vector<std::string> entries;
    for (CFIndex i = 0, count = CFArrayGetCount(list); i < count; ++i) {
        CFTypeRef entry = CFArrayGetValueAtIndex(list, i);
        if (entry != nullptr && CFGetTypeID(entry) == CFStringGetTypeID())
            entries.push_back(StringFromCF(static_cast<CFStringRef>(entry)));
    }
    return entries;
}

/* True when an exception entry sends the host straight to the server:
 * first by address prefix (one trailing "*" dropped, so 192.168.* works),
 * then by name, where example.org also covers www.example.org but not
 * myexample.org.  A leading "*" is never removed, so *.local matches no
 * name that lacks the star. */
bool IsException(const std::vector<std::string> &entries, const HostIdentity &host)
{
    for (std::string prefix : entries) {
        if (!prefix.empty() && prefix.back() == '*')
            prefix.pop_back();
        if (!prefix.empty() && StartsWith(host.address, prefix))
            return true;
    }
    for (const std::string &entry : entries) {
        if (!EndsWith(host.name, entry))
            continue;
        if (host.name.size() == entry.size())
            return true;
        std::string dotted = StartsWith(entry, ".") ? entry : "." + entry;
        if (EndsWith(host.name, dotted))
            return true;
    }
    return false;
}

} // namespace

ICommunicationLibrary::~ICommunicationLibrary() = default;

CommunicationLibrary::CommunicationLibrary() = default;

CommunicationLibrary::~CommunicationLibrary() = default;

bool CommunicationLibrary::IsConnectionUp()
{
    return IsOSXConnectionUp(koru::ConnectionProbeURL());
}

bool CommunicationLibrary::IsOSXConnectionUp(const WString &url)
{
    CFReference<CFURLRef> address(CreateURL(Utils::wstring2utf8(url)));
    CFReference<CFStringRef> hostName(address ? CFURLCopyHostName(address.get()) : nullptr);
    std::string host = StringFromCF(hostName.get());
    SCNetworkConnectionFlags flags = 0;
    return SCNetworkCheckReachabilityByName(hostName ? host.c_str() : nullptr, &flags) &&
           (flags & kSCNetworkFlagsConnectionRequired) == 0;
}

bool CommunicationLibrary::GetHTTPProxySetting(char *host, unsigned long hostSize, unsigned short *port)
{
    if (host == nullptr)
        FailAssertion(kHTTPHostLine, "host != NULL");
    if (port == nullptr)
        FailAssertion(kHTTPPortLine, "port != NULL");
    return GetProxySetting(kSCPropNetProxiesHTTPEnable, kSCPropNetProxiesHTTPProxy, kSCPropNetProxiesHTTPPort,
                           host, hostSize, port);
}

bool CommunicationLibrary::GetHTTPSProxySetting(char *host, unsigned long hostSize, unsigned short *port)
{
    if (host == nullptr)
        FailAssertion(kHTTPSHostLine, "host != NULL");
    if (port == nullptr)
        FailAssertion(kHTTPSPortLine, "port != NULL");
    return GetProxySetting(kSCPropNetProxiesHTTPSEnable, kSCPropNetProxiesHTTPSProxy,
                           kSCPropNetProxiesHTTPSPort, host, hostSize, port);
}

bool CommunicationLibrary::IsProxyRequiredFor(const char *url)
{
    if (url == nullptr)
        return false;
    CFReference<CFURLRef> address(CreateURL(url));
    CFReference<CFDictionaryRef> proxies(SCDynamicStoreCopyProxies(nullptr));
    if (!proxies)
        return false;

    CFReference<CFStringRef> schemeText(address ? CFURLCopyScheme(address.get()) : nullptr);
    std::string scheme = StringFromCF(schemeText.get());
    CFStringRef enableKey;
    if (scheme == "http")
        enableKey = kSCPropNetProxiesHTTPEnable;
    else if (scheme == "https")
        enableKey = kSCPropNetProxiesHTTPSEnable;
    else {
        Utils::LogMessage(WString(L"Commlib, eronate url sheme, not HTTP or HTTPS"));
        return false;
    }
    if (!IsEnabled(CFDictionaryGetValue(proxies.get(), enableKey)))
        return false;

    CFTypeRef exceptions = CFDictionaryGetValue(proxies.get(), kSCPropNetProxiesExceptionsList);
    if (exceptions == nullptr)
        return true;

    CFReference<CFStringRef> hostText(CFURLCopyHostName(address.get()));
    std::string hostName = StringFromCF(hostText.get());
    HostIdentity host;
    if (!HostWithAddress(hostName, host) && !HostWithName(hostName, host))
        return false;
    if (CFGetTypeID(exceptions) != CFArrayGetTypeID())
        return false;
    return !IsException(Entries(static_cast<CFArrayRef>(exceptions)), host);
}
