#include <CoreServices/AEDataModel.h>
#include <CoreServices/MacErrors.h>

#include <gtest/gtest.h>

#include <cstring>

TEST(AEDataModelTest, DescriptorKeepsItsOwnCopyOfTheData)
{
    char text[] = "hello";
    AEDesc desc;
    ASSERT_EQ(noErr, AECreateDesc(typeChar, text, 5, &desc));
    text[0] = 'J';
    EXPECT_EQ(static_cast<DescType>(typeChar), desc.descriptorType);
    EXPECT_EQ(5, AEGetDescDataSize(&desc));

    char out[8];
    std::memset(out, '#', sizeof out);
    ASSERT_EQ(noErr, AEGetDescData(&desc, out, sizeof out));
    EXPECT_EQ(0, std::memcmp(out, "hello###", 8)); // only the data bytes are written

    char shortOut[3] = {0};
    ASSERT_EQ(noErr, AEGetDescData(&desc, shortOut, 2));
    EXPECT_EQ(0, std::memcmp(shortOut, "he\0", 3));

    AEDesc copy;
    ASSERT_EQ(noErr, AEDuplicateDesc(&desc, &copy));
    ASSERT_EQ(noErr, AEReplaceDescData(typeUTF8Text, "bye", 3, &desc));
    EXPECT_EQ(static_cast<DescType>(typeUTF8Text), desc.descriptorType);
    EXPECT_EQ(3, AEGetDescDataSize(&desc));
    EXPECT_EQ(5, AEGetDescDataSize(&copy));

    EXPECT_EQ(noErr, AEDisposeDesc(&desc));
    EXPECT_EQ(static_cast<DescType>(typeNull), desc.descriptorType);
    EXPECT_EQ(nullptr, desc.dataHandle);
    EXPECT_EQ(noErr, AEDisposeDesc(&desc)); // a null descriptor disposes harmlessly
    EXPECT_EQ(noErr, AEDisposeDesc(&copy));
}

TEST(AEDataModelTest, EmptyAndBadArguments)
{
    AEDesc empty;
    ASSERT_EQ(noErr, AECreateDesc(typeNull, nullptr, 0, &empty));
    EXPECT_EQ(0, AEGetDescDataSize(&empty));
    char out[1];
    EXPECT_EQ(noErr, AEGetDescData(&empty, out, sizeof out));
    AEDisposeDesc(&empty);

    AEDesc desc;
    EXPECT_EQ(paramErr, AECreateDesc(typeChar, nullptr, 4, &desc));
    EXPECT_EQ(static_cast<DescType>(typeNull), desc.descriptorType);
    EXPECT_EQ(paramErr, AECreateDesc(typeChar, "x", -1, &desc));
    EXPECT_EQ(paramErr, AECreateDesc(typeChar, "x", 1, nullptr));
    EXPECT_EQ(paramErr, AEGetDescData(nullptr, out, 1));
    EXPECT_EQ(paramErr, AEGetDescData(&desc, nullptr, 1));
    EXPECT_EQ(0, AEGetDescDataSize(nullptr));
    EXPECT_EQ(paramErr, AEDisposeDesc(nullptr));
    EXPECT_EQ(paramErr, AEDuplicateDesc(nullptr, &desc));
}
