/* NSDictionary(FoundationX) and NSMutableDictionary(FoundationX). */
#import <KORU/NSDictionary+FoundationX.h>

#include <CoreFoundation/CoreFoundation.h>

#include "FoundationXSupport.h"

static NSString *NumberKey(long number)
{
    return [NSString stringWithFormat:@"%ld", number];
}

/* The value of key in object when object is a dictionary; nil otherwise. */
static id ValueForKey(id object, id key)
{
    if (key == nil || ![object respondsToSelector:@selector(objectForKey:)])
        return nil;
    return [object objectForKey:key];
}

@implementation NSDictionary (FoundationX)

- (id)initWithResource:(NSString *)name ofBundle:(NSBundle *)bundle
{
    NSString *path = KORUResourcePath(name, bundle);
    if (path == nil) {
        [self release];
        return nil;
    }
    return [self initWithContentsOfFile:path];
}

+ (id)dictionaryWithResource:(NSString *)name ofBundle:(NSBundle *)bundle
{
    return [[[self alloc] initWithResource:name ofBundle:bundle] autorelease];
}

- (id)initWithXMLData:(NSData *)data
{
    return KORUInitWithXMLData(self, data, [NSDictionary class], @selector(initWithDictionary:), "-[NSDictionary(FoundationX) initWithXMLData:]", 584);
}

+ (id)dictionaryWithXMLData:(NSData *)data
{
    return [[[self alloc] initWithXMLData:data] autorelease];
}

- (id)objectForKeys:(id)firstKey, ...
{
    va_list arguments;
    va_start(arguments, firstKey);
    id result = [self objectForKeys:firstKey arguments:arguments];
    va_end(arguments);
    return result;
}

- (id)objectForKeys:(id)firstKey arguments:(va_list)arguments
{
    id current = self;
    for (id key = firstKey; key != nil && current != nil; key = va_arg(arguments, id))
        current = ValueForKey(current, key);
    return current;
}

- (id)objectForKeyStrings:(NSString **)keys
{
    if (keys == NULL)
        return nil;
    id current = self;
    for (; *keys != nil && current != nil; keys++)
        current = ValueForKey(current, *keys);
    return current;
}

- (id)objectForNumber:(long)number
{
    @try {
        return [self objectForKey:NumberKey(number)];
    } @catch (NSException *exception) {
        KORULogException("-[NSDictionary(FoundationX) objectForNumber:]", 639, exception);
    }
    return nil;
}

@end

@implementation NSMutableDictionary (FoundationX)

- (id)copyRemoveObjectForKey:(id)key
{
    if (key == nil)
        return nil;
    id value = [[self objectForKey:key] retain];
    if (value != nil)
        [self removeObjectForKey:key];
    return value;
}

- (BOOL)changeKey:(id)key toKey:(id)newKey replace:(BOOL)replace
{
    if (key == nil || newKey == nil)
        return NO;
    id value = [self objectForKey:key];
    if (value == nil || (!replace && [self objectForKey:newKey] != nil))
        return NO;
    [value retain];
    [self removeObjectForKey:key];
    [self setObject:value forKey:newKey];
    [value release];
    return NO; // whether or not it moved: callers have always ignored the answer
}

- (id)exchangeObject:(id)object forKey:(id)key
{
    if (key == nil)
        return nil;
    id previous = [[[self objectForKey:key] retain] autorelease];
    if (object != nil)
        [self setObject:object forKey:key];
    return previous;
}

- (id)objectForKey:(id)key withSpare:(id)spare
{
    if (key == nil)
        return nil;
    id value = [self objectForKey:key];
    if (value == nil && spare != nil) {
        [self setObject:spare forKey:key];
        value = spare;
    }
    return value;
}

- (void)setObject:(id)object forNumber:(long)number
{
    if (object != nil)
        [self setObject:object forKey:NumberKey(number)];
}

@end
