// Version and number text: the first line against the rest as versions,
// both as numbers, and the bytes as hexadecimal text.
#include <KORU/Utils.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

WString Widen(const std::string &text)
{
    WString wide;
    for (unsigned char c : text)
        wide.push_back(static_cast<wchar_t>(c));
    return wide;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::string text(reinterpret_cast<const char *>(data), size);
    const size_t newline = text.find('\n');
    const std::string first = text.substr(0, newline);
    const std::string rest = newline == std::string::npos ? std::string() : text.substr(newline + 1);
    const WString a = Widen(first), b = Widen(rest);

    const int order = Utils::compare_version(a, b);
    if (order != -Utils::compare_version(b, a) || Utils::compare_version(a, a) != 0)
        __builtin_trap(); // the order must be antisymmetric and reflexive
    (void)Utils::string2long(first);
    (void)Utils::wstring2long(b);
    (void)Utils::string2int(rest);
    const std::string hex = Utils::toHexString(reinterpret_cast<unsigned char *>(text.data()), text.size());
    if (hex.size() != 2 * size)
        __builtin_trap();
    return 0;
}
