/* NSObject(PasteboardAdditions): what a dragging-info object's pasteboard
 * holds. */
#import <KORU/AppKitX.h>

#import "FoundationXSupport.h"

/* The receiver's dragging pasteboard when it holds type; nil otherwise. */
static NSPasteboard *KORUPasteboardHolding(id receiver, NSString *type)
{
    if (![type isKindOfClass:[NSString class]] || [type length] == 0
        || ![receiver respondsToSelector:@selector(draggingPasteboard)])
        return nil;
    NSPasteboard *pasteboard = [receiver draggingPasteboard];
    if (![pasteboard isKindOfClass:[NSPasteboard class]] || ![[pasteboard types] containsObject:type])
        return nil;
    return pasteboard;
}

@implementation NSObject (PasteboardAdditions)

- (NSData *)pasteboardDataForType:(NSString *)type
{
    @try {
        return [KORUPasteboardHolding(self, type) dataForType:type];
    } @catch (NSException *exception) {
        KORULogException("-[NSObject(PasteboardAdditions) pasteboardDataForType:]", __LINE__, exception);
    }
    return nil;
}

- (id)pasteboardPropertyListForType:(NSString *)type
{
    @try {
        return [KORUPasteboardHolding(self, type) propertyListForType:type];
    } @catch (NSException *exception) {
        KORULogException("-[NSObject(PasteboardAdditions) pasteboardPropertyListForType:]", __LINE__, exception);
    }
    return nil;
}

- (NSString *)pasteboardStringForType:(NSString *)type
{
    @try {
        return [KORUPasteboardHolding(self, type) stringForType:type];
    } @catch (NSException *exception) {
        KORULogException("-[NSObject(PasteboardAdditions) pasteboardStringForType:]", __LINE__, exception);
    }
    return nil;
}

@end
