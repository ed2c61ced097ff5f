// Masks of every kind and place over transforms of every path, by what they must equal: the sampled picture
// on its own, transferred through the same mask.
#include <gtest/gtest.h>

#include <algorithm>

#include "test/Reports.h"
#include "test/sample/TransformTest.h"

namespace {

using test::modeOf;
using test::rotation;
using test::scaling;
using test::translation;

template <class P>
class TransformMask : public test::TransformTest<P> {
  protected:
    using World = RK_WorldX<P>;
    TransformMask() : mask_world(9, 7, 0) { this->randomise(mask_world, 12); }
    World mask_world;
};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(TransformMask, Depths, );

TYPED_TEST(TransformMask, AMaskedTransformIsATransferOfTheSampledPicture) {
    const std::vector<GEO_Matrix3> all[] = {{rotation(8, 9, 6)},
                                            {scaling(0.6, 0.8)},
                                            {translation(0.5, 0.25), translation(3.5, 1)},
                                            {rotation(0, 9, 6), rotation(8, 9, 6), rotation(13, 9, 6)}};
    // Inside, over each edge, as wide as nothing.
    const struct { int16_t y, x; } places[] = {{4, 6}, {-3, 5}, {15, 5}, {5, -4}, {5, 20}, {0, 0}};
    for (const auto& series : all) {
        for (const uint32_t kind :
             {RK_kMaskAlpha, RK_kMaskInvertedAlpha, RK_kMaskLuma, RK_kMaskInvertedLuma}) {
            for (const auto& [y, x] : places) {
                for (const RK_Long quality : {RK_kDraft, RK_kBest}) {
                    const RK_TransformMask mask = {&this->mask_world, y, x, kind};
                    // A mask that is not inverted limits the drawing, whose corner positions count from.
                    GEO_Rect limit = {0, 0, 18, 24};
                    if ((kind & 1) == 0)
                        limit = {std::max<int16_t>(y, 0), std::max<int16_t>(x, 0),
                                 std::min<int16_t>(static_cast<int16_t>(y + 7), 18),
                                 std::min<int16_t>(static_cast<int16_t>(x + 9), 24)};
                    typename TestFixture::World sampled(24, 18, RK_kWorldClear);
                    ASSERT_EQ(0, this->draw(series, sampled, RK_Xfer_Copy, quality, 0, nullptr, &limit));
                    const auto wanted = this->copyOf(this->dst), got = this->copyOf(this->dst);
                    const RK_CompositeModePlus mode(modeOf<TypeParam>(RK_Xfer_Over));
                    RK_Mask object{};
                    object.world = this->mask_world.record;
                    object.mask_y = y;
                    object.mask_x = x;
                    object.mask_kind = kind;
                    ASSERT_EQ(
                        0, RK_TransferRect(nullptr, nullptr, nullptr, 0, &limit, &sampled.record, &mode,
                                           nullptr, &object.world, limit.left, limit.top, &wanted->record));
                    ASSERT_EQ(0, this->draw(series, *got, RK_Xfer_Over, quality, 0, &mask));
                    ASSERT_TRUE(this->same(*wanted, *got)) << "kind " << kind << " at " << x << ", " << y
                                                           << (quality == RK_kDraft ? ", draft" : "");
                }
            }
        }
    }
}

// Alpha, luma times alpha, and what is left of each; beside an inverted mask everything shows, and above and
// below it.
TYPED_TEST(TransformMask, EveryKindShowsWhatItSays) {
    using D = RKp_Depth<TypeParam>;
    using C = RK_Channel<TypeParam>;
    const auto full = static_cast<C>(D::kFull), half = static_cast<C>(D::kFull / 2);
    for (int32_t y = 0; y < 14; ++y)
        for (int32_t x = 0; x < 20; ++x) this->src.row(y)[x] = {full, full, full, full};
    typename TestFixture::World of_three(3, 1, 0);
    of_three.row(0)[0] = {full, full, full, full};
    of_three.row(0)[1] = {half, 0, 0, 0};
    of_three.row(0)[2] = {full, 0, 0, 0};
    const auto alphas = [&](uint32_t kind, int32_t row) {
        typename TestFixture::World to(24, 18, RK_kWorldClear);
        const RK_TransformMask mask = {&of_three, 5, 4, kind};
        EXPECT_EQ(0, this->draw({scaling(1.5, 1.5)}, to, RK_Xfer_Over, RK_kBest, 0, &mask));
        return std::vector<C>{to.row(row)[3].alpha, to.row(row)[4].alpha, to.row(row)[5].alpha,
                              to.row(row)[6].alpha, to.row(row)[7].alpha};
    };
    const auto other = static_cast<C>(D::kFull - half);
    const C none = 0;
    EXPECT_EQ(alphas(RK_kMaskAlpha, 5), (std::vector<C>{none, full, half, full, none}));
    EXPECT_EQ(alphas(RK_kMaskInvertedAlpha, 5), (std::vector<C>{full, none, other, none, full}));
    EXPECT_EQ(alphas(RK_kMaskLuma, 5), (std::vector<C>{none, full, none, none, none}));
    EXPECT_EQ(alphas(RK_kMaskInvertedLuma, 5), (std::vector<C>{full, none, full, full, full}));
    for (const int32_t row : {4, 6}) {
        for (const uint32_t kind : {RK_kMaskAlpha, RK_kMaskLuma})
            EXPECT_EQ(alphas(kind, row), std::vector<C>(5, none)) << kind;
        for (const uint32_t kind : {RK_kMaskInvertedAlpha, RK_kMaskInvertedLuma})
            EXPECT_EQ(alphas(kind, row), std::vector<C>(5, full)) << kind;
    }
}

// Nothing is read of a mask without pixels: it shows nothing, or inverted all.
TYPED_TEST(TransformMask, AMaskWithoutPixelsIsEmpty) {
    RK_LayerDef nothing = this->mask_world.record;
    nothing.data = nullptr;
    typename TestFixture::World empty(&nothing, false);
    for (const auto& series : {std::vector<GEO_Matrix3>{rotation(8, 9, 6)},
                               {translation(2, 1)},
                               {translation(0.5, 0), translation(2.5, 0)},
                               {rotation(0, 9, 6), rotation(8, 9, 6)}}) {
        for (const uint32_t kind :
             {RK_kMaskAlpha, RK_kMaskInvertedAlpha, RK_kMaskLuma, RK_kMaskInvertedLuma}) {
            const RK_TransformMask mask = {&empty, 3, 3, kind};
            const auto got = this->copyOf(this->dst), all = this->copyOf(this->dst);
            ASSERT_EQ(0, this->draw(series, *got, RK_Xfer_Copy, RK_kBest, 0, &mask));
            const bool inverted = (kind & 1) != 0;
            if (inverted) {
                typename TestFixture::World one(1, 1, RK_kWorldClear);
                const RK_TransformMask beside = {&one, 300, 300, kind};
                ASSERT_EQ(0, this->draw(series, *all, RK_Xfer_Copy, RK_kBest, 0, &beside));
            }
            EXPECT_TRUE(this->same(*all, *got)) << kind;
            EXPECT_EQ(inverted, !this->same(this->dst, *got));
        }
    }
    EXPECT_TRUE(test::noReports());
}

}  // namespace
