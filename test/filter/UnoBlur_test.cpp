// Blurs of mask lines.
#include "RK/indep/filter/RK_UnoBlur.h"

#include <cmath>

#include "RK/indep/filter/RK_GaussianKernel.h"
#include "RK/indep/frame/RKp_Report.h"
#include "test/filter/Masks.h"

namespace {

template <class S>
using Scan = RK_Long(int32_t, RK_EffectRef, int32_t, int32_t, int32_t, const S*, S*);
template <class S>
Scan<S>* gaussian() {
    if constexpr (sizeof(S) == 1)
        return RK_GBlurUnoScan;
    else
        return RK_GBlurDeepUnoScan;
}
template <class S>
Scan<S>* box() {
    if constexpr (sizeof(S) == 1)
        return RK_BoxBlurUnoScan;
    else
        return RK_BoxBlurDeepUnoScan;
}

constexpr int32_t fixed(double radius) { return static_cast<int32_t>(radius * 65536); }

class UnoBlur : public test::Tidy {
  protected:
    void SetUp() override {
        RKp_DisposeUnoWeights();
        Tidy::SetUp();
    }
    void TearDown() override {
        RKp_DisposeUnoWeights();
        Tidy::TearDown();
    }
};
template <class S>
class UnoBlurT : public UnoBlur {};
using IntegerSamples = testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(UnoBlurT, IntegerSamples);

// ---- The rules, by whole sums ---------------------------------------------------------------------------

// A line as a function of the column, zero outside the span.
template <class S>
struct Line {
    const std::vector<S>& samples;
    int64_t first, last;
    int64_t operator()(int64_t c) const {
        return c >= first && c < last ? samples[static_cast<size_t>(c)] : 0;
    }
};

template <class S>
std::vector<S> gaussianOf(const Line<S>& src, int32_t radius, std::vector<S> out) {
    const int64_t reach = (int64_t{radius} + 65535) / 65536;
    std::vector<int32_t> kernel(static_cast<size_t>(2 * reach + 1));
    int32_t diameter = 0;
    RK_GaussianKernel(nullptr, radius / 65536.0, 3, 1.0, &diameter, kernel.data());
    int64_t total = 0;
    for (int32_t w : kernel) total += w;
    for (int64_t c = std::max<int64_t>(0, src.first - reach); c < src.last + reach; ++c) {
        int64_t sum = 0;
        for (int64_t n = c - reach; n <= c + reach; ++n)
            sum += src(n) * kernel[static_cast<size_t>(n - c + reach)];
        out[static_cast<size_t>(c)] = static_cast<S>(sum / total);
    }
    return out;
}

// One running sum with a radius `half`, over the columns from `low` to `high`.
template <class S>
std::vector<S> boxOf(const Line<S>& src, int64_t half, int64_t low, int64_t high, std::vector<S> out) {
    const int64_t n = 2 * half + 1;
    for (int64_t c = low; c < high; ++c) {
        int64_t sum = 0;
        for (int64_t k = c - half; k <= c + half; ++k) sum += src(k);
        if (sizeof(S) == 1) {
            out[static_cast<size_t>(c)] = static_cast<S>((1024 * sum + 512 * n) / (1024 * n));
        } else {
            const auto d = static_cast<float>(n);
            out[static_cast<size_t>(c)] =
                static_cast<S>(static_cast<int32_t>((static_cast<float>(sum) + 0.5f * d) / d));
        }
    }
    return out;
}

template <class S>
std::vector<S> boxesOf(int32_t mode, const Line<S>& src, int32_t radius, std::vector<S> out) {
    const double r = radius / 65536.0, k = (mode == 0 ? 1.4 : 0.9) * r / 2.71;
    if (k <= 1.0) {
        if (mode != 1) return gaussianOf(src, radius, out);
        const int64_t half = ((radius >> 1) + 0x8000) >> 16;
        return boxOf(src, half, std::max<int64_t>(0, src.first - half), src.last + half, out);
    }
    const auto w = static_cast<int64_t>(r * (mode == 0 ? 0.6 : 1.0)) + 3,
               passes = static_cast<int64_t>(k) + 1;
    const auto x = static_cast<int64_t>((k - std::floor(k)) * 255);
    const int64_t low = std::max<int64_t>(0, src.first - w), high = src.last + w;
    std::vector<S> before(out.size()), after(out.size());
    for (int64_t c = low; c < high; ++c) after[static_cast<size_t>(c)] = static_cast<S>(src(c));
    for (int64_t p = 0; p < passes; ++p) {
        before = after;
        after = boxOf(Line<S>{before, low, high}, 1, low, high, before);
    }
    for (int64_t c = low; c < high; ++c) {
        const auto i = static_cast<size_t>(c);
        out[i] = static_cast<S>((after[i] * x + before[i] * (255 - x) + 127) / 255);
    }
    return out;
}

template <class S>
std::vector<S> randomLine(uint32_t seed, size_t count) {
    test::Random r(seed);
    std::vector<S> line(count);
    for (S& s : line) s = r.below(6) == 0 ? static_cast<S>(r.next()) : test::sample(r, S{});
    return line;
}

// The source's span lies against the ends of its block, and the destination keeps what is not written.
template <class S, class Wanted>
void expectScan(Scan<S>* scan, int32_t mode, int32_t first, int32_t last, int32_t radius, size_t room,
                Wanted wanted) {
    const std::vector<S> whole = randomLine<S>(
        static_cast<uint32_t>(first) + static_cast<uint32_t>(last) + static_cast<uint32_t>(radius), room);
    const int32_t begin = std::max(first, 0);
    const std::vector<S> span(whole.begin() + begin, whole.begin() + std::max(last, begin));
    const S* const line = span.empty() ? nullptr : span.data() - begin;
    std::vector<S> got(room, 0x5A);
    ASSERT_EQ(0, scan(mode, nullptr, first, last, radius, line, got.data()));
    ASSERT_EQ(got, wanted(Line<S>{whole, begin, last}, std::vector<S>(room, 0x5A)))
        << first << ".." << last << " radius " << radius / 65536.0 << " mode " << mode;
}

constexpr double kRadii[] = {0.00002, 0.3,  0.5,  1,    1.00002, 1.5, 1.9, 1.94, 2,  2.7,
                             3,       3.01, 3.02, 4.25, 6,       9.9, 17,  40.5, 130};

TYPED_TEST(UnoBlurT, AGaussianOfEveryRadiusAndSpan) {
    using S = TypeParam;
    for (double radius : kRadii)
        for (auto [first, last] :
             {std::pair<int32_t, int32_t>{0, 1}, {0, 20}, {3, 40}, {-7, 9}, {200, 201}, {30, 700}})
            ASSERT_NO_FATAL_FAILURE(expectScan<S>(gaussian<S>(), 0, first, last, fixed(radius), 1000,
                                                  [&](const Line<S>& src, const std::vector<S>& out) {
                                                      return gaussianOf(src, fixed(radius), out);
                                                  }));
}

TYPED_TEST(UnoBlurT, BoxesOfEveryModeRadiusAndSpan) {
    using S = TypeParam;
    for (int32_t mode : {0, 1, 2, -1})
        for (double radius : kRadii)
            for (auto [first, last] :
                 {std::pair<int32_t, int32_t>{0, 1}, {0, 20}, {3, 40}, {-7, 9}, {200, 201}, {30, 700}})
                ASSERT_NO_FATAL_FAILURE(expectScan<S>(box<S>(), mode, first, last, fixed(radius), 1000,
                                                      [&](const Line<S>& src, const std::vector<S>& out) {
                                                          return boxesOf(mode, src, fixed(radius), out);
                                                      }));
}

TYPED_TEST(UnoBlurT, LinesLongerThanABlockAndWideGaussians) {
    using S = TypeParam;
    for (int32_t length : {511, 512, 513, 1024, 1500})
        ASSERT_NO_FATAL_FAILURE(expectScan<S>(
            box<S>(), 0, 2, 2 + length, fixed(5.5), 1600,
            [&](const Line<S>& src, const std::vector<S>& out) { return boxesOf(0, src, fixed(5.5), out); }));
    ASSERT_NO_FATAL_FAILURE(expectScan<S>(
        gaussian<S>(), 0, 100, 700, fixed(700), 1500,
        [&](const Line<S>& src, const std::vector<S>& out) { return gaussianOf(src, fixed(700), out); }));
}

TYPED_TEST(UnoBlurT, WithoutARadiusTheSpanIsCopied) {
    using S = TypeParam;
    for (int32_t radius : {0, -1, INT32_MIN})
        for (Scan<S>* scan : {gaussian<S>(), box<S>()})
            for (auto [first, last] :
                 {std::pair<int32_t, int32_t>{0, 20}, {5, 6}, {-4, 7}, {6, 6}, {9, 3}, {-9, -3}})
                ASSERT_NO_FATAL_FAILURE(expectScan<S>(
                    scan, 1, first, last, radius, 30, [](const Line<S>& src, std::vector<S> out) {
                        for (int64_t c = src.first; c < src.last; ++c)
                            out[static_cast<size_t>(c)] = static_cast<S>(src(c));
                        return out;
                    }));
}

TYPED_TEST(UnoBlurT, AnEmptySpanWritesNothing) {
    using S = TypeParam;
    std::vector<S> line(8, 7);
    for (Scan<S>* scan : {gaussian<S>(), box<S>()}) {
        EXPECT_EQ(0, scan(0, nullptr, 4, 4, fixed(2), nullptr, nullptr));
        EXPECT_EQ(0, scan(0, nullptr, 4, -4, fixed(32000), nullptr, nullptr))
            << "before the limit of the radius";
        EXPECT_EQ(0, scan(0, nullptr, INT32_MIN, 0, fixed(2), line.data(), line.data()));
    }
    EXPECT_EQ(line, std::vector<S>(8, 7));
}

TYPED_TEST(UnoBlurT, TheInsideOfAWhiteSpanStaysWhite) {
    using S = TypeParam;
    const auto full = static_cast<S>(test::kFullSample<S>);
    for (double radius : {1.0, 3.5, 12.0}) {
        const std::vector<S> src(200, full);
        for (Scan<S>* scan : {gaussian<S>(), box<S>()}) {
            std::vector<S> out(240);
            ASSERT_EQ(0, scan(0, nullptr, 0, 200, fixed(radius), src.data(), out.data()));
            const auto reach = static_cast<size_t>(std::ceil(radius)) + 3;
            for (size_t c = reach; c < 200 - reach; ++c) ASSERT_EQ(out[c], full) << radius << " at " << c;
            EXPECT_LT(out[199], full);
            EXPECT_GT(out[199], 0);
        }
    }
}

TYPED_TEST(UnoBlurT, ALineAndItsMirrorBlurToMirrors) {
    using S = TypeParam;
    const std::vector<S> line = randomLine<S>(3, 100), mirror(line.rbegin(), line.rend());
    for (Scan<S>* scan : {gaussian<S>(), box<S>()}) {
        std::vector<S> one(300), two(300);
        const std::vector<S> apart(100);
        std::vector<S> placed(200), placed_mirror(200);
        std::copy(line.begin(), line.end(), placed.begin() + 100);
        std::copy(mirror.begin(), mirror.end(), placed_mirror.begin() + 100);
        scan(0, nullptr, 100, 200, fixed(7.3), placed.data(), one.data());
        scan(0, nullptr, 100, 200, fixed(7.3), placed_mirror.data(), two.data());
        for (size_t c = 0; c < 300; ++c) ASSERT_EQ(one[c], two[299 - c]) << c;
    }
}

// ---- The weights ----------------------------------------------------------------------------------------

TEST_F(UnoBlur, TheSameRadiusTwiceDoesNotMakeTheWeightsAgain) {
    std::vector<uint8_t> src(40, 9), out(80);
    std::vector<uint16_t> deep(40, 9), deep_out(80);
    RefHost::FailAllocation(0);
    EXPECT_EQ(0, RK_GBlurUnoScan(0, nullptr, 5, 30, fixed(4), src.data(), out.data()));
    EXPECT_EQ(RefHost::AllocationsSince(), 1);
    EXPECT_EQ(0, RK_GBlurUnoScan(0, nullptr, 5, 30, fixed(4), src.data(), out.data()));
    EXPECT_EQ(0, RK_GBlurDeepUnoScan(0, nullptr, 5, 30, fixed(4), deep.data(), deep_out.data()));
    EXPECT_EQ(RefHost::AllocationsSince(), 1) << "shared by the depths";
    EXPECT_EQ(0, RK_BoxBlurUnoScan(0, nullptr, 5, 30, fixed(1.5), src.data(), out.data()));
    EXPECT_EQ(RefHost::AllocationsSince(), 2) << "and by the boxes' low end";
    EXPECT_EQ(0, RK_BoxBlurUnoScan(1, nullptr, 5, 30, fixed(1.5), src.data(), out.data()));
    EXPECT_EQ(0, RK_BoxBlurUnoScan(0, nullptr, 5, 30, fixed(9), src.data(), out.data()));
    EXPECT_EQ(RefHost::AllocationsSince(), 2) << "boxes need none";
}

TEST_F(UnoBlur, WithoutMemoryForTheWeightsTheResultIs4AndTheOldOnesAreGone) {
    const std::vector<uint8_t> src(40, 9);
    std::vector<uint8_t> out(80, 3);
    ASSERT_EQ(0, RK_GBlurUnoScan(0, nullptr, 5, 30, fixed(4), src.data(), out.data()));
    const std::vector<uint8_t> blurred = out;
    std::fill(out.begin(), out.end(), uint8_t{3});
    RefHost::FailAllocation(1);
    EXPECT_EQ(4, RK_GBlurUnoScan(0, nullptr, 5, 30, fixed(5), src.data(), out.data()));
    EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, "gaussian weight array"));
    EXPECT_EQ(out, std::vector<uint8_t>(80, 3));
    EXPECT_TRUE(tidy());
    RefHost::FailAllocation(0);
    EXPECT_EQ(0, RK_GBlurUnoScan(0, nullptr, 5, 30, fixed(4), src.data(), out.data()));
    EXPECT_EQ(RefHost::AllocationsSince(), 1) << "made anew";
    EXPECT_EQ(out, blurred);
}

TEST_F(UnoBlur, AGaussianEndsAtTheLargestWholeRadius) {
    const std::vector<uint8_t> src(4, 255);
    std::vector<uint8_t> out(40000, 3);
    EXPECT_EQ(3, RK_GBlurUnoScan(0, nullptr, 0, 4, 0x7FFF0001, src.data(), out.data()));
    EXPECT_EQ(3, RK_GBlurUnoScan(0, nullptr, 0, 4, INT32_MAX, src.data(), out.data()));
    EXPECT_EQ(out, std::vector<uint8_t>(40000, 3));
    EXPECT_EQ(0, RK_GBlurUnoScan(0, nullptr, 0, 4, 0x7FFF0000, src.data(), out.data()));
    EXPECT_EQ(out[32770], 0);
    EXPECT_EQ(out[32771], 3) << "4 + 32767 columns";
}

TYPED_TEST(UnoBlurT, NullLinesOfASpanAreReported) {
    using S = TypeParam;
    std::vector<S> line(40, 9), out(80, 3);
    for (Scan<S>* scan : {gaussian<S>(), box<S>()}) {
        for (int32_t radius : {0, fixed(2)}) {
            EXPECT_EQ(3, scan(0, nullptr, 0, 5, radius, nullptr, out.data()));
            EXPECT_TRUE(test::onlyBadParam(RKp_kSiteBlur));
            EXPECT_EQ(3, scan(0, nullptr, 0, 5, radius, line.data(), nullptr));
            EXPECT_TRUE(test::onlyBadParam(RKp_kSiteBlur));
        }
    }
    EXPECT_EQ(out, std::vector<S>(80, 3));
}

}  // namespace
