/* A fresh process for DebugTest: the debug switch is decided once per
 * process, so each scenario runs here.  Prints "on" or "off" on stdout. */
#include <KORU/Debug.h>
#include <KORU/LogSupport.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

int main(int argc, char **argv)
{
    const char *scenario = argc > 1 ? argv[1] : "check";
    if (std::strcmp(scenario, "force") == 0)
        gKORUDebug = 1;
    bool on = KORUDebug();
    if (std::strcmp(scenario, "recheck") == 0) {
        // The marker appears after the first question: the answer must not change.
        std::string marker = std::string(std::getenv("HOME")) + "/.debug";
        std::fclose(std::fopen(marker.c_str(), "w"));
        on = KORUDebug();
    }
    if (std::strcmp(scenario, "report") == 0) {
        StringIsEndWith(nullptr, "x", false);
        StringGetLastSubstring("x", nullptr, true);
        CFStringCreateConvertableExternalRepresentation(nullptr);
    }
    std::printf("%s\n", on ? "on" : "off");
    return 0;
}
