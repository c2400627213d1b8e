/* NSArray(FoundationX) and NSMutableArray(FoundationX). */
#import <KORU/NSArray+FoundationX.h>

#include <CoreFoundation/CoreFoundation.h>

#include "FoundationXSupport.h"

#include <stdint.h>
#include <string.h>

/* Sends selector with argument to receiver as a comparison and answers its
 * integer result. */
static NSInteger Compare(id receiver, SEL selector, id argument)
{
    // The method answers an integer, not an object: call it as one.
    IMP method = [receiver methodForSelector:selector];
    NSInteger (*compare)(id, SEL, id) = (NSInteger (*)(id, SEL, id))(void (*)(void))method;
    return compare(receiver, selector, argument);
}

@implementation NSArray (FoundationX)

- (id)initWithResource:(NSString *)name ofBundle:(NSBundle *)bundle
{
    NSString *path = KORUResourcePath(name, bundle);
    if (path == nil) {
        [self release];
        return nil;
    }
    return [self initWithContentsOfFile:path];
}

+ (id)arrayWithResource:(NSString *)name ofBundle:(NSBundle *)bundle
{
    return [[[self alloc] initWithResource:name ofBundle:bundle] autorelease];
}

- (id)initWithXMLData:(NSData *)data
{
    return KORUInitWithXMLData(self, data, [NSArray class], @selector(initWithArray:), "-[NSArray(FoundationX) initWithXMLData:]", 306);
}

+ (id)arrayWithXMLData:(NSData *)data
{
    return [[[self alloc] initWithXMLData:data] autorelease];
}

- (BOOL)containsObject:(id)object usingSelector:(SEL)selector
{
    if (object == nil || selector == NULL)
        return NO;
    for (id element in self) {
        if (![element respondsToSelector:selector])
            continue;
        @try {
            if (Compare(element, selector, object) == 0)
                return YES;
        } @catch (NSException *exception) {
            // An element that cannot be compared with the object is not it.
        }
    }
    return NO;
}

@end

/* The index list of moveObjects:toIndex:, checked before anything moves so
 * that a bad list can never leave the array half moved. */
static BOOL ReadIndexes(NSData *data, NSUInteger arrayCount, NSUInteger **indexes, NSUInteger *count)
{
    *indexes = NULL;
    *count = [data length] / sizeof(uint32_t);
    if (*count == 0)
        return YES;
    NSUInteger *list = malloc(*count * sizeof(NSUInteger));
    if (list == NULL)
        return NO;
    const unsigned char *bytes = [data bytes];
    for (NSUInteger i = 0; i < *count; i++) {
        uint32_t index;
        memcpy(&index, bytes + i * sizeof(index), sizeof(index));
        if (index >= arrayCount || (i > 0 && index <= list[i - 1])) {
            free(list);
            return NO;
        }
        list[i] = index;
    }
    *indexes = list;
    return YES;
}

/* The end of the array after a move past it: the moved elements, from the
 * last, each appended while the target lies beyond the array and inserted at
 * the target once it falls within, as one by one insertion would place them.
 * A target far past the end so leaves the block reversed. */
static NSArray *TailAfterMove(NSArray *block, NSUInteger lowered, NSUInteger remaining)
{
    NSMutableArray *tail = [NSMutableArray arrayWithCapacity:[block count]];
    for (NSUInteger i = [block count]; i-- > 0;) {
        id object = [block objectAtIndex:i];
        if (lowered < remaining + [tail count])
            [tail insertObject:object atIndex:lowered - remaining];
        else
            [tail addObject:object];
    }
    return tail;
}

@implementation NSMutableArray (FoundationX)

- (id)copyRemoveObjectAtIndex:(NSUInteger)index
{
    if (index >= [self count])
        return nil;
    id object = [[self objectAtIndex:index] retain];
    [self removeObjectAtIndex:index];
    return object;
}

- (NSUInteger)insertObject:(id)object atIndexUsingSelector:(SEL)selector
{
    if (object == nil)
        return 0;
    if (selector == NULL)
        selector = @selector(compare:);
    if (![object respondsToSelector:selector])
        return 0;
    NSUInteger count = [self count];
    NSUInteger index = 0;
    @try {
        while (index < count && Compare(object, selector, [self objectAtIndex:index]) == NSOrderedDescending)
            index++;
    } @catch (NSException *exception) {
        index = NSNotFound; // elements the object cannot be compared with
    }
    if (index == NSNotFound)
        return 0;
    if (index < count)
        [self insertObject:object atIndex:index];
    else
        [self addObject:object];
    return index;
}

- (void)insertObjectsFromArray:(NSArray *)array atIndex:(NSUInteger)index
{
    if (![array isKindOfClass:[NSArray class]] || [array count] == 0)
        return;
    if (index >= [self count]) {
        [self addObjectsFromArray:array];
        return;
    }
    NSIndexSet *places = [NSIndexSet indexSetWithIndexesInRange:NSMakeRange(index, [array count])];
    [self insertObjects:array atIndexes:places];
}

- (BOOL)insertOrAddObject:(id)object atIndex:(NSUInteger)index
{
    if (object == nil)
        return NO;
    if (index < [self count]) {
        [self insertObject:object atIndex:index];
        return YES;
    }
    [self addObject:object];
    return NO;
}

- (BOOL)replaceOrAddObjectAtIndex:(NSUInteger)index withObject:(id)object
{
    if (object == nil)
        return NO;
    if (index < [self count]) {
        [self replaceObjectAtIndex:index withObject:object];
        return YES;
    }
    [self addObject:object];
    return NO;
}

/* The elements come out in runs of adjacent indexes, from the last run, and
 * go back in as one block: the result of taking each out and putting each
 * back, with one shift of the array per run instead of two per element. */
- (BOOL)moveObjects:(NSData *)indexes toIndex:(NSUInteger)target
{
    NSUInteger *moved = NULL;
    NSUInteger movedCount = 0;
    BOOL done = YES;
    @try {
        if ([indexes isKindOfClass:[NSData class]] && !ReadIndexes(indexes, [self count], &moved, &movedCount))
            done = NO;
        if (done && movedCount > 0) {
            NSMutableArray *block = [NSMutableArray arrayWithCapacity:movedCount];
            NSUInteger lowered = target;
            for (NSUInteger i = 0; i < movedCount; i++) {
                [block addObject:[self objectAtIndex:moved[i]]];
                if (moved[i] < target)
                    lowered--;
            }
            for (NSUInteger last = movedCount; last > 0;) {
                NSUInteger first = last - 1;
                while (first > 0 && moved[first - 1] + 1 == moved[first])
                    first--;
                [self removeObjectsInRange:NSMakeRange(moved[first], last - first)];
                last = first;
            }
            NSUInteger remaining = [self count];
            if (lowered < remaining)
                [self replaceObjectsInRange:NSMakeRange(lowered, 0) withObjectsFromArray:block];
            else
                [self addObjectsFromArray:TailAfterMove(block, lowered, remaining)];
        }
    } @catch (NSException *exception) {
        KORULogException("-[NSMutableArray(FoundationX) moveObjects:toIndex:]", 452, exception);
        done = NO;
    }
    free(moved);
    return done;
}

@end
