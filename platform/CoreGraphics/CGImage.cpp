// Bitmap images: PNG through libpng's simplified reader, JPEG through
// libjpeg-turbo, into rows of 8-bit components held by a data provider.
#include "CGInternal.h"

#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include <jpeglib.h>
#include <jerror.h>
#include <png.h>

namespace {

// The most pixel bytes one image may take; larger claims are corrupt files
// or beyond what an application could use.
constexpr size_t kMostPixelBytes = size_t(1) << 30;

struct Pixels {
    unsigned char *bytes;
    size_t width, height, components, bytesPerRow;
    bool alpha;
};

bool AllocatePixels(Pixels *pixels)
{
    if (pixels->width == 0 || pixels->height == 0 || pixels->components == 0)
        return false;
    if (pixels->width > kMostPixelBytes / pixels->components)
        return false;
    pixels->bytesPerRow = pixels->width * pixels->components;
    if (pixels->height > kMostPixelBytes / pixels->bytesPerRow)
        return false;
    pixels->bytes = static_cast<unsigned char *>(std::malloc(pixels->bytesPerRow * pixels->height));
    return pixels->bytes != nullptr;
}

bool DecodePNG(const unsigned char *data, size_t length, Pixels *pixels)
{
    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, data, length))
        return false;
    // The file's own layout at 8 bits: a palette becomes RGB(A), 16 bits 8.
    const bool color = (image.format & PNG_FORMAT_FLAG_COLOR) != 0;
    pixels->alpha = (image.format & PNG_FORMAT_FLAG_ALPHA) != 0;
    image.format = (color ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY) | (pixels->alpha ? PNG_FORMAT_FLAG_ALPHA : 0);
    pixels->width = image.width;
    pixels->height = image.height;
    pixels->components = PNG_IMAGE_PIXEL_CHANNELS(image.format);
    if (!AllocatePixels(pixels)) {
        png_image_free(&image);
        return false;
    }
    if (!png_image_finish_read(&image, nullptr, pixels->bytes, static_cast<png_int_32>(pixels->bytesPerRow),
                               nullptr)) {
        png_image_free(&image);
        std::free(pixels->bytes);
        pixels->bytes = nullptr;
        return false;
    }
    return true;
}

// libjpeg reports errors by calling error_exit, which must not return: it
// jumps back to the decoder.  Warnings are silent, except that running out
// of data before the last row marks the image as truncated.
struct JPEGErrors {
    jpeg_error_mgr manager;
    jmp_buf jump;
    bool rowsTruncated;
    bool readingRows;
};

void JPEGErrorExit(j_common_ptr info)
{
    std::longjmp(reinterpret_cast<JPEGErrors *>(info->err)->jump, 1);
}

void JPEGMessage(j_common_ptr info, int level)
{
    JPEGErrors *errors = reinterpret_cast<JPEGErrors *>(info->err);
    if (level < 0 && errors->readingRows && errors->manager.msg_code == JWRN_JPEG_EOF)
        errors->rowsTruncated = true;
}

// Adobe's CMYK JPEGs store inverted components: each colour times black.
void CMYKRowToRGB(const unsigned char *cmyk, unsigned char *rgb, size_t width)
{
    for (size_t x = 0; x < width; ++x, cmyk += 4, rgb += 3) {
        const unsigned k = cmyk[3];
        rgb[0] = static_cast<unsigned char>(cmyk[0] * k / 255);
        rgb[1] = static_cast<unsigned char>(cmyk[1] * k / 255);
        rgb[2] = static_cast<unsigned char>(cmyk[2] * k / 255);
    }
}

// Only plain C state lives across the setjmp: the jump skips no destructor.
bool DecodeJPEG(const unsigned char *data, size_t length, Pixels *pixels)
{
    jpeg_decompress_struct info;
    JPEGErrors errors;
    unsigned char *volatile cmykRow = nullptr;
    info.err = jpeg_std_error(&errors.manager);
    errors.manager.error_exit = JPEGErrorExit;
    errors.manager.emit_message = JPEGMessage;
    errors.rowsTruncated = false;
    errors.readingRows = false;
    pixels->bytes = nullptr;
    if (setjmp(errors.jump) != 0) {
        jpeg_destroy_decompress(&info);
        std::free(cmykRow);
        std::free(pixels->bytes);
        pixels->bytes = nullptr;
        return false;
    }
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, data, static_cast<unsigned long>(length));
    jpeg_read_header(&info, TRUE);
    const bool cmyk = info.jpeg_color_space == JCS_CMYK || info.jpeg_color_space == JCS_YCCK;
    if (info.jpeg_color_space == JCS_GRAYSCALE)
        info.out_color_space = JCS_GRAYSCALE;
    else
        info.out_color_space = cmyk ? JCS_CMYK : JCS_RGB;
    jpeg_start_decompress(&info);
    pixels->width = info.output_width;
    pixels->height = info.output_height;
    pixels->components = cmyk ? 3 : static_cast<size_t>(info.output_components);
    pixels->alpha = false;
    if (!AllocatePixels(pixels) || (cmyk && (cmykRow = static_cast<unsigned char *>(
                                                 std::malloc(pixels->width * 4))) == nullptr))
        std::longjmp(errors.jump, 1);

    errors.readingRows = true;
    while (info.output_scanline < info.output_height && !errors.rowsTruncated) {
        unsigned char *row = pixels->bytes + info.output_scanline * pixels->bytesPerRow;
        if (cmyk) {
            JSAMPROW target = cmykRow;
            if (jpeg_read_scanlines(&info, &target, 1) == 1)
                CMYKRowToRGB(cmykRow, row, pixels->width);
        } else {
            // Several rows at a time, as many as the decoder hands out at once.
            JSAMPROW rows[16];
            JDIMENSION count = 0;
            while (count < 16 && info.output_scanline + count < info.output_height) {
                rows[count] = row + count * pixels->bytesPerRow;
                ++count;
            }
            jpeg_read_scanlines(&info, rows, count);
        }
    }
    errors.readingRows = false;
    if (errors.rowsTruncated)
        std::longjmp(errors.jump, 1);
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
    std::free(cmykRow);
    return true;
}

void FreePixels(void *, const void *data, size_t)
{
    std::free(const_cast<void *>(data));
}

CGImageRef MakeImage(Pixels *pixels, const CGFloat decode[], bool shouldInterpolate,
                     CGColorRenderingIntent intent)
{
    CGImage *image = new (std::nothrow) CGImage;
    CGFloat *decodeCopy = nullptr;
    // A pair of values for each colour component: alpha has none.
    const size_t colorComponents = pixels->components - (pixels->alpha ? 1 : 0);
    const size_t decodeCount = decode != nullptr ? 2 * colorComponents : 0;
    if (decodeCount > 0) {
        decodeCopy = new (std::nothrow) CGFloat[decodeCount];
        if (decodeCopy != nullptr)
            std::memcpy(decodeCopy, decode, decodeCount * sizeof(CGFloat));
    }
    CGDataProviderRef provider =
        image != nullptr && (decodeCount == 0 || decodeCopy != nullptr)
            ? CGDataProviderCreateWithData(nullptr, pixels->bytes, pixels->bytesPerRow * pixels->height,
                                           FreePixels)
            : nullptr;
    if (provider == nullptr) {
        delete image;
        delete[] decodeCopy;
        std::free(pixels->bytes);
        return nullptr;
    }
    image->references = 1;
    image->width = pixels->width;
    image->height = pixels->height;
    image->bitsPerComponent = 8;
    image->bitsPerPixel = 8 * pixels->components;
    image->bytesPerRow = pixels->bytesPerRow;
    image->bitmapInfo = pixels->alpha ? kCGImageAlphaLast : kCGImageAlphaNone;
    image->shouldInterpolate = shouldInterpolate;
    image->intent = intent;
    image->decodeCount = decodeCount;
    image->decode = decodeCopy;
    image->pixels = provider;
    return image;
}

using Decoder = bool (*)(const unsigned char *, size_t, Pixels *);

CGImageRef CreateImage(Decoder decoder, CGDataProviderRef source, const CGFloat decode[], bool shouldInterpolate,
                       CGColorRenderingIntent intent)
{
    if (source == nullptr || source->bytes == nullptr || source->length == 0)
        return nullptr;
    Pixels pixels = {};
    if (!decoder(source->bytes, source->length, &pixels))
        return nullptr;
    return MakeImage(&pixels, decode, shouldInterpolate, intent);
}

} // namespace

extern "C" CGImageRef CGImageCreateWithPNGDataProvider(CGDataProviderRef source, const CGFloat decode[],
                                                       bool shouldInterpolate, CGColorRenderingIntent intent)
{
    return CreateImage(DecodePNG, source, decode, shouldInterpolate, intent);
}

extern "C" CGImageRef CGImageCreateWithJPEGDataProvider(CGDataProviderRef source, const CGFloat decode[],
                                                        bool shouldInterpolate, CGColorRenderingIntent intent)
{
    return CreateImage(DecodeJPEG, source, decode, shouldInterpolate, intent);
}

extern "C" CGImageRef CGImageRetain(CGImageRef image)
{
    if (image != nullptr)
        __atomic_add_fetch(&image->references, 1, __ATOMIC_RELAXED);
    return image;
}

extern "C" void CGImageRelease(CGImageRef image)
{
    if (image == nullptr || __atomic_sub_fetch(&image->references, 1, __ATOMIC_ACQ_REL) != 0)
        return;
    CGDataProviderRelease(image->pixels);
    delete[] image->decode;
    delete image;
}

extern "C" size_t CGImageGetWidth(CGImageRef image)
{
    return image != nullptr ? image->width : 0;
}

extern "C" size_t CGImageGetHeight(CGImageRef image)
{
    return image != nullptr ? image->height : 0;
}

extern "C" size_t CGImageGetBitsPerComponent(CGImageRef image)
{
    return image != nullptr ? image->bitsPerComponent : 0;
}

extern "C" size_t CGImageGetBitsPerPixel(CGImageRef image)
{
    return image != nullptr ? image->bitsPerPixel : 0;
}

extern "C" size_t CGImageGetBytesPerRow(CGImageRef image)
{
    return image != nullptr ? image->bytesPerRow : 0;
}

extern "C" CGImageAlphaInfo CGImageGetAlphaInfo(CGImageRef image)
{
    return image != nullptr ? CGImageAlphaInfo(image->bitmapInfo & kCGBitmapAlphaInfoMask) : CGImageAlphaInfo(kCGImageAlphaNone);
}

extern "C" CGBitmapInfo CGImageGetBitmapInfo(CGImageRef image)
{
    return image != nullptr ? image->bitmapInfo : 0;
}

extern "C" bool CGImageIsMask(CGImageRef)
{
    return false;
}

extern "C" bool CGImageGetShouldInterpolate(CGImageRef image)
{
    return image != nullptr && image->shouldInterpolate;
}

extern "C" CGColorRenderingIntent CGImageGetRenderingIntent(CGImageRef image)
{
    return image != nullptr ? image->intent : kCGRenderingIntentDefault;
}

extern "C" const CGFloat *CGImageGetDecode(CGImageRef image)
{
    return image != nullptr ? image->decode : nullptr;
}

extern "C" CGDataProviderRef CGImageGetDataProvider(CGImageRef image)
{
    return image != nullptr ? image->pixels : nullptr;
}
