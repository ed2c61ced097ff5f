// The accumulation modes: their list, and their formulas at each depth.
//
// Legend: s, d samples of the source and the destination; ~x full - x; n noise. All formulas hold for any
// bits of their samples, and the low bits are stored. Written for the vectoriser: every step fits the lanes
// named beside it.
#ifndef RKP_UNO_MODES_H
#define RKP_UNO_MODES_H

#include <algorithm>
#include <cmath>

#include "RK/indep/filter/RK_UnoBuffer.h"
#include "RK/indep/frame/RKp_Depth.h"

// MODE(number, verb), in number order from 1.
#define RKP_UNO_MODES(MODE)             \
    MODE(RK_kUnoUnion, unite)           \
    MODE(RK_kUnoSubtract, subtract)     \
    MODE(RK_kUnoIntersect, intersect)   \
    MODE(RK_kUnoLighten, lighten)       \
    MODE(RK_kUnoDarken, darken)         \
    MODE(RK_kUnoDifference, difference) \
    MODE(RK_kUnoAdd, add)

template <class S>
struct RKp_UnoDepth;

template <>
struct RKp_UnoDepth<uint8_t> {
    using S = uint8_t;
    using Pixel = RK_Pixel8;
    static constexpr int32_t kFull = 255;

    // mul8 in 16-bit lanes: (t * 257) >> 16 is (t + (t >> 8)) >> 8.
    static S mul(S a, S b) {
        const auto t = static_cast<uint16_t>(a * b + 128);
        return static_cast<S>(static_cast<uint32_t>(t) * 257u >> 16);
    }
    // mul8 rounds to nearest and never meets a tie, so ~mul(~s, d) and the like come out without inverses.
    static S unite(S s, S d) { return static_cast<S>(s + d - mul(s, d)); }
    static S subtract(S s, S d) { return static_cast<S>(d - mul(s, d)); }
    static S intersect(S s, S d) { return mul(s, d); }
    static S lighten(S s, S d) { return std::max(s, d); }
    static S darken(S s, S d) { return std::min(s, d); }
    static S difference(S s, S d) { return static_cast<S>(std::max(s, d) - std::min(s, d)); }
    static S add(S s, S d) {
        const S sum = static_cast<S>(s + d);
        return sum < s ? S{255} : sum;
    }
    // ~((u + (u >> 8)) >> 8) with u = ~s * ~d + n.
    static S dither(S s, S d, uint32_t noise) {
        const auto u = static_cast<uint16_t>((255 - s) * (255 - d) + static_cast<int32_t>(noise & 255u));
        return static_cast<S>(255 - static_cast<int32_t>(static_cast<uint32_t>(u) * 257u >> 16));
    }
    // The share of `room` that m takes, dithered: (u + (u >> 8)) >> 8 with u = m * room + n.
    static S ditheredShare(S m, S room, uint32_t noise) {
        const auto u = static_cast<uint16_t>(m * room + static_cast<int32_t>(noise & 255u));
        return static_cast<S>(static_cast<uint32_t>(u) * 257u >> 16);
    }
};

template <>
struct RKp_UnoDepth<uint16_t> {
    using S = uint16_t;
    using Pixel = RK_Pixel16;
    static constexpr int32_t kFull = 32768;

    // (a * b + term) >> 15 in 16-bit lanes, `term` below 32768: of the product the high half twice, and what
    // its low half and the term carry, by way of their mean.
    static S product(S a, S b, uint32_t term) {
        const uint32_t p = static_cast<uint32_t>(a) * b;
        const auto high = static_cast<uint16_t>(p >> 16), low = static_cast<uint16_t>(p);
        const auto mean = static_cast<uint16_t>((low + (term - 1u) + 1u) >> 1);
        return static_cast<S>(high + high + (mean >> 14));
    }
    static S mul(S a, S b) { return product(a, b, 16383u); }
    // (~s * ~d + 16383) >> 15 is full - s - d + mul(s, d), and (~s * d + 16383) >> 15 is d - ((s * d + 16384)
    // >> 15).
    static S unite(S s, S d) { return static_cast<S>(s + d - mul(s, d)); }
    static S subtract(S s, S d) { return static_cast<S>(d - product(s, d, 16384u)); }
    static S intersect(S s, S d) { return mul(s, d); }
    static S lighten(S s, S d) { return std::max(s, d); }
    static S darken(S s, S d) { return std::min(s, d); }
    static S difference(S s, S d) { return static_cast<S>(std::max(s, d) - std::min(s, d)); }
    // full less what both leave of it.
    static S add(S s, S d) {
        const S room = static_cast<S>(std::max(S{32768}, s) - s);
        return static_cast<S>(32768 - (std::max(room, d) - d));
    }
    // As unite, with the noise for the term: ~s * ~d = full * (full - s - d) + s * d.
    static S dither(S s, S d, uint32_t noise) {
        return static_cast<S>(s + d -
                              static_cast<S>((static_cast<uint32_t>(s) * d + (noise & 32767u)) >> 15));
    }
    // Not dithered at this depth.
    static S ditheredShare(S m, S room, uint32_t) {
        return static_cast<S>(static_cast<uint32_t>(m) * room >> 15);
    }
};

// A byte moved to 16 bits, floor((s * 32768 + 128) / 255), in 16-bit lanes: half of 257 s, rounded up, and
// half a step more for the two largest.
inline uint16_t RKp_UnoWidened(uint8_t s) {
    const auto twice = static_cast<uint16_t>(s * 257), more = static_cast<uint16_t>((s + 2) >> 8);
    return static_cast<uint16_t>((twice + more + 1) >> 1);
}

// Transfer alone works at this depth.
template <>
struct RKp_UnoDepth<float> {
    using S = float;
    using Pixel = RK_PixelFloat;

    static S unite(S s, S d) { return 1.0f - (1.0f - s) * (1.0f - d); }
    static S subtract(S s, S d) { return (1.0f - s) * d; }
    static S intersect(S s, S d) { return s * d; }
    static S lighten(S s, S d) { return std::max(s, d); }
    static S darken(S s, S d) { return std::min(s, d); }
    static S difference(S s, S d) { return std::fabs(s - d); }
    static S add(S s, S d) { return std::min(1.0f, s + d); }
};

#endif
