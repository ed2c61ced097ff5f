// Wireframes against their twin: outlines of every raggedness within any rectangle, and the order of the
// dots.
#include <gtest/gtest.h>

#include "RK/host/SEQ.h"
#include "RK/indep/filter/RK_Wireframe.h"
#include "refhost/RefHost.h"
#include "test/filter/Bitmap.h"
#include "test/plain/Worlds.h"
#include "test/plain/filter/PlainDraw.h"

namespace {

using test::Random;

struct Dots {
    std::vector<Point> drawn;
    bool all_dots = true;
    static void line(void* refcon, Point from, Point to) {
        Dots* const dots = static_cast<Dots*>(refcon);
        dots->drawn.push_back(from);
        dots->all_dots &= from.v == to.v && from.h == to.h;
    }
};
struct Drawing {
    explicit Drawing(Dots* dots) { RefHost::SetLineFunc(Dots::line, dots); }
    ~Drawing() { RefHost::SetLineFunc(nullptr, nullptr); }
};

// Alphas about one half, in runs that are shorter or longer.
void fillAlpha(Random& r, test::Bitmap& bitmap, int width, int height) {
    static const uint8_t alphas[] = {0, 1, 127, 128, 129, 255};
    const uint32_t run = 1 + r.below(r.below(2) == 0 ? 4 : 30);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            RK_Pixel8 p = test::pixel<RK_Pixel8>(r);
            const bool anew = r.below(run) == 0 || (x == 0 && y == 0);
            p.alpha = anew                                   ? alphas[r.below(6)]
                      : x > 0 && (y == 0 || r.below(2) == 0) ? bitmap.at(x - 1, y).alpha
                                                             : bitmap.at(x, y - 1 + (y == 0)).alpha;
            bitmap.at(x, y) = p;
        }
}

TEST(WireframeAgainstPlain, EqualForEveryRaggednessAndDrawnBackwards) {
    Random r(310);
    const int count = test::amount(6000);
    int found = 0, refused = 0;
    for (int i = 0; i < count; ++i) {
        const int width = test::side(r), height = test::side(r);
        test::Bitmap bitmap(static_cast<int16_t>(width), static_cast<int16_t>(height));
        fillAlpha(r, bitmap, width, height);
        RK_LayerDef record = {};
        record.data = &bitmap.at(0, 0);
        record.rowbytes = (*bitmap.handle())->rowbytes;
        record.width = width;
        record.height = height;
        const GEO_Rect far = {INT16_MIN, INT16_MIN, INT16_MAX, INT16_MAX};
        const GEO_Rect asked = r.below(4) == 0 ? far : test::randomRect(r, width, height);
        const bool empty = std::max<int>(asked.left, 0) >= std::min<int>(asked.right, width) ||
                           std::max<int>(asked.top, 0) >= std::min<int>(asked.bottom, height);
        const GEO_Rect* const rect = r.below(3) == 0 ? nullptr : &asked;
        const bool corners = r.below(2) == 0 && (rect == nullptr || !empty);
        static const int32_t steps[] = {INT32_MIN, -1, 0, INT32_MAX, 32767};
        const int32_t step =
            r.below(8) == 0 ? steps[r.below(5)] : 1 + static_cast<int32_t>(r.below(r.below(2) == 0 ? 3 : 20));
        static const int32_t limits[] = {INT32_MAX, INT32_MIN, -1, 0, 3, 4, 5};
        const int32_t most = r.below(3) == 0 ? limits[r.below(7)] : static_cast<int32_t>(r.below(200));
        const uint32_t flags = corners ? 0x10 : r.next() & ~0x10u;

        std::vector<Point> expected;
        const bool fits = plain::outline(record, step, most, corners, rect, expected);
        RK_Wireframe frame;
        const std::string told = "step " + std::to_string(step) + ", most " + std::to_string(most) +
                                 (rect != nullptr ? ", " + test::show(*rect) : "") +
                                 (corners ? ", corners" : "");
        ASSERT_EQ(RK_GenerateWireframe(nullptr, bitmap.handle(), step, most, flags, rect, &frame),
                  fits ? 0 : 3)
            << told;
        RefHost::TakeReports();
        ASSERT_EQ(frame.flags, fits ? 1u : 0u) << told;
        ASSERT_EQ(frame.count, static_cast<int32_t>(expected.size())) << told;
        ASSERT_EQ(bitmap.locks(), 0);
        Dots dots;
        {
            const Drawing drawing(&dots);
            ASSERT_EQ(0, RK_DrawWireframe(&frame));
        }
        ASSERT_TRUE(dots.all_dots);
        ASSERT_EQ(dots.drawn.size(), expected.size()) << told;
        for (size_t k = 0; k < expected.size(); ++k) {
            const Point &e = expected[k], &g = dots.drawn[expected.size() - 1 - k];
            ASSERT_TRUE(g.h == e.h && g.v == e.v)
                << g.h << ", " << g.v << " for " << e.h << ", " << e.v << ": " << told;
        }
        ASSERT_EQ(0, RK_DisposeWireframe(&frame));
        found += expected.size() > 4;
        refused += !fits;
    }
    if (count < 1000) return;
    EXPECT_GT(found, count / 8);
    EXPECT_GT(refused, count / 100);
}

}  // namespace
