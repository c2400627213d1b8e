/* The host's tour: each unit of the toolkit contributes one section.
 *
 * A section is a function that receives the KORU bundle, already loaded at run
 * time, and prints a few lines showing its unit at work.  It finds what it
 * calls by name (CFBundleGetFunctionPointerForName for exported C functions,
 * the mangled symbol for C++ members, NSClassFromString for classes); the host
 * never links the toolkit.  Sections register themselves before main runs and
 * are printed in ascending order.  A section returns false when something it
 * looked up was missing or misbehaved; the host then exits with status 1. */
#ifndef KORU_TOOLS_TOUR_H
#define KORU_TOOLS_TOUR_H

#include <CoreFoundation/CoreFoundation.h>
#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef bool (*KORUTourFunction)(CFBundleRef bundle);

void KORUTourRegister(int order, const char *title, KORUTourFunction function);

/* Looks a function up in the bundle and reports a missing one on standard error. */
void *KORUTourLookup(CFBundleRef bundle, const char *name);

#define KORU_TOUR_SECTION(order, title, function)                                  \
    static void __attribute__((constructor)) KORUTourRegister_##function(void)     \
    {                                                                              \
        KORUTourRegister((order), (title), (function));                            \
    }

#ifdef __cplusplus
}
#endif

#endif
