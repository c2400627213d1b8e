/* The toolbox keeps its own records of some AppKit objects (a view's
 * command ID, a window's reference constant and event target) in tables
 * keyed by the object's address.  A freed object's address comes back for
 * a new object, which must not inherit the record, so each table forgets an
 * object when it is freed: it registers a forgetting function for the
 * object's class here, and that class's -dealloc is wrapped, once, to call
 * every function registered for it before the object goes. */
#ifndef KORU_HITOOLBOX_OBJECT_LIFETIMES_H
#define KORU_HITOOLBOX_OBJECT_LIFETIMES_H

#import <Foundation/Foundation.h>

typedef void (*KORUForgetFunction)(id object);

/* Calls forget with every instance of cls (subclasses included) that is
 * freed from now on.  Registering the same function again does nothing. */
void KORUForgetOnDealloc(Class cls, KORUForgetFunction forget);

#endif
