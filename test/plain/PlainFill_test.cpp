// The three fills against their plain twin, on worlds of every depth.
#include <gtest/gtest.h>

#include "RK/indep/passes/RK_Fill.h"
#include "test/plain/PlainFill.h"
#include "test/plain/Worlds.h"

namespace {

RK_Long libraryFill(const RK_Pixel8* c, const GEO_Rect* rect, RK_LayerDef* w) {
    return RK_Fill(nullptr, c, rect, w);
}
RK_Long libraryFill(const RK_Pixel16* c, const GEO_Rect* rect, RK_LayerDef* w) {
    return RK_Fill16(nullptr, c, rect, w);
}
RK_Long libraryFill(const RK_PixelFloat* c, const GEO_Rect* rect, RK_LayerDef* w) {
    return RK_FillFloat(nullptr, c, rect, w);
}

// Ordinary and wild colours, black among them, some of them zero but for a sign or one channel.
template <class Colour>
Colour randomColour(test::Random& r) {
    Colour c = r.below(2) == 0 ? test::pixel<Colour>(r) : test::wildPixel<Colour>(r);
    if (r.below(4) == 0) c = Colour{};
    if (r.below(8) == 0) c.green = static_cast<RK_Channel<Colour>>(-0.0f);
    if (r.below(8) == 0) c.alpha = static_cast<RK_Channel<Colour>>(1);
    return c;
}

template <class Colour, class P>
void compareFills() {
    test::Random r(sizeof(Colour) * 17 + sizeof(P));
    const int count = test::amount(2000);
    for (int i = 0; i < count; ++i) {
        const test::World<P> world{r, test::side(r), test::side(r)};
        const Colour colour = randomColour<Colour>(r);
        const Colour* given = r.below(16) == 0 ? nullptr : &colour;
        const GEO_Rect rect = test::randomRect(r, world.record.width, world.record.height);
        const GEO_Rect* area = r.below(8) == 0 ? nullptr : &rect;
        test::World<P> expected(world), got(world);
        plain::fill<P>(given, area, expected.record);
        ASSERT_EQ(libraryFill(given, area, &got.record), 0);
        ASSERT_EQ(test::difference(world, expected, got), "")
            << "fill from depth " << test::kDepth<Colour> << " to " << test::kDepth<P> << ", colour "
            << (given != nullptr ? test::show(colour) : "null") << ", "
            << (area != nullptr ? test::show(rect) : "whole");
    }
}

TEST(FillAgainstPlain, EqualOnEveryDepthFromBytes) {
    compareFills<RK_Pixel8, RK_Pixel8>();
    compareFills<RK_Pixel8, RK_Pixel16>();
    compareFills<RK_Pixel8, RK_PixelFloat>();
}
TEST(FillAgainstPlain, EqualOnEveryDepthFrom16Bits) {
    compareFills<RK_Pixel16, RK_Pixel8>();
    compareFills<RK_Pixel16, RK_Pixel16>();
    compareFills<RK_Pixel16, RK_PixelFloat>();
}
TEST(FillAgainstPlain, EqualOnEveryDepthFromFloat) {
    compareFills<RK_PixelFloat, RK_Pixel8>();
    compareFills<RK_PixelFloat, RK_Pixel16>();
    compareFills<RK_PixelFloat, RK_PixelFloat>();
}

}  // namespace
