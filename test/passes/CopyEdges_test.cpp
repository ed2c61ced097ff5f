// The edges of the copies: what is told before what, where sampled copies begin and end, which samplers they
// take at which depth, and what the special blit leaves behind without memory.
#include <gtest/gtest.h>

#include "RK/host/RAS.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/passes/RK_CopyBits.h"
#include "RK/indep/sample/RK_AreaSample.h"
#include "RK/indep/sample/RK_SubpixelSample.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "refhost/RefHost.h"
#include "test/Pixels.h"
#include "test/Reports.h"
#include "test/SlotOverride.h"
#include "test/world/OddWorld.h"

namespace {

using test::SlotOverride;

using Copy = RK_Long(RK_ProgressInfo*, const RK_LayerDef*, RK_LayerDef*, const GEO_Rect*, const GEO_Rect*);
Copy* const kSampled[] = {&RK_CopyBits_HQ_Straight, &RK_CopyBits_HQ_Premul};

// ---- What is told before what ---------------------------------------------------------------------------

TEST(CopyOrder, MissingPixelsAreToldBeforeDepthsAndDepthsBeforeRectangles) {
    test::Picture<RK_Pixel8> picture(4, 4);
    const test::Picture<RK_Pixel8> untouched = picture;
    test::Picture<RK_Pixel16> deeper(4, 4);
    test::OddWorld odd(24);
    RK_LayerDef good = picture.record(), deep = deeper.record(), without = good;
    without.data = nullptr;
    without.world_object = &odd;
    const GEO_Rect none = {2, 2, 2, 2};
    RefHost::TakeReports();
    for (const GEO_Rect* const rect : {static_cast<const GEO_Rect*>(nullptr), &none}) {
        for (int i = 0; i < 2; ++i) {
            const uint32_t site = i == 0 ? RKp_kSiteCopyStraight : RKp_kSiteCopyPremul;
            EXPECT_EQ(3, kSampled[i](nullptr, &without, &deep, rect, rect));
            EXPECT_TRUE(test::onlyBadParam(site));
            EXPECT_EQ(3, kSampled[i](nullptr, &good, &without, rect, rect));
            EXPECT_TRUE(test::onlyBadParam(site));
            EXPECT_EQ(3, kSampled[i](nullptr, &good, &deep, rect, rect));
            EXPECT_TRUE(test::onlyVerification(
                "RK_CopyBits_HQ_Straight_Static requires src and dst worlds to have same bit depth"));
        }
        // The draft body tells it twice in a row.
        for (const auto& [src, dst] : {std::make_pair(&without, &deep), std::make_pair(&good, &without)}) {
            EXPECT_EQ(3, RK_CopyBits_Draft(nullptr, src, dst, rect, rect));
            const auto reports = RefHost::TakeReports();
            ASSERT_EQ(2u, reports.size());
            for (const auto& report : reports) {
                EXPECT_EQ(RefHost::ReportKind::Error, report.kind);
                EXPECT_EQ(8, report.severity);
                EXPECT_EQ(RK_kLocation | 48u, report.location);
                EXPECT_EQ("bad parameter passed to effect callback", report.text);
            }
        }
    }
    EXPECT_TRUE(untouched == picture);
}

TEST(CopyOrder, AnOrderThatCannotBeMatchedIsAnErrorOfTheUsers) {
    const GEO_Rect bounds = {0, 0, 2, 2};
    RAS_World **src = nullptr, **dst = nullptr;
    ASSERT_EQ(0, RAS_NewWorld(0, 0, 8, &bounds, 32, 0, 0, &src));
    ASSERT_EQ(0, RAS_NewWorld(0, 0, 8, &bounds, 64, 0, 0, &dst));
    ASSERT_EQ(0, RAS_LoadLockPixels(1, src, 0, 0));
    ASSERT_EQ(0, RAS_LoadLockPixels(1, dst, 0, 0));
    RefHost::TakeReports();
    // A deeper bitmap counts as of order 0, whatever it says.
    RAS_SetChannelOrder(dst, 1);
    EXPECT_EQ(0, RK_WorldCopy(nullptr, src, dst, nullptr, nullptr));
    EXPECT_EQ(0, RK_WorldCopy(nullptr, dst, src, nullptr, nullptr));
    RAS_SetChannelOrder(dst, 0);
    RAS_SetChannelOrder(src, 1);
    EXPECT_EQ(0, RK_WorldCopy(nullptr, dst, src, nullptr, nullptr));
    EXPECT_TRUE(test::noReports());
    EXPECT_EQ(5, RK_WorldCopy(nullptr, src, dst, nullptr, nullptr));
    const auto reports = RefHost::TakeReports();
    ASSERT_EQ(1u, reports.size());
    EXPECT_EQ(RefHost::ReportKind::Error, reports[0].kind);
    EXPECT_EQ(8, reports[0].severity);
    EXPECT_EQ("Flipping 32/16-bit worlds is not implemented. Source data 8-bit BGRA.", reports[0].text);
    for (RAS_World** const bitmap : {src, dst}) {
        RAS_UnlockPixels(bitmap);
        RAS_DisposeWorld(bitmap);
    }
}

// ---- Sampled copies -------------------------------------------------------------------------------------

struct Calls {
    int made = 0, stop_at = 0;
    static RK_Long abort(void* refcon) {
        Calls& calls = *static_cast<Calls*>(refcon);
        return ++calls.made == calls.stop_at ? 8642 : 0;
    }
};

// Rows count from the first that is drawn, wherever the rectangle begins. At every depth and both ways.
template <class P>
void stopsAtEveryCall(Copy* copy) {
    test::Picture<P> src(4, 4);
    src.fillRandom(1);
    const RK_LayerDef from = src.record();
    const GEO_Rect rects[] = {{-70, 0, 130, 4}, {-1, -3, 63, 4}, {0, 0, 65, 4}, {150, 1, 230, 3}};
    const int tops[] = {0, 0, 0, 150}, drawn[] = {130, 63, 65, 50}, calls[] = {3, 1, 2, 1};
    for (int i = 0; i < 4; ++i) {
        test::Picture<P> before(4, 200);
        before.fillRandom(2);
        test::Picture<P> whole = before;
        RK_LayerDef to = whole.record();
        Calls asked;
        RK_ProgressInfo info = {&asked, &Calls::abort, nullptr};
        ASSERT_EQ(0, copy(&info, &from, &to, nullptr, &rects[i]));
        EXPECT_EQ(calls[i], asked.made) << i;
        for (int stop = 1; stop <= asked.made; ++stop) {
            test::Picture<P> cut = before;
            to = cut.record();
            Calls again = {0, stop};
            info.refcon = &again;
            EXPECT_EQ(8642, copy(&info, &from, &to, nullptr, &rects[i]));
            EXPECT_EQ(stop, again.made);
            for (int y = 0; y < 200; ++y) {
                const bool done = y < tops[i] || y >= tops[i] + drawn[i] || y < tops[i] + (stop - 1) * 64;
                const test::Picture<P>& wanted = done ? whole : before;
                for (int x = 0; x < 4; ++x)
                    ASSERT_TRUE(test::sameBytes(wanted.at(x, y), cut.at(x, y)))
                        << i << ", " << stop << ": " << y;
            }
        }
    }
}
TEST(CopySampledEdges, StopAtEveryCallAndFinishedRowsStay) {
    for (Copy* const copy : kSampled) {
        stopsAtEveryCall<RK_Pixel8>(copy);
        stopsAtEveryCall<RK_Pixel16>(copy);
        stopsAtEveryCall<RK_PixelFloat>(copy);
    }
}

// What samplers were asked.
struct Asked {
    int point = 0, area = 0;
    RK_SampPB pb{};
    int32_t x = 0, y = 0;  // of the first
};
Asked g_asked;
template <class P, int Asked::*count>
RK_Long ask(void* ref, int32_t x, int32_t y, const RK_SampPB* pb, P* out) {
    EXPECT_EQ(nullptr, ref);
    if (g_asked.point + g_asked.area == 0) g_asked.pb = *pb, g_asked.x = x, g_asked.y = y;
    ++(g_asked.*count);
    *out = P{};
    return 0;
}
template <class P>
Asked askedBy(Copy* copy, int sw, int sh, int dw, int dh, const GEO_Rect* s = nullptr,
              const GEO_Rect* d = nullptr) {
    test::Picture<P> src(sw, sh), dst(dw, dh);
    const RK_LayerDef from = src.record();
    RK_LayerDef to = dst.record();
    g_asked = Asked{};
    EXPECT_EQ(0, copy(nullptr, &from, &to, s, d));
    return g_asked;
}

// The premultiplied body has samplers of its own at 8 bits alone; float takes no slot.
TEST(CopySampledEdges, SamplersComeFromTheSlotsOfTheDepth) {
    const SlotOverride p3(3, &ask<RK_Pixel8, &Asked::point>), p64(64, &ask<RK_Pixel16, &Asked::point>);
    const SlotOverride a5(5, &ask<RK_Pixel8, &Asked::area>), a65(65, &ask<RK_Pixel16, &Asked::area>);
    for (Copy* const copy : kSampled) {
        const bool straight = copy == kSampled[0];
        EXPECT_EQ(straight ? 64 : 0, askedBy<RK_Pixel8>(copy, 4, 4, 8, 8).point);
        EXPECT_EQ(straight ? 12 : 0, askedBy<RK_Pixel8>(copy, 4, 4, 3, 4).area);
        EXPECT_EQ(64, askedBy<RK_Pixel16>(copy, 4, 4, 8, 8).point);
        EXPECT_EQ(12, askedBy<RK_Pixel16>(copy, 4, 4, 4, 3).area);
        for (const int size : {3, 8}) {
            const Asked asked = askedBy<RK_PixelFloat>(copy, 4, 4, size, size);
            EXPECT_EQ(0, asked.point + asked.area);
        }
    }
    const SlotOverride p4(4, &ask<RK_Pixel8, &Asked::point>), a6(6, &ask<RK_Pixel8, &Asked::area>);
    EXPECT_EQ(64, askedBy<RK_Pixel8>(kSampled[1], 4, 4, 8, 8).point);
    EXPECT_EQ(12, askedBy<RK_Pixel8>(kSampled[1], 4, 4, 3, 4).area);
}

TEST(CopySampledEdges, StepsAndPlacesAreThoseOfTheRectanglesBeforeAnyCut) {
    const SlotOverride p3(3, &ask<RK_Pixel8, &Asked::point>), a5(5, &ask<RK_Pixel8, &Asked::area>);
    // 5 columns to 3, 4 rows to 8: 1.67 across, one half down.
    Asked asked = askedBy<RK_Pixel8>(kSampled[0], 5, 4, 3, 8);
    const int32_t sx = 5 * 65536 / 3, sy = 0x8000;
    EXPECT_EQ(24, asked.area);
    EXPECT_EQ(sx / 2, asked.pb.x_radius);
    EXPECT_EQ(sy / 2, asked.pb.y_radius);
    EXPECT_EQ(sx / 2, asked.pb.area);
    EXPECT_EQ(sx / 2 - 32768, asked.x);
    EXPECT_EQ(sy / 2 - 32768, asked.y);
    for (const uint32_t zero : {asked.pb.reserved1, asked.pb.reserved2, uint32_t(asked.pb.motion_samples)})
        EXPECT_EQ(0u, zero);
    // A destination that begins two columns to the left and three rows above.
    const GEO_Rect s = {1, 2, 3, 5}, d = {-3, -2, 3, 4};
    asked = askedBy<RK_Pixel8>(kSampled[0], 9, 9, 3, 2, &s, &d);
    EXPECT_EQ(3 * 2, asked.point);
    EXPECT_EQ(2 * 65536 + 0x4000 - 32768 + 2 * 0x8000, asked.x);
    EXPECT_EQ(65536 + (2 * 65536 / 6) / 2 - 32768 + 3 * (2 * 65536 / 6), asked.y);
}

// Steps keep their low 32 bits, and the area ends where its number does: safe, if of no use.
TEST(CopySampledEdges, ReductionsBeyondTheReachOfStepsAreSafe) {
    for (Copy* const copy : kSampled) {
        for (const int width : {32767, 32768, 40000, 65535, 65536, 70000}) {
            for (const bool turned : {false, true}) {
                test::Picture<RK_Pixel8> src(turned ? 3 : width, turned ? width : 3), dst(1, 1);
                src.fill({255, 9, 9, 9});
                const RK_LayerDef from = src.record();
                RK_LayerDef to = dst.record();
                EXPECT_EQ(0, copy(nullptr, &from, &to, nullptr, nullptr)) << width;
                EXPECT_TRUE(dst.guardsWhole());
            }
        }
    }
    const SlotOverride p3(3, &ask<RK_Pixel8, &Asked::point>), a5(5, &ask<RK_Pixel8, &Asked::area>);
    const Asked most = askedBy<RK_Pixel8>(kSampled[0], 32767, 2, 1, 1);
    EXPECT_EQ(32767 * 32768, most.pb.x_radius);
    EXPECT_EQ(INT32_MAX, most.pb.area);
    EXPECT_EQ(INT32_MIN / 2, askedBy<RK_Pixel8>(kSampled[0], 32768, 3, 1, 1).pb.x_radius);
    EXPECT_EQ(4464 * 32768, askedBy<RK_Pixel8>(kSampled[0], 70000, 3, 1, 1).pb.x_radius);
}

// What lies beside the source rectangle takes part; what lies beside the world does not.
template <class P>
void seesBeyondTheRectangle(Copy* copy) {
    using C = RK_Channel<P>;
    constexpr auto full = static_cast<C>(sizeof(P) == 4 ? 255 : sizeof(P) == 8 ? 32768 : 1);
    test::Picture<P> src(6, 6), dst(8, 8);
    src.fill({full, full, 0, 0});
    for (int y = 2; y < 4; ++y)
        for (int x = 2; x < 4; ++x) src.at(x, y) = {full, 0, full, 0};
    const RK_LayerDef from = src.record();
    RK_LayerDef to = dst.record();
    const GEO_Rect inner = {2, 2, 4, 4};
    ASSERT_EQ(0, copy(nullptr, &from, &to, &inner, nullptr));
    EXPECT_EQ(full, dst.at(0, 4).alpha);
    EXPECT_GT(dst.at(0, 4).red, 0);
    EXPECT_EQ(C{0}, dst.at(4, 4).red);
    const GEO_Rect corner = {0, 0, 2, 2};
    ASSERT_EQ(0, copy(nullptr, &from, &to, &corner, nullptr));
    EXPECT_LT(dst.at(0, 4).alpha, full);
    EXPECT_EQ(full, dst.at(7, 4).alpha);
}
TEST(CopySampledEdges, NeighboursBesideTheSourceRectangleTakePart) {
    for (Copy* const copy : kSampled) {
        seesBeyondTheRectangle<RK_Pixel8>(copy);
        seesBeyondTheRectangle<RK_Pixel16>(copy);
        seesBeyondTheRectangle<RK_PixelFloat>(copy);
    }
}

// ---- The draft walk's cut -------------------------------------------------------------------------------

// Ten columns of which two lie left of the world, onto seven: the destination begins 2 * 7 / 10 = 1 later,
// and the walk starts anew from there: eight columns onto six.
TEST(CopyDraftCut, TheOtherSideMovesInProportionTruncatedAndTheWalkStartsThere) {
    test::Picture<RK_Pixel8> src(8, 1), dst(9, 1);
    for (int x = 0; x < 8; ++x) src.at(x, 0) = {255, uint8_t(x + 1), 0, 0};
    const RK_LayerDef from = src.record();
    RK_LayerDef to = dst.record();
    const GEO_Rect s = {0, -2, 1, 8}, d = {0, 1, 1, 8};
    ASSERT_EQ(0, RK_CopyBits_Draft(nullptr, &from, &to, &s, &d));
    const uint8_t wanted[9] = {0, 0, 2, 3, 4, 6, 7, 8, 0};
    for (int x = 0; x < 9; ++x) EXPECT_EQ(wanted[x], dst.at(x, 0).red) << x;
}

TEST(CopyDraftCut, ASideThatEndsEmptyDrawsNothing) {
    test::Picture<RK_Pixel8> src(8, 8), dst(8, 8);
    const test::Picture<RK_Pixel8> untouched = dst;
    src.fill({255, 1, 2, 3});
    const RK_LayerDef from = src.record();
    RK_LayerDef to = dst.record();
    // The left half of four source columns lies outside, and with it the only column of two that is inside.
    const GEO_Rect s = {0, -2, 8, 2}, d = {0, 7, 8, 9};
    EXPECT_EQ(0, RK_CopyBits_Draft(nullptr, &from, &to, &s, &d));
    EXPECT_TRUE(untouched == dst);
}

// ---- Memory ---------------------------------------------------------------------------------------------

TEST(CopyMemory, CopiesNeedNone) {
    test::Picture<RK_Pixel16> src(9, 9), dst(20, 20), small(4, 4), same(9, 9);
    const RK_LayerDef from = src.record();
    const GEO_Matrix3 m = {{{2, 0, 0}, {0, 2, 0}, {0, 0, 1}}};
    RefHost::FailAllocation(1);
    for (test::Picture<RK_Pixel16>* const picture : {&dst, &small, &same}) {
        RK_LayerDef to = picture->record();
        for (Copy* const copy : {&RK_CopyBits_Draft, &RK_CopyBits_HQ_Straight, &RK_CopyBits_HQ_Premul})
            EXPECT_EQ(0, copy(nullptr, &from, &to, nullptr, nullptr));
        EXPECT_EQ(0, RK_CopyBits3_LO_Straight(nullptr, &from, &to, 1, &m, nullptr, nullptr));
    }
    EXPECT_EQ(0, RefHost::AllocationsSince());
    RefHost::FailAllocation(0);
}

// The table of the special blit is made before anything is shown, its failure told once, after the fact.
TEST(CopyMemory, EveryAllocationOfTheSpecialBlitThatFailsGives4AndShowsNothing) {
    RK_WorldX<RK_Pixel16> src(9, 9, RK_kWorldClear);
    RK_WorldX<RK_Pixel8> dst(20, 20, RK_kWorldClear);
    const RK_PixelFloat black = {1, 0, 0, 0}, white = {1, 1, 1, 1};
    const auto before = RefHost::Memory();
    RefHost::TakeReports();
    int failures = 0;
    for (int64_t n = 1;; ++n) {
        RefHost::FailAllocation(n);
        const RK_Long result =
            RK_SpecialCasePixelBlit(&src, {0, 0}, true, {2, 2}, black, white, {0, 0, 20, 20}, &dst);
        const bool reached = RefHost::AllocationsSince() >= n;
        RefHost::FailAllocation(0);
        EXPECT_EQ(before.blocks, RefHost::Memory().blocks);
        EXPECT_EQ(before.bytes, RefHost::Memory().bytes);
        EXPECT_EQ(0, RefHost::MinimalisticBrackets());
        if (!reached) {
            EXPECT_EQ(0, result);
            EXPECT_EQ(255, dst.row(19)[19].alpha);
            EXPECT_TRUE(test::noReports());
            break;
        }
        ++failures;
        EXPECT_EQ(4, result);
        // The first block is the host's own, for holding the report back.
        if (n == 1) {
            EXPECT_TRUE(test::noReports());
        } else {
            EXPECT_TRUE(test::onlyReport(RefHost::ReportKind::Memory, 0, RKp_Text(RK_kMsg_ImageBuffer)));
        }
        for (int32_t y = 0; y < 20; ++y)
            for (int32_t x = 0; x < 20; ++x) ASSERT_EQ(0, dst.row(y)[x].alpha);
    }
    EXPECT_EQ(2, failures);
}

}  // namespace
