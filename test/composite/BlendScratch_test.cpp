#include "RK/indep/composite/RK_BlendScratch.h"

#include <cstring>
#include <limits>

#include "RK/indep/frame/RK_Birth.h"
#include "test/Reports.h"

namespace {

// Leaves the process-wide scratch as birth makes it.
class BlendScratch : public testing::Test {
  protected:
    void SetUp() override {
        reset();
        RefHost::TakeReports();
    }
    void TearDown() override {
        RefHost::FailAllocation(0);
        reset();
        EXPECT_TRUE(test::noReports());
    }
    static void reset() { ASSERT_EQ(RKp_ReallocScratch(1024, 1, true, nullptr), 0); }

    static int64_t bytes() { return RefHost::Memory().bytes; }
    static int64_t blocks() { return RefHost::Memory().blocks; }
};

constexpr int64_t kMotionBytes = 3 * 2048 + 2 * 4096 + 18432 + 21504;

std::vector<void*> pointers(const RK_MotionBlurScratch& m) {
    return {m.data1, m.data2, m.data3, m.data4, m.data5, m.data6, m.data7};
}

TEST_F(BlendScratch, RowsHaveTheSizesOfTheirUse) {
    const int64_t before = bytes() - (1024 + 2 * 4096);
    for (RK_Long pixels : {RK_Long{1}, RK_Long{1920}, RK_Long{30000}}) {
        for (RK_Long channel : {RK_Long{1}, RK_Long{2}, RK_Long{4}}) {
            RK_BlendScratch scratch;
            ASSERT_EQ(RKp_ReallocScratch(pixels, channel, true, &scratch), 0);
            const auto channels = static_cast<size_t>(pixels * channel);
            EXPECT_EQ(bytes() - before, static_cast<int64_t>(9 * channels));
            std::memset(scratch.alpha_save, 1, channels);
            std::memset(scratch.matte_row, 2, 4 * channels);
            std::memset(scratch.row_work, 3, 4 * channels);
        }
    }
}

TEST_F(BlendScratch, GrowsToTheWidestAndThenAllocatesNothing) {
    RK_BlendScratch wide, same, narrow;
    ASSERT_EQ(RKp_ReallocScratch(5000, 4, false, &wide), 0);
    RefHost::FailAllocation(0);
    ASSERT_EQ(RKp_ReallocScratch(5000, 4, false, &same), 0);
    ASSERT_EQ(RKp_ReallocScratch(20000, 1, false, &narrow), 0);
    EXPECT_EQ(RefHost::AllocationsSince(), 0);
    EXPECT_EQ(0, std::memcmp(&wide, &same, sizeof wide));
    EXPECT_EQ(0, std::memcmp(&wide, &narrow, sizeof wide));
    ASSERT_EQ(RKp_ReallocScratch(20001, 1, false, nullptr), 0);
    EXPECT_EQ(RefHost::AllocationsSince(), 3);
}

TEST_F(BlendScratch, OnlyShrinkingMakesItSmaller) {
    ASSERT_EQ(RKp_ReallocScratch(20000, 4, false, nullptr), 0);
    const int64_t wide = bytes();
    ASSERT_EQ(RKp_ReallocScratch(10, 1, false, nullptr), 0);
    EXPECT_EQ(bytes(), wide);
    ASSERT_EQ(RKp_ReallocScratch(10, 1, true, nullptr), 0);
    EXPECT_EQ(wide - bytes(), 9 * (20000 * 4 - 10));
}

TEST_F(BlendScratch, FreeingUpMemoryShrinksItTo1024Pixels) {
    const int64_t small = bytes();
    ASSERT_EQ(RKp_ReallocScratch(20000, 4, false, nullptr), 0);
    ASSERT_EQ(RK_FreeUpSomeMemory(), 0);
    EXPECT_LE(bytes(), small + 9 * 1024 * 3);
    RefHost::FailAllocation(0);
    ASSERT_EQ(RKp_ReallocScratch(1024, 1, false, nullptr), 0);
    EXPECT_EQ(RefHost::AllocationsSince(), 0);
}

TEST_F(BlendScratch, AnOddChannelSizeIsReportedFirst) {
    RK_BlendScratch scratch;
    std::memset(&scratch, 7, sizeof scratch);
    const RK_BlendScratch before = scratch;
    RefHost::FailAllocation(0);
    for (RK_Long channel :
         {RK_Long{0}, RK_Long{3}, RK_Long{8}, RK_Long{-1}, std::numeric_limits<RK_Long>::max()}) {
        EXPECT_EQ(RKp_ReallocScratch(1000000, channel, true, &scratch), 3);
        EXPECT_TRUE(test::onlyVerification("Unexpected bitdepth in RKp_ReallocScratch()"));
    }
    EXPECT_EQ(0, std::memcmp(&before, &scratch, sizeof scratch));
    EXPECT_EQ(RefHost::AllocationsSince(), 0);
}

TEST_F(BlendScratch, AFailedRowKeepsTheOldOnesAndLosesNothing) {
    RK_BlendScratch old;
    ASSERT_EQ(RKp_ReallocScratch(1024, 1, false, &old), 0);
    const int64_t held = bytes(), count = blocks();
    for (int64_t n = 1; n <= 3; ++n) {
        RK_BlendScratch untouched = {};
        RefHost::FailAllocation(n);
        EXPECT_EQ(RKp_ReallocScratch(9999, 4, false, &untouched), 4);
        EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, "blending scratch buffer"));
        EXPECT_EQ(untouched.alpha_save, nullptr);
        EXPECT_EQ(bytes(), held);
        EXPECT_EQ(blocks(), count);
        std::memset(old.row_work, 1, 4096);

        // The rows count as of no size: the next call makes them anew, however narrow.
        RefHost::FailAllocation(0);
        EXPECT_EQ(RKp_ReallocScratch(1024, 1, false, &old), 0);
        EXPECT_EQ(RefHost::AllocationsSince(), 3);
        EXPECT_EQ(bytes(), held);
    }
}

TEST_F(BlendScratch, AWidthThatNoMemoryHoldsFails) {
    const int64_t held = bytes();
    for (RK_Long pixels : {std::numeric_limits<RK_Long>::max(), std::numeric_limits<RK_Long>::max() / 4}) {
        EXPECT_EQ(RKp_ReallocScratch(pixels, 4, false, nullptr), 4);
        EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, "blending scratch buffer"));
        EXPECT_EQ(bytes(), held);
    }
}

TEST_F(BlendScratch, ANegativeWidthNeedsNoRows) {
    RefHost::FailAllocation(0);
    EXPECT_EQ(RKp_ReallocScratch(-1, 4, false, nullptr), 0);
    EXPECT_EQ(RKp_ReallocScratch(std::numeric_limits<RK_Long>::min(), 4, false, nullptr), 0);
    EXPECT_EQ(RefHost::AllocationsSince(), 0);
}

TEST_F(BlendScratch, TheMotionBlocksOfTheProcessAreMadeTogetherOrNotAtAll) {
    RKp_DisposeScratch();
    const int64_t held = bytes(), count = blocks();
    for (int64_t n = 1; n <= 7; ++n) {
        RefHost::FailAllocation(n);
        EXPECT_EQ(test::thrownBy([] { RKp_ReallocScratch(1024, 1, false, nullptr); }), 4);
        EXPECT_TRUE(
            test::onlyReport(RefHost::ReportKind::Memory, 0, "motion blur scratch data" + std::to_string(n)));
        EXPECT_EQ(bytes(), held);
        EXPECT_EQ(blocks(), count);
    }
    RK_BlendScratch scratch;
    RefHost::FailAllocation(0);
    EXPECT_EQ(RKp_ReallocScratch(1024, 1, false, &scratch), 0);
    EXPECT_EQ(RefHost::AllocationsSince(), 10);
    EXPECT_EQ(bytes() - held, kMotionBytes + 9 * 1024);
    for (void* block : pointers(scratch.motion)) EXPECT_NE(block, nullptr);
}

TEST_F(BlendScratch, DisposingFreesTheRowsAndTheBlocks) {
    const int64_t held = bytes(), count = blocks();
    RKp_DisposeScratch();
    EXPECT_EQ(held - bytes(), kMotionBytes + 9 * 1024);
    EXPECT_EQ(count - blocks(), 10);
    RKp_DisposeScratch();
    EXPECT_EQ(count - blocks(), 10);
}

// ---- A caller's blocks ----------------------------------------------------------------------------------

TEST_F(BlendScratch, ACallersBlocksHaveTheirSizes) {
    const size_t sizes[] = {2048, 2048, 2048, 4096, 4096, 18432, 21504};
    const int64_t held = bytes(), count = blocks();
    RK_MotionBlurScratch scratch;
    std::memset(&scratch, 0x55, sizeof scratch);
    ASSERT_EQ(RK_AllocateMotionBlurScratch(&scratch), 0);
    EXPECT_EQ(bytes() - held, kMotionBytes);
    EXPECT_EQ(blocks() - count, 7);
    const std::vector<void*> made = pointers(scratch);
    for (size_t i = 0; i < 7; ++i) std::memset(made[i], 1, sizes[i]);

    EXPECT_EQ(RK_DisposeMotionBlurScratch(&scratch), 0);
    EXPECT_EQ(bytes(), held);
    for (void* block : pointers(scratch)) EXPECT_EQ(block, nullptr);
    EXPECT_EQ(RK_DisposeMotionBlurScratch(&scratch), 0);
}

TEST_F(BlendScratch, ACallersBlocksStopAtTheFirstFailure) {
    const int64_t held = bytes();
    for (int64_t n = 1; n <= 7; ++n) {
        RK_MotionBlurScratch scratch;
        std::memset(&scratch, 0x55, sizeof scratch);
        RefHost::FailAllocation(n);
        EXPECT_EQ(RK_AllocateMotionBlurScratch(&scratch), 4);
        EXPECT_EQ(RefHost::AllocationsSince(), n);
        EXPECT_TRUE(
            test::onlyReport(RefHost::ReportKind::Memory, 0, "motion blur scratch data" + std::to_string(n)));
        const std::vector<void*> made = pointers(scratch);
        for (int64_t i = 1; i <= 7; ++i) EXPECT_EQ(made[static_cast<size_t>(i - 1)] != nullptr, i < n) << i;
        EXPECT_EQ(RK_DisposeMotionBlurScratch(&scratch), 0);
        EXPECT_EQ(bytes(), held);
    }
}

TEST_F(BlendScratch, ANullRecordIsABadParameter) {
    EXPECT_EQ(RK_AllocateMotionBlurScratch(nullptr), 3);
    EXPECT_TRUE(test::onlyBadParam(13));
    EXPECT_EQ(RK_DisposeMotionBlurScratch(nullptr), 0);
}

TEST_F(BlendScratch, TheRecordIsTenPointersInOrder) {
    EXPECT_EQ(sizeof(RK_BlendScratch), 10 * sizeof(void*));
    EXPECT_EQ(offsetof(RK_BlendScratch, matte_row), sizeof(void*));
    EXPECT_EQ(offsetof(RK_BlendScratch, row_work), 2 * sizeof(void*));
    EXPECT_EQ(offsetof(RK_BlendScratch, motion), 3 * sizeof(void*));
    EXPECT_EQ(offsetof(RK_MotionBlurScratch, data7), 6 * sizeof(void*));
}

}  // namespace
