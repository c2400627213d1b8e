/* Controls: a ControlRef is an NSView, its owner the view's NSWindow.
 *
 * A control's ID (signature and id) lives in the view's tag, so that views
 * loaded from interface files are found by the tag given there: a tag that
 * fits 32 bits is the id of a control of any signature; SetControlID with a
 * nonzero signature stores both, the signature in the tag's upper 32 bits.
 * Views that keep no tag (plain NSView, NSBox) have no ID.
 *
 * Control data is read and written by part and tag; the edit-text tags of
 * ControlDefinitions.h address an NSTextField (or an NSText view).  Bounds
 * are QuickDraw rectangles in the superview, measured from its top left
 * corner.  Command IDs are kept by the toolbox for each view until a new one
 * is set.  Use from the main thread only. */
#ifndef HITOOLBOX_CONTROLS_H
#define HITOOLBOX_CONTROLS_H

#include <CoreFoundation/CoreFoundation.h>
#include <HIToolbox/MacWindows.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct OpaqueControlRef *ControlRef;
typedef ControlRef ControlHandle;
typedef SInt16 ControlPartCode;

typedef struct ControlID {
    OSType signature;
    SInt32 id;
} ControlID;

enum { kControlNoPart = 0, kControlEntireControl = 0 };

/* Control Manager results. */
enum {
    errMessageNotSupported = -30580,
    errDataNotSupported = -30581,
    errControlDoesntSupportFocus = -30582,
    errUnknownControl = -30584,
    errInvalidPartCode = -30588,
    errDataSizeMismatch = -30591,
    errItemNotControl = -30596,
    controlHandleInvalidErr = -30599
};

/* Copies the data of the part and tag into inBuffer (at most inBufferSize
 * bytes; inBuffer may be NULL to ask for the size); outActualSize receives
 * the data's full size.  errDataNotSupported for a tag the control does not
 * have, errInvalidPartCode for another part, paramErr for NULL. */
OSErr GetControlData(ControlRef inControl, ControlPartCode inPart, ResType inTagName, Size inBufferSize,
                     void *inBuffer, Size *outActualSize);
/* Sets the data of the part and tag; errDataSizeMismatch when inSize is not
 * the tag's size. */
OSErr SetControlData(ControlRef inControl, ControlPartCode inPart, ResType inTagName, Size inSize,
                     const void *inData);
OSErr GetControlDataSize(ControlRef inControl, ControlPartCode inPart, ResType inTagName,
                         Size *outMaxSize);

/* The bounds the control would like: its top left corner stays, the size is
 * the one its cell needs.  outBaseLineOffset (may be NULL) receives the
 * distance of the text's baseline from the bottom.  errDataNotSupported with
 * an empty rectangle for views that have no natural size. */
OSErr GetBestControlRect(ControlRef inControl, Rect *outRect, SInt16 *outBaseLineOffset);
/* The control's frame in its superview; NULL for a NULL control. */
Rect *GetControlBounds(ControlRef control, Rect *bounds);
void SetControlBounds(ControlRef control, const Rect *bounds);

/* The control with the ID in the window (searched from the window's root
 * view); errUnknownControl when there is none, paramErr for NULL. */
OSStatus GetControlByID(WindowRef inWindow, const ControlID *inID, ControlRef *outControl);
/* errItemNotControl for a view that keeps no tag. */
OSStatus SetControlID(ControlRef inControl, const ControlID *inID);
OSStatus GetControlID(ControlRef inControl, ControlID *outID);
OSStatus SetControlCommandID(ControlRef inControl, UInt32 inCommandID);
/* 0 in outCommandID when none was set. */
OSStatus GetControlCommandID(ControlRef inControl, UInt32 *outCommandID);
/* The control's window; NULL when it is in none. */
WindowRef GetControlOwner(ControlRef inControl);

#ifdef __cplusplus
}
#endif

#endif
