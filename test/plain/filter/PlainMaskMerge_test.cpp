// Merging masks into alpha, by scan and by world, and track matte rows, against their plain twins.
#include <memory>

#include <gtest/gtest.h>

#include "RK/indep/composite/RK_TrackMatte.h"
#include "RK/indep/filter/RK_MergeMaskAlpha.h"
#include "RK/indep/frame/RK_OverFuncs.h"
#include "RK/indep/world/RK_World.h"
#include "refhost/RefHost.h"
#include "test/Reports.h"
#include "test/plain/filter/Masks.h"
#include "test/plain/filter/PlainMaskMerge.h"

namespace {

using plain::Mask;
using test::Random;
using test::World;

// The scan of mask M on pixels P lies in this slot.
template <class P, class M>
constexpr int kScanSlot = 0;
template <>
constexpr int kScanSlot<RK_Pixel8, uint8_t> = 55;
template <>
constexpr int kScanSlot<RK_Pixel16, uint8_t> = 62;
template <>
constexpr int kScanSlot<RK_Pixel16, uint16_t> = 93;
template <>
constexpr int kScanSlot<RK_PixelFloat, uint16_t> = 113;
template <>
constexpr int kScanSlot<RK_PixelFloat, uint8_t> = 114;

template <class P, class M>
using Scan = RK_Long(void* ref, RK_Long first, RK_Long last, const M* mask_row, P* pixel_row);

template <class P>
P mergePixel(Random& r) {
    P p = r.below(8) == 0 ? test::wildPixel<P>(r) : test::pixel<P>(r);
    return p;
}
template <class P, class M>
void compareScan() {
    auto* const scan = reinterpret_cast<Scan<P, M>*>(RKp_G_OverFuncs[kScanSlot<P, M>]);
    ASSERT_NE(scan, nullptr);
    Random r(kScanSlot<P, M>);
    const int wanted = test::amount(1 << 20);
    for (int done = 0; done < wanted;) {
        const int count = 1 + static_cast<int>(r.below(r.below(4) == 0 ? 300 : 40));
        done += count;
        const size_t lead = r.below(4), mask_lead = r.below(16);
        std::vector<P> before(static_cast<size_t>(count) + lead);
        for (P& p : before) p = mergePixel<P>(r);
        std::vector<M> mask(static_cast<size_t>(count) + mask_lead);
        const uint32_t kind = r.below(4);
        for (M& m : mask)
            m = kind == 0                      ? M(0)
                : kind == 1 && r.below(8) != 0 ? M(sizeof(M) == 1 ? 255 : 32768)
                                               : test::channel(r, M{});
        const int first = static_cast<int>(r.below(static_cast<uint32_t>(count) + 1));
        const int last = first + static_cast<int>(r.below(static_cast<uint32_t>(count - first) + 1));
        std::vector<P> expected = before, got = before;
        // A row of a mask that reaches no further than its span.
        const M* const row = first == last ? nullptr : mask.data() + mask_lead;
        ASSERT_EQ(scan(nullptr, first, last, row, got.data() + lead), 0);
        plain::mergeRow(first, last, row, expected.data() + lead);
        const int i = test::firstDifference(expected.data(), got.data(), static_cast<int>(got.size()));
        if (i < 0) continue;
        const size_t n = static_cast<size_t>(i), c = n < lead ? 0 : n - lead;
        FAIL() << "slot " << kScanSlot<P, M> << ", column " << c << " of [" << first << ", " << last << ")"
               << (row != nullptr ? ", mask " + test::showChannel(row[c]) : "") << "\n  on       "
               << test::show(before[n]) << "\n  expected " << test::show(expected[n]) << "\n  got      "
               << test::show(got[n]);
    }
}
TEST(MaskScansAgainstPlain, EqualOn8Bits) { compareScan<RK_Pixel8, uint8_t>(); }
TEST(MaskScansAgainstPlain, EqualOn16Bits) {
    compareScan<RK_Pixel16, uint8_t>();
    compareScan<RK_Pixel16, uint16_t>();
}
TEST(MaskScansAgainstPlain, EqualOnFloat) {
    compareScan<RK_PixelFloat, uint8_t>();
    compareScan<RK_PixelFloat, uint16_t>();
}
// Every mask value against every alpha.
TEST(MaskScansAgainstPlain, EqualOnEveryPairOfBytes) {
    auto* const scan = reinterpret_cast<Scan<RK_Pixel8, uint8_t>*>(RKp_G_OverFuncs[55]);
    for (int m = 0; m < 256; ++m) {
        const std::vector<uint8_t> mask(256, static_cast<uint8_t>(m));
        std::vector<RK_Pixel8> expected;
        for (int a = 0; a < 256; ++a) expected.push_back({uint8_t(a), 1, 2, 3});
        std::vector<RK_Pixel8> got = expected;
        ASSERT_EQ(scan(nullptr, 0, 256, mask.data(), got.data()), 0);
        plain::mergeRow(0, 256, mask.data(), expected.data());
        ASSERT_EQ(test::firstDifference(expected.data(), got.data(), 256), -1) << "mask " << m;
    }
}

struct Aborts {
    int calls = 0, stop_at = 0;
    static RK_Long abort(void* refcon) {
        Aborts* const a = static_cast<Aborts*>(refcon);
        return ++a->calls == a->stop_at ? 517 : 0;
    }
};
int16_t placeOf(Random& r, int size) {
    static const int16_t far[] = {INT16_MIN, INT16_MAX, -500, 500};
    return r.below(32) == 0 ? far[r.below(4)] : r.below(2) == 0 ? int16_t(0) : test::about(r, size);
}
template <class P, class M>
void mergeMany(int full) {
    Random r(sizeof(P) * 3 + sizeof(M));
    const int count = test::amount(full);
    for (int i = 0; i < count; ++i) {
        const World<P> before(r, test::side(r), test::side(r), r.below(4) == 0);
        World<P> expected(before), got(before);
        const Mask mask = test::randomMask(r, test::side(r), test::side(r), sizeof(M) * 8);
        const test::Buffer buffer(mask);
        const int16_t x = placeOf(r, got.record.width), y = placeOf(r, got.record.height);
        const GEO_Rect one = test::randomRect(r, got.record.width, got.record.height);
        const GEO_Rect other = test::randomRect(r, got.record.width, got.record.height);
        const GEO_Rect* const area = r.below(2) == 0 ? nullptr : &one;
        const GEO_Rect* const mask_area = r.below(2) == 0 ? nullptr : &other;
        Aborts aborts;
        aborts.stop_at = r.below(4) == 0 ? 1 + static_cast<int>(r.below(6)) : 0;
        RK_ProgressInfo progress = {&aborts, Aborts::abort, nullptr};
        RK_LayerDef record = got.record;
        const std::unique_ptr<RK_World> world(RK_World::NewReference(&record));
        const RK_Long code = test::thrownBy([&] {
            RK_MergeMaskAlpha(r.below(4) == 0 && aborts.stop_at == 0 ? nullptr : &progress, x, y, area,
                              &buffer.uno, mask_area, world.get());
        });
        const bool stopped = aborts.stop_at != 0 && aborts.calls == aborts.stop_at;
        plain::mergeMask<P, M>(x, y, area, mask, mask_area, expected.record,
                               stopped ? aborts.stop_at - 1 : INT64_MAX);
        ASSERT_EQ(code, stopped ? 517 : 0);
        ASSERT_EQ(test::difference(before, expected, got), "")
            << "mask of " << mask.width << " by " << mask.height << " at " << x << ", " << y << ", area "
            << (area != nullptr ? test::show(one) : "none") << ", mask area "
            << (mask_area != nullptr ? test::show(other) : "none");
    }
}
TEST(MergeMaskAgainstPlain, EqualOn8Bits) { mergeMany<RK_Pixel8, uint8_t>(6000); }
TEST(MergeMaskAgainstPlain, EqualOn16Bits) {
    mergeMany<RK_Pixel16, uint8_t>(4000);
    mergeMany<RK_Pixel16, uint16_t>(4000);
}
TEST(MergeMaskAgainstPlain, EqualOnFloat) {
    mergeMany<RK_PixelFloat, uint8_t>(4000);
    mergeMany<RK_PixelFloat, uint16_t>(4000);
}

template <class P>
void trackMany() {
    Random r(sizeof(P));
    const int wanted = test::amount(1 << 20);
    for (int done = 0; done < wanted;) {
        const int width = static_cast<int>(r.below(60)), count = static_cast<int>(r.below(80)) - 2;
        done += 40;
        std::vector<P> pixels(static_cast<size_t>(width)), before(80);
        for (P& p : pixels) p = test::pixel<P>(r);
        for (P& p : before) p = test::pixel<P>(r);
        const int offset = r.below(2) == 0 ? 0 : static_cast<int>(r.below(140)) - 70;
        const int given = r.below(16) == 0 ? -static_cast<int>(r.below(5)) : width;
        const int kind = static_cast<int>(r.below(4));
        std::vector<P> expected = before, got = before;
        RK_PrepTrackMatteUniv(count, pixels.data(), offset, given, kind, sizeof(P) == 8, got.data());
        plain::trackMatte(count, pixels.data(), offset, std::max(given, 0), kind, expected.data());
        const int i = test::firstDifference(expected.data(), got.data(), static_cast<int>(got.size()));
        ASSERT_EQ(i, -1) << "kind " << kind << ", pixel " << i << " of " << count << ", offset " << offset
                         << ", width " << given;
    }
}
TEST(TrackMatteAgainstPlain, EqualAt8Bits) { trackMany<RK_Pixel8>(); }
TEST(TrackMatteAgainstPlain, EqualAt16Bits) { trackMany<RK_Pixel16>(); }

}  // namespace
