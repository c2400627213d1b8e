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
    id result = nil;
    CFPropertyListRef list = NULL;
    @try {
        CFStringRef error = NULL;
        list = CFPropertyListCreateFromXMLData(kCFAllocatorDefault, (CFDataRef)data, kCFPropertyListImmutable, &error);
        if (list == NULL)
            NSLog(@"%s error:%@", "-[NSArray(FoundationX) initWithXMLData:]", (NSString *)error);
        if (error != NULL)
            CFRelease(error);
        if ([(id)list isKindOfClass:[NSArray class]]) {
            result = [self initWithArray:(NSArray *)list];
            self = nil; // initialised: no longer ours to release
        }
    } @catch (NSException *exception) {
        KORULogException("-[NSArray(FoundationX) initWithXMLData:]", 306, exception);
        result = nil;
    }
    if (list != NULL)
        CFRelease(list);
    [self release];
    return result;
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

/* Rearranges elements [start, end) of array, the span a move touches, so
 * that it reads as after removing the moved elements and inserting them
 * again at lowered, the target counted without them. */
static NSArray *MovedSpan(NSArray *span, NSUInteger start, const NSUInteger *moved, NSUInteger movedCount,
                          NSUInteger lowered, NSUInteger remaining)
{
    NSUInteger length = [span count];
    NSMutableArray *block = [NSMutableArray arrayWithCapacity:movedCount];
    NSMutableArray *result = [NSMutableArray arrayWithCapacity:length];
    NSUInteger next = 0;
    for (NSUInteger i = 0; i < length; i++) {
        id object = [span objectAtIndex:i];
        if (next < movedCount && moved[next] == start + i) {
            [block addObject:object];
            next++;
        } else {
            [result addObject:object];
        }
    }
    if (lowered < remaining) {
        [result insertObjects:block
                    atIndexes:[NSIndexSet indexSetWithIndexesInRange:NSMakeRange(lowered - start, movedCount)]];
        return result;
    }
    // Past the end, each element from the last is appended while the target
    // lies beyond the array and inserted at the target once it falls within;
    // a target far past the end so leaves the block reversed.
    for (NSUInteger i = movedCount; i-- > 0;) {
        id object = [block objectAtIndex:i];
        if (lowered < start + [result count])
            [result insertObject:object atIndex:lowered - start];
        else
            [result addObject:object];
    }
    return result;
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

/* The move is worked out on the span it touches, from the first moved index
 * (or the place the block lands, when that comes first) to the last element
 * that changes place, and written back element by element: the result of
 * removing each element and inserting it again, without shifting the
 * array's tail twice per element. */
- (BOOL)moveObjects:(NSData *)indexes toIndex:(NSUInteger)target
{
    NSUInteger *moved = NULL;
    NSUInteger movedCount = 0;
    BOOL done = YES;
    @try {
        NSUInteger total = [self count];
        if ([indexes isKindOfClass:[NSData class]] && !ReadIndexes(indexes, total, &moved, &movedCount))
            done = NO;
        if (done && movedCount > 0) {
            NSUInteger lowered = target;
            for (NSUInteger i = 0; i < movedCount; i++) {
                if (moved[i] < target)
                    lowered--;
            }
            NSUInteger remaining = total - movedCount;
            NSUInteger start = moved[0], end = total;
            if (lowered < remaining) {
                start = MIN(start, lowered);
                end = MAX(moved[movedCount - 1] + 1, lowered + movedCount);
            }
            NSArray *span = [self subarrayWithRange:NSMakeRange(start, end - start)];
            NSArray *rearranged = MovedSpan(span, start, moved, movedCount, lowered, remaining);
            for (NSUInteger i = 0; i < end - start; i++) {
                id object = [rearranged objectAtIndex:i];
                if (object != [span objectAtIndex:i])
                    [self replaceObjectAtIndex:start + i withObject:object];
            }
        }
    } @catch (NSException *exception) {
        KORULogException("-[NSMutableArray(FoundationX) moveObjects:toIndex:]", 452, exception);
        done = NO;
    }
    free(moved);
    return done;
}

@end
