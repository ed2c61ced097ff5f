// Lazy tiles against their twin where the plain walk does not lead: the far ends of 16 bits, operators that
// grow, shrink and fail, and the pixels and samples that the two operators leave behind.
#include <gtest/gtest.h>

#include <functional>

#include "RK/indep/filter/RK_LazyTiles.h"
#include "refhost/RefHost.h"
#include "test/plain/PlainCopy.h"
#include "test/plain/filter/Masks.h"
#include "test/plain/filter/PlainTiles.h"

namespace {

using test::Random;

int16_t short_(int v) { return static_cast<int16_t>(v); }
int16_t anyShort(Random& r, int about) {
    switch (r.below(8)) {
        case 0: return INT16_MIN;
        case 1: return INT16_MAX;
        case 2: return static_cast<int16_t>(r.next());
        default: return test::about(r, about);
    }
}

// Notes what it is asked for; throws at call `fails_at`.
struct Asked {
    GEO_Vector2T<int16_t> extent;
    std::vector<GEO_LRect> calls;
    size_t fails_at = 0;
};
struct Operator : RK_LazyOperator {
    explicit Operator(Asked* asked) : asked_(asked) {}
    GEO_Vector2T<int16_t> GetExtent() const override { return asked_->extent; }

  protected:
    void DoItImp(const GEO_Rect& r) override {
        asked_->calls.push_back({r.left, r.top, r.right, r.bottom});
        if (asked_->calls.size() == asked_->fails_at) throw RK_Long{77};
    }

  private:
    Asked* asked_;
};

TEST(LazyTilesAgainstPlain, TheSameCallsFarOutAndOfOperatorsThatChangeAndFail) {
    Random r(610);
    const int count = test::amount(4000);
    int failures = 0;
    for (int i = 0; i < count; ++i) {
        Asked asked;
        const bool huge = r.below(4) == 0;
        const auto size = [&] {
            return huge ? 32767 - static_cast<int>(r.below(4)) : static_cast<int>(r.below(90));
        };
        asked.extent = {short_(size()), short_(size())};
        const int tile = huge ? 2000 + static_cast<int>(r.below(30768)) : 1 + static_cast<int>(r.below(30));
        boost::scoped_ptr<RK_LazyOperator> op(new Operator(&asked));
        RK_LazyTilesCondition tiles(short_(tile), &op, false);
        ASSERT_EQ(op.get(), nullptr);
        plain::Tiles twin(tile, asked.extent.x, asked.extent.y);
        for (int k = 0; k < 10; ++k) {
            const int about_x = std::max<int>(asked.extent.x, 1), about_y = std::max<int>(asked.extent.y, 1);
            if (r.below(3) == 0) {
                twin.offset_x = huge ? anyShort(r, 100) : anyShort(r, about_x);
                twin.offset_y = huge ? anyShort(r, 100) : anyShort(r, about_y);
                tiles.SetOffset({short_(twin.offset_x), short_(twin.offset_y)});
            }
            if (r.below(8) == 0) {
                asked.extent = {short_(size()), short_(size())};
                twin.resize(asked.extent.x, asked.extent.y);
            }
            const bool far = r.below(4) == 0;
            const int around = huge ? 20000 : 0;
            GEO_Rect rect = {anyShort(r, around + about_y / 2), anyShort(r, around + about_x / 2),
                             anyShort(r, about_y / 2 + around), anyShort(r, about_x / 2 + around)};
            if (!far) rect = test::randomRect(r, std::min(about_x, 16000), std::min(about_y, 16000));
            asked.calls.clear();
            twin.fails_at = asked.fails_at = r.below(6) == 0 ? 1 + r.below(3) : 0;
            const bool in_frame = r.below(3) == 0, condition = r.below(4) != 0;
            const std::vector<GEO_LRect> expected =
                in_frame ? twin.makeValidUnder(condition, rect) : twin.makeValid(rect);
            RK_Long thrown = 0;
            try {
                tiles.SetCondition(condition);
                if (in_frame)
                    tiles.ConditionalMakeValid(rect);
                else
                    tiles.MakeValid(rect);
            } catch (RK_Long code) {
                thrown = code;
            }
            const std::string told = test::show(rect) + ", tile " + std::to_string(tile) + ", extent " +
                                     std::to_string(asked.extent.x) + " by " +
                                     std::to_string(asked.extent.y) + (in_frame ? ", in the frame" : "");
            ASSERT_EQ(thrown, twin.fails_at != 0 && expected.size() == twin.fails_at ? 77 : 0) << told;
            failures += thrown != 0;
            ASSERT_EQ(expected.size(), asked.calls.size()) << told;
            for (size_t n = 0; n < expected.size(); ++n)
                ASSERT_TRUE(test::sameBytes(expected[n], asked.calls[n])) << n << " of " << told;
        }
    }
    if (count < 1000) return;
    EXPECT_GT(failures, count / 8);
}

// ---- Copies and fills tile by tile ----------------------------------------------------------------------

GEO_Rect narrow(const GEO_LRect& r) {
    return {short_(r.top), short_(r.left), short_(r.bottom), short_(r.right)};
}

template <class S, class D>
void copyTiles(int full) {
    Random r(620 + sizeof(S) + 3 * sizeof(D));
    const int count = test::amount(full);
    for (int i = 0; i < count; ++i) {
        test::World<S> src(r, test::side(r), test::side(r));
        const bool same_size = r.below(2) == 0;
        const test::World<D> before(r, same_size ? src.record.width : test::side(r),
                                    same_size ? src.record.height : test::side(r));
        test::World<D> expected(before), got(before);
        boost::scoped_ptr<RK_LazyOperator> op(new RK_LazyWorldCopyOperator(&src.record, &got.record));
        const int tile = 1 + static_cast<int>(r.below(r.below(2) == 0 ? 5 : 40));
        plain::Tiles twin(tile, src.record.width, src.record.height);
        RK_LazyTiles tiles(short_(tile), &op);
        for (int k = 0; k < 4; ++k) {
            const GEO_Rect rect = test::randomRect(r, src.record.width, src.record.height);
            for (const GEO_LRect& run : twin.makeValid(rect)) {
                const GEO_Rect part = narrow(run);
                plain::copyDraft<S, D>(src.record, expected.record, &part, &part);
            }
            tiles.MakeValid(rect);
            ASSERT_EQ(test::difference(before, expected, got), "") << test::show(rect) << ", tile " << tile;
            // What was copied is not copied anew.
            if (src.record.width > 0) src.picture.at(0, 0) = test::pixel<S>(r);
        }
    }
}
TEST(LazyTilesAgainstPlain, CopiesAreEqualBetweenAnyDepths) {
    copyTiles<RK_Pixel8, RK_Pixel8>(800);
    copyTiles<RK_Pixel16, RK_Pixel16>(400);
    copyTiles<RK_PixelFloat, RK_PixelFloat>(400);
    copyTiles<RK_Pixel8, RK_PixelFloat>(400);
    copyTiles<RK_Pixel16, RK_Pixel8>(400);
}

TEST(LazyTilesAgainstPlain, AnotherSourceIsCopiedOnTheTilesThatWereNotDone) {
    Random r(630);
    const int count = test::amount(1000);
    for (int i = 0; i < count; ++i) {
        const test::World<RK_Pixel8> first(r, test::side(r), test::side(r)),
            second(r, test::side(r), test::side(r));
        const test::World<RK_Pixel8> before(r, 60, 60);
        test::World<RK_Pixel8> expected(before), got(before);
        RK_LayerDef sources[] = {first.record, second.record};
        RK_LazyWorldCopyOperator* const copy = new RK_LazyWorldCopyOperator(&sources[0], &got.record);
        boost::scoped_ptr<RK_LazyOperator> op(copy);
        plain::Tiles twin(7, first.record.width, first.record.height);
        RK_LazyTiles tiles(7, &op);
        for (RK_LayerDef& source : sources) {
            copy->SetSourceWorld(&source);
            twin.resize(source.width, source.height);
            const GEO_Rect rect = test::randomRect(r, source.width, source.height);
            for (const GEO_LRect& run : twin.makeValid(rect)) {
                const GEO_Rect part = narrow(run);
                plain::copyDraft<RK_Pixel8, RK_Pixel8>(source, expected.record, &part, &part);
            }
            tiles.MakeValid(rect);
            ASSERT_EQ(test::difference(before, expected, got), "") << test::show(rect);
        }
    }
}

TEST(LazyTilesAgainstPlain, FillsAreEqualAtEveryDepth) {
    Random r(640);
    const int count = test::amount(3000);
    for (int i = 0; i < count; ++i) {
        const plain::Mask before = test::randomMask(r, test::side(r), test::side(r), test::randomDepth(r));
        plain::Mask expected = before;
        boost::scoped_ptr<RK_UnoBuffer> buffer(new RK_UnoBuffer(before.width, before.height, before.depth));
        std::memcpy(*buffer->pixels, before.bytes.data(), before.bytes.size());
        const uint16_t value = static_cast<uint16_t>(r.next());
        RK_LazyFillUnoBufferOperator* const fill = new RK_LazyFillUnoBufferOperator(&buffer, value);
        ASSERT_EQ(buffer.get(), nullptr);
        boost::scoped_ptr<RK_LazyOperator> op(fill);
        const int tile = 1 + static_cast<int>(r.below(r.below(2) == 0 ? 5 : 40));
        plain::Tiles twin(tile, before.width, before.height);
        RK_LazyTiles tiles(short_(tile), &op);
        for (int k = 0; k < 4; ++k) {
            const GEO_Rect rect = test::randomRect(r, before.width, before.height);
            for (const GEO_LRect& run : twin.makeValid(rect)) {
                if (before.depth == 16)
                    plain::fillMask(value, narrow(run), expected);
                else
                    plain::fillMask(static_cast<uint8_t>(value & 0xFF), narrow(run), expected);
            }
            tiles.MakeValid(rect);
            ASSERT_EQ(std::memcmp(*fill->GetBuffer()->pixels, expected.bytes.data(), expected.bytes.size()),
                      0)
                << test::show(rect) << ", tile " << tile << ", depth " << before.depth;
        }
    }
}

}  // namespace
