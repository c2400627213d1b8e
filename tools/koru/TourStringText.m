/* Tour section: the text methods that the loaded bundle adds to GNUstep's
 * strings.  The host links no part of the toolkit: the category's header
 * only declares the methods, and the host checks that strings answer them
 * before it sends them. */
#import <Foundation/Foundation.h>
#import <KORU/NSString+FoundationXText.h>

#include "Tour.h"

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

static BOOL Answers(id receiver, SEL selector)
{
    if ([receiver respondsToSelector:selector])
        return YES;
    fprintf(stderr, "koru: the bundle adds no %s\n", sel_getName(selector));
    return NO;
}

static const char *Joined(NSArray *items)
{
    return [[items componentsJoinedByString:@"|"] UTF8String];
}

static bool TourStringText(CFBundleRef bundle)
{
    (void)bundle;
    SEL used[] = {@selector(lines), @selector(dataFromHexadecimalString), @selector(intNumber),
                  @selector(find:andReplaceAllString:), @selector(stringBySetLength:withFillString:),
                  @selector(writeAsTextFile:encoding:allowLossyConversion:atomically:),
                  @selector(initWithTextFile:encoding:), @selector(encryptedData:),
                  @selector(initWithEncryptedData:decryptKey:)};
    for (size_t i = 0; i < sizeof used / sizeof used[0]; i++) {
        if (!Answers(@"", used[i]))
            return false;
    }

    printf("  lines of \"a CR LF b CR c LF\": %s\n", Joined([@"a\r\nb\rc\n" lines]));
    printf("  \"0aFf\" as bytes: %s; \"abc12x34\" holds %d\n", [[[@"0aFf" dataFromHexadecimalString] description] UTF8String],
           [[@"abc12x34" intNumber] intValue]);
    printf("  \"aaa\" with every \"aa\" made \"b\": %s; \"abc\" set to 5 with \"xy\": %s\n",
           [[@"aaa" find:@"aa" andReplaceAllString:@"b"] UTF8String],
           [[@"abc" stringBySetLength:5 withFillString:@"xy"] UTF8String]);

    char folder[] = "/tmp/koru-tour-text-XXXXXX";
    if (mkdtemp(folder) == NULL)
        return false;
    NSString *path = [[NSString stringWithUTF8String:folder] stringByAppendingPathComponent:@"greeting.txt"];
    NSString *greeting = @"Grüße aus KORU";
    BOOL written = [greeting writeAsTextFile:path encoding:NSUTF16StringEncoding allowLossyConversion:NO atomically:YES];
    NSString *read = [NSString stringWithTextFile:path encoding:NSUTF16StringEncoding];
    [[NSFileManager defaultManager] removeItemAtPath:path error:NULL];
    rmdir(folder);
    printf("  written as UTF-16 and read back: \"%s\"\n", [read UTF8String] != NULL ? [read UTF8String] : "");

    NSData *enciphered = [greeting encryptedData:"tour-key"];
    NSString *deciphered = [NSString stringWithEncryptedData:enciphered decryptKey:"tour-key"];
    printf("  enciphered to %lu bytes and back: \"%s\"\n", (unsigned long)[enciphered length],
           [deciphered UTF8String] != NULL ? [deciphered UTF8String] : "");
    return written && [read isEqualToString:greeting] && [deciphered isEqualToString:greeting];
}

KORU_TOUR_SECTION(85, "Foundation categories: text files, lines, hexadecimal, replacing, enciphered strings", TourStringText)
