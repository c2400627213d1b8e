/* "AppleLanguages" and "AppleLocale" as processes started with known locale
 * variables find them in their user defaults. */
#import "KTest.h"

#define LIST(...) [NSArray arrayWithObjects:__VA_ARGS__, nil]

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
    for (NSString *line in settings) {
        NSRange equals = [line rangeOfString:@"="];
        [environment setObject:[line substringFromIndex:NSMaxRange(equals)] forKey:[line substringToIndex:equals.location]];
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
    NSString *text = [[[NSString alloc] initWithData:output encoding:NSUTF8StringEncoding] autorelease];
    NSMutableDictionary *answers = [NSMutableDictionary dictionary];
    for (NSString *line in [text componentsSeparatedByString:@"\n"]) {
        NSRange equals = [line rangeOfString:@"="];
        if (equals.location != NSNotFound)
            [answers setObject:[line substringFromIndex:NSMaxRange(equals)] forKey:[line substringToIndex:equals.location]];
    }
    if ([task terminationStatus] != 0)
        [answers setObject:@"yes" forKey:@"failed"];
    return answers;
}

/* The first locale variable set gives languages and locale; the C locale,
 * a number or nothing supplies none; what the process is given wins. */
KT_CASE(TheLocaleVariablesGiveLanguagesAndLocale)
{
    struct {
        NSArray *settings, *arguments;
        NSString *languages, *locale;
    } const cases[] = {
        {LIST(@"LANG=fr_FR.UTF-8@euro"), nil, @"fr", @"fr_FR"},
        {LIST(@"LC_ALL=de_AT", @"LANG=fr_FR"), nil, @"de", @"de_AT"},
        {LIST(@"LC_ALL=", @"LC_MESSAGES=nb_NO.ISO-8859-1", @"LANG=fr_FR"), nil, @"nb", @"nb_NO"},
        {LIST(@"LANGUAGE=pt_BR:pt:en_GB:en", @"LANG=fr_FR"), nil, @"pt,en", @"pt_BR"},
        {LIST(@"LANGUAGE=C:ja", @"LANG=fr_FR"), nil, @"ja", @"ja"},
        {LIST(@"LANG=C"), nil, @"<none>", @"<none>"},
        {LIST(@"LC_ALL=POSIX", @"LANG=fr_FR"), nil, @"<none>", @"<none>"},
        {LIST(@"LANG=C.UTF-8"), nil, @"<none>", @"<none>"},
        {LIST(@"LANG=1234"), nil, @"<none>", @"<none>"},
        {[NSArray array], nil, @"<none>", @"<none>"},
        {LIST(@"LANG=fr_FR"), LIST(@"-AppleLocale", @"en_CA"), @"fr", @"en_CA"},
    };
    for (size_t i = 0; i < sizeof cases / sizeof cases[0]; i++) {
        NSDictionary *answers = RunProbe(cases[i].settings, cases[i].arguments);
        KT_EXPECT_MSG([[answers objectForKey:@"languages"] isEqual:cases[i].languages] &&
                          [[answers objectForKey:@"locale"] isEqual:cases[i].locale],
                      @"%@ gave %@, expected %@ / %@", cases[i].settings, answers, cases[i].languages, cases[i].locale);
    }
}

KT_CASE(WhatTheProcessRegisteredSurvivesAReset)
{
    NSDictionary *answers = RunProbe(LIST(@"LANG=fr_FR"), LIST(@"reset"));
    KT_EXPECT_EQUAL_OBJECTS([answers objectForKey:@"languages"], @"fr");
    KT_EXPECT([[answers objectForKey:@"locale"] isEqual:@"xx_YY"] || [[answers objectForKey:@"locale"] isEqual:@"fr_FR"]);
    KT_EXPECT_EQUAL_OBJECTS([answers objectForKey:@"registered"], @"yes");
}

KT_CASE(ThreadsThatAskAtOnceAllFindTheLocale)
{
    // Every thread that gets the defaults gets them with the locale in place,
    // also while the first of them is still registering it.
    for (int run = 0; run < 5; run++)
        KT_EXPECT_EQUAL_OBJECTS([RunProbe(LIST(@"LANG=fr_FR"), LIST(@"threads")) objectForKey:@"missed"], @"0");
}

KT_MAIN()
