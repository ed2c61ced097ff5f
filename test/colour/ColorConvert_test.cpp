#include "RK/indep/colour/RK_ColorConvert.h"

#include <array>
#include <limits>

#include "RK/indep/frame/RKp_Globals.h"
#include "test/Pixels.h"
#include "test/Reports.h"

namespace {

using Triple = std::array<int32_t, 3>;

template <class P>
Triple triple(RK_Long (*f)(RK_EffectRef, const P*, int32_t*), const P& p) {
    Triple out = {-7, -7, -7};
    EXPECT_EQ(0, f(nullptr, &p, out.data()));
    return out;
}
template <class P>
P pixel(RK_Long (*f)(RK_EffectRef, const int32_t*, P*), const Triple& in, P out = P{7, 7, 7, 7}) {
    EXPECT_EQ(0, f(nullptr, in.data(), &out));
    return out;
}
template <class P, class T>
T measure(RK_Long (*f)(RK_EffectRef, const P*, T*), const P& p) {
    T out = 77;
    EXPECT_EQ(0, f(nullptr, &p, &out));
    return out;
}

constexpr int32_t kOne = 65536;

class ColorConvert : public test::Tidy {};

// ---- HLS ------------------------------------------------------------------------------------------------

TEST_F(ColorConvert, WhiteBlackAndGreyHaveNeitherHueNorSaturation) {
    EXPECT_EQ((Triple{0, kOne, 0}), triple<RK_Pixel8>(RK_RGBtoHLS_Straight, {9, 255, 255, 255}));
    EXPECT_EQ((Triple{0, 0, 0}), triple<RK_Pixel8>(RK_RGBtoHLS_Straight, {9, 0, 0, 0}));
    EXPECT_EQ((Triple{0, kOne, 0}), triple<RK_Pixel16>(RK_RGBtoHLS_Straight16, {9, 32768, 32768, 32768}));
    EXPECT_EQ((Triple{0, kOne / 4, 0}), triple<RK_Pixel16>(RK_RGBtoHLS_Straight16, {9, 8192, 8192, 8192}));
    EXPECT_EQ((Triple{0, 2 * kOne, 0}), triple<RK_PixelFloat>(RK_RGBtoHLS_StraightFloat, {9, 2, 2, 2}));
}

TEST_F(ColorConvert, TheSixPureColours) {
    static const struct {
        uint8_t r, g, b;
        int32_t degrees;
    } colours[] = {{255, 0, 0, 0},     {255, 255, 0, 60}, {0, 255, 0, 120},
                   {0, 255, 255, 180}, {0, 0, 255, 240},  {255, 0, 255, 300}};
    for (const auto& c : colours) {
        const RK_Pixel8 p = {200, c.r, c.g, c.b};
        EXPECT_EQ((Triple{c.degrees * kOne, kOne / 2, kOne}), triple<RK_Pixel8>(RK_RGBtoHLS_Straight, p));
        const RK_Pixel8 back =
            pixel<RK_Pixel8>(RK_HLStoRGB_Straight, {c.degrees * kOne, kOne / 2, kOne}, {200, 1, 2, 3});
        EXPECT_TRUE(test::sameBytes(p, back));
    }
    // Red is at 0 and at 360.
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{7, 255, 0, 0},
                                pixel<RK_Pixel8>(RK_HLStoRGB_Straight, {360 * kOne, kOne / 2, kOne})));
}

TEST_F(ColorConvert, AHueBelowRedComesRound) {
    const Triple hls = triple<RK_PixelFloat>(RK_RGBtoHLS_StraightFloat, {1, 1.0f, 0.0f, 0.25f});
    EXPECT_EQ(345 * kOne, hls[0]);
}

TEST_F(ColorConvert, TiesGoToRedBeforeGreenBeforeBlue) {
    // Beyond white a tie of red and green is not decided by the value: 60 either way; of green and blue 180.
    EXPECT_EQ(60 * kOne, triple<RK_PixelFloat>(RK_RGBtoHLS_StraightFloat, {1, 0.75f, 0.75f, 0.25f})[0]);
    EXPECT_EQ(180 * kOne, triple<RK_PixelFloat>(RK_RGBtoHLS_StraightFloat, {1, 0.25f, 0.75f, 0.75f})[0]);
    // Red and blue: by red's rule -60, which comes round; by blue's 300.
    EXPECT_EQ(300 * kOne, triple<RK_PixelFloat>(RK_RGBtoHLS_StraightFloat, {1, 0.75f, 0.25f, 0.75f})[0]);
}

TEST_F(ColorConvert, TheLightnessThatParts) {
    // L 0.5 takes (S + 1) * L, one step above it S + L - L * S.
    const auto below = pixel<RK_PixelFloat>(RK_HLStoRGB_StraightFloat, {0, 32768, kOne / 4});
    EXPECT_EQ((0.25f + 1.0f) * 0.5f, below.red);
    const auto above = pixel<RK_PixelFloat>(RK_HLStoRGB_StraightFloat, {0, 32769, kOne / 4});
    const float L = 32769 / 65536.0f;
    EXPECT_EQ(0.25f + L - L * 0.25f, above.red);
    EXPECT_NE((0.25f + 1.0f) * L, above.red);
}

TEST_F(ColorConvert, NoSaturationIsGreyWhateverTheHue) {
    for (int32_t hue : {0, 77 * kOne, INT32_MAX, INT32_MIN})
        EXPECT_TRUE(test::sameBytes(RK_Pixel16{7, 8192, 8192, 8192},
                                    pixel<RK_Pixel16>(RK_HLStoRGB_Straight16, {hue, kOne / 4, 0})));
}

TEST_F(ColorConvert, ResultsOfHLSAreNotClamped) {
    // Lightness 2 without saturation is 510, and its low bits 254; minus 1 is -255, and 1.
    EXPECT_EQ(254, pixel<RK_Pixel8>(RK_HLStoRGB_Straight, {0, 2 * kOne, 0}).red);
    EXPECT_EQ(1, pixel<RK_Pixel8>(RK_HLStoRGB_Straight, {0, -kOne, 0}).red);
    EXPECT_EQ(2.0f, pixel<RK_PixelFloat>(RK_HLStoRGB_StraightFloat, {0, 2 * kOne, 0}).red);
    // What does not fit 32 bits is INT32_MIN, whose low bits are 0.
    EXPECT_EQ(0, pixel<RK_Pixel8>(RK_HLStoRGB_Straight, {120 * kOne, INT32_MAX, INT32_MAX}).green);
}

TEST_F(ColorConvert, RoundingIsToTheNearestAwayFromZero) {
    // 0.5 / 255 of lightness is a half: 257 / 65536 * 255 is a hair above 1.
    EXPECT_EQ(1, pixel<RK_Pixel8>(RK_HLStoRGB_Straight, {0, 257, 0}).red);
    EXPECT_EQ(0, pixel<RK_Pixel8>(RK_HLStoRGB_Straight, {0, 128, 0}).red);
    EXPECT_EQ(1, pixel<RK_Pixel8>(RK_HLStoRGB_Straight, {0, 129, 0}).red);
    EXPECT_EQ(1, pixel<RK_Pixel16>(RK_HLStoRGB_Straight16, {0, 1, 0}).red);  // half a step
    EXPECT_EQ(65535, pixel<RK_Pixel16>(RK_HLStoRGB_Straight16, {0, -1, 0}).red);
    // A channel of half a step in 16.16.
    EXPECT_EQ(1, triple<RK_PixelFloat>(RK_RGBtoHLS_StraightFloat, {0, 0x1p-17f, 0x1p-17f, 0x1p-17f})[1]);
    EXPECT_EQ(-1, triple<RK_PixelFloat>(RK_RGBtoHLS_StraightFloat, {0, -0x1p-17f, -0x1p-17f, -0x1p-17f})[1]);
    EXPECT_EQ(0,
              triple<RK_PixelFloat>(RK_RGBtoHLS_StraightFloat, {0, 0x1.8p-18f, 0x1.8p-18f, 0x1.8p-18f})[1]);
}

TEST_F(ColorConvert, NumbersThatDoNotFitAreTheLeastInteger) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(INT32_MIN, triple<RK_PixelFloat>(RK_RGBtoHLS_StraightFloat, {0, nan, 0.5f, 0.5f})[1]);
    EXPECT_EQ(INT32_MIN, triple<RK_PixelFloat>(RK_RGBtoHLS_StraightFloat, {0, 40000, 40000, 40000})[1]);
    EXPECT_EQ(INT32_MIN, triple<RK_PixelFloat>(RK_RGBtoYIQ_StraightFloat, {0, 0, 0, 1e9f})[0]);
    EXPECT_EQ(INT32_MIN, triple<RK_PixelFloat>(RK_RGBtoYIQ_StraightFloat, {0, nan, 0, 0})[0]);
}

TEST_F(ColorConvert, EveryEightBitColourComesBackFromHLS) {
    test::Random r(4);
    for (int i = 0; i < 20000; ++i) {
        const RK_Pixel8 p = {7, uint8_t(r.next()), uint8_t(r.next()), uint8_t(r.next())};
        const Triple hls = triple<RK_Pixel8>(RK_RGBtoHLS_Straight, p);
        ASSERT_TRUE(test::sameBytes(p, pixel<RK_Pixel8>(RK_HLStoRGB_Straight, hls)));
    }
}

// ---- YIQ ------------------------------------------------------------------------------------------------

TEST_F(ColorConvert, YIQOfThePrimaries) {
    EXPECT_EQ((Triple{19589, 39053, 13848}), triple<RK_PixelFloat>(RK_RGBtoYIQ_StraightFloat, {1, 1, 0, 0}));
    EXPECT_EQ((Triple{38443, -17963, -34256}),
              triple<RK_PixelFloat>(RK_RGBtoYIQ_StraightFloat, {1, 0, 1, 0}));
    EXPECT_EQ((Triple{7497, -21089, 20401}), triple<RK_PixelFloat>(RK_RGBtoYIQ_StraightFloat, {1, 0, 0, 1}));
    // The sum of the rounded products.
    EXPECT_EQ((Triple{65529, 1, -7}), triple<RK_PixelFloat>(RK_RGBtoYIQ_StraightFloat, {1, 1, 1, 1}));
}

TEST_F(ColorConvert, ProductsAreRoundedBeforeTheyAreAdded) {
    // Each product is 0.4 of a step: alone nothing, together more than one.
    const float r = 0.4f / 65536 / 0.2989f, g = 0.4f / 65536 / 0.5866f, b = 0.4f / 65536 / 0.1144f;
    EXPECT_EQ(0, triple<RK_PixelFloat>(RK_RGBtoYIQ_StraightFloat, {1, r, g, b})[0]);
}

TEST_F(ColorConvert, YIQIsClampedAtTheIntegerDepthsOnly) {
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{7, 255, 58, 0},
                                pixel<RK_Pixel8>(RK_YIQtoRGB_Straight, {kOne / 2, kOne, 0})));
    EXPECT_TRUE(test::sameBytes(RK_Pixel16{7, 32768, 7481, 0},
                                pixel<RK_Pixel16>(RK_YIQtoRGB_Straight16, {kOne / 2, kOne, 0})));
    const auto p = pixel<RK_PixelFloat>(RK_YIQtoRGB_StraightFloat, {kOne / 2, kOne, 0});
    EXPECT_TRUE(test::sameBytes(RK_PixelFloat{7, 0.5f + 0.9562f, 0.5f + -0.2717f, 0.5f + -1.1053f}, p));
    EXPECT_TRUE(
        test::sameBytes(RK_Pixel8{7, 0, 0, 0}, pixel<RK_Pixel8>(RK_YIQtoRGB_Straight, {INT32_MIN, 0, 0})));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{7, 255, 255, 255},
                                pixel<RK_Pixel8>(RK_YIQtoRGB_Straight, {INT32_MAX, 0, 0})));
}

TEST_F(ColorConvert, YIQRoundsHalvesUp) {
    // 0.5 of 255 is 127.5; one step of 16.16 below it is 127.496.
    EXPECT_EQ(128, pixel<RK_Pixel8>(RK_YIQtoRGB_Straight, {32768, 0, 0}).red);
    EXPECT_EQ(127, pixel<RK_Pixel8>(RK_YIQtoRGB_Straight, {32767, 0, 0}).red);
    EXPECT_EQ(1, pixel<RK_Pixel16>(RK_YIQtoRGB_Straight16, {1, 0, 0}).blue);
}

TEST_F(ColorConvert, ColoursComeBackFromYIQWithinTwoSteps) {
    test::Random r(5);
    for (int i = 0; i < 5000; ++i) {
        const RK_Pixel8 p = {7, uint8_t(r.next()), uint8_t(r.next()), uint8_t(r.next())};
        const RK_Pixel8 q =
            pixel<RK_Pixel8>(RK_YIQtoRGB_Straight, triple<RK_Pixel8>(RK_RGBtoYIQ_Straight, p));
        ASSERT_LE(std::abs(p.red - q.red) + std::abs(p.green - q.green) + std::abs(p.blue - q.blue), 2);
    }
}

// ---- Measures -------------------------------------------------------------------------------------------

TEST_F(ColorConvert, LuminanceIsNotScaled) {
    EXPECT_EQ(25500u, measure<RK_Pixel8>(RK_Luminance_Straight, {9, 255, 255, 255}));
    EXPECT_EQ(30u + 2 * 59 + 3 * 11, measure<RK_Pixel8>(RK_Luminance_Straight, {9, 1, 2, 3}));
    EXPECT_EQ(3276800u, measure<RK_Pixel16>(RK_Luminance_Straight16, {9, 32768, 32768, 32768}));
    EXPECT_EQ(6553500u, measure<RK_Pixel16>(RK_Luminance_Straight16, {9, 65535, 65535, 65535}));
    EXPECT_EQ((0.3f * 0.299f + 0.2f * 0.587f) + 0.1f * 0.114f,
              measure<RK_PixelFloat>(RK_Luminance_StraightFloat, {9, 0.3f, 0.2f, 0.1f}));
}

TEST_F(ColorConvert, TheHueCircleIs255AtBothIntegerDepths) {
    EXPECT_EQ(0u, measure<RK_Pixel8>(RK_Hue_Straight, {9, 255, 0, 0}));
    EXPECT_EQ(85u, measure<RK_Pixel8>(RK_Hue_Straight, {9, 0, 255, 0}));
    EXPECT_EQ(170u, measure<RK_Pixel8>(RK_Hue_Straight, {9, 0, 0, 255}));
    EXPECT_EQ(43u, measure<RK_Pixel8>(RK_Hue_Straight, {9, 255, 255, 0}));  // 42.5
    EXPECT_EQ(255u, measure<RK_Pixel8>(RK_Hue_Straight, {9, 255, 0, 1}));
    EXPECT_EQ(85u, measure<RK_Pixel16>(RK_Hue_Straight16, {9, 0, 32768, 0}));
    EXPECT_EQ(43u, measure<RK_Pixel16>(RK_Hue_Straight16, {9, 32768, 32768, 0}));
    EXPECT_EQ(static_cast<float>(120.0 / 360.0), measure<RK_PixelFloat>(RK_Hue_StraightFloat, {9, 0, 1, 0}));
    EXPECT_EQ(0u, measure<RK_Pixel8>(RK_Hue_Straight, {9, 50, 50, 50}));
    EXPECT_EQ(0u, measure<RK_Pixel16>(RK_Hue_Straight16, {9, 50, 50, 50}));
    EXPECT_EQ(0.0f, measure<RK_PixelFloat>(RK_Hue_StraightFloat, {9, 0.5f, 0.5f, 0.5f}));
}

TEST_F(ColorConvert, LightnessIsTheMiddleOfTheExtremes) {
    EXPECT_EQ(127u, measure<RK_Pixel8>(RK_Lightness_Straight, {9, 255, 100, 0}));
    EXPECT_EQ(255u, measure<RK_Pixel8>(RK_Lightness_Straight, {9, 255, 255, 255}));
    EXPECT_EQ(16384u, measure<RK_Pixel16>(RK_Lightness_Straight16, {9, 100, 32768, 0}));
    EXPECT_EQ((3.0f + -1.0f) * 0.5f, measure<RK_PixelFloat>(RK_Lightness_StraightFloat, {9, -1, 0, 3}));
}

TEST_F(ColorConvert, SaturationMultipliesByTheDistanceFromBlackOrWhite) {
    EXPECT_EQ(0u, measure<RK_Pixel8>(RK_Saturation_Straight, {9, 0, 0, 0}));
    EXPECT_EQ(0u, measure<RK_Pixel8>(RK_Saturation_Straight, {9, 255, 255, 255}));
    EXPECT_EQ(255u, measure<RK_Pixel8>(RK_Saturation_Straight, {9, 255, 0, 0}));
    EXPECT_EQ(0u, measure<RK_Pixel8>(RK_Saturation_Straight, {9, 77, 77, 77}));
    EXPECT_EQ(100u * 140 / 255, measure<RK_Pixel8>(RK_Saturation_Straight, {9, 20, 120, 60}));
    EXPECT_EQ(100u * (510 - 400) / 255, measure<RK_Pixel8>(RK_Saturation_Straight, {9, 150, 250, 200}));
    EXPECT_EQ(32768u, measure<RK_Pixel16>(RK_Saturation_Straight16, {9, 32768, 0, 0}));
    EXPECT_EQ(20000u * (65536 - 40000) / 32768,
              measure<RK_Pixel16>(RK_Saturation_Straight16, {9, 10000, 30000, 30000}));
    // Beyond full a negative product is cut to 16 bits.
    EXPECT_EQ(static_cast<uint16_t>(-(int64_t{35535} * 29999 / 32768)),
              measure<RK_Pixel16>(RK_Saturation_Straight16, {9, 65535, 30000, 30000}));
    EXPECT_EQ((0.75f - 0.25f) * 1.0f,
              measure<RK_PixelFloat>(RK_Saturation_StraightFloat, {9, 0.75f, 0.25f, 0.5f}));
    EXPECT_EQ((0.9f - 0.5f) * (2.0f - 0.5f - 0.9f),
              measure<RK_PixelFloat>(RK_Saturation_StraightFloat, {9, 0.9f, 0.5f, 0.5f}));
    EXPECT_EQ((0.3f - 0.1f) * (0.1f + 0.3f),
              measure<RK_PixelFloat>(RK_Saturation_StraightFloat, {9, 0.3f, 0.1f, 0.1f}));
}

// ---- Premultiplied --------------------------------------------------------------------------------------

TEST_F(ColorConvert, PremultipliedPixelsAreDividedFirst) {
    const RK_Pixel8 p = {128, 100, 50, 20};
    const auto over = [](int c) { return uint8_t((c * 255 + 64) / 128); };
    const RK_Pixel8 straight = {128, over(100), over(50), over(20)};
    EXPECT_EQ(triple<RK_Pixel8>(RK_RGBtoHLS_Straight, straight), triple<RK_Pixel8>(RK_RGBtoHLS_Premul, p));
    EXPECT_EQ(triple<RK_Pixel8>(RK_RGBtoYIQ_Straight, straight), triple<RK_Pixel8>(RK_RGBtoYIQ_Premul, p));
    EXPECT_EQ(measure<RK_Pixel8>(RK_Luminance_Straight, straight),
              measure<RK_Pixel8>(RK_Luminance_Premul, p));
    EXPECT_EQ(measure<RK_Pixel8>(RK_Hue_Straight, straight), measure<RK_Pixel8>(RK_Hue_Premul, p));
    EXPECT_EQ(measure<RK_Pixel8>(RK_Lightness_Straight, straight),
              measure<RK_Pixel8>(RK_Lightness_Premul, p));
    EXPECT_EQ(measure<RK_Pixel8>(RK_Saturation_Straight, straight),
              measure<RK_Pixel8>(RK_Saturation_Premul, p));
    // A clear pixel counts as white.
    EXPECT_EQ(25500u, measure<RK_Pixel8>(RK_Luminance_Premul, {0, 1, 2, 3}));
}

TEST_F(ColorConvert, TheWayBackToPremultipliedIsOpaque) {
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 0, 255, 0},
                                pixel<RK_Pixel8>(RK_HLStoRGB_Premul, {120 * kOne, kOne / 2, kOne})));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 255, 58, 0},
                                pixel<RK_Pixel8>(RK_YIQtoRGB_Premul, {kOne / 2, kOne, 0})));
}

}  // namespace
