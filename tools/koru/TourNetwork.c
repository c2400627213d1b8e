/* Tour section: network access.  Whether the loopback interface counts as
 * up, the proxies in effect, a form value encoded, and a POST through
 * CurlExternSecureDownload to an HTTP server on 127.0.0.1 that the section
 * starts on a thread of its own and stops again.
 *
 * The members are static, so C calls them as plain functions by their C++
 * symbol names.  Their std::string arguments are built and destroyed with
 * the standard library's own exported members; a std::string is 32 bytes
 * here, passed by value as a pointer to a copy the caller owns, and returned
 * by value through a pointer to the result.  The WString of
 * IsOSXConnectionUp has the layout of a std::wstring, which C builds the
 * same way. */
#define _GNU_SOURCE /* strcasestr */
#include "Tour.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>
#include <wchar.h>

typedef struct {
    _Alignas(16) unsigned char bytes[32];
} StdString;

typedef void (*StringFromTextFunction)(StdString *self, const char *text, const void *allocator);
typedef void (*WideFromTextFunction)(StdString *self, const wchar_t *text, const void *allocator);
typedef void (*StringDestroyFunction)(StdString *self);
typedef const char *(*StringTextFunction)(const StdString *self);
typedef bool (*ConnectionFunction)(const StdString *url);
typedef bool (*ProxySettingFunction)(char *host, unsigned long hostSize, unsigned short *port);
typedef bool (*ProxyRequiredFunction)(const char *url);
typedef void (*EncodeFunction)(StdString *result, const StdString *text);
typedef int32_t (*DownloadFunction)(StdString *url, StdString *request, StdString *reply, StdString *answer);

static struct {
    StringFromTextFunction stringFromText;
    StringDestroyFunction stringDestroy;
    StringTextFunction stringText;
    WideFromTextFunction wideFromText;
    StringDestroyFunction wideDestroy;
    ConnectionFunction connectionUp;
    ProxySettingFunction httpProxy;
    ProxySettingFunction httpsProxy;
    ProxyRequiredFunction proxyRequired;
    EncodeFunction encodeFormValue;
    DownloadFunction download;
} N;

static bool LookUpNetwork(CFBundleRef bundle)
{
    struct {
        void **slot;
        const char *name;
    } symbols[] = {
        {(void **)&N.stringFromText, "_ZNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEC1EPKcRKS3_"},
        {(void **)&N.stringDestroy, "_ZNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEED1Ev"},
        {(void **)&N.stringText, "_ZNKSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEE5c_strEv"},
        {(void **)&N.wideFromText, "_ZNSt7__cxx1112basic_stringIwSt11char_traitsIwESaIwEEC1EPKwRKS3_"},
        {(void **)&N.wideDestroy, "_ZNSt7__cxx1112basic_stringIwSt11char_traitsIwESaIwEED1Ev"},
        {(void **)&N.connectionUp,
         "_ZN20CommunicationLibrary17IsOSXConnectionUpERKNSt7__cxx1112basic_stringIwN3lum16lum_wchar_traitsESaIwEEE"},
        {(void **)&N.httpProxy, "_ZN20CommunicationLibrary19GetHTTPProxySettingEPcmPt"},
        {(void **)&N.httpsProxy, "_ZN20CommunicationLibrary20GetHTTPSProxySettingEPcmPt"},
        {(void **)&N.proxyRequired, "_ZN20CommunicationLibrary18IsProxyRequiredForEPKc"},
        {(void **)&N.encodeFormValue,
         "_ZN20CommunicationLibrary15EncodeFormValueERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"},
        {(void **)&N.download, "_ZN20CommunicationLibrary24CurlExternSecureDownloadENSt7__cxx1112basic_stringIcSt11"
                               "char_traitsIcESaIcEEES5_S5_RS5_"},
    };
    bool found = true;
    for (size_t i = 0; i < sizeof symbols / sizeof symbols[0]; i++) {
        *symbols[i].slot = KORUTourLookup(bundle, symbols[i].name);
        found = found && *symbols[i].slot != NULL;
    }
    return found;
}

static const char kAllocator = 0; /* std::allocator is empty: any address will do */

/* ---- The loopback server: one connection, one answer ---- */

typedef struct {
    int listener;
    char requestLine[128];
    char userAgent[64];
    size_t bodyLength;
} LoopbackServer;

static void CopyHeader(const char *head, const char *name, char *out, size_t size)
{
    const char *found = strcasestr(head, name);
    out[0] = '\0';
    if (found == NULL)
        return;
    found += strlen(name);
    size_t length = strcspn(found, "\r\n");
    if (length >= size)
        length = size - 1;
    memcpy(out, found, length);
    out[length] = '\0';
}

static void *ServeOnce(void *context)
{
    LoopbackServer *server = context;
    int connection = accept(server->listener, NULL, NULL);
    if (connection < 0)
        return NULL;
    struct timeval limit = {10, 0};
    setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    char data[16384];
    size_t used = 0;
    char *headEnd = NULL;
    ssize_t n;
    while (used < sizeof data - 1 && (n = read(connection, data + used, sizeof data - 1 - used)) > 0) {
        used += (size_t)n;
        data[used] = '\0';
        if ((headEnd = strstr(data, "\r\n\r\n")) != NULL) {
            char length[32];
            CopyHeader(data, "\r\nContent-Length: ", length, sizeof length);
            size_t expected = (size_t)(headEnd + 4 - data) + strtoul(length, NULL, 10);
            if (used >= expected)
                break;
        }
    }
    if (headEnd != NULL) {
        size_t line = strcspn(data, "\r\n");
        snprintf(server->requestLine, sizeof server->requestLine, "%.*s", (int)line, data);
        CopyHeader(data, "\r\nUser-Agent: ", server->userAgent, sizeof server->userAgent);
        server->bodyLength = used - (size_t)(headEnd + 4 - data);
        const char answer[] = "HTTP/1.1 200 OK\r\nContent-Length: 35\r\nConnection: close\r\n\r\n"
                              "<koru>hello from 127.0.0.1</koru>\r\n";
        if (write(connection, answer, sizeof answer - 1) < 0)
            perror("tour server");
    }
    close(connection);
    return NULL;
}

static int StartServer(LoopbackServer *server, pthread_t *thread)
{
    memset(server, 0, sizeof *server);
    server->listener = socket(AF_INET, SOCK_STREAM, 0);
    struct sockaddr_in address = {0};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (server->listener < 0 || bind(server->listener, (struct sockaddr *)&address, sizeof address) != 0 ||
        getsockname(server->listener, (struct sockaddr *)&address, &length) != 0 ||
        listen(server->listener, 1) != 0 || pthread_create(thread, NULL, ServeOnce, server) != 0) {
        if (server->listener >= 0)
            close(server->listener);
        return -1;
    }
    return ntohs(address.sin_port);
}

/* ---- The section ---- */

static bool TourConnectivityAndProxies(void)
{
    StdString probe;
    N.wideFromText(&probe, L"http://127.0.0.1/", &kAllocator);
    bool up = N.connectionUp(&probe);
    N.wideDestroy(&probe);
    printf("  IsOSXConnectionUp(http://127.0.0.1/): %s\n", up ? "up" : "down");

    char host[150];
    unsigned short port = 0;
    if (N.httpProxy(host, sizeof host, &port))
        printf("  HTTP proxy in effect: %s:%u\n", host, port);
    else
        printf("  HTTP proxy in effect: none\n");
    if (N.httpsProxy(host, sizeof host, &port))
        printf("  HTTPS proxy in effect: %s:%u\n", host, port);
    else
        printf("  HTTPS proxy in effect: none\n");
    printf("  a request to http://127.0.0.1/ %s the proxy\n",
           N.proxyRequired("http://127.0.0.1/") ? "goes through" : "bypasses");

    StdString text, encoded;
    N.stringFromText(&text, "caf\xC3\xA9 & cr\xC3\xA8me\n", &kAllocator);
    N.encodeFormValue(&encoded, &text);
    printf("  form value of \"caf\xC3\xA9 & cr\xC3\xA8me\\n\": %s\n", N.stringText(&encoded));
    N.stringDestroy(&encoded);
    N.stringDestroy(&text);
    return up;
}

static bool TourTransfer(void)
{
    char folder[] = "/tmp/koru-tour-net.XXXXXX";
    if (mkdtemp(folder) == NULL)
        return false;
    char requestPath[64], replyPath[64];
    snprintf(requestPath, sizeof requestPath, "%s/request.xml", folder);
    snprintf(replyPath, sizeof replyPath, "%s/reply.xml", folder);
    FILE *file = fopen(requestPath, "w");
    if (file != NULL) {
        fputs("<koru><tour>network</tour></koru>", file);
        fclose(file);
    }

    LoopbackServer server;
    pthread_t thread;
    int port = StartServer(&server, &thread);
    bool ok = port > 0;
    if (ok) {
        char url[64];
        snprintf(url, sizeof url, "http://127.0.0.1:%d/tour", port);
        StdString urlText, requestText, replyText, answer;
        N.stringFromText(&urlText, url, &kAllocator);
        N.stringFromText(&requestText, requestPath, &kAllocator);
        N.stringFromText(&replyText, replyPath, &kAllocator);
        N.stringFromText(&answer, "", &kAllocator);
        int32_t status = N.download(&urlText, &requestText, &replyText, &answer);
        // Wakes the server if the request went elsewhere (a proxy of the environment).
        shutdown(server.listener, SHUT_RDWR);
        pthread_join(thread, NULL);
        close(server.listener);
        printf("  POST to %s: status %d\n", url, (int)status);
        if (server.requestLine[0] != '\0') {
            printf("  the server saw \"%s\", user agent \"%s\", %zu body bytes\n", server.requestLine,
                   server.userAgent, server.bodyLength);
            printf("  reply: %s", N.stringText(&answer));
            ok = status == 0 && strcmp(server.userAgent, "Tarnix") == 0;
        } else {
            // A proxy of this machine's settings took the request, as curl would let it.
            printf("  the request went to the proxy in effect; the loopback server saw nothing\n");
        }
        N.stringDestroy(&answer);
        N.stringDestroy(&replyText);
        N.stringDestroy(&requestText);
        N.stringDestroy(&urlText);
    }
    unlink(requestPath);
    unlink(replyPath);
    rmdir(folder);
    return ok;
}

static bool TourNetwork(CFBundleRef bundle)
{
    if (!LookUpNetwork(bundle))
        return false;
    bool connectivity = TourConnectivityAndProxies();
    fflush(stdout);
    return TourTransfer() && connectivity;
}

KORU_TOUR_SECTION(40, "Network: connectivity, proxies, a POST to a loopback server", TourNetwork)
