// Legend: h, l, s hue in degrees, lightness and saturation; m1, m2 the least and the greatest channel.
#include "RK/host/GEO.h"
#include "RK/indep/colour/RK_ColorConvert.h"
#include "RK/indep/colour/RKp_ColorUnits.h"

namespace {

RK_Long toHLS(const RKp_UnitColour& c, int32_t hls[3]) {
    const RKp_Extremes<float> e = RKp_ExtremesOf(c.r, c.g, c.b);
    const float sum = e.mx + e.mn, l = 0.5f * sum;
    float s = 0.0f;
    if (e.mx != e.mn) s = (e.mx - e.mn) / (l > 0.5f ? 2.0f - e.mx - e.mn : sum);
    hls[0] = RKp_FixedOf(RKp_HueOf(c, e));
    hls[1] = RKp_FixedOf(l);
    hls[2] = RKp_FixedOf(s);
    return RK_kOK;
}

float channelAt(float h, float m1, float m2) {
    if (h > 360.0f) h -= 360.0f;
    if (h < 0.0f) h += 360.0f;
    if (h < 60.0f) return m1 + h * (m2 - m1) / 60.0f;
    if (h < 180.0f) return m2;
    if (h < 240.0f) return (m2 - m1) * (240.0f - h) / 60.0f + m1;
    return m1;
}

RKp_UnitColour fromHLS(const int32_t hls[3]) {
    const auto l = static_cast<float>(RKp_OfFixed(hls[1])), s = static_cast<float>(RKp_OfFixed(hls[2]));
    if (hls[2] == 0) return {l, l, l};
    const float m2 = hls[1] < 32769 ? (s + 1.0f) * l : s + l - l * s;
    const float m1 = 2.0f * l - m2;
    const auto h = static_cast<float>(RKp_OfFixed(hls[0]));
    return {channelAt(h + 120.0f, m1, m2), channelAt(h, m1, m2), channelAt(h - 120.0f, m1, m2)};
}

// Colour alone is stored, low bits of what the host rounds.
template <class P>
RK_Long store(const RKp_UnitColour& c, P* out) {
    const auto channel = [](float v) {
        const double full = RKp_Depth<P>::kFull;
        return static_cast<typename RKp_Depth<P>::Channel>(GEO_RoundDouble(static_cast<double>(v) * full));
    };
    out->red = channel(c.r);
    out->green = channel(c.g);
    out->blue = channel(c.b);
    return RK_kOK;
}
RK_Long store(const RKp_UnitColour& c, RK_PixelFloat* out) {
    out->red = c.r;
    out->green = c.g;
    out->blue = c.b;
    return RK_kOK;
}

}  // namespace

RK_Long RK_RGBtoHLS_Straight(RK_EffectRef, const RK_Pixel8* in, int32_t hls[3]) {
    return toHLS(RKp_UnitOf(*in), hls);
}
RK_Long RK_RGBtoHLS_Straight16(RK_EffectRef, const RK_Pixel16* in, int32_t hls[3]) {
    return toHLS(RKp_UnitOf(*in), hls);
}
RK_Long RK_RGBtoHLS_StraightFloat(RK_EffectRef, const RK_PixelFloat* in, int32_t hls[3]) {
    return toHLS(RKp_UnitOf(*in), hls);
}
RK_Long RK_RGBtoHLS_Premul(RK_EffectRef, const RK_Pixel8* in, int32_t hls[3]) {
    return toHLS(RKp_UnitOf(RKp_Unmultiplied(*in)), hls);
}

RK_Long RK_HLStoRGB_Straight(RK_EffectRef, const int32_t hls[3], RK_Pixel8* out) {
    return store(fromHLS(hls), out);
}
RK_Long RK_HLStoRGB_Straight16(RK_EffectRef, const int32_t hls[3], RK_Pixel16* out) {
    return store(fromHLS(hls), out);
}
RK_Long RK_HLStoRGB_StraightFloat(RK_EffectRef, const int32_t hls[3], RK_PixelFloat* out) {
    return store(fromHLS(hls), out);
}
RK_Long RK_HLStoRGB_Premul(RK_EffectRef, const int32_t hls[3], RK_Pixel8* out) {
    out->alpha = 255;  // a colour times it is itself
    return store(fromHLS(hls), out);
}
