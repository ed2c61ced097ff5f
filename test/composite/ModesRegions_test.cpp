#include "RK/indep/composite/RKp_ModesRegions.h"

#include "test/composite/ModeRows.h"

using namespace test;

namespace {

using Eight = RK_Pixel8;
using Sixteen = RK_Pixel16;
using Float = RK_PixelFloat;

constexpr int32_t kRegionModes[] = {RK_Xfer_Difference,  RK_Xfer_Dodge,      RK_Xfer_Burn,
                                    RK_Xfer_LinearDodge, RK_Xfer_LinearBurn, RK_Xfer_LinearLight,
                                    RK_Xfer_VividLight,  RK_Xfer_PinLight,   RK_Xfer_HardMix};

}  // namespace

TEST(ThreeRegions, AnOpaqueSourceOnAClearDestinationIsTheSource) {
    for (int32_t mode : kRegionModes) {
        const Eight s = {255, 10, 128, 250}, d = {0, 99, 1, 255};
        EXPECT_EQ(text(alone(mode, s, d)), text(s)) << mode;
        const Sixteen s16 = {32768, 10, 16385, 32000}, d16 = {0, 99, 1, 32768};
        EXPECT_EQ(text(alone(mode, s16, d16)), text(s16)) << mode;
        const Float sf = {1.0f, 0.125f, 0.5f, 0.75f}, df = {0.0f, 0.3f, 0.1f, 1.0f};
        EXPECT_EQ(text(alone(mode, sf, df)), text(sf)) << mode;
    }
}

TEST(ThreeRegions, UseTheDestinationsOwnColourAndNoBackground) {
    // Half of each: a quarter source alone, a quarter destination alone, a quarter both.
    const Float s = {0.5f, 1.0f, 0.5f, 0.0f}, d = {0.5f, 1.0f, 0.5f, 1.0f};
    EXPECT_EQ(text(alone(RK_Xfer_Difference, s, d)),
              text(Float{0.75f, 0.5f / 0.75f, 0.25f / 0.75f, 0.5f / 0.75f}));
}

TEST(ThreeRegions, SumTheirProductsAsPrinted8) {
    using D = RKp_Depth<Eight>;
    const Eight s = {100, 200, 100, 50}, d = {150, 10, 250, 50};
    const int o = D::mul(100, 150), a = D::unite(100, 150);
    const auto v = [&](int sc, int dc, int f) {
        const int sum = D::mul(150, dc) - D::mul(dc, o) + D::mul(100, sc) - D::mul(sc, o) + D::mul(f, o);
        return D::div(a, sum);
    };
    const Eight expected = {uint8_t(a), uint8_t(v(200, 10, 190)), uint8_t(v(100, 250, 150)),
                            uint8_t(v(50, 50, 0))};
    EXPECT_EQ(text(alone(RK_Xfer_Difference, s, d)), text(expected));
}

TEST(Dodge, LeavesBlackBlack) {
    EXPECT_EQ(RKp_ModeDodge<Eight>::both(255, 0), 0);
    EXPECT_EQ(RKp_ModeDodge<Eight>::both(255, 1), 255);
    EXPECT_EQ(RKp_ModeDodge<Sixteen>::both(32768, 0), 0);
    EXPECT_EQ(RKp_ModeDodge<Sixteen>::both(32768, 1), 32768);
    EXPECT_EQ(RKp_ModeDodge<Float>::both(1.0f, 0.0f), 0.0f);
    EXPECT_EQ(RKp_ModeDodge<Float>::both(1.0f, 0.5f), 1.0f);
    EXPECT_EQ(RKp_ModeDodge<Float>::both(2.0f, 0.5f), 1.0f);  // 1 - s below 0
    EXPECT_EQ(RKp_ModeDodge<Float>::both(0.5f, 0.25f), 0.5f);
    EXPECT_EQ(RKp_ModeDodge<Float>::both(0.5f, 0.5f), 1.0f);
    EXPECT_EQ(RKp_ModeDodge<Float>::both(0.5f, -0.25f), -0.5f);
}

TEST(Burn, LeavesWhiteWhiteUnderBlack) {
    EXPECT_EQ(RKp_ModeBurn<Eight>::both(0, 255), 255);
    EXPECT_EQ(RKp_ModeBurn<Eight>::both(0, 254), 0);
    EXPECT_EQ(RKp_ModeBurn<Sixteen>::both(0, 32768), 32768);
    EXPECT_EQ(RKp_ModeBurn<Sixteen>::both(0, 32767), 0);
    EXPECT_EQ(RKp_ModeBurn<Float>::both(0.0f, 1.0f), 1.0f);
    EXPECT_EQ(RKp_ModeBurn<Float>::both(0.0f, 1.5f), 0.0f);
    EXPECT_EQ(RKp_ModeBurn<Float>::both(0.5f, 0.5f), 0.0f);  // 1 - d reaches s
    EXPECT_EQ(RKp_ModeBurn<Float>::both(0.5f, 0.75f), 0.5f);
    EXPECT_EQ(RKp_ModeBurn<Float>::both(0.5f, 1.5f), 2.0f);  // not clamped
}

TEST(LinearModes, ClampAtTheIntegerDepths) {
    EXPECT_EQ(RKp_ModeLinearDodge<Eight>::both(200, 100), 255);
    EXPECT_EQ(RKp_ModeLinearDodge<Float>::both(0.75f, 0.75f), 1.5f);
    EXPECT_EQ(RKp_ModeLinearBurn<Eight>::both(100, 100), 0);
    EXPECT_EQ(RKp_ModeLinearBurn<Eight>::both(200, 100), 45);
    EXPECT_EQ(RKp_ModeLinearBurn<Sixteen>::both(32768, 5), 5);
    EXPECT_EQ(RKp_ModeLinearBurn<Float>::both(0.25f, 0.25f), 0.0f);
    EXPECT_EQ(RKp_ModeLinearLight<Eight>::both(255, 0), 254);  // 2 * 255 - 256
    EXPECT_EQ(RKp_ModeLinearLight<Eight>::both(255, 2), 255);
    EXPECT_EQ(RKp_ModeLinearLight<Eight>::both(0, 255), 0);
    EXPECT_EQ(RKp_ModeLinearLight<Eight>::both(127, 255), 253);
    EXPECT_EQ(RKp_ModeLinearLight<Sixteen>::both(32768, 0), 32768);
    EXPECT_EQ(RKp_ModeLinearLight<Sixteen>::both(0, 32768), 0);
    EXPECT_EQ(RKp_ModeLinearLight<Float>::both(0.0f, 0.25f), -0.75f);
    EXPECT_EQ(RKp_ModeLinearLight<Float>::both(1.0f, 0.25f), 1.25f);
}

TEST(VividLight, Forms2sByItsOwnRounding8) {
    using D = RKp_BlendDepth<Eight>;
    EXPECT_EQ(D::twiceBelow(1), 2);
    EXPECT_EQ(D::twiceBelow(127), 253);
    int differs = 0;
    for (int s = 1; s < 128; ++s) {
        differs += D::twiceBelow(s) != (s * 255) >> 7;
        ASSERT_EQ(D::twiceBelow(s), (s * 255 + 64) >> 7);
    }
    EXPECT_GT(differs, 30);  // without the rounding term
    EXPECT_EQ(D::twiceAbove(129), 2);
    EXPECT_EQ(D::twiceAbove(254), 253);
    EXPECT_NE(D::twiceAbove(254), 2 * (254 - 128));
}

TEST(VividLight, TakesTheEndsOfTheSourceFirst) {
    using M8 = RKp_ModeVividLight<Eight>;
    EXPECT_EQ(M8::both(0, 255), 0);
    EXPECT_EQ(M8::both(0, 0), 0);
    EXPECT_EQ(M8::both(255, 0), 255);
    EXPECT_EQ(M8::both(254, 0), 0);
    for (int d = 0; d < 256; ++d) EXPECT_EQ(M8::both(128, d), d);
    EXPECT_EQ(M8::both(64, 200), 255 - (55 * 255 + 64) / 128);  // 2s is 128
    EXPECT_EQ(M8::both(192, 100), (100 * 255 + 63) / 126);      // 2(s - H) is 129
    using M16 = RKp_ModeVividLight<Sixteen>;
    EXPECT_EQ(M16::both(32768, 0), 32768);
    EXPECT_EQ(M16::both(32767, 0), 0);
    EXPECT_EQ(M16::both(16384, 12345), 12345);
    EXPECT_EQ(M16::both(8192, 24576), 16384);
    using MF = RKp_ModeVividLight<Float>;
    EXPECT_EQ(MF::both(0.0f, 1.0f), 0.0f);
    EXPECT_EQ(MF::both(1.0f, 0.0f), 1.0f);
    EXPECT_EQ(MF::both(0.75f, 0.0f), 0.0f);
    EXPECT_EQ(MF::both(0.75f, 0.25f), 0.5f);
    EXPECT_EQ(MF::both(0.75f, 0.5f), 1.0f);
    EXPECT_EQ(MF::both(0.25f, 0.75f), 0.5f);
    EXPECT_EQ(MF::both(0.25f, 0.25f), 0.0f);
    EXPECT_EQ(MF::both(-0.25f, 0.25f), 0.0f);
    EXPECT_EQ(MF::both(1.25f, 0.25f), 1.0f);
    EXPECT_EQ(MF::both(0.5f, 0.3f), 0.3f);
}

TEST(PinLight, TakesMinimumBelowAndMaximumAbove) {
    using M8 = RKp_ModePinLight<Eight>;
    EXPECT_EQ(M8::both(50, 200), 100);
    EXPECT_EQ(M8::both(50, 20), 20);
    EXPECT_EQ(M8::both(128, 77), 77);
    EXPECT_EQ(M8::both(255, 0), 254);
    EXPECT_EQ(M8::both(255, 255), 255);
    EXPECT_EQ(RKp_ModePinLight<Sixteen>::both(32768, 0), 32768);
    EXPECT_EQ(RKp_ModePinLight<Float>::both(0.75f, 0.25f), 0.5f);
}

TEST(HardMix, Is8BitThresholdAHairBelowTheInvertedSource) {
    using M = RKp_ModeHardMix<Eight>;
    for (int s = 0; s < 256; ++s) {
        const int t = RKp_Depth<Eight>::mul(255 - s, 254);
        for (int d = 0; d < 256; ++d) ASSERT_EQ(M::both(s, d), d > t ? 255 : 0) << s << " " << d;
    }
    EXPECT_EQ(M::both(0, 255), 255);  // t is 254: white survives black
    EXPECT_EQ(M::both(0, 254), 0);
    EXPECT_EQ(M::both(255, 0), 0);
    EXPECT_EQ(M::both(255, 1), 255);
}

TEST(HardMix, At16BitsScalesBy32767WithARoundingTerm) {
    using M = RKp_ModeHardMix<Sixteen>;
    EXPECT_EQ(M::both(0, 32768), 32768);
    EXPECT_EQ(M::both(0, 32767), 0);
    int without_term = 0, by_mul = 0;
    for (int s = 0; s <= 32768; ++s) {
        const int i = 32768 - s, t = (i * 32767 + 16384) >> 15;
        if (t < 32768) {
            ASSERT_EQ(M::both(s, t + 1), 32768);
        }
        ASSERT_EQ(M::both(s, t), 0);
        without_term += t != (i * 32767) >> 15;
        by_mul += t != RKp_Depth<Sixteen>::mul(i, 32767);
    }
    EXPECT_GT(without_term, 10000);
    EXPECT_GT(by_mul, 0);
}

TEST(HardMix, AtFloatIsARamp) {
    using M = RKp_ModeHardMix<Float>;
    const float t = 0.5f * 0.99999f;
    EXPECT_EQ(M::both(0.5f, t), 0.0f);
    EXPECT_EQ(M::both(0.5f, 0.4f), 0.0f);
    EXPECT_EQ(M::both(0.5f, 0.6f), 1.0f);
    const float d = 0.499999f;
    EXPECT_EQ(M::both(0.5f, d), (d - t) / 1.001358e-5f);
    EXPECT_GT(M::both(0.5f, d), 0.0f);
    EXPECT_LT(M::both(0.5f, d), 1.0f);
}
