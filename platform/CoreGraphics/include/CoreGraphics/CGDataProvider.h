/* Data providers: read-only byte sources for the image decoders.
 *
 * A provider holds its bytes in memory: a file is read once when the
 * provider is made, so a provider never changes under its images.  Providers
 * are reference-counted (created with a count of one; CGDataProviderRetain
 * and CGDataProviderRelease, both of which accept NULL) and may be shared by
 * threads for reading. */
#ifndef COREGRAPHICS_CGDATAPROVIDER_H
#define COREGRAPHICS_CGDATAPROVIDER_H

#include <CoreGraphics/CGBase.h>

CF_EXTERN_C_BEGIN

typedef struct CGDataProvider *CGDataProviderRef;

/* Called once the provider no longer needs the caller's bytes. */
typedef void (*CGDataProviderReleaseDataCallback)(void *info, const void *data, size_t size);

/* The bytes of the file a file URL names; NULL for NULL, a URL that is not a
 * file URL, or a file that cannot be read. */
CGDataProviderRef CGDataProviderCreateWithURL(CFURLRef url);

/* The bytes of the file at the POSIX path; NULL when it cannot be read. */
CGDataProviderRef CGDataProviderCreateWithFilename(const char *filename);

/* The caller's bytes, used in place; releaseData (may be NULL) is called with
 * info when the provider is freed.  NULL for NULL data with a non-zero size. */
CGDataProviderRef CGDataProviderCreateWithData(void *info, const void *data, size_t size,
                                               CGDataProviderReleaseDataCallback releaseData);

/* The bytes of a CFData, which the provider keeps (a mutable one as a copy,
 * so that later changes to it do not reach the provider). */
CGDataProviderRef CGDataProviderCreateWithCFData(CFDataRef data);

/* The provider's bytes as a CFData the caller releases; NULL for NULL.  The
 * data shares the provider's bytes, which never change. */
CFDataRef CGDataProviderCopyData(CGDataProviderRef provider);

CGDataProviderRef CGDataProviderRetain(CGDataProviderRef provider);
void CGDataProviderRelease(CGDataProviderRef provider);

CF_EXTERN_C_END

#endif
