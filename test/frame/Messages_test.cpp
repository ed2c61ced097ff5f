#include "RK/indep/frame/RK_Messages.h"

#include <gtest/gtest.h>

#include <string>

#include "RK/indep/frame/RKp_Report.h"

namespace {

const char* const kTexts[RK_kMsgCount] = {"invalid callback selector",
                                          "invalid parameter",
                                          "effects modules should only dispose worlds they have allocated",
                                          "image plane buffer",
                                          "bad parameter passed to effect callback",
                                          "problem opening plug-in acceleration module.",
                                          "unimplemented blending mode.",
                                          "noise table.",
                                          "Unable to guess alpha channel.",
                                          "Obsolete routine",
                                          "memory for blurring",
                                          "memory for mask buffer",
                                          "damaged mask buffer",
                                          "can#{rsquo}t unlock RK Mask Buffer",
                                          "gaussian weight array",
                                          "blending scratch buffer",
                                          "can#{rsquo}t copy different channel worlds",
                                          "out of memory for channel chunk",
                                          "image buffer",
                                          "effect plug-in passed invalid world to get_platform_refs"};

}  // namespace

TEST(Messages, HoldsTwentyEntriesOfKeyEqualsTextAndAnEnd) {
    ASSERT_NE(RK_G_zref, nullptr);
    EXPECT_STREQ(RK_G_zref->package, "RK");
    ASSERT_EQ(RK_G_zref->count, 21);
    for (int i = 0; i < RK_kMsgCount; ++i) {
        const KIT_ZMessage& entry = RK_G_zref->messages[i];
        const std::string number = std::to_string(i);
        const std::string key = "$$$/RV/RK/LStr/" + std::string(4 - number.size(), '0') + number;
        EXPECT_EQ(entry.text, key + "=" + kTexts[i]);
        for (intptr_t word : entry.words) EXPECT_EQ(word, 0) << i;
    }
    const KIT_ZMessage& end = RK_G_zref->messages[20];
    EXPECT_EQ(end.text, nullptr);
    EXPECT_EQ(end.words[0], -1);
    EXPECT_EQ(end.words[1], -1);
}

// 16 bytes an entry where a word is 4.
TEST(Messages, EntriesAreFourWords) { EXPECT_EQ(sizeof(KIT_ZMessage), 4 * sizeof(void*)); }

TEST(Messages, AreShownWithoutTheirKeysAndEscapes) {
    EXPECT_STREQ(RKp_Text(RK_kMsg_BadParameter), "bad parameter passed to effect callback");
    EXPECT_STREQ(RKp_Text(RK_kMsg_CannotUnlockMask), "can't unlock RK Mask Buffer");
    EXPECT_STREQ(RKp_Text(RK_kMsg_DifferentChannelWorlds), "can't copy different channel worlds");
    EXPECT_STREQ(RKp_Text(RK_kMsg_UnimplementedMode), "unimplemented blending mode.");
}
