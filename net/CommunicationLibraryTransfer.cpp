/* CommunicationLibrary's HTTP(S) transfer: the POST of a request file that
 * the curl tool would make with the logged command line, made by libcurl in
 * this process.  No shell and no child process are involved, so quotes,
 * ";", "$()" or newlines in a URL or path are only text.  The options are
 * those of the command line, switch by switch; libcurl's result codes are
 * the tool's exit codes, so the status mapping reads the same. */
#include <KORU/CommunicationLibrary.h>
#include <KORU/Utils.h>

#include <curl/curl.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <mutex>
#include <sstream>

namespace {

constexpr long kTotalTimeLimit = 120; /* -m, seconds */
constexpr size_t kReplyBlockSize = 2048;
constexpr size_t kProxyHostSize = 150;

enum TransferResult : int32_t { kTransferSucceeded = 0, kSecureChannelFailed = 3, kTransferFailed = 4 };

/* The tool's exit codes for a failed TLS handshake or certificate check. */
bool IsSecureChannelFailure(int code)
{
    switch (code) {
    case 35: case 51: case 53: case 54: case 58: case 59: case 60: case 66:
        return true;
    default:
        return false;
    }
}

/* The command line the transfer is equivalent to, as the message log shows it. */
std::string CommandLine(const std::string &url, const std::string &requestFile, const std::string &replyFile)
{
    std::string command = "/usr/bin/curl ";
    command += " --url " + url;
    command += " --connect-timeout " + std::to_string(CommunicationLibrary::DEFAULT_TIMEOUT);
    command += " -m " + std::to_string(kTotalTimeLimit);
    command += " -f ";
    command += " -s";
    command += " --data-binary @\"" + requestFile + "\"";
    command += " -o \"" + replyFile + "\"";
    command += " -H \"Content-Type: text/xml\"";
    command += " -H \"User-Agent: Tarnix\"";
    return command;
}

void InitialiseLibcurlOnce()
{
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

/* --data-binary @file: the bytes as they are; an unreadable file posts an
 * empty body.  The tool's warning about it is silenced by -s, so nothing is
 * logged either. */
std::string ReadRequestBody(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    if (file) {
        std::ostringstream bytes;
        bytes << file.rdbuf();
        if (!file.bad())
            return bytes.str();
    }
    return std::string();
}

/* -o file: created (truncated) when the first bytes arrive, as the tool
 * does, so an HTTP error leaves no file behind. */
struct ReplyFile {
    std::string path;
    FILE *stream = nullptr;

    bool Open()
    {
        if (stream == nullptr)
            stream = std::fopen(path.c_str(), "wb");
        return stream != nullptr;
    }
    bool Close()
    {
        if (stream == nullptr)
            return true;
        bool closed = std::fclose(stream) == 0;
        stream = nullptr;
        return closed;
    }
    ~ReplyFile() { Close(); }
};

size_t WriteReply(char *data, size_t size, size_t count, void *context)
{
    ReplyFile *reply = static_cast<ReplyFile *>(context);
    size_t bytes = size * count;
    if (bytes == 0)
        return 0;
    if (!reply->Open())
        return 0; // anything but `bytes` makes libcurl stop with a write error
    return std::fwrite(data, 1, bytes, reply->stream);
}

/* The tool's certificate sources, the first one set of CURL_CA_BUNDLE,
 * SSL_CERT_DIR (beside the built-in system bundle) and SSL_CERT_FILE: the
 * tool ignores SSL_CERT_FILE while SSL_CERT_DIR is set.  Without any of them
 * libcurl's built-in system bundle. */
void SetCertificateAuthorities(CURL *curl)
{
    if (const char *bundle = std::getenv("CURL_CA_BUNDLE"))
        curl_easy_setopt(curl, CURLOPT_CAINFO, bundle);
    else if (const char *folder = std::getenv("SSL_CERT_DIR"))
        curl_easy_setopt(curl, CURLOPT_CAPATH, folder);
    else if (const char *file = std::getenv("SSL_CERT_FILE"))
        curl_easy_setopt(curl, CURLOPT_CAINFO, file);
}

/* One transfer; the tool's exit code (0 on success). */
int Transfer(const std::string &url, const std::string &requestFile, const std::string &replyFile,
             const std::string &proxy)
{
    InitialiseLibcurlOnce();
    CURL *curl = curl_easy_init();
    if (curl == nullptr)
        return CURLE_FAILED_INIT;

    std::string body = ReadRequestBody(requestFile);
    ReplyFile reply{replyFile};
    curl_slist *headers = curl_slist_append(nullptr, "Content-Type: text/xml");
    curl_slist *allHeaders = headers != nullptr ? curl_slist_append(headers, "User-Agent: Tarnix") : nullptr;
    if (allHeaders == nullptr) {
        curl_slist_free_all(headers);
        curl_easy_cleanup(curl);
        return CURLE_OUT_OF_MEMORY;
    }

    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, static_cast<long>(CommunicationLibrary::DEFAULT_TIMEOUT));
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, kTotalTimeLimit);
    curl_easy_setopt(curl, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 1L);
    curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body.data());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, allHeaders);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, WriteReply);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &reply);
    if (!proxy.empty())
        curl_easy_setopt(curl, CURLOPT_PROXY, proxy.c_str());
    SetCertificateAuthorities(curl);
    // The tool's defaults that reach the wire or the connection.
    curl_easy_setopt(curl, CURLOPT_TCP_KEEPALIVE, 1L);
    // A library must not let time-outs raise SIGALRM in its host.
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);

    CURLcode code = curl_easy_perform(curl);
    curl_easy_cleanup(curl);
    curl_slist_free_all(allHeaders);

    // The tool leaves an (empty) output file behind a transfer that
    // succeeded without a byte of answer.
    if (code == CURLE_OK && !reply.Open())
        code = CURLE_WRITE_ERROR;
    if (!reply.Close() && code == CURLE_OK)
        code = CURLE_WRITE_ERROR;
    return static_cast<int>(code);
}

/* The reply read back in 2048-byte blocks, each taken as a C string, so a
 * NUL byte ends what its block contributes. */
std::string ReadReply(const std::string &path)
{
    std::string collected;
    FILE *file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        Utils::LogMessage("curlexec err,file = nil");
        return collected;
    }
    char block[kReplyBlockSize + 1];
    for (;;) {
        size_t count = std::fread(block, 1, kReplyBlockSize, file);
        block[count] = '\0';
        collected += block;
        if (count < kReplyBlockSize)
            break;
    }
    std::fclose(file);
    return collected;
}

} // namespace

int32_t CommunicationLibrary::CurlExternSecureDownload(std::string url, std::string requestFile,
                                                       std::string replyFile, std::string &reply)
{
    std::string command = CommandLine(url, requestFile, replyFile);
    std::string proxy;
    if (IsProxyRequiredFor(url.c_str())) {
        Utils::LogMessage(WString(L"CommLib,proxy required for destination URL"));
        // The HTTPS proxy is tried first whatever the URL's scheme.
        char host[kProxyHostSize];
        unsigned short port = 0;
        if (GetHTTPSProxySetting(host, sizeof host, &port) || GetHTTPProxySetting(host, sizeof host, &port)) {
            proxy = std::string(host) + ":" + std::to_string(port);
            command += " -x " + proxy;
        }
    }
    Utils::LogMessage("curl command line: \n" + command);

    int exitCode = Transfer(url, requestFile, replyFile, proxy);
    if (exitCode != 0) {
        // The raw status is what system() would have answered for the tool.
        Utils::LogMessage(WString(L"curlerrcode original:"), static_cast<long>(exitCode) << 8);
        Utils::LogMessage(WString(L"curlerrcode:"), exitCode);
        return IsSecureChannelFailure(exitCode) ? kSecureChannelFailed : kTransferFailed;
    }
    reply = ReadReply(replyFile);
    return kTransferSucceeded;
}
