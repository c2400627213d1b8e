/* Tour section: the FoundationX categories that the loaded bundle adds to
 * GNUstep's collections, data and numbers.  The host links no part of the
 * toolkit: it declares the few methods it sends and checks that the classes
 * answer them before it does. */
#import <Foundation/Foundation.h>

#include "Tour.h"

#include <stdint.h>
#include <stdio.h>

@interface NSMutableArray (TourFoundationX)
- (BOOL)moveObjects:(NSData *)indexes toIndex:(NSUInteger)target;
- (NSUInteger)insertObject:(id)object atIndexUsingSelector:(SEL)selector;
@end

@interface NSDictionary (TourFoundationX)
- (id)objectForKeys:(id)firstKey, ...;
- (id)objectForNumber:(long)number;
@end

@interface NSData (TourFoundationX)
- (NSData *)encryptedData:(const char *)key;
- (NSData *)decryptedData:(const char *)key;
@end

@interface NSNumber (TourFoundationX)
+ (NSNumber *)yesNumber;
@end

static BOOL Answers(id receiver, SEL selector)
{
    if ([receiver respondsToSelector:selector])
        return YES;
    fprintf(stderr, "koru: the bundle adds no %s\n", sel_getName(selector));
    return NO;
}

static const char *Text(id object)
{
    return [[object description] UTF8String];
}

static bool TourCollections(CFBundleRef bundle)
{
    (void)bundle;
    NSMutableArray *rows = [NSMutableArray arrayWithObjects:@"A", @"B", @"C", @"D", @"E", nil];
    NSDictionary *settings = [NSDictionary dictionaryWithObjectsAndKeys:
        [NSDictionary dictionaryWithObject:@"blue" forKey:@"colour"], @"window", @"seven", @"7", nil];
    NSData *secret = [@"collections" dataUsingEncoding:NSUTF8StringEncoding];
    if (!Answers(rows, @selector(moveObjects:toIndex:)) || !Answers(rows, @selector(insertObject:atIndexUsingSelector:)) ||
        !Answers(settings, @selector(objectForKeys:)) || !Answers(settings, @selector(objectForNumber:)) ||
        !Answers(secret, @selector(encryptedData:)) || !Answers([NSNumber class], @selector(yesNumber)))
        return false;

    const uint32_t indexes[] = {1, 3};
    NSData *list = [NSData dataWithBytes:indexes length:sizeof indexes];
    printf("  rows %s\n", [[rows componentsJoinedByString:@" "] UTF8String]);
    [rows moveObjects:list toIndex:4];
    printf("  B and D moved as a block to 4: %s\n", [[rows componentsJoinedByString:@" "] UTF8String]);
    [rows moveObjects:list toIndex:0];
    printf("  then the rows at 1 and 3 to 0:  %s\n", [[rows componentsJoinedByString:@" "] UTF8String]);
    NSMutableArray *fruit = [NSMutableArray arrayWithObjects:@"apple", @"cherry", @"plum", nil];
    NSUInteger at = [fruit insertObject:@"banana" atIndexUsingSelector:@selector(compare:)];
    printf("  \"banana\" inserted in order at %lu: %s\n", (unsigned long)at,
           [[fruit componentsJoinedByString:@" "] UTF8String]);

    printf("  window / colour: %s; number key 7: %s\n", Text([settings objectForKeys:@"window", @"colour", nil]),
           Text([settings objectForNumber:7]));

    NSData *enciphered = [secret encryptedData:"tour-key"];
    NSData *deciphered = [enciphered decryptedData:"tour-key"];
    printf("  %lu bytes enciphered to %lu, deciphered: \"%s\"\n", (unsigned long)[secret length],
           (unsigned long)[enciphered length], [deciphered bytes] != NULL ? (const char *)[deciphered bytes] : "");
    printf("  +[NSNumber yesNumber] is %s, kept in the exit pool until the host exits\n",
           [[NSNumber yesNumber] boolValue] ? "YES" : "NO");
    return [deciphered length] >= [secret length] && at == 1;
}

KORU_TOUR_SECTION(80, "Foundation categories: block moves, key paths, enciphered data", TourCollections)
