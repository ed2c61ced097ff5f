// The rounding terms: each formula in whole, and that its neighbours differ.
#include "RK/indep/frame/RKp_Depth.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using D8 = RKp_Depth<RK_Pixel8>;
using D16 = RKp_Depth<RK_Pixel16>;
using DF = RKp_Depth<RK_PixelFloat>;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// Values of 0..32768 that reach both ends, the middle and their neighbours.
template <class See>
void sixteenBitValues(See&& see) {
    for (int32_t v = 0; v <= 32768; v += v < 40 || (v > 16360 && v < 16410) || v > 32700 ? 1 : 37) see(v);
}

}  // namespace

TEST(Depth8, MulIsTheRoundedProductOver255) {
    for (int32_t a = 0; a < 256; ++a)
        for (int32_t b = 0; b < 256; ++b) ASSERT_EQ(D8::mul(a, b), (2 * a * b + 255) / 510) << a << " " << b;
}

TEST(Depth8, MulsTermIs128AndNotItsNeighbours) {
    const auto with = [](int32_t term, int32_t a, int32_t b) {
        const int32_t t = a * b + term;
        return (t + (t >> 8)) >> 8;
    };
    int differ127 = 0, differ129 = 0;
    for (int32_t a = 0; a < 256; ++a) {
        for (int32_t b = 0; b < 256; ++b) {
            ASSERT_EQ(D8::mul(a, b), with(128, a, b));
            differ127 += D8::mul(a, b) != with(127, a, b);
            differ129 += D8::mul(a, b) != with(129, a, b);
        }
    }
    EXPECT_GT(differ127, 0);
    EXPECT_GT(differ129, 0);
}

TEST(Depth8, DivReadsTheTableByAlphaFirst) {
    for (int32_t a = 1; a < 256; ++a)
        for (int32_t x = 0; x < 256; ++x)
            ASSERT_EQ(D8::div(a, x), std::min(255, (x * 255 + (a >> 1)) / a)) << a << " " << x;
    for (int32_t x = 0; x < 256; ++x) EXPECT_EQ(D8::div(0, x), 255);
    EXPECT_EQ(D8::div(255, 77), 77);
    EXPECT_NE(D8::div(3, 1), 1 * 255 / 4);
    EXPECT_EQ(D8::div(2, 1), 128);  // half of 255 rounds up; a missing term gives 127
}

TEST(Depth8, LerpKeepsTheLowByteOfTheWrappedSum) {
    EXPECT_EQ(D8::lerp(200, 100, 128), 150);
    EXPECT_EQ(D8::lerp(100, 200, 128), 150);
    for (int32_t a = 0; a < 256; ++a) {
        for (int32_t y = 0; y < 256; y += 5) {
            for (int32_t x = 0; x < 256; ++x) {
                const uint64_t t = (uint64_t{uint32_t(x - y)} * uint32_t(a) + 128) & 0xFFFFFFFFu;
                const uint64_t product = ((t + (t >> 8)) & 0xFFFFFFFFu) >> 8;
                ASSERT_EQ(D8::lerp(y, x, a), int32_t((uint64_t(y) + product) & 255))
                    << y << " " << x << " " << a;
            }
        }
    }
    for (int32_t y = 0; y < 256; ++y) {
        EXPECT_EQ(D8::lerp(y, 13, 0), y);
        EXPECT_EQ(D8::lerp(y, 13, 255), 13);
    }
}

TEST(Depth8, LumaOfWhiteIsWhiteAndItsTermIs16384) {
    EXPECT_EQ(D8::luma(255, 255, 255), 255);
    EXPECT_EQ(D8::luma(0, 0, 0), 0);
    EXPECT_EQ(D8::luma(255, 0, 0), 76);
    EXPECT_EQ(D8::luma(0, 255, 0), 150);
    EXPECT_EQ(D8::luma(0, 0, 255), 29);
    int differ = 0;
    for (int32_t v = 0; v < 256; ++v) {
        EXPECT_EQ(D8::luma(v, v, v), v);
        differ += D8::luma(v, 3, 7) != ((v * 9798 + 3 * 19235 + 7 * 3735) >> 15);
    }
    EXPECT_GT(differ, 0);
}

TEST(Depth16, MulsTermIs16383AndNot16384) {
    EXPECT_EQ(D16::mul(16384, 1), 0);  // exactly half rounds down
    EXPECT_EQ(D16::mul(16384, 3), 1);
    EXPECT_EQ(D16::mul(16385, 1), 1);
    sixteenBitValues([](int32_t a) {
        EXPECT_EQ(D16::mul(32768, a), a);
        EXPECT_EQ(D16::mul(a, 32768), a);
        EXPECT_EQ(D16::mul(a, 0), 0);
        sixteenBitValues([a](int32_t b) {
            if (D16::mul(a, b) != (int64_t{a} * b + 16383) >> 15) ADD_FAILURE() << a << " " << b;
        });
    });
}

TEST(Depth16, DivTruncatesAfterHalfOfAlpha) {
    EXPECT_EQ(D16::div(0, 0), 32768);
    EXPECT_EQ(D16::div(5, 5), 32768);
    EXPECT_EQ(D16::div(5, 9), 32768);
    EXPECT_EQ(D16::div(3, 1), 10923);  // 32769 / 3
    EXPECT_EQ(D16::div(3, 2), 21845);  // 65537 / 3, truncated
    EXPECT_EQ(D16::div(32768, 32767), 32767);
    int differ = 0;
    sixteenBitValues([&](int32_t a) {
        if (a == 0) return;
        for (int32_t x = 0; x < a; x += 1 + a / 50) {
            if (D16::div(a, x) != (int64_t{x} * 32768 + (a >> 1)) / a) ADD_FAILURE() << a << " " << x;
            differ += D16::div(a, x) != int64_t{x} * 32768 / a;
        }
    });
    EXPECT_GT(differ, 0);
}

TEST(Depth16, SignedMulFloorsSoMixesUpAndDownAreNoMirrorImages) {
    EXPECT_EQ(D16::signedMul(1, 1), 0);
    EXPECT_EQ(D16::signedMul(-1, 1), -1);
    EXPECT_EQ(D16::lerp(100, 101, 16384), 100);
    EXPECT_EQ(D16::lerp(101, 100, 16384), 100);
    EXPECT_EQ(D16::lerp(32768, 0, 32768), 0);
    EXPECT_EQ(D16::lerp(0, 32768, 32768), 32768);
}

TEST(Depth16, LumaOfWhiteIsWhiteWithoutOverflow) {
    EXPECT_EQ(D16::luma(32768, 32768, 32768), 32768);
    EXPECT_EQ(D16::luma(32768, 0, 0), 9798);
    EXPECT_EQ(D16::luma(1, 1, 1), 1);
    EXPECT_EQ(D16::luma(1, 0, 1), 0);
    EXPECT_EQ(D16::luma(0, 1, 0), 1);  // 19235 + 16384 passes 32768 by the term alone
}

TEST(DepthFloat, LumaAddsFromLeftToRight) {
    int differ = 0;
    for (int i = 1; i < 1000; ++i) {
        const float r = float(i) / 999.0f, g = 1.0f - r * r, b = 0.3f + r * 0.37f;
        EXPECT_EQ(DF::luma(r, g, b), (r * 0.299f + g * 0.587f) + b * 0.114f);
        differ += DF::luma(r, g, b) != r * 0.299f + (g * 0.587f + b * 0.114f);
    }
    EXPECT_GT(differ, 0);
}

TEST(DepthFloat, DivisionByZeroOrADenormalGivesOne) {
    for (float a : {0.0f, -0.0f, 1e-39f, -1e-39f, std::numeric_limits<float>::denorm_min()})
        for (float x : {0.0f, 0.5f, -2.0f, kInfinity}) EXPECT_EQ(DF::div(a, x), 1.0f) << a << " " << x;
    EXPECT_EQ(DF::div(0.5f, 2.0f), 4.0f);
    EXPECT_EQ(DF::div(std::numeric_limits<float>::min(), std::numeric_limits<float>::min()), 1.0f);
    EXPECT_EQ(DF::div(1e-30f, 1.0f), 1.0f / 1e-30f);
}

TEST(DepthFloat, KnowsZerosAndDenormals) {
    EXPECT_TRUE(RKp_IsZeroOrDenormal(0.0f));
    EXPECT_TRUE(RKp_IsZeroOrDenormal(-0.0f));
    EXPECT_TRUE(RKp_IsZeroOrDenormal(-1e-39f));
    EXPECT_FALSE(RKp_IsZeroOrDenormal(std::numeric_limits<float>::min()));
    EXPECT_FALSE(RKp_IsZeroOrDenormal(kNaN));
    EXPECT_FALSE(RKp_IsDenormal(0.0f));
    EXPECT_FALSE(RKp_IsDenormal(-0.0f));
    EXPECT_TRUE(RKp_IsDenormal(1e-39f));
    EXPECT_FALSE(RKp_IsDenormal(1.0f));
}

TEST(DepthVerbs, InvertsAndUnites) {
    EXPECT_EQ(D8::inv(0), 255);
    EXPECT_EQ(D8::inv(256), 255);  // -1, in a byte
    EXPECT_EQ(D16::inv(1), 32767);
    EXPECT_EQ(DF::inv(0.25f), 0.75f);
    for (int32_t a = 0; a < 256; ++a) {
        EXPECT_EQ(D8::unite(a, 255), 255);
        EXPECT_EQ(D8::unite(a, 0), a);
        EXPECT_EQ(D8::unite(a, 100), 255 - D8::mul(255 - a, 155));
    }
    EXPECT_EQ(D16::unite(16383, 16384),
              24576);  // the product of the inverses ends in a half, which is rounded down
    EXPECT_EQ(DF::unite(0.5f, 0.5f), 0.75f);
    EXPECT_EQ(DF::lerp(0.5f, 1.0f, 0.25f), 0.625f);
}

TEST(Truncation, GivesTheProcessorsAnswerForWhatDoesNotFit) {
    EXPECT_EQ(RKp_Truncate(1.9f), 1);
    EXPECT_EQ(RKp_Truncate(-1.9f), -1);
    EXPECT_EQ(RKp_Truncate(2147483520.0f), 2147483520);
    EXPECT_EQ(RKp_Truncate(2147483648.0f), INT32_MIN);
    EXPECT_EQ(RKp_Truncate(-2147483648.0f), INT32_MIN);
    EXPECT_EQ(RKp_Truncate(-3e9f), INT32_MIN);
    EXPECT_EQ(RKp_Truncate(kInfinity), INT32_MIN);
    EXPECT_EQ(RKp_Truncate(kNaN), INT32_MIN);
}
