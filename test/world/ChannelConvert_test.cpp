#include "RK/indep/world/RKp_ChannelConvert.h"

#include <gtest/gtest.h>

#include <cmath>

#include "test/Pixels.h"

namespace {

// The two float steps, told through double: a product or sum of two floats is exact there, and the cast
// rounds once.
float product(float x, float scale) { return static_cast<float>(double{x} * double{scale}); }
float half(float v) { return static_cast<float>(double{v} + 0.5); }

int32_t colour(float x, float scale) {
    const float v = product(x, scale);
    if (std::isnan(v) || v < 0) return 0;
    if (v > scale) return int32_t(scale);
    return int32_t(half(v));
}
int32_t alpha(float x, float scale) {
    const double v = double{half(product(x, scale))};
    return v > -2147483649.0 && v < 2147483648.0 ? int32_t(v) : INT32_MIN;
}

float fromBits(uint32_t bits) {
    float x;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

}  // namespace

TEST(ChannelConvert, Widens8To16ByAnExactDivision) {
    for (int c = 0; c < 256; ++c) EXPECT_EQ(RKp_8To16(uint8_t(c)), (c * 32768 + 128) / 255) << c;
    EXPECT_EQ(RKp_8To16(255), 32768);
    EXPECT_EQ(RKp_8To16(0), 0);
}

TEST(ChannelConvert, TheTermOf8To16IsNoOther) {
    EXPECT_NE(RKp_8To16(254), (254 * 32768 + 127) / 255);
    EXPECT_NE(RKp_8To16(252), (252 * 32768 + 129) / 255);
}

TEST(ChannelConvert, Narrows16To8ByARoundedShift) {
    bool below = false, above = false;
    for (uint32_t c = 0; c <= 65535; ++c) {
        const uint32_t expected = (c * 255 + 16384) / 32768;
        ASSERT_EQ(RKp_16To8(uint16_t(c)), uint8_t(expected)) << c;
        below |= (c * 255 + 16383) / 32768 != expected;
        above |= (c * 255 + 16385) / 32768 != expected;
    }
    EXPECT_TRUE(below) << "16383 would do as well";
    EXPECT_TRUE(above) << "16385 would do as well";
    EXPECT_EQ(RKp_16To8(32768), 255);
    EXPECT_EQ(RKp_16To8(16384), 128);
}

TEST(ChannelConvert, EveryByteSurvives16BitsAndFloat) {
    for (int c = 0; c < 256; ++c) {
        EXPECT_EQ(RKp_16To8(RKp_8To16(uint8_t(c))), c);
        EXPECT_EQ(RKp_ColourFromFloat(RKp_8ToFloat(uint8_t(c)), 255.0f), c);
        EXPECT_EQ(RKp_AlphaFromFloat(RKp_8ToFloat(uint8_t(c)), 255.0f), c);
    }
}

TEST(ChannelConvert, EightBitsToFloatRoundOneDoubleProduct) {
    bool single_product_differs = false;
    for (int c = 0; c < 256; ++c) {
        const double wide = c * 0.00392156862745098;
        EXPECT_EQ(RKp_8ToFloat(uint8_t(c)), float(wide)) << c;
        single_product_differs |= float(c) * 0.003921569f != float(wide);
    }
    EXPECT_TRUE(single_product_differs) << "the product in float would do as well";
    EXPECT_EQ(RKp_8ToFloat(255), 1.0f);
}

TEST(ChannelConvert, SixteenBitsToFloatDivideBy32768Exactly) {
    for (int c = 0; c <= 65535; ++c) ASSERT_EQ(double{RKp_16ToFloat(uint16_t(c))}, c / 32768.0) << c;
}

TEST(ChannelConvert, ColourFromFloatAgreesAroundEveryStep) {
    for (const float scale : {255.0f, 32768.0f}) {
        for (int32_t k = 0; k <= int32_t(scale); ++k) {
            // Where v + 0.5 passes from k to k + 1.
            float x = static_cast<float>((k + 0.5) / double{scale});
            for (int i = 0; i < 4; ++i) x = std::nextafter(x, -1.0f);
            for (int i = 0; i < 9; ++i, x = std::nextafter(x, 2.0f)) {
                ASSERT_EQ(RKp_ColourFromFloat(x, scale), colour(x, scale)) << x << " at " << scale;
                ASSERT_EQ(RKp_AlphaFromFloat(x, scale), alpha(x, scale)) << x << " at " << scale;
            }
        }
    }
}

TEST(ChannelConvert, FloatsOfEveryBitPatternAgree) {
    test::Random random(7);
    for (int i = 0; i < 2000000; ++i) {
        const float x = fromBits(random.next());
        for (const float scale : {255.0f, 32768.0f}) {
            ASSERT_EQ(RKp_ColourFromFloat(x, scale), colour(x, scale)) << x;
            ASSERT_EQ(RKp_AlphaFromFloat(x, scale), alpha(x, scale)) << x;
        }
    }
}

TEST(ChannelConvert, TheHalfIsAddedInFloat) {
    // The largest v below one half: in float the sum rounds up to 1, in double it would stay below.
    const float v = 0.49999997f;
    float x = v / 255.0f;
    for (int i = 0; i < 4 && x * 255.0f != v; ++i) x = std::nextafter(x, x * 255.0f < v ? 1.0f : 0.0f);
    ASSERT_EQ(x * 255.0f, v);
    EXPECT_EQ(RKp_ColourFromFloat(x, 255.0f), 1);
    EXPECT_LT(double{v} + 0.5, 1.0);
}

TEST(ChannelConvert, ColourClampsAndNaNIsZero) {
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    EXPECT_EQ(RKp_ColourFromFloat(1.5f, 255.0f), 255);
    EXPECT_EQ(RKp_ColourFromFloat(1.0f, 255.0f), 255);
    EXPECT_EQ(RKp_ColourFromFloat(inf, 32768.0f), 32768);
    EXPECT_EQ(RKp_ColourFromFloat(-inf, 32768.0f), 0);
    EXPECT_EQ(RKp_ColourFromFloat(-1e-20f, 255.0f), 0);
    EXPECT_EQ(RKp_ColourFromFloat(nan, 255.0f), 0);
    EXPECT_EQ(RKp_ColourFromFloat(nan, 32768.0f), 0);
}

TEST(ChannelConvert, AlphaIsNotClamped) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(RKp_AlphaFromFloat(1.5f, 255.0f), 383);
    EXPECT_EQ(RKp_AlphaFromFloat(2.0f, 32768.0f), 65536);
    EXPECT_EQ(RKp_AlphaFromFloat(-1.0f, 255.0f), -254);
    EXPECT_EQ(RKp_AlphaFromFloat(nan, 255.0f), INT32_MIN);
    EXPECT_EQ(RKp_AlphaFromFloat(1e30f, 255.0f), INT32_MIN);
    EXPECT_EQ(RKp_AlphaFromFloat(-1e30f, 255.0f), INT32_MIN);
}

TEST(ChannelConvert, PixelsConvertAlphaByAlphasRule) {
    const RK_PixelFloat p = {1.5f, 1.5f, -0.5f, std::numeric_limits<float>::quiet_NaN()};
    const RK_Pixel8 p8 = RKp_ConvertPixel<RK_Pixel8>(p);
    EXPECT_EQ(p8.alpha, 127);
    EXPECT_EQ(p8.red, 255);
    EXPECT_EQ(p8.green, 0);
    EXPECT_EQ(p8.blue, 0);
    const RK_Pixel16 p16 = RKp_ConvertPixel<RK_Pixel16>(p);
    EXPECT_EQ(p16.alpha, 49152);
    EXPECT_EQ(p16.red, 32768);
    EXPECT_EQ(p16.green, 0);
    EXPECT_EQ(p16.blue, 0);
    EXPECT_EQ(RKp_ConvertPixel<RK_Pixel16>(RK_PixelFloat{2.0f, 0, 0, 0}).alpha, 0);
}

TEST(ChannelConvert, PixelsKeepTheirChannelsApart) {
    const RK_Pixel8 p8 = {1, 20, 150, 255};
    const RK_Pixel16 p16 = RKp_ConvertPixel<RK_Pixel16>(p8);
    const RK_PixelFloat pf = RKp_ConvertPixel<RK_PixelFloat>(p8);
    const RK_Pixel16 expected16 = {RKp_8To16(1), RKp_8To16(20), RKp_8To16(150), 32768};
    const RK_PixelFloat expected_float = {RKp_8ToFloat(1), RKp_8ToFloat(20), RKp_8ToFloat(150), 1.0f};
    EXPECT_TRUE(test::sameBytes(p16, expected16));
    EXPECT_TRUE(test::sameBytes(pf, expected_float));
    EXPECT_TRUE(test::sameBytes(RKp_ConvertPixel<RK_Pixel8>(p16), p8));
    EXPECT_TRUE(test::sameBytes(RKp_ConvertPixel<RK_Pixel8>(pf), p8));
    const RK_PixelFloat wide = {RKp_16ToFloat(p16.alpha), RKp_16ToFloat(p16.red), RKp_16ToFloat(p16.green),
                                1.0f};
    EXPECT_TRUE(test::sameBytes(RKp_ConvertPixel<RK_PixelFloat>(p16), wide));
    EXPECT_TRUE(test::sameBytes(RKp_ConvertPixel<RK_Pixel16>(wide), p16));
}
