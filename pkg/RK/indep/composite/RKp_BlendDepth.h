// What the modes need of a depth beyond the arithmetic that everybody shares. Where a depth departs from the
// common formula of a mode, the departure is a verb here.
//
// Legend: s, d colours of source and destination; a, x divisor and dividend; W the full value, H the neutral
// grey.
#ifndef RKP_BLEND_DEPTH_H
#define RKP_BLEND_DEPTH_H

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "RK/indep/frame/RKp_Depth.h"

template <class P>
struct RKp_BlendTraits;

// What 8 and 16 bits have in common.
template <class P>
struct RKp_BlendTraitsInteger {
    using D = RKp_Depth<P>;
    using Wide = typename D::Wide;

    // Sums that leave the range are brought back.
    static Wide atMostFull(Wide x) { return std::min(x, D::kFull); }
    static Wide inRange(Wide x) { return std::clamp(x, Wide{0}, D::kFull); }
    static Wide magnitude(Wide x) { return std::abs(x); }
    // x / a where both are colours.
    static Wide ratio(Wide a, Wide x) { return D::div(a, x); }
    // A mode's product of alphas, before it is stored as one.
    static Wide alphaProduct(Wide p) { return p; }
    // Values above W are outside the contract; arithmetic that could overflow on them lowers them first.
    static Wide lowered(Wide x) { return std::min(x, D::kFull); }
};

template <>
struct RKp_BlendTraits<RK_Pixel8> : RKp_BlendTraitsInteger<RK_Pixel8> {
    // 2s below grey, and 2(s - H) above, brought to 0..255.
    static Wide twiceBelow(Wide s) { return (s * 255 + 64) >> 7; }
    static Wide twiceAbove(Wide s) { return D::div(127, s - 128); }
    // Inverted source, a hair smaller; d above it is full.
    static Wide hardMix(Wide s, Wide d) { return d > D::mul(255 - s, 254) ? 255 : 0; }
    // Does a coverage w win against a 15-bit random number?
    static bool wins(Wide w, int32_t r) { return w >= (r & 255); }
};

template <>
struct RKp_BlendTraits<RK_Pixel16> : RKp_BlendTraitsInteger<RK_Pixel16> {
    static Wide twiceBelow(Wide s) { return 2 * s; }
    static Wide twiceAbove(Wide s) { return D::keep(2 * (s - 16384)); }
    static Wide hardMix(Wide s, Wide d) { return d > (D::inv(s) * 32767 + 16384) >> 15 ? 32768 : 0; }
    // Kept: r stands as it is, so that 32767 always wins.
    static bool wins(Wide w, int32_t r) { return w >= r; }
};

template <>
struct RKp_BlendTraits<RK_PixelFloat> {
    using D = RKp_Depth<RK_PixelFloat>;
    using Wide = float;

    // Colours over the range pass through.
    static float atMostFull(float x) { return x; }
    static float inRange(float x) { return x; }
    static float magnitude(float x) { return std::fabs(x); }
    static float ratio(float a, float x) { return a == 0.0f || x >= a ? 1.0f : x / a; }
    static float alphaProduct(float p) { return p > 1.0f ? 1.0f : p >= 1e-30f ? p : 0.0f; }
    static float lowered(float x) { return x; }
    static float twiceBelow(float s) { return s + s; }
    static float twiceAbove(float s) { return (s - 0.5f) * 2.0f; }
    // Not a threshold but a ramp, 1.001358e-5 wide.
    static float hardMix(float s, float d) {
        const float t = (1.0f - s) * 0.99999f;
        return d > t ? std::min(1.0f, (d - t) / 1.001358e-5f) : 0.0f;
    }
    // The factor is the float nearest to 1/32767; the comparison is double's.
    static bool wins(float w, int32_t r) { return static_cast<double>(w) >= r * 3.0518509447574615e-5; }
};

template <class P>
struct RKp_BlendDepth : RKp_Depth<P>, RKp_BlendTraits<P> {
    using typename RKp_Depth<P>::Channel;
    using typename RKp_Depth<P>::Wide;

    // The two halves of the source brought to full range. Kept: at 8 bits the upper one of 255 is 254.
    static Wide lowerHalf(Wide s) { return RKp_Depth<P>::kFull - 2 * s; }
    static Wide upperHalf(Wide s) { return 2 * s - 2 * RKp_Depth<P>::kGrey; }
};

#endif
