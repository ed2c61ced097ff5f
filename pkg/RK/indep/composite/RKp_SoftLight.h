// The curves of RK_Xfer_SoftLight: A(x) = (x > 0.25 ? sqrt(x) : ((16x - 12)x + 4)x) - x brightens, B(x) = x(1
// - x) darkens, for x of 0..1.
#ifndef RKP_SOFT_LIGHT_H
#define RKP_SOFT_LIGHT_H

#include "RK/indep/frame/RK.h"

// Entry i of a long table stands for i / 4096, of a byte table for i / 255.
template <class T, int32_t entries>
struct RKp_SoftLightTables {
    T a[entries], b[entries];
};
extern RKp_SoftLightTables<uint8_t, 256> RKp_G_SoftLight8;
extern RKp_SoftLightTables<uint16_t, 4097> RKp_G_SoftLight16;
extern RKp_SoftLightTables<float, 4097> RKp_G_SoftLightFloat;

// Fills the tables, in double precision. Once, at birth.
void RKp_BuildSoftLight();

// Curve d: A or B of a channel value.
template <class P>
struct RKp_SoftLight;

template <>
struct RKp_SoftLight<RK_Pixel8> {
    static int32_t brighter(int32_t d) { return RKp_G_SoftLight8.a[d]; }
    static int32_t darker(int32_t d) { return RKp_G_SoftLight8.b[d]; }
};

template <>
struct RKp_SoftLight<RK_Pixel16> {
    static int32_t brighter(int32_t d) { return read(RKp_G_SoftLight16.a, d); }
    static int32_t darker(int32_t d) { return read(RKp_G_SoftLight16.b, d); }

  private:
    // Values above 32768 are outside the contract and read as 32768. The last entry is never interpolated.
    static int32_t read(const uint16_t* table, int32_t d) {
        if (d > 32768) d = 32768;
        const int32_t i = d >> 3, fraction = d & 7;
        const int32_t v = table[i];
        return fraction == 0 ? v : v + ((fraction * (table[i + 1] - v) + 4) >> 3);
    }
};

template <>
struct RKp_SoftLight<RK_PixelFloat> {
    static float brighter(float d) { return read(RKp_G_SoftLightFloat.a, d); }
    static float darker(float d) { return read(RKp_G_SoftLightFloat.b, d); }

  private:
    // What is below 0, and NaN, reads as 0; what is above 1 as 1.
    static float read(const float* table, float d) {
        const float position = !(d >= 0.0f) ? 0.0f : d > 1.0f ? 4096.0f : d * 4096.0f;
        const int32_t i = static_cast<int32_t>(position);
        const float fraction = position - static_cast<float>(i);
        const float v = table[i];
        return fraction == 0.0f ? v : v + (table[i + 1] - v) * fraction;
    }
};

#endif
