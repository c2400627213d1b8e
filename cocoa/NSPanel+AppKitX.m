/* NSPanel(AppKitX): a standard alert of a given style, as a sheet on a
 * window or as a modal panel. */
#import <KORU/AppKitX.h>

#import "FoundationXSupport.h"

#define KORUMethod "+[NSPanel(AppKitX) runGenericAlert:parent:modalDelegate:didEndSelector:didDismissSelector:contextInfo:title:message:defaultButton:alternateButton:otherButton:]"

enum { KORUPlainAlert = 0, KORUInformationalAlert = 1, KORUCriticalAlert = 2 };

@implementation NSPanel (AppKitX)

/* The message is shown as given: it goes in as the argument of a "%@"
 * format, so a "%" in it is never read as a format directive. */
+ (int)runGenericAlert:(int)style parent:(NSWindow *)parent modalDelegate:(id)delegate
        didEndSelector:(SEL)didEndSelector didDismissSelector:(SEL)didDismissSelector
           contextInfo:(void *)contextInfo title:(NSString *)title message:(NSString *)message
         defaultButton:(NSString *)defaultButton alternateButton:(NSString *)alternateButton
           otherButton:(NSString *)otherButton
{
    if (style != KORUPlainAlert && style != KORUInformationalAlert && style != KORUCriticalAlert)
        return -2;
    NSString *text = message != nil ? message : @"";
    @try {
        if (parent != nil) {
            if (style == KORUPlainAlert)
                NSBeginAlertSheet(title, defaultButton, alternateButton, otherButton, parent, delegate,
                                  didEndSelector, didDismissSelector, contextInfo, @"%@", text);
            else if (style == KORUInformationalAlert)
                NSBeginInformationalAlertSheet(title, defaultButton, alternateButton, otherButton, parent,
                                               delegate, didEndSelector, didDismissSelector, contextInfo,
                                               @"%@", text);
            else
                NSBeginCriticalAlertSheet(title, defaultButton, alternateButton, otherButton, parent,
                                          delegate, didEndSelector, didDismissSelector, contextInfo,
                                          @"%@", text);
            return 1;
        }
        if (style == KORUPlainAlert)
            return (int)NSRunAlertPanel(title, @"%@", defaultButton, alternateButton, otherButton, text);
        if (style == KORUInformationalAlert)
            return (int)NSRunInformationalAlertPanel(title, @"%@", defaultButton, alternateButton,
                                                     otherButton, text);
        return (int)NSRunCriticalAlertPanel(title, @"%@", defaultButton, alternateButton, otherButton, text);
    } @catch (NSException *exception) {
        KORULogException(KORUMethod, __LINE__, exception);
    }
    return -2;
}

@end
