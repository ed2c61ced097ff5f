#include "RK/indep/sample/RK_AreaSample.h"

#include <gtest/gtest.h>

#include "test/Pixels.h"

namespace {

constexpr int32_t at(double v) { return static_cast<int32_t>(v * 65536); }

template <class P>
struct Source {
    Source(int width, int height, double rx, double ry) : picture(width, height), record(picture.record()) {
        pb.src = &record;
        pb.x_radius = at(rx);
        pb.y_radius = at(ry);
        pb.area = at(4 * rx * ry);
    }
    P sample(RK_Sampler<P>* sampler, double x, double y) const {
        P out;
        std::memset(&out, 0x77, sizeof out);
        EXPECT_EQ(0, sampler(nullptr, at(x), at(y), &pb, &out));
        return out;
    }
    test::Picture<P> picture;
    RK_LayerDef record;
    RK_SampPB pb{};
};

TEST(NNSample, RoundsToTheNearestPixelWithTiesUpwardAndIsZeroOutside) {
    Source<RK_Pixel8> s(2, 1, 0, 0);
    s.picture.at(0, 0) = {255, 1, 1, 1};
    s.picture.at(1, 0) = {255, 2, 2, 2};
    EXPECT_EQ(1, s.sample(RK_NNSample, 0.49, 0).red);
    EXPECT_EQ(2, s.sample(RK_NNSample, 0.5, 0).red);
    EXPECT_EQ(1, s.sample(RK_NNSample, -0.5, 0).red);
    EXPECT_EQ(0, s.sample(RK_NNSample, -0.51, 0).alpha);
    EXPECT_EQ(0, s.sample(RK_NNSample, 1.5, 0).alpha);
    RK_Pixel8 out;
    for (int32_t far : {INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(0, RK_NNSample(nullptr, far, 0, &s.pb, &out));
        EXPECT_EQ(0, out.alpha);
    }
}

TEST(AreaSample, RadiiOfExactlyHalfAPixelAreOnePointSample) {
    Source<RK_Pixel8> s(3, 3, 0.5, 0.5);
    s.picture.fillRandom(1);
    s.picture.at(1, 1) = {200, 11, 22, 33};
    const RK_Pixel8 p = s.sample(RK_AreaSample_Straight, 1, 1);
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{200, 11, 22, 33}, p));
}

TEST(AreaSample, AFootprintOutsideTheWorldIsZero) {
    Source<RK_Pixel8> s(3, 3, 2, 2);
    s.picture.fill({255, 9, 9, 9});
    EXPECT_EQ(0, s.sample(RK_AreaSample_Straight, -3, 1).alpha);
    EXPECT_EQ(0, s.sample(RK_AreaSample_Straight, 1, 300).alpha);
    EXPECT_EQ(0, s.sample(RK_AreaSample_Premul, -3, 1).alpha);
}

TEST(AreaSample, AFootprintHalfOutsideAnOpaqueWorldHasHalfAlphaAndItsColour) {
    Source<RK_Pixel8> s8(8, 8, 2, 2);
    s8.picture.fill({255, 100, 50, 25});
    const RK_Pixel8 p = s8.sample(RK_AreaSample_Straight, -0.5, 3.5);
    EXPECT_NEAR(128, p.alpha, 1);
    EXPECT_EQ(100, p.red);
    Source<RK_PixelFloat> f(8, 8, 2, 2);
    f.picture.fill({1, 3, 2, 1});
    RK_PixelFloat q;
    EXPECT_EQ(0, RK_AreaSample_CPlusPlus<RK_PixelFloat>(nullptr, at(-0.5), at(3.5), &f.pb, &q));
    EXPECT_EQ(0.5f, q.alpha);
    EXPECT_EQ(3.0f, q.red);  // float colours are not clamped
}

TEST(AreaSample, RadiiOfOneAndAHalfCoverThreeWholeColumnsAndRows) {
    Source<RK_Pixel8> s(5, 5, 1.5, 1.5);
    s.picture.fill({255, 0, 0, 0});
    for (int y = 1; y <= 3; ++y)
        for (int x = 1; x <= 3; ++x) s.picture.at(x, y) = {255, 90, 90, 90};
    EXPECT_EQ(90, s.sample(RK_AreaSample_Straight, 2, 2).red);
    s.picture.at(3, 3) = {255, 99, 90, 90};
    EXPECT_EQ(91, s.sample(RK_AreaSample_Straight, 2, 2).red);
}

TEST(AreaSample, TransparentPixelsDoNotDiluteColour) {
    Source<RK_Pixel16> s(4, 4, 2, 2);
    s.picture.at(1, 1) = {32768, 20000, 10000, 5000};
    const RK_Pixel16 p = s.sample(RK_AreaSample_Straight16, 1.5, 1.5);
    EXPECT_EQ(2048, p.alpha);
    EXPECT_EQ(20000, p.red);
}

TEST(AreaSample, OneDimensionalRunsHonourTheFractionAcross) {
    Source<RK_Pixel8> s(6, 2, 1.5, 0.5);
    for (int x = 0; x < 6; ++x) {
        s.picture.at(x, 0) = {255, 100, 100, 100};
        s.picture.at(x, 1) = {255, 200, 200, 200};
    }
    EXPECT_EQ(150, s.sample(RK_AreaSample_Straight, 2, 0.5).red);
    EXPECT_EQ(100, s.sample(RK_AreaSample_Straight, 2, 0).red);
}

TEST(AreaSample, ThePremultipliedFormWithoutAnAreaGivesTheZeroPixel) {
    Source<RK_Pixel8> s(4, 4, 1, 1);
    s.picture.fill({255, 255, 255, 255});
    EXPECT_EQ(255, s.sample(RK_AreaSample_Premul, 1.5, 1.5).red);
    s.pb.area = 0;
    EXPECT_EQ(0, s.sample(RK_AreaSample_Premul, 1.5, 1.5).alpha);
}

// The tests for zero look at sums that are not rounded yet.
TEST(AreaSample, AnAlphaThatRoundsToZeroKeepsItsColour) {
    Source<RK_Pixel8> s8(4, 4, 2, 2);
    s8.picture.at(1, 1) = {7, 200, 100, 50};
    for (RK_Sampler<RK_Pixel8>* const sampler : {RKp_AreaSample8_Static, RKp_AreaSample8_Portable})
        EXPECT_TRUE(test::sameBytes(RK_Pixel8{0, 200, 100, 50}, s8.sample(sampler, 1.5, 1.5)));
    // The integers of the premultiplied form divide first.
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{}, s8.sample(RK_AreaSample_Premul, 1.5, 1.5)));
    Source<RK_Pixel16> s16(4, 4, 2, 2);
    s16.picture.at(1, 1) = {7, 20000, 100, 50};
    for (RK_Sampler<RK_Pixel16>* const sampler : {RKp_AreaSample16_Static, RKp_AreaSample16_Portable})
        EXPECT_TRUE(test::sameBytes(RK_Pixel16{0, 20000, 100, 50}, s16.sample(sampler, 1.5, 1.5)));
}

// Half of alpha 2 and half of 3: slot 5 without SSE2 takes the even one, the others go up.
TEST(AreaSample, TiesRoundToEvenUpOrAwayByForm) {
    Source<RK_Pixel8> s8(2, 2, 1, 1);
    s8.picture.fill({2, 10, 10, 10});
    s8.picture.at(0, 0) = s8.picture.at(1, 0) = {3, 10, 10, 10};
    EXPECT_EQ(2, s8.sample(RKp_AreaSample8_Static, 0.5, 0.5).alpha);
    EXPECT_EQ(3, s8.sample(RKp_AreaSample8_Portable, 0.5, 0.5).alpha);
    Source<RK_Pixel16> s16(2, 2, 1, 1);
    s16.picture.fill({2, 10, 10, 10});
    s16.picture.at(0, 0) = s16.picture.at(1, 0) = {3, 10, 10, 10};
    EXPECT_EQ(3, s16.sample(RKp_AreaSample16_Static, 0.5, 0.5).alpha);
    EXPECT_EQ(3, s16.sample(RKp_AreaSample16_Portable, 0.5, 0.5).alpha);
}

TEST(AreaSample, HugeRadiiAndNonsenseSizesAreSafe) {
    Source<RK_Pixel8> s(3, 3, 1, 1);
    s.picture.fill({255, 7, 7, 7});
    RK_Pixel8 out;
    for (int32_t radius : {INT32_MIN, -65536, 0, INT32_MAX}) {
        for (int32_t position : {INT32_MIN, 0, INT32_MAX}) {
            for (int32_t width : {-5, 0, 3}) {
                s.record.width = width;
                s.pb.x_radius = radius;
                s.pb.y_radius = at(1);
                EXPECT_EQ(0, RK_AreaSample_Straight(nullptr, position, position, &s.pb, &out));
                EXPECT_EQ(0, RK_AreaSample_Premul(nullptr, position, position, &s.pb, &out));
                s.pb.y_radius = radius;
                EXPECT_EQ(0, RK_AreaSample_Straight(nullptr, position, position, &s.pb, &out));
                EXPECT_EQ(0, RK_AreaSample_Premul(nullptr, position, position, &s.pb, &out));
            }
        }
    }
}

}  // namespace
