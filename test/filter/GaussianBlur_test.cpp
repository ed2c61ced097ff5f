#include "RK/indep/filter/RK_GaussianBlur.h"

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "RK/indep/filter/RKp_GaussianLines.h"
#include "RK/indep/filter/RKp_GaussianValue.h"
#include "test/filter/Blurs.h"
#include "test/plain/Compare.h"

namespace {

using test::Blur;
using test::Canvas;
using test::kWhole;

template <class P>
class GaussianBlurDepth : public test::Tidy {};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(GaussianBlurDepth, Depths);
class GaussianBlur : public test::Tidy {};

Blur gaussian(float radius, uint32_t flags = RK_kBlurAllChannels) {
    Blur blur;
    blur.passes = 0;
    blur.radius = radius;
    blur.flags = flags;
    return blur;
}

std::vector<int> weightsOf(float radius, int& total) {
    std::vector<int> w = {255};
    total = 255;
    for (int i = 1; i <= static_cast<int>(std::ceil(radius)); ++i) {
        w.push_back(static_cast<int>(RKp_GaussianValue(i / (double{radius} + 1.0)) * 255.0));
        total += 2 * w.back();
    }
    return w;
}

// ---- Radii ----------------------------------------------------------------------------------------------

TEST_F(GaussianBlur, ARadiusOf0ReturnsItsInputAtDepth8) {
    for (const uint32_t flags : {15u, 31u, 1u, 6u}) {
        Canvas<RK_Pixel8> src(20, 20), dst(20, 20);
        src.random(1, false);
        EXPECT_EQ(0, gaussian(0, flags)(src, dst));
        EXPECT_TRUE(src.picture == dst.picture);
    }
}

TEST_F(GaussianBlur, OnePixelSpreadsByTheWeights) {
    for (const float radius : {0.5f, 1.0f, 2.5f, 6.0f}) {
        int total;
        const std::vector<int> w = weightsOf(radius, total);
        const int R = static_cast<int>(w.size()) - 1;
        Canvas<RK_Pixel8> src8(21, 1), dst8(21, 1);
        Canvas<RK_Pixel16> src16(21, 1), dst16(21, 1);
        Canvas<RK_PixelFloat> src32(21, 1), dst32(21, 1);
        src8(10, 0) = {255, 200, 0, 0};
        src16(10, 0) = {32768, 20001, 0, 0};
        src32(10, 0) = {1, 0.7f, -3, 0};
        EXPECT_EQ(0, gaussian(radius)(src8, dst8));
        EXPECT_EQ(0, gaussian(radius)(src16, dst16));
        EXPECT_EQ(0, gaussian(radius)(src32, dst32));
        for (int x = 0; x < 21; ++x) {
            const int weight = std::abs(x - 10) <= R ? w[static_cast<size_t>(std::abs(x - 10))] : 0;
            EXPECT_EQ(dst8(x, 0).red, (200 * weight + total / 2) / total) << x;
            // Depth 16 adds half of the weight, as a whole number; float adds nothing and is not clamped.
            const float sum = static_cast<float>(20001 * weight) + static_cast<float>(total / 2);
            EXPECT_EQ(dst16(x, 0).red, static_cast<uint16_t>(sum / static_cast<float>(total))) << x;
            EXPECT_EQ(dst32(x, 0).red, 0.7f * static_cast<float>(weight) / static_cast<float>(total)) << x;
            EXPECT_EQ(dst32(x, 0).green, -3 * static_cast<float>(weight) / static_cast<float>(total)) << x;
        }
    }
}

TEST_F(GaussianBlur, ARadiusBeyond16BitsWrapsAndOneBelow0IsOneTap) {
    Canvas<RK_Pixel8> src(9, 9), dst(9, 9), small(9, 9);
    src.random(1, false);
    for (const float radius : {32768.0f, 40000.0f, 65535.0f, 65536.0f}) {
        dst.random(2);
        EXPECT_EQ(0, gaussian(radius)(src, dst));
        EXPECT_TRUE(src.picture == dst.picture) << radius;
    }
    // 65537 has one tap on each side, of almost the weight of the middle: 1 / 65538 away from it.
    EXPECT_EQ(0, gaussian(65537.0f)(src, dst));
    for (int x = 1; x < 8; ++x) {
        const int sum = 255 * src(x, 4).red + 254 * (src(x - 1, 4).red + src(x + 1, 4).red);
        EXPECT_EQ(dst(x, 4).red, (sum + 763 / 2) / 763) << x;
    }
}

// ---- Edges ----------------------------------------------------------------------------------------------

TYPED_TEST(GaussianBlurDepth, AFlatPictureWithRenormalisedEdgesStaysFlatAndWithoutDarkens) {
    using C = decltype(TypeParam::alpha);
    const auto w = kWhole<TypeParam>;
    for (const float radius : {0.5f, 3.0f, 20.25f, 100.0f})
        for (const bool columns : {false, true}) {
            Canvas<TypeParam> src(61, 37), flat(61, 37), dark(61, 37);
            src.picture.fill({w, static_cast<C>(w / 2), static_cast<C>(w / 5), 0});
            EXPECT_EQ(0, gaussian(radius, 31).columns(columns)(src, flat));
            EXPECT_LE(apart(src, flat), sizeof(TypeParam) == 16 ? 1e-5 : 0) << radius;
            EXPECT_EQ(0, gaussian(radius, 15).columns(columns)(src, dark));
            EXPECT_LT(dark(0, 0).alpha, w);
            EXPECT_LT(dark(0, 0).alpha, dark(columns ? 0 : 30, columns ? 18 : 0).alpha);
        }
}

// ---- Channels -------------------------------------------------------------------------------------------

TYPED_TEST(GaussianBlurDepth, AChannelThatIsNotNamedStaysAndIsZeroWhereTheSourceHasNoPixel) {
    for (uint32_t flags = 0; flags < 32; ++flags)
        for (const bool columns : {false, true}) {
            Canvas<TypeParam> src(40, 40), all(60, 60), dst(60, 60);
            src.random(flags);
            all.at(-9, -9), dst.at(-9, -9);
            EXPECT_EQ(0, gaussian(2.5f, flags | 15).columns(columns)(src, all));
            EXPECT_EQ(0, gaussian(2.5f, flags).columns(columns)(src, dst));
            for (int y = 0; y < 60; ++y)
                for (int x = 0; x < 60; ++x) {
                    const bool inside = x >= 9 && x < 49 && y >= 9 && y < 49;
                    const TypeParam s = inside ? src(x - 9, y - 9) : TypeParam{}, &a = all(x, y);
                    const TypeParam want = {flags & 1 ? a.alpha : s.alpha, flags & 2 ? a.red : s.red,
                                            flags & 4 ? a.green : s.green, flags & 8 ? a.blue : s.blue};
                    ASSERT_TRUE(test::sameBytes(want, dst(x, y))) << flags << " at " << x << "," << y;
                }
        }
}

// ---- Places ---------------------------------------------------------------------------------------------

TYPED_TEST(GaussianBlurDepth, APartIsThatPartOfTheWholeAndTheRestIsZero) {
    for (const bool columns : {false, true})
        for (const uint32_t flags : {15u, 31u})
            for (const int32_t premultiplied : {0, 1}) {
                Canvas<TypeParam> src(50, 45), whole(90, 90), part(23, 17);
                src.random(1, premultiplied).at(20, 30);
                Blur blur = gaussian(7.5f, flags);
                blur.src_premultiplied = premultiplied;
                blur.columns(columns);
                EXPECT_EQ(0, blur(src, whole));
                for (int y = 0; y < 90; ++y)
                    for (int x = 0; x < 90; ++x) {
                        const int across = columns ? x - 20 : y - 30, along = columns ? y - 30 : x - 20;
                        const bool seen = across >= 0 && across < (columns ? 50 : 45) && along >= -8 &&
                                          along < (columns ? 45 : 50) + 8;
                        ASSERT_TRUE(seen || test::sameBytes(TypeParam{}, whole(x, y))) << x << "," << y;
                    }
                for (const auto& [x0, y0] : {std::pair<int, int>{10, 20}, {0, 0}, {60, 66}, {30, 70}}) {
                    part.random(7).at(x0, y0);
                    EXPECT_EQ(0, blur(src, part));
                    for (int y = 0; y < 17; ++y)
                        for (int x = 0; x < 23; ++x)
                            ASSERT_TRUE(test::sameBytes(whole(x0 + x, y0 + y), part(x, y)));
                }
                for (const int32_t far : {INT32_MAX, INT32_MIN, 1000000}) {
                    part.random(7).at(far, 31);
                    EXPECT_EQ(0, blur(src, part));
                    EXPECT_TRUE(part.picture == Canvas<TypeParam>(23, 17).picture);
                }
            }
}

TYPED_TEST(GaussianBlurDepth, ReadingRowsAndWritingColumnsTransposes) {
    for (const uint32_t flags : {15u, 31u, 9u})
        for (const int32_t premultiplied : {0, 1})
            for (const auto& [width, height] : {std::pair<int, int>{70, 67}, {5, 90}, {130, 3}}) {
                Canvas<TypeParam> src(width, height), rows(width, height), columns(height, width);
                src.random(11);
                Blur blur = gaussian(3.5f, flags);
                blur.src_premultiplied = blur.dst_premultiplied = premultiplied;
                EXPECT_EQ(0, blur(src, rows));
                const Canvas<TypeParam> want = transposed(rows);
                blur.dst_direction = 1;
                EXPECT_EQ(0, blur(src, columns));
                EXPECT_TRUE(columns.picture == want.picture);
                columns.random(1);
                blur.src_direction = 1;
                EXPECT_EQ(0, blur(transposed(src), columns));
                EXPECT_TRUE(columns.picture == want.picture);
            }
}

TYPED_TEST(GaussianBlurDepth, AWorldMayBeBlurredInPlaceThroughACopy) {
    for (const bool columns : {false, true})
        for (const int32_t premultiplied : {0, 1}) {
            Canvas<TypeParam> world(77, 71), want(77, 71);
            world.random(8).at(5, 6);
            want.at(5, 6);
            Blur blur = gaussian(4.25f);
            blur.src_premultiplied = blur.dst_premultiplied = premultiplied;
            blur.columns(columns);
            EXPECT_EQ(0, blur(world, want));
            blur.force_copy = 1;
            EXPECT_EQ(0, blur(world, world));
            EXPECT_TRUE(world.picture == want.picture);
        }
}

TYPED_TEST(GaussianBlurDepth, TwoOneAxisBlursCommuteWithinOneUnit) {
    Canvas<TypeParam> src(64, 48), rows(64, 48), columns(64, 48), a(64, 48), b(64, 48);
    src.random(9);
    EXPECT_EQ(0, gaussian(3.5f)(src, rows));
    EXPECT_EQ(0, gaussian(3.5f).columns()(rows, a));
    EXPECT_EQ(0, gaussian(3.5f).columns()(src, columns));
    EXPECT_EQ(0, gaussian(3.5f)(columns, b));
    EXPECT_LE(apart(a, b), sizeof(TypeParam) == 16 ? 1e-6 : 1);
}

// ---- Alpha ----------------------------------------------------------------------------------------------

TEST_F(GaussianBlur, AStraightPictureIsWeightedByItsAlpha) {
    int total;
    const std::vector<int> w = weightsOf(1, total);
    Canvas<RK_Pixel8> src(3, 1), dst(3, 1);
    src(0, 0) = {255, 100, 0, 0};
    src(1, 0) = {0, 255, 255, 255};
    src(2, 0) = {255, 200, 0, 0};
    Blur blur = gaussian(1);
    blur.src_premultiplied = blur.dst_premultiplied = 0;
    EXPECT_EQ(0, blur(src, dst));
    EXPECT_TRUE(test::sameBytes(
        RK_Pixel8{static_cast<uint8_t>((2 * 255 * w[1] + total / 2) / total), 150, 0, 0}, dst(1, 0)));
}

TYPED_TEST(GaussianBlurDepth, WhereNoAlphaIsTheNamedChannelsAreZeroAndOthersStay) {
    using C = decltype(TypeParam::alpha);
    const auto w = kWhole<TypeParam>;
    Canvas<TypeParam> src(9, 1), dst(9, 1);
    const TypeParam p = {0, w, static_cast<C>(w / 2), w};
    src.picture.fill(p);
    for (uint32_t flags = 0; flags < 16; ++flags) {
        Blur blur = gaussian(2, flags);
        blur.dst_premultiplied = 0;
        dst.random(1);
        EXPECT_EQ(0, blur(src, dst));
        const TypeParam want = {0, flags & 2 ? C{0} : p.red, flags & 4 ? C{0} : p.green,
                                flags & 8 ? C{0} : p.blue};
        EXPECT_TRUE(test::sameBytes(want, dst(4, 0))) << flags;
    }
}

TEST_F(GaussianBlur, WithAlphaNotNamedColoursAreDividedByThePixelsOwnAlpha) {
    int total;
    const std::vector<int> w = weightsOf(1, total);
    Canvas<RK_Pixel8> src(3, 1), dst(3, 1);
    src(0, 0) = {100, 50, 0, 0};
    src(1, 0) = {50, 20, 50, 0};
    Blur blur = gaussian(1, RK_kBlurRed | RK_kBlurGreen);
    blur.dst_premultiplied = 0;
    EXPECT_EQ(0, blur(src, dst));
    const int Sa = 50 * total, red = 50 * w[1] + 20 * w[0];
    EXPECT_EQ(dst(1, 0).red, (red * 255 + Sa / 2) / Sa);
    EXPECT_EQ(dst(1, 0).alpha, 50);
    EXPECT_EQ(dst(0, 0).green, (50 * w[1] * 255 + 100 * total / 2) / (100 * total));
}

// The weight of all taps times a channel of 16 bits leaves 32 bits there.
TYPED_TEST(GaussianBlurDepth, AWideKernelDividesByAnAlphaThatIsNotNamedToo) {
    using C = decltype(TypeParam::alpha);
    const auto w = kWhole<TypeParam>;
    Canvas<TypeParam> src(1200, 1), dst(1200, 1);
    const TypeParam p = {w, static_cast<C>(w / 2), static_cast<C>(w / 5), 0};
    src.picture.fill(p);
    for (const float radius : {300.0f, 900.0f}) {
        Blur blur = gaussian(radius, 14 | RK_kBlurRenormalise);
        blur.dst_premultiplied = 0;
        EXPECT_EQ(0, blur(src, dst));
        EXPECT_LE(apart(src, dst), sizeof(TypeParam) == 16 ? 1e-5 : 0) << radius;
    }
}

TEST_F(GaussianBlur, DividedColoursAreHeldToFullAtDepths8And16Only) {
    Canvas<RK_Pixel8> src8(1, 1), dst8(1, 1);
    src8(0, 0) = {100, 101, 200, 50};
    Canvas<RK_Pixel16> src16(1, 1), dst16(1, 1);
    src16(0, 0) = {10000, 10001, 65535, 5000};
    Canvas<RK_PixelFloat> src32(1, 1), dst32(1, 1);
    src32(0, 0) = {0.25f, 0.5f, -1, 0.125f};
    Blur blur = gaussian(0);
    blur.dst_premultiplied = 0;
    EXPECT_EQ(0, blur(src8, dst8));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{100, 255, 255, 128}, dst8(0, 0)));
    EXPECT_EQ(0, blur(src16, dst16));
    EXPECT_TRUE(test::sameBytes(RK_Pixel16{10000, 32768, 32768, 16384}, dst16(0, 0)));
    EXPECT_EQ(0, blur(src32, dst32));
    EXPECT_TRUE(test::sameBytes(RK_PixelFloat{0.25f, 2, -4, 0.5f}, dst32(0, 0)));
}

// ---- The vector body ------------------------------------------------------------------------------------

template <class P>
void compare(test::Random& r) {
    const int length = 1 + static_cast<int>(r.below(r.below(4) == 0 ? 300 : 50)),
              lines = 1 + static_cast<int>(r.below(r.below(2) ? 1 : 20)),
              out_length = 1 + static_cast<int>(r.below(80));
    const bool columns = r.below(2) != 0, out_columns = r.below(2) != 0;
    Canvas<P> in(columns ? lines : length, columns ? length : lines);
    Canvas<P> want(out_columns ? lines : out_length, out_columns ? out_length : lines);
    for (int y = 0; y < in.height(); ++y)
        for (int x = 0; x < in.width(); ++x)
            in(x, y) = r.below(50) == 0 ? test::wildPixel<P>(r) : test::pixel<P>(r);
    want.random(r.next());
    Canvas<P> got(want);

    static const float radii[] = {0.0f,  0.3f,  1.0f,   2.0f,     3.7f,    8.0f,
                                  20.0f, 61.5f, 250.0f, 16001.0f, 32767.0f};
    const float radius = radii[r.below(r.below(9) == 0 ? 11 : 8)];
    int total;
    const std::vector<int> w = weightsOf(radius, total);
    std::vector<int32_t> within(w.size());
    for (size_t i = 1; i < w.size(); ++i) within[i] = within[i - 1] + w[i];

    RKp_GaussianLines<P> run = {};
    const auto pitch = [](const Canvas<P>& c) {
        return static_cast<ptrdiff_t>(c.world->record.rowbytes / static_cast<int32_t>(sizeof(P)));
    };
    run.in = in.picture.row(0);
    run.in_step = columns ? pitch(in) : 1;
    run.in_across = columns ? 1 : pitch(in);
    run.out_step = out_columns ? pitch(want) : 1;
    run.out_across = out_columns ? 1 : pitch(want);
    run.in_length = length, run.out_length = out_length, run.lines = lines;
    run.shift = static_cast<int64_t>(r.below(70)) - 40;
    run.weights = w.data(), run.within = within.data();
    run.reach = static_cast<int32_t>(w.size()) - 1, run.total = total;
    run.flags = r.below(3) == 0 ? 15 + 16 * r.below(2) : r.below(32);
    run.divide = r.below(3) == 0;
    run.out = want.picture.row(0);
    RKp_GaussianPass(run);
    run.out = got.picture.row(0);
    RKp_GaussianPass_SSE2(run);
    ASSERT_TRUE(got.picture.guardsWhole() && want.picture.guardsWhole());
    for (int y = 0; y < want.height(); ++y) {
        const int x = test::firstDifference(&want(0, y), &got(0, y), want.width());
        ASSERT_EQ(x, -1) << "at " << x << "," << y << " radius " << radius << " flags " << run.flags << ": "
                         << test::show(want(x, y)) << " and " << test::show(got(x, y));
    }
}

TYPED_TEST(GaussianBlurDepth, TheVectorsGiveThePlainBodysBytes) {
    test::Random r(sizeof(TypeParam));
    const int rounds = test::amount(1500);
    for (int i = 0; i < rounds; ++i) ASSERT_NO_FATAL_FAILURE(compare<TypeParam>(r)) << i;
}

}  // namespace
