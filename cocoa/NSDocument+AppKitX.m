/* NSDocument(AppKitX): the document the user works in. */
#import <KORU/AppKitX.h>

#import "FoundationXSupport.h"

@implementation NSDocument (AppKitX)

+ (id)current
{
    @try {
        return [[NSDocumentController sharedDocumentController] currentDocument];
    } @catch (NSException *exception) {
        KORULogException("+[NSDocument(AppKitX) current]", __LINE__, exception);
    }
    return nil;
}

@end
