#include "RK/indep/filter/RK_PaintSpot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "RK/indep/filter/RK_Convolve.h"
#include "RK/indep/filter/RK_GaussianKernel.h"
#include "test/Pixels.h"
#include "test/Reports.h"

namespace {

constexpr uint32_t kSite = 9;
using Kernel = std::vector<uint32_t>;
const RK_Pixel8 kColour = {200, 255, 0, 77};

// The rule for one channel, wrapping as 32-bit numbers do.
uint8_t mixed(uint8_t d, uint8_t c, uint32_t k) {
    const uint64_t sum = uint64_t{d} * static_cast<uint32_t>(255u - k) + uint64_t{c} * k;
    return static_cast<uint8_t>(std::min(static_cast<uint32_t>(sum) / 255u, 255u));
}
RK_Pixel8 mixed(const RK_Pixel8& d, const RK_Pixel8& c, uint32_t k) {
    return {mixed(d.alpha, c.alpha, k), mixed(d.red, c.red, k), mixed(d.green, c.green, k),
            mixed(d.blue, c.blue, k)};
}

// Paints on random pixels, and expects entry(dx, dy) of a kernel that reaches `across` and `down` to be mixed
// in.
template <class Entry>
void expectSpot(int x, int y, uint32_t flags, int size, const Kernel& kernel, int across, int down,
                Entry entry) {
    test::Picture<RK_Pixel8> picture(11, 9), before(11, 9);
    picture.fillRandom(3);
    before.fillRandom(3);
    RK_LayerDef world = picture.record();
    EXPECT_EQ(0, RK_PaintSpot(nullptr, x, y, flags, size, kernel.data(), kColour, &world));
    EXPECT_TRUE(picture.guardsWhole());
    for (int v = 0; v < 9; ++v) {
        for (int h = 0; h < 11; ++h) {
            const int dx = h - x, dy = v - y;
            const bool covered = std::abs(dx) <= across && std::abs(dy) <= down;
            const RK_Pixel8 wanted =
                covered ? mixed(before.at(h, v), kColour, entry(dx, dy)) : before.at(h, v);
            EXPECT_TRUE(test::sameBytes(wanted, picture.at(h, v)))
                << h << ", " << v << " of " << x << ", " << y;
        }
    }
}

Kernel ramp(int count) {
    Kernel kernel;
    for (int i = 0; i < count; ++i) kernel.push_back(static_cast<uint32_t>(i * 37 % 256));
    return kernel;
}

class PaintSpot : public test::Tidy {};

TEST_F(PaintSpot, EveryMixtureIsTheTruncatedQuotient) {
    // All values against all entries, in a world of 256 by 1 with a kernel of its width and one more.
    for (const RK_Pixel8& colour : {RK_Pixel8{0, 1, 127, 255}, kColour}) {
        for (uint32_t k = 0; k < 256; ++k) {
            test::Picture<RK_Pixel8> picture(256, 1);
            for (int d = 0; d < 256; ++d) {
                const auto c = static_cast<uint8_t>(d);
                picture.at(d, 0) = {c, c, static_cast<uint8_t>(255 - d), c};
            }
            const test::Picture<RK_Pixel8> before = picture;
            RK_LayerDef world = picture.record();
            const Kernel kernel(511, k);
            ASSERT_EQ(0, RK_PaintSpot(nullptr, 128, 0, RK_KERNEL_1D, 511, kernel.data(), colour, &world));
            for (int d = 0; d < 256; ++d)
                ASSERT_TRUE(test::sameBytes(mixed(before.at(d, 0), colour, k), picture.at(d, 0)))
                    << d << ", " << k;
        }
    }
    // A rounding term would show: 1 * 254 / 255 is below one.
    EXPECT_EQ(0, mixed(1, 0, 1));
}

TEST_F(PaintSpot, AFullEntryReplacesAndAnEmptyOneLeaves) {
    test::Picture<RK_Pixel8> picture(3, 1);
    picture.fill({9, 8, 7, 6});
    RK_LayerDef world = picture.record();
    const uint32_t kernel[] = {0, 255, 0};
    ASSERT_EQ(0, RK_PaintSpot(nullptr, 1, 0, RK_KERNEL_1D, 3, kernel, kColour, &world));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{9, 8, 7, 6}, picture.at(0, 0)));
    EXPECT_TRUE(test::sameBytes(kColour, picture.at(1, 0)));
    EXPECT_TRUE(test::sameBytes(RK_Pixel8{9, 8, 7, 6}, picture.at(2, 0)));
}

TEST_F(PaintSpot, SquareKernelsGoRowByRowAndAreCutAtTheEdges) {
    const Kernel kernel = ramp(25);
    for (int y = -4; y <= 12; ++y)
        for (int x = -4; x <= 14; ++x)
            expectSpot(x, y, 0, 5, kernel, 2, 2,
                       [&](int dx, int dy) { return kernel[size_t((dy + 2) * 5 + dx + 2)]; });
}

TEST_F(PaintSpot, OneRowOrOneColumn) {
    const Kernel kernel = ramp(7);
    for (const uint32_t more : {0u, RK_KERNEL_NORMALISE | RK_KERNEL_NO_CLAMP}) {
        for (int at = -5; at <= 14; ++at) {
            expectSpot(at, 4, RK_KERNEL_1D | more, 7, kernel, 3, 0,
                       [&](int dx, int) { return kernel[size_t(dx + 3)]; });
            expectSpot(4, at, RK_KERNEL_1D | RK_KERNEL_VERTICAL | more, 7, kernel, 0, 3,
                       [&](int, int dy) { return kernel[size_t(dy + 3)]; });
        }
    }
    // Upright says nothing without the other.
    const Kernel square = ramp(9);
    expectSpot(4, 4, RK_KERNEL_VERTICAL, 3, square, 1, 1,
               [&](int dx, int dy) { return square[size_t((dy + 1) * 3 + dx + 1)]; });
}

TEST_F(PaintSpot, OfSizeOneTouchesOnePixel) {
    const Kernel kernel = {128};
    expectSpot(5, 5, 0, 1, kernel, 0, 0, [](int, int) { return 128u; });
    expectSpot(0, 0, RK_KERNEL_1D | RK_KERNEL_VERTICAL, 1, kernel, 0, 0, [](int, int) { return 128u; });
}

TEST_F(PaintSpot, OutsideTheWorldNothingChanges) {
    const Kernel kernel(9, 255);
    for (const auto& [x, y] : {std::pair<int32_t, int32_t>{-2, 4},
                               {4, -2},
                               {12, 4},
                               {4, 10},
                               {INT32_MIN, 4},
                               {INT32_MAX, 4},
                               {4, INT32_MIN},
                               {4, INT32_MAX},
                               {INT32_MAX, INT32_MAX}}) {
        test::Picture<RK_Pixel8> picture(11, 9), before(11, 9);
        RK_LayerDef world = picture.record();
        EXPECT_EQ(0, RK_PaintSpot(nullptr, x, y, 0, 3, kernel.data(), kColour, &world));
        EXPECT_TRUE(before == picture) << x << ", " << y;
    }
}

TEST_F(PaintSpot, EntriesAboveFullWrap) {
    test::Random random(11);
    Kernel kernel = {256, 257, 300, 510, 511, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0x01010101};
    for (int round = 0; round < 20; ++round) {
        expectSpot(4, 4, 0, 3, kernel, 1, 1,
                   [&](int dx, int dy) { return kernel[size_t((dy + 1) * 3 + dx + 1)]; });
        for (uint32_t& k : kernel) k = random.next();
    }
}

TEST_F(PaintSpot, AGaussianIsASoftBrush) {
    int32_t diameter = 0, kernel[81] = {};
    ASSERT_EQ(0, RK_GaussianKernel(nullptr, 4, 0, 1, &diameter, kernel));
    ASSERT_EQ(9, diameter);
    Kernel brush(kernel, kernel + 81);
    expectSpot(5, 4, 0, diameter, brush, 4, 4,
               [&](int dx, int dy) { return brush[size_t((dy + 4) * 9 + dx + 4)]; });
    EXPECT_EQ(255u, brush[40]);
}

TEST_F(PaintSpot, WhatIsMissingOrEvenIsRefused) {
    test::Picture<RK_Pixel8> picture(11, 9), before(11, 9);
    test::Picture<RK_Pixel16> deep(11, 9);
    RK_LayerDef world = picture.record(), hollow = picture.record(), deeper = deep.record();
    hollow.data = nullptr;
    const Kernel kernel(25, 255);
    struct {
        int32_t size;
        const uint32_t* kernel;
        RK_LayerDef* world;
    } const cases[] = {{3, kernel.data(), nullptr}, {3, kernel.data(), &hollow}, {3, nullptr, &world},
                       {-1, kernel.data(), &world}, {-3, kernel.data(), &world}, {0, kernel.data(), &world},
                       {2, kernel.data(), &world},  {4, kernel.data(), &world},  {3, kernel.data(), &deeper}};
    for (const auto& c : cases) {
        EXPECT_EQ(3, RK_PaintSpot(nullptr, 5, 4, 0, c.size, c.kernel, kColour, c.world));
        EXPECT_TRUE(test::onlyBadParam(kSite));
    }
    EXPECT_TRUE(before == picture);
}

TEST_F(PaintSpot, MemoryThatFailsDoesNotMatter) {
    RefHost::FailAllocation(1);
    const Kernel kernel = ramp(25);
    expectSpot(5, 4, 0, 5, kernel, 2, 2,
               [&](int dx, int dy) { return kernel[size_t((dy + 2) * 5 + dx + 2)]; });
    EXPECT_EQ(0, RefHost::AllocationsSince());
}

}  // namespace
