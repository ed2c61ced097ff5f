// Masks combined: clips, what is cleared around them, weights, noise, progress, threads.
#include <algorithm>

#include "RK/indep/filter/RKp_UnoRows.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/passes/RK_Iterate.h"
#include "test/filter/Masks.h"

namespace {

using test::Mask;

constexpr Point kOrigin = {0, 0};

class UnoAccumulate : public test::Tidy {
  protected:
    void SetUp() override {
        Tidy::SetUp();
        noise_ = RKp_G_Noise;
    }
    void TearDown() override {
        RKp_G_Noise = noise_;
        Tidy::TearDown();
    }

  private:
    RKp_NoiseTable noise_ = {};
};

bool clears(int32_t mode) { return mode == RK_kUnoIntersect || mode == RK_kUnoDarken; }

// What a pass must leave: sample by sample, one row call of one sample each.
template <class S>
std::vector<S> wanted(int32_t mode, Mask<S>& src, const GEO_Rect& rect, const Point& point, Mask<S>& dst) {
    std::vector<S> out = dst.samples();
    bool any = false;
    std::vector<bool> reached(out.size());
    for (int y = std::max<int>(rect.top, 0); y < std::min<int>(rect.bottom, src.height()); ++y)
        for (int x = std::max<int>(rect.left, 0); x < std::min<int>(rect.right, src.width()); ++x) {
            const int dx = x - rect.left + point.h, dy = y - rect.top + point.v;
            if (dx < 0 || dy < 0 || dx >= dst.width() || dy >= dst.height()) continue;
            const size_t at = static_cast<size_t>(dy * dst.width() + dx);
            RKp_MaskAccumulate<S>(nullptr, mode, 1, &src.at(x, y), &out[at]);
            any = reached[at] = true;
        }
    if (any && clears(mode))
        for (size_t i = 0; i < out.size(); ++i)
            if (!reached[i]) out[i] = 0;
    return out;
}

struct Placement {
    GEO_Rect rect;
    Point point;
};
// Inside, over every edge, of a row, of a column, of a sample, far away, empty, upside down.
const Placement kPlacements[] = {{{0, 0, 9, 11}, {0, 0}},
                                 {{2, 3, 7, 8}, {2, 3}},
                                 {{2, 3, 7, 8}, {0, 0}},
                                 {{-3, -4, 20, 30}, {-3, -4}},
                                 {{-3, -4, 20, 30}, {1, 2}},
                                 {{0, 0, 9, 11}, {-2, -3}},
                                 {{0, 0, 9, 11}, {5, 6}},
                                 {{8, 10, 9, 11}, {0, 0}},
                                 {{0, 0, 1, 11}, {7, 0}},
                                 {{0, 0, 9, 1}, {0, 12}},
                                 {{0, 0, 9, 11}, {100, 0}},
                                 {{0, 0, 9, 11}, {0, -100}},
                                 {{4, 4, 4, 9}, {0, 0}},
                                 {{6, 2, 3, 9}, {0, 0}},
                                 {{-32768, -32768, 32767, 32767}, {-32768, -32768}},
                                 {{-32768, -32768, 32767, 32767}, {32767, 32767}}};

template <class S>
class UnoAccumulateT : public UnoAccumulate {};
using IntegerSamples = testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(UnoAccumulateT, IntegerSamples);

TYPED_TEST(UnoAccumulateT, EveryModeAtEveryPlace) {
    using S = TypeParam;
    for (int32_t mode : {0, 1, 2, 3, 4, 5, 6, 7, 8}) {
        for (const Placement& p : kPlacements) {
            Mask<S> src(11, 9, 3), dst(13, 8, 4);
            const auto expected = wanted(mode, src, p.rect, p.point, dst);
            const auto before = src.samples();
            ASSERT_EQ(0, RK_AccumulateUnoBuffers(nullptr, &src, mode, p.rect, p.point, &dst));
            ASSERT_EQ(dst.samples(), expected) << "mode " << mode << " at " << p.point.h << ", " << p.point.v;
            ASSERT_EQ(src.samples(), before);
        }
    }
}

TYPED_TEST(UnoAccumulateT, TransferOfTheDestinationItselfIsAnAccumulation) {
    using S = TypeParam;
    for (int32_t mode : {1, 2, 3, 4, 5, 6, 7}) {
        Mask<S> src(11, 9, 3), dst(13, 8, 4), by_transfer(13, 8, 4);
        const GEO_Rect rect = {1, 2, 7, 9};
        const Point point = {1, 2};
        RK_AccumulateUnoBuffers(nullptr, &src, mode, rect, point, &dst);
        ASSERT_EQ(0, RK_TransferUnoBuffers(nullptr, &src, &by_transfer, mode, rect, point, &by_transfer));
        EXPECT_EQ(dst.samples(), by_transfer.samples()) << mode;
    }
}

TYPED_TEST(UnoAccumulateT, AMaskWithItselfHasNoDifference) {
    Mask<TypeParam> mask(200, 40, 6);
    RK_AccumulateUnoBuffers(nullptr, &mask, RK_kUnoDifference, mask.rect(), kOrigin, &mask);
    EXPECT_EQ(mask.samples(), std::vector<TypeParam>(8000, 0));
}

TYPED_TEST(UnoAccumulateT, AnEmptyClipClearsNothing) {
    for (int32_t mode : {RK_kUnoIntersect, RK_kUnoDarken}) {
        Mask<TypeParam> src(4, 4, 1), dst(4, 4, 2);
        const auto before = dst.samples();
        EXPECT_EQ(0, RK_AccumulateUnoBuffers(nullptr, &src, mode, src.rect(), Point{4, 0}, &dst));
        EXPECT_EQ(0, RK_TransferUnoBuffers(nullptr, &src, &src, mode, GEO_Rect{1, 1, 1, 3}, kOrigin, &dst));
        EXPECT_EQ(dst.samples(), before);
    }
}

TYPED_TEST(UnoAccumulateT, IntersectionClearsAllThatTheRectangleMisses) {
    Mask<TypeParam> src(6, 6), dst(6, 6);
    const auto full = static_cast<TypeParam>(test::kFullSample<TypeParam>);
    for (const GEO_Rect& rect :
         {GEO_Rect{0, 0, 2, 6}, GEO_Rect{0, 2, 6, 4}, GEO_Rect{4, 0, 6, 6}, GEO_Rect{2, 2, 4, 4}}) {
        for (int32_t mode : {RK_kUnoIntersect, RK_kUnoDarken}) {
            src.fill(full), dst.fill(full);
            RK_AccumulateUnoBuffers(nullptr, &src, mode, rect, Point{rect.top, rect.left}, &dst);
            for (int y = 0; y < 6; ++y)
                for (int x = 0; x < 6; ++x)
                    ASSERT_EQ(
                        dst.at(x, y),
                        x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom ? full : 0);
        }
    }
}

TEST_F(UnoAccumulate, AUnionWithNothingChangesNothing) {
    Mask<uint8_t> src(50, 50), dst(50, 50, 4);
    const auto before = dst.samples();
    RK_AccumulateUnoBuffers(nullptr, &src, RK_kUnoUnion, src.rect(), kOrigin, &dst);
    EXPECT_EQ(dst.samples(), before);
}

// ---- Transfer -------------------------------------------------------------------------------------------

template <class S>
void expectTransfer() {
    for (int32_t mode : {0, 1, 2, 3, 4, 5, 6, 7, 8}) {
        for (const Placement& p : kPlacements) {
            Mask<S> a(11, 12, 3), b(14, 9, 4), dst(13, 8, 5);
            std::vector<S> out = dst.samples();
            bool any = false;
            std::vector<bool> reached(out.size());
            for (int y = std::max<int>(p.rect.top, 0); y < std::min<int>(p.rect.bottom, 9); ++y)
                for (int x = std::max<int>(p.rect.left, 0); x < std::min<int>(p.rect.right, 11); ++x) {
                    const int dx = x - p.rect.left + p.point.h, dy = y - p.rect.top + p.point.v;
                    if (dx < 0 || dy < 0 || dx >= 13 || dy >= 8) continue;
                    const size_t at = static_cast<size_t>(dy * 13 + dx);
                    RKp_MaskTransfer<S>(nullptr, mode, 1, &a.at(x, y), &b.at(x, y), &out[at]);
                    any = reached[at] = true;
                }
            if (any && clears(mode))
                for (size_t i = 0; i < out.size(); ++i)
                    if (!reached[i]) out[i] = 0;
            ASSERT_EQ(0, RK_TransferUnoBuffers(nullptr, &a, &b, mode, p.rect, p.point, &dst));
            ASSERT_EQ(dst.samples(), out) << "mode " << mode << " at " << p.point.h << ", " << p.point.v;
        }
    }
}

TEST_F(UnoAccumulate, TransferOfEveryModeAtEveryPlace) {
    expectTransfer<uint8_t>();
    expectTransfer<uint16_t>();
    expectTransfer<float>();
}

// ---- Depths ---------------------------------------------------------------------------------------------

TEST_F(UnoAccumulate, PairsOfDepthsThatHaveNoRowsGive3AndWriteNothing) {
    const GEO_Rect rect = {0, 0, 4, 4};
    for (int32_t from : {0, 1, 8, 16, 24, 32}) {
        for (int32_t to : {0, 1, 8, 16, 24, 32}) {
            for (int32_t mode : {-1, 1, 3, 5, 7, 70}) {
                RK_UnoBuffer src(4, 4, from), dst(4, 4, to);
                const size_t bytes = KIT_GetHandleSize(dst.pixels);
                std::memset(*src.pixels, 0x22, KIT_GetHandleSize(src.pixels));
                std::memset(*dst.pixels, 0x11, bytes);
                const bool known =
                    (from == to && (from == 8 || from == 16)) || (from == 8 && to == 16 && mode == 7);
                const GEO_Rect none = {0, 0, 0, 0};
                ASSERT_EQ(known ? 0 : 3, RK_AccumulateUnoBuffers(nullptr, &src, mode, none, kOrigin, &dst))
                    << "before the clip";
                ASSERT_EQ(known ? 0 : 3, RK_AccumulateUnoBuffers(nullptr, &src, mode, rect, kOrigin, &dst))
                    << from << " to " << to << " mode " << mode;
                const std::vector<uint8_t> before(bytes, 0x11);
                ASSERT_TRUE(known || std::memcmp(*dst.pixels, before.data(), bytes) == 0);

                const bool three = from == to && (from == 8 || from == 16 || from == 32);
                ASSERT_EQ(three ? 0 : 3,
                          RK_TransferUnoBuffers(nullptr, &src, &dst, mode, none, kOrigin, &dst));
                ASSERT_EQ(three ? 0 : 3,
                          RK_TransferUnoBuffers(nullptr, &dst, &src, mode, none, kOrigin, &dst));
            }
        }
    }
}

TEST_F(UnoAccumulate, BytesAddIntoDeepSamples) {
    Mask<uint8_t> src(9, 5, 2);
    Mask<uint16_t> dst(9, 5, 3), weighted(9, 5, 3);
    const auto before = dst.samples();
    ASSERT_EQ(0, RK_AccumulateUnoBuffers(nullptr, &src, RK_kUnoAdd, src.rect(), kOrigin, &dst));
    ASSERT_EQ(0,
              RK_AccumulateUnoBuffers(nullptr, &src, RK_kUnoAdd, 0.1f, 0.5f, src.rect(), kOrigin, &weighted));
    for (size_t i = 0; i < before.size(); ++i) {
        const int32_t s = src.samples()[i], half = (s * 128 + 128 + ((s * 128 + 128) >> 8)) >> 8;
        ASSERT_EQ(dst.samples()[i], std::min(32768, before[i] + (s * 32768 + 128) / 255));
        ASSERT_EQ(weighted.samples()[i], std::min(32768, before[i] + (half * 32768 + 128) / 255));
    }
}

// ---- Weights --------------------------------------------------------------------------------------------

TEST_F(UnoAccumulate, FullWeightsAreThePlainForm) {
    for (int32_t mode : {1, 2, 3, 6}) {
        Mask<uint8_t> src(9, 5, 2), plain(9, 5, 3), weighted(9, 5, 3);
        RK_AccumulateUnoBuffers(nullptr, &src, mode, src.rect(), kOrigin, &plain);
        RK_AccumulateUnoBuffers(nullptr, &src, mode, 1.0f, 0.999f, src.rect(), kOrigin, &weighted);
        EXPECT_EQ(plain.samples(), weighted.samples()) << "0.999 rounds to full";
    }
}

TYPED_TEST(UnoAccumulateT, WeightsAreRoundedToTheDepthAndEveryModeAdds) {
    using S = TypeParam;
    struct {
        float limit, opacity;
        int32_t l8, o8, l16, o16;
    } const cases[] = {{1.0f, 0.5f, 255, 128, 32768, 16384},
                       {0.25f, 1.0f, 64, 255, 8192, 32768},
                       {0.7f, 0.3f, 179, 77, 22938, 9830},
                       {2.0f, -1.0f, 510, -254, 65536, -32767},
                       {1e30f, 0.5f, INT32_MIN, 128, INT32_MIN, 16384}};
    for (const auto& one : cases) {
        for (int32_t mode : {1, 3, 5, 7}) {
            Mask<S> src(9, 5, 2), dst(12, 6, 3);
            std::vector<S> out = dst.samples();
            const int32_t limit = sizeof(S) == 1 ? one.l8 : one.l16,
                          opacity = sizeof(S) == 1 ? one.o8 : one.o16;
            for (int y = 0; y < 6; ++y)
                for (int x = 0; x < 12; ++x) {
                    S& d = out[static_cast<size_t>(y * 12 + x)];
                    if (x >= 1 && x < 10 && y < 5)
                        RKp_MaskAccumulateWeighted<S>(nullptr, mode, limit, opacity, 1, &src.at(x - 1, y),
                                                      &d);
                    else if (clears(mode))
                        d = 0;
                }
            ASSERT_EQ(0, RK_AccumulateUnoBuffers(nullptr, &src, mode, one.limit, one.opacity, src.rect(),
                                                 Point{0, 1}, &dst));
            ASSERT_EQ(dst.samples(), out) << mode << " limit " << one.limit << " opacity " << one.opacity;
        }
    }
}

// ---- Noise ----------------------------------------------------------------------------------------------

ptrdiff_t cursor() { return RKp_G_Noise.cursor - RKp_G_Noise.begin; }
ptrdiff_t words() { return RKp_G_Noise.end - RKp_G_Noise.begin; }

TYPED_TEST(UnoAccumulateT, DitherDrawsFromThePackageOncePerSample) {
    using S = TypeParam;
    for (bool by_transfer : {false, true}) {
        Mask<S> src(90, 100, 2), dst(100, 110, 3);
        const auto before = dst.samples();
        RKp_G_Noise.cursor = RKp_G_Noise.end - 700;
        RKp_NoiseTable own = RKp_G_Noise;
        Mask<S> out(100, 110, 3);
        const GEO_Rect rect = {10, 5, 100, 90};  // 85 by 90
        if (by_transfer)
            RK_TransferUnoBuffers(nullptr, &src, &src, -1, rect, Point{0, 0}, &out);
        else
            RK_AccumulateUnoBuffers(nullptr, &src, -1, rect, Point{0, 0}, &out);
        for (int y = 0; y < 90; ++y) {
            if (by_transfer)
                RKp_MaskTransfer<S>(&own, -1, 85, &src.at(5, y + 10), &src.at(5, y + 10), &dst.at(0, y));
            else
                RKp_MaskAccumulate<S>(&own, -1, 85, &src.at(5, y + 10), &dst.at(0, y));
        }
        EXPECT_EQ(out.samples(), dst.samples());
        EXPECT_EQ(RKp_G_Noise.cursor, own.cursor);
        EXPECT_EQ(cursor(), (words() - 700 + 85 * 90) % words());
    }
}

TEST_F(UnoAccumulate, NoOtherModeAndNoDeepWeightDraws) {
    Mask<uint8_t> bytes(20, 20, 2), bytes_out(20, 20, 3);
    Mask<uint16_t> deep(20, 20, 2), deep_out(20, 20, 3);
    Mask<float> floats(20, 20, 2), floats_out(20, 20, 3);
    const ptrdiff_t before = cursor();
    for (int32_t mode : {0, 1, 2, 3, 4, 5, 6, 7}) {
        RK_AccumulateUnoBuffers(nullptr, &bytes, mode, bytes.rect(), kOrigin, &bytes_out);
        RK_AccumulateUnoBuffers(nullptr, &bytes, mode, 0.5f, 0.5f, bytes.rect(), kOrigin, &bytes_out);
    }
    RK_AccumulateUnoBuffers(nullptr, &deep, -1, 0.5f, 0.5f, deep.rect(), kOrigin, &deep_out);
    RK_TransferUnoBuffers(nullptr, &floats, &floats, -1, floats.rect(), kOrigin, &floats_out);
    EXPECT_EQ(cursor(), before);
    RK_AccumulateUnoBuffers(nullptr, &bytes, -1, 0.0f, 0.5f, bytes.rect(), kOrigin, &bytes_out);
    EXPECT_EQ(cursor(), (before + 400) % words()) << "also where nothing changes";
}

// ---- Progress and threads -------------------------------------------------------------------------------

TYPED_TEST(UnoAccumulateT, ChecksInAfterEvery64thRowAndStopsAtEach) {
    using S = TypeParam;
    for (int32_t mode : {-1, 1, 3}) {
        for (size_t stop : {0u, 1u, 2u, 3u}) {
            Mask<S> src(3, 200), dst(3, 210);
            const auto full = static_cast<S>(test::kFullSample<S>);
            src.fill(full), dst.fill(full / 2);
            test::Watched watched;
            watched.stop_at = stop;
            RKp_G_Noise.cursor = RKp_G_Noise.begin;
            EXPECT_EQ(stop ? RK_kUserAbort : 0,
                      RK_AccumulateUnoBuffers(&watched.info, &src, mode, src.rect(), Point{5, 0}, &dst));
            std::vector<std::pair<RK_Long, RK_Long>> calls = {{63, 200}, {127, 200}, {191, 200}};
            if (stop) calls.resize(stop);
            EXPECT_EQ(watched.calls, calls);
            const int done = stop ? int(stop) * 64 : 200;
            for (int y = 0; y < 210; ++y) {
                const S old = full / 2;
                S w = y >= 5 && y < 5 + done && mode != 3 ? full : old;
                if (mode == 3 && (y < 5 || (y >= 205 && stop == 0))) w = 0;
                ASSERT_EQ(dst.at(1, y), w) << "mode " << mode << " row " << y << " stop " << stop;
            }
            EXPECT_EQ(cursor(), mode == -1 ? done * 3 : 0) << "drawn by the rows that ran";
        }
    }
}

template <class S>
void expectTransferStops() {
    for (bool abort_only : {false, true}) {
        for (size_t stop : {0u, 1u, 2u}) {
            Mask<S> a(3, 140), b(3, 140), dst(4, 150);
            const auto full = static_cast<S>(test::kFullSample<S>);
            a.fill(full), b.fill(full), dst.fill(full);
            test::Watched watched;
            if (abort_only) watched.abortsOnly();
            watched.stop_at = stop;
            watched.code = 33;
            EXPECT_EQ(stop ? 33 : 0, RK_TransferUnoBuffers(&watched.info, &a, &b, RK_kUnoDifference, a.rect(),
                                                           Point{6, 1}, &dst));
            EXPECT_EQ(watched.calls.size(), stop ? stop : 2u);
            const int done = stop ? static_cast<int>(stop) * 64 : 140;
            for (int y = 0; y < 150; ++y) {
                EXPECT_EQ(dst.at(0, y), full);
                EXPECT_EQ(dst.at(3, y), y >= 6 && y < 6 + done ? S{0} : full) << y << " of " << stop;
            }
        }
    }
}
TEST_F(UnoAccumulate, TransferStopsAtEachCheckInToo) {
    expectTransferStops<uint8_t>();
    expectTransferStops<uint16_t>();
    expectTransferStops<float>();
}

RK_Long g_calls;
RK_Long counted(RK_Long iterations, void* refcon, RK_GenericFunc* fn) {
    ++g_calls;
    return RK_IterateGeneric_Static(iterations, refcon, fn);
}

TEST_F(UnoAccumulate, SmallWorkStaysOffTheSlotAndTransferNeverDoes) {
    const test::InSlot slot(RKp_kSlot_IterateGeneric, reinterpret_cast<void*>(&counted));
    Mask<uint8_t> src(320, 240, 2), dst(320, 240, 3);
    g_calls = 0;
    RK_AccumulateUnoBuffers(nullptr, &src, 1, GEO_Rect{0, 0, 240, 319}, kOrigin, &dst);
    EXPECT_EQ(g_calls, 0);
    RK_AccumulateUnoBuffers(nullptr, &src, 1, GEO_Rect{0, 0, 240, 320}, kOrigin, &dst);
    EXPECT_EQ(g_calls, 1) << "76800 samples";
    RK_AccumulateUnoBuffers(nullptr, &src, 1, src.rect(), Point{0, 1}, &dst);
    EXPECT_EQ(g_calls, 1) << "what is left after the clip counts";
    RK_TransferUnoBuffers(nullptr, &src, &src, 1, GEO_Rect{0, 0, 1, 1}, kOrigin, &dst);
    EXPECT_EQ(g_calls, 2);
}

TYPED_TEST(UnoAccumulateT, TwoThreadsGiveTheSameBytes) {
    using S = TypeParam;
    Mask<S> src(333, 260, 2);
    for (int32_t mode : {-1, 1, 3, 7}) {
        for (float opacity : {1.0f, 0.4f}) {
            Mask<S> one(340, 270, 3), two(340, 270, 3), moved_one(340, 270, 3), moved_two(340, 270, 3);
            const uint32_t* const start = RKp_G_Noise.cursor;
            RK_AccumulateUnoBuffers(nullptr, &src, mode, 0.9f, opacity, src.rect(), Point{3, 2}, &one);
            RK_TransferUnoBuffers(nullptr, &src, &one, mode, src.rect(), Point{3, 2}, &moved_one);
            const uint32_t* const end = RKp_G_Noise.cursor;
            RKp_G_Noise.cursor = start;
            const test::InSlot threads(RKp_kSlot_IterateGeneric,
                                       reinterpret_cast<void*>(&test::onTwoThreads));
            test::Watched watched;
            RK_AccumulateUnoBuffers(&watched.info, &src, mode, 0.9f, opacity, src.rect(), Point{3, 2}, &two);
            RK_TransferUnoBuffers(&watched.info, &src, &two, mode, src.rect(), Point{3, 2}, &moved_two);
            EXPECT_EQ(one.samples(), two.samples()) << mode;
            EXPECT_EQ(moved_one.samples(), moved_two.samples()) << mode;
            EXPECT_EQ(RKp_G_Noise.cursor, end) << mode;
        }
    }
}

// ---- Damage ---------------------------------------------------------------------------------------------

TEST_F(UnoAccumulate, DamagedBuffersAreReportedEachAndAWrongMagicGoesOn) {
    Mask<uint8_t> src(4, 4, 2), dst(4, 4, 3), sound(4, 4, 3);
    RK_AccumulateUnoBuffers(nullptr, &src, 1, src.rect(), kOrigin, &sound);
    src->magic = 1;
    dst->magic = 2;
    EXPECT_EQ(0, RK_AccumulateUnoBuffers(nullptr, &src, 1, src.rect(), kOrigin, &dst));
    EXPECT_TRUE(test::damagedMasks(2));
    EXPECT_EQ(dst.samples(), sound.samples());
    EXPECT_EQ(0, RK_TransferUnoBuffers(nullptr, &src, &src, 1, src.rect(), kOrigin, &dst));
    EXPECT_TRUE(test::damagedMasks(3));
    src->magic = dst->magic = RK_kUnoMagic;
}

TEST_F(UnoAccumulate, WithoutABufferOrAStoreTheResultIs3) {
    Mask<uint8_t> mask(4, 4, 2);
    RK_UnoBuffer bare(4, 4, 8);
    const KIT_Handle held = bare.pixels;
    bare.pixels = nullptr;
    const GEO_Rect rect = mask.rect();
    const auto before = mask.samples();
    for (RK_UnoBuffer* none : {static_cast<RK_UnoBuffer*>(nullptr), &bare}) {
        EXPECT_EQ(3, RK_AccumulateUnoBuffers(nullptr, none, 1, rect, kOrigin, &mask));
        EXPECT_TRUE(test::damagedMasks(1));
        EXPECT_EQ(3, RK_AccumulateUnoBuffers(nullptr, &mask, 1, rect, kOrigin, none));
        EXPECT_TRUE(test::damagedMasks(1));
        EXPECT_EQ(3, RK_AccumulateUnoBuffers(nullptr, none, 1, 0.5f, 0.5f, rect, kOrigin, none));
        EXPECT_TRUE(test::damagedMasks(2));
        EXPECT_EQ(3, RK_TransferUnoBuffers(nullptr, none, &mask, 1, rect, kOrigin, &mask));
        EXPECT_TRUE(test::damagedMasks(1));
        EXPECT_EQ(3, RK_TransferUnoBuffers(nullptr, &mask, none, 1, rect, kOrigin, &mask));
        EXPECT_TRUE(test::damagedMasks(1));
        EXPECT_EQ(3, RK_TransferUnoBuffers(nullptr, &mask, &mask, 1, rect, kOrigin, none));
        EXPECT_TRUE(test::damagedMasks(1));
    }
    EXPECT_EQ(mask.samples(), before);
    bare.pixels = held;
}

}  // namespace
