#include "RK/indep/composite/RKp_ModesSeparable.h"

#include <climits>

#include "test/composite/ModeRows.h"

using namespace test;

// ---- The arithmetic under the modes ---------------------------------------------------------------------

TEST(Multiply8, IsTheRoundedProductOver255) {
    using D = RKp_Depth<RK_Pixel8>;
    for (int a = 0; a < 256; ++a) {
        EXPECT_EQ(D::mul(255, a), a);
        for (int x = 0; x < 256; ++x) ASSERT_EQ(D::mul(a, x), (2 * a * x + 255) / 510) << a << " " << x;
    }
    EXPECT_EQ(D::mul(128, 255), 128);
}

TEST(Multiply15, Rounds16383AndNot16384) {
    using D = RKp_Depth<RK_Pixel16>;
    for (int x = 0; x <= 32768; ++x) ASSERT_EQ(D::mul(32768, x), x);
    int differs_above = 0, differs_below = 0;
    for (int a = 0; a <= 32768; a += 64)
        for (int x = 0; x <= 32768; x += 64) {
            const int64_t product = int64_t{a} * x;
            ASSERT_EQ(D::mul(a, x), (product + 16383) >> 15);
            differs_above += D::mul(a, x) != (product + 16384) >> 15;
            differs_below += D::mul(a, x) != product >> 15;
        }
    EXPECT_GT(differs_above, 0);
    EXPECT_GT(differs_below, 0);
    EXPECT_EQ(D::mul(16384, 1), 0);  // a half goes down
    EXPECT_EQ(D::mul(16384, 3), 1);
    EXPECT_EQ(D::mul(16385, 1), 1);
}

TEST(Divide, NeverDividesByZero) {
    EXPECT_EQ(RKp_Depth<RK_Pixel16>::div(0, 0), 32768);
    EXPECT_EQ(RKp_Depth<RK_Pixel16>::div(5, 5), 32768);
    EXPECT_EQ(RKp_Depth<RK_Pixel16>::div(32768, 100), 100);
    EXPECT_EQ(RKp_Depth<RK_Pixel8>::div(0, 0), 255);
    EXPECT_EQ(RKp_Depth<RK_PixelFloat>::div(0.0f, 0.5f), 1.0f);
    EXPECT_EQ(RKp_Depth<RK_PixelFloat>::div(1e-39f, 0.5f), 1.0f);
    EXPECT_EQ(RKp_Depth<RK_PixelFloat>::div(-1e-39f, 0.5f), 1.0f);
}

TEST(Divide, RoundsByHalfTheDivisor) {
    using D16 = RKp_Depth<RK_Pixel16>;
    EXPECT_EQ(D16::div(3, 1), 10923);  // 32769 / 3
    EXPECT_EQ(D16::div(3, 2), 21845);  // 65537 / 3, where rounding up gives 21846
    using D8 = RKp_Depth<RK_Pixel8>;
    for (int a = 1; a < 256; ++a)
        for (int x = 0; x < 256; ++x) ASSERT_EQ(D8::div(a, x), std::min(255, (x * 255 + (a >> 1)) / a));
}

TEST(Mix16, FloorsSoThatUpAndDownAreNotMirrored) {
    using D = RKp_Depth<RK_Pixel16>;
    EXPECT_EQ(D::lerp(100, 101, 16384), 100);
    EXPECT_EQ(D::lerp(101, 100, 16384), 100);
    EXPECT_EQ(D::lerp(0, 32768, 32767), 32767);
    EXPECT_EQ(D::lerp(32768, 0, 1), 32767);
}

// The wrapped product is a mix all the same: the low byte is that of the rounded signed product.
TEST(Mix8, IsRightThroughTheWrappedProduct) {
    using D = RKp_Depth<RK_Pixel8>;
    for (int y = 0; y < 256; y += 5)
        for (int x = 0; x < 256; x += 3)
            for (int a = 0; a < 256; a += 7) {
                const uint32_t t = uint32_t(x - y) * uint32_t(a) + 128u;
                ASSERT_EQ(D::lerp(y, x, a), uint8_t(uint32_t(y) + ((t + (t >> 8)) >> 8)));
                ASSERT_LE(std::abs(D::lerp(y, x, a) - (y + (x - y) * a / 255.0)), 1.0)
                    << y << " " << x << " " << a;
            }
}

// ---- Edge cases -----------------------------------------------------------------------------------------

TEST(Add, Saturates) {
    const RK_Pixel8 s = {255, 200, 255, 0}, d = {255, 100, 255, 0};
    EXPECT_EQ(text(alone(RK_Xfer_Add, s, d)), "(255, 255, 255, 0)");
    const RK_Pixel16 s16 = {32768, 30000, 32768, 0}, d16 = {32768, 30000, 1, 2};
    EXPECT_EQ(text(alone(RK_Xfer_Add, s16, d16)), "(32768, 32768, 32768, 2)");
}

TEST(Add, AtFloatPassesOverTheRange) {
    const RK_PixelFloat s = {1.0f, 0.75f, 2.0f, -1.0f}, d = {1.0f, 0.75f, 0.5f, 0.0f};
    EXPECT_EQ(text(alone(RK_Xfer_Add, s, d)), "(1, 1.5, 2.5, -1)");
    // Mixed: (s * sa + d * da) / a, here a = 0.75.
    const RK_PixelFloat h = {0.5f, 1.0f, 0.0f, 0.5f}, e = {0.5f, 1.0f, 0.75f, 0.0f};
    EXPECT_EQ(text(alone(RK_Xfer_Add, h, e)),
              text(RK_PixelFloat{0.75f, 1.0f / 0.75f, 0.375f / 0.75f, 0.25f / 0.75f}));
}

TEST(Multiply, OfAClearDestinationIsTheSource) {
    const RK_Pixel8 s = {255, 10, 128, 255}, d = {0, 99, 1, 255};
    EXPECT_EQ(text(composite(RK_Xfer_Multiply, s, d)), text(s));
    EXPECT_EQ(text(alone(RK_Xfer_Multiply, s, d)), text(s));
    const RK_Pixel16 s16 = {32768, 10, 16384, 32768}, d16 = {0, 99, 1, 32768};
    EXPECT_EQ(text(composite(RK_Xfer_Multiply, s16, d16)), text(s16));
}

TEST(Multiply, AtFloatIsBlackOnAClearResult) {
    const RK_PixelFloat s = {1e-39f, 0.5f, 0.5f, 0.5f}, d = {0.0f, 1.0f, 0.5f, 0.0f};
    EXPECT_EQ(text(alone(RK_Xfer_Multiply, s, d)), "(0, 0, 0, 0)");
}

TEST(Screen, OfAClearDestinationIsTheSource) {
    const RK_Pixel8 s = {255, 10, 128, 255}, d = {0, 99, 1, 255};
    EXPECT_EQ(text(composite(RK_Xfer_Screen, s, d)), text(s));
    const RK_PixelFloat sf = {1.0f, 0.25f, 0.5f, 1.0f}, df = {0.0f, 0.5f, 0.5f, 0.5f};
    EXPECT_EQ(text(composite(RK_Xfer_Screen, sf, df)), text(sf));
}

// ---- Formulas, opaque and mixed, on an opaque destination -----------------------------------------------

TEST(Formulas8, Opaque) {
    const RK_Pixel8 s = {255, 255, 100, 30}, d = {255, 200, 180, 60};
    const auto on = [&](int32_t mode) { return text(alone(mode, s, d)); };
    EXPECT_EQ(on(RK_Xfer_Multiply), "(255, 200, 71, 7)");
    EXPECT_EQ(on(RK_Xfer_Screen), "(255, 255, 209, 83)");
    EXPECT_EQ(on(RK_Xfer_Overlay), "(255, 255, 164, 14)");
    EXPECT_EQ(on(RK_Xfer_HardLight), "(255, 255, 141, 14)");
    EXPECT_EQ(on(RK_Xfer_SoftLight), "(255, 226, 169, 25)");
    EXPECT_EQ(on(RK_Xfer_Darken), "(255, 200, 100, 30)");
    EXPECT_EQ(on(RK_Xfer_Lighten), "(255, 255, 180, 60)");
    EXPECT_EQ(on(RK_Xfer_ClassicDifference), "(255, 55, 80, 30)");
    EXPECT_EQ(on(RK_Xfer_ClassicDodge), "(255, 255, 255, 68)");
    EXPECT_EQ(on(RK_Xfer_ClassicBurn), "(255, 200, 64, 0)");
    EXPECT_EQ(on(RK_Xfer_Exclusion), "(255, 55, 138, 76)");
}

// The upper half of a full source is 254 at 8 bits, and 32768 at 16.
TEST(HardLight, At8BitsOfAFullSourceStopsAStepShort) {
    EXPECT_EQ(RKp_BlendDepth<RK_Pixel8>::upperHalf(255), 254);
    EXPECT_EQ(RKp_BlendDepth<RK_Pixel16>::upperHalf(32768), 32768);
    EXPECT_EQ(RKp_BlendDepth<RK_PixelFloat>::upperHalf(1.0f), 1.0f);
    const RK_Pixel8 white = {255, 255, 255, 255}, dark = {255, 0, 10, 20};
    EXPECT_EQ(text(alone(RK_Xfer_HardLight, white, dark)), "(255, 254, 254, 254)");
    const RK_Pixel16 white16 = {32768, 32768, 32768, 32768}, dark16 = {32768, 0, 10, 20};
    EXPECT_EQ(text(alone(RK_Xfer_HardLight, white16, dark16)), text(white16));
}

TEST(Overlay, OfTheDarkBranchIsEvenAt8Bits) {
    for (int s = 0; s < 256; ++s)
        for (int d = 0; d < 128; ++d) ASSERT_EQ(RKp_ModeOverlay<RK_Pixel8>::opaque(s, d) & 1, 0);
}

TEST(SoftLight, MultipliesTheTermByTheAlphaBeforeItIsAdded) {
    using M = RKp_ModeSoftLight<RK_Pixel8>;
    using D = RKp_Depth<RK_Pixel8>;
    EXPECT_EQ(M::opaque(200, 64), 64 + D::mul(144, RKp_G_SoftLight8.a[64]));
    EXPECT_EQ(M::mixed(200, 64, 77), 64 + D::mul(D::mul(144, RKp_G_SoftLight8.a[64]), 77));
    EXPECT_EQ(M::mixed(20, 64, 77), 64 - D::mul(D::mul(215, RKp_G_SoftLight8.b[64]), 77));
    // Another order of the products would give other values.
    int differs = 0;
    for (int s = 128; s < 256; ++s)
        for (int sa = 1; sa < 255; ++sa)
            differs += M::mixed(s, 64, sa) != 64 + D::mul(144, D::mul(sa, RKp_G_SoftLight8.a[64]));
    EXPECT_GT(differs, 1000);
}

TEST(ClassicDodge, AtFloatGuardsOnlyAgainstZeroAndDenormals) {
    using M = RKp_ModeClassicDodge<RK_PixelFloat>;
    EXPECT_EQ(M::opaque(1.0f, 0.25f), 1.0f);
    EXPECT_EQ(M::opaque(0.5f, 0.75f), 1.5f);  // not clamped
    EXPECT_EQ(M::opaque(1.5f, 0.5f), -1.0f);
    using B = RKp_ModeClassicBurn<RK_PixelFloat>;
    EXPECT_EQ(B::opaque(0.0f, 0.25f), 0.0f);
    EXPECT_EQ(B::opaque(0.5f, 0.25f), -0.5f);  // below 0
}

TEST(Exclusion, KeepsItsOrderOfStepsAtFloat) {
    using M = RKp_ModeExclusion<RK_PixelFloat>;
    const float s = 0.1f, d = 0.7f;
    const float sum = s + d, product = s * d;
    EXPECT_EQ(M::opaque(s, d), sum - 2.0f * product);
}

// ---- Backgrounds ----------------------------------------------------------------------------------------

TEST(Backgrounds, GoBackToFullAtGreyWhenTheQuotientReachesIt) {
    using G = RKp_Grey<RK_Pixel8>;
    EXPECT_EQ(G::off(128, 10), 128);
    EXPECT_EQ(G::off(200, 10), 255);
    EXPECT_EQ(G::off(127, 255), 127);
    EXPECT_EQ(G::off(100, 10), 0);
    EXPECT_EQ(G::off(138, 20), 128 + 127);  // t of 128 is full already; 127 is the last below
    using F = RKp_Grey<RK_PixelFloat>;
    EXPECT_EQ(F::off(0.75f, 0.0f), 1.0f);
    EXPECT_EQ(F::off(0.25f, 0.0f), 0.0f);
    EXPECT_EQ(F::off(0.75f, 0.5f), 1.0f);
    EXPECT_EQ(F::off(0.625f, 0.5f), 0.75f);
}

// The neutral of each background is what an all-clear destination counts as.
TEST(Backgrounds, BringAClearColourToTheirNeutral) {
    for (int d = 0; d < 256; ++d) {
        ASSERT_EQ(RKp_Black<RK_Pixel8>::onto(d, 0), 0);
        ASSERT_EQ(RKp_White<RK_Pixel8>::onto(d, 0), 255);
        ASSERT_EQ(RKp_Grey<RK_Pixel8>::onto(d, 0), 128);
        ASSERT_EQ(RKp_Grey<RK_Pixel8>::onto(d, 255), d);
    }
    EXPECT_EQ(RKp_Grey<RK_Pixel16>::onto(3, 0), 16384);
    EXPECT_EQ(RKp_White<RK_Pixel16>::onto(3, 0), 32768);
}
