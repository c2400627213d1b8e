/* NSResponder(AppKitX): splicing a responder into the chain. */
#import <KORU/AppKitX.h>

@implementation NSResponder (AppKitX)

- (void)insertNextResponder:(NSResponder *)responder
{
    NSResponder *next = [self nextResponder];
    if (responder == nil || responder == next)
        return;
    [self setNextResponder:responder];
    if (next != nil)
        [responder setNextResponder:next];
}

- (void)logResponderChain
{
    NSLog(@"---------------------- ResponderChain ----------------------");
    for (NSResponder *responder = self; responder != nil; responder = [responder nextResponder])
        NSLog(@"%@", responder);
}

@end
