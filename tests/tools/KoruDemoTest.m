/* koru-demo started as a user starts it, on the test's private display and
 * user defaults: its window comes up and is captured as a PNG in the build
 * folder (test-artifacts/koru-demo.png), its first rows reach the user
 * defaults, and it is stopped by its pid. */
#import "KTest.h"

#include <signal.h>

/* The output of a program that succeeded, or nil. */
static NSString *Run(NSString *path, NSArray *arguments)
{
    NSTask *task = [[[NSTask alloc] init] autorelease];
    NSPipe *pipe = [NSPipe pipe];
    [task setLaunchPath:path];
    [task setArguments:arguments];
    [task setStandardOutput:pipe];
    [task setStandardError:[NSFileHandle fileHandleWithNullDevice]];
    [task launch];
    NSData *output = [[pipe fileHandleForReading] readDataToEndOfFile];
    [task waitUntilExit];
    if ([task terminationStatus] != 0)
        return nil;
    return [[[NSString alloc] initWithData:output encoding:NSUTF8StringEncoding] autorelease];
}

/* The X window id of the demo's window once it is on screen, or nil. */
static NSString *WaitForWindow(NSTask *demo)
{
    for (int tries = 0; tries < 300 && [demo isRunning]; tries++) {
        NSString *info = Run(@"/usr/bin/xwininfo", [NSArray arrayWithObjects:@"-name", @"KORU Demo", nil]);
        NSRange label = info != nil ? [info rangeOfString:@"Window id: "] : NSMakeRange(NSNotFound, 0);
        if (label.location != NSNotFound && [info rangeOfString:@"IsViewable"].location != NSNotFound)
            return [[[info substringFromIndex:NSMaxRange(label)] componentsSeparatedByString:@" "] objectAtIndex:0];
        [NSThread sleepForTimeInterval:0.2];
    }
    return nil;
}

KT_CASE(TheDemoShowsItsWindowAndKeepsItsRows)
{
    NSString *folder = [@KORU_BUILD_DIR stringByAppendingPathComponent:@"test-artifacts"];
    NSString *shot = [folder stringByAppendingPathComponent:@"koru-demo.png"];
    NSFileManager *files = [NSFileManager defaultManager];
    [files createDirectoryAtPath:folder withIntermediateDirectories:YES attributes:nil error:NULL];
    [files removeItemAtPath:shot error:NULL];
    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    [defaults removePersistentDomainForName:@"koru-demo"];
    [defaults synchronize];

    NSTask *demo = [[[NSTask alloc] init] autorelease];
    [demo setLaunchPath:@KORU_DEMO_PATH];
    [demo setArguments:[NSArray arrayWithObjects:@"-GSX11HandlesWindowDecorations", @"NO", nil]];
    [demo setStandardOutput:[NSFileHandle fileHandleWithNullDevice]];
    [demo launch];
    @try {
        NSString *window = WaitForWindow(demo);
        KT_EXPECT(window != nil);
        [NSThread sleepForTimeInterval:1.0]; // the first drawing
        if (window != nil)
            KT_EXPECT(Run(@"/usr/bin/import", [NSArray arrayWithObjects:@"-window", window, shot, nil]) != nil);
        KT_EXPECT([[files attributesOfItemAtPath:shot error:NULL] fileSize] > 1000);

        // The first run stores the rows it starts with, for the next to read.
        [defaults synchronize];
        NSArray *rows = [[defaults persistentDomainForName:@"koru-demo"] objectForKey:@"KORUDemoRows"];
        KT_EXPECT([rows count] == 4 && [[[rows objectAtIndex:0] objectForKey:@"item"] isEqual:@"Apples"]);
    } @finally {
        kill([demo processIdentifier], SIGTERM);
        for (int wait = 0; wait < 50 && [demo isRunning]; wait++)
            [NSThread sleepForTimeInterval:0.1];
        if ([demo isRunning])
            kill([demo processIdentifier], SIGKILL);
        [demo waitUntilExit];
    }
    [defaults removePersistentDomainForName:@"koru-demo"];
    [defaults synchronize];
}

KT_MAIN()
