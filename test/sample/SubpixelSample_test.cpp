#include "RK/indep/sample/RK_SubpixelSample.h"

#include <gtest/gtest.h>

#include <cfenv>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "test/Pixels.h"

namespace {

constexpr int32_t at(double v) { return static_cast<int32_t>(v * 65536); }

// A picture with its sampler block.
template <class P>
struct Source {
    explicit Source(int width, int height) : picture(width, height), record(picture.record()) {
        pb.src = &record;
    }
    P sample(RK_Sampler<P>* sampler, int32_t x, int32_t y) const {
        P out;
        std::memset(&out, 0x77, sizeof out);
        EXPECT_EQ(0, sampler(nullptr, x, y, &pb, &out));
        return out;
    }
    test::Picture<P> picture;
    RK_LayerDef record;
    RK_SampPB pb{};
};

#define EXPECT_PIXEL(a, r, g, b, p) \
    do {                            \
        const auto pixel_ = (p);    \
        EXPECT_EQ(a, pixel_.alpha); \
        EXPECT_EQ(r, pixel_.red);   \
        EXPECT_EQ(g, pixel_.green); \
        EXPECT_EQ(b, pixel_.blue);  \
    } while (false)

TEST(SubpixelSample, AWholePositionReturnsThePixelUnchangedOrZeroOutside) {
    Source<RK_Pixel8> s(3, 2);
    s.picture.fillRandom(1);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x)
            EXPECT_TRUE(
                test::sameBytes(s.picture.at(x, y), s.sample(RK_SubpixelSample_Straight, at(x), at(y))));
    EXPECT_PIXEL(0, 0, 0, 0, s.sample(RK_SubpixelSample_Straight, at(3), 0));
    EXPECT_PIXEL(0, 0, 0, 0, s.sample(RK_SubpixelSample_Straight, at(-1), 0));
}

TEST(SubpixelSample, HalfAPixelLeftOfAWhiteSourceFadesAlphaAndKeepsColour) {
    Source<RK_Pixel8> s(4, 4);
    s.picture.fill({255, 255, 255, 255});
    // 127.5 rounds to even.
    EXPECT_PIXEL(128, 255, 255, 255, s.sample(RK_SubpixelSample_Straight, at(-0.5), at(1)));
}

TEST(SubpixelSample, TheRightNeighboursOfTheLastColumnAreTransparent) {
    Source<RK_Pixel8> s(4, 4);
    s.picture.fill({200, 10, 20, 30});
    EXPECT_PIXEL(100, 10, 20, 30, s.sample(RK_SubpixelSample_Straight, at(3.5), at(1)));
    EXPECT_PIXEL(0, 0, 0, 0, s.sample(RK_SubpixelSample_Straight, at(4), at(1)));
    EXPECT_PIXEL(0, 0, 0, 0, s.sample(RK_SubpixelSample_Straight, at(4.5), at(1)));
}

TEST(SubpixelSample, ATinyWeightOnTheOnlyVisibleNeighbourGivesTheZeroPixel) {
    Source<RK_Pixel8> s(2, 2);
    s.picture.at(1, 1) = {255, 90, 80, 70};
    EXPECT_PIXEL(0, 0, 0, 0, s.sample(RK_SubpixelSample_Straight, at(0.01), at(0.01)));
}

TEST(SubpixelSample, FourClearNeighboursGiveZeroByDefaultAndColourInThePortableForms) {
    Source<RK_Pixel8> s(2, 2);
    s.picture.at(0, 0) = {0, 100, 0, 0};
    s.picture.at(1, 0) = s.picture.at(0, 1) = s.picture.at(1, 1) = {0, 200, 0, 0};
    EXPECT_PIXEL(0, 0, 0, 0, s.sample(RK_SubpixelSample_Straight, at(0.5), at(0.5)));
    EXPECT_PIXEL(0, 175, 0, 0, s.sample(RK_SubpixelCPlusPlus, at(0.5), at(0.5)));
}

TEST(SubpixelSample, AnAlphaOfExactlyOneHalfIsZeroAt8BitsAndOneAt16) {
    Source<RK_Pixel8> s8(2, 2);
    s8.picture.at(0, 0) = {2, 255, 255, 255};
    EXPECT_PIXEL(0, 0, 0, 0, s8.sample(RK_SubpixelSample_Straight, at(0.5), at(0.5)));
    Source<RK_Pixel16> s16(2, 2);
    s16.picture.at(0, 0) = {2, 32768, 32768, 32768};
    EXPECT_PIXEL(1, 32768, 32768, 32768, s16.sample(RK_SubpixelSample_Straight16, at(0.5), at(0.5)));
}

TEST(SubpixelSample, ThePortableFormKeepsTheColourOfAnAlphaThatRoundsToZero) {
    Source<RK_Pixel8> s(2, 2);
    s.picture.at(0, 0) = {1, 200, 0, 0};
    EXPECT_PIXEL(0, 200, 0, 0, s.sample(RK_SubpixelCPlusPlus, at(0.75), at(0.75)));
}

TEST(SubpixelSample, ThePlusFormTellsWhetherAllFourWereInsideAndStaysClearAtWholePositions) {
    Source<RK_Pixel8> s(3, 3);
    Source<RK_PixelFloat> f(3, 3);
    const auto flag = [&](int32_t x, int32_t y) {
        uint8_t inside = 7, inside_float = 7;
        RK_Pixel8 out;
        RK_PixelFloat out_float;
        RK_SubpixelSamplePlus_Straight(nullptr, x, y, &s.pb, &inside, &out);
        RK_SubpixelSpanSampleAllInCPlusPlusFloat(nullptr, x, y, &f.pb, &inside_float, &out_float);
        EXPECT_EQ(inside, inside_float);
        return inside;
    };
    EXPECT_EQ(1, flag(at(0.5), at(1)));
    EXPECT_EQ(1, flag(at(1.5), at(1.99)));
    EXPECT_EQ(0, flag(at(1), at(1)));
    EXPECT_EQ(0, flag(at(2.25), at(1)));
    EXPECT_EQ(0, flag(at(-0.25), at(1)));
}

TEST(SubpixelSample, AFloatSumOfAlphasThatIsExactlyZeroIsTheZeroPixel) {
    Source<RK_PixelFloat> s(2, 2);
    s.picture.at(0, 0) = {1.0f, 3, 3, 3};
    s.picture.at(1, 0) = {-1.0f, 3, 3, 3};
    EXPECT_PIXEL(0.0f, 0.0f, 0.0f, 0.0f, s.sample(RK_SubpixelCPlusPlusFloat, at(0.5), 0));
    const RK_PixelFloat negative = s.sample(RK_SubpixelCPlusPlusFloat, at(0.75), 0);
    EXPECT_EQ(-0.5f, negative.alpha);
    EXPECT_EQ(3.0f, negative.red);
}

TEST(SubpixelSample, TranslateWithComputedWeightsAndNoClipGiveTheSameAt8And16Bits) {
    Source<RK_Pixel8> s8(9, 9);
    Source<RK_Pixel16> s16(9, 9);
    s8.picture.fillRandom(3);
    s16.picture.fillRandom(4);
    test::Random r(5);
    for (int i = 0; i < 20000; ++i) {
        const auto x = static_cast<int32_t>(r.below(8 << 16)), y = static_cast<int32_t>(r.below(8 << 16));
        double w[4];
        RK_SubpixelSampleComputeWeight(static_cast<uint16_t>(x & 0xFFFF), static_cast<uint16_t>(y & 0xFFFF),
                                       w);
        RK_Pixel8 a8;
        RK_Pixel16 a16;
        RK_SubpixelSampleTranslateNoClip_Straight(nullptr, x, y, w, &s8.pb, &a8);
        RK_SubpixelSampleTranslateNoClip_Straight16(nullptr, x, y, w, &s16.pb, &a16);
        ASSERT_TRUE(test::sameBytes(a8, s8.sample(RK_SubpixelSampleNoClip_Straight, x, y)));
        ASSERT_TRUE(test::sameBytes(a16, s16.sample(RK_SubpixelSampleNoClip_Straight16, x, y)));
        ASSERT_TRUE(test::sameBytes(a8, s8.sample(RK_SubpixelSample_Straight, x, y)));
        ASSERT_TRUE(test::sameBytes(a16, s16.sample(RK_SubpixelSample_Straight16, x, y)));
    }
}

TEST(SubpixelSample, ASpanEqualsItsPixelsOneByOneAndSumsTheirAlphas) {
    Source<RK_Pixel8> s(12, 4);
    s.picture.fillRandom(6);
    for (int32_t fraction : {0, 1, 0x7FFF, 0x8000, 0xFFFF}) {
        RK_Pixel8 out[8];
        int32_t sum = 1000, wanted = 1000;
        EXPECT_EQ(0, RK_SubpixelSpanSampleTranslateNoClip_Straight(nullptr, 8, at(2) + fraction, at(1.25),
                                                                   &s.pb, &sum, out));
        for (int i = 0; i < 8; ++i) {
            const RK_Pixel8 one = s.sample(RK_SubpixelSampleNoClip_Straight, at(2 + i) + fraction, at(1.25));
            EXPECT_TRUE(test::sameBytes(one, out[i]));
            wanted += one.alpha;
        }
        EXPECT_EQ(wanted, sum);
    }
    int32_t sum = 5;
    RK_Pixel8 untouched = {1, 2, 3, 4};
    EXPECT_EQ(0, RK_SubpixelSpanSampleTranslateNoClip_Straight(nullptr, 0, 0, 0, &s.pb, &sum, &untouched));
    EXPECT_EQ(0, RK_SubpixelSpanSampleTranslateNoClip_Straight(nullptr, -3, 0, 0, &s.pb, &sum, &untouched));
    EXPECT_EQ(5, sum);
    EXPECT_PIXEL(1, 2, 3, 4, untouched);
}

TEST(SubpixelSample, FourAtOnceHaveNoShortcutsAndSaturate) {
    Source<RK_Pixel8> s(3, 3);
    s.picture.fill({0, 50, 60, 70});
    const int32_t xy[8] = {0, 0, at(0.5), at(0.5), at(1), 0, at(0.25), at(1)};
    RK_Pixel8 out[4];
    EXPECT_EQ(0, RK_SubpixelSampleNoClip_Straight_4(nullptr, xy, &s.pb, out));
    for (const RK_Pixel8& p : out) EXPECT_PIXEL(0, 0, 0, 0, p);
    s.picture.fill({255, 50, 60, 70});
    EXPECT_EQ(0, RK_SubpixelSampleNoClip_Straight_4(nullptr, xy, &s.pb, out));
    for (const RK_Pixel8& p : out) EXPECT_PIXEL(255, 50, 60, 70, p);
}

TEST(SubpixelSample, ThePremultipliedFormUsesOnlyTheLeftColumnAtExactlyZero) {
    Source<RK_Pixel8> s(2, 2);
    s.picture.at(0, 0) = {200, 100, 0, 0};
    s.picture.at(0, 1) = {100, 50, 0, 0};
    s.picture.at(1, 0) = s.picture.at(1, 1) = {255, 255, 255, 255};
    EXPECT_PIXEL(150, 75, 0, 0, s.sample(RK_SubpixelSample_Premul, 0, at(0.5)));
    EXPECT_PIXEL(0, 0, 0, 0, s.sample(RK_SubpixelSample_Premul, at(-1.5), at(0.5)));
    EXPECT_PIXEL(0, 0, 0, 0, s.sample(RK_SubpixelSample_Premul, at(2.5), at(0.5)));
}

TEST(SubpixelSample, PremultipliedWeightsAreTruncatedFromExactProducts) {
    // 65535 * 65535 does not fit 32 bits.
    Source<RK_Pixel8> s(2, 2);
    s.picture.at(1, 1) = {255, 255, 255, 255};
    EXPECT_PIXEL(255, 255, 255, 255, s.sample(RK_SubpixelSample_Premul, 0xFFFF, 0xFFFF));
}

TEST(SubpixelSample, A8BitDefaultFormRoundsToEvenWhateverTheThreadsMode) {
    Source<RK_Pixel8> s(4, 4);
    s.picture.fill({255, 255, 255, 255});
    for (int mode : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        std::fesetround(mode);
        RK_Pixel8 out;
        RK_SubpixelSample_Straight(nullptr, at(-0.5), at(1), &s.pb, &out);
        EXPECT_EQ(mode, std::fegetround());
        std::fesetround(FE_TONEAREST);
        EXPECT_EQ(128, out.alpha) << mode;
    }
}

TEST(SubpixelSample, PositionsFarOutsideAndNonsenseSizesAreSafe) {
    Source<RK_Pixel8> s(3, 3);
    s.picture.fill({255, 1, 2, 3});
    for (int32_t x : {INT32_MIN, INT32_MIN + 1, -1, INT32_MAX - 1, INT32_MAX}) {
        for (int32_t y : {INT32_MIN, INT32_MAX}) {
            EXPECT_PIXEL(0, 0, 0, 0, s.sample(RK_SubpixelSample_Straight, x, y));
            EXPECT_PIXEL(0, 0, 0, 0, s.sample(RK_SubpixelCPlusPlus, x, y));
            EXPECT_PIXEL(0, 0, 0, 0, s.sample(RK_SubpixelSample_Premul, x, y));
        }
    }
    s.record.width = -1;
    EXPECT_PIXEL(0, 0, 0, 0, s.sample(RK_SubpixelSample_Straight, at(0.5), at(0.5)));
    EXPECT_PIXEL(0, 0, 0, 0, s.sample(RK_SubpixelSample_Premul, at(0.5), at(0.5)));
}

TEST(SubpixelSample, BundlesReadTheTableAtTheTimeOfTheCall) {
    void* const before = RKp_G_OverFuncs[3];
    RK_SetOverrideFunc(3, reinterpret_cast<void*>(&RK_SubpixelCPlusPlus));
    EXPECT_EQ(&RK_SubpixelCPlusPlus, RKp_GetSamplerBundle<RK_Pixel8>().clipped);
    RK_SetOverrideFunc(3, before);
    EXPECT_EQ(&RK_SubpixelSample_Straight, RKp_GetSamplerBundle<RK_Pixel8>().clipped);
    EXPECT_EQ(&RK_SubpixelCPlusPlusFloat, RKp_GetSamplerBundle<RK_PixelFloat>().clipped);
}

}  // namespace
