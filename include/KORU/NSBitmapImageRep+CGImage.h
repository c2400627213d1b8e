/* Core Graphics images as AppKit image representations.
 *
 * The bitmap gets a copy of the image's pixels: 8-bit components, gray
 * (NSCalibratedWhiteColorSpace) or RGB (NSCalibratedRGBColorSpace), with a
 * non-premultiplied alpha where the image has one.  Nil (the receiver
 * released) for NULL or an image of a layout a bitmap cannot hold. */
#ifndef KORU_NSBITMAPIMAGEREP_CGIMAGE_H
#define KORU_NSBITMAPIMAGEREP_CGIMAGE_H

#import <AppKit/AppKit.h>
#include <CoreGraphics/CoreGraphics.h>

@interface NSBitmapImageRep (CGImage)
- (id)initWithCGImage:(CGImageRef)image;
@end

@interface NSImage (CGImage)
/* An image of the given size (the image's pixel size for NSZeroSize) holding
 * one bitmap made with initWithCGImage:. */
- (id)initWithCGImage:(CGImageRef)image size:(NSSize)size;
@end

#endif
