// The runtime: ownership, type IDs, equality, NULL tolerance, numbers,
// data, UUIDs and CFShow's output.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace {

TEST(CFBase, OwnershipFollowsCreateRetainRelease)
{
    CFStringRef s = CFStringCreateWithCString(nullptr, "owned", kCFStringEncodingASCII);
    ASSERT_NE(s, nullptr);
    CFIndex start = CFGetRetainCount(s);
    EXPECT_EQ(CFRetain(s), s);
    EXPECT_EQ(CFGetRetainCount(s), start + 1);
    CFRelease(s);
    EXPECT_EQ(CFGetRetainCount(s), start);
    CFRelease(s);
}

// Objects only CF makes (typed numbers, plain-pointer collections, constant
// strings, UUIDs) map to their type IDs; Foundation's own are checked with it.
TEST(CFBase, EveryBridgedObjectAnswersItsTypeID)
{
    int value = 7;
    const std::pair<CFTypeRef, CFTypeID> objects[] = {
        {CFStringCreateWithCString(nullptr, "s", kCFStringEncodingASCII), CFStringGetTypeID()},
        {CFStringCreateMutable(nullptr, 0), CFStringGetTypeID()},
        {CFNumberCreate(nullptr, kCFNumberIntType, &value), CFNumberGetTypeID()},
        {CFArrayCreateMutable(nullptr, 0, nullptr), CFArrayGetTypeID()},
        {CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr), CFDictionaryGetTypeID()},
        {CFSetCreateMutable(nullptr, 0, nullptr), CFSetGetTypeID()},
        {CFUUIDCreate(nullptr), CFUUIDGetTypeID()},
        {CFRetain(CFSTR("constant")), CFStringGetTypeID()},
    };
    for (const auto &object : objects) {
        ASSERT_NE(object.first, nullptr) << object.second;
        EXPECT_EQ(CFGetTypeID(object.first), object.second);
        CFRelease(object.first);
    }
    CFStringRef name = CFCopyTypeIDDescription(CFStringGetTypeID());
    EXPECT_TRUE(CFEqual(name, CFSTR("CFString")));
    CFRelease(name);
    EXPECT_EQ(CFCopyTypeIDDescription(9999), nullptr);
}

// Numbers keep the type they were made with, convert between widths and
// report a conversion that loses the value.
TEST(CFBase, NumbersKeepTheirTypeAndReportLoss)
{
    SInt8 i8 = -5;
    SInt16 i16 = 300;
    SInt64 i64 = 7;
    float f32 = 1.5f;
    int plainInt = 9;
    struct {
        CFNumberType made;
        const void *value;
        CFNumberType reported;
        CFIndex size;
    } const cases[] = {
        {kCFNumberSInt8Type, &i8, kCFNumberSInt8Type, 1},    {kCFNumberCharType, &i8, kCFNumberSInt8Type, 1},
        {kCFNumberSInt16Type, &i16, kCFNumberSInt16Type, 2}, {kCFNumberSInt64Type, &i64, kCFNumberSInt64Type, 8},
        {kCFNumberFloat32Type, &f32, kCFNumberFloat32Type, 4}, {kCFNumberIntType, &plainInt, kCFNumberSInt32Type, 4},
    };
    for (const auto &c : cases) {
        CFNumberRef n = CFNumberCreate(nullptr, c.made, c.value);
        ASSERT_NE(n, nullptr);
        EXPECT_EQ(CFNumberGetType(n), c.reported) << c.made;
        EXPECT_EQ(CFNumberGetByteSize(n), c.size) << c.made;
        CFRelease(n);
    }

    SInt32 big = 70000;
    CFNumberRef n = CFNumberCreate(nullptr, kCFNumberSInt32Type, &big);
    SInt16 small = 0;
    EXPECT_FALSE(CFNumberGetValue(n, kCFNumberSInt16Type, &small));  // 70000 does not fit
    double d = 0;
    EXPECT_TRUE(CFNumberGetValue(n, kCFNumberDoubleType, &d) && d == 70000.0);
    double half = 2.5;
    CFNumberRef f = CFNumberCreate(nullptr, kCFNumberDoubleType, &half);
    EXPECT_TRUE(CFNumberIsFloatType(f) && !CFNumberIsFloatType(n));
    int truncated = 0;
    EXPECT_FALSE(CFNumberGetValue(f, kCFNumberIntType, &truncated));  // loses the half, gives the rest
    EXPECT_EQ(truncated, 2);
    EXPECT_EQ(CFNumberCompare(n, f, nullptr), kCFCompareGreaterThan);
    EXPECT_EQ(CFNumberCreate(nullptr, kCFNumberIntType, nullptr), nullptr);
    EXPECT_FALSE(CFNumberGetValue(nullptr, kCFNumberIntType, &truncated));
    CFRelease(n);
    CFRelease(f);

    // Equal values of different widths are equal and hash alike.
    CFNumberRef narrow = CFNumberCreate(nullptr, kCFNumberSInt8Type, &i8);
    SInt64 wide = -5;
    CFNumberRef broad = CFNumberCreate(nullptr, kCFNumberSInt64Type, &wide);
    EXPECT_TRUE(CFEqual(narrow, broad));
    EXPECT_EQ(CFHash(narrow), CFHash(broad));
    CFRelease(narrow);
    CFRelease(broad);
}

TEST(CFBase, BooleansAreImmortalAndNeverEqualNumbers)
{
    int one = 1;
    CFNumberRef numberOne = CFNumberCreate(nullptr, kCFNumberIntType, &one);
    EXPECT_FALSE(CFEqual(kCFBooleanTrue, numberOne) || CFEqual(numberOne, kCFBooleanTrue));
    EXPECT_FALSE(CFEqual(kCFBooleanTrue, kCFBooleanFalse));
    EXPECT_FALSE(CFBooleanGetValue(kCFBooleanFalse) || CFBooleanGetValue(nullptr));

    // A dictionary keyed by both holds two entries, in either order.
    for (int order = 0; order < 2; order++) {
        CFMutableDictionaryRef dict =
            CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
        CFTypeRef boolean = kCFBooleanTrue, number = numberOne;
        CFDictionarySetValue(dict, order ? number : boolean, CFSTR("first"));
        CFDictionarySetValue(dict, order ? boolean : number, CFSTR("second"));
        EXPECT_EQ(CFDictionaryGetCount(dict), 2);
        EXPECT_TRUE(CFEqual(CFDictionaryGetValue(dict, kCFBooleanTrue), order ? CFSTR("second") : CFSTR("first")));
        CFRelease(dict);
    }
    CFRelease(numberOne);

    // No number of releases frees them.
    for (int i = 0; i < 10; i++)
        CFRelease(kCFBooleanTrue);
    EXPECT_TRUE(CFBooleanGetValue(kCFBooleanTrue));
}

TEST(CFBase, DataCopiesAndEdits)
{
    const UInt8 bytes[] = {'a', 'b', 'c', 'd'};
    CFDataRef d = CFDataCreate(nullptr, bytes, 4);
    UInt8 out[2] = {};
    CFDataGetBytes(d, CFRangeMake(1, 2), out);
    CFDataGetBytes(d, CFRangeMake(3, 5), out);  // out of range: untouched
    EXPECT_EQ(out[0], 'b');

    CFMutableDataRef m = CFDataCreateMutableCopy(nullptr, 0, d);
    CFDataAppendBytes(m, bytes, 2);
    CFDataReplaceBytes(m, CFRangeMake(0, 1), reinterpret_cast<const UInt8 *>("XY"), 2);
    CFDataDeleteBytes(m, CFRangeMake(5, 1));
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(CFDataGetBytePtr(m)), CFDataGetLength(m)), "XYbcdb");
    CFDataSetLength(m, 2);
    EXPECT_EQ(CFDataGetLength(m), 2);

    // The source is independent of its mutable copy, and immutable data refuses edits.
    CFDataAppendBytes((CFMutableDataRef)d, bytes, 1);
    EXPECT_EQ(CFDataGetLength(d), 4);
    EXPECT_EQ(CFDataCreate(nullptr, nullptr, 3), nullptr);
    CFRelease(m);
    CFRelease(d);

    UInt8 *owned = static_cast<UInt8 *>(malloc(3));
    std::memcpy(owned, "xyz", 3);
    CFDataRef adopted = CFDataCreateWithBytesNoCopy(nullptr, owned, 3, kCFAllocatorMalloc);
    EXPECT_EQ(CFDataGetBytePtr(adopted), owned);
    CFRelease(adopted);  // frees owned
}

TEST(CFBase, UUIDsRoundTripThroughText)
{
    CFUUIDRef a = CFUUIDCreate(nullptr);
    CFStringRef text = CFUUIDCreateString(nullptr, a);
    CFUUIDRef b = CFUUIDCreateFromString(nullptr, text);
    EXPECT_TRUE(CFEqual(a, b));
    CFUUIDBytes raw = CFUUIDGetUUIDBytes(a);
    EXPECT_TRUE(raw.byte6 >> 4 == 4 && (raw.byte8 & 0xC0) == 0x80);  // version 4 (random), RFC 4122 variant
    CFUUIDRef c = CFUUIDCreateFromUUIDBytes(nullptr, raw);
    EXPECT_TRUE(CFEqual(a, c));

    CFUUIDRef fixed = CFUUIDCreateWithBytes(nullptr, 0x68, 0x75, 0x3A, 0x44, 0x4D, 0x6F, 0x12, 0x26, 0x9C, 0x60, 0x2D,
                                            0x86, 0x65, 0x0D, 0xE0, 0x3E);
    CFStringRef fixedText = CFUUIDCreateString(nullptr, fixed);
    EXPECT_TRUE(CFEqual(fixedText, CFSTR("68753A44-4D6F-1226-9C60-2D86650DE03E")));
    EXPECT_EQ(CFUUIDGetConstantUUIDWithBytes(nullptr, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16),
              CFUUIDGetConstantUUIDWithBytes(nullptr, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16));
    EXPECT_EQ(CFUUIDCreateFromString(nullptr, CFSTR("not-a-uuid")), nullptr);
    for (CFTypeRef o : {(CFTypeRef)a, (CFTypeRef)b, (CFTypeRef)c, (CFTypeRef)fixed, (CFTypeRef)text, (CFTypeRef)fixedText})
        CFRelease(o);
}

// CFShow writes to standard error; capture it through a pipe.
std::string CaptureShow(CFTypeRef object)
{
    int fds[2];
    if (pipe(fds) != 0)
        return "";
    fflush(stderr);
    int saved = dup(2);
    dup2(fds[1], 2);
    CFShow(object);
    fflush(stderr);
    dup2(saved, 2);
    close(saved);
    close(fds[1]);
    char buffer[512];
    ssize_t n = read(fds[0], buffer, sizeof buffer - 1);
    close(fds[0]);
    return std::string(buffer, n > 0 ? n : 0);
}

TEST(CFBase, ShowWritesToStandardError)
{
    int value = 12;
    CFNumberRef n = CFNumberCreate(nullptr, kCFNumberIntType, &value);
    EXPECT_EQ(CaptureShow(CFSTR("shown text")) + CaptureShow(n) + CaptureShow(nullptr), "shown text\n12\n(null)\n");
    CFRelease(n);
}

// Every function given NULL where an object is required answers its neutral
// result and touches nothing.
TEST(CFBase, NullArgumentsGiveNeutralResults)
{
    CFRange whole = CFRangeMake(0, 0);
    char cBuffer[8] = "x";
    unsigned char pBuffer[8] = {1, 'x'};
    UniChar units[2] = {'a', 'b'};
    CFIndex used = 5;

    const void *const nulls[] = {
        CFRetain(nullptr), CFCopyDescription(nullptr), CFStringCreateCopy(nullptr, nullptr),
        CFStringCreateWithSubstring(nullptr, nullptr, whole),
        CFStringCreateWithPascalString(nullptr, nullptr, kCFStringEncodingMacRoman),
        CFStringCreateWithBytes(nullptr, nullptr, 4, kCFStringEncodingUTF8, false),
        CFStringCreateWithFormat(nullptr, nullptr, nullptr),
        CFStringCreateExternalRepresentation(nullptr, nullptr, kCFStringEncodingUTF8, 0),
        CFStringCreateFromExternalRepresentation(nullptr, nullptr, kCFStringEncodingUTF8),
        CFStringCreateArrayBySeparatingStrings(nullptr, nullptr, CFSTR(",")),
        CFStringCreateByCombiningStrings(nullptr, nullptr, CFSTR(",")), CFDataCreateCopy(nullptr, nullptr),
        CFDataGetBytePtr(nullptr), CFArrayGetValueAtIndex(nullptr, 0), CFArrayCreateCopy(nullptr, nullptr),
        CFDictionaryGetValue(nullptr, CFSTR("k")), CFDictionaryCreateCopy(nullptr, nullptr),
        CFUUIDCreateFromString(nullptr, nullptr), CFUUIDCreateString(nullptr, nullptr), CFURLGetString(nullptr),
        CFURLCopyLastPathComponent(nullptr), CFURLCreateCopyAppendingPathComponent(nullptr, nullptr, CFSTR("x"), false),
        CFURLCreateWithFileSystemPath(nullptr, nullptr, kCFURLPOSIXPathStyle, false), CFBundleCreate(nullptr, nullptr),
        CFBundleGetIdentifier(nullptr), CFBundleGetFunctionPointerForName(nullptr, CFSTR("main")),
        CFBundleGetFunctionPointerForName(CFBundleGetMainBundle(), nullptr),
        CFBundleGetValueForInfoDictionaryKey(nullptr, CFSTR("k")),
    };
    for (size_t i = 0; i < sizeof nulls / sizeof nulls[0]; i++)
        EXPECT_EQ(nulls[i], nullptr) << "call " << i;
    const CFIndex zeros[] = {
        CFGetRetainCount(nullptr), (CFIndex)CFGetTypeID(nullptr), (CFIndex)CFHash(nullptr), CFStringGetLength(nullptr),
        CFStringGetCharacterAtIndex(nullptr, 0), CFStringGetIntValue(nullptr), CFDataGetLength(nullptr),
        CFArrayGetCount(nullptr), CFDictionaryGetCount(nullptr), CFNumberGetType(nullptr),
        CFNumberGetByteSize(nullptr), CFUUIDGetUUIDBytes(nullptr).byte0,
    };
    for (size_t i = 0; i < sizeof zeros / sizeof zeros[0]; i++)
        EXPECT_EQ(zeros[i], 0) << "call " << i;
    EXPECT_FALSE(CFEqual(nullptr, nullptr) || CFEqual(CFSTR("a"), nullptr));
    CFStringGetCharacters(nullptr, CFRangeMake(0, 1), units);
    EXPECT_EQ(units[0], 'a');
    EXPECT_EQ(CFStringGetBytes(nullptr, whole, kCFStringEncodingUTF8, 0, false, nullptr, 0, &used), 0);
    EXPECT_EQ(used, 0);
    EXPECT_FALSE(CFStringGetCString(nullptr, cBuffer, sizeof cBuffer, kCFStringEncodingUTF8));
    EXPECT_EQ(cBuffer[0], '\0');
    EXPECT_FALSE(CFStringGetPascalString(nullptr, pBuffer, sizeof pBuffer, kCFStringEncodingMacRoman));
    EXPECT_EQ(pBuffer[0], 0);
    EXPECT_EQ(CFStringFind(nullptr, CFSTR("a"), 0).location, kCFNotFound);
    EXPECT_EQ(CFStringFind(CFSTR("a"), nullptr, 0).location, kCFNotFound);
    EXPECT_FALSE(CFStringHasPrefix(nullptr, CFSTR("a")) || CFStringHasSuffix(CFSTR("a"), nullptr));
    EXPECT_EQ(CFStringGetSmallestEncoding(nullptr), kCFStringEncodingInvalidId);
    EXPECT_EQ(CFStringConvertIANACharSetNameToEncoding(nullptr), kCFStringEncodingInvalidId);
    EXPECT_EQ(CFStringFindAndReplace(nullptr, CFSTR("a"), CFSTR("b"), whole, 0), 0);
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(nullptr, whole, CFSTR("a")), kCFNotFound);
    EXPECT_FALSE(CFDictionaryContainsKey(nullptr, CFSTR("k")) || CFNumberIsFloatType(nullptr));
    EXPECT_FALSE(CFURLGetFileSystemRepresentation(nullptr, true, reinterpret_cast<UInt8 *>(cBuffer), 8));
    EXPECT_FALSE(CFBundleLoadExecutable(nullptr));

    // The releasing and editing calls change nothing and do not crash.
    CFRelease(nullptr);
    CFStringAppend(nullptr, nullptr);
    CFStringAppendCString(nullptr, "x", kCFStringEncodingUTF8);
    CFStringAppendCharacters(nullptr, units, 2);
    CFStringAppendFormat(nullptr, nullptr, CFSTR("%d"), 1);
    CFStringInsert(nullptr, 0, CFSTR("x"));
    CFStringDelete(nullptr, whole);
    CFStringReplace(nullptr, whole, CFSTR("x"));
    CFStringReplaceAll(nullptr, CFSTR("x"));
    CFStringTrim(nullptr, CFSTR(" "));
    CFStringTrimWhitespace(nullptr);
    CFStringLowercase(nullptr, nullptr);
    CFStringPad(nullptr, CFSTR("x"), 3, 0);
    CFDataGetBytes(nullptr, whole, reinterpret_cast<UInt8 *>(cBuffer));
    CFDataAppendBytes(nullptr, reinterpret_cast<const UInt8 *>("x"), 1);
    CFDataSetLength(nullptr, 4);
    CFArrayAppendValue(nullptr, CFSTR("a"));
    CFArrayRemoveValueAtIndex(nullptr, 0);
    CFArraySortValues(nullptr, whole, nullptr, nullptr);
    CFArrayApplyFunction(nullptr, whole, nullptr, nullptr);
    CFDictionarySetValue(nullptr, CFSTR("k"), CFSTR("v"));
    CFDictionaryRemoveValue(nullptr, CFSTR("k"));
    CFDictionaryApplyFunction(nullptr, nullptr, nullptr);
    CFDictionaryGetKeysAndValues(nullptr, nullptr, nullptr);
}

}  // namespace
