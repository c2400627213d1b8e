/* "AppleLanguages" and "AppleLocale" as processes started with known locale
 * variables find them in their user defaults. */
#import "KTest.h"

/* The probe's answers, run with the locale variables of this process
 * replaced by settings ("NAME=value" strings) and with arguments. */
static NSDictionary *RunProbe(NSArray *settings, NSArray *arguments)
{
    NSMutableDictionary *environment = [NSMutableDictionary dictionary];
    NSDictionary *inherited = [[NSProcessInfo processInfo] environment];
    for (NSString *name in inherited) {
        if (![name hasPrefix:@"LANG"] && ![name hasPrefix:@"LC_"])
            [environment setObject:[inherited objectForKey:name] forKey:name];
    }
    for (NSString *setting in settings) {
        NSRange equals = [setting rangeOfString:@"="];
        [environment setObject:[setting substringFromIndex:NSMaxRange(equals)]
                        forKey:[setting substringToIndex:equals.location]];
    }
    NSTask *task = [[[NSTask alloc] init] autorelease];
    NSPipe *pipe = [NSPipe pipe];
    [task setLaunchPath:@CF_LOCALE_DEFAULTS_PROBE];
    [task setArguments:arguments != nil ? arguments : [NSArray array]];
    [task setEnvironment:environment];
    [task setStandardOutput:pipe];
    [task launch];
    NSData *output = [[pipe fileHandleForReading] readDataToEndOfFile];
    [task waitUntilExit];
    NSMutableDictionary *answers = [NSMutableDictionary dictionary];
    NSString *text = [[[NSString alloc] initWithData:output encoding:NSUTF8StringEncoding] autorelease];
    for (NSString *line in [text componentsSeparatedByString:@"\n"]) {
        NSRange equals = [line rangeOfString:@"="];
        if (equals.location != NSNotFound)
            [answers setObject:[line substringFromIndex:NSMaxRange(equals)] forKey:[line substringToIndex:equals.location]];
    }
    if ([task terminationStatus] != 0)
        [answers setObject:@"yes" forKey:@"failed"];
    return answers;
}

static void ExpectDefaults(NSArray *settings, NSArray *arguments, NSString *languages, NSString *locale,
                           const char *file, int line)
{
    NSDictionary *answers = RunProbe(settings, arguments);
    if (![[answers objectForKey:@"languages"] isEqual:languages] || ![[answers objectForKey:@"locale"] isEqual:locale])
        KTReportFailure(file, line, "locale defaults",
                        [NSString stringWithFormat:@"%@ gave %@, expected %@ / %@", settings, answers, languages, locale]);
}

#define EXPECT_DEFAULTS(settings, arguments, languages, locale) \
    ExpectDefaults((settings), (arguments), (languages), (locale), __FILE__, __LINE__)

#define SETTINGS(...) [NSArray arrayWithObjects:__VA_ARGS__, nil]

KT_CASE(TheFirstLocaleVariableSetGivesLanguagesAndLocale)
{
    EXPECT_DEFAULTS(SETTINGS(@"LANG=fr_FR.UTF-8@euro"), nil, @"fr", @"fr_FR");
    EXPECT_DEFAULTS(SETTINGS(@"LC_ALL=de_AT", @"LANG=fr_FR"), nil, @"de", @"de_AT");
    EXPECT_DEFAULTS(SETTINGS(@"LC_ALL=", @"LC_MESSAGES=nb_NO.ISO-8859-1", @"LANG=fr_FR"), nil, @"nb", @"nb_NO");
    EXPECT_DEFAULTS(SETTINGS(@"LANGUAGE=pt_BR:pt:en_GB:en", @"LANG=fr_FR"), nil, @"pt,en", @"pt_BR");
    EXPECT_DEFAULTS(SETTINGS(@"LANGUAGE=C:ja", @"LANG=fr_FR"), nil, @"ja", @"ja");
}

KT_CASE(TheCLocaleSuppliesNothing)
{
    EXPECT_DEFAULTS(SETTINGS(@"LANG=C"), nil, @"<none>", @"<none>");
    EXPECT_DEFAULTS(SETTINGS(@"LC_ALL=POSIX", @"LANG=fr_FR"), nil, @"<none>", @"<none>");
    EXPECT_DEFAULTS(SETTINGS(@"LANG=C.UTF-8"), nil, @"<none>", @"<none>");
    EXPECT_DEFAULTS(SETTINGS(@"LANG=1234"), nil, @"<none>", @"<none>");
    EXPECT_DEFAULTS([NSArray array], nil, @"<none>", @"<none>");
}

KT_CASE(WhatTheUserOrTheProcessSetWins)
{
    EXPECT_DEFAULTS(SETTINGS(@"LANG=fr_FR"), SETTINGS(@"-AppleLocale", @"en_CA"), @"fr", @"en_CA");
    // A value the process registered itself survives a reset of the defaults.
    NSDictionary *answers = RunProbe(SETTINGS(@"LANG=fr_FR"), SETTINGS(@"reset"));
    KT_EXPECT_EQUAL_OBJECTS([answers objectForKey:@"languages"], @"fr");
    KT_EXPECT([[answers objectForKey:@"locale"] isEqual:@"xx_YY"] || [[answers objectForKey:@"locale"] isEqual:@"fr_FR"]);
    KT_EXPECT_EQUAL_OBJECTS([answers objectForKey:@"registered"], @"yes");
}

KT_CASE(ThreadsThatAskAtOnceAllFindTheLocale)
{
    // Every thread that gets the defaults gets them with the locale in place,
    // also while the first of them is still registering it.
    for (int run = 0; run < 5; run++) {
        NSDictionary *answers = RunProbe(SETTINGS(@"LANG=fr_FR"), SETTINGS(@"threads"));
        KT_EXPECT_EQUAL_OBJECTS([answers objectForKey:@"missed"], @"0");
    }
}

KT_MAIN()
