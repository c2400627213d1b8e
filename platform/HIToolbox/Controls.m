/* Controls and views over NSView: IDs in tags, edit-text data, bounds in
 * QuickDraw rectangles, and lookups by ID in a window's view tree. */
#import <AppKit/AppKit.h>

#include <HIToolbox/ControlDefinitions.h>
#import "ObjectLifetimes.h"
#include <HIToolbox/HIView.h>
#include <CoreServices/MacErrors.h>

#include <math.h>
#include <string.h>

const HIViewID kHIViewWindowContentID = {0x77696E64 /* 'wind' */, 1};

static NSView *ViewOf(ControlRef control)
{
    return (NSView *)control;
}

/* --- IDs -------------------------------------------------------------------- */

/* Only views that can take a tag carry an ID (NSView's own tag is a fixed
 * -1). */
static BOOL KeepsTag(NSView *view)
{
    return [view respondsToSelector:@selector(setTag:)];
}

/* A tag that fits 32 bits is an id with any signature (as a tag given in an
 * interface file is); otherwise its upper half is the signature. */
static BOOL TagHasSignature(NSInteger tag)
{
    return tag != (NSInteger)(SInt32)tag;
}

static BOOL ViewHasID(NSView *view, ControlID controlID)
{
    if (!KeepsTag(view))
        return NO;
    NSInteger tag = [view tag];
    if (!TagHasSignature(tag))
        return (SInt32)tag == controlID.id;
    return (UInt32)((UInt64)tag >> 32) == controlID.signature && (SInt32)(UInt32)tag == controlID.id;
}

OSStatus SetControlID(ControlRef inControl, const ControlID *inID)
{
    if (inControl == NULL || inID == NULL)
        return paramErr;
    NSView *view = ViewOf(inControl);
    if (!KeepsTag(view))
        return errItemNotControl;
    NSInteger tag = inID->signature == 0
                        ? (NSInteger)inID->id
                        : (NSInteger)(((UInt64)inID->signature << 32) | (UInt32)inID->id);
    [(NSControl *)view setTag:tag];
    return noErr;
}

OSStatus GetControlID(ControlRef inControl, ControlID *outID)
{
    if (inControl == NULL || outID == NULL)
        return paramErr;
    NSView *view = ViewOf(inControl);
    if (!KeepsTag(view))
        return errItemNotControl;
    NSInteger tag = [view tag];
    outID->signature = TagHasSignature(tag) ? (OSType)((UInt64)tag >> 32) : 0;
    outID->id = (SInt32)(UInt32)tag;
    return noErr;
}

static NSView *FindBelow(NSView *start, HIViewID viewID)
{
    for (NSView *subview in [start subviews]) {
        if (ViewHasID(subview, viewID))
            return subview;
        NSView *found = FindBelow(subview, viewID);
        if (found != nil)
            return found;
    }
    return nil;
}

static BOOL IsWithin(NSView *view, NSView *ancestor)
{
    for (; view != nil; view = [view superview]) {
        if (view == ancestor)
            return YES;
    }
    return NO;
}

OSStatus HIViewFindByID(HIViewRef inStartView, HIViewID inID, HIViewRef *outControl)
{
    if (inStartView == NULL || outControl == NULL)
        return paramErr;
    NSView *start = ViewOf(inStartView);
    NSView *found = nil;
    if (inID.signature == kHIViewWindowContentID.signature && inID.id == kHIViewWindowContentID.id) {
        NSView *content = [[start window] contentView];
        if (content != start && IsWithin(content, start))
            found = content;
    }
    if (found == nil)
        found = FindBelow(start, inID);
    *outControl = (HIViewRef)found;
    return found != nil ? noErr : errUnknownControl;
}

HIViewRef HIViewGetRoot(WindowRef inWindow)
{
    if (inWindow == NULL)
        return NULL;
    NSView *content = [(NSWindow *)inWindow contentView];
    NSView *root = content;
    while ([root superview] != nil)
        root = [root superview];
    return (HIViewRef)root;
}

HIViewRef HIViewGetSuperview(HIViewRef inView)
{
    return inView != NULL ? (HIViewRef)[ViewOf(inView) superview] : NULL;
}

OSStatus GetControlByID(WindowRef inWindow, const ControlID *inID, ControlRef *outControl)
{
    if (inWindow == NULL || inID == NULL || outControl == NULL)
        return paramErr;
    HIViewRef root = HIViewGetRoot(inWindow);
    if (root == NULL) {
        *outControl = NULL;
        return errUnknownControl;
    }
    return HIViewFindByID(root, *inID, outControl);
}

WindowRef GetControlOwner(ControlRef inControl)
{
    return inControl != NULL ? (WindowRef)[ViewOf(inControl) window] : NULL;
}

/* Command IDs are the toolbox's own record per view, keyed by the view's
 * address.  A view's entry goes with the view, so that a later view at the
 * same address starts without one. */
static NSMapTable *gCommandIDs;

static void ForgetCommandID(id view)
{
    if (gCommandIDs != nil)
        NSMapRemove(gCommandIDs, view);
}

OSStatus SetControlCommandID(ControlRef inControl, UInt32 inCommandID)
{
    if (inControl == NULL)
        return paramErr;
    KORUForgetOnDealloc([NSView class], ForgetCommandID);
    if (gCommandIDs == nil)
        gCommandIDs = NSCreateMapTable(NSNonOwnedPointerMapKeyCallBacks, NSIntegerMapValueCallBacks, 0);
    if (inCommandID == 0)
        NSMapRemove(gCommandIDs, inControl);
    else
        NSMapInsert(gCommandIDs, inControl, (void *)(uintptr_t)inCommandID);
    return noErr;
}

OSStatus GetControlCommandID(ControlRef inControl, UInt32 *outCommandID)
{
    if (inControl == NULL || outCommandID == NULL)
        return paramErr;
    *outCommandID = gCommandIDs != nil ? (UInt32)(uintptr_t)NSMapGet(gCommandIDs, inControl) : 0;
    return noErr;
}

/* --- Bounds ----------------------------------------------------------------- */

static short ClampToShort(CGFloat value)
{
    long rounded = lround(value);
    if (rounded > SHRT_MAX)
        return SHRT_MAX;
    if (rounded < SHRT_MIN)
        return SHRT_MIN;
    return (short)rounded;
}

/* QuickDraw measures down from the top of the superview. */
static CGFloat TopOf(NSView *view, NSRect frame)
{
    NSView *superview = [view superview];
    if (superview == nil || [superview isFlipped])
        return NSMinY(frame);
    return NSHeight([superview bounds]) - NSMaxY(frame);
}

Rect *GetControlBounds(ControlRef control, Rect *bounds)
{
    if (control == NULL || bounds == NULL)
        return NULL;
    NSView *view = ViewOf(control);
    NSRect frame = [view frame];
    CGFloat top = TopOf(view, frame);
    bounds->top = ClampToShort(top);
    bounds->left = ClampToShort(NSMinX(frame));
    bounds->bottom = ClampToShort(top + NSHeight(frame));
    bounds->right = ClampToShort(NSMaxX(frame));
    return bounds;
}

void SetControlBounds(ControlRef control, const Rect *bounds)
{
    if (control == NULL || bounds == NULL)
        return;
    NSView *view = ViewOf(control);
    NSView *superview = [view superview];
    CGFloat width = bounds->right - bounds->left, height = bounds->bottom - bounds->top;
    CGFloat y = bounds->top;
    if (superview != nil && ![superview isFlipped])
        y = NSHeight([superview bounds]) - bounds->bottom;
    [view setFrame:NSMakeRect(bounds->left, y, width, height)];
    [view setNeedsDisplay:YES];
}

OSErr GetBestControlRect(ControlRef inControl, Rect *outRect, SInt16 *outBaseLineOffset)
{
    if (inControl == NULL || outRect == NULL)
        return paramErr;
    memset(outRect, 0, sizeof *outRect);
    if (outBaseLineOffset != NULL)
        *outBaseLineOffset = 0;
    NSView *view = ViewOf(inControl);
    if (![view isKindOfClass:[NSControl class]] || [(NSControl *)view cell] == nil)
        return errDataNotSupported;
    NSCell *cell = [(NSControl *)view cell];
    NSSize size = [cell cellSize];
    Rect bounds;
    GetControlBounds(inControl, &bounds);
    outRect->top = bounds.top;
    outRect->left = bounds.left;
    outRect->bottom = ClampToShort(bounds.top + ceil(size.height));
    outRect->right = ClampToShort(bounds.left + ceil(size.width));
    if (outBaseLineOffset != NULL && [cell font] != nil)
        *outBaseLineOffset = (SInt16)ceil(-[[cell font] descender]);
    return noErr;
}

/* --- Edit-text data --------------------------------------------------------- */

static BOOL IsEditText(NSView *view)
{
    return [view isKindOfClass:[NSTextField class]] || [view isKindOfClass:[NSText class]];
}

static Size DataSizeOf(ResType tag)
{
    switch (tag) {
    case kControlEditTextCFStringTag: return sizeof(CFStringRef);
    case kControlEditTextSelectionTag: return sizeof(ControlEditTextSelectionRec);
    default: return -1;
    }
}

static OSErr CheckEditTextData(ControlRef control, ControlPartCode part, ResType tag)
{
    if (!IsEditText(ViewOf(control)) || DataSizeOf(tag) < 0)
        return errDataNotSupported;
    if (part != kControlEditTextPart && part != kControlEntireControl)
        return errInvalidPartCode;
    return noErr;
}

static NSString *TextOf(NSView *view)
{
    if ([view isKindOfClass:[NSText class]])
        return [(NSText *)view string];
    return [(NSTextField *)view stringValue];
}

/* The text being edited: an NSText view itself, or the field editor of a
 * text field that is being edited (nil otherwise). */
static NSText *EditorOf(NSView *view)
{
    if ([view isKindOfClass:[NSText class]])
        return (NSText *)view;
    return [(NSTextField *)view currentEditor];
}

static SInt16 ClampToLength(SInt16 value, NSUInteger length)
{
    if (value < 0)
        return 0;
    return (NSUInteger)value > length ? (SInt16)length : value;
}

static ControlEditTextSelectionRec SelectionOf(NSView *view)
{
    ControlEditTextSelectionRec selection = {0, 0};
    NSText *editor = EditorOf(view);
    if (editor != nil) {
        NSRange range = [editor selectedRange];
        selection.selStart = (SInt16)range.location;
        selection.selEnd = (SInt16)NSMaxRange(range);
    }
    return selection;
}

static OSErr SetSelectionOf(NSView *view, ControlEditTextSelectionRec selection)
{
    NSText *editor = EditorOf(view);
    if (editor == nil) {
        /* A field that is not being edited has no selection to set: it
         * becomes the one being edited, as clicking into it would. */
        if ([view window] == nil)
            return errDataNotSupported;
        [(NSTextField *)view selectText:nil];
        editor = EditorOf(view);
        if (editor == nil)
            return errDataNotSupported;
    }
    NSUInteger length = [[editor string] length];
    SInt16 start = ClampToLength(selection.selStart, length);
    SInt16 end = ClampToLength(selection.selEnd, length);
    if (end < start) {
        SInt16 swap = start;
        start = end;
        end = swap;
    }
    [editor setSelectedRange:NSMakeRange((NSUInteger)start, (NSUInteger)(end - start))];
    return noErr;
}

static void SetTextOf(NSView *view, NSString *text)
{
    if ([view isKindOfClass:[NSText class]])
        [(NSText *)view setString:text];
    else
        [(NSTextField *)view setStringValue:text];
}

OSErr GetControlDataSize(ControlRef inControl, ControlPartCode inPart, ResType inTagName, Size *outMaxSize)
{
    if (inControl == NULL || outMaxSize == NULL)
        return paramErr;
    OSErr status = CheckEditTextData(inControl, inPart, inTagName);
    *outMaxSize = status == noErr ? DataSizeOf(inTagName) : 0;
    return status;
}

OSErr GetControlData(ControlRef inControl, ControlPartCode inPart, ResType inTagName, Size inBufferSize,
                     void *inBuffer, Size *outActualSize)
{
    if (inControl == NULL)
        return paramErr;
    OSErr status = CheckEditTextData(inControl, inPart, inTagName);
    if (status != noErr)
        return status;
    Size size = DataSizeOf(inTagName);
    if (outActualSize != NULL)
        *outActualSize = size;
    if (inBuffer == NULL)
        return noErr;
    if (inBufferSize < size)
        return errDataSizeMismatch;
    NSView *view = ViewOf(inControl);
    if (inTagName == kControlEditTextCFStringTag) {
        CFStringRef text = (CFStringRef)[TextOf(view) copy];
        memcpy(inBuffer, &text, sizeof text);
    } else {
        ControlEditTextSelectionRec selection = SelectionOf(view);
        memcpy(inBuffer, &selection, sizeof selection);
    }
    return noErr;
}

OSErr SetControlData(ControlRef inControl, ControlPartCode inPart, ResType inTagName, Size inSize,
                     const void *inData)
{
    if (inControl == NULL || inData == NULL)
        return paramErr;
    OSErr status = CheckEditTextData(inControl, inPart, inTagName);
    if (status != noErr)
        return status;
    if (inSize != DataSizeOf(inTagName))
        return errDataSizeMismatch;
    NSView *view = ViewOf(inControl);
    if (inTagName == kControlEditTextCFStringTag) {
        CFStringRef text;
        memcpy(&text, inData, sizeof text);
        if (text == NULL || ![(id)text isKindOfClass:[NSString class]])
            return paramErr;
        SetTextOf(view, (NSString *)text);
        return noErr;
    }
    ControlEditTextSelectionRec selection;
    memcpy(&selection, inData, sizeof selection);
    return SetSelectionOf(view, selection);
}
