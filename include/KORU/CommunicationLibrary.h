/* CommunicationLibrary: the toolkit's network access.
 *
 * Whether the network is usable, the system's HTTP and HTTPS proxy settings,
 * whether a URL must go through the proxy (the proxy's exception list), two
 * encoders for URLs and form bodies, and an HTTP(S) POST of a request file
 * whose answer lands in a reply file.  Nothing is cached: the system's
 * settings are read afresh on every call, and every call may run on any
 * thread.  The object holds a recursive lock of its own, made and destroyed
 * with it; no operation here takes it.  Failures are told only through the
 * results and the Utils message log. */
#ifndef KORU_COMMUNICATIONLIBRARY_H
#define KORU_COMMUNICATIONLIBRARY_H

#include <KORU/Lockable.h>
#include <KORU/WString.h>

#include <cstdint>
#include <string>

class ICommunicationLibrary {
public:
    /* "Tarnix": the user agent that transfers announce. */
    static const std::string USER_AGENT;

    /* True when the build's probe web site looks reachable. */
    virtual bool IsConnectionUp() = 0;
    virtual ~ICommunicationLibrary();
};

class CommunicationLibrary : public ICommunicationLibrary {
public:
    static const int32_t MIN_FILENAME_LENGTH = 2; /* shortest accepted file name */
    static const int32_t MIN_URL_LENGTH = 10;     /* shortest accepted URL */
    static const int32_t DEFAULT_TIMEOUT = 60;    /* connect time-out of a transfer, seconds */
    static const int32_t PACKET_SIZE = 4096;      /* transfer block size, bytes */

    CommunicationLibrary();
    CommunicationLibrary(const CommunicationLibrary &) = delete;
    CommunicationLibrary &operator=(const CommunicationLibrary &) = delete;

    /* IsOSXConnectionUp of the probe URL fixed when the toolkit was built. */
    bool IsConnectionUp() override;
    ~CommunicationLibrary() override;

    /* True when the URL's host is reachable without first setting up a
     * connection (a dial-up or VPN link).  A URL without a host, or one that
     * is not a URL, gives false. */
    static bool IsOSXConnectionUp(const WString &url);

    /* The enabled HTTP (HTTPS) proxy of the system: its host as ASCII into
     * host (hostSize bytes) and its port into *port.  False, with host[0]
     * and *port 0, when no proxy is enabled or the host does not fit.  A
     * NULL host or port ends the process with an assertion message. */
    static bool GetHTTPProxySetting(char *host, unsigned long hostSize, unsigned short *port);
    static bool GetHTTPSProxySetting(char *host, unsigned long hostSize, unsigned short *port);

    /* True when a request to url must use the system's proxy: the URL is
     * http or https, the proxy of its scheme is enabled, and neither the
     * host's address nor its name matches an entry of the exception list.
     * False for NULL, for other schemes (logged) and for a host that does
     * not resolve. */
    static bool IsProxyRequiredFor(const char *url);

    /* A copy with every byte outside letters, digits and - _ . + ! * ' ( ) , ; / ? : @ = &
     * written as %XX (upper-case hexadecimal); "%" itself becomes %25. */
    static std::string EncodeUrl(const std::string &text);
    /* As EncodeUrl, except that a space becomes "+" and a line feed "%0D%0A". */
    static std::string EncodeFormValue(const std::string &text);

    /* POSTs the bytes of requestFile to url (Content-Type: text/xml, the
     * Tarnix user agent, the system proxy where IsProxyRequiredFor says so),
     * writes the answer into replyFile and reads it back into reply, up to
     * its first NUL byte.  0 on success; 3 when the secure channel or the
     * server's certificate failed; 4 for any other failure (bad URL, no
     * connection, an HTTP error status, the 60-second connect or 120-second
     * total limit, an answer cut short, an answer that could not be
     * written), and reply is then left as it was.  The caller owns both
     * files; the reply file is made only when an answer arrives. */
    static int32_t CurlExternSecureDownload(std::string url, std::string requestFile,
                                            std::string replyFile, std::string &reply);

private:
    LockableImpl mLock;
};

#endif
