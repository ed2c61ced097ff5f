// The plain twins themselves, on values worked out by hand: a slip shared with the library would not show
// otherwise.
#include <gtest/gtest.h>

#include <algorithm>

#include "test/plain/PlainBodies.h"
#include "test/plain/PlainComposite.h"
#include "test/plain/PlainFill.h"
#include "test/plain/PlainIterate.h"
#include "test/plain/PlainModes.h"
#include "test/plain/Worlds.h"

namespace {

using plain::Int16;
using plain::Int8;

// One 8-bit pixel through a whole row of a mode.
RK_Pixel8 oneInRow(int mode, const RK_Pixel8& source, RK_Pixel8 on, uint8_t opacity = 255) {
    const RK_BlendingMode<RK_Pixel8> how{mode, 0, opacity, 0};
    EXPECT_EQ(plain::row<RK_Pixel8>(how, false, 1, &source, nullptr, &on), 0);
    return on;
}
RK_Pixel8 onePixel(int mode, const RK_Pixel8& source, const RK_Pixel8& on) {
    return plain::pixel<RK_Pixel8>(mode, source, 255, 255, on);
}
#define EXPECT_PIXEL(got, ...) EXPECT_EQ(test::show(got), test::show(RK_Pixel8{__VA_ARGS__}))

TEST(PlainTwins, ProductsAndQuotientsRoundAsStated) {
    EXPECT_EQ(Int8::mul(128, 255), 128);
    EXPECT_EQ(Int16::mul(1, 16384), 0);
    EXPECT_EQ(Int16::mul(3, 16384), 1);
    EXPECT_EQ(Int16::mul(32768, 32768), 32768);
    EXPECT_EQ(Int8::div(0, 0), 255);
    EXPECT_EQ(Int8::div(2, 1), 128);
    EXPECT_EQ(Int16::div(3, 1), 10923);
    EXPECT_EQ(Int16::div(3, 3), 32768);
    // Down and up by one at 16 bits are not mirror images.
    EXPECT_EQ(Int16::signedMul(-1, 16384), -1);
    EXPECT_EQ(Int16::signedMul(1, 16384), 0);
    EXPECT_EQ(Int8::keep(10 + Int8::signedMul(-10, 255)), 0);
}

TEST(PlainTwins, SoftLightCurvesBeginAndPeakAsStated) {
    const uint8_t a[] = {0, 3, 6, 9, 11, 14, 16, 19}, b[] = {0, 1, 2, 3, 4};
    EXPECT_TRUE(std::equal(std::begin(a), std::end(a), plain::softLightA().of8));
    EXPECT_TRUE(std::equal(std::begin(b), std::end(b), plain::softLightB().of8));
    EXPECT_EQ(*std::max_element(plain::softLightA().of8, plain::softLightA().of8 + 256), 64);
    EXPECT_EQ(*std::max_element(plain::softLightB().of8, plain::softLightB().of8 + 256), 64);
}

TEST(PlainTwins, ModesGiveTheWorkedExamples) {
    EXPECT_PIXEL(onePixel(RK_Xfer_Add, {0, 9, 9, 9}, {1, 127, 128, 200}), 1, 127, 128, 200);
    EXPECT_PIXEL(oneInRow(RK_Xfer_Add, {0, 9, 9, 9}, {1, 127, 128, 200}), 1, 0, 255, 255);
    EXPECT_PIXEL(onePixel(RK_Xfer_PremulOver, {0, 0, 0, 0}, {0, 10, 20, 30}), 0, 255, 255, 255);
    EXPECT_PIXEL(onePixel(RK_Xfer_Colour, {255, 4, 4, 0}, {255, 255, 255, 255}), 255, 255, 255, 251);
    EXPECT_PIXEL(onePixel(RK_Xfer_LighterColour, {255, 128, 128, 255}, {126, 0, 200, 200}), 255, 128, 128,
                 255);
    EXPECT_PIXEL(oneInRow(RK_Xfer_LighterColour, {255, 128, 128, 255}, {126, 0, 200, 200}), 255, 65, 164,
                 228);
    EXPECT_EQ(onePixel(RK_Xfer_AlphaAdd, {100, 1, 2, 3}, {100, 4, 5, 6}).alpha, 200);
    EXPECT_PIXEL(onePixel(RK_Xfer_Over, {100, 1, 2, 3}, {0, 4, 5, 6}), 100, 1, 2, 3);
    EXPECT_PIXEL(onePixel(RK_Xfer_Behind, {255, 1, 2, 3}, {255, 4, 5, 6}), 255, 4, 5, 6);
    EXPECT_EQ(onePixel(RK_Xfer_HardLight, {255, 255, 255, 255}, {255, 0, 0, 0}).red, 254);
    EXPECT_PIXEL(oneInRow(RK_Xfer_Multiply, {255, 7, 80, 200}, {0, 1, 2, 3}), 255, 7, 80, 200);
    EXPECT_EQ(oneInRow(RK_Xfer_StencilAlpha, {0, 0, 0, 0}, {77, 4, 5, 6}).alpha, 0);
    EXPECT_EQ(onePixel(RK_Xfer_StencilAlpha, {0, 0, 0, 0}, {77, 4, 5, 6}).alpha, 77);
    EXPECT_EQ(oneInRow(RK_Xfer_StencilLuma, {0, 0, 0, 0}, {77, 4, 5, 6}).alpha, 77);
    EXPECT_PIXEL(oneInRow(RK_Xfer_Copy, {255, 1, 2, 3}, {9, 9, 9, 9}, 0), 0, 1, 2, 3);
}

TEST(PlainTwins, MatteMixFadesByTheMatte) {
    const RK_BlendingMode<RK_Pixel8> how{RK_Xfer_MatteMix, 0, 3, 0};
    const RK_Pixel8 source{255, 200, 0, 10}, full{255, 0, 0, 0}, half{128, 0, 0, 0};
    RK_Pixel8 out{255, 0, 100, 10};
    plain::row<RK_Pixel8>(how, true, 1, &source, &half, &out);
    EXPECT_PIXEL(out, 255, 100, 50, 10);
    const RK_Pixel8 clear{0, 1, 2, 3};
    plain::row<RK_Pixel8>(how, true, 1, &clear, &full, &out);
    EXPECT_PIXEL(out, 0, 1, 2, 3);
}

TEST(PlainTwins, TheGeneratorNeverStandsAtZero) {
    uint32_t seed = 0;
    EXPECT_EQ(plain::random(seed), (0x7FFFFFFFu >> 7) & 0x7FFFu);
    EXPECT_EQ(seed, 0x7FFFFFFFu);
    seed = 44489;  // one times 3399 plus one times 48271
    plain::random(seed);
    EXPECT_EQ(seed, 51670u);
}

TEST(PlainTwins, DissolveMovesTheSeedOnAtEveryPixel) {
    uint32_t at_first = 1, after_one = 2;
    const bool first = 128u >= (plain::random(at_first) & 255u);
    const bool second = 128u >= (plain::random(after_one) & 255u);
    const RK_BlendingMode<RK_Pixel8> how{RK_Xfer_Dissolve, 1, 255, 0};
    const RK_Pixel8 drawn_twice[] = {{128, 9, 9, 9}, {128, 9, 9, 9}},
                    drawn_last[] = {{0, 9, 9, 9}, {128, 9, 9, 9}};
    RK_Pixel8 out[2] = {}, late[2] = {};
    plain::row<RK_Pixel8>(how, false, 1, drawn_twice, nullptr, out);
    plain::row<RK_Pixel8>(how, false, 2, drawn_last, nullptr, late);
    EXPECT_EQ(out[0].alpha, first ? 255 : 0);
    EXPECT_EQ(late[0].alpha, 0);
    EXPECT_EQ(late[1].alpha, second ? 255 : 0);
}

TEST(PlainTwins, FillsKeepAlphaUnclamped) {
    test::Picture<RK_Pixel16> picture(1, 1);
    const RK_PixelFloat colour{2.0f, 2.0f, -1.0f, 0.5f};
    plain::fill<RK_Pixel16, RK_PixelFloat>(&colour, nullptr, picture.record());
    EXPECT_EQ(test::show(picture.at(0, 0)), test::show(RK_Pixel16{0, 32768, 0, 16384}));
}

TEST(PlainTwins, AnInvertedMaskShowsAllButItself) {
    test::Picture<RK_Pixel8> src(3, 2), dst(3, 2), mask_picture(1, 1);
    src.fill({255, 1, 2, 3});
    mask_picture.fill({255, 255, 255, 255});
    RK_Mask mask{mask_picture.record(), 1, 1, RK_kMaskInvertedLuma};
    const RK_CompositeModePlus how(RK_Xfer_Over, 1.0f, nullptr, false, 0);
    plain::transferRect<RK_Pixel8>(nullptr, 0, nullptr, src.record(), how, &mask, 0, 0, dst.record());
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x)
            EXPECT_EQ(dst.at(x, y).alpha, x == 1 && y == 1 ? 0 : 255) << x << ", " << y;
}

TEST(PlainTwins, AnEmptyColumnRangeStillReportsItsRows) {
    const GEO_Rect rect{0, 4, 3, 8};
    const std::vector<plain::Visit> visits = plain::iterate(10, 1, nullptr, &rect, {4, 3});
    ASSERT_EQ(visits.size(), 3u);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(visits[size_t(i)].in, plain::Visit::Progress);
        EXPECT_EQ(visits[size_t(i)].x, 11 + i);
    }
}

}  // namespace
