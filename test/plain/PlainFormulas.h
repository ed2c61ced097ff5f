// The modes' formulas of one colour channel, for plain twins.
// s, d: source and destination colour; sa: the source's alpha after opacity and matte.
#ifndef TEST_PLAIN_FORMULAS_H
#define TEST_PLAIN_FORMULAS_H

#include <algorithm>
#include <cstdlib>

#include "RK/indep/composite/RK_Xfer.h"
#include "test/plain/PlainArithmetic.h"

namespace plain {

// ---- Soft light -----------------------------------------------------------------------------------------

// The two curves over x in 0..1: what a bright source adds (A) and what a dark one takes off (B).
inline double curveA(double x) { return (x > 0.25 ? std::sqrt(x) : ((16.0 * x - 12.0) * x + 4.0) * x) - x; }
inline double curveB(double x) { return x * (1.0 - x); }

struct SoftLight {
    double (*curve)(double);
    uint8_t of8[256];
    uint16_t of16[4097];
    float real[4097];

    explicit SoftLight(double (*f)(double)) : curve(f) {
        for (int i = 0; i < 256; ++i) of8[i] = static_cast<uint8_t>(f(i / 255.0) * 255.0 + 0.5);
        for (int i = 0; i <= 4096; ++i) {
            of16[i] = static_cast<uint16_t>(f(i / 4096.0) * 32768.0 + 0.5);
            real[i] = static_cast<float>(f(i / 4096.0));
        }
    }
    int64_t look(Int8, int64_t d) const { return of8[d]; }
    int64_t look(Int16, int64_t d) const {
        d = std::min<int64_t>(d, 32768);
        int64_t v = of16[d >> 3];
        if ((d & 7) != 0) v += ((d & 7) * (of16[(d >> 3) + 1] - v) + 4) >> 3;
        return v;
    }
    float look(Real, float d) const {
        if (!(d >= 0.0f)) d = 0.0f;
        if (d > 1.0f) d = 1.0f;
        const float position = d * 4096.0f;
        const int i = static_cast<int>(position);
        const float f = position - static_cast<float>(i);
        if (f == 0.0f) return real[i];
        return real[i] + (real[i + 1] - real[i]) * f;
    }
};
inline const SoftLight& softLightA() {
    static const SoftLight table(curveA);
    return table;
}
inline const SoftLight& softLightB() {
    static const SoftLight table(curveB);
    return table;
}

// ---- Modes against a neutral background: d stands against it already -------------------------------------

// The result under an opaque source.
template <class D>
typename D::N separableOpaque(int mode, typename D::N s, typename D::N d) {
    using N = typename D::N;
    constexpr N W = D::W, H = D::H;
    const auto mul = D::mul;
    const auto inv = D::inv;
    const auto div = D::div;
    switch (mode) {
        case RK_Xfer_Add:
            return D::kReal ? d + s : std::min<N>(W, d + s);
        case RK_Xfer_Multiply:
            return d - mul(inv(s), d);
        case RK_Xfer_Screen:
            return inv(mul(inv(s), inv(d)));
        case RK_Xfer_Overlay:
            if (d < H) return 2 * mul(s, d);
            return inv(mul(inv(s), 2 * inv(d)));
        case RK_Xfer_SoftLight:
            if (s < H) return d - mul(W - 2 * s, softLightB().look(D{}, d));
            return d + mul(2 * s - 2 * H, softLightA().look(D{}, d));
        case RK_Xfer_HardLight:
            if (s < H) return d - mul(W - 2 * s, d);
            return d + mul(inv(d), 2 * s - 2 * H);
        case RK_Xfer_Darken:
            return s < d ? s : d;
        case RK_Xfer_Lighten:
            return s > d ? s : d;
        case RK_Xfer_ClassicDifference:
            return std::abs(s - d);
        case RK_Xfer_ClassicDodge:
            return div(inv(s), d);
        case RK_Xfer_ClassicBurn:
            return inv(div(s, inv(d)));
        case RK_Xfer_Exclusion:
            return (s + d) - 2 * mul(s, d);
    }
    std::abort();
}

// The result under a source of alpha sa.
template <class D>
typename D::N separableMixed(int mode, typename D::N s, typename D::N d, typename D::N sa) {
    using N = typename D::N;
    constexpr N W = D::W, H = D::H;
    const auto mul = D::mul;
    const auto inv = D::inv;
    const auto div = D::div;
    switch (mode) {
        case RK_Xfer_Add:
            return D::kReal ? d + mul(s, sa) : std::min<N>(W, d + mul(s, sa));
        case RK_Xfer_Multiply:
            return d - mul(mul(inv(s), d), sa);
        case RK_Xfer_Screen:
            return inv(mul(inv(mul(s, sa)), inv(d)));
        case RK_Xfer_Overlay:
            return lerp<D>(d, separableOpaque<D>(mode, s, d), sa);
        case RK_Xfer_SoftLight:
            if (s < H) return d - mul(mul(W - 2 * s, softLightB().look(D{}, d)), sa);
            return d + mul(mul(2 * s - 2 * H, softLightA().look(D{}, d)), sa);
        case RK_Xfer_HardLight:
            if (s < H) return d - mul(mul(W - 2 * s, d), sa);
            return d + mul(mul(inv(d), 2 * s - 2 * H), sa);
        case RK_Xfer_Darken:
            return s < d ? d - mul(d - s, sa) : d;
        case RK_Xfer_Lighten:
            return s > d ? d + mul(s - d, sa) : d;
        case RK_Xfer_ClassicDifference:
            return std::abs(mul(s, sa) - d);
        case RK_Xfer_ClassicDodge:
            return div(inv(mul(s, sa)), d);
        case RK_Xfer_ClassicBurn:
            return inv(div(inv(mul(inv(s), sa)), inv(d)));
        case RK_Xfer_Exclusion:
            return D::keep(d + D::signedMul(s - 2 * mul(s, d), sa));
    }
    std::abort();
}

// ---- Three-region modes: what the overlap shows -----------------------------------------------------------

// Dodge of d by a source of inverse p, and burn by a source of q.
template <class D>
typename D::N dodge(typename D::N d, typename D::N p) {
    if (d == 0) return d;
    if constexpr (D::kReal) return p == 0 || d >= p ? 1.0f : d / p;
    return D::div(p, d);
}
template <class D>
typename D::N burn(typename D::N d, typename D::N q) {
    if (q == 0 && d == D::W) return d;
    if constexpr (D::kReal) return q == 0 || 1.0f - d >= q ? 0.0f : 1.0f - (1.0f - d) / q;
    return D::inv(D::div(q, D::inv(d)));
}

template <class D>
typename D::N vividLight(typename D::N s, typename D::N d) {
    if (s < D::H) {
        if (s == 0) return 0;
        if constexpr (D::W == 255) return burn<D>(d, (s * 255 + 64) >> 7);
        return burn<D>(d, s + s);
    }
    if (s > D::H) {
        if (s == D::W) return D::W;
        if constexpr (D::W == 255) return dodge<D>(d, 255 - D::div(127, s - 128));
        return dodge<D>(d, D::inv((s - D::H) * 2));
    }
    return d;
}

template <class D>
typename D::N hardMix(typename D::N s, typename D::N d) {
    if constexpr (D::kReal) {
        const float t = (1.0f - s) * 0.99999f;
        return d > t ? std::min(1.0f, (d - t) / 1.001358e-5f) : 0.0f;
    } else {
        const int64_t t = D::W == 255 ? D::mul(255 - s, 254) : ((32768 - s) * 32767 + 16384) >> 15;
        return d > t ? D::W : 0;
    }
}

template <class D>
typename D::N overlap(int mode, typename D::N s, typename D::N d) {
    using N = typename D::N;
    constexpr N W = D::W, H = D::H;
    switch (mode) {
        case RK_Xfer_Difference:
            return std::abs(s - d);
        case RK_Xfer_Dodge:
            return dodge<D>(d, D::inv(s));
        case RK_Xfer_Burn:
            return burn<D>(d, s);
        case RK_Xfer_LinearDodge:
            return D::kReal ? s + d : std::min<N>(W, s + d);
        case RK_Xfer_LinearBurn:
            return std::max<N>(0, (s + d) - W);
        case RK_Xfer_LinearLight: {
            const N v = (2 * s - 2 * H) + d;
            return D::kReal ? v : std::clamp<N>(v, 0, W);
        }
        case RK_Xfer_VividLight:
            return vividLight<D>(s, d);
        case RK_Xfer_PinLight:
            if (s < H) return std::min<N>(2 * s, d);
            if (s > H) return std::max<N>(2 * (s - H), d);
            return d;
        case RK_Xfer_HardMix:
            return hardMix<D>(s, d);
    }
    std::abort();
}

}  // namespace plain

#endif
