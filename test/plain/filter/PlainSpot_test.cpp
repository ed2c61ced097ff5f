// Paint spots against their twin at the far ends of places and kernels, between guarded pages.
#include <gtest/gtest.h>

#include "RK/indep/filter/RK_PaintSpot.h"
#include "test/plain/Worlds.h"
#include "test/plain/filter/PlainConvolve.h"

namespace {

using test::Random;
using test::World;

// About a side of a world, or at an end of what a place can be.
int32_t placeOf(Random& r, int side, int half) {
    switch (r.below(12)) {
        case 0: return INT32_MIN + static_cast<int32_t>(r.below(3));
        case 1: return INT32_MAX - static_cast<int32_t>(r.below(3));
        case 2: return -half - 1 + static_cast<int32_t>(r.below(3));
        case 3: return side + half - 1 + static_cast<int32_t>(r.below(3));
        default: return test::about(r, side);
    }
}
TEST(PaintSpotAgainstPlain, EqualForWideKernelsAtTheEndsOfTheWorldAndBeyond) {
    Random r(410);
    test::GuardedRows pages, kernel_pages;
    const int count = test::amount(5000);
    for (int i = 0; i < count; ++i) {
        const World<RK_Pixel8> before(r, test::side(r), test::side(r));
        World<RK_Pixel8> expected(before), got(before);
        test::guardSome(r, pages, got);
        const bool line = r.below(2) == 0;
        const uint32_t flags = (line ? plain::kKernelRow : 0) | (r.next() & ~plain::kKernelRow);
        const int size = 1 + 2 * static_cast<int>(r.below(line ? (r.below(8) == 0 ? 500 : 40) : 15));
        const size_t cells = static_cast<size_t>(line ? size : size * size);
        const bool against_end = r.below(2) == 0;
        uint32_t* const kernel =
            static_cast<uint32_t*>(kernel_pages.room(cells * sizeof(uint32_t), against_end));
        ASSERT_NE(kernel, nullptr);
        const uint32_t kind = r.below(5);
        static const uint32_t special[] = {0,   1,   127, 128,        254,        255,
                                           256, 257, 510, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
        for (size_t c = 0; c < cells; ++c) {
            const uint32_t draw = r.next();
            kernel[c] = kind == 0 ? draw : kind == 1 ? special[r.below(12)] : kind == 2 ? 255 : draw & 0xFF;
        }
        const RK_Pixel8 colour = test::pixel<RK_Pixel8>(r);
        const int half = size / 2;
        const int32_t x = placeOf(r, before.record.width, half), y = placeOf(r, before.record.height, half);
        plain::paintSpot(x, y, flags, size, kernel, colour, expected.record);
        ASSERT_EQ(0, RK_PaintSpot(nullptr, x, y, flags, size, kernel, colour, &got.record));
        ASSERT_EQ(test::difference(before, expected, got), "")
            << "size " << size << " flags " << flags << " at " << x << ", " << y;
    }
}

// Every colour under every entry, once.
TEST(PaintSpotAgainstPlain, EqualForEveryByteUnderEveryEntry) {
    Random r(420);
    const World<RK_Pixel8> before(r, 256, 256);
    World<RK_Pixel8> expected(before), got(before);
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x) {
            const uint8_t d = static_cast<uint8_t>(x);
            got.picture.at(x, y) =
                expected.picture.at(x, y) = {d, static_cast<uint8_t>(255 - d), d, static_cast<uint8_t>(y)};
        }
    for (uint32_t k = 0; k < 256; ++k) {
        const std::vector<uint32_t> kernel(511, k);
        const uint8_t c = static_cast<uint8_t>(k * 7);
        const RK_Pixel8 colour = {c, static_cast<uint8_t>(255 - c), static_cast<uint8_t>(k), 255};
        const int32_t y = static_cast<int32_t>(k);
        plain::paintSpot(100, y, plain::kKernelRow, 511, kernel.data(), colour, expected.record);
        ASSERT_EQ(0,
                  RK_PaintSpot(nullptr, 100, y, plain::kKernelRow, 511, kernel.data(), colour, &got.record));
    }
    ASSERT_EQ(test::difference(before, expected, got), "");
}

}  // namespace
