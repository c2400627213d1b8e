/* The scrap over the general pasteboard. */
#import <AppKit/AppKit.h>

#include <HIToolbox/Scrap.h>
#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/MacErrors.h>

#include <string.h>

static NSPasteboard *PasteboardOf(ScrapRef scrap)
{
    return (NSPasteboard *)scrap;
}

static BOOL IsTextFlavor(ScrapFlavorType flavorType)
{
    return flavorType == kScrapFlavorTypeText || flavorType == kScrapFlavorTypeUnicode;
}

/* Carbon flavours without a pasteboard type of their own travel under the
 * name the Mac's pasteboard gives them. */
static NSString *PasteboardTypeOf(ScrapFlavorType flavorType)
{
    if (IsTextFlavor(flavorType))
        return NSStringPboardType;
    return [NSString stringWithFormat:@"CorePasteboardFlavorType 0x%08X", (unsigned)flavorType];
}

static BOOL HasType(NSPasteboard *pasteboard, NSString *type)
{
    return [[pasteboard types] containsObject:type];
}

/* The flavour's bytes; nil when the flavour is absent. */
static NSData *FlavorDataCore(NSPasteboard *pasteboard, ScrapFlavorType flavorType)
{
    NSString *type = PasteboardTypeOf(flavorType);
    if (!HasType(pasteboard, type))
        return nil;
    if (!IsTextFlavor(flavorType))
        return [pasteboard dataForType:type];
    NSString *string = [pasteboard stringForType:type];
    if (string == nil)
        return nil;
    if (flavorType == kScrapFlavorTypeUnicode) {
        NSMutableData *units = [NSMutableData dataWithLength:[string length] * sizeof(unichar)];
        [string getCharacters:(unichar *)[units mutableBytes] range:NSMakeRange(0, [string length])];
        return units;
    }
    CFDataRef bytes = CFStringCreateExternalRepresentation(NULL, (CFStringRef)string,
                                                           CFStringGetSystemEncoding(), '?');
    return [(NSData *)bytes autorelease];
}

/* The flavour's bytes, or nil when the pasteboard has none or its server
 * cannot be reached (the pasteboard raises then). */
static NSData *FlavorData(NSPasteboard *pasteboard, ScrapFlavorType flavorType)
{
    @try {
        return FlavorDataCore(pasteboard, flavorType);
    } @catch (NSException *exception) {
        return nil;
    }
}

OSStatus GetCurrentScrap(ScrapRef *scrap)
{
    if (scrap == NULL)
        return paramErr;
    NSPasteboard *pasteboard = nil;
    @try {
        pasteboard = [NSPasteboard generalPasteboard];
    } @catch (NSException *exception) {
        pasteboard = nil;
    }
    *scrap = (ScrapRef)pasteboard;
    return pasteboard != nil ? noErr : noScrapErr;
}

OSStatus ClearCurrentScrap(void)
{
    ScrapRef scrap = NULL;
    OSStatus status = GetCurrentScrap(&scrap);
    if (status != noErr)
        return status;
    @try {
        [PasteboardOf(scrap) declareTypes:[NSArray array] owner:nil];
    } @catch (NSException *exception) {
        return noScrapErr;
    }
    return noErr;
}

OSStatus GetScrapFlavorFlags(ScrapRef scrap, ScrapFlavorType flavorType, ScrapFlavorFlags *flavorFlags)
{
    if (scrap == NULL || flavorFlags == NULL)
        return paramErr;
    *flavorFlags = kScrapFlavorMaskNone;
    @try {
        return HasType(PasteboardOf(scrap), PasteboardTypeOf(flavorType)) ? noErr : noTypeErr;
    } @catch (NSException *exception) {
        return noScrapErr;
    }
}

OSStatus GetScrapFlavorSize(ScrapRef scrap, ScrapFlavorType flavorType, Size *byteCount)
{
    if (scrap == NULL || byteCount == NULL)
        return paramErr;
    NSData *data = FlavorData(PasteboardOf(scrap), flavorType);
    *byteCount = (Size)[data length];
    return data != nil ? noErr : noTypeErr;
}

OSStatus GetScrapFlavorData(ScrapRef scrap, ScrapFlavorType flavorType, Size *byteCount, void *destination)
{
    if (scrap == NULL || byteCount == NULL || (destination == NULL && *byteCount > 0) || *byteCount < 0)
        return paramErr;
    NSData *data = FlavorData(PasteboardOf(scrap), flavorType);
    if (data == nil) {
        *byteCount = 0;
        return noTypeErr;
    }
    Size copied = (Size)[data length] < *byteCount ? (Size)[data length] : *byteCount;
    if (copied > 0)
        memcpy(destination, [data bytes], (size_t)copied);
    *byteCount = copied;
    return noErr;
}

static NSString *StringOfFlavor(ScrapFlavorType flavorType, Size flavorSize, const void *flavorData)
{
    if (flavorType == kScrapFlavorTypeUnicode)
        return [NSString stringWithCharacters:(const unichar *)flavorData
                                       length:(NSUInteger)flavorSize / sizeof(unichar)];
    CFStringRef string = CFStringCreateWithBytes(NULL, (const UInt8 *)flavorData, (CFIndex)flavorSize,
                                                 CFStringGetSystemEncoding(), false);
    return [(NSString *)string autorelease];
}

OSStatus PutScrapFlavor(ScrapRef scrap, ScrapFlavorType flavorType, ScrapFlavorFlags flavorFlags,
                        Size flavorSize, const void *flavorData)
{
    (void)flavorFlags;
    if (scrap == NULL || flavorSize < 0 || (flavorData == NULL && flavorSize > 0))
        return paramErr;
    NSPasteboard *pasteboard = PasteboardOf(scrap);
    NSString *type = PasteboardTypeOf(flavorType);
    BOOL written = NO;
    @try {
        if (IsTextFlavor(flavorType)) {
            NSString *string = StringOfFlavor(flavorType, flavorSize, flavorData);
            if (string == nil)
                return paramErr;
            [pasteboard addTypes:[NSArray arrayWithObject:type] owner:nil];
            written = [pasteboard setString:string forType:type];
        } else {
            [pasteboard addTypes:[NSArray arrayWithObject:type] owner:nil];
            written = [pasteboard setData:[NSData dataWithBytes:flavorData length:(NSUInteger)flavorSize]
                                  forType:type];
        }
    } @catch (NSException *exception) {
        written = NO;
    }
    return written ? noErr : noScrapErr;
}
