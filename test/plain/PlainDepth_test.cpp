// Worlds moved between depths, and dithered rows, against plain twins.
#include <gtest/gtest.h>

#include <cmath>

#include "RK/indep/passes/RK_DepthConvert.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "RK/indep/world/RKp_Dither.h"
#include "test/plain/Worlds.h"

namespace {

using test::World;

// The world converter's own rules; the others are those of all passes.
template <class S, class D>
void convertWorlds(const S& s, D& d) {
    plain::convert(s, d);
}
void convertWorlds(const RK_Pixel8& s, RK_Pixel16& d) {
    const auto wide = [](int64_t c) { return static_cast<uint16_t>((c * 8421504 + 33200) / 65536); };
    d = {wide(s.alpha), wide(s.red), wide(s.green), wide(s.blue)};
}
void convertWorlds(const RK_Pixel8& s, RK_PixelFloat& d) {
    plain::convert(s, d);
    d.alpha = static_cast<float>(int{s.alpha}) * 0.003921569f;
}

template <class S, class D>
void convertMany() {
    test::Random r(sizeof(S) * 5 + sizeof(D));
    test::GuardedRows src_rows, dst_rows;
    const int count = test::amount(600);
    for (int i = 0; i < count; ++i) {
        const int width = test::side(r), height = test::side(r);
        World<S> src(r, width, height, true);
        const World<D> before(r, width, height);
        World<D> expected(before), got(before);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                convertWorlds(plain::at<S>(src.record, x, y), plain::at<D>(expected.record, x, y));
        test::guardSome(r, src_rows, src);
        test::guardSome(r, dst_rows, got);
        const RK_WorldX<S> from(&src.record, false);
        RK_WorldX<D> to(&got.record, false);
        RK_DepthConvertWorld(nullptr, &from, &to);
        ASSERT_EQ(test::difference(before, expected, got), "");
    }
}
template <class S>
void convertFrom() {
    convertMany<S, RK_Pixel8>();
    convertMany<S, RK_Pixel16>();
    convertMany<S, RK_PixelFloat>();
}
TEST(DepthAgainstPlain, From8) { convertFrom<RK_Pixel8>(); }
TEST(DepthAgainstPlain, From16) { convertFrom<RK_Pixel16>(); }
TEST(DepthAgainstPlain, FromFloat) { convertFrom<RK_PixelFloat>(); }

// ---- Dither ---------------------------------------------------------------------------------------------

// A table of the test's own, whose words are told by how many were drawn.
class Noise {
  public:
    Noise(test::Random& r, size_t count) : kept_(RKp_G_Noise), words_(count) {
        for (uint32_t& w : words_) w = r.next();
        RKp_G_Noise = {words_.data(), words_.data(), words_.data() + count};
    }
    ~Noise() { RKp_G_Noise = kept_; }
    Noise(const Noise&) = delete;
    // Word `i` of those drawn since the table was new, from 0.
    uint32_t word(size_t i) const { return words_[(i + 1) % words_.size()]; }
    size_t cursor() const { return static_cast<size_t>(RKp_G_Noise.cursor - words_.data()); }
    size_t count() const { return words_.size(); }

  private:
    const RKp_NoiseTable kept_;
    std::vector<uint32_t> words_;
};

uint8_t dithered16(uint16_t c, uint32_t word) {
    return static_cast<uint8_t>((int64_t{c} * 255 + int64_t{word % 32768}) / 32768);
}

float noisy(float x, uint32_t word) {
    float n = static_cast<float>(word >= 0x80000000u ? int64_t{word} - 4294967296 : int64_t{word});
    if (n < 0.0f) n = n + 4294967296.0f;
    const float u = n * 9.094947e-13f;
    const float lowered = x - 0.001953125f;
    return lowered + u;
}
uint8_t truncated(float x) {
    const float v = x * 255.0f;
    if (!(v >= 0.0f)) return 0;
    if (v > 255.0f) return 255;
    return static_cast<uint8_t>(static_cast<int>(v + 0.5f));
}
uint8_t nearest(float x) {
    const float v = x * 255.0f;
    if (!(v > 0.0f)) return 0;
    if (v >= 255.0f) return 255;
    return static_cast<uint8_t>(static_cast<int>(std::nearbyint(v)));
}

// A count of pixels, and rows that begin at any place.
template <class P>
struct Row {
    alignas(16) char room[(150 + 2) * sizeof(P)];
    P* pixels;
    int count;
    Row(test::Random& r, size_t shift) : count(static_cast<int>(r.below(r.below(4) == 0 ? 150 : 12))) {
        pixels = reinterpret_cast<P*>(room + shift);
        for (int x = 0; x < count; ++x) {
            P p = r.below(4) == 0 ? test::wildPixel<P>(r) : test::pixel<P>(r);
            // Halves of steps, where roundings part.
            if constexpr (sizeof(P) == 16)
                if (r.below(3) == 0) p.green = (static_cast<float>(r.below(256)) + 0.5f) / 255.0f;
            pixels[x] = p;
        }
    }
};

TEST(DepthAgainstPlain, Rows16To8) {
    test::Random r(71);
    const int count = test::amount(4000);
    for (int i = 0; i < count; ++i) {
        const Row<RK_Pixel16> row(r, r.below(2) * 8);
        const Noise noise(r, 3 + r.below(20));
        const bool dither = r.below(2) == 0;
        std::vector<RK_Pixel8> out(150, RK_Pixel8{1, 2, 3, 4}), expected = out;
        for (int x = 0; x < row.count; ++x) {
            const RK_Pixel16 s = row.pixels[x];
            const auto at = static_cast<size_t>(x) * 4;
            if (dither)
                expected[static_cast<size_t>(x)] = {
                    dithered16(s.alpha, noise.word(at)), dithered16(s.red, noise.word(at + 1)),
                    dithered16(s.green, noise.word(at + 2)), dithered16(s.blue, noise.word(at + 3))};
            else
                plain::convert(s, expected[static_cast<size_t>(x)]);
        }
        RKp_Row16To8(row.pixels, row.count, dither, out.data());
        ASSERT_EQ(test::firstDifference(out.data(), expected.data(), 150), -1);
        ASSERT_EQ(noise.cursor(), dither ? static_cast<size_t>(row.count) * 4 % noise.count() : 0);
    }
}

TEST(DepthAgainstPlain, RowsFloatTo8) {
    test::Random r(72);
    const int count = test::amount(8000);
    for (int i = 0; i < count; ++i) {
        const size_t shift = r.below(2) == 0 ? 0 : 4 * r.below(4);
        const Row<RK_PixelFloat> row(r, shift);
        const Noise noise(r, 3 + r.below(20));
        const bool dither = r.below(2) == 0;
        const bool vector = KIT_G_CPU_DataP->has_sse2 != 0 && shift == 0;
        std::vector<RK_Pixel8> out(150, RK_Pixel8{1, 2, 3, 4}), expected = out;
        for (int x = 0; x < row.count; ++x) {
            RK_PixelFloat s = row.pixels[x];
            const auto at = static_cast<size_t>(x) * 4;
            if (dither)
                s = {noisy(s.alpha, noise.word(at)), noisy(s.red, noise.word(at + 1)),
                     noisy(s.green, noise.word(at + 3)), noisy(s.blue, noise.word(at + 2))};
            RK_Pixel8& e = expected[static_cast<size_t>(x)];
            if (vector)
                e = {nearest(s.alpha), nearest(s.red), nearest(s.green), nearest(s.blue)};
            else if (dither)
                e = {truncated(s.alpha), truncated(s.red), truncated(s.green), truncated(s.blue)};
            else
                plain::convert(s, e);
        }
        RKp_RowFloatTo8(row.pixels, row.count, dither, out.data());
        const int differs = test::firstDifference(out.data(), expected.data(), 150);
        if (differs >= 0)
            FAIL() << test::show(row.pixels[differs]) << (vector ? " vector" : " scalar")
                   << (dither ? " dithered " : " ") << test::show(expected[size_t(differs)]) << " not "
                   << test::show(out[size_t(differs)]);
        ASSERT_EQ(noise.cursor(), dither ? static_cast<size_t>(row.count) * 4 % noise.count() : 0);
    }
}

}  // namespace
