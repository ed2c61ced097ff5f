#include "RK/indep/sample/RK_Decimate.h"

#include <gtest/gtest.h>

#include <memory>

#include "RK/indep/world/RK_WorldXT.h"
#include "refhost/RefHost.h"
#include "test/Pixels.h"

namespace {

using Make = void(const RK_World*, bool, const RK_World**);

template <class Work>
RK_Long thrownBy(Work&& work) {
    try {
        work();
        return 0;
    } catch (RK_Long code) {
        return code;
    }
}
template <class P>
std::unique_ptr<const RK_World> halved(Make* make, const RK_WorldX<P>& src, bool keep_odd) {
    const RK_World* out = nullptr;
    make(&src, keep_odd, &out);
    return std::unique_ptr<const RK_World>(out);
}
template <class P>
const P& pixelAt(const RK_World& world, int32_t x, int32_t y) {
    return reinterpret_cast<const P*>(static_cast<const char*>(world.record.data) + y * world.record.rowbytes)[x];
}

TEST(Decimate, OnePixelStaysOneWhenOddIsKeptAndIsNoWorldOtherwise) {
    RK_WorldX<RK_Pixel8> src(1, 1, 0);
    src.row(0)[0] = {200, 1, 2, 3};
    const auto kept = halved(RK_NewBoxFilteredDecimateByTwo, src, true);
    ASSERT_NE(nullptr, kept);
    EXPECT_EQ(1, kept->record.width);
    EXPECT_EQ(50, pixelAt<RK_Pixel8>(*kept, 0, 0).alpha);  // halved by each pass
    const RK_World* untouched = kept.get();
    EXPECT_EQ(516, thrownBy([&] { RK_NewBoxFilteredDecimateByTwo(&src, false, &untouched); }));
    EXPECT_EQ(kept.get(), untouched);
    RefHost::TakeReports();
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
