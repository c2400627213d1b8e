/* Loading a 4000 x 3000 photograph from a bundle's resources as an image:
 * CGImageCreateWithBundleResource against GNUstep's own NSImage
 * initWithContentsOfFile: of the same file, as PNG and as JPEG.
 *
 * The picture (smooth colour fields with fine noise, as a photograph has)
 * is made once with ImageMagick in a bundle under $TMPDIR (or /tmp), which
 * is removed afterwards.  Both sides decode every pixel: NSImage loads its
 * bitmap when it is made.  Each side runs five times, alternating, and its
 * best run counts; the ratio is toolkit / GNUstep (below 1 means the
 * toolkit is faster). */
#import <AppKit/AppKit.h>
#include <KORU/BundleImages.h>

#include <stdio.h>
#include <stdlib.h>
#include <time.h>

enum { kRuns = 5 };

static double Now(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec + now.tv_nsec / 1e9;
}

static BOOL Measure(CFBundleRef bundle, NSString *resources, NSString *type)
{
    NSString *path = [resources stringByAppendingPathComponent:[@"photo" stringByAppendingPathExtension:type]];
    double best[2] = {1e9, 1e9};
    for (int run = 0; run < kRuns; run++) {
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        double start = Now();
        CGImageRef image = CGImageCreateWithBundleResource(CFSTR("photo"), (CFStringRef)type, bundle);
        double toolkit = Now() - start;
        size_t width = CGImageGetWidth(image);
        CGImageRelease(image);
        start = Now();
        NSImage *picture = [[NSImage alloc] initWithContentsOfFile:path];
        double gnustep = Now() - start;
        NSImageRep *rep = [[picture representations] lastObject];
        BOOL decoded = [rep isKindOfClass:[NSBitmapImageRep class]] && [(NSBitmapImageRep *)rep bitmapData] != NULL &&
                       [rep pixelsWide] == 4000;
        [picture release];
        [pool drain];
        if (width != 4000 || !decoded) {
            fprintf(stderr, "the %s picture did not load\n", [type UTF8String]);
            return NO;
        }
        best[0] = toolkit < best[0] ? toolkit : best[0];
        best[1] = gnustep < best[1] ? gnustep : best[1];
    }
    printf("4000 x 3000 %s from a bundle resource\n", [[type uppercaseString] UTF8String]);
    printf("  CGImageCreateWithBundleResource:  %.3f s\n", best[0]);
    printf("  NSImage initWithContentsOfFile:   %.3f s\n", best[1]);
    printf("  ratio: %.2fx (goal <= 1.0x)\n", best[0] / best[1]);
    return YES;
}

int main(void)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    const char *tmp = getenv("TMPDIR");
    char root[4096];
    snprintf(root, sizeof root, "%s/koru-imagebench-XXXXXX", tmp != NULL && *tmp != '\0' ? tmp : "/tmp");
    if (mkdtemp(root) == NULL) {
        perror("mkdtemp");
        return 1;
    }
    NSString *bundlePath = [[NSString stringWithUTF8String:root] stringByAppendingPathComponent:@"Photos.bundle"];
    NSString *resources = [bundlePath stringByAppendingPathComponent:@"Resources"];
    [[NSFileManager defaultManager] createDirectoryAtPath:resources withIntermediateDirectories:YES attributes:nil
                                                    error:NULL];
    [@"{ CFBundleIdentifier = org.koru.bench.photos; }" writeToFile:[resources stringByAppendingPathComponent:
                                                                        @"Info-gnustep.plist"]
                                                         atomically:NO encoding:NSUTF8StringEncoding error:NULL];
    NSString *make = [NSString stringWithFormat:
        @"cd '%@' && convert -size 500x375 plasma:fractal -seed 3 -resize '4000x3000!' -attenuate 0.3 "
        @"+noise Gaussian -depth 8 -strip photo.png && convert photo.png -quality 90 photo.jpg", resources];
    int status = system([make UTF8String]);
    CFBundleRef bundle = (CFBundleRef)[NSBundle bundleWithPath:bundlePath];
    BOOL ok = status == 0 && bundle != NULL && Measure(bundle, resources, @"png") && Measure(bundle, resources, @"jpg");
    system([[NSString stringWithFormat:@"rm -rf '%s'", root] UTF8String]);
    [pool drain];
    return ok ? 0 : 1;
}
