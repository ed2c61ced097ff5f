// What the colour conversions share: channels in 0..1, numbers of 16.16, the extremes of a pixel, its hue.
#ifndef RKP_COLOR_UNITS_H
#define RKP_COLOR_UNITS_H

#include "RK/indep/frame/RKp_Depth.h"

struct RKp_UnitColour {
    float r, g, b;
};
inline RKp_UnitColour RKp_UnitOf(const RK_Pixel8& p) {
    const float k = 0.003921569f;
    return {static_cast<float>(p.red) * k, static_cast<float>(p.green) * k, static_cast<float>(p.blue) * k};
}
inline RKp_UnitColour RKp_UnitOf(const RK_Pixel16& p) {
    const float k = 3.0517578e-5f;
    return {static_cast<float>(p.red) * k, static_cast<float>(p.green) * k, static_cast<float>(p.blue) * k};
}
inline RKp_UnitColour RKp_UnitOf(const RK_PixelFloat& p) { return {p.red, p.green, p.blue}; }

// 16.16, halves away from zero.
inline int32_t RKp_FixedOf(float value) {
    const double scaled = static_cast<double>(value) * 65536.0;
    const double v = scaled + (scaled >= 0.0 ? 0.5 : -0.5);
    return v > -2147483649.0 && v < 2147483648.0 ? static_cast<int32_t>(v) : INT32_MIN;
}
inline double RKp_OfFixed(int32_t fixed) { return static_cast<double>(fixed) * 1.52587890625e-5; }

template <class T>
struct RKp_Extremes {
    T mx, mn;
};
template <class T>
RKp_Extremes<T> RKp_ExtremesOf(T r, T g, T b) {
    RKp_Extremes<T> e = {r, r};
    if (g > e.mx) e.mx = g;
    if (b > e.mx) e.mx = b;
    if (g < e.mn) e.mn = g;
    if (b < e.mn) e.mn = b;
    return e;
}

// In degrees; 0 for grey.
inline float RKp_HueOf(const RKp_UnitColour& c, const RKp_Extremes<float>& e) {
    if (e.mx == e.mn) return 0.0f;
    const float d = e.mx - e.mn;
    float sixth;
    if (c.r == e.mx)
        sixth = (c.g - c.b) / d;
    else if (c.g == e.mx)
        sixth = (c.b - c.r) / d + 2.0f;
    else
        sixth = (c.r - c.g) / d + 4.0f;
    const float hue = sixth * 60.0f;
    return hue < 0.0f ? hue + 360.0f : hue;
}

// The straight pixel of a premultiplied one.
inline RK_Pixel8 RKp_Unmultiplied(const RK_Pixel8& p) {
    const auto over = [&](uint8_t c) { return static_cast<uint8_t>(RKp_Depth<RK_Pixel8>::div(p.alpha, c)); };
    return {p.alpha, over(p.red), over(p.green), over(p.blue)};
}

#endif
