// Servers on 127.0.0.1 for the network tests: each runs on a thread of the
// test, records every request it is sent and answers with what the test's
// handler gives, over plain TCP or TLS.  Stopped and joined when destroyed.
#ifndef KORU_TESTS_NET_LOOPBACKSERVER_H
#define KORU_TESTS_NET_LOOPBACKSERVER_H

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

typedef struct ssl_ctx_st SSL_CTX;

struct HttpRequest {
    std::string method;
    std::string target; // the path, or the absolute URL a proxy is sent
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;

    // The value of the first header of that name (any case); empty if none.
    std::string Header(const std::string &name) const;
    size_t HeaderCount(const std::string &name) const;
};

class LoopbackServer {
public:
    // The raw bytes to send back before closing; nullopt to keep the
    // connection open without a word until the server stops.
    using Handler = std::function<std::optional<std::string>(const HttpRequest &)>;

    explicit LoopbackServer(Handler handler, SSL_CTX *tls = nullptr);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer &) = delete;
    LoopbackServer &operator=(const LoopbackServer &) = delete;

    int Port() const { return port_; }
    // "http://127.0.0.1:<port>" + path ("https://..." for a TLS server).
    std::string Url(const std::string &path) const;
    std::vector<HttpRequest> Requests() const;

    // A complete answer with Content-Length and Connection: close.
    static std::string Answer(int status, const std::string &reason, const std::string &body);

private:
    void Run();
    void Serve(int connection);

    Handler handler_;
    SSL_CTX *tls_;
    int listener_ = -1;
    int port_ = 0;
    int stop_[2] = {-1, -1};
    std::thread thread_;
    mutable std::mutex mutex_;
    std::vector<HttpRequest> requests_;
};

// A self-signed certificate for 127.0.0.1 made afresh, its key, and a TLS
// context serving them; the certificate is written to a PEM file that a
// client can trust.
class TestCertificate {
public:
    explicit TestCertificate(const std::string &pemPath);
    ~TestCertificate();
    TestCertificate(const TestCertificate &) = delete;
    TestCertificate &operator=(const TestCertificate &) = delete;

    SSL_CTX *Context() const { return context_; }

private:
    SSL_CTX *context_ = nullptr;
};

// A port on 127.0.0.1 that nothing listens on: bound, then closed.
int UnusedLoopbackPort();

#endif
