/* Views: an HIViewRef is an NSView (the same object as its ControlRef).  A
 * window's root view is the top of its view tree (the frame view around the
 * content view where there is one).  IDs are control IDs (Controls.h). */
#ifndef HITOOLBOX_HIVIEW_H
#define HITOOLBOX_HIVIEW_H

#include <HIToolbox/Controls.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef ControlRef HIViewRef;
typedef ControlID HIViewID;

/* Finds the window's content view from its root. */
extern const HIViewID kHIViewWindowContentID;

/* The window's root view; NULL for NULL. */
HIViewRef HIViewGetRoot(WindowRef inWindow);
/* The first view below inStartView (depth first, in subview order) with the
 * ID; errUnknownControl when there is none, paramErr for NULL. */
OSStatus HIViewFindByID(HIViewRef inStartView, HIViewID inID, HIViewRef *outControl);
/* NULL for NULL or a view without superview. */
HIViewRef HIViewGetSuperview(HIViewRef inView);

#ifdef __cplusplus
}
#endif

#endif
