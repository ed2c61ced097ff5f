// Convolution against its plain twin.
#include <gtest/gtest.h>

#include "RK/indep/filter/RK_Convolve.h"
#include "test/plain/Worlds.h"
#include "test/plain/filter/PlainConvolve.h"

namespace {

using test::Random;
using test::World;

// Small weights, kernels that sum to nothing, and words of any size.
std::vector<int32_t> kernelOf(Random& r, size_t cells) {
    std::vector<int32_t> k(cells);
    const uint32_t kind = r.below(6);
    for (int32_t& v : k) {
        v = static_cast<int32_t>(r.below(256));
        if (kind == 1) v = 1;
        if (kind == 2) v -= 128;
        if (kind == 3) v = static_cast<int32_t>(r.next());
        if (kind == 4) v = r.below(8) == 0 ? v : 0;
    }
    if (kind == 2 && r.below(2) == 0) {  // the last weight takes the sum to 0, or to -1
        int64_t sum = r.below(2);
        for (size_t i = 0; i + 1 < cells; ++i) sum += k[i];
        k.back() = plain::wrapped(-sum);
    }
    if (kind == 5) k[r.below(static_cast<uint32_t>(cells))] = r.below(2) == 0 ? INT32_MIN : INT32_MAX;
    return k;
}
uint32_t flagsOf(Random& r) {
    uint32_t flags = r.below(8);
    if (r.below(2) == 0) flags |= plain::kKernelVertical;
    if (r.below(8) == 0) flags |= 0x18;
    return flags;
}
size_t cellsOf(uint32_t flags, int size) {
    return static_cast<size_t>((flags & plain::kKernelRow) != 0 ? size : size * size);
}

template <class P>
void convolveMany(int full) {
    Random r(sizeof(P));
    const int count = test::amount(full);
    for (int i = 0; i < count; ++i) {
        const int width = r.below(8) == 0 ? 300 + static_cast<int>(r.below(9)) : test::side(r),
                  height = test::side(r);
        const bool larger = r.below(4) == 0;
        const World<P> src(r, width + (larger ? 3 : 0), height + (larger ? 2 : 0), r.below(3) == 0);
        const World<P> before(r, width, height);
        World<P> expected(before), got(before);
        const uint32_t flags = flagsOf(r);
        const int size = 1 + 2 * static_cast<int>(r.below(r.below(8) == 0 && width < 100 ? 12 : 4));
        std::vector<int32_t> k[4];
        const bool shared = r.below(2) == 0;
        for (int c = 0; c < 4; ++c) k[c] = shared && c > 0 ? k[0] : kernelOf(r, cellsOf(flags, size));
        const int32_t* const kernels[4] = {k[0].data(), k[1].data(), k[2].data(), k[3].data()};

        // The count since the last call grows by the width and starts over past 0x800.
        std::vector<std::pair<RK_Long, RK_Long>> expected_calls;
        int rows = 0, work = 0;
        test::Calls calls;
        calls.stop_at = r.below(4) == 0 ? 1 + static_cast<int>(r.below(3)) : 0;
        bool stopped = false;
        for (; rows < height && !stopped; ++rows) {
            work += width;
            if (work <= 0x800) continue;
            work = 0;
            expected_calls.emplace_back(rows + 1, height);
            stopped = static_cast<int>(expected_calls.size()) == calls.stop_at;
        }
        RK_ProgressInfo progress = {&calls, nullptr, test::Calls::progress};
        const GEO_Rect rect = test::randomRect(r, width, height);
        RK_LayerDef from = src.record;
        const RK_Long result = RK_Convolve(&progress, &from, r.below(2) == 0 ? nullptr : &rect, flags, size,
                                           k[0].data(), k[1].data(), k[2].data(), k[3].data(), &got.record);
        plain::convolve<P>(src.record, flags, size, kernels, expected.record, rows);
        ASSERT_EQ(result, stopped ? 517 : 0);
        ASSERT_EQ(calls.made, expected_calls);
        ASSERT_EQ(test::difference(before, expected, got), "")
            << "size " << size << " flags " << flags << " first weight " << k[0][0];
    }
}
TEST(ConvolveAgainstPlain, EqualAt8Bits) { convolveMany<RK_Pixel8>(1500); }
TEST(ConvolveAgainstPlain, EqualAt16Bits) { convolveMany<RK_Pixel16>(1500); }
TEST(ConvolveAgainstPlain, EqualAtFloat) { convolveMany<RK_PixelFloat>(1500); }

}  // namespace
