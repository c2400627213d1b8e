/* NSFileManager(FoundationX). */
#import <KORU/NSFileManager+FoundationX.h>

@implementation NSFileManager (FoundationX)

- (void)enumerateSubpathsAtPath:(NSString *)path withFunction:(NSFileManagerSubpathFunction)function
                       userdata:(void *)userdata
{
    if (![path isKindOfClass:[NSString class]] || function == NULL)
        return;
    for (NSString *subpath in [self subpathsAtPath:path]) {
        if (!function(path, subpath, userdata))
            break;
    }
}

@end
