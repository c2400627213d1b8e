/* Core Graphics images as AppKit bitmaps. */
#import <KORU/NSBitmapImageRep+CGImage.h>

#include <string.h>

@implementation NSBitmapImageRep (CGImage)

- (id)initWithCGImage:(CGImageRef)image
{
    size_t bitsPerComponent = CGImageGetBitsPerComponent(image);
    size_t bitsPerPixel = CGImageGetBitsPerPixel(image);
    size_t components = bitsPerComponent > 0 ? bitsPerPixel / bitsPerComponent : 0;
    CGImageAlphaInfo alphaInfo = CGImageGetAlphaInfo(image);
    BOOL alpha = alphaInfo != kCGImageAlphaNone;
    CFDataRef pixels = CGDataProviderCopyData(CGImageGetDataProvider(image));
    size_t width = CGImageGetWidth(image), height = CGImageGetHeight(image);
    size_t bytesPerRow = CGImageGetBytesPerRow(image);
    /* What the bitmap can hold: 8-bit gray or RGB, straight alpha last. */
    if (pixels == NULL || bitsPerComponent != 8 || components < 1 || components > 4 ||
        (alpha && alphaInfo != kCGImageAlphaLast) || (alpha != (components == 2 || components == 4)) ||
        (size_t)CFDataGetLength(pixels) < bytesPerRow * height) {
        if (pixels != NULL)
            CFRelease(pixels);
        [self release];
        return nil;
    }
    @try {
        self = [self initWithBitmapDataPlanes:NULL
                                   pixelsWide:(NSInteger)width
                                   pixelsHigh:(NSInteger)height
                                bitsPerSample:8
                              samplesPerPixel:(NSInteger)components
                                     hasAlpha:alpha
                                     isPlanar:NO
                               colorSpaceName:components <= 2 ? NSCalibratedWhiteColorSpace : NSCalibratedRGBColorSpace
                                 bitmapFormat:alpha ? NSAlphaNonpremultipliedBitmapFormat : 0
                                  bytesPerRow:(NSInteger)bytesPerRow
                                 bitsPerPixel:(NSInteger)bitsPerPixel];
        if (self != nil)
            memcpy([self bitmapData], CFDataGetBytePtr(pixels), bytesPerRow * height);
    } @catch (NSException *exception) {
        (void)exception;
        self = nil; /* left to the exception's unwinding: a leak, not a double release */
    }
    CFRelease(pixels);
    return self;
}

@end

@implementation NSImage (CGImage)

- (id)initWithCGImage:(CGImageRef)image size:(NSSize)size
{
    NSBitmapImageRep *bitmap = [[NSBitmapImageRep alloc] initWithCGImage:image];
    if (bitmap == nil) {
        [self release];
        return nil;
    }
    if (size.width <= 0 || size.height <= 0)
        size = NSMakeSize([bitmap pixelsWide], [bitmap pixelsHigh]);
    if ((self = [self initWithSize:size]) != nil) {
        [bitmap setSize:size];
        [self addRepresentation:bitmap];
    }
    [bitmap release];
    return self;
}

@end
