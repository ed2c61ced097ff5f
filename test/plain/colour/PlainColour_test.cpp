// Colour conversions and measures against their plain twins: every 8-bit colour of a lattice, and random
// ones.
#include "test/plain/colour/PlainColour.h"

#include <gtest/gtest.h>

#include "RK/indep/colour/RK_ColorConvert.h"
#include "test/plain/Compare.h"

namespace {

using test::amount;
using Triple = std::vector<int32_t>;

template <class P>
struct Forms;
template <>
struct Forms<RK_Pixel8> {
    static constexpr auto toHLS = RK_RGBtoHLS_Straight;
    static constexpr auto fromHLS = RK_HLStoRGB_Straight;
    static constexpr auto toYIQ = RK_RGBtoYIQ_Straight;
    static constexpr auto fromYIQ = RK_YIQtoRGB_Straight;
    static constexpr auto hue = RK_Hue_Straight;
    static constexpr auto saturation = RK_Saturation_Straight;
};
template <>
struct Forms<RK_Pixel16> {
    static constexpr auto toHLS = RK_RGBtoHLS_Straight16;
    static constexpr auto fromHLS = RK_HLStoRGB_Straight16;
    static constexpr auto toYIQ = RK_RGBtoYIQ_Straight16;
    static constexpr auto fromYIQ = RK_YIQtoRGB_Straight16;
    static constexpr auto hue = RK_Hue_Straight16;
    static constexpr auto saturation = RK_Saturation_Straight16;
};
template <>
struct Forms<RK_PixelFloat> {
    static constexpr auto toHLS = RK_RGBtoHLS_StraightFloat;
    static constexpr auto fromHLS = RK_HLStoRGB_StraightFloat;
    static constexpr auto toYIQ = RK_RGBtoYIQ_StraightFloat;
    static constexpr auto fromYIQ = RK_YIQtoRGB_StraightFloat;
};

template <class P>
constexpr int32_t kFullOf = sizeof(P) == 4   ? 255
                            : sizeof(P) == 8 ? 32768
                                             : 1;

template <class P>
void comparePixel(const P& p) {
    using F = Forms<P>;
    Triple got(3);
    F::toHLS(nullptr, &p, got.data());
    ASSERT_EQ(plain::toHls(plain::unit(p)), got) << test::show(p);
    F::toYIQ(nullptr, &p, got.data());
    ASSERT_EQ(plain::toYiq(plain::unit(p)), got) << test::show(p);
    if constexpr (sizeof(P) < 16) {
        uint32_t v = 0;
        F::hue(nullptr, &p, &v);
        ASSERT_EQ(plain::rounded(double{plain::hueDegrees(plain::unit(p))} * 255.0 / 360.0), int32_t(v))
            << test::show(p);
        F::saturation(nullptr, &p, &v);
        ASSERT_EQ(plain::saturation(p.red, p.green, p.blue, kFullOf<P>), v) << test::show(p);
    } else {
        float v = 0;
        RK_Hue_StraightFloat(nullptr, &p, &v);
        ASSERT_EQ(static_cast<float>(double{plain::hueDegrees(plain::unit(p))} / 360.0), v) << test::show(p);
    }
}

template <class P>
void compareTriple(const Triple& in) {
    using F = Forms<P>;
    using C = decltype(P::red);
    const plain::Rgb hls = plain::fromHls(in.data()), yiq = plain::fromYiq(in.data(), kFullOf<P>);
    P got = {3, 3, 3, 3}, wanted = got;
    C P::*const channels[] = {&P::red, &P::green, &P::blue};
    F::fromHLS(nullptr, in.data(), &got);
    for (int k = 0; k < 3; ++k) {
        if constexpr (sizeof(P) < 16)
            wanted.*channels[k] = static_cast<C>(plain::rounded(double{hls.v[k]} * kFullOf<P>));
        else
            wanted.*channels[k] = hls.v[k];
    }
    ASSERT_TRUE(test::samePixel(wanted, got))
        << in[0] << ", " << in[1] << ", " << in[2] << ": " << test::show(got);
    F::fromYIQ(nullptr, in.data(), &got);
    for (int k = 0; k < 3; ++k) {
        if constexpr (sizeof(P) < 16)
            wanted.*channels[k] = static_cast<C>(plain::clampedYiq(yiq.v[k], float(kFullOf<P>)));
        else
            wanted.*channels[k] = yiq.v[k];
    }
    ASSERT_TRUE(test::samePixel(wanted, got))
        << in[0] << ", " << in[1] << ", " << in[2] << ": " << test::show(got);
}

template <class P>
class PlainColour : public testing::Test {};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(PlainColour, Depths);

TYPED_TEST(PlainColour, PixelsToSpacesAndMeasures) {
    using P = TypeParam;
    test::Random r(31);
    for (int i = 0; i < amount(300000); ++i) {
        P p = test::pixel<P>(r);
        if (r.below(4) == 0) p.green = p.red;
        if (r.below(6) == 0) p.blue = p.red;
        if (r.below(6) == 0) p.blue = p.green;
        ASSERT_NO_FATAL_FAILURE(comparePixel(p));
    }
}

TEST(PlainColour8, ALatticeOfAllColours) {
    for (int red = 0; red < 256; red += 3)
        for (int green = 0; green < 256; green += 5)
            for (int blue = 0; blue < 256; blue += 5)
                ASSERT_NO_FATAL_FAILURE(
                    comparePixel(RK_Pixel8{0, uint8_t(red), uint8_t(green), uint8_t(blue)}));
}

TYPED_TEST(PlainColour, SpacesToPixels) {
    using P = TypeParam;
    test::Random r(32);
    static const int32_t special[] = {
        0,           1,           -1,          32767,        32768,        32769,
        65535,       65536,       65537,       60 * 65536,   120 * 65536,  180 * 65536,
        240 * 65536, 300 * 65536, 360 * 65536, 361 * 65536,  -1 * 65536,   -90 * 65536,
        480 * 65536, INT32_MAX,   INT32_MIN,   -360 * 65536, -500 * 65536, 700 * 65536};
    const auto any = [&](uint32_t reach) {
        if (r.below(5) == 0) return special[r.below(24)];
        return static_cast<int32_t>(r.below(reach));
    };
    for (int i = 0; i < amount(300000); ++i) {
        const bool hls = r.below(2) == 0;
        const auto shifted = [&](int32_t by) {  // wraps
            return static_cast<int32_t>(static_cast<uint32_t>(any(65537)) - static_cast<uint32_t>(by));
        };
        const int32_t first = any(hls ? 360 * 65536 : 65537), second = shifted(hls ? 0 : 20000);
        const Triple in = {first, second, shifted(hls ? 0 : 20000)};
        ASSERT_NO_FATAL_FAILURE(compareTriple<P>(in));
    }
}

}  // namespace
