/* The exit pool, watched from outside: a child process adds objects and
 * reports each release on its output. */
#import "KTest.h"

#include <KORU/KORU.h>

static NSArray *RunProbe(NSString *scenario)
{
    NSTask *task = [[[NSTask alloc] init] autorelease];
    NSPipe *pipe = [NSPipe pipe];
    [task setLaunchPath:@EXIT_POOL_PROBE];
    [task setArguments:[NSArray arrayWithObject:scenario]];
    [task setStandardOutput:pipe];
    [task launch];
    NSData *output = [[pipe fileHandleForReading] readDataToEndOfFile];
    [task waitUntilExit];
    if ([task terminationStatus] != 0)
        return nil;
    NSString *text = [[[NSString alloc] initWithData:output encoding:NSUTF8StringEncoding] autorelease];
    NSMutableArray *lines = [NSMutableArray arrayWithArray:[text componentsSeparatedByString:@"\n"]];
    [lines removeObject:@""];
    return lines;
}

KT_CASE(ObjectsLiveUntilTheProcessExits)
{
    NSArray *lines = RunProbe(@"keep");
    KT_ASSERT([lines count] == 3);
    KT_EXPECT_EQUAL_OBJECTS([lines objectAtIndex:0], @"main returns");
    NSSet *released = [NSSet setWithArray:[lines subarrayWithRange:NSMakeRange(1, 2)]];
    KT_EXPECT_EQUAL_OBJECTS(released, ([NSSet setWithObjects:@"released first", @"released second", nil]));
}

KT_CASE(ReleasingThePoolEarlyStartsANewOne)
{
    NSArray *lines = RunProbe(@"again");
    NSArray *expected = [NSArray arrayWithObjects:@"released early", @"pool released", @"main returns",
                                                  @"released late", nil];
    KT_EXPECT_EQUAL_OBJECTS(lines, expected);
}

KT_CASE(InThisProcessThePoolKeepsAReference)
{
    NSObject *object = [[NSObject alloc] init];
    NSUInteger before = [object retainCount];
    AddToExitPool(object);
    KT_EXPECT([object retainCount] == before + 1);
    AddToExitPool(nil);
    ReleaseExitPool();
    KT_EXPECT([object retainCount] == before);
    ReleaseExitPool();
    [object release];
}

KT_MAIN()
