// PNG and JPEG decoding of outside data: every input is decoded both ways.
// A decoded image must be whole: a positive size and exactly its rows of
// pixel bytes, every one of which can be read.
#include <CoreGraphics/CoreGraphics.h>

#include "../platform/CoreGraphics/CGInternal.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

void Check(CGImageRef image)
{
    if (image == nullptr)
        return;
    const size_t width = CGImageGetWidth(image), height = CGImageGetHeight(image);
    const size_t components = CGImageGetBitsPerPixel(image) / 8;
    CGDataProviderRef pixels = CGImageGetDataProvider(image);
    if (width == 0 || height == 0 || components < 1 || components > 4 || CGImageGetBitsPerComponent(image) != 8 ||
        CGImageGetBytesPerRow(image) != width * components || pixels == nullptr ||
        pixels->length != CGImageGetBytesPerRow(image) * height)
        std::abort();
    unsigned sum = 0;
    for (size_t i = 0; i < pixels->length; i += 4093)
        sum += pixels->bytes[i];
    sum += pixels->bytes[pixels->length - 1];
    (void)sum;
    CGImageRelease(CGImageRetain(image));
    CGImageRelease(image);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    CGDataProviderRef provider = CGDataProviderCreateWithData(nullptr, data, size, nullptr);
    if (provider == nullptr)
        return 0;
    const CGFloat decode[8] = {0, 1, 0, 1, 0, 1, 0, 1};
    Check(CGImageCreateWithPNGDataProvider(provider, nullptr, false, kCGRenderingIntentDefault));
    Check(CGImageCreateWithJPEGDataProvider(provider, decode, true, kCGRenderingIntentPerceptual));
    CGDataProviderRelease(provider);
    return 0;
}
