/* Core Graphics base types.  CGFloat is a double, as in the 64-bit Mac ABI,
 * and is the very type GNUstep's Foundation declares, so the two headers
 * can be included in either order. */
#ifndef COREGRAPHICS_CGBASE_H
#define COREGRAPHICS_CGBASE_H

#include <CoreFoundation/CoreFoundation.h>

#include <float.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#if !defined(CGFLOAT_DEFINED)
#define CGFLOAT_IS_DBL 1
typedef double CGFloat;
#define CGFLOAT_MIN DBL_MIN
#define CGFLOAT_MAX DBL_MAX
#define CGFLOAT_DEFINED 1
#endif

#endif
