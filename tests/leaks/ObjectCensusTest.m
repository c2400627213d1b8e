/* Objects the toolkit's Objective-C paths leave behind.  LeakSanitizer does
 * not see objects that Foundation allocates, so each path is repeated with
 * Foundation's own allocation counting on, and no class may gain an
 * instance per round. */
#include <KORU/KORU.h>
#import <AppKit/AppKit.h>

#include <ApplicationServices/Processes.h>
#include <CoreServices/AppleEvents.h>
#include <HIToolbox/CarbonEvents.h>
#include <HIToolbox/MacWindows.h>

#import "KGUI.h"
#import "KTest.h"

#include <stdlib.h>
#include <unistd.h>

/* Foundation's allocation counting; its header declares these only in
 * builds without NDEBUG, the library always has them. */
BOOL GSDebugAllocationActive(BOOL active);
int GSDebugAllocationCount(Class aClass);
Class *GSDebugAllocationClassList(void);

enum { kWarmUp = 5, kRounds = 60 };
enum { kCensusClass = 0x4B4F5255, kEcho = 0x6563686F };

@interface CensusDelegate : NSObject
@end

@implementation CensusDelegate
- (int)treeRoundEvaluatePath:(NSString *)path
{
    (void)path;
    return TreeRoundDescend;
}

- (NSComparisonResult)tableController:(id)controller compareRows:(id)row1 with:(id)row2
{
    (void)controller;
    return [[row1 objectForKey:@"name"] compare:[row2 objectForKey:@"name"]];
}

- (NSMutableDictionary *)tableController:(id)controller makeInitialRowForIndex:(int)index
{
    (void)controller;
    return [NSMutableDictionary dictionaryWithObject:[NSString stringWithFormat:@"new%d", index] forKey:@"name"];
}

- (void)tableController:(TableController *)controller copy:(id)sender
{
    (void)sender;
    NSPasteboard *pasteboard = [NSPasteboard generalPasteboard];
    [pasteboard declareTypes:[NSArray arrayWithObject:@"KORUCensusRows"] owner:nil];
    [pasteboard setPropertyList:[controller selectedDatasourceArray] forType:@"KORUCensusRows"];
}

- (NSArray *)tableController:(id)controller paste:(id)sender
{
    (void)controller, (void)sender;
    NSMutableArray *rows = [NSMutableArray array];
    for (id row in [[NSPasteboard generalPasteboard] propertyListForType:@"KORUCensusRows"])
        [rows addObject:[[row mutableCopy] autorelease]];
    return rows;
}

- (void)tableController:(id)controller delete:(id)sender
{
    (void)controller;
    (void)sender;
}
@end

typedef struct {
    NSString *folder;
    CensusDelegate *delegate;
    NSTableView *table;
} Census;

typedef void (*Round)(Census *census);

typedef struct {
    Class type;
    int count;
} Tally;

/* The instance count of every class, taken without making an object. */
static Tally *TakeTally(size_t *length)
{
    Class *classes = GSDebugAllocationClassList();
    size_t n = 0;
    while (classes[n] != Nil)
        n++;
    Tally *tally = calloc(n + 1, sizeof *tally);
    for (size_t i = 0; i < n && tally != NULL; i++)
        tally[i] = (Tally){classes[i], GSDebugAllocationCount(classes[i])};
    *length = n;
    return tally;
}

/* Runs round kWarmUp times, then kRounds times with counting on; a class
 * that gained kRounds / 2 instances or more holds one per round. */
static void ExpectNoGrowth(const char *name, Round round, Census *census)
{
    for (int i = 0; i < kWarmUp + kRounds; i++) {
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        round(census);
        [pool release];
        if (i + 1 != kWarmUp)
            continue;
        size_t length = 0;
        Tally *before = TakeTally(&length);
        for (int k = kWarmUp; k < kWarmUp + kRounds; k++) {
            pool = [[NSAutoreleasePool alloc] init];
            round(census);
            [pool release];
        }
        size_t afterLength = 0;
        Tally *after = TakeTally(&afterLength);
        for (size_t a = 0; a < afterLength && after != NULL && before != NULL; a++) {
            // AppKit keeps a tracking rectangle for every size a table in a
            // scroll view has had, until its window goes.
            if (after[a].type == NSClassFromString(@"GSTrackingRect"))
                continue;
            int gained = after[a].count;
            for (size_t b = 0; b < length; b++)
                if (before[b].type == after[a].type)
                    gained -= before[b].count;
            KT_EXPECT_MSG(gained < kRounds / 2, @"%s: %d more %@ after %d rounds", name, gained,
                          NSStringFromClass(after[a].type), (int)kRounds);
        }
        free(before);
        free(after);
        return;
    }
}

static void PropertyLists(Census *census)
{
    (void)census;
    NSDictionary *tree =
        [NSDictionary dictionaryWithObjectsAndKeys:@"v", @"k", [NSArray arrayWithObject:@"x"], @"a", nil];
    NSData *xml = [NSData dataWithPropertyList:tree];
    KT_EXPECT_EQUAL_OBJECTS([NSDictionary dictionaryWithXMLData:xml], tree);
    (void)[[xml encryptedData:"census12"] decryptedData:"census12"];
    [[tree propertyListMutableCopy] release];
    CFDataRef binary = CFPropertyListCreateData(NULL, tree, kCFPropertyListBinaryFormat_v1_0, 0, NULL);
    CFErrorRef error = NULL;
    CFPropertyListRef back = CFPropertyListCreateWithData(NULL, binary, 0, NULL, &error);
    KT_EXPECT(back != NULL);
    if (back != NULL)
        CFRelease(back);
    CFRelease(binary);
    CFDataRef broken = CFDataCreate(NULL, (const UInt8 *)"{ a = ", 6);
    KT_EXPECT(CFPropertyListCreateWithData(NULL, broken, 0, NULL, &error) == NULL);
    if (error != NULL)
        CFRelease(error);
    CFRelease(broken);
}

static void Commands(Census *census)
{
    (void)census;
    CommandTool *tool = [[CommandTool alloc] initWithPath:@"/bin/echo"];
    [tool setArguments:[NSArray arrayWithObject:@"census"]];
    [tool setReadStandardOutput:YES];
    KT_EXPECT([tool run:NO]);
    [tool release];
    CommandTool *missing = [[CommandTool alloc] initWithPath:@"/nonexistent/tool"];
    KT_EXPECT(![missing run:NO]);
    [missing release];
}

static void PathStrings(Census *census)
{
    NSString *file = [census->folder stringByAppendingPathComponent:@"file.txt"];
    NSString *copy = [census->folder stringByAppendingPathComponent:@"copy.txt"];
    KT_EXPECT([file createEmptyFile]);
    FSRef ref;
    KT_EXPECT([file getFSRef:&ref] && [[NSString stringWithFSRef:&ref] isEqualToString:file]);
    KT_EXPECT([[NSString stringWithAliasData:[file aliasData]] isEqualToString:file]);
    (void)[NSString stringWithStoreableDictionary:[file storeableDictionary] resolveAliasFirst:YES];
    KT_EXPECT([file createCopyOfPath:copy] && [copy remove] && [file remove]);
}

static void Texts(Census *census)
{
    NSString *file = [census->folder stringByAppendingPathComponent:@"text.txt"];
    NSString *text = @"line one\nline two\n\u00e9t\u00e9";
    KT_EXPECT([text writeAsTextFile:file encoding:NSUTF8StringEncoding allowLossyConversion:NO atomically:YES]);
    KT_EXPECT_EQUAL_OBJECTS([NSString stringWithTextFile:file encoding:NSUTF8StringEncoding], text);
    KT_EXPECT_EQUAL_OBJECTS([NSString stringWithEncryptedData:[text encryptedData:"census12"] decryptKey:"census12"], text);
    KT_EXPECT([[text lines] count] == 3 && [[@"0aff10" dataFromHexadecimalString] length] == 3);
    free([text allocUTF8String]);
    (void)[text localize];
}

static void TreeWalk(Census *census)
{
    TreeRound *walk = [[TreeRound alloc] init];
    KT_EXPECT([walk start:[NSArray arrayWithObject:census->folder] withDelegate:census->delegate]);
    [walk release];
}

static void TableCommands(Census *census)
{
    TableController *controller = [[TableController alloc] initWithTableView:census->table];
    [controller setDelegate:census->delegate];
    for (int i = 0; i < 40; i++)
        [[controller datasourceArray]
            addObject:[NSMutableDictionary dictionaryWithObject:[NSString stringWithFormat:@"%02d", 40 - i]
                                                         forKey:@"name"]];
    [census->table reloadData];
    [controller sortAll:nil];
    [census->table selectRowIndexes:[NSIndexSet indexSetWithIndexesInRange:NSMakeRange(2, 5)]
               byExtendingSelection:NO];
    [controller copy:nil];
    [controller cut:nil];
    [controller paste:nil];
    [controller addNewRow:nil];
    KT_EXPECT_MSG([[controller datasourceArray] count] == 41, @"%lu rows after cut, paste and add",
                  (unsigned long)[[controller datasourceArray] count]);
    [controller releaseTableView];
    [controller release];
}

static void SmallViews(Census *census)
{
    NSView *content = [[census->table window] contentView];
    FileIconView *icons = [[FileIconView alloc] initWithFrame:NSMakeRect(0, 0, 100, 50)];
    [content addSubview:icons];
    [icons setFiles:[NSArray arrayWithObjects:@"/etc/hostname", @"/etc/passwd", nil]];
    [icons removeFromSuperview];
    [icons release];
    MenuButton *button = [[MenuButton alloc] initWithFrame:NSMakeRect(0, 0, 80, 20)];
    NSMenu *menu = [[NSMenu alloc] initWithTitle:@"Actions"];
    [menu addItemWithTitle:@"One" action:NULL keyEquivalent:@""];
    [button setPulldownMenu:menu];
    [menu release];
    [content addSubview:button];
    KT_EXPECT([button pulldownMenuCore:NO] != nil);
    [button removeFromSuperview];
    [button release];
}

static OSStatus Handled(EventHandlerCallRef call, EventRef event, void *userData)
{
    (void)call, (void)event;
    ++*(int *)userData;
    return noErr;
}

/* Windows made in code: AppKit's interface-file loader keeps the parsed
 * document of every file it instantiates, so windows from files would
 * count its objects, not ours. */
static void CarbonWindows(Census *census)
{
    (void)census;
    WindowRef window = NULL;
    Rect bounds = {100, 100, 200, 300};
    KT_ASSERT(CreateNewWindow(kDocumentWindowClass, kWindowStandardDocumentAttributes, &bounds, &window) == noErr);
    int calls = 0;
    EventTypeSpec type = {kEventClassCommand, kEventCommandProcess};
    KT_EXPECT(InstallEventHandler(GetWindowEventTarget(window), NewEventHandlerUPP(Handled), 1, &type, &calls,
                                  NULL) == noErr);
    EventRef event = NULL;
    KT_EXPECT(CreateEvent(NULL, kEventClassCommand, kEventCommandProcess, 0, 0, &event) == noErr);
    KT_EXPECT(SendEventToEventTarget(event, GetWindowEventTarget(window)) == noErr && calls == 1);
    ReleaseEvent(event);
    DisposeWindow(window);
}

static OSErr Echo(const AppleEvent *event, AppleEvent *reply, SRefCon refcon)
{
    (void)refcon;
    char text[64] = {0};
    Size size = 0;
    OSErr err = AEGetParamPtr(event, keyDirectObject, typeUTF8Text, NULL, text, sizeof text - 1, &size);
    return err != noErr ? err : AEPutParamPtr(reply, keyDirectObject, typeUTF8Text, text, size);
}

static void AppleEvents(Census *census)
{
    (void)census;
    ProcessSerialNumber self = {0, kCurrentProcess};
    AEAddressDesc target;
    AppleEvent event, reply;
    AECreateDesc(typeProcessSerialNumber, &self, sizeof self, &target);
    KT_EXPECT(AECreateAppleEvent(kCensusClass, kEcho, &target, kAutoGenerateReturnID, kAnyTransactionID, &event) == noErr);
    AEPutParamPtr(&event, keyDirectObject, typeUTF8Text, "census", 6);
    KT_EXPECT(AESend(&event, &reply, kAEWaitReply, kAENormalPriority, kAEDefaultTimeout, NULL, NULL) == noErr);
    AEDisposeDesc(&reply);
    AEDisposeDesc(&event);
    AEDisposeDesc(&target);
}

KT_CASE(FoundationPathsKeepNothing)
{
    Census census = {nil, nil, nil};
    census.folder = [NSTemporaryDirectory()
        stringByAppendingPathComponent:[NSString stringWithFormat:@"census-%d", (int)getpid()]];
    KT_ASSERT([census.folder createDirectories]);
    census.delegate = [[CensusDelegate alloc] init];
    GSDebugAllocationActive(YES);
    ExpectNoGrowth("property lists", PropertyLists, &census);
    ExpectNoGrowth("command tool", Commands, &census);
    ExpectNoGrowth("path strings", PathStrings, &census);
    ExpectNoGrowth("text files", Texts, &census);
    ExpectNoGrowth("tree walk", TreeWalk, &census);
    KT_EXPECT(AEInstallEventHandler(kCensusClass, kEcho, NewAEEventHandlerUPP(Echo), NULL, false) == noErr);
    ExpectNoGrowth("apple events", AppleEvents, &census);
    GSDebugAllocationActive(NO);
    [census.delegate release];
    [[NSFileManager defaultManager] removeItemAtPath:census.folder error:NULL];
}

KT_CASE(TableControllerKeepsNothing)
{
    NSWindow *window = KGUIMakeWindow(NSMakeRect(100, 100, 300, 300), @"Census");
    Census census = {nil, nil, nil};
    census.table = [[NSTableView alloc] initWithFrame:NSMakeRect(0, 0, 300, 300)];
    NSTableColumn *column = [[NSTableColumn alloc] initWithIdentifier:@"name"];
    [census.table addTableColumn:column];
    [column release];
    [census.table setAllowsMultipleSelection:YES];
    NSScrollView *scroller = [[NSScrollView alloc] initWithFrame:NSMakeRect(0, 0, 300, 300)];
    [scroller setDocumentView:census.table];
    [[window contentView] addSubview:scroller];
    [scroller release];
    census.delegate = [[CensusDelegate alloc] init];
    GSDebugAllocationActive(YES);
    ExpectNoGrowth("table controller", TableCommands, &census);
    ExpectNoGrowth("small views", SmallViews, &census);
    ExpectNoGrowth("carbon windows", CarbonWindows, &census);
    GSDebugAllocationActive(NO);
    [census.delegate release];
    [census.table release];
    KGUICloseWindow(window);
}

KT_MAIN()
