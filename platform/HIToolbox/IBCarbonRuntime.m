/* Windows and menus from interface files in a bundle, named by the outlets
 * of the file's owner. */
#import <AppKit/AppKit.h>

#include <HIToolbox/IBCarbonRuntime.h>
#include <CoreServices/MacErrors.h>

/* The kinds of interface file GNUstep loads, in the order they are looked
 * for. */
static NSString *const kNibExtensions[] = {@"xib", @"gorm", @"nib"};

@interface KORUNibReference : NSObject {
@public
    NSNib *mNib;
}
@end

@implementation KORUNibReference
- (void)dealloc
{
    [mNib release];
    [super dealloc];
}
@end

/* The file's owner while a file is instantiated.  An outlet "MainWindow" is
 * set through -setMainWindow:, which no class declares: the owner answers
 * every one-argument setter and keeps the name with the object.  The first
 * letter of a name is compared without case, as the setter capitalises
 * it. */
@interface KORUNibOwner : NSObject {
@public
    NSMutableDictionary *mObjectsByName;
}
@end

@implementation KORUNibOwner
- (id)init
{
    if ((self = [super init]) == nil)
        return nil;
    mObjectsByName = [[NSMutableDictionary alloc] init];
    return self;
}

- (void)dealloc
{
    [mObjectsByName release];
    [super dealloc];
}

static NSString *OutletNameOfSetter(SEL selector)
{
    NSString *name = NSStringFromSelector(selector);
    if ([name length] < 5 || ![name hasPrefix:@"set"] || ![name hasSuffix:@":"])
        return nil;
    if ([[name substringFromIndex:3] rangeOfString:@":"].location != [name length] - 4)
        return nil;
    return [name substringWithRange:NSMakeRange(3, [name length] - 4)];
}

- (BOOL)respondsToSelector:(SEL)selector
{
    return OutletNameOfSetter(selector) != nil || [super respondsToSelector:selector];
}

- (NSMethodSignature *)methodSignatureForSelector:(SEL)selector
{
    if (OutletNameOfSetter(selector) != nil)
        return [NSMethodSignature signatureWithObjCTypes:"v@:@"];
    return [super methodSignatureForSelector:selector];
}

- (void)forwardInvocation:(NSInvocation *)invocation
{
    NSString *name = OutletNameOfSetter([invocation selector]);
    if (name == nil) {
        [super forwardInvocation:invocation];
        return;
    }
    id object = nil;
    [invocation getArgument:&object atIndex:2];
    if (object != nil)
        [mObjectsByName setObject:object forKey:[name lowercaseString]];
}

- (id)objectNamed:(NSString *)name
{
    return [mObjectsByName objectForKey:[name lowercaseString]];
}
@end

OSStatus CreateNibReferenceWithCFBundle(CFBundleRef inBundle, CFStringRef inNibName, IBNibRef *outNibRef)
{
    if (inBundle == NULL || inNibName == NULL || outNibRef == NULL)
        return paramErr;
    *outNibRef = NULL;
    NSBundle *bundle = (NSBundle *)inBundle;
    NSString *path = nil;
    for (size_t i = 0; path == nil && i < sizeof kNibExtensions / sizeof kNibExtensions[0]; ++i)
        path = [bundle pathForResource:(NSString *)inNibName ofType:kNibExtensions[i]];
    if (path == nil)
        return kIBCarbonRuntimeCantFindNibFile;
    NSNib *nib = nil;
    @try {
        nib = [[NSNib alloc] initWithContentsOfURL:[NSURL fileURLWithPath:path]];
    } @catch (NSException *exception) {
        nib = nil;
    }
    if (nib == nil)
        return kIBCarbonRuntimeCantFindNibFile;
    KORUNibReference *reference = [[KORUNibReference alloc] init];
    reference->mNib = nib;
    *outNibRef = (IBNibRef)reference;
    return noErr;
}

OSStatus CreateNibReference(CFStringRef inNibName, IBNibRef *outNibRef)
{
    return CreateNibReferenceWithCFBundle((CFBundleRef)[NSBundle mainBundle], inNibName, outNibRef);
}

void DisposeNibReference(IBNibRef inNibRef)
{
    [(KORUNibReference *)inNibRef release];
}

/* Makes the file's objects and hands out the named one with a reference for
 * the caller; the other top-level objects are given up (what still holds
 * them, such as the menu bar, keeps them). */
static OSStatus CreateNamedObject(IBNibRef inNibRef, CFStringRef inName, Class kind, id *outObject)
{
    if (inNibRef == NULL || inName == NULL || outObject == NULL)
        return paramErr;
    *outObject = nil;
    KORUNibOwner *owner = [[KORUNibOwner alloc] init];
    NSArray *topLevelObjects = nil;
    OSStatus status = kIBCarbonRuntimeCantFindObject;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    @try {
        if ([((KORUNibReference *)inNibRef)->mNib instantiateNibWithOwner:owner
                                                          topLevelObjects:&topLevelObjects])
            [topLevelObjects retain];
        else
            topLevelObjects = nil;
    } @catch (NSException *exception) {
        topLevelObjects = nil;
    }
    [pool release];
    id object = [owner objectNamed:(NSString *)inName];
    if (object == nil)
        status = kIBCarbonRuntimeCantFindObject;
    else if (![object isKindOfClass:kind])
        status = kIBCarbonRuntimeObjectNotOfRequestedType;
    else {
        *outObject = [object retain];
        status = noErr;
    }
    /* Top-level objects come with one reference for the loader. */
    for (id topLevelObject in topLevelObjects)
        [topLevelObject release];
    [topLevelObjects release];
    [owner release];
    return status;
}

OSStatus CreateWindowFromNib(IBNibRef inNibRef, CFStringRef inName, WindowRef *outWindow)
{
    if (outWindow == NULL)
        return paramErr;
    id window = nil;
    OSStatus status = CreateNamedObject(inNibRef, inName, [NSWindow class], &window);
    /* The caller owns the window and lets it go with DisposeWindow, which
     * closes it first: closing must not release it as well. */
    [(NSWindow *)window setReleasedWhenClosed:NO];
    *outWindow = (WindowRef)window;
    return status;
}

OSStatus CreateMenuFromNib(IBNibRef inNibRef, CFStringRef inName, MenuRef *outMenuRef)
{
    if (outMenuRef == NULL)
        return paramErr;
    id menu = nil;
    OSStatus status = CreateNamedObject(inNibRef, inName, [NSMenu class], &menu);
    *outMenuRef = (MenuRef)menu;
    return status;
}

OSStatus SetMenuBarFromNib(IBNibRef inNibRef, CFStringRef inName)
{
    MenuRef menu = NULL;
    OSStatus status = CreateMenuFromNib(inNibRef, inName, &menu);
    if (status != noErr)
        return status;
    status = SetRootMenu(menu);
    ReleaseMenu(menu);
    return status;
}
