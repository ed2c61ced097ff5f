#include "RK/indep/composite/RK_CompositeRect.h"

#include <limits>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "test/Reports.h"
#include "test/composite/ModeRows.h"

namespace {

using Picture = test::Picture<RK_Pixel8>;
using Routine = RKp_CompositeRectFunc;

struct Named {
    Routine* run;
    bool premul;
    int32_t slot;
};
const Named kRoutines[] = {{RK_CompositeRectDraft_Straight, false, 7},
                           {RK_CompositeRectDraft_Premul, true, 8},
                           {RK_CompositeRectBest_Straight, false, 9},
                           {RK_CompositeRectBest_Premul, true, 10}};

// The rules once more, in 64 bits.
uint8_t product(int64_t a, int64_t b) { return static_cast<uint8_t>((2 * a * b + 255) / 510); }
RK_Pixel8 straight(RK_Pixel8 s, RK_Pixel8 d, int64_t o) {
    if (d.alpha == 255) return d;
    if (d.alpha == 0) return {product(o, s.alpha), s.red, s.green, s.blue};
    const int64_t e = (255 - d.alpha) * o * s.alpha, g = int64_t{d.alpha} * 65025, t = g + e;
    return {static_cast<uint8_t>(t / 65025), static_cast<uint8_t>((s.red * e + d.red * g) / t),
            static_cast<uint8_t>((s.green * e + d.green * g) / t),
            static_cast<uint8_t>((s.blue * e + d.blue * g) / t)};
}
RK_Pixel8 premul(RK_Pixel8 s, RK_Pixel8 d, int64_t o) {
    if (d.alpha == 255) return d;
    const RK_Pixel8 q = {product(o, s.alpha), product(o, s.red), product(o, s.green), product(o, s.blue)};
    if (d.alpha == 0) return q;
    const int rest = 255 - d.alpha;
    return {static_cast<uint8_t>(d.alpha + product(rest, q.alpha)),
            static_cast<uint8_t>(d.red + product(rest, q.red)),
            static_cast<uint8_t>(d.green + product(rest, q.green)),
            static_cast<uint8_t>(d.blue + product(rest, q.blue))};
}

RK_Pixel8 one(const Named& routine, RK_Pixel8 s, RK_Pixel8 d, uint8_t opacity) {
    Picture src(1, 1), dst(1, 1);
    src.at(0, 0) = s;
    dst.at(0, 0) = d;
    const RK_LayerDef from = src.record();
    RK_LayerDef to = dst.record();
    EXPECT_EQ(routine.run(nullptr, nullptr, opacity, &from, 0, 0, 0, nullptr, &to), 0);
    return dst.at(0, 0);
}

class CompositeRect : public testing::Test {
  protected:
    void SetUp() override { RefHost::TakeReports(); }
    void TearDown() override { EXPECT_TRUE(test::noReports()); }
};

TEST_F(CompositeRect, EveryPairOfAlphasUnderManyOpacities) {
    for (const Named& routine : kRoutines) {
        Picture src(256, 256), dst(256, 256);
        src.fillRandom(3);
        dst.fillRandom(4);
        for (int y = 0; y < 256; ++y)
            for (int x = 0; x < 256; ++x) src.at(x, y).alpha = uint8_t(x), dst.at(x, y).alpha = uint8_t(y);
        const Picture before = dst;
        for (uint8_t opacity : {1, 2, 77, 127, 128, 129, 254, 255}) {
            dst = before;
            const RK_LayerDef from = src.record();
            RK_LayerDef to = dst.record();
            ASSERT_EQ(routine.run(nullptr, nullptr, opacity, &from, 0, 0, 0, nullptr, &to), 0);
            for (int y = 0; y < 256; ++y) {
                for (int x = 0; x < 256; ++x) {
                    const RK_Pixel8 s = src.at(x, y), d = before.at(x, y);
                    const RK_Pixel8 wanted = routine.premul ? premul(s, d, opacity) : straight(s, d, opacity);
                    ASSERT_TRUE(test::sameBytes(dst.at(x, y), wanted))
                        << test::text(s) << " behind " << test::text(d) << " at " << int(opacity);
                }
            }
        }
    }
}

TEST_F(CompositeRect, TheLargestSumsFit) {
    for (uint8_t da : {1, 127, 254}) {
        const RK_Pixel8 white = {255, 255, 255, 255}, d = {da, 255, 255, 255};
        EXPECT_TRUE(test::sameBytes(one(kRoutines[0], white, d, 255), white));
    }
}

TEST_F(CompositeRect, StraightOntoNothingKeepsTheSourcesColour) {
    const RK_Pixel8 s = {200, 11, 22, 33};
    EXPECT_TRUE(test::sameBytes(one(kRoutines[2], s, {0, 9, 9, 9}, 128), RK_Pixel8{100, 11, 22, 33}));
    EXPECT_TRUE(
        test::sameBytes(one(kRoutines[2], {0, 11, 22, 33}, {0, 9, 9, 9}, 128), RK_Pixel8{0, 11, 22, 33}));
}

TEST_F(CompositeRect, AnOpaqueDestinationStays) {
    for (const Named& routine : kRoutines) {
        const RK_Pixel8 d = {255, 1, 2, 3};
        EXPECT_TRUE(test::sameBytes(one(routine, {255, 9, 9, 9}, d, 255), d));
    }
}

// Kept: the premultiplied sums have no clamp.
TEST_F(CompositeRect, PremultipliedSumsWrap) {
    const RK_Pixel8 d = one(kRoutines[1], {255, 255, 255, 255}, {1, 255, 2, 1}, 255);
    EXPECT_TRUE(test::sameBytes(d, RK_Pixel8{255, 253, 0, 255})) << test::text(d);
}

TEST_F(CompositeRect, ClipsAsALookAtEveryPixelDoes) {
    test::Random r(8);
    const auto about = [&](int low, int high) { return low + int(r.below(uint32_t(high - low + 1))); };
    for (int i = 0; i < 4000; ++i) {
        const Named& routine = kRoutines[r.below(4)];
        Picture src(about(1, 8), about(1, 8), 2), dst(about(1, 8), about(1, 8), 3);
        src.fillRandom(r.next());
        dst.fillRandom(r.next());
        const Picture before = dst;
        const GEO_Rect rect = {int16_t(about(-2, 4)), int16_t(about(-2, 4)), int16_t(about(1, 10)),
                               int16_t(about(1, 10))};
        const bool whole = r.below(4) == 0;
        const GEO_Rect used = whole ? GEO_Rect{0, 0, int16_t(src.height()), int16_t(src.width())} : rect;
        const int dst_x = about(-6, 8), dst_y = about(-6, 8);
        const RK_Long field = about(0, 3);
        const uint8_t opacity = uint8_t(about(1, 255));
        const RK_LayerDef from = src.record();
        RK_LayerDef to = dst.record();
        ASSERT_EQ(
            routine.run(nullptr, whole ? nullptr : &rect, opacity, &from, dst_x, dst_y, field, nullptr, &to),
            0);
        for (int y = 0; y < dst.height(); ++y) {
            for (int x = 0; x < dst.width(); ++x) {
                const int sx = x - dst_x + used.left, sy = y - dst_y + used.top;
                const bool blended = sx >= used.left && sx < used.right && sy >= used.top &&
                                     sy < used.bottom && sx >= 0 && sy >= 0 && sx < src.width() &&
                                     sy < src.height() &&
                                     (field == 0 || (field == 1 && y % 2 == 0) || (field == 2 && y % 2 == 1));
                RK_Pixel8 wanted = before.at(x, y);
                if (blended)
                    wanted = routine.premul ? premul(src.at(sx, sy), wanted, opacity)
                                            : straight(src.at(sx, sy), wanted, opacity);
                ASSERT_TRUE(test::sameBytes(dst.at(x, y), wanted)) << i << " at " << x << ", " << y;
            }
        }
        ASSERT_TRUE(dst.guardsWhole());
    }
}

TEST_F(CompositeRect, NoPlaceWraps) {
    Picture src(3, 3), dst(3, 3);
    src.fillRandom(1);
    const Picture before = dst;
    const RK_LayerDef from = src.record();
    RK_LayerDef to = dst.record();
    for (RK_Long far : {RK_Long{65536}, RK_Long{-65536}, RK_Long{70000}, std::numeric_limits<RK_Long>::max(),
                        std::numeric_limits<RK_Long>::min()}) {
        EXPECT_EQ(RK_CompositeRectBest_Straight(nullptr, nullptr, 255, &from, far, 0, 0, nullptr, &to), 0);
        EXPECT_EQ(RK_CompositeRectBest_Premul(nullptr, nullptr, 255, &from, 0, far, 0, nullptr, &to), 0);
    }
    EXPECT_EQ(dst, before);
}

// ---- Progress -------------------------------------------------------------------------------------------

struct Calls {
    std::vector<std::pair<RK_Long, RK_Long>> all;
    size_t abort_at = SIZE_MAX;
};
RK_Long note(void* refcon, RK_Long current, RK_Long maximum) {
    Calls& calls = *static_cast<Calls*>(refcon);
    calls.all.push_back({current, maximum});
    return calls.all.size() - 1 == calls.abort_at ? 517 : 0;
}
RK_Long neverAsked(void*) {
    ADD_FAILURE() << "abort_func was called";
    return 1;
}

TEST_F(CompositeRect, ProgressIsToldTheRowsLeftEvery32ndRow) {
    Picture src(1, 100), dst(1, 200);
    const RK_LayerDef from = src.record();
    RK_LayerDef to = dst.record();
    Calls calls;
    RK_ProgressInfo progress = {&calls, neverAsked, note};
    for (const Named& routine : kRoutines) {
        calls.all.clear();
        EXPECT_EQ(routine.run(&progress, nullptr, 255, &from, 0, 3, 0, nullptr, &to), 0);
        const std::vector<std::pair<RK_Long, RK_Long>> wanted = {{96, 100}, {64, 100}, {32, 100}};
        EXPECT_EQ(calls.all, wanted);
    }
    // Rows left are even where rows are odd, here: the even field is never asked at a multiple of 32.
    calls.all.clear();
    EXPECT_EQ(kRoutines[0].run(&progress, nullptr, 255, &from, 0, 3, 1, nullptr, &to), 0);
    EXPECT_TRUE(calls.all.empty());
    EXPECT_EQ(kRoutines[0].run(&progress, nullptr, 255, &from, 0, 3, 2, nullptr, &to), 0);
    EXPECT_EQ(calls.all.size(), 3u);
    calls.all.clear();
    EXPECT_EQ(kRoutines[0].run(&progress, nullptr, 255, &from, 0, 3, 7, nullptr, &to), 0);
    EXPECT_TRUE(calls.all.empty()) << "an unknown field blends no row";
}

TEST_F(CompositeRect, AnAbortComesBackAtOnceAndRowsDoneStayDone) {
    Picture src(2, 100), dst(2, 100);
    src.fill({255, 1, 2, 3});
    const RK_LayerDef from = src.record();
    for (size_t at = 0; at < 3; ++at) {
        dst.fill({0, 0, 0, 0});
        RK_LayerDef to = dst.record();
        Calls calls;
        calls.abort_at = at;
        RK_ProgressInfo progress = {&calls, nullptr, note};
        EXPECT_EQ(RK_CompositeRectDraft_Premul(&progress, nullptr, 255, &from, 0, 0, 0, nullptr, &to), 517);
        EXPECT_EQ(calls.all.size(), at + 1);
        const int rows = 4 + 32 * int(at);
        for (int y = 0; y < 100; ++y) EXPECT_EQ(dst.at(1, y).alpha, y < rows ? 255 : 0) << y;
    }
}

// ---- Arguments ------------------------------------------------------------------------------------------

TEST_F(CompositeRect, OpacityZeroReturnsAtOnce) {
    Picture src(2, 64), dst(2, 64);
    src.fillRandom(1);
    const Picture before = dst;
    const RK_LayerDef from = src.record();
    RK_LayerDef to = dst.record();
    Calls calls;
    RK_ProgressInfo progress = {&calls, nullptr, note};
    for (const Named& routine : kRoutines) {
        EXPECT_EQ(routine.run(&progress, nullptr, 0, &from, 0, 0, 0, nullptr, &to), 0);
        EXPECT_EQ(routine.run(&progress, nullptr, 0, nullptr, 0, 0, 0, nullptr, nullptr), 0);
    }
    EXPECT_TRUE(calls.all.empty());
    EXPECT_EQ(dst, before);
}

TEST_F(CompositeRect, ANullWorldIsABadParameterAndNullPixelsAreEmpty) {
    Picture src(2, 2), dst(2, 2);
    src.fillRandom(1);
    const Picture before = dst;
    RK_LayerDef from = src.record(), to = dst.record();
    for (const Named& routine : kRoutines) {
        EXPECT_EQ(routine.run(nullptr, nullptr, 255, nullptr, 0, 0, 0, nullptr, &to), 3);
        EXPECT_TRUE(test::onlyBadParam(13));
        EXPECT_EQ(routine.run(nullptr, nullptr, 255, &from, 0, 0, 0, nullptr, nullptr), 3);
        EXPECT_TRUE(test::onlyBadParam(13));
        RK_LayerDef none = from;
        none.data = nullptr;
        EXPECT_EQ(routine.run(nullptr, nullptr, 255, &none, 0, 0, 0, nullptr, &to), 0);
        none = to;
        none.data = nullptr;
        EXPECT_EQ(routine.run(nullptr, nullptr, 255, &from, 0, 0, 0, nullptr, &none), 0);
    }
    EXPECT_EQ(dst, before);
}

TEST_F(CompositeRect, DeeperWorldsAreWalkedAsPixelsOfFourBytes) {
    test::Picture<RK_Pixel16> src(4, 2), dst(4, 2);
    src.fillRandom(1);
    dst.fillRandom(2);
    const test::Picture<RK_Pixel16> before = dst;
    const RK_LayerDef from = src.record();
    RK_LayerDef to = dst.record();
    EXPECT_EQ(RK_CompositeRectBest_Straight(nullptr, nullptr, 200, &from, 0, 0, 0, nullptr, &to), 0);
    for (int y = 0; y < 2; ++y) {
        RK_Pixel8 s[8], d[8], got[8];
        std::memcpy(s, src.row(y), sizeof s);
        std::memcpy(d, before.row(y), sizeof d);
        std::memcpy(got, dst.row(y), sizeof got);
        for (int x = 0; x < 8; ++x)
            EXPECT_TRUE(test::sameBytes(got[x], x < 4 ? straight(s[x], d[x], 200) : d[x])) << x;
    }
}

TEST_F(CompositeRect, TheSlotsHoldTheRoutines) {
    for (const Named& routine : kRoutines) {
        RK_SlotInfo info;
        ASSERT_EQ(RK_GetSlotInfo(routine.slot, &info), 0);
        EXPECT_EQ(info.form, RK_kSlotDefault);
        EXPECT_EQ(RKp_G_OverFuncs[routine.slot], reinterpret_cast<void*>(routine.run));
    }
}

}  // namespace
