/* An Objective-C program outside the tree, built through koru-objc.  It
 * catches a Foundation exception with @try, which needs the package's
 * -fobjc-exceptions. */
#import <Foundation/Foundation.h>
#include <KORU/KORU.h>

int main(void)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSString *text = [NSString stringWithFormat:@"toll-free %d", 1];
    CFStringRef cf = (CFStringRef)text;
    BOOL ok = CFGetTypeID(cf) == CFStringGetTypeID() && CFStringGetLength(cf) == 11;
    CFStringRef made = CFStringCreateWithCString(NULL, "made in CF", kCFStringEncodingUTF8);
    ok = ok && [(NSString *)made hasSuffix:@"CF"];
    CFRelease(made);
    BOOL caught = NO;
    @try {
        [[NSArray array] objectAtIndex:3];
    } @catch (NSException *e) {
        caught = [[e name] isEqualToString:NSRangeException];
    }
    ok = ok && caught;
    printf("%s\n", ok ? "objc consumer: ok" : "objc consumer: FAILED");
    [pool drain];
    return ok ? 0 : 1;
}
