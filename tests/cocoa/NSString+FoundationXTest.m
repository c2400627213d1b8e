/* NSString(FoundationX): paths on real files, folders, forks and Finder
 * information under a folder of the test's own, a real child process, real
 * launching and Lua scripts. */
#import "KTest.h"

#include <KORU/KORU.h>

#include <signal.h>
#include <spawn.h>
#include <stdint.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

static NSString *MakeFolder(void)
{
    char pattern[] = "/tmp/koru-stringpaths-XXXXXX";
    if (mkdtemp(pattern) == NULL)
        return nil;
    char resolved[PATH_MAX];
    return realpath(pattern, resolved) != NULL ? [NSString stringWithUTF8String:resolved] : nil;
}

static void RemoveFolder(NSString *folder)
{
    system([[NSString stringWithFormat:@"rm -rf '%@'", folder] UTF8String]);
}

static NSString *Write(NSString *folder, NSString *name, NSString *text)
{
    NSString *path = [folder stringByAppendingPathComponent:name];
    [[NSFileManager defaultManager] createDirectoryAtPath:[path stringByDeletingLastPathComponent]
                              withIntermediateDirectories:YES attributes:nil error:NULL];
    [text writeToFile:path atomically:NO encoding:NSUTF8StringEncoding error:NULL];
    return path;
}

static BOOL WriteResourceFork(NSString *path, NSString *text)
{
    FSRef ref;
    HFSUniStr255 name;
    return [path getFSRef:&ref] && FSGetResourceForkName(&name) == noErr &&
           FSWriteFileFork(&ref, &name, (CFDataRef)[text dataUsingEncoding:NSUTF8StringEncoding]);
}

static BOOL SetTypeAndCreator(NSString *path, OSType type, OSType creator)
{
    FSCatalogInfo info;
    if (![path getFSCatalogInfo:&info ofBitmap:kFSCatInfoFinderInfo])
        return NO;
    ((FileInfo *)info.finderInfo)->fileType = type;
    ((FileInfo *)info.finderInfo)->fileCreator = creator;
    return [path setFSCatalogInfo:&info ofBitmap:kFSCatInfoFinderInfo];
}

/* Sets the variable (unsets it for nil), first noting its old value in saved. */
static void SetEnvironment(NSMutableDictionary *saved, const char *name, NSString *value)
{
    NSString *key = [NSString stringWithUTF8String:name];
    if ([saved objectForKey:key] == nil)
        [saved setObject:getenv(name) != NULL ? (id)[NSString stringWithUTF8String:getenv(name)] : [NSNull null] forKey:key];
    value != nil ? setenv(name, [value UTF8String], 1) : unsetenv(name);
}

static void RestoreEnvironment(NSDictionary *saved)
{
    for (NSString *key in saved) {
        id old = [saved objectForKey:key];
        old == [NSNull null] ? unsetenv([key UTF8String]) : setenv([key UTF8String], [old UTF8String], 1);
    }
}

/* A case given a fresh private folder, removed however the case ends. */
#define FOLDER_CASE(name)                              \
    static void name##Body(NSString *folder);          \
    KT_CASE(name)                                      \
    {                                                  \
        NSString *folder = MakeFolder();               \
        KT_EXPECT(folder != nil);                      \
        if (folder != nil) {                           \
            name##Body(folder);                        \
            RemoveFolder(folder);                      \
        }                                              \
    }                                                  \
    static void name##Body(NSString *folder)

FOLDER_CASE(ExistenceKindsAndTheFlagCache)
{
    NSString *file = Write(folder, @"a.txt", @"words");
    NSString *app = [folder stringByAppendingPathComponent:@"Tool.app"];
    [app createDirectory];
    NSString *script = Write(folder, @"run.sh", @"#!/bin/sh\n");
    chmod([script fileSystemRepresentation], 0755);
    NSString *link = [folder stringByAppendingPathComponent:@"link"], *hidden = Write(folder, @".hidden-file", @"");
    symlink([file fileSystemRepresentation], [link fileSystemRepresentation]);
    NSString *missing = [folder stringByAppendingPathComponent:@"missing"];
    KT_EXPECT([file exists] && ![file existsDirectory] && [folder existsDirectory] && ![missing exists]);
    KT_EXPECT([@"~" existsDirectory]); // the tilde is expanded
    KT_EXPECT([file isReadableFile] && [file isWritableFile] && ![file isExecutableFile] && [file isDeletableFile]);
    KT_EXPECT([script isExecutableFile] && [script isApplication] && ![file isApplication]);
    KT_EXPECT([file isPlainFile] && ![file isContainer] && ![file isAlias] && ![file isInvisible]);
    KT_EXPECT([folder isContainer] && [folder isDirectory] && [folder isFolder] && ![folder isPackage]);
    KT_EXPECT([app isPackage] && [app isApplication] && [app isDirectory] && ![app isFolder]);
    KT_EXPECT([link isAlias] && [hidden isInvisible] && [@"/" isVolume] && ![@"/" isDirectory] && ![@"/" isFolder]);
    KT_EXPECT([missing isPlainFile] && ![missing isAlias] && ![missing isContainer]);
    KT_EXPECT([file isLSItemInfoRecordFlagOn:kLSItemInfoIsPlainFile | kLSItemInfoIsApplication defaultResult:YES] == NO);
    // The cache knows a receiver by the object: changed in place, a string
    // still answers for what it named when first asked.
    NSMutableString *changing = [NSMutableString stringWithString:folder];
    KT_EXPECT([changing isContainer]);
    [changing setString:file];
    KT_EXPECT([changing isContainer] && ![[NSString stringWithString:changing] isContainer]);
    LSItemInfoRecord record;
    KT_EXPECT([file getLSItemInfoRecord:&record whichInfo:kLSRequestExtension]);
    KT_EXPECT_EQUAL_OBJECTS((NSString *)record.extension, @"txt");
    CFRelease(record.extension);
    KT_EXPECT(![missing getLSItemInfoRecord:&record whichInfo:kLSRequestAllInfo] && record.extension == NULL);
}

FOLDER_CASE(MachOMagicTypeCreatorAndSizes)
{
    NSString *fat = [folder stringByAppendingPathComponent:@"fat"];
    [[NSData dataWithBytes:"\xCA\xFE\xBA\xBE\0\0\0\2" length:8] writeToFile:fat atomically:NO];
    NSString *shortFile = [folder stringByAppendingPathComponent:@"short"];
    [[NSData dataWithBytes:"\xCF\xFA\xED" length:3] writeToFile:shortFile atomically:NO];
    KT_EXPECT([fat isMachOBinary] && ![shortFile isMachOBinary] && ![@"/bin/sh" isMachOBinary]);
    NSString *note = Write(folder, @"docs/note.txt", @"0123456789");
    KT_EXPECT(SetTypeAndCreator(note, 0x54455854, 0x74747874)); // 'TEXT', 'ttxt'
    KT_EXPECT([[note HFSFileTypeString] isEqual:@"TEXT"] && [note HFSCreator] == 0x74747874);
    KT_EXPECT_EQUAL_OBJECTS([folder HFSFileTypeString], @"fold");
    KT_EXPECT([[folder stringByAppendingPathComponent:@"missing"] HFSFileType] == 0);
    // Sizes are data plus resource fork; a folder's hold everything inside,
    // the companion that keeps a resource fork counted once.
    KT_EXPECT(WriteResourceFork(note, @"fork"));
    Write(folder, @"docs/deeper/more.bin", @"12345");
    KT_EXPECT([note logicalSize] == 14 && [[folder stringByAppendingPathComponent:@"docs"] logicalSize] == 19);
    KT_EXPECT([[folder logicalSizeNumber] unsignedLongLongValue] == 19 + 8 + 3);
    KT_EXPECT([[folder stringByAppendingPathComponent:@"missing"] logicalSize] == 0);
    // A resource file opened for writing takes a resource that reads back.
    NSString *resourceFile = Write(folder, @"resources", @"");
    ResFileRefNum resources = [resourceFile openResourceFork:YES];
    KT_EXPECT(resources != -1 && CurResFile() == resources);
    Handle bytes = NULL;
    KT_EXPECT(PtrToHand("\0\0\0\0\0\0\1" "1\1" "x", &bytes, 10) == noErr);
    AddResource(bytes, 0x76657273, 1, (ConstStr255Param) ""); // 'vers'
    RFClose(&resources);
    VersRec version;
    resources = [resourceFile openResourceFork:NO];
    KT_EXPECT(resources != -1 && RFGetVersion(1, &version) && version.shortVersion[1] == '1');
    RFClose(&resources);
    KT_EXPECT([[folder stringByAppendingPathComponent:@"missing"] openResourceFork:NO] == -1);
    FSCatalogInfo info;
    KT_EXPECT([note getFSCatalogInfo:&info ofBitmap:kFSCatInfoDataSizes] && info.dataLogicalSize == 10);
    KT_EXPECT(![note getFSCatalogInfo:NULL ofBitmap:kFSCatInfoDataSizes]);
}

KT_CASE(TypeCodesAsStrings)
{
    KT_EXPECT([[@"APPL" OSTypeNumber] unsignedLongValue] == 0x4150504C);
    KT_EXPECT([@"TEXTS" OSType] == 0 && [@"" OSType] == 0 && [@"ab\u4E2Dd" OSType] == 0); // the last not Mac OS Roman
    KT_EXPECT([@"\u2022\u00C4ab" OSType] == 0xA5806162);
    KT_EXPECT_EQUAL_OBJECTS([NSString stringWithOSType:0xA5806162], @"\u2022\u00C4ab");
    KT_EXPECT([@"TEXT" isEqualToOSType:0x54455854] && ![@"TEXT" isEqualToOSType:0x54455855] && ![@"" isEqualToOSType:0]);
    KT_EXPECT([NSString stringWithOSType:0] == nil);
    NSMutableString *code = [[[NSMutableString alloc] initWithOSType:0x666F6C64] autorelease]; // 'fold', mutable
    [code appendPathComponent:@"inside"];
    [code appendPathComponent:nil];
    [code appendPathComponent:@""];
    KT_EXPECT_EQUAL_OBJECTS(code, @"fold/inside");
}

FOLDER_CASE(CreatingCopyingAndRemovingKeepForksAndData)
{
    NSFileManager *manager = [NSFileManager defaultManager];
    NSString *file = Write(folder, @"file.txt", @"content");
    KT_EXPECT([@"" createDirectories] && ![@"" createDirectory]);
    NSString *deep = [folder stringByAppendingPathComponent:@"x/y/z"];
    KT_EXPECT(![deep createDirectory] && [deep createDirectories] && [deep existsDirectory]);
    KT_EXPECT([deep createDirectory] && ![file createDirectory] && ![[file stringByAppendingPathComponent:@"q"] createDirectories]);
    KT_EXPECT(WriteResourceFork(file, @"resources") && SetTypeAndCreator(file, 0x54455854, 0x74747874));
    NSString *copy = Write(folder, @"out/sub/copy.txt", @"old contents, with an old fork");
    KT_EXPECT((WriteResourceFork(copy, @"stale")) && [file createCopyOfPath:copy]);
    KT_EXPECT_EQUAL_OBJECTS([NSString stringWithContentsOfFile:copy encoding:NSUTF8StringEncoding error:NULL], @"content");
    KT_EXPECT([copy logicalSize] == 7 + 9 && [copy HFSFileType] == 0x54455854);
    // A companion left behind by a plain delete lends the copy nothing.
    NSString *plain = Write(folder, @"plain.txt", @"plain"), *orphaned = Write(folder, @"orphaned.txt", @"");
    KT_EXPECT(SetTypeAndCreator(orphaned, 0x4150504C, 0x4B4F5255) && unlink([orphaned fileSystemRepresentation]) == 0);
    KT_EXPECT([plain createCopyOfPath:orphaned] && [orphaned HFSFileType] == 0);
    KT_EXPECT(SetTypeAndCreator(orphaned, 0x4150504C, 0x4B4F5255) && unlink([orphaned fileSystemRepresentation]) == 0);
    KT_EXPECT([file createCopyOfPath:orphaned] && [orphaned HFSFileType] == 0x54455854);
    NSString *tree = [folder stringByAppendingPathComponent:@"new/tree"];
    KT_EXPECT([deep createCopyOfPath:tree] && [tree existsDirectory]);
    // Nothing is removed where the copy cannot go or has nothing to copy.
    KT_EXPECT(![file createCopyOfPath:file] && ![folder createCopyOfPath:[folder stringByAppendingPathComponent:@"x/in"]]);
    KT_EXPECT(![[folder stringByAppendingPathComponent:@"none"] createCopyOfPath:copy] && ![file createCopyOfPath:nil]);
    NSString *kept = Write(deep, @"kept.txt", @"kept");
    KT_EXPECT(![kept createCopyOfPath:[folder stringByAppendingPathComponent:@"x/y"]] && ![kept createCopyOfPath:@"/"]);
    KT_EXPECT([file logicalSize] == 16 && [copy exists] && [deep existsDirectory] && [kept exists]);
    // A NUL character would cut the path short at the file's own name.
    NSString *cut = [file stringByAppendingString:[NSString stringWithCharacters:(unichar[]){0, 'x'} length:2]];
    KT_EXPECT(![cut createEmptyFile] && ![cut remove] && ![copy createCopyOfPath:cut] && [file logicalSize] == 16);
    // A lone surrogate the file system cannot spell is no path, and no exception.
    NSMutableString *lone = [NSMutableString stringWithString:folder];
    [lone appendFormat:@"/%C", (unichar)0xD800];
    FSRef ref;
    KT_EXPECT(![lone exists] && ![lone isFolder] && [[lone subfilepaths] count] == 0 && [lone HFSPath] == nil);
    KT_EXPECT(![lone createDirectory] && ![lone createEmptyFile] && ![file createCopyOfPath:lone] && ![lone remove]);
    KT_EXPECT(![lone getFSRef:&ref] && [lone original] == nil && [lone logicalSize] == 0 && [lone displayName] == nil);
    KT_EXPECT([copy createEmptyFile] && [copy isPlainFile]);
    KT_EXPECT([[manager fileAttributesAtPath:copy traverseLink:NO] fileSize] == 0 && [copy remove] && ![copy exists]);
    KT_EXPECT(![manager fileExistsAtPath:[folder stringByAppendingPathComponent:@"out/sub/._copy.txt"]]);
    KT_EXPECT([[folder stringByAppendingPathComponent:@"x"] remove] && ![deep exists] && ![@"" remove]);
}

FOLDER_CASE(SubfilepathsListFilesAndPackagesOnly)
{
    Write(folder, @"a.app/Contents/Info.plist", @"{}");
    Write(folder, @"a.apple.txt", @"");
    Write(folder, @"b.txt", @"");
    Write(folder, @".secret", @"");
    Write(folder, @"sub/c.txt", @"");
    Write(folder, @"sub/d.bundle/inner.txt", @"");
    KT_EXPECT(SetTypeAndCreator([folder stringByAppendingPathComponent:@"b.txt"], 0x54455854, 0)); // a companion
    NSArray *expected = [NSArray arrayWithObjects:@"a.app", @"a.apple.txt", @"b.txt", @"sub/c.txt", @"sub/d.bundle", nil];
    KT_EXPECT_EQUAL_OBJECTS([[folder subfilepaths] sortedArrayUsingSelector:@selector(compare:)], expected);
    KT_EXPECT([[[folder stringByAppendingPathComponent:@"missing"] subfilepaths] count] == 0);
}

FOLDER_CASE(ReferencesPathsAndBundles)
{
    NSString *file = Write(folder, @"r\u00E9sum\u00E9.txt", @"bytes");
    FSRef ref;
    KT_EXPECT([file getFSRef:&ref] && [[NSMutableString stringWithFSRef:&ref] isEqual:file]);
    KT_EXPECT([NSString stringWithFSRef:NULL] == nil && ![file getFSRef:NULL] && ![@"" getFSRef:&ref]);
    KT_EXPECT(![[folder stringByAppendingPathComponent:@"missing"] getFSRef:&ref]);
    FSSpec fsSpec;
    KT_EXPECT([file getFSSpec:&fsSpec] && [[NSString stringWithFSSpec:&fsSpec] isEqual:file]);
    KT_EXPECT([NSString stringWithFSSpec:NULL] == nil && ![file getFSSpec:NULL]);
    KT_EXPECT([@"/" pathComponentsCount] == 0 && [@"a/b/" pathComponentsCount] == 2);
    KT_EXPECT_EQUAL_OBJECTS([file displayName], @"r\u00E9sum\u00E9.txt");
    NSString *hfs = [[folder stringByReplacingOccurrencesOfString:@"/" withString:@":"] stringByAppendingString:@":r\u00E9sum\u00E9.txt"];
    KT_EXPECT_MSG([[file HFSPath] hasSuffix:hfs] && [@"" HFSPath] == nil, @"%@", [file HFSPath]);
    NSString *bundle = [folder stringByAppendingPathComponent:@"Kit.bundle"];
    Write(bundle, @"Contents/Info.plist", @"{ CFBundleIdentifier = \"org.koru.kit\"; }");
    KT_EXPECT_EQUAL_OBJECTS([bundle bundleIdentifier], @"org.koru.kit");
    CFBundleRef cfBundle = [bundle createCFBundle];
    KT_EXPECT(cfBundle != NULL && [(NSString *)CFBundleGetIdentifier(cfBundle) isEqualToString:@"org.koru.kit"]);
    if (cfBundle != NULL)
        CFRelease(cfBundle);
    KT_EXPECT([[folder stringByAppendingPathComponent:@"missing"] createCFBundle] == NULL && [file bundleIdentifier] == nil);
    NSString *url = [[NSURL fileURLWithPath:file] absoluteString];
    KT_EXPECT_EQUAL_OBJECTS([url URLContents], [@"bytes" dataUsingEncoding:NSUTF8StringEncoding]);
    KT_EXPECT([@"not a URL at all" URLContents] == nil && [@"file:///koru/nothing/here" URLContents] == nil);
    KT_EXPECT([@"/a/B" compareAsPath:@"/a/b/"] == NSOrderedSame &&
              [@"/a/file10" compareAsPath:@"/a/file9"] == NSOrderedDescending);
    KT_EXPECT([@"/a" compareAsPath:nil] == (NSComparisonResult)2147483647);
}

FOLDER_CASE(AliasesAndStorableDictionariesFollowMovedItems)
{
    NSString *file = Write(folder, @"first.txt", @"one");
    NSData *alias = [file aliasData];
    NSDictionary *stored = [file storeableDictionary];
    KT_ASSERT(alias != nil && stored != nil);
    KT_EXPECT([[stored objectForKey:@"Path"] isEqual:file] && [[stored objectForKey:@"Alias"] isEqual:alias]);
    AliasHandle handle = [file aliasHandle];
    KT_EXPECT(handle != NULL && GetHandleSize((Handle)handle) == (Size)[alias length]);
    if (handle != NULL)
        DisposeHandle((Handle)handle);
    NSString *moved = [folder stringByAppendingPathComponent:@"kept/first.txt"];
    [[folder stringByAppendingPathComponent:@"kept"] createDirectory];
    rename([file fileSystemRepresentation], [moved fileSystemRepresentation]);
    KT_EXPECT_EQUAL_OBJECTS([NSString stringWithAliasData:alias], moved);
    KT_EXPECT_EQUAL_OBJECTS([NSString stringWithStoreableDictionary:stored resolveAliasFirst:NO], moved);
    // A stored path that names something else tells the two orders apart.
    NSString *other = Write(folder, @"other.txt", @"two");
    NSDictionary *split = [NSDictionary dictionaryWithObjectsAndKeys:other, @"Path", alias, @"Alias", nil];
    KT_EXPECT_EQUAL_OBJECTS([NSString stringWithStoreableDictionary:split resolveAliasFirst:NO], other);
    KT_EXPECT_EQUAL_OBJECTS([NSString stringWithStoreableDictionary:split resolveAliasFirst:YES], moved);
    NSDictionary *home = [NSDictionary dictionaryWithObjectsAndKeys:@"~", @"Path", alias, @"Alias", nil];
    KT_EXPECT_EQUAL_OBJECTS([NSString stringWithStoreableDictionary:home resolveAliasFirst:NO], NSHomeDirectory());
    unlink([moved fileSystemRepresentation]);
    KT_EXPECT([NSString stringWithAliasData:alias] == nil && [NSString stringWithAliasData:[NSData data]] == nil);
    KT_EXPECT_EQUAL_OBJECTS([NSString stringWithStoreableDictionary:split resolveAliasFirst:YES], other);
    KT_EXPECT([NSString stringWithStoreableDictionary:stored resolveAliasFirst:NO] == nil &&
              [NSString stringWithStoreableDictionary:nil resolveAliasFirst:YES] == nil);
    KT_EXPECT([[folder stringByAppendingPathComponent:@"missing"] storeableDictionary] == nil);
    // Alias files are symbolic links here: original follows the whole chain.
    NSString *first = [folder stringByAppendingPathComponent:@"alias1"];
    NSString *second = [folder stringByAppendingPathComponent:@"alias2"];
    symlink([other fileSystemRepresentation], [first fileSystemRepresentation]);
    symlink([first fileSystemRepresentation], [second fileSystemRepresentation]);
    KT_EXPECT_EQUAL_OBJECTS([second original], other);
    KT_EXPECT([other original] == nil && [@"" original] == nil);
    unlink([other fileSystemRepresentation]);
    KT_EXPECT([second original] == nil);
}

FOLDER_CASE(ProcessesOfABundledChild)
{
    NSMutableDictionary *environment = [NSMutableDictionary dictionary];
    SetEnvironment(environment, "DISPLAY", nil); // the front process is then this one
    NSString *app = [folder stringByAppendingPathComponent:@"Napper.app"];
    NSString *executable = [app stringByAppendingPathComponent:@"Contents/MacOS/Napper"];
    [[executable stringByDeletingLastPathComponent] createDirectories];
    [[NSFileManager defaultManager] copyPath:@"/bin/sleep" toPath:executable handler:nil];
    char *argv[] = {(char *)[executable fileSystemRepresentation], "60", NULL};
    pid_t pid = 0;
    KT_EXPECT(posix_spawn(&pid, argv[0], NULL, NULL, argv, environ) == 0);
    ProcessSerialNumber psn = {1, 1};
    KT_EXPECT([app isRunningProcess] && [app getProcessSerialNumber:&psn] && ![app getProcessSerialNumber:NULL]);
    KT_EXPECT(pid != 0 && psn.highLongOfPSN == 0 && psn.lowLongOfPSN == (UInt32)pid);
    KT_EXPECT(![app isFrontProcess] && ![app activateProcess]); // it has no window
    if (pid != 0) {
        kill(pid, SIGKILL);
        waitpid(pid, NULL, 0);
    }
    KT_EXPECT(![app isRunningProcess] && ![app getProcessSerialNumber:&psn] && psn.lowLongOfPSN == 0);
    KT_EXPECT(![[folder stringByAppendingPathComponent:@"missing"] isRunningProcess]);
    RestoreEnvironment(environment);
}

FOLDER_CASE(LaunchingApplicationsAndFolders)
{
    NSMutableDictionary *environment = [NSMutableDictionary dictionary];
    NSString *record = [folder stringByAppendingPathComponent:@"ran.txt"];
    NSString *recorder = Write(folder, @"record.sh", [NSString stringWithFormat:@"#!/bin/sh\necho ran >> '%@'\n", record]);
    chmod([recorder fileSystemRepresentation], 0755);
    NSString *desktop = Write(folder, @"data/applications/koru-recorder.desktop",
                              [NSString stringWithFormat:@"[Desktop Entry]\nType=Application\nName=Recorder\nExec=%@ %%u\n"
                                                         @"MimeType=text/plain;\n", recorder]);
    Write(folder, @"config/mimeapps.list", @"[Default Applications]\ntext/plain=koru-recorder.desktop\n");
    SetEnvironment(environment, "XDG_DATA_HOME", [folder stringByAppendingPathComponent:@"data"]);
    SetEnvironment(environment, "XDG_CONFIG_HOME", [folder stringByAppendingPathComponent:@"config"]);
    SetEnvironment(environment, "XDG_DATA_DIRS", @"/usr/share");
    SetEnvironment(environment, "XDG_CURRENT_DESKTOP", @"");
    SetEnvironment(environment, "TMPDIR", folder);
    NSString *note = Write(folder, @"note.txt", @"plain words\n");
    KT_EXPECT_EQUAL_OBJECTS([note applicationOfRole:kLSRolesAll], desktop);
    KT_EXPECT([[folder stringByAppendingPathComponent:@"missing.txt"] applicationOfRole:kLSRolesAll] == nil);
    KT_EXPECT([recorder launchWithLaunchFlags:kLSLaunchDefaults]);
    for (int attempt = 0; attempt < 600 && ![record exists]; attempt++)
        usleep(50000); // the recorder runs on its own
    KT_EXPECT([record exists]);
    KT_EXPECT(![[folder stringByAppendingPathComponent:@"missing"] launchWithLaunchFlags:kLSLaunchDefaults]);
    // Standard folders follow TMPDIR here, so the test's folder holds them.
    NSString *temporary = [NSString stringWithFindFolder:kUserDomain type:kTemporaryFolderType createFolder:YES];
    KT_EXPECT_EQUAL_OBJECTS(temporary, ([folder stringByAppendingPathComponent:[NSString stringWithFormat:@"koru-%u", getuid()]]));
    NSString *own = [NSString stringWithApplicationTemporary];
    KT_EXPECT([own existsDirectory] && [own isEqual:[temporary stringByAppendingPathComponent:@"NSString+FoundationXTest"]]);
    KT_EXPECT([NSString stringWithFindFolder:kUserDomain type:0x6E6F6E65 createFolder:NO] == nil); // 'none'
    RestoreEnvironment(environment);
}

FOLDER_CASE(ScriptsRunAsLua)
{
    KT_EXPECT_EQUAL_OBJECTS([@"return 1 + 2" executeAppleScript], @"3");
    KT_EXPECT([@"local x = 1" executeAppleScript] == nil && [@"" executeAppleScript] == nil);
    NSString *error = [@"return +" executeAppleScript];
    KT_EXPECT_MSG([error rangeOfString:@"unexpected symbol"].location != NSNotFound, @"%@", error);
    NSString *script = Write(folder, @"handlers.lua", @"greeting = 'hello'\n"
                                                     @"function run() return greeting end\n"
                                                     @"function KORUping(who) return greeting .. ' ' .. who end\n");
    KT_EXPECT_EQUAL_OBJECTS([script executeRun], @"\"hello\"");
    AEDesc target = {typeNull, NULL};
    AppleEvent event = {typeNull, NULL};
    ProcessSerialNumber me = {0, kCurrentProcess};
    KT_EXPECT(AECreateDesc(typeProcessSerialNumber, &me, sizeof me, &target) == noErr);
    KT_EXPECT(AECreateAppleEvent(0x4B4F5255, 0x70696E67, &target, kAutoGenerateReturnID, kAnyTransactionID, &event) ==
              noErr); // 'KORU' 'ping'
    KT_EXPECT(AEPutParamPtr(&event, keyDirectObject, typeUTF8Text, "Lua", 3) == noErr);
    KT_EXPECT_EQUAL_OBJECTS([script executeHandler:&event], @"\"hello Lua\"");
    AEDisposeDesc(&event);
    AEDisposeDesc(&target);
    KT_EXPECT([[folder stringByAppendingPathComponent:@"missing.lua"] executeRun] == nil && [@"" executeRun] == nil);
    ComponentInstance component = OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype);
    KT_ASSERT(component != NULL);
    OSAID loaded = [script OSALoadFile:component];
    KT_EXPECT(loaded != kOSANullScript && OSADispose(component, loaded) == noErr);
    KT_EXPECT([[folder stringByAppendingPathComponent:@"missing.lua"] OSALoadFile:component] == kOSANullScript &&
              [script OSALoadFile:NULL] == kOSANullScript);
    CloseComponent(component);
}

KT_CASE(FailedChecksAreLoggedWithMethodAndLine)
{
    char path[] = "/tmp/koru-stringpaths-log-XXXXXX";
    int fd = mkstemp(path), standardError = dup(2);
    KT_ASSERT(fd >= 0);
    Boolean saved = gKORUDebug;
    gKORUDebug = 1;
    fflush(stderr);
    dup2(fd, 2);
    [@"/koru/nothing/here" isAlias];
    [@"five!" OSType];
    [NSString stringWithOSType:0];
    fflush(stderr);
    dup2(standardError, 2);
    gKORUDebug = saved;
    close(standardError);
    close(fd);
    NSString *log = [NSString stringWithContentsOfFile:[NSString stringWithUTF8String:path]
                                              encoding:NSUTF8StringEncoding error:NULL];
    unlink(path);
    NSArray *lines = [NSArray arrayWithObjects:@"-[NSString(FoundationX) isLSItemInfoRecordFlagOn:defaultResult:] (Line:1258)",
                                               @"-[NSString(FoundationX) OSType] (Line:527)",
                                               @"-[NSString(FoundationX) initWithOSType:] (Line:554)", nil];
    for (NSString *line in lines)
        KT_EXPECT_MSG([log rangeOfString:[line stringByAppendingString:@"\nSorry, I caught GOTO error.\n"]].location != NSNotFound,
                      @"%@ missing from %@", line, log);
}

KT_MAIN()
