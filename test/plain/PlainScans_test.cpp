// The row scans, as their slots hold them, against their plain twins: both paths, odd lengths and alignments.
#include <gtest/gtest.h>

#include "RK/indep/frame/RK_OverFuncs.h"
#include "test/plain/Compare.h"
#include "test/plain/PlainScans.h"

namespace {

using test::show;

constexpr int kLongestRow = 300;

// The slot of the first scan of a depth; the scans are premultiply and unmultiply by black, by white, by
// grey, and then the alpha merge.
template <class P>
constexpr int kFirstScanSlot = sizeof(P) == 4   ? 35
                               : sizeof(P) == 8 ? 72
                                                : 106;

template <class P>
using Scan = RK_Long(RK_Long, const P*, P*);
template <class P>
using Merge = RK_Long(RK_Long, const P*, RK_Channel<P>, const P*, P*);

const char* const kMatteNames[] = {"black", "white", "grey"};

// Denormal, zero and full alphas come often enough to meet every special case in company.
template <class P>
std::vector<P> scanRow(test::Random& r, int count) {
    std::vector<P> row(static_cast<size_t>(count));
    for (P& p : row) p = r.below(16) == 0 ? test::wildPixel<P>(r) : test::pixel<P>(r);
    return row;
}

template <class P>
void compareScans() {
    for (int k = 0; k < 6; ++k) {
        auto* const scan = reinterpret_cast<Scan<P>*>(RKp_G_OverFuncs[kFirstScanSlot<P> + k]);
        ASSERT_NE(scan, nullptr);
        const auto matte = static_cast<plain::Matte>(k / 2);
        const bool forward = k % 2 == 0;
        test::Random r(static_cast<uint32_t>(k) + sizeof(P) * 10);
        const int wanted = test::amount(1 << 20);
        for (int done = 0; done < wanted;) {
            const int count = 1 + static_cast<int>(r.below(kLongestRow));
            done += count;
            const size_t source_lead = r.below(4), lead = r.below(4);
            const int path = static_cast<int>(r.below(3));  // 0: null source, 1: source is dst, 2: copying
            const std::vector<P> source = scanRow<P>(r, count + int(source_lead));
            std::vector<P> got = scanRow<P>(r, count + int(lead)), expected = got;
            const std::vector<P> before = got;
            const P* from = path == 0 ? nullptr : path == 1 ? got.data() + lead : source.data() + source_lead;
            ASSERT_EQ(scan(count, from, got.data() + lead), 0);
            plain::scan(matte, forward, count, path == 2 ? from : nullptr, expected.data() + lead);
            const int i = test::firstDifference(expected.data(), got.data(), int(got.size()));
            if (i < 0) continue;
            const size_t n = static_cast<size_t>(i);
            FAIL() << (forward ? "premultiply by " : "unmultiply by ") << kMatteNames[k / 2] << ", depth "
                   << test::kDepth<P> << (path == 2 ? ", copying" : ", in place") << ", pixel " << n - lead
                   << " of " << count << "\n  pixel    "
                   << show(path == 2 && n >= lead ? source[source_lead + n - lead] : before[n])
                   << "\n  expected " << show(expected[n]) << "\n  got      " << show(got[n]);
        }
    }
}
TEST(ScansAgainstPlain, EqualAtEveryByteAt8Bits) { compareScans<RK_Pixel8>(); }
TEST(ScansAgainstPlain, EqualAtEveryByteAt16Bits) { compareScans<RK_Pixel16>(); }
TEST(ScansAgainstPlain, EqualAtEveryBitAtFloat) { compareScans<RK_PixelFloat>(); }

// Every alpha against every colour, on both paths.
TEST(ScansAgainstPlain, EqualOnEveryByteOfAlphaAndColour) {
    for (int k = 0; k < 6; ++k) {
        auto* const scan = reinterpret_cast<Scan<RK_Pixel8>*>(RKp_G_OverFuncs[35 + k]);
        const auto matte = static_cast<plain::Matte>(k / 2);
        for (int a = 0; a < 256; ++a) {
            std::vector<RK_Pixel8> source;
            for (int c = 0; c < 256; ++c)
                source.push_back({uint8_t(a), uint8_t(c), uint8_t(255 - c), uint8_t(c ^ 0x55)});
            for (const bool in_place : {false, true}) {
                std::vector<RK_Pixel8> expected = source, got = source;
                plain::scan(matte, k % 2 == 0, 256, in_place ? nullptr : source.data(), expected.data());
                scan(256, in_place ? nullptr : source.data(), got.data());
                const int i = test::firstDifference(expected.data(), got.data(), 256);
                ASSERT_EQ(i, -1) << "slot " << 35 + k << (in_place ? ", in place, " : ", copying, ")
                                 << show(source[size_t(i)]) << " gave " << show(got[size_t(i)])
                                 << ", expected " << show(expected[size_t(i)]);
            }
        }
    }
}

template <class P>
void compareMerge() {
    auto* const merge = reinterpret_cast<Merge<P>*>(RKp_G_OverFuncs[kFirstScanSlot<P> + 6]);
    ASSERT_NE(merge, nullptr);
    test::Random r(sizeof(P));
    const int wanted = test::amount(1 << 20);
    for (int done = 0; done < wanted;) {
        const int count = 1 + static_cast<int>(r.below(kLongestRow));
        done += count;
        const std::vector<P> source = scanRow<P>(r, count + 3), mask = scanRow<P>(r, count + 3);
        const size_t lead = r.below(4);
        std::vector<P> got = scanRow<P>(r, count + int(lead)), expected = got;
        const std::vector<P> before = got;
        const RK_Channel<P> opacity = test::opacity<P>(r);
        const P* from = source.data() + r.below(4);
        const P* with = r.below(2) == 0 ? nullptr : mask.data() + r.below(4);
        ASSERT_EQ(merge(count, from, opacity, with, got.data() + lead), 0);
        plain::alphaMerge(count, from, opacity, with, expected.data() + lead);
        const int i = test::firstDifference(expected.data(), got.data(), int(got.size()));
        if (i < 0) continue;
        const size_t n = static_cast<size_t>(i), k = n < lead ? 0 : n - lead;
        FAIL() << "alpha merge, depth " << test::kDepth<P> << ", pixel " << k << " of " << count
               << ", opacity " << test::showChannel(opacity) << "\n  source alpha "
               << test::showChannel(from[k].alpha)
               << (with != nullptr ? "\n  mask alpha   " + test::showChannel(with[k].alpha) : "")
               << "\n  on       " << show(before[n]) << "\n  expected " << show(expected[n])
               << "\n  got      " << show(got[n]);
    }
}
TEST(AlphaMergeAgainstPlain, EqualAtEveryByteAt8Bits) { compareMerge<RK_Pixel8>(); }
TEST(AlphaMergeAgainstPlain, EqualAtEveryByteAt16Bits) { compareMerge<RK_Pixel16>(); }
TEST(AlphaMergeAgainstPlain, EqualAtEveryBitAtFloat) { compareMerge<RK_PixelFloat>(); }

}  // namespace
