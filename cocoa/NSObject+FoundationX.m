/* NSObject(FoundationX): the hash as a number and property-list deep copies
 * through CoreFoundation. */
#import <KORU/NSObject+FoundationX.h>

@implementation NSObject (FoundationX)

- (NSNumber *)hashNumber
{
    return [NSNumber numberWithUnsignedInt:(unsigned int)[self hash]];
}

- (id)propertyListDeepCopy:(CFOptionFlags)mutability
{
    return (id)CFPropertyListCreateDeepCopy(kCFAllocatorDefault, (CFPropertyListRef)self, mutability);
}

- (id)propertyListMutableCopy
{
    return [self propertyListDeepCopy:kCFPropertyListMutableContainersAndLeaves];
}

@end
