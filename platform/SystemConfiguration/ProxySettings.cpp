/* The proxy dictionary of the dynamic store, gathered from the desktop's own
 * settings or from the environment each time it is asked for. */
#include <SystemConfiguration/SCDynamicStore.h>
#include <SystemConfiguration/SCSchemaDefinitions.h>

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {

struct ProxyServer {
    std::string host;
    int port = 0;
    bool IsSet() const { return !host.empty(); }
};

struct ProxySettings {
    ProxyServer http;
    ProxyServer https;
    bool hasExceptions = false;
    std::vector<std::string> exceptions;
    std::string autoConfigURL;
};

/* curl's default proxy ports: 1080, and 443 for a proxy spoken to over TLS. */
constexpr int kDefaultProxyPort = 1080;
constexpr int kDefaultTLSProxyPort = 443;

std::string Trim(const std::string &text)
{
    size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return std::string();
    size_t last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

bool HasDesktop(const char *name)
{
    const char *desktops = std::getenv("XDG_CURRENT_DESKTOP");
    if (desktops == nullptr)
        return false;
    std::string list = desktops;
    size_t start = 0;
    while (start <= list.size()) {
        size_t end = list.find(':', start);
        if (end == std::string::npos)
            end = list.size();
        if (list.compare(start, end - start, name) == 0)
            return true;
        start = end + 1;
    }
    return false;
}

/* A port in decimal, or -1 when the text is not one. */
int ParsePort(const std::string &text)
{
    if (text.empty() || text.size() > 5 || text.find_first_not_of("0123456789") != std::string::npos)
        return -1;
    int port = std::atoi(text.c_str());
    return port <= 65535 ? port : -1;
}

/* A proxy written as curl takes it: [scheme://][user[:password]@]host[:port][/...].
 * The credentials never reach the dictionary, which has no key for them. */
ProxyServer ParseProxy(const std::string &value)
{
    ProxyServer server;
    std::string rest = Trim(value);
    int defaultPort = kDefaultProxyPort;
    size_t scheme = rest.find("://");
    if (scheme != std::string::npos) {
        if (rest.compare(0, scheme, "https") == 0)
            defaultPort = kDefaultTLSProxyPort;
        rest.erase(0, scheme + 3);
    }
    rest = rest.substr(0, rest.find('/'));
    size_t at = rest.rfind('@');
    if (at != std::string::npos)
        rest.erase(0, at + 1);

    std::string host = rest;
    std::string port;
    if (!rest.empty() && rest[0] == '[') {
        size_t close = rest.find(']');
        if (close == std::string::npos)
            return server;
        host = rest.substr(1, close - 1);
        if (close + 1 < rest.size() && rest[close + 1] == ':')
            port = rest.substr(close + 2);
    } else if (size_t colon = rest.find(':'); colon != std::string::npos) {
        host = rest.substr(0, colon);
        port = rest.substr(colon + 1);
    }
    int number = port.empty() ? defaultPort : ParsePort(port);
    if (host.empty() || number < 0)
        return server;
    server.host = host;
    server.port = number;
    return server;
}

std::vector<std::string> SplitList(const std::string &text)
{
    std::vector<std::string> entries;
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find(',', start);
        if (end == std::string::npos)
            end = text.size();
        std::string entry = Trim(text.substr(start, end - start));
        if (!entry.empty())
            entries.push_back(entry);
        start = end + 1;
    }
    return entries;
}

std::string Environment(const char *name)
{
    const char *value = std::getenv(name);
    return value != nullptr ? value : std::string();
}

/* As curl reads them: http_proxy in lower case only (CGI programs get
 * HTTP_PROXY from request headers), https_proxy before HTTPS_PROXY,
 * all_proxy (before ALL_PROXY) for a scheme that has no variable of its
 * own, and no_proxy before NO_PROXY. */
ProxySettings ReadEnvironment()
{
    ProxySettings settings;
    std::string all = Environment("all_proxy");
    if (all.empty())
        all = Environment("ALL_PROXY");
    std::string http = Environment("http_proxy");
    std::string https = Environment("https_proxy");
    if (https.empty())
        https = Environment("HTTPS_PROXY");
    settings.http = ParseProxy(http.empty() ? all : http);
    settings.https = ParseProxy(https.empty() ? all : https);
    const char *noProxy = std::getenv("no_proxy");
    if (noProxy == nullptr)
        noProxy = std::getenv("NO_PROXY");
    if (noProxy != nullptr) {
        settings.hasExceptions = true;
        settings.exceptions = SplitList(noProxy);
    }
    return settings;
}

/* ---- KDE: the [Proxy Settings] group of kioslaverc ---- */

std::string KDEConfigFile()
{
    std::string folder = Environment("XDG_CONFIG_HOME");
    if (folder.empty()) {
        std::string home = Environment("HOME");
        if (home.empty())
            return std::string();
        folder = home + "/.config";
    }
    return folder + "/kioslaverc";
}

/* KDE writes a proxy either as a URL with its port or as "URL PORT". */
ProxyServer ParseKDEProxy(const std::string &value)
{
    std::string text = Trim(value);
    size_t blank = text.find_last_of(" \t");
    if (blank != std::string::npos) {
        ProxyServer server = ParseProxy(text.substr(0, blank));
        int port = ParsePort(Trim(text.substr(blank + 1)));
        if (server.IsSet() && port > 0)
            server.port = port;
        return server;
    }
    return ParseProxy(text);
}

/* ProxyType: 0 none, 1 manual, 2 a configuration script, 3 discovery,
 * 4 the environment's variables. */
ProxySettings ReadKDE()
{
    std::ifstream file(KDEConfigFile());
    std::string line, group;
    std::string type, http, https, noProxy, script;
    bool hasNoProxy = false;
    while (std::getline(file, line)) {
        line = Trim(line);
        if (line.empty() || line[0] == '#')
            continue;
        if (line[0] == '[') {
            group = line;
            continue;
        }
        if (group != "[Proxy Settings]")
            continue;
        size_t equals = line.find('=');
        if (equals == std::string::npos)
            continue;
        std::string key = Trim(line.substr(0, equals));
        std::string value = Trim(line.substr(equals + 1));
        if (key == "ProxyType")
            type = value;
        else if (key == "httpProxy")
            http = value;
        else if (key == "httpsProxy")
            https = value;
        else if (key == "NoProxyFor") {
            noProxy = value;
            hasNoProxy = true;
        } else if (key == "Proxy Config Script")
            script = value;
    }
    if (type == "4")
        return ReadEnvironment();
    ProxySettings settings;
    if (type == "1") {
        settings.http = ParseKDEProxy(http);
        settings.https = ParseKDEProxy(https);
        settings.hasExceptions = hasNoProxy;
        settings.exceptions = SplitList(noProxy);
    } else if (type == "2") {
        settings.autoConfigURL = script;
    }
    return settings;
}

/* ---- GNOME: org.gnome.system.proxy through the gsettings command ---- */

/* Runs gsettings with the arguments, no shell; its standard output, or
 * false when it could not run or failed. */
bool RunGSettings(std::vector<const char *> arguments, std::string &output)
{
    int pipeEnds[2];
    if (pipe2(pipeEnds, O_CLOEXEC) != 0)
        return false;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    arguments.insert(arguments.begin(), "gsettings");
    arguments.push_back(nullptr);
    pid_t child = -1;
    int spawned = posix_spawnp(&child, "gsettings", &actions, nullptr,
                               const_cast<char *const *>(arguments.data()), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(pipeEnds[1]);
    if (spawned != 0) {
        close(pipeEnds[0]);
        return false;
    }
    char buffer[4096];
    ssize_t count;
    while ((count = read(pipeEnds[0], buffer, sizeof buffer)) != 0) {
        if (count < 0) {
            if (errno == EINTR)
                continue;
            break;
        }
        output.append(buffer, static_cast<size_t>(count));
    }
    close(pipeEnds[0]);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/* The strings of a GVariant text: 'text', "text", or a list of them. */
std::vector<std::string> GVariantStrings(const std::string &text)
{
    std::vector<std::string> strings;
    for (size_t i = 0; i < text.size(); ++i) {
        char quote = text[i];
        if (quote != '\'' && quote != '"')
            continue;
        std::string value;
        for (++i; i < text.size() && text[i] != quote; ++i) {
            if (text[i] == '\\' && i + 1 < text.size())
                ++i;
            value += text[i];
        }
        strings.push_back(value);
    }
    return strings;
}

std::string GVariantString(const std::string &text)
{
    std::vector<std::string> strings = GVariantStrings(text);
    return strings.empty() ? std::string() : strings.front();
}

/* "org.gnome.system.proxy.http host 'proxy'" lines of list-recursively. */
bool ReadGNOME(ProxySettings &settings)
{
    std::string output;
    if (!RunGSettings({"list-recursively", "org.gnome.system.proxy"}, output))
        return false;
    std::string mode, httpHost, httpPort, httpsHost, httpsPort, ignore, script;
    size_t start = 0;
    while (start < output.size()) {
        size_t end = output.find('\n', start);
        if (end == std::string::npos)
            end = output.size();
        std::string line = output.substr(start, end - start);
        start = end + 1;
        size_t first = line.find(' ');
        size_t second = first == std::string::npos ? first : line.find(' ', first + 1);
        if (second == std::string::npos)
            continue;
        std::string schema = line.substr(0, first);
        std::string key = line.substr(first + 1, second - first - 1);
        std::string value = Trim(line.substr(second + 1));
        if (schema == "org.gnome.system.proxy") {
            if (key == "mode")
                mode = GVariantString(value);
            else if (key == "ignore-hosts")
                ignore = value;
            else if (key == "autoconfig-url")
                script = GVariantString(value);
        } else if (schema == "org.gnome.system.proxy.http") {
            if (key == "host")
                httpHost = GVariantString(value);
            else if (key == "port")
                httpPort = value;
        } else if (schema == "org.gnome.system.proxy.https") {
            if (key == "host")
                httpsHost = GVariantString(value);
            else if (key == "port")
                httpsPort = value;
        }
    }
    if (mode == "manual") {
        if (!httpHost.empty() && ParsePort(httpPort) > 0)
            settings.http = ProxyServer{httpHost, ParsePort(httpPort)};
        if (!httpsHost.empty() && ParsePort(httpsPort) > 0)
            settings.https = ProxyServer{httpsHost, ParsePort(httpsPort)};
        settings.hasExceptions = true;
        settings.exceptions = GVariantStrings(ignore);
    } else if (mode == "auto") {
        settings.autoConfigURL = script;
    }
    return true;
}

ProxySettings ReadSettings()
{
    if (HasDesktop("GNOME")) {
        ProxySettings settings;
        if (ReadGNOME(settings))
            return settings;
    }
    if (HasDesktop("KDE"))
        return ReadKDE();
    return ReadEnvironment();
}

/* ---- The dictionary ---- */

void SetNumber(CFMutableDictionaryRef dictionary, CFStringRef key, int value)
{
    CFNumberRef number = CFNumberCreate(nullptr, kCFNumberIntType, &value);
    if (number == nullptr)
        return;
    CFDictionarySetValue(dictionary, key, number);
    CFRelease(number);
}

void SetString(CFMutableDictionaryRef dictionary, CFStringRef key, const std::string &value)
{
    CFStringRef string = CFStringCreateWithCString(nullptr, value.c_str(), kCFStringEncodingUTF8);
    if (string == nullptr)
        return;
    CFDictionarySetValue(dictionary, key, string);
    CFRelease(string);
}

void SetServer(CFMutableDictionaryRef dictionary, const ProxyServer &server, CFStringRef enableKey,
               CFStringRef hostKey, CFStringRef portKey)
{
    if (!server.IsSet())
        return;
    SetNumber(dictionary, enableKey, 1);
    SetString(dictionary, hostKey, server.host);
    SetNumber(dictionary, portKey, server.port);
}

void SetExceptions(CFMutableDictionaryRef dictionary, const std::vector<std::string> &entries)
{
    CFMutableArrayRef list = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
    if (list == nullptr)
        return;
    for (const std::string &entry : entries) {
        CFStringRef string = CFStringCreateWithCString(nullptr, entry.c_str(), kCFStringEncodingUTF8);
        if (string == nullptr)
            continue;
        CFArrayAppendValue(list, string);
        CFRelease(string);
    }
    CFDictionarySetValue(dictionary, kSCPropNetProxiesExceptionsList, list);
    CFRelease(list);
}

} // namespace

CFDictionaryRef SCDynamicStoreCopyProxies(SCDynamicStoreRef)
{
    try {
        ProxySettings settings = ReadSettings();
        CFMutableDictionaryRef proxies = CFDictionaryCreateMutable(
            nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
        if (proxies == nullptr)
            return nullptr;
        SetServer(proxies, settings.http, kSCPropNetProxiesHTTPEnable, kSCPropNetProxiesHTTPProxy,
                  kSCPropNetProxiesHTTPPort);
        SetServer(proxies, settings.https, kSCPropNetProxiesHTTPSEnable, kSCPropNetProxiesHTTPSProxy,
                  kSCPropNetProxiesHTTPSPort);
        if (settings.hasExceptions && (settings.http.IsSet() || settings.https.IsSet()))
            SetExceptions(proxies, settings.exceptions);
        if (!settings.autoConfigURL.empty()) {
            SetNumber(proxies, kSCPropNetProxiesProxyAutoConfigEnable, 1);
            SetString(proxies, kSCPropNetProxiesProxyAutoConfigURLString, settings.autoConfigURL);
        }
        return proxies;
    } catch (...) {
        return nullptr;
    }
}
