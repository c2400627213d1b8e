/* Images from bundle resources.
 *
 * A resource is named by its name and its type (the file extension) and is
 * looked for in the bundle's resources folder, no subfolder; a NULL bundle
 * means the main bundle.  The caller owns what these functions create and
 * releases it (CGDataProviderRelease, CGImageRelease).  A NULL or non-string
 * name or type, a missing resource or data that does not decode give NULL.
 * Nothing here keeps state; the functions may run on any thread. */
#ifndef KORU_BUNDLEIMAGES_H
#define KORU_BUNDLEIMAGES_H

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>

CF_EXTERN_C_BEGIN

/* A data provider holding the bytes of the resource file. */
CGDataProviderRef CGDataProviderCreateWithBundleResource(CFStringRef name, CFStringRef type, CFBundleRef bundle);

/* The resource decoded as PNG when the type is "png" in any case, and as
 * JPEG for every other type, without a decode array or interpolation and
 * with the default rendering intent. */
CGImageRef CGImageCreateWithBundleResource(CFStringRef name, CFStringRef type, CFBundleRef bundle);

CF_EXTERN_C_END

#endif
