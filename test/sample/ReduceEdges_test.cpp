// The edges of tables and decimation: smooth boxes half outside, memory that fails at every depth,
// destinations of other sizes.
#include <gtest/gtest.h>

#include <memory>

#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/sample/RK_Decimate.h"
#include "RK/indep/sample/RK_SummedAreaTable.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "refhost/RefHost.h"
#include "test/Pixels.h"
#include "test/Reports.h"

namespace {

using test::thrownBy;

template <class P>
constexpr auto kFullOf = static_cast<decltype(P::red)>(sizeof(P) == 4   ? 255
                                                       : sizeof(P) == 8 ? 32768
                                                                        : 1);
template <class P>
void fillAll(RK_WorldX<P>& world, const P& pixel) {
    for (int32_t y = 0; y < world.height(); ++y)
        for (int32_t x = 0; x < world.width(); ++x) world.row(y)[x] = pixel;
}
template <class P>
void fillRandom(RK_WorldX<P>& world, uint32_t seed) {
    test::Random r(seed);
    for (int32_t y = 0; y < world.height(); ++y)
        for (int32_t x = 0; x < world.width(); ++x) world.row(y)[x] = test::pixel<P>(r);
}

// ---- Tables ---------------------------------------------------------------------------------------------

template <class P, class Entry>
class Boxes {
  public:
    explicit Boxes(const RK_World* world) : table_(world) {}
    P draft(int32_t l, int32_t t, int32_t r, int32_t b) const {
        P out = {7, 7, 7, 7};
        RK_SummedAreaTable_SampleDraft<P, Entry>(table_.width, table_.height, cells(), l, t, r, b, &out);
        return out;
    }
    P smooth(float l, float t, float r, float b) const {
        P out = {7, 7, 7, 7};
        RK_SummedAreaTable_SampleAA<P, Entry>(table_.width, table_.height, cells(), l, t, r, b, &out);
        return out;
    }

  private:
    const Entry* cells() const {
        if constexpr (sizeof(Entry) == sizeof(RK_PixelDouble)) {
            return table_.double_table;
        } else {
            return table_.float_table;
        }
    }
    RK_SummedAreaTable table_;
};

template <class P, class Entry>
void boxEdges() {
    constexpr auto full = kFullOf<P>;
    RK_WorldX<P> world(8, 6, 0);
    fillAll<P>(world, {full, full, static_cast<decltype(P::red)>(full / 4), 0});
    const Boxes<P, Entry> boxes(&world);
    // No extent, none the right way round, outside on each side.
    for (const P& nothing :
         {boxes.smooth(2, 2, 2, 5), boxes.smooth(5, 2, 3, 4), boxes.smooth(8, 0, 12, 3),
          boxes.smooth(-9, 0, -0.5f, 3), boxes.smooth(0, -4, 3, -0.5f), boxes.smooth(0, 5.5f, 3, 9),
          boxes.draft(2, 2, 2, 5), boxes.draft(0, 6, 3, 9), boxes.draft(3, 4, 5, 4)})
        EXPECT_TRUE(test::sameBytes(P{}, nothing));
    // Half outside: half the alpha, all of the colour.
    const P half = boxes.smooth(-4.5f, -0.5f, 3.5f, 4.5f);
    EXPECT_NEAR(double(full) / 2, double(half.alpha), sizeof(P) == 16 ? 1e-5 : 0.51);
    EXPECT_NEAR(double(full), double(half.red), double(full) * 1e-5);
    EXPECT_NEAR(double(full / 4), double(half.green), sizeof(P) == 16 ? 1e-5 : 0.51);
    EXPECT_EQ(decltype(P::red)(0), half.blue);
    const P quarter = boxes.draft(-4, -3, 4, 3);
    EXPECT_NEAR(double(full) / 4, double(quarter.alpha), sizeof(P) == 16 ? 1e-5 : 0.51);
    // Far beyond, the area that was asked for counts: nearly nothing is left.
    EXPECT_NEAR(0, double(boxes.draft(INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX).alpha), 1e-9);
}
TEST(TableEdges, BoxesHalfOutsideAreHalfAsOpaqueAtEveryDepth) {
    boxEdges<RK_Pixel8, RK_PixelFloat>();
    boxEdges<RK_Pixel16, RK_PixelFloat>();
    boxEdges<RK_PixelFloat, RK_PixelDouble>();
}

template <class P>
void tableWithoutMemory() {
    RK_WorldX<P> world(9, 7, 0);
    fillRandom(world, 3);
    const auto before = RefHost::Memory();
    int failures = 0;
    for (int64_t n = 1;; ++n) {
        RefHost::TakeReports();
        RefHost::FailAllocation(n);
        const RK_Long thrown = thrownBy([&] { const RK_SummedAreaTable table(&world); });
        const bool reached = RefHost::AllocationsSince() >= n;
        RefHost::FailAllocation(0);
        EXPECT_EQ(before.blocks, RefHost::Memory().blocks);
        EXPECT_EQ(before.bytes, RefHost::Memory().bytes);
        EXPECT_EQ(before.accounted, RefHost::Memory().accounted);
        if (!reached) {
            EXPECT_EQ(0, thrown);
            break;
        }
        ++failures;
        EXPECT_EQ(4, thrown);
        EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, RKp_Text(RK_kMsg_BlurMemory)));
    }
    EXPECT_EQ(2, failures);  // the table, and two rows of sums
}
TEST(TableEdges, EveryAllocationThatFailsThrows4AtEveryDepth) {
    tableWithoutMemory<RK_Pixel8>();
    tableWithoutMemory<RK_Pixel16>();
    tableWithoutMemory<RK_PixelFloat>();
}

// ---- Decimation -----------------------------------------------------------------------------------------

using Halve = void(const RK_World*, bool, RK_World*);
using Make = void(const RK_World*, bool, const RK_World**);

template <class P>
void halvingWithoutMemory() {
    RK_WorldX<P> src(9, 7, 0), dst(5, 4, 0);
    fillRandom(src, 5);
    for (const bool keep_odd : {false, true}) {
        for (Halve* const halve : {&RK_BoxFilteredDecimateByTwo, &RK_GaussFilteredDecimateByTwo}) {
            int failures = 0;
            for (int64_t n = 1;; ++n) {
                fillRandom(dst, 6);
                RK_WorldX<P> untouched(5, 4, 0);
                fillRandom(untouched, 6);
                const auto before = RefHost::Memory();
                RefHost::FailAllocation(n);
                const RK_Long thrown = thrownBy([&] { halve(&src, keep_odd, &dst); });
                const bool reached = RefHost::AllocationsSince() >= n;
                RefHost::FailAllocation(0);
                EXPECT_EQ(before.blocks, RefHost::Memory().blocks);
                EXPECT_EQ(before.bytes, RefHost::Memory().bytes);
                if (!reached) {
                    EXPECT_EQ(0, thrown);
                    break;
                }
                ++failures;
                EXPECT_EQ(4, thrown);
                for (int32_t y = 0; y < 4; ++y)
                    ASSERT_EQ(0, std::memcmp(untouched.row(y), dst.row(y), 5 * sizeof(P))) << n;
            }
            EXPECT_GT(failures, 0);
        }
        for (Make* const make : {&RK_NewBoxFilteredDecimateByTwo, &RK_NewGaussFilteredDecimateByTwo}) {
            const auto before = RefHost::Memory();
            int failures = 0;
            for (int64_t n = 1;; ++n) {
                const RK_World* out = &src;
                RefHost::FailAllocation(n);
                const RK_Long thrown = thrownBy([&] { make(&src, keep_odd, &out); });
                const bool reached = RefHost::AllocationsSince() >= n;
                RefHost::FailAllocation(0);
                if (!reached) {
                    EXPECT_EQ(0, thrown);
                    ASSERT_NE(out, &src);
                    delete out;
                }
                EXPECT_EQ(before.blocks, RefHost::Memory().blocks);
                EXPECT_EQ(before.bytes, RefHost::Memory().bytes);
                if (!reached) break;
                ++failures;
                EXPECT_EQ(4, thrown);
                EXPECT_EQ(&src, out);
            }
            EXPECT_GT(failures, 1);
        }
    }
    RefHost::TakeReports();
}
TEST(DecimationEdges, EveryAllocationThatFailsThrows4AndTouchesNothing) {
    halvingWithoutMemory<RK_Pixel8>();
    halvingWithoutMemory<RK_Pixel16>();
}

// Refusals leave a caller's pointer and world as they were.
TEST(DecimationEdges, RefusalsTouchNothing) {
    RK_WorldX<RK_PixelFloat> real(4, 4, RK_kWorldClear), real_dst(2, 2, RK_kWorldClear);
    RK_WorldX<RK_Pixel8> src(4, 4, RK_kWorldClear);
    RK_WorldX<RK_Pixel16> other(2, 2, 0);
    fillRandom(other, 4);
    const RK_Pixel16 kept = other.row(1)[1];
    const RK_World* out = &src;
    const auto before = RefHost::Memory();
    for (Make* const make : {&RK_NewBoxFilteredDecimateByTwo, &RK_NewGaussFilteredDecimateByTwo}) {
        EXPECT_EQ(3, thrownBy([&] { make(&real, true, &out); }));
        EXPECT_EQ(0, thrownBy([&] { make(nullptr, true, &out); }));
        EXPECT_EQ(&src, out);
    }
    for (Halve* const halve : {&RK_BoxFilteredDecimateByTwo, &RK_GaussFilteredDecimateByTwo}) {
        EXPECT_EQ(3, thrownBy([&] { halve(&src, true, &other); }));
        EXPECT_EQ(3, thrownBy([&] { halve(&other, true, &src); }));
        EXPECT_EQ(3, thrownBy([&] { halve(&real, true, &real_dst); }));
        EXPECT_EQ(3, thrownBy([&] { halve(&src, true, nullptr); }));
        EXPECT_EQ(3, thrownBy([&] { halve(nullptr, true, &src); }));
    }
    EXPECT_TRUE(test::sameBytes(kept, other.row(1)[1]));
    EXPECT_EQ(before.blocks, RefHost::Memory().blocks);
}

// Four by two onto four by one: the box has pairs for two outputs and leaves the others; the Gaussian
// computes all, from the taps that exist.
TEST(DecimationEdges, OutputsWithoutASourcePairStayUnderTheBoxAndFadeUnderTheGaussian) {
    RK_WorldX<RK_Pixel8> src(4, 2, 0), dst(4, 1, 0);
    fillAll<RK_Pixel8>(src, {200, 40, 50, 60});
    fillAll<RK_Pixel8>(dst, {1, 2, 3, 4});
    RK_BoxFilteredDecimateByTwo(&src, false, &dst);
    for (int x = 0; x < 4; ++x)
        EXPECT_TRUE(
            test::sameBytes(x < 2 ? RK_Pixel8{200, 40, 50, 60} : RK_Pixel8{1, 2, 3, 4}, dst.row(0)[x]))
            << x;
    fillAll<RK_Pixel8>(dst, {1, 2, 3, 4});
    RK_GaussFilteredDecimateByTwo(&src, false, &dst);
    // Down: 0.4 + 0.25 + nothing below: 130. Across, at columns 0, 2, 4 and 6: 0.7, 0.95, 0.3 and nothing.
    const uint8_t alphas[4] = {91, 124, 39, 0};
    for (int x = 0; x < 4; ++x) EXPECT_EQ(alphas[x], dst.row(0)[x].alpha) << x;
    EXPECT_EQ(40, dst.row(0)[2].red);
    EXPECT_EQ(0, dst.row(0)[3].red);
}

// The pass that leaves fewer pixels in between comes first, which the box shows: it takes the first pixel's
// alpha.
TEST(DecimationEdges, TheCheaperPassComesFirst) {
    const auto halved = [](int32_t w, int32_t h, int32_t W, int32_t H, auto at) {
        RK_WorldX<RK_Pixel8> src(w, h, RK_kWorldClear), dst(W, H, RK_kWorldClear);
        for (int32_t y = 0; y < 2; ++y)
            for (int32_t x = 0; x < 2; ++x) src.row(y)[x] = at(x, y);
        RK_BoxFilteredDecimateByTwo(&src, true, &dst);
        return dst.row(0)[0];
    };
    // Full alpha in one corner.
    const auto corner = [](int32_t x, int32_t y) {
        return x == 1 && y == 0 ? RK_Pixel8{255, 200, 0, 0}
                                : RK_Pixel8{static_cast<uint8_t>(x == 0 && y == 1 ? 128 : 0), 100, 0, 0};
    };
    const auto turned = [&](int32_t x, int32_t y) { return corner(y, x); };
    // Two by two onto one by one: across first. 3 by 2 onto 2 by 1 has 2 * 2 > 3 * 1: down first.
    const RK_Pixel8 across = halved(2, 2, 1, 1, corner), down = halved(3, 2, 2, 1, corner);
    EXPECT_FALSE(test::sameBytes(across, down));
    // The turned picture tells the same the other way around.
    EXPECT_TRUE(test::sameBytes(down, halved(2, 2, 1, 1, turned)));
    EXPECT_TRUE(test::sameBytes(across, halved(3, 2, 2, 1, turned)));
}

}  // namespace
