/* Null-tolerant equality: an empty side is never equal to anything. */
#import <KORU/AppKitX.h>

BOOL NSIsEqual(id a, id b)
{
    if (a == nil || b == nil)
        return NO;
    return [a isEqual:b];
}

BOOL NSIsNull(id a)
{
    return a == nil || [a isKindOfClass:[NSNull class]];
}

BOOL NSStringIsVoid(NSString *s)
{
    return s == nil || [s isEqualToString:@""];
}

BOOL NSStringIsEqual(NSString *a, NSString *b)
{
    if (a == nil || b == nil)
        return NO;
    return [a isEqualToString:b];
}
