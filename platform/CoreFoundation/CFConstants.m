/* The constant objects that only exist once Foundation runs: kCFNull and the
 * two booleans are Foundation's own shared instances, so a property list
 * read by Foundation and one built with CF hold the same objects.  They are
 * filled in when the library loads; this file does not see the const
 * declarations of the public headers, so the storage stays writable. */
#import <Foundation/NSAutoreleasePool.h>
#import <Foundation/NSNull.h>
#import <Foundation/NSValue.h>

const void *kCFNull;
const void *kCFBooleanTrue;
const void *kCFBooleanFalse;
const void *kCFNumberPositiveInfinity;
const void *kCFNumberNegativeInfinity;
const void *kCFNumberNaN;

/* Filled in from +load: by then the runtime has registered this library's
 * selectors, which a plain constructor cannot count on. */
@interface __KCFConstants : NSObject
@end

@implementation __KCFConstants
+ (void)load
{
    /* Hosts written in C or C++ never make an autorelease pool; objects that
     * Foundation autoreleases outside the toolkit's own pools land in this
     * one, which lives as long as the process. */
    [[NSAutoreleasePool alloc] init];
    kCFNull = [NSNull null];
    kCFBooleanTrue = [NSNumber numberWithBool:YES];
    kCFBooleanFalse = [NSNumber numberWithBool:NO];
    /* Shared numbers: retained once here and never released. */
    kCFNumberPositiveInfinity = [[NSNumber alloc] initWithDouble:__builtin_inf()];
    kCFNumberNegativeInfinity = [[NSNumber alloc] initWithDouble:-__builtin_inf()];
    kCFNumberNaN = [[NSNumber alloc] initWithDouble:__builtin_nan("")];
}
@end
