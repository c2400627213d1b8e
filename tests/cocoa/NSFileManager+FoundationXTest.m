/* NSFileManager(FoundationX): walking a real folder with a C callback. */
#import "KTest.h"

#include <KORU/KORU.h>

#include <stdlib.h>

typedef struct {
    NSMutableArray *seen;
    NSUInteger stopAfter;
    NSString *path;
} Walk;

static BOOL Visit(NSString *path, NSString *subpath, void *userdata)
{
    Walk *walk = userdata;
    walk->path = path;
    [walk->seen addObject:subpath];
    return [walk->seen count] < walk->stopAfter;
}

KT_CASE(EverySubpathUntilTheFunctionSaysStop)
{
    char pattern[] = "/tmp/koru-walk-XXXXXX";
    KT_ASSERT(mkdtemp(pattern) != NULL);
    NSString *folder = [NSString stringWithUTF8String:pattern];
    NSFileManager *manager = [NSFileManager defaultManager];
    [manager createDirectoryAtPath:[folder stringByAppendingPathComponent:@"sub"] withIntermediateDirectories:YES
                        attributes:nil error:NULL];
    [manager createFileAtPath:[folder stringByAppendingPathComponent:@"a.txt"] contents:[NSData data] attributes:nil];
    [manager createFileAtPath:[folder stringByAppendingPathComponent:@"sub/b.txt"] contents:[NSData data] attributes:nil];
    Walk walk = {[NSMutableArray array], 100, nil};
    [manager enumerateSubpathsAtPath:folder withFunction:Visit userdata:&walk];
    KT_EXPECT_EQUAL_OBJECTS(walk.seen, [manager subpathsAtPath:folder]);
    KT_EXPECT([walk.seen count] == 3);
    KT_EXPECT_EQUAL_OBJECTS(walk.path, folder);
    Walk stopped = {[NSMutableArray array], 1, nil};
    [manager enumerateSubpathsAtPath:folder withFunction:Visit userdata:&stopped];
    KT_EXPECT([stopped.seen count] == 1);
    Walk none = {[NSMutableArray array], 100, nil};
    [manager enumerateSubpathsAtPath:nil withFunction:Visit userdata:&none];
    [manager enumerateSubpathsAtPath:folder withFunction:NULL userdata:&none];
    [manager enumerateSubpathsAtPath:[folder stringByAppendingPathComponent:@"missing"] withFunction:Visit
                            userdata:&none];
    KT_EXPECT([none.seen count] == 0);
    system([[NSString stringWithFormat:@"rm -rf '%@'", folder] UTF8String]);
}

KT_MAIN()
