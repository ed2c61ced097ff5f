#include "RK/indep/composite/RKp_SoftLight.h"

#include <cmath>

#include "test/composite/ModeRows.h"

using namespace test;

TEST(SoftLightTables, BeginAndPeakAsTheCurvesDo) {
    const int a[] = {0, 3, 6, 9, 11, 14, 16, 19}, b[] = {0, 1, 2, 3, 4};
    for (int i = 0; i < 8; ++i) EXPECT_EQ(RKp_G_SoftLight8.a[i], a[i]) << i;
    for (int i = 0; i < 5; ++i) EXPECT_EQ(RKp_G_SoftLight8.b[i], b[i]) << i;
    const auto peak = [](const auto& table) {
        int highest = 0;
        for (int v : table) highest = std::max(highest, v);
        return highest;
    };
    EXPECT_EQ(peak(RKp_G_SoftLight8.a), 64);
    EXPECT_EQ(peak(RKp_G_SoftLight8.b), 64);
    EXPECT_EQ(peak(RKp_G_SoftLight16.a), 8192);
    EXPECT_EQ(peak(RKp_G_SoftLight16.b), 8192);
    EXPECT_EQ(RKp_G_SoftLight8.a[255], 0);
    EXPECT_EQ(RKp_G_SoftLight16.a[4096], 0);
    EXPECT_EQ(RKp_G_SoftLightFloat.b[4096], 0.0f);
    EXPECT_EQ(RKp_G_SoftLightFloat.a[1024], 0.25f);  // both pieces meet
    EXPECT_EQ(RKp_G_SoftLightFloat.b[2048], 0.25f);
}

// The tables come from sqrt in double: the same bytes on every compiler, processor and ABI.
TEST(SoftLightTables, HaveTheirDigests) {
    EXPECT_EQ(digest(&RKp_G_SoftLight8, sizeof RKp_G_SoftLight8), 13166848813273881902u);
    EXPECT_EQ(digest(&RKp_G_SoftLight16, sizeof RKp_G_SoftLight16), 8405101171595846760u);
    EXPECT_EQ(digest(&RKp_G_SoftLightFloat, sizeof RKp_G_SoftLightFloat), 10863199593179958242u);
}

// Rounding to nearest is what 0.5 gives; a truncated or a raised table would differ somewhere.
TEST(SoftLightTables, RoundTheCurveToNearest) {
    int differs_from_floor = 0, differs_from_ceiling = 0;
    for (int i = 0; i < 4097; ++i) {
        const double x = i / 4096.0, exact = 32768.0 * x * (1.0 - x);
        EXPECT_LE(std::fabs(RKp_G_SoftLight16.b[i] - exact), 0.5) << i;
        differs_from_floor += RKp_G_SoftLight16.b[i] != int(exact);
        differs_from_ceiling += RKp_G_SoftLight16.b[i] != int(std::ceil(exact));
    }
    EXPECT_GT(differs_from_floor, 1000);
    EXPECT_GT(differs_from_ceiling, 1000);
}

TEST(SoftLightLookup, At16BitsInterpolatesByEighths) {
    using Curve = RKp_SoftLight<RK_Pixel16>;
    const auto& t = RKp_G_SoftLight16;
    for (int d : {0, 8, 4096, 16384, 32760, 32768}) EXPECT_EQ(Curve::brighter(d), t.a[d / 8]) << d;
    EXPECT_EQ(Curve::brighter(1), (t.a[1] + 4) >> 3);  // from 0 up
    EXPECT_EQ(Curve::darker(4), (4 * t.b[1] + 4) >> 3);
    // On the way down the shift floors.
    for (int d = 32760; d < 32768; ++d) {
        const int f = d & 7, step = t.a[4096] - t.a[4095];
        ASSERT_LT(step, 0);
        EXPECT_EQ(Curve::brighter(d), t.a[4095] + int(std::floor((f * step + 4) / 8.0))) << d;
    }
}

TEST(SoftLightLookup, At16BitsReadsWhatLiesAboveWhiteAsWhite) {
    using Curve = RKp_SoftLight<RK_Pixel16>;
    for (int d : {32769, 40000, 65535}) {
        EXPECT_EQ(Curve::brighter(d), 0);
        EXPECT_EQ(Curve::darker(d), 0);
    }
}

TEST(SoftLightLookup, AtFloatClampsAndInterpolates) {
    using Curve = RKp_SoftLight<RK_PixelFloat>;
    const auto& t = RKp_G_SoftLightFloat;
    EXPECT_EQ(Curve::brighter(NAN), 0.0f);
    EXPECT_EQ(Curve::brighter(-1.0f), 0.0f);
    EXPECT_EQ(Curve::darker(-INFINITY), 0.0f);
    EXPECT_EQ(Curve::darker(INFINITY), 0.0f);
    EXPECT_EQ(Curve::darker(2.0f), t.b[4096]);
    EXPECT_EQ(Curve::brighter(1.0f), t.a[4096]);
    EXPECT_EQ(Curve::brighter(0.5f), t.a[2048]);
    EXPECT_EQ(Curve::brighter(0.99999994f),
              t.a[4095] + (t.a[4096] - t.a[4095]) * (0.99999994f * 4096.0f - 4095.0f));
    EXPECT_EQ(Curve::darker(1.5f / 4096.0f), t.b[1] + (t.b[2] - t.b[1]) * 0.5f);
}
