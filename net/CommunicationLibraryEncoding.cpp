/* CommunicationLibrary's text encoders for URLs and form bodies.  Both work
 * on bytes, so every byte of a UTF-8 sequence is encoded on its own. */
#include <KORU/CommunicationLibrary.h>

#include <cstring>

namespace {

bool IsCopiedAsItStands(unsigned char byte)
{
    static const char kPunctuation[] = "-_.+!*'(),;/?:@=&";
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
           (byte != '\0' && std::strchr(kPunctuation, byte) != nullptr);
}

void AppendEscaped(std::string &out, unsigned char byte)
{
    static const char kHexDigits[] = "0123456789ABCDEF";
    out += '%';
    out += kHexDigits[byte >> 4];
    out += kHexDigits[byte & 0x0F];
}

/* A "+" of the input stays "+" in a form value, so a receiver cannot tell it
 * from an encoded space; hosts rely on the encoding as it is. */
std::string Encode(const std::string &text, bool formValue)
{
    std::string out;
    out.reserve(text.size() * 3);
    for (unsigned char byte : text) {
        if (IsCopiedAsItStands(byte))
            out += static_cast<char>(byte);
        else if (formValue && byte == ' ')
            out += '+';
        else if (formValue && byte == '\n')
            out += "%0D%0A";
        else
            AppendEscaped(out, byte);
    }
    return out;
}

} // namespace

std::string CommunicationLibrary::EncodeUrl(const std::string &text)
{
    return Encode(text, false);
}

std::string CommunicationLibrary::EncodeFormValue(const std::string &text)
{
    return Encode(text, true);
}
