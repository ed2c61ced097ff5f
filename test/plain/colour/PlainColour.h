// The colour conversions and measures once more, step by step.
#ifndef TEST_PLAIN_COLOUR_H
#define TEST_PLAIN_COLOUR_H

#include <cmath>
#include <vector>

#include "test/plain/PlainArithmetic.h"

namespace plain {

struct Rgb {
    float v[3];
};

inline int32_t wholeOf(double x) {
    x = std::trunc(x);
    if (!(x >= -2147483648.0) || !(x <= 2147483647.0)) return INT32_MIN;
    return static_cast<int32_t>(x);
}
inline int32_t rounded(double x) { return wholeOf(x < 0 ? std::ceil(x - 0.5) : std::floor(x + 0.5)); }
inline int32_t fixed16(float x) {
    const double d = static_cast<double>(x) * 65536.0;
    return wholeOf(d < 0.0 ? d - 0.5 : d + 0.5);
}

inline Rgb unit(const RK_Pixel8& p) {
    return {{p.red * 0.003921569f, p.green * 0.003921569f, p.blue * 0.003921569f}};
}
inline Rgb unit(const RK_Pixel16& p) {
    return {{p.red * 3.0517578e-5f, p.green * 3.0517578e-5f, p.blue * 3.0517578e-5f}};
}
inline Rgb unit(const RK_PixelFloat& p) { return {{p.red, p.green, p.blue}}; }

inline float largest(const Rgb& c) { return std::fmax(c.v[0], std::fmax(c.v[1], c.v[2])); }
inline float smallest(const Rgb& c) { return std::fmin(c.v[0], std::fmin(c.v[1], c.v[2])); }

inline float hueDegrees(const Rgb& c) {
    const float mx = largest(c), d = mx - smallest(c);
    if (mx == smallest(c)) return 0;
    for (int k = 0; k < 3; ++k) {
        if (c.v[k] != mx) continue;
        float h = (c.v[(k + 1) % 3] - c.v[(k + 2) % 3]) / d;
        if (k > 0) h = h + static_cast<float>(2 * k);
        h = h * 60.0f;
        if (h < 0) h = h + 360.0f;
        return h;
    }
    return 0;
}

inline std::vector<int32_t> toHls(const Rgb& c) {
    const float mx = largest(c), mn = smallest(c), sum = mx + mn, L = 0.5f * sum;
    float S = 0;
    if (mx != mn) {
        const float d = mx - mn;
        if (L > 0.5f) {
            float rest = 2.0f - mx;
            rest = rest - mn;
            S = d / rest;
        } else {
            S = d / sum;
        }
    }
    return {fixed16(hueDegrees(c)), fixed16(L), fixed16(S)};
}

inline float hlsChannel(float h, float m1, float m2) {
    if (h > 360.0f) h = h - 360.0f;
    if (h < 0.0f) h = h + 360.0f;
    const float span = m2 - m1;
    if (h < 60.0f) {
        const float up = h * span;
        return m1 + up / 60.0f;
    }
    if (h < 180.0f) return m2;
    if (h >= 240.0f) return m1;
    const float down = span * (240.0f - h);
    return down / 60.0f + m1;
}
inline Rgb fromHls(const int32_t* in) {
    const float H = static_cast<float>(in[0] / 65536.0), L = static_cast<float>(in[1] / 65536.0),
                S = static_cast<float>(in[2] / 65536.0);
    if (in[2] == 0) return {{L, L, L}};
    float m2;
    if (in[1] <= 32768) {
        m2 = (S + 1.0f) * L;
    } else {
        const float both = L * S;
        m2 = (S + L) - both;
    }
    const float m1 = 2.0f * L - m2;
    return {{hlsChannel(H + 120.0f, m1, m2), hlsChannel(H, m1, m2), hlsChannel(H - 120.0f, m1, m2)}};
}

inline std::vector<int32_t> toYiq(const Rgb& c) {
    static const float m[3][3] = {
        {0.2989f, 0.5866f, 0.1144f}, {0.5959f, -0.2741f, -0.3218f}, {0.2113f, -0.5227f, 0.3113f}};
    std::vector<int32_t> out;
    for (const auto& row : m) {
        int64_t sum = 0;
        for (int k = 0; k < 3; ++k) sum += fixed16(row[k] * c.v[k]);
        out.push_back(static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(sum) & 0xFFFFFFFFu)));
    }
    return out;
}
// In 0..full, unclamped.
inline Rgb fromYiq(const int32_t* in, double full) {
    static const float m[3][2] = {{0.9562f, 0.621f}, {-0.2717f, -0.6485f}, {-1.1053f, 1.702f}};
    float v[3];
    for (int k = 0; k < 3; ++k) v[k] = static_cast<float>(in[k] / 65536.0 * full);
    Rgb c;
    for (int k = 0; k < 3; ++k) {
        const float i = m[k][0] * v[1], q = m[k][1] * v[2];
        c.v[k] = (v[0] + i) + q;
    }
    return c;
}
inline int32_t clampedYiq(float v, float full) {
    if (v < 0) return 0;
    return v > full ? static_cast<int32_t>(full) : static_cast<int32_t>(v + 0.5f);
}

inline uint32_t saturation(int32_t a, int32_t b, int32_t c, int32_t full) {
    const int64_t mx = std::max(a, std::max(b, c)), mn = std::min(a, std::min(b, c));
    int64_t t = mn + mx;
    if (t > full) t = 2 * int64_t{full} - t;
    const int64_t v = (mx - mn) * t / full;
    return static_cast<uint32_t>(v & (full == 255 ? 0xFF : 0xFFFF));
}

}  // namespace plain

#endif
