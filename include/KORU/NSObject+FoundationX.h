/* NSObject(FoundationX): an object's hash as a number and deep copies of
 * property lists. */
#import <Foundation/Foundation.h>

#include <CoreFoundation/CoreFoundation.h>

@interface NSObject (FoundationX)

/* The receiver's hash, cut to 32 bits, as an unsigned-int number. */
- (NSNumber *)hashNumber;

/* A deep copy of the receiver as a property list, with containers (1) or
 * containers and leaves (2) mutable, or all immutable (0).  The caller owns
 * the copy; nil when the receiver is not a property list. */
- (id)propertyListDeepCopy:(CFOptionFlags)mutability;

/* propertyListDeepCopy: with containers and leaves mutable. */
- (id)propertyListMutableCopy;

@end
