/* The suite's private GNUstep configuration really receives the user
 * defaults that tests write: a persistent default lands in the private
 * defaults folder, never in the real user's (RealDefaultsUnchangedTest checks
 * that folder after the whole suite). */
#include "KTest.h"

KT_CASE(PersistentDefaultsLandInThePrivateFolder)
{
    const char *config = getenv("GNUSTEP_CONFIG_FILE");
    KT_ASSERT(config != NULL);
    NSString *folder = [[[NSString stringWithUTF8String:config] stringByDeletingLastPathComponent]
        stringByAppendingPathComponent:@"Defaults"];
    NSString *file = [folder stringByAppendingPathComponent:@"DefaultsIsolationTest.plist"];

    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    [defaults setObject:@"written by the suite" forKey:@"KORUDefaultsIsolationProbe"];
    KT_EXPECT([defaults synchronize]);
    NSDictionary *stored = [NSDictionary dictionaryWithContentsOfFile:file];
    KT_EXPECT_MSG(stored != nil, @"no defaults file at %@", file);
    KT_EXPECT_EQUAL_OBJECTS(@"written by the suite", [stored objectForKey:@"KORUDefaultsIsolationProbe"]);

    [defaults removeObjectForKey:@"KORUDefaultsIsolationProbe"];
    [defaults synchronize];
}

KT_MAIN()
