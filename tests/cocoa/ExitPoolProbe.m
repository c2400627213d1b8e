/* A host for ExitPoolTest: adds tracked objects to the exit pool, from
 * Objective-C and from C, and tells on standard output when each is released,
 * so the test sees what the pool keeps until exit and what it lets go.
 * Usage: ExitPoolProbe keep|again. */
#import <Foundation/Foundation.h>

#include <KORU/ExitPool.h>

#include <string.h>
#include <unistd.h>

/* From ExitPoolProbeC.c: the pool used through its C declaration. */
void AddToExitPoolFromC(CFTypeRef object);

static void Say(NSString *line)
{
    const char *text = [[line stringByAppendingString:@"\n"] UTF8String];
    // Unbuffered, so lines written by exit handlers keep their order.
    write(STDOUT_FILENO, text, strlen(text));
}

@interface Tracked : NSObject {
    NSString *mName;
}

- (id)initWithName:(NSString *)name;
@end

@implementation Tracked
- (id)initWithName:(NSString *)name
{
    if ((self = [super init]) != nil)
        mName = [name copy];
    return self;
}

- (void)dealloc
{
    Say([NSString stringWithFormat:@"released %@", mName]);
    [mName release];
    [super dealloc];
}
@end

static void AddTracked(NSString *name, BOOL fromC)
{
    Tracked *object = [[Tracked alloc] initWithName:name];
    if (fromC)
        AddToExitPoolFromC((CFTypeRef)object);
    else
        AddToExitPool(object);
    [object release]; // the pool's reference is the only one left
}

int main(int argc, char **argv)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    const char *scenario = argc > 1 ? argv[1] : "keep";
    AddToExitPool(nil);
    ReleaseExitPool(); // no pool yet: nothing happens
    if (strcmp(scenario, "keep") == 0) {
        AddTracked(@"first", NO);
        AddTracked(@"second", YES);
    } else {
        AddTracked(@"early", NO);
        ReleaseExitPool();
        Say(@"pool released");
        ReleaseExitPool();
        AddTracked(@"late", YES);
    }
    Say(@"main returns");
    [pool drain];
    return 0;
}
