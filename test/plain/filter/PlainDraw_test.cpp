// Lines, outlines, debug text, brushes, alpha guessing and lazy tiles against their plain twins.
#include <gtest/gtest.h>

#include "RK/host/SEQ.h"
#include "RK/indep/composite/RK_Xfer.h"
#include "RK/indep/filter/RK_DebugPrint.h"
#include "RK/indep/filter/RK_GuessAlpha.h"
#include "RK/indep/filter/RK_LazyTiles.h"
#include "RK/indep/filter/RK_Lines.h"
#include "RK/indep/filter/RK_PaintSpot.h"
#include "RK/indep/filter/RK_Wireframe.h"
#include "RK/indep/filter/RKp_Font.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "refhost/RefHost.h"
#include "test/filter/Bitmap.h"
#include "test/plain/Worlds.h"
#include "test/plain/filter/PlainConvolve.h"
#include "test/plain/filter/PlainDraw.h"
#include "test/plain/filter/PlainGuess.h"
#include "test/plain/filter/PlainTiles.h"

namespace {

using test::Random;
using test::World;

// ---- Lines ----------------------------------------------------------------------------------------------

// Within a picture of such a side, about it, or far from it; often on a whole pixel or a half one.
double placeOf(Random& r, int side) {
    double place = (r.unit() * 3.0 - 1.0) * side;
    if (r.below(16) == 0) place *= 200.0;
    switch (r.below(4)) {
        case 0: return std::floor(place);
        case 1: return std::floor(place * 2) / 2;
        case 2: return std::floor(place * 65536) / 65536;
        default: return place;
    }
}

template <class P>
void drawLines(int full) {
    Random r(100 + sizeof(P));
    const int count = test::amount(full);
    for (int i = 0; i < count; ++i) {
        const World<P> before(r, test::side(r), test::side(r));
        World<P> expected(before), got(before);
        double start[2], end[2];
        for (int k = 0; k < 2; ++k) {
            const int side = k == 0 ? before.record.width : before.record.height;
            start[k] = placeOf(r, side);
            const uint32_t kind = r.below(8);
            end[k] = kind == 0 ? start[k] : kind == 1 ? start[k] + r.unit() : placeOf(r, side);
        }
        if (r.below(16) == 0) end[1] = start[1] + (end[0] - start[0]);
        const RK_PixelFloat colour = {r.unit(), r.unit() * 3.0f - 1.0f, r.unit(), r.unit()};
        plain::drawLine<P>(start, end, colour, expected.record);
        RK_WorldX<P> world(&got.record, false);
        ASSERT_EQ(0, RK_DrawLine(start, end, &colour, &world));
        ASSERT_EQ(test::difference(before, expected, got), "")
            << start[0] << ", " << start[1] << " to " << end[0] << ", " << end[1];
    }
}
TEST(LinesAgainstPlain, EqualAt8Bits) { drawLines<RK_Pixel8>(6000); }
TEST(LinesAgainstPlain, EqualAt16Bits) { drawLines<RK_Pixel16>(3000); }
TEST(LinesAgainstPlain, EqualAtFloat) { drawLines<RK_PixelFloat>(3000); }

// ---- Text -----------------------------------------------------------------------------------------------

void over(const RK_Pixel8& c, RK_Pixel8& d) {
    RKp_G_Xfer1_Opacity_table8[RK_Xfer_Over](&c, nullptr, 255, &d);
}
void over(const RK_Pixel16& c, RK_Pixel16& d) {
    RKp_G_Xfer1_Opacity_table16[RK_Xfer_Over](&c, nullptr, 32768, &d);
}
void over(const RK_PixelFloat& c, RK_PixelFloat& d) {
    RKp_G_Xfer1_Opacity_tableF[RK_Xfer_Over](&c, nullptr, 1.0f, &d);
}

template <class P>
void printMany(int full) {
    Random r(200 + sizeof(P));
    const int count = test::amount(full);
    for (int i = 0; i < count; ++i) {
        const World<P> before(r, 5 + static_cast<int>(r.below(80)), 9 + static_cast<int>(r.below(40)));
        World<P> expected(before), got(before);
        std::string text;
        for (uint32_t n = r.below(24); n > 0; --n) {
            const char control[] = {'\n', '\t', '\r'};
            text += r.below(5) == 0 ? control[r.below(3)] : static_cast<char>(1 + r.below(255));
        }
        const int x = static_cast<int>(r.below(100)) - 40, y = static_cast<int>(r.below(50)) - 20;
        const RK_PixelFloat colour = {r.unit(), r.unit() * 2.0f - 0.5f, r.unit(), r.unit()};
        const P pixel = plain::drawingColour<P>(colour);
        for (const plain::PlacedGlyph& g :
             plain::layOut(text, x, y, before.record.width, before.record.height))
            for (int row = 0; row < 10; ++row)
                for (int column = 0; column < 6; ++column)
                    if ((RKp_G_Font[size_t{g.code} * 10 + static_cast<size_t>(row)] & (0x80 >> column)) != 0)
                        over(pixel, plain::at<P>(expected.record, g.x + column, g.y + 10 - row));
        RK_WorldX<P> world(&got.record, false);
        ASSERT_EQ(0, RK_DebugPrint(&world, x, y, colour, "%s", text.c_str()));
        ASSERT_EQ(test::difference(before, expected, got), "") << x << ", " << y << ": " << text;
    }
}
TEST(DebugPrintAgainstPlain, EqualAt8Bits) { printMany<RK_Pixel8>(1500); }
TEST(DebugPrintAgainstPlain, EqualAt16Bits) { printMany<RK_Pixel16>(1000); }
TEST(DebugPrintAgainstPlain, EqualAtFloat) { printMany<RK_PixelFloat>(1000); }

// ---- Outlines -------------------------------------------------------------------------------------------

TEST(WireframeAgainstPlain, TheSamePointsInTheSameOrder) {
    Random r(300);
    const int count = test::amount(1500);
    for (int i = 0; i < count; ++i) {
        const int width = test::side(r), height = test::side(r);
        test::Bitmap bitmap(static_cast<int16_t>(width), static_cast<int16_t>(height));
        RK_LayerDef record = {};
        record.data = &bitmap.at(0, 0);
        record.rowbytes = (*bitmap.handle())->rowbytes;
        record.width = width;
        record.height = height;
        const uint32_t ragged = 1 + r.below(8);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                bitmap.at(x, y) =
                    r.below(ragged) == 0 || x == 0 ? test::pixel<RK_Pixel8>(r) : bitmap.at(x - 1, y);
        const GEO_Rect asked = test::randomRect(r, width, height);
        const bool empty = std::max<int>(asked.left, 0) >= std::min<int>(asked.right, width) ||
                           std::max<int>(asked.top, 0) >= std::min<int>(asked.bottom, height);
        const GEO_Rect* rect = r.below(2) == 0 || empty ? nullptr : &asked;
        const int step = static_cast<int>(r.below(9)) - 1, most = static_cast<int>(r.below(60)) - 1;
        const bool corners = r.below(2) == 0;

        std::vector<Point> expected;
        const bool fits = plain::outline(record, step, most, corners, rect, expected);
        RK_Wireframe frame;
        const RK_Long result = RK_GenerateWireframe(nullptr, bitmap.handle(), step, most,
                                                    corners ? RK_kWireframeCorners : 0, rect, &frame);
        ASSERT_EQ(fits ? 0 : 3, result);
        RefHost::TakeReports();
        ASSERT_EQ(static_cast<int32_t>(expected.size()), frame.count) << step << ", " << most;
        for (int32_t k = 0; k < frame.count; ++k) {
            Point got;
            ASSERT_EQ(0, SEQ_Get(frame.points, k, &got));
            const Point& e = expected[static_cast<size_t>(k)];
            ASSERT_TRUE(got.h == e.h && got.v == e.v)
                << got.h << ", " << got.v << " for " << e.h << ", " << e.v << " at step " << step;
        }
        ASSERT_EQ(0, RK_DisposeWireframe(&frame));
    }
}

// ---- Brushes --------------------------------------------------------------------------------------------

TEST(PaintSpotAgainstPlain, EqualForEveryKernelAndPlace) {
    Random r(400);
    const int count = test::amount(4000);
    for (int i = 0; i < count; ++i) {
        const World<RK_Pixel8> before(r, test::side(r), test::side(r));
        World<RK_Pixel8> expected(before), got(before);
        const uint32_t flags = (r.below(3) == 0 ? plain::kKernelRow : 0) |
                               (r.below(2) == 0 ? plain::kKernelVertical : 0) | (r.below(2) * 6);
        const int size = 1 + 2 * static_cast<int>(r.below(r.below(4) == 0 ? 24 : 5));
        std::vector<uint32_t> kernel(static_cast<size_t>(size * size));
        const uint32_t kind = r.below(4);
        for (uint32_t& k : kernel) k = kind == 0 ? r.next() : kind == 1 ? 255 * r.below(2) : r.below(256);
        const RK_Pixel8 colour = test::pixel<RK_Pixel8>(r);
        const int x = test::about(r, before.record.width), y = test::about(r, before.record.height);
        plain::paintSpot(x, y, flags, size, kernel.data(), colour, expected.record);
        ASSERT_EQ(0, RK_PaintSpot(nullptr, x, y, flags, size, kernel.data(), colour, &got.record));
        ASSERT_EQ(test::difference(before, expected, got), "")
            << "size " << size << " flags " << flags << " at " << x << ", " << y;
    }
}

// ---- Alpha guessing -------------------------------------------------------------------------------------

// Pictures as they come: clear pixels of few colours, visible ones laid over a matte or left straight.
RK_Pixel8 guessPixel(Random& r, const RK_Pixel8& matte, bool laid, uint32_t clear, bool stray) {
    RK_Pixel8 p = test::pixel<RK_Pixel8>(r);
    if (r.below(8) < clear) return {0, matte.red, matte.green, matte.blue};
    if (p.alpha == 0 && !stray) p.alpha = 1;
    if (!laid || p.alpha == 0) return p;
    const auto over_matte = [&](int c, int m) {
        return static_cast<uint8_t>((c * p.alpha + m * (255 - p.alpha)) / 255);
    };
    return {p.alpha, over_matte(p.red, matte.red), over_matte(p.green, matte.green),
            over_matte(p.blue, matte.blue)};
}

TEST(GuessAlphaAgainstPlain, TheSameKindAndMatte) {
    Random r(500);
    const int count = test::amount(4000);
    int kinds[3] = {};
    for (int i = 0; i < count; ++i) {
        World<RK_Pixel8> world(r, test::side(r), test::side(r));
        const RK_Pixel8 mattes[] = {{}, {0, 255, 255, 255}, test::pixel<RK_Pixel8>(r)};
        const RK_Pixel8 matte = mattes[r.below(3)];
        const bool laid = r.below(4) != 0, stray = r.below(4) == 0;
        const uint32_t clear = r.below(4) == 0 ? 8 * r.below(2) : 4;
        for (int y = 0; y < world.record.height; ++y)
            for (int x = 0; x < world.record.width; ++x)
                world.picture.at(x, y) = guessPixel(r, matte, laid, clear, stray && r.below(32) == 0);
        const plain::Guess expected = plain::guessAlpha(world.record);
        int32_t kind = -1;
        RK_Pixel8 found = {};
        ASSERT_EQ(0, RK_GuessAlpha(nullptr, &world.record, nullptr, &kind, &found));
        ASSERT_EQ(expected.kind, kind);
        ASSERT_TRUE(test::sameBytes(expected.matte, found));
        ++kinds[kind];
    }
    if (count < 1000) return;
    for (const int times : kinds) EXPECT_GT(times, count / 20);
}

// ---- Lazy tiles -----------------------------------------------------------------------------------------

struct Noting : RK_LazyOperator {
    Noting(int16_t width, int16_t height, std::vector<GEO_LRect>* calls)
        : extent_{width, height}, calls_(calls) {}
    GEO_Vector2T<int16_t> GetExtent() const override { return extent_; }

  protected:
    void DoItImp(const GEO_Rect& r) override { calls_->push_back({r.left, r.top, r.right, r.bottom}); }

  private:
    GEO_Vector2T<int16_t> extent_;
    std::vector<GEO_LRect>* calls_;
};

TEST(LazyTilesAgainstPlain, TheSameCallsInTheSameOrder) {
    Random r(600);
    const int count = test::amount(600);
    for (int i = 0; i < count; ++i) {
        const int width = static_cast<int>(r.below(120)), height = static_cast<int>(r.below(120));
        const auto tile = static_cast<int16_t>(1 + r.below(r.below(2) == 0 ? 8 : 140));
        std::vector<GEO_LRect> calls;
        boost::scoped_ptr<RK_LazyOperator> op(
            new Noting(static_cast<int16_t>(width), static_cast<int16_t>(height), &calls));
        RK_LazyTilesCondition tiles(tile, &op, true);
        plain::Tiles twin(tile, width, height);
        for (int k = 0; k < 12; ++k) {
            if (r.below(4) == 0) {
                twin.offset_x = test::about(r, width);
                twin.offset_y = test::about(r, height);
                tiles.SetOffset({static_cast<int16_t>(twin.offset_x), static_cast<int16_t>(twin.offset_y)});
            }
            const GEO_Rect rect = test::randomRect(r, width, height);
            calls.clear();
            std::vector<GEO_LRect> expected;
            if (r.below(3) == 0) {
                const bool condition = r.below(2) == 0;
                tiles.SetCondition(condition);
                tiles.ConditionalMakeValid(rect);
                expected = twin.makeValidUnder(condition, rect);
            } else {
                tiles.MakeValid(rect);
                expected = twin.makeValid(rect);
            }
            ASSERT_EQ(expected.size(), calls.size()) << test::show(rect);
            for (size_t n = 0; n < calls.size(); ++n)
                ASSERT_TRUE(test::sameBytes(expected[n], calls[n])) << n << " of " << test::show(rect);
        }
    }
}

}  // namespace
