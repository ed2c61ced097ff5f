#include "RK/indep/filter/RK_Lines.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "RK/indep/world/RK_WorldXT.h"
#include "test/Pixels.h"
#include "test/Reports.h"
#include "test/world/OddWorld.h"

namespace {

constexpr uint32_t kSite = 16;
const RK_PixelFloat kWhite = {1, 1, 1, 1};

// A picture of 8 bits drawn on, and what is white in it: "#" and ".", a row a line.
struct Canvas {
    Canvas(int width, int height) : picture(width, height) {}
    RK_Long line(double x0, double y0, double x1, double y1) {
        const RK_LayerDef record = picture.record();
        RK_WorldX<RK_Pixel8> world(&record, false);
        const double start[2] = {x0, y0}, end[2] = {x1, y1};
        const RK_Long result = RK_DrawLine(start, end, &kWhite, &world);
        EXPECT_TRUE(picture.guardsWhole());
        return result;
    }
    std::vector<std::string> rows() const {
        std::vector<std::string> rows;
        for (int y = 0; y < picture.height(); ++y) {
            rows.emplace_back();
            for (int x = 0; x < picture.width(); ++x)
                rows.back() += picture.at(x, y).alpha == 255 ? '#' : '.';
        }
        return rows;
    }
    test::Picture<RK_Pixel8> picture;
};
using Rows = std::vector<std::string>;

Rows drawn(int width, int height, double x0, double y0, double x1, double y1) {
    Canvas canvas(width, height);
    EXPECT_EQ(0, canvas.line(x0, y0, x1, y1));
    return canvas.rows();
}

class Lines : public test::Tidy {};

TEST_F(Lines, BothEndsAreDrawn) {
    EXPECT_EQ((Rows{"....", ".###", "...."}), drawn(4, 3, 1, 1, 3, 1));
    EXPECT_EQ((Rows{".#..", ".#..", ".#.."}), drawn(4, 3, 1, 2, 1, 0));
    EXPECT_EQ((Rows{"#...", ".#..", "..#."}), drawn(4, 3, 0, 0, 2, 2));
    EXPECT_EQ((Rows{"##....", "..##..", "....##"}), drawn(6, 3, 0, 0, 5, 2));
}

TEST_F(Lines, TheSlopeGoesFromTheExactStartToTheExactEnd) {
    EXPECT_EQ((Rows{"#....", ".##..", "...##"}), drawn(5, 3, 0, 0, 4, 2.4));
    EXPECT_EQ((Rows{"....#", "..##.", "##..."}), drawn(5, 3, 4, 0, 0, 2.4));
    EXPECT_EQ((Rows{"#....", ".###.", "....#"}), drawn(5, 3, 0, 0.125, 4, 1.75));
}

TEST_F(Lines, OfNoLengthIsThePixelThatHoldsTheStart) {
    EXPECT_EQ((Rows{"...", ".#.", "..."}), drawn(3, 3, 1, 1, 1, 1));
    EXPECT_EQ((Rows{"...", ".#.", "..."}), drawn(3, 3, 1.9, 1.9, 1.9, 1.9));            // not rounded
    EXPECT_EQ((Rows{"...", "..#", "..."}), drawn(3, 3, 1.999999, 1.5, 1.999999, 1.5));  // but in 16.16
    EXPECT_EQ((Rows{"...", ".#.", "..."}), drawn(3, 3, 1, 1, 1 + 9e-13, 1 - 9e-13));
    EXPECT_EQ((Rows{"...", "...", "..."}), drawn(3, 3, -0.5, 1, -0.5, 1));
    EXPECT_EQ((Rows{"...", "...", "..."}), drawn(3, 3, 3, 1, 3, 1));
}

TEST_F(Lines, AVeryShortLineIsSnappedToTheNearestPixel) {
    // Longer than the tiniest: from round(1.6) = 2 to round(1.6 + tiny).
    EXPECT_EQ((Rows{"..#.", "....", "...."}), drawn(4, 3, 1.6, 0, 1.6 + 1e-9, 0));
    EXPECT_EQ((Rows{".##.", "....", "...."}), drawn(4, 3, 1.4, 0.4, 1.6, 0.4));
}

TEST_F(Lines, TheMinorPlaceIsCorrectedForTheSnap) {
    // Slope 1/2; the start at x 0.75 snaps to 1, where y is 0.125 further: 0.4 + 0.125 + 1/2 reaches row 1.
    EXPECT_EQ((Rows{".....", ".##..", "...##"}), drawn(5, 3, 0.75, 0.4, 4.75, 2.4));
    EXPECT_EQ((Rows{".#...", "..##.", "....#"}), drawn(5, 3, 0.75, 0.37, 4.5, 2.245));
}

TEST_F(Lines, EqualLengthsWalkDownTheRows) {
    // |dx| equals |dy|: a pixel for each row from the nearest to the start to that of the end.
    EXPECT_EQ((Rows{"#..", ".#.", "..#"}), drawn(3, 3, 0.25, 0.25, 2.25, 2.25));
    EXPECT_EQ((Rows{"..#", ".#.", "#.."}), drawn(3, 3, 0, 2, 2, 0));
}

TEST_F(Lines, AnEndLeftOfZeroTruncatesTowardsZero) {
    // From 1 to -1.4: trunc(-0.9) is 0, so that pixel 0 is the last; from 1 to -2.6 the walk leaves the
    // world.
    EXPECT_EQ((Rows{"##..", "...."}), drawn(4, 2, 1, 0, -1.4, 0));
    EXPECT_EQ((Rows{"##..", "...."}), drawn(4, 2, 1, 0, -2.6, 0));
}

TEST_F(Lines, WhatLiesOutsideIsLeftOutAndTheRestStaysTheSame) {
    test::Random random(5);
    for (int round = 0; round < 300; ++round) {
        const auto place = [&] { return random.unit() * 60.0 - 10.0; };
        const double x0 = place(), y0 = place(), x1 = place(), y1 = place();
        // The same line 40 pixels right and down on a large canvas (exact in 16.16 only where the fraction
        // is).
        const double fx0 = std::floor(x0 * 16) / 16, fy0 = std::floor(y0 * 16) / 16;
        const double fx1 = std::floor(x1 * 16) / 16, fy1 = std::floor(y1 * 16) / 16;
        if (fx1 < 1 || fy1 < 1) continue;  // ends truncate towards zero
        const Rows small = drawn(20, 15, fx0, fy0, fx1, fy1);
        const Rows large = drawn(120, 120, fx0 + 40, fy0 + 40, fx1 + 40, fy1 + 40);
        for (int y = 0; y < 15; ++y)
            ASSERT_EQ(large[size_t(y + 40)].substr(40, 20), small[size_t(y)])
                << round << ": " << fx0 << ", " << fy0 << " to " << fx1 << ", " << fy1;
    }
}

TEST_F(Lines, FarEndsAndNumbersThatAreNoneCostNothing) {
    const double inf = std::numeric_limits<double>::infinity(),
                 nan = std::numeric_limits<double>::quiet_NaN();
    // The start is held to 16.16, the end is not: a line to 1e9 is straight and long.
    EXPECT_EQ((Rows{"....", "####", "...."}), drawn(4, 3, -30000, 1, 1e9, 1));
    for (const double far : {1e18, -1e18, inf, -inf, nan}) {
        Canvas canvas(4, 3);
        for (int which = 0; which < 16; ++which)
            EXPECT_EQ(0, canvas.line(which & 1 ? far : 1, which & 2 ? far : 1, which & 4 ? far : 2,
                                     which & 8 ? far : 2));
    }
}

template <class P>
P lineOfOnePixel(const RK_PixelFloat& colour) {
    test::Picture<P> picture(3, 3);
    const RK_LayerDef record = picture.record();
    RK_WorldX<P> world(&record, false);
    const double place[2] = {1, 1};
    EXPECT_EQ(0, RK_DrawLine(place, place, &colour, &world));
    return picture.at(1, 1);
}

TEST_F(Lines, ColoursAreRoundedAndNotClamped) {
    const RK_PixelFloat colour = {0.25f, 1.5f, -0.25f, std::numeric_limits<float>::quiet_NaN()};
    // 382.5 + 0.5 is 383, -63.75 + 0.5 truncates to -63; their low bits are stored.
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{64, 127, 193, 0}, lineOfOnePixel<RK_Pixel8>(colour)));
    EXPECT_TRUE(test::sameBytes(RK_Pixel16{8192, 49152, 57345, 0}, lineOfOnePixel<RK_Pixel16>(colour)));
    EXPECT_TRUE(test::sameBytes(colour, lineOfOnePixel<RK_PixelFloat>(colour)));
    // 0.5 of rounding, not less: c * 255 one step below a half.
    EXPECT_EQ(1, lineOfOnePixel<RK_Pixel8>({0.5f / 255, 0, 0, 0}).alpha);
    EXPECT_EQ(0, lineOfOnePixel<RK_Pixel8>({0.4999f / 255, 0, 0, 0}).alpha);
}

TEST_F(Lines, NothingIsDrawnWithoutAWorldAColourOrTwoEnds) {
    Canvas canvas(3, 3);
    const RK_LayerDef record = canvas.picture.record();
    RK_WorldX<RK_Pixel8> world(&record, false), none(&record, false);
    none.record.data = nullptr;
    const double place[2] = {1, 1};
    for (int missing = 0; missing < 5; ++missing) {
        EXPECT_EQ(3, RK_DrawLine(missing == 0 ? nullptr : place, missing == 1 ? nullptr : place,
                                 missing == 2 ? nullptr : &kWhite,
                                 missing == 3   ? nullptr
                                 : missing == 4 ? &none
                                                : &world));
        EXPECT_TRUE(test::onlyBadParam(kSite));
    }
    EXPECT_EQ((Rows{"...", "...", "..."}), canvas.rows());
    test::OddWorld odd(24);
    odd.record.data = canvas.picture.row(0);
    EXPECT_EQ(3, RK_DrawLine(place, place, &kWhite, &odd));
    EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in##CONDITIONNAME"));
}

TEST_F(Lines, MemoryThatFailsDoesNotMatter) {
    RefHost::FailAllocation(1);
    EXPECT_EQ((Rows{"##....", "..##..", "....##"}), drawn(6, 3, 0, 0, 5, 2));
    EXPECT_EQ(0, RefHost::AllocationsSince());
}

// ---- Pixels ---------------------------------------------------------------------------------------------

template <class P>
void setsOnePixel(RK_Long (*set)(int32_t, int32_t, const P*, RK_LayerDef*), const P& colour) {
    test::Picture<P> picture(4, 3);
    RK_LayerDef record = picture.record();
    for (int y = -1; y <= 3; ++y) {
        for (int x = -1; x <= 4; ++x) {
            const bool in = x >= 0 && x < 4 && y >= 0 && y < 3;
            picture.fill(P{});
            EXPECT_EQ(in ? 1 : 0, set(x, y, &colour, &record));
            for (int v = 0; v < 3; ++v)
                for (int h = 0; h < 4; ++h)
                    EXPECT_TRUE(test::sameBytes(h == x && v == y ? colour : P{}, picture.at(h, v)));
        }
    }
    picture.fill(P{});
    const test::Picture<P> before = picture;
    for (int32_t far : {INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(0, set(far, 1, &colour, &record));
        EXPECT_EQ(0, set(1, far, &colour, &record));
    }
    EXPECT_EQ(0, set(1, 1, nullptr, &record));
    EXPECT_EQ(0, set(1, 1, &colour, nullptr));
    record.data = nullptr;
    EXPECT_EQ(0, set(1, 1, &colour, &record));
    EXPECT_TRUE(before == picture);
}

TEST_F(Lines, APixelInsideIsSetAndOneOutsideIsNot) {
    setsOnePixel<RK_Pixel8>(RK_SetPixel8, {1, 2, 3, 4});
    setsOnePixel<RK_Pixel16>(RK_SetPixel16, {1, 2, 40000, 4});
    setsOnePixel<RK_PixelFloat>(RK_SetPixelFloat, {1, -2, 3.5f, 4});
}

TEST_F(Lines, AWorldOfAnotherDepthIsLeftAlone) {
    test::Picture<RK_Pixel8> shallow(4, 4);
    test::Picture<RK_Pixel16> deep(4, 4);
    RK_LayerDef at8 = shallow.record(), at16 = deep.record();
    const RK_Pixel8 p8 = {};
    const RK_Pixel16 p16 = {1, 1, 1, 1};
    const RK_PixelFloat pf = {1, 1, 1, 1};
    EXPECT_EQ(0, RK_SetPixel8(1, 1, &p8, &at16));
    EXPECT_EQ(0, RK_SetPixel16(3, 3, &p16, &at8));
    EXPECT_EQ(0, RK_SetPixelFloat(3, 3, &pf, &at8));
    EXPECT_TRUE(shallow.guardsWhole());
}

}  // namespace
