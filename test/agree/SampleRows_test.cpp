// Rows of samples against one call for each position: every sampler of the bundles, every kind of source,
// steps of all kinds, all rounding modes.
#include "RK/indep/sample/RK_SampleRow.h"

#include <gtest/gtest.h>
#include <xmmintrin.h>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/sample/RK_AreaSample.h"
#include "RK/indep/sample/RK_SubpixelSample.h"
#include "test/plain/Compare.h"
#include "test/plain/SampleWorlds.h"

namespace {

constexpr unsigned kModes[] = {_MM_ROUND_NEAREST, _MM_ROUND_UP, _MM_ROUND_DOWN, _MM_ROUND_TOWARD_ZERO};
class WithRounding {
  public:
    explicit WithRounding(unsigned mode) : kept_(_mm_getcsr()) {
        _mm_setcsr((kept_ & ~static_cast<unsigned>(_MM_ROUND_MASK)) | mode);
    }
    ~WithRounding() { _mm_setcsr(kept_); }
    WithRounding(const WithRounding&) = delete;
    WithRounding& operator=(const WithRounding&) = delete;

  private:
    unsigned kept_;
};

constexpr int kMost = 67;  // positions in a row

template <class P>
class SampleRows : public testing::Test {
  protected:
    // A source whose pixels share alphas now and then, at 16 bits above full too.
    static test::World<P> source(test::Random& r) {
        auto world =
            test::sampleWorld<P>(r, 3 + static_cast<int>(r.below(80)), 2 + static_cast<int>(r.below(5)));
        const bool runs = r.below(2) == 0, loud = r.below(4) == 0;
        for (int y = 0; y < world.picture.height(); ++y)
            for (int x = 0; x < world.picture.width(); ++x) {
                P& p = world.picture.at(x, y);
                // Runs of one alpha, between them others.
                if (runs && x % 16 < 9)
                    p.alpha = static_cast<RK_Channel<P>>(x / 16 % 3 == 0 ? 0 : test::kFull<P>);
                if (loud && sizeof(P) == 8) p.red = static_cast<RK_Channel<P>>(r.below(65536));
            }
        return world;
    }
    static int32_t step(test::Random& r) {
        static const int32_t special[] = {0, 0x10000, -0x10000, 0x8000, 1, 0x20000, 0x7FFF0000};
        return r.below(2) == 0 ? special[r.below(7)] : static_cast<int32_t>(r.below(0x30000)) - 0x18000;
    }
    static RK_SampleWalk anywhere(test::Random& r, const RK_LayerDef& src) {
        RK_SampleWalk walk = {test::position(r, src.width), test::position(r, src.height), step(r), step(r)};
        if (r.below(3) == 0) walk.dx = 0x10000, walk.dy = 0;
        return walk;
    }
    // How many positions of the walk have all four neighbours inside.
    static int64_t inside(const RK_LayerDef& src, const RK_SampleWalk& walk, int64_t count) {
        for (int64_t i = 0; i < count; ++i) {
            const RK_SampleWalk at = walk.from(i);
            const int32_t x = at.x >> 16, y = at.y >> 16;
            if (x < 0 || y < 0 || x + 1 >= src.width || y + 1 >= src.height) return i;
        }
        return count;
    }

    static void expectSame(const P* wanted, const P* got, int64_t count, const RK_SampleWalk& walk,
                           const char* what) {
        const int at = test::firstDifference(wanted, got, static_cast<int>(count));
        ASSERT_EQ(-1, at) << what << ": pixel " << at << " of " << count << " from " << walk.x << ", "
                          << walk.y << " by " << walk.dx << ", " << walk.dy << ": " << test::show(wanted[at])
                          << " became " << test::show(got[at]);
    }
    static void compare(RK_Sampler<P>* sampler, const RK_SampPB& pb, const RK_SampleWalk& walk, int64_t count,
                        const char* what) {
        P wanted[kMost] = {}, got[kMost] = {};
        for (int64_t i = 0; i < count; ++i) {
            const RK_SampleWalk at = walk.from(i);
            sampler(nullptr, at.x, at.y, &pb, wanted + i);
        }
        RKp_GetRowSampler(sampler)(sampler, &pb, walk, count, got);
        expectSame(wanted, got, kMost, walk, what);
    }
};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(SampleRows, Depths, );

TYPED_TEST(SampleRows, GiveWhatOneCallForEachPositionGives) {
    test::Random r(31);
    for (int round = 0; round < test::amount(3000); ++round) {
        const auto world = this->source(r);
        const RK_LayerDef src = const_cast<test::World<TypeParam>&>(world).picture.record();
        RK_SampPB pb = test::sampleBlock(src);
        pb.x_radius = static_cast<int32_t>(1 + r.below(r.below(2) == 0 ? 32768 : 4 << 16));
        pb.y_radius = static_cast<int32_t>(1 + r.below(r.below(2) == 0 ? 32768 : 4 << 16));
        const auto samplers = RKp_GetSamplerBundle<TypeParam>();
        const WithRounding rounding(kModes[round % 8 < 5 ? 0 : round % 4]);
        const RK_SampleWalk walk = this->anywhere(r, src);
        const int64_t count = r.below(kMost + 1);
        this->compare(samplers.clipped, pb, walk, count, "clipped");
        this->compare(samplers.area, pb, walk, count, "area");
        this->compare(samplers.no_clip, pb, walk, this->inside(src, walk, count), "no-clip");
        if (this->HasFatalFailure()) return;
    }
}

using SampleRows8 = SampleRows<RK_Pixel8>;
TEST_F(SampleRows8, GiveWhatCallsOfThePremultipliedSamplersGive) {
    test::Random r(34);
    for (int round = 0; round < test::amount(3000); ++round) {
        const auto world = source(r);
        const RK_LayerDef src = const_cast<test::World<RK_Pixel8>&>(world).picture.record();
        RK_SampPB pb = test::sampleBlock(src);
        pb.x_radius = static_cast<int32_t>(1 + r.below(4 << 16));
        pb.y_radius = static_cast<int32_t>(1 + r.below(4 << 16));
        pb.area = static_cast<int32_t>(4.0 * pb.x_radius * pb.y_radius / 65536);
        const RK_SampleWalk walk = anywhere(r, src);
        const int64_t count = r.below(kMost + 1);
        compare(&RK_AreaSample_Premul, pb, walk, count, "area");
        compare(&RK_SubpixelSample_Premul, pb, walk, count, "clipped");
        if (HasFatalFailure()) return;
    }
}

TYPED_TEST(SampleRows, TranslateAsOneCallForEachPosition) {
    test::Random r(32);
    for (int round = 0; round < test::amount(3000); ++round) {
        const auto world = this->source(r);
        const RK_LayerDef src = const_cast<test::World<TypeParam>&>(world).picture.record();
        const RK_SampPB pb = test::sampleBlock(src);
        const auto samplers = RKp_GetSamplerBundle<TypeParam>();
        const WithRounding rounding(kModes[round % 8 < 5 ? 0 : round % 4]);
        const RK_SampleWalk walk = {test::insidePosition(r, src.width), test::insidePosition(r, src.height),
                                    0x10000, 0};
        const int64_t count = this->inside(src, walk, r.below(kMost + 1));
        double weights[4];
        RK_SubpixelSampleComputeWeight(static_cast<uint16_t>(walk.x & 0xFFFF),
                                       static_cast<uint16_t>(walk.y & 0xFFFF), weights);
        if (round % 4 == 0) weights[round / 4 % 4] += 0.125;
        TypeParam wanted[kMost] = {}, got[kMost] = {};
        for (int64_t i = 0; i < count; ++i) {
            const RK_SampleWalk at = walk.from(i);
            samplers.translate(nullptr, at.x, at.y, weights, &pb, wanted + i);
        }
        RKp_GetRowTranslate(samplers.translate)(samplers.translate, weights, &pb, walk, count, got);
        this->expectSame(wanted, got, kMost, walk, "translate");
        if (this->HasFatalFailure()) return;
    }
}

// A span is as its depth's default no-clip sampler, and its alphas are added in order.
template <class P>
RK_Sampler<P>* noClip();
template <>
RK_Sampler<RK_Pixel8>* noClip() {
    return &RK_SubpixelSampleNoClip_Straight;
}
template <>
RK_Sampler<RK_Pixel16>* noClip() {
    return &RK_SubpixelSampleNoClip_Straight16;
}
template <>
RK_Sampler<RK_PixelFloat>* noClip() {
    return &RK_SubpixelCPlusPlusNoClipFloat;
}
TYPED_TEST(SampleRows, SpansGiveWhatOneCallForEachPositionGives) {
    test::Random r(33);
    for (int round = 0; round < test::amount(3000); ++round) {
        const auto world = this->source(r);
        const RK_LayerDef src = const_cast<test::World<TypeParam>&>(world).picture.record();
        const RK_SampPB pb = test::sampleBlock(src);
        const WithRounding rounding(kModes[round % 8 < 5 ? 0 : round % 4]);
        const RK_SampleWalk walk = {test::insidePosition(r, src.width), test::insidePosition(r, src.height),
                                    0x10000, 0};
        const int64_t count = this->inside(src, walk, r.below(kMost + 1));
        TypeParam wanted[kMost] = {}, got[kMost] = {};
        RK_AlphaSum<TypeParam> wanted_sum = 3, sum = 3;
        for (int64_t i = 0; i < count; ++i) {
            const RK_SampleWalk at = walk.from(i);
            noClip<TypeParam>()(nullptr, at.x, at.y, &pb, wanted + i);
            wanted_sum += wanted[i].alpha;
        }
        RKp_GetSamplerBundle<TypeParam>().span(nullptr, static_cast<RK_Long>(count), walk.x, walk.y, &pb,
                                               &sum, got);
        this->expectSame(wanted, got, kMost, walk, "span");
        ASSERT_TRUE(sum == wanted_sum || (sum != sum && wanted_sum != wanted_sum))
            << sum << " and " << wanted_sum;
        if (this->HasFatalFailure()) return;
    }
}

// ---- Onto the source itself ------------------------------------------------------------------------------

template <class P>
void writeOverWhatIsRead(RK_Sampler<P>* sampler, const char* what) {
    test::Random r(35);
    for (int round = 0; round < test::amount(500); ++round) {
        auto world = test::sampleWorld<P>(r, 5, 4);
        const RK_LayerDef src = world.picture.record();
        RK_SampPB pb = test::sampleBlock(src);
        pb.x_radius = pb.y_radius = static_cast<int32_t>(1 + r.below(2 << 16));
        pb.area = static_cast<int32_t>(4.0 * pb.x_radius * pb.y_radius / 65536);
        const int32_t x = test::insidePosition(r, src.width), y = test::insidePosition(r, src.height);
        P apart{};
        sampler(nullptr, x, y, &pb, &apart);
        P& within = world.picture.at(x >> 16, y >> 16);
        sampler(nullptr, x, y, &pb, &within);
        ASSERT_TRUE(test::samePixel(apart, within)) << what << test::showPosition(x, y, src);
    }
}
TYPED_TEST(SampleRows, SamplersMayWriteOverAPixelThatTheyRead) {
    const auto samplers = RKp_GetSamplerBundle<TypeParam>();
    writeOverWhatIsRead(samplers.clipped, "clipped");
    writeOverWhatIsRead(samplers.area, "area");
    writeOverWhatIsRead(samplers.no_clip, "no-clip");
}
TEST_F(SampleRows8, PremultipliedSamplersMayWriteOverAPixelThatTheyRead) {
    writeOverWhatIsRead<RK_Pixel8>(&RK_AreaSample_Premul, "area");
    writeOverWhatIsRead<RK_Pixel8>(&RK_SubpixelSample_Premul, "clipped");
}

// ---- Others' samplers ------------------------------------------------------------------------------------

int g_calls;
template <class P>
RK_Long counting(void*, int32_t, int32_t, const RK_SampPB*, P* out) {
    ++g_calls;
    *out = P{};
    return 0;
}
TYPED_TEST(SampleRows, CallASamplerThatIsNotTheLibrarysOwn) {
    g_calls = 0;
    TypeParam out[5];
    RKp_GetRowSampler (&counting<TypeParam>)(&counting<TypeParam>, nullptr, {0, 0, 0x10000, 0}, 5, out);
    EXPECT_EQ(5, g_calls);
}

}  // namespace
