// Deep rows taken down to 8 bits: the order of the noise, its rounding, and the two forms of float rows.
#include "RK/indep/world/RKp_Dither.h"

#include <cmath>

#include "RK/host/KIT.h"
#include "RK/indep/passes/RK_DepthConvert.h"
#include "test/Pixels.h"
#include "test/Reports.h"

namespace {

// A noise table of the test's own.
class DitherTest : public testing::Test {
  protected:
    void SetUp() override { kept_ = RKp_G_Noise; }
    void TearDown() override { RKp_G_Noise = kept_; }
    void use(const uint32_t* words, int count) { RKp_G_Noise = {words, words, words + count}; }

  private:
    RKp_NoiseTable kept_ = {};
};

TEST_F(DitherTest, TheFirstWordAfterAResetIsTheSecondOfTheTable) {
    const uint32_t words[] = {10, 11, 12};
    use(words, 3);
    RKp_G_Noise.cursor = words + 2;
    RK_ResetDitherRandomIndex();
    {
        RKp_NoiseDraws noise;
        EXPECT_EQ(noise.next(), 11u);
        EXPECT_EQ(noise.next(), 12u);
        EXPECT_EQ(noise.next(), 10u);
        EXPECT_EQ(noise.next(), 11u);
    }
    EXPECT_EQ(RKp_G_Noise.cursor, words + 1);
}

TEST_F(DitherTest, SixteenBitChannelsDrawInTheOrderOfAPixel) {
    // 100 * 255 passes 32768 with the largest noise only.
    const uint32_t words[] = {0, 0x7FFF, 0, 0, 0, 0x7FFF, 0, 0, 0, 0x7FFF, 0, 0, 0, 0x7FFF, 0};
    use(words, 13);
    const RK_Pixel16 p = {100, 100, 100, 100}, row[] = {p, p, p};
    RK_Pixel8 out[3];
    RKp_Row16To8(row, 3, true, out);
    EXPECT_TRUE(test::sameBytes(out[0], RK_Pixel8{1, 0, 0, 0}));
    EXPECT_TRUE(test::sameBytes(out[1], RK_Pixel8{1, 0, 0, 0}));
    EXPECT_TRUE(test::sameBytes(out[2], RK_Pixel8{1, 0, 0, 0}));
    const uint32_t later[] = {0, 0, 0, 0x7FFF, 0, 0xFFFFFFFF, 0};
    use(later, 7);
    RKp_Row16To8(row, 2, true, out);
    EXPECT_TRUE(test::sameBytes(out[0], RK_Pixel8{0, 0, 1, 0}));
    EXPECT_TRUE(test::sameBytes(out[1], RK_Pixel8{1, 0, 0, 0}));
}

TEST_F(DitherTest, FullStaysFullAndNothingStaysNothingWhateverTheNoise) {
    test::Random r(5);
    for (int i = 0; i < 2000; ++i) {
        const uint32_t words[] = {r.next(), r.next() | 0x7FFF, r.next() & ~0x7FFFu, r.next()};
        use(words, 4);
        const RK_Pixel16 row[] = {{32768, 32768, 32768, 32768}, {0, 0, 0, 0}};
        RK_Pixel8 out[2];
        RKp_Row16To8(row, 2, true, out);
        ASSERT_TRUE(test::sameBytes(out[0], RK_Pixel8{255, 255, 255, 255}));
        ASSERT_TRUE(test::sameBytes(out[1], RK_Pixel8{0, 0, 0, 0}));
    }
}

// Both forms of a float row.
constexpr decltype(&RKp_RowFloatTo8_Static) kForms[] = {&RKp_RowFloatTo8_Static, &RKp_RowFloatTo8_SSE2};

TEST_F(DitherTest, FloatChannelsDrawBlueBeforeGreen) {
    const uint32_t most = 0xFFFFFFFF;
    const RK_Pixel8 lifted[] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 0, 1}, {0, 0, 1, 0}};
    alignas(16) const RK_PixelFloat p = {0.25f / 255, 0.25f / 255, 0.25f / 255, 0.25f / 255};
    for (const auto form : kForms)
        for (int drawn = 0; drawn < 4; ++drawn) {
            uint32_t words[5] = {};
            words[drawn + 1] = most;
            use(words, 5);
            RK_Pixel8 out;
            form(&p, 1, true, &out);
            EXPECT_TRUE(test::sameBytes(out, lifted[drawn])) << drawn;
        }
}

TEST_F(DitherTest, AWordIsNoiseUpToOne256th) {
    EXPECT_EQ(RKp_FloatNoise(0), 0.0f);
    EXPECT_EQ(RKp_FloatNoise(1), 9.094947e-13f);
    EXPECT_EQ(RKp_FloatNoise(0x80000000), 2147483648.0f * 9.094947e-13f);
    EXPECT_NEAR(RKp_FloatNoise(0xFFFFFFFF), 1.0f / 256, 1e-8f);
}

TEST_F(DitherTest, OneNoiseGivesOneResult) {
    alignas(16) RK_PixelFloat row[67];
    test::Random r(9);
    for (RK_PixelFloat& p : row) p = {r.unit(), r.unit(), r.unit(), r.unit()};
    RK_Pixel8 first[67], second[67], third[67];
    RK_ResetDitherRandomIndex();
    RKp_RowFloatTo8(row, 67, true, first);
    RKp_RowFloatTo8(row, 67, true, second);
    RK_ResetDitherRandomIndex();
    RKp_RowFloatTo8(row, 67, true, third);
    EXPECT_EQ(std::memcmp(first, third, sizeof first), 0);
    EXPECT_NE(std::memcmp(first, second, sizeof first), 0);
}

TEST_F(DitherTest, TheTwoFormsRoundTiesAndHoldAlphaDifferently) {
    alignas(16) const RK_PixelFloat p = {1.5f, 0.5f, 1.5f, -0.5f};
    ASSERT_EQ(p.red * 255.0f, 127.5f);
    RK_Pixel8 out;
    RKp_RowFloatTo8_Static(&p, 1, false, &out);
    EXPECT_TRUE(test::sameBytes(out, RK_Pixel8{127, 128, 255, 0}));
    RKp_RowFloatTo8_SSE2(&p, 1, false, &out);
    EXPECT_TRUE(test::sameBytes(out, RK_Pixel8{255, 128, 255, 0}));
    alignas(16) const RK_PixelFloat tie = {0.25f / 127.5f, 0.5f / 255.0f, 2.5f / 255.0f, 0.0f};
    ASSERT_EQ(tie.green * 255.0f, 2.5f);
    RKp_RowFloatTo8_Static(&tie, 1, false, &out);
    EXPECT_EQ(out.green, 3);
    RKp_RowFloatTo8_SSE2(&tie, 1, false, &out);
    EXPECT_EQ(out.green, 2);
}

TEST_F(DitherTest, PlaceAndProcessorPickTheForm) {
    alignas(16) float room[4 * 5];
    for (int shift = 0; shift < 4; ++shift) {
        auto* const p = reinterpret_cast<RK_PixelFloat*>(room + shift);
        *p = {1.5f, 1.0f, 1.0f, 1.0f};
        RK_Pixel8 out;
        RKp_RowFloatTo8(p, 1, false, &out);
        EXPECT_EQ(out.alpha, shift == 0 && KIT_G_CPU_DataP->has_sse2 != 0 ? 255 : 127) << shift;
    }
}

}  // namespace
