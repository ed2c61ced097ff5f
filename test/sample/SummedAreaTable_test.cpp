#include "RK/indep/sample/RK_SummedAreaTable.h"

#include <gtest/gtest.h>

#include "RK/indep/world/RK_WorldXT.h"
#include "refhost/RefHost.h"
#include "test/GuardedRows.h"
#include "test/Pixels.h"
#include "test/Reports.h"

namespace {

RK_Pixel8 draft(const RK_SummedAreaTable& t, int32_t l, int32_t top, int32_t r, int32_t b) {
    RK_Pixel8 out = {9, 9, 9, 9};
    RK_SummedAreaTable_SampleDraft<RK_Pixel8, RK_PixelFloat>(t.width, t.height, t.float_table, l, top, r, b,
                                                             &out);
    return out;
}

class Table : public testing::Test {
  protected:
    Table() : world(8, 6, 0) {
        test::Random r(1);
        for (int32_t y = 0; y < 6; ++y)
            for (int32_t x = 0; x < 8; ++x) world.row(y)[x] = test::pixel<RK_Pixel8>(r);
    }
    RK_WorldX<RK_Pixel8> world;
};

TEST_F(Table, ABoxOfOnePixelAtTheOriginGivesThatPixelBack) {
    world.row(0)[0] = {255, 10, 200, 30};
    const RK_SummedAreaTable table(&world);
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 10, 200, 30}, draft(table, 0, 0, 1, 1)));
}

TEST_F(Table, EmptyBoxesAndBoxesOutsideGiveTheZeroPixel) {
    const RK_SummedAreaTable table(&world);
    for (const auto& p : {draft(table, 2, 2, 2, 5), draft(table, 5, 2, 3, 4), draft(table, 8, 0, 12, 3),
                          draft(table, -9, 0, 0, 3), draft(table, 0, -4, 3, 0)})
        EXPECT_TRUE(test::sameBytes(RK_Pixel8{}, p));
}

TEST_F(Table, ABoxHalfOutsideAnOpaqueWorldHasHalfAlphaAndFullColour) {
    const RK_Pixel16 white = {32768, 32768, 32768, 32768};
    world.Fill(white, nullptr);
    const RK_SummedAreaTable table(&world);
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{128, 255, 255, 255}, draft(table, -4, 0, 4, 6)));
}

TEST_F(Table, MeansEqualTheSumOfTheirPremultipliedPixels) {
    const RK_SummedAreaTable table(&world);
    for (int32_t t = 0; t < 6; ++t) {
        for (int32_t l = 0; l < 8; ++l) {
            for (int32_t b = t + 1; b <= 6; ++b) {
                for (int32_t r = l + 1; r <= 8; ++r) {
                    double A = 0, R = 0;
                    for (int32_t y = t; y < b; ++y) {
                        for (int32_t x = l; x < r; ++x) {
                            const RK_Pixel8& p = world.row(y)[x];
                            A += p.alpha;
                            R += p.red * (p.alpha / 255.0);
                        }
                    }
                    const RK_Pixel8 got = draft(table, l, t, r, b);
                    ASSERT_NEAR(A / ((b - t) * (r - l)), got.alpha, 0.51);
                    if (A > 20) {
                        ASSERT_NEAR(R * 255 / A, got.red, 0.6);
                    }
                }
            }
        }
    }
}

TEST_F(Table, AntialiasedBoxesOnWholeEdgesAgreeWithDraftOnes) {
    const RK_SummedAreaTable table(&world);
    for (int32_t l = 0; l < 7; ++l) {
        for (int32_t r = l + 1; r < 8; ++r) {
            RK_Pixel8 out;
            RK_SummedAreaTable_SampleAA<RK_Pixel8, RK_PixelFloat>(
                table.width, table.height, table.float_table, static_cast<float>(l) - 0.5f, 0.5f,
                static_cast<float>(r) - 0.5f, 3.5f, &out);
            const RK_Pixel8 wanted = draft(table, l, 1, r, 4);
            EXPECT_NEAR(wanted.alpha, out.alpha, 1);
        }
    }
}

TEST_F(Table, NotANumberAndHugeEdgesAreSafe) {
    const RK_SummedAreaTable table(&world);
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    for (float l : {nan, -inf, -1e30f, 0.0f, 1e30f}) {
        for (float r : {nan, inf, 1e30f, 3.0f}) {
            RK_Pixel8 out;
            RK_SummedAreaTable_SampleAA<RK_Pixel8, RK_PixelFloat>(table.width, table.height,
                                                                  table.float_table, l, l, r, r, &out);
        }
    }
    draft(table, INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX);
}

TEST_F(Table, FloatWorldsUseTheDoubleTable) {
    RK_WorldX<RK_PixelFloat> deep(4, 4, RK_kWorldClear);
    deep.row(1)[2] = {0.5f, 2.0f, -1.0f, 0.25f};
    const RK_SummedAreaTable table(&deep);
    ASSERT_EQ(nullptr, table.float_table);
    RK_PixelFloat out;
    RK_SummedAreaTable_SampleDraft<RK_PixelFloat, RK_PixelDouble>(4, 4, table.double_table, 2, 1, 3, 2, &out);
    EXPECT_FLOAT_EQ(0.5f, out.alpha);
    EXPECT_FLOAT_EQ(2.0f, out.red);
    EXPECT_FLOAT_EQ(-1.0f, out.green);
}

TEST_F(Table, EveryAllocationThatFailsThrows4AndLeaksNothing) {
    const auto before = RefHost::Memory();
    for (int64_t n = 1;; ++n) {
        RefHost::FailAllocation(n);
        RK_Long thrown = 0;
        try {
            const RK_SummedAreaTable table(&world);
        } catch (RK_Long code) {
            thrown = code;
        }
        const bool reached = RefHost::AllocationsSince() >= n;
        RefHost::FailAllocation(0);
        EXPECT_EQ(before.blocks, RefHost::Memory().blocks);
        if (!reached) {
            EXPECT_GT(n, 2);
            break;
        }
        EXPECT_EQ(4, thrown);
    }
    RefHost::TakeReports();
    try {
        const RK_SummedAreaTable table(nullptr);
        ADD_FAILURE();
    } catch (RK_Long code) {
        EXPECT_EQ(3, code);
    }
}

// Every box over a table whose cells lie against pages that cannot be touched.
template <class P, class Entry>
void readsInsideOnly(const RK_SummedAreaTable& table, const Entry* cells) {
    test::GuardedRows rows;
    const size_t bytes = static_cast<size_t>(table.width) * static_cast<size_t>(table.height) * sizeof(Entry);
    const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    for (const bool against_end : {false, true}) {
        auto* const guarded = static_cast<Entry*>(rows.room(bytes, against_end));
        ASSERT_NE(nullptr, guarded);
        std::memcpy(static_cast<void*>(guarded), cells, bytes);
        P out;
        const int32_t edges[] = {INT32_MIN, -1, 0, 1, 3, 4, 5, 6, 7, INT32_MAX};
        const float smooth[] = {-inf,  -1.0f, -0.5f, -0.25f, 0.0f, 0.5f,  1.75f, 3.0f,
                                3.49f, 3.5f,  4.49f, 4.5f,   9.0f, 1e30f, inf,   nan};
        for (const int32_t l : edges)
            for (const int32_t t : edges)
                for (const int32_t r : edges)
                    for (const int32_t b : edges)
                        RK_SummedAreaTable_SampleDraft<P, Entry>(table.width, table.height, guarded, l, t, r,
                                                                 b, &out);
        for (const float l : smooth)
            for (const float t : smooth)
                for (const float r : smooth)
                    for (const float b : smooth)
                        RK_SummedAreaTable_SampleAA<P, Entry>(table.width, table.height, guarded, l, t, r, b,
                                                              &out);
    }
}
TEST_F(Table, NoCellOutsideTheTableIsRead) {
    RK_WorldX<RK_Pixel16> small16(5, 4, RK_kWorldClear);
    RK_WorldX<RK_PixelFloat> small_float(5, 4, RK_kWorldClear);
    RK_WorldX<RK_Pixel8> one(1, 1, RK_kWorldClear);
    const RK_SummedAreaTable t8(&world), t16(&small16), real(&small_float), single(&one);
    readsInsideOnly<RK_Pixel8>(t8, t8.float_table);
    readsInsideOnly<RK_Pixel16>(t16, t16.float_table);
    readsInsideOnly<RK_PixelFloat>(real, real.double_table);
    readsInsideOnly<RK_Pixel8>(single, single.float_table);
}

TEST_F(Table, CellsHoldTheMeanOfPremultipliedPixelsFromTheOrigin) {
    RK_WorldX<RK_Pixel8> two(2, 2, 0);
    two.row(0)[0] = {255, 100, 50, 0};
    two.row(0)[1] = {51, 200, 0, 255};  // a fifth
    two.row(1)[0] = {0, 255, 255, 255};
    two.row(1)[1] = {255, 20, 20, 20};
    const RK_SummedAreaTable table(&two);
    const auto cell = [&](int i, float a, float r, float g, float b) {
        const RK_PixelFloat& c = table.float_table[i];
        EXPECT_FLOAT_EQ(a, c.alpha) << i;
        EXPECT_FLOAT_EQ(r, c.red) << i;
        EXPECT_FLOAT_EQ(g, c.green) << i;
        EXPECT_FLOAT_EQ(b, c.blue) << i;
    };
    cell(0, 255, 100, 50, 0);
    cell(1, 153, 70, 25, 25.5f);
    cell(2, 127.5f, 50, 25, 0);
    cell(3, 140.25f, 40, 17.5f, 17.75f);
    EXPECT_EQ(2, table.width);
    EXPECT_EQ(2, table.height);
    EXPECT_EQ(nullptr, table.double_table);
}

TEST_F(Table, AnotherWorldResizesOrReplacesTheTable) {
    RK_WorldX<RK_Pixel16> larger(20, 15, RK_kWorldClear);
    larger.row(0)[0] = {32768, 5, 6, 7};
    RK_WorldX<RK_PixelFloat> deep(3, 3, RK_kWorldClear);
    const auto before = RefHost::Memory();
    {
        RK_SummedAreaTable table(&world);
        EXPECT_EQ(before.blocks + 1, RefHost::Memory().blocks);
        table.Build(&larger);
        EXPECT_EQ(20, table.width);
        EXPECT_EQ(5, table.float_table[0].red);
        EXPECT_EQ(before.blocks + 1, RefHost::Memory().blocks);
        table.Build(&deep);
        EXPECT_EQ(nullptr, table.float_table);
        EXPECT_NE(nullptr, table.double_table);
        EXPECT_EQ(before.blocks + 1, RefHost::Memory().blocks);
        table.Build(&world);
        EXPECT_EQ(nullptr, table.double_table);
        // Every allocation of it that fails leaves an empty table behind, which can be built again.
        RefHost::TakeReports();
        for (RK_World* const next : {static_cast<RK_World*>(&larger), static_cast<RK_World*>(&deep)}) {
            for (int64_t n = 1; n <= 2; ++n) {
                table.Build(&world);
                RefHost::FailAllocation(n);
                EXPECT_EQ(4, test::thrownBy([&] { table.Build(next); })) << n;
                RefHost::FailAllocation(0);
                EXPECT_EQ(0, table.width);
                EXPECT_EQ(0, table.height);
                EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, "memory for blurring"));
            }
        }
        EXPECT_EQ(3, test::thrownBy([&] { table.Build(nullptr); }));
        EXPECT_EQ(0, table.width);
    }
    EXPECT_EQ(before.blocks, RefHost::Memory().blocks);
    EXPECT_EQ(before.bytes, RefHost::Memory().bytes);
}

TEST_F(Table, AWorldWithoutPixelsMakesAnEmptyTable) {
    RK_LayerDef nothing = world.record;
    nothing.data = nullptr;
    RK_WorldX<RK_Pixel8> empty(&nothing, false);
    const RK_SummedAreaTable table(&empty);
    EXPECT_EQ(0, table.width);
    EXPECT_EQ(nullptr, table.float_table);
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{}, draft(table, 0, 0, 3, 3)));
}

}  // namespace
