#include "RK/indep/filter/RK_DebugPrint.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "RK/indep/composite/RK_Xfer.h"
#include "RK/indep/filter/RKp_Font.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "test/Pixels.h"
#include "test/Reports.h"
#include "test/world/OddWorld.h"

namespace {

constexpr uint32_t kSite = 17;
const RK_PixelFloat kWhite = {1, 1, 1, 1};

// What a text leaves of a clear picture: "#" and ".", a row a line.
using Rows = std::vector<std::string>;
class Canvas {
  public:
    Canvas(int width, int height)
        : picture(width, height), record_(picture.record()), world(&record_, false) {}
    Rows rows() const {
        EXPECT_TRUE(picture.guardsWhole());
        Rows rows;
        for (int y = 0; y < picture.height(); ++y) {
            rows.emplace_back();
            for (int x = 0; x < picture.width(); ++x) rows.back() += picture.at(x, y).alpha != 0 ? '#' : '.';
        }
        return rows;
    }
    // The top left corners of the cells that hold an "A".
    std::vector<std::pair<int, int>> letters() const {
        const Rows all = rows();
        std::vector<std::pair<int, int>> found;
        for (int y = 0; y + 10 <= picture.height(); ++y) {
            for (int x = 0; x + 6 <= picture.width(); ++x) {
                bool same = true;
                for (int v = 0; v < 10; ++v)
                    same = same && all[size_t(y + v)].compare(size_t(x), 6, kLetter[v]) == 0;
                if (same) found.emplace_back(x, y);
            }
        }
        return found;
    }
    static constexpr const char* kLetter[10] = {"......", "...#..", "..#.#.", ".#...#", ".#...#",
                                                ".#####", ".#...#", ".#...#", "......", "......"};

    test::Picture<RK_Pixel8> picture;

  private:
    RK_LayerDef record_;

  public:
    RK_WorldX<RK_Pixel8> world;
};
using Places = std::vector<std::pair<int, int>>;

// Where the letters of a text land on a large picture.
Places printed(int32_t x, int32_t y, const std::string& text) {
    Canvas canvas(200, 60);
    EXPECT_EQ(0, RK_DebugPrint(&canvas.world, x, y, kWhite, "%s", text.c_str()));
    return canvas.letters();
}

class DebugPrint : public test::Tidy {};

TEST_F(DebugPrint, TheSampleGlyphsAreThese) {
    const auto glyph = [](size_t code) {
        return std::vector<int>(&RKp_G_Font[code * 10], &RKp_G_Font[code * 10] + 10);
    };
    EXPECT_EQ((std::vector<int>{0, 0, 0x44, 0x44, 0x7C, 0x44, 0x44, 0x28, 0x10, 0}), glyph('A'));
    EXPECT_EQ((std::vector<int>{0, 0, 0x7C, 0x10, 0x10, 0x10, 0x50, 0x30, 0x10, 0}), glyph('1'));
    EXPECT_EQ((std::vector<int>{0, 0, 0x10, 0x38, 0x38, 0x7C, 0x38, 0x38, 0x10, 0}), glyph(1));
    EXPECT_EQ(std::vector<int>(10, 0), glyph(' '));
}

TEST_F(DebugPrint, EveryGlyphIsDrawnAndUnlikeTheOthers) {
    for (size_t a = 0; a < RKp_kGlyphCount; ++a) {
        bool blank = true;
        for (size_t row = 0; row < 10; ++row) {
            blank = blank && RKp_G_Font[a * 10 + row] == 0;
            EXPECT_EQ(0, RKp_G_Font[a * 10 + row] & 3) << a;
        }
        EXPECT_EQ(a == ' ', blank) << a;
        for (size_t b = 0; b < a; ++b)
            EXPECT_NE(0, std::memcmp(&RKp_G_Font[a * 10], &RKp_G_Font[b * 10], 10)) << a << " and " << b;
        // Letters keep off the left column and the top row, so that they never touch.
        for (size_t row = 0; a > ' ' && row < 10; ++row) EXPECT_EQ(0, RKp_G_Font[a * 10 + row] & 0x80) << a;
        if (a > ' ') {
            EXPECT_EQ(0, RKp_G_Font[a * 10 + 9]) << a;
        }
    }
}

TEST_F(DebugPrint, TheFirstByteOfAGlyphLandsTenRowsBelowThePen) {
    Canvas canvas(8, 13);
    ASSERT_EQ(0, RK_DebugPrint(&canvas.world, 1, 2, kWhite, "A"));
    Rows wanted(13, "........");
    for (size_t v = 0; v < 10; ++v) wanted[v + 3] = "." + std::string(Canvas::kLetter[v]) + ".";
    EXPECT_EQ(wanted, canvas.rows());
}

TEST_F(DebugPrint, ThePenMovesSixColumnsAndTenRows) {
    EXPECT_EQ((Places{{5, 8}, {11, 8}, {17, 8}}), printed(5, 7, "AAA"));
    EXPECT_EQ((Places{{5, 8}, {17, 8}}), printed(5, 7, "A A"));
    EXPECT_EQ((Places{{5, 8}, {5, 18}, {11, 18}, {5, 38}}), printed(5, 7, "A\nAA\n\nA"));
    EXPECT_EQ((Places{{5, 8}, {11, 8}}), printed(5, 7, "A\rA"));
}

TEST_F(DebugPrint, ATabGoesToOneOfFourColumns) {
    EXPECT_EQ((Places{{25, 8}}), printed(5, 7, "\tA"));
    EXPECT_EQ((Places{{5, 8}, {27, 8}}), printed(5, 7, "A\tA"));  // from column 11
    EXPECT_EQ((Places{{26, 8}}), printed(102, 7, "\tA"));         // back
    EXPECT_EQ((Places{{21, 8}}), printed(-7, 7, "\tA"));          // remainders have the sign of the column
    EXPECT_EQ((Places{{5, 8}, {25, 18}}), printed(5, 7, "A\n\tA"));
}

TEST_F(DebugPrint, CodesAboveTheTableAreSkippedAndTheLowOnesAreSymbols) {
    EXPECT_EQ((Places{{5, 8}, {11, 8}}), printed(5, 7,
                                                 "A\x80\xC3\xFF"
                                                 "A"));
    EXPECT_EQ((Places{{5, 8}, {17, 8}}), printed(5, 7,
                                                 "A\x01"
                                                 "A"));
    EXPECT_EQ((Places{{5, 8}, {17, 8}}), printed(5, 7,
                                                 "A\x7F"
                                                 "A"));
    Canvas canvas(8, 12);
    ASSERT_EQ(0, RK_DebugPrint(&canvas.world, 0, 0, kWhite, "\x01"));
    EXPECT_EQ("..###...", canvas.rows()[3]);
}

TEST_F(DebugPrint, AGlyphWithoutRoomIsSkippedAndThePenAdvancesAllTheSame) {
    EXPECT_EQ((Places{{3, 1}, {9, 1}}), printed(-9, 0, "AAAA"));  // text enters from the left
    EXPECT_EQ((Places{{0, 1}}), printed(-6, 0, "AA"));
    EXPECT_EQ(Places{}, printed(0, -1, "A"));
    EXPECT_EQ((Places{{0, 5}}), printed(0, -6, "A\nA"));
    // One column and one row more than the cell.
    for (const auto& [width, height, fits] : {std::tuple{7, 11, true}, {6, 11, false}, {7, 10, false}}) {
        Canvas canvas(width, height);
        EXPECT_EQ(0, RK_DebugPrint(&canvas.world, 0, 0, kWhite, "A"));
        EXPECT_EQ(fits ? 1u : 0u, canvas.letters().size());
    }
    for (const int32_t far : {INT32_MIN, INT32_MAX - 3, INT32_MAX}) {
        EXPECT_EQ(Places{}, printed(far, 0, "AAAA\nA"));
        EXPECT_EQ(Places{}, printed(0, far, "AAAA\n\nA"));
    }
}

TEST_F(DebugPrint, TheTextIsFormattedAndCutTo1023Characters) {
    Canvas canvas(200, 60);
    EXPECT_EQ(0, RK_DebugPrint(&canvas.world, 0, 0, kWhite, "%c%4.1f%s", 'A', 2.25, "A"));
    EXPECT_EQ((Places{{0, 1}, {30, 1}}), canvas.letters());
    const std::string many(1022, ' ');
    EXPECT_EQ((Places{{0, 1}}), printed(-6 * 1022, 0, many + "A"));
    EXPECT_EQ(Places{}, printed(-6 * 1023, 0, many + " A"));
    EXPECT_EQ(Places{}, printed(0, 0, ""));
}

template <class P>
P middleOf(const RK_PixelFloat& colour, const P& below) {
    test::Picture<P> picture(8, 12);
    picture.fill(below);
    const RK_LayerDef record = picture.record();
    RK_WorldX<P> world(&record, false);
    EXPECT_EQ(0, RK_DebugPrint(&world, 0, 0, colour, "A"));
    EXPECT_TRUE(picture.guardsWhole());
    EXPECT_TRUE(test::sameBytes(below, picture.at(3, 4)));  // within the letter
    return picture.at(3, 6);
}

TEST_F(DebugPrint, TheColourIsLaidOverWhatIsThere) {
    const RK_PixelFloat colour = {0.5f, 1.0f, 0.25f, 0.0f};
    RK_Pixel8 below8 = {200, 10, 100, 250}, out8 = below8;
    const RK_Pixel8 colour8 = {128, 255, 64, 0};
    RKp_G_Xfer1_Opacity_table8[RK_Xfer_Over](&colour8, nullptr, 255, &out8);
    EXPECT_TRUE(test::sameBytes(out8, middleOf(colour, below8)));
    RK_Pixel16 below16 = {20000, 10, 100, 30000}, out16 = below16;
    const RK_Pixel16 colour16 = {16384, 32768, 8192, 0};
    RKp_G_Xfer1_Opacity_table16[RK_Xfer_Over](&colour16, nullptr, 32768, &out16);
    EXPECT_TRUE(test::sameBytes(out16, middleOf(colour, below16)));
    RK_PixelFloat below = {0.75f, 0.1f, 2.0f, -1.0f}, out = below;
    RKp_G_Xfer1_Opacity_tableF[RK_Xfer_Over](&colour, nullptr, 1.0f, &out);
    EXPECT_TRUE(test::sameBytes(out, middleOf(colour, below)));
}

TEST_F(DebugPrint, NothingIsDrawnWithoutAWorldOrAFormat) {
    Canvas canvas(20, 20);
    const char* none = nullptr;
    EXPECT_EQ(3, RK_DebugPrint(nullptr, 0, 0, kWhite, "A"));
    EXPECT_TRUE(test::onlyBadParam(kSite));
    EXPECT_EQ(3, RK_DebugPrint(&canvas.world, 0, 0, kWhite, none, 1));
    EXPECT_TRUE(test::onlyBadParam(kSite));
    canvas.world.record.data = nullptr;
    EXPECT_EQ(3, RK_DebugPrint(&canvas.world, 0, 0, kWhite, "A"));
    EXPECT_TRUE(test::onlyBadParam(kSite));
    test::OddWorld odd(24);
    odd.record.data = canvas.picture.row(0);
    EXPECT_EQ(3, RK_DebugPrint(&odd, 0, 0, kWhite, "A"));
    EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in##CONDITIONNAME"));
    EXPECT_EQ(Places{}, canvas.letters());
}

TEST_F(DebugPrint, MemoryThatFailsDoesNotMatter) {
    RefHost::FailAllocation(1);
    EXPECT_EQ((Places{{5, 8}, {11, 8}, {5, 18}}), printed(5, 7, "AA\nA"));
    EXPECT_EQ(0, RefHost::AllocationsSince());
}

}  // namespace
