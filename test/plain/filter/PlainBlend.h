// Mixing two worlds, and one channel towards a constant, once more.
#ifndef TEST_PLAIN_FILTER_BLEND_H
#define TEST_PLAIN_FILTER_BLEND_H

#include "test/plain/PlainArithmetic.h"

namespace plain {

constexpr float kOver65536 = 1.5258789e-05f;

template <class P>
P blendPremul(const P& p, const P& q, int64_t w1, int64_t w2) {
    const auto mix = [&](auto c1, auto c2) {
        using C = decltype(c1);
        if constexpr (DepthOf<P>::D::kReal)
            return (c1 * static_cast<float>(w1) + c2 * static_cast<float>(w2)) * kOver65536;
        else
            return static_cast<C>((c1 * w1 + 0x8000 + c2 * w2) >> 16);
    };
    return {mix(p.alpha, q.alpha), mix(p.red, q.red), mix(p.green, q.green), mix(p.blue, q.blue)};
}
template <class P>
P blendStraight(const P& p, const P& q, int64_t w1, int64_t w2) {
    using D = typename DepthOf<P>::D;
    using C = typename D::Channel;
    if constexpr (D::kReal) {
        const int32_t a1 = toInt(p.alpha * static_cast<float>(w1)),
                      a2 = toInt(q.alpha * static_cast<float>(w2));
        const int32_t sum = static_cast<int32_t>(static_cast<uint32_t>(a1) + static_cast<uint32_t>(a2));
        const float S = static_cast<float>(sum), alpha = S * kOver65536;
        const auto mix = [&](float c1, float c2) {
            return (c1 * static_cast<float>(a1) + c2 * static_cast<float>(a2)) / S;
        };
        if (a1 == 0) return {alpha, q.red, q.green, q.blue};
        if (a2 == 0) return {alpha, p.red, p.green, p.blue};
        return {alpha, mix(p.red, q.red), mix(p.green, q.green), mix(p.blue, q.blue)};
    } else {
        const int64_t a1 = p.alpha * w1, a2 = q.alpha * w2, S = a1 + a2;
        const C alpha = static_cast<C>((S + 0x8000) >> 16);
        const auto mix = [&](int64_t c1, int64_t c2) {
            return static_cast<C>((c1 * a1 + c2 * a2 + (S >> 1)) / S);
        };
        if (a1 == 0) return {alpha, q.red, q.green, q.blue};
        if (a2 == 0) return {alpha, p.red, p.green, p.blue};
        return {alpha, mix(p.red, q.red), mix(p.green, q.green), mix(p.blue, q.blue)};
    }
}
// Worlds of one size; ratio in 16.16: 0 or less gives the first, 65536 or more the second.
template <class P>
void blend(bool straight, const RK_LayerDef& src1, const RK_LayerDef& src2, int64_t ratio,
           const RK_LayerDef& dst) {
    for (int y = 0; y < dst.height; ++y)
        for (int x = 0; x < dst.width; ++x) {
            const P p = at<P>(src1, x, y), q = at<P>(src2, x, y);
            const int64_t w2 = ratio, w1 = 65536 - ratio;
            at<P>(dst, x, y) = ratio <= 0       ? p
                               : ratio >= 65536 ? q
                               : straight       ? blendStraight(p, q, w1, w2)
                                                : blendPremul(p, q, w1, w2);
        }
}

inline uint8_t towards(uint8_t v, uint8_t target, uint8_t weight, uint8_t opacity) {
    const int64_t t = Int8::mul(weight, opacity), d = int64_t{target} - v;
    const int64_t r = d * t - (d < 0 ? 1 : 0) + 128;
    return static_cast<uint8_t>((v + ((r + (r >> 8)) >> 8)) & 0xFF);
}
inline uint16_t towards(uint16_t v, uint16_t target, uint16_t weight, uint16_t opacity) {
    const int64_t t = Int16::mul(weight, opacity), d = int64_t{target} - v;
    const int64_t r = d * t - (d < 0 ? 1 : 0) + 16384;
    return static_cast<uint16_t>((v + (r >> 15)) & 0xFFFF);
}
inline float towards(float v, float target, float weight, float opacity) {
    const float t = weight * opacity, d = target - v, step = t * d;
    return v + step;
}

}  // namespace plain

#endif
