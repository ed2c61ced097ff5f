#include "RK/indep/passes/RKp_AlphaMerge.h"

#include <cmath>
#include <limits>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "test/passes/Scans.h"

namespace {

template <class P>
using Channel = typename RKp_Depth<P>::Channel;

// work(function) for the default, and for the vector form where this machine can run it.
template <class P, class Work>
void eachMerge(Work work) {
    {
        SCOPED_TRACE("default");
        work(RKp_AlphaMerge<P>);
    }
    if (RefHost::DetectCPU().has_sse2) {
        SCOPED_TRACE("vector form");
        work(RKp_AlphaMerge_SSE2<P>);
    }
}

// The alpha of one destination pixel, in the middle of enough others to be in a vector.
template <class P>
Channel<P> merged(RKp_AlphaMergeFunc<P>* merge, Channel<P> da, Channel<P> sa, Channel<P> opacity,
                  const Channel<P>* ma) {
    const P s = {sa, 1, 1, 1}, m = {ma ? *ma : Channel<P>{}, 1, 1, 1}, d = {da, 2, 3, 4};
    const std::vector<P> src(23, s), matte(23, m);
    std::vector<P> dst(23, d);
    EXPECT_EQ(0, merge(23, src.data(), opacity, ma ? matte.data() : nullptr, dst.data()));
    for (const P& p : dst) {
        EXPECT_TRUE(p.red == 2 && p.green == 3 && p.blue == 4) << "a colour was written";
        EXPECT_TRUE(test::sameBytes(p, dst[0]));
    }
    return dst[0].alpha;
}

// The rule in exact arithmetic.
template <class E>
int64_t exact(int64_t da, int64_t sa, int64_t opacity, const int64_t* ma) {
    if (opacity == 0) return da;
    int64_t t = opacity == E::kFull ? sa : E::mul(sa, opacity);
    if (ma) t = E::mul(*ma, t);
    return E::kFull - E::mul(E::kFull - t, E::kFull - da);
}

TEST(AlphaMerge, EverySourceAndDestinationAlphaAtEightBitsUnites) {
    std::vector<RK_Pixel8> src, matte, before;
    for (int s = 0; s < 256; ++s)
        for (int d = 0; d < 256; ++d) {
            src.push_back({uint8_t(s), 9, 9, 9});
            matte.push_back({uint8_t(s * 3 + d * 5), 9, 9, 9});
            before.push_back({uint8_t(d), 1, 2, 3});
        }
    eachMerge<RK_Pixel8>([&](auto* merge) {
        for (int opacity = 0; opacity < 256; ++opacity)
            for (bool with_matte : {false, true}) {
                std::vector<RK_Pixel8> dst = before;
                ASSERT_EQ(0, merge(65536, src.data(), uint8_t(opacity), with_matte ? matte.data() : nullptr,
                                   dst.data()));
                for (size_t i = 0; i < dst.size(); ++i) {
                    const int64_t ma = matte[i].alpha;
                    const int64_t want = exact<test::Exact8>(before[i].alpha, src[i].alpha, opacity,
                                                             with_matte ? &ma : nullptr);
                    if (want != dst[i].alpha)
                        FAIL() << want << " expected, opacity " << opacity << " pixel " << i;
                }
            }
    });
}

TEST(AlphaMerge, SixteenBitAlphasUnite) {
    test::Random r(4);
    std::vector<RK_Pixel16> src(20000), matte(20000), before(20000);
    for (size_t i = 0; i < src.size(); ++i) {
        src[i] = test::pixel<RK_Pixel16>(r);
        matte[i] = test::pixel<RK_Pixel16>(r);
        before[i] = test::pixel<RK_Pixel16>(r);
    }
    eachMerge<RK_Pixel16>([&](auto* merge) {
        for (int opacity : {0, 1, 16383, 16384, 16385, 32767, 32768})
            for (bool with_matte : {false, true}) {
                std::vector<RK_Pixel16> dst = before;
                ASSERT_EQ(0, merge(20000, src.data(), uint16_t(opacity), with_matte ? matte.data() : nullptr,
                                   dst.data()));
                for (size_t i = 0; i < dst.size(); ++i) {
                    const int64_t ma = matte[i].alpha;
                    const int64_t want = exact<test::Exact16>(before[i].alpha, src[i].alpha, opacity,
                                                              with_matte ? &ma : nullptr);
                    if (want != dst[i].alpha)
                        FAIL() << want << " expected, opacity " << opacity << " pixel " << i;
                }
            }
    });
}

TEST(AlphaMerge, FloatAlphasUniteInSinglePrecisionSteps) {
    test::Random r(6);
    eachMerge<RK_PixelFloat>([&](auto* merge) {
        for (int i = 0; i < 2000; ++i) {
            const float da = test::alphaChannel(r, float{}), sa = test::alphaChannel(r, float{});
            const float ma = test::alphaChannel(r, float{}), opacity = i % 3 == 0 ? 1.0f : r.unit() + 0.01f;
            volatile float t = opacity == 1.0f ? sa : sa * opacity;
            volatile float open = 1.0f - da;
            volatile float product = open * (1.0f - t);
            EXPECT_EQ(1.0f - product, merged<RK_PixelFloat>(merge, da, sa, opacity, nullptr));
            t = ma * t;
            product = open * (1.0f - t);
            EXPECT_EQ(1.0f - product, merged<RK_PixelFloat>(merge, da, sa, opacity, &ma));
        }
    });
}

TEST(AlphaMerge, OpacityComesBeforeTheMatte) {
    // mul8(74, mul8(25, 14)) is 0, mul8(14, mul8(25, 74)) is 0 too; so take alphas where the two orders
    // differ.
    int differ = 0;
    for (int sa = 1; sa < 256 && differ < 20; sa += 13)
        for (int opacity = 1; opacity < 255 && differ < 20; opacity += 7)
            for (int ma = 1; ma < 255; ma += 11) {
                using E = test::Exact8;
                const int64_t first = E::mul(ma, E::mul(sa, opacity)), last = E::mul(opacity, E::mul(sa, ma));
                if (first == last) continue;
                ++differ;
                const auto m = static_cast<uint8_t>(ma);
                eachMerge<RK_Pixel8>([&](auto* merge) {
                    EXPECT_EQ(first, merged<RK_Pixel8>(merge, 0, uint8_t(sa), uint8_t(opacity), &m));
                });
            }
    EXPECT_GE(differ, 20);
}

TEST(AlphaMerge, OpacityZeroDoesNothingWithOrWithoutAMatte) {
    const uint8_t m8 = 255;
    const uint16_t m16 = 32768;
    const float mf = 1.0f;
    eachMerge<RK_Pixel8>([&](auto* merge) {
        EXPECT_EQ(100, merged<RK_Pixel8>(merge, 100, 255, 0, nullptr));
        EXPECT_EQ(100, merged<RK_Pixel8>(merge, 100, 255, 0, &m8));
        EXPECT_EQ(0, merge(5, nullptr, 0, nullptr, nullptr));
    });
    eachMerge<RK_Pixel16>([&](auto* merge) { EXPECT_EQ(7, merged<RK_Pixel16>(merge, 7, 32768, 0, &m16)); });
    eachMerge<RK_PixelFloat>([&](auto* merge) {
        EXPECT_EQ(1e-9f, merged<RK_PixelFloat>(merge, 1e-9f, 1.0f, 0.0f, nullptr));
        // The rule would round this alpha away.
        EXPECT_EQ(1e-9f, merged<RK_PixelFloat>(merge, 1e-9f, 1.0f, -0.0f, &mf));
        EXPECT_EQ(0.0f, merged<RK_PixelFloat>(merge, 1e-9f, 0.0f, 0.5f, &mf));
    });
}

TEST(AlphaMerge, OnlyExactlyFullOpacitySkipsTheScaling) {
    eachMerge<RK_Pixel16>([](auto* merge) {
        EXPECT_EQ(32768, merged<RK_Pixel16>(merge, 0, 32768, 32768, nullptr));
        EXPECT_EQ(32767, merged<RK_Pixel16>(merge, 0, 32768, 32767, nullptr));
        // Above full scales up.
        EXPECT_EQ(33096, merged<RK_Pixel16>(merge, 0, 32768, 33096, nullptr));
    });
    eachMerge<RK_PixelFloat>([](auto* merge) {
        EXPECT_EQ(1.5f, merged<RK_PixelFloat>(merge, 0.0f, 1.0f, 1.5f, nullptr));
        EXPECT_TRUE(std::isnan(merged<RK_PixelFloat>(merge, 0.0f, 1.0f, std::nanf(""), nullptr)));
    });
}

TEST(AlphaMerge, AnOpaqueOrClearSideDecides) {
    eachMerge<RK_Pixel8>([](auto* merge) {
        for (int a = 0; a < 256; ++a) {
            EXPECT_EQ(a, merged<RK_Pixel8>(merge, uint8_t(a), 0, 255, nullptr));
            EXPECT_EQ(a, merged<RK_Pixel8>(merge, 0, uint8_t(a), 255, nullptr));
            EXPECT_EQ(255, merged<RK_Pixel8>(merge, uint8_t(a), 255, 255, nullptr));
        }
    });
}

TEST(AlphaMerge, ACountBelowOneTouchesNothing) {
    eachMerge<RK_PixelFloat>([](auto* merge) {
        for (RK_Long count : {RK_Long{0}, RK_Long{-1}, std::numeric_limits<RK_Long>::min()})
            EXPECT_EQ(0, merge(count, nullptr, 1.0f, nullptr, nullptr));
    });
    eachMerge<RK_Pixel8>([](auto* merge) { EXPECT_EQ(0, merge(-4, nullptr, 255, nullptr, nullptr)); });
}

TEST(AlphaMerge, TheTableHoldsThem) {
    const bool vector = KIT_G_CPU_DataP->has_sse2 != 0;
    EXPECT_EQ(vector ? RKp_AlphaMerge_SSE2<RK_Pixel8> : RKp_AlphaMerge<RK_Pixel8>, RKp_Slot<41>());
    EXPECT_EQ(vector ? RKp_AlphaMerge_SSE2<RK_Pixel16> : RKp_AlphaMerge<RK_Pixel16>, RKp_Slot<78>());
    EXPECT_EQ(vector ? RKp_AlphaMerge_SSE2<RK_PixelFloat> : RKp_AlphaMerge<RK_PixelFloat>, RKp_Slot<112>());
}

}  // namespace
