// The core that all straight bilinear samplers share; the forms differ in what is passed to it.
//
// Legend: w00..w11 weights; p00..p11 neighbours; a00..a11 weight times alpha; A their sum.
#ifndef RKP_SUBPIXEL_SAMPLE_STRAIGHT_T_H
#define RKP_SUBPIXEL_SAMPLE_STRAIGHT_T_H

#include <cstring>

#include "RK/indep/sample/RK_Samp.h"
#include "RK/indep/sample/RKp_SampleForms.h"

template <class P>
struct RKp_Neighbours {
    const P &p00, &p10, &p01, &p11;
};
template <class P>
inline const P* RKp_SourcePixel(const RK_LayerDef& src, int32_t xi, int32_t yi) {
    return reinterpret_cast<const P*>(static_cast<const char*>(src.data) +
                                      static_cast<ptrdiff_t>(yi) * src.rowbytes) +
           xi;
}
template <class P>
inline bool RKp_SamePixel(const P& a, const P& b) {
    return std::memcmp(&a, &b, sizeof(P)) == 0;
}
inline bool RKp_IsWhole(int32_t x, int32_t y) { return ((x | y) & 0xFFFF) == 0; }

// Stands in for whatever lies outside.
template <class P>
inline constexpr P RKp_kZeroPixel{};

template <class P>
inline RKp_Neighbours<P> RKp_NeighboursInside(const RK_LayerDef& src, int32_t x, int32_t y) {
    const P* top = RKp_SourcePixel<P>(src, x >> 16, y >> 16);
    const P* bottom = reinterpret_cast<const P*>(reinterpret_cast<const char*>(top) + src.rowbytes);
    return {top[0], top[1], bottom[0], bottom[1]};
}
template <class P>
inline RKp_Neighbours<P> RKp_NeighboursClipped(const RK_LayerDef& src, int32_t x, int32_t y, bool* all_inside) {
    const int32_t xi = x >> 16, yi = y >> 16;
    const bool left = xi >= 0 && xi < src.width, right = xi + 1 >= 0 && xi + 1 < src.width;
    const bool top = yi >= 0 && yi < src.height, bottom = yi + 1 >= 0 && yi + 1 < src.height;
    *all_inside = left && right && top && bottom;
    return {left && top ? *RKp_SourcePixel<P>(src, xi, yi) : RKp_kZeroPixel<P>,
            right && top ? *RKp_SourcePixel<P>(src, xi + 1, yi) : RKp_kZeroPixel<P>,
            left && bottom ? *RKp_SourcePixel<P>(src, xi, yi + 1) : RKp_kZeroPixel<P>,
            right && bottom ? *RKp_SourcePixel<P>(src, xi + 1, yi + 1) : RKp_kZeroPixel<P>};
}
template <class P>
inline P RKp_WholePixelClipped(const RK_LayerDef& src, int32_t x, int32_t y) {
    const int32_t xi = x >> 16, yi = y >> 16;
    const bool inside = xi >= 0 && xi < src.width && yi >= 0 && yi < src.height;
    return inside ? *RKp_SourcePixel<P>(src, xi, yi) : RKp_kZeroPixel<P>;
}

// ---- The core -------------------------------------------------------------------------------------------

// ((s00 + s10) + s01) + s11 times the channel of each neighbour: the order of every sum here.
template <class P, class W>
inline W RKp_Weighted(const RKp_Neighbours<P>& n, const RKp_Weights<W>& s, RK_Channel<P> P::*c) {
    return ((s.w00 * static_cast<W>(n.p00.*c) + s.w10 * static_cast<W>(n.p10.*c)) + s.w01 * static_cast<W>(n.p01.*c)) +
           s.w11 * static_cast<W>(n.p11.*c);
}

// As if premultiplied, with the quotient taken in the same step.
template <class Form, class P = typename Form::Pixel, class W = typename Form::Weight>
inline P RKp_MixDiffering(const RKp_Neighbours<P>& n, const RKp_Weights<W>& w) {
    const RKp_Weights<W> a = {w.w00 * static_cast<W>(n.p00.alpha), w.w10 * static_cast<W>(n.p10.alpha),
                              w.w01 * static_cast<W>(n.p01.alpha), w.w11 * static_cast<W>(n.p11.alpha)};
    const W A = ((a.w00 + a.w10) + a.w01) + a.w11;
    if (Form::isZero(A)) return P{};
    const typename Form::Quotient quotient(A);
    using S = typename Form::Sum;
    const RKp_Weights<S> s = {static_cast<S>(a.w00), static_cast<S>(a.w10), static_cast<S>(a.w01),
                              static_cast<S>(a.w11)};
    return P{Form::store(A), Form::store(quotient(RKp_Weighted(n, s, &P::red))),
             Form::store(quotient(RKp_Weighted(n, s, &P::green))), Form::store(quotient(RKp_Weighted(n, s, &P::blue)))};
}

template <class Form, class P = typename Form::Pixel, class W = typename Form::Weight>
inline P RKp_MixStraight(const RKp_Neighbours<P>& n, const RKp_Weights<W>& w) {
    const auto alpha = n.p00.alpha;
    if (alpha != n.p10.alpha || alpha != n.p01.alpha || alpha != n.p11.alpha) return RKp_MixDiffering<Form>(n, w);
    if (Form::kShortcuts && alpha == 0) return P{};
    return P{alpha, Form::store(RKp_Weighted(n, w, &P::red)), Form::store(RKp_Weighted(n, w, &P::green)),
             Form::store(RKp_Weighted(n, w, &P::blue))};
}

// Four equal neighbours need no weights.
template <class Form, class MakeWeights>
inline typename Form::Pixel RKp_SampleNeighbours(const RKp_Neighbours<typename Form::Pixel>& n, MakeWeights&& weights) {
    if (Form::kShortcuts && RKp_SamePixel(n.p00, n.p10) && RKp_SamePixel(n.p00, n.p01) && RKp_SamePixel(n.p00, n.p11))
        return n.p00;
    return RKp_MixStraight<Form>(n, weights());
}

template <class Form>
inline typename Form::Pixel RKp_SampleClipped(int32_t x, int32_t y, const RK_LayerDef& src, bool* all_inside) {
    using P = typename Form::Pixel;
    *all_inside = false;
    const bool whole = RKp_IsWhole(x, y);
    if (Form::kShortcuts && whole) return RKp_WholePixelClipped<P>(src, x, y);
    const auto n = RKp_NeighboursClipped<P>(src, x, y, all_inside);
    // Kept: at a whole position the flag stays clear in every form.
    if (whole) *all_inside = false;
    return RKp_SampleNeighbours<Form>(n, [=] { return RKp_BilinearWeights<typename Form::Weight>(x, y); });
}

template <class Form, class MakeWeights>
inline typename Form::Pixel RKp_SampleInside(int32_t x, int32_t y, const RK_LayerDef& src, MakeWeights&& weights) {
    using P = typename Form::Pixel;
    if (Form::kShortcuts && RKp_IsWhole(x, y)) return *RKp_SourcePixel<P>(src, x >> 16, y >> 16);
    return RKp_SampleNeighbours<Form>(RKp_NeighboursInside<P>(src, x, y), weights);
}

template <class Form>
inline typename Form::Pixel RKp_SampleNoClip(int32_t x, int32_t y, const RK_LayerDef& src) {
    return RKp_SampleInside<Form>(x, y, src, [=] { return RKp_BilinearWeights<typename Form::Weight>(x, y); });
}
inline RKp_Weights<float> RKp_NarrowWeights(const double w[4]) {
    return {static_cast<float>(w[0]), static_cast<float>(w[1]), static_cast<float>(w[2]), static_cast<float>(w[3])};
}
template <class Form>
inline typename Form::Pixel RKp_SampleTranslate(int32_t x, int32_t y, const double weights[4], const RK_LayerDef& src) {
    using W = typename Form::Weight;
    return RKp_SampleInside<Form>(x, y, src, [=] {
        return RKp_Weights<W>{static_cast<W>(weights[0]), static_cast<W>(weights[1]), static_cast<W>(weights[2]),
                              static_cast<W>(weights[3])};
    });
}
template <class Form>
inline void RKp_SampleSpan(RK_Long count, int32_t x, int32_t y, const RK_LayerDef& src,
                           RK_AlphaSum<typename Form::Pixel>* alpha_sum, typename Form::Pixel* out) {
    const auto w = RKp_BilinearWeights<typename Form::Weight>(x, y);
    for (RK_Long i = 0; i < count; ++i) {
        const auto xi = static_cast<int32_t>(static_cast<uint32_t>(x) + (static_cast<uint32_t>(i) << 16));
        out[i] = RKp_SampleInside<Form>(xi, y, src, [&w] { return w; });
        *alpha_sum += out[i].alpha;
    }
}
// The alphas of a span, in order.
template <class P>
inline void RKp_AddAlphas(RK_Long count, const P* out, RK_AlphaSum<P>* alpha_sum) {
    RK_AlphaSum<P> sum = *alpha_sum;
    for (RK_Long i = 0; i < count; ++i) sum += out[i].alpha;
    *alpha_sum = sum;
}

#endif
