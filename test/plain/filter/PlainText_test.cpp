// Debug text against its twin: every glyph's shape is taken from the glyph drawn by itself.
#include <gtest/gtest.h>

#include <array>

#include "RK/indep/filter/RK_DebugPrint.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "test/plain/PlainBodies.h"
#include "test/plain/Worlds.h"
#include "test/plain/filter/PlainDraw.h"

namespace {

using test::Random;
using test::World;

// Rows from the bottom up, the top bit leftmost.
using Glyph = std::array<uint8_t, 10>;

Glyph glyphOf(int code) {
    test::Picture<RK_Pixel8> picture(20, 24);
    RK_LayerDef record = picture.record();
    RK_WorldX<RK_Pixel8> world(&record, false);
    const char text[] = {static_cast<char>(code), 0};
    EXPECT_EQ(0, RK_DebugPrint(&world, 4, 6, {1, 1, 1, 1}, "%s", text));
    Glyph glyph{};
    for (int y = 0; y < 24; ++y)
        for (int x = 0; x < 20; ++x) {
            if (picture.at(x, y).alpha == 0) continue;
            const int row = 16 - y, column = x - 4;
            EXPECT_TRUE(row >= 0 && row < 10 && column >= 0 && column < 6) << "code " << code;
            if (row >= 0 && row < 10) glyph[static_cast<size_t>(row)] |= static_cast<uint8_t>(0x80 >> column);
        }
    return glyph;
}
const std::array<Glyph, 128>& font() {
    static const std::array<Glyph, 128> glyphs = [] {
        std::array<Glyph, 128> all{};
        for (int code = 1; code < 128; ++code)
            if (code != '\n' && code != '\t' && code != '\r') all[static_cast<size_t>(code)] = glyphOf(code);
        return all;
    }();
    return glyphs;
}

TEST(DebugPrintAgainstPlain, KnownGlyphsStandUpright) {
    EXPECT_EQ(font()['A'], (Glyph{0x00, 0x00, 0x44, 0x44, 0x7C, 0x44, 0x44, 0x28, 0x10, 0x00}));
    EXPECT_EQ(font()['1'], (Glyph{0x00, 0x00, 0x7C, 0x10, 0x10, 0x10, 0x50, 0x30, 0x10, 0x00}));
    EXPECT_EQ(font()[1], (Glyph{0x00, 0x00, 0x10, 0x38, 0x38, 0x7C, 0x38, 0x38, 0x10, 0x00}));
    EXPECT_EQ(font()[' '], Glyph{});
}

std::string textOf(Random& r) {
    std::string text;
    const uint32_t kind = r.below(4), length = kind == 0 ? 900 + r.below(400) : r.below(60);
    for (uint32_t n = 0; n < length; ++n) {
        const uint32_t control = r.below(kind == 1 ? 4 : 24);
        if (control < 3)
            text += "\n\t\r"[control];
        else
            text += static_cast<char>(kind == 2 ? 1 + r.below(255) : 32 + r.below(95));
    }
    return text;
}
// About a world, or so that the end of a long text comes to lie in it, or at the ends of what a place can be.
int32_t penOf(Random& r, int side, int text) {
    switch (r.below(10)) {
        case 0: return INT32_MAX - static_cast<int32_t>(r.below(40));
        case 1: return INT32_MIN + static_cast<int32_t>(r.below(40));
        case 2:
        case 3: return -static_cast<int32_t>(r.below(static_cast<uint32_t>(text) + 1));
        default: return test::about(r, side);
    }
}

template <class P>
void print(int full) {
    using D = typename plain::DepthOf<P>::D;
    Random r(210 + sizeof(P));
    test::GuardedRows pages;
    const int count = test::amount(full);
    int drawn = 0;
    for (int i = 0; i < count; ++i) {
        const World<P> before(r, 5 + static_cast<int>(r.below(90)), 9 + static_cast<int>(r.below(50)));
        World<P> expected(before), got(before);
        test::guardSome(r, pages, got);
        const std::string text = textOf(r);
        const int lines = 1 + static_cast<int>(std::count(text.begin(), text.end(), '\n'));
        const int32_t x = penOf(r, before.record.width, 40), y = penOf(r, before.record.height, lines * 10);
        // Colours are not held to their range; alphas are within it.
        const RK_PixelFloat colour = {test::alphaChannel(r, 0.0f), r.unit() * 2.0f - 0.5f,
                                      test::channel(r, 0.0f), r.unit()};
        const plain::Wide<D> source = plain::load<D>(plain::drawingColour<P>(colour));
        for (const plain::PlacedGlyph& g :
             plain::layOut(text, x, y, before.record.width, before.record.height))
            for (int row = 0; row < 10; ++row)
                for (int column = 0; column < 6; ++column) {
                    if ((font()[g.code][static_cast<size_t>(row)] & (0x80 >> column)) == 0) continue;
                    P& p = plain::at<P>(expected.record, g.x + column, g.y + 10 - row);
                    plain::Wide<D> d = plain::load<D>(p);
                    plain::over<D>(source, d);
                    p = plain::store<D>(d);
                    ++drawn;
                }
        RK_WorldX<P> world(&got.record, false);
        ASSERT_EQ(0, RK_DebugPrint(&world, x, y, colour, "%s", text.c_str()));
        ASSERT_EQ(test::difference(before, expected, got), "") << x << ", " << y << ": " << text;
    }
    if (count < 1000) return;
    EXPECT_GT(drawn, count);
}
TEST(DebugPrintAgainstPlain, LongAndFarTextsAreEqualAt8Bits) { print<RK_Pixel8>(4000); }
TEST(DebugPrintAgainstPlain, LongAndFarTextsAreEqualAt16Bits) { print<RK_Pixel16>(2000); }
TEST(DebugPrintAgainstPlain, LongAndFarTextsAreEqualAtFloat) { print<RK_PixelFloat>(2000); }

}  // namespace
