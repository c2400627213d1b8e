/* NSWindow(AppKitX): the mouse in base coordinates, sheets, and placement
 * by the Window Manager's positioning methods. */
#import <KORU/AppKitX.h>

#import "FoundationXSupport.h"

#include <math.h>

@implementation NSWindow (AppKitX)

- (NSPoint)mouseLocation
{
    return [self convertScreenToBase:[NSEvent mouseLocation]];
}

- (void)beginSheetForWindow:(NSWindow *)window modalDelegate:(id)delegate
             didEndSelector:(SEL)didEndSelector contextInfo:(void *)contextInfo
{
    @try {
        [NSApp beginSheet:self modalForWindow:window modalDelegate:delegate
           didEndSelector:didEndSelector contextInfo:contextInfo];
    } @catch (NSException *exception) {
        KORULogException("-[NSWindow(AppKitX) beginSheetForWindow:modalDelegate:didEndSelector:contextInfo:]",
                         __LINE__, exception);
    }
}

- (void)closeSheet
{
    @try {
        [NSApp endSheet:self];
        [self close];
    } @catch (NSException *exception) {
        KORULogException("-[NSWindow(AppKitX) closeSheet]", __LINE__, exception);
    }
}

- (void)closeSheetWithReturnCode:(int)returnCode
{
    @try {
        [NSApp endSheet:self returnCode:returnCode];
        [self close];
    } @catch (NSException *exception) {
        KORULogException("-[NSWindow(AppKitX) closeSheetWithReturnCode:]", __LINE__, exception);
    }
}

/* A stand-in document window of the receiver's size is placed by the Window
 * Manager and the receiver takes its origin. */
- (BOOL)reposition:(WindowPositionMethod)method parentWindow:(WindowRef)parentWindow
{
    NSRect frame = [self frame];
    Rect bounds = {0, 0, (short)lround(NSHeight(frame)), (short)lround(NSWidth(frame))};
    WindowRef carbonWindow = NULL;
    if (CreateNewWindow(kDocumentWindowClass, kWindowStandardDocumentAttributes, &bounds,
                        &carbonWindow) != noErr) {
        KORULogFailure("-[NSWindow(AppKitX) reposition:parentWindow:]", __LINE__);
        return NO;
    }
    BOOL placed = NO;
    NSWindow *wrapper = nil;
    @try {
        if (RepositionWindow(carbonWindow, parentWindow, method) == noErr) {
            wrapper = [[NSWindow alloc] initWithWindowRef:carbonWindow];
            if (wrapper != nil) {
                frame.origin = [wrapper frame].origin;
                [self setFrame:frame display:NO];
                placed = YES;
            }
        }
    } @catch (NSException *exception) {
        KORULogException("-[NSWindow(AppKitX) reposition:parentWindow:]", __LINE__, exception);
        placed = NO;
    }
    if (!placed)
        KORULogFailure("-[NSWindow(AppKitX) reposition:parentWindow:]", __LINE__);
    [wrapper release];
    DisposeWindow(carbonWindow);
    return placed;
}

@end
