/* An Objective-C program outside the tree, built against the installed package. */
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
    printf("%s\n", ok ? "objc consumer: ok" : "objc consumer: FAILED");
    [pool drain];
    return ok ? 0 : 1;
}
