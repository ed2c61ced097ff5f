// A row of a track matte.
#include "RK/indep/composite/RK_TrackMatte.h"

#include "RK/indep/frame/RKp_Report.h"
#include "test/Pixels.h"
#include "test/Reports.h"

namespace {

class TrackMatte : public test::Tidy {};

int64_t product(int64_t a, int64_t b, RK_Pixel8) { return (2 * a * b + 255) / 510; }
int64_t product(int64_t a, int64_t b, RK_Pixel16) { return (a * b + 16383) >> 15; }

template <class P>
auto valueOf(const P& m, RK_Long kind) {
    const int64_t full = sizeof(P) == 4 ? 255 : 32768;
    const int64_t luma =
        (m.red * int64_t{9798} + m.green * int64_t{19235} + m.blue * int64_t{3735} + 16384) / 32768;
    const int64_t value = kind & 2 ? product(m.alpha, luma, P{}) : m.alpha;
    return static_cast<decltype(m.alpha + 0)>(kind & 1 ? full - value : value);
}

template <class P>
void expectRow(RK_Long count, RK_Long offset, RK_Long width, RK_Long kind) {
    test::Random r(static_cast<uint32_t>(count + offset * 7 + width * 131 + kind));
    std::vector<P> matte(static_cast<size_t>(std::max<RK_Long>(width, 0)));
    for (P& p : matte) p = test::pixel<P>(r);
    std::vector<P> row(30, P{9, 1, 2, 3}), wanted = row;
    for (RK_Long i = 0; i < count; ++i) {
        const RK_Long at = i - offset;
        const int outside = kind & 1 ? (sizeof(P) == 4 ? 255 : 32768) : 0;
        wanted[static_cast<size_t>(i)].alpha = static_cast<decltype(P::alpha)>(
            at >= 0 && at < width ? valueOf(matte[static_cast<size_t>(at)], kind) : outside);
    }
    ASSERT_EQ(0, RK_PrepTrackMatteUniv(count, matte.empty() ? nullptr : matte.data(), offset, width, kind,
                                       sizeof(P) == 8, row.data()));
    for (size_t i = 0; i < row.size(); ++i)
        ASSERT_TRUE(test::sameBytes(row[i], wanted[i])) << "pixel " << i << " of " << count << ", offset "
                                                        << offset << ", width " << width << ", kind " << kind;
}

TEST_F(TrackMatte, EveryKindAtEveryOffsetAndWidth) {
    for (RK_Long kind : {0, 1, 2, 3})
        for (RK_Long count : {-3, 0, 1, 8, 29})
            for (RK_Long offset = -20; offset <= 32; ++offset)
                for (RK_Long width : {-4, 0, 1, 7, 9, 17, 40}) {
                    ASSERT_NO_FATAL_FAILURE(expectRow<RK_Pixel8>(count, offset, width, kind));
                    ASSERT_NO_FATAL_FAILURE(expectRow<RK_Pixel16>(count, offset, width, kind));
                }
}

TEST_F(TrackMatte, AnOffsetPastTheCountShowsNoLuma) {
    const std::vector<RK_Pixel8> matte(4, RK_Pixel8{255, 255, 255, 255});
    std::vector<RK_Pixel8> row(10, RK_Pixel8{77, 1, 2, 3});
    RK_PrepTrackMatteUniv(10, matte.data(), 11, 4, 2, false, row.data());
    for (const RK_Pixel8& p : row) EXPECT_EQ(p.alpha, 0);
}

TEST_F(TrackMatte, AnInvertedMatteOfNoWidthShowsEverything) {
    std::vector<RK_Pixel8> row(10, RK_Pixel8{77, 1, 2, 3});
    RK_PrepTrackMatteUniv(10, nullptr, 0, 0, 1, false, row.data());
    for (const RK_Pixel8& p : row) EXPECT_EQ(p.alpha, 255);
}

TEST_F(TrackMatte, OffsetsAsFarAsNumbersGo) {
    const std::vector<RK_Pixel16> matte(4, RK_Pixel16{5, 0, 0, 0});
    std::vector<RK_Pixel16> row(6);
    const RK_Long far[] = {std::numeric_limits<RK_Long>::min(), std::numeric_limits<RK_Long>::min() + 1,
                           std::numeric_limits<RK_Long>::max()};
    for (RK_Long offset : far) {
        EXPECT_EQ(0, RK_PrepTrackMatteUniv(6, matte.data(), offset, 4, 1, true, row.data()));
        for (const RK_Pixel16& p : row) EXPECT_EQ(p.alpha, 32768);
    }
    EXPECT_EQ(0, RK_PrepTrackMatteUniv(6, matte.data(), -2, std::numeric_limits<RK_Long>::min(), 0, true,
                                       row.data()));
    EXPECT_EQ(row[0].alpha, 0);
}

TEST_F(TrackMatte, OfTheKindTheLowTwoBitsCount) {
    const std::vector<RK_Pixel8> matte(1, RK_Pixel8{200, 10, 20, 30});
    RK_Pixel8 low, high;
    RK_PrepTrackMatteUniv(1, matte.data(), 0, 1, 3, false, &low);
    RK_PrepTrackMatteUniv(1, matte.data(), 0, 1, -1, false, &high);
    EXPECT_EQ(low.alpha, high.alpha);
}

TEST_F(TrackMatte, NullPixelsThatWouldBeUsedAreReported) {
    std::vector<RK_Pixel8> row(10, RK_Pixel8{77, 1, 2, 3});
    EXPECT_EQ(3, RK_PrepTrackMatteUniv(10, nullptr, 9, 4, 0, false, row.data()));
    EXPECT_TRUE(test::onlyBadParam(RKp_kSiteIterate));
    EXPECT_EQ(row[0].alpha, 77);
    EXPECT_EQ(3, RK_PrepTrackMatteUniv(10, row.data(), 0, 4, 0, true, nullptr));
    EXPECT_TRUE(test::onlyBadParam(RKp_kSiteIterate));
    EXPECT_EQ(0, RK_PrepTrackMatteUniv(0, nullptr, 0, 4, 0, true, nullptr));
    EXPECT_EQ(0, RK_PrepTrackMatteUniv(10, nullptr, 10, 4, 0, false, row.data())) << "none is read";
}

}  // namespace
