// What a transform decides before its first row, at the edges of each decision: nothing to draw in, no
// extent, no inverse, nothing of the source in reach, and what the stencil modes do then.
#include <gtest/gtest.h>

#include <memory>

#include "RK/indep/frame/RKp_Report.h"
#include "refhost/RefHost.h"
#include "test/Reports.h"
#include "test/SlotOverride.h"
#include "test/sample/TransformTest.h"

namespace {

using test::kIdentity;
using test::modeOf;
using test::rotation;
using test::scaling;
using test::translation;

const GEO_Rect kRect = {2, 3, 15, 21};
// No inverse though both of its lengths stand; and none in one axis, with or without an inverse.
const GEO_Matrix3 kFlat = {{{1, 1, 0}, {1, 1, 0}, {0, 0, 1}}};
const GEO_Matrix3 kSingular = scaling(0, 1), kTiny = scaling(1e-6, 1);

template <class P>
class TransformEdge : public test::TransformTest<P> {
  protected:
    using World = RK_WorldX<P>;
    // What a call returns; `got` is drawn into a copy of the destination.
    RK_Long drawCopy(const std::vector<GEO_Matrix3>& m, int32_t xfer, RK_Long src2dst = 1,
                     const RK_TransformMask* mask = nullptr, RK_Long quality = RK_kBest,
                     const GEO_Rect* rect = &kRect, RK_Long field = 0, uint8_t rgb_only = 0) {
        got = this->copyOf(this->dst);
        RK_CompositeMode mode = modeOf<P>(xfer);
        mode.rgb_only = rgb_only;
        return RK_TransformWorld(this->progress, quality, 0, field, &this->src, &mode, nullptr, mask,
                                 m.data(), static_cast<RK_Long>(m.size()), static_cast<uint8_t>(src2dst),
                                 rect, got.get());
    }
    bool untouched() const { return this->same(this->dst, *got); }
    // The alphas of `cleared` are 0, and nothing else has changed.
    testing::AssertionResult onlyCleared(const GEO_Rect& cleared) const {
        for (int32_t y = 0; y < got->height(); ++y)
            for (int32_t x = 0; x < got->width(); ++x) {
                P wanted = this->dst.row(y)[x];
                if (y >= cleared.top && y < cleared.bottom && x >= cleared.left && x < cleared.right)
                    wanted.alpha = 0;
                if (!test::sameBytes(wanted, got->row(y)[x]))
                    return testing::AssertionFailure() << "differ at " << x << ", " << y;
            }
        return testing::AssertionSuccess();
    }
    std::unique_ptr<World> got;
};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(TransformEdge, Depths, );

const std::vector<GEO_Matrix3> kSlide = {translation(0.5, 0), translation(1.5, 0), translation(2.5, 0)};
const std::vector<GEO_Matrix3> kTurn = {rotation(2, 9, 6), rotation(4, 9, 6), rotation(8, 9, 6)};

// ---- Nothing to draw in ---------------------------------------------------------------------------------

// Even a stencil clears nothing when rectangle, destination and mask have nothing in common.
TYPED_TEST(TransformEdge, WithoutRoomNothingHappensWhereTheMatricesInvert) {
    const RK_TransformMask beside = {&this->src, 100, 100, RK_kMaskAlpha};
    const GEO_Rect outside = {30, 3, 40, 9}, reversed = {9, 9, 4, 12};
    for (const int32_t xfer : {RK_Xfer_Over, RK_Xfer_StencilAlpha, RK_Xfer_StencilLuma}) {
        for (const auto& series :
             {std::vector<GEO_Matrix3>{scaling(0.7, 0.7)}, {translation(1, 1)}, {kTiny}, kSlide, kTurn}) {
            EXPECT_EQ(0, this->drawCopy(series, xfer, 1, &beside));
            EXPECT_TRUE(this->untouched());
            for (const GEO_Rect* const rect : {&outside, &reversed}) {
                EXPECT_EQ(0, this->drawCopy(series, xfer, 1, nullptr, RK_kBest, rect));
                EXPECT_TRUE(this->untouched());
            }
        }
    }
    // A series that would fail is not looked at that far.
    EXPECT_EQ(
        0, this->drawCopy({rotation(0, 4, 4), kFlat, rotation(9, 4, 4)}, RK_Xfer_StencilAlpha, 1, &beside));
    EXPECT_TRUE(this->untouched());
    // Where they do not invert the mask counts for nothing.
    EXPECT_EQ(0, this->drawCopy({kSingular}, RK_Xfer_StencilAlpha, 1, &beside));
    EXPECT_TRUE(this->onlyCleared(kRect));
    EXPECT_EQ(0, this->drawCopy({kSingular}, RK_Xfer_StencilAlpha, 1, nullptr, RK_kBest, &outside));
    EXPECT_TRUE(this->untouched());
}

// ---- No extent, no inverse ------------------------------------------------------------------------------

TYPED_TEST(TransformEdge, AFirstOrLastMatrixWithoutExtentDrawsNothing) {
    const GEO_Matrix3 turned = rotation(8, 9, 6);
    const std::vector<GEO_Matrix3> all[] = {{kTiny},         {kSingular},       {turned, kSingular},
                                            {kTiny, turned}, {turned, kTiny},   {turned, turned, kTiny},
                                            {kTiny, kTiny},  {kFlat, kSingular}};
    for (const auto& series : all) {
        for (const RK_Long quality : {RK_kDraft, RK_kBest}) {
            EXPECT_EQ(0, this->drawCopy(series, RK_Xfer_Replace, 1, nullptr, quality));
            EXPECT_TRUE(this->untouched());
            for (const int32_t xfer : {RK_Xfer_StencilAlpha, RK_Xfer_StencilLuma}) {
                EXPECT_EQ(0, this->drawCopy(series, xfer, 1, nullptr, quality));
                EXPECT_TRUE(this->onlyCleared(kRect));
            }
        }
    }
    // One in between is passed over where its samples are not needed.
    EXPECT_EQ(0, this->drawCopy({translation(0.5, 0), kSingular, translation(2.5, 0)}, RK_Xfer_Copy, 1,
                                nullptr, RK_kDraft));
    EXPECT_FALSE(this->untouched());
}

TYPED_TEST(TransformEdge, LengthsOfAMatrixWithoutAnInverseAreItsOwnWhicheverWayItGoes) {
    for (const RK_Long src2dst : {0, 1}) {
        EXPECT_EQ(0, this->drawCopy({kSingular}, RK_Xfer_StencilAlpha, src2dst));
        EXPECT_TRUE(this->onlyCleared(kRect));
        EXPECT_EQ(0, this->drawCopy({kFlat}, RK_Xfer_StencilAlpha, src2dst));
        EXPECT_TRUE(this->untouched());
    }
    // Those of one that inverts are the source's in the destination.
    EXPECT_EQ(0, this->drawCopy({scaling(1e6, 1)}, RK_Xfer_StencilAlpha, 0));
    EXPECT_TRUE(this->onlyCleared(kRect));
    EXPECT_EQ(0, this->drawCopy({kTiny}, RK_Xfer_Copy, 0));
    EXPECT_FALSE(this->untouched());
}

// A determinant that is finite, and an inverse with entries that are none.
TYPED_TEST(TransformEdge, AnInverseThatIsNotANumberIsSafe) {
    const GEO_Matrix3 m = {{{1, 1e300, 1e300}, {0, 1, 0}, {0, 1e300, 1e300}}};
    GEO_Matrix3 inverse;
    ASSERT_EQ(0, GEO_InverseMatrixQuiet(&m, &inverse));
    ASSERT_TRUE(std::isnan(inverse.m[0][1]));
    for (const RK_Long src2dst : {0, 1})
        for (const RK_Long quality : {RK_kDraft, RK_kBest})
            for (const auto& series :
                 {std::vector<GEO_Matrix3>{m}, {m, kIdentity}, {kIdentity, m}, {m, kIdentity, m}})
                EXPECT_EQ(0, this->drawCopy(series, RK_Xfer_Over, src2dst, nullptr, quality, nullptr));
}

// ---- Nothing of the source in reach ---------------------------------------------------------------------

TYPED_TEST(TransformEdge, ASourceOutOfReachIsAStencilOfNothing) {
    const auto away = [](GEO_Matrix3 m) {
        m.m[2][0] += 500;
        return m;
    };
    const std::vector<GEO_Matrix3> all[] = {{away(scaling(0.7, 0.7))},
                                            {away(kSlide[0]), away(kSlide[2])},
                                            {away(kTurn[0]), away(kTurn[1]), away(kTurn[2])}};
    for (const auto& series : all) {
        EXPECT_EQ(0, this->drawCopy(series, RK_Xfer_Replace));
        EXPECT_TRUE(this->untouched());
        EXPECT_EQ(0, this->drawCopy(series, RK_Xfer_StencilAlpha));
        EXPECT_TRUE(this->onlyCleared(kRect));
    }
    // Neither is cleared by a series that fails, nor by a translation.
    EXPECT_EQ(1, this->drawCopy({away(kTurn[0]), kFlat, away(kTurn[2])}, RK_Xfer_StencilAlpha));
    EXPECT_TRUE(this->untouched());
    EXPECT_EQ(0, this->drawCopy({translation(500, 0)}, RK_Xfer_StencilAlpha));
    EXPECT_TRUE(this->untouched());
}

RK_Long refuseTransfer(RK_ProgressInfo*, void*, void*, RK_Long, const GEO_Rect*, const RK_LayerDef*,
                       const RK_CompositeModePlus*, const RK_LinearBlendingTables*, const RK_LayerDef*,
                       RK_Long, RK_Long, RK_LayerDef*) {
    return 771;
}
TYPED_TEST(TransformEdge, ATranslationOutOfReachIsNotHandedOver) {
    const test::SlotOverride transfer(31, &refuseTransfer);
    EXPECT_EQ(771, this->drawCopy({translation(5, 0)}, RK_Xfer_Over));
    EXPECT_EQ(0, this->drawCopy({translation(500, 0)}, RK_Xfer_Over));
}

// ---- Around a stencil's drawing -------------------------------------------------------------------------

// Colours stay, and neither field nor mask nor rgb_only say otherwise: they are for the drawing itself.
TYPED_TEST(TransformEdge, AStencilClearsAroundItsDrawingInEveryRow) {
    typename TestFixture::World mask_world(5, 4, 0);
    this->randomise(mask_world, 9);
    const RK_TransformMask mask = {&mask_world, 6, 8, RK_kMaskAlpha};
    const GEO_Rect drawn = {6, 8, 10, 13};
    for (const auto& series : {std::vector<GEO_Matrix3>{rotation(8, 9, 6)}, kSlide, kTurn}) {
        for (const RK_Long field : {RK_Long{0}, RK_kEvenField, RK_kOddField}) {
            for (const uint8_t rgb_only : {uint8_t{0}, uint8_t{1}}) {
                for (const int32_t xfer : {RK_Xfer_StencilAlpha, RK_Xfer_StencilLuma}) {
                    ASSERT_EQ(0, this->drawCopy(series, xfer, 1, &mask, RK_kBest, &kRect, 0, rgb_only));
                    const auto whole = std::move(this->got);
                    ASSERT_EQ(0, this->drawCopy(series, xfer, 1, &mask, RK_kBest, &kRect, field, rgb_only));
                    for (int32_t y = 0; y < 18; ++y)
                        for (int32_t x = 0; x < 24; ++x) {
                            const auto in = [x, y](const GEO_Rect& r) {
                                return y >= r.top && y < r.bottom && x >= r.left && x < r.right;
                            };
                            const bool skipped = field != 0 && (y & 1) != (field == RK_kEvenField ? 0 : 1);
                            TypeParam wanted = this->dst.row(y)[x];
                            if (in(drawn)) {
                                if (!skipped) wanted = whole->row(y)[x];
                            } else if (in(kRect)) {
                                wanted.alpha = 0;
                            }
                            ASSERT_TRUE(test::sameBytes(wanted, this->got->row(y)[x])) << x << ", " << y;
                        }
                }
            }
        }
    }
}

TYPED_TEST(TransformEdge, ATranslationUnderAStencilIsATransferAlone) {
    for (const int32_t xfer : {RK_Xfer_StencilAlpha, RK_Xfer_StencilLuma}) {
        const auto wanted = this->copyOf(this->dst);
        const RK_CompositeModePlus mode(modeOf<TypeParam>(xfer));
        ASSERT_EQ(0, RK_TransferRect(nullptr, nullptr, nullptr, 0, nullptr, &this->src.record, &mode, nullptr,
                                     nullptr, -9, 11, &wanted->record));
        ASSERT_EQ(0, this->drawCopy({translation(-9, 11)}, xfer, 1, nullptr, RK_kBest, nullptr));
        EXPECT_TRUE(this->same(*wanted, *this->got));
    }
}

// ---- Arguments ------------------------------------------------------------------------------------------

// Powers of two and quarter turns invert exactly.
TYPED_TEST(TransformEdge, MatricesMayGoEitherWay) {
    const GEO_Matrix3 quarter = {{{0, 1, 0}, {-1, 0, 0}, {16, 1, 1}}};
    const std::vector<GEO_Matrix3> all[] = {{scaling(2, 4)},
                                            {scaling(0.5, 0.25)},
                                            {translation(3, -2)},
                                            {translation(0.5, 0.25)},
                                            {quarter},
                                            {translation(0.5, 0), translation(1.5, 0), translation(2.5, 0)},
                                            {kIdentity, quarter, scaling(2, 2)}};
    for (const auto& series : all) {
        std::vector<GEO_Matrix3> inverses(series);
        for (GEO_Matrix3& m : inverses) ASSERT_EQ(0, GEO_InverseMatrixQuiet(&m, &m));
        for (const RK_Long quality : {RK_kDraft, RK_kBest}) {
            ASSERT_EQ(0, this->drawCopy(series, RK_Xfer_Screen, 1, nullptr, quality));
            const auto there = std::move(this->got);
            ASSERT_EQ(0, this->drawCopy(inverses, RK_Xfer_Screen, 0, nullptr, quality));
            EXPECT_TRUE(this->same(*there, *this->got));
            EXPECT_FALSE(this->untouched());
            // Any other byte that is not zero says the same.
            ASSERT_EQ(0, this->drawCopy(series, RK_Xfer_Screen, 0x80, nullptr, quality));
            EXPECT_TRUE(this->same(*there, *this->got));
        }
    }
}

TYPED_TEST(TransformEdge, ModeFlagsAreNotReadAndOddQualitiesAndFieldsAreBestAndAllRows) {
    const RK_CompositeMode mode = modeOf<TypeParam>(RK_Xfer_Over);
    const GEO_Matrix3 m = rotation(8, 9, 6);
    const auto draw = [&](RK_Long quality, RK_Long flags, RK_Long field) {
        auto to = this->copyOf(this->dst);
        EXPECT_EQ(0, RK_TransformWorld(nullptr, quality, flags, field, &this->src, &mode, nullptr, nullptr,
                                       &m, 1, 1, nullptr, to.get()));
        return to;
    };
    const auto plain = draw(RK_kBest, 0, 0);
    for (const RK_Long flags : {RK_Long{1}, RK_Long{-1}, RK_Long{0x7FFFFFFF}})
        EXPECT_TRUE(this->same(*plain, *draw(RK_kBest, flags, 0)));
    for (const RK_Long quality : {RK_Long{2}, RK_Long{-1}})
        EXPECT_TRUE(this->same(*plain, *draw(quality, 0, 0)));
    for (const RK_Long field : {RK_Long{3}, RK_Long{-1}, RK_Long{77}})
        EXPECT_TRUE(this->same(*plain, *draw(RK_kBest, 0, field)));
    EXPECT_FALSE(this->same(*plain, *draw(RK_kDraft, 0, 0)));
}

TYPED_TEST(TransformEdge, AMaskOfAnotherDepthOrWithoutAWorldIsReportedAndGives3) {
    RK_WorldX<RK_Pixel8> m8(4, 4, 0);
    RK_WorldX<RK_Pixel16> m16(4, 4, 0);
    RefHost::TakeReports();
    const RK_World* const other = sizeof(TypeParam) == 4 ? static_cast<RK_World*>(&m16) : &m8;
    RK_TransformMask mask = {other, 0, 0, RK_kMaskAlpha};
    for (const GEO_Matrix3& m : {rotation(8, 9, 6), translation(1, 0)}) {
        EXPECT_EQ(3, this->drawCopy({m}, RK_Xfer_Over, 1, &mask));
        EXPECT_TRUE(
            test::onlyVerification("RK_TransformWorld requires src and dst worlds to have same bit depth"));
        EXPECT_TRUE(this->untouched());
    }
    mask.mask_world = nullptr;
    EXPECT_EQ(3, this->drawCopy({kIdentity}, RK_Xfer_Over, 1, &mask));
    EXPECT_TRUE(test::onlyBadParam(RKp_kSiteFill));
    EXPECT_TRUE(this->untouched());
}

}  // namespace
