/* NSArray(FoundationX) and NSMutableArray(FoundationX): arrays from bundle
 * resources and XML property-list data, a membership test with a comparison
 * selector, sorted insertion, insert-or-add, and moving a block of elements.
 *
 * No method raises: bad arguments give the neutral answer given below.  The
 * mutating methods belong to one thread at a time, as NSMutableArray does. */
#import <Foundation/Foundation.h>

@interface NSArray (FoundationX)

/* The array stored in the bundle resource name (its extension included);
 * a nil bundle means the main bundle.  nil (the receiver released) for a nil
 * name, a missing resource or one that holds no array. */
- (id)initWithResource:(NSString *)name ofBundle:(NSBundle *)bundle;
+ (id)arrayWithResource:(NSString *)name ofBundle:(NSBundle *)bundle;

/* The array a property list holds in data (XML or any other form the
 * platform reads).  nil (the receiver released) when data does not parse,
 * with the parser's complaint on the log, or holds no array. */
- (id)initWithXMLData:(NSData *)data;
+ (id)arrayWithXMLData:(NSData *)data;

/* YES when some element, sent selector with object as its argument, answers
 * 0 (the same, in the manner of compare:).  Elements that do not answer the
 * selector, or raise while comparing, are passed over; NO for a nil object
 * or a NULL selector. */
- (BOOL)containsObject:(id)object usingSelector:(SEL)selector;

@end

@interface NSMutableArray (FoundationX)

/* The element at index, retained for the caller, after removing it from the
 * receiver; nil for an index outside the array. */
- (id)copyRemoveObjectAtIndex:(NSUInteger)index;

/* Inserts object before the first element it does not exceed (selector
 * answering anything but NSOrderedDescending; a NULL selector means
 * compare:), or at the end; answers the index used.  0, and nothing
 * inserted, for a nil object or when the comparison fails. */
- (NSUInteger)insertObject:(id)object atIndexUsingSelector:(SEL)selector;

/* Inserts the elements of array at index in their order; appends them when
 * index is at or past the end.  Nothing for a nil or empty array. */
- (void)insertObjectsFromArray:(NSArray *)array atIndex:(NSUInteger)index;

/* Inserts object at index and answers YES when index lies within the array;
 * otherwise appends it and answers NO.  NO and nothing done for nil. */
- (BOOL)insertOrAddObject:(id)object atIndex:(NSUInteger)index;

/* Replaces the element at index and answers YES when index lies within the
 * array; otherwise appends object and answers NO.  NO for nil. */
- (BOOL)replaceOrAddObjectAtIndex:(NSUInteger)index withObject:(id)object;

/* Moves the elements at the indexes listed in indexes (unsigned 32-bit
 * integers in native byte order, ascending) as one block to target, an index
 * of the array as it was before the move.  Within the array the block keeps
 * its order; a target past the end appends the elements one by one from the
 * last listed, which leaves the block reversed at the end (so (A, B, C, D, E)
 * with 1 and 3 moved to 9 gives (A, C, E, D, B)).  YES when done, also when
 * nothing was listed; NO, and the array untouched, for an index outside the
 * array or a list that is not strictly ascending; NO for a caught exception. */
- (BOOL)moveObjects:(NSData *)indexes toIndex:(NSUInteger)target;

@end
