/* The exit pool: one mutable array, made on first use, released at exit. */
#import <Foundation/Foundation.h>

#include <KORU/ExitPool.h>

#include "FoundationXSupport.h"

#include <stdlib.h>

static NSMutableArray *gExitPool;

void AddToExitPool(id object)
{
    if (object == nil)
        return;
    if (gExitPool == nil) {
        // A release registered per pool: after ReleaseExitPool a new pool
        // registers again, and the earlier registration then finds no pool.
        if (atexit(ReleaseExitPool) != 0) {
            NSLog(@"Sorry, ReleaseExitPool() wasn't registered.");
            KORULogFailure("AddToExitPool", __LINE__);
            return;
        }
        gExitPool = [[NSMutableArray alloc] init];
        if (gExitPool == nil) {
            NSLog(@"Sorry, ExitPool wasn't allocated.");
            KORULogFailure("AddToExitPool", __LINE__);
            return;
        }
    }
    [gExitPool addObject:object];
}

void ReleaseExitPool(void)
{
    if (gExitPool == nil)
        return;
    // The objects' dealloc may autorelease, and at exit no pool is left.
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSMutableArray *released = gExitPool;
    gExitPool = nil;
    [released release];
    [pool drain];
}
