// CurlExternSecureDownload against the curl command line it stands for:
// N POSTs of a 4 KiB request file to a server on 127.0.0.1, each answer
// written to a reply file, once through the toolkit (libcurl in the process)
// and once by running /usr/bin/curl with the same switches for every
// transfer.  Usage: CurlBench [transfers]  (default 1000).
#include <KORU/CommunicationLibrary.h>

#include "LoopbackServer.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {

double Seconds(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

int RunCurlTool(const std::string &url, const std::string &request, const std::string &reply)
{
    std::string data = "@" + request;
    const char *argv[] = {"/usr/bin/curl", "--url", url.c_str(), "--connect-timeout", "60", "-m", "120", "-f", "-s",
                          "--data-binary", data.c_str(), "-o", reply.c_str(), "-H", "Content-Type: text/xml",
                          "-H", "User-Agent: Tarnix", nullptr};
    pid_t child;
    if (posix_spawn(&child, argv[0], nullptr, nullptr, const_cast<char *const *>(argv), environ) != 0)
        return -1;
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

int main(int argc, char **argv)
{
    int transfers = argc > 1 ? std::atoi(argv[1]) : 1000;
    char pattern[] = "/tmp/CurlBench.XXXXXX";
    if (mkdtemp(pattern) == nullptr)
        return 1;
    std::string folder = pattern;
    // A private temporary folder: the message log stays off, as it is by default.
    setenv("TMPDIR", folder.c_str(), 1);
    for (const char *name : {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"})
        unsetenv(name);

    std::string request = folder + "/request.xml";
    std::string replyFile = folder + "/reply.xml";
    std::string body = "<request>" + std::string(4096 - 19, 'x') + "</request>";
    std::ofstream(request, std::ios::binary) << body;
    const std::string answer = "<answer>ok</answer>";
    LoopbackServer server([&](const HttpRequest &r) {
        return LoopbackServer::Answer(r.body.size() == body.size() ? 200 : 400, "OK", answer);
    });
    std::string url = server.Url("/bench");

    auto start = std::chrono::steady_clock::now();
    int failures = 0;
    for (int i = 0; i < transfers; ++i) {
        std::string reply;
        if (CommunicationLibrary::CurlExternSecureDownload(url, request, replyFile, reply) != 0 || reply != answer)
            ++failures;
    }
    double toolkit = Seconds(start);

    start = std::chrono::steady_clock::now();
    int toolFailures = 0;
    for (int i = 0; i < transfers; ++i)
        if (RunCurlTool(url, request, replyFile) != 0)
            ++toolFailures;
    double tool = Seconds(start);

    std::printf("%d transfers of a %zu-byte request to 127.0.0.1\n", transfers, body.size());
    std::printf("  CurlExternSecureDownload: %8.3f s (%.3f ms each, %d failed)\n", toolkit,
                1000 * toolkit / transfers, failures);
    std::printf("  /usr/bin/curl           : %8.3f s (%.3f ms each, %d failed)\n", tool, 1000 * tool / transfers,
                toolFailures);
    std::printf("  ratio: %.1fx (goal: at least 5x)\n", tool / toolkit);
    std::filesystem::remove_all(folder);
    return failures == 0 && toolFailures == 0 ? 0 : 1;
}
