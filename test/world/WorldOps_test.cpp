// The pixel operations of world objects, at every depth.
#include <memory>
#include <vector>

#include "RK/indep/passes/RK_Premul.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "RK/indep/world/RKp_ChannelConvert.h"
#include "test/Pixels.h"
#include "test/Reports.h"

namespace {

template <class P>
class WorldOps : public test::Tidy {};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(WorldOps, Depths);
class WorldOperation : public test::Tidy {};

// Rectangles inside, across every edge, around, outside, empty and reversed, for a world of about 7 by 5.
const GEO_Rect kRects[] = {{0, 0, 5, 7},
                           {1, 2, 3, 5},
                           {-3, -2, 2, 3},
                           {3, 5, 9, 9},
                           {-9, -9, 20, 20},
                           {2, 2, 2, 5},
                           {2, 5, 4, 5},
                           {4, 2, 2, 5},
                           {2, 5, 4, 2},
                           {-9, 0, -1, 7},
                           {0, -9, 5, -1},
                           {6, 0, 9, 7},
                           {0, 8, 5, 9},
                           {0, 0, 5, 6},
                           {0, 1, 5, 7},
                           {-32768, -32768, 32767, 32767},
                           {5, 0, 6, 7},
                           {0, 7, 5, 8},
                           {32767, 32767, -32768, -32768},
                           {4, 0, 5, 7}};

template <class P>
bool inside(const GEO_Rect& r, int x, int y) {
    return x >= r.left && x < r.right && y >= r.top && y < r.bottom;
}

// Runs operation on a wrapped random picture and expects pixel(x, y, before) everywhere and whole guards.
template <class P, class Operation, class Expected>
void expectOperation(Operation&& operation, Expected&& expected, int padding = 2) {
    test::Picture<P> picture(7, 5, padding);
    picture.fillRandom(11);
    const test::Picture<P> before = picture;
    RK_LayerDef plain = picture.record();
    plain.extent = {1, 1, 2, 2};  // which no operation looks at
    RK_WorldX<P> world(&plain, false);
    operation(world);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 7; ++x) {
            const P want = expected(x, y, before.at(x, y));
            ASSERT_TRUE(test::sameBytes(picture.at(x, y), want)) << x << ", " << y;
        }
    EXPECT_TRUE(picture.guardsWhole());
}

}  // namespace

// ---- Clear ----------------------------------------------------------------------------------------------

TYPED_TEST(WorldOps, ClearZeroesTheClippedRectangle) {
    using P = TypeParam;
    for (const GEO_Rect& rect : kRects)
        expectOperation<P>([&](RK_World& world) { world.Clear(&rect); },
                           [&](int x, int y, P was) { return inside<P>(rect, x, y) ? P{} : was; });
    expectOperation<P>([](RK_World& world) { world.Clear(nullptr); }, [](int, int, P) { return P{}; });
    expectOperation<P>([](RK_World& world) { world.Clear(nullptr); }, [](int, int, P) { return P{}; }, 0);
}

TYPED_TEST(WorldOps, AClearWhoseRowsSpanRowbytesIsAsLongAsTheWholeWorld) {
    using P = TypeParam;
    test::Picture<P> picture(4, 9, 0);
    P grey;
    std::memset(&grey, 0x3C, sizeof grey);
    picture.fill(grey);
    RK_LayerDef plain = picture.record();
    plain.height = 4;  // the world is the first 4 of 9 rows
    RK_WorldX<P> world(&plain, false);
    const GEO_Rect first_row = {0, 0, 1, 4};
    world.Clear(&first_row);
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 4; ++x)
            ASSERT_TRUE(test::sameBytes(picture.at(x, y), y < 4 ? P{} : grey))
                << "the row asked for and all below it";
    picture.fill(grey);
    const GEO_Rect last_row = {3, 0, 4, 4};
    world.Clear(&last_row);
    for (int y = 0; y < 9; ++y)
        ASSERT_TRUE(test::sameBytes(picture.at(0, y), y >= 3 && y < 7 ? P{} : grey))
            << "four rows from the third on";
    EXPECT_TRUE(picture.guardsWhole());
}

TYPED_TEST(WorldOps, ClearExceptRectZeroesTheRest) {
    using P = TypeParam;
    for (const int padding : {0, 2})
        for (const GEO_Rect& rect : kRects)
            expectOperation<P>([&](RK_World& world) { world.ClearExceptRect(rect); },
                               [&](int x, int y, P was) { return inside<P>(rect, x, y) ? was : P{}; },
                               padding);
}

// ---- Fill -----------------------------------------------------------------------------------------------

TYPED_TEST(WorldOps, FillStoresTheConvertedColour) {
    using P = TypeParam;
    const RK_PixelFloat colours[] = {{1.0f, 0.5f, 0.25f, 0.75f}, {0.1f, 1.5f, -0.5f, 0.3f}, {0, 0, 0, 0}};
    for (const RK_PixelFloat& colour : colours)
        for (const GEO_Rect& rect : kRects) {
            const P want = RKp_ConvertPixel<P>(colour);
            expectOperation<P>([&](RK_World& world) { world.Fill(colour, &rect); },
                               [&](int x, int y, P was) { return inside<P>(rect, x, y) ? want : was; });
        }
    const RK_Pixel16 deep = {32768, 16384, 129, 1};
    expectOperation<P>([&](RK_World& world) { world.Fill(deep, nullptr); },
                       [&](int, int, P) { return RKp_ConvertPixel<P>(deep); });
    expectOperation<P>([&](RK_World& world) { world.Fill(colours[0], nullptr); },
                       [&](int, int, P) { return RKp_ConvertPixel<P>(colours[0]); }, 0);
}

// ---- Alpha ----------------------------------------------------------------------------------------------

TYPED_TEST(WorldOps, FillAlphaStoresFullAlphaInTheWholeWorld) {
    using P = TypeParam;
    expectOperation<P>(
        [](RK_World& world) { world.FillAlpha(); },
        [](int, int, P was) {
            was.alpha = static_cast<decltype(P::alpha)>(sizeof(P) == 4 ? 255 : sizeof(P) == 8 ? 32768 : 1);
            return was;
        });
}

TYPED_TEST(WorldOps, InvertAlphaStoresWhatIsMissingFromFull) {
    using P = TypeParam;
    expectOperation<P>([](RK_World& world) { world.InvertAlpha(); },
                       [](int, int, P was) {
                           if constexpr (sizeof(P) == 4) was.alpha = uint8_t(was.alpha ^ 0xFF);
                           if constexpr (sizeof(P) == 8) was.alpha = uint16_t(32768 - was.alpha);
                           if constexpr (sizeof(P) == 16) was.alpha = 1.0f - was.alpha;
                           return was;
                       });
}

TYPED_TEST(WorldOps, InvertAlphaTwiceRestoresIntegerAlpha) {
    using P = TypeParam;
    if (sizeof(P) == 16) return;
    expectOperation<P>([](RK_World& world) { world.InvertAlpha(), world.InvertAlpha(); },
                       [](int, int, P was) { return was; });
}

TEST_F(WorldOperation, InvertAlphaWrapsA16BitAlphaAboveFull) {
    RK_Pixel16 pixel = {40000, 1, 2, 3};
    std::unique_ptr<RK_World>(RK_World::NewReference(&pixel, 1, 1, 16, 8))->InvertAlpha();
    EXPECT_EQ(pixel.alpha, uint16_t(32768 - 40000));
}

// ---- Premultiplication ----------------------------------------------------------------------------------

TYPED_TEST(WorldOps, PremultiplyAndUnmultiplyAreThePassOnTheWorld) {
    using P = TypeParam;
    if (sizeof(P) == 16) return;
    for (const RK_Long forward : {1, 0}) {
        test::Picture<P> picture(7, 5, 2), expected(7, 5, 2);
        picture.fillRandom(3);
        expected = picture;
        RK_LayerDef plain = picture.record(), other = expected.record();
        RK_WorldX<P> world(&plain, false);
        if (forward)
            world.Premultiply();
        else
            world.Unmultiply();
        ASSERT_EQ(RK_Premul(nullptr, forward, &other), 0);
        EXPECT_TRUE(picture == expected);
        picture.fillRandom(3);
        EXPECT_TRUE(picture != expected) << "the pass did something";
    }
}

TEST_F(WorldOperation, ColoursComeDownFrom16BitsForAnEightBitWorld) {
    const RK_Pixel16 colour = {0, 32768, 16384, 100};
    const RK_Pixel8 colour8 = {0, 255, 128, 1};
    for (const RK_Long forward : {1, 0}) {
        test::Picture<RK_Pixel8> picture(7, 5, 2), expected(7, 5, 2);
        picture.fillRandom(3);
        expected = picture;
        RK_LayerDef plain = picture.record(), other = expected.record();
        RK_WorldX<RK_Pixel8> world(&plain, false);
        forward ? world.PremulColor(colour) : world.UnmulColor(colour);
        ASSERT_EQ(RK_PremulColor(nullptr, &other, &colour8, forward, &other), 0);
        EXPECT_TRUE(picture == expected);
        picture.fillRandom(3);
        EXPECT_TRUE(picture != expected) << "the pass did something";
    }
}

TEST_F(WorldOperation, ColoursStayFor16BitWorlds) {
    const RK_Pixel16 colour = {0, 32768, 16384, 100};
    for (const RK_Long forward : {1, 0}) {
        test::Picture<RK_Pixel16> picture(7, 5, 2), expected(7, 5, 2);
        picture.fillRandom(3);
        expected = picture;
        RK_LayerDef plain = picture.record(), other = expected.record();
        RK_WorldX<RK_Pixel16> world(&plain, false);
        forward ? world.PremulColor(colour) : world.UnmulColor(colour);
        ASSERT_EQ(RK_PremulColor16(nullptr, &other, &colour, forward, &other), 0);
        EXPECT_TRUE(picture == expected);
        picture.fillRandom(3);
        EXPECT_TRUE(picture != expected) << "the pass did something";
    }
}

TEST_F(WorldOperation, AFloatWorldThrows3FromAllFourAndStaysAsItIs) {
    expectOperation<RK_PixelFloat>(
        [](RK_World& world) {
            EXPECT_EQ(test::thrownBy([&] { world.Premultiply(); }), 3);
            EXPECT_EQ(test::thrownBy([&] { world.Unmultiply(); }), 3);
            EXPECT_EQ(test::thrownBy([&] { world.PremulColor({1, 2, 3, 4}); }), 3);
            EXPECT_EQ(test::thrownBy([&] { world.UnmulColor({1, 2, 3, 4}); }), 3);
        },
        [](int, int, RK_PixelFloat was) { return was; });
}

// ---- CopyRect -------------------------------------------------------------------------------------------

namespace {

// The copy told pixel by pixel.
template <class P>
P copied(const test::Picture<P>& from, const GEO_Rect& r, int dest_h, int dest_v, int x, int y, P was) {
    const int sx = x - dest_h + r.left, sy = y - dest_v + r.top;
    const bool there = inside<P>(r, sx, sy) && sx >= 0 && sy >= 0 && sx < from.width() && sy < from.height();
    return there ? from.at(sx, sy) : was;
}

}  // namespace

TYPED_TEST(WorldOps, CopyRectCopiesWhatLiesInBothWorlds) {
    using P = TypeParam;
    test::Picture<P> source(9, 4, 3);
    source.fillRandom(5);
    RK_LayerDef record = source.record();
    const RK_WorldX<P> from(&record, false);
    const int16_t places[] = {0, 1, 4, -1, -4, 7, -9, 32767, -32768};
    for (const GEO_Rect& rect : kRects)
        for (const int16_t h : places)
            for (const int16_t v : places)
                expectOperation<P>(
                    [&](RK_World& world) { world.CopyRect(&from, rect, h, v); },
                    [&](int x, int y, P was) { return copied(source, rect, h, v, x, y, was); });
    EXPECT_TRUE(source.guardsWhole());
}

TYPED_TEST(WorldOps, ASourceRectangleOutsideTheSourceCopiesNothing) {
    using P = TypeParam;
    test::Picture<P> source(4, 4);
    source.fillRandom(5);
    RK_LayerDef record = source.record();
    const RK_WorldX<P> from(&record, false);
    for (const GEO_Rect& rect : {GEO_Rect{10, 10, 14, 14}, GEO_Rect{-5, 0, -1, 4}, GEO_Rect{0, 4, 4, 8}})
        expectOperation<P>([&](RK_World& world) { world.CopyRect(&from, rect, 0, 0); },
                           [](int, int, P was) { return was; });
}

TYPED_TEST(WorldOps, AWorldIsCopiedWithinItself) {
    using P = TypeParam;
    for (const bool upside_down : {false, true})
        for (const int h : {-2, 0, 2})
            for (const int v : {-2, -1, 0, 1, 2}) {
                test::Picture<P> picture(7, 6);
                picture.fillRandom(9);
                const test::Picture<P> before = picture;
                RK_LayerDef plain = picture.record();
                const auto row = [&](int y) { return upside_down ? 5 - y : y; };
                if (upside_down) {
                    plain.data = picture.row(5);
                    plain.rowbytes = -plain.rowbytes;
                }
                RK_WorldX<P> world(&plain, false);
                world.CopyRect(&world, {0, 0, 6, 7}, int16_t(h), int16_t(v));
                for (int y = 0; y < 6; ++y)
                    for (int x = 0; x < 7; ++x) {
                        const bool there = x >= h && x - h < 7 && y >= v && y - v < 6;
                        const P want = there ? before.at(x - h, row(y - v)) : before.at(x, row(y));
                        ASSERT_TRUE(test::sameBytes(picture.at(x, row(y)), want)) << x << ", " << y;
                    }
                EXPECT_TRUE(picture.guardsWhole());
            }
}

TEST_F(WorldOperation, WorldsOfDifferentDepthsAreNotCopied) {
    const std::unique_ptr<RK_World> a(RK_World::New(2, 2, 8, 1)), b(RK_World::New(2, 2, 16, 1));
    EXPECT_EQ(test::thrownBy([&] { a->CopyRect(b.get(), {0, 0, 2, 2}, 0, 0); }), 3);
    EXPECT_TRUE(test::onlyVerification("Src and dest bitdepths are different in RK_World::CopyRect"));
    EXPECT_EQ(test::thrownBy([&] { a->CopyWorld(b.get()); }), 3);
    EXPECT_TRUE(test::onlyVerification("Src and dest bitdepths are different in RK_World::CopyRect"));
    EXPECT_EQ(test::thrownBy([&] { a->CopyRect(nullptr, {0, 0, 2, 2}, 0, 0); }), 3);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_World::CopyRect()"));
    EXPECT_EQ(test::thrownBy([&] { a->CopyWorld(nullptr); }), 3);
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_World::CopyWorld()"));
}

TYPED_TEST(WorldOps, CopyWorldCopiesTheOthersWholeRectangleToTheCorner) {
    using P = TypeParam;
    test::Picture<P> source(4, 9);
    source.fillRandom(5);
    RK_LayerDef record = source.record();
    const RK_WorldX<P> from(&record, false);
    expectOperation<P>([&](RK_World& world) { world.CopyWorld(&from); },
                       [&](int x, int y, P was) { return x < 4 ? source.at(x, y) : was; });
}

TEST_F(WorldOperation, CopyWorldReachesFarthestWhereARectangleEnds) {
    std::vector<RK_Pixel8> line(40000, RK_Pixel8{1, 2, 3, 4}), target(40000, RK_Pixel8{});
    const std::unique_ptr<RK_World> from(RK_World::NewReference(line.data(), 40000, 1, 8, 160000));
    const std::unique_ptr<RK_World> to(RK_World::NewReference(target.data(), 40000, 1, 8, 160000));
    to->CopyWorld(from.get());
    EXPECT_EQ(target[32766].blue, 4);
    EXPECT_EQ(target[32767].blue, 0);
}

// ---- Nonsense -------------------------------------------------------------------------------------------

TYPED_TEST(WorldOps, AWorldWithoutPixelsIsLeftAlone) {
    using P = TypeParam;
    test::Picture<P> picture(4, 4);
    RK_LayerDef good = picture.record();
    const RK_WorldX<P> other(&good, false);
    const RK_World* from = &other;
    const auto runAll = [&](RK_World& world) {
        const GEO_Rect all = {-32768, -32768, 32767, 32767}, some = {0, 0, 4, 4};
        world.Clear(nullptr);
        world.Clear(&some);
        world.ClearExceptRect(some);
        world.ClearExceptRect(GEO_Rect{0, 0, 0, 0});
        world.Fill(RK_PixelFloat{1, 1, 1, 1}, &all);
        world.Fill(RK_Pixel16{1, 1, 1, 1}, nullptr);
        world.FillAlpha();
        world.InvertAlpha();
        world.CopyRect(from, all, 0, 0);
        world.CopyWorld(from);
        if (sizeof(P) != 16) {
            world.Premultiply();
            world.Unmultiply();
        }
    };
    const std::pair<int32_t, int32_t> sizes[] = {
        {0, 0}, {-1, 4}, {4, -1}, {INT32_MIN, INT32_MIN}, {0, INT32_MAX}};
    for (const auto& [width, height] : sizes) {
        RK_LayerDef plain = good;
        plain.width = width;
        plain.height = height;
        RK_WorldX<P> world(&plain, false);
        runAll(world);
    }
    RK_LayerDef empty = good;
    empty.data = nullptr;
    RK_WorldX<P> world(&empty, false);
    runAll(world);
    RK_WorldX<P> whole(&good, false);
    whole.CopyWorld(&world);
    EXPECT_TRUE(picture == test::Picture<P>(4, 4));
}
