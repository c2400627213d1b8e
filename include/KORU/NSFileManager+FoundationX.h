/* NSFileManager(FoundationX): walking the subpaths of a folder with a C
 * callback. */
#import <Foundation/Foundation.h>

/* Called with the folder walked, one subpath of it (relative to the folder)
 * and the caller's userdata; answering NO stops the walk. */
typedef BOOL (*NSFileManagerSubpathFunction)(NSString *path, NSString *subpath, void *userdata);

@interface NSFileManager (FoundationX)

/* Calls function for each entry of subpathsAtPath: in order, until it
 * answers NO.  Nothing for a nil path or function, or a path that cannot be
 * read. */
- (void)enumerateSubpathsAtPath:(NSString *)path withFunction:(NSFileManagerSubpathFunction)function
                       userdata:(void *)userdata;

@end
