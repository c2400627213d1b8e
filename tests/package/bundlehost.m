/* A plain GNUstep host: it links only gnustep-base, loads the installed
 * KORU.bundle with -[NSBundle load] and calls the toolkit through the loaded
 * image, as a plug-in host does. */
#import <Foundation/Foundation.h>
#include <dlfcn.h>
#include <string.h>

/* The toolkit's headers are not used: the host knows only the symbol. */
typedef char *(*AllocASCII)(const void *string);

int main(int argc, char **argv)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    BOOL ok = NO;
    if (argc == 2) {
        NSBundle *bundle = [NSBundle bundleWithPath:[NSString stringWithUTF8String:argv[1]]];
        if (bundle != nil && [bundle load]) {
            void *image = dlopen([[bundle executablePath] fileSystemRepresentation], RTLD_NOW | RTLD_NOLOAD);
            AllocASCII alloc = image ? (AllocASCII)dlsym(image, "CFStringAllocASCIICString") : NULL;
            char *text = alloc ? alloc(@"loaded") : NULL;
            ok = text != NULL && strcmp(text, "loaded") == 0;
            free(text);
            if (image)
                dlclose(image);
        }
    }
    printf("%s\n", ok ? "bundle host: ok" : "bundle host: FAILED");
    [pool drain];
    return ok ? 0 : 1;
}
