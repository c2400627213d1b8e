/* The insides of data providers and images, shared by the C++ decoders and
 * the Objective-C bridge to CFData.  Plain C so that both can see it. */
#ifndef KORU_PLATFORM_CGINTERNAL_H
#define KORU_PLATFORM_CGINTERNAL_H

#include <CoreGraphics/CGDataProvider.h>
#include <CoreGraphics/CGImage.h>

struct CGDataProvider {
    long references;                            /* changed atomically */
    const unsigned char *bytes;
    size_t length;
    void *info;
    CGDataProviderReleaseDataCallback releaseData; /* NULL: nothing to give back */
};

struct CGImage {
    long references;                            /* changed atomically */
    size_t width;
    size_t height;
    size_t bitsPerComponent;
    size_t bitsPerPixel;
    size_t bytesPerRow;
    CGBitmapInfo bitmapInfo;
    bool shouldInterpolate;
    CGColorRenderingIntent intent;
    size_t decodeCount;                         /* entries in decode, 2 per component */
    CGFloat *decode;                            /* NULL without a decode array */
    CGDataProviderRef pixels;
};

#endif
