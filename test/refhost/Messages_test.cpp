#include "RK/host/KIT.h"

#include <gtest/gtest.h>

namespace {

const KIT_ZMessage kMessages[] = {
    {"$$$/Key/0=plain", {0, 0, 0}}, {"$$$/Key/1=can#{rsquo}t, won#{rsquo}t", {0, 0, 0}},
    {"$$$/Key/2=a = b", {0, 0, 0}}, {"no key at all", {0, 0, 0}},
    {"$$$/Key/4=", {0, 0, 0}},      {nullptr, {-1, -1, 0}},
};
const KIT_ZRef kTable = {"Test", 6, kMessages};

const char* shown(int32_t index) { return KIT_ZLookupLStrCache(&kTable, index, 0, 0); }

}  // namespace

TEST(HostMessages, ShowTheTextBehindTheFirstEqualsSign) {
    EXPECT_STREQ(shown(0), "plain");
    EXPECT_STREQ(shown(2), "a = b");
    EXPECT_STREQ(shown(3), "no key at all");
    EXPECT_STREQ(shown(4), "");
}

TEST(HostMessages, TurnEveryEscapeIntoAnApostrophe) { EXPECT_STREQ(shown(1), "can't, won't"); }

TEST(HostMessages, KeepTheirAddress) { EXPECT_EQ(shown(1), shown(1)); }

TEST(HostMessages, AreEmptyOutsideTheTable) {
    EXPECT_STREQ(shown(5), "");
    EXPECT_STREQ(shown(6), "");
    EXPECT_STREQ(shown(-1), "");
    EXPECT_STREQ(shown(INT32_MAX), "");
    EXPECT_STREQ(KIT_ZLookupLStrCache(nullptr, 0, 0, 0), "");
    const KIT_ZRef empty = {"Empty", 3, nullptr};
    EXPECT_STREQ(KIT_ZLookupLStrCache(&empty, 0, 0, 0), "");
}
