// Which copies go through which slots, and what a copy looks at before it draws.
#include <gtest/gtest.h>

#include "RK/host/RAS.h"
#include "RK/indep/passes/RK_CopyBits.h"
#include "RK/indep/passes/RK_Iterate.h"
#include "RK/indep/sample/RK_Samp.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "refhost/RefHost.h"
#include "test/Pixels.h"
#include "test/Reports.h"
#include "test/SlotOverride.h"
#include "test/world/OddWorld.h"

namespace {

using test::SlotOverride;

// ---- Slots ----------------------------------------------------------------------------------------------

// Three bodies that tell themselves by their results.
template <int result>
RK_Long body(RK_ProgressInfo*, const RK_LayerDef*, RK_LayerDef*, const GEO_Rect*, const GEO_Rect*) {
    return result;
}
struct Overrides {
    SlotOverride draft{23, &body<2300>}, straight{24, &body<2400>}, premul{25, &body<2500>};
};

TEST(CopySlots, RecordsGoThroughTheirSlotsAndStaticFormsDoNot) {
    test::Picture<RK_Pixel8> src(4, 4), dst(4, 4);
    const RK_LayerDef from = src.record();
    RK_LayerDef to = dst.record();
    const Overrides overrides;
    EXPECT_EQ(2300, RK_CopyBits_Draft(nullptr, &from, &to, nullptr, nullptr));
    EXPECT_EQ(2400, RK_CopyBits_HQ_Straight(nullptr, &from, &to, nullptr, nullptr));
    EXPECT_EQ(2500, RK_CopyBits_HQ_Premul(nullptr, &from, &to, nullptr, nullptr));
    EXPECT_EQ(0, RK_CopyBits_Draft_Static(nullptr, &from, &to, nullptr, nullptr));
    EXPECT_EQ(0, RK_CopyBits_HQ_Straight_Static(nullptr, &from, &to, nullptr, nullptr));
    EXPECT_EQ(0, RK_CopyBits_HQ_Premul_Static(nullptr, &from, &to, nullptr, nullptr));
}

struct Bitmap {
    explicit Bitmap(int32_t bits, int32_t order = 0) {
        const GEO_Rect bounds = {0, 0, 3, 3};
        EXPECT_EQ(0, RAS_NewWorld(0, 0, 8, &bounds, bits, 0, 0, &handle));
        EXPECT_EQ(0, RAS_LoadLockPixels(1, handle, 0, 0));
        RAS_SetChannelOrder(handle, order);
    }
    ~Bitmap() {
        RAS_UnlockPixels(handle);
        RAS_DisposeWorld(handle);
    }
    uint8_t* bytes() const { return static_cast<uint8_t*>((*handle)->base); }
    RAS_World** handle = nullptr;
};

TEST(CopySlots, BitmapsGoThroughTheSlotsAndStaticFormsDoNot) {
    const Bitmap src(32), dst(32);
    const Overrides overrides;
    EXPECT_EQ(2300, RK_WorldCopy(nullptr, src.handle, dst.handle, nullptr, nullptr));
    EXPECT_EQ(2400, RK_WorldCopy_HQ(nullptr, src.handle, dst.handle, nullptr, nullptr));
    EXPECT_EQ(2400, RK_WorldCopy_HQ_Straight(nullptr, src.handle, dst.handle, nullptr, nullptr));
    EXPECT_EQ(2500, RK_WorldCopy_HQ_Premul(nullptr, src.handle, dst.handle, nullptr, nullptr));
    EXPECT_EQ(0, RK_WorldCopy_Static(nullptr, src.handle, dst.handle, nullptr, nullptr));
    EXPECT_EQ(0, RK_WorldCopy_HQ_Static(nullptr, src.handle, dst.handle, nullptr, nullptr));
    EXPECT_EQ(0, RK_WorldCopy_HQ_Straight_Static(nullptr, src.handle, dst.handle, nullptr, nullptr));
}

TEST(CopySlots, ACopyThatFailedLeavesTheChannelOrderAlone) {
    const Bitmap src(32, 1), dst(32, 0);
    dst.bytes()[0] = 1;
    dst.bytes()[3] = 7;
    const SlotOverride draft(23, &body<2300>);
    EXPECT_EQ(2300, RK_WorldCopy(nullptr, src.handle, dst.handle, nullptr, nullptr));
    EXPECT_EQ(1, dst.bytes()[0]);
    EXPECT_EQ(7, dst.bytes()[3]);
}
// The rectangle is swapped whether or not the copy wrote into it.
TEST(CopySlots, AnEmptyCopySwapsTheRectangleOfTheDestinationInside) {
    const Bitmap src(32, 1), dst(32, 0);
    for (int i = 0; i < 36; ++i)
        dst.bytes()[i / 12 * (*dst.handle)->rowbytes + i % 12] = static_cast<uint8_t>(i % 4);
    const GEO_Rect none = {1, 1, 1, 2}, part = {-5, 1, 2, 90};
    EXPECT_EQ(0, RK_WorldCopy(nullptr, src.handle, dst.handle, &none, &part));
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x) {
            const uint8_t* const pixel = dst.bytes() + y * (*dst.handle)->rowbytes + x * 4;
            const bool swapped = y < 2 && x >= 1;
            EXPECT_EQ(swapped ? 3 : 0, pixel[0]) << x << ", " << y;
            EXPECT_EQ(swapped ? 2 : 1, pixel[1]) << x << ", " << y;
        }
}

// ---- Depths ---------------------------------------------------------------------------------------------

TEST(CopyDepths, AnUnknownDepthIsReportedBeforeRectanglesAreLookedAt) {
    test::Picture<RK_Pixel8> picture(4, 4);
    test::OddWorld odd(24);
    RK_LayerDef good = picture.record(), bad = good;
    bad.world_object = &odd;
    const GEO_Rect none = {2, 2, 2, 2};
    const GEO_Matrix3 identity = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    RefHost::TakeReports();
    for (const GEO_Rect* const rect : {static_cast<const GEO_Rect*>(nullptr), &none}) {
        EXPECT_EQ(3, RK_CopyBits_Draft(nullptr, &bad, &good, rect, rect));
        EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in##CONDITIONNAME"));
        EXPECT_EQ(3, RK_CopyBits_Draft(nullptr, &good, &bad, rect, rect));
        EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in##CONDITIONNAME"));
        EXPECT_EQ(3, RK_CopyBits_HQ_Straight(nullptr, &bad, &bad, rect, rect));
        EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in##CONDITIONNAME"));
        EXPECT_EQ(3, RK_CopyBits_HQ_Premul(nullptr, &bad, &bad, rect, rect));
        EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in##CONDITIONNAME"));
        EXPECT_EQ(3, RK_CopyBits3_LO_Straight(nullptr, &bad, &bad, 1, &identity, rect, rect));
        EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in##CONDITIONNAME"));
    }
    test::Picture<RK_Pixel16> deeper(4, 4);
    RK_LayerDef deep = deeper.record();
    EXPECT_EQ(3, RK_CopyBits3_LO_Straight(nullptr, &good, &deep, 1, &identity, &none, nullptr));
    EXPECT_TRUE(test::onlyVerification(
        "RK_CopyBits3_LO_Straight requires src and dst worlds to have same bit depth"));
}

// ---- Whole worlds ---------------------------------------------------------------------------------------

// What lies between the rows of two owners of equal rowbytes comes along in one move, but not behind the last
// row.
TEST(CopyWholeWorlds, OwnersAreMovedInOneAndReferencesRowByRow) {
    const RK_WorldX<RK_Pixel8> owner(1, 1, 0);
    RAS_World bitmap{};
    RAS_World* handle = &bitmap;
    for (auto* copy : {&RK_CopyBits_Draft, &RK_CopyBits_HQ_Straight, &RK_CopyBits_HQ_Premul}) {
        for (int form = 0; form < 4; ++form) {
            std::vector<RK_Pixel8> from(4 * 5, RK_Pixel8{1, 1, 1, 1}), to(4 * 5, RK_Pixel8{2, 2, 2, 2});
            RK_LayerDef src{}, dst{};
            src.width = dst.width = 3;
            src.height = dst.height = 5;
            src.rowbytes = dst.rowbytes = 16;
            src.data = from.data();
            dst.data = to.data();
            // Nothing but owners: by their objects, by bitmaps, or both. A record that stands alone is a
            // reference when its rows are apart.
            if (form != 3) src.world_object = const_cast<RK_WorldX<RK_Pixel8>*>(&owner);
            if (form == 0) dst.world_object = src.world_object;
            if (form == 1) dst.ras_world = &handle;
            const bool one_move = form < 2;
            if (form == 3) src.ras_world = &handle;
            ASSERT_EQ(0, copy(nullptr, &src, &dst, nullptr, nullptr));
            for (int i = 0; i < 20; ++i) {
                const bool between = i % 4 == 3, last = i == 19;
                EXPECT_EQ(!between || (one_move && !last) ? 1 : 2, to[static_cast<size_t>(i)].red)
                    << form << ", " << i;
            }
        }
    }
}
TEST(CopyWholeWorlds, ARecordAloneWhoseRowsAreTightIsNoReference) {
    test::Picture<RK_Pixel16> src(3, 5, 0), dst(3, 5, 0);
    src.fillRandom(1);
    const RK_LayerDef from = src.record();
    RK_LayerDef to = dst.record();
    ASSERT_EQ(0, RK_CopyBits_Draft(nullptr, &from, &to, nullptr, nullptr));
    EXPECT_TRUE(src == dst);
}

// ---- The sampled loop -----------------------------------------------------------------------------------

int g_area, g_point;
RK_Long countArea(void*, int32_t, int32_t, const RK_SampPB*, RK_Pixel8* out) {
    ++g_area;
    *out = {};
    return 0;
}
RK_Long countPoint(void*, int32_t, int32_t, const RK_SampPB*, RK_Pixel8* out) {
    ++g_point;
    *out = {};
    return 0;
}
TEST(CopySampled, AStepOfOnePixelIsPointSampledAndOneBeyondItByArea) {
    const SlotOverride area(5, &countArea), point(3, &countPoint), area_premul(6, &countArea),
        premul(4, &countPoint);
    const auto sampled = [](int src_width, auto* copy) {
        std::vector<RK_Pixel8> from(static_cast<size_t>(src_width)), to(65536 * 2);
        RK_LayerDef src{}, dst{};
        src.data = from.data();
        src.width = src_width;
        src.height = 1;
        src.rowbytes = src_width * 4;
        dst.data = to.data();
        dst.width = 65536;
        dst.height = 2;
        dst.rowbytes = 65536 * 4;
        g_area = g_point = 0;
        EXPECT_EQ(0, copy(nullptr, &src, &dst, nullptr, nullptr));
        return g_area - g_point;
    };
    for (auto* copy : {&RK_CopyBits_HQ_Straight, &RK_CopyBits_HQ_Premul}) {
        EXPECT_EQ(-65536 * 2, sampled(65536, copy));  // 0x10000 across, 0x8000 down
        EXPECT_EQ(65536 * 2, sampled(65537, copy));   // 0x10001
    }
}

RK_Long stopAtOnce(void* refcon) {
    ++*static_cast<int*>(refcon);
    return 999;
}
TEST(CopySampled, OnlySampledCopiesAskWhetherToStop) {
    test::Picture<RK_Pixel8> src(4, 4), same(4, 4), other(6, 6);
    const RK_LayerDef from = src.record();
    RK_LayerDef to_same = same.record(), to_other = other.record();
    int asked = 0;
    RK_ProgressInfo info = {&asked, &stopAtOnce, nullptr};
    EXPECT_EQ(0, RK_CopyBits_Draft(&info, &from, &to_same, nullptr, nullptr));
    EXPECT_EQ(0, RK_CopyBits_Draft(&info, &from, &to_other, nullptr, nullptr));
    EXPECT_EQ(0, RK_CopyBits_HQ_Straight(&info, &from, &to_same, nullptr, nullptr));
    EXPECT_EQ(0, RK_CopyBits_HQ_Premul(&info, &from, &to_same, nullptr, nullptr));
    EXPECT_EQ(0, asked);
    EXPECT_EQ(999, RK_CopyBits_HQ_Straight(&info, &from, &to_other, nullptr, nullptr));
    EXPECT_EQ(999, RK_CopyBits_HQ_Premul(&info, &from, &to_other, nullptr, nullptr));
    EXPECT_EQ(2, asked);
    // And a progress record without the function does not.
    info.abort_func = nullptr;
    EXPECT_EQ(0, RK_CopyBits_HQ_Straight(&info, &from, &to_other, nullptr, nullptr));
}

// ---- The special blit -----------------------------------------------------------------------------------

// Runs a generic body in `parts` parts, the last one first.
template <int parts>
RK_Long inParts(RK_Long iterations, void* refcon, RK_GenericFunc* fn) {
    EXPECT_EQ(-1, iterations);
    for (int i = parts - 1; i >= 0; --i) EXPECT_EQ(0, fn(refcon, 0, i, parts));
    return 0;
}
TEST(SpecialBlitRows, PartsOfAnyNumberMakeTheWhole) {
    RK_WorldX<RK_Pixel16> src(9, 9, RK_kWorldClear);
    test::Random r(4);
    for (int32_t y = 0; y < 9; ++y)
        for (int32_t x = 0; x < 9; ++x) src.row(y)[x] = test::pixel<RK_Pixel16>(r);
    const RK_PixelFloat black = {1, 0, 0, 0}, white = {1, 1, 1, 1};
    const auto show = [&](RK_WorldX<RK_Pixel8>& dst) {
        EXPECT_EQ(0, RK_SpecialCasePixelBlit(&src, {0, 0}, true, {1, 1}, black, white, {1, 1, 12, 10}, &dst));
    };
    RK_WorldX<RK_Pixel8> whole(12, 12, RK_kWorldClear);
    show(whole);
    const auto compare = [&](auto* generic) {
        RK_WorldX<RK_Pixel8> dst(12, 12, RK_kWorldClear);
        const SlotOverride over(53, generic);
        show(dst);
        for (int32_t y = 0; y < 12; ++y) EXPECT_EQ(0, std::memcmp(whole.row(y), dst.row(y), 12 * 4)) << y;
    };
    compare(&inParts<1>);
    compare(&inParts<4>);   // eleven rows: 2, 2, 2 and 5
    compare(&inParts<30>);  // more parts than rows: the last has them all
}
template <int result>
RK_Long refuse(RK_Long, void*, RK_GenericFunc*) {
    return result;
}
TEST(SpecialBlitRows, AFailureOfTheRowsIsTheResultAndNothingStaysOpen) {
    RK_WorldX<RK_Pixel8> src(4, 4, RK_kWorldClear), dst(4, 4, RK_kWorldClear);
    const RK_PixelFloat black = {1, 0, 0, 0};
    const auto before = RefHost::Memory();
    const SlotOverride over(53, &refuse<517>);
    EXPECT_EQ(517, RK_SpecialCasePixelBlit(&src, {0, 0}, true, {1, 1}, black, black, {0, 0, 4, 4}, &dst));
    EXPECT_EQ(before.blocks, RefHost::Memory().blocks);
}
TEST(SpecialBlitRows, AnUnknownDepthOfTheSourceIsReported) {
    test::OddWorld odd(24);
    RK_Pixel8 pixels[4] = {};
    odd.record.data = pixels;
    odd.record.width = odd.record.height = 2;
    odd.record.rowbytes = 8;
    RK_WorldX<RK_Pixel8> dst(4, 4, RK_kWorldClear);
    const RK_PixelFloat black = {1, 0, 0, 0};
    RefHost::TakeReports();
    EXPECT_EQ(3, RK_SpecialCasePixelBlit(&odd, {0, 0}, true, {1, 1}, black, black, {0, 0, 4, 4}, &dst));
    EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in SpecialCasePixelBlit"));
    EXPECT_EQ(0, dst.row(0)[0].alpha);
}

// Alphas of exactly one are shown as they are; with SSE2 in the record other values are held to a byte,
// without it they keep their low bits.
TEST(SpecialBlitRows, FloatPixelsAreConvertedAsTheProcessorRecordSays) {
    RK_WorldX<RK_PixelFloat> src(4, 1, RK_kWorldClear);
    src.row(0)[0] = {1, 0.5f, 2, -1};       // 127.5
    src.row(0)[1] = {2, 0.5f, 0.5f, 0.5f};  // alpha 510
    src.row(0)[2] = {1, 126.5f / 255, 0, std::numeric_limits<float>::quiet_NaN()};
    src.row(0)[3] = {-1, 1, 1, 1};
    RK_WorldX<RK_Pixel8> dst(4, 1, RK_kWorldClear);
    const RK_PixelFloat black = {1, 0, 0, 0};
    const KIT_CPU_Data facts = *KIT_G_CPU_DataP;
    const auto show = [&](uint32_t sse2) {
        RefHost::SetCPU({sse2, 0});
        EXPECT_EQ(0, RK_SpecialCasePixelBlit(&src, {0, 0}, false, {1, 1}, black, black, {0, 0, 1, 4}, &dst));
        RefHost::SetCPU(facts);
    };
    show(1);
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 128, 255, 0}, dst.row(0)[0]));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 128, 128, 128}, dst.row(0)[1]));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 126, 0, 0}, dst.row(0)[2]));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 0, 0, 0}, dst.row(0)[3]));
    show(0);
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 128, 255, 0}, dst.row(0)[0]));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 127, 127, 127}, dst.row(0)[1]));  // 254 of 255
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 127, 0, 0}, dst.row(0)[2]));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 2, 2, 2}, dst.row(0)[3]));  // -254 is 2
}

}  // namespace
