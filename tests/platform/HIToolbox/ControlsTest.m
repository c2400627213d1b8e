/* Controls and views in real windows: IDs in tags, edit-text data through
 * the field editor, bounds measured from the top, best sizes. */
#import "KTest.h"
#import "KGUI.h"

#include <HIToolbox/ControlDefinitions.h>
#include <HIToolbox/HIView.h>

enum { kOKCommand = 0x6F6B2020 /* 'ok  ' */ };

static NSTextField *AddField(NSWindow *window, NSRect frame, NSString *text)
{
    NSTextField *field = [[[NSTextField alloc] initWithFrame:frame] autorelease];
    [field setStringValue:text];
    [[window contentView] addSubview:field];
    return field;
}

KT_CASE(ViewsAreFoundByTheirIDs)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(100, 100, 300, 200), @"IDs");
    NSView *box = [[[NSView alloc] initWithFrame:NSMakeRect(0, 0, 300, 100)] autorelease];
    [[window contentView] addSubview:box];
    NSButton *nested = [[[NSButton alloc] initWithFrame:NSMakeRect(10, 10, 80, 24)] autorelease];
    [box addSubview:nested];
    NSTextField *field = AddField(window, NSMakeRect(10, 150, 200, 22), @"x");
    [field setTag:7];

    ControlID signed_ = {0x4B4F5255 /* 'KORU' */, -3};
    KT_EXPECT(SetControlID((ControlRef)nested, &signed_) == noErr);
    ControlRef found = NULL;
    KT_EXPECT(GetControlByID((WindowRef)window, &signed_, &found) == noErr && found == (ControlRef)nested);
    ControlID otherSignature = {0x41424344, -3};
    KT_EXPECT(GetControlByID((WindowRef)window, &otherSignature, &found) == errUnknownControl && found == NULL);
    /* A tag from an interface file is an id of any signature. */
    ControlID plain = {0x41424344, 7};
    KT_EXPECT(HIViewFindByID(HIViewGetRoot((WindowRef)window), plain, &found) == noErr &&
              found == (ControlRef)field);
    KT_EXPECT(HIViewFindByID((HIViewRef)box, plain, &found) == errUnknownControl);
    KT_EXPECT(HIViewFindByID(HIViewGetRoot((WindowRef)window), kHIViewWindowContentID, &found) == noErr &&
              found == (ControlRef)[window contentView]);
    /* A plain view keeps no tag, so it has no ID. */
    KT_EXPECT(SetControlID((ControlRef)box, &plain) == errItemNotControl);
    KT_EXPECT(GetControlOwner((ControlRef)nested) == (WindowRef)window);
    KT_EXPECT(HIViewGetSuperview((HIViewRef)nested) == (HIViewRef)box);

    KT_EXPECT(GetControlByID(NULL, &plain, &found) == paramErr && HIViewFindByID(NULL, plain, &found) == paramErr);
    KT_EXPECT(HIViewGetRoot(NULL) == NULL && GetControlOwner(NULL) == NULL);
    KT_EXPECT(SetControlID(NULL, &plain) == paramErr && GetControlID((ControlRef)nested, NULL) == paramErr);
    KGUICloseWindow(window);
}

/* A command ID goes with its view: a new view at a freed view's address
 * starts without one. */
KT_CASE(CommandIDsGoWithTheirView)
{
    NSButton *view = [[NSButton alloc] initWithFrame:NSMakeRect(0, 0, 10, 10)];
    void *address = view;
    UInt32 command = 1;
    KT_EXPECT(GetControlCommandID((ControlRef)view, &command) == noErr && command == 0);
    SetControlCommandID((ControlRef)view, kOKCommand);
    KT_EXPECT(GetControlCommandID((ControlRef)view, &command) == noErr && command == kOKCommand);
    [view release];
    NSMutableArray *held = [NSMutableArray array];
    NSButton *reused = nil;
    for (int i = 0; i < 64 && reused == nil; ++i) {
        NSButton *candidate = [[[NSButton alloc] initWithFrame:NSMakeRect(0, 0, 10, 10)] autorelease];
        [held addObject:candidate];
        if ((void *)candidate == address)
            reused = candidate;
    }
    /* Without reuse (a sanitizer's quarantine) there is nothing to see. */
    if (reused != nil)
        KT_EXPECT(GetControlCommandID((ControlRef)reused, &command) == noErr && command == 0);
}

KT_CASE(EditTextDataReadsAndWritesTheField)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(100, 100, 300, 200), @"Edit text");
    NSTextField *field = AddField(window, NSMakeRect(10, 150, 200, 22), @"Hello world");
    ControlRef control = (ControlRef)field;

    Size size = 0;
    CFStringRef text = NULL;
    KT_ASSERT(GetControlData(control, kControlEditTextPart, kControlEditTextCFStringTag, sizeof text, &text,
                             &size) == noErr);
    KT_EXPECT_EQUAL_OBJECTS((NSString *)text, @"Hello world");
    CFRelease(text);
    CFStringRef newText = CFSTR("Goodbye");
    KT_EXPECT(SetControlData(control, kControlEditTextPart, kControlEditTextCFStringTag, sizeof newText,
                             &newText) == noErr);
    KT_EXPECT_EQUAL_OBJECTS([field stringValue], @"Goodbye");

    /* Selecting makes the field the one being edited. */
    ControlEditTextSelectionRec selection = {2, 5};
    KT_EXPECT(SetControlData(control, kControlEditTextPart, kControlEditTextSelectionTag, sizeof selection,
                             &selection) == noErr);
    KT_ASSERT([field currentEditor] != nil && NSEqualRanges([[field currentEditor] selectedRange], NSMakeRange(2, 3)));
    ControlEditTextSelectionRec back = {0, 0};
    KT_EXPECT(GetControlData(control, kControlEditTextPart, kControlEditTextSelectionTag, sizeof back, &back,
                             NULL) == noErr && back.selEnd == 5);
    /* Ends beyond the text are cut to it, reversed ends put in order. */
    ControlEditTextSelectionRec wide = {30, -4};
    SetControlData(control, kControlEditTextPart, kControlEditTextSelectionTag, sizeof wide, &wide);
    KT_EXPECT(NSEqualRanges([[field currentEditor] selectedRange], NSMakeRange(0, 7)));

    /* Other parts, tags, sizes and views are refused. */
    KT_EXPECT(GetControlDataSize(control, 3, kControlEditTextCFStringTag, &size) == errInvalidPartCode);
    KT_EXPECT(GetControlDataSize(control, kControlEditTextPart, 0x77686174, &size) == errDataNotSupported);
    KT_EXPECT(SetControlData(control, kControlEditTextPart, kControlEditTextSelectionTag, 2, &selection) ==
                  errDataSizeMismatch &&
              GetControlData(control, kControlEditTextPart, kControlEditTextSelectionTag, 2, &back, NULL) ==
                  errDataSizeMismatch);
    KT_EXPECT(GetControlDataSize((ControlRef)[window contentView], kControlEditTextPart,
                                 kControlEditTextCFStringTag, &size) == errDataNotSupported);
    KT_EXPECT(GetControlData(NULL, kControlEditTextPart, kControlEditTextCFStringTag, 0, NULL, NULL) == paramErr);
    KT_EXPECT(SetControlData(control, kControlEditTextPart, kControlEditTextCFStringTag, sizeof text, NULL) ==
              paramErr);
    KGUICloseWindow(window);
}

KT_CASE(BoundsAreMeasuredFromTheTop)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(100, 100, 300, 200), @"Bounds");
    NSButton *button = [[[NSButton alloc] initWithFrame:NSMakeRect(20, 150, 60, 30)] autorelease];
    [button setTitle:@"A much longer title"];
    [[window contentView] addSubview:button];
    Rect bounds;
    KT_ASSERT(GetControlBounds((ControlRef)button, &bounds) == &bounds);
    KT_EXPECT(bounds.top == 20 && bounds.left == 20 && bounds.bottom == 50 && bounds.right == 80);
    Rect moved = {100, 10, 120, 110};
    SetControlBounds((ControlRef)button, &moved);
    KT_EXPECT(NSEqualRects([button frame], NSMakeRect(10, 80, 100, 20)));

    Rect best;
    SInt16 baseline = -1;
    NSSize cellSize = [[button cell] cellSize];
    KT_EXPECT(GetBestControlRect((ControlRef)button, &best, &baseline) == noErr && best.top == 100 && best.left == 10);
    KT_EXPECT(best.right - best.left == (short)ceil(cellSize.width) &&
              best.bottom - best.top == (short)ceil(cellSize.height));
    KT_EXPECT(GetBestControlRect((ControlRef)[window contentView], &best, NULL) == errDataNotSupported &&
              best.top == 0 && best.left == 0 && best.bottom == 0 && best.right == 0);
    KT_EXPECT(GetControlBounds(NULL, &bounds) == NULL && GetBestControlRect(NULL, &best, NULL) == paramErr);
    SetControlBounds(NULL, &moved);
    KGUICloseWindow(window);
}

KT_MAIN()
