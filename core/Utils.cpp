// Utils: number and text conversions, hexadecimal and GUID text, trimming and
// version comparison.  None of them keeps state.
#include <KORU/Utils.h>

#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

std::string Utils::long2string(long v)
{
    char text[32];
    std::snprintf(text, sizeof text, "%ld", v);
    return text;
}

std::string Utils::int2string(int v)
{
    char text[16];
    std::snprintf(text, sizeof text, "%d", v);
    return text;
}

long Utils::string2long(const std::string &s)
{
    return std::atol(s.c_str());
}

int Utils::string2int(const std::string &s)
{
    return std::atoi(s.c_str());
}

WString Utils::long2wstring(long v)
{
    return string2wstring(long2string(v));
}

WString Utils::int2wstring(int v)
{
    return string2wstring(int2string(v));
}

long Utils::wstring2long(const WString &s)
{
    return std::atol(wstring2string(s).c_str());
}

int Utils::wstring2int(const WString &s)
{
    return std::atoi(wstring2string(s).c_str());
}

WString Utils::string2wstring(const std::string &s)
{
    WString wide;
    wide.reserve(s.size());
    for (char c : s)
        wide.push_back(static_cast<wchar_t>(static_cast<signed char>(c)));
    return wide;
}

std::string Utils::wstring2string(const WString &s)
{
    std::string narrow;
    narrow.reserve(s.size());
    for (wchar_t c : s)
        narrow.push_back(static_cast<char>(c & 0xFF));
    return narrow;
}

std::string Utils::wstring2utf8(const WString &s)
{
    std::string utf8;
    utf8.reserve(s.size());
    for (wchar_t element : s) {
        int32_t c = static_cast<int32_t>(element);
        if (c <= 127) {
            utf8.push_back(static_cast<char>(c & 0x7F));
        } else if (c <= 2047) {
            utf8.push_back(static_cast<char>(0xC0 | (c >> 6)));
            utf8.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        } else if (c <= 65535) {
            // Surrogate values are written like any other code point.
            utf8.push_back(static_cast<char>(0xE0 | (c >> 12)));
            utf8.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
            utf8.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        }
        // Beyond the Basic Multilingual Plane nothing is written: the text's
        // consumers have never been given four-byte sequences.
    }
    return utf8;
}

wchar_t *Utils::wshort2wchar(unsigned short *s)
{
    if (s == nullptr)
        return nullptr;
    size_t n = 0;
    while (s[n] != 0)
        ++n;
    wchar_t *wide = new wchar_t[n + 1];
    for (size_t i = 0; i < n; ++i)
        wide[i] = static_cast<wchar_t>(s[i]);
    wide[n] = 0;
    return wide;
}

WString Utils::wshort2wstring(unsigned short *s)
{
    wchar_t *wide = wshort2wchar(s);
    if (wide == nullptr)
        return WString();
    WString result(wide);
    delete[] wide;
    return result;
}

std::string Utils::bytesize2string(unsigned long n)
{
    if (n <= 1024)
        return long2string(static_cast<long>(n)) + " Bytes";
    unsigned long k = n >> 10;
    if (k <= 1024)
        return long2string(static_cast<long>(k)) + " KB";
    return long2string(static_cast<long>(k >> 10)) + " MB";
}

std::string Utils::toHexString(unsigned char *bytes, unsigned long n)
{
    if (bytes == nullptr || n == 0 || n > (SIZE_MAX - 1) / 2)
        return std::string();
    char *text = static_cast<char *>(std::malloc(2 * n + 1));
    if (text == nullptr)
        return std::string();
    for (unsigned long i = 0; i < n; ++i)
        std::snprintf(text + 2 * i, 3, "%2.2x", bytes[i]);
    std::string result(text, 2 * n);
    std::free(text);
    return result;
}

std::string Utils::generateGUID()
{
    CFUUIDRef uuid = CFUUIDCreate(kCFAllocatorDefault);
    if (uuid == nullptr)
        return std::string();
    CFStringRef text = CFUUIDCreateString(kCFAllocatorDefault, uuid);
    CFRelease(uuid);
    if (text == nullptr)
        return std::string();
    char buffer[100] = {0};
    Boolean converted = CFStringGetCString(text, buffer, sizeof buffer, kCFStringEncodingASCII);
    CFRelease(text);
    return converted ? std::string(buffer) : std::string();
}

std::string Utils::trim_left(const std::string &s, const std::string &chars)
{
    size_t first = s.find_first_not_of(chars);
    return first == std::string::npos ? std::string() : s.substr(first);
}

std::string Utils::trim_right(const std::string &s, const std::string &chars)
{
    size_t last = s.find_last_not_of(chars);
    return last == std::string::npos ? std::string() : s.substr(0, last + 1);
}

std::string Utils::trim(const std::string &s, const std::string &chars)
{
    return trim_left(trim_right(s, chars), chars);
}

std::vector<long> split_version(const WString &v)
{
    std::vector<long> components;
    WString::size_type start = 0;
    WString::size_type dot;
    // Empty pieces (doubled, leading or trailing dots) leave no component.
    while ((dot = v.find(L'.', start)) != WString::npos) {
        if (dot > start)
            components.push_back(Utils::wstring2long(v.substr(start, dot - start)));
        start = dot + 1;
    }
    if (start < v.size())
        components.push_back(Utils::wstring2long(v.substr(start)));
    return components;
}

int Utils::compare_version(const WString &a, const WString &b)
{
    std::vector<long> first = split_version(a);
    std::vector<long> second = split_version(b);
    size_t shared = std::min(first.size(), second.size());
    for (size_t i = 0; i < shared; ++i) {
        if (first[i] < second[i])
            return -1;
        if (first[i] > second[i])
            return 1;
    }
    // Equal so far: the longer list wins, so 1.2 comes before 1.2.0.
    if (first.size() < second.size())
        return -1;
    return first.size() > second.size() ? 1 : 0;
}
