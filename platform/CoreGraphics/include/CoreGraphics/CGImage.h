/* Bitmap images decoded from PNG and JPEG data.
 *
 * An image's pixels are rows of bytesPerRow bytes, top row first, with no
 * padding: 8 bits per component (a 16-bit PNG is reduced to 8 bits), gray or
 * RGB, with a straight (non-premultiplied) alpha component last where the
 * PNG has transparency.  A PNG decodes to gray, gray + alpha, RGB or RGBA as
 * its own colour type says (a palette gives RGB or RGBA); a JPEG to gray or
 * RGB (CMYK and YCCK files are converted to RGB).  The pixel bytes are the
 * image's data provider (CGImageGetDataProvider).
 *
 * Images are reference-counted like data providers (CGImageRetain and
 * CGImageRelease accept NULL).  The type is the one GNUstep's AppKit names
 * in NSImageRep.h. */
#ifndef COREGRAPHICS_CGIMAGE_H
#define COREGRAPHICS_CGIMAGE_H

#include <CoreGraphics/CGBase.h>
#include <CoreGraphics/CGDataProvider.h>

CF_EXTERN_C_BEGIN

typedef struct CGImage *CGImageRef;

typedef int32_t CGColorRenderingIntent;
enum {
    kCGRenderingIntentDefault = 0,
    kCGRenderingIntentAbsoluteColorimetric = 1,
    kCGRenderingIntentRelativeColorimetric = 2,
    kCGRenderingIntentPerceptual = 3,
    kCGRenderingIntentSaturation = 4
};

typedef uint32_t CGImageAlphaInfo;
enum {
    kCGImageAlphaNone = 0,
    kCGImageAlphaPremultipliedLast = 1,
    kCGImageAlphaPremultipliedFirst = 2,
    kCGImageAlphaLast = 3,
    kCGImageAlphaFirst = 4,
    kCGImageAlphaNoneSkipLast = 5,
    kCGImageAlphaNoneSkipFirst = 6,
    kCGImageAlphaOnly = 7
};

typedef uint32_t CGBitmapInfo;
enum {
    kCGBitmapAlphaInfoMask = 0x1F,
    kCGBitmapFloatComponents = 1u << 8,
    kCGBitmapByteOrderMask = 0x7000,
    kCGBitmapByteOrderDefault = 0u << 12,
    kCGBitmapByteOrder16Little = 1u << 12,
    kCGBitmapByteOrder32Little = 2u << 12,
    kCGBitmapByteOrder16Big = 3u << 12,
    kCGBitmapByteOrder32Big = 4u << 12
};

/* Decodes the provider's bytes; NULL for a NULL provider or bytes that are
 * not a complete image of that kind (a truncated or corrupt file).  decode
 * (NULL, or a pair of values for each colour component, alpha having none)
 * is kept for the caller's drawing and does not change the pixels. */
CGImageRef CGImageCreateWithPNGDataProvider(CGDataProviderRef source, const CGFloat decode[],
                                            bool shouldInterpolate, CGColorRenderingIntent intent);
CGImageRef CGImageCreateWithJPEGDataProvider(CGDataProviderRef source, const CGFloat decode[],
                                             bool shouldInterpolate, CGColorRenderingIntent intent);

CGImageRef CGImageRetain(CGImageRef image);
void CGImageRelease(CGImageRef image);

/* 0 (or NULL, false, the default intent) for NULL. */
size_t CGImageGetWidth(CGImageRef image);
size_t CGImageGetHeight(CGImageRef image);
size_t CGImageGetBitsPerComponent(CGImageRef image);
size_t CGImageGetBitsPerPixel(CGImageRef image);
size_t CGImageGetBytesPerRow(CGImageRef image);
CGImageAlphaInfo CGImageGetAlphaInfo(CGImageRef image);
CGBitmapInfo CGImageGetBitmapInfo(CGImageRef image);
bool CGImageIsMask(CGImageRef image);
bool CGImageGetShouldInterpolate(CGImageRef image);
CGColorRenderingIntent CGImageGetRenderingIntent(CGImageRef image);
const CGFloat *CGImageGetDecode(CGImageRef image);
/* The pixel bytes; the image keeps the provider (borrowed). */
CGDataProviderRef CGImageGetDataProvider(CGImageRef image);

CF_EXTERN_C_END

#endif
