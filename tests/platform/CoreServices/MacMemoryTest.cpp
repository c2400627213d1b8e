#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

TEST(MacMemory, HandlesKeepTheirBytesAndRefuseBadArguments)
{
    Handle h = NewHandle(4);
    ASSERT_NE(nullptr, h);
    ASSERT_NE(nullptr, *h);
    std::memcpy(*h, "abcd", 4);
    SetHandleSize(h, 100000);
    ASSERT_EQ(noErr, MemError());
    EXPECT_EQ(100000, GetHandleSize(h));
    EXPECT_EQ(0, std::memcmp(*h, "abcd", 4));
    EXPECT_EQ(0, (*h)[99999]);
    SetHandleSize(h, 2);
    EXPECT_EQ(0, std::memcmp(*h, "ab", 2));

    Handle copy = h;
    ASSERT_EQ(noErr, HandToHand(&copy));
    EXPECT_NE(h, copy);
    EXPECT_EQ(2, GetHandleSize(copy));
    DisposeHandle(copy);
    DisposeHandle(h);

    Handle clear = NewHandleClear(16);
    EXPECT_EQ(std::string(16, '\0'), std::string(*clear, 16));
    DisposeHandle(clear);
    Ptr p = NewPtrClear(10);
    ASSERT_NE(nullptr, p);
    EXPECT_EQ(std::string(10, '\0'), std::string(p, 10));
    EXPECT_EQ(10, GetPtrSize(p));
    DisposePtr(p);

    // Bad arguments are reported, not followed.
    EXPECT_EQ(nullptr, NewHandle(-1));
    EXPECT_EQ(memFullErr, MemError());
    EXPECT_EQ(0, GetHandleSize(nullptr));
    EXPECT_EQ(nilHandleErr, MemError());
    SetHandleSize(nullptr, 10);
    DisposeHandle(nullptr);
    EXPECT_EQ(nilHandleErr, MemError());
    Handle none = nullptr;
    EXPECT_EQ(paramErr, PtrToHand(nullptr, &none, 5));
    EXPECT_EQ(nullptr, none);
    EXPECT_EQ(paramErr, HandToHand(nullptr));
    DisposePtr(nullptr);
}

} // namespace
