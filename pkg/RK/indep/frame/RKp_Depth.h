// The arithmetic of each depth: the only home of the rounding terms. One struct per depth holds what differs; what
// follows from those stands once in RKp_DepthVerbs.
//
// Legend: a, b fractions (alphas); x, y, c channel values; W the full value, H the neutral grey.
#ifndef RKP_DEPTH_H
#define RKP_DEPTH_H

#include <cstring>

#include "RK/indep/frame/RK.h"
#include "RK/indep/frame/RKp_Globals.h"

// The truncating conversion of the processor: what does not fit, and NaN, gives INT32_MIN.
inline int32_t RKp_Truncate(float x) {
    return x >= -2147483648.0f && x < 2147483648.0f ? static_cast<int32_t>(x) : INT32_MIN;
}

// Zero or a denormal, of either sign: the divisors that a guarded division does not divide by.
inline bool RKp_IsZeroOrDenormal(float x) {
    uint32_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    return (bits & 0x7F800000u) == 0;
}
inline bool RKp_IsDenormal(float x) { return x != 0.0f && RKp_IsZeroOrDenormal(x); }

// A fourth depth fails here, at compile time.
template <class P>
struct RKp_DepthTraits;

template <>
struct RKp_DepthTraits<RK_Pixel8> {
    using Channel = uint8_t;
    using Wide = int32_t;
    static constexpr int kIndex = 0;  // pixel format index; the place in tables made per depth
    static constexpr int kBits = 8;
    static constexpr Wide kFull = 255;
    static constexpr Wide kGrey = 128;

    // The rounded product over 255, for 0..255.
    static Wide mul(Wide a, Wide b) {
        const Wide t = a * b + 128;
        return (t + (t >> 8)) >> 8;
    }
    // min(255, (x * 255 + (a >> 1)) / a) for 0..255; 255 for a of 0.
    static Wide div(Wide a, Wide x) { return RKp_G_fcd_table[a * 256 + x]; }
    // mul's steps on the product wrapped to 32 bits: only the low byte of a sum with it counts.
    static Wide signedMul(Wide x, Wide a) {
        const uint32_t t = static_cast<uint32_t>(x) * static_cast<uint32_t>(a) + 128u;
        return static_cast<Wide>((t + (t >> 8)) >> 8);
    }
    static bool isFullOpacity(Channel opacity) { return opacity == 255; }
    // 9798, 19235 and 3735 sum to 32768, so white has full luma.
    static Wide luma(Wide r, Wide g, Wide b) { return (r * 9798 + g * 19235 + b * 3735 + 16384) >> 15; }
};

template <>
struct RKp_DepthTraits<RK_Pixel16> {
    using Channel = uint16_t;
    using Wide = int32_t;
    static constexpr int kIndex = 1;
    static constexpr int kBits = 16;
    static constexpr Wide kFull = 32768;
    static constexpr Wide kGrey = 16384;

    // Kept: the term is 16383, not 16384.
    static Wide mul(Wide a, Wide b) {
        return static_cast<Wide>((static_cast<uint32_t>(a) * static_cast<uint32_t>(b) + 16383u) >> 15);
    }
    static Wide div(Wide a, Wide x) {
        if (x >= a) return 32768;
        return static_cast<Wide>((static_cast<uint32_t>(x) * 32768u + (static_cast<uint32_t>(a) >> 1)) /
                                 static_cast<uint32_t>(a));
    }
    // Kept: no rounding term; the shift floors, so mixes up and down are not mirror images.
    static Wide signedMul(Wide x, Wide a) {
        return static_cast<Wide>(static_cast<uint32_t>(x) * static_cast<uint32_t>(a)) >> 15;
    }
    static bool isFullOpacity(Channel opacity) { return opacity == 32768; }
    static Wide luma(Wide r, Wide g, Wide b) {
        return static_cast<Wide>((static_cast<uint32_t>(r) * 9798u + static_cast<uint32_t>(g) * 19235u +
                                  static_cast<uint32_t>(b) * 3735u + 16384u) >>
                                 15);
    }
};

template <>
struct RKp_DepthTraits<RK_PixelFloat> {
    using Channel = float;
    using Wide = float;
    static constexpr int kIndex = 2;
    static constexpr int kBits = 32;
    static constexpr Wide kFull = 1.0f;
    static constexpr Wide kGrey = 0.5f;

    static Wide mul(Wide a, Wide b) { return a * b; }
    static Wide div(Wide a, Wide x) { return RKp_IsZeroOrDenormal(a) ? 1.0f : x / a; }
    static Wide signedMul(Wide x, Wide a) { return x * a; }
    static bool isFullOpacity(Channel opacity) { return opacity == 1.0f; }
    static Wide luma(Wide r, Wide g, Wide b) { return (r * 0.299f + g * 0.587f) + b * 0.114f; }
};

// What follows from the traits. Integer results are cut to the channel's width, as a stored channel is.
template <class P>
struct RKp_Depth : RKp_DepthTraits<P> {
    using Traits = RKp_DepthTraits<P>;
    using typename Traits::Channel;
    using typename Traits::Wide;
    using Traits::kFull;
    using Traits::kGrey;

    static Wide keep(Wide x) { return static_cast<Channel>(x); }
    static Wide inv(Wide x) { return keep(kFull - x); }
    // The union of two coverages.
    static Wide unite(Wide a, Wide b) { return inv(Traits::mul(inv(a), inv(b))); }
    // y moved towards x by a.
    static Wide lerp(Wide y, Wide x, Wide a) { return keep(y + Traits::signedMul(x - y, a)); }
};

#endif
