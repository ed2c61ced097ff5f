#include <cstring>

#include "RK/host/RAS.h"
#include "test/Reports.h"

class Bitmaps : public test::Tidy {
  protected:
    static RK_Long make(const GEO_Rect& bounds, int32_t bits, RAS_World*** out) {
        return RAS_NewWorld(0, 0, 8, &bounds, bits, 0, 0, out);
    }
};

TEST_F(Bitmaps, HaveTheSizeOfTheirBoundsAndAlignedRows) {
    for (int32_t bits : {8, 16, 24, 32, 64, 128}) {
        RAS_World** bitmap = nullptr;
        ASSERT_EQ(make({-5, 10, 20, 17}, bits, &bitmap), 0);
        const RAS_World& record = **bitmap;
        EXPECT_EQ(record.width, 7);
        EXPECT_EQ(record.height, 25);
        EXPECT_EQ(record.bits_per_pixel, bits);
        EXPECT_EQ(record.rowbytes % 16, 0);
        EXPECT_GE(record.rowbytes, 7 * bits / 8);
        EXPECT_LT(record.rowbytes, 7 * bits / 8 + 16);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(RASp_GetPixBaseAddr(bitmap)) % 16, 0u);
        RAS_DisposeWorld(bitmap);
    }
}

TEST_F(Bitmaps, ShowTheirPixelsOnlyWhileLocked) {
    RAS_World** bitmap = nullptr;
    ASSERT_EQ(make({0, 0, 4, 4}, 32, &bitmap), 0);
    EXPECT_EQ((*bitmap)->base, nullptr);
    EXPECT_EQ(RAS_LoadLockPixels(1, bitmap, 0, 0), 0);
    ASSERT_NE((*bitmap)->base, nullptr);
    EXPECT_EQ((*bitmap)->base, RASp_GetPixBaseAddr(bitmap));
    std::memset((*bitmap)->base, 7, size_t((*bitmap)->rowbytes) * 4);  // all of it is ours
    EXPECT_EQ(RAS_LoadLockPixels(1, bitmap, 0, 0), 0);
    RAS_UnlockPixels(bitmap);
    EXPECT_NE((*bitmap)->base, nullptr);  // still locked once
    RAS_UnlockPixels(bitmap);
    EXPECT_EQ((*bitmap)->base, nullptr);
    RAS_UnlockPixels(bitmap);  // one too many does nothing
    EXPECT_EQ((*bitmap)->lock_count, 0);
    RAS_DisposeWorld(bitmap);
}

TEST_F(Bitmaps, RefuseEmptyBoundsAndOddDepths) {
    RAS_World** bitmap = nullptr;
    EXPECT_EQ(make({0, 0, 0, 4}, 32, &bitmap), 3);
    EXPECT_EQ(make({0, 0, 4, 0}, 32, &bitmap), 3);
    EXPECT_EQ(make({4, 0, 0, 4}, 32, &bitmap), 3);
    EXPECT_EQ(make({-32768, 0, 32767, 4}, 32, &bitmap), 3);  // 65535 rows do not fit the record
    EXPECT_EQ(make({0, 0, 4, 4}, 0, &bitmap), 3);
    EXPECT_EQ(make({0, 0, 4, 4}, 48, &bitmap), 3);
    EXPECT_EQ(RAS_NewWorld(0, 0, 8, nullptr, 32, 0, 0, &bitmap), 3);
    EXPECT_EQ(bitmap, nullptr);
}

TEST_F(Bitmaps, FailCleanlyWithoutMemory) {
    RAS_World** bitmap = nullptr;
    for (int64_t n : {1, 2}) {
        RefHost::FailAllocation(n);
        EXPECT_EQ(make({0, 0, 4, 4}, 32, &bitmap), 4);
    }
    RefHost::FailAllocation(0);
    RefHost::FailCall("RAS_NewWorld", 77);
    EXPECT_EQ(make({0, 0, 4, 4}, 32, &bitmap), 77);
    ASSERT_EQ(make({0, 0, 4, 4}, 32, &bitmap), 0);
    RefHost::FailCall("RAS_LoadLockPixels", 78);
    EXPECT_EQ(RAS_LoadLockPixels(1, bitmap, 0, 0), 78);
    EXPECT_EQ((*bitmap)->base, nullptr);
    RAS_DisposeWorld(bitmap);
}

TEST_F(Bitmaps, TakeNullHandles) {
    EXPECT_EQ(RAS_LoadLockPixels(1, nullptr, 0, 0), 3);
    EXPECT_EQ(RASp_GetPixBaseAddr(nullptr), nullptr);
    RAS_UnlockPixels(nullptr);
    RAS_DisposeWorld(nullptr);
}

TEST_F(Bitmaps, ThatCannotBeHadAreReported) {
    RAS_ReportWorldAllocationFailure(4, 2560, 640, 480, 32);
    const auto reports = RefHost::TakeReports();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].kind, RefHost::ReportKind::WorldAllocation);
    EXPECT_EQ(reports[0].severity, 4);
    for (const char* part : {"640 x 480", "32 bits", "2560 bytes"})
        EXPECT_NE(reports[0].text.find(part), std::string::npos) << part;
}
