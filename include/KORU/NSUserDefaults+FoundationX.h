/* NSUserDefaults(FoundationX): a check-box state from a boolean default,
 * mutable copies of stored arrays and dictionaries, and clearing the
 * application's defaults.  No method raises. */
#import <Foundation/Foundation.h>

@interface NSUserDefaults (FoundationX)

/* 1 (on) when boolForKey: is YES, else 0 (off): the state of a check box. */
- (NSInteger)cellStateForBoolKey:(NSString *)key;

/* A deep mutable copy (containers and leaves) of the array / dictionary
 * stored under key, autoreleased; a new empty mutable array / dictionary
 * when key is nil or holds no value of that kind. */
- (NSMutableArray *)mutableArrayForKey:(NSString *)key;
- (NSMutableDictionary *)mutableDictionaryForKey:(NSString *)key;

/* Removes every key that dictionaryRepresentation shows with
 * removeObjectForKey: (so what the application itself stored) and
 * synchronises. */
- (void)removeAllObject;

@end
