/* NSDictionary(FoundationX) and NSMutableDictionary(FoundationX):
 * dictionaries from bundle resources and XML property-list data, values
 * found through nested dictionaries, number keys, and moving, exchanging and
 * defaulting values.
 *
 * A number key is the NSString of the number in the format "%ld".  No method
 * raises: bad arguments give the neutral answer given below. */
#import <Foundation/Foundation.h>

#include <stdarg.h>

@interface NSDictionary (FoundationX)

/* The dictionary stored in the bundle resource name (its extension
 * included); a nil bundle means the main bundle.  nil (the receiver
 * released) for a nil name, a missing resource or one that holds no
 * dictionary. */
- (id)initWithResource:(NSString *)name ofBundle:(NSBundle *)bundle;
+ (id)dictionaryWithResource:(NSString *)name ofBundle:(NSBundle *)bundle;

/* The dictionary a property list holds in data.  nil (the receiver
 * released) when data does not parse, with the parser's complaint on the
 * log, or holds no dictionary. */
- (id)initWithXMLData:(NSData *)data;
+ (id)dictionaryWithXMLData:(NSData *)data;

/* Follows the keys through nested dictionaries: the value of the first key
 * in the receiver, the value of the second key in that, and so on.  nil as
 * soon as a key has no value or a value on the way is not a dictionary.
 * The list ends with nil; with no keys at all the receiver is the answer. */
- (id)objectForKeys:(id)firstKey, ...;
/* The same with the keys after firstKey in a variable-argument list. */
- (id)objectForKeys:(id)firstKey arguments:(va_list)arguments;
/* The same with the keys in a C array that ends with nil; nil for NULL. */
- (id)objectForKeyStrings:(NSString **)keys;

/* The value under the number key of number; nil when there is none. */
- (id)objectForNumber:(long)number;

@end

@interface NSMutableDictionary (FoundationX)

/* The value of key, retained for the caller, after removing it; nil for a
 * nil key or when there is no value. */
- (id)copyRemoveObjectForKey:(id)key;

/* Moves the value of key to newKey, unless replace is NO and newKey already
 * has a value (then nothing changes).  Always answers NO, moved or not;
 * callers ignore the answer. */
- (BOOL)changeKey:(id)key toKey:(id)newKey replace:(BOOL)replace;

/* Stores object under key when it is not nil and answers the value stored
 * before (autoreleased, nil when there was none); nil for a nil key. */
- (id)exchangeObject:(id)object forKey:(id)key;

/* The value of key; when there is none and spare is given, spare is stored
 * under key and answered.  nil for a nil key. */
- (id)objectForKey:(id)key withSpare:(id)spare;

/* Stores object under the number key of number; nothing for a nil object. */
- (void)setObject:(id)object forNumber:(long)number;

@end
