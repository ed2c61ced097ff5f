// Masks merged into the alpha of pixel rows and of worlds.
#include "RK/indep/filter/RKp_MaskMerge.h"

#include <algorithm>
#include <memory>

#include "RK/indep/filter/RK_MergeMaskAlpha.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "test/filter/Masks.h"

namespace {

using test::Mask;

// ---- The rules, with exact quotients --------------------------------------------------------------------

uint8_t merged(uint8_t m, uint8_t a) { return static_cast<uint8_t>((2 * m * a + 255) / 510); }
uint16_t merged(uint16_t m, uint16_t a) { return static_cast<uint16_t>((int64_t{m} * a + 16383) >> 15); }
uint16_t merged(uint8_t m, uint16_t a) {
    const uint32_t s = (uint32_t{m} * 8421504u + 33200u) / 65536u;
    return merged(static_cast<uint16_t>(s), a);
}
float merged(uint16_t m, float a) {
    const float part = static_cast<float>(m) * 3.0517578e-05f;
    return a * part;
}
float merged(uint8_t m, float a) {
    const float part = static_cast<float>(m) / 255.0f;
    return a * part;
}

// ---- Scans ----------------------------------------------------------------------------------------------

template <class Pair>
class MaskMergeScan : public testing::Test {};
template <class M, class P>
struct Pair {
    using Sample = M;
    using Pixel = P;
};
using Pairs = testing::Types<Pair<uint8_t, RK_Pixel8>, Pair<uint8_t, RK_Pixel16>, Pair<uint16_t, RK_Pixel16>,
                             Pair<uint16_t, RK_PixelFloat>, Pair<uint8_t, RK_PixelFloat>>;
TYPED_TEST_SUITE(MaskMergeScan, Pairs);

TYPED_TEST(MaskMergeScan, EverySampleOnEveryKindOfAlpha) {
    using M = typename TypeParam::Sample;
    using P = typename TypeParam::Pixel;
    using A = decltype(P::alpha);
    test::Random r(4);
    std::vector<A> alphas;
    if constexpr (sizeof(A) == 1)
        for (int a = 0; a < 256; ++a) alphas.push_back(static_cast<A>(a));
    else if constexpr (sizeof(A) == 2)
        for (int a : {0, 1, 2, 16383, 16384, 16385, 32767, 32768, 40000, 65535})
            alphas.push_back(static_cast<A>(a));
    else
        for (int i = 0; i < 20; ++i) alphas.push_back(static_cast<A>(test::channel(r, float{})));
    std::vector<M> mask;
    for (int m = 0; m < (sizeof(M) == 1 ? 256 : 65536); ++m) mask.push_back(static_cast<M>(m));
    for (A alpha : alphas) {
        std::vector<P> row(mask.size());
        for (P& p : row) p = {alpha, 1, 2, 3};
        ASSERT_EQ(
            0, (RKp_MaskMerge<M, P>(nullptr, 0, static_cast<RK_Long>(mask.size()), mask.data(), row.data())));
        for (size_t i = 0; i < row.size(); ++i) {
            ASSERT_TRUE(test::sameBytes(row[i].alpha, merged(mask[i], alpha)))
                << +mask[i] << " on " << +alpha;
            ASSERT_TRUE(row[i].red == 1 && row[i].green == 2 && row[i].blue == 3);
        }
    }
    // Nothing and everything need no rule of their own.
    const M none = 0, all = static_cast<M>(test::kFullSample<M>);
    EXPECT_EQ(merged(none, alphas[1]), A{0});
    for (A alpha : alphas) EXPECT_EQ(merged(all, alpha), alpha);
}

TYPED_TEST(MaskMergeScan, BlanksBeforeFirstMergesUpToLastAndLeavesTheRest) {
    using M = typename TypeParam::Sample;
    using P = typename TypeParam::Pixel;
    test::Random r(6);
    for (RK_Long first = -2; first <= 20; ++first) {
        for (RK_Long last = -1; last <= 20; ++last) {
            // The mask's samples lie against the ends of their block: nothing before or behind them is read.
            const RK_Long begin = std::max<RK_Long>(first, 0), count = std::max<RK_Long>(last - begin, 0);
            std::vector<M> samples(static_cast<size_t>(count));
            for (M& m : samples) m = test::sample(r, M{});
            const M* mask_row = count == 0 ? nullptr : samples.data() - begin;
            std::vector<P> row(24), got;
            for (P& p : row) p = test::pixel<P>(r);
            got = row;
            ASSERT_EQ(0, (RKp_MaskMerge<M, P>(nullptr, first, last, mask_row, got.data())));
            for (RK_Long i = 0; i < 24; ++i) {
                P w = row[static_cast<size_t>(i)];
                if (i < first)
                    w.alpha = 0;
                else if (i < last)
                    w.alpha = merged(samples[static_cast<size_t>(i - begin)], w.alpha);
                ASSERT_TRUE(test::sameBytes(got[static_cast<size_t>(i)], w))
                    << first << ".." << last << " at " << i;
            }
        }
    }
}

// ---- Worlds ---------------------------------------------------------------------------------------------

class MergeMaskAlpha : public test::Tidy {};

struct Place {
    int16_t x, y;
};
const Place kPlaces[] = {{0, 0},  {3, 2},   {-4, -3},        {9, 1},         {-2, 6},
                         {50, 0}, {0, -50}, {-32768, 32767}, {32767, -32768}};

template <class M, class P>
void expectMerge(const Place& at, const GEO_Rect* area, const GEO_Rect* mask_area) {
    Mask<M> mask(7, 5, 3);
    test::Picture<P> picture(12, 9, 3);
    picture.fillRandom(4);
    test::Picture<P> wanted = picture;
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 12; ++x) {
            bool inside = true;
            for (const GEO_Rect* rect : {area, mask_area})
                if (rect)
                    inside =
                        inside && x >= rect->left && x < rect->right && y >= rect->top && y < rect->bottom;
            if (!inside) continue;
            const int c = x - at.x, r = y - at.y;
            auto& alpha = wanted.at(x, y).alpha;
            if (c < 0 || r < 0 || c >= 7 || r >= 5)
                alpha = 0;
            else
                alpha = merged(mask.at(c, r), alpha);
        }
    RK_LayerDef record = picture.record();
    const std::unique_ptr<RK_World> world(RK_World::NewReference(&record));
    ASSERT_EQ(0, test::thrownBy(
                     [&] { RK_MergeMaskAlpha(nullptr, at.x, at.y, area, &mask, mask_area, world.get()); }));
    ASSERT_EQ(picture, wanted) << "at " << at.x << ", " << at.y;
}

TEST_F(MergeMaskAlpha, EveryPairOfDepthsAtEveryPlaceAndArea) {
    const GEO_Rect rects[] = {{0, 0, 9, 12}, {2, 3, 7, 10}, {-5, -5, 4, 4}, {6, 8, 30, 30},
                              {3, 5, 4, 6},  {4, 4, 4, 9},  {5, 9, 3, 2}};
    for (const Place& at : kPlaces) {
        for (int i = -1; i < 7; ++i) {
            for (int k = -1; k < 7; ++k) {
                const GEO_Rect *area = i < 0 ? nullptr : &rects[i], *mask_area = k < 0 ? nullptr : &rects[k];
                ASSERT_NO_FATAL_FAILURE((expectMerge<uint8_t, RK_Pixel8>(at, area, mask_area)));
                ASSERT_NO_FATAL_FAILURE((expectMerge<uint8_t, RK_Pixel16>(at, area, mask_area)));
                ASSERT_NO_FATAL_FAILURE((expectMerge<uint16_t, RK_Pixel16>(at, area, mask_area)));
                ASSERT_NO_FATAL_FAILURE((expectMerge<uint16_t, RK_PixelFloat>(at, area, mask_area)));
                ASSERT_NO_FATAL_FAILURE((expectMerge<uint8_t, RK_PixelFloat>(at, area, mask_area)));
            }
        }
    }
}

TEST_F(MergeMaskAlpha, RowsThatTheMaskDoesNotReachTakeTheBlankPath) {
    Mask<uint8_t> mask(12, 2);
    mask.fill(255);
    test::Picture<RK_Pixel8> picture(12, 6);
    picture.fill({200, 1, 2, 3});
    RK_LayerDef record = picture.record();
    const std::unique_ptr<RK_World> world(RK_World::NewReference(&record));
    RK_MergeMaskAlpha(nullptr, 0, 1, nullptr, &mask, nullptr, world.get());
    for (int y = 0; y < 6; ++y) EXPECT_EQ(picture.at(5, y).alpha, y == 1 || y == 2 ? 200 : 0) << y;
}

TEST_F(MergeMaskAlpha, EachRowIsAScanAndOneMoreForWhatLiesBehindTheMask) {
    struct Call {
        RK_Long first, last;
        const void *mask_row, *pixel_row;
    };
    static std::vector<Call> calls;
    calls.clear();
    RKp_MaskMerge8To8Func* const noted = [](void*, RK_Long first, RK_Long last, const uint8_t* mask_row,
                                            RK_Pixel8* pixel_row) -> RK_Long {
        calls.push_back({first, last, mask_row, pixel_row});
        return RK_kOK;
    };
    const test::InSlot slot(RKp_kSlot_MaskMerge8To8, reinterpret_cast<void*>(noted));
    Mask<uint8_t> mask(4, 1);
    test::Picture<RK_Pixel8> picture(12, 3);
    RK_LayerDef record = picture.record();
    const std::unique_ptr<RK_World> world(RK_World::NewReference(&record));
    const GEO_Rect area = {0, 2, 3, 11};
    RK_MergeMaskAlpha(nullptr, 5, 1, &area, &mask, nullptr, world.get());
    ASSERT_EQ(calls.size(), 4u);
    EXPECT_EQ(calls[0].first, 9);
    EXPECT_EQ(calls[0].last, 9);
    EXPECT_EQ(calls[0].mask_row, nullptr);
    EXPECT_EQ(calls[0].pixel_row, &picture.at(2, 0));
    EXPECT_EQ(calls[1].first, 3);
    EXPECT_EQ(calls[1].last, 7);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(calls[1].mask_row),
              reinterpret_cast<uintptr_t>(&mask.at(0, 0)) - 3);
    EXPECT_EQ(calls[1].pixel_row, &picture.at(2, 1));
    EXPECT_EQ(calls[2].first, 2);
    EXPECT_EQ(calls[2].last, 2);
    EXPECT_EQ(calls[2].mask_row, nullptr);
    EXPECT_EQ(calls[2].pixel_row, &picture.at(9, 1));
    EXPECT_EQ(calls[3].first, 9);
}

TEST_F(MergeMaskAlpha, PairsWithoutAScanAreReportedAndThrow3) {
    const struct {
        int32_t mask_depth;
        int16_t world_depth;
    } pairs[] = {{16, 8}, {32, 8}, {32, 16}, {32, 32}, {0, 8}, {1, 16}, {24, 32}};
    for (const auto& pair : pairs) {
        RK_UnoBuffer mask(4, 4, pair.mask_depth);
        const std::unique_ptr<RK_World> world(RK_World::New(4, 4, pair.world_depth, 0));
        const RK_PixelFloat white = {1, 1, 1, 1};
        world->Fill(white, nullptr);
        const std::vector<uint8_t> before(static_cast<uint8_t*>(world->record.data),
                                          static_cast<uint8_t*>(world->record.data) + 4 * world->PixelSize());
        EXPECT_EQ(3, test::thrownBy(
                         [&] { RK_MergeMaskAlpha(nullptr, 0, 0, nullptr, &mask, nullptr, world.get()); }));
        EXPECT_TRUE(test::onlyVerification("Unexpected bitdepth in RKp_MergeMaskAlphaScanIter()"));
        EXPECT_EQ(0, std::memcmp(before.data(), world->record.data, before.size()));
        const GEO_Rect empty = {2, 2, 2, 4};
        EXPECT_EQ(
            0, test::thrownBy([&] { RK_MergeMaskAlpha(nullptr, 0, 0, &empty, &mask, nullptr, world.get()); }))
            << "an empty area calls nothing";
    }
}

TEST_F(MergeMaskAlpha, AbortIsAskedBeforeEachRowAndThrown) {
    for (RK_Long code : {RK_kUserAbort, RK_Long{9}}) {
        for (size_t stop = 0; stop <= 6; ++stop) {
            Mask<uint8_t> mask(4, 6);
            const std::unique_ptr<RK_World> world(RK_World::New(4, 6, 8, 0));
            world->FillAlpha();
            test::Watched watched;
            watched.abortsOnly();
            watched.stop_at = stop;
            watched.code = code;
            EXPECT_EQ(stop ? code : 0, test::thrownBy([&] {
                          RK_MergeMaskAlpha(&watched.info, 0, 0, nullptr, &mask, nullptr, world.get());
                      }));
            EXPECT_EQ(watched.calls.size(), stop ? stop : 6);
            auto& pixels = static_cast<RK_WorldX<RK_Pixel8>&>(*world);
            for (int y = 0; y < 6; ++y)
                EXPECT_EQ(pixels.row(y)[2].alpha, stop == 0 || y < int(stop) - 1 ? 0 : 255)
                    << y << " of " << stop;
        }
    }
    Mask<uint8_t> mask(4, 100);
    const std::unique_ptr<RK_World> world(RK_World::New(4, 100, 8, 0));
    test::Watched watched;
    RK_MergeMaskAlpha(&watched.info, 0, 0, nullptr, &mask, nullptr, world.get());
    EXPECT_TRUE(watched.calls.empty()) << "progress_func is not called";
}

TEST_F(MergeMaskAlpha, DamagedMasksAreReported) {
    Mask<uint8_t> mask(4, 4);
    const std::unique_ptr<RK_World> world(RK_World::New(4, 4, 8, 0));
    world->FillAlpha();
    auto& pixels = static_cast<RK_WorldX<RK_Pixel8>&>(*world);
    EXPECT_EQ(
        0, test::thrownBy([&] { RK_MergeMaskAlpha(nullptr, 0, 0, nullptr, nullptr, nullptr, world.get()); }));
    EXPECT_TRUE(test::onlyDamagedMask());
    RK_UnoBuffer bare(4, 4, 8);
    const KIT_Handle held = bare.pixels;
    bare.pixels = nullptr;
    EXPECT_EQ(
        0, test::thrownBy([&] { RK_MergeMaskAlpha(nullptr, 0, 0, nullptr, &bare, nullptr, world.get()); }));
    EXPECT_TRUE(test::onlyDamagedMask());
    bare.pixels = held;
    EXPECT_EQ(pixels.row(2)[2].alpha, 255);
    mask->magic = 1;
    EXPECT_EQ(
        0, test::thrownBy([&] { RK_MergeMaskAlpha(nullptr, 0, 0, nullptr, &mask, nullptr, world.get()); }));
    EXPECT_TRUE(test::onlyDamagedMask());
    EXPECT_EQ(pixels.row(2)[2].alpha, 0) << "goes on";
    mask->magic = RK_kUnoMagic;
}

TEST_F(MergeMaskAlpha, ANullWorldThrows3AndOneWithoutPixelsIsLeft) {
    Mask<uint8_t> mask(4, 4);
    EXPECT_EQ(3, test::thrownBy([&] { RK_MergeMaskAlpha(nullptr, 0, 0, nullptr, &mask, nullptr, nullptr); }));
    EXPECT_TRUE(test::onlyBadParam(RKp_kSiteUno));
    RK_LayerDef none = {};
    none.width = none.height = 4;
    const std::unique_ptr<RK_World> world(RK_World::NewReference(&none));
    EXPECT_EQ(
        0, test::thrownBy([&] { RK_MergeMaskAlpha(nullptr, 0, 0, nullptr, &mask, nullptr, world.get()); }));
}

TEST_F(MergeMaskAlpha, TwoThreadsGiveTheSameBytes) {
    Mask<uint16_t> mask(50, 90, 3);
    test::Picture<RK_Pixel16> one(60, 100);
    one.fillRandom(5);
    test::Picture<RK_Pixel16> two = one;
    RK_LayerDef first = one.record(), second = two.record();
    const std::unique_ptr<RK_World> a(RK_World::NewReference(&first)), b(RK_World::NewReference(&second));
    RK_MergeMaskAlpha(nullptr, 4, 6, nullptr, &mask, nullptr, a.get());
    const test::InSlot threads(RKp_kSlot_IterateGeneric, reinterpret_cast<void*>(&test::onTwoThreads));
    test::Watched watched;
    watched.abortsOnly();
    RK_MergeMaskAlpha(&watched.info, 4, 6, nullptr, &mask, nullptr, b.get());
    EXPECT_EQ(one, two);
    EXPECT_EQ(watched.calls.size(), 50u) << "thread 0 alone asks";
}

}  // namespace
