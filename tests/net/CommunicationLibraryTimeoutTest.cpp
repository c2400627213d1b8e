// The transfer's total limit, in a program of its own because it takes the
// whole two minutes of it.
#include <KORU/CommunicationLibrary.h>

#include "LoopbackServer.h"
#include "NetTestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>

TEST(TransferTimeout, AServerThatNeverAnswersFailsAtTheTotalLimit)
{
    NetTestFolder folder;
    NetTestFolder::WriteFile(folder.Path("request.xml"), "<wait/>");
    LoopbackServer silent([](const HttpRequest &) { return std::nullopt; });
    std::string reply = "untouched";
    EXPECT_EQ(4, CommunicationLibrary::CurlExternSecureDownload(silent.Url("/"), folder.Path("request.xml"),
                                                                folder.Path("reply.xml"), reply));
    EXPECT_EQ("untouched", reply);
    EXPECT_FALSE(std::filesystem::exists(folder.Path("reply.xml")));
    ASSERT_EQ(1u, silent.Requests().size());
    EXPECT_EQ("<wait/>", silent.Requests()[0].body);
    std::string log = folder.Log();
    EXPECT_NE(std::string::npos, log.find("Message: curlerrcode original: ErrorCode: 7168\n"));
    EXPECT_NE(std::string::npos, log.find("Message: curlerrcode: ErrorCode: 28\n"));
}
