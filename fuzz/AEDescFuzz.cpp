// Flattened Apple Event descriptors as another process might send them: any
// bytes must read back as a descriptor or be refused, never overrun, and a
// descriptor that reads must flatten to the same bytes again.
#include <CoreServices/AEDataModel.h>
#include <CoreServices/MacErrors.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

void Walk(const AEDesc *desc, int depth)
{
    long count = 0;
    if (depth > 8 || AECountItems(desc, &count) != noErr)
        return;
    for (long i = 1; i <= count; ++i) {
        AEDesc item;
        if (AEGetNthDesc(desc, i, typeWildCard, nullptr, &item) == noErr) {
            Walk(&item, depth + 1);
            AEDesc text;
            if (AECoerceDesc(&item, typeUTF8Text, &text) == noErr)
                AEDisposeDesc(&text);
        }
        AEDisposeDesc(&item);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 4 || size > (1u << 20))
        return 0;
    // The stream starts with its own length; make it say the truth.
    std::vector<uint8_t> bytes(data, data + size);
    const uint32_t total = static_cast<uint32_t>(size);
    for (int i = 0; i < 4; ++i)
        bytes[i] = static_cast<uint8_t>(total >> (24 - 8 * i));
    AEDesc desc;
    if (AEUnflattenDesc(bytes.data(), &desc) != noErr)
        return 0;
    Walk(&desc, 0);
    const Size flatSize = AESizeOfFlattenedDesc(&desc);
    std::vector<char> again(static_cast<size_t>(flatSize));
    Size written = 0;
    if (AEFlattenDesc(&desc, again.data(), flatSize, &written) != noErr || written != flatSize)
        std::abort();
    AEDesc copy;
    if (AEUnflattenDesc(again.data(), &copy) != noErr || AESizeOfFlattenedDesc(&copy) != flatSize)
        std::abort();
    AEDisposeDesc(&copy);
    AEDisposeDesc(&desc);
    return 0;
}
