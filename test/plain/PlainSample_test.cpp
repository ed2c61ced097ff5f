// Every bilinear and nearest sampler against its plain twin, at positions inside, at the edges and far away,
// over sources between pages that cannot be read.
#include <gtest/gtest.h>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/sample/RK_AreaSample.h"
#include "RK/indep/sample/RK_SubpixelSample.h"
#include "test/plain/PlainSample.h"
#include "test/plain/SampleWorlds.h"

namespace {

using plain::bilinearDefault;
using plain::bilinearPortable;
using test::insidePosition;
using test::position;
using test::sampleBlock;
using test::sampleWorld;
using test::show;
using test::showPosition;
using test::side;

constexpr int kWorlds = 6000, kPositions = 40;

// Calls test(world, block) with many worlds of at least `smallest` pixels a side.
template <class P, class Test>
void overWorlds(uint32_t seed, int smallest, Test test) {
    test::Random r(seed + sizeof(P));
    test::GuardedRows rows;
    const int count = test::amount(kWorlds);
    for (int i = 0; i < count && !testing::Test::HasFatalFailure(); ++i) {
        const int width = std::max(smallest, side(r)), height = std::max(smallest, side(r));
        test::World<P> world = sampleWorld<P>(r, width, height);
        test::guardSome(r, rows, world);
        const RK_SampPB pb = sampleBlock(world.record);
        test(r, world.record, pb);
    }
}
template <class P>
void expectSame(const P& expected, const P& got, int32_t x, int32_t y, const RK_LayerDef& src) {
    if (!test::samePixel(expected, got))
        FAIL() << "expected " << show(expected) << ", got " << show(got) << showPosition(x, y, src);
}

template <class P, class Plain>
void compare(RK_Sampler<P>* sampler, Plain twin, bool inside) {
    overWorlds<P>(1, inside ? 2 : 1, [&](test::Random& r, const RK_LayerDef& src, const RK_SampPB& pb) {
        for (int i = 0; i < kPositions; ++i) {
            const int32_t x = inside ? insidePosition(r, src.width) : position(r, src.width);
            const int32_t y = inside ? insidePosition(r, src.height) : position(r, src.height);
            P got = test::pixel<P>(r);
            ASSERT_EQ(sampler(nullptr, x, y, &pb, &got), 0);
            expectSame<P>(twin(x, y, src), got, x, y, src);
        }
    });
}

template <class P>
P byDefault(int32_t x, int32_t y, const RK_LayerDef& src) {
    return bilinearDefault<P>(x, y, src);
}
template <class P>
P portably(int32_t x, int32_t y, const RK_LayerDef& src) {
    return bilinearPortable<P>(x, y, src);
}

TEST(SamplersAgainstPlain, ClippedDefaultForms) {
    compare<RK_Pixel8>(RK_SubpixelSample_Straight, byDefault<RK_Pixel8>, false);
    compare<RK_Pixel16>(RK_SubpixelSample_Straight16, byDefault<RK_Pixel16>, false);
}
TEST(SamplersAgainstPlain, ClippedPortableForms) {
    compare<RK_Pixel8>(RK_SubpixelCPlusPlus, portably<RK_Pixel8>, false);
    compare<RK_Pixel16>(RK_SubpixelCPlusPlus16, portably<RK_Pixel16>, false);
    compare<RK_PixelFloat>(RK_SubpixelCPlusPlusFloat, portably<RK_PixelFloat>, false);
}
TEST(SamplersAgainstPlain, NoClipForms) {
    compare<RK_Pixel8>(RK_SubpixelSampleNoClip_Straight, byDefault<RK_Pixel8>, true);
    compare<RK_Pixel16>(RK_SubpixelSampleNoClip_Straight16, byDefault<RK_Pixel16>, true);
    compare<RK_Pixel8>(RK_SubpixelCPlusPlusNoClip, portably<RK_Pixel8>, true);
    compare<RK_Pixel16>(RK_SubpixelCPlusPlusNoClip16, portably<RK_Pixel16>, true);
    compare<RK_PixelFloat>(RK_SubpixelCPlusPlusNoClipFloat, portably<RK_PixelFloat>, true);
}
TEST(SamplersAgainstPlain, TheNoClipSlotHoldsTheFormOfTheProcessor) {
    const bool sse2 = KIT_G_CPU_DataP->has_sse2 != 0;
    compare<RK_Pixel8>(RKp_GetSamplerBundle<RK_Pixel8>().no_clip,
                       sse2 ? plain::bilinearNested : byDefault<RK_Pixel8>, true);
    compare<RK_Pixel8>(RKp_SubpixelSampleNoClip_SSE2, plain::bilinearNested, true);
}
TEST(SamplersAgainstPlain, Premultiplied) {
    compare<RK_Pixel8>(RK_SubpixelSample_Premul, plain::bilinearPremul, false);
    compare<RK_Pixel8>(RKp_Slot<4>(), plain::bilinearPremul, false);
}
TEST(SamplersAgainstPlain, Nearest) {
    compare<RK_Pixel8>(RK_NNSample, plain::nearest<RK_Pixel8>, false);
    compare<RK_Pixel16>(RK_NNSample16, plain::nearest<RK_Pixel16>, false);
    compare<RK_PixelFloat>(RK_NNSampleFloat, plain::nearest<RK_PixelFloat>, false);
}

// ---- Weights given by the caller ------------------------------------------------------------------------

TEST(SamplersAgainstPlain, WeightsOfEveryFraction) {
    test::Random r(3);
    const int count = test::amount(1000000);
    for (int i = 0; i < count; ++i) {
        const uint16_t x = static_cast<uint16_t>(test::fraction(r)),
                       y = static_cast<uint16_t>(test::fraction(r));
        double got[4];
        ASSERT_EQ(RK_SubpixelSampleComputeWeight(x, y, got), 0);
        ASSERT_EQ(std::memcmp(got, plain::Weights<double>(x, y).w, sizeof got), 0) << x << ", " << y;
    }
}
// Now and then the weights are another position's: nothing of them is computed anew.
template <class P, class Plain>
void compareTranslate(RK_SamplerTranslate<P>* sampler, Plain twin) {
    overWorlds<P>(2, 2, [&](test::Random& r, const RK_LayerDef& src, const RK_SampPB& pb) {
        for (int i = 0; i < kPositions; ++i) {
            const int32_t x = insidePosition(r, src.width), y = insidePosition(r, src.height);
            const bool own = r.below(4) != 0;
            const plain::Weights<double> weights(own ? x : test::fraction(r), own ? y : test::fraction(r));
            P got = test::pixel<P>(r);
            ASSERT_EQ(sampler(nullptr, x, y, weights.w, &pb, &got), 0);
            expectSame<P>(twin(x, y, src, weights.w), got, x, y, src);
        }
    });
}
TEST(SamplersAgainstPlain, TranslateForms) {
    compareTranslate<RK_Pixel8>(RK_SubpixelSampleTranslateNoClip_Straight, bilinearDefault<RK_Pixel8>);
    compareTranslate<RK_Pixel16>(RK_SubpixelSampleTranslateNoClip_Straight16, bilinearDefault<RK_Pixel16>);
    compareTranslate<RK_PixelFloat>(RK_SubpixelSampleTranslateNoClipCPlusPlusFloat,
                                    bilinearPortable<RK_PixelFloat>);
}

TEST(SamplersAgainstPlain, FourAtOnce) {
    overWorlds<RK_Pixel8>(4, 2, [](test::Random& r, const RK_LayerDef& src, const RK_SampPB& pb) {
        for (int i = 0; i < kPositions / 4; ++i) {
            int32_t xy[8];
            double weights[16];
            for (int k = 0; k < 4; ++k) {
                xy[2 * k] = insidePosition(r, src.width);
                xy[2 * k + 1] = insidePosition(r, src.height);
                const bool own = r.below(4) != 0;
                const plain::Weights<double> w(own ? xy[2 * k] : test::fraction(r),
                                               own ? xy[2 * k + 1] : test::fraction(r));
                std::copy(w.w, w.w + 4, weights + 4 * k);
            }
            RK_Pixel8 got[4], translated[4];
            ASSERT_EQ(RK_SubpixelSampleNoClip_Straight_4(nullptr, xy, &pb, got), 0);
            ASSERT_EQ(RK_SubpixelSampleTranslateNoClip_Straight_4(nullptr, xy, weights, &pb, translated), 0);
            for (int k = 0; k < 4; ++k) {
                const int32_t x = xy[2 * k], y = xy[2 * k + 1];
                expectSame(plain::bilinearOfFour(x, y, src), got[k], x, y, src);
                expectSame(plain::bilinearOfFour(x, y, src, weights + 4 * k), translated[k], x, y, src);
            }
        }
    });
}

// ---- Forms that tell more than the pixel ----------------------------------------------------------------

template <class P, class Plain>
void comparePlus(RK_SamplerPlus<P>* sampler, Plain twin) {
    overWorlds<P>(5, 1, [&](test::Random& r, const RK_LayerDef& src, const RK_SampPB& pb) {
        for (int i = 0; i < kPositions; ++i) {
            const int32_t x = position(r, src.width), y = position(r, src.height);
            P got = test::pixel<P>(r);
            uint8_t all_inside = 77;
            ASSERT_EQ(sampler(nullptr, x, y, &pb, &all_inside, &got), 0);
            expectSame<P>(twin(x, y, src), got, x, y, src);
            const bool inside = !plain::whole(x, y) && plain::Neighbours<P>(src, x, y).all_inside;
            ASSERT_EQ(int{all_inside}, int{inside}) << showPosition(x, y, src);
        }
    });
}
TEST(SamplersAgainstPlain, PlusForms) {
    comparePlus<RK_Pixel8>(RK_SubpixelSamplePlus_Straight, byDefault<RK_Pixel8>);
    comparePlus<RK_Pixel16>(RK_SubpixelSamplePlus_Straight16, byDefault<RK_Pixel16>);
    comparePlus<RK_PixelFloat>(RK_SubpixelSpanSampleAllInCPlusPlusFloat, portably<RK_PixelFloat>);
}

template <class P, class Plain>
void compareSpan(RK_SamplerSpan<P>* sampler, Plain twin) {
    overWorlds<P>(6, 2, [&](test::Random& r, const RK_LayerDef& src, const RK_SampPB& pb) {
        for (int i = 0; i < 4; ++i) {
            const int32_t x = insidePosition(r, src.width), y = insidePosition(r, src.height);
            const int room = src.width - 1 - (x >> 16);
            const int count = static_cast<int>(r.below(static_cast<uint32_t>(room) + 2)) - 1;
            const std::vector<P> before(static_cast<size_t>(src.width), test::pixel<P>(r));
            std::vector<P> got(before), expected(before);
            const RK_AlphaSum<P> start = static_cast<RK_AlphaSum<P>>(r.below(1000));
            RK_AlphaSum<P> sum = start, expected_sum = start;
            for (int k = 0; k < count; ++k) {
                expected[static_cast<size_t>(k)] = twin(x + k * 0x10000, y, src);
                expected_sum += expected[static_cast<size_t>(k)].alpha;
            }
            ASSERT_EQ(sampler(nullptr, count, x, y, &pb, &sum, got.data()), 0);
            ASSERT_EQ(test::firstDifference(expected.data(), got.data(), src.width), -1)
                << count << " pixels" << showPosition(x, y, src);
            ASSERT_TRUE(sum == expected_sum || (sum != sum && expected_sum != expected_sum))
                << sum << ", expected " << expected_sum << "; " << count << " pixels"
                << showPosition(x, y, src);
        }
    });
}
TEST(SamplersAgainstPlain, SpanForms) {
    compareSpan<RK_Pixel8>(RK_SubpixelSpanSampleTranslateNoClip_Straight, byDefault<RK_Pixel8>);
    compareSpan<RK_Pixel16>(RK_SubpixelSpanSampleTranslateNoClip_Straight16, byDefault<RK_Pixel16>);
    compareSpan<RK_Pixel8>(RK_SubpixelSpanSampleCPlusPlus, portably<RK_Pixel8>);
    compareSpan<RK_Pixel16>(RK_SubpixelSpanSampleCPlusPlus16, portably<RK_Pixel16>);
    compareSpan<RK_PixelFloat>(RK_SubpixelSpanSampleCPlusPlusFloat, portably<RK_PixelFloat>);
}

}  // namespace
