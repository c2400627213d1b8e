// The runtime: ownership, type IDs, equality, NULL tolerance, numbers,
// data, UUIDs and CFShow's output.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

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

    // NULL is a caller error, reported but never fatal.
    EXPECT_EQ(CFRetain(nullptr), nullptr);
    CFRelease(nullptr);
    EXPECT_EQ(CFGetRetainCount(nullptr), 0);
    EXPECT_EQ(CFGetTypeID(nullptr), 0u);
    EXPECT_FALSE(CFEqual(nullptr, nullptr));
    EXPECT_FALSE(CFEqual(CFSTR("a"), nullptr));
    EXPECT_EQ(CFHash(nullptr), 0u);
    EXPECT_EQ(CFCopyDescription(nullptr), nullptr);
}

TEST(CFBase, EveryBridgedObjectAnswersItsTypeID)
{
    const UInt8 bytes[] = {1, 2, 3};
    int value = 7;
    CFTypeRef objects[] = {
        CFStringCreateWithCString(nullptr, "s", kCFStringEncodingASCII),
        CFStringCreateMutable(nullptr, 0),
        CFDataCreate(nullptr, bytes, 3),
        CFDataCreateMutable(nullptr, 0),
        CFNumberCreate(nullptr, kCFNumberIntType, &value),
        CFArrayCreate(nullptr, nullptr, 0, &kCFTypeArrayCallBacks),
        CFArrayCreateMutable(nullptr, 0, nullptr),
        CFDictionaryCreate(nullptr, nullptr, nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks),
        CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr),
        CFUUIDCreate(nullptr),
        CFURLCreateWithString(nullptr, CFSTR("http://example.org/"), nullptr),
    };
    const CFTypeID expected[] = {
        CFStringGetTypeID(), CFStringGetTypeID(), CFDataGetTypeID(),       CFDataGetTypeID(),
        CFNumberGetTypeID(), CFArrayGetTypeID(),  CFArrayGetTypeID(),      CFDictionaryGetTypeID(),
        CFDictionaryGetTypeID(), CFUUIDGetTypeID(), CFURLGetTypeID(),
    };
    for (size_t i = 0; i < sizeof objects / sizeof objects[0]; i++) {
        ASSERT_NE(objects[i], nullptr) << i;
        EXPECT_EQ(CFGetTypeID(objects[i]), expected[i]) << i;
        CFRelease(objects[i]);
    }
    EXPECT_EQ(CFGetTypeID(CFSTR("constant")), CFStringGetTypeID());
    EXPECT_EQ(CFGetTypeID(kCFBooleanTrue), CFBooleanGetTypeID());
    EXPECT_EQ(CFGetTypeID(kCFBooleanFalse), CFBooleanGetTypeID());
    EXPECT_EQ(CFGetTypeID(kCFNull), CFNullGetTypeID());
    EXPECT_EQ(CFGetTypeID(CFBundleGetMainBundle()), CFBundleGetTypeID());

    CFStringRef name = CFCopyTypeIDDescription(CFStringGetTypeID());
    EXPECT_TRUE(CFEqual(name, CFSTR("CFString")));
    CFRelease(name);
    EXPECT_EQ(CFCopyTypeIDDescription(9999), nullptr);
}

TEST(CFBase, NumbersKeepTheirTypeAndReportLoss)
{
    SInt32 big = 70000;
    CFNumberRef n = CFNumberCreate(nullptr, kCFNumberSInt32Type, &big);
    EXPECT_EQ(CFNumberGetType(n), kCFNumberSInt32Type);
    EXPECT_FALSE(CFNumberIsFloatType(n));
    SInt16 small = 0;
    EXPECT_FALSE(CFNumberGetValue(n, kCFNumberSInt16Type, &small));  // 70000 does not fit
    SInt64 wide = 0;
    EXPECT_TRUE(CFNumberGetValue(n, kCFNumberSInt64Type, &wide));
    EXPECT_EQ(wide, 70000);
    double d = 0;
    EXPECT_TRUE(CFNumberGetValue(n, kCFNumberDoubleType, &d));
    EXPECT_EQ(d, 70000.0);

    double half = 2.5;
    CFNumberRef f = CFNumberCreate(nullptr, kCFNumberDoubleType, &half);
    EXPECT_TRUE(CFNumberIsFloatType(f));
    int truncated = 0;
    EXPECT_FALSE(CFNumberGetValue(f, kCFNumberIntType, &truncated));
    EXPECT_EQ(truncated, 2);
    EXPECT_EQ(CFNumberCompare(n, f, nullptr), kCFCompareGreaterThan);
    EXPECT_EQ(CFNumberCreate(nullptr, kCFNumberIntType, nullptr), nullptr);
    EXPECT_FALSE(CFNumberGetValue(nullptr, kCFNumberIntType, &truncated));
    CFRelease(n);
    CFRelease(f);

    EXPECT_TRUE(CFBooleanGetValue(kCFBooleanTrue));
    EXPECT_FALSE(CFBooleanGetValue(kCFBooleanFalse));
    EXPECT_FALSE(CFBooleanGetValue(nullptr));
    double inf = 0;
    CFNumberGetValue(kCFNumberPositiveInfinity, kCFNumberDoubleType, &inf);
    EXPECT_TRUE(std::isinf(inf));
}

TEST(CFBase, NumbersReportTheTypeTheyWereMadeWith)
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
        EXPECT_EQ(CFGetTypeID(n), CFNumberGetTypeID());
        CFRelease(n);
    }
    // Equal values of different widths are equal and hash alike.
    CFNumberRef small = CFNumberCreate(nullptr, kCFNumberSInt8Type, &i8);
    SInt64 wide = -5;
    CFNumberRef big = CFNumberCreate(nullptr, kCFNumberSInt64Type, &wide);
    EXPECT_TRUE(CFEqual(small, big));
    EXPECT_EQ(CFHash(small), CFHash(big));
    SInt16 back = 0;
    EXPECT_TRUE(CFNumberGetValue(small, kCFNumberSInt16Type, &back));
    EXPECT_EQ(back, -5);
    CFRelease(small);
    CFRelease(big);
}

TEST(CFBase, BooleansAreImmortalAndNeverEqualNumbers)
{
    int one = 1, zero = 0;
    CFNumberRef numberOne = CFNumberCreate(nullptr, kCFNumberIntType, &one);
    CFNumberRef numberZero = CFNumberCreate(nullptr, kCFNumberIntType, &zero);
    EXPECT_FALSE(CFEqual(kCFBooleanTrue, numberOne));
    EXPECT_FALSE(CFEqual(numberOne, kCFBooleanTrue));
    EXPECT_FALSE(CFEqual(kCFBooleanFalse, numberZero));
    EXPECT_FALSE(CFEqual(kCFBooleanTrue, kCFBooleanFalse));
    EXPECT_TRUE(CFEqual(kCFBooleanTrue, kCFBooleanTrue));
    EXPECT_EQ(CFGetTypeID(kCFBooleanTrue), CFBooleanGetTypeID());
    EXPECT_EQ(CFGetTypeID(numberOne), CFNumberGetTypeID());

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
    CFRelease(numberZero);

    // No number of releases frees them.
    for (int i = 0; i < 10; i++)
        CFRelease(kCFBooleanTrue);
    EXPECT_TRUE(CFBooleanGetValue(kCFBooleanTrue));
    EXPECT_EQ(CFRetain(kCFBooleanFalse), kCFBooleanFalse);
}

TEST(CFBase, DataCopiesAndEdits)
{
    const UInt8 bytes[] = {'a', 'b', 'c', 'd'};
    CFDataRef d = CFDataCreate(nullptr, bytes, 4);
    EXPECT_EQ(CFDataGetLength(d), 4);
    UInt8 out[2] = {};
    CFDataGetBytes(d, CFRangeMake(1, 2), out);
    EXPECT_EQ(out[0], 'b');
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
    EXPECT_EQ(CFDataGetBytePtr(nullptr), nullptr);
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
    ASSERT_EQ(CFStringGetLength(text), 36);
    CFUUIDRef b = CFUUIDCreateFromString(nullptr, text);
    EXPECT_TRUE(CFEqual(a, b));
    CFUUIDBytes raw = CFUUIDGetUUIDBytes(a);
    EXPECT_EQ(raw.byte6 >> 4, 4);         // version 4: random
    EXPECT_EQ(raw.byte8 & 0xC0, 0x80);    // RFC 4122 variant
    CFUUIDRef c = CFUUIDCreateFromUUIDBytes(nullptr, raw);
    EXPECT_TRUE(CFEqual(a, c));

    CFUUIDRef fixed = CFUUIDCreateWithBytes(nullptr, 0x68, 0x75, 0x3A, 0x44, 0x4D, 0x6F, 0x12, 0x26, 0x9C, 0x60, 0x2D,
                                            0x86, 0x65, 0x0D, 0xE0, 0x3E);
    CFStringRef fixedText = CFUUIDCreateString(nullptr, fixed);
    EXPECT_TRUE(CFEqual(fixedText, CFSTR("68753A44-4D6F-1226-9C60-2D86650DE03E")));
    CFUUIDRef k1 = CFUUIDGetConstantUUIDWithBytes(nullptr, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
    CFUUIDRef k2 = CFUUIDGetConstantUUIDWithBytes(nullptr, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
    EXPECT_EQ(k1, k2);
    EXPECT_EQ(CFUUIDCreateFromString(nullptr, CFSTR("not-a-uuid")), nullptr);
    EXPECT_EQ(CFUUIDCreateString(nullptr, nullptr), nullptr);
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
    EXPECT_EQ(CaptureShow(CFSTR("shown text")), "shown text\n");
    EXPECT_EQ(CaptureShow(nullptr), "(null)\n");
    int value = 12;
    CFNumberRef n = CFNumberCreate(nullptr, kCFNumberIntType, &value);
    EXPECT_EQ(CaptureShow(n), "12\n");
    CFRelease(n);
}

}  // namespace

namespace {

// Every function given NULL where an object is required answers its neutral
// result and touches nothing.
TEST(CFBase, NullArgumentsGiveNeutralResults)
{
    CFRange whole = CFRangeMake(0, 0);
    char cBuffer[8] = "x";
    unsigned char pBuffer[8] = {1, 'x'};
    UniChar units[2] = {'a', 'b'};
    CFIndex used = 5;

    EXPECT_EQ(CFStringGetLength(nullptr), 0);
    EXPECT_EQ(CFStringGetCharacterAtIndex(nullptr, 0), 0);
    CFStringGetCharacters(nullptr, CFRangeMake(0, 1), units);
    EXPECT_EQ(units[0], 'a');
    EXPECT_EQ(CFStringGetBytes(nullptr, whole, kCFStringEncodingUTF8, 0, false, nullptr, 0, &used), 0);
    EXPECT_EQ(used, 0);
    EXPECT_FALSE(CFStringGetCString(nullptr, cBuffer, sizeof cBuffer, kCFStringEncodingUTF8));
    EXPECT_EQ(cBuffer[0], '\0');
    EXPECT_FALSE(CFStringGetPascalString(nullptr, pBuffer, sizeof pBuffer, kCFStringEncodingMacRoman));
    EXPECT_EQ(pBuffer[0], 0);
    EXPECT_EQ(CFStringCreateCopy(nullptr, nullptr), nullptr);
    EXPECT_EQ(CFStringCreateWithSubstring(nullptr, nullptr, whole), nullptr);
    EXPECT_EQ(CFStringCreateWithPascalString(nullptr, nullptr, kCFStringEncodingMacRoman), nullptr);
    EXPECT_EQ(CFStringCreateWithBytes(nullptr, nullptr, 4, kCFStringEncodingUTF8, false), nullptr);
    EXPECT_EQ(CFStringCreateWithFormat(nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(CFStringCreateExternalRepresentation(nullptr, nullptr, kCFStringEncodingUTF8, 0), nullptr);
    EXPECT_EQ(CFStringCreateFromExternalRepresentation(nullptr, nullptr, kCFStringEncodingUTF8), nullptr);
    EXPECT_EQ(CFStringCreateArrayBySeparatingStrings(nullptr, nullptr, CFSTR(",")), nullptr);
    EXPECT_EQ(CFStringCreateByCombiningStrings(nullptr, nullptr, CFSTR(",")), nullptr);
    EXPECT_EQ(CFStringFind(nullptr, CFSTR("a"), 0).location, kCFNotFound);
    EXPECT_EQ(CFStringFind(CFSTR("a"), nullptr, 0).location, kCFNotFound);
    EXPECT_FALSE(CFStringHasPrefix(nullptr, CFSTR("a")));
    EXPECT_FALSE(CFStringHasSuffix(CFSTR("a"), nullptr));
    EXPECT_EQ(CFStringGetIntValue(nullptr), 0);
    EXPECT_EQ(CFStringGetSmallestEncoding(nullptr), kCFStringEncodingInvalidId);
    EXPECT_EQ(CFStringConvertIANACharSetNameToEncoding(nullptr), kCFStringEncodingInvalidId);
    CFStringAppend(nullptr, nullptr);
    CFStringAppendCString(nullptr, "x", kCFStringEncodingUTF8);
    CFStringAppendCharacters(nullptr, units, 2);
    CFStringAppendFormat(nullptr, nullptr, CFSTR("%d"), 1);
    CFStringInsert(nullptr, 0, CFSTR("x"));
    CFStringDelete(nullptr, whole);
    CFStringReplace(nullptr, whole, CFSTR("x"));
    CFStringReplaceAll(nullptr, CFSTR("x"));
    EXPECT_EQ(CFStringFindAndReplace(nullptr, CFSTR("a"), CFSTR("b"), whole, 0), 0);
    CFStringTrim(nullptr, CFSTR(" "));
    CFStringTrimWhitespace(nullptr);
    CFStringLowercase(nullptr, nullptr);
    CFStringPad(nullptr, CFSTR("x"), 3, 0);

    EXPECT_EQ(CFDataGetLength(nullptr), 0);
    EXPECT_EQ(CFDataCreateCopy(nullptr, nullptr), nullptr);
    CFDataGetBytes(nullptr, whole, reinterpret_cast<UInt8 *>(cBuffer));
    CFDataAppendBytes(nullptr, reinterpret_cast<const UInt8 *>("x"), 1);
    CFDataSetLength(nullptr, 4);

    EXPECT_EQ(CFArrayGetCount(nullptr), 0);
    EXPECT_EQ(CFArrayGetValueAtIndex(nullptr, 0), nullptr);
    EXPECT_EQ(CFArrayCreateCopy(nullptr, nullptr), nullptr);
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(nullptr, whole, CFSTR("a")), kCFNotFound);
    CFArrayAppendValue(nullptr, CFSTR("a"));
    CFArrayRemoveValueAtIndex(nullptr, 0);
    CFArraySortValues(nullptr, whole, nullptr, nullptr);
    CFArrayApplyFunction(nullptr, whole, nullptr, nullptr);

    EXPECT_EQ(CFDictionaryGetCount(nullptr), 0);
    EXPECT_EQ(CFDictionaryGetValue(nullptr, CFSTR("k")), nullptr);
    EXPECT_FALSE(CFDictionaryContainsKey(nullptr, CFSTR("k")));
    EXPECT_EQ(CFDictionaryCreateCopy(nullptr, nullptr), nullptr);
    CFDictionarySetValue(nullptr, CFSTR("k"), CFSTR("v"));
    CFDictionaryRemoveValue(nullptr, CFSTR("k"));
    CFDictionaryApplyFunction(nullptr, nullptr, nullptr);
    CFDictionaryGetKeysAndValues(nullptr, nullptr, nullptr);

    EXPECT_EQ(CFNumberGetType(nullptr), 0);
    EXPECT_EQ(CFNumberGetByteSize(nullptr), 0);
    EXPECT_FALSE(CFNumberIsFloatType(nullptr));
    EXPECT_EQ(CFUUIDGetUUIDBytes(nullptr).byte0, 0);
    EXPECT_EQ(CFUUIDCreateFromString(nullptr, nullptr), nullptr);

    EXPECT_EQ(CFURLGetString(nullptr), nullptr);
    EXPECT_EQ(CFURLCopyLastPathComponent(nullptr), nullptr);
    EXPECT_EQ(CFURLCreateCopyAppendingPathComponent(nullptr, nullptr, CFSTR("x"), false), nullptr);
    EXPECT_EQ(CFURLCreateWithFileSystemPath(nullptr, nullptr, kCFURLPOSIXPathStyle, false), nullptr);
    EXPECT_FALSE(CFURLGetFileSystemRepresentation(nullptr, true, reinterpret_cast<UInt8 *>(cBuffer), 8));

    EXPECT_EQ(CFBundleCreate(nullptr, nullptr), nullptr);
    EXPECT_EQ(CFBundleGetIdentifier(nullptr), nullptr);
    EXPECT_EQ(CFBundleGetFunctionPointerForName(nullptr, CFSTR("main")), nullptr);
    EXPECT_EQ(CFBundleGetFunctionPointerForName(CFBundleGetMainBundle(), nullptr), nullptr);
    EXPECT_FALSE(CFBundleLoadExecutable(nullptr));
    EXPECT_EQ(CFBundleGetValueForInfoDictionaryKey(nullptr, CFSTR("k")), nullptr);
}

}  // namespace
