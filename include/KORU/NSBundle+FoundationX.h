/* NSBundle(FoundationX): paths beside a bundle and its executable, and a
 * name that identifies the bundle.  nil for a nil name. */
#import <Foundation/Foundation.h>

@interface NSBundle (FoundationX)

/* The folder of the bundle's executable with name appended; nil when the
 * bundle has no executable. */
- (NSString *)executablePath:(NSString *)name;

/* The folder that contains the bundle. */
- (NSString *)directoryPath;

/* directoryPath with name appended: a file beside the bundle. */
- (NSString *)neighborPath:(NSString *)name;

/* The bundle identifier; without one, the bundle folder's name without its
 * extension. */
- (NSString *)identifiedName;

@end
