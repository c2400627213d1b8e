/* koru-demo started as a user starts it, on the test's private display and
 * user defaults: its window comes up, is captured as a PNG in the build
 * folder (test-artifacts/koru-demo.png), its first rows reach the user
 * defaults, and it is stopped by its pid. */
#import "KTest.h"

#include <signal.h>

static NSString *const kTitle = @"KORU Demo";

/* The output of a program, or nil when it cannot run or fails. */
static NSString *Run(NSString *path, NSArray *arguments)
{
    NSTask *task = [[[NSTask alloc] init] autorelease];
    NSPipe *pipe = [NSPipe pipe];
    [task setLaunchPath:path];
    [task setArguments:arguments];
    [task setStandardOutput:pipe];
    [task setStandardError:[NSFileHandle fileHandleWithNullDevice]];
    @try {
        [task launch];
    } @catch (NSException *exception) {
        return nil;
    }
    NSData *output = [[pipe fileHandleForReading] readDataToEndOfFile];
    [task waitUntilExit];
    if ([task terminationStatus] != 0)
        return nil;
    return [[[NSString alloc] initWithData:output encoding:NSUTF8StringEncoding] autorelease];
}

/* The X window id of the demo's window once it is mapped, or nil. */
static NSString *WaitForWindow(NSTask *demo, NSTimeInterval limit)
{
    NSDate *until = [NSDate dateWithTimeIntervalSinceNow:limit];
    while ([demo isRunning] && [until timeIntervalSinceNow] > 0) {
        NSString *info = Run(@"/usr/bin/xwininfo", [NSArray arrayWithObjects:@"-name", kTitle, nil]);
        NSRange mapped = [info rangeOfString:@"IsViewable"];
        NSRange id = [info rangeOfString:@"Window id: "];
        if (mapped.location != NSNotFound && id.location != NSNotFound) {
            NSString *rest = [info substringFromIndex:NSMaxRange(id)];
            return [[rest componentsSeparatedByString:@" "] objectAtIndex:0];
        }
        [NSThread sleepForTimeInterval:0.2];
    }
    return nil;
}

/* SIGTERM, then SIGKILL if the demo has not gone within a few seconds. */
static void Stop(NSTask *demo)
{
    if (![demo isRunning])
        return;
    kill([demo processIdentifier], SIGTERM);
    for (int wait = 0; wait < 50 && [demo isRunning]; wait++)
        [NSThread sleepForTimeInterval:0.1];
    if ([demo isRunning])
        kill([demo processIdentifier], SIGKILL);
    [demo waitUntilExit];
}

KT_CASE(TheDemoShowsItsWindowAndKeepsItsRows)
{
    NSString *folder = [@KORU_BUILD_DIR stringByAppendingPathComponent:@"test-artifacts"];
    NSString *shot = [folder stringByAppendingPathComponent:@"koru-demo.png"];
    [[NSFileManager defaultManager] createDirectoryAtPath:folder withIntermediateDirectories:YES attributes:nil
                                                    error:NULL];
    [[NSFileManager defaultManager] removeItemAtPath:shot error:NULL];
    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    [defaults removePersistentDomainForName:@"koru-demo"];
    [defaults synchronize];

    NSTask *demo = [[[NSTask alloc] init] autorelease];
    [demo setLaunchPath:@KORU_DEMO_PATH];
    [demo setArguments:[NSArray arrayWithObjects:@"-GSX11HandlesWindowDecorations", @"NO", nil]];
    [demo setStandardOutput:[NSFileHandle fileHandleWithNullDevice]];
    [demo launch];
    @try {
        NSString *window = WaitForWindow(demo, 60);
        KT_EXPECT(window != nil);
        [NSThread sleepForTimeInterval:1.0]; // the first drawing
        if (window != nil)
            KT_EXPECT(Run(@"/usr/bin/import", [NSArray arrayWithObjects:@"-window", window, shot, nil]) != nil);
        KT_EXPECT([[[NSFileManager defaultManager] attributesOfItemAtPath:shot error:NULL] fileSize] > 1000);

        // The first run stores the rows it starts with; the next reads them.
        [defaults synchronize];
        NSArray *rows = [[defaults persistentDomainForName:@"koru-demo"] objectForKey:@"KORUDemoRows"];
        KT_EXPECT([rows count] == 4);
        KT_EXPECT_EQUAL_OBJECTS([[rows objectAtIndex:0] objectForKey:@"item"], @"Apples");
    } @finally {
        Stop(demo);
    }
    [defaults removePersistentDomainForName:@"koru-demo"];
    [defaults synchronize];
}

KT_MAIN()
