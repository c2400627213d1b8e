/* NSOpenPanel(AppKitX): an open panel set up and begun as a sheet in one
 * call. */
#import <KORU/AppKitX.h>

#import "FoundationXSupport.h"

#define KORUMethod "+[NSOpenPanel(AppKitX) beginSheetWithSetting:prompt:canChooseDirectories:canChooseFiles:allowsMultipleSelection:treatsFilePackagesAsDirectories:canCreateDirectories:message:window:directory:file:types:modalDelegate:didEndSelector:contextInfo:]"

@implementation NSOpenPanel (AppKitX)

+ (BOOL)beginSheetWithSetting:(NSOpenPanel *)panel prompt:(NSString *)prompt
         canChooseDirectories:(BOOL)canChooseDirectories canChooseFiles:(BOOL)canChooseFiles
      allowsMultipleSelection:(BOOL)allowsMultipleSelection
treatsFilePackagesAsDirectories:(BOOL)treatsFilePackagesAsDirectories
         canCreateDirectories:(BOOL)canCreateDirectories message:(NSString *)message
                       window:(NSWindow *)window directory:(NSString *)directory
                         file:(NSString *)file types:(NSArray *)types
                modalDelegate:(id)delegate didEndSelector:(SEL)didEndSelector
                  contextInfo:(void *)contextInfo
{
    @try {
        if (panel == nil)
            panel = [NSOpenPanel openPanel];
        if (panel == nil) {
            KORULogFailure(KORUMethod, __LINE__);
            return NO;
        }
        if (prompt != nil)
            [panel setPrompt:prompt];
        [panel setCanChooseDirectories:canChooseDirectories];
        [panel setCanChooseFiles:canChooseFiles];
        [panel setAllowsMultipleSelection:allowsMultipleSelection];
        [panel setTreatsFilePackagesAsDirectories:treatsFilePackagesAsDirectories];
        if ([panel respondsToSelector:@selector(setCanCreateDirectories:)])
            [panel setCanCreateDirectories:canCreateDirectories];
        if (message != nil && [panel respondsToSelector:@selector(setMessage:)])
            [panel setMessage:message];

        NSWindow *parent = window != nil ? window : [NSApp mainWindow];
        if (parent == nil) {
            KORULogFailure(KORUMethod, __LINE__);
            return NO;
        }
        [panel beginSheetForDirectory:directory file:file types:types modalForWindow:parent
                        modalDelegate:delegate didEndSelector:didEndSelector contextInfo:contextInfo];
        return YES;
    } @catch (NSException *exception) {
        KORULogException(KORUMethod, __LINE__, exception);
    }
    return NO;
}

@end
