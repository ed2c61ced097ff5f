#include <cmath>
#include <limits>

#include "RK/host/GEO.h"
#include "test/Pixels.h"
#include "test/Reports.h"

namespace {

bool same(const GEO_Rect& a, const GEO_Rect& b) {
    return a.top == b.top && a.left == b.left && a.bottom == b.bottom && a.right == b.right;
}

}  // namespace

TEST(Geometry, SectionsOfRectangles) {
    struct Case {
        GEO_Rect a, b, both;
        bool some;
    };
    const GEO_Rect none = {0, 0, 0, 0};
    const Case cases[] = {
        {{0, 0, 10, 10}, {5, 3, 20, 8}, {5, 3, 10, 8}, true},
        {{0, 0, 10, 10}, {0, 0, 10, 10}, {0, 0, 10, 10}, true},
        {{-32768, -32768, 32767, 32767}, {-5, -5, 5, 5}, {-5, -5, 5, 5}, true},
        {{0, 0, 10, 10}, {10, 0, 20, 10}, none, false},  // touching is not meeting
        {{0, 0, 10, 10}, {0, 10, 10, 20}, none, false},
        {{0, 0, 10, 10}, {20, 20, 30, 30}, none, false},
        {{10, 10, 0, 0}, {0, 0, 20, 20}, none, false},  // reversed is empty
        {{0, 0, 0, 10}, {0, 0, 10, 10}, none, false},
    };
    for (const Case& c : cases) {
        GEO_Rect out = {9, 9, 9, 9};
        EXPECT_EQ(GEO_SectRect(&c.a, &c.b, &out), c.some);
        EXPECT_TRUE(same(out, c.both));
        GEO_Rect in_place = c.a;
        EXPECT_EQ(GEO_SectRect(&in_place, &c.b, &in_place), c.some);
        EXPECT_TRUE(same(in_place, c.both));
    }
}

TEST(Geometry, RoundsHalvesAwayFromZero) {
    EXPECT_EQ(GEO_RoundDouble(0.5), 1);
    EXPECT_EQ(GEO_RoundDouble(-0.5), -1);
    EXPECT_EQ(GEO_RoundDouble(2.5), 3);
    EXPECT_EQ(GEO_RoundDouble(-2.5), -3);
    EXPECT_EQ(GEO_RoundDouble(0.49999999999999994), 0);
    EXPECT_EQ(GEO_RoundDouble(-7.4), -7);
    EXPECT_EQ(GEO_RoundDouble(2147483647.4), 2147483647);
    EXPECT_EQ(GEO_RoundDouble(-2147483648.4), INT32_MIN);
}

TEST(Geometry, GivesTheSmallestNumberForWhatDoesNotFit) {
    for (double odd : {2147483647.5, -2147483649.0, 1e300, -1e300, double(INFINITY), -double(INFINITY),
                       std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(GEO_RoundDouble(odd), INT32_MIN) << odd;
}

TEST(Geometry, PointsAreRoundedAndHeldTo16Bits) {
    const GEO_Matrix3 flat = {{{1.5, 0, 0}, {0, 1.5, 0}, {0, 0, 1}}};
    const GEO_Matrix4 deep = {{{1.5, 0, 7, 0}, {0, 1.5, 7, 0}, {7, 7, 7, 7}, {0, 0, 0, 1}}};
    const Point points[] = {{1, -1}, {3, 2}, {30000, -30000}, {21845, -21845}};  // vertical first
    const Point wanted[] = {{2, -2}, {5, 3}, {32767, -32768}, {32767, -32768}};
    Point by_flat[4], by_deep[4];
    GEO_TransformPoints(&flat, 4, points, by_flat);
    GEO_3DTransform2DPoints(&deep, 4, points, by_deep);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(by_flat[i].h, wanted[i].h) << i;
        EXPECT_EQ(by_flat[i].v, wanted[i].v) << i;
        EXPECT_EQ(by_deep[i].h, wanted[i].h) << i;
        EXPECT_EQ(by_deep[i].v, wanted[i].v) << i;
    }
    const GEO_Matrix3 none = {};  // 0 divided by 0
    GEO_TransformPoints(&none, 1, points, by_flat);
    EXPECT_EQ(by_flat[0].h, -32768);
    GEO_TransformPoints(&flat, 0, nullptr, nullptr);
}

class GeometryTables : public test::Tidy {};

TEST_F(GeometryTables, HoldTheRoundedProductsAndQuotients) {
    const uint8_t *multiply = nullptr, *divide = nullptr;
    ASSERT_EQ(GEO_PrepareFCMD(1, 0, 0, &multiply, &divide), 0);
    for (int a = 0; a < 256; ++a) {
        for (int x = 0; x < 256; ++x) {
            ASSERT_EQ(multiply[a * 256 + x], (2 * a * x + 255) / 510);
            ASSERT_EQ(divide[a * 256 + x], a == 0 ? 255 : std::min(255, (x * 255 + a / 2) / a));
        }
    }
}

// The package has made them already: asking again gives the same, and takes no memory.
TEST_F(GeometryTables, AreMadeOnce) {
    const uint8_t *multiply = nullptr, *divide = nullptr;
    RefHost::FailAllocation(1);
    ASSERT_EQ(GEO_PrepareFCMD(1, 0, 0, &multiply, &divide), 0);
    EXPECT_EQ(multiply, RKp_G_fcm_table);
    EXPECT_EQ(divide, RKp_G_fcd_table);
}
