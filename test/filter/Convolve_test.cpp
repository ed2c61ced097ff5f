#include "RK/indep/filter/RK_Convolve.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "RK/indep/filter/RKp_Convolve.h"
#include "RK/indep/filter/RKp_ConvolveTaps.h"
#include "RK/indep/frame/RK_Birth.h"
#include "RK/indep/frame/RKp_Depth.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "test/Pixels.h"
#include "test/Reports.h"
#include "test/world/OddWorld.h"

namespace {

using test::Picture;

// One kernel for the four channels, and how it is applied.
struct Call {
    std::vector<int32_t> kernel = {255};
    int32_t size = 1;
    uint32_t flags = 0;
    RK_ProgressInfo* progress = nullptr;

    template <class P>
    RK_Long run(Picture<P>& src, Picture<P>& dst) const {
        RK_LayerDef from = src.record(), to = dst.record();
        const int32_t* const k = kernel.data();
        return RK_Convolve(progress, &from, nullptr, flags, size, k, k, k, k, &to);
    }
};

template <class P>
P grey(typename RKp_Depth<P>::Channel v) {
    return {v, v, v, v};
}
template <class P>
Picture<P> flat(int width, int height, const P& p) {
    Picture<P> made(width, height);
    made.fill(p);
    return made;
}

// A channel of the result by the rule, in 64 bits; the kernel in its full square.
template <class P>
typename RKp_Depth<P>::Channel byHand(const Picture<P>& src, int x, int y,
                                      typename RKp_Depth<P>::Channel P::*c,
                                      const std::vector<int32_t>& kernel, int across, int down,
                                      int32_t divisor, bool clamp) {
    using C = typename RKp_Depth<P>::Channel;
    uint32_t sum = 0;
    float real = 0;
    for (int j = -down; j <= down; ++j) {
        for (int i = -across; i <= across; ++i) {
            if (x + i < 0 || y + j < 0 || x + i >= src.width() || y + j >= src.height()) continue;
            const int32_t entry = kernel[size_t(j + down) * size_t(2 * across + 1) + size_t(i + across)];
            const C v = src.at(x + i, y + j).*c;
            if constexpr (std::is_same_v<C, float>)
                real += v * float(entry);
            else
                sum += uint32_t{v} * uint32_t(entry);
        }
    }
    if constexpr (std::is_same_v<C, float>) {
        real /= float(divisor);
        return !clamp ? real : real < 0 ? 0 : real > 1 ? 1 : real;
    } else {
        const auto s = int32_t(sum);
        int64_t q = int64_t{s} / divisor;
        if (clamp) q = std::min<int64_t>(std::max<int64_t>(int32_t(q), 0), RKp_Depth<P>::kFull);
        return C(q);
    }
}

class Convolve : public test::Tidy {};

template <class P>
class ConvolveDepth : public test::Tidy {};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(ConvolveDepth, Depths);

// ---- What it computes -----------------------------------------------------------------------------------

TYPED_TEST(ConvolveDepth, OneEntryOf255IsACopy) {
    using P = TypeParam;
    Picture<P> src(23, 5), dst(23, 5);
    src.fillRandom(3);
    if constexpr (std::is_same_v<P, RK_PixelFloat>) src.fill(P{0.5f, 0.25f, 1.0f, 0.0f});
    ASSERT_EQ(0, Call{}.run(src, dst));
    EXPECT_TRUE(src == dst);
}

TEST_F(Convolve, AKernelThatSumsToZeroWorksAtFullScale) {
    Picture<RK_Pixel8> src = flat<RK_Pixel8>(5, 5, grey<RK_Pixel8>(10)), dst(5, 5);
    src.at(2, 2) = grey<RK_Pixel8>(30);
    ASSERT_EQ(0, (Call{{-1, -1, -1, -1, 8, -1, -1, -1, -1}, 3, RK_KERNEL_NORMALISE}.run(src, dst)));
    EXPECT_TRUE(test::sameBytes(grey<RK_Pixel8>(160), dst.at(2, 2)));
    EXPECT_TRUE(test::sameBytes(grey<RK_Pixel8>(0), dst.at(1, 1)));  // -20
}

TYPED_TEST(ConvolveDepth, ABoxDarkensTheCornersBecauseTheDivisorStays) {
    using P = TypeParam;
    using C = typename RKp_Depth<P>::Channel;
    const auto full = static_cast<C>(RKp_Depth<P>::kFull);
    Picture<P> src = flat<P>(4, 3, grey<P>(full)), dst(4, 3);
    ASSERT_EQ(0, (Call{std::vector<int32_t>(9, 1), 3, RK_KERNEL_NORMALISE}.run(src, dst)));
    for (int x : {0, 3})
        for (int y : {0, 2})
            EXPECT_TRUE(test::sameBytes(grey<P>(static_cast<C>(full * 4 / 9)), dst.at(x, y)));
    EXPECT_TRUE(test::sameBytes(grey<P>(static_cast<C>(full * 6 / 9)), dst.at(1, 0)));
    EXPECT_TRUE(test::sameBytes(grey<P>(full), dst.at(2, 1)));
}

TEST_F(Convolve, WithoutNormaliseTheDivisorIs255ForEachCell) {
    Picture<RK_Pixel16> src = flat<RK_Pixel16>(7, 7, grey<RK_Pixel16>(30000)), dst(7, 7);
    ASSERT_EQ(0, (Call{std::vector<int32_t>(9, 255), 3, 0}.run(src, dst)));
    EXPECT_EQ(30000, dst.at(3, 3).red);
    ASSERT_EQ(0, (Call{std::vector<int32_t>(25, 1), 5, 0}.run(src, dst)));
    EXPECT_EQ(30000 / 255, dst.at(3, 3).red);
    ASSERT_EQ(0, (Call{std::vector<int32_t>(5, 51), 5, RK_KERNEL_1D}.run(src, dst)));
    EXPECT_EQ(30000 / 5, dst.at(3, 3).red);
}

TEST_F(Convolve, TheKernelIsLaidOnAsItStands) {
    Picture<RK_Pixel8> src = flat<RK_Pixel8>(5, 5, grey<RK_Pixel8>(0)), dst(5, 5);
    src.at(2, 2) = grey<RK_Pixel8>(1);
    ASSERT_EQ(0,
              (Call{{1, 2, 3, 4, 5, 6, 7, 8, 9}, 3, RK_KERNEL_NORMALISE | RK_KERNEL_NO_CLAMP}.run(src, dst)));
    EXPECT_EQ(0, dst.at(2, 2).red);  // 5 / 45
    src.at(2, 2) = grey<RK_Pixel8>(45);
    ASSERT_EQ(0, (Call{{1, 2, 3, 4, 5, 6, 7, 8, 9}, 3, RK_KERNEL_NORMALISE}.run(src, dst)));
    // The first entry reads the pixel above and to the left: the dot shows it below and to the right.
    EXPECT_EQ(1, dst.at(3, 3).red);
    EXPECT_EQ(3, dst.at(1, 3).red);
    EXPECT_EQ(9, dst.at(1, 1).red);
}

TEST_F(Convolve, ARowLiesAlongXAndAlongYWhenAskedFor) {
    Picture<RK_Pixel8> src = flat<RK_Pixel8>(5, 5, grey<RK_Pixel8>(0)), dst(5, 5);
    src.at(2, 2) = grey<RK_Pixel8>(60);
    const std::vector<int32_t> row = {1, 2, 3};
    ASSERT_EQ(0, (Call{row, 3, RK_KERNEL_1D | RK_KERNEL_NORMALISE}.run(src, dst)));
    EXPECT_EQ(30, dst.at(1, 2).red);
    EXPECT_EQ(10, dst.at(3, 2).red);
    EXPECT_EQ(0, dst.at(2, 1).red);
    ASSERT_EQ(0, (Call{row, 3, RK_KERNEL_1D | RK_KERNEL_NORMALISE | RK_KERNEL_VERTICAL}.run(src, dst)));
    EXPECT_EQ(30, dst.at(2, 1).red);
    EXPECT_EQ(10, dst.at(2, 3).red);
    EXPECT_EQ(0, dst.at(1, 2).red);
    // Upright means nothing without 1D.
    ASSERT_EQ(0,
              (Call{std::vector<int32_t>(9, 1), 3, RK_KERNEL_NORMALISE | RK_KERNEL_VERTICAL}.run(src, dst)));
    EXPECT_EQ(60 / 9, dst.at(1, 1).red);
}

TEST_F(Convolve, EachChannelHasItsKernelAndItsDivisor) {
    Picture<RK_Pixel8> src = flat<RK_Pixel8>(3, 3, {200, 100, 50, 25}), dst(3, 3);
    RK_LayerDef from = src.record(), to = dst.record();
    const int32_t a[] = {5}, r[] = {-2}, g[] = {0}, b[] = {3};
    ASSERT_EQ(0, RK_Convolve(nullptr, &from, nullptr, RK_KERNEL_NORMALISE, 1, a, r, g, b, &to));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{200, 100, 0, 25}, dst.at(1, 1)));
    const int32_t wide_a[] = {0, 510, 0}, wide_r[] = {255, 0, 0}, wide_g[] = {0, 0, 255},
                  wide_b[] = {255, 255, 255};
    ASSERT_EQ(0, RK_Convolve(nullptr, &from, nullptr, RK_KERNEL_1D, 3, wide_a, wide_r, wide_g, wide_b, &to));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{133, 33, 16, 25}, dst.at(1, 1)));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{133, 0, 16, 16}, dst.at(0, 1)));
}

TEST_F(Convolve, UnclampedResultsWrapToTheLowBits) {
    Picture<RK_Pixel8> src = flat<RK_Pixel8>(3, 3, grey<RK_Pixel8>(200)), dst(3, 3);
    ASSERT_EQ(0, (Call{{510}, 1, RK_KERNEL_NO_CLAMP}.run(src, dst)));
    EXPECT_EQ(400 - 256, dst.at(1, 1).green);
    ASSERT_EQ(0, (Call{{-255}, 1, RK_KERNEL_NO_CLAMP}.run(src, dst)));
    EXPECT_EQ(256 - 200, dst.at(1, 1).green);
    ASSERT_EQ(0, (Call{{510}, 1, 0}.run(src, dst)));
    EXPECT_EQ(255, dst.at(1, 1).green);
    ASSERT_EQ(0, (Call{{-255}, 1, 0}.run(src, dst)));
    EXPECT_EQ(0, dst.at(1, 1).green);
    Picture<RK_Pixel16> src16 = flat<RK_Pixel16>(1, 1, grey<RK_Pixel16>(32768)), dst16(1, 1);
    ASSERT_EQ(0, (Call{{765}, 1, RK_KERNEL_NO_CLAMP}.run(src16, dst16)));
    EXPECT_EQ(32768, dst16.at(0, 0).green);  // 98304 less 65536
    ASSERT_EQ(0, (Call{{256}, 1, 0}.run(src16, dst16)));
    EXPECT_EQ(32768, dst16.at(0, 0).green);
    Picture<RK_PixelFloat> deep = flat<RK_PixelFloat>(1, 1, grey<RK_PixelFloat>(0.75f)), deep_out(1, 1);
    ASSERT_EQ(0, (Call{{510}, 1, RK_KERNEL_NO_CLAMP}.run(deep, deep_out)));
    EXPECT_EQ(1.5f, deep_out.at(0, 0).green);
    ASSERT_EQ(0, (Call{{510}, 1, 0}.run(deep, deep_out)));
    EXPECT_EQ(1.0f, deep_out.at(0, 0).green);
    ASSERT_EQ(0, (Call{{-510}, 1, 0}.run(deep, deep_out)));
    EXPECT_EQ(0.0f, deep_out.at(0, 0).green);
}

TEST_F(Convolve, TheDivisionTruncatesTowardsZero) {
    Picture<RK_Pixel8> src = flat<RK_Pixel8>(1, 1, grey<RK_Pixel8>(100)), dst(1, 1);
    ASSERT_EQ(0, (Call{{254}, 1, RK_KERNEL_NO_CLAMP}.run(src, dst)));
    EXPECT_EQ(99, dst.at(0, 0).red);  // 99.6
    ASSERT_EQ(0, (Call{{-254}, 1, RK_KERNEL_NO_CLAMP}.run(src, dst)));
    EXPECT_EQ(256 - 99, dst.at(0, 0).red);
}

TEST_F(Convolve, SumsAndKernelSumsWrapAt32Bits) {
    Picture<RK_Pixel16> src = flat<RK_Pixel16>(1, 1, grey<RK_Pixel16>(32768)), dst(1, 1);
    // 32768 * 65536 is INT32_MIN; divided by -1 it stays.
    const uint32_t normal = RK_KERNEL_NORMALISE | RK_KERNEL_NO_CLAMP;
    Picture<RK_Pixel16> row = flat<RK_Pixel16>(3, 1, grey<RK_Pixel16>(0)), out(3, 1);
    row.at(0, 0) = grey<RK_Pixel16>(32768);
    ASSERT_EQ(0, (Call{{65536, -65537, 0}, 3, RK_KERNEL_1D | RK_KERNEL_NORMALISE}.run(row, out)));
    EXPECT_EQ(0, out.at(1, 0).red);  // INT32_MIN, clamped; the true quotient is below 0 too
    ASSERT_EQ(0, (Call{{65536, INT32_MIN, INT32_MAX - 65536}, 3, RK_KERNEL_1D | RK_KERNEL_NORMALISE}.run(
                     row, out)));
    EXPECT_EQ(0, out.at(1, 0).red);
    // A kernel sum of 2^32 + 3 counts as 3.
    row.at(0, 0) = grey<RK_Pixel16>(9);
    ASSERT_EQ(0, (Call{{1, INT32_MAX, INT32_MAX}, 3, RK_KERNEL_1D | RK_KERNEL_NORMALISE}.run(row, out)));
    EXPECT_EQ(0, out.at(1, 0).red);  // a sum of 2^32 - 1 is -1: 9 / -1
    ASSERT_EQ(0, (Call{{5, INT32_MAX, INT32_MAX}, 3, RK_KERNEL_1D | RK_KERNEL_NORMALISE}.run(row, out)));
    EXPECT_EQ(15, out.at(1, 0).red);  // 45 / 3
    // 2^32 counts as 0, and so as 1.
    ASSERT_EQ(0, (Call{{2, INT32_MAX, INT32_MAX}, 3, RK_KERNEL_1D | RK_KERNEL_NORMALISE}.run(row, out)));
    EXPECT_EQ(18, out.at(1, 0).red);
    // A product that wraps: 32768 * 131073 is 32768.
    ASSERT_EQ(0, (Call{{131073}, 1, RK_KERNEL_NO_CLAMP}.run(src, dst)));
    EXPECT_EQ(32768 / 255, dst.at(0, 0).red);
    ASSERT_EQ(0, (Call{{-1}, 1, normal}.run(src, dst)));
    EXPECT_EQ(32768, dst.at(0, 0).red);  // -32768 / -1
}

TEST_F(Convolve, AtFloatKernelSumsDoNotWrap) {
    Picture<RK_PixelFloat> row = flat<RK_PixelFloat>(3, 1, grey<RK_PixelFloat>(0.5f)), out(3, 1);
    ASSERT_EQ(0,
              (Call{{INT32_MAX, INT32_MAX, INT32_MAX}, 3, RK_KERNEL_1D | RK_KERNEL_NORMALISE}.run(row, out)));
    EXPECT_EQ(0.5f, out.at(1, 0).red);
}

TEST_F(Convolve, NaNPassesTheClamp) {
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    Picture<RK_PixelFloat> src = flat<RK_PixelFloat>(1, 1, {nan, inf, -inf, 0.5f}), dst(1, 1);
    ASSERT_EQ(0, Call{}.run(src, dst));
    EXPECT_TRUE(std::isnan(dst.at(0, 0).alpha));
    EXPECT_EQ(1.0f, dst.at(0, 0).red);
    EXPECT_EQ(0.0f, dst.at(0, 0).green);
    EXPECT_EQ(0.5f, dst.at(0, 0).blue);
}

// Kernels of small and of large numbers, over pictures smaller than the kernel, wider than a run of sums, and
// odd.
TYPED_TEST(ConvolveDepth, EveryPixelFollowsTheRule) {
    using P = TypeParam;
    using C = typename RKp_Depth<P>::Channel;
    static const struct {
        int width, height, size;
        uint32_t flags;
        int32_t reach;  // of the entries
    } cases[] = {{7, 5, 3, RK_KERNEL_NORMALISE, 100},
                 {300, 3, 3, RK_KERNEL_NO_CLAMP, 3000},
                 {9, 9, 5, RK_KERNEL_NORMALISE | RK_KERNEL_NO_CLAMP, 32767},
                 {5, 4, 15, 0, 70000},
                 {540, 2, 7, 0, 1000},
                 {200, 3, 131, RK_KERNEL_1D | RK_KERNEL_NORMALISE, 40},
                 {11, 40, 35, RK_KERNEL_1D | RK_KERNEL_VERTICAL, 20000},
                 {31, 8, 3, RK_KERNEL_NORMALISE, INT32_MAX}};
    test::Random r(17);
    for (const auto& one : cases) {
        Picture<P> src(one.width, one.height), dst(one.width, one.height);
        src.fillRandom(uint32_t(one.width));
        const bool row = (one.flags & RK_KERNEL_1D) != 0, upright = (one.flags & RK_KERNEL_VERTICAL) != 0;
        const int across = row && upright ? 0 : one.size / 2, down = row && !upright ? 0 : one.size / 2;
        const auto cells = size_t(2 * across + 1) * size_t(2 * down + 1);
        std::vector<int32_t> kernels[4];
        int32_t divisors[4];
        for (int c = 0; c < 4; ++c) {
            uint32_t sum = 0;
            for (size_t i = 0; i < cells; ++i) {
                const uint64_t span = 2 * uint64_t(one.reach) + 1;
                kernels[c].push_back(int32_t(int64_t(uint64_t{r.next()} * span >> 32) - one.reach));
            }
            if (sizeof(C) == 4 && one.reach == INT32_MAX)
                kernels[c].assign(cells, 1 + c);  // no wrap at float
            for (int32_t entry : kernels[c]) sum += uint32_t(entry);
            divisors[c] = (one.flags & RK_KERNEL_NORMALISE) ? (sum ? int32_t(sum) : 1) : int32_t(cells) * 255;
        }
        RK_LayerDef from = src.record(), to = dst.record();
        ASSERT_EQ(0, RK_Convolve(nullptr, &from, nullptr, one.flags, one.size, kernels[0].data(),
                                 kernels[1].data(), kernels[2].data(), kernels[3].data(), &to));
        EXPECT_TRUE(dst.guardsWhole());
        C P::*const channels[] = {&P::alpha, &P::red, &P::green, &P::blue};
        for (int y = 0; y < one.height; ++y)
            for (int x = 0; x < one.width; ++x)
                for (int c = 0; c < 4; ++c)
                    ASSERT_EQ(byHand(src, x, y, channels[c], kernels[c], across, down, divisors[c],
                                     !(one.flags & RK_KERNEL_NO_CLAMP)),
                              dst.at(x, y).*channels[c])
                        << one.width << "x" << one.height << " size " << one.size << " at " << x << ", " << y
                        << ", " << c;
    }
}

TEST_F(Convolve, DivisionsAreExactForAnyNumbers) {
    test::Random r(5);
    Picture<RK_Pixel16> src(1, 1), dst(1, 1);
    RK_LayerDef from = src.record(), to = dst.record();
    for (int i = 0; i < 20000; ++i) {
        src.at(0, 0) = grey<RK_Pixel16>(uint16_t(r.next()));
        // Entries whose products lie next to multiples of the divisor.
        const auto entry = int32_t(r.next() >> r.below(31)) * (r.below(2) ? 1 : -1);
        const int32_t zero = 0;
        ASSERT_EQ(0, RK_Convolve(nullptr, &from, nullptr, RK_KERNEL_NO_CLAMP | RK_KERNEL_NORMALISE, 1, &entry,
                                 &entry, &zero, &zero, &to));
        const auto sum = int32_t(uint32_t{src.at(0, 0).red} * uint32_t(entry));
        const int64_t wanted = int64_t{sum} / (entry == 0 ? 1 : entry);
        ASSERT_EQ(uint16_t(wanted), dst.at(0, 0).red) << sum << " / " << entry;
    }
}

template <class P>
class ConvolveTaps : public testing::Test {};
using IntegerDepths = testing::Types<RK_Pixel8, RK_Pixel16>;
TYPED_TEST_SUITE(ConvolveTaps, IntegerDepths);

TYPED_TEST(ConvolveTaps, TheVectorFormGivesTheSameSums) {
    using P = TypeParam;
    test::Random r(9);
    for (int32_t pixels = 0; pixels <= 21; ++pixels) {
        for (int32_t count : {1, 2, 3, 7, 8, 63, 64}) {
            std::vector<P> in(size_t(pixels + count));
            for (P& p : in) p = test::pixel<P>(r);
            if (pixels == 5)
                for (P& p : in) p = {decltype(P::red)(~0), 0, decltype(P::red)(~0), 1};
            std::vector<uint32_t> taps(size_t(4 * count)), wanted(size_t(4 * pixels) + 1);
            for (uint32_t& tap : taps) tap = uint32_t(int32_t(r.below(65535)) - 32767);
            if (pixels == 5) taps.assign(taps.size(), uint32_t(-32767));
            for (uint32_t& sum : wanted) sum = r.next();
            std::vector<uint32_t> got = wanted;
            // Not one pixel beyond the last that is needed.
            const std::vector<P> exact(in.begin(), in.end() - 1);
            const P none{};
            const P* from = exact.empty() ? &none : exact.data();
            RKp_AddTaps(from, pixels, taps.data(), count, wanted.data());
            RKp_AddTaps_SSE2(from, pixels, taps.data(), count, got.data());
            ASSERT_EQ(wanted, got) << pixels << " pixels, " << count << " taps";
        }
    }
}

// ---- Sizes ----------------------------------------------------------------------------------------------

TEST_F(Convolve, WhatLiesOutsideASmallerSourceAddsNothing) {
    Picture<RK_Pixel8> src = flat<RK_Pixel8>(2, 2, grey<RK_Pixel8>(90)),
                       dst = flat<RK_Pixel8>(5, 4, grey<RK_Pixel8>(7));
    ASSERT_EQ(0, (Call{std::vector<int32_t>(9, 1), 3, RK_KERNEL_NORMALISE}.run(src, dst)));
    EXPECT_EQ(40, dst.at(0, 0).red);
    EXPECT_EQ(40, dst.at(1, 1).red);
    EXPECT_EQ(10, dst.at(2, 2).red);
    EXPECT_EQ(0, dst.at(3, 0).red);
    EXPECT_EQ(0, dst.at(4, 3).red);
    EXPECT_TRUE(dst.guardsWhole());
}

TEST_F(Convolve, AllOfASmallerDestinationIsWrittenWhateverTheRectangle) {
    Picture<RK_Pixel8> src = flat<RK_Pixel8>(8, 8, grey<RK_Pixel8>(90)), dst(3, 2);
    RK_LayerDef from = src.record(), to = dst.record();
    const GEO_Rect nothing = {1, 1, 1, 1};
    const int32_t k[] = {255};
    ASSERT_EQ(0, RK_Convolve(nullptr, &from, &nothing, 0, 1, k, k, k, k, &to));
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) EXPECT_EQ(90, dst.at(x, y).blue);
    EXPECT_TRUE(dst.guardsWhole());
}

TEST_F(Convolve, HalfOfTheSizeIsASigned16BitNumber) {
    Picture<RK_Pixel8> src = flat<RK_Pixel8>(2, 1, grey<RK_Pixel8>(90)), dst(2, 1);
    ASSERT_EQ(0, (Call{{255}, 0x20001, 0}.run(src, dst)));  // half 0
    EXPECT_EQ(90, dst.at(1, 0).red);
    ASSERT_EQ(0, (Call{{255}, 0x10001, RK_KERNEL_NORMALISE}.run(src, dst)));  // half -32768: no entries
    EXPECT_EQ(0, dst.at(1, 0).red);
    ASSERT_EQ(0, (Call{{255}, INT32_MAX, 0}.run(src, dst)));  // half -1
    EXPECT_EQ(0, dst.at(1, 0).red);
}

TEST_F(Convolve, UpsideDownWorldsAreFine) {
    Picture<RK_Pixel8> src(3, 3, 0), dst(3, 3);
    src.fillRandom(8);
    RK_LayerDef from = src.record(), to = dst.record();
    from.data = src.row(2);
    from.rowbytes = -from.rowbytes;
    const int32_t k[] = {255};
    ASSERT_EQ(0, RK_Convolve(nullptr, &from, nullptr, 0, 1, k, k, k, k, &to));
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x) EXPECT_TRUE(test::sameBytes(src.at(x, 2 - y), dst.at(x, y)));
}

TEST_F(Convolve, WorldsWithoutAreaGiveZero) {
    Picture<RK_Pixel8> src(3, 3), dst(0, 3), none(3, 0);
    EXPECT_EQ(0, Call{}.run(src, dst));
    EXPECT_EQ(0, Call{}.run(src, none));
    EXPECT_EQ(0, Call{}.run(none, src));
    EXPECT_EQ(0, src.at(1, 1).red);
}

// ---- Progress -------------------------------------------------------------------------------------------

struct Watch {
    std::vector<std::pair<RK_Long, RK_Long>> told;
    size_t stop_at = SIZE_MAX;
    RK_Long answer = 0;
    RK_ProgressInfo info = {this, aborted, tell};

    static RK_Long tell(void* refcon, RK_Long current, RK_Long maximum) {
        Watch& w = *static_cast<Watch*>(refcon);
        w.told.emplace_back(current, maximum);
        return w.told.size() == w.stop_at ? w.answer : 0;
    }
    static RK_Long aborted(void*) {
        ADD_FAILURE() << "abort_func is not asked";
        return 1;
    }
};

TEST_F(Convolve, ProgressIsToldWhenMoreThan2048PixelsWereDone) {
    using Told = std::vector<std::pair<RK_Long, RK_Long>>;
    const auto told = [](int width, int height) {
        Picture<RK_Pixel8> src(width, height), dst(width, height);
        Watch watch;
        Call call;
        call.progress = &watch.info;
        EXPECT_EQ(0, call.run(src, dst));
        return watch.told;
    };
    EXPECT_EQ(Told{}, told(1024, 2));  // 2048 is not more than 2048
    EXPECT_EQ((Told{{3, 7}, {6, 7}}), told(1024, 7));
    EXPECT_EQ((Told{{1, 3}, {2, 3}, {3, 3}}), told(2049, 3));
    EXPECT_EQ((Told{{683, 700}}), told(3, 700));
}

TEST_F(Convolve, AnAnswerStopsItAtEveryCallAndRowsDoneStay) {
    constexpr int kHeight = 9;
    Picture<RK_Pixel8> src = flat<RK_Pixel8>(2100, kHeight, grey<RK_Pixel8>(50));
    for (size_t stop = 1; stop <= kHeight; ++stop) {
        for (RK_Long answer : {RK_Long{517}, RK_Long{-1}}) {
            Picture<RK_Pixel8> dst(2100, kHeight);
            Watch watch;
            watch.stop_at = stop;
            watch.answer = answer;
            Call call;
            call.progress = &watch.info;
            EXPECT_EQ(answer, call.run(src, dst));
            EXPECT_EQ(stop, watch.told.size());
            for (size_t y = 0; y < kHeight; ++y) EXPECT_EQ(y < stop ? 50 : 0, dst.at(2099, int(y)).red);
        }
    }
}

TEST_F(Convolve, WithoutAProgressFunctionNothingIsCalled) {
    Picture<RK_Pixel8> src(3000, 2), dst(3000, 2);
    Watch watch;
    watch.info.progress_func = nullptr;
    Call call;
    call.progress = &watch.info;
    EXPECT_EQ(0, call.run(src, dst));
}

// ---- Failures -------------------------------------------------------------------------------------------

TEST_F(Convolve, EachBadArgumentIsReportedAndWritesNothing) {
    Picture<RK_Pixel8> src = flat<RK_Pixel8>(3, 3, grey<RK_Pixel8>(50)), dst(3, 3);
    const Picture<RK_Pixel8> before = dst;
    const int32_t k[9] = {255};
    const RK_LayerDef from = src.record(), to = dst.record();
    const auto call = [&](RK_LayerDef s, RK_LayerDef d, int32_t size, const int32_t* a = nullptr) {
        return RK_Convolve(nullptr, &s, nullptr, 0, size, a, k, k, k, &d);
    };
    const auto bad = [&](RK_Long result) { return result == 3 && test::onlyBadParam(8) && dst == before; };
    RK_LayerDef s = from, d = to;
    EXPECT_TRUE(bad(RK_Convolve(nullptr, nullptr, nullptr, 0, 1, k, k, k, k, &d)));
    EXPECT_TRUE(bad(RK_Convolve(nullptr, &s, nullptr, 0, 1, k, k, k, k, nullptr)));
    EXPECT_TRUE(bad(RK_Convolve(nullptr, &s, nullptr, 0, 1, nullptr, k, k, k, &d)));
    EXPECT_TRUE(bad(RK_Convolve(nullptr, &s, nullptr, 0, 1, k, nullptr, k, k, &d)));
    EXPECT_TRUE(bad(RK_Convolve(nullptr, &s, nullptr, 0, 1, k, k, nullptr, k, &d)));
    EXPECT_TRUE(bad(RK_Convolve(nullptr, &s, nullptr, 0, 1, k, k, k, nullptr, &d)));
    for (int32_t size : {0, 2, 4, -1, -3, INT32_MIN, INT32_MAX - 1})
        EXPECT_TRUE(bad(call(from, to, size, k))) << size;
    s.data = nullptr;
    EXPECT_TRUE(bad(call(s, to, 1, k)));
    d.data = nullptr;
    EXPECT_TRUE(bad(call(from, d, 1, k)));
    EXPECT_EQ(0, call(from, to, 1, k));
}

TEST_F(Convolve, TheTypedFormRefusesTheSame) {
    Picture<RK_Pixel8> picture(3, 3);
    const RK_LayerDef record = picture.record();
    RK_WorldX<RK_Pixel8> world(&record, false);
    const int32_t k[] = {255};
    EXPECT_EQ(3, RKp_Convolve<RK_Pixel8>(nullptr, nullptr, nullptr, 0, 1, k, k, k, k, &world));
    EXPECT_TRUE(test::onlyBadParam(8));
    EXPECT_EQ(3, RKp_Convolve<RK_Pixel8>(nullptr, &world, nullptr, 0, 1, k, k, k, k, nullptr));
    EXPECT_TRUE(test::onlyBadParam(8));
    EXPECT_EQ(3, RKp_Convolve<RK_Pixel8>(nullptr, &world, nullptr, 0, 4, k, k, k, k, &world));
    EXPECT_TRUE(test::onlyBadParam(8));
}

TEST_F(Convolve, DepthsMustAgreeAndBeKnown) {
    Picture<RK_Pixel8> src(3, 3);
    Picture<RK_Pixel16> dst(3, 3);
    RK_LayerDef from = src.record(), to = dst.record();
    const int32_t k[] = {255};
    // Before the pixels and the kernels are looked at.
    from.data = nullptr;
    EXPECT_EQ(3, RK_Convolve(nullptr, &from, nullptr, 0, 2, nullptr, k, k, k, &to));
    EXPECT_TRUE(test::onlyVerification("RK_Convolve requires source and dst worlds to be same depth"));
    test::OddWorld odd(12);
    EXPECT_EQ(3, RK_Convolve(nullptr, &odd.record, nullptr, 0, 2, nullptr, k, k, k, &odd.record));
    EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in##CONDITIONNAME"));
}

TEST_F(Convolve, ItStandsInItsSlot) {
    EXPECT_EQ(reinterpret_cast<void*>(RK_Convolve), RKp_G_OverFuncs[28]);
    EXPECT_EQ(28, RKp_kSlot_Convolve);
}

}  // namespace
