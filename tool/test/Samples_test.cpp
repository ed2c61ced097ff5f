// The numbers of picture files in worlds, and back.
#include "Samples.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

TEST(Samples, Every8BitStepSurvives16BitFilesAndWorlds) {
    for (uint32_t c = 0; c < 256; ++c) {
        const auto file = static_cast<uint16_t>(c * 257u);
        EXPECT_EQ(ToSample<uint16_t>(ToChannel<uint16_t>(file)), file);
        EXPECT_EQ(ToSample<uint8_t>(ToChannel<uint16_t>(file)), c);
        EXPECT_EQ(ToSample<uint8_t>(ToChannel<uint16_t>(static_cast<uint8_t>(c))), c);
        EXPECT_EQ(ToChannel<uint8_t>(file), c);
        EXPECT_EQ(ToSample<uint16_t>(static_cast<uint8_t>(c)), file);
    }
}

TEST(Samples, A16BitWorldSurvivesItsFile) {
    for (uint32_t v = 0; v <= 32768; ++v) {
        const auto channel = static_cast<uint16_t>(v);
        EXPECT_EQ(ToChannel<uint16_t>(ToSample<uint16_t>(channel)), v);
    }
}

TEST(Samples, A16BitFileSettlesAfterOneTrip) {
    for (uint32_t s = 0; s <= 65535; ++s) {
        const uint16_t once = ToSample<uint16_t>(ToChannel<uint16_t>(static_cast<uint16_t>(s)));
        EXPECT_LE(std::abs(static_cast<int>(once) - static_cast<int>(s)), 2);
        EXPECT_EQ(ToSample<uint16_t>(ToChannel<uint16_t>(once)), once);
    }
}

TEST(Samples, BetweenSixteenBitFilesAndWorldsTheNearestIsTakenOrTheStepBesideIt) {
    for (int64_t s = 0; s <= 65535; ++s) {
        const int64_t v = ToChannel<uint16_t>(static_cast<uint16_t>(s));
        const int64_t off = 2 * std::abs(v * 65535 - s * 32768);
        EXPECT_LT(off, s == 254 * 257 ? 66000 : 65535) << s;
    }
    for (int64_t v = 0; v <= 32768; ++v) {
        const int64_t s = ToSample<uint16_t>(static_cast<uint16_t>(v));
        const int64_t off = 2 * std::abs(s * 32768 - v * 65535);
        EXPECT_LE(off, s % 257 == 0 ? 2 * 32900 : 32768) << v;
    }
    EXPECT_EQ(ToSample<uint16_t>(uint16_t{16384}), 32768) << "halves go up";
}

TEST(Samples, SixteenBitMapsRiseSteadily) {
    for (uint32_t s = 1; s <= 65535; ++s) {
        EXPECT_LE(World16OfFile16(s - 1), World16OfFile16(s)) << s;
    }
    for (uint32_t v = 1; v <= 32768; ++v) EXPECT_LT(File16OfWorld16(v - 1), File16OfWorld16(v)) << v;
}

TEST(Samples, ThePlainNearestValueWouldLoseSteps) {
    int lost = 0;
    for (uint32_t c = 0; c < 256; ++c) {
        const uint32_t v = (c * 257u * 32768u + 32767u) / 65535u;
        lost += ((v * 65535u + 16384u) >> 15) != c * 257u ? 1 : 0;
    }
    EXPECT_GT(lost, 100);
}

TEST(Samples, An8BitPictureAndIts16BitCopyMakeTheSameWorld) {
    for (uint32_t c = 0; c < 256; ++c) {
        EXPECT_EQ(ToChannel<uint16_t>(static_cast<uint8_t>(c)),
                  ToChannel<uint16_t>(static_cast<uint16_t>(c * 257u)));
        EXPECT_EQ(ToSample<uint16_t>(ToChannel<uint16_t>(static_cast<uint8_t>(c))), c * 257u);
    }
}

TEST(Samples, From16BitFileTo8BitWorldTakesTheNearest) {
    for (int64_t s = 0; s <= 65535; ++s) {
        const int64_t c = ToChannel<uint8_t>(static_cast<uint16_t>(s));
        EXPECT_LT(2 * std::abs(c * 257 - s), 257) << s;
    }
}

TEST(Samples, From8BitFileTo16BitWorldIsTheLibrarysRule) {
    EXPECT_EQ(ToChannel<uint16_t>(uint8_t{254}), 32640);
    EXPECT_EQ(ToChannel<uint16_t>(uint8_t{255}), 32768);
    EXPECT_EQ(ToChannel<uint16_t>(uint8_t{128}), 16448);
}

TEST(Samples, A16BitValueAboveWhiteIsWhite) {
    EXPECT_EQ(ToSample<uint16_t>(uint16_t{40000}), 65535);
    EXPECT_EQ(ToSample<uint8_t>(uint16_t{65535}), 255);
}

TEST(Samples, EveryWholeStepSurvivesFloatWorlds) {
    for (uint32_t s = 0; s <= 65535; ++s) {
        const auto sample = static_cast<uint16_t>(s);
        EXPECT_EQ(ToSample<uint16_t>(ToChannel<float>(sample)), s);
    }
    for (uint32_t c = 0; c <= 255; ++c) {
        const auto sample = static_cast<uint8_t>(c);
        EXPECT_EQ(ToSample<uint8_t>(ToChannel<float>(sample)), c);
        EXPECT_EQ(ToChannel<uint8_t>(ToSample<float>(sample)), c);
    }
    for (uint32_t v = 0; v <= 32768; ++v) {
        EXPECT_EQ(ToChannel<uint16_t>(ToSample<float>(static_cast<uint16_t>(v))), v);
    }
}

TEST(Samples, FloatOutOfRangeIsClampedAndNaNIsZero) {
    const float nan = std::numeric_limits<float>::quiet_NaN(),
                infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(ToChannel<uint8_t>(nan), 0);
    EXPECT_EQ(ToChannel<uint8_t>(-infinity), 0);
    EXPECT_EQ(ToChannel<uint8_t>(infinity), 255);
    EXPECT_EQ(ToChannel<uint16_t>(1.5f), 32768);
    EXPECT_EQ(ToChannel<uint16_t>(-0.1f), 0);
    EXPECT_EQ(ToSample<uint16_t>(nan), 0);
    EXPECT_EQ(ToSample<uint16_t>(infinity), 65535);
    EXPECT_EQ(ToChannel<float>(2.5f), 2.5f);
}

}  // namespace
