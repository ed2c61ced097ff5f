// Legend: y, i, q as television counts them.
#include "RK/indep/colour/RK_ColorConvert.h"
#include "RK/indep/colour/RKp_ColorUnits.h"

namespace {

// Kept: each product is rounded before the sum, which may differ in the last place from rounding the sum. The
// sum wraps.
int32_t dot(const RKp_UnitColour& c, float r, float g, float b) {
    const auto part = [](float channel, float k) { return static_cast<uint32_t>(RKp_FixedOf(channel * k)); };
    return static_cast<int32_t>(part(c.r, r) + part(c.g, g) + part(c.b, b));
}
RK_Long toYIQ(const RKp_UnitColour& c, int32_t yiq[3]) {
    yiq[0] = dot(c, 0.2989f, 0.5866f, 0.1144f);
    yiq[1] = dot(c, 0.5959f, -0.2741f, -0.3218f);
    yiq[2] = dot(c, 0.2113f, -0.5227f, 0.3113f);
    return RK_kOK;
}

// The matrix works in the depth's own range.
template <class P>
RKp_UnitColour fromYIQ(const int32_t yiq[3]) {
    const double full = RKp_Depth<P>::kFull;
    const auto y = static_cast<float>(RKp_OfFixed(yiq[0]) * full),
               i = static_cast<float>(RKp_OfFixed(yiq[1]) * full),
               q = static_cast<float>(RKp_OfFixed(yiq[2]) * full);
    return {y + 0.9562f * i + 0.621f * q, y + -0.2717f * i + -0.6485f * q, y + -1.1053f * i + 1.702f * q};
}

template <class P>
typename RKp_Depth<P>::Channel kept(float v) {
    constexpr auto full = static_cast<float>(RKp_Depth<P>::kFull);
    if (v < 0.0f) v = 0.0f;
    if (v > full) v = full;
    return static_cast<typename RKp_Depth<P>::Channel>(v + 0.5f);
}
template <>
float kept<RK_PixelFloat>(float v) {
    return v;
}

template <class P>
RK_Long storeYIQ(const int32_t yiq[3], P* out) {
    const RKp_UnitColour c = fromYIQ<P>(yiq);
    out->red = kept<P>(c.r);
    out->green = kept<P>(c.g);
    out->blue = kept<P>(c.b);
    return RK_kOK;
}

}  // namespace

RK_Long RK_RGBtoYIQ_Straight(RK_EffectRef, const RK_Pixel8* in, int32_t yiq[3]) {
    return toYIQ(RKp_UnitOf(*in), yiq);
}
RK_Long RK_RGBtoYIQ_Straight16(RK_EffectRef, const RK_Pixel16* in, int32_t yiq[3]) {
    return toYIQ(RKp_UnitOf(*in), yiq);
}
RK_Long RK_RGBtoYIQ_StraightFloat(RK_EffectRef, const RK_PixelFloat* in, int32_t yiq[3]) {
    return toYIQ(RKp_UnitOf(*in), yiq);
}
RK_Long RK_RGBtoYIQ_Premul(RK_EffectRef, const RK_Pixel8* in, int32_t yiq[3]) {
    return toYIQ(RKp_UnitOf(RKp_Unmultiplied(*in)), yiq);
}

RK_Long RK_YIQtoRGB_Straight(RK_EffectRef, const int32_t yiq[3], RK_Pixel8* out) {
    return storeYIQ(yiq, out);
}
RK_Long RK_YIQtoRGB_Straight16(RK_EffectRef, const int32_t yiq[3], RK_Pixel16* out) {
    return storeYIQ(yiq, out);
}
RK_Long RK_YIQtoRGB_StraightFloat(RK_EffectRef, const int32_t yiq[3], RK_PixelFloat* out) {
    return storeYIQ(yiq, out);
}
RK_Long RK_YIQtoRGB_Premul(RK_EffectRef, const int32_t yiq[3], RK_Pixel8* out) {
    out->alpha = 255;  // a colour times it is itself
    return storeYIQ(yiq, out);
}
