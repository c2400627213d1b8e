/* hdid-koru: the toolkit's hdid-compatible disk-image mounter.
 *
 *   hdid-koru IMAGE [-mountpoint DIR] [-nobrowse]
 *
 * attaches IMAGE (or finds it attached) and prints one line per mounted
 * entity, "dev-entry<TAB>content-hint<TAB>mount-point". */
#include "DiskImageTool.h"

#include <iostream>
#include <string>

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::cerr << "usage: hdid-koru IMAGE [-mountpoint DIR] [-nobrowse]\n";
        return 1;
    }
    diskimage::AttachOptions options;
    for (int i = 2; i < argc; ++i) {
        const std::string option = argv[i];
        if (option == "-mountpoint" && i + 1 < argc) {
            options.mountPoint = argv[++i];
        } else if (option != "-nobrowse") {
            std::cerr << "hdid-koru: attach failed - unknown or incomplete option " << option << '\n';
            return 1;
        }
    }
    diskimage::AttachedImage attached;
    diskimage::Failure failure;
    if (!diskimage::AttachImage(argv[1], options, attached, failure)) {
        std::cerr << "hdid-koru: attach failed - " << failure.reason << '\n';
        return 1;
    }
    diskimage::PrintEntityLines(std::cout, attached);
    std::cout.flush();
    return std::cout.good() ? 0 : 1;
}
