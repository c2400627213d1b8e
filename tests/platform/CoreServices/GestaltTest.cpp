#include <CoreServices/CoreServices.h>

#include <gtest/gtest.h>

TEST(Gestalt, AnswersSystemFactsAndTheProcesssOwnValues)
{
    const std::pair<OSType, SInt32> facts[] = {{gestaltSystemVersion, 0x1049},
                                               {gestaltSystemVersionMajor, 10},
                                               {gestaltSystemVersionMinor, 4},
                                               {gestaltSystemVersionBugFix, 9},
                                               {gestaltSysArchitecture, gestaltIntel}};
    for (const auto &fact : facts) {
        SInt32 value = -1;
        EXPECT_EQ(noErr, Gestalt(fact.first, &value));
        EXPECT_EQ(fact.second, value);
    }
    SInt32 untouched = 77;
    EXPECT_EQ(gestaltUndefSelectorErr, Gestalt(0x7A7A7A7A, &untouched));
    EXPECT_EQ(77, untouched);
    EXPECT_EQ(paramErr, Gestalt(gestaltSystemVersion, nullptr));

    // Values of the process's own.
    const OSType selector = 0x6B747374; // 'ktst'
    SInt32 value = 0;
    EXPECT_EQ(gestaltUndefSelectorErr, SetGestaltValue(selector, 1));
    EXPECT_EQ(noErr, NewGestaltValue(selector, 5));
    EXPECT_EQ(gestaltDupSelectorErr, NewGestaltValue(selector, 6));
    EXPECT_EQ(noErr, SetGestaltValue(selector, 7));
    EXPECT_EQ(noErr, Gestalt(selector, &value));
    EXPECT_EQ(7, value);
    EXPECT_EQ(noErr, DeleteGestaltValue(selector));
    EXPECT_EQ(gestaltUndefSelectorErr, Gestalt(selector, &value));
    EXPECT_EQ(gestaltUndefSelectorErr, DeleteGestaltValue(selector));
    EXPECT_EQ(noErr, ReplaceGestaltValue(selector, 9));
    EXPECT_EQ(noErr, Gestalt(selector, &value));
    EXPECT_EQ(9, value);
}
