/* CFUUID over NSUUID.  UUIDs are uniqued: a table maps the 16 bytes to the
 * one live object, and constant UUIDs are kept for the process's life. */
#include "CFInternal.h"
#include <pthread.h>
#include <stdio.h>
#include <string.h>

CFTypeID CFUUIDGetTypeID(void)
{
    return __kCFUUIDTypeID;
}

static pthread_mutex_t __CFUUIDLock = PTHREAD_MUTEX_INITIALIZER;
static NSMutableDictionary *__CFUUIDConstants;

static CFUUIDRef __CFUUIDCreateFromRawBytes(const UInt8 bytes[16])
{
    return (CFUUIDRef)[[NSUUID alloc] initWithUUIDBytes:(unsigned char *)bytes];
}

/* A random UUID with the version (4) and variant (RFC 4122) bits set;
 * Foundation's own generator here leaves them random. */
CFUUIDRef CFUUIDCreate(CFAllocatorRef alloc)
{
    (void)alloc;
    UInt8 bytes[16];
    FILE *random = fopen("/dev/urandom", "rb");
    size_t got = random != NULL ? fread(bytes, 1, sizeof(bytes), random) : 0;
    if (random != NULL)
        fclose(random);
    if (got != sizeof(bytes)) {
        NSUUID *fallback = [[NSUUID alloc] init];
        [fallback getUUIDBytes:bytes];
        [fallback release];
    }
    bytes[6] = (UInt8)((bytes[6] & 0x0F) | 0x40);
    bytes[8] = (UInt8)((bytes[8] & 0x3F) | 0x80);
    return __CFUUIDCreateFromRawBytes(bytes);
}

CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef alloc, CFUUIDBytes bytes)
{
    (void)alloc;
    return __CFUUIDCreateFromRawBytes((const UInt8 *)&bytes);
}

CFUUIDRef CFUUIDCreateWithBytes(CFAllocatorRef alloc, UInt8 byte0, UInt8 byte1, UInt8 byte2, UInt8 byte3,
                                UInt8 byte4, UInt8 byte5, UInt8 byte6, UInt8 byte7, UInt8 byte8, UInt8 byte9,
                                UInt8 byte10, UInt8 byte11, UInt8 byte12, UInt8 byte13, UInt8 byte14, UInt8 byte15)
{
    (void)alloc;
    const UInt8 bytes[16] = {byte0, byte1, byte2,  byte3,  byte4,  byte5,  byte6,  byte7,
                             byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15};
    return __CFUUIDCreateFromRawBytes(bytes);
}

CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef alloc, UInt8 byte0, UInt8 byte1, UInt8 byte2, UInt8 byte3,
                                         UInt8 byte4, UInt8 byte5, UInt8 byte6, UInt8 byte7, UInt8 byte8,
                                         UInt8 byte9, UInt8 byte10, UInt8 byte11, UInt8 byte12, UInt8 byte13,
                                         UInt8 byte14, UInt8 byte15)
{
    CFUUIDRef fresh = CFUUIDCreateWithBytes(alloc, byte0, byte1, byte2, byte3, byte4, byte5, byte6, byte7, byte8,
                                            byte9, byte10, byte11, byte12, byte13, byte14, byte15);
    if (fresh == NULL)
        return NULL;
    CFUUIDRef result;
    pthread_mutex_lock(&__CFUUIDLock);
    if (__CFUUIDConstants == nil)
        __CFUUIDConstants = [[NSMutableDictionary alloc] init];
    result = (CFUUIDRef)[__CFUUIDConstants objectForKey:(id)fresh];
    if (result == NULL) {
        [__CFUUIDConstants setObject:(id)fresh forKey:(id)fresh];
        result = fresh;
    }
    pthread_mutex_unlock(&__CFUUIDLock);
    CFRelease(fresh);
    return result;
}

static int __CFHexValue(UniChar c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

CFUUIDRef CFUUIDCreateFromString(CFAllocatorRef alloc, CFStringRef uuidStr)
{
    (void)alloc;
    if (uuidStr == NULL || CFStringGetLength(uuidStr) != 36)
        return NULL;
    UniChar text[36];
    CFStringGetCharacters(uuidStr, CFRangeMake(0, 36), text);
    UInt8 bytes[16];
    int byte = 0;
    for (int i = 0; i < 36;) {
        if (i == 8 || i == 13 || i == 18 || i == 23) {
            if (text[i] != '-')
                return NULL;
            i++;
            continue;
        }
        int high = __CFHexValue(text[i]), low = __CFHexValue(text[i + 1]);
        if (high < 0 || low < 0)
            return NULL;
        bytes[byte++] = (UInt8)(high << 4 | low);
        i += 2;
    }
    return __CFUUIDCreateFromRawBytes(bytes);
}

CFStringRef CFUUIDCreateString(CFAllocatorRef alloc, CFUUIDRef uuid)
{
    (void)alloc;
    if (uuid == NULL)
        return NULL;
    UInt8 b[16];
    [(NSUUID *)uuid getUUIDBytes:b];
    char text[37];
    snprintf(text, sizeof(text), "%02X%02X%02X%02X-%02X%02X-%02X%02X-%02X%02X-%02X%02X%02X%02X%02X%02X", b[0], b[1],
             b[2], b[3], b[4], b[5], b[6], b[7], b[8], b[9], b[10], b[11], b[12], b[13], b[14], b[15]);
    return CFStringCreateWithCString(NULL, text, kCFStringEncodingASCII);
}

CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid)
{
    CFUUIDBytes bytes;
    memset(&bytes, 0, sizeof(bytes));
    if (uuid != NULL)
        [(NSUUID *)uuid getUUIDBytes:(UInt8 *)&bytes];
    return bytes;
}
