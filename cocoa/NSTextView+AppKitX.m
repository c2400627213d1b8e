/* NSTextView(AppKitX): printing the text reflowed to the page's printable
 * width. */
#import <KORU/AppKitX.h>

#import "FoundationXSupport.h"

@implementation NSTextView (AppKitX)

- (BOOL)runPrintModal
{
    NSPrintInfo *info = [NSPrintInfo sharedPrintInfo];
    if (info == nil)
        return NO;
    @try {
        if ([[NSPageLayout pageLayout] runModalWithPrintInfo:info] != NSOKButton)
            return NO;
    } @catch (NSException *exception) {
        KORULogException("-[NSTextView(AppKitX) runPrintModal]", __LINE__, exception);
        return NO;
    }

    NSRect frame = [self frame];
    BOOL printed = NO;
    @try {
        NSNumber *scaling = [[info dictionary] objectForKey:NSPrintScalingFactor];
        double factor = [scaling respondsToSelector:@selector(doubleValue)] ? [scaling doubleValue] : 1.0;
        /* A factor of 0 (or less) would make the page endlessly wide. */
        if (!(factor > 0.0))
            factor = 1.0;
        [info setVerticallyCentered:NO];
        NSRect page = frame;
        page.size.width = (CGFloat)(([info paperSize].width - [info leftMargin] - [info rightMargin]) / factor);
        [self setFrame:page];
        [self print:self];
        printed = YES;
    } @catch (NSException *exception) {
        KORULogException("-[NSTextView(AppKitX) runPrintModal]", __LINE__, exception);
    }
    @try {
        [self setFrame:frame];
    } @catch (NSException *exception) {
        KORULogException("-[NSTextView(AppKitX) runPrintModal]", __LINE__, exception);
    }
    return printed;
}

@end
