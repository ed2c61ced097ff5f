#include "RK/indep/composite/RKp_ModesSpecial.h"

#include "test/composite/ModeRows.h"

using namespace test;

namespace {

template <class P>
struct SpecialTest : ::testing::Test {};
TYPED_TEST_SUITE(SpecialTest, Depths);

}  // namespace

// ---- Over and its kin -----------------------------------------------------------------------------------

TYPED_TEST(SpecialTest, OverOnAClearDestinationIsExactlyTheSource) {
    using P = TypeParam;
    Random r(1);
    for (int i = 0; i < 500; ++i) {
        const P s = pixel<P>(r);
        P d = pixel<P>(r);
        d.alpha = 0;
        const P expected = s.alpha == 0 ? d : s;
        ASSERT_EQ(text(alone(RK_Xfer_Over, s, d)), text(expected));
        ASSERT_EQ(text(composite(RK_Xfer_Over, s, d)), text(expected));
    }
    EXPECT_EQ(text(alone(RK_Xfer_Over, RK_Pixel8{100, 7, 8, 9}, RK_Pixel8{0, 1, 2, 3})), "(100, 7, 8, 9)");
}

TYPED_TEST(SpecialTest, OverWithAClearMatteLeavesThePixel) {
    using P = TypeParam;
    const P s = {kFull<P>, 1, 1, 1}, d = {1, 0, 1, 0}, m = {0, 1, 1, 1};
    EXPECT_EQ(text(composite(blending<P>(RK_Xfer_Over), s, d, &m)), text(d));
}

TEST(Over, OntoAnOpaquePixelMixesWithoutADivision) {
    const RK_Pixel16 s = {10000, 32768, 0, 5}, d = {32768, 0, 32768, 6};
    EXPECT_EQ(text(rowPixel(blending<RK_Pixel16>(RK_Xfer_Over), s, d)), "(32768, 10000, 22768, 5)");
    const RK_PixelFloat sf = {0.3f, 0.9f, 0.1f, 2.0f}, df = {1.0f, 0.2f, 0.7f, 0.4f};
    const auto mix = [](float y, float x) { return y + (x - y) * 0.3f; };
    EXPECT_EQ(text(rowPixel(blending<RK_PixelFloat>(RK_Xfer_Over), sf, df)),
              text(RK_PixelFloat{1.0f, mix(0.2f, 0.9f), mix(0.7f, 0.1f), mix(0.4f, 2.0f)}));
}

TYPED_TEST(SpecialTest, BehindAnOpaquePixelChangesNothing) {
    using P = TypeParam;
    Random r(2);
    for (int i = 0; i < 200; ++i) {
        const P s = pixel<P>(r);
        P d = pixel<P>(r);
        d.alpha = kFull<P>;
        ASSERT_EQ(text(alone(RK_Xfer_Behind, s, d)), text(d));
    }
}

TEST(Behind, PremultipliesTheSourceAndMixesTheDestinationIn) {
    using D = RKp_Depth<RK_Pixel8>;
    const int sa = 77, da = 130, s = 201, d = 54, a = D::unite(sa, da);
    const int p = D::mul(s, sa), v = D::lerp(p, d, da);
    const RK_Pixel8 out = alone(RK_Xfer_Behind, RK_Pixel8{sa, s, s, s}, RK_Pixel8{da, d, d, d});
    EXPECT_EQ(int(out.red), D::div(a, v));
    EXPECT_EQ(int(out.alpha), a);
}

TEST(Behind, AsAModeWritesAlphaWhateverRgbOnlySays) {
    const auto mode = blending<RK_Pixel8>(RK_Xfer_Behind, 255, true);
    EXPECT_EQ(text(composite(mode, RK_Pixel8{255, 9, 8, 7}, RK_Pixel8{0, 1, 2, 3})), "(255, 9, 8, 7)");
}

TEST(PremulOver, NeverTestsTheSourceAlpha) {
    EXPECT_EQ(text(alone(RK_Xfer_PremulOver, RK_Pixel8{0, 0, 0, 0}, RK_Pixel8{0, 10, 20, 30})),
              "(0, 255, 255, 255)");
    EXPECT_EQ(text(composite(RK_Xfer_PremulOver, RK_Pixel8{0, 0, 0, 0}, RK_Pixel8{0, 10, 20, 30})),
              "(0, 255, 255, 255)");
    EXPECT_EQ(text(alone(RK_Xfer_PremulOver, RK_Pixel16{0, 0, 0, 0}, RK_Pixel16{0, 1, 2, 3})),
              "(0, 32768, 32768, 32768)");
    EXPECT_EQ(text(alone(RK_Xfer_PremulOver, RK_PixelFloat{0, 0, 0, 0}, RK_PixelFloat{0, 1, 2, 3})),
              "(0, 1, 1, 1)");
}

TEST(PremulOver, ScalesTheAlphaAndNeverTheColour) {
    const auto mode = blending<RK_Pixel8>(RK_Xfer_PremulOver, 0);
    // Alpha 0: all of the destination stays, and the colour is added whole, up to 255.
    EXPECT_EQ(text(composite(mode, RK_Pixel8{255, 200, 10, 0}, RK_Pixel8{255, 100, 20, 30})),
              "(255, 255, 30, 30)");
    EXPECT_EQ(
        text(alone(RK_Xfer_PremulOver, RK_PixelFloat{0.0f, 0.75f, 0, 0}, RK_PixelFloat{1.0f, 0.75f, 0, 0})),
        "(1, 1.5, 0, 0)");
}

TEST(AlphaAdd, SumsTheAlphas) {
    EXPECT_EQ(alone(RK_Xfer_AlphaAdd, RK_Pixel8{100, 1, 2, 3}, RK_Pixel8{100, 1, 2, 3}).alpha, 200);
    EXPECT_EQ(RKp_Depth<RK_Pixel8>::unite(100, 100), 161);
    EXPECT_EQ(alone(RK_Xfer_AlphaAdd, RK_Pixel8{155, 1, 2, 3}, RK_Pixel8{100, 1, 2, 3}).alpha, 255);
    EXPECT_EQ(alone(RK_Xfer_AlphaAdd, RK_Pixel8{154, 1, 2, 3}, RK_Pixel8{100, 1, 2, 3}).alpha, 254);
    EXPECT_EQ(text(alone(RK_Xfer_AlphaAdd, RK_PixelFloat{0.5f, 1.0f, 0.0f, 0.5f},
                         RK_PixelFloat{0.75f, 0.0f, 1.0f, 0.5f})),
              "(1, 0.5, 0.5, 0.5)");
    EXPECT_EQ(text(alone(RK_Xfer_AlphaAdd, RK_PixelFloat{0.25f, 1.0f, 0.0f, 0.5f},
                         RK_PixelFloat{0.25f, 0.0f, 1.0f, 0.5f})),
              "(0.5, 0.5, 0.5, 0.5)");
    EXPECT_EQ(text(alone(RK_Xfer_AlphaAdd, RK_Pixel16{32768, 1, 2, 3}, RK_Pixel16{20, 4, 5, 6})),
              "(32768, 1, 2, 3)");
}

// ---- Replace and Copy -----------------------------------------------------------------------------------

TYPED_TEST(SpecialTest, ReplaceAndCopyRowsTakeTheSourceAndScaleItsAlpha) {
    using P = TypeParam;
    using D = RKp_Depth<P>;
    Random r(3);
    for (int32_t xfer : {RK_Xfer_Replace, RK_Xfer_Copy})
        for (int i = 0; i < 300; ++i) {
            const P s = pixel<P>(r), d = pixel<P>(r), m = pixel<P>(r);
            const RK_Channel<P> opacity = i % 3 ? pixel<P>(r).alpha : kFull<P>;
            P expected = s;
            expected.alpha = RK_Channel<P>(D::mul(s.alpha, opacity));
            ASSERT_EQ(text(composite(blending<P>(xfer, opacity), s, d)), text(expected));
            expected.alpha = RK_Channel<P>(D::mul(m.alpha, expected.alpha));
            ASSERT_EQ(text(composite(blending<P>(xfer, opacity), s, d, &m)), text(expected));
            P colour = s;
            colour.alpha = d.alpha;
            ASSERT_EQ(text(composite(blending<P>(xfer, opacity, true), s, d)), text(colour));
            ASSERT_EQ(text(composite(blending<P>(xfer, opacity, true), s, d, &m)), text(colour));
        }
}

TYPED_TEST(SpecialTest, AWholeRowIsCopiedAndNothingBehindIt) {
    using P = TypeParam;
    Picture<P> s(67, 1), d(67, 1);
    s.fillRandom(4);
    auto mode = blending<P>(RK_Xfer_Replace);
    const RK_BlendModeDescriptor<P> plan(mode, false, nullptr);
    for (int count : {1, 7, 8, 9, 67}) {
        d.fillRandom(5);
        Picture<P> expected = d;
        for (int x = 0; x < count; ++x) expected.at(x, 0) = s.at(x, 0);
        for (int32_t xfer : {RK_Xfer_Replace, RK_Xfer_Copy}) {
            Picture<P> out = d;
            EXPECT_EQ(rowOf<P>(xfer)(count, &plan, nullptr, s.row(0), nullptr, out.row(0)), 0);
            EXPECT_TRUE(out == expected);
        }
    }
}

// ---- MatteMix -------------------------------------------------------------------------------------------

TYPED_TEST(SpecialTest, MatteMixWithoutAMatteGives3AndNoReport) {
    using P = TypeParam;
    auto mode = blending<P>(RK_Xfer_MatteMix);
    const RK_BlendModeDescriptor<P> plan(mode, false, nullptr);
    const P s = {1, 1, 1, 1};
    P d = {1, 0, 1, 0};
    for (bool matte : {false, true})
        EXPECT_EQ(rowOf<P>(RK_Xfer_MatteMix, matte)(1, &plan, nullptr, &s, nullptr, &d), 3);
    EXPECT_EQ(text(d), text(P{1, 0, 1, 0}));
    EXPECT_TRUE(RefHost::TakeReports().empty());
}

TYPED_TEST(SpecialTest, MatteMixUnderAFullMatteIsTheSourceAndUnderNoneTheDestination) {
    using P = TypeParam;
    const P s = {0, 1, 0, 1}, d = {1, 0, 1, 1}, full = {kFull<P>, 0, 0, 0}, none = {0, 1, 1, 1};
    for (const bool rgb_only : {false, true})
        for (const RK_Channel<P> opacity : {RK_Channel<P>(0), kFull<P>}) {
            const auto mode = blending<P>(RK_Xfer_MatteMix, opacity, rgb_only);
            EXPECT_EQ(text(composite(mode, s, d, &full)), text(s));
            EXPECT_EQ(text(composite(mode, s, d, &none)), text(d));
        }
    // Neither has alpha: nothing to weigh by.
    const P clear = {0, 0, 1, 0}, some = {RK_Channel<P>(RKp_Depth<P>::kGrey), 1, 1, 1};
    EXPECT_EQ(text(composite(blending<P>(RK_Xfer_MatteMix), P{0, 1, 0, 1}, clear, &some)), text(clear));
}

TEST(MatteMix, WeighsByAlphaTimesMatte) {
    const RK_Pixel8 s = {200, 100, 0, 255}, d = {50, 0, 100, 255}, m = {100, 0, 0, 0};
    const int a1 = 200 * 100, a2 = 155 * 50, S = a1 + a2;
    EXPECT_EQ(text(composite(blending<RK_Pixel8>(RK_Xfer_MatteMix), s, d, &m)),
              text(RK_Pixel8{uint8_t((S + 128) / 255), uint8_t((100 * a1 + (S >> 1)) / S),
                             uint8_t((100 * a2 + (S >> 1)) / S), 255}));
    const RK_Pixel16 s16 = {32768, 32768, 0, 20000}, d16 = {32768, 0, 32768, 20000}, m16 = {32767, 0, 0, 0};
    // Products beyond 32 bits.
    EXPECT_EQ(text(composite(blending<RK_Pixel16>(RK_Xfer_MatteMix), s16, d16, &m16)),
              "(32768, 32767, 1, 20000)");
    const RK_PixelFloat sf = {0.5f, 1.0f, 0.0f, 2.0f}, df = {0.25f, 0.0f, 1.0f, 2.0f}, mf = {0.25f, 0, 0, 0};
    const float f1 = 0.5f * 0.25f, f2 = 0.75f * 0.25f;
    EXPECT_EQ(
        text(composite(blending<RK_PixelFloat>(RK_Xfer_MatteMix), sf, df, &mf)),
        text(RK_PixelFloat{f1 + f2, f1 / (f1 + f2), f2 / (f1 + f2), (2.0f * f1 + 2.0f * f2) / (f1 + f2)}));
}

// ---- Dissolve -------------------------------------------------------------------------------------------

TYPED_TEST(SpecialTest, DissolveAloneDoesNothing) {
    using P = TypeParam;
    Random r(6);
    for (int i = 0; i < 100; ++i) {
        const P s = pixel<P>(r), d = pixel<P>(r);
        ASSERT_EQ(text(alone(RK_Xfer_Dissolve, s, d)), text(d));
    }
}

// The row against the generator itself: full and clear draw nothing, and every pixel moves the seed on by
// one.
TYPED_TEST(SpecialTest, DissolveDrawsOnlyForPartialAlphas) {
    using P = TypeParam;
    Random r(7);
    for (const bool rgb_only : {false, true})
        for (int round = 0; round < 20; ++round) {
            std::vector<P> s(100), d(100), expected;
            for (P& p : s) p = pixel<P>(r);
            for (P& p : d) p = pixel<P>(r);
            expected = d;
            const int32_t start = round == 0 ? 0 : round == 1 ? -1 : int32_t(r.next());
            uint32_t seed = uint32_t(start);
            for (size_t i = 0; i < s.size(); ++i) {
                bool wins = s[i].alpha == kFull<P>;
                if (!wins && s[i].alpha != 0) {
                    const RK_Long n = RK_Rand(&seed);
                    if (sizeof(P) == 4)
                        wins = s[i].alpha >= (n & 255);
                    else if (sizeof(P) == 8)
                        wins = s[i].alpha >= n;
                    else
                        wins = double(s[i].alpha) >= double(n) * 3.0518509447574615e-5;
                }
                if (wins) {
                    const auto alpha = rgb_only ? d[i].alpha : kFull<P>;
                    expected[i] = s[i];
                    expected[i].alpha = alpha;
                }
                ++seed;
            }
            auto mode = blending<P>(RK_Xfer_Dissolve, kFull<P>, rgb_only, start);
            ASSERT_EQ(compositeRow<P>(mode, s, nullptr, d), 0);
            for (size_t i = 0; i < s.size(); ++i) ASSERT_EQ(text(d[i]), text(expected[i])) << i;
        }
}

TEST(Dissolve, At8BitsAnAlphaOf1WinsOn0And1Alone) {
    int won = 0, low = 0;
    for (int32_t start = 1; start < 20000; ++start) {
        uint32_t seed = uint32_t(start);
        const int r = int(RK_Rand(&seed)) & 255;
        const RK_Pixel8 out = composite(blending<RK_Pixel8>(RK_Xfer_Dissolve, 255, false, start),
                                        RK_Pixel8{1, 9, 9, 9}, RK_Pixel8{0, 0, 0, 0});
        ASSERT_EQ(out.red == 9, r <= 1) << start;
        won += out.red == 9;
        low += r == 1;
    }
    EXPECT_GT(won, 0);
    EXPECT_GT(low, 0);
}

TEST(Dissolve, At16BitsOneBelowFullAlwaysWins) {
    for (int32_t start = 1; start < 20000; ++start)
        ASSERT_EQ(composite(blending<RK_Pixel16>(RK_Xfer_Dissolve, 32768, false, start),
                            RK_Pixel16{32767, 9, 9, 9}, RK_Pixel16{0, 0, 0, 0})
                      .red,
                  9);
}

// ---- Stencils and silhouettes ---------------------------------------------------------------------------

TYPED_TEST(SpecialTest, OnlyStencilAlphaClearsUnderAClearSourceAndOnlyOnARow) {
    using P = TypeParam;
    const P s = {0, 1, 1, 1}, d = {1, 1, 0, 1};
    EXPECT_EQ(text(composite(RK_Xfer_StencilAlpha, s, d)), text(P{0, 1, 0, 1}));
    EXPECT_EQ(text(alone(RK_Xfer_StencilAlpha, s, d)), text(d));
    for (int32_t mode : {RK_Xfer_StencilLuma, RK_Xfer_SilhouetteAlpha, RK_Xfer_SilhouetteLuma}) {
        EXPECT_EQ(text(composite(mode, s, d)), text(d)) << mode;
        EXPECT_EQ(text(alone(mode, s, d)), text(d)) << mode;
    }
}

TEST(Stencils, MultiplyAlphasAndLeaveColours) {
    using D = RKp_Depth<RK_Pixel8>;
    const RK_Pixel8 s = {200, 100, 150, 50}, d = {180, 1, 2, 3};
    const int luma = D::luma(100, 150, 50), t = D::mul(200, luma);
    const auto out = [&](int a) { return text(RK_Pixel8{uint8_t(a), 1, 2, 3}); };
    for (const bool row : {false, true}) {
        const auto on = [&](int32_t m) { return text(row ? composite(m, s, d) : alone(m, s, d)); };
        EXPECT_EQ(on(RK_Xfer_StencilAlpha), out(D::mul(200, 180)));
        EXPECT_EQ(on(RK_Xfer_StencilLuma), out(D::mul(t, 180)));
        EXPECT_EQ(on(RK_Xfer_SilhouetteAlpha), out(D::mul(55, 180)));
        EXPECT_EQ(on(RK_Xfer_SilhouetteLuma), out(D::mul(255 - t, 180)));
    }
}

TEST(Stencils, IgnoreRgbOnly) {
    const RK_Pixel8 s = {128, 255, 255, 255}, d = {255, 1, 2, 3};
    for (int32_t mode :
         {RK_Xfer_StencilAlpha, RK_Xfer_StencilLuma, RK_Xfer_SilhouetteAlpha, RK_Xfer_SilhouetteLuma})
        EXPECT_NE(composite(blending<RK_Pixel8>(mode, 255, true), s, d).alpha, 255) << mode;
}

TEST(Stencils, OfLumaGuardTheirAlphaAtFloat) {
    const auto stencil = [](float sa, float luma, float da) {
        const RK_PixelFloat s = {sa, luma, luma, luma}, d = {da, 1, 2, 3};
        const RK_PixelFloat out = alone(RK_Xfer_StencilLuma, s, d);
        EXPECT_EQ(text(composite(RK_Xfer_StencilLuma, s, d)), text(out));
        return out.alpha;
    };
    EXPECT_EQ(stencil(1.0f, 2.0f, 1.0f), 1.0f);
    EXPECT_EQ(stencil(1.0f, -0.5f, 1.0f), 0.0f);
    EXPECT_EQ(stencil(1.0f, 1e-31f, 1.0f), 0.0f);
    EXPECT_GT(stencil(1.0f, 1e-29f, 1.0f), 0.0f);
    EXPECT_EQ(stencil(1.0f, std::numeric_limits<float>::quiet_NaN(), 1.0f), 0.0f);
    const auto silhouette = [](float luma) {
        return alone(RK_Xfer_SilhouetteLuma, RK_PixelFloat{1.0f, luma, luma, luma}, RK_PixelFloat{1, 1, 2, 3})
            .alpha;
    };
    EXPECT_EQ(silhouette(2.0f), 0.0f);
    EXPECT_EQ(silhouette(-2.0f), 1.0f);
    // The alpha forms have no guard.
    EXPECT_EQ(alone(RK_Xfer_StencilAlpha, RK_PixelFloat{2.0f, 0, 0, 0}, RK_PixelFloat{1, 0, 0, 0}).alpha,
              2.0f);
    EXPECT_EQ(rowPixel(blending<RK_PixelFloat>(RK_Xfer_StencilAlpha), RK_PixelFloat{2.0f, 0, 0, 0},
                       RK_PixelFloat{1, 0, 0, 0})
                  .alpha,
              1.0f);
}

TYPED_TEST(SpecialTest, ScalesByOpacityAndThenByTheMatte) {
    using P = TypeParam;
    using D = RKp_Depth<P>;
    Random r(8);
    int order_counts = 0;
    for (int i = 0; i < 2000; ++i) {
        const P s = pixel<P>(r), m = pixel<P>(r);
        const P d = {kFull<P>, 0, 0, 0};
        const RK_Channel<P> opacity = pixel<P>(r).alpha;
        const auto t = D::mul(m.alpha, D::mul(s.alpha, opacity));
        ASSERT_EQ(composite(blending<P>(RK_Xfer_StencilAlpha, opacity), s, d, &m).alpha, RK_Channel<P>(t));
        order_counts += t != D::mul(opacity, D::mul(s.alpha, m.alpha));
    }
    if (sizeof(P) < 16) {
        EXPECT_GT(order_counts, 0);
    }
}
