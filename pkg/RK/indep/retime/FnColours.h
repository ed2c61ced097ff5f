// Picture pixels of the engine: channels in the order of their base, float arithmetic in the wrapper.
#ifndef FN_COLOURS_H
#define FN_COLOURS_H

#include <cmath>
#include <cstdint>
#include <type_traits>

#include "RK/indep/retime/HvVec2.h"

// The arguments after the type: least and greatest value of the type, its nominal maximum, whether it is an integer.
template <class T, int Least, int Greatest, int Nominal, int IsInteger>
struct FnARGBBase {
    using Channel = T;
    T a, r, g, b;
};
template <class T, int Least, int Greatest, int Nominal, int IsInteger>
struct FnRGBABase {
    using Channel = T;
    T r, g, b, a;
};
template <class T, int Least, int Greatest, int Nominal, int IsInteger>
struct FnRGBBase {
    using Channel = T;
    T r, g, b;
};

template <class Base>
struct FnRGBACol : Base {};
template <class Base>
struct FnRGBCol : Base {};

using FnPixel8 = FnRGBACol<FnARGBBase<unsigned char, 0, 255, 255, 1>>;
using FnPixel16 = FnRGBACol<FnARGBBase<unsigned short, 0, 65535, 65535, 1>>;
using FnPixelFloat = FnRGBACol<FnARGBBase<float, 0, 1, 1, 0>>;
using FnPixelSum = FnRGBACol<FnRGBABase<float, 0, 1, 1, 0>>;
using FnColourSum = FnRGBCol<FnRGBBase<float, 0, 1, 1, 0>>;

template <class Pixel>
constexpr bool FnIsPicture = std::is_same_v<Pixel, FnPixel8> || std::is_same_v<Pixel, FnPixel16> ||
                             std::is_same_v<Pixel, FnPixelFloat>;

template <class Pixel>
Pixel FnMakePixel(typename Pixel::Channel a, typename Pixel::Channel r, typename Pixel::Channel g,
                  typename Pixel::Channel b) {
    Pixel p;
    p.a = a, p.r = r, p.g = g, p.b = b;
    return p;
}

// Four channel-wise operations on float pixels of either order.
template <class Base>
FnRGBACol<Base> operator+(const FnRGBACol<Base>& p, const FnRGBACol<Base>& q) {
    return FnMakePixel<FnRGBACol<Base>>(p.a + q.a, p.r + q.r, p.g + q.g, p.b + q.b);
}
template <class Base>
FnRGBACol<Base> operator*(const FnRGBACol<Base>& p, float k) {
    return FnMakePixel<FnRGBACol<Base>>(p.a * k, p.r * k, p.g * k, p.b * k);
}
template <class Base>
FnRGBACol<Base> FnMix(const FnRGBACol<Base>& p, const FnRGBACol<Base>& q, float f) {
    return FnMakePixel<FnRGBACol<Base>>(FnMix(p.a, q.a, f), FnMix(p.r, q.r, f), FnMix(p.g, q.g, f),
                                        FnMix(p.b, q.b, f));
}
template <class Base>
FnRGBCol<Base> FnMix(const FnRGBCol<Base>& p, const FnRGBCol<Base>& q, float f) {
    FnRGBCol<Base> m;
    m.r = FnMix(p.r, q.r, f), m.g = FnMix(p.g, q.g, f), m.b = FnMix(p.b, q.b, f);
    return m;
}

// ---- Depths ---------------------------------------------------------------------------------------------

// Nearest integer, ties to even, for 0 <= v <= 65535: adding 1.5 * 2^23 leaves the rounded value in the low bits.
inline uint32_t FnRoundToEven(float v) {
    const float shifted = v + 12582912.0f;
    return static_cast<uint32_t>(shifted - 12582912.0f);
}

// Below gives low, above gives high, NaN gives low.
inline float FnClamp(float v, float low, float high) { return v > low ? (v < high ? v : high) : low; }

// Scale is the full value of the depth: 255, 32768 or 1. Store clamps and rounds where the depth has integers and
// keeps float channels as they are; Clamp cuts to the full value at every depth.
template <int Scale>
struct FnDepth;
template <>
struct FnDepth<0xFF> {
    using Pixel = FnPixel8;
    static constexpr float kFull = 255.0f;
    static unsigned char Store(float v) { return static_cast<unsigned char>(FnRoundToEven(FnClamp(v, 0.0f, kFull))); }
};
template <>
struct FnDepth<0x8000> {
    using Pixel = FnPixel16;
    static constexpr float kFull = 32768.0f;
    static unsigned short Store(float v) {
        return static_cast<unsigned short>(FnRoundToEven(FnClamp(v, 0.0f, kFull)));
    }
};
template <>
struct FnDepth<1> {
    using Pixel = FnPixelFloat;
    static constexpr float kFull = 1.0f;
    static float Store(float v) { return v; }
};

template <class Pixel>
using FnDepthOf = FnDepth<std::is_same_v<Pixel, FnPixel8> ? 0xFF : std::is_same_v<Pixel, FnPixel16> ? 0x8000 : 1>;

// Stored to computed, channel by channel, without scaling.
template <class Computed, class Stored>
Computed FnCompute(const Stored& s) {
    if constexpr (std::is_same_v<Computed, Stored>)
        return s;
    else
        return FnMakePixel<Computed>(s.a, s.r, s.g, s.b);
}

// Computed to stored, through the depth's rounding for pictures.
template <class Stored, class Computed>
Stored FnStore(const Computed& c) {
    if constexpr (std::is_same_v<Computed, Stored>) {
        return c;
    } else {
        using Depth = FnDepthOf<Stored>;
        return FnMakePixel<Stored>(Depth::Store(c.a), Depth::Store(c.r), Depth::Store(c.g), Depth::Store(c.b));
    }
}

#endif
