#import "KTest.h"

#include <CoreFoundation/CoreFoundation.h>

/* {Greeting = Bonjour; Count = 42; Ratio = 0.5; Enabled = true; Items = (a, "été"); Blob = <000102>}
 * in the binary form, byte for byte as Apple's writer lays it out. */
static const UInt8 kBinaryList[] = {
    0x62, 0x70, 0x6c, 0x69, 0x73, 0x74, 0x30, 0x30, 0xd6, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09,
    0x0a, 0x0b, 0x0e, 0x54, 0x42, 0x6c, 0x6f, 0x62, 0x55, 0x43, 0x6f, 0x75, 0x6e, 0x74, 0x57, 0x45, 0x6e, 0x61,
    0x62, 0x6c, 0x65, 0x64, 0x58, 0x47, 0x72, 0x65, 0x65, 0x74, 0x69, 0x6e, 0x67, 0x55, 0x49, 0x74, 0x65, 0x6d,
    0x73, 0x55, 0x52, 0x61, 0x74, 0x69, 0x6f, 0x43, 0x00, 0x01, 0x02, 0x10, 0x2a, 0x09, 0x57, 0x42, 0x6f, 0x6e,
    0x6a, 0x6f, 0x75, 0x72, 0xa2, 0x0c, 0x0d, 0x51, 0x61, 0x63, 0x00, 0xe9, 0x00, 0x74, 0x00, 0xe9, 0x23, 0x3f,
    0xe0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x08, 0x15, 0x1a, 0x20, 0x28, 0x31, 0x37, 0x3d, 0x41, 0x43, 0x44,
    0x4c, 0x4f, 0x51, 0x58, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x0f, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x61};

/* The bytes of a literal, without its terminating zero. */
#define BYTES(literal) [NSData dataWithBytes:(literal) length:sizeof(literal) - 1]

static CFDataRef DataOfText(NSString *text, NSStringEncoding encoding, const char *mark, size_t markLength)
{
    NSMutableData *data = [NSMutableData dataWithBytes:mark length:markLength];
    [data appendData:[text dataUsingEncoding:encoding]];
    return (CFDataRef)data;
}

static id Parse(CFDataRef data, CFOptionFlags mutability, NSString **error)
{
    CFStringRef errorString = NULL;
    id result = [(id)CFPropertyListCreateFromXMLData(NULL, data, mutability, &errorString) autorelease];
    if (error != NULL)
        *error = [(id)errorString autorelease];
    else if (errorString != NULL)
        CFRelease(errorString);
    return result;
}

KT_CASE(ReadsTheBinaryFormAsAMacWritesIt)
{
    CFDataRef data = (CFDataRef)[NSData dataWithBytes:kBinaryList length:sizeof kBinaryList];
    CFPropertyListFormat format = 0;
    CFErrorRef error = NULL;
    id list = [(id)CFPropertyListCreateWithData(NULL, data, kCFPropertyListImmutable, &format, &error) autorelease];
    KT_ASSERT(list != nil);
    KT_EXPECT(error == NULL && format == kCFPropertyListBinaryFormat_v1_0);
    KT_EXPECT_EQUAL_OBJECTS([list objectForKey:@"Greeting"], @"Bonjour");
    KT_EXPECT([[list objectForKey:@"Count"] intValue] == 42);
    KT_EXPECT([[list objectForKey:@"Ratio"] doubleValue] == 0.5);
    KT_EXPECT([list objectForKey:@"Enabled"] == (id)kCFBooleanTrue);
    NSArray *expectedItems = [NSArray arrayWithObjects:@"a", [NSString stringWithUTF8String:"\xC3\xA9t\xC3\xA9"], nil];
    KT_EXPECT_EQUAL_OBJECTS([list objectForKey:@"Items"], expectedItems);
    KT_EXPECT_EQUAL_OBJECTS([list objectForKey:@"Blob"], [NSData dataWithBytes:"\x00\x01\x02" length:3]);
}

KT_CASE(ReadsStringsTablesInUTF16WithByteOrderMarkAndInUTF8)
{
    NSString *table = [NSString stringWithUTF8String:"/* Greeting */\n\"hello\" = \"Bonjour \xC3\xA0 tous\";\n"
                                                     "// Leaving\n\"bye\" = \"Au revoir\";\n"];
    NSDictionary *expected = [NSDictionary dictionaryWithObjectsAndKeys:
        [NSString stringWithUTF8String:"Bonjour \xC3\xA0 tous"], @"hello", @"Au revoir", @"bye", nil];
    CFDataRef forms[] = {
        DataOfText(table, NSUTF16LittleEndianStringEncoding, "\xFF\xFE", 2),
        DataOfText(table, NSUTF16BigEndianStringEncoding, "\xFE\xFF", 2),
        DataOfText(table, NSUTF8StringEncoding, "\xEF\xBB\xBF", 3),
        DataOfText(table, NSUTF8StringEncoding, "", 0),
    };
    for (size_t i = 0; i < sizeof forms / sizeof forms[0]; i++) {
        NSString *error = nil;
        id parsed = Parse(forms[i], kCFPropertyListImmutable, &error);
        KT_EXPECT_MSG([parsed isEqual:expected] && error == nil, @"form %zu gave %@ (%@)", i, parsed, error);
    }
}

KT_CASE(ReadsOpenStepAndXMLText)
{
    NSString *error = nil;
    id openStep = Parse(DataOfText(@"{ list = (one, \"two words\"); data = <0a0b>; }", NSUTF8StringEncoding, "", 0),
                        kCFPropertyListImmutable, &error);
    KT_EXPECT_EQUAL_OBJECTS([openStep objectForKey:@"list"], ([NSArray arrayWithObjects:@"one", @"two words", nil]));
    KT_EXPECT_EQUAL_OBJECTS([openStep objectForKey:@"data"], [NSData dataWithBytes:"\x0a\x0b" length:2]);

    NSString *xml = @"<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<plist version=\"1.0\"><array>"
                    @"<string>x</string><integer>-7</integer><false/></array></plist>";
    CFPropertyListFormat format = 0;
    id array = [(id)CFPropertyListCreateWithData(NULL, DataOfText(xml, NSUTF16LittleEndianStringEncoding, "\xFF\xFE", 2),
                                                 kCFPropertyListImmutable, &format, NULL) autorelease];
    KT_EXPECT(format == kCFPropertyListXMLFormat_v1_0);
    KT_ASSERT([array isKindOfClass:[NSArray class]] && [array count] == 3);
    KT_EXPECT([[array objectAtIndex:1] intValue] == -7);
    KT_EXPECT([array objectAtIndex:2] == (id)kCFBooleanFalse);
}

KT_CASE(MalformedOrEmptyDataGivesNullAndAReason)
{
    /* The last two start with bytes 0 and 1, which mark Foundation's own
     * archive form; its counts there ask for gigabytes. */
    NSData *broken[] = {
        BYTES("<?xml version=\"1.0\"?><plist><dict><key>a</key><string>b"), BYTES("\"a\" = \"b\"; \"c\""),
        BYTES("{ a = b; "), BYTES(""), BYTES("\x00\x05\xe8\x00\x00"), BYTES("\x01\xff\xff\xff\xff\x00\x00"),
    };
    for (size_t i = 0; i < sizeof broken / sizeof broken[0]; i++) {
        NSString *error = nil;
        id result = Parse((CFDataRef)broken[i], kCFPropertyListImmutable, &error);
        KT_EXPECT_MSG(result == nil && [error length] > 0, @"case %zu parsed as %@ (%@)", i, result, error);
    }
    KT_EXPECT(CFPropertyListCreateFromXMLData(NULL, NULL, kCFPropertyListImmutable, NULL) == NULL);

    CFErrorRef error = NULL;
    CFPropertyListFormat format = 5;
    KT_EXPECT(CFPropertyListCreateWithData(NULL, (CFDataRef)[NSData dataWithBytes:"{" length:1], 0, &format, &error) == NULL);
    KT_EXPECT(format == 0);
    KT_ASSERT(error != NULL);
    KT_EXPECT(CFEqual(CFErrorGetDomain(error), kCFErrorDomainCocoa) && CFErrorGetCode(error) != 0);
    KT_EXPECT([[(NSError *)error localizedDescription] length] > 0);
    CFRelease(error);
}

KT_CASE(MutabilityOptionsReachContainersAndLeaves)
{
    CFDataRef data = DataOfText(@"{ name = value; list = (item); }", NSUTF8StringEncoding, "", 0);
    id immutable = Parse(data, kCFPropertyListImmutable, NULL);
    id containers = Parse(data, kCFPropertyListMutableContainers, NULL);
    id leaves = Parse(data, kCFPropertyListMutableContainersAndLeaves, NULL);

    Class dictionary = [NSMutableDictionary class], array = [NSMutableArray class], string = [NSMutableString class];
    KT_EXPECT(![immutable isKindOfClass:dictionary] && ![[immutable objectForKey:@"list"] isKindOfClass:array]);
    KT_EXPECT(![[immutable objectForKey:@"name"] isKindOfClass:string]);
    KT_EXPECT([containers isKindOfClass:dictionary] && [[containers objectForKey:@"list"] isKindOfClass:array]);
    KT_EXPECT(![[containers objectForKey:@"name"] isKindOfClass:string]);
    KT_EXPECT([leaves isKindOfClass:dictionary]);
    [[leaves objectForKey:@"name"] appendString:@"!"];
    [[leaves objectForKey:@"list"] addObject:@"more"];
    KT_EXPECT_EQUAL_OBJECTS([leaves objectForKey:@"name"], @"value!");
}

KT_CASE(DeepCopyIsIndependentOfTheOriginal)
{
    NSMutableArray *inner = [NSMutableArray arrayWithObject:[NSMutableString stringWithString:@"x"]];
    NSDictionary *original = [NSDictionary dictionaryWithObject:inner forKey:@"inner"];
    id copy = [(id)CFPropertyListCreateDeepCopy(NULL, original, kCFPropertyListMutableContainersAndLeaves) autorelease];
    KT_EXPECT_EQUAL_OBJECTS(copy, original);
    [[[copy objectForKey:@"inner"] objectAtIndex:0] appendString:@"y"];
    [[copy objectForKey:@"inner"] addObject:@"z"];
    KT_EXPECT([inner count] == 1 && [[inner objectAtIndex:0] isEqual:@"x"]);

    id frozen = [(id)CFPropertyListCreateDeepCopy(NULL, original, kCFPropertyListImmutable) autorelease];
    KT_EXPECT(![[frozen objectForKey:@"inner"] isKindOfClass:[NSMutableArray class]]);

    NSDictionary *invalid = [NSDictionary dictionaryWithObject:[NSObject new] forKey:@"object"];
    KT_EXPECT(CFPropertyListCreateDeepCopy(NULL, invalid, kCFPropertyListImmutable) == NULL);
    [[invalid objectForKey:@"object"] release];
    KT_EXPECT(CFPropertyListCreateDeepCopy(NULL, NULL, kCFPropertyListImmutable) == NULL);
}

KT_CASE(WritesXMLAndBinaryThatReadBack)
{
    NSDictionary *tree = [NSDictionary dictionaryWithObjectsAndKeys:
        @"text", @"string", [NSNumber numberWithInt:12], @"number", (id)kCFBooleanTrue, @"flag",
        [NSArray arrayWithObjects:@"a", [NSData dataWithBytes:"z" length:1], nil], @"list", nil];

    NSData *xml = [(id)CFPropertyListCreateXMLData(NULL, tree) autorelease];
    KT_ASSERT(xml != nil);
    NSString *text = [[[NSString alloc] initWithData:xml encoding:NSUTF8StringEncoding] autorelease];
    KT_EXPECT([text hasPrefix:@"<?xml"] && [text rangeOfString:@"<true/>"].location != NSNotFound);
    KT_EXPECT_EQUAL_OBJECTS(Parse((CFDataRef)xml, kCFPropertyListImmutable, NULL), tree);

    CFErrorRef error = NULL;
    NSData *binary = [(id)CFPropertyListCreateData(NULL, tree, kCFPropertyListBinaryFormat_v1_0, 0, &error) autorelease];
    KT_ASSERT(binary != nil);
    KT_EXPECT(memcmp([binary bytes], "bplist00", 8) == 0);
    KT_EXPECT_EQUAL_OBJECTS(Parse((CFDataRef)binary, kCFPropertyListImmutable, NULL), tree);

    KT_EXPECT(CFPropertyListCreateData(NULL, tree, kCFPropertyListOpenStepFormat, 0, &error) == NULL);
    KT_ASSERT(error != NULL);
    CFRelease(error);
}

KT_CASE(ValidityDependsOnTheForm)
{
    NSDictionary *strings = [NSDictionary dictionaryWithObject:[NSArray arrayWithObject:@"a"] forKey:@"k"];
    NSDictionary *numbers = [NSDictionary dictionaryWithObject:[NSNumber numberWithInt:1] forKey:@"k"];
    NSDictionary *numberKey = [NSDictionary dictionaryWithObject:@"v" forKey:[NSNumber numberWithInt:1]];
    KT_EXPECT(CFPropertyListIsValid(strings, kCFPropertyListOpenStepFormat) &&
              CFPropertyListIsValid(numbers, kCFPropertyListXMLFormat_v1_0));
    KT_EXPECT(!CFPropertyListIsValid(numbers, kCFPropertyListOpenStepFormat));
    KT_EXPECT(!CFPropertyListIsValid(numberKey, kCFPropertyListBinaryFormat_v1_0));
    KT_EXPECT(!CFPropertyListIsValid(strings, 7) && !CFPropertyListIsValid(NULL, kCFPropertyListXMLFormat_v1_0));
    KT_EXPECT(CFPropertyListCreateXMLData(NULL, numberKey) == NULL);
}

KT_MAIN()
