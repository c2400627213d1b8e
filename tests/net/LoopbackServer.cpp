#include "LoopbackServer.h"

#include <openssl/ssl.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <strings.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int BindLoopback(int &port)
{
    int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        throw std::runtime_error("socket");
    int yes = 1;
    setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0 ||
        getsockname(fd, reinterpret_cast<sockaddr *>(&address), &length) != 0) {
        close(fd);
        throw std::runtime_error("bind");
    }
    port = ntohs(address.sin_port);
    return fd;
}

// One connection's byte stream, plain or TLS.
class Stream {
public:
    Stream(int fd, SSL_CTX *tls) : fd_(fd)
    {
        if (tls != nullptr) {
            ssl_ = SSL_new(tls);
            SSL_set_fd(ssl_, fd);
            ok_ = SSL_accept(ssl_) == 1;
        }
    }
    ~Stream()
    {
        if (ssl_ != nullptr) {
            if (ok_)
                SSL_shutdown(ssl_);
            SSL_free(ssl_);
        }
    }
    bool Ok() const { return ok_; }
    long Read(char *buffer, size_t size)
    {
        return ssl_ != nullptr ? SSL_read(ssl_, buffer, static_cast<int>(size)) : read(fd_, buffer, size);
    }
    bool Write(const std::string &bytes)
    {
        size_t done = 0;
        while (done < bytes.size()) {
            long n = ssl_ != nullptr ? SSL_write(ssl_, bytes.data() + done, static_cast<int>(bytes.size() - done))
                                     : write(fd_, bytes.data() + done, bytes.size() - done);
            if (n <= 0)
                return false;
            done += static_cast<size_t>(n);
        }
        return true;
    }

private:
    int fd_;
    SSL *ssl_ = nullptr;
    bool ok_ = true;
};

std::string Trim(const std::string &text)
{
    size_t first = text.find_first_not_of(" \t");
    size_t last = text.find_last_not_of(" \t\r");
    return first == std::string::npos ? std::string() : text.substr(first, last - first + 1);
}

// The request line and headers, then as many body bytes as Content-Length
// says, answering an Expect: 100-continue on the way.
bool ReadRequest(Stream &stream, HttpRequest &request)
{
    std::string data;
    char buffer[8192];
    size_t end;
    while ((end = data.find("\r\n\r\n")) == std::string::npos) {
        long n = stream.Read(buffer, sizeof buffer);
        if (n <= 0)
            return false;
        data.append(buffer, static_cast<size_t>(n));
    }
    std::string head = data.substr(0, end);
    std::string body = data.substr(end + 4);
    size_t lineEnd = head.find("\r\n");
    std::string line = head.substr(0, lineEnd);
    size_t space = line.find(' ');
    size_t space2 = line.find(' ', space + 1);
    if (space == std::string::npos || space2 == std::string::npos)
        return false;
    request.method = line.substr(0, space);
    request.target = line.substr(space + 1, space2 - space - 1);
    while (lineEnd != std::string::npos) {
        size_t start = lineEnd + 2;
        lineEnd = head.find("\r\n", start);
        std::string header = head.substr(start, lineEnd == std::string::npos ? std::string::npos : lineEnd - start);
        size_t colon = header.find(':');
        if (colon != std::string::npos)
            request.headers.emplace_back(header.substr(0, colon), Trim(header.substr(colon + 1)));
    }
    if (strcasecmp(request.Header("Expect").c_str(), "100-continue") == 0 &&
        !stream.Write("HTTP/1.1 100 Continue\r\n\r\n"))
        return false;
    size_t length = std::strtoul(request.Header("Content-Length").c_str(), nullptr, 10);
    while (body.size() < length) {
        long n = stream.Read(buffer, sizeof buffer);
        if (n <= 0)
            return false;
        body.append(buffer, static_cast<size_t>(n));
    }
    request.body = body;
    return true;
}

} // namespace

std::string HttpRequest::Header(const std::string &name) const
{
    for (const auto &header : headers)
        if (strcasecmp(header.first.c_str(), name.c_str()) == 0)
            return header.second;
    return std::string();
}

size_t HttpRequest::HeaderCount(const std::string &name) const
{
    size_t count = 0;
    for (const auto &header : headers)
        count += strcasecmp(header.first.c_str(), name.c_str()) == 0;
    return count;
}

LoopbackServer::LoopbackServer(Handler handler, SSL_CTX *tls) : handler_(std::move(handler)), tls_(tls)
{
    listener_ = BindLoopback(port_);
    if (listen(listener_, 64) != 0 || pipe2(stop_, O_CLOEXEC) != 0) {
        close(listener_);
        throw std::runtime_error("listen");
    }
    thread_ = std::thread([this] { Run(); });
}

LoopbackServer::~LoopbackServer()
{
    char byte = 0;
    if (write(stop_[1], &byte, 1) != 1)
        std::perror("LoopbackServer stop");
    thread_.join();
    close(listener_);
    close(stop_[0]);
    close(stop_[1]);
}

std::string LoopbackServer::Url(const std::string &path) const
{
    return std::string(tls_ != nullptr ? "https" : "http") + "://127.0.0.1:" + std::to_string(port_) + path;
}

std::vector<HttpRequest> LoopbackServer::Requests() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return requests_;
}

std::string LoopbackServer::Answer(int status, const std::string &reason, const std::string &body)
{
    return "HTTP/1.1 " + std::to_string(status) + " " + reason + "\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" + body;
}

void LoopbackServer::Run()
{
    for (;;) {
        pollfd fds[2] = {{listener_, POLLIN, 0}, {stop_[0], POLLIN, 0}};
        if (poll(fds, 2, -1) < 0)
            continue;
        if (fds[1].revents != 0)
            return;
        int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0)
            continue;
        // No client of these tests takes this long; a stuck one cannot hang the server.
        timeval limit{20, 0};
        setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
        Serve(connection);
        close(connection);
    }
}

void LoopbackServer::Serve(int connection)
{
    Stream stream(connection, tls_);
    HttpRequest request;
    if (!stream.Ok() || !ReadRequest(stream, request))
        return;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        requests_.push_back(request);
    }
    std::optional<std::string> answer = handler_(request);
    if (answer) {
        stream.Write(*answer);
        return;
    }
    pollfd stop = {stop_[0], POLLIN, 0};
    while (poll(&stop, 1, -1) < 0) {
    }
}

TestCertificate::TestCertificate(const std::string &pemPath)
{
    // Made by the openssl tool, as a user would make one; the key lies beside the PEM file.
    const std::string key = pemPath + ".key";
    const std::string command = "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 1 "
                                "-subj /CN=127.0.0.1 -addext subjectAltName=IP:127.0.0.1 "
                                "-addext basicConstraints=critical,CA:TRUE -keyout '" +
                                key + "' -out '" + pemPath + "' 2>/dev/null";
    context_ = SSL_CTX_new(TLS_server_method());
    if (std::system(command.c_str()) != 0 ||
        SSL_CTX_use_certificate_file(context_, pemPath.c_str(), SSL_FILETYPE_PEM) != 1 ||
        SSL_CTX_use_PrivateKey_file(context_, key.c_str(), SSL_FILETYPE_PEM) != 1) {
        SSL_CTX_free(context_);
        throw std::runtime_error("certificate");
    }
}

TestCertificate::~TestCertificate()
{
    SSL_CTX_free(context_);
}

int UnusedLoopbackPort()
{
    int port = 0;
    close(BindLoopback(port));
    return port;
}
