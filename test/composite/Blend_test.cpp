#include "RK/indep/composite/RK_Blend.h"

#include <cstdlib>
#include <limits>

#include "RK/indep/frame/RKp_Depth.h"
#include "test/Pixels.h"
#include "test/Reports.h"
#include "test/world/OddWorld.h"

namespace {

using test::Picture;
using BlendFunc = RK_Long(void*, const RK_LayerDef*, const RK_LayerDef*, RK_Long, RK_LayerDef*);

template <class P>
RK_Long run(BlendFunc* blend, Picture<P>& src1, Picture<P>& src2, RK_Long ratio, Picture<P>& dst) {
    const RK_LayerDef from1 = src1.record(), from2 = src2.record();
    RK_LayerDef to = dst.record();
    return blend(nullptr, &from1, &from2, ratio, &to);
}
// One pixel mixed.
template <class P>
P mixed(BlendFunc* blend, const P& p1, const P& p2, RK_Long ratio) {
    Picture<P> src1(1, 1), src2(1, 1), dst(1, 1);
    src1.at(0, 0) = p1;
    src2.at(0, 0) = p2;
    EXPECT_EQ(0, run(blend, src1, src2, ratio, dst));
    return dst.at(0, 0);
}

class Blend : public test::Tidy {};
template <class P>
class BlendDepth : public test::Tidy {};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(BlendDepth, Depths);
template <class P>
class BlendInteger : public test::Tidy {};
using IntegerDepths = testing::Types<RK_Pixel8, RK_Pixel16>;
TYPED_TEST_SUITE(BlendInteger, IntegerDepths);

// ---- The ends -------------------------------------------------------------------------------------------

TYPED_TEST(BlendDepth, TheEndsOfTheRatioAreCopies) {
    using P = TypeParam;
    Picture<P> src1(7, 3), src2(7, 3, 2);
    src1.fillRandom(1);
    src2.fillRandom(2);
    for (BlendFunc* blend : {RK_Blend_Premul, RK_Blend_Straight, RK_Blend}) {
        for (RK_Long ratio :
             {RK_Long{0}, RK_Long{-1}, RK_Long{-70000}, std::numeric_limits<RK_Long>::min()}) {
            Picture<P> dst(7, 3);
            ASSERT_EQ(0, run(blend, src1, src2, ratio, dst));
            EXPECT_TRUE(dst == src1) << ratio;
        }
        for (RK_Long ratio : {RK_Long{65536}, RK_Long{70000}, std::numeric_limits<RK_Long>::max()}) {
            Picture<P> dst(7, 3, 2);
            ASSERT_EQ(0, run(blend, src1, src2, ratio, dst));
            EXPECT_TRUE(dst == src2) << ratio;
        }
    }
}

TYPED_TEST(BlendDepth, TheDestinationMayBeASource) {
    using P = TypeParam;
    for (BlendFunc* blend : {RK_Blend_Premul, RK_Blend_Straight}) {
        for (RK_Long ratio : {RK_Long{0}, RK_Long{30000}, RK_Long{65536}}) {
            Picture<P> src1(9, 4), src2(9, 4), dst(9, 4);
            src1.fillRandom(5);
            src2.fillRandom(6);
            ASSERT_EQ(0, run(blend, src1, src2, ratio, dst));
            Picture<P> onto1 = src1, onto2 = src2;
            ASSERT_EQ(0, run(blend, onto1, src2, ratio, onto1));
            ASSERT_EQ(0, run(blend, src1, onto2, ratio, onto2));
            EXPECT_TRUE(dst == onto1 && dst == onto2) << ratio;
            EXPECT_TRUE(dst.guardsWhole());
        }
    }
}

TYPED_TEST(BlendDepth, BlendIsTheStraightForm) {
    using P = TypeParam;
    Picture<P> src1(9, 4), src2(9, 4), one(9, 4), two(9, 4);
    src1.fillRandom(5);
    src2.fillRandom(6);
    ASSERT_EQ(0, run(RK_Blend, src1, src2, 12345, one));
    ASSERT_EQ(0, run(RK_Blend_Straight, src1, src2, 12345, two));
    EXPECT_TRUE(one == two);
}

// ---- Premultiplied --------------------------------------------------------------------------------------

TYPED_TEST(BlendInteger, PremultipliedRoundsToTheNearestTiesUp) {
    using P = TypeParam;
    using C = typename RKp_Depth<P>::Channel;
    test::Random r(3);
    for (int i = 0; i < 50000; ++i) {
        const C c1 = test::channel(r, C{}), c2 = test::channel(r, C{});
        const RK_Long ratio = 1 + RK_Long(r.below(65535));
        const P p = mixed<P>(RK_Blend_Premul, {c1, c2, c1, c2}, {c2, c1, c1, c1}, ratio);
        const auto rule = [&](int64_t a, int64_t b) {
            return C((a * (65536 - ratio) + b * ratio + 32768) / 65536);
        };
        ASSERT_TRUE(test::sameBytes(P{rule(c1, c2), rule(c2, c1), c1, rule(c2, c1)}, p)) << ratio;
        if (i > 2000) i += 49;
    }
    // 1 and 2 in halves: the term below 32768 would give 1.
    EXPECT_EQ(2, mixed<P>(RK_Blend_Premul, {1, 1, 1, 1}, {2, 2, 2, 2}, 32768).red);
    // One step short of a half: the term above would give 2.
    EXPECT_EQ(1, mixed<P>(RK_Blend_Premul, {1, 1, 1, 1}, {2, 2, 2, 2}, 32767).red);
}

TEST_F(Blend, PremultipliedFloatScalesTheSumOfProducts) {
    const RK_PixelFloat p1 = {0.9f, 0.1f, -1.0f, 4.0f}, p2 = {0.3f, 0.7f, 2.0f, 1e-3f};
    const float w1 = 65536 - 20001, w2 = 20001;
    const auto rule = [&](float a, float b) { return (a * w1 + b * w2) * 1.5258789e-05f; };
    EXPECT_TRUE(test::sameBytes(
        RK_PixelFloat{rule(0.9f, 0.3f), rule(0.1f, 0.7f), rule(-1.0f, 2.0f), rule(4.0f, 1e-3f)},
        mixed(RK_Blend_Premul, p1, p2, 20001)));
}

// ---- Straight -------------------------------------------------------------------------------------------

TEST_F(Blend, AClearPixelLendsNoColour) {
    EXPECT_TRUE(
        test::sameBytes(RK_Pixel8{128, 10, 20, 30},
                        mixed<RK_Pixel8>(RK_Blend_Straight, {0, 200, 200, 200}, {255, 10, 20, 30}, 32768)));
    EXPECT_TRUE(
        test::sameBytes(RK_Pixel8{128, 200, 100, 50},
                        mixed<RK_Pixel8>(RK_Blend_Straight, {255, 200, 100, 50}, {0, 10, 20, 30}, 32768)));
    // Of two clear ones the second lends it.
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{0, 10, 20, 30},
                                mixed<RK_Pixel8>(RK_Blend_Straight, {0, 200, 100, 50}, {0, 10, 20, 30}, 1)));
    EXPECT_TRUE(test::sameBytes(
        RK_Pixel16{16384, 10, 20, 30},
        mixed<RK_Pixel16>(RK_Blend_Straight, {0, 200, 200, 200}, {32768, 10, 20, 30}, 32768)));
    EXPECT_TRUE(test::sameBytes(
        RK_PixelFloat{32768 * 1.5258789e-05f, 0.1f, 2.0f, -3.0f},
        mixed<RK_PixelFloat>(RK_Blend_Straight, {0.0f, 9.0f, 9.0f, 9.0f}, {1.0f, 0.1f, 2.0f, -3.0f}, 32768)));
}

TYPED_TEST(BlendInteger, StraightWeightsColoursByAlpha) {
    using P = TypeParam;
    using C = typename RKp_Depth<P>::Channel;
    test::Random r(4);
    Picture<P> src1(97, 41), src2(97, 41), dst(97, 41);
    for (uint32_t seed = 1; seed <= 12; ++seed) {
        src1.fillRandom(seed);
        src2.fillRandom(seed + 100);
        if (seed > 10)  // beyond full too
            for (int y = 0; y < 41; ++y)
                for (int x = 0; x < 97; ++x)
                    src1.at(x, y) = {C(r.next()), C(r.next()), C(r.next()), C(r.next())};
        static const RK_Long kRatios[] = {1, 2, 32767, 32768, 32769, 65534, 65535};
        const RK_Long ratio = seed <= 7 ? kRatios[seed - 1] : 1 + RK_Long(r.below(65535));
        ASSERT_EQ(0, run(RK_Blend_Straight, src1, src2, ratio, dst));
        for (int y = 0; y < 41; ++y) {
            for (int x = 0; x < 97; ++x) {
                const P p1 = src1.at(x, y), p2 = src2.at(x, y);
                const uint64_t a1 = uint64_t{p1.alpha} * uint64_t(65536 - ratio),
                               a2 = uint64_t{p2.alpha} * uint64_t(ratio);
                const uint64_t sum = a1 + a2;
                const auto rule = [&](uint64_t c1, uint64_t c2) {
                    if (a1 == 0) return C(c2);
                    return a2 == 0 ? C(c1) : C((c1 * a1 + c2 * a2 + (sum >> 1)) / sum);
                };
                const P wanted = {C((sum + 0x8000) >> 16), rule(p1.red, p2.red), rule(p1.green, p2.green),
                                  rule(p1.blue, p2.blue)};
                ASSERT_TRUE(test::sameBytes(wanted, dst.at(x, y))) << ratio << " at " << x << ", " << y;
            }
        }
    }
}

// Numerators one below, at, and one above each multiple of the divisor.
TEST_F(Blend, QuotientsAreExactAtEveryStep) {
    for (RK_Long ratio : {RK_Long{1}, RK_Long{13107}, RK_Long{32768}, RK_Long{50000}, RK_Long{65535}}) {
        for (uint32_t alpha = 1; alpha <= 32768; alpha += 1 + alpha / 3) {
            for (uint32_t c = 0; c <= 32768; c += 257) {
                const auto c1 = uint16_t(c), c2 = uint16_t(32768 - c), other = uint16_t(32769 - alpha);
                const uint64_t a1 = uint64_t{alpha} * uint64_t(65536 - ratio),
                               a2 = uint64_t{other} * uint64_t(ratio);
                const RK_Pixel16 p = mixed<RK_Pixel16>(RK_Blend_Straight, {uint16_t(alpha), c1, c1, 0},
                                                       {other, c1, c2, 32768}, ratio);
                ASSERT_EQ(c1, p.red);
                ASSERT_EQ((c1 * a1 + c2 * a2 + ((a1 + a2) >> 1)) / (a1 + a2), p.green);
                ASSERT_EQ((32768 * a2 + ((a1 + a2) >> 1)) / (a1 + a2), p.blue);
            }
        }
    }
}

TEST_F(Blend, StraightFloatTakesWholeWeights) {
    test::Random r(6);
    for (int i = 0; i < 3000; ++i) {
        const auto p1 = test::pixel<RK_PixelFloat>(r), p2 = test::pixel<RK_PixelFloat>(r);
        const RK_Long ratio = 1 + RK_Long(r.below(65535));
        const auto a1 = int32_t(p1.alpha * float(65536 - ratio)), a2 = int32_t(p2.alpha * float(ratio));
        const auto rule = [&](float c1, float c2) {
            if (a1 == 0) return c2;
            return a2 == 0 ? c1 : (c1 * float(a1) + c2 * float(a2)) / float(a1 + a2);
        };
        const RK_PixelFloat wanted = {float(a1 + a2) * 1.5258789e-05f, rule(p1.red, p2.red),
                                      rule(p1.green, p2.green), rule(p1.blue, p2.blue)};
        ASSERT_TRUE(test::sameBytes(wanted, mixed(RK_Blend_Straight, p1, p2, ratio)));
    }
    // An alpha whose weight is less than one counts as clear.
    EXPECT_TRUE(test::sameBytes(RK_PixelFloat{1.5258789e-05f, 0.5f, 0.5f, 0.5f},
                                mixed<RK_PixelFloat>(RK_Blend_Straight, {1e-5f, 0.1f, 0.1f, 0.1f},
                                                     {2e-5f, 0.5f, 0.5f, 0.5f}, 65535)));
}

TEST_F(Blend, WildFloatAlphasGiveTheLeastInteger) {
    const float nan = std::numeric_limits<float>::quiet_NaN(), least = -2147483648.0f;
    for (float alpha : {nan, 1e30f, -1e30f, std::numeric_limits<float>::infinity()}) {
        const RK_PixelFloat p = mixed<RK_PixelFloat>(RK_Blend_Straight, {alpha, 0.5f, 0.5f, 0.5f},
                                                     {0.0f, 0.25f, 0.25f, 0.25f}, 32768);
        EXPECT_EQ(least * 1.5258789e-05f, p.alpha);
        EXPECT_EQ(0.5f, p.red);
    }
    // Their sum wraps to 0, and the colour divides by it.
    const RK_PixelFloat p =
        mixed<RK_PixelFloat>(RK_Blend_Straight, {nan, 0.5f, 0.5f, 0.5f}, {nan, 0.5f, 0.5f, 0.5f}, 9);
    EXPECT_EQ(0.0f, p.alpha);
    EXPECT_EQ(-std::numeric_limits<float>::infinity(), p.red);
}

// ---- Failures -------------------------------------------------------------------------------------------

TEST_F(Blend, NullsAreReported) {
    Picture<RK_Pixel8> picture(3, 3);
    for (BlendFunc* blend : {RK_Blend_Premul, RK_Blend_Straight, RK_Blend}) {
        for (int i = 0; i < 3; ++i) {
            RK_LayerDef records[3] = {picture.record(), picture.record(), picture.record()};
            RK_LayerDef* worlds[3] = {records, records + 1, records + 2};
            worlds[i] = nullptr;
            EXPECT_EQ(3, blend(nullptr, worlds[0], worlds[1], 5, worlds[2]));
            EXPECT_TRUE(test::onlyBadParam(12));
            worlds[i] = records + i;
            records[i].data = nullptr;
            records[(i + 1) % 3].width = 2;  // sizes are looked at later
            EXPECT_EQ(3, blend(nullptr, worlds[0], worlds[1], 5, worlds[2]));
            EXPECT_TRUE(test::onlyBadParam(12));
        }
    }
}

TEST_F(Blend, DepthsMustAgreeAndBeKnown) {
    Picture<RK_Pixel8> narrow(3, 3);
    Picture<RK_Pixel16> deep(3, 3);
    const char* const premul = "RK_BlendPremul requires src1, src2 and dst worlds to be same depth";
    const char* const straight = "RK_BlendStraight requires src1, src2 and dst worlds to be same depth";
    for (int i = 0; i < 3; ++i) {
        RK_LayerDef worlds[3] = {narrow.record(), narrow.record(), narrow.record()};
        worlds[i] = deep.record();
        worlds[i].data = nullptr;  // looked at later
        EXPECT_EQ(3, RK_Blend_Premul(nullptr, worlds, worlds + 1, 5, worlds + 2));
        EXPECT_TRUE(test::onlyVerification(premul));
        EXPECT_EQ(3, RK_Blend_Straight(nullptr, worlds, worlds + 1, 5, worlds + 2));
        EXPECT_TRUE(test::onlyVerification(straight));
        EXPECT_EQ(3, RK_Blend(nullptr, worlds, worlds + 1, 5, worlds + 2));
        EXPECT_TRUE(test::onlyVerification(straight));
    }
    test::OddWorld odd(12);
    odd.record.data = narrow.row(0);
    EXPECT_EQ(3, RK_Blend(nullptr, &odd.record, &odd.record, 5, &odd.record));
    EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in##CONDITIONNAME"));
}

TEST_F(Blend, SizesMustAgree) {
    Picture<RK_Pixel8> picture(3, 3);
    for (BlendFunc* blend : {RK_Blend_Premul, RK_Blend_Straight, RK_Blend}) {
        for (int i = 0; i < 6; ++i) {
            RK_LayerDef worlds[3] = {picture.record(), picture.record(), picture.record()};
            (i < 3 ? worlds[i].width : worlds[i - 3].height) = 2;
            EXPECT_EQ(3, blend(nullptr, worlds, worlds + 1, 5, worlds + 2));
            EXPECT_TRUE(
                test::onlyVerification("RK_Blend requires width and height of all worlds to be the same"));
        }
        RK_LayerDef none = picture.record();
        none.height = 0;
        EXPECT_EQ(0, blend(nullptr, &none, &none, 5, &none));
        none.height = 3;
        none.width = -1;
        EXPECT_EQ(0, blend(nullptr, &none, &none, 0, &none));
    }
}

// ---- One channel ----------------------------------------------------------------------------------------

TEST_F(Blend, ASingleChannelAtItsTargetStays) {
    for (int v = 0; v < 256; ++v) {
        uint8_t weight[4] = {255, 128, 1, 0};
        RK_Pixel8 p = {uint8_t(v), uint8_t(v), uint8_t(v), uint8_t(v)};
        const RK_Pixel8 before = p;
        ASSERT_EQ(0, RK_BlendSingleChannel(4, uint8_t{255}, uint8_t(v), weight, &p));
        EXPECT_TRUE(test::sameBytes(before, p));
    }
    for (uint32_t v = 0; v <= 32768; v += 7) {
        uint16_t weight[4] = {32768, 16384, 1, 0};
        const auto c = uint16_t(v);
        RK_Pixel16 p = {c, c, c, c};
        ASSERT_EQ(0, RK_BlendSingleChannel(4, uint16_t{32768}, c, weight, &p));
        EXPECT_EQ(c, p.alpha);
        EXPECT_EQ(c, p.green);
    }
    const float weight[4] = {1.0f, 0.5f, 0.25f, 0.0f};
    RK_PixelFloat p = {0.3f, 0.3f, 0.3f, 0.3f};
    ASSERT_EQ(0, RK_BlendSingleChannel(4, 1.0f, 0.3f, weight, &p));
    EXPECT_TRUE(test::sameBytes(RK_PixelFloat{0.3f, 0.3f, 0.3f, 0.3f}, p));
}

TEST_F(Blend, ASingleChannelOf8BitsRoundsAlikeBothWays) {
    for (int t = 0; t < 256; ++t) {
        for (int d = -255; d <= 255; ++d) {
            const uint8_t weight = uint8_t(t), v = uint8_t(d < 0 ? -d : 0), target = uint8_t(d < 0 ? 0 : d);
            RK_Pixel8 p = {v, 7, 7, 7};
            ASSERT_EQ(0, RK_BlendSingleChannel(1, uint8_t{255}, target, &weight, &p));
            // The rounded quotient by 255, the same size either way.
            const int step = (std::abs(d) * t * 2 + 255) / 510;
            ASSERT_EQ(d < 0 ? v - step : v + step, p.alpha) << v << " to " << int{target} << " by " << t;
            ASSERT_EQ(7, p.red);
        }
    }
}

TEST_F(Blend, ASingleChannelsOpacityScalesItsWeights) {
    const uint8_t weight[8] = {255, 128, 0, 255, 100, 200, 1, 254};
    RK_Pixel8 row[2] = {{0, 10, 20, 30}, {40, 50, 60, 255}};
    ASSERT_EQ(0, RK_BlendSingleChannel(7, uint8_t{128}, uint8_t{200}, weight, row));
    // t = mul8(weight, 128): 128, 64, 0, 128, 50, 100, 1
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{100, 58, 20, 115}, row[0]));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{71, 109, 61, 255}, row[1]));
}

TEST_F(Blend, ASingleChannelOf16BitsHasItsOwnRounding) {
    const auto moved = [](uint16_t v, uint16_t target, uint16_t weight, uint16_t opacity) {
        RK_Pixel16 p = {v, 1, 2, 3};
        EXPECT_EQ(0, RK_BlendSingleChannel(1, opacity, target, &weight, &p));
        return p.alpha;
    };
    EXPECT_EQ(32768, moved(0, 32768, 32768, 32768));
    EXPECT_EQ(0, moved(32768, 0, 32768, 32768));
    EXPECT_EQ(1, moved(0, 1, 16384, 32768));  // a half goes up
    EXPECT_EQ(0, moved(0, 1, 16383, 32768));
    EXPECT_EQ(0, moved(1, 0, 16384, 32768));  // and down alike
    EXPECT_EQ(1, moved(1, 0, 16383, 32768));
    EXPECT_EQ(0, moved(0, 1, 32767, 16384));  // the weight's own term is 16383
    test::Random r(2);
    for (int i = 0; i < 20000; ++i) {
        const auto v = uint16_t(r.next()), target = uint16_t(r.next()), weight = uint16_t(r.next()),
                   opacity = uint16_t(r.next());
        const int64_t t = (int64_t{weight} * opacity + 16383) >> 15, d = int64_t{target} - v;
        const int64_t product = d * t - (d < 0 ? 1 : 0) + 16384;
        ASSERT_EQ(uint16_t(v + (product >> 15)), moved(v, target, weight, opacity));
    }
}

TEST_F(Blend, ASingleFloatChannelIsNotClamped) {
    const float weight[5] = {0.7f, 2.0f, -1.0f, 0.1f, 0.3f};
    RK_PixelFloat row[2] = {{0.1f, 0.2f, 0.3f, 4.0f}, {0.9f, 0.8f, 0.7f, 0.6f}};
    const float was[5] = {0.1f, 0.2f, 0.3f, 4.0f, 0.9f};
    ASSERT_EQ(0, RK_BlendSingleChannel(5, 0.3f, 0.77f, weight, row));
    const float now[5] = {row[0].alpha, row[0].red, row[0].green, row[0].blue, row[1].alpha};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(was[i] + (weight[i] * 0.3f) * (0.77f - was[i]), now[i]);
    EXPECT_EQ(0.8f, row[1].red);
}

TEST_F(Blend, ASingleChannelNeedsItsRows) {
    uint8_t weight[4] = {255, 255, 255, 255};
    RK_Pixel8 p = {1, 2, 3, 4};
    EXPECT_EQ(0, RK_BlendSingleChannel(0, uint8_t{255}, uint8_t{9}, weight, &p));
    EXPECT_EQ(
        0, RK_BlendSingleChannel(std::numeric_limits<RK_Long>::min(), uint8_t{255}, uint8_t{9}, weight, &p));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{1, 2, 3, 4}, p));
    EXPECT_EQ(3, RK_BlendSingleChannel(4, uint8_t{255}, uint8_t{9}, static_cast<uint8_t*>(nullptr), &p));
    EXPECT_TRUE(test::onlyBadParam(12));
    EXPECT_EQ(3,
              RK_BlendSingleChannel(4, uint8_t{255}, uint8_t{9}, weight, static_cast<RK_Pixel8*>(nullptr)));
    EXPECT_TRUE(test::onlyBadParam(12));
}

}  // namespace
