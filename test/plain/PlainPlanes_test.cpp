// Planes, values between chunks and single channels against plain twins.
#include <gtest/gtest.h>

#include "RK/indep/passes/RK_InterleaveT.h"
#include "RK/indep/passes/RK_Planes.h"
#include "RK/indep/world/RK_Chunk.h"
#include "test/plain/PlainCopy.h"
#include "test/plain/SampleWorlds.h"

namespace {

using test::World;

uint8_t* byteOf(const RK_LayerDef& world, int x, int y, int c) {
    return static_cast<uint8_t*>(world.data) + ptrdiff_t{y} * world.rowbytes + x * 4 + c;
}

TEST(PlanesAgainstPlain, ExtractedAndInserted) {
    test::Random r(61);
    test::GuardedRows rows;
    const int count = test::amount(2000);
    for (int i = 0; i < count; ++i) {
        World<RK_Pixel8> src(r, test::side(r), test::side(r));
        test::guardSome(r, rows, src);
        const int width = src.record.width, height = src.record.height;
        const uint32_t mask = r.below(16);
        char** planes = nullptr;
        int32_t rowbytes = 0;
        ASSERT_EQ(RK_ExtractPlanes(nullptr, &src.record, mask, &planes, &rowbytes), 0);
        std::vector<uint8_t> taken;
        for (int y = 0; y < height; ++y) {
            taken.clear();
            for (int x = 0; x < width; ++x)
                for (int c = 0; c < 4; ++c)
                    if ((mask & (1u << c)) != 0) taken.push_back(*byteOf(src.record, x, y, c));
            const int planes_of = static_cast<int>(taken.size()) / width;
            ASSERT_EQ(rowbytes, ((width + 8) * planes_of + 3) / 2 * 2);
            ASSERT_TRUE(
                std::equal(taken.begin(), taken.end(), reinterpret_cast<uint8_t*>(*planes) + y * rowbytes));
        }
        // Back, under another mask of as many channels or fewer.
        const uint32_t other = mask & r.below(16);
        const World<RK_Pixel8> before(r, width, height);
        World<RK_Pixel8> expected(before), got(before);
        for (int y = 0; y < height; ++y) {
            const char* next = *planes + y * rowbytes;
            for (int x = 0; x < width; ++x)
                for (int c = 0; c < 4; ++c)
                    if ((other & (1u << c)) != 0)
                        *byteOf(expected.record, x, y, c) = static_cast<uint8_t>(*next++);
        }
        test::guardSome(r, rows, got);
        ASSERT_EQ(RK_InsertPlanes(nullptr, planes, rowbytes, other, &got.record), 0);
        KIT_FreeHandle(reinterpret_cast<KIT_Handle>(planes));
        ASSERT_EQ(test::difference(before, expected, got), "");
    }
}

// A chunk of random bytes.
struct Chunk {
    RK_Chunk chunk;
    Chunk(test::Random& r, RK_Long type, int channels) {
        EXPECT_EQ(RK_NewChunk(test::side(r), test::side(r), channels, type, &chunk), 0);
        for (size_t i = 0; i < size(); ++i) bytes()[i] = static_cast<uint8_t>(r.next() >> 24);
    }
    ~Chunk() { RK_DisposeChunk(&chunk); }
    Chunk(const Chunk&) = delete;
    size_t size() const { return static_cast<size_t>(chunk.row_bytes) * static_cast<size_t>(chunk.height); }
    uint8_t* bytes() const { return static_cast<uint8_t*>(chunk.locked_data); }
    int64_t pixel() const { return chunk.row_bytes / chunk.width; }
    RK_LayerDef record() const {
        RK_LayerDef made = {};
        made.data = chunk.locked_data;
        made.width = chunk.width;
        made.height = chunk.height;
        made.rowbytes = chunk.row_bytes;
        return made;
    }
};

// Where each copied pixel comes from and goes to is that of a draft copy of worlds, told by colours.
TEST(PlanesAgainstPlain, ChannelCopy) {
    const RK_Long types[] = {RK_kChunkFloat, RK_kChunkDouble, RK_kChunkRGB, RK_kChunkShort, RK_kChunkChar};
    test::Random r(62);
    const int count = test::amount(4000);
    for (int i = 0; i < count; ++i) {
        const RK_Long type = types[r.below(5)];
        const int channels = 1 + static_cast<int>(r.below(5));
        const bool alike = r.below(2) == 0;
        const Chunk src(r, type, channels);
        Chunk dst(r, alike ? type : types[r.below(5)],
                        alike ? channels : 1 + static_cast<int>(r.below(5)));
        const RK_LayerDef s = src.record(), d = dst.record();
        GEO_Rect from = test::randomRect(r, s.width, s.height), to = test::randomRect(r, d.width, d.height);
        if (r.below(4) == 0) {
            to.right = static_cast<int16_t>(to.left + from.right - from.left);
            to.bottom = static_cast<int16_t>(to.top + from.bottom - from.top);
        }
        const GEO_Rect* const src_rect = r.below(3) == 0 ? nullptr : &from;
        const GEO_Rect* const dst_rect = r.below(3) == 0 ? nullptr : &to;

        // A world whose pixels say where they stand, copied onto one that says nowhere.
        test::Picture<RK_PixelFloat> places(s.width, s.height), moved(d.width, d.height);
        for (int y = 0; y < s.height; ++y)
            for (int x = 0; x < s.width; ++x)
                places.at(x, y) = {1.0f, static_cast<float>(x), static_cast<float>(y), 0.0f};
        plain::copyDraft<RK_PixelFloat, RK_PixelFloat>(places.record(), moved.record(), src_rect, dst_rect);
        std::vector<uint8_t> expected(dst.bytes(), dst.bytes() + dst.size());
        const int64_t bytes = std::min(src.pixel(), dst.pixel());
        for (int y = 0; y < d.height; ++y)
            for (int x = 0; x < d.width; ++x) {
                const RK_PixelFloat& place = moved.at(x, y);
                if (place.alpha == 0.0f) continue;
                for (int64_t b = 0; b < bytes; ++b)
                    expected[static_cast<size_t>(int64_t{y} * d.rowbytes + x * dst.pixel() + b)] =
                        src.bytes()[static_cast<int64_t>(place.green) * s.rowbytes +
                                    static_cast<int64_t>(place.red) * src.pixel() + b];
            }
        ASSERT_EQ(RK_ChannelCopy(nullptr, &src.chunk, &dst.chunk, src_rect, dst_rect), 0);
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), dst.bytes()))
            << s.width << " by " << s.height << ", " << (src_rect ? test::show(from) : "whole") << "\n  to "
            << d.width << " by " << d.height << ", " << (dst_rect ? test::show(to) : "whole");
    }
}

template <class T>
void interleaveMany() {
    test::Random r(63 + sizeof(T));
    const int count = test::amount(1000);
    constexpr RK_Long kSize = sizeof(T);
    for (int i = 0; i < count; ++i) {
        const auto number = [&r](uint32_t n) { return static_cast<RK_Long>(r.below(n)); };
        const GEO_Vector2T<RK_Long> size = {number(40), number(6)}, at = {number(5), number(3)},
                                    to = {number(5), number(3)};
        const RK_Long wide = 4 * (at.x + size.x + number(3)), narrow = to.x + size.x + number(3),
                      channel = number(4);
        std::vector<T> pixels(static_cast<size_t>(wide * (at.y + size.y) + 4));
        std::vector<T> plane(static_cast<size_t>(narrow * (to.y + size.y) + 4));
        for (T& v : pixels) v = static_cast<T>(r.below(256));
        for (T& v : plane) v = static_cast<T>(r.below(256));
        std::vector<T> expected = plane;
        for (RK_Long y = 0; y < size.y; ++y)
            for (RK_Long x = 0; x < size.x; ++x)
                expected[static_cast<size_t>((to.y + y) * narrow + to.x + x)] =
                    pixels[static_cast<size_t>((at.y + y) * wide + 4 * (at.x + x) + channel)];
        RK_Deinterleave1<T>(pixels.data(), wide * kSize, channel, narrow * kSize, at, to, size, plane.data());
        ASSERT_TRUE(plane == expected);

        for (T& v : plane) v = static_cast<T>(r.below(256));
        std::vector<T> filled = pixels;
        for (RK_Long y = 0; y < size.y; ++y)
            for (RK_Long x = 0; x < size.x; ++x)
                filled[static_cast<size_t>(y * wide + 4 * x + channel)] =
                    plane[static_cast<size_t>((to.y + y) * narrow + to.x + x)];
        RK_Interleave1to4<T>(plane.data(), narrow * kSize, channel, to, {4 * kSize, wide * kSize}, size,
                             pixels.data());
        ASSERT_TRUE(pixels == filled);
    }
}
TEST(PlanesAgainstPlain, SingleChannels) {
    interleaveMany<uint8_t>();
    interleaveMany<uint16_t>();
    interleaveMany<float>();
}

}  // namespace
