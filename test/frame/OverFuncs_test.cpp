#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <string>

#include "RK/indep/frame/RKp_SlotBodies.h"

namespace {

RK_Long replacement() { return 0; }
void* const kReplacement = reinterpret_cast<void*>(&replacement);

// The table as the other tests know it comes back whatever this one does.
class OverFuncs : public testing::Test {
  protected:
    OverFuncs() { std::copy_n(RKp_G_OverFuncs, RK_kSlotCount, table_); }
    ~OverFuncs() override { std::copy_n(table_, RK_kSlotCount, RKp_G_OverFuncs); }
    bool unchanged() const { return std::equal(table_, table_ + RK_kSlotCount, RKp_G_OverFuncs); }
    void* table_[RK_kSlotCount];
};

}  // namespace

TEST_F(OverFuncs, IndexesOutside1To117AreRefusedAndChangeNothing) {
    const RK_Long outside[] = {0, 118, 119, -1, -117, 1000000, RK_Long{-2147483647} - 1};
    for (RK_Long index : outside) {
        EXPECT_EQ(RK_SetOverrideFunc(index, kReplacement), 3) << index;
        EXPECT_TRUE(unchanged()) << index;
    }
}

TEST_F(OverFuncs, EveryIndexFrom1To117IsAccepted) {
    for (RK_Long index = 1; index < 118; ++index) {
        EXPECT_EQ(RK_SetOverrideFunc(index, kReplacement), 0) << index;
        EXPECT_EQ(RKp_G_OverFuncs[index], kReplacement) << index;
    }
    EXPECT_EQ(RKp_G_OverFuncs[0], nullptr);
}

TEST_F(OverFuncs, AFunctionIsNotCheckedNullIsWrittenToo) {
    EXPECT_EQ(RK_SetOverrideFunc(53, nullptr), 0);
    EXPECT_EQ(RKp_G_OverFuncs[53], nullptr);
}

TEST_F(OverFuncs, InfoTellsOfDefaultsVariantsAndOverrides) {
    RK_SlotInfo info = {};
    RKp_FillOverFuncs(false, false);
    ASSERT_EQ(RK_GetSlotInfo(53, &info), 0);
    EXPECT_STREQ(info.name, "IterateGeneric");
    EXPECT_EQ(info.form, RK_kSlotDefault);
    RK_SetOverrideFunc(53, kReplacement);
    ASSERT_EQ(RK_GetSlotInfo(53, &info), 0);
    EXPECT_EQ(info.form, RK_kSlotOverride);
    RK_SetOverrideFunc(53, nullptr);
    ASSERT_EQ(RK_GetSlotInfo(53, &info), 0);
    EXPECT_EQ(info.form, RK_kSlotEmpty);
}

TEST_F(OverFuncs, InfoTellsOfSlotsWithoutAFunction) {
    for (RK_Long index : {0, 1, 11, 29, 49, 91}) {
        RK_SlotInfo info = {"", RK_kSlotDefault, true, true};
        RKp_G_OverFuncs[index] = nullptr;
        ASSERT_EQ(RK_GetSlotInfo(index, &info), 0);
        EXPECT_STREQ(info.name, "");
        EXPECT_EQ(info.form, RK_kSlotEmpty);
        EXPECT_FALSE(info.has_sse2_form);
        EXPECT_FALSE(info.has_ssse3_form);
        RKp_G_OverFuncs[index] = kReplacement;
        ASSERT_EQ(RK_GetSlotInfo(index, &info), 0);
        EXPECT_EQ(info.form, RK_kSlotOverride);
    }
}

TEST_F(OverFuncs, InfoRefusesOtherIndexesAndANullRecord) {
    RK_SlotInfo info = {"kept", RK_kSlotSSE2, true, false};
    EXPECT_EQ(RK_GetSlotInfo(-1, &info), 3);
    EXPECT_EQ(RK_GetSlotInfo(118, &info), 3);
    EXPECT_EQ(RK_GetSlotInfo(53, nullptr), 3);
    EXPECT_STREQ(info.name, "kept");
    EXPECT_EQ(info.form, RK_kSlotSSE2);
}

TEST_F(OverFuncs, NamesAreUnique) {
    std::set<std::string> names;
    for (RK_Long index = 0; index < RK_kSlotCount; ++index) {
        RK_SlotInfo info;
        ASSERT_EQ(RK_GetSlotInfo(index, &info), 0);
        EXPECT_TRUE(info.name[0] == '\0' || names.insert(info.name).second) << info.name;
    }
}

TEST_F(OverFuncs, FillingLeavesSlotsWithoutAFunctionAlone) {
    RKp_G_OverFuncs[0] = RKp_G_OverFuncs[1] = RKp_G_OverFuncs[91] = kReplacement;
    RKp_FillOverFuncs(true, true);
    EXPECT_EQ(RKp_G_OverFuncs[0], kReplacement);
    EXPECT_EQ(RKp_G_OverFuncs[1], kReplacement);
    EXPECT_EQ(RKp_G_OverFuncs[91], kReplacement);
}

// The default first, then what each flag allows: a slot with both forms holds the second where both may run.
TEST_F(OverFuncs, TheTwoFlagsPickIndependently) {
    for (const bool has_sse2 : {false, true}) {
        for (const bool has_ssse3 : {false, true}) {
            RKp_FillOverFuncs(has_sse2, has_ssse3);
#define RK_SLOT(number, name, type, body, sse2, ssse3)                                \
    {                                                                                 \
        type *b = body, *v2 = sse2, *v3 = ssse3;                                      \
        type* wanted = has_ssse3 && v3 ? v3 : has_sse2 && v2 ? v2 : b;                \
        EXPECT_EQ(RKp_G_OverFuncs[number], reinterpret_cast<void*>(wanted)) << #name; \
        EXPECT_EQ(RKp_Slot<number>(), wanted) << #name;                               \
        EXPECT_EQ(RKp_kSlot_##name, number);                                          \
    }
#include "RK/indep/frame/RKp_Slots.def"
        }
    }
}
