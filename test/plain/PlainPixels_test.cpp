// The one-pixel tables against their plain twins: a million random and special pixels per mode and depth.
#include <gtest/gtest.h>

#include "test/plain/Compare.h"
#include "test/plain/PlainModes.h"

namespace {

using test::show;

class PixelsAgainstPlain : public testing::TestWithParam<int> {};

template <class P>
void comparePixels(int mode) {
    const std::vector<P>& pool = test::pool<P>();
    const int count = test::amount(1 << 20);
    const size_t shift = 1 + static_cast<size_t>(mode) * 97;
    test::Random r(static_cast<uint32_t>(mode) + 1);
    for (int i = 0; i < count; ++i) {
        const P& source = pool[static_cast<size_t>(i)];
        const P& before = pool[static_cast<size_t>(i) + shift];
        RK_Channel<P> o1 = test::kFull<P>, o2 = test::kFull<P>;
        P got = before;
        const int form = i % 3;
        if (form == 0) {
            test::PixelTables<P>::plain(mode)(&source, nullptr, &got);
        } else if (form == 1) {
            o1 = test::opacity<P>(r);
            test::PixelTables<P>::one(mode)(&source, nullptr, o1, &got);
        } else {
            o1 = test::opacity<P>(r);
            o2 = test::opacity<P>(r);
            test::PixelTables<P>::two(mode)(&source, nullptr, o1, o2, &got);
        }
        const P expected = plain::pixel(mode, source, o1, o2, before);
        if (test::samePixel(expected, got)) continue;
        FAIL() << test::modeName(mode) << ", depth " << test::kDepth<P> << ", one pixel, " << form
               << " opacities\n  source " << show(source) << "\n  on     " << show(before) << "\n  opacities "
               << test::showChannel(o1) << ", " << test::showChannel(o2) << "\n  expected " << show(expected)
               << "\n  got      " << show(got);
    }
}

TEST_P(PixelsAgainstPlain, EqualAtEveryByteAt8Bits) { comparePixels<RK_Pixel8>(GetParam()); }
TEST_P(PixelsAgainstPlain, EqualAtEveryByteAt16Bits) { comparePixels<RK_Pixel16>(GetParam()); }
TEST_P(PixelsAgainstPlain, EqualAtEveryBitAtFloat) { comparePixels<RK_PixelFloat>(GetParam()); }

// Every source colour against every destination colour, under a spread of alphas.
TEST_P(PixelsAgainstPlain, EqualOnEveryPairOfBytes) {
    const int mode = GetParam();
    test::Random r(static_cast<uint32_t>(mode) + 77);
    const int spread = test::amount(12);
    for (int s = 0; s < 256; ++s)
        for (int d = 0; d < 256; d += 3)
            for (int k = 0; k < spread; ++k) {
                const auto d8 = [&](int c) { return static_cast<uint8_t>(std::min(d + c, 255)); };
                const auto s8 = static_cast<uint8_t>(s);
                const uint8_t sa = k == 0 ? 255 : static_cast<uint8_t>(r.next() >> 24);
                const uint8_t da = k == 1 ? 255 : static_cast<uint8_t>(r.next() >> 24);
                const RK_Pixel8 source{sa, s8, s8, s8}, before{da, d8(0), d8(1), d8(2)};
                const RK_Pixel8 expected = plain::pixel<RK_Pixel8>(mode, source, 255, 255, before);
                RK_Pixel8 got = before;
                RKp_G_Xfer1_table8[mode](&source, nullptr, &got);
                ASSERT_TRUE(test::samePixel(expected, got))
                    << test::modeName(mode) << ", depth 8, one pixel\n  source " << show(source)
                    << "\n  on     " << show(before) << "\n  expected " << show(expected) << "\n  got      "
                    << show(got);
            }
}

INSTANTIATE_TEST_SUITE_P(Modes, PixelsAgainstPlain, testing::Range(0, RK_kLastMode + 1),
                         [](const auto& mode) { return test::modeName(mode.param); });

}  // namespace
