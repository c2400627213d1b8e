/* Core Graphics: the image decoding the toolkit uses (data providers and
 * bitmap images from PNG and JPEG data). */
#ifndef COREGRAPHICS_COREGRAPHICS_H
#define COREGRAPHICS_COREGRAPHICS_H

#include <CoreGraphics/CGBase.h>
#include <CoreGraphics/CGDataProvider.h>
#include <CoreGraphics/CGImage.h>

#endif
