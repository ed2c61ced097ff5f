// The plain twins' own arithmetic: one struct per depth, exact integers at 8 and 16 bits, single steps at
// float. Written from the rules and apart from the library's, so that a slip in either shows.
#ifndef TEST_PLAIN_ARITHMETIC_H
#define TEST_PLAIN_ARITHMETIC_H

#include <cmath>
#include <cstdint>
#include <limits>

#include "RK/indep/frame/RK.h"

namespace plain {

// N is the type that values are computed in; keep() is what a stored channel holds of one.
struct Int8 {
    using Pixel = RK_Pixel8;
    using Channel = uint8_t;
    using N = int64_t;
    static constexpr bool kReal = false;
    static constexpr N W = 255, H = 128;

    static N keep(N x) { return x & 0xFF; }
    static N inv(N x) { return keep(255 - x); }
    // The product over 255, rounded.
    static N mul(N a, N b) {
        const N t = a * b + 128;
        return (t + (t >> 8)) >> 8;
    }
    // x over a, rounded: at most 255, and 255 for a of 0 whatever x is.
    static N div(N a, N x) {
        if (a == 0) return 255;
        const N q = (x * 255 + (a >> 1)) / a;
        return q < 255 ? q : 255;
    }
    // mul's steps on the product wrapped to 32 bits; only the low byte of what it is added to has a meaning.
    static N signedMul(N difference, N a) {
        const uint32_t t = static_cast<uint32_t>(difference * a) + 128u;
        return static_cast<N>((t + (t >> 8)) >> 8);
    }
    static N luma(N r, N g, N b) { return (r * 9798 + g * 19235 + b * 3735 + 16384) >> 15; }
    static bool opacityIsFull(N opacity) { return opacity >= 255; }
};

struct Int16 {
    using Pixel = RK_Pixel16;
    using Channel = uint16_t;
    using N = int64_t;
    static constexpr bool kReal = false;
    static constexpr N W = 32768, H = 16384;

    static N keep(N x) { return x & 0xFFFF; }
    static N inv(N x) { return keep(32768 - x); }
    static N mul(N a, N b) { return (a * b + 16383) >> 15; }
    static N div(N a, N x) {
        if (x >= a) return 32768;
        return (x * 32768 + (a >> 1)) / a;
    }
    // No rounding term; the shift goes down for negative differences too.
    static N signedMul(N difference, N a) { return (difference * a) >> 15; }
    static N luma(N r, N g, N b) { return (r * 9798 + g * 19235 + b * 3735 + 16384) >> 15; }
    static bool opacityIsFull(N opacity) { return opacity == 32768; }
};

struct Real {
    using Pixel = RK_PixelFloat;
    using Channel = float;
    using N = float;
    static constexpr bool kReal = true;
    static constexpr N W = 1.0f, H = 0.5f;

    static N keep(N x) { return x; }
    static N inv(N x) { return 1.0f - x; }
    static N mul(N a, N b) { return a * b; }
    static bool zeroOrDenormal(N a) { return std::fabs(a) < std::numeric_limits<float>::min(); }
    static N div(N a, N x) { return zeroOrDenormal(a) ? 1.0f : x / a; }
    static N signedMul(N difference, N a) { return difference * a; }
    static N luma(N r, N g, N b) { return (r * 0.299f + g * 0.587f) + b * 0.114f; }
    static bool opacityIsFull(N opacity) { return opacity == 1.0f; }
};

template <class P>
struct DepthOf;
template <>
struct DepthOf<RK_Pixel8> {
    using D = Int8;
};
template <>
struct DepthOf<RK_Pixel16> {
    using D = Int16;
};
template <>
struct DepthOf<RK_PixelFloat> {
    using D = Real;
};

template <class D>
typename D::N unite(typename D::N a, typename D::N b) {
    return D::inv(D::mul(D::inv(a), D::inv(b)));
}
template <class D>
typename D::N lerp(typename D::N y, typename D::N x, typename D::N a) {
    return D::keep(y + D::signedMul(x - y, a));
}

// A pixel in computing width.
template <class D>
struct Wide {
    typename D::N a, r, g, b;
};
template <class D>
Wide<D> load(const typename D::Pixel& p) {
    return {p.alpha, p.red, p.green, p.blue};
}
template <class D>
typename D::Pixel store(const Wide<D>& w) {
    using C = typename D::Channel;
    return {static_cast<C>(D::keep(w.a)), static_cast<C>(D::keep(w.r)), static_cast<C>(D::keep(w.g)),
            static_cast<C>(D::keep(w.b))};
}
template <class D>
typename D::N luma(const Wide<D>& p) {
    return D::luma(p.r, p.g, p.b);
}

// Opacity first, then the matte; full opacity is no step.
template <class D>
typename D::N scaled(typename D::N alpha, typename D::N opacity) {
    return D::opacityIsFull(opacity) ? alpha : D::mul(alpha, opacity);
}

// ---- A channel from depth to depth ----------------------------------------------------------------------

// Truncation of a float; what does not fit, and NaN, gives the lowest integer.
inline int32_t toInt(float x) {
    if (!(x > -2147483904.0f && x < 2147483648.0f)) return std::numeric_limits<int32_t>::min();
    return static_cast<int32_t>(x);
}
inline uint16_t c8to16(uint8_t c) { return static_cast<uint16_t>((int64_t{c} * 32768 + 128) / 255); }
inline uint8_t c16to8(uint16_t c) { return static_cast<uint8_t>((int64_t{c} * 255 + 16384) >> 15); }
inline float c8toFloat(uint8_t c) {
    return static_cast<float>(double{static_cast<double>(c)} * 0.00392156862745098);
}
inline float c16toFloat(uint16_t c) { return static_cast<float>(c) * 3.0517578125e-5f; }
inline int32_t colourToInt(float x, float scale) {
    const float v = x * scale;
    if (!(v >= 0.0f)) return 0;
    if (v > scale) return static_cast<int32_t>(scale);
    return static_cast<int32_t>(v + 0.5f);
}
// No clamp: the caller keeps the low bits.
inline int32_t alphaToInt(float x, float scale) { return toInt(x * scale + 0.5f); }

inline void convert(const RK_Pixel8& p, RK_Pixel8& q) { q = p; }
inline void convert(const RK_Pixel8& p, RK_Pixel16& q) {
    q = {c8to16(p.alpha), c8to16(p.red), c8to16(p.green), c8to16(p.blue)};
}
inline void convert(const RK_Pixel8& p, RK_PixelFloat& q) {
    q = {c8toFloat(p.alpha), c8toFloat(p.red), c8toFloat(p.green), c8toFloat(p.blue)};
}
inline void convert(const RK_Pixel16& p, RK_Pixel8& q) {
    q = {c16to8(p.alpha), c16to8(p.red), c16to8(p.green), c16to8(p.blue)};
}
inline void convert(const RK_Pixel16& p, RK_Pixel16& q) { q = p; }
inline void convert(const RK_Pixel16& p, RK_PixelFloat& q) {
    q = {c16toFloat(p.alpha), c16toFloat(p.red), c16toFloat(p.green), c16toFloat(p.blue)};
}
inline void convert(const RK_PixelFloat& p, RK_Pixel8& q) {
    q = {static_cast<uint8_t>(alphaToInt(p.alpha, 255.0f)), static_cast<uint8_t>(colourToInt(p.red, 255.0f)),
         static_cast<uint8_t>(colourToInt(p.green, 255.0f)),
         static_cast<uint8_t>(colourToInt(p.blue, 255.0f))};
}
inline void convert(const RK_PixelFloat& p, RK_Pixel16& q) {
    q = {static_cast<uint16_t>(alphaToInt(p.alpha, 32768.0f)),
         static_cast<uint16_t>(colourToInt(p.red, 32768.0f)),
         static_cast<uint16_t>(colourToInt(p.green, 32768.0f)),
         static_cast<uint16_t>(colourToInt(p.blue, 32768.0f))};
}
inline void convert(const RK_PixelFloat& p, RK_PixelFloat& q) { q = p; }

// ---- Pixels of a record ---------------------------------------------------------------------------------

template <class P>
P& at(const RK_LayerDef& world, int64_t x, int64_t y) {
    char* first = static_cast<char*>(world.data);
    return *reinterpret_cast<P*>(first + static_cast<ptrdiff_t>(y * world.rowbytes + x * int64_t{sizeof(P)}));
}

}  // namespace plain

#endif
