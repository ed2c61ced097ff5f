// Premultiplication of whole worlds and 8-bit rows, against black and against a colour, against the plain
// twins.
#include <gtest/gtest.h>

#include "RK/indep/passes/RK_Premul.h"
#include "test/plain/PlainScans.h"
#include "test/plain/Worlds.h"

namespace {

using test::difference;
using test::show;
using test::side;
using test::World;

// ---- Worlds against black ---------------------------------------------------------------------------------

template <class P>
void comparePremul() {
    test::Random r(sizeof(P) + 70);
    const int count = test::amount(1000);
    for (int i = 0; i < count; ++i) {
        const World<P> world{r, side(r), side(r), true};
        const auto left = static_cast<int>(r.below(static_cast<uint32_t>(world.record.width)));
        const auto top = static_cast<int>(r.below(static_cast<uint32_t>(world.record.height)));
        const auto w = static_cast<int>(r.below(static_cast<uint32_t>(world.record.width - left) + 1));
        const auto h = static_cast<int>(r.below(static_cast<uint32_t>(world.record.height - top) + 1));
        const GEO_Rect rect{static_cast<int16_t>(top), static_cast<int16_t>(left),
                            static_cast<int16_t>(top + h), static_cast<int16_t>(left + w)};
        const bool forward = r.below(2) == 0, whole = r.below(4) == 0;
        World<P> expected(world), got(world);
        for (int y = whole ? 0 : top; y < (whole ? world.record.height : top + h); ++y) {
            P* const row = &plain::at<P>(expected.record, whole ? 0 : left, y);
            plain::scan<P>(plain::Matte::Black, forward, whole ? world.record.width : w, nullptr, row);
        }
        if (whole)
            ASSERT_EQ(RK_Premul(nullptr, forward, &got.record), 0);
        else
            ASSERT_EQ(RK_PremulRect(nullptr, forward, &rect, &got.record), 0);
        ASSERT_EQ(difference(world, expected, got), "")
            << (forward ? "premultiply" : "unmultiply") << ", depth " << test::kDepth<P> << ", "
            << (whole ? "whole" : show(rect));
    }
}
TEST(PremulAgainstPlain, EqualAtEveryDepth) {
    comparePremul<RK_Pixel8>();
    comparePremul<RK_Pixel16>();
    comparePremul<RK_PixelFloat>();
}

// ---- Worlds against a colour ------------------------------------------------------------------------------

RK_Long libraryPass(RK_LayerDef* src, const RK_Pixel8* c, RK_Long forward, const GEO_Rect* rect,
                    RK_LayerDef* dst) {
    return rect != nullptr ? RK_PremulColorRect(nullptr, src, c, forward, rect, dst)
                           : RK_PremulColor(nullptr, src, c, forward, dst);
}
RK_Long libraryPass(RK_LayerDef* src, const RK_Pixel16* c, RK_Long forward, const GEO_Rect* rect,
                    RK_LayerDef* dst) {
    return rect != nullptr ? RK_PremulColorRect16(nullptr, src, c, forward, rect, dst)
                           : RK_PremulColor16(nullptr, src, c, forward, dst);
}
RK_Long libraryPass(RK_LayerDef* src, const RK_PixelFloat* c, RK_Long forward, const GEO_Rect* rect,
                    RK_LayerDef* dst) {
    return rect != nullptr ? RK_PremulColorRectFloat(nullptr, src, c, forward, rect, dst)
                           : RK_PremulColorFloat(nullptr, src, c, forward, dst);
}

template <class Colour, class P>
void compareColourPasses() {
    test::Random r(sizeof(Colour) * 3 + sizeof(P) + 90);
    const int count = test::amount(2000);
    for (int i = 0; i < count; ++i) {
        World<P> src{r, side(r), side(r), r.below(4) == 0};
        const World<P> dst{r, side(r), side(r)};
        const Colour colour = test::pixel<Colour>(r);
        const Colour* given = r.below(8) == 0 ? nullptr : &colour;
        const bool has_rect = r.below(4) != 0, forward = r.below(2) == 0;
        GEO_Rect rect = test::randomRect(r, src.record.width, src.record.height);
        if (r.below(2) == 0) rect.left = 0;
        World<P> expected(dst), got(dst);
        const P k = plain::matteColour<P>(given);
        const plain::Area a = plain::premulColourArea(has_rect ? &rect : nullptr, src.record.width,
                                                      src.record.height, dst.record.width, dst.record.height);
        for (int64_t y = a.top; y < a.bottom; ++y)
            for (int64_t x = a.left; x < a.right; ++x) {
                const P& p = plain::at<P>(src.record, x, y);
                plain::at<P>(expected.record, x, y) =
                    forward ? plain::premulColour(p, k) : plain::unmulColour(p, k);
            }
        ASSERT_EQ(libraryPass(&src.record, given, forward, has_rect ? &rect : nullptr, &got.record), 0);
        ASSERT_EQ(difference(dst, expected, got), "")
            << "matte of depth " << test::kDepth<Colour> << " on depth " << test::kDepth<P> << ", "
            << (forward ? "forward" : "backward") << ", colour " << (given != nullptr ? show(colour) : "null")
            << ", " << (has_rect ? show(rect) : "whole") << ", source " << src.record.width << " by "
            << src.record.height;
    }
}
TEST(PremulColourAgainstPlain, EqualOnEveryDepthFromBytes) {
    compareColourPasses<RK_Pixel8, RK_Pixel8>();
    compareColourPasses<RK_Pixel8, RK_Pixel16>();
    compareColourPasses<RK_Pixel8, RK_PixelFloat>();
}
TEST(PremulColourAgainstPlain, EqualOnEveryDepthFrom16Bits) {
    compareColourPasses<RK_Pixel16, RK_Pixel8>();
    compareColourPasses<RK_Pixel16, RK_Pixel16>();
    compareColourPasses<RK_Pixel16, RK_PixelFloat>();
}
TEST(PremulColourAgainstPlain, EqualOnEveryDepthFromFloat) {
    compareColourPasses<RK_PixelFloat, RK_Pixel8>();
    compareColourPasses<RK_PixelFloat, RK_Pixel16>();
    compareColourPasses<RK_PixelFloat, RK_PixelFloat>();
}

// ---- 8-bit rows and mattes
// ----------------------------------------------------------------------------------

std::vector<RK_Pixel8> everyAlphaAndColour() {
    std::vector<RK_Pixel8> row;
    for (int a = 0; a < 256; ++a)
        for (int c = 0; c < 256; ++c)
            row.push_back({uint8_t(a), uint8_t(c), uint8_t(255 - c), uint8_t(c * 7)});
    return row;
}

TEST(MatteRowsAgainstPlain, EqualOnEveryByte) {
    const std::vector<RK_Pixel8> source = everyAlphaAndColour();
    const int count = static_cast<int>(source.size());
    for (const bool forward : {true, false})
        for (const bool in_place : {true, false}) {
            std::vector<RK_Pixel8> expected = source, got = source, argb = source;
            plain::scan(plain::Matte::Black, forward, count, in_place ? nullptr : source.data(),
                        expected.data());
            auto* const copy = forward ? RK_BlackMatte : RK_DeBlackMatte;
            EXPECT_EQ(copy(nullptr, count, in_place ? nullptr : source.data(), got.data()), 0);
            EXPECT_EQ(test::firstDifference(expected.data(), got.data(), count), -1) << forward << in_place;
            if (!in_place) continue;
            auto* const row = forward ? RK_BlackMatteARGB : RK_DeBlackMatteARGB;
            EXPECT_EQ(row(nullptr, count, argb.data()), 0);
            EXPECT_EQ(test::firstDifference(expected.data(), argb.data(), count), -1) << forward;
        }
}

TEST(MatteRowsAgainstPlain, EqualOnEveryByteWithAlphaLast) {
    std::vector<uint8_t> source;
    for (const RK_Pixel8& p : everyAlphaAndColour())
        source.insert(source.end(), {p.blue, p.green, p.red, p.alpha});
    const int count = static_cast<int>(source.size() / 4);
    std::vector<uint8_t> expected = source, got = source;
    plain::blackMatteBGRA(count, expected.data());
    EXPECT_EQ(RK_BlackMatteBGRA(nullptr, count, got.data()), 0);
    EXPECT_EQ(got, expected);
    expected = got = source;
    plain::deBlackMatteBGRA(count, expected.data());
    EXPECT_EQ(RK_DeBlackMatteBGRA(nullptr, count, got.data()), 0);
    EXPECT_EQ(got, expected);
}

TEST(MatteColourAgainstPlain, EqualInBothPixelOrders) {
    test::Random r(61);
    const int count = test::amount(1000);
    for (int i = 0; i < count; ++i) {
        const World<RK_Pixel8> world{r, side(r), side(r)};
        const RK_Pixel8 colour = i % 10 == 0 ? RK_Pixel8{255, 0, 0, 0} : test::pixel<RK_Pixel8>(r);
        const bool forward = r.below(2) == 0, alpha_last = r.below(2) == 0;
        World<RK_Pixel8> expected(world), got(world);
        for (int y = 0; y < world.record.height; ++y)
            for (int x = 0; x < world.record.width; ++x) {
                RK_Pixel8& p = plain::at<RK_Pixel8>(expected.record, x, y);
                if (alpha_last) {
                    // A pixel's four bytes read as blue, green, red, alpha.
                    const RK_Pixel8 q =
                        plain::blackToColour({p.blue, p.green, p.red, p.alpha}, colour, forward);
                    p = {q.blue, q.green, q.red, q.alpha};
                } else {
                    p = plain::blackToColour(p, colour, forward);
                }
            }
        auto* const change = alpha_last ? RK_MatteBlackToMatteColorBGRA : RK_MatteBlackToMatteColorARGB;
        ASSERT_EQ(change(&got.record, &colour, forward), 0);
        ASSERT_EQ(difference(world, expected, got), "") << (forward ? "forward" : "backward") << ", colour "
                                                        << show(colour) << (alpha_last ? ", alpha last" : "");
    }
}

}  // namespace
