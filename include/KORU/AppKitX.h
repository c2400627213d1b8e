/* AppKitX: small conveniences over AppKit.  Edge-and-corner geometry on
 * rectangles (the NSRect... functions, mirrored by NSView methods on the
 * view's frame), null-tolerant equality, table selection, responder-chain
 * insertion, opening files and URLs, sheets, alerts, panels and printing.
 *
 * Rectangles are not flipped: bottom is origin y, top is origin y + height,
 * left is origin x, right is origin x + width.  The rectangle functions and
 * the equality functions are pure and may be called from any thread; every
 * method drives AppKit objects and belongs on the main thread.  Nothing here
 * raises: empty arguments give the neutral result each entry names. */
#import <AppKit/AppKit.h>

#include <CoreServices/LaunchServices.h>
#include <HIToolbox/MacWindows.h>

#include <stdarg.h>

/* ---- Rectangle geometry.  The rectangle is passed by pointer and changed
 * in place; a NULL rectangle makes a changing function do nothing and a
 * reading function answer 0 or the point (0, 0). */

CGFloat NSRectLeft(const NSRect *rect);    /* x */
CGFloat NSRectRight(const NSRect *rect);   /* x + width */
CGFloat NSRectBottom(const NSRect *rect);  /* y */
CGFloat NSRectTop(const NSRect *rect);     /* y + height */
CGFloat NSRectWidth(const NSRect *rect);
CGFloat NSRectHeight(const NSRect *rect);

NSPoint NSRectLeftBottom(const NSRect *rect);
NSPoint NSRectLeftTop(const NSRect *rect);
NSPoint NSRectRightBottom(const NSRect *rect);
NSPoint NSRectRightTop(const NSRect *rect);
/* (x + width * 0.5, y + height * 0.5), computed in double precision. */
NSPoint NSRectCenter(const NSRect *rect);

/* Moves; the size is kept. */
void NSRectHorizontalMove(NSRect *rect, CGFloat delta);
void NSRectVerticalMove(NSRect *rect, CGFloat delta);
void NSRectLeftMoveTo(NSRect *rect, CGFloat value);
void NSRectBottomMoveTo(NSRect *rect, CGFloat value);
void NSRectRightMoveTo(NSRect *rect, CGFloat value);
void NSRectTopMoveTo(NSRect *rect, CGFloat value);
/* Nothing when either pointer is NULL. */
void NSRectCenterMoveTo(NSRect *rect, const NSPoint *point);

/* Edges moved outward by delta (inward when negative).  The left and bottom
 * edges are not clamped (the size may go negative); the right and top edges
 * are: the size never drops below 0. */
void NSRectLeftResize(NSRect *rect, CGFloat delta);
void NSRectBottomResize(NSRect *rect, CGFloat delta);
void NSRectRightResize(NSRect *rect, CGFloat delta);
void NSRectTopResize(NSRect *rect, CGFloat delta);

/* One edge moved to value, the opposite edge staying; an edge never passes
 * the opposite one (the size stops at 0). */
void NSRectLeftResizeTo(NSRect *rect, CGFloat value);
void NSRectBottomResizeTo(NSRect *rect, CGFloat value);
void NSRectRightResizeTo(NSRect *rect, CGFloat value);
void NSRectTopResizeTo(NSRect *rect, CGFloat value);

/* New width or height, keeping the named opposite edge; a negative size
 * leaves the rectangle unchanged (a NaN is taken as given). */
void NSRectSetWidthResizingRight(NSRect *rect, CGFloat width);   /* left edge stays */
void NSRectSetWidthResizingLeft(NSRect *rect, CGFloat width);    /* right edge stays */
void NSRectSetHeightResizingTop(NSRect *rect, CGFloat height);   /* bottom edge stays */
void NSRectSetHeightResizingBottom(NSRect *rect, CGFloat height); /* top edge stays */

/* ---- Null-tolerant equality.  Two empty objects are not equal. */

/* NO when either is nil, else [a isEqual:b]. */
BOOL NSIsEqual(id a, id b);
/* YES for nil or an NSNull. */
BOOL NSIsNull(id a);
/* YES for nil or "". */
BOOL NSStringIsVoid(NSString *s);
/* NO when either is nil, else [a isEqualToString:b]. */
BOOL NSStringIsEqual(NSString *a, NSString *b);

/* ---- Views: the rectangle functions on the view's frame.  Changing
 * methods set the new frame with setFrame: and request no display. */
@interface NSView (AppKitX)

- (CGFloat)left;
- (CGFloat)right;
- (CGFloat)top;
- (CGFloat)bottom;
- (CGFloat)width;
- (CGFloat)height;
- (NSPoint)leftBottom;
- (NSPoint)leftTop;
- (NSPoint)rightBottom;
- (NSPoint)rightTop;
- (NSPoint)center;
- (CGFloat)horizontalCenter;
- (CGFloat)verticalCenter;

- (void)horizontalMove:(CGFloat)delta;
- (void)verticalMove:(CGFloat)delta;
- (void)leftMoveTo:(CGFloat)value;
- (void)rightMoveTo:(CGFloat)value;
- (void)topMoveTo:(CGFloat)value;
- (void)bottomMoveTo:(CGFloat)value;
- (void)centerMoveTo:(NSPoint)point;
/* centerMoveTo: with (value, centre y) and (centre x, value). */
- (void)horizontalCenterMoveTo:(CGFloat)value;
- (void)verticalCenterMoveTo:(CGFloat)value;

- (void)leftResize:(CGFloat)delta;
- (void)rightResize:(CGFloat)delta;
- (void)topResize:(CGFloat)delta;
- (void)bottomResize:(CGFloat)delta;
- (void)leftResizeTo:(CGFloat)value;
- (void)rightResizeTo:(CGFloat)value;
- (void)topResizeTo:(CGFloat)value;
- (void)bottomResizeTo:(CGFloat)value;
- (void)setWidthResizingLeft:(CGFloat)width;
- (void)setWidthResizingRight:(CGFloat)width;
- (void)setHeightResizingTop:(CGFloat)height;
- (void)setHeightResizingBottom:(CGFloat)height;

/* Makes the view its window's first responder (nothing without a window). */
- (void)getTabFocus;
/* Takes the view out of its superview, keeping it alive with a retain of
 * its own, and answers YES; NO (nothing done) without a superview. */
- (BOOL)unuseFromSuperview;
/* Puts the view into view (as its last subview) and answers YES; a view
 * parked by unuseFromSuperview is released once to balance that retain.
 * NO for nil or when the receiver already is a descendant of view. */
- (BOOL)useInView:(NSView *)view;
/* The mouse in the view's coordinates; (2147483648.0, 2147483648.0), which
 * means "no position", when the view has no window or the window no content
 * view. */
- (NSPoint)mouseLocation;

@end

@interface NSWindow (AppKitX)

/* The mouse (screen position) in the window's base coordinates. */
- (NSPoint)mouseLocation;
/* Shows the receiver as a sheet on window (NSApp's beginSheet:...). */
- (void)beginSheetForWindow:(NSWindow *)window modalDelegate:(id)delegate
             didEndSelector:(SEL)didEndSelector contextInfo:(void *)contextInfo;
/* Ends the receiver's sheet (endSheet:, or endSheet:returnCode:) and closes it. */
- (void)closeSheet;
- (void)closeSheetWithReturnCode:(int)returnCode;
/* Moves the receiver (its size kept) where the Window Manager places a
 * document window of its size by method relative to parentWindow; YES only
 * when every step worked. */
- (BOOL)reposition:(WindowPositionMethod)method parentWindow:(WindowRef)parentWindow;

@end

@interface NSTableView (AppKitX)

/* The lowest selected row; -1 when none. */
- (int)topSelectedRow;
/* The highest selected row, looking from the last row down to row 1: row 0
 * is never examined, so a selection of row 0 alone answers -1.  Callers
 * rely on this; it is kept. */
- (int)bottomSelectedRow;
/* The row under the mouse (-1 when none). */
- (int)mouseOverRow;
/* Selects row (clamped to the table; nothing for an empty table), extending
 * the selection or not, scrolls it into view and, with edit, starts editing
 * it in each editable column in turn (the last one keeps the editor). */
- (void)selectRow:(int)row asExtending:(BOOL)extend andEdit:(BOOL)edit;

@end

/* checked: the state is not 0 (NSOffState); setChecked: state 1 or 0. */
@interface NSButton (AppKitX)
- (BOOL)checked;
- (void)setChecked:(BOOL)checked;
@end

@interface NSCell (AppKitX)
- (BOOL)checked;
- (void)setChecked:(BOOL)checked;
@end

@interface NSMenuItem (AppKitX)
- (BOOL)checked;
- (void)setChecked:(BOOL)checked;
- (void)toggleChecked;
@end

@interface NSMenu (AppKitX)

/* The item reached by the tags, ended by a 0 tag: the receiver's item
 * firstTag, then in its submenu the item of the next tag, and so on.  nil
 * for a firstTag of 0 or as soon as a look-up fails.  Tags 3, 7, 0 name item
 * 7 of the submenu of item 3. */
- (NSMenuItem *)itemWithTags:(int)firstTag, ...;
- (NSMenuItem *)itemWithTags:(int)firstTag arguments:(va_list)arguments;

@end

@interface NSDocument (AppKitX)
/* The shared document controller's current document. */
+ (id)current;
@end

/* The workspace's icon for the file (tilde expanded), the files or the file
 * type; nil or an empty argument changes nothing. */
@interface NSImageView (AppKitX)
- (void)setIconImageForFile:(NSString *)path;
- (void)setIconImageForFiles:(NSArray *)paths;
- (void)setIconImageForFileType:(NSString *)fileType;
@end

@interface NSText (AppKitX)
/* The text of the file read in the encoding; nothing changes for an empty
 * path or an unreadable file. */
- (void)setStringFromFile:(NSString *)path encoding:(NSStringEncoding)encoding;
@end

@interface NSTextView (AppKitX)
/* Runs the page layout panel and prints the text reflowed to the printable
 * page width; the frame is restored afterwards.  NO when the panel is not
 * answered with OK. */
- (BOOL)runPrintModal;
@end

@interface NSString (AppKitX)
/* The file at the (tilde-expanded) path opened by the workspace. */
- (BOOL)open;
/* The file at the path shown in the file viewer. */
- (BOOL)show;
/* The receiver opened as a URL; NO when it is not one. */
- (BOOL)openAsURL;
@end

@interface NSResponder (AppKitX)
/* Puts responder directly after the receiver in the chain, ahead of the
 * receiver's old next responder.  Nothing for nil or when responder already
 * is the next one. */
- (void)insertNextResponder:(NSResponder *)responder;
/* Logs the chain from the receiver on, one responder a line. */
- (void)logResponderChain;
@end

@interface NSWorkspace (AppKitX)
/* The path of the application Launch Services finds for the creator (four
 * characters), the bundle identifier and the name; nil when none. */
- (NSString *)applicationForName:(NSString *)name creator:(NSString *)creator
                      identifier:(NSString *)identifier;
/* The path of the frontmost process's application, or nil. */
- (NSString *)frontProcessPath;
/* The bundle identifier of frontProcessPath's bundle, or nil. */
- (NSString *)frontProcessIdentifier;
/* Launches the application of that name with the flags; NO for an empty
 * name or an application that is not found. */
- (BOOL)launchApplication:(NSString *)name withLaunchFlags:(LSLaunchFlags)flags;
@end

/* For dragging-info objects: the receiver's draggingPasteboard's data,
 * property list or string of the type; nil when there is no pasteboard,
 * the type is empty or the pasteboard does not hold it. */
@interface NSObject (PasteboardAdditions)
- (NSData *)pasteboardDataForType:(NSString *)type;
- (id)pasteboardPropertyListForType:(NSString *)type;
- (NSString *)pasteboardStringForType:(NSString *)type;
@end

@interface NSOpenPanel (AppKitX)
/* Sets up panel (a new open panel when nil) and begins it as a sheet on
 * window (the application's main window when nil).  NO when no panel or no
 * window can be had. */
+ (BOOL)beginSheetWithSetting:(NSOpenPanel *)panel prompt:(NSString *)prompt
         canChooseDirectories:(BOOL)canChooseDirectories canChooseFiles:(BOOL)canChooseFiles
      allowsMultipleSelection:(BOOL)allowsMultipleSelection
treatsFilePackagesAsDirectories:(BOOL)treatsFilePackagesAsDirectories
         canCreateDirectories:(BOOL)canCreateDirectories message:(NSString *)message
                       window:(NSWindow *)window directory:(NSString *)directory
                         file:(NSString *)file types:(NSArray *)types
                modalDelegate:(id)delegate didEndSelector:(SEL)didEndSelector
                  contextInfo:(void *)contextInfo;
@end

@interface NSSavePanel (AppKitX)
/* The same for a save panel (a new one when panel is nil). */
+ (BOOL)beginSheetWithSetting:(NSSavePanel *)panel requiredFileType:(NSString *)requiredFileType
         canCreateDirectories:(BOOL)canCreateDirectories
     canSelectHiddenExtension:(BOOL)canSelectHiddenExtension
              extensionHidden:(BOOL)extensionHidden
treatsFilePackagesAsDirectories:(BOOL)treatsFilePackagesAsDirectories
                       prompt:(NSString *)prompt title:(NSString *)title
               nameFieldLabel:(NSString *)nameFieldLabel message:(NSString *)message
                       window:(NSWindow *)window directory:(NSString *)directory
                         file:(NSString *)file modalDelegate:(id)delegate
               didEndSelector:(SEL)didEndSelector contextInfo:(void *)contextInfo;
@end

@interface NSPanel (AppKitX)
/* style 0 plain, 1 informational, 2 critical.  With parent: the alert sheet
 * of that style on parent, answering 1.  Without: the modal alert panel,
 * answering the button pressed.  Another style: -2, nothing shown. */
+ (int)runGenericAlert:(int)style parent:(NSWindow *)parent modalDelegate:(id)delegate
        didEndSelector:(SEL)didEndSelector didDismissSelector:(SEL)didDismissSelector
           contextInfo:(void *)contextInfo title:(NSString *)title message:(NSString *)message
         defaultButton:(NSString *)defaultButton alternateButton:(NSString *)alternateButton
           otherButton:(NSString *)otherButton;
@end
