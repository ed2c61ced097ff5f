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

}  // namespace
