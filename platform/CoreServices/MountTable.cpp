#include "MountTable.h"

#include <cstdio>
#include <cstdlib>
#include <limits>

namespace filemanager {

namespace {

bool IsOctalDigit(char c)
{
    return c >= '0' && c <= '7';
}

// Decimal digits only, no sign and no blanks: strtoul would take " -1".
bool ParseNumber(std::string_view text, unsigned long maximum, unsigned long &value)
{
    if (text.empty())
        return false;
    unsigned long result = 0;
    for (char c : text) {
        if (c < '0' || c > '9')
            return false;
        const unsigned long digit = static_cast<unsigned long>(c - '0');
        if (result > (maximum - digit) / 10)
            return false;
        result = result * 10 + digit;
    }
    value = result;
    return true;
}

bool ParseDevice(std::string_view text, unsigned int &major, unsigned int &minor)
{
    const std::string_view::size_type colon = text.find(':');
    if (colon == std::string_view::npos)
        return false;
    unsigned long majorValue = 0, minorValue = 0;
    constexpr unsigned long kMaximum = std::numeric_limits<unsigned int>::max();
    if (!ParseNumber(text.substr(0, colon), kMaximum, majorValue) ||
        !ParseNumber(text.substr(colon + 1), kMaximum, minorValue))
        return false;
    major = static_cast<unsigned int>(majorValue);
    minor = static_cast<unsigned int>(minorValue);
    return true;
}

// The kernel separates fields with exactly one blank and escapes blanks
// inside them, so an empty field (a mount source of "") is two blanks in a row.
std::vector<std::string_view> SplitFields(std::string_view line)
{
    std::vector<std::string_view> fields;
    std::string_view::size_type start = 0;
    for (;;) {
        const std::string_view::size_type blank = line.find(' ', start);
        if (blank == std::string_view::npos) {
            fields.push_back(line.substr(start));
            return fields;
        }
        fields.push_back(line.substr(start, blank - start));
        start = blank + 1;
    }
}

} // namespace

std::string DecodeMountField(std::string_view field)
{
    std::string out;
    out.reserve(field.size());
    for (std::string_view::size_type i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && field.size() - i >= 4 && field[i + 1] >= '0' && field[i + 1] <= '3' &&
            IsOctalDigit(field[i + 2]) && IsOctalDigit(field[i + 3])) {
            out += static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 +
                                     (field[i + 3] - '0'));
            i += 3;
        } else {
            out += field[i];
        }
    }
    return out;
}

bool ParseMountInfoLine(std::string_view line, MountEntry &entry)
{
    entry = MountEntry();
    if (!line.empty() && line.back() == '\n')
        line.remove_suffix(1);
    const std::vector<std::string_view> fields = SplitFields(line);
    // Six fixed fields, the separator, and three fields after it.
    if (fields.size() < 10)
        return false;
    std::vector<std::string_view>::size_type separator = 6;
    while (separator < fields.size() && fields[separator] != "-")
        ++separator;
    if (separator + 3 >= fields.size())
        return false;

    MountEntry parsed;
    constexpr unsigned long kMaximum = std::numeric_limits<unsigned long>::max();
    if (!ParseNumber(fields[0], kMaximum, parsed.mountID) || !ParseNumber(fields[1], kMaximum, parsed.parentID) ||
        !ParseDevice(fields[2], parsed.major, parsed.minor))
        return false;
    parsed.root = DecodeMountField(fields[3]);
    parsed.mountPoint = DecodeMountField(fields[4]);
    parsed.mountOptions = DecodeMountField(fields[5]);
    for (auto i = 6u; i < separator; ++i)
        parsed.optionalFields.push_back(DecodeMountField(fields[i]));
    parsed.fsType = DecodeMountField(fields[separator + 1]);
    parsed.source = DecodeMountField(fields[separator + 2]);
    parsed.superOptions = DecodeMountField(fields[separator + 3]);
    entry = std::move(parsed);
    return true;
}

bool ReadMountTable(std::vector<MountEntry> &table, const char *path)
{
    table.clear();
    if (path == nullptr)
        return false;
    FILE *file = std::fopen(path, "re");
    if (file == nullptr)
        return false;
    // Lines have no length limit: a mount point may be as long as PATH_MAX
    // after escaping, four bytes per byte.
    char *line = nullptr;
    size_t capacity = 0;
    ssize_t length;
    MountEntry entry;
    while ((length = getline(&line, &capacity, file)) >= 0) {
        if (ParseMountInfoLine(std::string_view(line, static_cast<size_t>(length)), entry))
            table.push_back(std::move(entry));
    }
    std::free(line);
    std::fclose(file);
    return true;
}

} // namespace filemanager
