// The blurs and the kernel generator against their plain twins: every set of channels, direction, origin and
// radius, in place, interrupted.
#include <memory>

#include <gtest/gtest.h>

#include "RK/indep/filter/RK_BoxBlur.h"
#include "RK/indep/filter/RK_GaussianBlur.h"
#include "RK/indep/filter/RK_GaussianKernel.h"
#include "RK/indep/world/RK_World.h"
#include "test/plain/Worlds.h"
#include "test/plain/filter/PlainBlur.h"

namespace {

using test::Random;
using test::World;

float radiusOf(Random& r) {
    static const float special[] = {0.0f, -0.0f, 1e-40f, 1e-8f, 0.25f, 0.5f,   1.0f,    1.5f,
                                    2.0f, 2.75f, 8.5f,   50.0f, 63.5f, 300.0f, 0.9999f, 7.0f};
    switch (r.below(4)) {
        case 0: return r.unit() * 4.0f;
        case 1: return r.unit() * 40.0f;
        default: return special[r.below(16)];
    }
}
plain::Blur blurOf(Random& r) {
    static const int32_t directions[] = {0, 0, 0, 1, 1, 1, -1, 2};
    static const int32_t truths[] = {0, 1, 1, 2, -1};
    plain::Blur b{};
    b.radius = radiusOf(r);
    b.passes = 1 + static_cast<int32_t>(r.below(r.below(4) == 0 ? 6 : 3));
    b.flags = r.below(3) == 0 ? 15 : r.below(16);
    if (r.below(2) == 0) b.flags |= 0x10;
    if (r.below(16) == 0) b.flags |= 0x80000020;  // bits without a meaning
    b.src_direction = directions[r.below(8)];
    b.dst_direction = r.below(2) == 0 ? b.src_direction : directions[r.below(8)];
    b.src_premultiplied = truths[r.below(5)];
    b.dst_premultiplied = truths[r.below(5)];
    b.force_copy = r.below(3) == 0 ? 1 : 0;
    return b;
}
int32_t originOf(Random& r) {
    static const int32_t far[] = {INT32_MIN, INT32_MAX, -100, 100, 2000000000, -2000000000};
    if (r.below(2) == 0) return 0;
    return r.below(24) == 0 ? far[r.below(6)] : static_cast<int32_t>(r.below(21)) - 10;
}
std::string show(const plain::Blur& b, bool box, const RK_LayerDef& src, const RK_LayerDef& dst) {
    std::ostringstream out;
    out << (box ? "box" : "Gaussian") << " radius " << b.radius << " passes " << b.passes << " flags "
        << b.flags << " src " << b.src_direction << "/" << b.src_premultiplied << " dst " << b.dst_direction
        << "/" << b.dst_premultiplied << " copy " << int{b.force_copy} << " from " << src.width << " by "
        << src.height << " at " << src.origin_x << ", " << src.origin_y << " to " << dst.width << " by "
        << dst.height << " at " << dst.origin_x << ", " << dst.origin_y;
    return out.str();
}
RK_Long libraryBlur(bool box, RK_ProgressInfo* progress, RK_LayerDef src, const plain::Blur& b,
                    RK_LayerDef dst) {
    const auto object = [](RK_LayerDef& record) {
        std::unique_ptr<RK_World> world(RK_World::NewReference(&record));
        world->record.origin_x = record.origin_x;
        world->record.origin_y = record.origin_y;
        return world;
    };
    const auto from = object(src), to = object(dst);
    if (box)
        return RK_BoxBlur1D(progress, from.get(), b.radius, b.passes, b.flags, b.src_direction,
                            b.src_premultiplied, b.dst_direction, b.dst_premultiplied, b.force_copy,
                            to.get());
    return RK_GaussianBlur1D(progress, from.get(), b.radius, b.flags, b.src_direction, b.src_premultiplied,
                             b.dst_direction, b.dst_premultiplied, b.force_copy, to.get());
}
template <class P>
void plainBlur(bool box, const plain::Blur& b, const RK_LayerDef& src, const RK_LayerDef& dst,
               int64_t lines) {
    if (box)
        plain::boxBlur<P>(b, src, dst, lines);
    else
        plain::gaussianBlur<P>(b, src, dst, lines);
}

// Flat and nearly clear pictures, or any pixels, wild ones among them.
template <class P>
World<P> blurWorld(Random& r, int width, int height) {
    const uint32_t kind = r.below(8);
    World<P> world(r, width, height, kind == 0);
    const P some = test::pixel<P>(r);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            P& p = world.picture.at(x, y);
            if (kind == 1) p = some;
            if (kind == 2) p.alpha = r.below(16) == 0 ? p.alpha : RK_Channel<P>(0);
            if (kind == 3 && r.below(8) != 0) p = P{};
        }
    return world;
}
// None, few, or more than a block of columns now and then.
int sideOf(Random& r) {
    const uint32_t kind = r.below(48);
    return kind < 2    ? static_cast<int>(r.below(2))
           : kind == 2 ? 120 + static_cast<int>(r.below(200))
                       : test::side(r);
}

template <class P>
void compareMany(bool box, int full, const std::vector<float>& radii = {}) {
    Random r(sizeof(P) + (box ? 1 : 0) + static_cast<uint32_t>(radii.size()));
    const int count = test::amount(full);
    for (int i = 0; i < count; ++i) {
        plain::Blur b = blurOf(r);
        if (!radii.empty()) {  // a wide stage between passes costs what its width is
            b.radius = radii[r.below(static_cast<uint32_t>(radii.size()))];
            b.passes = b.radius < 1000.0f ? 1 + static_cast<int32_t>(r.below(2)) : 1;
        }
        if (!box && sizeof(P) == 8 && !b.wants(0)) b.radius = std::min(b.radius, 250.0f);
        World<P> src = blurWorld<P>(r, sideOf(r), sideOf(r));
        const bool turned = (b.src_direction != 0) != (b.dst_direction != 0), same = r.below(2) == 0;
        const int width = turned ? src.record.height : src.record.width;
        const int height = turned ? src.record.width : src.record.height;
        const World<P> before(r, same ? width : sideOf(r), same ? height : sideOf(r));
        World<P> expected(before), got(before);
        src.record.origin_x = originOf(r), src.record.origin_y = originOf(r);
        expected.record.origin_x = got.record.origin_x = r.below(2) == 0 ? src.record.origin_x : originOf(r);
        expected.record.origin_y = got.record.origin_y = r.below(2) == 0 ? src.record.origin_y : originOf(r);

        const bool stops = r.below(8) == 0;
        const int tasks = b.dst_direction != 0 ? got.record.width : got.record.height;
        test::Calls calls;
        calls.stop_at = stops ? 1 : 0;
        RK_ProgressInfo progress = {&calls, nullptr, test::Calls::progress};
        RK_ProgressInfo* const given = r.below(4) == 0 && !stops ? nullptr : &progress;
        const RK_Long result = libraryBlur(box, given, src.record, b, got.record);
        ASSERT_EQ(result, stops && tasks >= 64 ? 517 : 0) << show(b, box, src.record, got.record);
        plainBlur<P>(box, b, src.record, expected.record, stops ? 64 : INT64_MAX);
        ASSERT_EQ(test::difference(before, expected, got), "") << show(b, box, src.record, got.record);
        std::vector<std::pair<RK_Long, RK_Long>> check_ins;
        for (int line = 63; line < (stops ? std::min(tasks, 64) : tasks); line += 64)
            check_ins.emplace_back(line, tasks);
        if (given != nullptr) {
            ASSERT_EQ(calls.made, check_ins) << show(b, box, src.record, got.record);
        }
    }
}
TEST(BoxBlurAgainstPlain, EqualAt8Bits) { compareMany<RK_Pixel8>(true, 6000); }
TEST(BoxBlurAgainstPlain, EqualAt16Bits) { compareMany<RK_Pixel16>(true, 6000); }
TEST(BoxBlurAgainstPlain, EqualAtFloat) { compareMany<RK_PixelFloat>(true, 6000); }
TEST(GaussianBlurAgainstPlain, EqualAt8Bits) { compareMany<RK_Pixel8>(false, 6000); }
TEST(GaussianBlurAgainstPlain, EqualAt16Bits) { compareMany<RK_Pixel16>(false, 6000); }
TEST(GaussianBlurAgainstPlain, EqualAtFloat) { compareMany<RK_PixelFloat>(false, 6000); }

// Windows far longer than any line, sums beyond 32 bits, half sides that wrap at 16 bits.
const std::vector<float> kHuge = {900.0f,    4000.0f,    40000.5f, 65535.5f,      65536.0f, 65537.0f,
                                  100000.0f, 8388608.0f, 1e9f,     2147483520.0f, 32768.0f};
TEST(BoxBlurAgainstPlain, EqualAtHugeRadii) {
    compareMany<RK_Pixel8>(true, 1000, kHuge);
    compareMany<RK_Pixel16>(true, 1000, kHuge);
    compareMany<RK_PixelFloat>(true, 1000, kHuge);
}
TEST(GaussianBlurAgainstPlain, EqualAtHugeRadii) {
    compareMany<RK_Pixel8>(false, 300, kHuge);
    compareMany<RK_Pixel16>(false, 300, kHuge);
    compareMany<RK_PixelFloat>(false, 300, kHuge);
}

template <class P>
void compareInPlace(bool box) {
    Random r(sizeof(P) * 3 + (box ? 1 : 0));
    const int count = test::amount(500);
    for (int i = 0; i < count; ++i) {
        plain::Blur b = blurOf(r);
        b.force_copy = 1;
        b.dst_direction = b.src_direction;
        if (!box && sizeof(P) == 8 && !b.wants(0)) b.radius = std::min(b.radius, 250.0f);
        const World<P> before = blurWorld<P>(r, test::side(r), test::side(r));
        World<P> expected(before), got(before);
        ASSERT_EQ(libraryBlur(box, nullptr, got.record, b, got.record), 0);
        plainBlur<P>(box, b, before.record, expected.record, INT64_MAX);
        ASSERT_EQ(test::difference(before, expected, got), "")
            << "in place, " << show(b, box, got.record, got.record);
    }
}
TEST(BlursAgainstPlain, EqualInPlace) {
    for (const bool box : {true, false}) {
        compareInPlace<RK_Pixel8>(box);
        compareInPlace<RK_Pixel16>(box);
        compareInPlace<RK_PixelFloat>(box);
    }
}

// Lines long and bright enough for float sums to lose bits.
TEST(BoxBlurAgainstPlain, EqualOnLongLines) {
    Random r(7);
    const int count = test::amount(60);
    for (int i = 0; i < count; ++i) {
        plain::Blur b = blurOf(r);
        b.radius = 200.0f + r.unit() * 900.0f;
        b.src_direction = b.dst_direction = 0;
        const World<RK_Pixel16> src(r, 2500, 2), before(r, 2500, 2);
        World<RK_Pixel16> expected(before), got(before);
        ASSERT_EQ(libraryBlur(true, nullptr, src.record, b, got.record), 0);
        plain::boxBlur<RK_Pixel16>(b, src.record, expected.record);
        ASSERT_EQ(test::difference(before, expected, got), "") << show(b, true, src.record, got.record);
    }
}

TEST(GaussianKernelAgainstPlain, Equal) {
    Random r(5);
    static const double radii[] = {0, 1, 2, 0.5, 1e-300, 5.75, 65536.5, 32768.0, 40000.0, 1e12, 65538.0};
    static const double multipliers[] = {1.0, 2.0, 0.5, 0.0, -1.0, 1e9, 1e-9};
    const int count = test::amount(4000);
    for (int i = 0; i < count; ++i) {
        const double radius =
            r.below(3) == 0 ? radii[r.below(11)] : r.unit() * (r.below(4) == 0 ? 40.0 : 6.0);
        const double multiplier = r.below(2) == 0 ? 1.0 : multipliers[r.below(7)];
        const int32_t flags = static_cast<int32_t>(r.below(4)) | (r.below(8) == 0 ? 0x40 : 0);
        const std::vector<int32_t> expected = plain::gaussianKernel(radius, flags, multiplier);
        std::vector<int32_t> got(expected.size() + 2, -77);
        int32_t diameter = -1;
        ASSERT_EQ(RK_GaussianKernel(nullptr, radius, flags, multiplier, &diameter, got.data() + 1), 0);
        EXPECT_EQ(diameter, 2 * plain::halfSide(radius) + 1) << radius;
        ASSERT_EQ(got.front(), -77);
        ASSERT_EQ(got.back(), -77);
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), got.begin() + 1))
            << "radius " << radius << " flags " << flags << " multiplier " << multiplier;
    }
}

}  // namespace
