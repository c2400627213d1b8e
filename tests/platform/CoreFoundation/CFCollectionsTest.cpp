// Arrays and dictionaries: ownership of their values under the standard
// callbacks, plain-pointer storage under NULL callbacks, and bounds.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <cstdint>

namespace {

CFStringRef Make(const char *text)
{
    return CFStringCreateWithCString(nullptr, text, kCFStringEncodingUTF8);
}

TEST(CFArray, RetainsItsValuesAndEditsInPlace)
{
    CFStringRef a = Make("a"), b = Make("b"), c = Make("c");
    CFIndex before = CFGetRetainCount(a);
    CFMutableArrayRef array = CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks);
    CFArrayAppendValue(array, a);
    CFArrayAppendValue(array, c);
    CFArrayInsertValueAtIndex(array, 1, b);
    EXPECT_EQ(CFGetRetainCount(a), before + 1);
    ASSERT_EQ(CFArrayGetCount(array), 3);
    EXPECT_TRUE(CFArrayGetValueAtIndex(array, 3) == nullptr && CFArrayGetValueAtIndex(array, -1) == nullptr);
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(array, CFRangeMake(0, 3), c), 2);
    EXPECT_TRUE(CFArrayContainsValue(array, CFRangeMake(0, 3), CFSTR("b")));
    EXPECT_FALSE(CFArrayContainsValue(array, CFRangeMake(0, 1), CFSTR("b")));

    CFArrayExchangeValuesAtIndices(array, 0, 2);
    EXPECT_EQ(CFArrayGetValueAtIndex(array, 0), c);
    auto compare = [](const void *x, const void *y, void *) { return CFStringCompare((CFStringRef)x, (CFStringRef)y, 0); };
    CFArraySortValues(array, CFRangeMake(0, 3), compare, nullptr);
    EXPECT_EQ(CFArrayGetValueAtIndex(array, 0), a);

    CFArrayRef copy = CFArrayCreateCopy(nullptr, array);
    CFArrayRemoveValueAtIndex(array, 0);
    CFArrayRemoveValueAtIndex(array, 9);  // out of range: nothing
    CFArrayAppendValue((CFMutableArrayRef)copy, a);  // immutable: refused
    EXPECT_TRUE(CFArrayGetCount(array) == 2 && CFArrayGetCount(copy) == 3);

    CFRelease(copy);
    CFArrayRemoveAllValues(array);
    EXPECT_EQ(CFGetRetainCount(a), before);
    CFRelease(array);
    for (CFStringRef s : {a, b, c})
        CFRelease(s);
}

// With NULL callbacks an array holds plain pointers, never messaging them.
TEST(CFArray, NullCallbacksHoldPlainPointers)
{
    CFMutableArrayRef array = CFArrayCreateMutable(nullptr, 0, nullptr);
    for (intptr_t i = 1; i <= 100; i++)
        CFArrayAppendValue(array, reinterpret_cast<const void *>(i * 8));
    ASSERT_EQ(CFArrayGetCount(array), 100);
    EXPECT_EQ(CFArrayGetValueAtIndex(array, 41), reinterpret_cast<const void *>(42 * 8));
    EXPECT_EQ(CFArrayGetFirstIndexOfValue(array, CFRangeMake(0, 100), reinterpret_cast<const void *>(800)), 99);
    CFArrayRemoveValueAtIndex(array, 0);
    CFArrayRef copy = CFArrayCreateCopy(nullptr, array);
    EXPECT_EQ(CFArrayGetValueAtIndex(copy, 0), reinterpret_cast<const void *>(16));
    CFRelease(copy);
    CFRelease(array);

    const void *values[] = {reinterpret_cast<const void *>(1), nullptr, reinterpret_cast<const void *>(3)};
    CFArrayRef fixed = CFArrayCreate(nullptr, values, 3, nullptr);
    EXPECT_TRUE(CFArrayGetCount(fixed) == 3 && CFArrayGetValueAtIndex(fixed, 1) == nullptr);
    CFRelease(fixed);
}

TEST(CFDictionary, RetainsKeysAndValuesAndCopiesStringKeys)
{
    CFStringRef key = Make("key");
    CFStringRef value = Make("value");
    CFIndex keyCount = CFGetRetainCount(key), valueCount = CFGetRetainCount(value);
    CFMutableDictionaryRef dict =
        CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    CFDictionarySetValue(dict, key, value);
    EXPECT_EQ(CFGetRetainCount(value), valueCount + 1);
    EXPECT_TRUE(CFDictionaryGetValue(dict, CFSTR("key")) == value && CFDictionaryGetValue(dict, nullptr) == nullptr);

    CFDictionaryAddValue(dict, key, CFSTR("ignored"));  // Add never replaces
    EXPECT_EQ(CFDictionaryGetValue(dict, key), value);
    CFDictionaryReplaceValue(dict, CFSTR("absent"), value);  // Replace never adds
    EXPECT_TRUE(CFDictionaryGetCount(dict) == 1 && CFDictionaryGetCountOfValue(dict, value) == 1);

    const void *keys[1], *values[1];
    CFDictionaryGetKeysAndValues(dict, keys, values);
    EXPECT_TRUE(CFEqual(keys[0], key) && values[0] == value);

    CFDictionaryRemoveValue(dict, key);
    EXPECT_TRUE(CFGetRetainCount(value) == valueCount && CFGetRetainCount(key) == keyCount);
    CFRelease(dict);

    // A mutable key is copied, so changing it later does not move the entry.
    CFMutableStringRef mutableKey = CFStringCreateMutableCopy(nullptr, 0, CFSTR("before"));
    CFMutableDictionaryRef copying = CFDictionaryCreateMutable(nullptr, 0, &kCFCopyStringDictionaryKeyCallBacks,
                                                               &kCFTypeDictionaryValueCallBacks);
    CFDictionarySetValue(copying, mutableKey, value);
    CFStringAppend(mutableKey, CFSTR("-changed"));
    EXPECT_EQ(CFDictionaryGetValue(copying, CFSTR("before")), value);
    CFRelease(copying);
    CFRelease(mutableKey);
    CFRelease(key);
    CFRelease(value);
}

TEST(CFDictionary, NullCallbacksKeyByPointer)
{
    CFMutableDictionaryRef dict = CFDictionaryCreateMutable(nullptr, 0, nullptr, nullptr);
    for (intptr_t i = 0; i < 1000; i++)
        CFDictionarySetValue(dict, reinterpret_cast<const void *>(i), reinterpret_cast<const void *>(i * i));
    const void *found = nullptr;
    EXPECT_TRUE(CFDictionaryGetValueIfPresent(dict, reinterpret_cast<const void *>(0), &found));
    EXPECT_EQ(found, nullptr);  // the value 0 is present, not missing
    for (intptr_t i = 0; i < 1000; i += 2)
        CFDictionaryRemoveValue(dict, reinterpret_cast<const void *>(i));
    EXPECT_EQ(CFDictionaryGetCount(dict), 500);
    for (intptr_t i = 1; i < 1000; i += 2)
        ASSERT_EQ(CFDictionaryGetValue(dict, reinterpret_cast<const void *>(i)), reinterpret_cast<const void *>(i * i));
    EXPECT_FALSE(CFDictionaryContainsKey(dict, reinterpret_cast<const void *>(2)));

    CFIndex sum = 0;  // 1 + 3 + ... + 999
    CFDictionaryApplyFunction(
        dict, [](const void *key, const void *, void *context) { *static_cast<CFIndex *>(context) += (intptr_t)key; },
        &sum);
    EXPECT_EQ(sum, 250000);
    CFRelease(dict);
}

}  // namespace
