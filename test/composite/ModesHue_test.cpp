#include "RK/indep/composite/RKp_ModesHue.h"

#include "test/composite/ModeRows.h"

using namespace test;

// ---- Luma -----------------------------------------------------------------------------------------------

TEST(Luma, OfWhiteIsFullAndItsRoundingTermCounts) {
    using D8 = RKp_Depth<RK_Pixel8>;
    using D16 = RKp_Depth<RK_Pixel16>;
    EXPECT_EQ(D8::luma(255, 255, 255), 255);
    EXPECT_EQ(D16::luma(32768, 32768, 32768), 32768);
    EXPECT_EQ(D8::luma(1, 0, 0), 0);  // 0.299
    EXPECT_EQ(D8::luma(0, 1, 0), 1);  // 0.587, which only the term lifts
    EXPECT_EQ(D8::luma(2, 0, 0), 1);
    for (int v = 0; v < 256; ++v) EXPECT_EQ(D8::luma(v, v, v), v);
    int differs = 0;
    for (int r = 0; r < 256; r += 5)
        for (int g = 0; g < 256; g += 5)
            for (int b = 0; b < 256; b += 5) {
                const int sum = r * 9798 + g * 19235 + b * 3735;
                ASSERT_EQ(D8::luma(r, g, b), (sum + 16384) >> 15);
                differs += D8::luma(r, g, b) != (sum + 16383) >> 15 || D8::luma(r, g, b) != sum >> 15;
            }
    EXPECT_GT(differs, 10000);
    EXPECT_EQ(D16::luma(16384, 0, 0), 4899);
    EXPECT_EQ(RKp_Depth<RK_PixelFloat>::luma(0.1f, 0.7f, 0.3f),
              (0.1f * 0.299f + 0.7f * 0.587f) + 0.3f * 0.114f);
}

// ---- Setting the saturation -----------------------------------------------------------------------------

TEST(SetSaturation, PutsSmallestAt0LargestAtTheValueAndTheMiddleBetween) {
    using Colour = RKp_HueColour<RK_Pixel8>;
    const auto set = [](int r, int g, int b, int v) {
        Colour c = {r, g, b};
        c.setSaturation(v);
        return std::vector<int>{c.r, c.g, c.b};
    };
    using V = std::vector<int>;
    EXPECT_EQ(set(10, 20, 30, 100), (V{0, 50, 100}));
    EXPECT_EQ(set(30, 20, 10, 100), (V{100, 50, 0}));
    EXPECT_EQ(set(20, 10, 30, 100), (V{50, 0, 100}));
    EXPECT_EQ(set(20, 30, 10, 100), (V{50, 100, 0}));
    EXPECT_EQ(set(10, 30, 20, 100), (V{0, 100, 50}));
    EXPECT_EQ(set(30, 10, 20, 100), (V{100, 0, 50}));
    EXPECT_EQ(set(7, 7, 7, 100), (V{0, 0, 0}));
    EXPECT_EQ(set(0, 1, 3, 100), (V{0, 33, 100}));  // truncated
    // Ties.
    EXPECT_EQ(set(5, 5, 9, 100), (V{0, 0, 100}));
    EXPECT_EQ(set(9, 9, 5, 100), (V{100, 100, 0}));
    EXPECT_EQ(set(5, 9, 5, 100), (V{0, 100, 0}));
    EXPECT_EQ(set(9, 5, 9, 100), (V{100, 0, 100}));
}

// At float the channel that counts as largest takes the value itself; a middle equal to it is divided.
TEST(SetSaturation, SettlesTiesByTheOrderOfTests) {
    using Colour = RKp_HueColour<RK_PixelFloat>;
    float v = 0.1f;
    const float span = 0.3f - 0.1f;
    while (span * v / span == v) v += 0.01f;
    ASSERT_LT(v, 1.0f) << "no value whose quotient is rounded";
    const float divided = span * v / span;
    Colour c = {0.3f, 0.3f,
                0.1f};  // red and green tie: green smallest, red largest; then blue is below green
    c.setSaturation(v);
    EXPECT_EQ(c.r, v);
    EXPECT_EQ(c.g, divided);
    EXPECT_EQ(c.b, 0.0f);
    c = {0.1f, 0.3f, 0.3f};  // blue is not beyond green: the middle
    c.setSaturation(v);
    EXPECT_EQ(c.g, v);
    EXPECT_EQ(c.b, divided);
    c = {0.3f, 0.1f, 0.3f};
    c.setSaturation(v);
    EXPECT_EQ(c.r, v);
    EXPECT_EQ(c.b, divided);
}

// ---- The family -----------------------------------------------------------------------------------------

TEST(Hue, LeavesAGreyDestinationGrey) {
    Random r(5);
    for (int i = 0; i < 2000; ++i) {
        RK_Pixel8 s = pixel<RK_Pixel8>(r), d = pixel<RK_Pixel8>(r);
        s.alpha = d.alpha = 255;
        d.green = d.blue = d.red;
        ASSERT_EQ(text(alone(RK_Xfer_Hue, s, d)), text(d)) << text(s);
    }
}

TEST(Colour, OfAWhiteDestinationIsWhiteWhereRoundingLiftsAChannel) {
    EXPECT_EQ(text(alone(RK_Xfer_Colour, RK_Pixel8{255, 200, 10, 10}, RK_Pixel8{255, 255, 255, 255})),
              "(255, 255, 255, 255)");
    // Luma (4,4,0) is 4: no channel leaves the range, and nothing is clipped.
    EXPECT_EQ(text(alone(RK_Xfer_Colour, RK_Pixel8{255, 4, 4, 0}, RK_Pixel8{255, 255, 255, 255})),
              "(255, 255, 255, 251)");
}

TEST(Luminosity, ClipsAroundTheSourcesLuma) {
    // Luma 30 and 128: (255, 0, 128) - 91 + 30 has channels below 0 after the move.
    const RK_Pixel8 s = {255, 30, 30, 30}, d = {255, 255, 0, 128};
    const int ld = RKp_Depth<RK_Pixel8>::luma(255, 0, 128), L = 30;
    int c[3] = {255 + L - ld, 0 + L - ld, 128 + L - ld};
    const int m = c[1];
    ASSERT_LT(m, 0);
    for (int& v : c) v = L + (v - L) * L / (L - m);
    EXPECT_EQ(text(alone(RK_Xfer_Luminosity, s, d)),
              text(RK_Pixel8{255, uint8_t(c[0]), uint8_t(c[1]), uint8_t(c[2])}));
    EXPECT_EQ(c[1], 0);
}

TEST(Clip, OfTheHighSideMeasuresWhatTheLowSideLeft) {
    RKp_HueColour<RK_Pixel8> c = {-100, 400, 128};
    c.clipAround(128);
    // Low: 128 + (v - 128) * 128 / 228, so 0, 280 (truncated), 128. High: around 128 by 127 / (280 - 128).
    EXPECT_EQ(c.r, 128 + (0 - 128) * 127 / 152);
    EXPECT_EQ(c.g, 255);
    EXPECT_EQ(c.b, 128);
}

TEST(Clip, AtFloatLeavesAColourWhoseLumaIsItsEnd) {
    RKp_HueColour<RK_PixelFloat> c = {-0.5f, -0.5f, -0.5f};
    c.clipAround(-0.5f);
    EXPECT_EQ(c.r, -0.5f);
    c = {1.5f, 1.5f, 1.5f};
    c.clipAround(1.5f);
    EXPECT_EQ(c.g, 1.5f);
}

TEST(HueFamily, MixesTowardsTheTargetByTheSourceAlpha) {
    for (int32_t mode : {RK_Xfer_Hue, RK_Xfer_Saturation, RK_Xfer_Colour, RK_Xfer_Luminosity}) {
        Random r(6);
        for (int i = 0; i < 500; ++i) {
            RK_Pixel16 s = pixel<RK_Pixel16>(r), d = pixel<RK_Pixel16>(r);
            s.alpha = d.alpha = 32768;
            const RK_Pixel16 full = alone(mode, s, d);
            const int sa = 1 + int(r.below(32767));
            const RK_Pixel16 mixed = alone(mode, s, d, uint16_t(sa));
            using D = RKp_Depth<RK_Pixel16>;
            ASSERT_EQ(mixed.red, D::lerp(d.red, full.red, sa));
            ASSERT_EQ(mixed.green, D::lerp(d.green, full.green, sa));
            ASSERT_EQ(mixed.blue, D::lerp(d.blue, full.blue, sa));
            ASSERT_EQ(mixed.alpha, 32768);
        }
    }
}

TEST(HueFamily, LaysTheSourceBehindFirst) {
    for (int32_t mode : {RK_Xfer_Hue, RK_Xfer_Saturation, RK_Xfer_Colour, RK_Xfer_Luminosity}) {
        // On a clear destination the source is both colours, and stays itself but for the clip.
        const RK_Pixel8 s = {255, 200, 100, 50}, d = {0, 1, 2, 3};
        EXPECT_EQ(text(alone(mode, s, d)), text(s)) << mode;
        EXPECT_EQ(text(composite(mode, s, d)), text(s)) << mode;
    }
}

// ---- The choosers ---------------------------------------------------------------------------------------

TEST(LumaChoosers, LeaveTheDestinationWhenTheLumasTie) {
    const RK_Pixel8 s = {255, 0, 1, 0}, d = {255, 1, 1, 1};  // both 1
    EXPECT_EQ(text(alone(RK_Xfer_DarkerColour, s, d)), text(d));
    EXPECT_EQ(text(alone(RK_Xfer_LighterColour, s, d)), text(d));
}

TEST(LumaChoosers, CompareRawPixelsAloneAndWhatBehindHasLeftOnARow) {
    const RK_Pixel8 s = {255, 128, 128, 255}, d = {126, 0, 200, 200};
    EXPECT_EQ(text(alone(RK_Xfer_LighterColour, s, d)), "(255, 128, 128, 255)");
    EXPECT_EQ(text(composite(RK_Xfer_LighterColour, s, d)), "(255, 65, 164, 228)");
}

TEST(LumaChoosers, ABrightColourUnderNoAlphaStillWins) {
    const RK_Pixel8 s = {255, 100, 100, 100}, bright = {0, 255, 255, 255};
    // Behind leaves the source's colour; the source itself is not laid on top, which shows in the mix of a
    // partial one.
    EXPECT_EQ(text(alone(RK_Xfer_LighterColour, s, bright)), text(s));
    const RK_Pixel8 half = {128, 100, 100, 100}, dim = {128, 255, 255, 255};
    const RK_Pixel8 behind = alone(RK_Xfer_Behind, half, dim);
    EXPECT_EQ(text(alone(RK_Xfer_LighterColour, half, dim)), text(behind));
    EXPECT_NE(text(alone(RK_Xfer_DarkerColour, half, dim)), text(behind));
}

TEST(LumaChoosers, MixByAPartialAlpha) {
    const RK_Pixel16 s = {16384, 30000, 30000, 30000}, d = {32768, 10000, 20000, 5};
    EXPECT_EQ(text(alone(RK_Xfer_LighterColour, s, d)), "(32768, 20000, 25000, 15002)");
    EXPECT_EQ(text(composite(RK_Xfer_LighterColour, s, d)), "(32768, 20000, 25000, 15002)");
    EXPECT_EQ(text(alone(RK_Xfer_DarkerColour, s, d)), text(d));
}
