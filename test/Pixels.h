// Pixels for tests: random ones, special ones, and worlds with guards around them.
#ifndef TEST_PIXELS_H
#define TEST_PIXELS_H

#include <cstring>
#include <limits>
#include <vector>

#include "RK/indep/frame/RK.h"

namespace test {

// A small fast generator with a fixed sequence for a seed, the same on every compiler and ABI.
class Random {
  public:
    explicit Random(uint32_t seed) : state_(seed * 2654435761u + 1u) {}
    uint32_t next() {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 17;
        state_ ^= state_ << 5;
        return state_;
    }
    uint32_t below(uint32_t n) { return static_cast<uint32_t>(uint64_t{next()} * n >> 32); }
    float unit() { return static_cast<float>(next() >> 8) / 16777215.0f; }

  private:
    uint32_t state_;
};

// Random channels with the special values mixed in: 0, full, the middle and their neighbours; at float also out of
// range values and, when wild, NaN, infinities, denormals and -0.
inline uint8_t channel(Random& r, uint8_t) {
    static const uint8_t special[] = {0, 1, 127, 128, 129, 254, 255};
    return r.below(4) == 0 ? special[r.below(7)] : static_cast<uint8_t>(r.next() >> 24);
}
inline uint16_t channel(Random& r, uint16_t) {
    static const uint16_t special[] = {0, 1, 2, 16383, 16384, 16385, 32767, 32768};
    return r.below(4) == 0 ? special[r.below(8)] : static_cast<uint16_t>(r.below(32769));
}
inline float channel(Random& r, float, bool wild = false) {
    static const float special[] = {0.0f, 1.0f, 0.5f, 0.25f, 0.75f, 0.99999994f, 1.5f, -0.25f};
    static const float odd[] = {-0.0f, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                                -std::numeric_limits<float>::infinity(), std::numeric_limits<float>::denorm_min(),
                                1e-39f, 1e-30f, 3e38f, -3e38f};
    if (wild && r.below(8) == 0) return odd[r.below(9)];
    return r.below(4) == 0 ? special[r.below(8)] : r.unit();
}
// Alphas stay within 0..full.
inline float alphaChannel(Random& r, float) {
    static const float special[] = {0.0f, 1.0f, 0.5f, 0.99999994f, 1e-39f, 1e-30f};
    return r.below(3) == 0 ? special[r.below(6)] : r.unit();
}
inline uint8_t alphaChannel(Random& r, uint8_t) { return r.below(4) == 0 ? (r.below(2) ? 255 : 0) : channel(r, uint8_t{}); }
inline uint16_t alphaChannel(Random& r, uint16_t) {
    return r.below(4) == 0 ? (r.below(2) ? 32768 : 0) : channel(r, uint16_t{});
}

template <class P>
P pixel(Random& r) {
    using C = decltype(P::red);
    P p;
    p.alpha = alphaChannel(r, C{});
    p.red = channel(r, C{});
    p.green = channel(r, C{});
    p.blue = channel(r, C{});
    return p;
}

template <class P>
constexpr int kDepth = sizeof(P) * 2;

// Equal bytes, NaN and -0 included.
template <class P>
bool sameBytes(const P& a, const P& b) {
    return std::memcmp(&a, &b, sizeof(P)) == 0;
}

// A stand-alone record over its own pixels, with guard bytes around every row, that can be checked.
template <class P>
class Picture {
  public:
    Picture(int width, int height, int padding_pixels = 1)
        : width_(width), height_(height), rowbytes_((width + padding_pixels) * int(sizeof(P))),
          bytes_(kGuard * 2 + size_t(rowbytes_) * size_t(height > 0 ? height : 0), kGuardByte) {
        for (int y = 0; y < height; ++y) std::memset(row(y), 0, size_t(width) * sizeof(P));
    }
    P* row(int y) { return reinterpret_cast<P*>(bytes_.data() + kGuard + std::ptrdiff_t{y} * rowbytes_); }
    const P* row(int y) const { return const_cast<Picture*>(this)->row(y); }
    P& at(int x, int y) { return row(y)[x]; }
    const P& at(int x, int y) const { return row(y)[x]; }
    int width() const { return width_; }
    int height() const { return height_; }

    void fillRandom(uint32_t seed) {
        Random r(seed);
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x) at(x, y) = pixel<P>(r);
    }
    void fill(const P& p) {
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x) at(x, y) = p;
    }
    RK_LayerDef record() {
        RK_LayerDef d;
        std::memset(&d, 0, sizeof d);
        d.data = row(0);
        d.rowbytes = rowbytes_;
        d.width = width_;
        d.height = height_;
        d.extent = {0, 0, int16_t(height_), int16_t(width_)};
        d.world_flags = sizeof(P) == 4 ? 0u : sizeof(P) == 8 ? 0x01000001u : 0x02000000u;
        return d;
    }
    // True when nothing outside the pixels was written.
    bool guardsWhole() const {
        const size_t used = size_t(width_) * sizeof(P);
        size_t i = 0;
        for (; i < kGuard; ++i)
            if (bytes_[i] != kGuardByte) return false;
        for (int y = 0; y < height_; ++y) {
            for (size_t k = used; k < size_t(rowbytes_); ++k)
                if (bytes_[kGuard + size_t(y) * size_t(rowbytes_) + k] != kGuardByte) return false;
        }
        for (i = bytes_.size() - kGuard; i < bytes_.size(); ++i)
            if (bytes_[i] != kGuardByte) return false;
        return true;
    }
    bool operator==(const Picture& o) const { return bytes_ == o.bytes_; }
    bool operator!=(const Picture& o) const { return bytes_ != o.bytes_; }

  private:
    static constexpr size_t kGuard = 64;
    static constexpr uint8_t kGuardByte = 0x55;
    int width_, height_, rowbytes_;
    std::vector<uint8_t> bytes_;
};

}  // namespace test

#endif
