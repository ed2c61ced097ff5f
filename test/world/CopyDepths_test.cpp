// Rectangles copied between worlds of any depth: the rows' converters, the cut, progress, and what is
// refused.
#include <algorithm>
#include <memory>

#include "RK/indep/passes/RK_DepthConvert.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "RK/indep/world/RKp_ChannelConvert.h"
#include "RK/indep/world/RKp_Dither.h"
#include "test/Pixels.h"
#include "test/Reports.h"
#include "test/world/OddWorld.h"

namespace {

class CopyDepthsTest : public test::Tidy {};
using World = std::unique_ptr<RK_World>;
constexpr int16_t kDepths[] = {8, 16, 32};

const GEO_Rect kWhole = {0, 0, 30000, 30000};

// A row by the converter of its two depths.
template <class From, class To>
void convertRow(const From* in, int count, bool, To* out) {
    for (int x = 0; x < count; ++x) out[x] = RKp_ConvertPixel<To>(in[x]);
}
void convertRow(const RK_Pixel16* in, int count, bool dither, RK_Pixel8* out) {
    RKp_Row16To8(in, count, dither, out);
}
void convertRow(const RK_PixelFloat* in, int count, bool dither, RK_Pixel8* out) {
    RKp_RowFloatTo8(in, count, dither, out);
}

template <class From, class To>
void copyMany() {
    test::Random r(sizeof(From) * 7 + sizeof(To));
    for (int i = 0; i < 60; ++i) {
        const auto side = [&r] { return 1 + static_cast<int>(r.below(20)); };
        const auto place = [&r] { return static_cast<int16_t>(static_cast<int>(r.below(30)) - 12); };
        test::Picture<From> from(side(), side());
        test::Picture<To> got(side(), side());
        from.fillRandom(r.next());
        got.fillRandom(r.next());
        test::Picture<To> expected = got;
        const int16_t top = place(), left = place(), h = place(), v = place();
        const GEO_Rect rect = {top, left, static_cast<int16_t>(top + place()),
                               static_cast<int16_t>(left + place())};
        const bool dither = r.below(2) == 0;
        RK_LayerDef src = from.record();
        const RK_LayerDef dst = got.record();
        const RK_WorldX<From> source(&src, false);
        RK_WorldX<To> target(&dst, false);

        RK_ResetDitherRandomIndex();
        for (int y = 0; y < from.height(); ++y) {
            const int to_y = v + y - rect.top;
            const int first = std::max<int>({rect.left, 0, rect.left - h});
            const int end = std::min<int>({rect.right, from.width(), got.width() + rect.left - h});
            if (y < rect.top || y >= rect.bottom || to_y < 0 || to_y >= got.height() || first >= end)
                continue;
            convertRow(from.row(y) + first, end - first, dither, expected.row(to_y) + h + first - rect.left);
        }
        RK_ResetDitherRandomIndex();
        target.CopyRectPossiblyDifferentBitdepth(&source, rect, dither, h, v, nullptr);
        ASSERT_TRUE(got == expected) << sizeof(From) << " to " << sizeof(To);
    }
}
template <class From>
void copyFrom() {
    copyMany<From, RK_Pixel8>();
    copyMany<From, RK_Pixel16>();
    copyMany<From, RK_PixelFloat>();
}
TEST_F(CopyDepthsTest, RowsAreConvertedByTheTwoDepths) {
    copyFrom<RK_Pixel8>();
    copyFrom<RK_Pixel16>();
    copyFrom<RK_PixelFloat>();
}

TEST_F(CopyDepthsTest, ARectangleOutsideTheSourceCopiesNothing) {
    const GEO_Rect outside[] = {{0, 5, 3, 9},  {3, 0, 9, 5}, {-4, 0, 0, 5},
                                {0, -4, 3, 0}, {2, 2, 2, 4}, {2, 4, 3, 2}};
    for (const int16_t from : kDepths)
        for (const int16_t to : kDepths) {
            const World src(RK_World::New(5, 3, from, 0)), dst(RK_World::New(5, 3, to, RK_kWorldClear));
            src->Fill(RK_PixelFloat{1, 1, 1, 1}, nullptr);
            for (const GEO_Rect& rect : outside)
                dst->CopyRectPossiblyDifferentBitdepth(src.get(), rect, true, 0, 0, nullptr);
            for (int i = 0; i < to / 2; ++i) EXPECT_EQ(static_cast<const uint8_t*>(dst->record.data)[i], 0);
        }
}

TEST_F(CopyDepthsTest, AWorldIsMovedWithinItself) {
    for (const int shift : {-1, 1}) {
        const World world(RK_World::New(1, 5, 8, 0));
        auto* const column = static_cast<uint8_t*>(world->record.data);
        for (int y = 0; y < 5; ++y) column[y * world->record.rowbytes] = static_cast<uint8_t>(y);
        world->CopyRectPossiblyDifferentBitdepth(world.get(), kWhole, true, 0, static_cast<int16_t>(shift),
                                                 nullptr);
        for (int y = 0; y < 5; ++y) {
            const bool moved = y - shift >= 0 && y - shift < 5;
            EXPECT_EQ(column[y * world->record.rowbytes], moved ? y - shift : y);
        }
    }
}

struct Calls {
    int made = 0, stop_at = 0;
    RK_Long last = 0, total = 0;
    static RK_Long progress(void* refcon, RK_Long current, RK_Long maximum) {
        auto* const calls = static_cast<Calls*>(refcon);
        calls->last = current;
        calls->total = maximum;
        return ++calls->made == calls->stop_at ? 517 : 0;
    }
};

TEST_F(CopyDepthsTest, EveryCheckInCanStopTheCopy) {
    for (const int16_t from : kDepths)
        for (const int16_t to : kDepths) {
            const World src(RK_World::New(1, 200, from, RK_kWorldClear)),
                dst(RK_World::New(1, 200, to, RK_kWorldClear));
            for (int stop_at = 0; stop_at <= 3; ++stop_at) {
                Calls calls;
                calls.stop_at = stop_at;
                RK_ProgressInfo progress = {&calls, nullptr, Calls::progress};
                const RK_Long thrown = test::thrownBy([&] {
                    dst->CopyRectPossiblyDifferentBitdepth(src.get(), kWhole, false, 0, 0, &progress);
                });
                EXPECT_EQ(thrown, stop_at == 0 ? 0 : 517);
                EXPECT_EQ(calls.made, stop_at == 0 ? 3 : stop_at);
                EXPECT_EQ(calls.last, calls.made * 64 - 1);
                EXPECT_EQ(calls.total, 200);
            }
        }
}

TEST_F(CopyDepthsTest, NoSourceAndNoKnownDepthAreToldAndThrown) {
    for (const int16_t to : kDepths) {
        const World dst(RK_World::New(5, 3, to, 0));
        EXPECT_EQ(test::thrownBy(
                      [&] { dst->CopyRectPossiblyDifferentBitdepth(nullptr, kWhole, false, 0, 0, nullptr); }),
                  3);
        EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_World::CopyRectPossiblyDifferentBitdepth()"));
        for (const RK_Long depth : {RK_Long{0}, RK_Long{24}, RK_Long{64}, RK_Long{-8}}) {
            test::OddWorld odd(depth);
            EXPECT_EQ(test::thrownBy(
                          [&] { dst->CopyRectPossiblyDifferentBitdepth(&odd, kWhole, true, 0, 0, nullptr); }),
                      3);
            EXPECT_TRUE(
                test::onlyReport(RefHost::ReportKind::Error, RK_kLocation | 1,
                                 "Unknown bit depth in RK_World::CopyRectPossiblyDifferentBitdepths"));
        }
    }
}

TEST_F(CopyDepthsTest, WorldsWithoutPixelsAreLeftAlone) {
    RK_LayerDef empty = {};
    empty.width = empty.height = 4;
    RK_WorldX<RK_Pixel8> none(&empty, false);
    const World world(RK_World::New(4, 4, 16, RK_kWorldClear));
    none.CopyRectPossiblyDifferentBitdepth(world.get(), kWhole, true, 0, 0, nullptr);
    world->CopyRectPossiblyDifferentBitdepth(&none, kWhole, true, 0, 0, nullptr);
}

}  // namespace
