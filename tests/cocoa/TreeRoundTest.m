/* TreeRound on real folder trees made in a private folder. */
#import "KTest.h"

#include <KORU/KORU.h>

#include <stdlib.h>

/* Answers a verdict per path (by its last component, else the default) and
 * records the paths it was shown. */
@interface Verdicts : NSObject {
@public
    NSMutableArray *mSeen;
    NSDictionary *mVerdicts;
    int mDefault;
}
@end

@implementation Verdicts
- (id)init
{
    if ((self = [super init]) != nil)
        mSeen = [[NSMutableArray alloc] init];
    return self;
}

- (void)dealloc
{
    [mSeen release];
    [mVerdicts release];
    [super dealloc];
}

- (int)treeRoundEvaluatePath:(NSString *)path
{
    [mSeen addObject:path];
    NSNumber *verdict = [mVerdicts objectForKey:[path lastPathComponent]];
    if (verdict != nil && [verdict intValue] == -1)
        [NSException raise:NSGenericException format:@"the delegate gives up at %@", path];
    return verdict != nil ? [verdict intValue] : mDefault;
}
@end

static NSString *gRoot;

/* root/a/{a1/{deep.txt}, a2.txt}, root/b/{b1.txt, b2.txt, b3.txt}, root/c.txt */
static NSString *MakeTree(void)
{
    char pattern[] = "/tmp/koru-treeround-XXXXXX";
    if (mkdtemp(pattern) == NULL)
        return nil;
    NSString *root = [NSString stringWithUTF8String:pattern];
    NSFileManager *manager = [NSFileManager defaultManager];
    NSArray *files = [NSArray arrayWithObjects:@"a/a1/deep.txt", @"a/a2.txt", @"b/b1.txt", @"b/b2.txt",
                                               @"b/b3.txt", @"c.txt", nil];
    for (NSString *file in files) {
        NSString *path = [root stringByAppendingPathComponent:file];
        [manager createDirectoryAtPath:[path stringByDeletingLastPathComponent] withIntermediateDirectories:YES
                            attributes:nil error:NULL];
        [manager createFileAtPath:path contents:[NSData data] attributes:nil];
    }
    gRoot = [root retain];
    return root;
}

static void RemoveTree(void)
{
    system([[NSString stringWithFormat:@"chmod -R u+rwx '%@'; rm -rf '%@'", gRoot, gRoot] UTF8String]);
    [gRoot release];
    gRoot = nil;
}

static NSArray *Relative(NSArray *paths)
{
    NSMutableArray *relative = [NSMutableArray array];
    for (NSString *path in paths)
        [relative addObject:[path substringFromIndex:[gRoot length] + 1]];
    return relative;
}

static Verdicts *Walk(NSDictionary *verdicts, int otherwise, BOOL *answer)
{
    Verdicts *delegate = [[[Verdicts alloc] init] autorelease];
    delegate->mVerdicts = [verdicts retain];
    delegate->mDefault = otherwise;
    *answer = [[[[TreeRound alloc] init] autorelease] start:[NSArray arrayWithObject:gRoot] withDelegate:delegate];
    return delegate;
}

KT_CASE(DescendingEverywhereVisitsEveryEntryLevelByLevel)
{
    KT_ASSERT(MakeTree() != nil);
    BOOL answer = NO;
    NSArray *seen = Relative(Walk(nil, TreeRoundDescend, &answer)->mSeen);
    KT_EXPECT(answer);
    NSArray *all = [NSArray arrayWithObjects:@"a", @"a/a1", @"a/a1/deep.txt", @"a/a2.txt", @"b", @"b/b1.txt",
                                             @"b/b2.txt", @"b/b3.txt", @"c.txt", nil];
    KT_EXPECT_EQUAL_OBJECTS([seen sortedArrayUsingSelector:@selector(compare:)], all);
    for (NSUInteger k = 1; k < [seen count]; k++)
        KT_EXPECT_MSG([[[seen objectAtIndex:k - 1] pathComponents] count] <= [[[seen objectAtIndex:k] pathComponents] count],
                      @"%@", seen);
    /* Each folder's entries come together, in the order the folder was listed. */
    NSUInteger a1 = [seen indexOfObject:@"a/a1"], a2 = [seen indexOfObject:@"a/a2.txt"];
    KT_EXPECT(a1 + 1 == a2 || a2 + 1 == a1);
    RemoveTree();
}

KT_CASE(VerdictsSteerTheWalk)
{
    KT_ASSERT(MakeTree() != nil);
    BOOL answer = NO;
    /* Any other non-zero verdict: seen, but not descended into. */
    NSArray *seen = Relative(Walk([NSDictionary dictionaryWithObject:[NSNumber numberWithInt:1] forKey:@"a"],
                                  TreeRoundDescend, &answer)->mSeen);
    KT_EXPECT(answer && [seen containsObject:@"a"] && [seen containsObject:@"b/b3.txt"]);
    KT_EXPECT(![seen containsObject:@"a/a2.txt"]);
    /* 0x2: the rest of b is skipped, the walk goes on with the other folders. */
    NSArray *listed = [[NSFileManager defaultManager] directoryContentsAtPath:[gRoot stringByAppendingPathComponent:@"b"]];
    NSString *firstOfB = [listed objectAtIndex:0];
    seen = Relative(Walk([NSDictionary dictionaryWithObject:[NSNumber numberWithInt:TreeRoundSkipFolder | 1]
                                                     forKey:firstOfB],
                         TreeRoundDescend, &answer)->mSeen);
    NSUInteger fromB = 0;
    for (NSString *path in seen)
        fromB += [path hasPrefix:@"b/"];
    KT_EXPECT(answer && fromB == 1 && [seen containsObject:@"a/a1/deep.txt"]);
    /* 0x100, tested before 0x2: the first entry ends everything, answered YES. */
    seen = Walk(nil, TreeRoundStop | TreeRoundSkipFolder, &answer)->mSeen;
    KT_EXPECT(answer && [seen count] == 1);
    RemoveTree();
}

/* Stops any walk after 100 paths, so that a walk that never ends shows. */
@interface Bounded : Verdicts
@end

@implementation Bounded
- (int)treeRoundEvaluatePath:(NSString *)path
{
    return [super treeRoundEvaluatePath:path] | ([mSeen count] >= 100 ? TreeRoundStop : 0);
}
@end

KT_CASE(EveryEntryIsShownByItsOwnPath)
{
    KT_ASSERT(MakeTree() != nil);
    /* Each the only (so the first) entry of its folder: a name GNUstep's
     * path functions read as a Windows drive, one with a backslash, and one
     * that is no UTF-8, which is left out. */
    KT_ASSERT(system([[NSString stringWithFormat:@"cd '%@' && mkdir drive slash bad && touch drive/c: 'slash/x\\' "
                                                 @"\"bad/$(printf 'no\\377name')\"", gRoot] UTF8String]) == 0);
    Bounded *delegate = [[[Bounded alloc] init] autorelease];
    NSArray *folders = [NSArray arrayWithObjects:[gRoot stringByAppendingPathComponent:@"drive"],
                                                 [gRoot stringByAppendingPathComponent:@"slash/"],
                                                 [gRoot stringByAppendingPathComponent:@"bad"], nil];
    KT_EXPECT([[[[TreeRound alloc] init] autorelease] start:folders withDelegate:delegate]);
    KT_EXPECT_EQUAL_OBJECTS(Relative(delegate->mSeen), ([NSArray arrayWithObjects:@"drive/c:", @"slash/x\\", nil]));
    RemoveTree();
}

KT_CASE(NoWalkWithoutFoldersOrAnAnsweringDelegate)
{
    KT_ASSERT(MakeTree() != nil);
    TreeRound *round = [[[TreeRound alloc] init] autorelease];
    NSArray *folders = [NSArray arrayWithObject:gRoot];
    Verdicts *delegate = [[[Verdicts alloc] init] autorelease];
    KT_EXPECT(![round start:nil withDelegate:delegate] && ![round start:[NSArray array] withDelegate:delegate]);
    KT_EXPECT(![round start:(NSArray *)@"/tmp" withDelegate:delegate] && ![round start:folders withDelegate:nil]);
    KT_EXPECT(![round start:folders withDelegate:[[[NSObject alloc] init] autorelease]]);
    KT_EXPECT([delegate->mSeen count] == 0);
    /* Folders that cannot be listed contribute nothing. */
    NSArray *some = [NSArray arrayWithObjects:[gRoot stringByAppendingPathComponent:@"missing"],
                                              [gRoot stringByAppendingPathComponent:@"c.txt"],
                                              [gRoot stringByAppendingPathComponent:@"b"], nil];
    KT_EXPECT([round start:some withDelegate:delegate] && [delegate->mSeen count] == 3); /* b's three files */
    /* An exception from the delegate ends the walk with NO. */
    BOOL answer = YES;
    Verdicts *raising = Walk([NSDictionary dictionaryWithObject:[NSNumber numberWithInt:-1] forKey:@"b1.txt"],
                             TreeRoundDescend, &answer);
    KT_EXPECT(!answer && [[raising->mSeen lastObject] hasSuffix:@"b1.txt"]);
    RemoveTree();
}

KT_MAIN()
