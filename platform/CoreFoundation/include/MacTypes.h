/* Basic Mac types with the 64-bit Apple ABI sizes on LP64 Linux.
 *
 * Boolean is one byte, UniChar 16 bits, OSType 32 bits, OSStatus and OSErr
 * signed 32 and 16 bits.  Pascal strings (StrNNN) hold a length byte followed
 * by up to NN bytes.  Everything here is plain C and safe to include from C,
 * C++ and Objective-C. */
#ifndef MACTYPES_H
#define MACTYPES_H

#include <stdint.h>
#include <stddef.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

typedef uint8_t UInt8;
typedef int8_t SInt8;
typedef uint16_t UInt16;
typedef int16_t SInt16;
typedef uint32_t UInt32;
typedef int32_t SInt32;
typedef uint64_t UInt64;
typedef int64_t SInt64;
typedef float Float32;
typedef double Float64;

typedef unsigned char Boolean;
typedef UInt8 Byte;
typedef SInt8 SignedByte;
typedef char *Ptr;
typedef Ptr *Handle;
typedef long Size;
typedef SInt32 Fixed;
typedef Fixed *FixedPtr;
typedef SInt32 Fract;
typedef UInt32 UnsignedFixed;
typedef SInt16 ShortFixed;

typedef SInt16 OSErr;
typedef SInt32 OSStatus;
typedef UInt32 OptionBits;
typedef UInt32 FourCharCode;
typedef FourCharCode OSType;
typedef FourCharCode ResType;
typedef OSType *OSTypePtr;
typedef ResType *ResTypePtr;
typedef unsigned long ByteCount;
typedef unsigned long ByteOffset;
typedef unsigned long ItemCount;
typedef void *LogicalAddress;
typedef const void *ConstLogicalAddress;
typedef SInt32 Duration;
typedef long (*ProcPtr)(void);
typedef ProcPtr UniversalProcPtr;

typedef struct wide {
    UInt32 lo;
    SInt32 hi;
} wide;
typedef struct UnsignedWide {
    UInt32 lo;
    UInt32 hi;
} UnsignedWide;
typedef UnsignedWide AbsoluteTime;

typedef UInt16 UniChar;
typedef UniChar *UniCharPtr;
typedef unsigned long UniCharCount;
typedef UniCharCount *UniCharCountPtr;
typedef UInt32 UTF32Char;
typedef UInt16 UTF16Char;
typedef UInt8 UTF8Char;

typedef unsigned char Str255[256];
typedef unsigned char Str63[64];
typedef unsigned char Str32[33];
typedef unsigned char Str31[32];
typedef unsigned char Str27[28];
typedef unsigned char Str15[16];
typedef unsigned char Str32Field[34];
typedef Str63 StrFileName;
typedef unsigned char *StringPtr;
typedef StringPtr *StringHandle;
typedef const unsigned char *ConstStringPtr;
typedef const unsigned char *ConstStr255Param;
typedef const unsigned char *ConstStr63Param;
typedef const unsigned char *ConstStr32Param;
typedef const unsigned char *ConstStr31Param;
typedef const unsigned char *ConstStr27Param;
typedef const unsigned char *ConstStr15Param;
typedef ConstStr63Param ConstStrFileNameParam;

typedef UInt32 TextEncoding;
typedef SInt16 ScriptCode;
typedef SInt16 LangCode;
typedef SInt16 RegionCode;
typedef short CharParameter;
typedef SInt16 StyleParameter;
typedef SInt16 StyleField;

typedef struct Point {
    short v;
    short h;
} Point;
typedef Point *PointPtr;
typedef struct Rect {
    short top;
    short left;
    short bottom;
    short right;
} Rect;
typedef Rect *RectPtr;

typedef struct NumVersion {
    UInt8 nonRelRev;
    UInt8 stage;
    UInt8 minorAndBugRev;
    UInt8 majorRev;
} NumVersion;

enum { noErr = 0 };
enum { kNilOptions = 0 };
enum { kVariableLengthArray = 1 };
enum { kUnknownType = 0x3F3F3F3F };
enum { normal = 0, bold = 1, italic = 2, underline = 4, outline = 8, shadow = 0x10, condense = 0x20, extend = 0x40 };

#endif
