// Which sampler stands in which slot, who reads slots when, and what samplers do not read.
#include <gtest/gtest.h>

#include <cfenv>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/sample/RK_AreaSample.h"
#include "RK/indep/sample/RK_Batch.h"
#include "RK/indep/sample/RK_SubpixelSample.h"
#include "test/Pixels.h"
#include "test/SlotOverride.h"
#include "test/plain/Compare.h"

namespace {

using test::SlotOverride;

template <class Function>
void* address(Function* function) {
    return reinterpret_cast<void*>(function);
}

TEST(SamplerSlots, HoldTheDefaultsButThreeThatTheProcessorPicks) {
    const bool sse2 = KIT_G_CPU_DataP->has_sse2 != 0;
    const struct {
        int slot;
        void* function;
    } wanted[] = {
        {2, address(RK_NNSample)},
        {3, address(RK_SubpixelSample_Straight)},
        {4, address(RK_SubpixelSample_Premul)},
        {5, sse2 ? address(RKp_AreaSample8_Portable) : address(RKp_AreaSample8_Static)},
        {6, address(RK_AreaSample_Premul)},
        {57, address(RK_SubpixelSampleComputeWeight)},
        {58, address(RK_SubpixelSampleTranslateNoClip_Straight)},
        {60, address(RK_SubpixelSamplePlus_Straight)},
        {61, sse2 ? address(RKp_SubpixelSampleNoClip_SSE2) : address(RK_SubpixelSampleNoClip_Straight)},
        {63, address(RK_NNSample16)},
        {64, address(RK_SubpixelSample_Straight16)},
        {65, sse2 ? address(RKp_AreaSample16_Portable) : address(RKp_AreaSample16_Static)},
        {68, address(RK_SubpixelSampleTranslateNoClip_Straight16)},
        {70, address(RK_SubpixelSamplePlus_Straight16)},
        {71, address(RK_SubpixelSampleNoClip_Straight16)},
        {83, address(RK_SubpixelSampleNoClip_Straight_4)},
        {84, address(RK_SubpixelSampleTranslateNoClip_Straight_4)},
        {86, address(RK_SubpixelSpanSampleTranslateNoClip_Straight)},
        {87, address(RK_SubpixelSpanSampleTranslateNoClip_Straight16)},
    };
    for (const auto& [slot, function] : wanted) EXPECT_EQ(RKp_G_OverFuncs[slot], function) << slot;
}

// ---- Bundles --------------------------------------------------------------------------------------------

// Any address: a bundle is not called here.
char g_marks[118];
template <class P>
void bundleReads(const int (&slots)[6]) {
    const auto member = [](int i) {
        const RK_SamplerBundle<P> b = RKp_GetSamplerBundle<P>();
        void* const members[6] = {address(b.plus),    address(b.clipped),   address(b.area),
                                  address(b.no_clip), address(b.translate), address(b.span)};
        return members[i];
    };
    for (int i = 0; i < 6; ++i) {
        void* const held = RKp_G_OverFuncs[slots[i]];
        EXPECT_EQ(member(i), held) << i;
        RKp_G_OverFuncs[slots[i]] = g_marks + slots[i];
        EXPECT_EQ(member(i), static_cast<void*>(g_marks + slots[i])) << i;
        RKp_G_OverFuncs[slots[i]] = held;
    }
}
TEST(SamplerBundles, AreReadFromTheirSlotsAtTheTimeOfTheCallInOrder) {
    bundleReads<RK_Pixel8>({60, 3, 5, 61, 58, 86});
    bundleReads<RK_Pixel16>({70, 64, 65, 71, 68, 87});
}
TEST(SamplerBundles, FloatIsFixedToThePortableForms) {
    const RK_SamplerBundle<RK_PixelFloat> b = RKp_GetSamplerBundle<RK_PixelFloat>();
    EXPECT_EQ(address(b.plus), address(RK_SubpixelSpanSampleAllInCPlusPlusFloat));
    EXPECT_EQ(address(b.clipped), address(RK_SubpixelCPlusPlusFloat));
    EXPECT_EQ(address(b.area), address(RK_AreaSampleFloat));
    EXPECT_EQ(address(b.no_clip), address(RK_SubpixelCPlusPlusNoClipFloat));
    EXPECT_EQ(address(b.translate), address(RK_SubpixelSampleTranslateNoClipCPlusPlusFloat));
    EXPECT_EQ(address(b.span), address(RK_SubpixelSpanSampleCPlusPlusFloat));
}

// ---- Overrides reach ------------------------------------------------------------------------------------

template <class P>
constexpr P kMark =
    P{static_cast<RK_Channel<P>>(test::kFull<P>), 0, 0, static_cast<RK_Channel<P>>(test::kFull<P>)};
template <class P>
RK_Long mark(void*, int32_t, int32_t, const RK_SampPB*, P* out) {
    *out = kMark<P>;
    return 0;
}
// A red picture; a sample of it is blue when it went through an overridden slot.
template <class P>
struct Red {
    Red() : picture(9, 9), record() {
        picture.fill(
            {static_cast<RK_Channel<P>>(test::kFull<P>), static_cast<RK_Channel<P>>(test::kFull<P>), 0, 0});
        record = picture.record();
        pb.src = &record;
        pb.motion_samples = 2;
        pb.comp_mode = {RK_Xfer_Behind, 0, 255, 0, 32768};
    }
    template <class Sampler>
    bool isMarked(Sampler sampler, int32_t x_radius, int32_t y_radius) {
        pb.x_radius = x_radius;
        pb.y_radius = y_radius;
        pb.area = 0x10000;
        P out{};
        EXPECT_EQ(sampler(nullptr, 0x40000, 0x40000, &pb, &out), 0);
        return out.blue != 0;
    }
    test::Picture<P> picture;
    RK_LayerDef record;
    RK_SampPB pb{};
};

TEST(AreaSamplerSlots, TheExportsCallWhatTheirSlotsHold) {
    Red<RK_Pixel8> s8;
    Red<RK_Pixel16> s16;
    EXPECT_FALSE(s8.isMarked(RK_AreaSample_Straight, 0x18000, 0x18000));
    EXPECT_FALSE(s16.isMarked(RK_AreaSample_Straight16, 0x18000, 0x18000));
    const SlotOverride area(5, mark<RK_Pixel8>), area16(65, mark<RK_Pixel16>);
    EXPECT_TRUE(s8.isMarked(RK_AreaSample_Straight, 0x18000, 0x18000));
    EXPECT_TRUE(s16.isMarked(RK_AreaSample_Straight16, 0x18000, 0x18000));
    EXPECT_FALSE(s8.isMarked(RK_AreaSample_CPlusPlus<RK_Pixel8>, 0x18000, 0x18000));
}
// In one direction and for a point; a box reads the source itself.
TEST(AreaSamplerSlots, PointSamplesGoThroughTheirSlots) {
    Red<RK_Pixel8> s8;
    Red<RK_Pixel16> s16;
    Red<RK_PixelFloat> real;
    const SlotOverride straight(3, mark<RK_Pixel8>), straight16(64, mark<RK_Pixel16>),
        premul(4, mark<RK_Pixel8>);
    for (const int32_t x_radius : {0x8000, 0x18000}) {
        for (const int32_t y_radius : {0x8000, 0x18000}) {
            const bool point = x_radius == 0x8000 || y_radius == 0x8000;
            EXPECT_EQ(point, s8.isMarked(RKp_AreaSample8_Static, x_radius, y_radius));
            EXPECT_EQ(point, s8.isMarked(RK_AreaSample_CPlusPlus<RK_Pixel8>, x_radius, y_radius));
            EXPECT_EQ(point, s8.isMarked(RK_AreaSample_Premul, x_radius, y_radius));
            EXPECT_EQ(point, s16.isMarked(RKp_AreaSample16_Static, x_radius, y_radius));
            EXPECT_EQ(point, s16.isMarked(RK_AreaSample_CPlusPlus<RK_Pixel16>, x_radius, y_radius));
            EXPECT_FALSE(real.isMarked(RK_AreaSample_CPlusPlus<RK_PixelFloat>, x_radius, y_radius));
        }
    }
}

template <class P>
bool behindIsMarked(int slot) {
    Red<P> red;
    red.pb.x_radius = red.pb.y_radius = 0x18000;
    auto* const scan = reinterpret_cast<RK_BehindScan<P>*>(RKp_G_OverFuncs[slot]);
    const int32_t line[4] = {0x40000, 0x40000, 0x50000, 0x40000}, steps[4] = {0, 0, 0, 0};
    P out{};
    EXPECT_EQ(scan(nullptr, 1, line, steps, &red.pb, &out), 0);
    return out.blue != 0;
}
TEST(BehindScanSlots, BilinearAndAreaSampleThroughSlotsAndNearestDoesNot) {
    const SlotOverride nearest(2, mark<RK_Pixel8>), nearest16(63, mark<RK_Pixel16>);
    EXPECT_FALSE(behindIsMarked<RK_Pixel8>(17));
    EXPECT_FALSE(behindIsMarked<RK_Pixel16>(20));
    {
        const SlotOverride point(3, mark<RK_Pixel8>), point16(64, mark<RK_Pixel16>);
        EXPECT_TRUE(behindIsMarked<RK_Pixel8>(18));
        EXPECT_TRUE(behindIsMarked<RK_Pixel16>(21));
        EXPECT_FALSE(behindIsMarked<RK_Pixel8>(19));
        EXPECT_FALSE(behindIsMarked<RK_Pixel16>(22));
    }
    const SlotOverride area(5, mark<RK_Pixel8>), area16(65, mark<RK_Pixel16>);
    EXPECT_TRUE(behindIsMarked<RK_Pixel8>(19));
    EXPECT_TRUE(behindIsMarked<RK_Pixel16>(22));
    EXPECT_FALSE(behindIsMarked<RK_Pixel8>(18));
}

// ---- What is not read -----------------------------------------------------------------------------------

// A reference that nobody may follow, and a block of which only the fields for sampling are set.
template <class P>
void ignoresTheRest(std::initializer_list<RK_Sampler<P>*> samplers) {
    test::Picture<P> picture(6, 5);
    picture.fillRandom(3);
    const RK_LayerDef record = picture.record();
    RK_SampPB plain{}, odd;
    std::memset(static_cast<void*>(&odd), 0xA5, sizeof odd);
    plain.src = odd.src = &record;
    plain.x_radius = odd.x_radius = 0x14000;
    plain.y_radius = odd.y_radius = 0x18000;
    plain.area = odd.area = 0x78000;
    void* const nowhere = &odd;
    for (RK_Sampler<P>* const sampler : samplers) {
        P a{}, b{};
        EXPECT_EQ(sampler(nullptr, 0x23456, 0x12345, &plain, &a), 0);
        EXPECT_EQ(sampler(nowhere, 0x23456, 0x12345, &odd, &b), 0);
        EXPECT_TRUE(test::samePixel(a, b));
    }
}
TEST(Samplers, ReadTheirSourceRadiiAndAreaOnly) {
    ignoresTheRest<RK_Pixel8>({RK_SubpixelSample_Straight, RK_SubpixelSampleNoClip_Straight,
                               RK_SubpixelCPlusPlus, RK_SubpixelCPlusPlusNoClip, RK_SubpixelSample_Premul,
                               RKp_SubpixelSampleNoClip_SSE2, RK_NNSample, RK_AreaSample_Straight,
                               RK_AreaSample_Premul});
    ignoresTheRest<RK_Pixel16>({RK_SubpixelSample_Straight16, RK_SubpixelSampleNoClip_Straight16,
                                RK_SubpixelCPlusPlus16, RK_SubpixelCPlusPlusNoClip16, RK_NNSample16,
                                RK_AreaSample_Straight16});
    ignoresTheRest<RK_PixelFloat>(
        {RK_SubpixelCPlusPlusFloat, RK_SubpixelCPlusPlusNoClipFloat, RK_NNSampleFloat, RK_AreaSampleFloat});
}

// Four equal neighbours are answered before any weight is looked at.
template <class P>
void needsNoWeights(RK_SamplerTranslate<P>* sampler) {
    test::Picture<P> picture(2, 2);
    test::Random r(5);
    const P pixel = test::pixel<P>(r);
    picture.fill(pixel);
    const RK_LayerDef record = picture.record();
    RK_SampPB pb{};
    pb.src = &record;
    const double nan = std::nan(""), weights[4] = {nan, nan, nan, nan};
    P out{};
    EXPECT_EQ(sampler(nullptr, 0x8000, 0x4000, weights, &pb, &out), 0);
    EXPECT_TRUE(test::sameBytes(pixel, out));
    picture.at(1, 1) = P{};
    EXPECT_EQ(sampler(nullptr, 0, 0, weights, &pb, &out), 0);
    EXPECT_TRUE(test::sameBytes(pixel, out));
}
TEST(Samplers, FourEqualNeighboursAndWholePositionsNeedNoWeightsInTheDefaultForms) {
    needsNoWeights<RK_Pixel8>(RK_SubpixelSampleTranslateNoClip_Straight);
    needsNoWeights<RK_Pixel16>(RK_SubpixelSampleTranslateNoClip_Straight16);
}

// ---- Rounding -------------------------------------------------------------------------------------------

// What a default 8-bit form gives under each of the thread's rounding modes, which stays as it was.
template <class Sample>
void roundsAlike(Sample sample) {
    const RK_Pixel8 wanted = sample();
    for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        std::fesetround(mode);
        const RK_Pixel8 got = sample();
        const int left = std::fegetround();
        std::fesetround(FE_TONEAREST);
        ASSERT_EQ(mode, left);
        ASSERT_TRUE(test::sameBytes(wanted, got)) << "mode " << mode;
    }
}
TEST(Samplers, EveryDefault8BitFormRoundsToNearestWhateverTheThreadsMode) {
    test::Picture<RK_Pixel8> picture(9, 9);
    picture.fillRandom(6);
    const RK_LayerDef record = picture.record();
    RK_SampPB pb{};
    pb.src = &record;
    test::Random r(7);
    for (int i = 0; i < 2000; ++i) {
        const auto x = static_cast<int32_t>(r.below(0x80000)), y = static_cast<int32_t>(r.below(0x80000));
        pb.x_radius = static_cast<int32_t>(1 + r.below(0x20000));
        pb.y_radius = static_cast<int32_t>(1 + r.below(0x20000));
        double weights[4];
        RK_SubpixelSampleComputeWeight(static_cast<uint16_t>(x & 0xFFFF), static_cast<uint16_t>(y & 0xFFFF),
                                       weights);
        uint8_t inside;
        RK_Pixel8 p;
        for (RK_Sampler<RK_Pixel8>* const sampler :
             {RK_SubpixelSample_Straight, RK_SubpixelSampleNoClip_Straight, RKp_AreaSample8_Static})
            roundsAlike([&] { return sampler(nullptr, x, y, &pb, &p), p; });
        roundsAlike([&] { return RK_SubpixelSamplePlus_Straight(nullptr, x, y, &pb, &inside, &p), p; });
        roundsAlike(
            [&] { return RK_SubpixelSampleTranslateNoClip_Straight(nullptr, x, y, weights, &pb, &p), p; });
        int32_t sum = 0;
        roundsAlike([&] {
            return RK_SubpixelSpanSampleTranslateNoClip_Straight(nullptr, 1, x, y, &pb, &sum, &p), p;
        });
    }
}

TEST(Samplers, AHypotenuseIsNotGuardedAgainstOverflow) {
    EXPECT_EQ(RK_Hypot(3, -4), 5);
    EXPECT_EQ(RK_Hypot(0, 0), 0);
    EXPECT_EQ(RK_Hypot(1, 1e-200), 1);
    EXPECT_EQ(RK_Hypot(1e200, 1), INFINITY);
    EXPECT_EQ(RK_Hypot(1e-200, 1e-200), 0);
    EXPECT_TRUE(std::isnan(RK_Hypot(std::nan(""), 1)));
}

}  // namespace
