/* NSSavePanel(AppKitX): a save panel set up and begun as a sheet in one
 * call. */
#import <KORU/AppKitX.h>

#import "FoundationXSupport.h"

#define KORUMethod "+[NSSavePanel(AppKitX) beginSheetWithSetting:requiredFileType:canCreateDirectories:canSelectHiddenExtension:extensionHidden:treatsFilePackagesAsDirectories:prompt:title:nameFieldLabel:message:window:directory:file:modalDelegate:didEndSelector:contextInfo:]"

@implementation NSSavePanel (AppKitX)

+ (BOOL)beginSheetWithSetting:(NSSavePanel *)panel requiredFileType:(NSString *)requiredFileType
         canCreateDirectories:(BOOL)canCreateDirectories
     canSelectHiddenExtension:(BOOL)canSelectHiddenExtension
              extensionHidden:(BOOL)extensionHidden
treatsFilePackagesAsDirectories:(BOOL)treatsFilePackagesAsDirectories
                       prompt:(NSString *)prompt title:(NSString *)title
               nameFieldLabel:(NSString *)nameFieldLabel message:(NSString *)message
                       window:(NSWindow *)window directory:(NSString *)directory
                         file:(NSString *)file modalDelegate:(id)delegate
               didEndSelector:(SEL)didEndSelector contextInfo:(void *)contextInfo
{
    @try {
        if (panel == nil)
            panel = [NSSavePanel savePanel];
        if (panel == nil) {
            KORULogFailure(KORUMethod, __LINE__);
            return NO;
        }
        if (requiredFileType != nil)
            [panel setRequiredFileType:requiredFileType];
        if ([panel respondsToSelector:@selector(setCanCreateDirectories:)])
            [panel setCanCreateDirectories:canCreateDirectories];
        [panel setCanSelectHiddenExtension:canSelectHiddenExtension];
        [panel setExtensionHidden:extensionHidden];
        [panel setTreatsFilePackagesAsDirectories:treatsFilePackagesAsDirectories];
        if (prompt != nil)
            [panel setPrompt:prompt];
        if (title != nil)
            [panel setTitle:title];
        if (nameFieldLabel != nil && [panel respondsToSelector:@selector(setNameFieldLabel:)])
            [panel setNameFieldLabel:nameFieldLabel];
        if (message != nil && [panel respondsToSelector:@selector(setMessage:)])
            [panel setMessage:message];

        NSWindow *parent = window != nil ? window : [NSApp mainWindow];
        if (parent == nil) {
            KORULogFailure(KORUMethod, __LINE__);
            return NO;
        }
        [panel beginSheetForDirectory:directory file:file modalForWindow:parent
                        modalDelegate:delegate didEndSelector:didEndSelector contextInfo:contextInfo];
        return YES;
    } @catch (NSException *exception) {
        KORULogException(KORUMethod, __LINE__, exception);
    }
    return NO;
}

@end
