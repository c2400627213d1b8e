/* Control definitions: the edit-text part and its data tags.
 *
 * 'cfst' is the text as a CFStringRef (reading hands out a new reference the
 * caller releases; writing copies the string); 'sele' the selection as two
 * native-endian SInt16s, start and end. */
#ifndef HITOOLBOX_CONTROLDEFINITIONS_H
#define HITOOLBOX_CONTROLDEFINITIONS_H

#include <HIToolbox/Controls.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { kControlEditTextPart = 5 };

enum {
    kControlEditTextCFStringTag = 0x63667374, /* 'cfst' */
    kControlEditTextSelectionTag = 0x73656C65 /* 'sele' */
};

typedef struct ControlEditTextSelectionRec {
    SInt16 selStart;
    SInt16 selEnd;
} ControlEditTextSelectionRec;
typedef ControlEditTextSelectionRec *ControlEditTextSelectionPtr;

#ifdef __cplusplus
}
#endif

#endif
