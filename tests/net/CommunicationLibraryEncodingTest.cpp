#include <KORU/CommunicationLibrary.h>

#include <gtest/gtest.h>

TEST(CommunicationLibraryEncoding, EncodeUrlEscapesEveryByteOutsideTheURLSet)
{
    EXPECT_EQ("", CommunicationLibrary::EncodeUrl(""));
    EXPECT_EQ("a%20b%25c", CommunicationLibrary::EncodeUrl("a b%c"));
    std::string kept = "azAZ09-_.+!*'(),;/?:@=&";
    EXPECT_EQ(kept, CommunicationLibrary::EncodeUrl(kept));
    EXPECT_EQ("%23%22%3C%3E%5C%5E%60%7B%7C%7D%7E%5B%5D%24", CommunicationLibrary::EncodeUrl("#\"<>\\^`{|}~[]$"));
    // Each byte of a UTF-8 sequence on its own, and control bytes too.
    EXPECT_EQ("caf%C3%A9%0A%0D%09%00%7F%FF",
              CommunicationLibrary::EncodeUrl(std::string("caf\xc3\xa9\n\r\t\0\x7f\xff", 11)));
    EXPECT_EQ("%2520", CommunicationLibrary::EncodeUrl("%20"));
}

TEST(CommunicationLibraryEncoding, EncodeFormValueWritesSpacesAsPlusAndLineFeedsAsCRLF)
{
    EXPECT_EQ("", CommunicationLibrary::EncodeFormValue(""));
    EXPECT_EQ("a+b%25c", CommunicationLibrary::EncodeFormValue("a b%c"));
    EXPECT_EQ("%0D%0A", CommunicationLibrary::EncodeFormValue("\n"));
    EXPECT_EQ("%09", CommunicationLibrary::EncodeFormValue("\t"));
    EXPECT_EQ("%0D%0D%0A", CommunicationLibrary::EncodeFormValue("\r\n"));
    // A plus sign stays, so it reads like an encoded space.
    EXPECT_EQ("1+1+=+2", CommunicationLibrary::EncodeFormValue("1+1 = 2"));
    EXPECT_EQ("Ren%C3%A9+&+co", CommunicationLibrary::EncodeFormValue("Ren\xc3\xa9 & co"));
}
