/* hdiutil-koru: the toolkit's hdiutil-compatible disk-image editor.
 *
 *   hdiutil-koru create -srcfolder DIR [-ov] IMAGE
 *   hdiutil-koru attach IMAGE [-mountpoint DIR] [-nobrowse] [-plist]
 *   hdiutil-koru detach MOUNTPOINT-OR-DEV [-force]
 *   hdiutil-koru info [-plist]
 *
 * The operand of attach and detach comes first and that of create last, and
 * each is taken as it stands, so a name starting with "-" is a name there. */
#include "DiskImageTool.h"

#include <cstring>
#include <iostream>
#include <string>
#include <vector>

namespace {

const char kTool[] = "hdiutil-koru";

int Usage()
{
    std::cerr << "usage: " << kTool << " create -srcfolder DIR [-ov] IMAGE\n"
              << "       " << kTool << " attach IMAGE [-mountpoint DIR] [-nobrowse] [-plist]\n"
              << "       " << kTool << " detach MOUNTPOINT-OR-DEV [-force]\n"
              << "       " << kTool << " info [-plist]\n";
    return 1;
}

int Fail(const std::string &command, const std::string &reason)
{
    std::cerr << kTool << ": " << command << " failed - " << reason << '\n';
    return 1;
}

int Create(const std::vector<std::string> &arguments)
{
    if (arguments.empty())
        return Fail("create", "no image given");
    const std::string &image = arguments.back();
    std::string folder;
    bool haveFolder = false, overwrite = false;
    for (size_t i = 0; i + 1 < arguments.size(); ++i) {
        if (arguments[i] == "-srcfolder" && i + 2 < arguments.size()) {
            folder = arguments[++i];
            haveFolder = true;
        } else if (arguments[i] == "-ov") {
            overwrite = true;
        } else {
            return Fail("create", "unknown or incomplete option " + arguments[i]);
        }
    }
    if (!haveFolder)
        return Fail("create", "-srcfolder DIR is required");
    diskimage::Failure failure;
    if (!diskimage::CreateImage(folder, image, overwrite, failure))
        return Fail("create", failure.reason);
    std::cout << "created: " << diskimage::AbsolutePath(image) << '\n';
    return 0;
}

int Attach(const std::vector<std::string> &arguments)
{
    if (arguments.empty())
        return Fail("attach", "no image given");
    diskimage::AttachOptions options;
    bool plist = false;
    for (size_t i = 1; i < arguments.size(); ++i) {
        if (arguments[i] == "-mountpoint" && i + 1 < arguments.size())
            options.mountPoint = arguments[++i];
        else if (arguments[i] == "-plist")
            plist = true;
        else if (arguments[i] != "-nobrowse" && arguments[i] != "-readonly" && arguments[i] != "-noverify")
            return Fail("attach", "unknown or incomplete option " + arguments[i]);
    }
    diskimage::AttachedImage attached;
    diskimage::Failure failure;
    if (!diskimage::AttachImage(arguments[0], options, attached, failure))
        return Fail("attach", failure.reason);
    if (plist)
        diskimage::PrintEntitiesPropertyList(std::cout, attached);
    else
        diskimage::PrintEntityLines(std::cout, attached);
    return 0;
}

int Detach(const std::vector<std::string> &arguments)
{
    if (arguments.empty())
        return Fail("detach", "nothing to detach given");
    bool force = false;
    for (size_t i = 1; i < arguments.size(); ++i) {
        if (arguments[i] == "-force")
            force = true;
        else
            return Fail("detach", "unknown option " + arguments[i]);
    }
    std::string device;
    diskimage::Failure failure;
    if (!diskimage::DetachImage(arguments[0], force, device, failure))
        return Fail("detach", failure.reason);
    std::cout << '"' << device << "\" ejected.\n";
    return 0;
}

int Info(const std::vector<std::string> &arguments)
{
    bool plist = false;
    for (const std::string &argument : arguments) {
        if (argument == "-plist")
            plist = true;
        else
            return Fail("info", "unknown option " + argument);
    }
    const std::vector<diskimage::AttachedImage> images = diskimage::ListAttachedImages();
    if (plist)
        diskimage::PrintImagesPropertyList(std::cout, images);
    else
        diskimage::PrintImagesText(std::cout, images);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2)
        return Usage();
    const std::string command = argv[1];
    const std::vector<std::string> arguments(argv + 2, argv + argc);
    int status;
    if (command == "create")
        status = Create(arguments);
    else if (command == "attach")
        status = Attach(arguments);
    else if (command == "detach" || command == "eject")
        status = Detach(arguments);
    else if (command == "info")
        status = Info(arguments);
    else
        return Usage();
    std::cout.flush();
    return status == 0 && std::cout.good() ? 0 : 1;
}
