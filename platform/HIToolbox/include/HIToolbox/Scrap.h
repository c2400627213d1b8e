/* The scrap (clipboard): the general pasteboard.
 *
 * Flavours map to pasteboard types: 'TEXT' is the pasteboard string in the
 * system encoding (characters it cannot show become '?'), 'utxt' the string
 * as native-endian UTF-16; any other flavour is data of the type
 * "CorePasteboardFlavorType 0x<hex code>".  Use from the main thread. */
#ifndef HITOOLBOX_SCRAP_H
#define HITOOLBOX_SCRAP_H

#include <CoreServices/MacErrors.h>
#include <MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct OpaqueScrapRef *ScrapRef;
typedef FourCharCode ScrapFlavorType;
typedef UInt32 ScrapFlavorFlags;

enum {
    kScrapFlavorTypeText = 0x54455854,    /* 'TEXT' */
    kScrapFlavorTypeUnicode = 0x75747874, /* 'utxt' */
    kScrapFlavorTypePicture = 0x50494354  /* 'PICT' */
};
enum { kScrapFlavorMaskNone = 0, kScrapFlavorMaskSenderOnly = 1, kScrapFlavorMaskTranslated = 2 };
enum { noScrapErr = -100, noTypeErr = -102 };

/* The current scrap; noScrapErr when the pasteboard server cannot be
 * reached, paramErr for NULL. */
OSStatus GetCurrentScrap(ScrapRef *scrap);
/* Empties the clipboard. */
OSStatus ClearCurrentScrap(void);
/* noTypeErr when the flavour is absent. */
OSStatus GetScrapFlavorFlags(ScrapRef scrap, ScrapFlavorType flavorType, ScrapFlavorFlags *flavorFlags);
OSStatus GetScrapFlavorSize(ScrapRef scrap, ScrapFlavorType flavorType, Size *byteCount);
/* Copies at most *byteCount bytes and sets *byteCount to the number
 * copied. */
OSStatus GetScrapFlavorData(ScrapRef scrap, ScrapFlavorType flavorType, Size *byteCount,
                            void *destination);
/* Adds (or replaces) the flavour. */
OSStatus PutScrapFlavor(ScrapRef scrap, ScrapFlavorType flavorType, ScrapFlavorFlags flavorFlags,
                        Size flavorSize, const void *flavorData);

#ifdef __cplusplus
}
#endif

#endif
