// Which way a transform goes: at rest or in motion, linear or general, and what becomes of its rows.
#include <gtest/gtest.h>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/sample/RK_SubpixelSample.h"
#include "refhost/RefHost.h"
#include "test/Reports.h"
#include "test/SlotOverride.h"
#include "test/sample/TransformTest.h"
#include "test/world/OddWorld.h"

namespace {

using test::kIdentity;
using test::modeOf;
using test::rotation;
using test::scaling;
using test::SlotOverride;
using test::translation;

// ---- Spies ----------------------------------------------------------------------------------------------

// What the 8-bit samplers were asked for. The destination has one pixel that counts: samples are those of its
// row.
struct Asked {
    int clipped, translated, weights, area;
    std::vector<int32_t> x;  // of both, as they came
};
Asked g_asked;
RK_Long clipped(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, RK_Pixel8* out) {
    ++g_asked.clipped;
    g_asked.x.push_back(x);
    return RK_SubpixelSample_Straight(ref, x, y, pb, out);
}
RK_Long translated(void* ref, int32_t x, int32_t y, const double weights[4], const RK_SampPB* pb,
                   RK_Pixel8* out) {
    ++g_asked.translated;
    g_asked.x.push_back(x);
    return RK_SubpixelSampleTranslateNoClip_Straight(ref, x, y, weights, pb, out);
}
RK_Long weigh(uint16_t x, uint16_t y, double weights[4]) {
    ++g_asked.weights;
    return RK_SubpixelSampleComputeWeight(x, y, weights);
}
RK_Long area(void*, int32_t, int32_t, const RK_SampPB*, RK_Pixel8* out) {
    ++g_asked.area;
    *out = {};
    return 0;
}

// One destination pixel of a 60 by 60 source; `at` is its place.
class TransformPath : public testing::Test {
  protected:
    TransformPath()
        : src(60, 60, RK_kWorldClear),
          dst(100, 100, RK_kWorldClear),
          on3(3, &clipped),
          on58(58, &translated),
          on57(57, &weigh),
          on5(5, &area) {
        test::Random r(1);
        for (int32_t y = 0; y < 60; ++y)
            for (int32_t x = 0; x < 60; ++x) src.row(y)[x] = test::pixel<RK_Pixel8>(r);
    }
    Asked drawOne(const std::vector<GEO_Matrix3>& series, int16_t at = 30, RK_Long quality = RK_kBest) {
        const RK_CompositeMode mode = modeOf<RK_Pixel8>(RK_Xfer_Over);
        const GEO_Rect one = {at, at, static_cast<int16_t>(at + 1), static_cast<int16_t>(at + 1)};
        g_asked = {};
        EXPECT_EQ(0, RK_TransformWorld(nullptr, quality, 0, 0, &src, &mode, nullptr, nullptr, series.data(),
                                       static_cast<RK_Long>(series.size()), 1, &one, &dst));
        return g_asked;
    }
    // How many samples one pixel takes: one fewer than there are matrices on the linear path.
    int samples(const std::vector<GEO_Matrix3>& series) {
        const Asked asked = drawOne(series);
        return asked.clipped + asked.translated + asked.area;
    }
    RK_WorldX<RK_Pixel8> src, dst;
    SlotOverride on3, on58, on57, on5;
};

TEST_F(TransformPath, EvenMotionIsLinearAndUnevenMotionGeneral) {
    EXPECT_EQ(2, samples({translation(0.5, 0), translation(2.5, 1), translation(4.5, 2)}));
    // Steps may differ by less than nine tenths of a pixel either way.
    EXPECT_EQ(2, samples({translation(0.5, 0), translation(2.5, 0), translation(5.39, 0)}));
    EXPECT_EQ(3, samples({translation(0.5, 0), translation(2.5, 0), translation(5.41, 0)}));
    EXPECT_EQ(2, samples({translation(0.5, 0), translation(2.5, 0), translation(3.61, 0)}));
    EXPECT_EQ(3, samples({translation(0.5, 0), translation(2.5, 0), translation(3.59, 0)}));
    EXPECT_EQ(2, samples({translation(0.5, 0), translation(0.5, 2), translation(0.5, 4.89)}));
    EXPECT_EQ(3, samples({translation(0.5, 0), translation(0.5, 2), translation(0.5, 4.91)}));
    // Each step counts against the first one.
    EXPECT_EQ(5, samples({translation(0.5, 0), translation(2.5, 0), translation(4.5, 0), translation(6.5, 0),
                          translation(9.5, 0)}));
    // Two matrices have one step.
    EXPECT_EQ(1, samples({translation(0.5, 0), translation(9.5, 3)}));
}
TEST_F(TransformPath, TurningIsGeneralAndGrowingIsNot) {
    const auto turned = [](double degrees) { return rotation(degrees, 30, 30); };
    EXPECT_EQ(3, samples({turned(1), turned(2), turned(3)}));
    EXPECT_EQ(2, samples({scaling(1, 1), scaling(1.01, 1.02), scaling(1.02, 1.04)}));
    EXPECT_EQ(3, samples({scaling(1, 1), scaling(-1, 1), scaling(-1.1, 1)}));
    // A twist of less than a billionth of a billionth is none.
    const GEO_Matrix3 twist = {{{1, 9e-13, 0}, {0, 1, 0}, {2, 0, 1}}},
                      more = {{{1, 1.1e-12, 0}, {0, 1, 0}, {2, 0, 1}}};
    EXPECT_EQ(2, samples({kIdentity, translation(1, 0), twist}));
    EXPECT_EQ(3, samples({kIdentity, translation(1, 0), more}));
}
TEST_F(TransformPath, DraftMotionIsLinearAlways) {
    const auto same = [this](const std::vector<GEO_Matrix3>& a, const std::vector<GEO_Matrix3>& b) {
        const RK_CompositeMode mode = modeOf<RK_Pixel8>(RK_Xfer_Copy);
        RK_WorldX<RK_Pixel8> one(60, 60, RK_kWorldClear), other(60, 60, RK_kWorldClear);
        for (const auto& [series, to] : {std::make_pair(a, &one), std::make_pair(b, &other)})
            EXPECT_EQ(
                0, RK_TransformWorld(nullptr, RK_kDraft, 0, 0, &src, &mode, nullptr, nullptr, series.data(),
                                     static_cast<RK_Long>(series.size()), 1, nullptr, to));
        for (int32_t y = 10; y < 50; ++y)
            if (std::memcmp(one.row(y) + 10, other.row(y) + 10, 40 * 4) != 0) return false;
        return true;
    };
    // What lies between is not looked at.
    EXPECT_TRUE(same({translation(1, 0), translation(9, 0), translation(3, 0)},
                     {translation(1, 0), translation(2, 0), translation(3, 0)}));
}
TEST_F(TransformPath, MatricesThatDifferByNoMoreThanABillionthOfAThousandthAreOne) {
    g_asked = {};
    const GEO_Matrix3 near = {{{1.5, 0, 0}, {0, 1.5, 0}, {0, 1e-12, 1}}},
                      far = {{{1.5, 0, 0}, {0, 1.5, 0}, {0, 1.1e-12, 1}}};
    drawOne({scaling(1.5, 1.5), scaling(3, 3), near});
    EXPECT_EQ(0, g_asked.clipped + g_asked.translated);  // one Plus sample at rest
    drawOne({scaling(1.5, 1.5), scaling(1.5, 1.5), far});
    EXPECT_NE(0, g_asked.clipped + g_asked.translated);
}

TEST_F(TransformPath, GeneralMotionSamplesTheLastMatrixFirst) {
    const Asked asked = drawOne({translation(0, 0), translation(2, 0), translation(9, 0), translation(3, 0)});
    const std::vector<int32_t> wanted = {27 << 16, 21 << 16, 28 << 16, 30 << 16};
    EXPECT_EQ(asked.x, wanted);
}
TEST_F(TransformPath, LinearMotionStepsTowardZeroAndStopsBeforeTheLast) {
    // From 30 by 9.5 to the left; the third of the way is truncated.
    const Asked asked =
        drawOne({translation(0, 0), translation(3, 0), translation(6, 0), translation(9.5, 0)});
    const int32_t from = 30 << 16, step = (19 << 16) / 2 / 3;
    const std::vector<int32_t> wanted = {from, from - step, from - 2 * step};
    EXPECT_EQ(asked.x, wanted);
}
TEST_F(TransformPath, ASlideWeighsItsSamplesOnceForEachRow) {
    const std::vector<GEO_Matrix3> slide = {translation(0.5, 0.25), translation(1.5, 0.5),
                                            translation(2.5, 0.75), translation(3.5, 1)};
    const Asked inside = drawOne(slide);
    EXPECT_EQ(3, inside.weights);
    EXPECT_EQ(3, inside.translated);
    EXPECT_EQ(0, inside.clipped);
    // At the source's edge those that reach over it are clipped.
    const Asked edge = drawOne(slide, 61);
    EXPECT_EQ(3, edge.weights);
    EXPECT_GT(edge.clipped, 0);
    // Many pixels of a row share them.
    const RK_CompositeMode mode = modeOf<RK_Pixel8>(RK_Xfer_Over);
    const GEO_Rect rows = {20, 10, 24, 40};
    g_asked = {};
    EXPECT_EQ(0, RK_TransformWorld(nullptr, RK_kBest, 0, 0, &src, &mode, nullptr, nullptr, slide.data(), 4, 1,
                                   &rows, &dst));
    EXPECT_EQ(4 * 3, g_asked.weights);
    EXPECT_EQ(4 * 30 * 3, g_asked.translated);
    // Anything but unit steps is sampled as it comes, and a reduction by area.
    EXPECT_EQ(0, drawOne({scaling(1.5, 1), scaling(1.6, 1)}).weights);
    const Asked reduced = drawOne({scaling(0.5, 1), scaling(0.6, 1), scaling(0.7, 1)}, 15);
    EXPECT_EQ(2, reduced.area);
    EXPECT_EQ(0, reduced.clipped + reduced.translated);
}
// In a turn one matrix that reduces makes every sample an area; on the linear path the first decides.
TEST_F(TransformPath, OneReducingMatrixOfATurnDecidesForAll) {
    GEO_Matrix3 small = rotation(5, 30, 30);
    for (auto& row : small.m) row[0] *= 0.9, row[1] *= 0.9;
    EXPECT_EQ(3, drawOne({rotation(0, 30, 30), rotation(2, 30, 30), small}).area);
    EXPECT_EQ(0, drawOne({rotation(0, 30, 30), rotation(2, 30, 30), rotation(5, 30, 30)}).area);
    EXPECT_EQ(0, drawOne({scaling(1, 1.5), scaling(0.9, 1.4), scaling(0.8, 1.3)}).area);
}

// ---- Rows -----------------------------------------------------------------------------------------------

template <class P>
class TransformRow : public test::TransformTest<P> {};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(TransformRow, Depths, );

// Every mode leaves the destination where a row has no alpha, but for the four that act on nothing. Copy and
// MatteMix are not among them.
TYPED_TEST(TransformRow, AnEmptyRowIsLeftAloneButByFourModes) {
    this->src.Clear(nullptr);
    const RK_TransformMask mask = {&this->dst, 0, 0, RK_kMaskInvertedAlpha};
    for (int32_t xfer = RK_kFirstMode; xfer <= RK_kLastMode; ++xfer) {
        if (xfer == RK_Xfer_None) continue;
        const bool acts = xfer == RK_Xfer_Replace || xfer == RK_Xfer_StencilAlpha ||
                          xfer == RK_Xfer_StencilLuma || xfer == RK_Xfer_PremulOver;
        const auto got = this->copyOf(this->dst);
        ASSERT_EQ(0, this->draw({rotation(8, 9, 6)}, *got, xfer, RK_kBest, 0,
                                xfer == RK_Xfer_MatteMix ? &mask : nullptr));
        // Premultiplied nothing over something changes it not.
        if (xfer == RK_Xfer_PremulOver) continue;
        EXPECT_EQ(!acts, static_cast<bool>(this->same(this->dst, *got))) << xfer;
    }
}

// The lower half of the source is clear.
TYPED_TEST(TransformRow, RowsAreToldApartOneByOne) {
    for (int32_t y = 7; y < 14; ++y)
        for (int32_t x = 0; x < 20; ++x) this->src.row(y)[x].alpha = 0;
    const auto got = this->copyOf(this->dst);
    ASSERT_EQ(0, this->draw({translation(0.25, 0.25)}, *got, RK_Xfer_Copy));
    for (int32_t y = 0; y < 18; ++y) {
        const bool same = std::memcmp(this->dst.row(y), got->row(y), 24 * sizeof(TypeParam)) == 0;
        EXPECT_EQ(y >= 8, same) << y;
    }
}

// ---- Refusals -------------------------------------------------------------------------------------------

TEST(TransformRefusals, AnUnknownDepthIsReportedAndGives3) {
    test::OddWorld src(24), dst(24);
    const RK_CompositeMode mode = modeOf<RK_Pixel8>(RK_Xfer_Over);
    RefHost::TakeReports();
    EXPECT_EQ(3, RK_TransformWorld(nullptr, 1, 0, 0, &src, &mode, nullptr, nullptr, &kIdentity, 1, 1, nullptr,
                                   &dst));
    EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in##CONDITIONNAME"));
}
TEST(TransformRefusals, WorldsWithoutPixelsDrawNothing) {
    RK_WorldX<RK_Pixel8> src(5, 5, RK_kWorldClear), dst(5, 5, RK_kWorldClear);
    RK_LayerDef nothing = src.record;
    nothing.data = nullptr;
    RK_WorldX<RK_Pixel8> empty(&nothing, false);
    const RK_CompositeMode mode = modeOf<RK_Pixel8>(RK_Xfer_Over);
    for (const GEO_Matrix3& m : {kIdentity, rotation(5, 2, 2), scaling(0.3, 0.3)}) {
        EXPECT_EQ(
            0, RK_TransformWorld(nullptr, 1, 0, 0, &empty, &mode, nullptr, nullptr, &m, 1, 1, nullptr, &dst));
        EXPECT_EQ(
            0, RK_TransformWorld(nullptr, 1, 0, 0, &src, &mode, nullptr, nullptr, &m, 1, 1, nullptr, &empty));
        const RK_TransformMask mask = {&empty, 0, 0, RK_kMaskAlpha};
        EXPECT_EQ(0,
                  RK_TransformWorld(nullptr, 1, 0, 0, &src, &mode, nullptr, &mask, &m, 1, 1, nullptr, &dst));
    }
    EXPECT_TRUE(test::noReports());
}
TEST(TransformRefusals, ASingularMatrixDrawsNothingAndAStencilStaysThen) {
    RK_WorldX<RK_Pixel8> src(9, 9, 0), dst(9, 9, 0);
    const RK_Pixel16 grey = {32768, 9000, 9000, 9000};
    src.Fill(grey, nullptr);
    dst.Fill(grey, nullptr);
    // Both lengths stand, and yet there is no inverse.
    const GEO_Matrix3 flat = {{{1, 1, 0}, {1, 1, 0}, {0, 0, 1}}};
    for (const int32_t xfer : {RK_Xfer_Over, RK_Xfer_StencilAlpha}) {
        const RK_CompositeMode mode = modeOf<RK_Pixel8>(xfer);
        const auto draw = [&](const std::vector<GEO_Matrix3>& series) {
            return RK_TransformWorld(nullptr, 1, 0, 0, &src, &mode, nullptr, nullptr, series.data(),
                                     static_cast<RK_Long>(series.size()), 1, nullptr, &dst);
        };
        EXPECT_EQ(0, draw({flat}));
        EXPECT_EQ(0, draw({flat, kIdentity}));
        EXPECT_EQ(0, draw({kIdentity, flat}));
        // In between it is needed by a turn alone.
        EXPECT_EQ(1, draw({rotation(0, 4, 4), flat, rotation(9, 4, 4)}));
        for (int32_t y = 0; y < 9; ++y)
            for (int32_t x = 0; x < 9; ++x) ASSERT_EQ(255, dst.row(y)[x].alpha);
    }
}

}  // namespace
