// The area samplers against their plain twins: radii below, at and above half a pixel, boxes inside, over the
// edges and far outside.
#include <gtest/gtest.h>

#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/sample/RK_AreaSample.h"
#include "test/plain/PlainArea.h"
#include "test/plain/SampleWorlds.h"

namespace {

using plain::Rounding;

int32_t radius(test::Random& r) {
    static const int32_t special[] = {0,      1,      0x4000,  0x7FFF,  0x8000,
                                      0x8000, 0x8001, 0x10000, 0x18000, 127 * 0x10000};
    switch (r.below(4)) {
        case 0: return special[r.below(10)];
        case 1: return static_cast<int32_t>(r.below(0x8000));
        case 2: return static_cast<int32_t>(r.below(0x40000));
        default: return static_cast<int32_t>(r.below(0x180000));
    }
}
// The footprint's own area mostly, now and then nothing, little or very much.
int32_t area(test::Random& r, const RK_SampPB& pb) {
    static const int32_t special[] = {0, 1, 127, 128, 255, 256, 0x10000, INT32_MAX, -0x12345};
    if (r.below(8) == 0) return special[r.below(9)];
    const double own = 4.0 * pb.x_radius * pb.y_radius / 65536;
    return own < INT32_MAX ? static_cast<int32_t>(own) : INT32_MAX;
}

template <class P, class Sampler, class Plain>
void compare(Sampler sampler, Plain twin) {
    test::Random r(sizeof(P) + 7);
    test::GuardedRows rows;
    const int count = test::amount(3000);
    for (int i = 0; i < count; ++i) {
        const int width = test::side(r), height = test::side(r);
        test::World<P> world = test::sampleWorld<P>(r, width, height);
        test::guardSome(r, rows, world);
        RK_SampPB pb = test::sampleBlock(world.record);
        for (int k = 0; k < 24; ++k) {
            pb.x_radius = radius(r);
            pb.y_radius = radius(r);
            pb.area = area(r, pb);
            const int32_t x = test::position(r, width), y = test::position(r, height);
            P got = test::pixel<P>(r);
            ASSERT_EQ(sampler(nullptr, x, y, &pb, &got), 0);
            const P expected = twin(x, y, pb);
            ASSERT_TRUE(test::samePixel(expected, got))
                << "expected " << test::show(expected) << ", got " << test::show(got)
                << test::showPosition(x, y, world.record) << ", radii " << pb.x_radius / 65536.0 << ", "
                << pb.y_radius / 65536.0 << ", area " << pb.area;
        }
    }
}

template <Rounding rounding, class P>
P straight(int32_t x, int32_t y, const RK_SampPB& pb) {
    return plain::areaStraight<P>(x, y, pb, rounding, [&](int32_t px, int32_t py) {
        if constexpr (sizeof(P) == 16)
            return plain::bilinearPortable<P>(px, py, *pb.src);
        else
            return plain::bilinearDefault<P>(px, py, *pb.src);
    });
}
constexpr auto kEven8 = straight<Rounding::kTiesToEven, RK_Pixel8>;
constexpr auto kUp8 = straight<Rounding::kHalfUp, RK_Pixel8>;
constexpr auto kAway16 = straight<Rounding::kHalfAway, RK_Pixel16>;
constexpr auto kUp16 = straight<Rounding::kHalfUp, RK_Pixel16>;

TEST(AreaSamplersAgainstPlain, TheSlotsHoldTheFormOfTheProcessor) {
    const bool sse2 = KIT_G_CPU_DataP->has_sse2 != 0;
    compare<RK_Pixel8>(RK_AreaSample_Straight, sse2 ? kUp8 : kEven8);
    compare<RK_Pixel16>(RK_AreaSample_Straight16, sse2 ? kUp16 : kAway16);
}
TEST(AreaSamplersAgainstPlain, FormsOfTheTable) {
    compare<RK_Pixel8>(RKp_AreaSample8_Static, kEven8);
    compare<RK_Pixel8>(RKp_AreaSample8_Portable, kUp8);
    compare<RK_Pixel16>(RKp_AreaSample16_Static, kAway16);
    compare<RK_Pixel16>(RKp_AreaSample16_Portable, kUp16);
}
TEST(AreaSamplersAgainstPlain, PortableForms) {
    compare<RK_Pixel8>(RK_AreaSample_CPlusPlus<RK_Pixel8>, kUp8);
    compare<RK_Pixel16>(RK_AreaSample_CPlusPlus<RK_Pixel16>, kUp16);
    compare<RK_PixelFloat>(RK_AreaSample_CPlusPlus<RK_PixelFloat>, straight<Rounding::kNone, RK_PixelFloat>);
    compare<RK_PixelFloat>(RKp_GetSamplerBundle<RK_PixelFloat>().area,
                           straight<Rounding::kNone, RK_PixelFloat>);
}
// Boxes of thousands of pixels, whose sums are or are not exact, at whole edges and between them.
template <class P, class Sampler, class Plain>
void compareWide(Sampler sampler, Plain twin) {
    test::Random r(sizeof(P) + 9);
    constexpr int kSide = 300;
    for (const bool white : {false, true}) {
        test::World<P> world = test::sampleWorld<P>(r, kSide, kSide);
        const auto full = static_cast<RK_Channel<P>>(test::kFull<P>);
        if (white) world.picture.fill({full, full, full, full});
        const RK_LayerDef src = world.picture.record();
        RK_SampPB pb = test::sampleBlock(src);
        for (int i = 0; i < test::amount(60); ++i) {
            const int32_t zeros = static_cast<int32_t>(r.below(17));
            const auto length = [&](uint32_t most) {
                const int32_t pixels = static_cast<int32_t>(1 + r.below(most)) << 16;
                return i % 3 == 0 ? pixels : pixels - ((test::fraction(r) >> zeros) << zeros);
            };
            pb.x_radius = length(i % 5 == 0 ? 127 : 20);
            pb.y_radius = length(i % 7 == 0 ? 127 : 20);
            pb.area = area(r, pb);
            const int32_t x = length(kSide) - 0x8000, y = length(kSide) - 0x8000;
            P got = test::pixel<P>(r);
            ASSERT_EQ(sampler(nullptr, x, y, &pb, &got), 0);
            const P expected = twin(x, y, pb);
            ASSERT_TRUE(test::samePixel(expected, got))
                << "expected " << test::show(expected) << ", got " << test::show(got)
                << test::showPosition(x, y, src) << ", radii " << pb.x_radius / 65536.0 << ", "
                << pb.y_radius / 65536.0;
        }
    }
}
TEST(AreaSamplersAgainstPlain, BoxesOfManyPixels) {
    compareWide<RK_Pixel8>(RKp_AreaSample8_Static, kEven8);
    compareWide<RK_Pixel8>(RKp_AreaSample8_Portable, kUp8);
    compareWide<RK_Pixel16>(RKp_AreaSample16_Portable, kUp16);
    compareWide<RK_Pixel8>(RK_AreaSample_Premul, plain::areaPremul);
    compareWide<RK_PixelFloat>(RK_AreaSampleFloat, straight<Rounding::kNone, RK_PixelFloat>);
}
TEST(AreaSamplersAgainstPlain, Premultiplied) {
    compare<RK_Pixel8>(RK_AreaSample_Premul, plain::areaPremul);
    compare<RK_Pixel8>(RKp_Slot<6>(), plain::areaPremul);
}

}  // namespace
