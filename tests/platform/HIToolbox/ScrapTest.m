/* The scrap over the general pasteboard of the test's private pasteboard
 * server. */
#import "KTest.h"
#import "KGUI.h"

#include <CoreFoundation/CoreFoundation.h>
#include <HIToolbox/Scrap.h>

#include <string.h>

KT_CASE(FlavorsTravelThroughThePasteboard)
{
    KGUISharedApplication();
    ScrapRef scrap = NULL;
    KT_ASSERT(GetCurrentScrap(&scrap) == noErr && scrap != NULL && ClearCurrentScrap() == noErr);
    Size size = -1;
    KT_EXPECT(GetScrapFlavorSize(scrap, kScrapFlavorTypeText, &size) == noTypeErr && size == 0);

    /* Text put as UTF-16 reads back as text in the system encoding. */
    const UniChar units[] = {'c', 'a', 'f', 0xE9};
    KT_ASSERT(PutScrapFlavor(scrap, kScrapFlavorTypeUnicode, kScrapFlavorMaskNone, sizeof units, units) == noErr);
    KT_EXPECT_EQUAL_OBJECTS([[NSPasteboard generalPasteboard] stringForType:NSStringPboardType], @"caf\u00e9");
    CFDataRef expected = CFStringCreateExternalRepresentation(NULL, CFSTR("caf\u00e9"), CFStringGetSystemEncoding(), '?');
    KT_EXPECT(GetScrapFlavorSize(scrap, kScrapFlavorTypeText, &size) == noErr && size == CFDataGetLength(expected));
    char text[16];
    Size count = sizeof text;
    KT_EXPECT(GetScrapFlavorData(scrap, kScrapFlavorTypeText, &count, text) == noErr &&
              count == CFDataGetLength(expected) && memcmp(text, CFDataGetBytePtr(expected), (size_t)count) == 0);
    CFRelease(expected);
    /* A short buffer gets what fits. */
    count = 2;
    KT_EXPECT(GetScrapFlavorData(scrap, kScrapFlavorTypeUnicode, &count, text) == noErr && count == 2);

    /* Other flavours are data of their own type, beside the text. */
    const char picture[] = {1, 2, 3};
    KT_EXPECT(PutScrapFlavor(scrap, kScrapFlavorTypePicture, kScrapFlavorMaskNone, sizeof picture, picture) ==
              noErr);
    NSData *data = [[NSPasteboard generalPasteboard] dataForType:@"CorePasteboardFlavorType 0x50494354"];
    KT_EXPECT([data length] == 3);
    ScrapFlavorFlags flags = 1;
    KT_EXPECT(GetScrapFlavorFlags(scrap, kScrapFlavorTypeUnicode, &flags) == noErr && flags == 0);
    KT_EXPECT(ClearCurrentScrap() == noErr);
    KT_EXPECT(GetScrapFlavorFlags(scrap, kScrapFlavorTypePicture, &flags) == noTypeErr);
    count = sizeof text;
    KT_EXPECT(GetScrapFlavorData(scrap, kScrapFlavorTypeText, &count, text) == noTypeErr && count == 0);
}

KT_CASE(BadArgumentsAreRefused)
{
    KGUISharedApplication();
    ScrapRef scrap = NULL;
    GetCurrentScrap(&scrap);
    Size size = 4;
    KT_EXPECT(GetCurrentScrap(NULL) == paramErr);
    KT_EXPECT(GetScrapFlavorSize(NULL, kScrapFlavorTypeText, &size) == paramErr);
    KT_EXPECT(GetScrapFlavorSize(scrap, kScrapFlavorTypeText, NULL) == paramErr);
    KT_EXPECT(GetScrapFlavorData(scrap, kScrapFlavorTypeText, &size, NULL) == paramErr);
    KT_EXPECT(PutScrapFlavor(scrap, kScrapFlavorTypeText, 0, 4, NULL) == paramErr);
    KT_EXPECT(PutScrapFlavor(NULL, kScrapFlavorTypeText, 0, 0, NULL) == paramErr);
}

KT_MAIN()
