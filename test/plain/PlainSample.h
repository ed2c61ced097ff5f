// The bilinear and nearest samplers once more, one pixel at a time.
#ifndef TEST_PLAIN_SAMPLE_H
#define TEST_PLAIN_SAMPLE_H

#include <algorithm>
#include <vector>

#include "RK/indep/sample/RK_Samp.h"
#include "test/plain/PlainArithmetic.h"

namespace plain {

// Truncated and held to 0..255; NaN is 0.
inline uint8_t saturated(float v) {
    return v >= 255.0f ? uint8_t{255} : v > 0.0f ? static_cast<uint8_t>(v) : uint8_t{0};
}

// The neighbours p00, p10, p01, p11 of a position; the zero pixel for those outside.
template <class P>
struct Neighbours {
    P p[4];
    bool all_inside;
    Neighbours(const RK_LayerDef& src, int32_t x, int32_t y) : p(), all_inside(true) {
        for (int i = 0; i < 4; ++i) {
            const int64_t column = (int64_t{x} >> 16) + (i & 1), row = (int64_t{y} >> 16) + (i >> 1);
            if (column >= 0 && column < src.width && row >= 0 && row < src.height)
                p[i] = at<P>(src, column, row);
            else
                all_inside = false;
        }
    }
    bool allEqual() const {
        for (int i = 1; i < 4; ++i)
            if (p[i].alpha != p[0].alpha || p[i].red != p[0].red || p[i].green != p[0].green ||
                p[i].blue != p[0].blue)
                return false;
        return true;
    }
    bool alphasEqual() const {
        return p[0].alpha == p[1].alpha && p[0].alpha == p[2].alpha && p[0].alpha == p[3].alpha;
    }
};

template <class T>
struct Weights {
    T w[4];
    Weights(int32_t x, int32_t y) {
        const T u = static_cast<T>(x & 0xFFFF) * static_cast<T>(1.52587890625e-05);
        const T v = static_cast<T>(y & 0xFFFF) * static_cast<T>(1.52587890625e-05);
        w[3] = u * v;
        w[1] = u - w[3];
        w[2] = v - w[3];
        w[0] = static_cast<T>(1) - w[3] - w[1] - w[2];
    }
    explicit Weights(const double given[4]) {
        for (int i = 0; i < 4; ++i) w[i] = static_cast<T>(given[i]);
    }
};
template <class T>
T sum(const T k[4], T c00, T c10, T c01, T c11) {
    return ((k[0] * c00 + k[1] * c10) + k[2] * c01) + k[3] * c11;
}
template <class T, class P, class C>
T sum(const T k[4], const P p[4], C P::*channel) {
    return sum<T>(k, static_cast<T>(p[0].*channel), static_cast<T>(p[1].*channel),
                  static_cast<T>(p[2].*channel), static_cast<T>(p[3].*channel));
}

// ---- The cores ------------------------------------------------------------------------------------------

inline RK_Pixel8 defaultCore(const RK_Pixel8 p[4], bool alphas_equal, const double w[4]) {
    const auto round = [](double v) { return static_cast<uint8_t>(std::nearbyint(v)); };
    using P = RK_Pixel8;
    if (alphas_equal) {
        if (p[0].alpha == 0) return {};
        return {p[0].alpha, round(sum(w, p, &P::red)), round(sum(w, p, &P::green)),
                round(sum(w, p, &P::blue))};
    }
    double k[4];
    for (int i = 0; i < 4; ++i) k[i] = w[i] * p[i].alpha;
    const double A = ((k[0] + k[1]) + k[2]) + k[3];
    const uint8_t alpha = round(A);
    if (alpha == 0) return {};
    const double inverse = 1.0 / A;
    return {alpha, round(sum(k, p, &P::red) * inverse), round(sum(k, p, &P::green) * inverse),
            round(sum(k, p, &P::blue) * inverse)};
}

inline RK_Pixel16 defaultCore(const RK_Pixel16 p[4], bool alphas_equal, const double w[4]) {
    const auto round = [](double v) { return static_cast<uint16_t>(v + 0.5); };
    using P = RK_Pixel16;
    if (alphas_equal) {
        if (p[0].alpha == 0) return {};
        return {p[0].alpha, round(sum(w, p, &P::red)), round(sum(w, p, &P::green)),
                round(sum(w, p, &P::blue))};
    }
    double k[4];
    for (int i = 0; i < 4; ++i) k[i] = w[i] * p[i].alpha;
    const double A = ((k[0] + k[1]) + k[2]) + k[3];
    if (A < 0.5) return {};
    return {round(A), round(sum(k, p, &P::red) / A), round(sum(k, p, &P::green) / A),
            round(sum(k, p, &P::blue) / A)};
}

// All in float; only an alpha sum of exactly zero has a case of its own.
template <class P>
P portableCore(const P p[4], bool alphas_equal, const float w[4]) {
    using C = typename DepthOf<P>::D::Channel;
    const auto round = [](float v) {
        if constexpr (sizeof(P) == 16)
            return v;
        else
            return static_cast<C>(v + 0.5f);
    };
    if (alphas_equal)
        return {p[0].alpha, round(sum(w, p, &P::red)), round(sum(w, p, &P::green)),
                round(sum(w, p, &P::blue))};
    float k[4];
    for (int i = 0; i < 4; ++i) k[i] = w[i] * static_cast<float>(p[i].alpha);
    const float A = ((k[0] + k[1]) + k[2]) + k[3];
    if (A == 0.0f) return {};
    const float inverse = 1.0f / A;
    const auto colour = [&](C P::*channel) {
        return round(sizeof(P) == 8 ? sum(k, p, channel) / A : sum(k, p, channel) * inverse);
    };
    return {round(A), colour(&P::red), colour(&P::green), colour(&P::blue)};
}

// Alpha-weighted in float, saturated.
inline RK_Pixel8 weightedCore(const RK_Pixel8 p[4], const float w[4], bool zero_below_half) {
    float k[4];
    for (int i = 0; i < 4; ++i) k[i] = w[i] * static_cast<float>(p[i].alpha);
    const float A = ((k[0] + k[1]) + k[2]) + k[3];
    if (zero_below_half && A < 0.5f) return {};
    const float inverse = 1.0f / A;
    const auto colour = [&](uint8_t RK_Pixel8::*c) { return saturated(sum(k, p, c) * inverse + 0.5f); };
    return {saturated(A + 0.5f), colour(&RK_Pixel8::red), colour(&RK_Pixel8::green),
            colour(&RK_Pixel8::blue)};
}
inline uint8_t nested(uint8_t c00, uint8_t c10, uint8_t c01, uint8_t c11, float u, float v) {
    const float a = c00, b = c10, c = c01, d = c11;
    const float left = a + (c - a) * v, right = b + (d - b) * v;
    return saturated(left + (right - left) * u + 0.5f);
}

// ---- The samplers ---------------------------------------------------------------------------------------

inline bool whole(int32_t x, int32_t y) { return ((x | y) & 0xFFFF) == 0; }

// The default form at 8 and 16 bits, with the weights that are given or the position's own.
template <class P>
P bilinearDefault(int32_t x, int32_t y, const RK_LayerDef& src, const double* weights = nullptr) {
    const Neighbours<P> n(src, x, y);
    if (whole(x, y) || n.allEqual()) return n.p[0];
    const Weights<double> own(x, y);
    return defaultCore(n.p, n.alphasEqual(), weights ? weights : own.w);
}
template <class P>
P bilinearPortable(int32_t x, int32_t y, const RK_LayerDef& src, const double* weights = nullptr) {
    const Neighbours<P> n(src, x, y);
    const Weights<float> w = weights ? Weights<float>(weights) : Weights<float>(x, y);
    return portableCore(n.p, n.alphasEqual(), w.w);
}
// The form that stands in the no-clip slot beside SSE2.
inline RK_Pixel8 bilinearNested(int32_t x, int32_t y, const RK_LayerDef& src) {
    const Neighbours<RK_Pixel8> n(src, x, y);
    const RK_Pixel8* const p = n.p;
    if (whole(x, y) || n.allEqual()) return p[0];
    if (!n.alphasEqual()) return weightedCore(p, Weights<float>(x, y).w, true);
    if (p[0].alpha == 0) return {};
    const float u = static_cast<float>(x & 0xFFFF) / 65536.0f, v = static_cast<float>(y & 0xFFFF) / 65536.0f;
    return {p[0].alpha, nested(p[0].red, p[1].red, p[2].red, p[3].red, u, v),
            nested(p[0].green, p[1].green, p[2].green, p[3].green, u, v),
            nested(p[0].blue, p[1].blue, p[2].blue, p[3].blue, u, v)};
}
// One of four at once.
inline RK_Pixel8 bilinearOfFour(int32_t x, int32_t y, const RK_LayerDef& src,
                                const double* weights = nullptr) {
    const Neighbours<RK_Pixel8> n(src, x, y);
    const Weights<float> w = weights ? Weights<float>(weights) : Weights<float>(x, y);
    return weightedCore(n.p, w.w, false);
}

inline RK_Pixel8 bilinearPremul(int32_t x, int32_t y, const RK_LayerDef& src) {
    if (src.width < 1 || src.height < 1) return {};
    Neighbours<RK_Pixel8> n(src, x, y);
    if (whole(x, y)) return n.p[0];
    unsigned mask = 0xFFFF;
    const int64_t last_x = int64_t{src.width - 1} << 16, last_y = int64_t{src.height - 1} << 16;
    if (x > 0 && x >= last_x) {
        if (last_x <= int64_t{x} - 0x10000) return {};
        mask &= 0x5555;
    } else if (x <= 0) {
        if (x < -65535) return {};
        mask &= (x & 0xFFFF) != 0 ? 0xAAAA : 0x5555;
    }
    if (y > 0 && y >= last_y) {
        if (last_y <= int64_t{y} - 0x10000) return {};
        mask &= 0x3333;
    } else if (y <= 0) {
        if (y < -65535) return {};
        mask &= (y & 0xFFFF) != 0 ? 0xCCCC : 0x3333;
    }
    for (unsigned i = 0; i < 4; ++i)
        if ((mask >> i & 1) == 0) n.p[i] = {};
    if (n.allEqual()) return n.p[0];
    const int64_t xf = x & 0xFFFF, yf = y & 0xFFFF;
    const int64_t w11 = xf * yf / 65536, w10 = (65536 - yf) * xf / 65536, w01 = (65536 - xf) * yf / 65536;
    const int64_t w00 = 65536 - w10 - (w01 + w11);
    const auto mean = [&](uint8_t RK_Pixel8::*c) {
        return static_cast<uint8_t>(
            (n.p[0].*c * w00 + n.p[1].*c * w10 + n.p[2].*c * w01 + n.p[3].*c * w11 + 32768) >> 16);
    };
    return {mean(&RK_Pixel8::alpha), mean(&RK_Pixel8::red), mean(&RK_Pixel8::green), mean(&RK_Pixel8::blue)};
}

template <class P>
P nearest(int32_t x, int32_t y, const RK_LayerDef& src) {
    const int64_t column = (int64_t{x} + 32768) >> 16, row = (int64_t{y} + 32768) >> 16;
    if (column < 0 || column >= src.width || row < 0 || row >= src.height) return {};
    return at<P>(src, column, row);
}

}  // namespace plain

#endif
