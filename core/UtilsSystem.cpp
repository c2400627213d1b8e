/* The Utils system queries and the exported C ones: the system's version
 * record, Gestalt, the user's language and country, the user and his groups. */
#include <KORU/SystemInfo.h>
#include <KORU/Utils.h>

#include "PreferredLocale.h"

#include <CoreServices/CoreServices.h>

#include <cstring>
#include <fstream>
#include <string>

#include <grp.h>
#include <unistd.h>

namespace {

/* The value of an os-release assignment as the shell would read it:
 * 'single quoted' or "double quoted" parts, backslash escapes outside single
 * quotes, an unquoted value ending at a blank. */
std::string UnquoteOsReleaseValue(const std::string &raw)
{
    std::string value;
    char quote = 0;
    for (size_t i = 0; i < raw.size(); ++i) {
        char c = raw[i];
        if (quote == '\'') {
            if (c == '\'')
                quote = 0;
            else
                value += c;
        } else if (c == '\\' && i + 1 < raw.size()) {
            value += raw[++i];
        } else if (c == '"') {
            quote = quote == '"' ? 0 : '"';
        } else if (c == '\'' && quote == 0) {
            quote = '\'';
        } else if (quote == 0 && (c == ' ' || c == '\t' || c == '#')) {
            break; // the end of an unquoted value
        } else {
            value += c;
        }
    }
    return value;
}

/* The value of key in the system's os-release record; empty when the key or
 * the record is absent. */
std::string ReadOsReleaseValue(const std::string &key)
{
    // The record lives in /etc; systems that keep it with the vendor's files
    // have it in /usr/lib instead.
    for (const char *path : {"/etc/os-release", "/usr/lib/os-release"}) {
        std::ifstream file(path);
        if (!file)
            continue;
        std::string line;
        while (std::getline(file, line)) {
            size_t start = line.find_first_not_of(" \t");
            if (start == std::string::npos || line[start] == '#')
                continue;
            size_t equals = line.find('=', start);
            if (equals != std::string::npos && line.compare(start, equals - start, key) == 0)
                return UnquoteOsReleaseValue(line.substr(equals + 1));
        }
        return std::string();
    }
    return std::string();
}

/* Takes over a string from CF or the defaults readers: one element per
 * UTF-16 unit, as Utils hands out all system text; empty for NULL. */
WString AdoptString(CFStringRef string)
{
    if (string == nullptr)
        return WString();
    WString result = Utils::nsstring2wstring((NSString *)string);
    CFRelease(string);
    return result;
}

/* Empty for text that is not UTF-8. */
WString WStringFromUTF8(const std::string &text)
{
    return AdoptString(CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8 *>(text.data()),
                                               static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false));
}

/* The cached version text, filled on the first call that finds one. */
WString CachedSystemText(WString &cache, WString (*make)())
{
    if (cache.empty())
        cache = make();
    return cache;
}

WString MakeOsVersion()
{
    return WStringFromUTF8(ReadOsReleaseValue("VERSION_ID"));
}

WString MakeOsName()
{
    std::string version = ReadOsReleaseValue("VERSION_ID");
    std::string name = ReadOsReleaseValue("NAME");
    if (version.empty())
        return WString();
    if (name.empty())
        name = "Linux"; // what os-release says a record without NAME means
    return WStringFromUTF8(name + " " + version);
}

} // namespace

extern "C" long GestaltSystemVersion(void)
{
    static long version = 0;
    if (version == 0) {
        SInt32 response = 0;
        if (Gestalt(gestaltSystemVersion, &response) == noErr)
            version = response;
    }
    return version;
}

extern "C" Boolean UserIsRoot(void)
{
    return geteuid() == 0;
}

extern "C" Boolean UserIsBelongToGroup(const char *groupName)
{
    if (groupName == nullptr)
        return false;
    const char *login = getlogin();
    if (login == nullptr)
        return false;
    const struct group *group = getgrnam(groupName);
    if (group == nullptr || group->gr_mem == nullptr)
        return false;
    // Only listed members count; the primary group of the user is not consulted.
    for (char **member = group->gr_mem; *member != nullptr; ++member) {
        if (strcmp(*member, login) == 0)
            return true;
    }
    return false;
}

long Utils::getOsBuildNumber()
{
    SInt32 response = 0;
    Gestalt(gestaltSystemVersion, &response);
    return response;
}

WString Utils::getOsVersion()
{
    static WString version;
    return CachedSystemText(version, MakeOsVersion);
}

WString Utils::getOsName()
{
    static WString name;
    return CachedSystemText(name, MakeOsName);
}

WString Utils::getProcessorType()
{
    SInt32 architecture = 0;
    if (Gestalt(gestaltSysArchitecture, &architecture) == noErr) {
        if (architecture == gestalt68k)
            return L"68k";
        if (architecture == gestaltPowerPC)
            return L"PowerPC";
    }
    return L"Intel";
}

WString Utils::getLanguage()
{
    return AdoptString(KORUCopyPreferredLanguage());
}

WString Utils::getCountry()
{
    WString locale = AdoptString(KORUCopyPreferredLocale());
    size_t underscore = locale.find(L'_');
    if (underscore == WString::npos)
        return locale;
    if (underscore + 1 == locale.size())
        return locale.substr(0, underscore);
    return locale.substr(underscore + 1);
}
