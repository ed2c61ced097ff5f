// The plain twins of filters and masks themselves, on values worked out by hand: a slip shared with the
// library would not show otherwise.
#include <gtest/gtest.h>

#include "test/plain/Worlds.h"
#include "test/plain/filter/PlainBlend.h"
#include "test/plain/filter/PlainBlur.h"
#include "test/plain/filter/PlainConvolve.h"
#include "test/plain/filter/PlainDraw.h"
#include "test/plain/filter/PlainGuess.h"
#include "test/plain/filter/PlainMaskBlur.h"
#include "test/plain/filter/PlainMaskMerge.h"
#include "test/plain/filter/PlainTiles.h"

namespace {

using test::Picture;

// A row of grey levels in every channel.
template <class P>
Picture<P> row(std::initializer_list<int> levels) {
    Picture<P> p(static_cast<int>(levels.size()), 1);
    int x = 0;
    for (const int v : levels) {
        const auto c = static_cast<RK_Channel<P>>(v);
        p.at(x++, 0) = {c, c, c, c};
    }
    return p;
}
template <class P>
std::vector<int> alphas(const Picture<P>& p) {
    std::vector<int> v;
    for (int x = 0; x < p.width(); ++x) v.push_back(static_cast<int>(p.at(x, 0).alpha));
    return v;
}
using Levels = std::vector<int>;

plain::Blur keeping(float radius, int passes, uint32_t flags) {
    return {radius, passes, flags, 0, 1, 0, 1, 0};
}
template <class P>
Levels blurred(bool box, const plain::Blur& b, std::initializer_list<int> levels, int dst_origin = 0) {
    Picture<P> src = row<P>(levels), dst = row<P>(levels);
    RK_LayerDef to = dst.record();
    to.origin_x = dst_origin;
    if (box)
        plain::boxBlur<P>(b, src.record(), to);
    else
        plain::gaussianBlur<P>(b, src.record(), to);
    return alphas(dst);
}

TEST(PlainFilterTwins, BoxesSpreadAsTheirWindowsSay) {
    EXPECT_EQ(blurred<RK_Pixel8>(true, keeping(0, 1, 15), {9, 200, 3}), (Levels{9, 200, 3}));
    EXPECT_EQ(blurred<RK_Pixel8>(true, keeping(1, 1, 15), {0, 0, 90, 0, 0}), (Levels{0, 30, 30, 30, 0}));
    EXPECT_EQ(blurred<RK_Pixel8>(true, keeping(1.5f, 1, 15), {0, 0, 80, 0, 0}), (Levels{10, 20, 20, 20, 10}));
    EXPECT_EQ(blurred<RK_Pixel16>(true, keeping(1.5f, 1, 15), {0, 0, 80, 0, 0}),
              (Levels{10, 20, 20, 20, 10}));
    EXPECT_EQ(blurred<RK_Pixel8>(true, keeping(1, 2, 15), {0, 0, 90, 0, 0}), (Levels{10, 20, 30, 20, 10}));
    // Edges fade, or stay when the window is cut to the line.
    EXPECT_EQ(blurred<RK_Pixel8>(true, keeping(1, 1, 15), {90, 90, 90}), (Levels{60, 90, 60}));
    EXPECT_EQ(blurred<RK_Pixel8>(true, keeping(1, 1, 31), {90, 90, 90}), (Levels{90, 90, 90}));
    EXPECT_EQ(blurred<RK_Pixel8>(true, keeping(1, 1, 15), {90, 90, 90}, 1), (Levels{90, 60, 30}));
    // Alpha not flagged keeps the centre.
    EXPECT_EQ(blurred<RK_Pixel8>(true, keeping(1, 1, 14), {1, 90, 2}), (Levels{1, 90, 2}));
}
TEST(PlainFilterTwins, BoxesDivideByWhatFellIn) {
    plain::Blur b = keeping(1, 1, 15);
    b.dst_premultiplied = 0;
    Picture<RK_Pixel8> src(3, 1), dst(3, 1);
    src.at(1, 0) = {150, 75, 150, 0};
    plain::boxBlur<RK_Pixel8>(b, src.record(), dst.record());
    for (int x = 0; x < 3; ++x) EXPECT_EQ(test::show(dst.at(x, 0)), test::show(RK_Pixel8{50, 128, 255, 0}));
    b.src_premultiplied = 0;
    plain::boxBlur<RK_Pixel8>(b, src.record(), dst.record());
    EXPECT_EQ(test::show(dst.at(0, 0)), test::show(RK_Pixel8{50, 75, 150, 0}));
}
TEST(PlainFilterTwins, GaussiansWeighAsTheirCurveSays) {
    EXPECT_EQ(plain::gaussianValue(0), 1.0);
    EXPECT_NEAR(plain::gaussianValue(1), 0.0, 1e-3);
    EXPECT_EQ(plain::gaussianValue(1.0001), 0.0);
    EXPECT_EQ(plain::gaussianKernel(1, 3, 1.0), (std::vector<int32_t>{192, 380, 192}));
    EXPECT_EQ(plain::gaussianKernel(1, 1, 1.0), (std::vector<int32_t>{129, 255, 129}));
    EXPECT_EQ(plain::gaussianKernel(1, 0, 1.0).size(), 9u);
    EXPECT_EQ(blurred<RK_Pixel8>(false, keeping(0, 1, 15), {9, 200, 3}), (Levels{9, 200, 3}));
    // Weights 129, 255, 129 of 513.
    EXPECT_EQ(blurred<RK_Pixel8>(false, keeping(1, 1, 15), {0, 0, 200, 0, 0}), (Levels{0, 50, 99, 50, 0}));
    EXPECT_EQ(blurred<RK_Pixel8>(false, keeping(1, 1, 31), {80, 80, 80}), (Levels{80, 80, 80}));
    EXPECT_EQ(blurred<RK_Pixel8>(false, keeping(1, 1, 15), {80, 80, 80}), (Levels{60, 80, 60}));
}

TEST(PlainFilterTwins, ConvolutionDividesWrapsAndSkips) {
    const auto done = [](uint32_t flags, int size, const std::vector<int32_t>& k,
                         std::initializer_list<int> levels) {
        Picture<RK_Pixel8> src = row<RK_Pixel8>(levels), dst = row<RK_Pixel8>(levels);
        const int32_t* const kernels[4] = {k.data(), k.data(), k.data(), k.data()};
        plain::convolve<RK_Pixel8>(src.record(), flags, size, kernels, dst.record(), 1);
        return alphas(dst);
    };
    EXPECT_EQ(done(0, 1, {255}, {9, 200, 3}), (Levels{9, 200, 3}));
    EXPECT_EQ(done(plain::kKernelNormalise, 3, std::vector<int32_t>(9, 1), {90, 90, 90}),
              (Levels{20, 30, 20}));
    EXPECT_EQ(done(plain::kKernelRow | plain::kKernelNormalise, 3, {-1, 2, -1}, {10, 20, 50}),
              (Levels{0, 0, 80}));
    EXPECT_EQ(done(plain::kKernelRow | plain::kKernelNormalise | plain::kKernelNoClamp, 3, {-1, 2, -1},
                   {10, 20, 50}),
              (Levels{0, 236, 80}));
    // Not flipped; a negative divisor turns the sign; a column on one row meets its middle alone.
    EXPECT_EQ(done(plain::kKernelRow | plain::kKernelNormalise, 3, {-1, 0, 0}, {10, 20, 50}),
              (Levels{0, 10, 20}));
    EXPECT_EQ(done(0x21 | plain::kKernelNormalise, 3, {7, 1, -7}, {10, 20, 50}), (Levels{10, 20, 50}));
    EXPECT_EQ(plain::wrapped(-int64_t{INT32_MIN}), INT32_MIN);
}
TEST(PlainFilterTwins, SpotsMixByTheirKernel) {
    Picture<RK_Pixel8> p = row<RK_Pixel8>({10, 20, 50});
    const uint32_t k[] = {0, 255, 51};
    plain::paintSpot(1, 0, plain::kKernelRow, 3, k, {100, 1, 1, 1}, p.record());
    EXPECT_EQ(alphas(p), (Levels{10, 100, 60}));
    plain::paintSpot(-1, 0, plain::kKernelRow, 3, k, {0, 1, 1, 1}, p.record());
    EXPECT_EQ(alphas(p), (Levels{8, 100, 60}));
}

TEST(PlainFilterTwins, MaskModesCombineAsNamed) {
    plain::Noise none{};
    const auto of8 = [&](int mode, int s, int d) {
        return static_cast<int>(plain::combined<plain::Int8>(mode, s, d, none));
    };
    EXPECT_EQ(of8(1, 100, 100), 161);
    EXPECT_EQ(of8(2, 128, 50), 25);
    EXPECT_EQ(of8(3, 128, 50), 25);
    EXPECT_EQ(of8(4, 128, 50), 128);
    EXPECT_EQ(of8(5, 128, 50), 50);
    EXPECT_EQ(of8(6, 50, 128), 78);
    EXPECT_EQ(of8(7, 128, 50), 178);
    EXPECT_EQ(of8(1, 0, 77), 77);
    EXPECT_EQ(of8(7, 200, 200), 255);
    const uint32_t table[] = {0x1FF, 0};
    plain::Noise noise{table, table, table + 2};
    EXPECT_EQ(plain::combined<plain::Int8>(-1, 155, 154, noise), 216);  // 100 * 101 + 0 over 255 is 39
    EXPECT_EQ(plain::combined<plain::Int8>(-1, 155, 154, noise), 215);  // 100 * 101 + 255 is 40
    EXPECT_EQ(noise.cursor, table);
    EXPECT_EQ(plain::weighted<plain::Int8>(-1, 255, 100, 128, 255, noise), 127);  // 255 * 28 + 0 over 255
    EXPECT_EQ(plain::weighted<plain::Int16>(-1, 32768, 100, 50, 32768, noise), 100);
    EXPECT_EQ(plain::weighted<plain::Int8>(3, 100, 200, 0, 128, noise), 250);
}
TEST(PlainFilterTwins, MasksMeetWhereTheyAreMoved) {
    const plain::Mask src(10, 8, 8), dst(6, 5, 8);
    const plain::Meeting m = plain::meeting({1, 2, 20, 20}, {-1, 3}, src, src, dst);
    EXPECT_EQ(m.top, 0);  // row 2 of the source
    EXPECT_EQ(m.left, 3);
    EXPECT_EQ(m.bottom, 5);
    EXPECT_EQ(m.right, 6);
    EXPECT_EQ(m.dy, -2);
    EXPECT_EQ(m.dx, 1);
}
TEST(PlainFilterTwins, MasksMultiplyAlpha) {
    EXPECT_EQ(plain::mergedAlpha(uint8_t{255}, uint8_t{77}), 77);
    EXPECT_EQ(plain::mergedAlpha(uint8_t{128}, uint8_t{255}), 128);
    EXPECT_EQ(plain::mergedAlpha(uint8_t{255}, uint16_t{32768}), 32768);
    EXPECT_EQ(plain::mergedAlpha(uint8_t{0}, uint16_t{32768}), 0);
    EXPECT_EQ(plain::mergedAlpha(uint16_t{16384}, uint16_t{3}), 1);
    EXPECT_EQ(plain::mergedAlpha(uint16_t{16384}, 0.5f), 0.25f);
    EXPECT_EQ(plain::mergedAlpha(uint8_t{51}, 1.0f), 0.2f);
    const uint8_t mask[] = {9, 255, 255, 0};
    Picture<RK_Pixel8> p = row<RK_Pixel8>({10, 20, 30, 40});
    plain::mergeRow(1, 2, mask, p.row(0));
    EXPECT_EQ(alphas(p), (Levels{0, 20, 30, 40}));
    Picture<RK_Pixel8> out = row<RK_Pixel8>({1, 2, 3, 4});
    plain::trackMatte<RK_Pixel8>(4, p.row(0), -1, 2, 1, out.row(0));
    EXPECT_EQ(alphas(out), (Levels{235, 255, 255, 255}));
}

TEST(PlainFilterTwins, MaskLinesWiden) {
    const std::vector<uint8_t> line(9, 90);
    // Radius 1: half of it rounds to 1 (0.5 up), a window of 3.
    const auto box = plain::boxScan(1, 4, 6, 0x10000, line.data());
    EXPECT_EQ(box.first, 3);
    EXPECT_EQ(box.samples, (std::vector<uint8_t>{30, 60, 60, 30}));
    const auto whole = plain::gaussianScan(0, 9, 0x10000, line.data());
    EXPECT_EQ(whole.samples.size(), 10u);
    EXPECT_EQ(whole.samples[4], 90);
    EXPECT_EQ(whole.samples[9], 90 * 192 / 764);
    // r is 5.4, widened by 3.24 and 3, no further than column 0.
    const auto repeated = plain::boxScan(0, 4, 6, 0x56666, line.data());
    EXPECT_EQ(repeated.first, 0);
    EXPECT_EQ(repeated.samples.size(), 12u);
}

TEST(PlainFilterTwins, BlendsWeighByAlpha) {
    EXPECT_EQ(plain::blendStraight<RK_Pixel8>({0, 1, 2, 3}, {255, 10, 20, 30}, 32768, 32768).alpha, 128);
    EXPECT_EQ(plain::blendStraight<RK_Pixel8>({0, 1, 2, 3}, {255, 10, 20, 30}, 32768, 32768).green, 20);
    EXPECT_EQ(plain::blendPremul<RK_Pixel8>({0, 1, 2, 4}, {255, 10, 20, 30}, 49152, 16384).blue, 11);
    EXPECT_EQ(plain::towards(uint8_t{100}, uint8_t{100}, 255, 255), 100);
    EXPECT_EQ(plain::towards(uint8_t{100}, uint8_t{0}, 255, 255), 0);
    EXPECT_EQ(plain::towards(uint8_t{0}, uint8_t{255}, 255, 255), 255);
    EXPECT_EQ(plain::towards(uint16_t{100}, uint16_t{0}, 32768, 32768), 0);
}

TEST(PlainFilterTwins, LinesSnapTheirLongerWay) {
    Picture<RK_Pixel8> p(5, 3);
    const double start[] = {0.6, 0.0}, end[] = {3.4, 2.0};
    plain::drawLine<RK_Pixel8>(start, end, {1, 1, 1, 1}, p.record());
    std::string drawn;
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 5; ++x) drawn += p.at(x, y).alpha == 255 ? '#' : '.';
    EXPECT_EQ(drawn, ".#.....#.....#.");  // x 1 to 3: y 0.286, 1.0, 1.714
}

TEST(PlainFilterTwins, TextAdvancesLineByLine) {
    const auto glyphs = plain::layOut("a\xff\tb\r\nc", -3, 0, 100, 100);
    ASSERT_EQ(glyphs.size(), 1u);  // the first line begins left of the world, and so does the second
    EXPECT_EQ(glyphs[0].code, 'b');
    EXPECT_EQ(glyphs[0].x, 27);
    EXPECT_EQ(plain::layOut("ab", 0, 0, 13, 11).size(), 2u);
    EXPECT_EQ(plain::layOut("ab", 0, 0, 12, 11).size(), 1u);
    EXPECT_EQ(plain::layOut("ab", 0, 0, 13, 10).size(), 0u);
}
TEST(PlainFilterTwins, OutlinesFollowTheAlphaAndCoarsenUntilTheyFit) {
    Picture<RK_Pixel8> p(8, 8);
    for (int y = 0; y < 8; ++y)
        for (int x = 4; x < 8; ++x) p.at(x, y).alpha = 128;
    std::vector<Point> points;
    ASSERT_TRUE(plain::outline(p.record(), 1, 100, false, nullptr, points));
    EXPECT_EQ(points.size(), 12u);  // columns 3 and 4, rows 1 to 6
    ASSERT_TRUE(plain::outline(p.record(), 0, 4, true, nullptr, points));
    EXPECT_EQ(points.size(), 4u);  // the corners alone
    EXPECT_EQ(points[2].v, 8);
    EXPECT_FALSE(plain::outline(p.record(), 1, 3, true, nullptr, points));
}
TEST(PlainFilterTwins, TilesAreAskedForOnceInRuns) {
    plain::Tiles tiles(10, 35, 15);
    ASSERT_EQ(tiles.makeValid({0, 12, 1, 13}).size(), 1u);
    const auto runs = tiles.makeValid({5, 0, 11, 35});
    ASSERT_EQ(runs.size(), 3u);
    EXPECT_EQ(runs[1].left, 20);
    EXPECT_EQ(runs[1].right, 35);
    EXPECT_EQ(runs[2].bottom, 15);
    EXPECT_TRUE(tiles.makeValid({0, 0, 15, 35}).empty());
}
TEST(PlainFilterTwins, GuessesFollowTheClearPixels) {
    const auto kind = [](std::initializer_list<RK_Pixel8> pixels) {
        Picture<RK_Pixel8> p(static_cast<int>(pixels.size()), 1);
        std::copy(pixels.begin(), pixels.end(), p.row(0));
        return plain::guessAlpha(p.record()).kind;
    };
    EXPECT_EQ(kind({{0, 9, 9, 9}}), 2);
    EXPECT_EQ(kind({{255, 9, 9, 9}, {255, 8, 8, 8}}), 0);
    EXPECT_EQ(kind({{0, 0, 0, 0}, {100, 100, 9, 0}}), 1);
    EXPECT_EQ(kind({{0, 0, 0, 0}, {100, 101, 9, 0}}), 0);
    EXPECT_EQ(kind({{0, 255, 255, 255}, {10, 245, 250, 255}}), 1);
    EXPECT_EQ(kind({{0, 255, 255, 255}, {10, 244, 250, 255}}), 0);
    EXPECT_EQ(kind({{0, 90, 90, 90}, {10, 80, 100, 90}, {255, 0, 0, 0}}), 1);
    EXPECT_EQ(kind({{0, 90, 90, 90}, {10, 80, 100, 90}}), 0);  // one visible colour
}

}  // namespace
