/* The AppKitX panels, alerts, printing, documents, image views, text and dragging
 * pasteboards on real windows; a timer presses the modal buttons as a person would. */
#import "KTest.h"
#import "KGUI.h"

#include <KORU/KORU.h>

#include <math.h>
#include <stdlib.h>
#include <string.h>

/* Presses the button titled userInfo[0] on the modal window once it shows
 * (a sheet runs as the modal window too), looking again every 0.1 s. */
@implementation KGUITimerTarget (PanelsTest)
- (void)pressWhenModal:(NSTimer *)timer
{
    NSString *title = [timer userInfo];
    NSWindow *modal = [NSApp modalWindow];
    NSMutableArray *views = [NSMutableArray array];
    if (modal != nil && [modal isVisible])
        [views addObject:[modal contentView]];
    while ([views count] > 0) {
        NSView *view = [views objectAtIndex:0];
        [views removeObjectAtIndex:0];
        if ([view isKindOfClass:[NSButton class]] && [[(NSButton *)view title] isEqual:title]) {
            [(NSButton *)view performClick:nil];
            [self wake];
            return;
        }
        [views addObjectsFromArray:[view subviews]];
    }
    KGUIScheduleTimer(0.1, @selector(pressWhenModal:), title);
}
@end

static void PressWhenModal(NSString *title)
{
    KGUIScheduleTimer(0.2, @selector(pressWhenModal:), title);
}

/* A folder of the test's own under the run's private temporary folder. */
static NSString *MakeFolder(void)
{
    const char *tmp = getenv("TMPDIR");
    NSString *pattern = [[NSString stringWithUTF8String:tmp && *tmp ? tmp : "/tmp"]
                            stringByAppendingPathComponent:@"koru-panels.XXXXXX"];
    char *name = strdup([pattern fileSystemRepresentation]);
    NSString *folder = name != NULL && mkdtemp(name) != NULL ? [NSString stringWithUTF8String:name] : nil;
    free(name);
    return folder;
}

@interface PanelDelegate : NSObject {
@public
    int ended, code;
    void *context;
    NSString *prompt, *title, *filename;
    BOOL chooseDirectories, multiple;
}
@end

@implementation PanelDelegate
- (void)dealloc
{
    [prompt release];
    [title release];
    [filename release];
    [super dealloc];
}

- (void)panelDidEnd:(NSSavePanel *)panel returnCode:(int)returnCode contextInfo:(void *)contextInfo
{
    ended++;
    code = returnCode;
    context = contextInfo;
    [prompt release];
    [title release];
    [filename release];
    prompt = [[panel prompt] copy];
    title = [[panel title] copy];
    filename = [[panel filename] copy];
    if ([panel isKindOfClass:[NSOpenPanel class]]) {
        chooseDirectories = [(NSOpenPanel *)panel canChooseDirectories];
        multiple = [(NSOpenPanel *)panel allowsMultipleSelection];
    }
}

- (void)alertDidEnd:(NSWindow *)sheet returnCode:(int)returnCode contextInfo:(void *)contextInfo
{
    (void)sheet;
    ended++;
    code = returnCode;
    context = contextInfo;
}

- (void)alertDidDismiss:(NSWindow *)sheet returnCode:(int)returnCode contextInfo:(void *)contextInfo
{
    (void)sheet, (void)returnCode, (void)contextInfo;
}
@end

KT_CASE(OpenAndSavePanelSheets)
{
    NSString *folder = MakeFolder();
    KT_ASSERT(folder != nil);
    [@"a" writeToFile:[folder stringByAppendingPathComponent:@"a.txt"] atomically:NO];
    NSWindow *window = KGUIMakeWindow(NSMakeRect(100, 100, 420, 300), @"Panels");
    PanelDelegate *delegate = [[[PanelDelegate alloc] init] autorelease];
    int context = 0;
    PressWhenModal(@"Cancel");
    KT_EXPECT([NSOpenPanel beginSheetWithSetting:nil prompt:@"Choose" canChooseDirectories:YES
                                  canChooseFiles:YES allowsMultipleSelection:YES
                 treatsFilePackagesAsDirectories:NO canCreateDirectories:NO
                                         message:@"Pick one" window:window directory:folder
                                            file:nil types:[NSArray arrayWithObject:@"txt"]
                                   modalDelegate:delegate
                                  didEndSelector:@selector(panelDidEnd:returnCode:contextInfo:)
                                     contextInfo:&context]);
    KGUISpin(0.1);
    KT_EXPECT(delegate->ended == 1 && delegate->code == NSCancelButton && delegate->context == &context);
    KT_EXPECT_EQUAL_OBJECTS(delegate->prompt, @"Choose");
    KT_EXPECT(delegate->chooseDirectories && delegate->multiple);
    /* OK answers with the name given, in the folder given, with the
     * required type. */
    PressWhenModal(@"OK");
    KT_EXPECT([NSSavePanel beginSheetWithSetting:nil requiredFileType:@"txt" canCreateDirectories:YES
                        canSelectHiddenExtension:NO extensionHidden:NO
                 treatsFilePackagesAsDirectories:NO prompt:@"Keep" title:@"Keep the draft"
                                  nameFieldLabel:nil message:nil window:window
                                       directory:folder file:@"draft" modalDelegate:delegate
                                  didEndSelector:@selector(panelDidEnd:returnCode:contextInfo:)
                                     contextInfo:NULL]);
    KGUISpin(0.1);
    KT_EXPECT(delegate->ended == 2 && delegate->code == NSOKButton);
    KT_EXPECT_EQUAL_OBJECTS(delegate->prompt, @"Keep");
    KT_EXPECT_EQUAL_OBJECTS(delegate->title, @"Keep the draft");
    KT_EXPECT_EQUAL_OBJECTS([delegate->filename stringByStandardizingPath],
                            [[folder stringByAppendingPathComponent:@"draft.txt"] stringByStandardizingPath]);
    /* No window given and no main window: NO, nothing shown. */
    if ([NSApp mainWindow] == nil) {
        KT_EXPECT(![NSOpenPanel beginSheetWithSetting:nil prompt:nil canChooseDirectories:NO
                                       canChooseFiles:YES allowsMultipleSelection:NO
                      treatsFilePackagesAsDirectories:NO canCreateDirectories:NO message:nil
                                               window:nil directory:nil file:nil types:nil
                                        modalDelegate:nil didEndSelector:NULL contextInfo:NULL]);
        KT_EXPECT(![NSSavePanel beginSheetWithSetting:nil requiredFileType:nil canCreateDirectories:NO
                             canSelectHiddenExtension:NO extensionHidden:NO
                      treatsFilePackagesAsDirectories:NO prompt:nil title:nil nameFieldLabel:nil
                                              message:nil window:nil directory:nil file:nil
                                        modalDelegate:nil didEndSelector:NULL contextInfo:NULL]);
        KT_EXPECT(delegate->ended == 2);
    }
    KGUICloseWindow(window);
    [[NSFileManager defaultManager] removeItemAtPath:folder error:NULL];
}

KT_CASE(GenericAlerts)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(100, 100, 420, 300), @"Alerts");
    PanelDelegate *delegate = [[[PanelDelegate alloc] init] autorelease];
    int context = 0;
    /* Modal panels of each style answer the button pressed; "%" in a message
     * is text.  As a sheet the answer is 1, and the delegate hears the button. */
    NSString *buttons[] = {@"Yes", @"No", @"Later"};
    int answers[] = {NSAlertDefaultReturn, NSAlertAlternateReturn, NSAlertOtherReturn};
    for (int style = 0; style <= 2; style++) {
        PressWhenModal(buttons[style]);
        KT_EXPECT([NSPanel runGenericAlert:style parent:nil modalDelegate:nil didEndSelector:NULL
                        didDismissSelector:NULL contextInfo:NULL title:@"Modal" message:style == 1 ? nil : @"100% %@ %s"
                             defaultButton:@"Yes" alternateButton:@"No" otherButton:@"Later"] == answers[style]);
        PressWhenModal(@"No");
        KT_EXPECT([NSPanel runGenericAlert:style parent:window modalDelegate:delegate
                            didEndSelector:@selector(alertDidEnd:returnCode:contextInfo:)
                        didDismissSelector:@selector(alertDidDismiss:returnCode:contextInfo:)
                               contextInfo:&context title:@"Sheet" message:@"50%"
                             defaultButton:@"Yes" alternateButton:@"No" otherButton:nil] == 1);
        KGUISpin(0.1);
        KT_EXPECT_MSG(delegate->ended == style + 1 && delegate->code == NSAlertAlternateReturn
                      && delegate->context == &context, @"style %d: %d ended, code %d", style,
                      delegate->ended, delegate->code);
        KT_EXPECT([window attachedSheet] == nil);
    }
    /* Another style shows nothing. */
    NSUInteger windows = [[NSApp windows] count];
    KT_EXPECT([NSPanel runGenericAlert:3 parent:window modalDelegate:delegate didEndSelector:NULL
                    didDismissSelector:NULL contextInfo:NULL title:@"No" message:nil
                         defaultButton:nil alternateButton:nil otherButton:nil] == -2);
    KT_EXPECT([NSPanel runGenericAlert:-1 parent:nil modalDelegate:nil didEndSelector:NULL
                    didDismissSelector:NULL contextInfo:NULL title:nil message:nil
                         defaultButton:nil alternateButton:nil otherButton:nil] == -2);
    KT_EXPECT([[NSApp windows] count] == windows && delegate->ended == 3);
    KGUICloseWindow(window);
}

/* Records the width the text has while it prints. */
@interface RecordingTextView : NSTextView {
@public
    CGFloat printedWidth;
    int documents;
}
@end

@implementation RecordingTextView
- (void)beginDocument
{
    documents++;
    printedWidth = NSWidth([self frame]);
    [super beginDocument];
}
@end

KT_CASE(PrintAtPageWidth)
{
    NSString *folder = MakeFolder();
    KT_ASSERT(folder != nil);
    NSString *output = [folder stringByAppendingPathComponent:@"page.ps"];
    NSWindow *window = KGUIMakeWindow(NSMakeRect(100, 100, 300, 200), @"Print");
    RecordingTextView *text = [[[RecordingTextView alloc] initWithFrame:NSMakeRect(0, 0, 300, 200)] autorelease];
    [text setString:@"A line long enough to wrap at one width and not at another, printed to a file."];
    [[window contentView] addSubview:text];
    /* The job is saved to a file, never sent to a printer. */
    NSPrintInfo *info = [NSPrintInfo sharedPrintInfo];
    [info setJobDisposition:NSPrintSaveJob];
    [[info dictionary] setObject:output forKey:NSPrintSavePath];
    [info setLeftMargin:36];
    [info setRightMargin:54];
    [info setVerticallyCentered:YES];
    PressWhenModal(@"Cancel");
    KT_EXPECT(![text runPrintModal]);
    KT_EXPECT(text->documents == 0 && ![[NSFileManager defaultManager] fileExistsAtPath:output]);
    PressWhenModal(@"OK");
    KGUIScheduleTimer(0.6, @selector(pressWhenModal:), @"Print");
    KT_EXPECT([text runPrintModal]);
    KT_EXPECT([info jobDisposition] == NSPrintSaveJob || [[info jobDisposition] isEqual:NSPrintSaveJob]);
    NSNumber *scaling = [[info dictionary] objectForKey:NSPrintScalingFactor];
    double factor = scaling != nil ? [scaling doubleValue] : 1.0;
    double expected = ([info paperSize].width - [info leftMargin] - [info rightMargin]) / factor;
    KT_EXPECT_MSG(text->documents == 1 && fabs(text->printedWidth - expected) < 0.01, @"%d %g %g",
                  text->documents, (double)text->printedWidth, expected);
    KT_EXPECT((NSEqualRects([text frame], NSMakeRect(0, 0, 300, 200))) && ![info isVerticallyCentered]);
    NSData *page = [NSData dataWithContentsOfFile:output];
    KT_EXPECT(page != nil && [page length] > 4 && memcmp([page bytes], "%!PS", 4) == 0);
    KGUICloseWindow(window);
    [[NSFileManager defaultManager] removeItemAtPath:folder error:NULL];
}

@interface DragInfo : NSObject {
@public
    NSPasteboard *pasteboard;
}
@end

@implementation DragInfo
- (NSPasteboard *)draggingPasteboard
{
    return pasteboard;
}
@end

KT_CASE(DraggingPasteboards)
{
    NSPasteboard *pasteboard = [NSPasteboard pasteboardWithUniqueName];
    KT_ASSERT(pasteboard != nil);
    NSString *plistType = @"KORUTestRowsType";
    [pasteboard declareTypes:[NSArray arrayWithObjects:NSStringPboardType, plistType, nil] owner:nil];
    [pasteboard setString:@"dragged" forType:NSStringPboardType];
    NSArray *rows = [NSArray arrayWithObjects:@"one", @"two", nil];
    [pasteboard setPropertyList:rows forType:plistType];
    DragInfo *drag = [[[DragInfo alloc] init] autorelease];
    drag->pasteboard = pasteboard;
    KT_EXPECT_EQUAL_OBJECTS([drag pasteboardStringForType:NSStringPboardType], @"dragged");
    KT_EXPECT_EQUAL_OBJECTS([drag pasteboardPropertyListForType:plistType], rows);
    KT_EXPECT([[drag pasteboardDataForType:NSStringPboardType] isEqual:[pasteboard dataForType:NSStringPboardType]]);
    KT_EXPECT([drag pasteboardStringForType:NSTIFFPboardType] == nil);
    KT_EXPECT([drag pasteboardDataForType:nil] == nil && [drag pasteboardPropertyListForType:@""] == nil);
    drag->pasteboard = nil;
    KT_EXPECT([drag pasteboardStringForType:NSStringPboardType] == nil);
    KT_EXPECT([[[[NSObject alloc] init] autorelease] pasteboardDataForType:NSStringPboardType] == nil);
    [pasteboard releaseGlobally];
}

KT_CASE(DocumentsIconsAndText)
{
    NSString *folder = MakeFolder();
    KT_ASSERT(folder != nil);
    NSWindow *window = KGUIMakeWindow(NSMakeRect(100, 100, 300, 200), @"Document");
    KT_EXPECT([NSDocument current] == nil); /* without a window manager no window is main */
    NSString *file = [folder stringByAppendingPathComponent:@"note.txt"];
    NSString *words = @"caf\u00e9 au lait\nsecond line";
    KT_ASSERT([words writeToFile:file atomically:NO encoding:NSUTF8StringEncoding error:NULL]);
    NSImage *blank = [[[NSImage alloc] initWithSize:NSMakeSize(4, 4)] autorelease];
    NSImageView *icon = [[[NSImageView alloc] initWithFrame:NSMakeRect(0, 0, 48, 48)] autorelease];
    [icon setImage:blank];
    [icon setIconImageForFile:nil];
    [icon setIconImageForFile:@""];
    [icon setIconImageForFiles:[NSArray array]];
    [icon setIconImageForFileType:nil];
    KT_EXPECT([icon image] == blank);
    [icon setIconImageForFile:file];
    KT_EXPECT([icon image] != nil && [icon image] != blank);
    NSArray *both = [NSArray arrayWithObjects:file, folder, nil];
    [icon setIconImageForFiles:both];
    KT_EXPECT([icon image] == [[NSWorkspace sharedWorkspace] iconForFiles:both]);
    [icon setImage:blank];
    [icon setIconImageForFileType:@"txt"];
    KT_EXPECT([icon image] != nil && [icon image] != blank);
    NSTextView *text = [[[NSTextView alloc] initWithFrame:NSMakeRect(0, 0, 200, 100)] autorelease];
    [text setString:@"kept"];
    [text setStringFromFile:nil encoding:NSUTF8StringEncoding];
    [text setStringFromFile:@"" encoding:NSUTF8StringEncoding];
    [text setStringFromFile:[folder stringByAppendingPathComponent:@"missing.txt"] encoding:NSUTF8StringEncoding];
    KT_EXPECT_EQUAL_OBJECTS([text string], @"kept");
    [text setStringFromFile:file encoding:NSUTF8StringEncoding];
    KT_EXPECT_EQUAL_OBJECTS([text string], words);
    KGUICloseWindow(window);
    [[NSFileManager defaultManager] removeItemAtPath:folder error:NULL];
}

KT_MAIN()
