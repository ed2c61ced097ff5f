// How one channel value moves between depths. Every place that moves one uses these.
#ifndef RKP_CHANNEL_CONVERT_H
#define RKP_CHANNEL_CONVERT_H

#include "RK/indep/frame/RK.h"
#include "RK/indep/frame/RKp_Depth.h"

// floor((c * 32768 + 128) / 255), an exact division.
inline uint16_t RKp_8To16(uint8_t c) {
    return static_cast<uint16_t>((uint64_t{c} * 32768u + 128u) * 0x80808081u >> 39);
}
inline uint8_t RKp_16To8(uint16_t c) { return static_cast<uint8_t>((uint32_t{c} * 255u + 16384u) >> 15); }

// One product in double, rounded once.
inline float RKp_8ToFloat(uint8_t c) { return static_cast<float>(c * 0.00392156862745098); }
inline float RKp_16ToFloat(uint16_t c) { return static_cast<float>(c) * 3.0517578e-5f; }

// Colour clamps, and NaN is 0. Both steps are float.
inline int32_t RKp_ColourFromFloat(float x, float scale) {
    const float v = x * scale;
    if (!(v >= 0.0f)) return 0;
    if (v > scale) return static_cast<int32_t>(scale);
    return static_cast<int32_t>(v + 0.5f);
}
// Kept: alpha is not clamped; the low bits are stored.
inline int32_t RKp_AlphaFromFloat(float x, float scale) { return RKp_Truncate(x * scale + 0.5f); }

// A pixel moved to the depth of To.
template <class To, class From>
To RKp_ConvertPixel(const From& p);

template <>
inline RK_Pixel8 RKp_ConvertPixel<RK_Pixel8>(const RK_Pixel8& p) { return p; }
template <>
inline RK_Pixel16 RKp_ConvertPixel<RK_Pixel16>(const RK_Pixel16& p) { return p; }
template <>
inline RK_PixelFloat RKp_ConvertPixel<RK_PixelFloat>(const RK_PixelFloat& p) { return p; }

template <>
inline RK_Pixel16 RKp_ConvertPixel<RK_Pixel16>(const RK_Pixel8& p) {
    return {RKp_8To16(p.alpha), RKp_8To16(p.red), RKp_8To16(p.green), RKp_8To16(p.blue)};
}
template <>
inline RK_Pixel8 RKp_ConvertPixel<RK_Pixel8>(const RK_Pixel16& p) {
    return {RKp_16To8(p.alpha), RKp_16To8(p.red), RKp_16To8(p.green), RKp_16To8(p.blue)};
}
template <>
inline RK_PixelFloat RKp_ConvertPixel<RK_PixelFloat>(const RK_Pixel8& p) {
    return {RKp_8ToFloat(p.alpha), RKp_8ToFloat(p.red), RKp_8ToFloat(p.green), RKp_8ToFloat(p.blue)};
}
template <>
inline RK_PixelFloat RKp_ConvertPixel<RK_PixelFloat>(const RK_Pixel16& p) {
    return {RKp_16ToFloat(p.alpha), RKp_16ToFloat(p.red), RKp_16ToFloat(p.green), RKp_16ToFloat(p.blue)};
}
template <>
inline RK_Pixel8 RKp_ConvertPixel<RK_Pixel8>(const RK_PixelFloat& p) {
    const float full = 255.0f;
    return {static_cast<uint8_t>(RKp_AlphaFromFloat(p.alpha, full)),
            static_cast<uint8_t>(RKp_ColourFromFloat(p.red, full)),
            static_cast<uint8_t>(RKp_ColourFromFloat(p.green, full)),
            static_cast<uint8_t>(RKp_ColourFromFloat(p.blue, full))};
}
template <>
inline RK_Pixel16 RKp_ConvertPixel<RK_Pixel16>(const RK_PixelFloat& p) {
    const float full = 32768.0f;
    return {static_cast<uint16_t>(RKp_AlphaFromFloat(p.alpha, full)),
            static_cast<uint16_t>(RKp_ColourFromFloat(p.red, full)),
            static_cast<uint16_t>(RKp_ColourFromFloat(p.green, full)),
            static_cast<uint16_t>(RKp_ColourFromFloat(p.blue, full))};
}

#endif
