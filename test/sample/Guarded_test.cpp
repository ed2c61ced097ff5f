// What never reads outside the source: every form without bounds tests, at every edge, over rows between
// pages that cannot be touched. A read outside ends the program.
#include <gtest/gtest.h>

#include <vector>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/sample/RK_AreaSample.h"
#include "RK/indep/sample/RK_SubpixelSample.h"
#include "test/GuardedRows.h"
#include "test/Pixels.h"

namespace {

constexpr int32_t kFractions[] = {0, 1, 0x7FFF, 0x8000, 0xFFFF};

// A random picture of the size, once against the page before its rows and once against the page behind them.
template <class P, class Test>
void overGuarded(int width, int height, Test test) {
    test::Picture<P> picture(width, height, 0);
    picture.fillRandom(static_cast<uint32_t>(width * 100 + height));
    test::GuardedRows rows;
    for (const bool against_end : {false, true}) {
        for (const bool upwards : {false, true}) {
            RK_LayerDef record = picture.record();
            if (upwards) {
                record.data = picture.row(height - 1);
                record.rowbytes = -record.rowbytes;
            }
            ASSERT_TRUE(rows.take<P>(record, against_end));
            RK_SampPB pb{};
            pb.src = &record;
            test(pb, record);
        }
    }
}

// Every position whose four neighbours are inside.
template <class Visit>
void overInside(const RK_LayerDef& src, Visit visit) {
    for (int32_t yi = 0; yi + 1 < src.height; ++yi)
        for (int32_t xi = 0; xi + 1 < src.width; ++xi)
            for (const int32_t v : kFractions)
                for (const int32_t u : kFractions) visit(xi * 0x10000 + u, yi * 0x10000 + v);
}

TEST(GuardedSource, TheGuardEndsTheProgram) {
    overGuarded<RK_Pixel8>(3, 2, [](const RK_SampPB& pb, const RK_LayerDef& src) {
        RK_Pixel8 out;
        // Row -1 does not exist on either side of the block.
        EXPECT_DEATH(RK_SubpixelSampleNoClip_Straight(nullptr, 0x8000, -0x8000, &pb, &out), "");
        EXPECT_DEATH(RK_SubpixelSampleNoClip_Straight(nullptr, 0, src.height * 0x10000, &pb, &out), "");
    });
}

template <class P>
void noClip(std::initializer_list<RK_Sampler<P>*> samplers) {
    for (RK_Sampler<P>* const sampler : samplers)
        overGuarded<P>(3, 3, [sampler](const RK_SampPB& pb, const RK_LayerDef& src) {
            overInside(src, [&](int32_t x, int32_t y) {
                P out;
                EXPECT_EQ(sampler(nullptr, x, y, &pb, &out), 0);
            });
        });
}
TEST(GuardedSource, NoClipFormsReadTheirFourNeighboursOnly) {
    noClip<RK_Pixel8>({RK_SubpixelSampleNoClip_Straight, RK_SubpixelCPlusPlusNoClip,
                       RKp_GetSamplerBundle<RK_Pixel8>().no_clip, RKp_SubpixelSampleNoClip_SSE2});
    noClip<RK_Pixel16>({RK_SubpixelSampleNoClip_Straight16, RK_SubpixelCPlusPlusNoClip16,
                        RKp_GetSamplerBundle<RK_Pixel16>().no_clip});
    noClip<RK_PixelFloat>({RK_SubpixelCPlusPlusNoClipFloat});
}

template <class P>
void translate(RK_SamplerTranslate<P>* sampler) {
    overGuarded<P>(3, 3, [sampler](const RK_SampPB& pb, const RK_LayerDef& src) {
        overInside(src, [&](int32_t x, int32_t y) {
            double weights[4];
            RK_SubpixelSampleComputeWeight(static_cast<uint16_t>(x & 0xFFFF),
                                           static_cast<uint16_t>(y & 0xFFFF), weights);
            P out;
            EXPECT_EQ(sampler(nullptr, x, y, weights, &pb, &out), 0);
        });
    });
}
TEST(GuardedSource, TranslateFormsReadTheirFourNeighboursOnly) {
    translate<RK_Pixel8>(RK_SubpixelSampleTranslateNoClip_Straight);
    translate<RK_Pixel16>(RK_SubpixelSampleTranslateNoClip_Straight16);
    translate<RK_PixelFloat>(RK_SubpixelSampleTranslateNoClipCPlusPlusFloat);
}

// A fractional run ends with its last right neighbour in the last column.
template <class P>
void span(RK_SamplerSpan<P>* sampler) {
    overGuarded<P>(13, 2, [sampler](const RK_SampPB& pb, const RK_LayerDef& src) {
        for (int32_t begin = 0; begin + 1 < src.width; ++begin)
            for (const int32_t u : kFractions)
                for (const int32_t v : kFractions) {
                    std::vector<P> out(static_cast<size_t>(src.width));
                    RK_AlphaSum<P> sum = 0;
                    EXPECT_EQ(sampler(nullptr, src.width - 1 - begin, begin * 0x10000 + u, v, &pb, &sum,
                                      out.data()),
                              0);
                }
    });
}
TEST(GuardedSource, SpanFormsReadTheirRunOnly) {
    span<RK_Pixel8>(RK_SubpixelSpanSampleTranslateNoClip_Straight);
    span<RK_Pixel8>(RK_SubpixelSpanSampleCPlusPlus);
    span<RK_Pixel16>(RK_SubpixelSpanSampleTranslateNoClip_Straight16);
    span<RK_Pixel16>(RK_SubpixelSpanSampleCPlusPlus16);
    span<RK_PixelFloat>(RK_SubpixelSpanSampleCPlusPlusFloat);
}

TEST(GuardedSource, FourAtOnceReadTheirSixteenNeighboursOnly) {
    overGuarded<RK_Pixel8>(3, 3, [](const RK_SampPB& pb, const RK_LayerDef& src) {
        std::vector<int32_t> positions;
        overInside(src, [&](int32_t x, int32_t y) { positions.insert(positions.end(), {x, y}); });
        for (size_t i = 0; i + 8 <= positions.size(); i += 2) {
            const double weights[16] = {0.25, 0.25, 0.25, 0.25, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1};
            RK_Pixel8 out[4];
            EXPECT_EQ(RK_SubpixelSampleNoClip_Straight_4(nullptr, &positions[i], &pb, out), 0);
            EXPECT_EQ(RK_SubpixelSampleTranslateNoClip_Straight_4(nullptr, &positions[i], weights, &pb, out),
                      0);
        }
    });
}

// The default forms touch one pixel at a whole position: the only one of this source.
template <class P>
void onePixel(RK_Sampler<P>* no_clip, RK_SamplerTranslate<P>* translated, RK_SamplerSpan<P>* run) {
    overGuarded<P>(1, 1, [&](const RK_SampPB& pb, const RK_LayerDef& src) {
        const double weights[4] = {1, 0, 0, 0};
        const P* const pixel = static_cast<const P*>(src.data);
        P out{};
        RK_AlphaSum<P> sum = 0;
        EXPECT_EQ(no_clip(nullptr, 0, 0, &pb, &out), 0);
        EXPECT_TRUE(test::sameBytes(*pixel, out));
        out = P{};
        EXPECT_EQ(translated(nullptr, 0, 0, weights, &pb, &out), 0);
        EXPECT_TRUE(test::sameBytes(*pixel, out));
        out = P{};
        EXPECT_EQ(run(nullptr, 1, 0, 0, &pb, &sum, &out), 0);
        EXPECT_TRUE(test::sameBytes(*pixel, out));
        EXPECT_EQ(sum, pixel->alpha);
    });
}
TEST(GuardedSource, AWholePositionTouchesOnePixelInTheDefaultForms) {
    for (RK_Sampler<RK_Pixel8>* const no_clip :
         {RK_SubpixelSampleNoClip_Straight, RKp_SubpixelSampleNoClip_SSE2})
        onePixel<RK_Pixel8>(no_clip, RK_SubpixelSampleTranslateNoClip_Straight,
                            RK_SubpixelSpanSampleTranslateNoClip_Straight);
    onePixel<RK_Pixel16>(RK_SubpixelSampleNoClip_Straight16, RK_SubpixelSampleTranslateNoClip_Straight16,
                         RK_SubpixelSpanSampleTranslateNoClip_Straight16);
}

// The clipped, nearest and area forms, from everywhere around the source.
template <class P>
void everywhere(std::initializer_list<RK_Sampler<P>*> samplers) {
    for (RK_Sampler<P>* const sampler : samplers)
        overGuarded<P>(2, 3, [sampler](RK_SampPB pb, const RK_LayerDef& src) {
            for (const int32_t x_radius : {0, 0x8000, 0x8001, 0x18000})
                for (const int32_t y_radius : {0, 0x8000, 0x8001, 0x18000})
                    for (int32_t y = -0x28000; y <= (src.height + 2) * 0x10000; y += 0x3FFF)
                        for (int32_t x = -0x28000; x <= (src.width + 2) * 0x10000; x += 0x4000) {
                            pb.x_radius = x_radius;
                            pb.y_radius = y_radius;
                            pb.area = 0x10000;
                            P out;
                            EXPECT_EQ(sampler(nullptr, x, y, &pb, &out), 0);
                        }
        });
}
TEST(GuardedSource, FormsWithBoundsTestsReadInsideFromEverywhere) {
    everywhere<RK_Pixel8>({RK_SubpixelSample_Straight, RK_SubpixelCPlusPlus, RK_SubpixelSample_Premul,
                           RK_NNSample, RK_AreaSample_Straight, RK_AreaSample_Premul,
                           RKp_AreaSample8_Static});
    everywhere<RK_Pixel16>({RK_SubpixelSample_Straight16, RK_SubpixelCPlusPlus16, RK_NNSample16,
                            RK_AreaSample_Straight16, RKp_AreaSample16_Static});
    everywhere<RK_PixelFloat>({RK_SubpixelCPlusPlusFloat, RK_NNSampleFloat, RK_AreaSampleFloat});
}

}  // namespace
