// The stated edges of each form of the samplers, where forms part: whole positions, clear neighbours, weights
// that are given, what is ignored, and runs of none.
#include <gtest/gtest.h>

#include <cmath>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/sample/RK_AreaSample.h"
#include "RK/indep/sample/RK_Batch.h"
#include "RK/indep/sample/RK_SubpixelSample.h"
#include "refhost/RefHost.h"
#include "test/Pixels.h"

namespace {

constexpr int32_t at(double v) { return static_cast<int32_t>(v * 65536); }

template <class P>
struct Source {
    Source(int width, int height) : picture(width, height), record(picture.record()) {
        pb.src = &record;
        pb.x_radius = pb.y_radius = 0x8000;
        pb.area = 0x10000;
    }
    P operator()(RK_Sampler<P>* sampler, int32_t x, int32_t y) const {
        P out;
        std::memset(static_cast<void*>(&out), 0x77, sizeof out);
        EXPECT_EQ(0, sampler(nullptr, x, y, &pb, &out));
        return out;
    }
    test::Picture<P> picture;
    RK_LayerDef record;
    RK_SampPB pb{};
};
template <class P>
testing::AssertionResult isPixel(const P& wanted, const P& got) {
    if (test::sameBytes(wanted, got)) return testing::AssertionSuccess();
    return testing::AssertionFailure() << double(got.alpha) << ", " << double(got.red) << ", "
                                       << double(got.green) << ", " << double(got.blue);
}

// ---- Weights --------------------------------------------------------------------------------------------

TEST(SamplerWeights, AreThoseOfTheFractionsInOrder) {
    double w[4] = {9, 9, 9, 9};
    EXPECT_EQ(0, RK_SubpixelSampleComputeWeight(0x4000, 0x8000, w));
    EXPECT_EQ(0.375, w[0]);
    EXPECT_EQ(0.125, w[1]);
    EXPECT_EQ(0.375, w[2]);
    EXPECT_EQ(0.125, w[3]);
    EXPECT_EQ(0, RK_SubpixelSampleComputeWeight(0, 0, w));
    EXPECT_EQ(1.0, w[0]);
    EXPECT_EQ(0.0, w[1] + w[2] + w[3]);
    EXPECT_EQ(0, RK_SubpixelSampleComputeWeight(0xFFFF, 1, w));
    EXPECT_EQ(65535.0 / 65536 / 65536, w[3]);
    EXPECT_EQ(65535.0 / 65536 - w[3], w[1]);
    EXPECT_EQ(1.0 / 65536 - w[3], w[2]);
    EXPECT_EQ(1.0 - w[3] - w[1] - w[2], w[0]);
}

// The float form narrows what it is given and works in float.
TEST(SamplerWeights, TheFloatTranslateFormNarrowsThemAndTheOthersDoNot) {
    Source<RK_PixelFloat> s(2, 2);
    s.picture.fill({0.5f, 3.0f, 0, 0});
    s.picture.at(1, 0) = {0.5f, 3.0f, 1, 0};
    RK_PixelFloat out;
    const double nearly[4] = {1 + 1e-9, 0, 0, 0};
    EXPECT_EQ(0,
              RK_SubpixelSampleTranslateNoClipCPlusPlusFloat(nullptr, at(0.5), at(0.5), nearly, &s.pb, &out));
    EXPECT_EQ(3.0f, out.red);
    // Ten times 0.1 in float and in double.
    const double tenth[4] = {0.1, 0.2, 0.3, 0.4};
    EXPECT_EQ(0,
              RK_SubpixelSampleTranslateNoClipCPlusPlusFloat(nullptr, at(0.5), at(0.5), tenth, &s.pb, &out));
    EXPECT_EQ(((0.1f * 3.0f + 0.2f * 3.0f) + 0.3f * 3.0f) + 0.4f * 3.0f, out.red);
    Source<RK_Pixel16> deep(2, 2);
    deep.picture.at(0, 0) = {100, 20000, 0, 0};
    deep.picture.at(1, 0) = deep.picture.at(0, 1) = deep.picture.at(1, 1) = {100, 0, 1, 0};
    // 20000 * w00 is just below a half, which float could not tell.
    const double below[4] = {0.5 / 20000 * (1 - 1e-12), 0, 0, 0},
                 half[4] = {0.5 / 20000 * (1 + 1e-12), 0, 0, 0};
    RK_Pixel16 out16;
    EXPECT_EQ(0, RK_SubpixelSampleTranslateNoClip_Straight16(nullptr, at(0.5), 0, below, &deep.pb, &out16));
    EXPECT_EQ(0, out16.red);
    EXPECT_EQ(0, RK_SubpixelSampleTranslateNoClip_Straight16(nullptr, at(0.5), 0, half, &deep.pb, &out16));
    EXPECT_EQ(1, out16.red);
}

// Of the positions the four-at-once form with weights reads the whole parts only.
TEST(SamplerWeights, FourAtOnceTakeThemAndReadWholePartsOnly) {
    Source<RK_Pixel8> s(4, 4);
    s.picture.fillRandom(3);
    double weights[16];
    for (int i = 0; i < 4; ++i) RK_SubpixelSampleComputeWeight(0x1234, 0xABCD, weights + 4 * i);
    const int32_t whole[8] = {0, 0, at(1), 0, at(2), at(1), at(1), at(2)};
    int32_t any[8];
    for (int i = 0; i < 8; ++i) any[i] = whole[i] + (i * 7919 & 0xFFFF);
    RK_Pixel8 a[4], b[4];
    EXPECT_EQ(0, RK_SubpixelSampleTranslateNoClip_Straight_4(nullptr, whole, weights, &s.pb, a));
    EXPECT_EQ(0, RK_SubpixelSampleTranslateNoClip_Straight_4(nullptr, any, weights, &s.pb, b));
    EXPECT_EQ(0, std::memcmp(a, b, sizeof a));
    int32_t with_fractions[8];
    for (int i = 0; i < 8; ++i) with_fractions[i] = whole[i] + (i % 2 == 0 ? 0x1234 : 0xABCD);
    EXPECT_EQ(0, RK_SubpixelSampleNoClip_Straight_4(nullptr, with_fractions, &s.pb, b));
    EXPECT_EQ(0, std::memcmp(a, b, sizeof a));
}

// Saturated, not wrapped; an alpha sum of zero packs to nothing.
TEST(SamplerWeights, FourAtOnceSaturateWhatTheWeightsMake) {
    Source<RK_Pixel8> s(2, 2);
    s.picture.fill({200, 100, 50, 0});
    const int32_t xy[8] = {};
    const double weights[16] = {2, 0, 0, 0, -1, 0, 0, 0, 0, 0, 0, 0, 0.5, -0.5, 0, 0};
    RK_Pixel8 out[4];
    EXPECT_EQ(0, RK_SubpixelSampleTranslateNoClip_Straight_4(nullptr, xy, weights, &s.pb, out));
    EXPECT_TRUE(isPixel(RK_Pixel8{255, 100, 50, 0}, out[0]));
    EXPECT_TRUE(isPixel(RK_Pixel8{0, 100, 50, 0}, out[1]));
    EXPECT_TRUE(isPixel(RK_Pixel8{}, out[2]));
    EXPECT_TRUE(isPixel(RK_Pixel8{}, out[3]));
}

// ---- Where forms part -----------------------------------------------------------------------------------

// At a whole position the portable forms go through the weights: at float the pixel comes back a unit off now
// and then, where alphas differ, and through the Plus form too.
TEST(SamplerForms, WholePositionsOfThePortableFormsGoThroughTheWeights) {
    Source<RK_PixelFloat> s(3, 3);
    test::Random r(8);
    int off = 0;
    for (int i = 0; i < 500; ++i) {
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 3; ++x) s.picture.at(x, y) = {0.01f + r.unit(), r.unit(), r.unit(), r.unit()};
        const RK_PixelFloat& p = s.picture.at(1, 1);
        const RK_PixelFloat got = s(RK_SubpixelCPlusPlusFloat, at(1), at(1));
        const float wanted = (p.alpha * p.red) * (1.0f / p.alpha);
        EXPECT_EQ(wanted, got.red);
        EXPECT_EQ(p.alpha, got.alpha);
        off += got.red != p.red;
        RK_PixelFloat plus, span;
        uint8_t inside = 9;
        float sum = 2;
        RK_SubpixelSpanSampleAllInCPlusPlusFloat(nullptr, at(1), at(1), &s.pb, &inside, &plus);
        EXPECT_TRUE(isPixel(got, plus));
        EXPECT_EQ(0, inside);
        RK_SubpixelSpanSampleCPlusPlusFloat(nullptr, 1, at(1), at(1), &s.pb, &sum, &span);
        EXPECT_TRUE(isPixel(got, span));
        EXPECT_EQ(2 + p.alpha, sum);
        EXPECT_TRUE(isPixel(got, s(RK_SubpixelCPlusPlusNoClipFloat, at(1), at(1))));
    }
    EXPECT_GT(off, 0);
    // Clear pixels of the same alpha keep their colour.
    Source<RK_Pixel8> s8(2, 2);
    Source<RK_Pixel16> s16(2, 2);
    s8.picture.fill({0, 50, 60, 70});
    s16.picture.fill({0, 50, 60, 70});
    for (RK_Sampler<RK_Pixel8>* const sampler : {RK_SubpixelCPlusPlus, RK_SubpixelCPlusPlusNoClip})
        EXPECT_TRUE(isPixel(RK_Pixel8{0, 50, 60, 70}, s8(sampler, 0, 0)));
    for (RK_Sampler<RK_Pixel16>* const sampler : {RK_SubpixelCPlusPlus16, RK_SubpixelCPlusPlusNoClip16})
        EXPECT_TRUE(isPixel(RK_Pixel16{0, 50, 60, 70}, s16(sampler, 0, 0)));
}

// Four clear pixels whose colours differ.
template <class P>
struct ClearSource : Source<P> {
    ClearSource() : Source<P>(2, 2) {
        this->picture.fill({0, 200, 0, 0});
        this->picture.at(0, 0) = {0, 100, 0, 0};
    }
};
TEST(SamplerForms, FourClearNeighboursAreNothingInTheDefaultFormsAndColourInThePortableOnes) {
    const ClearSource<RK_Pixel8> s8;
    const ClearSource<RK_Pixel16> s16;
    const ClearSource<RK_PixelFloat> f;
    double w[4];
    RK_SubpixelSampleComputeWeight(0x8000, 0x8000, w);
    const int32_t half = 0x8000;

    for (RK_Sampler<RK_Pixel8>* const sampler :
         {RK_SubpixelSample_Straight, RK_SubpixelSampleNoClip_Straight, RKp_SubpixelSampleNoClip_SSE2})
        EXPECT_TRUE(isPixel(RK_Pixel8{}, s8(sampler, half, half)));
    for (RK_Sampler<RK_Pixel16>* const sampler :
         {RK_SubpixelSample_Straight16, RK_SubpixelSampleNoClip_Straight16})
        EXPECT_TRUE(isPixel(RK_Pixel16{}, s16(sampler, half, half)));
    RK_Pixel8 p8 = {9, 9, 9, 9};
    RK_Pixel16 p16 = {9, 9, 9, 9};
    RK_PixelFloat pf = {9, 9, 9, 9};
    uint8_t inside = 0;
    int32_t sum = 0;
    float sum_float = 0;
    RK_SubpixelSampleTranslateNoClip_Straight(nullptr, half, half, w, &s8.pb, &p8);
    EXPECT_TRUE(isPixel(RK_Pixel8{}, p8));
    RK_SubpixelSamplePlus_Straight(nullptr, half, half, &s8.pb, &inside, &(p8 = {9, 9, 9, 9}));
    EXPECT_TRUE(isPixel(RK_Pixel8{}, p8));
    EXPECT_EQ(1, inside);
    RK_SubpixelSpanSampleTranslateNoClip_Straight(nullptr, 1, half, half, &s8.pb, &sum, &(p8 = {9, 9, 9, 9}));
    EXPECT_TRUE(isPixel(RK_Pixel8{}, p8));
    RK_SubpixelSampleTranslateNoClip_Straight16(nullptr, half, half, w, &s16.pb, &p16);
    EXPECT_TRUE(isPixel(RK_Pixel16{}, p16));
    RK_SubpixelSamplePlus_Straight16(nullptr, half, half, &s16.pb, &(inside = 0), &(p16 = {9, 9, 9, 9}));
    EXPECT_TRUE(isPixel(RK_Pixel16{}, p16));
    EXPECT_EQ(1, inside);
    RK_SubpixelSpanSampleTranslateNoClip_Straight16(nullptr, 1, half, half, &s16.pb, &sum,
                                                    &(p16 = {9, 9, 9, 9}));
    EXPECT_TRUE(isPixel(RK_Pixel16{}, p16));
    EXPECT_EQ(0, sum);

    for (RK_Sampler<RK_Pixel8>* const sampler : {RK_SubpixelCPlusPlus, RK_SubpixelCPlusPlusNoClip})
        EXPECT_TRUE(isPixel(RK_Pixel8{0, 175, 0, 0}, s8(sampler, half, half)));
    RK_SubpixelSpanSampleCPlusPlus(nullptr, 1, half, half, &s8.pb, &sum, &p8);
    EXPECT_TRUE(isPixel(RK_Pixel8{0, 175, 0, 0}, p8));
    for (RK_Sampler<RK_Pixel16>* const sampler : {RK_SubpixelCPlusPlus16, RK_SubpixelCPlusPlusNoClip16})
        EXPECT_TRUE(isPixel(RK_Pixel16{0, 175, 0, 0}, s16(sampler, half, half)));
    RK_SubpixelSpanSampleCPlusPlus16(nullptr, 1, half, half, &s16.pb, &sum, &p16);
    EXPECT_TRUE(isPixel(RK_Pixel16{0, 175, 0, 0}, p16));
    for (RK_Sampler<RK_PixelFloat>* const sampler :
         {RK_SubpixelCPlusPlusFloat, RK_SubpixelCPlusPlusNoClipFloat})
        EXPECT_TRUE(isPixel(RK_PixelFloat{0, 175, 0, 0}, f(sampler, half, half)));
    RK_SubpixelSampleTranslateNoClipCPlusPlusFloat(nullptr, half, half, w, &f.pb, &pf);
    EXPECT_TRUE(isPixel(RK_PixelFloat{0, 175, 0, 0}, pf));
    RK_SubpixelSpanSampleCPlusPlusFloat(nullptr, 1, half, half, &f.pb, &sum_float, &pf);
    EXPECT_TRUE(isPixel(RK_PixelFloat{0, 175, 0, 0}, pf));
}

// Alphas differ: below a half the SSE2 form gives nothing, the portable one its colour; both round a half up.
TEST(SamplerForms, TheSSE2FormTestsItsAlphaBelowAHalf) {
    Source<RK_Pixel8> s(2, 2);
    s.picture.at(0, 0) = {1, 200, 0, 0};
    EXPECT_TRUE(isPixel(RK_Pixel8{}, s(RKp_SubpixelSampleNoClip_SSE2, at(0.5), at(0.25))));
    EXPECT_TRUE(isPixel(RK_Pixel8{1, 200, 0, 0}, s(RKp_SubpixelSampleNoClip_SSE2, at(0.5), 0)));
    EXPECT_TRUE(isPixel(RK_Pixel8{}, s(RK_SubpixelSampleNoClip_Straight, at(0.5), 0)));
    // Whole positions and equal neighbours are the pixel itself.
    s.picture.fill({7, 1, 2, 3});
    EXPECT_TRUE(isPixel(RK_Pixel8{7, 1, 2, 3}, s(RKp_SubpixelSampleNoClip_SSE2, at(0.25), at(0.75))));
    // Equal alphas: two nested steps, a half going up where the default form goes to even.
    s.picture.at(0, 0) = s.picture.at(0, 1) = {255, 10, 0, 0};
    s.picture.at(1, 0) = s.picture.at(1, 1) = {255, 11, 0, 0};
    EXPECT_EQ(11, s(RKp_SubpixelSampleNoClip_SSE2, at(0.5), at(0.5)).red);
    EXPECT_EQ(10, s(RK_SubpixelSampleNoClip_Straight, at(0.5), at(0.5)).red);
}

TEST(SamplerForms, ThePlusFlagAt16BitsIsThatOf8) {
    Source<RK_Pixel16> s(3, 3);
    const auto flag = [&](double x, double y) {
        uint8_t inside = 7;
        RK_Pixel16 out;
        EXPECT_EQ(0, RK_SubpixelSamplePlus_Straight16(nullptr, at(x), at(y), &s.pb, &inside, &out));
        return int{inside};
    };
    EXPECT_EQ(1, flag(0.5, 1));
    EXPECT_EQ(1, flag(0, 1.5));
    EXPECT_EQ(0, flag(1, 1));
    EXPECT_EQ(0, flag(2, 0.5));
    EXPECT_EQ(0, flag(-0.5, 1));
    EXPECT_EQ(0, flag(9.5, 9.5));
}

TEST(SamplerForms, ASourceWithoutExtentIsNothingPremultiplied) {
    Source<RK_Pixel8> s(3, 3);
    s.picture.fill({255, 9, 9, 9});
    for (const int32_t size : {0, -1, INT32_MIN}) {
        for (const bool wide : {false, true}) {
            s.record.width = wide ? 3 : size;
            s.record.height = wide ? size : 3;
            for (const double place : {0.0, 0.5, 1.0})
                EXPECT_TRUE(isPixel(RK_Pixel8{}, s(RK_SubpixelSample_Premul, at(place), at(place))));
        }
    }
}

// ---- Area -----------------------------------------------------------------------------------------------

// The lower of a value and its limit is the limit for what is not a number; float colours have none.
TEST(AreaSamplerEdges, AnAlphaThatIsNotANumberIsOneAndFloatColoursStayWhatTheyAre) {
    Source<RK_PixelFloat> s(4, 4);
    s.pb.x_radius = s.pb.y_radius = at(1);
    const float nan = std::nanf("");
    s.picture.fill({nan, 2, 2, 2});
    const RK_PixelFloat p = s(RK_AreaSampleFloat, at(1.5), at(1.5));
    EXPECT_EQ(1.0f, p.alpha);
    EXPECT_TRUE(std::isnan(p.red));
    s.picture.fill({4, 7, -3, 0.5f});
    EXPECT_TRUE(isPixel(RK_PixelFloat{1, 7, -3, 0.5f}, s(RK_AreaSampleFloat, at(1.5), at(1.5))));
    // A sum of exactly nothing, by alphas against each other.
    s.picture.at(1, 1) = {1, 7, 7, 7};
    s.picture.at(2, 1) = {-1, 7, 7, 7};
    s.picture.at(1, 2) = s.picture.at(2, 2) = {0, 7, 7, 7};
    EXPECT_TRUE(isPixel(RK_PixelFloat{}, s(RK_AreaSampleFloat, at(1.5), at(1.5))));
}

// Twice a reach of 1.5 by a row of 65536ths: what lies beside the source in a run is not sampled, and the
// alpha is divided by the area that was asked for.
TEST(AreaSamplerEdges, RunsDivideByTheAreaThatWasAskedFor) {
    Source<RK_Pixel8> s(4, 4);
    s.picture.fill({240, 100, 50, 25});
    s.pb.x_radius = at(2);
    EXPECT_TRUE(isPixel(RK_Pixel8{240, 100, 50, 25}, s(RK_AreaSample_Straight, at(1.5), at(1))));
    EXPECT_TRUE(isPixel(RK_Pixel8{120, 100, 50, 25}, s(RK_AreaSample_Straight, at(-0.5), at(1))));
    EXPECT_TRUE(isPixel(RK_Pixel8{60, 100, 50, 25}, s(RK_AreaSample_Straight, at(4.5), at(1))));
    EXPECT_TRUE(isPixel(RK_Pixel8{}, s(RK_AreaSample_Straight, at(-2.5), at(1))));
    s.pb.x_radius = 0x8000;
    s.pb.y_radius = at(2);
    EXPECT_TRUE(isPixel(RK_Pixel8{120, 100, 50, 25}, s(RK_AreaSample_Straight, at(1), at(-0.5))));
}

// Across a run the premultiplied form samples in the middle of the box as far as it lies in the world, and by
// that extent: half a row above the world half of the box is left, whose middle is a quarter row higher than
// row 0.
TEST(AreaSamplerEdges, PremultipliedRunsSampleTheMiddleOfTheirClampedBox) {
    Source<RK_Pixel8> s(4, 4);
    s.picture.fill({200, 100, 0, 0});
    s.pb.x_radius = at(1);
    s.pb.y_radius = 0x8000;
    s.pb.area = at(2);
    // The whole row: 200.
    EXPECT_TRUE(isPixel(RK_Pixel8{200, 100, 0, 0}, s(RK_AreaSample_Premul, at(1.5), 0)));
    // The box covers rows 0 to 0.5, its middle is -0.25: three quarters of the pixel, half of the area.
    EXPECT_TRUE(isPixel(RK_Pixel8{75, 38, 0, 0}, s(RK_AreaSample_Premul, at(1.5), at(-0.5))));
    s.pb.x_radius = 0x8000;
    s.pb.y_radius = at(1);
    EXPECT_TRUE(isPixel(RK_Pixel8{75, 38, 0, 0}, s(RK_AreaSample_Premul, at(-0.5), at(1.5))));
    // A point samples where it was asked to: half of the pixel, half of the area.
    s.pb.y_radius = 0x8000;
    s.pb.area = at(1);
    EXPECT_TRUE(isPixel(RK_Pixel8{50, 25, 0, 0}, s(RK_AreaSample_Premul, at(-0.5), at(1))));
}

TEST(AreaSamplerEdges, WithoutAnAreaAnEmptySumIsNothingToo) {
    Source<RK_Pixel8> s(3, 3);
    for (const int32_t radius : {0x8000, 0x18000}) {
        s.pb.x_radius = s.pb.y_radius = radius;
        s.pb.area = 0;
        EXPECT_TRUE(isPixel(RK_Pixel8{}, s(RK_AreaSample_Premul, at(1), at(1))));
        EXPECT_TRUE(isPixel(RK_Pixel8{}, s(RK_AreaSample_Premul, at(-9), at(1))));
    }
    // Bit 7 of the area rounds it up: 0x80 is 1, 0x7F none.
    s.picture.fill({3, 2, 1, 0});
    s.pb.x_radius = s.pb.y_radius = 0x8000;
    s.pb.area = 0x7F;
    EXPECT_TRUE(isPixel(RK_Pixel8{}, s(RK_AreaSample_Premul, at(1), at(1))));
    s.pb.area = 0x80;
    EXPECT_TRUE(isPixel(RK_Pixel8{255, 255, 255, 0}, s(RK_AreaSample_Premul, at(1), at(1))));
}

// ---- Ignored, none, free --------------------------------------------------------------------------------

TEST(SamplerReferences, AreNotFollowed) {
    Source<RK_Pixel8> s(4, 4);
    Source<RK_Pixel16> s16(4, 4);
    Source<RK_PixelFloat> f(4, 4);
    s.picture.fillRandom(1);
    s16.picture.fillRandom(2);
    f.picture.fillRandom(3);
    void* const nowhere = reinterpret_cast<void*>(uintptr_t{16});
    double w[16];
    for (int i = 0; i < 4; ++i) RK_SubpixelSampleComputeWeight(0x4000, 0x4000, w + 4 * i);
    uint8_t inside;
    int32_t sum = 0;
    float sum_float = 0;
    RK_Pixel8 p8[4] = {};
    RK_Pixel16 p16;
    RK_PixelFloat pf;
    const int32_t xy[8] = {}, line[4] = {}, steps[4] = {};
    s.pb.motion_samples = s16.pb.motion_samples = 1;
    s.pb.comp_mode = s16.pb.comp_mode = {RK_Xfer_Behind, 0, 255, 0, 32768};
    EXPECT_EQ(0, RK_SubpixelSamplePlus_Straight(nowhere, 0x4000, 0x4000, &s.pb, &inside, p8));
    EXPECT_EQ(0, RK_SubpixelSamplePlus_Straight16(nowhere, 0x4000, 0x4000, &s16.pb, &inside, &p16));
    EXPECT_EQ(0, RK_SubpixelSpanSampleAllInCPlusPlusFloat(nowhere, 0x4000, 0x4000, &f.pb, &inside, &pf));
    EXPECT_EQ(0, RK_SubpixelSampleTranslateNoClip_Straight(nowhere, 0x4000, 0x4000, w, &s.pb, p8));
    EXPECT_EQ(0, RK_SubpixelSampleTranslateNoClip_Straight16(nowhere, 0x4000, 0x4000, w, &s16.pb, &p16));
    EXPECT_EQ(0, RK_SubpixelSampleTranslateNoClipCPlusPlusFloat(nowhere, 0x4000, 0x4000, w, &f.pb, &pf));
    EXPECT_EQ(0, RK_SubpixelSpanSampleTranslateNoClip_Straight(nowhere, 1, 0x4000, 0x4000, &s.pb, &sum, p8));
    EXPECT_EQ(
        0, RK_SubpixelSpanSampleTranslateNoClip_Straight16(nowhere, 1, 0x4000, 0x4000, &s16.pb, &sum, &p16));
    EXPECT_EQ(0, RK_SubpixelSpanSampleCPlusPlusFloat(nowhere, 1, 0x4000, 0x4000, &f.pb, &sum_float, &pf));
    EXPECT_EQ(0, RK_SubpixelSampleNoClip_Straight_4(nowhere, xy, &s.pb, p8));
    EXPECT_EQ(0, RK_SubpixelSampleTranslateNoClip_Straight_4(nowhere, xy, w, &s.pb, p8));
    for (auto* const scan : {RKp_BehindNearest, RKp_BehindBilinear, RKp_BehindArea})
        EXPECT_EQ(0, scan(nowhere, 1, line, steps, &s.pb, &(p8[0] = RK_Pixel8{})));
    for (auto* const scan : {RKp_BehindNearest16, RKp_BehindBilinear16, RKp_BehindArea16})
        EXPECT_EQ(0, scan(nowhere, 1, line, steps, &s16.pb, &(p16 = RK_Pixel16{})));
}

template <class P>
void runsOfNone(RK_SamplerSpan<P>* span) {
    const RK_SampPB pb{};  // without a source
    for (const RK_Long count : {RK_Long{0}, RK_Long{-1}, RK_Long{INT32_MIN}}) {
        RK_AlphaSum<P> sum = 5;
        P out = {1, 2, 3, 4};
        EXPECT_EQ(0, span(nullptr, count, 0x4000, 0x4000, &pb, &sum, &out));
        EXPECT_EQ(5, sum);
        EXPECT_TRUE(isPixel(P{1, 2, 3, 4}, out));
    }
}
TEST(SamplerRuns, OfFewerThanOnePixelDoNothing) {
    runsOfNone<RK_Pixel8>(RK_SubpixelSpanSampleTranslateNoClip_Straight);
    runsOfNone<RK_Pixel8>(RK_SubpixelSpanSampleCPlusPlus);
    runsOfNone<RK_Pixel16>(RK_SubpixelSpanSampleTranslateNoClip_Straight16);
    runsOfNone<RK_Pixel16>(RK_SubpixelSpanSampleCPlusPlus16);
    runsOfNone<RK_PixelFloat>(RK_SubpixelSpanSampleCPlusPlusFloat);
}

// No sampler, and no scan behind, asks the host for memory.
TEST(SamplerRuns, NeedNoMemory) {
    Source<RK_Pixel8> s(40, 40);
    s.picture.fillRandom(4);
    s.pb.motion_samples = 30;
    s.pb.comp_mode = {RK_Xfer_Behind, 0, 255, 0, 32768};
    RefHost::FailAllocation(1);
    int32_t sum = 0;
    std::vector<RK_Pixel8> out(30);
    const int32_t line[4] = {0, 0, at(5), at(7)}, steps[4] = {at(1), 0, at(1), 0};
    EXPECT_EQ(0, RK_SubpixelSpanSampleTranslateNoClip_Straight(nullptr, 30, 0x4000, 0x4000, &s.pb, &sum,
                                                               out.data()));
    for (int32_t radius : {0x8000, 0x30000}) {
        s.pb.x_radius = s.pb.y_radius = radius;
        EXPECT_EQ(0, RK_AreaSample_Straight(nullptr, at(9), at(9), &s.pb, out.data()));
        EXPECT_EQ(0, RK_AreaSample_Premul(nullptr, at(9), at(9), &s.pb, out.data()));
    }
    for (auto* const scan : {RKp_BehindNearest, RKp_BehindBilinear, RKp_BehindArea}) {
        std::fill(out.begin(), out.end(), RK_Pixel8{});
        EXPECT_EQ(0, scan(nullptr, 30, line, steps, &s.pb, out.data()));
    }
    EXPECT_EQ(0, RefHost::AllocationsSince());
    RefHost::FailAllocation(0);
}

}  // namespace
