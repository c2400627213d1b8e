#include <SystemConfiguration/SystemConfiguration.h>

#include <gtest/gtest.h>

TEST(Reachability, LoopbackIsLocalAndAnUnknownNameNeedsAConnection)
{
    for (const char *name : {"127.0.0.1", "localhost", "::1"}) {
        SCNetworkConnectionFlags flags = 0xFFFF;
        ASSERT_TRUE(SCNetworkCheckReachabilityByName(name, &flags)) << name;
        EXPECT_EQ(kSCNetworkFlagsReachable | kSCNetworkFlagsIsLocalAddress, flags) << name;
    }
    SCNetworkConnectionFlags flags = 0;
    ASSERT_TRUE(SCNetworkCheckReachabilityByName("nowhere.invalid", &flags));
    EXPECT_EQ(kSCNetworkFlagsConnectionRequired, flags);
}

TEST(Reachability, NoNameIsAnError)
{
    for (const char *name : {static_cast<const char *>(nullptr), ""}) {
        SCNetworkConnectionFlags flags = 0xFFFF;
        EXPECT_FALSE(SCNetworkCheckReachabilityByName(name, &flags));
        EXPECT_EQ(0u, flags);
    }
    EXPECT_FALSE(SCNetworkCheckReachabilityByName("localhost", NULL));
}
