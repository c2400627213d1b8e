/* NSString(FoundationXText) and NSMutableString(FoundationXText) on real
 * files, a real bundle with string tables and real child processes. */
#import "KTest.h"

#include <KORU/KORU.h>

#include <ctype.h>
#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

static const char kKey[8] = {'k', 'o', 'r', 'u', '-', 'k', 'e', 'y'};

static NSString *MakeFolder(void)
{
    char pattern[] = "/tmp/koru-text-XXXXXX";
    return mkdtemp(pattern) != NULL ? [NSString stringWithUTF8String:pattern] : nil;
}

static void RemoveFolder(NSString *folder)
{
    [[NSFileManager defaultManager] removeItemAtPath:folder error:NULL];
}

/* A string with a lone surrogate: it has no UTF-8 form. */
static NSString *WithoutUTF8Form(void)
{
    return [NSString stringWithFormat:@"a%C", (unichar)0xD800];
}

KT_CASE(TextFilesAreWrittenAndReadInTheirEncoding)
{
    NSString *folder = MakeFolder();
    KT_ASSERT(folder != nil);
    NSString *path = [folder stringByAppendingPathComponent:@"text.txt"];
    NSString *text = @"Grüße\nzweite Zeile";
    KT_EXPECT([text writeAsTextFile:path encoding:NSUTF16StringEncoding allowLossyConversion:NO atomically:YES]);
    KT_EXPECT_EQUAL_OBJECTS([NSString stringWithTextFile:path encoding:NSUTF16StringEncoding], text);
    KT_EXPECT([text writeAsTextFile:path encoding:NSISOLatin1StringEncoding allowLossyConversion:NO atomically:NO]);
    NSString *read = [NSMutableString stringWithTextFile:path encoding:NSISOLatin1StringEncoding];
    KT_EXPECT([read isEqual:text] && [read isKindOfClass:[NSMutableString class]]);
    // Latin-1 bytes are not UTF-8; ASCII cannot hold the umlaut unless lossy.
    KT_EXPECT([NSString stringWithTextFile:path encoding:NSUTF8StringEncoding] == nil);
    NSString *ascii = [folder stringByAppendingPathComponent:@"ascii.txt"];
    KT_EXPECT(![text writeAsTextFile:ascii encoding:NSASCIIStringEncoding allowLossyConversion:NO atomically:YES]);
    KT_EXPECT(![[NSFileManager defaultManager] fileExistsAtPath:ascii]);
    KT_EXPECT([text writeAsTextFile:ascii encoding:NSASCIIStringEncoding allowLossyConversion:YES atomically:YES]);
    KT_EXPECT([NSString stringWithTextFile:nil encoding:NSUTF8StringEncoding] == nil);
    KT_EXPECT([NSString stringWithTextFile:path encoding:12345] == nil); // no such encoding
    KT_EXPECT(![WithoutUTF8Form() writeAsTextFile:ascii encoding:NSUTF8StringEncoding allowLossyConversion:NO
                                        atomically:YES]);
    KT_EXPECT(![text writeAsTextFile:nil encoding:NSUTF8StringEncoding allowLossyConversion:YES atomically:YES]);
    // A NUL would cut the path short, to another file; a path without UTF-8 names no file.
    NSString *cut = [folder stringByAppendingPathComponent:@"cut"];
    NSString *withNul = [cut stringByAppendingFormat:@"%C.txt", (unichar)0];
    KT_EXPECT(![text writeAsTextFile:withNul encoding:NSUTF8StringEncoding allowLossyConversion:NO atomically:NO]);
    KT_EXPECT(![[NSFileManager defaultManager] fileExistsAtPath:cut]);
    NSString *noForm = [NSString stringWithFormat:@"%@/a%C", folder, (unichar)0xD800];
    KT_EXPECT([NSString stringWithTextFile:noForm encoding:NSUTF8StringEncoding] == nil);
    RemoveFolder(folder);
}

KT_CASE(StringsEncipherThroughTheBufferCipher)
{
    NSString *text = @"Geheimnis: zwölf Zeichen und mehr";
    NSData *enciphered = [text encryptedData:kKey];
    NSData *utf8 = [text dataUsingEncoding:NSUTF8StringEncoding];
    KT_ASSERT(enciphered != nil);
    KT_EXPECT_EQUAL_OBJECTS(enciphered, [utf8 encryptedData:kKey]); // the same cipher as for data
    KT_EXPECT_EQUAL_OBJECTS([NSString stringWithEncryptedData:enciphered decryptKey:kKey], text);
    KT_EXPECT(![[NSString stringWithEncryptedData:enciphered decryptKey:"other-ky"] isEqual:text]);
    KT_EXPECT([[@"" encryptedData:kKey] length] == 0);
    KT_EXPECT([@"x" encryptedData:NULL] == nil && [WithoutUTF8Form() encryptedData:kKey] == nil);
    KT_EXPECT_EQUAL_OBJECTS([NSString stringWithEncryptedData:nil decryptKey:kKey], @"");
    KT_EXPECT([NSString stringWithEncryptedData:enciphered decryptKey:NULL] == nil);
    NSData *notText = [[NSData dataWithBytes:"\xff\xfe" length:2] encryptedData:kKey];
    KT_EXPECT([NSString stringWithEncryptedData:notText decryptKey:kKey] == nil);
}

KT_CASE(FailuresAreReportedWithTheirLinesInDebugMode)
{
    NSString *folder = MakeFolder();
    KT_ASSERT(folder != nil);
    NSString *latin1 = [folder stringByAppendingPathComponent:@"latin1.txt"];
    [[NSData dataWithBytes:"\xe9t\xe9" length:3] writeToFile:latin1 atomically:NO];
    char path[] = "/tmp/koru-text-stderr-XXXXXX";
    int fd = mkstemp(path), savedError = dup(2);
    KT_ASSERT(fd >= 0);
    Boolean saved = gKORUDebug;
    gKORUDebug = 1;
    fflush(stderr);
    dup2(fd, 2);
    [NSString stringWithTextFile:[folder stringByAppendingPathComponent:@"none"] encoding:NSUTF8StringEncoding];
    [NSString stringWithTextFile:folder encoding:NSUTF8StringEncoding]; // exists, cannot be read
    [NSString stringWithTextFile:latin1 encoding:NSUTF8StringEncoding];
    [@"x" encryptedData:NULL];
    [NSString stringWithEncryptedData:[@"x" encryptedData:kKey] decryptKey:NULL];
    [NSString stringWithEncryptedData:[[NSData dataWithBytes:"\xff" length:1] encryptedData:kKey] decryptKey:kKey];
    [[NSMutableString stringWithString:@"abc"] find:(id)[NSNumber numberWithInt:1] andReplaceAll:@"x"];
    fflush(stderr);
    dup2(savedError, 2);
    close(savedError);
    close(fd);
    gKORUDebug = saved;
    NSString *log = [NSString stringWithContentsOfFile:[NSString stringWithUTF8String:path]
                                              encoding:NSUTF8StringEncoding error:NULL];
    unlink(path);
    NSArray *expected = [NSArray arrayWithObjects:
        @"-[NSString(FoundationX) initWithTextFile:encoding:] (Line:31)\nSorry, I caught GOTO error.",
        @"-[NSString(FoundationX) initWithTextFile:encoding:] (Line:32)\nSorry, I caught GOTO error.",
        @"-[NSString(FoundationX) initWithTextFile:encoding:] (Line:33)\nSorry, I caught GOTO error.",
        @"-[NSString(FoundationX) encryptedData:] (Line:71)\nSorry, I caught GOTO error.",
        @"-[NSString(FoundationX) initWithEncryptedData:decryptKey:] (Line:94)\nSorry, I caught GOTO error.",
        @"-[NSString(FoundationX) initWithEncryptedData:decryptKey:] (Line:95)\nSorry, I caught GOTO error.",
        @"find:andReplaceAll:] (Line:598)\nSorry, I caught EXCEPTION error. (name:NSInvalidArgumentException", nil];
    for (NSString *line in expected)
        KT_EXPECT_MSG([log contains:line], @"%@ not in:\n%@", line, log);
    RemoveFolder(folder);
}

KT_CASE(LocalisationFallsBackThroughTables)
{
    NSString *folder = MakeFolder();
    KT_ASSERT(folder != nil);
    NSString *resources = [folder stringByAppendingPathComponent:@"Texts.bundle/Resources"];
    NSString *english = [resources stringByAppendingPathComponent:@"English.lproj"];
    [[NSFileManager defaultManager] createDirectoryAtPath:english withIntermediateDirectories:YES attributes:nil error:NULL];
    NSDictionary *files = [NSDictionary dictionaryWithObjectsAndKeys:
        @"{ CFBundleIdentifier = org.koru.test.texts; }", @"Info-gnustep.plist",
        @"\"greeting\" = \"Hello\";\n", @"English.lproj/Localizable.strings",
        @"\"open\" = \"Open...\";\n\"greeting\" = \"Hi\";\n", @"English.lproj/Menus.strings", nil];
    for (NSString *name in files)
        [[files objectForKey:name] writeAsTextFile:[resources stringByAppendingPathComponent:name]
                                          encoding:NSUTF8StringEncoding allowLossyConversion:NO atomically:YES];
    NSBundle *bundle = [NSBundle bundleWithPath:[folder stringByAppendingPathComponent:@"Texts.bundle"]];
    KT_ASSERT(bundle != nil);
    KT_EXPECT_EQUAL_OBJECTS([@"greeting" localize:bundle table:nil value:@"v"], @"Hello");
    KT_EXPECT_EQUAL_OBJECTS([@"greeting" localize:bundle table:@"Menus" value:@"v"], @"Hi");
    // The variadic lists are read into variables: commas would split the macro arguments.
    NSString *found = [@"greeting" localize:bundle value:@"v" tables:nil];
    KT_EXPECT_EQUAL_OBJECTS(found, @"Hello");
    found = [@"open" localize:bundle value:@"v" tables:@"Missing", @"Localizable", @"Menus", nil];
    KT_EXPECT_EQUAL_OBJECTS(found, @"Open...");
    found = [@"greeting" localize:bundle value:@"v" tables:@"Menus", @"Localizable", nil];
    KT_EXPECT_EQUAL_OBJECTS(found, @"Hi");
    found = [@"open" localize:bundle value:@"v" tables:@"Localizable", nil, @"Menus", nil];
    KT_EXPECT_EQUAL_OBJECTS(found, @"v");
    found = [@"gone" localize:bundle value:nil tables:@"Menus", nil];
    KT_EXPECT_EQUAL_OBJECTS(found, @"");
    KT_EXPECT_EQUAL_OBJECTS([@"no key in the main bundle" localize], @"no key in the main bundle");
    RemoveFolder(folder);
}

KT_CASE(LinesAndHexadecimal)
{
    KT_EXPECT_EQUAL_OBJECTS([@"a\r\nb\rc\n" lines], ([NSArray arrayWithObjects:@"a", @"b", @"c", @"", nil]));
    KT_EXPECT_EQUAL_OBJECTS([@"\r\r\n" lines], ([NSArray arrayWithObjects:@"", @"", @"", nil]));
    KT_EXPECT_EQUAL_OBJECTS([@"0aFf" dataFromHexadecimalString], [NSData dataWithBytes:"\x0a\xff" length:2]);
    KT_EXPECT_EQUAL_OBJECTS([@"abc" dataFromHexadecimalString], [NSData dataWithBytes:"\xab" length:1]);
    KT_EXPECT([[@"" dataFromHexadecimalString] length] == 0 && [@"0g" dataFromHexadecimalString] == nil);
}

KT_CASE(UTF8BuffersForCCode)
{
    char buffer[8];
    memset(buffer, '#', sizeof buffer);
    KT_EXPECT(![@"hello" getUTF8String:buffer maxLength:4] && strcmp(buffer, "hel") == 0);
    KT_EXPECT([@"hello" getUTF8String:buffer maxLength:6] && strcmp(buffer, "hello") == 0);
    KT_EXPECT(![@"hello" getUTF8String:NULL maxLength:6] && ![WithoutUTF8Form() getUTF8String:buffer maxLength:8]);
    memset(buffer, '#', sizeof buffer);
    KT_EXPECT([@"hello" memmoveUTF8String:buffer maxLength:5] && memcmp(buffer, "hello#", 6) == 0); // no terminator
    KT_EXPECT(![@"world" memmoveUTF8String:buffer maxLength:3] && memcmp(buffer, "worlo#", 6) == 0);
    char *copy = [@"Grüße" allocUTF8String];
    KT_EXPECT(copy != NULL && strcmp(copy, "Gr\xc3\xbc\xc3\x9f" "e") == 0);
    free(copy);
    KT_EXPECT([WithoutUTF8Form() allocUTF8String] == NULL && [@"Grüße" size] == 7 && [WithoutUTF8Form() size] == 0);
}

KT_CASE(CharacterClassesTestUTF8Bytes)
{
    KT_EXPECT([@"0123" allChracterIs:isdigit] && [@"" allChracterIs:isdigit] && ![@"01a" allChracterIs:isdigit]);
    KT_EXPECT(![@"01" allChracterIs:NULL] && ![WithoutUTF8Form() allChracterIs:isprint]);
    NSMutableString *text = [NSMutableString stringWithString:@"a1b22c"];
    KT_EXPECT([text filterChracters:isalpha] && ![text filterChracters:isalpha]);
    KT_EXPECT_EQUAL_OBJECTS(text, @"abc");
    // Indexes of characters meet UTF-8 bytes: the 2 is judged by the second
    // byte of é and goes, the é by its first byte.
    KT_EXPECT_EQUAL_OBJECTS([@"1é2" chractersFilteredString:isdigit], @"1");
    KT_EXPECT_EQUAL_OBJECTS([@"a1" chractersFilteredString:NULL], @"a1");
}

KT_CASE(SearchCutAndReplace)
{
    NSString *text = @"key=value=more";
    KT_EXPECT([text contains:@"value"] && ![text contains:@"VALUE"]);
    KT_EXPECT([text contains:@"VALUE" options:NSCaseInsensitiveSearch]);
    KT_EXPECT(![text contains:nil] && ![text contains:@""]);
    KT_EXPECT(![text contains:(id)[NSNumber numberWithInt:1]]); // raises inside, answers NO
    KT_EXPECT([text offsetAfterString:@"="] == 4 && [text offsetAfterString:@"=" options:NSBackwardsSearch] == 10);
    KT_EXPECT([text offsetAfterString:@"#"] == NSNotFound && [text offsetAfterString:nil] == NSNotFound);
    KT_EXPECT_EQUAL_OBJECTS([text substringAfterString:@"=" options:0], @"value=more");
    KT_EXPECT([text substringAfterString:@"#" options:0] == nil);
    NSMutableString *front = nil, *back = nil;
    [text devideAtIndex:3 front:&front back:&back];
    KT_EXPECT([front isEqual:@"key"] && [back isEqual:@"=value=more"]);
    [back appendString:@"!"]; // mutable
    front = back = nil;
    [text devideAtIndex:15 front:&front back:&back];
    [text devideAtIndex:0 front:&front back:NULL];
    KT_EXPECT(front == nil && back == nil);
    NSMutableString *cut = [NSMutableString stringWithString:text];
    KT_EXPECT_EQUAL_OBJECTS([cut deleteToSubstring:@"="], @"key");
    KT_EXPECT_EQUAL_OBJECTS(cut, @"value=more");
    KT_EXPECT([cut deleteToSubstring:@"#"] == nil && [cut deleteToSubstring:@""] == nil);
    KT_EXPECT([cut deleteIfEndWith:@"more"] && ![cut deleteIfEndWith:@"more"]);
    KT_EXPECT([cut deleteIfStartWith:@"val"] && ![cut deleteIfStartWith:nil]);
    KT_EXPECT_EQUAL_OBJECTS(cut, @"ue=");
    NSMutableString *replaced = [NSMutableString stringWithString:@"aaa"];
    KT_EXPECT([replaced find:@"aa" andReplaceAll:@"b"] == 1 && [replaced isEqual:@"ab"]);
    [replaced setString:@"a-b-c"];
    KT_EXPECT([replaced find:@"-" andReplaceAll:@"--"] == 2); // replaced text is not searched again
    KT_EXPECT_EQUAL_OBJECTS(replaced, @"a--b--c");
    KT_EXPECT([replaced find:@"" andReplaceAll:@"x"] == 0 && [replaced find:@"-" andReplaceAll:nil] == 0);
    KT_EXPECT_EQUAL_OBJECTS([text find:@"=" andReplaceAllString:@": "], @"key: value: more");
    KT_EXPECT_EQUAL_OBJECTS(text, @"key=value=more");
}

/* Whether text holds exactly the count units.  Compared unit by unit:
 * GNUstep cannot print, and some of its copies empty, text holding half of
 * a surrogate pair. */
static BOOL HasUnits(NSString *text, const unichar *units, NSUInteger count)
{
    unichar buffer[16];
    if (![text isKindOfClass:[NSString class]] || [text length] != count || count > 16)
        return NO;
    [text getCharacters:buffer range:NSMakeRange(0, count)];
    return memcmp(buffer, units, count * sizeof(unichar)) == 0;
}

/* A cut inside a surrogate pair leaves a half at each side; the copies the
 * methods make keep it. */
KT_CASE(HalvesOfASurrogatePairSurviveTheCopies)
{
    const unichar units[] = {'a', 0xD83D, 0xDE00, 'b'};
    NSString *text = [NSString stringWithCharacters:units length:4];
    NSMutableString *front = nil, *back = nil;
    [text devideAtIndex:2 front:&front back:&back];
    KT_EXPECT(HasUnits(front, units, 2) && HasUnits(back, units + 2, 2));
    NSString *head = [text stringBySetLength:2 withFillString:nil];
    KT_EXPECT(HasUnits(head, units, 2));
    const unichar filled[] = {'a', 0xD83D, 'x'}, replaced[] = {'c', 0xD83D};
    KT_EXPECT(HasUnits([head stringBySetLength:3 withFillString:@"x"], filled, 3));
    KT_EXPECT(HasUnits([head find:@"a" andReplaceAllString:@"c"], replaced, 2));
    KT_EXPECT(HasUnits([head chractersFilteredString:NULL], units, 2));
    NSMutableString *twoLines = [NSMutableString stringWithString:@"\r\nz"];
    [twoLines insertString:head atIndex:0];
    NSArray *lines = [twoLines lines];
    KT_EXPECT([lines count] == 2 && HasUnits([lines objectAtIndex:0], units, 2));
}

KT_CASE(LengthsFillsAndIntegers)
{
    KT_EXPECT_EQUAL_OBJECTS([@"abc" stringBySetLength:6 withFillString:@"xy"], @"abcxyx");
    KT_EXPECT_EQUAL_OBJECTS([@"abc" stringBySetLength:1 withFillString:@"xy"], @"a");
    KT_EXPECT_EQUAL_OBJECTS([@"abc" stringBySetLength:5 withFillString:nil], @"abc  ");
    NSMutableString *text = [NSMutableString stringWithString:@"before"];
    [text setUTF8String:"Gr\xc3\xbc\xc3\x9f" "e"];
    KT_EXPECT_EQUAL_OBJECTS(text, @"Grüße");
    [text setUTF8String:"\xff\xfe"];
    [text setUTF8String:NULL];
    KT_EXPECT_EQUAL_OBJECTS(text, @"Grüße");
    [text empty];
    KT_EXPECT([text length] == 0 && [[@"abc12x34" intNumber] intValue] == 12 && [[@"x" intNumber] intValue] == 0);
    KT_EXPECT([[@"-7 apples" intNumber] intValue] == 7 && [[@"n=99999999999" intNumber] intValue] == INT_MAX);
}

KT_CASE(EncodingNamesAndProcessBridges)
{
    NSMutableArray *names = [NSString availableStringEncodingLocalizedNames];
    KT_ASSERT([names count] > 0);
    NSString *utf8Name = [NSString localizedNameOfStringEncoding:NSUTF8StringEncoding];
    KT_EXPECT([names containsObject:utf8Name] && [NSString stringEncodingForLocalizedName:utf8Name] == NSUTF8StringEncoding);
    KT_EXPECT([NSString stringEncodingForLocalizedName:nil] == 0);
    int status = [@"exit 3" system];
    KT_EXPECT(WIFEXITED(status) && WEXITSTATUS(status) == 3 && [WithoutUTF8Form() system] == -1);
    KT_EXPECT([@"KORU_TEXT_TEST" setenv:"first" overwrite:1] == 0);
    KT_EXPECT([@"KORU_TEXT_TEST" setenv:"second" overwrite:0] == 0 && (strcmp(getenv("KORU_TEXT_TEST"), "first") == 0));
    int fromChild = [@"test \"$KORU_TEXT_TEST\" = first" system]; // a child sees it
    KT_EXPECT(WIFEXITED(fromChild) && WEXITSTATUS(fromChild) == 0 && [@"KORU_TEXT_TEST" setenv:NULL overwrite:1] == -1);
    unsetenv("KORU_TEXT_TEST");
    int number = 0;
    char word[8] = "";
    int fields = [@"42 words" sscanf:"%d %7s", &number, word];
    KT_EXPECT(fields == 2 && number == 42 && strcmp(word, "words") == 0);
    fields = [@"42" sscanf:NULL, &number];
    int noForm = [WithoutUTF8Form() sscanf:"%d", &number];
    KT_EXPECT(fields == -1 && noForm == -1);
}

KT_MAIN()
