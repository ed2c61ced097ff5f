#include <cmath>
#include <limits>

#include "RK/indep/frame/RK_OverFuncs.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/passes/RK_Iterate.h"
#include "RK/indep/passes/RK_Premul.h"
#include "RK/indep/world/RK_World.h"
#include "test/Reports.h"
#include "test/SlotOverride.h"
#include "test/passes/Scans.h"
#include "test/world/OddWorld.h"

namespace {

template <class P>
class PremulDepth : public test::Tidy {};
using Depths = testing::Types<RK_Pixel8, RK_Pixel16, RK_PixelFloat>;
TYPED_TEST_SUITE(PremulDepth, Depths);
class Premul : public test::Tidy {};

template <class P>
P made(double a, double r, double g, double b) {
    using C = decltype(P::alpha);
    return {static_cast<C>(a), static_cast<C>(r), static_cast<C>(g), static_cast<C>(b)};
}

// ---- Against black --------------------------------------------------------------------------------------

// The default scan in place on columns left..right - 1 of rows top..bottom - 1.
template <class P>
void scanRect(test::Picture<P>& picture, bool forward, const GEO_Rect& r) {
    for (int y = r.top; y < r.bottom; ++y)
        test::scanPairs<P>()[forward ? 0 : 1].plain(r.right - r.left, nullptr, picture.row(y) + r.left);
}

TYPED_TEST(PremulDepth, AWholeWorldGoesThroughTheBlackScanInPlace) {
    for (RK_Long forward : {RK_Long{1}, RK_Long{-1}, RK_Long{0}}) {
        test::Picture<TypeParam> got(37, 11, 3);
        got.fillRandom(uint32_t(forward + 5));
        test::Picture<TypeParam> want = got;
        RK_LayerDef world = got.record();
        world.extent = {1, 1, 2, 2};
        EXPECT_EQ(0, RK_Premul(nullptr, forward, &world));
        scanRect(want, forward != 0, {0, 0, 11, 37});
        EXPECT_TRUE(got == want);
        EXPECT_TRUE(got.guardsWhole());
    }
}

TYPED_TEST(PremulDepth, ARectangleTouchesItsPixelsOnly) {
    const GEO_Rect rect = {2, 5, 9, 30};
    for (bool forward : {true, false}) {
        test::Picture<TypeParam> got(37, 11);
        got.fillRandom(3);
        test::Picture<TypeParam> want = got;
        RK_LayerDef world = got.record();
        EXPECT_EQ(0, RK_PremulRect(nullptr, forward, &rect, &world));
        scanRect(want, forward, rect);
        EXPECT_TRUE(got == want);
    }
}

TYPED_TEST(PremulDepth, ARectangleThatReachesOutOfTheWorldIsNotClipped) {
    // A window into a larger picture, so that what lies outside is there.
    test::Picture<TypeParam> got(20, 10);
    got.fillRandom(4);
    test::Picture<TypeParam> want = got;
    RK_LayerDef window = got.record();
    window.data = &got.at(5, 4);
    window.width = 6;
    window.height = 3;
    const GEO_Rect rect = {-2, -3, 5, 12};
    EXPECT_EQ(0, RK_PremulRect(nullptr, 1, &rect, &window));
    scanRect(want, true, {2, 2, 9, 17});
    EXPECT_TRUE(got == want);
}

TYPED_TEST(PremulDepth, AnEmptyAreaTouchesNothingAndIsNoWork) {
    test::Picture<TypeParam> picture(8, 6);
    picture.fillRandom(6);
    const test::Picture<TypeParam> before = picture;
    RK_LayerDef world = picture.record();
    // A height of -1 must not become the one piece of work that -1 means to the generic pass.
    for (const GEO_Rect& rect :
         {GEO_Rect{2, 0, 2, 8}, GEO_Rect{3, 0, 2, 8}, GEO_Rect{6, 0, 0, 8}, GEO_Rect{0, 4, 6, 4},
          GEO_Rect{0, 8, 6, 0}, GEO_Rect{32767, 32767, -32768, -32768}})
        EXPECT_EQ(0, RK_PremulRect(nullptr, 1, &rect, &world));
    for (int32_t none : {0, -1, INT32_MIN}) {
        world.height = none;
        EXPECT_EQ(0, RK_Premul(nullptr, 0, &world));
        world = picture.record();
        world.width = none;
        EXPECT_EQ(0, RK_Premul(nullptr, 1, &world));
        world = picture.record();
    }
    world.data = nullptr;
    world.width = 0;
    EXPECT_EQ(0, RK_Premul(nullptr, 1, &world));
    EXPECT_TRUE(picture == before);
}

TYPED_TEST(PremulDepth, RowsMayRunUpwards) {
    test::Picture<TypeParam> got(9, 5);
    got.fillRandom(8);
    test::Picture<TypeParam> want = got;
    RK_LayerDef world = got.record();
    world.data = got.row(4);
    world.rowbytes = -world.rowbytes;
    EXPECT_EQ(0, RK_Premul(nullptr, 1, &world));
    scanRect(want, true, {0, 0, 5, 9});
    EXPECT_TRUE(got == want);
}

TYPED_TEST(PremulDepth, AWorldObjectTellsItsDepth) {
    const auto depth = static_cast<int16_t>(test::kDepth<TypeParam>);
    RK_World* world = RK_World::New(4, 3, depth, RK_kWorldClear);
    ASSERT_NE(nullptr, world);
    world->FillAlpha();
    EXPECT_EQ(0, RK_Premul(nullptr, 1, &world->record));
    EXPECT_EQ(0, RK_Premul(nullptr, 0, &world->record));
    const TypeParam* pixel = static_cast<const TypeParam*>(world->record.data);
    EXPECT_EQ(0, pixel->red);
    EXPECT_EQ(RKp_Depth<TypeParam>::kFull, pixel->alpha);
    delete world;
}

TYPED_TEST(PremulDepth, TheScanIsReadFromItsSlotAndItsResultStopsTheRows) {
    static int calls;
    calls = 0;
    RKp_ScanFunc<TypeParam>* spy = [](RK_Long count, const TypeParam* src, TypeParam*) -> RK_Long {
        EXPECT_EQ(7, count);
        EXPECT_EQ(nullptr, src);
        return ++calls == 3 ? 99 : 0;
    };
    const int first = test::kDepth<TypeParam> == 8 ? 35 : test::kDepth<TypeParam> == 16 ? 72 : 106;
    test::Picture<TypeParam> picture(7, 5);
    RK_LayerDef world = picture.record();
    {
        test::SlotOverride forward(first, spy);
        EXPECT_EQ(99, RK_Premul(nullptr, 1, &world));
        EXPECT_EQ(3, calls);
    }
    calls = 10;
    test::SlotOverride backward(first + 1, spy);
    EXPECT_EQ(0, RK_Premul(nullptr, 0, &world));
    EXPECT_EQ(15, calls);
}

TEST_F(Premul, BothEntriesGoThroughSlot52) {
    static GEO_Rect rect;
    static RK_LayerDef world;
    static RK_EffectData effect;
    RKp_PremulRectFunc* spy = [](RK_EffectRef ref, RK_Long forward, const GEO_Rect* r,
                                 RK_LayerDef* w) -> RK_Long {
        EXPECT_EQ(&effect, ref);
        EXPECT_EQ(&world, w);
        return forward * 10 + (r == &rect);
    };
    EXPECT_EQ(reinterpret_cast<void*>(RK_PremulRect_S), RKp_G_OverFuncs[52]);
    test::SlotOverride held(52, spy);
    EXPECT_EQ(40, RK_Premul(&effect, 4, &world));
    EXPECT_EQ(51, RK_PremulRect(&effect, 5, &rect, &world));
}

TEST_F(Premul, AnUnknownDepthIsReportedBeforeAnythingElse) {
    test::OddWorld odd(24);
    const GEO_Rect empty = {0, 0, 0, 0};
    EXPECT_EQ(3, RK_Premul(nullptr, 1, &odd.record));
    EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in##CONDITIONNAME"));
    EXPECT_EQ(3, RK_PremulRect(nullptr, 0, &empty, &odd.record));
    EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in##CONDITIONNAME"));
}

TEST_F(Premul, ANullWorldIsReported) {
    EXPECT_EQ(3, RK_Premul(nullptr, 1, nullptr));
    EXPECT_TRUE(test::onlyBadParam(RKp_kSiteIterate));
    EXPECT_EQ(3, RK_PremulRect(nullptr, 1, nullptr, nullptr));
    EXPECT_TRUE(test::onlyBadParam(RKp_kSiteIterate));
}

// ---- Against a colour: the rows -------------------------------------------------------------------------

RK_Long premulColour(RK_LayerDef* src, const RK_Pixel8* c, RK_Long forward, const GEO_Rect* rect,
                     RK_LayerDef* dst) {
    return RK_PremulColorRect(nullptr, src, c, forward, rect, dst);
}
RK_Long premulColour(RK_LayerDef* src, const RK_Pixel16* c, RK_Long forward, const GEO_Rect* rect,
                     RK_LayerDef* dst) {
    return RK_PremulColorRect16(nullptr, src, c, forward, rect, dst);
}
RK_Long premulColour(RK_LayerDef* src, const RK_PixelFloat* c, RK_Long forward, const GEO_Rect* rect,
                     RK_LayerDef* dst) {
    return RK_PremulColorRectFloat(nullptr, src, c, forward, rect, dst);
}

// One pixel, apart and in place, which must agree.
template <class P, class Colour>
P moved(const P& p, const Colour& colour, bool forward) {
    test::Picture<P> src(1, 1), dst(1, 1);
    src.at(0, 0) = p;
    RK_LayerDef from = src.record(), to = dst.record();
    EXPECT_EQ(0, premulColour(&from, &colour, forward, nullptr, &to));
    EXPECT_EQ(0, premulColour(&from, &colour, forward, nullptr, &from));
    EXPECT_TRUE(test::sameBytes(src.at(0, 0), dst.at(0, 0)));
    return dst.at(0, 0);
}

TEST_F(Premul, EightBitRowsFollowTheRuleForEveryAlphaAndColour) {
    for (int k : {0, 1, 77, 128, 254, 255}) {
        const RK_Pixel8 colour = {9, uint8_t(k), uint8_t(255 - k), uint8_t(k ^ 0x5A)};
        test::Picture<RK_Pixel8> src(256, 256), dst(256, 256);
        for (int a = 0; a < 256; ++a)
            for (int c = 0; c < 256; ++c)
                src.at(c, a) = {uint8_t(a), uint8_t(c), uint8_t(c), uint8_t(255 - c)};
        RK_LayerDef from = src.record(), to = dst.record();
        for (bool forward : {true, false}) {
            ASSERT_EQ(0, RK_PremulColor(nullptr, &from, &colour, forward, &to));
            const auto rule = [&](int a, int c, int m) {
                using E = test::Exact8;
                if (a == 255 || (!forward && a == 0)) return c;
                if (!forward) return int(E::div(a, std::max<int64_t>(c - E::mul(m, 255 - a), 0)));
                const uint32_t t = uint32_t((c - m) * a) + 128;
                return int(uint8_t(uint32_t(m) + ((t + (t >> 8)) >> 8)));
            };
            for (int a = 0; a < 256; ++a)
                for (int c = 0; c < 256; ++c) {
                    const RK_Pixel8 p = src.at(c, a);
                    const RK_Pixel8 want = {p.alpha, uint8_t(rule(a, p.red, colour.red)),
                                            uint8_t(rule(a, p.green, colour.green)),
                                            uint8_t(rule(a, p.blue, colour.blue))};
                    ASSERT_TRUE(test::sameBytes(want, dst.at(c, a)))
                        << "alpha " << a << " colour " << c << " matte " << k;
                }
        }
        EXPECT_TRUE(dst.guardsWhole());
    }
}

TEST_F(Premul, SixteenBitRowsShiftWithoutATermAndFloor) {
    const auto forward = [](int a, int c, int k) {
        return moved(made<RK_Pixel16>(a, c, 0, 0), made<RK_Pixel16>(0, k, 0, 0), true).red;
    };
    // -1 * 1 >> 15 is -1; cut towards zero, or with a term, it would be 0.
    EXPECT_EQ(0, forward(1, 0, 1));
    EXPECT_EQ(16384, forward(1, 32768 - 16384 - 1, 16385));
    // 32767 * 1 >> 15 is 0; any term would make it 1.
    EXPECT_EQ(0, forward(32767, 1, 0));
    EXPECT_EQ(32768, forward(32768, 32768, 1));
    // Full alpha only copies: at 32768 the shift would too, but a colour above full stays as it is.
    EXPECT_EQ(40000, forward(32768, 40000, 3));
    test::Random r(12);
    for (int i = 0; i < 5000; ++i) {
        const auto p = test::pixel<RK_Pixel16>(r), k = test::pixel<RK_Pixel16>(r);
        const auto up = [&](int64_t c, int64_t m) {
            const int64_t product = (c - m) * p.alpha;
            return p.alpha == 32768 ? c
                                    : m + (product >= 0 ? product / 32768 : -((-product + 32767) / 32768));
        };
        const auto down = [&](int64_t c, int64_t m) {
            using E = test::Exact16;
            if (p.alpha == 0 || p.alpha == 32768) return c;
            return E::div(p.alpha, std::max<int64_t>(c - E::mul(m, 32768 - p.alpha), 0));
        };
        const auto expected = [&](auto rule) {
            return made<RK_Pixel16>(p.alpha, double(rule(p.red, k.red)), double(rule(p.green, k.green)),
                                    double(rule(p.blue, k.blue)));
        };
        ASSERT_TRUE(test::sameBytes(expected(up), moved(p, k, true)));
        ASSERT_TRUE(test::sameBytes(expected(down), moved(p, k, false)));
    }
}

TEST_F(Premul, FloatRowsAreNotClamped) {
    test::Random r(13);
    for (int i = 0; i < 5000; ++i) {
        auto p = test::pixel<RK_PixelFloat>(r);
        const auto k = test::pixel<RK_PixelFloat>(r);
        const auto up = [&](float c, float m) {
            volatile float d = c - m;
            d = d * p.alpha;
            return p.alpha == 1.0f ? c : m + d;
        };
        const auto down = [&](float c, float m) {
            if (p.alpha == 0.0f || p.alpha == 1.0f) return c;
            if (std::fpclassify(p.alpha) == FP_SUBNORMAL) return 1.0f;
            volatile float share = 1.0f - p.alpha;
            share = m * share;
            share = c - share;
            return share / p.alpha;
        };
        const auto expected = [&](auto rule) {
            return RK_PixelFloat{p.alpha, rule(p.red, k.red), rule(p.green, k.green), rule(p.blue, k.blue)};
        };
        ASSERT_TRUE(test::sameBytes(expected(up), moved(p, k, true)));
        ASSERT_TRUE(test::sameBytes(expected(down), moved(p, k, false)));
    }
    EXPECT_LT(moved(RK_PixelFloat{0.5f, 0.0f, 0, 0}, RK_PixelFloat{0, 1.0f, 0, 0}, false).red, 0.0f);
    EXPECT_GT(moved(RK_PixelFloat{0.25f, 1.0f, 0, 0}, RK_PixelFloat{0, 0.0f, 0, 0}, false).red, 1.0f);
}

TEST_F(Premul, BackwardADenormalAlphaMakesTheColoursOneAndZeroCopies) {
    for (float a : {1e-39f, -1e-39f, std::numeric_limits<float>::denorm_min()})
        EXPECT_TRUE(test::sameBytes(
            RK_PixelFloat{a, 1, 1, 1},
            moved(RK_PixelFloat{a, 0.25f, 5, -1}, RK_PixelFloat{0, 0.5f, 0.5f, 0.5f}, false)));
    const RK_PixelFloat clear = {0, 0.25f, 5, -1};
    EXPECT_TRUE(test::sameBytes(clear, moved(clear, RK_PixelFloat{0, 0.5f, 0.5f, 0.5f}, false)));
    const RK_Pixel8 clear8 = {0, 1, 2, 3};
    EXPECT_TRUE(test::sameBytes(clear8, moved(clear8, RK_Pixel8{0, 9, 9, 9}, false)));
    const RK_Pixel16 clear16 = {0, 1, 2, 3};
    EXPECT_TRUE(test::sameBytes(clear16, moved(clear16, RK_Pixel16{0, 9, 9, 9}, false)));
}

TEST_F(Premul, ForwardAnAlphaOfZeroLeavesTheMatte) {
    EXPECT_TRUE(
        test::sameBytes(RK_Pixel8{0, 7, 8, 9}, moved(RK_Pixel8{0, 255, 1, 2}, RK_Pixel8{0, 7, 8, 9}, true)));
    EXPECT_TRUE(test::sameBytes(RK_Pixel16{0, 7, 8, 9},
                                moved(RK_Pixel16{0, 255, 1, 2}, RK_Pixel16{0, 7, 8, 9}, true)));
}

// ---- Against a colour: the colour -----------------------------------------------------------------------

TEST_F(Premul, TheColourIsConvertedToTheWorldsDepth) {
    // At alpha 0 the matte itself comes out.
    const auto matte = [](auto pixel, const auto& colour) { return moved(pixel, colour, true); };
    const RK_Pixel8 c8 = {0, 255, 128, 3};
    const RK_Pixel16 c16 = {0, 32768, 16384, 200};
    const RK_PixelFloat cf = {0, 1.5f, 0.5f, -1.0f};
    EXPECT_TRUE(test::sameBytes(RK_Pixel16{0, 32768, 16448, 386}, matte(RK_Pixel16{}, c8)));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{0, 255, 128, 2}, matte(RK_Pixel8{}, c16)));
    EXPECT_TRUE(
        test::sameBytes(RK_PixelFloat{0, 1.0f, 0.5f, 200.0f * 3.0517578e-5f}, matte(RK_PixelFloat{}, c16)));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{0, 255, 128, 0}, matte(RK_Pixel8{}, cf)));
    EXPECT_TRUE(test::sameBytes(RK_Pixel16{0, 32768, 16384, 0}, matte(RK_Pixel16{}, cf)));
    EXPECT_TRUE(test::sameBytes(RK_PixelFloat{0, 1.5f, 0.5f, -1.0f}, matte(RK_PixelFloat{}, cf)));
}

TEST_F(Premul, AnEightBitColourInAFloatWorldIsAProductInSinglePrecision) {
    int differ = 0;
    for (int c = 0; c < 256; ++c) {
        const float got = moved(RK_PixelFloat{}, RK_Pixel8{0, uint8_t(c), 0, 0}, true).red;
        EXPECT_EQ(float(c) * 0.003921569f, got);
        differ += got != static_cast<float>(c * 0.00392156862745098);
    }
    EXPECT_GT(differ, 0);
}

TYPED_TEST(PremulDepth, NoColourIsBlack) {
    for (bool forward : {true, false}) {
        test::Picture<TypeParam> src(5, 4), by_null(5, 4), by_black(5, 4);
        src.fillRandom(14);
        RK_LayerDef from = src.record(), to = by_null.record(), other = by_black.record();
        const RK_Pixel8 black8 = {255, 0, 0, 0};
        EXPECT_EQ(0, RK_PremulColor(nullptr, &from, &black8, forward, &other));
        EXPECT_EQ(0, RK_PremulColor(nullptr, &from, nullptr, forward, &to));
        EXPECT_TRUE(by_null == by_black);
        EXPECT_EQ(0, RK_PremulColor16(nullptr, &from, nullptr, forward, &to));
        EXPECT_TRUE(by_null == by_black);
        EXPECT_EQ(0, RK_PremulColorFloat(nullptr, &from, nullptr, forward, &to));
        EXPECT_TRUE(by_null == by_black);
    }
}

// ---- Against a colour: the area -------------------------------------------------------------------------

// Forward against white from a clear source: what was visited is white and clear.
template <class P>
void expectArea(int src_width, int src_height, int dst_width, int dst_height, const GEO_Rect* rect,
                const GEO_Rect& area) {
    const RK_PixelFloat white = {0, 1, 1, 1};
    test::Picture<P> src(src_width, src_height), dst(dst_width, dst_height);
    dst.fill(made<P>(1, 0, 0, 0));
    RK_LayerDef from = src.record(), to = dst.record();
    EXPECT_EQ(0, RK_PremulColorRectFloat(nullptr, &from, &white, 1, rect, &to));
    for (int y = 0; y < dst_height; ++y)
        for (int x = 0; x < dst_width; ++x) {
            const bool inside = x >= area.left && x < area.right && y >= area.top && y < area.bottom;
            ASSERT_EQ(inside, dst.at(x, y).alpha == 0) << x << " " << y;
        }
    EXPECT_TRUE(dst.guardsWhole() && src.guardsWhole());
}

TYPED_TEST(PremulDepth, WithoutARectangleTheWholeOfBothWorldsIsVisited) {
    expectArea<TypeParam>(9, 7, 9, 7, nullptr, {0, 0, 7, 9});
    expectArea<TypeParam>(9, 7, 5, 11, nullptr, {0, 0, 7, 5});
    expectArea<TypeParam>(3, 9, 8, 2, nullptr, {0, 0, 2, 3});
    expectArea<TypeParam>(0, 0, 8, 2, nullptr, {0, 0, 0, 0});
}

TYPED_TEST(PremulDepth, RowsEndInsideBothWorldsAndTheColumnDecidesTheRest) {
    const struct {
        GEO_Rect rect, area;
    } cases[] = {
        {{1, 2, 4, 6}, {1, 2, 4, 6}},
        {{-3, 2, 90, 6}, {0, 2, 7, 6}},
        {{0, 2, 7, 9}, {0, 2, 7, 9}},
        {{0, 2, 7, 32767}, {0, 2, 7, 9}},
        {{-32768, 8, 32767, 32767}, {0, 8, 7, 9}},
        // A left outside either world leaves nothing, even where the rest would lie inside.
        {{0, -1, 7, 5}, {0, 0, 0, 0}},
        {{0, -32768, 7, 5}, {0, 0, 0, 0}},
        {{0, 9, 7, 20}, {0, 0, 0, 0}},
        {{0, 10, 7, 20}, {0, 0, 0, 0}},
        {{0, 32767, 7, 32767}, {0, 0, 0, 0}},
        {{7, 0, 9, 5}, {0, 0, 0, 0}},
        {{-5, 0, 0, 5}, {0, 0, 0, 0}},
        // Reversed.
        {{5, 2, 3, 6}, {0, 0, 0, 0}},
        {{1, 6, 4, 6}, {0, 0, 0, 0}},
        {{1, 6, 4, 2}, {0, 0, 0, 0}},
    };
    for (const auto& c : cases) {
        expectArea<TypeParam>(9, 7, 9, 7, &c.rect, c.area);
        expectArea<TypeParam>(9, 7, 12, 10, &c.rect, c.area);
        expectArea<TypeParam>(12, 10, 9, 7, &c.rect, c.area);
    }
}

TEST_F(Premul, AWorldHigherThanARectangleCanTellIsVisitedWhole) {
    std::vector<RK_Pixel8> pixels(40000, RK_Pixel8{0, 1, 1, 1});
    RK_LayerDef world = {};
    world.data = pixels.data();
    world.rowbytes = 4;
    world.width = 1;
    world.height = 40000;
    const RK_Pixel8 colour = {0, 9, 8, 7};
    EXPECT_EQ(0, RK_PremulColor(nullptr, &world, &colour, 1, &world));
    for (const RK_Pixel8& p : pixels) ASSERT_TRUE(test::sameBytes(RK_Pixel8{0, 9, 8, 7}, p));
}

TEST_F(Premul, ThePassRunsThroughTheIterateSlotOnceForEachRow) {
    static int calls;
    calls = 0;
    RKp_IterateFunc* spy = [](RK_EffectData* effect, RK_Long base, RK_Long final, RK_LayerDef*,
                              const GEO_Rect* rect, void*, RK_PixelFunc*, RK_LayerDef*) -> RK_Long {
        EXPECT_TRUE(effect == nullptr && base == 0 && final == 0);
        EXPECT_TRUE(rect != nullptr && rect->left == 2 && rect->right == 3 && rect->top == 1 &&
                    rect->bottom == 4);
        ++calls;
        return 55;
    };
    test::Picture<RK_Pixel8> picture(9, 7);
    RK_LayerDef world = picture.record();
    const GEO_Rect rect = {1, 2, 4, 8};
    test::SlotOverride held(42, spy);
    RK_EffectData effect = {};
    EXPECT_EQ(55, RK_PremulColorRect(&effect, &world, nullptr, 1, &rect, &world));
    EXPECT_EQ(1, calls);
}

TEST_F(Premul, NonsenseSizesTouchNothing) {
    test::Picture<RK_Pixel8> picture(4, 4);
    picture.fillRandom(5);
    const test::Picture<RK_Pixel8> before = picture;
    const GEO_Rect rect = {0, 1, 4, 3};
    for (int32_t size : {0, -1, INT32_MIN})
        for (const GEO_Rect* r : {&rect, static_cast<const GEO_Rect*>(nullptr)}) {
            RK_LayerDef narrow = picture.record(), flat = picture.record(), whole = picture.record();
            narrow.width = size;
            flat.height = size;
            for (RK_LayerDef* odd : {&narrow, &flat}) {
                EXPECT_EQ(0, RK_PremulColorRect(nullptr, odd, nullptr, 1, r, &whole));
                EXPECT_EQ(0, RK_PremulColorRect(nullptr, &whole, nullptr, 1, r, odd));
            }
        }
    EXPECT_TRUE(picture == before);
}

// ---- Against a colour: failures, in their order ---------------------------------------------------------

template <class Colour>
void expectFailures(const std::string& unequal, const std::string& bad_depth) {
    const Colour* const none = nullptr;
    test::Picture<RK_Pixel8> p8(2, 2);
    test::Picture<RK_Pixel16> p16(2, 2);
    RK_LayerDef w8 = p8.record(), w16 = p16.record(), no_pixels = p8.record();
    no_pixels.data = nullptr;
    test::OddWorld odd(24), odder(12);

    EXPECT_EQ(3, premulColour(nullptr, none, 1, nullptr, &w8));
    EXPECT_TRUE(test::onlyBadParam(RKp_kSiteIterate));
    EXPECT_EQ(3, premulColour(&odd.record, none, 1, nullptr, nullptr));
    EXPECT_TRUE(test::onlyBadParam(RKp_kSiteIterate));
    EXPECT_EQ(3, premulColour(&w8, none, 0, nullptr, &w16));
    EXPECT_TRUE(test::onlyVerification(unequal));
    EXPECT_EQ(3, premulColour(&no_pixels, none, 0, nullptr, &w16));
    EXPECT_TRUE(test::onlyVerification(unequal));
    EXPECT_EQ(3, premulColour(&odd.record, none, 1, nullptr, &odder.record));
    EXPECT_TRUE(test::onlyVerification(unequal));
    EXPECT_EQ(3, premulColour(&odd.record, none, 1, nullptr, &odd.record));
    EXPECT_TRUE(test::onlyBadDepth(bad_depth));
    EXPECT_EQ(3, premulColour(&no_pixels, none, 1, nullptr, &w8));
    EXPECT_TRUE(test::onlyBadParam(RKp_kSiteIterate));
    EXPECT_EQ(3, premulColour(&w8, none, 1, nullptr, &no_pixels));
    EXPECT_TRUE(test::onlyBadParam(RKp_kSiteIterate));
}

TEST_F(Premul, FailuresOfTheColourFormsAreReported) {
    expectFailures<RK_Pixel8>("worlds must be same bitdepth in RK_PremulColorRect()",
                              "Unknown world bitdepth in RK_PremulColorRect");
    expectFailures<RK_Pixel16>("worlds must be same bitdepth in RK_PremulColorRect16()",
                               "Unknown world bitdepth in RK_PremulColorRect16");
    // The float form tells of the 16-bit one.
    expectFailures<RK_PixelFloat>("worlds must be same bitdepth in RK_PremulColorRect16()",
                                  "Unknown world bitdepth in RK_PremulColorRectFloat");
}

}  // namespace
