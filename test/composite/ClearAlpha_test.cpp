#include <limits>

#include "RK/indep/composite/RK_TransferRect.h"
#include "RK/indep/composite/RKp_ClearAlpha.h"
#include "test/Reports.h"
#include "test/composite/ModeRows.h"
#include "test/world/OddWorld.h"

namespace {

template <class P>
class ClearAlpha : public testing::Test {};
TYPED_TEST_SUITE(ClearAlpha, test::Depths);

// Alpha 0 outside, everything else as it was.
template <class P>
void expectCleared(const test::Picture<P>& before, const test::Picture<P>& after, int32_t top, int32_t left,
                   int32_t bottom, int32_t right) {
    for (int y = 0; y < before.height(); ++y) {
        for (int x = 0; x < before.width(); ++x) {
            P wanted = before.at(x, y);
            if (y < top || y >= bottom || x < left || x >= right) wanted.alpha = 0;
            ASSERT_TRUE(test::sameBytes(wanted, after.at(x, y))) << x << ", " << y;
        }
    }
    ASSERT_TRUE(after.guardsWhole());
}

TYPED_TEST(ClearAlpha, ClearsEveryPixelOutsideTheRectangle) {
    using P = TypeParam;
    test::Picture<P> before(6, 5, 3);
    before.fillRandom(4);
    for (int16_t top = -2; top <= 6; ++top) {
        for (int16_t left = -2; left <= 7; left += 3) {
            for (int16_t bottom = -2; bottom <= 7; ++bottom) {
                for (int16_t right = -1; right <= 8; right += 3) {
                    test::Picture<P> picture = before;
                    const GEO_Rect keep = {top, left, bottom, right};
                    RK_LayerDef world = picture.record();
                    ASSERT_EQ(RK_ClearAlphaExceptRect(nullptr, &keep, &world), 0);
                    ASSERT_NO_FATAL_FAILURE(expectCleared(before, picture, top, left, bottom, right));
                }
            }
        }
    }
}

TYPED_TEST(ClearAlpha, ARectangleOverTheWholeWorldChangesNothing) {
    using P = TypeParam;
    test::Picture<P> before(4, 4);
    before.fillRandom(4);
    test::Picture<P> picture = before;
    RK_LayerDef world = picture.record();
    const GEO_Rect widest = {INT16_MIN, INT16_MIN, INT16_MAX, INT16_MAX};
    EXPECT_EQ(RK_ClearAlphaExceptRect(nullptr, &widest, &world), 0);
    EXPECT_EQ(picture, before);
}

TYPED_TEST(ClearAlpha, AnEmptyOrReversedRectangleClearsAll) {
    using P = TypeParam;
    test::Picture<P> before(4, 4);
    before.fillRandom(4);
    for (const GEO_Rect& keep : {GEO_Rect{0, 0, 0, 0}, GEO_Rect{3, 3, 1, 1}, GEO_Rect{1, 9, 3, 12},
                                 GEO_Rect{INT16_MAX, INT16_MAX, INT16_MIN, INT16_MIN}}) {
        test::Picture<P> picture = before;
        RK_LayerDef world = picture.record();
        EXPECT_EQ(RK_ClearAlphaExceptRect(nullptr, &keep, &world), 0);
        expectCleared(before, picture, 0, 0, 0, 0);
    }
}

TYPED_TEST(ClearAlpha, AWorldOfOddSizeIsLeft) {
    using P = TypeParam;
    test::Picture<P> before(2, 2);
    before.fillRandom(1);
    const GEO_Rect keep = {0, 0, 1, 1};
    for (int32_t bad : {0, -1, INT32_MIN}) {
        test::Picture<P> picture = before;
        RK_LayerDef world = picture.record();
        world.width = bad;
        EXPECT_EQ(RK_ClearAlphaExceptRect(nullptr, &keep, &world), 0);
        world = picture.record();
        world.height = bad;
        EXPECT_EQ(RK_ClearAlphaExceptRect(nullptr, &keep, &world), 0);
        EXPECT_EQ(picture, before);
    }
}

TYPED_TEST(ClearAlpha, NegativeRowbytesRunUpwards) {
    using P = TypeParam;
    test::Picture<P> before(2, 2);
    before.fillRandom(1);
    test::Picture<P> picture = before;
    RK_LayerDef world = picture.record();
    world.data = picture.row(1);
    world.rowbytes = -world.rowbytes;
    const GEO_Rect keep = {0, 0, 1, 2};
    EXPECT_EQ(RK_ClearAlphaExceptRect(nullptr, &keep, &world), 0);
    expectCleared(before, picture, 1, 0, 2, 2);
}

RK_Long neverCalled(void*, RK_Long, RK_Long) {
    ADD_FAILURE() << "progress was called";
    return 517;
}

TEST(ClearAlphaArguments, ProgressIsNotCalled) {
    test::Picture<RK_Pixel8> picture(1, 300);
    RK_LayerDef world = picture.record();
    RK_ProgressInfo progress = {nullptr, nullptr, neverCalled};
    const GEO_Rect keep = {0, 0, 0, 0};
    EXPECT_EQ(RK_ClearAlphaExceptRect(&progress, &keep, &world), 0);
}

TEST(ClearAlphaArguments, NullWorldPixelsOrRectangleIsABadParameter) {
    test::Picture<RK_Pixel8> picture(2, 2);
    picture.fillRandom(1);
    const test::Picture<RK_Pixel8> before = picture;
    RK_LayerDef world = picture.record();
    const GEO_Rect keep = {0, 0, 1, 1};
    RefHost::TakeReports();
    EXPECT_EQ(RK_ClearAlphaExceptRect(nullptr, &keep, nullptr), 3);
    EXPECT_TRUE(test::onlyBadParam(13));
    EXPECT_EQ(RK_ClearAlphaExceptRect(nullptr, nullptr, &world), 3);
    EXPECT_TRUE(test::onlyBadParam(13));
    EXPECT_EQ(RK_ClearAlphaExceptRect(nullptr, nullptr, nullptr), 3);
    EXPECT_TRUE(test::onlyBadParam(13));
    world.data = nullptr;
    EXPECT_EQ(RK_ClearAlphaExceptRect(nullptr, &keep, &world), 3);
    EXPECT_TRUE(test::onlyBadParam(13));
    EXPECT_EQ(picture, before);
}

TEST(ClearAlphaArguments, AnUnknownDepthIsReported) {
    test::Picture<RK_Pixel8> picture(2, 2);
    const test::Picture<RK_Pixel8> before = picture;
    test::OddWorld odd(24);
    odd.record.data = picture.row(0);
    odd.record.width = odd.record.height = 2;
    const GEO_Rect keep = {0, 0, 1, 1};
    RefHost::TakeReports();
    EXPECT_EQ(RK_ClearAlphaExceptRect(nullptr, &keep, &odd.record), 3);
    EXPECT_TRUE(test::onlyBadDepth("Unknown world bitdepth in##CONDITIONNAME"));
    EXPECT_EQ(picture, before);
}

}  // namespace
