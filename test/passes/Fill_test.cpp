#include "RK/indep/passes/RK_Fill.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "RK/indep/world/RK_WorldXT.h"
#include "RK/indep/world/RKp_ChannelConvert.h"
#include "test/Pixels.h"
#include "test/Reports.h"
#include "test/world/OddWorld.h"

namespace {

RK_Long fill(const RK_Pixel8* colour, const GEO_Rect* rect, RK_LayerDef* world) {
    return RK_Fill(nullptr, colour, rect, world);
}
RK_Long fill(const RK_Pixel16* colour, const GEO_Rect* rect, RK_LayerDef* world) {
    return RK_Fill16(nullptr, colour, rect, world);
}
RK_Long fill(const RK_PixelFloat* colour, const GEO_Rect* rect, RK_LayerDef* world) {
    return RK_FillFloat(nullptr, colour, rect, world);
}
template <class Colour>
std::string nameOf() {
    return sizeof(Colour) == 4 ? "RK_Fill" : sizeof(Colour) == 8 ? "RK_Fill16" : "RK_FillFloat";
}

// A colour's depth and a world's.
template <class C, class P>
struct Pair {
    using Colour = C;
    using Pixel = P;
};
template <class Pair>
class FillPair : public test::Tidy {};
using Pairs =
    testing::Types<Pair<RK_Pixel8, RK_Pixel8>, Pair<RK_Pixel8, RK_Pixel16>, Pair<RK_Pixel8, RK_PixelFloat>,
                   Pair<RK_Pixel16, RK_Pixel8>, Pair<RK_Pixel16, RK_Pixel16>, Pair<RK_Pixel16, RK_PixelFloat>,
                   Pair<RK_PixelFloat, RK_Pixel8>, Pair<RK_PixelFloat, RK_Pixel16>,
                   Pair<RK_PixelFloat, RK_PixelFloat>>;
TYPED_TEST_SUITE(FillPair, Pairs);
class Fill : public test::Tidy {};

// Edges in order, each cut to the world by itself.
bool covered(const GEO_Rect& r, int x, int y, int width, int height) {
    const auto within = [](int at, int a, int b, int limit) {
        return at >= std::clamp(std::min(a, b), 0, limit) && at < std::clamp(std::max(a, b), 0, limit);
    };
    return within(x, r.left, r.right, width) && within(y, r.top, r.bottom, height);
}

// Fills a random picture and looks at every pixel and every guard.
template <class P, class Colour>
void expectFill(const Colour* colour, const GEO_Rect* rect, const P& stored, int width, int height,
                int padding, bool upside_down = false) {
    test::Picture<P> picture(width, height, padding);
    picture.fillRandom(uint32_t(width * 31 + height));
    const test::Picture<P> before = picture;
    RK_LayerDef world = picture.record();
    world.extent = {1, 1, 2, 2};  // which no fill looks at
    if (upside_down) {
        world.data = picture.row(height - 1);
        world.rowbytes = -world.rowbytes;
    }
    ASSERT_EQ(fill(colour, rect, &world), 0);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int row = upside_down ? height - 1 - y : y;
            const bool in = rect == nullptr || covered(*rect, x, y, width, height);
            ASSERT_TRUE(test::sameBytes(picture.at(x, row), in ? stored : before.at(x, row)))
                << x << ", " << y;
        }
    EXPECT_TRUE(picture.guardsWhole());
}

const GEO_Rect kRects[] = {{0, 0, 9, 40},
                           {1, 2, 3, 5},
                           {3, 5, 1, 2},
                           {1, 5, 3, 2},
                           {3, 2, 1, 5},
                           {-5, -7, 4, 4},
                           {5, 30, 90, 400},
                           {2, 2, 2, 8},
                           {2, 8, 5, 8},
                           {0, -9, 9, -2},
                           {-9, 0, -2, 40},
                           {0, 40, 9, 50},
                           {9, 0, 12, 40},
                           {-32768, -32768, 32767, 32767},
                           {32767, 32767, -32768, -32768},
                           {32767, 32767, 32767, 32767},
                           {-32768, 0, -32768, 40},
                           {-1, -1, 1, 1}};

}  // namespace

// ---- The area, at every pair of depths ------------------------------------------------------------------

TYPED_TEST(FillPair, StoresTheConvertedColourInTheClippedRectangle) {
    using Colour = typename TypeParam::Colour;
    using P = typename TypeParam::Pixel;
    test::Random random(sizeof(Colour) * 100 + sizeof(P));
    for (const GEO_Rect& rect : kRects)
        for (const int padding : {0, 1, 3}) {
            const Colour colour = test::pixel<Colour>(random);
            P stored = RKp_ConvertPixel<P>(colour);
            if (stored.alpha == 0 && stored.red == 0 && stored.green == 0 && stored.blue == 0) stored = P{};
            expectFill<P>(&colour, &rect, stored, 40, 9, padding);
            expectFill<P>(&colour, &rect, stored, 40, 9, padding, true);
            expectFill<P, Colour>(nullptr, &rect, P{}, 40, 9, padding);
        }
}

TYPED_TEST(FillPair, ANullRectangleIsTheWholeWorldAtAnyWidth) {
    using Colour = typename TypeParam::Colour;
    using P = typename TypeParam::Pixel;
    test::Random random(3);
    // Lengths around whole blocks, short and long.
    std::vector<int> widths;
    for (int width = 1; width <= 40; ++width) widths.push_back(width);
    for (int step = 64; step <= 1024; step *= 2)
        for (const int near_by : {step - 1, step, step + 1}) widths.push_back(near_by);
    widths.push_back(5000);
    for (const int width : widths) {
        const Colour colour = test::pixel<Colour>(random);
        expectFill<P>(&colour, nullptr, RKp_ConvertPixel<P>(colour), width, 3, width % 3);
        expectFill<P, Colour>(nullptr, nullptr, P{}, width, 3, width % 3);
    }
}

TYPED_TEST(FillPair, RandomRectanglesNeverLeaveTheWorld) {
    using Colour = typename TypeParam::Colour;
    using P = typename TypeParam::Pixel;
    test::Random random(17);
    const auto edge = [&](int limit) {
        return static_cast<int16_t>(random.below(8) == 0 ? int(random.below(65536)) - 32768
                                                         : int(random.below(uint32_t(limit) + 9)) - 4);
    };
    for (int i = 0; i < 300; ++i) {
        const int width = 1 + int(random.below(30)), height = 1 + int(random.below(12));
        const GEO_Rect rect = {edge(height), edge(width), edge(height), edge(width)};
        const Colour colour = test::pixel<Colour>(random);
        expectFill<P>(&colour, &rect, RKp_ConvertPixel<P>(colour), width, height, int(random.below(3)));
    }
}

// ---- The colour -----------------------------------------------------------------------------------------

TEST_F(Fill, EightBitColoursWidenByTheExactDivisionAndTheDoubleProduct) {
    for (int c = 0; c < 256; ++c) {
        const RK_Pixel8 colour = {uint8_t(c), uint8_t(255 - c), uint8_t(c / 2), 1};
        const auto to16 = [](int v) { return uint16_t((v * 32768 + 128) / 255); };
        const auto toFloat = [](int v) { return static_cast<float>(v * 0.00392156862745098); };
        expectFill(&colour, nullptr, RK_Pixel16{to16(c), to16(255 - c), to16(c / 2), to16(1)}, 1, 1, 0);
        expectFill(&colour, nullptr, RK_PixelFloat{toFloat(c), toFloat(255 - c), toFloat(c / 2), toFloat(1)},
                   1, 1, 0);
    }
}

TEST_F(Fill, SixteenBitColoursNarrowByTheRoundedShift) {
    for (const int c : {0, 1, 64, 65, 128, 129, 16383, 16384, 16385, 32767, 32768}) {
        const RK_Pixel16 colour = {uint16_t(c), 32768, 0, 16384};
        expectFill(&colour, nullptr, RK_Pixel8{uint8_t((c * 255 + 16384) >> 15), 255, 0, 128}, 1, 1, 0);
        expectFill(&colour, nullptr, RK_PixelFloat{float(c) / 32768, 1.0f, 0.0f, 0.5f}, 1, 1, 0);
    }
}

TEST_F(Fill, FloatColoursAreClampedAndFloatAlphaIsNot) {
    const RK_PixelFloat twice = {2.0f, 2.0f, -1.0f, 0.5f};
    expectFill(&twice, nullptr, RK_Pixel16{0, 32768, 0, 16384}, 3, 2, 1);
    expectFill(&twice, nullptr, RK_Pixel8{uint8_t(510), 255, 0, 128}, 3, 2, 1);
    const RK_PixelFloat odd = {1.5f, 1.5f, std::numeric_limits<float>::quiet_NaN(), 1e30f};
    expectFill(&odd, nullptr, RK_Pixel8{127, 255, 0, 255}, 3, 2, 1);
    expectFill(&odd, nullptr, RK_Pixel16{49152, 32768, 0, 32768}, 3, 2, 1);
    expectFill(&odd, nullptr, odd, 3, 2, 1);
}

TEST_F(Fill, NegativeZerosAreStoredAsZeroAndOnlyAllTogether) {
    const RK_PixelFloat zeros = {-0.0f, -0.0f, 0.0f, -0.0f};
    expectFill(&zeros, nullptr, RK_PixelFloat{}, 5, 2, 1);
    const RK_PixelFloat mixed = {-0.0f, -0.0f, 0.0f, 1e-45f};
    expectFill(&mixed, nullptr, mixed, 5, 2, 1);
    const RK_PixelFloat nan = {0.0f, 0.0f, std::numeric_limits<float>::quiet_NaN(), 0.0f};
    expectFill(&nan, nullptr, nan, 5, 2, 1);
}

TEST_F(Fill, AColourMayLieInTheWorldItself) {
    test::Picture<RK_PixelFloat> picture(5, 3);
    picture.fillRandom(8);
    const RK_PixelFloat colour = picture.at(2, 1);
    RK_LayerDef world = picture.record();
    world.extent = {1, 1, 3, 4};
    EXPECT_EQ(RK_FillFloat(nullptr, &picture.at(2, 1), &world.extent, &world), 0);
    for (int y = 1; y < 3; ++y)
        for (int x = 1; x < 4; ++x) EXPECT_TRUE(test::sameBytes(picture.at(x, y), colour));
}

// ---- What is refused ------------------------------------------------------------------------------------

TYPED_TEST(FillPair, ANullWorldOrNullPixelsAreABadParameter) {
    using Colour = typename TypeParam::Colour;
    using P = typename TypeParam::Pixel;
    const Colour colour = {};
    EXPECT_EQ(fill(&colour, nullptr, nullptr), 3);
    EXPECT_TRUE(test::onlyBadParam(13));
    test::Picture<P> picture(3, 3);
    RK_LayerDef world = picture.record();
    world.data = nullptr;
    const GEO_Rect rect = {0, 0, 1, 1}, empty = {0, 0, 0, 0};
    for (const GEO_Rect* r : {&rect, &empty, static_cast<const GEO_Rect*>(nullptr)}) {
        EXPECT_EQ(fill(&colour, r, &world), 3);
        EXPECT_TRUE(test::onlyBadParam(13));
    }
    const Colour* none = nullptr;
    EXPECT_EQ(fill(none, nullptr, &world), 3);
    EXPECT_TRUE(test::onlyBadParam(13));
}

TYPED_TEST(FillPair, AnObjectOfOddDepthIsRefusedBeforeItsPixelsAreLookedFor) {
    using Colour = typename TypeParam::Colour;
    const Colour colour = {1, 1, 1, 1};
    test::Picture<RK_Pixel8> picture(3, 3);
    for (const bool has_pixels : {true, false}) {
        test::OddWorld odd(24);
        odd.record.data = has_pixels ? picture.row(0) : nullptr;
        odd.record.width = odd.record.height = 3;
        odd.record.rowbytes = 16;
        EXPECT_EQ(fill(&colour, nullptr, &odd.record), 3);
        EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in " + nameOf<Colour>()));
    }
    EXPECT_TRUE(picture == test::Picture<RK_Pixel8>(3, 3));
}

TEST_F(Fill, AStandAloneRecordOfUnknownFormatIsFilledAs8Bits) {
    test::Picture<RK_Pixel8> picture(3, 2), expected(3, 2);
    const RK_Pixel8 colour = {9, 8, 7, 6};
    expected.fill(colour);
    RK_LayerDef world = picture.record();
    world.world_flags = 0x05000000u;
    EXPECT_EQ(RK_Fill(nullptr, &colour, nullptr, &world), 0);
    EXPECT_TRUE(test::onlyVerification("Unknown pixel format"));
    EXPECT_TRUE(picture == expected);
}

TYPED_TEST(FillPair, SizesThatHoldNoPixelWriteNothing) {
    using Colour = typename TypeParam::Colour;
    using P = typename TypeParam::Pixel;
    test::Picture<P> picture(3, 3);
    const test::Picture<P> before = picture;
    const Colour colour = {1, 1, 1, 1};
    const GEO_Rect all = {-32768, -32768, 32767, 32767};
    const std::pair<int32_t, int32_t> sizes[] = {
        {0, 3}, {3, 0}, {-1, 3}, {3, -1}, {INT32_MIN, INT32_MIN}, {0, 0}, {-5, INT32_MAX}};
    for (const auto& [width, height] : sizes) {
        RK_LayerDef world = picture.record();
        world.width = width;
        world.height = height;
        EXPECT_EQ(fill(&colour, nullptr, &world), 0);
        EXPECT_EQ(fill(&colour, &all, &world), 0);
        const Colour* none = nullptr;
        EXPECT_EQ(fill(none, &all, &world), 0);
    }
    EXPECT_TRUE(picture == before);
}

TYPED_TEST(FillPair, RowsWithoutLengthAreFilledOneOverTheOther) {
    using Colour = typename TypeParam::Colour;
    using P = typename TypeParam::Pixel;
    test::Picture<P> picture(3, 2), expected(3, 2);
    const Colour colour = {1, 1, 1, 1};
    for (int x = 0; x < 3; ++x) expected.at(x, 0) = RKp_ConvertPixel<P>(colour);
    RK_LayerDef world = picture.record();
    world.rowbytes = 0;
    world.height = 100;
    EXPECT_EQ(fill(&colour, nullptr, &world), 0);
    EXPECT_TRUE(picture == expected);
}

TEST_F(Fill, NothingIsAllocated) {
    test::Picture<RK_Pixel16> picture(30, 20);
    RK_LayerDef world = picture.record();
    const RK_PixelFloat colour = {1, 0.5f, 0.25f, 0};
    RefHost::FailAllocation(1);
    EXPECT_EQ(RK_FillFloat(nullptr, &colour, nullptr, &world), 0);
    EXPECT_EQ(RefHost::AllocationsSince(), 0);
}
