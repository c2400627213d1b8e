/* Gestalt: facts about the system, asked by four-character selector.
 *
 * The built-in selectors describe the API level this platform offers, not the
 * Linux kernel: 'sysv' answers 0x1049 (binary-coded 10.4.9, so every "10.4 or
 * later" test takes the modern path), 'sys1'/'sys2'/'sys3' answer 10, 4 and 9,
 * and 'sysa' answers gestaltIntel.  A process may add, replace or delete
 * values for itself; the table is process-wide and guarded by a lock. */
#ifndef CORESERVICES_GESTALT_H
#define CORESERVICES_GESTALT_H

#include <CoreServices/MacErrors.h>
#include <MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
    gestaltSystemVersion = 0x73797376 /* 'sysv' */,
    gestaltSystemVersionMajor = 0x73797331 /* 'sys1' */,
    gestaltSystemVersionMinor = 0x73797332 /* 'sys2' */,
    gestaltSystemVersionBugFix = 0x73797333 /* 'sys3' */,
    gestaltSysArchitecture = 0x73797361 /* 'sysa' */
};

/* Answers of gestaltSysArchitecture. */
enum { gestalt68k = 1, gestaltPowerPC = 2, gestaltIntel = 10 };

/* Stores the selector's value in *response: noErr, or gestaltUndefSelectorErr
 * for an unknown selector; paramErr (and *response untouched) for a NULL
 * response. */
OSErr Gestalt(OSType selector, SInt32 *response);

/* Adds a value for a selector that has none (gestaltDupSelectorErr otherwise). */
OSErr NewGestaltValue(OSType selector, SInt32 newValue);
/* Changes the value of a selector that has one (gestaltUndefSelectorErr otherwise). */
OSErr SetGestaltValue(OSType selector, SInt32 newValue);
/* Sets the value whether or not the selector had one. */
OSErr ReplaceGestaltValue(OSType selector, SInt32 replacementValue);
/* Removes the selector's value, so that Gestalt answers gestaltUndefSelectorErr. */
OSErr DeleteGestaltValue(OSType selector);

#ifdef __cplusplus
}
#endif

#endif
