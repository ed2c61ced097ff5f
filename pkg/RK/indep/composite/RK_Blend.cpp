#include "RK/indep/composite/RK_Blend.h"

#include <cstring>
#include <initializer_list>

#include "RK/indep/frame/RKp_Depth.h"
#include "RK/indep/frame/RKp_Report.h"
#include "RK/indep/world/RK_WorldXT.h"
#include "RK/indep/world/RKp_ForDepth.h"

namespace {

// Weights of the two sources, 16.16, neither of them the whole.
struct Weights {
    uint16_t w1, w2;
};

constexpr float kPerWeight = 1.5258789e-05f;  // 1 / 65536

// ---- Premultiplied: channel by channel -------------------------------------------------------------------

template <class C>
C mixed(C c1, C c2, Weights w) {
    return static_cast<C>((uint32_t{c1} * w.w1 + 0x8000u + uint32_t{c2} * w.w2) >> 16);
}
inline float mixed(float c1, float c2, Weights w) {
    return (c1 * static_cast<float>(w.w1) + c2 * static_cast<float>(w.w2)) * kPerWeight;
}

template <class P>
P mixedPixel(const P& p1, const P& p2, Weights w) {
    return {mixed(p1.alpha, p2.alpha, w), mixed(p1.red, p2.red, w), mixed(p1.green, p2.green, w),
            mixed(p1.blue, p2.blue, w)};
}

// s1, s2: the sources; d: the row that is made.
template <class P>
void premulRow(const P* s1, const P* s2, Weights w, int32_t width, P* d) {
    for (int32_t x = 0; x < width; ++x) d[x] = mixedPixel(s1[x], s2[x], w);
}

// ---- Straight: colours weighted by alpha ----------------------------------------------------------------

template <class P>
P straight(const P& p1, const P& p2, Weights w) {
    using C = typename RKp_Depth<P>::Channel;
    // Equal alphas fall out: (c1 * a * w1 + c2 * a * w2 + a * 32768) / (a * 65536)
    if (p1.alpha == p2.alpha && p1.alpha != 0) return mixedPixel(p1, p2, w);
    const uint64_t a1 = uint64_t{p1.alpha} * w.w1, a2 = uint64_t{p2.alpha} * w.w2, sum = a1 + a2;
    const auto alpha = static_cast<C>((sum + 0x8000u) >> 16);
    if (a1 == 0) return {alpha, p2.red, p2.green, p2.blue};
    if (a2 == 0) return {alpha, p1.red, p1.green, p1.blue};
    // The quotient of whole numbers below 2^50 by way of a double: half a unit more keeps an exact one from
    // coming out short, and no other comes that near to a whole number.
    const double inverse = 1.0 / static_cast<double>(static_cast<int64_t>(sum));
    const auto colour = [&](uint64_t c1, uint64_t c2) {
        const auto whole = static_cast<int64_t>(c1 * a1 + c2 * a2 + (sum >> 1));
        return static_cast<C>((static_cast<double>(whole) + 0.5) * inverse);
    };
    return {alpha, colour(p1.red, p2.red), colour(p1.green, p2.green), colour(p1.blue, p2.blue)};
}
template <>
RK_PixelFloat straight(const RK_PixelFloat& p1, const RK_PixelFloat& p2, Weights w) {
    const int32_t a1 = RKp_Truncate(p1.alpha * static_cast<float>(w.w1));
    const int32_t a2 = RKp_Truncate(p2.alpha * static_cast<float>(w.w2));
    const auto sum =
        static_cast<float>(static_cast<int32_t>(static_cast<uint32_t>(a1) + static_cast<uint32_t>(a2)));
    const float alpha = sum * kPerWeight;
    if (a1 == 0) return {alpha, p2.red, p2.green, p2.blue};
    if (a2 == 0) return {alpha, p1.red, p1.green, p1.blue};
    const auto f1 = static_cast<float>(a1), f2 = static_cast<float>(a2);
    const auto colour = [&](float c1, float c2) { return (c1 * f1 + c2 * f2) / sum; };
    return {alpha, colour(p1.red, p2.red), colour(p1.green, p2.green), colour(p1.blue, p2.blue)};
}

template <class P>
void straightRow(const P* s1, const P* s2, Weights w, int32_t width, P* d) {
    for (int32_t x = 0; x < width; ++x) d[x] = straight(s1[x], s2[x], w);
}

// ---- Whole worlds ---------------------------------------------------------------------------------------

struct Premul {
    static constexpr const char* kDepthsDiffer =
        "RK_BlendPremul requires src1, src2 and dst worlds to be same depth";
    template <class P>
    static void row(const P* s1, const P* s2, Weights w, int32_t width, P* d) {
        premulRow(s1, s2, w, width, d);
    }
};
struct Straight {
    static constexpr const char* kDepthsDiffer =
        "RK_BlendStraight requires src1, src2 and dst worlds to be same depth";
    template <class P>
    static void row(const P* s1, const P* s2, Weights w, int32_t width, P* d) {
        straightRow(s1, s2, w, width, d);
    }
};

template <class Form, class P>
void blendRows(const RK_LayerDef* src1, const RK_LayerDef* src2, int32_t ratio, RK_LayerDef* dst) {
    const RK_WorldX<P> s1(src1, false), s2(src2, false);
    RK_WorldX<P> d(dst, false);
    if (d.width() < 1) return;
    const Weights weights = {static_cast<uint16_t>(65536 - ratio), static_cast<uint16_t>(ratio)};
    const auto bytes = static_cast<size_t>(d.width()) * sizeof(P);
    for (int32_t y = 0; y < d.height(); ++y) {
        if (ratio == 0)
            std::memmove(static_cast<void*>(d.row(y)), s1.row(y), bytes);
        else if (ratio == 65536)
            std::memmove(static_cast<void*>(d.row(y)), s2.row(y), bytes);
        else
            Form::row(s1.row(y), s2.row(y), weights, d.width(), d.row(y));
    }
}

template <class Form>
RK_Long blend(const RK_LayerDef* src1, const RK_LayerDef* src2, RK_Long ratio, RK_LayerDef* dst) {
    if (src1 == nullptr || src2 == nullptr || dst == nullptr) return RKp_ReportBadParam(RKp_kSiteBlend);
    const int32_t depth = RKp_WorldDepth(dst);
    if (RKp_WorldDepth(src1) != depth || RKp_WorldDepth(src2) != depth)
        return RKp_VERIFICATION(Form::kDepthsDiffer);
    if (src1->data == nullptr || src2->data == nullptr || dst->data == nullptr)
        return RKp_ReportBadParam(RKp_kSiteBlend);
    for (const RK_LayerDef* src : {src1, src2})
        if (src->width != dst->width || src->height != dst->height)
            return RKp_VERIFICATION("RK_Blend requires width and height of all worlds to be the same");
    const int32_t held = ratio < 0 ? 0 : ratio > 65535 ? 65536 : static_cast<int32_t>(ratio);
    return RKp_ForDepth(depth, RKp_kBadDepthText, [&](auto tag) -> RK_Long {
        blendRows<Form, typename decltype(tag)::Pixel>(src1, src2, held, dst);
        return RK_kOK;
    });
}

// ---- One channel ----------------------------------------------------------------------------------------

// v moved towards the target by t; the product with a negative distance is one less before it is rounded, so
// that both ways round alike. Low bits are stored.
inline uint8_t moved(uint8_t v, uint8_t target, uint8_t weight, uint8_t opacity) {
    const int32_t t = RKp_Depth<RK_Pixel8>::mul(weight, opacity), d = target - v;
    const int32_t r = d * t - (d < 0) + 128;
    return static_cast<uint8_t>(v + ((r + (r >> 8)) >> 8));
}
inline uint16_t moved(uint16_t v, uint16_t target, uint16_t weight, uint16_t opacity) {
    const int32_t t = RKp_Depth<RK_Pixel16>::mul(weight, opacity), d = target - v;
    const uint32_t r = static_cast<uint32_t>(d) * static_cast<uint32_t>(t) - (d < 0) + 16384u;
    return static_cast<uint16_t>(v + (static_cast<int32_t>(r) >> 15));
}
inline float moved(float v, float target, float weight, float opacity) {
    return v + (weight * opacity) * (target - v);
}

}  // namespace

RK_Long RK_Blend_Premul(void*, const RK_LayerDef* src1, const RK_LayerDef* src2, RK_Long ratio,
                        RK_LayerDef* dst) {
    return blend<Premul>(src1, src2, ratio, dst);
}
RK_Long RK_Blend_Straight(void*, const RK_LayerDef* src1, const RK_LayerDef* src2, RK_Long ratio,
                          RK_LayerDef* dst) {
    return blend<Straight>(src1, src2, ratio, dst);
}
RK_Long RK_Blend(void* reserved, const RK_LayerDef* src1, const RK_LayerDef* src2, RK_Long ratio,
                 RK_LayerDef* dst) {
    return RK_Blend_Straight(reserved, src1, src2, ratio, dst);
}

template <class P, class C>
RK_Long RK_BlendSingleChannel(RK_Long count, C opacity, C target, const C* weight, P* row) {
    if (count < 1) return RK_kOK;
    if (weight == nullptr || row == nullptr) return RKp_ReportBadParam(RKp_kSiteBlend);
    // The row's values by their place: a pixel has no padding.
    auto* values = reinterpret_cast<C*>(row);
    for (RK_Long i = 0; i < count; ++i) values[i] = moved(values[i], target, weight[i], opacity);
    return RK_kOK;
}

template RK_API RK_Long RK_BlendSingleChannel(RK_Long, uint8_t, uint8_t, const uint8_t*, RK_Pixel8*);
template RK_API RK_Long RK_BlendSingleChannel(RK_Long, uint16_t, uint16_t, const uint16_t*, RK_Pixel16*);
template RK_API RK_Long RK_BlendSingleChannel(RK_Long, float, float, const float*, RK_PixelFloat*);
