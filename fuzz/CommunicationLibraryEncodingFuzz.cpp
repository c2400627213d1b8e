// The URL and form encoders on any bytes: the URL form decodes back to the
// input, and neither form holds a byte outside the URL set and "%".
#include <KORU/CommunicationLibrary.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

bool IsURLByte(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           (c != '\0' && std::strchr("-_.+!*'(),;/?:@=&%", c) != nullptr);
}

std::string Decode(const std::string &text)
{
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            out += static_cast<char>(std::strtol(text.substr(i + 1, 2).c_str(), nullptr, 16));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::string input(reinterpret_cast<const char *>(data), size);
    std::string url = CommunicationLibrary::EncodeUrl(input);
    std::string form = CommunicationLibrary::EncodeFormValue(input);
    for (char c : url + form)
        if (!IsURLByte(c))
            std::abort();
    if (Decode(url) != input)
        std::abort();
    return 0;
}
