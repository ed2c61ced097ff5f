#include "RK/indep/filter/RK_BoxBlur.h"

#include <cmath>

#include "RK/indep/frame/RKp_Globals.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "test/filter/Blurs.h"

namespace {

using test::Blur;
using test::Canvas;
using test::kWhole;

template <class P>
class BoxBlurDepth : public test::Tidy {};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(BoxBlurDepth, Depths);
class BoxBlur : public test::Tidy {};

// One white pixel in the middle of a black line, blurred.
template <class P>
Canvas<P> spread(int width, const Blur& blur) {
    Canvas<P> src(width, 1), dst(width, 1);
    const auto w = kWhole<P>;
    src(width / 2, 0) = {w, w, w, w};
    EXPECT_EQ(0, blur(src, dst));
    return dst;
}

// ---- Radii ----------------------------------------------------------------------------------------------

TYPED_TEST(BoxBlurDepth, ARadiusOf0ReturnsItsInput) {
    for (const int passes : {1, 2, 5})
        for (const uint32_t flags : {15u, 31u, 1u, 6u, 0u})
            for (const bool columns : {false, true}) {
                Canvas<TypeParam> src(23, 21), dst(23, 21);
                src.random(uint32_t(passes));
                for (int y = 0; y < 21; ++y)
                    for (int x = 0; x < 23; ++x)
                        if (sizeof(TypeParam) == 16 && src(x, y).alpha < 1e-30f) src(x, y) = {};
                Blur blur;
                blur.radius = 0, blur.passes = passes, blur.flags = flags;
                EXPECT_EQ(0, blur.columns(columns)(src, dst));
                EXPECT_LE(apart(src, dst), sizeof(TypeParam) == 16 ? 1e-30 : 0);
            }
}

TEST_F(BoxBlur, ARadiusOf2HasFiveEqualTaps) {
    Blur blur;
    const auto dst = spread<RK_Pixel8>(11, blur);
    for (int x = 0; x < 11; ++x) EXPECT_EQ(dst(x, 0).red, x >= 3 && x <= 7 ? 51 : 0) << x;
}

TEST_F(BoxBlur, ARadiusOf1AndAHalfHasOutermostTapsOfHalfTheWeight) {
    Blur blur;
    blur.radius = 1.5f;
    const int want8[] = {0, 0, 32, 64, 64, 64, 32, 0, 0};  // 255 / 8 and 255 / 4, rounded
    const auto at8 = spread<RK_Pixel8>(9, blur);
    const auto at16 = spread<RK_Pixel16>(9, blur);
    const auto at32 = spread<RK_PixelFloat>(9, blur);
    for (int x = 0; x < 9; ++x) {
        EXPECT_EQ(at8(x, 0).green, want8[x]) << x;
        EXPECT_EQ(at16(x, 0).green, want8[x] * 128) << x;
        EXPECT_EQ(at32(x, 0).green, static_cast<float>(want8[x]) / 256) << x;
    }
}

TEST_F(BoxBlur, TheFractionIsCutToA1024thAtDepth8Only) {
    Blur blur;
    blur.radius = 1 - 1.99f / 1024;  // f is 1 of 1024ths there
    const auto at8 = spread<RK_Pixel8>(3, blur);
    const int64_t D = 3 * 1024 - 2;
    EXPECT_EQ(at8(1, 0).red, (255 * 1024 + D / 2) / D);
    EXPECT_EQ(at8(0, 0).red, (255 * 1023 + D / 2) / D);
    const auto at32 = spread<RK_PixelFloat>(3, blur);
    const float f = 1 - blur.radius, whole = 3 - 2 * f;
    EXPECT_EQ(at32(0, 0).red, static_cast<float>((1 - double{f}) / double{whole}));
}

// ---- Edges ----------------------------------------------------------------------------------------------

TYPED_TEST(BoxBlurDepth, AFlatPictureWithRenormalisedEdgesStaysFlat) {
    const auto w = kWhole<TypeParam>;
    for (const float radius : {0.5f, 1.0f, 2.25f, 8.5f, 50.0f, 300.75f})
        for (const int passes : {1, 3})
            for (const bool columns : {false, true}) {
                Canvas<TypeParam> src(61, 37), dst(61, 37);
                src.picture.fill({w, static_cast<decltype(w)>(w / 2), static_cast<decltype(w)>(w / 5), 0});
                Blur blur;
                blur.radius = radius, blur.passes = passes, blur.flags = 31;
                EXPECT_EQ(0, blur.columns(columns)(src, dst));
                EXPECT_LE(apart(src, dst), sizeof(TypeParam) == 16 ? 1e-6 : 0) << radius;
                EXPECT_TRUE(dst.picture.guardsWhole());
            }
}

TYPED_TEST(BoxBlurDepth, AFlatPictureWithFadingEdgesDarkensTowardsThem) {
    const auto w = kWhole<TypeParam>;
    Canvas<TypeParam> src(20, 1), dst(20, 1);
    src.picture.fill({w, w, w, w});
    Blur blur;
    blur.radius = 4;
    EXPECT_EQ(0, blur(src, dst));
    for (int x = 0; x < 20; ++x) {
        const int inside = std::min(x, 4) + 1 + std::min(19 - x, 4);
        EXPECT_NEAR(dst(x, 0).blue, double(w) * inside / 9, sizeof(TypeParam) == 16 ? 1e-6 : 0.51) << x;
    }
}

// ---- Channels -------------------------------------------------------------------------------------------

TYPED_TEST(BoxBlurDepth, AChannelThatIsNotNamedComesThroughEveryPassUnchanged) {
    for (uint32_t flags = 0; flags < 32; ++flags)
        for (const int passes : {1, 2, 3}) {
            Canvas<TypeParam> src(40, 3), all(40, 3), dst(40, 3);
            src.random(flags);
            Blur blur;
            blur.radius = 2.5f, blur.passes = passes, blur.flags = flags | 15;
            EXPECT_EQ(0, blur(src, all));
            blur.flags = flags;
            EXPECT_EQ(0, blur(src, dst));
            for (int y = 0; y < 3; ++y)
                for (int x = 0; x < 40; ++x) {
                    const TypeParam &a = all(x, y), &s = src(x, y);
                    const TypeParam want = {flags & 1 ? a.alpha : s.alpha, flags & 2 ? a.red : s.red,
                                            flags & 4 ? a.green : s.green, flags & 8 ? a.blue : s.blue};
                    ASSERT_TRUE(test::sameBytes(want, dst(x, y))) << flags << " at " << x << "," << y;
                }
        }
}

// ---- The retired blurs ----------------------------------------------------------------------------------

TEST_F(BoxBlur, TheFastBlursAreRetiredAndGive5WhateverTheyAreGiven) {
    EXPECT_EQ(5, RK_FastBlur_Premul());
    EXPECT_EQ(5, RK_FastBlur_Straight(1, 2.0, "three"));
    Canvas<RK_Pixel8> canvas(3, 3);
    canvas.random(1);
    const auto before = canvas.picture;
    RK_LayerDef record = canvas.picture.record();
    EXPECT_EQ(5, RKp_Slot<RKp_kSlot_FastBlur_Premul>()(&record, 3.0));
    EXPECT_EQ(5, RKp_Slot<RKp_kSlot_FastBlur_Straight>()(nullptr));
    EXPECT_TRUE(before == canvas.picture);
    EXPECT_EQ(RKp_G_OverFuncs[26], reinterpret_cast<void*>(RK_FastBlur_Straight));
    EXPECT_EQ(RKp_G_OverFuncs[27], reinterpret_cast<void*>(RK_FastBlur_Premul));
}

}  // namespace
