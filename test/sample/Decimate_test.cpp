#include "RK/indep/sample/RK_Decimate.h"

#include <gtest/gtest.h>

#include <memory>

#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "refhost/RefHost.h"
#include "test/Pixels.h"
#include "test/Reports.h"

namespace {

using Make = void(const RK_World*, bool, const RK_World**);

using test::thrownBy;

template <class P>
std::unique_ptr<const RK_World> halved(Make* make, const RK_WorldX<P>& src, bool keep_odd) {
    const RK_World* out = nullptr;
    make(&src, keep_odd, &out);
    return std::unique_ptr<const RK_World>(out);
}
template <class P>
const P& pixelAt(const RK_World& world, int32_t x, int32_t y) {
    return reinterpret_cast<const P*>(static_cast<const char*>(world.record.data) +
                                      y * world.record.rowbytes)[x];
}

TEST(Decimate, OnePixelStaysOneWhenOddIsKeptAndIsNoWorldOtherwise) {
    RK_WorldX<RK_Pixel8> src(1, 1, 0);
    src.row(0)[0] = {200, 1, 2, 3};
    const auto kept = halved(RK_NewBoxFilteredDecimateByTwo, src, true);
    ASSERT_NE(nullptr, kept);
    EXPECT_EQ(1, kept->record.width);
    EXPECT_EQ(50, pixelAt<RK_Pixel8>(*kept, 0, 0).alpha);  // halved by each pass
    const RK_World* untouched = kept.get();
    RefHost::TakeReports();
    for (Make* make : {RK_NewBoxFilteredDecimateByTwo, RK_NewGaussFilteredDecimateByTwo}) {
        EXPECT_EQ(516, thrownBy([&] { make(&src, false, &untouched); }));
        EXPECT_EQ(kept.get(), untouched);
        EXPECT_TRUE(
            test::onlyReport(RefHost::ReportKind::Error, RK_kLocation | RKp_kSiteWorld, "invalid parameter"));
    }
}

// One axis without pixels is enough.
TEST(Decimate, SizesRoundDownAndWithOddKeptUp) {
    const auto size = [](int32_t width, int32_t height, bool keep_odd) {
        RK_WorldX<RK_Pixel8> src(width, height, RK_kWorldClear);
        const auto out = halved(RK_NewGaussFilteredDecimateByTwo, src, keep_odd);
        return std::make_pair(out->record.width, out->record.height);
    };
    EXPECT_EQ(size(5, 4, false), std::make_pair(2, 2));
    EXPECT_EQ(size(5, 4, true), std::make_pair(3, 2));
    EXPECT_EQ(size(2, 7, true), std::make_pair(1, 4));
    RK_WorldX<RK_Pixel8> thin(1, 40, RK_kWorldClear);
    const RK_World* out = nullptr;
    EXPECT_EQ(516, thrownBy([&] { RK_NewBoxFilteredDecimateByTwo(&thin, false, &out); }));
    EXPECT_EQ(nullptr, out);
    RefHost::TakeReports();
}

TEST(Decimate, AnOddLastPixelIsDroppedOrComesInWithHalfItsAlpha) {
    RK_WorldX<RK_Pixel16> src(3, 2, 0);
    for (int32_t y = 0; y < 2; ++y)
        for (int32_t x = 0; x < 3; ++x) src.row(y)[x] = {32768, uint16_t(100 * x), 0, 0};
    EXPECT_EQ(1, halved(RK_NewBoxFilteredDecimateByTwo, src, false)->record.width);
    const auto kept = halved(RK_NewBoxFilteredDecimateByTwo, src, true);
    EXPECT_TRUE(test::sameBytes(RK_Pixel16{32768, 50, 0, 0}, pixelAt<RK_Pixel16>(*kept, 0, 0)));
    EXPECT_TRUE(test::sameBytes(RK_Pixel16{16384, 200, 0, 0}, pixelAt<RK_Pixel16>(*kept, 1, 0)));
}

// Differing alphas at both depths, by hand: m = (mul(c0, a0) + mul(c1, a0)) >> 1.
TEST(Decimate, DifferingAlphasMultiplyByTheFirstAndDivideByTheMean) {
    RK_WorldX<RK_Pixel8> src(2, 2, 0), out(1, 1, 0);
    for (int32_t y = 0; y < 2; ++y) {
        src.row(y)[0] = {200, 100, 255, 0};
        src.row(y)[1] = {100, 200, 255, 9};
    }
    RK_BoxFilteredDecimateByTwo(&src, false, &out);
    // mul8(100, 200) = 78, mul8(200, 200) = 157: m = 117 of alpha 150.
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{150, 199, 255, 5}, out.row(0)[0]));
    RK_WorldX<RK_Pixel16> src16(2, 2, 0), out16(1, 1, 0);
    for (int32_t y = 0; y < 2; ++y) {
        src16.row(y)[0] = {16384, 8192, 32768, 0};
        src16.row(y)[1] = {32768, 16384, 32768, 100};
    }
    RK_BoxFilteredDecimateByTwo(&src16, false, &out16);
    // m = (4096 + 8192) / 2 of alpha 24576, rounded by a quarter of both alphas; a quotient of one is full.
    EXPECT_TRUE(test::sameBytes(
        RK_Pixel16{24576, uint16_t((12288 + 6144 * 32768LL) / 24576),
                   uint16_t((12288 + 16384 * 32768LL) / 24576), uint16_t((12288 + 25 * 32768LL) / 24576)},
        out16.row(0)[0]));
}

TEST(Decimate, TwoOpaquePixelsAverageExactly) {
    RK_WorldX<RK_Pixel16> src(2, 2, 0);
    for (int32_t y = 0; y < 2; ++y) {
        src.row(y)[0] = {32768, 100, 0, 32768};
        src.row(y)[1] = {32768, 301, 0, 0};
    }
    const auto out = halved(RK_NewBoxFilteredDecimateByTwo, src, false);
    EXPECT_TRUE(test::sameBytes(RK_Pixel16{32768, 200, 0, 16384}, pixelAt<RK_Pixel16>(*out, 0, 0)));
}

TEST(Decimate, BothColoursOfAPairTakeTheFirstAlpha) {
    RK_WorldX<RK_Pixel8> src(2, 1, 0), out(1, 1, RK_kWorldClear);
    src.row(0)[0] = {0, 255, 255, 255};
    src.row(0)[1] = {200, 90, 80, 70};
    RK_WorldX<RK_Pixel8> tall(2, 2, 0);
    for (int32_t y = 0; y < 2; ++y) std::memcpy(tall.row(y), src.row(0), 8);
    RK_BoxFilteredDecimateByTwo(&tall, false, &out);
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{100, 0, 0, 0}, out.row(0)[0]));
}

TEST(Decimate, AlphasZeroAndOneGiveClearPixelsOfFullColour) {
    RK_WorldX<RK_Pixel8> src(2, 2, 0), out(1, 1, 0);
    for (int32_t y = 0; y < 2; ++y) {
        src.row(y)[0] = {1, 5, 5, 5};
        src.row(y)[1] = {0, 9, 9, 9};
    }
    RK_BoxFilteredDecimateByTwo(&src, false, &out);
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{0, 255, 255, 255}, out.row(0)[0]));
}

TEST(Decimate, TheGaussianLosesAlphaAtTheEndsOnly) {
    RK_WorldX<RK_Pixel8> src(16, 16, 0);
    const RK_Pixel16 grey = {32768, 16384, 16384, 16384};
    src.Fill(grey, nullptr);
    const auto out = halved(RK_NewGaussFilteredDecimateByTwo, src, false);
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{255, 128, 128, 128}, pixelAt<RK_Pixel8>(*out, 3, 3)));
    EXPECT_LT(pixelAt<RK_Pixel8>(*out, 0, 3).alpha, 200);
    EXPECT_EQ(128, pixelAt<RK_Pixel8>(*out, 0, 0).red);
}

TEST(Decimate, BadArgumentsThrow3OrDoNothing) {
    RK_WorldX<RK_PixelFloat> deep(4, 4, 0), deep_out(2, 2, 0);
    RK_WorldX<RK_Pixel8> src(4, 4, 0);
    RK_WorldX<RK_Pixel16> other(2, 2, 0);
    const RK_World* out = nullptr;
    EXPECT_EQ(3, thrownBy([&] { RK_BoxFilteredDecimateByTwo(&deep, false, &deep_out); }));
    EXPECT_EQ(3, thrownBy([&] { RK_GaussFilteredDecimateByTwo(&deep, false, &deep_out); }));
    EXPECT_EQ(3, thrownBy([&] { RK_NewBoxFilteredDecimateByTwo(&deep, false, &out); }));
    EXPECT_EQ(3, thrownBy([&] { RK_BoxFilteredDecimateByTwo(&src, false, &other); }));
    EXPECT_EQ(3, thrownBy([&] { RK_BoxFilteredDecimateByTwo(nullptr, false, &other); }));
    EXPECT_EQ(0, thrownBy([&] { RK_NewBoxFilteredDecimateByTwo(nullptr, false, &out); }));
    EXPECT_EQ(0, thrownBy([&] { RK_NewGaussFilteredDecimateByTwo(&src, false, nullptr); }));
    EXPECT_EQ(nullptr, out);
}

TEST(Decimate, AFailedPassBetweenThrows4AndTheDestinationStays) {
    RK_WorldX<RK_Pixel8> src(9, 7, RK_kWorldClear), dst(4, 3, 0);
    dst.row(2)[3] = {7, 8, 9, 10};
    const auto before = RefHost::Memory();
    for (auto* halve : {RK_BoxFilteredDecimateByTwo, RK_GaussFilteredDecimateByTwo}) {
        RefHost::FailAllocation(1);
        EXPECT_EQ(4, thrownBy([&] { halve(&src, false, &dst); }));
        RefHost::FailAllocation(0);
        EXPECT_EQ(before.blocks, RefHost::Memory().blocks);
        EXPECT_TRUE(test::sameBytes(RK_Pixel8{7, 8, 9, 10}, dst.row(2)[3]));
    }
    RefHost::TakeReports();
}

TEST(Decimate, EveryAllocationThatFailsThrows4AndLeaksNothing) {
    RK_WorldX<RK_Pixel8> src(9, 7, RK_kWorldClear);
    const auto before = RefHost::Memory();
    for (Make* make : {RK_NewBoxFilteredDecimateByTwo, RK_NewGaussFilteredDecimateByTwo}) {
        for (int64_t n = 1;; ++n) {
            const RK_World* out = nullptr;
            RefHost::FailAllocation(n);
            const RK_Long thrown = thrownBy([&] { make(&src, true, &out); });
            const bool reached = RefHost::AllocationsSince() >= n;
            RefHost::FailAllocation(0);
            if (!reached) {
                EXPECT_GT(n, 2);
                delete out;
                break;
            }
            EXPECT_EQ(4, thrown);
            EXPECT_EQ(nullptr, out);
            EXPECT_EQ(before.blocks, RefHost::Memory().blocks);
        }
    }
    RefHost::TakeReports();
}

}  // namespace
