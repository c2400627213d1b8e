/* An Objective-C host of AppKit built through koru-objc alone: AppKit and
 * the toolkit's AppKit face compile and link, and the geometry and equality
 * functions answer without any window or display. */
#import <AppKit/AppKit.h>
#include <KORU/KORU.h>

int main(void)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSRect rect = NSMakeRect(0, 0, 5, 30);
    NSRectSetHeightResizingBottom(&rect, 10);
    BOOL ok = NSEqualRects(rect, NSMakeRect(0, 20, 5, 10)) && !NSIsEqual(nil, nil)
              && [NSView instancesRespondToSelector:@selector(useInView:)]
              && [NSTableView instancesRespondToSelector:@selector(bottomSelectedRow)];
    printf("%s\n", ok ? "appkit host: ok" : "appkit host: FAILED");
    [pool drain];
    return ok ? 0 : 1;
}
