// CF string and range helpers.
#include <KORU/CFStringUtilities.h>

#include <CoreServices/MacErrors.h>

#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

bool IsString(CFTypeRef object)
{
    return object != nullptr && CFGetTypeID(object) == CFStringGetTypeID();
}

// Calls attempt with the system encoding, then with each available encoding
// in list order, until one succeeds.
template <typename Attempt>
bool TryConvertableEncodings(Attempt attempt)
{
    if (attempt(CFStringGetSystemEncoding()))
        return true;
    const CFStringEncoding *encodings = CFStringGetListOfAvailableEncodings();
    if (encodings == nullptr)
        return false;
    for (; *encodings != kCFStringEncodingInvalidId; ++encodings)
        if (attempt(*encodings))
            return true;
    return false;
}

// Room for every UTF-16 unit as two bytes and a terminator: the buffer size
// of the Alloc conversions (too small for some multibyte encodings, which
// then fail and leave the next encoding to try).
CFIndex AllocSizeOf(CFStringRef string)
{
    CFIndex length = CFStringGetLength(string);
    return length < 0 ? -1 : length * 2 + 1;
}

CFIndex Clamp(CFIndex value, CFIndex low, CFIndex high)
{
    return value < low ? low : (value > high ? high : value);
}

// a + b without overflow, pinned to the CFIndex range.
CFIndex SaturatingAdd(CFIndex a, CFIndex b)
{
    CFIndex sum;
    if (!__builtin_add_overflow(a, b, &sum))
        return sum;
    return b > 0 ? LONG_MAX : LONG_MIN;
}

CFIndex SaturatingSubtract(CFIndex a, CFIndex b)
{
    CFIndex difference;
    if (!__builtin_sub_overflow(a, b, &difference))
        return difference;
    return b < 0 ? LONG_MAX : LONG_MIN;
}

} // namespace

extern "C" char *CFStringAllocCString(CFStringRef string, CFStringEncoding encoding)
{
    if (!IsString(string))
        return nullptr;
    const CFIndex size = AllocSizeOf(string);
    if (size < 1)
        return nullptr;
    char *buffer = static_cast<char *>(calloc(static_cast<size_t>(size), 1));
    if (buffer == nullptr)
        return nullptr;
    if (!CFStringGetCString(string, buffer, size, encoding)) {
        free(buffer);
        return nullptr;
    }
    return buffer;
}

extern "C" char *CFStringAllocConvertableCString(CFStringRef string)
{
    if (!IsString(string))
        return nullptr;
    char *result = nullptr;
    TryConvertableEncodings([&](CFStringEncoding encoding) {
        result = CFStringAllocCString(string, encoding);
        return result != nullptr;
    });
    return result;
}

extern "C" Boolean CFStringGetConvertableCString(CFStringRef string, char *buffer, CFIndex bufferSize)
{
    if (!IsString(string) || buffer == nullptr || bufferSize < 1)
        return false;
    return TryConvertableEncodings([&](CFStringEncoding encoding) {
        return CFStringGetCString(string, buffer, bufferSize, encoding) != 0;
    });
}

extern "C" Boolean CFStringGetConvertablePascalString(CFStringRef string, StringPtr buffer, CFIndex bufferSize)
{
    if (!IsString(string) || buffer == nullptr || bufferSize < 1)
        return false;
    return TryConvertableEncodings([&](CFStringEncoding encoding) {
        return CFStringGetPascalString(string, buffer, bufferSize, encoding) != 0;
    });
}

extern "C" CFIndex CFStringGetASCIICString(CFStringRef string, char *buffer, CFIndex bufferSize)
{
    if (!IsString(string) || buffer == nullptr || bufferSize < 1)
        return 0;
    memset(buffer, 0, static_cast<size_t>(bufferSize));
    CFIndex count = 0;
    const CFIndex length = CFStringGetLength(string);
    for (CFIndex i = 0; i < length; ++i) {
        const UniChar c = CFStringGetCharacterAtIndex(string, i);
        if (c >= 128)
            continue;
        buffer[count++] = static_cast<char>(c);
        // Checked after the store, so a one-byte buffer still takes a character.
        if (count >= bufferSize - 1)
            break;
    }
    return count;
}

extern "C" char *CFStringAllocASCIICString(CFStringRef string)
{
    if (!IsString(string))
        return nullptr;
    const CFIndex size = AllocSizeOf(string);
    if (size < 1)
        return nullptr;
    char *buffer = static_cast<char *>(calloc(static_cast<size_t>(size), 1));
    if (buffer != nullptr)
        CFStringGetASCIICString(string, buffer, size);
    return buffer;
}

extern "C" UniChar *CFStringAllocUnicodeCharacters(CFStringRef string)
{
    if (!IsString(string))
        return nullptr;
    const CFIndex length = CFStringGetLength(string);
    if (length < 0)
        return nullptr;
    UniChar *characters = static_cast<UniChar *>(calloc(static_cast<size_t>(length) + 1, sizeof(UniChar)));
    if (characters != nullptr && length > 0)
        CFStringGetCharacters(string, CFRangeMake(0, length), characters);
    return characters;
}

extern "C" char *CFStringAllocTECConvertedText(CFStringRef string, TextEncoding destinationEncoding,
                                               ByteCount bytesPerCharacter, ByteCount *consumedInputLength,
                                               ByteCount *outputLength, OSStatus *status)
{
    ByteCount consumed = 0, produced = 0;
    OSStatus result = noErr;
    char *output = nullptr;
    const CFIndex length = IsString(string) ? CFStringGetLength(string) : -1;
    if (length >= 0) {
        const size_t outputSize = (bytesPerCharacter != 0 ? bytesPerCharacter : 4) * static_cast<size_t>(length) + 1;
        output = static_cast<char *>(calloc(outputSize, 1));
        UniChar *characters = output != nullptr ? CFStringAllocUnicodeCharacters(string) : nullptr;
        if (characters != nullptr) {
            TECObjectRef converter = nullptr;
            result = TECCreateConverter(&converter, kTextEncodingUnicodeDefault, destinationEncoding);
            if (result == noErr) {
                // The whole buffer is offered: the zero after the text survives
                // whenever the text keeps within bytesPerCharacter per character.
                result = TECConvertText(converter, reinterpret_cast<ConstTextPtr>(characters),
                                        static_cast<ByteCount>(length) * sizeof(UniChar), &consumed,
                                        reinterpret_cast<TextPtr>(output), outputSize, &produced);
                TECDisposeConverter(converter);
            }
            free(characters);
        }
    }
    if (consumedInputLength != nullptr)
        *consumedInputLength = consumed;
    if (outputLength != nullptr)
        *outputLength = produced;
    if (status != nullptr)
        *status = result;
    return output;
}

extern "C" Boolean CFStringGetHFSUniStr255(CFStringRef string, HFSUniStr255 *name)
{
    if (name == nullptr)
        return false;
    memset(name, 0, sizeof *name);
    if (!IsString(string))
        return false;
    const CFIndex length = CFStringGetLength(string);
    const CFIndex capacity = sizeof name->unicode / sizeof name->unicode[0];
    if (length < 1 || length > capacity)
        return false;
    CFStringGetCharacters(string, CFRangeMake(0, length), name->unicode);
    name->length = static_cast<UInt16>(length);
    return true;
}

extern "C" CFStringRef CFStringCreateWithAEDesc(const AEDesc *desc, CFStringEncoding encoding)
{
    if (desc == nullptr || desc->descriptorType != typeText)
        return nullptr;
    const Size size = AEGetDescDataSize(desc);
    char *text = static_cast<char *>(calloc(static_cast<size_t>(size) + 1, 1));
    if (text == nullptr)
        return nullptr;
    CFStringRef result = nullptr;
    if (AEGetDescData(desc, text, size) == noErr)
        result = CFStringCreateWithCString(kCFAllocatorDefault, text, encoding);
    free(text);
    return result;
}

extern "C" Boolean CFStringIsVoid(CFStringRef string)
{
    return !IsString(string) || CFStringGetLength(string) == 0;
}

extern "C" Boolean CFStringIsExist(CFStringRef path)
{
    if (!IsString(path))
        return false;
    CFURLRef url = CFURLCreateWithFileSystemPath(kCFAllocatorDefault, path, kCFURLPOSIXPathStyle, false);
    if (url == nullptr)
        return false;
    FSRef ref;
    const Boolean exists = CFURLGetFSRef(url, &ref);
    CFRelease(url);
    return exists;
}

extern "C" CFTypeRef CFTypeRetain(CFTypeRef object)
{
    return object != nullptr ? CFRetain(object) : nullptr;
}

extern "C" Boolean CFTypeIsEqualTo(CFTypeRef a, CFTypeRef b)
{
    return a != nullptr && b != nullptr && CFEqual(a, b);
}

extern "C" int CFString_system(CFStringRef command)
{
    if (!IsString(command))
        return -1;
    char *text = CFStringAllocCString(command, kCFStringEncodingUTF8);
    if (text == nullptr)
        text = CFStringAllocConvertableCString(command);
    if (text == nullptr)
        return -1;
    const int result = system(text);
    free(text);
    return result;
}

extern "C" int CFStringApplySystemCommand(CFStringRef argument, CFStringRef prefix, CFStringRef suffix)
{
    // A part that is not text must not leave the others to run as a command.
    if (!IsString(argument) || (prefix != nullptr && !IsString(prefix)) || (suffix != nullptr && !IsString(suffix)))
        return -1;
    CFMutableStringRef command = CFStringCreateMutableCopy(kCFAllocatorDefault, 0, argument);
    if (command == nullptr)
        return -1;
    if (prefix != nullptr) {
        CFStringInsert(command, 0, CFSTR(" "));
        CFStringInsert(command, 0, prefix);
    }
    if (suffix != nullptr) {
        CFStringAppend(command, CFSTR(" "));
        CFStringAppend(command, suffix);
    }
    const int result = CFString_system(command);
    CFRelease(command);
    return result;
}

extern "C" void CFRangeMove(CFRange *range, CFIndex delta)
{
    if (range == nullptr)
        return;
    const CFIndex location = SaturatingAdd(range->location, delta);
    range->location = location < 0 ? 0 : location;
}

extern "C" void CFRangeMoveLeftTo(CFRange *range, CFIndex newLocation)
{
    if (range == nullptr || newLocation < 0)
        return;
    range->location = newLocation;
}

extern "C" void CFRangeMoveRightTo(CFRange *range, CFIndex newEnd)
{
    if (range == nullptr)
        return;
    const CFIndex location = SaturatingSubtract(newEnd, range->length);
    range->location = location < 0 ? 0 : location;
}

extern "C" void CFRangeResizeLeft(CFRange *range, CFIndex delta)
{
    if (range == nullptr)
        return;
    delta = Clamp(delta, -range->length, range->location);
    range->location -= delta;
    range->length += delta;
}

extern "C" void CFRangeResizeLeftTo(CFRange *range, CFIndex newLocation)
{
    if (range == nullptr)
        return;
    const CFIndex end = SaturatingAdd(range->location, range->length);
    newLocation = Clamp(newLocation, 0, end < 0 ? 0 : end);
    range->length = end - newLocation;
    range->location = newLocation;
}

extern "C" void CFRangeResizeRight(CFRange *range, CFIndex delta, CFIndex limit)
{
    if (range == nullptr)
        return;
    if (delta < -range->length)
        delta = -range->length;
    range->length = SaturatingAdd(range->length, delta);
    if (limit >= 0 && SaturatingAdd(range->location, range->length) > limit) {
        const CFIndex length = limit - range->location;
        range->length = length < 0 ? 0 : length;
    }
}

extern "C" void CFRangeResizeRightTo(CFRange *range, CFIndex newEnd)
{
    if (range == nullptr)
        return;
    range->length = range->location <= newEnd ? SaturatingSubtract(newEnd, range->location) : 0;
}

extern "C" Boolean PascalStringCopy(ConstStr255Param source, StringPtr destination)
{
    if (source == nullptr || destination == nullptr)
        return false;
    memmove(destination, source, static_cast<size_t>(source[0]) + 1);
    return true;
}

extern "C" size_t UTF8StringGetLength(const char *text)
{
    return text != nullptr ? strlen(text) : 0;
}
