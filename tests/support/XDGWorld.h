// A private XDG world for the tests that open files and URLs through
// xdg-open: one test application, run as `command` followed by the item, is
// the default for text files and for the x-koru-test: scheme, and browsers
// are replaced by a command that fails, so that an item nothing handles fails
// the same way everywhere.  The environment it changes is put back when it
// goes.
#ifndef KORU_TESTS_XDGWORLD_H
#define KORU_TESTS_XDGWORLD_H

#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <sys/stat.h>
#include <utility>

class XDGWorld {
public:
    XDGWorld(const std::string &root, const std::string &command)
        : desktopFile_(root + "/data/applications/koru-recorder.desktop")
    {
        for (const char *folder : {"/data", "/data/applications", "/config"})
            mkdir((root + folder).c_str(), 0755);
        std::ofstream(desktopFile_) << "[Desktop Entry]\nType=Application\nName=KORU Recorder\nExec=" << command
                                    << " %u\nMimeType=text/plain;x-scheme-handler/x-koru-test;\n";
        std::ofstream(root + "/config/mimeapps.list") << "[Default Applications]\ntext/plain=koru-recorder.desktop\n"
                                                         "x-scheme-handler/x-koru-test=koru-recorder.desktop\n";
        Set("XDG_DATA_HOME", root + "/data");
        Set("XDG_CONFIG_HOME", root + "/config");
        Set("XDG_DATA_DIRS", "/usr/share");
        Set("XDG_CURRENT_DESKTOP", "");
        Set("BROWSER", "/bin/false");
        // xdg-open consults desktop files only when it believes a display is there.
        if (getenv("DISPLAY") == nullptr && getenv("WAYLAND_DISPLAY") == nullptr)
            Set("DISPLAY", ":koru-test");
    }

    ~XDGWorld()
    {
        for (const auto &[name, old] : saved_)
            old.first ? setenv(name.c_str(), old.second.c_str(), 1) : unsetenv(name.c_str());
    }

    XDGWorld(const XDGWorld &) = delete;
    XDGWorld &operator=(const XDGWorld &) = delete;

    // Sets a variable for as long as the world lasts.
    void Set(const std::string &name, const std::string &value)
    {
        const char *old = getenv(name.c_str());
        saved_.try_emplace(name, old != nullptr, old != nullptr ? old : "");
        setenv(name.c_str(), value.c_str(), 1);
    }

    const std::string &DesktopFile() const { return desktopFile_; }

private:
    std::string desktopFile_;
    std::map<std::string, std::pair<bool, std::string>> saved_;
};

#endif
