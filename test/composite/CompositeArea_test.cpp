#include "RK/indep/composite/RKp_CompositeArea.h"

#include <limits>

#include "test/Pixels.h"
#include "test/Reports.h"

namespace {

RK_LayerDef sized(int32_t width, int32_t height, bool with_pixels = true) {
    static uint8_t pixel[16];
    RK_LayerDef d = {};
    d.data = with_pixels ? pixel : nullptr;
    d.width = width;
    d.height = height;
    return d;
}

// The same by looking at every pixel: which destination pixels are covered, and from where.
struct Brute {
    bool any = false;
    int32_t left = 0, top = 0, right = 0, bottom = 0;
    int64_t dx = 0, dy = 0;
};
Brute byPixel(const GEO_Rect& r, const RK_LayerDef& src, int64_t dst_x, int64_t dst_y,
              const RK_LayerDef& dst) {
    Brute b;
    b.dx = dst_x - r.left;
    b.dy = dst_y - r.top;
    for (int32_t y = 0; y < dst.height; ++y) {
        for (int32_t x = 0; x < dst.width; ++x) {
            const int64_t sx = x - b.dx, sy = y - b.dy;
            if (sx < 0 || sy < 0 || sx >= src.width || sy >= src.height) continue;
            if (sx < r.left || sx >= r.right || sy < r.top || sy >= r.bottom) continue;
            if (!b.any) b.left = x, b.top = y, b.any = true;
            b.right = x + 1;
            b.bottom = y + 1;
        }
    }
    return b;
}

TEST(CompositeArea, AgreesWithALookAtEveryPixel) {
    test::Random r(5);
    const auto about = [&](int32_t low, int32_t high) {
        return low + int32_t(r.below(uint32_t(high - low + 1)));
    };
    int some = 0;
    for (int i = 0; i < 100000; ++i) {
        const RK_LayerDef src = sized(about(0, 9), about(0, 9)), dst = sized(about(0, 9), about(0, 9));
        const GEO_Rect rect = {int16_t(about(-4, 6)), int16_t(about(-4, 6)), int16_t(about(0, 12)),
                               int16_t(about(0, 12))};
        const int32_t x = about(-7, 10), y = about(-7, 10);
        const Brute wanted = byPixel(rect, src, x, y, dst);
        RKp_CompositeArea area = {{-1, -2, -3, -4}, -5, -6};
        ASSERT_EQ(RKp_ClipComposite(rect, src, x, y, dst, &area), wanted.any) << i;
        if (!wanted.any) {
            ASSERT_EQ(area.src_top, -6);
            continue;
        }
        ++some;
        ASSERT_EQ(area.dst.left, wanted.left);
        ASSERT_EQ(area.dst.top, wanted.top);
        ASSERT_EQ(area.dst.right, wanted.right);
        ASSERT_EQ(area.dst.bottom, wanted.bottom);
        ASSERT_EQ(area.src_left, wanted.left - wanted.dx);
        ASSERT_EQ(area.src_top, wanted.top - wanted.dy);
    }
    EXPECT_GT(some, 3000);
}

TEST(CompositeArea, AMaskCutsBothSidesTogether) {
    test::Random r(6);
    for (int i = 0; i < 20000; ++i) {
        const auto about = [&](int32_t low, int32_t high) {
            return low + int32_t(r.below(uint32_t(high - low + 1)));
        };
        const int32_t left = about(0, 9), top = about(0, 9);
        RKp_CompositeArea area = {
            {left, top, left + about(1, 9), top + about(1, 9)}, about(0, 9), about(0, 9)};
        const RKp_CompositeArea before = area;
        const RK_LayerDef mask = sized(about(0, 9), about(0, 9));
        const int32_t mask_x = about(-9, 19), mask_y = about(-9, 19);
        const bool some = RKp_ClipToMask(mask, mask_x, mask_y, &area);
        int covered = 0;
        for (int32_t y = before.dst.top; y < before.dst.bottom; ++y)
            for (int32_t x = before.dst.left; x < before.dst.right; ++x)
                covered += x >= mask_x && x < mask_x + mask.width && y >= mask_y && y < mask_y + mask.height;
        ASSERT_EQ(some, covered > 0);
        ASSERT_EQ(area.src_left - before.src_left, area.dst.left - before.dst.left);
        ASSERT_EQ(area.src_top - before.src_top, area.dst.top - before.dst.top);
        if (some) {
            ASSERT_EQ(area.width() * area.height(), covered);
            ASSERT_TRUE(area.dst.left >= mask_x && area.dst.top >= mask_y &&
                        area.dst.left >= before.dst.left);
        }
    }
}

TEST(CompositeArea, NoPlaceWraps) {
    const RK_LayerDef src = sized(100, 100), dst = sized(100, 100);
    const GEO_Rect all = {0, 0, 100, 100};
    RKp_CompositeArea area;
    for (RK_Long far :
         {RK_Long{70000}, RK_Long{65536}, RK_Long{-65536}, RK_Long{INT32_MAX}, RK_Long{INT32_MIN},
          std::numeric_limits<RK_Long>::max(), std::numeric_limits<RK_Long>::min(),
          static_cast<RK_Long>(int64_t{1} << (sizeof(RK_Long) * 4))}) {
        EXPECT_FALSE(RKp_ClipComposite(all, src, far, 0, dst, &area)) << far;
        EXPECT_FALSE(RKp_ClipComposite(all, src, 0, far, dst, &area)) << far;
    }
}

TEST(CompositeArea, RectanglesAtTheirLimitsDoNotWrap) {
    const RK_LayerDef src = sized(100, 100), dst = sized(100, 100);
    const GEO_Rect widest = {INT16_MIN, INT16_MIN, INT16_MAX, INT16_MAX};
    RKp_CompositeArea area;
    ASSERT_TRUE(RKp_ClipComposite(widest, src, INT16_MIN, INT16_MIN, dst, &area));
    EXPECT_EQ(area.dst.left, 0);
    EXPECT_EQ(area.dst.right, 100);
    EXPECT_EQ(area.src_left, 0);
    EXPECT_FALSE(RKp_ClipComposite(widest, src, 32768, 0, dst, &area));
    ASSERT_TRUE(RKp_ClipComposite(widest, src, INT16_MIN + 99, INT16_MIN - 99, dst, &area));
    EXPECT_EQ(area.dst.left, 99);
    EXPECT_EQ(area.dst.bottom, 1);
    EXPECT_EQ(area.src_top, 99);
    const GEO_Rect reversed = {INT16_MAX, INT16_MAX, INT16_MIN, INT16_MIN};
    EXPECT_FALSE(RKp_ClipComposite(reversed, src, 0, 0, dst, &area));
}

TEST(CompositeArea, SizesThatAreNonsenseAreEmptyOrAsFarAsEdgesReach) {
    const GEO_Rect all = {0, 0, 100, 100};
    RKp_CompositeArea area;
    const RK_LayerDef good = sized(100, 100);
    for (const RK_LayerDef& bad :
         {sized(-1, 100), sized(100, INT32_MIN), sized(0, 100), sized(100, 100, false)}) {
        EXPECT_FALSE(RKp_ClipComposite(all, bad, 0, 0, good, &area));
        EXPECT_FALSE(RKp_ClipComposite(all, good, 0, 0, bad, &area));
        area = {{0, 0, 5, 5}, 0, 0};
        EXPECT_FALSE(RKp_ClipToMask(bad, 0, 0, &area));
        const GEO_Rect whole = RKp_WholeRect(bad);
        EXPECT_TRUE(whole.right <= 0 || whole.bottom <= 0);
    }
    const RK_LayerDef huge = sized(INT32_MAX, INT32_MAX);
    const GEO_Rect whole = RKp_WholeRect(huge);
    EXPECT_EQ(whole.right, 32767);
    EXPECT_EQ(whole.bottom, 32767);
    // A destination may be wider than 16 bits.
    ASSERT_TRUE(RKp_ClipComposite(all, good, INT32_MAX - 7, 40000, huge, &area));
    EXPECT_EQ(area.width(), 7);
    EXPECT_EQ(area.dst.top, 40000);
    ASSERT_TRUE(RKp_ClipToMask(sized(INT32_MAX, INT32_MAX), 32767, 32767, &area));
    EXPECT_EQ(area.width(), 7);
}

}  // namespace
