/* The constant objects that only exist once Foundation runs: kCFNull and the
 * two booleans are Foundation's own shared instances, so a property list
 * read by Foundation and one built with CF hold the same objects.  They are
 * filled in when the library loads; this file does not see the const
 * declarations of the public headers, so the storage stays writable. */
#import <Foundation/NSNull.h>
#import <Foundation/NSValue.h>

const void *kCFNull;
const void *kCFBooleanTrue;
const void *kCFBooleanFalse;
const void *kCFNumberPositiveInfinity;
const void *kCFNumberNegativeInfinity;
const void *kCFNumberNaN;

static void __attribute__((constructor)) __CFConstantsInitialize(void)
{
    kCFNull = [NSNull null];
    kCFBooleanTrue = [NSNumber numberWithBool:YES];
    kCFBooleanFalse = [NSNumber numberWithBool:NO];
    /* Shared numbers: retained once here and never released. */
    kCFNumberPositiveInfinity = [[NSNumber alloc] initWithDouble:__builtin_inf()];
    kCFNumberNegativeInfinity = [[NSNumber alloc] initWithDouble:-__builtin_inf()];
    kCFNumberNaN = [[NSNumber alloc] initWithDouble:__builtin_nan("")];
}
