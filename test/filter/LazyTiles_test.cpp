#include "RK/indep/filter/RK_LazyTiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "test/Pixels.h"
#include "test/Reports.h"

bool operator==(const GEO_Rect& a, const GEO_Rect& b) {
    return a.top == b.top && a.left == b.left && a.bottom == b.bottom && a.right == b.right;
}
void PrintTo(const GEO_Rect& r, std::ostream* out) {
    *out << "{" << r.top << ", " << r.left << ", " << r.bottom << ", " << r.right << "}";
}

namespace {

using Calls = std::vector<GEO_Rect>;  // top, left, bottom, right

// Notes what it is asked to do.
struct Work : RK_LazyOperator {
    Work(int16_t width, int16_t height, Calls* calls, int* alive = nullptr)
        : extent{width, height}, calls_(calls), alive_(alive) {
        if (alive_) ++*alive_;
    }
    ~Work() override {
        if (alive_) --*alive_;
    }
    GEO_Vector2T<int16_t> GetExtent() const override { return extent; }
    GEO_Vector2T<int16_t> extent;
    RK_Long fails = 0;

  protected:
    void DoItImp(const GEO_Rect& rect) override {
        if (fails != 0) throw RK_Long{fails};
        calls_->push_back(rect);
    }

  private:
    Calls* calls_;
    int* alive_;
};

// The calls that the tiles make of it.
struct Tiled {
    Tiled(int16_t tile_size, int16_t width, int16_t height)
        : work(new Work(width, height, &calls_)), op(work), tiles(tile_size, &op) {}
    Calls valid(const GEO_Rect& rect) {
        calls_.clear();
        tiles.MakeValid(rect);
        return calls_;
    }
    Calls conditional(const GEO_Rect& rect) {
        calls_.clear();
        tiles.ConditionalMakeValid(rect);
        return calls_;
    }

  private:
    Calls calls_;

  public:
    Work* work;
    boost::scoped_ptr<RK_LazyOperator> op;

  private:
    struct Tiles : RK_LazyTilesCondition {
        Tiles(int16_t size, boost::scoped_ptr<RK_LazyOperator>* o) : RK_LazyTilesCondition(size, o, true) {}
        using RK_LazyTiles::GetOffset;
    };

  public:
    Tiles tiles;
};

class LazyTiles : public test::Tidy {};

TEST_F(LazyTiles, TheOperatorIsTakenOverAndLivesAsLongAsTheTiles) {
    int alive = 0;
    Calls calls;
    {
        boost::scoped_ptr<RK_LazyOperator> op(new Work(10, 10, &calls, &alive));
        RK_LazyOperator* given = op.get();
        RK_LazyTiles tiles(4, &op);
        EXPECT_FALSE(op);
        EXPECT_EQ(given, tiles.GetOperator());
        EXPECT_EQ(1, alive);
    }
    EXPECT_EQ(0, alive);
    EXPECT_TRUE(calls.empty());
}

TEST_F(LazyTiles, NeighboursInARowAreOneCallAndRowsAreNot) {
    Tiled t(8, 40, 20);
    EXPECT_EQ((Calls{{0, 8, 8, 32}, {8, 8, 16, 32}}), t.valid({2, 10, 14, 27}));
    // The tile in the middle is done, so the rest of its row is two calls.
    Tiled gap(8, 40, 20);
    EXPECT_EQ((Calls{{0, 16, 8, 24}}), gap.valid({0, 16, 8, 24}));
    EXPECT_EQ((Calls{{0, 0, 8, 16}, {0, 24, 8, 40}, {8, 0, 16, 40}}), gap.valid({0, 0, 9, 40}));
}

TEST_F(LazyTiles, OverlapsAreDoneOnce) {
    Tiled t(8, 32, 32);
    t.valid({0, 0, 16, 16});
    EXPECT_EQ((Calls{{8, 16, 16, 24}, {16, 8, 24, 24}}), t.valid({8, 8, 24, 24}));
    EXPECT_EQ(Calls{}, t.valid({8, 8, 24, 24}));
    EXPECT_EQ(Calls{}, t.valid({0, 0, 1, 1}));
}

TEST_F(LazyTiles, ASinglePixelOfTheLastTileIsCutToTheExtent) {
    Tiled t(8, 20, 13);
    EXPECT_EQ((Calls{{8, 16, 13, 20}}), t.valid({12, 19, 13, 20}));
}

TEST_F(LazyTiles, WhatLiesOutsideTheExtentDoesNothing) {
    Tiled t(8, 20, 13);
    const GEO_Rect rects[] = {{0, 20, 5, 30}, {13, 0, 20, 5}, {-9, 0, 0, 9}, {0, -9, 9, 0},
                              {5, 5, 5, 9},   {5, 9, 9, 5},   {9, 5, 5, 9},  {20, 20, 30, 30}};
    for (const GEO_Rect& rect : rects) EXPECT_EQ(Calls{}, t.valid(rect));
    EXPECT_EQ((Calls{{0, 0, 8, 20}, {8, 0, 13, 20}}), t.valid({-32768, -32768, 32767, 32767}));
    Tiled empty(8, 0, 13);
    EXPECT_EQ(Calls{}, empty.valid({-32768, -32768, 32767, 32767}));
    Tiled reversed(8, -5, -9);
    EXPECT_EQ(Calls{}, reversed.valid({-32768, -32768, 32767, 32767}));
}

TEST_F(LazyTiles, TileSizesFromOneToTheLargest) {
    Tiled ones(1, 3, 2);
    EXPECT_EQ((Calls{{1, 1, 2, 3}}), ones.valid({1, 1, 9, 9}));
    Tiled large(32767, 32767, 32767);
    EXPECT_EQ((Calls{{0, 0, 32767, 32767}}), large.valid({32766, 32766, 32767, 32767}));
    Tiled odd(20000, 32767, 3);  // the second tile would end beyond 16 bits
    EXPECT_EQ((Calls{{0, 20000, 3, 32767}}), odd.valid({0, 20000, 1, 20001}));
}

TEST_F(LazyTiles, AnOffsetShiftsQueriesAndNotTiles) {
    Tiled t(8, 40, 40);
    EXPECT_EQ(0, t.tiles.GetOffset().x);
    EXPECT_EQ(0, t.tiles.GetOffset().y);
    t.tiles.SetOffset({16, -3});
    EXPECT_EQ(16, t.tiles.GetOffset().x);
    EXPECT_EQ((Calls{{8, 16, 16, 24}}), t.valid({11, 0, 18, 8}));
    EXPECT_EQ((Calls{{0, 16, 8, 24}}), t.valid({10, 0, 11, 8}));
    t.tiles.SetOffset({0, 0});
    EXPECT_EQ(Calls{}, t.valid({8, 16, 16, 24}));
    // Sums do not wrap.
    t.tiles.SetOffset({32767, 32767});
    EXPECT_EQ(Calls{}, t.valid({32000, 32000, 32767, 32767}));
    EXPECT_EQ((Calls{{0, 0, 8, 8}}), t.valid({-32767, -32767, -32766, -32766}));
}

TEST_F(LazyTiles, ConditionalQueriesLieInTheOperatorsFrame) {
    Tiled t(8, 40, 40);
    t.tiles.SetOffset({100, -77});
    EXPECT_EQ((Calls{{8, 8, 16, 16}}), t.conditional({8, 8, 16, 16}));
    EXPECT_EQ((Calls{{32, 32, 40, 40}}), t.conditional({35, 35, 32767, 32767}));
    EXPECT_EQ(Calls{}, t.conditional({41, 0, 50, 40}));
    t.tiles.SetOffset({-32768, -32768});
    EXPECT_EQ((Calls{{0, 0, 8, 40}}), t.conditional({-32768, -32768, 1, 32767}));
}

TEST_F(LazyTiles, AFalseConditionLeavesAllTilesInvalid) {
    Tiled t(8, 16, 8);
    t.tiles.SetCondition(false);
    EXPECT_EQ(Calls{}, t.conditional({0, 0, 8, 16}));
    t.tiles.SetCondition(true);
    EXPECT_EQ((Calls{{0, 0, 8, 16}}), t.conditional({0, 0, 8, 16}));
    t.tiles.SetCondition(false);
    EXPECT_EQ(Calls{}, t.valid({0, 0, 8, 16}));
    boost::scoped_ptr<RK_LazyOperator> op(new Work(8, 8, nullptr));
    RK_LazyTilesCondition off(8, &op, false);
    off.ConditionalMakeValid({0, 0, 8, 8});  // would write to no list
}

TEST_F(LazyTiles, AnExtentThatChangesKeepsItsTiles) {
    Tiled t(8, 20, 8);
    t.work->extent = {30, 30};
    EXPECT_EQ((Calls{{0, 16, 8, 24}}), t.valid({0, 18, 30, 30}));  // three columns, one row
    t.work->extent = {10, 5};
    EXPECT_EQ((Calls{{0, 0, 5, 10}}), t.valid({0, 0, 30, 30}));
    EXPECT_EQ(Calls{}, t.valid({0, 0, 30, 30}));
}

TEST_F(LazyTiles, AFailureComesOutAndTheRunCountsAsDone) {
    Tiled t(8, 32, 16);
    t.work->fails = 517;
    EXPECT_EQ(517, test::thrownBy([&] { t.valid({0, 0, 16, 16}); }));
    t.work->fails = 0;
    EXPECT_EQ((Calls{{0, 16, 8, 32}, {8, 0, 16, 32}}), t.valid({0, 0, 16, 32}));
}

TEST_F(LazyTiles, ATileSizeBelowOneAndAMissingOperatorAreRefused) {
    int alive = 0;
    boost::scoped_ptr<RK_LazyOperator> op(new Work(10, 10, nullptr, &alive)), none;
    for (const int16_t size : {0, -1, -32768}) {
        EXPECT_EQ(3, test::thrownBy([&] { RK_LazyTiles tiles(size, &op); }));
        EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_LazyTiles()"));
        EXPECT_EQ(3, test::thrownBy([&] { RK_LazyTilesCondition tiles(size, &op, true); }));
        EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_LazyTiles()"));
    }
    EXPECT_EQ(1, alive);
    EXPECT_TRUE(op);
    EXPECT_EQ(3, test::thrownBy([&] { RK_LazyTiles tiles(4, &none); }));
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_LazyTiles()"));
    EXPECT_EQ(3, test::thrownBy([&] { RK_LazyTiles tiles(4, nullptr); }));
    EXPECT_TRUE(test::onlyVerification("Bad parameter to RK_LazyTiles()"));
}

// ---- Copying a world ------------------------------------------------------------------------------------

TEST_F(LazyTiles, AWorldIsCopiedTileByTile) {
    test::Picture<RK_Pixel8> source(20, 13), other(20, 13);
    test::Picture<RK_Pixel16> target(25, 20);
    source.fill({255, 255, 0, 255});
    other.fill({255, 0, 255, 0});
    RK_LayerDef from = source.record(), from_other = other.record(), to = target.record();
    auto* copy = new RK_LazyWorldCopyOperator(&from, &to);
    boost::scoped_ptr<RK_LazyOperator> op(copy);
    RK_LazyTiles tiles(8, &op);
    EXPECT_EQ(20, copy->GetExtent().x);
    EXPECT_EQ(13, copy->GetExtent().y);
    tiles.MakeValid({9, 9, 10, 30});
    copy->SetSourceWorld(&from_other);
    tiles.MakeValid({0, 0, 9, 9});
    EXPECT_TRUE(target.guardsWhole());
    const RK_Pixel16 first = {32768, 32768, 0, 32768}, second = {32768, 0, 32768, 0};
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 25; ++x) {
            const RK_Pixel16 wanted = x >= 20 || y >= 13 ? RK_Pixel16{}
                                      : x >= 8 && y >= 8 ? first
                                      : x < 16           ? second
                                                         : RK_Pixel16{};
            ASSERT_TRUE(test::sameBytes(wanted, target.at(x, y))) << x << ", " << y;
        }
    }
}

TEST_F(LazyTiles, ACopyThatFailsThrowsItsResult) {
    test::Picture<RK_Pixel8> source(20, 13);
    RK_LayerDef from = source.record(), hollow = source.record();
    hollow.data = nullptr;
    RK_LazyWorldCopyOperator copy(&from, &hollow), missing(nullptr, nullptr);
    EXPECT_EQ(3, test::thrownBy([&] { copy.DoIt({0, 0, 8, 8}); }));
    EXPECT_EQ(2u, RefHost::TakeReports().size());  // the copy's own two
    EXPECT_EQ(0, missing.GetExtent().x);
    from.width = 40000;
    EXPECT_EQ(32767, copy.GetExtent().x);
}

TEST_F(LazyTiles, EveryAllocationOfACopyMayFail) {
    test::Picture<RK_Pixel8> source(20, 13), target(20, 13);
    source.fill({255, 1, 2, 3});
    RK_LayerDef from = source.record(), to = target.record();
    const auto copied = [&] {
        boost::scoped_ptr<RK_LazyOperator> op(new RK_LazyWorldCopyOperator(&from, &to));
        RK_LazyTiles tiles(8, &op);
        return test::thrownBy([&] { tiles.MakeValid({0, 0, 13, 20}); });
    };
    RefHost::FailAllocation(0);
    EXPECT_EQ(0, copied());
    const int64_t allocations = RefHost::AllocationsSince();
    for (int64_t n = 1; n <= allocations; ++n) {
        RefHost::FailAllocation(n);
        EXPECT_EQ(4, copied()) << n;
    }
    RefHost::FailAllocation(allocations + 1);
    EXPECT_EQ(0, copied());
    EXPECT_TRUE(source == target);
}

// ---- Filling a mask -------------------------------------------------------------------------------------

template <class S>
void fillsAMaskTileByTile(int32_t depth, uint16_t value, S filled) {
    boost::scoped_ptr<RK_UnoBuffer> buffer(new RK_UnoBuffer(20, 13, depth));
    RK_UnoBuffer* mask = buffer.get();
    for (int y = 0; y < 13; ++y) std::fill_n(mask->Row<S>(y), 20, S{7});
    auto* fill = new RK_LazyFillUnoBufferOperator(&buffer, value);
    EXPECT_FALSE(buffer);
    EXPECT_EQ(mask, fill->GetBuffer());
    EXPECT_EQ(20, fill->GetExtent().x);
    EXPECT_EQ(13, fill->GetExtent().y);
    boost::scoped_ptr<RK_LazyOperator> op(fill);
    RK_LazyTiles tiles(8, &op);
    tiles.MakeValid({3, 9, 20, 99});
    for (int y = 0; y < 13; ++y)
        for (int x = 0; x < 20; ++x) EXPECT_EQ(x >= 8 ? filled : S{7}, mask->Row<S>(y)[x]) << x << ", " << y;
}

TEST_F(LazyTiles, AMaskIsFilledTileByTile) {
    fillsAMaskTileByTile<uint8_t>(8, 0x1234, 0x34);
    fillsAMaskTileByTile<uint16_t>(16, 0x1234, 0x1234);
}

TEST_F(LazyTiles, AMaskThatCannotBeFilledThrows) {
    boost::scoped_ptr<RK_UnoBuffer> none, hollow(new RK_UnoBuffer(4, 4, 8));
    RK_LazyFillUnoBufferOperator missing(&none, 1), given_none(nullptr, 1);
    EXPECT_EQ(0, missing.GetExtent().x);
    EXPECT_EQ(nullptr, given_none.GetBuffer());
    EXPECT_EQ(3, test::thrownBy([&] { missing.DoIt({0, 0, 1, 1}); }));
    EXPECT_FALSE(RefHost::TakeReports().empty());
    KIT_Handle store = hollow->pixels;
    hollow->pixels = nullptr;
    {
        RK_LazyFillUnoBufferOperator fill(&hollow, 1);
        EXPECT_EQ(3, test::thrownBy([&] { fill.DoIt({0, 0, 1, 1}); }));
        EXPECT_EQ(1u, RefHost::TakeReports().size());
    }
    RefHost::TakeReports();
    KIT_FreeHandle(store);
}

}  // namespace
