// What the network tests share: a private folder that is also the user's
// temporary folder (so the message log lands there and is switched on), the
// log's text, and an environment cleared of every proxy, certificate and
// desktop setting of the machine.
#ifndef KORU_TESTS_NET_NETTESTSUPPORT_H
#define KORU_TESTS_NET_NETTESTSUPPORT_H

#include <KORU/Utils.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include <unistd.h>

class NetTestFolder {
public:
    NetTestFolder()
    {
        for (const char *name : {"http_proxy", "HTTP_PROXY", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY",
                                 "no_proxy", "NO_PROXY", "CURL_CA_BUNDLE", "SSL_CERT_FILE", "SSL_CERT_DIR",
                                 "XDG_CURRENT_DESKTOP", "XDG_CONFIG_HOME", "CURL_HOME"})
            unsetenv(name);
        char pattern[] = "/tmp/KORUNetTest.XXXXXX";
        if (mkdtemp(pattern) == nullptr)
            throw std::runtime_error("mkdtemp");
        root_ = pattern;
        setenv("TMPDIR", root_.c_str(), 1);
        std::filesystem::create_directories(Utils::GetDirFromPath(Utils::GetLogFilename()));
    }
    ~NetTestFolder()
    {
        // Folder tests of the toolkit may leave the process inside the folder.
        if (chdir("/") != 0)
            return;
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }

    std::string Path(const std::string &name) const { return root_ + "/" + name; }

    std::string Log() const { return ReadFile(Utils::GetLogFilename()); }

    static std::string ReadFile(const std::string &path)
    {
        std::ifstream file(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    static void WriteFile(const std::string &path, const std::string &bytes)
    {
        std::ofstream(path, std::ios::binary) << bytes;
    }

private:
    std::string root_;
};

#endif
