// The blurs of mask lines against their plain twins.
#include <gtest/gtest.h>

#include "RK/indep/filter/RK_UnoBlur.h"
#include "RK/indep/frame/RK_OverFuncs.h"
#include "refhost/RefHost.h"
#include "test/plain/Worlds.h"
#include "test/plain/filter/PlainMaskBlur.h"

namespace {

using test::Random;

template <class S>
using Scan = RK_Long(int32_t, RK_EffectRef, int32_t, int32_t, int32_t, const S*, S*);

// Radii about the ends of every branch among them: w of repeated boxes, the single box, whole numbers.
int32_t radiusOf(Random& r) {
    static const int32_t special[] = {0, -1, INT32_MIN, 1, 0x7FFF, 0x8000, 0x8001, 0x10000, 0x10001, 0x17FFF,
                                      0x18000,
                                      // 2.71 / 1.4 and 2.71 / 0.9, where boxes begin.
                                      126859, 126860, 197337, 197338};
    switch (r.below(4)) {
        case 0: return special[r.below(15)];
        case 1: return static_cast<int32_t>(r.below(30 << 16));
        default: return static_cast<int32_t>(r.below(5 << 16));
    }
}

// Box scans, or Gaussian ones.
template <class S>
void compare(Scan<S>* scan, bool boxes, uint32_t seed) {
    ASSERT_NE(scan, nullptr);
    Random r(seed);
    const int count = test::amount(4000);
    for (int i = 0; i < count; ++i) {
        const int32_t first = static_cast<int32_t>(r.below(40)) - 10,
                      last = first + static_cast<int32_t>(r.below(r.below(20) == 0 ? 1200 : 60)) - 2;
        const int32_t radius = radiusOf(r), mode = static_cast<int32_t>(r.below(4)) - 1;
        // The source's span lies against the ends of its block.
        const int32_t begin = std::max(first, 0);
        std::vector<S> samples(static_cast<size_t>(std::max(last - begin, 0)));
        const bool even = r.below(8) == 0;
        for (S& s : samples) s = even ? S(sizeof(S) == 1 ? 255 : 32768) : test::channel(r, S{});
        const S* const line = samples.empty() ? nullptr : samples.data() - begin;
        const size_t room = static_cast<size_t>(std::max(last, 0)) + 64;
        std::vector<S> got(room, 0x5A), expected = got;

        const plain::Span<S> out = boxes ? plain::boxScan(mode, first, last, radius, line)
                                         : plain::gaussianScan(first, last, radius, line);
        std::copy(out.samples.begin(), out.samples.end(),
                  expected.begin() + static_cast<ptrdiff_t>(std::max<int64_t>(out.first, 0)));
        ASSERT_EQ(scan(mode, nullptr, first, last, radius, line, got.data()), 0);
        for (size_t c = 0; c < room; ++c)
            ASSERT_EQ(got[c], expected[c]) << "column " << c << " of [" << first << ", " << last
                                           << "), radius " << radius << " / 65536, mode " << mode;
    }
}

TEST(MaskBlursAgainstPlain, GaussiansAreEqual) {
    compare<uint8_t>(RK_GBlurUnoScan, false, 1);
    compare<uint16_t>(RK_GBlurDeepUnoScan, false, 2);
}
TEST(MaskBlursAgainstPlain, BoxesAreEqual) {
    compare(reinterpret_cast<Scan<uint8_t>*>(RKp_G_OverFuncs[54]), true, 3);
    compare(reinterpret_cast<Scan<uint16_t>*>(RKp_G_OverFuncs[92]), true, 4);
}

// The four scans by their exports.
template <class S>
struct Scans;
template <>
struct Scans<uint8_t> {
    static constexpr Scan<uint8_t>* kGaussian = RK_GBlurUnoScan;
    static constexpr Scan<uint8_t>* kBox = RK_BoxBlurUnoScan;
};
template <>
struct Scans<uint16_t> {
    static constexpr Scan<uint16_t>* kGaussian = RK_GBlurDeepUnoScan;
    static constexpr Scan<uint16_t>* kBox = RK_BoxBlurDeepUnoScan;
};

// One line between pages that cannot be touched: read is nothing but the span, and the line ends where it may
// be written.
template <class S>
struct Line {
    int32_t mode, first, last, radius;
    bool box;
    std::vector<S> samples;  // of the span

    void compare(test::GuardedRows& from, test::GuardedRows& to, bool against_end) const {
        const int32_t begin = std::max(first, 0);
        S* const src = static_cast<S*>(from.room(samples.size() * sizeof(S), against_end));
        ASSERT_NE(src, nullptr);
        if (!samples.empty()) std::memcpy(src, samples.data(), samples.size() * sizeof(S));
        const S* const line = reinterpret_cast<const S*>(reinterpret_cast<uintptr_t>(src) -
                                                         static_cast<uintptr_t>(begin) * sizeof(S));
        const plain::Span<S> out = box ? plain::boxScan(mode, first, last, radius, line)
                                       : plain::gaussianScan(first, last, radius, line);
        const size_t room = static_cast<size_t>(std::max<int64_t>(out.end(), 1));
        std::vector<S> expected(room, static_cast<S>(0x5555));
        std::copy(out.samples.begin(), out.samples.end(),
                  expected.begin() + static_cast<ptrdiff_t>(out.first));
        S* const dst = static_cast<S*>(to.room(room * sizeof(S), against_end));
        ASSERT_NE(dst, nullptr);
        Scan<S>* const scan = box ? Scans<S>::kBox : Scans<S>::kGaussian;
        ASSERT_EQ(scan(mode, nullptr, first, last, radius, line, dst), 0);
        for (size_t c = 0; c < room; ++c)
            ASSERT_EQ(dst[c], expected[c])
                << "column " << c << " of [" << first << ", " << last << "), radius " << radius
                << " / 65536, mode " << mode << (box ? ", box" : ", Gaussian");
    }
};

// Any sample of 16 bits, those above full among them; runs of one value, and single ones in the dark.
template <class S>
std::vector<S> samplesOf(Random& r, size_t count) {
    std::vector<S> v(count);
    const uint32_t kind = r.below(5);
    S run = 0;
    for (S& s : v) {
        if (kind == 0) s = static_cast<S>(r.next());
        if (kind == 1) s = static_cast<S>(0xFFFF);
        if (kind == 2) s = r.below(16) == 0 ? test::channel(r, S{}) : S(0);
        if (kind == 3) s = run = r.below(9) == 0 ? test::channel(r, S{}) : run;
        if (kind == 4) s = test::channel(r, S{});
    }
    return v;
}

// Radii of one pass more or less, and their neighbours.
int32_t wideRadius(Random& r) {
    if (r.below(3) == 0) {
        const double passes = 1 + static_cast<double>(r.below(12)), b = r.below(2) == 0 ? 1.4 : 0.9;
        return static_cast<int32_t>(passes * 2.71 / b * 65536.0) + static_cast<int32_t>(r.below(5)) - 2;
    }
    if (r.below(8) == 0) return static_cast<int32_t>(r.below(200 << 16));
    return static_cast<int32_t>(r.below(12 << 16));
}

template <class S>
void compareBetweenPages(uint32_t seed, int full) {
    Random r(seed);
    test::GuardedRows from, to;
    const int count = test::amount(full);
    const uint32_t longest = static_cast<uint32_t>(4096 / sizeof(S)) - 500;
    for (int i = 0; i < count && !testing::Test::HasFatalFailure(); ++i) {
        const int32_t first = static_cast<int32_t>(r.below(60)) - 20;
        const int32_t columns = static_cast<int32_t>(r.below(r.below(8) == 0 ? longest : 80));
        const size_t span = static_cast<size_t>(columns);
        const Line<S> line = {static_cast<int32_t>(r.below(4)) - 1,
                              first,
                              std::max(first, 0) + columns,
                              wideRadius(r),
                              r.below(3) != 0,
                              samplesOf<S>(r, span)};
        line.compare(from, to, r.below(2) == 0);
    }
}
TEST(MaskBlursAgainstPlain, NothingIsTouchedBesideTheLinesAt8Bits) { compareBetweenPages<uint8_t>(5, 6000); }
TEST(MaskBlursAgainstPlain, NothingIsTouchedBesideTheLinesAt16Bits) {
    compareBetweenPages<uint16_t>(6, 6000);
}

// Few radii in turn, so that the weights kept are those of the line before or of another scan.
TEST(MaskBlursAgainstPlain, WeightsKeptByAnotherScanAreTheSame) {
    Random r(7);
    test::GuardedRows from, to;
    const int32_t radii[] = {0x8000, 0x10000, 0x10001, 0x18000, 0x18000, 0x90000};
    const int count = test::amount(4000);
    for (int i = 0; i < count && !HasFatalFailure(); ++i) {
        const int32_t radius = radii[r.below(6)], mode = static_cast<int32_t>(r.below(3));
        const bool box = r.below(2) == 0, against_end = r.below(2) == 0;
        if (r.below(2) == 0)
            Line<uint8_t>{mode, 0, 20, radius, box, samplesOf<uint8_t>(r, 20)}.compare(from, to, against_end);
        else
            Line<uint16_t>{mode, 0, 20, radius, box, samplesOf<uint16_t>(r, 20)}.compare(from, to,
                                                                                         against_end);
    }
}

TEST(MaskBlursAgainstPlain, TheFarthestSpansAndRadiiAreEqual) {
    test::GuardedRows from, to;
    Random r(8);
    for (const bool box : {false, true}) {
        // Spans from far before the line, and reversed ones.
        Line<uint8_t>{1, INT32_MIN, 9, 0x28000, box, samplesOf<uint8_t>(r, 9)}.compare(from, to, true);
        Line<uint16_t>{0, INT32_MIN, 9, 0x88000, box, samplesOf<uint16_t>(r, 9)}.compare(from, to, true);
        Line<uint16_t>{0, INT32_MIN, 9, INT32_MIN, box, samplesOf<uint16_t>(r, 9)}.compare(from, to, false);
        Line<uint8_t>{0, 7, INT32_MIN, 0x28000, box, {}}.compare(from, to, true);
        Line<uint8_t>{0, 7, 7, 0x28000, box, {}}.compare(from, to, true);
    }
    // The largest radius that there are weights for, and the one above it.
    std::vector<uint16_t> src(5, 65535), got(5 + 32767, 7);
    ASSERT_EQ(RK_GBlurDeepUnoScan(0, nullptr, 0, 5, 0x7FFF0001, src.data(), got.data()), 3);
    ASSERT_EQ(got, std::vector<uint16_t>(got.size(), 7));
    RefHost::TakeReports();
    for (const int32_t radius : {0x7FFF0000, 0x7FFE0001, 3000 << 16}) {
        std::fill(got.begin(), got.end(), uint16_t{0});
        const plain::Span<uint16_t> out = plain::gaussianScan(0, 5, radius, src.data());
        ASSERT_EQ(RK_GBlurDeepUnoScan(0, nullptr, 0, 5, radius, src.data(), got.data()), 0);
        ASSERT_TRUE(std::equal(out.samples.begin(), out.samples.end(), got.begin())) << radius;
    }
}

}  // namespace
