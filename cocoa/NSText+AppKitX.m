/* NSText(AppKitX): the text of a file. */
#import <KORU/AppKitX.h>
#import <KORU/NSString+FoundationXText.h>

#import "FoundationXSupport.h"

@implementation NSText (AppKitX)

- (void)setStringFromFile:(NSString *)path encoding:(NSStringEncoding)encoding
{
    if (![path isKindOfClass:[NSString class]] || [path length] == 0)
        return;
    NSString *text = nil;
    @try {
        text = [[NSString alloc] initWithTextFile:path encoding:encoding];
        if (text != nil)
            [self setString:text];
    } @catch (NSException *exception) {
        KORULogException("-[NSText(AppKitX) setStringFromFile:encoding:]", __LINE__, exception);
    }
    [text release];
}

@end
