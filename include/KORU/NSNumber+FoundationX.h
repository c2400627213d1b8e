/* NSNumber(FoundationX): shared boolean numbers.  They are made on first use
 * and kept in the exit pool (ExitPool.h) until the process exits; make the
 * first call from the main thread. */
#import <Foundation/Foundation.h>

@interface NSNumber (FoundationX)

/* The shared YES / NO number (boolValue YES / NO); never released by a caller. */
+ (NSNumber *)yesNumber;
+ (NSNumber *)noNumber;

@end
