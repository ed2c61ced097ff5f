#include "RK/indep/filter/RK_GaussianKernel.h"

#include <cmath>
#include <limits>
#include <vector>

#include "RK/indep/filter/RKp_GaussianValue.h"
#include "test/Reports.h"

namespace {

class GaussianKernel : public test::Tidy {};

struct Made {
    int32_t diameter = -1;
    std::vector<int32_t> cells;
};
Made make(double radius, int32_t flags, double multiplier = 1.0) {
    Made made;
    const int32_t width = 2 * static_cast<int32_t>(std::ceil(radius)) + 1;
    made.cells.assign(static_cast<size_t>(width) * static_cast<size_t>(flags & 1 ? 1 : width) + 1, -7);
    EXPECT_EQ(0, RK_GaussianKernel(nullptr, radius, flags, multiplier, &made.diameter, made.cells.data()));
    EXPECT_EQ(made.cells.back(), -7);
    made.cells.pop_back();
    return made;
}

// ---- The curve ------------------------------------------------------------------------------------------

TEST_F(GaussianKernel, TheCurveIs1InTheMiddleAlmost0AtTheEndAnd0Beyond) {
    EXPECT_EQ(RKp_GaussianValue(0.0), 1.0);
    EXPECT_NEAR(RKp_GaussianValue(1.0), 0.0002, 0.0001);
    EXPECT_GT(RKp_GaussianValue(1.0), 0.0);
    EXPECT_EQ(RKp_GaussianValue(std::nextafter(1.0, 2.0)), 0.0);
    EXPECT_EQ(RKp_GaussianValue(-0.5), RKp_GaussianValue(0.5));
    EXPECT_LT(RKp_GaussianValue(-2.0), 0.0);
    EXPECT_TRUE(std::isnan(RKp_GaussianValue(std::numeric_limits<double>::quiet_NaN())));
    for (double d = 0.05; d <= 1; d += 0.05) EXPECT_LT(RKp_GaussianValue(d), RKp_GaussianValue(d - 0.05));
}

// ---- Kernels --------------------------------------------------------------------------------------------

TEST_F(GaussianKernel, OfRadius0IsOneCell) {
    for (const int32_t flags : {0, 1, 2, 3}) {
        const Made made = make(0, flags);
        EXPECT_EQ(made.diameter, 1);
        EXPECT_EQ(made.cells, std::vector<int32_t>{255});
    }
}

TEST_F(GaussianKernel, OfOneRowHoldsTheCurveRoundedOnBothSides) {
    const Made made = make(2.5, 1);
    ASSERT_EQ(made.diameter, 7);
    for (int i = 0; i <= 3; ++i) {
        const auto want = static_cast<int32_t>(0.5 + RKp_GaussianValue(i / 3.5) * 255);
        EXPECT_EQ(made.cells[size_t(3 + i)], want);
        EXPECT_EQ(made.cells[size_t(3 - i)], want);
    }
}

TEST_F(GaussianKernel, NormalisedIsScaledTo255TimesTheCellsAndNotClampedAgain) {
    EXPECT_EQ(make(1, 3).cells, (std::vector<int32_t>{192, 380, 192}));
    for (const double radius : {1.0, 2.0, 3.5, 7.0}) {
        const Made made = make(radius, 2);
        double sum = 0;
        for (const int32_t cell : made.cells) sum += cell;
        const double cells = double(made.diameter) * made.diameter;
        EXPECT_NEAR(sum / (255 * cells), 1.0, 0.01) << radius;
    }
}

TEST_F(GaussianKernel, OfTwoDimensionsIsSymmetricInEveryWayAndRound) {
    const Made made = make(4.25, 0);
    const int n = made.diameter;
    ASSERT_EQ(n, 11);
    const auto at = [&](int x, int y) { return made.cells[size_t(y * n + x)]; };
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) {
            EXPECT_EQ(at(x, y), at(n - 1 - x, y));
            EXPECT_EQ(at(x, y), at(x, n - 1 - y));
            EXPECT_EQ(at(x, y), at(y, x));
        }
    EXPECT_EQ(at(5, 5), 255);
    EXPECT_EQ(at(0, 0), 0);
    const Made row = make(4.25, 1);
    for (int x = 0; x < n; ++x) EXPECT_EQ(at(x, 5), row.cells[size_t(x)]);
}

TEST_F(GaussianKernel, TheMultiplierScalesBeforeTheClamp) {
    const Made plain = make(3, 1), more = make(3, 1, 10), less = make(3, 1, -1), none = make(3, 1, 0);
    EXPECT_EQ(more.cells[3], 255);
    EXPECT_EQ(more.cells[5], 255);
    EXPECT_EQ(more.cells[6], std::min(255, static_cast<int>(0.5 + RKp_GaussianValue(0.75) * 2550)));
    for (size_t i = 0; i < 7; ++i) EXPECT_EQ(less.cells[i], 0);
    for (size_t i = 0; i < 7; ++i) EXPECT_EQ(none.cells[i], 0);
    EXPECT_LT(plain.cells[5], 255);
    // The sum keeps what the clamp cuts off: a tenth of the light is left.
    const Made normal = make(3, 3), bright = make(3, 3, 10);
    EXPECT_NEAR(bright.cells[3] / double(normal.cells[3]), 0.1, 0.01);
}

TEST_F(GaussianKernel, ARadiusBeyond16BitsWrapsAndBelow0HasNoCells) {
    int32_t diameter = 0, cell = -7;
    for (const int32_t flags : {0, 1, 2, 3}) {
        EXPECT_EQ(0, RK_GaussianKernel(nullptr, 40000.0, flags, 1.0, &diameter, &cell));
        EXPECT_EQ(diameter, 2 * (40000 - 65536) + 1);
        EXPECT_EQ(cell, -7);
    }
    EXPECT_EQ(0, RK_GaussianKernel(nullptr, 65536.0, 0, 1.0, &diameter, &cell));
    EXPECT_EQ(diameter, 1);
    EXPECT_EQ(cell, 255);
    cell = -7;
    EXPECT_EQ(0, RK_GaussianKernel(nullptr, 1e300, 0, 1.0, &diameter, &cell));
    EXPECT_EQ(diameter, 1);
    EXPECT_EQ(cell, 255);
}

TEST_F(GaussianKernel, BadArgumentsAreReportedAndNothingIsWritten) {
    int32_t diameter = -7, cell = -7;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double radius : {-1.0, -1e-300, nan}) {
        EXPECT_EQ(3, RK_GaussianKernel(nullptr, radius, 0, 1.0, &diameter, &cell));
        EXPECT_TRUE(test::onlyBadParam(10));
    }
    EXPECT_EQ(3, RK_GaussianKernel(nullptr, 1.0, 0, 1.0, nullptr, &cell));
    EXPECT_TRUE(test::onlyBadParam(10));
    EXPECT_EQ(3, RK_GaussianKernel(nullptr, 1.0, 0, 1.0, &diameter, nullptr));
    EXPECT_TRUE(test::onlyBadParam(10));
    EXPECT_EQ(diameter, -7);
    EXPECT_EQ(cell, -7);
    EXPECT_EQ(0, RK_GaussianKernel(nullptr, -0.0, 0, 1.0, &diameter, &cell));
}

}  // namespace
