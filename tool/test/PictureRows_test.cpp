// Rows of files in worlds: channels, alpha kinds, and the way there and back of premultiplied files.
#include "PictureRows.h"

#include <gtest/gtest.h>
#include <half.h>

#include <cstring>
#include <limits>

namespace {

template <class P>
const P* FirstRow(const WorldPtr& world) {
    return static_cast<const P*>(world->record.data);
}

TEST(PictureRows, GreyFillsColourAndMissingAlphaIsOpaque) {
    const WorldPtr world = NewWorld(2, 1, 8, "test");
    const uint8_t grey[] = {7, 200};
    PictureRows(*world).Put(0, grey, 1, AlphaKind::None);
    const auto* row = FirstRow<RK_Pixel8>(world);
    EXPECT_EQ(row[1].alpha, 255);
    EXPECT_EQ(row[1].red, 200);
    EXPECT_EQ(row[1].green, 200);
    EXPECT_EQ(row[1].blue, 200);
}

TEST(PictureRows, GreyAndAlphaOf16Bits) {
    const WorldPtr world = NewWorld(1, 1, 16, "test");
    const uint16_t samples[] = {65535, 0};
    PictureRows(*world).Put(0, samples, 2, AlphaKind::Straight);
    const auto* row = FirstRow<RK_Pixel16>(world);
    EXPECT_EQ(row[0].alpha, 0);
    EXPECT_EQ(row[0].blue, 32768);
}

TEST(PictureRows, PremultipliedSamplesAreDividedByTheirAlpha) {
    const WorldPtr world = NewWorld(3, 1, 8, "test");
    const uint8_t samples[] = {64, 32, 0, 128, 10, 20, 30, 0, 1, 2, 3, 255};
    PictureRows(*world).Put(0, samples, 4, AlphaKind::Premultiplied);
    const auto* row = FirstRow<RK_Pixel8>(world);
    EXPECT_EQ(row[0].alpha, 128);
    EXPECT_EQ(row[0].red, 128);  // 127.5
    EXPECT_EQ(row[0].green, 64);
    EXPECT_EQ(row[1].red, 0) << "colour under alpha 0 does not survive";
    EXPECT_EQ(row[2].green, 2);
}

TEST(PictureRows, Every8BitPixelWithAlphaSurvivesPremultipliedHalfFloat) {
    const WorldPtr from = NewWorld(256, 1, 8, "test"), to = NewWorld(256, 1, 8, "test");
    auto* row = static_cast<RK_Pixel8*>(from->record.data);
    std::vector<float> samples(256 * 4);
    for (int alpha = 1; alpha < 256; ++alpha) {
        for (int c = 0; c < 256; ++c) {
            const auto v = static_cast<uint8_t>(c);
            row[c] = {static_cast<uint8_t>(alpha), v, static_cast<uint8_t>(255 - c), v};
        }
        PictureRows(*from).Get(0, samples.data(), 4, AlphaKind::Premultiplied);
        for (float& s : samples) s = half(s);
        PictureRows(*to).Put(0, samples.data(), 4, AlphaKind::Premultiplied);
        ASSERT_EQ(std::memcmp(row, to->record.data, 256 * sizeof(RK_Pixel8)), 0) << "alpha " << alpha;
    }
}

TEST(PictureRows, Every16BitColourSurvivesPremultipliedFloat) {
    constexpr int kCount = 16385;
    const WorldPtr from = NewWorld(kCount, 1, 16, "test"), to = NewWorld(kCount, 1, 16, "test");
    auto* row = static_cast<RK_Pixel16*>(from->record.data);
    std::vector<float> samples(size_t{kCount} * 4);
    for (const int alpha : {1, 2, 3, 127, 255, 4095, 16383, 16384, 16385, 32767, 32768}) {
        for (int c = 0; c < kCount; ++c) {
            row[c] = {static_cast<uint16_t>(alpha), static_cast<uint16_t>(c),
                      static_cast<uint16_t>(32768 - c), 1};
        }
        PictureRows(*from).Get(0, samples.data(), 4, AlphaKind::Premultiplied);
        PictureRows(*to).Put(0, samples.data(), 4, AlphaKind::Premultiplied);
        ASSERT_EQ(std::memcmp(row, to->record.data, kCount * sizeof(RK_Pixel16)), 0) << "alpha " << alpha;
    }
}

TEST(PictureRows, FloatAlphaIsBroughtIntoRangeAndColourIsKept) {
    const WorldPtr world = NewWorld(3, 1, 32, "test");
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float samples[] = {4.0f, -1.0f, 0.5f, 1.5f, 1, 1, 1, nan, 1, 1, 1, -0.5f};
    PictureRows(*world).Put(0, samples, 4, AlphaKind::Straight);
    const auto* row = FirstRow<RK_PixelFloat>(world);
    EXPECT_EQ(row[0].alpha, 1.0f);
    EXPECT_EQ(row[0].red, 4.0f);
    EXPECT_EQ(row[0].green, -1.0f);
    EXPECT_EQ(row[1].alpha, 0.0f);
    EXPECT_EQ(row[2].alpha, 0.0f);
}

TEST(PictureRows, OpaqueLooksAtEveryPixel) {
    const WorldPtr world = NewWorld(5, 3, 16, "test");
    PictureRows rows(*world);
    const std::vector<uint8_t> samples(15, 1);
    for (int y = 0; y < 3; ++y) rows.Put(y, samples.data(), 3, AlphaKind::None);
    EXPECT_TRUE(rows.Opaque());
    auto* last =
        reinterpret_cast<RK_Pixel16*>(static_cast<uint8_t*>(world->record.data) + 2 * world->record.rowbytes);
    last[4].alpha = 32767;
    EXPECT_FALSE(rows.Opaque());
}

}  // namespace
