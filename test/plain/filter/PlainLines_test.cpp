// Lines and single pixels against their twins, far out and at the edges of every test.
#include <gtest/gtest.h>

#include "RK/indep/filter/RK_Lines.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "test/plain/Worlds.h"
#include "test/plain/filter/PlainDraw.h"

namespace {

using test::Random;
using test::World;

template <class P>
class Canvas {
  public:
    Canvas(Random& r, test::GuardedRows& pages)
        : before(r, test::side(r), test::side(r)), expected(before), got(before) {
        test::guardSome(r, pages, got);
    }
    void draw(const double start[2], const double end[2], const RK_PixelFloat& colour) {
        plain::drawLine<P>(start, end, colour, expected.record);
        RK_WorldX<P> world(&got.record, false);
        ASSERT_EQ(0, RK_DrawLine(start, end, &colour, &world));
        ASSERT_EQ(test::difference(before, expected, got), "")
            << std::hexfloat << start[0] << ", " << start[1] << " to " << end[0] << ", " << end[1];
    }
    World<P> before, expected, got;
};

RK_PixelFloat colourOf(Random& r) {
    // 1.2 * 255 and 2.5 * 32768 keep low bits.
    static const float special[] = {0.0f, 1.0f, -0.1f, 1.2f, 2.5f, -3.0f, 1e6f, 0.5f, 127.5f / 255.0f};
    const auto c = [&] { return r.below(2) == 0 ? special[r.below(9)] : r.unit(); };
    return {c(), c(), c(), c()};
}
// A whole number, a half, and their neighbours in 16.16 and in double.
double edgeOf(Random& r, int side) {
    double v = static_cast<double>(test::about(r, side)) + (r.below(2) == 0 ? 0.5 : 0.0);
    switch (r.below(6)) {
        case 0: return v + 1.0 / 65536;
        case 1: return v - 1.0 / 65536;
        case 2: return v + 0.5 / 65536;
        case 3: return std::nextafter(v, 1e9);
        case 4: return std::nextafter(v, -1e9);
        default: return v;
    }
}

template <class P>
void drawEdges(int full) {
    Random r(110 + sizeof(P));
    test::GuardedRows pages;
    const int count = test::amount(full);
    for (int i = 0; i < count && !testing::Test::HasFatalFailure(); ++i) {
        Canvas<P> canvas(r, pages);
        const int w = canvas.before.record.width, h = canvas.before.record.height;
        const double start[2] = {edgeOf(r, w), edgeOf(r, h)};
        double end[2] = {edgeOf(r, w), edgeOf(r, h)};
        switch (r.below(8)) {
            case 0: end[0] = start[0]; break;
            case 1: end[1] = start[1]; break;
            case 2: end[0] = start[0] + (end[1] - start[1]); break;
            case 3: end[0] = start[0] - (end[1] - start[1]); break;
            case 4: end[0] = start[0], end[1] = start[1]; break;
            default: break;
        }
        canvas.draw(start, end, colourOf(r));
    }
}
TEST(LinesAgainstPlain, EqualAboutWholePixelsAndHalvesAt8Bits) { drawEdges<RK_Pixel8>(8000); }
TEST(LinesAgainstPlain, EqualAboutWholePixelsAndHalvesAt16Bits) { drawEdges<RK_Pixel16>(4000); }
TEST(LinesAgainstPlain, EqualAboutWholePixelsAndHalvesAtFloat) { drawEdges<RK_PixelFloat>(4000); }

TEST(LinesAgainstPlain, EqualFromFarOutside) {
    Random r(120);
    test::GuardedRows pages;
    const int count = test::amount(600);
    for (int i = 0; i < count && !HasFatalFailure(); ++i) {
        Canvas<RK_Pixel8> canvas(r, pages);
        // Through a point of the world, one end or both up to some ten thousand pixels away, or a million.
        const double far = i % 40 == 0 ? 1e6 : 5e4, angle = r.unit() * 6.3;
        const double through[2] = {static_cast<double>(r.unit()) * canvas.before.record.width,
                                   static_cast<double>(r.unit()) * canvas.before.record.height};
        const double along[2] = {std::cos(angle), std::sin(angle)};
        const double before = r.below(3) == 0 ? 0 : r.unit() * far,
                     after = r.below(3) == 0 ? 5 : r.unit() * far;
        double start[2], end[2];
        for (int k = 0; k < 2; ++k) {
            start[k] = through[k] - along[k] * before;
            end[k] = through[k] + along[k] * after;
        }
        if (r.below(8) == 0) end[1] = start[1] + static_cast<double>(r.unit()) * 2e-4;
        canvas.draw(start, end, colourOf(r));
    }
}

TEST(LinesAgainstPlain, EqualAboutTheLengthThatIsNone) {
    Random r(130);
    test::GuardedRows pages;
    const int count = test::amount(2000);
    for (int i = 0; i < count && !HasFatalFailure(); ++i) {
        Canvas<RK_Pixel8> canvas(r, pages);
        const auto tiny = [&] {
            static const double lengths[] = {0.0, 0.9e-12, -0.9e-12, 1.1e-12, -1.1e-12, 1e-9, -1e-9, 0.7};
            return lengths[r.below(8)];
        };
        // Near zero the difference of the ends is exact.
        double start[2] = {0, 0}, end[2] = {tiny(), tiny()};
        if (r.below(2) == 0)
            for (int k = 0; k < 2; ++k) start[k] = end[k] * 0.5, end[k] = start[k] * 2;
        canvas.draw(start, end, colourOf(r));
    }
}

RK_Long set(int32_t x, int32_t y, const RK_Pixel8* c, RK_LayerDef* w) { return RK_SetPixel8(x, y, c, w); }
RK_Long set(int32_t x, int32_t y, const RK_Pixel16* c, RK_LayerDef* w) { return RK_SetPixel16(x, y, c, w); }
RK_Long set(int32_t x, int32_t y, const RK_PixelFloat* c, RK_LayerDef* w) {
    return RK_SetPixelFloat(x, y, c, w);
}

template <class P>
void setPixels() {
    Random r(140 + sizeof(P));
    test::GuardedRows pages;
    const int count = test::amount(4000);
    for (int i = 0; i < count; ++i) {
        Canvas<P> canvas(r, pages);
        const auto place = [&](int side) -> int32_t {
            static const int32_t ends[] = {INT32_MIN, INT32_MAX, -1, 0};
            const uint32_t kind = r.below(10);
            return kind < 4 ? ends[kind] : kind == 4 ? side : kind == 5 ? side - 1 : test::about(r, side);
        };
        const int32_t x = place(canvas.before.record.width), y = place(canvas.before.record.height);
        const P colour = test::wildPixel<P>(r);
        const bool inside = plain::setPixel(x, y, colour, canvas.expected.record);
        ASSERT_EQ(set(x, y, &colour, &canvas.got.record), inside ? 1 : 0) << x << ", " << y;
        ASSERT_EQ(test::difference(canvas.before, canvas.expected, canvas.got), "") << x << ", " << y;
    }
}
TEST(PixelsAgainstPlain, SetWhereTheyLieInside) {
    setPixels<RK_Pixel8>();
    setPixels<RK_Pixel16>();
    setPixels<RK_PixelFloat>();
}

}  // namespace
