// What a transform hands on: tables, modes, scratch and rectangles to the functions below it, blocks to its
// samplers.
#include <gtest/gtest.h>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/sample/RK_AreaSample.h"
#include "RK/indep/sample/RK_SubpixelSample.h"
#include "refhost/RefHost.h"
#include "test/Reports.h"
#include "test/SlotOverride.h"
#include "test/sample/TransformTest.h"

namespace {

using test::kIdentity;
using test::modeOf;
using test::rotation;
using test::scaling;
using test::SlotOverride;
using test::translation;

// Nothing below reads what they point at.
const char g_somewhere[64] = {};
const auto* const kTables = reinterpret_cast<const RK_LinearBlendingTables*>(g_somewhere);

template <class P>
class TransformArgument : public test::TransformTest<P> {};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(TransformArgument, Depths, );

// ---- Tables ---------------------------------------------------------------------------------------------

// A linear row that keeps the tables it was given and does what the plain row does.
template <class P, bool matte>
struct LinearSpy {
    static inline std::vector<const RK_LinearBlendingTables*> of_rows, of_plans;
    static RK_Long row(RK_Long count, const RK_BlendModeDescriptor<P>* plan,
                       const RK_LinearBlendingTables* tables, const P* src, const P* mask, P* out) {
        of_rows.push_back(tables);
        of_plans.push_back(plan->tables);
        RK_InnerBlendingFunc<P> plain;
        const RK_Long error = RK_GetInnerBlendingFunc<P, matte, false>(plan->mode.xfer, &plain);
        return error != 0 ? error : plain.func(count, plan, nullptr, src, mask, out);
    }
    static RK_Long find(RK_Long, RK_InnerBlendingFunc<P>* out) {
        out->func = &row;
        return 0;
    }
};
template <class P>
constexpr int kLinearRowSlot = sizeof(P) == 4   ? 100
                               : sizeof(P) == 8 ? 101
                                                : 102;

template <class P, bool matte, class Test>
void tablesReachRows(Test test) {
    using Spy = LinearSpy<P, matte>;
    Spy::of_rows.clear();
    Spy::of_plans.clear();
    const SlotOverride spy(kLinearRowSlot<P> + (matte ? 3 : 0), &Spy::find);
    test();
    ASSERT_FALSE(Spy::of_rows.empty());
    for (const auto* tables : Spy::of_rows) EXPECT_EQ(tables, kTables);
    for (const auto* tables : Spy::of_plans) EXPECT_EQ(tables, kTables);
}

TYPED_TEST(TransformArgument, TablesReachTheLinearRowsOfEveryPath) {
    const RK_CompositeMode mode = modeOf<TypeParam>(RK_Xfer_Multiply);
    const RK_TransformMask mask = {&this->src, 1, 1, RK_kMaskInvertedLuma};
    const std::vector<GEO_Matrix3> paths[] = {{rotation(8, 9, 6)},
                                              {translation(0.5, 0), translation(3.5, 1)},
                                              {rotation(0, 9, 6), rotation(8, 9, 6)}};
    for (const auto& matrices : paths) {
        for (const RK_TransformMask* const with : {static_cast<const RK_TransformMask*>(nullptr), &mask}) {
            const auto plain = this->copyOf(this->dst), linear = this->copyOf(this->dst);
            const auto draw = [&](const RK_LinearBlendingTables* tables, RK_World& to) {
                EXPECT_EQ(0, RK_TransformWorld(nullptr, RK_kBest, 0, 0, &this->src, &mode, tables, with,
                                               matrices.data(), static_cast<RK_Long>(matrices.size()), 1,
                                               nullptr, &to));
            };
            draw(nullptr, *plain);
            if (with != nullptr) {
                tablesReachRows<TypeParam, true>([&] { draw(kTables, *linear); });
            } else {
                tablesReachRows<TypeParam, false>([&] { draw(kTables, *linear); });
            }
            EXPECT_TRUE(this->same(*plain, *linear));
        }
    }
}

// ---- The hand-over of a translation ---------------------------------------------------------------------

struct Handed {
    int calls;
    RK_ProgressInfo* progress;
    void *reserved1, *reserved2;
    RK_Long field;
    GEO_Rect src_rect;
    const RK_LayerDef* src;
    RK_CompositeModePlus mode;
    const RK_LinearBlendingTables* tables;
    const RK_LayerDef* mask;
    int16_t mask_y, mask_x;
    uint32_t mask_kind;
    RK_BlendScratch* scratch;
    RK_Long x, y;
    RK_LayerDef* dst;
};
Handed g_handed;
RK_Long keepPlus(RK_ProgressInfo* progress, void* reserved1, void* reserved2, RK_Long field,
                 const GEO_Rect* src_rect, const RK_LayerDef* src, const RK_CompositeModePlus* mode,
                 const RK_LinearBlendingTables* tables, const RK_LayerDef* mask, RK_BlendScratch* scratch,
                 RK_Long x, RK_Long y, RK_LayerDef* dst) {
    const auto* const fields = reinterpret_cast<const RK_Mask*>(mask);
    g_handed = {g_handed.calls + 1,
                progress,
                reserved1,
                reserved2,
                field,
                *src_rect,
                src,
                *mode,
                tables,
                mask,
                fields != nullptr ? fields->mask_y : int16_t{0},
                fields != nullptr ? fields->mask_x : int16_t{0},
                fields != nullptr ? fields->mask_kind : 0u,
                scratch,
                x,
                y,
                dst};
    return 6543;
}
RK_Long keep(RK_ProgressInfo* progress, void* reserved1, void* reserved2, RK_Long field,
             const GEO_Rect* src_rect, const RK_LayerDef* src, const RK_CompositeModePlus* mode,
             const RK_LinearBlendingTables* tables, const RK_LayerDef* mask, RK_Long x, RK_Long y,
             RK_LayerDef* dst) {
    return keepPlus(progress, reserved1, reserved2, field, src_rect, src, mode, tables, mask, nullptr, x, y,
                    dst);
}

TYPED_TEST(TransformArgument, ATranslationHandsEverythingToTheTransferSlots) {
    const SlotOverride transfer(31, &keep), transfer_plus(47, &keepPlus);
    RK_BlendScratch own{};
    RK_ProgressInfo info{};
    const RK_TransformMask mask = {&this->src, 5, 7, RK_kMaskInvertedAlpha};
    const RK_CompositeMode mode = {RK_Xfer_Dissolve, 77, 51, 1, 6554};
    const GEO_Matrix3 m = translation(6, -3);
    const GEO_Rect rect = {0, 8, 5, 90};
    for (RK_BlendScratch* const scratch : {static_cast<RK_BlendScratch*>(nullptr), &own}) {
        g_handed = Handed{};
        EXPECT_EQ(6543, RK_TransformWorldPlus(&info, RK_kBest, 99, RK_kOddField, &this->src, &mode, kTables,
                                              &mask, scratch, &m, 1, 1, &rect, &this->dst));
        EXPECT_EQ(1, g_handed.calls);
        EXPECT_EQ(&info, g_handed.progress);
        EXPECT_EQ(nullptr, g_handed.reserved1);
        EXPECT_EQ(nullptr, g_handed.reserved2);
        EXPECT_EQ(RK_kOddField, g_handed.field);
        EXPECT_EQ(&this->src.record, g_handed.src);
        EXPECT_EQ(&this->dst.record, g_handed.dst);
        EXPECT_EQ(RK_Xfer_Dissolve, g_handed.mode.xfer);
        EXPECT_EQ(77, g_handed.mode.rand_seed);
        EXPECT_EQ(1, g_handed.mode.rgb_only);
        EXPECT_FLOAT_EQ(6554 / 32768.0f, g_handed.mode.opacity);
        EXPECT_EQ(kTables, g_handed.mode.tables);
        EXPECT_EQ(kTables, g_handed.tables);
        EXPECT_EQ(5, g_handed.mask_y);
        EXPECT_EQ(7, g_handed.mask_x);
        EXPECT_EQ(1u, g_handed.mask_kind);
        EXPECT_EQ(scratch, g_handed.scratch);
        // 5..27 by -4..12 in the destination, cut to the rectangle and the destination.
        EXPECT_EQ(8, g_handed.x);
        EXPECT_EQ(0, g_handed.y);
        EXPECT_EQ(2, g_handed.src_rect.left);
        EXPECT_EQ(3, g_handed.src_rect.top);
        EXPECT_EQ(18, g_handed.src_rect.right);
        EXPECT_EQ(8, g_handed.src_rect.bottom);
    }
    // A mask that is not inverted limits the rectangle first.
    const RK_TransformMask limiting = {&this->src, 5, 7, RK_kMaskLuma};
    g_handed = Handed{};
    EXPECT_EQ(6543, RK_TransformWorld(nullptr, RK_kBest, 0, 0, &this->src, &mode, nullptr, &limiting, &m, 1,
                                      1, nullptr, &this->dst));
    EXPECT_EQ(7, g_handed.x);
    EXPECT_EQ(5, g_handed.y);
    EXPECT_EQ(1, g_handed.src_rect.left);
    EXPECT_EQ(8, g_handed.src_rect.top);
    EXPECT_EQ(15, g_handed.src_rect.bottom);
}

// Which translations are transfers: whole ones at best quality, halves rounding as they do in 16.16; any at
// draft.
TYPED_TEST(TransformArgument, OnlyWholeTranslationsAreTransfersAtBestQuality) {
    const SlotOverride transfer(31, &keep);
    const auto isTransfer = [this](const GEO_Matrix3& m, RK_Long quality) {
        g_handed = Handed{};
        const auto to = this->copyOf(this->dst);
        this->draw({m}, *to, RK_Xfer_Over, quality);
        return g_handed.calls == 1;
    };
    for (const RK_Long quality : {RK_kDraft, RK_kBest, RK_Long{2}, RK_Long{-1}}) {
        const bool best = quality != RK_kDraft;
        EXPECT_TRUE(isTransfer(kIdentity, quality));
        EXPECT_TRUE(isTransfer(translation(3, -2), quality));
        EXPECT_EQ(!best, isTransfer(translation(3.5, -2), quality));
        EXPECT_EQ(!best, isTransfer(translation(3, -2.25), quality));
        EXPECT_EQ(!best, isTransfer(translation(3 + 1 / 65536.0, 0), quality));
        EXPECT_TRUE(isTransfer(translation(3 + 0.4 / 65536.0, 0), quality));
        EXPECT_EQ(!best, isTransfer(translation(3 + 0.5 / 65536.0, 0), quality));
        EXPECT_FALSE(isTransfer(scaling(1.0000001, 1), quality));
        EXPECT_FALSE(isTransfer({{{1, 0, 1e-9}, {0, 1, 0}, {3, 0, 1}}}, quality));
    }
    // With motion it never is.
    g_handed = Handed{};
    this->draw({translation(1, 0), translation(2, 0)}, this->dst);
    EXPECT_EQ(0, g_handed.calls);
}

TYPED_TEST(TransformArgument, ADraftTranslationRoundsHalvesUp) {
    const SlotOverride transfer(31, &keep);
    const auto place = [this](double x) {
        g_handed = Handed{};
        const auto to = this->copyOf(this->dst);
        this->draw({translation(x, 0)}, *to, RK_Xfer_Over, RK_kDraft);
        return g_handed.x - g_handed.src_rect.left;
    };
    EXPECT_EQ(3, place(2.5));
    EXPECT_EQ(2, place(2.49999));
    EXPECT_EQ(-2, place(-2.5));
    EXPECT_EQ(-3, place(-2.50002));
}

// ---- Blocks ---------------------------------------------------------------------------------------------

struct Seen {
    int calls;
    RK_SampPB pb;
    int32_t x, y;  // of the first
};
Seen g_seen;
template <class P>
RK_Long see(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, P* out) {
    EXPECT_EQ(nullptr, ref);
    if (g_seen.calls++ == 0) g_seen = {1, *pb, x, y};
    *out = P{};
    return 0;
}
TEST(TransformBlocks, AreaSamplersGetTheFootprintOfTheScale) {
    const SlotOverride area(5, &see<RK_Pixel8>);
    RK_WorldX<RK_Pixel8> src(300, 300, RK_kWorldClear), dst(40, 40, RK_kWorldClear);
    const RK_CompositeMode mode = modeOf<RK_Pixel8>(RK_Xfer_Over);
    const auto draw = [&](const GEO_Matrix3& m, RK_Long src2dst = 1) {
        g_seen = Seen{};
        EXPECT_EQ(0, RK_TransformWorld(nullptr, RK_kBest, 0, 0, &src, &mode, nullptr, nullptr, &m, 1,
                                       static_cast<uint8_t>(src2dst), nullptr, &dst));
        return g_seen;
    };
    Seen seen = draw(scaling(0.25, 0.5));
    EXPECT_EQ(40 * 40, seen.calls);
    EXPECT_EQ(2 * 0x10000, seen.pb.x_radius);
    EXPECT_EQ(1 * 0x10000, seen.pb.y_radius);
    EXPECT_EQ(8 * 0x10000, seen.pb.area);
    EXPECT_EQ(src.record.data, seen.pb.src->data);
    // The corner's centre: 0.5 in the destination is 2 in the source, less half a pixel.
    EXPECT_EQ(0x18000, seen.x);
    EXPECT_EQ(0x8000, seen.y);
    for (const uint32_t zero :
         {seen.pb.reserved1, seen.pb.reserved2, static_cast<uint32_t>(seen.pb.motion_samples)})
        EXPECT_EQ(0u, zero);
    EXPECT_EQ(nullptr, seen.pb.mask);
    EXPECT_EQ(nullptr, seen.pb.fcm_table);
    for (const uint32_t zero : seen.pb.reserved3) EXPECT_EQ(0u, zero);

    // The same picture, told the other way.
    const Seen other = draw(scaling(4, 2), 0);
    EXPECT_EQ(seen.pb.x_radius, other.pb.x_radius);
    EXPECT_EQ(seen.x, other.x);
    // Radii end at 127 source pixels, and the area where its number does.
    seen = draw(scaling(1 / 254.0, 1));
    EXPECT_EQ(127 * 0x10000, seen.pb.x_radius);
    EXPECT_EQ(0x8000, seen.pb.y_radius);
    EXPECT_EQ(254 * 0x10000, seen.pb.area);
    seen = draw(scaling(1 / 1000.0, 1 / 900.0));
    EXPECT_EQ(127 * 0x10000, seen.pb.x_radius);
    EXPECT_EQ(127 * 0x10000, seen.pb.y_radius);
    EXPECT_EQ(INT32_MAX, seen.pb.area);
    // Above 1/254 it has not come to that.
    EXPECT_EQ(GEO_RoundDouble(0.5 * 253 * 65536), draw(scaling(1 / 253.0, 1)).pb.x_radius);
    // Only where an axis shrinks.
    EXPECT_EQ(0, draw(scaling(1, 1.5)).calls);
    EXPECT_EQ(0, draw(rotation(30, 20, 20)).calls);
    EXPECT_EQ(40 * 40, draw(scaling(0.9999, 20)).calls);
}

TEST(TransformBlocks, ScalesThatRoundToNothingDrawNothing) {
    const SlotOverride area(5, &see<RK_Pixel8>);
    RK_WorldX<RK_Pixel8> src(9, 9, RK_kWorldClear), dst(9, 9, RK_kWorldClear);
    const RK_CompositeMode mode = modeOf<RK_Pixel8>(RK_Xfer_Over);
    const auto calls = [&](double scale) {
        g_seen = Seen{};
        const GEO_Matrix3 m = scaling(scale, 1);
        EXPECT_EQ(0, RK_TransformWorld(nullptr, RK_kBest, 0, 0, &src, &mode, nullptr, nullptr, &m, 1, 1,
                                       nullptr, &dst));
        return g_seen.calls;
    };
    EXPECT_EQ(0, calls(0.4999 / 65536));
    EXPECT_NE(0, calls(0.5 / 65536));
}

// ---- Slots ----------------------------------------------------------------------------------------------

int g_plus_calls;
RK_Long countPlus(RK_ProgressInfo*, RK_Long, RK_Long, RK_Long, const RK_World*, const RK_CompositeMode*,
                  const RK_LinearBlendingTables*, const RK_TransformMask*, RK_BlendScratch*,
                  const GEO_Matrix3*, RK_Long, uint8_t, const GEO_Rect*, RK_World*) {
    ++g_plus_calls;
    return 31;
}
TEST(TransformSlots, ThePlusFormCallsItsSlotWithWhatItWasGiven) {
    const SlotOverride plus(48, &countPlus);
    g_plus_calls = 0;
    EXPECT_EQ(31, RK_TransformWorldPlus(nullptr, 0, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr,
                                        nullptr, 0, 0, nullptr, nullptr));
    EXPECT_EQ(1, g_plus_calls);
}

// The bundle of samplers is read at the time of the call; float's is fixed.
template <class P>
int sampledThrough(int slot, const GEO_Matrix3& m) {
    const SlotOverride over(slot, &see<P>);
    RK_WorldX<P> src(30, 30, RK_kWorldClear), dst(30, 30, RK_kWorldClear);
    for (int32_t y = 0; y < 30; ++y)
        for (int32_t x = 0; x < 30; ++x)
            src.row(y)[x].alpha = static_cast<RK_Channel<P>>(RKp_Depth<P>::kFull);
    const RK_CompositeMode mode = modeOf<P>(RK_Xfer_Over);
    g_seen = Seen{};
    EXPECT_EQ(0, RK_TransformWorld(nullptr, RK_kBest, 0, 0, &src, &mode, nullptr, nullptr, &m, 1, 1, nullptr,
                                   &dst));
    return g_seen.calls;
}
TEST(TransformSlots, SamplersComeFromTheirSlotsAtTheTimeOfTheCall) {
    EXPECT_NE(0, sampledThrough<RK_Pixel8>(61, rotation(8, 15, 15)));
    EXPECT_NE(0, sampledThrough<RK_Pixel8>(5, scaling(0.3, 0.3)));
    EXPECT_NE(0, sampledThrough<RK_Pixel16>(71, rotation(8, 15, 15)));
    EXPECT_NE(0, sampledThrough<RK_Pixel16>(65, scaling(0.3, 0.3)));
    for (const int slot : {5, 61, 65, 71}) {
        EXPECT_EQ(0, sampledThrough<RK_PixelFloat>(slot, rotation(8, 15, 15)));
        EXPECT_EQ(0, sampledThrough<RK_PixelFloat>(slot, scaling(0.3, 0.3)));
    }
}

// A row of one fraction, all inside but its ends, is one call.
int g_spans;
RK_Long countSpan(void* ref, RK_Long count, int32_t x, int32_t y, const RK_SampPB* pb, int32_t* alpha_sum,
                  RK_Pixel8* out) {
    ++g_spans;
    return RK_SubpixelSpanSampleTranslateNoClip_Straight(ref, count, x, y, pb, alpha_sum, out);
}
TEST(TransformSlots, AFractionalTranslationIsOneSpanForEachRow) {
    const SlotOverride span(86, &countSpan), no_clip(61, &see<RK_Pixel8>);
    RK_WorldX<RK_Pixel8> src(30, 30, RK_kWorldClear), dst(40, 40, RK_kWorldClear);
    const RK_CompositeMode mode = modeOf<RK_Pixel8>(RK_Xfer_Over);
    const GEO_Matrix3 m = translation(5.25, 3.5);
    g_spans = 0;
    g_seen = Seen{};
    EXPECT_EQ(0, RK_TransformWorld(nullptr, RK_kBest, 0, 0, &src, &mode, nullptr, nullptr, &m, 1, 1, nullptr,
                                   &dst));
    EXPECT_EQ(29, g_spans);  // those of 30 rows whose both neighbours are inside
    EXPECT_EQ(0, g_seen.calls);
}

}  // namespace
