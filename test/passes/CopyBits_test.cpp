#include "RK/indep/passes/RK_CopyBits.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "RK/host/RAS.h"
#include "RK/indep/frame/RKp_OverFuncs.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "RK/indep/world/RKp_ChannelConvert.h"
#include "refhost/RefHost.h"
#include "test/Pixels.h"
#include "test/Reports.h"

namespace {

using Copy = RK_Long(RK_ProgressInfo*, const RK_LayerDef*, RK_LayerDef*, const GEO_Rect*, const GEO_Rect*);
Copy* const kCopies[] = {&RK_CopyBits_Draft, &RK_CopyBits_HQ_Straight, &RK_CopyBits_HQ_Premul};

template <class P>
RK_Long copy(Copy* how, test::Picture<P>& src, test::Picture<P>& dst, const GEO_Rect* s = nullptr,
             const GEO_Rect* d = nullptr, RK_ProgressInfo* progress = nullptr) {
    const RK_LayerDef from = src.record();
    RK_LayerDef to = dst.record();
    const RK_Long result = how(progress, &from, &to, s, d);
    EXPECT_TRUE(src.guardsWhole() && dst.guardsWhole());
    return result;
}

TEST(CopyBits, AWholeWorldIsMovedAndWhatLiesBetweenItsRowsStays) {
    for (Copy* how : kCopies) {
        test::Picture<RK_Pixel8> src(9, 7, 1), dst(9, 7, 3);
        src.fillRandom(1);
        ASSERT_EQ(0, copy(how, src, dst));
        for (int y = 0; y < 7; ++y)
            for (int x = 0; x < 9; ++x) ASSERT_TRUE(test::sameBytes(src.at(x, y), dst.at(x, y)));
    }
}

TEST(CopyBits, OwnersOfEqualRowbytesAreCopiedInOneMove) {
    for (Copy* how : kCopies) {
        RK_WorldX<RK_Pixel8> src(7, 5, 0), dst(7, 5, 0);
        test::Random r(3);
        for (int32_t y = 0; y < 5; ++y)
            for (int32_t x = 0; x < 7; ++x) src.row(y)[x] = test::pixel<RK_Pixel8>(r);
        ASSERT_EQ(0, how(nullptr, &src.record, &dst.record, nullptr, nullptr));
        for (int32_t y = 0; y < 5; ++y) EXPECT_EQ(0, std::memcmp(src.row(y), dst.row(y), 28));
        EXPECT_FALSE(dst.SubWorldSafetyGutterHasBeenOverWritten());
    }
}

TEST(CopyBits, ThreeRowsIntoTwoWriteTheSecondAndTheThird) {
    test::Picture<RK_Pixel8> src(1, 3), dst(1, 2);
    for (int y = 0; y < 3; ++y) src.at(0, y) = {255, uint8_t(y), 0, 0};
    ASSERT_EQ(0, copy(&RK_CopyBits_Draft, src, dst));
    EXPECT_EQ(1, dst.at(0, 0).red);
    EXPECT_EQ(2, dst.at(0, 1).red);
}

TEST(CopyBits, ANullSourceRectangleAndASmallerDestinationScale) {
    test::Picture<RK_Pixel8> src(4, 4), dst(6, 6);
    src.fillRandom(5);
    const GEO_Rect d = {1, 2, 3, 4};
    ASSERT_EQ(0, copy(&RK_CopyBits_Draft, src, dst, nullptr, &d));
    EXPECT_TRUE(test::sameBytes(src.at(1, 1), dst.at(2, 1)));
    EXPECT_TRUE(test::sameBytes(src.at(3, 3), dst.at(3, 2)));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{}, dst.at(1, 1)));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{}, dst.at(4, 2)));
}

// The walk again, one axis at a time: which source place each destination place takes.
std::vector<int> walk(int from, int to) {
    std::vector<int> places;
    int e = 0;
    for (int i = 0; i < from; ++i) {
        e += to;
        for (; e >= from; e -= from) places.push_back(i);
    }
    return places;
}

TEST(CopyBits, TheDraftWalkSpreadsPlacesEvenlyAtAnySizes) {
    for (int from : {1, 2, 3, 5, 8, 13}) {
        for (int to : {1, 2, 4, 7, 13, 29}) {
            test::Picture<RK_Pixel16> src(from, 2), dst(to, 3);
            src.fillRandom(static_cast<uint32_t>(from * 31 + to));
            ASSERT_EQ(0, copy(&RK_CopyBits_Draft, src, dst));
            const auto columns = walk(from, to), rows = walk(2, 3);
            ASSERT_EQ(static_cast<size_t>(to), columns.size());
            for (int y = 0; y < 3; ++y)
                for (int x = 0; x < to; ++x)
                    ASSERT_TRUE(test::sameBytes(src.at(columns[size_t(x)], rows[size_t(y)]), dst.at(x, y)));
        }
    }
}

TEST(CopyBits, DraftConvertsBetweenAnyTwoDepths) {
    test::Picture<RK_Pixel16> src(5, 4);
    src.fillRandom(9);
    test::Picture<RK_Pixel8> small(5, 4);
    test::Picture<RK_PixelFloat> deep(10, 8);
    const RK_LayerDef from = src.record();
    RK_LayerDef to = small.record();
    ASSERT_EQ(0, RK_CopyBits_Draft(nullptr, &from, &to, nullptr, nullptr));
    to = deep.record();
    ASSERT_EQ(0, RK_CopyBits_Draft(nullptr, &from, &to, nullptr, nullptr));
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 5; ++x) {
            ASSERT_TRUE(test::sameBytes(RKp_ConvertPixel<RK_Pixel8>(src.at(x, y)), small.at(x, y)));
            ASSERT_TRUE(test::sameBytes(RKp_ConvertPixel<RK_PixelFloat>(src.at(x, y)),
                                        deep.at(2 * x + 1, 2 * y + 1)));
        }
    }
}

TEST(CopyBits, PartsOutsideAreCutAndTheOtherRectangleWithThem) {
    for (Copy* how : {&RK_CopyBits_Draft, &RK_CopyBits_HQ_Straight}) {
        test::Picture<RK_Pixel8> src(8, 8), dst(8, 8);
        src.fillRandom(2);
        const GEO_Rect s = {-2, -3, 4, 5}, d = {1, 2, 7, 10};
        ASSERT_EQ(0, copy(how, src, dst, &s, &d));
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                const int sx = x - 2 - 3, sy = y - 1 - 2;
                const bool drawn = x >= 5 && y >= 3 && y < 7;
                ASSERT_TRUE(test::sameBytes(drawn ? src.at(sx, sy) : RK_Pixel8{}, dst.at(x, y)))
                    << x << ", " << y;
            }
    }
}

TEST(CopyBits, EmptyAndReversedRectanglesDrawNothing) {
    const GEO_Rect empties[] = {{0, 3, 2, 3},  {2, 0, 2, 3},  {0, 8, 4, 12}, {8, 0, 12, 4},
                                {0, -4, 4, 0}, {-4, 0, 0, 4}, {0, 5, 4, 2},  {5, 0, 2, 4}};
    for (Copy* how : kCopies) {
        for (const GEO_Rect& empty : empties) {
            test::Picture<RK_Pixel8> src(8, 8), dst(8, 8);
            src.fillRandom(2);
            const auto before = dst;
            EXPECT_EQ(0, copy(how, src, dst, &empty, nullptr));
            EXPECT_EQ(0, copy(how, src, dst, nullptr, &empty));
            EXPECT_TRUE(before == dst);
        }
    }
}

TEST(CopyBits, HighQualityPicksTheAreaSamplerOnlyWhereAnAxisShrinks) {
    // 65536 columns would be needed to tell 0x10000 from 0x10001 by sizes alone; one pixel fewer shrinks.
    test::Picture<RK_Pixel8> src(64, 2), dst(63, 4), wide(64, 4);
    src.fillRandom(4);
    static int g_area, g_point;
    g_area = g_point = 0;
    const auto count_area = [](void*, int32_t, int32_t, const RK_SampPB*, RK_Pixel8* out) -> RK_Long {
        ++g_area;
        *out = {};
        return 0;
    };
    const auto count_point = [](void*, int32_t, int32_t, const RK_SampPB*, RK_Pixel8* out) -> RK_Long {
        ++g_point;
        *out = {};
        return 0;
    };
    RKp_SamplerFunc<RK_Pixel8>*area = count_area, *point = count_point;
    void *const slot5 = RKp_G_OverFuncs[5], *const slot3 = RKp_G_OverFuncs[3];
    RK_SetOverrideFunc(5, reinterpret_cast<void*>(area));
    RK_SetOverrideFunc(3, reinterpret_cast<void*>(point));
    EXPECT_EQ(0, copy(&RK_CopyBits_HQ_Straight, src, wide));
    EXPECT_EQ(0, g_area);
    EXPECT_EQ(64 * 4, g_point);
    EXPECT_EQ(0, copy(&RK_CopyBits_HQ_Straight, src, dst));
    EXPECT_EQ(63 * 4, g_area);
    RK_SetOverrideFunc(5, slot5);
    RK_SetOverrideFunc(3, slot3);
}

TEST(CopyBits, DoublingAndHalvingAFlatPictureKeepsItsInside) {
    for (Copy* how : {&RK_CopyBits_HQ_Straight, &RK_CopyBits_HQ_Premul}) {
        test::Picture<RK_Pixel8> src(8, 8), big(16, 16), back(8, 8);
        src.fill({255, 200, 100, 50});
        ASSERT_EQ(0, copy(how, src, big));
        ASSERT_EQ(0, copy(how, big, back));
        for (int y = 1; y < 7; ++y)
            for (int x = 1; x < 7; ++x)
                ASSERT_TRUE(test::sameBytes(RK_Pixel8{255, 200, 100, 50}, back.at(x, y)));
    }
}

RK_Long countDown(void* refcon) { return --*static_cast<int*>(refcon) == 0 ? 517 : 0; }

TEST(CopyBits, AbortIsAskedBeforeEvery64thRowFromTheFirst) {
    for (int stop = 1; stop <= 4; ++stop) {
        test::Picture<RK_Pixel8> src(4, 4), dst(4, 150);
        src.fill({255, 9, 9, 9});
        int left = stop;
        RK_ProgressInfo info = {&left, &countDown, nullptr};
        EXPECT_EQ(stop <= 3 ? 517 : 0, copy(&RK_CopyBits_HQ_Straight, src, dst, nullptr, nullptr, &info));
        const int drawn = stop <= 3 ? (stop - 1) * 64 : 150;
        for (int y = 2; y < 148; ++y) ASSERT_EQ(y < drawn, dst.at(1, y).alpha != 0) << y;
    }
}

TEST(CopyBits, BadArgumentsAreReportedAndTouchNothing) {
    test::Picture<RK_Pixel8> picture(4, 4);
    test::Picture<RK_Pixel16> other(4, 4);
    RK_LayerDef a = picture.record(), empty = a, deep = other.record();
    empty.data = nullptr;
    RefHost::TakeReports();
    const uint32_t sites[] = {48, 49, 50};
    for (int i = 0; i < 3; ++i) {
        for (const RK_LayerDef* src :
             {static_cast<const RK_LayerDef*>(nullptr), static_cast<const RK_LayerDef*>(&empty)}) {
            EXPECT_EQ(3, kCopies[i](nullptr, src, &a, nullptr, nullptr));
            const auto reports = RefHost::TakeReports();
            ASSERT_EQ(i == 0 ? 2u : 1u, reports.size());
            EXPECT_EQ(0x250000u | sites[i], reports[0].location);
            EXPECT_EQ("bad parameter passed to effect callback", reports[0].text);
        }
        EXPECT_EQ(3, kCopies[i](nullptr, &a, nullptr, nullptr, nullptr));
        RefHost::TakeReports();
    }
    for (Copy* how : {&RK_CopyBits_HQ_Straight, &RK_CopyBits_HQ_Premul}) {
        EXPECT_EQ(3, how(nullptr, &a, &deep, nullptr, nullptr));
        EXPECT_TRUE(test::onlyVerification(
            "RK_CopyBits_HQ_Straight_Static requires src and dst worlds to have same bit depth"));
    }
}

// ---- Bitmaps ---------------------------------------------------------------------------------------------

struct Bitmap {
    Bitmap(int16_t width, int16_t height, int32_t bits) {
        const GEO_Rect bounds = {0, 0, height, width};
        EXPECT_EQ(0, RAS_NewWorld(0, 0, 8, &bounds, bits, 0, 0, &handle));
        EXPECT_EQ(0, RAS_LoadLockPixels(1, handle, 0, 0));
    }
    ~Bitmap() {
        RAS_UnlockPixels(handle);
        RAS_DisposeWorld(handle);
    }
    RK_Pixel8* row(int y) {
        return reinterpret_cast<RK_Pixel8*>(static_cast<char*>((*handle)->base) + y * (*handle)->rowbytes);
    }
    RAS_World** handle = nullptr;
};

TEST(WorldCopy, BitmapsOfUnequalChannelOrderAreSwappedToTheDestinations) {
    Bitmap src(3, 2, 32), dst(3, 2, 32);
    src.row(1)[2] = {1, 2, 3, 4};
    RAS_SetChannelOrder(dst.handle, 1);
    ASSERT_EQ(0, RK_WorldCopy(nullptr, src.handle, dst.handle, nullptr, nullptr));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{4, 3, 2, 1}, dst.row(1)[2]));
    ASSERT_EQ(0, RK_WorldCopy_Static(nullptr, src.handle, dst.handle, nullptr, nullptr));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{1, 2, 3, 4}, dst.row(1)[2]));
}

TEST(WorldCopy, ADeeperDestinationOfAnotherOrderIsReportedAndGives5) {
    Bitmap src(3, 2, 32), dst(3, 2, 64);
    RAS_SetChannelOrder(src.handle, 1);
    RefHost::TakeReports();
    EXPECT_EQ(5, RK_WorldCopy(nullptr, src.handle, dst.handle, nullptr, nullptr));
    const auto reports = RefHost::TakeReports();
    ASSERT_EQ(1u, reports.size());
    EXPECT_EQ("Flipping 32/16-bit worlds is not implemented. Source data 8-bit BGRA.", reports[0].text);
}

TEST(WorldCopy, EveryFormCopiesEqualBitmaps) {
    for (auto* form : {&RK_WorldCopy, &RK_WorldCopy_HQ, &RK_WorldCopy_HQ_Straight, &RK_WorldCopy_HQ_Premul,
                       &RK_WorldCopy_Static, &RK_WorldCopy_HQ_Static, &RK_WorldCopy_HQ_Straight_Static}) {
        Bitmap src(5, 4, 32), dst(5, 4, 32), odd(5, 4, 24);
        src.row(3)[4] = {9, 8, 7, 6};
        EXPECT_EQ(0, form(nullptr, src.handle, dst.handle, nullptr, nullptr));
        EXPECT_TRUE(test::sameBytes(RK_Pixel8{9, 8, 7, 6}, dst.row(3)[4]));
        EXPECT_EQ(3, form(nullptr, src.handle, odd.handle, nullptr, nullptr));
        EXPECT_EQ(3, form(nullptr, nullptr, dst.handle, nullptr, nullptr));
    }
    RefHost::TakeReports();
}

// ---- With a geometry of their own ------------------------------------------------------------------------

TEST(CopyBitsMatrix, EveryPixelWhoseCentreComesFromTheSourceTakesIt) {
    test::Picture<RK_Pixel16> src(4, 3), dst(9, 9);
    src.fillRandom(8);
    const RK_LayerDef from = src.record();
    RK_LayerDef to = dst.record();
    const GEO_Matrix3 twice = {{{2, 0, 0}, {0, 2, 0}, {1, 1, 1}}};
    ASSERT_EQ(0, RK_CopyBits3_LO_Straight(nullptr, &from, &to, 1, &twice, nullptr, nullptr));
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 9; ++x) {
            const bool inside = x >= 1 && x < 9 && y >= 1 && y < 7;
            ASSERT_TRUE(
                test::sameBytes(inside ? src.at((x - 1) / 2, (y - 1) / 2) : RK_Pixel16{}, dst.at(x, y)));
        }
    const auto before = dst;
    const GEO_Matrix3 flat = {{{0, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    EXPECT_EQ(0, RK_CopyBits3_LO_Straight(nullptr, &from, &to, 1, &flat, nullptr, nullptr));
    EXPECT_TRUE(before == dst);
    EXPECT_EQ(3, RK_CopyBits3_LO_Straight(nullptr, &from, &to, 1, nullptr, nullptr, nullptr));
    RefHost::TakeReports();
}

TEST(SpecialBlit, ShowsAWorldOverItsBackground) {
    RK_WorldX<RK_PixelFloat> src(4, 4, RK_kWorldClear);
    src.row(0)[0] = {1.0f, 1.0f, 0.0f, 0.5f};
    src.row(2)[2] = {0.5f, 1.0f, 1.0f, 1.0f};
    RK_WorldX<RK_Pixel8> dst(20, 20, RK_kWorldClear);
    const RK_PixelFloat black = {1, 0, 0, 0}, white = {1, 1, 1, 1};
    ASSERT_EQ(0, RK_SpecialCasePixelBlit(&src, {0, 0}, true, {2, 2}, black, white, {0, 0, 20, 20}, &dst));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 255, 0, 128}, dst.row(0)[0]));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 128, 128, 128}, dst.row(1)[1]));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 0, 0, 0}, dst.row(3)[3]));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 255, 255, 255}, dst.row(3)[9]));
    RefHost::TakeReports();
    EXPECT_EQ(3, RK_SpecialCasePixelBlit(&src, {0, 0}, true, {0, 1}, black, white, {0, 0, 9, 9}, &dst));
    EXPECT_EQ(3, RK_SpecialCasePixelBlit(nullptr, {0, 0}, true, {1, 1}, black, white, {0, 0, 9, 9}, &dst));
    RefHost::FailAllocation(1);
    EXPECT_EQ(4, RK_SpecialCasePixelBlit(&src, {0, 0}, true, {1, 1}, black, white, {0, 0, 9, 9}, &dst));
    RefHost::FailAllocation(0);
    EXPECT_EQ(0, RK_SpecialCasePixelBlit(&src, {INT32_MAX, INT32_MIN}, false, {INT32_MAX, 1}, black, white,
                                         {-30000, -30000, 30000, 30000}, &dst));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 0, 0, 0}, dst.row(0)[0]));
    RefHost::TakeReports();
}

}  // namespace
