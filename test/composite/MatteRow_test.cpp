#include "RK/indep/composite/RK_MatteRow.h"

#include <cstring>
#include <limits>

#include "test/composite/ModeRows.h"

namespace {

// The rules once more, in whole numbers and by division.
uint8_t product(uint8_t a, uint8_t b) { return static_cast<uint8_t>((2 * a * b + 255) / 510); }
uint16_t product(uint16_t a, uint16_t b) { return static_cast<uint16_t>((int64_t{a} * b + 16383) / 32768); }
float product(float a, float b) { return a * b; }
template <class P>
RK_Channel<P> lumaOf(const P& p) {
    if constexpr (sizeof(P) == 16)
        return (p.red * 0.299f + p.green * 0.587f) + p.blue * 0.114f;
    else
        return static_cast<RK_Channel<P>>(
            (p.red * int64_t{9798} + p.green * int64_t{19235} + p.blue * int64_t{3735} + 16384) / 32768);
}
template <class P>
RK_Channel<P> wantedAt(const test::Picture<P>& mask, uint32_t kind, int32_t row, int32_t column) {
    const RK_Channel<P> full = test::kFull<P>;
    if (row < 0 || row >= mask.height()) return full;
    if (column < 0 || column >= mask.width()) return kind == RK_kMaskLuma ? RK_Channel<P>{0} : full;
    const P& m = mask.at(column, row);
    const RK_Channel<P> value = kind == RK_kMaskInvertedAlpha ? m.alpha : product(m.alpha, lumaOf(m));
    return kind & 1 ? static_cast<RK_Channel<P>>(full - value) : value;
}

template <class P>
RK_Mask maskOf(test::Picture<P>& picture, int16_t x, int16_t y, uint32_t kind) {
    RK_Mask mask = {picture.record(), y, x, kind};
    return mask;
}

template <class P>
class MatteRow : public testing::Test {};
TYPED_TEST_SUITE(MatteRow, test::Depths);

TYPED_TEST(MatteRow, InsideOutsideAndAcrossTheMaskAtEveryPlace) {
    using P = TypeParam;
    test::Picture<P> picture(7, 3, 2);
    picture.fillRandom(9);
    std::vector<P> row(21);
    for (uint32_t kind : {1u, 2u, 3u}) {
        for (int16_t mask_x = -25; mask_x <= 25; ++mask_x) {
            for (int32_t y = 3; y <= 9; ++y) {
                const RK_Mask mask = maskOf(picture, mask_x, 5, kind);
                for (P& p : row) p = {0, 1, 2, 3};
                const int32_t left = 2, count = 20;
                ASSERT_EQ(RK_MatteRow(mask, y, left, count, row.data()), row.data());
                for (int32_t x = 0; x < count; ++x) {
                    const P& got = row[size_t(x)];
                    ASSERT_EQ(got.alpha, wantedAt(picture, kind, y - 5, left + x - mask_x))
                        << "kind " << kind << " at " << mask_x << " row " << y << " column " << x;
                    ASSERT_TRUE(got.red == 1 && got.green == 2 && got.blue == 3) << "only alpha is written";
                }
                ASSERT_EQ(row[20].alpha, 0) << "past the count";
            }
        }
    }
}

TYPED_TEST(MatteRow, PlainAlphaIsReadInPlace) {
    using P = TypeParam;
    test::Picture<P> picture(7, 3, 2);
    const RK_Mask mask = maskOf(picture, -3, 10, RK_kMaskAlpha);
    EXPECT_EQ(RK_MatteRow<P>(mask, 11, 2, 2, nullptr), &picture.at(5, 1));
}

TYPED_TEST(MatteRow, RandomPixelsOfEveryKind) {
    using P = TypeParam;
    test::Picture<P> picture(5000, 1);
    picture.fillRandom(77);
    std::vector<P> row(5000);
    for (uint32_t kind : {1u, 2u, 3u}) {
        RK_MatteRow(maskOf(picture, 0, 0, kind), 0, 0, 5000, row.data());
        for (int32_t x = 0; x < 5000; ++x)
            ASSERT_EQ(row[size_t(x)].alpha, wantedAt(picture, kind, 0, x)) << test::text(picture.at(x, 0));
    }
}

// Kept: the two tests treat plain luma differently.
TYPED_TEST(MatteRow, PlainLumaIsFullBelowTheMaskAndZeroBesideIt) {
    using P = TypeParam;
    test::Picture<P> picture(2, 2);
    const RK_Mask mask = maskOf(picture, 0, 0, RK_kMaskLuma);
    P row[3];
    RK_MatteRow(mask, 2, 0, 3, row);
    for (const P& p : row) EXPECT_EQ(p.alpha, test::kFull<P>);
    RK_MatteRow(mask, 1, 2, 3, row);
    for (const P& p : row) EXPECT_EQ(p.alpha, 0);
}

TYPED_TEST(MatteRow, OfTheKindTheLowTwoBitsCount) {
    using P = TypeParam;
    test::Picture<P> picture(4, 1);
    picture.fillRandom(3);
    P plain[4], odd[4];
    for (uint32_t kind : {1u, 2u, 3u}) {
        std::memset(plain, 0, sizeof plain);
        std::memset(odd, 0, sizeof odd);
        RK_MatteRow(maskOf(picture, 0, 0, kind), 0, 0, 4, plain);
        RK_MatteRow(maskOf(picture, 0, 0, kind | 0xFFFFFFF0u), 0, 0, 4, odd);
        EXPECT_EQ(0, std::memcmp(plain, odd, sizeof plain));
    }
    EXPECT_EQ(RK_MatteRow<P>(maskOf(picture, 0, 0, 4), 0, 1, 2, nullptr), &picture.at(1, 0));
}

TYPED_TEST(MatteRow, AMaskOfNoPixelsOrOddSizeIsOutsideEverywhere) {
    using P = TypeParam;
    test::Picture<P> picture(4, 4);
    for (int fault = 0; fault < 3; ++fault) {
        RK_Mask mask = maskOf(picture, 0, 0, RK_kMaskInvertedLuma);
        if (fault == 0) mask.world.data = nullptr;
        if (fault == 1) mask.world.width = -5;
        if (fault == 2) mask.world.height = std::numeric_limits<int32_t>::min();
        P row[4] = {};
        RK_MatteRow(mask, 1, 0, 4, row);
        for (const P& p : row) EXPECT_EQ(p.alpha, test::kFull<P>);
    }
}

TYPED_TEST(MatteRow, PlacesAtTheirLimitsDoNotWrap) {
    using P = TypeParam;
    test::Picture<P> picture(4, 4);
    P row[2];
    for (int16_t place : {INT16_MIN, INT16_MAX}) {
        for (int32_t at : {0, INT32_MAX - 2}) {
            RK_MatteRow(maskOf(picture, place, place, RK_kMaskInvertedAlpha), at, at, 2, row);
            EXPECT_EQ(row[0].alpha, test::kFull<P>);
            RK_MatteRow(maskOf(picture, place, 0, RK_kMaskLuma), 0, at, 2, row);
            EXPECT_EQ(row[1].alpha, 0);
        }
    }
}

TYPED_TEST(MatteRow, NegativeRowbytesRunUpwards) {
    using P = TypeParam;
    test::Picture<P> picture(3, 2);
    picture.fillRandom(8);
    RK_Mask mask = maskOf(picture, 0, 0, RK_kMaskInvertedAlpha);
    mask.world.data = picture.row(1);
    mask.world.rowbytes = -mask.world.rowbytes;
    P row[3];
    RK_MatteRow(mask, 1, 0, 3, row);
    for (int x = 0; x < 3; ++x) EXPECT_EQ(row[x].alpha, wantedAt(picture, 1, 0, x));
}

TEST(MatteRowValues, Inverts16BitAlphaFrom32768) {
    test::Picture<RK_Pixel16> picture(3, 1);
    picture.at(0, 0) = {0, 0, 0, 0};
    picture.at(1, 0) = {1, 0, 0, 0};
    picture.at(2, 0) = {32768, 0, 0, 0};
    RK_Pixel16 row[3];
    RK_MatteRow(maskOf(picture, 0, 0, RK_kMaskInvertedAlpha), 0, 0, 3, row);
    EXPECT_EQ(row[0].alpha, 32768);
    EXPECT_EQ(row[1].alpha, 32767);
    EXPECT_EQ(row[2].alpha, 0);
}

}  // namespace
