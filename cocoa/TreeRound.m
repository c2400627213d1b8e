/* TreeRound: breadth-first walks over folder trees.
 *
 * A folder is listed as the file manager's directoryContentsAtPath: lists it
 * (every entry but "." and "..", in the order the file system gives them,
 * nothing for a path that is no readable folder), read here straight from
 * readdir: the entry types it reports spare a look at every plain file of
 * the next level, which lists nothing. */
#import <KORU/TreeRound.h>

#import "FoundationXSupport.h"

#include <dirent.h>
#include <stdlib.h>
#include <string.h>

/* One level of the walk: paths, and for each whether it is known to be a
 * plain file (a regular file as its folder listed it). */
typedef struct {
    NSMutableArray *paths;
    unsigned char *plain;
    NSUInteger capacity;
} Level;

static BOOL LevelInit(Level *level)
{
    level->paths = [[NSMutableArray alloc] init];
    level->plain = NULL;
    level->capacity = 0;
    return level->paths != nil;
}

static void LevelFree(Level *level)
{
    [level->paths release];
    level->paths = nil;
    free(level->plain);
    level->plain = NULL;
    level->capacity = 0;
}

static void LevelAdd(Level *level, NSString *path, BOOL plain)
{
    NSUInteger count = [level->paths count];
    if (count == level->capacity) {
        NSUInteger capacity = level->capacity > 0 ? level->capacity * 2 : 256;
        unsigned char *grown = realloc(level->plain, capacity);
        if (grown == NULL)
            [NSException raise:NSMallocException format:@"no memory for a level of %lu paths", (unsigned long)count];
        level->plain = grown;
        level->capacity = capacity;
    }
    [level->paths addObject:path];
    level->plain[count] = plain ? 1 : 0;
}

/* The folder's entries: names (file-system bytes, one block, each ended by
 * a NUL) and whether each is a regular file.  NO when it cannot be listed. */
typedef struct {
    char *names;
    size_t length, capacity;
    NSUInteger count;
    NSMutableData *regular;
    char *scratch; /* where paths are put together */
    size_t scratchCapacity;
} Listing;

static BOOL ListFolder(const char *folder, Listing *listing)
{
    DIR *dir = opendir(folder);
    if (dir == NULL)
        return NO;
    struct dirent *entry;
    while ((entry = readdir(dir)) != NULL) {
        const char *name = entry->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        size_t size = strlen(name) + 1;
        if (listing->length + size > listing->capacity) {
            size_t capacity = listing->capacity > 0 ? listing->capacity * 2 : 4096;
            while (capacity < listing->length + size)
                capacity *= 2;
            char *grown = realloc(listing->names, capacity);
            if (grown == NULL) {
                closedir(dir);
                [NSException raise:NSMallocException format:@"no memory to list %s", folder];
            }
            listing->names = grown;
            listing->capacity = capacity;
        }
        memcpy(listing->names + listing->length, name, size);
        listing->length += size;
        unsigned char regular = entry->d_type == DT_REG;
        [listing->regular appendBytes:&regular length:1];
        listing->count++;
    }
    closedir(dir);
    return YES;
}

@implementation TreeRound

/* Lists folder and asks the delegate about each entry; the verdicts say what
 * joins next.  YES when the delegate stopped the walk. */
static BOOL WalkFolder(NSString *folder, id delegate, Level *next, Listing *listing)
{
    NSFileManager *manager = [NSFileManager defaultManager];
    listing->length = 0;
    listing->count = 0;
    [listing->regular setLength:0];
    if (![folder isKindOfClass:[NSString class]] || [folder length] == 0 ||
        !ListFolder([folder fileSystemRepresentation], listing))
        return NO;
    const unsigned char *regular = [listing->regular bytes];
    const char *name = listing->names;
    /* Each path is the folder's part, as stringByAppendingPathComponent:
     * makes it for an ordinary name, followed by the entry's own name.  The
     * folder's part comes from a name of no special meaning: GNUstep reads
     * names such as "c:", "a:b" or "x\\" as Windows path syntax (some of them
     * give back the folder itself, which would be listed again and again),
     * and such an entry may be the first one listed. */
    NSString *probe = [folder stringByAppendingPathComponent:@"x"];
    const char *prefixBytes = [[probe substringToIndex:[probe length] - 1] fileSystemRepresentation];
    size_t prefixLength = strlen(prefixBytes);
    if (prefixLength + 256 > listing->scratchCapacity) {
        char *grown = realloc(listing->scratch, prefixLength + 256);
        if (grown == NULL)
            [NSException raise:NSMallocException format:@"no memory for a path"];
        listing->scratch = grown;
        listing->scratchCapacity = prefixLength + 256;
    }
    memcpy(listing->scratch, prefixBytes, prefixLength);
    for (NSUInteger k = 0; k < listing->count; k++) {
        size_t nameLength = strlen(name);
        if (prefixLength + nameLength > listing->scratchCapacity) {
            size_t capacity = 2 * (prefixLength + nameLength);
            char *grown = realloc(listing->scratch, capacity);
            if (grown == NULL)
                [NSException raise:NSMallocException format:@"no memory for a path"];
            listing->scratch = grown;
            listing->scratchCapacity = capacity;
        }
        memcpy(listing->scratch + prefixLength, name, nameLength);
        NSString *path = [manager stringWithFileSystemRepresentation:listing->scratch length:prefixLength + nameLength];
        name += nameLength + 1;
        if (path == nil)
            continue; /* a name that is no text in the file-system encoding */
        int verdict = [delegate treeRoundEvaluatePath:path];
        if (verdict == TreeRoundDescend)
            LevelAdd(next, path, regular[k] != 0);
        else if ((verdict & TreeRoundStop) != 0)
            return YES;
        else if ((verdict & TreeRoundSkipFolder) != 0)
            return NO;
    }
    return NO;
}

- (BOOL)start:(NSArray *)folders withDelegate:(id)delegate
{
    if (![folders isKindOfClass:[NSArray class]] || [folders count] == 0 || delegate == nil ||
        ![delegate respondsToSelector:@selector(treeRoundEvaluatePath:)])
        return NO;
    Level level = {nil, NULL, 0}, next = {nil, NULL, 0};
    Listing listing = {NULL, 0, 0, 0, nil, NULL, 0};
    BOOL walked = YES;
    @try {
        listing.regular = [[NSMutableData alloc] init];
        if (!LevelInit(&level))
            [NSException raise:NSMallocException format:@"no memory for the first level"];
        for (id folder in folders)
            LevelAdd(&level, folder, NO);
        BOOL ended = NO;
        while (!ended && [level.paths count] > 0) {
            if (!LevelInit(&next))
                [NSException raise:NSMallocException format:@"no memory for the next level"];
            NSUInteger count = [level.paths count];
            for (NSUInteger k = 0; k < count && !ended; k++) {
                if (level.plain[k])
                    continue; /* a plain file lists nothing */
                /* Not drained when an exception leaves: the enclosing pool
                 * then frees it, after the exception has been reported. */
                NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
                ended = WalkFolder([level.paths objectAtIndex:k], delegate, &next, &listing);
                [pool drain];
            }
            LevelFree(&level);
            level = next;
            next = (Level){nil, NULL, 0};
        }
    } @catch (NSException *exception) {
        KORULogException("-[TreeRound start:withDelegate:]", __LINE__, exception);
        walked = NO;
    }
    LevelFree(&level);
    LevelFree(&next);
    free(listing.names);
    free(listing.scratch);
    [listing.regular release];
    return walked;
}

@end
