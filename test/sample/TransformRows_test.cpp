// What a transform makes of its rows: which are blended, copied or left; what the samples of a motion come
// to; and what a progress function may do in between.
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "RK/host/KIT.h"
#include "RK/indep/composite/RK_BlendScratch.h"
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

template <class P>
class TransformRows : public test::TransformTest<P> {
  protected:
    static P pixelOf(double alpha, double red) {
        using C = RK_Channel<P>;
        return {static_cast<C>(alpha), static_cast<C>(red), 0, 0};
    }
};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(TransformRows, Depths, );

// ---- Which rows are blended -----------------------------------------------------------------------------

// Counts the rows that come to the blending of linear light, which does what the plain row does.
int g_blended;
template <class P, bool matte>
RK_Long countedRow(RK_Long count, const RK_BlendModeDescriptor<P>* plan, const RK_LinearBlendingTables*,
                   const P* src, const P* mask, P* out) {
    ++g_blended;
    RK_InnerBlendingFunc<P> plain;
    const RK_Long error = RK_GetInnerBlendingFunc<P, matte, false>(plan->mode.xfer, &plain);
    return error != 0 ? error : plain.func(count, plan, nullptr, src, mask, out);
}
template <class P, bool matte>
RK_Long findCounted(RK_Long, RK_InnerBlendingFunc<P>* out) {
    out->func = &countedRow<P, matte>;
    return 0;
}

// A source all of whose pixels show, in six rows; `touch` may change it, the mode and the mask.
TYPED_TEST(TransformRows, OnlyOpaqueRowsUnderAPlainOverAreCopiedAndClearOnesAreNotBlended) {
    constexpr int kSlot = sizeof(TypeParam) == 4 ? 100 : sizeof(TypeParam) == 8 ? 101 : 102;
    const test::SlotOverride rows(kSlot, &findCounted<TypeParam, false>);
    const test::SlotOverride masked_rows(kSlot + 3, &findCounted<TypeParam, true>);
    static const char somewhere[64] = {};
    const auto* const tables = reinterpret_cast<const RK_LinearBlendingTables*>(somewhere);
    const GEO_Rect rect = {6, 6, 12, 17};
    using C = RK_Channel<TypeParam>;
    constexpr auto full = static_cast<C>(RKp_Depth<TypeParam>::kFull);

    typename TestFixture::World mask_world(24, 18, 0);
    for (int32_t y = 0; y < 18; ++y)
        for (int32_t x = 0; x < 24; ++x) mask_world.row(y)[x] = {full, full, full, full};
    const RK_TransformMask mask = {&mask_world, 0, 0, RK_kMaskAlpha};
    const auto fill = [&](C alpha) {
        for (int32_t y = 0; y < 14; ++y)
            for (int32_t x = 0; x < 20; ++x) this->src.row(y)[x].alpha = alpha;
    };
    const auto blended = [&](RK_CompositeMode mode, const RK_TransformMask* with = nullptr) {
        int most = 0;
        for (const RK_Long quality : {RK_kDraft, RK_kBest}) {
            for (const auto& series : {std::vector<GEO_Matrix3>{scaling(3, 3)},
                                       {scaling(3, 3), scaling(3.1, 3)},
                                       {scaling(3, 3), rotation(1, 9, 6)}}) {
                g_blended = 0;
                EXPECT_EQ(0, RK_TransformWorld(nullptr, quality, 0, 0, &this->src, &mode, tables, with,
                                               series.data(), static_cast<RK_Long>(series.size()), 1, &rect,
                                               &this->dst));
                EXPECT_TRUE(g_blended == 0 || g_blended == 6) << g_blended;
                most = std::max(most, g_blended);
            }
        }
        return most;
    };
    const RK_CompositeMode over = modeOf<TypeParam>(RK_Xfer_Over);
    fill(full);
    EXPECT_EQ(0, blended(over));
    for (int32_t x = 0; x < 11; ++x) EXPECT_EQ(full, this->dst.row(8)[6 + x].alpha);
    EXPECT_EQ(6, blended(over, &mask));
    EXPECT_EQ(6, blended(modeOf<TypeParam>(RK_Xfer_Copy)));
    EXPECT_EQ(6, blended(modeOf<TypeParam>(RK_Xfer_Multiply)));
    RK_CompositeMode part = over;
    part.opacity = 128;
    part.opacity16 = 16384;
    EXPECT_EQ(6, blended(part));
    part = over;
    part.rgb_only = 1;
    EXPECT_EQ(6, blended(part));
    // Copied rows are the sampled ones.
    const GEO_Matrix3 m = scaling(3, 3);
    EXPECT_EQ(0, RK_TransformWorld(nullptr, RK_kDraft, 0, 0, &this->src, &over, tables, nullptr, &m, 1, 1,
                                   &rect, &this->dst));
    for (int32_t y = 6; y < 12; ++y)
        for (int32_t x = 6; x < 17; ++x)
            ASSERT_TRUE(test::sameBytes(this->src.row(y / 3)[x / 3], this->dst.row(y)[x])) << x << ", " << y;

    // One pixel that is not opaque is enough to blend its rows.
    this->src.row(3)[3].alpha = static_cast<C>(full / 2);
    g_blended = 0;
    EXPECT_EQ(0, RK_TransformWorld(nullptr, RK_kDraft, 0, 0, &this->src, &over, tables, nullptr, &m, 1, 1,
                                   &rect, &this->dst));
    EXPECT_EQ(3, g_blended);

    fill(0);
    for (const int32_t xfer : {RK_Xfer_Over, RK_Xfer_Copy, RK_Xfer_Multiply, RK_Xfer_Behind}) {
        EXPECT_EQ(0, blended(modeOf<TypeParam>(xfer)));
        EXPECT_EQ(0, blended(modeOf<TypeParam>(xfer), &mask));
    }
}

// ---- What the samples of a motion come to ---------------------------------------------------------------

// Two samples of a slide: the pixel itself and the one to its left, both at whole positions.
TYPED_TEST(TransformRows, SamplesOfALinearMotionAreMeansWeightedByAlpha) {
    constexpr bool k8 = sizeof(TypeParam) == 4, k16 = sizeof(TypeParam) == 8;
    const double full = static_cast<double>(RKp_Depth<TypeParam>::kFull);
    const struct {
        double a0, r0, a1, r1, alpha, red;
    } cases8[] = {{255, 10, 255, 20, 255, 15},  // all opaque
                  {255, 10, 255, 13, 255, 11},  // a half goes down
                  {255, 10, 51, 200, 153, 41},  // 41.67
                  {0, 250, 101, 7, 50, 7},      // clear samples lend no colour
                  {0, 250, 0, 7, 0, 0},         // nothing
                  {1, 9, 0, 7, 0, 9}},          // an alpha of one half is 0, and its colour stays
        cases16[] = {{32768, 100, 32768, 200, 32768, 150},
                     {32768, 100, 32768, 103, 32768, 101},
                     {32768, 32768, 32768, 32768, 32768, 32768},
                     {32768, 100, 16384, 200, 24576, 133},
                     {0, 250, 101, 7, 50, 7},
                     {1, 9, 0, 7, 0, 9}},
      casesFloat[] = {{1, 0.5, 1, 0.25, 1, 0.375},
                      {1, 2, 0.5, -1, 0.75, 1},
                      {0, 5, 0.5, 7, 0.25, 7},
                      {-0.5, 1, 1, 4, 0.25, 7}};
    const auto check = [&](const auto& c) {
        this->src.row(6)[6] = this->pixelOf(c.a1, c.r1);
        this->src.row(6)[7] = this->pixelOf(c.a0, c.r0);
        const GEO_Rect one = {6, 7, 7, 8};
        for (const RK_Long quality : {RK_kDraft, RK_kBest}) {
            for (const auto& ends : {std::make_pair(kIdentity, translation(2, 0)),
                                     std::make_pair(kIdentity, translation(2, 0.0))}) {
                this->dst.row(6)[7] = this->pixelOf(full, 1);
                ASSERT_EQ(0, this->draw({ends.first, translation(1, 0), ends.second}, this->dst,
                                        RK_Xfer_Replace, quality, 0, nullptr, &one));
                EXPECT_TRUE(test::sameBytes(this->pixelOf(c.alpha, c.red), this->dst.row(6)[7]))
                    << c.a0 << ", " << c.r0 << " and " << c.a1 << ", " << c.r1 << ": "
                    << double(this->dst.row(6)[7].alpha) << ", " << double(this->dst.row(6)[7].red);
            }
        }
    };
    if (k8) {
        for (const auto& c : cases8) check(c);
    } else if (k16) {
        for (const auto& c : cases16) check(c);
    } else {
        for (const auto& c : casesFloat) check(c);
    }
}

// On the general path all matrices are samples: one of three shows a third. On the linear one the last is
// none.
TYPED_TEST(TransformRows, TheGeneralPathCountsItsMatricesAndTheLinearOneFewerByOne) {
    using D = RKp_Depth<TypeParam>;
    using C = RK_Channel<TypeParam>;
    for (int32_t y = 0; y < 14; ++y)
        for (int32_t x = 0; x < 20; ++x) this->src.row(y)[x] = TypeParam{};
    const auto full = static_cast<C>(D::kFull);
    this->src.row(5)[10] = {full, full, 0, full};
    const auto alphaAt = [&](const std::vector<GEO_Matrix3>& series, int16_t x) {
        typename TestFixture::World to(24, 18, RK_kWorldClear);
        const GEO_Rect one = {5, x, 6, static_cast<int16_t>(x + 1)};
        EXPECT_EQ(0, this->draw(series, to, RK_Xfer_Copy, RK_kBest, 0, nullptr, &one));
        return to.row(5)[x].alpha;
    };
    const std::vector<GEO_Matrix3> even = {kIdentity, translation(2, 0), translation(4, 0)},
                                   uneven = {kIdentity, translation(2, 0), translation(9, 0)};
    const auto part = [&](int n) { return static_cast<C>(full / static_cast<C>(n)); };
    EXPECT_EQ(part(2), alphaAt(even, 10));
    EXPECT_EQ(part(2), alphaAt(even, 12));
    EXPECT_EQ(C{0}, alphaAt(even, 14));
    EXPECT_EQ(part(3), alphaAt(uneven, 10));
    EXPECT_EQ(part(3), alphaAt(uneven, 12));
    EXPECT_EQ(part(3), alphaAt(uneven, 19));
}

// ---- In between -----------------------------------------------------------------------------------------

// Makes the process-wide rows anew, smaller or for a wide world of its own, and takes what has become free.
struct Meddler {
    RK_WorldX<RK_PixelFloat>* wide;
    size_t row_bytes;
    std::vector<uint8_t*> taken = {};

    static RK_Long progress(void* refcon, RK_Long, RK_Long) {
        return static_cast<Meddler*>(refcon)->meddle();
    }
    RK_Long meddle() {
        RK_Long error;
        if (wide == nullptr) {
            error = RKp_ReallocScratch(1, 1, true, nullptr);
        } else {
            const RK_CompositeMode mode = modeOf<RK_PixelFloat>(RK_Xfer_Over);
            const GEO_Matrix3 m = scaling(1.01, 1.01);
            error = RK_TransformWorld(nullptr, RK_kBest, 0, 0, wide, &mode, nullptr, nullptr, &m, 1, 1,
                                      nullptr, wide);
        }
        for (int i = 0; i < 4; ++i) {
            taken.push_back(static_cast<uint8_t*>(KIT_AllocatePtr(row_bytes, "taken")));
            std::memset(taken.back(), 0xA5, row_bytes);
        }
        return error;
    }
    // Nobody else has written there.
    bool untouched() const {
        for (const uint8_t* const block : taken)
            if (std::any_of(block, block + row_bytes, [](uint8_t byte) { return byte != 0xA5; }))
                return false;
        return true;
    }
    ~Meddler() {
        for (uint8_t* const block : taken) KIT_FreePtr(block);
    }
};
TYPED_TEST(TransformRows, AProgressFunctionMayUseTheScratchItself) {
    RK_WorldX<RK_PixelFloat> wide(3000, 2, RK_kWorldClear);
    typename TestFixture::World mask_world(9, 40, 0), tall(24, 150, 0);
    this->randomise(mask_world, 3);
    this->randomise(tall, 4);
    const RK_TransformMask mask = {&mask_world, 1, 2, RK_kMaskInvertedLuma};
    for (const auto& series : {std::vector<GEO_Matrix3>{scaling(1.1, 10)},
                               {translation(0.25, 0.5), translation(1.25, 1.5), translation(2.25, 2.5)},
                               {rotation(2, 9, 6), rotation(9, 9, 6), rotation(11, 9, 6)}}) {
        for (RK_WorldX<RK_PixelFloat>* const drawn :
             {&wide, static_cast<RK_WorldX<RK_PixelFloat>*>(nullptr)}) {
            const auto wanted = this->copyOf(tall), got = this->copyOf(tall);
            ASSERT_EQ(0, RKp_ReallocScratch(1, 1, true, nullptr));
            ASSERT_EQ(0, this->draw(series, *wanted, RK_Xfer_Screen, RK_kBest, 0, &mask));
            ASSERT_EQ(0, RKp_ReallocScratch(1, 1, true, nullptr));
            Meddler meddler = {drawn, 24 * sizeof(TypeParam)};
            RK_ProgressInfo info = {&meddler, nullptr, &Meddler::progress};
            this->progress = &info;
            ASSERT_EQ(0, this->draw(series, *got, RK_Xfer_Screen, RK_kBest, 0, &mask));
            this->progress = nullptr;
            EXPECT_TRUE(this->same(*wanted, *got));
            EXPECT_FALSE(meddler.taken.empty());
            EXPECT_TRUE(meddler.untouched());
        }
    }
    EXPECT_TRUE(test::noReports());
}

// With scratch of their own several threads may draw at once.
TYPED_TEST(TransformRows, ThreadsWithTheirOwnScratchDrawAlike) {
    const RK_CompositeMode mode = modeOf<TypeParam>(RK_Xfer_Screen);
    const std::vector<GEO_Matrix3> series = {rotation(2, 9, 6), rotation(9, 9, 6), rotation(11, 9, 6)};
    constexpr int kThreads = 4;
    std::vector<std::unique_ptr<typename TestFixture::World>> worlds;
    for (int i = 0; i <= kThreads; ++i) worlds.push_back(this->copyOf(this->dst));
    const auto draw = [&](int i) {
        const auto width = static_cast<size_t>(this->dst.width());
        std::vector<TypeParam> matte(width), line(width);
        std::vector<RK_Channel<TypeParam>> alphas(width);
        RK_BlendScratch own{};
        own.alpha_save = alphas.data();
        own.matte_row = matte.data();
        own.row_work = line.data();
        const RK_TransformMask mask = {&this->src, 2, 3, RK_kMaskInvertedLuma};
        for (int round = 0; round < 20; ++round)
            EXPECT_EQ(
                0, RK_TransformWorldPlus(nullptr, RK_kBest, 0, 0, &this->src, &mode, nullptr, &mask, &own,
                                         series.data(), 3, 1, nullptr, worlds[static_cast<size_t>(i)].get()));
    };
    draw(0);
    std::vector<std::thread> threads;
    for (int i = 1; i <= kThreads; ++i) threads.emplace_back(draw, i);
    for (std::thread& thread : threads) thread.join();
    for (size_t i = 1; i <= kThreads; ++i) EXPECT_TRUE(this->same(*worlds[0], *worlds[i])) << i;
}

}  // namespace
