/* Component Manager: opening the components this platform provides.
 *
 * The one component is the scripting component (type 'osa ', subtype 'ascr',
 * also the default for 'osa ' with subtype '****' or 0), which runs Lua 5.4
 * scripts behind the Open Scripting calls.  Each OpenDefaultComponent gives a
 * new instance with its own scripts; the caller ends it with CloseComponent.
 * An instance is used by one thread at a time. */
#ifndef CORESERVICES_COMPONENTS_H
#define CORESERVICES_COMPONENTS_H

#include <MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ComponentInstanceRecord *ComponentInstance;
typedef SInt32 ComponentResult;

enum {
    kAnyComponentType = 0,
    kAnyComponentSubType = 0,
    badComponentInstance = (SInt32)0x80008001,
    badComponentSelector = (SInt32)0x80008002
};

/* A new instance of the default component of the type and subtype; NULL when
 * there is none. */
ComponentInstance OpenDefaultComponent(OSType componentType, OSType componentSubType);

/* Ends the instance and everything it holds; badComponentInstance for NULL. */
OSErr CloseComponent(ComponentInstance aComponentInstance);

#ifdef __cplusplus
}
#endif

#endif
