/* NSUserDefaults(FoundationX). */
#import <KORU/NSUserDefaults+FoundationX.h>

#include <CoreFoundation/CoreFoundation.h>

/* A deep mutable copy of the value stored under key when it is of kind, else nil. */
static id MutableCopyOfDefault(NSUserDefaults *defaults, NSString *key, Class kind)
{
    if (key == nil)
        return nil;
    id value = nil;
    @try {
        value = [defaults objectForKey:key];
    } @catch (NSException *exception) {
        value = nil;
    }
    if (![value isKindOfClass:kind])
        return nil;
    return [(id)CFPropertyListCreateDeepCopy(kCFAllocatorDefault, (CFPropertyListRef)value,
                                             kCFPropertyListMutableContainersAndLeaves) autorelease];
}

@implementation NSUserDefaults (FoundationX)

- (NSInteger)cellStateForBoolKey:(NSString *)key
{
    if (key == nil)
        return 0;
    @try {
        return [self boolForKey:key] ? 1 : 0;
    } @catch (NSException *exception) {
        return 0;
    }
}

- (NSMutableArray *)mutableArrayForKey:(NSString *)key
{
    NSMutableArray *copy = MutableCopyOfDefault(self, key, [NSArray class]);
    return copy != nil ? copy : [NSMutableArray array];
}

- (NSMutableDictionary *)mutableDictionaryForKey:(NSString *)key
{
    NSMutableDictionary *copy = MutableCopyOfDefault(self, key, [NSDictionary class]);
    return copy != nil ? copy : [NSMutableDictionary dictionary];
}

- (void)removeAllObject
{
    @try {
        for (NSString *key in [[self dictionaryRepresentation] allKeys])
            [self removeObjectForKey:key];
        [self synchronize];
    } @catch (NSException *exception) {
        // What could be removed is gone; the rest stays.
    }
}

@end
