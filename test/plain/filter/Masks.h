// Random masks for the comparisons with plain twins, and their way into the library's buffers.
#ifndef TEST_PLAIN_FILTER_MASKS_H
#define TEST_PLAIN_FILTER_MASKS_H

#include "RK/indep/filter/RK_UnoBuffer.h"
#include "RK/indep/frame/RKp_Globals.h"
#include "test/plain/Worlds.h"
#include "test/plain/filter/PlainMask.h"

namespace test {

template <class C>
void randomSamples(Random& r, plain::Mask& mask, bool wild) {
    for (int y = 0; y < mask.height; ++y)
        for (int x = 0; x < mask.width; ++x) {
            if constexpr (sizeof(C) == 4)
                mask.set(x, y, channel(r, C{}, wild));
            else
                mask.set(x, y, channel(r, C{}));
        }
}
inline plain::Mask randomMask(Random& r, int width, int height, int depth, bool wild = false) {
    plain::Mask mask(width, height, depth);
    if (depth == 8) randomSamples<uint8_t>(r, mask, wild);
    if (depth == 16) randomSamples<uint16_t>(r, mask, wild);
    if (depth == 32) randomSamples<float>(r, mask, wild);
    return mask;
}
inline int randomDepth(Random& r) { return 8 << r.below(3); }

// The library's buffer of a mask.
class Buffer {
  public:
    explicit Buffer(const plain::Mask& mask)
        : uno(mask.width, mask.height, mask.depth), bytes_(mask.bytes.size()) {
        if (bytes_ != 0) std::memcpy(*uno.pixels, mask.bytes.data(), bytes_);
    }
    const uint8_t* bytes() const { return static_cast<const uint8_t*>(*uno.pixels); }
    RK_UnoBuffer uno;

  private:
    size_t bytes_;
};
// The first sample that differs, told; empty when there is none.
inline std::string difference(const plain::Mask& before, const plain::Mask& expected, const Buffer& got) {
    if (got.uno.width != expected.width || got.uno.height != expected.height ||
        got.uno.depth != expected.depth)
        return "another shape";
    const size_t bytes = static_cast<size_t>(expected.depth / 8);
    for (size_t i = 0; i < expected.bytes.size(); i += bytes) {
        const uint8_t *e = &expected.bytes[i], *g = got.bytes() + i;
        const auto shown = [&](const uint8_t* at) {
            uint16_t deep = 0;
            float real = 0;
            if (bytes == 2) std::memcpy(&deep, at, 2);
            if (bytes == 4) std::memcpy(&real, at, 4);
            return bytes == 1 ? showChannel(*at) : bytes == 2 ? showChannel(deep) : showChannel(real);
        };
        float a = 0, b = 0;
        if (bytes == 4) std::memcpy(&a, e, 4), std::memcpy(&b, g, 4);
        if (std::memcmp(e, g, bytes) == 0 || (std::isnan(a) && std::isnan(b))) continue;
        const size_t sample = i / bytes, width = static_cast<size_t>(expected.width);
        return "sample (" + std::to_string(sample % width) + ", " + std::to_string(sample / width) + ") of " +
               std::to_string(expected.width) + " by " + std::to_string(expected.height) + " at depth " +
               std::to_string(expected.depth) + "\n  on       " + shown(&before.bytes[i]) + "\n  expected " +
               shown(e) + "\n  got      " + shown(g);
    }
    return "";
}

// Stops a pass, when it stops it, at its first check-in, after row 63: no mask here has 128 rows or more.
class FirstCheckIn {
  public:
    FirstCheckIn(bool stops, int64_t rows) : rows_(rows) { calls_.stop_at = stops ? 1 : 0; }
    RK_ProgressInfo* progress() { return &info_; }
    bool stops() const { return calls_.stop_at != 0 && rows_ >= 64; }
    int64_t rowsDone() const { return stops() ? 64 : INT64_MAX; }
    RK_Long result() const { return stops() ? 517 : 0; }
    bool calledAsItShould() const {
        std::vector<std::pair<RK_Long, RK_Long>> expected;
        if (rows_ >= 64) expected.emplace_back(63, static_cast<RK_Long>(rows_));
        return calls_.made == expected;
    }

  private:
    int64_t rows_;
    Calls calls_;
    RK_ProgressInfo info_ = {&calls_, nullptr, Calls::progress};
};

}  // namespace test

#endif
