// Summed-area tables, decimation and the behind scans against their plain twins.
#include <memory>

#include <gtest/gtest.h>

#include "RK/indep/sample/RK_Batch.h"
#include "RK/indep/sample/RK_Decimate.h"
#include "RK/indep/sample/RK_SummedAreaTable.h"
#include "RK/indep/world/RK_World.h"
#include "test/plain/PlainReduce.h"
#include "test/plain/SampleWorlds.h"

namespace {

using test::side;
using test::World;

template <class Entry>
const Entry* cellsOf(const RK_SummedAreaTable& t);
template <>
const RK_PixelFloat* cellsOf(const RK_SummedAreaTable& t) {
    return t.float_table;
}
template <>
const RK_PixelDouble* cellsOf(const RK_SummedAreaTable& t) {
    return t.double_table;
}
float edge(test::Random& r, int size) {
    const float v = (r.unit() * 1.6f - 0.3f) * static_cast<float>(size);
    return r.below(3) == 0 ? std::floor(v) + (r.below(2) == 0 ? 0.5f : 0.0f) : v;
}

template <class P, class Entry>
void tableMany() {
    test::Random r(sizeof(P));
    test::GuardedRows guarded;
    const int count = test::amount(1500);
    for (int i = 0; i < count; ++i) {
        const int width = side(r), height = side(r);
        World<P> world =
            sizeof(P) == 16 ? World<P>(r, width, height) : test::sampleWorld<P>(r, width, height);
        test::guardSome(r, guarded, world);
        RK_LayerDef record = world.record;
        const std::unique_ptr<RK_World> object(RK_World::NewReference(&record));
        const RK_SummedAreaTable table(object.get());
        const Entry* const got = cellsOf<Entry>(table);
        const std::vector<Entry> cells = plain::areaTable<P, Entry>(record);
        for (size_t k = 0; k < cells.size(); ++k) {
            const Entry& e = cells[k];
            ASSERT_TRUE(got[k].alpha == e.alpha && got[k].red == e.red && got[k].green == e.green &&
                        got[k].blue == e.blue)
                << "cell " << k << ": expected " << e.alpha << ", got " << got[k].alpha << " of " << width
                << " by " << height;
        }
        for (int k = 0; k < 60; ++k) {
            const float l = edge(r, width), t = edge(r, height), right = edge(r, width), b = edge(r, height);
            const int li = static_cast<int>(l), ti = static_cast<int>(t), ri = static_cast<int>(right),
                      bi = static_cast<int>(b);
            P draft = test::pixel<P>(r), smooth = draft;
            RK_SummedAreaTable_SampleDraft<P, Entry>(width, height, got, li, ti, ri, bi, &draft);
            RK_SummedAreaTable_SampleAA<P, Entry>(width, height, got, l, t, right, b, &smooth);
            const P draft_twin = plain::boxDraft<P>(cells, width, height, li, ti, ri, bi);
            const P smooth_twin = plain::boxSmooth<P>(cells, width, height, l, t, right, b);
            ASSERT_TRUE(test::samePixel(draft_twin, draft))
                << "draft " << li << ", " << ti << ", " << ri << ", " << bi << " of " << width << " by "
                << height << ": expected " << test::show(draft_twin) << ", got " << test::show(draft);
            ASSERT_TRUE(test::samePixel(smooth_twin, smooth))
                << "smooth " << l << ", " << t << ", " << right << ", " << b << " of " << width << " by "
                << height << ": expected " << test::show(smooth_twin) << ", got " << test::show(smooth);
        }
    }
}
TEST(TablesAgainstPlain, CellsAndBoxesOf8Bits) { tableMany<RK_Pixel8, RK_PixelFloat>(); }
TEST(TablesAgainstPlain, CellsAndBoxesOf16Bits) { tableMany<RK_Pixel16, RK_PixelFloat>(); }
TEST(TablesAgainstPlain, CellsAndBoxesOfFloat) { tableMany<RK_PixelFloat, RK_PixelDouble>(); }

template <class P>
plain::Rows<P> rowsOf(const RK_LayerDef& world) {
    plain::Rows<P> rows(static_cast<size_t>(world.height));
    for (size_t y = 0; y < rows.size(); ++y)
        for (int x = 0; x < world.width; ++x) rows[y].push_back(plain::at<P>(world, x, static_cast<int>(y)));
    return rows;
}
template <class P>
testing::AssertionResult sameRows(const plain::Rows<P>& rows, const RK_LayerDef& got) {
    if (got.height != static_cast<int>(rows.size()) || got.width != static_cast<int>(rows[0].size()))
        return testing::AssertionFailure() << "a result of " << got.width << " by " << got.height;
    for (int y = 0; y < got.height; ++y) {
        const P* const expected = rows[static_cast<size_t>(y)].data();
        const int x = test::firstDifference(expected, &plain::at<P>(got, 0, y), got.width);
        if (x >= 0)
            return testing::AssertionFailure()
                   << "at " << x << ", " << y << " expected " << test::show(expected[x]) << ", got "
                   << test::show(plain::at<P>(got, x, y));
    }
    return testing::AssertionSuccess();
}

template <class P>
void halveMany(bool gauss) {
    test::Random r(sizeof(P) + (gauss ? 1 : 0));
    test::GuardedRows guarded;
    const int count = test::amount(6000);
    for (int i = 0; i < count; ++i) {
        const bool keep_odd = r.below(2) == 0;
        const int width = side(r) + (keep_odd ? 0 : 1), height = side(r) + (keep_odd ? 0 : 1);
        World<P> world = test::sampleWorld<P>(r, width, height);
        test::guardSome(r, guarded, world);
        const size_t half_width = static_cast<size_t>(width + keep_odd) / 2;
        plain::Rows<P> rows(static_cast<size_t>(height + keep_odd) / 2, std::vector<P>(half_width));
        plain::halve(rowsOf<P>(world.record), keep_odd, gauss, rows);
        RK_LayerDef record = world.record;
        const std::unique_ptr<RK_World> object(RK_World::NewReference(&record));
        const RK_World* made = nullptr;
        (gauss ? RK_NewGaussFilteredDecimateByTwo : RK_NewBoxFilteredDecimateByTwo)(object.get(), keep_odd,
                                                                                    &made);
        const std::unique_ptr<const RK_World> got(made);
        ASSERT_TRUE(sameRows(rows, got->record))
            << width << " by " << height << (keep_odd ? ", odd kept" : "");
    }
}
// Destinations of any size, smaller and larger than the half.
template <class P>
void halveIntoMany(bool gauss) {
    test::Random r(sizeof(P) + (gauss ? 3 : 2));
    test::GuardedRows src_rows, dst_rows;
    const int count = test::amount(4000);
    for (int i = 0; i < count; ++i) {
        const int width = side(r), height = side(r);
        World<P> src = test::sampleWorld<P>(r, width, height), dst(r, side(r), side(r));
        test::guardSome(r, src_rows, src);
        test::guardSome(r, dst_rows, dst);
        const bool keep_odd = r.below(2) == 0;
        plain::Rows<P> rows = rowsOf<P>(dst.record);
        plain::halve(rowsOf<P>(src.record), keep_odd, gauss, rows);
        RK_LayerDef src_record = src.record, dst_record = dst.record;
        const std::unique_ptr<RK_World> src_object(RK_World::NewReference(&src_record));
        const std::unique_ptr<RK_World> dst_object(RK_World::NewReference(&dst_record));
        (gauss ? RK_GaussFilteredDecimateByTwo : RK_BoxFilteredDecimateByTwo)(src_object.get(), keep_odd,
                                                                              dst_object.get());
        ASSERT_TRUE(sameRows(rows, dst.record))
            << width << " by " << height << (keep_odd ? ", odd kept" : "") << ", into " << dst.record.width
            << " by " << dst.record.height;
        ASSERT_TRUE(dst.picture.guardsWhole());
    }
}
TEST(DecimationAgainstPlain, Box) {
    halveMany<RK_Pixel8>(false);
    halveMany<RK_Pixel16>(false);
}
TEST(DecimationAgainstPlain, Gaussian) {
    halveMany<RK_Pixel8>(true);
    halveMany<RK_Pixel16>(true);
}
TEST(DecimationAgainstPlain, BoxIntoOtherSizes) {
    halveIntoMany<RK_Pixel8>(false);
    halveIntoMany<RK_Pixel16>(false);
}
TEST(DecimationAgainstPlain, GaussianIntoOtherSizes) {
    halveIntoMany<RK_Pixel8>(true);
    halveIntoMany<RK_Pixel16>(true);
}

enum class Reads { kNearest, kBilinear, kArea };

template <class P>
void behindMany(RK_BehindScan<P>* scan, Reads reads) {
    test::Random r(sizeof(P) + 90);
    std::vector<uint8_t> multiply(256 * 256);
    for (int o = 0; o < 256; ++o)
        for (int a = 0; a < 256; ++a)
            multiply[static_cast<size_t>(o * 256 + a)] = static_cast<uint8_t>(plain::Int8::mul(o, a));
    test::GuardedRows src_rows, out_rows;
    const int count = test::amount(4000);
    for (int i = 0; i < count; ++i) {
        const int width = side(r), height = side(r);
        World<P> src = test::sampleWorld<P>(r, width, height);
        const World<P> row(r, side(r), 1);
        test::guardSome(r, src_rows, src);
        RK_SampPB pb = test::sampleBlock(src.record);
        pb.motion_samples = static_cast<int32_t>(r.below(10));
        pb.x_radius = 0x4000 + static_cast<int32_t>(r.below(0x20000));
        pb.y_radius = 0x4000 + static_cast<int32_t>(r.below(0x20000));
        pb.comp_mode.opacity = test::opacity<RK_Pixel8>(r);
        pb.comp_mode.opacity16 = static_cast<uint16_t>(r.below(3) == 0 ? 32768 : r.below(32769));
        const bool full = pb.comp_mode.opacity == 255;
        pb.fcm_table = full ? nullptr : multiply.data();
        int32_t line[4], steps[4];
        for (int k = 0; k < 4; ++k) {
            line[k] = (static_cast<int32_t>(r.below(static_cast<uint32_t>(k % 2 ? height : width) + 6)) - 3) *
                          0x10000 +
                      test::fraction(r);
            steps[k] = static_cast<int32_t>(r.below(0x40000)) - 0x20000;
        }
        World<P> expected(row), got(row);
        test::guardSome(r, out_rows, got);
        const auto sample = [&](int32_t x, int32_t y) {
            if (reads == Reads::kNearest) return plain::nearest<P>(x, y, src.record);
            return plain::sampled(x, y, pb, reads == Reads::kArea, KIT_G_CPU_DataP->has_sse2 != 0,
                                  static_cast<P*>(nullptr));
        };
        plain::behind<P>(row.record.width, line, steps, pb, expected.picture.row(0), sample);
        ASSERT_EQ(scan(nullptr, static_cast<int16_t>(row.record.width), line, steps, &pb,
                       static_cast<P*>(got.record.data)),
                  0);
        ASSERT_EQ(test::difference(row, expected, got), "")
            << pb.motion_samples << " samples, opacity " << int{pb.comp_mode.opacity} << " or "
            << pb.comp_mode.opacity16;
    }
}
TEST(BehindScansAgainstPlain, Nearest) {
    behindMany<RK_Pixel8>(RKp_BehindNearest, Reads::kNearest);
    behindMany<RK_Pixel16>(RKp_BehindNearest16, Reads::kNearest);
}
TEST(BehindScansAgainstPlain, Bilinear) {
    behindMany<RK_Pixel8>(RKp_BehindBilinear, Reads::kBilinear);
    behindMany<RK_Pixel16>(RKp_BehindBilinear16, Reads::kBilinear);
}
TEST(BehindScansAgainstPlain, Area) {
    behindMany<RK_Pixel8>(RKp_BehindArea, Reads::kArea);
    behindMany<RK_Pixel16>(RKp_BehindArea16, Reads::kArea);
}

}  // namespace
