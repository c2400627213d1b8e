/* NSString(FoundationX) and NSMutableString(FoundationX): a string as a
 * file-system path. */
#import <KORU/NSString+FoundationX.h>

#include <KORU/AppleEventUtilities.h>
#include <KORU/FSUtilities.h>

#include "FoundationXSupport.h"

#include <limits.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

/* The largest signed 32-bit value: compareAsPath:'s answer for no path. */
static const NSComparisonResult kNoPathOrder = (NSComparisonResult)INT32_MAX;

/* The flag tests' one-entry cache: the receiver last asked about and its
 * record.  Keyed by the object, not its text, on purpose; the receiver is
 * kept retained so that its address cannot come back as another string's
 * while it is cached. */
static NSString *gFlagReceiver = nil;
static LSItemInfoRecord gFlagRecord;

/* The path, when the file system can take it: nil for an empty path, for
 * one holding a NUL character, which Foundation and the C library would cut
 * short there and so take for another item, and for one the file system
 * cannot spell (a lone UTF-16 surrogate), on which Foundation raises. */
static NSString *UsablePath(NSString *path)
{
    static NSCharacterSet *nul = nil;
    if (nul == nil)
        nul = [[NSCharacterSet characterSetWithRange:NSMakeRange(0, 1)] retain];
    if ([path length] == 0 || [path rangeOfCharacterFromSet:nul].location != NSNotFound)
        return nil;
    @try {
        [path fileSystemRepresentation];
    } @catch (NSException *exception) {
        return nil;
    }
    return path;
}

/* The path with a leading tilde expanded, when usable. */
static NSString *ExpandedPath(NSString *path)
{
    return UsablePath([path stringByExpandingTildeInPath]);
}

/* Something, a symbolic link included, is at the path. */
static BOOL IsPresent(NSString *path)
{
    struct stat st;
    return UsablePath(path) != nil && lstat([path fileSystemRepresentation], &st) == 0;
}

/* Where this platform keeps an item's resource fork and Finder information:
 * the AppleDouble companion "._name" beside it.  Foundation's file manager
 * knows nothing of it, so what the category copies or removes through the
 * file manager takes the companion along itself.  nil for the root. */
static NSString *CompanionPath(NSString *path)
{
    NSString *name = [path lastPathComponent];
    if ([name length] == 0 || [name isEqualToString:@"/"])
        return nil;
    return [[path stringByDeletingLastPathComponent] stringByAppendingPathComponent:[@"._" stringByAppendingString:name]];
}

/* The entry at subpath of folder is the companion of an item beside it,
 * which folder listings of this platform hide. */
static BOOL IsCompanionEntry(NSString *folder, NSString *subpath)
{
    NSString *name = [subpath lastPathComponent];
    if ([name length] <= 2 || ![name hasPrefix:@"._"])
        return NO;
    NSString *item = [[subpath stringByDeletingLastPathComponent] stringByAppendingPathComponent:[name substringFromIndex:2]];
    return IsPresent([folder stringByAppendingPathComponent:item]);
}

/* Removes the item at path as it stands, and its companion. */
static BOOL RemoveItem(NSString *path)
{
    NSFileManager *manager = [NSFileManager defaultManager];
    if (![manager removeFileAtPath:path handler:nil])
        return NO;
    NSString *companion = CompanionPath(path);
    if (companion != nil && IsPresent(companion))
        [manager removeFileAtPath:companion handler:nil];
    return YES;
}

/* The absolute path with symbolic links resolved in every folder above the
 * last component (the last is resolved too when resolveLast), as far as the
 * path exists; nil when not even the current folder resolves. */
static NSString *ResolvedPath(NSString *path, BOOL resolveLast)
{
    NSMutableArray *rest = [NSMutableArray array];
    NSString *existing = path;
    if (!resolveLast && [[path lastPathComponent] length] > 0 && ![path isEqualToString:@"/"]) {
        [rest addObject:[path lastPathComponent]];
        existing = [path stringByDeletingLastPathComponent];
    }
    char resolved[PATH_MAX];
    for (;;) {
        const char *name = [existing length] > 0 ? [existing fileSystemRepresentation] : ".";
        if (realpath(name, resolved) != NULL)
            break;
        NSString *parent = [existing stringByDeletingLastPathComponent];
        if ([parent isEqualToString:existing])
            return nil;
        [rest insertObject:[existing lastPathComponent] atIndex:0];
        existing = parent;
    }
    NSString *result = [[NSFileManager defaultManager] stringWithFileSystemRepresentation:resolved length:strlen(resolved)];
    for (NSString *component in rest)
        result = [result stringByAppendingPathComponent:component];
    return result;
}

/* inner is outer or lies inside it. */
static BOOL IsWithin(NSString *inner, NSString *outer)
{
    if (inner == nil || outer == nil)
        return NO;
    if ([inner isEqualToString:outer] || [outer isEqualToString:@"/"])
        return YES;
    return [inner hasPrefix:[outer stringByAppendingString:@"/"]];
}

/* Data plus resource fork bytes of the item at path; 0 when unavailable. */
static unsigned long long ForkSizesAtPath(NSString *path)
{
    FSCatalogInfo info;
    if (![path getFSCatalogInfo:&info ofBitmap:kFSCatInfoDataSizes | kFSCatInfoRsrcSizes])
        return 0;
    return info.dataLogicalSize + info.rsrcLogicalSize;
}

/* The file URL of the path as it stands, released by the caller; NULL for an
 * empty path. */
static CFURLRef CreateFileURL(NSString *path, Boolean isDirectory)
{
    if (UsablePath(path) == nil)
        return NULL;
    return CFURLCreateWithFileSystemPath(kCFAllocatorDefault, (CFStringRef)path, kCFURLPOSIXPathStyle, isDirectory);
}

/* The quoted form of a code, as the Mac's NSFileTypeForHFSTypeCode writes
 * it: its four bytes as Mac OS Roman characters between single quotes, and
 * "''" for the code 0.  GNUstep's function answers nil for every code. */
static NSString *FileTypeForHFSTypeCode(OSType code)
{
    if (code == 0)
        return @"''";
    const UInt8 bytes[4] = {(UInt8)(code >> 24), (UInt8)(code >> 16), (UInt8)(code >> 8), (UInt8)code};
    CFStringRef characters = CFStringCreateWithBytes(kCFAllocatorDefault, bytes, 4, kCFStringEncodingMacRoman, false);
    if (characters == NULL)
        return nil;
    NSString *form = [NSString stringWithFormat:@"'%@'", (NSString *)characters];
    CFRelease(characters);
    return form;
}

/* The code a quoted form names, as the Mac's NSHFSTypeCodeFromFileType reads
 * it; 0 for anything else, and for characters outside Mac OS Roman.
 * GNUstep's function answers 0 for every form. */
static OSType HFSTypeCodeFromFileType(NSString *form)
{
    if ([form length] != 6 || [form characterAtIndex:0] != '\'' || [form characterAtIndex:5] != '\'')
        return 0;
    UInt8 bytes[4];
    CFIndex used = 0;
    if (CFStringGetBytes((CFStringRef)form, CFRangeMake(1, 4), kCFStringEncodingMacRoman, 0, false, bytes, 4, &used) != 4 ||
        used != 4)
        return 0;
    return (OSType)bytes[0] << 24 | (OSType)bytes[1] << 16 | (OSType)bytes[2] << 8 | bytes[3];
}

/* What both initWithOSType: share: receiver initialised with the four
 * characters of the quoted form, or released when the form has not six. */
static id InitWithOSType(NSString *receiver, OSType type, const char *method)
{
    NSString *form = FileTypeForHFSTypeCode(type);
    if ([form length] != 6) {
        KORULogFailure(method, 554);
        [receiver release];
        return nil;
    }
    return [receiver initWithString:[form substringWithRange:NSMakeRange(1, 4)]];
}

/* The result text a script function handed out, autoreleased. */
static NSString *Autoreleased(CFStringRef text)
{
    return [(NSString *)text autorelease];
}

@implementation NSString (FoundationX)

/* --- Existence, kind and attributes ------------------------------------- */

- (BOOL)exists
{
    NSString *path = ExpandedPath(self);
    return path != nil && [[NSFileManager defaultManager] fileExistsAtPath:path];
}

- (BOOL)existsDirectory
{
    NSString *path = ExpandedPath(self);
    BOOL isDirectory = NO;
    return path != nil && [[NSFileManager defaultManager] fileExistsAtPath:path isDirectory:&isDirectory] && isDirectory;
}

- (BOOL)isReadableFile
{
    NSString *path = ExpandedPath(self);
    return path != nil && [[NSFileManager defaultManager] isReadableFileAtPath:path];
}

- (BOOL)isWritableFile
{
    NSString *path = ExpandedPath(self);
    return path != nil && [[NSFileManager defaultManager] isWritableFileAtPath:path];
}

- (BOOL)isExecutableFile
{
    NSString *path = ExpandedPath(self);
    return path != nil && [[NSFileManager defaultManager] isExecutableFileAtPath:path];
}

- (BOOL)isDeletableFile
{
    NSString *path = ExpandedPath(self);
    return path != nil && [[NSFileManager defaultManager] isDeletableFileAtPath:path];
}

- (BOOL)isLSItemInfoRecordFlagOn:(LSItemInfoFlags)mask defaultResult:(BOOL)defaultResult
{
    if (self != gFlagReceiver) {
        [gFlagReceiver release];
        gFlagReceiver = nil;
        if (![self getLSItemInfoRecord:&gFlagRecord whichInfo:kLSRequestAllFlags]) {
            KORULogFailure("-[NSString(FoundationX) isLSItemInfoRecordFlagOn:defaultResult:]", 1258);
            return defaultResult;
        }
        gFlagReceiver = [self retain];
    }
    return (gFlagRecord.flags & mask) == mask;
}

- (BOOL)isAlias
{
    return [self isLSItemInfoRecordFlagOn:kLSItemInfoIsAliasFile defaultResult:NO];
}

- (BOOL)isApplication
{
    return [self isLSItemInfoRecordFlagOn:kLSItemInfoIsApplication defaultResult:NO];
}

- (BOOL)isContainer
{
    return [self isLSItemInfoRecordFlagOn:kLSItemInfoIsContainer defaultResult:NO];
}

- (BOOL)isInvisible
{
    return [self isLSItemInfoRecordFlagOn:kLSItemInfoIsInvisible defaultResult:NO];
}

- (BOOL)isPackage
{
    return [self isLSItemInfoRecordFlagOn:kLSItemInfoIsPackage defaultResult:NO];
}

- (BOOL)isVolume
{
    return [self isLSItemInfoRecordFlagOn:kLSItemInfoIsVolume defaultResult:NO];
}

- (BOOL)isPlainFile
{
    return [self isLSItemInfoRecordFlagOn:kLSItemInfoIsPlainFile defaultResult:YES];
}

- (BOOL)isDirectory
{
    return [self isContainer] && ![self isVolume];
}

- (BOOL)isFolder
{
    return ![self isPackage] && ![self isVolume] && [self isContainer];
}

- (BOOL)isMachOBinary
{
    FSRef ref;
    return [self getFSRef:&ref] && FSIsMachOBinary(&ref);
}

- (BOOL)getLSItemInfoRecord:(LSItemInfoRecord *)record whichInfo:(LSRequestedInfo)whichInfo
{
    if (record == NULL)
        return NO;
    memset(record, 0, sizeof *record);
    CFURLRef url = CreateFileURL([self stringByExpandingTildeInPath], false);
    OSStatus status = url != NULL ? LSCopyItemInfoForURL(url, whichInfo, record) : paramErr;
    if (url != NULL)
        CFRelease(url);
    if (status == noErr)
        return YES;
    if (record->extension != NULL)
        CFRelease(record->extension);
    if (record->iconFileName != NULL)
        CFRelease(record->iconFileName);
    record->extension = NULL;
    record->iconFileName = NULL;
    return NO;
}

- (OSType)HFSFileType
{
    LSItemInfoRecord record;
    return [self getLSItemInfoRecord:&record whichInfo:kLSRequestTypeCreator] ? record.filetype : 0;
}

- (OSType)HFSCreator
{
    LSItemInfoRecord record;
    return [self getLSItemInfoRecord:&record whichInfo:kLSRequestTypeCreator] ? record.creator : 0;
}

- (NSString *)HFSFileTypeString
{
    return [NSString stringWithOSType:[self HFSFileType]];
}

- (NSString *)HFSCreatorString
{
    return [NSString stringWithOSType:[self HFSCreator]];
}

- (BOOL)getFSCatalogInfo:(FSCatalogInfo *)catalogInfo ofBitmap:(FSCatalogInfoBitmap)bitmap
{
    FSRef ref;
    return catalogInfo != NULL && [self getFSRef:&ref] &&
           FSGetCatalogInfo(&ref, bitmap, catalogInfo, NULL, NULL, NULL) == noErr;
}

- (BOOL)setFSCatalogInfo:(const FSCatalogInfo *)catalogInfo ofBitmap:(FSCatalogInfoBitmap)bitmap
{
    FSRef ref;
    return catalogInfo != NULL && [self getFSRef:&ref] && FSSetCatalogInfo(&ref, bitmap, catalogInfo) == noErr;
}

- (unsigned long long)logicalSize
{
    if (![self isContainer])
        return ForkSizesAtPath(self);
    unsigned long long size = 0;
    NSArray *subpaths = UsablePath(self) != nil ? [[NSFileManager defaultManager] subpathsAtPath:self] : nil;
    for (NSString *subpath in subpaths) {
        // A companion's bytes are its item's resource fork, counted with it.
        if (!IsCompanionEntry(self, subpath))
            size += ForkSizesAtPath([self stringByAppendingPathComponent:subpath]);
    }
    return size;
}

- (NSNumber *)logicalSizeNumber
{
    return [NSNumber numberWithUnsignedLongLong:[self logicalSize]];
}

- (NSString *)displayName
{
    return UsablePath(self) != nil ? [[NSFileManager defaultManager] displayNameAtPath:self] : nil;
}

- (NSUInteger)pathComponentsCount
{
    NSUInteger count = 0;
    for (NSString *component in [self pathComponents]) {
        if (![component isEqualToString:@"/"])
            count++;
    }
    return count;
}

- (NSString *)HFSPath
{
    BOOL isDirectory = NO;
    if (UsablePath(self) != nil)
        [[NSFileManager defaultManager] fileExistsAtPath:self isDirectory:&isDirectory];
    CFURLRef url = CreateFileURL(self, isDirectory);
    if (url == NULL)
        return nil;
    CFStringRef path = CFURLCopyFileSystemPath(url, kCFURLHFSPathStyle);
    CFRelease(url);
    return [(NSString *)path autorelease];
}

- (NSString *)bundleIdentifier
{
    CFBundleRef bundle = [[self stringByExpandingTildeInPath] createCFBundle];
    if (bundle == NULL)
        return nil;
    NSString *identifier = [[(NSString *)CFBundleGetIdentifier(bundle) copy] autorelease];
    CFRelease(bundle);
    return identifier;
}

- (NSData *)URLContents
{
    @try {
        NSURL *url = [NSURL URLWithString:self];
        return url != nil ? [NSData dataWithContentsOfURL:url] : nil;
    } @catch (NSException *exception) {
        return nil; // a URL Foundation cannot read from is no data
    }
}

/* --- Creating, copying, removing ----------------------------------------- */

- (BOOL)createDirectory
{
    NSFileManager *manager = [NSFileManager defaultManager];
    BOOL isDirectory = NO;
    if (UsablePath(self) == nil)
        return NO;
    if ([manager fileExistsAtPath:self isDirectory:&isDirectory])
        return isDirectory;
    return [manager createDirectoryAtPath:self withIntermediateDirectories:NO attributes:nil error:NULL];
}

- (BOOL)createDirectories
{
    @try {
        NSString *path = @"";
        for (NSString *component in [self pathComponents]) {
            path = [path stringByAppendingPathComponent:component];
            if (![path createDirectory])
                return NO;
        }
        return YES;
    } @catch (NSException *exception) {
        KORULogException("-[NSString(FoundationX) createDirectories]", 915, exception);
        return NO;
    }
}

- (BOOL)createCopyOfPath:(NSString *)destination
{
    if (![destination isKindOfClass:[NSString class]] || UsablePath(destination) == nil || !IsPresent(self))
        return NO;
    @try {
        // Replacing the source itself, or a folder above it, would lose it;
        // a copy into the source's own folder tree would never end.
        NSString *target = ResolvedPath(destination, NO);
        NSString *source = ResolvedPath(self, NO), *original = ResolvedPath(self, YES);
        if (target == nil || source == nil || original == nil || IsWithin(target, source) ||
            IsWithin(target, original) || IsWithin(source, target) || IsWithin(original, target))
            return NO;
        if (![[destination stringByDeletingLastPathComponent] createDirectories])
            return NO;
        if (IsPresent(destination) && !RemoveItem(destination))
            return NO;
        // A companion whose item went without it would give the copy its
        // resource fork and Finder information.
        NSFileManager *manager = [NSFileManager defaultManager];
        NSString *stale = CompanionPath(destination);
        if (stale != nil && IsPresent(stale) && ![manager removeFileAtPath:stale handler:nil])
            return NO;
        if (![manager copyPath:self toPath:destination handler:nil])
            return NO;
        NSString *companion = CompanionPath(self);
        if (companion != nil && IsPresent(companion))
            return [manager copyPath:companion toPath:CompanionPath(destination) handler:nil];
        return YES;
    } @catch (NSException *exception) {
        return NO; // a path the file manager cannot spell
    }
}

- (BOOL)createEmptyFile
{
    // The path goes to the writer with the home folder as a tilde; GNUstep's
    // writers take a tilde literally, so it is expanded again for them.
    NSString *path = ExpandedPath([self stringByAbbreviatingWithTildeInPath]);
    return path != nil && [@"" writeToFile:path atomically:NO];
}

- (BOOL)remove
{
    NSString *path = ExpandedPath(self);
    if (path == nil)
        return NO;
    @try {
        return RemoveItem(path);
    } @catch (NSException *exception) {
        return NO;
    }
}

- (NSArray *)subfilepaths
{
    NSMutableArray *files = [NSMutableArray array];
    NSMutableArray *packages = [NSMutableArray array];
    NSArray *subpaths = UsablePath(self) != nil ? [[NSFileManager defaultManager] subpathsAtPath:self] : nil;
    for (NSString *subpath in subpaths) {
        BOOL insidePackage = NO;
        for (NSString *package in packages) {
            if ([subpath hasPrefix:[package stringByAppendingString:@"/"]]) {
                insidePackage = YES;
                break;
            }
        }
        if (insidePackage)
            continue;
        NSString *path = [self stringByAppendingPathComponent:subpath];
        if ([path isInvisible] || [path isFolder] || [path isVolume])
            continue;
        [files addObject:subpath];
        if ([path isPackage])
            [packages addObject:subpath];
    }
    return files;
}

- (ResFileRefNum)openResourceFork:(BOOL)forWriting
{
    FSRef ref;
    if (![[self stringByExpandingTildeInPath] getFSRef:&ref])
        return -1;
    return RFOpen(&ref, forWriting);
}

- (CFBundleRef)createCFBundle
{
    CFURLRef url = CreateFileURL(self, true);
    if (url == NULL)
        return NULL;
    CFBundleRef bundle = CFBundleCreate(kCFAllocatorDefault, url);
    CFRelease(url);
    return bundle;
}

/* --- References and aliases ---------------------------------------------- */

- (BOOL)getFSRef:(FSRef *)ref
{
    return ref != NULL && UsablePath(self) != nil && FSPathMakeRef((const UInt8 *)[self UTF8String], ref, NULL) == noErr;
}

- (id)initWithFSRef:(const FSRef *)ref
{
    UInt8 path[1025];
    if (ref == NULL || FSRefMakePath(ref, path, sizeof path) != noErr || path[0] == '\0') {
        [self release];
        return nil;
    }
    return [self initWithUTF8String:(const char *)path];
}

+ (id)stringWithFSRef:(const FSRef *)ref
{
    return [[[self alloc] initWithFSRef:ref] autorelease];
}

- (BOOL)getFSSpec:(FSSpec *)fsSpec
{
    FSRef ref;
    return fsSpec != NULL && [self getFSRef:&ref] && FSGetCatalogInfo(&ref, kFSCatInfoNone, NULL, NULL, fsSpec, NULL) == noErr;
}

- (id)initWithFSSpec:(const FSSpec *)fsSpec
{
    FSRef ref;
    if (fsSpec == NULL || FSpMakeFSRef(fsSpec, &ref) != noErr) {
        [self release];
        return nil;
    }
    return [self initWithFSRef:&ref];
}

+ (id)stringWithFSSpec:(const FSSpec *)fsSpec
{
    return [[[self alloc] initWithFSSpec:fsSpec] autorelease];
}

- (AliasHandle)aliasHandle
{
    FSRef ref;
    AliasHandle alias = NULL;
    if (![[self stringByExpandingTildeInPath] getFSRef:&ref] || FSNewAlias(NULL, &ref, &alias) != noErr)
        return NULL;
    return alias;
}

- (NSData *)aliasData
{
    AliasHandle alias = [self aliasHandle];
    if (alias == NULL)
        return nil;
    NSData *data = [NSData dataWithBytes:*alias length:(NSUInteger)GetHandleSize((Handle)alias)];
    DisposeHandle((Handle)alias);
    return data;
}

- (id)initWithAliasData:(NSData *)data
{
    Handle alias = NULL;
    FSRef target;
    Boolean wasChanged = false;
    BOOL resolved = [data isKindOfClass:[NSData class]] && [data length] > 0 &&
                    PtrToHand([data bytes], &alias, (long)[data length]) == noErr &&
                    FSResolveAliasWithMountFlags(NULL, (AliasHandle)alias, &target, &wasChanged, 0) == noErr;
    DisposeHandle(alias);
    if (!resolved) {
        [self release];
        return nil;
    }
    return [self initWithFSRef:&target];
}

+ (id)stringWithAliasData:(NSData *)data
{
    return [[[self alloc] initWithAliasData:data] autorelease];
}

- (NSString *)original
{
    // An alias file here is a symbolic link: the ref names the link itself.
    FSRef ref;
    if (UsablePath(self) == nil || FSPathMakeRefWithOptions((const UInt8 *)[self UTF8String],
                                                            kFSPathMakeRefDoNotFollowLeafSymlink, &ref, NULL) != noErr)
        return nil;
    Boolean isFolder = false, wasAliased = false;
    if (FSResolveAliasFileWithMountFlags(&ref, true, &isFolder, &wasAliased, kResolveAliasFileNoUI) != noErr || !wasAliased)
        return nil;
    return [NSString stringWithFSRef:&ref];
}

- (NSDictionary *)storeableDictionary
{
    @try {
        NSData *alias = [self aliasData];
        if (alias == nil)
            return nil;
        return [NSDictionary dictionaryWithObjectsAndKeys:[self stringByAbbreviatingWithTildeInPath], @"Path", alias,
                                                          @"Alias", nil];
    } @catch (NSException *exception) {
        KORULogException("-[NSString(FoundationX) storeableDictionary]", 624, exception);
        return nil;
    }
}

- (id)initWithStoreableDictionary:(NSDictionary *)dictionary resolveAliasFirst:(BOOL)resolveAliasFirst
{
    NSString *stored = nil;
    NSData *alias = nil;
    if ([dictionary isKindOfClass:[NSDictionary class]]) {
        stored = [dictionary objectForKey:@"Path"];
        alias = [dictionary objectForKey:@"Alias"];
    }
    stored = [stored isKindOfClass:[NSString class]] ? [stored stringByExpandingTildeInPath] : nil;
    if (stored != nil && ![stored exists])
        stored = nil;
    NSString *path;
    if (resolveAliasFirst) {
        path = [NSString stringWithAliasData:alias];
        if (path == nil)
            path = stored;
    } else {
        path = stored != nil ? stored : [NSString stringWithAliasData:alias];
    }
    if (path == nil) {
        [self release];
        return nil;
    }
    return [self initWithString:path];
}

+ (id)stringWithStoreableDictionary:(NSDictionary *)dictionary resolveAliasFirst:(BOOL)resolveAliasFirst
{
    return [[[self alloc] initWithStoreableDictionary:dictionary resolveAliasFirst:resolveAliasFirst] autorelease];
}

/* --- Type codes ------------------------------------------------------------ */

- (OSType)OSType
{
    if ([self length] != 4) {
        KORULogFailure("-[NSString(FoundationX) OSType]", 527);
        return 0;
    }
    return HFSTypeCodeFromFileType([NSString stringWithFormat:@"'%@'", self]);
}

- (NSNumber *)OSTypeNumber
{
    return [NSNumber numberWithUnsignedLong:[self OSType]];
}

- (id)initWithOSType:(OSType)type
{
    return InitWithOSType(self, type, "-[NSString(FoundationX) initWithOSType:]");
}

+ (id)stringWithOSType:(OSType)type
{
    return [[[self alloc] initWithOSType:type] autorelease];
}

- (BOOL)isEqualToOSType:(OSType)type
{
    NSString *code = [NSString stringWithOSType:type];
    return code != nil && [self isEqualToString:code];
}

/* --- Launch Services, processes and folders -------------------------------- */

- (NSString *)applicationOfRole:(LSRolesMask)roles
{
    FSRef item, application;
    if (![self getFSRef:&item] || LSGetApplicationForItem(&item, roles, &application, NULL) != noErr)
        return nil;
    return [NSString stringWithFSRef:&application];
}

- (BOOL)launchWithLaunchFlags:(LSLaunchFlags)flags
{
    FSRef application;
    if (![self getFSRef:&application])
        return NO;
    LSLaunchFSRefSpec launchSpec = {&application, 0, NULL, NULL, flags, NULL};
    return LSOpenFromRefSpec(&launchSpec, NULL) == noErr;
}

- (BOOL)activateProcess
{
    FSRef application;
    return [self getFSRef:&application] && FSSetFrontProcess(&application);
}

- (BOOL)isRunningProcess
{
    FSRef application;
    return [self getFSRef:&application] && FSIsRunningProcess(&application);
}

- (BOOL)isFrontProcess
{
    FSRef application;
    return [self getFSRef:&application] && FSIsFrontProcess(&application);
}

- (BOOL)getProcessSerialNumber:(ProcessSerialNumber *)psn
{
    if (psn == NULL)
        return NO;
    psn->highLongOfPSN = 0;
    psn->lowLongOfPSN = kNoProcess;
    FSRef application;
    return [self getFSRef:&application] && FSGetProcessSerialNumber(&application, psn);
}

- (id)initWithFindFolder:(SInt16)domain type:(OSType)folderType createFolder:(BOOL)createFolder
{
    FSRef folder;
    if (FSFindFolder(domain, folderType, createFolder ? kCreateFolder : kDontCreateFolder, &folder) != noErr) {
        [self release];
        return nil;
    }
    return [self initWithFSRef:&folder];
}

+ (id)stringWithFindFolder:(SInt16)domain type:(OSType)folderType createFolder:(BOOL)createFolder
{
    return [[[self alloc] initWithFindFolder:domain type:folderType createFolder:createFolder] autorelease];
}

+ (NSString *)stringWithApplicationTemporary
{
    @try {
        NSString *folder = [NSString stringWithFindFolder:kUserDomain type:kTemporaryItemsInUserDomainFolderType
                                             createFolder:YES];
        if (folder == nil)
            return nil;
        NSBundle *bundle = [NSBundle mainBundle];
        NSString *name = [bundle bundleIdentifier];
        if ([name length] == 0)
            name = [[bundle executablePath] lastPathComponent];
        // The name is one component inside the folder, never a way out of it.
        if ([name length] == 0 || [name isEqualToString:@"."] || [name isEqualToString:@".."] ||
            [name rangeOfString:@"/"].location != NSNotFound)
            return nil;
        NSString *path = [folder stringByAppendingPathComponent:name];
        return [path createDirectory] ? path : nil;
    } @catch (NSException *exception) {
        KORULogException("+[NSString(FoundationX) stringWithApplicationTemporary]", 1152, exception);
        return nil;
    }
}

/* --- Scripts ------------------------------------------------------------------ */

- (OSAID)OSALoadFile:(ComponentInstance)component
{
    CFURLRef url = CreateFileURL(self, false);
    if (url == NULL || component == NULL) {
        if (url != NULL)
            CFRelease(url);
        return kOSANullScript;
    }
    OSAID script = OSALoadFileFromURL(component, url);
    CFRelease(url);
    return script;
}

- (NSString *)executeAppleScript
{
    CFStringRef result = NULL;
    CFStringExecuteAppleScript((CFStringRef)self, &result);
    return Autoreleased(result);
}

- (NSString *)executeHandler:(const AppleEvent *)event
{
    CFURLRef url = CreateFileURL(self, false);
    if (url == NULL)
        return nil;
    CFStringRef result = NULL;
    CFURLExecuteHandler(url, event, &result);
    CFRelease(url);
    return Autoreleased(result);
}

- (NSString *)executeRun
{
    return [self executeHandler:NULL];
}

- (NSComparisonResult)compareAsPath:(NSString *)path
{
    if (![path isKindOfClass:[NSString class]])
        return kNoPathOrder;
    NSMutableArray *mine = [[[self pathComponents] mutableCopy] autorelease];
    NSMutableArray *theirs = [[[path pathComponents] mutableCopy] autorelease];
    // A trailing "/" and "." name no further folder.
    for (NSMutableArray *components in [NSArray arrayWithObjects:mine, theirs, nil]) {
        [components removeObject:@"."];
        if ([components count] > 1 && [[components lastObject] isEqualToString:@"/"])
            [components removeLastObject];
    }
    NSUInteger count = MIN([mine count], [theirs count]);
    for (NSUInteger i = 0; i < count; i++) {
        // GNUstep's numeric search forgets case-insensitivity: lower both.
        NSComparisonResult order = [[[mine objectAtIndex:i] lowercaseString]
            compare:[[theirs objectAtIndex:i] lowercaseString]
            options:NSNumericSearch];
        if (order != NSOrderedSame)
            return order;
    }
    if ([mine count] == [theirs count])
        return NSOrderedSame;
    return [mine count] < [theirs count] ? NSOrderedAscending : NSOrderedDescending;
}

@end

@implementation NSMutableString (FoundationX)

- (void)appendPathComponent:(NSString *)component
{
    if (![component isKindOfClass:[NSString class]] || [component length] == 0)
        return;
    [self setString:[self stringByAppendingPathComponent:component]];
}

- (id)initWithOSType:(OSType)type
{
    return InitWithOSType(self, type, "-[NSMutableString(FoundationX) initWithOSType:]");
}

@end
