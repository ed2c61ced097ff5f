#include <climits>
#include <cmath>

#include "RK/indep/composite/RKp_Modes.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "test/composite/ModeRows.h"

using namespace test;

namespace {

// A number too large for 32 bits, where long has more, whose low half is a mode.
constexpr RK_Long kBeyond32 = sizeof(RK_Long) > 4 ? static_cast<RK_Long>((int64_t{1} << 32) + RK_Xfer_Over)
                                                  : LONG_MAX;

template <class P>
struct PlanTest : ::testing::Test {};
TYPED_TEST_SUITE(PlanTest, Depths);

void expectRefusedReport(size_t times = 1) {
    const auto reports = RefHost::TakeReports();
    ASSERT_EQ(reports.size(), times);
    for (const auto& report : reports) {
        EXPECT_EQ(report.text, "unimplemented blending mode.");
        EXPECT_EQ(report.severity, 8);
        EXPECT_EQ(report.kind, RefHost::ReportKind::Error);
    }
}

}  // namespace

// ---- What is told of the modes --------------------------------------------------------------------------

TEST(TransferFlags, AreThoseOfTheModes) {
    EXPECT_EQ(RK_GetTransferFlags(-3), 1);
    EXPECT_EQ(RK_GetTransferFlags(-2), 0);
    EXPECT_EQ(RK_GetTransferFlags(-1), 0);
    EXPECT_EQ(RK_GetTransferFlags(8), 0);
    EXPECT_EQ(RK_GetTransferFlags(22), 1);
    EXPECT_EQ(RK_GetTransferFlags(25), 1);
    EXPECT_EQ(RK_GetTransferFlags(26), 0);
    // Modes -3 to 25, in order.
    const int flags[] = {1, 0, 0, 1, 1, 1, 0, 1, 1, 1, 1, 0, 1, 1, 1,
                         1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 1};
    for (int i = 0; i < 29; ++i) EXPECT_EQ(RK_GetTransferFlags(i - 3), flags[i]) << i - 3;
    for (int mode = 26; mode < 40; ++mode) EXPECT_EQ(RK_GetTransferFlags(mode), 0) << mode;
    for (RK_Long mode : {RK_Long{-4}, RK_Long{LONG_MIN}, RK_Long{LONG_MAX}, kBeyond32})
        EXPECT_EQ(RK_GetTransferFlags(mode), 0) << mode;
}

TEST(ModeInfo, TellsOfEveryModeAndOfNoOther) {
    RK_ModeInfo info = {"untouched", nullptr, RK_kModePlain, 7};
    for (RK_Long mode : {RK_Long{-4}, RK_Long{37}, kBeyond32}) EXPECT_EQ(RK_GetModeInfo(mode, &info), 3);
    EXPECT_STREQ(info.name, "untouched");
    EXPECT_EQ(RK_GetModeInfo(2, nullptr), 3);
    ASSERT_EQ(RK_GetModeInfo(2, &info), 0);
    EXPECT_STREQ(info.name, "Over");
    EXPECT_EQ(info.mode_class, RK_kModeGuard);
    EXPECT_EQ(info.flag, 1);
    ASSERT_EQ(RK_GetModeInfo(-1, &info), 0);
    EXPECT_EQ(info.mode_class, RK_kModeRefused);
    EXPECT_EQ(modes().size(), 39u);
    EXPECT_TRUE(RefHost::TakeReports().empty());
}

// ---- Records --------------------------------------------------------------------------------------------

TEST(CompositeModePlus, StoresEachArgument) {
    const auto* tables = reinterpret_cast<const RK_LinearBlendingTables*>(&kBeyond32);
    const RK_CompositeModePlus mode(RK_Xfer_HardMix, 0.25f, tables, true, -5);
    EXPECT_EQ(mode.xfer, RK_Xfer_HardMix);
    EXPECT_EQ(mode.opacity, 0.25f);
    EXPECT_EQ(mode.tables, tables);
    EXPECT_EQ(mode.rgb_only, 1);
    EXPECT_EQ(mode.rand_seed, -5);
    EXPECT_EQ(RK_CompositeModePlus(-3, 1.0f, nullptr, false, 0).rgb_only, 0);
    EXPECT_EQ(RK_CompositeModePlus(12345, 1.0f, nullptr, false, 0).xfer, 12345);
    EXPECT_EQ(RK_CompositeModePlus(-4, 1.0f, nullptr, false, 0).xfer, -4);
}

TEST(CompositeModePlus, NeverTakesANumberBeyond32BitsForAMode) {
    if (sizeof(RK_Long) == 4) return;
    EXPECT_EQ(RK_CompositeModePlus(kBeyond32, 1.0f, nullptr, false, 0).xfer, RK_Xfer_None);
    EXPECT_EQ(
        RK_CompositeModePlus(2, 1.0f, nullptr, false, static_cast<RK_Long>((int64_t{1} << 32) + 9)).rand_seed,
        9);
}

TEST(CompositeModePlus, TakesThe16BitOpacityUnlessTheFieldsDisagree) {
    const auto opacity = [](int o8, int o16) {
        return RK_CompositeModePlus(RK_CompositeMode{2, 0, uint8_t(o8), 0, uint16_t(o16)}).opacity;
    };
    EXPECT_EQ(opacity(128, 16384), 0.5f);
    EXPECT_EQ(opacity(128, 0), 128.0f / 255.0f);
    EXPECT_EQ(opacity(254, 32768), 1.0f);  // less than a step apart, in float
    EXPECT_EQ(opacity(253, 32768), 253.0f / 255.0f);
    EXPECT_EQ(opacity(0, 128), 128.0f * 3.0517578e-5f);
    EXPECT_EQ(opacity(0, 129), 0.0f);
    EXPECT_EQ(opacity(255, 32768), 1.0f);
    EXPECT_EQ(opacity(255, 65535), 1.0f);
}

TEST(CompositeModePlus, CopiesTheOtherFieldsOfAPlainRecord) {
    const RK_CompositeModePlus mode(RK_CompositeMode{RK_Xfer_Dissolve, -77, 255, 200, 32768});
    EXPECT_EQ(mode.xfer, RK_Xfer_Dissolve);
    EXPECT_EQ(mode.rand_seed, -77);
    EXPECT_EQ(mode.rgb_only, 1);
    EXPECT_EQ(RK_CompositeModePlus(RK_CompositeMode{2, 0, 255, 0, 32768}).rgb_only, 0);
}

TEST(BlendingMode, RoundsTheOpacityWithoutAClamp) {
    const auto opacity = [](float o, auto pixel) {
        return RK_MakeBlendingMode<decltype(pixel)>(RK_CompositeModePlus(2, o, nullptr, false, 0)).opacity;
    };
    EXPECT_EQ(opacity(1.0f, RK_Pixel8{}), 255);
    EXPECT_EQ(opacity(1.0f, RK_Pixel16{}), 32768);
    EXPECT_EQ(opacity(0.5f, RK_Pixel8{}), 128);  // 127.5 + 0.5
    EXPECT_EQ(opacity(0.4999f, RK_Pixel8{}), 127);
    EXPECT_EQ(opacity(0.0f, RK_Pixel16{}), 0);
    EXPECT_EQ(opacity(1.01f, RK_Pixel8{}), 2);
    EXPECT_EQ(opacity(1.01f, RK_Pixel16{}), 33096);
    EXPECT_EQ(opacity(-1.0f, RK_Pixel8{}), 2);  // -254 in eight bits
    EXPECT_EQ(opacity(NAN, RK_Pixel8{}), 0);
    EXPECT_EQ(opacity(1e30f, RK_Pixel16{}), 0);
    EXPECT_EQ(opacity(1.01f, RK_PixelFloat{}), 1.01f);
}

TEST(BlendingMode, NormalisesRgbOnly) {
    RK_CompositeModePlus mode(RK_Xfer_Over, 1.0f, nullptr, false, 44);
    mode.rgb_only = 0x80;
    const auto made = RK_MakeBlendingMode<RK_Pixel16>(mode);
    EXPECT_EQ(made.rgb_only, 1);
    EXPECT_EQ(made.xfer, RK_Xfer_Over);
    EXPECT_EQ(made.rand_seed, 44);
}

// ---- Plans ----------------------------------------------------------------------------------------------

TYPED_TEST(PlanTest, SetsFlagsAndScansByTheClass) {
    using P = TypeParam;
    const int scans = sizeof(P) == 4 ? 35 : sizeof(P) == 8 ? 72 : 106;
    for (const ModeName& m : modes()) {
        auto mode = blending<P>(m.number);
        const RK_BlendModeDescriptor<P> plan(mode, false, nullptr);
        const bool wrap = m.mode_class >= RK_kModeWrapBlack;
        EXPECT_EQ(plan.wrap_neutral, wrap) << m.name;
        EXPECT_EQ(plan.merge_alpha, wrap) << m.name;
        EXPECT_EQ(plan.over_first, m.mode_class == RK_kModeOverFirst) << m.name;
        EXPECT_EQ(plan.guard_alpha, m.mode_class != RK_kModePlain) << m.name;
        const int pair = scans + 2 * (m.mode_class - RK_kModeWrapBlack);
        EXPECT_EQ(reinterpret_cast<void*>(plan.pre_scan), wrap ? RKp_G_OverFuncs[pair] : nullptr) << m.name;
        EXPECT_EQ(reinterpret_cast<void*>(plan.post_scan), wrap ? RKp_G_OverFuncs[pair + 1] : nullptr)
            << m.name;
        EXPECT_EQ(reinterpret_cast<void*>(plan.alpha_merge), RKp_G_OverFuncs[scans + 6]) << m.name;
        EXPECT_EQ(plan.mode_func, rowOf<P>(m.number)) << m.name;
        EXPECT_EQ(plan.over_func, rowOf<P>(RK_Xfer_Behind)) << m.name;
        EXPECT_EQ(plan.tables, nullptr);
    }
    EXPECT_TRUE(RefHost::TakeReports().empty());
}

TYPED_TEST(PlanTest, HoldsEveryModeInItsClass) {
    using C = RK_ModeClass;
    const C P = RK_kModePlain, G = RK_kModeGuard, O = RK_kModeOverFirst, B = RK_kModeWrapBlack,
            W = RK_kModeWrapWhite, Y = RK_kModeWrapGrey, R = RK_kModeRefused;
    const C classes[] = {P, P, R, P, P, G, P, B, W, B, Y, Y, Y, W, B, B, O, O, O, O,
                         P, P, P, P, G, G, B, W, B, G, G, G, G, G, G, G, G, G, O, O};
    for (int i = 0; i < 40; ++i) {
        RK_ModeInfo info;
        ASSERT_EQ(RK_GetModeInfo(i - 3, &info), 0);
        EXPECT_EQ(info.mode_class, classes[i]) << info.name;
    }
}

TYPED_TEST(PlanTest, CopiesTheModeAndTakesTheVariantOfMatteAndTables) {
    using P = TypeParam;
    const auto* tables = reinterpret_cast<const RK_LinearBlendingTables*>(&kBeyond32);
    auto mode = blending<P>(RK_Xfer_Screen, RK_Channel<P>(1), true, -9);
    for (int index = 0; index < 4; ++index) {
        const bool linear = index & 1, matte = index & 2;
        const RK_BlendModeDescriptor<P> plan(mode, matte, linear ? tables : nullptr);
        EXPECT_EQ(plan.mode_func, rowOf<P>(RK_Xfer_Screen, matte, linear)) << index;
        EXPECT_EQ(plan.over_func, rowOf<P>(RK_Xfer_Behind, matte, linear)) << index;
        EXPECT_EQ(plan.tables, linear ? tables : nullptr);
        EXPECT_EQ(plan.mode.xfer, RK_Xfer_Screen);
        EXPECT_EQ(plan.mode.opacity, RK_Channel<P>(1));
        EXPECT_EQ(plan.mode.rgb_only, 1);
        EXPECT_EQ(plan.mode.rand_seed, -9);
    }
}

TYPED_TEST(PlanTest, ReadsItsFunctionsFromTheSlots) {
    using P = TypeParam;
    const int p = RKp_Depth<P>::kIndex;
    RKp_GetInnerBlendingFuncFunc<P>* const odd = [](RK_Long, RK_InnerBlendingFunc<P>* out) -> RK_Long {
        out->func = [](RK_Long, const RK_BlendModeDescriptor<P>*, const RK_LinearBlendingTables*, const P*,
                       const P*, P*) -> RK_Long { return 42; };
        return RK_kOK;
    };
    const int slot_of_index[] = {94 + p, 100 + p, 97 + p, 103 + p};
    const auto* tables = reinterpret_cast<const RK_LinearBlendingTables*>(&kBeyond32);
    for (int index = 0; index < 4; ++index) {
        void*& slot = RKp_G_OverFuncs[slot_of_index[index]];
        void* const held = slot;
        slot = reinterpret_cast<void*>(odd);
        auto mode = blending<P>(RK_Xfer_Add);
        const RK_BlendModeDescriptor<P> plan(mode, index & 2, index & 1 ? tables : nullptr);
        slot = held;
        EXPECT_EQ(plan.mode_func(1, &plan, nullptr, nullptr, nullptr, nullptr), 42) << index;
        EXPECT_EQ(plan.over_func(1, &plan, nullptr, nullptr, nullptr, nullptr), 42) << index;
    }
}

TYPED_TEST(PlanTest, IsMadeByTheSlotOfPlans) {
    using P = TypeParam;
    void*& slot = RKp_G_OverFuncs[117 - RKp_Depth<P>::kIndex];
    void* const held = slot;
    RKp_MakePlanFunc<P>* const own = [](RK_BlendModeDescriptor<P>* self, RK_BlendingMode<P>& mode,
                                        bool has_matte, const RK_LinearBlendingTables* tables) {
        RK_BlendModeDescriptor<P>::Make_S(self, mode, has_matte, tables);
        self->guard_alpha = 99;
    };
    EXPECT_EQ(held, reinterpret_cast<void*>(&RK_BlendModeDescriptor<P>::Make_S));
    slot = reinterpret_cast<void*>(own);
    auto mode = blending<P>(RK_Xfer_Add);
    const RK_BlendModeDescriptor<P> plan(mode, false, nullptr);
    slot = held;
    EXPECT_EQ(plan.guard_alpha, 99);
}

TYPED_TEST(PlanTest, ReportsARefusedModeOnceAndStaysWithoutClass) {
    using P = TypeParam;
    for (int32_t xfer : {-1, -4, 37, 38, INT32_MIN, INT32_MAX}) {
        auto mode = blending<P>(xfer);
        const RK_BlendModeDescriptor<P> plan(mode, true, nullptr);
        expectRefusedReport();
        EXPECT_EQ(plan.mode_func, nullptr);
        EXPECT_EQ(plan.over_func, rowOf<P>(RK_Xfer_Behind, true));
        EXPECT_EQ(plan.wrap_neutral + plan.over_first + plan.guard_alpha + plan.merge_alpha, 0);
        EXPECT_EQ(plan.pre_scan, nullptr);
        EXPECT_EQ(plan.post_scan, nullptr);
        EXPECT_EQ(plan.mode.xfer, xfer);
        P s = {}, d = {};
        EXPECT_EQ(RK_BlendPipeline<P>(nullptr, 1, &plan, &s, &s, nullptr, &d), 5);
    }
}

TYPED_TEST(PlanTest, ThrowsWhenALookupSlotIsEmpty) {
    using P = TypeParam;
    void*& slot = RKp_G_OverFuncs[94 + RKp_Depth<P>::kIndex];
    void* const held = slot;
    slot = nullptr;
    auto mode = blending<P>(RK_Xfer_Over);
    RK_Long thrown = 0;
    try {
        const RK_BlendModeDescriptor<P> plan(mode, false, nullptr);
    } catch (RK_Long code) {
        thrown = code;
    }
    slot = held;
    EXPECT_EQ(thrown, 3);
    const auto reports = RefHost::TakeReports();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].text, "Something went wrong attempting get the blending function.");
}

// ---- Lookups --------------------------------------------------------------------------------------------

TYPED_TEST(PlanTest, LookupsStandInTheirSlots) {
    using P = TypeParam;
    const int p = RKp_Depth<P>::kIndex;
    const auto address = [](auto* f) { return reinterpret_cast<void*>(f); };
    EXPECT_EQ(RKp_G_OverFuncs[94 + p], address(&RK_GetInnerBlendingFunc<P, false, false>));
    EXPECT_EQ(RKp_G_OverFuncs[97 + p], address(&RK_GetInnerBlendingFunc<P, true, false>));
    EXPECT_EQ(RKp_G_OverFuncs[100 + p], address(&RK_GetInnerBlendingFunc<P, false, true>));
    EXPECT_EQ(RKp_G_OverFuncs[103 + p], address(&RK_GetInnerBlendingFunc<P, true, true>));
}

TYPED_TEST(PlanTest, LookupsRefuseWhatIsNoMode) {
    using P = TypeParam;
    RK_RowFunc<P>* const before = rowOf<P>(RK_Xfer_Over);
    for (RK_Long mode :
         {RK_Long{-1}, RK_Long{-4}, RK_Long{37}, RK_Long{LONG_MIN}, RK_Long{LONG_MAX}, kBeyond32}) {
        RK_InnerBlendingFunc<P> f = {before};
        EXPECT_EQ((RK_GetInnerBlendingFunc<P, false, false>(mode, &f)), 5) << mode;
        EXPECT_EQ((RK_GetInnerBlendingFunc<P, true, false>(mode, &f)), 5) << mode;
        EXPECT_EQ((RK_GetInnerBlendingFunc<P, false, true>(mode, &f)), 5) << mode;
        EXPECT_EQ((RK_GetInnerBlendingFunc<P, true, true>(mode, &f)), 5) << mode;
        EXPECT_EQ(f.func, before);
        expectRefusedReport(4);
    }
    EXPECT_EQ((RK_GetInnerBlendingFunc<P, false, false>(RK_Xfer_Over, nullptr)), 3);
    EXPECT_TRUE(RefHost::TakeReports().empty());
}

TYPED_TEST(PlanTest, EveryRowFunctionDoesNothingForACountBelowOne) {
    using P = TypeParam;
    for (const ModeName& m : modes())
        for (int index = 0; index < 4; ++index) {
            auto mode = blending<P>(m.number);
            const RK_BlendModeDescriptor<P> plan(mode, false, nullptr);
            RK_RowFunc<P>* const row = rowOf<P>(m.number, index & 2, index & 1);
            P s = {1, 1, 1, 1}, d = {0, 1, 1, 0};
            for (RK_Long count : {RK_Long{0}, RK_Long{-1}, RK_Long{LONG_MIN}}) {
                EXPECT_EQ(row(count, &plan, nullptr, &s, &s, &d), 0) << m.name;
                EXPECT_EQ(row(count, &plan, nullptr, &s, nullptr, &d), 0) << m.name;
            }
            EXPECT_EQ(text(d), text(P{0, 1, 1, 0})) << m.name;
        }
    EXPECT_TRUE(RefHost::TakeReports().empty());
}

// ---- The linear columns ---------------------------------------------------------------------------------

TYPED_TEST(PlanTest, LinearRowsReportAndTouchNothingUntilThereAreCurves) {
    using P = TypeParam;
    for (const ModeName& m : modes()) {
        const bool replace_alike = m.number == RK_Xfer_Replace && sizeof(P) < 16;
        if (replace_alike || m.number == RK_Xfer_Copy) continue;
        for (const bool matte : {false, true}) {
            auto mode = blending<P>(m.number);
            const RK_BlendModeDescriptor<P> plan(mode, matte, nullptr);
            const P s = {1, 1, 0, 1};
            P d = {0, 1, 1, 0};
            EXPECT_EQ(rowOf<P>(m.number, matte, true)(1, &plan, nullptr, &s, &s, &d), 3) << m.name;
            EXPECT_EQ(text(d), text(P{0, 1, 1, 0})) << m.name;
            const auto reports = RefHost::TakeReports();
            ASSERT_EQ(reports.size(), 1u) << m.name;
            EXPECT_EQ(reports[0].text, "Invalid tables for linearized blending");
            EXPECT_EQ(reports[0].kind, RefHost::ReportKind::Verification);
        }
    }
}

TYPED_TEST(PlanTest, ReplaceHasTheSameRowsInTheLinearColumnsAtTheIntegerDepths) {
    using P = TypeParam;
    for (const bool matte : {false, true}) {
        const bool same = rowOf<P>(RK_Xfer_Replace, matte, true) == rowOf<P>(RK_Xfer_Replace, matte, false);
        EXPECT_EQ(same, sizeof(P) < 16);
    }
}

TYPED_TEST(PlanTest, CopyWorksInTheLinearColumnsAtEveryDepth) {
    using P = TypeParam;
    const auto* tables = reinterpret_cast<const RK_LinearBlendingTables*>(&kBeyond32);
    const P s = {kFull<P>, 1, 0, kFull<P>}, m = {0, 0, 0, 0};
    auto mode = blending<P>(RK_Xfer_Copy);
    const RK_BlendModeDescriptor<P> plan(mode, false, tables);
    P d = {};
    EXPECT_EQ(plan.mode_func(1, &plan, tables, &s, nullptr, &d), 0);
    EXPECT_EQ(text(d), text(s));
    EXPECT_EQ(rowOf<P>(RK_Xfer_Copy, true, true)(1, &plan, tables, &s, &m, &d), 0);
    EXPECT_EQ(text(d), text(P{0, 1, 0, kFull<P>}));
    EXPECT_TRUE(RefHost::TakeReports().empty());
}
