#include "RK/host/GEO.h"
#include "RK/indep/colour/RK_ColorConvert.h"
#include "RK/indep/colour/RKp_ColorUnits.h"

namespace {

template <class P>
uint32_t luminance(const P& p) {
    return 30u * p.red + 59u * p.green + 11u * p.blue;
}

float degrees(const RKp_UnitColour& c) { return RKp_HueOf(c, RKp_ExtremesOf(c.r, c.g, c.b)); }

// Kept: the circle is 255 at 16 bits too.
template <class P>
uint32_t hue(const P& p) {
    return static_cast<uint32_t>(
        GEO_RoundDouble(static_cast<double>(degrees(RKp_UnitOf(p))) * 255.0 / 360.0));
}

template <class P>
RKp_Extremes<int32_t> extremes(const P& p) {
    return RKp_ExtremesOf<int32_t>(p.red, p.green, p.blue);
}
inline RKp_Extremes<float> extremes(const RK_PixelFloat& p) { return RKp_ExtremesOf(p.red, p.green, p.blue); }

template <class P>
uint32_t lightness(const P& p) {
    const auto e = extremes(p);
    return static_cast<uint32_t>((e.mx + e.mn) >> 1);
}

// Kept: the spread is multiplied by t, where HLS divides by it.
template <class P>
uint32_t saturation(const P& p) {
    constexpr int32_t kFull = RKp_Depth<P>::kFull;
    const auto e = extremes(p);
    int32_t t = e.mn + e.mx;
    // At the middle both give the same.
    if (t >= kFull) t = 2 * kFull - t;
    const int64_t product = int64_t{e.mx - e.mn} * t;
    return static_cast<typename RKp_Depth<P>::Channel>(product / kFull);
}

}  // namespace

RK_Long RK_Luminance_Straight(RK_EffectRef, const RK_Pixel8* in, uint32_t* out) {
    *out = luminance(*in);
    return RK_kOK;
}
RK_Long RK_Luminance_Straight16(RK_EffectRef, const RK_Pixel16* in, uint32_t* out) {
    *out = luminance(*in);
    return RK_kOK;
}
RK_Long RK_Luminance_StraightFloat(RK_EffectRef, const RK_PixelFloat* in, float* out) {
    *out = RKp_Depth<RK_PixelFloat>::luma(in->red, in->green, in->blue);
    return RK_kOK;
}
RK_Long RK_Luminance_Premul(RK_EffectRef, const RK_Pixel8* in, uint32_t* out) {
    *out = luminance(RKp_Unmultiplied(*in));
    return RK_kOK;
}

RK_Long RK_Hue_Straight(RK_EffectRef, const RK_Pixel8* in, uint32_t* out) {
    *out = hue(*in);
    return RK_kOK;
}
RK_Long RK_Hue_Straight16(RK_EffectRef, const RK_Pixel16* in, uint32_t* out) {
    *out = hue(*in);
    return RK_kOK;
}
RK_Long RK_Hue_StraightFloat(RK_EffectRef, const RK_PixelFloat* in, float* out) {
    *out = static_cast<float>(static_cast<double>(degrees(RKp_UnitOf(*in))) / 360.0);
    return RK_kOK;
}
RK_Long RK_Hue_Premul(RK_EffectRef, const RK_Pixel8* in, uint32_t* out) {
    *out = hue(RKp_Unmultiplied(*in));
    return RK_kOK;
}

RK_Long RK_Lightness_Straight(RK_EffectRef, const RK_Pixel8* in, uint32_t* out) {
    *out = lightness(*in);
    return RK_kOK;
}
RK_Long RK_Lightness_Straight16(RK_EffectRef, const RK_Pixel16* in, uint32_t* out) {
    *out = lightness(*in);
    return RK_kOK;
}
RK_Long RK_Lightness_StraightFloat(RK_EffectRef, const RK_PixelFloat* in, float* out) {
    const auto e = extremes(*in);
    *out = (e.mx + e.mn) * 0.5f;
    return RK_kOK;
}
RK_Long RK_Lightness_Premul(RK_EffectRef, const RK_Pixel8* in, uint32_t* out) {
    *out = lightness(RKp_Unmultiplied(*in));
    return RK_kOK;
}

RK_Long RK_Saturation_Straight(RK_EffectRef, const RK_Pixel8* in, uint32_t* out) {
    *out = saturation(*in);
    return RK_kOK;
}
RK_Long RK_Saturation_Straight16(RK_EffectRef, const RK_Pixel16* in, uint32_t* out) {
    *out = saturation(*in);
    return RK_kOK;
}
RK_Long RK_Saturation_StraightFloat(RK_EffectRef, const RK_PixelFloat* in, float* out) {
    const auto e = extremes(*in);
    float t = e.mn + e.mx;
    if (0.5f * t >= 0.5f) t = 2.0f - e.mn - e.mx;
    *out = (e.mx - e.mn) * t;
    return RK_kOK;
}
RK_Long RK_Saturation_Premul(RK_EffectRef, const RK_Pixel8* in, uint32_t* out) {
    *out = saturation(RKp_Unmultiplied(*in));
    return RK_kOK;
}
