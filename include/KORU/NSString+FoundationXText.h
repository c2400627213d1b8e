/* NSString and NSMutableString, text face of the FoundationX methods:
 * whole text files in a chosen encoding, strings enciphered with the buffer
 * cipher of MemoryCipher.h, localisation through fall-back tables, lines,
 * hexadecimal, UTF-8 buffers for C code, byte-wise character classes,
 * searching, cutting and replacing, the first integer in a text, encoding
 * names, and thin bridges to system, setenv and vsscanf.
 *
 * The path, file-kind and process methods of the same family live in
 * NSString+FoundationX.h.  The two halves are separate categories
 * (FoundationX there, FoundationXText here) because the compiler allows
 * one interface and one implementation per category name; the debug lines
 * name both "-[NSString(FoundationX) ...]".
 *
 * No method raises.  Methods answer autoreleased objects unless their name
 * says alloc or init.  Character tests are C functions such as isxdigit;
 * they see UTF-8 bytes, each as a signed char, so text outside ASCII is
 * tested byte by byte.  Searches treat an empty argument as not found.
 * Not thread-safe beyond what Foundation's strings are; the cipher methods
 * share the process-wide key of MemoryCipher.h. */
#ifndef KORU_NSSTRING_FOUNDATIONXTEXT_H
#define KORU_NSSTRING_FOUNDATIONXTEXT_H

#import <Foundation/Foundation.h>

#include <stdarg.h>

/* The value handed to the bundle's lookup by the fall-back localisation, so
 * that a missing key can be told from a translation. */
extern NSString *const NO_SUCH_STRING_OF_KEY;

@interface NSString (FoundationXText)

/* The text of the file at path decoded in encoding; nil (the receiver
 * released) for a nil path, a path that does not exist, a file that cannot
 * be read or bytes that do not decode.  A leading tilde is expanded for the
 * existence test only: the file is read at path as given. */
- (id)initWithTextFile:(NSString *)path encoding:(NSStringEncoding)encoding;
+ (id)stringWithTextFile:(NSString *)path encoding:(NSStringEncoding)encoding;

/* Writes the receiver in encoding to path as NSData writes files; NO for a
 * nil path or when the text cannot be encoded (lossy only when allowed). */
- (BOOL)writeAsTextFile:(NSString *)path
               encoding:(NSStringEncoding)encoding
   allowLossyConversion:(BOOL)lossy
             atomically:(BOOL)atomically;

/* The UTF-8 bytes (no terminator) enciphered under the 8-byte key and
 * zero-padded to a multiple of 8; empty data for an empty receiver; nil for
 * a NULL key or when enciphering fails. */
- (NSData *)encryptedData:(const char *)key;

/* The string deciphered from data under the 8-byte key, up to its first zero
 * byte (the padding of encryptedData:); an empty string for nil or empty
 * data; nil (the receiver released) when deciphering fails or the bytes are
 * not UTF-8. */
- (id)initWithEncryptedData:(NSData *)data decryptKey:(const char *)key;
+ (id)stringWithEncryptedData:(NSData *)data decryptKey:(const char *)key;

/* The receiver (a key) looked up in the main bundle's default table, with
 * itself as the answer when the key is missing. */
- (NSString *)localize;

/* The receiver looked up in table (nil: the default table) of bundle (nil:
 * the main bundle), answering value when the key is missing. */
- (NSString *)localize:(NSBundle *)bundle table:(NSString *)table value:(NSString *)value;

/* The receiver looked up in bundle (nil: the main bundle) in the tables in
 * turn, the first one always, the further ones up to a nil entry: the first
 * translation found; value, or "" for nil, when no table has the key.  A nil
 * first table stands for the default table; in the variadic form it also
 * ends the list.  The first table is tried even when the list is empty. */
- (NSString *)localize:(NSBundle *)bundle value:(NSString *)value tables:(NSString *)firstTable, ...;
- (NSString *)localize:(NSBundle *)bundle value:(NSString *)value table:(NSString *)firstTable tablesv:(va_list)tables;

/* The text split into lines, after "\r\n" and then "\r" became "\n"; a
 * trailing line end gives a last empty line; nil on failure. */
- (NSMutableArray *)lines;

/* The bytes written as pairs of hexadecimal digits (either case): an odd
 * last digit is ignored, an empty string gives empty data; nil when any
 * character is not a hexadecimal digit. */
- (NSMutableData *)dataFromHexadecimalString;

/* The UTF-8 form with its terminator in memory that the caller frees with
 * free; NULL when the string has no UTF-8 form. */
- (char *)allocUTF8String;

/* Copies the UTF-8 form with its terminator into buffer of size bytes and
 * answers YES when it fits; otherwise the first size - 1 bytes (cut where
 * they fall, even inside a character) and a zero, and NO.  NO, buffer
 * untouched, for a NULL buffer, size 0 or no UTF-8 form. */
- (BOOL)getUTF8String:(char *)buffer maxLength:(NSUInteger)size;

/* As getUTF8String:maxLength: but without terminator: all bytes and YES
 * when they fit, otherwise exactly size bytes and NO. */
- (BOOL)memmoveUTF8String:(void *)buffer maxLength:(NSUInteger)size;

/* The byte length of the UTF-8 form; 0 when there is none. */
- (NSUInteger)size;

/* YES when test answers nonzero for every UTF-8 byte (so for an empty
 * string); NO for a NULL test or no UTF-8 form. */
- (BOOL)allChracterIs:(int (*)(int))test;

/* A mutable copy with filterChracters: applied (unfiltered for a NULL test). */
- (NSMutableString *)chractersFilteredString:(int (*)(int))test;

/* A mutable copy with setLength:withFillString: applied. */
- (NSMutableString *)stringBySetLength:(NSUInteger)length withFillString:(NSString *)fill;

/* YES when the receiver contains string (options as for rangeOfString:);
 * NO for nil. */
- (BOOL)contains:(NSString *)string;
- (BOOL)contains:(NSString *)string options:(NSStringCompareOptions)options;

/* The index just past the first occurrence of string; NSNotFound when there
 * is none or string is nil. */
- (NSUInteger)offsetAfterString:(NSString *)string;
- (NSUInteger)offsetAfterString:(NSString *)string options:(NSStringCompareOptions)options;

/* The text after the first occurrence of string; nil when there is none or
 * string is nil. */
- (NSString *)substringAfterString:(NSString *)string options:(NSStringCompareOptions)options;

/* A mutable copy with find:andReplaceAll: applied. */
- (NSMutableString *)find:(NSString *)target andReplaceAllString:(NSString *)replacement;

/* Stores in *front a mutable copy of the first index characters and in
 * *back one of the rest; stores nothing when a pointer is NULL or index is
 * past the end. */
- (void)devideAtIndex:(NSUInteger)index front:(NSMutableString **)front back:(NSMutableString **)back;

/* The first run of decimal digits as an int (signs and later runs ignored;
 * a run too large for an int gives INT_MAX); the number 0, never nil, when
 * there are no digits. */
- (NSNumber *)intNumber;

/* The localised names of the available encodings, in Foundation's order. */
+ (NSMutableArray *)availableStringEncodingLocalizedNames;

/* The first available encoding whose localised name is name; 0 for none. */
+ (NSStringEncoding)stringEncodingForLocalizedName:(NSString *)name;

/* system(3) of the UTF-8 form: the shell's status as system answers it;
 * -1 when there is no UTF-8 form. */
- (int)system;

/* setenv(3) with the receiver as the name: 0 or -1 as setenv answers; -1
 * for a NULL value or no UTF-8 form. */
- (int)setenv:(const char *)value overwrite:(int)overwrite;

/* vsscanf(3) over the UTF-8 form: the number of fields stored, or EOF;
 * -1 for a NULL format or list or no UTF-8 form. */
- (int)sscanf:(const char *)format, ...;
- (int)vsscanf:(const char *)format arguments:(va_list)arguments;

@end

@interface NSMutableString (FoundationXText)

/* Makes the text empty. */
- (void)empty;

/* Replaces the text with the UTF-8 C string; no change for NULL or bytes
 * that are not UTF-8. */
- (void)setUTF8String:(const char *)string;

/* Cuts the text to length characters, or extends it with repetitions of
 * fill (nil or empty: " ") and cuts that to length. */
- (void)setLength:(NSUInteger)length withFillString:(NSString *)fill;

/* Removes the suffix (prefix) and answers YES when the text has it;
 * otherwise NO and no change. */
- (BOOL)deleteIfEndWith:(NSString *)suffix;
- (BOOL)deleteIfStartWith:(NSString *)prefix;

/* Deletes, from the end toward the start, each character whose index holds
 * a UTF-8 byte that test rejects: the byte at the same index as the
 * character, so outside ASCII the pairing is byte-wise and kept so.  YES
 * when something was deleted; NO for a NULL test or no UTF-8 form. */
- (BOOL)filterChracters:(int (*)(int))test;

/* The text before the first occurrence of string, removed from the
 * receiver together with that occurrence; nil and no change when string
 * does not occur or is nil. */
- (NSString *)deleteToSubstring:(NSString *)string;

/* Replaces every occurrence of target by replacement, working from the end
 * toward the start so that replaced text is never searched again (aaa with
 * aa by b gives ab).  The number of replacements; 0 for nil arguments. */
- (NSUInteger)find:(NSString *)target andReplaceAll:(NSString *)replacement;

@end

#endif
