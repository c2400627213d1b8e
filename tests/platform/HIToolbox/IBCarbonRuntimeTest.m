/* Windows and menus from the interface file of a test bundle, named by the
 * outlets of its owner. */
#import "KTest.h"
#import "KGUI.h"

#include <HIToolbox/HIView.h>
#include <HIToolbox/IBCarbonRuntime.h>
#include <HIToolbox/MacWindows.h>

static CFBundleRef TestBundle(void)
{
    NSString *path = [NSString stringWithFormat:@"%s/platform/HIToolbox/TestBundle", KORU_TEST_SOURCE_DIR];
    return (CFBundleRef)[NSBundle bundleWithPath:path];
}

KT_CASE(WindowsAndMenusComeByName)
{
    KGUISharedApplication();
    IBNibRef nib = NULL;
    KT_ASSERT(CreateNibReferenceWithCFBundle(TestBundle(), CFSTR("main"), &nib) == noErr && nib != NULL);
    WindowRef window = NULL;
    KT_ASSERT(CreateWindowFromNib(nib, CFSTR("MainWindow"), &window) == noErr && window != NULL);
    KT_EXPECT([[(NSWindow *)window title] isEqual:@"Main Window"] && ![(NSWindow *)window isVisible]);
    /* The nested button of the file, found by its tag. */
    HIViewID nestedID = {0, 9};
    HIViewRef nested = NULL;
    KT_EXPECT(HIViewFindByID(HIViewGetRoot(window), nestedID, &nested) == noErr &&
              [(NSView *)nested isKindOfClass:[NSButton class]]);
    /* Every call makes a new window. */
    WindowRef second = NULL;
    KT_EXPECT(CreateWindowFromNib(nib, CFSTR("mainWindow"), &second) == noErr && second != window);
    DisposeWindow(second);
    /* A window the file lets go when closed is still the caller's to dispose
     * of: DisposeWindow takes exactly the caller's reference. */
    KT_ASSERT(CreateWindowFromNib(nib, CFSTR("PlainWindow"), &second) == noErr);
    NSUInteger held = [[[(NSWindow *)second retain] retain] retainCount];
    DisposeWindow(second);
    NSUInteger left = [(NSWindow *)second retainCount];
    KT_EXPECT(left == held - 1);
    while (left-- > 0)
        [(NSWindow *)second release];

    MenuRef menu = NULL;
    KT_EXPECT(CreateMenuFromNib(nib, CFSTR("MenuBar"), &menu) == noErr && CountMenuItems(menu) >= 2 &&
              [(NSMenu *)menu itemWithTitle:@"Edit"] != nil);
    ReleaseMenu(menu);
    KT_EXPECT(SetMenuBarFromNib(nib, CFSTR("MenuBar")) == noErr);
    MenuRef root = AcquireRootMenu();
    KT_EXPECT([(NSMenu *)root itemWithTitle:@"Edit"] != nil);
    ReleaseMenu(root);

    KT_EXPECT(CreateWindowFromNib(nib, CFSTR("NoSuchWindow"), &second) == kIBCarbonRuntimeCantFindObject &&
              second == NULL);
    KT_EXPECT(CreateWindowFromNib(nib, CFSTR("Field"), &second) == kIBCarbonRuntimeObjectNotOfRequestedType);
    KT_EXPECT(SetMenuBarFromNib(nib, CFSTR("MainWindow")) == kIBCarbonRuntimeObjectNotOfRequestedType);
    KT_EXPECT(CreateWindowFromNib(NULL, CFSTR("MainWindow"), &second) == paramErr &&
              CreateWindowFromNib(nib, NULL, &second) == paramErr);
    DisposeNibReference(nib);
    DisposeWindow(window);
}

KT_CASE(MissingFilesAreRefused)
{
    KGUISharedApplication();
    IBNibRef nib = (IBNibRef)1;
    KT_EXPECT(CreateNibReferenceWithCFBundle(TestBundle(), CFSTR("absent"), &nib) == kIBCarbonRuntimeCantFindNibFile &&
              nib == NULL);
    KT_EXPECT(CreateNibReference(CFSTR("absent"), &nib) == kIBCarbonRuntimeCantFindNibFile);
    KT_EXPECT(CreateNibReferenceWithCFBundle(NULL, CFSTR("main"), &nib) == paramErr &&
              CreateNibReferenceWithCFBundle(TestBundle(), NULL, &nib) == paramErr);
    KT_EXPECT(SetRootMenu(NULL) == paramErr && ReleaseMenu(NULL) == paramErr && CountMenuItems(NULL) == 0);
    DisposeNibReference(NULL);
}

KT_MAIN()
