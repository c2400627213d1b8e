// Sets with the standard callbacks and with callbacks of the caller's, and
// binary search in sorted arrays.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <cstdint>

namespace {

TEST(CFSet, HoldsEqualValuesOnceAndRetainsThem)
{
    CFStringRef made = CFStringCreateWithCString(nullptr, "two", kCFStringEncodingUTF8);
    const void *values[] = {CFSTR("one"), made, CFSTR("one")};
    CFSetRef set = CFSetCreate(nullptr, values, 3, &kCFTypeSetCallBacks);
    ASSERT_NE(set, nullptr);
    EXPECT_TRUE(CFSetGetCount(set) == 2 && CFGetRetainCount(made) > 1);
    EXPECT_TRUE(CFSetGetValue(set, CFSTR("two")) == made && CFSetGetCountOfValue(set, CFSTR("three")) == 0);

    CFMutableSetRef mutableSet = CFSetCreateMutableCopy(nullptr, 0, set);
    CFSetAddValue(mutableSet, CFSTR("three"));
    CFSetAddValue(mutableSet, CFSTR("one"));
    EXPECT_EQ(CFSetGetCount(mutableSet), 3);
    CFSetRemoveValue(mutableSet, CFSTR("one"));
    CFSetReplaceValue(mutableSet, CFSTR("absent"));
    EXPECT_EQ(CFSetGetCount(mutableSet), 2);
    const void *all[2];
    CFSetGetValues(mutableSet, all);
    EXPECT_TRUE(all[0] == made || all[1] == made);
    CFIndex applied = 0;
    CFSetApplyFunction(mutableSet, [](const void *, void *count) { ++*static_cast<CFIndex *>(count); }, &applied);
    EXPECT_EQ(applied, 2);
    CFSetRemoveAllValues(mutableSet);
    CFRelease(mutableSet);

    // An immutable set refuses edits; released, it lets its values go.
    CFSetAddValue((CFMutableSetRef)set, CFSTR("four"));
    EXPECT_EQ(CFSetGetCount(set), 2);
    CFRelease(set);
    EXPECT_EQ(CFGetRetainCount(made), 1);
    CFRelease(made);
}

TEST(CFSet, NullCallbacksHoldPlainPointers)
{
    CFMutableSetRef set = CFSetCreateMutable(nullptr, 0, nullptr);
    for (intptr_t i = 1; i <= 100; i++)
        CFSetAddValue(set, reinterpret_cast<const void *>(i % 50 + 1));
    EXPECT_EQ(CFSetGetCount(set), 50);
    EXPECT_FALSE(CFSetContainsValue(set, reinterpret_cast<const void *>(99)));
    CFSetRef copy = CFSetCreateCopy(nullptr, set);
    CFSetRemoveValue(set, reinterpret_cast<const void *>(7));
    EXPECT_EQ(CFSetGetCount(set), 49);
    EXPECT_EQ(CFSetGetCount(copy), 50);
    CFSetAddValue((CFMutableSetRef)copy, reinterpret_cast<const void *>(500));
    EXPECT_EQ(CFSetGetCount(copy), 50);
    CFRelease(copy);
    CFRelease(set);

    // Copying string callbacks copy what they are given.
    CFMutableStringRef text = CFStringCreateMutableCopy(nullptr, 0, CFSTR("abc"));
    CFMutableSetRef strings = CFSetCreateMutable(nullptr, 0, &kCFCopyStringSetCallBacks);
    CFSetAddValue(strings, text);
    CFStringAppend(text, CFSTR("def"));
    EXPECT_TRUE(CFSetContainsValue(strings, CFSTR("abc")));
    EXPECT_FALSE(CFSetContainsValue(strings, CFSTR("abcdef")));
    CFRelease(strings);
    CFRelease(text);

    EXPECT_EQ(CFSetGetCount(nullptr), 0);
    EXPECT_FALSE(CFSetContainsValue(nullptr, CFSTR("x")));
    EXPECT_EQ(CFSetCreate(nullptr, nullptr, 2, &kCFTypeSetCallBacks), nullptr);
    CFSetAddValue(nullptr, CFSTR("x"));
}

CFComparisonResult CompareInts(const void *a, const void *b, void *)
{
    intptr_t x = reinterpret_cast<intptr_t>(a), y = reinterpret_cast<intptr_t>(b);
    return x < y ? kCFCompareLessThan : (x > y ? kCFCompareGreaterThan : kCFCompareEqualTo);
}

TEST(CFArray, BinarySearchFindsTheInsertionPoint)
{
    CFMutableArrayRef array = CFArrayCreateMutable(nullptr, 0, nullptr);
    for (intptr_t v : {10, 20, 30, 40})
        CFArrayAppendValue(array, reinterpret_cast<const void *>(v));
    const intptr_t searches[][4] = {{0, 4, 30, 2}, {0, 4, 25, 2}, {0, 4, 5, 0}, {0, 4, 50, 4}, {1, 2, 5, 1}};
    for (const auto &s : searches)
        EXPECT_EQ(CFArrayBSearchValues(array, CFRangeMake(s[0], s[1]), reinterpret_cast<const void *>(s[2]),
                                       CompareInts, nullptr), s[3]) << s[2];
    EXPECT_EQ(CFArrayBSearchValues(array, CFRangeMake(2, 5), nullptr, CompareInts, nullptr), kCFNotFound);
    EXPECT_EQ(CFArrayBSearchValues(nullptr, CFRangeMake(0, 4), nullptr, CompareInts, nullptr), kCFNotFound);
    CFRelease(array);
}

}  // namespace
