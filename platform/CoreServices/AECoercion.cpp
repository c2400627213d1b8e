// Coercion between the basic descriptor types.  Every conversion goes
// through one of three neutral forms: text (UTF-8), a number (integer or
// real) or a file reference, so each type needs only a way in and a way out.
#include <CoreServices/AEDataModel.h>
#include <CoreServices/Aliases.h>
#include <CoreServices/Files.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>
#include <ApplicationServices/Processes.h>
#include <CoreFoundation/CoreFoundation.h>

#include "AEStorage.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <strings.h>
#include <unistd.h>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

bool IsTextType(DescType type)
{
    return type == typeChar || type == typeUTF8Text || type == typeUnicodeText;
}

bool IsIntegerType(DescType type)
{
    return type == typeSInt16 || type == typeSInt32 || type == typeUInt32 || type == typeSInt64;
}

bool IsRealType(DescType type)
{
    return type == typeIEEE32BitFloatingPoint || type == typeIEEE64BitFloatingPoint;
}

bool IsBooleanType(DescType type)
{
    return type == typeBoolean || type == typeTrue || type == typeFalse;
}

bool IsCodeType(DescType type)
{
    return type == typeType || type == typeEnumerated || type == typeKeyword;
}

bool IsFileType(DescType type)
{
    return type == typeAlias || type == typeFSRef || type == typeFileURL;
}

bool IsProcessType(DescType type)
{
    return type == typeProcessSerialNumber || type == typeKernelProcessID;
}

// --- Text: 'TEXT' is in the system encoding, 'utxt' UTF-16 in host order.

bool TextFromString(CFStringRef string, DescType type, Bytes *out)
{
    if (string == nullptr)
        return false;
    const CFIndex length = CFStringGetLength(string);
    if (type == typeUnicodeText) {
        std::vector<UniChar> chars(static_cast<size_t>(length));
        if (length > 0)
            CFStringGetCharacters(string, CFRangeMake(0, length), chars.data());
        const auto *first = reinterpret_cast<const unsigned char *>(chars.data());
        out->assign(first, first + chars.size() * sizeof(UniChar));
        return true;
    }
    const CFStringEncoding encoding = type == typeChar ? CFStringGetSystemEncoding() : CFStringEncoding(kCFStringEncodingUTF8);
    CFIndex used = 0;
    if (CFStringGetBytes(string, CFRangeMake(0, length), encoding, 0, false, nullptr, 0, &used) != length)
        return false;
    out->resize(static_cast<size_t>(used));
    if (used > 0)
        CFStringGetBytes(string, CFRangeMake(0, length), encoding, 0, false, out->data(), used, &used);
    return true;
}

CFStringRef StringFromText(DescType type, const Bytes &bytes)
{
    if (type == typeUnicodeText) {
        if (bytes.size() % 2 != 0)
            return nullptr;
        std::vector<UniChar> chars(bytes.size() / 2);
        if (!bytes.empty())
            std::memcpy(chars.data(), bytes.data(), bytes.size());
        return CFStringCreateWithCharacters(nullptr, chars.data(), static_cast<CFIndex>(chars.size()));
    }
    const CFStringEncoding encoding = type == typeChar ? CFStringGetSystemEncoding() : CFStringEncoding(kCFStringEncodingUTF8);
    return CFStringCreateWithBytes(nullptr, bytes.data(), static_cast<CFIndex>(bytes.size()), encoding, false);
}

bool ConvertText(DescType from, const Bytes &bytes, DescType to, Bytes *out)
{
    CFStringRef string = StringFromText(from, bytes);
    const bool ok = TextFromString(string, to, out);
    if (string != nullptr)
        CFRelease(string);
    return ok;
}

bool Utf8FromText(DescType from, const Bytes &bytes, std::string *out)
{
    Bytes utf8;
    if (!ConvertText(from, bytes, typeUTF8Text, &utf8))
        return false;
    out->assign(utf8.begin(), utf8.end());
    return true;
}

bool TextFromUtf8(const std::string &text, DescType to, Bytes *out)
{
    return ConvertText(typeUTF8Text, Bytes(text.begin(), text.end()), to, out);
}

// --- Numbers.

struct Number {
    bool isReal = false;
    long long integer = 0;
    double real = 0;
};

template <typename T>
bool Read(const Bytes &bytes, T *value)
{
    if (bytes.size() != sizeof(T))
        return false;
    std::memcpy(value, bytes.data(), sizeof(T));
    return true;
}

template <typename T>
Bytes Write(T value)
{
    Bytes out(sizeof(T));
    std::memcpy(out.data(), &value, sizeof(T));
    return out;
}

bool NumberFromDesc(DescType type, const Bytes &bytes, Number *number)
{
    SInt16 s16;
    SInt32 s32;
    UInt32 u32;
    SInt64 s64;
    float f;
    double d;
    Boolean b;
    switch (type) {
    case typeSInt16:
        if (!Read(bytes, &s16))
            return false;
        number->integer = s16;
        return true;
    case typeSInt32:
        if (!Read(bytes, &s32))
            return false;
        number->integer = s32;
        return true;
    case typeUInt32:
        if (!Read(bytes, &u32))
            return false;
        number->integer = u32;
        return true;
    case typeSInt64:
        if (!Read(bytes, &s64))
            return false;
        number->integer = s64;
        return true;
    case typeIEEE32BitFloatingPoint:
        if (!Read(bytes, &f))
            return false;
        number->isReal = true;
        number->real = f;
        return true;
    case typeIEEE64BitFloatingPoint:
        if (!Read(bytes, &d))
            return false;
        number->isReal = true;
        number->real = d;
        return true;
    case typeTrue:
        number->integer = 1;
        return true;
    case typeFalse:
        number->integer = 0;
        return true;
    case typeBoolean:
        if (!Read(bytes, &b))
            return false;
        number->integer = b ? 1 : 0;
        return true;
    default:
        break;
    }
    if (!IsTextType(type))
        return false;
    std::string text;
    if (!Utf8FromText(type, bytes, &text))
        return false;
    const char *start = text.c_str();
    while (*start == ' ' || *start == '\t')
        ++start;
    if (*start == '\0')
        return false;
    char *end = nullptr;
    errno = 0;
    const long long integer = std::strtoll(start, &end, 10);
    if (errno == 0 && *end == '\0') {
        number->integer = integer;
        return true;
    }
    errno = 0;
    const double real = std::strtod(start, &end);
    if (errno != 0 || *end != '\0')
        return false;
    number->isReal = true;
    number->real = real;
    return true;
}

// The integer value of a number when it has one exactly.
bool IntegerOf(const Number &number, long long *value)
{
    if (!number.isReal) {
        *value = number.integer;
        return true;
    }
    if (!std::isfinite(number.real) || std::trunc(number.real) != number.real ||
        std::fabs(number.real) >= 9.2e18)
        return false;
    *value = static_cast<long long>(number.real);
    return true;
}

std::string TextOfNumber(const Number &number)
{
    char text[64];
    if (!number.isReal) {
        std::snprintf(text, sizeof text, "%lld", number.integer);
        return text;
    }
    // The shortest form that reads back as the same real.
    for (int precision = 15; precision <= 17; ++precision) {
        std::snprintf(text, sizeof text, "%.*g", precision, number.real);
        if (std::strtod(text, nullptr) == number.real)
            break;
    }
    return text;
}

bool NumberToDesc(const Number &number, DescType to, Bytes *out)
{
    long long integer = 0;
    if (IsIntegerType(to) || IsBooleanType(to)) {
        if (!IntegerOf(number, &integer))
            return false;
    }
    switch (to) {
    case typeSInt16:
        if (integer < std::numeric_limits<SInt16>::min() || integer > std::numeric_limits<SInt16>::max())
            return false;
        *out = Write(static_cast<SInt16>(integer));
        return true;
    case typeSInt32:
        if (integer < std::numeric_limits<SInt32>::min() || integer > std::numeric_limits<SInt32>::max())
            return false;
        *out = Write(static_cast<SInt32>(integer));
        return true;
    case typeUInt32:
        if (integer < 0 || integer > std::numeric_limits<UInt32>::max())
            return false;
        *out = Write(static_cast<UInt32>(integer));
        return true;
    case typeSInt64:
        *out = Write(static_cast<SInt64>(integer));
        return true;
    case typeIEEE32BitFloatingPoint:
        *out = Write(static_cast<float>(number.isReal ? number.real : static_cast<double>(number.integer)));
        return true;
    case typeIEEE64BitFloatingPoint:
        *out = Write(number.isReal ? number.real : static_cast<double>(number.integer));
        return true;
    case typeBoolean:
        if (integer != 0 && integer != 1)
            return false;
        *out = Write(static_cast<Boolean>(integer));
        return true;
    default:
        break;
    }
    if (IsTextType(to))
        return TextFromUtf8(TextOfNumber(number), to, out);
    return false;
}

// --- Booleans from text: "true" and "false" in any case.

bool BooleanFromText(DescType type, const Bytes &bytes, Boolean *value)
{
    std::string text;
    if (!Utf8FromText(type, bytes, &text))
        return false;
    if (strcasecmp(text.c_str(), "true") == 0) {
        *value = true;
        return true;
    }
    if (strcasecmp(text.c_str(), "false") == 0) {
        *value = false;
        return true;
    }
    return false;
}

// --- File references: every file type passes through an FSRef.

bool RefFromDesc(DescType type, const Bytes &bytes, FSRef *ref)
{
    if (type == typeFSRef)
        return Read(bytes, ref);
    if (type == typeAlias) {
        if (bytes.empty())
            return false;
        Handle handle = nullptr;
        if (PtrToHand(bytes.data(), &handle, static_cast<long>(bytes.size())) != noErr)
            return false;
        Boolean changed = false;
        const OSErr err = FSResolveAlias(nullptr, reinterpret_cast<AliasHandle>(handle), ref, &changed);
        DisposeHandle(handle);
        return err == noErr;
    }
    if (type == typeFileURL) {
        CFURLRef url = CFURLCreateWithBytes(nullptr, bytes.data(), static_cast<CFIndex>(bytes.size()),
                                            kCFStringEncodingUTF8, nullptr);
        const bool ok = url != nullptr && CFURLGetFSRef(url, ref);
        if (url != nullptr)
            CFRelease(url);
        return ok;
    }
    if (IsTextType(type)) {
        std::string path;
        return Utf8FromText(type, bytes, &path) && !path.empty() && path[0] == '/' &&
               FSPathMakeRef(reinterpret_cast<const UInt8 *>(path.c_str()), ref, nullptr) == noErr;
    }
    return false;
}

bool PathOfRef(const FSRef &ref, std::string *path)
{
    std::vector<UInt8> buffer(4096);
    if (FSRefMakePath(&ref, buffer.data(), static_cast<UInt32>(buffer.size())) != noErr)
        return false;
    path->assign(reinterpret_cast<const char *>(buffer.data()));
    return true;
}

bool RefToDesc(const FSRef &ref, DescType to, Bytes *out)
{
    if (to == typeFSRef) {
        *out = Write(ref);
        return true;
    }
    if (to == typeAlias) {
        AliasHandle alias = nullptr;
        if (FSNewAliasMinimal(&ref, &alias) != noErr || alias == nullptr)
            return false;
        const Size size = GetHandleSize(reinterpret_cast<Handle>(alias));
        const auto *first = reinterpret_cast<const unsigned char *>(*alias);
        out->assign(first, first + size);
        DisposeHandle(reinterpret_cast<Handle>(alias));
        return true;
    }
    if (to == typeFileURL) {
        CFURLRef url = CFURLCreateFromFSRef(nullptr, &ref);
        if (url == nullptr)
            return false;
        const bool ok = TextFromString(CFURLGetString(url), typeUTF8Text, out);
        CFRelease(url);
        return ok;
    }
    std::string path;
    return IsTextType(to) && PathOfRef(ref, &path) && TextFromUtf8(path, to, out);
}

// --- Processes: a serial number is {0, pid}; kCurrentProcess is ours.

bool PidFromDesc(DescType type, const Bytes &bytes, pid_t *pid)
{
    if (type == typeKernelProcessID)
        return Read(bytes, pid);
    ProcessSerialNumber psn;
    if (!Read(bytes, &psn) || psn.highLongOfPSN != 0 || psn.lowLongOfPSN < kSystemProcess)
        return false;
    *pid = psn.lowLongOfPSN == kCurrentProcess ? getpid() : static_cast<pid_t>(psn.lowLongOfPSN);
    return true;
}

bool Coerce(DescType from, const Bytes &bytes, DescType to, Bytes *out)
{
    if (IsTextType(from) && IsTextType(to))
        return ConvertText(from, bytes, to, out);
    if (IsBooleanType(to) && IsTextType(from)) {
        Boolean value = false;
        if (!BooleanFromText(from, bytes, &value))
            return false;
        *out = Write(value);
        return true;
    }
    if (IsTextType(to) && IsBooleanType(from)) {
        Number number;
        return NumberFromDesc(from, bytes, &number) && TextFromUtf8(number.integer ? "true" : "false", to, out);
    }
    const bool numberIn = IsIntegerType(from) || IsRealType(from) || IsBooleanType(from) || IsTextType(from);
    const bool numberOut = IsIntegerType(to) || IsRealType(to) || to == typeBoolean || IsTextType(to);
    if (numberIn && numberOut && !(IsTextType(from) && IsTextType(to))) {
        Number number;
        return NumberFromDesc(from, bytes, &number) && NumberToDesc(number, to, out);
    }
    if ((IsCodeType(from) || IsTextType(from)) && IsCodeType(to)) {
        if (IsCodeType(from)) {
            *out = bytes;
            return bytes.size() == 4;
        }
        // A code is a number whose bytes, high first, are its four characters.
        Bytes characters;
        if (!ConvertText(from, bytes, typeChar, &characters) || characters.size() != 4)
            return false;
        OSType code = 0;
        for (unsigned char c : characters)
            code = (code << 8) | c;
        *out = Write(code);
        return true;
    }
    if (IsCodeType(from) && IsTextType(to)) {
        OSType code = 0;
        if (!Read(bytes, &code))
            return false;
        Bytes characters;
        for (int shift = 24; shift >= 0; shift -= 8)
            characters.push_back(static_cast<unsigned char>(code >> shift));
        return ConvertText(typeChar, characters, to, out);
    }
    if ((IsFileType(from) || IsTextType(from)) && (IsFileType(to) || IsTextType(to))) {
        FSRef ref;
        return RefFromDesc(from, bytes, &ref) && RefToDesc(ref, to, out);
    }
    if (IsProcessType(from) && IsProcessType(to)) {
        pid_t pid = 0;
        if (!PidFromDesc(from, bytes, &pid))
            return false;
        if (to == typeKernelProcessID) {
            *out = Write(pid);
        } else {
            ProcessSerialNumber psn = {0, static_cast<UInt32>(pid)};
            *out = Write(psn);
        }
        return true;
    }
    return false;
}

} // namespace

extern "C" OSErr AECoerceDesc(const AEDesc *theAEDesc, DescType toType, AEDesc *result)
{
    if (theAEDesc == nullptr || result == nullptr)
        return paramErr;
    if (theAEDesc == result)
        return paramErr;
    AEInitializeDesc(result);
    const DescType from = theAEDesc->descriptorType;
    if (toType == typeWildCard || toType == from)
        return AEDuplicateDesc(theAEDesc, result);
    const OpaqueAEDataStorageType *storage = theAEDesc->dataHandle;
    const bool container = storage != nullptr && storage->kind != koru::ae::Kind::plain;
    if (toType == typeAEList) {
        // An item becomes a list of one item.
        OSErr err = AECreateList(nullptr, 0, false, result);
        if (err == noErr)
            err = AEPutDesc(result, 0, theAEDesc);
        if (err != noErr)
            AEDisposeDesc(result);
        return err;
    }
    if (container) {
        // A record keeps its items under another type (a record of a class).
        if (storage->kind != koru::ae::Kind::record || toType == typeAppleEvent)
            return errAECoercionFail;
        OSErr err = AEDuplicateDesc(theAEDesc, result);
        if (err == noErr)
            result->descriptorType = toType;
        return err;
    }
    try {
        static const Bytes empty;
        Bytes out;
        if (!Coerce(from, storage != nullptr ? storage->bytes : empty, toType, &out))
            return errAECoercionFail;
        return AECreateDesc(toType, out.data(), static_cast<Size>(out.size()), result);
    } catch (...) {
        return memFullErr;
    }
}

extern "C" OSErr AECoercePtr(DescType typeCode, const void *dataPtr, Size dataSize, DescType toType,
                             AEDesc *result)
{
    if (result == nullptr)
        return paramErr;
    AEDesc source;
    OSErr err = AECreateDesc(typeCode, dataPtr, dataSize, &source);
    if (err != noErr) {
        AEInitializeDesc(result);
        return err;
    }
    err = AECoerceDesc(&source, toType, result);
    AEDisposeDesc(&source);
    return err;
}
