#include <SystemConfiguration/SystemConfiguration.h>

#include <gtest/gtest.h>

TEST(Reachability, LoopbackIsReachableAndLocalWithoutAConnection)
{
    for (const char *name : {"127.0.0.1", "localhost", "::1"}) {
        SCOPED_TRACE(name);
        SCNetworkConnectionFlags flags = 0xFFFF;
        ASSERT_TRUE(SCNetworkCheckReachabilityByName(name, &flags));
        EXPECT_EQ(kSCNetworkFlagsReachable | kSCNetworkFlagsIsLocalAddress, flags);
    }
}

TEST(Reachability, ANameThatDoesNotResolveNeedsAConnection)
{
    SCNetworkConnectionFlags flags = 0;
    ASSERT_TRUE(SCNetworkCheckReachabilityByName("nowhere.invalid", &flags));
    EXPECT_EQ(kSCNetworkFlagsConnectionRequired, flags);
}

TEST(Reachability, NoNameIsAnError)
{
    SCNetworkConnectionFlags flags = 0xFFFF;
    EXPECT_FALSE(SCNetworkCheckReachabilityByName(NULL, &flags));
    EXPECT_EQ(0u, flags);
    flags = 0xFFFF;
    EXPECT_FALSE(SCNetworkCheckReachabilityByName("", &flags));
    EXPECT_EQ(0u, flags);
    EXPECT_FALSE(SCNetworkCheckReachabilityByName("localhost", NULL));
}
